// Checked element access of Mm: r, i, ur, mr.
//
// Each accessor reports a wrong type or a position outside the matrix through error. When a host
// handler lets error return, the accessor hands back a scratch element rather than touching memory
// outside the storage.
#include "arklib/matrix.h"
#include "core/matrix_internal.h"

namespace ak_internal {

double& scratch_double() {
    static double d;
    d = 0.0;
    return d;
}

unsigned char& scratch_byte() {
    static unsigned char b;
    b = 0;
    return b;
}

Mm& scratch_matrix() {
    static Mm* m = new Mm();  // never destroyed: it may be referenced until the process ends
    return *m;
}

}  // namespace ak_internal

namespace {

using ak_internal::scratch_double;

bool type_is(const Mm& m, ak_matrix_types t) {
    if (m.flags.type == t) return true;
    error(".r / .i : wrong matrix type");
    return false;
}

// Element at zero-based position pos of the real or imaginary half, if the storage holds it.
double& element(const Mm& m, long long pos, bool imag) {
    void* half = imag ? m.pi : m.pr;
    if (!half || pos < 0 || pos >= m.p) return scratch_double();
    return static_cast<double*>(half)[pos];
}

double& first(const Mm& m, bool imag) {
    if (!type_is(m, ak_double)) return scratch_double();
    if (m.size() == 0) {
        error("%s.r(): matrix is empty", display_name(m));
        return scratch_double();
    }
    return element(m, 0, imag);
}

double& linear(const Mm& m, double k, bool imag) {
    if (!type_is(m, ak_double)) return scratch_double();
    if (!(k >= 1 && k <= m.size())) {
        error("%s.r(idx): idx=%g out of matrix", display_name(m), k);
        return scratch_double();
    }
    return element(m, static_cast<long long>(k) - 1, imag);
}

double& at2(const Mm& m, double row, double col, bool imag) {
    if (!type_is(m, ak_double)) return scratch_double();
    if (!(row >= 1 && row <= m.dims[0] && col >= 1 && col <= m.dims[1])) {
        error("%s.r(row,col): row=%g or col=%g out of matrix", display_name(m), row, col);
        return scratch_double();
    }
    long long pos = (static_cast<long long>(col) - 1) * m.dims[0] + static_cast<long long>(row) - 1;
    return element(m, pos, imag);
}

double& at3(const Mm& m, double row, double col, double depth, bool imag) {
    if (!type_is(m, ak_double)) return scratch_double();
    if (!(row >= 1 && row <= m.dims[0] && col >= 1 && col <= m.dims[1] && depth >= 1 && depth <= m.dims[2])) {
        error("%s.r(row,col,depth): row=%g, col=%g or depth=%g out of matrix", display_name(m), row, col, depth);
        return scratch_double();
    }
    long long pos = ((static_cast<long long>(depth) - 1) * m.dims[1] + static_cast<long long>(col) - 1) * m.dims[0] +
                    static_cast<long long>(row) - 1;
    return element(m, pos, imag);
}

}  // namespace

double& Mm::r() const { return first(*this, false); }
double& Mm::r(double k) const { return linear(*this, k, false); }
double& Mm::r(double row, double col) const { return at2(*this, row, col, false); }
double& Mm::r(double row, double col, double depth) const { return at3(*this, row, col, depth, false); }
double& Mm::i() const { return first(*this, true); }
double& Mm::i(double k) const { return linear(*this, k, true); }
double& Mm::i(double row, double col) const { return at2(*this, row, col, true); }
double& Mm::i(double row, double col, double depth) const { return at3(*this, row, col, depth, true); }

unsigned char& Mm::ur(int k) const {
    if (!type_is(*this, ak_uchar)) return ak_internal::scratch_byte();
    if (k < 1 || k > size() || k > p) {
        error("%s.ur(idx): idx=%d out of matrix", display_name(*this), k);
        return ak_internal::scratch_byte();
    }
    return static_cast<unsigned char*>(pr)[k - 1];
}

unsigned char& Mm::ur(int row, int col) const {
    if (!type_is(*this, ak_uchar)) return ak_internal::scratch_byte();
    if (row < 1 || row > dims[0] || col < 1 || col > dims[1]) {
        error("%s.ur(row,col): row=%d or col=%d out of matrix", display_name(*this), row, col);
        return ak_internal::scratch_byte();
    }
    return static_cast<unsigned char*>(pr)[(col - 1) * dims[0] + row - 1];
}

Mm& Mm::mr(int k) const {
    if (!type_is(*this, ak_mm)) return ak_internal::scratch_matrix();
    if (k < 1 || k > size() || k > p) {
        error("%s.mr(idx): idx=%d out of matrix", display_name(*this), k);
        return ak_internal::scratch_matrix();
    }
    return static_cast<Mm*>(pr)[k - 1];
}

Mm& Mm::mr(int row, int col) const {
    if (!type_is(*this, ak_mm)) return ak_internal::scratch_matrix();
    if (row < 1 || row > dims[0] || col < 1 || col > dims[1]) {
        error("%s.mr(row,col): row=%d or col=%d out of matrix", display_name(*this), row, col);
        return ak_internal::scratch_matrix();
    }
    return static_cast<Mm*>(pr)[(col - 1) * dims[0] + row - 1];
}
