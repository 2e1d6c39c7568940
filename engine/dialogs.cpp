// The dialogs of an engine without a window system. On a terminal each one asks on it (the prompt is
// written to the terminal it reads from); without one, it takes the default answer and says so on
// stderr, so that a program run from a script or a service goes on.
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "engine/arkengine.h"

#define AE_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

bool on_terminal() { return isatty(STDIN_FILENO) == 1; }

void say(const std::string& text) {
    const char* p = text.data();
    std::size_t left = text.size();
    while (left) {
        const ssize_t n = write(STDIN_FILENO, p, left);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return;
        p += n;
        left -= static_cast<std::size_t>(n);
    }
}

// One line from the terminal, without its end; false at end of input with nothing read.
bool read_line(std::string& line) {
    line.clear();
    for (;;) {
        char c;
        const ssize_t n = read(STDIN_FILENO, &c, 1);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return !line.empty();
        if (c == '\n') return true;
        if (c != '\r') line += c;
    }
}

// Asks and reads the answer, trimmed of spaces at both ends.
bool ask(const std::string& prompt, std::string& answer) {
    say(prompt);
    if (!read_line(answer)) return false;
    const std::size_t first = answer.find_first_not_of(" \t");
    const std::size_t last = answer.find_last_not_of(" \t");
    answer = first == std::string::npos ? std::string() : answer.substr(first, last - first + 1);
    return true;
}

void no_terminal(const char* dialog, const char* outcome) {
    std::fprintf(stderr, "%s: no terminal to ask on; %s\n", dialog, outcome);
}

std::string text_or(const char* s, const char* otherwise) { return s && *s ? s : otherwise; }

std::vector<std::string> lines_of(const char* s) {
    std::vector<std::string> out;
    std::string t = s ? s : "";
    std::size_t at = 0;
    for (;;) {
        const std::size_t end = t.find('\n', at);
        out.push_back(t.substr(at, end == std::string::npos ? std::string::npos : end - at));
        if (end == std::string::npos) return out;
        at = end + 1;
    }
}

bool same_text_ignoring_case(const std::string& a, const std::string& b) {
    if (a.size() != b.size()) return false;
    for (std::size_t k = 0; k < a.size(); ++k)
        if (std::tolower(static_cast<unsigned char>(a[k])) != std::tolower(static_cast<unsigned char>(b[k])))
            return false;
    return true;
}

// A whole number in [lo, hi] written alone on the line, or 0.
int choice_number(const std::string& s, int lo, int hi) {
    char* end = nullptr;
    const long v = std::strtol(s.c_str(), &end, 10);
    if (s.empty() || *end || v < lo || v > hi) return 0;
    return static_cast<int>(v);
}

void copy_out(const std::string& s, char* to, int size) {
    if (!to || size <= 0) return;
    const std::size_t n = s.size() < static_cast<std::size_t>(size) ? s.size() : static_cast<std::size_t>(size) - 1;
    std::memcpy(to, s.data(), n);
    to[n] = '\0';
}

bool file_exists(const std::string& path) {
    struct stat st;
    return stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

// Asks for a file name; cancelled on a blank line or end of input. `existing` asks again until the
// file exists.
void file_dialog(const char* dialog, const char* filter, const char* title, bool existing, char* file,
                 int file_size, char* path, int path_size) {
    copy_out("", file, file_size);
    copy_out("", path, path_size);
    if (!on_terminal()) {
        no_terminal(dialog, "cancelled");
        return;
    }
    const std::string prompt = text_or(title, dialog) + (filter && *filter ? " (" + std::string(filter) + ")" : "") +
                               ", blank to cancel: ";
    std::string name;
    for (;;) {
        if (!ask(prompt, name) || name.empty()) return;
        if (!existing || file_exists(name)) break;
        say("No such file: " + name + "\n");
    }
    std::string dir;
    const std::size_t slash = name.rfind('/');
    if (slash == std::string::npos) {
        char cwd[4096];
        dir = getcwd(cwd, sizeof cwd) ? std::string(cwd) + "/" : "./";
    } else {
        dir = name.substr(0, slash + 1);
        name = name.substr(slash + 1);
    }
    copy_out(name, file, file_size);
    copy_out(dir, path, path_size);
}

}  // namespace

// A message box shows its text and goes on: on a terminal it is written there, otherwise to stderr.
AE_EXPORT int arkengine_qor_msgbox(const char* text, const char* title, const char* icon) {
    std::string shown = text_or(title, "Message");
    if (icon && *icon && std::strcmp(icon, "none") && std::strcmp(icon, "custom")) shown += " [" + std::string(icon) + "]";
    shown += ": " + text_or(text, "") + "\n";
    if (on_terminal())
        say(shown);
    else
        std::fputs(shown.c_str(), stderr);
    return 0;
}

