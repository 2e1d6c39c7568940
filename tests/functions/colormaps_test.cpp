// Colormaps by their defining properties, and the colour conversions by round trips.
#include <gtest/gtest.h>

#include <random>

#include "arklib.h"
#include "tests/test_support.h"

namespace {

double at(const Mm& m, int r, int c) { return m.addr()[r + c * m.dims[0]]; }

TEST(Colormaps, ShapesEndsAndDefiningValues) {
    Mm g = gray(Mm(5.0));
    ASSERT_EQ(g.dims[0], 5);
    ASSERT_EQ(g.dims[1], 3);
    EXPECT_EQ(at(g, 2, 1), 0.5);
    EXPECT_EQ(gray().dims[0], 64);
    EXPECT_EQ(gray(Mm(0.0)).size(), 0);
    Mm h = hot(Mm(8.0));  // red rises over the first 3 rows, then green, then blue
    EXPECT_NEAR(at(h, 0, 0), 1.0 / 3, 1e-15);
    EXPECT_EQ(at(h, 2, 1), 0.0);
    EXPECT_NEAR(at(h, 3, 1), 1.0 / 3, 1e-15);
    EXPECT_EQ(at(h, 7, 2), 1.0);
    // jet of 64: dark blue at the start (9/16), dark red at the end, pure green in the middle.
    Mm j = jet(Mm(64.0));
    EXPECT_EQ(at(j, 0, 2), 0.5625);
    EXPECT_EQ(at(j, 0, 0), 0.0);
    EXPECT_EQ(at(j, 63, 0), 0.5);
    EXPECT_EQ(at(j, 31, 1), 1.0);
    EXPECT_EQ(at(j, 63, 2), 0.0);
    Mm hs = hsv(Mm(6.0));  // six hues a sixth apart: red, yellow, green, cyan, blue, magenta
    const double want[6][3] = {{1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 1, 1}, {0, 0, 1}, {1, 0, 1}};
    for (int r = 0; r < 6; ++r)
        for (int c = 0; c < 3; ++c) EXPECT_NEAR(at(hs, r, c), want[r][c], 1e-15);
    for (Mm map : {bone(), copper(), pink(), spring(), summer(), autumn(), winter(), cool(), lines(Mm(9.0))})
        for (int k = 0; k < map.size(); ++k) {
            EXPECT_GE(map.addr()[k], 0.0);
            EXPECT_LE(map.addr()[k], 1.0);
        }
    EXPECT_EQ(at(lines(Mm(9.0)), 7, 0), at(lines(Mm(9.0)), 0, 0));  // the colours repeat after 7
    EXPECT_ERROR(gray(Mm(-1.0)), "gray: number of colours must be a non-negative integer");
}

TEST(Colormaps, DefaultMapRisesEvenlyInLightness) {
    Mm m = arkmap(Mm(256.0));
    Mm lum = rgb2gray(m);
    double prev = -1, smallest = 1, largest = 0;
    for (int k = 0; k < 256; ++k) {
        const double y = at(lum, k, 0);
        EXPECT_GT(y, prev) << "row " << k;
        if (k) {
            smallest = std::min(smallest, y - prev);
            largest = std::max(largest, y - prev);
        }
        prev = y;
    }
    EXPECT_LT(at(lum, 0, 0), 0.2);
    EXPECT_GT(at(lum, 255, 0), 0.8);
    EXPECT_LT(largest, 2.5 * smallest) << "no flat or steep stretch";
}

TEST(ColourConversions, RoundTripsAndIndexedImages) {
    std::mt19937 gen(3);
    std::uniform_real_distribution<double> u(0, 1);
    Mm colours(0, 0, 0, 50, 3, ak_double);
    for (int k = 0; k < 150; ++k) colours.addr()[k] = u(gen);
    Mm back = hsv2rgb(rgb2hsv(colours));
    for (int k = 0; k < 150; ++k) EXPECT_NEAR(back.addr()[k], colours.addr()[k], 1e-14);
    Mm hsv_of_red = rgb2hsv(ak_test::row({1, 0, 0}));
    EXPECT_EQ(hsv_of_red.addr()[0], 0.0);
    EXPECT_EQ(hsv_of_red.addr()[1], 1.0);
    // An indexed image: doubles index from 1, bytes from 0; the result is rows x cols x 3.
    Mm map = gray(Mm(3.0));
    Mm x(0, 0, 0, 1, 2, ak_double);
    x.addr()[0] = 1;
    x.addr()[1] = 3;
    Mm img = ind2rgb(x, map);
    ASSERT_EQ(img.ndims, 3);
    EXPECT_EQ(img.addr()[0], 0.0);
    EXPECT_EQ(img.addr()[1 + 2 * 2], 1.0);
    Mm bx = ind2rgb(ak_test::bytes({1, 2}), map);
    EXPECT_EQ(bx.addr()[0], 0.5);
    // A byte image turns grey as bytes; white stays 255.
    int dims[3] = {1, 1, 3};
    Mm white(0, 0, 0, 3, dims, ak_uchar);
    for (int c = 0; c < 3; ++c) static_cast<unsigned char*>(white.pr)[c] = 255;
    Mm grey = rgb2gray(white);
    ASSERT_EQ(grey.flags.type, ak_uchar);
    EXPECT_EQ(static_cast<unsigned char*>(grey.pr)[0], 255);
    EXPECT_ERROR(rgb2hsv(ak_test::row({1, 2})), "rgb2hsv: a colormap (m x 3) or an image (m x n x 3) expected");
}

}  // namespace
