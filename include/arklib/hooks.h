// Hooks a host fills: the interpreter behind eval, the M path, and the shell.
#pragma once
#include "arklib/matrix.h"

// The interpreter: runs a statement, returns a positive number on failure. Null by default.
extern int (*eval_func)(const char* text);

// The M path object. A host (or ak_path_new) provides it; the library only calls through it.
struct ak_path_t {
    const char* root;                                         // the root directory text
    int (*length)(ak_path_t* path);                           // length of the path text
    void (*text)(ak_path_t* path, char* buffer, int size);    // the path text, cut to size - 1
    void (*set)(ak_path_t* path, const char* text);           // replaces the path text
    void (*add_front)(ak_path_t* path, const char* dir);      // puts a directory first
    // The directory, with its trailing "/", that holds name (name + ".m" when mfile is 1), or
    // null. The text stays valid until the next call.
    const char* (*find)(ak_path_t* path, const char* name, int mfile);
};
// The path object of the host, an ak_path_t*; null when there is none.
extern void* mpath_pointer;

// Runs a shell command text; the file-system functions go through it. Its default cuts the text
// at ";" and newlines and passes each part to the shell, giving -1 at the first part that fails.
extern int (*system_hook)(const char* command);
