// The grid half of the plot family: surface_engine makes one surface object from a grid of
// heights, and mesh, surf, pcolor and the contour family are rows over it. The contour matrix is
// computed here, by tracing the level crossings cell by cell across the grid.
#include <algorithm>
#include <cmath>
#include <map>
#include <string>
#include <vector>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/figures.h"
#include "arklib/interpolation.h"
#include "arklib/plots.h"
#include "arklib/statistics.h"
#include "graphics/graphics_internal.h"
#include "graphics/plot_internal.h"
#include "graphics/vocabulary.h"

using namespace ak_internal;

namespace {

Mm counting_row(int n) {
    Mm out(0, 0, 0, 1, n, ak_double);
    for (int k = 0; k < n; ++k) out.addr()[k] = k + 1;
    return out;
}

bool one_line(const Mm& m) { return m.rows() == 1 || m.cols() == 1; }

// A vector of grid positions widened to the rows x cols grid: along the columns (x) or the rows.
Mm widen(const Mm& v, int rows, int cols, bool along_columns) {
    Mm out(0, 0, 0, rows, cols, ak_double);
    for (int c = 0; c < cols; ++c)
        for (int r = 0; r < rows; ++r) out.addr()[c * rows + r] = v.addr()[along_columns ? c : r];
    return out;
}

// True when the positions along one direction of the grid are equally spaced, to a thousandth of
// a step.
bool evenly_spaced(const Mm& g, bool along_columns) {
    int rows = g.rows(), cols = g.cols(), n = along_columns ? cols : rows;
    if (n < 3) return true;
    const double* d = g.addr();
    auto at = [&](int k) { return along_columns ? d[k * rows] : d[k]; };
    double step = (at(n - 1) - at(0)) / (n - 1);
    for (int k = 1; k < n; ++k)
        if (std::fabs(at(k) - at(k - 1) - step) > 1e-3 * std::fabs(step)) return false;
    return true;
}

void min_max(const Mm& m, double& lo, double& hi) {
    lo = INFINITY, hi = -INFINITY;
    for (int k = 0; k < m.size(); ++k) {
        double v = m.addr()[k];
        if (std::isfinite(v)) lo = std::min(lo, v), hi = std::max(hi, v);
    }
}

// Resamples values given on the grid (x, y) onto the regular grid (xi, yi).
Mm resample(const Mm& x, const Mm& y, const Mm& v, const Mm& xi, const Mm& yi) { return interp2(x, y, v, xi, yi); }

}  // namespace

