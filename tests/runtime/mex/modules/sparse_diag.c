/* s = sparse_diag(v): the sparse square matrix with v on its diagonal, leaving out the zeros of v,
 * written through the compressed-column lists. */
#include "mex.h"

void mexFunction(int nlhs, mxArray* plhs[], int nrhs, const mxArray* prhs[]) {
    mwSize n, k, count = 0;
    mwIndex *ir, *jc;
    double *v, *pr;
    (void)nlhs;
    if (nrhs != 1) mexErrMsgTxt("sparse_diag: one input expected");
    n = (mwSize)mxGetNumberOfElements(prhs[0]);
    v = mxGetPr(prhs[0]);
    plhs[0] = mxCreateSparse(n, n, n, mxREAL);
    ir = mxGetIr(plhs[0]);
    jc = mxGetJc(plhs[0]);
    pr = mxGetPr(plhs[0]);
    for (k = 0; k < n; ++k) {
        jc[k] = count;
        if (v[k] == 0) continue;
        ir[count] = k;
        pr[count++] = v[k];
    }
    jc[n] = count;
}
