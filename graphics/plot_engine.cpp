// The plot family: plot_engine turns data sets and line styles into line objects, and the
// chart functions are rows over it. A chart's look (stems, bars, stairs) is the engine's: the
// library hands on the chart word in ChartType and the data as they are. Also line, patch and text.
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "arklib/arith.h"
#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/figures.h"
#include "arklib/list.h"
#include "arklib/ops.h"
#include "arklib/plots.h"
#include "arklib/sparse.h"
#include "arklib/strings.h"
#include "graphics/graphics_internal.h"
#include "graphics/plot_internal.h"
#include "graphics/vocabulary.h"

using namespace ak_internal;

namespace {

const char color_letters[] = "ymcrgbwk";
const char* const marker_texts[] = {".", "o", "x", "+", "*", "s", "d", "^", "v", ">", "<", "p", "h"};
const char* const style_texts[] = {"-", ":", "-.", "--", "F", " "};
constexpr int marker_count = 13;
constexpr int style_count = 4;  // the two entries past these are never searched
constexpr int first_color = 5;  // blue

int next_color(int c) { return c - 1 < 0 ? 7 : c - 1; }

struct LineLook {
    int color = first_color;
    int marker = -1;
    int style = 0;
    bool explicit_color = false;
};

// Reads a line style such as "r--o". False, with `look` as it was, when the text is not
// one (then it is a property name).
bool read_line_spec(const Mm& item, LineLook& look) {
    char text[257];
    Mstr(item, text, sizeof text);
    int length = static_cast<int>(std::strlen(text));
    LineLook parsed = look;
    int count = 0;
    for (int c = 0; c < 8; ++c)
        if (std::strchr(text, color_letters[c])) {
            parsed.color = c;
            parsed.explicit_color = true;
            ++count;
            break;
        }
    for (int m = marker_count - 1; m >= 0; --m)
        if (std::strstr(text, marker_texts[m])) {
            parsed.marker = m;
            parsed.style = -1;
            ++count;
            break;
        }
    for (int s = style_count - 1; s >= 0; --s)
        if (std::strstr(text, style_texts[s])) {
            parsed.style = s;
            count += static_cast<int>(std::strlen(style_texts[s]));
            break;
        }
    // In "-." the dot belongs to the style.
    if (parsed.style == 2 && parsed.marker == 0) {
        parsed.marker = -1;
        --count;
    }
    if (count != length) return false;
    look = parsed;
    return true;
}

// The k-th column (or row) of a matrix as a vector of doubles.
std::vector<double> slice(const Mm& m, int k, bool by_rows) {
    int rows = m.rows(), cols = m.cols();
    const double* d = m.addr();
    std::vector<double> v;
    if (by_rows) {
        for (int c = 0; c < cols; ++c) v.push_back(d[c * rows + k]);
    } else {
        v.assign(d + static_cast<size_t>(k) * rows, d + static_cast<size_t>(k + 1) * rows);
    }
    return v;
}

bool one_line(const Mm& m) { return m.rows() == 1 || m.cols() == 1; }

}  // namespace

namespace ak_internal {

Mm plain(const Mm& m) {
    Mm v = m.flags.sparse ? full(m) : m;
    if (v.flags.type == ak_uchar || (v.flags.type == ak_double && v.flags.logical)) {
        Mm d(0, 0, 0, v.ndims, v.dims, ak_double);
        for (int k = 0; k < d.size(); ++k) d.addr()[k] = handle_at(v, k);
        return d;
    }
    if (v.flags.type != ak_double) return Mm(0, 0, 0, 0, 0, ak_double);
    if (v.pi) return real(v);
    Mm d = v;
    d.flags.str = 0;
    return d;
}

Mm handle_column(const std::vector<double>& h) {
    Mm out(0, 0, 0, static_cast<int>(h.size()), h.empty() ? 0 : 1, ak_double);
    for (size_t k = 0; k < h.size(); ++k) out.addr()[k] = h[k];
    return out;
}

double add_line_object(const char* name, int color, int marker, int style, int n, const double* x,
                       const double* y, const double* z) {
    double h = ak_engine.qor_new_object("line", -1);
    Mm hm(h);
    set(hm, ak_word(akp_ChartType), TM(name));
    set(hm, ak_word(akp_Parent), gca());
    set(hm, ak_word(akp_Color), Mm(-100.0 - color));
    set(hm, ak_word(akp_Marker), Mm(static_cast<double>(marker)));
    set(hm, ak_word(akp_LineStyle), Mm(static_cast<double>(style)));
    ak_engine.qor_line_data(h, n, const_cast<double*>(x), 1, const_cast<double*>(y), 1, const_cast<double*>(z), 0);
    return h;
}

}  // namespace ak_internal

