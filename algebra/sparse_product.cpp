// The transpose of a sparse matrix and the matrix products with a sparse factor, all in time that
// follows the stored entries: sparse x full and full x sparse are sums of scaled columns, sparse x
// sparse is the column-merge (Gustavson) product with one dense accumulator.
#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <utility>
#include <vector>

#include "algebra/sparse_internal.h"
#include "algebra/sparse_walk.h"
#include "arklib/sparse.h"

namespace {

using namespace ak_internal;

inline bool finite(double x) { return std::isfinite(x); }

// Compressed columns of a sparse matrix: jc[c] .. jc[c+1]-1 are the entries of column c, ir their
// rows.
struct columns {
    std::vector<int> jc, ir;
};

columns compress(const Mm& a) {
    columns c;
    const int n = a.dims[1] > 0 ? a.dims[1] : 0;
    c.jc.assign(static_cast<std::size_t>(n) + 1, 0);
    c.ir.resize(static_cast<std::size_t>(a.nnz));
    column_cursor at(a.dims[0]);
    for (int k = 0; k < a.nnz; ++k) {
        c.ir[k] = at.row(a.index[k]);
        ++c.jc[at.col + 1];
    }
    for (int j = 0; j < n; ++j) c.jc[j + 1] += c.jc[j];
    return c;
}

// Whether b stores an entry at (row, col).
bool stored(const Mm& b, int row, int col) {
    long long pos = static_cast<long long>(col) * b.dims[0] + row;
    const int* first = b.index;
    const int* end = first + b.nnz;
    const int* at = std::lower_bound(first, end, static_cast<int>(pos));
    return at != end && *at == pos;
}

bool all_finite(const Mm& m) {
    const double* re = m.addr();
    const double* im = m.addi();
    for (int k = 0; k < m.nnz; ++k)
        if (!finite(re[k]) || (im && !finite(im[k]))) return false;
    return true;
}

// What a zero of a factor with (or without) an imaginary half adds to a product when it meets the
// element (x, y) of the other factor, as the split real products of the full form compute it: 0 or
// -0 for a finite element, NaN where the element is infinite or NaN.
struct zero_term {
    double re, im;
    zero_term(bool zero_complex, double x, double y)
        : re(zero_complex ? 0.0 * x - 0.0 * y : 0.0 * x), im(zero_complex ? 0.0 * y + 0.0 * x : 0.0 * y) {}
};

void add_term(Mm& c, std::size_t at, const zero_term& t) {
    c.addr()[at] += t.re;
    if (c.pi) c.addi()[at] += t.im;
}

// ---- sparse x full ------------------------------------------------------------------------------------

// c += sign * (values of a on its pattern) * b, for an m x k sparse a and a full k x n b.
void sparse_full_kernel(const Mm& a, const double* av, const double* b, double* c, int k, int n, double sign) {
    const int m = a.dims[0];
    if (n == 1) {
        // The common case: one pass over the entries.
        column_cursor at(m);
        double x = 0.0;
        int col = -1;
        for (int e = 0; e < a.nnz; ++e) {
            int row = at.row(a.index[e]);
            if (at.col != col) col = at.col, x = sign * b[col];
            c[row] += av[e] * x;
        }
        return;
    }
    for (int j = 0; j < n; ++j) {
        const double* bj = b + static_cast<std::size_t>(j) * k;
        double* cj = c + static_cast<std::size_t>(j) * m;
        column_cursor at(m);
        for (int e = 0; e < a.nnz; ++e) {
            int row = at.row(a.index[e]);
            cj[row] += av[e] * (sign * bj[at.col]);
        }
    }
}

// Where a NaN or infinite element b(p, j) meets a zero of column p of a, the full product is NaN.
void sparse_full_nonfinite(const Mm& a, const Mm& b, Mm& c) {
    if (all_finite(b)) return;
    const int m = a.dims[0], k = b.dims[0], n = b.dims[1];
    columns ca = compress(a);
    std::vector<char> in_column(static_cast<std::size_t>(m));
    for (int j = 0; j < n; ++j)
        for (int p = 0; p < k; ++p) {
            std::size_t at = static_cast<std::size_t>(j) * k + p;
            if (finite(b.addr()[at]) && (!b.pi || finite(b.addi()[at]))) continue;
            zero_term t(a.pi != nullptr, b.addr()[at], b.pi ? b.addi()[at] : 0.0);
            std::fill(in_column.begin(), in_column.end(), 0);
            for (int e = ca.jc[p]; e < ca.jc[p + 1]; ++e) in_column[ca.ir[e]] = 1;
            for (int i = 0; i < m; ++i)
                if (!in_column[i]) add_term(c, static_cast<std::size_t>(j) * m + i, t);
        }
}

Mm sparse_times_full(const Mm& a, const Mm& b) {
    const int m = a.dims[0], k = a.dims[1], n = b.dims[1];
    Mm c(a.pi || b.pi, 0, 0, m, n, ak_double);
    if (c.nnz == 0) return c;
    std::memset(c.pr, 0, sizeof(double) * static_cast<std::size_t>(c.nnz));
    if (c.pi) std::memset(c.pi, 0, sizeof(double) * static_cast<std::size_t>(c.nnz));
    sparse_full_kernel(a, a.addr(), b.addr(), c.addr(), k, n, 1.0);
    if (a.pi && b.pi) sparse_full_kernel(a, a.addi(), b.addi(), c.addr(), k, n, -1.0);
    if (b.pi) sparse_full_kernel(a, a.addr(), b.addi(), c.addi(), k, n, 1.0);
    if (a.pi) sparse_full_kernel(a, a.addi(), b.addr(), c.addi(), k, n, 1.0);
    sparse_full_nonfinite(a, b, c);
    return c;
}

// ---- full x sparse ----------------------------------------------------------------------------------

// c += sign * a * (values of b on its pattern): column j of c gains b(p, j) times column p of a.
void full_sparse_kernel(const double* a, const Mm& b, const double* bv, double* c, int m, double sign) {
    column_cursor at(b.dims[0]);
    for (int e = 0; e < b.nnz; ++e) {
        int p = at.row(b.index[e]);
        const double v = sign * bv[e];
        const double* ap = a + static_cast<std::size_t>(p) * m;
        double* cj = c + static_cast<std::size_t>(at.col) * m;
        for (int i = 0; i < m; ++i) cj[i] += ap[i] * v;
    }
}

// Where a NaN or infinite element a(i, p) meets a zero of row p of b, the full product is NaN.
void full_sparse_nonfinite(const Mm& a, const Mm& b, Mm& c) {
    if (all_finite(a)) return;
    const int m = a.dims[0], k = a.dims[1], n = b.dims[1];
    for (int p = 0; p < k; ++p)
        for (int i = 0; i < m; ++i) {
            std::size_t at = static_cast<std::size_t>(p) * m + i;
            if (finite(a.addr()[at]) && (!a.pi || finite(a.addi()[at]))) continue;
            zero_term t(b.pi != nullptr, a.addr()[at], a.pi ? a.addi()[at] : 0.0);
            for (int j = 0; j < n; ++j)
                if (!stored(b, p, j)) add_term(c, static_cast<std::size_t>(j) * m + i, t);
        }
}

Mm full_times_sparse(const Mm& a, const Mm& b) {
    const int m = a.dims[0], n = b.dims[1];
    Mm c(a.pi || b.pi, 0, 0, m, n, ak_double);
    if (c.nnz == 0) return c;
    std::memset(c.pr, 0, sizeof(double) * static_cast<std::size_t>(c.nnz));
    if (c.pi) std::memset(c.pi, 0, sizeof(double) * static_cast<std::size_t>(c.nnz));
    full_sparse_kernel(a.addr(), b, b.addr(), c.addr(), m, 1.0);
    if (a.pi && b.pi) full_sparse_kernel(a.addi(), b, b.addi(), c.addr(), m, -1.0);
    if (b.pi) full_sparse_kernel(a.addr(), b, b.addi(), c.addi(), m, 1.0);
    if (a.pi) full_sparse_kernel(a.addi(), b, b.addr(), c.addi(), m, 1.0);
    full_sparse_nonfinite(a, b, c);
    return c;
}

// ---- sparse x sparse ---------------------------------------------------------------------------------

// An entry that is NaN or infinite in either half.
struct nonfinite {
    int first, second;  // row, column
    double value_re, value_im;
};

std::vector<nonfinite> nonfinite_entries(const Mm& a) {
    std::vector<nonfinite> list;
    column_cursor at(a.dims[0]);
    for (int e = 0; e < a.nnz; ++e) {
        int row = at.row(a.index[e]);
        double x = a.addr()[e], y = a.pi ? a.addi()[e] : 0.0;
        if (!finite(x) || !finite(y)) list.push_back({row, at.col, x, y});
    }
    return list;
}

Mm sparse_times_sparse(const Mm& a, const Mm& b) {
    const int m = a.dims[0], k = a.dims[1], n = b.dims[1];
    const bool complex = a.pi || b.pi;
    if (static_cast<long long>(m) * n > INT_MAX) return sparse_of_shape(complex, 0, m, n);  // reports
    columns ca = compress(a);
    const double *ar = a.addr(), *ai = a.addi(), *br = b.addr(), *bi = b.addi();
    std::vector<double> acc_r(static_cast<std::size_t>(m), 0.0), acc_i(complex ? static_cast<std::size_t>(m) : 0, 0.0);
    std::vector<int> mark(static_cast<std::size_t>(m), -1), rows;
    std::vector<int> pos;
    std::vector<double> vr, vi;
    std::vector<nonfinite> bad_a = nonfinite_entries(a);
    auto touch = [&](int i, int j) {
        if (mark[i] != j) {
            mark[i] = j;
            rows.push_back(i);
            acc_r[i] = 0.0;
            if (complex) acc_i[i] = 0.0;
        }
    };
    column_cursor at(k);
    int e = 0;
    for (int j = 0; j < n; ++j) {
        rows.clear();
        long long end = static_cast<long long>(j + 1) * k;
        for (; e < b.nnz && b.index[e] < end; ++e) {
            const int p = at.row(b.index[e]);
            const double xr = br[e], xi = bi ? bi[e] : 0.0;
            for (int q = ca.jc[p]; q < ca.jc[p + 1]; ++q) {
                const int i = ca.ir[q];
                touch(i, j);
                if (!complex) {
                    acc_r[i] += ar[q] * xr;
                } else {
                    const double yr = ar[q], yi = ai ? ai[q] : 0.0;
                    acc_r[i] += yr * xr - yi * xi;
                    acc_i[i] += yr * xi + yi * xr;
                }
            }
            if (!finite(xr) || !finite(xi)) {
                // Every zero of column p of a meets this element.
                std::vector<char> in_column(static_cast<std::size_t>(m));
                for (int q = ca.jc[p]; q < ca.jc[p + 1]; ++q) in_column[ca.ir[q]] = 1;
                zero_term t(ai != nullptr, xr, xi);
                for (int i = 0; i < m; ++i) {
                    if (in_column[i]) continue;
                    touch(i, j);
                    acc_r[i] += t.re;
                    if (complex) acc_i[i] += t.im;
                }
            }
        }
        for (const auto& bad : bad_a)
            if (!stored(b, bad.second, j)) {
                const int i = bad.first;
                zero_term t(bi != nullptr, bad.value_re, bad.value_im);
                touch(i, j);
                acc_r[i] += t.re;
                if (complex) acc_i[i] += t.im;
            }
        std::sort(rows.begin(), rows.end());
        for (int i : rows) {
            double r = acc_r[i], im = complex ? acc_i[i] : 0.0;
            if (r == 0.0 && im == 0.0) continue;
            pos.push_back(j * m + i);
            vr.push_back(r);
            if (complex) vi.push_back(im);
        }
    }
    const int count = static_cast<int>(pos.size());
    Mm c = sparse_of_shape(complex, count, m, n);
    if (c.nnz < count || count == 0) return c;
    std::memcpy(c.index, pos.data(), sizeof(int) * static_cast<std::size_t>(count));
    std::memcpy(c.pr, vr.data(), sizeof(double) * static_cast<std::size_t>(count));
    if (complex) std::memcpy(c.pi, vi.data(), sizeof(double) * static_cast<std::size_t>(count));
    return c;
}

}  // namespace

