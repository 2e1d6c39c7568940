// Special functions on the C++ library's Bessel, Legendre and elliptic functions (real order and
// argument), continued to negative orders and arguments by the reflection and continuation
// formulas of Abramowitz and Stegun (9.1.2, 9.1.35-36, 9.6.2, 9.6.30-31, 10.4); Jacobi elliptic
// functions by the arithmetic-geometric mean (16.4); and number theory.
#include "arklib/higher_functions.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdio>
#include <cstring>
#include <numeric>
#include <string>
#include <vector>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"

namespace {

using cplx = std::complex<double>;
const double kPi = 3.14159265358979323846;

// Applies f element by element to a and b, a scalar beside an array being expanded; the result is
// real when every value is.
template <class F>
Mm pairwise(const char* function, const Mm& a, const Mm& b, F f) {
    a.warn_uninit();
    b.warn_uninit();
    if (error_numeric(a, function) || error_numeric(b, function)) return x_M;
    Mm A = mdouble(a), B = mdouble(b);
    if (A.pi || B.pi) {
        error("%s: real arguments expected", function);
        return x_M;
    }
    if (A.size() != 1 && B.size() != 1 && (A.ndims != B.ndims || !std::equal(A.dims, A.dims + 4, B.dims))) {
        error("%s: arguments must have the same size, or be scalars", function);
        return x_M;
    }
    const Mm& shape = A.size() != 1 ? A : B;
    std::vector<cplx> v(shape.size());
    bool complex = false;
    for (int k = 0; k < shape.size(); ++k) {
        v[k] = f(A.addr()[A.size() == 1 ? 0 : k], B.addr()[B.size() == 1 ? 0 : k]);
        complex = complex || v[k].imag() != 0;
    }
    Mm r(complex ? 1 : 0, 0, 0, shape.ndims, shape.dims, ak_double);
    for (int k = 0; k < shape.size(); ++k) {
        r.addr()[k] = v[k].real();
        if (complex) r.addi()[k] = v[k].imag();
    }
    return r;
}

bool whole(double v) { return v == std::floor(v); }

// The four Bessel functions for nu >= 0 and x >= 0.
double j_plain(double nu, double x) { return std::cyl_bessel_j(nu, x); }
double y_plain(double nu, double x) { return x == 0 ? -INFINITY : std::cyl_neumann(nu, x); }
double i_plain(double nu, double x) { return std::cyl_bessel_i(nu, x); }
double k_plain(double nu, double x) { return x == 0 ? INFINITY : std::cyl_bessel_k(nu, x); }

// Any real order, x >= 0: the reflection formulas for negative orders.
double j_real(double nu, double x) {
    if (nu >= 0) return j_plain(nu, x);
    const double v = -nu;
    if (whole(v)) return (std::fmod(v, 2) == 0 ? 1 : -1) * j_plain(v, x);
    return std::cos(v * kPi) * j_plain(v, x) - std::sin(v * kPi) * y_plain(v, x);
}
double y_real(double nu, double x) {
    if (nu >= 0) return y_plain(nu, x);
    const double v = -nu;
    if (whole(v)) return (std::fmod(v, 2) == 0 ? 1 : -1) * y_plain(v, x);
    return std::sin(v * kPi) * j_plain(v, x) + std::cos(v * kPi) * y_plain(v, x);
}
double i_real(double nu, double x) {
    if (nu >= 0 || whole(nu)) return i_plain(std::fabs(nu), x);
    return i_plain(-nu, x) + 2 / kPi * std::sin(-nu * kPi) * k_plain(-nu, x);
}
double k_real(double nu, double x) { return k_plain(std::fabs(nu), x); }

// Continuation to negative x along the upper half plane: z = |x| e^{i pi}.
cplx besselj_at(double nu, double x) {
    if (x >= 0) return j_real(nu, x);
    return std::polar(1.0, kPi * nu) * j_real(nu, -x);
}
cplx bessely_at(double nu, double x) {
    if (x >= 0) return y_real(nu, x);
    return std::polar(1.0, -kPi * nu) * y_real(nu, -x) + cplx(0, 2 * std::cos(kPi * nu)) * j_real(nu, -x);
}
cplx besseli_at(double nu, double x) {
    if (x >= 0) return i_real(nu, x);
    return std::polar(1.0, kPi * nu) * i_real(nu, -x);
}
cplx besselk_at(double nu, double x) {
    if (x >= 0) return k_real(nu, x);
    return std::polar(1.0, -kPi * nu) * k_real(nu, -x) - cplx(0, kPi) * i_real(nu, -x);
}

// Whole results come out with exact zero imaginary parts.
cplx tidy(cplx v, double nu) { return whole(nu) && std::fabs(v.imag()) < 1e-15 * std::abs(v) ? cplx(v.real(), 0) : v; }

double airy_value(int kind, double x) {
    const double s3 = std::sqrt(3.0);
    if (x == 0) {
        const double g13 = std::tgamma(1.0 / 3), g23 = std::tgamma(2.0 / 3);
        const double at0[4] = {1 / (std::pow(3.0, 2.0 / 3) * g23), -1 / (std::pow(3.0, 1.0 / 3) * g13),
                               1 / (std::pow(3.0, 1.0 / 6) * g23), std::pow(3.0, 1.0 / 6) / g13};
        return at0[kind];
    }
    const double t = std::fabs(x), z = 2.0 / 3 * t * std::sqrt(t);
    if (x > 0) {
        switch (kind) {
            case 0: return std::sqrt(t / 3) / kPi * k_plain(1.0 / 3, z);
            case 1: return -t / (kPi * s3) * k_plain(2.0 / 3, z);
            case 2: return std::sqrt(t / 3) * (i_real(-1.0 / 3, z) + i_plain(1.0 / 3, z));
            default: return t / s3 * (i_real(-2.0 / 3, z) + i_plain(2.0 / 3, z));
        }
    }
    switch (kind) {
        case 0: return std::sqrt(t) / 3 * (j_plain(1.0 / 3, z) + j_real(-1.0 / 3, z));
        case 1: return t / 3 * (j_plain(2.0 / 3, z) - j_real(-2.0 / 3, z));
        case 2: return std::sqrt(t / 3) * (j_real(-1.0 / 3, z) - j_plain(1.0 / 3, z));
        default: return t / s3 * (j_real(-2.0 / 3, z) + j_plain(2.0 / 3, z));
    }
}

// ---- number theory -----------------------------------------------------------------------------------

using u64 = unsigned long long;

u64 mul_mod(u64 a, u64 b, u64 m) { return static_cast<u64>(static_cast<unsigned __int128>(a) * b % m); }
u64 pow_mod(u64 a, u64 e, u64 m) {
    u64 r = 1;
    for (a %= m; e; e >>= 1, a = mul_mod(a, a, m))
        if (e & 1) r = mul_mod(r, a, m);
    return r;
}

// Miller-Rabin with the bases that decide every 64-bit number.
bool prime(u64 n) {
    if (n < 2) return false;
    for (u64 p : {2ULL, 3ULL, 5ULL, 7ULL, 11ULL, 13ULL, 17ULL, 19ULL, 23ULL, 29ULL, 31ULL, 37ULL}) {
        if (n % p == 0) return n == p;
    }
    u64 d = n - 1;
    int s = 0;
    while (d % 2 == 0) {
        d /= 2;
        ++s;
    }
    for (u64 a : {2ULL, 3ULL, 5ULL, 7ULL, 11ULL, 13ULL, 17ULL, 19ULL, 23ULL, 29ULL, 31ULL, 37ULL}) {
        u64 x = pow_mod(a, d, n);
        if (x == 1 || x == n - 1) continue;
        bool composite = true;
        for (int r = 1; r < s && composite; ++r) {
            x = mul_mod(x, x, n);
            if (x == n - 1) composite = false;
        }
        if (composite) return false;
    }
    return true;
}

bool whole_numbers(const char* function, const Mm& m, Mm& out, bool non_negative) {
    m.warn_uninit();
    if (error_numeric(m, function)) return false;
    out = mdouble(m);
    for (int k = 0; k < out.size(); ++k) {
        const double v = out.addr()[k];
        if (out.pi || !whole(v) || std::fabs(v) > 9007199254740992.0 || (non_negative && v < 0)) {
            error("%s: arguments must be %sintegers below 2^53", function, non_negative ? "non-negative " : "");
            return false;
        }
    }
    return true;
}

double gcd2(double a, double b, double* c = nullptr, double* d = nullptr) {
    // The extended Euclidean algorithm on the magnitudes, signs put back on the coefficients.
    double r0 = std::fabs(a), r1 = std::fabs(b), s0 = 1, s1 = 0, t0 = 0, t1 = 1;
    while (r1 != 0) {
        const double q = std::floor(r0 / r1);
        double tmp = r0 - q * r1;
        r0 = r1;
        r1 = tmp;
        tmp = s0 - q * s1;
        s0 = s1;
        s1 = tmp;
        tmp = t0 - q * t1;
        t0 = t1;
        t1 = tmp;
    }
    if (c) *c = a < 0 ? -s0 : s0;
    if (d) *d = b < 0 ? -t0 : t0;
    return r0;
}

Mm row_of(const std::vector<double>& v) {
    Mm r(0, 0, 0, 1, static_cast<int>(v.size()), ak_double);
    std::copy(v.begin(), v.end(), r.addr());
    return r;
}

// The continued-fraction approximation of x within tol.
void rational(double x, double tol, double& n, double& d) {
    if (!std::isfinite(x)) {
        n = x == x ? (x > 0 ? 1 : -1) : 0;
        d = 0;
        return;
    }
    double h0 = 1, h1 = std::floor(x), k0 = 0, k1 = 1, rest = x - std::floor(x);
    while (std::fabs(x - h1 / k1) > tol && rest != 0) {
        const double inv = 1 / rest, a = std::floor(inv);
        rest = inv - a;
        const double h2 = a * h1 + h0, k2 = a * k1 + k0;
        h0 = h1;
        h1 = h2;
        k0 = k1;
        k1 = k2;
    }
    n = h1;
    d = k1;
}

}  // namespace

