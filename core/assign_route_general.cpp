// The general assignment route: sparse targets and sources, more than two dimensions or indices,
// structures and every {} write, walked with the shared index odometer; and deletion with [] on that
// route.
#include <algorithm>
#include <cstring>
#include <vector>

#include "arklib/sparse.h"
#include "arklib/subscript.h"
#include "core/assign_route.h"
#include "core/matrix_internal.h"

namespace ak_internal {

namespace {

// ---- positions ------------------------------------------------------------------------------------

// Linear position of the odometer's current element in an array of dimensions d, in Horner form; the
// last place counts in units of all the dimensions before it (it stands for the trailing ones).
inline long long position_in(const index_odometer& o, int n, const int* d) {
    long long li = 0;
    for (int k = n - 1; k >= 0; --k) li = (k == n - 1 ? 0 : d[k] * li) + o.position[k];
    return li;
}

// Position p of an array of dimensions from, moved to the same subscripts in dimensions to.
inline long long moved_position(long long p, const int* from, const int* to) {
    long long li = 0, stride = 1;
    for (int k = 0; k < 4; ++k) {
        const int sub = from[k] > 0 ? static_cast<int>(p % from[k]) : 0;
        p = from[k] > 0 ? p / from[k] : 0;
        li += sub * stride;
        stride *= to[k];
    }
    return li;
}

// Whether every element of an array of dimensions from keeps its linear position in dimensions to:
// all dimensions below the last one above 1 are unchanged.
bool positions_kept(const int* from, const int* to) {
    int last = -1;
    for (int k = 0; k < 4; ++k)
        if (from[k] > 1) last = k;
    if (from[0] * from[1] * from[2] * from[3] == 0) return true;
    for (int k = 0; k < last; ++k)
        if (from[k] != to[k]) return false;
    return true;
}

// Element count of dimensions d, or INT_MAX + 1 for any count past the int range (four dimensions
// near 2^31 would overflow even a long long).
long long product(const int* d) {
    long long n = 1;
    for (int k = 0; k < 4; ++k) {
        n *= d[k];
        if (n > INT_MAX) return INT_MAX + 1LL;
    }
    return n;
}

void start_walk(index_odometer& o, const int* extent) {
    for (int k = 0; k < 4; ++k) o.extent[k] = extent[k];
    start_odometer(o);
}

// A reference of the same kind on base with the indices given (kept alive by the caller).
Mr reference_on(Mr_idx_type type, const Mm& base, int n, const Mm* const* ix) {
    switch (n) {
        case 1:
            return Mr(type, base, *ix[0]);
        case 2:
            return Mr(type, base, *ix[0], *ix[1]);
        case 3:
            return Mr(type, base, *ix[0], *ix[1], *ix[2]);
        default:
            return Mr(type, base, *ix[0], *ix[1], *ix[2], *ix[3]);
    }
}

// ---- shape after the write --------------------------------------------------------------------------

// Dimensions of the target once it holds every position the walk saw (maxseen). A single index grows
// the vector's long dimension (the second of an empty target or a scalar); several indices grow each
// place. False after reporting growth of a last place that stands for several dimensions, or a
// position past the largest element count (INT_MAX stands for every index of 2^31 and above).
bool grown_dims(const Mr& r, const Mm& x, const index_odometer& o, int& nd, int* d) {
    const int n = r.n;
    for (int k = 0; k < (n < 1 ? 1 : n); ++k) {
        if (o.maxseen[k] == INT_MAX) {
            error("Out of memory!");
            return false;
        }
    }
    nd = x.ndims;
    for (int k = 0; k < 4; ++k) d[k] = x.dims[k];
    const int N = x.size();
    if (n == 1) {
        if (is_colon(*r.idx[0])) return true;
        if (N == 0) d[0] = d[1] = d[2] = d[3] = 1;
        if (o.maxseen[0] >= N) {
            int k = 0;
            while (k < 4 && d[k] <= 1) ++k;
            d[k == 4 ? 1 : k] = o.maxseen[0] + 1;
        }
        return true;
    }
    nd = std::max(x.ndims, n);
    long long trailing = 1;
    for (int k = n; k < 4; ++k) trailing *= x.dims[k];
    const bool merged = N > 0 && trailing != 1;
    for (int k = 0; k < n; ++k) {
        const int extent = N == 0 ? x.dims[k] : place_extent(x, n, k);
        if (o.maxseen[k] < extent) continue;
        if (k == n - 1 && merged) {
            const char* bname = display_name(x);
            const char* iname = display_name(*r.idx[k]);
            error(
                "Index %s out of matrix %s. Index value was %d however the indexed matrix has %d elements in "
                "this "
                "dimension.",
                iname, bname, o.maxseen[k] + 1, extent);
            return false;
        }
        d[k] = o.maxseen[k] + 1;
    }
    if (!merged && d[0] > 0)
        for (int k = n; k < 4; ++k) d[k] = 1;
    return true;
}

// ---- sparse targets ---------------------------------------------------------------------------------

// x(...) = 0 on a sparse x: the selected stored entries leave the list and the shape becomes d. The
// cost is in the stored entries and the index sizes, never in a colon's extent, which on a sparse
// row may be 2^31 - 1.
void sparse_clear(Mm& x, const Mr& r, const int* extent, int nd, const int* d, const M_types& saved) {
    const int n = r.n < 1 ? 1 : r.n;
    bool every[4] = {true, true, true, true};
    std::vector<int> chosen[4];  // sorted positions each place other than a colon selects
    for (int k = 0; k < n; ++k) {
        every[k] = r.n < 1 || is_colon(*r.idx[k]);
        if (every[k]) continue;
        int one_place[4] = {1, 1, 1, 1};
        one_place[k] = extent[k];
        index_odometer walk;
        start_walk(walk, one_place);
        for (int c = 0; c < extent[k]; ++c) {
            if (next_linear_index(r, x, walk, 1, 0) < 0) return;  // the dry walk reported it
            chosen[k].push_back(walk.position[k]);
        }
        std::sort(chosen[k].begin(), chosen[k].end());
    }
    const bool grew = d[0] != x.dims[0] || d[1] != x.dims[1] || d[2] != x.dims[2] || d[3] != x.dims[3];
    const int complex = x.pi != nullptr;
    Mm kept(complex, 1, x.nnz, nd, d, ak_double);
    if (x.nnz && (kept.p < x.nnz + 8 || !kept.index)) return;  // reported by the allocator
    int count = 0;
    for (int e = 0; e < x.nnz; ++e) {
        long long p = x.index[e];
        bool selected = true;
        for (int k = 0; k < n && selected; ++k) {
            // The subscript of place k; the last place stands for all the trailing dimensions.
            const long long sub = k == n - 1 ? p : p % x.dims[k];
            if (k < n - 1) p /= x.dims[k];
            if (!every[k]) selected = std::binary_search(chosen[k].begin(), chosen[k].end(), static_cast<int>(sub));
        }
        if (selected) continue;
        kept.index[count] = grew ? static_cast<int>(moved_position(x.index[e], x.dims, d)) : x.index[e];
        kept.addr()[count] = x.addr()[e];
        if (complex) kept.addi()[count] = x.addi()[e];
        ++count;
    }
    kept.nnz = count;
    install(x, kept, saved);
}

// x(...) = y on a sparse x (y full, of the same complexity): one stored element is overwritten in
// place; anything else merges the new entries into the stored list.
void sparse_write(Mm& x, const Mr& r, const Mm& y, const int* extent, int T, int nd, const int* d,
                  const M_types& saved) {
    const bool grew = d[0] != x.dims[0] || d[1] != x.dims[1] || d[2] != x.dims[2] || d[3] != x.dims[3];
    const double* yr = y.addr();
    const double* yi = y.addi();
    const bool scalar = y.size() == 1;
    const int complex = x.pi != nullptr;
    index_odometer walk;
    if (T == 1 && !grew && !x.dirty()) {
        start_walk(walk, extent);
        if (next_linear_index(r, x, walk, 1, 0) < 0) return;
        const int hit = x.search(static_cast<int>(position_in(walk, r.n, d)));
        if (hit >= 0) {
            x.addr()[hit] = yr[0];
            if (complex) x.addi()[hit] = yi ? yi[0] : 0.0;
            if (yr[0] == 0.0) {
                x.resparse();  // an element overwritten with 0 leaves the list
                x.flags = saved;
            }
            return;
        }
    }
    if (product(d) > INT_MAX) {
        error("Out of memory!");
        return;
    }
    if (scalar && yr[0] == 0.0 && (!yi || yi[0] == 0.0)) {
        sparse_clear(x, r, extent, nd, d, saved);
        return;
    }
    if (static_cast<long long>(x.nnz) + T > max_elements) {  // the merged list could not be stored
        error("Out of memory!");
        return;
    }
    // The new entries, in walk order, then sorted by position (stably: of repeated positions, resparse
    // sums the values as it does everywhere).
    Mm t(complex, 1, T, nd, d, ak_double);
    if (t.p < T + 8 || !t.index) return;  // reported by the allocator
    t.nnz = T;
    start_walk(walk, extent);
    for (int k = 0; k < T; ++k) {
        if (next_linear_index(r, x, walk, 1, 0) < 0) return;
        t.index[k] = static_cast<int>(position_in(walk, r.n, d));
        const int from = scalar ? 0 : k;
        t.addr()[k] = yr[from];
        if (complex) t.addi()[k] = yi ? yi[from] : 0.0;
    }
    t.sort();
    // Both lists ascend (moving old positions to grown dimensions keeps their order); at a position in
    // both, the new value replaces the old one.
    Mm merged(complex, 1, x.nnz + T, nd, d, ak_double);
    if (merged.p < x.nnz + T + 8 || !merged.index) return;
    int count = 0, a = 0, b = 0;
    auto old_position = [&](int e) {
        return grew ? moved_position(x.index[e], x.dims, d) : static_cast<long long>(x.index[e]);
    };
    while (a < x.nnz || b < T) {
        const bool take_old = b == T || (a < x.nnz && old_position(a) < t.index[b]);
        if (!take_old && a < x.nnz && old_position(a) == t.index[b]) {
            ++a;
            continue;
        }
        const Mm& from = take_old ? x : t;
        const int e = take_old ? a++ : b++;
        merged.index[count] = take_old ? static_cast<int>(old_position(e)) : t.index[e];
        merged.addr()[count] = from.addr()[e];
        if (complex) merged.addi()[count] = from.addi() ? from.addi()[e] : 0.0;
        ++count;
    }
    merged.nnz = count;
    merged.resparse();
    install(x, merged, saved);
}

// ---- dense targets ----------------------------------------------------------------------------------

// Fills elements [from, to) of a grown matrix: zeros, or fresh 1 x nfields cells in a structure.
template <typename T>
void new_elements(const Mm& m, const Mm& like, int from, int to) {
    fill_new<T>(m, from, to);
    if constexpr (is_cell_kind<T>()) {
        if (!like.fields) return;
        const Mm fresh(0, 0, 0, 1, like.nfields, ak_mm);
        for (int k = from; k < to; ++k) real_plane<Mm>(m)[k] = fresh;
    }
}

// Gives the target dimensions d (keeping its elements at their subscripts) and an unshared storage.
template <typename T>
bool prepare_dense(Mm& x, int nd, const int* d, const M_types& saved) {
    const bool grew = d[0] != x.dims[0] || d[1] != x.dims[1] || d[2] != x.dims[2] || d[3] != x.dims[3];
    const long long size = product(d);
    if (!grew) {
        if (x.dirty()) {
            const int id = x.classid;
            x.deepcopy(x, x.flags.type);
            x.classid = id;
            x.flags = saved;
        }
        return true;
    }
    const int N = x.size();
    if (positions_kept(x.dims, d)) {
        // Appending: the elements stay where they are, within the capacity or in a block with room.
        if (!x.dirty() && size <= x.p) {
            for (int k = 0; k < 4; ++k) x.dims[k] = d[k];
            x.ndims = nd;
            x.nnz = static_cast<int>(size);
            new_elements<T>(x, x, N, x.nnz);
            return true;
        }
        Mm fresh;
        if (!fresh_matrix_room(x, x.pi != nullptr, nd, d, grown_room(size), fresh)) return false;
        carry_elements<T>(x, fresh, N);
        new_elements<T>(fresh, x, N, fresh.nnz);
        for (int k = 0; k < x.nfields; ++k) fresh.addfield(x.fields[k], 1);
        fresh.classid = x.classid;
        install(x, fresh, saved);
        return true;
    }
    Mm fresh;
    if (!fresh_matrix(x, x.pi != nullptr, nd, d, fresh)) return false;
    new_elements<T>(fresh, x, 0, fresh.nnz);
    // The strides changed: each old element moves to its own subscripts.
    for (int p = 0; p < N; ++p)
        copy_elements<T>(x, p, fresh, static_cast<int>(moved_position(p, x.dims, fresh.dims)), 1);
    for (int k = 0; k < x.nfields; ++k) fresh.addfield(x.fields[k], 1);
    fresh.classid = x.classid;
    install(x, fresh, saved);
    return true;
}

template <typename T>
void general_write(Mm& x, const Mr& r, Mm& y) {
    const int n = r.n;
    const bool brace = r.type == Mr_brace;
    if (!brace) {
        if (y.size() == 0) {
            x.vwcopy0(r);
            return;
        }
        // On an empty target a colon takes its count from y: x(:,:,2) = y.
        if (x.size() == 0 && n > 1) {
            Mm lists[4];
            const Mm* ix[4];
            bool replaced = false;
            for (int k = 0; k < n; ++k) {
                ix[k] = r.idx[k];
                if (!is_colon(*r.idx[k])) continue;
                lists[k] = colon(1.0, static_cast<double>(y.dims[k]));
                ix[k] = &lists[k];
                replaced = true;
            }
            if (replaced) {
                x.vwcopyn(reference_on(r.type, x, n, ix), y);
                return;
            }
        }
        Mm converted;
        const Mm* src = settle_source(x, y, converted);
        if (!src) return;
        if (src != &y) y = *src;
    }
    const M_types saved = x.flags;
    int extent[4];
    const int total = index_extents(r, x, extent, 1);
    if (total == 0) return;
    if (!brace) {
        if constexpr (!is_cell_kind<T>()) {
            if (y.pi && !x.pi) x.getcomplex();
            if (x.pi && !y.pi) y.getcomplex();
        }
        const int s = y.size();
        if (s != 1 && total != s) {
            error(
                "In indexed assignment to the matrix %s, the index size was %d but right hand side has %d "
                "elements",
                display_name(x), total, s);
            return;
        }
    }
    // A dry walk reports non-positive positions (and a single index past the end of a matrix) and
    // finds the largest position of each place.
    // A colon never leaves the target, so the walk takes only its first position (its extent may be
    // 2^31 - 1 on a sparse row) and its largest position is known.
    index_odometer walk;
    int dry_extent[4];
    long long dry_total = 1;
    for (int k = 0; k < 4; ++k) {
        dry_extent[k] = k < n && is_colon(*r.idx[k]) ? 1 : extent[k];
        dry_total *= dry_extent[k];
    }
    start_walk(walk, dry_extent);
    for (long long k = 0; k < dry_total; ++k)
        if (next_linear_index(r, x, walk, 1, 1) < 0) return;
    for (int k = 0; k < n && k < 4; ++k)
        if (is_colon(*r.idx[k])) walk.maxseen[k] = extent[k] - 1;
    int nd, d[4];
    if (!grown_dims(r, x, walk, nd, d)) return;
    if (product(d) > INT_MAX) {
        error("Out of memory!");
        return;
    }
    if (x.flags.sparse && !brace) {
        sparse_write(x, r, y, extent, total, nd, d, saved);
        return;
    }
    if (!prepare_dense<T>(x, nd, d, saved)) return;
    x.collapse();

    const int* dims = x.dims;
    start_walk(walk, extent);
    if constexpr (is_cell_kind<T>()) {
        if (brace) {
            // x{...} = y stores y whole in the first selected element.
            if (next_linear_index(r, x, walk, 1, 0) >= 0) real_plane<Mm>(x)[position_in(walk, n, dims)] = y;
            return;
        }
    }
    source_reader<T> src(y);
    for (int k = 0; k < total; ++k) {
        if (next_linear_index(r, x, walk, 1, 0) < 0) return;
        src.put(x, static_cast<int>(position_in(walk, n, dims)), k);
    }
}

// ---- deletion ---------------------------------------------------------------------------------------

// x(...) = [] with at most one non-colon index q: every slice of place q that the index names goes.
template <typename T>
void general_delete(Mm& x, const Mr& r) {
    const M_types saved = x.flags;
    const int n = r.n;
    int q = -1;
    for (int k = 0; k < n; ++k) {
        if (is_colon(*r.idx[k])) continue;
        if (q < 0) {
            q = k;
            continue;
        }
        error("While assigning empty matrix to the matrix '%s', there was more than one non-colon index",
              display_name(x));
        break;
    }
    const int complex = x.pi != nullptr;
    int nd = x.ndims, d[4] = {0, 0, 0, 0};
    Mm result;
    if (q < 0) {
        // Every element goes: an empty matrix of the target's kind.
        result = x.flags.sparse ? Mm(0, 1, 0, 0, 0, ak_double) : Mm(0, 0, 0, 2, d, x.flags.type);
    } else {
        int extent[4];
        const int total = index_extents(r, x, extent, 1);
        if (total == 0) return;
        const int N = x.size();
        long long stride = 1;
        for (int k = 0; k < q && n > 1; ++k) stride *= x.dims[k];
        const int E = n == 1 ? N : place_extent(x, n, q);
        const long long outer = stride * E > 0 ? N / (stride * E) : 0;
        // The slices that go, ascending and each once: a list as long as the index, never as long
        // as the place (a sparse row may have 2^31 - 1 columns). Only place q decides what goes, so
        // the colons are walked once, not over their extents.
        int steps = total;
        if (n > 1) {
            for (int k = 0; k < 4; ++k)
                if (k != q) extent[k] = 1;
            steps = extent[q];
        }
        std::vector<int> gone;
        gone.reserve(steps);
        index_odometer walk;
        start_walk(walk, extent);
        int last = 0;
        for (int k = 0; k < steps; ++k) {
            last = next_linear_index(r, x, walk, 1, 1);
            if (last < 0) continue;
            const int slice = n == 1 ? last : walk.position[q];
            if (slice < E) gone.push_back(slice);  // positions past the end delete nothing
        }
        std::sort(gone.begin(), gone.end());
        gone.erase(std::unique(gone.begin(), gone.end()), gone.end());
        const int kept = E - static_cast<int>(gone.size());
        if (gone.empty()) {
            if (last < 0) warning("possible memory overwrite");
            return;
        }
        if (n == 1) {
            // What is left lies along the vector's dimension, or the second for a matrix.
            d[0] = d[1] = d[2] = d[3] = 1;
            const int v = x.vectordim();
            d[v == 0 ? 1 : v - 1] = kept;
        } else {
            for (int k = 0; k < 4; ++k) d[k] = x.dims[k];
            d[q] = kept;
            if (q == n - 1 && n < x.ndims) {  // the last place stood for the trailing dimensions
                for (int k = q + 1; k < 4; ++k) d[k] = 1;
                nd = std::max(n, 2);
            }
        }
        if (x.flags.sparse) {
            result = Mm(complex, 1, x.nnz, nd, d, ak_double);
            if (result.p < x.nnz + 8 || !result.index) return;
            int count = 0;
            for (int e = 0; e < x.nnz; ++e) {
                const long long p = x.index[e];
                const int slice = static_cast<int>((p / stride) % E);
                const auto at = std::lower_bound(gone.begin(), gone.end(), slice);
                if (at != gone.end() && *at == slice) continue;
                const long long before = slice - (at - gone.begin());  // kept slices ahead of it
                const long long o = p / (stride * E);
                result.index[count] = static_cast<int>((o * kept + before) * stride + p % stride);
                result.addr()[count] = x.addr()[e];
                if (complex) result.addi()[count] = x.addi()[e];
                ++count;
            }
            result.nnz = count;
        } else {
            if (!fresh_matrix(x, complex, nd, d, result)) return;
            ak_scratch<unsigned char> keep(E);
            if (!keep.get()) return;
            std::memset(keep.get(), 1, E);
            for (int slice : gone) keep[slice] = 0;
            int to = 0;
            for (long long o = 0; o < outer; ++o) {
                for (int s = 0; s < E; ++s) {
                    if (!keep[s]) continue;
                    copy_elements<T>(x, static_cast<int>((o * E + s) * stride), result, to,
                                     static_cast<int>(stride));
                    to += static_cast<int>(stride);
                }
            }
        }
        if (last < 0) warning("possible memory overwrite");
    }
    for (int k = 0; k < x.nfields; ++k) result.addfield(x.fields[k], 1);
    result.classid = x.classid;
    install(x, result, saved);
    x.collapse();
}

}  // namespace

}  // namespace ak_internal

