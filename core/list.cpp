// The list builder Mc, and the conversion of matrix and cell literals into values.
#include <cstdlib>
#include <cstring>

#include "arklib/list.h"

extern Mm nothing;

// ---- the list ---------------------------------------------------------------------------------------

void Mc::use_inline() {
    items = inline_items;
    owned = inline_owned;
    capacity = 16;
    last = -1;
}

Mc::Mc() : is_cell(1) { use_inline(); }

Mc::Mc(int cell, int own, const Mm& first) : is_cell(cell) {
    use_inline();
    append(&first, own);
}

Mc::Mc(const Mc& src) : is_cell(src.is_cell) {
    use_inline();
    if (src.capacity > 16) {
        items = static_cast<const Mm**>(std::malloc(sizeof(const Mm*) * src.capacity));
        owned = static_cast<int*>(std::malloc(sizeof(int) * src.capacity));
        if (!items || !owned) {
            std::free(items);
            std::free(owned);
            use_inline();
            error("Out of memory!");
            return;
        }
        capacity = src.capacity;
    }
    last = src.last;
    for (int k = 0; k <= last; ++k) {
        items[k] = src.items[k];
        owned[k] = src.owned[k];
        src.owned[k] = 0;  // ownership moves to the copy
    }
}

Mc::~Mc() {
    for (int k = last; k >= 0; --k)
        if (owned[k]) delete const_cast<Mm*>(items[k]);
    if (capacity > 16) {
        std::free(items);
        std::free(owned);
    }
}

void Mc::operator=(const Mc&) { error("Mc=Mc called"); }

void Mc::append(const Mm* m, int own) {
    if (last + 1 == capacity) {
        int grown = capacity * 2;
        const Mm** new_items = static_cast<const Mm**>(std::malloc(sizeof(const Mm*) * grown));
        int* new_owned = static_cast<int*>(std::malloc(sizeof(int) * grown));
        if (!new_items || !new_owned) {
            std::free(new_items);
            std::free(new_owned);
            error("Out of memory!");
            if (own) delete const_cast<Mm*>(m);
            return;
        }
        std::memcpy(new_items, items, sizeof(const Mm*) * capacity);
        std::memcpy(new_owned, owned, sizeof(int) * capacity);
        if (capacity > 16) {
            std::free(items);
            std::free(owned);
        }
        items = new_items;
        owned = new_owned;
        capacity = grown;
    }
    ++last;
    items[last] = m;
    owned[last] = own;
}

Mc& Mc::operator,(const Mm& m) {
    append(&m, 0);
    return *this;
}

Mc& Mc::operator,(double v) {
    Mm* m = new Mm(v);
    if (m) append(m, 1);
    return *this;
}

Mc& Mc::operator,(const char* text) {
    Mm* m = new Mm(TM(text));
    if (m) append(m, 1);
    return *this;
}

Mc BR(const Mm& m) { return Mc(0, 0, m); }
Mc CL(const Mm& m) { return Mc(1, 0, m); }

Mc BR(double v) {
    Mc list;
    list.is_cell = 0;
    list, v;
    return list;
}

Mc BR(const char* text) {
    Mc list;
    list.is_cell = 0;
    list, text;
    return list;
}

Mc CL(double v) {
    Mc list;
    list, v;
    return list;
}

Mc CL(const char* text) {
    Mc list;
    list, text;
    return list;
}

// ---- matrix literals -----------------------------------------------------------------------------------

