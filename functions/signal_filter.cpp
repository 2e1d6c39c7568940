// Digital filters, two-dimensional convolution, correlation, frequency response, windows and
// detrending.
#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>
#include <vector>

#include "arklib/arith.h"
#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/signal.h"
#include "arklib/subscript.h"
#include "functions/signal_internal.h"

using ak_signal::numeric_input;
using cplx = std::complex<double>;

namespace {

int extent(const Mm& x, int dim) { return dim < x.ndims ? x.dims[dim] : 1; }

void blocks(const Mm& x, int dim, int& inner, int& outer) {
    inner = 1;
    outer = 1;
    for (int d = 0; d < x.ndims; ++d) {
        if (d < dim) inner *= x.dims[d];
        if (d > dim) outer *= x.dims[d];
    }
}

double re_at(const Mm& m, int k) { return m.addr()[k]; }
double im_at(const Mm& m, int k) { return m.pi ? m.addi()[k] : 0.0; }

// A filter without feedback, as the sum of its taps: the same values as the state form below,
// but each output is an independent dot product, which the compiler can vectorise. An initial
// state value i reaches the output at sample i; the final states hold the taps that still await
// the last inputs.
template <class T>
void run_fir(const std::vector<T>& b, const T* x, std::size_t xs, T* y, std::size_t ys, int n, std::vector<T>& z) {
    const int order = static_cast<int>(z.size());
    for (int k = 0; k < order; ++k) {
        T s = z[k];
        for (int j = 0; j <= k; ++j) s += b[j] * x[(k - j) * xs];
        y[k * ys] = s;
    }
    const T* taps = b.data();
    if (xs == 1 && ys == 1) {
        // Eight outputs at a time, each in its own accumulator: the taps run once over the eight,
        // which the compiler turns into vector multiply-adds, and every output still sums its taps
        // in order.
        constexpr int lanes = 8;
        int k = order;
        for (; k + lanes <= n; k += lanes) {
            T acc[lanes] = {};
            for (int j = 0; j <= order; ++j) {
                const T w = taps[j];
                const T* in = x + k - j;
                for (int i = 0; i < lanes; ++i) acc[i] += w * in[i];
            }
            for (int i = 0; i < lanes; ++i) y[k + i] = acc[i];
        }
        for (; k < n; ++k) {
            T s = T(0);
            for (int j = 0; j <= order; ++j) s += taps[j] * x[k - j];
            y[k] = s;
        }
    } else {
        for (int k = order; k < n; ++k) {
            T s = T(0);
            for (int j = 0; j <= order; ++j) s += taps[j] * x[(k - j) * xs];
            y[k * ys] = s;
        }
    }
    for (int i = 0; i < order; ++i) {
        T s = T(0);
        for (int j = i + 1; j <= order; ++j) s += b[j] * x[(n + i - j) * xs];
        z[i] = s;
    }
}

// One vector through the transposed direct form II: y[k] = b0 x[k] + z0, then each state takes
// the next one plus its share of the input and of the output. A filter without feedback skips
// the a terms.
template <class T>
void run_filter(const std::vector<T>& b, const std::vector<T>& a, bool fir, const T* x, std::size_t xs,
                T* y, std::size_t ys, int n, std::vector<T>& z) {
    const std::size_t order = z.size();
    if (fir && static_cast<std::size_t>(n) > order) {
        run_fir(b, x, xs, y, ys, n, z);
        return;
    }
    for (int k = 0; k < n; ++k) {
        const T in = x[k * xs];
        const T out = b[0] * in + (order ? z[0] : T(0));
        for (std::size_t i = 0; i + 1 < order; ++i) z[i] = z[i + 1] + b[i + 1] * in - (fir ? T(0) : a[i + 1] * out);
        if (order) z[order - 1] = b[order] * in - (fir ? T(0) : a[order] * out);
        y[k * ys] = out;
    }
}

template <class T>
T element(const Mm& m, int k);
template <>
double element<double>(const Mm& m, int k) { return re_at(m, k); }
template <>
cplx element<cplx>(const Mm& m, int k) { return {re_at(m, k), im_at(m, k)}; }

template <class T>
void store(Mm& m, int k, T v);
template <>
void store<double>(Mm& m, int k, double v) { m.addr()[k] = v; }
template <>
void store<cplx>(Mm& m, int k, cplx v) {
    m.addr()[k] = v.real();
    m.addi()[k] = v.imag();
}

// Filters every vector of x along dim; zi (possibly empty) holds the initial states, one column of
// order values per vector. The final states go to zf.
template <class T>
Mm filter_all(const Mm& B, const Mm& A, const Mm& X, const Mm& Z, int dim, Mm& zf) {
    const int nb = B.size(), na = A.size();
    const int order = std::max(na, nb) - 1;
    std::vector<T> b(order + 1, T(0)), a(order + 1, T(0));
    const T a0 = element<T>(A, 0);
    for (int k = 0; k < nb; ++k) b[k] = element<T>(B, k) / a0;
    for (int k = 0; k < na; ++k) a[k] = element<T>(A, k) / a0;
    const bool fir = na == 1;
    int inner, outer;
    blocks(X, dim, inner, outer);
    const int n = extent(X, dim);
    const bool complex = std::is_same_v<T, cplx>;
    Mm Y(complex ? 1 : 0, 0, 0, X.ndims, X.dims, ak_double);
    int zdims[4] = {order, 1, 1, 1};
    int znd = 2;
    for (int d = 0, at = 1; d < X.ndims; ++d)
        if (d != dim) {
            zdims[at++] = X.dims[d];
            znd = std::max(znd, at);
        }
    zf = Mm(complex ? 1 : 0, 0, 0, std::min(4, znd), zdims, ak_double);
    std::vector<T> z(order), xs, ys;  // xs and ys gather a complex vector's strided halves
    if (complex) {
        xs.resize(n);
        ys.resize(n);
    }
    int vector = 0;
    for (int o = 0; o < outer; ++o)
        for (int i = 0; i < inner; ++i, ++vector) {
            for (int s = 0; s < order; ++s) z[s] = Z.size() ? element<T>(Z, vector * order + s) : T(0);
            const int base = o * n * inner + i;
            if constexpr (std::is_same_v<T, double>) {
                run_filter<T>(b, a, fir, X.addr() + base, inner, Y.addr() + base, inner, n, z);
            } else {
                for (int k = 0; k < n; ++k) xs[k] = element<T>(X, base + k * inner);
                run_filter<T>(b, a, fir, xs.data(), 1, ys.data(), 1, n, z);
                for (int k = 0; k < n; ++k) store<T>(Y, base + k * inner, ys[k]);
            }
            for (int s = 0; s < order; ++s) store<T>(zf, vector * order + s, z[s]);
        }
    return Y;
}

Mm filter_impl(const Mm& b, const Mm& a, const Mm& x, const Mm* zi, const Mm* dim, Mm& zf) {
    Mm B = numeric_input("filter", b), A = numeric_input("filter", a), X = numeric_input("filter", x);
    if (B.ndims < 2 || A.ndims < 2 || X.ndims < 2) return x_M;
    if (A.size() == 0 || B.size() == 0) {
        error("filter: coefficient vectors must not be empty");
        return x_M;
    }
    if (A.addr()[0] == 0.0 && im_at(A, 0) == 0.0) {
        error("filter: first coefficient of a must not be zero");
        return x_M;
    }
    const int d = dim ? normalize_dim_argument("filter", X, *dim) : X.nsingleton() - 1;
    Mm Z = zi ? numeric_input("filter", *zi) : Mm();
    const int order = std::max(A.size(), B.size()) - 1;
    const int vectors = extent(X, d) ? X.size() / extent(X, d) : 0;
    if (Z.size() != 0 && Z.size() != order * std::max(vectors, 1)) {
        error("filter: initial conditions must have max(length(a), length(b)) - 1 rows for each "
              "vector filtered");
        return x_M;
    }
    if (X.size() == 0) {
        zf = Z;
        return X;
    }
    const bool complex = A.pi || B.pi || X.pi || Z.pi;
    return complex ? filter_all<cplx>(B, A, X, Z, d, zf) : filter_all<double>(B, A, X, Z, d, zf);
}

// ---- conv2 ----------------------------------------------------------------------------------------

enum class shape_t { full, same, valid, bad };

shape_t shape_word(const char* function, const Mm& s) {
    char text[16];
    Mstr(s, text, sizeof text);
    if (!std::strcmp(text, "full")) return shape_t::full;
    if (!std::strcmp(text, "same")) return shape_t::same;
    if (!std::strcmp(text, "valid")) return shape_t::valid;
    error("%s: shape must be 'full', 'same' or 'valid'", function);
    return shape_t::bad;
}

// Real 2-D convolution of a (ma x na) and b (mb x nb), accumulated into c at the window of the
// full result that starts at (r0, c0) and has size mc x nc; sign is +1 or -1.
void conv_real(const double* a, int ma, int na, const double* b, int mb, int nb, double* c, int mc, int nc,
               int r0, int c0, double sign) {
    for (int jb = 0; jb < nb; ++jb)
        for (int ib = 0; ib < mb; ++ib) {
            const double w = sign * b[ib + jb * mb];
            if (w == 0.0) continue;
            for (int ja = 0; ja < na; ++ja) {
                const int col = ja + jb - c0;
                if (col < 0 || col >= nc) continue;
                const int lo = std::max(0, r0 - ib), hi = std::min(ma, mc + r0 - ib);
                double* out = c + col * mc + (ib - r0);
                const double* in = a + ja * ma;
                for (int ia = lo; ia < hi; ++ia) out[ia] += w * in[ia];
            }
        }
}

Mm conv2_impl(const char* function, const Mm& a, const Mm& b, shape_t shape) {
    Mm A = numeric_input(function, a), B = numeric_input(function, b);
    if (A.ndims < 2 || B.ndims < 2 || shape == shape_t::bad) return x_M;
    if (A.ndims > 2 || B.ndims > 2) {
        error("%s: 2-d matrices expected", function);
        return x_M;
    }
    const int ma = A.dims[0], na = A.dims[1], mb = B.dims[0], nb = B.dims[1];
    int mc = std::max(ma + mb - 1, 0), nc = std::max(na + nb - 1, 0), r0 = 0, c0 = 0;
    if (ma == 0 || na == 0 || mb == 0 || nb == 0) mc = nc = 0;
    if (shape == shape_t::same) {
        r0 = mb / 2;
        c0 = nb / 2;
        mc = ma;
        nc = na;
    } else if (shape == shape_t::valid) {
        r0 = mb - 1;
        c0 = nb - 1;
        mc = std::max(ma - mb + 1, 0);
        nc = std::max(na - nb + 1, 0);
        if (mb == 0 || nb == 0) mc = nc = 0;
    }
    const bool complex = A.pi || B.pi;
    Mm C(complex ? 1 : 0, 0, 0, mc, nc, ak_double);
    if (C.size() == 0 || ma * na == 0 || mb * nb == 0) {
        if (C.size()) std::memset(C.addr(), 0, sizeof(double) * C.size());
        if (C.size() && complex) std::memset(C.addi(), 0, sizeof(double) * C.size());
        return C;
    }
    std::memset(C.addr(), 0, sizeof(double) * C.size());
    if (complex) std::memset(C.addi(), 0, sizeof(double) * C.size());
    conv_real(A.addr(), ma, na, B.addr(), mb, nb, C.addr(), mc, nc, r0, c0, 1.0);
    if (A.pi && B.pi) conv_real(A.addi(), ma, na, B.addi(), mb, nb, C.addr(), mc, nc, r0, c0, -1.0);
    if (A.pi) conv_real(A.addi(), ma, na, B.addr(), mb, nb, C.addi(), mc, nc, r0, c0, 1.0);
    if (B.pi) conv_real(A.addr(), ma, na, B.addi(), mb, nb, C.addi(), mc, nc, r0, c0, 1.0);
    return C;
}

// ---- xcorr ----------------------------------------------------------------------------------------

enum class scale_t { none, biased, unbiased, coeff, bad };

scale_t scale_word(const Mm& s) {
    char text[16];
    Mstr(s, text, sizeof text);
    if (!std::strcmp(text, "none")) return scale_t::none;
    if (!std::strcmp(text, "biased")) return scale_t::biased;
    if (!std::strcmp(text, "unbiased")) return scale_t::unbiased;
    if (!std::strcmp(text, "coeff")) return scale_t::coeff;
    error("xcorr: scale option must be 'none', 'biased', 'unbiased' or 'coeff'");
    return scale_t::bad;
}

std::vector<cplx> as_complex_vector(const Mm& m, int n) {
    std::vector<cplx> v(n);
    for (int k = 0; k < m.size() && k < n; ++k) v[k] = {re_at(m, k), im_at(m, k)};
    return v;
}

Mm xcorr_impl(const Mm& x, const Mm* y, const Mm* scale, Mm& lags) {
    Mm X = numeric_input("xcorr", x);
    Mm Y = y ? numeric_input("xcorr", *y) : X;
    if (X.ndims < 2 || Y.ndims < 2) return x_M;
    if (!is_vector(X) || !is_vector(Y)) {
        error("xcorr: vectors expected");
        return x_M;
    }
    const scale_t how = scale ? scale_word(*scale) : scale_t::none;
    if (how == scale_t::bad) return x_M;
    const int n = std::max(X.size(), Y.size());
    const bool row = X.dims[0] == 1 && X.size() > 1;
    const int count = n ? 2 * n - 1 : 0;
    lags = Mm(0, 0, 0, 1, count, ak_double);
    for (int k = 0; k < count; ++k) lags.addr()[k] = k - (n - 1);
    const bool complex = X.pi || Y.pi;
    Mm R(complex ? 1 : 0, 0, 0, row ? 1 : count, row ? count : 1, ak_double);
    if (!count) return R;
    // r(m) = sum over j of x(j + m) conj(y(j)). Direct sums are exact for short vectors; long ones
    // go through the transform of the zero-padded pair.
    std::vector<cplx> r(count);
    const std::vector<cplx> xv = as_complex_vector(X, n), yv = as_complex_vector(Y, n);
    if (n <= 256) {
        for (int m = -(n - 1); m < n; ++m) {
            cplx s = 0;
            for (int j = std::max(0, -m); j < n && j + m < n; ++j) s += xv[j + m] * std::conj(yv[j]);
            r[m + n - 1] = s;
        }
    } else {
        int size = 1;
        while (size < count) size *= 2;
        Mm fx = ak_signal::dft_along("xcorr", ak_signal::resized_along(X.dims[0] == 1 ? transpose(X) : X, 0, size, true), size, 0, false);
        Mm fy = ak_signal::dft_along("xcorr", ak_signal::resized_along(Y.dims[0] == 1 ? transpose(Y) : Y, 0, size, true), size, 0, false);
        Mm prod(1, 0, 0, size, 1, ak_double);
        for (int k = 0; k < size; ++k) {
            const cplx p = cplx(re_at(fx, k), im_at(fx, k)) * std::conj(cplx(re_at(fy, k), im_at(fy, k)));
            prod.addr()[k] = p.real();
            prod.addi()[k] = p.imag();
        }
        Mm back = ak_signal::dft_along("xcorr", prod, size, 0, true);
        for (int m = -(n - 1); m < n; ++m) {
            const int at = (m + size) % size;
            r[m + n - 1] = {re_at(back, at), im_at(back, at)};
        }
    }
    double norm = 1.0;
    if (how == scale_t::coeff) {
        double ex = 0, ey = 0;
        for (int k = 0; k < n; ++k) {
            ex += std::norm(xv[k]);
            ey += std::norm(yv[k]);
        }
        norm = std::sqrt(ex * ey);
    }
    for (int k = 0; k < count; ++k) {
        const int m = k - (n - 1);
        cplx v = r[k];
        if (how == scale_t::biased) v /= double(n);
        if (how == scale_t::unbiased) v /= double(n - std::abs(m));
        if (how == scale_t::coeff && norm > 0) v /= norm;
        R.addr()[k] = v.real();
        if (complex) R.addi()[k] = v.imag();
    }
    return R;
}

// ---- freqz ----------------------------------------------------------------------------------------

cplx polynomial_at(const Mm& c, double w) {
    cplx s = 0;
    for (int k = 0; k < c.size(); ++k) s += cplx(re_at(c, k), im_at(c, k)) * std::polar(1.0, -w * k);
    return s;
}

Mm freqz_impl(const Mm& b, const Mm* a, const Mm* n, Mm& w) {
    Mm B = numeric_input("freqz", b);
    Mm A = a ? numeric_input("freqz", *a) : Mm(1.0);
    if (B.ndims < 2 || A.ndims < 2) return x_M;
    int points = 512;
    if (n) {
        const double v = scalar(*n);
        if (!(v >= 1) || v != std::floor(v) || v > 1e8) {
            error("freqz: n must be a positive integer");
            return x_M;
        }
        points = static_cast<int>(v);
    }
    const double pi_ = std::acos(-1.0);
    Mm H(1, 0, 0, points, 1, ak_double);
    w = Mm(0, 0, 0, points, 1, ak_double);
    for (int k = 0; k < points; ++k) {
        const double omega = pi_ * k / points;
        const cplx h = polynomial_at(B, omega) / polynomial_at(A, omega);
        w.addr()[k] = omega;
        H.addr()[k] = h.real();
        H.addi()[k] = h.imag();
    }
    return H;
}

// ---- windows, detrend, nextpow2 --------------------------------------------------------------------

int window_length(const char* function, const Mm& n) {
    const double v = scalar(n);
    if (!(v >= 0) || v != std::floor(v) || v > 1e9) {
        error("%s: n must be a non-negative integer", function);
        return -1;
    }
    return static_cast<int>(v);
}

template <class F>
Mm window(const char* function, const Mm& n, F value) {
    const int len = window_length(function, n);
    if (len < 0) return x_M;
    Mm w(0, 0, 0, len, len ? 1 : 0, ak_double);
    for (int k = 0; k < len; ++k) w.addr()[k] = value(k, len);
    return w;
}

}  // namespace

