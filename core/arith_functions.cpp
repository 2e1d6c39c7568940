// Named functions of one element, the special functions and the bit family.
#include <cmath>

#include "arklib/arith.h"
#include "arklib/calling.h"
#include "core/arith_internal.h"
#include "functions/gamma_erf_bits.h"
#include "arklib/builtins.h"

using ak_internal::element;
using ak_internal::has_pi;

namespace {

// A function closed on the reals: complex exactly when its input is.
Mm closed(const Mm& a, op_t op) { return element(has_pi(a), a, zero_M, op); }
// A function with a real result.
Mm to_real(const Mm& a, op_t op) { return element(0, a, zero_M, op); }

}  // namespace

Mm abs(const Mm& a) { return to_real(a, op_abs); }
Mm angle(const Mm& a) { return to_real(a, op_angle); }
Mm imag(const Mm& a) { return to_real(a, op_imag); }

Mm real(const Mm& a) {
    if (!a.pi) return a;
    Mm r;
    r.deepcopy(0, a, ak_no_type);
    return r;
}

Mm conj(const Mm& a) {
    if (!a.pi) return a;
    return element(1, a, zero_M, op_conj);
}

Mm exp(const Mm& a) { return closed(a, op_exp); }
Mm ceil(const Mm& a) { return closed(a, op_ceil); }
Mm floor(const Mm& a) { return closed(a, op_floor); }
Mm fix(const Mm& a) { return closed(a, op_fix); }
Mm round(const Mm& a) { return closed(a, op_round); }
Mm sign(const Mm& a) { return closed(a, op_sign); }
Mm sin(const Mm& a) { return closed(a, op_sin); }
Mm cos(const Mm& a) { return closed(a, op_cos); }
Mm tan(const Mm& a) { return closed(a, op_tan); }
Mm sec(const Mm& a) { return closed(a, op_sec); }
Mm csc(const Mm& a) { return closed(a, op_csc); }
Mm cot(const Mm& a) { return closed(a, op_cot); }
Mm sinh(const Mm& a) { return closed(a, op_sinh); }
Mm cosh(const Mm& a) { return closed(a, op_cosh); }
Mm tanh(const Mm& a) { return closed(a, op_tanh); }
Mm sech(const Mm& a) { return closed(a, op_sech); }
Mm csch(const Mm& a) { return closed(a, op_csch); }
Mm coth(const Mm& a) { return closed(a, op_coth); }
Mm atan(const Mm& a) { return closed(a, op_atan); }
Mm acot(const Mm& a) { return closed(a, op_acot); }
Mm asinh(const Mm& a) { return closed(a, op_asinh); }
Mm acsch(const Mm& a) { return closed(a, op_acsch); }
Mm sinc(const Mm& a) { return closed(a, op_sinc); }
Mm pow2(const Mm& a) { return closed(a, op_pow2_1); }
Mm pow2(const Mm& f, const Mm& e) { return element(0, f, e, op_pow2_2); }
Mm atan2(const Mm& y, const Mm& x) { return element(0, y, x, op_atan2); }
Mm mod(const Mm& a, const Mm& b) { return element(0, a, b, op_mod); }
Mm rem(const Mm& a, const Mm& b) { return element(0, a, b, op_rem); }

Mm erf(const Mm& a) { return to_real(a, op_erf); }
Mm erfc(const Mm& a) { return to_real(a, op_erfc); }
Mm erfcx(const Mm& a) { return to_real(a, op_erfcx); }
Mm erfinv(const Mm& a) { return to_real(a, op_erfinv); }
Mm gamma(const Mm& a) { return to_real(a, op_gamma); }
Mm gammaln(const Mm& a) { return to_real(a, op_gammaln); }
Mm beta(const Mm& a, const Mm& b) { return element(0, a, b, op_beta); }
Mm betaln(const Mm& a, const Mm& b) { return element(0, a, b, op_betaln); }
Mm gammainc(const Mm& x, const Mm& a) { return element(0, x, a, op_gammainc); }

// E1 of a negative real is complex, like a logarithm of a negative number.
Mm expint(const Mm& a) {
    int complex = has_pi(a);
    if (!complex && a.flags.type == ak_double && a.pr) {
        const double* v = a.addr();
        for (int k = 0; k < a.nnz && !complex; ++k) complex = v[k] < 0;
    }
    return element(complex, a, zero_M, op_expint);
}

