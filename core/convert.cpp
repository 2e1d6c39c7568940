// The class word of a value and the conversions between element types.
#include <cstring>

#include "arklib/cells.h"
#include "arklib/sparse.h"
#include "arklib/strings.h"
#include "arklib/builtins.h"

namespace {

Mm logical_scalar(int v) {
    Mm r(static_cast<double>(v));
    r.flags.logical = 1;
    return r;
}

// A numeric copy of x in element type `type`: full, unshared, and no longer a string.
Mm converted(const Mm& x, ak_matrix_types type) {
    x.warn_uninit();
    Mm r;
    if (x.flags.sparse) {
        Mm f = full(x);
        r.deepcopy(f.pi != nullptr, 0, f, type);
    } else {
        r.deepcopy(x.pi != nullptr, 0, x, type);
    }
    r.flags.str = 0;
    return r;
}

}  // namespace

Mm mclass(const Mm& x) { return TM(class_name_of(x)); }

Mm mclass(const Mm& x, const Mm& name) {
    char text[ak_class_name_size];
    Mstr(name, text, sizeof text);
    Mm r(x);
    r.classid = class_id_of_name(text);
    return r;
}

Mm isa(const Mm& x, const Mm& name) {
    char text[ak_class_name_size];
    Mstr(name, text, sizeof text);
    // A sparse matrix is a double as well as a sparse.
    if (x.flags.sparse && std::strcmp(text, "double") == 0) return logical_scalar(1);
    return logical_scalar(std::strcmp(class_name_of(x), text) == 0);
}

Mm mdouble(const Mm& x) {
    if (x.fields) return call_class_function("double", x);
    if (x.flags.type == ak_double) {
        Mm r = full(x);
        r.flags.str = 0;
        return r;
    }
    return converted(x, ak_double);
}

Mm muint8(const Mm& x) {
    if (x.flags.type == ak_uchar) return x;
    return converted(x, ak_uchar);
}

Mm muint16(const Mm&) {
    error("%s is not yet implemented", "uint16");
    return x_M;
}

Mm mchar(const Mm& x) { return str2mat(x); }

Mm mlogical(const Mm& x) {
    if (x.pi) error("logical: argument is complex");
    Mm r(x);
    r.flags.logical = 1;
    return r;
}

// ---- rows of the table of functions by name ----------------------------------------------------
AK_BUILTIN("class", AK_FN(mclass, const Mm&), AK_FN(mclass, const Mm&, const Mm&));
AK_BUILTIN("isa", AK_FN(isa, const Mm&, const Mm&));
AK_BUILTIN("double", AK_FN(mdouble, const Mm&));
AK_BUILTIN("uint8", AK_FN(muint8, const Mm&));
AK_BUILTIN("uint16", AK_FN(muint16, const Mm&));
AK_BUILTIN("char", AK_FN(mchar, const Mm&));
AK_BUILTIN("logical", AK_FN(mlogical, const Mm&));