Mm filter(const Mm& b, const Mm& a, const Mm& x) {
    Mm zf;
    return filter_impl(b, a, x, nullptr, nullptr, zf);
}
Mm filter(const Mm& b, const Mm& a, const Mm& x, const Mm& zi) {
    Mm zf;
    return filter_impl(b, a, x, &zi, nullptr, zf);
}
Mm filter(const Mm& b, const Mm& a, const Mm& x, const Mm& zi, const Mm& dim) {
    Mm zf;
    return filter_impl(b, a, x, &zi, &dim, zf);
}
Mm filter(const Mm& b, const Mm& a, const Mm& x, i_o_t, Mm& zf) { return filter_impl(b, a, x, nullptr, nullptr, zf); }
Mm filter(const Mm& b, const Mm& a, const Mm& x, const Mm& zi, i_o_t, Mm& zf) {
    return filter_impl(b, a, x, &zi, nullptr, zf);
}
Mm filter(const Mm& b, const Mm& a, const Mm& x, const Mm& zi, const Mm& dim, i_o_t, Mm& zf) {
    return filter_impl(b, a, x, &zi, &dim, zf);
}

Mm conv2(const Mm& a, const Mm& b) { return conv2_impl("conv2", a, b, shape_t::full); }
Mm conv2(const Mm& a, const Mm& b, const Mm& shape) { return conv2_impl("conv2", a, b, shape_word("conv2", shape)); }
Mm filter2(const Mm& h, const Mm& x) { return filter2(h, x, TM("same")); }
Mm filter2(const Mm& h, const Mm& x, const Mm& shape) {
    Mm H = numeric_input("filter2", h);
    if (H.ndims < 2) return x_M;
    if (H.ndims > 2) {
        error("filter2: 2-d matrices expected");
        return x_M;
    }
    // Correlation is convolution with the kernel turned half a circle.
    Mm turned(H.pi ? 1 : 0, 0, 0, H.dims[0], H.dims[1], ak_double);
    const int n = H.size();
    for (int k = 0; k < n; ++k) {
        turned.addr()[k] = H.addr()[n - 1 - k];
        if (H.pi) turned.addi()[k] = H.addi()[n - 1 - k];
    }
    return conv2_impl("filter2", x, turned, shape_word("filter2", shape));
}

