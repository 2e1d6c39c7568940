// The error, warning and message channel: handlers, flags, the last-error text and its report.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>
#include <string>

#include "arklib/matrix.h"
#include "test_support.h"

namespace {

std::string str(const Mm& m) {
    std::string buffer(8192, '\0');
    Mstr(m, &buffer[0], static_cast<int>(buffer.size()));
    return buffer.c_str();
}

// Puts a call stack in place for one test and empties it afterwards.
struct StackFrames {
    StackFrames(std::initializer_list<std::pair<const char*, int>> frames) {
        for (auto& f : frames) {
            ++ak_error_stack.depth;
            ak_error_stack.files[ak_error_stack.depth] = f.first;
            ak_error_stack.lines[ak_error_stack.depth] = f.second;
        }
    }
    ~StackFrames() { ak_error_stack.depth = 0; }
};

struct BoxCall {
    std::string text, caption;
    int style;
};
std::vector<BoxCall> boxes;

void silent(const char*) {}

}  // namespace

TEST(ErrorChannel, SettersFlagsAndThePendingReport) {
    ak_text_handler_t original = ak_error_handler;
    EXPECT_EQ(original, ak_set_error_handler(silent));
    EXPECT_EQ(silent, ak_error_handler);
    EXPECT_EQ(silent, ak_set_error_handler(nullptr));
    EXPECT_EQ(original, ak_error_handler);
    EXPECT_EQ(1, ak_was_handler_set());

    // Flag words: masked bits set and cleared.
    ak_test::ErrorsThrow guard;
    unsigned error_flags = ak_default_error_flags;
    ak_default_error_flags = 7;
    ak_set_default_error_flags(16 | 2, 1);
    EXPECT_EQ(23u, ak_default_error_flags);
    ak_set_default_error_flags(1 | 4, 0);
    EXPECT_EQ(18u, ak_default_error_flags);
    ak_default_error_flags = error_flags;
    ak_default_warning_flags = 3;
    ak_set_default_warning_flags(1, 0);
    EXPECT_EQ(2u, ak_default_warning_flags);

    // A thrown error leaves its report pending until it is taken or shown.
    EXPECT_ERROR(error("%s failed at %d", "solve", 3), "solve failed at 3");
    ak_test::Recorder rec;
    try {
        error("bad size");
    } catch (char*) {
    }
    EXPECT_EQ("error: bad size\n", str(lasterr()));
    EXPECT_EQ("", str(lasterr()));

    try {
        error("again");
    } catch (char* m) {
        // A caught message handed back to error is read before the buffer is reused.
        EXPECT_ERROR(error("%s", m), "again");
    }
    try {
        error("shown");
    } catch (char*) {
        error_lasterr();
    }
    EXPECT_EQ("error: shown\n\n", rec.printed);
    EXPECT_FALSE(ak_lasterr_pending());
}

TEST(ErrorChannel, ReportOfEmptyTextStackAndFolding) {
    ak_test::ErrorsThrow guard;
    ak_test::Recorder rec;
    error_lasterr();
    EXPECT_EQ("Aborted!\n\n", rec.printed);

    rec.clear();
    {
        StackFrames stack({{"/home/me/main.m", 12}, {"lib/helper.m", 0}});
        lasterr(TM("error: x\n"));
        error_lasterr();
    }
    EXPECT_EQ("error: x\ncalled from lib/helper.m\ncalled from /home/me/main.m 12\n\n", rec.printed);

    // Columns count from 0 on each line; the first blank at column 64 or beyond breaks the line.
    std::string at63 = std::string(63, 'b') + " " + std::string(10, 'c');
    std::string at64 = std::string(64, 'd') + " e f";
    std::string after_newline = "x\n" + std::string(63, 'g') + " h";
    for (const std::string& text : {at63, at64, after_newline}) {
        rec.clear();
        lasterr(TM(text.c_str()));
        error_lasterr();
        EXPECT_EQ((text == at64 ? std::string(64, 'd') + "\ne f" : text) + "\n", rec.printed);
    }
}

