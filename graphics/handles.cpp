// The thin functions over the engine: handle tests, object search, the callback object, waiting,
// and the hand-over of windows and modes.
#include <cstring>
#include <string>
#include <vector>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/list.h"
#include "arklib/strings.h"
#include "graphics/graphics_internal.h"

using namespace ak_internal;

namespace {

Mm empty_matrix() { return Mm(0, 0, 0, 0, 0, ak_double); }

// Element 1 of m truncated to an int, 0 when m has none.
int first_int(const Mm& m) {
    if (m.size() < 1) return 0;
    double v = handle_at(m, 0);
    return v == v ? static_cast<int>(v) : 0;
}

Mm column_of(const std::vector<double>& v) {
    Mm out(0, 0, 0, static_cast<int>(v.size()), v.empty() ? 0 : 1, ak_double);
    for (size_t k = 0; k < v.size(); ++k) out.addr()[k] = v[k];
    return out;
}

// Does object h match every (name, value) pair of the list from position first on?
bool matches(double h, const Mm& list, int first) {
    int n = list.size();
    for (int p = first; p + 1 < n; p += 2) {
        const Mm& name = cell_at(list, p);
        const Mm& value = cell_at(list, p + 1);
        Mm have = get(Mm(h), name);
        if (value.flags.str) {
            if (!have.flags.str || !values_equal(upper(have), upper(value))) return false;
        } else if (!values_equal(have, value)) {
            return false;
        }
    }
    return true;
}

}  // namespace

Mm ak_new_object(const char* kind, const Mm& parent) {
    return Mm(ak_engine.qor_new_object(kind, parent.size() > 0 ? first_int(parent) : -1));
}

Mm ishandle(const Mm& h) {
    if (h.size() <= 0) return empty_matrix();
    Mm out(0, 0, 0, h.ndims, h.dims, ak_double);
    for (int k = 0; k < out.nnz; ++k) out.addr()[k] = 1.0;
    for (int k = 0; k < out.nnz; ++k) out.addr()[k] = ak_engine.qor_is_handle(handle_at(h, k)) ? 1.0 : 0.0;
    return out;
}

Mm ishghandle(const Mm& h) { return ishandle(h); }

Mm allchild(const Mm& h) { return get(h, "Children"); }

Mm findobj(const Mm& list) {
    int n = list.size();
    int p = 0;
    std::vector<double> work;
    if (n > 0 && !cell_at(list, 0).flags.str) {
        const Mm& start = cell_at(list, 0);
        for (int k = 0; k < start.size(); ++k) work.push_back(handle_at(start, k));
        p = 1;
    } else {
        work.push_back(0.0);
    }
    bool flat = false;
    if (p < n && text_is(cell_at(list, p), "flat")) {
        flat = true;
        ++p;
    }
    // The list grows while it is walked: breadth first.
    if (!flat)
        for (size_t k = 0; k < work.size(); ++k) {
            Mm kids = get(Mm(work[k]), "Children");
            for (int c = 0; c < kids.size(); ++c) work.push_back(handle_at(kids, c));
        }
    std::vector<double> found;
    for (double h : work)
        if (matches(h, list, p)) found.push_back(h);
    return column_of(found);
}

Mm findobj() { return findobj(Mm(CL(0.0))); }
Mm findall(const Mm& list) { return findobj(list); }

Mm findfigs() {
    Mm kids = get(Mm(0.0), "Children");
    for (int k = 0; k < kids.size(); ++k) set(Mm(handle_at(kids, k)), "MoveIntoScreen", Mm(0.0));
    return x_M;
}

Mm deleteobj(const Mm& h) {
    set(h, "Kill", Mm(1.0));
    return x_M;
}

Mm gco(const Mm& f) { return get(f, "CurrentObject"); }
Mm gco() { return gco(Mm(current_figure())); }

Mm gcbo() { return get(Mm(0.0), "CallbackObject"); }

