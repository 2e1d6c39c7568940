// Helpers shared by the solvers and factorisations.
#pragma once
#include "arklib/matrix.h"

namespace ak_internal {

// A fresh full double matrix with the values of a (made full, bytes widened, no flags), complex when
// `complex` is set (a zero imaginary half is added to a real a).
Mm dense_copy(const Mm& a, int complex);
// A fresh rows x cols full double matrix of zeros, complex when `complex` is set.
Mm dense_zeros(int complex, int rows, int cols);
// A sparse rows x cols matrix from compressed columns: jc has cols + 1 starts, ir the zero-based rows
// (ascending within a column), and values in vr (vi when complex, else null). Exact zeros are
// dropped when drop_zeros is set.
Mm sparse_from_columns(int rows, int cols, const int* jc, const int* ir, const double* vr, const double* vi,
                       bool drop_zeros);
// The largest |a(i,j) - conj(a(j,i))| of a full square matrix, NaN differences skipped (NaN when
// every difference is NaN).
double asymmetry(const Mm& a);

}  // namespace ak_internal
