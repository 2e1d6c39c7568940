// Regular expressions: regexp, regexpi and regexprep on PCRE2. Text is matched as 32-bit code
// units, one for each character code, so that positions in the subject are positions in the string.
#define PCRE2_CODE_UNIT_WIDTH 32
#include <pcre2.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/regexp.h"
#include "arklib/strings.h"
#include "runtime/strings_internal.h"

using ak_strings::cell_items;

namespace {

typedef std::vector<PCRE2_UCHAR32> units_t;

units_t units_of(const Mm& m) {
    units_t u;
    for (double c : ak_strings::codes_of(m)) u.push_back(c > 0 && c < 4294967296.0 ? static_cast<PCRE2_UCHAR32>(c) : 0);
    return u;
}

Mm string_of(const units_t& u, std::size_t from, std::size_t to) {
    std::vector<double> codes(u.begin() + from, u.begin() + to);
    Mm s = ak_strings::string_row(codes);
    if (codes.empty()) s = Mm(0, 0, 0, 1, 0, ak_double), s.flags.str = 1;
    return s;
}

// The outputs of regexp in their default order.
enum output_t { out_start, out_end, out_extents, out_match, out_tokens, out_names, out_split, n_outputs };
const char* const output_words[n_outputs] = {"start", "end", "tokenextents", "match", "tokens", "names", "split"};

struct options_t {
    uint32_t flags = PCRE2_DOTALL;
    bool once = false;
    bool empty_matches = false;
    std::vector<int> order;  // outputs picked by name, in the order given
};

bool read_options(const char* name, int n, const Mm* in, options_t& o) {
    for (int k = 0; k < n; ++k) {
        std::string w = ak_strings::text_of(in[k]);
        std::transform(w.begin(), w.end(), w.begin(), [](unsigned char c) { return std::tolower(c); });
        const int picked = static_cast<int>(std::find(output_words, output_words + n_outputs, w) - output_words);
        if (!in[k].flags.str) w = "(not a string)";
        if (picked < n_outputs && in[k].flags.str) {
            o.order.push_back(picked);
        } else if (w == "once") {
            o.once = true;
        } else if (w == "ignorecase") {
            o.flags |= PCRE2_CASELESS;
        } else if (w == "matchcase") {
            o.flags &= ~PCRE2_CASELESS;
        } else if (w == "dotall") {
            o.flags |= PCRE2_DOTALL;
        } else if (w == "dotexceptnewline") {
            o.flags &= ~PCRE2_DOTALL;
        } else if (w == "lineanchors") {
            o.flags |= PCRE2_MULTILINE;
        } else if (w == "stringanchors") {
            o.flags &= ~PCRE2_MULTILINE;
        } else if (w == "freespacing") {
            o.flags |= PCRE2_EXTENDED;
        } else if (w == "literalspacing") {
            o.flags &= ~PCRE2_EXTENDED;
        } else if (w == "emptymatch") {
            o.empty_matches = true;
        } else if (w == "noemptymatch") {
            o.empty_matches = false;
        } else {
            error("%s: unknown option '%s'", name, w.c_str());
            return false;
        }
    }
    return true;
}

struct code_deleter {
    void operator()(pcre2_code* c) const { pcre2_code_free(c); }
};
struct data_deleter {
    void operator()(pcre2_match_data* d) const { pcre2_match_data_free(d); }
};
typedef std::unique_ptr<pcre2_code, code_deleter> code_ptr;

code_ptr compile(const char* name, const Mm& pattern, uint32_t flags) {
    if (!ak_strings::is_string_row(pattern)) {
        error("%s: the pattern must be a string", name);
        return nullptr;
    }
    units_t p = units_of(pattern);
    int code = 0;
    PCRE2_SIZE at = 0;
    pcre2_code* c = pcre2_compile(p.data(), p.size(), flags, &code, &at, nullptr);
    if (!c) {
        PCRE2_UCHAR32 text[256];
        pcre2_get_error_message(code, text, 256);
        std::string message;
        for (int k = 0; text[k] && k < 255; ++k) message += static_cast<char>(text[k]);
        error("%s: %s at position %d of the pattern", name, message.c_str(), static_cast<int>(at) + 1);
    }
    return code_ptr(c);
}

// One match: the extents of the whole match and of each group, half-open, PCRE2_UNSET when a group
// took no part.
struct match_t {
    std::vector<std::pair<PCRE2_SIZE, PCRE2_SIZE>> groups;
};

// Every match of code in u from the start, or the first only. Empty matches are kept only when
// asked for; after one, the next try must not be empty at the same place.
bool all_matches(const char* name, pcre2_code* code, const units_t& u, bool once, bool empty, std::vector<match_t>& found) {
    std::unique_ptr<pcre2_match_data, data_deleter> data(pcre2_match_data_create_from_pattern(code, nullptr));
    PCRE2_SIZE at = 0;
    uint32_t extra = 0;
    while (at <= u.size()) {
        int rc = pcre2_match(code, u.data(), u.size(), at, extra | (empty ? 0 : PCRE2_NOTEMPTY), data.get(), nullptr);
        if (rc == PCRE2_ERROR_NOMATCH) {
            if (!extra) break;
            extra = 0;  // nothing non-empty here: step over one character
            ++at;
            continue;
        }
        if (rc < 0) {
            PCRE2_UCHAR32 text[256];
            pcre2_get_error_message(rc, text, 256);
            std::string message;
            for (int k = 0; text[k] && k < 255; ++k) message += static_cast<char>(text[k]);
            error("%s: %s", name, message.c_str());
            return false;
        }
        PCRE2_SIZE* v = pcre2_get_ovector_pointer(data.get());
        uint32_t groups = pcre2_get_ovector_count(data.get());
        match_t m;
        for (uint32_t g = 0; g < groups; ++g)
            m.groups.emplace_back(g < static_cast<uint32_t>(rc) ? v[2 * g] : PCRE2_UNSET, g < static_cast<uint32_t>(rc) ? v[2 * g + 1] : PCRE2_UNSET);
        found.push_back(m);
        if (once) break;
        at = v[1];
        extra = v[0] == v[1] ? PCRE2_NOTEMPTY_ATSTART | PCRE2_ANCHORED : 0;
    }
    return true;
}

Mm cell_row(const std::vector<Mm>& items) {
    Mm c(0, 0, 0, 1, static_cast<int>(items.size()), ak_mm);
    for (std::size_t k = 0; k < items.size(); ++k) static_cast<Mm*>(c.pr)[k] = items[k];
    return c;
}

Mm number_row(const std::vector<double>& v) {
    Mm r(0, 0, 0, 1, static_cast<int>(v.size()), ak_double);
    std::copy(v.begin(), v.end(), r.addr());
    return r;
}

// The captured groups of a match (the whole match when the pattern has none).
std::vector<std::pair<PCRE2_SIZE, PCRE2_SIZE>> tokens_of(const match_t& m) {
    if (m.groups.size() == 1) return m.groups;
    return std::vector<std::pair<PCRE2_SIZE, PCRE2_SIZE>>(m.groups.begin() + 1, m.groups.end());
}

// The seven outputs of one subject.
void outputs_of(pcre2_code* code, const units_t& u, const std::vector<match_t>& found, bool once, Mm* out) {
    std::vector<double> starts, ends;
    std::vector<Mm> extents, matches, tokens, split;
    PCRE2_SIZE last = 0;
    for (const match_t& m : found) {
        starts.push_back(m.groups[0].first + 1.0);
        ends.push_back(static_cast<double>(m.groups[0].second));
        matches.push_back(string_of(u, m.groups[0].first, m.groups[0].second));
        auto t = tokens_of(m);
        Mm ext(0, 0, 0, static_cast<int>(t.size()), 2, ak_double);
        std::vector<Mm> texts;
        for (std::size_t k = 0; k < t.size(); ++k) {
            bool set = t[k].first != PCRE2_UNSET;
            ext.addr()[k] = set ? t[k].first + 1.0 : 0.0;
            ext.addr()[t.size() + k] = set ? static_cast<double>(t[k].second) : -1.0;
            texts.push_back(set ? string_of(u, t[k].first, t[k].second) : string_of(u, 0, 0));
        }
        extents.push_back(ext);
        tokens.push_back(cell_row(texts));
        split.push_back(string_of(u, last, m.groups[0].first));
        last = m.groups[0].second;
    }
    split.push_back(string_of(u, last, u.size()));

    // Named groups: a structure with one field per name, an array of one element per match.
    uint32_t count = 0, entry = 0;
    PCRE2_SPTR32 table = nullptr;
    pcre2_pattern_info(code, PCRE2_INFO_NAMECOUNT, &count);
    pcre2_pattern_info(code, PCRE2_INFO_NAMEENTRYSIZE, &entry);
    pcre2_pattern_info(code, PCRE2_INFO_NAMETABLE, &table);
    std::vector<Mm> list;
    for (uint32_t n = 0; n < count; ++n) {
        PCRE2_SPTR32 row = table + n * entry;
        std::string field;
        for (PCRE2_SPTR32 c = row + 1; *c; ++c) field += static_cast<char>(*c);
        std::vector<Mm> values;
        for (const match_t& m : found) {
            auto g = m.groups[row[0]];
            values.push_back(g.first != PCRE2_UNSET ? string_of(u, g.first, g.second) : string_of(u, 0, 0));
        }
        list.push_back(TM(field.c_str()));
        list.push_back(once ? (values.empty() ? string_of(u, 0, 0) : values[0]) : cell_row(values));
    }
    out[out_names] = mstruct(cell_row(list));

    if (once) {
        bool hit = !found.empty();
        Mm none(0, 0, 0, 0, 0, ak_double);
        out[out_start] = hit ? Mm(starts[0]) : none;
        out[out_end] = hit ? Mm(ends[0]) : none;
        out[out_extents] = hit ? extents[0] : none;
        Mm no_text = none;
        no_text.flags.str = 1;
        out[out_match] = hit ? matches[0] : no_text;
        out[out_tokens] = hit ? tokens[0] : Mm(0, 0, 0, 1, 0, ak_mm);
    } else {
        out[out_start] = number_row(starts);
        out[out_end] = number_row(ends);
        out[out_extents] = cell_row(extents);
        out[out_match] = cell_row(matches);
        out[out_tokens] = cell_row(tokens);
    }
    out[out_split] = cell_row(split);
}

void run_regexp(const char* name, bool fold, int nin, const Mm* in, int nout, Mm* out) {
    for (int k = 0; k < nout; ++k) out[k] = x_M;
    if (nin < 2) {
        error_input(name, nin);
        return;
    }
    options_t o;
    if (fold) o.flags |= PCRE2_CASELESS;
    if (!read_options(name, nin - 2, in + 2, o)) return;
    code_ptr code = compile(name, in[1], o.flags);
    if (!code) return;
    const Mm& s = in[0];
    if (!ak_strings::is_text(s)) {
        error("%s: the subject must be a string or a cell array of strings", name);
        return;
    }
    // Outputs asked for by name first, then the others in their default order.
    std::vector<int> order = o.order;
    for (int k = 0; k < n_outputs; ++k)
        if (std::find(order.begin(), order.end(), k) == order.end()) order.push_back(k);
    Mm all[n_outputs];
    if (!iscell(s)) {
        std::vector<match_t> found;
        units_t u = units_of(s);
        if (!all_matches(name, code.get(), u, o.once, o.empty_matches, found)) return;
        outputs_of(code.get(), u, found, o.once, all);
    } else {
        for (Mm& a : all) a = Mm(0, 0, 0, s.ndims, s.dims, ak_mm);
        for (int e = 0; e < s.nnz; ++e) {
            std::vector<match_t> found;
            units_t u = units_of(cell_items(s)[e]);
            if (!all_matches(name, code.get(), u, o.once, o.empty_matches, found)) return;
            Mm one[n_outputs];
            outputs_of(code.get(), u, found, o.once, one);
            for (int k = 0; k < n_outputs; ++k) static_cast<Mm*>(all[k].pr)[e] = one[k];
        }
    }
    for (int k = 0; k < nout && k < n_outputs; ++k) out[k] = all[order[k]];
}

// ---- regexprep ---------------------------------------------------------------------------------------

// The replacement for one match: $0 to $99 (or ${n}) insert groups, $<name> a named group; the
// escapes \n, \t, \r, \\, \$ their characters.
units_t expand(pcre2_code* code, const units_t& rep, const units_t& u, const match_t& m) {
    units_t out;
    auto group = [&](std::size_t g) {
        if (g < m.groups.size() && m.groups[g].first != PCRE2_UNSET)
            out.insert(out.end(), u.begin() + m.groups[g].first, u.begin() + m.groups[g].second);
    };
    for (std::size_t k = 0; k < rep.size(); ++k) {
        PCRE2_UCHAR32 c = rep[k];
        if (c == '\\' && k + 1 < rep.size()) {
            PCRE2_UCHAR32 n = rep[++k];
            out.push_back(n == 'n' ? '\n' : n == 't' ? '\t' : n == 'r' ? '\r' : n);
        } else if (c == '$' && k + 1 < rep.size() && rep[k + 1] < 128 && std::isdigit(static_cast<int>(rep[k + 1]))) {
            std::size_t g = rep[++k] - '0';
            if (k + 1 < rep.size() && rep[k + 1] < 128 && std::isdigit(static_cast<int>(rep[k + 1]))) g = g * 10 + (rep[++k] - '0');
            group(g);
        } else if (c == '$' && k + 1 < rep.size() && (rep[k + 1] == '{' || rep[k + 1] == '<')) {
            PCRE2_UCHAR32 close = rep[k + 1] == '{' ? '}' : '>';
            std::size_t end = k + 2;
            while (end < rep.size() && rep[end] != close) ++end;
            if (end == rep.size()) {
                out.push_back(c);
                continue;
            }
            units_t key(rep.begin() + k + 2, rep.begin() + end);
            key.push_back(0);
            bool digits = key.size() > 1 && std::all_of(key.begin(), key.end() - 1, [](PCRE2_UCHAR32 d) { return d < 128 && std::isdigit(static_cast<int>(d)); });
            int g = 0;
            if (digits)
                for (std::size_t i = 0; i + 1 < key.size(); ++i) g = g * 10 + static_cast<int>(key[i] - '0');
            else
                g = pcre2_substring_number_from_name(code, key.data());
            if (g >= 0) group(static_cast<std::size_t>(g));
            k = end;
        } else {
            out.push_back(c);
        }
    }
    return out;
}

Mm replace_one(const char* name, pcre2_code* code, const Mm& s, const Mm& rep, bool once) {
    units_t u = units_of(s), r = units_of(rep);
    std::vector<match_t> found;
    if (!all_matches(name, code, u, once, true, found)) return x_M;
    if (found.empty()) return s;
    units_t out;
    PCRE2_SIZE last = 0;
    for (const match_t& m : found) {
        out.insert(out.end(), u.begin() + last, u.begin() + m.groups[0].first);
        units_t piece = expand(code, r, u, m);
        out.insert(out.end(), piece.begin(), piece.end());
        last = m.groups[0].second;
    }
    out.insert(out.end(), u.begin() + last, u.end());
    return string_of(out, 0, out.size());
}

Mm run_regexprep(int nin, const Mm* in) {
    const char* name = "regexprep";
    options_t o;
    if (!read_options(name, nin - 3, in + 3, o)) return x_M;
    if (!o.order.empty()) {
        error("regexprep: unknown option '%s'", output_words[o.order[0]]);
        return x_M;
    }
    const Mm &s = in[0], &pat = in[1], &rep = in[2];
    if (!ak_strings::is_text(s) || !ak_strings::is_text(pat) || !ak_strings::is_text(rep)) {
        error("regexprep: inputs must be strings or cell arrays of strings");
        return x_M;
    }
    std::vector<Mm> patterns, replacements;
    for (int k = 0; k < (iscell(pat) ? pat.nnz : 1); ++k) patterns.push_back(iscell(pat) ? cell_items(pat)[k] : pat);
    for (int k = 0; k < (iscell(rep) ? rep.nnz : 1); ++k) replacements.push_back(iscell(rep) ? cell_items(rep)[k] : rep);
    if (replacements.size() != 1 && replacements.size() != patterns.size()) {
        error("regexprep: there must be one replacement, or one for each pattern");
        return x_M;
    }
    std::vector<code_ptr> codes;
    for (const Mm& p : patterns) {
        codes.push_back(compile(name, p, o.flags));
        if (!codes.back()) return x_M;
    }
    auto apply = [&](Mm text) {
        for (std::size_t k = 0; k < codes.size(); ++k)
            text = replace_one(name, codes[k].get(), text, replacements[replacements.size() == 1 ? 0 : k], o.once);
        return text;
    };
    if (!iscell(s)) return apply(s);
    Mm r(0, 0, 0, s.ndims, s.dims, ak_mm);
    for (int e = 0; e < s.nnz; ++e) static_cast<Mm*>(r.pr)[e] = apply(cell_items(s)[e]);
    return r;
}

void regexp_any(int nin, const Mm* in, int nout, Mm* out) { run_regexp("regexp", false, nin, in, nout, out); }
void regexpi_any(int nin, const Mm* in, int nout, Mm* out) { run_regexp("regexpi", true, nin, in, nout, out); }
void regexprep_any(int nin, const Mm* in, int, Mm* out) {
    if (nin < 3) {
        error_input("regexprep", nin);
        out[0] = x_M;
        return;
    }
    out[0] = run_regexprep(nin, in);
}

}  // namespace

