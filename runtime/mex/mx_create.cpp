// Making and freeing arrays and memory for modules, and the mx functions that cannot be given.
#include <cstdlib>
#include <cstring>

#include "arklib/mex_modules.h"
#include "runtime/mex/mex_internal.h"

using ak_mex::new_array;

namespace {

// Zeroes the numbers of a fresh array (a cell's elements start empty already).
Mm* zeroed(Mm* a) {
    if (!a || a->flags.type == ak_mm || a->nnz <= 0) return a;
    const std::size_t width = a->flags.type == ak_uchar ? 1 : sizeof(double);
    std::memset(a->pr, 0, width * a->nnz);
    if (a->pi) std::memset(a->pi, 0, width * a->nnz);
    return a;
}

Mm* make(int complex, int ndim, const int* dims, ak_matrix_types type) {
    int none[2] = {0, 0};
    if (ndim < 1 || !dims) {
        ndim = 2;
        dims = none;
    }
    return zeroed(new_array(Mm(complex ? 1 : 0, 0, 0, ndim, dims, type)));
}

Mm* make2(int complex, int m, int n, ak_matrix_types type) {
    const int dims[2] = {m, n};
    return make(complex, 2, dims, type);
}

// A structure element: one empty value per field.
void fill_structure(Mm* s) {
    Mm* elems = static_cast<Mm*>(s->pr);
    for (int k = 0; k < s->nnz; ++k) elems[k] = Mm(0, 0, 0, 1, s->nfields, ak_mm);
}

}  // namespace

mxArray* mxCreateDoubleMatrix(mwSize m, mwSize n, mxComplexity complexity) {
    return make2(complexity == mxCOMPLEX, m, n, ak_double);
}

mxArray* mxCreateFull(mwSize m, mwSize n, int complexity) { return make2(complexity, m, n, ak_double); }

mxArray* mxCreateDoubleScalar(double value) { return new_array(Mm(value)); }

mxArray* mxCreateSparse(mwSize m, mwSize n, mwSize nzmax, mxComplexity complexity) {
    Mm* a = new_array(Mm(complexity == mxCOMPLEX, 1, nzmax, m, n, ak_double));
    if (!a) return a;
    // The entries take the first positions, each holding 0, so that the array is a valid one.
    for (int k = 0; k < a->nnz; ++k) a->index[k] = k;
    return zeroed(a);
}

mxArray* mxCreateString(const char* text) { return new_array(TM(text)); }

mxArray* mxCreateCharArray(mwSize ndim, const mwSize* dims) {
    Mm* a = make(0, ndim, dims, ak_double);
    if (a) a->setstr(1);
    return a;
}

mxArray* mxCreateNumericArray(mwSize ndim, const mwSize* dims, mxClassID classid, mxComplexity complexity) {
    switch (classid) {
    case mxDOUBLE_CLASS: return make(complexity == mxCOMPLEX, ndim, dims, ak_double);
    case mxCHAR_CLASS:
    case mxINT8_CLASS:
    case mxUINT8_CLASS: return make(complexity == mxCOMPLEX, ndim, dims, ak_uchar);
    default:
        error("mxCreateNumericArray: can't create type = %d", static_cast<int>(classid));
        return nullptr;
    }
}

mxArray* mxCreateNumericMatrix(mwSize m, mwSize n, mxClassID classid, mxComplexity complexity) {
    const mwSize dims[2] = {m, n};
    return mxCreateNumericArray(2, dims, classid, complexity);
}

mxArray* mxCreateLogicalMatrix(mwSize m, mwSize n) {
    Mm* a = make2(0, m, n, ak_double);
    if (a) a->setlogical(1);
    return a;
}

mxArray* mxCreateLogicalScalar(int value) {
    Mm* a = mxCreateLogicalMatrix(1, 1);
    if (a && a->nnz == 1) *a->addr() = value ? 1.0 : 0.0;
    return a;
}

mxArray* mxCreateCellArray(mwSize ndim, const mwSize* dims) { return make(0, ndim, dims, ak_mm); }

mxArray* mxCreateCellMatrix(mwSize m, mwSize n) { return make2(0, m, n, ak_mm); }

mxArray* mxCreateStructArray(mwSize ndim, const mwSize* dims, int nfields, const char** names) {
    Mm* s = make(0, ndim, dims, ak_mm);
    if (!s) return s;
    s->extend_nfields(8);
    for (int f = 0; f < nfields; ++f) s->addfield(names[f], 0);
    fill_structure(s);
    return s;
}

mxArray* mxCreateStructMatrix(mwSize m, mwSize n, int nfields, const char** names) {
    const mwSize dims[2] = {m, n};
    return mxCreateStructArray(2, dims, nfields, names);
}

mxArray* mxDuplicateArray(const mxArray* a) {
    if (!a) return nullptr;
    Mm* copy = new_array(Mm());
    if (copy) copy->deepcopy(a->pi != nullptr, *a, ak_no_type);
    return copy;
}

void mxDestroyArray(mxArray* a) {
    if (!a) return;
    ak_mex::untrack_array(a);
    delete a;
}

void mxFreeMatrix(mxArray* a) { mxDestroyArray(a); }

