// The engine table, the do-nothing engine that fills it until a real engine is installed, and the
// library's side of the start-up and shutdown exchange with the engine.
#include "graphics/engine_table.h"

#include <climits>
#include <cmath>
#include <csignal>

#include "arklib/calling.h"
#include "arklib/startup.h"
#include "runtime/error_internal.h"
#include "arklib/builtins.h"

namespace {

// ---- the do-nothing engine ------------------------------------------------------------------------

// What the do-nothing engine answers to qor_get: an empty real matrix. The caller copies out of it
// at once and never frees it.
QorValue empty_value;

void null_init(int, int) {}
void null_set_event_handler(qor_event_handler_t) {}
void null_set_error_handler(qor_error_handler_t) {}
void null_set_free_handler(qor_free_handler_t) {}

double null_new_object(const char* kind, int) {
    // An object of no kind has no meaning; the engine must fail on it.
    if (!kind) std::raise(SIGSEGV);
    return -1.0;
}

int null_is_handle(double) { return 0; }
QorValue* null_get(double, const char*) {
    empty_value = QorValue();
    return &empty_value;
}
void null_set(double, const char*, QorValue*) {}
double null_current_figure() { return -1.0; }
void null_refresh() {}
void null_line_data(double, int, double*, int, double*, int, double*, int) {}
void null_handle_slot(double) {}
void null_int_slot(int) {}
void null_window(void*) {}
int null_wait_button(int) { return -1; }
int null_msgbox(const char*, const char*, const char*) { return 0; }
int null_questdlg(const char*, const char*, const char*, const char*, const char*, const char*) { return 0; }
int null_inputdlg(const char*, const char*, int, const char*, int, char* answer, int size) {
    if (answer && size > 0) answer[0] = '\0';
    return 0;
}
int null_menu(char**, int) { return 0; }
void null_file_dialog(const char*, const char*, char* file, int file_size, char* path, int path_size) {
    if (file && file_size > 0) file[0] = '\0';
    if (path && path_size > 0) path[0] = '\0';
}
int null_pick_color(int, int) { return -1; }
void null_void() {}

constexpr ak_engine_table null_engine = {
    null_init,          null_set_event_handler, null_set_error_handler, null_set_free_handler,
    null_new_object,    null_is_handle,         null_get,               null_set,
    null_current_figure, null_refresh,          null_line_data,         null_handle_slot,
    null_handle_slot,   null_int_slot,          null_window,            null_window,
    null_int_slot,      null_handle_slot,       null_wait_button,       null_int_slot,
    null_msgbox,        null_questdlg,          null_inputdlg,          null_menu,
    null_file_dialog,   null_file_dialog,       null_pick_color,        null_void,
    null_void,
};

// Fills the null entries of `t` from the do-nothing engine.
template <typename F>
void keep_or_default(F& slot, F fallback) {
    if (!slot) slot = fallback;
}

ak_engine_table completed(ak_engine_table t) {
    const ak_engine_table& d = null_engine;
    keep_or_default(t.qor_init, d.qor_init);
    keep_or_default(t.qor_set_event_handler, d.qor_set_event_handler);
    keep_or_default(t.qor_set_error_handler, d.qor_set_error_handler);
    keep_or_default(t.qor_set_free_handler, d.qor_set_free_handler);
    keep_or_default(t.qor_new_object, d.qor_new_object);
    keep_or_default(t.qor_is_handle, d.qor_is_handle);
    keep_or_default(t.qor_get, d.qor_get);
    keep_or_default(t.qor_set, d.qor_set);
    keep_or_default(t.qor_current_figure, d.qor_current_figure);
    keep_or_default(t.qor_refresh, d.qor_refresh);
    keep_or_default(t.qor_line_data, d.qor_line_data);
    keep_or_default(t.qor_mesh_axes, d.qor_mesh_axes);
    keep_or_default(t.qor_surface_axes, d.qor_surface_axes);
    keep_or_default(t.qor_embed_mode, d.qor_embed_mode);
    keep_or_default(t.qor_set_app_window, d.qor_set_app_window);
    keep_or_default(t.qor_set_app_key_window, d.qor_set_app_key_window);
    keep_or_default(t.qor_console_mode, d.qor_console_mode);
    keep_or_default(t.qor_wait_handle, d.qor_wait_handle);
    keep_or_default(t.qor_wait_button, d.qor_wait_button);
    keep_or_default(t.qor_exit, d.qor_exit);
    keep_or_default(t.qor_msgbox, d.qor_msgbox);
    keep_or_default(t.qor_questdlg, d.qor_questdlg);
    keep_or_default(t.qor_inputdlg, d.qor_inputdlg);
    keep_or_default(t.qor_menu, d.qor_menu);
    keep_or_default(t.qor_getfile, d.qor_getfile);
    keep_or_default(t.qor_putfile, d.qor_putfile);
    keep_or_default(t.qor_pick_color, d.qor_pick_color);
    keep_or_default(t.qor_uiwait, d.qor_uiwait);
    keep_or_default(t.qor_uiresume, d.qor_uiresume);
    return t;
}

// The first element of a numeric matrix, truncated to an int; 0 when there is none.
int first_as_int(const Mm& m) {
    if (m.flags.sparse || m.size() < 1 || m.nnz < 1 || !m.pr) return 0;
    double v = m.flags.type == ak_uchar ? *static_cast<const unsigned char*>(m.pr)
               : m.flags.type == ak_double ? *static_cast<const double*>(m.pr)
                                           : 0.0;
    if (!(v == v)) return 0;
    v = std::trunc(v);
    return v >= INT_MAX ? INT_MAX : v <= INT_MIN ? INT_MIN : static_cast<int>(v);
}

}  // namespace

