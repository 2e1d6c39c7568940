// The current figure and axes, making figures and axes, subplots, and the commands that change an
// axes' state. All of it is set and get on the engine's objects; the only state of its own is
// embedded_axes.
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/colormaps.h"
#include "arklib/display.h"
#include "arklib/figures.h"
#include "arklib/images.h"
#include "arklib/plots.h"
#include "arklib/sparse.h"
#include "arklib/strings.h"
#include "graphics/graphics_internal.h"
#include "graphics/vocabulary.h"

using namespace ak_internal;

Mm embedded_axes;

namespace {

bool embedded() { return embedded_axes.size() > 0; }

Mm empty_list() { return new_cell(0, 0); }

// A value a property list lacks: the empty string given as the default.
bool not_given(const Mm& v) { return v.flags.str && v.size() == 0; }

// The callbacks of a new object from the root's default family, and CreateFcn run.
void run_create(const Mm& h, const char* create_default, const char* delete_default) {
    Mm root(0.0);
    set(h, list_of({TM("CreateFcn"), get(root, create_default)}));
    set(h, list_of({TM("DeleteFcn"), get(root, delete_default)}));
    run_callback(get(h, "CreateFcn"));
}

// Finds the figure of number n (or makes it), bringing it forward; n = -1 makes a new one.
double find_or_make_figure(int n) {
    if (ak_engine.qor_is_handle(n)) {
        double h = ak_engine.qor_new_object("Figure", n);
        set(Mm(h), "Show", Mm(1.0));
        return h;
    }
    double h = ak_engine.qor_new_object("Figure", n);
    if (h < 0) return h;
    Mm f(h);
    set(f, "Parent", Mm(0.0));
    set(f, "FigureIndex", f);
    set(f, "Visible", ak_word(akw_on));
    set(f, "Show", Mm(0.0));
    clf(f, TM("reset"));
    return h;
}

void clear_figure(const Mm& f) {
    ak_engine.qor_mesh_axes(0);
    set(f, "KillChilds", Mm(1.0));
    set(f, "CurrentAxes", Mm(0.0));
    set(f, "DefaultAxesPosition", row_of({0, 0, 1, 1}));
}

bool is_word(const Mm& v, const char* w) { return text_is(v, w); }

void set_three(const Mm& a, const char* x, const char* y, const char* z, const Mm& v) {
    set(a, x, v);
    set(a, y, v);
    set(a, z, v);
}

// xlabel, ylabel, zlabel and title: a text object in the axes, named by the axes' slot.
Mm label(const char* fname, const char* slot, const Mm& given) {
    Mm list = as_list(given);
    int n = list.size();
    if (n < 1) {
        error("%s needs to have at least one parameter", fname);
        return x_M;
    }
    Mm a = gca();
    Mm t;
    if (n == 1) {
        t = text(list_of({TM("Parent"), a, TM("String"), cell_at(list, 0)}));
    } else {
        Mm args = new_cell(1, n + 2);
        static_cast<Mm*>(args.pr)[0] = TM("Parent");
        static_cast<Mm*>(args.pr)[1] = a;
        for (int k = 0; k < n; ++k) static_cast<Mm*>(args.pr)[k + 2] = cell_at(list, k);
        t = text(args);
    }
    set(a, slot, t);
    return t;
}

// The texts of a legend item: a string gives its rows, a cell its strings.
void legend_texts(const Mm& item, std::vector<Mm>& out) {
    if (iscell(item)) {
        for (int k = 0; k < item.size(); ++k) out.push_back(cell_at(item, k));
    } else if (item.flags.str) {
        int rows = item.rows(), cols = item.cols();
        if (rows <= 1) {
            out.push_back(item);
            return;
        }
        for (int r = 0; r < rows; ++r) {
            std::string s;
            for (int c = 0; c < cols; ++c) s += static_cast<char>(item.addr()[c * rows + r]);
            while (!s.empty() && s.back() == ' ') s.pop_back();
            out.push_back(TM(s.c_str()));
        }
    }
}

int legend_length(const Mm& item) { return iscell(item) ? item.size() : item.rows(); }

}  // namespace

