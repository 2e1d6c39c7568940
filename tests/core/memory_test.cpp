// The storage allocator: tiers, layout, reuse, realloc, arena life cycle, large-block cache, threads.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <fstream>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "arklib/error.h"
#include "arklib/matrix.h"
#include "arklib/memory.h"
#include "core/memory_internal.h"
#include "test_support.h"

namespace {

using ak_internal::pool_live_blocks;

// Keeps one block live for the whole program, so that the arena is not given back between the steps
// of a test when nothing else in the process holds a block.
void* const anchor = ak_malloc(1);

// The bytes below a user pointer are the allocator's own, poisoned under the address sanitizer.
AK_NO_ASAN int byte_below(const void* p, int k) { return static_cast<const unsigned char*>(p)[-k]; }
int tier_of(const void* p) { return byte_below(p, 1); }
int bucket_of(const void* p) { return byte_below(p, 11); }
bool marked(const void* p) { return byte_below(p, 12) == 0xEF; }

bool mapped(std::uintptr_t address) {
    unsigned char v;
    long page = sysconf(_SC_PAGESIZE);
    return mincore(reinterpret_cast<void*>(address / page * page), 1, &v) == 0;
}

TEST(Memory, TiersSplitAt131064Bytes) {
    int live = pool_live_blocks();
    void* pooled = ak_malloc(131064);
    void* heap = ak_malloc(131065);
    ASSERT_TRUE(pooled && heap);
    EXPECT_EQ(tier_of(pooled), 0);
    EXPECT_TRUE(marked(pooled));
    EXPECT_GE(tier_of(heap), 1);
    EXPECT_LE(tier_of(heap), 8);
    EXPECT_EQ(pool_live_blocks(), live + 1);  // the C-heap block is not a pool block
    std::memset(pooled, 1, 131064);
    std::memset(heap, 2, 131065);
    ak_free(heap), ak_free(pooled), ak_free(nullptr);
    EXPECT_EQ(pool_live_blocks(), live);
}

TEST(Memory, BlocksAreAlignedDisjointAndInTheSmallestBucket) {
    if (sysconf(_SC_PAGESIZE) != 4096) GTEST_SKIP() << "bucket boundaries below assume 4 KiB pages";
    // request -> bucket: a block of 2^(b+3) bytes holds request + 12; from 32 KiB on a block is
    // 2^(b+3) + 32 KiB.
    const std::pair<unsigned, int> boundaries[] = {{4, 1},      {5, 2},      {32756, 12},
                                                   {65524, 12}, {65525, 13}, {131064, 14}};
    for (auto [size, bucket] : boundaries) {
        void* p = ak_malloc(size);
        EXPECT_EQ(bucket_of(p), bucket) << "request " << size;
        ak_free(p);
    }
    std::vector<std::pair<unsigned char*, unsigned>> blocks;
    for (unsigned size = 16; size <= 262144; size *= 2)
        for (unsigned s : {size - 13, size - 12, size + 1}) blocks.push_back({nullptr, s});
    for (auto& [p, size] : blocks) {
        p = static_cast<unsigned char*>(ak_malloc(size));
        ASSERT_NE(p, nullptr);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(p) % 8, 0u) << "request " << size;
        std::memset(p, static_cast<int>(size & 0xFF), size);
    }
    for (auto& [p, size] : blocks) {
        for (unsigned k = 0; k < size; ++k)
            ASSERT_EQ(p[k], size & 0xFF) << "block of " << size << " overwritten";
        ak_free(p);
    }
    void* a = ak_malloc(0);
    void* b = ak_malloc(0);
    EXPECT_NE(a, b);
    ak_free(a), ak_free(b);
}

TEST(Memory, FreedBlockIsReusedByItsBucketOnlyAndDoubleFreeIsIgnored) {
    int live = pool_live_blocks();
    void* p = ak_malloc(100);
    ak_free(p);
    void* other = ak_malloc(300);
    EXPECT_NE(other, p);
    EXPECT_EQ(ak_malloc(100), p);
    ak_free(p);
    ak_free(p);  // the mark is gone: nothing happens, not even to the count
    EXPECT_FALSE(marked(p));
    EXPECT_EQ(pool_live_blocks(), live + 1);
    void* x = ak_malloc(100);
    void* y = ak_malloc(100);
    EXPECT_EQ(x, p);
    EXPECT_NE(y, p) << "a block freed twice was handed out twice";
    ak_free(x), ak_free(y), ak_free(other);
    EXPECT_EQ(pool_live_blocks(), live);
}

