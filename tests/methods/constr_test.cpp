// constr and fminu on problems with known solutions, and non-negative least squares.
#include <gtest/gtest.h>

#include <cmath>

#include "arklib.h"
#include "tests/test_support.h"

namespace {

double at(const Mm& x, int k) { return x.addr()[k]; }
Mm column(std::initializer_list<double> v) {
    Mm m(0, 0, 0, static_cast<int>(v.size()), 1, ak_double);
    int k = 0;
    for (double e : v) m.addr()[k++] = e;
    return m;
}

// Hock and Schittkowski's problem 71: one equality, one inequality and a box.
Mm hs71(const Mm& x, i_o_t, Mm& g) {
    const double a = at(x, 0), b = at(x, 1), c = at(x, 2), d = at(x, 3);
    g = column({a * a + b * b + c * c + d * d - 40, 25 - a * b * c * d});
    return Mm(a * d * (a + b + c) + c);
}
Mm nearest_to_origin(const Mm& x, i_o_t, Mm& g) {
    g = Mm(1 - at(x, 0) - at(x, 1));
    return Mm(at(x, 0) * at(x, 0) + at(x, 1) * at(x, 1));
}
// The same with a given gradient.
Mm nearest_gradient(const Mm& x, i_o_t, Mm& dg) {
    dg = column({-1, -1});
    return column({2 * at(x, 0), 2 * at(x, 1)});
}
Mm empty_target(const Mm&, i_o_t, Mm& g) {
    g = Mm(1.0);
    return Mm();
}
Mm two_constraints(const Mm& x, i_o_t, Mm& g) {
    g = column({at(x, 0), at(x, 1)});
    return Mm(at(x, 0));
}
Mm rosen(const Mm& x) {
    const double a = at(x, 0), b = at(x, 1);
    return Mm(100 * (b - a * a) * (b - a * a) + (1 - a) * (1 - a));
}

struct ConstrTest : ::testing::Test {
    ak_feval_func_t saved = feval_func;
    void SetUp() override {
        ak_use_builtin_feval();
        ak_register_function("hs71", hs71);
        ak_register_function("nearest_to_origin", nearest_to_origin);
        ak_register_function("nearest_gradient", nearest_gradient);
        ak_register_function("empty_target", empty_target);
        ak_register_function("two_constraints", two_constraints);
        ak_register_function("rosen", rosen);
    }
    void TearDown() override {
        feval_func = saved;
        for (const char* f :
             {"hs71", "nearest_to_origin", "nearest_gradient", "empty_target", "two_constraints", "rosen"})
            ak_unregister_function(f);
    }
};

TEST_F(ConstrTest, TextbookProblems) {
    Mm opts = foptions();
    opts.addr()[1] = 1e-8;
    opts.addr()[2] = 1e-10;
    opts.addr()[12] = 1;  // one equality
    Mm out;
    Mm x = constr(TM("hs71"), column({1, 5, 5, 1}), opts, column({1, 1, 1, 1}), column({5, 5, 5, 5}), i_o, out);
    ASSERT_EQ(x.size(), 4);
    EXPECT_NEAR(at(x, 0), 1.0, 1e-5);
    EXPECT_NEAR(at(x, 1), 4.7429996, 1e-4);
    EXPECT_NEAR(at(x, 2), 3.8211500, 1e-4);
    EXPECT_NEAR(at(x, 3), 1.3794083, 1e-4);
    EXPECT_NEAR(at(out, 7), 17.0140173, 1e-5);
    EXPECT_GT(at(out, 9), 10);

    Mm y = constr(TM("nearest_to_origin"), ak_test::row({3, -1}));
    EXPECT_EQ(y.rows(), 1);
    EXPECT_NEAR(at(y, 0), 0.5, 1e-5);
    EXPECT_NEAR(at(y, 1), 0.5, 1e-5);
    Mm z = constr(TM("nearest_to_origin"), ak_test::row({3, -1}), Mm(), Mm(), Mm(), TM("nearest_gradient"), i_o, out);
    EXPECT_NEAR(at(z, 0), 0.5, 1e-6);
    EXPECT_NEAR(at(out, 7), 0.5, 1e-6);

    Mm u = fminu(TM("rosen"), ak_test::row({-1.2, 1}), ak_test::row({0, 1e-10, 1e-12}));
    EXPECT_NEAR(at(u, 0), 1.0, 1e-4);
    EXPECT_NEAR(at(u, 1), 1.0, 1e-4);
}

TEST_F(ConstrTest, Messages) {
    {
        ak_test::Recorder rec;
        EXPECT_ERROR(constr(TM("empty_target"), Mm(1.0)), "constr: the target function returned empty result.");
        EXPECT_NE(rec.printed.find("1"), std::string::npos) << "both outputs are displayed";
    }
    ak_test::Recorder rec;
    Mm opts = foptions();
    opts.addr()[12] = 3;
    EXPECT_ERROR(constr(TM("two_constraints"), ak_test::row({1, 1}), opts), "constr: contraints are inconsistent.");
    EXPECT_EQ(rec.printed, "0+3+-1!=2\n");
}

TEST(Nnls, ClampsTheNegativePartToZero) {
    Mm a(0, 0, 0, 3, 2, ak_double);
    const double av[6] = {1, 0, 1, 0, 1, 1};
    for (int k = 0; k < 6; ++k) a.addr()[k] = av[k];
    Mm b = column({2, -1, 1});
    Mm w, p;
    Mm x = nnls(a, b, i_o, w, p);
    EXPECT_NEAR(at(x, 0), 1.5, 1e-12);
    EXPECT_EQ(at(x, 1), 0.0);
    EXPECT_NEAR(at(w, 0), 0, 1e-12);
    EXPECT_NEAR(at(w, 1), -1.5, 1e-12);
    ASSERT_EQ(p.size(), 1);
    EXPECT_EQ(at(p, 0), 1.0);

    Mm resnorm, residual, flag, output, lambda;
    x = lsqnonneg(a, b, i_o, resnorm, residual, flag, output, lambda);
    EXPECT_NEAR(at(x, 0), 1.5, 1e-12);
    EXPECT_NEAR(scalar(resnorm), 1.5, 1e-12);
    EXPECT_NEAR(at(residual, 1), -1, 1e-12);
    EXPECT_EQ(scalar(flag), 1.0);
    EXPECT_GE(scalar(getfield(output, TM("iterations"))), 1.0);
    // A problem whose unconstrained solution is already non-negative is solved exactly.
    x = nnls(a, column({1, 2, 3}));
    EXPECT_NEAR(at(x, 0), 1, 1e-12);
    EXPECT_NEAR(at(x, 1), 2, 1e-12);

    EXPECT_ERROR(nnls(a, column({1, 2})), "nnls: number of rows in a and b is different");
    EXPECT_ERROR(lsqnonneg(a), "lsqnonneg: wrong number of arguments");
}

}  // namespace

