// sortrows: rows ordered by a list of key columns, the last key sorted first so that the stable
// indexed sorter lets the earlier keys count first.
#include <cmath>
#include <cstdio>
#include <vector>

#include "algebra/sort_internal.h"
#include "arklib/cells.h"
#include "arklib/sort.h"
#include "arklib/builtins.h"

using namespace ak_internal;

namespace {

// The zero-based column of a key value, as a subscript reads it: one less, truncated toward zero.
// A column outside the matrix is reported as the read x(i, c) would report it; gives -1 then.
int key_column(const Mm& x, double value, int cols) {
    double t = std::trunc(value - 1.0);
    int position = std::fabs(t) < 2147483647.0 ? static_cast<int>(t) : -1;
    if (position >= 0 && position < cols) return position;
    // The column index is an unnamed scalar: its display name is its truncated value.
    char column_name[32];
    std::snprintf(column_name, sizeof column_name, "=%d",
                  std::fabs(value) < 2147483647.0 ? static_cast<int>(value) : position + 1);
    error("%s(%s,%s): col index out of matrix. Index was %d but indexed matrix has %d columns.",
          display_name(x), "(temporary)", column_name, position + 1, cols);
    return -1;
}

// Orders the rows of the full double matrix `source` by the listed zero-based columns.
void sort_rows_by(const Mm& x, const Mm& source, const std::vector<int>& keys, Mm& y, Mm& i) {
    const int rows = source.dims[0];
    const int cols = source.nnz / rows;
    const bool complex = source.pi != nullptr;
    std::vector<int> perm(rows), next(rows);
    for (int r = 0; r < rows; ++r) perm[r] = r;

    const double* sr = static_cast<const double*>(source.pr);
    const double* si = static_cast<const double*>(source.pi);
    Mm column(complex ? 1 : 0, 0, 0, rows, 1, ak_double);
    for (auto k = keys.rbegin(); k != keys.rend(); ++k) {
        const int c = *k;
        for (int r = 0; r < rows; ++r) {
            column.addr()[r] = sr[c * rows + perm[r]];
            if (complex) column.addi()[r] = si[c * rows + perm[r]];
        }
        Mm sorted, index;
        sort_lines(column, 1, rows, sorted, &index);
        if (index.nnz != rows) return;
        for (int r = 0; r < rows; ++r) next[r] = perm[static_cast<int>(index.addr()[r]) - 1];
        perm.swap(next);
    }

    Mm out(complex ? 1 : 0, 0, 0, rows, cols, ak_double);
    Mm order(0, 0, 0, rows, 1, ak_double);
    if (out.nnz != rows * cols || order.nnz != rows) return;
    for (int c = 0; c < cols; ++c) {
        for (int r = 0; r < rows; ++r) {
            out.addr()[c * rows + r] = sr[c * rows + perm[r]];
            if (complex) out.addi()[c * rows + r] = si[c * rows + perm[r]];
        }
    }
    for (int r = 0; r < rows; ++r) order.addr()[r] = perm[r] + 1;
    restore_kind(x, out);
    y = out;
    i = order;
}

// The shared body: `cols` null means every column, left to right.
Mm sortrows_body(const Mm& x, const Mm* cols, Mm& y, Mm& i) {
    if (is_cellstr(x)) {
        Mm chars = mchar(x), sorted, order;
        if (cols)
            sortrows(chars, *cols, i_o, sorted, order);
        else
            sortrows(chars, i_o, sorted, order);
        y = cellstr(sorted);
        i = order;
        return y;
    }
    if (!sortable(x, "sortrows")) return x_M;
    Mm source = full_double(x);
    if (source.nnz == 0) {
        y = x;
        i = nop_M;
        return y;
    }
    const int ncols = source.nnz / source.dims[0];
    std::vector<int> keys;
    if (cols) {
        Mm list = full_double(*cols);
        if (list.flags.type != ak_double) {
            error("sortrows: column list must be numeric");
            return x_M;
        }
        for (int k = 0; k < list.nnz; ++k) {
            int c = key_column(x, static_cast<const double*>(list.pr)[k], ncols);
            if (c < 0) return x_M;
            keys.push_back(c);
        }
    } else {
        for (int c = 0; c < ncols; ++c) keys.push_back(c);
    }
    sort_rows_by(x, source, keys, y, i);
    return y;
}

}  // namespace

Mm sortrows(const Mm& x) {
    Mm y, i;
    return sortrows_body(x, nullptr, y, i);
}

Mm sortrows(const Mm& x, i_o_t, Mm& y, Mm& i) { return sortrows_body(x, nullptr, y, i); }

Mm sortrows(const Mm& x, const Mm& cols) {
    Mm y, i;
    return sortrows_body(x, &cols, y, i);
}

Mm sortrows(const Mm& x, const Mm& cols, i_o_t, Mm& y, Mm& i) { return sortrows_body(x, &cols, y, i); }

// ---- rows of the table of functions by name ----------------------------------------------------
AK_BUILTIN("sortrows", AK_FN(sortrows, const Mm&), AK_FN_REFS(sortrows, const Mm&, i_o_t, Mm&, Mm&),
           AK_FN(sortrows, const Mm&, const Mm&),
           AK_FN_REFS(sortrows, const Mm&, const Mm&, i_o_t, Mm&, Mm&));
