// Numbers to text and back: the base conversions, hex2num, str2double and str2num.
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/sparse.h"
#include "arklib/strings.h"
#include "runtime/strings_internal.h"

using ak_strings::codes_of;
using ak_strings::text_of;

namespace {

const char digit_symbols[] = "0123456789ABCDEF";

// The rows of a character matrix, or of the strings of a cell, as texts.
std::vector<std::string> text_rows(const Mm& s) {
    Mm m = iscell(s) ? mchar(s) : s.flags.sparse ? full(s) : s;
    std::vector<std::string> rows;
    int n = m.dims[0], width = n ? m.nnz / n : 0;
    std::vector<double> v = codes_of(m);
    for (int i = 0; i < n && m.nnz; ++i) {
        std::string row;
        for (int c = 0; c < width; ++c) row += static_cast<char>(static_cast<unsigned char>(v[c * n + i]));
        rows.push_back(row);
    }
    return rows;
}

// A character matrix of the rows, padded on the left with `pad` to the longest.
Mm right_aligned_rows(const std::vector<std::string>& rows, char pad) {
    std::size_t width = 0;
    for (const auto& r : rows) width = std::max(width, r.size());
    int n = static_cast<int>(rows.size());
    Mm m(0, 0, 0, n, n ? static_cast<int>(width) : 0, ak_double);
    for (int i = 0; i < n; ++i)
        for (std::size_t c = 0; c < width; ++c) {
            std::size_t lead = width - rows[i].size();
            m.addr()[c * n + i] = static_cast<unsigned char>(c < lead ? pad : rows[i][c - lead]);
        }
    m.flags.str = 1;
    return m;
}

// The digit symbols of a base argument: a count 2 to 16 picks from 0-9A-F, a string gives its own.
bool base_symbols(const char* name, const Mm& base, std::string& symbols) {
    if (base.flags.str && base.flags.type != ak_mm) {
        symbols = text_of(base);
        bool unique = symbols.size() >= 2;
        for (std::size_t k = 0; unique && k < symbols.size(); ++k)
            unique = symbols.find(symbols[k]) == k && !std::isspace(static_cast<unsigned char>(symbols[k]));
        if (!unique) error("%s: symbols of the base must be distinct and not blank", name);
        return unique;
    }
    std::vector<double> b = codes_of(base);
    if (b.size() != 1 || b[0] != std::floor(b[0]) || b[0] < 2 || b[0] > 16) {
        error("%s: base must be an integer between 2 and 16", name);
        return false;
    }
    symbols.assign(digit_symbols, static_cast<std::size_t>(b[0]));
    return true;
}

Mm to_base(const char* name, const Mm& d, const Mm& base, const Mm* len) {
    d.warn_uninit();
    if (error_numeric(d, name)) return x_M;
    std::string symbols;
    if (!base_symbols(name, base, symbols)) return x_M;
    std::vector<double> v = codes_of(d);
    std::vector<std::string> rows;
    for (double x : v) {
        if (!(x >= 0.0) || x != std::floor(x) || d.pi) {
            error("%s: input must be real non-negative integers", name);
            return x_M;
        }
        if (x >= 18446744073709551616.0) {
            error("%s: input must be below 2^64", name);
            return x_M;
        }
        std::uint64_t u = static_cast<std::uint64_t>(x), b = symbols.size();
        std::string digits;
        do {
            digits.insert(digits.begin(), symbols[u % b]);
            u /= b;
        } while (u);
        rows.push_back(digits);
    }
    if (len && !rows.empty()) {
        double width = scalar(*len);
        if (width > 1024) width = 1024;
        if (width > static_cast<double>(rows[0].size())) rows[0].insert(0, static_cast<std::size_t>(width) - rows[0].size(), symbols[0]);
    }
    if (rows.empty()) {
        Mm e(0, 0, 0, 0, 0, ak_double);
        e.flags.str = 1;
        return e;
    }
    return right_aligned_rows(rows, symbols[0]);
}

Mm from_base(const char* name, const Mm& s, const Mm& base) {
    s.warn_uninit();
    if (!ak_strings::is_text(s)) {
        error("%s: input must be a string or a cell array of strings", name);
        return x_M;
    }
    std::string symbols;
    if (!base_symbols(name, base, symbols)) return x_M;
    bool fold = base.flags.str == 0;  // 0-9A-F may be written in either case
    std::vector<std::string> rows = text_rows(s);
    if (rows.empty()) return Mm(0, 0, 0, 0, 0, ak_double);
    Mm r(0, 0, 0, static_cast<int>(rows.size()), 1, ak_double);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        double v = 0.0;
        for (char c : rows[i]) {
            if (c == ' ' || c == '\0') continue;
            char key = fold ? static_cast<char>(std::toupper(static_cast<unsigned char>(c))) : c;
            std::size_t digit = symbols.find(key);
            if (digit == std::string::npos) {
                v = NAN;
                break;
            }
            v = v * static_cast<double>(symbols.size()) + static_cast<double>(digit);
        }
        r.addr()[i] = v;
    }
    return r;
}

}  // namespace

