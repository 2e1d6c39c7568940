// Element-wise arithmetic, comparison and logic, the functions of one element, the operations along
// a dimension, and the matrix product. Every element-wise form runs the engine constructor of Mm.
//
// Names that are C++ keywords or alternative tokens take a letter: mand (&), mor (|), mnot (~),
// mxor (xor), mbitand (bitand), mbitor (bitor). A form with a number of inputs that the language
// function does not take exists only to report it ("lt does not accept 1 input").
#pragma once
#include "arklib/matrix.h"
#include "arklib/subscript.h"

// ---- operators -------------------------------------------------------------------------------------
// The binary operators +, -, *, /, <, >, <=, >=, ==, != take two matrices, or a matrix or subscript
// and a number, and work out two real 1x1 operands in place (see the end of this header). Those below have no
// such path.
Mm operator&&(const Mm& a, const Mm& b);  // element-wise, both operands are evaluated
Mm operator||(const Mm& a, const Mm& b);
Mm operator!(const Mm& a);
Mm operator+(const Mm& a);

// ---- arithmetic ------------------------------------------------------------------------------------
Mm plus(const Mm& a, const Mm& b);
Mm minus(const Mm& a, const Mm& b);
Mm times(const Mm& a, const Mm& b);
Mm rdivide(const Mm& a, const Mm& b);
Mm ldivide(const Mm& a, const Mm& b);  // b ./ a
Mm power(const Mm& a, const Mm& b);    // complex when a real input needs it: (-8).^(1/3)
Mm dot_mul(const Mm& a, const Mm& b);
Mm dot_div(const Mm& a, const Mm& b);
Mm dot_invdiv(const Mm& a, const Mm& b);
Mm uminus(const Mm& a);
Mm uplus(const Mm& a);
Mm plus(const Mm& a);
Mm minus(const Mm& a);
Mm times(const Mm& a);
Mm rdivide(const Mm& a);
Mm ldivide(const Mm& a);
Mm power(const Mm& a);
Mm dot_mul(const Mm& a);
Mm dot_div(const Mm& a);
Mm dot_invdiv(const Mm& a);

// ---- comparison and logic --------------------------------------------------------------------------
// lt, gt, le, ge compare real parts; eq and ne compare both parts. NaN is unordered. The results
// carry the logical flag.
Mm lt(const Mm& a, const Mm& b);
Mm gt(const Mm& a, const Mm& b);
Mm le(const Mm& a, const Mm& b);
Mm ge(const Mm& a, const Mm& b);
Mm eq(const Mm& a, const Mm& b);
Mm ne(const Mm& a, const Mm& b);
Mm mand(const Mm& a, const Mm& b);
Mm mor(const Mm& a, const Mm& b);
Mm mxor(const Mm& a, const Mm& b);
Mm mnot(const Mm& a);
Mm lt(const Mm& a);
Mm gt(const Mm& a);
Mm le(const Mm& a);
Mm ge(const Mm& a);
Mm eq(const Mm& a);
Mm ne(const Mm& a);
Mm mand(const Mm& a);
Mm mor(const Mm& a);
Mm mxor(const Mm& a);
Mm isfinite(const Mm& a);
Mm isinf(const Mm& a);
Mm isnan(const Mm& a);

