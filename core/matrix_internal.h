// Helpers shared by the matrix core's own files.
#pragma once
#include <climits>
#include <cmath>
#include <cstdlib>
#include <memory>

#include "arklib/matrix.h"

namespace ak_internal {

// Largest element count a matrix may hold: its byte size must stay representable for ak_malloc.
constexpr long long max_elements = (static_cast<long long>(INT_MAX) - 64) / 16;

// Frees memory of the C heap (getIr, getJc, the scanner's values) when its owner goes, also when an
// error is thrown past it: std::unique_ptr<int, c_heap_free>.
struct c_heap_free {
    void operator()(void* p) const { std::free(p); }
};

// A double truncated towards zero, of which the low byte is kept; non-finite values give 0.
inline unsigned char to_byte(double v) {
    double t = std::trunc(v);
    if (!(std::fabs(t) < 9.2e18)) return 0;
    return static_cast<unsigned char>(static_cast<long long>(t));
}

// Element k (zero-based) of a numeric matrix as a byte.
inline unsigned char element_byte(const Mm& m, int k) {
    if (m.flags.type == ak_uchar) return static_cast<const unsigned char*>(m.pr)[k];
    return to_byte(static_cast<const double*>(m.pr)[k]);
}

// Where a checked accessor points after a reported failure, so that a returning error handler
// never leads to an access outside the storage.
double& scratch_double();
unsigned char& scratch_byte();
Mm& scratch_matrix();

// The filler of free slots in a field-name table: only a non-null mark.
extern const char* const field_filler;

// Values of the constant objects; runs at load time and again at initM2.
void init_const();

// Turns the keeping of freed 1x1 blocks on or off; off gives every kept block back.
void keep_scalar_blocks(bool on);
// Gives every kept 1x1 block back to the allocator.
void release_scalar_blocks();

}  // namespace ak_internal
