// Matrix draws against a plain loop of scalar draws filling the same count.
#include <benchmark/benchmark.h>

#include "arklib.h"

namespace {

void BM_randM_matrix(benchmark::State& state) {
    for (auto _ : state) {
        Mm m = randM(1000.0);
        benchmark::DoNotOptimize(m.addr());
    }
}
BENCHMARK(BM_randM_matrix)->Unit(benchmark::kMicrosecond);

void BM_randM_scalar_loop(benchmark::State& state) {
    for (auto _ : state) {
        Mm m(0, 0, 0, 1000, 1000, ak_double);
        double* p = m.addr();
        for (int k = 0; k < 1000000; ++k) p[k] = randM();
        benchmark::DoNotOptimize(m.addr());
    }
}
BENCHMARK(BM_randM_scalar_loop)->Unit(benchmark::kMicrosecond);

void BM_randn_matrix(benchmark::State& state) {
    for (auto _ : state) {
        Mm m = randn(1000.0);
        benchmark::DoNotOptimize(m.addr());
    }
}
BENCHMARK(BM_randn_matrix)->Unit(benchmark::kMicrosecond);

void BM_randn_scalar_loop(benchmark::State& state) {
    for (auto _ : state) {
        Mm m(0, 0, 0, 1000, 1000, ak_double);
        double* p = m.addr();
        for (int k = 0; k < 1000000; ++k) p[k] = randn();
        benchmark::DoNotOptimize(m.addr());
    }
}
BENCHMARK(BM_randn_scalar_loop)->Unit(benchmark::kMicrosecond);

}  // namespace
