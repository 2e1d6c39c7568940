// The table of the 29 entries through which the library talks to the graphics engine.
//
// Every graphics call of the library goes through `ak_engine`. It starts out holding the
// do-nothing engine (no display, no objects), so the library works without any engine; a real
// engine, or a test's recording engine, is put in place with ak_engine_install. The numbers in the
// comments are the entries' ordinals.
#pragma once

#include "arklib/matrix.h"

// The record in which a matrix crosses the border, in both directions.
typedef miniM QorValue;

typedef void (*qor_event_handler_t)(QorValue* record);
typedef void (*qor_error_handler_t)(const char* text);
typedef void (*qor_free_handler_t)(Mm* userdata);

struct ak_engine_table {
    void (*qor_init)(int version, int remaining);                         // 4517, first of all
    void (*qor_set_event_handler)(qor_event_handler_t f);                 // 4521
    void (*qor_set_error_handler)(qor_error_handler_t f);                 // 4524
    void (*qor_set_free_handler)(qor_free_handler_t f);                   // 4523
    double (*qor_new_object)(const char* kind, int parent);               // 4531
    int (*qor_is_handle)(double h);                                       // 4527
    QorValue* (*qor_get)(double h, const char* name);                     // 4525, owned by the engine
    void (*qor_set)(double h, const char* name, QorValue* value);         // 4535, the engine copies
    double (*qor_current_figure)();                                       // 4518, negative: none
    void (*qor_refresh)();                                                // 4536
    void (*qor_line_data)(double h, int n, double* x, int xs, double* y, int ys, double* z,
                          int zs);                                        // 4533
    void (*qor_mesh_axes)(double h);                                      // 4513
    void (*qor_surface_axes)(double h);                                   // 4515
    void (*qor_embed_mode)(int on);                                       // 4532
    void (*qor_set_app_window)(void* window);                             // 4519
    void (*qor_set_app_key_window)(void* window);                         // 4520
    void (*qor_console_mode)(int mode);                                   // 4522
    void (*qor_wait_handle)(double h);                                    // 4541
    int (*qor_wait_button)(int mode);                                     // 4542
    void (*qor_exit)(int code);                                           // 4543
    int (*qor_msgbox)(const char* text, const char* title, const char* icon);  // 4529
    int (*qor_questdlg)(const char* text, const char* title, const char* kind, const char* button1,
                        const char* button2, const char* button3);        // 4530
    int (*qor_inputdlg)(const char* prompt, const char* title, int lines, const char* defaults,
                        int resize, char* answer, int answer_size);       // 4526
    int (*qor_menu)(char** items, int count);                             // 4528
    void (*qor_getfile)(const char* filter, const char* title, char* file, int file_size, char* path,
                        int path_size);                                   // 4537
    void (*qor_putfile)(const char* filter, const char* title, char* file, int file_size, char* path,
                        int path_size);                                   // 4538
    int (*qor_pick_color)(int parent, int initial);                       // 4539, negative: cancel
    void (*qor_uiwait)();                                                 // 4540
    void (*qor_uiresume)();                                               // 4534
};

// The live table.
extern ak_engine_table ak_engine;

// The do-nothing engine: it keeps no objects, shows nothing and answers every question with "none"
// (no figure, no handle, cancel). Asked to make an object of no kind it faults on purpose, which is
// how the crash report is exercised.
const ak_engine_table& ak_null_engine();

// Puts `table` in place of the live table and returns the table it replaced. Entries left null in
// `table` are taken from the do-nothing engine, so a partial table is safe to install.
ak_engine_table ak_engine_install(const ak_engine_table& table);

namespace ak_internal {

// Fills the table from the engine library (see engine_load.cpp); false when none was found.
bool engine_load();
// Introduces the library to the engine at load time: loads our engine unless a table is already
// in place, then passes the version and `remaining`, then the three
// receivers (matrices sent by the engine, engine errors, UserData to free), in that order.
void engine_connect(int remaining);
// Gives the engine null for the three receivers, in the same order.
void engine_disconnect();

// The receivers handed to the engine.
void graphics_event(QorValue* record);
void engine_error(const char* text);
void engine_free(Mm* userdata);

// Runs a callback text through callback_func; an empty text is not run. An error raised by the
// callback is shown and does not leave this function, so the engine's event loop survives it.
void run_callback(const Mm& text);

}  // namespace ak_internal
