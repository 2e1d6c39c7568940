// Concatenation: cat, horzcat, vertcat.
#include <cmath>
#include <climits>
#include <cstring>
#include <vector>

#include "algebra/sparse_walk.h"
#include "arklib/cells.h"
#include "arklib/list.h"
#include "arklib/sparse.h"
#include "arklib/builtins.h"

namespace {

// Copies n elements of src from position from to dst at position to, converting nothing: both
// have the same type. A real source in a complex destination gets a zero imaginary part.
void copy_elements(Mm& dst, long long to, const Mm& src, long long from, long long n) {
    if (n <= 0) return;
    if (dst.flags.type == ak_mm) {
        Mm* d = static_cast<Mm*>(dst.pr) + to;
        const Mm* s = static_cast<const Mm*>(src.pr) + from;
        for (long long k = 0; k < n; ++k) d[k] = s[k];
        return;
    }
    std::size_t width = dst.flags.type == ak_uchar ? 1 : 8;
    std::memcpy(static_cast<char*>(dst.pr) + to * width, static_cast<const char*>(src.pr) + from * width, n * width);
    if (!dst.pi) return;
    char* di = static_cast<char*>(dst.pi) + to * width;
    if (src.pi)
        std::memcpy(di, static_cast<const char*>(src.pi) + from * width, n * width);
    else
        std::memset(di, 0, n * width);
}

void finish_flags(Mm& r, const Mm& a, const Mm& b) {
    r.flags.str = a.flags.str || b.flags.str;
    r.flags.logical = a.flags.logical && b.flags.logical;
}

// The position of each entry of a sparse part in the joined matrix of `rows` rows, shifted by
// (row_off, col_off); ascending, as the part's own positions are.
std::vector<int> joined_positions(const Mm& part, int rows, int row_off, int col_off) {
    std::vector<int> out(static_cast<std::size_t>(part.nnz));
    ak_internal::column_cursor at(part.dims[0]);
    for (int k = 0; k < part.nnz; ++k) {
        int row = at.row(part.index[k]);
        out[k] = static_cast<int>((static_cast<long long>(at.col) + col_off) * rows + row + row_off);
    }
    return out;
}

// Joins two sparse matrices: the entries of both, placed in the new shape, merged in position order.
Mm join_sparse(const Mm& a, const Mm& b, bool horizontal) {
    int complex = a.pi || b.pi;
    const long long wide_rows = horizontal ? a.dims[0] : 0LL + a.dims[0] + b.dims[0];
    const long long wide_cols = horizontal ? 0LL + a.dims[1] + b.dims[1] : a.dims[1];
    if (wide_rows * wide_cols > INT_MAX) {  // positions of the result would not fit an int
        error("Out of memory!");
        return x_M;
    }
    const int rows = static_cast<int>(wide_rows), cols = static_cast<int>(wide_cols);
    Mm r(complex, 1, a.nnz + b.nnz, rows, cols, ak_double);
    std::vector<int> pa = joined_positions(a, rows, 0, 0);
    std::vector<int> pb = joined_positions(b, rows, horizontal ? 0 : a.dims[0], horizontal ? a.dims[1] : 0);
    auto put = [&](int n, const Mm& part, int k, int pos) {
        r.index[n] = pos;
        r.addr()[n] = part.addr()[k];
        if (complex) r.addi()[n] = part.pi ? part.addi()[k] : 0.0;
    };
    int i = 0, j = 0;
    for (int n = 0; n < r.nnz; ++n) {
        if (j >= b.nnz || (i < a.nnz && pa[i] < pb[j])) {
            put(n, a, i, pa[i]);
            ++i;
        } else {
            put(n, b, j, pb[j]);
            ++j;
        }
    }
    return r;
}

Mm cat_2d(int dim, const Mm& a0, const Mm& b0) {
    if (a0.flags.type == ak_no_type || b0.flags.type == ak_no_type) return nop_M;
    bool horizontal = dim == 2;
    if (b0.size() == 0) return a0;
    if (a0.size() == 0) return b0;
    if (horizontal && a0.dims[0] != b0.dims[0]) {
        error("horzcat: # of rows different");
        return x_M;
    }
    if (!horizontal && a0.dims[1] != b0.dims[1]) {
        error("vertcat: # of cols different");
        return x_M;
    }
    if (a0.flags.sparse || b0.flags.sparse) {
        Mm r = join_sparse(sparse(a0), sparse(b0), horizontal);
        finish_flags(r, a0, b0);
        return r;
    }
    const Mm &a = a0, &b = b0;
    int rows = horizontal ? a.dims[0] : a.dims[0] + b.dims[0];
    int cols = horizontal ? a.dims[1] + b.dims[1] : a.dims[1];
    Mm r(a.pi || b.pi, 0, 0, rows, cols, a.flags.type);
    for (int k = 0; k < a.nfields; ++k) r.addfield(a.fields[k], 1);
    if (horizontal) {
        copy_elements(r, 0, a, 0, a.nnz);
        copy_elements(r, a.nnz, b, 0, b.nnz);
    } else {
        for (int c = 0; c < cols; ++c) {
            copy_elements(r, static_cast<long long>(c) * rows, a, static_cast<long long>(c) * a.dims[0], a.dims[0]);
            copy_elements(r, static_cast<long long>(c) * rows + a.dims[0], b, static_cast<long long>(c) * b.dims[0],
                          b.dims[0]);
        }
    }
    finish_flags(r, a, b);
    return r;
}

Mm cat_general(double dimv, const Mm& a0, const Mm& b0) {
    if (a0.flags.type == ak_no_type || b0.flags.type == ak_no_type) return x_M;
    Mm a = full(a0), b = full(b0);
    if (b.size() == 0) return a;
    if (a.size() == 0) return b;
    if (a.ndims != b.ndims) {
        error("cat: arguments do not have the same number of dimensions");
        return x_M;
    }
    int d = std::isnan(dimv) ? 0 : static_cast<int>(dimv > 1e9 ? 1e9 : (dimv < -1e9 ? -1e9 : dimv));
    if (d >= 5 || d < 1) {
        error("cat: no such dimension");
        return x_M;
    }
    int nd = d > a.ndims ? d : a.ndims;
    int dims[4];
    for (int k = 0; k < 4; ++k) {
        if (k != d - 1 && a.dims[k] != b.dims[k]) {
            error("cat: arguments do not have compatible dimensions");
            return x_M;
        }
        dims[k] = k == d - 1 ? a.dims[k] + b.dims[k] : a.dims[k];
    }
    Mm r(a.pi || b.pi, 0, 0, nd, dims, a.flags.type);
    for (int k = 0; k < a.nfields; ++k) r.addfield(a.fields[k], 1);
    long long block_a = 1, block_b = 1, outer = 1;
    for (int k = 0; k < 4; ++k) {
        if (k < d) {
            block_a *= a.dims[k];
            block_b *= b.dims[k];
        } else {
            outer *= a.dims[k];
        }
    }
    long long to = 0;
    for (long long o = 0; o < outer; ++o) {
        copy_elements(r, to, a, o * block_a, block_a);
        to += block_a;
        copy_elements(r, to, b, o * block_b, block_b);
        to += block_b;
    }
    finish_flags(r, a, b);
    return r;
}

}  // namespace

