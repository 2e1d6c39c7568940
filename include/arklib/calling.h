// How library functions take and return values: the overload pattern's counters and hooks, the
// argument checks, loop and switch support, and the tests of truth and of kind.
//
// A language function f is a family of overloads: one form per number of inputs, and forms with
// output references behind the i_o marker, f(a, b, i_o, out2, out3), whose return value is the
// first output. See docs/overloads.md.
#pragma once
#include "arklib/matrix.h"

// ---- nargin and nargout ------------------------------------------------------------------------------
// Translated code stores the counts of the running function here; the library only holds them.
extern int nargin_set;      // 1 once a caller has stored a count in nargin_val
extern int nargout_set;     // the same for nargout_val
extern double nargin_val;   // inputs of the running function
extern double nargout_val;  // outputs asked for

double nargin();
double nargout();
// out = nargout_val, in = nargin_val; returns x_M.
Mm argn(i_o_t, Mm& out, Mm& in);

// ---- switch ------------------------------------------------------------------------------------------
// Storage for translated switch statements (switchvar is declared with the constants).
extern int switchdepth;
extern int switchfalse;
// The switch value, tested for having a value, as a copy for switchvar.
Mm switchinit(const Mm& v);

// ---- hooks of the translated program ------------------------------------------------------------------
// The program's table of callable functions: name, the inputs as a cell, and six outputs.
typedef Mm (*ak_feval_func_t)(Mm name, Mm args, i_o_t, Mm& out1, Mm& out2, Mm& out3, Mm& out4, Mm& out5,
                              Mm& out6);
// Runs the text of a graphics callback.
typedef Mm (*ak_callback_func_t)(Mm text);
extern ak_feval_func_t feval_func;
extern ak_callback_func_t callback_func;

// ---- argument checks ---------------------------------------------------------------------------------
// Tests outputs low, outputs high, inputs low, inputs high, in that order; the first failure is
// reported. Returns 1 after a report, 0 when the counts are acceptable.
int validate_narg(const char* name, int nout, int nin, int min_out, int max_out, int min_in, int max_in);
// For a form that exists only to say it cannot be called: "f does not accept 2 inputs". Returns 0.
double error_input(const char* name, int n);
Mm nargchk(const Mm& a);
Mm nargchk(const Mm& a, const Mm& b);
// "" normally, "too few input arguments" or "too many input arguments" (which wins); never reports.
Mm nargchk(const Mm& low, const Mm& high, const Mm& n);

// Each reports "<name>: ... expected, but matrix ..." and returns 1, or returns 0 when m fits.
int error_square(const Mm& m, const char* name);
int error_2d(const Mm& m, const char* name);
int error_sparse(const Mm& m, const char* name);
int error_struct(const Mm& m, const char* name);
int error_numeric(const Mm& m, const char* name);

// A plain double from a real full double 1x1 matrix; anything else is reported and gives 0.
double scalar(double v);
double scalar(const Mm& m);

// ---- for loops ---------------------------------------------------------------------------------------
// Iterations of a for loop over m: its columns.
int forsize(const Mm& m);
int columns(const Mm& m);
// Loads column k (zero-based) of m into the loop variable. A sparse m is made full. The loop
// variable's storage is reused while nothing else holds it.
inline void forelem(Mm& var, Mm& m, int k);
void forelem_column(Mm& var, Mm& m, int k);

// The common step of `for i = a:b`: element k of a real double row into the real 1x1 loop variable
// that the step before left, and that nothing else holds. Every other step loads the column in full.
inline void forelem(Mm& var, Mm& m, int k) {
    const int other = (m.flags.type ^ ak_double) | m.flags.sparse | (m.dims[0] ^ 1) |
                      (var.flags.type ^ ak_double) | var.flags.sparse | (var.nnz ^ 1);
    if (!other && k > 0 && k < m.dims[1] && !m.pi && !var.pi && var.refs && ak_ref_count(var.refs) == 1) {
        *static_cast<double*>(var.pr) = static_cast<const double*>(m.pr)[k];
        var.flags.str = m.flags.str;
        var.flags.logical = m.flags.logical;
        return;
    }
    forelem_column(var, m, k);
}

// ---- truth -------------------------------------------------------------------------------------------
// True when v is below or above 0 (NaN is false).
int istrue(double v);
// True when non-empty with no zero (or NaN) element; the imaginary half is ignored. A structure is
// converted with double first; a cell array has no truth value.
int istrue(const Mm& m);

// ---- predicates --------------------------------------------------------------------------------------
int iscell(const Mm& m);
int isstruct(const Mm& m);  // a structure, not an object (unlike Mm::isstruct)
int is_struct(const Mm& m);
int mxIsStruct(const Mm& m);
int isobject(const Mm& m);
int isempty(const Mm& m);
int isscalar(const Mm& m);
int is_scalar(const Mm& m);
int isvector(const Mm& m);
int is_vector(const Mm& m);
int is_square(const Mm& m);
int islogical(const Mm& m);
int isnumeric(const Mm& m);
// Both drop an imaginary half that is all zero from m (only this head changes).
int isreal(const Mm& m);
int iscomplex(const Mm& m);
int iscomplex(const double* v, int n);
int isnegative(const double* v, int n);
// 1 for whole numbers below 1e7 in magnitude (and empty), 0 otherwise; -1 for a matrix without value.
int isint(const Mm& m);
int mxIsDouble(const Mm& m);
int mxIsUint8(const Mm& m);
int mxIsSparse(const Mm& m);
int isglobal(const Mm& m);
int is_same_dims(const int* a, const int* b);
int is_same_dims(const Mm& a, const Mm& b);
int isieee();
