// The index walk shared by subscript reads and assignments.
#include "core/index_odometer.h"

#include <cmath>
#include <cstdio>
#include <cstring>

#include "arklib/subscript.h"

namespace ak_internal {

index_value_text::index_value_text(double v) {
    if (std::isnan(v)) {
        std::strcpy(text, "NaN");
    } else if (std::isinf(v)) {
        std::strcpy(text, v > 0 ? "Inf" : "-Inf");
    } else {
        const double shown = std::trunc(v - 1.0) + 1.0;
        if (std::fabs(shown) < 9e18)
            std::snprintf(text, sizeof text, "%lld", static_cast<long long>(shown));
        else
            std::snprintf(text, sizeof text, "%.17g", shown);
    }
}

index_value_text::index_value_text(long long shown) { std::snprintf(text, sizeof text, "%lld", shown); }

int logical_count(const Mm& index) {
    if (index.flags.sparse) return index.nnz;
    int c = 0;
    if (index.flags.type == ak_uchar) {
        const unsigned char* m = static_cast<const unsigned char*>(index.pr);
        for (int k = 0; k < index.nnz; ++k) c += m[k] != 0;
    } else if (index.flags.type == ak_double) {
        const double* m = static_cast<const double*>(index.pr);
        for (int k = 0; k < index.nnz; ++k) c += m[k] != 0.0;
    }
    return c;
}

int index_extents(const Mr& r, const Mm& base, int extent[4], int report) {
    long long total = 1;
    for (int k = 0; k < 4; ++k) {
        int e = 1;
        if (k < r.n) {
            const Mm& ix = *r.idx[k];
            if (is_colon(ix)) {
                e = place_extent(base, r.n, k);
            } else if (ix.flags.logical) {
                e = logical_count(ix);
            } else {
                e = ix.size();
                if (ix.flags.sparse && ix.nnz != e) {
                    if (report)
                        error("Sparse index %s out of matrix %s. Index value was 0.", display_name(ix),
                              display_name(base));
                    if (ix.nnz < e) e = ix.nnz;
                }
            }
            if (e < 0) e = 0;
        }
        extent[k] = e;
        total *= e;
        if (total > INT_MAX) {
            error("Out of memory!");
            for (int j = 0; j < 4; ++j) extent[j] = 0;  // a caller that goes on selects nothing
            return 0;
        }
    }
    return static_cast<int>(total);
}

void start_odometer(index_odometer& o) {
    for (int k = 0; k < 4; ++k) {
        o.counter[k] = o.extent[k] - 1;
        o.position[k] = o.extent[k] - 1;
        o.maxseen[k] = -1;
    }
}

namespace {

// Position of place k after its counter moved; wrapped tells that the counter started again.
int place_position(const Mm& ix, int counter, int current, bool wrapped) {
    if (is_colon(ix)) return counter;
    if (!ix.flags.logical) {
        // Stored values of a sparse index, the elements of a full one.
        if (ix.flags.type == ak_uchar) return static_cast<const unsigned char*>(ix.pr)[counter] - 1;
        return index_position(static_cast<const double*>(ix.pr)[counter]);
    }
    if (ix.flags.sparse) return ix.index[counter];
    // Next true element of a dense mask. index_extents counted the trues, so the walk ends before
    // the mask does; the bound only guards against a mask changed since.
    int p = wrapped ? -1 : current;
    int size = ix.nnz;
    if (ix.flags.type == ak_uchar) {
        const unsigned char* m = static_cast<const unsigned char*>(ix.pr);
        do ++p;
        while (p < size && m[p] == 0);
    } else {
        const double* m = static_cast<const double*>(ix.pr);
        do ++p;
        while (p < size && m[p] == 0.0);
    }
    return p < size ? p : INT_MIN;
}

// Name of index k in a message. Names are formatted right to left, the base first: a scalar
// temporary's "=%d" text lives in one static buffer, and the leftmost one formatted is what shows.
const char* index_name(const Mr& r, int k) { return r.n >= 1 ? display_name(*r.idx[k]) : ":"; }

// The value of place k that the walk stands on, as the user gave it.
index_value_text place_value(const Mr& r, int k, const index_odometer& o) {
    if (r.n >= 1) {
        const Mm& ix = *r.idx[k];
        if (!is_colon(ix) && !ix.flags.logical && ix.flags.type == ak_double)
            return index_value_text(static_cast<const double*>(ix.pr)[o.counter[k]]);
    }
    return index_value_text(static_cast<long long>(o.position[k]) + 1);
}

}  // namespace

int next_linear_index(const Mr& r, const Mm& base, index_odometer& o, int growing, int report) {
    int n = r.n < 1 ? 1 : r.n;
    bool carry = true;
    for (int k = 0; k < n && carry; ++k) {
        ++o.counter[k];
        carry = o.counter[k] >= o.extent[k];
        if (carry) o.counter[k] = 0;
        if (r.n >= 1) o.position[k] = place_position(*r.idx[k], o.counter[k], o.position[k], carry);
    }
    if (r.n < 1) o.position[0] = o.counter[0];

    int vdim = base.vectordim();
    long long li = 0;
    for (int k = n - 1; k >= 0; --k) {
        int pos = o.position[k];
        if (pos < 0) {
            if (report) {
                const char* bname = display_name(base);
                error("index %s out of matrix %s. Index value was %s which is not positive.",
                      index_name(r, k), bname, place_value(r, k, o).text);
            }
            return -1;
        }
        if (n == 1) {
            int size = base.size();
            if (pos >= size) {
                if (vdim == 0) {
                    if (report) {
                        const char* bname = display_name(base);
                        error(
                            "Index %s out of matrix %s. Index value was %s however the indexed matrix has "
                            "only %d elements.",
                            index_name(r, k), bname, place_value(r, k, o).text, size);
                    }
                    return -1;
                }
                if (!growing) {
                    if (report) {
                        const char* bname = display_name(base);
                        error(
                            "Index %s out of vector %s. Index value was %s however the indexed vector has "
                            "only %d elements.",
                            index_name(r, k), bname, place_value(r, k, o).text, size);
                    }
                    return -1;
                }
            }
        } else {
            int extent = place_extent(base, n, k);
            if (pos >= extent && !growing) {
                if (report) {
                    const char* bname = display_name(base);
                    error(
                        "Index %s out of matrix %s. Index value was %s however the indexed matrix has %d "
                        "elements in this dimension.",
                        index_name(r, k), bname, place_value(r, k, o).text, extent);
                }
                return -1;
            }
        }
        if (growing && pos > o.maxseen[k]) o.maxseen[k] = pos;
        li = (k == n - 1 ? 0 : static_cast<long long>(base.dims[k]) * li) + pos;
        if (li > INT_MAX) li = INT_MAX;  // growing walks pass the end; no product may overflow
    }
    return li > INT_MAX ? INT_MAX : static_cast<int>(li);
}

}  // namespace ak_internal
