// Drawing the objects of an axes: lines (with stems, stairs and bars), patches, surfaces, images,
// text, and the legend.
#include <algorithm>
#include <array>
#include <cmath>

#include "engine/render_internal.h"

namespace ae {

namespace {

std::vector<double> counting(int n) {
    std::vector<double> v(n);
    for (int k = 0; k < n; ++k) v[k] = k + 1;
    return v;
}

struct Stroke {
    std::string style, marker;
    double width, msize;
    RGB color;
    bool has_edge = true, has_face = false;
    RGB medge, mface;
};

Stroke stroke_of(const Painter& p, const Object& o, const RGB& color) {
    Stroke s;
    s.style = o.word("LineStyle");
    s.marker = o.word("Marker");
    s.width = o.number("LineWidth", 0.5) * p.px_per_pt;
    s.msize = o.number("MarkerSize", 6) * p.px_per_pt;
    // A scatter chart gives the marks' area in square points.
    std::string chart = o.word("ChartType");
    if (same_word(chart, "scatter") || same_word(chart, "scatter3"))
        s.msize = std::sqrt(std::max(o.number("MarkerSize", 36), 0.0)) * p.px_per_pt;
    s.color = color;
    s.medge = color;
    const Value& me = o.get("MarkerEdgeColor");
    if (me.is_text("none")) s.has_edge = false;
    else rgb_of(me, s.medge);
    // A marker colour of its own (scatter) stands for the line's colour in the marks.
    RGB own;
    bool has_own = rgb_of(o.get("MarkerColor"), own);
    if (has_own && !me.is_text("none")) s.medge = own;
    const Value& mf = o.get("MarkerFaceColor");
    if (mf.is_text("auto")) s.has_face = true, s.mface = has_own ? own : color;
    else s.has_face = rgb_of(mf, s.mface);
    return s;
}

void markers(const Painter& p, const Stroke& s, const std::vector<std::pair<double, double>>& pts) {
    if (s.marker.empty() || s.marker == "none") return;
    cairo_set_line_width(p.cr, std::max(s.width, 0.5));
    for (auto& q : pts) p.marker(s.marker, q.first, q.second, s.msize, s.has_edge ? &s.medge : nullptr,
                                 s.has_face ? &s.mface : nullptr);
}

// The marks of a scatter chart whose sizes (areas in square points) or colours (values through the
// colormap, or RGB rows) are given point by point. False when it has neither.
bool scatter_marks(const Painter& p, const Object& o, const Stroke& s,
                   const std::vector<std::pair<double, double>>& pts, const std::vector<bool>& ok) {
    std::string chart = o.word("ChartType");
    if (!same_word(chart, "scatter") && !same_word(chart, "scatter3")) return false;
    const Value& sizes = o.get("MarkerSize");
    const Value& colors = o.get("MarkerColor");
    size_t n = pts.size();
    bool each_size = sizes.count() > 1 && static_cast<size_t>(sizes.count()) == n;
    bool each_value = !colors.str && colors.count() > 1 && static_cast<size_t>(colors.count()) == n;
    bool each_rgb = !colors.str && colors.cols() == 3 && static_cast<size_t>(colors.rows()) == n && n > 1;
    if (!each_size && !each_value && !each_rgb) return false;
    cairo_set_line_width(p.cr, std::max(s.width, 0.5));
    for (size_t k = 0; k < n; ++k) {
        if (!ok[k]) continue;
        double size = each_size ? std::sqrt(std::max(sizes.d[k], 0.0)) * p.px_per_pt : s.msize;
        RGB c = s.medge;
        if (each_rgb) c = RGB{colors.d[k], colors.d[n + k], colors.d[2 * n + k]};
        else if (each_value) c = p.mapped(colors.d[k], false);
        p.marker(s.marker, pts[k].first, pts[k].second, size, s.has_edge ? &c : nullptr, s.has_face ? &c : nullptr);
    }
    return true;
}

// A polyline through device points; NaN points break it.
void polyline(const Painter& p, const std::vector<std::pair<double, double>>& pts, const std::vector<bool>& ok) {
    bool pen = false;
    for (size_t k = 0; k < pts.size(); ++k) {
        if (!ok[k]) {
            pen = false;
            continue;
        }
        if (pen) cairo_line_to(p.cr, pts[k].first, pts[k].second);
        else cairo_move_to(p.cr, pts[k].first, pts[k].second);
        pen = true;
    }
    cairo_stroke(p.cr);
}

}  // namespace

BarPlace bar_place(const Object& o) {
    BarPlace out;
    const Object* ax = find_object(o.parent);
    if (!ax) return out;
    // The bar series of the axes in the order they were made, this one among them.
    std::vector<const Object*> series;
    for (auto it = ax->children.rbegin(); it != ax->children.rend(); ++it) {
        const Object* b = find_object(*it);
        if (b && b->kind == Kind::line && !b->hidden_child &&
            (same_word(b->word("ChartType"), "bar") || same_word(b->word("ChartType"), "bar3")) &&
            b->get("YData").count() == o.get("YData").count())
            series.push_back(b);
    }
    out.count = std::max<int>(1, static_cast<int>(series.size()));
    out.stacked = o.is_text_prop("Stacktype", "stacked");
    const std::vector<double>& y = o.get("YData").d;
    out.base.assign(y.size(), 0.0);
    for (size_t s = 0; s < series.size(); ++s) {
        if (series[s] == &o) {
            out.index = static_cast<int>(s);
            break;
        }
        if (out.stacked) {
            const std::vector<double>& below = series[s]->get("YData").d;
            for (size_t k = 0; k < y.size() && k < below.size(); ++k)
                if (std::isfinite(below[k])) out.base[k] += below[k];
        }
    }
    if (!out.stacked) out.base.assign(y.size(), 0.0);
    return out;
}

namespace {

void draw_line(const Painter& p, const Projection& pr, const Object& o) {
    const Value& yv = o.get("YData");
    std::vector<double> x = o.get("XData").empty() ? counting(yv.count()) : o.get("XData").d;
    std::vector<double> y = yv.d;
    const std::vector<double>& z = o.get("ZData").d;
    size_t n = std::min(x.size(), y.size());
    RGB color;
    rgb_of(o.get("Color"), color);
    Stroke s = stroke_of(p, o, color);
    std::string chart = o.word("ChartType");
    if (draw_line_chart(p, pr, o, chart, color, s.width)) return;
    if (same_word(chart, "polar")) polar_to_plane(x, y);
    std::vector<std::pair<double, double>> pts;
    std::vector<bool> ok;
    std::vector<std::pair<double, double>> marks;
    bool marked = same_word(chart, "stem") || !(s.marker.empty() || s.marker == "none");
    pts.reserve(n);
    ok.reserve(n);
    auto at = [&](double a, double b, double c, double& px, double& py) { return pr.point(a, b, c, px, py); };
    for (size_t k = 0; k < n; ++k) {
        double px = 0, py = 0, zk = k < z.size() ? z[k] : NAN;
        bool good = at(x[k], y[k], zk, px, py);
        if (same_word(chart, "stairs") && k > 0) {
            double qx, qy;
            bool g2 = at(x[k], y[k - 1], zk, qx, qy);
            pts.push_back({qx, qy});
            ok.push_back(g2 && ok.back());
        }
        pts.push_back({px, py});
        ok.push_back(good);
        if (good && marked) marks.push_back({px, py});
    }
    p.set_color(color);
    if (same_word(chart, "bar") || same_word(chart, "bar3")) {
        BarPlace place = bar_place(o);
        double w = bar_width(x) / (place.stacked ? 1 : place.count);
        for (size_t k = 0; k < n; ++k) {
            double x1, y1, x2, y2;
            double mid = x[k] + (place.stacked ? 0 : (place.index - (place.count - 1) / 2.0) * w);
            double base = k < place.base.size() ? place.base[k] : 0;
            if (!at(mid - w / 2, base, NAN, x1, y1) || !at(mid + w / 2, base + y[k], NAN, x2, y2)) continue;
            cairo_rectangle(p.cr, std::min(x1, x2), std::min(y1, y2), std::fabs(x2 - x1), std::fabs(y2 - y1));
            p.set_color(color);
            cairo_fill_preserve(p.cr);
            cairo_set_source_rgb(p.cr, 0, 0, 0);
            cairo_set_line_width(p.cr, s.width);
            cairo_set_dash(p.cr, nullptr, 0, 0);
            cairo_stroke(p.cr);
        }
        return;
    }
    if (same_word(chart, "stem")) {
        if (p.line_style(s.style, s.width))
            for (size_t k = 0; k < n; ++k) {
                double x1, y1, x2, y2;
                if (!at(x[k], 0, NAN, x1, y1) || !at(x[k], y[k], NAN, x2, y2)) continue;
                cairo_move_to(p.cr, x1, y1);
                cairo_line_to(p.cr, x2, y2);
                cairo_stroke(p.cr);
            }
        if (s.marker.empty() || s.marker == "none") s.marker = "o";
        markers(p, s, marks);
        return;
    }
    if (p.line_style(s.style, s.width)) {
        cairo_set_line_join(p.cr, CAIRO_LINE_JOIN_ROUND);
        polyline(p, pts, ok);
    }
    if (!scatter_marks(p, o, s, pts, ok)) markers(p, s, marks);
}

// The colour of a face or edge property: true with the colour, false when it is "none".
bool face_color(const Painter& p, const Value& prop, double cdata, const RGB& fallback, bool direct, RGB& out) {
    if (prop.is_text("none")) return false;
    if (rgb_of(prop, out)) return true;
    if (std::isnan(cdata)) {
        out = fallback;
        return true;
    }
    out = p.mapped(cdata, direct);
    return true;
}

void draw_polygon_path(const Painter& p, const std::vector<std::pair<double, double>>& pts) {
    for (size_t k = 0; k < pts.size(); ++k)
        if (k == 0) cairo_move_to(p.cr, pts[k].first, pts[k].second);
        else cairo_line_to(p.cr, pts[k].first, pts[k].second);
    cairo_close_path(p.cr);
}

void draw_patch(const Painter& p, const Projection& pr, const Object& o) {
    std::vector<std::vector<std::array<double, 3>>> polys;
    const Value& faces = o.get("Faces");
    const Value& vert = o.get("Vertices");
    if (!faces.empty() && !vert.empty()) {
        int nv = vert.rows(), nf = faces.rows(), fc = faces.cols();
        for (int f = 0; f < nf; ++f) {
            std::vector<std::array<double, 3>> poly;
            for (int k = 0; k < fc; ++k) {
                double idx = faces.d[k * nf + f];
                if (!(idx >= 1 && idx <= nv)) break;
                int i = static_cast<int>(idx) - 1;
                poly.push_back({vert.d[i], vert.d[nv + i], vert.cols() > 2 ? vert.d[2 * nv + i] : NAN});
            }
            polys.push_back(poly);
        }
    } else {
        const Value &x = o.get("XData"), &y = o.get("YData"), &z = o.get("ZData");
        bool vec = x.rows() == 1 || x.cols() == 1;
        int rows = vec ? x.count() : x.rows(), cols = vec ? 1 : x.cols();
        for (int c = 0; c < cols; ++c) {
            std::vector<std::array<double, 3>> poly;
            for (int r = 0; r < rows; ++r) {
                int k = c * rows + r;
                poly.push_back({x.at(k, NAN), y.at(k, NAN), z.empty() ? NAN : z.at(k, NAN)});
            }
            polys.push_back(poly);
        }
    }
    const Value& cd = o.get("CData").empty() ? o.get("FaceVertexCData") : o.get("CData");
    bool direct = same_word(o.word("CDataMapping"), "direct");
    RGB black;
    Stroke s = stroke_of(p, o, black);
    for (size_t f = 0; f < polys.size(); ++f) {
        std::vector<std::pair<double, double>> pts;
        for (auto& v : polys[f]) {
            double px, py;
            if (pr.point(v[0], v[1], v[2], px, py)) pts.push_back({px, py});
        }
        if (pts.size() < 2) continue;
        double c = NAN;
        if (cd.count() == 3 && !cd.str) c = NAN;
        else if (cd.count() == static_cast<int>(polys.size())) c = cd.d[f];
        else if (!cd.empty()) c = cd.d[std::min(static_cast<size_t>(cd.count() - 1), f)];
        RGB fallback{0, 0, 0};
        if (cd.count() == 3) fallback = RGB{cd.d[0], cd.d[1], cd.d[2]};
        RGB fill, edge;
        bool filled = face_color(p, o.get("FaceColor"), c, fallback, direct, fill);
        draw_polygon_path(p, pts);
        if (filled) {
            p.set_color(fill);
            cairo_fill_preserve(p.cr);
        }
        bool edged = face_color(p, o.get("EdgeColor"), c, fallback, direct, edge);
        if (edged && p.line_style(s.style, s.width)) {
            p.set_color(edge);
            cairo_stroke(p.cr);
        }
        cairo_new_path(p.cr);
        markers(p, s, pts);
    }
}

RGB& black_probe() {
    static RGB c;
    return c;
}

struct Quad {
    double depth;
    double px[4], py[4];
    double c[4];
};

void draw_surface(const Painter& p, const Projection& pr, const Object& o) {
    std::string chart = o.word("ChartType");
    if (chart.compare(0, 7, "contour") == 0) {
        draw_contour(p, pr, o, same_word(chart, "contourf"), same_word(chart, "contour3"));
        return;
    }
    bool mesh = chart.compare(0, 4, "mesh") == 0;
    const Object* ax = find_object(o.parent);
    std::string shading = ax ? ax->word("Shading") : std::string("faceted");
    const Value& z = o.get("ZData");
    int m = z.rows(), n = z.cols();
    if (m < 1 || n < 1) return;
    const Value &xv = o.get("XData"), &yv = o.get("YData");
    const Value& cd = o.get("CData").empty() ? z : o.get("CData");
    auto X = [&](int i, int j) {
        if (xv.empty()) return j + 1.0;
        return xv.count() == n && (xv.rows() == 1 || xv.cols() == 1) ? xv.d[j] : xv.at(j * m + i, NAN);
    };
    auto Y = [&](int i, int j) {
        if (yv.empty()) return i + 1.0;
        return yv.count() == m && (yv.rows() == 1 || yv.cols() == 1) ? yv.d[i] : yv.at(j * m + i, NAN);
    };
    auto C = [&](int i, int j) { return cd.nd == 2 && cd.rows() == m ? cd.at(j * m + i, NAN) : z.d[j * m + i]; };
    std::vector<Quad> quads;
    for (int j = 0; j + 1 < n; ++j)
        for (int i = 0; i + 1 < m; ++i) {
            Quad q;
            int ci[4] = {i, i + 1, i + 1, i}, cj[4] = {j, j, j + 1, j + 1};
            bool good = true;
            q.depth = 0;
            for (int k = 0; k < 4 && good; ++k) {
                double d;
                good = pr.point_depth(X(ci[k], cj[k]), Y(ci[k], cj[k]), z.d[cj[k] * m + ci[k]], q.px[k], q.py[k], d);
                q.depth += d;
                q.c[k] = C(ci[k], cj[k]);
            }
            if (good) quads.push_back(q);
        }
    std::stable_sort(quads.begin(), quads.end(), [](const Quad& a, const Quad& b) { return a.depth < b.depth; });
    bool direct = same_word(o.word("CDataMapping"), "direct");
    // A mesh shows its grid in the data's colours over faces of the background; shading flat
    // drops the edges of a surface and interp also blends its faces.
    static const Value white = Value::row({1, 1, 1}), flat = Value::text("flat"), none = Value::text("none"),
                       blend = Value::text("interp");
    bool plain_faces = o.get("FaceColor").is_text("flat");
    const Value& fc = mesh && plain_faces ? white : same_word(shading, "interp") && plain_faces ? blend : o.get("FaceColor");
    const Value& ec = mesh && rgb_of(o.get("EdgeColor"), black_probe()) ? flat
                      : !mesh && (same_word(shading, "flat") || same_word(shading, "interp")) ? none
                                                                                               : o.get("EdgeColor");
    bool interp = fc.is_text("interp");
    bool faces = !fc.is_text("none");
    RGB black;
    Stroke s = stroke_of(p, o, black);
    bool edges = !ec.is_text("none") && p.line_style(s.style, s.width);
    RGB face_rgb, edge_rgb;
    bool face_fixed = rgb_of(fc, face_rgb), edge_fixed = rgb_of(ec, edge_rgb);
    // In 2-D the quads are drawn without antialiasing so that neighbours leave no seams.
    for (const Quad& q : quads) {
        cairo_move_to(p.cr, q.px[0], q.py[0]);
        for (int k = 1; k < 4; ++k) cairo_line_to(p.cr, q.px[k], q.py[k]);
        cairo_close_path(p.cr);
        if (faces) {
            cairo_save(p.cr);
            cairo_set_antialias(p.cr, CAIRO_ANTIALIAS_NONE);
            if (interp) {
                cairo_pattern_t* mesh = cairo_pattern_create_mesh();
                cairo_mesh_pattern_begin_patch(mesh);
                cairo_mesh_pattern_move_to(mesh, q.px[0], q.py[0]);
                for (int k = 1; k < 4; ++k) cairo_mesh_pattern_line_to(mesh, q.px[k], q.py[k]);
                for (int k = 0; k < 4; ++k) {
                    RGB c = p.mapped(q.c[k], direct);
                    cairo_mesh_pattern_set_corner_color_rgb(mesh, k, c.r, c.g, c.b);
                }
                cairo_mesh_pattern_end_patch(mesh);
                cairo_set_source(p.cr, mesh);
                cairo_fill_preserve(p.cr);
                cairo_pattern_destroy(mesh);
            } else {
                p.set_color(face_fixed ? face_rgb : p.mapped(q.c[0], direct));
                cairo_fill_preserve(p.cr);
            }
            cairo_restore(p.cr);
        }
        if (edges) {
            p.set_color(edge_fixed ? edge_rgb : p.mapped(q.c[0], direct));
            cairo_stroke(p.cr);
        }
        cairo_new_path(p.cr);
    }
}

void draw_image(const Painter& p, const Projection& pr, const Object& o) {
    const Value& cd = o.get("CData");
    bool truecolor = cd.nd == 3 && cd.dims[2] == 3;
    int m = cd.rows(), n = truecolor ? cd.dims[1] : cd.cols();
    if (m < 1 || n < 1) return;
    bool direct = same_word(o.word("CDataMapping"), "direct");
    cairo_surface_t* img = cairo_image_surface_create(CAIRO_FORMAT_RGB24, n, m);
    unsigned char* data = cairo_image_surface_get_data(img);
    int stride = cairo_image_surface_get_stride(img);
    size_t plane = static_cast<size_t>(m) * n;
    auto byte = [](double v) { return static_cast<uint32_t>(std::lround(std::min(std::max(v, 0.0), 1.0) * 255)); };
    for (int i = 0; i < m; ++i)
        for (int j = 0; j < n; ++j) {
            size_t k = static_cast<size_t>(j) * m + i;
            RGB c = truecolor ? RGB{cd.d[k], cd.d[plane + k], cd.d[2 * plane + k]} : p.mapped(cd.d[k], direct);
            *reinterpret_cast<uint32_t*>(data + i * stride + 4 * j) = (byte(c.r) << 16) | (byte(c.g) << 8) | byte(c.b);
        }
    cairo_surface_mark_dirty(img);
    const Value &xv = o.get("XData"), &yv = o.get("YData");
    double x1 = xv.empty() ? 1 : xv.d.front(), x2 = xv.empty() ? n : xv.d.back();
    double y1 = yv.empty() ? 1 : yv.d.front(), y2 = yv.empty() ? m : yv.d.back();
    double dx = n > 1 ? (x2 - x1) / (n - 1) : 1, dy = m > 1 ? (y2 - y1) / (m - 1) : 1;
    double ax, ay, bx, by;
    if (pr.point(x1 - dx / 2, y1 - dy / 2, NAN, ax, ay) && pr.point(x2 + dx / 2, y2 + dy / 2, NAN, bx, by)) {
        cairo_save(p.cr);
        cairo_translate(p.cr, ax, ay);
        cairo_scale(p.cr, (bx - ax) / n, (by - ay) / m);
        cairo_set_source_surface(p.cr, img, 0, 0);
        cairo_pattern_set_filter(cairo_get_source(p.cr), CAIRO_FILTER_NEAREST);
        cairo_rectangle(p.cr, 0, 0, n, m);
        cairo_fill(p.cr);
        cairo_restore(p.cr);
    }
    cairo_surface_destroy(img);
}

void draw_text(const Painter& p, const Projection& pr, const Object& o) {
    const Value& pos = o.get("Position");
    double px, py;
    if (same_word(o.word("Units"), "normalized")) {
        pr.device(pos.at(0) - 0.5, pos.at(1) - 0.5, px, py);
    } else if (!pr.point(pos.at(0), pos.at(1), pos.at(2, NAN), px, py)) {
        return;
    }
    RGB c;
    rgb_of(o.get("Color"), c);
    double size = o.number("FontSize", 10);
    auto lines = o.get("String").lines();
    double step = size * p.px_per_pt * 1.2;
    double first = py - step * (lines.size() - 1) / 2.0;
    for (size_t k = 0; k < lines.size(); ++k)
        p.text(lines[k], px, first + k * step, size, o.word("HorizontalAlignment").c_str(),
               o.word("VerticalAlignment").c_str(), o.number("Rotation"), c, same_word(o.word("FontWeight"), "bold"),
               o.word("FontName"));
}

}  // namespace

void draw_object(const Painter& p, const Projection& pr, const Object& o) {
    switch (o.kind) {
        case Kind::line: draw_line(p, pr, o); break;
        case Kind::patch: draw_patch(p, pr, o); break;
        case Kind::surface: draw_surface(p, pr, o); break;
        case Kind::image: draw_image(p, pr, o); break;
        case Kind::text: draw_text(p, pr, o); break;
        default: break;
    }
}

void draw_legend(const Painter& p, const Projection& pr, const Object& ax) {
    if (!ax.on("Legend")) return;
    const Value& ls = ax.get("LegendString");
    std::vector<std::string> names;
    if (ls.str) names = ls.lines();
    if (names.size() == 1 && names[0].find('|') != std::string::npos) {
        std::string s = names[0], part;
        names.clear();
        for (char ch : s) {
            if (ch == '|') names.push_back(part), part.clear();
            else part += ch;
        }
        names.push_back(part);
    }
    std::vector<const Object*> series;
    for (auto it = ax.children.rbegin(); it != ax.children.rend(); ++it) {
        const Object* o = find_object(*it);
        if (o && !o->hidden_child && (o->kind == Kind::line || o->kind == Kind::patch || o->kind == Kind::surface))
            series.push_back(o);
    }
    // Objects named one by one (their own LegendString) are listed with those names.
    std::vector<const Object*> named;
    std::vector<std::string> own;
    for (const Object* o : series) {
        const Value* v = o->find("LegendString");
        if (v && v->str && !v->empty()) named.push_back(o), own.push_back(v->as_text());
    }
    if (!named.empty()) {
        series = named;
        names = own;
    }
    size_t n = std::min(names.size(), series.size());
    if (n == 0) return;
    double fs = ax.number("FontSize", 10), row = fs * p.px_per_pt * 1.5, sample = 30;
    double w = 0;
    for (size_t k = 0; k < n; ++k) w = std::max(w, p.text_width(names[k], fs));
    w += sample + 18;
    double h = row * n + 6;
    int where = static_cast<int>(ax.number("LegendPos", 1));
    double x = where == 2 || where == 3 ? pr.bx + 8 : pr.bx + pr.bw - w - 8;
    double y = where == 3 || where == 4 ? pr.by + pr.bh - h - 8 : pr.by + 8;
    if (where == -1) x = pr.bx + pr.bw + 8;
    cairo_rectangle(p.cr, x, y, w, h);
    cairo_set_source_rgb(p.cr, 1, 1, 1);
    cairo_fill_preserve(p.cr);
    cairo_set_source_rgb(p.cr, 0.15, 0.15, 0.15);
    cairo_set_line_width(p.cr, 0.5 * p.px_per_pt);
    cairo_set_dash(p.cr, nullptr, 0, 0);
    cairo_stroke(p.cr);
    for (size_t k = 0; k < n; ++k) {
        const Object& o = *series[k];
        double cy = y + 3 + row * (k + 0.5), x1 = x + 6, x2 = x1 + sample;
        RGB c{0, 0, 0};
        std::string chart = o.word("ChartType");
        bool block = o.kind == Kind::line && (same_word(chart, "bar") || same_word(chart, "barh") ||
                                              same_word(chart, "bar3") || same_word(chart, "bar3h") ||
                                              same_word(chart, "area"));
        if (block) {
            // Bars and areas are shown by a swatch of their colour.
            rgb_of(o.get("Color"), c);
            cairo_rectangle(p.cr, x1 + 4, cy - row * 0.3, sample - 8, row * 0.6);
            p.set_color(c);
            cairo_fill_preserve(p.cr);
            cairo_set_source_rgb(p.cr, 0, 0, 0);
            cairo_set_line_width(p.cr, 0.5 * p.px_per_pt);
            cairo_stroke(p.cr);
        } else if (o.kind == Kind::line) {
            rgb_of(o.get("Color"), c);
            Stroke s = stroke_of(p, o, c);
            if (p.line_style(s.style, s.width)) {
                p.set_color(c);
                cairo_move_to(p.cr, x1, cy);
                cairo_line_to(p.cr, x2, cy);
                cairo_stroke(p.cr);
            }
            markers(p, s, {{(x1 + x2) / 2, cy}});
        } else {
            if (!rgb_of(o.get("FaceColor"), c)) c = p.mapped((p.clim[0] + p.clim[1]) / 2, false);
            cairo_rectangle(p.cr, x1 + 4, cy - row * 0.3, sample - 8, row * 0.6);
            p.set_color(c);
            cairo_fill(p.cr);
        }
        p.text(names[k], x2 + 6, cy, fs, "left", "middle", 0, RGB{0, 0, 0});
    }
}

}  // namespace ae
