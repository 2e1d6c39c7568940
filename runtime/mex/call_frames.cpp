// What a module call owns: the arrays and memory blocks made while it runs, freed when it ends
// unless they were handed back, so that neither a failing module nor a careless one leaks.
#include <cstdlib>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "arklib/sparse.h"

#include "runtime/mex/mex_internal.h"

namespace ak_mex {

namespace {

struct owned_t {
    std::unordered_set<Mm*> arrays;
    std::unordered_set<void*> blocks;
    std::unordered_map<const Mm*, std::pair<int*, int*>> columns;  // lists of mxGetIr, mxGetJc
};

// A sparse output whose module wrote its entries through the compressed-column lists.
void take_columns(const owned_t& own, Mm* a) {
    auto it = own.columns.find(a);
    if (it == own.columns.end() || !it->second.first || !it->second.second || !a->flags.sparse) return;
    int* jc = it->second.second;
    const int cols = a->dims[1];
    if (cols <= 0) return;
    setIrJc(*a, it->second.first, jc);
    if (jc[cols] >= 0 && jc[cols] < a->nnz) a->nnz = jc[cols];
}

// One record per call under way, the innermost last.
std::vector<owned_t>& calls() {
    static std::vector<owned_t> stack;
    return stack;
}

}  // namespace

call_frame::call_frame(Mm** plhs, int nslots) : plhs_(plhs), nslots_(nslots), done_(false) {
    calls().emplace_back();
}

void call_frame::give_outputs(int n) {
    owned_t& own = calls().back();
    for (int k = 0; k < n && k < nslots_; ++k) {
        if (!plhs_[k]) continue;
        take_columns(own, plhs_[k]);
        own.arrays.erase(plhs_[k]);
    }
    done_ = true;
}

call_frame::~call_frame() {
    owned_t own = std::move(calls().back());
    calls().pop_back();
    for (int k = 0; k < nslots_; ++k)
        if (!done_ || own.arrays.count(plhs_[k])) plhs_[k] = nullptr;
    for (Mm* a : own.arrays) delete a;
    for (void* p : own.blocks) std::free(p);
}

bool in_call() { return !calls().empty(); }

void track_array(Mm* a) {
    if (a && !calls().empty()) calls().back().arrays.insert(a);
}

void untrack_array(Mm* a) {
    // Mostly made by the innermost call; an outer call's array may be freed by a nested one.
    for (auto it = calls().rbegin(); it != calls().rend(); ++it)
        if (it->arrays.erase(a)) return;
}

void track_block(void* p) {
    if (p && !calls().empty()) calls().back().blocks.insert(p);
}

void untrack_block(void* p) {
    for (auto it = calls().rbegin(); it != calls().rend(); ++it) {
        if (!it->blocks.erase(p)) continue;
        // A freed list no longer describes its array.
        for (auto& lists : it->columns) {
            if (lists.second.first == p) lists.second.first = nullptr;
            if (lists.second.second == p) lists.second.second = nullptr;
        }
        return;
    }
}

void note_columns(const Mm* a, int* ir, int* jc) {
    if (calls().empty()) return;
    auto& lists = calls().back().columns[a];
    if (ir) lists.first = ir;
    if (jc) lists.second = jc;
}

Mm* new_array(const Mm& value) {
    Mm* a = new Mm(value);
    track_array(a);
    return a;
}

}  // namespace ak_mex
