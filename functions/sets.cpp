// Set operations. Every operation sorts the elements of its arguments once (by index, so that the
// order of first appearance is known), groups equal elements, and reads its answer off the groups.
#include "arklib/sets.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>
#include <string>
#include <vector>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"

namespace {

// The elements of one or two set arguments, compared by position. Numbers compare by value
// (complex ones by modulus, then angle), rows element by element, texts as strings; NaN sorts last
// and equals nothing.
struct elements_t {
    enum kind_t { numbers, rows, texts } kind = numbers;
    int n = 0;
    int width = 1;
    std::vector<double> re, im;
    std::vector<std::string> text;
    bool str = false, logical = false, complex = false, bytes = false;

    double key(int a, int c) const { return re[static_cast<std::size_t>(a) * width + c]; }
    bool is_nan(int a) const {
        for (int c = 0; c < width; ++c)
            if (std::isnan(key(a, c)) || (complex && std::isnan(im[static_cast<std::size_t>(a) * width + c]))) return true;
        return false;
    }
    // -1, 0 or 1, NaN after every number and equal to other NaNs for ordering only.
    int order(int a, int b) const {
        if (kind == texts) return text[a].compare(text[b]) < 0 ? -1 : (text[a] == text[b] ? 0 : 1);
        for (int c = 0; c < width; ++c) {
            double x = key(a, c), y = key(b, c);
            if (complex) {
                const std::size_t ia = static_cast<std::size_t>(a) * width + c, ib = static_cast<std::size_t>(b) * width + c;
                const double ma = std::hypot(re[ia], im[ia]), mb = std::hypot(re[ib], im[ib]);
                if (ma != mb) return (std::isnan(ma) || mb < ma) ? 1 : -1;
                x = std::atan2(im[ia], re[ia]);
                y = std::atan2(im[ib], re[ib]);
            }
            const bool nx = std::isnan(x), ny = std::isnan(y);
            if (nx || ny) {
                if (nx != ny) return nx ? 1 : -1;
                continue;
            }
            if (x != y) return x < y ? -1 : 1;
        }
        return 0;
    }
    bool same(int a, int b) const { return order(a, b) == 0 && (kind == texts || !is_nan(a)); }
};

struct options_t {
    bool rows = false, stable = false, last = false;
};

bool read_option(const char* function, const Mm& o, options_t& opt) {
    char word[16];
    Mstr(o, word, sizeof word);
    if (!std::strcmp(word, "rows")) {
        opt.rows = true;
    } else if (!std::strcmp(word, "stable")) {
        opt.stable = true;
    } else if (!std::strcmp(word, "sorted") || !std::strcmp(word, "first") || !std::strcmp(word, "legacy")) {
    } else if (!std::strcmp(word, "last")) {
        opt.last = true;
    } else {
        error("%s: unknown option '%s'", function, word);
        return false;
    }
    return true;
}

bool text_of_cell(const Mm& e, std::string& out) {
    if (e.flags.type == ak_mm) return false;
    Mm d = e.flags.type == ak_double ? e : mdouble(e);
    out.clear();
    for (int k = 0; k < d.size(); ++k) out += static_cast<char>(d.addr()[k]);
    return true;
}

// Appends the elements of x to into.
bool gather(const char* function, const Mm& x, bool rows, elements_t& into) {
    x.warn_uninit();
    if (iscell(x)) {
        if (into.n && into.kind != elements_t::texts) {
            error("%s: a cell array of strings can only be combined with another one or a string", function);
            return false;
        }
        into.kind = elements_t::texts;
        const Mm* e = static_cast<const Mm*>(x.pr);
        for (int k = 0; k < x.size(); ++k) {
            std::string s;
            if (!e[k].flags.str && e[k].size() != 0) {
                error("%s: cell array elements must be strings", function);
                return false;
            }
            text_of_cell(e[k], s);
            into.text.push_back(s);
        }
        into.n += x.size();
        return true;
    }
    if (x.fields || error_numeric(x, function)) return false;
    if (into.kind == elements_t::texts) {  // a string beside a cell of strings is one element
        if (!x.flags.str && x.size() != 0) {
            error("%s: a cell array of strings can only be combined with another one or a string", function);
            return false;
        }
        std::string s;
        text_of_cell(x, s);
        into.text.push_back(s);
        into.n += 1;
        return true;
    }
    Mm d = mdouble(x);
    into.str = into.str || x.flags.str;
    into.bytes = into.n == 0 ? x.flags.type == ak_uchar : into.bytes && x.flags.type == ak_uchar;
    into.logical = into.n == 0 ? x.flags.logical != 0 : into.logical && x.flags.logical;
    if (d.pi && !into.complex) {
        into.complex = true;
        into.im.assign(into.re.size(), 0.0);
    }
    if (rows) {
        if (d.ndims > 2) {
            error("%s: 'rows' needs 2-d matrices", function);
            return false;
        }
        const int r = d.dims[0], c = d.dims[1];
        if (into.n && c != into.width && r) {
            error("%s: the matrices must have the same number of columns with 'rows'", function);
            return false;
        }
        into.kind = elements_t::rows;
        if (r) into.width = c;
        for (int i = 0; i < r; ++i)
            for (int j = 0; j < c; ++j) {
                into.re.push_back(d.addr()[i + static_cast<std::size_t>(j) * r]);
                if (into.complex) into.im.push_back(d.pi ? d.addi()[i + static_cast<std::size_t>(j) * r] : 0.0);
            }
        into.n += r;
        return true;
    }
    for (int k = 0; k < d.size(); ++k) {
        into.re.push_back(d.addr()[k]);
        if (into.complex) into.im.push_back(d.pi ? d.addi()[k] : 0.0);
    }
    into.n += d.size();
    return true;
}

// Groups of equal elements: order holds the positions sorted, start[g] where group g begins in it.
struct groups_t {
    std::vector<int> order, start;
    int size(int g) const { return start[g + 1] - start[g]; }
    int count() const { return static_cast<int>(start.size()) - 1; }
};

groups_t group(const elements_t& e) {
    groups_t g;
    g.order.resize(e.n);
    std::iota(g.order.begin(), g.order.end(), 0);
    std::stable_sort(g.order.begin(), g.order.end(), [&](int a, int b) { return e.order(a, b) < 0; });
    for (int k = 0; k < e.n; ++k)
        if (k == 0 || !e.same(g.order[k - 1], g.order[k])) g.start.push_back(k);
    g.start.push_back(e.n);
    return g;
}

// The matrix of the chosen elements, as a row or a column (rows of a matrix with 'rows').
Mm build(const elements_t& e, const std::vector<int>& pick, bool as_row, bool empty_square) {
    const int n = static_cast<int>(pick.size());
    if (e.kind == elements_t::texts) {
        Mm c(0, 0, 0, as_row ? 1 : n, as_row ? n : 1, ak_mm);
        Mm* out = static_cast<Mm*>(c.pr);
        for (int k = 0; k < n; ++k) out[k] = TM(e.text[pick[k]].c_str());
        return c;
    }
    const int rows = e.kind == elements_t::rows ? n : (as_row ? 1 : n);
    const int cols = e.kind == elements_t::rows ? e.width : (as_row ? n : 1);
    if (n == 0 && empty_square) return Mm(0, 0, 0, 0, 0, ak_double);
    Mm r(e.complex ? 1 : 0, 0, 0, rows, cols, ak_double);
    for (int k = 0; k < n; ++k)
        for (int c = 0; c < e.width; ++c) {
            const std::size_t from = static_cast<std::size_t>(pick[k]) * e.width + c;
            const std::size_t to = e.kind == elements_t::rows ? k + static_cast<std::size_t>(c) * rows : k;
            r.addr()[to] = e.re[from];
            if (e.complex) r.addi()[to] = e.im[from];
        }
    r.flags.str = e.str;
    r.flags.logical = e.logical;
    if (e.bytes && !e.complex) return muint8(r);
    return r;
}

Mm index_column(const std::vector<int>& v, int offset) {
    Mm r(0, 0, 0, static_cast<int>(v.size()), 1, ak_double);
    for (std::size_t k = 0; k < v.size(); ++k) r.addr()[k] = v[k] - offset + 1;
    return r;
}

bool is_row(const Mm& x) { return x.ndims == 2 && x.dims[0] == 1; }
bool is_empty_square(const Mm& x) { return x.ndims == 2 && x.dims[0] == 0 && x.dims[1] == 0; }

bool read_options(const char* function, std::initializer_list<const Mm*> opts, options_t& o) {
    for (const Mm* p : opts)
        if (p && !read_option(function, *p, o)) return false;
    return true;
}

// unique of real doubles with one output: sort the values themselves.
Mm unique_values(const Mm& a) {
    Mm d = mdouble(a);
    std::vector<double> v(d.addr(), d.addr() + d.size());
    auto nan_begin = std::partition(v.begin(), v.end(), [](double x) { return !std::isnan(x); });
    std::sort(v.begin(), nan_begin);
    auto end = std::unique(v.begin(), nan_begin);
    const std::size_t nans = v.end() - nan_begin;
    std::move(nan_begin, v.end(), end);
    v.resize(static_cast<std::size_t>(end - v.begin()) + nans);
    const int n = static_cast<int>(v.size());
    const bool row = is_row(a);
    Mm r(0, 0, 0, row ? 1 : n, row ? n : 1, ak_double);
    std::copy(v.begin(), v.end(), r.addr());
    r.flags.str = a.flags.str;
    r.flags.logical = a.flags.logical;
    return r;
}

Mm unique_impl(const Mm& a, std::initializer_list<const Mm*> opts, Mm* i_out, Mm* j_out) {
    options_t o;
    if (!read_options("unique", opts, o)) return x_M;
    const bool plain = !i_out && !o.rows && !o.stable && a.flags.type == ak_double && !a.pi && !iscell(a) &&
                       !a.fields && !a.flags.sparse;
    if (plain) {
        a.warn_uninit();
        if (is_empty_square(a)) return Mm(0, 0, 0, 0, 0, ak_double);
        return unique_values(a);
    }
    elements_t e;
    if (!gather("unique", a, o.rows, e)) return x_M;
    groups_t g = group(e);
    std::vector<int> rep(g.count()), of(e.n);
    for (int k = 0; k < g.count(); ++k) {
        const int* first = &g.order[g.start[k]];
        rep[k] = o.last ? *std::max_element(first, first + g.size(k)) : *std::min_element(first, first + g.size(k));
    }
    std::vector<int> slot(g.count());
    std::iota(slot.begin(), slot.end(), 0);
    if (o.stable) std::sort(slot.begin(), slot.end(), [&](int x, int y) { return rep[x] < rep[y]; });
    std::vector<int> pick(g.count()), rank(g.count());
    for (int k = 0; k < g.count(); ++k) {
        pick[k] = rep[slot[k]];
        rank[slot[k]] = k;
    }
    for (int k = 0; k < g.count(); ++k)
        for (int m = g.start[k]; m < g.start[k + 1]; ++m) of[g.order[m]] = rank[k];
    if (i_out) *i_out = index_column(pick, 0);
    if (j_out) *j_out = index_column(of, 0);
    return build(e, pick, !o.rows && is_row(a), is_empty_square(a) && !o.rows);
}

// What a two-set operation keeps of a group that has some elements of a (na > 0) and of b.
enum class combine_t { both_or_either, both, only_a, exactly_one };

Mm combine(const char* function, const Mm& a, const Mm& b, const Mm* opt, combine_t how, Mm* ia_out, Mm* ib_out) {
    options_t o;
    if (!read_options(function, {opt}, o)) return x_M;
    elements_t e;
    // A string beside a cell array of strings joins it as one text.
    const bool cells = iscell(a) || iscell(b);
    if (cells && !iscell(a)) {
        elements_t first;
        first.kind = elements_t::texts;
        if (!gather(function, a, false, first)) return x_M;
        e = first;
    } else if (!gather(function, a, o.rows, e)) {
        return x_M;
    }
    const int na = e.n;
    if (!gather(function, b, o.rows, e)) return x_M;
    groups_t g = group(e);
    // One entry per kept group: the element shown, and where it is first met in a and in b.
    struct kept_t {
        int shown, in_a, in_b;
    };
    std::vector<kept_t> kept;
    for (int k = 0; k < g.count(); ++k) {
        int first_a = -1, first_b = -1;
        for (int m = g.start[k]; m < g.start[k + 1]; ++m) {
            const int p = g.order[m];
            if (p < na && (first_a < 0 || p < first_a)) first_a = p;
            if (p >= na && (first_b < 0 || p < first_b)) first_b = p;
        }
        const bool in_a = first_a >= 0, in_b = first_b >= 0;
        const bool keep = how == combine_t::both_or_either || (how == combine_t::both && in_a && in_b) ||
                          (how == combine_t::only_a && in_a && !in_b) || (how == combine_t::exactly_one && in_a != in_b);
        if (keep) kept.push_back({in_a ? first_a : first_b, first_a, first_b});
    }
    // Order of first appearance: a before b, each in its own order.
    if (o.stable)
        std::stable_sort(kept.begin(), kept.end(), [](const kept_t& x, const kept_t& y) { return x.shown < y.shown; });
    std::vector<int> pick, ia, ib;
    for (const kept_t& k : kept) {
        pick.push_back(k.shown);
        // Intersections name both places; the others name the set the element was taken from.
        if (how == combine_t::both) {
            ia.push_back(k.in_a);
            ib.push_back(k.in_b);
        } else if (k.in_a >= 0) {
            ia.push_back(k.in_a);
        } else {
            ib.push_back(k.in_b);
        }
    }
    const bool row = !o.rows && (is_row(a) || is_empty_square(a)) && (is_row(b) || is_empty_square(b)) &&
                     (is_row(a) || is_row(b));
    if (ia_out) *ia_out = index_column(ia, 0);
    if (ib_out) *ib_out = index_column(ib, na);
    return build(e, pick, row, false);
}

Mm ismember_impl(const Mm& a, const Mm& s, const Mm* opt, Mm& loc) {
    options_t o;
    if (!read_options("ismember", {opt}, o)) return x_M;
    elements_t e;
    // A single string asked of a cell array of strings is one element.
    if (iscell(s) && !iscell(a)) e.kind = elements_t::texts;
    if (!gather("ismember", a, o.rows, e)) return x_M;
    const int na = e.n;
    if (!gather("ismember", s, o.rows, e)) return x_M;
    groups_t g = group(e);
    std::vector<int> where(na, -1);
    for (int k = 0; k < g.count(); ++k) {
        int first_s = -1;
        for (int m = g.start[k]; m < g.start[k + 1]; ++m)
            if (g.order[m] >= na && (first_s < 0 || g.order[m] < first_s)) first_s = g.order[m];
        for (int m = g.start[k]; m < g.start[k + 1]; ++m)
            if (g.order[m] < na) where[g.order[m]] = first_s;
    }
    // The answers have the shape of a (one per row with 'rows'; one for a lone string).
    const bool one = e.kind == elements_t::texts && !iscell(a);
    const int rows = o.rows || one ? na : a.dims[0];
    const int cols = o.rows || one ? 1 : (na ? na / std::max(1, a.dims[0]) : a.dims[1]);
    Mm tf(0, 0, 0, one ? 1 : rows, one ? 1 : cols, ak_double);
    loc = Mm(0, 0, 0, tf.dims[0], tf.dims[1], ak_double);
    if (!o.rows && !one && a.ndims > 2) {
        tf = Mm(0, 0, 0, a.ndims, a.dims, ak_double);
        loc = Mm(0, 0, 0, a.ndims, a.dims, ak_double);
    }
    tf.flags.logical = 1;
    for (int k = 0; k < na; ++k) {
        tf.addr()[k] = where[k] >= 0 ? 1 : 0;
        loc.addr()[k] = where[k] >= 0 ? where[k] - na + 1 : 0;
    }
    return tf;
}

}  // namespace

