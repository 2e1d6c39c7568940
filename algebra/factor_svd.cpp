// The singular value decomposition and what is built on it: norm, cond, rank, null, orth, pinv.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "algebra/kernels/kernels.h"
#include "algebra/linalg_internal.h"
#include "arklib/arith.h"
#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/constructors.h"
#include "arklib/factor.h"
#include "arklib/linalg.h"
#include "arklib/sparse.h"
#include "arklib/subscript.h"

using ak_internal::dense_copy;
using ak_internal::dense_zeros;

namespace {

constexpr double k_eps = 2.220446049250313e-16;

// The kernel run: job 0 values only, 11 full vectors, 21 economy U. Returns the values as a column of
// min(m, n); U and V when asked.
Mm run_svd(const Mm& a, int job, Mm* U, Mm* V) {
    const int m = a.rows(), n = a.cols(), k = std::min(m, n);
    const int complex = a.pi != nullptr;
    Mm x = dense_copy(a, complex);
    std::vector<double> s(2 * static_cast<std::size_t>(std::min(m + 1, n) + 1)), e(2 * static_cast<std::size_t>(n + 1)),
        work(2 * static_cast<std::size_t>(m + 1));
    double *sr = s.data(), *si = sr + std::min(m + 1, n) + 1, *er = e.data(), *ei = er + n + 1, *wr = work.data(),
           *wi = wr + m + 1;
    const int ucols = job == 21 ? k : m;
    Mm u = job ? dense_zeros(complex, m, ucols) : Mm();
    Mm v = job ? dense_zeros(complex, n, n) : Mm();
    int info = 0;
    const int ldu = std::max(m, 1), ldv = std::max(n, 1);
    if (m > 0 && n > 0) {
        if (complex)
            ak_kernels::zsvdc(x.addr(), x.addi(), m, m, n, sr, si, er, ei, job ? u.addr() : nullptr,
                              job ? u.addi() : nullptr, ldu, job ? v.addr() : nullptr, job ? v.addi() : nullptr, ldv,
                              wr, wi, job, &info);
        else
            ak_kernels::dsvdc(x.addr(), m, m, n, sr, er, job ? u.addr() : nullptr, ldu, job ? v.addr() : nullptr, ldv,
                              wr, job, &info);
    } else if (job) {  // an empty matrix: identities
        for (int i = 0; i < std::min(m, ucols); ++i) u.addr()[static_cast<long>(i) * m + i] = 1.0;
        for (int i = 0; i < n; ++i) v.addr()[static_cast<long>(i) * n + i] = 1.0;
    }
    Mm values = dense_zeros(0, k, 1);
    for (int i = 0; i < k; ++i) values.addr()[i] = sr[i];
    if (U) *U = u;
    if (V) *V = v;
    return values;
}

// The diagonal rows x cols matrix with the values s on it.
Mm diagonal(const Mm& s, int rows, int cols) {
    Mm d = dense_zeros(0, rows, cols);
    for (int i = 0; i < s.nnz && i < rows && i < cols; ++i) d.addr()[static_cast<long>(i) * rows + i] = s.addr()[i];
    return d;
}

bool numeric_2d(const Mm& a, const char* name) { return !error_numeric(a, name) && !error_2d(a, name); }

// The leading singular values of svd(a, 0, ...) as null, orth and pinv read them.
Mm economy(const Mm& a, Mm& U, Mm& V) {
    Mm S;
    U = svd(a, Mm(0.0), i_o, S, V);
    return S;
}

}  // namespace

Mm svd(const Mm& a) {
    if (!numeric_2d(a, "svd")) return x_M;
    return run_svd(full(a), 0, nullptr, nullptr);
}

Mm svd(const Mm& a, i_o_t, Mm& S, Mm& V) {
    if (!numeric_2d(a, "svd")) {
        S = V = x_M;
        return x_M;
    }
    Mm U;
    Mm s = run_svd(full(a), 11, &U, &V);
    S = diagonal(s, a.rows(), a.cols());
    return U;
}

