// Appending in a loop, written as a translator writes it: x(end+1) = k, c{end+1} = k and
// s(end+1).a = k from empty to 10^5 and 10^6 elements (the time per append shows whether the growth
// is linear), and the member update s.a = s.a + k on a 1x1 structure. Each loop is timed on the CPU
// clock of the thread alongside std::vector::push_back of the same count (bench/paired.h);
// `lib_ns_op` is the time of one append or update.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <vector>

#include "arklib.h"
#include "bench/paired.h"

namespace {

void push_back_loop(int n) {
    std::vector<double> v;
    for (int k = 1; k <= n; ++k) v.push_back(k);
    benchmark::DoNotOptimize(v.data());
}

void vector_append(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    ak_bench::paired(
        state,
        [&] {
            Mm x(0, 0, 0, 0, 0, ak_double);
            for (int k = 1; k <= n; ++k) x(static_cast<double>(x.size() + 1)) = Mm(static_cast<double>(k));
            if (x.size() != n) std::fprintf(stderr, "growth: wrong length\n");
        },
        [&] { push_back_loop(n); }, n);
}

void cell_append(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    ak_bench::paired(
        state,
        [&] {
            Mm c(0, 0, 0, 0, 0, ak_mm);
            for (int k = 1; k <= n; ++k) c.br(Mm(static_cast<double>(c.size() + 1))) = Mm(static_cast<double>(k));
            if (c.size() != n) std::fprintf(stderr, "growth: wrong length\n");
        },
        [&] { push_back_loop(n); }, n);
}

void struct_append(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    ak_bench::paired(
        state,
        [&] {
            Mm s("s", 0, 0);
            s.member("a") = Mm(1.0);
            for (int k = 2; k <= n; ++k)
                Mr(Mr_paren, s, Mm(static_cast<double>(s.size() + 1))).member("a") = Mm(static_cast<double>(k));
            if (s.size() != n) std::fprintf(stderr, "growth: wrong length\n");
        },
        [&] { push_back_loop(n); }, n);
}

// s.a = s.a + k for k = 1..10^6 on s = struct('a', 0), against the same update of a double member
// of a C++ struct.
void member_update(benchmark::State& state) {
    const int n = 1000000;
    struct plain {
        double a;
    } p{0.0};
    Mm s("s", 0, 0);
    s.member("a") = Mm(0.0);
    ak_bench::paired(
        state,
        [&] {
            for (int k = 1; k <= n; ++k) s.member("a") = Mm(s.member("a")) + static_cast<double>(k);
        },
        [&] {
            for (int k = 1; k <= n; ++k) {
                p.a = p.a + k;
                benchmark::DoNotOptimize(p.a);
            }
        },
        n);
}

}  // namespace

BENCHMARK(vector_append)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(cell_append)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(struct_append)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(member_update)->Unit(benchmark::kMillisecond);
