// constr and fminu: sequential quadratic programming. Each pass solves a quadratic model of the
// Lagrangian, with a quasi-Newton matrix kept positive definite by Powell's damping, under the
// linearised constraints; a line search on an exact penalty function takes the step.
#include <cfloat>
#include <cmath>
#include <cstring>
#include <vector>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/display.h"
#include "arklib/error.h"
#include "arklib/optim.h"
#include "arklib/sparse.h"
#include "methods/lp_engine.h"
#include "methods/optim_internal.h"

namespace {

using namespace ak_internal;
typedef std::vector<double> vec;

struct problem_t {
    Mm name, grad;
    user_args_t args;
    Mm shape;
    int n = 0, ng = 0, neq = 0;
    bool constrained = true;
    bool minimax = false;  // the unknowns are x and a bound t on every element of f(x)
    int calls = 0;
    vec lb, ub;

    problem_t(const Mm& params) : args(params) {}

    // f and g at x; false after a report.
    bool eval(const double* x, double* f, vec& g) {
        Mm xm = shaped(shape, x);
        const Mm* lead[1] = {&xm};
        Mm out[2];
        ++calls;
        call_user(name, args.list(1, lead), constrained ? 2 : 1, out);
        if (out[0].size() <= 0) {
            display(out[0]);
            if (constrained) display(out[1]);
            error("constr: the target function returned empty result.");
            return false;
        }
        g.clear();
        if (constrained && out[1].size() > 0 && out[1].flags.type != ak_mm) {
            Mm d = full(mdouble(out[1]));
            g.assign(d.addr(), d.addr() + d.size());
        }
        if (minimax) {  // minimise t with f_i(x) - t <= 0 after the user's own constraints
            Mm v = full(mdouble(out[0]));
            const double t = x[n - 1];
            *f = t;
            for (int i = 0; i < v.size(); ++i) g.push_back(v.addr()[i] - t);
            return true;
        }
        *f = reduce_result(out[0], false);
        return true;
    }

