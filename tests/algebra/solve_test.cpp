// The matrix divisions, inverse, determinant, condition estimate, LU and Cholesky factors.
#include <cmath>
#include <vector>

#include "algebra/kernels/lapack.h"
#include "linalg_test_util.h"
#include "test_support.h"

using la_test::mat;
using la_test::maxdiff;
using la_test::random_matrix;
using la_test::scaled_residual;
using la_test::triangular;

namespace {

// The solution of a x = b by one LAPACK factorisation, for telling which path mldivide took.
Mm lapack_solve(const Mm& a, const Mm& b, bool symmetric) {
    Mm ac = la_test::mat(a.rows(), a.cols(), std::vector<double>(a.nnz));
    Mm x = la_test::mat(b.rows(), b.cols(), std::vector<double>(b.nnz));
    for (int k = 0; k < a.nnz; ++k) ac.addr()[k] = a.addr()[k];
    for (int k = 0; k < b.nnz; ++k) x.addr()[k] = b.addr()[k];
    int n = a.rows(), nrhs = b.cols(), info = 0;
    std::vector<int> ipiv(n);
    if (symmetric) {
        int lwork = n * 256;
        std::vector<double> work(lwork);
        dsytrf_("L", &n, ac.addr(), &n, ipiv.data(), work.data(), &lwork, &info, 1);
        dsytrs_("L", &n, &nrhs, ac.addr(), &n, ipiv.data(), x.addr(), &n, &info, 1);
    } else {
        dgetrf_(&n, &n, ac.addr(), &n, ipiv.data(), &info);
        dgetrs_("N", &n, &nrhs, ac.addr(), &n, ipiv.data(), x.addr(), &n, &info, 1);
    }
    return x;
}

bool bitwise_equal(const Mm& a, const Mm& b) {
    if (a.nnz != b.nnz) return false;
    for (int k = 0; k < a.nnz; ++k)
        if (a.addr()[k] != b.addr()[k]) return false;
    return true;
}

}  // namespace

TEST(Mldivide, SquareRealAndComplexSystemsAreBackwardStable) {
    for (int n : {1, 2, 7, 40}) {
        Mm a = random_matrix(n, n, n), b = random_matrix(n, 3, 100 + n);
        EXPECT_LT(scaled_residual(a, mldivide(a, b), b), 10.0 * n) << n;
        Mm ac = random_matrix(n, n, 7 * n, true), bc = random_matrix(n, 2, 9 * n, true);
        Mm x = mldivide(ac, bc);
        EXPECT_TRUE(x.pi != nullptr);
        EXPECT_LT(scaled_residual(ac, x, bc), 10.0 * n) << n;
        // A real matrix with a complex right side takes the complex path.
        EXPECT_LT(scaled_residual(a, mldivide(a, bc), bc), 10.0 * n) << n;
    }
    // Triangular systems are solved like any other square one.
    Mm u = mat(3, 3, {2, 1, 1, 0, 3, 1, 0, 0, 4});
    EXPECT_LT(maxdiff(mldivide(u, mat(3, 1, {4, 4, 4})), mat(3, 1, {1, 1, 1})), 1e-15);
}

TEST(Mldivide, SymmetryTestChoosesTheFactorisation) {
    Mm s = random_matrix(6, 6, 3);
    s = plus(s, transpose(s));
    Mm b = random_matrix(6, 2, 4);
    EXPECT_EQ(ishermitian(s), 1);
    EXPECT_TRUE(bitwise_equal(mldivide(s, b), lapack_solve(s, b, true)));
    // A difference of 1e-15 is within the absolute tolerance of 10 eps; 5e-15 is not.
    Mm near = s, far = s;
    near.deepcopy(0, s, ak_double);
    far.deepcopy(0, s, ak_double);
    near.addr()[1] += 1e-15;
    far.addr()[1] += 5e-15;
    EXPECT_EQ(ishermitian(near), 1);
    EXPECT_EQ(ishermitian(far), 0);
    EXPECT_TRUE(bitwise_equal(mldivide(near, b), lapack_solve(near, b, true)));
    EXPECT_TRUE(bitwise_equal(mldivide(far, b), lapack_solve(far, b, false)));
    // The test is absolute: large entries that differ by rounding count as unsymmetric.
    Mm big = mat(2, 2, {1e6, 1e6 + 1e-9, 1e6, 1e6});
    EXPECT_EQ(ishermitian(big), 0);
    // Hermitian complex matrices pass; a non-real diagonal does not.
    EXPECT_EQ(ishermitian(mat(2, 2, {1, 2, 2, 3}, {0, 1, -1, 0})), 1);
    EXPECT_EQ(ishermitian(mat(2, 2, {1, 2, 2, 3}, {1, 1, -1, 0})), 0);
    EXPECT_EQ(ishermitian(ak_test::bytes({1})), 0);  // not a double matrix
    ak_test::ErrorsThrow guard;
    EXPECT_ERROR(ishermitian(mat(1, 2, {1, 2})), "ishermitian: '(temporary)' matrix not square");
}

