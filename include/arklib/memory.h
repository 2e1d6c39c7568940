// Storage allocator of all matrix data, and the scratch buffer used for temporary arrays.
#pragma once
#include <cstddef>

// Two tiers: a power-of-two bucket pool in a reserved address range for small blocks, the C heap
// above 128 KiB. Every user pointer is 8-byte aligned. ak_malloc returns null when memory is
// exhausted and reports nothing; callers that must succeed use Mm::operator new or ak_scratch.
void* ak_malloc(unsigned size);
void ak_free(void* p);
void* ak_realloc(void* p, unsigned size);

// The allocator of Mm::operator new: ak_malloc, reporting "Out of memory!" through error on failure.
void* ak_malloc_or_report(std::size_t size);

// A temporary array of T taken through the reporting allocator. The count lives beside the pointer
// as a signed integer: a negative count at release means something wrote over it, and is reported
// with warning("possible memory overwrite"). The block is freed either way.
template <typename T>
class ak_scratch {
  public:
    explicit ak_scratch(int count)
        : data_(static_cast<T*>(
              ak_malloc_or_report(sizeof(T) * static_cast<std::size_t>(count < 0 ? 0 : count)))),
          count_(count < 0 ? 0 : count) {}
    ~ak_scratch() { release(); }
    ak_scratch(const ak_scratch&) = delete;
    ak_scratch& operator=(const ak_scratch&) = delete;

    T* get() const { return data_; }
    operator T*() const { return data_; }
    int count() const { return count_; }
    int& count_slot() { return count_; }  // the trip wire itself, for code that tracks a length in it

  private:
    void release();
    T* data_;
    int count_;
};

void ak_scratch_overwrite_warning();

template <typename T>
void ak_scratch<T>::release() {
    if (count_ < 0) ak_scratch_overwrite_warning();
    ak_free(data_);
    data_ = nullptr;
}