Mm surface_engine(const char* name, const Mm& given, double view_value) {
    Mm list = as_list(given);
    int n = count_leading_data(list);
    Mm parent = prop_list_value(list, n + 1, TM("Parent"), ak_word(akw_empty_text));
    if (!(parent.flags.str && parent.size() == 0)) axes(list_of({parent}));
    newplot();
    if (embedded_axes.size() == 0) set(gca(), ak_word(akp_Refresh), Mm(0.0));
    if (n < 1) {
        error("%s: expecting data before the properties", name);
        return x_M;
    }
    Mm h(ak_engine.qor_new_object("surface", -1));
    set(h, ak_word(akp_ChartType), TM(name));
    set(h, ak_word(akp_Parent), gca());
    set(gca(), "XLimMode", ak_word(akw_auto));
    set(gca(), "YLimMode", ak_word(akw_auto));
    set(gca(), "ZLimMode", ak_word(akw_auto));
    Mm x, y, z, c;
    bool own_colors = false;
    switch (n) {
        case 1:
        case 2:
            z = plain(cell_at(list, 0));
            x = counting_row(z.cols());
            y = counting_row(z.rows());
            own_colors = n == 2;
            c = own_colors ? plain(cell_at(list, 1)) : z;
            break;
        default:
            x = plain(cell_at(list, 0));
            y = plain(cell_at(list, 1));
            z = plain(cell_at(list, 2));
            own_colors = n >= 4;
            c = own_colors ? plain(cell_at(list, 3)) : z;
            break;
    }
    double clo, chi;
    min_max(c, clo, chi);
    if (clo < chi) set(gca(), ak_word(akp_CLim), row_of({clo, chi}));
    if (error_2d(z, "mesh")) return x_M;
    int rows = z.rows(), cols = z.cols();
    if (one_line(x) && x.size() == cols && !(rows == 1 && cols == 1)) x = widen(x, rows, cols, true);
    if (one_line(y) && y.size() == rows && !(rows == 1 && cols == 1)) y = widen(y, rows, cols, false);
    if (x.rows() != rows || x.cols() != cols || y.rows() != rows || y.cols() != cols) {
        error("%s: x and y must match the size of z", name);
        return x_M;
    }
    if (!evenly_spaced(x, true) || !evenly_spaced(y, false)) {
        // The engine draws regular grids only: the data are resampled onto one.
        set(gca(), ak_word(akp_Shading), ak_word(akw_interp));
        double xlo, xhi, ylo, yhi;
        min_max(x, xlo, xhi);
        min_max(y, ylo, yhi);
        Mm yy, xx = meshgrid(linspace(Mm(xlo), Mm(xhi), Mm(double(cols))), linspace(Mm(ylo), Mm(yhi), Mm(double(rows))),
                             i_o, yy);
        z = resample(x, y, z, xx, yy);
        if (own_colors) c = resample(x, y, c, xx, yy);
        x = xx;
        y = yy;
    }
    if (text_is(prop_list_value(list, n + 1, TM("CDataMapping"), ak_word(akw_empty_text)), "direct")) {
        double xlo, xhi, ylo, yhi;
        min_max(x, xlo, xhi);
        min_max(y, ylo, yhi);
        if (xlo <= 0 || ylo <= 0) {
            error("3d plots support only positive indexes");
            return x_M;
        }
    }
    set(h, ak_word(akp_Size), row_of({double(rows), double(cols)}));
    ak_engine.qor_line_data(number_of(h), rows * cols, x.addr(), 1, y.addr(), 1, z.addr(), 0);
    if (own_colors) set(h, ak_word(akp_CData), c);
    view(Mm(view_value));
    std::string word(name);
    if (word.compare(0, 4, "mesh") == 0 || word.compare(0, 7, "contour") == 0) {
        view(Mm(3.5));
        ak_engine.qor_mesh_axes(number_of(gca()));
    } else {
        ak_engine.qor_surface_axes(number_of(gca()));
    }
    set(gca(), list_of({ak_word(akp_Colormap), colormap()}));
    set(h, list_of({ak_word(akp_Color), get(gcf(), "DefaultAxesColor")}));
    apply_prop_list(h, list, n + 1);
    Mm root(0.0);
    set(h, list_of({TM("CreateFcn"), get(root, "DefaultSurfaceCreateFcn")}));
    set(h, list_of({TM("DeleteFcn"), get(root, "DefaultSurfaceDeleteFcn")}));
    run_callback(get(h, "CreateFcn"));
    return h;
}

// ---- the surface family ------------------------------------------------------------------------------
Mm mesh(const Mm& list) { return surface_engine("mesh", list, 3); }
Mm surf(const Mm& list) { return surface_engine("surf", list, 3); }
Mm surfl(const Mm& list) { return surface_engine("surf", list, 3); }
Mm surface(const Mm& list) { return surface_engine("surface", list, 3); }
Mm pcolor(const Mm& list) { return surface_engine("pcolor", list, 2); }

namespace {

// meshc and surfc: the contour on the floor, then the grid over it in the same axes.
Mm with_contour(const char* name, const Mm& given) {
    Mm list = as_list(given);
    int n = count_leading_data(list);
    Mm data = new_cell(1, n);
    for (int k = 0; k < n; ++k) static_cast<Mm*>(data.pr)[k] = cell_at(list, k);
    contour(data);
    bool was_holding = number_of(ishold()) != 0;
    hold(ak_word(akw_on));
    Mm h = surface_engine(name, list, 3);
    if (!was_holding) hold(ak_word(akw_off));
    return h;
}

}  // namespace

Mm meshc(const Mm& list) { return with_contour("mesh", list); }
Mm surfc(const Mm& list) { return with_contour("surf", list); }

// ---- contours -------------------------------------------------------------------------------------------
namespace {

struct ContourArgs {
    Mm x, y, z;    // the grid; x and y empty for 1..cols and 1..rows
    Mm levels;     // a count (1 x 1) or the level list; empty for the default count
    int rest = 0;  // zero-based position of the first property item
    bool ok = false;
};

ContourArgs contour_args(const Mm& list) {
    ContourArgs a;
    int n = count_leading_data(list);
    a.rest = n;
    switch (n) {
        case 1: a.z = cell_at(list, 0); break;
        case 2: a.z = cell_at(list, 0), a.levels = cell_at(list, 1); break;
        case 3: a.x = cell_at(list, 0), a.y = cell_at(list, 1), a.z = cell_at(list, 2); break;
        case 4:
            a.x = cell_at(list, 0), a.y = cell_at(list, 1), a.z = cell_at(list, 2), a.levels = cell_at(list, 3);
            break;
        default: error("contour: must be of z or z,n or x,y,z or x,y,z,n"); return a;
    }
    a.ok = true;
    return a;
}

// The levels: a given list, or `count` levels evenly inside the data's range (10 by default).
std::vector<double> contour_levels(const Mm& z, const Mm& levels) {
    std::vector<double> out;
    Mm l = plain(levels);
    if (l.size() > 1) {
        out.assign(l.addr(), l.addr() + l.size());
        return out;
    }
    int count = l.size() == 1 ? static_cast<int>(l.addr()[0]) : 10;
    double lo, hi;
    min_max(z, lo, hi);
    if (!(lo < hi) || count < 1) return out;
    for (int k = 1; k <= count; ++k) out.push_back(lo + (hi - lo) * k / (count + 1));
    return out;
}

// Tracing of one level. A crossing lies on a grid edge, named by an integer: horizontal edges
// (between columns j and j+1 of row i) and vertical edges (between rows i and i+1 of column j).
// Each cell joins the crossings on its edges in pairs; chains of joined crossings are the pieces.
struct LevelTracer {
    const double *x, *y, *z;
    int rows, cols;
    double level;
    std::map<long, std::vector<long>> links;

