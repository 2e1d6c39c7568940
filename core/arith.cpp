// Operators and named forms of element-wise arithmetic, comparison and logic. Each decides whether
// the result is complex and runs the engine.
#include "arklib/arith.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/linalg.h"
#include "core/arith_internal.h"
#include "arklib/builtins.h"

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

Mm mrdivide(const Mm& a, const Mm& b) {
    if (a.fields || b.fields) return call_class_function("mrdivide", a, b);
    if (b.size() == 1) return element(has_pi(a, b), a, b, op_rdivide);
    return ak_right_divide(a, b);
}

Mm ak_apply(Mm (*named)(const Mm&, const Mm&), const Mm& a, double b) { return named(a, Mm(b)); }
Mm ak_apply(Mm (*named)(const Mm&, const Mm&), double a, const Mm& b) { return named(Mm(a), b); }
Mm ak_apply(Mm (*named)(const Mm&, const Mm&), const Mr& a, double b) { return named(Mm(a), Mm(b)); }
Mm ak_apply(Mm (*named)(const Mm&, const Mm&), double a, const Mr& b) { return named(Mm(a), Mm(b)); }

Mm operator&&(const Mm& a, const Mm& b) { return mand(a, b); }
Mm operator||(const Mm& a, const Mm& b) { return mor(a, b); }
Mm operator!(const Mm& a) { return mnot(a); }
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
AK_ONE_INPUT(mrdivide, "mrdivide")
#undef AK_ONE_INPUT

// Forms without inputs.
#define AK_NO_INPUT(NAME, WORD) \
    Mm NAME() {                 \
        error_input(WORD, 0);   \
        return x_M;             \
    }
AK_NO_INPUT(plus, "plus")
AK_NO_INPUT(minus, "minus")
AK_NO_INPUT(times, "times")
AK_NO_INPUT(rdivide, "rdivide")
AK_NO_INPUT(ldivide, "ldivide")
AK_NO_INPUT(power, "power")
AK_NO_INPUT(uminus, "uminus")
AK_NO_INPUT(uplus, "uplus")
AK_NO_INPUT(lt, "lt")
AK_NO_INPUT(gt, "gt")
AK_NO_INPUT(le, "le")
AK_NO_INPUT(ge, "ge")
AK_NO_INPUT(eq, "eq")
AK_NO_INPUT(ne, "ne")
AK_NO_INPUT(mand, "and")
AK_NO_INPUT(mor, "or")
AK_NO_INPUT(mxor, "xor")
AK_NO_INPUT(mnot, "not")
AK_NO_INPUT(isfinite, "isfinite")
AK_NO_INPUT(isinf, "isinf")
AK_NO_INPUT(isnan, "isnan")
AK_NO_INPUT(abs, "abs")
AK_NO_INPUT(angle, "angle")
AK_NO_INPUT(real, "real")
AK_NO_INPUT(imag, "imag")
AK_NO_INPUT(conj, "conj")
AK_NO_INPUT(exp, "exp")
AK_NO_INPUT(ceil, "ceil")
AK_NO_INPUT(floor, "floor")
AK_NO_INPUT(fix, "fix")
AK_NO_INPUT(round, "round")
AK_NO_INPUT(sign, "sign")
AK_NO_INPUT(sin, "sin")
AK_NO_INPUT(cos, "cos")
AK_NO_INPUT(tan, "tan")
AK_NO_INPUT(sec, "sec")
AK_NO_INPUT(csc, "csc")
AK_NO_INPUT(cot, "cot")
AK_NO_INPUT(sinh, "sinh")
AK_NO_INPUT(cosh, "cosh")
AK_NO_INPUT(tanh, "tanh")
AK_NO_INPUT(sech, "sech")
AK_NO_INPUT(csch, "csch")
AK_NO_INPUT(coth, "coth")
AK_NO_INPUT(atan, "atan")
AK_NO_INPUT(acot, "acot")
AK_NO_INPUT(asinh, "asinh")
AK_NO_INPUT(acsch, "acsch")
AK_NO_INPUT(sinc, "sinc")
AK_NO_INPUT(pow2, "pow2")
AK_NO_INPUT(atan2, "atan2")
AK_NO_INPUT(mod, "mod")
AK_NO_INPUT(rem, "rem")
AK_NO_INPUT(erf, "erf")
AK_NO_INPUT(erfc, "erfc")
AK_NO_INPUT(erfcx, "erfcx")
AK_NO_INPUT(erfinv, "erfinv")
AK_NO_INPUT(gamma, "gamma")
AK_NO_INPUT(gammaln, "gammaln")
AK_NO_INPUT(beta, "beta")
AK_NO_INPUT(betaln, "betaln")
AK_NO_INPUT(gammainc, "gammainc")
AK_NO_INPUT(expint, "expint")
AK_NO_INPUT(mbitand, "bitand")
AK_NO_INPUT(mbitor, "bitor")
AK_NO_INPUT(bitxor, "bitxor")
AK_NO_INPUT(bitcmp, "bitcmp")
AK_NO_INPUT(bitget, "bitget")
AK_NO_INPUT(bitset, "bitset")
AK_NO_INPUT(bitreset, "bitreset")
AK_NO_INPUT(bitshift, "bitshift")
AK_NO_INPUT(sum, "sum")
AK_NO_INPUT(prod, "prod")
AK_NO_INPUT(cumsum, "cumsum")
AK_NO_INPUT(cumprod, "cumprod")
AK_NO_INPUT(all, "all")
AK_NO_INPUT(any, "any")
AK_NO_INPUT(median, "median")
AK_NO_INPUT(max, "max")
AK_NO_INPUT(min, "min")
AK_NO_INPUT(diff, "diff")
AK_NO_INPUT(unwrap, "unwrap")
AK_NO_INPUT(gradient, "gradient")
AK_NO_INPUT(del2, "del2")
AK_NO_INPUT(mtimes, "mtimes")
AK_NO_INPUT(transpose, "transpose")
AK_NO_INPUT(ctranspose, "ctranspose")
AK_NO_INPUT(mpower, "mpower")
AK_NO_INPUT(mrdivide, "mrdivide")
#undef AK_NO_INPUT

