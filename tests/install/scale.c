/* y = scale(x, k): k*x, built by the installed arkmex against the installed headers. */
#include "mex.h"

void mexFunction(int nlhs, mxArray* plhs[], int nrhs, const mxArray* prhs[]) {
    mwSize k, n;
    double factor;
    (void)nlhs;
    if (nrhs != 2) mexErrMsgTxt("scale: two inputs expected");
    n = (mwSize)mxGetNumberOfElements(prhs[0]);
    factor = mxGetScalar(prhs[1]);
    plhs[0] = mxCreateDoubleMatrix(mxGetM(prhs[0]), mxGetN(prhs[0]), mxREAL);
    for (k = 0; k < n; ++k) mxGetPr(plhs[0])[k] = factor * mxGetPr(prhs[0])[k];
}
