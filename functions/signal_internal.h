// Shared pieces of the signal-processing files.
#pragma once
#include "arklib/matrix.h"

namespace ak_signal {

// x as a full double matrix after the numeric check (an empty matrix after a report).
Mm numeric_input(const char* function, const Mm& x);
// A copy of x with n elements along dim: cut, or padded with zeros; complex when asked.
Mm resized_along(const Mm& x, int dim, int n, bool complex);
// The DFT of x along dim (-1: the first non-singleton dimension) at n points (-1: its length).
Mm dft_along(const char* function, const Mm& x, int n, int dim, bool inverse);

}  // namespace ak_signal
