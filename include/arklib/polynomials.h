// Polynomials as vectors of coefficients, highest power first.
#pragma once
#include "arklib/matrix.h"

// The polynomial with the given roots (a vector), or the characteristic polynomial of a square matrix.
Mm poly(const Mm& a);
// p at every element of x; with the structure S of polyfit also the error estimate delta; with mu,
// at (x - mu(1)) / mu(2).
Mm polyval(const Mm& p, const Mm& x);
Mm polyval(const Mm& p, const Mm& x, const Mm& S, i_o_t, Mm& delta);
Mm polyval(const Mm& p, const Mm& x, const Mm& S, const Mm& mu);
// p of a square matrix, in matrix products.
Mm polyvalm(const Mm& p, const Mm& x);
// The least-squares polynomial of degree n through (x, y); S holds R, df and normr for polyval; mu
// = [mean(x); std(x)] when asked for, the fit then being in (x - mu(1)) / mu(2).
Mm polyfit(const Mm& x, const Mm& y, const Mm& n);
Mm polyfit(const Mm& x, const Mm& y, const Mm& n, i_o_t, Mm& S);
Mm polyfit(const Mm& x, const Mm& y, const Mm& n, i_o_t, Mm& S, Mm& mu);
// The roots of p: eigenvalues of its companion matrix (leading zeros dropped, zero roots kept).
Mm roots(const Mm& p);
// Convolution (polynomial product) with the shape 'full' (default), 'same' or 'valid'.
Mm conv(const Mm& a, const Mm& b);
Mm conv(const Mm& a, const Mm& b, const Mm& shape);
// Polynomial division: y = conv(a, q) + r.
Mm deconv(const Mm& y, const Mm& a);
Mm deconv(const Mm& y, const Mm& a, i_o_t, Mm& r);
// Derivatives: of p, of the product a * b, and [q, d] of the quotient b / a.
Mm polyder(const Mm& p);
Mm polyder(const Mm& a, const Mm& b);
Mm polyder(const Mm& b, const Mm& a, i_o_t, Mm& d);
// The integral of p with constant k (0 by default).
Mm polyint(const Mm& p);
Mm polyint(const Mm& p, const Mm& k);
// Partial fractions of b(s) / a(s): residues r, poles p and direct term k; repeated poles take
// ascending powers in turn.
Mm residue(const Mm& b, const Mm& a, i_o_t, Mm& p, Mm& k);
