// Built against an installed copy of the library: proves the headers, the library and the
// package files are complete.
#include <cstdio>

#include "arklib.h"

int main() {
    Mm a(0, 0, 0, 2, 2, ak_double);
    for (int k = 1; k <= 4; ++k) a.r(k) = k;
    Mm b = a;
    if (b.dirty() != 1 || b.r(2, 2) != 4.0 || pi.r() <= 3.14) return 1;
    std::printf("installed arklib works\n");
    return 0;
}
