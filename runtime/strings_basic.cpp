// The string helpers that cells and the string family build on: deblank, upper, str2mat, strvcat.
#include <algorithm>
#include <vector>

#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/sparse.h"
#include "arklib/strings.h"

namespace {

// Element k (zero-based) of the real half of a numeric matrix, as a double.
double value(const Mm& m, int k) {
    if (m.flags.type == ak_uchar) return static_cast<const unsigned char*>(m.pr)[k];
    return static_cast<const double*>(m.pr)[k];
}

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

// A cell of the same shape with f applied to each element.
Mm each_element(const Mm& c, Mm (*f)(const Mm&)) {
    Mm r(0, 0, 0, c.ndims, c.dims, ak_mm);
    const Mm* from = static_cast<const Mm*>(c.pr);
    Mm* to = static_cast<Mm*>(r.pr);
    for (int k = 0; k < r.nnz; ++k) to[k] = f(from[k]);
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
    if (iscell(s)) return each_element(s, deblank);
    s.warn_uninit();
    if (error_numeric(s, "deblank")) return x_M;
    Mm x = s.flags.sparse ? full(s) : s;
    if (x.dims[0] > 1 && x.nnz / x.dims[0] > 1) return deblank_matrix(x);
    return deblank_vector(x);
}

Mm upper(const Mm& s) {
    if (iscell(s)) return each_element(s, upper);
    if (!s.flags.str || (s.flags.type != ak_double && s.flags.type != ak_uchar)) return s;
    Mm r;
    r.deepcopy(s, ak_no_type);
    for (int k = 0; k < r.nnz; ++k) {
        if (r.flags.type == ak_uchar) {
            unsigned char& c = static_cast<unsigned char*>(r.pr)[k];
            if (c >= 'a' && c <= 'z') c = static_cast<unsigned char>(c - 'a' + 'A');
        } else {
            double& c = static_cast<double*>(r.pr)[k];
            if (c >= 'a' && c <= 'z' && c == static_cast<int>(c)) c -= 'a' - 'A';
        }
    }
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
