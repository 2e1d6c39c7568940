// The load and save family: the list forms over the format readers and writers, the word forms that
// find and make variables through the scope table, and appending to a level-5 file.
#include <fnmatch.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/hooks.h"
#include "arklib/matfile.h"
#include "arklib/scope.h"
#include "io/file_internal.h"
#include "io/matfile_internal.h"

using namespace ak_internal;

namespace {

// The text of a name argument, cut to 2048 characters.
std::string name_text(const Mm& m) {
    char buffer[2049];
    return Mstr(m, buffer, sizeof buffer);
}

// ---- variables through the scope table -----------------------------------------------------------

// The head of a variable of the current level, or null.
Mm* variable_here(const char* name) { return scope_lookup(name, variables_scope.depth); }

// Gives name the value: the variable of the current level when there is one, else a new variable
// that the table owns.
void set_variable(const std::string& name, const Mm& value) {
    if (Mm* v = variable_here(name.c_str())) {
        *v = value;
        return;
    }
    char* text = static_cast<char*>(ak_malloc(static_cast<unsigned>(name.size() + 1)));
    void* place = ak_malloc(sizeof(Mm));
    if (!text || !place) {
        ak_free(text);
        ak_free(place);
        error("Out of memory!");
        return;
    }
    std::memcpy(text, name.c_str(), name.size() + 1);
    Mm* head = new (place) Mm(value, text);
    head->flags.global = 0;
    scope_add(head, 1);
}

// The named heads of the current level.
std::vector<const Mm*> level_variables() {
    std::vector<const Mm*> out;
    const int level = variables_scope.depth;
    if (level < 0 || level >= ak_scope_levels || !variables_scope.vars[level]) return out;
    for (int k = 0; k < variables_scope.count[level]; ++k) {
        const Mm* v = variables_scope.vars[level][k];
        if (v->name && v->flags.type != ak_no_type) out.push_back(v);
    }
    return out;
}

bool has_wildcard(const std::string& s) { return s.find_first_of("*?[") != std::string::npos; }

bool selected(const std::vector<std::string>& patterns, const std::string& name) {
    if (patterns.empty()) return true;
    for (const std::string& p : patterns)
        if (fnmatch(p.c_str(), name.c_str(), 0) == 0) return true;
    return false;
}

// ---- words -----------------------------------------------------------------------------------------

struct save_words {
    std::string file;
    std::vector<std::string> names;
    bool v4 = false, ascii = false, double_digits = false, tabs = false, append = false, compress = false;
    std::string struct_name;  // -struct s: the fields of s
};

bool parse_save_words(int n, const Mm* const* args, save_words& w) {
    w.file = name_text(*args[0]);
    for (int k = 1; k < n; ++k) {
        const std::string word = name_text(*args[k]);
        if (word.empty()) continue;
        if (word[0] != '-') {
            w.names.push_back(word);
        } else if (word == "-v4") {
            w.v4 = true;
        } else if (word == "-mat" || word == "-v6" || word == "-v7") {
        } else if (word == "-ascii") {
            w.ascii = true;
        } else if (word == "-double") {
            w.double_digits = true;
        } else if (word == "-tabs") {
            w.tabs = true;
        } else if (word == "-append") {
            w.append = true;
        } else if (word == "-compress") {
            w.compress = true;
        } else if (word == "-struct") {
            if (k + 1 >= n) {
                error("save: -struct needs the name of a structure");
                return false;
            }
            w.struct_name = name_text(*args[++k]);
        } else {
            error("save: unknown option '%s'", word.c_str());
            return false;
        }
    }
    if ((w.double_digits || w.tabs) && !w.ascii) w.ascii = true;
    return true;
}

// The variables to save, as named values: the fields of the -struct structure, or the variables of
// the level that the names select (all of them when there are none).
bool gather(const save_words& w, std::vector<std::pair<std::string, Mm>>& out) {
    if (!w.struct_name.empty()) {
        const Mm* s = variable_here(w.struct_name.c_str());
        if (!s || !s->fields || s->size() != 1) {
            error("save: '%s' is not a 1x1 structure", w.struct_name.c_str());
            return false;
        }
        const Mm& element = static_cast<const Mm*>(s->pr)[0];
        for (int f = 0; f < s->nfields; ++f) {
            if (!selected(w.names, s->fields[f])) continue;
            const bool held = element.flags.type == ak_mm && f < element.nnz;
            out.emplace_back(s->fields[f], held ? static_cast<const Mm*>(element.pr)[f] : Mm());
        }
        return true;
    }
    for (const std::string& name : w.names) {
        if (has_wildcard(name)) continue;
        const Mm* v = variable_here(name.c_str());
        if (!v || v->flags.type == ak_no_type) {
            error("save: variable '%s' not found", name.c_str());
            return false;
        }
    }
    for (const Mm* v : level_variables()) {
        std::string name = v->name;
        bool wanted = w.names.empty() || selected(w.names, name);
        // A translated local "x_" answers to "x".
        if (!wanted && name.size() > 1 && name.back() == '_') {
            std::string bare = name.substr(0, name.size() - 1);
            if (selected(w.names, bare)) {
                wanted = true;
                name = bare;
            }
        }
        if (wanted) out.emplace_back(name, *v);
    }
    return true;
}

// ---- level-5 append ------------------------------------------------------------------------------------

// A compressed element of another writer may end off the 8-byte grid, which would put the element
// after it off the grid too: zero bytes, which inflating ignores, are added and counted in it.
void align_compressed(std::vector<char>& element) {
    if (element.size() < 8 || element.size() % 8 == 0) return;
    uint32_t w[2];
    std::memcpy(w, element.data(), 8);
    const bool swap = w[0] > 0x10000;
    if ((swap ? __builtin_bswap32(w[0]) : w[0]) != 15) return;
    element.resize(element.size() + (8 - element.size() % 8), 0);
    uint32_t size = static_cast<uint32_t>(element.size() - 8);
    if (swap) size = __builtin_bswap32(size);
    std::memcpy(element.data() + 4, &size, 4);
}

// The elements of an existing level-5 file (after its header) whose names are not in `replaced`,
// as raw bytes, in order. False when the file is there but is not a level-5 file.
bool kept_elements(const std::string& path, const std::vector<std::pair<std::string, Mm>>& replaced,
                   std::vector<std::vector<char>>& kept, bool& exists) {
    std::FILE* f = std::fopen(path.c_str(), "rb");
    exists = f != nullptr;
    if (!f) return true;
    stream_guard guard(f);
    char head[128];
    if (std::fread(head, 1, 128, f) != 128 || std::memcmp(head, "MAT", 3) != 0) return false;
    const long end = stream_end(f);
    for (long at = 128; at + 8 <= end;) {
        std::fseek(f, at, SEEK_SET);
        char name[256];
        load5_name(f, name, sizeof name);
        long next = std::ftell(f);
        if (next <= at || next > end) next = end;
        bool drop = false;
        for (const auto& r : replaced) drop = drop || r.first == name;
        if (!drop) {
            std::vector<char> bytes(static_cast<std::size_t>(next - at));
            std::fseek(f, at, SEEK_SET);
            if (std::fread(bytes.data(), 1, bytes.size(), f) != bytes.size()) break;
            align_compressed(bytes);
            kept.push_back(std::move(bytes));
        }
        at = next;
    }
    return true;
}

void write_level5(const std::string& path, const std::vector<std::pair<std::string, Mm>>& vars, bool append,
                  bool compress) {
    std::vector<std::vector<char>> kept;
    bool exists = false;
    const std::string full = mat_add_extension(path.substr(0, 2048));
    if (append && !kept_elements(full, vars, kept, exists)) {
        error("save: %s is not a level-5 MAT-file and can not be appended to", full.c_str());
        return;
    }
    std::string name;
    std::FILE* stream = save5_header(full.c_str(), name);
    if (!stream) return;
    stream_guard guard(stream);
    for (const auto& bytes : kept)
        if (std::fwrite(bytes.data(), 1, bytes.size(), stream) != bytes.size())
            error("savev5: could not write file '%s'.", name.c_str());
    for (const auto& v : vars) {
        const Mm named(v.second, v.first.c_str());
        if (compress)
            save5_write_compressed(name.c_str(), stream, named);
        else
            save5_write(name.c_str(), stream, named);
    }
}

void write_level4(const std::string& path, const std::vector<std::pair<std::string, Mm>>& vars, bool append) {
    const std::string full = mat_add_extension(path.substr(0, 2048));
    std::FILE* stream = std::fopen(full.c_str(), append ? "ab" : "wb");
    if (!stream) {
        error("saveV4: %s could not be created", full.c_str());
        return;
    }
    stream_guard guard(stream);
    for (const auto& v : vars) save4_write(stream, Mm(v.second, v.first.c_str()));
}

void write_text(const save_words& w, const std::vector<std::pair<std::string, Mm>>& vars) {
    const std::string path = w.file.substr(0, 2048);
    std::FILE* stream = std::fopen(path.c_str(), w.append ? "a" : "w");
    if (!stream) {
        error("could not write %s", path.c_str());
        return;
    }
    stream_guard guard(stream);
    for (const auto& v : vars) save_text_write(stream, v.second, w.double_digits, w.tabs);
}

// ---- reading ---------------------------------------------------------------------------------------------

// Opens a data file for load; null after reporting that it is not there.
std::FILE* open_for_load(const std::string& file, int* kind) {
    std::FILE* f = mat_open(mpath_pointer, file.c_str(), kind);
    if (!f) {
        error("load: %s not found", file.c_str());
    } else if (*kind == mat_kind_hdf5) {
        std::fclose(f);
        error("load: %s is an HDF5-based MAT-file (version 7.3), which is not supported", file.c_str());
        return nullptr;
    }
    return f;
}

Mm as_structure(const std::vector<std::pair<std::string, Mm>>& vars) {
    Mm s(0, 0, 0, 1, 1, ak_mm);
    s.extend_nfields(8);
    Mm element(0, 0, 0, 1, static_cast<int>(vars.size()), ak_mm);
    for (std::size_t k = 0; k < vars.size(); ++k) {
        int f = s.findfield(vars[k].first.c_str(), 0);
        if (f < 0) f = s.addfield(vars[k].first.c_str(), 1);
        if (f >= 0 && f < element.nnz) static_cast<Mm*>(element.pr)[f] = vars[k].second;
    }
    if (s.nfields < element.nnz) {
        Mm shorter(0, 0, 0, 1, s.nfields, ak_mm);
        for (int f = 0; f < s.nfields; ++f) static_cast<Mm*>(shorter.pr)[f] = static_cast<Mm*>(element.pr)[f];
        element = shorter;
    }
    static_cast<Mm*>(s.pr)[0] = element;
    return s;
}

}  // namespace