TEST(Mldivide, RectangularSystemsInTheLeastSquaresSense) {
    // Tall: the normal equations hold at the solution.
    Mm a = mat(3, 2, {1, 1, 1, 2, 1, 3}), b = mat(3, 1, {1, 2, 2});
    Mm x = mldivide(a, b);
    EXPECT_LT(maxdiff(x, mat(2, 1, {2.0 / 3.0, 0.5})), 1e-14);
    Mm at = random_matrix(9, 4, 11, true), bt = random_matrix(9, 2, 12, true);
    Mm xt = mldivide(at, bt);
    Mm normal = mtimes(ctranspose(at), minus(mtimes(at, xt), bt));
    EXPECT_LT(la_test::fro(normal), 1e-13);
    // Wide: an exact solution with n - m zeros in the columns the pivoting left out.
    Mm w = mat(2, 3, {1, 2, 3, 4, 5, 6}), bw = mat(2, 1, {1, 1});
    Mm xw = mldivide(w, bw);
    EXPECT_LT(maxdiff(mtimes(w, xw), bw), 1e-14);
    int zeros = 0;
    for (int k = 0; k < 3; ++k) zeros += xw.addr()[k] == 0.0;
    EXPECT_EQ(zeros, 1);
    EXPECT_EQ(xw.addr()[0], 0.0);  // column 3 has the largest norm and column 2 comes next
}

TEST(Mldivide, ScalarsEmptiesSingularAndMessages) {
    ak_test::Recorder rec;
    ak_test::ErrorsThrow guard;
    EXPECT_LT(maxdiff(mldivide(Mm(2.0), mat(1, 2, {2, 4})), mat(1, 2, {1, 2})), 0.0 + 1e-300);
    EXPECT_EQ(mldivide(Mm(0, 0, 0, 0, 0, ak_double), mat(2, 1, {1, 2})).size(), 0);
    EXPECT_EQ(mldivide(mat(2, 2, {1, 2, 3, 4}), Mm(0, 0, 0, 0, 0, ak_double)).size(), 0);
    // Singular: what falls out, and no warning.
    Mm x = mldivide(mat(2, 2, {1, 2, 1, 2}), mat(2, 1, {1, 3}));
    EXPECT_FALSE(std::isfinite(x.addr()[0]) && std::isfinite(x.addr()[1]));
    // A singular real inverse is what the LAPACK inverse leaves: it stops at the zero pivot and
    // leaves the LU factors.
    EXPECT_EQ(maxdiff(inv(mat(2, 2, {1, 2, 2, 4})), mat(2, 2, {2, 4, 0.5, 0})), 0.0);
    EXPECT_TRUE(rec.warnings.empty());
    EXPECT_ERROR(mldivide(mat(2, 2, {1, 2, 3, 4}), mat(3, 1, {1, 2, 3})),
                 "mldivide: a,b does not have the same number of rows");
    EXPECT_ERROR(mldivide(Mm(1.0)), "mldivide does not accept 1 input");
    EXPECT_ERROR(inv(mat(2, 3, {1, 2, 3, 4, 5, 6})),
                 "inv: square matrix expected, but matrix (temporary) has 2 rows and 3 columns");
}

