// Helpers shared by the string functions: character codes in and out of matrices, and the walk
// over the elements of a cell array.
#pragma once
#include <string>
#include <vector>

#include "arklib/matrix.h"

namespace ak_strings {

// Element k (zero-based) of the real half of a full numeric matrix, as a double.
inline double code_at(const Mm& m, int k) {
    if (m.flags.type == ak_uchar) return static_cast<const unsigned char*>(m.pr)[k];
    return static_cast<const double*>(m.pr)[k];
}

// The real elements of a numeric matrix in column-major order (a sparse matrix is made full).
std::vector<double> codes_of(const Mm& m);
// The characters of a numeric matrix in column-major order, each code truncated to a byte.
std::string text_of(const Mm& m);
// A 1 x n string of the codes (0x0 when there are none), with the str flag.
Mm string_row(const std::vector<double>& codes);
Mm string_row(const std::string& text);
// The codes as a vector shaped like `like`: a column when like is a column of two rows or more,
// else a row. The str flag is `str`.
Mm vector_like(const Mm& like, const std::vector<double>& codes, int str);
// A cell of the same shape as c with f applied to each element.
Mm cell_map(const Mm& c, Mm (*f)(const Mm&));
// A logical matrix of the given shape.
Mm logical_matrix(int ndims, const int* dims);
// Elements of a cell, read-only.
inline const Mm* cell_items(const Mm& c) { return static_cast<const Mm*>(c.pr); }
// True for a 1 x n or 0x0 string (a char matrix of one row).
bool is_string_row(const Mm& m);
// True when m is a string or a cell array of strings.
bool is_text(const Mm& m);

}  // namespace ak_strings
