// Elementary functions whose real input can have a complex result: the domain scans that decide
// it, the wrappers that run the engine with that decision, and power with its own rule.
#include <cmath>

#include "arklib/arith.h"
#include "arklib/calling.h"
#include "arklib/elementary.h"
#include "core/arith_internal.h"
#include "arklib/builtins.h"

using ak_internal::element;

namespace {

// Whether the stored real values of a double matrix include one that `outside` accepts. A matrix
// of another type never leaves the reals here. NaN fails every comparison, so it is never found.
template <class Outside>
bool scan(const Mm& a, Outside outside) {
    if (a.flags.type != ak_double || !a.pr) return false;
    const double* v = a.addr();
    for (int k = 0; k < a.nnz; ++k)
        if (outside(v[k])) return true;
    return false;
}

// A sparse matrix with unstored elements holds zeros; for the functions whose forbidden range
// contains 0 that is a find without a scan.
bool holds_implicit_zeros(const Mm& a) { return a.flags.sparse && a.nnz < a.size(); }

// Runs op on a with a complex result when a is complex or `outside` finds an element.
template <class Outside>
Mm domain(const Mm& a, op_t op, Outside outside) {
    int complex = a.pi != nullptr || scan(a, outside);
    return element(complex, a, zero_M, op);
}

// The same for the functions that are complex at 0.
template <class Outside>
Mm domain_with_zero(const Mm& a, op_t op, Outside outside) {
    int complex = a.pi != nullptr || holds_implicit_zeros(a) || scan(a, outside);
    return element(complex, a, zero_M, op);
}

inline bool negative(double x) { return x < 0; }
inline bool beyond_one(double x) { return x < -1 || x > 1; }
inline bool below_one(double x) { return x < 1; }
inline bool outside_unit(double x) { return x < 0 || x > 1; }
inline bool inside_one(double x) { return x > -1 && x < 1; }

// power goes complex when an operand is, or, unless b is the real scalar 2, when a has a negative
// element: a negative base with any other exponent may leave the reals.
bool power_is_complex(const Mm& a, const Mm& b) {
    if (a.pi || b.pi) return true;
    bool b_is_two =
        b.flags.type == ak_double && !b.flags.sparse && b.nnz == 1 && b.size() == 1 && b.addr()[0] == 2.0;
    return !b_is_two && scan(a, negative);
}

}  // namespace

Mm msqrt(const Mm& a) { return domain(a, op_sqrt, negative); }
Mm sqrt(const Mm& a) { return msqrt(a); }
Mm log(const Mm& a) { return domain(a, op_log, negative); }
Mm log2(const Mm& a) { return domain(a, op_log2, negative); }
Mm log10(const Mm& a) { return domain(a, op_log10, negative); }
Mm asin(const Mm& a) { return domain(a, op_asin, beyond_one); }
Mm acos(const Mm& a) { return domain(a, op_acos, beyond_one); }
Mm atanh(const Mm& a) { return domain(a, op_atanh, beyond_one); }
Mm asech(const Mm& a) { return domain(a, op_asech, outside_unit); }
Mm acosh(const Mm& a) { return domain_with_zero(a, op_acosh, below_one); }
Mm asec(const Mm& a) { return domain_with_zero(a, op_asec, inside_one); }
Mm acsc(const Mm& a) { return domain_with_zero(a, op_acsc, inside_one); }
Mm acoth(const Mm& a) { return domain_with_zero(a, op_acoth, inside_one); }

Mm reallog(const Mm& a) { return element(0, a, zero_M, op_log); }
Mm realsqrt(const Mm& a) { return element(0, a, zero_M, op_sqrt); }

Mm power(const Mm& a, const Mm& b) { return element(power_is_complex(a, b), a, b, op_power); }
Mm realpow(const Mm& a, const Mm& b) { return power(a, b); }
Mm dot_pow(const Mm& a, const Mm& b) { return power(a, b); }

Mm realpow(const Mm&) {
    error_input("realpow", 1);
    return x_M;
}

Mm dot_pow(const Mm&) {
    error_input("power", 1);
    return x_M;
}

// [f, e] = log2(x): the mantissa and exponent of the real parts, with frexp's convention.
Mm log2(const Mm& x, i_o_t, Mm& e) {
    x.warn_uninit();
    if (x.flags.type == ak_mm) {
        error("Operation can not be performed on non-numerical datatypes");
        return x_M;
    }
    Mm f, ex;
    f.deepcopy(0, x, ak_double);
    ex.deepcopy(0, x, ak_double);
    f.flags.str = f.flags.logical = ex.flags.str = ex.flags.logical = 0;
    double* fv = f.addr();
    double* ev = ex.addr();
    for (int k = 0; k < f.nnz; ++k) {
        int n = 0;
        if (std::isfinite(fv[k])) fv[k] = std::frexp(fv[k], &n);
        ev[k] = n;
    }
    if (ex.flags.sparse) ex.resparse();
    e = ex;
    return f;
}

// ---- rows of the table of functions by name ----------------------------------------------------
AK_BUILTIN("power", AK_FN(power, const Mm&, const Mm&), AK_FN(power, const Mm&));
AK_BUILTIN("sqrt", AK_FN(sqrt, const Mm&));
AK_BUILTIN("log", AK_FN(log, const Mm&));
AK_BUILTIN("log2", AK_FN(log2, const Mm&), AK_FN(log2, const Mm&, i_o_t, Mm&));
AK_BUILTIN("log10", AK_FN(log10, const Mm&));
AK_BUILTIN("asin", AK_FN(asin, const Mm&));
AK_BUILTIN("acos", AK_FN(acos, const Mm&));
AK_BUILTIN("atanh", AK_FN(atanh, const Mm&));
AK_BUILTIN("acosh", AK_FN(acosh, const Mm&));
AK_BUILTIN("asech", AK_FN(asech, const Mm&));
AK_BUILTIN("asec", AK_FN(asec, const Mm&));
AK_BUILTIN("acsc", AK_FN(acsc, const Mm&));
AK_BUILTIN("acoth", AK_FN(acoth, const Mm&));
AK_BUILTIN("reallog", AK_FN(reallog, const Mm&));
AK_BUILTIN("realsqrt", AK_FN(realsqrt, const Mm&));
AK_BUILTIN("realpow", AK_FN(realpow, const Mm&, const Mm&), AK_FN(realpow, const Mm&));
