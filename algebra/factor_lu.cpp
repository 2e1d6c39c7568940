// Inverse, determinant, condition estimate, LU and Cholesky factors of square matrices. Real
// matrices go to LAPACK for the inverse, the determinant and the L, U, P factors; complex ones, the
// packed factors of lu(a), the condition estimate and Cholesky to the elimination kernels held in
// this library.
#include <cmath>
#include <cstring>
#include <vector>

#include "algebra/complex_scalar.h"
#include "algebra/kernels/kernels.h"
#include "algebra/kernels/lapack.h"
#include "algebra/linalg_internal.h"
#include "arklib/arith.h"
#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/constructors.h"
#include "arklib/linalg.h"
#include "arklib/sparse.h"
#include "arklib/subscript.h"

using ak_internal::dense_copy;
using ak_internal::dense_zeros;

namespace ak_internal {
bool sparse_lu(const Mm& a, Mm& L, Mm& U, Mm& P);
}

namespace {

// Zeros below diagonal k + 1 ... : keeps the part of a full matrix on and above the diagonal.
void keep_upper(Mm& a) {
    const int m = a.rows(), n = a.cols();
    for (int j = 0; j < n; ++j)
        for (int i = j + 1; i < m; ++i) {
            a.addr()[static_cast<long>(j) * m + i] = 0.0;
            if (a.pi) a.addi()[static_cast<long>(j) * m + i] = 0.0;
        }
}

// The inverse (job 1) or the determinant (job 10) of a full square matrix.
Mm lu_inverse_or_det(const Mm& a, int job) {
    const int n = a.rows();
    if (n == 0) return nop_M;
    const int complex = a.pi != nullptr;
    Mm c = dense_copy(a, complex);
    std::vector<int> ipvt(static_cast<std::size_t>(n));
    std::vector<double> work(static_cast<std::size_t>(n) * 256);
    int info = 0;
    if (complex) {
        ak_kernels::zgefa(c.addr(), c.addi(), n, n, ipvt.data(), &info);
        double detr[2], deti[2];
        ak_kernels::zgedi(c.addr(), c.addi(), n, n, ipvt.data(), detr, deti, work.data(), work.data() + n, job);
        if (job == 1) return c;
        double pr, pi_;
        ak_internal::c_pow(10.0, 0.0, detr[1], deti[1], pr, pi_);
        Mm d(1, 0, 0, 1, 1, ak_double);
        ak_internal::c_mul(detr[0], deti[0], pr, pi_, d.addr()[0], d.addi()[0]);
        d.getreal(0);
        return d;
    }
    dgetrf_(&n, &n, c.addr(), &n, ipvt.data(), &info);
    if (job == 10) {
        double d = 1.0, s = 1.0;
        for (int i = 0; i < n; ++i) {
            d *= c.addr()[static_cast<long>(i) * n + i];
            if (ipvt[i] != i + 1) s = -s;
        }
        return Mm(s * d);
    }
    int lwork = static_cast<int>(work.size());
    dgetri_(&n, c.addr(), &n, ipvt.data(), work.data(), &lwork, &info);
    return c;
}

// Row k of a P with P * a = L * U from the one-based pivots of an elimination: row k of P * a is
// row rows[k] of a.
Mm permutation_from_pivots(const std::vector<int>& ipvt, int n) {
    std::vector<int> rows(static_cast<std::size_t>(n));
    for (int k = 0; k < n; ++k) rows[k] = k;
    for (int k = 0; k < n; ++k) std::swap(rows[k], rows[ipvt[k] - 1]);
    Mm p = dense_zeros(0, n, n);
    for (int k = 0; k < n; ++k) p.addr()[static_cast<long>(rows[k]) * n + k] = 1.0;
    return p;
}

// [L, U, P] of a full matrix, L row-permuted (L * U = a) when P is null.
Mm lu_full(const Mm& a, Mm& U, Mm* P) {
    const int n = a.rows();
    const int complex = a.pi != nullptr;
    Mm c = dense_copy(a, complex);
    std::vector<int> ipvt(static_cast<std::size_t>(n));
    int info = 0;
    if (complex)
        ak_kernels::zgefa(c.addr(), c.addi(), n, n, ipvt.data(), &info);
    else
        dgetrf_(&n, &n, c.addr(), &n, ipvt.data(), &info);
    U = dense_copy(c, complex);
    keep_upper(U);
    // The unit lower factor in pivot order: LINPACK keeps negated multipliers.
    Mm L = dense_zeros(complex, n, n);
    const double sign = complex ? -1.0 : 1.0;
    for (int j = 0; j < n; ++j) {
        long o = static_cast<long>(j) * n;
        L.addr()[o + j] = 1.0;
        for (int i = j + 1; i < n; ++i) {
            L.addr()[o + i] = sign * c.addr()[o + i];
            if (complex) L.addi()[o + i] = sign * c.addi()[o + i];
        }
    }
    // The multipliers of the elimination kernels are not exchanged by later pivots; those of
    // LAPACK are. Bring both to the LAPACK form first.
    if (complex)
        for (int k = 0; k < n; ++k) {
            int l = ipvt[k] - 1;
            if (l == k) continue;
            for (int j = 0; j < k; ++j) {
                long o = static_cast<long>(j) * n;
                std::swap(L.addr()[o + k], L.addr()[o + l]);
                std::swap(L.addi()[o + k], L.addi()[o + l]);
            }
        }
    Mm perm = permutation_from_pivots(ipvt, n);
    if (P) {
        *P = perm;
        return L;
    }
    // Row k of the lower factor is row rows[k] of the row-permuted one.
    Mm Lp = dense_zeros(complex, n, n);
    std::vector<int> rows(static_cast<std::size_t>(n));
    for (int k = 0; k < n; ++k) rows[k] = k;
    for (int k = 0; k < n; ++k) std::swap(rows[k], rows[ipvt[k] - 1]);
    for (int j = 0; j < n; ++j)
        for (int k = 0; k < n; ++k) {
            long from = static_cast<long>(j) * n + k, to = static_cast<long>(j) * n + rows[k];
            Lp.addr()[to] = L.addr()[from];
            if (complex) Lp.addi()[to] = L.addi()[from];
        }
    return Lp;
}

// The lower factor and P for the full and sparse forms; P null asks for the row-permuted L.
Mm lu_factors(const Mm& a, Mm& U, Mm* P) {
    if (error_square(a, "lu")) {
        U = x_M;
        if (P) *P = x_M;
        return x_M;
    }
    if (a.size() == 0) {
        U = nop_M;
        if (P) *P = nop_M;
        return nop_M;
    }
    if (!a.flags.sparse) return lu_full(a, U, P);
    if (a.pi) {
        error("lu: Complex sparse not supported.");
        U = x_M;
        if (P) *P = x_M;
        return x_M;
    }
    Mm L, perm;
    ak_internal::sparse_lu(a, L, U, perm);
    if (P) {
        *P = perm;
        return L;
    }
    return mtimes(ctranspose(perm), L);
}

// R'R = a from the upper triangle of a full square matrix; info as from the kernel.
Mm cholesky(const Mm& a, int& info) {
    const int n = a.rows();
    const int complex = a.pi != nullptr;
    Mm r = dense_copy(a, complex);
    keep_upper(r);
    if (complex)
        ak_kernels::zpofa(r.addr(), r.addi(), n, n, &info);
    else
        ak_kernels::dpofa(r.addr(), n, n, &info);
    return r;
}

}  // namespace

