// Dialogs through our engine: answered on a terminal (a pseudo-terminal stands in for stdin), and
// taking their default answers without one; the progress bar; bad arguments.
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "arklib/dialogs.h"
#include "graphics/graphics_internal.h"
#include "test_support.h"

using ak_test::row;

namespace {

std::string text(const Mm& m) {
    char b[1024];
    return Mstr(m, b, sizeof b);
}

const Mm& cell(const Mm& c, int k) { return static_cast<const Mm*>(c.pr)[k]; }

// For its lifetime stdin is a pseudo-terminal whose other end the test writes answers into and
// reads prompts from.
class Terminal {
  public:
    Terminal() {
        master_ = posix_openpt(O_RDWR | O_NOCTTY);
        EXPECT_GE(master_, 0);
        grantpt(master_);
        unlockpt(master_);
        const int slave = open(ptsname(master_), O_RDWR | O_NOCTTY);
        EXPECT_GE(slave, 0);
        saved_stdin_ = dup(STDIN_FILENO);
        dup2(slave, STDIN_FILENO);
        close(slave);
    }
    ~Terminal() {
        dup2(saved_stdin_, STDIN_FILENO);
        close(saved_stdin_);
        close(master_);
    }
    // Answers typed ahead; "\x04" at the start of a line ends the input.
    void type(const std::string& keys) { EXPECT_EQ(write(master_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size())); }
    // Everything shown on the terminal so far (prompts and the echo of the answers).
    std::string shown() {
        std::string out;
        char b[4096];
        fcntl(master_, F_SETFL, O_NONBLOCK);
        for (ssize_t n; (n = read(master_, b, sizeof b)) > 0;) out.append(b, static_cast<std::size_t>(n));
        return out;
    }

  private:
    int master_ = -1, saved_stdin_ = -1;
};

// For its lifetime stdin is /dev/null, as for a program started from a service.
class NoTerminal {
  public:
    NoTerminal() {
        saved_stdin_ = dup(STDIN_FILENO);
        const int null = open("/dev/null", O_RDONLY);
        dup2(null, STDIN_FILENO);
        close(null);
    }
    ~NoTerminal() {
        dup2(saved_stdin_, STDIN_FILENO);
        close(saved_stdin_);
    }

  private:
    int saved_stdin_ = -1;
};

Mm cellrow(std::initializer_list<const char*> items) {
    Mm c = ak_internal::new_cell(1, static_cast<int>(items.size()));
    int k = 0;
    for (const char* s : items) static_cast<Mm*>(c.pr)[k++] = TM(s);
    return c;
}

}  // namespace

TEST(Dialogs, AnsweredOnATerminal) {
    ak_test::ErrorsThrow guard;
    Terminal tty;
    // A button by number, by name without case, the default on a blank line, cancel at the end.
    tty.type("2\n");
    EXPECT_EQ(text(questdlg(TM("Save the file?"), TM("Editor"))), "No");
    EXPECT_NE(tty.shown().find("Editor: Save the file?\r\n  1) Yes\r\n  2) No\r\n  3) Cancel"), std::string::npos);
    tty.type("maybe\nKEEP\n");
    EXPECT_EQ(text(questdlg(TM("Q"), TM("T"), TM("Drop"), TM("Keep"), TM("Drop"))), "Keep");
    tty.type("\n");
    EXPECT_EQ(text(questdlg(TM("Q"), TM("T"), TM("Drop"), TM("Keep"), TM("Keep"))), "Keep");
    tty.type("\x04");
    EXPECT_EQ(text(questdlg(TM("Q"))), "");
    tty.shown();

    // Each prompt shows its default; a blank answer keeps it.
    tty.type("Ann\n\n");
    Mm answers = inputdlg(cellrow({"Name", "Age"}), TM("Form"), Mm(1.0), cellrow({"", "42"}));
    ASSERT_EQ(answers.rows(), 2);
    EXPECT_EQ(text(cell(answers, 0)), "Ann");
    EXPECT_EQ(text(cell(answers, 1)), "42");
    EXPECT_NE(tty.shown().find("Age [42]: "), std::string::npos);
    tty.type("\x04");
    EXPECT_EQ(inputdlg(TM("Name")).size(), 0);

    // A menu asks again until it gets a number in range.
    tty.type("x\n7\n3\n");
    EXPECT_EQ(menu(TM("Colour"), cellrow({"red", "green", "blue"})).r(), 3.0);
    EXPECT_NE(tty.shown().find("----- Colour -----\r\n  1) red"), std::string::npos);

    // A file that exists, given with its folder; a name in the current folder for saving.
    char dir_template[] = "/tmp/arklib_dialogs_XXXXXX";
    ASSERT_TRUE(mkdtemp(dir_template));
    const std::string dir = dir_template, existing = dir + "/data.txt";
    std::ofstream(existing) << "1 2 3\n";
    tty.type(dir + "/missing.txt\n" + existing + "\n");
    Mm file, path;
    uigetfile(TM("*.txt"), TM("Open data"), i_o, file, path);
    EXPECT_EQ(text(file), "data.txt");
    EXPECT_EQ(text(path), dir + "/");
    EXPECT_NE(tty.shown().find("No such file: " + dir + "/missing.txt"), std::string::npos);
    tty.type("out.csv\n");
    uiputfile(i_o, file, path);
    EXPECT_EQ(text(file), "out.csv");
    EXPECT_EQ(text(path).back(), '/');
    tty.type("\n");
    uigetfile(i_o, file, path);
    EXPECT_EQ(file.r(), 0.0);
    EXPECT_EQ(path.r(), 0.0);
    std::remove(existing.c_str());
    rmdir(dir.c_str());

    // Colours as three bytes; the initial colour on a blank line.
    tty.type("255 128 0\n");
    Mm rgb = uisetcolor();
    ASSERT_EQ(rgb.size(), 3);
    EXPECT_DOUBLE_EQ(rgb.addr()[1], 128.0 / 255.0);
    tty.type("300 0 0\n\n");
    Mm kept = uisetcolor(row({0, 0, 1}));
    EXPECT_EQ(kept.addr()[2], 1.0);
}

