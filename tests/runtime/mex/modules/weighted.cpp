// y = weighted(x): the sum of x(k) * k, with the weights from a C source of the same module.
#include "mex.h"

extern "C" double weight_of(int k);

void mexFunction(int, mxArray* plhs[], int nrhs, const mxArray* prhs[]) {
    if (nrhs != 1) mexErrMsgTxt("weighted: one input expected");
    const double* x = mxGetPr(prhs[0]);
    double total = 0;
    for (size_t k = 0; k < mxGetNumberOfElements(prhs[0]); ++k) total += x[k] * weight_of(static_cast<int>(k));
    plhs[0] = mxCreateDoubleScalar(total);
}
