// Dialogs over the engine's dialog entries, and the progress bar.
#include "arklib/dialogs.h"

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "arklib/builtins.h"
#include "arklib/cells.h"
#include "arklib/subscript.h"
#include "arklib/error.h"
#include "graphics/graphics_internal.h"
#include "runtime/strings_internal.h"

using namespace ak_internal;
using ak_strings::codes_of;

namespace {

bool is_text(const Mm& m) { return m.flags.str || (m.size() == 0 && m.flags.type == ak_double); }

// The rows of a character matrix, trailing blanks removed; an empty text is one empty line.
void append_rows(const Mm& m, std::vector<std::string>& out) {
    if (m.size() == 0) {
        out.push_back("");
        return;
    }
    const std::vector<double> codes = codes_of(m);
    const int rows = m.rows(), cols = rows ? static_cast<int>(codes.size()) / rows : 0;
    for (int r = 0; r < rows; ++r) {
        std::string line;
        for (int c = 0; c < cols; ++c) line += static_cast<char>(codes[r + static_cast<std::size_t>(c) * rows]);
        line.erase(line.find_last_not_of(' ') + 1);
        out.push_back(line);
    }
}

// The lines of a message: a string, a character matrix or a cell of them. False for anything else.
bool lines_of(const Mm& m, std::vector<std::string>& out) {
    if (m.flags.type == ak_mm && !m.fields) {
        for (int k = 0; k < m.size(); ++k)
            if (!lines_of(cell_at(m, k), out)) return false;
        return true;
    }
    if (!is_text(m)) return false;
    append_rows(m, out);
    return true;
}

std::string joined(const std::vector<std::string>& lines) {
    std::string s;
    for (std::size_t k = 0; k < lines.size(); ++k) s += (k ? "\n" : "") + lines[k];
    return s;
}

// The text of an argument that must be text; reports and gives false otherwise.
bool text_argument(const char* fn, const char* what, const Mm& m, std::string& out) {
    std::vector<std::string> lines;
    if (!lines_of(m, lines)) {
        error("%s: the %s must be text or a cell of text", fn, what);
        return false;
    }
    out = joined(lines);
    return true;
}

Mm message_box(const char* fn, const Mm& message, const Mm& title, const char* icon) {
    std::string text, heading;
    if (!text_argument(fn, "message", message, text) || !text_argument(fn, "title", title, heading)) return x_M;
    return Mm(static_cast<double>(ak_engine.qor_msgbox(text.c_str(), heading.c_str(), icon)));
}

Mm no_text() { return TM(""); }

}  // namespace

Mm msgbox(const Mm& message) { return msgbox(message, no_text()); }
Mm msgbox(const Mm& message, const Mm& title) { return message_box("msgbox", message, title, "none"); }
Mm msgbox(const Mm& message, const Mm& title, const Mm& icon) {
    std::string word;
    if (!text_argument("msgbox", "icon", icon, word)) return x_M;
    for (const char* known : {"none", "error", "help", "warn", "custom"})
        if (word == known) return message_box("msgbox", message, title, known);
    error("msgbox: unknown icon \"%s\" (none, error, help, warn or custom)", word.c_str());
    return x_M;
}
Mm errordlg(const Mm& message) { return errordlg(message, TM("Error Dialog")); }
Mm errordlg(const Mm& message, const Mm& title) { return message_box("errordlg", message, title, "error"); }
Mm warndlg(const Mm& message) { return warndlg(message, TM("Warning Dialog")); }
Mm warndlg(const Mm& message, const Mm& title) { return message_box("warndlg", message, title, "warn"); }
Mm helpdlg(const Mm& message) { return helpdlg(message, TM("Help Dialog")); }
Mm helpdlg(const Mm& message, const Mm& title) { return message_box("helpdlg", message, title, "help"); }

// ---- questions ------------------------------------------------------------------------------------

namespace {

Mm ask_question(const Mm& question, const Mm& title, const std::vector<Mm>& buttons, const Mm& default_button) {
    std::string q, heading, fallback, names[3];
    if (!text_argument("questdlg", "question", question, q) || !text_argument("questdlg", "title", title, heading) ||
        !text_argument("questdlg", "default button", default_button, fallback))
        return x_M;
    for (std::size_t k = 0; k < buttons.size(); ++k)
        if (!text_argument("questdlg", "button", buttons[k], names[k])) return x_M;
    const int answer = ak_engine.qor_questdlg(q.c_str(), heading.c_str(), "quest", names[0].c_str(), names[1].c_str(),
                                              names[2].c_str());
    if (answer < 0) return TM("");
    if (answer >= 1 && answer <= 3 && !names[answer - 1].empty()) return TM(names[answer - 1].c_str());
    return TM(fallback.c_str());
}

}  // namespace