Mm dec2base(const Mm& d, const Mm& base) { return to_base("dec2base", d, base, nullptr); }
Mm dec2base(const Mm& d, const Mm& base, const Mm& len) { return to_base("dec2base", d, base, &len); }
Mm dec2bin(const Mm& d) { return to_base("dec2bin", d, Mm(2.0), nullptr); }
Mm dec2bin(const Mm& d, const Mm& len) { return to_base("dec2bin", d, Mm(2.0), &len); }
Mm dec2hex(const Mm& d) { return to_base("dec2hex", d, Mm(16.0), nullptr); }
Mm dec2hex(const Mm& d, const Mm& len) { return to_base("dec2hex", d, Mm(16.0), &len); }
Mm dec2base(const Mm&) { return Mm(error_input("dec2base", 1)); }
Mm base2dec(const Mm& s, const Mm& base) { return from_base("base2dec", s, base); }
Mm bin2dec(const Mm& s) { return from_base("bin2dec", s, Mm(2.0)); }
Mm hex2dec(const Mm& s) { return from_base("hex2dec", s, Mm(16.0)); }
Mm base2dec(const Mm&) { return Mm(error_input("base2dec", 1)); }

Mm hex2num(const Mm& s) {
    s.warn_uninit();
    if (!ak_strings::is_text(s)) {
        error("hex2num: input must be a string or a cell array of strings");
        return x_M;
    }
    std::vector<std::string> rows = text_rows(s);
    if (rows.empty()) return Mm(0, 0, 0, 0, 0, ak_double);
    Mm r(0, 0, 0, static_cast<int>(rows.size()), 1, ak_double);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        std::string row = rows[i];
        while (!row.empty() && row.back() == ' ') row.pop_back();
        if (row.size() > 16) {
            error("hex2num: input must be at most 16 hexadecimal digits");
            return x_M;
        }
        std::uint64_t bits = 0;
        for (std::size_t k = 0; k < 16; ++k) {
            char c = k < row.size() ? static_cast<char>(std::toupper(static_cast<unsigned char>(row[k]))) : '0';
            const char* at = std::strchr(digit_symbols, c);
            if (!at || c == '\0') {
                error("hex2num: input must contain only hexadecimal digits");
                return x_M;
            }
            bits = bits << 4 | static_cast<std::uint64_t>(at - digit_symbols);
        }
        std::memcpy(&r.addr()[i], &bits, sizeof bits);
    }
    return r;
}

// ---- reading numbers from text --------------------------------------------------------------------

namespace {

struct scanner {
    const char* p;
    bool grouping;  // digits may be grouped by commas: 1,000

