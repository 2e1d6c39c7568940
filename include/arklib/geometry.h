// Computational geometry on Qhull: triangulations, convex hulls, Voronoi edges, and the plane
// polygon tests and scattered-data interpolation built on them.
#pragma once
#include "arklib/matrix.h"

// The Delaunay triangles of the points (x, y) as rows of three point indices; (x, y, z) gives
// tetrahedra as rows of four.
Mm delaunay(const Mm& x, const Mm& y);
Mm delaunay(const Mm& x, const Mm& y, const Mm& z);
// The convex hull of the plane points (x, y) as point indices counter-clockwise, the first repeated
// at the end (points inside an edge left out); of (x, y, z) as rows of three per triangle. The
// second output is the area (volume in 3-D).
Mm convhull(const Mm& x, const Mm& y);
Mm convhull(const Mm& x, const Mm& y, const Mm& z);
Mm convhull(const Mm& x, const Mm& y, i_o_t, Mm& area);
// [vx, vy] = voronoi(x, y): the Voronoi edges as 2 x k coordinate matrices, one column per edge;
// the unbounded edges are cut at twice the size of the data's bounding box.
Mm voronoi(const Mm& x, const Mm& y, i_o_t, Mm& vy);
// Which query points lie inside (or on the edge of) the polygon (xv, yv); on marks those on it.
Mm inpolygon(const Mm& xq, const Mm& yq, const Mm& xv, const Mm& yv);
Mm inpolygon(const Mm& xq, const Mm& yq, const Mm& xv, const Mm& yv, i_o_t, Mm& on);
// Area of the polygon (x, y); of each column for matrices.
Mm polyarea(const Mm& x, const Mm& y);
// v(x, y) interpolated at (xq, yq) over the Delaunay triangulation: 'linear' (NaN outside the hull)
// or 'nearest'.
Mm griddata(const Mm& x, const Mm& y, const Mm& v, const Mm& xq, const Mm& yq);
Mm griddata(const Mm& x, const Mm& y, const Mm& v, const Mm& xq, const Mm& yq, const Mm& method);
