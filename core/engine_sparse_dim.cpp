// Reductions and running sums and products of sparse matrices, computed on the stored entries.
// Each run (a column, or a row through the transpose) is walked once over its entries; the zeros
// between them take part exactly as they do in the loops over full data, so the values equal those
// of the full computation: a gap of zeros leaves a sum as it is, multiplies a product by 0 once
// (again changes nothing but the sign of a zero, which a sparse result does not store), and offers
// its first zero to max and min.
#include <cmath>
#include <limits>
#include <vector>

#include "algebra/complex_scalar.h"
#include "algebra/sparse_internal.h"
#include "algebra/sparse_walk.h"
#include "arklib/sparse.h"
#include "core/engine_internal.h"

namespace {

using namespace ak_internal;

constexpr double inf = std::numeric_limits<double>::infinity();

// The entries of one run: entry k lies at row idx[k] - base of a run of `len` elements.
struct run {
    const int* idx;
    const double* re;
    const double* im;  // null for a real matrix
    int first, last;   // entries first .. last-1
    long long base;
    int len;
    int row(int k) const { return static_cast<int>(idx[k] - base); }
    double x(int k) const { return re[k]; }
    double y(int k) const { return im ? im[k] : 0.0; }
};

// Entries of the result, in ascending position; values that are exactly 0 in both halves are not
// kept (NaN is).
struct entry_list {
    std::vector<int> pos;
    std::vector<double> re, im;
    bool full = false;  // more entries than a sparse matrix may hold: the rest are dropped
    void push(long long p, double r, double i) {
        if (r == 0.0 && i == 0.0) return;
        if (pos.size() >= static_cast<std::size_t>(max_sparse_entries)) {
            full = true;
            return;
        }
        pos.push_back(static_cast<int>(p));
        re.push_back(r);
        im.push_back(i);
    }
};

// Running product step, the same as the full loops': complex product for complex data.
inline void multiply(bool c, double& p, double& pi, double x, double y) {
    if (c)
        c_mul(p, pi, x, y, p, pi);
    else
        p *= x;
}

// The value of one reduction over a run; `index` gets the 1-based place of max and min.
void reduce_run(op_t op, const run& r, bool several, double& vr, double& vi, double& index) {
    const bool c = r.im != nullptr;
    const int count = r.last - r.first;
    vr = vi = 0.0;
    index = 1.0;
    switch (op) {
        case op_sum:
            for (int k = r.first; k < r.last; ++k) {
                vr += r.x(k);
                if (c) vi += r.y(k);
            }
            return;
        case op_prod: {
            double p = 1.0, pi = 0.0;
            int expect = 0;
            for (int k = r.first; k < r.last; ++k) {
                if (r.row(k) > expect) multiply(c, p, pi, 0.0, 0.0);
                multiply(c, p, pi, r.x(k), r.y(k));
                expect = r.row(k) + 1;
            }
            if (expect < r.len) multiply(c, p, pi, 0.0, 0.0);
            vr = p, vi = pi;
            return;
        }
        case op_all:
            vr = count == r.len ? 1.0 : 0.0;
            for (int k = r.first; k < r.last && vr != 0.0; ++k)
                if (r.x(k) == 0.0 && r.y(k) == 0.0) vr = 0.0;
            return;
        case op_any:
            for (int k = r.first; k < r.last && vr == 0.0; ++k)
                if (r.x(k) != 0.0 || r.y(k) != 0.0) vr = 1.0;
            return;
        case op_max_1:
        case op_min_1: {
            // The full loop starts from the first element and lets a later one win only when it is
            // strictly better; of the zeros not stored only the first can ever win.
            const int sign = op == op_max_1 ? 1 : -1;
            int zero_row = 0;
            for (int k = r.first; k < r.last && r.row(k) == zero_row; ++k) ++zero_row;
            const bool has_zero = zero_row < r.len;
            const bool stored_first = count > 0 && r.row(r.first) == 0;
            double br = stored_first ? r.x(r.first) : 0.0, bi = stored_first ? r.y(r.first) : 0.0;
            double key = c ? c_abs2(br, bi) : br;
            if (std::isnan(key) && several) key = br = sign > 0 ? -inf : inf, bi = 0.0;
            int best = 0;
            auto offer = [&](int row, double x, double y) {
                double m = c ? c_abs2(x, y) : x;
                if (sign > 0 ? m > key : m < key) key = m, br = x, bi = y, best = row;
            };
            bool zero_offered = !has_zero;
            for (int k = r.first; k < r.last; ++k) {
                if (!zero_offered && zero_row < r.row(k)) offer(zero_row, 0.0, 0.0), zero_offered = true;
                offer(r.row(k), r.x(k), r.y(k));
            }
            if (!zero_offered) offer(zero_row, 0.0, 0.0);
            vr = br, vi = c ? bi : 0.0;
            index = best + 1.0;
            return;
        }
        default:
            return;
    }
}

// The running sum or product over a run, each non-zero value given to emit(row, re, im).
template <class Emit>
void scan_run(op_t op, const run& r, Emit emit) {
    const bool c = r.im != nullptr;
    if (op == op_cumsum) {
        double sr = 0.0, si = 0.0;
        int row = r.first < r.last ? r.row(r.first) : r.len;
        for (int k = r.first; k < r.last; ++k) {
            int next = r.row(k);
            if (sr != 0.0 || si != 0.0)
                for (; row < next; ++row) emit(row, sr, si);
            sr += r.x(k);
            if (c) si += r.y(k);
            emit(next, sr, si);
            row = next + 1;
        }
        if (sr != 0.0 || si != 0.0)
            for (; row < r.len; ++row) emit(row, sr, si);
        return;
    }
    // cumprod: a zero between entries makes the product 0, or NaN from an infinite or NaN one, and
    // a product of 0 stays 0 over further zeros.
    double p = 1.0, pi = 0.0;
    int row = 0;
    auto gap = [&](int until) {
        for (; row < until && (p != 0.0 || pi != 0.0); ++row) {
            multiply(c, p, pi, 0.0, 0.0);
            emit(row, p, pi);
        }
        row = until;
    };
    for (int k = r.first; k < r.last; ++k) {
        gap(r.row(k));
        multiply(c, p, pi, r.x(k), r.y(k));
        emit(row, p, pi);
        ++row;
    }
    gap(r.len);
}

// Calls f(run) for every column of a 2-D sparse matrix that has entries, in order; the run length
// is the row count. One division per column with entries.
template <class F>
void for_each_column(const Mm& a, F f) {
    const int m = a.dims[0];
    run r{a.index, a.addr(), a.addi(), 0, 0, 0, m};
    for (int k = 0; k < a.nnz;) {
        long long col = a.index[k] / m;
        long long base = col * m, next = base + m;
        int e = k + 1;
        while (e < a.nnz && a.index[e] < next) ++e;
        r.first = k, r.last = e, r.base = base;
        f(static_cast<int>(col), r);
        k = e;
    }
}

Mm sparse_of(int complex, int nd, const int* dims, const entry_list& e, bool want_imag) {
    int n = static_cast<int>(e.pos.size());
    Mm r(complex, 1, n, nd, dims, ak_double);
    for (int k = 0; k < n && k < r.nnz; ++k) {
        r.index[k] = e.pos[k];
        r.addr()[k] = e.re[k];
        if (r.pi) r.addi()[k] = want_imag ? e.im[k] : 0.0;
    }
    r.nnz = n < r.nnz ? n : r.nnz;
    return r;
}

// Sums down the columns in one pass over the entries, straight into the result. False when the
// positions do not ascend (the caller then takes the full route).
bool column_sums(int complex, const Mm& a, int nd, const int* rdims, Mm& result) {
    const int nz = a.nnz, n = a.dims[1];
    Mm r(complex, 1, nz < n ? nz : n, nd, rdims, ak_double);
    const double* re = a.addr();
    const double* im = a.addi();
    double* rr = r.addr();
    double* ri = r.addi();
    column_cursor at(a.dims[0]);
    int count = 0, col = -1, last = -1;
    double sr = 0.0, si = 0.0;
    auto flush = [&] {
        if (col < 0 || (sr == 0.0 && si == 0.0)) return;
        r.index[count] = col;
        rr[count] = sr;
        if (ri) ri[count] = si;
        ++count;
    };
    for (int k = 0; k < nz; ++k) {
        const int pos = a.index[k];
        if (pos <= last) return false;
        last = pos;
        at.row(pos);
        if (at.col != col) {
            flush();
            col = at.col, sr = 0.0, si = 0.0;
        }
        sr += re[k];
        if (im) si += im[k];
    }
    flush();
    r.nnz = count;
    result = r;
    return true;
}

// Sums along the rows with one accumulator per row: the order of the additions in each row is the
// column order, as in the full loop.
Mm row_sums(int complex, const Mm& a, int nd, const int* rdims) {
    const int m = a.dims[0];
    const bool c = a.pi != nullptr;
    std::vector<double> sr(static_cast<std::size_t>(m), 0.0), si(c ? static_cast<std::size_t>(m) : 0, 0.0);
    const double* re = a.addr();
    const double* im = a.addi();
    column_cursor at(m);
    for (int k = 0; k < a.nnz; ++k) {
        const int row = at.row(a.index[k]);
        sr[row] += re[k];
        if (c) si[row] += im[k];
    }
    int count = 0;
    for (int row = 0; row < m; ++row) count += sr[row] != 0.0 || (c && si[row] != 0.0);
    Mm r(complex, 1, count, nd, rdims, ak_double);
    double* rr = r.addr();
    double* ri = r.addi();
    for (int row = 0, k = 0; row < m && k < r.nnz; ++row) {
        if (sr[row] == 0.0 && !(c && si[row] != 0.0)) continue;
        r.index[k] = row;
        rr[k] = sr[row];
        if (ri) ri[k] = c ? si[row] : 0.0;
        ++k;
    }
    return r;
}

// The operation along the columns (d = 1) of a 2-D sparse matrix.
Mm along_columns(int complex, const Mm& a, op_t op, int nd, const int* rdims, Mm* index) {
    entry_list out;
    const int n = a.dims[1], m = a.dims[0];
    const bool several = a.size() > 1;
    if (op == op_cumsum || op == op_cumprod) {
        // A running form can fill every place of a run after its first entry; refused before the
        // walk when that could be more than a sparse matrix may hold.
        long long most = 0;
        for_each_column(a, [&](int, const run& r) { most += r.len - r.row(r.first); });
        if (most > max_sparse_entries) {
            error("Out of memory!");
            return x_M;
        }
        for_each_column(a, [&](int col, const run& r) {
            if (out.full) return;
            long long base = static_cast<long long>(col) * m;
            scan_run(op, r, [&](int row, double x, double y) { out.push(base + row, x, y); });
        });
        if (out.full) {
            // A running sum fills every place after the first entry of its run: more than the
            // position list can hold.
            error("Out of memory!");
            return x_M;
        }
        return sparse_of(complex, nd, rdims, out, true);
    }
    double* where = index ? index->addr() : nullptr;
    if (where)
        for (int c = 0; c < n; ++c) where[c] = 1.0;
    // Max and min of a column without entries: 0 at row 1, like every other empty run.
    for_each_column(a, [&](int col, const run& r) {
        double vr, vi, at;
        reduce_run(op, r, several, vr, vi, at);
        out.push(col, vr, vi);
        if (where) where[col] = at;
    });
    return sparse_of(complex, nd, rdims, out, true);
}

// Along a dimension of size 1 every element is its own run.
Mm along_singleton(int complex, const Mm& a, op_t op, int nd, const int* rdims, Mm* index) {
    entry_list out;
    const bool several = a.size() > 1;
    run r{a.index, a.addr(), a.addi(), 0, 0, 0, 1};
    for (int k = 0; k < a.nnz; ++k) {
        r.first = k, r.last = k + 1, r.base = a.index[k];
        if (op == op_cumsum || op == op_cumprod) {
            scan_run(op, r, [&](int, double x, double y) { out.push(a.index[k], x, y); });
        } else {
            double vr, vi, at;
            reduce_run(op, r, several, vr, vi, at);
            out.push(a.index[k], vr, vi);
        }
    }
    if (index) {
        double* where = index->addr();
        for (int k = 0; k < index->nnz; ++k) where[k] = 1.0;
    }
    return sparse_of(complex, nd, rdims, out, true);
}

bool ascending(const Mm& a) {
    for (int k = 1; k < a.nnz; ++k)
        if (a.index[k] <= a.index[k - 1]) return false;
    return a.nnz == 0 || (a.index[0] >= 0 && a.index[a.nnz - 1] < a.size());
}

}  // namespace

