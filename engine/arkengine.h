// The graphics engine's entries, as the library finds them in libarkengine.so.
//
// The engine is a library of its own: it knows nothing of the matrix library. Values cross in the
// plain record `ae_value` (the same layout as the library's QorValue); the engine owns the records
// that it returns and copies the ones it is given. Errors are reported through the error handler
// given at start-up, events (callback texts) through the event handler, and the pointers stored
// in UserData are handed back through the free handler when their object dies.
//
// Each entry is exported under the name "arkengine_" followed by its name in the table, for
// example arkengine_qor_set.
#pragma once

extern "C" {

struct ae_value {
    int ndims;     // 2 to 4; -1 once released
    int dims[4];   // sizes; entries beyond ndims hold 1
    int is_string; // nonzero: the numbers are character codes
    double* data;  // column-major elements, malloc'd by the side that built the record
};

typedef void (*ae_event_handler_t)(ae_value* record);
typedef void (*ae_error_handler_t)(const char* text);
typedef void (*ae_free_handler_t)(void* userdata);

void arkengine_qor_init(int version, int remaining);
void arkengine_qor_set_event_handler(ae_event_handler_t f);
void arkengine_qor_set_error_handler(ae_error_handler_t f);
void arkengine_qor_set_free_handler(ae_free_handler_t f);
double arkengine_qor_new_object(const char* kind, int parent);
int arkengine_qor_is_handle(double h);
ae_value* arkengine_qor_get(double h, const char* name);
void arkengine_qor_set(double h, const char* name, ae_value* value);
double arkengine_qor_current_figure();
void arkengine_qor_refresh();
void arkengine_qor_line_data(double h, int n, double* x, int xs, double* y, int ys, double* z, int zs);
void arkengine_qor_mesh_axes(double h);
void arkengine_qor_surface_axes(double h);
void arkengine_qor_embed_mode(int on);
void arkengine_qor_set_app_window(void* window);
void arkengine_qor_set_app_key_window(void* window);
void arkengine_qor_console_mode(int mode);
void arkengine_qor_wait_handle(double h);
int arkengine_qor_wait_button(int mode);
void arkengine_qor_exit(int code);
int arkengine_qor_msgbox(const char* text, const char* title, const char* icon);
int arkengine_qor_questdlg(const char* text, const char* title, const char* kind, const char* b1,
                           const char* b2, const char* b3);
int arkengine_qor_inputdlg(const char* prompt, const char* title, int lines, const char* defaults,
                           int resize, char* answer, int answer_size);
int arkengine_qor_menu(char** items, int count);
void arkengine_qor_getfile(const char* filter, const char* title, char* file, int file_size,
                           char* path, int path_size);
void arkengine_qor_putfile(const char* filter, const char* title, char* file, int file_size,
                           char* path, int path_size);
int arkengine_qor_pick_color(int parent, int initial);
void arkengine_qor_uiwait();
void arkengine_qor_uiresume();
}
