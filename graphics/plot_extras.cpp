// Charts built over the two engines: histograms (bars), arrow fields (lines), images and the
// colour bar (image objects).
#include <algorithm>
#include <cmath>
#include <vector>

#include "arklib/arith.h"
#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/figures.h"
#include "arklib/plots.h"
#include "arklib/statistics.h"
#include "graphics/graphics_internal.h"
#include "graphics/plot_internal.h"
#include "graphics/vocabulary.h"

using namespace ak_internal;

namespace {

// The row 1..n.
Mm counting(int n) {
    Mm out(0, 0, 0, 1, n, ak_double);
    for (int k = 0; k < n; ++k) out.addr()[k] = k + 1;
    return out;
}

}  // namespace

// ---- hist ------------------------------------------------------------------------------------------------
namespace {

// The bin centres: `bins` equal bins across the data's range, or the centres given.
std::vector<double> hist_centres(const Mm& y, const Mm& x) {
    Mm xs = plain(x);
    std::vector<double> c;
    if (xs.size() > 1) {
        c.assign(xs.addr(), xs.addr() + xs.size());
        std::sort(c.begin(), c.end());
        return c;
    }
    int bins = xs.size() == 1 ? static_cast<int>(xs.addr()[0]) : 10;
    if (bins < 1) {
        error("hist: the number of bins must be positive");
        return c;
    }
    double lo = INFINITY, hi = -INFINITY;
    for (int k = 0; k < y.size(); ++k)
        if (std::isfinite(y.addr()[k])) lo = std::min(lo, y.addr()[k]), hi = std::max(hi, y.addr()[k]);
    if (!(lo <= hi)) lo = 0, hi = 1;
    if (lo == hi) lo -= 0.5, hi += 0.5;
    double w = (hi - lo) / bins;
    for (int k = 0; k < bins; ++k) c.push_back(lo + w * (k + 0.5));
    return c;
}

// Counts of each column of y (a vector counts as one column) in the bins around the centres,
// whose edges lie halfway between neighbouring centres.
Mm hist_counts(const Mm& y, const std::vector<double>& centres) {
    int rows = y.rows() == 1 ? y.cols() : y.rows(), cols = y.rows() == 1 ? 1 : y.cols();
    int nb = static_cast<int>(centres.size());
    Mm n(0, 0, 0, y.rows() == 1 ? 1 : nb, y.rows() == 1 ? nb : cols, ak_double);
    std::fill(n.addr(), n.addr() + n.size(), 0.0);
    for (int c = 0; c < cols; ++c)
        for (int r = 0; r < rows; ++r) {
            double v = y.addr()[c * rows + r];
            if (std::isnan(v)) continue;
            int b = 0;
            while (b + 1 < nb && v > (centres[b] + centres[b + 1]) / 2) ++b;
            n.addr()[c * nb + b] += 1;
        }
    return n;
}

Mm centre_vector(const std::vector<double>& c, bool row) {
    Mm out(0, 0, 0, row ? 1 : static_cast<int>(c.size()), row ? static_cast<int>(c.size()) : 1, ak_double);
    std::copy(c.begin(), c.end(), out.addr());
    return out;
}

}  // namespace

Mm hist(const Mm& y, const Mm& x, i_o_t, Mm& n, Mm& centres) {
    Mm data = plain(y);
    std::vector<double> c = hist_centres(data, x);
    if (c.empty()) return x_M;
    n = hist_counts(data, c);
    centres = centre_vector(c, data.rows() == 1);
    return n;
}

Mm hist(const Mm& y, i_o_t, Mm& n, Mm& centres) { return hist(y, Mm(0, 0, 0, 0, 0, ak_double), i_o, n, centres); }

Mm hist(const Mm& y, const Mm& x) {
    Mm n, centres;
    hist(y, x, i_o, n, centres);
    if (centres.size() == 0) return x_M;
    return plot_engine("bar", 2, list_of({centres, n}));
}