// ---- functions of one element ----------------------------------------------------------------------
Mm abs(const Mm& a);
Mm angle(const Mm& a);
Mm real(const Mm& a);
Mm imag(const Mm& a);
Mm conj(const Mm& a);
Mm exp(const Mm& a);
Mm ceil(const Mm& a);
Mm floor(const Mm& a);
Mm fix(const Mm& a);
Mm round(const Mm& a);
Mm sign(const Mm& a);
Mm sin(const Mm& a);
Mm cos(const Mm& a);
Mm tan(const Mm& a);
Mm sec(const Mm& a);
Mm csc(const Mm& a);
Mm cot(const Mm& a);
Mm sinh(const Mm& a);
Mm cosh(const Mm& a);
Mm tanh(const Mm& a);
Mm sech(const Mm& a);
Mm csch(const Mm& a);
Mm coth(const Mm& a);
Mm atan(const Mm& a);
Mm acot(const Mm& a);
Mm asinh(const Mm& a);
Mm acsch(const Mm& a);
Mm sinc(const Mm& a);
Mm pow2(const Mm& a);                // 2 .^ a
Mm pow2(const Mm& f, const Mm& e);   // f .* 2 .^ e
Mm atan2(const Mm& y, const Mm& x);  // of the real parts
Mm mod(const Mm& a, const Mm& b);    // sign of b; mod(a, 0) is NaN
Mm rem(const Mm& a, const Mm& b);    // sign of a; rem(a, 0) is NaN
Mm atan2(const Mm& a);
Mm mod(const Mm& a);
Mm rem(const Mm& a);

// ---- special functions (of the real parts) -----------------------------------------------------------
Mm erf(const Mm& a);
Mm erfc(const Mm& a);
Mm erfcx(const Mm& a);
Mm erfinv(const Mm& a);
Mm gamma(const Mm& a);
Mm gammaln(const Mm& a);
Mm beta(const Mm& a, const Mm& b);
Mm betaln(const Mm& a, const Mm& b);
Mm gammainc(const Mm& x, const Mm& a);
Mm expint(const Mm& a);  // complex below 0
Mm beta(const Mm& a);
Mm betaln(const Mm& a);
Mm gammainc(const Mm& x);

// ---- bit family on whole numbers from 0 to 2^53 - 1 (bytes for uint8) ---------------------------------
Mm mbitand(const Mm& a, const Mm& b);
Mm mbitor(const Mm& a, const Mm& b);
Mm bitxor(const Mm& a, const Mm& b);
Mm bitcmp(const Mm& a);               // complement in 53 bits, 8 for uint8
Mm bitcmp(const Mm& a, const Mm& n);  // complement in n bits
Mm bitget(const Mm& a, const Mm& bit);
Mm bitset(const Mm& a, const Mm& bit);
Mm bitset(const Mm& a, const Mm& bit, const Mm& v);
Mm bitreset(const Mm& a, const Mm& bit);
Mm bitshift(const Mm& a, const Mm& k);
Mm bitshift(const Mm& a, const Mm& k, const Mm& n);  // keeping n bits
Mm mbitand(const Mm& a);
Mm mbitor(const Mm& a);
Mm bitxor(const Mm& a);
Mm bitget(const Mm& a);
Mm bitset(const Mm& a);
Mm bitreset(const Mm& a);
Mm bitshift(const Mm& a);