namespace {

// The lines of one data set; `color` moves on after each line without an explicit colour.
void add_column_lines(const char* name, int& color, const LineLook& look, const Mm& xm, const Mm& ym,
                      const Mm* zm, std::vector<double>& handles) {
    Mm x = plain(xm), y = plain(ym);
    Mm z = zm ? plain(*zm) : Mm();
    if (x.size() == 0 || y.size() == 0) return;
    int nx = x.size(), ny = y.size();
    // The lines, each as (x slice, y slice), and whether y is sliced by rows.
    // One line's points: pointers into the columns of the data, or into rows copied out.
    struct Piece {
        const double *x, *y, *z;
    };
    std::vector<std::vector<double>> copies;
    auto run = [&](const Mm& m, int k, bool by_rows) -> const double* {
        if (one_line(m)) return m.addr();
        if (!by_rows) return m.addr() + static_cast<size_t>(k) * m.rows();
        copies.push_back(slice(m, k, true));
        return copies.back().data();
    };
    // z follows y's columns (or rows); a z with fewer of them leaves the rest in the plane.
    auto z_for = [&](int k, bool by_rows, int count) -> const double* {
        if (!zm || z.size() == 0) return nullptr;
        if (one_line(z)) return z.size() == count ? z.addr() : nullptr;
        int lines = by_rows ? z.rows() : z.cols();
        return k < lines ? run(z, k, by_rows) : nullptr;
    };
    std::vector<Piece> pieces;
    int count;
    if (one_line(x) && one_line(y) && nx == ny) {
        count = nx;
        pieces.push_back(Piece{x.addr(), y.addr(), z_for(0, false, nx)});
    } else if (one_line(x) && (nx == y.rows() || nx == y.cols())) {
        bool by_rows = nx != y.rows();
        int lines = by_rows ? y.rows() : y.cols();
        count = nx;
        copies.reserve(2 * lines);
        for (int k = 0; k < lines; ++k) pieces.push_back(Piece{x.addr(), run(y, k, by_rows), z_for(k, by_rows, nx)});
    } else if (one_line(y) && (ny == x.rows() || ny == x.cols())) {
        bool by_rows = ny != x.rows();
        int lines = by_rows ? x.rows() : x.cols();
        count = ny;
        copies.reserve(2 * lines);
        for (int k = 0; k < lines; ++k) pieces.push_back(Piece{run(x, k, by_rows), y.addr(), z_for(k, false, ny)});
    } else if (x.rows() == y.rows() && x.cols() == y.cols()) {
        count = x.rows();
        for (int k = 0; k < x.cols(); ++k) pieces.push_back(Piece{run(x, k, false), run(y, k, false), z_for(k, false, count)});
    } else {
        error("plot: matrices are not matched");
        return;
    }
    for (const Piece& p : pieces) {
        int c = look.explicit_color ? look.color : color;
        handles.push_back(add_line_object(name, c, look.marker, look.style, count, p.x, p.y, p.z));
        if (!look.explicit_color) color = next_color(color);
    }
}

Mm counting_for(const Mm& y) {
    int k = one_line(y) ? y.size() : y.rows();
    return colon(1.0, 1.0, static_cast<double>(k));
}

}  // namespace