Mm questdlg(const Mm& question) { return questdlg(question, no_text()); }
Mm questdlg(const Mm& question, const Mm& title) { return questdlg(question, title, TM("Yes")); }
Mm questdlg(const Mm& question, const Mm& title, const Mm& default_button) {
    return ask_question(question, title, {TM("Yes"), TM("No"), TM("Cancel")}, default_button);
}
Mm questdlg(const Mm& question, const Mm& title, const Mm& b1, const Mm& b2, const Mm& default_button) {
    return ask_question(question, title, {b1, b2}, default_button);
}
Mm questdlg(const Mm& question, const Mm& title, const Mm& b1, const Mm& b2, const Mm& b3,
            const Mm& default_button) {
    return ask_question(question, title, {b1, b2, b3}, default_button);
}

// ---- input forms ----------------------------------------------------------------------------------

Mm inputdlg(const Mm& prompts) { return inputdlg(prompts, no_text()); }
Mm inputdlg(const Mm& prompts, const Mm& title) { return inputdlg(prompts, title, Mm(1.0)); }
Mm inputdlg(const Mm& prompts, const Mm& title, const Mm& lines) {
    return inputdlg(prompts, title, lines, Mm(0, 0, 0, 0, 0, ak_mm));
}
Mm inputdlg(const Mm& prompts, const Mm& title, const Mm& lines, const Mm& defaults) {
    std::vector<std::string> asked, given;
    std::string heading;
    if (!lines_of(prompts, asked)) {
        error("inputdlg: the prompts must be text or a cell of text");
        return x_M;
    }
    if (!text_argument("inputdlg", "title", title, heading)) return x_M;
    if (defaults.size() > 0 && !lines_of(defaults, given)) {
        error("inputdlg: the default answers must be a cell of text");
        return x_M;
    }
    if (!given.empty() && given.size() != asked.size()) {
        error("inputdlg: %d default answers for %d prompts", static_cast<int>(given.size()),
              static_cast<int>(asked.size()));
        return x_M;
    }
    given.resize(asked.size());
    const int rows = lines.size() > 0 && !lines.flags.str ? static_cast<int>(lines.r()) : 1;
    std::vector<char> answer(1 << 16);
    if (!ak_engine.qor_inputdlg(joined(asked).c_str(), heading.c_str(), rows, joined(given).c_str(), 0, answer.data(),
                                static_cast<int>(answer.size())))
        return Mm(0, 0, 0, 0, 0, ak_mm);
    // One answer a line, as many as there are prompts.
    Mm out(0, 0, 0, static_cast<int>(asked.size()), 1, ak_mm);
    std::string all(answer.data());
    std::size_t at = 0;
    for (int k = 0; k < out.size(); ++k) {
        const std::size_t end = all.find('\n', at);
        const std::string one = at > all.size() ? "" : all.substr(at, end == std::string::npos ? std::string::npos : end - at);
        out.br(Mm(k + 1.0)) = TM(one.c_str());
        at = end == std::string::npos ? all.size() + 1 : end + 1;
    }
    return out;
}

// ---- menus ------------------------------------------------------------------------------------------

Mm menu(const Mm& title, const Mm& choices) {
    std::string heading;
    std::vector<std::string> items;
    if (!text_argument("menu", "title", title, heading)) return x_M;
    if (choices.flags.type == ak_mm && !choices.fields) {
        for (int k = 0; k < choices.size(); ++k) {
            std::string one;
            if (!text_argument("menu", "choice", cell_at(choices, k), one)) return x_M;
            items.push_back(one);
        }
    } else {
        std::string one;
        if (!text_argument("menu", "choice", choices, one)) return x_M;
        items.push_back(one);
    }
    std::vector<char*> pointers;
    pointers.push_back(&heading[0]);
    for (std::string& s : items) pointers.push_back(&s[0]);
    return Mm(static_cast<double>(ak_engine.qor_menu(pointers.data(), static_cast<int>(pointers.size()))));
}

