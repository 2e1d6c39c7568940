// Internal pieces of subscript reads shared between their source files.
#pragma once
#include "arklib/subscript.h"

namespace ak_internal {

// The element selection of a ( ) read of base through r, for double, byte and cell elements.
// Stores the selection in out and returns true, or returns false after a failed read (reported
// when report is set); the caller then gives `nothing`.
bool select_elements(const Mr& r, const Mm& base, int report, Mm& out);

// Takes over the head and storage of src into dst, which must hold no storage; src is left without
// any, so that its destruction releases nothing.
void adopt_head(Mm& dst, Mm& src);

}  // namespace ak_internal
