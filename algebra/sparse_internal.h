// Helpers shared by the sparse matrix functions.
#pragma once
#include <climits>

#include "arklib/matrix.h"

namespace ak_internal {

// Most entries a sparse matrix may hold: the storage of values, imaginary halves and positions must
// stay within what the allocator can be asked for.
constexpr int max_sparse_entries = (INT_MAX - 64) / 16;

// Rounds a size or an index: values above 0 give the truncation of x + 0.5, capped at INT_MAX;
// everything else (NaN included) gives 0.
inline int round_nonnegative(double x) {
    if (!(x > 0.0)) return 0;
    double r = x + 0.5;
    return r >= static_cast<double>(INT_MAX) ? INT_MAX : static_cast<int>(r);
}

// Whether element k of a double array pair is non-zero: not exactly 0 in either half (NaN counts).
inline bool is_nonzero(const double* re, const double* im, int k) {
    return re[k] != 0.0 || (im && im[k] != 0.0);
}

// The numeric value of an argument as a full ak_double matrix: a sparse one is made full, bytes are
// widened, the string flag is dropped. A cell, a structure or a matrix without value is reported
// with `fname` and gives an empty matrix; `ok` tells which happened.
Mm numeric_full(const Mm& x, const char* fname, bool& ok);

// A sparse matrix with room for `count` entries and the shape rows x cols, whatever the count (the
// plain constructor cuts the count to the element count). The entry count is `count`; entries are
// not set. Reports "Out of memory!" and gives an empty sparse matrix when rows x cols does not fit
// an int.
Mm sparse_of_shape(int complex, int count, int rows, int cols);

// The one-based position and the value of each non-zero element of a double matrix (full or sparse,
// in storage order). `values` may be null. The result is a row for a row vector, else a column.
Mm nonzero_positions(const Mm& a, Mm* values);

}  // namespace ak_internal
