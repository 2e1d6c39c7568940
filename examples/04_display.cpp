// A translated program that shows values on the console: matrices, complex numbers, cells,
// structures and sparse matrices with display, and text made by sprintf, num2str and mat2str.
//
// M source (show.m):
//
//   a = [1 2.5; NaN -4]                  % no semicolon: the value is displayed
//   z = [1+2i 3]
//   c = {1, 'text'; [1 2 3], {}}
//   s = struct('name', 'arklib', 'version', 4.51)
//   e = sparse(2, 2)
//   t = sprintf('%d apples and %s\n', 3, 'pears');
//   disp(t)
//   disp(sprintf('%5.2f|', [pi exp(1)]))
//   v = sscanf('10 20 30', '%d')
//   m = mat2str([1 2; 3 4])
//   format long
//   p = pi
//   format short
//   p = pi
//   disp(['num2str(pi, 8) = ' num2str(pi, 8)])
#include <cmath>

#include "arklib.h"

namespace {

// A matrix from values given row by row.
Mm matrix(int rows, int cols, std::initializer_list<double> values) {
    Mm m(0, 0, 0, rows, cols, ak_double);
    int k = 0;
    for (double v : values) {
        m.addr()[(k % cols) * rows + k / cols] = v;
        ++k;
    }
    return m;
}

}  // namespace

int main() {
    initM();
    Mm a("a", 0, 0), z("z", 0, 0), c("c", 0, 0), s("s", 0, 0), e("e", 0, 0), t("t", 0, 0);
    Mm v("v", 0, 0), m("m", 0, 0), p("p", 0, 0);

    a = matrix(2, 2, {1, 2.5, NAN, -4});
    display(a);

    z = Mm(1, 0, 0, 1, 2, ak_double);
    z.addr()[0] = 1;
    z.addi()[0] = 2;
    z.addr()[1] = 3;
    z.addi()[1] = 0;
    display(z);

    c = (CL(1.0), "text", semi, matrix(1, 3, {1, 2, 3}), Mm(0, 0, 0, 0, 0, ak_mm));
    display(c);

    s = mstruct(Mm((CL("name"), "arklib", "version", 4.51)));
    display(s);

    e = sparse(Mm(2.0), Mm(2.0));
    display(e);

    t = sprintf(TM("%d apples and %s\\n"), Mm((CL(3.0), "pears")));
    disp(t);
    disp(sprintf(TM("%5.2f|"), Mm(CL(matrix(1, 2, {3.14159265358979, 2.71828182845905})))));

    v = sscanf(TM("10 20 30"), TM("%d"));
    display(v);

    m = mat2str(matrix(2, 2, {1, 2, 3, 4}));
    display(m);

    format(TM("long"));
    p = pi;
    display(p);
    format(TM("short"));
    display(p);

    disp(horzcat(TM("num2str(pi, 8) = "), num2str(pi, Mm(8.0))));
    exitM();
    return 0;
}