namespace {

// a exp(b t) at the points t.
Mm exponential(const Mm& x, const Mm& t) {
    Mm r(0, 0, 0, t.rows(), t.cols(), ak_double);
    for (int k = 0; k < t.size(); ++k) r.addr()[k] = x.addr()[0] * std::exp(x.addr()[1] * t.addr()[k]);
    return r;
}

TEST(Curvefit, RecoversTheParametersOfExactData) {
    ak_feval_func_t saved = feval_func;
    ak_use_builtin_feval();
    ak_register_function("exponential", exponential);
    Mm t(0, 0, 0, 1, 12, ak_double), y(0, 0, 0, 1, 12, ak_double);
    for (int k = 0; k < 12; ++k) {
        t.addr()[k] = 0.25 * k;
        y.addr()[k] = 2 * std::exp(-0.5 * t.addr()[k]);
    }
    Mm out;
    Mm x = curvefit(TM("exponential"), ak_test::row({1, 0}), t, y, ak_test::row({0, 1e-10, 1e-14}), i_o, out);
    EXPECT_NEAR(x.addr()[0], 2, 1e-6);
    EXPECT_NEAR(x.addr()[1], -0.5, 1e-6);
    EXPECT_LT(out.addr()[7], 1e-12);
    EXPECT_ERROR(curvefit(TM("exponential"), ak_test::row({1, 0}), t, ak_test::row({1, 2})),
                 "curvefit: the function must return as many values as ydata has (2)");
    ak_unregister_function("exponential");
    feval_func = saved;
}

}  // namespace

namespace {

// Three lines |x - 1|, |x + 2| as four affine pieces: the largest is smallest at x = -0.5, value 1.5.
Mm pieces(const Mm& x, i_o_t, Mm& g) {
    const double v = x.addr()[0];
    g = Mm();
    return column({v - 1, 1 - v, v + 2, -v - 2});
}

TEST(Minimax, SmallestLargestElement) {
    ak_feval_func_t saved = feval_func;
    ak_use_builtin_feval();
    ak_register_function("pieces", pieces);
    Mm out;
    Mm x = minimax(TM("pieces"), Mm(3.0), ak_test::row({0, 1e-8, 1e-10}), i_o, out);
    EXPECT_NEAR(scalar(x), -0.5, 1e-6);
    EXPECT_NEAR(out.addr()[7], 1.5, 1e-6);
    ak_unregister_function("pieces");
    feval_func = saved;
}

}  // namespace