Mm svd(const Mm& a, const Mm&, i_o_t, Mm& S, Mm& V) {
    if (!numeric_2d(a, "svd")) {
        S = V = x_M;
        return x_M;
    }
    Mm U;
    Mm s = run_svd(full(a), 21, &U, &V);
    S = diagonal(s, std::min(a.rows(), a.cols()), a.cols());
    return U;
}

Mm svd_U(const Mm& a) {
    Mm S, V;
    return svd(a, i_o, S, V);
}
Mm svd_S(const Mm& a) {
    Mm S, V;
    svd(a, i_o, S, V);
    return S;
}
Mm svd_W(const Mm& a) {
    Mm S, V;
    svd(a, i_o, S, V);
    return V;
}

Mm norm(const Mm& a, const Mm& p) {
    if (!numeric_2d(a, "norm")) return x_M;
    Mm f = ak_internal::dense_copy(a, a.pi != nullptr);
    if (f.nnz == 0) return Mm(0.0);
    const double* re = f.addr();
    const double* im = f.addi();
    auto mag = [&](int k) { return im ? std::hypot(re[k], im[k]) : std::fabs(re[k]); };
    char word[8] = "";
    if (p.flags.str) Mstr(p, word, sizeof word);
    if (std::strcmp(word, "fro") == 0) {
        double s = 0.0;
        for (int k = 0; k < f.nnz; ++k) s += re[k] * re[k] + (im ? im[k] * im[k] : 0.0);
        return Mm(std::sqrt(s));
    }
    const bool inf_word = std::strcmp(word, "inf") == 0 || std::strcmp(word, "Inf") == 0;
    const double pv = inf_word ? INFINITY : (p.flags.str ? NAN : scalar(p));
    const int m = f.rows(), n = f.cols();
    if (m == 1 || n == 1) {
        double r = pv > 0 && std::isinf(pv) ? 0.0 : INFINITY;
        if (std::isinf(pv)) {
            for (int k = 0; k < f.nnz; ++k) r = pv > 0 ? std::max(r, mag(k)) : std::min(r, mag(k));
            return Mm(r);
        }
        double s = 0.0;
        for (int k = 0; k < f.nnz; ++k) s += std::pow(mag(k), pv);
        return Mm(std::pow(s, 1.0 / pv));
    }
    if (pv == 2.0) return Mm(run_svd(f, 0, nullptr, nullptr).addr()[0]);
    if (pv == 1.0 || (std::isinf(pv) && pv > 0)) {
        const bool rows = pv != 1.0;  // the largest row sum, through the transpose
        double best = 0.0;
        for (int j = 0; j < (rows ? m : n); ++j) {
            double s = 0.0;
            for (int i = 0; i < (rows ? n : m); ++i) s += mag(rows ? i * m + j : j * m + i);
            if (s > best || std::isnan(s)) best = s;
        }
        return Mm(best);
    }
    error("norm: x matrix, P not 1, 2, inf or fro");
    return x_M;
}

Mm norm(const Mm& a) { return norm(a, Mm(2.0)); }

Mm cond(const Mm& a) {
    if (!numeric_2d(a, "cond")) return x_M;
    if (a.size() == 0) return Mm(NAN);
    Mm s = run_svd(full(a), 0, nullptr, nullptr);
    double smax = s.addr()[0], smin = s.addr()[s.nnz - 1];
    if (smax != 0.0 && smin == 0.0) return Mm(INFINITY);
    return Mm(smax / smin);
}

Mm rank(const Mm& a, const Mm& tol) {
    if (!numeric_2d(a, "rank")) return x_M;
    Mm s = run_svd(full(a), 0, nullptr, nullptr);
    double t;
    if (tol.size() == 0 || &tol == &nop_M) {
        double smax = s.nnz ? s.addr()[0] : 0.0;
        t = std::max(a.rows(), a.cols()) * smax * k_eps;
    } else {
        t = scalar(tol);
    }
    int r = 0;
    for (int k = 0; k < s.nnz; ++k) r += s.addr()[k] > t;
    return Mm(static_cast<double>(r));
}

Mm rank(const Mm& a) { return rank(a, nop_M); }

