// Modules built from source with arkmex, loaded and called as translated code calls them.
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>

#include "tests/runtime/mex/module_support.h"

using mex_test::build_module;
using mex_test::call;
using ak_test::bytes;
using ak_test::row;

namespace {

class Modules : public mex_test::ModuleTest {};

Mm matrix2x2(double a, double b, double c, double d) {
    Mm m(0, 0, 0, 2, 2, ak_double);
    double v[] = {a, b, c, d};
    for (int k = 0; k < 4; ++k) m.addr()[k] = v[k];
    return m;
}

std::string text_of(const Mm& m) {
    char buffer[256];
    return Mstr(m, buffer, sizeof buffer);
}

// "Could not load <file> GetLastError is <code> (<reason>)", with a reason that mentions what.
bool load_failure(const std::string& message, const std::string& file, int code, const std::string& what) {
    const std::string head = "Could not load " + file + " GetLastError is " + std::to_string(code) + " (";
    if (message.compare(0, head.size(), head) != 0 || message.back() != ')') return false;
    return message.find(what, head.size()) != std::string::npos;
}

// The message of the error a statement reports, or "" when it reports none.
template <class F>
std::string error_of(F f) {
    ak_test::ErrorsThrow guard;
    try {
        f();
    } catch (char* message) {
        return message;
    }
    return "";
}

TEST_F(Modules, DoublesRealAndComplexInput) {
    build_module("twice.c");
    Mm x = matrix2x2(1, 2, 3, 4);
    Mm y = call("twice", 1, {x})[0];
    ASSERT_EQ(y.rows(), 2);
    ASSERT_EQ(y.cols(), 2);
    for (int k = 1; k <= 4; ++k) EXPECT_EQ(y.r(k), 2.0 * k);
    EXPECT_FALSE(y.isc());
    EXPECT_EQ(x.r(4), 4.0) << "the input was written";

    Mm z(1, 0, 0, 1, 3, ak_double);
    for (int k = 1; k <= 3; ++k) {
        z.r(k) = k;
        z.i(k) = -k;
    }
    Mm w = call("twice", 1, {z})[0];
    ASSERT_TRUE(w.isc());
    for (int k = 1; k <= 3; ++k) {
        EXPECT_EQ(w.r(k), 2.0 * k);
        EXPECT_EQ(w.i(k), -2.0 * k);
    }
    EXPECT_STREQ(current_mex, "twice");
    EXPECT_EQ(error_of([] { call("twice", 1, {TM("ab"), TM("cd")}); }), "twice: one input expected");
}

TEST_F(Modules, BuildsStructureAndCell) {
    build_module("records.cpp");
    std::vector<Mm> out = call("records", 2, {row({4, 5}), TM("grown")});
    const Mm& s = out[0];
    ASSERT_TRUE(isstruct(s));
    EXPECT_EQ(s.rows(), 1);
    EXPECT_EQ(s.cols(), 2);
    EXPECT_EQ(text_of(Mm(s(1.0).member("name"))), "first");
    EXPECT_EQ(text_of(Mm(s(2.0).member("name"))), "second");
    Mm v1 = s(1.0).member("values");
    ASSERT_EQ(v1.size(), 2);
    EXPECT_EQ(v1.r(2), 5.0);
    Mm v2 = s(2.0).member("values");
    ASSERT_EQ(v2.size(), 3);
    EXPECT_EQ(v2.r(3), 3.0);

    const Mm& c = out[1];
    ASSERT_TRUE(iscell(c));
    EXPECT_EQ(c.rows(), 1);
    ASSERT_EQ(c.cols(), 5) << "a cell row grows to take element 5";
    EXPECT_EQ(text_of(c.mr(1)), "text");
    EXPECT_EQ(c.mr(2).r(), 7.0);
    EXPECT_EQ(c.mr(3).gettype(), ak_uchar);
    EXPECT_TRUE(isempty(c.mr(4)));
    EXPECT_EQ(text_of(c.mr(5)), "grown");
}

TEST_F(Modules, CallsLibraryAndProgramFunctionsByName) {
    build_module("callback.c");
    Mm total = call("callback", 1, {TM("sum"), row({1, 2, 3.5})})[0];
    EXPECT_EQ(total.r(), 6.5);
    Mm v = call("callback", 1, {TM("version")})[0];
    EXPECT_EQ(text_of(v), text_of(version()));
    Mm d = call("callback", 1, {TM("double"), bytes({7, 200})})[0];
    EXPECT_EQ(d.gettype(), ak_double);
    EXPECT_EQ(d.r(2), 200.0);

    // A function of the program, registered by name, which itself calls a module: the modules nest,
    // and the inner name is left in current_mex.
    build_module("twice.c");
    ak_register_function("twice_via_module", +[](const Mm& x) { return call("twice", 1, {x})[0]; });
    Mm r = call("callback", 1, {TM("twice_via_module"), row({1.5})})[0];
    EXPECT_EQ(r.r(), 3.0);
    EXPECT_STREQ(current_mex, "twice");
    ak_unregister_function("twice_via_module");

    EXPECT_EQ(error_of([] { call("callback", 1, {TM("no_such_function_here")}); }).empty(), false);
}

TEST_F(Modules, ErrorLeavesTheModuleAndFreesWhatItMade) {
    build_module("failing.c");
    Mm x = row({1, 2, 3});
    ASSERT_EQ(x.dirty(), 0);
    Mm* plhs[64];
    Mm* prhs[1];
    call_mex_prhs(prhs[0], x);
    EXPECT_EQ(error_of([&] { call_mex("failing", 1, plhs, 1, prhs); }), "failing: gave up after 3 arrays");
    // The cell that shared x, and the output made from it, are gone.
    EXPECT_EQ(x.dirty(), 0);
    EXPECT_EQ(plhs[0], nullptr);

    // With an error handler that returns, the module is left all the same and the program goes on.
    ak_test::Recorder rec(ak_test::Recorder::kPrint | ak_test::Recorder::kErrors);
    call_mex("failing", 1, plhs, 1, prhs);
    ASSERT_EQ(rec.errors.size(), 1u);
    EXPECT_EQ(rec.errors[0], "failing: gave up after 3 arrays");
    EXPECT_EQ(rec.printed.find("not reached"), std::string::npos);
    EXPECT_EQ(x.dirty(), 0);
}

TEST_F(Modules, SeveralOutputs) {
    build_module("stats.c");
    std::vector<Mm> out = call("stats", 3, {row({2, 3, 4})});
    EXPECT_EQ(out[0].r(), 9.0);
    EXPECT_EQ(out[1].r(), 24.0);
    EXPECT_EQ(out[2].r(), 3.0);
    EXPECT_EQ(call("stats", 0, {row({2, 3})})[0].r(), 5.0) << "no output asked: the first is still given";

    // Only the first of two outputs set: the error names the module, the second is empty.
    ak_test::Recorder rec(ak_test::Recorder::kErrors);
    out = call("stats", 2, {row({2, 3}), Mm(1.0)});
    ASSERT_EQ(rec.errors.size(), 1u);
    EXPECT_EQ(rec.errors[0], "call_mex: not all output arguments were assigned when calling stats.");
    EXPECT_EQ(out[0].r(), 5.0);
    EXPECT_TRUE(isempty(out[1]));

    // One output asked for and none given is allowed: the result is empty.
    rec.clear();
    out = call("stats", 1, {row({2, 3}), Mm(2.0)});
    EXPECT_TRUE(rec.errors.empty());
    EXPECT_TRUE(isempty(out[0]));
    EXPECT_EQ(out[0].gettype(), ak_double);
}

TEST_F(Modules, LoadedOnceFoundInAnyCaseAndCleared) {
    build_module("counter.c");
    ak_test::Recorder rec;
    const int before = ak_mex_loaded_count();
    EXPECT_EQ(call("counter", 1)[0].r(), 1.0);
    EXPECT_EQ(call("counter", 1)[0].r(), 2.0);
    EXPECT_EQ(call("COUNTER", 1)[0].r(), 3.0) << "the same module, whatever the case";
    EXPECT_EQ(ak_mex_loaded_count(), before + 1);

    clear_mex("Counter");
    EXPECT_EQ(rec.printed, "counter unloaded after 3 calls\n");
    EXPECT_EQ(ak_mex_loaded_count(), before);
    clear_mex("counter");  // not loaded any more: nothing happens
    EXPECT_EQ(rec.printed, "counter unloaded after 3 calls\n");

    EXPECT_EQ(call("counter", 1)[0].r(), 1.0) << "loaded afresh, its state gone";
    Mm name_text = TM("counter");
    Mm ignored;
    ASSERT_EQ(ak_call_function("clear_mex", 1, &name_text, 1, &ignored), 1) << "the language's form, by name";
    EXPECT_EQ(rec.printed, "counter unloaded after 3 calls\ncounter unloaded after 1 calls\n");
    // The development environment's clear reaches modules too.
    EXPECT_EQ(call("counter", 1)[0].r(), 1.0);
    char name[] = "counter";
    _ive_do(27, 0, name);
    EXPECT_EQ(ak_mex_loaded_count(), before);
}

TEST_F(Modules, SparseStringAndComplexInputsArriveIntact) {
    build_module("what_module_sees.c");
    // 3x2 sparse with entries (2,1)=5, (1,2)=6, (3,2)=7.
    Mm s(0, 1, 3, 3, 2, ak_double);
    const int positions[] = {1, 3, 5};
    const double values[] = {5, 6, 7};
    for (int k = 0; k < 3; ++k) {
        s.index[k] = positions[k];
        s.addr()[k] = values[k];
    }
    std::vector<Mm> out = call("what_module_sees", 2, {s});
    EXPECT_EQ(out[0].r(), 5.0) << "class of a sparse matrix";
    const Mm& entries = out[1].mr(1);
    const double expected[] = {1, 5, 0, 6, 2, 7};
    ASSERT_EQ(entries.size(), 6);
    for (int k = 0; k < 6; ++k) EXPECT_EQ(entries.r(k + 1), expected[k]) << k;
    const Mm& starts = out[1].mr(2);
    ASSERT_EQ(starts.size(), 3);
    EXPECT_EQ(starts.r(1), 0.0);
    EXPECT_EQ(starts.r(2), 1.0);
    EXPECT_EQ(starts.r(3), 3.0);

    out = call("what_module_sees", 2, {TM("hello, module")});
    EXPECT_EQ(out[0].r(), 6.0) << "a string is a double array";
    EXPECT_EQ(text_of(out[1]), "hello, module");
    EXPECT_TRUE(out[1].isstr());

    Mm z(1, 0, 0, 1, 2, ak_double);
    z.r(1) = 1.5;
    z.i(1) = -2;
    z.r(2) = 0;
    z.i(2) = 3;
    out = call("what_module_sees", 2, {z});
    ASSERT_EQ(out[1].size(), 4);
    const double parts[] = {1.5, -2, 0, 3};
    for (int k = 0; k < 4; ++k) EXPECT_EQ(out[1].r(k + 1), parts[k]);

    out = call("what_module_sees", 2, {bytes({1, 2})});
    EXPECT_EQ(out[0].r(), 9.0);
    EXPECT_EQ(text_of(out[1]), "uint8");
}

TEST_F(Modules, SparseOutputWrittenThroughColumnLists) {
    build_module("sparse_diag.c");
    Mm s = call("sparse_diag", 1, {row({4, 0, 6})})[0];
    ASSERT_TRUE(s.issparse());
    ASSERT_EQ(s.rows(), 3);
    ASSERT_EQ(s.cols(), 3);
    ASSERT_EQ(s.nnz, 2) << "the count of the last column start";
    EXPECT_EQ(s.index[0], 0);
    EXPECT_EQ(s.index[1], 8);
    EXPECT_EQ(s.addr()[0], 4.0);
    EXPECT_EQ(s.addr()[1], 6.0);
    Mm f = full(s);
    EXPECT_EQ(f.r(3, 3), 6.0);
    EXPECT_EQ(f.r(2, 2), 0.0);
}

TEST_F(Modules, LoadFailuresAreReportedAndTheProgramGoesOn) {
    const std::string missing = error_of([] { call("nosuch", 1); });
    EXPECT_TRUE(load_failure(missing, "nosuch_matvex.so", ENOENT, "nosuch_matvex.so")) << missing;

    // A file of the right name that is not a shared object.
    const std::string bad = mex_test::work_dir() + "/garbage_matvex.so";
    FILE* f = std::fopen(bad.c_str(), "w");
    ASSERT_NE(f, nullptr);
    std::fputs("this is not a module\n", f);
    std::fclose(f);
    const std::string garbage = error_of([] { call("garbage", 1); });
    EXPECT_TRUE(load_failure(garbage, "garbage_matvex.so", ENOEXEC, "garbage_matvex.so")) << garbage;

    build_module("noentry.c");
    const int loaded = ak_mex_loaded_count();
    EXPECT_EQ(error_of([] { call("noentry", 1); }), "Could not find mexFunction in noentry_matvex.so");
    EXPECT_EQ(ak_mex_loaded_count(), loaded);

    // With a handler that returns, each failure is one report and the outputs stay unset.
    {
        ak_test::Recorder rec(ak_test::Recorder::kErrors);
        Mm* plhs[64];
        plhs[0] = reinterpret_cast<Mm*>(&rec);
        call_mex("noentry", 1, plhs, 0, nullptr);
        EXPECT_EQ(rec.errors.size(), 1u);
        EXPECT_EQ(plhs[0], nullptr);
        call_mex("nosuch", 1, plhs, 0, nullptr);
        ASSERT_EQ(rec.errors.size(), 3u) << "a failed load goes on to look for the entry point";
        EXPECT_EQ(rec.errors[2], "Could not find mexFunction in nosuch_matvex.so");
    }
    // And a good module still works after all that.
    build_module("twice.c");
    EXPECT_EQ(call("twice", 1, {Mm(4.0)})[0].r(), 8.0);
}

TEST_F(Modules, BuildCommandJoinsSourcesAndNamesTheModule) {
    // arkmex with C++ and C sources and no -o: the module is named after the first source and
    // written in the current directory.
    const std::string dir = mex_test::work_dir();
    const std::string sources = std::string(ARKLIB_MEX_SOURCES);
    std::remove((dir + "/weighted_matvex.so").c_str());
    const std::string command = "cd '" + dir + "' && " + ARKMEX + " '" + sources + "/weighted.cpp' '" +
                                sources + "/weights.c'";
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
    EXPECT_EQ(call("weighted", 1, {row({1, 1, 2})})[0].r(), 1 + 2 + 6.0);
    clear_mex("weighted");

    const std::string wrong = "cd '" + dir + "' && " + ARKMEX + " '" + sources + "/README' 2>/dev/null";
    EXPECT_NE(std::system(wrong.c_str()), 0) << "a file that is not a source is refused";
}

TEST_F(Modules, CurrentDirectoryWinsOverThePath) {
    // The same source built under one name in the work folder (on the path) and in a folder that
    // becomes the current directory: the second must be the one loaded.
    build_module("counter.c", "where");
    char here[PATH_MAX];
    ASSERT_NE(getcwd(here, sizeof here), nullptr);
    const std::string local = mex_test::work_dir() + "/local";
    std::system(("mkdir -p '" + local + "'").c_str());
    const std::string command = std::string(ARKMEX) + " -o '" + local + "/where_matvex.so' '" +
                                ARKLIB_MEX_SOURCES + "/twice.c'";
    ASSERT_EQ(std::system(command.c_str()), 0);
    ASSERT_EQ(chdir(local.c_str()), 0);
    Mm r = call("where", 1, {Mm(21.0)})[0];
    ASSERT_EQ(chdir(here), 0);
    clear_mex("where");
    EXPECT_EQ(r.r(), 42.0) << "the module of the current directory doubles";
    ak_test::Recorder rec;
    EXPECT_EQ(call("where", 1)[0].r(), 1.0) << "off the current directory, the path's counter";
    clear_mex("where");
}

}  // namespace
