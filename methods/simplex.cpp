// The Nelder-Mead simplex behind fmins, fminsearch and fsolve: reflection 1, expansion 2,
// contraction 0.5 and shrink 0.5, on n + 1 vertices kept in one work block.
#include <cmath>
#include <cstring>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/error.h"
#include "arklib/memory.h"
#include "arklib/optim.h"
#include "arklib/sparse.h"
#include "methods/optim_internal.h"

namespace ak_internal {

struct simplex_result_t {
    Mm x;
    double fx;
    int calls, limit;
};

simplex_result_t simplex(const Mm& fname, const Mm& x0_in, const options_t& o, const Mm& params, bool root,
                         const char* who) {
    char name[1024];
    if (!function_name(fname, who, name, sizeof name)) return {x_M, 0, 0, 0};
    const Mm x0 = full(mdouble(x0_in));
    const int n = x0.size();
    if (n == 0) return {x0, 0, 0, 0};
    objective_t f(TM(name), params, root);
    const bool trace = o.at(1) != 0;
    const double tolx = o.at(2) > 0 ? o.at(2) : 0.0001;
    const double tolf = o.at(3) > 0 ? o.at(3) : 0.0001;
    const int limit = o.at(14) > 0 ? static_cast<int>(o.at(14)) : 300 * n;

    ak_scratch<double> work((n + 6) * n + n + 1);
    double* v = work;               // n + 1 vertices of n
    double* fv = v + (n + 1) * n;   // their values
    double* cen = fv + n + 1;       // centroid
    double* r = cen + n;            // reflected
    double* e = r + n;              // expanded or contracted
    auto vertex = [&](int k) { return v + static_cast<long>(k) * n; };
    auto value = [&](const double* p) { return f(shaped(x0, p)); };

    std::memcpy(vertex(0), x0.addr(), sizeof(double) * n);
    for (int k = 1; k <= n; ++k) {
        double* p = vertex(k);
        std::memcpy(p, x0.addr(), sizeof(double) * n);
        p[k - 1] = p[k - 1] != 0 ? 1.05 * p[k - 1] : 0.00025;
    }
    for (int k = 0; k <= n; ++k) fv[k] = value(vertex(k));

    int best = 0, worst = 0, second = 0;
    auto rank = [&]() {
        best = worst = 0;
        for (int k = 1; k <= n; ++k) {
            if (fv[k] < fv[best]) best = k;
            if (fv[k] > fv[worst]) worst = k;
        }
        second = worst == 0 ? 1 : 0;
        for (int k = 0; k <= n; ++k)
            if (k != worst && fv[k] > fv[second]) second = k;
    };
    auto spread = [&]() {
        double s = 0;
        for (int k = 0; k <= n; ++k) s = std::fmax(s, std::fabs(fv[k] - fv[best]));
        return s;
    };
    auto size = [&]() {
        double s = 0;
        for (int i = 0; i < n; ++i) s = std::fmax(s, std::fabs(vertex(best)[i] - vertex(worst)[i]));
        return s;
    };
    rank();
    while (spread() > tolf && f.calls() < limit && size() >= tolx) {
        for (int i = 0; i < n; ++i) {
            double s = 0;
            for (int k = 0; k <= n; ++k)
                if (k != worst) s += vertex(k)[i];
            cen[i] = s / n;
        }
        double* w = vertex(worst);
        for (int i = 0; i < n; ++i) r[i] = 2 * cen[i] - w[i];
        const double fr = value(r);
        if (fr < fv[best]) {
            for (int i = 0; i < n; ++i) e[i] = 2 * r[i] - cen[i];
            const double fe = value(e);
            const bool expand = fe < fr;
            std::memcpy(w, expand ? e : r, sizeof(double) * n);
            fv[worst] = expand ? fe : fr;
            if (trace) ak_printf(expand ? "expand\n" : "reflect\n");
        } else if (fr < fv[second]) {
            std::memcpy(w, r, sizeof(double) * n);
            fv[worst] = fr;
            if (trace) ak_printf("reflect\n");
        } else {
            for (int i = 0; i < n; ++i) e[i] = 0.5 * (w[i] + cen[i]);
            const double fc = value(e);
            if (fc < fv[worst]) {
                std::memcpy(w, e, sizeof(double) * n);
                fv[worst] = fc;
                if (trace) ak_printf("contract inside\n");
            } else {
                const double* b = vertex(best);
                for (int k = 0; k <= n; ++k) {
                    if (k == best) continue;
                    for (int i = 0; i < n; ++i) vertex(k)[i] = 0.5 * (vertex(k)[i] + b[i]);
                    fv[k] = value(vertex(k));
                }
                if (trace) ak_printf("shrink\n");
            }
        }
        rank();
    }
    return {shaped(x0, vertex(best)), fv[best], f.calls(), limit};
}

}  // namespace ak_internal