Mm hist(const Mm& y) { return hist(y, Mm(0, 0, 0, 0, 0, ak_double)); }

// ---- quiver -------------------------------------------------------------------------------------------------
Mm quiver(const Mm& given) {
    Mm list = as_list(given);
    int n = count_leading_data(list);
    Mm x, y, u, v;
    double scale = 1;
    if (n == 2 || n == 3) {
        u = plain(cell_at(list, 0));
        v = plain(cell_at(list, 1));
        Mm yy;
        x = meshgrid(counting(u.cols()), counting(u.rows()), i_o, yy);
        y = yy;
        if (n == 3) scale = number_of(cell_at(list, 2), 1);
    } else if (n == 4 || n == 5) {
        x = plain(cell_at(list, 0));
        y = plain(cell_at(list, 1));
        u = plain(cell_at(list, 2));
        v = plain(cell_at(list, 3));
        if (n == 5) scale = number_of(cell_at(list, 4), 1);
    } else {
        error("quiver: use (u,v), (x,y,u,v), then a scale and a line style");
        return x_M;
    }
    int count = u.size();
    if (v.size() != count || x.size() != count || y.size() != count) {
        error("quiver: x, y, u and v must have the same number of elements");
        return x_M;
    }
    // Arrows are scaled so that the longest fills the least spacing of the points.
    double longest = 0, spacing = INFINITY;
    for (int k = 0; k < count; ++k) longest = std::max(longest, std::hypot(u.addr()[k], v.addr()[k]));
    for (int k = 1; k < count; ++k) {
        double d = std::hypot(x.addr()[k] - x.addr()[k - 1], y.addr()[k] - y.addr()[k - 1]);
        if (d > 0) spacing = std::min(spacing, d);
    }
    double factor = scale;
    if (scale > 0 && longest > 0 && std::isfinite(spacing)) factor = scale * 0.9 * spacing / longest;
    Mm px(0, 0, 0, 9 * count, 1, ak_double), py(0, 0, 0, 9 * count, 1, ak_double);
    for (int k = 0; k < count; ++k) {
        double x0 = x.addr()[k], y0 = y.addr()[k], dx = factor * u.addr()[k], dy = factor * v.addr()[k];
        double x1 = x0 + dx, y1 = y0 + dy;
        // The head: two strokes back from the tip at 25 degrees, a third of the length long.
        double hx = -dx / 3, hy = -dy / 3, c = std::cos(0.44), s = std::sin(0.44);
        double ax[9] = {x0, x1, NAN, x1, x1 + c * hx - s * hy, NAN, x1, x1 + c * hx + s * hy, NAN};
        double ay[9] = {y0, y1, NAN, y1, y1 + s * hx + c * hy, NAN, y1, y1 - s * hx + c * hy, NAN};
        for (int q = 0; q < 9; ++q) px.addr()[9 * k + q] = ax[q], py.addr()[9 * k + q] = ay[q];
    }
    Mm args = new_cell(1, 2 + list.size() - n);
    static_cast<Mm*>(args.pr)[0] = px;
    static_cast<Mm*>(args.pr)[1] = py;
    for (int k = n; k < list.size(); ++k) static_cast<Mm*>(args.pr)[2 + k - n] = cell_at(list, k);
    return plot_engine("plot", 2, args);
}

