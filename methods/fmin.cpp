// fmin and fminbnd: the minimum of a function of one variable on an interval, by golden sections
// and parabolas through the last three points.
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
using ak_internal::options_t;

struct fmin_result_t {
    double x, fx;
    int calls, limit;
};

double value_at(objective_t& f, double u) {
    const double v = f(Mm(u));
    if (!std::isfinite(v)) error("fmin: the function value must be finite");
    return v;
}

fmin_result_t golden(objective_t& f, double a, double b, const options_t& o) {
    const double ratio = 0.5 * (3 - std::sqrt(5.0));
    const double tol = o.at(2) > 0 ? o.at(2) : 0.0001;
    const int limit = o.at(14) > 0 ? static_cast<int>(o.at(14)) : 1000;
    const double eps = std::sqrt(DBL_EPSILON);
    if (a > b) std::swap(a, b);
    double x = a + ratio * (b - a), w = x, v = x;
    double fx = value_at(f, x), fw = fx, fv = fx;
    double d = 0, e = 0;
    const bool trace = o.at(1) != 0;
    while (f.calls() < limit) {
        const double m = 0.5 * (a + b);
        const double tol1 = eps * std::fabs(x) + tol / 3;
        const double tol2 = 2 * tol1;
        if (std::fabs(x - m) <= tol2 - 0.5 * (b - a)) break;
        bool parabola = false;
        if (std::fabs(e) > tol1) {
            double r = (x - w) * (fx - fv);
            double q = (x - v) * (fx - fw);
            double p = (x - v) * q - (x - w) * r;
            q = 2 * (q - r);
            if (q > 0) p = -p;
            q = std::fabs(q);
            r = e;
            e = d;
            if (std::fabs(p) < std::fabs(0.5 * q * r) && p > q * (a - x) && p < q * (b - x)) {
                d = p / q;
                const double u = x + d;
                if (u - a < tol2 || b - u < tol2) d = m > x ? tol1 : -tol1;
                parabola = true;
            }
        }
        if (!parabola) {
            e = x >= m ? a - x : b - x;
            d = ratio * e;
        }
        const double u = x + (std::fabs(d) >= tol1 ? d : (d > 0 ? tol1 : -tol1));
        const double fu = value_at(f, u);
        if (trace) ak_printf("%5d   %-22.15g %-22.15g %s\n", f.calls(), u, fu, parabola ? "parabolic" : "golden");
        if (fu <= fx) {
            if (u >= x) a = x;
            else b = x;
            v = w;
            fv = fw;
            w = x;
            fw = fx;
            x = u;
            fx = fu;
        } else {
            if (u < x) a = u;
            else b = u;
            if (fu <= fw || w == x) {
                v = w;
                fv = fw;
                w = u;
                fw = fu;
            } else if (fu <= fv || v == x || v == w) {
                v = u;
                fv = fu;
            }
        }
    }
    return {x, fx, f.calls(), limit};
}

fmin_result_t fmin_run(const Mm& fname, const Mm& a, const Mm& b, const options_t& o, const Mm& params) {
    char name[1024];
    if (!ak_internal::function_name(fname, "fmin", name, sizeof name)) return {0, 0, 0, 0};
    objective_t f(TM(name), params);
    const double lo = full(mdouble(a)).size() ? full(mdouble(a)).addr()[0] : 0;
    const double hi = full(mdouble(b)).size() ? full(mdouble(b)).addr()[0] : 0;
    return golden(f, lo, hi, o);
}

Mm fmin_full(const Mm& f, const Mm& a, const Mm& b, const Mm& options, const Mm& params, Mm& options_out) {
    options_t o = ak_internal::options_from_vector(options);
    const fmin_result_t r = fmin_run(f, a, b, o, params);
    o.at(8) = r.fx;
    o.at(10) = r.calls;
    options_out = o.matrix();
    return Mm(r.x);
}

Mm fminbnd_full(const Mm& f, const Mm& a, const Mm& b, const Mm& options, const Mm& params, Mm& fval,
                Mm& exitflag) {
    const options_t o = ak_internal::options_from(options);
    const fmin_result_t r = fmin_run(f, a, b, o, params);
    fval = Mm(r.fx);
    exitflag = Mm(r.calls < r.limit ? 1.0 : 0.0);
    return Mm(r.x);
}

}  // namespace

