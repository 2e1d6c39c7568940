// Orthogonal-triangular factors and plane rotations: qr with and without column pivoting, the
// updates qrinsert and qrdelete, givens, planerot, subspace, and the reduced row echelon form.
#include <algorithm>
#include <cmath>
#include <complex>
#include <vector>

#include "algebra/kernels/kernels.h"
#include "algebra/linalg_internal.h"
#include "arklib/arith.h"
#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/constructors.h"
#include "arklib/elementary.h"
#include "arklib/factor.h"
#include "arklib/linalg.h"
#include "arklib/list.h"
#include "arklib/sparse.h"
#include "arklib/subscript.h"

using ak_internal::dense_copy;
using ak_internal::dense_zeros;
using cplx = std::complex<double>;

namespace {

cplx get(const Mm& m, int i, int j) {
    long k = static_cast<long>(j) * m.rows() + i;
    return cplx(m.addr()[k], m.pi ? m.addi()[k] : 0.0);
}
void put(Mm& m, int i, int j, cplx v) {
    long k = static_cast<long>(j) * m.rows() + i;
    m.addr()[k] = v.real();
    if (m.pi) m.addi()[k] = v.imag();
}

// Q (m x qcols), R (rows x n) and the pivot order of the Householder factors of a.
Mm householder_qr(const Mm& a0, bool pivot, bool economy, Mm& R, std::vector<int>& jpvt) {
    Mm a = full(a0);
    const int m = a.rows(), n = a.cols(), k = std::min(m, n);
    const int complex = a.pi != nullptr;
    Mm x = dense_copy(a, complex);
    jpvt.assign(static_cast<std::size_t>(n), 0);
    std::vector<double> qraux(2 * static_cast<std::size_t>(n) + 2), work(2 * static_cast<std::size_t>(n) + 2);
    double *qr = qraux.data(), *qi = qr + n + 1, *wr = work.data(), *wi = wr + n + 1;
    if (complex)
        ak_kernels::zqrdc(x.addr(), x.addi(), m, m, n, qr, qi, jpvt.data(), wr, wi, pivot ? 1 : 0);
    else
        ak_kernels::dqrdc(x.addr(), m, m, n, qr, jpvt.data(), wr, pivot ? 1 : 0);
    if (!pivot)
        for (int j = 0; j < n; ++j) jpvt[j] = j + 1;
    const int rrows = economy ? k : m, qcols = economy ? k : m;
    R = dense_zeros(complex, rrows, n);
    for (int j = 0; j < n; ++j)
        for (int i = 0; i <= std::min(j, rrows - 1); ++i) put(R, i, j, get(x, i, j));
    // Q column by column: Q e_j.
    Mm Q = dense_zeros(complex, m, qcols);
    std::vector<double> e(2 * static_cast<std::size_t>(m), 0.0);
    for (int j = 0; j < qcols; ++j) {
        std::fill(e.begin(), e.end(), 0.0);
        e[j] = 1.0;
        double* qy = Q.addr() + static_cast<long>(j) * m;
        int info;
        if (complex)
            ak_kernels::zqrsl(x.addr(), x.addi(), m, m, k, qr, qi, e.data(), e.data() + m, Q.addr() + static_cast<long>(j) * m,
                              Q.addi() + static_cast<long>(j) * m, nullptr, nullptr, nullptr, nullptr, nullptr,
                              nullptr, nullptr, nullptr, 10000, &info);
        else
            ak_kernels::dqrsl(x.addr(), m, m, k, qr, e.data(), qy, nullptr, nullptr, nullptr, nullptr, 10000, &info);
    }
    return Q;
}

Mm qr_forms(const Mm& a, bool economy, Mm* R, Mm* E) {
    if (error_numeric(a, "qr") || error_2d(a, "qr")) {
        if (R) *R = x_M;
        if (E) *E = x_M;
        return x_M;
    }
    if (a.size() == 0) {
        if (R) *R = nop_M;
        if (E) *E = nop_M;
        return nop_M;
    }
    std::vector<int> jpvt;
    Mm r;
    Mm q = householder_qr(a, E != nullptr, economy, r, jpvt);
    if (E) {
        const int n = a.cols();
        if (economy) {
            Mm v = dense_zeros(0, 1, n);
            for (int j = 0; j < n; ++j) v.addr()[j] = jpvt[j];
            *E = v;
        } else {
            Mm p = dense_zeros(0, n, n);
            for (int j = 0; j < n; ++j) p.addr()[static_cast<long>(j) * n + jpvt[j] - 1] = 1.0;
            *E = p;
        }
    }
    if (!R) return r;  // R = qr(a)
    *R = r;
    return q;
}

// The rotation G with G [x; y] = [r; 0]: [conj(x) conj(y); -y x] / r.
void rotation(cplx x, cplx y, cplx g[4]) {
    double r = std::sqrt(std::norm(x) + std::norm(y));
    if (y == 0.0) {
        g[0] = 1.0, g[1] = 0.0, g[2] = 0.0, g[3] = 1.0;
        return;
    }
    g[0] = std::conj(x) / r, g[1] = std::conj(y) / r, g[2] = -y / r, g[3] = x / r;
}

// Rows k, k+1 of R from column `from` by G, columns k, k+1 of Q by G'.
void rotate(Mm& Q, Mm& R, int k, int from, const cplx g[4]) {
    for (int j = from; j < R.cols(); ++j) {
        cplx x = get(R, k, j), y = get(R, k + 1, j);
        put(R, k, j, g[0] * x + g[1] * y);
        put(R, k + 1, j, g[2] * x + g[3] * y);
    }
    for (int i = 0; i < Q.rows(); ++i) {
        cplx x = get(Q, i, k), y = get(Q, i, k + 1);
        put(Q, i, k, x * std::conj(g[0]) + y * std::conj(g[1]));
        put(Q, i, k + 1, x * std::conj(g[2]) + y * std::conj(g[3]));
    }
}

}  // namespace

