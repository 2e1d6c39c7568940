// Step control of the explicit Runge-Kutta integrator. The pairs are in rk_pairs.cpp; this file
// holds the saved state, the order checks, the step and error rules and the interpolation.
#include "methods/rk_engine.h"

#include <cfloat>
#include <cmath>
#include <cstring>

#include "arklib/error.h"
#include "methods/rk_pairs.h"

namespace ak_internal {
namespace {

const int kFatal = 911;
const int kWorkLimit = 5000;
const int kStiffCount = 100;

// The routines whose calls are checked for order, in the table of saved states.
enum routine_t { r_setup, r_ct, r_ut, r_intrp, r_reset, r_count };
struct saved_t {
    const char* name;
    int calls;
    int last_flag;
};

struct state_t {
    saved_t table[r_count] = {{"SETUP", 0, 0}, {"CT", 0, 0}, {"UT", 0, 0}, {"INTRP", 0, 0}, {"RESET", 0, 0}};
    bool fatal = false;
    bool ready = false;
    int mesage = 1;
    int n = 0;
    const rk_pair_t* pair = nullptr;
    char task = 'C';
    ode_rhs_t f = nullptr;
    void* ctx = nullptr;
    double t = 0, tstart = 0, tend = 0, dir = 1, tol = 0;
    double h = 0;       // size proposed for the next step, positive
    double hlast = 0;   // signed size of the last step taken
    double tprev = 0;   // start of the last step taken
    bool rejected_last = false;
    int steps = 0, rejected = 0, calls = 0, calls_since_report = 0, stiff_steps = 0;
    double mean_step = 0;
    int interp_step = -1;  // step whose interpolation data sit in the caller's work
    // Work array, by blocks of n.
    double* k = nullptr;     // stages, 13 n
    double* y = nullptr;     // present solution
    double* yp = nullptr;    // present slope
    double* yold = nullptr;  // start of the last step
    double* ypold = nullptr;
    double* tmp = nullptr;
    double* thr = nullptr;   // thresholds
    double* err = nullptr;   // error estimate of the last attempt
};

state_t& S() {
    static state_t s;
    return s;
}

void say(const char* routine, const char* text) {
    if (S().mesage) ak_printf("%s: %s\n", routine, text);
}

int fatal(routine_t r, const char* text) {
    state_t& s = S();
    if (!s.fatal) say(s.table[r].name, text);
    s.fatal = true;
    s.table[r].last_flag = kFatal;
    return kFatal;
}

// 0 when routine r may be called now, else the fatal flag.
int check_order(routine_t r) {
    state_t& s = S();
    s.table[r].calls++;
    if (s.fatal) return kFatal;
    if (r == r_setup) return 0;
    if (!s.ready) return fatal(r, "called before SETUP");
    const int last_step_flag = s.table[s.task == 'C' ? r_ct : r_ut].last_flag;
    switch (r) {
        case r_ct:
            if (s.task != 'C') return fatal(r, "task 'U' was set up; UT must be used");
            if (last_step_flag >= 5) return fatal(r, "called again after a failure");
            if (s.t == s.tend && s.steps > 0) return fatal(r, "called again after the end of the range");
            return 0;
        case r_ut:
            if (s.task != 'U') return fatal(r, "task 'C' was set up; CT must be used");
            if (last_step_flag >= 5) return fatal(r, "called again after a failure");
            return 0;
        case r_intrp:
            if (s.task != 'C') return fatal(r, "only for task 'C'");
            if (s.steps == 0) return fatal(r, "no step has been taken yet");
            return 0;
        case r_reset:
            if (s.steps == 0) return fatal(r, "no step has been taken yet");
            return 0;
        default:
            return 0;
    }
}

void rhs(double t, const double* y, double* yp) {
    state_t& s = S();
    s.calls++;
    s.calls_since_report++;
    s.f(s.ctx, t, y, yp);
}

double weight(int i, const double* a, const double* b) {
    double w = std::fabs(a[i]);
    if (std::fabs(b[i]) > w) w = std::fabs(b[i]);
    return w > S().thr[i] ? w : S().thr[i];
}

// A first step from the sizes of y and of its slope, and one Euler trial.
double initial_step() {
    state_t& s = S();
    const int n = s.n;
    double d0 = 0, d1 = 0, d2 = 0;
    for (int i = 0; i < n; ++i) {
        const double w = s.tol * weight(i, s.y, s.y);
        d0 = std::fmax(d0, std::fabs(s.y[i]) / w);
        d1 = std::fmax(d1, std::fabs(s.yp[i]) / w);
    }
    const double span = std::fabs(s.tend - s.t);
    double h0 = (d0 < 1e-5 || d1 < 1e-5) ? 1e-6 : 0.01 * d0 / d1;
    if (h0 > span) h0 = span;
    for (int i = 0; i < n; ++i) s.tmp[i] = s.y[i] + s.dir * h0 * s.yp[i];
    rhs(s.t + s.dir * h0, s.tmp, s.k);
    for (int i = 0; i < n; ++i) d2 = std::fmax(d2, std::fabs(s.k[i] - s.yp[i]) / (s.tol * weight(i, s.y, s.y)));
    d2 /= h0;
    const double big = std::fmax(d1, d2);
    const double h1 = big <= 1e-15 ? std::fmax(1e-6, h0 * 1e-3) : std::pow(0.01 / big, 1.0 / (s.pair->order + 1));
    double h = std::fmin(100 * h0, h1);
    if (h > span) h = span;
    return h;
}

// Stages of one attempt of size h from (t, y, yp); the new solution goes to tmp, the error to err.
// Returns the weighted error norm over tol (1 or less passes).
double attempt(double h) {
    state_t& s = S();
    const rk_pair_t& p = *s.pair;
    const int n = s.n;
    std::memcpy(s.k, s.yp, sizeof(double) * n);
    for (int j = 1; j < p.stages; ++j) {
        double* kj = s.k + j * n;
        for (int i = 0; i < n; ++i) {
            double sum = 0;
            for (int l = 0; l < j; ++l) sum += p.a[j * p.stages + l] * s.k[l * n + i];
            s.tmp[i] = s.y[i] + h * sum;
        }
        rhs(s.t + p.c[j] * h, s.tmp, kj);
    }
    double worst = 0;
    for (int i = 0; i < n; ++i) {
        double sb = 0, se = 0;
        for (int j = 0; j < p.stages; ++j) {
            sb += p.b[j] * s.k[j * n + i];
            se += p.e[j] * s.k[j * n + i];
        }
        s.tmp[i] = s.y[i] + h * sb;
        s.err[i] = h * se;
        const double r = std::fabs(s.err[i]) / weight(i, s.y, s.tmp);
        if (!(r <= worst)) worst = r;  // a NaN makes the step fail
    }
    return worst / s.tol;
}

// The step was limited by stability when h times the local Lipschitz estimate sits near the edge of
// the stability interval.
bool limited_by_stability(double h) {
    state_t& s = S();
    const rk_pair_t& p = *s.pair;
    const int n = s.n, j = p.stiff_stage;
    double num = 0, den = 0;
    for (int i = 0; i < n; ++i) {
        double sum = 0;
        for (int l = 0; l < j; ++l) sum += p.a[j * p.stages + l] * s.k[l * n + i];
        const double yj = s.yold[i] + h * sum;
        num += (s.yp[i] - s.k[j * n + i]) * (s.yp[i] - s.k[j * n + i]);
        den += (s.y[i] - yj) * (s.y[i] - yj);
    }
    if (den <= 0) return false;
    return std::fabs(h) * std::sqrt(num / den) > 0.6 * p.stability;
}

// One accepted step towards tlimit, which it does not pass. Returns 1, 3, 4 or 5.
int step(double tlimit) {
    state_t& s = S();
    const int n = s.n;
    const double expo = 1.0 / (s.pair->order + 1);
    bool failed_here = false;
    for (;;) {
        double h = s.dir * s.h;
        const double dist = tlimit - s.t;
        bool last = false;
        if (std::fabs(h) >= std::fabs(dist)) {
            h = dist;
            last = true;
        } else if (2 * std::fabs(h) > std::fabs(dist)) {
            h = 0.5 * dist;
        }
        const double hmin = 100 * DBL_EPSILON * std::fmax(std::fabs(s.t), std::fabs(s.t + h));
        if (std::fabs(h) < hmin || h == 0) {
            say(s.task == 'C' ? "CT" : "UT", "the step size became too small for the precision of t");
            return 5;
        }
        const double ratio = attempt(h);
        if (!(ratio <= 1)) {
            s.rejected++;
            const double shrink = std::isfinite(ratio) ? std::fmax(0.1, 0.8 * std::pow(1 / ratio, expo)) : 0.1;
            s.h = std::fabs(h) * shrink;
            failed_here = true;
            continue;
        }
        // Accepted.
        std::memcpy(s.yold, s.y, sizeof(double) * n);
        std::memcpy(s.ypold, s.yp, sizeof(double) * n);
        std::memcpy(s.y, s.tmp, sizeof(double) * n);
        s.tprev = s.t;
        s.t = last ? tlimit : s.t + h;
        if (s.pair->fsal) std::memcpy(s.yp, s.k + (s.pair->stages - 1) * n, sizeof(double) * n);
        else rhs(s.t, s.y, s.yp);
        s.hlast = h;
        s.steps++;
        s.mean_step = s.steps == 1 ? std::fabs(h) : 0.9 * s.mean_step + 0.1 * std::fabs(h);
        double grow = ratio > 0 ? 0.8 * std::pow(1 / ratio, expo) : 5;
        if (grow > 5) grow = 5;
        if (failed_here && grow > 1) grow = 1;
        if (grow < 0.2) grow = 0.2;
        // A cut last step says nothing of the size the problem allows.
        if (!last || grow < 1) s.h = std::fabs(h) * grow;
        if (last && std::fabs(h) > s.h) s.h = std::fabs(h);
        int flag = 1;
        if (limited_by_stability(h)) s.stiff_steps++;
        if (s.stiff_steps >= kStiffCount && 3 * s.stiff_steps >= s.steps) {
            say(s.task == 'C' ? "CT" : "UT", "the problem appears to be stiff");
            s.stiff_steps = 0;
            flag = 4;
        }
        if (s.calls_since_report > kWorkLimit) {
            say(s.task == 'C' ? "CT" : "UT", "more than 5000 derivative calls since the last report");
            s.calls_since_report = 0;
            flag = 3;
        }
        return flag;
    }
}

}  // namespace

int SETUP(int n, double tstart, const double* ystart, double tend, double tol, const double* thres,
          int method, char task, int errass, double hstart, double* work, int lenwrk, int mesage,
          ode_rhs_t f, void* ctx) {
    state_t& s = S();
    s = state_t();
    s.mesage = mesage;
    s.table[r_setup].calls = 1;
    const rk_pair_t* pair = rk_pair(method);
    if (n < 1) return fatal(r_setup, "the number of equations must be at least 1");
    if (!pair) return fatal(r_setup, "the method must be 1, 2 or 3");
    if (task != 'C' && task != 'U' && task != 'c' && task != 'u') return fatal(r_setup, "the task must be 'U' or 'C'");
    if (errass) return fatal(r_setup, "global error assessment is not available");
    if (!(tol <= 0.01) || !(tol >= 10 * DBL_EPSILON)) return fatal(r_setup, "the relative tolerance must lie between 1e-15 and 0.01");
    if (tstart == tend) return fatal(r_setup, "the end of the range must differ from its start");
    if (!work || lenwrk < 32 * n) return fatal(r_setup, "the work array is too small (32 n elements are needed)");
    for (int i = 0; i < n; ++i)
        if (!(thres[i] > 0)) return fatal(r_setup, "every threshold must be positive");
    s.n = n;
    s.pair = pair;
    s.task = (task == 'c' || task == 'C') ? 'C' : 'U';
    s.f = f;
    s.ctx = ctx;
    s.t = s.tstart = s.tprev = tstart;
    s.tend = tend;
    s.dir = tend > tstart ? 1 : -1;
    s.tol = tol;
    s.k = work;
    s.y = work + 13 * n;
    s.yp = s.y + n;
    s.yold = s.yp + n;
    s.ypold = s.yold + n;
    s.tmp = s.ypold + n;
    s.thr = s.tmp + n;
    s.err = s.thr + n;
    std::memcpy(s.y, ystart, sizeof(double) * n);
    std::memcpy(s.thr, thres, sizeof(double) * n);
    rhs(s.t, s.y, s.yp);
    s.h = hstart > 0 ? std::fmin(hstart, std::fabs(tend - tstart)) : initial_step();
    s.ready = true;
    s.table[r_setup].last_flag = 1;
    return 1;
}

int CT(double* tnow, double* ynow, double* ypnow) {
    if (int bad = check_order(r_ct)) return bad;
    state_t& s = S();
    const int flag = step(s.tend);
    *tnow = s.t;
    std::memcpy(ynow, s.y, sizeof(double) * s.n);
    std::memcpy(ypnow, s.yp, sizeof(double) * s.n);
    s.table[r_ct].last_flag = flag;
    return flag;
}

int UT(double twant, double* tgot, double* ygot, double* ypgot) {
    if (int bad = check_order(r_ut)) return bad;
    state_t& s = S();
    if ((twant - s.t) * s.dir < 0 || (twant - s.tend) * s.dir > 0)
        return fatal(r_ut, "the point wanted lies outside the range still to go");
    int flag = 1;
    while (s.t != twant) {
        const int f = step(twant);
        if (f == 5) {
            flag = 5;
            break;
        }
        if (f > flag) flag = f;
    }
    *tgot = s.t;
    std::memcpy(ygot, s.y, sizeof(double) * s.n);
    std::memcpy(ypgot, s.yp, sizeof(double) * s.n);
    s.table[r_ut].last_flag = flag;
    return flag;
}

// Interpolation on the last step. The 5(4) pair has its own continuous extension; the 2-3 pair uses
// the cubic through the values and slopes at both ends. The 7-8 pair takes far longer steps than a cubic can follow, so it adds the value and
// slope at the middle of the step, from one step of half the size, and uses the quintic through the
// three points. The coefficients are kept in the caller's interpolation work for further points.
namespace {

// One step of size h from (t0, y0, yp0) with the present pair; the result goes to out.
void half_step(double t0, const double* y0, const double* yp0, double h, double* out) {
    state_t& s = S();
    const rk_pair_t& p = *s.pair;
    const int n = s.n;
    std::memcpy(s.k, yp0, sizeof(double) * n);
    for (int j = 1; j < p.stages; ++j) {
        for (int i = 0; i < n; ++i) {
            double sum = 0;
            for (int l = 0; l < j; ++l) sum += p.a[j * p.stages + l] * s.k[l * n + i];
            s.tmp[i] = y0[i] + h * sum;
        }
        rhs(t0 + p.c[j] * h, s.tmp, s.k + j * n);
    }
    for (int i = 0; i < n; ++i) {
        double sb = 0;
        for (int j = 0; j < p.stages; ++j) sb += p.b[j] * s.k[j * n + i];
        out[i] = y0[i] + h * sb;
    }
}

// The fourth order continuous extension of the 5(4) pair (Shampine's): five blocks of n from the
// stages of the last step, for y(u) = r1 + u (r2 + (1 - u) (r3 + u (r4 + (1 - u) r5))).
void dp_coefficients(double* w) {
    static const double d[7] = {-12715105075.0 / 11282082432.0, 0, 87487479700.0 / 32700410799.0,
                                -10690763975.0 / 1880347072.0,  701980252875.0 / 199316789632.0,
                                -1453857185.0 / 822651844.0,    69997945.0 / 29380423.0};
    state_t& s = S();
    const int n = s.n;
    const double h = s.hlast;
    for (int i = 0; i < n; ++i) {
        const double dy = s.y[i] - s.yold[i];
        const double bspl = h * s.k[i] - dy;
        double sum = 0;
        for (int j = 0; j < 7; ++j) sum += d[j] * s.k[j * n + i];
        w[i] = s.yold[i];
        w[n + i] = dy;
        w[2 * n + i] = bspl;
        w[3 * n + i] = dy - h * s.k[6 * n + i] - bspl;
        w[4 * n + i] = h * sum;
    }
}

// Newton coefficients c[0..5] (each a block of n) on the nodes 0, 0, 1/2, 1/2, 1, 1 of the unit step,
// or c[0..3] on 0, 0, 1, 1 for the cubic.
void interpolation_coefficients(double* w, bool quintic) {
    state_t& s = S();
    const int n = s.n;
    const double h = s.hlast;
    double* c[6];
    for (int j = 0; j < 6; ++j) c[j] = w + j * n;
    if (!quintic) {
        for (int i = 0; i < n; ++i) {
            const double f01 = s.y[i] - s.yold[i];
            c[0][i] = s.yold[i];
            c[1][i] = h * s.ypold[i];
            c[2][i] = f01 - c[1][i];
            c[3][i] = h * s.yp[i] - 2 * f01 + c[1][i];
        }
        return;
    }
    double* ymid = c[4];
    double* ypmid = c[5];
    half_step(s.tprev, s.yold, s.ypold, 0.5 * h, ymid);
    rhs(s.tprev + 0.5 * h, ymid, ypmid);
    for (int i = 0; i < n; ++i) {
        const double f0 = s.yold[i], d0 = h * s.ypold[i], fm = ymid[i], dm = h * ypmid[i], f1 = s.y[i],
                     d1 = h * s.yp[i];
        const double a1 = (fm - f0) / 0.5, a3 = (f1 - fm) / 0.5;
        const double b0 = (a1 - d0) / 0.5, b1 = (dm - a1) / 0.5, b2 = (a3 - dm) / 0.5, b3 = (d1 - a3) / 0.5;
        const double g0 = (b1 - b0) / 0.5, g1 = (b2 - b1) / 1.0, g2 = (b3 - b2) / 0.5;
        const double q0 = g1 - g0, q1 = g2 - g1;
        c[0][i] = f0;
        c[1][i] = d0;
        c[2][i] = b0;
        c[3][i] = g0;
        c[4][i] = q0;
        c[5][i] = q1 - q0;
    }
}

}  // namespace

int INTRP(double twant, char request, int nwant, double* ywant, double* ypwant, double* wrkint, int lenint) {
    if (int bad = check_order(r_intrp)) return bad;
    state_t& s = S();
    const int n = s.n;
    if (nwant < 1 || nwant > n) return fatal(r_intrp, "the number of components wanted must be 1 to n");
    if (!wrkint || lenint < 6 * n) return fatal(r_intrp, "the interpolation work is too small (6 n elements are needed)");
    const bool want_y = request == 'S' || request == 's' || request == 'B' || request == 'b';
    const bool want_yp = request == 'D' || request == 'd' || request == 'B' || request == 'b';
    if (!want_y && !want_yp) return fatal(r_intrp, "the request must be 'S', 'D' or 'B'");
    const bool quintic = s.pair->stages > 7;
    const bool dense = s.pair->stages == 7;
    if (s.interp_step != s.steps) {
        if (dense) dp_coefficients(wrkint);
        else interpolation_coefficients(wrkint, quintic);
        s.interp_step = s.steps;
    }
    if (dense) {
        const double u = (twant - s.tprev) / s.hlast, v = 1 - u;
        for (int i = 0; i < nwant; ++i) {
            const double* r = wrkint + i;
            if (want_y) ywant[i] = r[0] + u * (r[n] + v * (r[2 * n] + u * (r[3 * n] + v * r[4 * n])));
            if (want_yp)
                ypwant[i] = (r[n] + (1 - 2 * u) * r[2 * n] + u * (2 - 3 * u) * r[3 * n] +
                             2 * u * v * (v - u) * r[4 * n]) / s.hlast;
        }
        s.table[r_intrp].last_flag = 1;
        return 1;
    }
    static const double quintic_nodes[5] = {0, 0, 0.5, 0.5, 1};
    static const double cubic_nodes[3] = {0, 0, 1};
    const double* z = quintic ? quintic_nodes : cubic_nodes;
    const int top = quintic ? 5 : 3;
    const double u = (twant - s.tprev) / s.hlast;
    for (int i = 0; i < nwant; ++i) {
        double p = wrkint[top * n + i], dp = 0;
        for (int k = top - 1; k >= 0; --k) {
            dp = dp * (u - z[k]) + p;
            p = p * (u - z[k]) + wrkint[k * n + i];
        }
        if (want_y) ywant[i] = p;
        if (want_yp) ypwant[i] = dp / s.hlast;
    }
    s.table[r_intrp].last_flag = 1;
    return 1;
}

int RESET(double tendnu) {
    if (int bad = check_order(r_reset)) return bad;
    state_t& s = S();
    if ((tendnu - s.t) * s.dir <= 0) return fatal(r_reset, "the new end must lie beyond the present point");
    s.tend = tendnu;
    s.table[r_reset].last_flag = 1;
    return 1;
}

rk_stats_t rk_stats() {
    const state_t& s = S();
    return {s.steps, s.rejected, s.calls, s.mean_step};
}

}  // namespace ak_internal
