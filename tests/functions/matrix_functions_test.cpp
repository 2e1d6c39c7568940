// Matrix functions by identities and closed forms: exp of nilpotent and rotation generators,
// expm(logm(A)) = A, sqrtm(A)^2 = A, sin^2 + cos^2 = I; Kronecker products and traces by hand.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "arklib.h"
#include "tests/test_support.h"

namespace {

Mm square(int n, std::initializer_list<double> by_cols) {
    Mm m(0, 0, 0, n, n, ak_double);
    std::copy(by_cols.begin(), by_cols.end(), m.addr());
    return m;
}

double max_diff(const Mm& a, const Mm& b) {
    double d = 0;
    for (int k = 0; k < a.size(); ++k) {
        d = std::max(d, std::fabs(a.addr()[k] - b.addr()[k]));
        if (a.pi || b.pi) d = std::max(d, std::fabs((a.pi ? a.addi()[k] : 0) - (b.pi ? b.addi()[k] : 0)));
    }
    return d;
}

// A random matrix with eigenvalues safely in the right half plane: I * 3 plus small noise.
Mm well_placed(int n, unsigned seed) {
    std::mt19937 gen(seed);
    std::uniform_real_distribution<double> u(-0.5, 0.5);
    Mm m(0, 0, 0, n, n, ak_double);
    for (int k = 0; k < n * n; ++k) m.addr()[k] = u(gen) + (k % (n + 1) == 0 ? 3.0 : 0.0);
    return m;
}

TEST(MatrixFunctions, ExponentialClosedForms) {
    Mm e = expm(square(2, {0, 0, 1, 0}));  // [0 1; 0 0] is nilpotent: I + A
    EXPECT_EQ(e.pi, nullptr);
    EXPECT_NEAR(max_diff(e, square(2, {1, 0, 1, 1})), 0, 1e-15);
    const double t = 2.5;  // the rotation generator gives the rotation
    Mm r = expm(square(2, {0, t, -t, 0}));
    EXPECT_NEAR(max_diff(r, square(2, {std::cos(t), std::sin(t), -std::sin(t), std::cos(t)})), 0, 1e-14);
    Mm big = expm(square(2, {50, 0, 0, -50}));  // large norm: scaling and squaring
    EXPECT_NEAR(big.addr()[0] / std::exp(50.0), 1, 1e-13);
    EXPECT_NEAR(big.addr()[3] / std::exp(-50.0), 1, 1e-12);
}

TEST(MatrixFunctions, LogarithmAndSquareRootInvert) {
    for (int n : {1, 3, 6}) {
        Mm a = well_placed(n, n);
        Mm l = logm(a);
        EXPECT_EQ(l.pi, nullptr) << "a real logarithm of a real matrix";
        EXPECT_LT(max_diff(expm(l), a), 1e-12 * 4) << n;
        Mm s = sqrtm(a);
        EXPECT_EQ(s.pi, nullptr);
        EXPECT_LT(max_diff(mtimes(s, s), a), 1e-12 * 4) << n;
    }
    // A negative eigenvalue has a complex square root.
    Mm neg = sqrtm(square(1, {-4}));
    ASSERT_NE(neg.pi, nullptr);
    EXPECT_NEAR(neg.addi()[0], 2.0, 1e-15);
}

TEST(MatrixFunctions, TrigonometricIdentityAndNames) {
    Mm a = well_placed(4, 9);
    Mm s = funm(a, TM("sin")), c = funm(a, TM("cos"));
    Mm id = mtimes(s, s) + mtimes(c, c);
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j) EXPECT_NEAR(id.addr()[i + 4 * j], i == j ? 1.0 : 0.0, 1e-12);
    Mm ch = funm(a, TM("cosh")), sh = funm(a, TM("sinh"));
    EXPECT_LT(max_diff(ch + sh, expm(a)), 1e-10);
    EXPECT_ERROR(funm(a, TM("tan")), "funm: unknown function 'tan'; use exp, log, sqrt, sin, cos, sinh or cosh");
    EXPECT_ERROR(expm(ak_test::row({1, 2})), "expm: square matrix expected, but matrix (temporary) has 1 rows and 2 columns");
}

TEST(MatrixFunctions, KroneckerAndTrace) {
    Mm k = kron(square(2, {1, 3, 2, 4}), ak_test::row({1, 10}));
    ASSERT_EQ(k.dims[0], 2);
    ASSERT_EQ(k.dims[1], 4);
    const double want[8] = {1, 3, 10, 30, 2, 4, 20, 40};
    for (int j = 0; j < 8; ++j) EXPECT_EQ(k.addr()[j], want[j]);
    EXPECT_EQ(scalar(trace(square(3, {1, 0, 0, 0, 5, 0, 0, 0, 9}))), 15.0);
}

}  // namespace
