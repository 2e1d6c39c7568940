// The dense numerical kernels of the algebra functions, on column-major double arrays with the real
// and imaginary halves of a complex matrix held apart. Each family lives in a file of its own and
// follows a published algorithm, named at the top of that file; the call sequences keep the
// published ones (leading dimensions, one-based pivot lists, job codes), with each complex array
// passed as its two halves.
//
// Other parts of the library (matrix functions, numerical methods) may call these directly.
#pragma once
#include <cmath>

namespace ak_kernels {

// ---- small complex helpers on split values ----------------------------------------------------------
inline double cabs1(double re, double im) { return std::fabs(re) + std::fabs(im); }
// (ar + i ai) / (br + i bi), scaled so that no intermediate overflows.
inline void cdiv(double ar, double ai, double br, double bi, double& cr, double& ci) {
    if (std::fabs(br) >= std::fabs(bi)) {
        double r = bi / br, d = br + r * bi;
        double x = (ar + ai * r) / d, y = (ai - ar * r) / d;
        cr = x;
        ci = y;
    } else {
        double r = br / bi, d = bi + r * br;
        double x = (ar * r + ai) / d, y = (ai * r - ar) / d;
        cr = x;
        ci = y;
    }
}

// ---- Gaussian elimination (linpack_lu.cpp) -----------------------------------------------------------
// LU factors with partial pivoting in place: U on and above the diagonal, the negated multipliers
// below it; ipvt one-based; info the one-based index of a zero pivot, else 0.
void dgefa(double* a, int lda, int n, int* ipvt, int* info);
void zgefa(double* ar, double* ai, int lda, int n, int* ipvt, int* info);
// Solves with the factors of zgefa: job 0 for A x = b, non-zero for A' x = b (conjugate transpose).
void zgesl(const double* ar, const double* ai, int lda, int n, const int* ipvt, double* br, double* bi,
           int job);
// Determinant and/or inverse from the factors of zgefa. job 10 gives the determinant as
// (detr[0] + i deti[0]) * 10^(detr[1] + i deti[1]); job 1 replaces a by its inverse; 11 both.
// work holds n complex values.
void zgedi(double* ar, double* ai, int lda, int n, const int* ipvt, double* detr, double* deti,
           double* workr, double* worki, int job);
// Factor as dgefa/zgefa and estimate the reciprocal condition number in the 1-norm. z is a work
// vector of n (complex for zgeco).
void dgeco(double* a, int lda, int n, int* ipvt, double* rcond, double* z);
void zgeco(double* ar, double* ai, int lda, int n, int* ipvt, double* rcond, double* zr, double* zi);

// ---- Cholesky (linpack_chol.cpp) ---------------------------------------------------------------------
// R'R = A from the upper triangle of a, in place; info is 0, or the order of the leading minor that
// is not positive definite.
void dpofa(double* a, int lda, int n, int* info);
void zpofa(double* ar, double* ai, int lda, int n, int* info);

// ---- Householder QR (linpack_qr.cpp) -----------------------------------------------------------------
// x is n x p. job 0: no pivoting; job 1: column pivoting, jpvt on entry > 0 for initial, < 0 for
// final, 0 for free columns; on return jpvt(k) is the original column now at k. qraux holds p values
// (complex for zqrdc), work p values (complex for zqrdc).
void dqrdc(double* x, int ldx, int n, int p, double* qraux, int* jpvt, double* work, int job);
void zqrdc(double* xr, double* xi, int ldx, int n, int p, double* qrauxr, double* qrauxi, int* jpvt,
           double* workr, double* worki, int job);
// Applies the output of dqrdc with k columns: job decimal digits abcde ask for qy (a), qty (b),
// b (c), rsd (d), xb (e). Arrays not asked for may be null. x is restored on return.
void dqrsl(double* x, int ldx, int n, int k, const double* qraux, const double* y, double* qy,
           double* qty, double* b, double* rsd, double* xb, int job, int* info);
void zqrsl(double* xr, double* xi, int ldx, int n, int k, const double* qrauxr, const double* qrauxi,
           const double* yr, const double* yi, double* qyr, double* qyi, double* qtyr, double* qtyi,
           double* br, double* bi, double* rsdr, double* rsdi, double* xbr, double* xbi, int job,
           int* info);

// ---- singular values (linpack_svd.cpp) ----------------------------------------------------------------
// x is n x p and is destroyed. s gets min(n + 1, p) values, e p values, work n values. job ab:
// a = 0 no left vectors, 1 all n in u, >= 2 the first min(n, p) in u; b = 0 no right vectors, 1 in v.
// info > 0 when the values info+1..min(n,p) are correct and the others did not converge.
void dsvdc(double* x, int ldx, int n, int p, double* s, double* e, double* u, int ldu, double* v,
           int ldv, double* work, int job, int* info);
void zsvdc(double* xr, double* xi, int ldx, int n, int p, double* sr, double* si, double* er,
           double* ei, double* ur, double* ui, int ldu, double* vr, double* vi, int ldv, double* workr,
           double* worki, int job, int* info);

// ---- eigenvalue kernels (eispack_*.cpp) ---------------------------------------------------------------
// Arrays are nm x n with nm the leading dimension. low and igh are one-based, as balanc leaves them.
// ierr is 0, or the one-based index of the eigenvalue that failed to converge in 30 iterations per
// value.

// Balancing: permutations to isolate eigenvalues, then diagonal scaling by powers of 2.
void balanc(int nm, int n, double* a, int* low, int* igh, double* scale);
void balbak(int nm, int n, int low, int igh, const double* scale, int m, double* z);
void cbal(int nm, int n, double* ar, double* ai, int* low, int* igh, double* scale);
void cbabk2(int nm, int n, int low, int igh, const double* scale, int m, double* zr, double* zi);

// Real general: Hessenberg reduction by stabilised elementary (elmhes, int_ of n ints) or orthogonal
// (orthes, ort of n) similarity transformations, the accumulated transformations (eltran, ortran),
// and the shifted QR algorithm for eigenvalues (hqr) and vectors (hqr2).
void elmhes(int nm, int n, int low, int igh, double* a, int* int_);
void eltran(int nm, int n, int low, int igh, const double* a, const int* int_, double* z);
void orthes(int nm, int n, int low, int igh, double* a, double* ort);
void ortran(int nm, int n, int low, int igh, double* a, double* ort, double* z);
void hqr(int nm, int n, int low, int igh, double* h, double* wr, double* wi, int* ierr);
// With vectors = 0 the pass stops after the Schur form is reached: h is then quasi-triangular and z
// holds the Schur vectors. With vectors = 1 z ends holding the eigenvectors (hqr2 proper).
void hqr2(int nm, int n, int low, int igh, double* h, double* wr, double* wi, double* z, int* ierr,
          int vectors = 1);

// Complex general: unitary Hessenberg reduction (corth, ort of n complex), QR for eigenvalues
// (comqr) and for vectors (comqr2). comqr2 with vectors = 0 stops at the triangular Schur form, with
// vectors = -1 at the Hessenberg form (z then holds the unitary factor of corth).
void corth(int nm, int n, int low, int igh, double* ar, double* ai, double* ortr, double* orti);
void comqr(int nm, int n, int low, int igh, double* hr, double* hi, double* wr, double* wi, int* ierr);
void comqr2(int nm, int n, int low, int igh, double* ortr, double* orti, double* hr, double* hi,
            double* wr, double* wi, double* zr, double* zi, int* ierr, int vectors = 1);

// Hermitian: reduction to real symmetric tridiagonal (htridi; d, e, e2 of n, tau 2 x n), its back
// transformation (htribk), and the QL algorithm with vectors (tql2) and without (tqlrat).
void htridi(int nm, int n, double* ar, double* ai, double* d, double* e, double* e2, double* tau);
void htribk(int nm, int n, const double* ar, const double* ai, const double* tau, int m, double* zr,
            double* zi);
void tql2(int nm, int n, double* d, double* e, double* z, int* ierr);
void tqlrat(int n, double* d, double* e2, int* ierr);

// Generalised real problem A x = lambda B x by the QZ algorithm.
void qzhes(int nm, int n, double* a, double* b, int matz, double* z);
void qzit(int nm, int n, double* a, double* b, double eps1, int matz, double* z, int* ierr);
void qzval(int nm, int n, double* a, double* b, double* alfr, double* alfi, double* beta, int matz,
           double* z);
void qzvec(int nm, int n, double* a, double* b, const double* alfr, const double* alfi,
           const double* beta, double* z);

}  // namespace ak_kernels
