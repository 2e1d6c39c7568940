// The one driver of ode23, ode45, ode78 and ode15s: it checks the arguments, holds the result
// store and calls the derivative; the steppers work on plain double arrays.
#include <cmath>
#include <cstring>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/error.h"
#include "arklib/memory.h"
#include "arklib/ode.h"
#include "arklib/sparse.h"
#include "methods/bdf.h"
#include "methods/rk_engine.h"
#include "methods/user_call.h"

long ak_ode_calls = 0;

namespace {

using ak_internal::user_args_t;

// The problem record handed to the steppers as their context.
struct problem_t {
    Mm name;
    int n;
    user_args_t args;
};

// Points (t, y) as the columns of one matrix that doubles in capacity when full.
class store_t {
  public:
    explicit store_t(int n) : rows_(n + 1), cap_(8), m_(0, 0, 0, n + 1, 8, ak_double) {}
    void add(double t, const double* y) {
        if (count_ == cap_) grow();
        double* col = m_.addr() + static_cast<long>(count_) * rows_;
        col[0] = t;
        std::memcpy(col + 1, y, sizeof(double) * (rows_ - 1));
        ++count_;
    }
    void clear() { count_ = 0; }
    // t as a column and y with one row for each point.
    void results(Mm& t, Mm& y) const {
        const int n = rows_ - 1;
        t = Mm(0, 0, 0, count_, 1, ak_double);
        y = Mm(0, 0, 0, count_, n, ak_double);
        const double* s = m_.addr();
        for (int k = 0; k < count_; ++k) {
            t.addr()[k] = s[static_cast<long>(k) * rows_];
            for (int i = 0; i < n; ++i) y.addr()[k + static_cast<long>(i) * count_] = s[static_cast<long>(k) * rows_ + 1 + i];
        }
    }

