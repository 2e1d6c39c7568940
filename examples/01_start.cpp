// A first translated program: start-up, sharing and copying, a for loop, and the message channel.
//
// M source (start.m):
//
//   a = ones(2, 3);
//   b = a;                      % b and a share one block of storage
//   b(2, 3) = 0;                % the write gives b a block of its own first
//   for col = b                 % one column of b per iteration
//     if col
//       message('column without zeros')
//     else
//       message('column with a zero')
//     end
//   end
//   if isempty(zeros(0, 3))
//     warning('zeros(0, 3) is empty')
//   end
#include "arklib.h"

namespace {

// The host's warning handler: keeps its own prefix instead of the default "warning: " report.
void demo_warning(const char* text) { ak_printf("[demo] warning: %s\n", text); }

}  // namespace

int main() {
    initM();  // initM2(ARKLIB_VERSION, ARKLIB_MM_SIZE): version and size of Mm must match the library
    ak_set_warning_handler(demo_warning);

    Mm a("a", 0, 0), b("b", 0, 0), col("col", 0, 0);

    a = ones(2.0, 3.0);
    b = a;
    ak_printf("after b = a:       a.dirty() = %d, b.dirty() = %d (one block, two holders)\n", a.dirty(),
              b.dirty());

    // b(2, 3) = 0: an indexed write first makes the written matrix the only holder of its block.
    b(2.0, 3.0) = 0.0;
    ak_printf("after b(2, 3) = 0: a.dirty() = %d, b.dirty() = %d, a(2, 3) = %g, b(2, 3) = %g\n", a.dirty(),
              b.dirty(), a.r(2.0, 3.0), b.r(2.0, 3.0));

    for (int k = 0; k < forsize(b); ++k) {
        forelem(col, b, k);
        if (istrue(col))
            message("column without zeros");
        else
            message("column with a zero");
    }

    if (istrue(isempty(zeros(0.0, 3.0)))) warning("zeros(0, 3) is empty");

    exitM();
    return 0;
}
