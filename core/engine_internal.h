// Internals of the element-wise engine shared by its source files: the sparse group of each
// operation, the loop geometry of a dimension operation and the entry points of the cores.
#pragma once
#include "arklib/matrix.h"

namespace ak_internal {

// How an operation treats sparse operands.
enum sparse_group {
    sg_none,            // not an operation code
    sg_stored,          // f(0) = 0: only the stored values need work
    sg_product,         // a zero in either operand gives zero
    sg_union,           // non-zero where either operand is stored
    sg_full_element,    // f(0) is not 0: computed on full matrices
    sg_full_binary,     // computed on full matrices
    sg_full_reduction,  // computed on full matrices
};
sparse_group op_sparse_group(int op);

// True for the element operations that take two operands (the others take one, or work along a
// dimension).
bool op_is_binary(int op);

// Runs of a dimension operation: `outer` blocks of `stride` runs, each of `len` elements lying
// `stride` apart.
struct dim_geometry {
    int len;
    int stride;
    int outer;
};

// The cores. `r` is allocated with the result's shape, type and complexity. An operand with one
// element is expanded by a step of 0.
void element_core_double(const Mm& a, const Mm& b, Mm& r, op_t op);
void element_core_uchar(const Mm& a, const Mm& b, Mm& r, op_t op);
// `index` receives the 1-based positions of max_1 and min_1 when it is not null.
void dim_core_double(const Mm& a, const Mm& b, Mm& r, op_t op, const dim_geometry& g, double* index);
void dim_core_uchar(const Mm& a, const Mm& b, Mm& r, op_t op, const dim_geometry& g, double* index);

// The engine on sparse operands.
Mm sparse_engine(int complex, Mm a, Mm b, const Mm& dim, op_t op, int do_dim, Mm& extra);
// Sums, products, truth tests, extremes and running forms of a sparse `a` along dimension d (as
// read from the dim argument), computed on its entries. False for every case it leaves to the
// full route: other operations, bad dimensions, matrices of fewer than two elements.
bool sparse_dim_operation(int complex, const Mm& a, int d, op_t op, Mm& extra, Mm& result);
// The dimension held by a dim argument: its first element truncated to an int; -1 when it has none.
int read_dim(const Mm& dim);

// Byte of a double: truncated towards zero, low byte kept, non-finite values give 0.
inline unsigned char byte_of(double v) {
    if (!(v > -9.2e18 && v < 9.2e18)) return 0;
    return static_cast<unsigned char>(static_cast<long long>(v));
}

}  // namespace ak_internal

namespace ak_internal {

// Operand and result arrays of one element operation, with the step of each operand (0 for an
// operand of one element, 1 otherwise). A null imaginary pointer marks a real array.
struct element_args {
    int n;
    const double *ar, *ai;
    int sa;
    const double *br, *bi;
    int sb;
    double *rr, *ri;
};
element_args make_element_args(const Mm& a, const Mm& b, Mm& r);

// The special functions and the bit family on double operands (their own file).
void special_core_double(const element_args& g, op_t op);

// Loop of a two-operand function with a real result, chosen once by the steps.
template <class F>
inline void loop_real2(const element_args& g, F f) {
    const double *a = g.ar, *b = g.br;
    double* r = g.rr;
    const int n = g.n;
    if (g.sa && g.sb) {
        for (int k = 0; k < n; ++k) r[k] = f(a[k], b[k]);
    } else if (g.sa) {
        const double y = *b;
        for (int k = 0; k < n; ++k) r[k] = f(a[k], y);
    } else if (g.sb) {
        const double x = *a;
        for (int k = 0; k < n; ++k) r[k] = f(x, b[k]);
    } else if (n > 0) {
        r[0] = f(*a, *b);
    }
}

// Loop of a one-operand function with a real result.
template <class F>
inline void loop_real1(const element_args& g, F f) {
    const double* a = g.ar;
    double* r = g.rr;
    const int n = g.n;
    if (g.sa) {
        for (int k = 0; k < n; ++k) r[k] = f(a[k]);
    } else if (n > 0) {
        const double v = f(*a);
        for (int k = 0; k < n; ++k) r[k] = v;
    }
}

}  // namespace ak_internal