namespace ak_internal {

Mm sparse_transpose(const Mm& a) {
    const int m = a.dims[0], n = a.dims[1], nz = a.nnz;
    const bool complex = a.pi != nullptr;
    Mm t = sparse_of_shape(complex, nz, n, m);
    t.flags.logical = a.flags.logical;
    if (t.nnz < nz || nz == 0) return t;
    const double* re = a.addr();
    const double* im = a.addi();
    std::vector<int> rows(static_cast<std::size_t>(nz)), cols(static_cast<std::size_t>(nz));
    column_cursor at(m);
    for (int e = 0; e < nz; ++e) rows[e] = at.row(a.index[e]), cols[e] = at.col;
    auto place = [&](int e, int to) {
        t.index[to] = static_cast<int>(static_cast<long long>(rows[e]) * n + cols[e]);
        t.addr()[to] = re[e];
        if (complex) t.addi()[to] = im[e];
    };
    if (m <= 2LL * nz + 4096) {
        // Counting by row: each new column receives its entries in the old column order, which is
        // its row order.
        std::vector<int> start(static_cast<std::size_t>(m) + 1, 0);
        for (int e = 0; e < nz; ++e) ++start[rows[e] + 1];
        for (int r = 0; r < m; ++r) start[r + 1] += start[r];
        for (int e = 0; e < nz; ++e) place(e, start[rows[e]]++);
    } else {
        // Few entries in very many rows: sort the entries by their new position.
        std::vector<int> order(static_cast<std::size_t>(nz));
        for (int e = 0; e < nz; ++e) order[e] = e;
        std::sort(order.begin(), order.end(), [&](int x, int y) {
            return rows[x] != rows[y] ? rows[x] < rows[y] : cols[x] < cols[y];
        });
        for (int e = 0; e < nz; ++e) place(order[e], e);
    }
    return t;
}

Mm sparse_mtimes(const Mm& a, const Mm& b) {
    if (a.flags.sparse && b.flags.sparse) return sparse_times_sparse(a, b);
    if (a.flags.sparse) return sparse_times_full(a, b);
    return full_times_sparse(a, b);
}

}  // namespace ak_internal
