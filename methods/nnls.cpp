// nnls and lsqnonneg: non-negative least squares by the active-set method of Lawson and Hanson.
// Variables move into the positive set by the largest dual value; each least-squares solve on that
// set that leaves a variable at or below zero is cut back to the boundary.
#include <cfloat>
#include <cmath>
#include <cstring>
#include <vector>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/constructors.h"
#include "arklib/error.h"
#include "arklib/optim.h"
#include "arklib/sparse.h"
#include "methods/lapack.h"
#include "methods/optim_internal.h"

namespace {

// The 2-norm of the m x n matrix a: its largest singular value.
double norm2(const double* a, int m, int n) {
    if (m == 0 || n == 0) return 0;
    std::vector<double> copy(a, a + static_cast<long>(m) * n), s(m < n ? m : n);
    int lwork = -1, info = 0, one = 1;
    double query = 0, dummy = 0;
    dgesvd_("N", "N", &m, &n, copy.data(), &m, s.data(), &dummy, &one, &dummy, &one, &query, &lwork, &info, 1, 1);
    lwork = static_cast<int>(query);
    std::vector<double> work(lwork > 1 ? lwork : 1);
    dgesvd_("N", "N", &m, &n, copy.data(), &m, s.data(), &dummy, &one, &dummy, &one, work.data(), &lwork, &info, 1, 1);
    return info == 0 ? s[0] : 0;
}

// Least squares on the columns in set: z(set) solves min norm(a(:, set) z - b), z elsewhere 0.
void solve_on(const double* a, const double* b, int m, int n, const std::vector<int>& set, double* z) {
    for (int j = 0; j < n; ++j) z[j] = 0;
    int k = static_cast<int>(set.size());
    if (k == 0) return;
    std::vector<double> sub(static_cast<long>(m) * k), rhs(m > k ? m : k, 0);
    for (int c = 0; c < k; ++c) std::memcpy(&sub[static_cast<long>(c) * m], a + static_cast<long>(set[c]) * m, sizeof(double) * m);
    std::memcpy(rhs.data(), b, sizeof(double) * m);
    int one = 1, info = 0, lwork = -1, ldb = m > k ? m : k;
    double query = 0;
    dgels_("N", &m, &k, &one, sub.data(), &m, rhs.data(), &ldb, &query, &lwork, &info, 1);
    lwork = static_cast<int>(query);
    std::vector<double> work(lwork > 1 ? lwork : 1);
    dgels_("N", &m, &k, &one, sub.data(), &m, rhs.data(), &ldb, work.data(), &lwork, &info, 1);
    for (int c = 0; c < k; ++c) z[set[c]] = rhs[c];
}

// w = a'(b - a x).
void duals(const double* a, const double* b, int m, int n, const double* x, double* w) {
    std::vector<double> r(b, b + m);
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < m; ++i) r[i] -= a[i + static_cast<long>(j) * m] * x[j];
    for (int j = 0; j < n; ++j) {
        double s = 0;
        for (int i = 0; i < m; ++i) s += a[i + static_cast<long>(j) * m] * r[i];
        w[j] = s;
    }
}

struct nnls_out_t {
    Mm x, w, p;
    int iterations;
    bool converged;
};

