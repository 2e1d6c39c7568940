// Sparse matrices: conversions between the full and the sparse form, and the sparse functions.
#pragma once
#include "arklib/matrix.h"

Mm full(const Mm& a);
Mm sparse(const Mm& a);