Mm xcorr(const Mm& x) {
    Mm lags;
    return xcorr_impl(x, nullptr, nullptr, lags);
}
Mm xcorr(const Mm& x, const Mm& y) {
    Mm lags;
    return xcorr_impl(x, &y, nullptr, lags);
}
Mm xcorr(const Mm& x, const Mm& y, const Mm& scale) {
    Mm lags;
    return xcorr_impl(x, &y, &scale, lags);
}
Mm xcorr(const Mm& x, i_o_t, Mm& lags) { return xcorr_impl(x, nullptr, nullptr, lags); }
Mm xcorr(const Mm& x, const Mm& y, i_o_t, Mm& lags) { return xcorr_impl(x, &y, nullptr, lags); }
Mm xcorr(const Mm& x, const Mm& y, const Mm& scale, i_o_t, Mm& lags) { return xcorr_impl(x, &y, &scale, lags); }

Mm freqz(const Mm& b) {
    Mm w;
    return freqz_impl(b, nullptr, nullptr, w);
}
Mm freqz(const Mm& b, const Mm& a) {
    Mm w;
    return freqz_impl(b, &a, nullptr, w);
}
Mm freqz(const Mm& b, const Mm& a, const Mm& n) {
    Mm w;
    return freqz_impl(b, &a, &n, w);
}
Mm freqz(const Mm& b, i_o_t, Mm& w) { return freqz_impl(b, nullptr, nullptr, w); }
Mm freqz(const Mm& b, const Mm& a, i_o_t, Mm& w) { return freqz_impl(b, &a, nullptr, w); }
Mm freqz(const Mm& b, const Mm& a, const Mm& n, i_o_t, Mm& w) { return freqz_impl(b, &a, &n, w); }