nnls_out_t engine(const Mm& a_in, const Mm& b_in, double tol, bool tol_given, const char* who) {
    nnls_out_t out{Mm(), Mm(), Mm(), 0, true};
    Mm A = full(mdouble(a_in)), B = full(mdouble(b_in));
    const int m = A.rows(), n = A.cols();
    if (B.size() != m) {
        error("%s: number of rows in a and b is different", who);
        return out;
    }
    const double* a = A.addr();
    const double* b = B.addr();
    if (!tol_given) tol = 10 * DBL_EPSILON * norm2(a, m, n) * (m > n ? m : n);
    Mm X = zeros(static_cast<double>(n), 1.0), W = zeros(static_cast<double>(n), 1.0),
       Z = zeros(static_cast<double>(n), 1.0);
    double* x = X.addr();
    double* w = W.addr();
    double* z = Z.addr();
    std::vector<int> passive;
    std::vector<char> in(n, 0);
    duals(a, b, m, n, x, w);
    const int limit = 3 * n + 10;
    for (;;) {
        int t = -1;
        for (int j = 0; j < n; ++j)
            if (!in[j] && w[j] > tol && (t < 0 || w[j] > w[t])) t = j;
        if (t < 0) break;
        if (++out.iterations > limit) {
            out.converged = false;
            break;
        }
        in[t] = 1;
        passive.push_back(t);
        solve_on(a, b, m, n, passive, z);
        // Cut back while the solve leaves a positive-set variable at or below zero.
        for (int inner = 0; inner < 3 * n + 10; ++inner) {
            double alpha = 2;
            for (int j : passive)
                if (z[j] <= tol) alpha = std::fmin(alpha, x[j] / (x[j] - z[j]));
            if (alpha > 1) break;
            for (int j = 0; j < n; ++j) x[j] += alpha * (z[j] - x[j]);
            std::vector<int> keep;
            for (int j : passive) {
                if (std::fabs(x[j]) <= tol || x[j] < 0) {
                    x[j] = 0;
                    in[j] = 0;
                } else {
                    keep.push_back(j);
                }
            }
            passive = keep;
            solve_on(a, b, m, n, passive, z);
        }
        std::memcpy(x, z, sizeof(double) * n);
        duals(a, b, m, n, x, w);
    }
    out.x = X;
    out.w = W;
    Mm P(0, 0, 0, static_cast<int>(passive.size()), 1, ak_double);
    for (int k = 0; k < static_cast<int>(passive.size()); ++k) P.addr()[k] = passive[k] + 1;
    out.p = P;
    return out;
}

Mm nnls_full(const Mm& a, const Mm& b, const Mm* tol, Mm& w, Mm& p) {
    double t = 0;
    const bool given = tol && tol->size() > 0;
    if (given) t = full(mdouble(*tol)).addr()[0];
    nnls_out_t r = engine(a, b, t, given, "nnls");
    w = r.w;
    p = r.p;
    return r.x;
}

Mm lsq_full(int nin, const Mm& a, const Mm& b, const Mm& options, Mm& resnorm, Mm& residual, Mm& exitflag,
            Mm& output, Mm& lambda) {
    if (nin < 2 || nin > 4) {
        error("%s: wrong number of arguments", "lsqnonneg");
        return x_M;
    }
    double tol = 0;
    bool given = false;
    if (isstruct(options)) {
        Mm v = optimget(options, TM("TolX"));
        if (v.size() > 0) {
            tol = full(mdouble(v)).addr()[0];
            given = true;
        }
    }
    nnls_out_t r = engine(a, b, tol, given, "lsqnonneg");
    if (r.x.size() < 0 || (r.x.size() == 0 && a.size() > 0)) return x_M;
    Mm A = full(mdouble(a)), B = full(mdouble(b));
    const int m = A.rows(), n = A.cols();
    Mm res(0, 0, 0, m, 1, ak_double);
    double sum = 0;
    for (int i = 0; i < m; ++i) {
        double s = B.addr()[i];
        for (int j = 0; j < n; ++j) s -= A.addr()[i + static_cast<long>(j) * m] * r.x.addr()[j];
        res.addr()[i] = s;
        sum += s * s;
    }
    resnorm = Mm(sum);
    residual = res;
    exitflag = Mm(r.converged ? 1.0 : 0.0);
    Mm list(0, 0, 0, 1, 2, ak_mm);
    list.getpr(static_cast<Mm*>(nullptr))[0] = TM("iterations");
    list.getpr(static_cast<Mm*>(nullptr))[1] = Mm(static_cast<double>(r.iterations));
    output = mstruct(list);
    lambda = r.w;
    return r.x;
}

}  // namespace

