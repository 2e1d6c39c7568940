// The option vector of the ODE solvers: odeset and odeget.
#include <cstring>
#include <strings.h>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/constructors.h"
#include "arklib/error.h"
#include "arklib/ode.h"
#include "arklib/sparse.h"

namespace {

const char* const option_names[4] = {"RelTol", "AbsTol", "Refine", "InitialStep"};

// Position (0 to 3) of an option name, case ignored and cut at 64 characters; -1 if unknown.
int option_position(const Mm& name) {
    if (!name.isstr()) return -1;
    char text[65];
    Mstr(name, text, sizeof text);
    for (int k = 0; k < 4; ++k)
        if (strcasecmp(text, option_names[k]) == 0) return k;
    return -1;
}

// A copy of o as a full 4 x 1 column, or an empty matrix after a report.
Mm option_vector(const Mm& o, const char* who) {
    if (o.size() == 0 && !o.isstruct()) return zeros(4.0, 1.0);
    if (o.size() != 4 || o.flags.type != ak_double) {
        error("%s: options is not correct size", who);
        return Mm();
    }
    Mm v = o.issparse() ? full(o) : o;
    Mm r(0, 0, 0, 4, 1, ak_double);
    std::memcpy(r.addr(), v.addr(), 4 * sizeof(double));
    return r;
}

Mm set_pairs(const Mm& o, int npairs, const Mm* const* args) {
    Mm r = option_vector(o, "odeset");
    if (r.size() != 4) return x_M;
    for (int k = 0; k < npairs; ++k) {
        const Mm* name = args[2 * k];
        const Mm* value = args[2 * k + 1];
        if (!value) break;  // a name without its value
        const int pos = option_position(*name);
        if (pos < 0 || value->size() == 0 || value->flags.type == ak_mm) continue;
        Mm v = full(mdouble(*value));
        r.addr()[pos] = v.addr()[0];
    }
    return r;
}

}  // namespace

Mm odeset() { return zeros(4.0, 1.0); }
Mm odeset(const Mm& o) { return set_pairs(o, 0, nullptr); }
Mm odeset(const Mm& o, const Mm& n1) {
    const Mm* a[2] = {&n1, nullptr};
    return set_pairs(o, 1, a);
}
Mm odeset(const Mm& o, const Mm& n1, const Mm& v1) {
    const Mm* a[2] = {&n1, &v1};
    return set_pairs(o, 1, a);
}
Mm odeset(const Mm& o, const Mm& n1, const Mm& v1, const Mm& n2) {
    const Mm* a[4] = {&n1, &v1, &n2, nullptr};
    return set_pairs(o, 2, a);
}
Mm odeset(const Mm& o, const Mm& n1, const Mm& v1, const Mm& n2, const Mm& v2) {
    const Mm* a[4] = {&n1, &v1, &n2, &v2};
    return set_pairs(o, 2, a);
}
Mm odeset(const Mm& o, const Mm& n1, const Mm& v1, const Mm& n2, const Mm& v2, const Mm& n3) {
    const Mm* a[6] = {&n1, &v1, &n2, &v2, &n3, nullptr};
    return set_pairs(o, 3, a);
}
Mm odeset(const Mm& o, const Mm& n1, const Mm& v1, const Mm& n2, const Mm& v2, const Mm& n3, const Mm& v3) {
    const Mm* a[6] = {&n1, &v1, &n2, &v2, &n3, &v3};
    return set_pairs(o, 3, a);
}
Mm odeset(const Mm& o, const Mm& n1, const Mm& v1, const Mm& n2, const Mm& v2, const Mm& n3, const Mm& v3,
          const Mm& n4) {
    const Mm* a[8] = {&n1, &v1, &n2, &v2, &n3, &v3, &n4, nullptr};
    return set_pairs(o, 4, a);
}
Mm odeset(const Mm& o, const Mm& n1, const Mm& v1, const Mm& n2, const Mm& v2, const Mm& n3, const Mm& v3,
          const Mm& n4, const Mm& v4) {
    const Mm* a[8] = {&n1, &v1, &n2, &v2, &n3, &v3, &n4, &v4};
    return set_pairs(o, 4, a);
}
Mm odeset(const Mm& o, const Mm& n1, const Mm& v1, const Mm& n2, const Mm& v2, const Mm& n3, const Mm& v3,
          const Mm& n4, const Mm& v4, const Mm& n5) {
    const Mm* a[10] = {&n1, &v1, &n2, &v2, &n3, &v3, &n4, &v4, &n5, nullptr};
    return set_pairs(o, 5, a);
}
Mm odeset(const Mm& o, const Mm& n1, const Mm& v1, const Mm& n2, const Mm& v2, const Mm& n3, const Mm& v3,
          const Mm& n4, const Mm& v4, const Mm& n5, const Mm& v5) {
    const Mm* a[10] = {&n1, &v1, &n2, &v2, &n3, &v3, &n4, &v4, &n5, &v5};
    return set_pairs(o, 5, a);
}

Mm odeget(const Mm&) {
    error_input("odeget", 1);
    return x_M;
}
Mm odeget(const Mm& o, const Mm& name) { return odeget(o, name, Mm()); }
Mm odeget(const Mm& o, const Mm& name, const Mm& dflt) {
    if (o.size() != 4 || o.flags.type != ak_double) {
        error("odeget: options is not correct size");
        return x_M;
    }
    const int pos = option_position(name);
    if (pos < 0) return dflt;
    Mm v = o.issparse() ? full(o) : o;
    const double value = v.addr()[pos];
    return value > 0 ? Mm(value) : dflt;
}

AK_BUILTIN("odeset", AK_FN(odeset), AK_FN(odeset, const Mm&), AK_FN(odeset, const Mm&, const Mm&),
           AK_FN(odeset, const Mm&, const Mm&, const Mm&), AK_FN(odeset, const Mm&, const Mm&, const Mm&, const Mm&),
           AK_FN(odeset, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&),
           AK_FN(odeset, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&),
           AK_FN(odeset, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&),
           AK_FN(odeset, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&),
           AK_FN(odeset, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&,
                 const Mm&),
           AK_FN(odeset, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&,
                 const Mm&, const Mm&),
           AK_FN(odeset, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&,
                 const Mm&, const Mm&, const Mm&));
AK_BUILTIN("odeget", AK_FN(odeget, const Mm&), AK_FN(odeget, const Mm&, const Mm&),
           AK_FN(odeget, const Mm&, const Mm&, const Mm&));