    long hedge(int i, int j) const { return 2L * (static_cast<long>(i) * cols + j); }
    long vedge(int i, int j) const { return 2L * (static_cast<long>(i) * cols + j) + 1; }
    double at(int i, int j) const { return z[static_cast<size_t>(j) * rows + i]; }

    void join(long a, long b) {
        links[a].push_back(b);
        links[b].push_back(a);
    }

    // The point of a crossing, found by linear interpolation along its edge.
    void point(long e, double& px, double& py) const {
        long cell = e / 2;
        int i = static_cast<int>(cell / cols), j = static_cast<int>(cell % cols);
        int i2 = e % 2 ? i + 1 : i, j2 = e % 2 ? j : j + 1;
        double a = at(i, j), b = at(i2, j2);
        double t = b != a ? (level - a) / (b - a) : 0.5;
        size_t k1 = static_cast<size_t>(j) * rows + i, k2 = static_cast<size_t>(j2) * rows + i2;
        px = x[k1] + t * (x[k2] - x[k1]);
        py = y[k1] + t * (y[k2] - y[k1]);
    }

    bool cell(int i, int j) {
        double v[4] = {at(i, j), at(i, j + 1), at(i + 1, j + 1), at(i + 1, j)};
        for (double w : v)
            if (!std::isfinite(w)) return true;
        int state = 0;
        for (int k = 0; k < 4; ++k)
            if (v[k] >= level) state |= 1 << k;
        // Edges of the cell: bottom (0-1), right (1-2), top (3-2), left (0-3).
        long e[4] = {hedge(i, j), vedge(i, j + 1), hedge(i + 1, j), vedge(i, j)};
        switch (state) {
            case 0: case 15: break;
            case 1: case 14: join(e[3], e[0]); break;
            case 2: case 13: join(e[0], e[1]); break;
            case 3: case 12: join(e[3], e[1]); break;
            case 4: case 11: join(e[1], e[2]); break;
            case 6: case 9: join(e[0], e[2]); break;
            case 7: case 8: join(e[3], e[2]); break;
            case 5: case 10: {
                // A saddle: the mean of the corners says which pair of corners is joined.
                bool centre_high = (v[0] + v[1] + v[2] + v[3]) / 4 >= level;
                if ((state == 5) == centre_high) {
                    join(e[3], e[2]);
                    join(e[0], e[1]);
                } else {
                    join(e[3], e[0]);
                    join(e[1], e[2]);
                }
                break;
            }
            default:
                error("contour: impossible value. contact Brindlesk.");
                return false;
        }
        return true;
    }