Mm qr(const Mm& a) { return qr_forms(a, false, nullptr, nullptr); }
Mm qr(const Mm& a, i_o_t, Mm& R) { return qr_forms(a, false, &R, nullptr); }
Mm qr(const Mm& a, i_o_t, Mm& R, Mm& E) { return qr_forms(a, false, &R, &E); }
Mm qr(const Mm& a, const Mm&) { return qr_forms(a, true, nullptr, nullptr); }
Mm qr(const Mm& a, const Mm&, i_o_t, Mm& R) { return qr_forms(a, true, &R, nullptr); }
Mm qr(const Mm& a, const Mm&, i_o_t, Mm& R, Mm& E) { return qr_forms(a, true, &R, &E); }

Mm qrdelete(const Mm& Q0, const Mm& R0, const Mm& jm, i_o_t, Mm& R1) {
    const int complex = Q0.pi || R0.pi;
    Mm Q = dense_copy(Q0, complex), R = dense_copy(R0, complex);
    const int n = R.cols(), j = static_cast<int>(scalar(jm)) - 1;
    if (j < 0 || j >= n) {
        error("qrdelete: column index out of range");
        R1 = x_M;
        return x_M;
    }
    Mm Rd = dense_zeros(complex, R.rows(), n - 1);
    for (int c = 0, t = 0; c < n; ++c) {
        if (c == j) continue;
        for (int i = 0; i < R.rows(); ++i) put(Rd, i, t, get(R, i, c));
        ++t;
    }
    for (int k = j; k < std::min(n - 1, R.rows() - 1); ++k) {
        cplx g[4];
        rotation(get(Rd, k, k), get(Rd, k + 1, k), g);
        rotate(Q, Rd, k, k, g);
        put(Rd, k + 1, k, 0.0);
    }
    R1 = Rd;
    return Q;
}

