// The scalar complex routines and real helpers that the element engine calls per element.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "algebra/complex_scalar.h"

using namespace ak_internal;

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();
const double kPi = 3.141592653589793;

// Both parts within tol of the modulus of the expected value.
::testing::AssertionResult c_close(double gr, double gi, double wr, double wi, double tol = 1e-14) {
    double err = std::hypot(gr - wr, gi - wi) / std::hypot(wr, wi);
    if (err <= tol) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "got (" << gr << ", " << gi << "), want (" << wr << ", " << wi
                                         << ") (relative error " << err << ")";
}
::testing::AssertionResult rel_close(double got, double want, double tol = 1e-15) {
    return c_close(got, 0, want, 0, tol);
}

// A complex routine's result as a pair, for exact comparisons: EXPECT_EQ(C(-1, 0), call(c_pow, ...)).
using C = std::pair<double, double>;
C call(void (*f)(double, double, double&, double&), double x, double y) {
    double r, i;
    f(x, y, r, i);
    return {r, i};
}
C call(void (*f)(double, double, double, double, double&, double&), double a, double b, double c, double d) {
    double r, i;
    f(a, b, c, d, r, i);
    return {r, i};
}
::testing::AssertionResult c_close(C got, double wr, double wi, double tol = 1e-14) {
    return c_close(got.first, got.second, wr, wi, tol);
}

}  // namespace

TEST(ComplexScalar, ModulusLogarithmAndSquareRoot) {
    EXPECT_EQ(c_abs(3, 4), 5.0);
    EXPECT_TRUE(rel_close(c_abs(1e300, 1e300), 1.4142135623730951e300));  // squares would overflow
    EXPECT_TRUE(std::isnan(c_abs(kNaN, 0)));
    EXPECT_EQ(c_abs(kInf, -kInf), kInf);

    EXPECT_EQ(call(c_log, 0, 0), C(-kInf, 0.0));
    EXPECT_EQ(call(c_log, -1, -0.0), C(0.0, kPi));  // a negative zero still gives +pi
    EXPECT_TRUE(c_close(call(c_log2, -8, 0), 3.0, 4.5323601418271938));

    EXPECT_TRUE(c_close(call(c_sqrt, -3, -4), 1, -2));
    EXPECT_EQ(call(c_sqrt, -4, -0.0), C(0.0, 2.0));  // -0 is not below 0: the upper root
    EXPECT_EQ(call(c_sqrt, 0, 0), C(0.0, 0.0));
    double r, i;
    r_sqrt_c(-9, r, i);
    EXPECT_EQ(C(r, i), C(0.0, 3.0));
}

TEST(ComplexScalar, DivisionIncludingByZero) {
    EXPECT_TRUE(c_close(call(c_div, 1, 2, 3, 4), 11.0 / 25, 2.0 / 25));
    EXPECT_EQ(call(c_div, 6, 4, 2, 0), C(3.0, 2.0));  // real divisor: part by part
    // A real value over zero gains no NaN imaginary part.
    EXPECT_EQ(call(c_div, 1, 0, 0, 0), C(kInf, 0.0));
    EXPECT_EQ(call(c_div, 1, 1, 0, 0), C(kInf, kInf));
    C zero_by_zero = call(c_div, 0, 0, 0, 0);
    EXPECT_TRUE(std::isnan(zero_by_zero.first));
    EXPECT_EQ(zero_by_zero.second, 0.0);
    // The results may overwrite the inputs.
    double a = 1, b = 2;
    c_div(a, b, 3, 4, a, b);
    EXPECT_TRUE(c_close(a, b, 11.0 / 25, 2.0 / 25));
}

