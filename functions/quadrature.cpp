// Numerical integration: adaptive Simpson, adaptive Gauss-Lobatto with Kronrod extension (after
// Gander and Gautschi, "Adaptive quadrature - revisited", 2000), globally adaptive Gauss-Kronrod
// 7-15, a double integral by nesting, and the trapezoid rule on data.
#include "arklib/quadrature.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <queue>
#include <string>
#include <vector>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/error.h"
#include "arklib/subscript.h"

namespace {

using vec = std::vector<double>;

// Calls the integrand by name: through the table of functions when it is registered there, else
// through the program's feval hook. Counts the points asked for; a failed call stops the work.
struct integrand_t {
    const char* function;
    Mm name;
    long count = 0;
    bool failed = false;

    Mm call(const Mm* in, int nin) {
        char text[256];
        Mstr(name, text, sizeof text);
        if (ak_function_exists(text)) {
            Mm out;
            if (!ak_call_function(text, nin, in, 1, &out)) failed = true;
            return out;
        }
        const Mm* list[2] = {&in[0], nin > 1 ? &in[1] : nullptr};
        Mm args = cell_from_array(nin, list);
        Mm o[6];
        const double saved = nargout_val;
        nargout_val = 1.0;
        nargout_set = 1;
        Mm r = feval_func(name, args, i_o, o[0], o[1], o[2], o[3], o[4], o[5]);
        nargout_val = saved;
        return r;
    }

    // Values at the points (with y given, f(x, y) for the scalar y).
    vec at(const vec& xs, const double* y = nullptr) {
        if (failed) return vec(xs.size(), 0.0);
        count += static_cast<long>(xs.size());
        Mm x(0, 0, 0, 1, static_cast<int>(xs.size()), ak_double);
        std::copy(xs.begin(), xs.end(), x.addr());
        Mm in[2] = {x, y ? Mm(*y) : Mm()};
        Mm r = call(in, y ? 2 : 1);
        if (failed || r.flags.type != ak_double || r.size() != static_cast<int>(xs.size())) {
            if (!failed) error("%s: the function must give one real value for each point", function);
            failed = true;
            return vec(xs.size(), 0.0);
        }
        Mm d = r.flags.sparse ? mdouble(r) : r;
        return vec(d.addr(), d.addr() + d.size());
    }
};

bool name_argument(const char* function, const Mm& f) {
    if (!f.flags.str) {
        error("%s: the function must be given by its name", function);
        return false;
    }
    return true;
}

double tolerance(const char* function, const Mm* tol, double fallback) {
    if (!tol || tol->size() == 0) return fallback;
    const double t = scalar(*tol);
    if (!(t > 0)) {
        error("%s: tolerance must be positive", function);
        return -1;
    }
    return t;
}

// ---- adaptive Simpson ------------------------------------------------------------------------------

// Adaptive Simpson on g, which takes points and gives values; stop says when to give up (a failed
// call). Each panel is halved until its two halves agree with the whole to 15 * tol.
template <class G>
struct simpson_t {
    G g;
    double tol;
    const bool* stop;
    bool min_step = false, not_finite = false;

    double refine(double a, double b, double fa, double fm, double fb, double whole, int depth) {
        const double m = (a + b) / 2, h = b - a;
        const vec in = g(vec{(a + m) / 2, (m + b) / 2});
        const double left = h / 12 * (fa + 4 * in[0] + fm), right = h / 12 * (fm + 4 * in[1] + fb);
        const double both = left + right;
        if (!std::isfinite(both)) not_finite = true;
        if (*stop || !std::isfinite(both)) return both;
        if (std::fabs(both - whole) <= 15 * tol) return both + (both - whole) / 15;
        if (depth > 50 || std::fabs(h) < 1e-15 * (std::fabs(a) + std::fabs(b))) {
            min_step = true;
            return both;
        }
        return refine(a, m, fa, in[0], fm, left, depth + 1) + refine(m, b, fm, in[1], fb, right, depth + 1);
    }

