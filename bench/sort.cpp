// sort against the standard library: one-output sort against std::sort, the two-output sort
// against std::stable_sort of an index, on 10^7 uniform random doubles.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

#include "arklib.h"

namespace {

constexpr int n = 10000000;

const std::vector<double>& data() {
    static const std::vector<double> v = [] {
        std::vector<double> d(n);
        std::mt19937_64 gen(1);
        std::uniform_real_distribution<double> u(-1.0, 1.0);
        for (double& x : d) x = u(gen);
        return d;
    }();
    return v;
}

Mm data_matrix() {
    Mm m(0, 0, 0, n, 1, ak_double);
    std::copy(data().begin(), data().end(), m.addr());
    return m;
}

// sort(x): copy, NaN scan and the three-way quicksort.
void BM_sort_values(benchmark::State& state) {
    Mm x = data_matrix();
    for (auto _ : state) {
        Mm y = sort(x);
        benchmark::DoNotOptimize(y.addr());
    }
}
BENCHMARK(BM_sort_values)->Unit(benchmark::kMillisecond);

// The same work by hand: a copy, then std::sort.
void BM_std_sort(benchmark::State& state) {
    for (auto _ : state) {
        std::vector<double> y = data();
        std::sort(y.begin(), y.end());
        benchmark::DoNotOptimize(y.data());
    }
}
BENCHMARK(BM_std_sort)->Unit(benchmark::kMillisecond);

// The quicksort alone against std::sort alone, each on a fresh copy in a buffer of its own.
void BM_sort_column(benchmark::State& state) {
    std::vector<double> y(n);
    for (auto _ : state) {
        std::copy(data().begin(), data().end(), y.begin());
        ak_internal::sort_column(y.data(), n);
        benchmark::DoNotOptimize(y.data());
    }
}
BENCHMARK(BM_sort_column)->Unit(benchmark::kMillisecond);

void BM_std_sort_raw(benchmark::State& state) {
    std::vector<double> y(n);
    for (auto _ : state) {
        std::copy(data().begin(), data().end(), y.begin());
        std::sort(y.begin(), y.end());
        benchmark::DoNotOptimize(y.data());
    }
}
BENCHMARK(BM_std_sort_raw)->Unit(benchmark::kMillisecond);

// [y, i] = sort(x): sorted values and row numbers as doubles.
void BM_sort_with_index(benchmark::State& state) {
    Mm x = data_matrix();
    for (auto _ : state) {
        Mm y, i;
        sort(x, i_o, y, i);
        benchmark::DoNotOptimize(i.addr());
    }
}
BENCHMARK(BM_sort_with_index)->Unit(benchmark::kMillisecond);

// The baseline: std::stable_sort of an index by its keys.
void BM_std_stable_sort_index(benchmark::State& state) {
    const std::vector<double>& v = data();
    for (auto _ : state) {
        std::vector<int> idx(n);
        std::iota(idx.begin(), idx.end(), 0);
        std::stable_sort(idx.begin(), idx.end(), [&](int a, int b) { return v[a] < v[b]; });
        benchmark::DoNotOptimize(idx.data());
    }
}
BENCHMARK(BM_std_stable_sort_index)->Unit(benchmark::kMillisecond);

}  // namespace
