// The plot family: lines and charts through plot_engine, grids through surface_engine, and line,
// patch and text objects.
//
// Each function takes its arguments as a list (a cell; a value that is not a cell is a list of
// one), as a translated program passes them:
//     plot((CL(x), y, "r--", x, z));  surf((CL(xx), yy, zz));  legend((CL("a"), "b"));
// and returns the handles it made, one per row.
#pragma once
#include "arklib/matrix.h"

// ---- the two engines ------------------------------------------------------------------------------
// Lines of the chart `name` from the data sets of list (dm = 2: x, y; dm = 3: x, y, z), each set
// optionally followed by a line style such as "r--o", then name/value properties.
Mm plot_engine(const char* name, int dm, const Mm& list);
// One surface of the chart `name` from list (z; z, c; x, y, z; x, y, z, c; then properties),
// shown in the view `view_value` (2 plane, 3 rotated).
Mm surface_engine(const char* name, const Mm& list, double view_value);

// ---- lines and charts -------------------------------------------------------------------------------
Mm plot(const Mm& list);
Mm plot3(const Mm& list);
Mm stem(const Mm& list);
Mm stairs(const Mm& list);
Mm area(const Mm& list);
Mm pie(const Mm& list);
Mm pie3(const Mm& list);
Mm polar(const Mm& list);
Mm semilogx(const Mm& list);
Mm semilogy(const Mm& list);
Mm loglog(const Mm& list);
Mm bar(const Mm& list);
Mm barh(const Mm& list);
Mm bar3(const Mm& list);
Mm bar3h(const Mm& list);
Mm errorbar(const Mm& list);  // (y, e), (x, y, e), (x, y, l, u), then a line style
Mm plotyy(const Mm& x1, const Mm& y1, const Mm& x2, const Mm& y2);
Mm plotyy(const Mm& x1, const Mm& y1, const Mm& x2, const Mm& y2, i_o_t, Mm& ax, Mm& h1, Mm& h2);
Mm scatter(const Mm& list);   // x, y, size, colour, "filled"
Mm scatter3(const Mm& list);
Mm patch(const Mm& list);
Mm fill(const Mm& list);
Mm rectangle(const Mm& list);
Mm line(const Mm& list);
// Text objects: (x, y, "text"), (x, y, z, "text"), or ("prop", value, ...). The language's text
// is a template over text_object only so that a program's own function text(const Mm&) (a
// common name for a helper) is preferred to it rather than clashing with it.
Mm text_object(const Mm& list);
template <class = void>
inline Mm text(const Mm& list) {
    return text_object(list);
}

// ---- grids -----------------------------------------------------------------------------------------------
Mm mesh(const Mm& list);
Mm meshc(const Mm& list);
Mm surf(const Mm& list);
Mm surfc(const Mm& list);
Mm surfl(const Mm& list);
Mm surface(const Mm& list);
Mm pcolor(const Mm& list);
Mm contour(const Mm& list);   // z; z, n; x, y, z; x, y, z, n (n a count or a vector of levels)
Mm contourf(const Mm& list);
Mm contour3(const Mm& list);
// The same, also giving the contour matrix: for each piece of each level a column [level; count]
// followed by count columns [x; y].
Mm contour(const Mm& list, i_o_t, Mm& c, Mm& h);
Mm contourf(const Mm& list, i_o_t, Mm& c, Mm& h);
Mm contour3(const Mm& list, i_o_t, Mm& c, Mm& h);
Mm contourc(const Mm& list);  // the contour matrix alone, no drawing

// ---- histograms, arrows, images, colour bar ---------------------------------------------------------------
Mm hist(const Mm& y);                       // 10 bins, drawn as bars
Mm hist(const Mm& y, const Mm& x);          // x: a count of bins or their centres
Mm hist(const Mm& y, i_o_t, Mm& n, Mm& centres);            // counts and centres, not drawn
Mm hist(const Mm& y, const Mm& x, i_o_t, Mm& n, Mm& centres);
Mm quiver(const Mm& list);                  // (u, v), (x, y, u, v), then a scale and a line style
Mm image(const Mm& list);                   // (c), (x, y, c), then properties
Mm imagesc(const Mm& list);                 // as image, colours scaled to the data's range
Mm colorbar();
Mm colorbar(const Mm& where);               // "vert" (right of the axes) or "horiz" (below)