    double run(double a, double b) {
        const vec e = g(vec{a, (a + b) / 2, b});
        if (*stop) return 0;
        return refine(a, b, e[0], e[1], e[2], (b - a) / 6 * (e[0] + 4 * e[1] + e[2]), 0);
    }
};

template <class G>
simpson_t<G> simpson(G g, double tol, const bool* stop) {
    return simpson_t<G>{g, tol, stop};
}

Mm quad_impl(const Mm& fn, const Mm& a_arg, const Mm& b_arg, const Mm* tol_arg, Mm* count) {
    if (!name_argument("quad", fn)) return x_M;
    const double a = scalar(a_arg), b = scalar(b_arg), tol = tolerance("quad", tol_arg, 1e-6);
    if (tol < 0) return x_M;
    integrand_t f{"quad", fn};
    auto s = simpson([&](const vec& xs) { return f.at(xs); }, tol, &f.failed);
    const double q = s.run(a, b);
    if (f.failed) return x_M;
    if (s.not_finite) warning("quad: Infinite or Not-a-Number function value encountered.");
    else if (s.min_step) warning("quad: Minimum step size reached; singularity possible.");
    if (count) *count = Mm(static_cast<double>(f.count));
    return Mm(q);
}

// ---- adaptive Gauss-Lobatto ------------------------------------------------------------------------

struct lobatto_t {
    integrand_t& f;
    double tol;
    bool min_step = false;

