// interp1 of 10^7 sorted query points on 1000 samples against a plain C loop that walks the
// intervals once. Reports `ratio`, library time over baseline time, both measured alternately in
// the same run (bench/paired.h).
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "arklib.h"
#include "bench/paired.h"

namespace {

void interp1_linear(benchmark::State& state) {
    const int n = 1000, nq = 10000000;
    Mm x(0, 0, 0, n, 1, ak_double), y(0, 0, 0, n, 1, ak_double), q(0, 0, 0, nq, 1, ak_double);
    for (int k = 0; k < n; ++k) {
        x.addr()[k] = k * 0.5 + std::sin(k) * 0.1;
        y.addr()[k] = std::cos(k * 0.01);
    }
    const double span = x.addr()[n - 1] - x.addr()[0];
    for (int k = 0; k < nq; ++k) q.addr()[k] = x.addr()[0] + span * k / (nq - 1.0);
    std::vector<double> out(nq);
    ak_bench::paired(
        state,
        [&] {
            Mm r = interp1(x, y, q);
            benchmark::DoNotOptimize(r.addr());
        },
        [&] {
            const double* xs = x.addr();
            const double* ys = y.addr();
            int i = 0;
            for (int k = 0; k < nq; ++k) {
                const double v = q.addr()[k];
                while (i < n - 2 && xs[i + 1] <= v) ++i;
                const double t = (v - xs[i]) / (xs[i + 1] - xs[i]);
                out[k] = ys[i] + t * (ys[i + 1] - ys[i]);
            }
            benchmark::DoNotOptimize(out.data());
        },
        nq);
}

}  // namespace

BENCHMARK(interp1_linear)->Unit(benchmark::kMillisecond);
