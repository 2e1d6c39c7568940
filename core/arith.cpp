// Operators and named forms of element-wise arithmetic, comparison and logic. Each decides whether
// the result is complex and runs the engine.
#include "arklib/arith.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "core/arith_internal.h"

using ak_internal::element;
using ak_internal::has_pi;
using ak_internal::logical_result;

namespace {

// Comparisons of order first drop an all-zero imaginary half, then compare real parts.
Mm compare(const Mm& a, const Mm& b, op_t op) {
    Mm x(a, a.name), y(b, b.name);  // named like the operands, for the messages
    x.getreal(0);
    y.getreal(0);
    return logical_result(element(0, x, y, op));
}

}  // namespace

Mm plus(const Mm& a, const Mm& b) { return element(has_pi(a, b), a, b, op_plus); }
Mm minus(const Mm& a, const Mm& b) { return element(has_pi(a, b), a, b, op_minus); }
Mm times(const Mm& a, const Mm& b) { return element(has_pi(a, b), a, b, op_times); }
Mm rdivide(const Mm& a, const Mm& b) { return element(has_pi(a, b), a, b, op_rdivide); }
Mm ldivide(const Mm& a, const Mm& b) { return element(has_pi(a, b), a, b, op_ldivide); }
Mm dot_mul(const Mm& a, const Mm& b) { return times(a, b); }
Mm dot_div(const Mm& a, const Mm& b) { return rdivide(a, b); }
Mm dot_invdiv(const Mm& a, const Mm& b) { return ldivide(a, b); }
Mm uminus(const Mm& a) { return element(has_pi(a), a, zero_M, op_uminus); }
Mm uplus(const Mm& a) { return element(has_pi(a), a, zero_M, op_uplus); }

Mm lt(const Mm& a, const Mm& b) { return compare(a, b, op_lt); }
Mm gt(const Mm& a, const Mm& b) { return compare(a, b, op_gt); }
Mm le(const Mm& a, const Mm& b) { return compare(a, b, op_le); }
Mm ge(const Mm& a, const Mm& b) { return compare(a, b, op_ge); }
Mm eq(const Mm& a, const Mm& b) { return logical_result(element(0, a, b, op_eq)); }
Mm ne(const Mm& a, const Mm& b) { return logical_result(element(0, a, b, op_ne)); }
Mm mand(const Mm& a, const Mm& b) { return logical_result(element(0, a, b, op_and)); }
Mm mor(const Mm& a, const Mm& b) { return logical_result(element(0, a, b, op_or)); }
Mm mxor(const Mm& a, const Mm& b) { return logical_result(element(0, a, b, op_xor)); }
Mm mnot(const Mm& a) { return logical_result(element(0, a, zero_M, op_not)); }
Mm isfinite(const Mm& a) { return logical_result(element(0, a, zero_M, op_isfinite)); }
Mm isinf(const Mm& a) { return logical_result(element(0, a, zero_M, op_isinf)); }
Mm isnan(const Mm& a) { return logical_result(element(0, a, zero_M, op_isnan)); }

Mm operator+(const Mm& a, const Mm& b) { return plus(a, b); }
Mm operator-(const Mm& a, const Mm& b) { return minus(a, b); }
Mm operator*(const Mm& a, const Mm& b) { return mtimes(a, b); }

Mm operator/(const Mm& a, const Mm& b) {
    if (a.fields || b.fields) return call_class_function("mrdivide", a, b);
    if (b.size() == 1) return element(has_pi(a, b), a, b, op_rdivide);
    error("%s is not yet implemented", "mrdivide");
    return x_M;
}
Mm operator<(const Mm& a, const Mm& b) { return lt(a, b); }
Mm operator>(const Mm& a, const Mm& b) { return gt(a, b); }
Mm operator<=(const Mm& a, const Mm& b) { return le(a, b); }
Mm operator>=(const Mm& a, const Mm& b) { return ge(a, b); }
Mm operator==(const Mm& a, const Mm& b) { return eq(a, b); }
Mm operator!=(const Mm& a, const Mm& b) { return ne(a, b); }
Mm operator&&(const Mm& a, const Mm& b) { return mand(a, b); }
Mm operator||(const Mm& a, const Mm& b) { return mor(a, b); }
Mm operator!(const Mm& a) { return mnot(a); }
Mm operator-(const Mm& a) { return uminus(a); }
Mm operator+(const Mm& a) { return uplus(a); }

// Forms with one input of two-input functions.
#define AK_ONE_INPUT(NAME, WORD) \
    Mm NAME(const Mm&) {         \
        error_input(WORD, 1);    \
        return x_M;              \
    }
AK_ONE_INPUT(plus, "plus")
AK_ONE_INPUT(minus, "minus")
AK_ONE_INPUT(times, "times")
AK_ONE_INPUT(rdivide, "rdivide")
AK_ONE_INPUT(ldivide, "ldivide")
AK_ONE_INPUT(power, "power")
AK_ONE_INPUT(dot_mul, "times")
AK_ONE_INPUT(dot_div, "rdivide")
AK_ONE_INPUT(dot_invdiv, "ldivide")
AK_ONE_INPUT(lt, "lt")
AK_ONE_INPUT(gt, "gt")
AK_ONE_INPUT(le, "le")
AK_ONE_INPUT(ge, "ge")
AK_ONE_INPUT(eq, "eq")
AK_ONE_INPUT(ne, "ne")
AK_ONE_INPUT(mand, "and")
AK_ONE_INPUT(mor, "or")
AK_ONE_INPUT(mxor, "xor")
AK_ONE_INPUT(atan2, "atan2")
AK_ONE_INPUT(mod, "mod")
AK_ONE_INPUT(rem, "rem")
AK_ONE_INPUT(beta, "beta")
AK_ONE_INPUT(betaln, "betaln")
AK_ONE_INPUT(gammainc, "gammainc")
AK_ONE_INPUT(mbitand, "bitand")
AK_ONE_INPUT(mbitor, "bitor")
AK_ONE_INPUT(bitxor, "bitxor")
AK_ONE_INPUT(bitget, "bitget")
AK_ONE_INPUT(bitset, "bitset")
AK_ONE_INPUT(bitreset, "bitreset")
AK_ONE_INPUT(bitshift, "bitshift")
AK_ONE_INPUT(mtimes, "mtimes")
AK_ONE_INPUT(mpower, "mpower")
#undef AK_ONE_INPUT