Mm besselj(const Mm& nu, const Mm& x) {
    return pairwise("besselj", nu, x, [](double n, double v) { return tidy(besselj_at(n, v), n); });
}
Mm bessely(const Mm& nu, const Mm& x) {
    return pairwise("bessely", nu, x, [](double n, double v) { return tidy(bessely_at(n, v), n); });
}
Mm besseli(const Mm& nu, const Mm& x) {
    return pairwise("besseli", nu, x, [](double n, double v) { return tidy(besseli_at(n, v), n); });
}
Mm besselk(const Mm& nu, const Mm& x) {
    return pairwise("besselk", nu, x, [](double n, double v) { return besselk_at(n, v); });
}
Mm besselh(const Mm& nu, const Mm& x) { return besselh(nu, Mm(1.0), x); }
Mm besselh(const Mm& nu, const Mm& k, const Mm& x) {
    const double kind = scalar(k);
    if (kind != 1 && kind != 2) {
        error("besselh: kind must be 1 or 2");
        return x_M;
    }
    return pairwise("besselh", nu, x, [kind](double n, double v) {
        const cplx j = besselj_at(n, v), y = bessely_at(n, v);
        return kind == 1 ? j + cplx(0, 1) * y : j - cplx(0, 1) * y;
    });
}

Mm airy(const Mm& x) { return airy(Mm(0.0), x); }
Mm airy(const Mm& k, const Mm& x) {
    const double kind = scalar(k);
    if (kind != 0 && kind != 1 && kind != 2 && kind != 3) {
        error("airy: kind must be 0, 1, 2 or 3");
        return x_M;
    }
    return pairwise("airy", Mm(kind), x, [](double kd, double v) { return cplx(airy_value(static_cast<int>(kd), v), 0); });
}

