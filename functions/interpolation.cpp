// Interpolation, splines and piecewise polynomials. Every cubic method builds the same
// piecewise-polynomial form and evaluates it the same way; the others read the data directly.
#include "arklib/interpolation.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"

namespace {

using vec = std::vector<double>;

// A piecewise polynomial of one variable: piece i holds order coefficients, highest power first,
// in powers of x - breaks[i].
struct pp_t {
    vec breaks, coefs;
    int order = 0;
    int pieces() const { return static_cast<int>(breaks.size()) - 1; }
};

// The piece holding x: the last one whose left break is at most x, held inside [0, pieces - 1] so
// that points outside the breaks use the end pieces.
int piece_of(const vec& breaks, double x) {
    const int n = static_cast<int>(breaks.size()) - 1;
    int i = static_cast<int>(std::upper_bound(breaks.begin(), breaks.end(), x) - breaks.begin()) - 1;
    return std::clamp(i, 0, n - 1);
}

double pp_value(const pp_t& pp, int i, double x) {
    const double t = x - pp.breaks[i];
    const double* c = &pp.coefs[static_cast<std::size_t>(i) * pp.order];
    double v = 0;
    for (int k = 0; k < pp.order; ++k) v = v * t + c[k];
    return v;
}

double pp_at(const pp_t& pp, double x) { return std::isnan(x) ? x : pp_value(pp, piece_of(pp.breaks, x), x); }

// The not-a-knot cubic spline through (x, y); clamped when slopes are given.
pp_t cubic_spline(const vec& x, const vec& y, const double* end_slopes) {
    const int n = static_cast<int>(x.size());
    pp_t pp;
    pp.breaks = x;
    pp.order = 4;
    vec h(n - 1), d(n - 1);
    for (int i = 0; i + 1 < n; ++i) {
        h[i] = x[i + 1] - x[i];
        d[i] = (y[i + 1] - y[i]) / h[i];
    }
    vec m(n, 0.0);  // second derivatives at the points
    if (end_slopes) {
        // Clamped: the first derivative at both ends is given.
        vec a(n), b(n), c(n), r(n);
        b[0] = 2 * h[0];
        c[0] = h[0];
        r[0] = 6 * (d[0] - end_slopes[0]);
        for (int i = 1; i + 1 < n; ++i) {
            a[i] = h[i - 1];
            b[i] = 2 * (h[i - 1] + h[i]);
            c[i] = h[i];
            r[i] = 6 * (d[i] - d[i - 1]);
        }
        a[n - 1] = h[n - 2];
        b[n - 1] = 2 * h[n - 2];
        r[n - 1] = 6 * (end_slopes[1] - d[n - 2]);
        for (int i = 1; i < n; ++i) {  // the tridiagonal sweep
            const double w = a[i] / b[i - 1];
            b[i] -= w * c[i - 1];
            r[i] -= w * r[i - 1];
        }
        m[n - 1] = r[n - 1] / b[n - 1];
        for (int i = n - 2; i >= 0; --i) m[i] = (r[i] - c[i] * m[i + 1]) / b[i];
    } else if (n == 3) {
        // Not-a-knot on three points is the parabola through them: one second derivative.
        m[0] = m[1] = m[2] = 2 * (d[1] - d[0]) / (h[0] + h[1]);
    } else if (n >= 4) {
        // Interior equations for m[1..n-2]; the not-a-knot conditions (equal third derivatives
        // across x[1] and x[n-2]) give m[0] and m[n-1] in terms of their neighbours, folded into
        // the first and last rows so that the system stays tridiagonal.
        const int k = n - 2;
        vec a(k), b(k), c(k), r(k);
        for (int j = 0; j < k; ++j) {
            const int i = j + 1;
            a[j] = h[i - 1];
            b[j] = 2 * (h[i - 1] + h[i]);
            c[j] = h[i];
            r[j] = 6 * (d[i] - d[i - 1]);
        }
        // m0 = ((h0 + h1) m1 - h0 m2) / h1
        b[0] += h[0] * (h[0] + h[1]) / h[1];
        c[0] -= h[0] * h[0] / h[1];
        // m[n-1] = ((h[n-2] + h[n-3]) m[n-2] - h[n-2] m[n-3]) / h[n-3]
        const double hl = h[n - 2], hp = h[n - 3];
        b[k - 1] += hl * (hl + hp) / hp;
        a[k - 1] -= hl * hl / hp;
        for (int j = 1; j < k; ++j) {
            const double w = a[j] / b[j - 1];
            b[j] -= w * c[j - 1];
            r[j] -= w * r[j - 1];
        }
        vec mm(k);
        mm[k - 1] = r[k - 1] / b[k - 1];
        for (int j = k - 2; j >= 0; --j) mm[j] = (r[j] - c[j] * mm[j + 1]) / b[j];
        for (int j = 0; j < k; ++j) m[j + 1] = mm[j];
        m[0] = ((h[0] + h[1]) * m[1] - h[0] * m[2]) / h[1];
        m[n - 1] = ((hl + hp) * m[n - 2] - hl * m[n - 3]) / hp;
    }
    pp.coefs.resize(static_cast<std::size_t>(n - 1) * 4);
    for (int i = 0; i + 1 < n; ++i) {
        double* c = &pp.coefs[static_cast<std::size_t>(i) * 4];
        c[0] = (m[i + 1] - m[i]) / (6 * h[i]);
        c[1] = m[i] / 2;
        c[2] = d[i] - h[i] * (2 * m[i] + m[i + 1]) / 6;
        c[3] = y[i];
    }
    return pp;
}

double sign(double v) { return (v > 0) - (v < 0); }

// Fritsch and Carlson's monotone slopes, with the shape-preserving three-point ends.
pp_t hermite_pchip(const vec& x, const vec& y) {
    const int n = static_cast<int>(x.size());
    vec h(n - 1), d(n - 1), s(n, 0.0);
    for (int i = 0; i + 1 < n; ++i) {
        h[i] = x[i + 1] - x[i];
        d[i] = (y[i + 1] - y[i]) / h[i];
    }
    if (n == 2) {
        s[0] = s[1] = d[0];
    } else {
        for (int k = 1; k + 1 < n; ++k) {
            if (sign(d[k - 1]) * sign(d[k]) <= 0) continue;
            const double w1 = 2 * h[k] + h[k - 1], w2 = h[k] + 2 * h[k - 1];
            s[k] = (w1 + w2) / (w1 / d[k - 1] + w2 / d[k]);
        }
        auto end = [](double h0, double h1, double d0, double d1) {
            double v = ((2 * h0 + h1) * d0 - h0 * d1) / (h0 + h1);
            if (sign(v) != sign(d0))
                v = 0;
            else if (sign(d0) != sign(d1) && std::fabs(v) > 3 * std::fabs(d0))
                v = 3 * d0;
            return v;
        };
        s[0] = end(h[0], h[1], d[0], d[1]);
        s[n - 1] = end(h[n - 2], h[n - 3], d[n - 2], d[n - 3]);
    }
    pp_t pp;
    pp.breaks = x;
    pp.order = 4;
    pp.coefs.resize(static_cast<std::size_t>(n - 1) * 4);
    for (int i = 0; i + 1 < n; ++i) {
        double* c = &pp.coefs[static_cast<std::size_t>(i) * 4];
        c[0] = (s[i] - 2 * d[i] + s[i + 1]) / (h[i] * h[i]);
        c[1] = (3 * d[i] - 2 * s[i] - s[i + 1]) / h[i];
        c[2] = s[i];
        c[3] = y[i];
    }
    return pp;
}

vec values_of(const Mm& m) {
    Mm d = mdouble(m);
    return vec(d.addr(), d.addr() + d.size());
}

// Checks the sample points: real, finite, distinct and sorted (decreasing points are turned round
// with their values, by the caller). Gives +1 for increasing, -1 for decreasing, 0 after a report.
int check_points(const char* function, const vec& x) {
    for (double v : x)
        if (!std::isfinite(v)) {
            error("%s: sample points must be finite", function);
            return 0;
        }
    if (x.size() < 2) {
        error("%s: at least 2 sample points are needed", function);
        return 0;
    }
    const int dir = x[1] > x[0] ? 1 : -1;
    for (std::size_t k = 1; k < x.size(); ++k)
        if (!((x[k] - x[k - 1]) * dir > 0)) {
            error("%s: sample points must be distinct and sorted", function);
            return 0;
        }
    return dir;
}

enum class method_t { linear, nearest, previous, next, spline, pchip, bad };

method_t method_word(const char* function, const Mm* m) {
    if (!m) return method_t::linear;
    char w[16];
    Mstr(*m, w, sizeof w);
    std::string s = w;
    if (!s.empty() && s[0] == '*') s.erase(0, 1);  // the old spelling for uniform points
    if (s == "linear") return method_t::linear;
    if (s == "nearest") return method_t::nearest;
    if (s == "previous") return method_t::previous;
    if (s == "next") return method_t::next;
    if (s == "spline") return method_t::spline;
    if (s == "pchip" || s == "cubic") return method_t::pchip;
    error("%s: unknown method '%s'", function, w);
    return method_t::bad;
}

// Interpolates one column y over x (increasing) at the queries. outside is NaN, a fixed value, or
// (extrapolate) the method carried beyond the ends.
void interpolate_column(method_t how, const vec& x, const double* y, const double* q, double* out, std::size_t nq,
                        bool extrapolate, double outside) {
    const int n = static_cast<int>(x.size());
    const double lo = x.front(), hi = x.back();
    if (how == method_t::spline || how == method_t::pchip) {
        const pp_t pp = how == method_t::spline ? cubic_spline(x, vec(y, y + n), nullptr) : hermite_pchip(x, vec(y, y + n));
        for (std::size_t k = 0; k < nq; ++k) {
            const double v = q[k];
            out[k] = (!extrapolate && (v < lo || v > hi)) ? outside : pp_at(pp, v);
        }
        return;
    }
    // Sorted queries walk the intervals once; others search for each.
    const bool sorted = std::is_sorted(q, q + nq);
    int i = 0;
    if (how == method_t::linear && sorted) {
        // The common case in one tight loop. Weights (1 - t) and t give the samples back exactly at
        // both ends of an interval.
        for (std::size_t k = 0; k < nq; ++k) {
            const double v = q[k];
            if (!(v >= lo && v <= hi) && !(extrapolate && !std::isnan(v))) {
                out[k] = std::isnan(v) ? v : outside;
                continue;
            }
            while (i < n - 2 && x[i + 1] <= v) ++i;
            const double t = (v - x[i]) / (x[i + 1] - x[i]);
            out[k] = (1 - t) * y[i] + t * y[i + 1];
        }
        return;
    }
    for (std::size_t k = 0; k < nq; ++k) {
        const double v = q[k];
        if (std::isnan(v)) {
            out[k] = v;
            continue;
        }
        if (sorted) {
            while (i < n - 2 && x[i + 1] <= v) ++i;
        } else {
            i = piece_of(x, v);
        }
        const bool inside = v >= lo && v <= hi;
        if (!inside && !extrapolate) {
            out[k] = outside;
            continue;
        }
        const double t = (v - x[i]) / (x[i + 1] - x[i]);
        switch (how) {
            case method_t::linear: out[k] = (1 - t) * y[i] + t * y[i + 1]; break;
            case method_t::nearest: out[k] = t < 0.5 ? y[i] : y[i + 1]; break;
            case method_t::previous:
                out[k] = v < lo ? outside : (v >= x[i + 1] ? y[i + 1] : y[i]);
                break;
            case method_t::next: out[k] = v > hi ? outside : (v <= x[i] ? y[i] : y[i + 1]); break;
            default: break;
        }
    }
}

Mm interp1_impl(const Mm* x_arg, const Mm& y_arg, const Mm& xi, const Mm* method, const Mm* extrap) {
    const method_t how = method_word("interp1", method);
    if (how == method_t::bad) return x_M;
    if (error_numeric(y_arg, "interp1") || error_numeric(xi, "interp1") || (x_arg && error_numeric(*x_arg, "interp1")))
        return x_M;
    Mm Y = mdouble(y_arg);
    const bool vector_y = Y.dims[0] == 1 || Y.dims[1] == 1;
    const int n = vector_y ? Y.size() : Y.dims[0];
    const int columns = vector_y ? 1 : Y.size() / std::max(1, n);
    vec x;
    if (x_arg) {
        x = values_of(*x_arg);
    } else {
        for (int k = 1; k <= n; ++k) x.push_back(k);
    }
    if (static_cast<int>(x.size()) != n) {
        error("interp1: x and y must have the same length");
        return x_M;
    }
    const int dir = check_points("interp1", x);
    if (!dir) return x_M;
    bool extrapolate = how == method_t::spline || how == method_t::pchip;
    double outside = std::nan("");
    if (extrap) {
        if (extrap->flags.str) {
            char w[16];
            Mstr(*extrap, w, sizeof w);
            if (std::strcmp(w, "extrap")) {
                error("interp1: the last argument must be 'extrap' or a value");
                return x_M;
            }
            extrapolate = true;
        } else {
            extrapolate = false;
            outside = scalar(*extrap);
        }
    }
    Mm Q = mdouble(xi);
    const std::size_t nq = static_cast<std::size_t>(Q.size());
    // The result has the shape of xi for a vector y; one column per column of y otherwise.
    Mm r = vector_y ? Mm(Y.pi ? 1 : 0, 0, 0, Q.ndims, Q.dims, ak_double)
                    : Mm(Y.pi ? 1 : 0, 0, 0, static_cast<int>(nq), columns, ak_double);
    std::vector<double> col(n);
    const double* halves[2] = {Y.addr(), Y.addi()};
    double* outs[2] = {r.addr(), r.addi()};
    for (int h = 0; h < 2; ++h) {
        if (!halves[h]) continue;
        for (int c = 0; c < columns; ++c) {
            const double* ys = halves[h] + static_cast<std::size_t>(c) * n;
            if (dir < 0) {
                for (int k = 0; k < n; ++k) col[k] = ys[n - 1 - k];
                ys = col.data();
            }
            vec xs = x;
            if (dir < 0) std::reverse(xs.begin(), xs.end());
            interpolate_column(how, xs, ys, Q.addr(), outs[h] + c * nq, nq, extrapolate, h ? 0.0 : outside);
        }
    }
    return r;
}

// ---- piecewise polynomial structures ----------------------------------------------------------------

Mm pp_struct(const pp_t& pp) {
    const int l = pp.pieces(), k = pp.order;
    Mm breaks(0, 0, 0, 1, l + 1, ak_double);
    std::copy(pp.breaks.begin(), pp.breaks.end(), breaks.addr());
    Mm coefs(0, 0, 0, l, k, ak_double);
    for (int i = 0; i < l; ++i)
        for (int j = 0; j < k; ++j) coefs.addr()[i + j * l] = pp.coefs[static_cast<std::size_t>(i) * k + j];
    Mm list(0, 0, 0, 1, 12, ak_mm);
    Mm* e = static_cast<Mm*>(list.pr);
    const char* names[6] = {"form", "breaks", "coefs", "pieces", "order", "dim"};
    Mm values[6] = {TM("pp"), breaks, coefs, Mm(double(l)), Mm(double(k)), Mm(1.0)};
    for (int j = 0; j < 6; ++j) {
        e[2 * j] = TM(names[j]);
        e[2 * j + 1] = values[j];
    }
    return mstruct(list);
}

bool pp_from_struct(const char* function, const Mm& s, pp_t& pp) {
    if (!s.fields || s.findfield("breaks", 0) < 0 || s.findfield("coefs", 0) < 0) {
        error("%s: a piecewise polynomial structure expected", function);
        return false;
    }
    Mm breaks = mdouble(getfield(s, TM("breaks"))), coefs = mdouble(getfield(s, TM("coefs")));
    const int l = breaks.size() - 1;
    if (l < 1 || coefs.dims[0] != l) {
        error("%s: the coefficients must have one row for each piece", function);
        return false;
    }
    pp.breaks.assign(breaks.addr(), breaks.addr() + breaks.size());
    pp.order = coefs.dims[1];
    pp.coefs.resize(static_cast<std::size_t>(l) * pp.order);
    for (int i = 0; i < l; ++i)
        for (int j = 0; j < pp.order; ++j) pp.coefs[static_cast<std::size_t>(i) * pp.order + j] = coefs.addr()[i + j * l];
    return true;
}

Mm evaluate(const pp_t& pp, const Mm& xi) {
    Mm Q = mdouble(xi);
    Mm r(0, 0, 0, Q.ndims, Q.dims, ak_double);
    for (int k = 0; k < Q.size(); ++k) r.addr()[k] = pp_at(pp, Q.addr()[k]);
    return r;
}

// x and y of spline or pchip, sorted increasing; end slopes taken off y when it has two values more.
bool spline_data(const char* function, const Mm& x_arg, const Mm& y_arg, vec& x, vec& y, double* slopes, bool& clamped) {
    if (error_numeric(x_arg, function) || error_numeric(y_arg, function)) return false;
    if (y_arg.pi) {
        error("%s: real data expected", function);
        return false;
    }
    x = values_of(x_arg);
    y = values_of(y_arg);
    clamped = y.size() == x.size() + 2;
    if (clamped) {
        slopes[0] = y.front();
        slopes[1] = y.back();
        y = vec(y.begin() + 1, y.end() - 1);
    }
    if (x.size() != y.size()) {
        error("%s: x and y must have the same length", function);
        return false;
    }
    const int dir = check_points(function, x);
    if (!dir) return false;
    if (dir < 0) {
        std::reverse(x.begin(), x.end());
        std::reverse(y.begin(), y.end());
        std::swap(slopes[0], slopes[1]);
    }
    return true;
}

}  // namespace

