// The matrix product through BLAS dgemm, on split real and imaginary storage; transposes; and the
// matrix power by repeated squaring.
#include <cmath>
#include <cstring>

#include "arklib/arith.h"
#include "arklib/calling.h"
#include "arklib/factor.h"
#include "arklib/cells.h"
#include "algebra/sparse_walk.h"
#include "arklib/sparse.h"
#include "core/arith_internal.h"
#include "arklib/builtins.h"

extern "C" void dgemm_(const char* transa, const char* transb, const int* m, const int* n, const int* k,
                       const double* alpha, const double* a, const int* lda, const double* b, const int* ldb,
                       const double* beta, double* c, const int* ldc, std::size_t transa_len,
                       std::size_t transb_len);

using ak_internal::element;
using ak_internal::has_pi;

namespace {

// c = alpha * a * b + beta * c for column-major a (m x k), b (k x n), c (m x n).
void gemm(int m, int n, int k, double alpha, const double* a, const double* b, double beta, double* c) {
    int lda = m > 1 ? m : 1, ldb = k > 1 ? k : 1, ldc = lda;
    dgemm_("N", "N", &m, &n, &k, &alpha, a, &lda, b, &ldb, &beta, c, &ldc, 1, 1);
}

// A full double operand of the product.
Mm as_full_double(const Mm& m) {
    Mm f = full(m);
    if (f.flags.type != ak_double) f.deepcopy(0, 0, m, ak_double);
    return f;
}

// An operand of a product with a sparse factor: sparse operands are doubles already, bytes are
// widened.
Mm as_double(const Mm& m) {
    if (m.flags.sparse || m.flags.type == ak_double) return m;
    Mm f;
    f.deepcopy(0, 0, m, ak_double);
    return f;
}

// (ar + i ai)(br + i bi) with four real products; only two when one factor is real.
Mm product(const Mm& a, const Mm& b) {
    const int m = a.dims[0], k = a.dims[1], n = b.dims[1];
    Mm c(has_pi(a, b), 0, 0, m, n, ak_double);
    if (c.nnz == 0) return c;
    if (k == 0) {
        std::memset(c.pr, 0, sizeof(double) * static_cast<std::size_t>(c.nnz));
        if (c.pi) std::memset(c.pi, 0, sizeof(double) * static_cast<std::size_t>(c.nnz));
        return c;
    }
    const double *ar = a.addr(), *ai = a.addi(), *br = b.addr(), *bi = b.addi();
    gemm(m, n, k, 1.0, ar, br, 0.0, c.addr());
    if (ai && bi) gemm(m, n, k, -1.0, ai, bi, 1.0, c.addr());
    if (bi) gemm(m, n, k, 1.0, ar, bi, 0.0, c.addi());
    if (ai) gemm(m, n, k, 1.0, ai, br, bi ? 1.0 : 0.0, c.addi());
    return c;
}

}  // namespace

Mm mtimes(const Mm& a, const Mm& b) {
    if (a.size() == 1 || b.size() == 1) return element(has_pi(a, b), a, b, op_mtimes);
    a.warn_uninit();
    b.warn_uninit();
    if (a.fields || b.fields) return call_class_function("mtimes", a, b);
    if (a.flags.type == ak_mm || b.flags.type == ak_mm) {
        error("Operation can not be performed on non-numerical datatypes");
        return x_M;
    }
    if (error_2d(a, "mtimes") || error_2d(b, "mtimes")) return x_M;
    if (a.dims[1] != b.dims[0]) {
        error("%s: incompatible dimensions of: %s, %s", "mtimes", display_name(a), display_name(b));
        return x_M;
    }
    Mm c = (a.flags.sparse || b.flags.sparse) ? ak_internal::sparse_mtimes(as_double(a), as_double(b))
                                              : product(as_full_double(a), as_full_double(b));
    // Bytes multiply modulo 256, as in the element-wise product.
    if (a.flags.type == ak_uchar || b.flags.type == ak_uchar) c.deepcopy(0, 0, c, ak_uchar);
    return c;
}

// ---- transposes ------------------------------------------------------------------------------------------