Mm inv(const Mm& a) {
    if (error_numeric(a, "inv") || error_square(a, "inv")) return x_M;
    const int n = a.rows();
    if (n == 0) return nop_M;
    if (a.flags.sparse) return sparse(mldivide(a, eye(Mm(n))));
    if (n == 1) {
        Mm f = dense_copy(a, a.pi != nullptr);
        if (!f.pi) return Mm(1.0 / f.addr()[0]);
        Mm r(1, 0, 0, 1, 1, ak_double);
        ak_internal::c_div(1.0, 0.0, f.addr()[0], f.addi()[0], r.addr()[0], r.addi()[0]);
        return r;
    }
    return lu_inverse_or_det(a, 1);
}

Mm det(const Mm& a) {
    if (error_numeric(a, "det")) return x_M;
    if (a.size() == 0) return one_M;
    if (error_square(a, "det")) return x_M;
    Mm d;
    if (a.flags.sparse) {
        Mm U, P;
        Mm L = lu(a, i_o, U, P);
        d = full(times(prod(diag(L)), prod(diag(U))));
    } else {
        d = lu_inverse_or_det(a, 10);
    }
    return isint(a) == 1 ? round(d) : d;
}

Mm rcond(const Mm& a) {
    if (error_numeric(a, "rcond") || error_square(a, "rcond")) return x_M;
    const int n = a.rows();
    if (n == 0) return nop_M;
    const int complex = a.pi != nullptr;
    Mm c = dense_copy(a, complex);
    std::vector<int> ipvt(static_cast<std::size_t>(n));
    std::vector<double> z(2 * static_cast<std::size_t>(n));
    double rc = 0.0;
    if (complex)
        ak_kernels::zgeco(c.addr(), c.addi(), n, n, ipvt.data(), &rc, z.data(), z.data() + n);
    else
        ak_kernels::dgeco(c.addr(), n, n, ipvt.data(), &rc, z.data());
    return Mm(rc);
}

