// Building a matrix value and assigning it to a variable, against a std::vector<double> of the
// same size, timed alternately in one run (bench/paired.h).
#include <benchmark/benchmark.h>

#include <vector>

#include "arklib.h"
#include "bench/paired.h"

static void BM_ConstructAssign(benchmark::State& state) {
    int n = static_cast<int>(state.range(0));
    Mm x;
    std::vector<double> v;
    ak_bench::paired(
        state,
        [&] {
            x = Mm(0, 0, 0, 1, n, ak_double);
            x.addr()[0] = 1.0;
            benchmark::DoNotOptimize(x.pr);
        },
        [&] {
            v = std::vector<double>(static_cast<std::size_t>(n));
            v[0] = 1.0;
            benchmark::DoNotOptimize(v.data());
        },
        1.0);
}
BENCHMARK(BM_ConstructAssign)->Arg(1)->Arg(16)->Arg(1000)->Arg(100000);