Mm legendre(const Mm& n_arg, const Mm& x) {
    const double nd = scalar(n_arg);
    if (!(nd >= 0) || !whole(nd) || nd > 1000) {
        error("legendre: degree must be a non-negative integer");
        return x_M;
    }
    if (error_numeric(x, "legendre")) return x_M;
    Mm X = mdouble(x);
    const int n = static_cast<int>(nd), count = X.size();
    // One row per order m; the columns follow x (x's own shape after the first dimension for
    // arrays).
    int dims[4] = {n + 1, 1, 1, 1};
    int nd_out = 2;
    if (is_vector(X) || X.size() == 0) {
        dims[1] = count;
    } else {
        for (int d = 0; d < X.ndims && d < 3; ++d) dims[d + 1] = X.dims[d];
        nd_out = std::min(4, X.ndims + 1);
    }
    Mm r(0, 0, 0, nd_out, dims, ak_double);
    for (int k = 0; k < count; ++k) {
        const double v = X.addr()[k];
        if (!(std::fabs(v) <= 1)) {
            error("legendre: x must be within [-1, 1]");
            return x_M;
        }
        for (int m = 0; m <= n; ++m)
            r.addr()[m + static_cast<std::size_t>(k) * (n + 1)] =
                (m % 2 ? -1.0 : 1.0) * std::assoc_legendre(static_cast<unsigned>(n), static_cast<unsigned>(m), v);
    }
    return r;
}