    // df (n) and dg (n x ng, column per constraint) at x with value f and constraints g.
    bool gradients(vec& x, double f, const vec& g, const options_t& o, vec& df, vec& dg) {
        df.assign(n, 0);
        dg.assign(static_cast<long>(n) * ng, 0);
        if (grad.size() > 0) {
            Mm xm = shaped(shape, x.data());
            const Mm* lead[1] = {&xm};
            Mm out[2];
            call_user(grad, args.list(1, lead), 2, out);
            Mm a = full(mdouble(out[0]));
            for (int j = 0; j < n && j < a.size(); ++j) df[j] = a.addr()[j];
            if (ng > 0 && out[1].size() > 0) {
                Mm b = full(mdouble(out[1]));
                for (long k = 0; k < static_cast<long>(n) * ng && k < b.size(); ++k) dg[k] = b.addr()[k];
            }
            return true;
        }
        vec gt;
        for (int j = 0; j < n; ++j) {
            double h = std::sqrt(DBL_EPSILON) * std::fmax(std::fabs(x[j]), 1.0);
            h = std::fmin(o.at(17), std::fmax(o.at(16), h));
            // Step inwards at an upper bound.
            if (!ub.empty() && x[j] + h > ub[j]) h = -h;
            const double keep = x[j];
            x[j] += h;
            double ft;
            const bool ok = eval(x.data(), &ft, gt);
            x[j] = keep;
            if (!ok) return false;
            df[j] = (ft - f) / h;
            for (int i = 0; i < ng && i < static_cast<int>(gt.size()); ++i)
                dg[j + static_cast<long>(i) * n] = (gt[i] - g[i]) / h;
        }
        return true;
    }
};

double violation(const vec& g, int neq) {
    double v = 0;
    for (int i = 0; i < static_cast<int>(g.size()); ++i) v = std::fmax(v, i < neq ? std::fabs(g[i]) : g[i]);
    return v;
}

double merit(double f, const vec& g, int neq, const vec& r) {
    double m = f;
    for (int i = 0; i < static_cast<int>(g.size()); ++i) m += r[i] * (i < neq ? std::fabs(g[i]) : std::fmax(0.0, g[i]));
    return m;
}

// The quadratic subproblem in the step d: rows dg' d = -g (equalities), dg' d <= -g, and the box
// lb - x <= d <= ub - x as rows. Returns the qp code; d and the constraint multipliers are filled.
int subproblem(const problem_t& P, const vec& x, const vec& g, const vec& df, const vec& dg, const vec& B, vec& d,
               vec& mult) {
    const int n = P.n, ng = P.ng;
    std::vector<int> lo, hi;
    for (int j = 0; j < n && !P.lb.empty(); ++j)
        if (std::isfinite(P.lb[j])) lo.push_back(j);
    for (int j = 0; j < n && !P.ub.empty(); ++j)
        if (std::isfinite(P.ub[j])) hi.push_back(j);
    const int m = ng + static_cast<int>(lo.size() + hi.size());
    vec a(static_cast<long>(m) * n, 0), b(m, 0), lam(m, 0);
    for (int i = 0; i < ng; ++i) {
        for (int j = 0; j < n; ++j) a[i + static_cast<long>(j) * m] = dg[j + static_cast<long>(i) * n];
        b[i] = -g[i];
    }
    int r = ng;
    for (int j : lo) {
        a[r + static_cast<long>(j) * m] = -1;
        b[r++] = x[j] - P.lb[j];
    }
    for (int j : hi) {
        a[r + static_cast<long>(j) * m] = 1;
        b[r++] = P.ub[j] - x[j];
    }
    lp_problem_t p{m, n, P.neq, df.data(), a.data(), b.data()};
    int unique = 0, seems = 0;
    d.assign(n, 0);
    const int code = qp_solve(p, B.data(), d.data(), lam.data(), &unique, &seems);
    if (unique) {
        // A single feasible step is the step.
        lp_feasible_point(p, d.data());
    }
    mult.assign(lam.begin(), lam.begin() + ng);
    return unique ? lp_optimal : code;
}

void bfgs(vec& B, const vec& s, vec y, int n) {
    vec Bs(n, 0);
    double sBs = 0, sy = 0;
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) Bs[i] += B[i + static_cast<long>(j) * n] * s[j];
        sBs += s[i] * Bs[i];
        sy += s[i] * y[i];
    }
    if (!(sBs > 0)) return;
    if (sy < 0.2 * sBs) {  // Powell's damping keeps B positive definite
        const double theta = 0.8 * sBs / (sBs - sy);
        for (int i = 0; i < n; ++i) y[i] = theta * y[i] + (1 - theta) * Bs[i];
        sy = 0;
        for (int i = 0; i < n; ++i) sy += s[i] * y[i];
    }
    if (!(sy > 0)) return;
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) B[i + static_cast<long>(j) * n] += y[i] * y[j] / sy - Bs[i] * Bs[j] / sBs;
}

vec bound_vector(const Mm& v, int n, double fill) {
    vec out;
    if (v.size() <= 0 || v.flags.type == ak_mm) return out;
    Mm d = full(mdouble(v));
    out.assign(n, fill);
    for (int j = 0; j < n && j < d.size(); ++j) out[j] = d.addr()[j];
    return out;
}

