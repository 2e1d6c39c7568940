// The mx accessors: an mxArray is an Mm, so most of them read a field of the head.
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unordered_set>

#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/sparse.h"
#include "arklib/subscript.h"
#include "runtime/mex/mex_internal.h"

namespace {

Mm* elements(const Mm& m) { return static_cast<Mm*>(m.pr); }

// Gives this head storage of its own before a write into one of its elements.
void unshare(Mm& m) {
    if (m.dirty()) m.deepcopy(m, ak_no_type);
}

}  // namespace

// ---- shape ---------------------------------------------------------------------------------------

size_t mxGetM(const mxArray* a) { return static_cast<size_t>(a->dims[0]); }

size_t mxGetN(const mxArray* a) { return a->dims[0] ? static_cast<size_t>(a->size() / a->dims[0]) : 0; }

mwSize mxGetNumberOfDimensions(const mxArray* a) { return a->ndims; }

const mwSize* mxGetDimensions(const mxArray* a) { return a->dims; }

size_t mxGetNumberOfElements(const mxArray* a) { return static_cast<size_t>(a->size()); }

mwSize mxGetNzmax(const mxArray* a) { return a->nnz; }

size_t mxGetElementSize(const mxArray* a) {
    switch (a->flags.type) {
    case ak_no_type:
    case ak_double: return sizeof(double);
    case ak_uchar: return 1;
    case ak_mm: return sizeof(Mm);
    }
    return 0;
}

int mxSetDimensions(mxArray* a, const mwSize* dims, mwSize ndim) {
    a->reshape(ndim, dims);
    return 0;
}

mwIndex mxCalcSingleSubscript(const mxArray* a, mwSize nsubs, const mwIndex* subs) {
    int position = 0, stride = 1;
    for (int k = 0; k < nsubs && k < 4; ++k) {
        position += subs[k] * stride;
        stride *= a->dims[k];
    }
    return position;
}

// ---- data ----------------------------------------------------------------------------------------

double* mxGetPr(const mxArray* a) { return a->addr(); }
double* mxGetPi(const mxArray* a) { return a->addi(); }
void* mxGetData(const mxArray* a) { return a->pr; }
void* mxGetImagData(const mxArray* a) { return a->pi; }
double* mxGetDoubles(const mxArray* a) { return mxGetPr(a); }

double mxGetScalar(const mxArray* a) {
    if (isempty(*a) || a->nnz < 1) return 0.0;
    if (a->flags.sparse && a->index[0] != 0) return 0.0;
    switch (a->flags.type) {
    case ak_double: return *a->addr();
    case ak_uchar: return *static_cast<const unsigned char*>(a->pr);
    default: return 0.0;
    }
}

double mxGetR(const mxArray* a, int row, int col) { return a->r(row, col); }
void mxSetR(mxArray* a, int row, int col, double value) { a->r(row, col) = value; }
double mxGetI(const mxArray* a, int row, int col) { return a->i(row, col); }
void mxSetI(mxArray* a, int row, int col, double value) { a->i(row, col) = value; }

mwIndex* mxGetIr(const mxArray* a) {
    if (!a || !a->flags.sparse) return nullptr;
    int* ir = getIr(*a);
    ak_mex::track_block(ir);
    ak_mex::note_columns(a, ir, nullptr);
    return ir;
}

mwIndex* mxGetJc(const mxArray* a) {
    if (!a || !a->flags.sparse) return nullptr;
    int* jc = getJc(*a);
    ak_mex::track_block(jc);
    ak_mex::note_columns(a, nullptr, jc);
    return jc;
}

int mxGetString(const mxArray* a, char* buffer, mwSize size) {
    Mstr(*a, buffer, size);
    return 0;
}

char* mxArrayToString(const mxArray* a) {
    const int n = a->nnz > 0 ? a->nnz : 0;
    char* text = static_cast<char*>(mxMalloc(static_cast<size_t>(n) + 1));
    if (text) Mstr(*a, text, n + 1);
    return text;
}

const char* mxGetName(const mxArray* a) { return a->name; }

// A matrix does not own its name: the texts given are kept for the life of the process.
void mxSetName(mxArray* a, const char* name) {
    static std::unordered_set<std::string> names;
    a->name = name ? names.insert(name).first->c_str() : nullptr;
}

// ---- class and predicates ------------------------------------------------------------------------

