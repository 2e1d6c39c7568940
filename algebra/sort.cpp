// sort and the two sorters behind sort and sortrows: a three-way quicksort on plain values, and a
// stable shell sort of row numbers for when the permutation is wanted.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "algebra/complex_scalar.h"
#include "algebra/sort_internal.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/constructors.h"
#include "arklib/sort.h"
#include "arklib/sparse.h"
#include "arklib/subscript.h"
#include "arklib/builtins.h"

namespace ak_internal {

namespace {

// ---- the value sorter's quicksort ------------------------------------------------------------------

inline void swap_values(double* a, double* b) {
    double t = *a;
    *a = *b;
    *b = t;
}

inline double* median3(double* a, double* b, double* c) {
    return *a < *b ? (*b < *c ? b : (*a < *c ? c : a)) : (*b > *c ? b : (*a < *c ? a : c));
}

// Straight insertion: each element moves left past larger neighbours.
void insertion_sort(double* a, std::ptrdiff_t n) {
    for (std::ptrdiff_t k = 1; k < n; ++k) {
        double v = a[k];
        std::ptrdiff_t p = k;
        for (; p > 0 && a[p - 1] > v; --p) a[p] = a[p - 1];
        a[p] = v;
    }
}

// Partitions a[0..n) around the pivot held in a[0] into [a, less_end) below it,
// [less_end, more_begin) equal to it and [more_begin, a + n) above it. Two cursors run in from both
// ends and out-of-order pairs are swapped; in the long middle stretch both sides are classified a
// block of 64 at a time without branching and the pairs swapped afterwards, which spares the
// mispredicted branch per element that dominates a plain scan. Elements equal to the pivot stay
// where they are met and are gathered into the middle at the end, when there are any besides the
// pivot itself.
void partition3(double* a, std::ptrdiff_t n, double*& less_end, double*& more_begin) {
    constexpr int block = 64;
    const double pivot = *a;
    double* pb = a + 1;
    double* pc = a + (n - 1);
    bool equal_seen = false;
    unsigned char off_l[block], off_r[block];
    int num_l = 0, num_r = 0, start_l = 0, start_r = 0;
    while (pc - pb + 1 >= 2 * block) {
        if (num_l == 0) {
            start_l = 0;
            for (int j = 0; j < block; ++j) {
                double v = pb[j];
                off_l[num_l] = static_cast<unsigned char>(j);
                num_l += v > pivot;
                equal_seen |= v == pivot;
            }
        }
        if (num_r == 0) {
            start_r = 0;
            for (int j = 0; j < block; ++j) {
                double v = pc[-j];
                off_r[num_r] = static_cast<unsigned char>(j);
                num_r += v < pivot;
                equal_seen |= v == pivot;
            }
        }
        int num = std::min(num_l, num_r);
        for (int j = 0; j < num; ++j) swap_values(pb + off_l[start_l + j], pc - off_r[start_r + j]);
        num_l -= num;
        num_r -= num;
        start_l += num;
        start_r += num;
        if (num_l == 0) pb += block;
        if (num_r == 0) pc -= block;
    }
    // The rest, partly classified blocks included, one element at a time.
    for (;;) {
        for (; pb <= pc && *pb <= pivot; ++pb) equal_seen |= *pb == pivot;
        for (; pb <= pc && *pc >= pivot; --pc) equal_seen |= *pc == pivot;
        if (pb > pc) break;
        swap_values(pb++, pc--);
    }
    // [a + 1, pb) is not above the pivot, [pb, a + n) not below it.
    if (!equal_seen) {
        swap_values(a, pb - 1);
        less_end = pb - 1;
        more_begin = pb;
        return;
    }
    std::ptrdiff_t mid = pb - a, w = mid;
    for (std::ptrdiff_t k = mid - 1; k >= 0; --k)
        if (a[k] == pivot) swap_values(a + k, a + --w);
    less_end = a + w;
    w = mid;
    for (std::ptrdiff_t k = mid; k < n; ++k)
        if (a[k] == pivot) swap_values(a + k, a + w++);
    more_begin = a + w;
}

// Three-way quicksort: stretches below 7 by insertion; the pivot is the middle element at 7, the
// median of first, middle and last above 7, and above 40 the median of three such medians taken
// an eighth of the length apart. Elements equal to the pivot are left out of both parts. Only
// values are kept, so the order in which the parts are finished does not change the result: the
// smaller part is recursed into and the larger looped on, and a stretch that keeps splitting badly
// is finished by heapsort, so that neither the stack nor the time can blow up on adversarial input.
void quicksort3(double* a, std::ptrdiff_t n, int depth) {
    for (;;) {
        if (n < 7) {
            insertion_sort(a, n);
            return;
        }
        if (depth-- <= 0) {
            std::make_heap(a, a + n);
            std::sort_heap(a, a + n);
            return;
        }
        double* pm = a + n / 2;
        if (n > 7) {
            double* pl = a;
            double* pn = a + (n - 1);
            if (n > 40) {
                std::ptrdiff_t d = n / 8;
                pl = median3(pl, pl + d, pl + 2 * d);
                pm = median3(pm - d, pm, pm + d);
                pn = median3(pn - 2 * d, pn - d, pn);
            }
            pm = median3(pl, pm, pn);
        }
        swap_values(a, pm);
        double *less_end, *more_begin;
        partition3(a, n, less_end, more_begin);

        std::ptrdiff_t less = less_end - a, more = a + n - more_begin;
        if (less <= more) {
            if (less > 1) quicksort3(a, less, depth);
            if (more <= 1) return;
            a = more_begin;
            n = more;
        } else {
            if (more > 1) quicksort3(more_begin, more, depth);
            if (less <= 1) return;
            n = less;
        }
    }
}

// ---- the indexed sorter ----------------------------------------------------------------------------

// Whether c stops moving left when p is its left neighbour at the current gap.
inline bool stops_behind(const double* key, const double* second, int p, int c) {
    double kp = key[p], kc = key[c];
    if (!(kp <= kc)) return false;
    if (kc != kp) return true;
    return p <= c && (!second || second[p] <= second[c]);
}

void shell_sort(const double* key, const double* second, int n, int* order) {
    int gap = 1;
    while (gap <= n) gap = 3 * gap + 1;
    do {
        gap /= 3;
        for (int k = gap; k < n; ++k) {
            int c = order[k];
            int pos = k;
            while (pos >= gap) {
                int p = order[pos - gap];
                if (stops_behind(key, second, p, c)) break;
                order[pos] = p;
                pos -= gap;
            }
            order[pos] = c;
        }
    } while (gap > 1);
}

// Real keys without NaN: the shell sort's order is ascending key, equal keys by row number, which
// is one strict order; sorting (key, row) pairs gives it directly.
struct keyed_row {
    double key;
    int row;
};

void pair_sort(const double* key, int n, int* order) {
    ak_scratch<keyed_row> pairs(n);
    if (!pairs.get()) {
        shell_sort(key, nullptr, n, order);
        return;
    }
    keyed_row* p = pairs.get();
    for (int k = 0; k < n; ++k) p[k] = keyed_row{key[k], k};
    std::sort(p, p + n, [](const keyed_row& a, const keyed_row& b) {
        return a.key < b.key || (a.key == b.key && a.row < b.row);
    });
    for (int k = 0; k < n; ++k) order[k] = p[k].row;
}

double nan_value() { return std::numeric_limits<double>::quiet_NaN(); }

}  // namespace

void sort_column(double* a, int n) {
    if (n < 2) return;
    int depth = 0;
    for (int m = n; m > 1; m >>= 1) depth += 2;
    quicksort3(a, n, depth + 8);
}

void index_sort(const double* key, const double* second, int n, int* order) {
    for (int k = 0; k < n; ++k) order[k] = k;
    if (n < 2) return;
    if (!second && std::none_of(key, key + n, [](double v) { return std::isnan(v); })) {
        pair_sort(key, n, order);
        return;
    }
    shell_sort(key, second, n, order);
}

// Sorts the lines of x along one dimension: `len` elements `stride` apart, starting at every
// position whose own coordinate in that dimension is 0. Real lines have NaN taken as Inf for the
// ordering and put back in the last places; complex lines are ordered by modulus, then phase.
void sort_lines(const Mm& x, int stride, int len, Mm& y, Mm* index) {
    const int total = x.nnz;
    const bool complex = x.pi != nullptr;
    y = Mm(complex ? 1 : 0, 0, 0, x.ndims, x.dims, ak_double);
    if (index) *index = Mm(0, 0, 0, x.ndims, x.dims, ak_double);
    if (total == 0 || len == 0 || y.nnz != total) return;

    ak_scratch<double> key(len), second(complex ? len : 0);
    ak_scratch<int> order(len + 1);
    if (!key.get() || !order.get() || (complex && !second.get())) return;
    const double* xr = static_cast<const double*>(x.pr);
    const double* xi = static_cast<const double*>(x.pi);
    double* yr = y.addr();
    double* yi = y.addi();
    double* ir = index ? index->addr() : nullptr;
    const int block = stride * len;

    for (int base = 0; base < total; base += block) {
        for (int start = base; start < base + stride; ++start) {
            int nan_count = 0;
            for (int k = 0; k < len; ++k) {
                int at = start + k * stride;
                if (complex) {
                    key[k] = c_abs(xr[at], xi[at]);
                    second[k] = c_angle(xr[at], xi[at]);
                } else if (std::isnan(xr[at])) {
                    key[k] = std::numeric_limits<double>::infinity();
                    ++nan_count;
                } else {
                    key[k] = xr[at];
                }
            }
            index_sort(key, complex ? second.get() : nullptr, len, order);
            for (int k = 0; k < len; ++k) {
                int at = start + k * stride, from = order[k];
                if (complex) {
                    yr[at] = xr[start + from * stride];
                    yi[at] = xi[start + from * stride];
                } else {
                    yr[at] = k < len - nan_count ? key[from] : nan_value();
                }
                if (ir) ir[at] = from + 1;
            }
        }
    }
}

// x as a full double matrix: sparse made full, bytes widened. Strings and logical keep their flag.
Mm full_double(const Mm& x) {
    Mm f = x.flags.sparse ? full(x) : x;
    if (f.flags.type == ak_uchar) {
        Mm d;
        d.deepcopy(f, ak_double);
        return d;
    }
    return f;
}

// Gives y the kind of the input it was sorted from: string and logical flags, and bytes.
void restore_kind(const Mm& x, Mm& y) {
    y.flags.str = x.flags.str;
    y.flags.logical = x.flags.logical;
    if (x.flags.type == ak_uchar && !y.pi) y.deepcopy(y, ak_uchar);
}

bool sortable(const Mm& x, const char* name) {
    if (x.flags.type == ak_no_type) {
        x.warn_uninit();
        return false;
    }
    return !error_numeric(x, name);
}

bool is_cellstr(const Mm& x) { return x.flags.type == ak_mm && !x.fields && istrue(iscellstr(x)); }

}  // namespace ak_internal

