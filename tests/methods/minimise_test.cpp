// Roots and minima of functions with known answers, and the options of the optimisers.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "arklib.h"
#include "tests/test_support.h"

namespace {

std::vector<double> calls;  // the first element of every argument, in order
double first(const Mm& x) { return x.size() ? x.addr()[0] : NAN; }

Mm square_minus_two(const Mm& x) {
    calls.push_back(first(x));
    return Mm(first(x) * first(x) - 2);
}
Mm cube_minus_two(const Mm& x) {
    calls.push_back(first(x));
    return Mm(first(x) * first(x) * first(x) - 2);
}
Mm shifted(const Mm& x, const Mm& a) {
    calls.push_back(first(x));
    return x - a;
}
Mm never_zero(const Mm& x) { return Mm(std::atan(first(x)) + 2); }
Mm blows_up(const Mm& x) { return Mm(first(x) * first(x) + 1); }
Mm parabola(const Mm& x) {
    calls.push_back(first(x));
    return Mm((first(x) - 2) * (first(x) - 2) + 1);
}
Mm cosine(const Mm& x) { return Mm(std::cos(first(x))); }
Mm rosenbrock(const Mm& x) {
    calls.push_back(first(x));
    const double a = x.addr()[0], b = x.addr()[1];
    return Mm(100 * (b - a * a) * (b - a * a) + (1 - a) * (1 - a));
}
// Residuals of x1^2 + x2^2 = 4 and x1 = x2: their sum of squares is minimised.
Mm circle_line(const Mm& x) {
    const double a = x.addr()[0], b = x.addr()[1];
    Mm r(0, 0, 0, 2, 1, ak_double);
    r.addr()[0] = a * a + b * b - 4;
    r.addr()[1] = a - b;
    return r;
}
Mm nothing(const Mm&) { return Mm(); }

struct MinimiseTest : ::testing::Test {
    ak_feval_func_t saved = feval_func;
    void SetUp() override {
        ak_use_builtin_feval();
        calls.clear();
        ak_register_function("square_minus_two", square_minus_two);
        ak_register_function("shifted", shifted);
        ak_register_function("cube_minus_two", cube_minus_two);
        ak_register_function("never_zero", never_zero);
        ak_register_function("blows_up", blows_up);
        ak_register_function("parabola", parabola);
        ak_register_function("cosine", cosine);
        ak_register_function("rosenbrock", rosenbrock);
        ak_register_function("circle_line", circle_line);
        ak_register_function("nothing", nothing);
    }
    void TearDown() override {
        feval_func = saved;
        for (const char* f : {"square_minus_two", "shifted", "never_zero", "blows_up", "parabola", "cosine",
                              "rosenbrock", "circle_line", "nothing", "cube_minus_two"})
            ak_unregister_function(f);
    }
};

TEST_F(MinimiseTest, FzeroFindsRootsFromGuessesAndIntervals) {
    EXPECT_NEAR(scalar(fzero(TM("square_minus_two"), Mm(1.0))), std::sqrt(2.0), 1e-14);
    EXPECT_NEAR(calls[0], 0.99, 1e-15) << "the search starts at x - 0.01 x";
    calls.clear();
    EXPECT_NEAR(scalar(fzero(TM("cube_minus_two"), Mm(0.0))), std::cbrt(2.0), 1e-14);
    EXPECT_EQ(calls[0], -0.01);
    EXPECT_EQ(calls[1], 0.01);
    EXPECT_NEAR(scalar(fzero(TM("square_minus_two"), ak_test::row({0, 2}), Mm(1e-6))), std::sqrt(2.0), 1e-6);
    // An end of the interval that is a root is the answer, with no iteration.
    calls.clear();
    const double a = 3.25;
    EXPECT_EQ(scalar(fzero(TM("shifted"), ak_test::row({0, a}), Mm(0.0), Mm(0.0), Mm(a))), a);
    EXPECT_EQ(calls.size(), 2u);
    EXPECT_NEAR(scalar(fzero(TM("shifted"), Mm(1.0), Mm(0.0), Mm(0.0), Mm(a))), a, 1e-14);
    {
        ak_test::Recorder rec;
        fzero(TM("square_minus_two"), ak_test::row({0, 2}), Mm(0.0), Mm(1.0));
        EXPECT_NE(rec.printed.find("interpolation"), std::string::npos);
    }
    EXPECT_ERROR(fzero(TM("square_minus_two"), ak_test::row({3, 4})),
                 "fzero: function must have opposite signs at interval points");
    EXPECT_ERROR(fzero(TM("never_zero"), Mm(1.0)), "fzero: could not find a change-sign interval");
    EXPECT_ERROR(fzero(TM("blows_up"), Mm(1.0)),
                 "fzero: non-finite function value encountered while searching for interval");
    EXPECT_ERROR(fzero(TM("shifted"), ak_test::row({1, 2, 3})), "fzero: initial guess x must be a scalar or interval");
    EXPECT_ERROR(fzero(TM("nothing"), Mm(1.0)), "optimization: function returned empty result");
    EXPECT_ERROR(fzero(TM("shifted")), "fzero does not accept 1 input");
}

TEST_F(MinimiseTest, IntervalMinimiser) {
    Mm out;
    const double x = scalar(fmin(TM("parabola"), Mm(0.0), Mm(5.0), Mm(), i_o, out));
    EXPECT_NEAR(x, 2.0, 1e-4);
    EXPECT_NEAR(calls[0], 0.5 * (3 - std::sqrt(5.0)) * 5, 1e-15) << "the first point is the golden section";
    EXPECT_EQ(out.size(), 18);
    EXPECT_EQ(out.addr()[9], static_cast<double>(calls.size()));
    EXPECT_NEAR(scalar(fmin(TM("cosine"), Mm(3.0), Mm(4.0), ak_test::row({0, 1e-10}))), M_PI, 1e-8);
    // The call limit stops the search quietly.
    calls.clear();
    Mm limited = foptions();
    limited.addr()[13] = 5;
    fmin(TM("parabola"), Mm(0.0), Mm(100.0), limited, Mm(), i_o, out);
    EXPECT_EQ(calls.size(), 5u);
    Mm fval, flag;
    const double xb = scalar(fminbnd(TM("cosine"), Mm(3.0), Mm(4.0), optimset(TM("TolX"), Mm(1e-9)), Mm(), i_o,
                                     fval, flag));
    EXPECT_NEAR(xb, M_PI, 1e-7);
    EXPECT_NEAR(scalar(fval), -1.0, 1e-12);
    EXPECT_EQ(scalar(flag), 1.0);
    fminbnd(TM("parabola"), Mm(0.0), Mm(100.0), optimset(TM("MaxFunEvals"), Mm(4.0)), Mm(), i_o, fval, flag);
    EXPECT_EQ(scalar(flag), 0.0);
}

TEST_F(MinimiseTest, SimplexMinimisesRosenbrock) {
    Mm opts = foptions();
    opts.addr()[1] = 1e-8;
    opts.addr()[2] = 1e-10;
    opts.addr()[13] = 5000;
    Mm out;
    Mm x = fmins(TM("rosenbrock"), ak_test::row({-1.2, 1}), opts, Mm(), i_o, out);
    ASSERT_EQ(x.rows(), 1);
    ASSERT_EQ(x.cols(), 2);
    EXPECT_NEAR(x.addr()[0], 1.0, 1e-4);
    EXPECT_NEAR(x.addr()[1], 1.0, 1e-4);
    EXPECT_LT(out.addr()[7], 1e-8);
    EXPECT_EQ(out.addr()[9], static_cast<double>(calls.size()));
    // The starting simplex: x, then each element grown by 5 percent in turn.
    EXPECT_EQ(calls[0], -1.2);
    EXPECT_EQ(calls[1], -1.2 * 1.05);
    EXPECT_EQ(calls[2], -1.2);

    Mm fval, flag;
    Mm xs = fminsearch(TM("rosenbrock"), ak_test::row({-1.2, 1}),
                       optimset(TM("TolX"), Mm(1e-8), TM("TolFun"), Mm(1e-10), TM("MaxFunEvals"), Mm(5000.0)), Mm(),
                       i_o, fval, flag);
    EXPECT_NEAR(xs.addr()[0], 1.0, 1e-4);
    EXPECT_LT(scalar(fval), 1e-8);
    EXPECT_EQ(scalar(flag), 1.0);
    fminsearch(TM("rosenbrock"), ak_test::row({-1.2, 1}), optimset(TM("MaxFunEvals"), Mm(20.0)), Mm(), i_o, fval,
               flag);
    EXPECT_EQ(scalar(flag), 0.0);
}

TEST_F(MinimiseTest, SimplexDetails) {
    // A zero element starts with a step of 0.00025.
    calls.clear();
    Mm opts = foptions();
    opts.addr()[13] = 3;
    fmins(TM("rosenbrock"), ak_test::row({0, 0}), opts);
    ASSERT_GE(calls.size(), 2u);
    EXPECT_EQ(calls[1], 0.00025);
    // No unknowns: no call and the value 0.
    calls.clear();
    Mm out;
    Mm x = fmins(TM("rosenbrock"), Mm(), Mm(), Mm(), i_o, out);
    EXPECT_EQ(x.size(), 0);
    EXPECT_TRUE(calls.empty());
    {
        ak_test::Recorder rec;
        Mm traced = foptions();
        traced.addr()[0] = 1;
        fmins(TM("rosenbrock"), ak_test::row({-1.2, 1}), traced);
        EXPECT_NE(rec.printed.find("reflect\n"), std::string::npos);
        EXPECT_NE(rec.printed.find("contract inside\n"), std::string::npos);
    }
    Mm s = fsolve(TM("circle_line"), ak_test::row({1, 2}), ak_test::row({0, 1e-10, 1e-14}));
    EXPECT_NEAR(s.addr()[0], std::sqrt(2.0), 1e-5);
    EXPECT_NEAR(s.addr()[1], std::sqrt(2.0), 1e-5);
    EXPECT_ERROR(fmins(TM("nothing"), ak_test::row({1, 2})), "optimization: function returned empty result");
}

TEST_F(MinimiseTest, OptionsVectorAndStructure) {
    Mm v(0, 0, 0, 1, 20, ak_double);
    for (int k = 0; k < 20; ++k) v.addr()[k] = k == 1 ? 0.5 : 0;
    Mm o = foptions(v);
    ASSERT_EQ(o.size(), 18);
    EXPECT_EQ(o.addr()[1], 0.5);
    EXPECT_EQ(o.addr()[2], 1e-4);
    EXPECT_EQ(o.addr()[3], 1e-6);
    EXPECT_EQ(o.addr()[15], 1e-8);
    EXPECT_EQ(o.addr()[16], 0.1);
    EXPECT_EQ(o.addr()[13], 0.0);

    Mm s = optimset();
    EXPECT_EQ(scalar(isfield(s, TM("TolX"))), 1.0);
    EXPECT_EQ(getfield(s, TM("TolX")).size(), 0);
    s = optimset(s, TM("tolx"), Mm(1e-3));
    EXPECT_EQ(scalar(getfield(s, TM("TolX"))), 1e-3);
    Mm merged = optimset(s, optimset(TM("TolFun"), Mm(2e-3)));
    EXPECT_EQ(scalar(optimget(merged, TM("TolX"))), 1e-3);
    EXPECT_EQ(scalar(optimget(merged, TM("TolFun"))), 2e-3);
    EXPECT_EQ(scalar(optimget(merged, TM("TolCon"), Mm(7.0))), 7.0);
    EXPECT_EQ(scalar(optimget(optimset(TM("MaxFunEvals"), Mm(0.0)), TM("MaxFunEvals"), Mm(3.0))), 3.0);
    EXPECT_ERROR(optimset(s), "not supported.");
}

}  // namespace