// ---- along a dimension -------------------------------------------------------------------------------
// Without `dim` the first dimension above 1 is taken; an empty `dim` is reported.
Mm sum(const Mm& a);
Mm sum(const Mm& a, const Mm& dim);
Mm prod(const Mm& a);
Mm prod(const Mm& a, const Mm& dim);
Mm cumsum(const Mm& a);
Mm cumsum(const Mm& a, const Mm& dim);
Mm cumprod(const Mm& a);
Mm cumprod(const Mm& a, const Mm& dim);
Mm all(const Mm& a);
Mm all(const Mm& a, const Mm& dim);
Mm any(const Mm& a);
Mm any(const Mm& a, const Mm& dim);
Mm median(const Mm& a);
Mm median(const Mm& a, const Mm& dim);
// max(a) along a dimension; max(a, b) of two operands; max(a, [], dim) along dim. The i_o forms
// give the 1-based positions of the extremes along the dimension.
Mm max(const Mm& a);
Mm max(const Mm& a, const Mm& b);
Mm max(const Mm& a, const Mm& b, const Mm& dim);
Mm max(const Mm& a, i_o_t, Mm& index);
Mm max(const Mm& a, const Mm& b, const Mm& dim, i_o_t, Mm& index);
Mm min(const Mm& a);
Mm min(const Mm& a, const Mm& b);
Mm min(const Mm& a, const Mm& b, const Mm& dim);
Mm min(const Mm& a, i_o_t, Mm& index);
Mm min(const Mm& a, const Mm& b, const Mm& dim, i_o_t, Mm& index);
// Differences of order n (1 by default).
Mm diff(const Mm& a);
Mm diff(const Mm& a, const Mm& n);
Mm diff(const Mm& a, const Mm& n, const Mm& dim);
// Phase unwrapping; the jump tolerance defaults to pi.
Mm unwrap(const Mm& p);
Mm unwrap(const Mm& p, const Mm& tol);
Mm unwrap(const Mm& p, const Mm& tol, const Mm& dim);
// Numerical gradient: along a vector, or across the columns (x) and down the rows (y) of a matrix.
// A spacing is a scalar, or a vector with one coordinate per point.
Mm gradient(const Mm& f);
Mm gradient(const Mm& f, const Mm& h);
Mm gradient(const Mm& f, const Mm& hx, const Mm& hy);
Mm gradient(const Mm& f, i_o_t, Mm& fy);
Mm gradient(const Mm& f, const Mm& h, i_o_t, Mm& fy);
Mm gradient(const Mm& f, const Mm& hx, const Mm& hy, i_o_t, Mm& fy);
// Discrete Laplacian, a quarter of the sum of second differences in 1 and 2 dimensions.
Mm del2(const Mm& u);
Mm del2(const Mm& u, const Mm& h);

// ---- matrix products ---------------------------------------------------------------------------------
Mm mtimes(const Mm& a, const Mm& b);
Mm mtimes(const Mm& a);
// a / b: element-wise for a scalar divisor, otherwise the right matrix division (b' \ a')'.
Mm mrdivide(const Mm& a, const Mm& b);
Mm mrdivide(const Mm& a);
Mm transpose(const Mm& a);
Mm ctranspose(const Mm& a);
// a ^ p for a square matrix and a scalar power (other than whole non-negative ones through the
// eigen-decomposition), s ^ A for a scalar s and a square A, or scalar operands.
Mm mpower(const Mm& a, const Mm& p);
Mm mpower(const Mm& a);

// ---- forms without inputs, which only report "f does not accept 0 inputs" ------------------------------
// clang-format off
Mm plus(); Mm minus(); Mm times(); Mm rdivide(); Mm ldivide(); Mm power(); Mm uminus(); Mm uplus(); Mm lt();
Mm gt(); Mm le(); Mm ge(); Mm eq(); Mm ne(); Mm mand(); Mm mor(); Mm mxor(); Mm mnot(); Mm isfinite();
Mm isinf(); Mm isnan(); Mm abs(); Mm angle(); Mm real(); Mm imag(); Mm conj(); Mm exp(); Mm ceil();
Mm floor(); Mm fix(); Mm round(); Mm sign(); Mm sin(); Mm cos(); Mm tan(); Mm sec(); Mm csc(); Mm cot();
Mm sinh(); Mm cosh(); Mm tanh(); Mm sech(); Mm csch(); Mm coth(); Mm atan(); Mm acot(); Mm asinh();
Mm acsch(); Mm sinc(); Mm pow2(); Mm atan2(); Mm mod(); Mm rem(); Mm erf(); Mm erfc(); Mm erfcx();
Mm erfinv(); Mm gamma(); Mm gammaln(); Mm beta(); Mm betaln(); Mm gammainc(); Mm expint(); Mm mbitand();
Mm mbitor(); Mm bitxor(); Mm bitcmp(); Mm bitget(); Mm bitset(); Mm bitreset(); Mm bitshift(); Mm sum();
Mm prod(); Mm cumsum(); Mm cumprod(); Mm all(); Mm any(); Mm median(); Mm max(); Mm min(); Mm diff();
Mm unwrap(); Mm gradient(); Mm del2(); Mm mtimes(); Mm transpose(); Mm ctranspose(); Mm mpower();
Mm mrdivide();
// clang-format on