// ---- memory ------------------------------------------------------------------------------------

void* mxMalloc(std::size_t n) {
    void* p = std::malloc(n ? n : 1);
    ak_mex::track_block(p);
    return p;
}

void* mxCalloc(std::size_t n, std::size_t size) {
    void* p = std::calloc(n ? n : 1, size ? size : 1);
    ak_mex::track_block(p);
    return p;
}

void* mxRealloc(void* p, std::size_t n) {
    ak_mex::untrack_block(p);
    void* q = std::realloc(p, n ? n : 1);
    ak_mex::track_block(q ? q : p);  // on failure p stays valid
    return q;
}

void mxFree(void* p) {
    if (!p) return;
    ak_mex::untrack_block(p);
    std::free(p);
}

// ---- not available -----------------------------------------------------------------------------

#define AK_NOT_AVAILABLE(result, name, ...) \
    result name(__VA_ARGS__) {              \
        error("%s is not available", #name); \
        return static_cast<result>(0);      \
    }
#define AK_NOT_AVAILABLE_VOID(name, ...) \
    void name(__VA_ARGS__) { error("%s is not available", #name); }

AK_NOT_AVAILABLE(mxArray*, mxCreateCharMatrixFromStrings, mwSize, const char**)
AK_NOT_AVAILABLE(int, mxIsFromGlobalWS, const mxArray*)
AK_NOT_AVAILABLE_VOID(mxSetAllocFcns, void* (*)(std::size_t, std::size_t), void (*)(void*),
                      void* (*)(void*, std::size_t), void* (*)(std::size_t))
AK_NOT_AVAILABLE(int, mxSetClassName, mxArray*, const char*)
AK_NOT_AVAILABLE_VOID(mxSetData, mxArray*, void*)
AK_NOT_AVAILABLE_VOID(mxSetImagData, mxArray*, void*)
AK_NOT_AVAILABLE_VOID(mxSetIr, mxArray*, mwIndex*)
AK_NOT_AVAILABLE_VOID(mxSetJc, mxArray*, mwIndex*)
AK_NOT_AVAILABLE_VOID(mxSetM, mxArray*, mwSize)
AK_NOT_AVAILABLE_VOID(mxSetN, mxArray*, mwSize)
AK_NOT_AVAILABLE_VOID(mxSetNzmax, mxArray*, mwSize)
AK_NOT_AVAILABLE_VOID(mxSetPi, mxArray*, double*)
AK_NOT_AVAILABLE_VOID(mxSetPr, mxArray*, double*)

AK_NOT_AVAILABLE(int, mexEvalString, const char*)
AK_NOT_AVAILABLE(const mxArray*, mexGet, double, const char*)
AK_NOT_AVAILABLE(mxArray*, mexGetArray, const char*, const char*)
AK_NOT_AVAILABLE(const mxArray*, mexGetArrayPtr, const char*, const char*)
AK_NOT_AVAILABLE(int, mexGetFull, const char*, int*, int*, double**, double**)
AK_NOT_AVAILABLE(mxArray*, mexGetGlobal, const char*)
AK_NOT_AVAILABLE(mxArray*, mexGetMatrix, const char*)
AK_NOT_AVAILABLE(mxArray*, mexGetMatrixPtr, const char*)
AK_NOT_AVAILABLE(int, mexIsGlobal, const mxArray*)
AK_NOT_AVAILABLE(int, mexIsLocked)
AK_NOT_AVAILABLE_VOID(mexLock)
AK_NOT_AVAILABLE_VOID(mexMakeArrayPersistent, mxArray*)
AK_NOT_AVAILABLE(int, mexPutArray, mxArray*, const char*)
AK_NOT_AVAILABLE(int, mexPutFull, const char*, int, int, double*, double*)
AK_NOT_AVAILABLE(int, mexPutMatrix, mxArray*)
AK_NOT_AVAILABLE(int, mexSet, double, const char*, mxArray*)
AK_NOT_AVAILABLE_VOID(mexSetTrapFlag, int)
AK_NOT_AVAILABLE_VOID(mexUnlock)

// Real data are mxGetPr's; complex data are two arrays, never one interleaved array.
int mxSetDoubles(mxArray* a, double* data) {
    mxSetPr(a, data);
    return 0;
}

// Text and logical values are doubles here, with a flag: there is no array of mxChar or mxLogical to
// hand out.
mxChar* mxGetChars(const mxArray*) {
    error("mxGetChars: text is held as doubles here; use mxGetString or mxArrayToString");
    return nullptr;
}

mxLogical* mxGetLogicals(const mxArray*) {
    error("mxGetLogicals: logical values are held as doubles here; use mxGetPr");
    return nullptr;
}

mxComplexDouble* mxGetComplexDoubles(const mxArray*) {
    error("mxGetComplexDoubles: complex data are held as two arrays here; use mxGetPr and mxGetPi");
    return nullptr;
}

int mxSetComplexDoubles(mxArray*, mxComplexDouble*) {
    error("mxSetComplexDoubles: complex data are held as two arrays here; use mxGetPr and mxGetPi");
    return 0;
}
