/* The mex functions of an extension module, and its entry point.
 *
 * A module is a shared object named <name>_matvex.so that defines mexFunction. A program calls it
 * as the function <name>: the inputs arrive in prhs[0 .. nrhs-1], unchanged and not to be written;
 * the module puts its nlhs results in plhs. Build one with
 *
 *     arkmex foo.c              (gives foo_matvex.so)
 *     arkmex -o bar_matvex.so bar.cpp util.c
 *
 * An error raised by the module (mexErrMsgTxt, or any error of the library) leaves the module at
 * once and goes on in the caller; the arrays and mxMalloc blocks the module made in the call are
 * freed. */
#ifndef ARKLIB_MEX_MEX_H
#define ARKLIB_MEX_MEX_H

#include "matrix.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The entry point every module defines. */
void mexFunction(int nlhs, mxArray* plhs[], int nrhs, const mxArray* prhs[]);

/* ---- messages */
void mexErrMsgTxt(const char* text);
void mexErrMsgIdAndTxt(const char* id, const char* format, ...);
void mexWarnMsgTxt(const char* text);
void mexWarnMsgIdAndTxt(const char* id, const char* format, ...);
int mexPrintf(const char* format, ...);
void mexPrintAssertion(const char* test, const char* file, int line, const char* message);
void mexAddFlops(int n);

/* ---- calls back into the program: a function of the language (or one the program registered)
 * by name. The results in plhs are the module's. Returns 0. */
int mexCallMATLAB(int nlhs, mxArray* plhs[], int nrhs, mxArray* prhs[], const char* name);
/* The name the module was called by. */
const char* mexFunctionName(void);
/* f runs once when the module is cleared. Returns 0. */
int mexAtExit(void (*f)(void));

/* ---- variables of the program, where it keeps a table of them. workspace is "base", "caller" or
 * "global". mexGetVariable gives a copy (null when there is no such variable), mexGetVariablePtr
 * the variable itself, read-only; mexPutVariable sets a variable that exists: 0 on success, 1 when
 * there is none, since a compiled program cannot gain variables. */
mxArray* mexGetVariable(const char* workspace, const char* name);
const mxArray* mexGetVariablePtr(const char* workspace, const char* name);
int mexPutVariable(const char* workspace, const char* name, const mxArray* value);

/* ---- present so that modules link; each reports "<name> is not available" */
int mexEvalString(const char* command);
const mxArray* mexGet(double handle, const char* property);
mxArray* mexGetArray(const char* name, const char* workspace);
const mxArray* mexGetArrayPtr(const char* name, const char* workspace);
int mexGetFull(const char* name, int* m, int* n, double** pr, double** pi);
mxArray* mexGetGlobal(const char* name);
mxArray* mexGetMatrix(const char* name);
mxArray* mexGetMatrixPtr(const char* name);
int mexIsGlobal(const mxArray* a);
int mexIsLocked(void);
void mexLock(void);
void mexMakeArrayPersistent(mxArray* a);
int mexPutArray(mxArray* a, const char* workspace);
int mexPutFull(const char* name, int m, int n, double* pr, double* pi);
int mexPutMatrix(mxArray* a);
int mexSet(double handle, const char* property, mxArray* value);
void mexSetTrapFlag(int flag);
void mexUnlock(void);

#ifdef __cplusplus
}
#endif

#endif