namespace {

// menu(title, choice1, choice2, ...) by name.
void menu_by_name(int nin, const Mm* in, int, Mm* out) {
    if (nin < 2) {
        error("menu: needs a title and at least one choice");
        return;
    }
    Mm choices(0, 0, 0, 1, nin - 1, ak_mm);
    for (int k = 1; k < nin; ++k) choices.br(Mm(static_cast<double>(k))) = in[k];
    out[0] = menu(in[0], choices);
}

}  // namespace

// ---- file and colour pickers -------------------------------------------------------------------------

namespace {

Mm pick_file(bool existing, const Mm& filter, const Mm& title, Mm& file, Mm& path) {
    const char* fn = existing ? "uigetfile" : "uiputfile";
    std::string pattern, heading;
    if (!text_argument(fn, "filter", filter, pattern) || !text_argument(fn, "title", title, heading)) return x_M;
    char name[512], folder[512];
    (existing ? ak_engine.qor_getfile : ak_engine.qor_putfile)(pattern.c_str(), heading.c_str(), name, sizeof name,
                                                               folder, sizeof folder);
    name[sizeof name - 1] = folder[sizeof folder - 1] = '\0';
    if (!name[0]) {
        file = Mm(0.0);
        path = Mm(0.0);
    } else {
        file = TM(name);
        path = TM(folder);
    }
    return file;
}

}  // namespace

Mm uigetfile(const Mm& filter, const Mm& title, i_o_t, Mm& file, Mm& path) {
    return pick_file(true, filter, title, file, path);
}
Mm uigetfile(const Mm& filter, i_o_t, Mm& file, Mm& path) { return uigetfile(filter, TM("Open"), i_o, file, path); }
Mm uigetfile(i_o_t, Mm& file, Mm& path) { return uigetfile(TM("*"), i_o, file, path); }
Mm uigetfile(const Mm& filter, const Mm& title) {
    Mm file, path;
    return uigetfile(filter, title, i_o, file, path);
}
Mm uigetfile(const Mm& filter) { return uigetfile(filter, TM("Open")); }
Mm uigetfile() { return uigetfile(TM("*")); }

Mm uiputfile(const Mm& filter, const Mm& title, i_o_t, Mm& file, Mm& path) {
    return pick_file(false, filter, title, file, path);
}
Mm uiputfile(const Mm& filter, i_o_t, Mm& file, Mm& path) { return uiputfile(filter, TM("Save As"), i_o, file, path); }
Mm uiputfile(i_o_t, Mm& file, Mm& path) { return uiputfile(TM("*"), i_o, file, path); }
Mm uiputfile(const Mm& filter, const Mm& title) {
    Mm file, path;
    return uiputfile(filter, title, i_o, file, path);
}
Mm uiputfile(const Mm& filter) { return uiputfile(filter, TM("Save As")); }
Mm uiputfile() { return uiputfile(TM("*")); }

Mm uisetcolor() { return uisetcolor(Mm(0, 0, 0, 0, 0, ak_double)); }
Mm uisetcolor(const Mm& initial) {
    int packed = -1;
    if (initial.size() > 0) {
        if (initial.size() != 3 || initial.flags.str || initial.flags.type != ak_double) {
            error("uisetcolor: the initial colour must be an RGB row of three values from 0 to 1");
            return x_M;
        }
        packed = 0;
        for (int k = 0; k < 3; ++k) {
            const double v = initial.addr()[k];
            if (!(v >= 0 && v <= 1)) {
                error("uisetcolor: the initial colour must be an RGB row of three values from 0 to 1");
                return x_M;
            }
            packed = packed << 8 | static_cast<int>(std::lround(v * 255));
        }
    }
    const int chosen = ak_engine.qor_pick_color(0, packed);
    if (chosen < 0) return initial.size() > 0 ? initial : Mm(0.0);
    Mm rgb(0, 0, 0, 1, 3, ak_double);
    for (int k = 0; k < 3; ++k) rgb.addr()[k] = (chosen >> (16 - 8 * k) & 255) / 255.0;
    return rgb;
}

// ---- progress bars ----------------------------------------------------------------------------------

