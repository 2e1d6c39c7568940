// The comparison family (strcmp, strncmp and their case-blind forms), findstr, strrep, strtok,
// strmatch and strcat.
#include <algorithm>
#include <climits>
#include <cmath>
#include <vector>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/list.h"
#include "arklib/sparse.h"
#include "arklib/strings.h"
#include "runtime/strings_internal.h"

using ak_strings::cell_items;
using ak_strings::codes_of;

namespace {

// ---- comparison ------------------------------------------------------------------------------------

// The first n elements of a value in storage order; a vector keeps its orientation, a matrix
// gives a row.
struct cut_value {
    int ndims;
    int dims[4];
    std::vector<double> codes;
};

cut_value cut(const Mm& m, int n) {
    cut_value c{m.ndims, {m.dims[0], m.dims[1], m.dims[2], m.dims[3]}, codes_of(m)};
    if (static_cast<int>(c.codes.size()) > n) {
        int keep = std::max(n, 0);
        c.codes.resize(keep);
        bool column = m.ndims == 2 && m.dims[1] == 1;
        c.ndims = 2;
        c.dims[0] = column ? keep : 1;
        c.dims[1] = column ? 1 : keep;
        c.dims[2] = c.dims[3] = 1;
    }
    return c;
}

// One pair: 0 unless both are strings; two empties are equal, an empty and a non-empty are not;
// otherwise the first n elements of each must agree in shape and value.
double compare_pair(const Mm& a, const Mm& b, int n) {
    bool a_text = a.flags.str && a.flags.type != ak_mm, b_text = b.flags.str && b.flags.type != ak_mm;
    if (!a_text || !b_text) return 0.0;
    if (a.size() == 0 || b.size() == 0) return a.size() == 0 && b.size() == 0 ? 1.0 : 0.0;
    cut_value x = cut(a, n), y = cut(b, n);
    if (x.ndims != y.ndims || !std::equal(x.dims, x.dims + 4, y.dims)) return 0.0;
    return x.codes == y.codes ? 1.0 : 0.0;
}

Mm wrap_in_cell(const Mm& m) {
    Mm c(0, 0, 0, 1, 1, ak_mm);
    static_cast<Mm*>(c.pr)[0] = m;
    return c;
}

// A cell of the given shape whose every element is the one element of c.
Mm spread(const Mm& c, const Mm& like) {
    Mm r(0, 0, 0, like.ndims, like.dims, ak_mm);
    for (int k = 0; k < r.nnz; ++k) static_cast<Mm*>(r.pr)[k] = cell_items(c)[0];
    return r;
}

bool same_size(const Mm& a, const Mm& b) { return a.ndims == b.ndims && std::equal(a.dims, a.dims + 4, b.dims); }

int count_of(const Mm& n) {
    std::vector<double> v = codes_of(n);
    if (v.empty() || std::isnan(v[0])) return 0;
    if (v[0] >= INT_MAX) return INT_MAX;
    if (v[0] <= INT_MIN) return INT_MIN;
    return static_cast<int>(v[0]);
}

Mm compare(const Mm& a0, const Mm& b0, int n, bool fold) {
    a0.warn_uninit();
    b0.warn_uninit();
    if (n == 0) return Mm(0.0);
    Mm a = fold ? upper(a0) : a0, b = fold ? upper(b0) : b0;
    bool a_cell = iscell(a), b_cell = iscell(b);
    if (!a_cell && !b_cell) return Mm(compare_pair(a, b, n));
    if (!a_cell) a = wrap_in_cell(a);
    if (!b_cell) b = wrap_in_cell(b);
    if (!same_size(a, b)) {
        if (a.size() == 1)
            a = spread(a, b);
        else if (b.size() == 1)
            b = spread(b, a);
        else {
            error("strcmp: sizes of cell array do not match");
            return Mm(0.0);
        }
    }
    Mm r(0, 0, 0, a.ndims, a.dims, ak_double);
    for (int k = 0; k < r.nnz; ++k) r.addr()[k] = compare_pair(cell_items(a)[k], cell_items(b)[k], n);
    return r;
}

}  // namespace

Mm strncmp(const Mm& a, const Mm& b, const Mm& n) { return compare(a, b, count_of(n), false); }
Mm strcmp(const Mm& a, const Mm& b) { return compare(a, b, INT_MAX, false); }
Mm strncmpi(const Mm& a, const Mm& b, const Mm& n) { return compare(a, b, count_of(n), true); }
Mm strcmpi(const Mm& a, const Mm& b) { return compare(a, b, INT_MAX, true); }

