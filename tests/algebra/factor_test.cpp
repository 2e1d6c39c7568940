// Eigenvalues, singular values and what is built on them.
#include <algorithm>
#include <cmath>
#include <vector>

#include "linalg_test_util.h"
#include "test_support.h"

using la_test::fro;
using la_test::mat;
using la_test::maxdiff;
using la_test::random_matrix;

namespace {

std::vector<double> sorted_real(const Mm& v0) {
    Mm v = full(v0);
    std::vector<double> r(v.addr(), v.addr() + v.nnz);
    std::sort(r.begin(), r.end());
    return r;
}

// || A V - V D || relative to || A || || V ||.
double eigen_residual(const Mm& a, const Mm& V, const Mm& D) {
    return fro(minus(mtimes(a, V), mtimes(V, D))) / (fro(a) * fro(V));
}

}  // namespace

TEST(Eig, SymmetricMatricesGiveAscendingRealValues) {
    // The second difference matrix of order n: eigenvalues 2 - 2 cos(k pi / (n + 1)).
    const int n = 12;
    Mm t = la_test::mat(n, n, std::vector<double>(n * n, 0.0));
    for (int i = 0; i < n; ++i) {
        t.addr()[i * n + i] = 2.0;
        if (i + 1 < n) t.addr()[i * n + i + 1] = t.addr()[(i + 1) * n + i] = -1.0;
    }
    Mm e = eig(t);
    ASSERT_EQ(e.rows(), n);
    EXPECT_TRUE(e.pi == nullptr);
    for (int k = 0; k < n; ++k) EXPECT_NEAR(e.addr()[k], 2.0 - 2.0 * std::cos((k + 1) * M_PI / (n + 1)), 1e-14);
    Mm D;
    Mm V = eig(t, i_o, D);
    EXPECT_TRUE(V.pi == nullptr && D.pi == nullptr);
    EXPECT_LT(eigen_residual(t, V, D), 1e-14);
    EXPECT_LT(maxdiff(mtimes(transpose(V), V), eye(Mm(n))), 1e-13);
    for (int k = 0; k + 1 < n; ++k) EXPECT_LE(D.addr()[k * n + k], D.addr()[(k + 1) * n + k + 1]);
}

TEST(Eig, HermitianGeneralRealAndComplex) {
    Mm c = random_matrix(7, 7, 5, true);
    Mm h = plus(c, ctranspose(c));
    Mm D;
    Mm V = eig(h, i_o, D);
    EXPECT_TRUE(D.pi == nullptr);  // Hermitian: real eigenvalues
    EXPECT_LT(eigen_residual(h, V, D), 1e-14);
    EXPECT_LT(maxdiff(mtimes(ctranspose(V), V), eye(Mm(7.0))), 1e-13);
    // A real nonsymmetric matrix with complex pairs, and a complex general matrix.
    for (bool complex : {false, true})
        for (int n : {1, 2, 5, 16}) {
            Mm a = random_matrix(n, n, 40 + n, complex);
            Mm Dn;
            Mm Vn = eig(a, i_o, Dn);
            EXPECT_LT(eigen_residual(a, Vn, Dn), 1e-13) << n << complex;
            // The values alone agree with the diagonal of the vector form.
            Mm e = eig(a);
            EXPECT_LT(maxdiff(e, diag(Dn)), 1e-11) << n << complex;
            // Unit columns.
            for (int j = 0; j < n; ++j) EXPECT_NEAR(fro(Vn(c_p, Mm(j + 1.0))), 1.0, 1e-13);
        }
    // Rotation: the pair +-i, unpacked as conjugate vectors.
    Mm r = mat(2, 2, {0, -1, 1, 0});
    Mm Dr;
    Mm Vr = eig(r, i_o, Dr);
    ASSERT_TRUE(Dr.pi != nullptr);
    EXPECT_NEAR(std::fabs(Dr.addi()[0]), 1.0, 1e-15);
    EXPECT_NEAR(Dr.addi()[0], -Dr.addi()[3], 1e-15);
    EXPECT_LT(eigen_residual(r, Vr, Dr), 1e-15);
}

