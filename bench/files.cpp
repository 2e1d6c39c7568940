// File I/O against the C library: fwrite and fread of 100 MiB of doubles in native and swapped byte
// order, and fprintf of 10^6 numbers with "%g\n".
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "arklib.h"
#include "bench/paired.h"

namespace {

constexpr int doubles = 100 * 1024 * 1024 / 8;

std::string scratch(const char* name) {
    const char* env = std::getenv("TMPDIR");
    return std::string(env && *env ? env : "/tmp") + "/arklib_bench_" + std::to_string(getpid()) + name;
}

Mm data_matrix(int n) {
    Mm m(0, 0, 0, n, 1, ak_double);
    for (int k = 0; k < n; ++k) m.addr()[k] = k * 0.37 - 1000.0;
    return m;
}

void write_doubles(benchmark::State& state) {
    Mm a = data_matrix(doubles);
    std::string lib_path = scratch("w_lib"), base_path = scratch("w_base");
    Mm name = TM(lib_path.c_str());
    ak_bench::paired(
        state,
        [&] {
            Mm fid = fopen(name, TM("w"));
            fwrite(fid, a, TM("double"));
            fclose(fid);
        },
        [&] {
            std::FILE* f = std::fopen(base_path.c_str(), "wb");
            std::fwrite(a.addr(), 8, doubles, f);
            std::fclose(f);
        },
        1.0);
    std::remove(lib_path.c_str());
    std::remove(base_path.c_str());
}

// Reading the same file in both forms; the baseline reads into a buffer it keeps.
void read_doubles(benchmark::State& state, const char* machine) {
    std::string path = scratch("r");
    {
        Mm fid = fopen(TM(path.c_str()), TM("w"), TM(machine));
        fwrite(fid, data_matrix(doubles), TM("double"));
        fclose(fid);
    }
    std::vector<double> buffer(doubles);
    bool swap = std::strcmp(machine, "b") == 0;
    ak_bench::paired(
        state,
        [&] {
            Mm fid = fopen(TM(path.c_str()), TM("r"), TM(machine));
            Mm x = fread(fid, Inf, TM("double"));
            benchmark::DoNotOptimize(x.addr());
            fclose(fid);
        },
        [&] {
            std::FILE* f = std::fopen(path.c_str(), "rb");
            size_t n = std::fread(buffer.data(), 8, doubles, f);
            std::fclose(f);
            benchmark::DoNotOptimize(buffer.data());
            benchmark::DoNotOptimize(n);
        },
        1.0);
    (void)swap;
    std::remove(path.c_str());
}

void read_native(benchmark::State& state) { read_doubles(state, "l"); }
void read_swapped(benchmark::State& state) { read_doubles(state, "b"); }

void print_numbers(benchmark::State& state) {
    constexpr int n = 1000000;
    Mm x = data_matrix(n);
    std::string lib_path = scratch("p_lib"), base_path = scratch("p_base");
    Mm fid = fopen(TM(lib_path.c_str()), TM("w"));
    Mm fmt = TM("%g\\n");
    std::FILE* f = std::fopen(base_path.c_str(), "wb");
    ak_bench::paired(
        state,
        [&] {
            frewind(fid);
            fprintf(fid, fmt, x);
        },
        [&] {
            std::fseek(f, 0, SEEK_SET);
            const double* v = x.addr();
            for (int k = 0; k < n; ++k) std::fprintf(f, "%g\n", v[k]);
        },
        n);
    fclose(fid);
    std::fclose(f);
    std::remove(lib_path.c_str());
    std::remove(base_path.c_str());
}

}  // namespace

BENCHMARK(write_doubles)->Unit(benchmark::kMillisecond)->Iterations(6);
BENCHMARK(read_native)->Unit(benchmark::kMillisecond)->Iterations(6);
BENCHMARK(read_swapped)->Unit(benchmark::kMillisecond)->Iterations(6);
BENCHMARK(print_numbers)->Unit(benchmark::kMillisecond)->Iterations(4);
