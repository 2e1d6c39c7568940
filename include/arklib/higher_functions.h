// Special functions beyond the element engine's, and number theory.
#pragma once
#include "arklib/matrix.h"

// Bessel functions of real order nu and real argument x, element by element (a scalar beside an
// array is expanded). A negative x gives the complex value where the order is not whole.
Mm besselj(const Mm& nu, const Mm& x);
Mm bessely(const Mm& nu, const Mm& x);
Mm besseli(const Mm& nu, const Mm& x);
Mm besselk(const Mm& nu, const Mm& x);
// Hankel functions: kind 1 (default) J + iY, kind 2 J - iY.
Mm besselh(const Mm& nu, const Mm& x);
Mm besselh(const Mm& nu, const Mm& k, const Mm& x);
// Airy functions of real x: k = 0 Ai (default), 1 Ai', 2 Bi, 3 Bi'.
Mm airy(const Mm& x);
Mm airy(const Mm& k, const Mm& x);
// The associated Legendre functions P(n, m, x) for m = 0..n, one row per m.
Mm legendre(const Mm& n, const Mm& x);
// Complete elliptic integrals of the first and second kind of parameter m (0 <= m <= 1).
Mm ellipke(const Mm& m);
Mm ellipke(const Mm& m, i_o_t, Mm& e);
// Jacobi elliptic functions sn, cn, dn of u and parameter m.
Mm ellipj(const Mm& u, const Mm& m, i_o_t, Mm& cn, Mm& dn);
// Binomial coefficient of scalars, or the rows of all k-element combinations of a vector.
Mm nchoosek(const Mm& n, const Mm& k);
Mm factorial(const Mm& n);
// The primes up to n, a test of each element, and the prime factors of n.
Mm primes(const Mm& n);
Mm isprime(const Mm& x);
Mm factor(const Mm& n);
// Greatest common divisor (with Bezout coefficients g = a c + b d) and least common multiple.
Mm gcd(const Mm& a, const Mm& b);
Mm gcd(const Mm& a, const Mm& b, i_o_t, Mm& c, Mm& d);
Mm lcm(const Mm& a, const Mm& b);
// Rational approximations: [n, d] = rat(x, tol) from continued fractions; rats(x) as text.
Mm rat(const Mm& x, i_o_t, Mm& d);
Mm rat(const Mm& x, const Mm& tol, i_o_t, Mm& d);
Mm rats(const Mm& x);