Mm strcmp(const Mm&) { return Mm(error_input("strcmp", 1)); }
Mm strcmpi(const Mm&) { return Mm(error_input("strcmpi", 1)); }
Mm strncmp(const Mm&) { return Mm(error_input("strncmp", 1)); }
Mm strncmp(const Mm&, const Mm&) { return Mm(error_input("strncmp", 2)); }
Mm strncmpi(const Mm&) { return Mm(error_input("strncmpi", 1)); }
Mm strncmpi(const Mm&, const Mm&) { return Mm(error_input("strncmpi", 2)); }

// ---- findstr -----------------------------------------------------------------------------------------

namespace {

std::vector<int> positions(const std::vector<double>& text, const std::vector<double>& pattern) {
    std::vector<int> at;
    if (pattern.empty() || pattern.size() > text.size()) return at;
    for (std::size_t i = 0; i + pattern.size() <= text.size(); ++i)
        if (std::equal(pattern.begin(), pattern.end(), text.begin() + i)) at.push_back(static_cast<int>(i));
    return at;
}

}  // namespace

Mm findstr(const Mm& a, const Mm& b) {
    a.warn_uninit();
    b.warn_uninit();
    if (error_numeric(a, "findstr") || error_numeric(b, "findstr")) return x_M;
    std::vector<double> x = codes_of(a), y = codes_of(b);
    std::vector<int> at = x.size() < y.size() ? positions(y, x) : positions(x, y);
    if (at.empty()) return Mm(0, 0, 0, 0, 0, ak_double);
    Mm r(0, 0, 0, 1, static_cast<int>(at.size()), ak_double);
    for (int k = 0; k < r.nnz; ++k) r.addr()[k] = at[k] + 1.0;
    return r;
}

Mm findstr(const Mm&) { return Mm(error_input("findstr", 1)); }

// ---- strrep ------------------------------------------------------------------------------------------

namespace {

// Works from the last match back to the first, rebuilding the text around each: a match that
// overlaps one already replaced sees the text as that replacement left it.
std::vector<double> replace_all(std::vector<double> s, const std::vector<double>& from,
                                const std::vector<double>& to) {
    std::vector<int> at = positions(s, from);
    for (auto p = at.rbegin(); p != at.rend(); ++p) {
        std::size_t pos = static_cast<std::size_t>(*p), tail = std::min(s.size(), pos + from.size());
        std::vector<double> next(s.begin(), s.begin() + std::min(pos, s.size()));
        next.insert(next.end(), to.begin(), to.end());
        next.insert(next.end(), s.begin() + tail, s.end());
        s = std::move(next);
    }
    return s;
}

}  // namespace

Mm strrep(const Mm& s, const Mm& from, const Mm& to) {
    s.warn_uninit();
    from.warn_uninit();
    to.warn_uninit();
    if (error_numeric(from, "strrep") || error_numeric(to, "strrep")) return x_M;
    std::vector<double> f = codes_of(from), t = codes_of(to);
    if (iscell(s)) {
        // Each string, padded as a row of the character matrix of the cell, then trimmed again.
        Mm rows = mchar(s);
        Mm r(0, 0, 0, rows.dims[0], 1, ak_mm);
        int n = rows.dims[0], width = n ? rows.nnz / n : 0;
        for (int i = 0; i < n; ++i) {
            std::vector<double> row(width);
            for (int c = 0; c < width; ++c) row[c] = rows.addr()[c * n + i];
            static_cast<Mm*>(r.pr)[i] = deblank(ak_strings::string_row(replace_all(row, f, t)));
        }
        return r;
    }
    if (error_numeric(s, "strrep")) return x_M;
    std::vector<double> text = codes_of(s);
    if (text.size() < f.size() || positions(text, f).empty()) return s;
    Mm r = ak_strings::string_row(replace_all(text, f, t));
    r.flags.str = s.flags.str;
    return r;
}

Mm strrep(const Mm&) { return Mm(error_input("strrep", 1)); }
Mm strrep(const Mm&, const Mm&) { return Mm(error_input("strrep", 2)); }

// ---- strtok ------------------------------------------------------------------------------------------

