// Sorting: sort along a dimension and sortrows, with the two sorters behind them.
#pragma once
#include "arklib/matrix.h"

// The value sorter: each column of the real matrix x, ascending, into y, with NaN after everything
// (Inf included). y has x's row count and as many columns as fit the element count.
void sort_engine(const Mm& x, Mm& y);
// The indexed sorter: each column of x, real or complex, into y, with the row numbers in i. Ties
// keep their order. A complex column is ordered by modulus, then by phase angle. Returns y.
Mm sort_engine(Mm& x, Mm& y, Mm& i);

// Ascending along the first dimension (along the length of a row vector). A cell array of strings
// is sorted with sortrows.
Mm sort(const Mm& x);
Mm sort(const Mm& x, i_o_t, Mm& y, Mm& i);
// Along dimension dim (0: the first non-singleton one).
Mm sort(const Mm& x, const Mm& dim);
Mm sort(const Mm& x, const Mm& dim, i_o_t, Mm& y, Mm& i);

// Rows in ascending order by the columns listed in cols, the first listed being the main key; by
// all columns left to right when cols is not given.
Mm sortrows(const Mm& x);
Mm sortrows(const Mm& x, i_o_t, Mm& y, Mm& i);
Mm sortrows(const Mm& x, const Mm& cols);
Mm sortrows(const Mm& x, const Mm& cols, i_o_t, Mm& y, Mm& i);

namespace ak_internal {

// Sorts n doubles ascending in place; none may be NaN.
void sort_column(double* a, int n);

// Orders the rows 0..n-1 (into order[0..n-1]) by key, then, for equal keys, by row number and the
// second key (which may be null). A shell sort with gaps ..., 40, 13, 4, 1: the stopping rule of
// its insertion steps defines the order of ties. Real keys without NaN have one such order, which
// a faster stable method gives directly.
void index_sort(const double* key, const double* second, int n, int* order);

}  // namespace ak_internal
