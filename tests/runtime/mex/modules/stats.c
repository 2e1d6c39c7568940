/* [total, product, count] = stats(x): as many results as asked for. With nlhs 2 or more and a
 * second input that is true, it sets only the first result. */
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
    plhs[0] = mxCreateDoubleScalar(total);
    if (nrhs > 1 && mxGetScalar(prhs[1]) != 0) return;
    if (nlhs > 1) plhs[1] = mxCreateDoubleScalar(product);
    if (nlhs > 2) plhs[2] = mxCreateDoubleScalar((double)n);
}
