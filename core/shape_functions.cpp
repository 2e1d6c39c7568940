// Shape and subscript functions: ind2sub, sub2ind, permute, ipermute, diag, squeeze, ndims, row2col,
// the dim argument check, and the colon family behind a:b and a:s:b.
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstring>
#include <type_traits>

#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/sparse.h"
#include "arklib/subscript.h"
#include "arklib/builtins.h"

namespace {

// The values of a numeric argument as a full double matrix (its real part is read). Cells and
// matrices without a value give an empty matrix, so that nothing reads their storage as numbers.
Mm as_doubles(const Mm& m) {
    if (m.flags.type == ak_double) return full(m);
    if (m.flags.type != ak_uchar) return Mm();
    Mm d(m);
    d.deepcopy(0, 0, d, ak_double);
    return d;
}

bool numeric(const Mm& m, const char* function) {
    if (m.flags.type == ak_no_type) {
        m.warn_uninit();
        return false;
    }
    return !error_numeric(m, function);
}

// Element k of a double matrix, or `otherwise` past its end.
double value_at(const Mm& d, int k, double otherwise) { return k < d.nnz ? d.addr()[k] : otherwise; }

double truncated_int(double v) {
    if (!(v == v)) return 0;
    if (v > INT_MAX / 2) return INT_MAX / 2;
    if (v < -(INT_MAX / 2)) return -(INT_MAX / 2);
    return std::trunc(v);
}

// The result head over x's flags (its own marks as a variable cleared) for a new shape.
Mm shaped_like(const Mm& x, int complex, int nd, const int* dims) {
    Mm r(complex, 0, 0, nd, dims, x.flags.type);
    M_types f = x.flags;
    f.sparse = 0;
    f.workspace_var = 0;
    f.global = 0;
    r.flags = f;
    for (int k = 0; k < x.nfields; ++k) r.addfield(x.getfield(k), 1);
    r.classid = x.classid;
    return r;
}

}  // namespace

// ---- ind2sub and sub2ind -------------------------------------------------------------------------------

namespace {

// outs[0..count-1] receive the subscripts of the linear indices ndx over the dimensions siz.
void ind2sub_into(const Mm& siz, const Mm& ndx, Mm** outs, int count) {
    if (!numeric(siz, "ind2sub") || !numeric(ndx, "ind2sub")) return;
    Mm s = as_doubles(siz);
    Mm rest = as_doubles(ndx);
    rest.deepcopy(0, 0, rest, ak_double);  // a private copy to work in
    rest.flags.str = rest.flags.logical = 0;
    double* k = rest.addr();
    for (int e = 0; e < rest.nnz; ++e) k[e] -= 1.0;
    for (int o = 0; o + 1 < count; ++o) {
        const double d = value_at(s, o, 1.0);
        Mm sub(0, 0, 0, rest.ndims, rest.dims, ak_double);
        double* v = sub.addr();
        for (int e = 0; e < rest.nnz; ++e) {
            const double q = std::floor(k[e] / d);
            v[e] = (d == 0.0 ? k[e] : k[e] - q * d) + 1.0;  // mod(k, d) + 1
            k[e] = q;
        }
        *outs[o] = sub;
    }
    for (int e = 0; e < rest.nnz; ++e) k[e] += 1.0;
    *outs[count - 1] = rest;
}

}  // namespace

Mm ind2sub() {
    error_input("ind2sub", 0);
    return x_M;
}

Mm ind2sub(const Mm&) {
    error_input("ind2sub", 1);
    return x_M;
}

// With one output the linear index is its own subscript.
Mm ind2sub(const Mm&, const Mm& ndx) { return ndx; }

Mm ind2sub(const Mm& siz, const Mm& ndx, i_o_t, Mm& i, Mm& j) {
    Mm* outs[2] = {&i, &j};
    ind2sub_into(siz, ndx, outs, 2);
    return x_M;
}

Mm ind2sub(const Mm& siz, const Mm& ndx, i_o_t, Mm& i, Mm& j, Mm& k) {
    Mm* outs[3] = {&i, &j, &k};
    ind2sub_into(siz, ndx, outs, 3);
    return x_M;
}

