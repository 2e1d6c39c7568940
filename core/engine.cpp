// The element-wise operation engine: one constructor of Mm for all element arithmetic, comparison,
// logic, functions of one element and reductions along a dimension. It checks the operands, routes
// sparse, cell and mixed-type operands, applies the empty rules and the shape rules, and runs the
// core for the element type.
#include <climits>
#include <cmath>

#include "arklib/cells.h"
#include "arklib/sparse.h"
#include "core/engine_internal.h"

namespace {

using namespace ak_internal;

// A real full double with one element: the operands of translated scalar code.
inline bool plain_scalar(const Mm& m) {
    return m.flags.type == ak_double && m.nnz == 1 && !m.pi && !m.flags.sparse;
}

// The operations that translated scalar code uses most, on two real scalars, with the same results
// as the element loops; false for the others, which go through the core.
inline bool scalar_result(op_t op, double x, double y, double& r) {
    switch (op) {
        case op_plus:
            r = x + y;
            return true;
        case op_minus:
            r = x - y;
            return true;
        case op_times:
        case op_mtimes:
            r = x * y;
            return true;
        case op_rdivide:
            r = x / y;
            return true;
        case op_ldivide:
            r = y / x;
            return true;
        case op_lt:
            r = x < y;
            return true;
        case op_gt:
            r = x > y;
            return true;
        case op_le:
            r = x <= y;
            return true;
        case op_ge:
            r = x >= y;
            return true;
        case op_eq:
            r = x == y;
            return true;
        case op_ne:
            r = x != y;
            return true;
        case op_uminus:
            r = -x;
            return true;
        default:
            return false;
    }
}

}  // namespace

// The dimension held by `dim`: its first element truncated to an int, held within the int range;
// -1 when it has no element.
int ak_internal::read_dim(const Mm& dim) {
    if (dim.nnz < 1 || !dim.pr) return -1;
    double v;
    if (dim.flags.type == ak_double)
        v = *dim.addr();
    else if (dim.flags.type == ak_uchar)
        v = *static_cast<const unsigned char*>(dim.pr);
    else
        return -1;
    if (std::isnan(v)) return INT_MIN + 1;
    if (v >= 2147483647.0) return INT_MAX;
    if (v <= -2147483647.0) return -INT_MAX;
    return static_cast<int>(v);
}

