// Walking the entries of a sparse matrix column by column, and the sparse operations that other
// parts of the library call directly: the transpose and the matrix product.
#pragma once
#include "arklib/matrix.h"

namespace ak_internal {

// The column and the row of entries visited in ascending position. Moving to the next column is
// an addition; only a jump over columns without entries divides.
struct column_cursor {
    int m;
    int col = -1;
    long long base, next = 0;
    explicit column_cursor(int rows) : m(rows > 0 ? rows : 1), base(-static_cast<long long>(m)) {}
    // Moves to the column of `pos` (at or after the current one) and returns the row.
    int row(int pos) {
        if (pos >= next) {
            if (pos < next + m) {
                ++col;
                base = next;
            } else {
                col = static_cast<int>(pos / m);
                base = static_cast<long long>(col) * m;
            }
            next = base + m;
        }
        return static_cast<int>(pos - base);
    }
};

// The transpose (not conjugated) of a 2-D sparse matrix, in time proportional to its entries and
// rows: a stable counting pass by row keeps the entries of each new column in order.
Mm sparse_transpose(const Mm& a);

// The matrix product when a or b is sparse, both 2-D ak_double, neither a scalar, a.cols == b.rows:
// a sparse product is sparse, a product with a full factor full. Only stored entries are
// multiplied; a NaN or infinite factor still gives NaN where the full product meets it with a zero.
Mm sparse_mtimes(const Mm& a, const Mm& b);

}  // namespace ak_internal
