// Extension modules as translated code calls them, and the argument checks of the mb family.
//
// A module "foo" is the shared object foo_matvex.so, looked for in the current directory, then along
// the M path, then by the dynamic linker's own search. It is loaded on its first call and stays
// loaded until clear_mex. Translated code calls one as
//
//     Mm* prhs[2]; Mm* plhs[64];
//     call_mex_prhs(prhs[0], a); call_mex_prhs(prhs[1], b);
//     call_mex("foo", 2, plhs, 2, prhs);
//     call_mex_plhs(y1, plhs[0]); call_mex_plhs(y2, plhs[1]);
//
// The functions of the module's side (mx..., mex...) are declared in the extension headers
// (include/arklib/mex/mex.h, installed for module sources).
#pragma once
#include "arklib/matrix.h"

// The name of the module being called, or last called: it stays set after the call.
extern char current_mex[512];

// Calls the module name with nrhs inputs and nlhs wanted outputs. plhs has at least 64 slots; on
// return slots 0 .. nlhs-1 hold heap matrices for call_mex_plhs (slot 0 also when nlhs is 0 and the
// module gave a result). After an error in the module, the slots are null and everything the module
// made in the call has been freed.
void call_mex(const char* name, double nlhs, Mm** plhs, double nrhs, Mm** prhs);
// Stores the address of value in slot: inputs are not copied.
void call_mex_prhs(Mm*& slot, const Mm& value);
// When value is not null: assigns it to out, then destroys and frees it.
void call_mex_plhs(Mm& out, Mm* value);
// Unloads the module name (found without regard to case), after running its mexAtExit function.
// Does nothing for a name that is not loaded.
void clear_mex(const char* name);
// The same from the language: clear_mex('foo'). Gives x_M.
Mm clear_mex(const Mm& name);
// Number of modules loaded.
int ak_mex_loaded_count();

// ---- argument checks: each reports every test that fails, with the name of m, and gives x_M ----
Mm mbint(const Mm& m);
Mm mbintreal(const Mm& m);
Mm mbintrealscalar(const Mm& m);
Mm mbintrealvector(const Mm& m);
Mm mbintscalar(const Mm& m);
Mm mbintvector(const Mm& m);
Mm mbrealvector(const Mm& m);
Mm mbscalar(const Mm& m);
Mm mbvector(const Mm& m);