// ---- the list forms ------------------------------------------------------------------------------------

Mm load(const Mm& file) {
    const std::string name = name_text(file);
    int kind = 0;
    std::FILE* f = open_for_load(name, &kind);
    if (!f) return x_M;
    stream_guard guard(f);
    Mm result;
    if (kind == mat_kind_v4)
        load4_read(name.c_str(), f, result);
    else if (kind == mat_kind_v5)
        load5_read(name.c_str(), f, result);
    else
        loadascii_read(name.c_str(), f, result);
    return result;
}

Mm load(const Mm& file, const Mc& list) {
    const std::string name = name_text(file);
    int kind = 0;
    std::FILE* f = open_for_load(name, &kind);
    if (!f) return x_M;
    stream_guard guard(f);
    for (int k = 0; k < list.count(); ++k) {
        Mm& var = *const_cast<Mm*>(list.items[k]);
        if (kind == mat_kind_text) {
            loadascii_read(name.c_str(), f, var);
            break;
        }
        const int failed = kind == mat_kind_v4 ? load4_read(name.c_str(), f, var) : load5_find(name.c_str(), f, var);
        if (failed) break;
    }
    return x_M;
}

Mm vbload(const Mm& file) { return load(file, Mc()); }

Mm save(const Mm& file, const Mc& list) {
    std::string name;
    std::FILE* stream = save5_header(name_text(file).c_str(), name);
    if (!stream) return x_M;
    stream_guard guard(stream);
    for (int k = 0; k < list.count(); ++k) save5_write(name.c_str(), stream, *list.items[k]);
    return x_M;
}

