// Descriptive statistics, histograms, vector products, and the grid builders.
#pragma once
#include "arklib/matrix.h"

// Along dim (the first non-singleton dimension when not given).
Mm mean(const Mm& x);
Mm mean(const Mm& x, const Mm& dim);
// w = 0 (or empty) normalises by n - 1, w = 1 by n.
Mm var(const Mm& x);
Mm var(const Mm& x, const Mm& w);
Mm var(const Mm& x, const Mm& w, const Mm& dim);
Mm stdM(const Mm& x);  // std() of the language; the plain name belongs to C++
Mm stdM(const Mm& x, const Mm& w);
Mm stdM(const Mm& x, const Mm& w, const Mm& dim);
// The most frequent value (the smallest of equally frequent ones) and how often it occurs.
Mm mode(const Mm& x);
Mm mode(const Mm& x, const Mm& dim);
Mm mode(const Mm& x, i_o_t, Mm& count);
Mm mode(const Mm& x, const Mm& dim, i_o_t, Mm& count);
// Covariance of the columns (observations in rows; a vector is one variable), or of two variables.
Mm cov(const Mm& x);
Mm cov(const Mm& x, const Mm& y);
Mm corrcoef(const Mm& x);
Mm corrcoef(const Mm& x, const Mm& y);
// Counts of x in [edges(k), edges(k+1)); the last bin counts x equal to edges(end). bin gives the
// bin of each element (0 outside).
Mm histc(const Mm& x, const Mm& edges);
Mm histc(const Mm& x, const Mm& edges, i_o_t, Mm& bin);
// Cross product of 3-vectors (along the first dimension of length 3), and the dot product
// sum(conj(a) .* b) along the first non-singleton dimension (or dim).
Mm cross(const Mm& a, const Mm& b);
Mm dot(const Mm& a, const Mm& b);
Mm dot(const Mm& a, const Mm& b, const Mm& dim);

// n points from a to b (100 by default), and n powers of ten from 10^a to 10^b (50 by default; a b
// of pi means up to pi itself).
Mm linspace(const Mm& a, const Mm& b);
Mm linspace(const Mm& a, const Mm& b, const Mm& n);
Mm logspace(const Mm& a, const Mm& b);
Mm logspace(const Mm& a, const Mm& b, const Mm& n);
// Coordinate arrays: meshgrid varies x along the columns and y along the rows; ndgrid varies its
// first argument along the first dimension.
Mm meshgrid(const Mm& x);
Mm meshgrid(const Mm& x, i_o_t, Mm& yy);
Mm meshgrid(const Mm& x, const Mm& y);
Mm meshgrid(const Mm& x, const Mm& y, i_o_t, Mm& yy);
Mm meshgrid(const Mm& x, const Mm& y, const Mm& z, i_o_t, Mm& yy, Mm& zz);
Mm ndgrid(const Mm& x);
Mm ndgrid(const Mm& x, i_o_t, Mm& yy);
Mm ndgrid(const Mm& x, const Mm& y, i_o_t, Mm& yy);
Mm ndgrid(const Mm& x, const Mm& y, const Mm& z, i_o_t, Mm& yy, Mm& zz);
