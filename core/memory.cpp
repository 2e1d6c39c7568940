// The storage allocator: a bucket pool for blocks up to 128 KiB, the C heap above that, with a small
// cache that keeps very large blocks for reuse.
#include "arklib/memory.h"

#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "arklib/error.h"
#include "arklib/matrix.h"
#include "core/locks.h"
#include "core/matrix_internal.h"
#include "core/memory_internal.h"

namespace ak_internal {

namespace {

// The first page of each separate address range records the range before it and, once a newer
// range exists, where this one ends, so that the whole arena can be given back.
struct range_header {
    std::uintptr_t prev;
    std::uintptr_t end;
};

std::size_t page_size() { return static_cast<std::size_t>(sysconf(_SC_PAGESIZE)); }

std::uintptr_t round_up(std::uintptr_t x, std::size_t unit) { return (x + unit - 1) / unit * unit; }

bool commit(std::uintptr_t from, std::uintptr_t to) {
    return mprotect(reinterpret_cast<void*>(from), to - from, PROT_READ | PROT_WRITE) == 0;
}

}  // namespace

void bucket_pool::init() {
    step_ = 8 * page_size();
    step_bucket_ = 0;
    for (std::size_t s = 8; s < step_; s *= 2) ++step_bucket_;
}

void bucket_pool::grow(int b) {
    std::size_t s = std::size_t(1) << (b + 3);
    unsigned char* chunk;
    if (s < step_) {
        chunk = arena(step_);
        if (!chunk) return;
        std::size_t count = step_ / s;
        for (std::size_t k = 0; k + 1 < count; ++k) store_link(chunk + k * s, chunk + (k + 1) * s);
        store_link(chunk + (count - 1) * s, nullptr);
        poison(chunk, step_);
    } else {
        chunk = arena(s + step_);
        if (!chunk) return;
        store_link(chunk, nullptr);
        poison(chunk, s + step_);
    }
    free_[b] = chunk;
}

// Hands out the next `amount` bytes of the arena, committing pages as needed.
unsigned char* bucket_pool::arena(std::size_t amount) {
    if (amount + 2 * step_ > unit_) return nullptr;  // could never fit in one range
    if (break_ + amount >= reserve_end_ && !reserve()) return nullptr;
    std::uintptr_t old = break_;
    break_ += amount;
    if (break_ > commit_end_) {
        std::uintptr_t end = commit_end_ + round_up(break_ - commit_end_, step_);
        if (end > reserve_end_) end = reserve_end_;
        if (!commit(commit_end_, end)) return nullptr;
        commit_end_ = end;
    }
    return reinterpret_cast<unsigned char*>(old);
}

// The current range is spent: reserve the next one, right after it if the system allows, so that
// the pool stays one range; otherwise start a separate range.
bool bucket_pool::reserve() {
    if (commit_end_ < reserve_end_ && commit(commit_end_, reserve_end_)) commit_end_ = reserve_end_;
    void* got = mmap(reinterpret_cast<void*>(reserve_end_), unit_, PROT_NONE,
                     MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (got == MAP_FAILED) return false;
    std::uintptr_t start = reinterpret_cast<std::uintptr_t>(got);
    unpoison(got, unit_);
    if (reserve_end_ != 0 && start == reserve_end_) {
        reserve_end_ += unit_;
        return true;
    }
    if (!commit(start, start + page_size())) {
        munmap(got, unit_);
        return false;
    }
    auto* header = reinterpret_cast<range_header*>(start);
    header->prev = range_;
    header->end = 0;
    if (range_) reinterpret_cast<range_header*>(range_)->end = reserve_end_;
    range_ = start;
    reserve_end_ = start + unit_;
    commit_end_ = start + page_size();
    // Blocks start 4 bytes below a pool_step boundary, so that every user pointer is 8-aligned.
    break_ = round_up(start + sizeof(range_header) + 4, step_) - 4;
    return true;
}

// Gives every range back to the system and starts over. Only called with no block live.
void bucket_pool::release() {
    std::uintptr_t start = range_, end = reserve_end_;
    while (start) {
        range_header header = *reinterpret_cast<range_header*>(start);
        unpoison(reinterpret_cast<void*>(start), end - start);
        munmap(reinterpret_cast<void*>(start), end - start);
        start = header.prev;
        if (start) end = reinterpret_cast<range_header*>(start)->end;
    }
    for (auto& head : free_) head = nullptr;
    reserve_end_ = commit_end_ = break_ = range_ = 0;
}

std::size_t bucket_pool::reserved_bytes() const {
    std::size_t total = 0;
    std::uintptr_t start = range_, end = reserve_end_;
    while (start) {
        total += end - start;
        start = reinterpret_cast<const range_header*>(start)->prev;
        if (start) end = reinterpret_cast<const range_header*>(start)->end;
    }
    return total;
}

AK_NO_ASAN int bucket_pool::find_free(const void* head, int depth) const {
    for (int b = 0; b < bucket_count; ++b) {
        const unsigned char* block = free_[b];
        for (int k = 0; block && k < depth; ++k, block = load_link(block))
            if (block == head) return b;
    }
    return -1;
}

std::size_t bucket_pool::capacity(int bucket) const {
    std::size_t s = std::size_t(1) << ((bucket + 3) % 32);
    return s - 4 + (s >= step_ ? step_ : 0);
}

namespace {

bucket_pool pool;  // constant-initialized: usable from any static constructor

// C-heap blocks of at least this size are kept for reuse when freed: the C heap would give them
// back to the system, and the next block of that size would fault in every page afresh. The floor
// lies well below 32 MiB, the most that glibc's mmap threshold reaches, so that a result just under
// it (a 2000 x 2000 product is 32,000,072 bytes) is kept too.
constexpr std::size_t cache_min = std::size_t(16) << 20;
constexpr int cache_slots = 4;

// Kept blocks, oldest first.
struct large_cache {
    unsigned char* start[cache_slots];
    std::size_t size[cache_slots];
    int count;
    std::size_t total;
    std::size_t limit;  // an eighth of physical memory, at most 1 GiB; set on first use
};
large_cache cache;

struct allocator_lock {
    bool held = multi_task != 0;
    allocator_lock() {
        if (held) ak_lock(ak_lock_allocator);
    }
    ~allocator_lock() {
        if (held) ak_unlock(ak_lock_allocator);
    }
};

std::size_t cache_limit() {
    if (!cache.limit) {
        std::size_t physical = static_cast<std::size_t>(sysconf(_SC_PHYS_PAGES)) * page_size();
        std::size_t most = std::size_t(1) << 30;
        cache.limit = physical / 8 < most ? physical / 8 : most;
    }
    return cache.limit;
}

// Takes slot k out of the cache and returns its block.
unsigned char* cache_remove(int k) {
    unsigned char* start = cache.start[k];
    cache.total -= cache.size[k];
    for (int j = k; j + 1 < cache.count; ++j) {
        cache.start[j] = cache.start[j + 1];
        cache.size[j] = cache.size[j + 1];
    }
    --cache.count;
    return start;
}

// The smallest kept block that holds n bytes and wastes at most half of itself, or null.
unsigned char* cache_take(std::size_t n) {
    allocator_lock lock;
    int best = -1;
    for (int k = 0; k < cache.count; ++k) {
        std::size_t s = cache.size[k];
        if (s >= n && s / 2 <= n && (best < 0 || s < cache.size[best])) best = k;
    }
    return best < 0 ? nullptr : cache_remove(best);
}

// Keeps a freed block, giving the oldest kept blocks back to make room; false if it is not kept.
bool cache_keep(unsigned char* start, std::size_t size) {
    if (size < cache_min || size > cache_limit()) return false;
    allocator_lock lock;
    while (cache.count == cache_slots || cache.total + size > cache.limit) std::free(cache_remove(0));
    cache.start[cache.count] = start;
    cache.size[cache.count] = size;
    ++cache.count;
    cache.total += size;
    return true;
}

// Fresh blocks of at least this size ask for transparent huge pages: a block that grows a vector or
// a cell is written end to end at once, and one fault per 2 MiB instead of per 4 KiB is most of the
// cost of touching it.
constexpr std::size_t huge_page = std::size_t(2) << 20, huge_min = 4 * huge_page;

void advise_huge_pages(unsigned char* start, std::size_t n) {
    if (n < huge_min) return;
    const std::uintptr_t first = (reinterpret_cast<std::uintptr_t>(start) + huge_page - 1) & ~(huge_page - 1);
    const std::uintptr_t last = (reinterpret_cast<std::uintptr_t>(start) + n) & ~(huge_page - 1);
    if (last > first) madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
}

AK_NO_ASAN void* large_alloc(std::size_t n) {
    unsigned char* start = n >= cache_min ? cache_take(n) : nullptr;
    if (!start) {
        start = static_cast<unsigned char*>(std::malloc(n));
        if (!start) {
            large_cache_flush();
            start = static_cast<unsigned char*>(std::malloc(n));
            if (!start) return nullptr;
        }
        advise_huge_pages(start, n);
    }
    // The user pointer is the first 8-byte boundary strictly above the start; the byte below it
    // holds the distance, and the rest of the gap is cleared so it never looks like a pool head.
    std::size_t distance = 8 - (reinterpret_cast<std::uintptr_t>(start) & 7);
    unsigned char* user = start + distance;
    unpoison(start, n);  // a kept block is poisoned while it waits
    std::memset(start, 0, distance - 1);
    user[-1] = static_cast<unsigned char>(distance);
    poison(start, distance);
    return user;
}

__attribute__((noinline)) void large_free(unsigned char* start) {
    std::size_t size = malloc_usable_size(start);
    if (cache_keep(start, size)) {
        poison(start, size);
        return;
    }
    std::free(start);
}

// Size of a 1x1 block as the storage rule asks for it: 9 elements and the count.
constexpr std::size_t scalar_block_request = ak_scalar_capacity * 8 + 8 + request_overhead;

// Every request that the fast path in ak_malloc does not serve.
__attribute__((noinline)) void* allocate(std::size_t size) {
    if (size > SIZE_MAX - request_overhead) return nullptr;
    std::size_t n = size + request_overhead;
    if (n > tier_threshold) return large_alloc(n);
    // The kept 1x1 blocks go back to their list before that list is grown. (None are kept while
    // threads are in play.)
    if (!multi_task && ak_scalar_blocks.head && pool.bucket(n) == pool.bucket(scalar_block_request))
        release_scalar_blocks();
    allocator_lock lock;
    return pool.take(n);
}

AK_NO_ASAN unsigned char tier_byte(const void* p) { return static_cast<const unsigned char*>(p)[-1]; }

// The bucket of a bare block in use whose 4-byte head is at head, or -1.
AK_NO_ASAN int bucket_in_use(const unsigned char* head) {
    return head[0] == block_mark && head[1] < bucket_count ? head[1] : -1;
}

// Copies bytes of a block whose extent the caller knows better than the poisoning does.
void copy_block(void* to, const void* from, std::size_t n) {
    unpoison(from, n);
    std::memmove(to, from, n);
}

// Every free that the fast path in ak_free does not serve.
__attribute__((noinline)) void release_block(void* p) {
    if (unsigned char distance = tier_byte(p)) {
        large_free(static_cast<unsigned char*>(p) - distance);
        return;
    }
    allocator_lock lock;
    pool.give(p);
}

}  // namespace

int pool_live_blocks() { return pool.live_blocks(); }
int pool_blocks_in_use() {
    int kept = 0;
    for (void* block = ak_scalar_blocks.head; block; block = *static_cast<void**>(block)) ++kept;
    return pool.live_blocks() - kept;
}
const bucket_pool& global_pool() { return pool; }

int large_cache_blocks() {
    allocator_lock lock;
    return cache.count;
}

std::size_t large_cache_bytes() {
    allocator_lock lock;
    return cache.total;
}

void large_cache_flush() {
    allocator_lock lock;
    while (cache.count) std::free(cache_remove(cache.count - 1));
}

}  // namespace ak_internal

using namespace ak_internal;

void* ak_malloc(unsigned size) {
    std::size_t n = std::size_t(size) + request_overhead;
    if (n <= tier_threshold && !multi_task) {
        if (void* p = pool.take_listed(n)) return p;
    }
    return allocate(size);
}

void ak_free(void* p) {
    if (!p) return;
    if (tier_byte(p) == 0 && !multi_task) {
        pool.give(p);
        return;
    }
    release_block(p);
}

// A bucket allocator's realloc over bare pool blocks, whose 4-byte head sits just below the pointer.
// Pointers from ak_malloc have their head 12 bytes below, so they are taken as unknown blocks of 4
// bytes: the new block gets their first 4 bytes and the old one stays allocated.
void* ak_realloc(void* p, unsigned size) {
    if (!p) return ak_malloc(size);
    if (size == 0) {
        ak_free(p);
        return nullptr;
    }
    unsigned char* head = static_cast<unsigned char*>(p) - 4;
    int bucket;
    bool in_use;
    {
        allocator_lock lock;
        // A C-heap block has no head there; its cleared gap reads as a block not in use.
        bucket = tier_byte(p) == 0 ? bucket_in_use(head) : -1;
        in_use = bucket >= 0;
        if (!in_use) bucket = pool.find_free(head, 1);
        if (bucket < 0) bucket = pool.find_free(head, 4);
        if (bucket < 0) bucket = not_found_bucket;
    }
    std::size_t capacity = pool.capacity(bucket);
    if (in_use && bucket != 0 && size > pool.capacity(bucket - 1) && size <= capacity) return p;
    void* fresh = ak_malloc(size);
    if (!fresh) return nullptr;  // the old block is kept, as a failed realloc should
    if (fresh != p) copy_block(fresh, p, size < capacity ? size : capacity);
    if (in_use) {
        allocator_lock lock;
        pool.push(head, bucket);
    }
    return fresh;
}

void* ak_malloc_or_report(std::size_t size) {
    void* p = allocate(size);
    if (!p) error("Out of memory!");
    return p;
}

void ak_scratch_overwrite_warning() { warning("possible memory overwrite"); }
