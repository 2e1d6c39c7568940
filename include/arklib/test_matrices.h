// Test matrices of the literature, and matrices built from vectors.
#pragma once
#include "arklib/matrix.h"

// The magic square of order n: rows, columns and both diagonals sum to n (n^2 + 1) / 2 (n other than 2).
Mm magic(const Mm& n);
Mm hilb(const Mm& n);
// The exact inverse of hilb(n), in whole numbers.
Mm invhilb(const Mm& n);
// The symmetric Pascal matrix of binomial coefficients.
Mm pascal(const Mm& n);
// The 8 x 8 symmetric eigenvalue test matrix with a double, a nearly equal and a zero eigenvalue.
Mm rosser();
// The symmetric tridiagonal matrix with |i - (n+1)/2| on the diagonal and ones beside it.
Mm wilkinson(const Mm& n);
// Columns are the powers of c, highest first.
Mm vander(const Mm& c);
Mm toeplitz(const Mm& c);
Mm toeplitz(const Mm& c, const Mm& r);
Mm hankel(const Mm& c);
Mm hankel(const Mm& c, const Mm& r);
// The companion matrix of the polynomial p: its eigenvalues are the roots of p.
Mm compan(const Mm& p);
// Sylvester's Hadamard matrix of order n, a power of 2.
Mm hadamard(const Mm& n);
// gallery('minij' | 'lehmer' | 'moler' | 'frank' | 'ris' | 'tridiag', n), and
// gallery('tridiag', n, sub, diag, super).
Mm gallery(const Mm& name, const Mm& n);
Mm gallery(const Mm& name, const Mm& n, const Mm& sub, const Mm& diag, const Mm& super);
