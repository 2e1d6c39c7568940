// eval through the host's interpreter, feval through the program's table of functions, and the
// default that runs graphics callbacks.
#include "arklib/eval.h"

#include <cstdio>
#include <cstring>
#include <string>

#include "arklib/builtins.h"
#include "arklib/cells.h"
#include "arklib/scope.h"

// Text to number conversion lives with the string functions; eval falls back on it when there is
// no interpreter, if it is linked in.
Mm str2num(const Mm& s) __attribute__((weak));

namespace {

int eval_counter = 0;

// Texts that are run as statements, never as an expression with a result.
bool is_statement(const char* text) {
    static const char* const marks[] = {"tripdata", "playshow", "load ", "global", "!", "%", "="};
    for (const char* m : marks)
        if (std::strstr(text, m)) return true;
    return false;
}

Mm without_interpreter(const Mm& x) {
    if (!str2num) {
        error("eval: no interpreter and no conversion of text to numbers is available");
        return x_M;
    }
    return str2num(x);
}

Mm run_callback(Mm text) {
    eval(text);
    return x_M;
}

}  // namespace

ak_callback_func_t callback_func = run_callback;

int ak_eval_count() { return eval_counter; }

Mm eval(const Mm& x) {
    if (!eval_func) return without_interpreter(x);
    char text[16384];
    Mstr(x, text, sizeof text);
    if (!text[0]) return x_M;
    if (Mm* v = scope_lookup(text, variables_scope.depth)) return Mm(*v);
    char result_name[64];
    std::snprintf(result_name, sizeof result_name, "%s_%d", "eval_result", ++eval_counter);
    const bool wants_result = !is_statement(text);
    // An expression becomes an assignment to the result name, in at most 2047 characters.
    std::string statement = wants_result ? std::string(result_name) + "=" + text : std::string(text);
    if (wants_result && statement.size() > 2047) statement.resize(2047);
    const char* run = statement.c_str();
    // The interpreter finds the result variable by name in the scope table.
    Mm result;
    result.setname(result_name);
    ak_printf("Calling eval('%s')\n", run);
    const int failed = eval_func(run);
    ak_printf("Done eval\n");
    if (failed > 0) {
        ak_printf("eval '%s'\n", run);
        error("error evaluating.");
    }
    if (!wants_result) return x_M;
    Mm value(result);
    return value;
}

Mm eval(const Mm& x, const Mm&) { return eval(x); }

Mm eval(const Mm& x, i_o_t, Mm&, Mm&) { return eval(x); }

Mm evalin(const Mm&) {
    error_input("evalin", 1);
    return x_M;
}

Mm evalin(const Mm&, const Mm& x) { return eval(x); }

Mm evalin(const Mm&, const Mm& x, const Mm&) { return eval(x); }

// ---- feval ---------------------------------------------------------------------------------------

Mm feval_call(const Mm& name, const Mm& args, int nout, Mm* outs) {
    if (nout < 1) nout = 1;
    if (nout > 6) nout = 6;
    Mm o[6];
    // The caller's count comes back also when the function throws its error.
    struct restore_t {
        double saved;
        ~restore_t() { nargout_val = saved; }
    } restore{nargout_val};
    nargout_val = nout;
    nargout_set = 1;
    Mm first = feval_func(name, args, i_o, o[0], o[1], o[2], o[3], o[4], o[5]);
    if (outs) {
        outs[0] = first;
        for (int k = 1; k < nout; ++k) outs[k] = o[k];
    }
    return first;
}

Mm feval_call(const char* name, const Mm& args, int nout, Mm* outs) {
    return feval_call(TM(name), args, nout, outs);
}

namespace {

Mm call_with(const Mm& name, int n, const Mm* const* in) {
    Mm args = cell_from_array(n, const_cast<const Mm**>(in));
    return feval_call(name, args, 1, nullptr);
}

}  // namespace

Mm feval_call(const char* name) { return call_with(TM(name), 0, nullptr); }

Mm feval_call(const char* name, const Mm& a) { return feval_call(TM(name), a); }

Mm feval_call(const char* name, const Mm& a, const Mm& b) { return feval_call(TM(name), a, b); }

Mm feval_call(const char* name, const Mm& a, const Mm& b, const Mm& c) { return feval_call(TM(name), a, b, c); }

Mm feval_call(const char* name, const Mm& a, const Mm& b, const Mm& c, const Mm& d) {
    return feval_call(TM(name), a, b, c, d);
}

Mm feval_call(const Mm& name, const Mm& a) {
    const Mm* in[] = {&a};
    return call_with(name, 1, in);
}

Mm feval_call(const Mm& name, const Mm& a, const Mm& b) {
    const Mm* in[] = {&a, &b};
    return call_with(name, 2, in);
}

Mm feval_call(const Mm& name, const Mm& a, const Mm& b, const Mm& c) {
    const Mm* in[] = {&a, &b, &c};
    return call_with(name, 3, in);
}

Mm feval_call(const Mm& name, const Mm& a, const Mm& b, const Mm& c, const Mm& d) {
    const Mm* in[] = {&a, &b, &c, &d};
    return call_with(name, 4, in);
}

namespace {

// feval(f, inputs...) with nout results: the first returned, the others to outs.
Mm feval_n(const Mm& f, int nin, const Mm* const* in, int nout, Mm* const* outs) {
    Mm args = cell_from_array(nin, const_cast<const Mm**>(in));
    Mm results[3];
    Mm first = feval_call(f, args, nout, results);
    for (int k = 1; k < nout; ++k) *outs[k - 1] = results[k];
    return first;
}

}  // namespace

