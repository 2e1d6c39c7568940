// unique of 10^7 doubles (about half of them repeated) against a copy sorted by std::sort and
// thinned by std::unique. Reports `ratio`, library time over baseline time, both measured
// alternately in the same run (bench/paired.h).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <vector>

#include "arklib.h"
#include "bench/paired.h"

namespace {

constexpr int n = 10000000;

void unique_values(benchmark::State& state) {
    std::mt19937_64 gen(1);
    std::uniform_int_distribution<int> u(0, n / 2);
    Mm x(0, 0, 0, n, 1, ak_double);
    for (int k = 0; k < n; ++k) x.addr()[k] = u(gen);
    ak_bench::paired(
        state,
        [&] {
            Mm y = unique(x);
            benchmark::DoNotOptimize(y.addr());
        },
        [&] {
            std::vector<double> y(x.addr(), x.addr() + n);
            std::sort(y.begin(), y.end());
            y.erase(std::unique(y.begin(), y.end()), y.end());
            benchmark::DoNotOptimize(y.data());
        },
        n);
}

}  // namespace

BENCHMARK(unique_values)->Unit(benchmark::kMillisecond);