// ---- current figure and axes --------------------------------------------------------------------------
Mm gcf() {
    if (embedded()) return Mm(0.0);
    if (ak_engine.qor_current_figure() < 0) figure(empty_list());
    set(Mm(ak_engine.qor_current_figure()), "NeedShow", Mm(0.0));
    return Mm(ak_engine.qor_current_figure());
}

Mm gca() {
    if (embedded()) return embedded_axes;
    Mm a = get(gcf(), "CurrentAxes");
    if (a.size() > 0 && number_of(a) > 0) return get(gcf(), "CurrentAxes");
    return axes(empty_list());
}

// ---- figures ------------------------------------------------------------------------------------------
Mm figure() { return figure(empty_list()); }

Mm figure(const Mm& given) {
    Mm list = as_list(given);
    int n = count_leading_data(list);
    if (n == 1) {
        Mm h(find_or_make_figure(static_cast<int>(std::trunc(number_of(cell_at(list, 0), -1)))));
        apply_prop_list(h, list, 2);
        set(h, "NeedShow", Mm(0.0));
        return h;
    }
    Mm h(ak_engine.qor_new_object("Figure", -1));
    set(h, "NeedShow", Mm(0.0));
    set(h, "Units", ak_word(akw_pixels));
    set(h, "Position", get(Mm(0.0), "DefaultFigurePosition"));
    apply_prop_list(h, list, 1);
    run_create(h, "DefaultFigureCreateFcn", "DefaultFigureDeleteFcn");
    return h;
}

Mm figure_close() { return figure_close(TM("")); }

Mm figure_close(const Mm& p) {
    if (p.flags.str) {
        std::string s = text_of(lower(p));
        if (s.compare(0, 3, "all") == 0) {
            while (ak_engine.qor_current_figure() > 0) set(Mm(ak_engine.qor_current_figure()), "Kill", Mm(0.0));
        } else if (s.empty()) {
            if (ak_engine.qor_current_figure() > 0) set(Mm(ak_engine.qor_current_figure()), "Kill", Mm(0.0));
        } else {
            Mm v = str2num(p);
            if (v.size() > 0 && number_of(v) > 0) set(Mm(number_of(v)), "Kill", Mm(0.0));
            else error("close(p) - valid options are fignum, 'all'");
        }
        return x_M;
    }
    if (p.size() != 1) {
        error("figure_close(i) must be a number");
        return x_M;
    }
    set(p, "Kill", Mm(0.0));
    return x_M;
}

Mm figure_close(const Mm& p, const Mm&) { return figure_close(p); }

Mm dialog() { return dialog(empty_list()); }

Mm dialog(const Mm& given) {
    Mm list = as_list(given);
    Mm h = figure(list);
    set(h, "MenuBar", ak_word(akw_off));
    set(h, "NumberTitle", ak_word(akw_off));
    set(h, "Resize", ak_word(akw_off));
    apply_prop_list(h, list, 1);
    return h;
}

// ---- axes ---------------------------------------------------------------------------------------------
Mm axes() { return axes(empty_list()); }

Mm axes(const Mm& given) {
    Mm list = as_list(given);
    int n = count_leading_data(list);
    if (n == 1) {
        Mm h = cell_at(list, 0);
        if (!ak_engine.qor_is_handle(number_of(h, -1))) {
            error("axes(h): h is not a valid handle");
            return x_M;
        }
        set(gcf(), "CurrentAxes", h);
        if (embedded()) embedded_axes = h;
        return h;
    }
    const Mm& unset = ak_word(akw_empty_text);
    Mm p = prop_list_value(list, n + 1, TM("Parent"), unset);
    if (not_given(p)) p = gcf();
    Mm units = prop_list_value(list, n + 1, TM("Units"), ak_word(akw_normalized));
    Mm pos = prop_list_value(list, n + 1, TM("Position"), unset);
    if (not_given(pos)) {
        pos = get(p, "DefaultAxesPosition");
        units = ak_word(akw_normalized);
    }
    Mm h(ak_engine.qor_new_object("Axes", -1));
    set(h, "Parent", p);
    set(h, "Refresh", Mm(0.0));
    set(h, "Units", units);
    set(h, "Position", pos);
    set(h, "NextPlot", ak_word(akw_replace));
    set(gcf(), "CurrentAxes", h);
    cla(TM("reset"));
    set(h, "Color", get(p, "DefaultAxesColor"));
    apply_prop_list(h, list, n + 1);
    run_create(h, "DefaultAxesCreateFcn", "DefaultAxesDeleteFcn");
    return h;
}

