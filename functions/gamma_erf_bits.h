// Scalar special functions and the bit family on doubles, called per element by the element
// engine. Internal to the library. Inputs outside a function's domain give NaN (or the IEEE limit
// where the function has one): the element engine never reports domain problems.
#pragma once

namespace ak_internal {

// Gamma function; Inf at 0 and at the negative whole numbers (-Inf at -0).
double sf_gamma(double x);
// log|gamma(x)|; Inf at 0 and at the negative whole numbers.
double sf_gammaln(double x);
// Beta function gamma(a) gamma(b) / gamma(a + b), and its natural logarithm (of the modulus for
// negative arguments). Evaluated without overflow of the intermediate gammas.
double sf_beta(double a, double b);
double sf_betaln(double a, double b);
// Regularized lower incomplete gamma P(a, x), in the language's argument order gammainc(x, a).
// x >= 0 and a >= 0; P(0, x) = 1. NaN outside the domain.
double sf_gammainc(double x, double a);

// Exponential integral E1. The real form covers x >= 0 (E1(0) = Inf) and is NaN below 0, where
// E1 is complex: the complex form gives E1(-t + 0i) = -Ei(t) - i pi and E1 of any complex z with
// the principal branch (cut along the negative real axis).
double sf_expint(double x);
void sf_expint_c(double x, double y, double& rr, double& ri);

// Error function, complementary error function, the scaled form exp(x^2) erfc(x) (finite where
// erfc underflows) and the inverse of erf on [-1, 1] (+-Inf at +-1, NaN outside).
double sf_erf(double x);
double sf_erfc(double x);
double sf_erfcx(double x);
double sf_erfinv(double x);

// ---- bit family on doubles -----------------------------------------------------------------------
// Operands are whole numbers from 0 to 2^53 - 1 (flintmax - 1); bit positions count from 1 (the
// least significant) to 53. An operand outside that range gives NaN; the wrappers report it.
constexpr int k_bit_count = 53;
// 1 if x is a valid bit operand.
bool sf_bit_ok(double x);
double sf_bitand(double a, double b);
double sf_bitor(double a, double b);
double sf_bitxor(double a, double b);
// Complement of a in n bits (1 <= n <= 53); a must be below 2^n.
double sf_bitcmp(double a, double n);
double sf_bitget(double a, double bit);
double sf_bitset(double a, double bit);
double sf_bitreset(double a, double bit);
// a shifted left by k bits (right for negative k); bits above bit 53 are dropped.
double sf_bitshift(double a, double k);

}  // namespace ak_internal