using namespace ak_internal;

void sort_engine(const Mm& x, Mm& y) {
    if (!sortable(x, "sort")) return;
    if (x.dims[0] == 0) {
        y = x;
        return;
    }
    Mm source = full_double(x);
    const int rows = source.dims[0];
    const int cols = source.nnz / rows;
    Mm out(0, 0, 0, rows, cols, ak_double);
    if (out.nnz != rows * cols) return;
    const double* from = static_cast<const double*>(source.pr);
    double* a = out.addr();
    const double inf = std::numeric_limits<double>::infinity();
    for (int c = 0; c < cols; ++c, a += rows, from += rows) {
        // Copy with every NaN taken as Inf, sort, and give the last as many places NaN.
        int nan_count = 0;
        for (int r = 0; r < rows; ++r) {
            double v = from[r];
            bool nan = std::isnan(v);
            nan_count += nan;
            a[r] = nan ? inf : v;
        }
        sort_column(a, rows);
        for (int r = rows - nan_count; r < rows; ++r) a[r] = nan_value();
    }
    restore_kind(x, out);
    y = out;
}

Mm sort_engine(Mm& x, Mm& y, Mm& i) {
    if (!sortable(x, "sort")) return x_M;
    if (x.dims[0] == 0) {
        y = nop_M;
        i = nop_M;
        return y;
    }
    Mm source = full_double(x);
    Mm out, index;
    sort_lines(source, 1, source.dims[0], out, &index);
    restore_kind(x, out);
    y = out;
    i = index;
    return y;
}