TEST(Memory, ReallocCopiesFourBytesOfAnAllocatedBlockAndKeepsIt) {
    int live = pool_live_blocks();
    char* p = static_cast<char*>(ak_realloc(nullptr, 40));
    ASSERT_NE(p, nullptr);
    std::strcpy(p, "abcdefgh");
    char* q = static_cast<char*>(ak_realloc(p, 200));
    ASSERT_NE(q, nullptr);
    EXPECT_NE(q, p);
    EXPECT_EQ(std::memcmp(q, "abcd", 4), 0);
    EXPECT_STREQ(p, "abcdefgh");  // the old block was not freed
    EXPECT_EQ(pool_live_blocks(), live + 2);
    char* big = static_cast<char*>(ak_malloc(200000));
    std::memcpy(big, "wxyz", 4);
    char* r = static_cast<char*>(ak_realloc(big, 8));
    EXPECT_EQ(std::memcmp(r, "wxyz", 4), 0);
    EXPECT_EQ(ak_realloc(q, 0), nullptr);  // size 0 frees
    EXPECT_EQ(pool_live_blocks(), live + 2);
    ak_free(p), ak_free(big), ak_free(r);
    EXPECT_EQ(pool_live_blocks(), live);
}

TEST(Memory, ArenaIsGivenBackWithTheLastBlockAndReservedAfresh) {
    ak_internal::bucket_pool pool(1 << 20);  // 1 MiB ranges, so that a few blocks span several
    void* first = pool.take(100);
    std::uintptr_t end = pool.reserve_end();
    EXPECT_EQ(pool.reserved_bytes(), 1u << 20);
    pool.give(first);
    EXPECT_EQ(pool.reserved_bytes(), 0u);
    EXPECT_FALSE(mapped(end - 1));
    // Occupy the address right after the next range, so the pool must also open a separate range.
    void* again = pool.take(100);
    ASSERT_NE(again, nullptr);
    void* blocker = mmap(reinterpret_cast<void*>(pool.reserve_end()), 4096, PROT_NONE,
                         MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0);
    std::vector<unsigned char*> blocks;
    for (int k = 0; k < 40; ++k) {
        auto* p = static_cast<unsigned char*>(pool.take(100000));
        ASSERT_NE(p, nullptr);
        std::memset(p, k, 100000 - 8);
        blocks.push_back(p);
    }
    EXPECT_GE(pool.reserved_bytes(), 5u << 20);
    for (int k = 0; k < 40; ++k) ASSERT_EQ(blocks[k][99991], k);
    std::uintptr_t last = reinterpret_cast<std::uintptr_t>(blocks.back());
    for (auto* p : blocks) pool.give(p);
    EXPECT_EQ(pool.live_blocks(), 1);
    pool.give(again);
    EXPECT_EQ(pool.reserved_bytes(), 0u);
    EXPECT_FALSE(mapped(last));
    if (blocker != MAP_FAILED) munmap(blocker, 4096);
}

TEST(Memory, VeryLargeBlocksAreKeptForReuse) {
    ak_internal::large_cache_flush();
    const unsigned size = 80u << 20;
    void* p = ak_malloc(size);
    ASSERT_NE(p, nullptr);
    std::memset(p, 0, size);
    ak_free(p);
    EXPECT_EQ(ak_internal::large_cache_blocks(), 1);
    void* half = ak_malloc(size / 2 - 64);  // would waste more than half of the kept block
    EXPECT_NE(half, p);
    void* again = ak_malloc(size - 4096);
    EXPECT_EQ(again, p);
    EXPECT_EQ(ak_internal::large_cache_blocks(), 0);
    ak_free(again), ak_free(half);
    EXPECT_EQ(ak_internal::large_cache_blocks(), 2);
    ak_internal::large_cache_flush();
    EXPECT_EQ(ak_internal::large_cache_bytes(), 0u);
    // A 2000 x 2000 result (its elements, the 8 spare and the count) is kept as well.
    void* product = ak_malloc((2000u * 2000u + 8u) * 8u + 8u);
    ak_free(product);
    EXPECT_EQ(ak_internal::large_cache_blocks(), 1);
    ak_internal::large_cache_flush();
}

