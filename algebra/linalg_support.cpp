// Helpers shared by the solvers and factorisations: working copies and sparse results.
#include <cmath>
#include <cstring>

#include "algebra/linalg_internal.h"
#include "algebra/sparse_internal.h"
#include "arklib/cells.h"
#include "arklib/sparse.h"

namespace ak_internal {

Mm dense_zeros(int complex, int rows, int cols) {
    Mm z(complex, 0, 0, rows, cols, ak_double);
    std::size_t n = static_cast<std::size_t>(z.nnz);
    if (n) {
        std::memset(z.pr, 0, n * sizeof(double));
        if (z.pi) std::memset(z.pi, 0, n * sizeof(double));
    }
    return z;
}

Mm dense_copy(const Mm& a, int complex) {
    Mm f = a.flags.type == ak_double ? full(a) : mdouble(a);
    Mm c(complex, 0, 0, f.rows(), f.cols(), ak_double);
    std::size_t n = static_cast<std::size_t>(c.nnz);
    if (n == 0) return c;
    std::memcpy(c.pr, f.pr, n * sizeof(double));
    if (c.pi) {
        if (f.pi)
            std::memcpy(c.pi, f.pi, n * sizeof(double));
        else
            std::memset(c.pi, 0, n * sizeof(double));
    }
    return c;
}

Mm sparse_from_columns(int rows, int cols, const int* jc, const int* ir, const double* vr, const double* vi,
                       bool drop_zeros) {
    int count = 0;
    for (int k = 0; k < jc[cols]; ++k)
        if (!drop_zeros || is_nonzero(vr, vi, k)) ++count;
    Mm s = sparse_of_shape(vi != nullptr, count, rows, cols);
    if (s.rows() != rows || s.cols() != cols) return s;  // reported
    double* sr = s.addr();
    double* si = s.addi();
    int* index = s.index;
    int e = 0;
    for (int c = 0; c < cols; ++c)
        for (int k = jc[c]; k < jc[c + 1]; ++k) {
            if (drop_zeros && !is_nonzero(vr, vi, k)) continue;
            sr[e] = vr[k];
            if (si) si[e] = vi[k];
            index[e] = c * rows + ir[k];
            ++e;
        }
    return s;
}

double asymmetry(const Mm& a) {
    const int n = a.rows();
    const double* re = a.addr();
    const double* im = a.addi();
    double t = 0.0;
    bool any = false;
    for (int j = 0; j < n; ++j)
        for (int i = j; i < n; ++i) {
            long ij = static_cast<long>(j) * n + i, ji = static_cast<long>(i) * n + j;
            double dr = re[ij] - re[ji], di = im ? im[ij] + im[ji] : 0.0;
            double d = di == 0.0 ? std::fabs(dr) : std::hypot(dr, di);
            if (std::isnan(d)) continue;
            any = true;
            if (d > t) t = d;
        }
    return any || n == 0 ? t : NAN;
}

}  // namespace ak_internal
