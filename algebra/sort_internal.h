// Pieces of the sorters shared by sort and sortrows.
#pragma once
#include "arklib/matrix.h"

namespace ak_internal {

// Sorts x (full, double) along one dimension into y, with the row numbers (1-based, as doubles)
// into *index when index is not null: each line is `len` elements `stride` apart. Real lines are
// ordered with NaN taken as Inf, and get NaN back in their last places; complex lines are ordered
// by modulus, then phase angle. y and *index have the shape of x.
void sort_lines(const Mm& x, int stride, int len, Mm& y, Mm* index);

// x as a full double matrix: a sparse matrix made full, bytes widened.
Mm full_double(const Mm& x);

// Gives y, sorted from x, the string and logical flags of x, and its byte type.
void restore_kind(const Mm& x, Mm& y);

// Whether x has values that sort; reports under `name` when it has not.
bool sortable(const Mm& x, const char* name);

// A cell array of strings, which sort and sortrows handle as a character matrix.
bool is_cellstr(const Mm& x);

}  // namespace ak_internal
