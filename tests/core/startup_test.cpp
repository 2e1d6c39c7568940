// Start-up and shutdown: handshake, floating-point reset, load-time steps, engine exchange, crash report.
#include <sys/wait.h>
#include <unistd.h>

#include <cfenv>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#if defined(__x86_64__)
#include <xmmintrin.h>
#endif

#include "arklib.h"
#include "core/startup.h"
#include "graphics/engine_table.h"
#include "test_support.h"

namespace {

std::uint64_t bits(double d) {
    std::uint64_t b;
    std::memcpy(&b, &d, sizeof b);
    return b;
}

std::vector<std::string> engine_log;
double recorded_figure = -1.0;
qor_event_handler_t given_event = nullptr;
qor_error_handler_t given_error = nullptr;
qor_free_handler_t given_free = nullptr;

void log_line(const std::string& s) { engine_log.push_back(s); }
void log_handler(const char* w, bool on) { log_line(w + std::string(on ? " handler" : " handler null")); }

ak_engine_table recording_engine() {
    ak_engine_table t{};
    t.qor_init = [](int version, int remaining) {
        log_line("init " + std::to_string(version) + " " + std::to_string(remaining));
    };
    t.qor_set_event_handler = [](qor_event_handler_t f) { log_handler("event", given_event = f); };
    t.qor_set_error_handler = [](qor_error_handler_t f) { log_handler("error", given_error = f); };
    t.qor_set_free_handler = [](qor_free_handler_t f) { log_handler("free", given_free = f); };
    t.qor_current_figure = []() {
        log_line("current figure");
        return recorded_figure;
    };
    t.qor_refresh = []() { log_line("refresh"); };
    t.qor_exit = [](int code) { log_line("exit " + std::to_string(code)); };
    return t;
}

// Installs the recording engine for its lifetime.
struct RecordingEngine {
    ak_engine_table saved = ak_engine_install(recording_engine());
    RecordingEngine() { engine_log.clear(), recorded_figure = -1.0; }
    ~RecordingEngine() { ak_engine_install(saved); }
};

struct Child {
    std::string out;  // everything the child wrote to standard output
    int status;       // as waitpid reports it
};

// Runs `body` in a forked copy of this process with standard output captured. A body that returns
// ends the child with status 0.
Child run_child(const std::function<void()>& body) {
    int fds[2];
    if (pipe(fds) != 0) return {"pipe failed", -1};
    std::fflush(nullptr);
    pid_t pid = fork();
    if (pid == 0) {
        close(fds[0]);
        dup2(fds[1], STDOUT_FILENO);
        close(fds[1]);
        body();
        std::fflush(nullptr);
        _exit(0);
    }
    close(fds[1]);
    Child result{"", -1};
    char buffer[4096];
    ssize_t n;
    while ((n = read(fds[0], buffer, sizeof buffer)) > 0)
        result.out.append(buffer, static_cast<std::size_t>(n));
    close(fds[0]);
    waitpid(pid, &result.status, 0);
    return result;
}

// Two frames of translated M-files, so the report has a call stack to show.
void push_two_frames() {
    ak_error_stack.depth = 2;
    ak_error_stack.files[1] = "main.m";
    ak_error_stack.lines[1] = 3;
    ak_error_stack.files[2] = "f.m";
    ak_error_stack.lines[2] = 7;
}

// An address the compiler cannot see as null, so the store really happens.
volatile std::uintptr_t bad_address = 16;
void access_violation() { *reinterpret_cast<volatile int*>(bad_address) = 1; }

volatile int keep_going = 1;
int recurse(int depth) {
    volatile char pad[512];
    pad[0] = static_cast<char>(depth);
    if (!keep_going) return 0;
    return recurse(depth + 1) + pad[0];
}

const char* const two_frame_stack = "called from f.m 7\ncalled from main.m 3\n";

void expect_crash(const Child& c, int signal, const std::string& out) {
    ASSERT_TRUE(WIFSIGNALED(c.status)) << c.out;
    EXPECT_EQ(WTERMSIG(c.status), signal);
    EXPECT_EQ(c.out, "\nApplication crash!\n\nException code: " + out);
}

}  // namespace

TEST(Handshake, ReportsMismatchesAndRestoresConstants) {
    EXPECT_ERROR(initM2(4500, ARKLIB_MM_SIZE),
                 "Version mismatch - runtime version is 4.51 but arklib.h version is 4.5.");
    EXPECT_EQ(ARKLIB_MM_SIZE, static_cast<int>(sizeof(Mm)));

    // A host handler that returns sees both reports, and the handshake goes on with its work.
    ak_test::Recorder rec(ak_test::Recorder::kErrors);
    pi = Mm(3.0);
    semi = Mm(5.0);  // a marker assigned to by mistake
    Inf = Mm(0.0);
    initM2(4500, 92);
    ASSERT_EQ(rec.errors.size(), 2u);
    EXPECT_EQ(rec.errors[0], "Version mismatch - runtime version is 4.51 but arklib.h version is 4.5.");
    EXPECT_EQ(rec.errors[1], "sizeof(Mm) mismatch - runtime size is " + std::to_string(sizeof(Mm)) +
                                 " but current size is 92");
    EXPECT_EQ(bits(pi.r()), 0x400921FB54442D18ull);
    EXPECT_EQ(bits(Inf.r()), 0x7FF0000000000000ull);
    EXPECT_EQ(bits(NaN.r()), 0x7FFFFFFFFFFFFFFFull);
    EXPECT_EQ(eps.r(), std::ldexp(1.0, -52));
    EXPECT_EQ(semi.size(), 0);
    EXPECT_EQ(j.pr, i.pr);  // j shares i
    EXPECT_EQ(i.i(), 1.0);
}

