// The string helpers that cells and the string family build on (deblank, upper, lower, str2mat,
// strvcat), the character tests, and blanks, setstr and strjust.
#include <algorithm>
#include <cstring>
#include <vector>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/sparse.h"
#include "arklib/strings.h"
#include "runtime/strings_internal.h"

using ak_strings::cell_map;

namespace ak_strings {

std::vector<double> codes_of(const Mm& m) {
    if (m.flags.type != ak_double && m.flags.type != ak_uchar) return {};
    if (m.flags.sparse) return codes_of(full(m));
    std::vector<double> v(static_cast<std::size_t>(m.nnz));
    for (int k = 0; k < m.nnz; ++k) v[k] = code_at(m, k);
    return v;
}

std::string text_of(const Mm& m) {
    std::string t;
    for (double c : codes_of(m)) t += static_cast<char>(static_cast<unsigned char>(static_cast<long long>(c)));
    return t;
}

Mm string_row(const std::vector<double>& codes) {
    int n = static_cast<int>(codes.size());
    Mm r(0, 0, 0, n ? 1 : 0, n, ak_double);
    if (n) std::memcpy(r.addr(), codes.data(), sizeof(double) * n);
    r.flags.str = 1;
    return r;
}

Mm string_row(const std::string& text) {
    std::vector<double> v(text.size());
    for (std::size_t k = 0; k < text.size(); ++k) v[k] = static_cast<unsigned char>(text[k]);
    return string_row(v);
}

Mm vector_like(const Mm& like, const std::vector<double>& codes, int str) {
    int n = static_cast<int>(codes.size());
    bool column = like.dims[0] > 1 && like.dims[1] == 1 && like.ndims == 2;
    Mm r(0, 0, 0, column ? n : 1, column ? 1 : n, ak_double);
    if (n) std::memcpy(r.addr(), codes.data(), sizeof(double) * n);
    r.flags.str = str;
    return r;
}

Mm cell_map(const Mm& c, Mm (*f)(const Mm&)) {
    Mm r(0, 0, 0, c.ndims, c.dims, ak_mm);
    const Mm* from = cell_items(c);
    Mm* to = static_cast<Mm*>(r.pr);
    for (int k = 0; k < r.nnz; ++k) to[k] = f(from[k]);
    return r;
}

Mm logical_matrix(int ndims, const int* dims) {
    Mm r(0, 0, 0, ndims, dims, ak_double);
    if (r.nnz) std::memset(r.addr(), 0, sizeof(double) * r.nnz);
    r.flags.logical = 1;
    return r;
}

bool is_string_row(const Mm& m) {
    return m.flags.str && (m.flags.type == ak_double || m.flags.type == ak_uchar) && m.ndims == 2 &&
           (m.dims[0] == 1 || m.nnz == 0);
}

bool is_text(const Mm& m) {
    if (m.flags.str && m.flags.type != ak_mm) return true;
    if (!iscell(m) || m.fields) return false;
    for (int k = 0; k < m.nnz; ++k)
        if (!cell_items(m)[k].flags.str || cell_items(m)[k].flags.type == ak_mm) return false;
    return true;
}

}  // namespace ak_strings

