// Building sparse matrices: from rows, columns and values (repeated positions added up), from a
// coordinate list, and the constructors speye, spzeros, spones and spalloc.
#include <cmath>
#include <cstring>
#include <utility>

#include "algebra/sparse_internal.h"
#include "arklib/calling.h"
#include "arklib/constructors.h"
#include "arklib/sparse.h"
#include "arklib/builtins.h"

using namespace ak_internal;

namespace {

// The first element's real part of a full double matrix, or `otherwise` when it is empty.
double first_value(const Mm& m, double otherwise) { return m.nnz > 0 ? m.addr()[0] : otherwise; }

// The largest real part, NaN left out; NaN if there is nothing else.
double largest(const Mm& m) {
    double best = std::nan("");
    for (int k = 0; k < m.nnz; ++k) {
        double x = m.addr()[k];
        if (x > best || (std::isnan(best) && !std::isnan(x))) best = x;
    }
    return best;
}

bool sorted_positions(const Mm& s) {
    for (int k = 1; k < s.nnz; ++k)
        if (s.index[k] < s.index[k - 1]) return false;
    return true;
}

bool has_stored_zero(const Mm& s) {
    for (int k = 0; k < s.nnz; ++k)
        if (!is_nonzero(s.addr(), s.addi(), k)) return true;
    return false;
}

// Gathers data[low 32 bits of key[k]] into place for k below n, through `buffer`.
void gather(double* data, const unsigned long long* key, int n, double* buffer) {
    for (int k = 0; k < n; ++k) buffer[k] = data[static_cast<unsigned>(key[k])];
    std::memcpy(data, buffer, sizeof(double) * static_cast<std::size_t>(n));
}

// One stable counting pass over the digit of `width` bits at `shift` of the keys.
void radix_pass(const unsigned long long* from, unsigned long long* to, int n, int shift, int width,
                int* slots) {
    const unsigned mask = (1u << width) - 1;
    std::memset(slots, 0, sizeof(int) * ((1u << width) + 1));
    for (int k = 0; k < n; ++k) ++slots[((from[k] >> shift) & mask) + 1];
    for (unsigned d = 0; d < mask + 1; ++d) slots[d + 1] += slots[d];
    for (int k = 0; k < n; ++k) to[slots[(from[k] >> shift) & mask]++] = from[k];
}

// Orders the entries by position, equal positions in their input order: the order of Mm::sort,
// reached by a radix sort in time linear in the entry count. Each key holds the position above
// the entry's input place, so that the passes move both together.
void order_by_position(Mm& s) {
    int n = s.nnz, top = 1;
    for (int k = 0; k < n; ++k) top = s.index[k] > top ? s.index[k] : top;
    int bits = 0;
    while (bits < 31 && (top >> bits) != 0) ++bits;
    int passes = bits <= 12 ? 1 : bits <= 24 ? 2 : 3;
    int width = (bits + passes - 1) / passes;
    ak_scratch<unsigned long long> keys(n), other(n);
    ak_scratch<int> slots((1 << width) + 1);
    ak_scratch<double> buffer(n);
    if (!keys.get() || !other.get() || !slots.get() || !buffer.get()) {
        s.sort();  // short of memory: the in-place sort needs less
        return;
    }
    for (int k = 0; k < n; ++k)
        keys[k] = static_cast<unsigned long long>(static_cast<unsigned>(s.index[k])) << 32 |
                  static_cast<unsigned>(k);
    unsigned long long *from = keys.get(), *to = other.get();
    for (int p = 0; p < passes; ++p) {
        radix_pass(from, to, n, 32 + p * width, width, slots);
        std::swap(from, to);
    }
    for (int k = 0; k < n; ++k) s.index[k] = static_cast<int>(from[k] >> 32);
    gather(s.addr(), from, n, buffer);
    if (s.pi) gather(s.addi(), from, n, buffer);
}

// Orders the entries by position, adds up repeated positions, and drops what is or became zero.
void settle_entries(Mm& s) {
    if (!sorted_positions(s)) order_by_position(s);
    s.resparse();
    // Sums that cancelled are still stored after the first pass.
    if (has_stored_zero(s)) s.resparse();
}

// The entries of the (i, j, v) form with the size given or taken from i and j.
Mm build_entries(const Mm& i0, const Mm& j0, const Mm& v0, const Mm* m0, const Mm* n0) {
    bool ok_i, ok_j, ok_v, ok_m = true, ok_n = true;
    Mm i = numeric_full(i0, "sparse", ok_i);
    Mm j = numeric_full(j0, "sparse", ok_j);
    Mm v = numeric_full(v0, "sparse", ok_v);
    Mm m = m0 ? numeric_full(*m0, "sparse", ok_m) : Mm();
    Mm n = n0 ? numeric_full(*n0, "sparse", ok_n) : Mm();
    if (!(ok_i && ok_j && ok_v && ok_m && ok_n)) return x_M;

    // One length for all three, from the first that is not a scalar; a scalar serves every entry.
    const Mm* lists[3] = {&i, &j, &v};
    int k = 1;
    for (const Mm* x : lists) {
        if (x->nnz != 1) {
            k = x->nnz;
            break;
        }
    }
    for (const Mm* x : lists) {
        if (x->nnz != 1 && x->nnz != k) {
            error("sparse: i,j and v must be same size");
            return x_M;
        }
    }

    double mv, nv;
    if (m0) {
        if (m.nnz == 0 || n.nnz == 0) return Mm(0, 1, 0, 1, 1, ak_double);
        mv = first_value(m, 0.0);
        nv = first_value(n, 0.0);
    } else {
        if (i.nnz == 0 || j.nnz == 0) return Mm(0, 1, 0, 1, 1, ak_double);
        mv = largest(i);
        nv = largest(j);
    }
    int rows = round_nonnegative(mv), cols = round_nonnegative(nv);

    Mm r = sparse_of_shape(v.pi != nullptr, k, rows, cols);
    if (r.nnz != k) return r;  // reported
    const double *ir = i.addr(), *jr = j.addr(), *vr = v.addr(), *vi = v.addi();
    int si = i.nnz == 1 ? 0 : 1, sj = j.nnz == 1 ? 0 : 1, sv = v.nnz == 1 ? 0 : 1;
    double* rr = r.addr();
    double* ri = r.addi();
    for (int e = 0; e < k; ++e) {
        int row = round_nonnegative(ir[si * e]), col = round_nonnegative(jr[sj * e]);
        const char* bad = row < 1      ? "sparse: non-positive row index encountered"
                          : row > rows ? "sparse: out of bounds row index encountered"
                          : col < 1    ? "sparse: non-positive column index encountered"
                          : col > cols ? "sparse: out of bounds column index encountered"
                                       : nullptr;
        if (bad) {
            error("%s", bad);
            return x_M;
        }
        r.index[e] = (col - 1) * rows + (row - 1);
        rr[e] = vr[sv * e];
        if (ri) ri[e] = vi[sv * e];
    }
    r.flags.logical = v.flags.logical;
    settle_entries(r);
    return r;
}

// Reads the size arguments of a sparse constructor: two dimensions only.
bool sparse_size(const char* fname, int count, const Mm* const args[], int& rows, int& cols) {
    int d[4];
    read_size_arguments(fname, count, args, d);
    if (d[2] != 1 || d[3] != 1) {
        error("%s: sparse matrices have two dimensions", fname);
        return false;
    }
    rows = d[0];
    cols = d[1];
    return true;
}

Mm sparse_identity(const char* fname, int count, const Mm* const args[]) {
    int rows, cols;
    if (!sparse_size(fname, count, args, rows, cols)) return x_M;
    int diagonal = rows < cols ? rows : cols;
    Mm r = sparse_of_shape(0, diagonal, rows, cols);
    if (r.nnz != diagonal) return r;  // reported
    for (int k = 0; k < diagonal; ++k) {
        r.index[k] = static_cast<int>(k * (rows + 1LL));
        r.addr()[k] = 1.0;
    }
    return r;
}

Mm sparse_empty(const char* fname, int count, const Mm* const args[]) {
    for (int k = 0; k < count; ++k)
        if (args[k]->flags.type != ak_no_type && args[k]->size() == 0) return Mm(0, 1, 0, 0, 0, ak_double);
    int rows, cols;
    if (!sparse_size(fname, count, args, rows, cols)) return x_M;
    return sparse_of_shape(0, 0, rows, cols);
}

}  // namespace