Mm interp1(const Mm& y, const Mm& xi) { return interp1_impl(nullptr, y, xi, nullptr, nullptr); }
Mm interp1(const Mm& x, const Mm& y, const Mm& xi) { return interp1_impl(&x, y, xi, nullptr, nullptr); }
Mm interp1(const Mm& x, const Mm& y, const Mm& xi, const Mm& method) { return interp1_impl(&x, y, xi, &method, nullptr); }
Mm interp1(const Mm& x, const Mm& y, const Mm& xi, const Mm& method, const Mm& extrap) {
    return interp1_impl(&x, y, xi, &method, &extrap);
}

Mm interp2(const Mm& z, const Mm& xi, const Mm& yi) {
    Mm Z = mdouble(z);
    vec xs, ys;
    for (int k = 1; k <= Z.dims[1]; ++k) xs.push_back(k);
    for (int k = 1; k <= Z.dims[0]; ++k) ys.push_back(k);
    Mm X(0, 0, 0, 1, static_cast<int>(xs.size()), ak_double), Y(0, 0, 0, static_cast<int>(ys.size()), 1, ak_double);
    std::copy(xs.begin(), xs.end(), X.addr());
    std::copy(ys.begin(), ys.end(), Y.addr());
    return interp2(X, Y, z, xi, yi);
}
Mm interp2(const Mm& x, const Mm& y, const Mm& z, const Mm& xi, const Mm& yi) {
    return interp2(x, y, z, xi, yi, TM("linear"));
}
Mm interp2(const Mm& x, const Mm& y, const Mm& z, const Mm& xi, const Mm& yi, const Mm& method) {
    const method_t how = method_word("interp2", &method);
    if (how != method_t::linear && how != method_t::nearest) {
        if (how != method_t::bad) error("interp2: method must be 'linear' or 'nearest'");
        return x_M;
    }
    if (error_numeric(z, "interp2")) return x_M;
    Mm Z = mdouble(z);
    if (Z.ndims > 2) {
        error("interp2: z must be a 2-d matrix");
        return x_M;
    }
    // x and y may be vectors or the full grids of meshgrid: take the first row and column.
    Mm X = mdouble(x), Y = mdouble(y);
    const int nx = Z.dims[1], ny = Z.dims[0];
    vec xs(nx), ys(ny);
    for (int k = 0; k < nx; ++k) xs[k] = X.size() == nx ? X.addr()[k] : X.addr()[k * X.dims[0]];
    for (int k = 0; k < ny; ++k) ys[k] = Y.addr()[k];
    if ((X.size() != nx && (X.dims[0] != ny || X.dims[1] != nx)) || (Y.size() != ny && (Y.dims[0] != ny || Y.dims[1] != nx))) {
        error("interp2: x and y must match the columns and rows of z");
        return x_M;
    }
    if (!check_points("interp2", xs) || !check_points("interp2", ys)) return x_M;
    if (xs[1] < xs[0] || ys[1] < ys[0]) {
        error("interp2: sample points must be increasing");
        return x_M;
    }
    Mm QX = mdouble(xi), QY = mdouble(yi);
    if (QX.size() != QY.size()) {
        error("interp2: xi and yi must have the same size");
        return x_M;
    }
    Mm r(0, 0, 0, QX.ndims, QX.dims, ak_double);
    for (int k = 0; k < QX.size(); ++k) {
        const double u = QX.addr()[k], v = QY.addr()[k];
        if (!(u >= xs.front() && u <= xs.back() && v >= ys.front() && v <= ys.back())) {
            r.addr()[k] = std::nan("");
            continue;
        }
        const int i = piece_of(xs, u), j = piece_of(ys, v);
        const double s = (u - xs[i]) / (xs[i + 1] - xs[i]), t = (v - ys[j]) / (ys[j + 1] - ys[j]);
        auto zat = [&](int row, int col) { return Z.addr()[row + static_cast<std::size_t>(col) * ny]; };
        if (how == method_t::nearest) {
            r.addr()[k] = zat(t < 0.5 ? j : j + 1, s < 0.5 ? i : i + 1);
        } else {
            r.addr()[k] = (1 - s) * (1 - t) * zat(j, i) + s * (1 - t) * zat(j, i + 1) + (1 - s) * t * zat(j + 1, i) +
                          s * t * zat(j + 1, i + 1);
        }
    }
    return r;
}

