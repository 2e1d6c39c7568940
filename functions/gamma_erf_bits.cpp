// Scalar special functions (gamma family, incomplete gamma, exponential integral, error functions)
// and the bit family on doubles.
#include "functions/gamma_erf_bits.h"

#include <cfloat>
#include <cmath>
#include <complex>
#include <cstdint>

namespace ak_internal {

namespace {

constexpr double k_pi = 3.141592653589793;
constexpr double k_euler = 0.5772156649015329;             // Euler-Mascheroni constant
constexpr double k_ln_sqrt_2pi = 0.9189385332046728;       // log(sqrt(2 pi))
constexpr double k_sqrt_pi = 1.7724538509055160;           // sqrt(pi)
constexpr double k_two_over_sqrt_pi = 1.1283791670955126;  // 2 / sqrt(pi)
constexpr double k_tiny = 1e-300;                          // keeps the modified Lentz method off 0

inline bool is_whole(double x) { return x == std::floor(x); }

// Stirling correction: log gamma(x) - ((x - 1/2) log x - x + log sqrt(2 pi)), for x >= 10, from
// the Bernoulli-number series (the next term is below 1e-19 relative at x = 10).
double stirling_delta(double x) {
    double r = 1.0 / x, r2 = r * r;
    double s = -3617.0 / 122400.0;
    s = s * r2 + 1.0 / 156.0;
    s = s * r2 - 691.0 / 360360.0;
    s = s * r2 + 1.0 / 1188.0;
    s = s * r2 - 1.0 / 1680.0;
    s = s * r2 + 1.0 / 1260.0;
    s = s * r2 - 1.0 / 360.0;
    s = s * r2 + 1.0 / 12.0;
    return s * r;
}

// log(1 + d) - d without the cancellation of the plain difference for small d.
double log1pmx(double d) {
    if (std::fabs(d) > 0.25) return std::log1p(d) - d;
    // -d^2/2 + d^3/3 - d^4/4 + ...
    double term = -d * d, sum = 0;
    for (int k = 2; k < 80; ++k) {
        double add = term / k;
        sum += add;
        if (std::fabs(add) <= 1e-17 * std::fabs(sum)) break;
        term *= -d;
    }
    return sum;
}

// exp(x^2) with the rounding error of x*x put back in, so that large x keep full accuracy.
double exp_x2(double x) {
    double x2 = x * x;
    double err = std::fma(x, x, -x2);
    return std::exp(x2) * (1.0 + err);
}

}  // namespace

// ---- gamma family ------------------------------------------------------------------------------------

double sf_gamma(double x) {
    if (x < 0 && std::isfinite(x) && is_whole(x)) return INFINITY;  // the poles
    return std::tgamma(x);
}

double sf_gammaln(double x) {
    int sign;
    return lgamma_r(x, &sign);
}

namespace {

// log gamma(a) - log gamma(a + b) for a >= 10 and b >= 0, without the cancellation of the two
// large logarithms.
double log_gamma_ratio(double a, double b) {
    double c = a + b;
    return stirling_delta(a) - stirling_delta(c) + b - (a - 0.5) * std::log1p(b / a) - b * std::log(c);
}

// gamma(a) gamma(b) / gamma(a + b) for positive a, b with a + b < 171, or NaN when an
// intermediate overflows or the result is not a normal number.
double beta_by_gamma(double a, double b) {
    double big = std::fmax(a, b), small = std::fmin(a, b);
    // gamma(big) / gamma(big + small) is at most about 1: no overflow in this order
    double r = std::tgamma(big) / std::tgamma(big + small) * std::tgamma(small);
    return (std::isfinite(r) && r > DBL_MIN) ? r : NAN;
}

}  // namespace

double sf_betaln(double a, double b) {
    if (std::isnan(a) || std::isnan(b)) return NAN;
    if (a < 0 || b < 0) return sf_gammaln(a) + sf_gammaln(b) - sf_gammaln(a + b);
    if (a == 0 || b == 0) return INFINITY;
    double big = std::fmax(a, b), small = std::fmin(a, b);
    if (big + small < 171) {
        double v = beta_by_gamma(a, b);
        if (!std::isnan(v)) return std::log(v);
    }
    if (big < 10) return sf_gammaln(a) + sf_gammaln(b) - sf_gammaln(a + b);
    if (small < 10) return sf_gammaln(small) + log_gamma_ratio(big, small);
    // both large: Stirling for all three gammas, arranged so no large terms cancel
    return k_ln_sqrt_2pi - 0.5 * std::log(small) - small * std::log1p(big / small) -
           (big - 0.5) * std::log1p(small / big) + stirling_delta(big) + stirling_delta(small) -
           stirling_delta(big + small);
}

double sf_beta(double a, double b) {
    if (std::isnan(a) || std::isnan(b)) return NAN;
    if (a == 0 || b == 0) return (a < 0 || b < 0) ? NAN : INFINITY;
    if (a < 0 || b < 0) return std::tgamma(a) * std::tgamma(b) / std::tgamma(a + b);
    if (a + b < 171) {
        double r = beta_by_gamma(a, b);
        if (!std::isnan(r)) return r;
    }
    return std::exp(sf_betaln(a, b));
}

// ---- regularized incomplete gamma ---------------------------------------------------------------------

namespace {

// x^a e^-x / gamma(a), the factor in front of both the series and the continued fraction.
double gamma_prefix(double a, double x) {
    if (a < 10) {
        double p = std::pow(x, a);
        if (x < 700 && std::isfinite(p) && p > 1e-290) return p * std::exp(-x) / std::tgamma(a);
        return std::exp(a * std::log(x) - x - std::lgamma(a));
    }
    // Stirling form: sqrt(a / 2pi) exp(a (log u + 1 - u) - delta(a)) with u = x / a
    return std::sqrt(a / (2 * k_pi)) * std::exp(a * log1pmx((x - a) / a) - stirling_delta(a));
}

// P(a, x) by the power series, for x < a + 1.
double gammainc_series(double a, double x) {
    double term = 1.0, sum = 1.0;
    for (int n = 1; n < 1000000; ++n) {
        term *= x / (a + n);
        sum += term;
        if (term < sum * 1e-17) break;
    }
    return gamma_prefix(a, x) / a * sum;
}

// Q(a, x) by its continued fraction (modified Lentz), for x >= a + 1.
double gammainc_upper_cf(double a, double x) {
    double b = x + 1 - a;
    double c = 1 / k_tiny, d = 1 / b, h = d;
    for (int i = 1; i < 1000000; ++i) {
        double an = -i * (i - a);
        b += 2;
        d = an * d + b;
        if (std::fabs(d) < k_tiny) d = k_tiny;
        c = b + an / c;
        if (std::fabs(c) < k_tiny) c = k_tiny;
        d = 1 / d;
        double del = d * c;
        h *= del;
        if (std::fabs(del - 1) < 1e-16) break;
    }
    return gamma_prefix(a, x) * h;
}

// P(a, x) for very large a from the leading terms of Temme's uniform expansion:
// Q = erfc(eta sqrt(a/2)) / 2 + exp(-a eta^2 / 2) / sqrt(2 pi a) * C0(eta).
double gammainc_uniform(double a, double x) {
    double lm1 = (x - a) / a;  // lambda - 1
    double eta = std::sqrt(-2 * log1pmx(lm1));
    if (lm1 < 0) eta = -eta;
    double c0;
    if (std::fabs(eta) < 1e-3)
        c0 = -1.0 / 3 + eta * (1.0 / 12 + eta * (-2.0 / 135 + eta / 864));
    else
        c0 = 1 / lm1 - 1 / eta;
    double r = std::exp(-0.5 * a * eta * eta) / std::sqrt(2 * k_pi * a) * c0;
    return 0.5 * std::erfc(-eta * std::sqrt(a / 2)) - r;
}

}  // namespace

double sf_gammainc(double x, double a) {
    if (std::isnan(x) || std::isnan(a) || x < 0 || a < 0) return NAN;
    if (a == 0) return 1.0;
    if (x == 0) return 0.0;
    if (std::isinf(x)) return 1.0;
    if (std::isinf(a)) return 0.0;
    if (a > 1e7) return gammainc_uniform(a, x);
    if (x < a + 1) return gammainc_series(a, x);
    return 1.0 - gammainc_upper_cf(a, x);
}

// ---- exponential integral -------------------------------------------------------------------------------

namespace {

using cplx = std::complex<double>;

// The sum of E1's power series, sum (-z)^k / (k k!), for a real or complex z.
template <class T>
T expint_series_sum(T z, int limit) {
    T term = 1.0, sum = 0.0;
    for (int k = 1; k < limit; ++k) {
        term *= -z / static_cast<double>(k);
        T add = term / static_cast<double>(k);
        sum += add;
        if (std::abs(add) < 1e-17 * std::abs(sum)) break;
    }
    return sum;
}

// E1 by its continued fraction, for a real or complex z away from 0.
template <class T>
T expint_cf(T z, int limit) {
    T b = z + 1.0, c = 1 / k_tiny, d = 1.0 / b, h = d;
    for (int i = 1; i < limit; ++i) {
        double an = -static_cast<double>(i) * i;
        b += 2.0;
        d = 1.0 / (an * d + b);
        c = b + an / c;
        T del = c * d;
        h *= del;
        if (std::abs(del - 1.0) < 1e-16) break;
    }
    return h * std::exp(-z);
}

// E1 by its power series, -gamma - log x - the sum, for 0 < x <= 1.
double expint_series(double x) { return -k_euler - std::log(x) - expint_series_sum(x, 200); }

// Ei(t) for t > 0: series gamma + log t + sum t^k / (k k!) up to 40, asymptotic e^t/t sum k!/t^k
// beyond.
double expint_ei(double t) {
    if (t > 40) {
        double term = 1.0, sum = 1.0;
        for (int k = 1; k < 60; ++k) {
            double next = term * k / t;
            if (next > term) break;  // the asymptotic series has started to diverge
            term = next;
            sum += term;
            if (term < 1e-17 * sum) break;
        }
        return std::exp(t) / t * sum;
    }
    double term = 1.0, sum = 0.0;
    for (int k = 1; k < 400; ++k) {
        term *= t / k;
        double add = term / k;
        sum += add;
        if (add < 1e-17 * sum) break;
    }
    return k_euler + std::log(t) + sum;
}

cplx expint_series_c(cplx z) {
    cplx sum = expint_series_sum(z, 2000);
    // principal logarithm with the cut taken from above, as for real negative arguments
    double lr = std::log(std::abs(z));
    double li = std::atan2(z.imag(), z.real());
    return -k_euler - cplx(lr, li) - sum;
}

}  // namespace

double sf_expint(double x) {
    if (std::isnan(x) || x < 0) return NAN;
    if (x == 0) return INFINITY;
    if (std::isinf(x)) return 0.0;
    return x <= 1 ? expint_series(x) : expint_cf(x, 10000);
}

void sf_expint_c(double x, double y, double& rr, double& ri) {
    if (y == 0 && !(x < 0)) {
        rr = sf_expint(x);
        ri = 0.0;
        return;
    }
    if (y == 0) {  // the negative real axis, from above
        rr = -expint_ei(-x);
        ri = -k_pi;
        return;
    }
    cplx z(x, y), e;
    double m = std::abs(z);
    // The series cancels for large |z| unless z is near the negative real axis.
    if (m <= 2 || (x < 0 && y * y < 4 * -x && m < 500))
        e = expint_series_c(z);
    else
        e = expint_cf(z, 20000);
    rr = e.real();
    ri = e.imag();
}

// ---- error functions ------------------------------------------------------------------------------------

double sf_erf(double x) { return std::erf(x); }

double sf_erfc(double x) { return std::erfc(x); }

double sf_erfcx(double x) {
    if (std::isnan(x)) return x;
    if (x < 26) {
        if (x < -26.7) return INFINITY;  // exp(x^2) overflows
        return exp_x2(x) * std::erfc(x);
    }
    // asymptotic series 1/(x sqrt pi) (1 - 1/(2x^2) + 3/(2x^2)^2 - ...), fast beyond 26
    double r = 1 / (2 * x * x), term = 1.0, sum = 1.0;
    for (int k = 1; k < 30; ++k) {
        term *= -(2 * k - 1) * r;
        sum += term;
        if (std::fabs(term) < 1e-17) break;
    }
    return sum / (x * k_sqrt_pi);
}

double sf_erfinv(double y) {
    if (std::isnan(y) || y < -1 || y > 1) return NAN;
    if (y == 1) return INFINITY;
    if (y == -1) return -INFINITY;
    if (y == 0) return y;
    double ay = std::fabs(y);
    // starting value from Winitzki's closed-form approximation (relative error about 2e-3)
    constexpr double a = 0.147;
    double q = 1 - ay;  // exact for ay >= 1/2
    double ln = std::log(q * (1 + ay));
    double t1 = 2 / (k_pi * a) + ln / 2;
    double x = std::sqrt(std::sqrt(t1 * t1 - ln / a) - t1);
    // Halley steps on erf(x) - y (or erfc(x) - (1 - y) near 1, where erf loses the digits)
    for (int it = 0; it < 8; ++it) {
        double f = (ay <= 0.5) ? std::erf(x) - ay : q - std::erfc(x);
        double fp = k_two_over_sqrt_pi * std::exp(-x * x);
        double step = f / (fp + x * f);
        x -= step;
        if (std::fabs(step) <= 1e-16 * x) break;
    }
    return std::copysign(x, y);
}

// ---- bit family ------------------------------------------------------------------------------------------

namespace {

constexpr double k_bit_max = 9007199254740991.0;  // 2^53 - 1
constexpr std::uint64_t k_bit_mask = (std::uint64_t(1) << k_bit_count) - 1;

inline std::uint64_t as_bits(double x) { return static_cast<std::uint64_t>(x); }

// A bit position 1..53, or 0 if p is not one.
inline int bit_position(double p) {
    if (!(p >= 1 && p <= k_bit_count) || !is_whole(p)) return 0;
    return static_cast<int>(p);
}

}  // namespace

bool sf_bit_ok(double x) { return x >= 0 && x <= k_bit_max && is_whole(x); }

double sf_bitand(double a, double b) {
    if (!sf_bit_ok(a) || !sf_bit_ok(b)) return NAN;
    return static_cast<double>(as_bits(a) & as_bits(b));
}

double sf_bitor(double a, double b) {
    if (!sf_bit_ok(a) || !sf_bit_ok(b)) return NAN;
    return static_cast<double>(as_bits(a) | as_bits(b));
}

double sf_bitxor(double a, double b) {
    if (!sf_bit_ok(a) || !sf_bit_ok(b)) return NAN;
    return static_cast<double>(as_bits(a) ^ as_bits(b));
}

double sf_bitcmp(double a, double n) {
    int bits = bit_position(n);
    if (!bits || !sf_bit_ok(a)) return NAN;
    std::uint64_t mask = (std::uint64_t(1) << bits) - 1;
    std::uint64_t v = as_bits(a);
    if (v > mask) return NAN;
    return static_cast<double>(v ^ mask);
}

double sf_bitget(double a, double bit) {
    int p = bit_position(bit);
    if (!p || !sf_bit_ok(a)) return NAN;
    return static_cast<double>((as_bits(a) >> (p - 1)) & 1u);
}

double sf_bitset(double a, double bit) {
    int p = bit_position(bit);
    if (!p || !sf_bit_ok(a)) return NAN;
    return static_cast<double>(as_bits(a) | (std::uint64_t(1) << (p - 1)));
}

double sf_bitreset(double a, double bit) {
    int p = bit_position(bit);
    if (!p || !sf_bit_ok(a)) return NAN;
    return static_cast<double>(as_bits(a) & ~(std::uint64_t(1) << (p - 1)));
}

double sf_bitshift(double a, double k) {
    if (!sf_bit_ok(a) || !std::isfinite(k) || !is_whole(k)) return NAN;
    if (k >= k_bit_count || k <= -k_bit_count) return 0.0;
    int s = static_cast<int>(k);
    std::uint64_t v = as_bits(a);
    v = (s >= 0) ? (v << s) & k_bit_mask : v >> -s;
    return static_cast<double>(v);
}

}  // namespace ak_internal
