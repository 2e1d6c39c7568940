// A translated program: values, sharing, copies and the message channel.
//
// M source:
//   a = zeros(2, 3);          % storage for six doubles
//   a(2, 3) = 7;
//   b = a;                    % shares a's storage
//   b(1, 1) = -1;             % b gets its own copy first
//   s = 'text';
//   c = {a, s};
//   disp(a(2, 3) + b(1, 1))
//   a(3, 1)                   % reports an index error
#include <cstdio>

#include "arklib.h"

static void show(const char* what, const Mm& m) {
    std::printf("%-28s %dx%d  shared by %d other%s\n", what, m.rows(), m.cols(), m.dirty(),
                m.dirty() == 1 ? "" : "s");
}

static void report(const char* text) { std::printf("  [error handler] %s\n", text); }

int main() {
    Mm a(i_o, "a", 0), b(i_o, "b", 0), s(i_o, "s", 0), c(i_o, "c", 0);

    a = Mm(0, 0, 0, 2, 3, ak_double);
    for (int k = 1; k <= a.size(); ++k) a.r(k) = 0.0;
    a.r(2, 3) = 7;
    show("a = zeros(2, 3)", a);

    b = a;
    show("b = a (shares storage)", b);
    if (b.dirty()) b.deepcopy(b, ak_no_type);  // copy before writing in place
    b.r(1, 1) = -1;
    show("b(1,1) = -1 (own copy)", b);
    show("a afterwards", a);

    s = TM("text");
    c = Mm(0, 0, 0, 1, 2, ak_mm);
    c.mr(1) = a;
    c.mr(2) = s;
    std::printf("c = {a, s}: a cell of %d; c{2} is a string of %d characters\n", c.size(), c.mr(2).size());
    display(c);
    display(b);
    std::printf("a(2,3) + b(1,1) = %g\n", a.r(2, 3) + b.r(1, 1));

    // A host may route errors anywhere; this one prints and lets the program go on.
    ak_text_handler_t previous = ak_set_error_handler(report);
    a.r(3, 1);
    ak_set_error_handler(previous);
    return 0;
}