#define M const Mm&
Mm nnls(M) {
    error_input("nnls", 1);
    return x_M;
}
Mm nnls(M a, M b) {
    Mm w, p;
    return nnls_full(a, b, nullptr, w, p);
}
Mm nnls(M a, M b, M tol) {
    Mm w, p;
    return nnls_full(a, b, &tol, w, p);
}
Mm nnls(M a, M b, i_o_t, Mm& w) {
    Mm p;
    return nnls_full(a, b, nullptr, w, p);
}
Mm nnls(M a, M b, M tol, i_o_t, Mm& w) {
    Mm p;
    return nnls_full(a, b, &tol, w, p);
}
Mm nnls(M a, M b, i_o_t, Mm& w, Mm& p) { return nnls_full(a, b, nullptr, w, p); }
Mm nnls(M a, M b, M tol, i_o_t, Mm& w, Mm& p) { return nnls_full(a, b, &tol, w, p); }

Mm lsqnonneg(M a) {
    Mm r1, r2, r3, r4, r5;
    return lsq_full(1, a, Mm(), Mm(), r1, r2, r3, r4, r5);
}
Mm lsqnonneg(M a, M b) {
    Mm r1, r2, r3, r4, r5;
    return lsq_full(2, a, b, Mm(), r1, r2, r3, r4, r5);
}
Mm lsqnonneg(M a, M b, M) {
    Mm r1, r2, r3, r4, r5;
    return lsq_full(3, a, b, Mm(), r1, r2, r3, r4, r5);
}
Mm lsqnonneg(M a, M b, M, M options) {
    Mm r1, r2, r3, r4, r5;
    return lsq_full(4, a, b, options, r1, r2, r3, r4, r5);
}
Mm lsqnonneg(M a, M b, i_o_t, Mm& resnorm) {
    Mm r2, r3, r4, r5;
    return lsq_full(2, a, b, Mm(), resnorm, r2, r3, r4, r5);
}
Mm lsqnonneg(M a, M b, i_o_t, Mm& resnorm, Mm& residual) {
    Mm r3, r4, r5;
    return lsq_full(2, a, b, Mm(), resnorm, residual, r3, r4, r5);
}
Mm lsqnonneg(M a, M b, i_o_t, Mm& resnorm, Mm& residual, Mm& exitflag) {
    Mm r4, r5;
    return lsq_full(2, a, b, Mm(), resnorm, residual, exitflag, r4, r5);
}
Mm lsqnonneg(M a, M b, i_o_t, Mm& resnorm, Mm& residual, Mm& exitflag, Mm& output) {
    Mm r5;
    return lsq_full(2, a, b, Mm(), resnorm, residual, exitflag, output, r5);
}
Mm lsqnonneg(M a, M b, i_o_t, Mm& resnorm, Mm& residual, Mm& exitflag, Mm& output, Mm& lambda) {
    return lsq_full(2, a, b, Mm(), resnorm, residual, exitflag, output, lambda);
}
Mm lsqnonneg(M a, M b, M, M options, i_o_t, Mm& resnorm, Mm& residual, Mm& exitflag, Mm& output, Mm& lambda) {
    return lsq_full(4, a, b, options, resnorm, residual, exitflag, output, lambda);
}

#define I i_o_t
AK_BUILTIN("nnls", AK_FN(nnls, M), AK_FN(nnls, M, M), AK_FN(nnls, M, M, M), AK_FN(nnls, M, M, I, Mm&),
           AK_FN(nnls, M, M, M, I, Mm&), AK_FN(nnls, M, M, I, Mm&, Mm&), AK_FN(nnls, M, M, M, I, Mm&, Mm&));
AK_BUILTIN("lsqnonneg", AK_FN(lsqnonneg, M), AK_FN(lsqnonneg, M, M), AK_FN(lsqnonneg, M, M, M),
           AK_FN(lsqnonneg, M, M, M, M), AK_FN(lsqnonneg, M, M, I, Mm&), AK_FN(lsqnonneg, M, M, I, Mm&, Mm&),
           AK_FN(lsqnonneg, M, M, I, Mm&, Mm&, Mm&), AK_FN(lsqnonneg, M, M, I, Mm&, Mm&, Mm&, Mm&),
           AK_FN(lsqnonneg, M, M, I, Mm&, Mm&, Mm&, Mm&, Mm&), AK_FN(lsqnonneg, M, M, M, M, I, Mm&, Mm&, Mm&, Mm&, Mm&));
#undef I
#undef M
