// Interpolation by what each method must reproduce exactly: lines for 'linear', cubics for the
// not-a-knot spline, monotone data for pchip, bilinear surfaces for interp2.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "arklib.h"
#include "tests/test_support.h"

using ak_test::row;

namespace {

std::vector<double> values(const Mm& m) { return std::vector<double>(m.addr(), m.addr() + m.size()); }
double cubic(double x) { return 2 * x * x * x - x * x + 3 * x - 5; }

TEST(Interp1, LinearAndStepMethods) {
    Mm x = row({1, 2, 4, 8}), y = row({10, 20, 0, 40});
    Mm q = row({1, 1.5, 3, 8, 9, 0.5});
    std::vector<double> r = values(interp1(x, y, q));
    EXPECT_EQ(r[0], 10.0);
    EXPECT_EQ(r[1], 15.0);
    EXPECT_EQ(r[2], 10.0);
    EXPECT_EQ(r[3], 40.0);
    EXPECT_TRUE(std::isnan(r[4]) && std::isnan(r[5]));
    EXPECT_EQ(values(interp1(x, y, row({9}), TM("linear"), TM("extrap")))[0], 50.0);
    EXPECT_EQ(values(interp1(x, y, row({0}), TM("linear"), Mm(-1.0)))[0], -1.0);
    EXPECT_EQ(values(interp1(x, y, row({2.9, 3.1}), TM("nearest"))), (std::vector<double>{20, 0}));
    EXPECT_EQ(values(interp1(x, y, row({2, 3.9}), TM("previous"))), (std::vector<double>{20, 20}));
    EXPECT_EQ(values(interp1(x, y, row({2, 2.1}), TM("next"))), (std::vector<double>{20, 0}));
    // x = 1:n when left out; decreasing points are turned round.
    EXPECT_EQ(values(interp1(row({5, 7, 9}), row({2.5})))[0], 8.0);
    EXPECT_EQ(values(interp1(row({3, 2, 1}), row({30, 20, 10}), row({1.5})))[0], 15.0);
    // A matrix y interpolates each column; the result has a row per query.
    Mm Y(0, 0, 0, 2, 2, ak_double);
    const double cols[4] = {0, 10, 100, 200};
    std::copy(cols, cols + 4, Y.addr());
    Mm r2 = interp1(row({0, 1}), Y, row({0.5, 0.25}));
    ASSERT_EQ(r2.dims[0], 2);
    EXPECT_EQ(r2.addr()[0], 5.0);
    EXPECT_EQ(r2.addr()[3], 125.0);
    // Unsorted queries give the same as sorted ones.
    EXPECT_EQ(values(interp1(x, y, row({3, 1.5}))), (std::vector<double>{10, 15}));
    EXPECT_ERROR(interp1(row({1, 1, 2}), row({1, 2, 3}), row({1})), "interp1: sample points must be distinct and sorted");
    EXPECT_ERROR(interp1(x, y, q, TM("quintic")), "interp1: unknown method 'quintic'");
}

TEST(Splines, NotAKnotReproducesCubicsAndClampedUsesSlopes) {
    Mm x = row({-1, 0, 0.5, 2, 3, 4.5}), y(0, 0, 0, 1, 6, ak_double);
    for (int k = 0; k < 6; ++k) y.addr()[k] = cubic(x.addr()[k]);
    Mm q = row({-0.5, 0.25, 1, 2.7, 4.4, 5.0});
    std::vector<double> s = values(spline(x, y, q));
    for (int k = 0; k < 6; ++k) EXPECT_NEAR(s[k], cubic(q.addr()[k]), 1e-10) << k;
    std::vector<double> si = values(interp1(x, y, q, TM("spline")));
    for (int k = 0; k < 6; ++k) EXPECT_NEAR(si[k], s[k], 1e-12);
    // Clamped: with the true end slopes 6x^2 - 2x + 3, again the cubic itself.
    Mm yc(0, 0, 0, 1, 8, ak_double);
    yc.addr()[0] = 6 + 2 + 3;
    for (int k = 0; k < 6; ++k) yc.addr()[k + 1] = y.addr()[k];
    yc.addr()[7] = 6 * 20.25 - 9 + 3;
    std::vector<double> c = values(spline(x, yc, q));
    for (int k = 0; k < 5; ++k) EXPECT_NEAR(c[k], cubic(q.addr()[k]), 1e-10) << k;
    // Three points: the parabola; the pp form evaluates the same through ppval.
    Mm pp = spline(row({0, 1, 3}), row({0, 1, 9}));
    EXPECT_NEAR(scalar(ppval(pp, Mm(2.0))), 4.0, 1e-12);
    Mm coefs, pieces, order, dim;
    Mm breaks = unmkpp(pp, i_o, coefs, pieces, order, dim);
    EXPECT_EQ(scalar(pieces), 2.0);
    EXPECT_EQ(scalar(order), 4.0);
    EXPECT_NEAR(scalar(ppval(mkpp(breaks, coefs), Mm(2.5))), 6.25, 1e-12);
}

TEST(Splines, PchipKeepsMonotoneDataMonotone) {
    Mm x = row({0, 1, 2, 3, 4, 5}), y = row({0, 0.1, 0.2, 5, 5.1, 9});
    double prev = -1;
    for (int k = 0; k <= 500; ++k) {
        const double v = scalar(pchip(x, y, Mm(k / 100.0)));
        EXPECT_GE(v, prev - 1e-12) << k;
        EXPECT_GE(v, 0.0);
        EXPECT_LE(v, 9.0);
        prev = v;
    }
    // At the samples it interpolates; a flat stretch stays flat.
    EXPECT_EQ(values(pchip(x, y, x)), values(y));
    EXPECT_EQ(scalar(pchip(row({0, 1, 2, 3}), row({1, 1, 1, 4}), Mm(0.5))), 1.0);
}

TEST(Interp2, BilinearSurfacesComeBackExactly) {
    Mm xs = row({0, 1, 3}), ys = row({0, 2});
    Mm z(0, 0, 0, 2, 3, ak_double);  // z = 1 + 2x + 3y + xy
    for (int j = 0; j < 2; ++j)
        for (int i = 0; i < 3; ++i) {
            const double x = xs.addr()[i], y = ys.addr()[j];
            z.addr()[j + 2 * i] = 1 + 2 * x + 3 * y + x * y;
        }
    Mm qx = row({0.5, 2, 3, 4}), qy = row({1, 0.5, 2, 1});
    std::vector<double> r = values(interp2(xs, ys, z, qx, qy));
    for (int k = 0; k < 3; ++k) {
        const double x = qx.addr()[k], y = qy.addr()[k];
        EXPECT_NEAR(r[k], 1 + 2 * x + 3 * y + x * y, 1e-12);
    }
    EXPECT_TRUE(std::isnan(r[3]));
    EXPECT_EQ(scalar(interp2(z, Mm(2.0), Mm(1.0))), z.addr()[2]);  // grid indices when x and y are left out
}

}  // namespace
