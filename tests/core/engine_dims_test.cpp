// Operations along a dimension: shapes on 3-D arrays, the dimension argument, running values,
// differences, median, phase unwrapping, gradient and Laplacian.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "arklib.h"
#include "tests/core/engine_test_support.h"
#include "tests/test_support.h"

using namespace engine_test;

TEST(EngineDims, ReductionsOnThreeDimensions) {
    int d[3] = {2, 3, 4};
    Mm a = counting(3, d);  // a(i, j, k) = i + 2(j-1) + 6(k-1)
    Mm s2 = sum(a, Mm(2.0));
    EXPECT_EQ((std::vector<int>{2, 1, 4, 1}), dims(s2));
    EXPECT_VALUES(s2, {9, 12, 27, 30, 45, 48, 63, 66});
    Mm s3 = sum(a, Mm(3.0));
    EXPECT_EQ((std::vector<int>{2, 3, 1, 1}), dims(s3));  // the trailing dimension goes
    EXPECT_EQ(2, s3.ndims);
    Mm s1 = sum(a);  // the first dimension above 1
    EXPECT_EQ((std::vector<int>{1, 3, 4, 1}), dims(s1));
    EXPECT_EQ(dims(a), dims(sum(a, Mm(4.0))));  // a dimension of size 1: the same shape
    Mm c3 = cumsum(a, Mm(3.0));
    EXPECT_EQ(dims(a), dims(c3));
    EXPECT_EQ(1 + 7 + 13 + 19, re(c3)[18]);
    Mm idx;
    Mm m3 = min(a, Mm(), Mm(3.0), i_o, idx);
    EXPECT_VALUES(m3, {1, 2, 3, 4, 5, 6});
    EXPECT_VALUES(idx, {1, 1, 1, 1, 1, 1});
    EXPECT_VALUES(any(a > Mm(23.0), Mm(3.0)), {0, 0, 0, 0, 0, 1});
}

TEST(EngineDims, ComplexRunningValues) {
    Mm z = crow({1, 0}, {1, 1});  // (1 + i) and i
    Mm p = prod(z);
    EXPECT_VALUES(p, {-1});
    EXPECT_EQ(std::vector<double>{1}, im(p));
    Mm s = cumsum(z);
    EXPECT_VALUES(s, {1, 1});
    EXPECT_EQ((std::vector<double>{1, 2}), im(s));
    EXPECT_EQ(nullptr, any(z).pi);
}

TEST(EngineDims, DimensionArgumentErrors) {
    Mm a(row({1, 2}), "a");
    EXPECT_ERROR(sum(a, Mm()), "sum: dim argument may not be empty");
    EXPECT_ERROR(sum(a, Mm(5.0)), "sum: dimension=5 does not exist for matrix a");
    EXPECT_ERROR(max(a, Mm(), Mm(-2.0)), "max_1: dimension=-2 does not exist for matrix a");
    EXPECT_ERROR(prod(a, Mm(1e12)), "prod: dimension=2147483647 does not exist for matrix a");
    ak_test::Recorder rec(ak_test::Recorder::kErrors);
    Mm r = cumsum(a, Mm(std::nan("")));
    EXPECT_EQ(1u, rec.errors.size());
    EXPECT_EQ(x_M.pr, r.pr);
    EXPECT_VALUES(sum(a, Mm(2.7)), {3});  // the dimension is truncated
}

TEST(EngineDims, DiffAndMedian) {
    Mm m = mat(2, 3, {1, 2, 4, 10, 20, 40});
    Mm d1 = diff(m);
    EXPECT_EQ((std::vector<int>{1, 3, 1, 1}), dims(d1));
    EXPECT_VALUES(d1, {9, 18, 36});
    EXPECT_VALUES(diff(m, Mm(1.0), Mm(2.0)), {1, 10, 2, 20});
    Mm e = diff(row({1, 2, 3}), Mm(1.0), Mm(1.0));  // along a dimension of size 1
    EXPECT_EQ(0, e.size());
    EXPECT_EQ(nullptr, e.pi);
    Mm dz = diff(crow({1, 3}, {0, 5}));
    EXPECT_VALUES(dz, {2});
    EXPECT_EQ(std::vector<double>{5}, im(dz));
    EXPECT_ERROR(diff(row({1, 2}), Mm(-1.0)), "diff: order must be a non-negative integer");

    EXPECT_VALUES(median(row({4, 1, 3, 2})), {2.5});
    EXPECT_VALUES(median(row({1, std::nan(""), 3})), {std::nan("")});
    EXPECT_VALUES(median(mat(2, 3, {1, 9, 5, 4, 2, 6}), Mm(2.0)), {5, 4});
    Mm mz = median(crow({1, 0, 3}, {0, 2, 0}));  // by modulus: 1, 2i, 3
    EXPECT_VALUES(mz, {0});
    EXPECT_EQ(std::vector<double>{2}, im(mz));
}

TEST(EngineDims, Unwrap) {
    Mm u = unwrap(row({0, 3, 6.5, 6.5 + 2 * M_PI}));
    std::vector<double> v = re(u);
    ASSERT_EQ(4u, v.size());
    EXPECT_NEAR(6.5 - 2 * M_PI, v[2], 1e-12);  // a jump of 3.5 > pi loses a period
    EXPECT_NEAR(6.5 - 2 * M_PI, v[3], 1e-12);  // a jump of a whole period vanishes
    // A wider tolerance keeps the jump of 3.5.
    EXPECT_NEAR(6.5, re(unwrap(row({0, 3, 6.5}), Mm(4.0)))[2], 1e-12);
    // The first element is taken modulo 2 pi.
    EXPECT_NEAR(1.0, re(unwrap(Mm(1.0 + 2 * M_PI)))[0], 1e-12);
    // Columns of a matrix are unwrapped on their own.
    Mm m = unwrap(mat(2, 2, {0, 0, 4, -4}));
    EXPECT_NEAR(4 - 2 * M_PI, re(m)[1], 1e-12);
    EXPECT_NEAR(-4 + 2 * M_PI, re(m)[3], 1e-12);
}

TEST(EngineDims, GradientAndLaplacian) {
    EXPECT_VALUES(gradient(row({1, 4, 9, 16}), Mm(2.0)), {1.5, 2, 3, 3.5});
    EXPECT_VALUES(gradient(row({0, 1, 4}), row({0, 1, 3})), {1, 4.0 / 3, 1.5});
    Mm f = mat(2, 3, {1, 2, 4, 3, 5, 9});
    Mm fy;
    Mm fx = gradient(f, i_o, fy);
    EXPECT_VALUES(fx, {1, 2, 1.5, 3, 2, 4});
    EXPECT_VALUES(fy, {2, 2, 3, 3, 5, 5});
    EXPECT_ERROR(gradient(row({1, 2, 3}), row({1, 2})),
                 "gradient: spacing must be a scalar or have one coordinate for each of the 3 points");

    // x^2 has second derivative 2: a quarter of it in one dimension.
    Mm u = row({0, 1, 4, 9, 16});
    EXPECT_VALUES(del2(u), {0.5, 0.5, 0.5, 0.5, 0.5});
    // x^2 + y^2 on a grid: a quarter of 4.
    Mm g(0, 0, 0, 4, 4, ak_double);
    for (int j = 0; j < 4; ++j)
        for (int i = 0; i < 4; ++i) g.addr()[j * 4 + i] = i * i + j * j;
    EXPECT_VALUES(del2(g), std::vector<double>(16, 1.0));
}
