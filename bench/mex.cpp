// Calling an extension module (the doubling module of the tests, built with arkmex at start-up)
// against the same work done by a plain function: a small input shows the cost of the call itself
// (look-up, the record of what the module makes, the result's head), a large one the cost per
// element. Reports `ratio`, library time over baseline time, measured alternately (bench/paired.h).
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "arklib.h"
#include "bench/paired.h"

namespace {

bool build_module() {
    static const bool built = [] {
        const std::string dir = std::string(ARKLIB_BENCH_WORK);
        const std::string command = "mkdir -p '" + dir + "' && " + ARKMEX + " -o '" + dir +
                                    "/twice_matvex.so' '" + ARKLIB_MEX_SOURCES + "/twice.c'";
        if (std::system(command.c_str()) != 0) return false;
        mpath_pointer = ak_path_new(dir.c_str());
        return true;
    }();
    return built;
}

// The baseline: the same doubling into a fresh buffer, through a call the compiler cannot inline.
__attribute__((noinline)) std::vector<double> twice_plain(const double* x, int n) {
    std::vector<double> y(static_cast<std::size_t>(n));
    for (int k = 0; k < n; ++k) y[static_cast<std::size_t>(k)] = 2 * x[k];
    return y;
}

void module_call(benchmark::State& state) {
    if (!build_module()) {
        state.SkipWithError("arkmex failed");
        return;
    }
    const int n = static_cast<int>(state.range(0));
    Mm x(0, 0, 0, 1, n, ak_double);
    for (int k = 0; k < n; ++k) x.addr()[k] = k;
    Mm* prhs[1];
    Mm* plhs[64];
    call_mex_prhs(prhs[0], x);
    Mm y;
    ak_bench::paired(
        state,
        [&] {
            call_mex("twice", 1, plhs, 1, prhs);
            call_mex_plhs(y, plhs[0]);
            benchmark::DoNotOptimize(y.addr());
        },
        [&] {
            std::vector<double> r = twice_plain(x.addr(), n);
            benchmark::DoNotOptimize(r.data());
        },
        1);
}

}  // namespace

BENCHMARK(module_call)->Arg(1)->Arg(1000)->Arg(1000000);