Mm spline(const Mm& x, const Mm& y) {
    vec xs, ys;
    double slopes[2];
    bool clamped;
    if (!spline_data("spline", x, y, xs, ys, slopes, clamped)) return x_M;
    return pp_struct(cubic_spline(xs, ys, clamped ? slopes : nullptr));
}
Mm spline(const Mm& x, const Mm& y, const Mm& xi) {
    vec xs, ys;
    double slopes[2];
    bool clamped;
    if (!spline_data("spline", x, y, xs, ys, slopes, clamped)) return x_M;
    return evaluate(cubic_spline(xs, ys, clamped ? slopes : nullptr), xi);
}
Mm pchip(const Mm& x, const Mm& y) {
    vec xs, ys;
    double slopes[2];
    bool clamped;
    if (!spline_data("pchip", x, y, xs, ys, slopes, clamped)) return x_M;
    return pp_struct(hermite_pchip(xs, ys));
}
Mm pchip(const Mm& x, const Mm& y, const Mm& xi) {
    vec xs, ys;
    double slopes[2];
    bool clamped;
    if (!spline_data("pchip", x, y, xs, ys, slopes, clamped)) return x_M;
    return evaluate(hermite_pchip(xs, ys), xi);
}

Mm mkpp(const Mm& breaks, const Mm& coefs) {
    if (error_numeric(breaks, "mkpp") || error_numeric(coefs, "mkpp")) return x_M;
    pp_t pp;
    pp.breaks = values_of(breaks);
    const int l = static_cast<int>(pp.breaks.size()) - 1;
    Mm c = mdouble(coefs);
    if (l < 1 || c.size() % l != 0) {
        error("mkpp: the coefficients must fill a row for each of the %d pieces", std::max(l, 0));
        return x_M;
    }
    pp.order = c.size() / l;
    pp.coefs.resize(c.size());
    // A matrix of coefficients is read one row per piece; a vector piece after piece.
    const bool matrix = c.dims[0] == l && c.dims[1] == pp.order;
    for (int i = 0; i < l; ++i)
        for (int j = 0; j < pp.order; ++j)
            pp.coefs[static_cast<std::size_t>(i) * pp.order + j] = matrix ? c.addr()[i + j * l] : c.addr()[i * pp.order + j];
    return pp_struct(pp);
}