namespace {

using ak_strings::code_at;
double value(const Mm& m, int k) { return code_at(m, k); }

// A new real matrix of rows x cols of x's element type holding the elements of x picked by `keep`
// (zero-based, column-major), with x's str flag.
Mm pick(const Mm& x, int rows, int cols, const std::vector<int>& keep) {
    Mm r(0, 0, 0, rows, cols, x.flags.type == ak_uchar ? ak_uchar : ak_double);
    for (int k = 0; k < r.nnz; ++k) {
        if (r.flags.type == ak_uchar)
            static_cast<unsigned char*>(r.pr)[k] = static_cast<const unsigned char*>(x.pr)[keep[k]];
        else
            static_cast<double*>(r.pr)[k] = value(x, keep[k]);
    }
    r.flags.str = x.flags.str;
    return r;
}

// A vector loses its trailing blanks, then every code 0; it keeps its orientation.
Mm deblank_vector(const Mm& x) {
    int end = x.nnz;
    while (end > 0 && value(x, end - 1) == 32.0) --end;
    std::vector<int> keep;
    for (int k = 0; k < end; ++k)
        if (value(x, k) != 0.0) keep.push_back(k);
    int n = static_cast<int>(keep.size());
    return x.dims[0] > 1 ? pick(x, n, 1, keep) : pick(x, 1, n, keep);
}

// A character matrix loses the trailing columns in which every character is a blank or a code 0.
Mm deblank_matrix(const Mm& x) {
    int rows = x.dims[0], cols = x.nnz / rows;
    while (cols > 0) {
        bool blank = true;
        for (int r = 0; r < rows && blank; ++r) {
            double v = value(x, (cols - 1) * rows + r);
            blank = v == 32.0 || v == 0.0;
        }
        if (!blank) break;
        --cols;
    }
    std::vector<int> keep(static_cast<std::size_t>(rows) * cols);
    for (int k = 0; k < rows * cols; ++k) keep[k] = k;
    return pick(x, rows, cols, keep);
}

// The rows of text gathered from the arguments of str2mat and strvcat.
class text_rows {
  public:
    text_rows(const char* caller, bool keep_empty) : caller_(caller), keep_empty_(keep_empty) {}

    void add(const Mm& a, bool inside_cell = false) {
        if (a.flags.type == ak_no_type) return a.warn_uninit();
        if (iscell(a) && !inside_cell) {
            const Mm* e = static_cast<const Mm*>(a.pr);
            for (int k = 0; k < a.nnz; ++k) add(e[k], true);
            return;
        }
        if (error_numeric(a, caller_)) return;
        if (a.size() > 0)
            add_numeric(a.flags.sparse ? full(a) : a);
        else if (keep_empty_)
            rows_.emplace_back();
    }

    Mm result() const {
        int width = 0;
        for (const auto& row : rows_) width = std::max(width, static_cast<int>(row.size()));
        int n = static_cast<int>(rows_.size());
        Mm r(0, 0, 0, n, width, ak_double);
        double* d = r.addr();
        for (int i = 0; i < n && r.nnz; ++i)
            for (int c = 0; c < width; ++c)
                d[c * n + i] = c < static_cast<int>(rows_[i].size()) ? rows_[i][c] : 32.0;
        r.flags.str = 1;
        return r;
    }

  private:
    void add_numeric(const Mm& a) {
        int rows = a.dims[0], cols = a.nnz / rows;
        for (int i = 0; i < rows; ++i) {
            std::vector<double> row(cols);
            for (int c = 0; c < cols; ++c) row[c] = value(a, c * rows + i);
            rows_.push_back(std::move(row));
        }
    }

    const char* caller_;
    bool keep_empty_;
    std::vector<std::vector<double>> rows_;
};

Mm join_rows(const char* caller, bool keep_empty, int n, const Mm* const* list) {
    text_rows rows(caller, keep_empty);
    for (int k = 0; k < n; ++k)
        if (list[k]) rows.add(*list[k]);
    return rows.result();
}

}  // namespace

Mm deblank(const Mm& s) {
    if (iscell(s)) return cell_map(s, deblank);
    s.warn_uninit();
    if (error_numeric(s, "deblank")) return x_M;
    Mm x = s.flags.sparse ? full(s) : s;
    if (x.dims[0] > 1 && x.nnz / x.dims[0] > 1) return deblank_matrix(x);
    return deblank_vector(x);
}

namespace {

// The letters first to first + 25 moved by `shift`, in a string or in each string of a cell.
Mm change_case(const Mm& s, double first, double shift, Mm (*self)(const Mm&)) {
    if (iscell(s)) return cell_map(s, self);
    if (!s.flags.str || (s.flags.type != ak_double && s.flags.type != ak_uchar)) return s;
    Mm r;
    r.deepcopy(s, ak_no_type);
    for (int k = 0; k < r.nnz; ++k) {
        if (r.flags.type == ak_uchar) {
            unsigned char& c = static_cast<unsigned char*>(r.pr)[k];
            if (c >= first && c <= first + 25) c = static_cast<unsigned char>(c + shift);
        } else {
            double& c = static_cast<double*>(r.pr)[k];
            if (c >= first && c <= first + 25 && c == static_cast<int>(c)) c += shift;
        }
    }
    return r;
}

}  // namespace

