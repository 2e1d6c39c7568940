// Variable scopes: which named heads are alive at each call depth, for the functions that look at
// variables by name (who, whos, exist, clear, which, openvar) and for a development environment,
// which drives the library through _ive_do.
//
// Level 0 holds the globals, level 1 the main workspace, levels 2 and up function calls. Translated
// functions bracket their bodies with variables_scope.begin() and variables_scope.end(). Nothing is
// registered while ak_scope_tracking is 0 (the default); begin and end run in any case.
#pragma once
#include <cstdint>

#include "arklib/list.h"
#include "arklib/matrix.h"

constexpr int ak_scope_levels = 513;

class variables_scope_t {
  public:
    int depth;                        // the current level
    Mm** vars[ak_scope_levels];       // the live heads of each level
    int* owned[ak_scope_levels];      // 1 for a heap copy that the table made and must free
    int count[ak_scope_levels];       // entries in use
    int capacity[ak_scope_levels];    // size of the two arrays

    // All arrays empty, one level begun: depth 1, the main workspace.
    constexpr variables_scope_t() : depth(1), vars{}, owned{}, count{}, capacity{} {}
    ~variables_scope_t();

    void begin();  // a new level; "Call stack too deep" at depth 513
    void end();    // drops the entries of the current level and goes back one
    void reset();  // back to the main workspace, after an error
};
extern variables_scope_t variables_scope;

// ---- the table's operations ----------------------------------------------------------------------
// 0 for a global, else the current depth.
int scope_level(const Mm& m);
// Position of name at level, -1 when absent.
int scope_find(const char* name, int level);
// scope_find, then the name with "_" appended (how translated locals are named). The head or null.
Mm* scope_lookup(const char* name, int level);
// Registers m at its level; owned_flag 1 when the table owns m.
void scope_add(Mm* m, int owned_flag);
// A registered head ends: its value goes to the head it shadowed, or stays as an owned copy for a
// workspace or global variable, or its entry is closed up.
void scope_drop(Mm* m);
void scope_remove_at(int k, int level);
// Entry k (zero-based) of the current level or of a level: "variable_scope: index out of range"
// and null outside the entries in use.
Mm* scope_entry(int k);
Mm* scope_entry(int k, int level);
const char* scope_entry_name(int k);
const char* scope_entry_name(int k, int level);

// ---- the language functions ----------------------------------------------------------------------
// 9 for "_MATVEX_", 1 for a variable with a value, 2 for a file along the M path, 7 for a directory.
Mm exist(const Mm& name);
// exist(name) kept only when it is of kind "var", "builtin", "file" or "dir".
Mm exist(const Mm& name, const Mm& kind);
// "a variable", the path of the file found, or "unknown".
Mm which(const Mm& name);
// Removes every variable of the current level from the table.
Mm clear();
// Removes each variable of the literal list, clear((BR(x), y)), from the table and empties it.
Mm clear(const Mc& list);
// The same for the variables of the current level whose names match: names separated by blanks,
// each a pattern with "*" and "?" wildcards.
Mm clear(const Mm& names);
// The variables of the current level as an n x 1 structure with name, size, bytes and class.
Mm whos();
// The same for the variables of a MAT-file (the rest of the arguments are ignored).
Mm whos(const Mm& file);
Mm whos(const Mm& file, const Mm& a);
// The names of whos() as a 1 x n cell.
Mm who();
Mm who(const Mm& file);
Mm who(const Mm& file, const Mm& a);
// Prints the whos line of x: the name in 22 columns and the description of get_whos_line.
void whos_line(const Mm& x);
// Starts the variable viewer on the named variable; displays it when the viewer cannot start.
Mm openvar(const Mm& name);
// The variable viewer program started by openvar, looked for in the root directory of the M path.
extern const char* ak_variable_viewer;

// The entry of a development environment, called between statements. command 0 turns tracking
// on; 1 and 23 count the variables of the current level and of the globals; 2 and 24 write the
// name of entry a (40 bytes); 3 displays, 4 clears, 26 gives the head of the variable named b;
// 9 and 11 list a level (b "global" for the globals); 10 writes the class word of entry a (64
// bytes) and gives isobject; 29 and 30 write a preview (64 bytes); 33 writes which(b) into the
// buffer a (513 bytes); 37 writes the version (2048 bytes); 12, 15 to 20 and 25 set a hook or
// handler to b. Commands above 38 do nothing. Returns 0 unless the command gives a number.
extern "C" std::intptr_t _ive_do(int command, std::intptr_t a, void* b);
