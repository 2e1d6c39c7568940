// Pieces shared by the line and surface halves of the plot family.
#pragma once

#include <vector>

#include "arklib/matrix.h"

namespace ak_internal {

// The value as full real doubles (bytes and logicals converted, the imaginary part dropped).
Mm plain(const Mm& m);
// A column of handles.
Mm handle_column(const std::vector<double>& h);
// One line object of the chart `name` in the current axes: colour index (sent as -100 - index),
// marker and style indices, then its n points (z null in the plane).
double add_line_object(const char* name, int color, int marker, int style, int n, const double* x,
                       const double* y, const double* z);

}  // namespace ak_internal
