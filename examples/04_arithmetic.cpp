// A translated program doing arithmetic: scalar expansion, comparisons, reductions along a
// dimension, the position of a maximum, a matrix product, byte arithmetic and a domain rule.
//
// M source (arith.m):
//
//   a = [1 2 3; 4 5 6];
//   b = a * 2 + 1;              % scalar expansion
//   s = sum(b, 2);              % row sums
//   [m, k] = max(a(:, 2) .* [7; -1]);
//   p = a * a';                 % matrix product with the transpose
//   big = a > 2.5;              % logical result
//   u = uint8(250) + 10;        % bytes wrap modulo 256
//   r = sqrt([4 -9]);           % one negative element makes the result complex
#include "arklib.h"

namespace {

void show(const char* what, const Mm& m) {
    ak_printf("%-6s %dx%d%s%s:", what, m.rows(), m.cols(), m.pi ? " complex" : "",
              m.flags.logical ? " logical" : "");
    for (int k = 0; k < m.nnz; ++k) {
        double re = m.flags.type == ak_uchar ? static_cast<const unsigned char*>(m.pr)[k] : m.addr()[k];
        if (m.pi)
            ak_printf(" %g%+gi", re, m.addi()[k]);
        else
            ak_printf(" %g", re);
    }
    ak_printf("\n");
}

// A matrix from values given row by row.
Mm matrix(int rows, int cols, const double* values) {
    Mm m(0, 0, 0, rows, cols, ak_double);
    for (int i = 0; i < rows; ++i)
        for (int j = 0; j < cols; ++j) m.addr()[j * rows + i] = values[i * cols + j];
    return m;
}

}  // namespace

int main() {
    initM();
    Mm a("a", 0, 0), b("b", 0, 0), s("s", 0, 0), m("m", 0, 0), k("k", 0, 0), p("p", 0, 0);
    Mm big("big", 0, 0), u("u", 0, 0), r("r", 0, 0);

    const double av[] = {1, 2, 3, 4, 5, 6};
    a = matrix(2, 3, av);
    b = a * Mm(2.0) + Mm(1.0);
    s = sum(b, Mm(2.0));
    const double w[] = {7, -1};
    Mm column(0, 0, 0, 2, 1, ak_double);
    column.addr()[0] = a.r(1.0, 2.0);
    column.addr()[1] = a.r(2.0, 2.0);
    m = max(times(column, matrix(2, 1, w)), i_o, k);
    p = a * ctranspose(a);
    big = a > Mm(2.5);
    Mm byte(0, 0, 0, 1, 1, ak_uchar);
    *static_cast<unsigned char*>(byte.pr) = 250;
    u = byte + Mm(10.0);
    const double rv[] = {4, -9};
    r = sqrt(matrix(1, 2, rv));

    display(b);
    display(s);
    display(m);
    display(k);
    display(p);
    display(big);
    display(u);
    display(r);

    // A shape error goes to the error handler; this host lets the program go on with x_M.
    ak_text_handler_t previous =
        ak_set_error_handler([](const char* text) { ak_printf("[error] %s\n", text); });
    Mm bad = a + matrix(1, 2, rv);
    ak_set_error_handler(previous);
    show("bad", bad);
    exitM();
    return 0;
}
