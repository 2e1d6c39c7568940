// Interpolation in one and two dimensions, cubic splines and piecewise polynomials.
#pragma once
#include "arklib/matrix.h"

// interp1(y, xi), interp1(x, y, xi), interp1(x, y, xi, method), interp1(x, y, xi, method, extrap):
// method is 'linear' (default), 'nearest', 'previous', 'next', 'spline', 'pchip' or 'cubic' (pchip);
// extrap is 'extrap' or the value for points outside [x(1), x(end)] (NaN by default, except for
// 'spline' and 'pchip', which extrapolate). A matrix y is a set of columns over x.
Mm interp1(const Mm& y, const Mm& xi);
Mm interp1(const Mm& x, const Mm& y, const Mm& xi);
Mm interp1(const Mm& x, const Mm& y, const Mm& xi, const Mm& method);
Mm interp1(const Mm& x, const Mm& y, const Mm& xi, const Mm& method, const Mm& extrap);
// interp2(z, xi, yi), interp2(x, y, z, xi, yi), interp2(x, y, z, xi, yi, method): 'linear' or
// 'nearest' on the grid z(j, i) at (x(i), y(j)); NaN outside it.
Mm interp2(const Mm& z, const Mm& xi, const Mm& yi);
Mm interp2(const Mm& x, const Mm& y, const Mm& z, const Mm& xi, const Mm& yi);
Mm interp2(const Mm& x, const Mm& y, const Mm& z, const Mm& xi, const Mm& yi, const Mm& method);
// The not-a-knot cubic spline through (x, y) as a piecewise polynomial, or its values at xi. A y
// with two values more than x gives the end slopes first and last (the clamped spline).
Mm spline(const Mm& x, const Mm& y);
Mm spline(const Mm& x, const Mm& y, const Mm& xi);
// The shape-preserving piecewise cubic Hermite interpolant (monotone data stays monotone).
Mm pchip(const Mm& x, const Mm& y);
Mm pchip(const Mm& x, const Mm& y, const Mm& xi);
// Piecewise polynomials: a structure with form 'pp', breaks, coefs (one row per piece, highest
// power first, in powers of x - breaks(i)), pieces, order and dim.
Mm mkpp(const Mm& breaks, const Mm& coefs);
Mm ppval(const Mm& pp, const Mm& xi);
Mm unmkpp(const Mm& pp);
Mm unmkpp(const Mm& pp, i_o_t, Mm& coefs, Mm& pieces, Mm& order, Mm& dim);
