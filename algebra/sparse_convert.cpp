// Conversions between the full form and the sparse (position, value) form, and the helpers that the
// sparse functions share for reading arguments and shaping results.
#include <cstring>

#include "algebra/sparse_internal.h"
#include "arklib/calling.h"
#include "arklib/sparse.h"
#include "arklib/builtins.h"

namespace ak_internal {

Mm numeric_full(const Mm& x, const char* fname, bool& ok) {
    ok = false;
    if (x.flags.type == ak_no_type) {
        x.warn_uninit();
        return Mm();
    }
    if (error_numeric(x, fname)) return Mm();
    Mm f = full(x);
    if (f.flags.type != ak_double) {
        Mm d;
        d.deepcopy(f.pi != nullptr, 0, f, ak_double);
        f = d;
    }
    f.flags.str = 0;
    ok = true;
    return f;
}

Mm sparse_of_shape(int complex, int count, int rows, int cols) {
    if (rows < 0) rows = 0;
    if (cols < 0) cols = 0;
    if (static_cast<long long>(rows) * cols > INT_MAX || count > max_sparse_entries) {
        error("Out of memory!");
        return Mm(0, 1, 0, 0, 0, ak_double);
    }
    // Built as a column of `count` so that no entry is cut, then given its shape.
    Mm r(complex, 1, count < 0 ? 0 : count, count < 0 ? 0 : count, 1, ak_double);
    r.ndims = 2;
    r.dims[0] = rows;
    r.dims[1] = cols;
    r.dims[2] = r.dims[3] = rows > 0 ? 1 : 0;
    return r;
}

}  // namespace ak_internal

using namespace ak_internal;

Mm full(const Mm& a) {
    if (!a.flags.sparse) return a;
    long long count = 1;
    for (int d = 0; d < 4; ++d) count *= a.dims[d];
    if (count >= 100000000) {
        error("full: matrix too large");
        return x_M;
    }
    Mm s = a;
    if (s.flags.type != ak_double) s.deepcopy(s.pi != nullptr, 1, a, ak_double);
    int complex = s.pi != nullptr;
    Mm r(complex, 0, 0, s.ndims, s.dims, ak_double);
    std::memset(r.pr, 0, sizeof(double) * r.nnz);
    if (complex) std::memset(r.pi, 0, sizeof(double) * r.nnz);
    const double* re = s.addr();
    const double* im = s.addi();
    double* rr = r.addr();
    double* ri = r.addi();
    for (int k = 0; k < s.nnz; ++k) {
        int pos = s.index[k];
        if (pos < 0 || pos >= r.nnz) continue;  // a corrupt entry must not write outside the matrix
        rr[pos] = re[k];
        if (complex) ri[pos] = im[k];
    }
    r.flags.logical = a.flags.logical;
    return r;
}

Mm sparse(const Mm& a) {
    if (a.flags.sparse) return a;
    if (a.flags.type == ak_no_type) {
        a.warn_uninit();
        return x_M;
    }
    if (error_numeric(a, "sparse")) return x_M;
    Mm d = a;
    if (d.flags.type != ak_double) d.deepcopy(d.pi != nullptr, 0, a, ak_double);
    const double* re = d.addr();
    const double* im = d.addi();
    int count = 0;
    for (int k = 0; k < d.nnz; ++k) count += is_nonzero(re, im, k);
    Mm r(im != nullptr, 1, count, d.ndims, d.dims, ak_double);
    double* rr = r.addr();
    double* ri = r.addi();
    int n = 0;
    for (int k = 0; k < d.nnz && n < r.nnz; ++k) {
        if (!is_nonzero(re, im, k)) continue;
        r.index[n] = k;
        rr[n] = re[k];
        if (im) ri[n] = im[k];
        ++n;
    }
    r.flags.logical = a.flags.logical;
    return r;
}

// ---- rows of the table of functions by name ----------------------------------------------------
AK_BUILTIN("full", AK_FN(full, const Mm&));