Mm ellipke(const Mm& m) {
    Mm e;
    return ellipke(m, i_o, e);
}
Mm ellipke(const Mm& m, i_o_t, Mm& e) {
    if (error_numeric(m, "ellipke")) return x_M;
    Mm M = mdouble(m);
    Mm k(0, 0, 0, M.ndims, M.dims, ak_double);
    e = Mm(0, 0, 0, M.ndims, M.dims, ak_double);
    for (int j = 0; j < M.size(); ++j) {
        const double p = M.addr()[j];
        if (!(p >= 0 && p <= 1)) {
            error("ellipke: m must be within [0, 1]");
            return x_M;
        }
        k.addr()[j] = p == 1 ? INFINITY : std::comp_ellint_1(std::sqrt(p));
        e.addr()[j] = p == 1 ? 1.0 : std::comp_ellint_2(std::sqrt(p));
    }
    return k;
}

Mm ellipj(const Mm& u, const Mm& m, i_o_t, Mm& cn, Mm& dn) {
    Mm sn = pairwise("ellipj", u, m, [](double, double p) { return cplx(p >= 0 && p <= 1 ? 0 : 1, 0); });
    if (sn.pi) {
        error("ellipj: m must be within [0, 1]");
        return x_M;
    }
    cn = Mm(0, 0, 0, sn.ndims, sn.dims, ak_double);
    dn = Mm(0, 0, 0, sn.ndims, sn.dims, ak_double);
    Mm U = mdouble(u), M = mdouble(m);
    for (int j = 0; j < sn.size(); ++j) {
        const double uu = U.addr()[U.size() == 1 ? 0 : j], p = M.addr()[M.size() == 1 ? 0 : j];
        double s, c, d;
        if (p == 1) {  // the limit: hyperbolic functions
            s = std::tanh(uu);
            c = d = 1 / std::cosh(uu);
        } else {
            // Descending AGM, then back down the amplitude.
            double a[32], cc[32];
            a[0] = 1;
            double b = std::sqrt(1 - p);
            cc[0] = std::sqrt(p);
            int n = 0;
            while (std::fabs(cc[n]) > 1e-16 && n < 30) {
                a[n + 1] = (a[n] + b) / 2;
                cc[n + 1] = (a[n] - b) / 2;
                b = std::sqrt(a[n] * b);
                ++n;
            }
            double phi = std::ldexp(1.0, n) * a[n] * uu;
            for (int k = n; k > 0; --k) phi = (phi + std::asin(cc[k] / a[k] * std::sin(phi))) / 2;
            s = std::sin(phi);
            c = std::cos(phi);
            d = std::sqrt(1 - p * s * s);
        }
        sn.addr()[j] = s;
        cn.addr()[j] = c;
        dn.addr()[j] = d;
    }
    return sn;
}

