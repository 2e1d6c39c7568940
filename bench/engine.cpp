// The element-wise engine and the matrix product against the same work done directly: a plain loop
// over double arrays writing into an existing buffer, the same libm call in a loop, a direct dgemm,
// and a chain of scalar operations on plain doubles. After the runs each library figure is printed
// as a ratio to its baseline (CPU times of the calling thread, so run with OPENBLAS_NUM_THREADS=1; with
// --benchmark_repetitions, of the medians).
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "arklib.h"

extern "C" void dgemm_(const char* transa, const char* transb, const int* m, const int* n, const int* k,
                       const double* alpha, const double* a, const int* lda, const double* b, const int* ldb,
                       const double* beta, double* c, const int* ldc, std::size_t, std::size_t);

namespace {

constexpr int big = 10000000;

Mm random_column(int n, unsigned seed) {
    std::mt19937 gen(seed);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    Mm m(0, 0, 0, n, 1, ak_double);
    for (int k = 0; k < n; ++k) m.addr()[k] = u(gen);
    return m;
}

Mm random_square(int n, unsigned seed) {
    Mm m = random_column(n * n, seed);
    m.reshape(n, n);
    return m;
}

// ---- c = a + b on 10^7 elements ----------------------------------------------------------------------
void plus_ak(benchmark::State& state) {
    Mm a = random_column(big, 1), b = random_column(big, 2), c;
    for (auto _ : state) {
        c = a + b;
        benchmark::DoNotOptimize(c.pr);
    }
}
void plus_base(benchmark::State& state) {
    Mm a = random_column(big, 1), b = random_column(big, 2), c = random_column(big, 3);
    const double *x = a.addr(), *y = b.addr();
    double* r = c.addr();
    for (auto _ : state) {
        for (int k = 0; k < big; ++k) r[k] = x[k] + y[k];
        benchmark::ClobberMemory();
    }
}

// ---- sin(a) ------------------------------------------------------------------------------------------
void sin_ak(benchmark::State& state) {
    Mm a = random_column(big, 1), c;
    for (auto _ : state) {
        c = sin(a);
        benchmark::DoNotOptimize(c.pr);
    }
}
void sin_base(benchmark::State& state) {
    Mm a = random_column(big, 1), c = random_column(big, 3);
    const double* x = a.addr();
    double* r = c.addr();
    for (auto _ : state) {
        for (int k = 0; k < big; ++k) r[k] = std::sin(x[k]);
        benchmark::ClobberMemory();
    }
}

// ---- sum(a) ------------------------------------------------------------------------------------------
void sum_ak(benchmark::State& state) {
    Mm a = random_column(big, 1), s;
    for (auto _ : state) {
        s = sum(a);
        benchmark::DoNotOptimize(s.pr);
    }
}
void sum_base(benchmark::State& state) {
    Mm a = random_column(big, 1);
    const double* x = a.addr();
    for (auto _ : state) {
        double s = 0.0;
        for (int k = 0; k < big; ++k) s += x[k];
        benchmark::DoNotOptimize(s);
    }
}

// ---- a * b -------------------------------------------------------------------------------------------
void mtimes_ak(benchmark::State& state) {
    int n = static_cast<int>(state.range(0));
    Mm a = random_square(n, 1), b = random_square(n, 2), c;
    for (auto _ : state) {
        c = a * b;
        benchmark::DoNotOptimize(c.pr);
    }
}
void mtimes_base(benchmark::State& state) {
    int n = static_cast<int>(state.range(0));
    Mm a = random_square(n, 1), b = random_square(n, 2), c = random_square(n, 3);
    double one = 1.0, zero = 0.0;
    for (auto _ : state) {
        dgemm_("N", "N", &n, &n, &n, &one, a.addr(), &n, b.addr(), &n, &zero, c.addr(), &n, 1, 1);
        benchmark::ClobberMemory();
    }
}

// ---- a chain of scalar operations ----------------------------------------------------------------------
// x = (x * a + b) * c - d, four operations per step, as translated scalar code runs it.
constexpr int steps = 1000;
void chain_ak(benchmark::State& state) {
    Mm a(0.5), b(1.0), c(1.0), d(0.25), x(0.1);
    for (auto _ : state) {
        for (int k = 0; k < steps; ++k) x = (x * a + b) * c - d;
        benchmark::DoNotOptimize(x.pr);
    }
    state.counters["ns_per_op"] = benchmark::Counter(
        4.0 * steps, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
void chain_base(benchmark::State& state) {
    double a = 0.5, b = 1.0, c = 1.0, d = 0.25, x = 0.1;
    for (auto _ : state) {
        for (int k = 0; k < steps; ++k) {
            benchmark::DoNotOptimize(a);
            x = (x * a + b) * c - d;
        }
        benchmark::DoNotOptimize(x);
    }
    state.counters["ns_per_op"] = benchmark::Counter(
        4.0 * steps, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

BENCHMARK(plus_ak)->Name("plus_1e7/ak")->Unit(benchmark::kMillisecond);
BENCHMARK(plus_base)->Name("plus_1e7/base")->Unit(benchmark::kMillisecond);
BENCHMARK(sin_ak)->Name("sin_1e7/ak")->Unit(benchmark::kMillisecond);
BENCHMARK(sin_base)->Name("sin_1e7/base")->Unit(benchmark::kMillisecond);
BENCHMARK(sum_ak)->Name("sum_1e7/ak")->Unit(benchmark::kMillisecond);
BENCHMARK(sum_base)->Name("sum_1e7/base")->Unit(benchmark::kMillisecond);
BENCHMARK(mtimes_ak)->Name("mtimes/ak")->Arg(1000)->Arg(2000)->Unit(benchmark::kMillisecond);
BENCHMARK(mtimes_base)->Name("mtimes/base")->Arg(1000)->Arg(2000)->Unit(benchmark::kMillisecond);
BENCHMARK(chain_ak)->Name("scalar_chain/ak")->Unit(benchmark::kMicrosecond);
BENCHMARK(chain_base)->Name("scalar_chain/base")->Unit(benchmark::kMicrosecond);

// Prints the usual table, then "name: ak / base = ratio" for every pair of runs.
class ratio_reporter : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.error_occurred) continue;
            std::string name = run.run_name.str();
            if (run.run_type == Run::RT_Aggregate && run.aggregate_name == "median") {
                times_[name] = run.GetAdjustedCPUTime();
                medians_[name] = true;
            } else if (run.run_type == Run::RT_Iteration && !medians_[name]) {
                times_[name] = run.GetAdjustedCPUTime();
            }
        }
    }
    void Finalize() override {
        ConsoleReporter::Finalize();
        std::printf("\nratio of CPU times (arklib / baseline):\n");
        for (const auto& [name, time] : times_) {
            std::size_t at = name.find("/ak");
            if (at == std::string::npos) continue;
            auto base = times_.find(name.substr(0, at) + "/base" + name.substr(at + 3));
            if (base != times_.end() && base->second > 0)
                std::printf("  %-24s %8.3f\n", name.c_str(), time / base->second);
        }
    }

  private:
    std::map<std::string, double> times_;
    std::map<std::string, bool> medians_;
};

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    ratio_reporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