Mm ppval(const Mm& pp_arg, const Mm& xi) {
    pp_t pp;
    if (!pp_from_struct("ppval", pp_arg, pp)) return x_M;
    return evaluate(pp, xi);
}

Mm unmkpp(const Mm& pp_arg, i_o_t, Mm& coefs, Mm& pieces, Mm& order, Mm& dim) {
    pp_t pp;
    if (!pp_from_struct("unmkpp", pp_arg, pp)) return x_M;
    coefs = getfield(pp_arg, TM("coefs"));
    pieces = Mm(double(pp.pieces()));
    order = Mm(double(pp.order));
    dim = Mm(1.0);
    return getfield(pp_arg, TM("breaks"));
}

Mm unmkpp(const Mm& pp_arg) {
    Mm coefs, pieces, order, dim;
    return unmkpp(pp_arg, i_o, coefs, pieces, order, dim);
}

AK_BUILTIN("interp1", AK_FN(interp1, const Mm&, const Mm&), AK_FN(interp1, const Mm&, const Mm&, const Mm&),
           AK_FN(interp1, const Mm&, const Mm&, const Mm&, const Mm&), AK_FN(interp1, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("interp2", AK_FN(interp2, const Mm&, const Mm&, const Mm&), AK_FN(interp2, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&),
           AK_FN(interp2, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("spline", AK_FN(spline, const Mm&, const Mm&), AK_FN(spline, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("pchip", AK_FN(pchip, const Mm&, const Mm&), AK_FN(pchip, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("mkpp", mkpp);
AK_BUILTIN("ppval", ppval);
AK_BUILTIN("unmkpp", AK_FN(unmkpp, const Mm&), AK_FN(unmkpp, const Mm&, i_o_t, Mm&, Mm&, Mm&, Mm&));