Mm unique(const Mm& a) { return unique_impl(a, {}, nullptr, nullptr); }
Mm unique(const Mm& a, const Mm& o1) { return unique_impl(a, {&o1}, nullptr, nullptr); }
Mm unique(const Mm& a, const Mm& o1, const Mm& o2) { return unique_impl(a, {&o1, &o2}, nullptr, nullptr); }
Mm unique(const Mm& a, i_o_t, Mm& i, Mm& j) { return unique_impl(a, {}, &i, &j); }
Mm unique(const Mm& a, const Mm& o1, i_o_t, Mm& i, Mm& j) { return unique_impl(a, {&o1}, &i, &j); }
Mm unique(const Mm& a, const Mm& o1, const Mm& o2, i_o_t, Mm& i, Mm& j) { return unique_impl(a, {&o1, &o2}, &i, &j); }

Mm unionM(const Mm& a, const Mm& b) { return combine("union", a, b, nullptr, combine_t::both_or_either, nullptr, nullptr); }
Mm unionM(const Mm& a, const Mm& b, const Mm& opt) { return combine("union", a, b, &opt, combine_t::both_or_either, nullptr, nullptr); }
Mm unionM(const Mm& a, const Mm& b, i_o_t, Mm& ia, Mm& ib) { return combine("union", a, b, nullptr, combine_t::both_or_either, &ia, &ib); }
Mm unionM(const Mm& a, const Mm& b, const Mm& opt, i_o_t, Mm& ia, Mm& ib) {
    return combine("union", a, b, &opt, combine_t::both_or_either, &ia, &ib);
}
Mm intersect(const Mm& a, const Mm& b) { return combine("intersect", a, b, nullptr, combine_t::both, nullptr, nullptr); }
Mm intersect(const Mm& a, const Mm& b, const Mm& opt) { return combine("intersect", a, b, &opt, combine_t::both, nullptr, nullptr); }
Mm intersect(const Mm& a, const Mm& b, i_o_t, Mm& ia, Mm& ib) { return combine("intersect", a, b, nullptr, combine_t::both, &ia, &ib); }
Mm intersect(const Mm& a, const Mm& b, const Mm& opt, i_o_t, Mm& ia, Mm& ib) {
    return combine("intersect", a, b, &opt, combine_t::both, &ia, &ib);
}
Mm setdiff(const Mm& a, const Mm& b) { return combine("setdiff", a, b, nullptr, combine_t::only_a, nullptr, nullptr); }
Mm setdiff(const Mm& a, const Mm& b, const Mm& opt) { return combine("setdiff", a, b, &opt, combine_t::only_a, nullptr, nullptr); }
Mm setdiff(const Mm& a, const Mm& b, i_o_t, Mm& ia) { return combine("setdiff", a, b, nullptr, combine_t::only_a, &ia, nullptr); }
Mm setdiff(const Mm& a, const Mm& b, const Mm& opt, i_o_t, Mm& ia) {
    return combine("setdiff", a, b, &opt, combine_t::only_a, &ia, nullptr);
}
Mm setxor(const Mm& a, const Mm& b) { return combine("setxor", a, b, nullptr, combine_t::exactly_one, nullptr, nullptr); }
Mm setxor(const Mm& a, const Mm& b, const Mm& opt) { return combine("setxor", a, b, &opt, combine_t::exactly_one, nullptr, nullptr); }
Mm setxor(const Mm& a, const Mm& b, i_o_t, Mm& ia, Mm& ib) { return combine("setxor", a, b, nullptr, combine_t::exactly_one, &ia, &ib); }
Mm setxor(const Mm& a, const Mm& b, const Mm& opt, i_o_t, Mm& ia, Mm& ib) {
    return combine("setxor", a, b, &opt, combine_t::exactly_one, &ia, &ib);
}
Mm ismember(const Mm& a, const Mm& s) {
    Mm loc;
    return ismember_impl(a, s, nullptr, loc);
}
Mm ismember(const Mm& a, const Mm& s, const Mm& opt) {
    Mm loc;
    return ismember_impl(a, s, &opt, loc);
}
Mm ismember(const Mm& a, const Mm& s, i_o_t, Mm& loc) { return ismember_impl(a, s, nullptr, loc); }
Mm ismember(const Mm& a, const Mm& s, const Mm& opt, i_o_t, Mm& loc) { return ismember_impl(a, s, &opt, loc); }

