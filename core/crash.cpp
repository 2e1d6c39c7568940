// The crash report. A fault signal is caught on an alternate stack (so that a stack overflow can be
// reported too) and turned into "Exception code: ..." with the M-file call stack; an uncaught error
// thrown by error() is shown as the error it is and ends the program with status 1.
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <exception>

#include <ucontext.h>

#include "arklib/error.h"
#include "core/startup.h"
#include "runtime/error_internal.h"

namespace {

const char* const crash_caption = "Application crash!";

struct code_name {
    unsigned code;
    const char* name;
};

const code_name code_table[] = {
    {0x80000001u, "GUARD_PAGE"},
    {0x80000002u, "DATATYPE_MISALIGNMENT"},
    {0x80000003u, "BREAKPOINT"},
    {0x80000004u, "SINGLE_STEP"},
    {0xC0000005u, "ACCESS_VIOLATION"},
    {0xC0000006u, "IN_PAGE_ERROR"},
    {0xC0000008u, "INVALID_HANDLE"},
    {0xC000001Du, "ILLEGAL_INSTRUCTION"},
    {0xC0000025u, "NONCONTINUABLE_EXCEPTION"},
    {0xC0000026u, "INVALID_DISPOSITION"},
    {0xC000008Cu, "ARRAY_BOUNDS_EXCEEDED"},
    {0xC000008Du, "FLT_DENORMAL_OPERAND"},
    {0xC000008Eu, "FLT_DIVIDE_BY_ZERO"},
    {0xC000008Fu, "FLT_INEXACT_RESULT"},
    {0xC0000090u, "FLT_INVALID_OPERATION"},
    {0xC0000091u, "FLT_OVERFLOW"},
    {0xC0000092u, "FLT_STACK_CHECK"},
    {0xC0000093u, "FLT_UNDERFLOW"},
    {0xC0000094u, "INT_DIVIDE_BY_ZERO"},
    {0xC0000095u, "INT_OVERFLOW"},
    {0xC0000096u, "PRIV_INSTRUCTION"},
    {0xC00000FDu, "STACK_OVERFLOW"},
};

const int fault_signals[] = {SIGSEGV, SIGBUS, SIGILL, SIGFPE};

// The handler's own stack: large enough for the report's formatting and the print handler.
constexpr std::size_t alt_stack_size = 128 * 1024;
alignas(16) char alt_stack[alt_stack_size];

volatile sig_atomic_t sent_sigfpe_ignored = 0;
std::terminate_handler previous_terminate = nullptr;

// A SIGSEGV close below the interrupted stack pointer is a stack overflow: the frame being entered
// reached the guard region under the stack.
bool in_stack_guard(const siginfo_t* info, const void* context) {
#if defined(__x86_64__)
    if (!info || !context) return false;
    auto sp = static_cast<std::uintptr_t>(static_cast<const ucontext_t*>(context)->uc_mcontext.gregs[REG_RSP]);
    auto addr = reinterpret_cast<std::uintptr_t>(info->si_addr);
    constexpr std::uintptr_t below = 64 * 1024, above = 1024 * 1024;
    return addr + below >= sp && addr < sp + above;
#else
    (void)info;
    (void)context;
    return false;
#endif
}

void pause_ms(long ms) {
    timespec t = {ms / 1000, (ms % 1000) * 1000000L};
    while (nanosleep(&t, &t) != 0 && errno == EINTR) {
    }
}

void restore_default_and_raise(int sig) {
    struct sigaction dfl;
    std::memset(&dfl, 0, sizeof dfl);
    dfl.sa_handler = SIG_DFL;
    sigemptyset(&dfl.sa_mask);
    sigaction(sig, &dfl, nullptr);
    // A sent signal is delivered again once the handler returns; a faulting instruction faults again.
    raise(sig);
}

void on_fault(int sig, siginfo_t* info, void* context) {
    if (sig == SIGFPE && sent_sigfpe_ignored && info && info->si_code <= 0) return;
    if (ak_lasterr_pending()) {
        // A reported error was on its way up when the fault came: that error is what the user sees.
        error_lasterr();
        std::fflush(nullptr);
        _exit(1);
    }
    char* text = ak_lifetime.crash_text;
    unsigned code = ak_internal::crash_code(sig, info ? info->si_code : 0, sig == SIGSEGV && in_stack_guard(info, context));
    ak_internal::crash_report_text(text, sizeof ak_lifetime.crash_text, code);
    ak_message_box(text, crash_caption, 48);
    char shown[sizeof ak_lifetime.crash_text + 64];
    std::snprintf(shown, sizeof shown, "\n%s\n\n%s", crash_caption, text);
    if (ak_print_handler) ak_print_handler(shown);
    std::fflush(nullptr);
    pause_ms(500);
    restore_default_and_raise(sig);
}

// An error thrown by error() (error flag 16) that nobody caught.
[[noreturn]] void on_terminate() {
    if (ak_lasterr_pending()) {
        error_lasterr();
        std::fflush(nullptr);
        std::exit(1);
    }
    if (previous_terminate) previous_terminate();
    std::abort();
}

}  // namespace

namespace ak_internal {

unsigned crash_code(int sig, int si_code, bool stack_fault) {
    switch (sig) {
        case SIGSEGV:
            return stack_fault ? 0xC00000FDu : 0xC0000005u;
        case SIGILL:
            return 0xC000001Du;
        case SIGBUS:
            return 0x80000002u;
        case SIGFPE:
            switch (si_code) {
                case FPE_INTDIV: return 0xC0000094u;
                case FPE_INTOVF: return 0xC0000095u;
                case FPE_FLTDIV: return 0xC000008Eu;
                case FPE_FLTOVF: return 0xC0000091u;
                case FPE_FLTUND: return 0xC0000093u;
                case FPE_FLTRES: return 0xC000008Fu;
                case FPE_FLTINV: return 0xC0000090u;
                default: break;
            }
            break;
        default:
            break;
    }
    return static_cast<unsigned>(sig);
}

const char* crash_code_name(unsigned code) {
    for (const code_name& entry : code_table)
        if (entry.code == code) return entry.name;
    return "Unknown exception code";
}

void crash_report_text(char* text, unsigned size, unsigned code) {
    if (!text || size == 0) return;
    std::snprintf(text, size, "Exception code: %08X %s\n\n", code, crash_code_name(code));
    ak_error_call_stack_n(text, size);
}

void crash_filter_install() {
    stack_t stack;
    std::memset(&stack, 0, sizeof stack);
    stack.ss_sp = alt_stack;
    stack.ss_size = alt_stack_size;
    sigaltstack(&stack, nullptr);

    struct sigaction action;
    std::memset(&action, 0, sizeof action);
    action.sa_sigaction = on_fault;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigemptyset(&action.sa_mask);
    for (int sig : fault_signals) sigaction(sig, &action, nullptr);

    std::terminate_handler old = std::set_terminate(on_terminate);
    if (old != on_terminate) previous_terminate = old;
}

// Ignoring a SIGFPE raised by an instruction is not possible (it would run again forever), so only
// a sent one is ignored; a real arithmetic fault is reported like any other.
void crash_ignore_sent_sigfpe() { sent_sigfpe_ignored = 1; }

}  // namespace ak_internal