    void blanks() {
        while (*p == ' ' || *p == '\t') ++p;
    }
    bool word(const char* w) {
        std::size_t n = std::strlen(w);
        if (strncasecmp(p, w, n) != 0 || std::isalnum(static_cast<unsigned char>(p[n])) || p[n] == '_') return false;
        p += n;
        return true;
    }
    // An unsigned real: digits with an optional point and exponent, Inf or NaN.
    bool unsigned_real(double& v) {
        if (word("inf") || word("infinity")) return v = INFINITY, true;
        if (word("nan")) return v = NAN, true;
        std::string digits;
        const char* q = p;
        bool any = false;
        while (std::isdigit(static_cast<unsigned char>(*q)) || (grouping && *q == ',' && any && std::isdigit(static_cast<unsigned char>(q[1])))) {
            if (*q != ',') digits += *q, any = true;
            ++q;
        }
        if (*q == '.') {
            digits += *q++;
            while (std::isdigit(static_cast<unsigned char>(*q))) digits += *q++, any = true;
        }
        if (!any) return false;
        if ((*q == 'e' || *q == 'E' || *q == 'd' || *q == 'D')) {
            const char* e = q + 1;
            std::string exponent = "e";
            if (*e == '+' || *e == '-') exponent += *e++;
            if (std::isdigit(static_cast<unsigned char>(*e))) {
                while (std::isdigit(static_cast<unsigned char>(*e))) exponent += *e++;
                digits += exponent;
                q = e;
            }
        }
        v = std::strtod(digits.c_str(), nullptr);
        p = q;
        return true;
    }
    bool imaginary_unit() {
        if ((*p == 'i' || *p == 'j') && !std::isalnum(static_cast<unsigned char>(p[1])) && p[1] != '_') return ++p, true;
        return false;
    }
    // A signed term: [+-] real [i|j], or [+-] i|j alone. Adds to re or im.
    bool term(double& re, double& im, bool need_sign) {
        const char* start = p;
        if (term_at(re, im, need_sign)) return true;
        p = start;
        return false;
    }
    bool term_at(double& re, double& im, bool need_sign) {
        double sign = 1.0;
        if (*p == '+' || *p == '-') {
            sign = *p == '-' ? -1.0 : 1.0;
            ++p;
        } else if (need_sign) {
            return false;
        }
        double v = 1.0;
        bool number = unsigned_real(v);
        if (imaginary_unit()) {
            im += sign * v;
            return true;
        }
        if (!number) return false;
        if (*p == '*') {  // 2*i
            const char* back = p++;
            if (imaginary_unit()) {
                im += sign * v;
                return true;
            }
            p = back;
        }
        re += sign * v;
        return true;
    }
};

// The whole text as one real or complex number, blanks allowed around the sign of the second part.
bool parse_one_number(const std::string& text, double& re, double& im) {
    scanner s{text.c_str(), true};
    re = im = 0.0;
    while (std::isspace(static_cast<unsigned char>(*s.p))) ++s.p;
    if (!s.term(re, im, false)) return false;
    s.blanks();
    if (*s.p == '+' || *s.p == '-') {
        std::string rest(1, *s.p++);
        s.blanks();
        rest += s.p;
        scanner t{rest.c_str(), true};
        if (!t.term(re, im, true)) return false;
        while (std::isspace(static_cast<unsigned char>(*t.p))) ++t.p;
        return *t.p == '\0';
    }
    while (std::isspace(static_cast<unsigned char>(*s.p))) ++s.p;
    return *s.p == '\0';
}

Mm double_of_text(const Mm& s) {
    if (!s.flags.str || s.flags.type == ak_mm) return Mm(NAN);
    std::vector<std::string> rows = text_rows(s);
    if (rows.empty()) return Mm(NAN);
    if (rows.size() != 1) {
        Mm r(0, 0, 0, static_cast<int>(rows.size()), 1, ak_double);
        for (std::size_t k = 0; k < rows.size(); ++k) r.addr()[k] = double_of_text(ak_strings::string_row(rows[k])).r();
        return r;
    }
    double re, im;
    if (!parse_one_number(rows[0], re, im)) return Mm(NAN);
    if (im == 0.0) return Mm(re);
    Mm r(1, 0, 0, 1, 1, ak_double);
    r.addr()[0] = re;
    r.addi()[0] = im;
    return r;
}

}  // namespace

Mm str2double(const Mm& s) {
    s.warn_uninit();
    if (!iscell(s)) return double_of_text(s);
    bool complex = false;
    std::vector<Mm> values;
    for (int k = 0; k < s.nnz; ++k) {
        const Mm& e = ak_strings::cell_items(s)[k];
        bool row = ak_strings::is_string_row(e);
        values.push_back(row ? double_of_text(e) : Mm(NAN));
        complex = complex || values.back().pi;
    }
    Mm r(complex ? 1 : 0, 0, 0, s.ndims, s.dims, ak_double);
    for (int k = 0; k < r.nnz; ++k) {
        r.addr()[k] = *values[k].addr();
        if (complex) r.addi()[k] = values[k].pi ? *values[k].addi() : 0.0;
    }
    return r;
}

// ---- str2num ---------------------------------------------------------------------------------------