Mm lu(const Mm& a) {
    if (error_numeric(a, "lu") || error_square(a, "lu")) return x_M;
    const int n = a.rows();
    if (n == 0) return nop_M;
    const int complex = a.pi != nullptr;
    Mm c = dense_copy(a, complex);
    std::vector<int> ipvt(static_cast<std::size_t>(n));
    int info = 0;
    if (complex)
        ak_kernels::zgefa(c.addr(), c.addi(), n, n, ipvt.data(), &info);
    else
        ak_kernels::dgefa(c.addr(), n, n, ipvt.data(), &info);
    return c;
}

Mm lu(const Mm& a, i_o_t, Mm& U) { return lu_factors(a, U, nullptr); }
Mm lu(const Mm& a, i_o_t, Mm& U, Mm& P) { return lu_factors(a, U, &P); }
Mm lu_L(const Mm& a) {
    Mm U;
    return lu(a, i_o, U);
}
Mm lu_U(const Mm& a) {
    Mm U;
    lu(a, i_o, U);
    return U;
}

Mm chol(const Mm& a) {
    if (error_numeric(a, "chol") || error_square(a, "chol")) return x_M;
    if (a.size() == 0) return nop_M;
    int info = 0;
    Mm r = cholesky(a, info);
    if (info != 0) {
        error("%s: %s matrix not positive definite", "chol", display_name(a));
        return x_M;
    }
    return r;
}

Mm chol(const Mm& a, i_o_t, Mm& p) {
    if (error_numeric(a, "chol") || error_square(a, "chol")) {
        p = x_M;
        return x_M;
    }
    if (a.size() == 0) {
        p = Mm(0.0);
        return nop_M;
    }
    const int n = a.rows();
    int info = 0;
    Mm r = cholesky(a, info);
    if (info == 0) {
        p = Mm(0.0);
        return r;
    }
    Mm f = full(a);
    for (int k = n - 1; k >= 1; --k) {
        Mm lead = f(colon(1.0, k), colon(1.0, k));
        r = cholesky(lead, info);
        if (info == 0) {
            p = Mm(k + 1.0);
            return r;
        }
    }
    p = Mm(1.0);
    return nop_M;
}

namespace {
Mm report_inputs(const char* name, int n) {
    error_input(name, n);
    return x_M;
}
}  // namespace

Mm inv() { return report_inputs("inv", 0); }
Mm det() { return report_inputs("det", 0); }
Mm rcond() { return report_inputs("rcond", 0); }
Mm lu() { return report_inputs("lu", 0); }
Mm chol() { return report_inputs("chol", 0); }

AK_BUILTIN("inv", AK_FN(inv, const Mm&), AK_FN(inv));
AK_BUILTIN("det", AK_FN(det, const Mm&), AK_FN(det));
AK_BUILTIN("rcond", AK_FN(rcond, const Mm&), AK_FN(rcond));
AK_BUILTIN("lu", AK_FN(lu, const Mm&), AK_FN(lu, const Mm&, i_o_t, Mm&), AK_FN(lu, const Mm&, i_o_t, Mm&, Mm&),
           AK_FN(lu));
AK_BUILTIN("lu_L", lu_L);
AK_BUILTIN("lu_U", lu_U);
AK_BUILTIN("chol", AK_FN(chol, const Mm&), AK_FN(chol, const Mm&, i_o_t, Mm&), AK_FN(chol));
