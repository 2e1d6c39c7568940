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

::testing::AssertionResult rel_close(double got, double want, double tol) {
    if (got == want) return ::testing::AssertionSuccess();
    double err = std::fabs(got - want) / std::fabs(want);
    if (err <= tol) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
           << "got " << got << ", want " << want << " (relative error " << err << ")";
}

// Both parts within tol of the modulus of the expected value.
::testing::AssertionResult c_close(double gr, double gi, double wr, double wi, double tol = 1e-14) {
    double err = std::hypot(gr - wr, gi - wi) / std::hypot(wr, wi);
    if (err <= tol) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "got (" << gr << ", " << gi << "), want (" << wr << ", " << wi
                                         << ") (relative error " << err << ")";
}

}  // namespace

TEST(ComplexScalar, ModulusScalesAndHandlesZeroNaNInf) {
    EXPECT_EQ(c_abs(3, 4), 5.0);
    EXPECT_EQ(c_abs(-4, 3), 5.0);
    EXPECT_TRUE(rel_close(c_abs(1e300, 1e300), 1.4142135623730951e300, 1e-15));  // squares would overflow
    EXPECT_TRUE(rel_close(c_abs(1e-300, 1e-300), 1.4142135623730951e-300, 1e-15));
    EXPECT_EQ(c_abs(0, 0), 0.0);
    EXPECT_TRUE(std::isnan(c_abs(kNaN, 0)));
    EXPECT_TRUE(std::isnan(c_abs(0, kNaN)));
    EXPECT_EQ(c_abs(kInf, 1), kInf);
    EXPECT_EQ(c_abs(kInf, -kInf), kInf);
}

TEST(ComplexScalar, LogarithmOfZeroAndNegativeReals) {
    double r, i;
    c_log(0, 0, r, i);
    EXPECT_EQ(r, -kInf);
    EXPECT_EQ(i, 0.0);
    c_log(-1, 0, r, i);
    EXPECT_EQ(r, 0.0);
    EXPECT_EQ(i, kPi);
    c_log(-1, -0.0, r, i);  // a negative zero still gives +pi
    EXPECT_EQ(i, kPi);
    c_log(-3, 4, r, i);
    EXPECT_TRUE(c_close(r, i, 1.6094379124341004, 2.214297435588181));
    c_log2(-8, 0, r, i);
    EXPECT_TRUE(c_close(r, i, 3.0, 4.5323601418271938));
    c_log10(-100, 0, r, i);
    EXPECT_TRUE(c_close(r, i, 2.0, kPi / std::log(10.0)));
}

TEST(ComplexScalar, SquareRootBranches) {
    double r, i;
    c_sqrt(-3, 4, r, i);
    EXPECT_TRUE(c_close(r, i, 1, 2));
    c_sqrt(-3, -4, r, i);
    EXPECT_TRUE(c_close(r, i, 1, -2));
    c_sqrt(3, 4, r, i);
    EXPECT_TRUE(c_close(r, i, 2, 1));
    c_sqrt(0, 2, r, i);
    EXPECT_TRUE(c_close(r, i, 1, 1));
    c_sqrt(-4, 0, r, i);
    EXPECT_EQ(r, 0.0);
    EXPECT_EQ(i, 2.0);
    c_sqrt(-4, -0.0, r, i);  // -0 is not below 0: the upper root
    EXPECT_EQ(i, 2.0);
    c_sqrt(0, 0, r, i);
    EXPECT_EQ(r, 0.0);
    EXPECT_EQ(i, 0.0);
    r_sqrt_c(-9, r, i);
    EXPECT_EQ(r, 0.0);
    EXPECT_EQ(i, 3.0);
    r_sqrt_c(16, r, i);
    EXPECT_EQ(r, 4.0);
    EXPECT_EQ(i, 0.0);
}