// ---- bit family ----------------------------------------------------------------------------------------

namespace {

using ak_internal::k_bit_count;
using ak_internal::sf_bit_ok;

// The real values of a double matrix must pass `ok`; a byte matrix always does. Reports with `what`.
template <class Test>
bool check_values(const Mm& m, const char* name, const char* what, Test ok) {
    if (m.flags.type != ak_double || !m.pr) return true;
    const double* v = m.addr();
    for (int k = 0; k < m.nnz; ++k) {
        if (!ok(v[k])) {
            error("%s: %s", name, what);
            return false;
        }
    }
    return true;
}

const char* operand_words = "arguments must be non-negative integers below 2^53";

bool bit_operand(const Mm& m, const char* name) {
    return check_values(m, name, operand_words, [](double x) { return sf_bit_ok(x); });
}

// Bit positions from 1 to the width of the type.
bool bit_position(const Mm& a, const Mm& bit, const char* name) {
    int width = a.flags.type == ak_uchar ? 8 : k_bit_count;
    return check_values(bit, name, "bit position must be an integer from 1 to the number of bits",
                        [width](double x) { return x >= 1 && x <= width && x == std::floor(x); });
}

Mm bits2(const Mm& a, const Mm& b, op_t op, const char* name) {
    if (!bit_operand(a, name) || !bit_operand(b, name)) return x_M;
    return element(0, a, b, op);
}

Mm bits_at(const Mm& a, const Mm& bit, op_t op, const char* name) {
    if (!bit_operand(a, name) || !bit_position(a, bit, name)) return x_M;
    return element(0, a, bit, op);
}

}  // namespace

Mm mbitand(const Mm& a, const Mm& b) { return bits2(a, b, op_bitand, "bitand"); }
Mm mbitor(const Mm& a, const Mm& b) { return bits2(a, b, op_bitor, "bitor"); }
Mm bitxor(const Mm& a, const Mm& b) { return bits2(a, b, op_bitxor, "bitxor"); }
Mm bitget(const Mm& a, const Mm& bit) { return bits_at(a, bit, op_bitget, "bitget"); }
Mm bitset(const Mm& a, const Mm& bit) { return bits_at(a, bit, op_bitset, "bitset"); }
Mm bitreset(const Mm& a, const Mm& bit) { return bits_at(a, bit, op_bitreset, "bitreset"); }

// bitset(a, bit, v): the bit set where v is not zero, cleared where it is.
Mm bitset(const Mm& a, const Mm& bit, const Mm& v) {
    Mm on = bitset(a, bit), off = bitreset(a, bit);
    Mm keep = ne(v, zero_M);
    return plus(times(keep, on), times(mnot(keep), off));
}

Mm bitcmp(const Mm& a) { return bitcmp(a, Mm(a.flags.type == ak_uchar ? 8.0 : double(k_bit_count))); }

Mm bitcmp(const Mm& a, const Mm& n) {
    if (!bit_operand(a, "bitcmp") || !bit_position(a, n, "bitcmp")) return x_M;
    return element(0, a, n, op_bitcmp);
}

Mm bitshift(const Mm& a, const Mm& k) {
    if (!bit_operand(a, "bitshift")) return x_M;
    if (!check_values(k, "bitshift", "shift must be an integer",
                      [](double x) { return std::isfinite(x) && x == std::floor(x); }))
        return x_M;
    return element(0, a, k, op_bitshift);
}

// The shift keeping the low n bits: the bits above n are cleared afterwards.
Mm bitshift(const Mm& a, const Mm& k, const Mm& n) {
    Mm shifted = bitshift(a, k);
    if (!bit_position(a, n, "bitshift")) return x_M;
    Mm mask = minus(pow2(n), one_M);
    return mbitand(shifted, mask);
}

