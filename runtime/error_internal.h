// Internal side of the error channel, for the start-up code (crash filter, terminate handler), the
// graphics bridge and the tests.
#pragma once
#include <cstddef>

// Size of the message buffer and of the last-error text (which holds one more byte, so that a stored
// text of 2048 characters keeps its terminator).
constexpr int ak_message_size = 2048;

// The pending last-error text. Non-empty means an error is being carried up the stack.
const char* ak_lasterr_text();
int ak_lasterr_pending();
void ak_lasterr_clear();
// Stores `text` as the last-error text, cut to 2048 characters.
void ak_lasterr_store(const char* text);

// Appends the stack report of ak_error_stack to the NUL-terminated `text`, which lives in a buffer of
// `size` bytes; the report is cut to fit. Allocates nothing, so the crash filter may use it.
// Returns the new length of `text`.
std::size_t ak_error_call_stack_n(char* text, std::size_t size);

// The message box step of the default handlers. There is no box unless a component with a display
// (the graphics engine) installs the hook; the flag bits still decide whether the step runs.
extern void (*ak_message_box_hook)(const char* text, const char* caption, int style);
void ak_message_box(const char* text, const char* caption, int style);

namespace ak_internal {
// The defaults that ak_set_error_handler(0) and ak_set_warning_handler(0) put back.
void default_error_handler(const char* text);
void default_warning_handler(const char* text);
}  // namespace ak_internal
