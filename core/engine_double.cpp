// The element core on doubles: arithmetic, comparison, logic and the elementary functions. The
// operation and the real/complex variant are chosen once per call; every branch is a plain loop.
#include <cmath>
#include <cstring>

#include "algebra/complex_scalar.h"
#include "core/engine_internal.h"
#include "functions/gamma_erf_bits.h"

namespace ak_internal {

element_args make_element_args(const Mm& a, const Mm& b, Mm& r) {
    element_args g;
    g.n = r.nnz;
    g.ar = static_cast<const double*>(a.pr);
    g.ai = static_cast<const double*>(a.pi);
    g.sa = a.nnz == 1 ? 0 : 1;
    g.br = static_cast<const double*>(b.pr);
    g.bi = static_cast<const double*>(b.pi);
    g.sb = b.nnz == 1 ? 0 : 1;
    g.rr = static_cast<double*>(r.pr);
    g.ri = static_cast<double*>(r.pi);
    return g;
}

}  // namespace ak_internal

namespace {

using namespace ak_internal;

// ---- loops over complex operands --------------------------------------------------------------------

// f(ar, ai, br, bi, rr, ri) over all elements. A real operand reads as imaginary part 0.0 and a real
// result drops the imaginary part.
template <bool AC, bool BC, bool RC, class F>
void loop_complex2(const element_args& g, F f) {
    int ia = 0, ib = 0;
    for (int k = 0; k < g.n; ++k, ia += g.sa, ib += g.sb) {
        double dummy;
        f(g.ar[ia], AC ? g.ai[ia] : 0.0, g.br[ib], BC ? g.bi[ib] : 0.0, g.rr[k], RC ? g.ri[k] : dummy);
    }
}

template <bool AC, bool BC, class F>
void loop_complex2(const element_args& g, F f) {
    if (g.ri)
        loop_complex2<AC, BC, true>(g, f);
    else
        loop_complex2<AC, BC, false>(g, f);
}

// f(ar, ai, br, bi) with a real result.
template <bool AC, bool BC, class F>
void loop_complex2_real(const element_args& g, F f) {
    int ia = 0, ib = 0;
    for (int k = 0; k < g.n; ++k, ia += g.sa, ib += g.sb)
        g.rr[k] = f(g.ar[ia], AC ? g.ai[ia] : 0.0, g.br[ib], BC ? g.bi[ib] : 0.0);
}

void zero_imag(const element_args& g) {
    if (g.ri) std::memset(g.ri, 0, sizeof(double) * static_cast<std::size_t>(g.n));
}

// ---- two operands, result complex when an operand is ------------------------------------------------
// Each operation has four variants: rr(a, b) for two reals, cr for a complex a and a real b, rc for
// a real a and a complex b, cc for two complex values.

struct plus_t {
    static double rr(double a, double b) { return a + b; }
    static void cr(double a, double ai, double b, double& r, double& i) { r = a + b, i = ai; }
    static void rc(double a, double b, double bi, double& r, double& i) { r = a + b, i = bi; }
    static void cc(double a, double ai, double b, double bi, double& r, double& i) { r = a + b, i = ai + bi; }
};
struct minus_t {
    static double rr(double a, double b) { return a - b; }
    static void cr(double a, double ai, double b, double& r, double& i) { r = a - b, i = ai; }
    static void rc(double a, double b, double bi, double& r, double& i) { r = a - b, i = -bi; }
    static void cc(double a, double ai, double b, double bi, double& r, double& i) { r = a - b, i = ai - bi; }
};
struct times_t {
    static double rr(double a, double b) { return a * b; }
    static void cr(double a, double ai, double b, double& r, double& i) { r = a * b, i = ai * b; }
    static void rc(double a, double b, double bi, double& r, double& i) { r = a * b, i = a * bi; }
    static void cc(double a, double ai, double b, double bi, double& r, double& i) {
        c_mul(a, ai, b, bi, r, i);
    }
};
struct rdivide_t {
    static double rr(double a, double b) { return a / b; }
    static void cr(double a, double ai, double b, double& r, double& i) { r = a / b, i = ai / b; }
    static void rc(double a, double b, double bi, double& r, double& i) { c_div(a, 0.0, b, bi, r, i); }
    static void cc(double a, double ai, double b, double bi, double& r, double& i) {
        c_div(a, ai, b, bi, r, i);
    }
};
struct ldivide_t {
    static double rr(double a, double b) { return b / a; }
    static void cr(double a, double ai, double b, double& r, double& i) { c_div(b, 0.0, a, ai, r, i); }
    static void rc(double a, double b, double bi, double& r, double& i) { r = b / a, i = bi / a; }
    static void cc(double a, double ai, double b, double bi, double& r, double& i) {
        c_div(b, bi, a, ai, r, i);
    }
};
struct power_t {
    static double rr(double a, double b) { return r_pow(a, b); }
    static void cr(double a, double ai, double b, double& r, double& i) { c_pow(a, ai, b, 0.0, r, i); }
    static void rc(double a, double b, double bi, double& r, double& i) { c_pow(a, 0.0, b, bi, r, i); }
    static void cc(double a, double ai, double b, double bi, double& r, double& i) {
        c_pow(a, ai, b, bi, r, i);
    }
};
struct max2_t {
    static double rr(double a, double b) { return max2(a, b); }
    static void cr(double a, double ai, double b, double& r, double& i) { c_max2(a, ai, b, 0.0, r, i); }
    static void rc(double a, double b, double bi, double& r, double& i) { c_max2(a, 0.0, b, bi, r, i); }
    static void cc(double a, double ai, double b, double bi, double& r, double& i) {
        c_max2(a, ai, b, bi, r, i);
    }
};
struct min2_t {
    static double rr(double a, double b) { return min2(a, b); }
    static void cr(double a, double ai, double b, double& r, double& i) { c_min2(a, ai, b, 0.0, r, i); }
    static void rc(double a, double b, double bi, double& r, double& i) { c_min2(a, 0.0, b, bi, r, i); }
    static void cc(double a, double ai, double b, double bi, double& r, double& i) {
        c_min2(a, ai, b, bi, r, i);
    }
};

template <class Op>
void run_arith(const element_args& g) {
    if (!g.ai && !g.bi) {
        if (!g.ri) {
            loop_real2(g, [](double a, double b) { return Op::rr(a, b); });
        } else {
            // A complex result of two real operands: the complex routine with imaginary parts of 0.
            loop_complex2<false, false, true>(g, [](double a, double, double b, double, double& r,
                                                    double& i) { Op::cc(a, 0.0, b, 0.0, r, i); });
        }
    } else if (!g.bi) {
        loop_complex2<true, false>(
            g, [](double a, double ai, double b, double, double& r, double& i) { Op::cr(a, ai, b, r, i); });
    } else if (!g.ai) {
        loop_complex2<false, true>(
            g, [](double a, double, double b, double bi, double& r, double& i) { Op::rc(a, b, bi, r, i); });
    } else {
        loop_complex2<true, true>(g, Op::cc);
    }
}

// ---- two operands, real result ------------------------------------------------------------------------
// rr(a, b) on two reals; cc(ar, ai, br, bi) when an operand is complex.

inline double truth(double x) { return x != 0.0; }
inline double truth(double x, double y) { return x != 0.0 || y != 0.0; }

struct lt_t {
    static double rr(double a, double b) { return a < b; }
    static double cc(double a, double, double b, double) { return a < b; }
};
struct gt_t {
    static double rr(double a, double b) { return a > b; }
    static double cc(double a, double, double b, double) { return a > b; }
};
struct le_t {
    static double rr(double a, double b) { return a <= b; }
    static double cc(double a, double, double b, double) { return a <= b; }
};
struct ge_t {
    static double rr(double a, double b) { return a >= b; }
    static double cc(double a, double, double b, double) { return a >= b; }
};
struct eq_t {
    static double rr(double a, double b) { return a == b; }
    static double cc(double a, double ai, double b, double bi) { return a == b && ai == bi; }
};
struct ne_t {
    static double rr(double a, double b) { return a != b; }
    static double cc(double a, double ai, double b, double bi) { return a != b || ai != bi; }
};
struct and_t {
    static double rr(double a, double b) { return truth(a) && truth(b); }
    static double cc(double a, double ai, double b, double bi) { return truth(a, ai) && truth(b, bi); }
};
struct or_t {
    static double rr(double a, double b) { return truth(a) || truth(b); }
    static double cc(double a, double ai, double b, double bi) { return truth(a, ai) || truth(b, bi); }
};
struct xor_t {
    static double rr(double a, double b) { return truth(a) != truth(b); }
    static double cc(double a, double ai, double b, double bi) { return truth(a, ai) != truth(b, bi); }
};
// Functions of the real parts only.
template <double (*F)(double, double)>
struct real_parts_t {
    static double rr(double a, double b) { return F(a, b); }
    static double cc(double a, double, double b, double) { return F(a, b); }
};
double atan2_fn(double a, double b) { return std::atan2(a, b); }
double pow2_fn(double f, double e) { return m_pow2(f, e); }

template <class Op>
void run_real_result(const element_args& g) {
    if (!g.ai && !g.bi)
        loop_real2(g, [](double a, double b) { return Op::rr(a, b); });
    else if (!g.bi)
        loop_complex2_real<true, false>(g, Op::cc);
    else if (!g.ai)
        loop_complex2_real<false, true>(g, Op::cc);
    else
        loop_complex2_real<true, true>(g, Op::cc);
    zero_imag(g);
}

// ---- one operand ----------------------------------------------------------------------------------------
// A closed function has r(x) for real input and c(x, y, re, im) for complex input. Real input with a
// complex result (a domain function whose input left the reals, or a forced complex result) runs
// rc(x, re, im), by default the complex routine with imaginary part 0.

template <class D>
struct closed_base {
    static void rc(double x, double& re, double& im) { D::c(x, 0.0, re, im); }
};

#define AK_CLOSED(NAME, REAL, COMPLEX)                                                       \
    struct NAME : closed_base<NAME> {                                                        \
        static double r(double x) { return REAL; }                                           \
        static void c(double x, double y, double& re, double& im) { COMPLEX(x, y, re, im); } \
    };

AK_CLOSED(acos_t, std::acos(x), c_acos)
AK_CLOSED(acosh_t, std::acosh(x), c_acosh)
AK_CLOSED(acot_t, r_acot(x), c_acot)
AK_CLOSED(acoth_t, r_acoth(x), c_acoth)
AK_CLOSED(acsc_t, r_acsc(x), c_acsc)
AK_CLOSED(acsch_t, r_acsch(x), c_acsch)
AK_CLOSED(asec_t, r_asec(x), c_asec)
AK_CLOSED(asech_t, r_asech(x), c_asech)
AK_CLOSED(asin_t, std::asin(x), c_asin)
AK_CLOSED(asinh_t, std::asinh(x), c_asinh)
AK_CLOSED(atan_t, std::atan(x), c_atan)
AK_CLOSED(atanh_t, std::atanh(x), c_atanh)
AK_CLOSED(cos_t, std::cos(x), c_cos)
AK_CLOSED(cosh_t, std::cosh(x), c_cosh)
AK_CLOSED(cot_t, r_cot(x), c_cot)
AK_CLOSED(coth_t, r_coth(x), c_coth)
AK_CLOSED(csc_t, r_csc(x), c_csc)
AK_CLOSED(csch_t, r_csch(x), c_csch)
AK_CLOSED(exp_t, std::exp(x), c_exp)
AK_CLOSED(expint_t, sf_expint(x), sf_expint_c)
AK_CLOSED(log10_t, std::log10(x), c_log10)
AK_CLOSED(log2_t, std::log2(x), c_log2)
AK_CLOSED(pow2_t, m_pow2(x), c_pow2)
AK_CLOSED(round_t, m_round(x), c_round)
AK_CLOSED(sec_t, r_sec(x), c_sec)
AK_CLOSED(sech_t, r_sech(x), c_sech)
AK_CLOSED(sign_t, m_sign(x), c_sign)
AK_CLOSED(sin_t, std::sin(x), c_sin)
AK_CLOSED(sinc_t, m_sinc(x), c_sinc)
AK_CLOSED(sinh_t, std::sinh(x), c_sinh)
AK_CLOSED(tan_t, std::tan(x), c_tan)
AK_CLOSED(tanh_t, std::tanh(x), c_tanh)
#undef AK_CLOSED

// Functions applied to each part on its own.
#define AK_PARTWISE(NAME, F)                                                                \
    struct NAME : closed_base<NAME> {                                                       \
        static double r(double x) { return F(x); }                                          \
        static void c(double x, double y, double& re, double& im) { re = F(x), im = F(y); } \
    };
AK_PARTWISE(ceil_t, std::ceil)
AK_PARTWISE(floor_t, std::floor)
AK_PARTWISE(fix_t, std::trunc)
#undef AK_PARTWISE

struct log_t {
    static double r(double x) { return std::log(x); }
    static void c(double x, double y, double& re, double& im) { c_log(x, y, re, im); }
    static void rc(double x, double& re, double& im) { r_log_c(x, re, im); }
};
struct sqrt_t {
    static double r(double x) { return std::sqrt(x); }
    static void c(double x, double y, double& re, double& im) { c_sqrt(x, y, re, im); }
    static void rc(double x, double& re, double& im) { r_sqrt_c(x, re, im); }
};
struct conj_t : closed_base<conj_t> {
    static double r(double x) { return x; }
    static void c(double x, double y, double& re, double& im) { re = x, im = -y; }
};
struct uminus_t : closed_base<uminus_t> {
    static double r(double x) { return -x; }
    static void c(double x, double y, double& re, double& im) { re = -x, im = -y; }
};
struct uplus_t : closed_base<uplus_t> {
    static double r(double x) { return x; }
    static void c(double x, double y, double& re, double& im) { re = x, im = y; }
};

template <class Op>
void run_closed(const element_args& g) {
    const int n = g.n;
    const int s = g.sa;
    if (!g.ai) {
        if (!g.ri) {
            loop_real1(g, [](double x) { return Op::r(x); });
        } else {
            for (int k = 0, j = 0; k < n; ++k, j += s) Op::rc(g.ar[j], g.rr[k], g.ri[k]);
        }
    } else if (g.ri) {
        for (int k = 0, j = 0; k < n; ++k, j += s) Op::c(g.ar[j], g.ai[j], g.rr[k], g.ri[k]);
    } else {
        for (int k = 0, j = 0; k < n; ++k, j += s) {
            double im;
            Op::c(g.ar[j], g.ai[j], g.rr[k], im);
        }
    }
}

// One operand, real result: r(x) for real input, c(x, y) for complex input.
struct abs_t {
    static double r(double x) { return std::fabs(x); }
    static double c(double x, double y) { return c_abs(x, y); }
};
struct angle_t {
    static double r(double x) { return r_angle(x); }
    static double c(double x, double y) { return c_angle(x, y); }
};
struct imag_t {
    static double r(double) { return 0.0; }
    static double c(double, double y) { return y; }
};
struct isfinite_t {
    static double r(double x) { return std::isfinite(x); }
    static double c(double x, double y) { return std::isfinite(x) && std::isfinite(y); }
};
struct isinf_t {
    static double r(double x) { return std::isinf(x); }
    static double c(double x, double y) { return std::isinf(x) || std::isinf(y); }
};
struct isnan_t {
    static double r(double x) { return std::isnan(x); }
    static double c(double x, double y) { return std::isnan(x) || std::isnan(y); }
};
struct not_t {
    static double r(double x) { return x == 0.0; }
    static double c(double x, double y) { return x == 0.0 && y == 0.0; }
};

template <class Op>
void run_to_real(const element_args& g) {
    if (!g.ai) {
        loop_real1(g, [](double x) { return Op::r(x); });
    } else {
        for (int k = 0, j = 0; k < g.n; ++k, j += g.sa) g.rr[k] = Op::c(g.ar[j], g.ai[j]);
    }
    zero_imag(g);
}

}  // namespace

