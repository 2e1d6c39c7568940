// Number-to-text conversion: num2str, int2str, mat2str, the element text shared by them, and the
// rewriting of the platform's spellings of non-finite values.
#include <cmath>
#include <cstdio>
#include <cstring>
#include <vector>

#include "arklib/arith.h"
#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/display.h"
#include "arklib/sparse.h"
#include "arklib/strings.h"
#include "core/matrix_internal.h"
#include "runtime/format_internal.h"
#include "arklib/builtins.h"

namespace {

struct spelling {
    const char* search;
    const char* replacement;
};

const spelling minus_inf[] = {
    {"-1.#INF00e+000", "          -Inf"}, {"-1.#IO00e+000", "          -Inf"}, {"-1.#INF", "   -Inf"},
    {"-1.#IO", "   -Inf"}, {"-INF", "-Inf"}, {" ---", "-Inf"}, {"-inf", "-Inf"},
};
const spelling plus_inf[] = {
    {"1.#INF00e+000", "           Inf"}, {"1.#IO00e+000", "          Inf"}, {"1.#INF", "   Inf"},
    {"1.#IO", "   Inf"}, {"+INF", " Inf"}, {" ++", "Inf"}, {"inf", "Inf"},
};
const spelling not_a_number[] = {
    {"-1.#QNAN0e+000", "           NaN"}, {"1.#QNAN0e+000", "          NaN"}, {"-1.#QO0e+000", "         NaN"},
    {"1.#QO0e+000", "        NaN"}, {"-1.#QNAN", "     NaN"}, {"1.#QNAN", "    NaN"}, {"-1.#QO", "   NaN"},
    {"1.#QO", "  NaN"}, {"  ?", "NaN"}, {"-1.#IO", "   NaN"}, {"-1.#IND", "    NaN"}, {"1.#IND", "   NaN"},
    {"+NAN", " NaN"}, {"-NAN", " NaN"}, {"-nan", " NaN"}, {"nan", "NaN"},
};

template <size_t N>
void apply(const spelling (&table)[N], std::string& text) {
    for (const spelling& row : table) {
        if (std::strstr(row.replacement, row.search)) continue;
        size_t len = std::strlen(row.search), rlen = std::strlen(row.replacement);
        for (size_t at = text.find(row.search); at != std::string::npos; at = text.find(row.search, at + rlen))
            text.replace(at, len, row.replacement);
    }
}

template <typename T>
std::string print(const char* format, T value) {
    char small[128];
    int n = std::snprintf(small, sizeof small, format, value);
    if (n < 0) return std::string();
    if (n < static_cast<int>(sizeof small)) return std::string(small, n);
    std::string big(static_cast<size_t>(n) + 1, '\0');
    std::snprintf(&big[0], big.size(), format, value);
    big.resize(n);
    return big;
}

// A precision as the formats take it: truncated, and kept within what a double can show.
int precision_of(double prec) {
    int p = ak_internal::saturate_int(prec);
    return p < 0 ? 0 : p > 340 ? 340 : p;
}

double element(const Mm& x, const void* part, int k) {
    if (x.flags.type == ak_uchar) return static_cast<const unsigned char*>(part)[k];
    return static_cast<const double*>(part)[k];
}

// The longest text of the stored values of one part, leading blanks not counted.
int longest(const Mm& x, const void* part, int n, const char* format) {
    int m = 0;
    for (int k = 0; k < n; ++k) {
        double v = element(x, part, k);
        std::string t = print(format, v);
        fix_nonfinite_text(v, t);
        size_t lead = t.find_first_not_of(' ');
        int len = lead == std::string::npos ? 0 : static_cast<int>(t.size() - lead);
        if (len > m) m = len;
    }
    return m;
}

// A character matrix of the lines, padded with blanks to the longest.
Mm stack(const std::vector<std::string>& lines) {
    std::vector<Mm> rows;
    rows.reserve(lines.size());
    for (const std::string& l : lines) rows.push_back(TM(l.c_str()));
    std::vector<const Mm*> list(rows.size());
    for (size_t k = 0; k < rows.size(); ++k) list[k] = &rows[k];
    return strvcat(static_cast<int>(list.size()), list.data());
}

// The columns that are blank in every row, removed from the left of a character matrix.
Mm strip_leading_blank_columns(const Mm& s) {
    if (!s.flags.str || s.flags.type != ak_double || s.ndims != 2 || s.size() == 0) return s;
    int rows = s.rows(), cols = s.cols(), lead = 0;
    const double* d = s.addr();
    for (; lead < cols; ++lead) {
        bool blank = true;
        for (int r = 0; r < rows && blank; ++r) blank = d[lead * rows + r] == ' ';
        if (!blank) break;
    }
    if (lead == 0) return s;
    Mm out(0, 0, 0, rows, cols - lead, ak_double);
    std::memcpy(out.addr(), d + static_cast<size_t>(lead) * rows, sizeof(double) * rows * (cols - lead));
    out.flags.str = 1;
    return out;
}

Mm number_text(const Mm& x, double prec, int fixed_width) {
    if (x.size() == 0) return TM(x.flags.str ? "''" : "[]");
    if (x.flags.str) return x;
    int p = precision_of(prec);
    int complex = x.pi != nullptr;
    std::string g = "%." + std::to_string(p) + "g";
    int m = longest(x, x.pr, x.nnz, g.c_str());
    int mi = complex ? longest(x, x.pi, x.nnz, g.c_str()) : 0;
    std::string real_format = "%" + std::to_string(m + 2) + "." + std::to_string(p) + "g";
    std::string imag_format = "%" + std::to_string(mi) + "." + std::to_string(p) + "g";
    std::vector<std::string> lines;
    if (!x.flags.sparse) {
        int rows = x.rows(), cols = x.size() / (rows > 0 ? rows : 1);
        lines.resize(rows);
        for (int r = 0; r < rows; ++r) {
            for (int c = 0; c < cols; ++c) {
                int k = c * rows + r;
                std::string cell;
                value_text(cell, complex, real_format.c_str(), imag_format.c_str(), element(x, x.pr, k),
                           complex ? element(x, x.pi, k) : 0.0);
                if (fixed_width > 0 && static_cast<int>(cell.size()) > fixed_width)
                    cell.erase(0, cell.size() - fixed_width);
                lines[r] += cell;
            }
        }
        return stack(lines);
    }
    if (x.nnz == 0) return TM("All zeros sparse");
    int rows = x.rows(), cols = x.cols();
    std::string position_format;
    long long w;
    if (rows == 1 || cols == 1) {
        w = static_cast<long long>(x.size() * 0.3010299956639812) + 1;
        position_format = "(%" + std::to_string(w) + "d) ";
    } else {
        w = static_cast<long long>(std::log10(static_cast<double>(rows > cols ? rows : cols))) + 1;
        position_format = "(%" + std::to_string(w) + "d,%" + std::to_string(w) + "d) ";
    }
    // A long vector's positions are wide: a text that no matrix could hold is refused before it is
    // written.
    const long long head_width = rows == 1 || cols == 1 ? w + 3 : 2 * w + 4;
    if (head_width * x.nnz > ak_internal::max_elements) {
        error("Out of memory!");
        return TM("");
    }
    std::string head(static_cast<size_t>(2 * w + 32), '\0');
    for (int k = 0; k < x.nnz; ++k) {
        int at = x.index[k];
        int n;
        if (rows == 1 || cols == 1)
            n = std::snprintf(&head[0], head.size(), position_format.c_str(), at + 1);
        else
            n = std::snprintf(&head[0], head.size(), position_format.c_str(), at % rows + 1, at / rows + 1);
        std::string line = head.substr(0, n > 0 ? static_cast<size_t>(n) : 0);
        value_text(line, complex, real_format.c_str(), imag_format.c_str(), element(x, x.pr, k),
                   complex ? element(x, x.pi, k) : 0.0);
        lines.push_back(line);
    }
    return stack(lines);
}

// A positive scalar on entry to w asks for cells cut to that width.
int requested_width(const Mm& w) {
    if (w.flags.type != ak_double || w.flags.sparse || w.size() != 1 || !w.pr) return 0;
    double v = *w.addr();
    return v >= 1 ? ak_internal::saturate_int(v) : 0;
}

}  // namespace