Mm gcbf() {
    Mm o = gcbo();
    for (int level = 0; level < 3; ++level) {
        if (o.size() == 0 || handle_at(o, 0) <= 0) return o;
        if (level == 2) break;
        Mm parent = get(Mm(handle_at(o, 0)), "Parent");
        if (parent.size() == 0 || handle_at(parent, 0) <= 0) return o;
        o = parent;
    }
    return o;
}

Mm gcbo(i_o_t, Mm& o, Mm& f) {
    o = gcbo();
    f = gcbf();
    return o;
}

Mm qorcrash() {
    ak_engine.qor_new_object(nullptr, -1);
    return x_M;
}

Mm consolemode(const Mm& m) {
    ak_engine.qor_console_mode(first_int(m));
    return x_M;
}

Mm setapplicationhandle(void* window) {
    ak_engine.qor_set_app_window(window);
    return x_M;
}

Mm setapplicationkeyhandle(void* window) {
    ak_engine.qor_set_app_key_window(window);
    return x_M;
}

Mm waitfor(const Mm& h) {
    if (h.size() > 0) ak_engine.qor_wait_handle(handle_at(h, 0));
    return x_M;
}

Mm waitfor(const Mm&, const Mm&) {
    error("waitfor(h,propname) is not supported");
    return x_M;
}

Mm waitfor(const Mm&, const Mm&, const Mm&) {
    error("waitfor(h,propname,propvalue) is not supported");
    return x_M;
}

Mm waitforbuttonpress() { return Mm(static_cast<double>(ak_engine.qor_wait_button(0))); }
Mm checkforbuttonpress() { return Mm(static_cast<double>(ak_engine.qor_wait_button(1))); }

Mm setstatus(const Mm& f, const Mm& text) {
    Mm found = findobj(Mm((CL(f), TM("Tag"), TM("Status"))));
    if (found.size() > 0) set(found, "String", text);
    return x_M;
}

Mm setstatus(const Mm& text) { return setstatus(Mm(current_figure()), text); }

Mm designer() {
    double f = current_figure();
    // Showing the figure is what figure(n) does: the engine finds it, or makes one.
    double shown = ak_engine.qor_new_object("Figure", f > 0 ? static_cast<int>(f) : -1);
    set(Mm(shown), "DesignMode", Mm(1.0));
    return x_M;
}

Mm guide() { return designer(); }

Mm saveas(const Mm& h, const Mm& file) {
    set(h, "Store", file);
    return x_M;
}

Mm saveas(const Mm& h, const Mm& file, const Mm& format) {
    char name[1024], ext[32];
    Mstr(file, name, sizeof name);
    Mstr(format, ext, sizeof ext);
    std::string full = std::string(name) + "." + ext;
    set(h, "Store", TM(full.c_str()));
    return x_M;
}

AK_BUILTIN("ishandle", ishandle);
AK_BUILTIN("ishghandle", ishghandle);
AK_BUILTIN("allchild", allchild);
AK_BUILTIN("findobj", AK_FN(findobj), AK_FN(findobj, const Mm&));
AK_BUILTIN("findall", findall);
AK_BUILTIN("findfigs", findfigs);
AK_BUILTIN("deleteobj", deleteobj);
AK_BUILTIN("gco", AK_FN(gco), AK_FN(gco, const Mm&));
AK_BUILTIN("gcbo", AK_FN(gcbo), AK_FN(gcbo, i_o_t, Mm&, Mm&));
AK_BUILTIN("gcbf", gcbf);
AK_BUILTIN("qorcrash", qorcrash);
AK_BUILTIN("consolemode", consolemode);
AK_BUILTIN("waitfor", AK_FN(waitfor, const Mm&), AK_FN(waitfor, const Mm&, const Mm&),
           AK_FN(waitfor, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("waitforbuttonpress", waitforbuttonpress);
AK_BUILTIN("checkforbuttonpress", checkforbuttonpress);
AK_BUILTIN("setstatus", AK_FN(setstatus, const Mm&), AK_FN(setstatus, const Mm&, const Mm&));
AK_BUILTIN("designer", designer);
AK_BUILTIN("guide", guide);
AK_BUILTIN("saveas", AK_FN(saveas, const Mm&, const Mm&), AK_FN(saveas, const Mm&, const Mm&, const Mm&));