Mm winaxes(void* window) {
    ak_engine.qor_embed_mode(1);
    embedded_axes = Mm(ak_engine.qor_new_object("Axes", -1));
    set(embedded_axes, "ColorMap", jet());
    set(embedded_axes, "Parent", Mm(0.0));
    set(embedded_axes, "WinParent", Mm(static_cast<double>(reinterpret_cast<std::uintptr_t>(window))));
    set(embedded_axes, "NextPlot", ak_word(akw_replace));
    set(embedded_axes, "Clear", Mm(1.0));
    set(embedded_axes, "Refresh", Mm(1.0));
    return embedded_axes;
}

Mm vbaxes(const Mm& window) {
    auto w = static_cast<std::intptr_t>(std::trunc(number_of(window)));
    return winaxes(reinterpret_cast<void*>(w));
}

Mm axesposition(const Mm& a, const Mm& b, const Mm& c, const Mm& d) {
    set(gca(), "RealPosition", row_of({number_of(a), number_of(b), number_of(c), number_of(d)}));
    return x_M;
}

Mm newplot() {
    if (embedded()) return embedded_axes;
    Mm next = get(gca(), "NextPlot");
    if (is_word(next, "replacechildren")) set(gca(), "KillSerieses", Mm(1.0));
    else if (is_word(next, "replace")) cla(TM("reset"));
    return gca();
}

// ---- subplots -------------------------------------------------------------------------------------------
Mm subplot() { return subplot(Mm(1.0), Mm(1.0), Mm(1.0)); }

Mm subplot(const Mm& km) {
    double k = number_of(km);
    if (k == 111) {
        set(gcf(), list_of({TM("NextPlot"), ak_word(akw_replace)}));
        return x_M;
    }
    if (k > 111) {
        long v = static_cast<long>(std::trunc(k));
        return subplot(Mm(static_cast<double>(v / 100)), Mm(static_cast<double>((v / 10) % 10)),
                       Mm(static_cast<double>(v % 10)));
    }
    axes(list_of({km}));
    return x_M;
}

Mm subplot(const Mm& mm, const Mm& nm, const Mm& pm) {
    double m = std::trunc(number_of(mm)), n = std::trunc(number_of(nm)), p = std::trunc(number_of(pm));
    if (!(m >= 1) || !(n >= 1) || !(p >= 1) || p > m * n) {
        error("subplot(m,n,p): p must be from 1 to m*n");
        return x_M;
    }
    double col = std::fmod(p - 1, n) + 1;
    double row = (p - col) / n + 1;
    double w = 1 / n, h = 1 / m;
    const double inset = (1 - 0.95) / 2;
    double left = (col - 1) / n + inset * w;
    double bottom = (m - row) / m + inset * h;
    return subplot(TM("Position"), row_of({left, bottom, 0.95 * w, 0.95 * h}));
}