using namespace ak_internal;

void Mm::vwcopyn(const Mr& r, Mm y) {
    r.hold_numbers();
    if (flags.type == ak_no_type) {
        warn_uninit();
        return;
    }
    if (r.n <= 0) {
        *this = y;
        return;
    }
    // An index that is the target itself is read from a head of its own: x(x) = v must not see the
    // target change under it.
    for (int k = 0; k < r.n; ++k) {
        if (r.idx[k] != this) continue;
        Mm copies[4];
        const Mm* ix[4];
        for (int m = 0; m < r.n; ++m) {
            ix[m] = r.idx[m];
            if (r.idx[m] == this) {
                copies[m] = *this;
                ix[m] = &copies[m];
            }
        }
        vwcopyn(reference_on(r.type, *this, r.n, ix), y);
        return;
    }
    // A {} write replaces a target that is not a cell array (after its message).
    if (r.type == Mr_brace && flags.type != ak_mm) {
        *this = y;
        return;
    }
    switch (flags.type) {
        case ak_double:
            general_write<double>(*this, r, y);
            break;
        case ak_uchar:
            general_write<unsigned char>(*this, r, y);
            break;
        default:
            general_write<Mm>(*this, r, y);
            break;
    }
}

void Mm::vwcopy0(const Mr& r) {
    r.hold_numbers();
    switch (flags.type) {
        case ak_no_type:
            warn_uninit();
            break;
        case ak_double:
            general_delete<double>(*this, r);
            break;
        case ak_uchar:
            general_delete<unsigned char>(*this, r);
            break;
        default:
            general_delete<Mm>(*this, r);
            break;
    }
}
