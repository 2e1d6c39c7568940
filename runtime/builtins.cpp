// The table of functions by name. Rows are added at load time by the library's own files and at
// run time by the program; the table lives for the whole process.
#include "arklib/builtins.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/error.h"

namespace {

struct form_t {
    int nin;
    int nout;
    void (*fn)();
    ak_form_thunk_t thunk;
};

struct row_t {
    std::string family;
    std::vector<form_t> forms;           // sorted by inputs, then outputs
    ak_varargs_fn_t varargs = nullptr;   // any counts, tried when no form fits
    std::vector<int> counts;             // flat (nin, nout) pairs for the function list
};

// Built on first use, so that rows registered during static initialisation find it ready.
std::map<std::string, row_t>& table() {
    static std::map<std::string, row_t> rows;
    return rows;
}

// The family of a row: the stem of the file that registered it ("algebra/sort.cpp" -> "sort").
std::string family_of(const char* file) {
    if (!file) return "program";
    const char* base = std::strrchr(file, '/');
    std::string stem = base ? base + 1 : file;
    const std::size_t dot = stem.find('.');
    return dot == std::string::npos ? stem : stem.substr(0, dot);
}

row_t& row_of(const char* name, const char* family) {
    row_t& row = table()[name];
    if (row.family.empty() || !family) row.family = family_of(family);
    return row;
}

void refresh_counts(row_t& row) {
    row.counts.clear();
    for (const form_t& f : row.forms) {
        row.counts.push_back(f.nin);
        row.counts.push_back(f.nout);
    }
    if (row.varargs) {
        row.counts.push_back(-1);
        row.counts.push_back(-1);
    }
}

// The form with nin inputs and the fewest outputs not below nout, or null.
const form_t* choose_form(const row_t& row, int nin, int nout) {
    for (const form_t& f : row.forms)
        if (f.nin == nin && f.nout >= nout) return &f;
    return nullptr;
}

// Why no form fits, in the words of the argument checks.
void report_no_form(const char* name, const row_t& row, int nin, int nout) {
    int most_out = 0;
    bool inputs_fit = false;
    for (const form_t& f : row.forms)
        if (f.nin == nin) {
            inputs_fit = true;
            most_out = std::max(most_out, f.nout);
        }
    if (inputs_fit)
        error("Too many (%d>%d) outputs for %s", nout, most_out, name);
    else
        error_input(name, nin);
}

}  // namespace

void ak_register_form(const char* name, const char* family, int nin, int nout, void (*fn)(),
                      ak_form_thunk_t thunk) {
    row_t& row = row_of(name, family);
    const form_t form{nin, nout, fn, thunk};
    auto at = std::find_if(row.forms.begin(), row.forms.end(), [&](const form_t& f) {
        return f.nin > nin || (f.nin == nin && f.nout >= nout);
    });
    if (at != row.forms.end() && at->nin == nin && at->nout == nout)
        *at = form;
    else
        row.forms.insert(at, form);
    refresh_counts(row);
}

void ak_register_varargs(const char* name, const char* family, ak_varargs_fn_t fn) {
    row_t& row = row_of(name, family);
    row.varargs = fn;
    refresh_counts(row);
}

int ak_unregister_function(const char* name) { return table().erase(name) ? 1 : 0; }

int ak_function_exists(const char* name) { return name && table().count(name) ? 1 : 0; }

int ak_call_function(const char* name, int nin, const Mm* in, int nout, Mm* out) {
    auto it = table().find(name ? name : "");
    if (it == table().end()) {
        error("Undefined function '%s'", name ? name : "");
        return 0;
    }
    const row_t& row = it->second;
    if (nout < 1) nout = 1;
    if (const form_t* f = choose_form(row, nin, nout)) {
        if (f->nout == nout) {
            f->thunk(f->fn, in, out);
        } else {
            std::vector<Mm> all(f->nout);
            f->thunk(f->fn, in, all.data());
            for (int k = 0; k < nout; ++k) out[k] = all[k];
        }
        return 1;
    }
    if (row.varargs) {
        row.varargs(nin, in, nout, out);
        return 1;
    }
    report_no_form(it->first.c_str(), row, nin, nout);
    return 0;
}

Mm ak_call_function(const Mm& name, const Mm& args, int nout, Mm* out) {
    char text[1024];
    Mstr(name, text, sizeof text);
    std::vector<Mm> in;
    if (iscell(args)) {
        const Mm* e = args.getpr(static_cast<Mm*>(nullptr));
        in.assign(e, e + args.size());
    } else {
        in.push_back(args);
    }
    std::vector<Mm> results(nout < 1 ? 1 : nout);
    if (!ak_call_function(text, static_cast<int>(in.size()), in.data(), static_cast<int>(results.size()),
                          results.data()))
        return x_M;
    for (std::size_t k = 0; out && k < results.size(); ++k) out[k] = results[k];
    return results[0];
}

Mm ak_builtin_feval(Mm name, Mm args, i_o_t, Mm& out1, Mm& out2, Mm& out3, Mm& out4, Mm& out5,
                    Mm& out6) {
    Mm* outs[6] = {&out1, &out2, &out3, &out4, &out5, &out6};
    int wanted = static_cast<int>(nargout_val);
    wanted = std::min(6, std::max(1, wanted));
    Mm results[6];
    Mm first = ak_call_function(name, args, wanted, results);
    for (int k = 0; k < wanted; ++k) *outs[k] = results[k];
    return first;
}

void ak_use_builtin_feval() { feval_func = ak_builtin_feval; }

int ak_function_list(ak_function_info_t* list, int max) {
    int n = 0;
    for (const auto& [name, row] : table()) {
        if (list && n < max)
            list[n] = {name.c_str(), row.family.c_str(), static_cast<int>(row.counts.size() / 2),
                       reinterpret_cast<const int(*)[2]>(row.counts.data())};
        ++n;
    }
    return n;
}