Mm subplot(const Mm& word, const Mm& pos) {
    if (!is_word(word, "Position") || pos.size() != 4 || pos.flags.str) {
        error("subplot('position',pos): pos should be [left botttom width height], in (0..1)");
        return x_M;
    }
    const double* b = pos.addr();
    Mm fig = gcf();
    Mm kids = get(fig, "Children");
    Mm found;
    for (int k = 0; k < kids.size(); ++k) {
        Mm child(handle_at(kids, k));
        if (strcmpi(get(child, "Type"), TM("axes")).r() == 0) continue;
        Mm units = get(child, "Units");
        set(child, "Units", ak_word(akw_normalized));
        Mm op = get(child, "Position");
        set(child, "Units", units);
        if (op.size() < 4) continue;
        const double* a = op.addr();
        const double tol = 0.01;
        bool disjoint = a[0] + a[2] - tol <= b[0] || b[0] + b[2] - tol <= a[0] || a[1] + a[3] - tol <= b[1] ||
                        b[1] + b[3] - tol <= a[1];
        if (disjoint) continue;
        bool moved = false;
        for (int q = 0; q < 4; ++q) moved = moved || std::fabs(a[q] - b[q]) > tol;
        if (moved) {
            set(child, "Kill", Mm(1.0));
        } else {
            set(fig, "CurrentAxes", child);
            found = child;
        }
    }
    if (found.size() == 0) axes(list_of({TM("Units"), ak_word(akw_normalized), TM("Position"), pos}));
    return gca();
}

// ---- hold, grid, box, zoom, rotation ---------------------------------------------------------------------
Mm hold() {
    Mm a = gca();
    set(a, "NextPlot", is_word(get(a, "NextPlot"), "Add") ? ak_word(akw_replace) : ak_word(akp_Add));
    return x_M;
}

Mm hold(const Mm& s) {
    if (is_word(s, "on")) set(gca(), "NextPlot", ak_word(akp_Add));
    else if (is_word(s, "off")) set(gca(), "NextPlot", ak_word(akw_replace));
    else error("Hold: unknown argument");
    return x_M;
}

Mm ishold() { return Mm(is_word(get(gca(), "NextPlot"), "Add") ? 1.0 : 0.0); }

Mm grid() {
    Mm a = gca();
    set_three(a, "XGrid", "YGrid", "ZGrid", is_word(get(a, "XGrid"), "on") ? ak_word(akw_off) : ak_word(akw_on));
    return x_M;
}

Mm grid(const Mm& s) {
    if (is_word(s, "on")) set_three(gca(), "XGrid", "YGrid", "ZGrid", ak_word(akw_on));
    else if (is_word(s, "off")) set_three(gca(), "XGrid", "YGrid", "ZGrid", ak_word(akw_off));
    else error("Grid: unknown argument");
    return x_M;
}

Mm box(const Mm& s) {
    set(gca(), "Box", s);
    return x_M;
}

Mm zoom() { return zoom(ak_word(akw_on)); }

Mm zoom(const Mm& s) {
    set(gca(), "ZoomFactor", s);
    return x_M;
}

Mm zoom(const Mm& fig, const Mm& s) {
    figure(list_of({fig}));
    return zoom(s);
}

Mm rotate3d() { return rotate3d(ak_word(akw_on)); }

Mm rotate3d(const Mm& s) {
    if (is_word(s, "on")) ak_engine.qor_mesh_axes(number_of(gca()));
    else if (is_word(s, "off")) ak_engine.qor_mesh_axes(0);
    return x_M;
}

// ---- labels ----------------------------------------------------------------------------------------------
Mm xlabel(const Mm& list) { return label("xlabel", "XLabel", list); }
Mm ylabel(const Mm& list) { return label("ylabel", "YLabel", list); }
Mm zlabel(const Mm& list) { return label("zlabel", "ZLabel", list); }
Mm title(const Mm& list) { return label("title", "Title", list); }
Mm xlabel() { return xlabel(empty_list()); }
Mm ylabel() { return ylabel(empty_list()); }
Mm zlabel() { return zlabel(empty_list()); }
Mm title() { return title(empty_list()); }

