// Triangulations and hulls through Qhull's reentrant library, and the plane geometry built on them.
extern "C" {
#include <libqhull_r/qhull_ra.h>
}

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/geometry.h"

namespace {

// Coordinates of the points, all the same count, as doubles. Reports and gives false otherwise.
bool coordinates(const char* function, std::initializer_list<const Mm*> parts, std::vector<std::vector<double>>& out) {
    int n = -1;
    for (const Mm* p : parts) {
        p->warn_uninit();
        if (error_numeric(*p, function)) return false;
        Mm d = mdouble(*p);
        if (d.pi) {
            error("%s: coordinates must be real", function);
            return false;
        }
        if (n >= 0 && d.size() != n) {
            error("%s: the coordinate vectors must have the same number of elements", function);
            return false;
        }
        n = d.size();
        out.emplace_back(d.addr(), d.addr() + n);
    }
    return true;
}

// One run of Qhull over points in dim dimensions; the facets are read by visit while the run is
// alive, and everything is freed on every exit. Qhull's own complaint becomes the message.
template <class Visit>
bool run_qhull(const char* function, int dim, const std::vector<std::vector<double>>& c, const char* options, Visit visit) {
    const int n = static_cast<int>(c[0].size());
    if (n < dim + 1) {
        error("%s: at least %d points are needed", function, dim + 1);
        return false;
    }
    std::vector<coordT> points(static_cast<std::size_t>(n) * dim);
    for (int k = 0; k < n; ++k)
        for (int d = 0; d < dim; ++d) points[static_cast<std::size_t>(k) * dim + d] = c[d][k];
    char* text = nullptr;
    std::size_t text_size = 0;
    FILE* errors = open_memstream(&text, &text_size);
    qhT qh_store;
    qhT* qh = &qh_store;
    qh_zero(qh, errors);
    std::string command = std::string("qhull ") + options;
    const int code = qh_new_qhull(qh, dim, n, points.data(), False, command.data(), nullptr, errors);
    if (code == 0) visit(qh);
    qh_freeqhull(qh, !qh_ALL);
    int curlong, totlong;
    qh_memfreeshort(qh, &curlong, &totlong);
    std::fclose(errors);
    std::string message = text ? text : "";
    std::free(text);
    if (code != 0) {
        // The first line of Qhull's report says what was wrong (flat or repeated input, mostly).
        const std::size_t end = message.find('\n', message.find_first_not_of(" \n"));
        std::string first = message.substr(0, end);
        while (!first.empty() && (first.back() == '\r' || first.back() == ' ')) first.pop_back();
        error("%s: the points cannot be triangulated (%s)", function, first.empty() ? "qhull failed" : first.c_str());
        return false;
    }
    return true;
}

// The simplices of a Delaunay triangulation, 0-based point indices.
bool delaunay_simplices(const char* function, const std::vector<std::vector<double>>& c,
                        std::vector<std::vector<int>>& out) {
    const int dim = static_cast<int>(c.size());
    return run_qhull(function, dim, c, dim <= 3 ? "d Qt Qbb Qc Qz" : "d Qt Qbb Qc Qx", [&](qhT* qh) {
        facetT* facet;
        vertexT *vertex, **vertexp;
        FORALLfacets {
            if (facet->upperdelaunay) continue;
            std::vector<int> s;
            FOREACHvertex_(facet->vertices) s.push_back(qh_pointid(qh, vertex->point));
            out.push_back(s);
        }
    });
}

Mm rows_of(const std::vector<std::vector<int>>& s, int width) {
    const int n = static_cast<int>(s.size());
    Mm r(0, 0, 0, n, n ? width : 0, ak_double);
    for (int k = 0; k < n; ++k)
        for (int j = 0; j < width; ++j) r.addr()[k + j * n] = s[k][j] + 1;
    return r;
}

double cross(double ax, double ay, double bx, double by) { return ax * by - ay * bx; }

// Puts each triangle's corners counter-clockwise.
void orient(const std::vector<std::vector<double>>& c, std::vector<std::vector<int>>& tri) {
    for (auto& t : tri) {
        const double turn = cross(c[0][t[1]] - c[0][t[0]], c[1][t[1]] - c[1][t[0]], c[0][t[2]] - c[0][t[0]],
                                  c[1][t[2]] - c[1][t[0]]);
        if (turn < 0) std::swap(t[1], t[2]);
    }
}

// ---- point location in a triangulation --------------------------------------------------------------

// Triangles bucketed on a uniform grid over the data, so that finding the triangle of a point looks
// at a few candidates instead of all of them.
struct locator_t {
    const std::vector<std::vector<double>>& c;
    const std::vector<std::vector<int>>& tri;
    double x0, y0, cw, ch;
    int nx, ny;
    std::vector<std::vector<int>> cells;

