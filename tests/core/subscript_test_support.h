// Builders and readers for the subscript tests, and the column-major `mat` of the core tests.
#pragma once
#include <initializer_list>
#include <string>
#include <vector>

#include "arklib.h"
#include "tests/test_support.h"

namespace sub_test {

// A rows x cols double matrix of the values given in column-major order.
inline Mm mat(int rows, int cols, std::initializer_list<double> values) {
    Mm m(0, 0, 0, rows, cols, ak_double);
    int k = 0;
    for (double v : values) m.addr()[k++] = v;
    return m;
}

using ak_test::row;
inline Mm col(std::initializer_list<double> values) {
    return mat(static_cast<int>(values.size()), 1, values);
}

// first, first+1, ..., in an array of the given shape.
inline Mm counting(int nd, std::initializer_list<int> dims, double first = 1.0) {
    std::vector<int> d(dims);
    Mm m(0, 0, 0, nd, d.data(), ak_double);
    for (int k = 0; k < m.nnz; ++k) m.addr()[k] = first + k;
    return m;
}

inline Mm logical(Mm m) {
    m.flags.logical = 1;
    return m;
}

// A named copy, so that messages show the name.
inline Mm named(const Mm& m, const char* name) {
    Mm r(m);
    r.name = name;
    return r;
}

inline std::vector<double> values(const Mm& m) {
    std::vector<double> v;
    for (int k = 0; k < m.nnz; ++k) v.push_back(m.addr()[k]);
    return v;
}
inline std::vector<double> imag_values(const Mm& m) {
    std::vector<double> v;
    for (int k = 0; k < m.nnz && m.pi; ++k) v.push_back(m.addi()[k]);
    return v;
}
inline std::vector<int> dims(const Mm& m) { return {m.ndims, m.dims[0], m.dims[1], m.dims[2], m.dims[3]}; }
inline std::vector<int> positions(const Mm& m) { return std::vector<int>(m.index, m.index + m.nnz); }

// A 1 x n cell of the values given (sharing their storage).
inline Mm cell_of(std::initializer_list<Mm> values) {
    Mm c(0, 0, 0, 1, static_cast<int>(values.size()), ak_mm);
    int k = 0;
    for (const Mm& v : values) static_cast<Mm*>(c.pr)[k++] = v;
    return c;
}
inline const Mm& at(const Mm& c, int k) { return static_cast<const Mm*>(c.pr)[k - 1]; }

// A 1 x n structure array with the field names given; element k holds values[k] (one cell row of
// field values per element).
inline Mm structure(std::initializer_list<const char*> fields, std::initializer_list<Mm> elements) {
    Mm s(0, 0, 0, 1, static_cast<int>(elements.size()), ak_mm);
    for (const char* f : fields) s.addfield(f, 0);
    int k = 0;
    for (const Mm& e : elements) static_cast<Mm*>(s.pr)[k++] = e;
    return s;
}

}  // namespace sub_test