// Constant-initialised, so the table is usable by any static initialiser of the library.
ak_engine_table ak_engine = null_engine;

const ak_engine_table& ak_null_engine() { return null_engine; }

ak_engine_table ak_engine_install(const ak_engine_table& table) {
    ak_engine_table previous = ak_engine;
    ak_engine = completed(table);
    return previous;
}

namespace ak_internal {

void engine_connect(int remaining) {
    // A table put in place before start-up (by a host or a test) is kept.
    if (ak_engine.qor_init == null_engine.qor_init) engine_load();
    ak_engine.qor_init(ARKLIB_VERSION, remaining);
    ak_engine.qor_set_event_handler(graphics_event);
    ak_engine.qor_set_error_handler(engine_error);
    ak_engine.qor_set_free_handler(engine_free);
}

void engine_disconnect() {
    ak_engine.qor_set_event_handler(nullptr);
    ak_engine.qor_set_error_handler(nullptr);
    ak_engine.qor_set_free_handler(nullptr);
}

void graphics_event(QorValue* record) {
    if (!record || record->ndims < 2) return;
    int nd = record->ndims > 4 ? 4 : record->ndims;
    Mm m(0, 0, 0, nd, record->dims, ak_double);
    if (record->data && m.nnz > 0) {
        // The record's element count is the product of all four sizes; never read past it.
        int available = record->size();
        double* out = m.addr();
        for (int k = 0; k < m.nnz; ++k) out[k] = k < available ? record->data[k] : 0.0;
    }
    m.flags.str = record->str ? 1 : 0;
    run_callback(m);
}

// Engine errors are reported as the library's own.
void engine_error(const char* text) { error("%s", text ? text : ""); }

// A UserData matrix lives on the heap, made by the library; the engine hands it back when its
// object dies.
void engine_free(Mm* userdata) { delete userdata; }

void run_callback(const Mm& text) {
    if (text.size() <= 0) return;
    int saved_depth = ak_error_stack.depth;
    Mm copy(text);
    try {
        callback_func(copy);
    } catch (...) {
        error_lasterr();
        ak_error_stack.depth = saved_depth;
    }
}

}  // namespace ak_internal

Mm guiexit(const Mm& code) {
    // Pending drawing is shown before the engine closes.
    if (ak_engine.qor_current_figure() > 0) ak_engine.qor_refresh();
    ak_engine.qor_exit(first_as_int(code));
    return x_M;
}

// ---- rows of the table of functions by name ----------------------------------------------------
AK_BUILTIN("guiexit", AK_FN(guiexit, const Mm&));