namespace {

void draw_bar(const std::string& message, double fraction) {
    if (isatty(STDERR_FILENO) != 1) return;
    const int width = 30, filled = static_cast<int>(fraction * width + 0.5);
    std::fprintf(stderr, "\r%s [%s%s] %3d%%%s", message.c_str(), std::string(filled, '#').c_str(),
                 std::string(width - filled, '.').c_str(), static_cast<int>(fraction * 100 + 0.5),
                 fraction >= 1 ? "\n" : "");
    std::fflush(stderr);
}

// Moves bar h (0 makes a new one) to x, with a new message when one is given.
Mm move_bar(const Mm& x, double h, const Mm* message) {
    if (x.size() != 1 || x.flags.str || x.flags.type != ak_double || std::isnan(x.addr()[0])) {
        error("waitbar: the fraction must be a number from 0 to 1");
        return x_M;
    }
    std::string text;
    if (message && !text_argument("waitbar", "message", *message, text)) return x_M;
    const double fraction = std::fmin(1.0, std::fmax(0.0, x.addr()[0]));
    Mm bar(h);
    if (h == 0) {
        // A bar is its own figure and never becomes the current one: plots keep their place.
        const Mm previous = get(Mm(0.0), "CurrentFigure");
        bar = ak_new_object("Figure", Mm(-1.0));
        set(bar, "Tag", TM("waitbar"));
        set(bar, "HandleVisibility", TM("off"));
        if (previous.size() > 0) set(Mm(0.0), "CurrentFigure", previous);
    } else if (ishandle(bar).r() == 0) {
        error("waitbar: %g is not a progress bar", h);
        return x_M;
    }
    if (message) set(bar, "Name", TM(text.c_str()));
    set(bar, "UserData", Mm(fraction));
    Mm name = get(bar, "Name");
    draw_bar(name.flags.str ? text_of(name) : text, fraction);
    return bar;
}

}  // namespace

Mm waitbar(const Mm& x) { return move_bar(x, 0, nullptr); }
Mm waitbar(const Mm& x, const Mm& message_or_handle) {
    if (message_or_handle.flags.str || message_or_handle.flags.type == ak_mm)
        return move_bar(x, 0, &message_or_handle);
    return move_bar(x, handle_at(message_or_handle, 0), nullptr);
}
Mm waitbar(const Mm& x, const Mm& h, const Mm& message) { return move_bar(x, handle_at(h, 0), &message); }

AK_BUILTIN("msgbox", AK_FN(msgbox, const Mm&), AK_FN(msgbox, const Mm&, const Mm&),
           AK_FN(msgbox, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("errordlg", AK_FN(errordlg, const Mm&), AK_FN(errordlg, const Mm&, const Mm&));
AK_BUILTIN("warndlg", AK_FN(warndlg, const Mm&), AK_FN(warndlg, const Mm&, const Mm&));
AK_BUILTIN("helpdlg", AK_FN(helpdlg, const Mm&), AK_FN(helpdlg, const Mm&, const Mm&));
AK_BUILTIN("questdlg", AK_FN(questdlg, const Mm&), AK_FN(questdlg, const Mm&, const Mm&),
           AK_FN(questdlg, const Mm&, const Mm&, const Mm&),
           AK_FN(questdlg, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&),
           AK_FN(questdlg, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("inputdlg", AK_FN(inputdlg, const Mm&), AK_FN(inputdlg, const Mm&, const Mm&),
           AK_FN(inputdlg, const Mm&, const Mm&, const Mm&), AK_FN(inputdlg, const Mm&, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("menu", menu_by_name);
AK_BUILTIN("uigetfile", AK_FN(uigetfile), AK_FN(uigetfile, const Mm&), AK_FN(uigetfile, const Mm&, const Mm&),
           AK_FN_REFS(uigetfile, i_o_t, Mm&, Mm&), AK_FN_REFS(uigetfile, const Mm&, i_o_t, Mm&, Mm&),
           AK_FN_REFS(uigetfile, const Mm&, const Mm&, i_o_t, Mm&, Mm&));
AK_BUILTIN("uiputfile", AK_FN(uiputfile), AK_FN(uiputfile, const Mm&), AK_FN(uiputfile, const Mm&, const Mm&),
           AK_FN_REFS(uiputfile, i_o_t, Mm&, Mm&), AK_FN_REFS(uiputfile, const Mm&, i_o_t, Mm&, Mm&),
           AK_FN_REFS(uiputfile, const Mm&, const Mm&, i_o_t, Mm&, Mm&));
AK_BUILTIN("uisetcolor", AK_FN(uisetcolor), AK_FN(uisetcolor, const Mm&));
AK_BUILTIN("waitbar", AK_FN(waitbar, const Mm&), AK_FN(waitbar, const Mm&, const Mm&),
           AK_FN(waitbar, const Mm&, const Mm&, const Mm&));
