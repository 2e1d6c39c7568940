// A translated scalar loop: the code that translated programs spend their time in. Every value is an
// Mm, every subscript an Mr, and the loop variable is loaded by forelem; the scalar paths of the
// operators, of x(k) and of the loop step make no call into the allocator.
//
// M source (scalar_loop.m):
//
//   n = 1000000;
//   x = zeros(1, n);
//   x(1) = 1;
//   for i = 2:n
//     x(i) = x(i-1)*0.5 + 1;      % tends to 2
//   end
//   disp(x(n))
//   small = x < 1.5;              % logical result of a comparison with a number
//   disp(sum(small))
#include <time.h>

#include "arklib.h"

namespace {

double seconds() {
    timespec t;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);  // CPU time: other work on the machine does not count
    return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

// The loop, as the translator writes the body of an M-function.
void halve_and_add(Mm& x, const Mm& n) {
    Mm i("i", 0, 0);
    Mm range = colon(Mm(2.0), n);
    for (int k = 0; k < forsize(range); ++k) {
        forelem(i, range, k);
        x(i) = x(i - 1.0) * 0.5 + 1.0;
    }
}

}  // namespace

int main() {
    initM();
    Mm n("n", 0, 0), x("x", 0, 0), small("small", 0, 0);

    n = 1000000.0;
    x = zeros(1.0, n);
    x(1.0) = 1.0;
    const double start = seconds();
    halve_and_add(x, n);
    const double elapsed = seconds() - start;
    disp(x(n));
    small = x < 1.5;
    disp(sum(small));
    ak_printf("%.0f iterations in %.1f ms of CPU time: %.1f million per second\n", scalar(n) - 1,
              1e3 * elapsed, (scalar(n) - 1) / elapsed / 1e6);

    exitM();
    return 0;
}
