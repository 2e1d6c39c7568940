// Deep copies with type conversion, and the real/complex state of a matrix.
#include <cstring>

#include "arklib/matrix.h"
#include "core/matrix_internal.h"

namespace {

using ak_internal::to_byte;

// Converts n elements of one half of src into one half of dst. A null source half means zeros.
void convert_half(const Mm& src, const void* from, Mm& dst, void* to, int n, bool imag) {
    ak_matrix_types st = src.flags.type, dt = dst.flags.type;
    if (dt == ak_mm) {
        // Cells hold their values as elements; a complex source gives complex 1x1 elements.
        Mm* out = static_cast<Mm*>(to);
        for (int k = 0; k < n; ++k) {
            if (st == ak_mm) {
                out[k] = static_cast<const Mm*>(from)[k];
            } else if (!imag) {
                double re = st == ak_uchar ? static_cast<const unsigned char*>(from)[k]
                                           : static_cast<const double*>(from)[k];
                out[k] = Mm(re);
                if (src.pi && st == ak_double) {
                    out[k].getcomplex();
                    *out[k].addi() = static_cast<const double*>(src.pi)[k];
                }
            }
        }
        return;
    }
    if (!from) {
        std::memset(to, 0, static_cast<std::size_t>(n) * (dt == ak_uchar ? 1 : 8));
        return;
    }
    if (st == ak_mm) {
        error("Can not convert %s into a numeric matrix", display_name(src));
        std::memset(to, 0, static_cast<std::size_t>(n) * (dt == ak_uchar ? 1 : 8));
        return;
    }
    if (dt == ak_double) {
        double* out = static_cast<double*>(to);
        if (st == ak_double)
            std::memcpy(out, from, sizeof(double) * n);
        else
            for (int k = 0; k < n; ++k) out[k] = static_cast<const unsigned char*>(from)[k];
    } else {
        unsigned char* out = static_cast<unsigned char*>(to);
        if (st == ak_uchar)
            std::memcpy(out, from, n);
        else
            for (int k = 0; k < n; ++k) out[k] = to_byte(static_cast<const double*>(from)[k]);
    }
}

void zero_tail(Mm& m, int from) {
    if (m.flags.type == ak_mm || from >= m.nnz) return;
    std::size_t width = m.flags.type == ak_uchar ? 1 : 8;
    std::size_t count = static_cast<std::size_t>(m.nnz - from) * width;
    std::memset(static_cast<char*>(m.pr) + from * width, 0, count);
    if (m.pi) std::memset(static_cast<char*>(m.pi) + from * width, 0, count);
}

}  // namespace

void Mm::deepcopy(int complex, int sparse, const Mm& src, ak_matrix_types type) {
    if (type == ak_no_type) type = src.flags.type;
    if (type == ak_mm) complex = 0;  // a cell keeps complex values inside its elements
    Mm t(complex, sparse, src.nnz, src.ndims, src.dims, type);
    // A full copy of a sparse source takes its stored values only, at the front.
    int n = src.nnz < t.nnz ? src.nnz : t.nnz;
    if (src.flags.type != ak_no_type) {
        convert_half(src, src.pr, t, t.pr, n, false);
        if (t.pi) convert_half(src, src.pi, t, t.pi, n, true);
    }
    zero_tail(t, src.flags.type == ak_no_type ? 0 : n);
    if (sparse) {
        if (src.flags.sparse && src.index)
            std::memcpy(t.index, src.index, sizeof(int) * n);
        else
            for (int k = 0; k < t.nnz; ++k) t.index[k] = k;
    }
    for (int k = 0; k < src.nfields; ++k) t.addfield(src.fields[k], 1);
    t.flags = src.flags;
    t.flags.sparse = sparse ? 1 : 0;
    t.flags.type = type;
    t.flags.workspace_var = 0;
    t.flags.global = 0;
    *this = t;
}

void Mm::deepcopy(int complex, const Mm& src, ak_matrix_types type) {
    deepcopy(complex, src.flags.sparse, src, type);
}

void Mm::deepcopy(const Mm& src, ak_matrix_types type) {
    deepcopy(src.pi != nullptr, src.flags.sparse, src, type);
}

int Mm::getcomplex() {
    if (pi) return 1;
    deepcopy(1, *this, ak_no_type);
    return pi != nullptr;
}

int Mm::getreal(int force) {
    if (!pi) return 0;
    if (!force && flags.type == ak_double) {
        const double* im = static_cast<const double*>(pi);
        for (int k = 0; k < nnz; ++k)
            if (!(im[k] == 0.0)) return 1;  // NaN counts as not zero
    }
    pi = nullptr;
    return 0;
}

Mm Mm::safebr(int k) const {
    if (flags.type != ak_mm || k < 1 || k > size() || k > nnz) return Mm(nop_M);
    return Mm(static_cast<const Mm*>(pr)[k - 1]);
}

void Mm::warn_uninit() const {
    if (flags.type == ak_no_type) error("variable '%s' was used without a value", display_name(*this));
}
