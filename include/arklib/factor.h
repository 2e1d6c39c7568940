// Eigenvalues, singular values and the orthogonal and Schur-type factorisations, with what is built
// on them. Forms with output references return the first output and write the others.
#pragma once
#include "arklib/matrix.h"

// e = eig(a); [V, D] = eig(a); eig(a, "nobalance") without balancing (any string does); eig(a, b)
// for the generalised problem a x = lambda b x.
Mm eig(const Mm& a);
Mm eig(const Mm& a, i_o_t, Mm& D);
Mm eig(const Mm& a, const Mm& b);
Mm eig(const Mm& a, const Mm& b, i_o_t, Mm& D);
Mm eig();
// [AA, BB, Q, Z, V] = qz(a, b): the real generalised Schur form Q*a*Z = AA (quasi-triangular),
// Q*b*Z = BB (triangular), and the right eigenvectors V (a*V = b*V*D, unit columns). The
// references carry every output (the first is also returned); shorter forms give the first ones.
Mm qz(const Mm& a, const Mm& b);
Mm qz(const Mm& a, const Mm& b, i_o_t, Mm& AA, Mm& BB);
Mm qz(const Mm& a, const Mm& b, i_o_t, Mm& AA, Mm& BB, Mm& Q);
Mm qz(const Mm& a, const Mm& b, i_o_t, Mm& AA, Mm& BB, Mm& Q, Mm& Z);
Mm qz(const Mm& a, const Mm& b, i_o_t, Mm& AA, Mm& BB, Mm& Q, Mm& Z, Mm& V);
Mm qzval(const Mm& a, const Mm& b);  // the same as eig(a, b)
Mm eig_D(const Mm& a);  // D of [V, D] = eig(a)
Mm eig_W(const Mm& a);  // V of [V, D] = eig(a)

// s = svd(a); [U, S, V] = svd(a); [U, S, V] = svd(a, 0) with U of min(m, n) columns.
Mm svd(const Mm& a);
Mm svd(const Mm& a, i_o_t, Mm& S, Mm& V);
Mm svd(const Mm& a, const Mm& econ, i_o_t, Mm& S, Mm& V);
Mm svd();
Mm svd_U(const Mm& a);
Mm svd_S(const Mm& a);
Mm svd_W(const Mm& a);

// norm(a) is norm(a, 2); p may be 1, 2, Inf, -Inf (vectors), any real (vectors), "inf" or "fro".
Mm norm(const Mm& a);
Mm norm(const Mm& a, const Mm& p);
Mm norm();
Mm cond(const Mm& a);
Mm cond();
Mm rank(const Mm& a);
Mm rank(const Mm& a, const Mm& tol);
Mm rank();
Mm null(const Mm& a);
Mm null();
Mm orth(const Mm& a);
Mm orth();
Mm pinv(const Mm& a);
Mm pinv(const Mm& a, const Mm& tol);
Mm pinv();

// T = schur(a); [U, T] = schur(a): a = U T U' with T quasi-triangular (real a) or triangular.
Mm schur(const Mm& a);
Mm schur(const Mm& a, i_o_t, Mm& T);
Mm schur_U(const Mm& a);
Mm schur_T(const Mm& a);
// H = hess(a); [P, H] = hess(a): a = P H P' with H upper Hessenberg.
Mm hess(const Mm& a);
Mm hess(const Mm& a, i_o_t, Mm& H);
// B = balance(a); [T, B] = balance(a): B = T \ a * T.
Mm balance(const Mm& a);
Mm balance(const Mm& a, i_o_t, Mm& B);
// [U1, T1] = rsf2csf(U, T): the real Schur form made complex triangular.
Mm rsf2csf(const Mm& U, const Mm& T, i_o_t, Mm& T1);
// [V1, D1] = cdf2rdf(V, D): conjugate pairs of a complex diagonal form as real 2 x 2 blocks.
Mm cdf2rdf(const Mm& V, const Mm& D, i_o_t, Mm& D1);
// s = condeig(a): condition numbers of the eigenvalues; [V, D, s] = condeig(a).
Mm condeig(const Mm& a);
Mm condeig(const Mm& a, i_o_t, Mm& D);
Mm condeig(const Mm& a, i_o_t, Mm& D, Mm& s);
// X with a X + X b = c (Bartels-Stewart); lyap and sylv are forms of it.
Mm axxbc(const Mm& a, const Mm& b, const Mm& c);
Mm axxbc(const Mm& a);
Mm axxbc(const Mm& a, const Mm& b);
Mm lyap(const Mm& a, const Mm& c);              // a X + X a' = -c
Mm lyap(const Mm& a, const Mm& b, const Mm& c);  // a X + X b = -c
Mm lyap(const Mm& a);
Mm sylv(const Mm& a, const Mm& b, const Mm& c);  // a X + X b = c
Mm sylv(const Mm& a);
Mm sylv(const Mm& a, const Mm& b);
// a ^ p for powers that are not whole and non-negative, and s ^ A; called by mpower.
Mm ak_matrix_power(const Mm& a, const Mm& p);

// R = qr(a); [Q, R] = qr(a); [Q, R, E] = qr(a) with column pivoting, a E = Q R; a second input
// gives the economy size (and E as a vector).
Mm qr(const Mm& a);
Mm qr(const Mm& a, i_o_t, Mm& R);
Mm qr(const Mm& a, i_o_t, Mm& R, Mm& E);
Mm qr(const Mm& a, const Mm& econ);
Mm qr(const Mm& a, const Mm& econ, i_o_t, Mm& R);
Mm qr(const Mm& a, const Mm& econ, i_o_t, Mm& R, Mm& E);
// [Q1, R1] after deleting column j of a = Q R, or inserting x before column j.
Mm qrdelete(const Mm& Q, const Mm& R, const Mm& j, i_o_t, Mm& R1);
Mm qrinsert(const Mm& Q, const Mm& R, const Mm& j, const Mm& x, i_o_t, Mm& R1);
// G = givens(x, y) with G [x; y] = [*; 0]; [c, s] = givens(x, y); givens([x y]).
Mm givens(const Mm& x);
Mm givens(const Mm& x, const Mm& y);
Mm givens(const Mm& x, const Mm& y, i_o_t, Mm& s);
// [G, y] = planerot(x): G x = y = [norm(x); 0].
Mm planerot(const Mm& x);
Mm planerot(const Mm& x, i_o_t, Mm& y);
// The largest principal angle between the column spaces of a and b.
Mm subspace(const Mm& a, const Mm& b);
Mm subspace(const Mm& a);
// Reduced row echelon form, with the pivot columns in jb.
Mm rref(const Mm& a);
Mm rref(const Mm& a, const Mm& tol);
Mm rref(const Mm& a, i_o_t, Mm& jb);
Mm rref(const Mm& a, const Mm& tol, i_o_t, Mm& jb);
