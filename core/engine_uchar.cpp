// The core on bytes. Sums, differences and products wrap modulo 256 without saturation, and every
// result is a byte. The wrapping operations run on bytes directly; the others run through the double
// core on the widened values and keep the low byte of the truncated result, which for whole-number
// arithmetic is the same as computing modulo 256.
#include <cstring>

#include "core/engine_internal.h"

namespace {

using namespace ak_internal;

typedef unsigned char byte;

// The real half of a byte matrix as doubles.
Mm widen(const Mm& m) {
    Mm w(0, 0, 0, m.ndims, m.dims, ak_double);
    const byte* from = static_cast<const byte*>(m.pr);
    double* to = w.addr();
    for (int k = 0; k < w.nnz && k < m.nnz; ++k) to[k] = from[k];
    return w;
}

void narrow(const Mm& from, Mm& to) {
    const double* v = from.addr();
    byte* out = static_cast<byte*>(to.pr);
    for (int k = 0; k < to.nnz && k < from.nnz; ++k) out[k] = byte_of(v[k]);
}

template <class F>
void bytes2(const Mm& a, const Mm& b, Mm& r, F f) {
    const byte* x = static_cast<const byte*>(a.pr);
    const byte* y = static_cast<const byte*>(b.pr);
    byte* q = static_cast<byte*>(r.pr);
    const int n = r.nnz, sa = a.nnz == 1 ? 0 : 1, sb = b.nnz == 1 ? 0 : 1;
    for (int k = 0, i = 0, j = 0; k < n; ++k, i += sa, j += sb) q[k] = static_cast<byte>(f(x[i], y[j]));
}

// Running product (or its last value) of each run, modulo 256.
void byte_products(const Mm& a, Mm& r, const dim_geometry& g, bool running) {
    const byte* x = static_cast<const byte*>(a.pr);
    byte* q = static_cast<byte*>(r.pr);
    const long long block = static_cast<long long>(g.len) * g.stride;
    for (int o = 0; o < g.outer; ++o) {
        for (int s = 0; s < g.stride; ++s) {
            const byte* p = x + o * block + s;
            unsigned acc = 1;
            for (int k = 0; k < g.len; ++k) {
                acc = (acc * p[static_cast<long long>(k) * g.stride]) & 0xFF;
                if (running) q[o * block + s + static_cast<long long>(k) * g.stride] = static_cast<byte>(acc);
            }
            if (!running) q[static_cast<long long>(o) * g.stride + s] = static_cast<byte>(acc);
        }
    }
}

}  // namespace

namespace ak_internal {

void element_core_uchar(const Mm& a, const Mm& b, Mm& r, op_t op) {
    switch (op) {
        case op_plus:
            return bytes2(a, b, r, [](unsigned x, unsigned y) { return x + y; });
        case op_minus:
            return bytes2(a, b, r, [](unsigned x, unsigned y) { return x - y; });
        case op_times:
        case op_mtimes:
            return bytes2(a, b, r, [](unsigned x, unsigned y) { return x * y; });
        case op_uminus:
            return bytes2(a, b, r, [](unsigned x, unsigned) { return 0u - x; });
        case op_uplus:
            return bytes2(a, b, r, [](unsigned x, unsigned) { return x; });
        default:
            break;
    }
    Mm wa = widen(a), wb = widen(b);
    Mm wr(0, 0, 0, r.ndims, r.dims, ak_double);
    element_core_double(wa, wb, wr, op);
    narrow(wr, r);
}

void dim_core_uchar(const Mm& a, const Mm& b, Mm& r, op_t op, const dim_geometry& g, double* index) {
    if (op == op_prod || op == op_cumprod) return byte_products(a, r, g, op == op_cumprod);
    Mm wa = widen(a);
    Mm wb = b.flags.type == ak_uchar ? widen(b) : b;
    Mm wr(0, 0, 0, r.ndims, r.dims, ak_double);
    dim_core_double(wa, wb, wr, op, g, index);
    narrow(wr, r);
}

}  // namespace ak_internal
