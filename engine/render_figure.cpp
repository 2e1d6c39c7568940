// Drawing a figure with Cairo: the painter's helpers, the projection of an axes, and the three file
// formats plus the in-memory capture.
#include <cairo-pdf.h>
#include <cairo-svg.h>

#include <algorithm>
#include <cmath>
#include <strings.h>

#include "engine/render_internal.h"

namespace ae {

namespace {

constexpr double deg = 3.14159265358979323846 / 180.0;

const char* font_family(const std::string& name) {
    if (strncasecmp(name.c_str(), "courier", 7) == 0 || strncasecmp(name.c_str(), "mono", 4) == 0)
        return "DejaVu Sans Mono";
    if (strncasecmp(name.c_str(), "times", 5) == 0 || strncasecmp(name.c_str(), "serif", 5) == 0)
        return "DejaVu Serif";
    return "DejaVu Sans";
}

void draw_control(const Painter& p, const Object& o, double fig_h) {
    const Value& pos = o.get("Position");
    if (pos.count() < 4 || !o.on("Visible")) return;
    double x = pos.d[0], w = pos.d[2], h = pos.d[3], y = fig_h - pos.d[1] - h;
    RGB bg, fg;
    rgb_of(o.get("BackgroundColor"), bg);
    rgb_of(o.get("ForegroundColor"), fg);
    cairo_rectangle(p.cr, x, y, w, h);
    p.set_color(bg);
    cairo_fill_preserve(p.cr);
    cairo_set_source_rgb(p.cr, 0.5, 0.5, 0.5);
    cairo_set_line_width(p.cr, 1);
    cairo_stroke(p.cr);
    auto lines = o.get("String").lines();
    if (!lines.empty())
        p.text(lines[0], x + w / 2, y + h / 2, o.number("FontSize", 8), "center", "middle", 0, fg);
}

// Draws the whole figure on a surface of w x h device units.
void paint(cairo_surface_t* surface, Object& fig, double scale, double w, double h) {
    cairo_t* cr = cairo_create(surface);
    cairo_scale(cr, scale, scale);
    Painter p{cr, fig.number("PixelsPerInch", 96) / 72.0, &fig.get("Colormap")};
    RGB bg;
    if (rgb_of(fig.get("Color"), bg)) {
        p.set_color(bg);
        cairo_paint(cr);
    }
    // Oldest first, so that newer objects are drawn over older ones.
    std::vector<double> kids(fig.children.rbegin(), fig.children.rend());
    for (double k : kids) {
        Object* o = find_object(k);
        if (!o) continue;
        if (o->kind == Kind::axes) draw_axes(p, *o, w, h);
        else if (o->kind == Kind::uicontrol) draw_control(p, *o, h);
    }
    cairo_destroy(cr);
}

void figure_size(const Object& fig, int& w, int& h) {
    const Value& pos = fig.get("Position");
    auto pixels = [](double v) { return std::isfinite(v) ? std::min(std::max(v, 1.0), 10000.0) : 1.0; };
    w = static_cast<int>(std::lround(pixels(pos.at(2, 560))));
    h = static_cast<int>(std::lround(pixels(pos.at(3, 420))));
    w = std::min(std::max(w, 1), 10000);
    h = std::min(std::max(h, 1), 10000);
}

bool ends_with(const std::string& s, const char* ext) {
    size_t n = std::strlen(ext);
    return s.size() > n && strcasecmp(s.c_str() + s.size() - n, ext) == 0;
}

}  // namespace

bool rgb_of(const Value& v, RGB& out) {
    if (v.str || v.count() != 3) return false;
    out = RGB{v.d[0], v.d[1], v.d[2]};
    return true;
}

// ---- painter --------------------------------------------------------------------------------------
RGB Painter::mapped(double c, bool direct) const {
    int n = colormap ? colormap->rows() : 0;
    if (n == 0 || !std::isfinite(c)) return RGB{0, 0, 0};
    // The row is found in doubles and clamped before it becomes an int, so that no value is too
    // large for one.
    double row;
    if (direct) {
        row = std::floor(c) - 1;
    } else {
        double t = clim[1] > clim[0] ? (c - clim[0]) / (clim[1] - clim[0]) : 0.0;
        row = std::floor(t * n);
    }
    if (!(row >= 0)) row = 0;
    int k = static_cast<int>(std::min(row, static_cast<double>(n - 1)));
    const auto& d = colormap->d;
    return RGB{d[k], d[n + k], d[2 * n + k]};
}

bool Painter::line_style(const std::string& style, double width) const {
    double u = std::max(width, 1.0);
    if (style == "none") return false;
    if (style == "--") {
        double d[] = {6 * u, 4 * u};
        cairo_set_dash(cr, d, 2, 0);
    } else if (style == ":") {
        double d[] = {1 * u, 3 * u};
        cairo_set_dash(cr, d, 2, 0);
    } else if (style == "-.") {
        double d[] = {6 * u, 3 * u, 1 * u, 3 * u};
        cairo_set_dash(cr, d, 4, 0);
    } else {
        cairo_set_dash(cr, nullptr, 0, 0);
    }
    cairo_set_line_width(cr, width);
    return true;
}

void Painter::marker(const std::string& kind, double x, double y, double size, const RGB* edge,
                     const RGB* face) const {
    double r = size / 2;
    cairo_new_path(cr);
    cairo_set_dash(cr, nullptr, 0, 0);
    bool closed = true;
    if (kind == "." ) {
        cairo_arc(cr, x, y, std::max(size / 6, 1.0), 0, 2 * M_PI);
        if (edge) set_color(*edge);
        cairo_fill(cr);
        return;
    }
    if (kind == "o") {
        cairo_arc(cr, x, y, r, 0, 2 * M_PI);
    } else if (kind == "s" || kind == "square") {
        cairo_rectangle(cr, x - r, y - r, 2 * r, 2 * r);
    } else if (kind == "d" || kind == "diamond") {
        cairo_move_to(cr, x, y - r);
        cairo_line_to(cr, x + r, y);
        cairo_line_to(cr, x, y + r);
        cairo_line_to(cr, x - r, y);
        cairo_close_path(cr);
    } else if (kind == "^" || kind == "v" || kind == "<" || kind == ">") {
        double a = kind == "^" ? -90 : kind == "v" ? 90 : kind == "<" ? 180 : 0;
        for (int k = 0; k < 3; ++k) {
            double t = (a + k * 120) * deg;
            if (k == 0) cairo_move_to(cr, x + r * std::cos(t), y + r * std::sin(t));
            else cairo_line_to(cr, x + r * std::cos(t), y + r * std::sin(t));
        }
        cairo_close_path(cr);
    } else if (kind == "p" || kind == "pentagram" || kind == "h" || kind == "hexagram") {
        int points = (kind == "p" || kind == "pentagram") ? 5 : 6;
        for (int k = 0; k < 2 * points; ++k) {
            double t = (-90 + k * 180.0 / points) * deg, rr = k % 2 ? r * 0.4 : r;
            if (k == 0) cairo_move_to(cr, x + rr * std::cos(t), y + rr * std::sin(t));
            else cairo_line_to(cr, x + rr * std::cos(t), y + rr * std::sin(t));
        }
        cairo_close_path(cr);
    } else {
        closed = false;
        if (kind == "+" || kind == "*") {
            cairo_move_to(cr, x - r, y);
            cairo_line_to(cr, x + r, y);
            cairo_move_to(cr, x, y - r);
            cairo_line_to(cr, x, y + r);
        }
        if (kind == "x" || kind == "*") {
            double q = r * 0.7071;
            cairo_move_to(cr, x - q, y - q);
            cairo_line_to(cr, x + q, y + q);
            cairo_move_to(cr, x - q, y + q);
            cairo_line_to(cr, x + q, y - q);
        }
    }
    if (closed && face) {
        set_color(*face);
        cairo_fill_preserve(cr);
    }
    if (edge) {
        set_color(*edge);
        cairo_stroke(cr);
    }
    cairo_new_path(cr);
}

void Painter::text(const std::string& s, double x, double y, double size_pt, const char* halign,
                   const char* valign, double rotation, const RGB& color, bool bold, const std::string& font) const {
    if (s.empty()) return;
    cairo_save(cr);
    cairo_select_font_face(cr, font_family(font), CAIRO_FONT_SLANT_NORMAL,
                           bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(cr, size_pt * px_per_pt);
    cairo_font_extents_t fe;
    cairo_font_extents(cr, &fe);
    cairo_text_extents_t te;
    cairo_text_extents(cr, s.c_str(), &te);
    double dx = same_word(halign, "center") ? -te.x_advance / 2 : same_word(halign, "right") ? -te.x_advance : 0;
    double dy = same_word(valign, "top") || same_word(valign, "cap")  ? fe.ascent
                : same_word(valign, "bottom")                          ? -fe.descent
                : same_word(valign, "baseline")                        ? 0
                                                                        : (fe.ascent - fe.descent) / 2;
    cairo_translate(cr, x, y);
    cairo_rotate(cr, -rotation * deg);
    cairo_move_to(cr, dx, dy);
    set_color(color);
    cairo_show_text(cr, s.c_str());
    cairo_restore(cr);
}

double Painter::text_width(const std::string& s, double size_pt) const {
    cairo_save(cr);
    cairo_select_font_face(cr, "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(cr, size_pt * px_per_pt);
    cairo_text_extents_t te;
    cairo_text_extents(cr, s.c_str(), &te);
    cairo_restore(cr);
    return te.x_advance;
}

// ---- projection -------------------------------------------------------------------------------------
void Projection::setup(const Object& ax, double fig_w, double fig_h) {
    static const char* lim[3] = {"XLim", "YLim", "ZLim"};
    static const char* scale[3] = {"XScale", "YScale", "ZScale"};
    static const char* dir[3] = {"XDir", "YDir", "ZDir"};
    for (int k = 0; k < 3; ++k) {
        const Value& l = ax.get(lim[k]);
        lo[k] = l.at(0, 0);
        hi[k] = l.at(1, 1);
        log[k] = same_word(ax.word(scale[k]), "log") && lo[k] > 0 && hi[k] > 0;
        reverse[k] = same_word(ax.word(dir[k]), "reverse");
    }
    const Value& view = ax.get("View");
    az = view.at(0, 0);
    el = view.at(1, 90);
    is3d = !(az == 0 && el == 90);
    const Value& pos = ax.get("Position");
    bool pixels = same_word(ax.word("Units"), "pixels");
    double px = pos.at(0, 0), py = pos.at(1, 0), pw = pos.at(2, 1), ph = pos.at(3, 1);
    if (!pixels) px *= fig_w, py *= fig_h, pw *= fig_w, ph *= fig_h;
    bx = px;
    by = fig_h - py - ph;
    bw = pw;
    bh = ph;
    minx = miny = 1e300;
    maxx = maxy = -1e300;
    for (int c = 0; c < 8; ++c) {
        double sx, sy, d;
        rotate(c & 1, (c >> 1) & 1, (c >> 2) & 1, sx, sy, d);
        minx = std::min(minx, sx), maxx = std::max(maxx, sx);
        miny = std::min(miny, sy), maxy = std::max(maxy, sy);
    }
    if (maxx - minx < 1e-12) maxx = minx + 1;
    if (maxy - miny < 1e-12) maxy = miny + 1;
}

double Projection::norm(int k, double v) const {
    double t;
    if (log[k]) t = v > 0 ? (std::log10(v) - std::log10(lo[k])) / (std::log10(hi[k]) - std::log10(lo[k])) : NAN;
    else t = hi[k] != lo[k] ? (v - lo[k]) / (hi[k] - lo[k]) : 0.5;
    return reverse[k] ? 1 - t : t;
}

void Projection::rotate(double u, double v, double w, double& sx, double& sy, double& depth) const {
    double a = az * deg, e = el * deg;
    double X = u - 0.5, Y = v - 0.5, Z = w - 0.5;
    sx = std::cos(a) * X + std::sin(a) * Y;
    sy = -std::sin(a) * std::sin(e) * X + std::cos(a) * std::sin(e) * Y + std::cos(e) * Z;
    depth = std::sin(a) * std::cos(e) * X - std::cos(a) * std::cos(e) * Y + std::sin(e) * Z;
    if (!is3d) sx = X, sy = Y, depth = Z;
}

void Projection::device(double sx, double sy, double& px, double& py) const {
    px = bx + (sx - minx) / (maxx - minx) * bw;
    py = by + bh - (sy - miny) / (maxy - miny) * bh;
}

bool Projection::point_depth(double x, double y, double z, double& px, double& py, double& depth) const {
    double u = norm(0, x), v = norm(1, y), w = is3d ? norm(2, std::isnan(z) ? lo[2] : z) : 0.5;
    if (!is3d && std::isnan(z)) z = 0;
    if (!std::isfinite(u) || !std::isfinite(v) || !std::isfinite(w) || std::isnan(z)) return false;
    double sx, sy;
    rotate(u, v, w, sx, sy, depth);
    device(sx, sy, px, py);
    return true;
}

bool Projection::point(double x, double y, double z, double& px, double& py) const {
    double d;
    return point_depth(x, y, z, px, py, d);
}

// ---- output -------------------------------------------------------------------------------------------
bool write_figure(Object& fig, const std::string& file) {
    int w, h;
    figure_size(fig, w, h);
    double pt = 72.0 / fig.number("PixelsPerInch", 96);
    cairo_surface_t* s;
    bool png = ends_with(file, ".png");
    if (png) s = cairo_image_surface_create(CAIRO_FORMAT_RGB24, w, h);
    else if (ends_with(file, ".svg")) s = cairo_svg_surface_create(file.c_str(), w * pt, h * pt);
    else if (ends_with(file, ".pdf")) s = cairo_pdf_surface_create(file.c_str(), w * pt, h * pt);
    else {
        report_error("The figure cannot be written to '%s': the name must end in .png, .svg or .pdf", file.c_str());
        return false;
    }
    paint(s, fig, png ? 1.0 : pt, w, h);
    cairo_status_t st = png ? cairo_surface_write_to_png(s, file.c_str()) : CAIRO_STATUS_SUCCESS;
    cairo_surface_finish(s);
    if (st == CAIRO_STATUS_SUCCESS) st = cairo_surface_status(s);
    cairo_surface_destroy(s);
    if (st != CAIRO_STATUS_SUCCESS) {
        report_error("The figure cannot be written to '%s': %s", file.c_str(), cairo_status_to_string(st));
        return false;
    }
    return true;
}

Value capture_figure(Object& fig) {
    int w, h;
    figure_size(fig, w, h);
    cairo_surface_t* s = cairo_image_surface_create(CAIRO_FORMAT_RGB24, w, h);
    paint(s, fig, 1.0, w, h);
    cairo_surface_flush(s);
    const unsigned char* data = cairo_image_surface_get_data(s);
    int stride = cairo_image_surface_get_stride(s);
    Value out;
    out.nd = 3;
    out.dims[0] = h;
    out.dims[1] = w;
    out.dims[2] = 3;
    out.d.resize(static_cast<size_t>(w) * h * 3);
    size_t plane = static_cast<size_t>(w) * h;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            uint32_t px = *reinterpret_cast<const uint32_t*>(data + y * stride + 4 * x);
            size_t k = static_cast<size_t>(x) * h + y;
            out.d[k] = ((px >> 16) & 255) / 255.0;
            out.d[plane + k] = ((px >> 8) & 255) / 255.0;
            out.d[2 * plane + k] = (px & 255) / 255.0;
        }
    cairo_surface_destroy(s);
    return out;
}

}  // namespace ae