Mm ind2sub(const Mm& siz, const Mm& ndx, i_o_t, Mm& i, Mm& j, Mm& k, Mm& l) {
    Mm* outs[4] = {&i, &j, &k, &l};
    ind2sub_into(siz, ndx, outs, 4);
    return x_M;
}

namespace {

// (j-1)*siz(1) + i, plus (k-1)*siz(1)*siz(2), and so on; scalar subscripts stand for all elements.
Mm sub2ind_of(const Mm& siz, const Mm* const* subs, int count) {
    if (!numeric(siz, "sub2ind")) return x_M;
    const Mm* shape = nullptr;
    for (int k = 0; k < count; ++k) {
        if (!numeric(*subs[k], "sub2ind")) return x_M;
        if (subs[k]->size() == 1) continue;
        if (!shape) {
            shape = subs[k];
        } else if (subs[k]->size() != shape->size()) {
            error("sub2ind: the subscripts must have the same number of elements");
            return x_M;
        }
    }
    if (!shape) shape = subs[0];
    Mm s = as_doubles(siz);
    Mm result(0, 0, 0, shape->ndims, shape->dims, ak_double);
    double* out = result.addr();
    for (int e = 0; e < result.nnz; ++e) out[e] = 0.0;
    double stride = 1.0;
    for (int k = 0; k < count; ++k) {
        Mm v = as_doubles(*subs[k]);
        const double* in = v.addr();
        const bool scalar = v.nnz == 1;
        const double offset = k == 0 ? 0.0 : 1.0;
        for (int e = 0; e < result.nnz; ++e) out[e] += (in[scalar ? 0 : e] - offset) * stride;
        stride *= value_at(s, k, 1.0);
    }
    return result;
}

}  // namespace

Mm sub2ind() {
    error_input("sub2ind", 0);
    return x_M;
}

Mm sub2ind(const Mm&) {
    error_input("sub2ind", 1);
    return x_M;
}

Mm sub2ind(const Mm& siz, const Mm& i) {
    const Mm* subs[1] = {&i};
    return sub2ind_of(siz, subs, 1);
}

Mm sub2ind(const Mm& siz, const Mm& i, const Mm& j) {
    const Mm* subs[2] = {&i, &j};
    return sub2ind_of(siz, subs, 2);
}

Mm sub2ind(const Mm& siz, const Mm& i, const Mm& j, const Mm& k) {
    const Mm* subs[3] = {&i, &j, &k};
    return sub2ind_of(siz, subs, 3);
}

Mm sub2ind(const Mm& siz, const Mm& i, const Mm& j, const Mm& k, const Mm& l) {
    const Mm* subs[4] = {&i, &j, &k, &l};
    return sub2ind_of(siz, subs, 4);
}

// ---- permute and ipermute
// ----------------------------------------------------------------------------------

namespace {

// Reads a dimension order for x into ord (1-based). False after a report.
bool read_order(const Mm& x, const Mm& order, int* ord, int& p) {
    Mm o = as_doubles(order);
    p = o.size();
    if (p > 4) {
        error("permute: order has too many dimensions");
        return false;
    }
    if (p < x.ndims) {
        error("permute: order should have same number of elements as x dimensions");
        return false;
    }
    bool seen[4] = {false, false, false, false};
    for (int k = 0; k < p; ++k) {
        const double v = truncated_int(o.addr()[k]);
        if (v < 1 || v > p) {
            error("permute: out of range values in order");
            return false;
        }
        ord[k] = static_cast<int>(v);
        if (seen[ord[k] - 1]) {
            error("permute: repeated values in order");
            return false;
        }
        seen[ord[k] - 1] = true;
    }
    return true;
}

template <typename T>
void permute_elements(const Mm& x, Mm& r, const int* ord, int p) {
    int d[4] = {1, 1, 1, 1}, stride[4] = {0, 0, 0, 0};
    for (int k = 0; k < p; ++k) d[k] = x.dims[k];
    // Destination stride of each source dimension.
    long long s = 1;
    for (int k = 0; k < p; ++k) {
        stride[ord[k] - 1] = static_cast<int>(s);
        s *= d[ord[k] - 1];
    }
    const T* re = static_cast<const T*>(x.pr);
    T* o = static_cast<T*>(r.pr);
    const bool complex = !std::is_same<T, Mm>::value && x.pi && r.pi;
    const T* im = complex ? static_cast<const T*>(x.pi) : nullptr;
    T* oi = complex ? static_cast<T*>(r.pi) : nullptr;
    int counter[4] = {0, 0, 0, 0};
    long long to = 0;
    for (int from = 0; from < x.nnz; ++from) {
        o[to] = re[from];
        if (complex) oi[to] = im[from];
        // Advance the source position and correct the destination offset at each carry.
        for (int m = 0; m < 4; ++m) {
            to += stride[m];
            if (++counter[m] < d[m]) break;
            to -= static_cast<long long>(stride[m]) * d[m];
            counter[m] = 0;
        }
    }
}

}  // namespace

