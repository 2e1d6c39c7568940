// zeros, ones, eye, czeros, ceye, and the size reader and fill routine they share with rand and
// randn.
#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <initializer_list>

#include "arklib/constructors.h"
#include "arklib/random.h"
#include "arklib/builtins.h"

namespace ak_internal {

namespace {

// A size from a double: rounded to nearest, NaN and negative values 0, huge values INT_MAX.
int size_from_double(double v) {
    if (!(v > 0.0)) return 0;
    double r = std::round(v);
    return r >= static_cast<double>(INT_MAX) ? INT_MAX : static_cast<int>(r);
}

// Element k (zero-based, column-major) of a numeric matrix as a double, the real part only. A
// sparse matrix is searched among its stored entries.
double element_value(const Mm& m, int k) {
    if (m.flags.sparse) {
        for (int e = 0; e < m.nnz; ++e)
            if (m.index[e] == k) return static_cast<const double*>(m.pr)[e];
        return 0.0;
    }
    if (m.flags.type == ak_uchar) return static_cast<const unsigned char*>(m.pr)[k];
    return static_cast<const double*>(m.pr)[k];
}

// Whether the values of m can be read as sizes; reports when they cannot.
bool readable(const char* fname, const Mm& m) {
    if (m.flags.type == ak_no_type) {
        m.warn_uninit();
        return false;
    }
    if (m.flags.type == ak_mm) {
        error("%s: size arguments must be numeric", fname);
        return false;
    }
    return true;
}

bool is_vector_shape(const Mm& m) {
    int above = 0;
    for (int d = 0; d < 4; ++d) above += m.dims[d] > 1;
    return above <= 1;
}

// Reads one size argument; see read_size_arguments. A value that cannot be read gives 0x0.
int read_one(const char* fname, const Mm& x, int dims[4]) {
    int n = x.size();
    bool scalar = n == 1;
    bool sizes = n >= 2 && n <= 4 && is_vector_shape(x);
    if (x.flags.type == ak_no_type || scalar || sizes) {
        if (!readable(fname, x)) {
            dims[0] = dims[1] = 0;
            return 2;
        }
    }
    if (scalar) {
        dims[0] = dims[1] = size_from_double(element_value(x, 0));
        return 2;
    }
    if (sizes) {
        for (int k = 0; k < n; ++k) dims[k] = size_from_double(element_value(x, k));
        return n;
    }
    for (int d = 0; d < 4; ++d) dims[d] = x.dims[d] < 0 ? 0 : x.dims[d];
    return x.ndims < 2 || x.ndims > 4 ? 2 : x.ndims;
}

}  // namespace

int read_size_arguments(const char* fname, int count, const Mm* const args[], int dims[4]) {
    dims[0] = dims[1] = dims[2] = dims[3] = 1;
    if (count < 1) return 2;
    if (count == 1) return read_one(fname, *args[0], dims);
    if (count > 4) count = 4;
    for (int k = 0; k < count; ++k) {
        const Mm& a = *args[k];
        int n = a.size();
        if (n < 1 && a.flags.type != ak_no_type) {
            dims[k] = 0;
            continue;
        }
        if (!readable(fname, a)) {
            dims[k] = 0;
            continue;
        }
        if (n > 1) error("%s: size arguments must be scalars", fname);
        dims[k] = size_from_double(element_value(a, 0));
    }
    return count;
}

Mm fill_matrix(int ndims, const int* dims, fill_kind kind, int complex) {
    Mm m(complex ? 1 : 0, 0, 0, ndims, dims, ak_double);
    int n = m.nnz;
    double* re = static_cast<double*>(m.pr);
    if (n > 0) {
        switch (kind) {
            case fill_ones:
                std::fill(re, re + n, 1.0);
                break;
            case fill_rand:
                rand_fill(re, n);
                break;
            case fill_randn:
                randn_fill(re, n);
                break;
            case fill_eye: {
                std::fill(re, re + n, 0.0);
                int rows = m.dims[0], cols = m.dims[1], page = rows * cols;
                int diag = std::min(rows, cols);
                for (int base = 0; base < n; base += page)
                    for (int k = 0; k < diag; ++k) re[base + k * rows + k] = 1.0;
                break;
            }
            case fill_zeros:
            default:
                std::fill(re, re + n, 0.0);
                break;
        }
        if (m.pi) std::fill(static_cast<double*>(m.pi), static_cast<double*>(m.pi) + n, 0.0);
    }
    return m;
}

}  // namespace ak_internal