    double refine(double a, double b, double fa, double fb, int depth) {
        const double alpha = std::sqrt(2.0 / 3), beta = 1 / std::sqrt(5.0);
        const double h = (b - a) / 2, m = (a + b) / 2;
        const double mll = m - alpha * h, ml = m - beta * h, mr = m + beta * h, mrr = m + alpha * h;
        const vec y = f.at({mll, ml, m, mr, mrr});
        if (f.failed) return 0;
        // The four-point Lobatto rule and its seven-point Kronrod extension on the same panel.
        const double lobatto = h / 6 * (fa + fb + 5 * (y[1] + y[3]));
        const double kronrod = h / 1470 * (77 * (fa + fb) + 432 * (y[0] + y[4]) + 625 * (y[1] + y[3]) + 672 * y[2]);
        if (std::fabs(kronrod - lobatto) <= tol || depth > 40 || !(mll > a && b > mrr)) {
            if (depth > 40 || !(mll > a && b > mrr)) min_step = std::fabs(kronrod - lobatto) > tol;
            return kronrod;
        }
        return refine(a, mll, fa, y[0], depth + 1) + refine(mll, ml, y[0], y[1], depth + 1) +
               refine(ml, m, y[1], y[2], depth + 1) + refine(m, mr, y[2], y[3], depth + 1) +
               refine(mr, mrr, y[3], y[4], depth + 1) + refine(mrr, b, y[4], fb, depth + 1);
    }
};

Mm quadl_impl(const Mm& fn, const Mm& a_arg, const Mm& b_arg, const Mm* tol_arg, Mm* count) {
    if (!name_argument("quadl", fn)) return x_M;
    const double a = scalar(a_arg), b = scalar(b_arg), tol = tolerance("quadl", tol_arg, 1e-6);
    if (tol < 0) return x_M;
    integrand_t f{"quadl", fn};
    const vec ends = f.at({a, b});
    lobatto_t l{f, tol};
    const double q = f.failed ? 0 : l.refine(a, b, ends[0], ends[1], 0);
    if (f.failed) return x_M;
    if (l.min_step) warning("quadl: Minimum step size reached; singularity possible.");
    if (count) *count = Mm(static_cast<double>(f.count));
    return Mm(q);
}

// ---- globally adaptive Gauss-Kronrod ----------------------------------------------------------------

const double kronrod_x[8] = {0.991455371120812639206854697526329, 0.949107912342758524526189684047851,
                             0.864864423359769072789712788640926, 0.741531185599394439863864773280788,
                             0.586087235467691130294144845693013, 0.405845151377397166906606412076961,
                             0.207784955007898467600689403773245, 0.0};
const double kronrod_w[8] = {0.022935322010529224963732008058970, 0.063092092629978553290700663189204,
                             0.104790010322250183839876322541518, 0.140653259715525918745189590510238,
                             0.169004726639267902826583426598550, 0.190350578064785409913256402421014,
                             0.204432940075298892414161999234649, 0.209482141084727828012999174891714};
const double gauss_w[4] = {0.129484966168869693270611432679082, 0.279705391489276667901467771423780,
                           0.381830050505118944950369775488975, 0.417959183673469387755102040816327};

struct panel_t {
    double a, b, value, err;
    bool operator<(const panel_t& o) const { return err < o.err; }
};

// The variable change that maps (a, b) onto a finite interval of t: x(t) and dx/dt.
struct mapping_t {
    int kind = 0;  // 0 finite, 1 [a, inf), 2 (-inf, b], 3 (-inf, inf)
    double a = 0, b = 0;
    double x(double t) const {
        switch (kind) {
            case 1: return a + t / (1 - t);
            case 2: return b - t / (1 - t);
            case 3: return t / (1 - t * t);
            default: return t;
        }
    }
    double dx(double t) const {
        switch (kind) {
            case 1:
            case 2: return 1 / ((1 - t) * (1 - t));
            case 3: return (1 + t * t) / ((1 - t * t) * (1 - t * t));
            default: return 1;
        }
    }
};

panel_t gauss_kronrod(integrand_t& f, const mapping_t& map, double a, double b) {
    const double c = (a + b) / 2, h = (b - a) / 2;
    vec ts, xs;
    for (int k = 0; k < 7; ++k) {
        ts.push_back(c - h * kronrod_x[k]);
        ts.push_back(c + h * kronrod_x[k]);
    }
    ts.push_back(c);
    for (double t : ts) xs.push_back(map.x(t));
    const vec y = f.at(xs);
    double kron = kronrod_w[7] * y[14] * map.dx(ts[14]), gauss = gauss_w[3] * y[14] * map.dx(ts[14]);
    for (int k = 0; k < 7; ++k) {
        const double pair = y[2 * k] * map.dx(ts[2 * k]) + y[2 * k + 1] * map.dx(ts[2 * k + 1]);
        kron += kronrod_w[k] * pair;
        if (k % 2 == 1) gauss += gauss_w[k / 2] * pair;
    }
    return {a, b, kron * h, std::fabs((kron - gauss) * h)};
}

Mm integral_impl(const Mm& fn, const Mm& a_arg, const Mm& b_arg, std::initializer_list<const Mm*> opts) {
    if (!name_argument("integral", fn)) return x_M;
    double abs_tol = 1e-10, rel_tol = 1e-6;
    const Mm* const* o = opts.begin();
    for (std::size_t k = 0; k + 1 < opts.size(); k += 2) {
        char word[16];
        Mstr(*o[k], word, sizeof word);
        std::string w = word;
        for (char& ch : w) ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
        const double v = scalar(*o[k + 1]);
        if (w == "abstol") {
            abs_tol = v;
        } else if (w == "reltol") {
            rel_tol = v;
        } else {
            error("integral: unknown option '%s'", word);
            return x_M;
        }
    }
    double a = scalar(a_arg), b = scalar(b_arg);
    double sign = 1;
    if (a > b) {
        std::swap(a, b);
        sign = -1;
    }
    if (a == b) return Mm(0.0);
    mapping_t map;
    double lo = a, hi = b;
    if (std::isinf(a) && std::isinf(b)) {
        map.kind = 3;
        lo = -1;
        hi = 1;
    } else if (std::isinf(b)) {
        map = {1, a, b};
        lo = 0;
        hi = 1;
    } else if (std::isinf(a)) {
        map = {2, a, b};
        lo = 0;
        hi = 1;
    }
    integrand_t f{"integral", fn};
    // Start from ten panels; always split the panel with the largest error estimate.
    std::priority_queue<panel_t> panels;
    double total = 0, err = 0;
    for (int k = 0; k < 10; ++k) {
        panel_t p = gauss_kronrod(f, map, lo + (hi - lo) * k / 10, lo + (hi - lo) * (k + 1) / 10);
        total += p.value;
        err += p.err;
        panels.push(p);
    }
    while (!f.failed && err > std::max(abs_tol, rel_tol * std::fabs(total)) && panels.size() < 650) {
        panel_t worst = panels.top();
        panels.pop();
        const double mid = (worst.a + worst.b) / 2;
        if (!(mid > worst.a && mid < worst.b)) {
            panels.push(worst);
            break;
        }
        panel_t left = gauss_kronrod(f, map, worst.a, mid), right = gauss_kronrod(f, map, mid, worst.b);
        total += left.value + right.value - worst.value;
        err += left.err + right.err - worst.err;
        panels.push(left);
        panels.push(right);
    }
    if (f.failed) return x_M;
    if (!std::isfinite(total)) warning("integral: Infinite or Not-a-Number value encountered.");
    else if (err > std::max(abs_tol, rel_tol * std::fabs(total)))
        warning("integral: Reached the limit on the maximum number of intervals in use. The error bound is %g.", err);
    return Mm(sign * total);
}

// ---- trapezoid rule ---------------------------------------------------------------------------------

Mm trapezoid(const char* function, const Mm* x_arg, const Mm& y_arg, const Mm* dim, bool running) {
    if (error_numeric(y_arg, function) || (x_arg && error_numeric(*x_arg, function))) return x_M;
    Mm Y = mdouble(y_arg);
    const int d = dim ? normalize_dim_argument(function, Y, *dim) : Y.nsingleton() - 1;
    const int n = d < Y.ndims ? Y.dims[d] : 1;
    vec spacing;  // n - 1 steps, or one step for all
    if (x_arg) {
        Mm X = mdouble(*x_arg);
        if (X.size() == 1) {
            spacing.assign(std::max(n - 1, 0), X.addr()[0]);
        } else if (X.size() == n) {
            for (int k = 0; k + 1 < n; ++k) spacing.push_back(X.addr()[k + 1] - X.addr()[k]);
        } else {
            error("%s: x must have as many points as y along the dimension", function);
            return x_M;
        }
    } else {
        spacing.assign(std::max(n - 1, 0), 1.0);
    }
    int dims[4] = {1, 1, 1, 1};
    for (int k = 0; k < Y.ndims; ++k) dims[k] = Y.dims[k];
    if (!running) dims[d] = 1;
    Mm r(Y.pi ? 1 : 0, 0, 0, std::max(Y.ndims, d + 1), dims, ak_double);
    int inner = 1, outer = 1;
    for (int k = 0; k < Y.ndims; ++k) {
        if (k < d) inner *= Y.dims[k];
        if (k > d) outer *= Y.dims[k];
    }
    const double* in[2] = {Y.addr(), Y.addi()};
    double* out[2] = {r.addr(), r.addi()};
    for (int h = 0; h < 2; ++h) {
        if (!in[h]) continue;
        for (int o = 0; o < outer; ++o)
            for (int i = 0; i < inner; ++i) {
                const double* y = in[h] + static_cast<std::size_t>(o) * n * inner + i;
                double s = 0;
                if (running && n) out[h][static_cast<std::size_t>(o) * n * inner + i] = 0;
                for (int k = 0; k + 1 < n; ++k) {
                    s += spacing[k] * (y[k * inner] + y[(k + 1) * inner]) / 2;
                    if (running) out[h][static_cast<std::size_t>(o) * n * inner + i + (k + 1) * inner] = s;
                }
                if (!running) out[h][static_cast<std::size_t>(o) * inner + i] = s;
            }
    }
    return r;
}

}  // namespace

