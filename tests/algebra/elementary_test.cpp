// Domain rules of the elementary functions: when a real input gives a complex result.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "arklib.h"
#include "arklib/elementary.h"
#include "tests/core/engine_test_support.h"
#include "tests/test_support.h"

using namespace engine_test;

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();
const double kPi = 3.141592653589793;
const double kAcosh2 = 1.3169578969248167;

Mm scalar_of(double v) { return row({v}); }

}  // namespace

TEST(ElementaryDomain, SqrtAndLogarithms) {
    Mm r = sqrt(row({4, -1}));  // one negative makes the whole result complex
    ASSERT_NE(r.pi, nullptr);
    EXPECT_VALUES(r, {2, 0});
    EXPECT_EQ(im(r), (std::vector<double>{0, 1}));
    Mm real_only = msqrt(mat(2, 2, {4, 9, 16, 0}));
    EXPECT_EQ(real_only.pi, nullptr);
    EXPECT_VALUES(real_only, {2, 4, 3, 0});
    Mm neg_zero = sqrt(scalar_of(-0.0));  // -0 is not below 0
    EXPECT_EQ(neg_zero.pi, nullptr);
    EXPECT_TRUE(std::signbit(neg_zero.addr()[0]));
    EXPECT_EQ(sqrt(row({kNaN, 4})).pi, nullptr);  // NaN is never found by the scan
    Mm from_complex = sqrt(crow({-4, 3}, {0, 4}));
    ASSERT_NE(from_complex.pi, nullptr);
    EXPECT_VALUES(from_complex, {0, 2});

    Mm l0 = log(scalar_of(0));
    EXPECT_EQ(l0.pi, nullptr);
    EXPECT_EQ(l0.addr()[0], -kInf);
    Mm lneg = log(row({-1, std::exp(1.0)}));
    ASSERT_NE(lneg.pi, nullptr);
    EXPECT_VALUES(lneg, {0, 1});
    EXPECT_EQ(im(lneg), (std::vector<double>{kPi, 0}));
    Mm l10 = log10(row({-100, 1000}));
    ASSERT_NE(l10.pi, nullptr);
    EXPECT_DOUBLE_EQ(l10.addi()[0], kPi / std::log(10.0));
    EXPECT_DOUBLE_EQ(l10.addr()[1], 3);
    EXPECT_NE(log2(scalar_of(-8)).pi, nullptr);

    Mm rl = reallog(row({-1, 1}));  // the real forms give NaN instead
    EXPECT_EQ(rl.pi, nullptr);
    EXPECT_VALUES(rl, {kNaN, 0});
    EXPECT_VALUES(realsqrt(row({-4, 9})), {kNaN, 3});
}

TEST(ElementaryDomain, PowerGoesComplexOnlyWhenTheBaseNeedsIt) {
    Mm cube_root = power(scalar_of(-8), scalar_of(1.0 / 3));
    ASSERT_NE(cube_root.pi, nullptr);
    EXPECT_NEAR(cube_root.addi()[0], std::sqrt(3.0), 1e-15);

    Mm square = power(scalar_of(-8), scalar_of(2));  // the exponent is exactly 2
    EXPECT_EQ(square.pi, nullptr);
    EXPECT_VALUES(square, {64});
    // A whole exponent other than 2 with a negative base: complex throughout, with exact values
    // and zero imaginary parts from the binary exponentiation.
    Mm cubes = power(row({-2, 3}), scalar_of(3));
    ASSERT_NE(cubes.pi, nullptr);
    EXPECT_VALUES(cubes, {-8, 27});
    EXPECT_EQ(im(cubes), (std::vector<double>{0, 0}));
    // A matrix of twos is not the scalar 2.
    Mm twos = power(row({-2, 3}), row({2, 2}));
    ASSERT_NE(twos.pi, nullptr);
    EXPECT_VALUES(twos, {4, 9});
    // An imaginary part in either operand makes the result complex.
    Mm complex_exp = power(scalar_of(2), crow({0}, {1}));
    ASSERT_NE(complex_exp.pi, nullptr);
    EXPECT_DOUBLE_EQ(complex_exp.addr()[0], std::cos(std::log(2.0)));
    // The sign of a result is taken elementwise.
    Mm mixed = power(row({-4, 4}), scalar_of(0.5));
    ASSERT_NE(mixed.pi, nullptr);
    EXPECT_NEAR(mixed.addi()[0], 2, 1e-15);
    EXPECT_EQ(mixed.addr()[1], 2.0);
    EXPECT_EQ(mixed.addi()[1], 0.0);

    ak_test::ErrorsThrow guard;
    EXPECT_ERROR(realpow(scalar_of(2)), "realpow does not accept 1 input");
    EXPECT_ERROR(dot_pow(scalar_of(2)), "power does not accept 1 input");
}

TEST(ElementaryDomain, InverseTrigonometricAndHyperbolicDomains) {
    Mm a2 = asin(scalar_of(2));
    ASSERT_NE(a2.pi, nullptr);
    EXPECT_DOUBLE_EQ(a2.addi()[0], -kAcosh2);
    Mm a1 = asin(row({1, -1, kNaN}));
    EXPECT_EQ(a1.pi, nullptr);
    EXPECT_VALUES(a1, {kPi / 2, -kPi / 2, kNaN});
    Mm c2 = acos(row({-2, 0.5}));
    ASSERT_NE(c2.pi, nullptr);
    EXPECT_DOUBLE_EQ(c2.addr()[0], kPi);
    EXPECT_DOUBLE_EQ(c2.addr()[1], std::acos(0.5));
    EXPECT_EQ(c2.addi()[1], 0.0);

    EXPECT_NE(atanh(scalar_of(2)).pi, nullptr);
    EXPECT_EQ(atanh(row({0.5, -1})).pi, nullptr);
    EXPECT_NE(asec(scalar_of(0)).pi, nullptr);  // acos(Inf)
    EXPECT_EQ(asec(row({2, -1, 1})).pi, nullptr);
    EXPECT_NE(acsc(scalar_of(0.5)).pi, nullptr);
    EXPECT_NE(acoth(scalar_of(0.5)).pi, nullptr);
    Mm h = acosh(scalar_of(0.5));
    ASSERT_NE(h.pi, nullptr);
    EXPECT_DOUBLE_EQ(h.addi()[0], kPi / 3);
    EXPECT_EQ(acosh(row({1, 2})).pi, nullptr);
    EXPECT_EQ(asech(row({0.5, 1, 0})).pi, nullptr);
    EXPECT_NE(asech(scalar_of(2)).pi, nullptr);

    // Stored values 2 and 3 are inside the real domain of acosh, but the unstored zero is not.
    Mm s = sparse(row({2, 0, 3}));
    Mm hs = full(acosh(s));
    ASSERT_NE(hs.pi, nullptr);
    EXPECT_DOUBLE_EQ(hs.addr()[0], kAcosh2);
    EXPECT_DOUBLE_EQ(hs.addi()[1], kPi / 2);
    EXPECT_EQ(full(log(s)).pi, nullptr);  // log only scans: the zero gives -Inf, which is real
}

TEST(ElementaryDomain, Log2MantissaAndExponent) {
    Mm e;
    Mm f = log2(row({8, 0, -0.75, kInf, 1}), i_o, e);
    EXPECT_EQ(f.pi, nullptr);
    EXPECT_VALUES(f, {0.5, 0, -0.75, kInf, 0.5});
    EXPECT_VALUES(e, {4, 0, 0, 0, 1});
    EXPECT_EQ(dims(e), (std::vector<int>{1, 5, 1, 1}));
}
