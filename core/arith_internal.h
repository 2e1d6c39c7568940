// Helpers shared by the files of named element-wise functions.
#pragma once
#include "arklib/matrix.h"

namespace ak_internal {

// An element operation through the engine.
inline Mm element(int complex, const Mm& a, const Mm& b, op_t op) {
    return Mm(complex, a, b, nop_M, op, 0, l_M);
}

// An operation along `dim` (0 for the first dimension above 1).
inline Mm along(int complex, const Mm& a, const Mm& b, const Mm& dim, op_t op) {
    return Mm(complex, a, b, dim, op, 1, l_M);
}

inline int has_pi(const Mm& a) { return a.pi != nullptr; }
inline int has_pi(const Mm& a, const Mm& b) { return a.pi != nullptr || b.pi != nullptr; }

inline Mm logical_result(Mm r) {
    r.flags.logical = 1;
    return r;
}

}  // namespace ak_internal
