// The matrix divisions: a \ b and a / b with a matrix operand, and the symmetry test that picks the
// solver. A full square system is solved by LU, or by the symmetric indefinite factorisation when a
// real matrix is symmetric; a rectangular one in the least-squares sense by QR with column
// pivoting; a sparse one through lusolve. Singular systems give what falls out, without a warning.
#include <cmath>
#include <cstring>
#include <vector>

#include "algebra/kernels/kernels.h"
#include "algebra/kernels/lapack.h"
#include "algebra/linalg_internal.h"
#include "arklib/arith.h"
#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/constructors.h"
#include "arklib/linalg.h"
#include "arklib/list.h"
#include "arklib/sparse.h"

using ak_internal::dense_copy;
using ak_internal::dense_zeros;

int ishermitian(const Mm& m) {
    if (m.flags.type != ak_double) return 0;
    if (m.rows() != m.cols() || m.ndims > 2) {
        error("ishermitian: '%s' matrix not square", display_name(m));
        return 0;
    }
    double t = ak_internal::asymmetry(m.flags.sparse ? full(m) : m);
    return 10.0 * 2.220446049250313e-16 > t;
}

namespace {

// Square full systems; x holds b on entry and the solution on return.
void solve_square(Mm& a, Mm& x, bool complex) {
    const int n = a.rows(), nrhs = x.cols();
    std::vector<int> ipiv(static_cast<std::size_t>(n));
    int info = 0;
    if (complex) {
        ak_kernels::zgefa(a.addr(), a.addi(), n, n, ipiv.data(), &info);
        for (int c = 0; c < nrhs; ++c)
            ak_kernels::zgesl(a.addr(), a.addi(), n, n, ipiv.data(), x.addr() + static_cast<long>(c) * n,
                              x.addi() + static_cast<long>(c) * n, 0);
    } else if (ishermitian(a)) {
        int lwork = n * 256;
        std::vector<double> work(static_cast<std::size_t>(lwork));
        dsytrf_("L", &n, a.addr(), &n, ipiv.data(), work.data(), &lwork, &info, 1);
        dsytrs_("L", &n, &nrhs, a.addr(), &n, ipiv.data(), x.addr(), &n, &info, 1);
    } else {
        dgetrf_(&n, &n, a.addr(), &n, ipiv.data(), &info);
        dgetrs_("N", &n, &nrhs, a.addr(), &n, ipiv.data(), x.addr(), &n, &info, 1);
    }
}

// Least squares for a full m x n a by QR with column pivoting over all columns: the coefficients of
// the first min(m, n) pivot columns, the others left zero.
Mm solve_rectangular(Mm& a, const Mm& b, bool complex) {
    const int m = a.rows(), n = a.cols(), nrhs = b.cols(), k = m < n ? m : n;
    std::vector<int> jpvt(static_cast<std::size_t>(n), 0);
    std::vector<double> qraux(2 * static_cast<std::size_t>(n)), work(2 * static_cast<std::size_t>(n));
    std::vector<double> qty(2 * static_cast<std::size_t>(m)), coef(2 * static_cast<std::size_t>(m));
    double *qr = qraux.data(), *qi = qr + n, *wr = work.data(), *wi = wr + n;
    double *tr = qty.data(), *ti = tr + m, *cr = coef.data(), *ci = cr + m;
    if (complex)
        ak_kernels::zqrdc(a.addr(), a.addi(), m, m, n, qr, qi, jpvt.data(), wr, wi, 1);
    else
        ak_kernels::dqrdc(a.addr(), m, m, n, qr, jpvt.data(), wr, 1);
    Mm x = dense_zeros(complex, n, nrhs);
    for (int c = 0; c < nrhs; ++c) {
        long off = static_cast<long>(c) * m;
        int info;
        if (complex)
            ak_kernels::zqrsl(a.addr(), a.addi(), m, m, k, qr, qi, b.addr() + off, b.addi() + off, nullptr,
                              nullptr, tr, ti, cr, ci, nullptr, nullptr, nullptr, nullptr, 100, &info);
        else
            ak_kernels::dqrsl(a.addr(), m, m, k, qr, b.addr() + off, nullptr, tr, cr, nullptr, nullptr, 100,
                              &info);
        for (int i = 0; i < k; ++i) {
            long at = static_cast<long>(c) * n + jpvt[i] - 1;
            x.addr()[at] = cr[i];
            if (complex) x.addi()[at] = ci[i];
        }
    }
    return x;
}

Mm solve_full(const Mm& a, const Mm& b, bool complex) {
    Mm ac = dense_copy(a, complex), x = dense_copy(b, complex);
    if (a.rows() == a.cols()) {
        solve_square(ac, x, complex);
        return x;
    }
    return solve_rectangular(ac, x, complex);
}

// Sparse a: square by lusolve; wide by the first m columns (a basic solution); tall by the
// augmented system [alpha I, a; a', 0] [r; x] = [b; 0], with alpha a thousandth of the largest
// element.
Mm solve_sparse(const Mm& a, const Mm& b) {
    const int m = a.rows(), n = a.cols();
    if (m == n) return lusolve(a, b, speye(Mm(n)));
    if (m < n) {
        Mm first = a(c_p, colon(1.0, m));
        Mm x = lusolve(first, b, speye(Mm(m)));
        return vertcat(x, zeros(Mm(n - m), Mm(b.cols())));
    }
    Mm alpha = max(max(abs(a))) / 1000.0;
    Mm top = horzcat(times(alpha, speye(Mm(m))), a);
    Mm bottom = horzcat(ctranspose(a), sparse(Mm(n), Mm(n)));
    Mm big = vertcat(top, bottom);
    Mm rhs = vertcat(b, zeros(Mm(n), Mm(b.cols())));
    Mm y = lusolve(big, rhs, speye(Mm(m + n)));
    return y(colon(m + 1.0, m + n), c_p);
}

}  // namespace

