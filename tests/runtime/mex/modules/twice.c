/* y = twice(x): 2*x for a real or complex double matrix. Written with int sizes. */
#include "mex.h"

void mexFunction(int nlhs, mxArray* plhs[], int nrhs, const mxArray* prhs[]) {
    int m, n, k, count;
    double *xr, *xi, *yr, *yi;
    (void)nlhs;
    if (nrhs != 1) mexErrMsgTxt("twice: one input expected");
    if (!mxIsDouble(prhs[0]) || mxIsSparse(prhs[0])) mexErrMsgTxt("twice: a full double matrix expected");
    m = mxGetM(prhs[0]);
    n = mxGetN(prhs[0]);
    plhs[0] = mxCreateDoubleMatrix(m, n, mxIsComplex(prhs[0]) ? mxCOMPLEX : mxREAL);
    xr = mxGetPr(prhs[0]);
    xi = mxGetPi(prhs[0]);
    yr = mxGetPr(plhs[0]);
    yi = mxGetPi(plhs[0]);
    count = m * n;
    for (k = 0; k < count; ++k) {
        yr[k] = 2 * xr[k];
        if (xi) yi[k] = 2 * xi[k];
    }
}