    locator_t(const std::vector<std::vector<double>>& coords, const std::vector<std::vector<int>>& t) : c(coords), tri(t) {
        x0 = *std::min_element(c[0].begin(), c[0].end());
        y0 = *std::min_element(c[1].begin(), c[1].end());
        const double x1 = *std::max_element(c[0].begin(), c[0].end());
        const double y1 = *std::max_element(c[1].begin(), c[1].end());
        nx = ny = std::max(1, static_cast<int>(std::sqrt(static_cast<double>(tri.size()))));
        cw = (x1 - x0) / nx;
        ch = (y1 - y0) / ny;
        if (!(cw > 0)) cw = 1;
        if (!(ch > 0)) ch = 1;
        cells.resize(static_cast<std::size_t>(nx) * ny);
        for (int k = 0; k < static_cast<int>(tri.size()); ++k) {
            double lx = 1e308, hx = -1e308, ly = 1e308, hy = -1e308;
            for (int v : tri[k]) {
                lx = std::min(lx, c[0][v]);
                hx = std::max(hx, c[0][v]);
                ly = std::min(ly, c[1][v]);
                hy = std::max(hy, c[1][v]);
            }
            for (int i = cell_x(lx); i <= cell_x(hx); ++i)
                for (int j = cell_y(ly); j <= cell_y(hy); ++j) cells[static_cast<std::size_t>(j) * nx + i].push_back(k);
        }
    }
    int cell_x(double x) const { return std::clamp(static_cast<int>(std::floor((x - x0) / cw)), 0, nx - 1); }
    int cell_y(double y) const { return std::clamp(static_cast<int>(std::floor((y - y0) / ch)), 0, ny - 1); }

    // The triangle holding (x, y) and its barycentric weights, or -1.
    int find(double x, double y, double w[3]) const {
        if (!(x >= x0 - 1e-12 * (1 + std::fabs(x0)) && y >= y0 - 1e-12 * (1 + std::fabs(y0)))) return -1;
        const int i = cell_x(x), j = cell_y(y);
        if ((x - x0) / cw > nx + 1e-9 || (y - y0) / ch > ny + 1e-9) return -1;
        for (int k : cells[static_cast<std::size_t>(j) * nx + i]) {
            const auto& t = tri[k];
            const double ax = c[0][t[0]], ay = c[1][t[0]];
            const double bx = c[0][t[1]] - ax, by = c[1][t[1]] - ay, cx = c[0][t[2]] - ax, cy = c[1][t[2]] - ay;
            const double det = cross(bx, by, cx, cy);
            if (det == 0) continue;
            const double px = x - ax, py = y - ay;
            const double l1 = cross(px, py, cx, cy) / det, l2 = cross(bx, by, px, py) / det, l0 = 1 - l1 - l2;
            const double tol = -1e-12;
            if (l0 >= tol && l1 >= tol && l2 >= tol) {
                w[0] = l0;
                w[1] = l1;
                w[2] = l2;
                return k;
            }
        }
        return -1;
    }
};

Mm shaped_like(const Mm& m) { return Mm(0, 0, 0, m.ndims, m.dims, ak_double); }

}  // namespace

Mm delaunay(const Mm& x, const Mm& y) {
    std::vector<std::vector<double>> c;
    std::vector<std::vector<int>> tri;
    if (!coordinates("delaunay", {&x, &y}, c) || !delaunay_simplices("delaunay", c, tri)) return x_M;
    orient(c, tri);
    return rows_of(tri, 3);
}

Mm delaunay(const Mm& x, const Mm& y, const Mm& z) {
    std::vector<std::vector<double>> c;
    std::vector<std::vector<int>> tet;
    if (!coordinates("delaunay", {&x, &y, &z}, c) || !delaunay_simplices("delaunay", c, tet)) return x_M;
    return rows_of(tet, 4);
}