// The chosen button's number (1 to 3), 0 for the default answer, -1 when cancelled.
AE_EXPORT int arkengine_qor_questdlg(const char* text, const char* title, const char*, const char* b1,
                                     const char* b2, const char* b3) {
    const char* buttons[3] = {b1, b2, b3};
    if (!on_terminal()) {
        no_terminal("questdlg", "taking the default answer");
        return 0;
    }
    std::string menu = text_or(title, "Question") + ": " + text_or(text, "") + "\n";
    for (int k = 0; k < 3; ++k)
        if (buttons[k] && *buttons[k]) {
            menu += "  " + std::to_string(k + 1) + ") " + buttons[k] + "\n";
        }
    say(menu);
    std::string answer;
    for (;;) {
        if (!ask("Choose a number or a name (Enter: the default): ", answer)) return -1;
        if (answer.empty()) return 0;
        const int n = choice_number(answer, 1, 3);
        if (n && buttons[n - 1] && *buttons[n - 1]) return n;
        for (int k = 0; k < 3; ++k)
            if (buttons[k] && *buttons[k] && same_text_ignoring_case(answer, buttons[k])) return k + 1;
    }
}

// Prompts and defaults come one a line; the answers go back the same way. 1 when answered, 0 when
// cancelled.
AE_EXPORT int arkengine_qor_inputdlg(const char* prompt, const char* title, int, const char* defaults, int,
                                     char* answer_text, int size) {
    const std::vector<std::string> prompts = lines_of(prompt);
    std::vector<std::string> answers = lines_of(defaults);
    answers.resize(prompts.size());
    if (!on_terminal()) {
        no_terminal("inputdlg", "taking the default answers");
    } else {
        if (title && *title) say(std::string(title) + "\n");
        for (std::size_t k = 0; k < prompts.size(); ++k) {
            std::string line;
            const std::string shown = answers[k].empty() ? "" : " [" + answers[k] + "]";
            if (!ask(prompts[k] + shown + ": ", line)) return 0;
            if (!line.empty()) answers[k] = line;
        }
    }
    std::string joined;
    for (std::size_t k = 0; k < answers.size(); ++k) joined += (k ? "\n" : "") + answers[k];
    copy_out(joined, answer_text, size);
    return 1;
}

// items[0] is the title, the rest the choices; the result is the chosen number, 0 for none.
AE_EXPORT int arkengine_qor_menu(char** items, int count) {
    if (count < 2) return 0;  // nothing to choose
    if (!on_terminal()) {
        no_terminal("menu", "no choice made");
        return 0;
    }
    std::string shown = "----- " + text_or(count > 0 ? items[0] : nullptr, "Menu") + " -----\n";
    for (int k = 1; k < count; ++k) shown += "  " + std::to_string(k) + ") " + text_or(items[k], "") + "\n";
    say(shown);
    std::string answer;
    for (;;) {
        if (!ask("Select a menu number: ", answer)) return 0;
        const int n = choice_number(answer, 1, count - 1);
        if (n) return n;
    }
}

AE_EXPORT void arkengine_qor_getfile(const char* filter, const char* title, char* file, int file_size, char* path,
                                     int path_size) {
    file_dialog("uigetfile", filter, title, true, file, file_size, path, path_size);
}

AE_EXPORT void arkengine_qor_putfile(const char* filter, const char* title, char* file, int file_size, char* path,
                                     int path_size) {
    file_dialog("uiputfile", filter, title, false, file, file_size, path, path_size);
}

// A colour packed as red * 65536 + green * 256 + blue; the initial one on a blank line, -1 when
// cancelled (or when there is no initial colour to fall back on).
AE_EXPORT int arkengine_qor_pick_color(int, int initial) {
    if (!on_terminal()) {
        no_terminal("uisetcolor", initial < 0 ? "cancelled" : "keeping the initial colour");
        return initial;
    }
    std::string shown;
    if (initial >= 0)
        shown = " [" + std::to_string(initial >> 16 & 255) + " " + std::to_string(initial >> 8 & 255) + " " +
                std::to_string(initial & 255) + "]";
    std::string answer;
    for (;;) {
        if (!ask("Colour as red green blue, each 0 to 255" + shown + ": ", answer)) return -1;
        if (answer.empty()) return initial;
        int rgb[3];
        char tail;
        if (std::sscanf(answer.c_str(), "%d %d %d %c", &rgb[0], &rgb[1], &rgb[2], &tail) == 3 && rgb[0] >= 0 &&
            rgb[0] < 256 && rgb[1] >= 0 && rgb[1] < 256 && rgb[2] >= 0 && rgb[2] < 256)
            return rgb[0] << 16 | rgb[1] << 8 | rgb[2];
    }
}
