// Pieces shared by the indexed assignment routes: index rounding, element kinds, fresh storage and
// the message names.
#pragma once
#include <climits>
#include <cstring>
#include <type_traits>

#include "arklib/subscript.h"
#include "core/index_odometer.h"

namespace ak_internal {

// The value of an index for size decisions: rounded to nearest, halves away from zero. Positions are
// truncated instead (index_position), so x(2.7) = 1 grows x to 3 elements and writes the second.
// NaN gives INT_MIN and values beyond the int range saturate.
inline int index_rounded(double v) {
    double r = v > 0 ? v + 0.5 : v - 0.5;
    if (r > -2147483648.0 && r < 2147483648.0) return static_cast<int>(r);
    return v > 0 ? INT_MAX : INT_MIN;
}

// Element kinds of the route bodies: doubles and bytes have a separate imaginary plane, cells none.
template <typename T>
constexpr bool is_cell_kind() {
    return std::is_same<T, Mm>::value;
}
template <typename T>
inline T* real_plane(const Mm& m) {
    return static_cast<T*>(m.pr);
}
template <typename T>
inline T* imag_plane(const Mm& m) {
    return is_cell_kind<T>() ? nullptr : static_cast<T*>(m.pi);
}

// What a new element of a grown matrix holds: 0, or for cells an empty matrix (one shared storage:
// elements are written by assignment, which never writes through it).
template <typename T>
struct element_fill {
    T value{};
};
template <>
struct element_fill<Mm> {
    Mm value;
};

// Sets elements [from, to) of both planes to the fill value.
template <typename T>
void fill_new(const Mm& m, int from, int to) {
    element_fill<T> fill;
    T* re = real_plane<T>(m);
    T* im = imag_plane<T>(m);
    for (int k = from; k < to; ++k) re[k] = fill.value;
    if (im)
        for (int k = from; k < to; ++k) im[k] = fill.value;
}

// Copies count elements of from, starting at position at, to position to_at of to (both planes; a
// missing imaginary half reads as zeros).
template <typename T>
void copy_elements(const Mm& from, int at, const Mm& to, int to_at, int count) {
    T* re = real_plane<T>(to);
    T* im = imag_plane<T>(to);
    const T* fr = real_plane<T>(from);
    const T* fi = imag_plane<T>(from);
    if (count <= 0) return;
    if constexpr (is_cell_kind<T>()) {
        for (int k = 0; k < count; ++k) re[to_at + k] = fr[at + k];
    } else {
        std::memcpy(re + to_at, fr + at, sizeof(T) * count);
        if (im) {
            if (fi)
                std::memcpy(im + to_at, fi + at, sizeof(T) * count);
            else
                std::memset(im + to_at, 0, sizeof(T) * count);
        }
    }
}

// Writes element k of y (or its only element, when scalar) at position p of x, in both planes.
template <typename T>
struct source_reader {
    const T* re;
    const T* im;
    bool scalar;
    explicit source_reader(const Mm& y) : re(real_plane<T>(y)), im(imag_plane<T>(y)), scalar(y.size() == 1) {}
    void put(const Mm& x, int p, int k) const {
        if (scalar) k = 0;
        real_plane<T>(x)[p] = re[k];
        if constexpr (!is_cell_kind<T>()) {
            T* xi = imag_plane<T>(x);
            if (xi) xi[p] = im ? im[k] : T(0);
        }
    }
};

// A new dense matrix of the target's element type, whose element count is checked: false (after the
// report of the allocator or the constructor) when the storage could not be had.
bool fresh_matrix(const Mm& like, int complex, int nd, const int* dims, Mm& out);
inline bool fresh_matrix(const Mm& like, int complex, int rows, int cols, Mm& out) {
    int d[2] = {rows, cols};
    return fresh_matrix(like, complex, 2, d, out);
}

// Room for a matrix that an assignment grows past its capacity: twice the elements, so that
// appending in a loop moves each element about once on average. (With half again, each moved about
// twice, and at a million cell heads the moves, not the appends, were most of the time.)
inline long long grown_room(long long want) {
    long long room = want * 2;
    return room > INT_MAX - 64 ? INT_MAX - 64 : room;
}

// Like fresh_matrix, with storage for `room` elements (at least the element count).
bool fresh_matrix_room(const Mm& like, int complex, int nd, const int* dims, long long room, Mm& out);

// Swaps two element heads without touching their storage; a value held in a head moves with it.
inline void swap_heads(Mm& a, Mm& b) {
    alignas(Mm) unsigned char t[sizeof(Mm)];
    void* pa = static_cast<void*>(&a);
    void* pb = static_cast<void*>(&b);
    const bool a_held = a.holds_value(), b_held = b.holds_value();
    std::memcpy(t, pa, sizeof(Mm));
    std::memcpy(pa, pb, sizeof(Mm));
    std::memcpy(pb, t, sizeof(Mm));
    if (b_held) a.pr = &a.shadowed;
    if (a_held) b.pr = &b.shadowed;
}

// Elements [0, n) of x to the front of fresh, at the same positions. Cells that x alone holds give
// their heads over (the empty heads of fresh go back with x's old storage); everything else is copied.
template <typename T>
void carry_elements(const Mm& x, const Mm& fresh, int n) {
    if constexpr (is_cell_kind<T>()) {
        if (!x.dirty()) {
            Mm* from = real_plane<Mm>(x);
            Mm* to = real_plane<Mm>(fresh);
            for (int k = 0; k < n; ++k) swap_heads(from[k], to[k]);
            return;
        }
    }
    copy_elements<T>(x, 0, fresh, 0, n);
}

// Installs fresh storage in the target and puts its seven flag words back.
inline void install(Mm& x, const Mm& fresh, const M_types& saved) {
    x = fresh;
    x.flags = saved;
}

// The source of a write, converted to the target's element type when they differ (bytes truncate,
// doubles widen, anything becomes a cell). Null after "Can not convert %s into a numeric matrix".
const Mm* settle_source(const Mm& x, const Mm& y, Mm& converted);

// The index as doubles (an index of another element type is converted as the reference does).
const Mm& double_index(const Mm& i, Mm& converted);

// display_name of several matrices for one message, formatted from the last to the first: unnamed
// scalars share one static buffer, and the first one of the message is what all of them show.
struct message_names {
    const char* s[5];
    message_names(const Mm& a, const Mm& b) {
        s[1] = display_name(b);
        s[0] = display_name(a);
    }
    message_names(const Mm& a, const Mm& b, const Mm& c) {
        s[2] = display_name(c);
        s[1] = display_name(b);
        s[0] = display_name(a);
    }
    message_names(const Mm& a, const Mm& b, const Mm& c, const Mm& d) {
        s[3] = display_name(d);
        s[2] = display_name(c);
        s[1] = display_name(b);
        s[0] = display_name(a);
    }
    message_names(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e) {
        s[4] = display_name(e);
        s[3] = display_name(d);
        s[2] = display_name(c);
        s[1] = display_name(b);
        s[0] = display_name(a);
    }
};

}  // namespace ak_internal