// The overloads gather their arguments and outputs into arrays.
#define AK_RX_RUN(fn, nin, nout)                             \
    Mm result[7];                                            \
    fn##_any(nin, args, nout, result);                       \
    for (int k = 1; k < nout; ++k) *outs[k - 1] = result[k]; \
    return result[0];

#define AK_RX_FORMS(fn)                                                                                       \
    Mm fn(const Mm& s, const Mm& p) {                                                                         \
        const Mm args[] = {s, p};                                                                             \
        Mm* outs[] = {nullptr};                                                                               \
        AK_RX_RUN(fn, 2, 1)                                                                                   \
    }                                                                                                         \
    Mm fn(const Mm& s, const Mm& p, const Mm& o1) {                                                           \
        const Mm args[] = {s, p, o1};                                                                         \
        Mm* outs[] = {nullptr};                                                                               \
        AK_RX_RUN(fn, 3, 1)                                                                                   \
    }                                                                                                         \
    Mm fn(const Mm& s, const Mm& p, const Mm& o1, const Mm& o2) {                                             \
        const Mm args[] = {s, p, o1, o2};                                                                     \
        Mm* outs[] = {nullptr};                                                                               \
        AK_RX_RUN(fn, 4, 1)                                                                                   \
    }                                                                                                         \
    Mm fn(const Mm& s, const Mm& p, const Mm& o1, const Mm& o2, const Mm& o3) {                               \
        const Mm args[] = {s, p, o1, o2, o3};                                                                 \
        Mm* outs[] = {nullptr};                                                                               \
        AK_RX_RUN(fn, 5, 1)                                                                                   \
    }                                                                                                         \
    AK_RX_IO(fn, (const Mm& s, const Mm& p), (s, p), 2)                                                       \
    AK_RX_IO(fn, (const Mm& s, const Mm& p, const Mm& o1), (s, p, o1), 3)                                     \
    AK_RX_IO(fn, (const Mm& s, const Mm& p, const Mm& o1, const Mm& o2), (s, p, o1, o2), 4)                   \
    AK_RX_IO(fn, (const Mm& s, const Mm& p, const Mm& o1, const Mm& o2, const Mm& o3), (s, p, o1, o2, o3), 5)