Mm plot_engine(const char* name, int dm, const Mm& given) {
    Mm list = as_list(given);
    int n = list.size();
    if (dm != 2 && dm != 3) {
        error("internal: plot2 should have dm==2 or 3");
        return x_M;
    }
    newplot();
    if (embedded_axes.size() == 0) set(gca(), ak_word(akp_Refresh), Mm(0.0));
    ak_engine.qor_surface_axes(0);
    ak_engine.qor_mesh_axes(0);
    view(Mm(static_cast<double>(dm)));
    std::vector<double> handles;
    int p = 0, color = first_color;
    while (p < n) {
        const Mm& item = cell_at(list, p);
        if (item.flags.str) break;
        Mm x, y, z;
        bool has_z = false;
        if (dm == 2) {
            if (p == n - 1 || cell_at(list, p + 1).flags.str) {
                if (item.pi) {
                    x = real(item);
                    y = imag(item);
                } else {
                    y = item;
                    x = counting_for(item);
                }
                p += 1;
            } else {
                x = item;
                y = cell_at(list, p + 1);
                p += 2;
            }
        } else {
            if (n - p < 3) {
                error("%s: expecting 3 data items in position %d", name, p + 1);
                return handle_column(handles);
            }
            for (int k = 0; k < 3; ++k)
                if (cell_at(list, p + k).flags.str) {
                    error("%s: expecting data item in position %d (not string)", name, p + k + 1);
                    return handle_column(handles);
                }
            x = cell_at(list, p);
            y = cell_at(list, p + 1);
            z = cell_at(list, p + 2);
            has_z = true;
            p += 3;
        }
        LineLook look;
        look.color = color;
        if (p < n && cell_at(list, p).flags.str && read_line_spec(cell_at(list, p), look)) p += 1;
        add_column_lines(name, color, look, x, y, has_z ? &z : nullptr, handles);
    }
    Mm h = handle_column(handles);
    apply_prop_list(h, list, p + 1);
    return h;
}

// ---- the family ---------------------------------------------------------------------------------------
namespace {

Mm with_scales(const Mm& list, bool xlog, bool ylog) {
    Mm h = plot_engine("plot", 2, list);
    if (xlog) set(gca(), "XScale", ak_word(akw_log));
    if (ylog) set(gca(), "YScale", ak_word(akw_log));
    return h;
}

// bar and its kin: a last argument that is text but no number ("stacked", "grouped") is the
// stacking, written to the lines after they are made.
Mm bar_chart(const char* name, const Mm& given, bool counting_x) {
    Mm list = as_list(given);
    int n = list.size();
    Mm stack;
    if (n > 0 && cell_at(list, n - 1).flags.str && str2num(cell_at(list, n - 1)).size() == 0) {
        stack = cell_at(list, n - 1);
        Mm shorter = new_cell(1, n - 1);
        for (int k = 0; k < n - 1; ++k) static_cast<Mm*>(shorter.pr)[k] = cell_at(list, k);
        list = shorter;
        --n;
    }
    if (counting_x && count_leading_data(list) == 1) {
        Mm y = cell_at(list, 0);
        Mm longer = new_cell(1, n + 1);
        static_cast<Mm*>(longer.pr)[0] = colon(1.0, static_cast<double>(y.rows()));
        for (int k = 0; k < n; ++k) static_cast<Mm*>(longer.pr)[k + 1] = cell_at(list, k);
        list = longer;
    }
    Mm h = plot_engine(name, 2, list);
    if (stack.size() > 0) set(h, ak_word(akp_Stacktype), stack);
    return h;
}

}  // namespace

Mm plot(const Mm& list) { return plot_engine("plot", 2, list); }
Mm plot3(const Mm& list) { return plot_engine("plot3", 3, list); }
Mm stem(const Mm& list) { return plot_engine("stem", 2, list); }
Mm stairs(const Mm& list) { return plot_engine("stairs", 2, list); }
Mm area(const Mm& list) { return plot_engine("area", 2, list); }
Mm pie(const Mm& list) { return plot_engine("pie", 2, list); }
Mm pie3(const Mm& list) { return plot_engine("pie3", 2, list); }

