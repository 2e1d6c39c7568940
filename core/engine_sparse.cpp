// The engine on sparse operands. Functions with f(0) = 0 work on the stored values only; a product
// with a scalar scales the stored values, and so does any operation with a scalar s for which
// f(0, s) = 0 (a > 0, a ./ 2, max(a, 0)); operations that are zero where both operands are zero run
// on the union of the stored positions; everything else is computed in full and made sparse again.
#include <cstring>

#include "arklib/sparse.h"
#include "core/engine_internal.h"

namespace {

using namespace ak_internal;

bool is_empty(const Mm& m) { return m.size() == 0; }
bool stored_scalar(const Mm& m) { return m.size() == 1 && m.nnz >= 1; }

// A sparse matrix of the given shape holding `values` at `positions`, with zeros removed.
Mm sparse_from_values(const Mm& values, const int* positions, int ndims, const int* dims) {
    Mm v = values;
    if (v.flags.type != ak_double) v.deepcopy(0, 0, values, ak_double);
    Mm r(v.pi != nullptr, 1, v.nnz, ndims, dims, ak_double);
    int n = v.nnz < r.nnz ? v.nnz : r.nnz;
    r.nnz = n;
    if (n == 0) return r;  // nothing stored: the buffers may be null
    std::memcpy(r.pr, v.pr, sizeof(double) * static_cast<std::size_t>(n));
    if (v.pi) std::memcpy(r.pi, v.pi, sizeof(double) * static_cast<std::size_t>(n));
    std::memcpy(r.index, positions, sizeof(int) * static_cast<std::size_t>(n));
    r.resparse();
    return r;
}

// The stored values of a sparse matrix as a full column.
Mm stored_column(const Mm& s) {
    Mm c = s;
    c.flags.sparse = 0;
    c.ndims = 2;
    c.dims[0] = s.nnz;
    c.dims[1] = s.nnz ? 1 : 0;
    c.dims[2] = c.dims[3] = s.nnz ? 1 : 0;
    return c;
}

// Runs the operation on the stored values of `s`, with `other` full, and puts the result back on the
// positions of `s`.
Mm on_stored_values(int complex, const Mm& s, Mm other, bool s_first, op_t op, Mm& extra) {
    if (other.flags.sparse) other = full(other);
    Mm column = stored_column(s);
    Mm r = s_first ? Mm(complex, column, other, nop_M, op, 0, extra)
                   : Mm(complex, other, column, nop_M, op, 0, extra);
    if (r.nnz != s.nnz || r.flags.type == ak_mm) return r;  // an error was reported
    return sparse_from_values(r, s.index, s.ndims, s.dims);
}

// The values of `s` on the sorted positions `u`, 0 where `s` stores nothing.
Mm aligned_values(const Mm& s, const int* u, int n) {
    Mm v(s.pi != nullptr, 0, 0, n, 1, ak_double);
    double* vr = v.addr();
    double* vi = v.addi();
    const double* sr = s.addr();
    const double* si = s.addi();
    for (int k = 0, j = 0; k < n; ++k) {
        while (j < s.nnz && s.index[j] < u[k]) ++j;
        bool here = j < s.nnz && s.index[j] == u[k];
        vr[k] = here ? sr[j] : 0.0;
        if (vi) vi[k] = here && si ? si[j] : 0.0;
    }
    return v;
}

// Runs the operation on the union of the stored positions of two sparse matrices.
Mm on_union(int complex, const Mm& a0, const Mm& b0, op_t op, Mm& extra) {
    Mm a = sparse(a0), b = sparse(b0);
    const Mm* shape = &a;
    if (a.size() == 1 && a.nnz == 0 && b.size() != 1) {
        shape = &b;  // a zero scalar is zero everywhere
    } else if (!(b.size() == 1 && b.nnz == 0 && a.size() != 1)) {
        if (a.dims[0] != b.dims[0] || a.dims[1] != b.dims[1] || a.dims[2] != b.dims[2] ||
            a.dims[3] != b.dims[3]) {
            error("%s: incompatible dimensions of: %s, %s", op_name(op), display_name(a0), display_name(b0));
            return x_M;
        }
    }
    // Merge the two sorted position lists.
    int count = 0;
    for (int i = 0, j = 0; i < a.nnz || j < b.nnz; ++count) {
        if (j >= b.nnz || (i < a.nnz && a.index[i] < b.index[j]))
            ++i;
        else if (i >= a.nnz || b.index[j] < a.index[i])
            ++j;
        else
            ++i, ++j;
    }
    ak_scratch<int> u(count);
    if (count > 0 && !u.get()) return x_M;
    for (int i = 0, j = 0, k = 0; k < count; ++k) {
        if (j >= b.nnz || (i < a.nnz && a.index[i] < b.index[j]))
            u[k] = a.index[i++];
        else if (i >= a.nnz || b.index[j] < a.index[i])
            u[k] = b.index[j++];
        else
            u[k] = a.index[i++], ++j;
    }
    Mm va = aligned_values(a, u, count), vb = aligned_values(b, u, count);
    Mm r(complex, va, vb, nop_M, op, 0, extra);
    if (r.nnz != count && count > 0) return r;  // an error was reported
    if (count == 0) return Mm(0, 1, 0, shape->ndims, shape->dims, ak_double);
    return sparse_from_values(r, u, shape->ndims, shape->dims);
}

// The two-operand operations whose value at a zero is worth testing against a scalar: when
// op(0, s) is 0, a sparse operand with the scalar s needs work on its stored values only. Each of
// them gives a value for every pair of numbers without reporting anything.
bool zero_probe_applies(op_t op) {
    switch (op) {
        case op_lt:
        case op_gt:
        case op_le:
        case op_ge:
        case op_eq:
        case op_ne:
        case op_and:
        case op_or:
        case op_xor:
        case op_max_2:
        case op_min_2:
        case op_rdivide:
        case op_ldivide:
        case op_power:
        case op_rem:
        case op_mod:
        case op_atan2:
            return true;
        default:
            return false;
    }
}

// Whether op(0, s) (op(s, 0) when the scalar comes first) is exactly 0 in both halves.
bool zero_stays_zero(int complex, const Mm& scalar, bool scalar_first, op_t op) {
    Mm none;
    Mm s = full(scalar);
    Mm r = scalar_first ? Mm(complex, s, zero_M, nop_M, op, 0, none) : Mm(complex, zero_M, s, nop_M, op, 0, none);
    if (r.nnz != 1 || r.flags.sparse) return false;
    if (r.flags.type == ak_uchar) return *static_cast<const unsigned char*>(r.pr) == 0;
    if (r.flags.type != ak_double) return false;
    return r.addr()[0] == 0.0 && (!r.pi || r.addi()[0] == 0.0);
}

}  // namespace