Mm fmin(const Mm& f, const Mm& a, const Mm& b) {
    Mm o;
    return fmin_full(f, a, b, Mm(), Mm(), o);
}
Mm fmin(const Mm& f, const Mm& a, const Mm& b, const Mm& options) {
    Mm o;
    return fmin_full(f, a, b, options, Mm(), o);
}
Mm fmin(const Mm& f, const Mm& a, const Mm& b, const Mm& options, const Mm& params) {
    Mm o;
    return fmin_full(f, a, b, options, params, o);
}
Mm fmin(const Mm& f, const Mm& a, const Mm& b, i_o_t, Mm& options_out) {
    return fmin_full(f, a, b, Mm(), Mm(), options_out);
}
Mm fmin(const Mm& f, const Mm& a, const Mm& b, const Mm& options, i_o_t, Mm& options_out) {
    return fmin_full(f, a, b, options, Mm(), options_out);
}
Mm fmin(const Mm& f, const Mm& a, const Mm& b, const Mm& options, const Mm& params, i_o_t, Mm& options_out) {
    return fmin_full(f, a, b, options, params, options_out);
}

Mm fminbnd(const Mm& f, const Mm& a, const Mm& b) {
    Mm v, e;
    return fminbnd_full(f, a, b, Mm(), Mm(), v, e);
}
Mm fminbnd(const Mm& f, const Mm& a, const Mm& b, const Mm& options) {
    Mm v, e;
    return fminbnd_full(f, a, b, options, Mm(), v, e);
}
Mm fminbnd(const Mm& f, const Mm& a, const Mm& b, const Mm& options, const Mm& params) {
    Mm v, e;
    return fminbnd_full(f, a, b, options, params, v, e);
}
Mm fminbnd(const Mm& f, const Mm& a, const Mm& b, i_o_t, Mm& fval) {
    Mm e;
    return fminbnd_full(f, a, b, Mm(), Mm(), fval, e);
}
Mm fminbnd(const Mm& f, const Mm& a, const Mm& b, const Mm& options, i_o_t, Mm& fval) {
    Mm e;
    return fminbnd_full(f, a, b, options, Mm(), fval, e);
}
Mm fminbnd(const Mm& f, const Mm& a, const Mm& b, const Mm& options, const Mm& params, i_o_t, Mm& fval) {
    Mm e;
    return fminbnd_full(f, a, b, options, params, fval, e);
}
Mm fminbnd(const Mm& f, const Mm& a, const Mm& b, i_o_t, Mm& fval, Mm& exitflag) {
    return fminbnd_full(f, a, b, Mm(), Mm(), fval, exitflag);
}
Mm fminbnd(const Mm& f, const Mm& a, const Mm& b, const Mm& options, i_o_t, Mm& fval, Mm& exitflag) {
    return fminbnd_full(f, a, b, options, Mm(), fval, exitflag);
}
Mm fminbnd(const Mm& f, const Mm& a, const Mm& b, const Mm& options, const Mm& params, i_o_t, Mm& fval,
           Mm& exitflag) {
    return fminbnd_full(f, a, b, options, params, fval, exitflag);
}

#define M const Mm&
AK_BUILTIN("fmin", AK_FN(fmin, M, M, M), AK_FN(fmin, M, M, M, M), AK_FN(fmin, M, M, M, M, M),
           AK_FN(fmin, M, M, M, i_o_t, Mm&), AK_FN(fmin, M, M, M, M, i_o_t, Mm&),
           AK_FN(fmin, M, M, M, M, M, i_o_t, Mm&));
AK_BUILTIN("fminbnd", AK_FN(fminbnd, M, M, M), AK_FN(fminbnd, M, M, M, M), AK_FN(fminbnd, M, M, M, M, M),
           AK_FN(fminbnd, M, M, M, i_o_t, Mm&), AK_FN(fminbnd, M, M, M, M, i_o_t, Mm&),
           AK_FN(fminbnd, M, M, M, M, M, i_o_t, Mm&), AK_FN(fminbnd, M, M, M, i_o_t, Mm&, Mm&),
           AK_FN(fminbnd, M, M, M, M, i_o_t, Mm&, Mm&), AK_FN(fminbnd, M, M, M, M, M, i_o_t, Mm&, Mm&));
#undef M