Mm nchoosek(const Mm& n, const Mm& k_arg) {
    const double kd = scalar(k_arg);
    if (!(kd >= 0) || !whole(kd)) {
        error("nchoosek: k must be a non-negative integer");
        return x_M;
    }
    const int k = static_cast<int>(kd);
    if (n.size() == 1) {
        const double nn = scalar(n);
        if (!(nn >= 0) || !whole(nn)) {
            error("nchoosek: n must be a non-negative integer");
            return x_M;
        }
        if (k > nn) return Mm(0.0);
        double r = 1;
        const double kk = std::min<double>(k, nn - k);
        for (int j = 1; j <= kk; ++j) r = r * (nn - kk + j) / j;
        if (r > 9007199254740992.0) warning("nchoosek: Result may not be exact.");
        return Mm(std::round(r));
    }
    Mm v = mdouble(n);
    const int len = v.size();
    std::vector<std::vector<double>> rows;
    std::vector<int> pick(k);
    std::iota(pick.begin(), pick.end(), 0);
    if (k <= len) {
        for (;;) {
            std::vector<double> r;
            for (int p : pick) r.push_back(v.addr()[p]);
            rows.push_back(r);
            int i = k - 1;
            while (i >= 0 && pick[i] == len - k + i) --i;
            if (i < 0) break;
            ++pick[i];
            for (int j = i + 1; j < k; ++j) pick[j] = pick[j - 1] + 1;
            if (rows.size() > 10000000) {
                error("nchoosek: too many combinations");
                return x_M;
            }
        }
    }
    const int count = static_cast<int>(rows.size());
    Mm r(0, 0, 0, count, k, ak_double);
    for (int i = 0; i < count; ++i)
        for (int j = 0; j < k; ++j) r.addr()[i + static_cast<std::size_t>(j) * count] = rows[i][j];
    return r;
}

Mm factorial(const Mm& n) {
    Mm N;
    if (!whole_numbers("factorial", n, N, true)) return x_M;
    Mm r(0, 0, 0, N.ndims, N.dims, ak_double);
    for (int k = 0; k < N.size(); ++k) r.addr()[k] = N.addr()[k] > 170 ? INFINITY : std::round(std::tgamma(N.addr()[k] + 1));
    return r;
}

Mm primes(const Mm& n) {
    const double top = std::floor(scalar(n));
    if (top > 2e9) {
        error("primes: n is too large");
        return x_M;
    }
    std::vector<double> out;
    if (top >= 2) {
        const int m = static_cast<int>(top);
        std::vector<bool> composite(m + 1, false);
        for (long i = 2; i <= m; ++i) {
            if (composite[i]) continue;
            out.push_back(static_cast<double>(i));
            for (long j = i * i; j <= m; j += i) composite[j] = true;
        }
    }
    return row_of(out);
}

Mm isprime(const Mm& x) {
    Mm X;
    if (!whole_numbers("isprime", x, X, true)) return x_M;
    Mm r(0, 0, 0, X.ndims, X.dims, ak_double);
    r.flags.logical = 1;
    for (int k = 0; k < X.size(); ++k) r.addr()[k] = prime(static_cast<u64>(X.addr()[k])) ? 1 : 0;
    return r;
}

Mm factor(const Mm& n) {
    Mm N;
    if (!whole_numbers("factor", n, N, true) || N.size() != 1) {
        if (N.size() != 1 && N.size()) error("factor: a scalar expected");
        return x_M;
    }
    u64 v = static_cast<u64>(N.addr()[0]);
    std::vector<double> f;
    if (v < 4) return row_of({static_cast<double>(v)});
    for (u64 p = 2; p * p <= v; p += (p == 2 ? 1 : 2))
        while (v % p == 0) {
            f.push_back(static_cast<double>(p));
            v /= p;
        }
    if (v > 1) f.push_back(static_cast<double>(v));
    return row_of(f);
}