Mm polar(const Mm& list) {
    Mm h = plot_engine("polar", 2, list);
    grid(ak_word(akw_on));
    return h;
}

Mm semilogx(const Mm& list) { return with_scales(list, true, false); }
Mm semilogy(const Mm& list) { return with_scales(list, false, true); }
Mm loglog(const Mm& list) { return with_scales(list, true, true); }
Mm bar(const Mm& list) { return bar_chart("bar", list, false); }
Mm barh(const Mm& list) { return bar_chart("barh", list, true); }
Mm bar3(const Mm& list) { return bar_chart("bar3", list, false); }
Mm bar3h(const Mm& list) { return bar_chart("bar3h", list, true); }

Mm errorbar(const Mm& given) {
    Mm list = as_list(given);
    int n = list.size();
    Mm s = TM("b");
    if (n > 0 && cell_at(list, n - 1).flags.str) s = cell_at(list, --n);
    Mm x, y, l, u;
    if (n == 2) {
        y = plain(cell_at(list, 0));
        l = plain(cell_at(list, 1));
        x = colon(1.0, 1.0, static_cast<double>(y.rows() > 1 ? y.rows() : y.size()));
        if (y.rows() == 1) x = plain(x);
        else x = transpose(x);
    } else if (n == 3 || n == 4) {
        x = plain(cell_at(list, 0));
        y = plain(cell_at(list, 1));
        l = plain(cell_at(list, 2));
        if (n == 4) u = plain(cell_at(list, 3));
    } else {
        error("errorbar: use (y,e), (x,y,e) or (x,y,l,u), then a line style");
        return x_M;
    }
    if (u.size() == 0) u = l;
    int count = y.size();
    if (x.size() != count) {
        if (!one_line(x) || x.size() != y.rows()) {
            error("errorbar: x and y must have the same number of elements");
            return x_M;
        }
        Mm wide(0, 0, 0, y.rows(), y.cols(), ak_double);
        for (int k = 0; k < count; ++k) wide.addr()[k] = x.addr()[k % y.rows()];
        x = wide;
    }
    if (l.size() != count || u.size() != count) {
        error("errorbar: the error bounds must have as many elements as y");
        return x_M;
    }
    const double* xd = x.addr();
    double lo = xd[0], hi = xd[0];
    for (int k = 0; k < count; ++k) lo = std::fmin(lo, xd[k]), hi = std::fmax(hi, xd[k]);
    double tick = (hi - lo) / 100;
    // Each whisker is a vertical stroke and two short caps, with NaN between the pieces.
    Mm wx(0, 0, 0, 9 * count, 1, ak_double), wy(0, 0, 0, 9 * count, 1, ak_double);
    for (int k = 0; k < count; ++k) {
        double xk = xd[k], bottom = y.addr()[k] - l.addr()[k], top = y.addr()[k] + u.addr()[k];
        double px[9] = {xk, xk, NAN, xk - tick, xk + tick, NAN, xk - tick, xk + tick, NAN};
        double py[9] = {bottom, top, NAN, bottom, bottom, NAN, top, top, NAN};
        for (int q = 0; q < 9; ++q) wx.addr()[9 * k + q] = px[q], wy.addr()[9 * k + q] = py[q];
    }
    // The whiskers take the colour and line of the style text, not its marks.
    std::string written = text_of(s), bare;
    for (char ch : written)
        if (!std::strchr(".ox+*sd^v><ph", ch)) bare += ch;
    Mm whiskers = plot(list_of({wx, wy, TM(bare.empty() ? "-" : bare.c_str())}));
    hold(ak_word(akw_on));
    Mm curve = plot(list_of({x, y, s}));
    hold(ak_word(akw_off));
    set(gca(), "XLim", row_of({lo - tick, hi + tick}));
    return vertcat(whiskers, curve);
}

