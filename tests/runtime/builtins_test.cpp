// The table of functions by name and the feval hook over it.
#include <gtest/gtest.h>

#include "arklib.h"
#include "tests/test_support.h"

namespace {

Mm twice(const Mm& x) { return x * 2.0; }
Mm split(const Mm& x, i_o_t, Mm& second) {
    second = x + 1.0;
    return x - 1.0;
}
void count_args(int nin, const Mm*, int nout, Mm* out) {
    for (int k = 0; k < nout; ++k) out[k] = Mm(static_cast<double>(nin * 10 + k));
}

struct BuiltinsTest : ::testing::Test {
    ak_feval_func_t saved = feval_func;
    double saved_nargout = nargout_val;
    void TearDown() override {
        feval_func = saved;
        nargout_val = saved_nargout;
        ak_unregister_function("twice");
        ak_unregister_function("split");
        ak_unregister_function("count_args");
    }
};

TEST_F(BuiltinsTest, LibraryRowsPickTheFormByCounts) {
    Mm in[1] = {ak_test::row({4, 9, 1})};
    Mm out[2];
    ASSERT_EQ(ak_call_function("sum", 1, in, 1, out), 1);
    EXPECT_EQ(scalar(out[0]), 14.0);
    ASSERT_EQ(ak_call_function("max", 1, in, 2, out), 1);
    EXPECT_EQ(scalar(out[0]), 9.0);
    EXPECT_EQ(scalar(out[1]), 2.0);
    // One output asked of a family whose one-input forms give one and two: the shorter is used.
    out[1] = Mm(-1.0);
    ASSERT_EQ(ak_call_function("max", 1, in, 1, out), 1);
    EXPECT_EQ(scalar(out[1]), -1.0);
    EXPECT_TRUE(ak_function_exists("sum"));
}

TEST_F(BuiltinsTest, ProgramFunctionsAndMessages) {
    ak_test::Recorder rec(ak_test::Recorder::kErrors);
    ak_register_function("twice", twice);
    ak_register_function("split", split);
    ak_register_varargs("count_args", nullptr, count_args);
    Mm in[3] = {Mm(5.0), Mm(1.0), Mm(2.0)};
    Mm out[3];
    ASSERT_EQ(ak_call_function("twice", 1, in, 1, out), 1);
    EXPECT_EQ(scalar(out[0]), 10.0);
    ASSERT_EQ(ak_call_function("split", 1, in, 2, out), 1);
    EXPECT_EQ(scalar(out[0]), 4.0);
    EXPECT_EQ(scalar(out[1]), 6.0);
    ASSERT_EQ(ak_call_function("count_args", 3, in, 2, out), 1);
    EXPECT_EQ(scalar(out[1]), 31.0);

    EXPECT_EQ(ak_call_function("no_such_function", 1, in, 1, out), 0);
    EXPECT_EQ(rec.errors.back(), "Undefined function 'no_such_function'");
    EXPECT_EQ(ak_call_function("twice", 2, in, 1, out), 0);
    EXPECT_EQ(rec.errors.back(), "twice does not accept 2 inputs");
    EXPECT_EQ(ak_call_function("split", 1, in, 3, out), 0);
    EXPECT_EQ(rec.errors.back(), "Too many (3>2) outputs for split");

    EXPECT_EQ(ak_unregister_function("twice"), 1);
    EXPECT_FALSE(ak_function_exists("twice"));
}

TEST_F(BuiltinsTest, FevalHookGivesAsManyOutputsAsAsked) {
    ak_register_function("split", split);
    ak_use_builtin_feval();
    Mm o[6];
    const Mm* list[1] = {&one_M};
    Mm args = cell_from_array(1, list);
    nargout_val = 2;
    Mm first = feval_func(TM("split"), args, i_o, o[0], o[1], o[2], o[3], o[4], o[5]);
    EXPECT_EQ(scalar(first), 0.0);
    EXPECT_EQ(scalar(o[0]), 0.0);
    EXPECT_EQ(scalar(o[1]), 2.0);
    // A non-cell argument list is one input.
    nargout_val = 1;
    first = feval_func(TM("sum"), Mm(7.0), i_o, o[0], o[1], o[2], o[3], o[4], o[5]);
    EXPECT_EQ(scalar(first), 7.0);
}

TEST_F(BuiltinsTest, FunctionListIsSortedWithFamilies) {
    ak_register_function("twice", twice);
    const int n = ak_function_list(nullptr, 0);
    std::vector<ak_function_info_t> rows(n);
    ASSERT_EQ(ak_function_list(rows.data(), n), n);
    bool saw_sum = false, saw_twice = false;
    for (int k = 0; k < n; ++k) {
        if (k) {
            EXPECT_LT(std::string(rows[k - 1].name), std::string(rows[k].name));
        }
        if (std::string(rows[k].name) == "sum") {
            saw_sum = true;
            EXPECT_STREQ(rows[k].family, "arith_dims");
            EXPECT_EQ(rows[k].nforms, 2);
        }
        if (std::string(rows[k].name) == "twice") {
            saw_twice = true;
            EXPECT_STREQ(rows[k].family, "program");
        }
    }
    EXPECT_TRUE(saw_sum && saw_twice);
}

}  // namespace
