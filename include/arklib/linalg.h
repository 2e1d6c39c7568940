// Linear solvers and factorisations: the matrix divisions, inverse, determinant, condition, LU and
// Cholesky factors, and sparse solves.
#pragma once
#include "arklib/matrix.h"

// 1 when m is a square double matrix equal to its conjugate transpose to within the absolute
// tolerance 10 * eps on every element; 0 otherwise (a non-square m is reported).
int ishermitian(const Mm& m);

// a \ b: element-wise for a scalar a; a square a by LU (symmetric real matrices by the symmetric
// indefinite factorisation); a rectangular a in the least-squares sense by QR with column pivoting;
// a sparse a through the sparse LU of lusolve. A singular a gives what falls out, without a warning.
Mm mldivide(const Mm& a, const Mm& b);
Mm mldivide(const Mm& a);
Mm mldivide();
Mm invdiv(const Mm& a, const Mm& b);  // the same as mldivide
Mm invdiv(const Mm& a);
Mm invdiv();
// Solves the sparse square system a x = b with the column order of the permutation matrix q.
Mm lusolve(const Mm& a, const Mm& b, const Mm& q);
Mm lusolve(const Mm& a);
Mm lusolve(const Mm& a, const Mm& b);

Mm inv(const Mm& a);
Mm det(const Mm& a);
Mm rcond(const Mm& a);  // reciprocal condition estimate in the 1-norm
// lu(a): the packed factors of elimination with partial pivoting (negated multipliers below the
// diagonal); [L, U] = lu(a) with L row-permuted so that L * U = a; [L, U, P] = lu(a) with L lower
// triangular and L * U = P * a.
Mm lu(const Mm& a);
Mm lu(const Mm& a, i_o_t, Mm& U);
Mm lu(const Mm& a, i_o_t, Mm& U, Mm& P);
Mm lu_L(const Mm& a);
Mm lu_U(const Mm& a);
// R with R' * R = a, from the upper triangle of a; [R, p] = chol(a) gives the factor of the largest
// leading positive definite block and p, the order that failed plus one (0 on success).
Mm chol(const Mm& a);
Mm chol(const Mm& a, i_o_t, Mm& p);
// Forms without inputs, which only report "f does not accept 0 inputs".
Mm inv();
Mm det();
Mm rcond();
Mm lu();
Mm chol();
// a / b for a matrix b: (b' \ a')'. Called by mrdivide.
Mm ak_right_divide(const Mm& a, const Mm& b);
