// The plain assignment routes x(i) = y and x(i,j) = y of dense matrices with at most two dimensions:
// growth within the capacity, deletion with [], colon and logical indices, for double, byte and
// cell elements. A write of one scalar inside the matrix takes a short path with no allocation.
#include <algorithm>
#include <cstring>

#include "arklib/sparse.h"
#include "arklib/subscript.h"
#include "core/assign_route.h"

namespace ak_internal {

bool fresh_matrix(const Mm& like, int complex, int nd, const int* dims, Mm& out) {
    const ak_matrix_types type = like.flags.type;
    if (type == ak_mm) complex = 0;
    long long want = 1;
    for (int k = 0; k < nd; ++k) {
        want *= dims[k] < 0 ? 0 : dims[k];
        if (want > INT_MAX) {
            error("Out of memory!");
            return false;
        }
    }
    out = Mm(complex, 0, 0, nd, dims, type);
    return out.nnz == want && (!complex || out.pi);
}

bool fresh_matrix_room(const Mm& like, int complex, int nd, const int* dims, long long room, Mm& out) {
    long long want = 1;
    for (int k = 0; k < nd; ++k) want *= dims[k] < 0 ? 0 : dims[k];
    if (want == 0 || want > INT_MAX || room <= want) return fresh_matrix(like, complex, nd, dims, out);
    // Allocated as a row of `room` elements, then given its shape: the capacity stays.
    const ak_matrix_types type = like.flags.type;
    out = Mm(type == ak_mm ? 0 : complex, 0, 0, 1, static_cast<int>(room), type);
    if (out.nnz != room || (complex && type != ak_mm && !out.pi)) return false;
    out.ndims = nd < 2 ? 2 : nd;
    for (int k = 0; k < 4; ++k) out.dims[k] = k < nd ? dims[k] : 1;
    while (out.ndims > 2 && out.dims[out.ndims - 1] == 1) --out.ndims;
    out.nnz = static_cast<int>(want);
    return true;
}

const Mm* settle_source(const Mm& x, const Mm& y, Mm& converted) {
    if (y.flags.type == ak_no_type) {
        y.warn_uninit();
        return nullptr;
    }
    if (y.flags.type == x.flags.type && !y.flags.sparse) return &y;
    if (y.flags.type == ak_mm) {
        error("Can not convert %s into a numeric matrix", display_name(y));
        return nullptr;
    }
    converted = y.flags.sparse ? full(y) : y;
    if (converted.flags.type != x.flags.type) converted.deepcopy(converted, x.flags.type);
    return &converted;
}

const Mm& double_index(const Mm& i, Mm& converted) {
    if (i.flags.type == ak_double) return i;
    converted = subsindex(i);
    return converted;
}

namespace {

// ---- the scalar writes that translated loops live on --------------------------------------------

// x(k) = v and x(r,c) = v for a real dense double x that this head alone holds, a real scalar v and
// plain scalar indices inside x. False for everything else, which takes the full route.
inline bool plain_scalar(const Mm& x, const Mm& y) {
    return x.flags.type == ak_double && y.flags.type == ak_double && y.nnz == 1 && !y.pi && !y.flags.sparse &&
           !x.pi && !x.flags.sparse && x.refs && ak_ref_count(x.refs) == 1;
}
inline bool scalar_index(const Mm& i) {
    return i.nnz == 1 && i.flags.type == ak_double && !i.flags.logical && !i.flags.sparse;
}

bool scalar_write1(Mm& x, const Mm& y, const Mm& i) {
    if (!plain_scalar(x, y) || !scalar_index(i)) return false;
    const double v = *static_cast<const double*>(i.pr);
    const int rounded = index_rounded(v);
    if (rounded < 1 || rounded > x.size()) return false;
    static_cast<double*>(x.pr)[index_position(v)] = *static_cast<const double*>(y.pr);
    return true;
}

bool scalar_write2(Mm& x, const Mm& y, const Mm& i, const Mm& j) {
    if (!plain_scalar(x, y) || !scalar_index(i) || !scalar_index(j) || x.ndims != 2) return false;
    const double r = *static_cast<const double*>(i.pr), c = *static_cast<const double*>(j.pr);
    const int rr = index_rounded(r), rc = index_rounded(c);
    if (rr < 1 || rr > x.dims[0] || rc < 1 || rc > x.dims[1]) return false;
    static_cast<double*>(x.pr)[index_position(c) * x.dims[0] + index_position(r)] =
        *static_cast<const double*>(y.pr);
    return true;
}

void set_shape2(Mm& x, int rows, int cols) {
    x.ndims = 2;
    x.dims[0] = rows;
    x.dims[1] = cols;
    x.dims[2] = x.dims[3] = 1;
    if (rows == 0 || cols == 0) x.dims[0] = x.dims[1] = x.dims[2] = x.dims[3] = 0;
    x.nnz = x.dims[0] * x.dims[1];
}

// Smallest and largest rounded value of an index.
void rounded_range(const Mm& ix, int& lo, int& hi) {
    lo = INT_MAX;
    hi = INT_MIN;
    const double* v = ix.addr();
    for (int k = 0; k < ix.size(); ++k) {
        int r = index_rounded(v[k]);
        lo = std::min(lo, r);
        hi = std::max(hi, r);
    }
}

// ---- x(:) = y ----------------------------------------------------------------------------------------

template <typename T>
void colon_write(Mm& x, const Mm& y) {
    const int N = x.size(), s = y.size();
    if (x.pi && !y.pi) x.getreal(1);  // every element is replaced
    const M_types saved = x.flags;
    Mm fresh;
    if (s == 0) {
        int none[2] = {0, 0};
        if (fresh_matrix(x, 0, 2, none, fresh)) install(x, fresh, saved);
        return;
    }
    if (N == 0) return;
    const int complex = y.pi != nullptr;
    if (s == 1) {
        if (x.dirty() || x.p < 1) {
            if (!fresh_matrix(x, complex, x.ndims, x.dims, fresh)) return;
            install(x, fresh, saved);
        }
        source_reader<T> src(y);
        for (int k = 0; k < N; ++k) src.put(x, k, 0);
        return;
    }
    if (s == N) {
        if (!x.dirty() && N <= x.p) {
            // Takes y's storage and flags; the target keeps its own shape.
            const int nd = x.ndims;
            int d[4] = {x.dims[0], x.dims[1], x.dims[2], x.dims[3]};
            x = y;
            x.ndims = nd;
            for (int k = 0; k < 4; ++k) x.dims[k] = d[k];
        } else {
            if (!fresh_matrix(x, complex, x.ndims, x.dims, fresh)) return;
            copy_elements<T>(y, 0, fresh, 0, N);
            install(x, fresh, saved);
        }
        return;
    }
    message_names nm(x, y, y, x);
    error("%s(:)=%s: size(%s) different than size(%s)", nm.s[0], nm.s[1], nm.s[2], nm.s[3]);
}

// ---- x(i) = [] ---------------------------------------------------------------------------------------

template <typename T>
void delete_one(Mm& x, const Mm& ix) {
    const int N = x.size();
    if (N == 0) return;
    ak_scratch<unsigned char> keep(N);
    if (!keep.get()) return;
    std::memset(keep.get(), 1, N);
    const double* v = ix.addr();
    const int m = ix.size();
    int count = 0;
    if (ix.flags.logical) {
        // Trues past the end of the target delete nothing.
        for (int k = 0; k < m && k < N; ++k) {
            if (v[k] != 0.0) {
                keep[k] = 0;
                ++count;
            }
        }
    } else {
        for (int k = 0; k < m; ++k) {
            const int p = index_position(v[k]);
            if (p < 0) {
                error("%s(%s): index is non-positive", display_name(x), index_value_text(v[k]).text);
                return;
            }
            if (p < N && keep[p]) {
                keep[p] = 0;
                ++count;
            }
        }
    }
    if (count == 0) return;
    // What is left is a row, or a column when the target was one.
    const int r = N - count;
    const int rows = r == 0 ? 0 : (x.dims[1] == 1 ? r : 1);
    const int cols = r == 0 ? 0 : (x.dims[1] == 1 ? 1 : r);
    if (x.dirty()) {
        const M_types saved = x.flags;
        Mm fresh;
        if (!fresh_matrix(x, x.pi != nullptr, rows, cols, fresh)) return;
        for (int k = 0, j = 0; k < N; ++k)
            if (keep[k]) copy_elements<T>(x, k, fresh, j++, 1);
        install(x, fresh, saved);
        return;
    }
    T* re = real_plane<T>(x);
    T* im = imag_plane<T>(x);
    int j = 0;
    for (int k = 0; k < N; ++k) {
        if (!keep[k]) continue;
        if (j != k) {
            re[j] = re[k];
            if (im) im[j] = im[k];
        }
        ++j;
    }
    if constexpr (is_cell_kind<T>()) fill_new<T>(x, r, N);  // let go of the moved values
    set_shape2(x, rows, cols);
}

// ---- x(i) = y ----------------------------------------------------------------------------------------

template <typename T>
void write_one(Mm& x, const Mm& y, const Mm& ix, const Mm& iname) {
    const int N = x.size(), s = y.size(), m = ix.size();
    const double* v = ix.addr();
    const bool logical = ix.flags.logical;
    int M = m;
    if (!logical) {
        int lo, hi;
        rounded_range(ix, lo, hi);
        if (lo < 1) {
            message_names nm(x, iname);
            error("%s(%s): index is non-positive", nm.s[0], nm.s[1]);
            return;
        }
        M = hi;
    }
    if (M == INT_MAX) {  // 2^31 and above: no matrix has that many elements
        error("Out of memory!");
        return;
    }
    // Written past its end by one index, a matrix becomes a row, or a column unless it had one row.
    int nd = x.ndims;
    int d[4] = {x.dims[0], x.dims[1], x.dims[2], x.dims[3]};
    if (M > N) {
        nd = 2;
        d[0] = x.dims[0] < 2 ? 1 : M;
        d[1] = x.dims[0] < 2 ? M : 1;
        d[2] = d[3] = 1;
    }
    if (!x.dirty() && M <= x.p) {
        if (M > N) {
            x.ndims = 2;
            for (int k = 0; k < 4; ++k) x.dims[k] = d[k];
            x.nnz = M;
        }
    } else {
        // Grown past its capacity, a vector gets room to grow further.
        const M_types saved = x.flags;
        Mm fresh;
        if (!fresh_matrix_room(x, x.pi != nullptr, nd, d, M > N ? grown_room(M) : 0, fresh)) return;
        carry_elements<T>(x, fresh, N);
        install(x, fresh, saved);
    }
    if (M > N) fill_new<T>(x, N, M);

    source_reader<T> src(y);
    if (!logical) {
        if (s != m && s != 1) {
            message_names nm(x, iname, y, y, iname);
            error("%s(%s)=%s: size(%s) different than size(%s)", nm.s[0], nm.s[1], nm.s[2], nm.s[3], nm.s[4]);
            return;
        }
        for (int k = 0; k < m; ++k) src.put(x, index_position(v[k]), k);
        return;
    }
    const int c = logical_count(ix);
    if (s != c && s != 1) {
        message_names nm(x, iname, y);
        error("%s(%s)=%s: a logical assignment ; source size != number of non zeros in index", nm.s[0],
              nm.s[1], nm.s[2]);
        return;
    }
    for (int k = 0, j = 0; k < m; ++k)
        if (v[k] != 0.0) src.put(x, k, j++);
}

template <typename T>
void plain_one(Mm& x, const Mm& y, const Mm& ix, bool colon, const Mm& iname) {
    if (colon) {
        if (y.pi && !x.pi && !is_cell_kind<T>()) x.getcomplex();
        colon_write<T>(x, y);
        return;
    }
    if (ix.size() == 0) return;  // x([]) = y changes nothing, whatever y is
    if (y.size() == 0) {
        delete_one<T>(x, ix);
        return;
    }
    if (y.pi && !x.pi && !is_cell_kind<T>()) x.getcomplex();
    write_one<T>(x, y, ix, iname);
}

// ---- x(i,j) = [] -------------------------------------------------------------------------------------

// Clears the flag of every position of ix inside [0, extent); positions outside are ignored.
int kept_after(const Mm& ix, bool colon, unsigned char* keep, int extent) {
    std::memset(keep, 1, extent);
    if (!colon) {
        const double* v = ix.addr();
        for (int k = 0; k < ix.size(); ++k) {
            const int p = index_position(v[k]);
            if (p >= 0 && p < extent) keep[p] = 0;
        }
    }
    int kept = 0;
    for (int k = 0; k < extent; ++k) kept += keep[k];
    return kept;
}

template <typename T>
void delete_two(Mm& x, const Mm& I, const Mm& J, bool rowc, bool colc) {
    const int N = x.size();
    if (N == 0) return;
    const int R = x.dims[0], C = N / R;
    ak_scratch<unsigned char> keepR(R), keepC(C);
    if (!keepR.get() || !keepC.get()) return;
    const int kr = kept_after(I, rowc, keepR.get(), R);
    const int kc = kept_after(J, colc, keepC.get(), C);
    if (static_cast<long long>(kr) * kc == N) return;
    // What is left keeps its rows or columns under a colon, and is flattened into a row otherwise.
    const int rows = rowc ? R : (colc ? kr : 1);
    const int cols = rowc ? kc : (colc ? C : kr * kc);
    const M_types saved = x.flags;
    Mm fresh;
    if (!fresh_matrix(x, x.pi != nullptr, rows, cols, fresh)) return;
    int j = 0;
    for (int c = 0; c < C; ++c) {
        if (!keepC[c]) continue;
        for (int r = 0; r < R; ++r)
            if (keepR[r]) copy_elements<T>(x, c * R + r, fresh, j++, 1);
    }
    install(x, fresh, saved);
}

// ---- x(i,j) = y --------------------------------------------------------------------------------------

// The extent a place must have after the write: a colon's count, or the largest rounded index value.
// False after reporting a non-positive index.
bool place_needs(const Mm& ix, bool colon, int count, int current, int& needed) {
    needed = current;
    if (colon) {
        needed = std::max(current, count);
        return true;
    }
    int lo, hi;
    rounded_range(ix, lo, hi);
    if (lo < 1) return false;
    needed = std::max(current, hi);
    return true;
}

template <typename T>
void write_two(Mm& x, const Mm& y, const Mm& I, const Mm& J, bool rowc, bool colc, const Mm& iname,
               const Mm& jname) {
    const int N = x.size(), s = y.size();
    const int R = x.dims[0], C = R ? N / R : 0;
    const bool scalar = s == 1;
    // A colon covers the target, or takes its count from y: x(:,3) = y takes y's rows.
    const int nr = rowc ? (scalar && N != 0 ? R : y.dims[0]) : I.size();
    const int nc = colc ? (scalar && N != 0 ? C : y.dims[1]) : J.size();
    if (static_cast<long long>(nr) * nc != s && !scalar) {
        message_names nm(x, iname, jname, y);
        error("%s(%s,%s)=%s: size(row index)*size(col index) is different than size(source)", nm.s[0],
              nm.s[1], nm.s[2], nm.s[3]);
        return;
    }
    int newR, newC;
    if (!place_needs(I, rowc, nr, R, newR)) {
        message_names nm(x, iname, jname, y);
        error("%s(%s,%s)=%s: row index is non-positive", nm.s[0], nm.s[1], nm.s[2], nm.s[3]);
        return;
    }
    if (!place_needs(J, colc, nc, C, newC)) {
        message_names nm(x, iname, jname, y);
        error("%s(%s,%s)=%s: col index is non-positive", nm.s[0], nm.s[1], nm.s[2], nm.s[3]);
        return;
    }
    if (newR == INT_MAX || newC == INT_MAX) {  // 2^31 and above: no matrix is that large
        error("Out of memory!");
        return;
    }
    if (newR != R || newC != C || x.dirty()) {
        const M_types saved = x.flags;
        Mm fresh;
        if (!fresh_matrix(x, x.pi != nullptr, newR, newC, fresh)) return;
        if (newR == R) {
            copy_elements<T>(x, 0, fresh, 0, N);
            fill_new<T>(fresh, N, fresh.nnz);
        } else {
            for (int c = 0; c < C; ++c) {
                copy_elements<T>(x, c * R, fresh, c * newR, R);
                fill_new<T>(fresh, c * newR + R, (c + 1) * newR);
            }
            fill_new<T>(fresh, C * newR, fresh.nnz);
        }
        install(x, fresh, saved);
    }
    source_reader<T> src(y);
    const double* iv = rowc ? nullptr : I.addr();
    const double* jv = colc ? nullptr : J.addr();
    for (int jj = 0, k = 0; jj < nc; ++jj) {
        const int first = (colc ? jj : index_position(jv[jj])) * newR;
        for (int ii = 0; ii < nr; ++ii) src.put(x, first + (rowc ? ii : index_position(iv[ii])), k++);
    }
}

template <typename T>
void plain_two(Mm& x, const Mm& y, const Mm& I, const Mm& J, bool rowc, bool colc, const Mm& iname,
               const Mm& jname) {
    if ((!rowc && I.size() == 0) || (!colc && J.size() == 0)) return;
    if (y.size() == 0) {
        delete_two<T>(x, I, J, rowc, colc);
        return;
    }
    if (y.pi && !x.pi && !is_cell_kind<T>()) x.getcomplex();
    write_two<T>(x, y, I, J, rowc, colc, iname, jname);
}

// An index of the two-index route as plain positions: a logical one becomes the row of its true
// positions (one-based), anything else a full double copy sharing storage with the index.
Mm plain_positions(const Mm& i) {
    Mm converted;
    const Mm& d = double_index(i, converted);
    Mm ix = d.flags.sparse ? full(d) : d;
    if (!ix.flags.logical) return ix;
    Mm list(0, 0, 0, 1, logical_count(ix), ak_double);
    const double* m = ix.addr();
    for (int k = 0, j = 0; k < ix.nnz; ++k)
        if (m[k] != 0.0) list.addr()[j++] = k + 1.0;
    return list;
}

}  // namespace

}  // namespace ak_internal

