// The test of truth used by if and while, and the is* predicates.
#include <cmath>

#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/error.h"

int istrue(double v) { return v < 0.0 || v > 0.0; }

int istrue(const Mm& m) {
    if (m.fields) {
        Mm converted = mdouble(m);
        if (converted.fields) return 0;  // a class whose double gives a structure again
        return istrue(converted);
    }
    int n = m.size();
    // Only the storage pattern of a sparse matrix is looked at: true when every element is stored.
    if (m.flags.sparse) return n > 0 && m.nnz == n;
    switch (m.flags.type) {
        case ak_no_type:
            m.warn_uninit();
            return 0;
        case ak_double: {
            if (n <= 0) return 0;
            const double* re = static_cast<const double*>(m.pr);
            for (int k = 0; k < m.nnz; ++k)
                if (!istrue(re[k])) return 0;
            return 1;
        }
        case ak_uchar: {
            if (n <= 0) return 0;
            const unsigned char* re = static_cast<const unsigned char*>(m.pr);
            for (int k = 0; k < m.nnz; ++k)
                if (re[k] == 0) return 0;
            return 1;
        }
        case ak_mm:
            error("cell array has no true/false meaning");
            return 0;
    }
    return 0;
}

int iscell(const Mm& m) { return m.flags.type == ak_mm && !m.fields; }
int isstruct(const Mm& m) { return m.fields && m.classid == 0; }
int is_struct(const Mm& m) { return isstruct(m); }
int mxIsStruct(const Mm& m) { return isstruct(m); }
int isobject(const Mm& m) { return m.fields && m.classid != 0; }

int isempty(const Mm& m) { return m.dims[0] == 0 || m.dims[1] == 0 || m.dims[2] == 0 || m.dims[3] == 0; }

int isscalar(const Mm& m) { return m.size() == 1; }
int is_scalar(const Mm& m) { return isscalar(m); }

int isvector(const Mm& m) {
    if (m.ndims < 1) return 1;
    int other = 0;
    for (int d : m.dims) other += d != 1;
    return other <= 1;
}
int is_vector(const Mm& m) { return isvector(m); }

int is_square(const Mm& m) { return m.dims[0] == m.dims[1] && m.ndims == 2 && isnumeric(m); }
int islogical(const Mm& m) { return m.flags.logical && !m.pi; }
int isnumeric(const Mm& m) { return !m.flags.str && m.flags.type < ak_mm; }

// The predicate is asked of a value, but answering it drops an imaginary half that is all zero, as
// the language's arithmetic would have done.
int isreal(const Mm& m) { return const_cast<Mm&>(m).getreal(0) == 0; }
int iscomplex(const Mm& m) { return const_cast<Mm&>(m).getreal(0) == 1; }

int iscomplex(const double* v, int n) {
    if (!v) return 0;
    for (int k = 0; k < n; ++k)
        if (!(v[k] == 0.0)) return 1;  // NaN counts as not zero
    return 0;
}

int isnegative(const double* v, int n) {
    for (int k = 0; v && k < n; ++k)
        if (v[k] < 0.0) return 1;
    return 0;
}

int isint(const Mm& m) {
    switch (m.flags.type) {
        case ak_no_type:
            m.warn_uninit();
            return -1;
        case ak_uchar:
            return 1;
        case ak_mm:
            return 0;
        case ak_double:
            break;
    }
    // Whole numbers this large are not treated as integers by the library.
    const double limit = 1e7;
    const double* re = static_cast<const double*>(m.pr);
    for (int k = 0; k < m.nnz; ++k)
        if (!(re[k] == std::floor(re[k]) && std::fabs(re[k]) < limit)) return 0;
    const double* im = static_cast<const double*>(m.pi);
    for (int k = 0; im && k < m.nnz; ++k)
        if (im[k] != 0.0) return 0;
    return 1;
}

int mxIsDouble(const Mm& m) { return m.flags.type == ak_double; }
int mxIsUint8(const Mm& m) { return m.flags.type == ak_uchar; }
int mxIsSparse(const Mm& m) { return m.flags.sparse != 0; }
int isglobal(const Mm& m) { return m.flags.global != 0; }

int is_same_dims(const int* a, const int* b) {
    return a[0] == b[0] && a[1] == b[1] && a[2] == b[2] && a[3] == b[3];
}
int is_same_dims(const Mm& a, const Mm& b) { return is_same_dims(a.dims, b.dims); }

int isieee() { return 1; }
