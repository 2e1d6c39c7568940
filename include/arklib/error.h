// The error, warning and message channel: replaceable handlers, flag words, the M-file call stack
// and the last-error text.
#pragma once

class Mm;

typedef void (*ak_text_handler_t)(const char* text);
typedef void (*ak_debug_handler_t)(int code, const char* text);
typedef void (*ak_input_handler_t)(char* buffer, int size);
typedef int (*ak_int_handler_t)(void);

extern ak_text_handler_t ak_print_handler;
extern ak_text_handler_t ak_error_handler;
extern ak_text_handler_t ak_warning_handler;
extern ak_text_handler_t ak_message_handler;
extern ak_text_handler_t ak_logmessage_handler;
extern ak_debug_handler_t ak_debug_handler;
extern ak_input_handler_t ak_input_handler;
extern ak_int_handler_t ak_kbhit_handler;
extern ak_int_handler_t ak_clc_handler;

// Each stores its argument, or the default when it is null, and returns the previous handler.
ak_text_handler_t ak_set_print_handler(ak_text_handler_t f);
ak_text_handler_t ak_set_error_handler(ak_text_handler_t f);
ak_text_handler_t ak_set_warning_handler(ak_text_handler_t f);
ak_text_handler_t ak_set_message_handler(ak_text_handler_t f);
ak_text_handler_t ak_set_logmessage_handler(ak_text_handler_t f);
ak_debug_handler_t ak_set_debug_handler(ak_debug_handler_t f);
void ak_set_input_handler(ak_input_handler_t f);
void ak_set_kbhit_handler(ak_int_handler_t f);
void ak_set_clc_handler(ak_int_handler_t f);
int ak_was_handler_set();

// Error flags: 1 print, 2 message box, 8 report scalar variables at their end, 16 throw the
// message as a char* instead of ending the process. Warning flags: 1 print, 2 message box.
extern unsigned ak_default_error_flags;
extern unsigned ak_default_warning_flags;
void ak_set_default_error_flags(unsigned mask, unsigned on);
void ak_set_default_warning_flags(unsigned mask, unsigned on);

// Source position of a located message; set by a host that compiles or interprets source text.
extern int error_line;
extern const char* error_text;
extern const char* error_file;

void error(const char* format, ...) __attribute__((format(printf, 1, 2)));
void warning(const char* format, ...) __attribute__((format(printf, 1, 2)));
void message(const char* format, ...) __attribute__((format(printf, 1, 2)));
void logmessage(const char* format, ...) __attribute__((format(printf, 1, 2)));
void error(int line, const char* format, ...) __attribute__((format(printf, 2, 3)));
void warning(int line, const char* format, ...) __attribute__((format(printf, 2, 3)));

Mm error();
Mm error(const Mm& text);
Mm warning();
Mm warning(const Mm& text);

// Appends the stack report to `text`, a buffer of 2048 bytes; a longer report is cut to fit.
void error_call_stack(char* text);
void error_lasterr();
Mm lasterr();
Mm lasterr(const Mm& text);
int ak_printf(const char* format, ...) __attribute__((format(printf, 1, 2)));

// The call stack of translated M-files. Translated code writes it directly: its layout is fixed.
class ak_error_stack_t {
  public:
    const char* files[513];
    int lines[513];
    int depth;
    int* current_line;
    ak_error_stack_t();
};
extern ak_error_stack_t ak_error_stack;

Mm mfilename();
Mm mfileline();