mxClassID mxGetClassID(const mxArray* a) {
    switch (a->flags.type) {
    case ak_no_type: a->warn_uninit(); return mxUNKNOWN_CLASS;
    case ak_double: return a->flags.sparse ? mxSPARSE_CLASS : mxDOUBLE_CLASS;
    case ak_uchar: return mxUINT8_CLASS;
    case ak_mm:
        if (!a->fields) return mxCELL_CLASS;
        return a->classid ? mxOBJECT_CLASS : mxSTRUCT_CLASS;
    }
    return mxUNKNOWN_CLASS;
}

const char* mxGetClassName(const mxArray* a) { return class_name_of(*a); }
int mxIsClass(const mxArray* a, const char* name) { return istrue(isa(*a, TM(name))); }
int mxIsComplex(const mxArray* a) { return a->pi != nullptr; }
int mxIsSparse(const mxArray* a) { return mxIsSparse(*a); }
int mxIsFull(const mxArray* a) { return !a->flags.sparse; }
int mxIsChar(const mxArray* a) { return a->flags.str != 0; }
int mxIsDouble(const mxArray* a) { return mxIsDouble(*a); }
int mxIsUint8(const mxArray* a) { return mxIsUint8(*a); }
int mxIsEmpty(const mxArray* a) { return isempty(*a); }
int mxIsCell(const mxArray* a) { return iscell(*a); }
int mxIsStruct(const mxArray* a) { return isstruct(*a); }
int mxIsLogical(const mxArray* a) { return a->flags.logical != 0; }
int mxIsNumeric(const mxArray* a) { return isnumeric(*a); }
int mxIsFinite(double value) { return std::isfinite(value); }
int mxIsInf(double value) { return std::isinf(value); }
int mxIsNaN(double value) { return std::isnan(value); }
void mxSetLogical(mxArray* a) { a->setlogical(1); }
void mxSetString(mxArray* a) { a->setstr(1); }
double mxGetEps(void) { return *eps.addr(); }
double mxGetInf(void) { return *Inf.addr(); }
double mxGetNaN(void) { return *NaN.addr(); }

// ---- cells ---------------------------------------------------------------------------------------

mxArray* mxGetCell(const mxArray* a, mwIndex k) {
    if (!a || a->flags.type != ak_mm || k < 0 || k >= a->nnz) return nullptr;
    return elements(*a) + k;
}

// An assignment a{k+1} = value: the array grows to hold it.
void mxSetCell(mxArray* a, mwIndex k, mxArray* value) {
    a->br(Mm(k + 1.0)) = value ? *value : Mm(0, 0, 0, 0, 0, ak_double);
}

// ---- structures ----------------------------------------------------------------------------------

int mxGetNumberOfFields(const mxArray* a) { return a->nfields; }

const char* mxGetFieldNameByNumber(const mxArray* a, int f) {
    if (f < 0 || f >= a->nfields) return nullptr;
    return a->getfield(f);
}

int mxGetFieldNumber(const mxArray* a, const char* name) { return a->findfield(name, 0); }

mxArray* mxGetFieldByNumber(const mxArray* a, mwIndex k, int f) {
    if (!a || !a->fields || k < 0 || k >= a->nnz || f < 0 || f >= a->nfields) return nullptr;
    const Mm& element = elements(*a)[k];
    if (element.flags.type != ak_mm || f >= element.nnz) return nullptr;
    return elements(element) + f;
}

mxArray* mxGetField(const mxArray* a, mwIndex k, const char* name) {
    return a && a->fields ? mxGetFieldByNumber(a, k, a->findfield(name, 0)) : nullptr;
}

// Into the slot when element k holds field f; else as the assignment a(k+1).name = value, which
// grows the array.
void mxSetFieldByNumber(mxArray* a, mwIndex k, int f, mxArray* value) {
    const Mm v = value ? *value : Mm(0, 0, 0, 0, 0, ak_double);
    if (mxGetFieldByNumber(a, k, f)) {
        unshare(*a);
        Mm& element = elements(*a)[k];
        unshare(element);
        elements(element)[f] = v;
        return;
    }
    const char* name = a->getfield(f);
    if (name) (*a)(k + 1.0).member(name) = v;
}

void mxSetField(mxArray* a, mwIndex k, const char* name, mxArray* value) {
    const int f = a->findfield(name, 0);
    if (f >= 0) {
        mxSetFieldByNumber(a, k, f, value);
        return;
    }
    (*a)(k + 1.0).member(name) = value ? *value : Mm(0, 0, 0, 0, 0, ak_double);
}
