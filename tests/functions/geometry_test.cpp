// Triangulations by the empty-circle property, hulls and polygons by hand-checkable shapes, and
// interpolation by functions the method must reproduce exactly.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "arklib.h"
#include "tests/test_support.h"

using ak_test::row;

namespace {

Mm random_row(int n, unsigned seed) {
    std::mt19937 gen(seed);
    std::uniform_real_distribution<double> u(0, 1);
    Mm m(0, 0, 0, 1, n, ak_double);
    for (int k = 0; k < n; ++k) m.addr()[k] = u(gen);
    return m;
}

TEST(Delaunay, EveryCircumcircleIsEmptyAndTheTrianglesTileTheHull) {
    const int n = 200;
    Mm x = random_row(n, 1), y = random_row(n, 2);
    Mm t = delaunay(x, y);
    const int nt = t.dims[0];
    ASSERT_EQ(t.dims[1], 3);
    // Euler: a triangulation of n points with h on the hull has 2n - h - 2 triangles.
    Mm hull = convhull(x, y);
    const int h = hull.size() - 1;
    EXPECT_EQ(nt, 2 * n - h - 2);
    double total = 0;
    for (int k = 0; k < nt; ++k) {
        int v[3];
        for (int j = 0; j < 3; ++j) v[j] = static_cast<int>(t.addr()[k + j * nt]) - 1;
        const double ax = x.addr()[v[0]], ay = y.addr()[v[0]];
        const double bx = x.addr()[v[1]] - ax, by = y.addr()[v[1]] - ay;
        const double cx = x.addr()[v[2]] - ax, cy = y.addr()[v[2]] - ay;
        const double d = 2 * (bx * cy - by * cx);
        EXPECT_GT(d, 0) << "counter-clockwise corners";
        total += d / 4;
        const double ux = (cy * (bx * bx + by * by) - by * (cx * cx + cy * cy)) / d;
        const double uy = (bx * (cx * cx + cy * cy) - cx * (bx * bx + by * by)) / d;
        const double r2 = ux * ux + uy * uy;
        for (int p = 0; p < n; ++p) {
            const double dx = x.addr()[p] - ax - ux, dy = y.addr()[p] - ay - uy;
            EXPECT_GE(dx * dx + dy * dy, r2 * (1 - 1e-9)) << "point " << p << " inside circle of triangle " << k;
        }
    }
    Mm area;
    convhull(x, y, i_o, area);
    EXPECT_NEAR(total, scalar(area), 1e-12);
    EXPECT_NEAR(scalar(polyarea(x(hull), y(hull))), scalar(area), 1e-12);
    // Tetrahedra in 3-D.
    Mm tet = delaunay(random_row(30, 3), random_row(30, 4), random_row(30, 5));
    EXPECT_EQ(tet.dims[1], 4);
    EXPECT_GT(tet.dims[0], 0);
    // Points on one line have no triangles: Qhull's reason is passed on, and nothing leaks.
    ak_test::Recorder rec(ak_test::Recorder::kErrors);
    EXPECT_EQ(delaunay(row({0, 1, 2, 3}), row({0, 1, 2, 3})).size(), 0);
    ASSERT_EQ(rec.errors.size(), 1u);
    EXPECT_EQ(rec.errors[0].rfind("delaunay: the points cannot be triangulated (QH6154", 0), 0u) << rec.errors[0];
}

TEST(Hulls, CollinearEdgePointsAreLeftOutAndFacesPointOutwards) {
    // A square with the midpoints of its sides and its centre: the hull is the four corners.
    Mm x = row({0, 1, 2, 2, 2, 1, 0, 0, 1}), y = row({0, 0, 0, 1, 2, 2, 2, 1, 1});
    Mm area;
    Mm h = convhull(x, y, i_o, area);
    ASSERT_EQ(h.size(), 5);
    const double want[5] = {1, 3, 5, 7, 1};
    for (int k = 0; k < 5; ++k) EXPECT_EQ(h.addr()[k], want[k]);
    EXPECT_NEAR(scalar(area), 4.0, 1e-14);
    // The unit cube: 12 triangles, each normal pointing away from the centre.
    Mm cx = row({0, 1, 0, 1, 0, 1, 0, 1, 0.5}), cy = row({0, 0, 1, 1, 0, 0, 1, 1, 0.5}),
       cz = row({0, 0, 0, 0, 1, 1, 1, 1, 0.5});
    Mm f = convhull(cx, cy, cz);
    ASSERT_EQ(f.dims[0], 12);
    for (int k = 0; k < 12; ++k) {
        double p[3][3];
        for (int j = 0; j < 3; ++j) {
            const int v = static_cast<int>(f.addr()[k + 12 * j]) - 1;
            p[j][0] = cx.addr()[v];
            p[j][1] = cy.addr()[v];
            p[j][2] = cz.addr()[v];
        }
        const double u[3] = {p[1][0] - p[0][0], p[1][1] - p[0][1], p[1][2] - p[0][2]};
        const double w[3] = {p[2][0] - p[0][0], p[2][1] - p[0][1], p[2][2] - p[0][2]};
        const double nrm[3] = {u[1] * w[2] - u[2] * w[1], u[2] * w[0] - u[0] * w[2], u[0] * w[1] - u[1] * w[0]};
        const double out = nrm[0] * (p[0][0] - 0.5) + nrm[1] * (p[0][1] - 0.5) + nrm[2] * (p[0][2] - 0.5);
        EXPECT_GT(out, 0) << "face " << k;
    }
    EXPECT_ERROR(convhull(row({0, 1}), row({0, 1})), "convhull: at least 3 points are needed");
}

TEST(Polygons, InsideOnAndArea) {
    Mm xv = row({0, 4, 4, 0}), yv = row({0, 0, 3, 3});
    EXPECT_EQ(scalar(polyarea(xv, yv)), 12.0);
    Mm on;
    Mm in = inpolygon(row({1, 5, 4, 2, -1}), row({1, 1, 2, 0, 3}), xv, yv, i_o, on);
    const double want_in[5] = {1, 0, 1, 1, 0}, want_on[5] = {0, 0, 1, 1, 0};
    for (int k = 0; k < 5; ++k) {
        EXPECT_EQ(in.addr()[k], want_in[k]) << k;
        EXPECT_EQ(on.addr()[k], want_on[k]) << k;
    }
    EXPECT_TRUE(in.flags.logical);
    // A concave polygon (an L): the notch is outside.
    Mm lx = row({0, 2, 2, 1, 1, 0}), ly = row({0, 0, 1, 1, 2, 2});
    EXPECT_EQ(scalar(inpolygon(Mm(1.5), Mm(1.5), lx, ly)), 0.0);
    EXPECT_EQ(scalar(inpolygon(Mm(0.5), Mm(1.5), lx, ly)), 1.0);
    EXPECT_EQ(scalar(polyarea(lx, ly)), 3.0);
}

TEST(Voronoi, EdgeMidpointsAreEquidistantFromTheirTwoNearestPoints) {
    const int n = 40;
    Mm x = random_row(n, 11), y = random_row(n, 12);
    Mm vy;
    Mm vx = voronoi(x, y, i_o, vy);
    ASSERT_EQ(vx.dims[0], 2);
    ASSERT_GT(vx.dims[1], n);
    for (int e = 0; e < vx.dims[1]; ++e) {
        const double mx = (vx.addr()[2 * e] + vx.addr()[2 * e + 1]) / 2, my = (vy.addr()[2 * e] + vy.addr()[2 * e + 1]) / 2;
        std::vector<double> d(n);
        for (int p = 0; p < n; ++p) d[p] = std::hypot(x.addr()[p] - mx, y.addr()[p] - my);
        std::sort(d.begin(), d.end());
        EXPECT_NEAR(d[0], d[1], 1e-9 * (1 + d[1])) << "edge " << e;
    }
}

TEST(Griddata, LinearReproducesPlanesAndNearestPicksDataValues) {
    const int n = 60;
    Mm x = random_row(n, 21), y = random_row(n, 22);
    Mm v(0, 0, 0, 1, n, ak_double);
    for (int k = 0; k < n; ++k) v.addr()[k] = 3 * x.addr()[k] - 2 * y.addr()[k] + 1;
    Mm qx = row({0.5, 0.3, 0.6, 5.0}), qy = row({0.5, 0.6, 0.35, 5.0});
    Mm r = griddata(x, y, v, qx, qy);
    for (int k = 0; k < 3; ++k) EXPECT_NEAR(r.addr()[k], 3 * qx.addr()[k] - 2 * qy.addr()[k] + 1, 1e-12);
    EXPECT_TRUE(std::isnan(r.addr()[3])) << "outside the hull";
    Mm nearest = griddata(x, y, v, qx, qy, TM("nearest"));
    for (int k = 0; k < 4; ++k) {
        int best = 0;
        for (int p = 1; p < n; ++p)
            if (std::hypot(x.addr()[p] - qx.addr()[k], y.addr()[p] - qy.addr()[k]) <
                std::hypot(x.addr()[best] - qx.addr()[k], y.addr()[best] - qy.addr()[k]))
                best = p;
        EXPECT_EQ(nearest.addr()[k], v.addr()[best]) << k;
    }
    EXPECT_ERROR(griddata(x, y, v, qx, qy, TM("cubic")), "griddata: method must be 'linear' or 'nearest'");
}

}  // namespace
