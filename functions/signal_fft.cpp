// The discrete Fourier transforms, on FFTW's split-array interface: our matrices keep their real
// and imaginary halves apart, which is exactly the layout that interface reads and writes, so a
// transform costs one copy of the input (for padding and for the imaginary half of real data) and
// no interleaving. Plans are made once per (length, stride layout) and kept.
#include <fftw3.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <tuple>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/signal.h"
#include "arklib/sparse.h"
#include "arklib/subscript.h"
#include "functions/signal_internal.h"

namespace {

// The three kinds of plan: a complex transform, a real-to-complex one (the non-negative half of
// the spectrum of real data) and its complex-to-real inverse.
enum plan_kind { complex_dft, real_to_complex, complex_to_real };

// Plans keyed by (kind, n, inner, outer): a transform of length n along a dimension whose
// elements are inner apart, repeated for every inner offset and every one of outer blocks.
using plan_key = std::tuple<int, int, int, int>;

std::mutex& planner_lock() {
    static std::mutex m;
    return m;
}

std::map<plan_key, fftw_plan>& plan_cache() {
    static std::map<plan_key, fftw_plan> plans;
    return plans;
}

// At exit the kept plans and FFTW's own planning data are given back.
void release_plans() {
    for (auto& entry : plan_cache()) fftw_destroy_plan(entry.second);
    plan_cache().clear();
    fftw_cleanup();
}

fftw_plan plan_for(plan_kind kind, int n, int inner, int outer, double* ri, double* ii, double* ro, double* io) {
    // The cache is made before the exit handler is registered, so that it outlives the handler.
    static const int registered [[maybe_unused]] = (plan_cache(), std::atexit(release_plans), 0);
    std::map<plan_key, fftw_plan>& plans = plan_cache();
    std::lock_guard<std::mutex> hold(planner_lock());
    const plan_key key{kind, n, inner, outer};
    auto it = plans.find(key);
    if (it != plans.end()) return it->second;
    if (plans.size() >= 128) {  // a program cycling through sizes does not grow the cache for ever
        for (auto& entry : plans) fftw_destroy_plan(entry.second);
        plans.clear();
    }
    fftw_iodim length{n, inner, inner};
    fftw_iodim loops[2] = {{inner, 1, 1}, {outer, n * inner, n * inner}};
    const unsigned flags = FFTW_ESTIMATE | FFTW_UNALIGNED;
    fftw_plan p = nullptr;
    if (kind == complex_dft) p = fftw_plan_guru_split_dft(1, &length, 2, loops, ri, ii, ro, io, flags);
    if (kind == real_to_complex) p = fftw_plan_guru_split_dft_r2c(1, &length, 2, loops, ri, ro, io, flags);
    if (kind == complex_to_real) p = fftw_plan_guru_split_dft_c2r(1, &length, 2, loops, ri, ii, ro, flags);
    plans[key] = p;
    return p;
}

int extent(const Mm& x, int dim) { return dim < x.ndims ? x.dims[dim] : 1; }

// Product of the sizes below and above dim.
void blocks(const Mm& x, int dim, int& inner, int& outer) {
    inner = 1;
    outer = 1;
    for (int d = 0; d < x.ndims; ++d) {
        if (d < dim) inner *= x.dims[d];
        if (d > dim) outer *= x.dims[d];
    }
}

// True when every vector along dim is conjugate-symmetric, so that its inverse transform is real.
bool conjugate_symmetric(const Mm& x, int dim) {
    if (!x.pi) return false;
    int inner, outer;
    blocks(x, dim, inner, outer);
    const int n = extent(x, dim);
    const double* re = x.addr();
    const double* im = x.addi();
    for (int o = 0; o < outer; ++o)
        for (int i = 0; i < inner; ++i) {
            const int base = o * n * inner + i;
            if (im[base] != 0.0) return false;
            for (int k = 1; k < n; ++k) {
                const int a = base + k * inner, b = base + (n - k) * inner;
                if (re[a] != re[b] || im[a] != -im[b]) return false;
            }
        }
    return true;
}

void scale_by(Mm& m, double f) {
    const std::size_t total = static_cast<std::size_t>(m.size());
    double* halves[2] = {m.addr(), m.addi()};
    for (double* h : halves)
        if (h)
            for (std::size_t k = 0; k < total; ++k) h[k] *= f;
}

// The spectrum of real data: the transform gives the bins up to n/2, and the rest are their
// conjugates, filled in exactly so that the inverse finds the symmetry again.
Mm real_spectrum(const Mm& in, int n, int inner, int outer) {
    Mm out(1, 0, 0, in.ndims, in.dims, ak_double);
    double *re = out.addr(), *im = out.addi();
    fftw_plan plan = plan_for(real_to_complex, n, inner, outer, in.addr(), nullptr, re, im);
    fftw_execute_split_dft_r2c(plan, in.addr(), re, im);
    for (int o = 0; o < outer; ++o)
        for (int i = 0; i < inner; ++i) {
            const std::size_t base = static_cast<std::size_t>(o) * n * inner + i;
            for (int k = n / 2 + 1; k < n; ++k) {
                re[base + static_cast<std::size_t>(k) * inner] = re[base + static_cast<std::size_t>(n - k) * inner];
                im[base + static_cast<std::size_t>(k) * inner] = -im[base + static_cast<std::size_t>(n - k) * inner];
            }
        }
    return out;
}

// The inverse of a conjugate-symmetric spectrum, read from its first n/2 + 1 bins: real data.
Mm real_signal(const Mm& in, int n, int inner, int outer) {
    Mm out(0, 0, 0, in.ndims, in.dims, ak_double);
    fftw_plan plan = plan_for(complex_to_real, n, inner, outer, in.addr(), in.addi(), out.addr(), nullptr);
    fftw_execute_split_dft_c2r(plan, in.addr(), in.addi(), out.addr());  // may overwrite in: a private copy
    scale_by(out, 1.0 / n);
    return out;
}

}  // namespace