namespace ak_internal {

Mm sparse_engine(int complex, Mm a, Mm b, const Mm& dim, op_t op, int do_dim, Mm& extra) {
    sparse_group group = op_sparse_group(op);
    if (group == sg_none) return nop_M;
    bool empty = is_empty(a) || is_empty(b);
    if (!empty && !do_dim) {
        if (stored_scalar(b) && a.size() != 1) {
            if (group == sg_product) return on_stored_values(complex, sparse(a), full(b), true, op, extra);
            if (a.flags.sparse && zero_probe_applies(op) && zero_stays_zero(complex, b, false, op))
                return on_stored_values(complex, a, full(b), true, op, extra);
            if (group == sg_union) group = sg_full_element;
        } else if (stored_scalar(a) && b.size() != 1) {
            if (group == sg_product) return on_stored_values(complex, sparse(b), full(a), false, op, extra);
            if (b.flags.sparse && zero_probe_applies(op) && zero_stays_zero(complex, a, true, op))
                return on_stored_values(complex, b, full(a), false, op, extra);
            if (group == sg_union) group = sg_full_element;
        }
    }
    if (group == sg_stored && a.flags.sparse && !do_dim)
        return on_stored_values(complex, a, b, true, op, extra);
    if (!empty && !do_dim && (group == sg_union || group == sg_product))
        return on_union(complex, a, b, op, extra);
    if (do_dim && a.flags.sparse && !b.flags.sparse) {
        Mm r;
        if (sparse_dim_operation(complex, a, read_dim(dim), op, extra, r)) return r;
    }
    // The full groups, and every operation on an empty operand.
    Mm r(complex, full(a), full(b), dim, op, do_dim, extra);
    return sparse(r);
}

}  // namespace ak_internal