Mm plotyy(const Mm& x1, const Mm& y1, const Mm& x2, const Mm& y2, i_o_t, Mm& ax, Mm& h1, Mm& h2) {
    h1 = plot(list_of({x1, y1}));
    Mm first = gca();
    hold();
    Mm second = axes(list_of({TM("Position"), get(first, "Position"), TM("Color"), ak_word(akw_none)}));
    set(second, "NextPlot", ak_word(akp_Add));
    h2 = plot(list_of({x2, y2}));
    // The second curve takes the second colour of the cycle, so the two can be told apart.
    set(h2, ak_word(akp_Color), Mm(-104.0));
    set(second, "YAxisLocation", ak_word(akw_right));
    set(second, "XAxisLocation", ak_word(akw_top));
    ax = vertcat(first, second);
    return ax;
}

Mm plotyy(const Mm& x1, const Mm& y1, const Mm& x2, const Mm& y2) {
    Mm ax, h1, h2;
    return plotyy(x1, y1, x2, y2, i_o, ax, h1, h2);
}

// ---- scatter ------------------------------------------------------------------------------------------
namespace {

// scatter and scatter3: the points as markers "o" without a line, sizes and colours on each line.
// "filled" is found without case by scatter and with case by scatter3.
Mm scatter_points(const char* name, int dm, const Mm& given, bool any_case) {
    Mm list = as_list(given);
    int n = list.size();
    bool filled = false;
    std::vector<Mm> data, rest;
    for (int k = 0; k < n; ++k) {
        const Mm& item = cell_at(list, k);
        bool word = item.flags.str && (any_case ? text_is(item, "filled") : text_of(item) == "filled");
        // After the data and the size, a colour may come as a letter or a word.
        bool color_text = item.flags.str && rest.empty() && static_cast<int>(data.size()) == dm + 1 &&
                          (item.size() == 1 || text_is(item, "red") || text_is(item, "green") ||
                           text_is(item, "blue") || text_is(item, "black") || text_is(item, "white") ||
                           text_is(item, "yellow") || text_is(item, "cyan") || text_is(item, "magenta"));
        if (word) filled = true;
        else if ((!item.flags.str || color_text) && rest.empty()) data.push_back(item);
        else rest.push_back(item);
    }
    if (static_cast<int>(data.size()) < dm - 1 || (dm == 3 && data.size() < 3)) {
        error("%s: expecting %d data items", name, dm);
        return x_M;
    }
    Mm x, y, z;
    size_t used;
    if (dm == 2 && data.size() == 1) {
        y = data[0];
        x = counting_for(y);
        used = 1;
    } else {
        x = data[0];
        y = data[1];
        if (dm == 3) z = data[2];
        used = dm;
    }
    Mm size = data.size() > used ? data[used] : Mm();
    Mm color = data.size() > used + 1 ? data[used + 1] : Mm();
    Mm args = dm == 3 ? list_of({x, y, z, TM("o")}) : list_of({x, y, TM("o")});
    Mm h = plot_engine(name, dm, args);
    // The size is the marks' area in square points (36 when not given).
    set(h, ak_word(akp_MarkerSize), size.size() > 0 ? size : Mm(36.0));
    if (color.size() > 0) set(h, ak_word(akp_MarkerColor), parse_color(color));
    if (filled) set(h, ak_word(akp_MarkerFaceColor), ak_word(akw_auto));
    if (!rest.empty()) {
        Mm props = new_cell(1, static_cast<int>(rest.size()));
        for (size_t k = 0; k < rest.size(); ++k) static_cast<Mm*>(props.pr)[k] = rest[k];
        set(h, props);
    }
    return h;
}

}  // namespace

Mm scatter(const Mm& list) { return scatter_points("scatter", 2, list, true); }
Mm scatter3(const Mm& list) { return scatter_points("scatter3", 3, list, false); }