Mm sparse(const Mm& i, const Mm& j, const Mm& v) { return build_entries(i, j, v, nullptr, nullptr); }

Mm sparse(const Mm& i, const Mm& j, const Mm& v, const Mm& m, const Mm& n) {
    return build_entries(i, j, v, &m, &n);
}

// The room asked for is not needed: storage follows the entries.
Mm sparse(const Mm& i, const Mm& j, const Mm& v, const Mm& m, const Mm& n, const Mm&) {
    return build_entries(i, j, v, &m, &n);
}

Mm sparse(const Mm&, const Mm&, const Mm&, const Mm&) {
    error_input("sparse", 4);
    return x_M;
}

Mm sparse(const Mm& m, const Mm& n) { return spzeros(m, n); }

Mm spzeros(const Mm& x) {
    const Mm* args[1] = {&x};
    return sparse_empty("spzeros", 1, args);
}

Mm spzeros(const Mm& m, const Mm& n) {
    const Mm* args[2] = {&m, &n};
    return sparse_empty("spzeros", 2, args);
}

Mm speye() {
    Mm one(1.0);
    const Mm* args[1] = {&one};
    return sparse_identity("speye", 1, args);
}

Mm speye(const Mm& x) {
    const Mm* args[1] = {&x};
    return sparse_identity("speye", 1, args);
}