// ---- images -----------------------------------------------------------------------------------------------------
namespace {

Mm show_image(const Mm& given, bool scaled) {
    Mm list = as_list(given);
    int n = count_leading_data(list);
    Mm x, y, c;
    if (n == 1) {
        c = cell_at(list, 0);
    } else if (n == 3) {
        x = plain(cell_at(list, 0));
        y = plain(cell_at(list, 1));
        c = cell_at(list, 2);
    } else {
        error("%s: use (c) or (x,y,c), then properties", scaled ? "imagesc" : "image");
        return x_M;
    }
    newplot();
    Mm a = gca();
    Mm h = ak_new_object("image", a);
    set(h, ak_word(akp_CData), c.flags.type == ak_uchar || c.ndims > 2 ? c : plain(c));
    if (x.size()) set(h, ak_word(akp_XData), row_of({x.addr()[0], x.addr()[x.size() - 1]}));
    if (y.size()) set(h, ak_word(akp_YData), row_of({y.addr()[0], y.addr()[y.size() - 1]}));
    set(h, ak_word(akp_CDataMapping), scaled ? ak_word(akw_scaled) : ak_word(akw_direct));
    set(a, ak_word(akp_YDir), TM("reverse"));
    if (scaled) set(a, ak_word(akp_CLimMode), ak_word(akw_auto));
    apply_prop_list(h, list, n + 1);
    return h;
}

}  // namespace

Mm image(const Mm& list) { return show_image(list, false); }
Mm imagesc(const Mm& list) { return show_image(list, true); }

// ---- colour bar -----------------------------------------------------------------------------------------------------
Mm colorbar() { return colorbar(TM("vert")); }

Mm colorbar(const Mm& where) {
    bool horizontal = text_is(where, "horiz");
    if (!horizontal && !text_is(where, "vert")) {
        error("colorbar: use 'vert' or 'horiz'");
        return x_M;
    }
    Mm a = gca();
    Mm pos = get(a, "Position");
    if (pos.size() != 4) return x_M;
    double p[4] = {pos.addr()[0], pos.addr()[1], pos.addr()[2], pos.addr()[3]};
    Mm clim = get(a, "CLim");
    double lo = number_of(clim, 0), hi = clim.size() > 1 ? clim.addr()[1] : 1;
    int colors = colormap().rows();
    // The plot's box gives up a strip to the bar.
    Mm bar_pos;
    if (horizontal) {
        set(a, "Position", row_of({p[0], p[1] + 0.2 * p[3], p[2], 0.8 * p[3]}));
        bar_pos = row_of({p[0], p[1], p[2], 0.16 * p[3]});
    } else {
        set(a, "Position", row_of({p[0], p[1], 0.82 * p[2], p[3]}));
        bar_pos = row_of({p[0] + 0.84 * p[2], p[1], 0.16 * p[2], p[3]});
    }
    Mm bar = axes(list_of({TM("Position"), bar_pos}));
    Mm strip = counting(colors);
    Mm h = ak_new_object("image", bar);
    set(h, ak_word(akp_CData), horizontal ? strip : transpose(strip));
    set(h, ak_word(akp_CDataMapping), ak_word(akw_direct));
    double step = (hi - lo) / colors;
    Mm span = row_of({lo + step / 2, hi - step / 2});
    Mm unit = row_of({0.5, 0.5});
    set(h, ak_word(akp_XData), horizontal ? span : unit);
    set(h, ak_word(akp_YData), horizontal ? unit : span);
    set(bar, list_of({TM(horizontal ? "XLim" : "YLim"), row_of({lo, hi}), TM(horizontal ? "YTick" : "XTick"),
                      Mm(0, 0, 0, 1, 0, ak_double), TM(horizontal ? "YLim" : "XLim"), row_of({0, 1})}));
    if (!horizontal) set(bar, "YAxisLocation", ak_word(akw_right));
    set(gcf(), "CurrentAxes", a);
    return bar;
}

AK_BUILTIN("hist", AK_FN(hist, const Mm&), AK_FN(hist, const Mm&, const Mm&),
           AK_FN_REFS(hist, const Mm&, i_o_t, Mm&, Mm&), AK_FN_REFS(hist, const Mm&, const Mm&, i_o_t, Mm&, Mm&));
AK_BUILTIN("quiver", list_form<quiver>);
AK_BUILTIN("image", list_form<image>);
AK_BUILTIN("imagesc", list_form<imagesc>);
AK_BUILTIN("colorbar", AK_FN(colorbar), AK_FN(colorbar, const Mm&));
