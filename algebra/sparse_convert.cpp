// Conversions between the full form and the sparse (position, value) form.
#include <cstring>

#include "arklib/sparse.h"

namespace {

bool stored(const double* re, const double* im, int k) { return re[k] != 0.0 || (im && im[k] != 0.0); }

}  // namespace

Mm full(const Mm& a) {
    if (!a.flags.sparse) return a;
    if (a.size() >= 100000000) {
        error("full: matrix too large");
        return x_M;
    }
    int complex = a.pi != nullptr;
    Mm r(complex, 0, 0, a.ndims, a.dims, ak_double);
    std::memset(r.pr, 0, sizeof(double) * r.nnz);
    if (complex) std::memset(r.pi, 0, sizeof(double) * r.nnz);
    const double* re = a.addr();
    const double* im = a.addi();
    for (int k = 0; k < a.nnz; ++k) {
        int pos = a.index[k];
        if (pos < 0 || pos >= r.nnz) continue;  // a corrupt entry must not write outside the matrix
        r.addr()[pos] = re[k];
        if (complex) r.addi()[pos] = im[k];
    }
    r.flags.logical = a.flags.logical;
    return r;
}

Mm sparse(const Mm& a) {
    if (a.flags.sparse) return a;
    a.warn_uninit();
    if (a.flags.type == ak_mm) {
        error("%s: numeric data expected, but matrix %s is not", "sparse", display_name(a));
        return x_M;
    }
    Mm d = a;
    if (d.flags.type != ak_double) d.deepcopy(d, ak_double);
    const double* re = d.addr();
    const double* im = d.addi();
    int count = 0;
    for (int k = 0; k < d.nnz; ++k) count += stored(re, im, k);
    Mm r(im != nullptr, 1, count, d.ndims, d.dims, ak_double);
    int n = 0;
    for (int k = 0; k < d.nnz && n < r.nnz; ++k) {
        if (!stored(re, im, k)) continue;
        r.index[n] = k;
        r.addr()[n] = re[k];
        if (im) r.addi()[n] = im[k];
        ++n;
    }
    r.flags.logical = a.flags.logical;
    return r;
}
