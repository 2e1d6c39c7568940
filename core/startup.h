// The object whose construction sets the library up at load time and whose destruction tears it
// down at unload, and the process-wide set-up pieces it runs.
#pragma once

struct library_lifetime {
    char player_program[256];   // the external sound player
    char crash_text[2048];      // text of the crash report, with the call stack
    char viewer_program[256];   // the external image viewer
    char gnuplot_program[256];  // the external plotter
    int trace;                  // when set, each start-up step prints its trace line

    // Runs the load-time steps. The library's own object is built with trace 0; a second object
    // runs the same steps again (tests do this to watch them).
    library_lifetime() : library_lifetime(0) {}
    explicit library_lifetime(int trace_steps);
    ~library_lifetime();

    library_lifetime(const library_lifetime&) = delete;
    library_lifetime& operator=(const library_lifetime&) = delete;

private:
    void step(const char* text) const;
    void read_program_names();
};

// The library's object, built last among its static objects.
extern library_lifetime ak_lifetime;

// Byte order of this machine for file operations: -1 until start-up, then 0 (little-endian).
extern int ak_native_format;

namespace ak_internal {

// Infinity and NaN as bit patterns, set once at start-up.
extern double ieee_inf;
extern double ieee_nan;

// Every floating-point exception masked and cleared, round to nearest, no flush-to-zero.
void fpu_reset();

// The crash report: handlers for the fault signals on an alternate stack, and the terminate handler
// that shows a pending error.
void crash_filter_install();
// From now on a SIGFPE that is sent (not raised by a faulting instruction) is ignored.
void crash_ignore_sent_sigfpe();
// The report's code for a signal: the table code of the fault, or the signal number itself when the
// table has none. `stack_fault` marks a SIGSEGV in the stack guard.
unsigned crash_code(int signal, int si_code, bool stack_fault);
// The table's name of a code, or "Unknown exception code".
const char* crash_code_name(unsigned code);
// Writes the report of `code` into `text` (`size` bytes): the code line and the call stack.
void crash_report_text(char* text, unsigned size, unsigned code);

}  // namespace ak_internal