TEST(Memory, ThreadsShareThePoolUnderTheLock) {
    // Counted without the kept 1x1 blocks, which a request of their size gives back to the pool.
    int live = ak_internal::pool_blocks_in_use();
    multi_task = 1;
    std::vector<std::thread> threads;
    std::vector<int> corrupt(4, 0);
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t, &corrupt] {
            std::vector<std::pair<unsigned char*, unsigned>> held;
            for (int k = 0; k < 20000; ++k) {
                unsigned size = (k * 37 + t * 11) % 3000;
                auto* p = static_cast<unsigned char*>(ak_malloc(size));
                std::memset(p, t + 1, size);
                held.push_back({p, size});
                if (held.size() > 50 || k % 3 == 0) {
                    auto [q, n] = held[k % held.size()];
                    for (unsigned i = 0; i < n; ++i) corrupt[t] += q[i] != t + 1;
                    ak_free(q);
                    held.erase(held.begin() + k % held.size());
                }
            }
            for (auto [q, n] : held) ak_free(q);
        });
    }
    for (auto& th : threads) th.join();
    multi_task = 0;
    EXPECT_EQ(corrupt, std::vector<int>(4, 0));
    EXPECT_EQ(ak_internal::pool_blocks_in_use(), live);
}

#if !defined(__SANITIZE_ADDRESS__)
// Exhaustion reports through the callers, and leaves the allocator usable (and its lock free).
TEST(MemoryDeathTest, ExhaustedPoolReturnsNullAndRecovers) {
    auto run = [] {
        alarm(30);
        long pages = 0;
        std::ifstream("/proc/self/statm") >> pages;
        // Room for one more reserved range, and a little for the C heap.
        rlimit limit{static_cast<rlim_t>(pages * sysconf(_SC_PAGESIZE) + (160 << 20)), RLIM_INFINITY};
        limit.rlim_max = limit.rlim_cur;
        setrlimit(RLIMIT_AS, &limit);
        multi_task = 1;
        std::vector<void*> blocks;
        while (void* p = ak_malloc(100000)) blocks.push_back(p);
        if (blocks.empty()) std::_Exit(2);
        ak_free(blocks.back());
        if (!ak_malloc(100000)) std::_Exit(3);
        ak_test::ErrorsThrow guard;
        try {
            ak_malloc_or_report(100000);
        } catch (char* text) {
            std::_Exit(std::strcmp(text, "Out of memory!") == 0 ? 0 : 4);
        }
        std::_Exit(5);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}
#endif

TEST(Memory, ScratchBufferWarnsWhenItsCountWasOverwritten) {
    int live = ak_internal::pool_blocks_in_use();
    ak_test::Recorder rec(ak_test::Recorder::kWarnings);
    { ak_scratch<int> ok(10); ok[9] = 9; }
    EXPECT_TRUE(rec.warnings.empty());
    { ak_scratch<char> text(64); text.count_slot() = -3; }
    EXPECT_EQ(rec.warnings, std::vector<std::string>{"possible memory overwrite"});
    EXPECT_EQ(ak_internal::pool_blocks_in_use(), live);
    EXPECT_ERROR(ak_malloc_or_report(SIZE_MAX), "Out of memory!");
}

#if defined(__SANITIZE_ADDRESS__)
// Under the address sanitizer the pool poisons what lies outside the blocks in use.
TEST(MemoryDeathTest, PoolBlocksArePoisonedOutsideTheRequest) {
    auto* p = static_cast<volatile char*>(ak_malloc(10));
    p[9] = 1;
    EXPECT_DEATH(p[10] = 1, "use-after-poison");
    EXPECT_DEATH(p[-3] = 1, "use-after-poison");
    ak_free(const_cast<char*>(p));
    EXPECT_DEATH(p[0] = 1, "use-after-poison");
}
#endif

}  // namespace
