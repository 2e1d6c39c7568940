// Matrices in and out of the engine's record, and the small helpers of the graphics files.
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <strings.h>

#include "arklib/cells.h"
#include "arklib/figures.h"
#include "arklib/sparse.h"
#include "graphics/graphics_internal.h"

namespace ak_internal {

QorValue qor_record(const Mm& value) {
    QorValue r;
    int nd = value.ndims < 2 ? 2 : value.ndims > 4 ? 4 : value.ndims;
    r.setsize(nd, value.dims);
    r.str = value.flags.str ? 1 : 0;
    r.alloc();
    int n = r.size();
    if (n > 0 && value.pr && value.nnz >= n) std::memcpy(r.data, value.pr, sizeof(double) * n);
    return r;
}

Mm matrix_of_record(const QorValue* record) {
    if (!record || record->ndims < 2) return Mm(0, 0, 0, 0, 0, ak_double);
    int nd = record->ndims > 4 ? 4 : record->ndims;
    int dims[4];
    for (int k = 0; k < 4; ++k) dims[k] = k < nd ? record->dims[k] : 1;
    for (int k = nd; k < 4; ++k)
        if (record->dims[k] != 1) dims[k] = record->dims[k];  // a record whose trailing sizes are not 1
    Mm m(0, 0, 0, nd, dims, ak_double);
    int n = record->size();
    if (record->data && m.nnz > 0) std::memcpy(m.pr, record->data, sizeof(double) * (m.nnz < n ? m.nnz : n));
    m.flags.str = record->str ? 1 : 0;
    return m;
}

double handle_at(const Mm& h, int k) {
    if (h.flags.type == ak_uchar) return static_cast<const unsigned char*>(h.pr)[k];
    if (h.flags.type != ak_double || h.flags.sparse) return -1;
    return static_cast<const double*>(h.pr)[k];
}

const Mm& cell_at(const Mm& list, int k) { return static_cast<const Mm*>(list.pr)[k]; }

Mm new_cell(int rows, int cols) { return Mm(0, 0, 0, rows, cols, ak_mm); }

bool text_is(const Mm& m, const char* word) {
    if (!m.flags.str || m.flags.type != ak_double) return false;
    int n = m.size();
    if (n != static_cast<int>(std::strlen(word))) return false;
    const double* d = static_cast<const double*>(m.pr);
    for (int k = 0; k < n; ++k)
        if (std::tolower(static_cast<int>(d[k])) != std::tolower(static_cast<unsigned char>(word[k]))) return false;
    return true;
}

namespace {

double element(const Mm& m, int k, bool imag) {
    if (m.flags.type == ak_uchar) return imag ? 0.0 : static_cast<const unsigned char*>(m.pr)[k];
    const double* p = static_cast<const double*>(imag ? m.pi : m.pr);
    return p ? p[k] : 0.0;
}

}  // namespace

bool values_equal(const Mm& a, const Mm& b) {
    if (a.ndims != b.ndims) return false;
    for (int k = 0; k < 4; ++k)
        if (a.dims[k] != b.dims[k]) return false;
    bool ca = a.flags.type == ak_mm, cb = b.flags.type == ak_mm;
    if (ca != cb) return false;
    Mm fa = a.flags.sparse ? full(a) : a, fb = b.flags.sparse ? full(b) : b;
    int n = fa.size();
    for (int k = 0; k < n; ++k) {
        if (ca) {
            if (!values_equal(cell_at(fa, k), cell_at(fb, k))) return false;
        } else if (element(fa, k, false) != element(fb, k, false) || element(fa, k, true) != element(fb, k, true)) {
            return false;
        }
    }
    return true;
}

bool starts_like(const char* name, const char* word) { return strncasecmp(name, word, 4) == 0; }

double current_figure() { return ak_engine.qor_current_figure(); }

double current_axes() { return number_of(gca(), -1); }

Mm as_list(const Mm& a) {
    if (a.flags.type == ak_mm && !a.fields) return a;
    return list_of({a});
}

Mm list_of(std::initializer_list<Mm> items) {
    Mm out = new_cell(1, static_cast<int>(items.size()));
    int k = 0;
    for (const Mm& m : items) static_cast<Mm*>(out.pr)[k++] = m;
    return out;
}

Mm list_tail(const Mm& list, int from) {
    int n = list.size();
    if (from < 0) from = 0;
    Mm out = new_cell(1, n > from ? n - from : 0);
    for (int k = from; k < n; ++k) static_cast<Mm*>(out.pr)[k - from] = cell_at(list, k);
    return out;
}

double number_of(const Mm& m, double def) {
    if (m.flags.sparse || m.size() < 1 || !m.pr) return def;
    if (m.flags.type == ak_uchar) return static_cast<const unsigned char*>(m.pr)[0];
    if (m.flags.type != ak_double) return def;
    return static_cast<const double*>(m.pr)[0];
}

Mm row_of(std::initializer_list<double> v) {
    Mm out(0, 0, 0, 1, static_cast<int>(v.size()), ak_double);
    int k = 0;
    for (double x : v) out.addr()[k++] = x;
    return out;
}

std::string text_of(const Mm& m) {
    std::string s;
    if (m.flags.type != ak_double || !m.pr) return s;
    int n = m.size();
    for (int k = 0; k < n; ++k) s += static_cast<char>(static_cast<const double*>(m.pr)[k]);
    return s;
}

}  // namespace ak_internal
