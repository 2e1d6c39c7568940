// The properties of each kind of object: name, type and default.
#pragma once

#include "engine/objects.h"

namespace ae {

enum class PType {
    any,       // stored as given
    number,    // one number
    vector,    // numbers, `size` of them (0: any count)
    data,      // a numeric matrix of any shape
    color,     // RGB row or a colour name
    colorword, // as color, or one of `words`
    word,      // one of `words`, without case; stored as listed
    text,      // text or empty
    handle,    // a live handle
    readonly,  // computed by the engine
};

struct PropRule {
    const char* name;
    PType type;
    const char* words;  // '|'-separated for word and colorword
    const char* def;    // "'text'", "numbers", "a b c;d e f" rows, or "" for empty
    int size;           // for vector
};

// The rules of a kind (the properties every object has come first), ended by a null name.
const PropRule* const* rules_of(Kind k);
// The rule of a property of a kind, or null when the kind has none of that name.
const PropRule* find_rule(Kind k, const char* name);
// The value of a default literal.
Value parse_default(const char* def);

}  // namespace ae
