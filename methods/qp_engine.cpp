// The active-set method behind qp: from a feasible point, each pass solves the equality problem on
// the working set, then either steps to the nearest blocking row or drops the row with the most
// negative multiplier.
#include <cmath>
#include <vector>

#include "methods/lapack.h"
#include "methods/lp_engine.h"

namespace ak_internal {
namespace {

const double kZero = 0.00000001;  // below this, residuals and step components count as zero

struct qp_t {
    const lp_problem_t& p;
    const double* h;
    double a(int i, int j) const { return p.a[i + static_cast<long>(j) * p.m]; }
    double row_dot(int i, const double* v) const {
        double s = 0;
        for (int j = 0; j < p.n; ++j) s += a(i, j) * v[j];
        return s;
    }
};

// Solves the KKT system [H W'; W 0] [step; mu] = [-g; 0] for the working set W. Returns 0 when the
// system is singular.
int kkt(const qp_t& q, const std::vector<int>& work, const double* g, double* step, double* mu) {
    const int n = q.p.n, k = static_cast<int>(work.size()), N = n + k;
    std::vector<double> K(static_cast<long>(N) * N, 0), rhs(N, 0);
    std::vector<int> piv(N);
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i) K[i + static_cast<long>(j) * N] = q.h[i + static_cast<long>(j) * n];
    for (int r = 0; r < k; ++r)
        for (int j = 0; j < n; ++j) {
            const double v = q.a(work[r], j);
            K[(n + r) + static_cast<long>(j) * N] = v;
            K[j + static_cast<long>(n + r) * N] = v;
        }
    for (int i = 0; i < n; ++i) rhs[i] = -g[i];
    int one = 1, info = 0;
    dgesv_(&N, &one, K.data(), &N, piv.data(), rhs.data(), &N, &info);
    if (info != 0) return 0;
    for (int i = 0; i < n; ++i) step[i] = rhs[i];
    for (int r = 0; r < k; ++r) mu[r] = rhs[n + r];
    return 1;
}

// Steepest descent within the working set, for a singular system: -g projected onto the null space
// of the working rows (by least squares).
void projected_descent(const qp_t& q, const std::vector<int>& work, const double* g, double* step) {
    const int n = q.p.n, k = static_cast<int>(work.size());
    for (int i = 0; i < n; ++i) step[i] = -g[i];
    if (k == 0) return;
    // Solve min || W' y - (-g) || and take the residual.
    std::vector<double> W(static_cast<long>(n) * k), rhs(n > k ? n : k, 0);
    for (int r = 0; r < k; ++r)
        for (int j = 0; j < n; ++j) W[j + static_cast<long>(r) * n] = q.a(work[r], j);
    for (int i = 0; i < n; ++i) rhs[i] = -g[i];
    int one = 1, info = 0, lwork = -1;
    double query;
    int ldb = n > k ? n : k;
    dgels_("N", &n, &k, &one, W.data(), &n, rhs.data(), &ldb, &query, &lwork, &info, 1);
    lwork = static_cast<int>(query);
    std::vector<double> wk(lwork > 1 ? lwork : 1);
    for (int r = 0; r < k; ++r)
        for (int j = 0; j < n; ++j) W[j + static_cast<long>(r) * n] = q.a(work[r], j);
    dgels_("N", &n, &k, &one, W.data(), &n, rhs.data(), &ldb, wk.data(), &lwork, &info, 1);
    for (int i = 0; i < n; ++i) {
        double s = 0;
        for (int r = 0; r < k; ++r) s += q.a(work[r], i) * rhs[r];
        step[i] = -g[i] - s;
    }
}

// The rank of the given rows of A, by elimination with full pivoting on a copy.
int rank_of(const qp_t& q, const std::vector<int>& rows) {
    const int n = q.p.n, k = static_cast<int>(rows.size());
    if (k == 0) return 0;
    std::vector<double> M(static_cast<long>(k) * n);
    double big = 0;
    for (int r = 0; r < k; ++r)
        for (int j = 0; j < n; ++j) {
            M[r + static_cast<long>(j) * k] = q.a(rows[r], j);
            big = std::fmax(big, std::fabs(M[r + static_cast<long>(j) * k]));
        }
    int rank = 0;
    std::vector<char> used_row(k, 0), used_col(n, 0);
    for (int step = 0; step < k && step < n; ++step) {
        int br = -1, bc = -1;
        double best = 1e-10 * (big > 0 ? big : 1);
        for (int r = 0; r < k; ++r) {
            if (used_row[r]) continue;
            for (int c = 0; c < n; ++c)
                if (!used_col[c] && std::fabs(M[r + static_cast<long>(c) * k]) > best) {
                    best = std::fabs(M[r + static_cast<long>(c) * k]);
                    br = r;
                    bc = c;
                }
        }
        if (br < 0) break;
        used_row[br] = used_col[bc] = 1;
        ++rank;
        for (int r = 0; r < k; ++r) {
            if (used_row[r]) continue;
            const double f = M[r + static_cast<long>(bc) * k] / M[br + static_cast<long>(bc) * k];
            for (int c = 0; c < n; ++c) M[r + static_cast<long>(c) * k] -= f * M[br + static_cast<long>(c) * k];
        }
    }
    return rank;
}

}  // namespace

