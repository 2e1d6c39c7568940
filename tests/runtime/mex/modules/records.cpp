// [s, c] = records(x, y): s is a 1x2 structure with fields "name" and "values", c a 1x3 cell,
// or 1x5 with y at its end. Written
// in C++ with mwSize sizes.
#include "mex.h"

void mexFunction(int nlhs, mxArray* plhs[], int nrhs, const mxArray* prhs[]) {
    const char* names[] = {"name", "values"};
    const mwSize dims[2] = {1, 2};
    mxArray* s = mxCreateStructArray(2, dims, 2, names);
    mxSetField(s, 0, "name", mxCreateString("first"));
    mxSetField(s, 1, "name", mxCreateString("second"));
    mxSetFieldByNumber(s, 0, mxGetFieldNumber(s, "values"), nrhs > 0 ? mxDuplicateArray(prhs[0]) : mxCreateDoubleScalar(0));
    mxArray* v = mxCreateDoubleMatrix(1, 3, mxREAL);
    double* p = mxGetDoubles(v);
    for (mwIndex k = 0; k < 3; ++k) p[k] = static_cast<double>(k + 1);
    mxSetFieldByNumber(s, 1, 1, v);
    plhs[0] = s;
    if (nlhs < 2) return;
    mxArray* c = mxCreateCellMatrix(1, 3);
    mxSetCell(c, 0, mxCreateString("text"));
    mxSetCell(c, 1, mxCreateDoubleScalar(7));
    mxSetCell(c, 2, mxCreateNumericMatrix(1, 2, mxUINT8_CLASS, mxREAL));
    // Growing past the end: element 5 of a 1x3 cell makes it 1x5.
    if (nrhs > 1) mxSetCell(c, 4, mxDuplicateArray(prhs[1]));
    plhs[1] = c;
}
