// The scope table: registration as heads are declared, named, copied and destroyed; levels,
// shadowing and globals; the functions that look at variables by name; the environment entry.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "arklib.h"
#include "tests/test_support.h"

namespace {

std::vector<std::string> listed() {
    std::vector<std::string> names;
    Mm w = who();
    for (int k = 1; k <= w.size(); ++k) {
        char text[64];
        names.push_back(Mstr(w.mr(k), text, sizeof text));
    }
    return names;
}

std::string text_of(const Mm& m) {
    char buffer[2048];
    return Mstr(m, buffer, sizeof buffer);
}

// Field f (1-based: name, size, bytes, class) of element k of a whos structure.
const Mm& field(const Mm& w, int k, int f) { return w.mr(k).mr(f); }

double exists(const char* name) { return scalar(exist(TM(name))); }

// Tracking on for the test; the workspace and the globals are cleared and the depth put back after.
struct ScopeTest : ::testing::Test {
    void SetUp() override {
        ASSERT_EQ(variables_scope.depth, 1);
        _ive_do(0, 0, nullptr);
    }
    void TearDown() override {
        variables_scope.reset();
        _ive_do(4, 0, nullptr);
        _ive_do(4, 0, const_cast<char*>("global"));
        ak_scope_tracking = 0;
        EXPECT_EQ(variables_scope.count[1], 0);
        EXPECT_EQ(variables_scope.count[0], 0);
    }
};

TEST_F(ScopeTest, HeadsRegisterAsDeclaredNamedAndDestroyed) {
    Mm x(i_o, "x", 0);
    EXPECT_EQ(listed(), std::vector<std::string>{"x"});
    EXPECT_EQ(x.flags.workspace_var, 1);
    // Declared without a value: not a variable for exist, which goes on to the files.
    EXPECT_EQ(exists("x"), 0.0);
    x = ak_test::row({1, 2, 3});
    EXPECT_EQ(exists("x"), 1.0);
    // Copies and temporaries are never registered.
    Mm copy(x);
    Mm sum_of = x + 1.0;
    EXPECT_EQ(listed().size(), 1u);

    // A 1x1 temporary holding its value in its head keeps the value when it is named.
    Mm t(5.0);
    ASSERT_TRUE(t.holds_value());
    t.setname("t");
    EXPECT_FALSE(t.holds_value());
    EXPECT_EQ(scalar(t), 5.0);
    EXPECT_EQ(listed(), (std::vector<std::string>{"x", "t"}));

    // A workspace variable that leaves its block stays listed, with its last value; a local of a
    // function does not.
    {
        Mm y(i_o, "y", 0);
        y = ak_test::row({4, 5});
    }
    EXPECT_EQ(listed(), (std::vector<std::string>{"x", "t", "y"}));
    Mm* kept = scope_lookup("y", 1);
    ASSERT_NE(kept, nullptr);
    EXPECT_EQ(kept->addr()[1], 5.0);
    variables_scope.begin();
    {
        Mm z(i_o, "z", 0);
        EXPECT_EQ(z.flags.workspace_var, 0);
        EXPECT_EQ(listed(), std::vector<std::string>{"z"});
    }
    EXPECT_TRUE(listed().empty());
    // A function's locals that outlive its end() are no longer in the table.
    Mm late(i_o, "late", 0);
    variables_scope.end();
    EXPECT_EQ(scope_find("late", 2), -1);

    // Declaring a name again at the workspace replaces the owned copy and picks up its value.
    Mm y2(i_o, "y", 0);
    EXPECT_EQ(y2.addr()[0], 4.0);
    EXPECT_EQ(variables_scope.owned[1][scope_find("y", 1)], 0);
    // Names that translated locals carry, with a trailing "_", are found by their plain name.
    Mm local(i_o, "w_", 0);
    local = Mm(2.0);
    EXPECT_EQ(scope_lookup("w", 1), &local);
    EXPECT_EQ(exists("w"), 1.0);
}

TEST_F(ScopeTest, ShadowingAndGlobalsHandValuesBack) {
    Mm a(i_o, "a", 0);
    a = Mm(1.0);
    {
        Mm inner(i_o, "a", 0);
        EXPECT_EQ(scalar(inner), 1.0);  // a new head of the name sees the value
        EXPECT_EQ(inner.shadowed, &a);
        EXPECT_EQ(scope_lookup("a", 1), &inner);
        inner = Mm(7.0);
    }
    EXPECT_EQ(scalar(a), 7.0);  // the older head holds the newer value
    EXPECT_EQ(scope_lookup("a", 1), &a);

    Mm g(i_o, "g", 1);
    g = Mm(5.0);
    EXPECT_EQ(scope_find("g", 0), 0);
    EXPECT_EQ(scope_find("g", 1), -1);
    variables_scope.begin();
    {
        Mm g_in_function(i_o, "g", 1);
        EXPECT_EQ(scalar(g_in_function), 5.0);
        g_in_function = Mm(6.0);
        variables_scope.begin();
        Mm g_deeper(i_o, "g", 1);
        g_deeper = g_deeper + 1.0;
        variables_scope.end();
        EXPECT_EQ(scalar(g_deeper), 7.0);
    }
    variables_scope.end();
    EXPECT_EQ(scalar(g), 7.0);
    EXPECT_EQ(variables_scope.count[0], 1);

    // The older head ending first (out of order) leaves no link to it behind.
    Mm* older = new Mm(i_o, "b", 0);
    Mm newer(i_o, "b", 0);
    EXPECT_EQ(newer.shadowed, older);
    delete older;
    EXPECT_EQ(newer.shadowed, nullptr);
}

TEST_F(ScopeTest, LevelsStopAtTheirLimit) {
    ak_test::Recorder rec(ak_test::Recorder::kErrors);
    for (int k = 0; k < 512; ++k) variables_scope.begin();
    EXPECT_EQ(variables_scope.depth, 513);
    EXPECT_EQ(rec.errors, std::vector<std::string>{"Call stack too deep"});
    {
        Mm deep(i_o, "deep", 0);  // no level to hold it: not registered, nothing written
        EXPECT_EQ(scope_lookup("deep", 513), nullptr);
    }
    variables_scope.reset();
    EXPECT_EQ(variables_scope.depth, 1);
    variables_scope.reset();
    EXPECT_EQ(variables_scope.depth, 1);
    EXPECT_EQ(scope_entry(0), nullptr);
    EXPECT_EQ(rec.errors.back(), "variable_scope: index out of range");
}

TEST_F(ScopeTest, ClearByListPatternAndAll) {
    Mm alpha(i_o, "alpha", 0), beta(i_o, "beta", 0), abc(i_o, "abc", 0), keep(i_o, "keep", 0);
    alpha = Mm(1.0);
    beta = Mm(2.0);
    abc = Mm(3.0);
    keep = Mm(4.0);
    { Mm gone(i_o, "gone", 0); gone = Mm(5.0); }  // an owned copy
    clear((BR(beta), keep));
    EXPECT_EQ(listed(), (std::vector<std::string>{"alpha", "abc", "gone"}));
    EXPECT_EQ(beta.size(), 0);  // emptied
    EXPECT_EQ(exists("beta"), 0.0);
    clear(TM("a* gon?"));
    EXPECT_TRUE(listed().empty());
    EXPECT_EQ(alpha.size(), 0);
    EXPECT_EQ(abc.size(), 0);
    EXPECT_EQ(exists("alpha"), 0.0);

    Mm later(i_o, "later", 0);
    later = Mm(6.0);
    { Mm owned_one(i_o, "owned_one", 0); owned_one = Mm(7.0); }
    clear();
    EXPECT_TRUE(listed().empty());
    EXPECT_EQ(scalar(later), 6.0);  // clear() drops names only; the program's head keeps its value
}

TEST_F(ScopeTest, WhoWhosAndTheirLines) {
    Mm m(i_o, "m", 0), s(i_o, "s", 0), c(i_o, "c", 0);
    m = Mm(0, 0, 0, 2, 3, ak_double);
    s = TM("abcd");
    c = Mm(0, 0, 0, 1, 2, ak_mm);
    Mm w = whos();
    ASSERT_EQ(w.size(), 3);
    EXPECT_EQ(text_of(fieldnames(w).mr(4)), "class");
    EXPECT_EQ(text_of(field(w, 1, 1)), "m");
    const Mm& size_m = field(w, 1, 2);
    EXPECT_EQ(size_m.addr()[0], 2.0);
    EXPECT_EQ(size_m.addr()[1], 3.0);
    EXPECT_EQ(scalar(field(w, 1, 3)), 48.0);
    EXPECT_EQ(scalar(field(w, 3, 3)), 16.0);  // 8 an element, whatever the type
    EXPECT_EQ(text_of(field(w, 2, 4)), "char");
    EXPECT_EQ(text_of(field(w, 3, 4)), "cell");

    ak_test::Recorder rec;
    whos_line(m);
    whos_line(Mm(2.0));
    EXPECT_EQ(rec.printed,
              "m                      (2x3)=6 double elements real (48 bytes)\n"
              "                       (1x1)=1 double elements real (8 bytes)\n");
    rec.clear();
    _ive_do(9, 0, nullptr);
    EXPECT_EQ(rec.printed.substr(0, 23), "m                      ");
    EXPECT_NE(rec.printed.find("s                      (1x4)=4 char elements  (32 bytes)\n"), std::string::npos);
    rec.clear();
    _ive_do(11, 0, nullptr);
    EXPECT_EQ(rec.printed, "m s c \n");
    rec.clear();
    _ive_do(11, 0, const_cast<char*>("global"));
    EXPECT_EQ(rec.printed, "");
}

// A directory with an M-file and a data file, on the M path.
struct PathFixture : ScopeTest {
    std::string dir;
    ak_path_t* object = nullptr;
    void SetUp() override {
        ScopeTest::SetUp();
        char pattern[] = "/tmp/akscopeXXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        dir = pattern;
        std::ofstream(dir + "/myfun.m") << "function y = myfun(x)\n% MYFUN doubles x.\n%   y = 2x\n\ny = 2*x;\n";
        std::ofstream(dir + "/data.txt") << "1 2 3\n";
        mkdir((dir + "/sub").c_str(), 0777);
        object = ak_path_new(("/nowhere:" + dir).c_str(), "/opt/root");
        mpath_pointer = object;
    }
    void TearDown() override {
        mpath_pointer = nullptr;
        ak_path_delete(object);
        std::system(("rm -rf " + dir).c_str());
        ScopeTest::TearDown();
    }
};

TEST_F(PathFixture, ExistAndWhichSearchVariablesThenThePath) {
    EXPECT_EQ(exists("_MATVEX_"), 9.0);
    EXPECT_EQ(exists("myfun"), 2.0);
    EXPECT_EQ(exists("data.txt"), 2.0);
    EXPECT_EQ(exists("nothing_here"), 0.0);
    EXPECT_EQ(exists(dir.c_str()), 7.0);
    Mm myfun(i_o, "myfun", 0);
    EXPECT_EQ(exists("myfun"), 2.0);  // no value yet: the file answers
    myfun = Mm(1.0);
    EXPECT_EQ(exists("myfun"), 1.0);
    EXPECT_EQ(scalar(exist(TM("myfun"), TM("var"))), 1.0);
    EXPECT_EQ(scalar(exist(TM("myfun"), TM("file"))), 0.0);
    EXPECT_EQ(scalar(exist(TM("data.txt"), TM("file"))), 2.0);
    EXPECT_EQ(scalar(exist(TM(dir.c_str()), TM("dir"))), 7.0);
    EXPECT_EQ(scalar(exist(TM("myfun"), TM("builtin"))), 0.0);
    {
        ak_test::Recorder rec(ak_test::Recorder::kErrors);
        EXPECT_EQ(scalar(exist(Mm(3.0))), 0.0);
        EXPECT_EQ(rec.errors, std::vector<std::string>{"exist: argument is not string"});
    }
    EXPECT_EQ(text_of(which(TM("myfun"))), "a variable");
    EXPECT_EQ(text_of(which(TM("data.txt"))), dir + "/data.txt");
    EXPECT_EQ(text_of(which(TM("nothing_here"))), "unknown");
    char answer[513] = {};
    _ive_do(33, reinterpret_cast<std::intptr_t>(answer), const_cast<char*>("data"));
    EXPECT_EQ(std::string(answer), "unknown");
    _ive_do(33, reinterpret_cast<std::intptr_t>(answer), const_cast<char*>("data.txt"));
    EXPECT_EQ(std::string(answer), dir + "/data.txt");
}

TEST_F(PathFixture, PathFunctionsOverThePathObject) {
    EXPECT_EQ(text_of(matlabpath()), "/nowhere:" + dir);
    EXPECT_EQ(text_of(matlabroot()), "/opt/root");
    addpath((CL("/first"), "/second"));
    EXPECT_EQ(text_of(path()), "/first:/second:/nowhere:" + dir);
    path(TM("/a"), TM("/b"));
    EXPECT_EQ(text_of(path()), "/b:/a");
    matlabpath(TM(dir.c_str()));
    EXPECT_EQ(text_of(path()), dir);
    EXPECT_EQ(exists("myfun"), 2.0);
    ak_test::Recorder rec(ak_test::Recorder::kErrors | ak_test::Recorder::kPrint);
    EXPECT_TRUE(rmpath(TM("/x")).size() == 0);
    EXPECT_TRUE(rec.errors.empty());
    mpath_pointer = nullptr;
    path();
    addpath(TM("/x"));
    matlabroot();
    EXPECT_EQ(rec.errors, std::vector<std::string>(3, "path is not available in compiled programs."));
    mpath_pointer = object;
    // The environment's commands that read M-files along the path.
    _ive_do(13, 0, const_cast<char*>("myfun"));
    EXPECT_EQ(rec.printed, "function y = myfun(x)\n% MYFUN doubles x.\n%   y = 2x\n\ny = 2*x;\n");
    rec.clear();
    _ive_do(31, 0, const_cast<char*>("myfun"));
    EXPECT_EQ(rec.printed, " MYFUN doubles x.\n   y = 2x\n");
    rec.clear();
    _ive_do(31, 0, const_cast<char*>("nofile"));
    EXPECT_EQ(rec.printed, "nofile not found.\n");
    _ive_do(20, 0, nullptr);
    EXPECT_EQ(mpath_pointer, nullptr);
}

int recorded_kbhit() { return 7; }
int recorded_clc_calls = 0;
int recorded_clc() { return ++recorded_clc_calls; }
int recorded_shell(const char*) { return 3; }

TEST_F(ScopeTest, EnvironmentEntry) {
    EXPECT_EQ(_ive_do(1, 0, nullptr), 0);
    Mm x(i_o, "x_", 0), u(i_o, "_", 0), v(i_o, "v", 0), g(i_o, "gv", 1);
    x = ak_test::row({1, 2, 3});
    u = TM("hello");
    v = Mm(0.5) / Mm(0.0);
    g = Mm(3.14159);
    EXPECT_EQ(_ive_do(1, 0, nullptr), 3);
    EXPECT_EQ(_ive_do(23, 0, nullptr), 1);
    char name[40];
    _ive_do(2, 0, name);
    EXPECT_STREQ(name, "x");
    _ive_do(2, 1, name);
    EXPECT_STREQ(name, "_");
    _ive_do(24, 0, name);
    EXPECT_STREQ(name, "gv");
    char text[64];
    _ive_do(10, 1, text);
    EXPECT_STREQ(text, "char");
    _ive_do(29, 0, text);
    EXPECT_STREQ(text, "1x3 double");
    _ive_do(29, 1, text);
    EXPECT_STREQ(text, "hello");
    _ive_do(29, 2, text);
    EXPECT_STREQ(text, "Inf");
    _ive_do(30, 0, text);
    EXPECT_STREQ(text, "3.142");
    EXPECT_EQ(_ive_do(26, 0, const_cast<char*>("x")), reinterpret_cast<std::intptr_t>(&x));
    EXPECT_EQ(_ive_do(26, 0, const_cast<char*>("gv")), reinterpret_cast<std::intptr_t>(&g));
    EXPECT_EQ(_ive_do(26, 0, const_cast<char*>("none")), 0);
    EXPECT_EQ(_ive_do(6, 0, nullptr), reinterpret_cast<std::intptr_t>(&ak_error_stack));
    char version_text[2048];
    _ive_do(37, 0, version_text);
    EXPECT_STREQ(version_text, "4.51 MATVEX");
    EXPECT_EQ(_ive_do(39, 5, nullptr), 0);
    EXPECT_EQ(_ive_do(-1, 5, nullptr), 0);

    {
        ak_test::Recorder rec(ak_test::Recorder::kPrint | ak_test::Recorder::kErrors);
        _ive_do(3, 0, const_cast<char*>("gv"));
        EXPECT_EQ(rec.printed.substr(0, 3), "gv ");
        rec.clear();
        _ive_do(3, 0, const_cast<char*>("nope"));
        EXPECT_EQ(rec.printed, "Variable 'nope' not found.\n");
        EXPECT_EQ(scope_entry_name(9), nullptr);
        _ive_do(2, 9, name);  // out of range: reported, nothing written
        EXPECT_EQ(rec.errors, std::vector<std::string>(2, "variable_scope: index out of range"));
    }

    // Commands that change state.
    _ive_do(4, 0, const_cast<char*>("v"));
    EXPECT_EQ(_ive_do(1, 0, nullptr), 2);
    _ive_do(4, 0, const_cast<char*>("global"));
    EXPECT_EQ(_ive_do(23, 0, nullptr), 0);
    _ive_do(4, 0, nullptr);
    EXPECT_EQ(_ive_do(1, 0, nullptr), 0);

    auto saved_eval = eval_func;
    auto saved_shell = system_hook;
    int (*fake_eval)(const char*) = [](const char*) { return 0; };
    _ive_do(12, 0, reinterpret_cast<void*>(fake_eval));
    EXPECT_EQ(eval_func, fake_eval);
    _ive_do(25, 0, reinterpret_cast<void*>(recorded_shell));
    EXPECT_EQ(system_hook, recorded_shell);
    eval_func = saved_eval;
    system_hook = saved_shell;
    int dummy_path = 0;
    _ive_do(20, 0, &dummy_path);
    EXPECT_EQ(mpath_pointer, &dummy_path);
    mpath_pointer = nullptr;
    _ive_do(18, 0, reinterpret_cast<void*>(recorded_kbhit));
    EXPECT_EQ(ak_kbhit_handler(), 7);
    _ive_do(19, 0, reinterpret_cast<void*>(recorded_clc));
    _ive_do(21, 0, nullptr);
    EXPECT_EQ(recorded_clc_calls, 1);
    _ive_do(18, 0, nullptr);
    _ive_do(19, 0, nullptr);
    {
        ak_test::Recorder rec;
        ak_text_handler_t recording = ak_print_handler;
        _ive_do(16, 0, nullptr);  // the default print handler back
        EXPECT_NE(ak_print_handler, recording);
        ak_print_handler = recording;
    }
}

TEST_F(ScopeTest, OpenvarFallsBackOnDisplay) {
    Mm q(i_o, "q", 0);
    q = Mm(42.0);
    ak_test::Recorder rec;
    openvar(TM("  q"));
    EXPECT_NE(rec.printed.find("q (1x1)=1 double elements real (8 bytes) = \n"), std::string::npos);
    rec.clear();
    _ive_do(35, 0, const_cast<char*>("missing"));
    EXPECT_EQ(rec.printed, "Variable 'missing' not found.\n");
}

}  // namespace
