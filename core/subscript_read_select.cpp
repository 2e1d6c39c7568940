// Element selection of x(i), x(i,j) and x(i,j,k,...) reads: the fast routes for one and two indices on
// 2-D dense data, the general route through the odometer, and the two-index route on sparse data.
// One algorithm serves doubles, bytes and cells; they differ only in the element type copied (cells
// share their elements' storage through Mm assignment).
#include <algorithm>
#include <cstring>
#include <type_traits>
#include <vector>

#include "arklib/sparse.h"
#include "core/index_odometer.h"
#include "core/subscript_read.h"

namespace ak_internal {

namespace {

// Builds the result head: the requested shape and element type of the base, then the base's flag
// words with the variable's own marks cleared. False when the storage could not be had.
bool make_result(const Mm& b, int complex, int sparse, int nnz, int nd, const int* dims, Mm& out) {
    long long want = 1;
    for (int k = 0; k < nd; ++k) want *= dims[k] < 0 ? 0 : dims[k];
    out = sparse ? Mm(complex, 1, nnz, nd, dims, b.flags.type) : Mm(complex, 0, 0, nd, dims, b.flags.type);
    if (!sparse && out.nnz != want) return false;
    if (sparse && out.nnz != (nnz < want ? nnz : want)) return false;
    if (complex && !out.pi && out.flags.type != ak_mm) return false;
    M_types f = b.flags;
    f.workspace_var = 0;
    f.global = 0;
    out.flags = f;
    return true;
}

bool make_result2(const Mm& b, int rows, int cols, Mm& out) {
    int d[2] = {rows, cols};
    return make_result(b, b.pi != nullptr, 0, 0, 2, d, out);
}

// The imaginary half of a byte or double matrix; cells have none.
template <typename T>
T* imag_of(const Mm& m) {
    if (std::is_same<T, Mm>::value) return nullptr;
    return static_cast<T*>(m.pi);
}

template <typename T>
inline void copy_one(T* o, T* oi, int to, const T* re, const T* im, int from) {
    o[to] = re[from];
    if (im) oi[to] = im[from];
}

// Copies count consecutive elements (a column under a colon).
template <typename T>
inline void copy_block(T* o, T* oi, int to, const T* re, const T* im, int from, int count) {
    if (std::is_trivially_copyable<T>::value) {
        std::memcpy(static_cast<void*>(o + to), re + from, sizeof(T) * count);
        if (im) std::memcpy(static_cast<void*>(oi + to), im + from, sizeof(T) * count);
    } else {
        for (int k = 0; k < count; ++k) o[to + k] = re[from + k];
    }
}

void report_one(const Mm& b, const Mm& ix, const index_value_text& value, int n) {
    const char* iname = display_name(ix);  // names are formatted right to left
    const char* bname = display_name(b);
    error("%s(%s) : Index out of matrix. Index value was %s however the indexed matrix has %d elements.",
          bname, iname, value.text, n);
}

// ---- one index, 2-D dense base ----------------------------------------------------------------------

template <typename T>
bool read_one_logical(const Mm& b, const Mm& ix, int report, Mm& out) {
    const int N = b.size(), s = ix.size();
    const double* mask = ix.addr();
    // A mask longer than the base may only hold zeros past its end.
    for (int k = N; k < s; ++k) {
        if (mask[k] != 0.0) {
            if (report) report_one(b, ix, index_value_text(k + 1LL), N);
            return false;
        }
    }
    int c = logical_count(ix);
    bool column = b.dims[0] != 1 && (b.dims[1] == 1 || ix.dims[0] > 1);
    if (!make_result2(b, column ? c : 1, column ? 1 : c, out)) return false;
    const T* re = static_cast<const T*>(b.pr);
    const T* im = imag_of<T>(b);
    T* o = static_cast<T*>(out.pr);
    T* oi = imag_of<T>(out);
    int walk = s < N ? s : N, j = 0;
    for (int k = 0; k < walk; ++k)
        if (mask[k] != 0.0) copy_one(o, oi, j++, re, im, k);
    return true;
}

template <typename T>
bool read_one(const Mm& b, const Mm& ix, int report, Mm& out) {
    if (ix.flags.logical) return read_one_logical<T>(b, ix, report, out);
    const int N = b.size(), s = ix.size();
    int rows = ix.dims[0], cols = ix.dims[1];
    if (N > 1 && (rows == 1 || cols == 1)) {
        if (b.dims[1] == 1) {
            rows = s;
            cols = 1;
        } else if (b.dims[0] == 1) {
            rows = 1;
            cols = s;
        }
    }
    if (!make_result2(b, rows, cols, out)) return false;
    const double* v = ix.addr();
    const T* re = static_cast<const T*>(b.pr);
    const T* im = imag_of<T>(b);
    T* o = static_cast<T*>(out.pr);
    T* oi = imag_of<T>(out);
    for (int k = 0; k < s; ++k) {
        int pos = index_position(v[k]);
        if (static_cast<unsigned>(pos) >= static_cast<unsigned>(N)) {
            if (report) report_one(b, ix, index_value_text(v[k]), N);
            return false;
        }
        copy_one(o, oi, k, re, im, pos);
    }
    return true;
}

// ---- two indices, 2-D dense base --------------------------------------------------------------------

void report_two(const Mm& b, const Mm& I, const Mm& J, bool row, const index_value_text& value, int limit) {
    const char* jname = display_name(J);
    const char* iname = display_name(I);
    const char* bname = display_name(b);
    if (row)
        error("%s(%s,%s): row index out of matrix. Index was %s but indexed matrix has %d rows.", bname,
              iname, jname, value.text, limit);
    else
        error("%s(%s,%s): col index out of matrix. Index was %s but indexed matrix has %d columns.", bname,
              iname, jname, value.text, limit);
}

// The value at place k of an index for a message: a mask's place as a position, a list's element as
// the user gave it.
index_value_text value_at(const Mm& ix, int k) {
    if (ix.flags.logical || is_colon(ix)) return index_value_text(k + 1LL);
    return index_value_text(ix.addr()[k]);
}

int selected_count(const Mm& ix, int extent) {
    if (is_colon(ix)) return extent;
    return ix.flags.logical ? logical_count(ix) : ix.size();
}

template <typename T>
bool read_two(const Mm& b, const Mm& I, const Mm& J, int report, Mm& out) {
    const int R = b.dims[0], C = b.dims[1];
    const bool rcolon = is_colon(I), ccolon = is_colon(J);
    const int nr = selected_count(I, R), nc = selected_count(J, C);
    if (!make_result2(b, nr, nc, out)) return false;
    if (nr == 0 || nc == 0) return true;
    const T* re = static_cast<const T*>(b.pr);
    const T* im = imag_of<T>(b);
    T* o = static_cast<T*>(out.pr);
    T* oi = imag_of<T>(out);
    const double* iv = rcolon ? nullptr : I.addr();
    const double* jv = ccolon ? nullptr : J.addr();
    const int iwalk = rcolon ? R : I.size(), jwalk = ccolon ? C : J.size();
    int to = 0;
    for (int jj = 0; jj < jwalk; ++jj) {
        int col;
        if (ccolon) {
            col = jj;
        } else if (J.flags.logical) {
            if (jv[jj] == 0.0) continue;
            col = jj;
        } else {
            col = index_position(jv[jj]);
        }
        if (static_cast<unsigned>(col) >= static_cast<unsigned>(C)) {
            if (report) report_two(b, I, J, false, value_at(J, jj), C);
            return false;
        }
        const int first = col * R;
        if (rcolon) {
            copy_block(o, oi, to, re, im, first, R);
            to += R;
        } else if (I.flags.logical) {
            for (int ii = 0; ii < iwalk; ++ii) {
                if (iv[ii] == 0.0) continue;
                if (ii >= R) {
                    if (report) report_two(b, I, J, true, value_at(I, ii), R);
                    return false;
                }
                copy_one(o, oi, to++, re, im, first + ii);
            }
        } else {
            for (int ii = 0; ii < iwalk; ++ii) {
                int row = index_position(iv[ii]);
                if (static_cast<unsigned>(row) >= static_cast<unsigned>(R)) {
                    if (report) report_two(b, I, J, true, value_at(I, ii), R);
                    return false;
                }
                copy_one(o, oi, to++, re, im, first + row);
            }
        }
    }
    return true;
}

// ---- general route -----------------------------------------------------------------------------------

bool is_vector(const Mm& m) {
    int long_dims = 0;
    for (int k = 0; k < 4; ++k) long_dims += m.dims[k] != 1;
    return long_dims <= 1;
}

int first_long_dim(const int* d) {
    for (int k = 0; k < 4; ++k)
        if (d[k] > 1) return k;
    return 0;
}

// Shape of a general read: the counts of the places, or for a single index the shape that the
// index and the base give together.
void general_shape(const Mr& r, const Mm& b, const int* extent, int total, int& nd, int* dims) {
    for (int k = 0; k < 4; ++k) dims[k] = extent[k];
    if (r.n >= 2) {
        nd = r.n;
        return;
    }
    const Mm& ix = *r.idx[0];
    nd = b.ndims;
    dims[0] = total;
    dims[1] = dims[2] = dims[3] = 1;
    if (is_vector(b) && is_vector(ix)) {
        int a = first_long_dim(b.dims), c = first_long_dim(dims);
        if (a != c) {
            dims[a] = total;
            dims[c] = 1;
        }
    } else if (is_vector(ix)) {
        dims[0] = 1;
        dims[first_long_dim(ix.dims)] = total;
    } else if (!ix.flags.logical) {
        nd = ix.ndims;
        for (int k = 0; k < 4; ++k) dims[k] = ix.dims[k];
    }
    if (nd < 2) nd = 2;
}

// Positions of one place of a two-index sparse read, in the order the odometer walks them.
std::vector<int> place_positions(const Mm& ix, int extent, int count) {
    std::vector<int> pos;
    pos.reserve(count);
    if (is_colon(ix)) {
        for (int k = 0; k < extent; ++k) pos.push_back(k);
    } else if (ix.flags.logical && ix.flags.sparse) {
        for (int k = 0; k < ix.nnz; ++k) pos.push_back(ix.index[k]);
    } else if (ix.flags.logical) {
        for (int k = 0; k < ix.nnz; ++k)
            if (ix.addr()[k] != 0.0) pos.push_back(k);
    } else {
        int stored = ix.flags.sparse ? ix.nnz : ix.size();
        for (int k = 0; k < stored && k < count; ++k) pos.push_back(index_position(ix.addr()[k]));
    }
    if (static_cast<int>(pos.size()) > count) pos.resize(count);
    return pos;
}

// The value behind place k of a sparse read's position list, for a message.
index_value_text listed_value(const Mm& ix, const std::vector<int>& pos, int k) {
    if (ix.flags.logical || is_colon(ix)) return index_value_text(pos[k] + 1LL);
    return index_value_text(ix.addr()[k]);
}

// Reports the first position of a two-index sparse read outside the matrix, in the order the full
// read checks them (a column, then every row, then the other columns; the rows alone under a column
// colon, which is not listed). False after a report.
bool sparse_places_inside(const Mm& b, const Mm& I, const Mm& J, const std::vector<int>& rows,
                          const std::vector<int>& cols, long long C, int report) {
    const int R = b.dims[0];
    auto rows_inside = [&]() {
        for (int orow = 0; orow < static_cast<int>(rows.size()); ++orow) {
            if (rows[orow] >= 0 && rows[orow] < R) continue;
            if (report) report_two(b, I, J, true, listed_value(I, rows, orow), R);
            return false;
        }
        return true;
    };
    if (is_colon(J)) return rows_inside();  // the columns are not listed
    for (int oc = 0; oc < static_cast<int>(cols.size()); ++oc) {
        if (cols[oc] < 0 || cols[oc] >= C) {
            if (report) report_two(b, I, J, false, listed_value(J, cols, oc), static_cast<int>(C));
            return false;
        }
        if (oc == 0 && !rows_inside()) return false;
    }
    return true;
}

// x(I,J) of a sparse x: each selected column's stored range is found by binary search in the sorted
// positions, and each selected row within it, so nothing is expanded.
bool read_sparse_two(const Mr& r, const Mm& b, const int* extent, int report, Mm& out) {
    const Mm& I = *r.idx[0];
    const Mm& J = *r.idx[1];
    const int R = b.dims[0];
    const long long C = static_cast<long long>(b.dims[1]) * b.dims[2] * b.dims[3];
    const int nr = extent[0], nc = extent[1];
    const bool rcolon = is_colon(I), ccolon = is_colon(J);
    // A colon is walked through the stored entries, never listed: a row may have 2^31 - 1 columns.
    std::vector<int> cols = ccolon ? std::vector<int>() : place_positions(J, static_cast<int>(C), nc);
    std::vector<int> rows = rcolon ? std::vector<int>() : place_positions(I, R, nr);
    if (nr > 0 && nc > 0 && !sparse_places_inside(b, I, J, rows, cols, C, report)) return false;
    const int complex = b.pi != nullptr;
    int d[2] = {nr, nc};
    if (!make_result(b, complex, 1, 64, 2, d, out)) return false;
    int count = 0, capacity = out.nnz;
    const int* first = b.index;
    const int* last = b.index + b.nnz;
    const double* re = b.addr();
    const double* im = b.addi();
    auto append = [&](long long position, int from) {
        if (count == capacity) {
            out.nnz = count;
            out.extend_nnz(capacity * 2);
            if (out.nnz <= capacity) return false;
            capacity = out.nnz;
        }
        out.addr()[count] = re[from];
        if (complex) out.addi()[count] = im[from];
        out.index[count++] = static_cast<int>(position);
        return true;
    };
    // The selected rows of column c, whose entries are [lo, hi), as column oc of the result.
    auto read_column = [&](long long oc, long long c, const int* lo, const int* hi) {
        const long long start = c * R, column = oc * nr;
        if (rcolon) {
            for (const int* e = lo; e < hi; ++e)
                if (!append(column + (*e - start), static_cast<int>(e - first))) return false;
            return true;
        }
        for (int orow = 0; orow < static_cast<int>(rows.size()); ++orow) {
            const long long at = start + rows[orow];
            const int* e = std::lower_bound(lo, hi, at);
            if (e != hi && *e == at)
                if (!append(column + orow, static_cast<int>(e - first))) return false;
        }
        return true;
    };
    if (ccolon && R > 0) {
        for (const int* lo = first; lo < last;) {
            const long long c = *lo / R;
            const int* hi = std::lower_bound(lo, last, (c + 1) * R);
            if (!read_column(c, c, lo, hi)) return false;
            lo = hi;
        }
    }
    for (int oc = 0; oc < static_cast<int>(cols.size()); ++oc) {
        const long long start = static_cast<long long>(cols[oc]) * R;
        const int* lo = std::lower_bound(first, last, start);
        const int* hi = std::lower_bound(lo, last, start + R);
        if (!read_column(oc, cols[oc], lo, hi)) return false;
    }
    out.nnz = count;
    M_types f = b.flags;
    f.workspace_var = 0;
    f.global = 0;
    out.flags = f;
    return true;
}

template <typename T>
bool read_general(const Mr& r, const Mm& b, int report, Mm& out) {
    int extent[4];
    const int total = index_extents(r, b, extent, report);
    int nd, dims[4];
    general_shape(r, b, extent, total, nd, dims);
    if (b.flags.sparse && r.n == 2) return read_sparse_two(r, b, extent, report, out);
    if (b.flags.sparse && nd > 2) {
        // A sparse result has two dimensions: x(1,1,[]) is 1x0, the later places folded into the
        // second.
        long long folded = dims[1];
        for (int k = 2; k < 4; ++k) folded = std::min<long long>(folded * dims[k], INT_MAX + 1LL);
        if (folded > INT_MAX) {  // only an empty selection gets here: x([], :, 1:2) of a wide row
            error("Out of memory!");
            return false;
        }
        dims[1] = static_cast<int>(folded);
        dims[2] = dims[3] = 1;
        nd = 2;
    }

    const int sparse = b.flags.sparse;
    const int complex = b.pi != nullptr;
    if (!make_result(b, complex, sparse, total, nd, dims, out)) return false;
    for (int k = 0; k < b.nfields; ++k) out.addfield(b.getfield(k), 1);
    out.classid = b.classid;
    if (sparse) out.nnz = 0;

    const T* re = static_cast<const T*>(b.pr);
    const T* im = imag_of<T>(b);
    T* o = static_cast<T*>(out.pr);
    T* oi = imag_of<T>(out);
    index_odometer walk;
    for (int k = 0; k < 4; ++k) walk.extent[k] = extent[k];
    start_odometer(walk);
    for (int k = 0; k < total; ++k) {
        int li = next_linear_index(r, b, walk, 0, report);
        if (li < 0) {
            if (!b.fields) return false;
            // A structure array read past its end (as an assignment s(5).a = 1 fetches s(5))
            // gives fresh elements with the field table in place.
            Mm* e = out.getpr(static_cast<Mm*>(nullptr));
            for (int m = 0; m < out.nnz; ++m) e[m] = Mm(0, 0, 0, 1, b.nfields, ak_mm);
            return true;
        }
        if (!sparse) {
            copy_one(o, oi, k, re, im, li);
            continue;
        }
        int hit = b.search(li);
        if (hit < 0) continue;
        copy_one(o, oi, out.nnz, re, im, hit);
        out.index[out.nnz++] = k;
    }
    return true;
}

template <typename T>
bool select_typed(const Mr& r, const Mm& b, bool general, int report, Mm& out) {
    if (general) return read_general<T>(r, b, report, out);
    if (r.n == 1) return read_one<T>(b, *r.idx[0], report, out);
    return read_two<T>(b, *r.idx[0], *r.idx[1], report, out);
}

}  // namespace

bool select_elements(const Mr& r, const Mm& b, int report, Mm& out) {
    // Sparse data, more than two dimensions, structures and more than two indices go through the
    // odometer. Sparse indices are made full for the fast routes, in the index matrix itself.
    bool general = b.flags.sparse || b.ndims > 2 || b.fields || r.n > 2;
    for (int k = 0; k < r.n && !general; ++k) {
        Mm& ix = *const_cast<Mm*>(r.idx[k]);
        if (ix.ndims > 2)
            general = true;
        else if (ix.flags.sparse)
            ix = full(ix);
    }
    bool ok;
    switch (b.flags.type) {
        case ak_double:
            ok = select_typed<double>(r, b, general, report, out);
            break;
        case ak_uchar:
            ok = select_typed<unsigned char>(r, b, general, report, out);
            break;
        case ak_mm:
            ok = select_typed<Mm>(r, b, general, report, out);
            break;
        default:
            b.warn_uninit();
            return false;
    }
    if (!ok) return false;
    out.collapse();
    if (b.pi && out.flags.type == ak_double) out.getreal(0);
    return true;
}

}  // namespace ak_internal
