// The mb family: argument checks that translated code makes where the source asserted a kind of
// value. Each test that fails is reported, in order, with the name of the matrix.
#include <initializer_list>

#include "arklib/calling.h"
#include "arklib/mex_modules.h"

namespace {

enum test_t { t_integer, t_real, t_scalar, t_vector };

bool passes(const Mm& m, test_t t) {
    switch (t) {
    case t_integer: return isint(m) == 1;
    case t_real: return isreal(m) != 0;
    case t_scalar: return isscalar(m) != 0;
    case t_vector: return isvector(m) != 0;
    }
    return true;
}

const char* word(test_t t) {
    static const char* const words[] = {"integer", "real", "scalar", "vector"};
    return words[t];
}

Mm check(const char* function, const Mm& m, std::initializer_list<test_t> tests) {
    for (test_t t : tests)
        if (!passes(m, t)) error("%s: %s not %s", function, m.name, word(t));
    return x_M;
}

}  // namespace

Mm mbint(const Mm& m) { return check("mbint", m, {t_integer}); }
Mm mbintreal(const Mm& m) { return check("mbintreal", m, {t_integer, t_real}); }
Mm mbintrealscalar(const Mm& m) { return check("mbintrealscalar", m, {t_integer, t_real, t_scalar}); }
Mm mbintrealvector(const Mm& m) { return check("mbintrealvector", m, {t_integer, t_real, t_vector}); }
Mm mbintscalar(const Mm& m) { return check("mbintscalar", m, {t_integer, t_scalar}); }
Mm mbintvector(const Mm& m) { return check("mbintvector", m, {t_integer, t_vector}); }
Mm mbrealvector(const Mm& m) { return check("mbrealvector", m, {t_real, t_vector}); }
Mm mbscalar(const Mm& m) { return check("mbscalar", m, {t_scalar}); }
// Reports with its sibling's word, as it always has.
Mm mbvector(const Mm& m) { return check("mbintvector", m, {t_vector}); }