TEST(Dialogs, DefaultAnswersWithoutATerminal) {
    ak_test::ErrorsThrow guard;
    NoTerminal none;
    testing::internal::CaptureStderr();
    EXPECT_EQ(text(questdlg(TM("Go on?"), TM("Run"), TM("Stop"), TM("Go"), TM("Go"))), "Go");
    Mm answers = inputdlg(cellrow({"a", "b"}), TM("T"), Mm(1.0), cellrow({"1", "2"}));
    EXPECT_EQ(text(cell(answers, 1)), "2");
    EXPECT_EQ(menu(TM("M"), TM("only")).r(), 0.0);
    Mm file, path;
    uigetfile(i_o, file, path);
    EXPECT_EQ(file.r(), 0.0);
    EXPECT_EQ(uisetcolor(row({1, 0, 0})).addr()[0], 1.0);
    EXPECT_EQ(uisetcolor().r(), 0.0);
    msgbox(cellrow({"Two", "lines"}), TM("Note"), TM("warn"));
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_NE(said.find("questdlg: no terminal to ask on; taking the default answer"), std::string::npos);
    EXPECT_NE(said.find("inputdlg: no terminal to ask on; taking the default answers"), std::string::npos);
    EXPECT_NE(said.find("menu: no terminal to ask on; no choice made"), std::string::npos);
    EXPECT_NE(said.find("uigetfile: no terminal to ask on; cancelled"), std::string::npos);
    EXPECT_NE(said.find("Note [warn]: Two\nlines\n"), std::string::npos);
}

TEST(Dialogs, ProgressBarIsAFigureOfItsOwn) {
    ak_test::ErrorsThrow guard;
    const Mm plot_figure = ak_new_object("Figure", Mm(-1.0));
    const Mm bar = waitbar(Mm(0.0), TM("Working"));
    EXPECT_EQ(ishandle(bar).r(), 1.0);
    EXPECT_EQ(text(get(bar, "Tag")), "waitbar");
    EXPECT_EQ(get(Mm(0.0), "CurrentFigure").r(), plot_figure.r());
    waitbar(Mm(0.25), bar);
    EXPECT_EQ(get(bar, "UserData").r(), 0.25);
    waitbar(Mm(2.0), bar, TM("Almost"));
    EXPECT_EQ(get(bar, "UserData").r(), 1.0);
    EXPECT_EQ(text(get(bar, "Name")), "Almost");
    deleteobj(bar);
    deleteobj(plot_figure);
}

TEST(Dialogs, BadArgumentsAreReported) {
    ak_test::ErrorsThrow guard;
    EXPECT_ERROR(msgbox(Mm(5.0)), "msgbox: the message must be text or a cell of text");
    EXPECT_ERROR(msgbox(TM("m"), TM("t"), TM("loud")),
                 "msgbox: unknown icon \"loud\" (none, error, help, warn or custom)");
    EXPECT_ERROR(inputdlg(cellrow({"a", "b"}), TM("t"), Mm(1.0), cellrow({"1"})), "inputdlg: 1 default answers for 2 prompts");
    EXPECT_ERROR(uisetcolor(row({2, 0, 0})),
                 "uisetcolor: the initial colour must be an RGB row of three values from 0 to 1");
    EXPECT_ERROR(waitbar(TM("x")), "waitbar: the fraction must be a number from 0 to 1");
    EXPECT_ERROR(waitbar(Mm(0.5), Mm(987654.0)), "waitbar: 987654 is not a progress bar");
    Mm in[1] = {TM("title")}, out[1];
    EXPECT_ERROR(ak_call_function("menu", 1, in, 1, out), "menu: needs a title and at least one choice");
    Mm choices = cellrow({"a", "b"});
    static_cast<Mm*>(choices.pr)[1] = Mm(3.0);
    EXPECT_ERROR(menu(TM("Pick"), choices), "menu: the choice must be text or a cell of text");
}
