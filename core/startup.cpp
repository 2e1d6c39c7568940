// Load-time set-up and unload-time clean-up of the library, the handshake with translated programs
// and the ways out.
#include "core/startup.h"

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "arklib/builtins.h"
#include "arklib/error.h"
#include "arklib/matrix.h"
#include "arklib/startup.h"
#include "core/locks.h"
#include "core/matrix_internal.h"
#include "graphics/engine_table.h"
#include "runtime/error_internal.h"

int ak_native_format = -1;

namespace ak_internal {
double ieee_inf = 0.0;
double ieee_nan = 0.0;
}  // namespace ak_internal

namespace {

double from_bits(std::uint64_t bits) {
    double d;
    std::memcpy(&d, &bits, sizeof d);
    return d;
}

void set_ieee_constants() {
    static bool done = false;
    if (done) return;
    ak_internal::ieee_inf = from_bits(0x7FF0000000000000ull);
    ak_internal::ieee_nan = from_bits(0x7FFFFFFFFFFFFFFFull);
    done = true;
}

// The upper-case variable, else the lower-case one, else the default; cut to the buffer.
void program_name(char* out, std::size_t size, const char* upper, const char* lower, const char* fallback) {
    const char* value = std::getenv(upper);
    if (!value) value = std::getenv(lower);
    if (!value) value = fallback;
    std::snprintf(out, size, "%s", value);
}

}  // namespace

library_lifetime::library_lifetime(int trace_steps)
    : player_program{}, crash_text{}, viewer_program{}, gnuplot_program{}, trace(trace_steps) {
    // This build has no expiry date; the engine is handed 0 for what remains of it.
    int remaining = 0;
    ak_internal::engine_connect(remaining);
    // The thread priority is left as it is.
    ak_internal::crash_filter_install();
    step("InitCS\n");  // the runtime locks are created on first use
    set_ieee_constants();
    if (ak_native_format == -1) ak_native_format = 0;
    step("assert\n");
    step("resetfpu\n");
    ak_internal::fpu_reset();
    step("signal\n");
    ak_internal::crash_ignore_sent_sigfpe();
    ak_lasterr_clear();
    step("getenv\n");
    read_program_names();
    step("init const\n");
    ak_internal::init_const();
}

library_lifetime::~library_lifetime() {
    // The constant objects go after this: their storage returns to the allocator itself.
    ak_internal::keep_scalar_blocks(false);
    ak_internal::engine_disconnect();
    ak_internal::fpu_reset();
    ak_locks_destroy();
}

void library_lifetime::step(const char* text) const {
    if (trace) ak_printf("%s", text);
}

void library_lifetime::read_program_names() {
    program_name(viewer_program, sizeof viewer_program, "MATVEXVIEWER", "matvexviewer", "xdg-open");
    program_name(player_program, sizeof player_program, "MATVEXPLAYER", "matvexplayer", "aplay");
    program_name(gnuplot_program, sizeof gnuplot_program, "MATVEXGNUPLOT", "matvexgnuplot", "gnuplot");
}

void initM2(int version, int size) {
    if (version != ARKLIB_VERSION)
        error("Version mismatch - runtime version is %g but arklib.h version is %g.", ARKLIB_VERSION * 0.001,
              version * 0.001);
    if (size != static_cast<int>(sizeof(Mm)))
        error("sizeof(Mm) mismatch - runtime size is %d but current size is %d", static_cast<int>(sizeof(Mm)),
              size);
    ak_internal::fpu_reset();
    ak_internal::init_const();
}

void exitM() {
    guiexit(Mm(static_cast<double>(ak_scope_tracking)));
    ak_internal::fpu_reset();
}

Mm exit() {
    exitM();
    std::fflush(nullptr);
    std::exit(0);
}

Mm quit() { exit(); }

unsigned ak_set_AK(int on) {
    // The kept 1x1 blocks are a plain list: threads would race on it.
    ak_internal::keep_scalar_blocks(!on);
    multi_task = on;
    return static_cast<unsigned>(getpid());
}

// ---- rows of the table of functions by name ----------------------------------------------------
AK_BUILTIN("exit", AK_FN(exit));
AK_BUILTIN("quit", AK_FN(quit));