// ---- rows of the table of functions by name ----------------------------------------------------
AK_BUILTIN("plus", AK_FN(plus, const Mm&, const Mm&), AK_FN(plus, const Mm&), AK_FN(plus));
AK_BUILTIN("minus", AK_FN(minus, const Mm&, const Mm&), AK_FN(minus, const Mm&));
AK_BUILTIN("times", AK_FN(times, const Mm&, const Mm&), AK_FN(times, const Mm&));
AK_BUILTIN("rdivide", AK_FN(rdivide, const Mm&, const Mm&), AK_FN(rdivide, const Mm&));
AK_BUILTIN("ldivide", AK_FN(ldivide, const Mm&, const Mm&), AK_FN(ldivide, const Mm&));
AK_BUILTIN("uminus", AK_FN(uminus, const Mm&));
AK_BUILTIN("uplus", AK_FN(uplus, const Mm&));
AK_BUILTIN("lt", AK_FN(lt, const Mm&, const Mm&), AK_FN(lt, const Mm&));
AK_BUILTIN("gt", AK_FN(gt, const Mm&, const Mm&), AK_FN(gt, const Mm&), AK_FN(gt));
AK_BUILTIN("le", AK_FN(le, const Mm&, const Mm&), AK_FN(le, const Mm&));
AK_BUILTIN("ge", AK_FN(ge, const Mm&, const Mm&), AK_FN(ge, const Mm&));
AK_BUILTIN("eq", AK_FN(eq, const Mm&, const Mm&), AK_FN(eq, const Mm&));
AK_BUILTIN("ne", AK_FN(ne, const Mm&, const Mm&), AK_FN(ne, const Mm&));
AK_BUILTIN("and", AK_FN(mand, const Mm&, const Mm&), AK_FN(mand, const Mm&));
AK_BUILTIN("or", AK_FN(mor, const Mm&, const Mm&), AK_FN(mor, const Mm&));
AK_BUILTIN("xor", AK_FN(mxor, const Mm&, const Mm&), AK_FN(mxor, const Mm&));
AK_BUILTIN("not", AK_FN(mnot, const Mm&));
AK_BUILTIN("isfinite", AK_FN(isfinite, const Mm&));
AK_BUILTIN("isinf", AK_FN(isinf, const Mm&), AK_FN(isinf));
AK_BUILTIN("isnan", AK_FN(isnan, const Mm&));
AK_BUILTIN("mrdivide", AK_FN(mrdivide, const Mm&, const Mm&), AK_FN(mrdivide, const Mm&), AK_FN(mrdivide));