namespace {

// One element of a numeric literal: a sum of signed terms written without blanks around the
// operators (1e3, -2.5, 3+4i, -inf), or with blanks on both sides of a binary + or -.
bool literal_element(scanner& s, double& re, double& im) {
    re = im = 0.0;
    if (!s.term(re, im, false)) {
        // the constants a literal may name
        double sign = *s.p == '-' ? -1.0 : 1.0;
        if (*s.p == '-' || *s.p == '+') ++s.p;
        if (s.word("pi"))
            re = sign * M_PI;
        else if (s.word("eps"))
            re = sign * 2.220446049250313e-16;
        else if (s.word("true"))
            re = sign;
        else if (!s.word("false"))
            return false;
    }
    for (;;) {
        if (*s.p == '+' || *s.p == '-') {
            if (!s.term(re, im, true)) return false;
            continue;
        }
        const char* back = s.p;
        s.blanks();
        bool binary = (*s.p == '+' || *s.p == '-') && (s.p[1] == ' ' || s.p[1] == '\t');
        if (binary) {
            std::string rest(1, *s.p++);
            s.blanks();
            const char* after = s.p;
            double r2 = 0.0, i2 = 0.0;
            scanner t{after, false};
            if (!t.term(r2, i2, false)) return false;
            re += rest[0] == '-' ? -r2 : r2;
            im += rest[0] == '-' ? -i2 : i2;
            s.p = t.p;
            continue;
        }
        s.p = back;
        return true;
    }
}

// The rows of the literal; false when the text is not a numeric literal.
bool parse_literal(const std::string& text, std::vector<std::vector<double>>& re,
                   std::vector<std::vector<double>>& im) {
    std::string t;
    for (char c : text)
        if (c != '[' && c != ']') t += c == '\n' || c == '\r' ? ';' : c;
    scanner s{t.c_str(), false};
    std::vector<double> row_re, row_im;
    auto end_row = [&]() {
        if (!row_re.empty()) re.push_back(row_re), im.push_back(row_im);
        row_re.clear();
        row_im.clear();
    };
    for (;;) {
        s.blanks();
        if (*s.p == '\0') break;
        if (*s.p == ';') {
            ++s.p;
            end_row();
            continue;
        }
        if (*s.p == ',') {
            if (row_re.empty()) return false;
            ++s.p;
            s.blanks();
        }
        double r, i;
        if (!literal_element(s, r, i)) return false;
        row_re.push_back(r);
        row_im.push_back(i);
        if (*s.p != '\0' && *s.p != ';' && *s.p != ',' && *s.p != ' ' && *s.p != '\t') return false;
    }
    end_row();
    for (const auto& row : re)
        if (row.size() != re[0].size()) return false;
    return true;
}

}  // namespace

Mm str2num(const Mm& s, i_o_t, Mm& ok) {
    s.warn_uninit();
    if (!s.flags.str || s.flags.type == ak_mm) {
        error("str2num: input is not a string");
        ok = Mm(0.0);
        return x_M;
    }
    std::string text;
    for (const std::string& row : text_rows(s)) text += row + "\n";
    std::vector<std::vector<double>> re, im;
    if (!parse_literal(text, re, im)) {
        ok = Mm(0.0);
        return Mm(0, 0, 0, 0, 0, ak_double);
    }
    ok = Mm(1.0);
    int rows = static_cast<int>(re.size()), cols = rows ? static_cast<int>(re[0].size()) : 0;
    bool complex = false;
    for (const auto& row : im)
        for (double v : row) complex = complex || v != 0.0;
    Mm r(complex ? 1 : 0, 0, 0, rows, cols, ak_double);
    for (int i = 0; i < rows; ++i)
        for (int c = 0; c < cols; ++c) {
            r.addr()[c * rows + i] = re[i][c];
            if (complex) r.addi()[c * rows + i] = im[i][c];
        }
    return r;
}

Mm str2num(const Mm& s) {
    Mm ok;
    return str2num(s, i_o, ok);
}

AK_BUILTIN("dec2base", AK_FN(dec2base, const Mm&, const Mm&), AK_FN(dec2base, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("dec2bin", AK_FN(dec2bin, const Mm&), AK_FN(dec2bin, const Mm&, const Mm&));
AK_BUILTIN("dec2hex", AK_FN(dec2hex, const Mm&), AK_FN(dec2hex, const Mm&, const Mm&));
AK_BUILTIN("base2dec", AK_FN(base2dec, const Mm&, const Mm&));
AK_BUILTIN("bin2dec", bin2dec);
AK_BUILTIN("hex2dec", hex2dec);
AK_BUILTIN("hex2num", hex2num);
AK_BUILTIN("str2double", str2double);
AK_BUILTIN("str2num", AK_FN(str2num, const Mm&), AK_FN(str2num, const Mm&, i_o_t, Mm&));
