// Scalar complex routines and the real helpers of the element engine that do not fit inline.
#include "algebra/complex_scalar.h"

#include <climits>
#include <cmath>

namespace ak_internal {

namespace {

constexpr double k_half_pi = 1.5707963267948966;
constexpr double k_ln2 = 0.6931471805599453;
constexpr double k_ln10 = 2.302585092994046;

inline void set(double& rr, double& ri, double re, double im) {
    rr = re;
    ri = im;
}

// Whole quotient nearest to q >= 0, the noise test of rem and mod: n is floor(q), plus 1 when the
// fraction is at least one half; the quotient counts as exact when n lies strictly within eps*q of
// q. The distance n - q is exact in doubles, whereas q + eps*q would round back onto n (0.3/0.1).
inline bool whole_within_noise(double q) {
    if (!(q >= 0)) return false;  // a negative quotient never passes
    double n = std::floor(q);
    if (q - n >= 0.5) n += 1.0;
    return std::fabs(n - q) < k_eps * q;
}

// sin(pi x), exact at the whole numbers and accurate for large x: the argument is reduced to
// [-1/2, 1/2] before the multiplication by pi.
double sinpi(double x) {
    if (!std::isfinite(x)) return NAN;
    double r = std::fmod(x, 2.0);  // exact, in (-2, 2)
    if (r > 1.0) r -= 2.0;
    if (r < -1.0) r += 2.0;  // now in [-1, 1]
    if (r > 0.5) r = 1.0 - r;
    if (r < -0.5) r = -1.0 - r;
    return std::sin(k_pi * r);
}

// 1 / (c + id) with Smith's scaling, so that the reciprocal functions do not overflow in c^2 + d^2
// where the result itself is representable. A real c gives (1/c, 0).
void c_recip(double c, double d, double& rr, double& ri) {
    if (d == 0) return set(rr, ri, 1.0 / c, 0.0);
    if (std::fabs(c) >= std::fabs(d)) {
        double r = d / c, den = c + d * r;
        return set(rr, ri, 1.0 / den, -r / den);
    }
    double r = c / d, den = c * r + d;
    set(rr, ri, r / den, -1.0 / den);
}

}  // namespace

// ---- real helpers ---------------------------------------------------------------------------------

double m_rem(double a, double b) {
    if (b == 0 || !std::isfinite(a) || !std::isfinite(b)) return NAN;
    double q = a / b;
    if (whole_within_noise(q)) return 0.0;
    return a - std::trunc(q) * b;
}

double m_mod(double a, double b) {
    if (b == 0 || !std::isfinite(a) || !std::isfinite(b)) return NAN;
    double q = a / b;
    if (whole_within_noise(q)) return 0.0;
    return a - std::floor(q) * b;
}

double m_sinc(double x) {
    if (x == 0) return 1.0;
    return sinpi(x) / (k_pi * x);
}

double m_pow2(double x) { return std::exp2(x); }

double m_pow2(double f, double e) {
    if (e == std::floor(e) && std::fabs(e) <= INT_MAX) return std::ldexp(f, static_cast<int>(e));
    return f * std::exp2(e);
}

// ---- complex basics ---------------------------------------------------------------------------------

void c_sign(double x, double y, double& rr, double& ri) {
    if (x == 0 && y == 0) return set(rr, ri, 0.0, 0.0);
    double m = c_abs(x, y);
    set(rr, ri, x / m, y / m);
}

void c_log(double x, double y, double& rr, double& ri) {
    double m = c_abs(x, y);
    if (m == 0) return set(rr, ri, -INFINITY, 0.0);
    double im = std::atan2(y, x);
    if (y == 0 && x < 0) im = std::fabs(im);  // a negative zero in y still gives +pi
    set(rr, ri, std::log(m), im);
}

void c_log2(double x, double y, double& rr, double& ri) {
    c_log(x, y, rr, ri);
    rr /= k_ln2;
    ri /= k_ln2;
}

void c_log10(double x, double y, double& rr, double& ri) {
    c_log(x, y, rr, ri);
    rr /= k_ln10;
    ri /= k_ln10;
}

void c_exp(double x, double y, double& rr, double& ri) {
    double e = std::exp(x);
    if (y == 0) return set(rr, ri, e, y);  // no Inf * 0 for a real argument
    set(rr, ri, e * std::cos(y), e * std::sin(y));
}

void c_sqrt(double x, double y, double& rr, double& ri) {
    double m = c_abs(x, y);
    double t = std::sqrt((std::fabs(x) + m) / 2);
    double re = t, im = t;  // both stay NaN for a NaN x
    if (x >= 0) re = t;
    if (x <= 0) im = (y < 0) ? -t : t;
    if (x < 0) re = y / im / 2;
    if (x > 0) im = y / re / 2;
    set(rr, ri, re, im);
}

void r_sqrt_c(double x, double& rr, double& ri) {
    if (x >= 0)
        set(rr, ri, std::sqrt(x), 0.0);
    else
        set(rr, ri, 0.0, std::sqrt(-x));
}

void c_pow(double x, double y, double p, double q, double& rr, double& ri) {
    double lr, li;  // logarithm of the base
    if (q == 0) {
        if (!std::isfinite(p)) return set(rr, ri, r_pow(x, p), 0.0);
        if (p >= 0 && p == std::floor(p) && p <= INT_MAX) {
            // Binary exponentiation: no logarithm, so whole powers of exact values stay exact.
            unsigned n = static_cast<unsigned>(p);
            double re = 1.0, im = 0.0, br = x, bi = y;
            while (n) {
                if (n & 1u) c_mul(re, im, br, bi, re, im);
                n >>= 1;
                if (n) c_mul(br, bi, br, bi, br, bi);
            }
            return set(rr, ri, re, im);
        }
        if (y == 0 && x >= 0) return set(rr, ri, r_pow(x, p), 0.0);
        if (y == 0 && x < 0) {
            lr = std::log(-x);
            li = k_pi;
            double er, ei;
            c_mul(lr, li, p, q, er, ei);
            return c_exp(er, ei, rr, ri);
        }
    }
    if (std::isnan(x)) return set(rr, ri, NAN, 0.0);
    if (x == 0 && y == 0) return set(rr, ri, 0.0, 0.0);
    c_log(x, y, lr, li);
    double er, ei;
    c_mul(lr, li, p, q, er, ei);
    c_exp(er, ei, rr, ri);
}

void c_pow2(double x, double y, double& rr, double& ri) {
    if (y == 0) return set(rr, ri, std::exp2(x), y);
    c_exp(x * k_ln2, y * k_ln2, rr, ri);
}

void c_sinc(double x, double y, double& rr, double& ri) {
    if (y == 0) return set(rr, ri, m_sinc(x), 0.0);
    double sr, si;
    c_sin(k_pi * x, k_pi * y, sr, si);
    c_div(sr, si, k_pi * x, k_pi * y, rr, ri);
}

// ---- trigonometric and hyperbolic ---------------------------------------------------------------------

void c_sin(double x, double y, double& rr, double& ri) {
    if (y == 0) return set(rr, ri, std::sin(x), y);
    set(rr, ri, std::sin(x) * std::cosh(y), std::cos(x) * std::sinh(y));
}

void c_cos(double x, double y, double& rr, double& ri) {
    if (y == 0) return set(rr, ri, std::cos(x), 0.0);
    set(rr, ri, std::cos(x) * std::cosh(y), -std::sin(x) * std::sinh(y));
}

// tan(x + iy) = (sin x cos x + i sinh y cosh y) / (cos^2 x + sinh^2 y): the denominator is a sum
// of squares, so it does not cancel near the poles.
void c_tan(double x, double y, double& rr, double& ri) {
    if (y == 0) return set(rr, ri, std::tan(x), y);
    if (x == 0) return set(rr, ri, x, std::tanh(y));
    double s = std::sin(x), c = std::cos(x);
    if (std::fabs(y) > 20) {  // sinh^2 y swamps cos^2 x; avoid overflow of sinh y cosh y
        double e = std::exp(-2 * std::fabs(y));
        return set(rr, ri, 4 * s * c * e, std::copysign(1.0, y));
    }
    double sh = std::sinh(y), ch = std::cosh(y);
    double den = c * c + sh * sh;
    set(rr, ri, s * c / den, sh * ch / den);
}

void c_sec(double x, double y, double& rr, double& ri) {
    double cr, ci;
    c_cos(x, y, cr, ci);
    c_recip(cr, ci, rr, ri);
}

void c_csc(double x, double y, double& rr, double& ri) {
    double sr, si;
    c_sin(x, y, sr, si);
    c_recip(sr, si, rr, ri);
}

void c_cot(double x, double y, double& rr, double& ri) {
    double tr, ti;
    c_tan(x, y, tr, ti);
    c_recip(tr, ti, rr, ri);
}

void c_sinh(double x, double y, double& rr, double& ri) {
    if (y == 0) return set(rr, ri, std::sinh(x), y);
    set(rr, ri, std::sinh(x) * std::cos(y), std::cosh(x) * std::sin(y));
}

void c_cosh(double x, double y, double& rr, double& ri) {
    if (y == 0) return set(rr, ri, std::cosh(x), 0.0);
    set(rr, ri, std::cosh(x) * std::cos(y), std::sinh(x) * std::sin(y));
}

// tanh(z) = -i tan(iz).
void c_tanh(double x, double y, double& rr, double& ri) {
    double tr, ti;
    c_tan(-y, x, tr, ti);
    set(rr, ri, ti, -tr);
}

void c_sech(double x, double y, double& rr, double& ri) {
    double cr, ci;
    c_cosh(x, y, cr, ci);
    c_recip(cr, ci, rr, ri);
}

void c_csch(double x, double y, double& rr, double& ri) {
    double sr, si;
    c_sinh(x, y, sr, si);
    c_recip(sr, si, rr, ri);
}

void c_coth(double x, double y, double& rr, double& ri) {
    double tr, ti;
    c_tanh(x, y, tr, ti);
    c_recip(tr, ti, rr, ri);
}

// ---- inverse functions -------------------------------------------------------------------------------
//
// asin and acos of x + iy with x, y >= 0 by the method of Hull, Fairgrieve and Tang (1997): the
// logarithmic identities rearranged so that no step cancels. The callers restore the signs and
// choose the side of the cut on the real axis the way the identities asin(z) = -i log(iz +
// sqrt(1 - z^2)) and acos(z) = -i log(z + i sqrt(1 - z^2)) do.

namespace {

struct AsinParts {
    double asin_re;  // real part of asin(x + iy), in [0, pi/2]
    double acos_re;  // real part of acos(x + iy), in [0, pi/2]
    double im;       // modulus of the imaginary part, the same for both
};

AsinParts asin_parts(double x, double y) {
    constexpr double b_cross = 0.6417, a_cross = 1.5;
    AsinParts out;
    double r = std::hypot(x + 1, y), s = std::hypot(x - 1, y);
    double a = 0.5 * (r + s);
    double b = x / a;
    double y2 = y * y;
    if (b <= b_cross) {
        out.asin_re = std::asin(b);
        out.acos_re = std::acos(b);
    } else if (x <= 1) {
        double d = std::sqrt(0.5 * (a + x) * (y2 / (r + x + 1) + (s + (1 - x))));
        out.asin_re = std::atan(x / d);
        out.acos_re = std::atan(d / x);
    } else {
        double apx = a + x;
        double d = y * std::sqrt(0.5 * (apx / (r + x + 1) + apx / (s + (x - 1))));
        out.asin_re = std::atan(x / d);
        out.acos_re = std::atan(d / x);
    }
    if (x < 1 && y < 1e-140) {
        // y^2 would underflow; the first-order term is exact to double precision here
        out.im = y / std::sqrt((1 - x) * (1 + x));
    } else if (a <= a_cross) {
        double am1 = (x < 1) ? 0.5 * (y2 / (r + x + 1) + y2 / (s + (1 - x)))
                             : 0.5 * (y2 / (r + x + 1) + (s + (x - 1)));
        out.im = std::log1p(am1 + std::sqrt(am1 * (a + 1)));
    } else if (a > 1e8) {
        out.im = std::log(a) + k_ln2;  // a + sqrt(a^2 - 1) is 2a to double precision
    } else {
        out.im = std::log(a + std::sqrt(a * a - 1));
    }
    return out;
}

// atanh(x + iy) with the cut on the real axis taken from above (imaginary part +pi/2 for any
// real x beyond 1 in size), as 0.5 log((1 + z) / (1 - z)) gives.
void atanh_core(double x, double y, double& rr, double& ri) {
    double ax = std::fabs(x);
    if (y == 0) {
        if (ax <= 1) return set(rr, ri, std::atanh(x), 0.0);
        return set(rr, ri, std::atanh(1 / x), k_half_pi);
    }
    double one_minus = 1 - x;
    double re = 0.25 * std::log1p(4 * x / (one_minus * one_minus + y * y));
    double im = 0.5 * std::atan2(2 * y, one_minus * (1 + x) - y * y);
    set(rr, ri, re, im);
}

}  // namespace

void c_asin(double x, double y, double& rr, double& ri) {
    if (y == 0) {
        if (std::fabs(x) <= 1 || std::isnan(x)) return set(rr, ri, std::asin(x), 0.0);
        double s = std::copysign(1.0, x);  // beyond 1: the identity lands below the cut for x > 1
        return set(rr, ri, s * k_half_pi, -s * std::acosh(std::fabs(x)));
    }
    AsinParts p = asin_parts(std::fabs(x), std::fabs(y));
    set(rr, ri, std::copysign(p.asin_re, x), std::copysign(p.im, y));
}

void c_acos(double x, double y, double& rr, double& ri) {
    if (y == 0) {
        if (std::fabs(x) <= 1 || std::isnan(x)) return set(rr, ri, std::acos(x), 0.0);
        if (x > 1) return set(rr, ri, 0.0, std::acosh(x));
        return set(rr, ri, k_pi, -std::acosh(-x));
    }
    AsinParts p = asin_parts(std::fabs(x), std::fabs(y));
    double re = (x < 0) ? k_pi - p.acos_re : p.acos_re;
    set(rr, ri, re, -std::copysign(p.im, y));
}

void c_atan(double x, double y, double& rr, double& ri) {
    // atan(z) = -i atanh(iz); on the imaginary-axis cut both signs of a zero x give real part
    // -pi/2, as (i/2) log((i + z) / (i - z)) does.
    if (y == 0) return set(rr, ri, std::atan(x), 0.0);
    if (x == 0 && std::fabs(y) > 1) x = -0.0;
    double ar, ai;
    if (x == 0 && std::fabs(y) <= 1) {
        ar = std::atanh(-y);
        ai = x;
    } else {
        double one_minus = 1 + y;  // 1 - u with u = -y the real part of iz
        ar = 0.25 * std::log1p(-4 * y / (one_minus * one_minus + x * x));
        ai = 0.5 * std::atan2(2 * x, one_minus * (1 - y) - x * x);
    }
    set(rr, ri, ai, -ar);
}

void c_asinh(double x, double y, double& rr, double& ri) {
    // asinh(z) = -i asin(iz)
    if (y == 0) return set(rr, ri, std::asinh(x), 0.0);
    double ar, ai;
    c_asin(-y, x, ar, ai);
    set(rr, ri, ai, -ar);
}

void c_acosh(double x, double y, double& rr, double& ri) {
    // log(z + sqrt(z + 1) sqrt(z - 1)): the real part is never negative, and on the real axis
    // below 1 the imaginary part is positive.
    if (y == 0) {
        if (x >= 1 || std::isnan(x)) return set(rr, ri, std::acosh(x), 0.0);
        if (x >= -1) return set(rr, ri, 0.0, std::acos(x));
        return set(rr, ri, std::acosh(-x), k_pi);
    }
    AsinParts p = asin_parts(std::fabs(x), std::fabs(y));
    double re_acos = (x < 0) ? k_pi - p.acos_re : p.acos_re;
    set(rr, ri, p.im, std::copysign(re_acos, y));
}

void c_atanh(double x, double y, double& rr, double& ri) { atanh_core(x, y, rr, ri); }

// The reciprocal-argument inverses: f(1/z) by the function above.
namespace {
template <void (*F)(double, double, double&, double&)>
void of_reciprocal(double x, double y, double& rr, double& ri) {
    double ir, ii;
    c_recip(x, y, ir, ii);
    F(ir, ii, rr, ri);
}
}  // namespace

void c_asec(double x, double y, double& rr, double& ri) { of_reciprocal<c_acos>(x, y, rr, ri); }
void c_acsc(double x, double y, double& rr, double& ri) { of_reciprocal<c_asin>(x, y, rr, ri); }
void c_acot(double x, double y, double& rr, double& ri) { of_reciprocal<c_atan>(x, y, rr, ri); }
void c_asech(double x, double y, double& rr, double& ri) { of_reciprocal<c_acosh>(x, y, rr, ri); }
void c_acsch(double x, double y, double& rr, double& ri) { of_reciprocal<c_asinh>(x, y, rr, ri); }
void c_acoth(double x, double y, double& rr, double& ri) { of_reciprocal<c_atanh>(x, y, rr, ri); }

}  // namespace ak_internal
