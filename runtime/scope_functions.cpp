// The language functions that look at variables by name: exist, which, clear, who, whos, openvar.
#include <fnmatch.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/display.h"
#include "arklib/hooks.h"
#include "arklib/scope.h"

#include "io/matfile_internal.h"

extern char** environ;

const char* ak_variable_viewer = "akvarview";

namespace {

bool is_directory(const char* name) {
    struct stat st;
    return stat(name, &st) == 0 && S_ISDIR(st.st_mode);
}

Mm* variable_here(const char* name) { return scope_lookup(name, variables_scope.depth); }

// One whos element: name, size vector, byte count and class word.
void whos_column(Mm& cells, int col, const char* name, const Mm& x) {
    cells.mr(1, col) = TM(name);
    Mm size(0, 0, 0, 1, x.ndims, ak_double);
    for (int d = 0; d < x.ndims && d < 4; ++d) size.addr()[d] = x.dims[d];
    cells.mr(2, col) = size;
    cells.mr(3, col) = Mm(static_cast<double>(x.size()) * 8.0);
    cells.mr(4, col) = mclass(x);
}

Mm whos_struct(const Mm& cells) {
    const char* names[] = {"name", "size", "bytes", "class"};
    Mm fields(0, 0, 0, 4, 1, ak_mm);
    for (int k = 0; k < 4; ++k) fields.mr(k + 1) = TM(names[k]);
    return cell2struct(cells, fields, Mm(1.0));
}

// The level's named heads, in two passes: count, then fill.
Mm whos_of_level(int level) {
    int n = 0;
    const int count = variables_scope.vars[level] ? variables_scope.count[level] : 0;
    for (int k = 0; k < count; ++k)
        if (variables_scope.vars[level][k]->name) ++n;
    Mm cells(0, 0, 0, 4, n, ak_mm);
    int col = 0;
    for (int k = 0; k < count; ++k) {
        const Mm* v = variables_scope.vars[level][k];
        if (v->name) whos_column(cells, ++col, v->name, *v);
    }
    return whos_struct(cells);
}

// The variables of a data file, listed like the workspace.
Mm whos_of_file(const Mm& file) {
    char name[2049];
    Mstr(file, name, sizeof name);
    std::vector<std::pair<std::string, Mm>> vars;
    if (!ak_mat_file_variables(name, vars)) return x_M;
    Mm cells(0, 0, 0, 4, static_cast<int>(vars.size()), ak_mm);
    for (std::size_t k = 0; k < vars.size(); ++k)
        whos_column(cells, static_cast<int>(k) + 1, vars[k].first.c_str(), vars[k].second);
    return whos_struct(cells);
}

Mm names_of(const Mm& w) {
    if (!w.fields) return x_M;
    const int n = w.size();
    Mm names(0, 0, 0, 1, n, ak_mm);
    const Mm* e = static_cast<const Mm*>(w.pr);
    for (int k = 0; k < n; ++k) names.mr(k + 1) = e[k].mr(1);  // element k holds its fields in order
    return names;
}

// Removes the entry of name at the current level, and empties a variable the program still holds.
void clear_one(int k) {
    const int level = variables_scope.depth;
    Mm* m = variables_scope.vars[level][k];
    const bool live = !variables_scope.owned[level][k];
    scope_remove_at(k, level);
    if (live) *m = nop_M;
}

// Starts the viewer on the head; false when it cannot start.
bool start_viewer(const Mm* x) {
    std::string program = ak_variable_viewer;
    if (ak_path_t* p = static_cast<ak_path_t*>(mpath_pointer))
        if (p->root && p->root[0]) program = std::string(p->root) + "/" + ak_variable_viewer;
    char pid[32], address[32];
    std::snprintf(pid, sizeof pid, "%u", static_cast<unsigned>(getpid()));
    std::snprintf(address, sizeof address, "%lu", static_cast<unsigned long>(reinterpret_cast<std::uintptr_t>(x)));
    char* argv[] = {program.data(), pid, address, nullptr};
    pid_t child;
    return posix_spawnp(&child, program.c_str(), nullptr, nullptr, argv, environ) == 0;
}

}  // namespace

// ---- exist and which -----------------------------------------------------------------------------

Mm exist(const Mm& name) {
    if (!name.flags.str) {
        error("exist: argument is not string");
        return Mm(0.0);
    }
    char text[512];
    Mstr(name, text, sizeof text);
    if (std::strcmp(text, "_MATVEX_") == 0) return Mm(9.0);
    const Mm* v = variable_here(text);
    if (v && v->flags.type != ak_no_type) return Mm(1.0);
    if (!ak_path_search(text, 1).empty() || !ak_path_search(text, 0).empty()) return Mm(2.0);
    if (is_directory(text)) return Mm(7.0);
    return Mm(0.0);
}