// ---- line, patch, text ---------------------------------------------------------------------------------
namespace {

void data_to(double h, const Mm& xm, const Mm& ym, const Mm* zm) {
    Mm x = plain(xm), y = plain(ym), z = zm ? plain(*zm) : Mm();
    int n = x.size() < y.size() ? x.size() : y.size();
    const double* zp = zm && z.size() >= n ? z.addr() : nullptr;
    ak_engine.qor_line_data(h, n, x.addr(), 1, y.addr(), 1, const_cast<double*>(zp), 0);
}

void run_object_create(const Mm& h, const char* create_default, const char* delete_default) {
    Mm root(0.0);
    set(h, list_of({TM("CreateFcn"), get(root, create_default)}));
    set(h, list_of({TM("DeleteFcn"), get(root, delete_default)}));
    for (int k = 0; k < h.size(); ++k) run_callback(get(Mm(handle_at(h, k)), "CreateFcn"));
}

}  // namespace

Mm patch(const Mm& given) {
    Mm list = as_list(given);
    int count = list.size();
    if (count == 0) {
        error("patch needs to have at least one parameter");
        return x_M;
    }
    int n = count_leading_data(list);
    if (n == 3) {
        error("patch(x,y,z) is not supported yet.");
        return x_M;
    }
    if (n != 0 && n != 2) {
        error("patch: cannot comprehend format");
        return x_M;
    }
    newplot();
    Mm h(ak_engine.qor_new_object("patch", -1));
    if (n == 2) {
        const Mm &x = cell_at(list, 0), &y = cell_at(list, 1);
        data_to(number_of(h), x, y, nullptr);
        // One polygon per column when the corners come as matrices.
        if (!one_line(x) || !one_line(y)) {
            set(h, ak_word(akp_XData), plain(x));
            set(h, ak_word(akp_YData), plain(y));
        }
    }
    apply_prop_list(h, list, n + 1);
    run_object_create(h, "DefaultPatchCreateFcn", "DefaultPatchDeleteFcn");
    return h;
}

Mm fill(const Mm& list) { return patch(list); }
Mm rectangle(const Mm& list) { return patch(list); }

Mm line(const Mm& given) {
    Mm list = as_list(given);
    int count = list.size();
    if (count == 0) {
        error("line needs to have at least one parameter");
        return x_M;
    }
    int n = count_leading_data(list);
    if (n != 0 && n != 2 && n != 3) {
        error("line: cannot comprehend format");
        return x_M;
    }
    std::vector<double> handles;
    if (n == 0) {
        handles.push_back(ak_engine.qor_new_object("line", -1));
    } else {
        Mm x = plain(cell_at(list, 0)), y = plain(cell_at(list, 1));
        Mm z = n == 3 ? plain(cell_at(list, 2)) : Mm();
        bool columns = !one_line(x) || !one_line(y);
        int lines = columns ? (one_line(y) ? x.cols() : y.cols()) : 1;
        for (int k = 0; k < lines; ++k) {
            double h = ak_engine.qor_new_object("line", -1);
            if (!columns) {
                data_to(h, x, y, n == 3 ? &z : nullptr);
            } else {
                auto pick = [k](const Mm& m) { return one_line(m) ? m : Mm(handle_column(slice(m, k, false))); };
                Mm xk = pick(x), yk = pick(y), zk = n == 3 ? pick(z) : Mm();
                data_to(h, xk, yk, n == 3 ? &zk : nullptr);
            }
            handles.push_back(h);
        }
    }
    Mm h = handle_column(handles);
    apply_prop_list(h, list, n + 1);
    run_object_create(h, "DefaultLineCreateFcn", "DefaultLineDeleteFcn");
    return h;
}

namespace {

int text_count(const Mm& t) { return iscell(t) ? t.size() : (t.size() == 0 ? 1 : t.rows()); }

Mm text_item(const Mm& t, int k) {
    if (iscell(t)) return cell_at(t, k);
    int rows = t.rows();
    if (rows <= 1) return t;
    std::string s;
    for (int c = 0; c < t.cols(); ++c) s += static_cast<char>(t.addr()[c * rows + k]);
    while (!s.empty() && s.back() == ' ') s.pop_back();
    return TM(s.c_str());
}

}  // namespace

