/* [kind, data] = what_module_sees(x): what the module sees of x. kind is the class number; data is
 *   sparse:  [ir; pr] as a 2 x nnz matrix, then jc appended as a row of a second cell element
 *   string:  the text read with mxArrayToString, made again with mxCreateString
 *   complex: [real; imaginary] as a 2 x n matrix
 *   else:    the class name as a string */
#include <string.h>

#include "mex.h"

void mexFunction(int nlhs, mxArray* plhs[], int nrhs, const mxArray* prhs[]) {
    const mxArray* x;
    (void)nlhs;
    if (nrhs != 1) mexErrMsgTxt("what_module_sees: one input expected");
    x = prhs[0];
    plhs[0] = mxCreateDoubleScalar(mxGetClassID(x));
    if (mxIsSparse(x)) {
        int* ir = mxGetIr(x);
        int* jc = mxGetJc(x);
        int nnz = jc[mxGetN(x)], k;
        mxArray* entries = mxCreateDoubleMatrix(2, nnz, mxREAL);
        mxArray* starts = mxCreateDoubleMatrix(1, mxGetN(x) + 1, mxREAL);
        double* e = mxGetPr(entries);
        for (k = 0; k < nnz; ++k) {
            e[2 * k] = ir[k];
            e[2 * k + 1] = mxGetPr(x)[k];
        }
        for (k = 0; k <= (int)mxGetN(x); ++k) mxGetPr(starts)[k] = jc[k];
        plhs[1] = mxCreateCellMatrix(1, 2);
        mxSetCell(plhs[1], 0, entries);
        mxSetCell(plhs[1], 1, starts);
    } else if (mxIsChar(x)) {
        char* text = mxArrayToString(x);
        plhs[1] = mxCreateString(text);
        mxFree(text);
    } else if (mxIsComplex(x)) {
        size_t n = mxGetNumberOfElements(x), k;
        mxArray* parts = mxCreateDoubleMatrix(2, n, mxREAL);
        for (k = 0; k < n; ++k) {
            mxGetPr(parts)[2 * k] = mxGetPr(x)[k];
            mxGetPr(parts)[2 * k + 1] = mxGetPi(x)[k];
        }
        plhs[1] = parts;
    } else {
        plhs[1] = mxCreateString(mxGetClassName(x));
    }
}