namespace {

// What the first pass learns of a matrix literal.
struct literal_survey {
    int rows = 0, cols = 0;
    bool complex = false, not_double = false, many_dims = false, sparse = false;
    bool str = false, logical = false, all_logical = true;
};

literal_survey survey(const Mc& list) {
    literal_survey s;
    int h = 0, w = 0;
    for (int k = 0; k <= list.last; ++k) {
        const Mm& e = *list.items[k];
        if (!is_semi(e)) {
            s.complex |= e.pi != nullptr;
            s.not_double |= e.flags.type != ak_double;
            s.many_dims |= e.ndims >= 3;
            s.sparse |= e.flags.sparse != 0;
            s.str |= e.flags.str != 0;
            s.logical |= e.flags.logical != 0;
            s.all_logical &= e.flags.logical != 0;
            if (e.dims[0] > 0 && e.dims[1] > 0) {
                h = e.dims[0];
                w += e.dims[1];
            }
        }
        if (is_semi(e) || k == list.last) {
            s.rows += h;
            if (w > s.cols) s.cols = w;
            h = w = 0;
        }
    }
    return s;
}

// Plain doubles go straight into the result. Rows are stepped by the height of the last non-empty
// entry of each band and short rows stay zero-padded; parts of an entry that reach past the result
// (a band of unequal heights) are left out rather than written outside it.
Mm literal_fast(const Mc& list, const literal_survey& s) {
    Mm r(s.complex, 0, 0, s.rows, s.cols, ak_double);
    std::memset(r.pr, 0, sizeof(double) * r.nnz);
    if (r.pi) std::memset(r.pi, 0, sizeof(double) * r.nnz);
    int row0 = 0, col0 = 0, h = 0;
    for (int k = 0; k <= list.last; ++k) {
        const Mm& e = *list.items[k];
        if (!is_semi(e) && e.dims[0] > 0 && e.dims[1] > 0) {
            int er = e.dims[0], ec = e.dims[1];
            int nr = row0 + er > r.dims[0] ? r.dims[0] - row0 : er;
            for (int c = 0; c < ec && col0 + c < r.dims[1]; ++c) {
                std::size_t to = static_cast<std::size_t>(col0 + c) * r.dims[0] + row0;
                if (nr > 0) std::memcpy(r.addr() + to, e.addr() + c * er, sizeof(double) * nr);
                if (r.pi && e.pi && nr > 0) std::memcpy(r.addi() + to, e.addi() + c * er, sizeof(double) * nr);
            }
            col0 += ec;
            h = er;
        }
        if (is_semi(e) || k == list.last) {
            row0 += h;
            col0 = 0;
            h = 0;
        }
    }
    return r;
}

Mm literal_general(const Mc& list) {
    Mm total, row;
    bool have_total = false, have_row = false;
    for (int k = 0; k <= list.last; ++k) {
        const Mm& e = *list.items[k];
        if (!is_semi(e)) {
            row = have_row ? horzcat(row, e) : e;
            have_row = true;
        }
        if (is_semi(e) || k == list.last) {
            if (have_row) {
                total = have_total ? vertcat(total, row) : row;
                have_total = true;
            }
            row = nothing;
            have_row = false;
        }
    }
    return total;
}

Mm literal_matrix(const Mc& list) {
    literal_survey s = survey(list);
    Mm r = (!s.sparse && !s.not_double && !s.many_dims) ? literal_fast(list, s) : literal_general(list);
    r.flags.logical = s.logical && s.all_logical;
    if (s.str) r.flags.str = 1;
    return r;
}

// ---- cell literals -------------------------------------------------------------------------------------

bool names_an_argument_list(const Mm& e) {
    return e.name && (std::strcmp(e.name, "varargin") == 0 || std::strcmp(e.name, "args") == 0);
}

Mm literal_cell(const Mc& list) {
    for (int k = 0; k <= list.last; ++k) {
        const Mm& e = *list.items[k];
        if (!names_an_argument_list(e)) continue;
        if (e.flags.type != ak_mm && e.flags.type != ak_no_type) {
            error("%s must be cell array", "varargin");
            return x_M;
        }
        // Splice the elements of the argument list in its place and convert the new list.
        Mc spliced;
        for (int m = 0; m < k; ++m) spliced, *list.items[m];
        int n = e.flags.type == ak_mm ? e.nnz : 0;
        for (int m = 0; m < n; ++m) spliced, static_cast<const Mm*>(e.pr)[m];
        for (int m = k + 1; m <= list.last; ++m) spliced, *list.items[m];
        return Mm(spliced);
    }
    int rows = 0, cols = 0, w = 0;
    for (int k = 0; k <= list.last; ++k) {
        bool semi_entry = is_semi(*list.items[k]);
        if (!semi_entry) ++w;
        if ((semi_entry || k == list.last) && w > 0) {
            ++rows;
            if (w > cols) cols = w;
            w = 0;
        }
    }
    Mm r(0, 0, 0, rows, cols, ak_mm);
    Mm* cells = static_cast<Mm*>(r.pr);
    int row = 0, col = 0;
    for (int k = 0; k <= list.last; ++k) {
        const Mm& e = *list.items[k];
        if (!is_semi(e)) cells[col++ * rows + row] = e;
        if ((is_semi(e) || k == list.last) && col > 0) {
            ++row;
            col = 0;
        }
    }
    return r;
}

}  // namespace

Mm::Mm(const Mc& list) : Mm(list.is_cell ? literal_cell(list) : literal_matrix(list)) {}
