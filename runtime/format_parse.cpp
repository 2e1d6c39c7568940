// Escape processing and the format parser: a format is cut into pieces that end just after their
// conversion; the platform formatter then runs on one piece at a time.
#include <cctype>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "arklib/format.h"
#include "core/matrix_internal.h"
#include "runtime/format_internal.h"

using ak_internal::class_of;
using ak_internal::conversion_class;

namespace {

const char* const flag_chars = "*#0123456789+-.";
const char* const modifier_chars = "lhLHbtBT";
const char* const numeric_chars = "dDiIoOuUxXfFeEgG";
const char* const other_chars = "csnp";

bool in_set(const char* set, char c) { return c != '\0' && std::strchr(set, c) != nullptr; }

// Adds a piece; false when the record is full.
bool add_piece(format_pieces& r, const std::string& text, int kind, int modifier) {
    if (r.last + 1 >= format_pieces::max_pieces) {
        error("format: more than 32 conversions in one format");
        return false;
    }
    char* copy = static_cast<char*>(std::malloc(text.size() + 1));
    if (!copy) {
        error("Out of memory!");
        return false;
    }
    std::memcpy(copy, text.c_str(), text.size() + 1);
    ++r.last;
    r.piece[r.last] = copy;
    r.kind[r.last] = kind;
    r.modifier[r.last] = modifier;
    return true;
}

// One directive of a piece as the platform would read it.
struct directive {
    size_t begin = 0, end = 0;
    bool pair = false;  // "%%"
    bool bad = false;   // positional, unterminated or of an unknown conversion
    bool star = false;  // scanf assignment suppression
    std::string flags, width, precision, length;
    char conv = 0;
    size_t conv_pos = 0;
};

size_t read_digits(const std::string& s, size_t j, std::string& out) {
    while (j < s.size() && std::isdigit(static_cast<unsigned char>(s[j]))) out += s[j++];
    return j;
}

directive read_directive(const std::string& s, size_t i, bool for_write) {
    directive d;
    d.begin = i;
    size_t j = i + 1;
    if (j < s.size() && s[j] == '%') {
        d.pair = true;
        d.end = j + 1;
        return d;
    }
    size_t k = j;
    while (k < s.size() && std::isdigit(static_cast<unsigned char>(s[k]))) ++k;
    if (k > j && k < s.size() && s[k] == '$') d.bad = true;
    if (for_write) {
        while (j < s.size() && std::strchr("-+ #0'I", s[j]) && s[j]) d.flags += s[j++];
        if (j < s.size() && s[j] == '*') {
            d.star = true;
            ++j;
        } else {
            j = read_digits(s, j, d.width);
        }
        if (j < s.size() && s[j] == '.') {
            d.precision = ".";
            ++j;
            if (j < s.size() && s[j] == '*') {
                d.star = true;
                ++j;
            } else {
                j = read_digits(s, j, d.precision);
            }
        }
    } else {
        if (j < s.size() && s[j] == '*') {
            d.star = true;
            ++j;
        }
        j = read_digits(s, j, d.width);
        if (j < s.size() && s[j] == 'm') {
            d.bad = true;
            ++j;
        }
    }
    while (j < s.size() && std::strchr("hlLqjzZt", s[j]) && s[j]) d.length += s[j++];
    if (j >= s.size()) {
        d.bad = true;
        d.end = s.size();
        return d;
    }
    d.conv_pos = j;
    d.conv = s[j++];
    if (d.conv == '[') {
        if (j < s.size() && s[j] == '^') ++j;
        if (j < s.size() && s[j] == ']') ++j;
        size_t close = s.find(']', j);
        if (close == std::string::npos) {
            d.bad = true;
            j = s.size();
        } else {
            j = close + 1;
        }
    }
    d.end = j;
    return d;
}

// The conversion the platform should see for a piece of this kind, or 0 when conv does not fit.
char fitting_conversion(int kind, char conv, bool for_write) {
    conversion_class c = class_of(kind);
    if (c == conversion_class::integer) {
        if (conv && std::strchr("DIOU", conv)) return static_cast<char>(std::tolower(conv));
        return (conv && std::strchr("diouxX", conv)) ? conv : 0;
    }
    if (c == conversion_class::real) return (conv && std::strchr("eEfFgG", conv)) ? conv : 0;
    if (kind == 'c' || kind == 'p') return conv == kind ? conv : 0;
    if (kind == 's') return (conv == 's' || (!for_write && conv == '[')) ? conv : 0;
    return 0;
}

// A decimal count kept within limit.
std::string bounded(const std::string& digits, long limit) {
    if (digits.empty()) return digits;
    long v = digits.size() > 9 ? limit : std::atol(digits.c_str());
    return std::to_string(v < limit ? v : limit);
}

std::string literal(const std::string& s, size_t begin, size_t end) {
    std::string out;
    for (size_t k = begin; k < end; ++k) {
        if (s[k] == '%') out += '%';
        out += s[k];
    }
    return out;
}

const long max_field = 1000000;

}  // namespace

