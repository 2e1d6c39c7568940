// The element-wise engine and the matrix product against the same work done directly: a plain loop
// over double arrays writing into an existing buffer, the same libm call in a loop, a direct dgemm,
// and a chain of scalar operations on plain doubles. Each benchmark reports `ratio`, library time
// over baseline time, both measured in the same run. Times are CPU times of the calling thread: run
// with OPENBLAS_NUM_THREADS=1 so that dgemm works on this thread too.
#include <benchmark/benchmark.h>


#include <cmath>
#include <random>

#include "arklib.h"
#include "bench/paired.h"

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

using ak_bench::paired;

// c = a + b on 10^7 elements; the baseline writes into an existing buffer.
void plus_1e7(benchmark::State& state) {
    Mm a = random_column(big, 1), b = random_column(big, 2), c, buffer = random_column(big, 3);
    const double *x = a.addr(), *y = b.addr();
    double* r = buffer.addr();
    paired(
        state,
        [&] {
            c = a + b;
            benchmark::DoNotOptimize(c.pr);
        },
        [&] {
            for (int k = 0; k < big; ++k) r[k] = x[k] + y[k];
            benchmark::ClobberMemory();
        },
        big);
}

// sin(a), the baseline with the same libm call.
void sin_1e7(benchmark::State& state) {
    Mm a = random_column(big, 1), c, buffer = random_column(big, 3);
    const double* x = a.addr();
    double* r = buffer.addr();
    paired(
        state,
        [&] {
            c = sin(a);
            benchmark::DoNotOptimize(c.pr);
        },
        [&] {
            for (int k = 0; k < big; ++k) r[k] = std::sin(x[k]);
            benchmark::ClobberMemory();
        },
        big);
}

// sum(a) of a column.
void sum_1e7(benchmark::State& state) {
    Mm a = random_column(big, 1), s;
    const double* x = a.addr();
    paired(
        state,
        [&] {
            s = sum(a);
            benchmark::DoNotOptimize(s.pr);
        },
        [&] {
            double t = 0.0;
            for (int k = 0; k < big; ++k) t += x[k];
            benchmark::DoNotOptimize(t);
        },
        big);
}

// a * b of two n x n matrices against dgemm into an existing buffer.
void mtimes_n(benchmark::State& state) {
    int n = static_cast<int>(state.range(0));
    Mm a = random_square(n, 1), b = random_square(n, 2), c, buffer = random_square(n, 3);
    double one = 1.0, zero = 0.0;
    paired(
        state,
        [&] {
            c = a * b;
            benchmark::DoNotOptimize(c.pr);
        },
        [&] {
            dgemm_("N", "N", &n, &n, &n, &one, a.addr(), &n, b.addr(), &n, &zero, buffer.addr(), &n, 1, 1);
            benchmark::ClobberMemory();
        },
        2.0 * n * n * n);
}

// x = (x * a + b) * c - d, four operations per step, on 1x1 matrices as translated scalar code runs
// it, and on doubles.
constexpr int steps = 1000;
void scalar_chain(benchmark::State& state) {
    Mm a(0.5), b(1.0), c(1.0), d(0.25), x(0.1);
    double da = 0.5, db = 1.0, dc = 1.0, dd = 0.25, dx = 0.1;
    paired(
        state,
        [&] {
            for (int k = 0; k < steps; ++k) x = (x * a + b) * c - d;
            benchmark::DoNotOptimize(x.pr);
        },
        [&] {
            for (int k = 0; k < steps; ++k) {
                benchmark::DoNotOptimize(da);
                dx = (dx * da + db) * dc - dd;
            }
            benchmark::DoNotOptimize(dx);
        },
        4.0 * steps);
}

BENCHMARK(plus_1e7)->Unit(benchmark::kMillisecond);
BENCHMARK(sin_1e7)->Unit(benchmark::kMillisecond);
BENCHMARK(sum_1e7)->Unit(benchmark::kMillisecond);
BENCHMARK(mtimes_n)->Arg(1000)->Arg(2000)->Unit(benchmark::kMillisecond);
BENCHMARK(scalar_chain)->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
