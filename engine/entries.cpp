// The 29 entries of the engine, and its calls back into the library that loaded it.
#include <csignal>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "engine/arkengine.h"
#include "engine/objects.h"

#define AE_EXPORT extern "C" __attribute__((visibility("default")))

namespace ae {

namespace {

ae_event_handler_t event_handler = nullptr;
ae_error_handler_t error_handler = nullptr;
ae_free_handler_t free_handler = nullptr;
double mesh_axes = 0, surface_axes = 0;

}  // namespace

bool embedded_mode = false;

namespace {

// The record qor_get answers with; it lives until the next qor_get.
ae_value answer;
std::vector<double> answer_data;

Value value_of(const ae_value* r) {
    Value v;
    if (!r || r->ndims < 2) return v;
    v.nd = r->ndims > 4 ? 4 : r->ndims;
    long long n = 1;
    for (int k = 0; k < 4; ++k) {
        v.dims[k] = k < v.nd ? r->dims[k] : 1;
        n *= v.dims[k] < 0 ? 0 : v.dims[k];
    }
    // Trailing singleton dimensions are dropped, as for any matrix.
    while (v.nd > 2 && v.dims[v.nd - 1] == 1) --v.nd;
    v.str = r->is_string != 0;
    if (r->data && n > 0) v.d.assign(r->data, r->data + n);
    else v.d.clear();
    if (n == 0) v.d.clear();
    return v;
}

Object* live(double h, const char* entry) {
    Object* o = find_object(h);
    if (!o) report_error("%s: %g is not a valid handle", entry, h);
    return o;
}

Kind kind_of_word(const char* kind, std::string& style) {
    static const char* styles[] = {"uicontrol", "pushbutton", "togglebutton", "radiobutton", "checkbox", "edit",
                                   "text",      "slider",     "frame",        "listbox",     "popupmenu"};
    if (same_word(kind, "line")) return Kind::line;
    if (same_word(kind, "patch")) return Kind::patch;
    if (same_word(kind, "surface")) return Kind::surface;
    if (same_word(kind, "image")) return Kind::image;
    if (same_word(kind, "menuitem") || same_word(kind, "uimenu")) return Kind::uimenu;
    if (same_word(kind, "contextmenu") || same_word(kind, "uicontextmenu")) return Kind::uicontextmenu;
    // "text" in lower case is a text object; the other style words make controls.
    if (std::strcmp(kind, "text") == 0 || std::strcmp(kind, "Text") == 0) return Kind::text;
    for (const char* s : styles)
        if (same_word(kind, s)) {
            style = same_word(kind, "uicontrol") ? "pushbutton" : s;
            return Kind::uicontrol;
        }
    style = "?";
    return Kind::root;
}

double new_object(const char* kind, int parent) {
    if (same_word(kind, "Figure")) {
        if (parent > 0) {
            Object* o = find_object(parent);
            if (o && o->kind != Kind::figure) {
                report_error("figure: %d is the handle of a %s", parent, kind_name(o->kind));
                return -1;
            }
        }
        Object& f = figure_of_number(parent > 0 ? parent : next_figure_number());
        root().props["CurrentFigure"] = Value::num(f.handle);
        return f.handle;
    }
    if (std::strcmp(kind, "axes") == 0 && parent < 0) return current_axes(true)->handle;
    if (same_word(kind, "Axes")) {
        Object* f = parent < 0 ? current_figure(true) : find_object(parent);
        if (!f || f->kind != Kind::figure) {
            report_error("axes: %d is not a figure", parent);
            return -1;
        }
        Object& a = make_object(Kind::axes, f->handle);
        f->props["CurrentAxes"] = Value::num(a.handle);
        return a.handle;
    }
    std::string style;
    Kind k = kind_of_word(kind, style);
    // "text" is a text object in an axes, and a control showing text in a figure.
    Object* given = parent >= 0 ? find_object(parent) : nullptr;
    if (k == Kind::text && given && given->kind == Kind::figure) {
        k = Kind::uicontrol;
        style = "text";
    }
    if (k == Kind::root) {
        report_error("The graphics engine cannot make an object of kind '%s'", kind);
        return -1;
    }
    Object* p;
    bool on_figure = k == Kind::uicontrol || k == Kind::uimenu || k == Kind::uicontextmenu;
    if (parent < 0) p = on_figure ? current_figure(true) : current_axes(true);
    else p = find_object(parent);
    bool fits = p && (on_figure ? p->kind == Kind::figure || (k == Kind::uimenu && p->kind == Kind::uimenu)
                                : p->kind == Kind::axes);
    if (!fits) {
        report_error("%s: %d is not a valid parent", kind_name(k), parent);
        return -1;
    }
    Object& o = make_object(k, p->handle);
    if (k == Kind::uicontrol) o.props["Style"] = Value::text(style);
    return o.handle;
}

}  // namespace

void report_error(const char* fmt, ...) {
    char text[1024];
    va_list ap;
    va_start(ap, fmt);
    std::vsnprintf(text, sizeof text, fmt, ap);
    va_end(ap);
    if (error_handler) error_handler(text);
    else std::fprintf(stderr, "%s\n", text);
}

void post_callback_text(const Value& text) {
    if (!event_handler || text.empty()) return;
    ae_value r;
    r.ndims = 2;
    r.dims[0] = text.rows();
    r.dims[1] = text.cols();
    r.dims[2] = r.dims[3] = 1;
    r.is_string = text.str ? 1 : 0;
    std::vector<double> copy = text.d;
    r.data = copy.data();
    event_handler(&r);
}

void run_object_callback(double h, const char* name) {
    Object* o = find_object(h);
    if (!o) return;
    Value text = o->get(name);
    if (text.empty()) return;
    Object& r = root();
    Value saved = r.get("CallbackObject");
    r.props["CallbackObject"] = Value::num(h);
    post_callback_text(text);
    // The callback may have deleted the object it was given, or the previous one.
    if (!saved.empty() && !find_object(saved.d[0])) saved = Value();
    root().props["CallbackObject"] = saved;
}

void free_userdata(const Value& v) {
    if (!free_handler || v.empty() || v.str) return;
    auto bits = static_cast<std::uintptr_t>(v.d[0]);
    if (bits) free_handler(reinterpret_cast<void*>(bits));
}

}  // namespace ae