// ---- rows of the table of functions by name ----------------------------------------------------
AK_BUILTIN("abs", AK_FN(abs, const Mm&));
AK_BUILTIN("angle", AK_FN(angle, const Mm&));
AK_BUILTIN("real", AK_FN(real, const Mm&));
AK_BUILTIN("imag", AK_FN(imag, const Mm&));
AK_BUILTIN("conj", AK_FN(conj, const Mm&));
AK_BUILTIN("exp", AK_FN(exp, const Mm&));
AK_BUILTIN("ceil", AK_FN(ceil, const Mm&));
AK_BUILTIN("floor", AK_FN(floor, const Mm&), AK_FN(floor));
AK_BUILTIN("fix", AK_FN(fix, const Mm&));
AK_BUILTIN("round", AK_FN(round, const Mm&));
AK_BUILTIN("sign", AK_FN(sign, const Mm&));
AK_BUILTIN("sin", AK_FN(sin, const Mm&));
AK_BUILTIN("cos", AK_FN(cos, const Mm&));
AK_BUILTIN("tan", AK_FN(tan, const Mm&));
AK_BUILTIN("sec", AK_FN(sec, const Mm&));
AK_BUILTIN("csc", AK_FN(csc, const Mm&));
AK_BUILTIN("cot", AK_FN(cot, const Mm&));
AK_BUILTIN("sinh", AK_FN(sinh, const Mm&), AK_FN(sinh));
AK_BUILTIN("cosh", AK_FN(cosh, const Mm&));
AK_BUILTIN("tanh", AK_FN(tanh, const Mm&));
AK_BUILTIN("sech", AK_FN(sech, const Mm&));
AK_BUILTIN("csch", AK_FN(csch, const Mm&));
AK_BUILTIN("coth", AK_FN(coth, const Mm&));
AK_BUILTIN("atan", AK_FN(atan, const Mm&));
AK_BUILTIN("acot", AK_FN(acot, const Mm&));
AK_BUILTIN("asinh", AK_FN(asinh, const Mm&));
AK_BUILTIN("acsch", AK_FN(acsch, const Mm&), AK_FN(acsch));
AK_BUILTIN("sinc", AK_FN(sinc, const Mm&));
AK_BUILTIN("pow2", AK_FN(pow2, const Mm&), AK_FN(pow2, const Mm&, const Mm&));
AK_BUILTIN("atan2", AK_FN(atan2, const Mm&, const Mm&), AK_FN(atan2, const Mm&));
AK_BUILTIN("mod", AK_FN(mod, const Mm&, const Mm&), AK_FN(mod, const Mm&));
AK_BUILTIN("rem", AK_FN(rem, const Mm&, const Mm&), AK_FN(rem, const Mm&));
AK_BUILTIN("erf", AK_FN(erf, const Mm&));
AK_BUILTIN("erfc", AK_FN(erfc, const Mm&));
AK_BUILTIN("erfcx", AK_FN(erfcx, const Mm&));
AK_BUILTIN("erfinv", AK_FN(erfinv, const Mm&), AK_FN(erfinv));
AK_BUILTIN("gamma", AK_FN(gamma, const Mm&));
AK_BUILTIN("gammaln", AK_FN(gammaln, const Mm&));
AK_BUILTIN("beta", AK_FN(beta, const Mm&, const Mm&), AK_FN(beta, const Mm&));
AK_BUILTIN("betaln", AK_FN(betaln, const Mm&, const Mm&), AK_FN(betaln, const Mm&));
AK_BUILTIN("gammainc", AK_FN(gammainc, const Mm&, const Mm&), AK_FN(gammainc, const Mm&));
AK_BUILTIN("expint", AK_FN(expint, const Mm&));
AK_BUILTIN("bitand", AK_FN(mbitand, const Mm&, const Mm&), AK_FN(mbitand, const Mm&));
AK_BUILTIN("bitor", AK_FN(mbitor, const Mm&, const Mm&), AK_FN(mbitor, const Mm&), AK_FN(mbitor));
AK_BUILTIN("bitxor", AK_FN(bitxor, const Mm&, const Mm&), AK_FN(bitxor, const Mm&));
AK_BUILTIN("bitcmp", AK_FN(bitcmp, const Mm&), AK_FN(bitcmp, const Mm&, const Mm&));
AK_BUILTIN("bitget", AK_FN(bitget, const Mm&, const Mm&), AK_FN(bitget, const Mm&));
AK_BUILTIN("bitset", AK_FN(bitset, const Mm&, const Mm&), AK_FN(bitset, const Mm&, const Mm&, const Mm&),
           AK_FN(bitset, const Mm&));
AK_BUILTIN("bitreset", AK_FN(bitreset, const Mm&, const Mm&), AK_FN(bitreset, const Mm&));
AK_BUILTIN("bitshift", AK_FN(bitshift, const Mm&, const Mm&),
           AK_FN(bitshift, const Mm&, const Mm&, const Mm&), AK_FN(bitshift, const Mm&));
