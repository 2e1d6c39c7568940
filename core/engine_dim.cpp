// The dimension operations on doubles: reductions, running sums and products, differences, and
// the extremes with their positions. All share one geometry: `outer` blocks of `stride` runs, each
// run `len` elements lying `stride` apart. Where a run is a reduction, runs of neighbouring
// positions are advanced together row by row when `stride` is above 1, which reads memory in order
// and keeps the order of the operations within each run.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "algebra/complex_scalar.h"
#include "core/engine_internal.h"

namespace {

using namespace ak_internal;

constexpr double inf = std::numeric_limits<double>::infinity();

std::size_t offset(long long o, long long per_block) { return static_cast<std::size_t>(o * per_block); }

// Reduction: acc starts at (init_r, init_i) and f(acc_r, acc_i, x_r, x_i) folds in each element.
// The imaginary input of a real matrix reads as 0.0; a real result keeps only acc_r.
template <bool C, class F>
void reduce(const dim_geometry& g, const double* xr, const double* xi, double* rr, double* ri, double init_r,
            double init_i, F f) {
    const int len = g.len, st = g.stride;
    for (int o = 0; o < g.outer; ++o) {
        const double* pr = xr + offset(o, static_cast<long long>(len) * st);
        const double* pi = C ? xi + offset(o, static_cast<long long>(len) * st) : nullptr;
        double* qr = rr + offset(o, st);
        double* qi = ri ? ri + offset(o, st) : nullptr;
        if (st == 1) {
            double ar = init_r, ai = init_i;
            for (int k = 0; k < len; ++k) f(ar, ai, pr[k], C ? pi[k] : 0.0);
            qr[0] = ar;
            if (qi) qi[0] = ai;
            continue;
        }
        for (int s = 0; s < st; ++s) qr[s] = init_r;
        if (qi)
            for (int s = 0; s < st; ++s) qi[s] = init_i;
        for (int k = 0; k < len; ++k) {
            const double* row = pr + offset(k, st);
            const double* rowi = C ? pi + offset(k, st) : nullptr;
            for (int s = 0; s < st; ++s) {
                double dummy = 0.0;
                f(qr[s], qi ? qi[s] : dummy, row[s], C ? rowi[s] : 0.0);
            }
        }
    }
}

// Running value written to every position: out[k] = f(out[k-1], x[k]), out[-1] being the start.
template <bool C, class F>
void scan(const dim_geometry& g, const double* xr, const double* xi, double* rr, double* ri, double init_r,
          double init_i, F f) {
    const int len = g.len, st = g.stride;
    const long long block = static_cast<long long>(len) * st;
    for (int o = 0; o < g.outer; ++o) {
        const double* pr = xr + offset(o, block);
        const double* pi = C ? xi + offset(o, block) : nullptr;
        double* qr = rr + offset(o, block);
        double* qi = ri ? ri + offset(o, block) : nullptr;
        for (int k = 0; k < len; ++k) {
            std::size_t at = offset(k, st), before = k ? offset(k - 1, st) : 0;
            for (int s = 0; s < st; ++s) {
                double ar = k ? qr[before + s] : init_r;
                double ai = k ? (qi ? qi[before + s] : 0.0) : init_i;
                f(ar, ai, pr[at + s], C ? pi[at + s] : 0.0);
                qr[at + s] = ar;
                if (qi) qi[at + s] = ai;
            }
        }
    }
}

template <bool C>
void run_reductions(op_t op, const dim_geometry& g, const Mm& a, Mm& r) {
    const double* xr = a.addr();
    const double* xi = a.addi();
    double* rr = r.addr();
    double* ri = r.addi();
    // The sum and product steps serve both the reductions and the running forms.
    auto add = [](double& s, double& si, double x, double y) {
        s += x;
        if (C) si += y;
    };
    auto multiply = [](double& p, double& pi, double x, double y) {
        if (C)
            c_mul(p, pi, x, y, p, pi);
        else
            p *= x;
    };
    switch (op) {
        case op_sum:
            return reduce<C>(g, xr, xi, rr, ri, 0.0, 0.0, add);
        case op_prod:
            return reduce<C>(g, xr, xi, rr, ri, 1.0, 0.0, multiply);
        case op_cumsum:
            return scan<C>(g, xr, xi, rr, ri, 0.0, 0.0, add);
        case op_cumprod:
            return scan<C>(g, xr, xi, rr, ri, 1.0, 0.0, multiply);
        case op_all:
            // NaN is not zero, so it counts as true.
            return reduce<C>(g, xr, xi, rr, nullptr, 1.0, 0.0, [](double& t, double&, double x, double y) {
                t = (t != 0.0 && (x != 0.0 || y != 0.0)) ? 1.0 : 0.0;
            });
        case op_any:
            return reduce<C>(g, xr, xi, rr, nullptr, 0.0, 0.0, [](double& t, double&, double x, double y) {
                t = (t != 0.0 || x != 0.0 || y != 0.0) ? 1.0 : 0.0;
            });
        default:
            return;
    }
}

// ---- run by run ----------------------------------------------------------------------------------------

// One run: `len` elements `stride` apart.
struct run_view {
    const double* x;
    int stride;
    double operator[](int k) const { return x[static_cast<std::size_t>(k) * stride]; }
};
struct run_out {
    double* x;
    int stride;
    double& operator[](int k) const { return x[static_cast<std::size_t>(k) * stride]; }
};

// Calls f(in, out_position) for every run of every block; `out_len` is the run length of the result.
template <class F>
void for_each_run(const dim_geometry& g, int out_len, F f) {
    const long long in_block = static_cast<long long>(g.len) * g.stride;
    const long long out_block = static_cast<long long>(out_len) * g.stride;
    for (int o = 0; o < g.outer; ++o)
        for (int s = 0; s < g.stride; ++s) f(offset(o, in_block) + s, offset(o, out_block) + s);
}

// The largest (sign 1) or smallest (sign -1) element of each run, first of equals, NaN skipped.
// A NaN first element starts the search from the infinity that anything beats, except in a matrix
// of one element, which keeps its NaN.
void run_extreme(const dim_geometry& g, const Mm& a, Mm& r, double* index, int sign) {
    const double* xr = a.addr();
    const double* xi = a.addi();
    double* rr = r.addr();
    double* ri = r.addi();
    const bool several = a.nnz > 1;
    const double worst = sign > 0 ? -inf : inf;
    for_each_run(g, 1, [&](std::size_t in, std::size_t out) {
        run_view x{xr + in, g.stride};
        int best_k = 0;
        double best_re, best_im = 0.0;
        if (!xi) {
            double best = x[0];
            if (std::isnan(best) && several) best = worst;
            for (int k = 0; k < g.len; ++k) {
                double v = x[k];
                if (sign > 0 ? v > best : v < best) best = v, best_k = k;
            }
            best_re = best;
        } else {
            run_view y{xi + in, g.stride};
            double key = c_abs2(x[0], y[0]);
            best_re = x[0], best_im = y[0];
            if (std::isnan(key) && several) key = worst, best_re = worst, best_im = 0.0;
            for (int k = 0; k < g.len; ++k) {
                double m = c_abs2(x[k], y[k]);
                if (sign > 0 ? m > key : m < key) key = m, best_k = k, best_re = x[k], best_im = y[k];
            }
        }
        rr[out] = best_re;
        if (ri) ri[out] = best_im;
        if (index) index[out] = best_k + 1;
    });
}

// Middle of each run, which the caller has sorted; NaN anywhere makes the result NaN.
void run_median(const dim_geometry& g, const Mm& a, Mm& r) {
    const double* xr = a.addr();
    const double* xi = a.addi();
    double* rr = r.addr();
    double* ri = r.addi();
    const int len = g.len, mid = len / 2;
    for_each_run(g, 1, [&](std::size_t in, std::size_t out) {
        run_view x{xr + in, g.stride};
        run_view y{xi ? xi + in : xr + in, g.stride};
        bool nan = false;
        for (int k = 0; k < len && !nan; ++k) nan = std::isnan(x[k]) || (xi && std::isnan(y[k]));
        double re, im = 0.0;
        if (nan) {
            re = im = std::numeric_limits<double>::quiet_NaN();
        } else if (len % 2) {
            re = x[mid];
            if (xi) im = y[mid];
        } else {
            re = (x[mid - 1] + x[mid]) / 2;
            if (xi) im = (y[mid - 1] + y[mid]) / 2;
        }
        rr[out] = re;
        if (ri) ri[out] = im;
    });
}

// Each element less the one before it, in both halves; the runs of the result are one shorter.
void run_diff(const dim_geometry& g, const Mm& a, Mm& r) {
    const int st = g.stride, out_len = g.len - 1;
    const long long in_block = static_cast<long long>(g.len) * st,
                    out_block = static_cast<long long>(out_len) * st;
    auto half = [&](const double* x, double* q) {
        for (int o = 0; o < g.outer; ++o) {
            const double* p = x + offset(o, in_block);
            double* w = q + offset(o, out_block);
            for (int k = 0; k < out_len; ++k) {
                const double* lo = p + offset(k, st);
                const double* hi = lo + st;
                double* to = w + offset(k, st);
                for (int s = 0; s < st; ++s) to[s] = hi[s] - lo[s];
            }
        }
    };
    half(a.addr(), r.addr());
    if (r.pi) {
        if (a.pi)
            half(a.addi(), r.addi());
        else
            std::memset(r.pi, 0, sizeof(double) * static_cast<std::size_t>(r.nnz));
    }
}

// Phase unwrapping with jump tolerance t, each half on its own.
void run_unwrap(const dim_geometry& g, const Mm& a, const Mm& b, Mm& r) {
    double t = (b.nnz > 0 && b.flags.type == ak_double) ? *b.addr() : k_pi;
    auto half = [&](const double* xs, double* rs) {
        for_each_run(g, g.len, [&](std::size_t in, std::size_t out) {
            run_view x{xs + in, g.stride};
            run_out q{rs + out, g.stride};
            if (g.len < 1) return;
            q[0] = m_rem(x[0], k_2pi);
            for (int k = 1; k < g.len; ++k) {
                double d = m_rem(x[k] - x[k - 1], k_2pi);
                if (d > t) d -= k_2pi;
                if (d < -t) d += k_2pi;
                q[k] = q[k - 1] + d;
            }
        });
    };
    half(a.addr(), r.addr());
    if (r.pi) {
        if (a.pi)
            half(a.addi(), r.addi());
        else
            std::memset(r.pi, 0, sizeof(double) * static_cast<std::size_t>(r.nnz));
    }
}

// Coordinates along the dimension: b itself when it holds one per element, k * h for a single
// spacing h, else 0, 1, 2, ...
void fill_coordinates(const Mm& b, double* c, int len) {
    const double* v = (b.flags.type == ak_double && b.pr) ? b.addr() : nullptr;
    if (v && b.nnz >= len && b.nnz > 1) {
        std::memcpy(c, v, sizeof(double) * static_cast<std::size_t>(len));
        return;
    }
    double h = (v && b.nnz == 1) ? v[0] : 1.0;
    for (int k = 0; k < len; ++k) c[k] = k * h;
}

// Central differences inside a run, one-sided at its ends; 0 for a run shorter than 2.
void gradient_run(run_view f, run_out q, const double* c, int n) {
    if (n < 2) {
        for (int k = 0; k < n; ++k) q[k] = 0.0;
        return;
    }
    q[0] = (f[1] - f[0]) / (c[1] - c[0]);
    for (int k = 1; k + 1 < n; ++k) q[k] = (f[k + 1] - f[k - 1]) / (c[k + 1] - c[k - 1]);
    q[n - 1] = (f[n - 1] - f[n - 2]) / (c[n - 1] - c[n - 2]);
}

// Second differences over the span of the neighbouring coordinates; 0 for a run shorter than 3.
void del2_run(run_view f, run_out q, const double* c, int n) {
    if (n < 3) {
        for (int k = 0; k < n; ++k) q[k] = 0.0;
        return;
    }
    q[0] = (f[0] - 2 * f[1] + f[2]) / (c[2] - c[0]);
    for (int k = 1; k + 1 < n; ++k) q[k] = (f[k + 1] - 2 * f[k] + f[k - 1]) / (c[k + 1] - c[k - 1]);
    q[n - 1] = (f[n - 1] - 2 * f[n - 2] + f[n - 3]) / (c[n - 1] - c[n - 3]);
}

// Both are linear, so a complex input is treated one half at a time.
void run_differences(const dim_geometry& g, const Mm& a, const Mm& b, Mm& r, bool second) {
    ak_scratch<double> c(g.len);
    if (g.len > 0 && !c.get()) return;
    fill_coordinates(b, c, g.len);
    auto half = [&](const double* xs, double* rs) {
        for_each_run(g, g.len, [&](std::size_t in, std::size_t out) {
            run_view f{xs + in, g.stride};
            run_out q{rs + out, g.stride};
            if (second)
                del2_run(f, q, c, g.len);
            else
                gradient_run(f, q, c, g.len);
        });
    };
    half(a.addr(), r.addr());
    if (r.pi) {
        if (a.pi)
            half(a.addi(), r.addi());
        else
            std::memset(r.pi, 0, sizeof(double) * static_cast<std::size_t>(r.nnz));
    }
}

}  // namespace

namespace ak_internal {

void dim_core_double(const Mm& a, const Mm& b, Mm& r, op_t op, const dim_geometry& g, double* index) {
    switch (op) {
        case op_sum:
        case op_prod:
        case op_cumsum:
        case op_cumprod:
        case op_all:
        case op_any:
            if (a.pi)
                run_reductions<true>(op, g, a, r);
            else
                run_reductions<false>(op, g, a, r);
            if (r.pi && (op == op_all || op == op_any))
                std::memset(r.pi, 0, sizeof(double) * static_cast<std::size_t>(r.nnz));
            return;
        case op_max_1:
            return run_extreme(g, a, r, index, 1);
        case op_min_1:
            return run_extreme(g, a, r, index, -1);
        case op_median:
            return run_median(g, a, r);
        case op_diff:
            return run_diff(g, a, r);
        case op_unwrap:
            return run_unwrap(g, a, b, r);
        case op_gradient:
            return run_differences(g, a, b, r, false);
        case op_del2:
            return run_differences(g, a, b, r, true);
        default:
            error("op_core: unknown op");
    }
}

}  // namespace ak_internal
