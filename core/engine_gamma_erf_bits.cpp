// The special functions and the bit family in the element core. All have a real result computed
// from the real parts of their operands.
#include <cstring>

#include "core/engine_internal.h"
#include "functions/gamma_erf_bits.h"

namespace {

using namespace ak_internal;

template <class F>
void binary(const element_args& g, F f) {
    loop_real2(g, f);
}

template <class F>
void unary(const element_args& g, F f) {
    loop_real1(g, f);
}

}  // namespace

namespace ak_internal {

void special_core_double(const element_args& g, op_t op) {
    switch (op) {
        case op_beta:
            binary(g, sf_beta);
            break;
        case op_betaln:
            binary(g, sf_betaln);
            break;
        case op_gammainc:
            binary(g, sf_gammainc);
            break;
        case op_bitand:
            binary(g, sf_bitand);
            break;
        case op_bitor:
            binary(g, sf_bitor);
            break;
        case op_bitxor:
            binary(g, sf_bitxor);
            break;
        case op_bitcmp:
            binary(g, sf_bitcmp);
            break;
        case op_bitget:
            binary(g, sf_bitget);
            break;
        case op_bitset:
            binary(g, sf_bitset);
            break;
        case op_bitreset:
            binary(g, sf_bitreset);
            break;
        case op_bitshift:
            binary(g, sf_bitshift);
            break;
        case op_erf:
            unary(g, sf_erf);
            break;
        case op_erfc:
            unary(g, sf_erfc);
            break;
        case op_erfcx:
            unary(g, sf_erfcx);
            break;
        case op_erfinv:
            unary(g, sf_erfinv);
            break;
        case op_gamma:
            unary(g, sf_gamma);
            break;
        case op_gammaln:
            unary(g, sf_gammaln);
            break;
        default:
            error("op_core: unknown op");
            return;
    }
    if (g.ri) std::memset(g.ri, 0, sizeof(double) * static_cast<std::size_t>(g.n));
}

}  // namespace ak_internal
