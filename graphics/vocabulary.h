// The property names and value words of the graphics layer, as ready string matrices.
//
// Plotting code passes these by reference, so a property write builds no string:
//     set(h, ak_word(akp_Color), ak_word(akw_none));
// akp_ names a property, akw_ a value word; a name that does not begin with a letter gets an "n"
// (akp_n2position). akw_empty_text is the empty string, which marks a value not given.
#pragma once

#include "arklib/matrix.h"

enum ak_word_id {
#define AK_PROPERTY(id, text) akp_##id,
#define AK_VALUE_WORD(id, text) akw_##id,
#include "graphics/vocabulary.def"
#undef AK_PROPERTY
#undef AK_VALUE_WORD
    akw_empty_text,
    ak_word_count
};

// The string matrix of a word; made once, on first use, and kept until the library unloads.
const Mm& ak_word(ak_word_id id);
// Its text.
const char* ak_word_text(ak_word_id id);
