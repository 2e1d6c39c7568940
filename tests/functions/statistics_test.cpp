// Statistics against sums written out here, grids by their shape rules, and the test matrices by
// the properties that define them.
#include <gtest/gtest.h>

#include <cmath>

#include "arklib.h"
#include "tests/test_support.h"

using ak_test::row;

namespace {

double at(const Mm& m, int r, int c) { return m.addr()[r + c * m.dims[0]]; }

Mm matrix(int rows, int cols, std::initializer_list<double> by_rows) {
    Mm m(0, 0, 0, rows, cols, ak_double);
    int k = 0;
    for (double v : by_rows) {
        m.addr()[(k / cols) + rows * (k % cols)] = v;
        ++k;
    }
    return m;
}

TEST(Statistics, MomentsAlongEitherDimension) {
    Mm x = matrix(2, 3, {1, 2, 3, 5, 8, 13});
    Mm m = mean(x);
    ASSERT_EQ(m.dims[0], 1);
    EXPECT_EQ(at(m, 0, 2), 8.0);
    Mm m2 = mean(x, Mm(2.0));
    EXPECT_EQ(m2.dims[0], 2);
    EXPECT_EQ(at(m2, 1, 0), 26.0 / 3);
    EXPECT_TRUE(std::isnan(scalar(mean(Mm()))));
    // var of [2 4 4 4 5 5 7 9]: mean 5, squared distances sum to 32.
    Mm v = row({2, 4, 4, 4, 5, 5, 7, 9});
    EXPECT_DOUBLE_EQ(scalar(var(v)), 32.0 / 7);
    EXPECT_DOUBLE_EQ(scalar(var(v, Mm(1.0))), 4.0);
    EXPECT_DOUBLE_EQ(scalar(stdM(v, Mm(1.0))), 2.0);
    EXPECT_EQ(scalar(var(Mm(3.0))), 0.0);
    // Complex data: the spread of |x - mean|.
    Mm z(1, 0, 0, 1, 2, ak_double);
    z.addr()[0] = 0;
    z.addi()[0] = 1;
    z.addr()[1] = 0;
    z.addi()[1] = -1;
    EXPECT_DOUBLE_EQ(scalar(var(z)), 2.0);
    Mm sd = stdM(x, Mm(), Mm(2.0));
    EXPECT_EQ(sd.dims[0], 2);
    EXPECT_DOUBLE_EQ(at(sd, 0, 0), 1.0);
    EXPECT_ERROR(var(v, Mm(2.0)), "var: normalisation must be 0 or 1");
}

TEST(Statistics, ModeCovarianceCorrelationHistogram) {
    Mm count;
    EXPECT_EQ(scalar(mode(row({3, 1, 3, 1, 2}), i_o, count)), 1.0);  // a tie goes to the smaller
    EXPECT_EQ(scalar(count), 2.0);
    Mm cols = mode(matrix(3, 2, {1, 5, 1, 6, 2, 6}));
    EXPECT_EQ(at(cols, 0, 0), 1.0);
    EXPECT_EQ(at(cols, 0, 1), 6.0);
    // Two perfectly related variables.
    Mm a = row({1, 2, 3, 4}), b = row({2, 4, 6, 8});
    Mm c = cov(a, b);
    EXPECT_DOUBLE_EQ(at(c, 0, 0), 5.0 / 3);
    EXPECT_DOUBLE_EQ(at(c, 0, 1), 10.0 / 3);
    EXPECT_DOUBLE_EQ(at(c, 1, 1), 20.0 / 3);
    Mm r = corrcoef(a, row({4, 3, 2, 1}));
    EXPECT_DOUBLE_EQ(at(r, 0, 1), -1.0);
    EXPECT_DOUBLE_EQ(scalar(cov(a)), 5.0 / 3);  // a vector is one variable
    Mm bin;
    Mm n = histc(row({0.5, 1, 1.5, 2, 3, -1}), row({0, 1, 2, 3}), i_o, bin);
    const double want[4] = {1, 2, 1, 1}, want_bin[6] = {1, 2, 2, 3, 4, 0};
    for (int k = 0; k < 4; ++k) EXPECT_EQ(n.addr()[k], want[k]);
    for (int k = 0; k < 6; ++k) EXPECT_EQ(bin.addr()[k], want_bin[k]);
    EXPECT_ERROR(histc(a, row({2, 1})), "histc: edges must be non-decreasing");
}

TEST(Statistics, CrossAndDotProducts) {
    Mm c = cross(row({1, 0, 0}), row({0, 1, 0}));
    EXPECT_EQ(c.addr()[0], 0.0);
    EXPECT_EQ(c.addr()[2], 1.0);
    Mm u = row({1, 2, 3}), v = row({4, 5, 6});
    Mm w = cross(u, v);
    EXPECT_DOUBLE_EQ(scalar(dot(w, u)), 0.0);
    EXPECT_DOUBLE_EQ(scalar(dot(u, transpose(v))), 32.0);  // orientation does not matter
    Mm z(1, 0, 0, 1, 1, ak_double);
    z.addr()[0] = 0;
    z.addi()[0] = 1;
    EXPECT_DOUBLE_EQ(scalar(real(dot(z, z))), 1.0);  // conj(i) * i
    EXPECT_ERROR(cross(row({1, 2}), row({3, 4})), "cross: a dimension of length 3 is needed");
}

TEST(Grids, LinspaceLogspaceMeshgridNdgrid) {
    Mm l = linspace(Mm(0.0), Mm(1.0), Mm(11.0));
    ASSERT_EQ(l.dims[1], 11);
    EXPECT_EQ(l.addr()[0], 0.0);
    EXPECT_EQ(l.addr()[10], 1.0);
    EXPECT_DOUBLE_EQ(l.addr()[3], 0.3);
    EXPECT_EQ(linspace(Mm(0.0), Mm(1.0)).dims[1], 100);
    EXPECT_EQ(scalar(linspace(Mm(2.0), Mm(5.0), Mm(1.0))), 5.0);
    Mm g = logspace(Mm(0.0), Mm(2.0), Mm(3.0));
    EXPECT_DOUBLE_EQ(g.addr()[1], 10.0);
    EXPECT_DOUBLE_EQ(logspace(Mm(0.0), pi, Mm(4.0)).addr()[3], std::acos(-1.0));
    Mm yy;
    Mm xx = meshgrid(row({1, 2, 3}), row({10, 20}), i_o, yy);
    ASSERT_EQ(xx.dims[0], 2);
    ASSERT_EQ(xx.dims[1], 3);
    EXPECT_EQ(at(xx, 1, 2), 3.0);
    EXPECT_EQ(at(yy, 1, 0), 20.0);
    Mm ny;
    Mm nx = ndgrid(row({1, 2, 3}), row({10, 20}), i_o, ny);
    ASSERT_EQ(nx.dims[0], 3);
    EXPECT_EQ(at(nx, 2, 1), 3.0);
    EXPECT_EQ(at(ny, 0, 1), 20.0);
    Mm y3, z3;
    Mm x3 = meshgrid(row({1, 2}), row({3, 4, 5}), row({6, 7, 8, 9}), i_o, y3, z3);
    ASSERT_EQ(x3.ndims, 3);
    EXPECT_EQ(x3.dims[2], 4);
    EXPECT_EQ(z3.addr()[x3.size() - 1], 9.0);
}

TEST(TestMatrices, MagicSquaresOfEveryKindHaveEqualSums) {
    for (int n : {1, 3, 4, 5, 6, 8, 10, 12, 14}) {
        Mm m = magic(Mm(double(n)));
        const double want = n * (n * n + 1) / 2.0;
        std::vector<bool> seen(n * n + 1, false);
        double d1 = 0, d2 = 0;
        for (int i = 0; i < n; ++i) {
            double rs = 0, cs = 0;
            for (int j = 0; j < n; ++j) {
                rs += at(m, i, j);
                cs += at(m, j, i);
                const int v = static_cast<int>(at(m, i, j));
                ASSERT_TRUE(v >= 1 && v <= n * n && !seen[v]) << n;
                seen[v] = true;
            }
            EXPECT_EQ(rs, want) << n << " row " << i;
            EXPECT_EQ(cs, want) << n << " column " << i;
            d1 += at(m, i, i);
            d2 += at(m, i, n - 1 - i);
        }
        EXPECT_EQ(d1, want) << n;
        EXPECT_EQ(d2, want) << n;
    }
    Mm m3 = magic(Mm(3.0));
    const double m3_want[9] = {8, 3, 4, 1, 5, 9, 6, 7, 2};
    for (int k = 0; k < 9; ++k) EXPECT_EQ(m3.addr()[k], m3_want[k]);
}

TEST(TestMatrices, DefiningProperties) {
    // invhilb(n) * hilb(n) is the identity; small orders are exact enough to check closely.
    for (int n : {1, 3, 5}) {
        Mm p = mtimes(invhilb(Mm(double(n))), hilb(Mm(double(n))));
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j) EXPECT_NEAR(at(p, i, j), i == j ? 1.0 : 0.0, 1e-9) << n;
    }
    Mm p = pascal(Mm(4.0));
    EXPECT_EQ(at(p, 3, 3), 20.0);
    EXPECT_EQ(at(p, 2, 1), 3.0);
    Mm w = wilkinson(Mm(7.0));
    EXPECT_EQ(at(w, 0, 0), 3.0);
    EXPECT_EQ(at(w, 3, 3), 0.0);
    EXPECT_EQ(at(w, 3, 4), 1.0);
    Mm r = rosser();
    for (int i = 0; i < 8; ++i)
        for (int j = 0; j < 8; ++j) EXPECT_EQ(at(r, i, j), at(r, j, i));
    Mm v = vander(row({2, 3}));
    EXPECT_EQ(at(v, 1, 0), 3.0);
    EXPECT_EQ(at(v, 1, 1), 1.0);
    Mm t = toeplitz(row({1, 2, 3}), row({1, 5, 6, 7}));
    EXPECT_EQ(at(t, 2, 0), 3.0);
    EXPECT_EQ(at(t, 0, 3), 7.0);
    EXPECT_EQ(at(t, 2, 3), 5.0);
    Mm h = hankel(row({1, 2, 3}));
    EXPECT_EQ(at(h, 0, 2), 3.0);
    EXPECT_EQ(at(h, 1, 2), 0.0);
    // The companion matrix of (x - 1)(x - 2) = x^2 - 3x + 2: trace 3, determinant 2.
    Mm c = compan(row({1, -3, 2}));
    EXPECT_EQ(at(c, 0, 0) + at(c, 1, 1), 3.0);
    EXPECT_EQ(at(c, 0, 0) * at(c, 1, 1) - at(c, 0, 1) * at(c, 1, 0), 2.0);
    // H H' = n I.
    Mm hd = hadamard(Mm(8.0));
    Mm hh = mtimes(hd, transpose(hd));
    for (int i = 0; i < 8; ++i)
        for (int j = 0; j < 8; ++j) EXPECT_EQ(at(hh, i, j), i == j ? 8.0 : 0.0);
    EXPECT_EQ(at(gallery(TM("minij"), Mm(4.0)), 3, 2), 3.0);
    Mm td = gallery(TM("tridiag"), Mm(3.0));
    EXPECT_EQ(at(td, 1, 1), 2.0);
    EXPECT_EQ(at(td, 1, 0), -1.0);
    EXPECT_ERROR(hadamard(Mm(6.0)), "hadamard: order must be a power of 2");
    EXPECT_ERROR(gallery(TM("nosuch"), Mm(3.0)), "gallery: unknown matrix name 'nosuch'");
}

}  // namespace