// ---- axis and view -----------------------------------------------------------------------------------------
Mm axis() {
    drawnow();
    Mm a = gca();
    Mm x = get(a, "XLim"), y = get(a, "YLim"), v = get(a, "View");
    bool flat = v.size() < 2 || (v.addr()[0] == 0 && v.addr()[1] == 90);
    Mm out(0, 0, 0, 1, flat ? 4 : 6, ak_double);
    double* o = out.addr();
    for (int k = 0; k < 2; ++k) {
        o[k] = x.size() > k ? x.addr()[k] : 0;
        o[2 + k] = y.size() > k ? y.addr()[k] : 0;
    }
    if (!flat) {
        Mm z = get(a, "ZLim");
        for (int k = 0; k < 2; ++k) o[4 + k] = z.size() > k ? z.addr()[k] : 0;
    }
    return out;
}

Mm axis(const Mm& given) {
    Mm list = as_list(given);
    for (int k = 0; k < list.size(); ++k) {
        const Mm& item = cell_at(list, k);
        Mm a = gca();
        if (item.flags.str) {
            if (is_word(item, "on") || is_word(item, "off")) {
                set(a, "Visible", lower(item));
            } else if (is_word(item, "xy")) {
                set(a, "YDir", ak_word(akw_normal));
                set(a, "Visible", ak_word(akw_on));
            } else if (is_word(item, "ij")) {
                set(a, "YDir", ak_word(akw_inverted));
                set(a, "Visible", ak_word(akw_on));
            } else if (is_word(item, "auto")) {
                set_three(a, "XLimMode", "YLimMode", "ZLimMode", ak_word(akw_auto));
            } else if (is_word(item, "manual")) {
                set_three(a, "XLimMode", "YLimMode", "ZLimMode", ak_word(akw_manual));
            } else if (is_word(item, "equal") || is_word(item, "square")) {
                set(a, "square", ak_word(akw_on));
                set(a, "ResizeWith", gcf());
            } else if (is_word(item, "normal")) {
                set(a, "square", ak_word(akw_off));
                set(a, "ResizeWith", Mm(0, 0, 0, 0, 0, ak_double));
            } else {
                error("axis: unknown argument");
                return x_M;
            }
            continue;
        }
        Mm v = full(item);
        int n = v.size();
        const double* d = v.addr();
        static const char* lims[3] = {"XLim", "YLim", "ZLim"};
        for (int q = 0; q < 3 && 2 * q + 1 < n; ++q) set(a, lims[q], row_of({d[2 * q], d[2 * q + 1]}));
    }
    return x_M;
}

Mm view() { return get(gca(), "View"); }

Mm view(const Mm& a) {
    Mm v = full(a);
    int n = v.size();
    const double* d = v.addr();
    if (n == 1) {
        double w = d[0];
        if (w != 2 && w != 3 && w != 2.5 && w != 3.5) {
            error("view(a): a must be 2,2.5 or 3");
            return x_M;
        }
        set(gca(), "View", Mm(w));
        return x_M;
    }
    if (n == 2) return view(Mm(d[0]), Mm(d[1]));
    if (n == 3) {
        double len = std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
        double u[3] = {d[0] / len, d[1] / len, d[2] / len};
        const double to_degrees = 57.29577951308232;
        double az = std::atan2(u[0], -u[1]) * to_degrees;
        double el = std::atan2(u[2], std::sqrt(u[0] * u[0] + u[1] * u[1])) * to_degrees;
        return view(Mm(az), Mm(el));
    }
    error("view: parameter must have 1,2 or 3 elements");
    return x_M;
}

Mm view(const Mm& az, const Mm& el) {
    set(gca(), "View", row_of({number_of(az), number_of(el)}));
    return x_M;
}

Mm view(i_o_t, Mm& az, Mm& el) {
    Mm v = get(gca(), "View");
    az = Mm(v.size() > 0 ? v.addr()[0] : 0.0);
    el = Mm(v.size() > 1 ? v.addr()[1] : 90.0);
    return az;
}

// ---- legend and date ticks ---------------------------------------------------------------------------------
Mm legend() { return legend(empty_list()); }

