/* y = callback(name, x, ...): calls the function named by the first input with the others, and
 * returns its first result. With name "version" it takes no input. */
#include "mex.h"

void mexFunction(int nlhs, mxArray* plhs[], int nrhs, const mxArray* prhs[]) {
    char name[64];
    mxArray* out[2];
    (void)nlhs;
    if (nrhs < 1 || !mxIsChar(prhs[0])) mexErrMsgTxt("callback: a function name expected");
    mxGetString(prhs[0], name, sizeof name);
    mexCallMATLAB(1, out, nrhs - 1, (mxArray**)(prhs + 1), name);
    plhs[0] = out[0];
}