Mm convhull(const Mm& x, const Mm& y) {
    Mm area;
    return convhull(x, y, i_o, area);
}

Mm convhull(const Mm& x, const Mm& y, i_o_t, Mm& area) {
    std::vector<std::vector<double>> c;
    if (!coordinates("convhull", {&x, &y}, c)) return x_M;
    std::vector<int> hull;
    double volume = 0;
    const bool ok = run_qhull("convhull", 2, c, "Qt", [&](qhT* qh) {
        vertexT* vertex;
        FORALLvertices hull.push_back(qh_pointid(qh, vertex->point));
        qh_getarea(qh, qh->facet_list);
        volume = qh->totvol;
    });
    if (!ok) return x_M;
    // The vertices of a convex polygon in order of angle about a point inside it run
    // counter-clockwise; start from the lowest-numbered one, as a hull is usually read.
    double cx = 0, cy = 0;
    for (int v : hull) {
        cx += c[0][v];
        cy += c[1][v];
    }
    cx /= hull.size();
    cy /= hull.size();
    std::sort(hull.begin(), hull.end(), [&](int a, int b) {
        return std::atan2(c[1][a] - cy, c[0][a] - cx) < std::atan2(c[1][b] - cy, c[0][b] - cx);
    });
    std::rotate(hull.begin(), std::min_element(hull.begin(), hull.end()), hull.end());
    hull.push_back(hull.front());
    Mm r(0, 0, 0, static_cast<int>(hull.size()), 1, ak_double);
    for (std::size_t k = 0; k < hull.size(); ++k) r.addr()[k] = hull[k] + 1;
    area = Mm(volume);
    return r;
}

Mm convhull(const Mm& x, const Mm& y, const Mm& z) {
    std::vector<std::vector<double>> c;
    if (!coordinates("convhull", {&x, &y, &z}, c)) return x_M;
    std::vector<std::vector<int>> faces;
    const bool ok = run_qhull("convhull", 3, c, "Qt", [&](qhT* qh) {
        facetT* facet;
        vertexT *vertex, **vertexp;
        FORALLfacets {
            std::vector<int> f;
            FOREACHvertex_(facet->vertices) f.push_back(qh_pointid(qh, vertex->point));
            // Turn each face so that its corners run counter-clockwise seen from outside: the
            // normal of the corners in order must agree with the facet's outward normal.
            if (f.size() == 3) {
                double e[2][3];
                for (int j = 0; j < 2; ++j)
                    for (int d = 0; d < 3; ++d) e[j][d] = c[d][f[j + 1]] - c[d][f[0]];
                const double n[3] = {e[0][1] * e[1][2] - e[0][2] * e[1][1], e[0][2] * e[1][0] - e[0][0] * e[1][2],
                                     e[0][0] * e[1][1] - e[0][1] * e[1][0]};
                if (n[0] * facet->normal[0] + n[1] * facet->normal[1] + n[2] * facet->normal[2] < 0) std::swap(f[1], f[2]);
            }
            faces.push_back(f);
        }
    });
    return ok ? rows_of(faces, 3) : x_M;
}