Mm legend(const Mm& given) {
    Mm list = as_list(given);
    int n = list.size();
    Mm a = gca();
    if (n == 0) {
        set(a, "Legend", ak_word(akw_on));
        return x_M;
    }
    if (is_word(cell_at(list, 0), "off")) {
        set(a, "Legend", ak_word(akw_off));
        return x_M;
    }
    set(a, "Legend", ak_word(akw_on));
    int p = 0;
    const Mm& first = cell_at(list, 0);
    if (!first.flags.str && !iscell(first) && first.size() == 1) {
        set(a, "LegendPos", first);
        p = 1;
    }
    if (p < n && !cell_at(list, p).flags.str && !iscell(cell_at(list, p))) {
        Mm h = cell_at(list, p);
        if (p + 1 >= n || !(cell_at(list, p + 1).flags.str || iscell(cell_at(list, p + 1)))) {
            error("legend(h,...) should have strings parameter");
            return x_M;
        }
        const Mm& strings = cell_at(list, p + 1);
        if (legend_length(strings) != h.size()) {
            error("legend(h,strings) should have the same length");
            return x_M;
        }
        std::vector<Mm> texts;
        legend_texts(strings, texts);
        for (int k = 0; k < h.size() && k < static_cast<int>(texts.size()); ++k)
            set(Mm(handle_at(h, k)), "LegendString", texts[k]);
        return x_M;
    }
    std::vector<Mm> texts;
    for (int k = p; k < n; ++k) legend_texts(cell_at(list, k), texts);
    // The children come newest first; the texts name the objects in the order they were drawn.
    Mm kids = get(a, "Children");
    int count = kids.size();
    for (int k = 0; k < count && k < static_cast<int>(texts.size()); ++k)
        set(Mm(handle_at(kids, count - 1 - k)), "LegendString", texts[k]);
    return x_M;
}

Mm datetick() { return datetick(TM("x")); }
Mm datetick(const Mm& a) { return datetick(a, TM("mm/yy")); }

Mm datetick(const Mm& a, const Mm& f) {
    static const char* formats[] = {"dd-mmm-yyyy HH:MM:SS", "dd-mmm-yyyy", "mm/dd/yy", "mmm", "m", "mm", "mm/dd",
                                    "dd", "ddd", "d", "yyyy", "yy", "mmmyy", "HH:MM:SS", "HH:MM:SS PM", "HH:MM",
                                    "HH:MM PM", "QQ-YY", "QQ"};
    Mm format = f;
    if (!f.flags.str) {
        double k = std::trunc(number_of(f, -1));
        if (k >= 0 && k <= 18) format = TM(formats[static_cast<int>(k)]);
    }
    std::string name = text_of(a) + "Date";
    set(gca(), name.c_str(), format);
    return x_M;
}

// ---- drawing, clearing, capture, print ----------------------------------------------------------------------
Mm drawnow() {
    if (ak_engine.qor_current_figure() > 0) ak_engine.qor_refresh();
    return x_M;
}

Mm refresh() { return refresh(gcf()); }

Mm refresh(const Mm& h) {
    set(h, "Refresh", Mm(1.0));
    ak_engine.qor_refresh();
    return x_M;
}

Mm shg() { return refresh(); }
Mm clg() { return clf(); }

Mm clf() {
    Mm f = gcf();
    clear_figure(f);
    return f;
}

Mm clf(const Mm& h) {
    clear_figure(h);
    return h;
}

Mm clf(const Mm& h, const Mm& word) {
    clear_figure(h);
    if (is_word(word, "reset")) {
        Mm root(0.0);
        set(h, "ColorMap", jet());
        set(h, "Color", get(root, "DefaultFigureColor"));
        set(h, "DefaultAxesColor", get(root, "DefaultAxesColor"));
    }
    return h;
}

Mm cla() {
    if (!embedded()) set(gca(), "Refresh", Mm(0.0));
    Mm a = gca();
    static const char* slots[] = {"XLabel", "YLabel", "ZLabel", "Title"};
    for (const char* s : slots) set(a, list_of({TM(s), TM("")}));
    set(a, "KillChilds", Mm(1.0));
    set(a, "Clear", Mm(1.0));
    xlabel(TM(""));
    ylabel(TM(""));
    zlabel(TM(""));
    title(TM(""));
    return gca();
}