Mm saveV4(const Mm& file, const Mc& list) {
    const std::string name = mat_add_extension(name_text(file));
    std::FILE* stream = std::fopen(name.c_str(), "wb");
    if (!stream) {
        error("saveV4: %s could not be created", name.c_str());
        return x_M;
    }
    stream_guard guard(stream);
    for (int k = 0; k < list.count(); ++k) save4_write(stream, *list.items[k]);
    return x_M;
}

Mm saveascii(const Mm& file, const Mc& list) {
    const std::string name = name_text(file);
    std::FILE* stream = std::fopen(name.c_str(), "w");
    if (!stream) {
        error("could not write %s", name.c_str());
        return x_M;
    }
    stream_guard guard(stream);
    saveascii_write(stream, list.items, list.count());
    return x_M;
}

Mm vbsave(const Mm& cell) {
    if (!iscell(cell) || cell.nnz < 1) {
        error("vbsave: the argument must be a cell whose first element is the file name");
        return x_M;
    }
    const Mm* e = static_cast<const Mm*>(cell.pr);
    std::string name;
    std::FILE* stream = save5_header(name_text(e[0]).c_str(), name);
    if (!stream) return x_M;
    stream_guard guard(stream);
    for (int k = 1; k < cell.nnz; ++k) save5_write(name.c_str(), stream, e[k]);
    return x_M;
}