Mm voronoi(const Mm& x, const Mm& y, i_o_t, Mm& vy) {
    std::vector<std::vector<double>> c;
    std::vector<std::vector<int>> tri;
    if (!coordinates("voronoi", {&x, &y}, c) || !delaunay_simplices("voronoi", c, tri)) return x_M;
    orient(c, tri);
    // Voronoi vertices are the circumcentres of the triangles; two triangles sharing an edge give
    // a finite Voronoi edge, and an edge of the hull a ray pointing away from the data.
    const int nt = static_cast<int>(tri.size());
    std::vector<std::array<double, 2>> centre(nt);
    for (int k = 0; k < nt; ++k) {
        const auto& t = tri[k];
        const double ax = c[0][t[0]], ay = c[1][t[0]];
        const double bx = c[0][t[1]] - ax, by = c[1][t[1]] - ay, cx = c[0][t[2]] - ax, cy = c[1][t[2]] - ay;
        const double d = 2 * cross(bx, by, cx, cy);
        const double b2 = bx * bx + by * by, c2 = cx * cx + cy * cy;
        centre[k] = {ax + (cy * b2 - by * c2) / d, ay + (bx * c2 - cx * b2) / d};
    }
    const double wx = *std::max_element(c[0].begin(), c[0].end()) - *std::min_element(c[0].begin(), c[0].end());
    const double wy = *std::max_element(c[1].begin(), c[1].end()) - *std::min_element(c[1].begin(), c[1].end());
    const double reach = 2 * std::hypot(wx, wy);
    std::vector<std::array<double, 4>> edges;
    std::vector<std::array<int, 3>> sides;  // (low point, high point, triangle)
    for (int k = 0; k < nt; ++k)
        for (int e = 0; e < 3; ++e) {
            const int a = tri[k][e], b = tri[k][(e + 1) % 3];
            sides.push_back({std::min(a, b), std::max(a, b), k});
        }
    std::sort(sides.begin(), sides.end());
    for (std::size_t s = 0; s < sides.size(); ++s) {
        const bool shared = s + 1 < sides.size() && sides[s][0] == sides[s + 1][0] && sides[s][1] == sides[s + 1][1];
        const auto& p = centre[sides[s][2]];
        if (shared) {
            const auto& q = centre[sides[s + 1][2]];
            edges.push_back({p[0], q[0], p[1], q[1]});
            ++s;
            continue;
        }
        // A hull edge: the ray leaves along the edge's outward normal.
        const int a = sides[s][0], b = sides[s][1];
        double nx = c[1][b] - c[1][a], ny = -(c[0][b] - c[0][a]);
        const double len = std::hypot(nx, ny);
        nx /= len;
        ny /= len;
        const auto& t = tri[sides[s][2]];
        const int other = t[0] + t[1] + t[2] - a - b;
        if (nx * (c[0][other] - c[0][a]) + ny * (c[1][other] - c[1][a]) > 0) {
            nx = -nx;
            ny = -ny;
        }
        edges.push_back({p[0], p[0] + reach * nx, p[1], p[1] + reach * ny});
    }
    const int ne = static_cast<int>(edges.size());
    Mm vx(0, 0, 0, 2, ne, ak_double);
    vy = Mm(0, 0, 0, 2, ne, ak_double);
    for (int k = 0; k < ne; ++k) {
        vx.addr()[2 * k] = edges[k][0];
        vx.addr()[2 * k + 1] = edges[k][1];
        vy.addr()[2 * k] = edges[k][2];
        vy.addr()[2 * k + 1] = edges[k][3];
    }
    return vx;
}

Mm inpolygon(const Mm& xq, const Mm& yq, const Mm& xv, const Mm& yv) {
    Mm on;
    return inpolygon(xq, yq, xv, yv, i_o, on);
}

Mm inpolygon(const Mm& xq, const Mm& yq, const Mm& xv, const Mm& yv, i_o_t, Mm& on) {
    std::vector<std::vector<double>> q, v;
    if (!coordinates("inpolygon", {&xq, &yq}, q) || !coordinates("inpolygon", {&xv, &yv}, v)) return x_M;
    Mm in = shaped_like(mdouble(xq));
    on = shaped_like(in);
    in.flags.logical = on.flags.logical = 1;
    const int nv = static_cast<int>(v[0].size());
    for (int k = 0; k < in.size(); ++k) {
        const double x = q[0][k], y = q[1][k];
        bool inside = false, edge = false;
        for (int i = 0, j = nv - 1; i < nv; j = i++) {
            const double xi = v[0][i], yi = v[1][i], xj = v[0][j], yj = v[1][j];
            // On the segment: collinear and within its box.
            const double turn = cross(xj - xi, yj - yi, x - xi, y - yi);
            const double scale = std::fabs(xj - xi) + std::fabs(yj - yi);
            if (std::fabs(turn) <= 1e-12 * scale * (scale + std::fabs(x - xi) + std::fabs(y - yi)) &&
                x >= std::min(xi, xj) && x <= std::max(xi, xj) && y >= std::min(yi, yj) && y <= std::max(yi, yj))
                edge = true;
            // Crossings of a ray to the right, counting each vertex once.
            if ((yi > y) != (yj > y) && x < xi + (y - yi) * (xj - xi) / (yj - yi)) inside = !inside;
        }
        in.addr()[k] = (inside || edge) ? 1 : 0;
        on.addr()[k] = edge ? 1 : 0;
    }
    return in;
}