Mm strtok(const Mm& s, const Mm& delim, i_o_t, Mm& token, Mm& rest) {
    s.warn_uninit();
    delim.warn_uninit();
    if (error_numeric(s, "strtok") || error_numeric(delim, "strtok")) return x_M;
    std::vector<double> text = codes_of(s), d = codes_of(delim);
    auto is_delim = [&](double c) { return std::find(d.begin(), d.end(), c) != d.end(); };
    std::size_t start = 0;
    while (start < text.size() && is_delim(text[start])) ++start;
    Mm empty(0, 0, 0, 0, 0, ak_double);
    if (start == text.size()) {
        token = empty;
        rest = empty;
        token.flags.str = s.flags.str || delim.flags.str;
        rest.flags.str = s.flags.str;
        return token;
    }
    std::size_t end = start;
    while (end < text.size() && !is_delim(text[end])) ++end;
    token = ak_strings::vector_like(s, std::vector<double>(text.begin() + start, text.begin() + end),
                                    s.flags.str || delim.flags.str);
    std::vector<double> tail(text.begin() + end, text.end());
    rest = tail.empty() ? empty : ak_strings::vector_like(s, tail, s.flags.str);
    rest.flags.str = s.flags.str;
    return token;
}

Mm strtok(const Mm& s, const Mm& delim, i_o_t, Mm& rest) {
    Mm token;
    return strtok(s, delim, i_o, token, rest);
}

namespace {

// Tab, line feed, vertical tab, form feed, carriage return and blank.
Mm white_space() {
    Mm d(0, 0, 0, 1, 6, ak_double);
    const double codes[] = {9, 10, 11, 12, 13, 32};
    for (int k = 0; k < 6; ++k) d.addr()[k] = codes[k];
    return d;
}

}  // namespace

Mm strtok(const Mm& s, i_o_t, Mm& token, Mm& rest) { return strtok(s, white_space(), i_o, token, rest); }
Mm strtok(const Mm& s, i_o_t, Mm& rest) {
    Mm token;
    return strtok(s, white_space(), i_o, token, rest);
}
Mm strtok(const Mm& s, const Mm& delim) {
    Mm token, rest;
    return strtok(s, delim, i_o, token, rest);
}
Mm strtok(const Mm& s) {
    Mm token, rest;
    return strtok(s, white_space(), i_o, token, rest);
}
Mm strtok() { return Mm(error_input("strtok", 0)); }

// ---- strmatch ----------------------------------------------------------------------------------------

Mm strmatch(const Mm& pattern, const Mm& list, const Mm& exact) {
    pattern.warn_uninit();
    list.warn_uninit();
    Mm p = iscell(pattern) ? mchar(pattern) : pattern;
    Mm l = iscell(list) ? mchar(list) : list;
    if (error_numeric(p, "strmatch") || error_numeric(l, "strmatch")) return x_M;
    if (l.flags.sparse) l = full(l);
    Mm wanted = deblank(p);
    int rows = l.dims[0], cols = rows ? l.nnz / rows : 0;
    bool whole = exact.size() > 0 && istrue(exact);
    Mm n(static_cast<double>(whole ? cols : static_cast<int>(codes_of(wanted).size())));
    std::vector<double> found;
    for (int i = 0; i < rows; ++i) {
        std::vector<double> row(cols);
        for (int c = 0; c < cols; ++c) row[c] = ak_strings::code_at(l, c * rows + i);
        Mm text = ak_strings::string_row(row);
        text.flags.str = l.flags.str;
        if (istrue(strncmp(deblank(text), wanted, n))) found.push_back(i + 1.0);
    }
    if (found.empty()) return Mm(0, 0, 0, 0, 0, ak_double);
    Mm r(0, 0, 0, static_cast<int>(found.size()), 1, ak_double);
    std::copy(found.begin(), found.end(), r.addr());
    return r;
}

Mm strmatch(const Mm& pattern, const Mm& list) { return strmatch(pattern, list, Mm(0.0)); }
Mm strmatch(const Mm&) { return Mm(error_input("strmatch", 1)); }

// ---- strcat ------------------------------------------------------------------------------------------

