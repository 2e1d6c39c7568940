// A translated program: matrix and cell literals, concatenation and a structure array.
//
// M source:
//   a = [1 2 3; 4 5 6];
//   b = [a; 7 8 9];            % vertical concatenation
//   c = [a, [10; 11]];         % horizontal
//   s = ['abc', 'de'];         % strings join into a string
//   t = [1 2; 3];              % a short row is padded with zeros
//   k = cat(3, a, a);          % pages
//   z = {a, 'text'; 42};       % a cell literal; the missing cell is empty
#include <cstdio>

#include "arklib.h"

static void show(const char* what, const Mm& m) {
    std::printf("%-22s %d x %d", what, m.rows(), m.cols());
    if (m.ndims > 2) std::printf(" x %d", m.dims[2]);
    if (m.gettype() == ak_double && !m.isstr() && m.size() <= 12) {
        std::printf("  [");
        for (int r = 1; r <= m.rows(); ++r)
            for (int c = 1; c <= m.cols(); ++c) std::printf("%s%g", (r == 1 && c == 1) ? "" : (c == 1 ? "; " : " "), m.r(r, c));
        std::printf("]");
    }
    std::printf("\n");
}

int main() {
    initM();
    Mm a(i_o, "a", 0), b(i_o, "b", 0), c(i_o, "c", 0), s(i_o, "s", 0), t(i_o, "t", 0), k(i_o, "k", 0),
        z(i_o, "z", 0);

    a = (BR(1.0), 2.0, 3.0, semi, 4.0, 5.0, 6.0);
    show("a = [1 2 3; 4 5 6]", a);
    b = (BR(a), semi, 7.0, 8.0, 9.0);
    show("b = [a; 7 8 9]", b);
    c = (BR(a), Mm((BR(10.0), semi, 11.0)));
    show("c = [a, [10; 11]]", c);
    s = (BR("abc"), "de");
    char text[16];
    std::printf("%-22s '%s' (a string: %d)\n", "s = ['abc', 'de']", Mstr(s, text, sizeof text), s.isstr());
    t = (BR(1.0), 2.0, semi, 3.0);
    show("t = [1 2; 3]", t);
    k = cat(Mm(3.0), a, a);
    show("k = cat(3, a, a)", k);
    display(k);
    z = (CL(a), "text", semi, 42.0);
    std::printf("%-22s %d x %d cell; z{2,1} = %g, z{2,2} is empty: %d\n", "z = {a, 'text'; 42}", z.rows(), z.cols(),
                z.mr(2, 1).r(), z.mr(2, 2).size() == 0);
    display(z);
    exitM();
    return 0;
}
