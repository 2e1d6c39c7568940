// Sparse matrices. A sparse matrix is an Mm with the sparse flag and an index array: a list of
// (zero-based column-major position, value) entries, ascending by position. Compressed-column lists
// are built on demand by getIr and getJc for code that needs them (sparse solvers, mex files).
#pragma once
#include "arklib/matrix.h"

// ---- compressed columns ------------------------------------------------------------------------------
// The zero-based row of each entry: nnz + 1 ints from malloc (a block of 8 bytes when there are no
// entries). Free with freeIrJc.
int* getIr(const Mm& m);
// The zero-based start of each column's entries: cols + 2 ints from malloc, the entry count at index
// cols. An empty column starts where the next one does. Free with freeIrJc.
int* getJc(const Mm& m);
// Fills the positions of m from the two lists: the entries of column c are jc[c] .. jc[c+1]-1.
void setIrJc(Mm& m, int* ir, int* jc);
void freeIrJc(int* ir, int* jc);

// ---- conversions -------------------------------------------------------------------------------------
// A full matrix of the same shape; a full input is returned as it is. 10^8 elements or more are
// refused with "full: matrix too large".
Mm full(const Mm& a);
// The elements that are not exactly zero (NaN is kept); a sparse input is returned as it is.
Mm sparse(const Mm& a);
// An m x n sparse matrix without entries.
Mm sparse(const Mm& m, const Mm& n);
// Entries v at rows i and columns j; repeated positions are added up. A scalar among i, j, v is
// used for every entry. The size is max(i) x max(j) unless m and n are given. Indices are rounded
// to nearest.
Mm sparse(const Mm& i, const Mm& j, const Mm& v);
Mm sparse(const Mm& i, const Mm& j, const Mm& v, const Mm& m, const Mm& n);
Mm sparse(const Mm& i, const Mm& j, const Mm& v, const Mm& m, const Mm& n, const Mm& nzmax);
Mm sparse(const Mm& a, const Mm& b, const Mm& c, const Mm& d);  // reports too few inputs

// ---- counts and entries ------------------------------------------------------------------------------
// Elements that are not exactly zero (NaN counts; a complex element counts if either half is not 0).
Mm nnz(const Mm& a);
// Storage of a matrix: the element count when full, the entry count + 1 when sparse.
Mm nzmax(const Mm& a);
// The values of find as a column.
Mm nonzeros(const Mm& a);
// One-based column-major positions of the non-zero elements: a row for a row vector, otherwise a
// column. [i, j] = find(a) gives rows and columns, [i, j, v] = find(a) also the values.
Mm find(const Mm& a);
Mm find(const Mm& a, i_o_t, Mm& j);
Mm find(const Mm& a, i_o_t, Mm& j, Mm& v);

// The coordinate list [i j v] (complex: [i j real(v) imag(v)]) with a last row [rows cols 0] that
// records the size; spconvert builds the sparse matrix back from it.
Mm sp2coo(const Mm& a);
Mm spconvert(const Mm& d);

// ---- constructors --------------------------------------------------------------------------------------
// Sparse identity: sizes as for eye, ones on the diagonal.
Mm speye();
Mm speye(const Mm& x);
Mm speye(const Mm& m, const Mm& n);
// A sparse matrix without entries; an empty argument gives 0x0.
Mm spzeros(const Mm& x);
Mm spzeros(const Mm& m, const Mm& n);
// A copy with every stored value 1.
Mm spones(const Mm& s);
// An m x n sparse matrix with nzmax stored zeros, ready to be filled.
Mm spalloc(const Mm& m, const Mm& n, const Mm& nzmax);
Mm spalloc(const Mm& x);               // reports too few inputs
Mm spalloc(const Mm& x, const Mm& y);  // reports too few inputs

// ---- orderings -------------------------------------------------------------------------------------------
// The column permutation by ascending count of entries, as a row; columns of equal count keep their
// order. colmmd gives the same ordering.
Mm colperm(const Mm& s);
Mm colmmd(const Mm& s);

// ---- functions on the entries ----------------------------------------------------------------------------
// f (a function name, called through feval_func) applied to the non-zero values of s, on the same
// pattern.
Mm spfun(const Mm& f, const Mm& s);
Mm spfun(const Mm& x);  // reports too few inputs
// The pattern of s with uniform (sprand) or normal (sprandn) random values, one draw per entry in
// storage order; or an m x n matrix with about m*n*density random entries.
Mm sprand(const Mm& s);
Mm sprand(const Mm& m, const Mm& n, const Mm& density);
Mm sprandn(const Mm& s);
Mm sprandn(const Mm& m, const Mm& n, const Mm& density);
Mm sprand(const Mm& m, const Mm& n);                                   // reports the input count
Mm sprand(const Mm& m, const Mm& n, const Mm& density, const Mm& rc);  // reports the input count
Mm sprandn(const Mm& m, const Mm& n);
Mm sprandn(const Mm& m, const Mm& n, const Mm& density, const Mm& rc);
// Has no use in a compiled program: prints "sparsfun called" and returns x_M.
Mm sparsfun(const Mm& x, const Mm& y);

namespace ak_internal {

// Rows and columns (zero-based) spanned by the entries of a sparse matrix; without entries the
// smallest are 0x7FFFFFFF and the largest -1.
struct sparse_extent {
    int min_row, max_row, min_col, max_col;
};
// The walk behind getJc, without the sparse check: the column starts of m, and its extent when
// `extent` is not null. Null (after "Out of memory!") when the list cannot be allocated.
int* sparse_column_starts(const Mm& m, sparse_extent* extent);

}  // namespace ak_internal
