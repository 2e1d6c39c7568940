/* The mx functions of an extension module: arrays over arklib's matrix.
 *
 * An mxArray here is arklib's Mm. Sizes and indices are plain ints, so module sources written with
 * int sizes and sources written with mwSize / mwIndex compile alike. Element data are doubles (or
 * bytes for uint8 arrays), with the real and imaginary parts in two separate arrays; character
 * arrays are doubles with a string flag.
 *
 * Plain C: a module may be written in C or C++. Build modules with arkmex, which puts this folder on
 * the include path. */
#ifndef ARKLIB_MEX_MATRIX_H
#define ARKLIB_MEX_MATRIX_H

#include <stddef.h>

#ifdef __cplusplus
class Mm;
typedef Mm mxArray;
extern "C" {
#else
typedef struct Mm mxArray;
#endif

typedef int mwSize;
typedef int mwIndex;
typedef int mwSignedIndex;
typedef unsigned char mxLogical;
typedef unsigned short mxChar;

typedef enum { mxREAL = 0, mxCOMPLEX = 1 } mxComplexity;

/* What mxGetClassID reports. A logical array is a double array with a flag and reports
 * mxDOUBLE_CLASS; a character array is a double array too. */
typedef enum {
    mxUNKNOWN_CLASS = -1,
    mxCELL_CLASS = 1,
    mxSTRUCT_CLASS = 2,
    mxOBJECT_CLASS = 3,
    mxCHAR_CLASS = 4,
    mxSPARSE_CLASS = 5,
    mxDOUBLE_CLASS = 6,
    mxSINGLE_CLASS = 7,
    mxINT8_CLASS = 8,
    mxUINT8_CLASS = 9,
    mxINT16_CLASS = 10,
    mxUINT16_CLASS = 11,
    mxINT32_CLASS = 12,
    mxUINT32_CLASS = 13,
    mxINT64_CLASS = 14,
    mxUINT64_CLASS = 15,
    mxFUNCTION_CLASS = 16,
    mxLOGICAL_CLASS = 17
} mxClassID;

/* Only for the interleaved accessors, which report that complex data are held as two arrays. */
typedef struct {
    double real, imag;
} mxComplexDouble;

/* ---- creation and destruction: each array is the caller's, freed by mxDestroyArray. Arrays a
 * module makes during a call and does not return are freed when the call ends, also when it ends
 * with an error. */
mxArray* mxCreateDoubleMatrix(mwSize m, mwSize n, mxComplexity complexity);
mxArray* mxCreateFull(mwSize m, mwSize n, int complexity);
mxArray* mxCreateDoubleScalar(double value);
mxArray* mxCreateSparse(mwSize m, mwSize n, mwSize nzmax, mxComplexity complexity);
mxArray* mxCreateString(const char* text);
mxArray* mxCreateCharArray(mwSize ndim, const mwSize* dims);
mxArray* mxCreateNumericArray(mwSize ndim, const mwSize* dims, mxClassID classid, mxComplexity complexity);
mxArray* mxCreateNumericMatrix(mwSize m, mwSize n, mxClassID classid, mxComplexity complexity);
mxArray* mxCreateLogicalMatrix(mwSize m, mwSize n);
mxArray* mxCreateLogicalScalar(int value);
mxArray* mxCreateCellArray(mwSize ndim, const mwSize* dims);
mxArray* mxCreateCellMatrix(mwSize m, mwSize n);
mxArray* mxCreateStructArray(mwSize ndim, const mwSize* dims, int nfields, const char** names);
mxArray* mxCreateStructMatrix(mwSize m, mwSize n, int nfields, const char** names);
mxArray* mxDuplicateArray(const mxArray* a);
void mxDestroyArray(mxArray* a);
void mxFreeMatrix(mxArray* a);

/* ---- memory: the C heap. Blocks taken during a module call and not freed are freed when the call
 * ends. */
void* mxMalloc(size_t n);
void* mxCalloc(size_t n, size_t size);
void* mxRealloc(void* p, size_t n);
void mxFree(void* p);

/* ---- shape */
size_t mxGetM(const mxArray* a);
size_t mxGetN(const mxArray* a);
mwSize mxGetNumberOfDimensions(const mxArray* a);
const mwSize* mxGetDimensions(const mxArray* a);
size_t mxGetNumberOfElements(const mxArray* a);
mwSize mxGetNzmax(const mxArray* a);
size_t mxGetElementSize(const mxArray* a);
int mxSetDimensions(mxArray* a, const mwSize* dims, mwSize ndim);
mwIndex mxCalcSingleSubscript(const mxArray* a, mwSize nsubs, const mwIndex* subs);

/* ---- data */
double* mxGetPr(const mxArray* a);
double* mxGetPi(const mxArray* a);
void* mxGetData(const mxArray* a);
void* mxGetImagData(const mxArray* a);
double* mxGetDoubles(const mxArray* a);  /* mxGetPr */
int mxSetDoubles(mxArray* a, double* data);  /* mxSetPr */
mxComplexDouble* mxGetComplexDoubles(const mxArray* a);  /* reports: data are split */
int mxSetComplexDoubles(mxArray* a, mxComplexDouble* data);  /* reports: data are split */
mxChar* mxGetChars(const mxArray* a);        /* reports: text is doubles; use mxGetString */
mxLogical* mxGetLogicals(const mxArray* a);  /* reports: logicals are doubles; use mxGetPr */
double mxGetScalar(const mxArray* a);
double mxGetR(const mxArray* a, int row, int col);  /* 1-based, checked */
void mxSetR(mxArray* a, int row, int col, double value);
double mxGetI(const mxArray* a, int row, int col);
void mxSetI(mxArray* a, int row, int col, double value);
mwIndex* mxGetIr(const mxArray* a);  /* compressed-column copies, freed when the call ends */
mwIndex* mxGetJc(const mxArray* a);
int mxGetString(const mxArray* a, char* buffer, mwSize size);
char* mxArrayToString(const mxArray* a);  /* free with mxFree */
const char* mxGetName(const mxArray* a);
void mxSetName(mxArray* a, const char* name);

/* ---- class and predicates */
mxClassID mxGetClassID(const mxArray* a);
const char* mxGetClassName(const mxArray* a);
int mxIsClass(const mxArray* a, const char* name);
int mxIsComplex(const mxArray* a);
int mxIsSparse(const mxArray* a);
int mxIsFull(const mxArray* a);
int mxIsChar(const mxArray* a);
int mxIsDouble(const mxArray* a);
int mxIsUint8(const mxArray* a);
int mxIsEmpty(const mxArray* a);
int mxIsCell(const mxArray* a);
int mxIsStruct(const mxArray* a);
int mxIsLogical(const mxArray* a);
int mxIsNumeric(const mxArray* a);
int mxIsFinite(double value);
int mxIsInf(double value);
int mxIsNaN(double value);
void mxSetLogical(mxArray* a);
void mxSetString(mxArray* a);
double mxGetEps(void);
double mxGetInf(void);
double mxGetNaN(void);

/* ---- cells and structures (zero-based element numbers) */
mxArray* mxGetCell(const mxArray* a, mwIndex k);
void mxSetCell(mxArray* a, mwIndex k, mxArray* value);
int mxGetNumberOfFields(const mxArray* a);
const char* mxGetFieldNameByNumber(const mxArray* a, int f);
int mxGetFieldNumber(const mxArray* a, const char* name);
mxArray* mxGetFieldByNumber(const mxArray* a, mwIndex k, int f);
mxArray* mxGetField(const mxArray* a, mwIndex k, const char* name);
void mxSetFieldByNumber(mxArray* a, mwIndex k, int f, mxArray* value);
void mxSetField(mxArray* a, mwIndex k, const char* name, mxArray* value);

/* ---- present so that modules link; each reports "<name> is not available": they would write
 * into a matrix behind its reference count, or need a workspace */
mxArray* mxCreateCharMatrixFromStrings(mwSize m, const char** strings);
int mxIsFromGlobalWS(const mxArray* a);
void mxSetAllocFcns(void* (*calloc_fn)(size_t, size_t), void (*free_fn)(void*),
                    void* (*realloc_fn)(void*, size_t), void* (*malloc_fn)(size_t));
int mxSetClassName(mxArray* a, const char* name);
void mxSetData(mxArray* a, void* data);
void mxSetImagData(mxArray* a, void* data);
void mxSetIr(mxArray* a, mwIndex* ir);
void mxSetJc(mxArray* a, mwIndex* jc);
void mxSetM(mxArray* a, mwSize m);
void mxSetN(mxArray* a, mwSize n);
void mxSetNzmax(mxArray* a, mwSize nzmax);
void mxSetPi(mxArray* a, double* pi);
void mxSetPr(mxArray* a, double* pr);

/* An error with message when test is 0. */
void mxAssert(int test, const char* message);
#define mxAssertS(test, message) mxAssert((test) != 0, message)

#ifdef __cplusplus
}
#endif

#endif