Mm text_object(const Mm& given) {
    Mm list = as_list(given);
    int count = list.size();
    int n = count_leading_data(list);
    auto is_text_item = [&](int k) { return k < count && (cell_at(list, k).flags.str || iscell(cell_at(list, k))); };
    std::vector<double> handles;
    int rest;
    if (n == 0 && count > 0 && cell_at(list, 0).flags.str) {
        double h = ak_engine.qor_new_object("line", -1);
        Mm hm(h);
        set(hm, ak_word(akp_ChartType), TM("text"));
        set(hm, ak_word(akp_Parent), gca());
        handles.push_back(h);
        rest = 0;
    } else if ((n == 2 || n == 3) && is_text_item(n)) {
        Mm x = plain(cell_at(list, 0)), y = plain(cell_at(list, 1)), z = n == 3 ? plain(cell_at(list, 2)) : Mm();
        const Mm& t = cell_at(list, n);
        int k = text_count(t);
        if (x.size() != k || y.size() != k || (n == 3 && z.size() != k)) {
            error(n == 2 ? "text(x,y,'text'): x,y,text must contain the same number of elements"
                         : "text(x,y,z,'text'): x,y,z,text must contain the same number of elements");
            return x_M;
        }
        for (int e = 0; e < k; ++e) {
            double h = ak_engine.qor_new_object("line", -1);
            Mm hm(h);
            set(hm, ak_word(akp_ChartType), TM(n == 3 ? "text3" : "text"));
            set(hm, ak_word(akp_Parent), gca());
            double px = x.addr()[e], py = y.addr()[e], pz = n == 3 ? z.addr()[e] : 0;
            ak_engine.qor_line_data(h, 1, &px, 1, &py, 1, n == 3 ? &pz : nullptr, 0);
            set(hm, ak_word(akp_String), text_item(t, e));
            handles.push_back(h);
        }
        rest = n + 1;
    } else {
        error("text: use (x,y,'text') or (x,y,z,'text') or ('prop','value',...)");
        return x_M;
    }
    Mm h = handle_column(handles);
    apply_prop_list(h, list, rest + 1);
    return h;
}

// ---- rows of the table of functions by name ---------------------------------------------------------------
AK_BUILTIN("plot", list_form<plot>);
AK_BUILTIN("plot3", list_form<plot3>);
AK_BUILTIN("stem", list_form<stem>);
AK_BUILTIN("stairs", list_form<stairs>);
AK_BUILTIN("area", list_form<area>);
AK_BUILTIN("pie", list_form<pie>);
AK_BUILTIN("pie3", list_form<pie3>);
AK_BUILTIN("polar", list_form<polar>);
AK_BUILTIN("semilogx", list_form<semilogx>);
AK_BUILTIN("semilogy", list_form<semilogy>);
AK_BUILTIN("loglog", list_form<loglog>);
AK_BUILTIN("bar", list_form<bar>);
AK_BUILTIN("barh", list_form<barh>);
AK_BUILTIN("bar3", list_form<bar3>);
AK_BUILTIN("bar3h", list_form<bar3h>);
AK_BUILTIN("errorbar", list_form<errorbar>);
AK_BUILTIN("plotyy", AK_FN(plotyy, const Mm&, const Mm&, const Mm&, const Mm&),
           AK_FN_REFS(plotyy, const Mm&, const Mm&, const Mm&, const Mm&, i_o_t, Mm&, Mm&, Mm&));
AK_BUILTIN("scatter", list_form<scatter>);
AK_BUILTIN("scatter3", list_form<scatter3>);
AK_BUILTIN("patch", list_form<patch>);
AK_BUILTIN("fill", list_form<fill>);
AK_BUILTIN("rectangle", list_form<rectangle>);
AK_BUILTIN("line", list_form<line>);
AK_BUILTIN("text", list_form<text_object>);