Mm constr_run(const Mm& fname, const Mm& x0_in, const Mm& options, const Mm& vlb, const Mm& vub, const Mm& grad,
              const Mm& params, bool constrained, const char* who, Mm& options_out, bool minimax = false) {
    options_t o = options_from_vector(options);
    options_out = o.matrix();
    char name[1024];
    if (!function_name(fname, who, name, sizeof name)) return x_M;
    problem_t P(params);
    P.name = TM(name);
    P.constrained = constrained;
    if (grad.isstr() && grad.size() > 0 && !minimax) P.grad = grad;
    const Mm x0 = full(mdouble(x0_in));
    P.shape = x0;
    P.minimax = minimax;
    P.n = x0.size() + (minimax ? 1 : 0);
    const int n = P.n;
    if (x0.size() == 0) return x0;
    P.lb = bound_vector(vlb, n, -INFINITY);
    P.ub = bound_vector(vub, n, INFINITY);
    if (minimax) {  // t has no bounds
        if (!P.lb.empty()) P.lb[n - 1] = -INFINITY;
        if (!P.ub.empty()) P.ub[n - 1] = INFINITY;
    }
    vec x(x0.addr(), x0.addr() + x0.size()), g, df, dg, d, mult;
    if (minimax) x.push_back(0);
    for (int j = 0; j < n; ++j) {  // start inside the box
        if (!P.lb.empty() && x[j] < P.lb[j]) x[j] = P.lb[j];
        if (!P.ub.empty() && x[j] > P.ub[j]) x[j] = P.ub[j];
    }
    double f;
    if (!P.eval(x.data(), &f, g)) return x_M;
    if (minimax) {  // start t at the largest element
        double top = -INFINITY;
        for (std::size_t i = 0; i < g.size(); ++i) top = std::fmax(top, g[i]);
        x[n - 1] = std::isfinite(top) ? top : 0;
        if (!P.eval(x.data(), &f, g)) return x_M;
    }
    P.ng = static_cast<int>(g.size());
    P.neq = static_cast<int>(o.at(13));
    int nbounds = 0;
    for (double v : P.lb) nbounds += std::isfinite(v);
    for (double v : P.ub) nbounds += std::isfinite(v);
    if (P.neq < 0 || P.neq > P.ng) {
        ak_printf("%d+%d+%d!=%d\n", nbounds, P.neq, P.ng - P.neq, nbounds + P.ng);
        error("constr: contraints are inconsistent.");
        return x_M;
    }
    const double tolx = o.at(2), tolf = o.at(3), tolcon = o.at(4);
    const int limit = o.at(14) > 0 ? static_cast<int>(o.at(14)) : 100 * n;
    const bool trace = o.at(1) > 0;
    vec B(static_cast<long>(n) * n, 0), r(P.ng, 0);
    for (int j = 0; j < n; ++j) B[j + static_cast<long>(j) * n] = 1;
    if (!P.gradients(x, f, g, o, df, dg)) return x_M;
    if (trace) ak_printf("  f-COUNT      FUNCTION    MAX{g}         STEP\n");
    while (P.calls < limit) {
        const int code = subproblem(P, x, g, df, dg, B, d, mult);
        if (code == lp_infeasible || code == lp_iterations) break;
        if (code == lp_unbounded) {  // the model has no minimum: a steepest descent step instead
            for (int j = 0; j < n; ++j) d[j] = -df[j];
        }
        for (int i = 0; i < P.ng; ++i) r[i] = std::fmax(std::fabs(mult[i]), 0.5 * (r[i] + std::fabs(mult[i])));
        // Line search on the penalty function.
        const double phi0 = merit(f, g, P.neq, r);
        double slope = 0;
        for (int j = 0; j < n; ++j) slope += df[j] * d[j];
        slope -= merit(0, g, P.neq, r);
        double alpha = 1, fn = f;
        vec xn(n), gn;
        bool moved = false;
        while (alpha >= 0.00000000000001) {
            for (int j = 0; j < n; ++j) xn[j] = x[j] + alpha * d[j];
            if (!P.eval(xn.data(), &fn, gn)) return x_M;
            const double phi = merit(fn, gn, P.neq, r);
            if (phi <= phi0 + 0.01 * alpha * std::fmin(slope, 0.0)) {
                moved = true;
                break;
            }
            // The minimum of the parabola through phi0, its slope and phi, kept in [0.1, 0.5] of alpha.
            double factor = 0.5;
            const double curve = (phi - phi0 - slope * alpha) / (alpha * alpha);
            if (slope < 0 && curve > 0) factor = std::fmin(0.5, std::fmax(0.1, -slope / (2 * curve * alpha)));
            alpha *= factor;
        }
        if (!moved) break;
        double step = 0;
        for (int j = 0; j < n; ++j) step = std::fmax(step, std::fabs(alpha * d[j]));
        const double change = std::fabs(fn - f);
        // The gradient of the Lagrangian before and after the step.
        vec gl_old(n), gl_new(n), dfn, dgn;
        for (int j = 0; j < n; ++j) {
            gl_old[j] = df[j];
            for (int i = 0; i < P.ng; ++i) gl_old[j] += dg[j + static_cast<long>(i) * n] * mult[i];
        }
        if (!P.gradients(xn, fn, gn, o, dfn, dgn)) return x_M;
        vec s(n), y(n);
        for (int j = 0; j < n; ++j) {
            gl_new[j] = dfn[j];
            for (int i = 0; i < P.ng; ++i) gl_new[j] += dgn[j + static_cast<long>(i) * n] * mult[i];
            s[j] = xn[j] - x[j];
            y[j] = gl_new[j] - gl_old[j];
        }
        bfgs(B, s, y, n);
        x = xn;
        f = fn;
        g = gn;
        df = dfn;
        dg = dgn;
        if (trace) ak_printf("%9d %13.6g %13.6g %13.6g\n", P.calls, f, violation(g, P.neq), alpha);
        if (step < tolx && change < tolf && violation(g, P.neq) < tolcon) break;
    }
    o.at(8) = f;
    o.at(10) = P.calls;
    options_out = o.matrix();
    return shaped(x0, x.data());
}

}  // namespace

