// Array constructors: zeros, ones, eye and their complex forms, and the size-argument reader and
// fill routine that they share with rand, randn and cell.
#pragma once
#include "arklib/matrix.h"

Mm zeros();
Mm zeros(double n);
Mm zeros(double m, double n);
Mm zeros(const Mm& x);
Mm zeros(const Mm& m, const Mm& n);
Mm zeros(const Mm& m, const Mm& n, const Mm& p);
Mm zeros(const Mm& m, const Mm& n, const Mm& p, const Mm& q);

Mm ones();
Mm ones(double n);
Mm ones(double m, double n);
Mm ones(const Mm& x);
Mm ones(const Mm& m, const Mm& n);
Mm ones(const Mm& m, const Mm& n, const Mm& p);
Mm ones(const Mm& m, const Mm& n, const Mm& p, const Mm& q);

// Identity: ones where the row equals the column, on every page of an N-d result.
Mm eye();
Mm eye(double n);
Mm eye(double m, double n);
Mm eye(const Mm& x);
Mm eye(const Mm& m, const Mm& n);
Mm eye(const Mm& m, const Mm& n, const Mm& p);
Mm eye(const Mm& m, const Mm& n, const Mm& p, const Mm& q);

// zeros and eye with a zero imaginary half when `complex` is not 0.
Mm czeros(int complex);
Mm czeros(int complex, double n);
Mm czeros(int complex, double m, double n);
Mm czeros(int complex, const Mm& x);
Mm czeros(int complex, const Mm& m, const Mm& n);
Mm czeros(int complex, const Mm& m, const Mm& n, const Mm& p);
Mm czeros(int complex, const Mm& m, const Mm& n, const Mm& p, const Mm& q);

Mm ceye(int complex);
Mm ceye(int complex, double n);
Mm ceye(int complex, double m, double n);
Mm ceye(int complex, const Mm& x);
Mm ceye(int complex, const Mm& m, const Mm& n);
Mm ceye(int complex, const Mm& m, const Mm& n, const Mm& p);
Mm ceye(int complex, const Mm& m, const Mm& n, const Mm& p, const Mm& q);

namespace ak_internal {

// Reads the size arguments of an array constructor (zeros, ones, eye, rand, randn, cell, ...).
// `args` holds `count` arguments, 1 to 4.
//   One argument: a scalar s gives s x s; a vector of 2 to 4 elements gives those sizes; anything
//   else gives the size of the argument itself (an empty argument thus gives 0x0).
//   Two to four arguments: one size each, in order. An empty argument is a size of 0; an argument
//   of more than one element reports "<fname>: size arguments must be scalars" and uses its first.
// Sizes are rounded to nearest; negative values and NaN give 0, values beyond the int range the
// largest int (which the matrix constructor then refuses with "Out of memory!"). Values of a cell
// or structure report "<fname>: size arguments must be numeric". Fills all four `dims` (1 beyond
// the count) and returns the number of dimensions, 2 to 4.
int read_size_arguments(const char* fname, int count, const Mm* const args[], int dims[4]);

inline int read_size_arguments(const char* fname, const Mm& a, int dims[4]) {
    const Mm* args[1] = {&a};
    return read_size_arguments(fname, 1, args, dims);
}
inline int read_size_arguments(const char* fname, const Mm& a, const Mm& b, int dims[4]) {
    const Mm* args[2] = {&a, &b};
    return read_size_arguments(fname, 2, args, dims);
}
inline int read_size_arguments(const char* fname, const Mm& a, const Mm& b, const Mm& c, int dims[4]) {
    const Mm* args[3] = {&a, &b, &c};
    return read_size_arguments(fname, 3, args, dims);
}
inline int read_size_arguments(const char* fname, const Mm& a, const Mm& b, const Mm& c, const Mm& d,
                               int dims[4]) {
    const Mm* args[4] = {&a, &b, &c, &d};
    return read_size_arguments(fname, 4, args, dims);
}

// What the fill routine writes into each element.
enum fill_kind { fill_zeros = 0, fill_ones = 1, fill_eye = 2, fill_rand = 3, fill_randn = 4 };

// Builds a full ak_double matrix of the given shape and fills it in storage order. The random
// kinds call the scalar generator once per element, so a matrix draw is the same as that many
// scalar draws. With `complex` set the imaginary half is zero.
Mm fill_matrix(int ndims, const int* dims, fill_kind kind, int complex = 0);

}  // namespace ak_internal