Mm qrinsert(const Mm& Q0, const Mm& R0, const Mm& jm, const Mm& x, i_o_t, Mm& R1) {
    const int complex = Q0.pi || R0.pi || x.pi;
    Mm Q = dense_copy(Q0, complex), R = dense_copy(R0, complex);
    const int m = R.rows(), n = R.cols(), j = static_cast<int>(scalar(jm)) - 1;
    if (j < 0 || j > n || x.size() != m) {
        error("qrinsert: column index or column length out of range");
        R1 = x_M;
        return x_M;
    }
    Mm col = dense_copy(mtimes(ctranspose(Q), x(c_p)), complex);
    Mm Ri = dense_zeros(complex, m, n + 1);
    for (int c = 0; c <= n; ++c)
        for (int i = 0; i < m; ++i) put(Ri, i, c, c == j ? get(col, i, 0) : get(R, i, c < j ? c : c - 1));
    for (int k = m - 2; k >= j; --k) {
        cplx g[4];
        rotation(get(Ri, k, j), get(Ri, k + 1, j), g);
        rotate(Q, Ri, k, j, g);
        put(Ri, k + 1, j, 0.0);
    }
    R1 = Ri;
    return Q;
}

Mm givens(const Mm& x, const Mm& y, i_o_t, Mm& s) {
    cplx a = get(dense_copy(x, 1), 0, 0), b = get(dense_copy(y, 1), 0, 0);
    double c;
    cplx sv;
    if (std::abs(a) == 0.0) {
        c = 0.0;
        sv = 1.0;
    } else {
        double nrm = std::sqrt(std::norm(a) + std::norm(b));
        c = std::abs(a) / nrm;
        sv = (a / std::abs(a)) * (std::conj(b) / nrm);
    }
    Mm sm(sv.imag() != 0.0, 0, 0, 1, 1, ak_double);
    sm.addr()[0] = sv.real();
    if (sm.pi) sm.addi()[0] = sv.imag();
    s = sm;
    return Mm(c);
}
Mm givens(const Mm& x, const Mm& y) {
    Mm s;
    Mm c = givens(x, y, i_o, s);
    Mm g = dense_zeros(1, 2, 2);
    cplx sv = get(dense_copy(s, 1), 0, 0);
    put(g, 0, 0, c.r());
    put(g, 0, 1, sv);
    put(g, 1, 0, -std::conj(sv));
    put(g, 1, 1, c.r());
    g.getreal(0);
    return g;
}
Mm givens(const Mm& x) {
    if (x.size() != 2) {
        error("givens: a two-element vector expected");
        return x_M;
    }
    Mm f = full(x);
    return givens(f(1.0), f(2.0));
}

Mm planerot(const Mm& x, i_o_t, Mm& y) {
    Mm f = dense_copy(x, x.pi != nullptr);
    if (f.size() != 2) {
        error("planerot: a two-element vector expected");
        y = x_M;
        return x_M;
    }
    cplx a = get(f, 0, 0), b = get(f, 1, 0);
    if (b == 0.0) {
        y = x;
        return eye(Mm(2.0));
    }
    double r = std::sqrt(std::norm(a) + std::norm(b));
    Mm G = dense_zeros(1, 2, 2);
    put(G, 0, 0, std::conj(a) / r);
    put(G, 0, 1, std::conj(b) / r);
    put(G, 1, 0, -b / r);
    put(G, 1, 1, a / r);
    G.getreal(0);
    Mm yy = dense_zeros(0, 2, 1);
    yy.addr()[0] = r;
    y = yy;
    return G;
}
Mm planerot(const Mm& x) {
    Mm y;
    return planerot(x, i_o, y);
}

Mm subspace(const Mm& a, const Mm& b) {
    if (a.rows() != b.rows()) {
        error("%s: arguments must have same number of rows.", "subspace");
        return x_M;
    }
    Mm Ra, Rb;
    Mm Qa = qr(a, Mm(0.0), i_o, Ra), Qb = qr(b, Mm(0.0), i_o, Rb);
    Mm s = svd(mtimes(ctranspose(Qa), Qb));
    double smin = 1.0;
    for (int k = 0; k < s.nnz; ++k) smin = std::min(smin, s.addr()[k]);
    return Mm(std::acos(smin));
}