using namespace ae;

AE_EXPORT void arkengine_qor_init(int, int) { root(); }
AE_EXPORT void arkengine_qor_set_event_handler(ae_event_handler_t f) { event_handler = f; }
AE_EXPORT void arkengine_qor_set_error_handler(ae_error_handler_t f) { error_handler = f; }
AE_EXPORT void arkengine_qor_set_free_handler(ae_free_handler_t f) { free_handler = f; }

AE_EXPORT double arkengine_qor_new_object(const char* kind, int parent) {
    // An object of no kind has no meaning; failing hard here is what the crash report is tested with.
    if (!kind) std::raise(SIGSEGV);
    return new_object(kind, parent);
}

AE_EXPORT int arkengine_qor_is_handle(double h) { return find_object(h) != nullptr; }

AE_EXPORT ae_value* arkengine_qor_get(double h, const char* name) {
    Value v;
    Object* o = live(h, "get");
    if (o && name) get_property(*o, name, v);
    answer_data = v.d;
    answer.ndims = v.nd;
    for (int k = 0; k < 4; ++k) answer.dims[k] = k < v.nd ? v.dims[k] : 1;
    if (v.empty()) answer.dims[0] = answer.dims[1] = 0;
    answer.is_string = v.str ? 1 : 0;
    answer.data = answer_data.empty() ? nullptr : answer_data.data();
    return &answer;
}

AE_EXPORT void arkengine_qor_set(double h, const char* name, ae_value* value) {
    // Deleting what is gone already is not a mistake: a DeleteFcn may have removed it.
    if (name && same_word(name, "Kill") && !find_object(h)) return;
    Object* o = live(h, "set");
    if (o && name) set_property(*o, name, value_of(value));
}

AE_EXPORT double arkengine_qor_current_figure() {
    Object* f = current_figure(false);
    return f ? f->handle : -1.0;
}

AE_EXPORT void arkengine_qor_refresh() {}

AE_EXPORT void arkengine_qor_line_data(double h, int n, double* x, int xs, double* y, int ys, double* z, int zs) {
    Object* o = live(h, "line data");
    if (!o || n < 0) return;
    auto take = [n](const double* p, int stride) {
        std::vector<double> v(n);
        if (stride < 1) stride = 1;
        for (int k = 0; k < n; ++k) v[k] = p[static_cast<size_t>(k) * stride];
        return Value::row(v);
    };
    if (o->kind == Kind::text) {
        // A text takes its one point as its position.
        if (x && y && n > 0) o->props["Position"] = Value::row({x[0], y[0], z ? z[0] : 0.0});
        return;
    }
    if (x) o->props["XData"] = take(x, xs);
    if (y) o->props["YData"] = take(y, ys);
    o->props["ZData"] = z ? take(z, zs) : Value();
    // A surface's points come as one run; its Size gives the grid they fill.
    const Value& size = o->get("Size");
    if (o->kind == Kind::surface && size.count() == 2 && size.d[0] * size.d[1] == n) {
        for (const char* name : {"XData", "YData", "ZData"}) {
            Value& v = o->props[name];
            if (v.count() != n) continue;
            v.dims[0] = static_cast<int>(size.d[0]);
            v.dims[1] = static_cast<int>(size.d[1]);
        }
    }
}

AE_EXPORT void arkengine_qor_mesh_axes(double h) { mesh_axes = h; }
AE_EXPORT void arkengine_qor_surface_axes(double h) { surface_axes = h; }
AE_EXPORT void arkengine_qor_embed_mode(int on) { embedded_mode = on != 0; }
AE_EXPORT void arkengine_qor_set_app_window(void*) {}
AE_EXPORT void arkengine_qor_set_app_key_window(void*) {}
AE_EXPORT void arkengine_qor_console_mode(int) {}
// Headless there is no event loop that could close the object, so waiting ends at once.
AE_EXPORT void arkengine_qor_wait_handle(double) {}
// Headless there is no mouse or keyboard: -1 says that no press can come.
AE_EXPORT int arkengine_qor_wait_button(int) { return -1; }

AE_EXPORT void arkengine_qor_exit(int) {
    std::vector<double> figs = root().children;
    for (double f : figs) delete_object(f);
}

AE_EXPORT void arkengine_qor_uiwait() {}
AE_EXPORT void arkengine_qor_uiresume() {}