Mm permute(const Mm&) {
    error_input("permute", 1);
    return x_M;
}

Mm permute(const Mm& x0, const Mm& order) {
    Mm x = full(x0);
    if (x.flags.type == ak_no_type) {
        x.warn_uninit();
        return x_M;
    }
    int ord[4], p;
    if (!read_order(x, order, ord, p)) return x;
    bool identity = true;
    for (int k = 0; k < p; ++k) identity = identity && ord[k] == k + 1;
    if (identity || x.size() == 0) return x;
    int dims[4] = {1, 1, 1, 1};
    for (int k = 0; k < p; ++k) dims[k] = x.dims[ord[k] - 1];
    Mm r = shaped_like(x, x.pi != nullptr, p, dims);
    if (r.nnz != x.nnz) return x_M;  // out of memory was reported
    switch (x.flags.type) {
        case ak_double:
            permute_elements<double>(x, r, ord, p);
            break;
        case ak_uchar:
            permute_elements<unsigned char>(x, r, ord, p);
            break;
        default:
            permute_elements<Mm>(x, r, ord, p);
            break;
    }
    return r;
}

Mm ipermute(const Mm&) {
    error_input("ipermute", 1);
    return x_M;
}

Mm ipermute(const Mm& x, const Mm& order) {
    Mm o = as_doubles(order);
    const int p = o.size();
    // The inverse is only built from a valid order; permute reports any fault of it.
    Mm inverse(0, 0, 0, 1, p, ak_double);
    bool valid = p <= 4 && inverse.nnz == p;
    bool seen[4] = {false, false, false, false};
    for (int k = 0; k < p && valid; ++k) {
        const double v = truncated_int(o.addr()[k]);
        valid = v >= 1 && v <= p && !seen[static_cast<int>(v) - 1];
        if (!valid) break;
        seen[static_cast<int>(v) - 1] = true;
        inverse.addr()[static_cast<int>(v) - 1] = k + 1;
    }
    return permute(x, valid ? inverse : order);
}

// ---- diag -----------------------------------------------------------------------------------------------