namespace ak_signal {

Mm numeric_input(const char* function, const Mm& x) {
    x.warn_uninit();
    if (error_numeric(x, function)) return Mm();
    return mdouble(x);
}

Mm resized_along(const Mm& x, int dim, int n, bool complex) {
    int dims[4] = {1, 1, 1, 1};
    const int nd = std::max(x.ndims, dim + 1);
    for (int d = 0; d < x.ndims; ++d) dims[d] = x.dims[d];
    const int old = dims[dim];
    dims[dim] = n;
    Mm r(complex ? 1 : 0, 0, 0, nd, dims, ak_double);
    if (r.size() == 0) return r;
    int inner, outer;
    blocks(r, dim, inner, outer);
    const int keep = std::min(old, n) * inner;
    const double* halves[2] = {x.addr(), x.addi()};
    double* into[2] = {r.addr(), r.addi()};
    for (int h = 0; h < (complex ? 2 : 1); ++h) {
        double* out = into[h];
        std::memset(out, 0, sizeof(double) * static_cast<std::size_t>(r.size()));
        if (!halves[h]) continue;
        for (int o = 0; o < outer; ++o)
            std::memcpy(out + static_cast<std::size_t>(o) * n * inner,
                        halves[h] + static_cast<std::size_t>(o) * old * inner, sizeof(double) * keep);
    }
    return r;
}

Mm dft_along(const char* function, const Mm& x, int n, int dim, bool inverse) {
    Mm X = numeric_input(function, x);
    if (X.ndims < 2) return x_M;
    if (dim < 0) dim = X.nsingleton() - 1;
    if (dim > 3) {
        error("%s: dim argument may not be more then the number of dimensions", function);
        return x_M;
    }
    if (n < 0) n = extent(X, dim);
    if (X.size() == 0 && n == extent(X, dim)) return X;
    // Out-of-place complex and real-to-complex transforms leave their input alone, so data of the
    // right length is read where it is; only the complex-to-real inverse needs a private copy.
    const bool same_length = n == extent(X, dim);
    Mm in = same_length ? X : resized_along(X, dim, n, !!X.pi);
    if (in.size() == 0) return in;
    int inner, outer;
    blocks(in, dim, inner, outer);
    if (!in.pi && !inverse) return real_spectrum(in, n, inner, outer);
    if (!in.pi) in = resized_along(X, dim, n, true);
    if (inverse && conjugate_symmetric(in, dim)) {
        if (same_length && in.pr == X.pr) in = resized_along(X, dim, n, true);
        return real_signal(in, n, inner, outer);
    }
    Mm out(1, 0, 0, in.ndims, in.dims, ak_double);
    double *ri = in.addr(), *ii = in.addi(), *ro = out.addr(), *io = out.addi();
    fftw_plan plan = plan_for(complex_dft, n, inner, outer, ri, ii, ro, io);
    // The split interface only runs forward; the inverse is the forward transform with the real
    // and imaginary halves swapped on both sides.
    if (inverse) {
        fftw_execute_split_dft(plan, ii, ri, io, ro);
        scale_by(out, 1.0 / n);
    } else {
        fftw_execute_split_dft(plan, ri, ii, ro, io);
    }
    return out;
}

}  // namespace ak_signal

