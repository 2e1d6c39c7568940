// A figure written to a PNG file: a figure, an axes, a sine curve with markers, a dashed cosine,
// a title, axis labels and a legend, made with the engine's objects and set.
//
// M source (figure.m):
//
//   x = 0:0.25:2*pi;
//   f = figure(1); ax = axes;
//   l1 = line(x, sin(x)); l2 = line(x, cos(x));
//   set(l1, 'Color', 'b', 'Marker', 'o');
//   set(l2, 'Color', 'r', 'LineStyle', '--', 'LineWidth', 2);
//   title('sin and cos'); xlabel('x'); ylabel('y'); legend('sin', 'cos'); grid on
//   saveas(f, 'figure_demo.png');
#include <cmath>
#include <unistd.h>

#include "arklib.h"

int main() {
    initM();
    int n = 26;
    Mm x(0, 0, 0, 1, n, ak_double), s(0, 0, 0, 1, n, ak_double), c(0, 0, 0, 1, n, ak_double);
    for (int k = 0; k < n; ++k) {
        x.addr()[k] = 0.25 * k;
        s.addr()[k] = std::sin(0.25 * k);
        c.addr()[k] = std::cos(0.25 * k);
    }
    Mm f = ak_new_object("Figure", Mm(1.0));
    Mm ax = ak_new_object("Axes", f);
    Mm l1 = ak_new_object("line", ax), l2 = ak_new_object("line", ax);
    set(l1, Mm((CL("XData"), x, "YData", s, "Color", "b", "Marker", "o")));
    set(l2, Mm((CL("XData"), x, "YData", c, "Color", "r", "LineStyle", "--", "LineWidth", 2.0)));
    set(get(ax, "Title"), "String", TM("sin and cos"));
    set(get(ax, "XLabel"), "String", TM("x"));
    set(get(ax, "YLabel"), "String", TM("y"));
    set(ax, Mm((CL("XGrid"), "on", "YGrid", "on", "LegendString", "sin|cos")));
    saveas(f, TM("figure_demo.png"));
    char dir[1024];
    ak_printf("figure written to %s/figure_demo.png\n", getcwd(dir, sizeof dir) ? dir : ".");
    exitM();
    return 0;
}