TEST(ComplexScalar, DivisionIncludingByZero) {
    double r, i;
    c_div(1, 2, 3, 4, r, i);
    EXPECT_TRUE(c_close(r, i, 11.0 / 25, 2.0 / 25));
    c_div(6, 4, 2, 0, r, i);  // real divisor: part by part
    EXPECT_EQ(r, 3.0);
    EXPECT_EQ(i, 2.0);
    // A real value over zero gains no NaN imaginary part.
    c_div(1, 0, 0, 0, r, i);
    EXPECT_EQ(r, kInf);
    EXPECT_EQ(i, 0.0);
    c_div(-1, 0, 0, 0, r, i);
    EXPECT_EQ(r, -kInf);
    EXPECT_EQ(i, 0.0);
    c_div(1, 1, 0, 0, r, i);
    EXPECT_EQ(r, kInf);
    EXPECT_EQ(i, kInf);
    c_div(0, 0, 0, 0, r, i);
    EXPECT_TRUE(std::isnan(r));
    EXPECT_EQ(i, 0.0);
    // The results may overwrite the inputs.
    double a = 1, b = 2;
    c_div(a, b, 3, 4, a, b);
    EXPECT_TRUE(c_close(a, b, 11.0 / 25, 2.0 / 25));
}

TEST(ComplexScalar, PowerByBinaryExponentiationIsExact) {
    double r, i;
    c_pow(0, 1, 2, 0, r, i);
    EXPECT_EQ(r, -1.0);
    EXPECT_EQ(i, 0.0);
    c_pow(1, 1, 4, 0, r, i);  // (1+i)^4 = -4
    EXPECT_EQ(r, -4.0);
    EXPECT_EQ(i, 0.0);
    c_pow(-2, 0, 3, 0, r, i);
    EXPECT_EQ(r, -8.0);
    EXPECT_EQ(i, 0.0);
    c_pow(0, 1, 7, 0, r, i);  // i^7 = -i
    EXPECT_EQ(r, 0.0);
    EXPECT_EQ(i, -1.0);
    c_pow(3, 0, 0, 0, r, i);
    EXPECT_EQ(r, 1.0);
    EXPECT_EQ(i, 0.0);
    // A large whole exponent agrees with the logarithmic route.
    c_pow(1, 1e-3, 1000, 0, r, i);
    double lr, li, er, ei;
    c_log(1, 1e-3, lr, li);
    c_exp(1000 * lr, 1000 * li, er, ei);
    EXPECT_TRUE(c_close(r, i, er, ei, 1e-12));
}

TEST(ComplexScalar, PowerThroughTheLogarithm) {
    double r, i;
    c_pow(-8, 0, 1.0 / 3, 0, r, i);  // principal cube root
    EXPECT_TRUE(c_close(r, i, 1.0, std::sqrt(3.0)));
    c_pow(2, 0, 0.5, 0, r, i);  // a non-negative real base stays on the real power
    EXPECT_EQ(r, std::sqrt(2.0));
    EXPECT_EQ(i, 0.0);
    c_pow(0, 0, 0, 0, r, i);  // 0^0 with a real exponent is 1
    EXPECT_EQ(r, 1.0);
    c_pow(0, 0, 0, 1, r, i);  // with an imaginary exponent it is 0
    EXPECT_EQ(r, 0.0);
    EXPECT_EQ(i, 0.0);
    c_pow(0, 0, -1, 1, r, i);
    EXPECT_EQ(r, 0.0);
    EXPECT_EQ(i, 0.0);
    c_pow(kNaN, 0, 0.5, 1, r, i);
    EXPECT_TRUE(std::isnan(r));
    EXPECT_EQ(i, 0.0);
    c_pow(0, 1, 0, 1, r, i);  // i^i = exp(-pi/2)
    EXPECT_TRUE(c_close(r, i, std::exp(-kPi / 2), 0.0));
    c_pow(1, 1, -1, 0, r, i);
    EXPECT_TRUE(c_close(r, i, 0.5, -0.5));
    c_pow(0.5, 0, kInf, 0, r, i);  // an infinite exponent uses the real power
    EXPECT_EQ(r, 0.0);
    EXPECT_EQ(i, 0.0);
    EXPECT_EQ(r_pow(-3, 2), 9.0);
    EXPECT_EQ(r_pow(2, 10), 1024.0);
    EXPECT_TRUE(std::isnan(r_pow(-8, 1.0 / 3)));
}

