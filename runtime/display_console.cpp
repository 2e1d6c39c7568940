// Console interaction: input, pause, the key test, clearing the screen and moving home.
#include <cmath>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string>
#include <unistd.h>

#include "arklib/display.h"
#include "arklib/format.h"
#include "arklib/builtins.h"

// Graphics and string conversion live in other parts of the library; they are reached when they
// are linked in, and skipped otherwise.
Mm drawnow() __attribute__((weak));
Mm checkforbuttonpress() __attribute__((weak));
Mm str2num(const Mm& s) __attribute__((weak));

namespace {

int pause_on = 1;

void print_text(const char* text) {
    if (ak_print_handler) ak_print_handler(text);
}

void flush_graphics() {
    if (drawnow) drawnow();
}

void sleep_ms(double ms) {
    if (!(ms > 0)) return;
    if (ms > 1e12) ms = 1e12;
    timespec t;
    t.tv_sec = static_cast<time_t>(ms / 1000);
    t.tv_nsec = static_cast<long>(std::fmod(ms, 1000.0) * 1e6);
    while (nanosleep(&t, &t) != 0) {
    }
}

// Prints the prompt and a newline, reads one reply into a 2048-byte buffer and prints a newline.
// False after "Ctrl-C" has been reported.
bool read_reply(const Mm& prompt, char (&reply)[2048]) {
    flush_graphics();
    std::string p = Mstr_row(prompt).substr(0, sizeof reply - 1);
    print_text(p.c_str());
    print_text("\n");
    reply[0] = '\0';
    if (ak_input_handler) ak_input_handler(reply, sizeof reply);
    reply[sizeof reply - 1] = '\0';
    print_text("\n");
    if (std::strcmp(reply, "ctrl_c_event") == 0) {
        error("Ctrl-C");
        return false;
    }
    return true;
}

}  // namespace

Mm input(const Mm& prompt) {
    char reply[2048];
    if (!read_reply(prompt, reply)) return nop_M;
    if (!reply[0]) return nop_M;
    for (const char* c = reply; *c; ++c) {
        if (!std::strchr("0123456789dDeEfF.+-[] \t\r\n", *c)) {
            warning("input: text is non-numeric, use input(...,'s')");
            break;
        }
    }
    if (!str2num) {
        error("input: no conversion of text to numbers is available");
        return nop_M;
    }
    return str2num(TM(reply));
}

Mm input(const Mm& prompt, const Mm&) {
    char reply[2048];
    if (!read_reply(prompt, reply)) return TM("");
    return TM(reply);
}

Mm pauseM() {
    flush_graphics();
    for (;;) {
        if (checkforbuttonpress) {
            Mm pressed = checkforbuttonpress();
            if (pressed.flags.type == ak_double && pressed.size() == 1 && *pressed.addr() == 1) break;
        }
        if (ak_kbhit_handler && ak_kbhit_handler()) break;
        sleep_ms(10);
    }
    print_text("\n");
    return x_M;
}

Mm pauseM(const Mm& x) {
    flush_graphics();
    if (x.flags.str) {
        std::string s = Mstr_row(x);
        pause_on = s.size() > 1 && s[1] == 'n';
    } else if (pause_on && (x.flags.type == ak_double || x.flags.type == ak_uchar) && x.size() >= 1) {
        sleep_ms(x.flags.type == ak_double ? *x.addr() : *static_cast<const unsigned char*>(x.pr));
    }
    return x_M;
}

Mm kbhitM() { return Mm(static_cast<double>(ak_kbhit_handler ? ak_kbhit_handler() : 0)); }

Mm clc() {
    if (ak_clc_handler) ak_clc_handler();
    return x_M;
}

// Cursor to the top left of a terminal; nothing for a file or a pipe.
Mm home() {
    if (isatty(STDOUT_FILENO)) {
        std::fputs("\x1b[H", stdout);
        std::fflush(stdout);
    }
    return x_M;
}

// ---- rows of the table of functions by name ----------------------------------------------------
AK_BUILTIN("clc", AK_FN(clc));
AK_BUILTIN("home", AK_FN(home));
AK_BUILTIN("input", AK_FN(input, const Mm&), AK_FN(input, const Mm&, const Mm&));
AK_BUILTIN("pause", AK_FN(pauseM), AK_FN(pauseM, const Mm&));
AK_BUILTIN("kbhit", AK_FN(kbhitM));