Mm quad(const Mm& f, const Mm& a, const Mm& b) { return quad_impl(f, a, b, nullptr, nullptr); }
Mm quad(const Mm& f, const Mm& a, const Mm& b, const Mm& tol) { return quad_impl(f, a, b, &tol, nullptr); }
Mm quad(const Mm& f, const Mm& a, const Mm& b, const Mm& tol, i_o_t, Mm& count) { return quad_impl(f, a, b, &tol, &count); }
Mm quadl(const Mm& f, const Mm& a, const Mm& b) { return quadl_impl(f, a, b, nullptr, nullptr); }
Mm quadl(const Mm& f, const Mm& a, const Mm& b, const Mm& tol) { return quadl_impl(f, a, b, &tol, nullptr); }
Mm quadl(const Mm& f, const Mm& a, const Mm& b, const Mm& tol, i_o_t, Mm& count) { return quadl_impl(f, a, b, &tol, &count); }
Mm integral(const Mm& f, const Mm& a, const Mm& b) { return integral_impl(f, a, b, {}); }
Mm integral(const Mm& f, const Mm& a, const Mm& b, const Mm& n1, const Mm& v1) { return integral_impl(f, a, b, {&n1, &v1}); }
Mm integral(const Mm& f, const Mm& a, const Mm& b, const Mm& n1, const Mm& v1, const Mm& n2, const Mm& v2) {
    return integral_impl(f, a, b, {&n1, &v1, &n2, &v2});
}

