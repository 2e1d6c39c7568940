// Compressed-column lists of a sparse matrix, built on demand from its (position, value) entries:
// the row of each entry and the start of each column.
#include <climits>
#include <cstdlib>
#include <cstring>

#include "arklib/calling.h"
#include "arklib/sparse.h"

namespace {

// Rows of the column-major layout: the element count over the columns.
int rows_of(const Mm& m) {
    int cols = m.dims[1];
    if (cols <= 0) return 0;
    long long count = 1;
    for (int d = 0; d < 4; ++d) count *= m.dims[d];
    return static_cast<int>(count / cols);
}

// A list of n ints from malloc, at least 8 bytes, cleared to 0; null after "Out of memory!".
int* int_list(long long n) {
    std::size_t bytes = static_cast<std::size_t>(n > 2 ? n : 2) * sizeof(int);
    int* list = static_cast<int*>(std::calloc(1, bytes));
    if (!list) error("Out of memory!");
    return list;
}

}  // namespace

namespace ak_internal {

int* sparse_column_starts(const Mm& m, sparse_extent* extent) {
    int cols = m.dims[1] > 0 ? m.dims[1] : 0;
    int rows = rows_of(m);
    int* jc = int_list(static_cast<long long>(cols) + 2);
    sparse_extent e = {INT_MAX, -1, INT_MAX, -1};
    if (jc && cols > 0 && rows > 0 && m.nnz > 0) {
        for (int c = 0; c < cols; ++c) jc[c] = -1;
        jc[cols] = m.nnz;
        jc[cols + 1] = -1;
        // From the last entry to the first, so that each column's slot ends with its first entry.
        for (int k = m.nnz - 1; k >= 0; --k) {
            int pos = m.index[k];
            if (pos < 0) continue;
            int c = pos / rows, r = pos % rows;
            if (c >= cols) continue;  // a position outside the matrix is not listed
            jc[c] = k;
            if (r < e.min_row) e.min_row = r;
            if (r > e.max_row) e.max_row = r;
            if (c < e.min_col) e.min_col = c;
            if (c > e.max_col) e.max_col = c;
        }
        // An empty column starts where the next one does.
        for (int c = cols - 1; c >= 0; --c)
            if (jc[c] == -1) jc[c] = jc[c + 1];
    }
    if (extent) *extent = e;
    return jc;
}

}  // namespace ak_internal

int* getIr(const Mm& m) {
    int n = m.nnz > 0 ? m.nnz : 0;
    if (error_sparse(m, "getIr")) return int_list(static_cast<long long>(n) + 1);
    int* ir = int_list(static_cast<long long>(n) + 1);
    if (!ir) return nullptr;
    int rows = rows_of(m);
    for (int k = 0; k < n; ++k) {
        int pos = m.index[k];
        ir[k] = (pos >= 0 && rows > 0) ? pos % rows : 0;
    }
    return ir;
}

int* getJc(const Mm& m) {
    if (error_sparse(m, "getJc")) return int_list(static_cast<long long>(m.dims[1] > 0 ? m.dims[1] : 0) + 2);
    return ak_internal::sparse_column_starts(m, nullptr);
}

void setIrJc(Mm& m, int* ir, int* jc) {
    if (error_sparse(m, "IrJc") || !ir || !jc) return;
    int cols = m.dims[1];
    if (cols <= 0) return;
    if (m.dirty()) m.deepcopy(m, ak_no_type);  // the positions of other holders stay as they are
    int rows = rows_of(m);
    for (int c = 0; c < cols; ++c) {
        int first = jc[c] > 0 ? jc[c] : 0;
        int last = jc[c + 1] < m.nnz ? jc[c + 1] : m.nnz;
        for (int k = first; k < last; ++k) m.index[k] = ir[k] + c * rows;
    }
}

void freeIrJc(int* ir, int* jc) {
    std::free(ir);
    std::free(jc);
}
