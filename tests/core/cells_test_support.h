// Small builders and readers for the tests of cells, structures and classes.
#pragma once
#include <cmath>
#include <initializer_list>
#include <string>
#include <vector>

#include "arklib.h"
#include "tests/test_support.h"

namespace cells_test {

// The characters of a string matrix.
inline std::string str(const Mm& m) {
    std::string buffer(4096, '\0');
    Mstr(m, &buffer[0], static_cast<int>(buffer.size()));
    return buffer.c_str();
}

using ak_test::row;

// A 1 x n cell of the values given (sharing their storage).
inline Mm cell_row(std::initializer_list<Mm> values) {
    std::vector<const Mm*> list;
    for (const Mm& v : values) list.push_back(&v);
    Mm c = cell_from_array(static_cast<int>(list.size()), list.data());
    if (c.nnz) c.reshape(1, c.nnz);
    return c;
}

// Element k (1-based) of a cell.
inline const Mm& at(const Mm& c, int k) { return static_cast<const Mm*>(c.pr)[k - 1]; }

// Field `name` of element k (1-based) of a structure array; a missing field gives a 1x1 NaN.
inline Mm field(const Mm& s, int k, const char* name) {
    int f = s.findfield(name, 0);
    if (f < 0 || k < 1 || k > s.nnz || at(s, k).nnz <= f) return Mm(NAN);
    return at(at(s, k), f + 1);
}

inline double num(const Mm& m) { return m.nnz ? *m.addr() : -12345.0; }

}  // namespace cells_test