TEST(Handshake, FloatingPointStateIsReset) {
    auto assert_clean = [](const char* when) {
        EXPECT_EQ(fegetexcept(), 0) << when;
        EXPECT_EQ(std::fegetround(), FE_TONEAREST) << when;
#if defined(__x86_64__)
        EXPECT_EQ(_mm_getcsr() & 0x8040u, 0u) << when;       // no flush-to-zero, no denormals-are-zero
        EXPECT_EQ(_mm_getcsr() & 0x1F80u, 0x1F80u) << when;  // every exception masked
#endif
    };
    auto disturb = []() {
        feenableexcept(FE_DIVBYZERO | FE_INVALID);
        std::fesetround(FE_UPWARD);
#if defined(__x86_64__)
        _mm_setcsr(_mm_getcsr() | 0x8040u);
#endif
    };
    disturb();
    initM();
    assert_clean("after initM");
    disturb();
    exitM();
    assert_clean("after exitM");
}

TEST(Lifetime, RunsStepsInOrderWithTheEngine) {
    RecordingEngine engine;
    for (const char* v : {"MATVEXVIEWER", "MATVEXGNUPLOT", "matvexgnuplot"}) unsetenv(v);
    setenv("matvexviewer", "lower-viewer", 1);
    setenv("MATVEXPLAYER", "upper-player", 1);
    setenv("matvexplayer", "lower-player", 1);
    ak_lasterr_store("error: left over\n");
    {
        ak_test::Recorder rec;
        library_lifetime probe(1);
        EXPECT_EQ(rec.printed, "InitCS\nassert\nresetfpu\nsignal\ngetenv\ninit const\n");
        EXPECT_EQ(engine_log, (std::vector<std::string>{"init 4510 0", "event handler", "error handler",
                                                        "free handler"}));
        EXPECT_STREQ(probe.viewer_program, "lower-viewer");
        EXPECT_STREQ(probe.player_program, "upper-player");
        EXPECT_STREQ(probe.gnuplot_program, "gnuplot");
        EXPECT_FALSE(ak_lasterr_pending());
        engine_log.clear();
    }
    EXPECT_EQ(engine_log,
              (std::vector<std::string>{"event handler null", "error handler null", "free handler null"}));
    EXPECT_EQ(ak_native_format, 0);

    // Unset names take their defaults; a name too long for its buffer is cut.
    for (const char* v : {"matvexviewer", "MATVEXPLAYER", "matvexplayer"}) unsetenv(v);
    std::string long_name(5000, 'x');
    setenv("MATVEXGNUPLOT", long_name.c_str(), 1);
    library_lifetime probe;
    EXPECT_STREQ(probe.viewer_program, "xdg-open");
    EXPECT_STREQ(probe.player_program, "aplay");
    EXPECT_EQ(std::string(probe.gnuplot_program), long_name.substr(0, sizeof probe.gnuplot_program - 1));
    unsetenv("MATVEXGNUPLOT");
}

TEST(Lifetime, ReceiversGivenToTheEngine) {
    RecordingEngine engine;
    { library_lifetime probe; }  // hands the receivers over, then takes them back
    library_lifetime probe;
    ASSERT_TRUE(given_event && given_error && given_free);

    EXPECT_ERROR(given_error("engine: bad property"), "engine: bad property");

    given_free(new Mm(7.0));  // the sanitizer build catches a leak or a double free here

    // A record from the engine becomes a string matrix and reaches callback_func.
    static std::vector<std::string> texts;
    texts.clear();
    ak_callback_func_t saved = callback_func;
    callback_func = [](Mm text) {
        char buffer[64];
        texts.push_back(std::string(text.flags.str ? "str:" : "num:") + Mstr(text, buffer, sizeof buffer));
        return x_M;
    };
    QorValue record;
    record.setsize(1, 3, 0);
    record.str = 1;
    record.alloc();
    for (int k = 0; k < 3; ++k) record.data[k] = "abc"[k];
    given_event(&record);
    QorValue empty;
    given_event(&empty);  // an empty callback is not run
    EXPECT_EQ(texts, std::vector<std::string>{"str:abc"});

    // A failing callback is shown and does not escape; the call stack depth comes back.
    callback_func = [](Mm) -> Mm {
        ++ak_error_stack.depth;
        error("callback failed");
        return x_M;
    };
    {
        ak_test::ErrorsThrow guard;
        ak_test::Recorder rec;
        int depth = ak_error_stack.depth;
        given_event(&record);
        EXPECT_EQ(ak_error_stack.depth, depth);
        EXPECT_NE(rec.printed.find("error: callback failed"), std::string::npos) << rec.printed;
    }
    callback_func = saved;
    record.free();
}

