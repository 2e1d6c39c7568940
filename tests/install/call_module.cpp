// Built against an installed copy of the library: loads the module scale_matvex.so from the
// current directory and calls it.
#include <cstdio>

#include "arklib.h"

int main() {
    Mm x(0, 0, 0, 1, 3, ak_double);
    for (int k = 1; k <= 3; ++k) x.r(k) = k;
    Mm k(2.5);
    Mm* prhs[2];
    Mm* plhs[64];
    call_mex_prhs(prhs[0], x);
    call_mex_prhs(prhs[1], k);
    call_mex("scale", 1, plhs, 2, prhs);
    Mm y;
    call_mex_plhs(y, plhs[0]);
    if (y.size() != 3 || y.r(3) != 7.5) return 1;
    std::printf("installed module works\n");
    return 0;
}