Mm feval(const Mm& f) { return feval_n(f, 0, nullptr, 1, nullptr); }

Mm feval(const Mm& f, const Mm& a) {
    const Mm* in[] = {&a};
    return feval_n(f, 1, in, 1, nullptr);
}

Mm feval(const Mm& f, const Mm& a, const Mm& b) {
    const Mm* in[] = {&a, &b};
    return feval_n(f, 2, in, 1, nullptr);
}

Mm feval(const Mm& f, const Mm& a, const Mm& b, const Mm& c) {
    const Mm* in[] = {&a, &b, &c};
    return feval_n(f, 3, in, 1, nullptr);
}

Mm feval(const Mm& f, const Mm& a, const Mm& b, const Mm& c, const Mm& d) {
    const Mm* in[] = {&a, &b, &c, &d};
    return feval_n(f, 4, in, 1, nullptr);
}

Mm feval(const Mm& f, const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e) {
    const Mm* in[] = {&a, &b, &c, &d, &e};
    return feval_n(f, 5, in, 1, nullptr);
}

Mm feval(const Mm& f, i_o_t, Mm& o2) {
    Mm* outs[] = {&o2};
    return feval_n(f, 0, nullptr, 2, outs);
}

Mm feval(const Mm& f, const Mm& a, i_o_t, Mm& o2) {
    const Mm* in[] = {&a};
    Mm* outs[] = {&o2};
    return feval_n(f, 1, in, 2, outs);
}

Mm feval(const Mm& f, const Mm& a, const Mm& b, i_o_t, Mm& o2) {
    const Mm* in[] = {&a, &b};
    Mm* outs[] = {&o2};
    return feval_n(f, 2, in, 2, outs);
}

Mm feval(const Mm& f, const Mm& a, const Mm& b, const Mm& c, i_o_t, Mm& o2) {
    const Mm* in[] = {&a, &b, &c};
    Mm* outs[] = {&o2};
    return feval_n(f, 3, in, 2, outs);
}

Mm feval(const Mm& f, i_o_t, Mm& o2, Mm& o3) {
    Mm* outs[] = {&o2, &o3};
    return feval_n(f, 0, nullptr, 3, outs);
}

Mm feval(const Mm& f, const Mm& a, i_o_t, Mm& o2, Mm& o3) {
    const Mm* in[] = {&a};
    Mm* outs[] = {&o2, &o3};
    return feval_n(f, 1, in, 3, outs);
}

Mm feval(const Mm& f, const Mm& a, const Mm& b, i_o_t, Mm& o2, Mm& o3) {
    const Mm* in[] = {&a, &b};
    Mm* outs[] = {&o2, &o3};
    return feval_n(f, 2, in, 3, outs);
}

Mm feval(const Mm& f, const Mm& a, const Mm& b, const Mm& c, i_o_t, Mm& o2, Mm& o3) {
    const Mm* in[] = {&a, &b, &c};
    Mm* outs[] = {&o2, &o3};
    return feval_n(f, 3, in, 3, outs);
}

// ---- functions given as text ---------------------------------------------------------------------

Mm fcnchk(const Mm& f) { return f; }
Mm fcnchk(const Mm& f, const Mm&) { return f; }
Mm inlinefcn(const Mm& f) { return f; }
Mm inlinefcn(const Mm& f, const Mm&) { return f; }
Mm minline(const Mm& f) { return f; }
Mm minline(const Mm& f, const Mm&) { return f; }
Mm formula(const Mm& f) { return f; }
Mm flipdim(const Mm& x) { return x; }

Mm fcnchk(const Mm& f, const Mm&, i_o_t, Mm& a, Mm& b) {
    a = f;
    b = TM("");
    return x_M;
}

Mm prefcnchk(const Mm& f, const Mm&, const Mm&, const Mm&, i_o_t, Mm& a, Mm& b) {
    a = f;
    b = TM("");
    return x_M;
}

Mm inputname(const Mm&) { return TM(""); }

namespace {

// feval(f, ...) through the table itself: its first input names the function.
void feval_by_name(int nin, const Mm* in, int nout, Mm* out) {
    if (nin < 1) {
        error_input("feval", 0);
        return;
    }
    char name[1024];
    Mstr(in[0], name, sizeof name);
    ak_call_function(name, nin - 1, in + 1, nout, out);
}

}  // namespace

AK_BUILTIN("eval", AK_FN(eval, const Mm&), AK_FN(eval, const Mm&, const Mm&));
AK_BUILTIN("evalin", AK_FN(evalin, const Mm&), AK_FN(evalin, const Mm&, const Mm&),
           AK_FN(evalin, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("feval", feval_by_name);
AK_BUILTIN("fcnchk", AK_FN(fcnchk, const Mm&), AK_FN(fcnchk, const Mm&, const Mm&),
           AK_FN_REFS(fcnchk, const Mm&, const Mm&, i_o_t, Mm&, Mm&));
AK_BUILTIN("prefcnchk", AK_FN_REFS(prefcnchk, const Mm&, const Mm&, const Mm&, const Mm&, i_o_t, Mm&, Mm&));
AK_BUILTIN("inlinefcn", AK_FN(inlinefcn, const Mm&), AK_FN(inlinefcn, const Mm&, const Mm&));
AK_BUILTIN("inline", AK_FN(minline, const Mm&), AK_FN(minline, const Mm&, const Mm&));
AK_BUILTIN("formula", formula);
AK_BUILTIN("flipdim", flipdim);
AK_BUILTIN("inputname", inputname);
