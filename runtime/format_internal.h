// Helpers shared by the writer and the reader of the format engine.
#pragma once
#include <cctype>
#include <string>

#include "arklib/format.h"
#include "arklib/matrix.h"

namespace ak_internal {

// What a conversion converts, by its character as written: the classes that the writer, the reader
// and the making of safe pieces treat alike. Literal text is the kind '='.
enum class conversion_class { literal, character, integer, real, count, pointer, text, unknown };
inline conversion_class class_of(int kind) {
    switch (std::toupper(kind)) {
        case '=':
            return conversion_class::literal;
        case 'C':
            return conversion_class::character;
        case 'D':
        case 'I':
        case 'O':
        case 'U':
        case 'X':
            return conversion_class::integer;
        case 'E':
        case 'F':
        case 'G':
            return conversion_class::real;
        case 'N':
            return conversion_class::count;
        case 'P':
            return conversion_class::pointer;
        case 'S':
            return conversion_class::text;
        default:
            return conversion_class::unknown;
    }
}

// The piece as the platform formatter (for_write) or scanner may safely see it: every directive
// but a final one of the piece's own kind is escaped to literal text, the final directive gets the
// length its argument needs ("l" for integers), a '*' width is dropped when writing, and the width
// of a text conversion when reading is bounded by max_width. So the platform call never takes more
// than the one argument it is given, nor writes past a buffer of max_width + 1 characters.
std::string safe_piece(const char* piece, int kind, bool for_write, int max_width);

// The characters of all elements of m in column-major order, each truncated to a byte, up to the
// first NUL.
std::string matrix_text(const Mm& m);

// The value truncated toward zero and saturated to the range of long; NaN gives 0.
long saturate_long(double v);
// The same to the range of int.
int saturate_int(double v);

// A parsed format released on every path out of its scope, including a thrown error.
struct pieces_holder {
    format_pieces r;
    pieces_holder() {
        r.last = -1;
        r.cursor = 0;
        r.all_text = 1;
        r.after_literal = 0;
    }
    ~pieces_holder() { format_release(r); }
    pieces_holder(const pieces_holder&) = delete;
    pieces_holder& operator=(const pieces_holder&) = delete;
};

}  // namespace ak_internal