using ak_signal::dft_along;

namespace {

// A length argument: empty keeps the length, otherwise a positive whole number.
int length_argument(const char* function, const Mm& n) {
    if (n.size() == 0) return -1;
    const double v = scalar(n);
    if (!(v >= 1) || v != std::floor(v) || v > 2147483647.0) {
        error("%s: n must be a positive integer", function);
        return -2;
    }
    return static_cast<int>(v);
}

Mm one_dim(const char* function, const Mm& x, const Mm* n, const Mm* dim, bool inverse) {
    const int len = n ? length_argument(function, *n) : -1;
    if (len == -2) return x_M;
    int d = -1;
    if (dim) {
        Mm X = ak_signal::numeric_input(function, x);
        d = normalize_dim_argument(function, X, *dim);
    }
    return dft_along(function, x, len, d, inverse);
}

Mm two_dims(const char* function, const Mm& x, const Mm* m, const Mm* n, bool inverse) {
    const int rows = m ? length_argument(function, *m) : -1;
    const int cols = n ? length_argument(function, *n) : -1;
    if (rows == -2 || cols == -2) return x_M;
    return dft_along(function, dft_along(function, x, rows, 0, inverse), cols, 1, inverse);
}

Mm all_dims(const char* function, const Mm& x, const Mm* siz, bool inverse) {
    Mm r = ak_signal::numeric_input(function, x);
    int nd = r.ndims;
    Mm s;
    if (siz) {
        s = mdouble(*siz);
        if (s.size() < nd) {
            error("%s: size vector must have at least ndims elements", function);
            return x_M;
        }
        nd = std::min(4, s.size());
    }
    for (int d = 0; d < nd; ++d) {
        int len = -1;
        if (siz) {
            const double v = s.addr()[d];
            if (!(v >= 1) || v != std::floor(v) || v > 2147483647.0) {
                error("%s: n must be a positive integer", function);
                return x_M;
            }
            len = static_cast<int>(v);
        }
        r = dft_along(function, r, len, d, inverse);
    }
    return r;
}

// Circular shift of every element along one dimension by k places (0 <= k < n).
Mm rotate_along(const Mm& x, int dim, int k) {
    const int n = extent(x, dim);
    if (n <= 1 || k == 0) return x;
    Mm r(x.pi ? 1 : 0, 0, 0, x.ndims, x.dims, ak_double);
    r.flags.str = x.flags.str;
    r.flags.logical = x.flags.logical;
    int inner, outer;
    blocks(x, dim, inner, outer);
    const double* halves[2] = {x.addr(), x.addi()};
    double* into[2] = {r.addr(), r.addi()};
    for (int h = 0; h < 2; ++h) {
        if (!halves[h]) continue;
        for (int o = 0; o < outer; ++o) {
            const double* src = halves[h] + static_cast<std::size_t>(o) * n * inner;
            double* dst = into[h] + static_cast<std::size_t>(o) * n * inner;
            for (int j = 0; j < n; ++j)
                std::memcpy(dst + static_cast<std::size_t>((j + k) % n) * inner,
                            src + static_cast<std::size_t>(j) * inner, sizeof(double) * inner);
        }
    }
    return r;
}

Mm shift(const char* function, const Mm& x, const Mm* dim, bool inverse) {
    x.warn_uninit();
    if (error_numeric(x, function)) return x_M;
    Mm r = x.flags.type == ak_double ? full(x) : mdouble(x);
    auto amount = [&](int d) {
        const int n = extent(r, d);
        return inverse ? n - n / 2 : n / 2;
    };
    if (dim) {
        const int d = normalize_dim_argument(function, r, *dim);
        return rotate_along(r, d, amount(d) % std::max(1, extent(r, d)));
    }
    for (int d = 0; d < r.ndims; ++d) r = rotate_along(r, d, amount(d) % std::max(1, extent(r, d)));
    return r;
}

}  // namespace

