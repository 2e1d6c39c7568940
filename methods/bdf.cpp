// Backward-difference integrator for F(t, y, y') = 0. The formula of order k at t(n+1) is the
// derivative of the polynomial through the new point and the k points before it, so steps of any
// size need no rescaling of the history. The predictor is the polynomial through the k + 1 points
// before; its distance from the corrected value gives the local error.
#include "methods/bdf.h"

#include <cfloat>
#include <cmath>
#include <cstring>

#include "methods/lapack.h"

namespace ak_internal {
namespace {

const int kMaxOrder = 5;
const int kHistory = 6;  // points kept: enough for the estimate at order 6 from order 5

// Scalars kept in the real work array (rwork[0..2] are set by the caller).
enum { r_tstop = 0, r_hmax = 1, r_h0 = 2, r_h = 3, r_t = 4, r_jac_cj = 5, r_times = 6, r_header = 40 };
// Integers kept in the integer work array (iwork[2] may be set by the caller).
enum {
    i_order = 0, i_npts = 1, i_maxord = 2, i_steps = 3, i_at_order = 4, i_have_jac = 5, i_nres = 6,
    i_njac = 7, i_call_steps = 8, i_header = 20
};

bdf_stats_t last_stats;

struct run_t {
    dae_res_t res;
    dae_jac_t jac;
    void* ctx;
    int n;
    const int* control;
    const double *rtol, *atol;
    double* rw;
    int* iw;
    double* hist;  // kHistory blocks of n: newest first
    double* wt;
    double* delta;
    double* e;
    double* pd;
    int* ipiv;
    double* times() const { return rw + r_times; }
    double* point(int j) const { return hist + static_cast<long>(j) * n; }
};

// Weights of the polynomial through nodes[0..m-1] at x: its value (v) and its derivative (d).
void lagrange(const double* nodes, int m, double x, double* v, double* d) {
    for (int j = 0; j < m; ++j) {
        double p = 1, dp = 0;
        for (int i = 0; i < m; ++i) {
            if (i == j) continue;
            const double den = nodes[j] - nodes[i];
            dp = dp * (x - nodes[i]) / den + p / den;
            p *= (x - nodes[i]) / den;
        }
        if (v) v[j] = p;
        if (d) d[j] = dp;
    }
}

double wnorm(const run_t& r, const double* v) {
    double s = 0;
    for (int i = 0; i < r.n; ++i) {
        const double q = v[i] / r.wt[i];
        s += q * q;
    }
    return std::sqrt(s / r.n);
}

// Error weights from the newest point; 0 when a weight is not positive.
int set_weights(const run_t& r) {
    const double* y = r.point(0);
    const int vec = r.control[1];
    for (int i = 0; i < r.n; ++i) {
        r.wt[i] = (vec ? r.rtol[i] : r.rtol[0]) * std::fabs(y[i]) + (vec ? r.atol[i] : r.atol[0]);
        if (!(r.wt[i] > 0)) return 0;
    }
    return 1;
}

int call_res(const run_t& r, double t, const double* y, const double* yp, double* delta) {
    int ires = 0;
    r.iw[i_nres]++;
    r.res(r.ctx, t, y, yp, delta, &ires);
    return ires;
}

// The iteration matrix dF/dy + cj dF/dyp at (t, y, yp), by differences unless the caller gives it,
// factored in place. Returns 0, a zero pivot, or -1 when the residual refused.
int make_jacobian(const run_t& r, double t, double* y, double* yp, double cj, double h) {
    const int n = r.n;
    r.iw[i_njac]++;
    if (r.control[4]) {
        r.jac(r.ctx, t, y, yp, r.pd, cj);
    } else {
        if (call_res(r, t, y, yp, r.delta) < 0) return -1;
        const double sq = std::sqrt(DBL_EPSILON);
        for (int j = 0; j < n; ++j) {
            double del = sq * std::fmax(std::fmax(std::fabs(y[j]), std::fabs(h * yp[j])), r.wt[j]);
            if (h * yp[j] < 0) del = -del;
            del = (y[j] + del) - y[j];
            const double ysave = y[j], ypsave = yp[j];
            y[j] += del;
            yp[j] += cj * del;
            double* col = r.pd + static_cast<long>(j) * n;
            const int ires = call_res(r, t, y, yp, col);
            y[j] = ysave;
            yp[j] = ypsave;
            if (ires < 0) return -1;
            for (int i = 0; i < n; ++i) col[i] = (col[i] - r.delta[i]) / del;
        }
    }
    r.rw[r_jac_cj] = cj;
    const int info = lu_factor(n, r.pd, r.ipiv);
    r.iw[i_have_jac] = info == 0;
    return info;
}

// Norm of the divided difference of order m over the new point (in y) and the history.
double divided_difference(const run_t& r, const double* nodes, const double* y, int m, double* tmp) {
    const int n = r.n;
    for (int i = 0; i < n; ++i) tmp[i] = 0;
    for (int j = 0; j <= m; ++j) {
        double den = 1;
        for (int l = 0; l <= m; ++l)
            if (l != j) den *= nodes[j] - nodes[l];
        const double* v = j == 0 ? y : r.point(j - 1);
        for (int i = 0; i < n; ++i) tmp[i] += v[i] / den;
    }
    return wnorm(r, tmp);
}

// Estimated local error of order q at the new point, from the divided difference of order q + 1.
double order_estimate(const run_t& r, const double* nodes, const double* y, int q, double* tmp) {
    double prod = 1, a0 = 0;
    for (int j = 1; j <= q; ++j) {
        prod *= std::fabs(nodes[0] - nodes[j]);
        a0 += 1 / std::fabs(nodes[0] - nodes[j]);
    }
    return divided_difference(r, nodes, y, q + 1, tmp) * prod / a0;
}

enum step_result_t { step_ok, step_fail_error, step_fail_newton, step_singular, step_stop };

// One attempt of order k and size h from the newest point. On success y and yp hold the new point;
// *err is the weighted local error.
step_result_t attempt(const run_t& r, int k, double h, double* y, double* yp, double* err) {
    const int n = r.n;
    const int npts = r.iw[i_npts];
    const double t0 = r.rw[r_t];
    const double tnew = t0 + h;
    double nodes[kHistory + 1];
    nodes[0] = tnew;
    for (int j = 0; j < npts; ++j) nodes[j + 1] = r.times()[j];

    // Predictor.
    double w[kHistory + 1], alpha[kHistory + 1];
    double pred_span;  // product over the predictor's nodes, of the distances from tnew
    if (npts == 1) {
        const double* yp0 = r.point(kHistory - 1);  // the starting slope, kept until the history fills
        for (int i = 0; i < n; ++i) y[i] = r.point(0)[i] + h * yp0[i];
        pred_span = h * h;
    } else {
        const int m = k + 1 < npts ? k + 1 : npts;
        lagrange(nodes + 1, m, tnew, w, nullptr);
        for (int i = 0; i < n; ++i) {
            double s = 0;
            for (int j = 0; j < m; ++j) s += w[j] * r.point(j)[i];
            y[i] = s;
        }
        pred_span = 1;
        for (int j = 1; j <= m; ++j) pred_span *= tnew - nodes[j];
    }
    // Corrector weights: y' = alpha[0] y + sum alpha[j] y(n + 1 - j).
    lagrange(nodes, k + 1, tnew, nullptr, alpha);
    const double cj = alpha[0];
    for (int i = 0; i < n; ++i) r.e[i] = 0;

    auto slope = [&]() {
        for (int i = 0; i < n; ++i) {
            double s = alpha[0] * y[i];
            for (int j = 1; j <= k; ++j) s += alpha[j] * r.point(j - 1)[i];
            yp[i] = s;
        }
    };
    slope();
    bool fresh = false;
    const double ratio = r.iw[i_have_jac] ? cj / r.rw[r_jac_cj] : 0;
    if (!r.iw[i_have_jac] || ratio < 0.75 || ratio > 1.33) {
        const int info = make_jacobian(r, tnew, y, yp, cj, h);
        if (info < 0) return step_fail_newton;
        if (info > 0) return step_singular;
        fresh = true;
    }
    const double scale = 2 / (1 + cj / r.rw[r_jac_cj]);
    double first = 0;
    bool converged = false;
    for (int it = 0; it < 4; ++it) {
        const int ires = call_res(r, tnew, y, yp, r.delta);
        if (ires == -2) return step_stop;
        if (ires < 0) break;
        lu_solve(n, r.pd, r.ipiv, r.delta);
        for (int i = 0; i < n; ++i) {
            const double dx = scale * r.delta[i];
            y[i] -= dx;
            r.e[i] -= dx;
            r.delta[i] = dx;
        }
        slope();
        const double norm = wnorm(r, r.delta);
        if (!std::isfinite(norm)) break;
        if (it == 0) {
            first = norm;
            if (norm <= 100 * DBL_EPSILON * (1 + wnorm(r, y)) || norm < 1e-4) {
                converged = true;
                break;
            }
            continue;
        }
        const double rate = std::pow(norm / first, 1.0 / it);
        if (rate > 0.9) break;
        if (rate / (1 - rate) * norm <= 0.33) {
            converged = true;
            break;
        }
    }
    if (!converged) {
        if (!fresh) r.iw[i_have_jac] = 0;  // a stale matrix is made again before the step shrinks
        return step_fail_newton;
    }
    // Local error from the predictor's distance.
    double formula_span = 1;
    for (int j = 1; j <= k; ++j) formula_span *= tnew - nodes[j];
    *err = wnorm(r, r.e) * std::fabs(formula_span / (cj * pred_span));
    return *err <= 1 ? step_ok : step_fail_error;
}

// Solution and slope at tout from the polynomial through the newest points of order k.
void interpolate(const run_t& r, double tout, double* y, double* yp) {
    const int npts = r.iw[i_npts];
    const int m = r.iw[i_order] + 1 < npts ? r.iw[i_order] + 1 : npts;
    double v[kHistory], d[kHistory];
    lagrange(r.times(), m, tout, v, d);
    for (int i = 0; i < r.n; ++i) {
        double s = 0, ds = 0;
        for (int j = 0; j < m; ++j) {
            s += v[j] * r.point(j)[i];
            ds += d[j] * r.point(j)[i];
        }
        y[i] = s;
        yp[i] = ds;
    }
}

// After an accepted step: the new point enters the history, and the next order and size are chosen.
void accept(const run_t& r, int k, double h, const double* y, double err, double* tmp) {
    const int n = r.n;
    int npts = r.iw[i_npts];
    const double tnew = r.rw[r_t] + h;
    double nodes[kHistory + 1];
    nodes[0] = tnew;
    for (int j = 0; j < npts; ++j) nodes[j + 1] = r.times()[j];

    // Candidates: order k - 1, k, and k + 1 once k + 1 steps were taken at order k.
    const int maxord = r.iw[i_maxord];
    double est_k = npts >= k + 1 ? order_estimate(r, nodes, y, k, tmp) : err;
    if (!(est_k > 0)) est_k = err;
    int best = k;
    double best_r = std::pow(1 / (2 * est_k + 1e-12), 1.0 / (k + 1));
    if (k > 1) {
        const double e = order_estimate(r, nodes, y, k - 1, tmp);
        const double rr = std::pow(1 / (2 * e + 1e-12), 1.0 / k);
        if (rr >= best_r) best = k - 1, best_r = rr;
    }
    if (best == k && k < maxord && npts >= k + 2 && r.iw[i_at_order] >= k + 1) {
        const double e = order_estimate(r, nodes, y, k + 1, tmp);
        const double rr = std::pow(1 / (2 * e + 1e-12), 1.0 / (k + 2));
        if (rr > 1.1 * best_r) best = k + 1, best_r = rr;
    }
    // History: shift, newest first.
    const int keep = npts < kHistory ? npts : kHistory - 1;
    for (int j = keep; j >= 1; --j) {
        std::memcpy(r.point(j), r.point(j - 1), sizeof(double) * n);
        r.times()[j] = r.times()[j - 1];
    }
    std::memcpy(r.point(0), y, sizeof(double) * n);
    r.times()[0] = tnew;
    r.iw[i_npts] = keep + 1;
    r.rw[r_t] = tnew;
    r.iw[i_steps]++;
    r.iw[i_call_steps]++;
    r.iw[i_at_order] = best == k ? r.iw[i_at_order] + 1 : 1;
    r.iw[i_order] = best;
    double hnew = std::fabs(h);
    if (best_r >= 1.5) hnew *= best_r < 3 ? best_r : 3;
    else if (best_r < 1) hnew *= std::fmax(0.5, std::fmin(0.9, best_r));
    if (r.control[6] && r.rw[r_hmax] > 0 && hnew > r.rw[r_hmax]) hnew = r.rw[r_hmax];
    r.rw[r_h] = h < 0 ? -hnew : hnew;
}

// Takes one step from the newest point, retrying with smaller sizes and lower orders. Returns 0 or
// a negative status.
int one_step(const run_t& r, double* y, double* yp) {
    int error_fails = 0, newton_fails = 0, singular = 0;
    for (;;) {
        const double h = r.rw[r_h];
        const double t = r.rw[r_t];
        const double hmin = 4 * DBL_EPSILON * std::fmax(std::fabs(t), std::fabs(t + h));
        if (std::fabs(h) < hmin) return error_fails > 0 ? -2 : (singular ? -8 : -7);
        if (!set_weights(r)) return -3;
        const int k = r.iw[i_order];
        double err = 0;
        switch (attempt(r, k, h, y, yp, &err)) {
            case step_ok:
                accept(r, k, h, y, err, r.delta);
                return 0;
            case step_stop:
                return -11;
            case step_fail_error:
                if (++error_fails >= 10) return -6;
                if (error_fails >= 3) {
                    r.iw[i_order] = 1;
                    r.rw[r_h] = 0.25 * h;
                } else {
                    r.rw[r_h] = h * std::fmax(0.25, std::fmin(0.9, 0.9 * std::pow(1 / err, 1.0 / (k + 1))));
                }
                r.iw[i_at_order] = 0;
                break;
            case step_fail_newton:
                if (++newton_fails >= 10) return -7;
                if (!r.iw[i_have_jac]) {
                    // A fresh matrix at the same size first, then smaller steps.
                    if (newton_fails > 1) r.rw[r_h] = 0.25 * h;
                } else {
                    r.rw[r_h] = 0.25 * h;
                    r.iw[i_have_jac] = 0;
                }
                break;
            case step_singular:
                if (++singular >= 10) return -8;
                r.rw[r_h] = 0.25 * h;
                r.iw[i_have_jac] = 0;
                break;
        }
    }
}

}  // namespace

int bdf_solve(dae_res_t res, int n, double* t, double* y, double* yp, double tout, int* control,
              const double* rtol, const double* atol, double* rwork, int lrw, int* iwork, int liw, void* ctx,
              dae_jac_t jac) {
    if (n < 1 || !rwork || !iwork || lrw < 40 + 9 * n + n * n || liw < 20 + n || !control) return -33;
    for (int k = 5; k < 15; ++k)
        if (k != 6 && k != 7 && k != 8 && control[k]) return -33;
    if (control[4] && !jac) return -33;
    run_t r{res, jac, ctx, n, control, rtol, atol, rwork, iwork, rwork + r_header, nullptr, nullptr,
            nullptr, nullptr, iwork + i_header};
    r.wt = r.hist + kHistory * n;
    r.delta = r.wt + n;
    r.e = r.delta + n;
    r.pd = r.e + n;

    if (control[0] == 0) {
        // A new problem: the history holds the starting point and, in its last block, the slope.
        if (tout == *t) return -33;
        std::memcpy(r.point(0), y, sizeof(double) * n);
        std::memcpy(r.point(kHistory - 1), yp, sizeof(double) * n);
        r.times()[0] = *t;
        rwork[r_t] = *t;
        iwork[i_order] = 1;
        iwork[i_npts] = 1;
        iwork[i_maxord] = control[8] && iwork[2] >= 1 && iwork[2] <= kMaxOrder ? iwork[2] : kMaxOrder;
        iwork[i_steps] = iwork[i_at_order] = iwork[i_have_jac] = iwork[i_nres] = iwork[i_njac] = 0;
        if (!set_weights(r)) return -3;
        const double dir = tout > *t ? 1 : -1;
        double h;
        if (control[7] && rwork[r_h0] > 0) {
            h = rwork[r_h0];
        } else {
            h = 0.001 * std::fabs(tout - *t);
            const double ypn = wnorm(r, yp);
            if (ypn > 0.5 / h) h = 0.5 / ypn;
        }
        if (control[6] && rwork[r_hmax] > 0 && h > rwork[r_hmax]) h = rwork[r_hmax];
        rwork[r_h] = dir * h;
        control[0] = 1;
    }
    const double dir = rwork[r_h] > 0 ? 1 : -1;
    iwork[i_call_steps] = 0;
    int status = 0;
    for (;;) {
        // Already past tout: interpolate back.
        if ((rwork[r_t] - tout) * dir >= 0 && iwork[i_steps] > 0) {
            interpolate(r, tout, y, yp);
            *t = tout;
            status = 3;
            break;
        }
        if (control[3] && (rwork[r_t] - rwork[r_tstop]) * dir >= 0) {
            status = 2;
            *t = rwork[r_t];
            break;
        }
        if (iwork[i_call_steps] >= 500) {
            *t = rwork[r_t];
            std::memcpy(y, r.point(0), sizeof(double) * n);
            status = -1;
            break;
        }
        if (control[3]) {  // never pass the stopping point
            const double left = rwork[r_tstop] - rwork[r_t];
            if ((rwork[r_h] - left) * dir > 0) rwork[r_h] = left;
        }
        const int bad = one_step(r, y, yp);
        if (bad) {
            *t = rwork[r_t];
            std::memcpy(y, r.point(0), sizeof(double) * n);
            status = bad;
            break;
        }
        if (control[2] && (rwork[r_t] - tout) * dir < 0) {
            *t = rwork[r_t];
            status = 1;
            break;
        }
    }
    last_stats = {iwork[i_steps], iwork[i_nres], iwork[i_njac], iwork[i_order]};
    return status;
}

bdf_stats_t bdf_stats() { return last_stats; }

}  // namespace ak_internal
