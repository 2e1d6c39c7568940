// Drawing an axes: background, grid, the objects it holds, axis lines, ticks, tick labels, labels,
// title and legend.
#include <cmath>
#include <cstdio>
#include <cstring>

#include "engine/render_internal.h"

namespace ae {

namespace {

std::string tick_text(double v) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%g", std::fabs(v) < 1e-12 ? 0.0 : v);
    return buf;
}

// A date number (days from the year 0, fractions of a day for the time) as text in a date
// format: yyyy, yy, mmm, mm, m (month), dd, ddd, d (day, weekday), HH, MM, SS, PM, QQ (quarter)
// and YY; other characters stand as they are.
std::string date_text(double datenum, const std::string& format) {
    static const char* months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    static const char* weekdays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    // Beyond some million years a date number names no date that can be written.
    if (!std::isfinite(datenum) || std::fabs(datenum) > 4e8) return "";
    double whole = std::floor(datenum);
    long seconds = std::lround((datenum - whole) * 86400);
    long days = static_cast<long>(whole) - 719529;  // days from 1 January 1970
    if (seconds >= 86400) seconds -= 86400, ++days;
    // The civil date of a day count, in the proleptic Gregorian calendar.
    long z = days + 719468, era = (z >= 0 ? z : z - 146096) / 146097;
    long doe = z - era * 146097, yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    long doy = doe - (365 * yoe + yoe / 4 - yoe / 100), mp = (5 * doy + 2) / 153;
    long day = doy - (153 * mp + 2) / 5 + 1, month = mp < 10 ? mp + 3 : mp - 9, year = yoe + era * 400 + (month <= 2);
    int weekday = static_cast<int>(((days % 7) + 11) % 7);  // 1 January 1970 was a Thursday
    bool twelve = format.find("PM") != std::string::npos;
    long hour = seconds / 3600, minute = seconds / 60 % 60, second = seconds % 60;
    std::string out;
    char b[16];
    for (size_t i = 0; i < format.size();) {
        auto take = [&](const char* token) {
            size_t n = std::strlen(token);
            if (format.compare(i, n, token) != 0) return false;
            i += n;
            return true;
        };
        if (take("yyyy")) std::snprintf(b, sizeof b, "%04ld", year);
        else if (take("yy") || take("YY")) std::snprintf(b, sizeof b, "%02ld", ((year % 100) + 100) % 100);
        else if (take("mmm")) std::snprintf(b, sizeof b, "%s", months[month - 1]);
        else if (take("mm")) std::snprintf(b, sizeof b, "%02ld", month);
        else if (take("m")) std::snprintf(b, sizeof b, "%c", months[month - 1][0]);
        else if (take("ddd")) std::snprintf(b, sizeof b, "%s", weekdays[weekday]);
        else if (take("dd")) std::snprintf(b, sizeof b, "%02ld", day);
        else if (take("d")) std::snprintf(b, sizeof b, "%c", weekdays[weekday][0]);
        else if (take("HH")) std::snprintf(b, sizeof b, "%02ld", twelve ? (hour % 12 == 0 ? 12 : hour % 12) : hour);
        else if (take("MM")) std::snprintf(b, sizeof b, "%02ld", minute);
        else if (take("SS")) std::snprintf(b, sizeof b, "%02ld", second);
        else if (take("PM")) std::snprintf(b, sizeof b, "%s", hour < 12 ? "AM" : "PM");
        else if (take("QQ")) std::snprintf(b, sizeof b, "Q%ld", (month - 1) / 3 + 1);
        else std::snprintf(b, sizeof b, "%c", format[i++]);
        out += b;
    }
    return out;
}

// The labels of the ticks of axis k: manual texts are used in turn, else the numbers, or the
// dates when the axis has a date format (datetick writes it as XDate, YDate, ZDate).
std::vector<std::string> tick_labels(const Object& ax, int k, const std::vector<double>& ticks) {
    static const char* label[3] = {"XTickLabel", "YTickLabel", "ZTickLabel"};
    static const char* mode[3] = {"XTickLabelMode", "YTickLabelMode", "ZTickLabelMode"};
    std::vector<std::string> out;
    std::vector<std::string> given;
    if (same_word(ax.word(mode[k]), "manual")) {
        const Value& v = ax.get(label[k]);
        if (v.str) {
            given = v.lines();
            if (given.size() == 1 && given[0].find('|') != std::string::npos) {
                std::string s = given[0], part;
                given.clear();
                for (char c : s) {
                    if (c == '|') given.push_back(part), part.clear();
                    else part += c;
                }
                given.push_back(part);
            }
        } else {
            for (double x : v.d) given.push_back(tick_text(x));
        }
        if (given.empty()) return std::vector<std::string>(ticks.size());
    }
    static const char* date[3] = {"XDate", "YDate", "ZDate"};
    const Value* format = ax.find(date[k]);
    bool dates = given.empty() && format && format->str && !format->empty();
    for (size_t i = 0; i < ticks.size(); ++i)
        out.push_back(dates ? date_text(ticks[i], format->as_text())
                            : given.empty() ? tick_text(ticks[i]) : given[i % given.size()]);
    return out;
}

void line(const Painter& p, double x1, double y1, double x2, double y2) {
    cairo_move_to(p.cr, x1, y1);
    cairo_line_to(p.cr, x2, y2);
    cairo_stroke(p.cr);
}

// A label object (title and axis labels) drawn at a place the axes decides.
void label(const Painter& p, const Object& ax, const char* slot, double x, double y) {
    Object* t = find_object(ax.number(slot, -1));
    if (!t || !t->on("Visible")) return;
    std::string s = t->get("String").as_text();
    RGB c;
    rgb_of(t->get("Color"), c);
    p.text(s, x, y, t->number("FontSize", 10) * (same_word(slot, "Title") ? 1.1 : 1.0),
           t->word("HorizontalAlignment").c_str(), t->word("VerticalAlignment").c_str(), t->number("Rotation"), c,
           same_word(t->word("FontWeight"), "bold"), t->word("FontName"));
}

void draw_2d_frame(const Painter& p, const Projection& pr, const Object& ax, bool grid_only) {
    static const char* ticks_name[2] = {"XTick", "YTick"};
    static const char* grid_name[2] = {"XGrid", "YGrid"};
    static const char* color_name[2] = {"XColor", "YColor"};
    double fs = ax.number("FontSize", 10);
    double tl = ax.get("TickLength").at(0, 0.01) * std::max(pr.bw, pr.bh);
    bool out = same_word(ax.word("TickDir"), "out");
    cairo_set_dash(p.cr, nullptr, 0, 0);
    double lw = ax.number("LineWidth", 0.5) * p.px_per_pt;
    for (int k = 0; k < 2; ++k) {
        RGB c;
        rgb_of(ax.get(color_name[k]), c);
        const std::vector<double>& ticks = ax.get(ticks_name[k]).d;
        if (grid_only) {
            if (!ax.on(grid_name[k])) continue;
            cairo_save(p.cr);
            cairo_set_source_rgba(p.cr, c.r, c.g, c.b, 0.35);
            p.line_style(ax.word("GridLineStyle"), lw);
            for (double t : ticks) {
                double a = pr.norm(k, t);
                if (!(a >= 0 && a <= 1)) continue;
                double x1, y1, x2, y2;
                pr.device(k == 0 ? a - 0.5 : -0.5, k == 0 ? -0.5 : a - 0.5, x1, y1);
                pr.device(k == 0 ? a - 0.5 : 0.5, k == 0 ? 0.5 : a - 0.5, x2, y2);
                line(p, x1, y1, x2, y2);
            }
            cairo_restore(p.cr);
            continue;
        }
        p.set_color(c);
        cairo_set_line_width(p.cr, lw);
        bool far_side = k == 0 ? same_word(ax.word("XAxisLocation"), "top") : same_word(ax.word("YAxisLocation"), "right");
        double x0 = pr.bx, y0 = pr.by, x1 = pr.bx + pr.bw, y1 = pr.by + pr.bh;
        // The axis line, and its opposite when the box is on.
        if (k == 0) {
            line(p, x0, far_side ? y0 : y1, x1, far_side ? y0 : y1);
            if (ax.on("Box")) line(p, x0, far_side ? y1 : y0, x1, far_side ? y1 : y0);
        } else {
            line(p, far_side ? x1 : x0, y0, far_side ? x1 : x0, y1);
            if (ax.on("Box")) line(p, far_side ? x0 : x1, y0, far_side ? x0 : x1, y1);
        }
        std::vector<std::string> labels = tick_labels(ax, k, ticks);
        // A label that would run into the one before it is left out (its tick stays).
        double last_end = -1e300, gap = fs * p.px_per_pt * 0.6;
        for (size_t i = 0; i < ticks.size(); ++i) {
            double a = pr.norm(k, ticks[i]);
            if (!(a >= -1e-9 && a <= 1 + 1e-9)) continue;
            double px, py;
            pr.device(k == 0 ? a - 0.5 : -0.5, k == 0 ? -0.5 : a - 0.5, px, py);
            double dir = out ? -1 : 1;
            double half = k == 0 ? p.text_width(labels[i], fs) / 2 : fs * p.px_per_pt * 0.6;
            double along = k == 0 ? px : -py;
            bool room = along - half >= last_end + gap;
            if (room) last_end = along + half;
            if (k == 0) {
                double base = far_side ? y0 : y1, sgn = far_side ? 1 : -1;
                line(p, px, base, px, base + sgn * dir * tl);
                if (ax.on("Box")) line(p, px, far_side ? y1 : y0, px, (far_side ? y1 : y0) - sgn * dir * tl);
                if (room)
                    p.text(labels[i], px, base - sgn * (4 + (out ? tl : 0)), fs, "center", far_side ? "bottom" : "top", 0, c);
            } else {
                double base = far_side ? x1 : x0, sgn = far_side ? -1 : 1;
                line(p, base, py, base + sgn * dir * tl, py);
                if (ax.on("Box")) line(p, far_side ? x0 : x1, py, (far_side ? x0 : x1) - sgn * dir * tl, py);
                if (room)
                    p.text(labels[i], base - sgn * (4 + (out ? tl : 0)), py, fs, far_side ? "left" : "right", "middle", 0, c);
            }
        }
    }
}

// The widest y tick label, to place the y label clear of it.
double widest_label(const Painter& p, const Object& ax, int k) {
    static const char* ticks_name[3] = {"XTick", "YTick", "ZTick"};
    const std::vector<double>& ticks = ax.get(ticks_name[k]).d;
    double w = 0;
    for (auto& s : tick_labels(ax, k, ticks)) w = std::max(w, p.text_width(s, ax.number("FontSize", 10)));
    return w;
}

void draw_3d_frame(const Painter& p, const Projection& pr, const Object& ax) {
    RGB c;
    rgb_of(ax.get("XColor"), c);
    double lw = ax.number("LineWidth", 0.5) * p.px_per_pt;
    double fs = ax.number("FontSize", 10);
    // The corner nearest the viewer at the bottom decides which edges carry the ticks.
    double best = -1e300;
    int near = 0;
    for (int cn = 0; cn < 4; ++cn) {
        double sx, sy, d;
        pr.rotate(cn & 1, (cn >> 1) & 1, 0, sx, sy, d);
        if (d > best) best = d, near = cn;
    }
    int nx = near & 1, ny = (near >> 1) & 1;
    auto at = [&](double u, double v, double w, double& x, double& y) {
        double sx, sy, d;
        pr.rotate(u, v, w, sx, sy, d);
        pr.device(sx, sy, x, y);
    };
    cairo_set_line_width(p.cr, lw);
    // The three back planes: the floor, and the two walls away from the viewer.
    static const char* grid[3] = {"XGrid", "YGrid", "ZGrid"};
    static const char* tick[3] = {"XTick", "YTick", "ZTick"};
    double bx = 1 - nx, by = 1 - ny;
    for (int k = 0; k < 3; ++k) {
        const std::vector<double>& ticks = ax.get(tick[k]).d;
        std::vector<std::string> labels = tick_labels(ax, k, ticks);
        for (size_t i = 0; i < ticks.size(); ++i) {
            double a = pr.norm(k, ticks[i]);
            if (!(a >= -1e-9 && a <= 1 + 1e-9)) continue;
            double x1, y1, x2, y2, x3, y3, lx, ly;
            if (ax.on(grid[k])) {
                cairo_set_source_rgba(p.cr, c.r, c.g, c.b, 0.25);
                if (k == 0) {
                    at(a, ny, 0, x1, y1), at(a, by, 0, x2, y2), at(a, by, 1, x3, y3);
                } else if (k == 1) {
                    at(nx, a, 0, x1, y1), at(bx, a, 0, x2, y2), at(bx, a, 1, x3, y3);
                } else {
                    at(bx, ny, a, x1, y1), at(bx, by, a, x2, y2), at(nx, by, a, x3, y3);
                }
                cairo_move_to(p.cr, x1, y1);
                cairo_line_to(p.cr, x2, y2);
                cairo_line_to(p.cr, x3, y3);
                cairo_stroke(p.cr);
            }
            if (k == 0) at(a, ny, 0, lx, ly);
            else if (k == 1) at(nx, a, 0, lx, ly);
            else at(nx, ny == 1 ? 0 : 1, a, lx, ly);
            if (k == 2) at(nx == 1 ? 0 : 1, ny, a, lx, ly);
            if (k == 2) {
                p.text(labels[i], lx - 6, ly, fs, "right", "middle", 0, c);
                continue;
            }
            // x and y labels stand off their edge away from the middle of the floor, so that the
            // two sets do not meet at the corner nearest the viewer.
            double cx, cy, ex, ey;
            at(0.5, 0.5, 0, cx, cy);
            if (k == 0) at(0.5, ny, 0, ex, ey);
            else at(nx, 0.5, 0, ex, ey);
            double dx = ex - cx, dy = ey - cy, len = std::hypot(dx, dy);
            if (len > 0) dx /= len, dy /= len;
            else dx = 0, dy = 1;
            p.text(labels[i], lx + 8 * dx, ly + 8 * dy, fs, dx > 0.35 ? "left" : dx < -0.35 ? "right" : "center",
                   dy > 0.35 ? "top" : dy < -0.35 ? "bottom" : "middle", 0, c);
        }
    }
    p.set_color(c);
    cairo_set_dash(p.cr, nullptr, 0, 0);
    // Edges of the back planes.
    int edges[][6] = {{0, 0, 0, 1, 0, 0}, {0, 1, 0, 1, 1, 0}, {0, 0, 0, 0, 1, 0}, {1, 0, 0, 1, 1, 0}};
    for (auto& e : edges) {
        double x1, y1, x2, y2;
        at(e[0], e[1], e[2], x1, y1), at(e[3], e[4], e[5], x2, y2);
        line(p, x1, y1, x2, y2);
    }
    double x1, y1, x2, y2;
    at(bx, by, 0, x1, y1), at(bx, by, 1, x2, y2);
    line(p, x1, y1, x2, y2);
    at(nx == 1 ? 0 : 1, ny, 0, x1, y1), at(nx == 1 ? 0 : 1, ny, 1, x2, y2);
    line(p, x1, y1, x2, y2);
    at(0.5, ny, 0, x1, y1);
    label(p, ax, "XLabel", x1, y1 + 22);
    at(nx, 0.5, 0, x1, y1);
    label(p, ax, "YLabel", x1, y1 + 22);
    at(nx == 1 ? 0 : 1, ny, 0.5, x1, y1);
    label(p, ax, "ZLabel", x1 - 10 - widest_label(p, ax, 2), y1);
}

// The text of a label slot, empty when there is none.
std::string label_text(const Object& ax, const char* slot) {
    Object* t = find_object(ax.number(slot, -1));
    return t && t->on("Visible") ? t->get("String").as_text() : std::string();
}

// A visible axes' Position is the room it has: the plot box is what is left inside it once the
// tick labels, axis labels and title have their place, so that nothing is cut off at the edge of
// the figure or runs into a neighbouring axes.
struct Room {
    double left, right, bottom, top;
};

Room room_for_labels(const Painter& p, const Projection& pr, const Object& ax) {
    double fs = ax.number("FontSize", 10) * p.px_per_pt;
    double line = fs * 1.3;
    bool has_title = !label_text(ax, "Title").empty();
    double left, right, bottom, top;
    if (pr.is3d) {
        // The x and y labels stand off the floor's edges at the sides too.
        double side = std::max(widest_label(p, ax, 0), widest_label(p, ax, 1)) + 12;
        left = std::max(widest_label(p, ax, 2) + 14 + (label_text(ax, "ZLabel").empty() ? 0 : line + 4), side);
        right = side;
        bottom = line + 8 + (label_text(ax, "XLabel").empty() && label_text(ax, "YLabel").empty() ? 0 : line + 8);
        top = has_title ? line * 1.2 + 10 : 8;
    } else {
        double y_room = widest_label(p, ax, 1) + 8 + (label_text(ax, "YLabel").empty() ? 0 : line + 4) + 4;
        double x_room = line + 6 + (label_text(ax, "XLabel").empty() ? 0 : line + 2) + 2;
        bool y_right = same_word(ax.word("YAxisLocation"), "right");
        bool x_top = same_word(ax.word("XAxisLocation"), "top");
        double half_x = widest_label(p, ax, 0) / 2 + 4;
        left = y_right ? half_x : y_room;
        right = y_right ? y_room : half_x;
        bottom = x_top ? fs * 0.8 : x_room;
        top = (x_top ? x_room : fs * 0.8) + (has_title ? line * 1.2 + 6 : 0);
    }
    return Room{left, right, bottom, top};
}

void leave_room_for_labels(const Painter& p, Projection& pr, Object& ax) {
    Room r = room_for_labels(p, pr, ax);
    // Axes laid over one another in the same place (two y axes) keep the same plot box.
    if (Object* fig = find_object(ax.parent))
        for (double h : fig->children) {
            Object* other = find_object(h);
            if (!other || other == &ax || other->kind != Kind::axes || !other->on("Visible")) continue;
            if (other->get("Position").d != ax.get("Position").d || other->word("Units") != ax.word("Units")) continue;
            update_axes_auto(*other);
            Projection po;
            po.setup(*other, 0, 0);
            Room q = room_for_labels(p, po, *other);
            r.left = std::max(r.left, q.left), r.right = std::max(r.right, q.right);
            r.bottom = std::max(r.bottom, q.bottom), r.top = std::max(r.top, q.top);
        }
    double left = r.left, right = r.right, bottom = r.bottom, top = r.top;
    // A small axes keeps at least a third of its room for the plot itself.
    double sx = std::min(1.0, pr.bw * 2 / 3 / std::max(left + right, 1e-9));
    double sy = std::min(1.0, pr.bh * 2 / 3 / std::max(top + bottom, 1e-9));
    pr.bx += left * sx;
    pr.bw -= (left + right) * sx;
    pr.by += top * sy;
    pr.bh -= (top + bottom) * sy;
}

// The plot box made square (axis equal or square, and pies), centred in the room it had.
void make_square(Projection& pr) {
    double side = std::min(pr.bw, pr.bh);
    pr.bx += (pr.bw - side) / 2;
    pr.by += (pr.bh - side) / 2;
    pr.bw = pr.bh = side;
}

// Automatic ticks as many as the plot box has room for: about one per four label widths across,
// one per three text heights up.
void fit_ticks_to_room(const Painter& p, const Projection& pr, Object& ax) {
    static const char* tick[2] = {"XTick", "YTick"};
    static const char* mode[2] = {"XTickMode", "YTickMode"};
    static const char* lim[2] = {"XLim", "YLim"};
    static const char* scale[2] = {"XScale", "YScale"};
    double text_h = ax.number("FontSize", 10) * p.px_per_pt;
    for (int k = 0; k < 2; ++k) {
        if (!same_word(ax.word(mode[k]), "auto")) continue;
        double per_tick = k == 0 ? 2.5 * std::max(widest_label(p, ax, 0), text_h) : 3 * text_h;
        double room = k == 0 ? pr.bw : pr.bh;
        double target = std::min(5.0, std::max(1.5, room / per_tick));
        if (target >= 5.0) continue;
        const Value& l = ax.get(lim[k]);
        bool log = same_word(ax.word(scale[k]), "log");
        std::vector<double> t = ticks_for(l.at(0), l.at(1, 1), log, target);
        if (t.size() >= 2) ax.props[tick[k]] = Value::row(t);
    }
}

// True when everything the axes shows is a pie, which needs neither frame nor ticks.
bool pies_only(const Object& ax) {
    bool any = false;
    for (double h : ax.children) {
        const Object* o = find_object(h);
        if (!o || o->hidden_child) continue;
        std::string chart = o->word("ChartType");
        if (o->kind != Kind::line || !(same_word(chart, "pie") || same_word(chart, "pie3"))) return false;
        any = true;
    }
    return any;
}

// True when everything the axes shows is a polar curve.
bool polar_only(const Object& ax) {
    bool any = false;
    for (double h : ax.children) {
        const Object* o = find_object(h);
        if (!o || o->hidden_child) continue;
        if (o->kind != Kind::line || !same_word(o->word("ChartType"), "polar")) return false;
        any = true;
    }
    return any;
}

// The grid of a polar axes: circles at round radii with their values, and spokes every 30
// degrees with their angles, about the origin.
void draw_polar_grid(const Painter& p, const Projection& pr, const Object& ax) {
    double cx, cy, ex, ey;
    if (!pr.point(0, 0, NAN, cx, cy)) return;
    double reach = std::max(std::max(std::fabs(pr.lo[0]), std::fabs(pr.hi[0])),
                            std::max(std::fabs(pr.lo[1]), std::fabs(pr.hi[1])));
    std::vector<double> radii = ticks_for(0, reach, false, 4);
    if (radii.empty() || !pr.point(radii.back(), 0, NAN, ex, ey)) return;
    double unit = (ex - cx) / radii.back(), fs = ax.number("FontSize", 10);
    RGB c;
    rgb_of(ax.get("XColor"), c);
    double outer = radii.back() * unit;
    cairo_save(p.cr);
    cairo_set_line_width(p.cr, ax.number("LineWidth", 0.5) * p.px_per_pt);
    for (double r : radii) {
        if (r <= 0) continue;
        cairo_new_sub_path(p.cr);
        cairo_arc(p.cr, cx, cy, r * unit, 0, 2 * M_PI);
        cairo_set_source_rgba(p.cr, c.r, c.g, c.b, r == radii.back() ? 1.0 : 0.3);
        cairo_stroke(p.cr);
        char text[32];
        std::snprintf(text, sizeof text, "%g", r);
        p.text(text, cx + r * unit * 0.26 + 2, cy - r * unit * 0.97, fs * 0.9, "left", "bottom", 0, c);
    }
    for (int d = 0; d < 360; d += 30) {
        double t = d * M_PI / 180;
        cairo_move_to(p.cr, cx, cy);
        cairo_line_to(p.cr, cx + outer * std::cos(t), cy - outer * std::sin(t));
        cairo_set_source_rgba(p.cr, c.r, c.g, c.b, 0.3);
        cairo_stroke(p.cr);
        char text[16];
        std::snprintf(text, sizeof text, "%d", d);
        double lx = cx + (outer + 6) * std::cos(t), ly = cy - (outer + 6) * std::sin(t);
        p.text(text, lx, ly, fs * 0.9, std::cos(t) > 0.3 ? "left" : std::cos(t) < -0.3 ? "right" : "center",
               std::sin(t) > 0.3 ? "bottom" : std::sin(t) < -0.3 ? "top" : "middle", 0, c);
    }
    cairo_restore(p.cr);
}

}  // namespace