TEST(Eig, BalancingAndKnownSpectra) {
    // A badly scaled matrix: balancing keeps the values accurate; any string turns it off and the
    // values stay correct to the accuracy the scaling allows.
    Mm a = mat(3, 3, {1, 1e6, 1e12, 1e-6, 1, 1e6, 1e-12, 1e-6, 1});
    std::vector<double> with = sorted_real(real(eig(a)));
    EXPECT_NEAR(with[2], 3.0, 1e-12);
    EXPECT_LT(maxdiff(eig(a, TM("x")), eig(a, TM("y"))), 1e-300);
    // A companion matrix of (x-1)(x-2)(x-3)(x-4): known roots.
    Mm comp = mat(4, 4, {10, -35, 50, -24, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0});
    std::vector<double> roots = sorted_real(real(eig(comp)));
    for (int k = 0; k < 4; ++k) EXPECT_NEAR(roots[k], k + 1.0, 1e-12);
    // Upper triangular: the diagonal.
    std::vector<double> tri = sorted_real(eig(mat(3, 3, {3, 5, 7, 0, 1, 2, 0, 0, 2})));
    EXPECT_EQ(tri, (std::vector<double>{1, 2, 3}));
    // A defective Jordan block still gives its value.
    Mm j = mat(2, 2, {2, 1, 0, 2});
    EXPECT_LT(maxdiff(eig(j), mat(2, 1, {2, 2})), 1e-7);
    EXPECT_EQ(eig(Mm(0, 0, 0, 0, 0, ak_double)).size(), 0);
    ak_test::ErrorsThrow guard;
    EXPECT_ERROR(eig(mat(2, 3, {1, 2, 3, 4, 5, 6})),
                 "eig: square matrix expected, but matrix (temporary) has 2 rows and 3 columns");
}

