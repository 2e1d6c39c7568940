// The table of loaded extension modules, and calling them: call_mex and its helpers, clear_mex,
// mexAtExit.
//
// A module "foo" is the shared object foo_matvex.so. It is found in the current directory, then
// along the M path, then by the dynamic linker's own search, loaded on its first call and kept in a
// table of 31 buckets until clear_mex.
#include <dlfcn.h>

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "arklib/builtins.h"
#include "arklib/hooks.h"
#include "arklib/mex_modules.h"
#include "runtime/mex/mex_internal.h"

char current_mex[512];

namespace ak_mex {

namespace {

constexpr int nbuckets = 31;
constexpr int nslots = 64;  // output slots a caller provides
entry_rec* table[nbuckets];

int fold(char c) { return std::tolower(static_cast<unsigned char>(c)); }

// (second char * 256 + first char) modulo 31, with case folded so that any spelling of a name
// lands in the same bucket.
int bucket_of(const char* name) {
    const int first = static_cast<signed char>(fold(name[0]));
    const int second = name[0] ? static_cast<signed char>(fold(name[1])) : 0;
    const int h = (second * 256 + first) % nbuckets;
    return h < 0 ? h + nbuckets : h;
}

bool same_name(const char* a, const char* b) {
    for (; *a && *b; ++a, ++b)
        if (fold(*a) != fold(*b)) return false;
    return *a == *b;
}

// What dlopen is given: a path when the file is in the current directory or along the M path, else
// the bare file name for the dynamic linker's search.
std::string locate(const std::string& file) {
    const std::string found = ak_path_search(file.c_str(), 0);
    if (found.empty()) return file;
    return found.find('/') == std::string::npos ? "./" + found : found;
}

// The system's code of a failed load. dlopen does not leave it in errno, but its message ends with
// the code's text when there is one; a file that was opened but is not a loadable object has none.
unsigned failure_code(int saved_errno, const char* why) {
    if (saved_errno) return static_cast<unsigned>(saved_errno);
    const std::size_t n = why ? std::strlen(why) : 0;
    for (int code = 1; code < 134; ++code) {
        const char* text = std::strerror(code);
        const std::size_t m = std::strlen(text);
        if (m < n && std::strcmp(why + n - m, text) == 0) return static_cast<unsigned>(code);
    }
    return ENOEXEC;
}

entry_rec* load(const char* name) {
    const std::string file = std::string(name) + "_matvex.so";
    const std::string where = locate(file);
    errno = 0;
    void* module = dlopen(where.c_str(), RTLD_NOW | RTLD_LOCAL);
    const int code = errno;
    if (!module) {
        const char* why = dlerror();
        error("Could not load %s GetLastError is %u (%s)", file.c_str(), failure_code(code, why), why ? why : "");
    }
    // Without a module there is no entry point to find either.
    void* entry = module ? dlsym(module, "mexFunction") : nullptr;
    if (!entry) {
        if (module) dlclose(module);
        error("Could not find %s in %s", "mexFunction", file.c_str());
        return nullptr;
    }
    entry_rec* e = static_cast<entry_rec*>(std::calloc(1, sizeof(entry_rec)));
    char* kept = strdup(where.c_str());
    if (!e || !kept) {
        std::free(e);
        std::free(kept);
        dlclose(module);
        error("Out of memory!");
        return nullptr;
    }
    std::snprintf(e->name, sizeof e->name, "%s", name);
    e->module = module;
    e->entry = reinterpret_cast<entry_t>(entry);
    e->file = kept;
    const int b = bucket_of(name);
    e->next = table[b];
    table[b] = e;
    return e;
}

// Drops every reference to the module, as many as the process holds.
void unload(entry_rec* e) {
    dlclose(e->module);
    for (int k = 0; k < 64; ++k) {
        void* again = dlopen(e->file, RTLD_NOW | RTLD_NOLOAD);
        if (!again) break;
        dlclose(again);
        if (dlclose(again) != 0) break;
    }
}

// A module may put one of its inputs in an output slot; the caller frees what it receives, so
// such an output becomes a copy.
void detach_inputs(int nout, Mm** plhs, int nrhs, Mm** prhs) {
    for (int k = 0; k < nout; ++k)
        for (int j = 0; j < nrhs; ++j)
            if (plhs[k] && plhs[k] == prhs[j]) plhs[k] = new_array(*prhs[j]);
}

// A module may leave a single output unset; otherwise every output asked for must be set.
void check_outputs(const char* name, int nlhs, Mm** plhs) {
    if (nlhs == 1 && !plhs[0]) {
        plhs[0] = new_array(x_M);
        return;
    }
    for (int k = 0; k < nlhs && k < nslots; ++k) {
        if (plhs[k]) continue;
        plhs[k] = new_array(Mm(0, 0, 0, 0, 0, ak_double));
        error("call_mex: not all output arguments were assigned when calling %s.", name);
    }
}

}  // namespace

entry_rec* find_entry(const char* name) {
    for (entry_rec* e = table[bucket_of(name)]; e; e = e->next)
        if (same_name(e->name, name)) return e;
    return nullptr;
}

}  // namespace ak_mex

using namespace ak_mex;

void call_mex(const char* name, double nlhs_value, Mm** plhs, double nrhs_value, Mm** prhs) {
    if (!name) name = "";
    std::snprintf(current_mex, sizeof current_mex, "%s", name);
    for (int k = 0; k < nslots; ++k) plhs[k] = nullptr;
    entry_rec* e = find_entry(name);
    if (!e) e = load(name);
    if (!e) return;
    const int nlhs = static_cast<int>(nlhs_value);
    const int nrhs = static_cast<int>(nrhs_value);
    call_frame frame(plhs, nslots);
    try {
        e->entry(nlhs, plhs, nrhs, const_cast<const Mm**>(prhs));
    } catch (const module_abort&) {
        return;  // the frame frees what the module made
    }
    const int nout = nlhs > 1 ? (nlhs < nslots ? nlhs : nslots) : 1;
    detach_inputs(nout, plhs, nrhs, prhs);
    check_outputs(name, nlhs, plhs);
    frame.give_outputs(nout);
}

void call_mex_prhs(Mm*& slot, const Mm& value) { slot = const_cast<Mm*>(&value); }

void call_mex_plhs(Mm& out, Mm* value) {
    if (!value) return;
    out = *value;
    delete value;
}

void clear_mex(const char* name) {
    if (!name) return;
    entry_rec** link = &table[bucket_of(name)];
    while (*link && !same_name((*link)->name, name)) link = &(*link)->next;
    entry_rec* e = *link;
    if (!e) return;
    *link = e->next;
    if (void (*f)() = e->at_exit) {
        e->at_exit = nullptr;
        f();
    }
    unload(e);
    std::free(e->file);
    std::free(e);
}

Mm clear_mex(const Mm& name) {
    char text[512];
    clear_mex(Mstr(name, text, sizeof text));
    return x_M;
}
AK_BUILTIN("clear_mex", AK_FN(clear_mex, const Mm&));

int ak_mex_loaded_count() {
    int n = 0;
    for (entry_rec* head : table)
        for (entry_rec* e = head; e; e = e->next) ++n;
    return n;
}

int mexAtExit(void (*f)(void)) {
    if (!current_mex[0]) {
        error("mexAtExit called outside of MEX file");
        return 0;
    }
    entry_rec* e = find_entry(current_mex);
    if (!e) {
        error("mexAtExit: '%s' name not found", current_mex);
        return 0;
    }
    e->at_exit = f;
    return 0;
}
