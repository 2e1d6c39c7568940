// sort against the standard library on 10^7 uniform random doubles: the one-output sort against
// a copy sorted by std::sort, the two-output sort against std::stable_sort of an index, and the
// quicksort alone against std::sort alone. Each benchmark reports `ratio`, library time over
// baseline time, both measured alternately in the same run (bench/paired.h).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

#include "arklib.h"
#include "bench/paired.h"

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

// y = sort(x): a new matrix, NaN scan and the quicksort; the baseline copies and calls std::sort.
void sort_values(benchmark::State& state) {
    Mm x = data_matrix();
    ak_bench::paired(
        state,
        [&] {
            Mm y = sort(x);
            benchmark::DoNotOptimize(y.addr());
        },
        [&] {
            std::vector<double> y = data();
            std::sort(y.begin(), y.end());
            benchmark::DoNotOptimize(y.data());
        },
        n);
}
BENCHMARK(sort_values)->Unit(benchmark::kMillisecond)->Iterations(6);

// The quicksort alone against std::sort alone, each on a fresh copy in a buffer of its own.
void sort_column_raw(benchmark::State& state) {
    std::vector<double> a(n), b(n);
    ak_bench::paired(
        state,
        [&] {
            std::copy(data().begin(), data().end(), a.begin());
            ak_internal::sort_column(a.data(), n);
            benchmark::DoNotOptimize(a.data());
        },
        [&] {
            std::copy(data().begin(), data().end(), b.begin());
            std::sort(b.begin(), b.end());
            benchmark::DoNotOptimize(b.data());
        },
        n);
}
BENCHMARK(sort_column_raw)->Unit(benchmark::kMillisecond)->Iterations(6);

// [y, i] = sort(x): sorted values and row numbers as doubles; the baseline only orders an index.
void sort_with_index(benchmark::State& state) {
    Mm x = data_matrix();
    const std::vector<double>& v = data();
    ak_bench::paired(
        state,
        [&] {
            Mm y, i;
            sort(x, i_o, y, i);
            benchmark::DoNotOptimize(i.addr());
        },
        [&] {
            std::vector<int> idx(n);
            std::iota(idx.begin(), idx.end(), 0);
            std::stable_sort(idx.begin(), idx.end(), [&](int a, int b) { return v[a] < v[b]; });
            benchmark::DoNotOptimize(idx.data());
        },
        n);
}
BENCHMARK(sort_with_index)->Unit(benchmark::kMillisecond)->Iterations(4);

}  // namespace
