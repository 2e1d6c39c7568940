// Numerical integration. f names a function (a registered one, or one the program's feval hook
// knows) that takes a vector of points and gives the vector of values.
#pragma once
#include "arklib/matrix.h"

// Adaptive Simpson rule to an absolute tolerance (1e-6 by default); count gives the evaluations.
Mm quad(const Mm& f, const Mm& a, const Mm& b);
Mm quad(const Mm& f, const Mm& a, const Mm& b, const Mm& tol);
Mm quad(const Mm& f, const Mm& a, const Mm& b, const Mm& tol, i_o_t, Mm& count);
// Adaptive Gauss-Lobatto rule with its Kronrod extension (tolerance 1e-6 by default).
Mm quadl(const Mm& f, const Mm& a, const Mm& b);
Mm quadl(const Mm& f, const Mm& a, const Mm& b, const Mm& tol);
Mm quadl(const Mm& f, const Mm& a, const Mm& b, const Mm& tol, i_o_t, Mm& count);
// Adaptive Gauss-Kronrod (7-15) quadrature; infinite limits allowed. Options 'AbsTol' (1e-10) and
// 'RelTol' (1e-6) come as name-value pairs.
Mm integral(const Mm& f, const Mm& a, const Mm& b);
Mm integral(const Mm& f, const Mm& a, const Mm& b, const Mm& n1, const Mm& v1);
Mm integral(const Mm& f, const Mm& a, const Mm& b, const Mm& n1, const Mm& v1, const Mm& n2, const Mm& v2);
// The double integral of f(x, y) (x a vector, y a scalar) over a rectangle.
Mm dblquad(const Mm& f, const Mm& xmin, const Mm& xmax, const Mm& ymin, const Mm& ymax);
Mm dblquad(const Mm& f, const Mm& xmin, const Mm& xmax, const Mm& ymin, const Mm& ymax, const Mm& tol);
// The trapezoid rule along the first non-singleton dimension (or dim), with unit spacing, a
// scalar spacing, or the points x; cumtrapz gives the running integral.
Mm trapz(const Mm& y);
Mm trapz(const Mm& x, const Mm& y);
Mm trapz(const Mm& x, const Mm& y, const Mm& dim);
Mm cumtrapz(const Mm& y);
Mm cumtrapz(const Mm& x, const Mm& y);
Mm cumtrapz(const Mm& x, const Mm& y, const Mm& dim);
