// The transforms against FFTW called directly on the same data, and filter against a plain FIR
// loop. Each benchmark reports `ratio`, library time over baseline time, both measured
// alternately in the same run (bench/paired.h).
#include <benchmark/benchmark.h>
#include <fftw3.h>

#include <algorithm>
#include <random>
#include <vector>

#include "arklib.h"
#include "bench/paired.h"

namespace {

Mm random_column(int n, bool complex, unsigned seed) {
    std::mt19937_64 gen(seed);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    Mm m(complex ? 1 : 0, 0, 0, n, 1, ak_double);
    for (int k = 0; k < n; ++k) {
        m.addr()[k] = u(gen);
        if (complex) m.addi()[k] = u(gen);
    }
    return m;
}

// y = fft(x) of real data against a planned real-to-complex FFTW transform into a buffer.
void fft_real(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    Mm x = random_column(n, false, 1);
    std::vector<double> in(x.addr(), x.addr() + n);
    fftw_complex* out = fftw_alloc_complex(n / 2 + 1);
    fftw_plan plan = fftw_plan_dft_r2c_1d(n, in.data(), out, FFTW_ESTIMATE);
    Mm warm = fft(x);  // the library's plan is made once, outside the timing
    ak_bench::paired(
        state,
        [&] {
            Mm y = fft(x);
            benchmark::DoNotOptimize(y.addr());
        },
        [&] {
            fftw_execute(plan);
            benchmark::DoNotOptimize(out);
        },
        1);
    fftw_destroy_plan(plan);
    fftw_free(out);
}

// y = fft(x) of complex data against a planned complex FFTW transform between buffers.
void fft_complex(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    Mm x = random_column(n, true, 2);
    fftw_complex* in = fftw_alloc_complex(n);
    fftw_complex* out = fftw_alloc_complex(n);
    for (int k = 0; k < n; ++k) {
        in[k][0] = x.addr()[k];
        in[k][1] = x.addi()[k];
    }
    fftw_plan plan = fftw_plan_dft_1d(n, in, out, FFTW_FORWARD, FFTW_ESTIMATE);
    Mm warm = fft(x);
    ak_bench::paired(
        state,
        [&] {
            Mm y = fft(x);
            benchmark::DoNotOptimize(y.addr());
        },
        [&] {
            fftw_execute(plan);
            benchmark::DoNotOptimize(out);
        },
        1);
    fftw_destroy_plan(plan);
    fftw_free(in);
    fftw_free(out);
}

// y = filter(b, 1, x) with 20 taps over 10^7 samples against the direct-form sum into an output
// buffer that the baseline reuses (the library makes a new result each call).
void filter_fir(benchmark::State& state) {
    const int n = 10000000, taps = 20;
    Mm x = random_column(n, false, 3);
    Mm b = random_column(taps, false, 4);
    std::vector<double> out(n);
    ak_bench::paired(
        state,
        [&] {
            Mm r = filter(b, Mm(1.0), x);
            benchmark::DoNotOptimize(r.addr());
        },
        [&] {
            double* y = out.data();
            const double* v = x.addr();
            const double* c = b.addr();
            for (int k = 0; k < n; ++k) {
                double s = 0;
                const int top = std::min(k, taps - 1);
                for (int j = 0; j <= top; ++j) s += c[j] * v[k - j];
                y[k] = s;
            }
            benchmark::DoNotOptimize(y);
        },
        n);
}

}  // namespace

BENCHMARK(fft_real)->Arg(1 << 20)->Arg(1048573)->Unit(benchmark::kMillisecond);
BENCHMARK(fft_complex)->Arg(1 << 20)->Arg(1048573)->Unit(benchmark::kMillisecond);
BENCHMARK(filter_fir)->Unit(benchmark::kMillisecond);
