// Elementary functions whose real input can have a complex result. Each scans a real input first:
// the result is complex when the input is, or when some element lies outside the function's real
// domain (a negative number for sqrt and log, a number beyond 1 in size for asin, ...). A matrix
// with one such element is complex throughout; NaN never makes a result complex.
//
// power(a, b) (declared with the arithmetic) follows the same rule: complex when an operand is,
// or, unless b is the scalar 2, when some element of a is negative: (-8)^(1/3) is complex,
// (-8)^2 is 64.
#pragma once
#include "arklib/matrix.h"

Mm msqrt(const Mm& a);
Mm sqrt(const Mm& a);  // the same as msqrt
Mm log(const Mm& a);
Mm log2(const Mm& a);
Mm log10(const Mm& a);
// [f, e] = log2(x): x = f .* 2 .^ e with 0.5 <= |f| < 1 (f = x, e = 0 for 0, Inf and NaN); real
// parts only.
Mm log2(const Mm& x, i_o_t, Mm& e);
Mm asin(const Mm& a);
Mm acos(const Mm& a);
Mm atanh(const Mm& a);
Mm acosh(const Mm& a);
Mm asech(const Mm& a);
Mm asec(const Mm& a);
Mm acsc(const Mm& a);
Mm acoth(const Mm& a);

// Logarithm and square root held to real storage: a negative element gives NaN.
Mm reallog(const Mm& a);
Mm realsqrt(const Mm& a);

// Both are power(a, b): despite its name realpow goes complex by the rule of power.
Mm realpow(const Mm& a, const Mm& b);
Mm dot_pow(const Mm& a, const Mm& b);
Mm realpow(const Mm& a);
Mm dot_pow(const Mm& a);
