// Charts drawn from the data of a line or a surface, chosen by its ChartType: horizontal bars,
// areas, pies and polar curves from lines; contour lines and filled contours from surfaces.
#include <algorithm>
#include <cmath>
#include <cstdio>

#include "engine/render_internal.h"

namespace ae {

namespace {

std::vector<double> x_of(const Object& o) {
    const Value& y = o.get("YData");
    const Value& x = o.get("XData");
    if (!x.empty()) return x.d;
    std::vector<double> v(y.count());
    for (int k = 0; k < y.count(); ++k) v[k] = k + 1;
    return v;
}

void outline(const Painter& p, double width) {
    cairo_set_source_rgb(p.cr, 0, 0, 0);
    cairo_set_line_width(p.cr, width);
    cairo_set_dash(p.cr, nullptr, 0, 0);
    cairo_stroke(p.cr);
}

void draw_barh(const Painter& p, const Projection& pr, const Object& o, const RGB& color, double width) {
    std::vector<double> x = x_of(o);
    const std::vector<double>& y = o.get("YData").d;
    double w = bar_width(x);
    for (size_t k = 0; k < std::min(x.size(), y.size()); ++k) {
        double x1, y1, x2, y2;
        if (!pr.point(0, x[k] - w / 2, NAN, x1, y1) || !pr.point(y[k], x[k] + w / 2, NAN, x2, y2)) continue;
        cairo_rectangle(p.cr, std::min(x1, x2), std::min(y1, y2), std::fabs(x2 - x1), std::fabs(y2 - y1));
        p.set_color(color);
        cairo_fill_preserve(p.cr);
        outline(p, width);
    }
}

void draw_area(const Painter& p, const Projection& pr, const Object& o, const RGB& color, double width) {
    std::vector<double> x = x_of(o);
    const std::vector<double>& y = o.get("YData").d;
    size_t n = std::min(x.size(), y.size());
    double px, py;
    bool started = false;
    for (size_t k = 0; k < n; ++k) {
        if (!pr.point(x[k], y[k], NAN, px, py)) continue;
        if (!started) {
            double bx, by;
            if (!pr.point(x[k], 0, NAN, bx, by)) return;
            cairo_move_to(p.cr, bx, by);
            started = true;
        }
        cairo_line_to(p.cr, px, py);
    }
    if (!started) return;
    for (size_t k = n; k-- > 0;) {
        if (pr.point(x[k], 0, NAN, px, py)) {
            cairo_line_to(p.cr, px, py);
            break;
        }
    }
    cairo_close_path(p.cr);
    p.set_color(color);
    cairo_fill_preserve(p.cr);
    outline(p, width);
}

// A pie of the values' shares, on the unit circle about the origin, coloured from the colormap.
void draw_pie(const Painter& p, const Projection& pr, const Object& o, double width) {
    const std::vector<double>& y = o.get("YData").d;
    // Shares are found on values scaled by the largest, so that no sum overflows.
    double largest = 0, total = 0;
    for (double v : y)
        if (std::isfinite(v) && v > 0) largest = std::max(largest, v);
    if (!(largest > 0)) return;
    for (double v : y)
        if (std::isfinite(v) && v > 0) total += v / largest;
    double cx, cy, ex, ey, fx, fy;
    if (!pr.point(0, 0, NAN, cx, cy) || !pr.point(1, 0, NAN, ex, ey) || !pr.point(0, 1, NAN, fx, fy)) return;
    double rx = std::fabs(ex - cx), ry = std::fabs(fy - cy);
    double start = M_PI / 2;
    size_t n = y.size();
    for (size_t k = 0; k < n; ++k) {
        if (!(std::isfinite(y[k]) && y[k] > 0)) continue;
        double share = y[k] / largest / total, sweep = 2 * M_PI * share;
        cairo_save(p.cr);
        cairo_translate(p.cr, cx, cy);
        cairo_scale(p.cr, rx, ry);
        cairo_move_to(p.cr, 0, 0);
        cairo_arc(p.cr, 0, 0, 1, -start, -(start - sweep));
        cairo_close_path(p.cr);
        cairo_restore(p.cr);
        double t = n > 1 ? static_cast<double>(k) / (n - 1) : 0.5;
        p.set_color(p.mapped(p.clim[0] + t * (p.clim[1] - p.clim[0]), false));
        cairo_fill_preserve(p.cr);
        outline(p, width);
        // The share as a label just outside the wedge.
        double mid = start - sweep / 2;
        char text[32];
        std::snprintf(text, sizeof text, "%.0f%%", 100 * share);
        double lx = cx + 1.15 * rx * std::cos(mid), ly = cy - 1.15 * ry * std::sin(mid);
        p.text(text, lx, ly, 9, std::cos(mid) > 0.2 ? "left" : std::cos(mid) < -0.2 ? "right" : "center", "middle", 0,
               RGB{0, 0, 0});
        start -= sweep;
    }
}

}  // namespace

bool draw_line_chart(const Painter& p, const Projection& pr, const Object& o, const std::string& chart,
                     const RGB& color, double width) {
    if (same_word(chart, "barh") || same_word(chart, "bar3h")) draw_barh(p, pr, o, color, width);
    else if (same_word(chart, "area")) draw_area(p, pr, o, color, width);
    else if (same_word(chart, "pie") || same_word(chart, "pie3")) draw_pie(p, pr, o, width);
    else return false;
    return true;
}

void polar_to_plane(std::vector<double>& theta, std::vector<double>& r) {
    size_t n = std::min(theta.size(), r.size());
    for (size_t k = 0; k < n; ++k) {
        double t = theta[k], radius = r[k];
        theta[k] = radius * std::cos(t);
        r[k] = radius * std::sin(t);
    }
}

// ---- contours ---------------------------------------------------------------------------------------------
std::vector<double> contour_levels_of(const Object& o) {
    const Value& given = o.get("NumContourLines");
    const Value& z = o.get("ZData");
    std::vector<double> levels;
    if (given.count() > 1) return given.d;
    double lo = INFINITY, hi = -INFINITY;
    for (double v : z.d)
        if (std::isfinite(v)) lo = std::min(lo, v), hi = std::max(hi, v);
    int count = given.count() == 1 ? static_cast<int>(given.d[0]) : 10;
    if (!(lo < hi) || count < 1) return levels;
    for (int k = 1; k <= count; ++k) levels.push_back(lo + (hi - lo) * k / (count + 1));
    return levels;
}

namespace {

struct GridPoint {
    double x, y, v;
};

GridPoint mix(const GridPoint& a, const GridPoint& b, double level) {
    double t = b.v != a.v ? (level - a.v) / (b.v - a.v) : 0.5;
    return GridPoint{a.x + t * (b.x - a.x), a.y + t * (b.y - a.y), level};
}

// The part of a polygon where the value is on the kept side of `level`.
std::vector<GridPoint> clip(const std::vector<GridPoint>& poly, double level, bool keep_above) {
    std::vector<GridPoint> out;
    size_t n = poly.size();
    for (size_t k = 0; k < n; ++k) {
        const GridPoint &a = poly[k], &b = poly[(k + 1) % n];
        bool ina = keep_above ? a.v >= level : a.v <= level, inb = keep_above ? b.v >= level : b.v <= level;
        if (ina) out.push_back(a);
        if (ina != inb) out.push_back(mix(a, b, level));
    }
    return out;
}

}  // namespace

void draw_contour(const Painter& p, const Projection& pr, const Object& o, bool filled, bool at_height) {
    const Value& z = o.get("ZData");
    const Value &xv = o.get("XData"), &yv = o.get("YData");
    int m = z.rows(), n = z.cols();
    if (m < 2 || n < 2) return;
    auto point = [&](int i, int j) {
        size_t k = static_cast<size_t>(j) * m + i;
        return GridPoint{xv.count() == m * n ? xv.d[k] : j + 1.0, yv.count() == m * n ? yv.d[k] : i + 1.0, z.d[k]};
    };
    std::vector<double> levels = contour_levels_of(o);
    // The floor of a 3-D axes carries the lines of a plain contour.
    double floor_z = pr.is3d ? pr.lo[2] : NAN;
    auto place = [&](const GridPoint& g, double& px, double& py) {
        return pr.point(g.x, g.y, at_height ? g.v : floor_z, px, py);
    };
    if (filled) {
        cairo_save(p.cr);
        cairo_set_antialias(p.cr, CAIRO_ANTIALIAS_NONE);
        cairo_set_line_width(p.cr, 0.75);
        cairo_set_line_join(p.cr, CAIRO_LINE_JOIN_ROUND);
        std::vector<double> bands;
        bands.push_back(-INFINITY);
        for (double l : levels) bands.push_back(l);
        bands.push_back(INFINITY);
        for (int j = 0; j + 1 < n; ++j)
            for (int i = 0; i + 1 < m; ++i) {
                GridPoint c[4] = {point(i, j), point(i + 1, j), point(i + 1, j + 1), point(i, j + 1)};
                bool good = true;
                for (auto& g : c) good = good && std::isfinite(g.v);
                if (!good) continue;
                for (int t = 0; t < 2; ++t) {
                    std::vector<GridPoint> tri = t == 0 ? std::vector<GridPoint>{c[0], c[1], c[2]}
                                                        : std::vector<GridPoint>{c[0], c[2], c[3]};
                    for (size_t b = 0; b + 1 < bands.size(); ++b) {
                        std::vector<GridPoint> part = clip(clip(tri, bands[b], true), bands[b + 1], false);
                        if (part.size() < 3) continue;
                        double px, py;
                        bool first = true;
                        for (auto& g : part)
                            if (place(g, px, py)) {
                                if (first) cairo_move_to(p.cr, px, py), first = false;
                                else cairo_line_to(p.cr, px, py);
                            }
                        cairo_close_path(p.cr);
                        // A band takes the colour of its place between the lowest and highest level.
                        double share = levels.size() > 0 ? static_cast<double>(b) / levels.size() : 0.5;
                        p.set_color(p.mapped(p.clim[0] + share * (p.clim[1] - p.clim[0]), false));
                        // A hairline of the same colour closes the seams between neighbouring
                        // pieces, which vector output would otherwise show.
                        cairo_fill_preserve(p.cr);
                        cairo_stroke(p.cr);
                    }
                }
            }
        cairo_restore(p.cr);
    }
    cairo_set_dash(p.cr, nullptr, 0, 0);
    cairo_set_line_width(p.cr, o.number("LineWidth", 0.5) * p.px_per_pt * (filled ? 1.0 : 1.5));
    cairo_set_line_cap(p.cr, CAIRO_LINE_CAP_ROUND);
    for (double level : levels) {
        if (filled) cairo_set_source_rgb(p.cr, 0, 0, 0);
        else p.set_color(p.mapped(level, false));
        for (int j = 0; j + 1 < n; ++j)
            for (int i = 0; i + 1 < m; ++i) {
                GridPoint c[4] = {point(i, j), point(i, j + 1), point(i + 1, j + 1), point(i + 1, j)};
                GridPoint cross[4];
                int count = 0;
                for (int e = 0; e < 4; ++e) {
                    const GridPoint &a = c[e], &b = c[(e + 1) % 4];
                    if (!std::isfinite(a.v) || !std::isfinite(b.v)) continue;
                    if ((a.v >= level) != (b.v >= level)) cross[count++] = mix(a, b, level);
                }
                // Two crossings make one stroke; four (a saddle) make two, paired in order.
                for (int k = 0; k + 1 < count; k += 2) {
                    double x1, y1, x2, y2;
                    if (!place(cross[k], x1, y1) || !place(cross[k + 1], x2, y2)) continue;
                    cairo_move_to(p.cr, x1, y1);
                    cairo_line_to(p.cr, x2, y2);
                }
            }
        cairo_stroke(p.cr);
    }
}

}  // namespace ae
