// Quadrature of functions with known integrals, to the tolerance asked for; integrands are the
// program's own functions registered by name.
#include <gtest/gtest.h>

#include <cmath>

#include "arklib.h"
#include "tests/test_support.h"

using ak_test::row;

namespace {

const double kPi = std::acos(-1.0);

template <class F>
Mm each(const Mm& x, F f) {
    Mm r(0, 0, 0, x.dims[0], x.dims[1], ak_double);
    for (int k = 0; k < x.size(); ++k) r.addr()[k] = f(x.addr()[k]);
    return r;
}
Mm square_fn(const Mm& x) { return each(x, [](double v) { return v * v; }); }
Mm root_fn(const Mm& x) { return each(x, [](double v) { return std::sqrt(v); }); }
Mm lorentz_fn(const Mm& x) { return each(x, [](double v) { return 1 / (1 + v * v); }); }
Mm gauss_fn(const Mm& x) { return each(x, [](double v) { return std::exp(-v * v); }); }
Mm wiggle_fn(const Mm& x) { return each(x, [](double v) { return std::sin(30 * v) * std::exp(v); }); }
Mm product_fn(const Mm& x, const Mm& y) { return x * y; }
Mm wrong_size_fn(const Mm&) { return Mm(1.0); }

struct Quadrature : ::testing::Test {
    void SetUp() override {
        ak_register_function("sq", square_fn);
        ak_register_function("rt", root_fn);
        ak_register_function("lorentz", lorentz_fn);
        ak_register_function("gauss", gauss_fn);
        ak_register_function("wiggle", wiggle_fn);
        ak_register_function("prod2", product_fn);
        ak_register_function("wrongsize", wrong_size_fn);
    }
    void TearDown() override {
        for (const char* n : {"sq", "rt", "lorentz", "gauss", "wiggle", "prod2", "wrongsize"}) ak_unregister_function(n);
    }
};

// The exact integral of sin(30 x) e^x over [0, 1].
double wiggle_exact() { return (std::exp(1.0) * (std::sin(30.0) - 30 * std::cos(30.0)) + 30) / 901; }

TEST_F(Quadrature, AdaptiveRulesMeetTheirTolerance) {
    EXPECT_NEAR(scalar(quad(TM("sq"), Mm(0.0), Mm(3.0))), 9.0, 1e-10);
    EXPECT_NEAR(scalar(quadl(TM("sq"), Mm(0.0), Mm(3.0))), 9.0, 1e-10);
    EXPECT_NEAR(scalar(integral(TM("sq"), Mm(0.0), Mm(3.0))), 9.0, 1e-10);
    for (double tol : {1e-4, 1e-8}) {
        EXPECT_NEAR(scalar(quad(TM("wiggle"), Mm(0.0), Mm(1.0), Mm(tol))), wiggle_exact(), 10 * tol);
        EXPECT_NEAR(scalar(quadl(TM("wiggle"), Mm(0.0), Mm(1.0), Mm(tol))), wiggle_exact(), 10 * tol);
    }
    // A square root: unbounded derivative at 0.
    EXPECT_NEAR(scalar(quad(TM("rt"), Mm(0.0), Mm(1.0), Mm(1e-8))), 2.0 / 3, 1e-7);
    EXPECT_NEAR(scalar(integral(TM("rt"), Mm(0.0), Mm(1.0))), 2.0 / 3, 1e-6 * 2 / 3);  // the default RelTol
    EXPECT_NEAR(scalar(integral(TM("rt"), Mm(0.0), Mm(1.0), TM("RelTol"), Mm(1e-10))), 2.0 / 3, 1e-10);
    // Tighter tolerances cost more evaluations.
    Mm loose, tight;
    quad(TM("wiggle"), Mm(0.0), Mm(1.0), Mm(1e-3), i_o, loose);
    quad(TM("wiggle"), Mm(0.0), Mm(1.0), Mm(1e-9), i_o, tight);
    EXPECT_GT(scalar(tight), scalar(loose));
    // Reversed limits change the sign.
    EXPECT_NEAR(scalar(integral(TM("sq"), Mm(3.0), Mm(0.0))), -9.0, 1e-10);
}

TEST_F(Quadrature, InfiniteLimitsAndDoubleIntegrals) {
    EXPECT_NEAR(scalar(integral(TM("lorentz"), -Inf, Inf)), kPi, 1e-8);
    EXPECT_NEAR(scalar(integral(TM("gauss"), Mm(0.0), Inf)), std::sqrt(kPi) / 2, 1e-9);
    EXPECT_NEAR(scalar(integral(TM("gauss"), -Inf, Mm(0.0), TM("AbsTol"), Mm(1e-12), TM("RelTol"), Mm(1e-10))),
                std::sqrt(kPi) / 2, 1e-11);
    EXPECT_NEAR(scalar(dblquad(TM("prod2"), Mm(0.0), Mm(1.0), Mm(0.0), Mm(2.0))), 1.0, 1e-9);
}

TEST_F(Quadrature, TrapezoidRuleOnData) {
    EXPECT_EQ(scalar(trapz(row({1, 2, 3}))), 4.0);
    EXPECT_EQ(scalar(trapz(row({0, 1, 3}), row({1, 2, 3}))), 1.5 + 5.0);
    EXPECT_EQ(scalar(trapz(Mm(0.5), row({1, 2, 3}))), 2.0);
    Mm m(0, 0, 0, 2, 3, ak_double);  // rows [1 2 3] and [4 5 6]
    const double cols[6] = {1, 4, 2, 5, 3, 6};
    std::copy(cols, cols + 6, m.addr());
    Mm along_rows = trapz(Mm(1.0), m, Mm(2.0));
    EXPECT_EQ(along_rows.dims[0], 2);
    EXPECT_EQ(along_rows.addr()[1], 10.0);
    Mm c = cumtrapz(row({1, 2, 3}));
    EXPECT_EQ(c.addr()[0], 0.0);
    EXPECT_EQ(c.addr()[1], 1.5);
    EXPECT_EQ(c.addr()[2], 4.0);
}

TEST_F(Quadrature, BadIntegrandsGiveMessages) {
    EXPECT_ERROR(quad(TM("wrongsize"), Mm(0.0), Mm(1.0)), "quad: the function must give one real value for each point");
    EXPECT_ERROR(quad(Mm(3.0), Mm(0.0), Mm(1.0)), "quad: the function must be given by its name");
    // A name the table does not know goes to the program's feval hook, here the default one.
    EXPECT_ERROR(quadl(TM("no_such_integrand"), Mm(0.0), Mm(1.0)), "feval was not linked with the program.");
    EXPECT_ERROR(integral(TM("sq"), Mm(0.0), Mm(1.0), TM("Tolerance"), Mm(1.0)), "integral: unknown option 'Tolerance'");
}

}  // namespace
