// Reading and writing properties: defaults, type checks and the properties with side effects.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <strings.h>
#include <vector>

#include "engine/objects.h"
#include "engine/property_table.h"

namespace ae {

namespace {

// The default colormap, the same 64 colours as the library's jet: through dark blue, blue, cyan,
// yellow, red and dark red, one ramp (up, flat, down) laid on the green channel and shifted a
// quarter of the map each way for red and blue.
Value default_colormap() {
    const int n = 64, q = (n + 3) / 4;
    std::vector<double> ramp;
    for (int k = 1; k <= q; ++k) ramp.push_back(static_cast<double>(k) / q);
    for (int k = 1; k < q; ++k) ramp.push_back(1.0);
    for (int k = q; k >= 1; --k) ramp.push_back(static_cast<double>(k) / q);
    Value m = Value::matrix(n, 3);
    std::fill(m.d.begin(), m.d.end(), 0.0);
    const int start = (q + 1) / 2 - (n % 4 == 1 ? 1 : 0);
    for (int k = 0; k < static_cast<int>(ramp.size()); ++k) {
        const int g = start + k + 1;
        const int at[3] = {g + q, g, g - q};
        for (int c = 0; c < 3; ++c)
            if (at[c] >= 1 && at[c] <= n) m.d[c * n + at[c] - 1] = ramp[k];
    }
    return m;
}

// The words of a rule as a list.
bool word_in(const char* words, const std::string& s, std::string& canonical) {
    if (!words) return false;
    const char* p = words;
    while (*p) {
        const char* bar = std::strchr(p, '|');
        size_t len = bar ? static_cast<size_t>(bar - p) : std::strlen(p);
        if (s.size() == len && strncasecmp(p, s.c_str(), len) == 0) {
            canonical.assign(p, len);
            return true;
        }
        if (!bar) break;
        p = bar + 1;
    }
    return false;
}

std::string words_listed(const char* words) {
    std::string s(words ? words : "");
    for (char& c : s)
        if (c == '|') c = ' ';
    return s;
}

bool complain(const Object& o, const char* name, const char* what) {
    report_error("set: the %s property %s must be %s", kind_name(o.kind), name, what);
    return false;
}

Value rgb_value(const double rgb[3]) { return Value::row({rgb[0], rgb[1], rgb[2]}); }

bool is_rgb(const Value& v) {
    if (v.str || v.count() != 3) return false;
    for (double x : v.d)
        if (!(x >= 0.0 && x <= 1.0)) return false;
    return true;
}

// Checks v against the rule and gives the value to store.
bool checked(const Object& o, const PropRule& s, const Value& v, Value& out) {
    std::string w;
    switch (s.type) {
        case PType::any:
            out = v;
            return true;
        case PType::readonly:
            return complain(o, s.name, "left to the engine (it is read-only)");
        case PType::number:
            if (v.str || v.count() != 1) return complain(o, s.name, "a number");
            out = v;
            return true;
        case PType::vector:
            if (v.str || (s.size && v.count() != s.size)) {
                std::string what = s.size ? std::to_string(s.size) + " numbers" : std::string("numeric");
                return complain(o, s.name, what.c_str());
            }
            out = Value::row(v.d);
            return true;
        case PType::data:
            if (v.str) return complain(o, s.name, "numeric");
            out = v;
            return true;
        case PType::color:
        case PType::colorword: {
            double rgb[3];
            if (v.str && s.type == PType::colorword && word_in(s.words, v.as_text(), w)) {
                out = Value::text(w);
                return true;
            }
            if (v.str && color_from_text(v.as_text(), rgb) && !same_word(v.as_text(), "none")) {
                out = rgb_value(rgb);
                return true;
            }
            if (is_rgb(v)) {
                out = Value::row(v.d);
                return true;
            }
            std::string what = "an RGB triple of values from 0 to 1 or a colour name";
            if (s.type == PType::colorword) what += std::string(" or one of: ") + words_listed(s.words);
            return complain(o, s.name, what.c_str());
        }
        case PType::word:
            if (v.str && word_in(s.words, v.as_text(), w)) {
                out = Value::text(w);
                return true;
            }
            return complain(o, s.name, (std::string("one of: ") + words_listed(s.words)).c_str());
        case PType::text:
            if (!v.str && !v.empty()) return complain(o, s.name, "text");
            out = v;
            out.str = true;
            return true;
        case PType::handle:
            if (v.str || v.count() > 1 || (v.count() == 1 && !find_object(v.d[0])))
                return complain(o, s.name, "a valid handle");
            out = v;
            return true;
    }
    return false;
}

void make_label(Object& ax, const char* slot, const char* valign, double rotation) {
    Object& t = make_object(Kind::text, ax.handle);
    // Labels are not listed among the axes' children, but die with it.
    t.hidden_child = true;
    t.props["HorizontalAlignment"] = Value::text("center");
    t.props["VerticalAlignment"] = Value::text(valign);
    t.props["Rotation"] = Value::num(rotation);
    ax.props[slot] = Value::num(t.handle);
}

Value children_of(const Object& o) {
    std::vector<double> v;
    for (double c : o.children) {
        Object* k = find_object(c);
        if (k && !k->hidden_child) v.push_back(c);
    }
    Value out = Value::matrix(static_cast<int>(v.size()), v.empty() ? 0 : 1);
    out.d = v;
    return out;
}

bool write_file_property(Object& o, const Value& v) {
    Object* f = figure_of(o.handle);
    if (!f) {
        report_error("set: only figures and their objects can be written to a file");
        return false;
    }
    if (!v.str) return true;  // a number asks for the printer, which a headless engine lacks
    return write_figure(*f, v.as_text());
}

// The plotting code names colours, markers and line styles by number: a colour -100 - k is
// letter k of "ymcrgbwk" taken from the axes' colour order (blue, green, red, cyan, magenta,
// yellow, black, then white), a marker 0..12 one of ". o x + * s d ^ v > < p h" and a style
// 0..3 one of "- : -. --"; -1 is none for both.
bool coded_value(const Object& o, const char* name, const Value& v, Value& out) {
    if (v.str || v.count() != 1) return false;
    double code = v.d[0];
    if (same_word(name, "Marker") || same_word(name, "LineStyle")) {
        static const char* marks[] = {".", "o", "x", "+", "*", "s", "d", "^", "v", ">", "<", "p", "h"};
        static const char* styles[] = {"-", ":", "-.", "--"};
        bool marker = same_word(name, "Marker");
        int k = static_cast<int>(code), count = marker ? 13 : 4;
        if (code != k || k < -1 || k >= count) return false;
        out = Value::text(k < 0 ? "none" : marker ? marks[k] : styles[k]);
        return true;
    }
    if (same_word(name, "Color") && code <= -100 && code >= -107 && code == std::floor(code)) {
        static const int place[8] = {5, 4, 3, 2, 1, 0, 7, 6};
        static const double letters[8][3] = {{1, 1, 0}, {1, 0, 1}, {0, 1, 1}, {1, 0, 0},
                                             {0, 1, 0}, {0, 0, 1}, {1, 1, 1}, {0, 0, 0}};
        int k = static_cast<int>(-100 - code);
        Object* ax = find_object(o.parent);
        const Value* order = ax && ax->kind == Kind::axes ? ax->find("ColorOrder") : nullptr;
        int row = place[k];
        if (order && order->cols() == 3 && row < order->rows() && k != 6) {
            int n = order->rows();
            out = Value::row({order->d[row], order->d[n + row], order->d[2 * n + row]});
        } else {
            out = Value::row({letters[k][0], letters[k][1], letters[k][2]});
        }
        return true;
    }
    return false;
}

// An axes' own properties back to their defaults; its place, its labels and its children stay.
void reset_axes(Object& ax) {
    static const char* kept[] = {"Position", "Units", "Parent", "Title", "XLabel", "YLabel", "ZLabel", "Tag",
                                 "UserData", "Color", "NextPlot"};
    for (const PropRule* const* list = rules_of(ax.kind); *list; ++list)
        for (const PropRule* r = *list; r->name; ++r) {
            bool keep = false;
            for (const char* k : kept) keep = keep || same_word(r->name, k);
            if (!keep) ax.props[r->name] = parse_default(r->def);
        }
}

// A text object made the axes' title or axis label: it leaves the axes' children, and the label
// it replaces is deleted.
void adopt_label(Object& ax, const char* slot, Object& t) {
    double old = ax.number(slot, -1);
    if (t.parent != ax.handle) reparent(t.handle, ax.handle);
    t.hidden_child = true;
    bool title = same_word(slot, "Title"), x = same_word(slot, "XLabel");
    if (same_word(t.word("HorizontalAlignment"), "left")) t.props["HorizontalAlignment"] = Value::text("center");
    if (same_word(t.word("VerticalAlignment"), "middle"))
        t.props["VerticalAlignment"] = Value::text(title ? "bottom" : x ? "top" : "bottom");
    if (!title && !x && t.number("Rotation") == 0) t.props["Rotation"] = Value::num(90);
    ax.props[slot] = Value::num(t.handle);
    if (old != t.handle && find_object(old)) delete_object(old);
}

// Properties whose writes do more than store the value. True when handled.
bool special_set(Object& o, const char* name, const Value& v, bool& ok) {
    ok = true;
    double h = o.handle;
    if (same_word(name, "Kill")) {
        delete_object(h);
    } else if (same_word(name, "KillChilds") || same_word(name, "Clear") || same_word(name, "KillSerieses")) {
        std::vector<double> kids;
        for (double c : o.children)
            if (find_object(c) && !find_object(c)->hidden_child) kids.push_back(c);
        for (double c : kids) delete_object(c);
    } else if (same_word(name, "Call")) {
        if (Object* f = figure_of(h)) f->props["CurrentObject"] = Value::num(h);
        bool control = o.kind == Kind::uicontrol || o.kind == Kind::uimenu || o.kind == Kind::uicontextmenu;
        run_object_callback(h, control ? "Callback" : "ButtonDownFcn");
    } else if (same_word(name, "Store") || same_word(name, "Print")) {
        ok = write_file_property(o, v);
    } else if (same_word(name, "PropertyNames") || same_word(name, "Refresh") || same_word(name, "Show") ||
               same_word(name, "NeedShow")) {
        // Nothing to show headless; PropertyNames is answered by get.
    } else if (same_word(name, "Parent")) {
        if (v.count() != 1 || !find_object(v.d[0])) {
            ok = complain(o, "Parent", "a valid handle");
        } else {
            Object& p = *find_object(v.d[0]);
            bool fits = o.kind == Kind::figure ? p.kind == Kind::root
                        : o.kind == Kind::axes || o.kind == Kind::uicontrol || o.kind == Kind::uimenu ||
                                o.kind == Kind::uicontextmenu
                            ? p.kind == Kind::figure || (o.kind == Kind::uimenu && p.kind == Kind::uimenu)
                            : p.kind == Kind::axes;
            if (!fits && o.kind == Kind::axes && p.kind == Kind::root && embedded_mode) {
                // An axes in a foreign window stays in the figure that hosts it.
            } else if (!fits) ok = complain(o, "Parent", "an object that can hold it");
            else reparent(h, p.handle);
        }
    } else if (o.kind == Kind::root && same_word(name, "CurrentFigure")) {
        if (v.count() != 1 || !find_object(v.d[0]) || find_object(v.d[0])->kind != Kind::figure)
            ok = complain(o, "CurrentFigure", "a figure handle");
        else
            o.props["CurrentFigure"] = v;
    } else if (o.kind == Kind::figure && same_word(name, "CurrentAxes")) {
        Object* a = v.count() == 1 ? find_object(v.d[0]) : nullptr;
        if (v.empty() || (v.count() == 1 && v.d[0] == 0)) o.props["CurrentAxes"] = Value();
        else if (!a || a->kind != Kind::axes || a->parent != h) ok = complain(o, "CurrentAxes", "an axes of the figure");
        else o.props["CurrentAxes"] = v;
    } else if (o.kind == Kind::figure && (same_word(name, "Colormap") || same_word(name, "ColorMap"))) {
        bool fits = !v.str && v.cols() == 3 && v.rows() >= 1 && v.nd == 2;
        for (double x : v.d) fits = fits && x >= 0.0 && x <= 1.0;
        if (!fits) ok = complain(o, name, "an n-by-3 matrix of values from 0 to 1");
        else o.props["Colormap"] = v;
    } else if (o.kind == Kind::axes && same_word(name, "View") && !v.str && v.count() == 1) {
        // 2 is the plane view and 3 the standard 3-D view; 2.5 is the plane view of a mesh axes
        // and 3.5 keeps the view it has, so a grid chart keeps the view it asked for.
        double w = v.d[0];
        if (w == 2 || w == 2.5) o.props["View"] = Value::row({0, 90});
        else if (w == 3) o.props["View"] = Value::row({-37.5, 30});
        else if (w != 3.5) ok = complain(o, "View", "[azimuth elevation] or one of 2, 2.5, 3, 3.5");
    } else if (o.kind == Kind::patch && same_word(name, "Color")) {
        // A patch's colour is the colour of its face.
        ok = set_property(o, "FaceColor", v);
    } else if (o.kind == Kind::axes && same_word(name, "Reset")) {
        reset_axes(o);
    } else if (o.kind == Kind::axes && !v.str && v.count() == 1 && find_object(v.d[0]) &&
               find_object(v.d[0])->kind == Kind::text &&
               (same_word(name, "Title") || same_word(name, "XLabel") || same_word(name, "YLabel") ||
                same_word(name, "ZLabel"))) {
        adopt_label(o, find_rule(Kind::axes, name)->name, *find_object(v.d[0]));
    } else if (o.kind == Kind::line && same_word(name, "ChartType") && (v.is_text("text") || v.is_text("text3"))) {
        // A line of the chart "text" is a text object: it takes the text kind and its defaults.
        o.kind = Kind::text;
        o.props.clear();
        apply_defaults(o);
        o.props["ChartType"] = v;
    } else if (o.kind == Kind::axes && v.str &&
               (same_word(name, "Title") || same_word(name, "XLabel") || same_word(name, "YLabel") ||
                same_word(name, "ZLabel"))) {
        // A text in place of a handle is the label's string.
        if (Object* t = find_object(o.number(name, -1))) t->props["String"] = v;
    } else {
        return false;
    }
    return true;
}

// The mode property that a write of `name` turns to manual, if any.
const char* mode_of(const char* name) {
    static const char* pairs[][2] = {{"XLim", "XLimMode"},   {"YLim", "YLimMode"},   {"ZLim", "ZLimMode"},
                                     {"CLim", "CLimMode"},   {"XTick", "XTickMode"}, {"YTick", "YTickMode"},
                                     {"ZTick", "ZTickMode"}, {"XTickLabel", "XTickLabelMode"},
                                     {"YTickLabel", "YTickLabelMode"}, {"ZTickLabel", "ZTickLabelMode"},
                                     {"DataAspectRatio", "DataAspectRatioMode"},
                                     {"PlotBoxAspectRatio", "PlotBoxAspectRatioMode"},
                                     {"TickDir", "TickDirMode"}};
    for (auto& p : pairs)
        if (same_word(name, p[0])) return p[1];
    return nullptr;
}

}  // namespace

bool color_from_text(const std::string& s, double rgb[3]) {
    static const struct {
        const char* word;
        const char* letter;
        double r, g, b;
    } colors[] = {{"yellow", "y", 1, 1, 0}, {"magenta", "m", 1, 0, 1}, {"cyan", "c", 0, 1, 1},
                  {"red", "r", 1, 0, 0},    {"green", "g", 0, 1, 0},   {"blue", "b", 0, 0, 1},
                  {"white", "w", 1, 1, 1},  {"black", "k", 0, 0, 0},   {"none", "none", 0, 0, 0}};
    for (auto& c : colors)
        if (same_word(s, c.word) || same_word(s, c.letter)) {
            rgb[0] = c.r;
            rgb[1] = c.g;
            rgb[2] = c.b;
            return true;
        }
    return false;
}

void apply_defaults(Object& o) {
    for (const PropRule* const* list = rules_of(o.kind); *list; ++list)
        for (const PropRule* s = *list; s->name; ++s) o.props[s->name] = parse_default(s->def);
    if (o.kind == Kind::figure) o.props["Colormap"] = default_colormap();
    if (o.kind == Kind::axes) {
        make_label(o, "Title", "bottom", 0);
        make_label(o, "XLabel", "top", 0);
        make_label(o, "YLabel", "bottom", 90);
        make_label(o, "ZLabel", "bottom", 90);
    }
}

bool set_property(Object& o, const char* name, const Value& v) {
    bool ok;
    if (special_set(o, name, v, ok)) return ok;
    const PropRule* s = find_rule(o.kind, name);
    if (!s) {
        // A property the kind does not know is the program's own, kept as given.
        o.props[name] = v;
        return true;
    }
    Value stored;
    if (!coded_value(o, s->name, v, stored) && !checked(o, *s, v, stored)) return false;
    o.props[s->name] = stored;
    if (const char* mode = mode_of(s->name)) o.props[mode] = Value::text("manual");
    if (o.kind == Kind::axes && same_word(s->name, "LegendString"))
        o.props["Legend"] = Value::text(stored.empty() ? "off" : "on");
    return true;
}

bool get_property(Object& o, const char* name, Value& out) {
    if (same_word(name, "Type")) {
        out = Value::text(kind_name(o.kind));
    } else if (same_word(name, "Parent")) {
        out = o.kind == Kind::root ? Value() : Value::num(o.parent);
    } else if (same_word(name, "Children")) {
        out = children_of(o);
    } else if (same_word(name, "PropertyNames")) {
        out = Value::text(property_names(o));
    } else if (o.kind == Kind::root && same_word(name, "CurrentFigure")) {
        Object* f = current_figure(false);
        out = f ? Value::num(f->handle) : Value();
    } else if ((o.kind == Kind::figure || o.kind == Kind::axes) && same_word(name, "Capture")) {
        out = capture_figure(*figure_of(o.handle));
    } else if (o.kind == Kind::figure && same_word(name, "ColorMap")) {
        out = o.get("Colormap");
    } else {
        if (o.kind == Kind::axes) update_axes_auto(o);
        const Value* v = o.find(name);
        // The library keeps two marks of its own on objects; unset, they read as empty.
        if (!v && (same_word(name, "CellString") || same_word(name, "CDataIsDouble"))) {
            out = Value();
            return true;
        }
        if (!v) {
            report_error("get: a %s has no property '%s'", kind_name(o.kind), name);
            return false;
        }
        out = *v;
    }
    return true;
}

std::string property_names(const Object& o) {
    std::string s;
    for (const PropRule* const* list = rules_of(o.kind); *list; ++list)
        for (const PropRule* p = *list; p->name; ++p) {
            if (!s.empty()) s += ' ';
            s += p->name;
        }
    return s;
}

}  // namespace ae
