// Set operations on numeric arrays, strings, rows of matrices ('rows') and cell arrays of strings.
// Results are sorted unless 'stable' asks for the order of first appearance; a result is a row when
// the inputs are rows, a column otherwise. Each NaN counts as a value of its own.
#pragma once
#include "arklib/matrix.h"

// c = unique(a, opts...): opts are 'rows', 'stable', 'sorted', 'first' (default) and 'last'; i
// gives where each element of c was taken from and j where each element of a went, so that
// c = a(i) and a = c(j).
Mm unique(const Mm& a);
Mm unique(const Mm& a, const Mm& o1);
Mm unique(const Mm& a, const Mm& o1, const Mm& o2);
Mm unique(const Mm& a, i_o_t, Mm& i, Mm& j);
Mm unique(const Mm& a, const Mm& o1, i_o_t, Mm& i, Mm& j);
Mm unique(const Mm& a, const Mm& o1, const Mm& o2, i_o_t, Mm& i, Mm& j);
Mm unionM(const Mm& a, const Mm& b);  // union() of the language; the plain name is a C++ keyword
Mm unionM(const Mm& a, const Mm& b, const Mm& opt);
Mm unionM(const Mm& a, const Mm& b, i_o_t, Mm& ia, Mm& ib);
Mm unionM(const Mm& a, const Mm& b, const Mm& opt, i_o_t, Mm& ia, Mm& ib);
Mm intersect(const Mm& a, const Mm& b);
Mm intersect(const Mm& a, const Mm& b, const Mm& opt);
Mm intersect(const Mm& a, const Mm& b, i_o_t, Mm& ia, Mm& ib);
Mm intersect(const Mm& a, const Mm& b, const Mm& opt, i_o_t, Mm& ia, Mm& ib);
Mm setdiff(const Mm& a, const Mm& b);
Mm setdiff(const Mm& a, const Mm& b, const Mm& opt);
Mm setdiff(const Mm& a, const Mm& b, i_o_t, Mm& ia);
Mm setdiff(const Mm& a, const Mm& b, const Mm& opt, i_o_t, Mm& ia);
Mm setxor(const Mm& a, const Mm& b);
Mm setxor(const Mm& a, const Mm& b, const Mm& opt);
Mm setxor(const Mm& a, const Mm& b, i_o_t, Mm& ia, Mm& ib);
Mm setxor(const Mm& a, const Mm& b, const Mm& opt, i_o_t, Mm& ia, Mm& ib);
// tf(k) tells whether a(k) is in s; loc(k) is the lowest index of it in s, 0 when absent.
Mm ismember(const Mm& a, const Mm& s);
Mm ismember(const Mm& a, const Mm& s, const Mm& opt);
Mm ismember(const Mm& a, const Mm& s, i_o_t, Mm& loc);
Mm ismember(const Mm& a, const Mm& s, const Mm& opt, i_o_t, Mm& loc);