namespace {

// The count of significant singular values of svd(a, 0, ...), with its U and V.
int numerical_rank(const Mm& a, Mm& U, Mm& V) {
    Mm S = economy(a, U, V);
    const int m = a.rows(), n = a.cols();
    std::vector<double> s;
    if (m == 1) {
        if (S.nnz) s.push_back(S.addr()[0]);
    } else {
        for (int i = 0; i < std::min(S.rows(), S.cols()); ++i) s.push_back(S.addr()[static_cast<long>(i) * S.rows() + i]);
    }
    double smax = s.empty() ? 0.0 : *std::max_element(s.begin(), s.end());
    double tol = k_eps * smax * std::max(m, n);
    int r = 0;
    for (double v : s) r += v > tol;
    return r;
}

Mm columns_of(const Mm& x, int from, int to) {  // x(:, from:to), one-based, empty when to < from
    if (to < from) return dense_zeros(0, x.rows(), 0);
    return x(c_p, colon(static_cast<double>(from), static_cast<double>(to)));
}

}  // namespace

Mm null(const Mm& a) {
    if (!numeric_2d(a, "null")) return x_M;
    Mm U, V;
    int r = numerical_rank(full(a), U, V);
    return columns_of(V, r + 1, a.cols());
}

Mm orth(const Mm& a) {
    if (!numeric_2d(a, "orth")) return x_M;
    Mm U, V;
    int r = numerical_rank(full(a), U, V);
    return columns_of(U, 1, r);
}

Mm pinv(const Mm& a, const Mm& tol) {
    if (!numeric_2d(a, "pinv")) return x_M;
    Mm f = full(a);
    const int m = f.rows(), n = f.cols();
    Mm U, V;
    Mm S = economy(f, U, V);
    std::vector<double> s;
    if (std::min(m, n) == 1) {
        if (S.nnz) s.push_back(S.addr()[0]);
    } else {
        for (int i = 0; i < std::min(S.rows(), S.cols()); ++i) s.push_back(S.addr()[static_cast<long>(i) * S.rows() + i]);
    }
    double t = tol.size() == 0 ? k_eps * (s.empty() ? 0.0 : s[0]) * std::max(m, n) : scalar(tol);
    int r = 0;
    for (double v : s) r += v > t;
    if (r == 0) return dense_zeros(0, n, m);
    Mm inv_s = dense_zeros(0, r, r);
    for (int i = 0; i < r; ++i) inv_s.addr()[static_cast<long>(i) * r + i] = 1.0 / s[i];
    return mtimes(mtimes(columns_of(V, 1, r), inv_s), ctranspose(columns_of(U, 1, r)));
}

Mm pinv(const Mm& a) { return pinv(a, nop_M); }

namespace {
Mm report(const char* name, int n) {
    error_input(name, n);
    return x_M;
}
}  // namespace

Mm svd() { return report("svd", 0); }
Mm norm() { return report("norm", 0); }
Mm cond() { return report("cond", 0); }
Mm rank() { return report("rank", 0); }
Mm null() { return report("null", 0); }
Mm orth() { return report("orth", 0); }
Mm pinv() { return report("pinv", 0); }

AK_BUILTIN("svd", AK_FN(svd, const Mm&), AK_FN(svd, const Mm&, i_o_t, Mm&, Mm&),
           AK_FN(svd, const Mm&, const Mm&, i_o_t, Mm&, Mm&), AK_FN(svd));
AK_BUILTIN("svd_U", svd_U);
AK_BUILTIN("svd_S", svd_S);
AK_BUILTIN("svd_W", svd_W);
AK_BUILTIN("norm", AK_FN(norm, const Mm&), AK_FN(norm, const Mm&, const Mm&), AK_FN(norm));
AK_BUILTIN("cond", AK_FN(cond, const Mm&), AK_FN(cond));
AK_BUILTIN("rank", AK_FN(rank, const Mm&), AK_FN(rank, const Mm&, const Mm&), AK_FN(rank));
AK_BUILTIN("null", AK_FN(null, const Mm&), AK_FN(null));
AK_BUILTIN("orth", AK_FN(orth, const Mm&), AK_FN(orth));
AK_BUILTIN("pinv", AK_FN(pinv, const Mm&), AK_FN(pinv, const Mm&, const Mm&), AK_FN(pinv));
