// set and get: how a program's arguments become single writes and reads of the engine, and the
// properties that the library treats itself (UserData, String, CData).
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/display.h"
#include "arklib/list.h"
#include "arklib/sort.h"
#include "arklib/sparse.h"
#include "arklib/strings.h"
#include "graphics/graphics_internal.h"

using namespace ak_internal;

namespace {

// The colour words that stand in name position without a value. The seventh is spelled so on
// purpose: "white" in name position is a property name.
const char* const color_names[] = {"yellow", "magenta", "cyan", "red", "green", "blue", "while", "black"};

bool is_color_word(const Mm& s) {
    if (s.size() == 1) return true;
    for (const char* w : color_names)
        if (text_is(s, w)) return true;
    return false;
}

// The Mm stored under a UserData value, or null.
Mm* userdata_pointer(const QorValue* r) {
    if (!r || r->ndims < 2 || r->size() < 1 || !r->data) return nullptr;
    return reinterpret_cast<Mm*>(static_cast<std::uintptr_t>(r->data[0]));
}

void set_userdata(const Mm& h, const char* name, const Mm& value) {
    int n = h.size();
    for (int k = 0; k < n; ++k) {
        double hk = handle_at(h, k);
        if (Mm* old = userdata_pointer(ak_engine.qor_get(hk, name))) delete old;
        Mm* copy = new Mm(value);
        QorValue r;
        r.setsize(1, 1, 0);
        r.alloc();
        r.data[0] = static_cast<double>(reinterpret_cast<std::uintptr_t>(copy));
        ak_engine.qor_set(hk, name, &r);
        r.free();
    }
}

// The value as the engine takes it: cells of strings become character matrices, bytes become
// doubles from 0 to 1, and sparse values full.
Mm engine_form(const Mm& value) {
    Mm v(value);
    if (iscell(v) && iscellstr(v).r() != 0) v = mchar(v);
    if (v.flags.type == ak_uchar) {
        Mm d(0, 0, 0, v.ndims, v.dims, ak_double);
        for (int k = 0; k < v.nnz; ++k) d.addr()[k] = static_cast<const unsigned char*>(v.pr)[k] / 255.0;
        v = d;
    }
    if (v.flags.sparse) v = full(v);
    return v;
}

// Structure of every property of h: the names come from the engine as one string.
Mm property_listing(const Mm& h) {
    set(h, "PropertyNames", Mm(1.0));
    Mm s = get(h, "PropertyNames");
    static char buffer[10001];
    Mstr(s, buffer, sizeof buffer);
    Mm rows(0, 0, 0, 0, 0, ak_double);
    for (char* tok = std::strtok(buffer, " \t\n"); tok; tok = std::strtok(nullptr, " \t\n"))
        rows = strvcat(rows, TM(tok));
    rows = sortrows(rows);
    Mm out = mstruct(new_cell(0, 0));
    for (int r = 1; r <= rows.rows(); ++r) {
        char name[100];
        int c = 0;
        for (; c < rows.cols() && c < 99; ++c) name[c] = static_cast<char>(rows.r(r, c + 1));
        name[c] = '\0';
        if (char* blank = std::strchr(name, ' ')) *blank = '\0';
        out = setfield(out, TM(name), get(h, name));
    }
    return out;
}

// Writes name k of the name cell with value k of the value cell.
void set_cell_pair(const Mm& h, const Mm& names, const Mm& values, int position) {
    int nn = names.size();
    if (values.size() == nn) {
        for (int k = 0; k < nn; ++k) set(h, cell_at(names, k), cell_at(values, k));
    } else if (values.rows() == h.size() && values.cols() == nn) {
        for (int i = 0; i < h.size(); ++i)
            for (int k = 0; k < nn; ++k) set(Mm(handle_at(h, i)), cell_at(names, k), cell_at(values, k * values.rows() + i));
    } else {
        error("set: position %d: use cell1==cell2 or size(cell2)==[len(h) len(cell1)]", position);
    }
}

}  // namespace

Mm set(const Mm& h, const char* name, const Mm& value) {
    if (!name || !*name) return x_M;
    char buffer[256];
    std::snprintf(buffer, sizeof buffer, "%s", name);
    if (starts_like(buffer, "UserData")) {
        set_userdata(h, buffer, value);
        return x_M;
    }
    if (starts_like(buffer, "String")) set(h, "CellString", Mm(static_cast<double>(iscell(value))));
    if (strcasecmp(buffer, "CData") == 0) set(h, "CDataIsDouble", Mm(static_cast<double>(mxIsDouble(value))));
    Mm v = engine_form(value);
    if (v.flags.type != ak_double) {
        display(v);
        error("set(h,name,value): can only accept value of type double or strings cell");
        return x_M;
    }
    // The engine may report a refused value through error, which can throw: the record is freed on
    // every way out.
    struct freed_on_exit {
        QorValue r;
        ~freed_on_exit() { r.free(); }
    } record{qor_record(v)};
    int n = h.size();
    for (int k = 0; k < n; ++k) ak_engine.qor_set(handle_at(h, k), buffer, &record.r);
    return x_M;
}