// a x = lambda b x: known spectra, the residual of the vectors, the factor identities of qz, an
// infinite eigenvalue from a singular b, and the messages.
TEST(GeneralisedEig, SpectraVectorsAndQzFactors) {
    // b * C with C the companion matrix of (x-1)(x-2)(x-3)(x-4): the pair has C's roots.
    Mm comp = mat(4, 4, {10, -35, 50, -24, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0});
    Mm b = plus(random_matrix(4, 4, 7), mtimes(Mm(4.0), eye(Mm(4.0))));
    std::vector<double> roots = sorted_real(real(eig(mtimes(b, comp), b)));
    for (int k = 0; k < 4; ++k) EXPECT_NEAR(roots[k], k + 1.0, 1e-9);
    // A rotation against the identity: the conjugate pair +-i.
    Mm rot = eig(mat(2, 2, {0, 1, -1, 0}), eye(Mm(2.0)));
    ASSERT_TRUE(rot.pi);
    EXPECT_NEAR(std::fabs(rot.addi()[0]), 1.0, 1e-14);
    EXPECT_NEAR(rot.addi()[0] + rot.addi()[1], 0.0, 1e-14);
    EXPECT_EQ(maxdiff(qzval(mat(2, 2, {0, 1, -1, 0}), eye(Mm(2.0))), rot), 0.0);
    // Random pairs: a V = b V D with unit columns, complex pairs included.
    for (int seed = 1; seed <= 4; ++seed) {
        Mm a = random_matrix(6, 6, 10 + seed), bb = random_matrix(6, 6, 20 + seed);
        Mm D;
        Mm V = eig(a, bb, i_o, D);
        EXPECT_LT(fro(minus(mtimes(a, V), mtimes(bb, mtimes(V, D)))) / (fro(a) * fro(V) * fro(D)), 1e-13) << seed;
        for (int j = 0; j < 6; ++j) EXPECT_NEAR(fro(V(c_p, Mm(j + 1.0))), 1.0, 1e-12);
        // qz: Q a Z = AA and Q b Z = BB with Q and Z orthogonal, BB triangular, AA with no element
        // below its first subdiagonal.
        Mm AA, BB, Q, Z, W;
        qz(a, bb, i_o, AA, BB, Q, Z, W);
        EXPECT_LT(fro(minus(mtimes(Q, mtimes(a, Z)), AA)) / fro(a), 1e-14);
        EXPECT_LT(fro(minus(mtimes(Q, mtimes(bb, Z)), BB)) / fro(bb), 1e-14);
        EXPECT_LT(fro(minus(mtimes(Q, transpose(Q)), eye(Mm(6.0)))), 1e-14);
        EXPECT_LT(fro(minus(mtimes(transpose(Z), Z), eye(Mm(6.0)))), 1e-14);
        EXPECT_TRUE(la_test::triangular(BB, true));
        for (int j = 0; j < 6; ++j)
            for (int i = j + 2; i < 6; ++i) EXPECT_EQ(AA.addr()[j * 6 + i], 0.0);
        EXPECT_LT(maxdiff(W, V), 1e-12);
    }
    // A singular b: one infinite eigenvalue.
    std::vector<double> inf = sorted_real(eig(eye(Mm(2.0)), mat(2, 2, {1, 0, 0, 0})));
    EXPECT_NEAR(inf[0], 1.0, 1e-15);
    EXPECT_TRUE(std::isinf(inf[1]));
    EXPECT_EQ(eig(Mm(0, 0, 0, 0, 0, ak_double), Mm(0, 0, 0, 0, 0, ak_double)).size(), 0);

    ak_test::ErrorsThrow guard;
    EXPECT_ERROR(eig(mat(2, 2, {1, 2, 3, 4}, {0, 1, 0, 0}), eye(Mm(2.0))),
                 "eig(a,b): complex arguments not supported.");
    EXPECT_ERROR(eig(eye(Mm(2.0)), eye(Mm(3.0))), "eig(a,b): matrix a and b must be of same size.");
    EXPECT_ERROR(eig(mat(2, 3, {1, 2, 3, 4, 5, 6}), eye(Mm(2.0))),
                 "eig(a,b): square matrix expected, but matrix (temporary) has 2 rows and 3 columns");
    Mm AA, BB;
    EXPECT_ERROR(qz(eye(Mm(2.0)), eye(Mm(3.0)), i_o, AA, BB), "qz: matrix a and b must be of same size.");
}

TEST(Svd, FactorIdentitiesAndKnownValues) {
    for (bool complex : {false, true})
        for (auto [m, n] : {std::pair{5, 3}, {3, 5}, {4, 4}, {1, 3}, {3, 1}}) {
            Mm a = random_matrix(m, n, 10 * m + n, complex);
            Mm S, V;
            Mm U = svd(a, i_o, S, V);
            EXPECT_EQ(U.rows(), m);
            EXPECT_EQ(U.cols(), m);
            EXPECT_EQ(V.cols(), n);
            EXPECT_LT(maxdiff(mtimes(mtimes(U, S), ctranspose(V)), a), 1e-14 * (m + n)) << m << n << complex;
            EXPECT_LT(maxdiff(mtimes(ctranspose(U), U), eye(Mm(m))), 1e-14 * m);
            EXPECT_LT(maxdiff(mtimes(ctranspose(V), V), eye(Mm(n))), 1e-14 * n);
            Mm s = svd(a);
            EXPECT_TRUE(s.pi == nullptr);
            ASSERT_EQ(s.rows(), std::min(m, n));
            for (int k = 0; k + 1 < s.rows(); ++k) EXPECT_GE(s.addr()[k], s.addr()[k + 1]);
            EXPECT_LT(maxdiff(s, diag(S)(colon(1.0, std::min(m, n)))), 1e-14);
            // Economy: U has min(m, n) columns.
            Mm Se, Ve;
            Mm Ue = svd(a, Mm(0.0), i_o, Se, Ve);
            EXPECT_EQ(Ue.cols(), std::min(m, n));
            EXPECT_LT(maxdiff(mtimes(mtimes(Ue, Se), ctranspose(Ve)), a), 1e-14 * (m + n));
        }
    // Known singular values: a diagonal with a permutation and signs, and a rank-one matrix.
    Mm d = mat(3, 3, {0, -3, 0, 0, 0, 1, 2, 0, 0});
    EXPECT_LT(maxdiff(svd(d), mat(3, 1, {3, 2, 1})), 1e-15);
    Mm r1 = mtimes(mat(3, 1, {1, 2, 2}), mat(1, 2, {3, 4}));  // |u| |v| = 3 * 5
    Mm s1 = svd(r1);
    EXPECT_NEAR(s1.addr()[0], 15.0, 1e-13);
    EXPECT_NEAR(s1.addr()[1], 0.0, 1e-14);
}