// ---- the word forms -----------------------------------------------------------------------------------

Mm load(int n, const Mm* const* args) {
    if (n < 1) {
        error_input("load", 0);
        return x_M;
    }
    const std::string name = name_text(*args[0]);
    std::vector<std::string> patterns;
    int forced = -1;
    for (int k = 1; k < n; ++k) {
        const std::string word = name_text(*args[k]);
        if (word == "-mat")
            forced = mat_kind_v5;
        else if (word == "-ascii")
            forced = mat_kind_text;
        else if (!word.empty() && word[0] == '-') {
            error("load: unknown option '%s'", word.c_str());
            return x_M;
        } else if (!word.empty())
            patterns.push_back(word);
    }
    int kind = 0;
    std::FILE* f = open_for_load(name, &kind);
    if (!f) return x_M;
    stream_guard guard(f);
    if (forced == mat_kind_text) {
        std::fseek(f, 0, SEEK_SET);
        kind = mat_kind_text;
    } else if (forced == mat_kind_v5 && kind == mat_kind_text) {
        kind = mat_kind_v4;  // a binary file whose first bytes happen to read as text
    }
    std::vector<std::pair<std::string, Mm>> all = mat_read_all(name.c_str(), f, kind), chosen;
    for (const auto& v : all)
        if (selected(patterns, v.first)) chosen.push_back(v);
    for (const auto& v : chosen) set_variable(v.first, v.second);
    return as_structure(chosen);
}

Mm load(const Mm& file, const Mm& w1) {
    const Mm* a[] = {&file, &w1};
    return load(2, a);
}
Mm load(const Mm& file, const Mm& w1, const Mm& w2) {
    const Mm* a[] = {&file, &w1, &w2};
    return load(3, a);
}
Mm load(const Mm& file, const Mm& w1, const Mm& w2, const Mm& w3) {
    const Mm* a[] = {&file, &w1, &w2, &w3};
    return load(4, a);
}

Mm load(const Mm& file, const Mm& w1, const Mm& w2, const Mm& w3, const Mm& w4) {
    const Mm* a[] = {&file, &w1, &w2, &w3, &w4};
    return load(5, a);
}
Mm load(const Mm& file, const Mm& w1, const Mm& w2, const Mm& w3, const Mm& w4, const Mm& w5) {
    const Mm* a[] = {&file, &w1, &w2, &w3, &w4, &w5};
    return load(6, a);
}
Mm load(const Mm& file, const Mm& w1, const Mm& w2, const Mm& w3, const Mm& w4, const Mm& w5, const Mm& w6) {
    const Mm* a[] = {&file, &w1, &w2, &w3, &w4, &w5, &w6};
    return load(7, a);
}