void fix_nonfinite_text(double value, std::string& text) {
    if (std::isinf(value))
        value < 0 ? apply(minus_inf, text) : apply(plus_inf, text);
    else if (std::isnan(value))
        apply(not_a_number, text);
}

char* fix_nonfinite_text(double value, char* text, int size) {
    if (!text || size < 1 || std::isfinite(value)) return text;
    std::string t = text;
    fix_nonfinite_text(value, t);
    size_t n = t.size() < static_cast<size_t>(size) ? t.size() : static_cast<size_t>(size) - 1;
    std::memcpy(text, t.data(), n);
    text[n] = '\0';
    return text;
}

void value_text(std::string& out, int complex, const char* real_format, const char* imag_format, double re,
                double im) {
    std::string t = print(real_format, re);
    fix_nonfinite_text(re, t);
    out += t;
    if (!complex) return;
    std::string i = print(imag_format, std::fabs(im));
    fix_nonfinite_text(im, i);
    std::string part = "  " + i + "i";
    if (im > 0)
        part[1] = '+';
    else if (im < 0)
        part[1] = '-';
    else
        part.assign(part.size(), ' ');
    out += part;
}

std::string preview_text(const Mm& x) {
    bool numeric = x.flags.type == ak_double || x.flags.type == ak_uchar;
    if (numeric && !x.fields && !x.flags.str && !x.flags.sparse && !x.pi && x.size() == 1 && x.pr) {
        double v = element(x, x.pr, 0);
        std::string t = print("%.4g", v);
        fix_nonfinite_text(v, t);
        return t;
    }
    if (x.flags.str && x.ndims == 2 && x.rows() == 1 && x.cols() < 17) return ak_internal::matrix_text(x);
    std::string t;
    for (int d = 0; d < x.ndims && d < 4; ++d) t += (d ? "x" : "") + std::to_string(x.dims[d]);
    return t + " " + class_name_of(x);
}