TEST(NormCondRank, Definitions) {
    EXPECT_EQ(norm(Mm(0, 0, 0, 0, 0, ak_double)).r(), 0.0);
    EXPECT_NEAR(norm(mat(1, 2, {1, 2}), TM("fro")).r(), std::sqrt(5.0), 1e-15);
    EXPECT_NEAR(norm(mat(1, 2, {3, 4})).r(), 5.0, 1e-15);
    EXPECT_EQ(norm(mat(1, 3, {1, -7, 2}), Mm(INFINITY)).r(), 7.0);
    EXPECT_EQ(norm(mat(1, 3, {1, -7, 2}), Mm(-INFINITY)).r(), 1.0);
    EXPECT_EQ(norm(mat(3, 1, {1, -7, 2}), TM("inf")).r(), 7.0);
    EXPECT_NEAR(norm(mat(1, 2, {3, 4}), Mm(1.0)).r(), 7.0, 1e-15);
    EXPECT_NEAR(norm(mat(1, 2, {1, 1}), Mm(3.0)).r(), std::pow(2.0, 1.0 / 3.0), 1e-15);
    Mm a = mat(2, 2, {1, -2, 3, 4});
    EXPECT_EQ(norm(a, Mm(1.0)).r(), 6.0);
    EXPECT_EQ(norm(a, Mm(INFINITY)).r(), 7.0);
    EXPECT_NEAR(norm(a, TM("fro")).r(), std::sqrt(30.0), 1e-14);
    EXPECT_NEAR(norm(a).r(), svd(a).addr()[0], 1e-15);
    EXPECT_TRUE(std::isnan(cond(Mm(0, 0, 0, 0, 0, ak_double)).r()));
    EXPECT_TRUE(std::isnan(cond(mat(2, 2, {0, 0, 0, 0})).r()));
    EXPECT_TRUE(std::isinf(cond(mat(2, 2, {1, 0, 0, 0})).r()));
    EXPECT_NEAR(cond(mat(2, 2, {4, 0, 0, 0.5})).r(), 8.0, 1e-14);
    EXPECT_EQ(rank(mat(3, 3, {1, 2, 3, 4, 5, 6, 7, 8, 9})).r(), 2.0);
    EXPECT_EQ(rank(eye(Mm(4.0))).r(), 4.0);
    EXPECT_EQ(rank(mat(2, 2, {1, 0, 0, 1e-3}), Mm(1e-2)).r(), 1.0);
    ak_test::ErrorsThrow guard;
    EXPECT_ERROR(norm(mat(2, 2, {1, 2, 3, 4}), Mm(3.0)), "norm: x matrix, P not 1, 2, inf or fro");
}

