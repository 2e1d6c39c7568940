/* failing(x): takes arrays and memory, shares x in a cell, then raises an error. Nothing of it may
 * outlive the call. */
#include "mex.h"

void mexFunction(int nlhs, mxArray* plhs[], int nrhs, const mxArray* prhs[]) {
    mxArray* c = mxCreateCellMatrix(1, 2);
    mxArray* d = mxCreateDoubleMatrix(100, 100, mxREAL);
    char* text = (char*)mxMalloc(1000);
    (void)nlhs;
    (void)text;
    if (nrhs > 0) mxSetCell(c, 0, (mxArray*)prhs[0]);
    mxSetCell(c, 1, d);
    plhs[0] = mxDuplicateArray(c);
    mexErrMsgIdAndTxt("failing:always", "failing: gave up after %d arrays", 3);
    mexPrintf("not reached\n");
}
