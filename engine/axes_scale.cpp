// Automatic limits, ticks and colour limits of an axes, found from the objects it holds.
#include <algorithm>
#include <cmath>
#include <limits>

#include "engine/objects.h"
#include "engine/render_internal.h"

namespace ae {

namespace {

struct Extent {
    double lo = std::numeric_limits<double>::infinity();
    double hi = -std::numeric_limits<double>::infinity();
    double lo_pos = std::numeric_limits<double>::infinity();  // least positive value, for log axes
    void add(double v) {
        if (!std::isfinite(v)) return;
        lo = std::min(lo, v);
        hi = std::max(hi, v);
        if (v > 0) lo_pos = std::min(lo_pos, v);
    }
    void add(const std::vector<double>& v) {
        for (double x : v) add(x);
    }
    bool valid() const { return lo <= hi; }
};

// 1..n, for data left out.
std::vector<double> counting(int n) {
    std::vector<double> v(n);
    for (int k = 0; k < n; ++k) v[k] = k + 1;
    return v;
}

void gather(const Object& o, Extent e[3], Extent& c, bool& image_only) {
    const Value& x = o.get("XData");
    const Value& y = o.get("YData");
    const Value& z = o.get("ZData");
    switch (o.kind) {
        case Kind::line: {
            image_only = false;
            std::string chart = o.word("ChartType");
            std::vector<double> xs = x.empty() ? counting(y.count()) : x.d, ys = y.d;
            if (same_word(chart, "pie") || same_word(chart, "pie3")) {
                for (int k = 0; k < 2; ++k) e[k].add(-1.3), e[k].add(1.3);
                break;
            }
            if (same_word(chart, "polar")) polar_to_plane(xs, ys);
            if (same_word(chart, "barh") || same_word(chart, "bar3h")) {
                double w = bar_width(xs);
                for (double v : xs) e[1].add(v - w / 2), e[1].add(v + w / 2);
                e[0].add(ys);
                e[0].add(0.0);
                break;
            }
            e[0].add(xs);
            e[1].add(ys);
            e[2].add(z.d);
            // Scatter colours given as values take part in the colour limits.
            const Value& mc = o.get("MarkerColor");
            if (!mc.str && mc.count() > 1 && mc.count() == y.count() && !(mc.cols() == 3 && mc.rows() == y.count()))
                c.add(mc.d);
            if (same_word(chart, "stem") || same_word(chart, "bar") || same_word(chart, "bar3") ||
                same_word(chart, "area"))
                e[1].add(0.0);
            if ((same_word(chart, "bar") || same_word(chart, "bar3")) && o.is_text_prop("Stacktype", "stacked")) {
                // Stacked bars reach the sums of the series below them.
                BarPlace place = bar_place(o);
                for (size_t k = 0; k < ys.size() && k < place.base.size(); ++k) e[1].add(place.base[k] + ys[k]);
            }
            if (same_word(chart, "bar") || same_word(chart, "bar3")) {
                double w = bar_width(x.empty() ? counting(y.count()) : x.d);
                for (double v : (x.empty() ? counting(y.count()) : x.d)) {
                    e[0].add(v - w / 2);
                    e[0].add(v + w / 2);
                }
            }
            break;
        }
        case Kind::patch: {
            image_only = false;
            const Value& vert = o.get("Vertices");
            if (!o.get("Faces").empty() && !vert.empty()) {
                int n = vert.rows();
                for (int i = 0; i < n; ++i)
                    for (int k = 0; k < std::min(3, vert.cols()); ++k) e[k].add(vert.d[k * n + i]);
            } else {
                e[0].add(x.d);
                e[1].add(y.d);
                e[2].add(z.d);
            }
            const Value& cd = o.get("CData").empty() ? o.get("FaceVertexCData") : o.get("CData");
            if (cd.cols() != 3 || cd.nd > 2) c.add(cd.d);
            break;
        }
        case Kind::surface: {
            image_only = false;
            int m = z.rows(), n = z.cols();
            e[0].add(x.empty() ? counting(n) : x.d);
            e[1].add(y.empty() ? counting(m) : y.d);
            e[2].add(z.d);
            const Value& cd = o.get("CData");
            if (same_word(o.word("CDataMapping"), "scaled")) c.add(cd.empty() ? z.d : cd.d);
            break;
        }
        case Kind::image: {
            const Value& cd = o.get("CData");
            int m = cd.rows(), n = cd.nd > 2 ? cd.dims[1] : cd.cols();
            if (!m || !n) break;
            double x1 = x.empty() ? 1 : x.d.front(), x2 = x.empty() ? n : x.d.back();
            double y1 = y.empty() ? 1 : y.d.front(), y2 = y.empty() ? m : y.d.back();
            double dx = n > 1 ? (x2 - x1) / (n - 1) : 1, dy = m > 1 ? (y2 - y1) / (m - 1) : 1;
            e[0].add(x1 - dx / 2);
            e[0].add(x2 + dx / 2);
            e[1].add(y1 - dy / 2);
            e[1].add(y2 + dy / 2);
            if (same_word(o.word("CDataMapping"), "scaled") && cd.nd == 2) c.add(cd.d);
            break;
        }
        default:
            break;
    }
}

}  // namespace

double nice_step(double range, double target) {
    if (!(range > 0) || !std::isfinite(range)) return 1.0;
    double raw = range / target;
    double mag = std::pow(10.0, std::floor(std::log10(raw)));
    double norm = raw / mag;
    double step = norm < 1.5 ? 1 : norm < 3 ? 2 : norm < 7 ? 5 : 10;
    return step * mag;
}

double bar_width(const std::vector<double>& x) {
    double w = std::numeric_limits<double>::infinity();
    for (size_t k = 1; k < x.size(); ++k)
        if (std::isfinite(x[k] - x[k - 1]) && std::fabs(x[k] - x[k - 1]) > 0) w = std::min(w, std::fabs(x[k] - x[k - 1]));
    return std::isfinite(w) ? 0.8 * w : 0.8;
}

std::vector<double> ticks_for(double lo, double hi, bool log, double target) {
    std::vector<double> t;
    if (!(hi > lo) || !std::isfinite(lo) || !std::isfinite(hi) || !std::isfinite(hi - lo)) return t;
    if (log) {
        // Limits that are not both positive have no decades to mark.
        if (!(lo > 0)) return t;
        // Decades as doubles first: both ends lie within about 650 decades of each other.
        const double first = std::ceil(std::log10(lo) - 1e-9), last = std::floor(std::log10(hi) + 1e-9);
        if (!(last >= first) || last - first > 1000) return t;
        const int a = static_cast<int>(first), b = static_cast<int>(last);
        const int every = std::max(1, (b - a + 1) / 8 + ((b - a + 1) % 8 ? 1 : 0));
        for (int k = a; k <= b; k += every) t.push_back(std::pow(10.0, k));
        return t;
    }
    double step = nice_step(hi - lo, target);
    double first = std::ceil(lo / step - 1e-9) * step;
    // Never more than a few hundred: a step lost in the rounding of huge limits would not move on.
    for (int k = 0; k < 500; ++k) {
        double v = first + k * step;
        if (v > hi + step * 1e-9) break;
        t.push_back(std::fabs(v) < step * 1e-9 ? 0.0 : v);
    }
    return t;
}

void update_axes_auto(Object& ax) {
    Extent e[3], c;
    bool image_only = true;
    bool any = false;
    bool all_polar = true;
    for (double h : ax.children) {
        Object* o = find_object(h);
        if (!o || o->hidden_child || o->kind == Kind::text) continue;
        gather(*o, e, c, image_only);
        all_polar = all_polar && o->kind == Kind::line && same_word(o->word("ChartType"), "polar");
        any = true;
    }
    // Polar curves are shown about the origin on equal axes.
    if (any && all_polar && e[0].valid() && e[1].valid()) {
        double reach = std::max(std::max(std::fabs(e[0].lo), std::fabs(e[0].hi)),
                                std::max(std::fabs(e[1].lo), std::fabs(e[1].hi)));
        if (reach > 0) {
            double step = nice_step(reach, 4);
            reach = std::ceil(reach / step - 1e-9) * step;
            for (int k = 0; k < 2; ++k) e[k].lo = -reach, e[k].hi = reach;
        }
    }
    static const char* lim[3] = {"XLim", "YLim", "ZLim"};
    static const char* limmode[3] = {"XLimMode", "YLimMode", "ZLimMode"};
    static const char* scale[3] = {"XScale", "YScale", "ZScale"};
    static const char* tick[3] = {"XTick", "YTick", "ZTick"};
    static const char* tickmode[3] = {"XTickMode", "YTickMode", "ZTickMode"};
    for (int k = 0; k < 3; ++k) {
        bool log = same_word(ax.word(scale[k]), "log");
        if (same_word(ax.word(limmode[k]), "auto")) {
            double lo = log ? 1 : 0, hi = log ? 10 : 1;
            if (any && e[k].valid()) {
                lo = e[k].lo;
                hi = e[k].hi;
                if (log) {
                    lo = e[k].lo_pos;
                    if (!std::isfinite(lo)) lo = 1, hi = 10;
                    lo = std::pow(10.0, std::floor(std::log10(lo)));
                    hi = std::pow(10.0, std::ceil(std::log10(std::max(hi, lo))));
                    if (hi <= lo) hi = lo * 10;
                } else if (lo == hi) {
                    lo -= 1;
                    hi += 1;
                } else if (!image_only) {
                    double step = nice_step(hi - lo, 5);
                    lo = std::floor(lo / step + 1e-9) * step;
                    hi = std::ceil(hi / step - 1e-9) * step;
                }
            }
            ax.props[lim[k]] = Value::row({lo, hi});
        }
        if (same_word(ax.word(tickmode[k]), "auto")) {
            const Value& l = ax.get(lim[k]);
            ax.props[tick[k]] = Value::row(ticks_for(l.at(0), l.at(1, 1), log, 5));
        }
    }
    if (same_word(ax.word("CLimMode"), "auto")) {
        double lo = 0, hi = 1;
        if (c.valid()) {
            lo = c.lo;
            hi = c.hi;
            if (lo == hi) lo -= 1, hi += 1;
        }
        ax.props["CLim"] = Value::row({lo, hi});
    }
}

}  // namespace ae