Mm upper(const Mm& s) { return change_case(s, 'a', 'A' - 'a', upper); }
Mm lower(const Mm& s) { return change_case(s, 'A', 'a' - 'A', lower); }

Mm deblank_leading(const Mm& s) {
    if (iscell(s)) return cell_map(s, deblank_leading);
    s.warn_uninit();
    if (error_numeric(s, "deblank_leading")) return x_M;
    std::vector<double> v = ak_strings::codes_of(s);
    std::size_t start = 0;
    while (start < v.size() && v[start] == 32.0) ++start;
    if (start == 0) return s;
    return ak_strings::vector_like(s, std::vector<double>(v.begin() + start, v.end()), s.flags.str);
}

Mm blanks(const Mm& n) {
    double count = scalar(n);
    if (!(count >= 0.0) || count != static_cast<int>(count)) {
        error("blanks: n must be a non-negative integer");
        return x_M;
    }
    Mm r(0, 0, 0, 1, static_cast<int>(count), ak_double);
    for (int k = 0; k < r.nnz; ++k) r.addr()[k] = 32.0;
    r.flags.str = 1;
    return r;
}

Mm setstr(const Mm& x) {
    x.warn_uninit();
    if (x.flags.type == ak_mm) return mchar(x);
    Mm r = x.flags.sparse ? full(x) : x;
    r.flags.str = 1;
    r.flags.logical = 0;
    return r;
}