Mm polyarea(const Mm& x, const Mm& y) {
    x.warn_uninit();
    if (error_numeric(x, "polyarea") || error_numeric(y, "polyarea")) return x_M;
    Mm X = mdouble(x), Y = mdouble(y);
    if (X.size() != Y.size() || X.ndims != Y.ndims || X.dims[0] != Y.dims[0]) {
        error("polyarea: x and y must have the same shape");
        return x_M;
    }
    const bool vector = X.dims[0] == 1 || X.dims[1] == 1;
    const int len = vector ? X.size() : X.dims[0], count = vector ? 1 : X.size() / std::max(1, X.dims[0]);
    Mm r(0, 0, 0, 1, count, ak_double);
    for (int p = 0; p < count; ++p) {
        const double* px = X.addr() + static_cast<std::size_t>(p) * len;
        const double* py = Y.addr() + static_cast<std::size_t>(p) * len;
        double twice = 0;
        for (int i = 0, j = len - 1; i < len; j = i++) twice += px[j] * py[i] - px[i] * py[j];
        r.addr()[p] = std::fabs(twice) / 2;
    }
    return r;
}

Mm griddata(const Mm& x, const Mm& y, const Mm& v, const Mm& xq, const Mm& yq) {
    return griddata(x, y, v, xq, yq, TM("linear"));
}

Mm griddata(const Mm& x, const Mm& y, const Mm& v, const Mm& xq, const Mm& yq, const Mm& method) {
    char word[16];
    Mstr(method, word, sizeof word);
    const bool nearest = !std::strcmp(word, "nearest");
    if (!nearest && std::strcmp(word, "linear")) {
        error("griddata: method must be 'linear' or 'nearest'");
        return x_M;
    }
    std::vector<std::vector<double>> c, q;
    if (!coordinates("griddata", {&x, &y, &v}, c) || !coordinates("griddata", {&xq, &yq}, q)) return x_M;
    std::vector<std::vector<int>> tri;
    if (!delaunay_simplices("griddata", {c[0], c[1]}, tri)) return x_M;
    const std::vector<std::vector<double>> plane = {c[0], c[1]};
    locator_t where(plane, tri);
    Mm r = shaped_like(mdouble(xq));
    for (int k = 0; k < r.size(); ++k) {
        double w[3];
        const int t = where.find(q[0][k], q[1][k], w);
        if (t < 0) {
            r.addr()[k] = std::nan("");
            if (!nearest) continue;
        }
        if (nearest) {
            // The nearest data point: among the corners of the triangle when inside, else all.
            int best = -1;
            double dist = 1e308;
            auto consider = [&](int p) {
                const double d = std::hypot(c[0][p] - q[0][k], c[1][p] - q[1][k]);
                if (d < dist) {
                    dist = d;
                    best = p;
                }
            };
            if (t >= 0)
                for (int p : tri[t]) consider(p);
            else
                for (int p = 0; p < static_cast<int>(c[0].size()); ++p) consider(p);
            r.addr()[k] = c[2][best];
            continue;
        }
        const auto& tr = tri[t];
        r.addr()[k] = w[0] * c[2][tr[0]] + w[1] * c[2][tr[1]] + w[2] * c[2][tr[2]];
    }
    return r;
}

AK_BUILTIN("delaunay", AK_FN(delaunay, const Mm&, const Mm&), AK_FN(delaunay, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("convhull", AK_FN(convhull, const Mm&, const Mm&), AK_FN(convhull, const Mm&, const Mm&, const Mm&),
           AK_FN(convhull, const Mm&, const Mm&, i_o_t, Mm&));
AK_BUILTIN("voronoi", AK_FN(voronoi, const Mm&, const Mm&, i_o_t, Mm&));
AK_BUILTIN("inpolygon", AK_FN(inpolygon, const Mm&, const Mm&, const Mm&, const Mm&),
           AK_FN(inpolygon, const Mm&, const Mm&, const Mm&, const Mm&, i_o_t, Mm&));
AK_BUILTIN("polyarea", polyarea);
AK_BUILTIN("griddata", AK_FN(griddata, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&),
           AK_FN(griddata, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&));