namespace {

Mm real_scalar(double v) {
    Mm r(0, 0, 0, 1, 1, ak_double);
    *r.addr() = v;
    return r;
}

// Result of an operation with an empty operand: 0x0, except the reductions that have a value over
// nothing and the equality tests of two matrices.
Mm empty_result(op_t op, const Mm& a, const Mm& b, int d) {
    bool ea = a.nnz == 0, eb = b.nnz == 0;
    switch (op) {
        case op_all:
        case op_prod:
            if (d == 0) return real_scalar(1.0);
            break;
        case op_any:
        case op_sum:
            if (d == 0) return real_scalar(0.0);
            break;
        case op_eq:
            return real_scalar(ea && eb ? 1.0 : 0.0);
        case op_ne:
            return real_scalar(ea != eb ? 1.0 : 0.0);
        default:
            break;
    }
    return Mm(0, 0, 0, 0, 0, ak_double);
}

bool same_dims(const Mm& a, const Mm& b) {
    return a.dims[0] == b.dims[0] && a.dims[1] == b.dims[1] && a.dims[2] == b.dims[2] &&
           a.dims[3] == b.dims[3];
}

// A dimension operation on full numeric operands of one type.
Mm dim_operation(int complex, const Mm& a, const Mm& b, int d, op_t op, Mm& extra) {
    if (d == -1) {
        error("%s: dim argument may not be empty", op_name(op));
        return x_M;
    }
    if (d == 0) d = a.nsingleton();
    if (d < 1 || d > 4) {
        error("%s: dimension=%d does not exist for matrix %s", op_name(op), d, display_name(a));
        return x_M;
    }
    int dims[4] = {a.dims[0], a.dims[1], a.dims[2], a.dims[3]};
    switch (op) {
        case op_diff:
            if (--dims[d - 1] <= 0) return Mm(0, 0, 0, 0, 0, ak_double);
            break;
        case op_del2:
        case op_gradient:
        case op_cumprod:
        case op_cumsum:
        case op_unwrap:
            break;
        case op_all:
        case op_any:
        case op_max_1:
        case op_median:
        case op_min_1:
        case op_prod:
        case op_sum:
            dims[d - 1] = 1;
            break;
        default:
            error("op_dims: wrong do_dim");
            return x_M;
    }
    dim_geometry g;
    g.len = a.dims[d - 1];
    g.stride = 1;
    g.outer = 1;
    for (int k = 0; k < d - 1; ++k) g.stride *= a.dims[k];
    for (int k = d; k < 4; ++k) g.outer *= a.dims[k];

    ak_matrix_types type = a.flags.type;
    int nd = a.ndims > d ? a.ndims : d;
    Mm r(type == ak_uchar ? 0 : complex, 0, 0, nd, dims, type);
    // The positions go to a matrix of their own and reach `extra` at the end, so that `extra` may be
    // one of the operands.
    bool want_index = (op == op_max_1 || op == op_min_1) && !is_lM(extra);
    Mm index = want_index ? Mm(0, 0, 0, nd, dims, ak_double) : Mm();
    double* positions = want_index ? index.addr() : nullptr;
    if (type == ak_uchar)
        dim_core_uchar(a, b, r, op, g, positions);
    else
        dim_core_double(a, b, r, op, g, positions);
    if (want_index) extra = index;
    return r;
}

// Steps 1 to 9 for everything but the short path of two real scalars.
Mm run_engine(int complex, const Mm& a, const Mm& b, const Mm& dim, op_t op, int do_dim, Mm& extra) {
    a.warn_uninit();
    b.warn_uninit();
    if (a.flags.sparse || b.flags.sparse) {
        // A sparse and a full operand are added in full.
        if ((op == op_plus || op == op_minus) && a.flags.sparse != b.flags.sparse)
            return Mm(complex, full(a), full(b), dim, op, do_dim, extra);
        return sparse_engine(complex, a, b, dim, op, do_dim, extra);
    }
    if (a.flags.type == ak_mm || b.flags.type == ak_mm) {
        if (a.fields || b.fields) {
            const char* name = op_name(op);
            return op_is_binary(op) ? call_class_function(name, a, b) : call_class_function(name, a);
        }
        error("Operation can not be performed on non-numerical datatypes");
        return x_M;
    }
    if (a.flags.type != b.flags.type) {
        // Mixed operations are carried out in bytes.
        if (a.flags.type == ak_uchar && b.flags.type == ak_double)
            return Mm(complex, a, muint8(b), dim, op, do_dim, extra);
        if (b.flags.type == ak_uchar && a.flags.type == ak_double)
            return Mm(complex, muint8(a), b, dim, op, do_dim, extra);
        error("M::M(op): inconsistent datatypes");
        return x_M;
    }
    int d = read_dim(dim);
    if (a.nnz == 0 || b.nnz == 0) return empty_result(op, a, b, d);
    if (do_dim) return dim_operation(complex, a, b, d, op, extra);

    const Mm* shape = &a;
    if (b.nnz != 1) {
        if (a.nnz == 1) {
            shape = &b;
        } else if (!same_dims(a, b)) {
            error("%s: incompatible dimensions of: %s, %s", op_name(op), display_name(a), display_name(b));
            return x_M;
        }
    }
    ak_matrix_types type = a.flags.type;
    Mm r(type == ak_uchar ? 0 : complex, 0, 0, shape->ndims, shape->dims, type);
    if (type == ak_uchar)
        element_core_uchar(a, b, r, op);
    else
        element_core_double(a, b, r, op);
    return r;
}

}  // namespace

Mm::Mm(int complex, const Mm& a, const Mm& b, const Mm& dim, op_t op, int do_dim, Mm& extra) {
    if (!do_dim && !complex && op >= op_abs && op < op_count && plain_scalar(a) && plain_scalar(b)) {
        // Translated scalar code comes here: a 1x1 real result, computed directly for the common
        // operations and by the double core for the others.
        double x = *static_cast<const double*>(a.pr), y = *static_cast<const double*>(b.pr);
        init_scalar(0.0, M_types{0, 0, 0, 0, 0, 0, ak_double});
        if (nnz == 0) return;
        if (!scalar_result(op, x, y, *static_cast<double*>(pr)))
            ak_internal::element_core_double(a, b, *this, op);
        return;
    }
    init_head(2, ak_double);
    *this = run_engine(complex, a, b, dim, op, do_dim, extra);
}