Mm save(int n, const Mm* const* args) {
    if (n < 1) {
        error_input("save", 0);
        return x_M;
    }
    save_words w;
    if (!parse_save_words(n, args, w)) return x_M;
    std::vector<std::pair<std::string, Mm>> vars;
    if (!gather(w, vars)) return x_M;
    if (w.ascii)
        write_text(w, vars);
    else if (w.v4)
        write_level4(w.file, vars, w.append);
    else
        write_level5(w.file, vars, w.append, w.compress);
    return x_M;
}

Mm save(const Mm& file) {
    const Mm* a[] = {&file};
    return save(1, a);
}
Mm save(const Mm& file, const Mm& w1) {
    const Mm* a[] = {&file, &w1};
    return save(2, a);
}
Mm save(const Mm& file, const Mm& w1, const Mm& w2) {
    const Mm* a[] = {&file, &w1, &w2};
    return save(3, a);
}
Mm save(const Mm& file, const Mm& w1, const Mm& w2, const Mm& w3) {
    const Mm* a[] = {&file, &w1, &w2, &w3};
    return save(4, a);
}
Mm save(const Mm& file, const Mm& w1, const Mm& w2, const Mm& w3, const Mm& w4) {
    const Mm* a[] = {&file, &w1, &w2, &w3, &w4};
    return save(5, a);
}

Mm save(const Mm& file, const Mm& w1, const Mm& w2, const Mm& w3, const Mm& w4, const Mm& w5) {
    const Mm* a[] = {&file, &w1, &w2, &w3, &w4, &w5};
    return save(6, a);
}
Mm save(const Mm& file, const Mm& w1, const Mm& w2, const Mm& w3, const Mm& w4, const Mm& w5, const Mm& w6) {
    const Mm* a[] = {&file, &w1, &w2, &w3, &w4, &w5, &w6};
    return save(7, a);
}
Mm save(const Mm& file, const Mm& w1, const Mm& w2, const Mm& w3, const Mm& w4, const Mm& w5, const Mm& w6, const Mm& w7) {
    const Mm* a[] = {&file, &w1, &w2, &w3, &w4, &w5, &w6, &w7};
    return save(8, a);
}
Mm save(const Mm& file, const Mm& w1, const Mm& w2, const Mm& w3, const Mm& w4, const Mm& w5, const Mm& w6, const Mm& w7, const Mm& w8) {
    const Mm* a[] = {&file, &w1, &w2, &w3, &w4, &w5, &w6, &w7, &w8};
    return save(9, a);
}

// ---- who and whos of a file ----------------------------------------------------------------------------

bool ak_mat_file_variables(const char* name, std::vector<std::pair<std::string, Mm>>& out) {
    int kind = 0;
    std::FILE* f = open_for_load(name, &kind);
    if (!f) return false;
    stream_guard guard(f);
    out = mat_read_all(name, f, kind);
    return true;
}

namespace {

// The word forms through the function table, with any number of words.
void load_any(int nin, const Mm* in, int nout, Mm* out) {
    std::vector<const Mm*> args;
    for (int k = 0; k < nin; ++k) args.push_back(in + k);
    Mm r = nin == 1 ? load(in[0]) : load(nin, args.data());
    if (nout > 0) out[0] = r;
}

void save_any(int nin, const Mm* in, int nout, Mm* out) {
    std::vector<const Mm*> args;
    for (int k = 0; k < nin; ++k) args.push_back(in + k);
    Mm r = save(nin, args.data());
    if (nout > 0) out[0] = r;
}

}  // namespace

AK_BUILTIN("load", static_cast<ak_varargs_fn_t>(load_any));
AK_BUILTIN("save", static_cast<ak_varargs_fn_t>(save_any));
AK_BUILTIN("vbload", AK_FN(vbload, const Mm&));
AK_BUILTIN("vbsave", AK_FN(vbsave, const Mm&));