Mm fft(const Mm& x) { return one_dim("fft", x, nullptr, nullptr, false); }
Mm fft(const Mm& x, const Mm& n) { return one_dim("fft", x, &n, nullptr, false); }
Mm fft(const Mm& x, const Mm& n, const Mm& dim) { return one_dim("fft", x, &n, &dim, false); }
Mm ifft(const Mm& x) { return one_dim("ifft", x, nullptr, nullptr, true); }
Mm ifft(const Mm& x, const Mm& n) { return one_dim("ifft", x, &n, nullptr, true); }
Mm ifft(const Mm& x, const Mm& n, const Mm& dim) { return one_dim("ifft", x, &n, &dim, true); }
Mm fft2(const Mm& x) { return two_dims("fft2", x, nullptr, nullptr, false); }
Mm fft2(const Mm& x, const Mm& m, const Mm& n) { return two_dims("fft2", x, &m, &n, false); }
Mm ifft2(const Mm& x) { return two_dims("ifft2", x, nullptr, nullptr, true); }
Mm ifft2(const Mm& x, const Mm& m, const Mm& n) { return two_dims("ifft2", x, &m, &n, true); }
Mm fftn(const Mm& x) { return all_dims("fftn", x, nullptr, false); }
Mm fftn(const Mm& x, const Mm& siz) { return all_dims("fftn", x, &siz, false); }
Mm ifftn(const Mm& x) { return all_dims("ifftn", x, nullptr, true); }
Mm ifftn(const Mm& x, const Mm& siz) { return all_dims("ifftn", x, &siz, true); }
Mm fftshift(const Mm& x) { return shift("fftshift", x, nullptr, false); }
Mm fftshift(const Mm& x, const Mm& dim) { return shift("fftshift", x, &dim, false); }
Mm ifftshift(const Mm& x) { return shift("ifftshift", x, nullptr, true); }
Mm ifftshift(const Mm& x, const Mm& dim) { return shift("ifftshift", x, &dim, true); }

AK_BUILTIN("fft", AK_FN(fft, const Mm&), AK_FN(fft, const Mm&, const Mm&), AK_FN(fft, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("ifft", AK_FN(ifft, const Mm&), AK_FN(ifft, const Mm&, const Mm&),
           AK_FN(ifft, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("fft2", AK_FN(fft2, const Mm&), AK_FN(fft2, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("ifft2", AK_FN(ifft2, const Mm&), AK_FN(ifft2, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("fftn", AK_FN(fftn, const Mm&), AK_FN(fftn, const Mm&, const Mm&));
AK_BUILTIN("ifftn", AK_FN(ifftn, const Mm&), AK_FN(ifftn, const Mm&, const Mm&));
AK_BUILTIN("fftshift", AK_FN(fftshift, const Mm&), AK_FN(fftshift, const Mm&, const Mm&));
AK_BUILTIN("ifftshift", AK_FN(ifftshift, const Mm&), AK_FN(ifftshift, const Mm&, const Mm&));