void draw_axes(const Painter& outer, Object& ax, double fig_w, double fig_h) {
    update_axes_auto(ax);
    Projection pr;
    pr.setup(ax, fig_w, fig_h);
    Painter p = outer;
    bool polar = polar_only(ax);
    bool pie = pies_only(ax) || polar;
    if (ax.on("Visible")) leave_room_for_labels(p, pr, ax);
    // A polar grid keeps room around its circle for the angles.
    double ring = polar ? ax.number("FontSize", 10) * p.px_per_pt * 1.8 : 0;
    pr.bx += ring, pr.by += ring, pr.bw -= 2 * ring, pr.bh -= 2 * ring;
    if (pie || ax.on("square")) make_square(pr);
    if (ax.on("Visible") && !pr.is3d) fit_ticks_to_room(p, pr, ax);
    const Value& clim = ax.get("CLim");
    p.clim[0] = clim.at(0, 0);
    p.clim[1] = clim.at(1, 1);
    // An invisible axes shows its objects without background, frame, labels or legend.
    bool visible = ax.on("Visible") && !pie;
    RGB bg;
    if (visible && !pr.is3d && rgb_of(ax.get("Color"), bg)) {
        p.set_color(bg);
        cairo_rectangle(p.cr, pr.bx, pr.by, pr.bw, pr.bh);
        cairo_fill(p.cr);
    }
    if (visible && !pr.is3d) draw_2d_frame(p, pr, ax, true);
    if (visible && pr.is3d) draw_3d_frame(p, pr, ax);
    if (polar && ax.on("Visible")) draw_polar_grid(p, pr, ax);
    cairo_save(p.cr);
    if (!pr.is3d) {
        cairo_rectangle(p.cr, pr.bx, pr.by, pr.bw, pr.bh);
        cairo_clip(p.cr);
    }
    std::vector<double> kids(ax.children.rbegin(), ax.children.rend());
    for (double h : kids)
        if (Object* o = find_object(h))
            if (!o->hidden_child && o->on("Visible")) draw_object(p, pr, *o);
    cairo_restore(p.cr);
    if (pie && ax.on("Visible")) {
        label(p, ax, "Title", pr.bx + pr.bw / 2, pr.by - 6 - ring);
        draw_legend(p, pr, ax);
    }
    if (!visible) return;
    if (!pr.is3d) {
        draw_2d_frame(p, pr, ax, false);
        double fs = ax.number("FontSize", 10) * p.px_per_pt;
        // Above tick labels at the top, when the x axis is there.
        double over = same_word(ax.word("XAxisLocation"), "top") ? fs * 1.3 + 6 : 0;
        label(p, ax, "Title", pr.bx + pr.bw / 2, pr.by - 6 - over);
        label(p, ax, "XLabel", pr.bx + pr.bw / 2, pr.by + pr.bh + 8 + fs * 1.3);
        label(p, ax, "YLabel", pr.bx - 10 - widest_label(p, ax, 1), pr.by + pr.bh / 2);
    } else {
        label(p, ax, "Title", pr.bx + pr.bw / 2, pr.by - 6);
    }
    draw_legend(p, pr, ax);
}

}  // namespace ae
