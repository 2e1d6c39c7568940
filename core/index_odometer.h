// The index walk shared by subscript reads and assignments: counts of the places of a reference and
// an odometer that yields the selected positions one by one, in column-major order of the result.
#pragma once
#include <climits>

#include "arklib/subscript.h"

namespace ak_internal {

// Zero-based position of an index value: 1 is subtracted and the rest truncated toward zero, so
// 2.7 is position 1, 0.5 position 0 and 0 position -1. NaN and values below the int range give
// INT_MIN; values of 2^31 and above give INT_MAX, a position no matrix holds (its element count
// would not fit an int), so every range check rejects both and a growing write can tell the one
// that is too large.
inline int index_position(double v) {
    double t = v - 1.0;
    if (t > -2147483649.0 && t < 2147483647.0) return static_cast<int>(t);
    return t >= 2147483647.0 ? INT_MAX : INT_MIN;
}

// The index value a message shows: what the user gave, as position + 1 (so 2.7 shows 2), whole
// beyond the int range too; NaN and the infinities by name.
struct index_value_text {
    char text[32];
    explicit index_value_text(double v);
    explicit index_value_text(long long shown);
};

// Number of nonzero elements of a logical index (the stored count of a sparse one).
int logical_count(const Mm& index);

// Extent of dimension k of base when k is the last of n places: the trailing dimensions merge into
// the last subscript, so x(1,:) of a 2x3x4 array walks 12 columns.
inline int place_extent(const Mm& base, int n, int k) {
    if (n == 1) return base.size();
    int e = base.dims[k];
    if (k == n - 1)
        for (int d = k + 1; d < 4; ++d) e *= base.dims[d];
    return e;
}

// State of a walk over the positions selected by a reference.
struct index_odometer {
    int extent[4];    // count of each place; 1 beyond the last index
    int counter[4];   // how far each place has gone
    int position[4];  // zero-based position of each place in the base
    int maxseen[4];   // largest position met in each place, -1 before any (growing walks)
};

// Fills extent[] with the count of each place of r over base (a colon the extent of the base, a
// logical index its trues, any other index its size) and returns their product T. A sparse index
// with stored zero positions is reported (when report is set) and counted by its stored entries.
// A product beyond the int range reports "Out of memory!" and gives 0 with every extent 0.
int index_extents(const Mr& r, const Mm& base, int extent[4], int report);

// Sets the counters so that the first call of next_linear_index wraps every place to its start.
void start_odometer(index_odometer& o);

// Advances to the next selected element and returns its zero-based linear position in base, or -1
// after a position out of range (reported when report is set). With growing set, positions past
// the end of a vector or of a place of a multi-index reference are accepted and recorded in maxseen
// instead, as an assignment may grow the base.
int next_linear_index(const Mr& r, const Mm& base, index_odometer& o, int growing, int report);

}  // namespace ak_internal
