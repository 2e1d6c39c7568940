// The simplex method behind lp, on a dense tableau: x = u - v with u, v >= 0, a slack for each
// inequality row and an artificial unit column for each row, which also gives the row's multiplier.
#include "methods/lp_engine.h"

#include <cfloat>
#include <cmath>
#include <vector>

namespace ak_internal {
namespace {

const double kPivotTol = 1e-9;

struct tableau_t {
    int m, ncols;               // rows; columns without the right side
    int n, nslack;              // structural count (before splitting), slack count
    std::vector<double> t;      // m rows of ncols + 1, row major, right side last
    std::vector<double> d;      // reduced costs, ncols + 1 (the last holds minus the objective)
    std::vector<int> basis;     // basic column of each row
    std::vector<char> barred;   // columns that may not enter
    std::vector<double> sign;   // +1 or -1: how each row was flipped to make its right side >= 0
    double* row(int i) { return &t[static_cast<long>(i) * (ncols + 1)]; }
    int art(int i) const { return 2 * n + nslack + i; }
};

void pivot(tableau_t& T, int r, int col) {
    const int w = T.ncols + 1;
    double* pr = T.row(r);
    const double inv = 1 / pr[col];
    for (int j = 0; j < w; ++j) pr[j] *= inv;
    pr[col] = 1;
    for (int i = 0; i < T.m; ++i) {
        if (i == r) continue;
        double* ri = T.row(i);
        const double f = ri[col];
        if (f == 0) continue;
        for (int j = 0; j < w; ++j) ri[j] -= f * pr[j];
        ri[col] = 0;
    }
    const double f = T.d[col];
    if (f != 0) {
        for (int j = 0; j < w; ++j) T.d[j] -= f * pr[j];
        T.d[col] = 0;
    }
    T.basis[r] = col;
}

void reduced_costs(tableau_t& T, const std::vector<double>& cost) {
    const int w = T.ncols + 1;
    for (int j = 0; j < T.ncols; ++j) T.d[j] = cost[j];
    T.d[T.ncols] = 0;
    for (int i = 0; i < T.m; ++i) {
        const double cb = cost[T.basis[i]];
        if (cb == 0) continue;
        const double* ri = T.row(i);
        for (int j = 0; j < w; ++j) T.d[j] -= cb * ri[j];
    }
}

// Pivots until no reduced cost is negative. Returns lp_optimal, lp_unbounded or lp_iterations.
int iterate(tableau_t& T, int* budget) {
    int degenerate = 0;
    for (;;) {
        const bool bland = degenerate > 50;
        int enter = -1;
        double best = -kPivotTol;
        for (int j = 0; j < T.ncols; ++j) {
            if (T.barred[j] || T.d[j] >= best) continue;
            enter = j;
            if (bland) break;
            best = T.d[j];
        }
        if (enter < 0) return lp_optimal;
        if ((*budget)-- <= 0) return lp_iterations;
        int leave = -1;
        double ratio = INFINITY;
        for (int i = 0; i < T.m; ++i) {
            const double a = T.row(i)[enter];
            if (a <= kPivotTol) continue;
            const double q = T.row(i)[T.ncols] / a;
            if (q < ratio - 1e-12 || (q <= ratio + 1e-12 && leave >= 0 && T.basis[i] < T.basis[leave])) {
                if (q < ratio) ratio = q;
                leave = i;
            }
        }
        if (leave < 0) return lp_unbounded;
        degenerate = ratio <= 1e-12 ? degenerate + 1 : 0;
        pivot(T, leave, enter);
    }
}

// Builds the tableau with a feasible basis of slacks and artificials, and runs the first phase.
// Returns lp_optimal with a feasible basis (artificials barred), lp_infeasible or lp_iterations.
int phase_one(const lp_problem_t& p, tableau_t& T, int* budget) {
    const int m = p.m, n = p.n;
    T.m = m;
    T.n = n;
    T.nslack = m - p.neq;
    T.ncols = 2 * n + T.nslack + m;
    const int w = T.ncols + 1;
    T.t.assign(static_cast<long>(m) * w, 0);
    T.d.assign(w, 0);
    T.basis.assign(m, -1);
    T.barred.assign(T.ncols, 0);
    T.sign.assign(m, 1);
    double scale = 1;
    for (int i = 0; i < m; ++i) {
        double* r = T.row(i);
        const double s = p.b[i] < 0 ? -1 : 1;
        T.sign[i] = s;
        for (int j = 0; j < n; ++j) {
            const double a = p.a[i + static_cast<long>(j) * m];
            r[j] = s * a;
            r[n + j] = -s * a;
        }
        if (i >= p.neq) r[2 * n + (i - p.neq)] = s;
        r[T.art(i)] = 1;
        r[T.ncols] = s * p.b[i];
        scale = std::fmax(scale, std::fabs(p.b[i]));
        // An inequality row with a non-negative right side starts on its slack.
        T.basis[i] = i >= p.neq && s > 0 ? 2 * n + (i - p.neq) : T.art(i);
    }
    std::vector<double> cost(T.ncols, 0);
    bool any = false;
    for (int i = 0; i < m; ++i) {
        if (T.basis[i] == T.art(i)) {
            cost[T.art(i)] = 1;
            any = true;
        } else {
            T.barred[T.art(i)] = 1;
        }
    }
    if (any) {
        reduced_costs(T, cost);
        const int code = iterate(T, budget);
        if (code == lp_iterations) return code;
        if (-T.d[T.ncols] > 1e-9 * scale) return lp_infeasible;
    }
    // Artificials left in the basis at level zero are pivoted out where the row allows.
    for (int i = 0; i < m; ++i) {
        if (T.basis[i] < T.art(0)) continue;
        const double* r = T.row(i);
        int best = -1;
        for (int j = 0; j < T.art(0); ++j)
            if (std::fabs(r[j]) > kPivotTol && (best < 0 || std::fabs(r[j]) > std::fabs(r[best]))) best = j;
        if (best >= 0) pivot(T, i, best);
    }
    for (int i = 0; i < m; ++i) T.barred[T.art(i)] = 1;
    return lp_optimal;
}

double value_of(tableau_t& T, int col) {
    for (int i = 0; i < T.m; ++i)
        if (T.basis[i] == col) return T.row(i)[T.ncols];
    return 0;
}

}  // namespace

int lp_solve(const lp_problem_t& p, double* x, double* lambda) {
    tableau_t T;
    int budget = 50 * (p.m + p.n) + 1000;
    for (int j = 0; j < p.n; ++j) x[j] = 0;
    for (int i = 0; i < p.m; ++i) lambda[i] = 0;
    int code = phase_one(p, T, &budget);
    if (code != lp_optimal) return code;
    std::vector<double> cost(T.ncols, 0);
    for (int j = 0; j < p.n; ++j) {
        cost[j] = p.c[j];
        cost[p.n + j] = -p.c[j];
    }
    reduced_costs(T, cost);
    code = iterate(T, &budget);
    for (int j = 0; j < p.n; ++j) x[j] = value_of(T, j) - value_of(T, p.n + j);
    // The reduced cost of row i's unit column is minus its dual value in the flipped row.
    for (int i = 0; i < p.m; ++i) lambda[i] = T.sign[i] * T.d[T.art(i)];
    return code;
}

// Feasible point only: the first phase, read out.
int lp_feasible_point(const lp_problem_t& p, double* x) {
    tableau_t T;
    int budget = 50 * (p.m + p.n) + 1000;
    const int code = phase_one(p, T, &budget);
    for (int j = 0; j < p.n; ++j) x[j] = code == lp_optimal ? value_of(T, j) - value_of(T, p.n + j) : 0;
    return code;
}

}  // namespace ak_internal