    // Appends the pieces of this level to the columns of the contour matrix.
    void pieces(std::vector<double>& out) {
        std::map<long, bool> used;
        auto walk = [&](long start) {
            std::vector<long> chain{start};
            used[start] = true;
            long cur = start;
            for (;;) {
                long next = -1;
                for (long e : links[cur])
                    if (!used[e]) {
                        next = e;
                        break;
                    }
                if (next < 0) break;
                used[next] = true;
                chain.push_back(next);
                cur = next;
            }
            // A closed piece returns to its start.
            bool closed = chain.size() > 2;
            if (closed) {
                bool touches = false;
                for (long e : links[cur]) touches = touches || e == start;
                if (touches) chain.push_back(start);
            }
            out.push_back(level);
            out.push_back(static_cast<double>(chain.size()));
            for (long e : chain) {
                double px, py;
                point(e, px, py);
                out.push_back(px);
                out.push_back(py);
            }
        };
        // Open pieces start at an end (a crossing joined once), then the closed ones.
        for (auto& kv : links)
            if (kv.second.size() == 1 && !used[kv.first]) walk(kv.first);
        for (auto& kv : links)
            if (!used[kv.first]) walk(kv.first);
    }
};

Mm contour_matrix(const Mm& xm, const Mm& ym, const Mm& zm, const std::vector<double>& levels) {
    Mm z = plain(zm);
    int rows = z.rows(), cols = z.cols();
    Mm x = xm.size() ? plain(xm) : counting_row(cols), y = ym.size() ? plain(ym) : counting_row(rows);
    if (one_line(x) && x.size() == cols) x = widen(x, rows, cols, true);
    if (one_line(y) && y.size() == rows) y = widen(y, rows, cols, false);
    if (x.size() != rows * cols || y.size() != rows * cols) {
        error("contour: x and y must match the size of z");
        return Mm(0, 0, 0, 2, 0, ak_double);
    }
    std::vector<double> out;
    for (double level : levels) {
        LevelTracer t{x.addr(), y.addr(), z.addr(), rows, cols, level, {}};
        for (int i = 0; i + 1 < rows; ++i)
            for (int j = 0; j + 1 < cols; ++j)
                if (!t.cell(i, j)) return Mm(0, 0, 0, 2, 0, ak_double);
        t.pieces(out);
    }
    int n = static_cast<int>(out.size() / 2);
    Mm c(0, 0, 0, 2, n, ak_double);
    std::copy(out.begin(), out.end(), c.addr());
    return c;
}

Mm contour_chart(const char* name, double view_value, const Mm& given, Mm* matrix) {
    Mm list = as_list(given);
    ContourArgs a = contour_args(list);
    if (!a.ok) return x_M;
    if (matrix) *matrix = contour_matrix(a.x, a.y, a.z, contour_levels(a.z, a.levels));
    Mm args = new_cell(1, (a.x.size() ? 3 : 1) + list.size() - a.rest);
    Mm* p = static_cast<Mm*>(args.pr);
    if (a.x.size()) *p++ = a.x, *p++ = a.y;
    *p++ = a.z;
    for (int k = a.rest; k < list.size(); ++k) *p++ = cell_at(list, k);
    Mm h = surface_engine(name, args, view_value);
    if (a.levels.size() > 0) set(h, ak_word(akp_NumContourLines), plain(a.levels));
    if (view_value == 2.5 || view_value == 3) set(h, "LineWidth", Mm(1.0));
    return h;
}

}  // namespace

Mm contour(const Mm& list) { return contour_chart("contour", 2, list, nullptr); }
Mm contourf(const Mm& list) { return contour_chart("contourf", 2, list, nullptr); }
Mm contour3(const Mm& list) { return contour_chart("contour3", 3, list, nullptr); }

Mm contour(const Mm& list, i_o_t, Mm& c, Mm& h) {
    h = contour_chart("contour", 2, list, &c);
    return c;
}

Mm contourf(const Mm& list, i_o_t, Mm& c, Mm& h) {
    h = contour_chart("contourf", 2, list, &c);
    return c;
}

Mm contour3(const Mm& list, i_o_t, Mm& c, Mm& h) {
    h = contour_chart("contour3", 3, list, &c);
    return c;
}

Mm contourc(const Mm& given) {
    ContourArgs a = contour_args(as_list(given));
    if (!a.ok) return x_M;
    return contour_matrix(a.x, a.y, a.z, contour_levels(a.z, a.levels));
}

// ---- rows of the table of functions by name ---------------------------------------------------------------
namespace {

// [c, h] = contour(...): the list of inputs, the matrix and the handle.
template <Mm (*F)(const Mm&, i_o_t, Mm&, Mm&), Mm (*G)(const Mm&)>
void contour_form(int nin, const Mm* in, int nout, Mm* out) {
    Mm list = new_cell(1, nin);
    for (int k = 0; k < nin; ++k) static_cast<Mm*>(list.pr)[k] = in[k];
    if (nin == 1 && iscell(in[0])) list = in[0];
    if (nout <= 1) {
        out[0] = G(list);
        return;
    }
    F(list, i_o, out[0], out[1]);
}

}  // namespace

AK_BUILTIN("mesh", list_form<mesh>);
AK_BUILTIN("meshc", list_form<meshc>);
AK_BUILTIN("surf", list_form<surf>);
AK_BUILTIN("surfc", list_form<surfc>);
AK_BUILTIN("surfl", list_form<surfl>);
AK_BUILTIN("surface", list_form<surface>);
AK_BUILTIN("pcolor", list_form<pcolor>);
AK_BUILTIN("contour", contour_form<contour, contour>);
AK_BUILTIN("contourf", contour_form<contourf, contourf>);
AK_BUILTIN("contour3", contour_form<contour3, contour3>);
AK_BUILTIN("contourc", list_form<contourc>);
