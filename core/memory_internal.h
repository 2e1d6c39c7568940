// Internals of the storage allocator: the bucket pool and the block layout, shared by core/memory.cpp
// and the allocator's tests.
#pragma once

#include <climits>
#include <cstddef>
#include <cstdint>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
// The allocator reads and writes block heads that it keeps poisoned for everybody else.
#define AK_NO_ASAN __attribute__((no_sanitize("address")))
#else
#define AK_NO_ASAN
#endif

namespace ak_internal {

// A pool block, seen from the user pointer u, with the block starting at u - 12:
//   u-12  the mark 0xEF while the block is in use
//   u-11  its bucket number
//   u-8   8 bytes, cleared while in use; in a free block, the link to the next free block
//   u-1   the tier byte: 0 for a pool block; for a C-heap block, the distance back to its start
// The link is 8-aligned, so list operations never split a cache line, and its high byte, which is
// the tier byte, is 0 for any user-space address. Freeing clears the mark, so a block freed twice is
// always recognised.
constexpr unsigned char block_mark = 0xEF;
constexpr std::size_t block_prefix = 12;
constexpr std::size_t request_overhead = 8;      // added to every request before choosing a tier
constexpr std::size_t tier_threshold = 131072;   // request + 8 above this goes to the C heap
constexpr std::size_t reserve_unit = 134217728;  // address space reserved at a time
constexpr int bucket_count = 32;                 // bucket b holds blocks of 2^(b+3) bytes
constexpr int not_found_bucket = 32;             // what ak_realloc assumes for an unknown block

#if defined(__SANITIZE_ADDRESS__)
inline void poison(const void* p, std::size_t n) { ASAN_POISON_MEMORY_REGION(p, n); }
inline void unpoison(const void* p, std::size_t n) { ASAN_UNPOISON_MEMORY_REGION(p, n); }
#else
inline void poison(const void*, std::size_t) {}
inline void unpoison(const void*, std::size_t) {}
#endif

// A power-of-two bucket pool over an arena of reserved address space that is committed as it is
// handed out. Blocks are never split, merged or moved between buckets. When the last live block is
// given back, the whole arena goes back to the system and the next request reserves afresh.
// No locking here: callers serialise. The constructor is constexpr so that a pool in static
// storage is ready before any static constructor runs.
class bucket_pool {
  public:
    constexpr explicit bucket_pool(std::size_t unit = reserve_unit) : unit_(unit) {}

    // A block for n bytes (request + 8), returned as the user pointer, or null.
    void* take(std::size_t n) {
        if (void* p = take_listed(n)) return p;
        if (step_ == 0) init();
        int b = bucket_for(n);
        if (b < 0) return nullptr;
        if (!free_[b]) grow(b);
        return free_[b] ? pop(b, n) : nullptr;
    }

    // The fast path of take: a block from its bucket's list, or null when that would need more.
    // Before the first growth every list is empty, whatever bucket_for makes of a step of 0.
    void* take_listed(std::size_t n) {
        int b = bucket_for(n);
        return b >= 0 && free_[b] ? pop(b, n) : nullptr;
    }

    // Puts a block back on its bucket's list. A block whose mark is gone (freed already, or never
    // a pool block) is left alone and false is returned.
    AK_NO_ASAN bool give(void* p) {
        unsigned char* block = static_cast<unsigned char*>(p) - block_prefix;
        if (block[0] != block_mark || block[1] >= bucket_count) return false;
        int b = block[1];
        push(block, b);
        if (--live_ == 0) release();
        return true;
    }

    int live_blocks() const { return live_; }
    int bucket(std::size_t n) const { return bucket_for(n); }
    std::size_t step() const { return step_; }
    // Address space now reserved, over all ranges.
    std::size_t reserved_bytes() const;
    std::uintptr_t reserve_end() const { return reserve_end_; }
    // Bucket of the free block that starts at head, looking depth entries into each list; -1 if none.
    int find_free(const void* head, int depth) const;
    // Bytes a block of the bucket holds past its 4-byte head: 2^(bucket+3) - 4, plus pool_step for
    // the big buckets. The shift count is taken modulo 32, as on the 32-bit original.
    std::size_t capacity(int bucket) const;
    // Pushes the block that starts at head onto bucket b's list, leaving the live count alone.
    AK_NO_ASAN void push(void* head, int b) {
        unsigned char* block = static_cast<unsigned char*>(head);
        block[0] = 0;
        store_link(block, free_[b]);
        free_[b] = block;
        poison(block, block_size(b));
    }

  private:
    struct unaligned_ptr {
        unsigned char* p;
    } __attribute__((packed));
    struct unaligned_head {
        std::uint16_t mark_and_bucket;
    } __attribute__((packed));
    AK_NO_ASAN static void store_head(unsigned char* block, std::uint16_t v) {
        reinterpret_cast<unaligned_head*>(block)->mark_and_bucket = v;
    }
    AK_NO_ASAN static unsigned char* load_link(const unsigned char* block) {
        return reinterpret_cast<const unaligned_ptr*>(block + 4)->p;
    }
    AK_NO_ASAN static void store_link(unsigned char* block, unsigned char* next) {
        reinterpret_cast<unaligned_ptr*>(block + 4)->p = next;
    }
    static int ceil_log2(std::size_t x) { return x <= 1 ? 0 : 64 - __builtin_clzll(x - 1); }

    // The smallest bucket whose block holds n bytes past its 4-byte head; -1 when none does.
    int bucket_for(std::size_t n) const {
        int b;
        if (n <= step_ - 4) {
            b = ceil_log2(n + 4) - 3;
            if (b < 1) b = 1;  // every block must hold the 12-byte prefix; requests are never below 8
        } else {
            if (n > SIZE_MAX / 4) return -1;
            b = ceil_log2(n + 4 - step_) - 3;
            if (b < step_bucket_) b = step_bucket_;
        }
        return b < bucket_count ? b : -1;
    }
    std::size_t block_size(int b) const {
        std::size_t s = std::size_t(1) << (b + 3);
        return s < step_ ? s : s + step_;
    }

    // Hands out the first block of bucket b for n bytes.
    AK_NO_ASAN void* pop(int b, std::size_t n) {
        unsigned char* block = free_[b];
        free_[b] = load_link(block);
        store_link(block, nullptr);  // also clears the tier byte
        store_head(block, static_cast<std::uint16_t>(block_mark | b << 8));
        ++live_;
        unsigned char* user = block + block_prefix;
        unpoison(user, n - request_overhead);
        poison(user + (n - request_overhead), block_size(b) - block_prefix - (n - request_overhead));
        return user;
    }

    void init();
    void grow(int b);
    unsigned char* arena(std::size_t amount);
    bool reserve();
    void release();

    std::size_t unit_;
    unsigned char* free_[bucket_count] = {};
    std::size_t step_ = 0;  // pool_step: 8 pages
    int step_bucket_ = 0;   // first bucket whose block size is not below pool_step
    std::uintptr_t reserve_end_ = 0;
    std::uintptr_t commit_end_ = 0;
    std::uintptr_t break_ = 0;  // end of what the buckets have taken
    std::uintptr_t range_ = 0;  // start of the latest separate range; its first page links the others
    int live_ = 0;
};

// Read-outs of the library's own allocator, for tests.
int pool_live_blocks();
int pool_blocks_in_use();  // live blocks less the 1x1 blocks kept for reuse: what data holds
const bucket_pool& global_pool();
int large_cache_blocks();  // C-heap blocks kept for reuse
std::size_t large_cache_bytes();
void large_cache_flush();  // gives every kept block back to the C heap

}  // namespace ak_internal