Mm set(const Mm& h, const Mm& name, const Mm& value) {
    char buffer[256];
    if (name.size() <= 0) return x_M;
    return set(h, Mstr(name, buffer, sizeof buffer), value);
}

Mm set(const Mm& h, const Mm& list) {
    if (list.size() <= 0) return property_listing(Mm(handle_at(h, 0)));
    if (!iscell(list)) return set(h, Mm(CL(list)));
    int n = list.size();
    for (int p = 0; p < n;) {
        const Mm& item = cell_at(list, p);
        int position = p + 1;
        if (isstruct(item)) {
            for (int f = 0; f < item.nfields; ++f)
                set(h, item.fields[f], getfield(item, TM(item.fields[f])));
            p += 1;
        } else if (iscell(item) && p + 1 < n) {
            const Mm& values = cell_at(list, p + 1);
            if (!iscell(values)) {
                error("set: position %d: if pn is a cell, pv must be a cell as well.", position);
                return x_M;
            }
            set_cell_pair(h, item, values, position);
            p += 2;
        } else if (item.flags.str && is_color_word(item)) {
            set(h, "Color", item);
            p += 1;
        } else if (item.flags.str && p + 1 < n) {
            set(h, item, cell_at(list, p + 1));
            p += 2;
        } else {
            error("set: cannot parse in position %d", position);
            return x_M;
        }
    }
    return x_M;
}

Mm set(const Mm& h) { return set(h, new_cell(0, 0)); }

Mm get(const Mm& h, const char* name) {
    int n = h.size();
    if (n != 1) {
        Mm out = new_cell(n > 0 ? n : 0, n > 0 ? 1 : 0);
        for (int i = 0; i < n; ++i) static_cast<Mm*>(out.pr)[i] = get(Mm(handle_at(h, i)), name);
        return out;
    }
    char buffer[256];
    std::snprintf(buffer, sizeof buffer, "%s", name ? name : "");
    double hk = handle_at(h, 0);
    if (starts_like(buffer, "UserData")) {
        Mm* stored = userdata_pointer(ak_engine.qor_get(hk, buffer));
        return stored ? Mm(*stored) : Mm(0, 0, 0, 0, 0, ak_double);
    }
    Mm result = matrix_of_record(ak_engine.qor_get(hk, buffer));
    if (starts_like(buffer, "String")) {
        Mm flag = get(h, "CellString");
        if (flag.size() > 0 && flag.flags.type == ak_double && flag.addr()[0] > 0) result = cellstr(result);
    }
    if (strcasecmp(buffer, "CData") == 0 && result.ndims == 2) {
        Mm flag = get(h, "CDataIsDouble");
        if (flag.size() > 0 && flag.flags.type == ak_double && flag.addr()[0] == 1) {
            Mm scaled(result);
            scaled.deepcopy(result, ak_double);
            for (int k = 0; k < scaled.nnz; ++k) scaled.addr()[k] = (scaled.addr()[k] - 1) / 255;
            result = scaled;
        } else {
            result = muint8(result);
        }
    }
    return result;
}

Mm get(const Mm& h, const Mm& name) {
    if (iscell(name)) {
        int n = h.size(), m = name.size();
        Mm out = new_cell(n, m);
        for (int i = 0; i < n; ++i)
            for (int k = 0; k < m; ++k) static_cast<Mm*>(out.pr)[k * n + i] = get(Mm(handle_at(h, i)), cell_at(name, k));
        return out;
    }
    char buffer[256];
    return get(h, Mstr(name, buffer, sizeof buffer));
}

Mm get(const Mm& h) { return property_listing(Mm(handle_at(h, 0))); }

Mm setuprop(const Mm& h, const Mm& name, const Mm& value) {
    Mm list((CL(name), value));
    return set(h, list);
}

Mm getuprop(const Mm& h, const Mm& name) { return get(h, name); }

Mm clruprop(const Mm& h, const Mm& name) {
    Mm empty(0, 0, 0, 0, 0, ak_double);
    Mm list((CL(name), empty));
    return set(h, list);
}

AK_BUILTIN("set", AK_FN(set, const Mm&), AK_FN(set, const Mm&, const Mm&), AK_FN(set, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("get", AK_FN(get, const Mm&), AK_FN(get, const Mm&, const Mm&));
AK_BUILTIN("setuprop", setuprop);
AK_BUILTIN("getuprop", getuprop);
AK_BUILTIN("clruprop", clruprop);
