// eval and feval: the language functions that need an interpreter or a table of functions reach
// them through the hooks (eval_func, feval_func, callback_func), and fall back on what a compiled
// program can do alone. Also the path functions, the fixed answers of a compiled program (version,
// computer, ...) and the stubs.
#pragma once
#include "arklib/calling.h"
#include "arklib/hooks.h"
#include "arklib/matrix.h"

// ---- eval ----------------------------------------------------------------------------------------
// eval(x): without eval_func, str2num(x). Otherwise the value of a variable of that name, or the
// text run by eval_func: an expression as "eval_result_N=text", whose value is the result, a
// statement (it holds "=", "%", "!", "global", "load ", ...) as it stands, giving x_M. The call is
// framed by the lines "Calling eval('...')" and "Done eval"; a failure reports "error evaluating.".
Mm eval(const Mm& x);
Mm eval(const Mm& x, const Mm& catch_text);             // the catch text is not used
Mm eval(const Mm& x, i_o_t, Mm& a, Mm& b);              // the outputs are not written
Mm evalin(const Mm& w);                                 // reports: evalin needs a text
Mm evalin(const Mm& w, const Mm& x);                    // the workspace w is not used
Mm evalin(const Mm& w, const Mm& x, const Mm& catch_text);
// Expressions evaluated so far, over the life of the program.
int ak_eval_count();

// ---- feval ---------------------------------------------------------------------------------------
// Calls the function named f (a string) through feval_func. The library's numerical methods call
// user functions this way:
//     Mm dy = feval_call(fname, t, y);
//     feval_call(fname, args, 2, outs);   // args a cell of inputs, outs[0..1] the results
Mm feval_call(const char* name);
Mm feval_call(const char* name, const Mm& a);
Mm feval_call(const char* name, const Mm& a, const Mm& b);
Mm feval_call(const char* name, const Mm& a, const Mm& b, const Mm& c);
Mm feval_call(const char* name, const Mm& a, const Mm& b, const Mm& c, const Mm& d);
Mm feval_call(const Mm& name, const Mm& a);
Mm feval_call(const Mm& name, const Mm& a, const Mm& b);
Mm feval_call(const Mm& name, const Mm& a, const Mm& b, const Mm& c);
Mm feval_call(const Mm& name, const Mm& a, const Mm& b, const Mm& c, const Mm& d);
// nout results (at most 6) into outs, the inputs as a cell (a non-cell is the one input). Returns
// the first result.
Mm feval_call(const Mm& name, const Mm& args, int nout, Mm* outs);
Mm feval_call(const char* name, const Mm& args, int nout, Mm* outs);

// feval(f, ...) of the language.
Mm feval(const Mm& f);
Mm feval(const Mm& f, const Mm& a);
Mm feval(const Mm& f, const Mm& a, const Mm& b);
Mm feval(const Mm& f, const Mm& a, const Mm& b, const Mm& c);
Mm feval(const Mm& f, const Mm& a, const Mm& b, const Mm& c, const Mm& d);
Mm feval(const Mm& f, const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e);
Mm feval(const Mm& f, i_o_t, Mm& o2);
Mm feval(const Mm& f, const Mm& a, i_o_t, Mm& o2);
Mm feval(const Mm& f, const Mm& a, const Mm& b, i_o_t, Mm& o2);
Mm feval(const Mm& f, const Mm& a, const Mm& b, const Mm& c, i_o_t, Mm& o2);
Mm feval(const Mm& f, i_o_t, Mm& o2, Mm& o3);
Mm feval(const Mm& f, const Mm& a, i_o_t, Mm& o2, Mm& o3);
Mm feval(const Mm& f, const Mm& a, const Mm& b, i_o_t, Mm& o2, Mm& o3);
Mm feval(const Mm& f, const Mm& a, const Mm& b, const Mm& c, i_o_t, Mm& o2, Mm& o3);

// ---- functions given as text ---------------------------------------------------------------------
// A function argument is its name or its text: these give a copy of their first argument.
Mm fcnchk(const Mm& f);
Mm fcnchk(const Mm& f, const Mm& y);
Mm inlinefcn(const Mm& f);
Mm inlinefcn(const Mm& f, const Mm& y);
Mm minline(const Mm& f);
Mm minline(const Mm& f, const Mm& y);
Mm formula(const Mm& f);
Mm flipdim(const Mm& x);
// [a, b] = fcnchk(f, y): a is f, b the empty string (no message); x_M.
Mm fcnchk(const Mm& f, const Mm& y, i_o_t, Mm& a, Mm& b);
Mm prefcnchk(const Mm& f, const Mm& x, const Mm& y, const Mm& z, i_o_t, Mm& a, Mm& b);
// Always the empty string: a compiled program keeps no caller's names.
Mm inputname(const Mm& x);