namespace {

template <typename T>
void fill_zero(Mm& r) {
    if (std::is_same<T, Mm>::value) return;  // fresh cell elements are already empty matrices
    std::memset(r.pr, 0, sizeof(T) * r.nnz);
    if (r.pi) std::memset(r.pi, 0, sizeof(T) * r.nnz);
}

template <typename T>
void copy_strided(const Mm& x, long long from, long long from_step, Mm& r, long long to, long long to_step,
                  int count) {
    const T* re = static_cast<const T*>(x.pr);
    T* o = static_cast<T*>(r.pr);
    const bool complex = !std::is_same<T, Mm>::value && x.pi && r.pi;
    for (int k = 0; k < count; ++k, from += from_step, to += to_step) {
        o[to] = re[from];
        if (complex) static_cast<T*>(r.pi)[to] = static_cast<const T*>(x.pi)[from];
    }
}

template <typename T>
Mm diag_typed(const Mm& x, int k) {
    const int rows = x.dims[0], cols = x.dims[1];
    const int complex = x.pi != nullptr;
    if (rows == 1 || cols == 1) {
        // A vector goes on diagonal k of a square matrix.
        const long long L = x.size();
        const long long order = L + (k < 0 ? -static_cast<long long>(k) : k);
        const long long start = k >= 0 ? static_cast<long long>(k) * order : -static_cast<long long>(k);
        if (order > INT_MAX || order * order > INT_MAX) {
            error("Out of memory!");
            return x_M;
        }
        int dims[2] = {static_cast<int>(order), static_cast<int>(order)};
        if (x.flags.sparse) {
            Mm r(complex, 1, x.nnz, 2, dims, ak_double);
            M_types f = x.flags;
            f.workspace_var = f.global = 0;
            r.flags = f;
            std::memcpy(r.pr, x.pr, sizeof(double) * r.nnz);
            if (complex) std::memcpy(r.pi, x.pi, sizeof(double) * r.nnz);
            for (int e = 0; e < r.nnz; ++e) r.index[e] = static_cast<int>((order + 1) * x.index[e] + start);
            r.sort();
            return r;
        }
        Mm r = shaped_like(x, complex, 2, dims);
        if (r.nnz != order * order) return x_M;
        fill_zero<T>(r);
        copy_strided<T>(x, 0, 1, r, start, order + 1, static_cast<int>(L));
        return r;
    }
    // A matrix gives its diagonal k as a column.
    long long len = k < 1 ? static_cast<long long>(k) + rows : static_cast<long long>(cols) - k;
    if (len < 0) len = 0;
    if (len > rows) len = rows;
    if (len > cols) len = cols;
    const long long start = k >= 0 ? static_cast<long long>(k) * rows : -static_cast<long long>(k);
    if (x.flags.sparse) {
        if (len == 0) return Mm(0, 1, 0, 0, 0, ak_double);
        const double first = static_cast<double>(start + 1);
        Mm positions = colon(first, rows + 1.0, first + static_cast<double>(len - 1) * (rows + 1.0));
        Mm r(x(positions));
        r.reshape(static_cast<int>(len), 1);
        return r;
    }
    int dims[2] = {static_cast<int>(len), 1};
    Mm r = shaped_like(x, complex, 2, dims);
    if (r.nnz != len) return x_M;
    copy_strided<T>(x, start, rows + 1, r, 0, 1, static_cast<int>(len));
    return r;
}

}  // namespace

Mm diag(const Mm& x) { return diag(x, Mm(0.0)); }

Mm diag(const Mm& x, const Mm& k) {
    if (x.flags.type == ak_no_type) {
        x.warn_uninit();
        return x_M;
    }
    Mm kk = as_doubles(k);
    if (error_2d(x, "diag")) return x_M;
    const int offset = static_cast<int>(truncated_int(value_at(kk, 0, 0.0)));
    switch (x.flags.type) {
        case ak_double:
            return diag_typed<double>(x, offset);
        case ak_uchar:
            return diag_typed<unsigned char>(x, offset);
        default:
            return diag_typed<Mm>(x, offset);
    }
}

// ---- squeeze, ndims, row2col, the dim argument ------------------------------------------------------------

Mm squeeze(const Mm& x) {
    if (x.ndims == 2) return x;
    int dims[4] = {1, 1, 1, 1}, n = 0;
    for (int k = 0; k < x.ndims && k < 4; ++k)
        if (x.dims[k] != 1) dims[n++] = x.dims[k];
    Mm r(x);
    r.reshape(n < 2 ? 2 : n, dims);
    return r;
}

Mm ndims(const Mm& x) { return Mm(static_cast<double>(x.ndims)); }

Mm row2col(const Mm& x) {
    if (x.size() == 0) return x;
    int reversed[4];
    for (int k = 0; k < 4; ++k) reversed[k] = x.dims[3 - k];
    Mm c(full(x));
    c.reshape(4, reversed);
    Mm order(0, 0, 0, 1, 4, ak_double);
    for (int k = 0; k < 4; ++k) order.addr()[k] = 4 - k;
    Mm r = permute(c, order);
    r.collapse();
    return r;
}