#define M const Mm&
Mm constr(M f, M x) {
    Mm o;
    return constr_run(f, x, Mm(), Mm(), Mm(), Mm(), Mm(), true, "constr", o);
}
Mm constr(M f, M x, M opt) {
    Mm o;
    return constr_run(f, x, opt, Mm(), Mm(), Mm(), Mm(), true, "constr", o);
}
Mm constr(M f, M x, M opt, M vlb) {
    Mm o;
    return constr_run(f, x, opt, vlb, Mm(), Mm(), Mm(), true, "constr", o);
}
Mm constr(M f, M x, M opt, M vlb, M vub) {
    Mm o;
    return constr_run(f, x, opt, vlb, vub, Mm(), Mm(), true, "constr", o);
}
Mm constr(M f, M x, M opt, M vlb, M vub, M grad) {
    Mm o;
    return constr_run(f, x, opt, vlb, vub, grad, Mm(), true, "constr", o);
}
Mm constr(M f, M x, M opt, M vlb, M vub, M grad, M params) {
    Mm o;
    return constr_run(f, x, opt, vlb, vub, grad, params, true, "constr", o);
}
Mm constr(M f, M x, i_o_t, Mm& o) { return constr_run(f, x, Mm(), Mm(), Mm(), Mm(), Mm(), true, "constr", o); }
Mm constr(M f, M x, M opt, i_o_t, Mm& o) { return constr_run(f, x, opt, Mm(), Mm(), Mm(), Mm(), true, "constr", o); }
Mm constr(M f, M x, M opt, M vlb, i_o_t, Mm& o) {
    return constr_run(f, x, opt, vlb, Mm(), Mm(), Mm(), true, "constr", o);
}
Mm constr(M f, M x, M opt, M vlb, M vub, i_o_t, Mm& o) {
    return constr_run(f, x, opt, vlb, vub, Mm(), Mm(), true, "constr", o);
}
Mm constr(M f, M x, M opt, M vlb, M vub, M grad, i_o_t, Mm& o) {
    return constr_run(f, x, opt, vlb, vub, grad, Mm(), true, "constr", o);
}
Mm constr(M f, M x, M opt, M vlb, M vub, M grad, M params, i_o_t, Mm& o) {
    return constr_run(f, x, opt, vlb, vub, grad, params, true, "constr", o);
}

// minimax: the smallest largest element of f(x), [F, G] = f(x) with G as in constr.
Mm minimax(M f, M x) {
    Mm o;
    return constr_run(f, x, Mm(), Mm(), Mm(), Mm(), Mm(), true, "minimax", o, true);
}
Mm minimax(M f, M x, M opt) {
    Mm o;
    return constr_run(f, x, opt, Mm(), Mm(), Mm(), Mm(), true, "minimax", o, true);
}
Mm minimax(M f, M x, M opt, M vlb) {
    Mm o;
    return constr_run(f, x, opt, vlb, Mm(), Mm(), Mm(), true, "minimax", o, true);
}
Mm minimax(M f, M x, M opt, M vlb, M vub) {
    Mm o;
    return constr_run(f, x, opt, vlb, vub, Mm(), Mm(), true, "minimax", o, true);
}
Mm minimax(M f, M x, M opt, M vlb, M vub, M grad) {
    Mm o;
    return constr_run(f, x, opt, vlb, vub, grad, Mm(), true, "minimax", o, true);
}
Mm minimax(M f, M x, M opt, M vlb, M vub, M grad, M params) {
    Mm o;
    return constr_run(f, x, opt, vlb, vub, grad, params, true, "minimax", o, true);
}
Mm minimax(M f, M x, i_o_t, Mm& o) { return constr_run(f, x, Mm(), Mm(), Mm(), Mm(), Mm(), true, "minimax", o, true); }
Mm minimax(M f, M x, M opt, i_o_t, Mm& o) {
    return constr_run(f, x, opt, Mm(), Mm(), Mm(), Mm(), true, "minimax", o, true);
}
Mm minimax(M f, M x, M opt, M vlb, i_o_t, Mm& o) {
    return constr_run(f, x, opt, vlb, Mm(), Mm(), Mm(), true, "minimax", o, true);
}
Mm minimax(M f, M x, M opt, M vlb, M vub, i_o_t, Mm& o) {
    return constr_run(f, x, opt, vlb, vub, Mm(), Mm(), true, "minimax", o, true);
}
Mm minimax(M f, M x, M opt, M vlb, M vub, M grad, i_o_t, Mm& o) {
    return constr_run(f, x, opt, vlb, vub, grad, Mm(), true, "minimax", o, true);
}
Mm minimax(M f, M x, M opt, M vlb, M vub, M grad, M params, i_o_t, Mm& o) {
    return constr_run(f, x, opt, vlb, vub, grad, params, true, "minimax", o, true);
}