namespace ak_internal {

std::string safe_piece(const char* piece, int kind, bool for_write, int max_width) {
    std::string s = piece ? piece : "";
    std::string out;
    size_t i = 0;
    while (i < s.size()) {
        if (s[i] != '%') {
            out += s[i++];
            continue;
        }
        directive d = read_directive(s, i, for_write);
        i = d.end;
        if (d.pair) {
            out += "%%";
            continue;
        }
        char conv = d.bad ? 0 : fitting_conversion(kind, d.conv, for_write);
        if (!conv || d.end != s.size()) {
            out += literal(s, d.begin, d.end);
            continue;
        }
        out += '%';
        if (for_write) {
            out += d.flags + bounded(d.width, max_field);
            if (!d.precision.empty()) out += "." + bounded(d.precision.substr(1), max_field);
        } else {
            if (d.star) out += '*';
            std::string w = d.width;
            if (conv == 's' || conv == '[' || conv == 'c') {
                if (w.empty() && conv != 'c') w = std::to_string(max_width);
                w = bounded(w, max_width);
            }
            out += w;
        }
        conversion_class c = class_of(kind);
        if (c == conversion_class::integer || (!for_write && c == conversion_class::real)) out += 'l';
        out += conv == '[' ? s.substr(d.conv_pos, d.end - d.conv_pos) : std::string(1, conv);
    }
    return out;
}

std::string matrix_text(const Mm& m) {
    std::string out;
    if (m.flags.type != ak_double && m.flags.type != ak_uchar) return out;
    if (!m.pr || m.flags.sparse) return out;
    int n = m.size();
    out.reserve(n > 0 ? n : 0);
    for (int k = 0; k < n; ++k) {
        unsigned char c = element_byte(m, k);
        if (!c) break;
        out += static_cast<char>(c);
    }
    return out;
}

long saturate_long(double v) {
    if (v != v) return 0;
    if (v >= 9.2233720368547758e18) return LONG_MAX;
    if (v <= -9.2233720368547758e18) return LONG_MIN;
    return static_cast<long>(v);
}

int saturate_int(double v) {
    if (v != v) return 0;
    if (v >= INT_MAX) return INT_MAX;
    if (v <= INT_MIN) return INT_MIN;
    return static_cast<int>(v);
}

}  // namespace ak_internal

std::string Mstr_row(const Mm& m) {
    if (m.flags.type != ak_double && m.flags.type != ak_uchar) return std::string();
    if (!m.pr || m.flags.sparse || m.ndims < 2) return std::string();
    int rows = m.dims[0], cols = m.size() / (rows > 0 ? rows : 1);
    if (rows <= 0) return std::string();
    std::string out;
    for (int c = 0; c < cols; ++c) {
        unsigned char ch = ak_internal::element_byte(m, c * rows);
        if (!ch) break;
        out += static_cast<char>(ch);
    }
    return out;
}

std::string format_escape(const char* text) {
    std::string out;
    if (!text) return out;
    for (const char* p = text; *p; ++p) {
        if (*p != '\\') {
            out += *p;
            continue;
        }
        if (!p[1]) break;
        ++p;
        out += *p == 'n' ? '\n' : *p == 'r' ? '\r' : *p == 't' ? '\t' : *p;
    }
    return out;
}

void format_parse(format_pieces& r, const char* text) {
    r.last = -1;
    r.cursor = 0;
    r.all_text = 1;
    r.after_literal = 0;
    std::string s = text ? text : "";
    size_t start = 0, i = 0;
    int modifier = 0;
    for (;;) {
        while (i < s.size() && s[i] != '%') ++i;
        if (i >= s.size()) {
            if (start < s.size() || r.last < 0) add_piece(r, s.substr(start), '=', 0);
            return;
        }
        size_t j = i + 1;
        while (j < s.size() && in_set(flag_chars, s[j])) ++j;
        char c = j < s.size() ? s[j] : '\0';
        if (in_set(modifier_chars, c)) {
            modifier = c;
            s.erase(j, 1);
            c = j < s.size() ? s[j] : '\0';
        }
        bool numeric = in_set(numeric_chars, c);
        if (numeric) s.insert(j++, 1, 'l');
        if (numeric || in_set(other_chars, c)) {
            if (c != 'c' && c != 's') r.all_text = 0;
            if (!add_piece(r, s.substr(start, j + 1 - start), c, modifier)) return;
            modifier = 0;
            start = i = j + 1;
            continue;
        }
        if (c == '[') {
            size_t close = s.find(']', j + 1);
            size_t end = close == std::string::npos ? s.size() : close + 1;
            if (!add_piece(r, s.substr(start, end - start), 's', modifier)) return;
            modifier = 0;
            start = i = end;
            continue;
        }
        i = i + 1;
    }
}

void format_release(format_pieces& r) {
    for (int k = 0; k <= r.last && k < format_pieces::max_pieces; ++k) {
        std::free(r.piece[k]);
        r.piece[k] = nullptr;
    }
    r.last = -1;
    r.cursor = 0;
}
