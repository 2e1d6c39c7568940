// curvefit: least-squares fit of f(x, xdata) to ydata by Levenberg and Marquardt's damped
// Gauss-Newton steps on a difference Jacobian.
#include <cfloat>
#include <cmath>
#include <vector>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/error.h"
#include "arklib/optim.h"
#include "arklib/sparse.h"
#include "methods/lapack.h"
#include "methods/optim_internal.h"

namespace {

using namespace ak_internal;
typedef std::vector<double> vec;

struct fit_t {
    Mm name, shape, xdata;
    vec y;
    user_args_t args;
    int calls = 0;
    fit_t(const Mm& params) : args(params) {}

    // r = f(x, xdata) - ydata; false after a report.
    bool residual(const vec& x, vec& r) {
        Mm xm = shaped(shape, x.data());
        const Mm* lead[2] = {&xm, &xdata};
        Mm out;
        ++calls;
        call_user(name, args.list(2, lead), 1, &out);
        if (out.size() != static_cast<int>(y.size()) || out.flags.type == ak_mm) {
            error("curvefit: the function must return as many values as ydata has (%d)", static_cast<int>(y.size()));
            return false;
        }
        Mm d = full(mdouble(out));
        r.resize(y.size());
        for (std::size_t i = 0; i < y.size(); ++i) r[i] = d.addr()[i] - y[i];
        return true;
    }
};

double squares(const vec& r) {
    double s = 0;
    for (double v : r) s += v * v;
    return s;
}

Mm curvefit_run(const Mm& f, const Mm& x0_in, const Mm& xdata, const Mm& ydata, const Mm& options,
                const Mm& params, Mm& options_out) {
    options_t o = options_from_vector(options);
    options_out = o.matrix();
    char name[1024];
    if (!function_name(f, "curvefit", name, sizeof name)) return x_M;
    fit_t F(params);
    F.name = TM(name);
    const Mm x0 = full(mdouble(x0_in));
    F.shape = x0;
    F.xdata = xdata;
    Mm yd = full(mdouble(ydata));
    F.y.assign(yd.addr(), yd.addr() + yd.size());
    const int n = x0.size(), m = static_cast<int>(F.y.size());
    if (n == 0 || m == 0) return x0;
    vec x(x0.addr(), x0.addr() + n), r, rt, J(static_cast<long>(m) * n), xt(n);
    if (!F.residual(x, r)) return x_M;
    double fx = squares(r), mu = 1e-3;
    const int limit = o.at(14) > 0 ? static_cast<int>(o.at(14)) : 100 * n;
    while (F.calls < limit) {
        for (int j = 0; j < n; ++j) {
            double h = std::sqrt(DBL_EPSILON) * std::fmax(std::fabs(x[j]), 1.0);
            h = std::fmin(o.at(17), std::fmax(o.at(16), h));
            xt = x;
            xt[j] += h;
            if (!F.residual(xt, rt)) return x_M;
            for (int i = 0; i < m; ++i) J[i + static_cast<long>(j) * m] = (rt[i] - r[i]) / h;
        }
        vec JtJ(static_cast<long>(n) * n), g(n);
        for (int a = 0; a < n; ++a) {
            for (int b = 0; b < n; ++b) {
                double s = 0;
                for (int i = 0; i < m; ++i) s += J[i + static_cast<long>(a) * m] * J[i + static_cast<long>(b) * m];
                JtJ[a + static_cast<long>(b) * n] = s;
            }
            double s = 0;
            for (int i = 0; i < m; ++i) s += J[i + static_cast<long>(a) * m] * r[i];
            g[a] = -s;
        }
        bool improved = false;
        double step = 0, fnew = fx;
        while (!improved && mu < 1e12 && F.calls < limit) {
            vec K = JtJ, d = g;
            std::vector<int> piv(n);
            for (int a = 0; a < n; ++a) K[a + static_cast<long>(a) * n] += mu * std::fmax(JtJ[a + static_cast<long>(a) * n], 1e-12);
            int one = 1, info = 0;
            dgesv_(&n, &one, K.data(), &n, piv.data(), d.data(), &n, &info);
            if (info != 0) {
                mu *= 10;
                continue;
            }
            for (int a = 0; a < n; ++a) xt[a] = x[a] + d[a];
            if (!F.residual(xt, rt)) return x_M;
            fnew = squares(rt);
            if (fnew < fx) {
                step = 0;
                for (int a = 0; a < n; ++a) step = std::fmax(step, std::fabs(d[a]));
                improved = true;
            } else {
                mu *= 10;
            }
        }
        if (!improved) break;
        const double change = fx - fnew;
        x = xt;
        r = rt;
        fx = fnew;
        mu = std::fmax(mu / 10, 1e-12);
        if (o.at(1) > 0) ak_printf("%9d %13.6g %13.6g\n", F.calls, fx, step);
        if (step < o.at(2) && change < o.at(3)) break;
    }
    o.at(8) = fx;
    o.at(10) = F.calls;
    options_out = o.matrix();
    return shaped(x0, x.data());
}

}  // namespace

#define M const Mm&
Mm curvefit(M f, M x, M xdata, M ydata) {
    Mm o;
    return curvefit_run(f, x, xdata, ydata, Mm(), Mm(), o);
}
Mm curvefit(M f, M x, M xdata, M ydata, M options) {
    Mm o;
    return curvefit_run(f, x, xdata, ydata, options, Mm(), o);
}
Mm curvefit(M f, M x, M xdata, M ydata, M options, M) {
    Mm o;
    return curvefit_run(f, x, xdata, ydata, options, Mm(), o);
}
Mm curvefit(M f, M x, M xdata, M ydata, M options, M, M params) {
    Mm o;
    return curvefit_run(f, x, xdata, ydata, options, params, o);
}
Mm curvefit(M f, M x, M xdata, M ydata, i_o_t, Mm& o) { return curvefit_run(f, x, xdata, ydata, Mm(), Mm(), o); }
Mm curvefit(M f, M x, M xdata, M ydata, M options, i_o_t, Mm& o) {
    return curvefit_run(f, x, xdata, ydata, options, Mm(), o);
}
Mm curvefit(M f, M x, M xdata, M ydata, M options, M, i_o_t, Mm& o) {
    return curvefit_run(f, x, xdata, ydata, options, Mm(), o);
}
Mm curvefit(M f, M x, M xdata, M ydata, M options, M, M params, i_o_t, Mm& o) {
    return curvefit_run(f, x, xdata, ydata, options, params, o);
}

AK_BUILTIN("curvefit", AK_FN(curvefit, M, M, M, M), AK_FN(curvefit, M, M, M, M, M), AK_FN(curvefit, M, M, M, M, M, M),
           AK_FN(curvefit, M, M, M, M, M, M, M), AK_FN(curvefit, M, M, M, M, i_o_t, Mm&),
           AK_FN(curvefit, M, M, M, M, M, i_o_t, Mm&), AK_FN(curvefit, M, M, M, M, M, M, i_o_t, Mm&),
           AK_FN(curvefit, M, M, M, M, M, M, M, i_o_t, Mm&));
#undef M