namespace ak_internal {

void element_core_double(const Mm& a, const Mm& b, Mm& r, op_t op) {
    element_args g = make_element_args(a, b, r);
    switch (op) {
        case op_plus:
            return run_arith<plus_t>(g);
        case op_minus:
            return run_arith<minus_t>(g);
        case op_times:
        case op_mtimes:
            return run_arith<times_t>(g);
        case op_rdivide:
            return run_arith<rdivide_t>(g);
        case op_ldivide:
            return run_arith<ldivide_t>(g);
        case op_power:
            return run_arith<power_t>(g);
        case op_max_2:
            return run_arith<max2_t>(g);
        case op_min_2:
            return run_arith<min2_t>(g);

        case op_lt:
            return run_real_result<lt_t>(g);
        case op_gt:
            return run_real_result<gt_t>(g);
        case op_le:
            return run_real_result<le_t>(g);
        case op_ge:
            return run_real_result<ge_t>(g);
        case op_eq:
            return run_real_result<eq_t>(g);
        case op_ne:
            return run_real_result<ne_t>(g);
        case op_and:
            return run_real_result<and_t>(g);
        case op_or:
            return run_real_result<or_t>(g);
        case op_xor:
            return run_real_result<xor_t>(g);
        case op_atan2:
            return run_real_result<real_parts_t<atan2_fn>>(g);
        case op_mod:
            return run_real_result<real_parts_t<m_mod>>(g);
        case op_rem:
            return run_real_result<real_parts_t<m_rem>>(g);
        case op_pow2_2:
            return run_real_result<real_parts_t<pow2_fn>>(g);

        case op_acos:
            return run_closed<acos_t>(g);
        case op_acosh:
            return run_closed<acosh_t>(g);
        case op_acot:
            return run_closed<acot_t>(g);
        case op_acoth:
            return run_closed<acoth_t>(g);
        case op_acsc:
            return run_closed<acsc_t>(g);
        case op_acsch:
            return run_closed<acsch_t>(g);
        case op_asec:
            return run_closed<asec_t>(g);
        case op_asech:
            return run_closed<asech_t>(g);
        case op_asin:
            return run_closed<asin_t>(g);
        case op_asinh:
            return run_closed<asinh_t>(g);
        case op_atan:
            return run_closed<atan_t>(g);
        case op_atanh:
            return run_closed<atanh_t>(g);
        case op_ceil:
            return run_closed<ceil_t>(g);
        case op_conj:
            return run_closed<conj_t>(g);
        case op_cos:
            return run_closed<cos_t>(g);
        case op_cosh:
            return run_closed<cosh_t>(g);
        case op_cot:
            return run_closed<cot_t>(g);
        case op_coth:
            return run_closed<coth_t>(g);
        case op_csc:
            return run_closed<csc_t>(g);
        case op_csch:
            return run_closed<csch_t>(g);
        case op_exp:
            return run_closed<exp_t>(g);
        case op_expint:
            return run_closed<expint_t>(g);
        case op_fix:
            return run_closed<fix_t>(g);
        case op_floor:
            return run_closed<floor_t>(g);
        case op_log:
            return run_closed<log_t>(g);
        case op_log10:
            return run_closed<log10_t>(g);
        case op_log2:
            return run_closed<log2_t>(g);
        case op_pow2_1:
            return run_closed<pow2_t>(g);
        case op_round:
            return run_closed<round_t>(g);
        case op_sec:
            return run_closed<sec_t>(g);
        case op_sech:
            return run_closed<sech_t>(g);
        case op_sign:
            return run_closed<sign_t>(g);
        case op_sin:
            return run_closed<sin_t>(g);
        case op_sinc:
            return run_closed<sinc_t>(g);
        case op_sinh:
            return run_closed<sinh_t>(g);
        case op_sqrt:
            return run_closed<sqrt_t>(g);
        case op_tan:
            return run_closed<tan_t>(g);
        case op_tanh:
            return run_closed<tanh_t>(g);
        case op_uminus:
            return run_closed<uminus_t>(g);
        case op_uplus:
            return run_closed<uplus_t>(g);

        case op_abs:
            return run_to_real<abs_t>(g);
        case op_angle:
            return run_to_real<angle_t>(g);
        case op_imag:
            return run_to_real<imag_t>(g);
        case op_isfinite:
            return run_to_real<isfinite_t>(g);
        case op_isinf:
            return run_to_real<isinf_t>(g);
        case op_isnan:
            return run_to_real<isnan_t>(g);
        case op_not:
            return run_to_real<not_t>(g);

        case op_beta:
        case op_betaln:
        case op_bitand:
        case op_bitcmp:
        case op_bitget:
        case op_bitor:
        case op_bitreset:
        case op_bitset:
        case op_bitshift:
        case op_bitxor:
        case op_erfc:
        case op_erfcx:
        case op_erfinv:
        case op_erf:
        case op_gamma:
        case op_gammainc:
        case op_gammaln:
            return special_core_double(g, op);

        default:
            std::memset(g.rr, 0, sizeof(double) * static_cast<std::size_t>(g.n));
            zero_imag(g);
            error("op_core: unknown op");
    }
}

}  // namespace ak_internal
