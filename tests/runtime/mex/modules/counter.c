/* n = counter(): how many times it has been called since it was loaded. Says goodbye when it is
 * cleared. */
#include "mex.h"

static int calls = 0;

static void goodbye(void) { mexPrintf("counter unloaded after %d calls\n", calls); }

void mexFunction(int nlhs, mxArray* plhs[], int nrhs, const mxArray* prhs[]) {
    (void)nlhs;
    (void)nrhs;
    (void)prhs;
    if (calls++ == 0) mexAtExit(goodbye);
    plhs[0] = mxCreateDoubleScalar(calls);
}
