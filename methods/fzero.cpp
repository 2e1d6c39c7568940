// fzero: a sign change is found around a guess, then closed in on by Brent's mix of bisection,
// secant and inverse quadratic steps.
#include <cfloat>
#include <cmath>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/error.h"
#include "arklib/optim.h"
#include "arklib/sparse.h"
#include "methods/optim_internal.h"

namespace {

using ak_internal::objective_t;

// The first element of the function's result at x.
struct scalar_fn_t {
    objective_t f;
    bool trace;
    double operator()(double x, const char* what) {
        Mm r;
        f.raw(Mm(x), 1, &r);
        if (r.size() < 1 || r.flags.type == ak_mm) {
            error("optimization: function returned empty result");
            return NAN;
        }
        const double v = full(mdouble(r)).addr()[0];
        if (trace) ak_printf("%5d   %-22.15g %-22.15g %s\n", f.calls(), x, v, what);
        return v;
    }
};

const char* non_finite = "fzero: non-finite function value encountered while searching for interval";

// Finds [a, b] with a sign change. Returns 1 with the interval, 2 when a root was met on the way (in
// *a), 0 after a report.
int bracket(scalar_fn_t& f, const Mm& x, double* a, double* b, double* fa, double* fb) {
    if (x.size() == 2) {
        *a = x.addr()[0];
        *b = x.addr()[1];
        *fa = f(*a, "initial");
        *fb = f(*b, "initial");
        if (!std::isfinite(*fa) || !std::isfinite(*fb)) {
            error("%s", non_finite);
            return 0;
        }
        if (*fa == 0) return 2;
        if (*fb == 0) {
            *a = *b;
            return 2;
        }
        if ((*fa > 0) == (*fb > 0)) {
            error("fzero: function must have opposite signs at interval points");
            return 0;
        }
        return 1;
    }
    if (x.size() != 1) {
        error("fzero: initial guess x must be a scalar or interval");
        return 0;
    }
    const double x0 = x.addr()[0];
    double dx = x0 == 0 ? 0.01 : 0.01 * x0;
    for (;;) {
        *a = x0 - dx;
        *fa = f(*a, "search");
        if (!std::isfinite(*fa)) {
            error("%s", non_finite);
            return 0;
        }
        if (*fa == 0) return 2;
        *b = x0 + dx;
        *fb = f(*b, "search");
        if (!std::isfinite(*fb)) {
            error("%s", non_finite);
            return 0;
        }
        if (*fb == 0) {
            *a = *b;
            return 2;
        }
        if ((*fa > 0) != (*fb > 0)) return 1;
        dx *= 1.3;
        if (!std::isfinite(dx)) {
            error("fzero: could not find a change-sign interval");
            return 0;
        }
    }
}

double brent(scalar_fn_t& f, double a, double b, double fa, double fb, double tol) {
    double c = a, fc = fa, d = b - a, e = d;
    int passes = 0;
    for (;;) {
        if ((fb > 0) == (fc > 0)) {
            c = a;
            fc = fa;
            d = e = b - a;
        }
        if (std::fabs(fc) < std::fabs(fb)) {
            a = b;
            b = c;
            c = a;
            fa = fb;
            fb = fc;
            fc = fa;
        }
        const double tol1 = tol + 2 * DBL_EPSILON * std::fabs(b);
        const double m = 0.5 * (c - b);
        if (std::fabs(m) <= tol1 || fb == 0) break;
        if (++passes >= 10000) {
            warning("fzero: maximum number of iterations exceeded");
            break;
        }
        const char* how = "bisection";
        if (std::fabs(e) >= tol1 && std::fabs(fb) <= std::fabs(fa)) {
            double p, q;
            const double s = fb / fa;
            if (a == c) {
                p = 2 * m * s;
                q = 1 - s;
            } else {
                const double qa = fa / fc, r = fb / fc;
                p = s * (2 * m * qa * (qa - r) - (b - a) * (r - 1));
                q = (qa - 1) * (r - 1) * (s - 1);
            }
            if (p > 0) q = -q;
            else p = -p;
            if (2 * p < 3 * m * q - std::fabs(tol1 * q) && p < std::fabs(0.5 * e * q)) {
                e = d;
                d = p / q;
                how = a == c ? "secant" : "interpolation";
            } else {
                d = e = m;
            }
        } else {
            d = e = m;
        }
        a = b;
        fa = fb;
        b += std::fabs(d) > tol1 ? d : (m > 0 ? tol1 : -tol1);
        fb = f(b, how);
    }
    return b;
}

Mm fzero_run(const Mm& fname, const Mm& x, const Mm& tol_in, const Mm& trace, const Mm& params) {
    char name[1024];
    if (!ak_internal::function_name(fname, "fzero", name, sizeof name)) return x_M;
    scalar_fn_t f{objective_t(TM(name), params), istrue(trace) != 0};
    Mm xf = full(mdouble(x));
    double tol = tol_in.size() > 0 ? full(mdouble(tol_in)).addr()[0] : 0;
    if (!(tol > 0)) tol = DBL_EPSILON;
    double a, b, fa, fb;
    const int found = bracket(f, xf, &a, &b, &fa, &fb);
    if (found == 0) return x_M;
    if (found == 2) return Mm(a);
    return Mm(brent(f, a, b, fa, fb, tol));
}

}  // namespace

Mm fzero(const Mm&) {
    error_input("fzero", 1);
    return x_M;
}
Mm fzero(const Mm& f, const Mm& x) { return fzero_run(f, x, Mm(), Mm(), Mm()); }
Mm fzero(const Mm& f, const Mm& x, const Mm& tol) { return fzero_run(f, x, tol, Mm(), Mm()); }
Mm fzero(const Mm& f, const Mm& x, const Mm& tol, const Mm& trace) { return fzero_run(f, x, tol, trace, Mm()); }
Mm fzero(const Mm& f, const Mm& x, const Mm& tol, const Mm& trace, const Mm& params) {
    return fzero_run(f, x, tol, trace, params);
}

AK_BUILTIN("fzero", AK_FN(fzero, const Mm&), AK_FN(fzero, const Mm&, const Mm&),
           AK_FN(fzero, const Mm&, const Mm&, const Mm&), AK_FN(fzero, const Mm&, const Mm&, const Mm&, const Mm&),
           AK_FN(fzero, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&));
