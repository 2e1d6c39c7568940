// Scalar arithmetic on complex values held as split (re, im) doubles, and the per-element real
// helpers of the element engine. A complex value is always two doubles, never a record, because
// matrix storage keeps the real and imaginary halves in separate arrays.
//
// Conventions: inputs by value, results through references (which may alias the inputs: every
// routine reads all of its inputs before it writes a result).
#pragma once
#include <cmath>

namespace ak_internal {

constexpr double k_eps = 2.220446049250313e-16;  // 2^-52
constexpr double k_pi = 3.141592653589793;       // bit pattern 0x400921FB54442D18
constexpr double k_2pi = 6.283185307179586;      // bit pattern 0x401921FB54442D18

// ---- real helpers ---------------------------------------------------------------------------------

// Real power: an exponent of exactly 2 is a plain product, anything else goes to pow.
inline double r_pow(double x, double y) { return y == 2.0 ? x * x : std::pow(x, y); }

// The larger of two reals: a NaN loses to any number, in either place.
inline double max2(double a, double b) {
    if (a > b) return a;
    if (b > a) return b;
    return std::isnan(b) ? a : b;
}
// The smaller of two reals, the mirror of max2.
inline double min2(double a, double b) {
    if (a < b) return a;
    if (b < a) return b;
    return std::isnan(b) ? a : b;
}

// Halves go away from zero. Same value as floor(x + 0.5) (ceil(x - 0.5) below 0) in exact
// arithmetic, without the rounding of the sum that would move 0.49999999999999994 or 2^52+1.
inline double m_round(double x) {
    if (x > 0) {
        double f = std::floor(x);
        return (x - f >= 0.5) ? f + 1.0 : f;
    }
    double c = std::ceil(x);
    return (c - x >= 0.5) ? c - 1.0 : c;
}

inline double m_fix(double x) { return std::trunc(x); }

// -1, 0 or 1; NaN stays NaN.
inline double m_sign(double x) { return x > 0 ? 1.0 : (x < 0 ? -1.0 : (x == 0 ? 0.0 : x)); }

// Remainder after division with the sign of a; NaN for b = 0 or a non-finite operand. A positive
// quotient within eps of a whole number counts as exact and gives 0 (rem(0.3, 0.1) is 0).
double m_rem(double a, double b);
// Modulus after division with the sign of b; same NaN rules and noise absorption as m_rem.
double m_mod(double a, double b);

// sin(pi x) / (pi x), 1 at 0.
double m_sinc(double x);
// 2^x, and f * 2^e (exact scaling when e is a whole number).
double m_pow2(double x);
double m_pow2(double f, double e);

// Real forms of the reciprocal functions and their inverses. Out-of-domain input gives NaN
// (the complex form is used when the caller has decided the result is complex).
inline double r_sec(double x) { return 1.0 / std::cos(x); }
inline double r_csc(double x) { return 1.0 / std::sin(x); }
inline double r_cot(double x) { return 1.0 / std::tan(x); }
inline double r_sech(double x) { return 1.0 / std::cosh(x); }
inline double r_csch(double x) { return 1.0 / std::sinh(x); }
inline double r_coth(double x) { return 1.0 / std::tanh(x); }
inline double r_asec(double x) { return std::acos(1.0 / x); }
inline double r_acsc(double x) { return std::asin(1.0 / x); }
inline double r_acot(double x) { return std::atan(1.0 / x); }
inline double r_asech(double x) { return std::acosh(1.0 / x); }
inline double r_acsch(double x) { return std::asinh(1.0 / x); }
inline double r_acoth(double x) { return std::atanh(1.0 / x); }
// Phase angle of a real: 0 for x >= 0, pi below 0.
inline double r_angle(double x) { return std::atan2(0.0, x); }

// ---- complex basics ---------------------------------------------------------------------------------

// Modulus: the larger part scales the smaller so the squares cannot overflow.
inline double c_abs(double x, double y) {
    double ax = std::fabs(x), ay = std::fabs(y);
    if (ax > ay) {
        double t = y / x;
        return ax * std::sqrt(1.0 + t * t);
    }
    if (y == 0 && !std::isnan(x)) return 0.0;
    if (std::isinf(ax) && std::isinf(ay)) return ax;  // the ratio would give NaN
    double t = x / y;
    return ay * std::sqrt(1.0 + t * t);
}

inline void c_mul(double a, double b, double c, double d, double& rr, double& ri) {
    double re = a * c - b * d;
    double im = a * d + b * c;
    rr = re;
    ri = im;
}

// (a + ib) / (c + id). A real divisor divides each part and leaves a zero imaginary part zero,
// so a real value divided by 0 does not gain a NaN imaginary part. No scaling.
inline void c_div(double a, double b, double c, double d, double& rr, double& ri) {
    if (d != 0) {
        double den = c * c + d * d;
        double re = (c * a + d * b) / den;
        double im = (c * b - d * a) / den;
        rr = re;
        ri = im;
    } else {
        double re = a / c;
        ri = (b == 0) ? 0.0 : b / c;
        rr = re;
    }
}

// Squared modulus, the comparison key of the complex larger-of-two and of max/min along a dim.
inline double c_abs2(double x, double y) { return x * x + y * y; }

// The larger of two complex values by modulus: a wins unless b is strictly larger, so equal
// moduli and NaN keep a.
inline void c_max2(double ar, double ai, double br, double bi, double& rr, double& ri) {
    if (c_abs2(br, bi) > c_abs2(ar, ai)) {
        rr = br;
        ri = bi;
    } else {
        rr = ar;
        ri = ai;
    }
}
inline void c_min2(double ar, double ai, double br, double bi, double& rr, double& ri) {
    if (c_abs2(br, bi) < c_abs2(ar, ai)) {
        rr = br;
        ri = bi;
    } else {
        rr = ar;
        ri = ai;
    }
}

// Phase angle.
inline double c_angle(double x, double y) { return std::atan2(y, x); }

// Rounds each part on its own (fix, floor and ceil of a complex value also work part by part).
inline void c_round(double x, double y, double& rr, double& ri) {
    rr = m_round(x);
    ri = m_round(y);
}

// z / |z|, 0 for z = 0.
void c_sign(double x, double y, double& rr, double& ri);

// Natural logarithm: (-Inf, 0) at 0; a negative real with a zero imaginary part of either sign
// has the imaginary part +pi.
void c_log(double x, double y, double& rr, double& ri);
void c_log2(double x, double y, double& rr, double& ri);
void c_log10(double x, double y, double& rr, double& ri);
void c_exp(double x, double y, double& rr, double& ri);

// Square root of a complex value, and of a real value whose result is stored as complex
// (a negative x gives (0, sqrt(-x))).
void c_sqrt(double x, double y, double& rr, double& ri);
void r_sqrt_c(double x, double& rr, double& ri);

// Logarithm of a real whose result is stored as complex: c_log(x, 0.0).
inline void r_log_c(double x, double& rr, double& ri) { c_log(x, 0.0, rr, ri); }

// (x + iy) ^ (p + iq). A whole non-negative real exponent runs binary exponentiation, so (0, 1)^2
// is exactly (-1, 0); other exponents go through the logarithm.
void c_pow(double x, double y, double p, double q, double& rr, double& ri);

// 2^z, and sin(pi z) / (pi z) with 1 at 0.
void c_pow2(double x, double y, double& rr, double& ri);
void c_sinc(double x, double y, double& rr, double& ri);

// ---- complex trigonometric and hyperbolic functions --------------------------------------------------
void c_sin(double x, double y, double& rr, double& ri);
void c_cos(double x, double y, double& rr, double& ri);
void c_tan(double x, double y, double& rr, double& ri);
void c_sec(double x, double y, double& rr, double& ri);
void c_csc(double x, double y, double& rr, double& ri);
void c_cot(double x, double y, double& rr, double& ri);
void c_sinh(double x, double y, double& rr, double& ri);
void c_cosh(double x, double y, double& rr, double& ri);
void c_tanh(double x, double y, double& rr, double& ri);
void c_sech(double x, double y, double& rr, double& ri);
void c_csch(double x, double y, double& rr, double& ri);
void c_coth(double x, double y, double& rr, double& ri);

// Inverses by the usual logarithmic identities (asin(z) = -i log(iz + sqrt(1 - z^2)), ...), so a
// real argument outside the real domain lands on the same side of the cut as those formulas give:
// asin(2) = pi/2 - 1.3170i, acos(2) = 1.3170i, acosh(0.5) = 1.0472i.
void c_asin(double x, double y, double& rr, double& ri);
void c_acos(double x, double y, double& rr, double& ri);
void c_atan(double x, double y, double& rr, double& ri);
void c_asec(double x, double y, double& rr, double& ri);
void c_acsc(double x, double y, double& rr, double& ri);
void c_acot(double x, double y, double& rr, double& ri);
void c_asinh(double x, double y, double& rr, double& ri);
void c_acosh(double x, double y, double& rr, double& ri);
void c_atanh(double x, double y, double& rr, double& ri);
void c_asech(double x, double y, double& rr, double& ri);
void c_acsch(double x, double y, double& rr, double& ri);
void c_acoth(double x, double y, double& rr, double& ri);

}  // namespace ak_internal