TEST(NullOrthPinv, Subspaces) {
    Mm a = mat(3, 3, {1, 2, 3, 4, 5, 6, 7, 8, 9});
    Mm z = null(a);
    ASSERT_EQ(z.cols(), 1);
    EXPECT_LT(fro(mtimes(a, z)), 1e-14);
    EXPECT_EQ(null(eye(Mm(3.0))).size(), 0);
    Mm o = orth(a);
    EXPECT_EQ(o.cols(), 2);
    EXPECT_LT(maxdiff(mtimes(transpose(o), o), eye(Mm(2.0))), 1e-14);
    EXPECT_EQ(orth(mat(2, 2, {0, 0, 0, 0})).size(), 0);
    Mm p = pinv(zeros(Mm(2.0), Mm(3.0)));
    EXPECT_EQ(p.rows(), 3);
    EXPECT_EQ(p.cols(), 2);
    EXPECT_EQ(fro(p), 0.0);
    Mm t = random_matrix(6, 3, 77, true);
    Mm pt = pinv(t);
    EXPECT_LT(maxdiff(pt, mldivide(mtimes(ctranspose(t), t), ctranspose(t))), 1e-12);
    EXPECT_LT(maxdiff(mtimes(mtimes(a, pinv(a)), a), a), 1e-12);
}

TEST(SchurHessBalance, FactorIdentities) {
    for (bool complex : {false, true}) {
        Mm a = random_matrix(6, 6, 200 + complex, complex);
        Mm T;
        Mm U = schur(a, i_o, T);
        EXPECT_LT(maxdiff(mtimes(mtimes(U, T), ctranspose(U)), a), 1e-13);
        EXPECT_LT(maxdiff(mtimes(ctranspose(U), U), eye(Mm(6.0))), 1e-13);
        // Triangular for complex input; quasi-triangular (2 x 2 blocks) for real input.
        Mm Tf = full(T);
        for (int j = 0; j < 6; ++j)
            for (int i = j + (complex ? 1 : 2); i < 6; ++i) EXPECT_EQ(Tf.addr()[j * 6 + i], 0.0);
        Mm H;
        Mm P = hess(a, i_o, H);
        EXPECT_LT(maxdiff(mtimes(mtimes(P, H), ctranspose(P)), a), 1e-13);
        for (int j = 0; j < 6; ++j)
            for (int i = j + 2; i < 6; ++i) EXPECT_EQ(H.addr()[j * 6 + i], 0.0);
        EXPECT_EQ(H.pi != nullptr, complex);
    }
    // rsf2csf turns the real Schur form of a rotation into a triangular complex one.
    Mm r = mat(3, 3, {0, -2, 1, 2, 0, 3, 0, 0, 5});
    Mm T;
    Mm U = schur(r, i_o, T);
    Mm T1;
    Mm U1 = rsf2csf(U, T, i_o, T1);
    EXPECT_TRUE(la_test::triangular(T1, true));
    EXPECT_LT(maxdiff(mtimes(mtimes(U1, T1), ctranspose(U1)), r), 1e-13);
    // Balancing: B = T \ a T with similar row and column norms.
    Mm a = mat(3, 3, {1, 1e4, 1e8, 1e-4, 1, 1e4, 1e-8, 1e-4, 1});
    Mm B;
    Mm Tb = balance(a, i_o, B);
    EXPECT_LT(maxdiff(mtimes(Tb, B), mtimes(a, Tb)) / 1e8, 1e-15);
    EXPECT_LT(norm(B, Mm(1.0)).r(), 10.0);
}

TEST(Cdf2rdfCondeig, RealBlocksAndConditionNumbers) {
    Mm a = mat(3, 3, {1, -2, 0, 2, 1, 0, 0, 0, 3});
    Mm D;
    Mm V = eig(a, i_o, D);
    Mm D1;
    Mm V1 = cdf2rdf(V, D, i_o, D1);
    EXPECT_TRUE(V1.pi == nullptr && D1.pi == nullptr);
    EXPECT_LT(maxdiff(mtimes(a, V1), mtimes(V1, D1)), 1e-14);
    // A normal matrix has perfectly conditioned eigenvalues; a near-defective one does not.
    Mm c = condeig(mat(2, 2, {2, 1, 1, 2}));
    EXPECT_LT(maxdiff(c, mat(2, 1, {1, 1})), 1e-14);
    EXPECT_GT(condeig(mat(2, 2, {1, 1e4, 0, 1.001})).addr()[0], 1e5);
}

