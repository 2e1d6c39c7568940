// The numbered runtime locks.
#include "core/locks.h"

#include <atomic>
#include <mutex>

namespace {

std::atomic<std::mutex*> locks[ak_lock_count];

// Creates the mutex on first use. Two threads racing here both build one; the loser deletes its own.
std::mutex* lock_object(int n) {
    std::mutex* m = locks[n].load(std::memory_order_acquire);
    if (m) return m;
    std::mutex* fresh = new std::mutex;
    if (locks[n].compare_exchange_strong(m, fresh, std::memory_order_acq_rel)) return fresh;
    delete fresh;
    return m;
}

bool valid(int n) { return n >= 0 && n < ak_lock_count; }

}  // namespace

void ak_lock(int n) {
    if (valid(n)) lock_object(n)->lock();
}

void ak_unlock(int n) {
    if (!valid(n)) return;
    if (std::mutex* m = locks[n].load(std::memory_order_acquire)) m->unlock();
}

void ak_locks_destroy() {
    for (auto& slot : locks) delete slot.exchange(nullptr, std::memory_order_acq_rel);
}