  private:
    void grow() {
        const int cap = 2 * (cap_ > 8 ? cap_ : 8);
        Mm bigger(0, 0, 0, rows_, cap, ak_double);
        std::memcpy(bigger.addr(), m_.addr(), sizeof(double) * rows_ * static_cast<long>(count_));
        m_ = bigger;
        cap_ = cap;
    }
    int rows_, cap_, count_ = 0;
    Mm m_;
};

// y' = f(t, y) through the user's function.
void derivative(void* ctx, double t, const double* y, double* yp) {
    problem_t& p = *static_cast<problem_t*>(ctx);
    ++ak_ode_calls;
    Mm tm(t);
    Mm ym(0, 0, 0, p.n, 1, ak_double);
    std::memcpy(ym.addr(), y, sizeof(double) * p.n);
    const Mm* lead[2] = {&tm, &ym};
    Mm r;
    ak_internal::call_user(p.name, p.args.list(2, lead), 1, &r);
    if (r.size() != p.n || r.flags.type == ak_mm) {
        error("ode: the derivative function result must have %d elements.", p.n);
        std::memset(yp, 0, sizeof(double) * p.n);
        return;
    }
    if (r.isc()) warning("ode: the derivative function returned complex result.");
    Mm d = r.flags.type == ak_double && !r.issparse() ? r : full(mdouble(r));
    std::memcpy(yp, d.addr(), sizeof(double) * p.n);
}

// delta = f(t, y) - y', the implicit form of the same problem.
void residual(void* ctx, double t, const double* y, const double* yp, double* delta, int* ires) {
    derivative(ctx, t, y, delta);
    const int n = static_cast<problem_t*>(ctx)->n;
    for (int i = 0; i < n; ++i) delta[i] -= yp[i];
    *ires = 0;
}

void no_jacobian(void*, double, const double*, const double*, double*, double) { error("ode:jac called"); }

struct settings_t {
    int n;
    double t0, tend;
    char task;
    double rtol, atol, h0;
    int refine;
    const double* tspan;
    int ntspan;
};

void run_rk(int method, problem_t& p, const settings_t& s, const double* y0, store_t& store) {
    const int n = s.n;
    ak_scratch<double> thres(n), y(n), yp(n), ynew(n), work(32 * n), interp(6 * n);
    for (int i = 0; i < n; ++i) thres[i] = s.atol / s.rtol;
    int flag = ak_internal::SETUP(n, s.t0, y0, s.tend, s.rtol, thres, method, s.task, 0, s.h0, work, 32 * n, 1,
                                  derivative, &p);
    if (flag == 911) {
        store.clear();
        return;
    }
    store.clear();
    store.add(s.t0, y0);
    const double dir = s.tend > s.t0 ? 1 : -1;
    double t = s.t0;
    int next = 1;
    while ((s.tend - t) * dir > 0 && flag < 5) {
        if (s.task == 'U') {
            if (next >= s.ntspan) break;
            flag = ak_internal::UT(s.tspan[next++], &t, y, yp);
            if (flag >= 5) break;
            store.add(t, y);
        } else {
            const double tprev = t;
            flag = ak_internal::CT(&t, y, yp);
            if (flag >= 5) break;
            for (int i = s.refine - 1; i >= 1; --i) {
                const double ti = t - (static_cast<double>(i) / s.refine) * (t - tprev);
                if (ak_internal::INTRP(ti, 'S', n, ynew, nullptr, interp, 6 * n) == 911) {
                    flag = 911;
                    break;
                }
                store.add(ti, ynew);
            }
            store.add(t, y);
        }
    }
    if (flag == 5) error("ode: failed to achieve requested accuracy.");
    if (flag == 6) error("ode: error estimate is not reliable.");
}

void run_bdf(problem_t& p, const settings_t& s, const double* y0, store_t& store) {
    const int n = s.n;
    const int lrw = 40 + 9 * n + n * n, liw = 20 + n;
    ak_scratch<double> rwork(lrw), y(n), yp(n), rtol(n), atol(n);
    ak_scratch<int> iwork(liw), control(15);
    for (int k = 0; k < 15; ++k) control[k] = 0;
    control[1] = 1;
    if (s.task == 'C') control[2] = 1;
    if (s.h0 > 0) {
        control[7] = 1;
        rwork[2] = s.h0;
    }
    for (int i = 0; i < n; ++i) {
        rtol[i] = s.rtol;
        atol[i] = s.atol;
        y[i] = y0[i];
        yp[i] = 0;
    }
    // The starting slope: the residual at a zero slope is f(t0, y0).
    int ires = 0;
    residual(&p, s.t0, y, yp, rwork, &ires);
    std::memcpy(yp, rwork, sizeof(double) * n);

    store.clear();
    store.add(s.t0, y0);
    const double dir = s.tend > s.t0 ? 1 : -1;
    double t = s.t0;
    int status = 1, next = 1;
    while ((status == 1 || status == 3) && (s.tend - t) * dir > 0) {
        double tout = s.tend;
        if (s.task == 'U') {
            if (next >= s.ntspan) break;
            tout = s.tspan[next];
        }
        status = ak_internal::bdf_solve(residual, n, &t, y, yp, tout, control, rtol, atol, rwork, lrw, iwork, liw,
                                        &p, no_jacobian);
        control[0] = 1;
        if (status == -1) {  // 500 steps on the way: go on towards the same point
            status = 1;
            continue;
        }
        if (status < 0) break;
        if (s.task == 'U' && status != 1) ++next;
        store.add(t, y);
    }
    if (status == -2) error("ode: failed to achieve requested accuracy.");
    else if (status == -3) error("ode: zero component in AbsTol.");
    else if (status < 0) error("ode: failed to solve %d.", status);
}

double option(const Mm& o, const char* name, double dflt) {
    Mm v = odeget(o, TM(name), Mm(dflt));
    return v.size() == 1 && v.flags.type == ak_double ? v.addr()[0] : dflt;
}

void ode_driver(int method, const Mm& f, const Mm& tspan_in, const Mm& y0_in, const Mm& options_in,
                const Mm& params, Mm& tout, Mm& yout) {
    tout = Mm();
    yout = Mm();
    char name[1024];
    if (!ak_internal::function_name(f, "ode", name, sizeof name)) return;
    Mm tspan = full(tspan_in), y0 = full(y0_in), options = options_in;
    if (tspan.size() == 0) {
        Mm out[3];
        Mm empty;
        const Mm* init[3] = {&empty, &empty, nullptr};
        Mm word = TM("init");
        init[2] = &word;
        ak_internal::call_user(f, cell_from_array(3, init), 3, out);
        tspan = full(out[0]);
        y0 = full(out[1]);
        options = out[2];
    }
    if (y0.size() < 1) {
        error("ode: y0 must have at least one value");
        return;
    }
    if (options.size() == 0) options = odeset();
    if (options.size() != 4) {
        error("ode: options vector is not correct size");
        return;
    }
    if (tspan.size() < 2) {
        error("ode: tspan must have at least two elements");
        return;
    }
    tspan = mdouble(tspan);
    y0 = mdouble(y0);
    settings_t s;
    s.n = y0.size();
    s.tspan = tspan.addr();
    s.ntspan = tspan.size();
    s.t0 = s.tspan[0];
    s.tend = s.tspan[s.ntspan - 1];
    s.task = s.ntspan <= 2 ? 'C' : 'U';
    s.rtol = option(options, "RelTol", 0.001);
    s.atol = option(options, "AbsTol", 0.000001);
    const double refine = std::round(option(options, "Refine", 4));
    s.h0 = option(options, "InitialStep", 0);
    if (refine < 1 || refine > 32) {
        error("ode: refine value must be positive integer no more then 32");
        return;
    }
    s.refine = static_cast<int>(refine);
    if (s.h0 < 0) {
        error("ode: hstart must be positive");
        return;
    }
    problem_t p{TM(name), s.n, user_args_t(params)};
    store_t store(s.n);
    store.add(s.t0, y0.addr());
    if (method <= 3) run_rk(method, p, s, y0.addr(), store);
    else run_bdf(p, s, y0.addr(), store);
    store.results(tout, yout);
}

Mm ode_result(int method, const Mm& f, const Mm& tspan, const Mm& y0, const Mm& o, const Mm& p) {
    Mm t, y;
    ode_driver(method, f, tspan, y0, o, p, t, y);
    return t;
}

// The table's form: [t, y] = name(f, tspan, y0, options, params) with any shorter input list.
template <int Method>
void ode_by_name(int nin, const Mm* in, int nout, Mm* out) {
    Mm a[5];
    for (int k = 0; k < nin && k < 5; ++k) a[k] = in[k];
    if (nin < 1 || nin > 5) {
        error_input(Method == 1 ? "ode23" : Method == 2 ? "ode45" : Method == 3 ? "ode78" : "ode15s", nin);
        return;
    }
    Mm t, y;
    ode_driver(Method, a[0], a[1], a[2], a[3], a[4], t, y);
    out[0] = t;
    if (nout > 1) out[1] = y;
}

}  // namespace