// ---- the M path (over the host's path object; "path is not available in compiled programs."
// without one) ----------------------------------------------------------------------------------
Mm matlabpath();
Mm matlabpath(const Mm& x);
Mm matlabroot();
Mm path();
Mm path(const Mm& x);
Mm path(const Mm& a, const Mm& b);
// Puts the directories of a string, character matrix or cell at the front, the first ending first.
Mm addpath(const Mm& list);

// ---- the program and its platform ----------------------------------------------------------------
Mm version();                         // "4.51 MATVEX"
Mm version(i_o_t, Mm& v, Mm& date);  // and the release date
Mm ver();                             // displays version()
Mm computer();                        // "GLNXA64"
Mm computer(i_o_t, Mm& c, Mm& maxsize);

// ---- stubs: no meaning in a compiled program -----------------------------------------------------
// These do nothing and give x_M.
Mm echo(const Mm& x);
Mm ivdep();
Mm more(const Mm& x);
Mm realonly();
Mm rmpath(const Mm& x);
Mm sim(const Mm& x);
Mm sim(const Mm& x, const Mm& y);
Mm spparms(const Mm& x);
Mm spparms(const Mm& x, const Mm& y);
// These give the string "Stub called.".
Mm assignin(Mm a = x_M, Mm b = x_M, Mm c = x_M, Mm d = x_M, Mm e = x_M, Mm f = x_M, Mm g = x_M, Mm h = x_M,
            Mm i = x_M, Mm j = x_M, Mm k = x_M, Mm l = x_M, Mm m = x_M, Mm n = x_M, Mm o = x_M, Mm p = x_M);
Mm close_system(Mm a = x_M, Mm b = x_M, Mm c = x_M, Mm d = x_M, Mm e = x_M, Mm f = x_M, Mm g = x_M,
                Mm h = x_M, Mm i = x_M, Mm j = x_M, Mm k = x_M, Mm l = x_M, Mm m = x_M, Mm n = x_M, Mm o = x_M,
                Mm p = x_M);
Mm find_system(Mm a = x_M, Mm b = x_M, Mm c = x_M, Mm d = x_M, Mm e = x_M, Mm f = x_M, Mm g = x_M, Mm h = x_M,
               Mm i = x_M, Mm j = x_M, Mm k = x_M, Mm l = x_M, Mm m = x_M, Mm n = x_M, Mm o = x_M, Mm p = x_M);
Mm open_system(Mm a = x_M, Mm b = x_M, Mm c = x_M, Mm d = x_M, Mm e = x_M, Mm f = x_M, Mm g = x_M, Mm h = x_M,
               Mm i = x_M, Mm j = x_M, Mm k = x_M, Mm l = x_M, Mm m = x_M, Mm n = x_M, Mm o = x_M, Mm p = x_M);
Mm get_param(Mm a = x_M, Mm b = x_M, Mm c = x_M, Mm d = x_M, Mm e = x_M, Mm f = x_M, Mm g = x_M, Mm h = x_M,
             Mm i = x_M, Mm j = x_M, Mm k = x_M, Mm l = x_M, Mm m = x_M, Mm n = x_M, Mm o = x_M, Mm p = x_M);
Mm set_param(Mm a = x_M, Mm b = x_M, Mm c = x_M, Mm d = x_M, Mm e = x_M, Mm f = x_M, Mm g = x_M, Mm h = x_M,
             Mm i = x_M, Mm j = x_M, Mm k = x_M, Mm l = x_M, Mm m = x_M, Mm n = x_M, Mm o = x_M, Mm p = x_M);
Mm simset(Mm a = x_M, Mm b = x_M, Mm c = x_M, Mm d = x_M, Mm e = x_M, Mm f = x_M, Mm g = x_M, Mm h = x_M,
          Mm i = x_M, Mm j = x_M, Mm k = x_M, Mm l = x_M, Mm m = x_M, Mm n = x_M, Mm o = x_M, Mm p = x_M);
Mm system_dependent(Mm a = x_M, Mm b = x_M, Mm c = x_M, Mm d = x_M, Mm e = x_M, Mm f = x_M, Mm g = x_M,
                    Mm h = x_M, Mm i = x_M, Mm j = x_M, Mm k = x_M, Mm l = x_M, Mm m = x_M, Mm n = x_M,
                    Mm o = x_M, Mm p = x_M);
Mm miedit(Mm a = x_M, Mm b = x_M, Mm c = x_M, Mm d = x_M, Mm e = x_M, Mm f = x_M, Mm g = x_M, Mm h = x_M,
          Mm i = x_M, Mm j = x_M, Mm k = x_M, Mm l = x_M, Mm m = x_M, Mm n = x_M, Mm o = x_M, Mm p = x_M);