TEST(Mrdivide, RightDivisionByAMatrix) {
    Mm b = random_matrix(4, 4, 21), a = random_matrix(3, 4, 22);
    Mm x = a / b;
    EXPECT_LT(maxdiff(mtimes(x, b), a), 1e-12);
    Mm bc = random_matrix(4, 4, 23, true);
    EXPECT_LT(maxdiff(mtimes(mrdivide(a, bc), bc), a), 1e-12);
    EXPECT_LT(maxdiff(mat(1, 2, {2, 4}) / Mm(2.0), mat(1, 2, {1, 2})), 1e-300);
    // A row divided by a row: least squares for the scalar x with x * b = a.
    EXPECT_NEAR((mat(1, 2, {1, 2}) / mat(1, 2, {1, 2})).r(), 1.0, 1e-15);
}

TEST(Mldivide, SparseSystems) {
    Mm a = la_test::laplacian_2d(6);  // order 36
    Mm b = random_matrix(36, 2, 31);
    Mm x = mldivide(a, b);
    EXPECT_FALSE(x.flags.sparse);
    EXPECT_LT(maxdiff(x, mldivide(full(a), b)), 1e-13);
    // A sparse right side gives a sparse result.
    Mm xs = mldivide(a, sparse(b));
    EXPECT_TRUE(xs.flags.sparse);
    EXPECT_LT(maxdiff(xs, x), 1e-13);
    // Complex sparse systems go through the real embedding.
    Mm ac = plus(a, times(Mm(0.0, M_types{0, 0, 0, 0, 0, 0, ak_double}), a));
    Mm bc = random_matrix(36, 1, 32, true);
    Mm ic = sparse(mat(1, 1, {0}, {1}));
    Mm az = plus(a, times(ic, speye(Mm(36.0))));
    Mm xc = mldivide(az, bc);
    EXPECT_LT(maxdiff(mtimes(az, xc), bc), 1e-12);
    // Tall: the augmented system gives the least-squares solution.
    Mm t = sparse(random_matrix(8, 3, 33)), bt = random_matrix(8, 1, 34);
    EXPECT_LT(maxdiff(mldivide(t, bt), mldivide(full(t), bt)), 1e-10);
    // Wide: a basic solution from the first columns, zeros below.
    Mm w = sparse(mat(2, 3, {2, 0, 1, 0, 4, 1})), bw = mat(2, 1, {2, 4});
    EXPECT_LT(maxdiff(mldivide(w, bw), mat(3, 1, {1, 1, 0})), 1e-15);
    // A singular sparse matrix gives NaN.
    Mm sing = sparse(mat(2, 2, {1, 1, 1, 1}));
    EXPECT_TRUE(std::isnan(mldivide(sing, mat(2, 1, {1, 2})).addr()[0]));
    (void)ac;
}

TEST(Lusolve, ColumnOrderGivenByAPermutation) {
    Mm a = la_test::laplacian_2d(4), b = random_matrix(16, 1, 41);
    Mm q = speye(Mm(16.0));
    Mm x1 = lusolve(a, b, q);
    // The reversed column order solves the same system.
    Mm rev = q(c_p, colon(16.0, -1.0, 1.0));
    EXPECT_LT(maxdiff(lusolve(a, b, rev), x1), 1e-14);
    EXPECT_LT(maxdiff(mtimes(a, x1), b), 1e-14);
}

TEST(Inverse, RealComplexScalarAndSparse) {
    for (int n : {2, 5, 30}) {
        Mm a = random_matrix(n, n, 50 + n);
        EXPECT_LT(maxdiff(mtimes(a, inv(a)), eye(Mm(n))), 1e-12 * n);
        Mm c = random_matrix(n, n, 60 + n, true);
        EXPECT_LT(maxdiff(mtimes(c, inv(c)), eye(Mm(n))), 1e-12 * n);
    }
    EXPECT_EQ(inv(Mm(4.0)).r(), 0.25);
    Mm ci = inv(mat(1, 1, {0}, {2}));
    EXPECT_EQ(ci.r(), 0.0);
    EXPECT_EQ(ci.i(), -0.5);
    Mm s = inv(sparse(mat(2, 2, {2, 0, 0, 4})));
    EXPECT_TRUE(s.flags.sparse);
    EXPECT_LT(maxdiff(s, mat(2, 2, {0.5, 0, 0, 0.25})), 1e-16);
    EXPECT_EQ(inv(Mm(0, 0, 0, 0, 0, ak_double)).size(), 0);
}

