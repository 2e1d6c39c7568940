// The floating-point reset. The language needs plain IEEE arithmetic with infinities and NaN, so
// every exception stays masked; it is repeated at initM2 and exitM because foreign code in the
// same process may change the control state.
#include <cfenv>

#if defined(__x86_64__) || defined(__i386__)
#include <xmmintrin.h>
#endif

#include "core/startup.h"

namespace ak_internal {

void fpu_reset() {
    std::feclearexcept(FE_ALL_EXCEPT);
    fedisableexcept(FE_ALL_EXCEPT);
    std::fesetround(FE_TONEAREST);
#if defined(__x86_64__) || defined(__i386__)
    // All six exception masks plus the denormal mask; flush-to-zero (bit 15) and
    // denormals-are-zero (bit 6) off; round to nearest.
    unsigned csr = _mm_getcsr();
    csr |= 0x1F80u;
    csr &= ~(0x8000u | 0x0040u | 0x6000u | 0x3Fu);
    _mm_setcsr(csr);
#endif
}

}  // namespace ak_internal
