// Finding the graphics engine at start-up and filling the table from it.
//
// The engine is libarkengine.so. It is looked for in the folder that holds libarklib itself, then
// by the usual search of the dynamic loader. The environment variable ARKLIB_ENGINE may name
// another file, or be "none" to keep the do-nothing engine. When no engine is found the library
// works on without one: graphics calls then make nothing.
#include <dlfcn.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "graphics/engine_table.h"

namespace {

void* open_engine() {
    const char* chosen = std::getenv("ARKLIB_ENGINE");
    if (chosen && std::strcmp(chosen, "none") == 0) return nullptr;
    if (chosen && *chosen) return dlopen(chosen, RTLD_NOW | RTLD_LOCAL);
    Dl_info info;
    if (dladdr(reinterpret_cast<void*>(&ak_engine_install), &info) && info.dli_fname) {
        std::string path(info.dli_fname);
        size_t slash = path.rfind('/');
        path = (slash == std::string::npos ? std::string(".") : path.substr(0, slash)) + "/libarkengine.so";
        if (void* lib = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) return lib;
    }
    return dlopen("libarkengine.so", RTLD_NOW | RTLD_LOCAL);
}

template <typename F>
bool find(void* lib, const char* name, F& slot) {
    std::string full = std::string("arkengine_") + name;
    slot = reinterpret_cast<F>(dlsym(lib, full.c_str()));
    return slot != nullptr;
}

}  // namespace

namespace ak_internal {

bool engine_load() {
    void* lib = open_engine();
    if (!lib) return false;
    ak_engine_table t{};
    bool all = find(lib, "qor_init", t.qor_init) & find(lib, "qor_set_event_handler", t.qor_set_event_handler) &
               find(lib, "qor_set_error_handler", t.qor_set_error_handler) &
               find(lib, "qor_set_free_handler", t.qor_set_free_handler) &
               find(lib, "qor_new_object", t.qor_new_object) & find(lib, "qor_is_handle", t.qor_is_handle) &
               find(lib, "qor_get", t.qor_get) & find(lib, "qor_set", t.qor_set) &
               find(lib, "qor_current_figure", t.qor_current_figure) & find(lib, "qor_refresh", t.qor_refresh) &
               find(lib, "qor_line_data", t.qor_line_data) & find(lib, "qor_mesh_axes", t.qor_mesh_axes) &
               find(lib, "qor_surface_axes", t.qor_surface_axes) & find(lib, "qor_embed_mode", t.qor_embed_mode) &
               find(lib, "qor_set_app_window", t.qor_set_app_window) &
               find(lib, "qor_set_app_key_window", t.qor_set_app_key_window) &
               find(lib, "qor_console_mode", t.qor_console_mode) & find(lib, "qor_wait_handle", t.qor_wait_handle) &
               find(lib, "qor_wait_button", t.qor_wait_button) & find(lib, "qor_exit", t.qor_exit) &
               find(lib, "qor_msgbox", t.qor_msgbox) & find(lib, "qor_questdlg", t.qor_questdlg) &
               find(lib, "qor_inputdlg", t.qor_inputdlg) & find(lib, "qor_menu", t.qor_menu) &
               find(lib, "qor_getfile", t.qor_getfile) & find(lib, "qor_putfile", t.qor_putfile) &
               find(lib, "qor_pick_color", t.qor_pick_color) & find(lib, "qor_uiwait", t.qor_uiwait) &
               find(lib, "qor_uiresume", t.qor_uiresume);
    // An engine that lacks an entry is not used at all: a mix of two engines would not agree on
    // what a handle is.
    if (!all) {
        dlclose(lib);
        return false;
    }
    ak_engine_install(t);
    return true;
}

}  // namespace ak_internal