namespace {

// The elements of a cell operand as a column, or the rows of a string as a cell.
Mm as_column(const Mm& m) {
    if (!iscell(m)) return cellstr(m);
    Mm r(0, 0, 0, m.nnz, 1, ak_mm);
    for (int k = 0; k < m.nnz; ++k) static_cast<Mm*>(r.pr)[k] = cell_items(m)[k];
    return r;
}

Mm element(const Mm& c, int k) { return cell_items(c)[c.nnz == 1 ? 0 : k]; }

Mm join_pair(const Mm& a0, const Mm& b0) {
    bool a_cell = iscell(a0);
    Mm a = as_column(a0), b = as_column(b0);
    if (a.flags.type != ak_mm || b.flags.type != ak_mm) return x_M;  // cellstr reported
    int n = std::max(a.nnz, b.nnz);
    if (a.nnz != b.nnz && a.nnz > 1 && b.nnz > 1) {
        error("strcat: arguments must have the same number of strings");
        return x_M;
    }
    Mm r(0, 0, 0, n, 1, ak_mm);
    for (int k = 0; k < n; ++k) {
        Mm x = a.nnz ? deblank(element(a, k)) : Mm(), y = b.nnz ? deblank(element(b, k)) : Mm();
        Mm joined = a.nnz == 0 ? y : b.nnz == 0 ? x : horzcat(x, y);
        static_cast<Mm*>(r.pr)[k] = joined;
    }
    if (!a_cell) return mchar(r);
    if (a0.ndims == 2 && a0.dims[0] == 1) r.reshape(1, n);
    return r;
}

}  // namespace

Mm strcat(int n, const Mm* const* list) {
    if (n == 0) return Mm(0, 0, 0, 0, 0, ak_double);
    for (int k = 0; k < n; ++k) list[k]->warn_uninit();
    if (n == 1) return join_pair(*list[0], Mm(0, 0, 0, 0, 0, ak_double));
    Mm r = join_pair(*list[0], *list[1]);
    for (int k = 2; k < n; ++k) r = join_pair(r, *list[k]);
    return r;
}

Mm strcat() { return strcat(0, nullptr); }
Mm strcat(const Mm& a) {
    const Mm* l[] = {&a};
    return strcat(1, l);
}
Mm strcat(const Mm& a, const Mm& b) {
    const Mm* l[] = {&a, &b};
    return strcat(2, l);
}
Mm strcat(const Mm& a, const Mm& b, const Mm& c) {
    const Mm* l[] = {&a, &b, &c};
    return strcat(3, l);
}
Mm strcat(const Mm& a, const Mm& b, const Mm& c, const Mm& d) {
    const Mm* l[] = {&a, &b, &c, &d};
    return strcat(4, l);
}
Mm strcat(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e) {
    const Mm* l[] = {&a, &b, &c, &d, &e};
    return strcat(5, l);
}
Mm strcat(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e, const Mm& f) {
    const Mm* l[] = {&a, &b, &c, &d, &e, &f};
    return strcat(6, l);
}
Mm strcat(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e, const Mm& f, const Mm& g) {
    const Mm* l[] = {&a, &b, &c, &d, &e, &f, &g};
    return strcat(7, l);
}
Mm strcat(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e, const Mm& f, const Mm& g,
          const Mm& h) {
    const Mm* l[] = {&a, &b, &c, &d, &e, &f, &g, &h};
    return strcat(8, l);
}

namespace {

void strcat_any(int nin, const Mm* in, int, Mm* out) {
    std::vector<const Mm*> list;
    for (int k = 0; k < nin; ++k) list.push_back(&in[k]);
    out[0] = strcat(nin, list.data());
}

}  // namespace

AK_BUILTIN("strcmp", AK_FN(strcmp, const Mm&, const Mm&));
AK_BUILTIN("strcmpi", AK_FN(strcmpi, const Mm&, const Mm&));
AK_BUILTIN("strncmp", AK_FN(strncmp, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("strncmpi", AK_FN(strncmpi, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("findstr", AK_FN(findstr, const Mm&, const Mm&));
AK_BUILTIN("strrep", AK_FN(strrep, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("strtok", AK_FN(strtok, const Mm&), AK_FN(strtok, const Mm&, const Mm&),
           AK_FN(strtok, const Mm&, i_o_t, Mm&), AK_FN(strtok, const Mm&, const Mm&, i_o_t, Mm&));
AK_BUILTIN("strmatch", AK_FN(strmatch, const Mm&, const Mm&), AK_FN(strmatch, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("strcat", strcat_any);