TEST(ComplexScalar, PowerByBinaryExponentiationAndThroughTheLogarithm) {
    EXPECT_EQ(call(c_pow, 0, 1, 7, 0), C(0.0, -1.0));  // i^7 = -i, exactly
    // A large whole exponent agrees with the logarithmic route.
    C lg = call(c_log, 1, 1e-3);
    C by_log = call(c_exp, 1000 * lg.first, 1000 * lg.second);
    EXPECT_TRUE(c_close(call(c_pow, 1, 1e-3, 1000, 0), by_log.first, by_log.second, 1e-12));

    EXPECT_TRUE(c_close(call(c_pow, -8, 0, 1.0 / 3, 0), 1.0, std::sqrt(3.0)));  // principal cube root
    EXPECT_EQ(call(c_pow, 2, 0, 0.5, 0), C(std::sqrt(2.0), 0.0));  // a non-negative real base: real power
    // 0^0 is 1 with a real exponent, 0 with an imaginary one
    EXPECT_EQ(call(c_pow, 0, 0, 0, 0), C(1.0, 0.0));
    EXPECT_EQ(call(c_pow, 0, 0, 0, 1), C(0.0, 0.0));
    C nan_base = call(c_pow, kNaN, 0, 0.5, 1);
    EXPECT_TRUE(std::isnan(nan_base.first));
    EXPECT_EQ(nan_base.second, 0.0);
    EXPECT_EQ(call(c_pow, 0.5, 0, kInf, 0), C(0.0, 0.0));  // an infinite exponent uses the real power
    EXPECT_EQ(r_pow(-3, 2), 9.0);
    EXPECT_TRUE(std::isnan(r_pow(-8, 1.0 / 3)));
}

TEST(ComplexScalar, MinMaxRoundingSignSincAndPow2) {
    EXPECT_EQ(max2(kNaN, 1), 1.0);
    EXPECT_EQ(min2(1, kNaN), 1.0);
    EXPECT_TRUE(std::isnan(max2(kNaN, kNaN)));
    EXPECT_EQ(max2(-kInf, kNaN), -kInf);
    EXPECT_EQ(call(c_max2, 3, 4, 5, 0), C(3.0, 4.0));     // equal moduli keep a
    EXPECT_EQ(call(c_max2, 1, 0, kNaN, 0), C(1.0, 0.0));  // a NaN keeps a
    EXPECT_EQ(call(c_min2, 3, 4, 0, -1), C(0.0, -1.0));

    EXPECT_EQ(m_round(-2.5), -3.0);
    EXPECT_EQ(m_round(0.49999999999999994), 0.0);                // x + 0.5 would round up to 1
    EXPECT_EQ(m_round(4503599627370497.0), 4503599627370497.0);  // and here to the next even
    EXPECT_TRUE(std::isnan(m_round(kNaN)));
    EXPECT_EQ(call(c_round, 1.5, -2.5), C(2.0, -3.0));
    EXPECT_EQ(m_fix(-2.7), -2.0);
    EXPECT_EQ(m_sign(0), 0.0);
    EXPECT_TRUE(std::isnan(m_sign(kNaN)));
    EXPECT_TRUE(c_close(call(c_sign, 3, 4), 0.6, 0.8));
    EXPECT_EQ(call(c_sign, 0, 0), C(0.0, 0.0));

    EXPECT_EQ(m_sinc(0), 1.0);
    EXPECT_EQ(m_sinc(1), 0.0);
    EXPECT_TRUE(rel_close(m_sinc(1e6 + 0.5), 1 / (kPi * (1e6 + 0.5)), 1e-14));
    EXPECT_EQ(m_pow2(3, 2), 12.0);
    EXPECT_EQ(m_pow2(1, -1074), std::numeric_limits<double>::denorm_min());
    EXPECT_TRUE(c_close(call(c_pow2, 1, kPi / std::log(2.0)), -2, 0));  // 2^(1 + i pi/ln2) = -2
}

TEST(ComplexScalar, RemAndModSignsNaNAndRoundingNoise) {
    EXPECT_EQ(m_rem(-7, 3), -1.0);
    EXPECT_EQ(m_mod(-7, 3), 2.0);
    EXPECT_EQ(m_mod(7, -3), -2.0);
    EXPECT_EQ(m_mod(-6, 3), 0.0);
    EXPECT_TRUE(std::isnan(m_rem(5, 0)));
    EXPECT_TRUE(std::isnan(m_rem(kInf, 2)));
    EXPECT_TRUE(std::isnan(m_mod(2, kInf)));
    // 0.3 / 0.1 is 2.9999999999999996: within eps of 3, so the remainder is exactly 0.
    EXPECT_EQ(m_rem(0.3, 0.1), 0.0);
    EXPECT_EQ(m_mod(-0.3, -0.1), 0.0);
    // Beyond the noise, or with a negative quotient, nothing is absorbed.
    EXPECT_NE(m_rem(3.0000001, 1), 0.0);
    EXPECT_NEAR(m_rem(-0.3, 0.1), -0.1, 1e-15);
}