Mm dblquad(const Mm& f, const Mm& xmin, const Mm& xmax, const Mm& ymin, const Mm& ymax) {
    return dblquad(f, xmin, xmax, ymin, ymax, Mm(1e-6));
}
Mm dblquad(const Mm& fn, const Mm& xmin, const Mm& xmax, const Mm& ymin, const Mm& ymax, const Mm& tol_arg) {
    if (!name_argument("dblquad", fn)) return x_M;
    const double x0 = scalar(xmin), x1 = scalar(xmax), y0 = scalar(ymin), y1 = scalar(ymax);
    const double tol = tolerance("dblquad", &tol_arg, 1e-6);
    if (tol < 0) return x_M;
    integrand_t f{"dblquad", fn};
    // The inner integral over x for each y, integrated in turn over y.
    auto inner = [&](const vec& ys) {
        vec out;
        for (double y : ys) out.push_back(simpson([&](const vec& xs) { return f.at(xs, &y); }, tol, &f.failed).run(x0, x1));
        return out;
    };
    const double q = simpson(inner, tol, &f.failed).run(y0, y1);
    return f.failed ? x_M : Mm(q);
}

Mm trapz(const Mm& y) { return trapezoid("trapz", nullptr, y, nullptr, false); }
Mm trapz(const Mm& x, const Mm& y) { return trapezoid("trapz", &x, y, nullptr, false); }
Mm trapz(const Mm& x, const Mm& y, const Mm& dim) { return trapezoid("trapz", &x, y, &dim, false); }
Mm cumtrapz(const Mm& y) { return trapezoid("cumtrapz", nullptr, y, nullptr, true); }
Mm cumtrapz(const Mm& x, const Mm& y) { return trapezoid("cumtrapz", &x, y, nullptr, true); }
Mm cumtrapz(const Mm& x, const Mm& y, const Mm& dim) { return trapezoid("cumtrapz", &x, y, &dim, true); }

AK_BUILTIN("quad", AK_FN(quad, const Mm&, const Mm&, const Mm&), AK_FN(quad, const Mm&, const Mm&, const Mm&, const Mm&),
           AK_FN(quad, const Mm&, const Mm&, const Mm&, const Mm&, i_o_t, Mm&));
AK_BUILTIN("quadl", AK_FN(quadl, const Mm&, const Mm&, const Mm&), AK_FN(quadl, const Mm&, const Mm&, const Mm&, const Mm&),
           AK_FN(quadl, const Mm&, const Mm&, const Mm&, const Mm&, i_o_t, Mm&));
AK_BUILTIN("integral", AK_FN(integral, const Mm&, const Mm&, const Mm&), AK_FN(integral, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&),
           AK_FN(integral, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("dblquad", AK_FN(dblquad, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&),
           AK_FN(dblquad, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("trapz", AK_FN(trapz, const Mm&), AK_FN(trapz, const Mm&, const Mm&), AK_FN(trapz, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("cumtrapz", AK_FN(cumtrapz, const Mm&), AK_FN(cumtrapz, const Mm&, const Mm&), AK_FN(cumtrapz, const Mm&, const Mm&, const Mm&));