TEST(Qr, FactorsPivotingEconomyAndUpdates) {
    for (bool complex : {false, true})
        for (auto [m, n] : {std::pair{5, 3}, {3, 5}, {4, 4}}) {
            Mm a = random_matrix(m, n, 300 + m * n, complex);
            Mm R;
            Mm Q = qr(a, i_o, R);
            EXPECT_LT(maxdiff(mtimes(Q, R), a), 1e-14 * (m + n));
            EXPECT_LT(maxdiff(mtimes(ctranspose(Q), Q), eye(Mm(m))), 1e-14 * m);
            EXPECT_TRUE(la_test::triangular(R, true));
            Mm E;
            Q = qr(a, i_o, R, E);
            EXPECT_LT(maxdiff(mtimes(Q, R), mtimes(a, E)), 1e-14 * (m + n));
            for (int k = 0; k + 1 < std::min(m, n); ++k)  // pivoting orders |r_kk| down the diagonal
                EXPECT_GE(std::hypot(R.addr()[k * m + k], R.pi ? R.addi()[k * m + k] : 0) + 1e-13,
                          std::hypot(R.addr()[(k + 1) * m + k + 1], R.pi ? R.addi()[(k + 1) * m + k + 1] : 0));
            Mm Re;
            Mm Qe = qr(a, Mm(0.0), i_o, Re);
            EXPECT_EQ(Qe.cols(), std::min(m, n));
            EXPECT_LT(maxdiff(mtimes(Qe, Re), a), 1e-14 * (m + n));
        }
    Mm a = random_matrix(5, 3, 17);
    Mm R;
    Mm Q = qr(a, i_o, R);
    Mm R1;
    Mm Q1 = qrdelete(Q, R, Mm(2.0), i_o, R1);
    Mm a1 = horzcat(a(c_p, Mm(1.0)), a(c_p, Mm(3.0)));
    EXPECT_LT(maxdiff(mtimes(Q1, R1), a1), 1e-14);
    EXPECT_TRUE(la_test::triangular(R1, true));
    Mm x = random_matrix(5, 1, 18);
    Mm R2;
    Mm Q2 = qrinsert(Q, R, Mm(2.0), x, i_o, R2);
    EXPECT_LT(maxdiff(mtimes(Q2, R2), horzcat(horzcat(a(c_p, Mm(1.0)), x), a(c_p, colon(2.0, 3.0)))), 1e-14);
    EXPECT_TRUE(la_test::triangular(R2, true));
}

TEST(Rotations, GivensPlanerotSubspaceRref) {
    Mm s;
    Mm c = givens(Mm(0.0), Mm(5.0), i_o, s);
    EXPECT_EQ(c.r(), 0.0);
    EXPECT_EQ(s.r(), 1.0);
    Mm g = givens(Mm(3.0), Mm(4.0));
    EXPECT_LT(maxdiff(mtimes(g, mat(2, 1, {3, 4})), mat(2, 1, {5, 0})), 1e-15);
    Mm y;
    Mm G = planerot(mat(2, 1, {3, 0}), i_o, y);
    EXPECT_EQ(maxdiff(G, eye(Mm(2.0))), 0.0);
    EXPECT_EQ(maxdiff(y, mat(2, 1, {3, 0})), 0.0);
    G = planerot(mat(2, 1, {3, 4}), i_o, y);
    EXPECT_LT(maxdiff(mtimes(G, mat(2, 1, {3, 4})), y), 1e-15);
    EXPECT_LT(maxdiff(y, mat(2, 1, {5, 0})), 1e-15);
    EXPECT_NEAR(subspace(mat(2, 1, {1, 0}), mat(2, 1, {1, 1})).r(), M_PI / 4, 1e-15);
    Mm jb;
    Mm r = rref(mat(3, 4, {1, 2, 1, 4, 2, 4, 0, 6, 1, 2, 2, 5}), i_o, jb);
    EXPECT_LT(maxdiff(r, mat(3, 4, {1, 2, 0, 3, 0, 0, 1, 1, 0, 0, 0, 0})), 1e-14);
    EXPECT_EQ(maxdiff(jb, mat(1, 2, {1, 3})), 0.0);
    ak_test::ErrorsThrow guard;
    EXPECT_ERROR(subspace(mat(2, 1, {1, 0}), mat(3, 1, {1, 1, 1})), "subspace: arguments must have same number of rows.");
}