Mm mldivide(const Mm& a, const Mm& b) {
    if (a.fields || b.fields) return call_class_function("mldivide", a, b);
    if (error_numeric(a, "mldivide") || error_numeric(b, "mldivide")) return x_M;
    if (a.size() == 0 || b.size() == 0) return nop_M;
    if (a.size() == 1 || (b.size() == 1 && a.ndims > 2)) return rdivide(b, a);
    if (a.rows() != b.rows()) {
        error("%s: a,b does not have the same number of rows", "mldivide");
        return x_M;
    }
    if (error_2d(a, "mldivide") || error_2d(b, "mldivide")) return x_M;
    const bool complex = a.pi || b.pi;
    const bool sparse_b = b.flags.sparse;
    Mm x = a.flags.sparse ? solve_sparse(a, full(b)) : solve_full(a, full(b), complex);
    return sparse_b ? sparse(x) : x;
}

Mm invdiv(const Mm& a, const Mm& b) { return mldivide(a, b); }

// The matrix-divisor case of a / b, reached from mrdivide.
Mm ak_right_divide(const Mm& a, const Mm& b) { return ctranspose(mldivide(ctranspose(b), ctranspose(a))); }

Mm mldivide(const Mm&) {
    error_input("mldivide", 1);
    return x_M;
}
Mm mldivide() {
    error_input("mldivide", 0);
    return x_M;
}
Mm invdiv(const Mm&) {
    error_input("invdiv", 1);
    return x_M;
}
Mm invdiv() {
    error_input("invdiv", 0);
    return x_M;
}

AK_BUILTIN("mldivide", AK_FN(mldivide, const Mm&, const Mm&), AK_FN(mldivide, const Mm&), AK_FN(mldivide));
AK_BUILTIN("invdiv", AK_FN(invdiv, const Mm&, const Mm&), AK_FN(invdiv, const Mm&), AK_FN(invdiv));