TEST(ComplexScalar, LargerAndSmallerOfTwo) {
    EXPECT_EQ(max2(kNaN, 1), 1.0);
    EXPECT_EQ(max2(1, kNaN), 1.0);
    EXPECT_EQ(min2(kNaN, 1), 1.0);
    EXPECT_EQ(min2(1, kNaN), 1.0);
    EXPECT_TRUE(std::isnan(max2(kNaN, kNaN)));
    EXPECT_EQ(max2(-1, -2), -1.0);
    EXPECT_EQ(min2(-1, -2), -2.0);
    EXPECT_EQ(max2(-kInf, kNaN), -kInf);
    double r, i;
    c_max2(3, 4, 5, 0, r, i);  // equal moduli keep a
    EXPECT_EQ(r, 3.0);
    EXPECT_EQ(i, 4.0);
    c_max2(1, 0, 0, 2, r, i);
    EXPECT_EQ(r, 0.0);
    EXPECT_EQ(i, 2.0);
    c_max2(1, 0, kNaN, 0, r, i);  // a NaN keeps a
    EXPECT_EQ(r, 1.0);
    c_min2(3, 4, 5, 0, r, i);
    EXPECT_EQ(r, 3.0);
    c_min2(3, 4, 0, -1, r, i);
    EXPECT_EQ(r, 0.0);
    EXPECT_EQ(i, -1.0);
}

TEST(ComplexScalar, RoundHalvesAwayFromZero) {
    EXPECT_EQ(m_round(2.5), 3.0);
    EXPECT_EQ(m_round(-2.5), -3.0);
    EXPECT_EQ(m_round(0.5), 1.0);
    EXPECT_EQ(m_round(-0.5), -1.0);
    EXPECT_EQ(m_round(2.4999), 2.0);
    EXPECT_EQ(m_round(0.49999999999999994), 0.0);                // x + 0.5 would round up to 1
    EXPECT_EQ(m_round(4503599627370497.0), 4503599627370497.0);  // and here to the next even
    EXPECT_EQ(m_round(-4503599627370497.0), -4503599627370497.0);
    EXPECT_EQ(m_round(kInf), kInf);
    EXPECT_TRUE(std::isnan(m_round(kNaN)));
    double r, i;
    c_round(1.5, -2.5, r, i);
    EXPECT_EQ(r, 2.0);
    EXPECT_EQ(i, -3.0);
    EXPECT_EQ(m_fix(-2.7), -2.0);
    EXPECT_EQ(m_sign(-3), -1.0);
    EXPECT_EQ(m_sign(0), 0.0);
    EXPECT_TRUE(std::isnan(m_sign(kNaN)));
    c_sign(3, 4, r, i);
    EXPECT_TRUE(c_close(r, i, 0.6, 0.8));
    c_sign(0, 0, r, i);
    EXPECT_EQ(r, 0.0);
    EXPECT_EQ(i, 0.0);
}

TEST(ComplexScalar, RemAndModSignsAndNaN) {
    EXPECT_EQ(m_rem(-7, 3), -1.0);
    EXPECT_EQ(m_mod(-7, 3), 2.0);
    EXPECT_EQ(m_rem(7, -3), 1.0);
    EXPECT_EQ(m_mod(7, -3), -2.0);
    EXPECT_EQ(m_rem(5.5, 2), 1.5);
    EXPECT_EQ(m_mod(-5.5, 2), 0.5);
    EXPECT_EQ(m_rem(6, 3), 0.0);
    EXPECT_EQ(m_mod(-6, 3), 0.0);
    EXPECT_TRUE(std::isnan(m_rem(5, 0)));
    EXPECT_TRUE(std::isnan(m_mod(5, 0)));
    EXPECT_TRUE(std::isnan(m_rem(kInf, 2)));
    EXPECT_TRUE(std::isnan(m_mod(2, kInf)));
    EXPECT_TRUE(std::isnan(m_mod(kNaN, 2)));
}