Mm exist(const Mm& name, const Mm& kind) {
    char k[2048];
    Mstr(kind, k, sizeof k);
    const double found = scalar(exist(name));
    const double wanted = std::strcmp(k, "var") == 0       ? 1.0
                          : std::strcmp(k, "builtin") == 0 ? 5.0
                          : std::strcmp(k, "file") == 0    ? 2.0
                          : std::strcmp(k, "dir") == 0     ? 7.0
                                                           : -1.0;
    return Mm(found == wanted ? found : 0.0);
}

Mm which(const Mm& name) {
    char text[1024];
    Mstr(name, text, sizeof text);
    if (scope_find(text, variables_scope.depth) >= 0) return TM("a variable");
    std::string found = ak_path_search(text, 1);
    if (found.empty()) found = ak_path_search(text, 0);
    if (found.empty()) return TM("unknown");
    if (found.size() > 512) found.resize(512);
    return TM(found.c_str());
}

// ---- clear ---------------------------------------------------------------------------------------

Mm clear() {
    const int level = variables_scope.depth;
    if (level < 0 || level >= ak_scope_levels || !variables_scope.vars[level]) return x_M;
    for (int k = variables_scope.count[level] - 1; k >= 0; --k) scope_remove_at(k, level);
    return x_M;
}

Mm clear(const Mc& list) {
    for (int n = 0; n < list.count(); ++n) {
        Mm* m = const_cast<Mm*>(list.items[n]);
        const int k = scope_find(m->name, variables_scope.depth);
        if (k >= 0 && variables_scope.vars[variables_scope.depth][k] == m)
            scope_remove_at(k, variables_scope.depth);
        *m = nop_M;
    }
    return x_M;
}

Mm clear(const Mm& names) {
    char text[2048];
    Mstr(names, text, sizeof text);
    const int level = variables_scope.depth;
    char* save = nullptr;
    for (char* pattern = strtok_r(text, " \t,", &save); pattern; pattern = strtok_r(nullptr, " \t,", &save)) {
        if (level < 0 || level >= ak_scope_levels || !variables_scope.vars[level]) break;
        for (int k = variables_scope.count[level] - 1; k >= 0; --k) {
            const char* n = variables_scope.vars[level][k]->name;
            if (n && fnmatch(pattern, n, 0) == 0) clear_one(k);
        }
    }
    return x_M;
}

// ---- who and whos --------------------------------------------------------------------------------

Mm whos() {
    const int level = variables_scope.depth;
    if (level < 0 || level >= ak_scope_levels) return whos_struct(Mm(0, 0, 0, 4, 0, ak_mm));
    return whos_of_level(level);
}

Mm whos(const Mm& file) { return whos_of_file(file); }
Mm whos(const Mm& file, const Mm&) { return whos_of_file(file); }
Mm who() { return names_of(whos()); }
Mm who(const Mm& file) { return names_of(whos(file)); }
Mm who(const Mm& file, const Mm&) { return names_of(whos(file)); }

void whos_line(const Mm& x) {
    char head[64];
    std::snprintf(head, sizeof head, "%-22s", x.name ? x.name : "");
    const std::string line = head + get_whos_line(x) + "\n";
    ak_print_handler(line.c_str());
}

// ---- openvar -------------------------------------------------------------------------------------

Mm openvar(const Mm& name) {
    char text[40];
    Mstr(name, text, sizeof text);
    const char* n = text;
    while (*n == ' ') ++n;
    Mm* x = variable_here(n);
    if (!x) x = scope_lookup(n, 0);
    if (!x) {
        ak_printf("Variable '%s' not found.\n", n);
        return x_M;
    }
    if (!start_viewer(x)) display(*x);
    return x_M;
}

AK_BUILTIN("exist", AK_FN(exist, const Mm&), AK_FN(exist, const Mm&, const Mm&));
AK_BUILTIN("which", which);
AK_BUILTIN("clear", AK_FN(clear), AK_FN(clear, const Mm&));
AK_BUILTIN("whos", AK_FN(whos), AK_FN(whos, const Mm&), AK_FN(whos, const Mm&, const Mm&));
AK_BUILTIN("who", AK_FN(who), AK_FN(who, const Mm&), AK_FN(who, const Mm&, const Mm&));
AK_BUILTIN("openvar", openvar);