namespace {

using ak_internal::options_t;

Mm run(const Mm& f, const Mm& x, const Mm& options, const Mm& params, bool root, const char* who, Mm& out) {
    options_t o = ak_internal::options_from_vector(options);
    const ak_internal::simplex_result_t r = ak_internal::simplex(f, x, o, params, root, who);
    o.at(8) = r.fx;
    o.at(10) = r.calls;
    out = o.matrix();
    return r.x;
}

Mm search(const Mm& f, const Mm& x, const Mm& options, const Mm& params, Mm& fval, Mm& exitflag) {
    const options_t o = ak_internal::options_from(options);
    const ak_internal::simplex_result_t r = ak_internal::simplex(f, x, o, params, false, "fminsearch");
    fval = Mm(r.fx);
    exitflag = Mm(r.calls < r.limit ? 1.0 : 0.0);
    return r.x;
}

}  // namespace

#define AK_SIMPLEX_DEFINE(name, root)                                                                       \
    Mm name(const Mm& f, const Mm& x) {                                                                    \
        Mm o;                                                                                              \
        return run(f, x, Mm(), Mm(), root, #name, o);                                                      \
    }                                                                                                      \
    Mm name(const Mm& f, const Mm& x, const Mm& options) {                                                 \
        Mm o;                                                                                              \
        return run(f, x, options, Mm(), root, #name, o);                                                   \
    }                                                                                                      \
    Mm name(const Mm& f, const Mm& x, const Mm& options, const Mm&) {                                      \
        Mm o;                                                                                              \
        return run(f, x, options, Mm(), root, #name, o);                                                   \
    }                                                                                                      \
    Mm name(const Mm& f, const Mm& x, const Mm& options, const Mm&, const Mm& params) {                    \
        Mm o;                                                                                              \
        return run(f, x, options, params, root, #name, o);                                                 \
    }                                                                                                      \
    Mm name(const Mm& f, const Mm& x, i_o_t, Mm& out) { return run(f, x, Mm(), Mm(), root, #name, out); }  \
    Mm name(const Mm& f, const Mm& x, const Mm& options, i_o_t, Mm& out) {                                 \
        return run(f, x, options, Mm(), root, #name, out);                                                 \
    }                                                                                                      \
    Mm name(const Mm& f, const Mm& x, const Mm& options, const Mm&, i_o_t, Mm& out) {                      \
        return run(f, x, options, Mm(), root, #name, out);                                                 \
    }                                                                                                      \
    Mm name(const Mm& f, const Mm& x, const Mm& options, const Mm&, const Mm& params, i_o_t, Mm& out) {    \
        return run(f, x, options, params, root, #name, out);                                               \
    }                                                                                                      \
    AK_BUILTIN(#name, AK_FN(name, M, M), AK_FN(name, M, M, M), AK_FN(name, M, M, M, M),                     \
               AK_FN(name, M, M, M, M, M), AK_FN(name, M, M, i_o_t, Mm&), AK_FN(name, M, M, M, i_o_t, Mm&), \
               AK_FN(name, M, M, M, M, i_o_t, Mm&), AK_FN(name, M, M, M, M, M, i_o_t, Mm&))

#define M const Mm&
AK_SIMPLEX_DEFINE(fmins, false);
AK_SIMPLEX_DEFINE(fsolve, true);

Mm fminsearch(const Mm& f, const Mm& x) {
    Mm v, e;
    return search(f, x, Mm(), Mm(), v, e);
}
Mm fminsearch(const Mm& f, const Mm& x, const Mm& options) {
    Mm v, e;
    return search(f, x, options, Mm(), v, e);
}
Mm fminsearch(const Mm& f, const Mm& x, const Mm& options, const Mm& params) {
    Mm v, e;
    return search(f, x, options, params, v, e);
}
Mm fminsearch(const Mm& f, const Mm& x, i_o_t, Mm& fval) {
    Mm e;
    return search(f, x, Mm(), Mm(), fval, e);
}
Mm fminsearch(const Mm& f, const Mm& x, const Mm& options, i_o_t, Mm& fval) {
    Mm e;
    return search(f, x, options, Mm(), fval, e);
}
Mm fminsearch(const Mm& f, const Mm& x, const Mm& options, const Mm& params, i_o_t, Mm& fval) {
    Mm e;
    return search(f, x, options, params, fval, e);
}
Mm fminsearch(const Mm& f, const Mm& x, i_o_t, Mm& fval, Mm& exitflag) {
    return search(f, x, Mm(), Mm(), fval, exitflag);
}
Mm fminsearch(const Mm& f, const Mm& x, const Mm& options, i_o_t, Mm& fval, Mm& exitflag) {
    return search(f, x, options, Mm(), fval, exitflag);
}
Mm fminsearch(const Mm& f, const Mm& x, const Mm& options, const Mm& params, i_o_t, Mm& fval, Mm& exitflag) {
    return search(f, x, options, params, fval, exitflag);
}
AK_BUILTIN("fminsearch", AK_FN(fminsearch, M, M), AK_FN(fminsearch, M, M, M), AK_FN(fminsearch, M, M, M, M),
           AK_FN(fminsearch, M, M, i_o_t, Mm&), AK_FN(fminsearch, M, M, M, i_o_t, Mm&),
           AK_FN(fminsearch, M, M, M, M, i_o_t, Mm&), AK_FN(fminsearch, M, M, i_o_t, Mm&, Mm&),
           AK_FN(fminsearch, M, M, M, i_o_t, Mm&, Mm&), AK_FN(fminsearch, M, M, M, M, i_o_t, Mm&, Mm&));
#undef M