namespace {

using ak_internal::fill_kind;

Mm square(double n, fill_kind kind, int complex) {
    int s = ak_internal::size_from_double(n);
    int d[2] = {s, s};
    return ak_internal::fill_matrix(2, d, kind, complex);
}

Mm rect(double m, double n, fill_kind kind, int complex) {
    int d[2] = {ak_internal::size_from_double(m), ak_internal::size_from_double(n)};
    return ak_internal::fill_matrix(2, d, kind, complex);
}

Mm sized(const char* fname, fill_kind kind, int complex, std::initializer_list<const Mm*> args) {
    int d[4];
    int nd = ak_internal::read_size_arguments(fname, static_cast<int>(args.size()), args.begin(), d);
    return ak_internal::fill_matrix(nd, d, kind, complex);
}

}  // namespace

// The five constructors differ only in name, fill and complex flag.
#define AK_CONSTRUCTOR_FAMILY(NAME, KIND)                                                          \
    Mm NAME() { return square(1.0, KIND, 0); }                                                     \
    Mm NAME(double n) { return square(n, KIND, 0); }                                               \
    Mm NAME(double m, double n) { return rect(m, n, KIND, 0); }                                    \
    Mm NAME(const Mm& x) { return sized(#NAME, KIND, 0, {&x}); }                                   \
    Mm NAME(const Mm& m, const Mm& n) { return sized(#NAME, KIND, 0, {&m, &n}); }                  \
    Mm NAME(const Mm& m, const Mm& n, const Mm& p) { return sized(#NAME, KIND, 0, {&m, &n, &p}); } \
    Mm NAME(const Mm& m, const Mm& n, const Mm& p, const Mm& q) {                                  \
        return sized(#NAME, KIND, 0, {&m, &n, &p, &q});                                            \
    }

#define AK_COMPLEX_CONSTRUCTOR_FAMILY(NAME, KIND)                                                         \
    Mm NAME(int c) { return square(1.0, KIND, c); }                                                       \
    Mm NAME(int c, double n) { return square(n, KIND, c); }                                               \
    Mm NAME(int c, double m, double n) { return rect(m, n, KIND, c); }                                    \
    Mm NAME(int c, const Mm& x) { return sized(#NAME, KIND, c, {&x}); }                                   \
    Mm NAME(int c, const Mm& m, const Mm& n) { return sized(#NAME, KIND, c, {&m, &n}); }                  \
    Mm NAME(int c, const Mm& m, const Mm& n, const Mm& p) { return sized(#NAME, KIND, c, {&m, &n, &p}); } \
    Mm NAME(int c, const Mm& m, const Mm& n, const Mm& p, const Mm& q) {                                  \
        return sized(#NAME, KIND, c, {&m, &n, &p, &q});                                                   \
    }

AK_CONSTRUCTOR_FAMILY(zeros, ak_internal::fill_zeros)
AK_CONSTRUCTOR_FAMILY(ones, ak_internal::fill_ones)
AK_CONSTRUCTOR_FAMILY(eye, ak_internal::fill_eye)
AK_COMPLEX_CONSTRUCTOR_FAMILY(czeros, ak_internal::fill_zeros)
AK_COMPLEX_CONSTRUCTOR_FAMILY(ceye, ak_internal::fill_eye)

// ---- rows of the table of functions by name ----------------------------------------------------
AK_BUILTIN("zeros", AK_FN(zeros), AK_FN(zeros, const Mm&), AK_FN(zeros, const Mm&, const Mm&),
           AK_FN(zeros, const Mm&, const Mm&, const Mm&),
           AK_FN(zeros, const Mm&, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("ones", AK_FN(ones), AK_FN(ones, const Mm&), AK_FN(ones, const Mm&, const Mm&),
           AK_FN(ones, const Mm&, const Mm&, const Mm&),
           AK_FN(ones, const Mm&, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("eye", AK_FN(eye), AK_FN(eye, const Mm&), AK_FN(eye, const Mm&, const Mm&),
           AK_FN(eye, const Mm&, const Mm&, const Mm&),
           AK_FN(eye, const Mm&, const Mm&, const Mm&, const Mm&));
