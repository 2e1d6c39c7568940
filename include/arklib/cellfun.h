// cellfun and num2cell.
//
// cellfun(f, c1, c2, ..., "UniformOutput", tf) calls the function named f (any name of the
// function table, see arklib/builtins.h) on the elements of the cells c1, c2, ... in turn, all of
// one size. With "UniformOutput" true (the default) every result must be a scalar, and the results
// form a matrix of the cells' shape; with false, a cell of that shape. The names "isempty",
// "islogical", "isreal", "isnumeric", "ischar", "iscell", "length", "ndims", "numel" and
// "prodofsize", and the forms cellfun("size", c, k) and cellfun("isclass", c, name), are done
// directly. Further outputs come from further outputs of f.
#pragma once
#include "arklib/matrix.h"

Mm cellfun(const Mm& f);
Mm cellfun(const Mm& f, const Mm& a);
Mm cellfun(const Mm& f, const Mm& a, i_o_t, Mm& o2);
Mm cellfun(const Mm& f, const Mm& a, i_o_t, Mm& o2, Mm& o3);
Mm cellfun(const Mm& f, const Mm& a, const Mm& b);
Mm cellfun(const Mm& f, const Mm& a, const Mm& b, i_o_t, Mm& o2);
Mm cellfun(const Mm& f, const Mm& a, const Mm& b, i_o_t, Mm& o2, Mm& o3);
Mm cellfun(const Mm& f, const Mm& a, const Mm& b, const Mm& c);
Mm cellfun(const Mm& f, const Mm& a, const Mm& b, const Mm& c, i_o_t, Mm& o2);
Mm cellfun(const Mm& f, const Mm& a, const Mm& b, const Mm& c, i_o_t, Mm& o2, Mm& o3);
Mm cellfun(const Mm& f, const Mm& a, const Mm& b, const Mm& c, const Mm& d);
Mm cellfun(const Mm& f, const Mm& a, const Mm& b, const Mm& c, const Mm& d, i_o_t, Mm& o2);
Mm cellfun(const Mm& f, const Mm& a, const Mm& b, const Mm& c, const Mm& d, i_o_t, Mm& o2, Mm& o3);
Mm cellfun(const Mm& f, const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e);
Mm cellfun(const Mm& f, const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e, i_o_t, Mm& o2);
Mm cellfun(const Mm& f, const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e, i_o_t, Mm& o2, Mm& o3);
// The elements of x, each in a cell of its own, in a cell of x's shape; with dim 1 (2) each
// column (row) of a two-dimensional x in a cell.
Mm num2cell(const Mm& x);
Mm num2cell(const Mm& x, const Mm& dim);
