// MAT-files against the C library: save and load of a 100 MiB double matrix (level 5, and level 4
// for save) against fwrite and fread of the same bytes. Loading allocates its result; the baseline
// reads into a buffer it keeps, so it pays for the copy alone.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
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

Mm data_matrix() {
    Mm m(0, 0, 0, 1024, doubles / 1024, ak_double);
    for (int k = 0; k < doubles; ++k) m.addr()[k] = k * 0.37 - 1000.0;
    return m;
}

void raw_write(const std::string& path, const double* data) {
    std::FILE* f = std::fopen(path.c_str(), "wb");
    std::fwrite(data, 8, doubles, f);
    std::fclose(f);
}

void save_level5(benchmark::State& state) {
    Mm a(data_matrix(), "a");
    const std::string lib = scratch("s5.mat"), base = scratch("s5.raw");
    const Mm name = TM(lib.c_str());
    ak_bench::paired(state, [&] { save(name, (BR(a))); }, [&] { raw_write(base, a.addr()); }, 1.0);
    a.name = nullptr;
    std::remove(lib.c_str());
    std::remove(base.c_str());
}

void save_level4(benchmark::State& state) {
    Mm a(data_matrix(), "a");
    const std::string lib = scratch("s4.mat"), base = scratch("s4.raw");
    const Mm name = TM(lib.c_str());
    ak_bench::paired(state, [&] { saveV4(name, (BR(a))); }, [&] { raw_write(base, a.addr()); }, 1.0);
    a.name = nullptr;
    std::remove(lib.c_str());
    std::remove(base.c_str());
}

// Both read the same file: the library the whole element, the baseline the data bytes after the
// element's header.
void load_level5(benchmark::State& state) {
    const std::string path = scratch("l5.mat");
    {
        Mm a(data_matrix(), "a");
        save(TM(path.c_str()), (BR(a)));
        a.name = nullptr;
    }
    const Mm name = TM(path.c_str());
    const long data_offset = 128 + 48 + 8;  // file header, matrix header with a one-letter name, data tag
    std::vector<double> buffer(doubles);
    ak_bench::paired(
        state,
        [&] {
            Mm m = load(name);
            benchmark::DoNotOptimize(m.addr()[doubles - 1]);
        },
        [&] {
            std::FILE* f = std::fopen(path.c_str(), "rb");
            std::fseek(f, data_offset, SEEK_SET);
            benchmark::DoNotOptimize(std::fread(buffer.data(), 8, doubles, f));
            std::fclose(f);
            benchmark::DoNotOptimize(buffer[doubles - 1]);
        },
        1.0);
    std::remove(path.c_str());
}

}  // namespace

BENCHMARK(save_level5)->Unit(benchmark::kMillisecond)->Iterations(16);
BENCHMARK(save_level4)->Unit(benchmark::kMillisecond)->Iterations(16);
BENCHMARK(load_level5)->Unit(benchmark::kMillisecond)->Iterations(16);
