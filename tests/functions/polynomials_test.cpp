// Polynomials by identities: roots and poly invert each other, fits of exact data are exact,
// Cayley-Hamilton, products and quotients undo each other, partial fractions sum back.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <vector>

#include "arklib.h"
#include "tests/test_support.h"

using ak_test::row;

namespace {

std::vector<double> values(const Mm& m) { return std::vector<double>(m.addr(), m.addr() + m.size()); }

void expect_near(const std::vector<double>& got, const std::vector<double>& want, double tol) {
    ASSERT_EQ(got.size(), want.size());
    for (std::size_t k = 0; k < got.size(); ++k) EXPECT_NEAR(got[k], want[k], tol) << k;
}

TEST(Polynomials, RootsAndPolyInvertEachOther) {
    std::vector<double> r = values(roots(row({1, -6, 11, -6})));
    std::sort(r.begin(), r.end());
    expect_near(r, {1, 2, 3}, 1e-12);
    expect_near(values(poly(row({1, 2, 3}))), {1, -6, 11, -6}, 1e-12);
    // Leading zeros are dropped, trailing zeros are roots at zero; roots come as a column.
    Mm z = roots(row({0, 1, -3, 2, 0}));
    EXPECT_EQ(z.dims[1], 1);
    std::vector<double> zr = values(z);
    std::sort(zr.begin(), zr.end());
    expect_near(zr, {0, 1, 2}, 1e-12);
    // x^2 + 1: a conjugate pair, whose polynomial comes back real.
    Mm c = roots(row({1, 0, 1}));
    ASSERT_NE(c.pi, nullptr);
    EXPECT_NEAR(std::fabs(c.addi()[0]), 1.0, 1e-15);
    Mm back = poly(c);
    EXPECT_EQ(back.pi, nullptr);
    expect_near(values(back), {1, 0, 1}, 1e-15);
    // The characteristic polynomial, and Cayley-Hamilton: p(A) = 0.
    Mm A(0, 0, 0, 2, 2, ak_double);
    const double a[4] = {1, 3, 2, 4};
    std::copy(a, a + 4, A.addr());
    expect_near(values(poly(A)), {1, -5, -2}, 1e-12);
    expect_near(values(polyvalm(poly(A), A)), {0, 0, 0, 0}, 1e-12);
    // Wilkinson's polynomial of degree 10 keeps its roots to a few digits.
    Mm w = poly(row({1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
    std::vector<double> wr = values(roots(w));
    std::sort(wr.begin(), wr.end());
    for (int k = 0; k < 10; ++k) EXPECT_NEAR(wr[k], k + 1, 1e-6);
}

TEST(Polynomials, FitsOfExactDataAreExact) {
    Mm x = row({-2, -1, 0, 0.5, 1, 2, 3}), y(0, 0, 0, 1, 7, ak_double);
    for (int k = 0; k < 7; ++k) {
        const double v = x.addr()[k];
        y.addr()[k] = 0.5 * v * v * v - 2 * v + 1;
    }
    Mm S;
    Mm p = polyfit(x, y, Mm(3.0), i_o, S);
    expect_near(values(p), {0.5, 0, -2, 1}, 1e-12);
    expect_near(values(polyval(p, x)), values(y), 1e-12);
    EXPECT_EQ(scalar(getfield(S, TM("df"))), 3.0);
    EXPECT_NEAR(scalar(getfield(S, TM("normr"))), 0.0, 1e-12);
    Mm delta;
    polyval(p, x, S, i_o, delta);
    for (double d : values(delta)) EXPECT_NEAR(d, 0.0, 1e-10);
    // Centred and scaled: the fit in (x - mu(1)) / mu(2) gives the same values.
    Mm S2, mu;
    Mm q = polyfit(x, y, Mm(3.0), i_o, S2, mu);
    EXPECT_NEAR(mu.addr()[0], 3.5 / 7, 1e-15);
    expect_near(values(polyval(q, x, S2, mu)), values(y), 1e-12);
    // A line through noisy points: the residual norm is the least one (perpendicular to the fit).
    Mm ly = row({0.1, 0.9, 2.2, 2.8, 4.1, 5.0, 5.9});
    Mm line = polyfit(x, ly, Mm(1.0));
    Mm res = ly - polyval(line, x);
    double s0 = 0, s1 = 0;
    for (int k = 0; k < 7; ++k) {
        s0 += res.addr()[k];
        s1 += res.addr()[k] * x.addr()[k];
    }
    EXPECT_NEAR(s0, 0, 1e-12);
    EXPECT_NEAR(s1, 0, 1e-12);
    EXPECT_ERROR(polyfit(x, row({1, 2}), Mm(1.0)), "polyfit: x and y must have the same number of elements");
}

TEST(Polynomials, ProductsQuotientsAndCalculus) {
    expect_near(values(conv(row({1, 2}), row({1, 3}))), {1, 5, 6}, 0);
    EXPECT_EQ(conv(transpose(row({1, 2})), row({1, 3})).dims[1], 1);
    expect_near(values(conv(row({1, 2, 3}), row({1, 1, 1}), TM("same"))), {3, 6, 5}, 0);
    Mm r;
    Mm q = deconv(row({1, 5, 6, 1}), row({1, 2}), i_o, r);
    expect_near(values(q), {1, 3, 0}, 1e-15);
    expect_near(values(r), {0, 0, 0, 1}, 1e-15);
    expect_near(values(polyder(row({1, 2, 3}))), {2, 2}, 0);
    expect_near(values(polyder(row({1, 1}), row({1, -1}))), {2, 0}, 0);  // d/dx (x^2 - 1)
    Mm d;
    Mm n = polyder(row({1}), row({1, 0}), i_o, d);  // d/dx (1/x) = -1/x^2
    expect_near(values(n), {-1}, 0);
    expect_near(values(d), {1, 0, 0}, 0);
    expect_near(values(polyint(row({3, 2, 1}))), {1, 1, 1, 0}, 0);
    expect_near(values(polyint(row({2}), Mm(5.0))), {2, 5}, 0);
    EXPECT_ERROR(deconv(row({1, 2}), row({0, 1})), "deconv: the first coefficient of a must not be zero");
}

TEST(Polynomials, PartialFractionsSumBackToTheFunction) {
    Mm p, k;
    // 1 / ((s + 1)(s + 2)) = 1/(s + 1) - 1/(s + 2)
    Mm r = residue(row({1}), row({1, 3, 2}), i_o, p, k);
    ASSERT_EQ(r.size(), 2);
    EXPECT_EQ(k.size(), 0);
    for (int j = 0; j < 2; ++j) EXPECT_NEAR(r.addr()[j], p.addr()[j] == -1 ? 1.0 : -1.0, 1e-12);
    // A double pole: 1/(s + 1)^2 has residues 0 and 1 for the first and second powers.
    r = residue(row({1}), row({1, 2, 1}), i_o, p, k);
    expect_near(values(r), {0, 1}, 1e-9);
    expect_near(values(p), {-1, -1}, 1e-9);
    // A direct term: (s^2 + 1)/(s + 1) = s - 1 + 2/(s + 1).
    r = residue(row({1, 0, 1}), row({1, 1}), i_o, p, k);
    expect_near(values(k), {1, -1}, 1e-15);
    expect_near(values(r), {2}, 1e-12);
    // Complex poles of 1/(s^2 + 1): the expansion evaluates back to the function.
    r = residue(row({1}), row({1, 0, 1}), i_o, p, k);
    ASSERT_EQ(r.size(), 2);
    const std::complex<double> s(0.3, 0.7);
    std::complex<double> sum = 0;
    for (int j = 0; j < 2; ++j)
        sum += std::complex<double>(r.addr()[j], r.pi ? r.addi()[j] : 0) / (s - std::complex<double>(p.addr()[j], p.pi ? p.addi()[j] : 0));
    EXPECT_NEAR(std::abs(sum - 1.0 / (s * s + 1.0)), 0, 1e-12);
}

}  // namespace
