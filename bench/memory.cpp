// The storage allocator against the C heap (malloc/free): single pairs, batches of blocks held at
// once, and very large blocks that are allocated, written and freed over and over, as element-wise
// operations on big matrices do. Each benchmark reports `ratio`, arklib time over C-heap time.
// The program links the library statically, so both are called as the library's own code calls
// them: ak_malloc directly, malloc through the PLT of the C library.
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <vector>

#include "arklib/matrix.h"
#include "arklib/memory.h"
#include "bench/paired.h"

namespace {

using ak_bench::paired;

struct ak_heap {
    static void* get(std::size_t n) { return ak_malloc(static_cast<unsigned>(n)); }
    static void put(void* p) { ak_free(p); }
};
struct c_heap {
    static void* get(std::size_t n) { return std::malloc(n); }
    static void put(void* p) { std::free(p); }
};

constexpr int pairs_per_call = 1000;

template <class Heap>
void pairs(std::size_t size) {
    for (int k = 0; k < pairs_per_call; ++k) {
        void* p = Heap::get(size);
        benchmark::DoNotOptimize(p);
        Heap::put(p);
    }
}

// One allocation and its release, repeated; the argument is the request in bytes.
void pair(benchmark::State& state) {
    std::size_t size = static_cast<std::size_t>(state.range(0));
    paired(state, [size] { pairs<ak_heap>(size); }, [size] { pairs<c_heap>(size); }, pairs_per_call);
}

// The same with the allocator lock taken, as when a host has set multi_task.
void pair_locked(benchmark::State& state) {
    multi_task = 1;
    paired(state, [] { pairs<ak_heap>(64); }, [] { pairs<c_heap>(64); }, pairs_per_call);
    multi_task = 0;
}

// 1000 blocks of mixed small sizes held at once, freed in an order other than the reverse.
template <class Heap>
void batch_of(std::vector<void*>& blocks) {
    for (std::size_t k = 0; k < blocks.size(); ++k) blocks[k] = Heap::get(16 + (k * 37) % 400);
    for (std::size_t k = 0; k < blocks.size(); k += 2) Heap::put(blocks[k]);
    for (std::size_t k = 1; k < blocks.size(); k += 2) Heap::put(blocks[k]);
}

void batch(benchmark::State& state) {
    std::vector<void*> blocks(1000);
    paired(state, [&] { batch_of<ak_heap>(blocks); }, [&] { batch_of<c_heap>(blocks); }, 1000);
}

// An 80 MB block (10^7 doubles) written once on every page, then freed: the cost of the pages.
constexpr std::size_t large = std::size_t(80) << 20;

template <class Heap>
void touch_large() {
    static const long page = sysconf(_SC_PAGESIZE);
    auto* p = static_cast<char*>(Heap::get(large));
    for (std::size_t k = 0; k < large; k += page) p[k] = 1;
    benchmark::ClobberMemory();
    Heap::put(p);
}

void large_touch(benchmark::State& state) { paired(state, touch_large<ak_heap>, touch_large<c_heap>, 1); }

// The same block written in full, as an element-wise result is.
template <class Heap>
void fill_large() {
    auto* p = static_cast<char*>(Heap::get(large));
    std::memset(p, 1, large);
    benchmark::ClobberMemory();
    Heap::put(p);
}

void large_fill(benchmark::State& state) { paired(state, fill_large<ak_heap>, fill_large<c_heap>, 1); }

BENCHMARK(pair)->Arg(8)->Arg(64)->Arg(512)->Arg(4096)->Arg(32768)->Arg(100000);
BENCHMARK(pair_locked);
BENCHMARK(batch);
BENCHMARK(large_touch)->Unit(benchmark::kMillisecond);
BENCHMARK(large_fill)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    // One block held for the whole run, as the library's constant objects hold theirs: otherwise the
    // arena would be given back whenever a pair frees the only live block.
    void* held = ak_malloc(8);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    ak_free(held);
    return 0;
}