namespace {

bool letter(double c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool lower_case(double c) { return c >= 'a' && c <= 'z'; }
bool upper_case(double c) { return c >= 'A' && c <= 'Z'; }
// Blank, tab, line feed, vertical tab, form feed and carriage return.
bool space(double c) { return c == 32.0 || (c >= 9.0 && c <= 13.0); }

Mm character_test(const Mm& s, bool (*test)(double)) {
    s.warn_uninit();
    Mm r = ak_strings::logical_matrix(s.ndims, s.dims);
    if (!s.flags.str || s.flags.type == ak_mm) return r;
    std::vector<double> v = ak_strings::codes_of(s);
    for (int k = 0; k < r.nnz; ++k) r.addr()[k] = test(v[k]) ? 1.0 : 0.0;
    return r;
}

}  // namespace

Mm isletter(const Mm& s) { return character_test(s, letter); }
Mm islower(const Mm& s) { return character_test(s, lower_case); }
Mm isupper(const Mm& s) { return character_test(s, upper_case); }
Mm isspace(const Mm& s) { return character_test(s, space); }

Mm strjust(const Mm& s) { return strjust(s, TM("right")); }

Mm strjust(const Mm& s, const Mm& mode) {
    s.warn_uninit();
    if (error_numeric(s, "strjust")) return x_M;
    std::string how = ak_strings::text_of(mode);
    if (how != "right" && how != "left" && how != "center") {
        error("strjust: mode must be 'right', 'left' or 'center'");
        return x_M;
    }
    Mm x = s.flags.sparse ? full(s) : s;
    if (x.nnz == 0) return x;
    Mm r(0, 0, 0, x.ndims, x.dims, ak_double);
    int rows = x.dims[0], cols = x.nnz / rows;
    for (int i = 0; i < rows; ++i) {
        auto at = [&](int c) { return value(x, c * rows + i); };
        auto blank = [&](int c) { return at(c) == 32.0 || at(c) == 0.0; };
        int first = 0, last = cols - 1;
        while (first < cols && blank(first)) ++first;
        while (last >= first && blank(last)) --last;
        int width = last - first + 1, start = 0;
        if (how == "right") start = cols - width;
        if (how == "center") start = (cols - width) / 2;
        for (int c = 0; c < cols; ++c) {
            int from = c - start + first;
            r.addr()[c * rows + i] = (width > 0 && from >= first && from <= last) ? at(from) : 32.0;
        }
    }
    r.flags.str = x.flags.str;
    return r;
}

Mm str2mat(int n, const Mm* const* list) { return join_rows("str2mat", true, n, list); }
Mm strvcat(int n, const Mm* const* list) { return join_rows("strvcat", false, n, list); }

Mm str2mat(const Mm& a) {
    const Mm* l[] = {&a};
    return str2mat(1, l);
}
Mm str2mat(const Mm& a, const Mm& b) {
    const Mm* l[] = {&a, &b};
    return str2mat(2, l);
}
Mm str2mat(const Mm& a, const Mm& b, const Mm& c) {
    const Mm* l[] = {&a, &b, &c};
    return str2mat(3, l);
}
Mm str2mat(const Mm& a, const Mm& b, const Mm& c, const Mm& d) {
    const Mm* l[] = {&a, &b, &c, &d};
    return str2mat(4, l);
}
Mm str2mat(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e) {
    const Mm* l[] = {&a, &b, &c, &d, &e};
    return str2mat(5, l);
}
Mm str2mat(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e, const Mm& f) {
    const Mm* l[] = {&a, &b, &c, &d, &e, &f};
    return str2mat(6, l);
}
Mm str2mat(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e, const Mm& f, const Mm& g) {
    const Mm* l[] = {&a, &b, &c, &d, &e, &f, &g};
    return str2mat(7, l);
}
Mm str2mat(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e, const Mm& f, const Mm& g,
           const Mm& h) {
    const Mm* l[] = {&a, &b, &c, &d, &e, &f, &g, &h};
    return str2mat(8, l);
}

Mm strvcat(const Mm& a) {
    const Mm* l[] = {&a};
    return strvcat(1, l);
}
Mm strvcat(const Mm& a, const Mm& b) {
    const Mm* l[] = {&a, &b};
    return strvcat(2, l);
}
Mm strvcat(const Mm& a, const Mm& b, const Mm& c) {
    const Mm* l[] = {&a, &b, &c};
    return strvcat(3, l);
}
Mm strvcat(const Mm& a, const Mm& b, const Mm& c, const Mm& d) {
    const Mm* l[] = {&a, &b, &c, &d};
    return strvcat(4, l);
}
Mm strvcat(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e) {
    const Mm* l[] = {&a, &b, &c, &d, &e};
    return strvcat(5, l);
}
Mm strvcat(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e, const Mm& f) {
    const Mm* l[] = {&a, &b, &c, &d, &e, &f};
    return strvcat(6, l);
}
Mm strvcat(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e, const Mm& f, const Mm& g) {
    const Mm* l[] = {&a, &b, &c, &d, &e, &f, &g};
    return strvcat(7, l);
}
Mm strvcat(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e, const Mm& f, const Mm& g,
           const Mm& h) {
    const Mm* l[] = {&a, &b, &c, &d, &e, &f, &g, &h};
    return strvcat(8, l);
}

AK_BUILTIN("deblank", deblank);
AK_BUILTIN("deblank_leading", deblank_leading);
AK_BUILTIN("upper", upper);
AK_BUILTIN("lower", lower);
AK_BUILTIN("blanks", blanks);
AK_BUILTIN("setstr", setstr);
AK_BUILTIN("isletter", isletter);
AK_BUILTIN("islower", AK_FN(islower, const Mm&));
AK_BUILTIN("isupper", AK_FN(isupper, const Mm&));
AK_BUILTIN("isspace", AK_FN(isspace, const Mm&));
AK_BUILTIN("strjust", AK_FN(strjust, const Mm&), AK_FN(strjust, const Mm&, const Mm&));
AK_BUILTIN("str2mat", AK_FN(str2mat, const Mm&), AK_FN(str2mat, const Mm&, const Mm&),
           AK_FN(str2mat, const Mm&, const Mm&, const Mm&), AK_FN(str2mat, const Mm&, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("strvcat", AK_FN(strvcat, const Mm&), AK_FN(strvcat, const Mm&, const Mm&),
           AK_FN(strvcat, const Mm&, const Mm&, const Mm&), AK_FN(strvcat, const Mm&, const Mm&, const Mm&, const Mm&));
