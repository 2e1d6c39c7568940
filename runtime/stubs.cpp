// What a compiled program answers with a fixed value: its version and platform, and the functions
// that have no meaning outside an interactive session.
#include <cstdio>

#include "arklib/builtins.h"
#include "arklib/display.h"
#include "arklib/eval.h"

namespace {

const char* const release_date = "Sep 14 2000";
const char* const platform_word = "GLNXA64";
// The largest number of elements a matrix could address: 2^48 - 1.
constexpr double largest_size = 281474976710655.0;

Mm version_text() {
    char text[64];
    std::snprintf(text, sizeof text, "%4.2f %s", 4.51, "MATVEX");
    return TM(text);
}

Mm nothing_done() { return x_M; }

Mm stub_called() { return TM("Stub called."); }

void stub_called_any(int, const Mm*, int, Mm* out) { out[0] = stub_called(); }

}  // namespace

Mm version() { return version_text(); }

Mm version(i_o_t, Mm& v, Mm& date) {
    v = version_text();
    date = TM(release_date);
    return v;
}

Mm ver() {
    display(version());
    return x_M;
}

Mm computer() { return TM(platform_word); }

Mm computer(i_o_t, Mm& c, Mm& maxsize) {
    c = TM(platform_word);
    maxsize = Mm(largest_size);
    return x_M;
}

// ---- stubs ---------------------------------------------------------------------------------------

Mm echo(const Mm&) { return nothing_done(); }
Mm ivdep() { return nothing_done(); }
Mm more(const Mm&) { return nothing_done(); }
Mm realonly() { return nothing_done(); }
Mm rmpath(const Mm&) { return nothing_done(); }
Mm sim(const Mm&) { return nothing_done(); }
Mm sim(const Mm&, const Mm&) { return nothing_done(); }
Mm spparms(const Mm&) { return nothing_done(); }
Mm spparms(const Mm&, const Mm&) { return nothing_done(); }

Mm assignin(Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm) { return stub_called(); }
Mm close_system(Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm) { return stub_called(); }
Mm find_system(Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm) { return stub_called(); }
Mm open_system(Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm) { return stub_called(); }
Mm get_param(Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm) { return stub_called(); }
Mm set_param(Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm) { return stub_called(); }
Mm simset(Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm) { return stub_called(); }
Mm system_dependent(Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm) { return stub_called(); }
Mm miedit(Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm, Mm) { return stub_called(); }

AK_BUILTIN("version", AK_FN(version), AK_FN_REFS(version, i_o_t, Mm&, Mm&));
AK_BUILTIN("ver", ver);
AK_BUILTIN("computer", AK_FN(computer), AK_FN_REFS(computer, i_o_t, Mm&, Mm&));
AK_BUILTIN("echo", echo);
AK_BUILTIN("ivdep", ivdep);
AK_BUILTIN("more", more);
AK_BUILTIN("realonly", realonly);
AK_BUILTIN("rmpath", rmpath);
AK_BUILTIN("sim", AK_FN(sim, const Mm&), AK_FN(sim, const Mm&, const Mm&));
AK_BUILTIN("spparms", AK_FN(spparms, const Mm&), AK_FN(spparms, const Mm&, const Mm&));
AK_BUILTIN("assignin", stub_called_any);
AK_BUILTIN("close_system", stub_called_any);
AK_BUILTIN("find_system", stub_called_any);
AK_BUILTIN("open_system", stub_called_any);
AK_BUILTIN("get_param", stub_called_any);
AK_BUILTIN("set_param", stub_called_any);
AK_BUILTIN("simset", stub_called_any);
AK_BUILTIN("system_dependent", stub_called_any);
AK_BUILTIN("miedit", stub_called_any);