#define AK_RX_UNPAREN(...) __VA_ARGS__
#define AK_RX_IO(fn, params, list, nin)                                                                     \
    Mm fn(AK_RX_UNPAREN params, i_o_t, Mm& a) {                                                             \
        const Mm args[] = {AK_RX_UNPAREN list};                                                             \
        Mm* outs[] = {&a};                                                                                  \
        AK_RX_RUN(fn, nin, 2)                                                                               \
    }                                                                                                       \
    Mm fn(AK_RX_UNPAREN params, i_o_t, Mm& a, Mm& b) {                                                      \
        const Mm args[] = {AK_RX_UNPAREN list};                                                             \
        Mm* outs[] = {&a, &b};                                                                              \
        AK_RX_RUN(fn, nin, 3)                                                                               \
    }                                                                                                       \
    Mm fn(AK_RX_UNPAREN params, i_o_t, Mm& a, Mm& b, Mm& c) {                                               \
        const Mm args[] = {AK_RX_UNPAREN list};                                                             \
        Mm* outs[] = {&a, &b, &c};                                                                          \
        AK_RX_RUN(fn, nin, 4)                                                                               \
    }                                                                                                       \
    Mm fn(AK_RX_UNPAREN params, i_o_t, Mm& a, Mm& b, Mm& c, Mm& d) {                                        \
        const Mm args[] = {AK_RX_UNPAREN list};                                                             \
        Mm* outs[] = {&a, &b, &c, &d};                                                                      \
        AK_RX_RUN(fn, nin, 5)                                                                               \
    }                                                                                                       \
    Mm fn(AK_RX_UNPAREN params, i_o_t, Mm& a, Mm& b, Mm& c, Mm& d, Mm& e) {                                 \
        const Mm args[] = {AK_RX_UNPAREN list};                                                             \
        Mm* outs[] = {&a, &b, &c, &d, &e};                                                                  \
        AK_RX_RUN(fn, nin, 6)                                                                               \
    }                                                                                                       \
    Mm fn(AK_RX_UNPAREN params, i_o_t, Mm& a, Mm& b, Mm& c, Mm& d, Mm& e, Mm& f) {                          \
        const Mm args[] = {AK_RX_UNPAREN list};                                                             \
        Mm* outs[] = {&a, &b, &c, &d, &e, &f};                                                              \
        AK_RX_RUN(fn, nin, 7)                                                                               \
    }

AK_RX_FORMS(regexp)
AK_RX_FORMS(regexpi)

Mm regexp(const Mm&) { return Mm(error_input("regexp", 1)); }
Mm regexpi(const Mm&) { return Mm(error_input("regexpi", 1)); }

Mm regexprep(const Mm& s, const Mm& p, const Mm& r) {
    const Mm args[] = {s, p, r};
    return run_regexprep(3, args);
}
Mm regexprep(const Mm& s, const Mm& p, const Mm& r, const Mm& o1) {
    const Mm args[] = {s, p, r, o1};
    return run_regexprep(4, args);
}
Mm regexprep(const Mm& s, const Mm& p, const Mm& r, const Mm& o1, const Mm& o2) {
    const Mm args[] = {s, p, r, o1, o2};
    return run_regexprep(5, args);
}
Mm regexprep(const Mm&) { return Mm(error_input("regexprep", 1)); }
Mm regexprep(const Mm&, const Mm&) { return Mm(error_input("regexprep", 2)); }

AK_BUILTIN("regexp", regexp_any);
AK_BUILTIN("regexpi", regexpi_any);
AK_BUILTIN("regexprep", regexprep_any);