TEST(Lifetime, ExitMClosesTheGraphicsSide) {
    RecordingEngine engine;
    exitM();
    EXPECT_EQ(engine_log,
              (std::vector<std::string>{"current figure", "exit " + std::to_string(ak_scope_tracking)}));
    engine_log.clear();
    recorded_figure = 1.0;  // a figure is open: its pending drawing is shown first
    guiexit(Mm(3.0));
    EXPECT_EQ(engine_log, (std::vector<std::string>{"current figure", "refresh", "exit 3"}));

    EXPECT_EQ(ak_set_AK(1), static_cast<unsigned>(getpid()));
    EXPECT_EQ(multi_task, 1);
    ak_set_AK(0);
    EXPECT_EQ(multi_task, 0);
}

TEST(Lifetime, ExitAndQuitEndTheProcessAfterExitM) {
    for (bool use_quit : {false, true}) {
        Child c = run_child([use_quit] {
            ak_engine_table t{};
            t.qor_exit = [](int code) { std::printf("engine exit %d\n", code); };
            ak_engine_install(t);
            std::printf("before\n");
            use_quit ? quit() : exit();
            std::printf("after\n");
            _exit(9);
        });
        ASSERT_TRUE(WIFEXITED(c.status)) << c.out;
        EXPECT_EQ(WEXITSTATUS(c.status), 0);
        EXPECT_EQ(c.out, "before\nengine exit " + std::to_string(ak_scope_tracking) + "\n");
    }
}

TEST(CrashReport, CodeNames) {
    EXPECT_STREQ(ak_internal::crash_code_name(0xC0000007u), "Unknown exception code");
    EXPECT_EQ(ak_internal::crash_code(SIGFPE, FPE_FLTINV, false), 0xC0000090u);
    EXPECT_EQ(ak_internal::crash_code(SIGFPE, FPE_FLTSUB, false), static_cast<unsigned>(SIGFPE));
    char text[2048];
    push_two_frames();
    ak_internal::crash_report_text(text, sizeof text, 0xC0000096u);
    ak_error_stack.depth = 0;
    EXPECT_EQ(std::string(text),
              std::string("Exception code: C0000096 PRIV_INSTRUCTION\n\n") + two_frame_stack);
    // A report that does not fit is cut, never overrun.
    char small[40];
    push_two_frames();
    ak_internal::crash_report_text(small, sizeof small, 0xC0000005u);
    ak_error_stack.depth = 0;
    EXPECT_EQ(std::strlen(small), sizeof small - 1);
}

TEST(CrashReport, FaultsShowCodeAndStack) {
    Child c = run_child([] {
        push_two_frames();
        access_violation();
    });
    expect_crash(c, SIGSEGV, std::string("C0000005 ACCESS_VIOLATION\n\n") + two_frame_stack);
    expect_crash(run_child([] { recurse(0); }), SIGSEGV, "C00000FD STACK_OVERFLOW\n\n");
#if defined(__x86_64__)
    expect_crash(run_child([] {
                     asm volatile("movl $1, %%eax\n\tcltd\n\txorl %%ecx, %%ecx\n\tidivl %%ecx" ::
                                      : "eax", "ecx", "edx", "cc");
                 }),
                 SIGFPE, "C0000094 INT_DIVIDE_BY_ZERO\n\n");
#endif

    // A SIGFPE that is only sent is ignored.
    Child sent = run_child([] {
        raise(SIGFPE);
        _exit(7);
    });
    ASSERT_TRUE(WIFEXITED(sent.status));
    EXPECT_EQ(WEXITSTATUS(sent.status), 7);
    EXPECT_EQ(sent.out, "");
}

TEST(CrashReport, PendingErrorIsShownInsteadOfACrash) {
    // An error thrown and never caught: its text is shown and the program ends with status 1.
    Child uncaught = run_child([] {
        ak_default_error_flags = 1 | 16;
        ak_set_error_handler(nullptr);
        []() noexcept { error("matrix dimensions must agree"); }();
    });
    ASSERT_TRUE(WIFEXITED(uncaught.status)) << uncaught.out;
    EXPECT_EQ(WEXITSTATUS(uncaught.status), 1);
    EXPECT_EQ(uncaught.out, "error: matrix dimensions must agree\n\n");

    // A fault that arrives while an error report is pending shows that report, and no crash text.
    Child pending = run_child([] {
        push_two_frames();
        ak_lasterr_store("error: pending report\n");
        access_violation();
    });
    ASSERT_TRUE(WIFEXITED(pending.status)) << pending.out;
    EXPECT_EQ(WEXITSTATUS(pending.status), 1);
    EXPECT_EQ(pending.out, std::string("error: pending report\n") + two_frame_stack + "\n");
}