int qp_solve(const lp_problem_t& p, const double* h, double* x, double* lambda, int* unique, int* seems_unbounded) {
    const int n = p.n, m = p.m;
    *unique = 0;
    *seems_unbounded = 0;
    for (int i = 0; i < m; ++i) lambda[i] = 0;
    const int found = lp_feasible_point(p, x);
    if (found != lp_optimal) return found == lp_iterations ? lp_iterations : lp_infeasible;
    qp_t q{p, h};
    // The working set: the independent equalities, and the inequalities active at the start while
    // they stay independent.
    std::vector<int> work;
    for (int i = 0; i < p.neq; ++i) {
        work.push_back(i);
        if (rank_of(q, work) < static_cast<int>(work.size())) work.pop_back();
    }
    if (static_cast<int>(work.size()) >= n) {
        *unique = 1;
        return lp_infeasible;
    }
    for (int i = p.neq; i < m && static_cast<int>(work.size()) < n; ++i) {
        if (std::fabs(q.row_dot(i, x) - p.b[i]) > kZero * (1 + std::fabs(p.b[i]))) continue;
        work.push_back(i);
        if (rank_of(q, work) < static_cast<int>(work.size())) work.pop_back();
    }
    std::vector<double> g(n), step(n), mu(m + n);
    const int limit = 20 * (n + m) + 100;
    for (int pass = 0; pass < limit; ++pass) {
        for (int i = 0; i < n; ++i) {
            double s = p.c[i];
            for (int j = 0; j < n; ++j) s += h[i + static_cast<long>(j) * n] * x[j];
            g[i] = s;
        }
        bool direction_only = false;
        if (!kkt(q, work, g.data(), step.data(), mu.data())) {
            projected_descent(q, work, g.data(), step.data());
            direction_only = true;
        }
        double size = 0, xs = 0;
        for (int i = 0; i < n; ++i) {
            size = std::fmax(size, std::fabs(step[i]));
            xs = std::fmax(xs, std::fabs(x[i]));
        }
        if (size <= kZero * (1 + xs)) {
            if (direction_only) {
                // A singular system with zero projected gradient: multipliers by least squares.
                projected_descent(q, work, g.data(), step.data());
            }
            // Multipliers of the working set: g + W' mu = 0.
            int drop = -1;
            double most = -kZero;
            for (int r = 0; r < static_cast<int>(work.size()); ++r) {
                if (work[r] < p.neq) continue;
                if (mu[r] < most) {
                    most = mu[r];
                    drop = r;
                }
            }
            if (drop < 0 || direction_only) {
                for (int r = 0; r < static_cast<int>(work.size()); ++r) lambda[work[r]] = direction_only ? 0 : mu[r];
                return lp_optimal;
            }
            work.erase(work.begin() + drop);
            continue;
        }
        // Curvature along the step: with none, the step is a direction only.
        double curve = 0, slope = 0;
        for (int i = 0; i < n; ++i) {
            double s = 0;
            for (int j = 0; j < n; ++j) s += h[i + static_cast<long>(j) * n] * step[j];
            curve += step[i] * s;
            slope += g[i] * step[i];
        }
        double alpha = direction_only || curve <= kZero ? INFINITY : 1;
        if (!direction_only && curve <= kZero && slope >= 0) {
            for (int i = 0; i < n; ++i) step[i] = -step[i];
        }
        int block = -1;
        for (int i = p.neq; i < m; ++i) {
            bool in = false;
            for (int w : work) in = in || w == i;
            if (in) continue;
            const double ap = q.row_dot(i, step.data());
            if (ap <= kZero) continue;
            const double room = std::fmax(0.0, p.b[i] - q.row_dot(i, x));
            if (room / ap < alpha) {
                alpha = room / ap;
                block = i;
            }
        }
        if (std::isinf(alpha)) {
            *seems_unbounded = 1;
            return lp_unbounded;
        }
        for (int i = 0; i < n; ++i) x[i] += alpha * step[i];
        if (block >= 0) work.push_back(block);
    }
    return lp_iterations;
}

}  // namespace ak_internal