// ---- operators with the scalar path --------------------------------------------------------------------
// Translated scalar code spends its time here: two real full 1x1 doubles, or a number and the
// common read x(k), are worked out in place, with the results of the engine (NaN unordered,
// comparisons logical), into a fresh 1x1 that holds its value in its head. Anything else goes to the
// named form, that is to the engine.
inline bool ak_plain_scalar(const Mm& a) {
    return ((a.flags.type ^ ak_double) | (a.nnz ^ 1) | a.flags.sparse) == 0 && !a.pi;
}
inline double ak_scalar_value(const Mm& a) { return *static_cast<const double*>(a.pr); }
// The 1x1 result of an element-wise operation: no flag set but, for a comparison, logical.
AK_SCALAR_PATH Mm ak_scalar_result(double v, int logical) {
    return Mm(v, M_types{0, 0, logical, 0, 0, 0, ak_double});
}
// The operand kinds that the scalar path does not serve, through the named form: out of line, so
// that the operators stay small enough to be inlined where they are used.
Mm ak_apply(Mm (*named)(const Mm&, const Mm&), const Mm& a, double b);
Mm ak_apply(Mm (*named)(const Mm&, const Mm&), double a, const Mm& b);
Mm ak_apply(Mm (*named)(const Mm&, const Mm&), const Mr& a, double b);
Mm ak_apply(Mm (*named)(const Mm&, const Mm&), double a, const Mr& b);

#define AK_SCALAR_OPERATOR(OP, NAMED, LOGICAL)                                             \
    AK_SCALAR_PATH Mm operator OP(const Mm& a, const Mm& b) {                              \
        if (ak_plain_scalar(a) && ak_plain_scalar(b))                                      \
            return ak_scalar_result(ak_scalar_value(a) OP ak_scalar_value(b), LOGICAL);    \
        return NAMED(a, b);                                                                \
    }                                                                                      \
    AK_SCALAR_PATH Mm operator OP(const Mm& a, double b) {                                 \
        if (ak_plain_scalar(a)) return ak_scalar_result(ak_scalar_value(a) OP b, LOGICAL); \
        return ak_apply(NAMED, a, b);                                                      \
    }                                                                                      \
    AK_SCALAR_PATH Mm operator OP(double a, const Mm& b) {                                 \
        if (ak_plain_scalar(b)) return ak_scalar_result(a OP ak_scalar_value(b), LOGICAL); \
        return ak_apply(NAMED, a, b);                                                      \
    }                                                                                      \
    AK_SCALAR_PATH Mm operator OP(const Mr& a, double b) {                                 \
        double v;                                                                          \
        if (a.scalar_value(v)) return ak_scalar_result(v OP b, LOGICAL);                   \
        return ak_apply(NAMED, a, b);                                                      \
    }                                                                                      \
    AK_SCALAR_PATH Mm operator OP(double a, const Mr& b) {                                 \
        double v;                                                                          \
        if (b.scalar_value(v)) return ak_scalar_result(a OP v, LOGICAL);                   \
        return ak_apply(NAMED, a, b);                                                      \
    }
AK_SCALAR_OPERATOR(+, plus, 0)
AK_SCALAR_OPERATOR(-, minus, 0)
AK_SCALAR_OPERATOR(*, mtimes, 0)
AK_SCALAR_OPERATOR(/, mrdivide, 0)
AK_SCALAR_OPERATOR(<, lt, 1)
AK_SCALAR_OPERATOR(>, gt, 1)
AK_SCALAR_OPERATOR(<=, le, 1)
AK_SCALAR_OPERATOR(>=, ge, 1)
AK_SCALAR_OPERATOR(==, eq, 1)
AK_SCALAR_OPERATOR(!=, ne, 1)
#undef AK_SCALAR_OPERATOR

AK_SCALAR_PATH Mm operator-(const Mm& a) {
    if (ak_plain_scalar(a)) return ak_scalar_result(-ak_scalar_value(a), 0);
    return uminus(a);
}