Mm cla(const Mm& word) {
    if (!is_word(word, "reset")) return cla();
    set(gca(), list_of({ak_word(akp_Reset), Mm(1.0)}));
    cla();
    ak_engine.qor_surface_axes(0);
    grid(ak_word(akw_off));
    view(Mm(2.0));
    return gca();
}

Mm reset(const Mm& h) {
    Mm type = get(h, "Type");
    if (text_is(type, "axes")) {
        axes(list_of({h}));
        cla();
    } else if (text_is(type, "figure")) {
        figure(list_of({h}));
        clf();
    } else {
        set(h, "KillChilds", Mm(1.0));
        set(h, "Clear", Mm(1.0));
    }
    return x_M;
}

Mm capture(const Mm& h, i_o_t, Mm& x, Mm& map) {
    drawnow();
    x = get(h, "Capture");
    map = get(h, "ColorMap");
    return x;
}

Mm capture(const Mm& h) {
    Mm x, map;
    return capture(h, i_o, x, map);
}

Mm capture() { return capture(gcf()); }

Mm getframe(const Mm& h) {
    if (text_is(get(h, "Type"), "axes")) return capture(get(h, "Parent"));
    return capture(h);
}

Mm getframe() { return capture(gcf()); }

Mm print() { return print(empty_list()); }