Mm speye(const Mm& m, const Mm& n) {
    const Mm* args[2] = {&m, &n};
    return sparse_identity("speye", 2, args);
}

Mm spones(const Mm& s0) {
    Mm s = sparse(s0);
    if (!s.flags.sparse) return s;  // reported
    Mm r(0, 1, s.nnz, s.ndims, s.dims, ak_double);
    for (int k = 0; k < r.nnz; ++k) {
        r.index[k] = s.index[k];
        r.addr()[k] = 1.0;
    }
    return r;
}

Mm spalloc(const Mm& m0, const Mm& n0, const Mm& nz0) {
    bool ok_m, ok_n, ok_z;
    Mm m = numeric_full(m0, "spalloc", ok_m);
    Mm n = numeric_full(n0, "spalloc", ok_n);
    Mm nz = numeric_full(nz0, "spalloc", ok_z);
    if (!(ok_m && ok_n && ok_z)) return x_M;
    int rows = round_nonnegative(first_value(m, 0.0)), cols = round_nonnegative(first_value(n, 0.0));
    long long room = static_cast<long long>(rows) * cols;
    long long count = round_nonnegative(first_value(nz, 0.0));
    if (count > room) count = room;                                    // no more entries than elements
    if (count > max_sparse_entries) count = max_sparse_entries + 1LL;  // refused below
    Mm r = sparse_of_shape(0, static_cast<int>(count), rows, cols);
    // Explicit zeros on the first positions, already in order.
    for (int k = 0; k < r.nnz; ++k) {
        r.index[k] = k;
        r.addr()[k] = 0.0;
    }
    return r;
}

Mm spalloc(const Mm&) {
    error_input("spalloc", 1);
    return x_M;
}

Mm spalloc(const Mm&, const Mm&) {
    error_input("spalloc", 2);
    return x_M;
}

Mm spconvert(const Mm& d0) {
    bool ok;
    Mm d = numeric_full(d0, "spconvert", ok);
    if (!ok) return x_M;
    if (d.nnz == 0) return speye(Mm(0.0));
    int rows = d.dims[0], cols = d.nnz / rows;
    if (cols != 3 && cols != 4) {
        error("spconvert: matrix '%s' must have 3 or 4 columns", display_name(d0));
        return x_M;
    }
    // Rows, columns and values as columns of their own; a fourth column is the imaginary half. The
    // size is the largest row and column of all entries. Entries of value 0 add nothing, and are left
    // out: so the size row of sp2coo, (rows, cols, 0), serves a matrix without rows or columns too.
    const double* re = d.addr();
    const double* im = d.addi();
    auto value = [&](int k, double& vr, double& vi) {
        vr = re[2 * rows + k];
        vi = im ? im[2 * rows + k] : 0.0;
        if (cols == 4) {  // v + 1i * w
            vr -= im ? im[3 * rows + k] : 0.0;
            vi += re[3 * rows + k];
        }
        return vr != 0.0 || vi != 0.0;
    };
    double m = re[0], n = re[rows], vr, vi;
    int count = 0;
    for (int k = 0; k < rows; ++k) {
        if (re[k] > m) m = re[k];
        if (re[rows + k] > n) n = re[rows + k];
        if (value(k, vr, vi)) ++count;
    }
    bool complex = cols == 4 || d.pi;
    Mm i(0, 0, 0, count, 1, ak_double), j(0, 0, 0, count, 1, ak_double);
    Mm v(complex, 0, 0, count, 1, ak_double);
    for (int k = 0, e = 0; k < rows; ++k) {
        if (!value(k, vr, vi)) continue;
        i.addr()[e] = re[k];
        j.addr()[e] = re[rows + k];
        v.addr()[e] = vr;
        if (complex) v.addi()[e] = vi;
        ++e;
    }
    return sparse(i, j, v, Mm(m), Mm(n));
}

// ---- rows of the table of functions by name ----------------------------------------------------
AK_BUILTIN("sparse", AK_FN(sparse, const Mm&), AK_FN(sparse, const Mm&, const Mm&),
           AK_FN(sparse, const Mm&, const Mm&, const Mm&),
           AK_FN(sparse, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&),
           AK_FN(sparse, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&),
           AK_FN(sparse, const Mm&, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("spconvert", AK_FN(spconvert, const Mm&));
AK_BUILTIN("speye", AK_FN(speye), AK_FN(speye, const Mm&), AK_FN(speye, const Mm&, const Mm&));
AK_BUILTIN("spzeros", AK_FN(spzeros, const Mm&), AK_FN(spzeros, const Mm&, const Mm&));
AK_BUILTIN("spones", AK_FN(spones, const Mm&));
AK_BUILTIN("spalloc", AK_FN(spalloc, const Mm&, const Mm&, const Mm&), AK_FN(spalloc, const Mm&),
           AK_FN(spalloc, const Mm&, const Mm&));