TEST(Determinant, SignsIntegersComplexAndSparse) {
    EXPECT_EQ(det(Mm(0, 0, 0, 0, 0, ak_double)).r(), 1.0);
    EXPECT_EQ(det(mat(2, 2, {0, 1, 1, 0})).r(), -1.0);
    // Integer matrices give integers: the LU product here is not exactly 3.
    Mm m = mat(3, 3, {1, 2, 3, 4, 5, 6, 7, 8, 10});
    EXPECT_EQ(det(m).r(), -3.0);
    EXPECT_NEAR(det(mat(2, 2, {0.5, 1, 1, 0.5})).r(), -0.75, 1e-15);
    Mm c = det(mat(2, 2, {1, 2, 3, 4}, {1, 0, 0, -1}));  // (1+i)(4-i) - 6
    EXPECT_NEAR(c.r(), -1.0, 1e-14);
    EXPECT_NEAR(c.i(), 3.0, 1e-14);
    EXPECT_TRUE(det(mat(2, 2, {1, 2, 3, 4}, {0, 0, 0, 0})).pi == nullptr);
    // The sparse path multiplies the diagonals of L and U and leaves the sign of P out.
    EXPECT_EQ(det(sparse(mat(2, 2, {0, 1, 1, 0}))).r(), 1.0);
    EXPECT_NEAR(det(sparse(mat(3, 3, {2, 1, 0, 1, 3, 1, 0, 1, 4}))).r(), 18.0, 1e-13);
}

TEST(Rcond, EstimateBracketsTheTrueValue) {
    EXPECT_EQ(rcond(eye(Mm(4.0))).r(), 1.0);
    EXPECT_EQ(rcond(mat(2, 2, {1, 2, 2, 4})).r(), 0.0);
    EXPECT_NEAR(rcond(mat(2, 2, {1, 0, 0, 1e-8})).r(), 1e-8, 1e-15);
    for (bool complex : {false, true})
        for (int n : {3, 8, 20}) {
            Mm a = random_matrix(n, n, 70 + n, complex);
            Mm ainv = inv(a);
            auto norm1 = [](const Mm& x) {
                double best = 0.0;
                for (int j = 0; j < x.cols(); ++j) {
                    double s = 0.0;
                    for (int i = 0; i < x.rows(); ++i) {
                        int k = j * x.rows() + i;
                        s += std::fabs(x.addr()[k]) + (x.pi ? std::fabs(x.addi()[k]) : 0.0);
                    }
                    best = std::fmax(best, s);
                }
                return best;
            };
            // The complex kernels measure with |re| + |im|, as the estimate does.
            double truth = 1.0 / (norm1(a) * norm1(ainv));
            double est = rcond(a).r();
            EXPECT_GE(est, truth * (1 - 1e-12)) << n;
            EXPECT_LE(est, truth * 20) << n;
        }
}

TEST(Lu, PackedFactorsAndFactorIdentities) {
    // One output: the packed factors with the negated multiplier.
    Mm p = lu(mat(2, 2, {1, 2, 3, 4}));
    EXPECT_LT(maxdiff(p, mat(2, 2, {3, 4, -1.0 / 3.0, 2.0 / 3.0})), 1e-15);
    for (bool complex : {false, true})
        for (int n : {1, 4, 12}) {
            Mm a = random_matrix(n, n, 80 + n, complex);
            Mm U, P;
            Mm L = lu(a, i_o, U, P);
            EXPECT_TRUE(triangular(L, false) && triangular(U, true));
            for (int k = 0; k < n; ++k) EXPECT_EQ(L.addr()[k * n + k], 1.0);
            EXPECT_LT(maxdiff(mtimes(L, U), mtimes(P, a)), 1e-14 * n);
            Mm U2;
            Mm L2 = lu(a, i_o, U2);
            EXPECT_LT(maxdiff(mtimes(L2, U2), a), 1e-14 * n);
            EXPECT_LT(maxdiff(lu_U(a), U), 0.0 + 1e-300);
            EXPECT_LT(maxdiff(lu_L(a), L2), 1e-300);
            // Partial pivoting keeps every multiplier within 1 in size (sqrt(2) for complex
            // matrices, whose pivots are chosen by |re| + |im|).
            for (int k = 0; k < L.nnz; ++k)
                EXPECT_LE(std::hypot(L.addr()[k], L.pi ? L.addi()[k] : 0), (complex ? std::sqrt(2.0) : 1.0) + 1e-15);
        }
}