TEST(SylvesterLyapunov, SolutionsSatisfyTheEquations) {
    Mm a = plus(random_matrix(4, 4, 400), times(Mm(4.0), eye(Mm(4.0))));
    Mm b = plus(random_matrix(3, 3, 401), times(Mm(3.0), eye(Mm(3.0))));
    Mm c = random_matrix(4, 3, 402);
    Mm x = axxbc(a, b, c);
    EXPECT_TRUE(x.pi == nullptr);
    EXPECT_LT(maxdiff(plus(mtimes(a, x), mtimes(x, b)), c), 1e-12);
    Mm cc = random_matrix(4, 4, 403);
    Mm l = lyap(a, cc);
    EXPECT_LT(maxdiff(plus(mtimes(a, l), mtimes(l, transpose(a))), uminus(cc)), 1e-12);
    Mm sv = sylv(a, b, c);
    EXPECT_LT(maxdiff(sv, x), 1e-12);
    Mm ac = random_matrix(3, 3, 404, true);
    Mm xc = axxbc(ac, b, random_matrix(3, 3, 405, true));
    EXPECT_TRUE(xc.pi != nullptr);
    ak_test::ErrorsThrow guard;
    EXPECT_ERROR(axxbc(a, b, random_matrix(3, 3, 1)), "axxbc: c must be rows(a)-by-cols(b)");
    EXPECT_ERROR(axxbc(a), "axxbc does not accept 1 input");
}

TEST(Mpower, NonIntegerAndNegativePowers) {
    Mm a = mat(2, 2, {4, 1, 1, 3});
    Mm h = mpower(a, Mm(0.5));
    EXPECT_LT(maxdiff(mtimes(h, h), a), 1e-13);
    Mm m = mpower(a, Mm(-2.0));
    EXPECT_LT(maxdiff(mtimes(m, mtimes(a, a)), eye(Mm(2.0))), 1e-14);
    // 2 ^ A for a diagonalisable A: V diag(2 .^ d) / V; for a diagonal A, element-wise.
    Mm e = mpower(Mm(2.0), mat(2, 2, {1, 0, 0, 3}));
    EXPECT_LT(maxdiff(e, mat(2, 2, {2, 0, 0, 8})), 1e-14);
    // A rotation by 90 degrees has the square root of the rotation by 45.
    Mm r = mpower(mat(2, 2, {0, -1, 1, 0}), Mm(0.5));
    double c = std::sqrt(0.5);
    EXPECT_LT(maxdiff(real(r), mat(2, 2, {c, -c, c, c})), 1e-14);
}

TEST(Factorisations, RegisteredByName) {
    for (const char* name : {"eig", "eig_D", "eig_W", "svd", "svd_U", "svd_S", "svd_W", "norm", "cond", "rank",
                             "null", "orth", "pinv", "schur", "schur_U", "schur_T", "hess", "balance", "rsf2csf",
                             "cdf2rdf", "condeig", "axxbc", "lyap", "sylv", "qr", "qrdelete", "qrinsert", "givens",
                             "planerot", "subspace", "rref"})
        EXPECT_EQ(ak_function_exists(name), 1) << name;
}
