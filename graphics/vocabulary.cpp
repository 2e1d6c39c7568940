// The vocabulary's string matrices.
#include "graphics/vocabulary.h"

namespace {

const char* const texts[ak_word_count] = {
#define AK_PROPERTY(id, text) text,
#define AK_VALUE_WORD(id, text) text,
#include "graphics/vocabulary.def"
#undef AK_PROPERTY
#undef AK_VALUE_WORD
    "",
};

struct Vocabulary {
    Mm words[ak_word_count];
    Vocabulary() {
        for (int k = 0; k < ak_word_count; ++k) words[k] = TM(texts[k]);
    }
};

}  // namespace

const Mm& ak_word(ak_word_id id) {
    static Vocabulary v;
    return v.words[id];
}

const char* ak_word_text(ak_word_id id) { return texts[id]; }
