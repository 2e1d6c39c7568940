// The options of the optimisers: the vector of foptions, the structure of optimset and optimget, and
// the one step that turns a structure into the vector.
#include <cmath>
#include <cstring>
#include <strings.h>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/error.h"
#include "arklib/optim.h"
#include "arklib/sparse.h"
#include "methods/lapack.h"
#include "methods/optim_internal.h"

namespace ak_internal {
namespace {

// Structure names of the 18 positions; "?" has none.
const char* const option_names[18] = {"Display", "TolX", "TolFun", "TolCon",  "?",        "?",
                                      "?",       "?",    "DerivativeCheck", "?", "?", "?",
                                      "?",       "MaxFunEvals", "MinAbsMax", "DiffMinChange", "DiffMaxChange", "?"};
const double defaults[18] = {0, 1e-4, 1e-4, 1e-6, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1e-8, 0.1, 0};

int name_position(const char* text) {
    for (int k = 0; k < 18; ++k)
        if (option_names[k][0] != '?' && strcasecmp(text, option_names[k]) == 0) return k;
    return -1;
}

// The value written to the vector: the first element, with the words of Display as 0 or 1.
double option_number(int pos, const Mm& value) {
    if (pos == 0 && value.isstr()) {
        char word[32];
        Mstr(value, word, sizeof word);
        return strcasecmp(word, "off") == 0 || strcasecmp(word, "none") == 0 ? 0 : 1;
    }
    if (value.flags.type == ak_mm) return 0;
    Mm d = full(mdouble(value));
    return d.size() > 0 ? d.addr()[0] : 0;
}

}  // namespace

Mm options_t::matrix() const {
    Mm m(0, 0, 0, 18, 1, ak_double);
    std::memcpy(m.addr(), v, sizeof v);
    return m;
}

options_t options_from_vector(const Mm& in) {
    options_t o;
    std::memset(o.v, 0, sizeof o.v);
    if (in.flags.type != ak_mm && in.size() > 0) {
        Mm d = full(mdouble(in));
        const int n = d.size() < 18 ? d.size() : 18;
        std::memcpy(o.v, d.addr(), sizeof(double) * n);
    }
    for (int k = 0; k < 18; ++k)
        if (!(o.v[k] > 0)) o.v[k] = defaults[k];
    return o;
}

options_t options_from_struct(const Mm& s) {
    options_t o = options_from_vector(Mm());
    for (int k = 0; k < 18; ++k) {
        if (option_names[k][0] == '?') continue;
        if (s.findfield(option_names[k], 0) < 0) continue;
        Mm value = getfield(s, TM(option_names[k]));
        if (value.size() > 0) o.v[k] = option_number(k, value);
    }
    return o;
}

options_t options_from(const Mm& o) { return isstruct(o) ? options_from_struct(o) : options_from_vector(o); }

double reduce_result(const Mm& r, bool root_mode) {
    if (r.size() <= 0 || r.flags.type == ak_mm) {
        error("optimization: function returned empty result");
        return 0;
    }
    Mm d = r.flags.type == ak_double && !r.issparse() ? r : full(mdouble(r));
    double v;
    if (d.size() == 1) {
        v = d.addr()[0];
    } else {
        const int n = d.size(), one = 1;
        v = ddot_(&n, d.addr(), &one, d.addr(), &one);
    }
    return root_mode && v < 0 ? -v : v;
}

Mm objective_t::raw(const Mm& x, int nout, Mm* out) {
    ++calls_;
    const Mm* lead[1] = {&x};
    call_user(name_, args_.list(1, lead), nout, out);
    return out[0];
}

double objective_t::operator()(const Mm& x) {
    Mm r;
    raw(x, 1, &r);
    return reduce_result(r, root_);
}

Mm shaped(const Mm& like, const double* v) {
    Mm x(0, 0, 0, like.rows(), like.cols(), ak_double);
    std::memcpy(x.addr(), v, sizeof(double) * x.size());
    return x;
}

}  // namespace ak_internal

using ak_internal::options_from_vector;

Mm foptions() { return options_from_vector(Mm()).matrix(); }
Mm foptions(const Mm& v) { return options_from_vector(v).matrix(); }

