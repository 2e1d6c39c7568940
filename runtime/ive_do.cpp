// _ive_do: the one entry through which a development environment drives the library between
// statements: it lists and shows variables, sets the hooks and handlers, and reaches a few
// functions of the graphics and file parts.
#include <cstdio>
#include <cstring>
#include <string>

#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/display.h"
#include "arklib/error.h"
#include "arklib/figures.h"
#include "arklib/files.h"
#include "arklib/graphics.h"
#include "arklib/eval.h"
#include "arklib/hooks.h"
#include "arklib/mex_modules.h"
#include "arklib/scope.h"
#include "arklib/startup.h"
#include "arklib/subscript.h"

namespace {

constexpr int name_size = 40;     // names written back: at most 39 characters
constexpr int preview_size = 64;  // previews and class words
constexpr int version_size = 2048;
constexpr int which_size = 513;

void write_text(void* b, const char* text, int size) {
    if (!b) return;
    std::snprintf(static_cast<char*>(b), size, "%s", text);
}

// A name as the environment shows it: one trailing "_" of a translated local removed.
void write_name(void* b, const Mm* m) {
    if (!b) return;
    char* out = static_cast<char*>(b);
    if (!m || !m->name) {
        std::snprintf(out, name_size, "%08X", static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(m ? m->name : nullptr)));
        return;
    }
    std::snprintf(out, name_size, "%s", m->name);
    const std::size_t n = std::strlen(out);
    if (n >= 2 && out[n - 1] == '_') out[n - 1] = 0;
}

int level_count(int level) {
    if (level < 0 || level >= ak_scope_levels || !variables_scope.vars[level]) return 0;
    return variables_scope.count[level];
}

int chosen_level(const void* b) {
    return b && std::strcmp(static_cast<const char*>(b), "global") == 0 ? 0 : variables_scope.depth;
}

Mm* variable_named(const void* b) {
    if (!b) return nullptr;
    const char* name = static_cast<const char*>(b);
    Mm* m = scope_lookup(name, variables_scope.depth);
    return m ? m : scope_lookup(name, 0);
}

void remove_all(int level) {
    for (int k = level_count(level) - 1; k >= 0; --k) scope_remove_at(k, level);
}

void remove_named(const char* name) {
    const int k = scope_find(name, variables_scope.depth);
    if (k >= 0)
        scope_remove_at(k, variables_scope.depth);
    else
        clear_mex(name);
}

void list_lines(int level) {
    for (int k = 0; k < level_count(level); ++k) whos_line(*variables_scope.vars[level][k]);
}

void list_names(int level) {
    const int n = level_count(level);
    for (int k = 0; k < n; ++k) {
        char name[name_size];
        write_name(name, variables_scope.vars[level][k]);
        ak_printf("%s ", name);
    }
    if (n > 0) ak_printf("\n");
}

// The M-file of a name, as the path search finds it, or null after saying so.
FILE* open_mfile(const char* name) {
    const std::string file = ak_path_search(name, 1);
    FILE* f = file.empty() ? nullptr : std::fopen(file.c_str(), "r");
    if (!f) ak_printf("%s not found.\n", name);
    return f;
}

void print_mfile(const char* name) {
    FILE* f = open_mfile(name);
    if (!f) return;
    char line[512];
    while (std::fgets(line, sizeof line, f)) ak_print_handler(line);
    std::fclose(f);
}

// The comment block after the "function" line, without the leading "%" of each line.
void print_help(const char* name) {
    FILE* f = open_mfile(name);
    if (!f) return;
    char line[512];
    bool in_block = false;
    while (std::fgets(line, sizeof line, f)) {
        const char* t = line + std::strspn(line, " \t");
        if (!in_block && std::strncmp(t, "function", 8) == 0) continue;
        if (*t != '%') {
            if (in_block || (*t && *t != '\n' && *t != '\r')) break;
            continue;
        }
        in_block = true;
        ak_print_handler(t + 1);
    }
    std::fclose(f);
}

void print_dir(const char* pattern) {
    Mm list = dir(TM(pattern ? pattern : ""));
    if (!list.fields || list.flags.type != ak_mm) return;
    for (int k = 0; k < list.size(); ++k) {
        char name[1024];
        Mstr(Mm(list(Mm(k + 1.0)).member("name")), name, sizeof name);
        ak_printf("%s\n", name);
    }
}

void write_preview(void* b, int k, int level) {
    Mm* m = scope_entry(k, level);
    if (m) write_text(b, preview_text(*m).c_str(), preview_size);
}

template <class F>
F as(void* b) {
    return reinterpret_cast<F>(b);
}

}  // namespace

extern "C" std::intptr_t _ive_do(int command, std::intptr_t a, void* b) {
    const int k = static_cast<int>(a);
    const char* text = static_cast<const char*>(b);
    const int here = variables_scope.depth;
    switch (command) {
        case 0: ak_scope_tracking = 1; break;
        case 1: return level_count(here);
        case 2: if (Mm* m = scope_entry(k)) write_name(b, m); break;
        case 3:
            if (Mm* m = variable_named(b)) display(*m);
            else ak_printf("Variable '%s' not found.\n", text ? text : "");
            break;
        case 4:
            if (!b) remove_all(here);
            else if (std::strcmp(text, "global") == 0) remove_all(0);
            else remove_named(text);
            break;
        case 5: designer(); break;
        case 6: return reinterpret_cast<std::intptr_t>(&ak_error_stack);
        case 9: list_lines(chosen_level(b)); break;
        case 10:
            if (Mm* m = scope_entry(k)) {
                write_text(b, class_name_of(*m), preview_size);
                return isobject(*m);
            }
            break;
        case 11: list_names(chosen_level(b)); break;
        case 12: eval_func = as<int (*)(const char*)>(b); break;
        case 13: if (text) print_mfile(text); break;
        case 14: print_dir(text); break;
        case 15: ak_set_debug_handler(as<ak_debug_handler_t>(b)); break;
        case 16: ak_set_print_handler(as<ak_text_handler_t>(b)); break;
        case 17: ak_set_input_handler(as<ak_input_handler_t>(b)); break;
        case 18: ak_set_kbhit_handler(as<ak_int_handler_t>(b)); break;
        case 19: ak_set_clc_handler(as<ak_int_handler_t>(b)); break;
        case 20: mpath_pointer = b; break;
        case 21: ak_clc_handler(); break;
        case 22: setapplicationhandle(b); break;
        case 23: return level_count(0);
        case 24: if (Mm* m = scope_entry(k, 0)) write_name(b, m); break;
        case 25: system_hook = as<int (*)(const char*)>(b); break;
        case 26: return reinterpret_cast<std::intptr_t>(variable_named(b));
        case 27: if (text) clear_mex(text); break;
        case 28: guiexit(Mm(static_cast<double>(a))); break;
        case 29: write_preview(b, k, here); break;
        case 30: write_preview(b, k, 0); break;
        case 31: if (text) print_help(text); break;
        case 32: if (text) helpwin(TM(text)); break;
        case 33: {
            Mm answer = which(TM(text ? text : ""));
            char* out = reinterpret_cast<char*>(a);
            if (out) Mstr(answer, out, which_size);
            break;
        }
        case 34: if (text) figure_close(TM(text)); break;
        case 35: if (text) openvar(TM(text)); break;
        case 36: memory(); break;
        case 37: {
            Mm v = version();
            if (b) Mstr(v, static_cast<char*>(b), version_size);
            break;
        }
        case 38: setapplicationkeyhandle(b); break;
        default: break;
    }
    return 0;
}