#define AK_ODE_DEFINE(name, method)                                                                          \
    Mm name(const Mm& f) { return ode_result(method, f, Mm(), Mm(), Mm(), Mm()); }                          \
    Mm name(const Mm& f, const Mm& tspan) { return ode_result(method, f, tspan, Mm(), Mm(), Mm()); }         \
    Mm name(const Mm& f, const Mm& tspan, const Mm& y0) { return ode_result(method, f, tspan, y0, Mm(), Mm()); } \
    Mm name(const Mm& f, const Mm& tspan, const Mm& y0, const Mm& o) {                                       \
        return ode_result(method, f, tspan, y0, o, Mm());                                                    \
    }                                                                                                        \
    Mm name(const Mm& f, const Mm& tspan, const Mm& y0, const Mm& o, const Mm& p) {                          \
        return ode_result(method, f, tspan, y0, o, p);                                                       \
    }                                                                                                        \
    Mm name(const Mm& f, i_o_t, Mm& t, Mm& y) {                                                              \
        ode_driver(method, f, Mm(), Mm(), Mm(), Mm(), t, y);                                                 \
        return t;                                                                                            \
    }                                                                                                        \
    Mm name(const Mm& f, const Mm& tspan, i_o_t, Mm& t, Mm& y) {                                             \
        ode_driver(method, f, tspan, Mm(), Mm(), Mm(), t, y);                                                \
        return t;                                                                                            \
    }                                                                                                        \
    Mm name(const Mm& f, const Mm& tspan, const Mm& y0, i_o_t, Mm& t, Mm& y) {                               \
        ode_driver(method, f, tspan, y0, Mm(), Mm(), t, y);                                                  \
        return t;                                                                                            \
    }                                                                                                        \
    Mm name(const Mm& f, const Mm& tspan, const Mm& y0, const Mm& o, i_o_t, Mm& t, Mm& y) {                  \
        ode_driver(method, f, tspan, y0, o, Mm(), t, y);                                                     \
        return t;                                                                                            \
    }                                                                                                        \
    Mm name(const Mm& f, const Mm& tspan, const Mm& y0, const Mm& o, const Mm& p, i_o_t, Mm& t, Mm& y) {     \
        ode_driver(method, f, tspan, y0, o, p, t, y);                                                        \
        return t;                                                                                            \
    }                                                                                                        \
    AK_BUILTIN(#name, ode_by_name<method>)

AK_ODE_DEFINE(ode23, 1);
AK_ODE_DEFINE(ode45, 2);
AK_ODE_DEFINE(ode78, 3);
AK_ODE_DEFINE(ode15s, 4);
