// Shared by the files of the mx and mex interface: what a module call owns, and the module table.
#pragma once
#include <cstddef>

#include "arklib/matrix.h"
#include "arklib/mex/mex.h"

namespace ak_mex {

// Thrown by mexErrMsgTxt when the error handler returns: the module is left all the same, and the
// call ends in call_mex as if the error had been thrown.
struct module_abort {};

// A module call under way. Every array and memory block the module makes in it is recorded, and
// when the call ends those that were not given back or freed are freed: at once when the module
// fails, and, on a normal end, all but the outputs, which go to the caller. Calls nest: a record
// goes to the innermost call. Outside any call nothing is recorded, and the caller owns what it
// makes.
class call_frame {
  public:
    call_frame(Mm** plhs, int nslots);
    ~call_frame();
    // The call ended normally: the arrays in the first n slots are the caller's.
    void give_outputs(int n);
    call_frame(const call_frame&) = delete;
    call_frame& operator=(const call_frame&) = delete;

  private:
    Mm** plhs_;
    int nslots_;
    bool done_;
};

// True while a module call is under way.
bool in_call();
void track_array(Mm* a);
void untrack_array(Mm* a);
void track_block(void* p);
// The compressed-column lists given out for a, which the module may fill: when a is an output, its
// entries are taken from them as the call ends (the array's own storage is a position list).
void note_columns(const Mm* a, int* ir, int* jc);
void untrack_block(void* p);
// A heap copy of value (sharing its storage), recorded in the current call; null when out of memory.
Mm* new_array(const Mm& value);

// The entry point of a module.
typedef void (*entry_t)(int nlhs, Mm** plhs, int nrhs, const Mm** prhs);

// One loaded module. The fields up to at_exit are those every entry has; file is where it was
// loaded from, for unloading.
struct entry_rec {
    entry_rec* next;
    char name[512];
    void* module;
    entry_t entry;
    void (*at_exit)();
    char* file;
};
// The entry of name (case ignored), or null.
entry_rec* find_entry(const char* name);

}  // namespace ak_mex