TEST(Lu, SparseFactorsAndMessages) {
    Mm a = la_test::laplacian_2d(5);
    a = plus(a, sparse(mat(25, 25, std::vector<double>(625, 0.0))));
    Mm nonsym = plus(a, sparse(random_matrix(25, 25, 91)));
    for (const Mm& s : {a, nonsym}) {
        Mm U, P;
        Mm L = lu(s, i_o, U, P);
        EXPECT_TRUE(L.flags.sparse && U.flags.sparse && P.flags.sparse);
        EXPECT_TRUE(triangular(L, false) && triangular(U, true));
        EXPECT_LT(maxdiff(mtimes(L, U), mtimes(P, s)), 1e-12);
        Mm U2;
        Mm L2 = lu(s, i_o, U2);
        EXPECT_LT(maxdiff(mtimes(L2, U2), s), 1e-12);
    }
    ak_test::ErrorsThrow guard;
    Mm U, P;
    EXPECT_ERROR(lu(sparse(mat(1, 1, {1}, {1})), i_o, U, P), "lu: Complex sparse not supported.");
}

TEST(Chol, FactorsPositiveDefiniteMatricesAndFindsTheLeadingBlock) {
    Mm a = random_matrix(6, 6, 101);
    Mm spd = plus(mtimes(a, transpose(a)), eye(Mm(6.0)));
    Mm r = chol(spd);
    EXPECT_TRUE(triangular(r, true));
    EXPECT_LT(maxdiff(mtimes(transpose(r), r), spd), 1e-13);
    Mm c = random_matrix(5, 5, 102, true);
    Mm hpd = plus(mtimes(c, ctranspose(c)), eye(Mm(5.0)));
    Mm rc = chol(hpd);
    EXPECT_LT(maxdiff(mtimes(ctranspose(rc), rc), hpd), 1e-13);
    // Only the upper triangle is read.
    Mm upper_only = mat(2, 2, {4, 2, 99, 5});
    EXPECT_LT(maxdiff(chol(upper_only), mat(2, 2, {2, 1, 0, 2})), 1e-15);
    // Indefinite: the factor of the leading positive definite block and its failing order.
    Mm ind = mat(3, 3, {4, 2, 0, 2, 5, 3, 0, 3, 1});
    Mm p;
    Mm r2 = chol(ind, i_o, p);
    EXPECT_EQ(p.r(), 3.0);
    EXPECT_LT(maxdiff(r2, mat(2, 2, {2, 1, 0, 2})), 1e-15);
    r2 = chol(mat(2, 2, {-1, 0, 0, 1}), i_o, p);
    EXPECT_EQ(p.r(), 1.0);
    EXPECT_EQ(r2.size(), 0);
    r2 = chol(spd, i_o, p);
    EXPECT_EQ(p.r(), 0.0);
    ak_test::ErrorsThrow guard;
    Mm named("K", 2, 2);
    named.addr()[0] = 1, named.addr()[1] = 2, named.addr()[2] = 2, named.addr()[3] = 1;
    EXPECT_ERROR(chol(named), "chol: K matrix not positive definite");
}

TEST(LinearSolvers, RegisteredByName) {
    for (const char* name : {"mldivide", "invdiv", "lusolve", "inv", "det", "rcond", "lu", "lu_L", "lu_U", "chol"})
        EXPECT_EQ(ak_function_exists(name), 1) << name;
    Mm in[2] = {mat(2, 2, {2, 0, 0, 4}), mat(2, 1, {2, 4})};
    Mm out[2];
    ASSERT_EQ(ak_call_function("mldivide", 2, in, 1, out), 1);
    EXPECT_LT(maxdiff(out[0], mat(2, 1, {1, 1})), 1e-16);
    ASSERT_EQ(ak_call_function("lu", 1, in, 2, out), 1);
    EXPECT_LT(maxdiff(mtimes(out[0], out[1]), in[0]), 1e-16);
}