// ---- optimset and optimget -----------------------------------------------------------------------------
namespace {

// All the named fields, each empty.
Mm empty_options() {
    Mm list(0, 0, 0, 1, 18, ak_mm);
    Mm* e = list.getpr(static_cast<Mm*>(nullptr));
    int k = 0;
    for (const char* name : ak_internal::option_names)
        if (name[0] != '?') {
            e[k++] = TM(name);
            e[k++] = Mm();
        }
    list.reshape(1, k);
    return mstruct(list);
}

// s with the field name (its table spelling when it is an option) set to value.
Mm set_option(const Mm& s, const Mm& name, const Mm& value) {
    char text[128];
    Mstr(name, text, sizeof text);
    const int pos = ak_internal::name_position(text);
    return setfield(s, TM(pos >= 0 ? ak_internal::option_names[pos] : text), value);
}

// Copies each non-empty field of from into s.
Mm merge_options(Mm s, const Mm& from) {
    for (int k = 0; k < from.getnfields(); ++k) {
        Mm name = TM(from.getfield(k));
        Mm value = getfield(from, name);
        if (value.size() > 0) s = set_option(s, name, value);
    }
    return s;
}

Mm optimset_list(int n, const Mm* const* a) {
    Mm s = empty_options();
    int k = 0;
    while (k < n) {
        if (isstruct(*a[k])) {
            s = merge_options(s, *a[k]);
            ++k;
        } else if (a[k]->isstr() && k + 1 < n) {
            s = set_option(s, *a[k], *a[k + 1]);
            k += 2;
        } else {
            error("optimset: arguments must be structures or name and value pairs");
            return x_M;
        }
    }
    return s;
}

}  // namespace

Mm optimset() { return empty_options(); }
Mm optimset(const Mm&) {
    error("not supported.");
    return x_M;
}
Mm optimset(const Mm& a, const Mm& b) {
    const Mm* l[] = {&a, &b};
    return optimset_list(2, l);
}
Mm optimset(const Mm& a, const Mm& b, const Mm& c) {
    const Mm* l[] = {&a, &b, &c};
    return optimset_list(3, l);
}
Mm optimset(const Mm& a, const Mm& b, const Mm& c, const Mm& d) {
    const Mm* l[] = {&a, &b, &c, &d};
    return optimset_list(4, l);
}
Mm optimset(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e) {
    const Mm* l[] = {&a, &b, &c, &d, &e};
    return optimset_list(5, l);
}
Mm optimset(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e, const Mm& f) {
    const Mm* l[] = {&a, &b, &c, &d, &e, &f};
    return optimset_list(6, l);
}
Mm optimset(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e, const Mm& f, const Mm& g) {
    const Mm* l[] = {&a, &b, &c, &d, &e, &f, &g};
    return optimset_list(7, l);
}
Mm optimset(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e, const Mm& f, const Mm& g,
            const Mm& h) {
    const Mm* l[] = {&a, &b, &c, &d, &e, &f, &g, &h};
    return optimset_list(8, l);
}
Mm optimset(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e, const Mm& f, const Mm& g,
            const Mm& h, const Mm& i) {
    const Mm* l[] = {&a, &b, &c, &d, &e, &f, &g, &h, &i};
    return optimset_list(9, l);
}

Mm optimget(const Mm&) {
    error_input("optimget", 1);
    return x_M;
}
Mm optimget(const Mm& s, const Mm& name) { return optimget(s, name, Mm()); }
Mm optimget(const Mm& s, const Mm& name, const Mm& dflt) {
    if (!isstruct(s)) {
        error("optimget: the options must be a structure");
        return x_M;
    }
    char text[128];
    Mstr(name, text, sizeof text);
    const int pos = ak_internal::name_position(text);
    const char* field = pos >= 0 ? ak_internal::option_names[pos] : text;
    if (s.findfield(field, 0) < 0) return dflt;
    Mm value = getfield(s, TM(field));
    if (value.size() == 0) return dflt;
    if (value.isstr() || value.flags.type == ak_mm) return value;
    return ak_internal::option_number(pos, value) > 0 ? value : dflt;
}

AK_BUILTIN("foptions", AK_FN(foptions), AK_FN(foptions, const Mm&));
AK_BUILTIN("optimset", AK_FN(optimset), AK_FN(optimset, const Mm&), AK_FN(optimset, const Mm&, const Mm&),
           AK_FN(optimset, const Mm&, const Mm&, const Mm&), AK_FN(optimset, const Mm&, const Mm&, const Mm&, const Mm&),
           AK_FN(optimset, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&),
           AK_FN(optimset, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&),
           AK_FN(optimset, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&),
           AK_FN(optimset, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&),
           AK_FN(optimset, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&,
                 const Mm&));
AK_BUILTIN("optimget", AK_FN(optimget, const Mm&), AK_FN(optimget, const Mm&, const Mm&),
           AK_FN(optimget, const Mm&, const Mm&, const Mm&));
