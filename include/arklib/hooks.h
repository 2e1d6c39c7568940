// Hooks a host fills: the interpreter behind eval, the M path, and the shell.
#pragma once
#include <string>

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

// A ready path object over a ":"-separated list of directories (an empty member is the current
// directory). root is what matlabroot gives; null takes the first directory. A program sets
//     mpath_pointer = ak_path_new(getenv("MPATH"));
// Free it with ak_path_delete once mpath_pointer no longer points to it.
ak_path_t* ak_path_new(const char* text, const char* root = nullptr);
void ak_path_delete(ak_path_t* path);
// The file name along the M path: directory and name when the path finds it (name + ".m" first
// when mfile is 1 and the name has no "."), else the name itself when it is a file in the current
// directory, which wins over the path. Empty when neither holds it.
std::string ak_path_search(const char* name, int mfile);

// Runs a shell command text; the file-system functions go through it. Its default cuts the text
// at ";" and newlines and passes each part to the shell, giving -1 at the first part that fails.
extern int (*system_hook)(const char* command);