int normalize_dim_argument(const char* function, const Mm& x, const Mm& dim) {
    if (dim.size() == 0) {
        error("%s: dim argument may not be empty", function);
        return 0;
    }
    Mm d = as_doubles(dim);
    const double v = value_at(d, 0, 0.0);
    if (v == 0.0) return x.nsingleton() - 1;
    if (!(v >= 1)) {
        error("%s: dim argument must be positive", function);
        return 0;
    }
    if (v > x.ndims) {
        error("%s: dim argument may not be more then the number of dimensions", function);
        return 0;
    }
    return static_cast<int>(v) - 1;
}

// ---- the colon family
// -----------------------------------------------------------------------------------------

Mm colon() { return c_p; }

Mm colon(const Mm& x) { return x; }

Mm colon(double a, double s, double b) {
    if (!(s != 0.0) || !(a == a) || !(b == b) || (s > 0 && a > b) || (s < 0 && a < b)) return nop_M;
    // The count allows for the rounding of (b - a) / s, so that 0:0.1:1 has 11 elements.
    const double q = (b - a) / s;
    const double count = std::floor(q + q * 4 * DBL_EPSILON + 4 * DBL_EPSILON) + 1;
    if (!(count < INT_MAX)) {
        error("Out of memory!");
        return nop_M;
    }
    const int n = static_cast<int>(count);
    Mm r(0, 0, 0, 1, n, ak_double);
    if (r.nnz != n) return nop_M;
    double* v = r.addr();
    for (int k = 0; k < n; ++k) v[k] = a + k * s;
    // The last element never passes the end of the range.
    if ((s > 0 && v[n - 1] > b) || (s < 0 && v[n - 1] < b)) v[n - 1] = b;
    return r;
}

Mm colon(double a, double b) { return colon(a, 1.0, b); }

namespace {

// The first element of a range bound: an empty bound gives NaN, so the range is empty.
double bound(const Mm& m) {
    if (m.flags.type == ak_no_type) {
        m.warn_uninit();
        return NAN;
    }
    if (m.flags.type == ak_mm) {
        error_numeric(m, "colon");
        return NAN;
    }
    if (m.size() == 0) return NAN;
    Mm d = as_doubles(m);
    return value_at(d, 0, NAN);
}

}  // namespace

Mm colon(const Mm& a, const Mm& b) { return colon(bound(a), 1.0, bound(b)); }

Mm colon(const Mm& a, const Mm& s, const Mm& b) { return colon(bound(a), bound(s), bound(b)); }

// ---- rows of the table of functions by name ----------------------------------------------------
AK_BUILTIN("ind2sub", AK_FN(ind2sub), AK_FN(ind2sub, const Mm&), AK_FN(ind2sub, const Mm&, const Mm&),
           AK_FN_REFS(ind2sub, const Mm&, const Mm&, i_o_t, Mm&, Mm&),
           AK_FN_REFS(ind2sub, const Mm&, const Mm&, i_o_t, Mm&, Mm&, Mm&),
           AK_FN_REFS(ind2sub, const Mm&, const Mm&, i_o_t, Mm&, Mm&, Mm&, Mm&));
AK_BUILTIN("sub2ind", AK_FN(sub2ind), AK_FN(sub2ind, const Mm&), AK_FN(sub2ind, const Mm&, const Mm&),
           AK_FN(sub2ind, const Mm&, const Mm&, const Mm&),
           AK_FN(sub2ind, const Mm&, const Mm&, const Mm&, const Mm&),
           AK_FN(sub2ind, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("permute", AK_FN(permute, const Mm&), AK_FN(permute, const Mm&, const Mm&));
AK_BUILTIN("ipermute", AK_FN(ipermute, const Mm&), AK_FN(ipermute, const Mm&, const Mm&));
AK_BUILTIN("diag", AK_FN(diag, const Mm&), AK_FN(diag, const Mm&, const Mm&));
AK_BUILTIN("squeeze", AK_FN(squeeze, const Mm&));
AK_BUILTIN("ndims", AK_FN(ndims, const Mm&));
AK_BUILTIN("colon", AK_FN(colon), AK_FN(colon, const Mm&), AK_FN(colon, const Mm&, const Mm&),
           AK_FN(colon, const Mm&, const Mm&, const Mm&));
