// The scalar loop that translated programs live on, x(i) = x(i-1)*0.5 + 1 for i = 2..10^6, written as
// the translator writes it (every value an Mm, every subscript an Mr, the arithmetic through the
// operators), against the same loop on a std::vector<double>. Two loop variables are measured: an Mm
// filled by forelem from the range 2:10^6, and a plain double. The pieces of one iteration are
// measured on their own as well: the write x(i) = v, and the read and arithmetic.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <vector>

#include "arklib.h"
#include "bench/paired.h"

namespace {

constexpr int count = 1000000;

// x = zeros(1, 10^6); x(1) = 1.
Mm start_vector() {
    Mm x(0, 0, 0, 1, count, ak_double);
    for (int k = 0; k < count; ++k) x.addr()[k] = 0.0;
    x.addr()[0] = 1.0;
    return x;
}

void check(const Mm& x) {
    // x(k) tends to 2; a loop that wrote nothing would leave zeros.
    if (!(x.addr()[count - 1] > 1.99)) std::fprintf(stderr, "subscript_loop: wrong result\n");
}

// The plain loop as a C++ programmer writes it; the compiler keeps x(i-1) in a register.
void plain_loop(std::vector<double>& x) {
    double* v = x.data();
    benchmark::DoNotOptimize(v);
    for (int i = 2; i <= count; ++i) v[i - 1] = v[i - 2] * 0.5 + 1.0;
    benchmark::ClobberMemory();
}

// Times a translated form against the plain loop, alternately in one run (bench/paired.h): `ratio`
// is the multiple of the plain loop, and `M_per_s` the translated form's million iterations a second.
template <class Loop>
void against_plain(benchmark::State& state, Loop loop) {
    std::vector<double> plain(count, 0.0);
    plain[0] = 1.0;
    ak_bench::paired(
        state, loop, [&] { plain_loop(plain); }, count - 1);
    state.counters["M_per_s"] = 1e3 / state.counters["lib_ns_op"];
}

// for i = 2:1e6, x(i) = x(i-1)*0.5 + 1; end   with i an Mm loop variable, as a translator writes it.
void loop_mm_index(benchmark::State& state) {
    Mm x = start_vector();
    Mm range = colon(2.0, static_cast<double>(count));
    Mm i;
    against_plain(state, [&] {
        const int n = forsize(range);
        for (int k = 0; k < n; ++k) {
            forelem(i, range, k);
            x(i) = x(i - 1.0) * 0.5 + 1.0;
        }
    });
    check(x);
}

// The same with a double loop variable.
void loop_double_index(benchmark::State& state) {
    Mm x = start_vector();
    against_plain(state, [&] {
        for (double i = 2; i <= count; ++i) x(i) = x(i - 1) * 0.5 + 1.0;
    });
    check(x);
}

// Only the write x(i) = v, with the index and the value ready.
void write_only(benchmark::State& state) {
    Mm x = start_vector();
    Mm i(0.0), v(1.5);
    against_plain(state, [&] {
        for (int k = 2; k <= count; ++k) {
            *i.addr() = k;
            x(i) = v;
        }
    });
}

// Only the right side x(i-1)*0.5 + 1, with the index ready.
void read_and_arithmetic(benchmark::State& state) {
    Mm x = start_vector();
    Mm j(0.0);
    double sum = 0;
    against_plain(state, [&] {
        for (int k = 1; k < count; ++k) {
            *j.addr() = k;
            Mm v = x(j) * 0.5 + 1.0;
            sum += *v.addr();
        }
    });
    benchmark::DoNotOptimize(sum);
}

BENCHMARK(loop_mm_index)->Name("loop/mm_index")->Unit(benchmark::kMillisecond);
BENCHMARK(loop_double_index)->Name("loop/double_index")->Unit(benchmark::kMillisecond);
BENCHMARK(write_only)->Name("loop/write_only")->Unit(benchmark::kMillisecond);
BENCHMARK(read_and_arithmetic)->Name("loop/read_and_arithmetic")->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
