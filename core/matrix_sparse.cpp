// Bookkeeping of the sparse form: a list of (zero-based column-major position, value) entries.
#include <algorithm>
#include <cstring>

#include "arklib/matrix.h"
#include "core/matrix_internal.h"

int error_sparse(const Mm& m, const char* name) {
    if (m.flags.sparse) return 0;
    error("%s: sparse matrix expected, but matrix %s is full", name, display_name(m));
    return 1;
}

int Mm::search(int pos) const {
    if (error_sparse(*this, "::search")) return -1;
    const int* first = index;
    const int* last = index + nnz;
    const int* at = std::lower_bound(first, last, pos);
    return (at != last && *at == pos) ? static_cast<int>(at - first) : -1;
}

void Mm::sort() {
    if (error_sparse(*this, "::sort") || nnz == 0) return;
    // Entries are ordered by position and, for equal positions, by their place in the input, which
    // makes the order unique (a stable sort).
    ak_scratch<int> perm(nnz);
    if (!perm.get()) return;
    for (int k = 0; k < nnz; ++k) perm[k] = k;
    const int* idx = index;
    std::sort(perm.get(), perm.get() + nnz, [idx](int a, int b) { return idx[a] < idx[b] || (idx[a] == idx[b] && a < b); });
    std::size_t width = flags.type == ak_uchar ? 1 : 8;
    ak_scratch<char> tmp(static_cast<int>(nnz * width));
    if (!tmp.get()) return;
    auto apply = [&](void* data, std::size_t w) {
        char* d = static_cast<char*>(data);
        for (int k = 0; k < nnz; ++k) std::memcpy(tmp.get() + k * w, d + perm[k] * w, w);
        std::memcpy(d, tmp.get(), nnz * w);
    };
    apply(index, sizeof(int));
    apply(pr, width);
    if (pi) apply(pi, width);
}

void Mm::resparse() {
    if (error_sparse(*this, "::resparse")) return;
    int complex = pi != nullptr;
    Mm t(complex, 1, nnz, ndims, dims, ak_double);
    t.flags.logical = flags.logical;
    const double* re = static_cast<const double*>(pr);
    const double* im = static_cast<const double*>(pi);
    double* tre = t.addr();
    double* tim = t.addi();
    int kept = 0, last = -1;
    for (int k = 0; k < nnz; ++k) {
        if (re[k] == 0.0 && (!complex || im[k] == 0.0)) continue;
        if (kept > 0 && index[k] == last) {
            tre[kept - 1] += re[k];
            if (complex) tim[kept - 1] += im[k];
            continue;
        }
        last = index[k];
        t.index[kept] = last;
        tre[kept] = re[k];
        if (complex) tim[kept] = im[k];
        ++kept;
    }
    t.nnz = kept;
    *this = t;
}

void Mm::extend_nnz(int n) {
    if (error_sparse(*this, "::extend_nnz") || n <= nnz) return;
    int complex = pi != nullptr;
    Mm t(complex, 1, n, ndims, dims, ak_double);
    int old = nnz < t.nnz ? nnz : t.nnz;
    std::memcpy(t.pr, pr, sizeof(double) * old);
    std::memcpy(t.index, index, sizeof(int) * old);
    if (complex) std::memcpy(t.pi, pi, sizeof(double) * old);
    for (int k = old; k < t.nnz; ++k) {
        t.addr()[k] = 0.0;
        if (complex) t.addi()[k] = 0.0;
        t.index[k] = 0;
    }
    *this = t;
}
