/* [total, product, count] = stats(x, mode): as many results as asked for. With mode 1 it sets only
 * the first result, with mode 2 none at all. */
#include "mex.h"

void mexFunction(int nlhs, mxArray* plhs[], int nrhs, const mxArray* prhs[]) {
    double total = 0, product = 1, *x;
    size_t k, n;
    if (nrhs < 1) mexErrMsgTxt("stats: an input expected");
    x = mxGetPr(prhs[0]);
    n = mxGetNumberOfElements(prhs[0]);
    for (k = 0; k < n; ++k) {
        total += x[k];
        product *= x[k];
    }
    if (nrhs > 1 && mxGetScalar(prhs[1]) == 2) return;
    plhs[0] = mxCreateDoubleScalar(total);
    if (nrhs > 1 && mxGetScalar(prhs[1]) == 1) return;
    if (nlhs > 1) plhs[1] = mxCreateDoubleScalar(product);
    if (nlhs > 2) plhs[2] = mxCreateDoubleScalar((double)n);
}