namespace ak_internal {

bool sparse_dim_operation(int complex, const Mm& a, int d, op_t op, Mm& extra, Mm& result) {
    switch (op) {
        case op_sum:
        case op_prod:
        case op_all:
        case op_any:
        case op_max_1:
        case op_min_1:
        case op_cumsum:
        case op_cumprod:
            break;
        default:
            return false;
    }
    // A 1x1 matrix and an empty one keep the full route, which is small for both.
    if (a.flags.type != ak_double || a.ndims != 2 || a.size() <= 1) return false;
    // The common sum down the columns checks the order of the positions as it goes.
    const bool plain_sum = op == op_sum && (d == 1 || (d == 0 && a.nsingleton() == 1));
    if (!plain_sum && !ascending(a)) return false;
    // The messages of the full route, whose operand is a temporary.
    if (d == -1) {
        error("%s: dim argument may not be empty", op_name(op));
        result = x_M;
        return true;
    }
    if (d == 0) d = a.nsingleton();
    if (d < 1 || d > 4) {
        error("%s: dimension=%d does not exist for matrix %s", op_name(op), d, "(temporary)");
        result = x_M;
        return true;
    }
    const bool scan = op == op_cumsum || op == op_cumprod;
    int rdims[4] = {a.dims[0], a.dims[1], a.dims[2], a.dims[3]};
    if (!scan) rdims[d - 1] = 1;
    const int nd = d > 2 ? d : 2;
    const bool want_index = (op == op_max_1 || op == op_min_1) && !is_lM(extra);
    Mm index = want_index ? Mm(0, 0, 0, nd, rdims, ak_double) : Mm();
    Mm* where = want_index ? &index : nullptr;
    if (plain_sum) return column_sums(complex, a, nd, rdims, result);
    if (d >= 3) {
        result = along_singleton(complex, a, op, nd, rdims, where);
    } else if (d == 1) {
        result = along_columns(complex, a, op, nd, rdims, where);
    } else if (op == op_sum && a.dims[0] <= 2LL * a.nnz + 4096) {
        result = row_sums(complex, a, nd, rdims);
    } else {
        // Rows of a are the columns of its transpose; a reduction's result keeps its positions, a
        // running form is transposed back.
        Mm t = sparse_transpose(a);
        int tdims[4] = {t.dims[0], t.dims[1], 1, 1};
        if (!scan) tdims[0] = 1;
        Mm r = along_columns(complex, t, op, 2, tdims, where);
        if (scan) {
            result = sparse_transpose(r);
        } else {
            r.dims[0] = rdims[0];
            r.dims[1] = rdims[1];
            result = r;
        }
    }
    if (want_index) extra = index;
    return true;
}

}  // namespace ak_internal