using namespace ak_internal;

void Mm::vwcopy1(const Mm& y, const Mm& i1) {
    if (scalar_write1(*this, y, i1)) return;
    if (flags.type == ak_no_type) {
        warn_uninit();
        return;
    }
    if (&y == this) {  // the copy shares the storage, so the write goes to a fresh one
        const Mm copy(y);
        vwcopy1(copy, i1);
        return;
    }
    const bool colon = is_colon(i1);
    Mm converted;
    const Mm& d = double_index(i1, converted);
    if (flags.sparse || fields) {  // sparse data and structures take the general route
        vwcopyn(Mr(Mr_paren, *this, d), y);
        return;
    }
    // The index is held in a head of its own, so that it survives a replacement of the target (x(x)).
    const Mm index = d.flags.sparse ? full(d) : d;
    Mm source;
    const Mm* src = settle_source(*this, y, source);
    if (!src) return;
    switch (flags.type) {
        case ak_double:
            plain_one<double>(*this, *src, index, colon, i1);
            break;
        case ak_uchar:
            plain_one<unsigned char>(*this, *src, index, colon, i1);
            break;
        default:
            plain_one<Mm>(*this, *src, index, colon, i1);
            break;
    }
}

void Mm::vwcopy2(const Mm& y, const Mm& i1, const Mm& i2) {
    if (scalar_write2(*this, y, i1, i2)) return;
    if (flags.type == ak_no_type) {
        warn_uninit();
        return;
    }
    if (&y == this) {
        const Mm copy(y);
        vwcopy2(copy, i1, i2);
        return;
    }
    const bool rowc = is_colon(i1), colc = is_colon(i2);
    if (flags.sparse || fields) {
        Mm c1, c2;
        vwcopyn(Mr(Mr_paren, *this, double_index(i1, c1), double_index(i2, c2)), y);
        return;
    }
    const Mm I = plain_positions(i1), J = plain_positions(i2);
    Mm source;
    const Mm* src = settle_source(*this, y, source);
    if (!src) return;
    switch (flags.type) {
        case ak_double:
            plain_two<double>(*this, *src, I, J, rowc, colc, i1, i2);
            break;
        case ak_uchar:
            plain_two<unsigned char>(*this, *src, I, J, rowc, colc, i1, i2);
            break;
        default:
            plain_two<Mm>(*this, *src, I, J, rowc, colc, i1, i2);
            break;
    }
}