TEST(ComplexScalar, RemAndModAbsorbRoundingNoiseForPositiveQuotients) {
    // 0.3 / 0.1 is 2.9999999999999996: within eps of 3, so the remainder is exactly 0.
    EXPECT_EQ(m_rem(0.3, 0.1), 0.0);
    EXPECT_EQ(m_mod(0.3, 0.1), 0.0);
    EXPECT_EQ(m_rem(0.7, 0.1), 0.0);
    EXPECT_EQ(m_mod(-0.3, -0.1), 0.0);
    EXPECT_EQ(m_rem(1.0, 0.2), 0.0);
    // A quotient near a whole number but beyond the noise is not absorbed.
    EXPECT_NE(m_rem(3.0000001, 1), 0.0);
    // A negative quotient is never absorbed.
    EXPECT_NE(m_rem(-0.3, 0.1), 0.0);
    EXPECT_NEAR(m_rem(-0.3, 0.1), -0.1, 1e-15);
    EXPECT_NE(m_mod(-0.3, 0.1), 0.0);
    EXPECT_NEAR(m_mod(-0.3, 0.1), 0.0, 1e-15);
}

TEST(ComplexScalar, SincAndPow2) {
    EXPECT_EQ(m_sinc(0), 1.0);
    EXPECT_EQ(m_sinc(1), 0.0);
    EXPECT_EQ(m_sinc(-3), 0.0);
    EXPECT_TRUE(rel_close(m_sinc(0.5), 2 / kPi, 1e-15));
    EXPECT_TRUE(rel_close(m_sinc(1e6 + 0.5), 1 / (kPi * (1e6 + 0.5)), 1e-14));
    EXPECT_EQ(m_pow2(3, 2), 12.0);
    EXPECT_EQ(m_pow2(1, -1074), std::numeric_limits<double>::denorm_min());
    EXPECT_EQ(m_pow2(10), 1024.0);
    EXPECT_TRUE(rel_close(m_pow2(0.5), std::sqrt(2.0), 1e-15));
    double r, i;
    c_pow2(1, kPi / std::log(2.0), r, i);  // 2^(1 + i pi/ln2) = -2
    EXPECT_TRUE(c_close(r, i, -2, 0));
}

TEST(ComplexScalar, ExponentialAndTrigonometricValues) {
    double r, i;
    c_exp(0, kPi, r, i);
    EXPECT_TRUE(c_close(r, i, -1, 0, 1e-15));
    c_exp(kInf, 0, r, i);  // no Inf * 0 for a real argument
    EXPECT_EQ(r, kInf);
    EXPECT_EQ(i, 0.0);
    c_sin(1, 1, r, i);
    EXPECT_TRUE(c_close(r, i, 1.2984575814159773, 0.63496391478473611));
    c_tan(1, 2, r, i);
    EXPECT_TRUE(c_close(r, i, 0.03381282607989669, 1.0147936161466336));
    c_tan(0.3, 400, r, i);  // far from the real axis tan tends to i, without overflow
    EXPECT_TRUE(c_close(r, i, 0, 1));
    c_tanh(-400, 0.3, r, i);
    EXPECT_TRUE(c_close(r, i, -1, 0));
    c_cot(0, 0, r, i);
    EXPECT_EQ(r, kInf);
    // sec of a value where cos overflows the squares of a plain division
    c_sec(0.5, 400, r, i);
    EXPECT_TRUE(std::isfinite(r) && std::isfinite(i));
    EXPECT_GT(std::hypot(r, i), 0.0);
}