TEST(ComplexScalar, ExponentialAndTrigonometricValues) {
    EXPECT_TRUE(c_close(call(c_exp, 0, kPi), -1, 0, 1e-15));
    EXPECT_EQ(call(c_exp, kInf, 0), C(kInf, 0.0));  // no Inf * 0 for a real argument
    EXPECT_TRUE(c_close(call(c_tan, 1, 2), 0.03381282607989669, 1.0147936161466336));
    // far from the real axis tan tends to i, without overflow
    EXPECT_TRUE(c_close(call(c_tan, 0.3, 400), 0, 1));
    EXPECT_EQ(call(c_cot, 0, 0), C(kInf, 0.0));
    // sec where the squares of cos overflow a plain division: 2 exp(-400) (cos 0.5 + i sin 0.5)
    EXPECT_TRUE(c_close(call(c_sec, 0.5, 400), 3.361438882277658e-174, 1.836362430846013e-174));

    // Each function undoes its inverse, including the reciprocal ones: a fault in a formula or in
    // the choice of branch shows here.
    typedef void (*fn)(double, double, double&, double&);
    const fn pairs[][2] = {{c_sin, c_asin},   {c_cos, c_acos},   {c_tan, c_atan},   {c_sinh, c_asinh},
                           {c_cosh, c_acosh}, {c_tanh, c_atanh}, {c_sec, c_asec},   {c_csc, c_acsc},
                           {c_cot, c_acot},   {c_sech, c_asech}, {c_csch, c_acsch}, {c_coth, c_acoth}};
    const double pts[][2] = {{0.3, 0.2}, {-0.7, 1.3}, {2.5, -0.4}, {-3, -2}, {0.1, -5}, {40, 0.5}};
    for (int f = 0; f < 12; ++f)
        for (const auto& z : pts) {
            C w = call(pairs[f][1], z[0], z[1]);
            EXPECT_TRUE(c_close(call(pairs[f][0], w.first, w.second), z[0], z[1], 1e-12))
                << "inverse " << f << " at (" << z[0] << ", " << z[1] << ")";
        }
}

TEST(ComplexScalar, InverseValuesAndCutsOfRealArguments) {
    EXPECT_TRUE(c_close(call(c_asin, 0.5, 0.25), 0.50160885327550076, 0.28139605624529277));
    EXPECT_TRUE(c_close(call(c_atan, 0.4, -1.5), 1.312753486776321, -0.68736434755409055));
    C small = call(c_asin, 1e-10, 1e-10);  // no loss of digits near 0
    EXPECT_TRUE(c_close(small, 1e-10, 1e-10));

    // Real arguments outside the real domain, on the side the logarithmic identities give.
    const double acosh2 = 1.3169578969248167;
    EXPECT_TRUE(c_close(call(c_asin, 2, 0), kPi / 2, -acosh2));
    EXPECT_TRUE(c_close(call(c_acos, 2, 0), 0, acosh2));
    EXPECT_TRUE(c_close(call(c_acosh, -2, 0), acosh2, kPi));
    EXPECT_TRUE(c_close(call(c_atanh, 2, 0), 0.54930614433405485, kPi / 2));
    EXPECT_EQ(call(c_asec, 0, 0), C(0.0, kInf));  // acos(Inf)
    EXPECT_TRUE(c_close(call(c_acoth, 0, 0), 0, kPi / 2));
    // Inside the domain a real argument keeps a zero imaginary part.
    EXPECT_EQ(call(c_asin, 0.5, 0), C(std::asin(0.5), 0.0));
}