Mm cat(const Mm&) { return x_M; }

Mm cat(const Mm&, const Mm& a) { return a; }

Mm cat(const Mm& dim, const Mm& a0, const Mm& b0) {
    a0.warn_uninit();
    b0.warn_uninit();
    Mm a = a0, b = b0;
    if (a.flags.type != b.flags.type && a.flags.type != ak_no_type && b.flags.type != ak_no_type) {
        if (a.flags.type == ak_mm || b.flags.type == ak_mm) {
            error("Operation can not be performed on mixed cell and numeric matrix");
            return x_M;
        }
        if (a.flags.type == ak_uchar) b = muint8(b);
        if (b.flags.type == ak_uchar && a.flags.type != ak_uchar) a = muint8(a);
    }
    double d = (dim.nnz > 0 && dim.flags.type == ak_double) ? dim.addr()[0] : 1.0;
    if (d <= 2 && a.ndims == 2 && b.ndims == 2) return cat_2d(d == 2 ? 2 : 1, a, b);
    return cat_general(d, a, b);
}

Mm cat(const Mm& dim, const Mm& a, const Mm& b, const Mm& c) { return cat(dim, cat(dim, a, b), c); }

Mm horzcat(const Mm& a) { return a; }
Mm horzcat(const Mm& a, const Mm& b) { return cat(Mm(2.0), a, b); }
Mm vertcat(const Mm& a) { return a; }
Mm vertcat(const Mm& a, const Mm& b) { return cat(Mm(1.0), a, b); }

// ---- rows of the table of functions by name ----------------------------------------------------
AK_BUILTIN("cat", AK_FN(cat, const Mm&), AK_FN(cat, const Mm&, const Mm&),
           AK_FN(cat, const Mm&, const Mm&, const Mm&),
           AK_FN(cat, const Mm&, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("horzcat", AK_FN(horzcat, const Mm&), AK_FN(horzcat, const Mm&, const Mm&));
AK_BUILTIN("vertcat", AK_FN(vertcat, const Mm&), AK_FN(vertcat, const Mm&, const Mm&));
