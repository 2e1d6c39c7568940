// eval through a host interpreter, feval through the table of functions, and the fixed answers and
// stubs of a compiled program.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "arklib.h"
#include "tests/test_support.h"

namespace {

std::string text_of(const Mm& m) {
    char buffer[2048];
    return Mstr(m, buffer, sizeof buffer);
}

// A stand-in interpreter: records each text, and for "name=expr" stores 10 * (length of expr) in
// the variable of that name, found through the environment entry. Fails on a text holding "bad".
std::vector<std::string> seen;
int fake_interpreter(const char* text) {
    seen.push_back(text);
    const std::string t = text;
    if (t.find("bad") != std::string::npos) return 1;
    const std::size_t eq = t.find('=');
    if (eq != std::string::npos) {
        const std::string name = t.substr(0, eq);
        if (Mm* m = reinterpret_cast<Mm*>(_ive_do(26, 0, const_cast<char*>(name.c_str()))))
            *m = Mm(10.0 * static_cast<double>(t.size() - eq - 1));
    }
    return 0;
}

struct EvalTest : ::testing::Test {
    void SetUp() override {
        seen.clear();
        _ive_do(0, 0, nullptr);
        eval_func = fake_interpreter;
    }
    void TearDown() override {
        eval_func = nullptr;
        _ive_do(4, 0, nullptr);
        ak_scope_tracking = 0;
    }
};

TEST_F(EvalTest, ExpressionsStatementsAndVariables) {
    ak_test::Recorder rec;
    const int before = ak_eval_count();
    Mm r = eval(TM("1+1"));
    const std::string statement = "eval_result_" + std::to_string(before + 1) + "=1+1";
    EXPECT_EQ(seen, std::vector<std::string>{statement});
    EXPECT_EQ(rec.printed, "Calling eval('" + statement + "')\nDone eval\n");
    EXPECT_EQ(scalar(r), 30.0);  // the interpreter's value, written by name into the result

    seen.clear();
    rec.clear();
    for (const char* s : {"a=1", "s%t", "global q", "!ls", "load data", "playshow x"}) {
        Mm none = eval(TM(s));
        EXPECT_EQ(none.pr, x_M.pr) << s;
    }
    EXPECT_EQ(seen, (std::vector<std::string>{"a=1", "s%t", "global q", "!ls", "load data", "playshow x"}));
    EXPECT_EQ(ak_eval_count(), before + 7);

    // A variable of that name answers without the interpreter; so does an empty text.
    seen.clear();
    Mm v(i_o, "v", 0);
    v = ak_test::row({3, 4});
    Mm got = eval(TM("v"));
    EXPECT_EQ(got.addr()[1], 4.0);
    EXPECT_EQ(eval(TM("")).pr, x_M.pr);
    EXPECT_EQ(evalin(TM("base"), TM("v"), TM("catch")).addr()[0], 3.0);
    EXPECT_TRUE(seen.empty());
    EXPECT_EQ(ak_eval_count(), before + 7);
}

TEST_F(EvalTest, FailureReportsAndCarriesOn) {
    ak_test::Recorder rec(ak_test::Recorder::kPrint | ak_test::Recorder::kErrors);
    const int n = ak_eval_count() + 1;
    Mm r = eval(TM("bad+1"));
    const std::string statement = "eval_result_" + std::to_string(n) + "=bad+1";
    EXPECT_EQ(rec.printed, "Calling eval('" + statement + "')\nDone eval\neval '" + statement + "'\n");
    EXPECT_EQ(rec.errors, std::vector<std::string>{"error evaluating."});
    EXPECT_EQ(r.size(), 0);  // the result variable, never written
    rec.clear();
    evalin(TM("base"));
    EXPECT_EQ(rec.errors, std::vector<std::string>{"evalin does not accept 1 input"});
}

TEST_F(EvalTest, CallbacksAndNoInterpreter) {
    ak_test::Recorder rec;
    EXPECT_EQ(callback_func(TM("close")).pr, x_M.pr);
    EXPECT_EQ(seen.size(), 1u);
    eval_func = nullptr;
    Mm seven = eval(TM("3+4"));
    Mm direct = str2num(TM("3+4"));
    ASSERT_EQ(seven.size(), direct.size());
    for (int k = 1; k <= direct.size(); ++k) EXPECT_EQ(seven.r(k), direct.r(k));
}

// ---- feval ---------------------------------------------------------------------------------------

Mm scaled(const Mm& x, const Mm& k) { return x * k; }
Mm both_ends(const Mm& x, i_o_t, Mm& last) {
    last = Mm(x.addr()[x.size() - 1]);
    return Mm(x.addr()[0]);
}

struct FevalTest : ::testing::Test {
    ak_feval_func_t saved = feval_func;
    void SetUp() override { ak_use_builtin_feval(); }
    void TearDown() override {
        feval_func = saved;
        ak_unregister_function("scaled");
        ak_unregister_function("both_ends");
    }
};

TEST_F(FevalTest, ThroughTheTable) {
    Mm x = ak_test::row({4, 9, 1});
    EXPECT_EQ(scalar(feval(TM("sum"), x)), 14.0);
    Mm where;
    EXPECT_EQ(scalar(feval(TM("max"), x, i_o, where)), 9.0);
    EXPECT_EQ(scalar(where), 2.0);

    ak_register_function("scaled", scaled);
    ak_register_function("both_ends", both_ends);
    EXPECT_EQ(feval_call("scaled", x, Mm(2.0)).addr()[1], 18.0);
    nargout_val = 5.0;
    Mm outs[2];
    Mm first = feval_call("both_ends", x, 2, outs);
    EXPECT_EQ(scalar(first), 4.0);
    EXPECT_EQ(scalar(outs[1]), 1.0);
    EXPECT_EQ(nargout_val, 5.0);  // the caller's count comes back
    Mm args = (CL(x), Mm(3.0));
    EXPECT_EQ(feval_call(TM("scaled"), args, 1, outs).addr()[2], 3.0);
    // feval itself has a row: the first input names the function.
    EXPECT_EQ(scalar(feval(TM("feval"), TM("sum"), x)), 14.0);

    ak_test::Recorder rec(ak_test::Recorder::kErrors);
    EXPECT_EQ(feval(TM("no_such_function"), x).pr, x_M.pr);
    EXPECT_EQ(rec.errors, std::vector<std::string>{"Undefined function 'no_such_function'"});
}

TEST(Feval, DefaultHookReports) {
    ak_test::Recorder rec(ak_test::Recorder::kErrors);
    EXPECT_EQ(feval_call("sum", Mm(1.0)).pr, x_M.pr);
    EXPECT_EQ(rec.errors, std::vector<std::string>{"feval was not linked with the program."});
}

// ---- fixed answers and stubs ---------------------------------------------------------------------

TEST(ProgramInfo, VersionComputerIdentityAndStubs) {
    EXPECT_EQ(text_of(version()), "4.51 MATVEX");
    Mm v, d;
    version(i_o, v, d);
    EXPECT_EQ(text_of(v), "4.51 MATVEX");
    EXPECT_EQ(text_of(d), "Sep 14 2000");
    EXPECT_EQ(text_of(computer()), "GLNXA64");
    Mm c, maxsize;
    EXPECT_EQ(computer(i_o, c, maxsize).pr, x_M.pr);
    EXPECT_EQ(text_of(c), "GLNXA64");
    EXPECT_EQ(scalar(maxsize), 281474976710655.0);
    {
        ak_test::Recorder rec;
        ver();
        EXPECT_NE(rec.printed.find("4.51 MATVEX"), std::string::npos);
    }

    Mm f = TM("x.^2");
    EXPECT_EQ(text_of(fcnchk(f)), "x.^2");
    EXPECT_EQ(text_of(minline(f, TM("x"))), "x.^2");
    Mm a, b = TM("junk");
    EXPECT_EQ(prefcnchk(f, Mm(1.0), Mm(2.0), Mm(3.0), i_o, a, b).pr, x_M.pr);
    EXPECT_EQ(text_of(a), "x.^2");
    EXPECT_EQ(b.size(), 0);
    EXPECT_TRUE(b.isstr());
    EXPECT_TRUE(inputname(Mm(1.0)).isstr());
    EXPECT_EQ(inputname(Mm(1.0)).size(), 0);

    ak_test::Recorder rec(ak_test::Recorder::kErrors | ak_test::Recorder::kPrint);
    EXPECT_EQ(echo(TM("on")).pr, x_M.pr);
    EXPECT_EQ(spparms(TM("spumoni"), Mm(1.0)).pr, x_M.pr);
    EXPECT_EQ(text_of(assignin(TM("base"), TM("x"), Mm(1.0))), "Stub called.");
    EXPECT_EQ(text_of(system_dependent()), "Stub called.");
    Mm out[1];
    Mm in[2] = {TM("base"), Mm(2.0)};
    ASSERT_EQ(ak_call_function("set_param", 2, in, 1, out), 1);
    EXPECT_EQ(text_of(out[0]), "Stub called.");
    EXPECT_TRUE(rec.errors.empty());
    EXPECT_TRUE(rec.printed.empty());
}

}  // namespace