// fminu: the same engine without constraints; f gives one output.
Mm fminu(M f, M x) {
    Mm o;
    return constr_run(f, x, Mm(), Mm(), Mm(), Mm(), Mm(), false, "fminu", o);
}
Mm fminu(M f, M x, M opt) {
    Mm o;
    return constr_run(f, x, opt, Mm(), Mm(), Mm(), Mm(), false, "fminu", o);
}
Mm fminu(M f, M x, M opt, M grad) {
    Mm o;
    return constr_run(f, x, opt, Mm(), Mm(), grad, Mm(), false, "fminu", o);
}
Mm fminu(M f, M x, M opt, M grad, M params) {
    Mm o;
    return constr_run(f, x, opt, Mm(), Mm(), grad, params, false, "fminu", o);
}
Mm fminu(M f, M x, i_o_t, Mm& o) { return constr_run(f, x, Mm(), Mm(), Mm(), Mm(), Mm(), false, "fminu", o); }
Mm fminu(M f, M x, M opt, i_o_t, Mm& o) { return constr_run(f, x, opt, Mm(), Mm(), Mm(), Mm(), false, "fminu", o); }
Mm fminu(M f, M x, M opt, M grad, i_o_t, Mm& o) {
    return constr_run(f, x, opt, Mm(), Mm(), grad, Mm(), false, "fminu", o);
}
Mm fminu(M f, M x, M opt, M grad, M params, i_o_t, Mm& o) {
    return constr_run(f, x, opt, Mm(), Mm(), grad, params, false, "fminu", o);
}

#define I i_o_t
AK_BUILTIN("constr", AK_FN(constr, M, M), AK_FN(constr, M, M, M), AK_FN(constr, M, M, M, M),
           AK_FN(constr, M, M, M, M, M), AK_FN(constr, M, M, M, M, M, M), AK_FN(constr, M, M, M, M, M, M, M),
           AK_FN(constr, M, M, I, Mm&), AK_FN(constr, M, M, M, I, Mm&), AK_FN(constr, M, M, M, M, I, Mm&),
           AK_FN(constr, M, M, M, M, M, I, Mm&), AK_FN(constr, M, M, M, M, M, M, I, Mm&),
           AK_FN(constr, M, M, M, M, M, M, M, I, Mm&));
AK_BUILTIN("minimax", AK_FN(minimax, M, M), AK_FN(minimax, M, M, M), AK_FN(minimax, M, M, M, M),
           AK_FN(minimax, M, M, M, M, M), AK_FN(minimax, M, M, M, M, M, M), AK_FN(minimax, M, M, M, M, M, M, M),
           AK_FN(minimax, M, M, I, Mm&), AK_FN(minimax, M, M, M, I, Mm&), AK_FN(minimax, M, M, M, M, I, Mm&),
           AK_FN(minimax, M, M, M, M, M, I, Mm&), AK_FN(minimax, M, M, M, M, M, M, I, Mm&),
           AK_FN(minimax, M, M, M, M, M, M, M, I, Mm&));
AK_BUILTIN("fminu", AK_FN(fminu, M, M), AK_FN(fminu, M, M, M), AK_FN(fminu, M, M, M, M), AK_FN(fminu, M, M, M, M, M),
           AK_FN(fminu, M, M, I, Mm&), AK_FN(fminu, M, M, M, I, Mm&), AK_FN(fminu, M, M, M, M, I, Mm&),
           AK_FN(fminu, M, M, M, M, M, I, Mm&));
#undef I
#undef M
