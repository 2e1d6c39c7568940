// Handler slots of the output channel, their setters and defaults, and the flag words.
#include "arklib/error.h"
#include "runtime/error_internal.h"

#include <cstdio>
#include <cstring>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

namespace {

int handler_was_set = 0;

void default_print_handler(const char* text) {
    if (text) std::fputs(text, stdout);
}

void print(const char* text) {
    if (ak_print_handler) ak_print_handler(text);
}

void default_message_handler(const char* text) {
    if (ak_default_error_flags & 2) ak_message_box(text, "Message", 0);
    if (ak_default_error_flags & 1) {
        print(text);
        print("\n");
    }
}

void default_logmessage_handler(const char* text) {
    print(text);
    print("\n");
}

void default_debug_handler(int code, const char* text) {
    std::printf("DEBUG:%c %s\n", code, text ? text : "");
}

// One line of keyboard input, without its line end; an empty line at end of input.
void default_input_handler(char* buffer, int size) {
    if (!buffer || size <= 0) return;
    std::fflush(stdout);
    if (!std::fgets(buffer, size, stdin)) {
        buffer[0] = '\0';
        return;
    }
    buffer[std::strcspn(buffer, "\r\n")] = '\0';
}

// Takes a waiting key from a terminal without waiting for a line end. Returns the key, or 0 when
// there is none or standard input is not a terminal.
int default_kbhit_handler() {
    if (!isatty(STDIN_FILENO)) return 0;
    termios saved;
    if (tcgetattr(STDIN_FILENO, &saved) != 0) return 0;
    termios raw = saved;
    raw.c_lflag &= ~(ICANON | ECHO);
    raw.c_cc[VMIN] = 1;
    raw.c_cc[VTIME] = 0;
    tcsetattr(STDIN_FILENO, TCSANOW, &raw);
    int key = 0;
    pollfd pfd = {STDIN_FILENO, POLLIN, 0};
    if (poll(&pfd, 1, 0) > 0 && (pfd.revents & POLLIN)) {
        unsigned char c;
        if (read(STDIN_FILENO, &c, 1) == 1) key = c ? c : 1;
    }
    tcsetattr(STDIN_FILENO, TCSANOW, &saved);
    return key;
}

// Clears a terminal and puts the cursor home; anything else (a file, a pipe) is left alone.
int default_clc_handler() {
    if (isatty(STDOUT_FILENO)) {
        std::fputs("\x1b[2J\x1b[H", stdout);
        std::fflush(stdout);
    }
    return 0;
}

template <typename F>
F replace(F& slot, F f, F fallback) {
    F previous = slot;
    slot = f ? f : fallback;
    handler_was_set = 1;
    return previous;
}

}  // namespace

ak_text_handler_t ak_print_handler = default_print_handler;
ak_text_handler_t ak_error_handler = ak_internal::default_error_handler;
ak_text_handler_t ak_warning_handler = ak_internal::default_warning_handler;
ak_text_handler_t ak_message_handler = default_message_handler;
ak_text_handler_t ak_logmessage_handler = default_logmessage_handler;
ak_debug_handler_t ak_debug_handler = default_debug_handler;
ak_input_handler_t ak_input_handler = default_input_handler;
ak_int_handler_t ak_kbhit_handler = default_kbhit_handler;
ak_int_handler_t ak_clc_handler = default_clc_handler;

unsigned ak_default_error_flags = 7;
unsigned ak_default_warning_flags = 3;

void (*ak_message_box_hook)(const char* text, const char* caption, int style) = nullptr;

ak_text_handler_t ak_set_print_handler(ak_text_handler_t f) {
    return replace(ak_print_handler, f, default_print_handler);
}
ak_text_handler_t ak_set_error_handler(ak_text_handler_t f) {
    return replace(ak_error_handler, f, ak_internal::default_error_handler);
}
ak_text_handler_t ak_set_warning_handler(ak_text_handler_t f) {
    return replace(ak_warning_handler, f, ak_internal::default_warning_handler);
}
ak_text_handler_t ak_set_message_handler(ak_text_handler_t f) {
    return replace(ak_message_handler, f, default_message_handler);
}
ak_text_handler_t ak_set_logmessage_handler(ak_text_handler_t f) {
    return replace(ak_logmessage_handler, f, default_logmessage_handler);
}
ak_debug_handler_t ak_set_debug_handler(ak_debug_handler_t f) {
    return replace(ak_debug_handler, f, default_debug_handler);
}

// The console handlers are not host replacements of the output channel: they leave the
// was-set mark alone.
void ak_set_input_handler(ak_input_handler_t f) { ak_input_handler = f ? f : default_input_handler; }
void ak_set_kbhit_handler(ak_int_handler_t f) { ak_kbhit_handler = f ? f : default_kbhit_handler; }
void ak_set_clc_handler(ak_int_handler_t f) { ak_clc_handler = f ? f : default_clc_handler; }

int ak_was_handler_set() { return handler_was_set; }

void ak_set_default_error_flags(unsigned mask, unsigned on) {
    ak_default_error_flags = on ? (ak_default_error_flags | mask) : (ak_default_error_flags & ~mask);
}
void ak_set_default_warning_flags(unsigned mask, unsigned on) {
    ak_default_warning_flags = on ? (ak_default_warning_flags | mask) : (ak_default_warning_flags & ~mask);
}

void ak_message_box(const char* text, const char* caption, int style) {
    if (ak_message_box_hook) ak_message_box_hook(text ? text : "", caption ? caption : "", style);
}