Mm gcd(const Mm& a, const Mm& b) {
    Mm c, d;
    return gcd(a, b, i_o, c, d);
}
Mm gcd(const Mm& a, const Mm& b, i_o_t, Mm& c, Mm& d) {
    Mm A, B;
    if (!whole_numbers("gcd", a, A, false) || !whole_numbers("gcd", b, B, false)) return x_M;
    Mm g = pairwise("gcd", A, B, [](double x, double y) { return cplx(gcd2(x, y), 0); });
    c = pairwise("gcd", A, B, [](double x, double y) {
        double cc;
        gcd2(x, y, &cc, nullptr);
        return cplx(cc, 0);
    });
    d = pairwise("gcd", A, B, [](double x, double y) {
        double dd;
        gcd2(x, y, nullptr, &dd);
        return cplx(dd, 0);
    });
    return g;
}

Mm lcm(const Mm& a, const Mm& b) {
    Mm A, B;
    if (!whole_numbers("lcm", a, A, true) || !whole_numbers("lcm", b, B, true)) return x_M;
    return pairwise("lcm", A, B, [](double x, double y) {
        const double g = gcd2(x, y);
        return cplx(g == 0 ? 0 : x / g * y, 0);
    });
}

Mm rat(const Mm& x, i_o_t, Mm& d) {
    if (error_numeric(x, "rat")) return x_M;
    Mm X = mdouble(x);
    double norm = 0;
    for (int k = 0; k < X.size(); ++k)
        if (std::isfinite(X.addr()[k])) norm += std::fabs(X.addr()[k]);
    return rat(x, Mm(1e-6 * norm), i_o, d);
}
Mm rat(const Mm& x, const Mm& tol, i_o_t, Mm& d) {
    if (error_numeric(x, "rat")) return x_M;
    Mm X = mdouble(x);
    const double t = scalar(tol);
    Mm n(0, 0, 0, X.ndims, X.dims, ak_double);
    d = Mm(0, 0, 0, X.ndims, X.dims, ak_double);
    for (int k = 0; k < X.size(); ++k) rational(X.addr()[k], t, n.addr()[k], d.addr()[k]);
    return n;
}

Mm rats(const Mm& x) {
    if (error_numeric(x, "rats")) return x_M;
    Mm X = mdouble(x);
    std::string out;
    for (int k = 0; k < X.size(); ++k) {
        const double v = X.addr()[k];
        double n, d;
        // Each element to within the precision its own size allows in a field of 13 characters.
        rational(v, std::max(1e-10, std::fabs(v) * 1e-10), n, d);
        char piece[64];
        if (d == 1)
            std::snprintf(piece, sizeof piece, "%.0f", n);
        else if (d == 0)
            std::snprintf(piece, sizeof piece, "%s", n > 0 ? "1/0" : n < 0 ? "-1/0" : "0/0");
        else
            std::snprintf(piece, sizeof piece, "%.0f/%.0f", n, d);
        char field[80];
        std::snprintf(field, sizeof field, "%13s", piece);
        out += field;
    }
    return TM(out.c_str());
}

AK_BUILTIN("besselj", besselj);
AK_BUILTIN("bessely", bessely);
AK_BUILTIN("besseli", besseli);
AK_BUILTIN("besselk", besselk);
AK_BUILTIN("besselh", AK_FN(besselh, const Mm&, const Mm&), AK_FN(besselh, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("airy", AK_FN(airy, const Mm&), AK_FN(airy, const Mm&, const Mm&));
AK_BUILTIN("legendre", legendre);
AK_BUILTIN("ellipke", AK_FN(ellipke, const Mm&), AK_FN(ellipke, const Mm&, i_o_t, Mm&));
AK_BUILTIN("ellipj", AK_FN(ellipj, const Mm&, const Mm&, i_o_t, Mm&, Mm&));
AK_BUILTIN("nchoosek", nchoosek);
AK_BUILTIN("factorial", factorial);
AK_BUILTIN("primes", primes);
AK_BUILTIN("isprime", isprime);
AK_BUILTIN("factor", factor);
AK_BUILTIN("gcd", AK_FN(gcd, const Mm&, const Mm&), AK_FN(gcd, const Mm&, const Mm&, i_o_t, Mm&, Mm&));
AK_BUILTIN("lcm", lcm);
AK_BUILTIN("rat", AK_FN(rat, const Mm&, i_o_t, Mm&), AK_FN(rat, const Mm&, const Mm&, i_o_t, Mm&));
AK_BUILTIN("rats", rats);
