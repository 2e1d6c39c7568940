// Property lists as the creation code of figures, axes and plots reads them, and the colour words.
#include <cstdio>
#include <strings.h>

#include "arklib/calling.h"
#include "arklib/cells.h"
#include "graphics/graphics_internal.h"

using namespace ak_internal;

int count_leading_data(const Mm& list) {
    int n = list.size();
    for (int k = 0; k < n; ++k) {
        const Mm& item = cell_at(list, k);
        if (item.flags.str || isstruct(item) || iscell(item)) return k;
    }
    return n < 0 ? 0 : n;
}

Mm prop_list_value(const Mm& list, int start, const Mm& name, const Mm& def) {
    char wanted[256];
    Mstr(name, wanted, sizeof wanted);
    int n = list.size();
    for (int p = start - 1; p >= 0 && p < n;) {
        const Mm& item = cell_at(list, p);
        int position = p + 1;
        if (isstruct(item)) {
            for (int f = 0; f < item.nfields; ++f)
                if (strcasecmp(item.fields[f], wanted) == 0) return getfield(item, TM(item.fields[f]));
            p += 1;
        } else if (iscell(item)) {
            const Mm* values = p + 1 < n ? &cell_at(list, p + 1) : nullptr;
            if (!values || !iscell(*values)) {
                error("set(h,pn,pv): if pn is a cell, pv must be a cell as well.");
                return def;
            }
            if (values->size() != item.size()) {
                error("findpropvalue: got two cells, different sizes");
                return def;
            }
            for (int k = 0; k < item.size(); ++k)
                if (text_is(cell_at(item, k), wanted)) return cell_at(*values, k);
            p += 2;
        } else if (item.flags.str && item.size() == 1) {
            if (strcasecmp(wanted, "Color") == 0) return item;
            p += 1;
        } else if (item.flags.str && p + 1 < n) {
            if (text_is(item, wanted)) return cell_at(list, p + 1);
            p += 2;
        } else {
            error("set: cannot parse in position %d", position);
            return def;
        }
    }
    return def;
}

void apply_prop_list(const Mm& h, const Mm& list, int start) {
    int n = list.size();
    if (start > n || start < 1) return;
    Mm rest = new_cell(1, n - start + 1);
    for (int k = start - 1; k < n; ++k) static_cast<Mm*>(rest.pr)[k - start + 1] = cell_at(list, k);
    set(h, rest);
}

Mm parse_color(const Mm& value) {
    if (!value.flags.str) return value;
    char text[100];
    Mstr(value, text, sizeof text);
    static const struct {
        const char* word;
        const char* letter;
        double rgb[3];
    } words[] = {{"yellow", "y", {1, 1, 0}}, {"magenta", "m", {1, 0, 1}}, {"cyan", "c", {0, 1, 1}},
                 {"red", "r", {1, 0, 0}},    {"green", "g", {0, 1, 0}},   {"blue", "b", {0, 0, 1}},
                 {"white", "w", {1, 1, 1}},  {"black", "k", {0, 0, 0}},   {"none", nullptr, {0, 0, 0}}};
    const double* found = nullptr;
    for (auto& w : words)
        if (strcasecmp(text, w.word) == 0 || (w.letter && strcasecmp(text, w.letter) == 0)) found = w.rgb;
    if (!found) {
        error("'%s' is illegal color", text);
        return value;
    }
    Mm out(0, 0, 0, 1, 3, ak_double);
    for (int k = 0; k < 3; ++k) out.addr()[k] = found[k];
    return out;
}