Mm rref(const Mm& a0, const Mm& tol0, i_o_t, Mm& jb) {
    if (error_numeric(a0, "rref") || error_2d(a0, "rref")) {
        jb = x_M;
        return x_M;
    }
    Mm a = dense_copy(a0, a0.pi != nullptr);
    const int m = a.rows(), n = a.cols();
    double tol;
    if (tol0.size() == 0) {
        double ninf = 0.0;  // the largest row sum
        for (int i = 0; i < m; ++i) {
            double s = 0.0;
            for (int j = 0; j < n; ++j) s += std::abs(get(a, i, j));
            ninf = std::max(ninf, s);
        }
        tol = std::max(m, n) * ninf * 2.220446049250313e-16;
    } else {
        tol = scalar(tol0);
    }
    std::vector<double> pivots;
    int i = 0;
    for (int j = 0; j < n && i < m; ++j) {
        int k = i;
        double best = -1.0;
        for (int r = i; r < m; ++r)
            if (std::abs(get(a, r, j)) > best) {
                best = std::abs(get(a, r, j));
                k = r;
            }
        if (best <= tol) {
            for (int r = i; r < m; ++r) put(a, r, j, 0.0);
            continue;
        }
        pivots.push_back(j + 1);
        for (int c = j; c < n; ++c) {
            cplx t = get(a, i, c);
            put(a, i, c, get(a, k, c));
            put(a, k, c, t);
        }
        cplx p = get(a, i, j);
        for (int c = j; c < n; ++c) put(a, i, c, get(a, i, c) / p);
        for (int r = 0; r < m; ++r) {
            if (r == i) continue;
            cplx f = get(a, r, j);
            for (int c = j; c < n; ++c) put(a, r, c, get(a, r, c) - f * get(a, i, c));
        }
        ++i;
    }
    Mm v = dense_zeros(0, 1, static_cast<int>(pivots.size()));
    for (std::size_t q = 0; q < pivots.size(); ++q) v.addr()[q] = pivots[q];
    jb = v;
    return a;
}
Mm rref(const Mm& a) {
    Mm jb;
    return rref(a, nop_M, i_o, jb);
}
Mm rref(const Mm& a, const Mm& tol) {
    Mm jb;
    return rref(a, tol, i_o, jb);
}
Mm rref(const Mm& a, i_o_t, Mm& jb) { return rref(a, nop_M, i_o, jb); }

Mm subspace(const Mm&) {
    error_input("subspace", 1);
    return x_M;
}

AK_BUILTIN("qr", AK_FN(qr, const Mm&), AK_FN(qr, const Mm&, i_o_t, Mm&), AK_FN(qr, const Mm&, i_o_t, Mm&, Mm&),
           AK_FN(qr, const Mm&, const Mm&), AK_FN(qr, const Mm&, const Mm&, i_o_t, Mm&),
           AK_FN(qr, const Mm&, const Mm&, i_o_t, Mm&, Mm&));
AK_BUILTIN("qrdelete", qrdelete);
AK_BUILTIN("qrinsert", qrinsert);
AK_BUILTIN("givens", AK_FN(givens, const Mm&), AK_FN(givens, const Mm&, const Mm&),
           AK_FN(givens, const Mm&, const Mm&, i_o_t, Mm&));
AK_BUILTIN("planerot", AK_FN(planerot, const Mm&), AK_FN(planerot, const Mm&, i_o_t, Mm&));
AK_BUILTIN("subspace", AK_FN(subspace, const Mm&, const Mm&), AK_FN(subspace, const Mm&));
AK_BUILTIN("rref", AK_FN(rref, const Mm&), AK_FN(rref, const Mm&, const Mm&), AK_FN(rref, const Mm&, i_o_t, Mm&),
           AK_FN(rref, const Mm&, const Mm&, i_o_t, Mm&));