AK_BUILTIN("unique", AK_FN(unique, const Mm&), AK_FN(unique, const Mm&, const Mm&), AK_FN(unique, const Mm&, const Mm&, const Mm&),
           AK_FN(unique, const Mm&, i_o_t, Mm&, Mm&), AK_FN(unique, const Mm&, const Mm&, i_o_t, Mm&, Mm&),
           AK_FN(unique, const Mm&, const Mm&, const Mm&, i_o_t, Mm&, Mm&));
AK_BUILTIN("union", AK_FN(unionM, const Mm&, const Mm&), AK_FN(unionM, const Mm&, const Mm&, const Mm&),
           AK_FN(unionM, const Mm&, const Mm&, i_o_t, Mm&, Mm&), AK_FN(unionM, const Mm&, const Mm&, const Mm&, i_o_t, Mm&, Mm&));
AK_BUILTIN("intersect", AK_FN(intersect, const Mm&, const Mm&), AK_FN(intersect, const Mm&, const Mm&, const Mm&),
           AK_FN(intersect, const Mm&, const Mm&, i_o_t, Mm&, Mm&), AK_FN(intersect, const Mm&, const Mm&, const Mm&, i_o_t, Mm&, Mm&));
AK_BUILTIN("setdiff", AK_FN(setdiff, const Mm&, const Mm&), AK_FN(setdiff, const Mm&, const Mm&, const Mm&),
           AK_FN(setdiff, const Mm&, const Mm&, i_o_t, Mm&), AK_FN(setdiff, const Mm&, const Mm&, const Mm&, i_o_t, Mm&));
AK_BUILTIN("setxor", AK_FN(setxor, const Mm&, const Mm&), AK_FN(setxor, const Mm&, const Mm&, const Mm&),
           AK_FN(setxor, const Mm&, const Mm&, i_o_t, Mm&, Mm&), AK_FN(setxor, const Mm&, const Mm&, const Mm&, i_o_t, Mm&, Mm&));
AK_BUILTIN("ismember", AK_FN(ismember, const Mm&, const Mm&), AK_FN(ismember, const Mm&, const Mm&, const Mm&),
           AK_FN(ismember, const Mm&, const Mm&, i_o_t, Mm&), AK_FN(ismember, const Mm&, const Mm&, const Mm&, i_o_t, Mm&));
