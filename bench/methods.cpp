// Numerical methods: the overhead that ode45 adds to each right-hand-side call, and lp on a dense
// 100 x 100 problem against one LU solve of the same size.
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "arklib.h"
#include "bench/paired.h"

extern "C" void dgesv_(const int* n, const int* nrhs, double* a, const int* lda, int* ipiv, double* b,
                       const int* ldb, int* info);

namespace {

Mm decay(const Mm&, const Mm& y) { return -1.0 * y; }

struct setup_t {
    setup_t() {
        initM();
        ak_use_builtin_feval();
        ak_register_function("bench_decay", decay);
    }
};

// ode45 over [0, 20] with the steps recorded (Refine 1), per derivative call, against calling the
// registered function itself as often with a 1x1 t and y.
void BM_ode45_per_rhs(benchmark::State& state) {
    static setup_t once;
    Mm name = TM("bench_decay"), span = zeros(1.0, 2.0), y0(1.0);
    span.addr()[1] = 20;
    Mm options = odeset(Mm(), TM("Refine"), Mm(1.0));
    const long before = ak_ode_calls;
    ode45(name, span, y0, options);
    const long calls = ak_ode_calls - before;
    ak_bench::paired(
        state, [&] { benchmark::DoNotOptimize(ode45(name, span, y0, options)); },
        [&] {
            for (long k = 0; k < calls; ++k) benchmark::DoNotOptimize(decay(Mm(0.5), Mm(0.25)));
        },
        static_cast<double>(calls));
    state.counters["rhs_calls"] = static_cast<double>(calls);
}
BENCHMARK(BM_ode45_per_rhs);

// max sum(x) under A x <= b, x >= 0 with a dense positive A, against dgesv of the same A.
void BM_lp_dense_100(benchmark::State& state) {
    static setup_t once;
    const int n = 100;
    Mm c = -1.0 * ones(static_cast<double>(n), 1.0);
    Mm A(0, 0, 0, n, n, ak_double), b(0, 0, 0, n, 1, ak_double);
    unsigned s = 12345;
    for (int k = 0; k < n * n; ++k) {
        s = s * 1103515245u + 12345u;
        A.addr()[k] = 0.1 + (s >> 8) / 16777216.0;
    }
    for (int i = 0; i < n; ++i) b.addr()[i] = 10 + i % 7;
    Mm vlb = zeros(static_cast<double>(n), 1.0);
    std::vector<double> lu(n * n), rhs(n);
    std::vector<int> piv(n);
    ak_bench::paired(
        state,
        [&] {
            Mm lambda, how;
            benchmark::DoNotOptimize(lp(c, A, b, vlb, Mm(), Mm(), Mm(), Mm(-1.0), i_o, lambda, how));
        },
        [&] {
            std::memcpy(lu.data(), A.addr(), sizeof(double) * n * n);
            std::memcpy(rhs.data(), b.addr(), sizeof(double) * n);
            int one = 1, info = 0;
            dgesv_(&n, &one, lu.data(), &n, piv.data(), rhs.data(), &n, &info);
            benchmark::DoNotOptimize(rhs.data());
        },
        1);
}
BENCHMARK(BM_lp_dense_100);

}  // namespace
