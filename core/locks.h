// The numbered runtime locks, taken only when a host has set multi_task.
#pragma once

enum ak_lock_id {
    ak_lock_files = 0,      // the fid table
    ak_lock_random = 1,     // the random generators
    ak_lock_allocator = 2,  // the pooled allocator
    ak_lock_count = 3
};

// Each lock is a mutex created on first use. A number outside 0..2 is ignored.
void ak_lock(int n);
void ak_unlock(int n);

// Deletes the mutexes at shutdown. None may be held; a later ak_lock creates its mutex afresh.
void ak_locks_destroy();