namespace {

// A row vector (first size 1) is sorted along its length: seen as a column, then given back its shape.
Mm as_column(const Mm& x) {
    Mm c = x;
    if (x.dims[0] == 1 && x.size() > 0) c.reshape(x.size(), 1);  // size: a sparse row stores fewer
    return c;
}

void reshape_like(Mm& m, const Mm& x) {
    if (m.size() == x.size() && m.size() > 0) m.reshape(x.ndims, x.dims);
}

}  // namespace

Mm sort(const Mm& x) {
    if (is_cellstr(x)) return sortrows(x);
    if (!sortable(x, "sort")) return x_M;
    Mm column = as_column(x);
    Mm y;
    if (!column.pi) {
        sort_engine(column, y);
    } else {
        Mm i;
        sort_engine(column, y, i);
    }
    reshape_like(y, x);
    return y;
}

Mm sort(const Mm& x, i_o_t, Mm& y, Mm& i) {
    if (is_cellstr(x)) return sortrows(x, i_o, y, i);
    if (!sortable(x, "sort")) return x_M;
    Mm column = as_column(x);
    Mm values, index;
    sort_engine(column, values, index);
    reshape_like(values, x);
    reshape_like(index, x);
    y = values;
    i = index;
    return values;
}

Mm sort(const Mm& x, const Mm& dim, i_o_t, Mm& y, Mm& i) {
    if (!sortable(x, "sort")) return x_M;
    int d = normalize_dim_argument("sort", x, dim);
    Mm source = full_double(x);
    Mm values, index;
    if (source.nnz == 0 || d >= source.ndims || source.dims[d] == 0) {
        values = nop_M;
        index = nop_M;
    } else {
        int stride = 1;
        for (int k = 0; k < d; ++k) stride *= source.dims[k];
        sort_lines(source, stride, source.dims[d], values, &index);
        restore_kind(x, values);
    }
    y = values;
    i = index;
    return values;
}

Mm sort(const Mm& x, const Mm& dim) {
    Mm y, i;
    return sort(x, dim, i_o, y, i);
}

// ---- rows of the table of functions by name ----------------------------------------------------
AK_BUILTIN("sort", AK_FN(sort, const Mm&), AK_FN_REFS(sort, const Mm&, i_o_t, Mm&, Mm&),
           AK_FN(sort, const Mm&, const Mm&), AK_FN_REFS(sort, const Mm&, const Mm&, i_o_t, Mm&, Mm&));
