// The string functions of cell arrays of strings: strsplit, strjoin, strtrim, contains,
// startsWith, endsWith; and fliplr and flipud, which reverse strings as any other matrix.
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/format.h"
#include "arklib/sparse.h"
#include "arklib/strings.h"
#include "runtime/strings_internal.h"

using ak_strings::cell_items;
using ak_strings::codes_of;

namespace {

typedef std::vector<double> codes_t;

// The strings of a string or a cell array of strings; false (after a report) for anything else.
bool string_list(const char* name, const Mm& m, std::vector<codes_t>& list) {
    if (!ak_strings::is_text(m)) {
        error("%s: input must be a string or a cell array of strings", name);
        return false;
    }
    if (!iscell(m)) {
        list.push_back(codes_of(m));
        return true;
    }
    for (int k = 0; k < m.nnz; ++k) list.push_back(codes_of(cell_items(m)[k]));
    return true;
}

bool starts_at(const codes_t& s, std::size_t at, const codes_t& p) {
    return at + p.size() <= s.size() && std::equal(p.begin(), p.end(), s.begin() + at);
}

// A name-value pair whose name must be `option`; its value's truth.
bool option_value(const char* fname, const char* option, const Mm& name, const Mm& value, bool& on) {
    std::string n = ak_strings::text_of(name);
    if (!name.flags.str || strcasecmp(n.c_str(), option) != 0) {
        error("%s: unknown option '%s'", fname, n.c_str());
        return false;
    }
    on = istrue(value);
    return true;
}

Mm split(const Mm& s, const Mm* delim, bool collapse) {
    s.warn_uninit();
    if (!ak_strings::is_string_row(s)) {
        error("strsplit: the first input must be a string");
        return x_M;
    }
    std::vector<codes_t> delims;
    if (delim) {
        if (!string_list("strsplit", *delim, delims)) return x_M;
        for (codes_t& d : delims) d = codes_of(ak_strings::string_row(format_escape(ak_strings::text_of(ak_strings::string_row(d)).c_str())));
    } else {
        delims = {{32}, {12}, {10}, {13}, {9}, {11}};
    }
    std::stable_sort(delims.begin(), delims.end(), [](const codes_t& a, const codes_t& b) { return a.size() > b.size(); });
    codes_t text = codes_of(s);
    std::vector<codes_t> parts(1);
    bool last_was_delim = false;
    for (std::size_t at = 0; at < text.size();) {
        const codes_t* hit = nullptr;
        for (const codes_t& d : delims)
            if (!d.empty() && starts_at(text, at, d)) {
                hit = &d;
                break;
            }
        if (!hit) {
            parts.back().push_back(text[at++]);
            last_was_delim = false;
            continue;
        }
        if (!(collapse && last_was_delim)) parts.emplace_back();
        last_was_delim = true;
        at += hit->size();
    }
    Mm r(0, 0, 0, 1, static_cast<int>(parts.size()), ak_mm);
    for (int k = 0; k < r.nnz; ++k) {
        Mm part = ak_strings::string_row(parts[k]);
        if (parts[k].empty()) part = Mm(0, 0, 0, 1, 0, ak_double), part.flags.str = 1;
        static_cast<Mm*>(r.pr)[k] = part;
    }
    return r;
}

}  // namespace

Mm strsplit(const Mm& s) { return split(s, nullptr, true); }
Mm strsplit(const Mm& s, const Mm& delim) { return split(s, &delim, true); }
Mm strsplit(const Mm& s, const Mm& delim, const Mm& name, const Mm& value) {
    bool collapse = true;
    if (!option_value("strsplit", "CollapseDelimiters", name, value, collapse)) return x_M;
    return split(s, &delim, collapse);
}

Mm strjoin(const Mm& c, const Mm& delim) {
    c.warn_uninit();
    delim.warn_uninit();
    if (!iscell(c) || !ak_strings::is_text(c)) {
        error("strjoin: the first input must be a cell array of strings");
        return x_M;
    }
    if (!ak_strings::is_string_row(delim)) {
        error("strjoin: the delimiter must be a string");
        return x_M;
    }
    codes_t d = codes_of(ak_strings::string_row(format_escape(ak_strings::text_of(delim).c_str())));
    codes_t out;
    for (int k = 0; k < c.nnz; ++k) {
        if (k) out.insert(out.end(), d.begin(), d.end());
        codes_t piece = codes_of(cell_items(c)[k]);
        out.insert(out.end(), piece.begin(), piece.end());
    }
    Mm r = ak_strings::string_row(out);
    if (out.empty()) r = Mm(0, 0, 0, 1, 0, ak_double), r.flags.str = 1;
    return r;
}

Mm strjoin(const Mm& c) { return strjoin(c, TM(" ")); }

Mm strtrim(const Mm& s) {
    if (iscell(s)) {
        if (!ak_strings::is_text(s)) {
            error("strtrim: input must be a string or a cell array of strings");
            return x_M;
        }
        return ak_strings::cell_map(s, strtrim);
    }
    s.warn_uninit();
    if (!s.flags.str || s.flags.type == ak_mm) {
        error("strtrim: input must be a string or a cell array of strings");
        return x_M;
    }
    Mm x = s.flags.sparse ? full(s) : s;
    if (x.nnz == 0) return x;
    auto white = [](double c) { return c == 32.0 || c == 0.0 || (c >= 9.0 && c <= 13.0); };
    int rows = x.dims[0], cols = x.nnz / rows, first = cols, last = -1;
    for (int c = 0; c < cols; ++c)
        for (int i = 0; i < rows; ++i)
            if (!white(ak_strings::code_at(x, c * rows + i))) {
                first = std::min(first, c);
                last = std::max(last, c);
            }
    int width = std::max(0, last - first + 1);
    Mm r(0, 0, 0, width || rows > 1 ? rows : 1, width, ak_double);
    for (int c = 0; c < width; ++c)
        for (int i = 0; i < rows; ++i) r.addr()[c * rows + i] = ak_strings::code_at(x, (first + c) * rows + i);
    r.flags.str = 1;
    return r;
}

