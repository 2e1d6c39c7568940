// Counting and listing the non-zero elements: nnz, nzmax, find, nonzeros and the coordinate list
// sp2coo. A sparse matrix is read through its stored entries only.
#include "algebra/sparse_internal.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/sparse.h"
#include "arklib/builtins.h"

namespace ak_internal {

Mm nonzero_positions(const Mm& a, Mm* values) {
    const double* re = a.addr();
    const double* im = a.addi();
    int count = 0;
    for (int k = 0; k < a.nnz; ++k) count += is_nonzero(re, im, k);
    bool row = a.ndims == 2 && a.dims[0] == 1;
    int rows = row ? 1 : count, cols = row ? count : 1;
    Mm p(0, 0, 0, rows, cols, ak_double);
    Mm v = values ? Mm(im != nullptr, 0, 0, rows, cols, ak_double) : Mm();
    double* pp = p.addr();
    double* vr = v.addr();
    double* vi = v.addi();
    for (int k = 0, n = 0; k < a.nnz && n < count; ++k) {
        if (!is_nonzero(re, im, k)) continue;
        pp[n] = (a.flags.sparse ? a.index[k] : k) + 1.0;
        if (values) {
            vr[n] = re[k];
            if (vi) vi[n] = im[k];
        }
        ++n;
    }
    if (values) {
        v.flags.str = a.flags.str;
        v.flags.logical = a.flags.logical;
        *values = v;
    }
    return p;
}

}  // namespace ak_internal

using namespace ak_internal;

namespace {

// The positions of the non-zero elements of a, with rows and columns in *i and *j and the values in
// *v when those are not null. Gives false after reporting an argument that has no numbers.
bool find_elements(const Mm& a0, Mm& p, Mm* i, Mm* j, Mm* v) {
    if (a0.flags.type == ak_no_type) {
        a0.warn_uninit();
        return false;
    }
    if (error_numeric(a0, "find")) return false;
    // Bytes are found as doubles.
    Mm a = a0.flags.type == ak_uchar ? mdouble(a0) : a0;
    p = nonzero_positions(a, v);
    if (!i && !j) return true;
    Mm ri, rj;
    if (i) ri = Mm(0, 0, 0, p.dims[0], p.dims[1], ak_double);
    if (j) rj = Mm(0, 0, 0, p.dims[0], p.dims[1], ak_double);
    int rows = a.dims[0] > 0 ? a.dims[0] : 1;
    const double* pp = p.addr();
    for (int k = 0; k < p.nnz; ++k) {
        int zero_based = static_cast<int>(pp[k]) - 1;
        if (i) ri.addr()[k] = zero_based % rows + 1.0;
        if (j) rj.addr()[k] = zero_based / rows + 1.0;
    }
    if (i) *i = ri;
    if (j) *j = rj;
    return true;
}

// Rows and columns of a as a two-dimensional matrix: the columns take every dimension after the
// first.
void shape_2d(const Mm& a, int& rows, int& cols) {
    rows = a.dims[0];
    cols = rows > 0 ? a.size() / rows : a.dims[1];
}

}  // namespace

Mm nnz(const Mm& a) {
    if (a.flags.type == ak_no_type) {
        a.warn_uninit();
        return Mm(0.0);
    }
    if (error_numeric(a, "nnz")) return Mm(0.0);
    int count = 0;
    if (a.flags.type == ak_uchar) {
        const unsigned char* b = static_cast<const unsigned char*>(a.pr);
        for (int k = 0; k < a.nnz; ++k) count += b[k] != 0;
    } else {
        for (int k = 0; k < a.nnz; ++k) count += is_nonzero(a.addr(), a.addi(), k);
    }
    return Mm(static_cast<double>(count));
}

Mm nzmax(const Mm& a) {
    if (a.flags.type == ak_no_type) {
        a.warn_uninit();
        return Mm(0.0);
    }
    // The extra one of a sparse matrix is how this count has always been given.
    return Mm(a.flags.sparse ? a.nnz + 1.0 : static_cast<double>(a.size()));
}

Mm find(const Mm& a) {
    Mm p;
    return find_elements(a, p, nullptr, nullptr, nullptr) ? p : x_M;
}

Mm find(const Mm& a, i_o_t, Mm& j) {
    Mm p, i;
    if (!find_elements(a, p, &i, &j, nullptr)) return x_M;
    return i;
}

Mm find(const Mm& a, i_o_t, Mm& j, Mm& v) {
    Mm p, i;
    if (!find_elements(a, p, &i, &j, &v)) return x_M;
    return i;
}

Mm nonzeros(const Mm& a) {
    Mm p, v;
    if (!find_elements(a, p, nullptr, nullptr, &v)) return x_M;
    if (v.ndims == 2 && v.dims[0] == 1) v.reshape(v.dims[1], 1);
    return v;
}

Mm sp2coo(const Mm& a) {
    Mm p, i, j, v;
    if (!find_elements(a, p, &i, &j, &v)) return x_M;
    int n = p.nnz;
    int complex = v.pi != nullptr || a.pi != nullptr;
    Mm r(0, 0, 0, n + 1, complex ? 4 : 3, ak_double);
    double* c1 = r.addr();
    double* c2 = c1 + (n + 1);
    double* c3 = c2 + (n + 1);
    double* c4 = complex ? c3 + (n + 1) : nullptr;
    for (int k = 0; k < n; ++k) {
        c1[k] = i.addr()[k];
        c2[k] = j.addr()[k];
        c3[k] = v.addr()[k];
        if (c4) c4[k] = v.pi ? v.addi()[k] : 0.0;
    }
    // The last row records the size; its zero value leaves no entry behind in spconvert.
    int rows, cols;
    shape_2d(a, rows, cols);
    c1[n] = rows;
    c2[n] = cols;
    c3[n] = 0.0;
    if (c4) c4[n] = 0.0;
    return r;
}

// ---- rows of the table of functions by name ----------------------------------------------------
AK_BUILTIN("nnz", AK_FN(nnz, const Mm&));
AK_BUILTIN("nzmax", AK_FN(nzmax, const Mm&));
AK_BUILTIN("nonzeros", AK_FN(nonzeros, const Mm&));
AK_BUILTIN("find", AK_FN(find, const Mm&), AK_FN(find, const Mm&, i_o_t, Mm&),
           AK_FN(find, const Mm&, i_o_t, Mm&, Mm&));
AK_BUILTIN("sp2coo", AK_FN(sp2coo, const Mm&));