Mm hamming(const Mm& n) {
    return window("hamming", n, [](int k, int len) {
        return len == 1 ? 1.0 : 0.54 - 0.46 * std::cos(2 * std::acos(-1.0) * k / (len - 1));
    });
}
Mm hanning(const Mm& n) {
    return window("hanning", n,
                  [](int k, int len) { return 0.5 * (1 - std::cos(2 * std::acos(-1.0) * (k + 1) / (len + 1))); });
}

Mm detrend(const Mm& x) { return detrend(x, Mm(1.0)); }
Mm detrend(const Mm& x, const Mm& kind) {
    Mm X = numeric_input("detrend", x);
    if (X.ndims < 2) return x_M;
    if (X.ndims > 2) {
        error("detrend: 2-d matrix expected");
        return x_M;
    }
    bool linear = true;
    if (kind.isstr()) {
        char text[16];
        Mstr(kind, text, sizeof text);
        if (!std::strcmp(text, "constant")) {
            linear = false;
        } else if (std::strcmp(text, "linear")) {
            error("detrend: kind must be 'constant' or 'linear'");
            return x_M;
        }
    } else {
        const double v = scalar(kind);
        if (v != 0 && v != 1) {
            error("detrend: polynomial order must be 0 or 1");
            return x_M;
        }
        linear = v == 1;
    }
    const bool row = X.dims[0] == 1;
    const int m = row ? X.dims[1] : X.dims[0], cols = row ? 1 : X.dims[1];
    Mm Y(X.pi ? 1 : 0, 0, 0, X.dims[0], X.dims[1], ak_double);
    double* halves_in[2] = {X.addr(), X.addi()};
    double* halves_out[2] = {Y.addr(), Y.addi()};
    const double tmean = (m - 1) / 2.0;
    double tt = 0;
    for (int k = 0; k < m; ++k) tt += (k - tmean) * (k - tmean);
    for (int h = 0; h < 2; ++h) {
        if (!halves_in[h]) continue;
        for (int c = 0; c < cols; ++c) {
            const double* v = halves_in[h] + static_cast<std::size_t>(c) * m;
            double* out = halves_out[h] + static_cast<std::size_t>(c) * m;
            double mean = 0, slope = 0;
            for (int k = 0; k < m; ++k) mean += v[k];
            mean = m ? mean / m : 0;
            if (linear && tt > 0) {
                for (int k = 0; k < m; ++k) slope += (k - tmean) * (v[k] - mean);
                slope /= tt;
            }
            for (int k = 0; k < m; ++k) out[k] = v[k] - mean - slope * (k - tmean);
        }
    }
    return Y;
}