// ---- contains, startsWith, endsWith ------------------------------------------------------------------

namespace {

enum where_t { anywhere, at_start, at_end };

bool found_in(codes_t s, codes_t p, where_t where, bool fold) {
    if (fold) {
        auto up = [](double& c) { if (c >= 'a' && c <= 'z') c -= 'a' - 'A'; };
        std::for_each(s.begin(), s.end(), up);
        std::for_each(p.begin(), p.end(), up);
    }
    if (p.size() > s.size()) return false;
    if (where == at_start) return starts_at(s, 0, p);
    if (where == at_end) return starts_at(s, s.size() - p.size(), p);
    return std::search(s.begin(), s.end(), p.begin(), p.end()) != s.end();
}

Mm text_search(const char* name, const Mm& s, const Mm& pattern, where_t where, bool fold) {
    s.warn_uninit();
    pattern.warn_uninit();
    std::vector<codes_t> texts, patterns;
    if (!string_list(name, s, texts) || !string_list(name, pattern, patterns)) return x_M;
    const int one[4] = {1, 1, 1, 1};
    Mm r = iscell(s) ? ak_strings::logical_matrix(s.ndims, s.dims) : ak_strings::logical_matrix(2, one);
    for (int k = 0; k < r.nnz; ++k) {
        bool hit = false;
        for (const codes_t& p : patterns) hit = hit || found_in(texts[k], p, where, fold);
        r.addr()[k] = hit ? 1.0 : 0.0;
    }
    return r;
}

Mm text_search(const char* name, const Mm& s, const Mm& pattern, where_t where, const Mm& option, const Mm& value) {
    bool fold = false;
    if (!option_value(name, "IgnoreCase", option, value, fold)) return x_M;
    return text_search(name, s, pattern, where, fold);
}

}  // namespace

Mm contains(const Mm& s, const Mm& p) { return text_search("contains", s, p, anywhere, false); }
Mm contains(const Mm& s, const Mm& p, const Mm& n, const Mm& v) { return text_search("contains", s, p, anywhere, n, v); }
Mm startsWith(const Mm& s, const Mm& p) { return text_search("startsWith", s, p, at_start, false); }
Mm startsWith(const Mm& s, const Mm& p, const Mm& n, const Mm& v) { return text_search("startsWith", s, p, at_start, n, v); }
Mm endsWith(const Mm& s, const Mm& p) { return text_search("endsWith", s, p, at_end, false); }
Mm endsWith(const Mm& s, const Mm& p, const Mm& n, const Mm& v) { return text_search("endsWith", s, p, at_end, n, v); }

// ---- fliplr, flipud ----------------------------------------------------------------------------------

namespace {

Mm flip(const char* name, const Mm& x0, bool columns) {
    x0.warn_uninit();
    if (x0.flags.type == ak_no_type) return x_M;
    if (x0.fields) {
        error("%s: a structure array cannot be flipped", name);
        return x_M;
    }
    Mm x = x0.flags.sparse ? full(x0) : x0;
    Mm r(x.pi ? 1 : 0, 0, 0, x.ndims, x.dims, x.flags.type);
    int rows = x.dims[0], cols = x.dims[1];
    for (int k = 0; k < r.nnz; ++k) {
        int i = k % rows, j = (k / rows) % cols, page = k / (rows * cols);
        int from = page * rows * cols + (columns ? (cols - 1 - j) * rows + i : j * rows + rows - 1 - i);
        if (x.flags.type == ak_mm)
            static_cast<Mm*>(r.pr)[k] = cell_items(x)[from];
        else if (x.flags.type == ak_uchar)
            static_cast<unsigned char*>(r.pr)[k] = static_cast<const unsigned char*>(x.pr)[from];
        else
            r.addr()[k] = x.addr()[from];
        if (x.pi) r.addi()[k] = x.addi()[from];
    }
    r.flags.str = x.flags.str;
    r.flags.logical = x.flags.logical;
    return x0.flags.sparse ? sparse(r) : r;
}

}  // namespace

Mm fliplr(const Mm& x) { return flip("fliplr", x, true); }
Mm flipud(const Mm& x) { return flip("flipud", x, false); }

AK_BUILTIN("strsplit", AK_FN(strsplit, const Mm&), AK_FN(strsplit, const Mm&, const Mm&),
           AK_FN(strsplit, const Mm&, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("strjoin", AK_FN(strjoin, const Mm&), AK_FN(strjoin, const Mm&, const Mm&));
AK_BUILTIN("strtrim", strtrim);
AK_BUILTIN("contains", AK_FN(contains, const Mm&, const Mm&), AK_FN(contains, const Mm&, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("startsWith", AK_FN(startsWith, const Mm&, const Mm&),
           AK_FN(startsWith, const Mm&, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("endsWith", AK_FN(endsWith, const Mm&, const Mm&), AK_FN(endsWith, const Mm&, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("fliplr", fliplr);
AK_BUILTIN("flipud", flipud);
