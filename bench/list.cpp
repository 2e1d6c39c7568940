// Matrix literals and concatenation against plain C++.
//
//   Literal100x16: a literal of 100 rows of 16 scalars each, [v v ... v; v v ... v; ...], the way
//                  translated code writes a table of numbers, against writing the same 1600
//                  doubles into a column-major array.
//   HorzcatGrow:   x = [x k] for k = 1..10^4, against std::vector::push_back.
#include <benchmark/benchmark.h>

#include <vector>

#include "arklib.h"

static void BM_Literal100x16(benchmark::State& state) {
    double v = 1.5;
    for (auto _ : state) {
        Mc list = BR(v);
        for (int r = 0; r < 100; ++r) {
            if (r > 0) list, semi;
            for (int c = (r == 0 ? 1 : 0); c < 16; ++c) list, v + c;
        }
        Mm m(list);
        benchmark::DoNotOptimize(m.pr);
    }
}
BENCHMARK(BM_Literal100x16);

static void BM_Literal100x16_Baseline(benchmark::State& state) {
    double v = 1.5;
    for (auto _ : state) {
        std::vector<double> a(1600);
        for (int r = 0; r < 100; ++r)
            for (int c = 0; c < 16; ++c) a[c * 100 + r] = v + c;
        benchmark::DoNotOptimize(a.data());
    }
}
BENCHMARK(BM_Literal100x16_Baseline);

static void BM_HorzcatGrow(benchmark::State& state) {
    for (auto _ : state) {
        Mm x = Mm(0, 0, 0, 0, 0, ak_double);
        for (int k = 1; k <= 10000; ++k) x = horzcat(x, Mm(static_cast<double>(k)));
        benchmark::DoNotOptimize(x.pr);
    }
}
BENCHMARK(BM_HorzcatGrow)->Unit(benchmark::kMillisecond);

static void BM_HorzcatGrow_Baseline(benchmark::State& state) {
    for (auto _ : state) {
        std::vector<double> x;
        for (int k = 1; k <= 10000; ++k) x.push_back(k);
        benchmark::DoNotOptimize(x.data());
    }
}
BENCHMARK(BM_HorzcatGrow_Baseline)->Unit(benchmark::kMillisecond);