Mm nextpow2(const Mm& n) {
    Mm N = numeric_input("nextpow2", n);
    if (N.ndims < 2) return x_M;
    Mm r(0, 0, 0, N.ndims, N.dims, ak_double);
    for (int k = 0; k < N.size(); ++k) {
        const double v = std::fabs(N.addr()[k]);
        double p;
        if (v == 0) {
            p = 0;
        } else if (!std::isfinite(v)) {
            p = v;  // Inf stays Inf, NaN stays NaN
        } else {
            int e;
            const double f = std::frexp(v, &e);
            p = f == 0.5 ? e - 1 : e;
        }
        r.addr()[k] = p;
    }
    return r;
}

AK_BUILTIN("filter", AK_FN(filter, const Mm&, const Mm&, const Mm&), AK_FN(filter, const Mm&, const Mm&, const Mm&, const Mm&),
           AK_FN(filter, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&),
           AK_FN(filter, const Mm&, const Mm&, const Mm&, i_o_t, Mm&),
           AK_FN(filter, const Mm&, const Mm&, const Mm&, const Mm&, i_o_t, Mm&),
           AK_FN(filter, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, i_o_t, Mm&));
AK_BUILTIN("conv2", AK_FN(conv2, const Mm&, const Mm&), AK_FN(conv2, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("filter2", AK_FN(filter2, const Mm&, const Mm&), AK_FN(filter2, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("xcorr", AK_FN(xcorr, const Mm&), AK_FN(xcorr, const Mm&, const Mm&), AK_FN(xcorr, const Mm&, const Mm&, const Mm&),
           AK_FN(xcorr, const Mm&, i_o_t, Mm&), AK_FN(xcorr, const Mm&, const Mm&, i_o_t, Mm&),
           AK_FN(xcorr, const Mm&, const Mm&, const Mm&, i_o_t, Mm&));
AK_BUILTIN("freqz", AK_FN(freqz, const Mm&), AK_FN(freqz, const Mm&, const Mm&), AK_FN(freqz, const Mm&, const Mm&, const Mm&),
           AK_FN(freqz, const Mm&, i_o_t, Mm&), AK_FN(freqz, const Mm&, const Mm&, i_o_t, Mm&),
           AK_FN(freqz, const Mm&, const Mm&, const Mm&, i_o_t, Mm&));
AK_BUILTIN("hamming", hamming);
AK_BUILTIN("hanning", hanning);
AK_BUILTIN("detrend", AK_FN(detrend, const Mm&), AK_FN(detrend, const Mm&, const Mm&));
AK_BUILTIN("nextpow2", nextpow2);