Mm print(const Mm& given) {
    Mm list = as_list(given);
    drawnow();
    std::string file, device;
    for (int k = 0; k < list.size(); ++k) {
        const Mm& item = cell_at(list, k);
        if (!item.flags.str) continue;
        std::string s = text_of(item);
        if (s.compare(0, 1, "-") == 0) {
            if (s.compare(0, 5, "-deps") == 0 || s.compare(0, 4, "-dps") == 0) {
                display(TM("print: PostScript output is not available. Write the figure to a file instead:\n"
                           "  print('-dpng', 'name.png')   a picture of the figure\n"
                           "  saveas(gcf, 'name.pdf')      a vector page (also .svg or .png)"));
                return x_M;
            }
            if (s.compare(0, 2, "-d") == 0) device = s.substr(2);
        } else {
            file = s;
        }
    }
    Mm target = embedded() ? embedded_axes : gcf();
    if (file.empty()) {
        set(target, "Print", Mm(1.0));
        return x_M;
    }
    std::string ext = file.size() > 4 ? file.substr(file.size() - 4) : "";
    for (char& c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (ext != ".png" && ext != ".svg" && ext != ".pdf" && file.find('.') == std::string::npos && !device.empty())
        file += "." + device;
    ext = file.size() > 4 ? file.substr(file.size() - 4) : "";
    for (char& c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (ext == ".svg" || ext == ".pdf" || ext == ".png") {
        // The engine writes these itself, the two vector formats as vector pages.
        set(target, "Print", TM(file.c_str()));
    } else {
        imwrite(capture(gcf()), TM(file.c_str()));
    }
    return x_M;
}

Mm orient() { return orient(gcf()); }

Mm orient(const Mm& x) {
    if (x.flags.str) return orient(gcf(), x);
    return get(x, "PaperOrientation");
}

Mm orient(const Mm& h, const Mm& s) {
    set(h, "PaperOrientation", s);
    return x_M;
}

Mm whitebg() { return whitebg(gcf()); }

Mm whitebg(const Mm& x) {
    if (x.flags.str) return whitebg(gcf(), parse_color(x));
    if (x.size() == 3) {
        Mm root(0.0);
        set(root, "DefaultAxesColor", x);
        set(root, "DefaultFigureColor", x);
        return x_M;
    }
    return whitebg(x, row_of({1, 1, 1}));
}

Mm whitebg(const Mm& h, const Mm& c) {
    Mm rgb = parse_color(c);
    set(h, "WhiteBackgroundPrint", rgb);
    set(h, "DefaultAxesColor", rgb);
    return x_M;
}

// The colormap belongs to the figure, or to the axes in a window of its own.
Mm colormap() { return get(embedded() ? embedded_axes : gcf(), "ColorMap"); }

Mm colormap(const Mm& map) {
    Mm m = map;
    if (map.flags.str) {
        std::string name = text_of(map);
        Mm out[1];
        if (!ak_call_function(name.c_str(), 0, nullptr, 1, out)) return x_M;
        m = out[0];
    }
    set(embedded() ? embedded_axes : gcf(), "ColorMap", m);
    return m;
}

// ---- rows of the table of functions by name -------------------------------------------------------------------
AK_BUILTIN("gcf", gcf);
AK_BUILTIN("gca", gca);
AK_BUILTIN("figure", list_form<figure>);
AK_BUILTIN("close", AK_FN(figure_close), AK_FN(figure_close, const Mm&), AK_FN(figure_close, const Mm&, const Mm&));
AK_BUILTIN("figure_close", AK_FN(figure_close), AK_FN(figure_close, const Mm&),
           AK_FN(figure_close, const Mm&, const Mm&));
AK_BUILTIN("dialog", list_form<dialog>);
AK_BUILTIN("axes", list_form<axes>);
AK_BUILTIN("vbaxes", vbaxes);
AK_BUILTIN("axesposition", axesposition);
AK_BUILTIN("newplot", newplot);
AK_BUILTIN("subplot", AK_FN(subplot), AK_FN(subplot, const Mm&), AK_FN(subplot, const Mm&, const Mm&),
           AK_FN(subplot, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("hold", AK_FN(hold), AK_FN(hold, const Mm&));
AK_BUILTIN("ishold", ishold);
AK_BUILTIN("grid", AK_FN(grid), AK_FN(grid, const Mm&));
AK_BUILTIN("box", box);
AK_BUILTIN("zoom", AK_FN(zoom), AK_FN(zoom, const Mm&), AK_FN(zoom, const Mm&, const Mm&));
AK_BUILTIN("rotate3d", AK_FN(rotate3d), AK_FN(rotate3d, const Mm&));
AK_BUILTIN("xlabel", list_form<xlabel>);
AK_BUILTIN("ylabel", list_form<ylabel>);
AK_BUILTIN("zlabel", list_form<zlabel>);
AK_BUILTIN("title", list_form<title>);
AK_BUILTIN("axis", AK_FN(axis), AK_FN(axis, const Mm&));
AK_BUILTIN("view", AK_FN(view), AK_FN(view, const Mm&), AK_FN(view, const Mm&, const Mm&),
           AK_FN_REFS(view, i_o_t, Mm&, Mm&));
AK_BUILTIN("legend", list_form<legend>);
AK_BUILTIN("datetick", AK_FN(datetick), AK_FN(datetick, const Mm&), AK_FN(datetick, const Mm&, const Mm&));
AK_BUILTIN("drawnow", drawnow);
AK_BUILTIN("refresh", AK_FN(refresh), AK_FN(refresh, const Mm&));
AK_BUILTIN("shg", shg);
AK_BUILTIN("clg", clg);
AK_BUILTIN("clf", AK_FN(clf), AK_FN(clf, const Mm&), AK_FN(clf, const Mm&, const Mm&));
AK_BUILTIN("cla", AK_FN(cla), AK_FN(cla, const Mm&));
AK_BUILTIN("reset", reset);
AK_BUILTIN("capture", AK_FN(capture), AK_FN(capture, const Mm&), AK_FN_REFS(capture, const Mm&, i_o_t, Mm&, Mm&));
AK_BUILTIN("getframe", AK_FN(getframe), AK_FN(getframe, const Mm&));
AK_BUILTIN("print", list_form<print>);
AK_BUILTIN("orient", AK_FN(orient), AK_FN(orient, const Mm&), AK_FN(orient, const Mm&, const Mm&));
AK_BUILTIN("whitebg", AK_FN(whitebg), AK_FN(whitebg, const Mm&), AK_FN(whitebg, const Mm&, const Mm&));
AK_BUILTIN("colormap", AK_FN(colormap), AK_FN(colormap, const Mm&));