// Each function undoes its inverse, including the reciprocal ones: a fault in a formula or in the
// choice of branch shows here.
TEST(ComplexScalar, InversesRoundTrip) {
    typedef void (*fn)(double, double, double&, double&);
    struct Pair {
        fn f, inv;
        const char* name;
    };
    const Pair pairs[] = {{c_sin, c_asin, "asin"},    {c_cos, c_acos, "acos"},    {c_tan, c_atan, "atan"},
                          {c_sinh, c_asinh, "asinh"}, {c_cosh, c_acosh, "acosh"}, {c_tanh, c_atanh, "atanh"},
                          {c_sec, c_asec, "asec"},    {c_csc, c_acsc, "acsc"},    {c_cot, c_acot, "acot"},
                          {c_sech, c_asech, "asech"}, {c_csch, c_acsch, "acsch"}, {c_coth, c_acoth, "acoth"}};
    const double pts[][2] = {{0.3, 0.2}, {-0.7, 1.3}, {2.5, -0.4}, {-3, -2}, {0.1, -5}, {40, 0.5}};
    for (const Pair& p : pairs) {
        for (const auto& z : pts) {
            double wr, wi, r, i;
            p.inv(z[0], z[1], wr, wi);
            p.f(wr, wi, r, i);
            EXPECT_TRUE(c_close(r, i, z[0], z[1], 1e-12)) << p.name << "(" << z[0] << ", " << z[1] << ")";
        }
    }
}

TEST(ComplexScalar, InverseValuesAndCutsOfRealArguments) {
    double r, i;
    c_asin(0.5, 0.25, r, i);
    EXPECT_TRUE(c_close(r, i, 0.50160885327550076, 0.28139605624529277));
    c_acos(-0.3, 2, r, i);
    EXPECT_TRUE(c_close(r, i, 1.7043984673384937, -1.4516490266745097));
    c_atan(0.4, -1.5, r, i);
    EXPECT_TRUE(c_close(r, i, 1.312753486776321, -0.68736434755409055));
    c_asinh(-1, 0.5, r, i);
    EXPECT_TRUE(c_close(r, i, -0.92613303135018242, 0.34943906285721329));
    c_acosh(0.2, -0.7, r, i);
    EXPECT_TRUE(c_close(r, i, 0.66043378437039225, -1.4069492992902854));
    c_atanh(0.5, 0.5, r, i);
    EXPECT_TRUE(c_close(r, i, 0.40235947810852509, 0.55357435889704525));
    c_asin(1e-10, 1e-10, r, i);  // no loss of digits near 0
    EXPECT_TRUE(rel_close(r, 1e-10, 1e-14));
    EXPECT_TRUE(rel_close(i, 1e-10, 1e-14));

    // Real arguments outside the real domain, on the side the logarithmic identities give.
    const double acosh2 = 1.3169578969248167;
    c_asin(2, 0, r, i);
    EXPECT_TRUE(c_close(r, i, kPi / 2, -acosh2));
    c_asin(-2, 0, r, i);
    EXPECT_TRUE(c_close(r, i, -kPi / 2, acosh2));
    c_acos(2, 0, r, i);
    EXPECT_TRUE(c_close(r, i, 0, acosh2));
    c_acos(-2, 0, r, i);
    EXPECT_TRUE(c_close(r, i, kPi, -acosh2));
    c_acosh(0.5, 0, r, i);
    EXPECT_TRUE(c_close(r, i, 0, 1.0471975511965977));
    c_acosh(-2, 0, r, i);
    EXPECT_TRUE(c_close(r, i, acosh2, kPi));
    c_atanh(2, 0, r, i);
    EXPECT_TRUE(c_close(r, i, 0.54930614433405485, kPi / 2));
    c_atanh(-2, 0, r, i);
    EXPECT_TRUE(c_close(r, i, -0.54930614433405485, kPi / 2));
    c_asinh(0, 2, r, i);
    EXPECT_TRUE(c_close(r, i, acosh2, kPi / 2));
    c_asinh(0, -2, r, i);
    EXPECT_TRUE(c_close(r, i, -acosh2, -kPi / 2));
    c_asec(0, 0, r, i);  // acos(Inf)
    EXPECT_EQ(r, 0.0);
    EXPECT_EQ(i, kInf);
    c_acoth(0, 0, r, i);
    EXPECT_EQ(r, 0.0);
    EXPECT_TRUE(rel_close(i, kPi / 2, 1e-15));
    c_asec(0.5, 0, r, i);
    EXPECT_TRUE(c_close(r, i, 0, acosh2));
    // Inside the domain a real argument keeps a zero imaginary part.
    c_asin(0.5, 0, r, i);
    EXPECT_EQ(r, std::asin(0.5));
    EXPECT_EQ(i, 0.0);
}