Mm num2str(const Mm& x, const Mm& prec, i_o_t, Mm& s, Mm& w) {
    switch (x.flags.type) {
        case ak_no_type:
            s = TM("(this variable has no value)");
            break;
        case ak_double:
        case ak_uchar:
            s = number_text(x, scalar(prec), requested_width(w));
            break;
        default:
            error("num2str: argument must be numeric or a string");
            s = TM("");
            w = Mm(0.0);
            return s;
    }
    w = Mm(static_cast<double>(s.cols()));
    return s;
}

Mm num2str(const Mm& x, i_o_t, Mm& s, Mm& w) { return num2str(x, Mm(4.0), i_o, s, w); }

Mm num2str(const Mm& x) {
    Mm s, w;
    num2str(x, i_o, s, w);
    return strip_leading_blank_columns(s);
}

Mm num2str(const Mm& x, const Mm& prec) {
    Mm s, w;
    return num2str(x, prec, i_o, s, w);
}

Mm int2str(const Mm& x) { return num2str(round(x)); }

Mm mat2str(const Mm& x) { return mat2str(x, Mm(15.0)); }

Mm mat2str(const Mm& x, const Mm& prec) {
    Mm d = mdouble(x);
    if (d.size() == 0) return TM("[]");
    if (d.flags.sparse) d = full(d);
    std::string f = " %." + std::to_string(precision_of(scalar(prec))) + "g";
    int complex = d.pi != nullptr;
    const double* re = d.addr();
    const double* im = d.addi();
    if (d.size() == 1) {
        std::string t;
        value_text(t, complex, f.c_str(), f.c_str(), re[0], complex ? im[0] : 0.0);
        return TM(t.c_str());
    }
    int rows = d.rows(), cols = d.size() / rows;
    std::vector<std::string> lines(rows);
    for (int r = 0; r < rows; ++r) {
        std::string& line = lines[r];
        if (r == 0) line = "[";
        for (int c = 0; c < cols; ++c) {
            int k = c * rows + r;
            value_text(line, complex, f.c_str(), f.c_str(), re[k], complex ? im[k] : 0.0);
        }
        line += r + 1 < rows ? ";" : "]";
    }
    return stack(lines);
}

// ---- rows of the table of functions by name ----------------------------------------------------
AK_BUILTIN("num2str", AK_FN(num2str, const Mm&), AK_FN(num2str, const Mm&, const Mm&),
           AK_FN_REFS(num2str, const Mm&, i_o_t, Mm&, Mm&),
           AK_FN_REFS(num2str, const Mm&, const Mm&, i_o_t, Mm&, Mm&));
AK_BUILTIN("int2str", AK_FN(int2str, const Mm&));
AK_BUILTIN("mat2str", AK_FN(mat2str, const Mm&), AK_FN(mat2str, const Mm&, const Mm&));