TEST(ErrorChannel, MessageBoxStepFollowsFlagBits) {
    ak_test::ErrorsThrow guard;
    ak_test::Recorder rec(ak_test::Recorder::kPrint);
    ak_message_box_hook = [](const char* text, const char* caption, int style) {
        boxes.push_back({text, caption, style});
    };
    boxes.clear();
    ak_default_error_flags = 2 | 16;
    ak_default_warning_flags = 3;
    message("hello %d", 1);
    warning("careful");
    lasterr(TM("error: y\n"));
    error_lasterr();
    ak_message_box_hook = nullptr;

    ASSERT_EQ(3u, boxes.size());
    EXPECT_EQ("hello 1", boxes[0].text);
    EXPECT_EQ("Message", boxes[0].caption);
    EXPECT_EQ(0, boxes[0].style);
    EXPECT_EQ("warning: careful\n\n", boxes[1].text);
    EXPECT_EQ("Problem", boxes[1].caption);
    EXPECT_EQ("error: y\n", boxes[2].text);
    EXPECT_EQ(48, boxes[2].style);
    // Error flag bit 0 is off: only the warning (warning flags) was printed.
    EXPECT_EQ("warning: careful\n\n", rec.printed);
}

TEST(ErrorChannel, LocatedFormAndLongText) {
    ak_test::ErrorsThrow guard;
    ak_test::Recorder rec(ak_test::Recorder::kPrint);
    error_file = "prog.m";
    error_text = "a = 1;\n \t b = c + 1;\r\nd = 2;";
    try {
        error(2, "undefined c");
    } catch (char* m) {
        EXPECT_STREQ("undefined c", m);
    }
    EXPECT_EQ(2, error_line);
    EXPECT_EQ("Error prog.m 2: 'b = c + 1;'\nundefined c\n\n", str(lasterr()));

    warning(9, "past the end");
    EXPECT_EQ("Error prog.m 9: 'd = 2;'\npast the end\n\n", rec.printed);
    error_line = 0;
    error_text = error_file = nullptr;

    // Long text is cut, never overrun.
    rec.clear();
    std::string huge(100000, 'z');
    EXPECT_ERROR(error("%s", huge.c_str()), huge.substr(0, 2047));
    try {
        error("%s!", huge.c_str());
    } catch (char*) {
    }
    EXPECT_EQ(2048u, std::strlen(ak_lasterr_text()));

    warning("%s", huge.c_str());
    EXPECT_EQ(2047u, rec.printed.size());

    lasterr(TM(huge.c_str()));
    EXPECT_EQ(huge.substr(0, 2048), str(lasterr()));

    // ak_printf has no length limit.
    rec.clear();
    int n = ak_printf("<%s|%d>", huge.c_str(), 42);
    EXPECT_EQ("<" + huge + "|42>", rec.printed);
    EXPECT_EQ(static_cast<int>(huge.size()) + 5, n);
}

TEST(ErrorChannel, MatrixFormsAndTheTopFrame) {
    ak_test::Recorder rec;
    EXPECT_NO_ERROR(error(TM("")));
    EXPECT_FALSE(ak_lasterr_pending());
    EXPECT_ERROR(error(TM("50% of %s")), "50% of %s");
    EXPECT_ERROR(error(), "error!");

    EXPECT_EQ("on", str(warning()));
    warning(TM("on"));
    warning(TM("off"));
    EXPECT_EQ("on", str(warning()));
    warning(TM("disk 90%% full, %s"));
    ASSERT_EQ(1u, rec.warnings.size());
    EXPECT_EQ("disk 90% full, %s", rec.warnings[0]);

    // mfilename and mfileline read the top frame.
    EXPECT_EQ("unknown", str(mfilename()));
    StackFrames stack({{"main.m", 3}, {"/home/u/prj/solver.v2.m", 17}});
    EXPECT_EQ("solver", str(mfilename()));
    EXPECT_EQ(17.0, mfileline().r());
}

TEST(ErrorChannelDeathTest, DefaultHandlerReportsAndExits) {
    auto run = []() {
        ak_set_print_handler([](const char* t) { std::fputs(t, stderr); });
        ak_default_error_flags = 1;
        error("fatal %d", 9);
    };
    EXPECT_EXIT(run(), ::testing::ExitedWithCode(1), "^error: fatal 9\n\n$");
}

TEST(ErrorChannelDeathTest, ConsoleDefaultsWithoutTerminal) {
    auto run = []() {
        char path[] = "/tmp/ak_input_XXXXXX";
        int fd = mkstemp(path);
        const char text[] = "first line\r\nsecond";
        if (fd < 0 || write(fd, text, sizeof text - 1) != sizeof text - 1) std::exit(3);
        close(fd);
        if (!std::freopen(path, "r", stdin)) std::exit(3);
        unlink(path);
        char buffer[2048];
        int code = 4;
        for (const char* line : {"first line", "second", ""}) {
            ak_input_handler(buffer, sizeof buffer);
            if (std::strcmp(buffer, line) != 0) std::exit(code);
            ++code;
        }
        std::exit(ak_kbhit_handler() == 0 ? 0 : 7);
    };
    EXPECT_EXIT(run(), ::testing::ExitedWithCode(0), "");
}