namespace {

// Blocked transpose of an m x n column-major array, so that both sides are read in cache lines.
template <class T>
void transpose_block(const T* from, T* to, int m, int n) {
    const int block = 32;
    for (int j0 = 0; j0 < n; j0 += block) {
        int j1 = j0 + block < n ? j0 + block : n;
        for (int i0 = 0; i0 < m; i0 += block) {
            int i1 = i0 + block < m ? i0 + block : m;
            for (int j = j0; j < j1; ++j)
                for (int i = i0; i < i1; ++i)
                    to[static_cast<std::size_t>(i) * n + j] = from[static_cast<std::size_t>(j) * m + i];
        }
    }
}

Mm transpose_of(const Mm& a, const char* name, bool conjugate) {
    a.warn_uninit();
    if (a.classid) return call_class_function(name, a);
    if (error_2d(a, name)) return x_M;
    if (a.flags.sparse) {
        Mm t = ak_internal::sparse_transpose(a);
        if (conjugate && t.pi)
            for (int k = 0; k < t.nnz; ++k) t.addi()[k] = -t.addi()[k];
        return t;
    }
    const int m = a.dims[0], n = a.dims[1];
    Mm t;
    t.deepcopy(a, ak_no_type);  // same type, flags and field names; elements rearranged below
    t.dims[0] = n;
    t.dims[1] = m;
    if (a.nnz == 0) return t;
    switch (a.flags.type) {
        case ak_double:
            transpose_block(a.addr(), t.addr(), m, n);
            if (a.pi) {
                transpose_block(a.addi(), t.addi(), m, n);
                if (conjugate)
                    for (int k = 0; k < t.nnz; ++k) t.addi()[k] = -t.addi()[k];
            }
            break;
        case ak_uchar:
            transpose_block(static_cast<const unsigned char*>(a.pr), static_cast<unsigned char*>(t.pr), m, n);
            break;
        case ak_mm: {
            const Mm* from = static_cast<const Mm*>(a.pr);
            Mm* to = static_cast<Mm*>(t.pr);
            for (int j = 0; j < n; ++j)
                for (int i = 0; i < m; ++i)
                    to[static_cast<std::size_t>(i) * n + j] = from[static_cast<std::size_t>(j) * m + i];
            break;
        }
        default:
            break;
    }
    return t;
}

}  // namespace

Mm transpose(const Mm& a) { return transpose_of(a, "transpose", false); }
Mm ctranspose(const Mm& a) { return transpose_of(a, "ctranspose", true); }

// ---- matrix power ----------------------------------------------------------------------------------------

namespace {

Mm identity(int n) {
    Mm e(0, 0, 0, n, n, ak_double);
    std::memset(e.pr, 0, sizeof(double) * static_cast<std::size_t>(e.nnz));
    for (int k = 0; k < n; ++k) e.addr()[static_cast<std::size_t>(k) * n + k] = 1.0;
    return e;
}

}  // namespace

Mm mpower(const Mm& a, const Mm& p) {
    a.warn_uninit();
    p.warn_uninit();
    if (a.fields || p.fields) return call_class_function("mpower", a, p);
    if (a.size() == 1 && p.size() == 1) return power(a, p);
    if (p.size() != 1) {
        if (a.size() == 1 && p.dims[0] == p.dims[1] && p.ndims == 2) return ak_matrix_power(a, p);
        error("mpower: the power of a matrix must be a scalar");
        return x_M;
    }
    if (error_square(a, "mpower")) return x_M;
    double e = (p.flags.type == ak_double && !p.pi)
                   ? *full(p).addr()
                   : (p.flags.type == ak_uchar ? *static_cast<const unsigned char*>(p.pr) : -1.0);
    if (!(e >= 0 && e == std::floor(e) && e < 2147483648.0)) return ak_matrix_power(a, p);
    unsigned long n = static_cast<unsigned long>(e);
    Mm base = a, result = identity(a.dims[0]);
    bool first = true;
    while (n) {
        if (n & 1) {
            result = first ? base : mtimes(result, base);
            first = false;
        }
        n >>= 1;
        if (n) base = mtimes(base, base);
    }
    return result;
}

// ---- rows of the table of functions by name ----------------------------------------------------
AK_BUILTIN("mtimes", AK_FN(mtimes, const Mm&, const Mm&), AK_FN(mtimes, const Mm&));
AK_BUILTIN("transpose", AK_FN(transpose, const Mm&));
AK_BUILTIN("ctranspose", AK_FN(ctranspose, const Mm&));
AK_BUILTIN("mpower", AK_FN(mpower, const Mm&, const Mm&), AK_FN(mpower, const Mm&));
