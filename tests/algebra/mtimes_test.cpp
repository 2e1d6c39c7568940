// Matrix products against a plain triple loop, transposes and the matrix power.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "arklib.h"
#include "tests/test_support.h"

namespace {

// An r x c matrix of random values, complex when asked.
Mm random_matrix(int r, int c, bool complex, unsigned seed) {
    std::mt19937 gen(seed);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    Mm m(complex, 0, 0, r, c, ak_double);
    for (int k = 0; k < m.nnz; ++k) {
        m.addr()[k] = u(gen);
        if (complex) m.addi()[k] = u(gen);
    }
    return m;
}

// a * b against the definition, in long double.
void expect_product(const Mm& a, const Mm& b) {
    Mm c = a * b;
    int m = a.dims[0], n = b.dims[1], inner = a.dims[1];
    ASSERT_EQ(m, c.dims[0]);
    ASSERT_EQ(n, c.dims[1]);
    ASSERT_EQ(a.pi || b.pi, c.pi != nullptr);
    double tol = 1e-14 * (inner + 1);
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < m; ++i) {
            long double sr = 0, si = 0;
            for (int p = 0; p < inner; ++p) {
                long double ar = a.addr()[p * m + i], ai = a.pi ? a.addi()[p * m + i] : 0.0;
                long double br = b.addr()[j * inner + p], bi = b.pi ? b.addi()[j * inner + p] : 0.0;
                sr += ar * br - ai * bi;
                si += ar * bi + ai * br;
            }
            EXPECT_NEAR(static_cast<double>(sr), c.addr()[j * m + i], tol) << "(" << i << ", " << j << ")";
            if (c.pi) {
                EXPECT_NEAR(static_cast<double>(si), c.addi()[j * m + i], tol)
                    << "(" << i << ", " << j << ")";
            }
        }
}

}  // namespace

TEST(Mtimes, RealAndComplexAgainstTheDefinition) {
    struct shape {
        int m, k, n;
    };
    // Square, tall, wide, vectors on either side, an outer product.
    for (shape s : {shape{4, 4, 4}, shape{37, 5, 3}, shape{2, 9, 41}, shape{1, 7, 6}, shape{6, 7, 1},
                    shape{5, 1, 4}, shape{64, 65, 66}}) {
        SCOPED_TRACE(testing::Message() << s.m << "x" << s.k << " times " << s.k << "x" << s.n);
        for (int mode = 0; mode < 4; ++mode) {
            Mm a = random_matrix(s.m, s.k, mode & 1, 11 + mode);
            Mm b = random_matrix(s.k, s.n, mode & 2, 29 + mode);
            expect_product(a, b);
        }
    }
}

TEST(Mtimes, ScalarsEmptyAndErrors) {
    Mm a = random_matrix(3, 2, false, 5);
    Mm s = Mm(2.0) * a;  // a scalar factor is element-wise
    for (int k = 0; k < 6; ++k) EXPECT_EQ(2.0 * a.addr()[k], s.addr()[k]);
    Mm e;
    EXPECT_EQ(0, (e * e).size());
    Mm a_named(a, "a");
    EXPECT_ERROR(a_named * a, "mtimes: incompatible dimensions of: a, (temporary)");
    EXPECT_ERROR(e * a, "mtimes: incompatible dimensions of: (temporary), (temporary)");
    int d3[3] = {2, 2, 2};
    Mm cube(0, 0, 0, 3, d3, ak_double);
    EXPECT_ERROR(cube * cube, "mtimes: 2-d matrix expected, but matrix (temporary) has 3 dimensions");
    EXPECT_ERROR(Mm(0, 0, 0, 2, 2, ak_mm) * a, "Operation can not be performed on non-numerical datatypes");
    // A sparse product of two sparse matrices is sparse; with a full factor it is full.
    Mm i2(0, 0, 0, 2, 2, ak_double);
    i2.addr()[0] = 1, i2.addr()[1] = 0, i2.addr()[2] = 0, i2.addr()[3] = 3;
    Mm sp = sparse(i2) * sparse(i2);
    EXPECT_TRUE(sp.flags.sparse);
    EXPECT_FALSE((sparse(i2) * i2).flags.sparse);
    EXPECT_EQ(9.0, full(sp).addr()[3]);
}

TEST(Transpose, RealComplexBytesCellsAndSparse) {
    Mm a = random_matrix(33, 70, true, 3);
    Mm t = transpose(a), h = ctranspose(a);
    ASSERT_EQ(70, t.dims[0]);
    ASSERT_EQ(33, t.dims[1]);
    for (int i = 0; i < 33; ++i)
        for (int j = 0; j < 70; ++j) {
            EXPECT_EQ(a.addr()[j * 33 + i], t.addr()[i * 70 + j]);
            EXPECT_EQ(a.addi()[j * 33 + i], t.addi()[i * 70 + j]);
            EXPECT_EQ(-a.addi()[j * 33 + i], h.addi()[i * 70 + j]);
        }
    Mm st = transpose(TM("abc"));
    EXPECT_EQ(3, st.dims[0]);
    EXPECT_EQ(1, st.flags.str);
    Mm c(0, 0, 0, 1, 2, ak_mm);
    c.mr(2) = Mm(7.0);
    Mm ct = transpose(c);
    EXPECT_EQ(2, ct.dims[0]);
    EXPECT_EQ(7.0, ct.mr(2, 1).r());
    Mm m(0, 0, 0, 2, 3, ak_double);
    for (int k = 0; k < 6; ++k) m.addr()[k] = (k % 2) ? 0.0 : k + 1;  // 1, 0, 3, 0, 5, 0
    Mm sparse_t = transpose(sparse(m));
    EXPECT_TRUE(sparse_t.flags.sparse);
    EXPECT_EQ(3, sparse_t.dims[0]);
    Mm back = full(sparse_t), dense_t = transpose(m);
    EXPECT_TRUE(std::equal(back.addr(), back.addr() + 6, dense_t.addr()));
    int d3[3] = {2, 2, 2};
    EXPECT_ERROR(transpose(Mm(0, 0, 0, 3, d3, ak_double)),
                 "transpose: 2-d matrix expected, but matrix (temporary) has 3 dimensions");
}

TEST(Mpower, RepeatedSquaring) {
    Mm a = random_matrix(5, 5, false, 8);
    Mm by_power = mpower(a, Mm(7.0));
    Mm by_product = a * a * a * a * a * a * a;
    for (int k = 0; k < 25; ++k) EXPECT_NEAR(by_product.addr()[k], by_power.addr()[k], 1e-13);
    Mm id = mpower(a, Mm(0.0));
    for (int k = 0; k < 25; ++k) EXPECT_EQ(k % 6 == 0 ? 1.0 : 0.0, id.addr()[k]);
    Mm sc = mpower(Mm(-8.0), Mm(2.0));  // scalars: the element power
    EXPECT_EQ(64.0, sc.r());
    EXPECT_ERROR(mpower(random_matrix(2, 3, false, 1), Mm(2.0)),
                 "mpower: square matrix expected, but matrix (temporary) has 2 rows and 3 columns");
    EXPECT_ERROR(mpower(a, a), "mpower: the power of a matrix must be a scalar");
}
