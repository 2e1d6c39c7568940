// The storage allocator against the C heap: single pairs, batches, and very large blocks that are
// allocated, touched and freed over and over, as element-wise operations on big matrices do.
// After the runs, each arklib figure is printed as a ratio to its C-heap baseline.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "arklib/matrix.h"
#include "arklib/memory.h"

namespace {

struct ak_heap {
    static void* get(std::size_t n) { return ak_malloc(static_cast<unsigned>(n)); }
    static void put(void* p) { ak_free(p); }
};
struct c_heap {
    static void* get(std::size_t n) { return std::malloc(n); }
    static void put(void* p) { std::free(p); }
};

template <class Heap>
void pair(benchmark::State& state) {
    std::size_t size = static_cast<std::size_t>(state.range(0));
    for (auto _ : state) {
        void* p = Heap::get(size);
        benchmark::DoNotOptimize(p);
        Heap::put(p);
    }
}

// The same pair with the allocator lock taken, as when a host runs several threads.
void pair_locked(benchmark::State& state) {
    multi_task = 1;
    pair<ak_heap>(state);
    multi_task = 0;
}

// 1000 blocks of mixed small sizes held at once, freed in an order other than the reverse.
template <class Heap>
void batch(benchmark::State& state) {
    std::vector<void*> blocks(1000);
    for (auto _ : state) {
        for (std::size_t k = 0; k < blocks.size(); ++k) blocks[k] = Heap::get(16 + (k * 37) % 400);
        for (std::size_t k = 0; k < blocks.size(); k += 2) Heap::put(blocks[k]);
        for (std::size_t k = 1; k < blocks.size(); k += 2) Heap::put(blocks[k]);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<long>(blocks.size()));
}

// An 80 MB block (10^7 doubles), written once on every page, then freed.
template <class Heap>
void large_touch(benchmark::State& state) {
    std::size_t size = std::size_t(80) << 20;
    long page = sysconf(_SC_PAGESIZE);
    for (auto _ : state) {
        auto* p = static_cast<char*>(Heap::get(size));
        for (std::size_t k = 0; k < size; k += page) p[k] = 1;
        benchmark::ClobberMemory();
        Heap::put(p);
    }
}

// The same block written in full, as an element-wise result is.
template <class Heap>
void large_fill(benchmark::State& state) {
    std::size_t size = std::size_t(80) << 20;
    for (auto _ : state) {
        auto* p = static_cast<char*>(Heap::get(size));
        std::memset(p, 1, size);
        benchmark::ClobberMemory();
        Heap::put(p);
    }
}

BENCHMARK(pair<ak_heap>)->Name("pair/ak")->Arg(8)->Arg(64)->Arg(512)->Arg(4096)->Arg(32768)->Arg(100000);
BENCHMARK(pair<c_heap>)->Name("pair/libc")->Arg(8)->Arg(64)->Arg(512)->Arg(4096)->Arg(32768)->Arg(100000);
BENCHMARK(pair_locked)->Name("pair_locked/ak")->Arg(64);
BENCHMARK(pair<c_heap>)->Name("pair_locked/libc")->Arg(64);
BENCHMARK(batch<ak_heap>)->Name("batch/ak");
BENCHMARK(batch<c_heap>)->Name("batch/libc");
BENCHMARK(large_touch<ak_heap>)->Name("large_touch/ak")->Unit(benchmark::kMillisecond);
BENCHMARK(large_touch<c_heap>)->Name("large_touch/libc")->Unit(benchmark::kMillisecond);
BENCHMARK(large_fill<ak_heap>)->Name("large_fill/ak")->Unit(benchmark::kMillisecond);
BENCHMARK(large_fill<c_heap>)->Name("large_fill/libc")->Unit(benchmark::kMillisecond);

// Prints the usual table, then "name: ak / libc = ratio" for every pair of runs.
class ratio_reporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        // With --benchmark_repetitions the median stands for the name; otherwise the single run.
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
        std::printf("\nratio of CPU times (arklib / C heap, below 1 is faster):\n");
        for (const auto& [name, time] : times_) {
            std::size_t at = name.find("/ak");
            if (at == std::string::npos) continue;
            auto base = times_.find(name.substr(0, at) + "/libc" + name.substr(at + 3));
            if (base != times_.end() && base->second > 0)
                std::printf("  %-28s %6.3f\n", name.c_str(), time / base->second);
        }
    }

private:
    std::map<std::string, double> times_;
    std::map<std::string, bool> medians_;
};

}  // namespace

int main(int argc, char** argv) {
    // One block held for the whole run, as the library's constant objects hold theirs: otherwise the
    // arena would be given back every time a pair frees its block.
    void* held = ak_malloc(8);
    benchmark::Initialize(&argc, argv);
    ratio_reporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    ak_free(held);
    return 0;
}
