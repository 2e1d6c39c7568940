// Picking points with the mouse: ginput, and gtext and getpts on top of it.
#include "arklib/builtins.h"
#include "arklib/figures.h"
#include "arklib/list.h"
#include "arklib/plots.h"
#include "graphics/graphics_internal.h"

using namespace ak_internal;

namespace {

// Reads the axes' current point and appends x, y and the button code.
void append_point(double axes, double button, Mm& x, Mm& y, Mm& b) {
    Mm point = get(Mm(axes), "CurrentPoint");
    double px = point.size() > 0 ? point.addr()[0] : 0.0;
    double py = point.size() > 1 ? point.addr()[point.rows() > 1 ? point.rows() : 1] : 0.0;
    x = vertcat(x, Mm(px));
    y = vertcat(y, Mm(py));
    b = vertcat(b, Mm(button));
}

// Collects up to n points (no limit for n < 0) into x, y and button.
void pick(int n, Mm& x, Mm& y, Mm& button) {
    Mm empty(0, 0, 0, 0, 0, ak_double);
    x = empty;
    y = empty;
    button = empty;
    double axes = number_of(gca());
    set(Mm(axes), "Pointer", TM("cross"));
    if (current_figure() > 0) set(gcf(), "ControlBar", TM("off"));
    shg();
    for (int k = 0; n < 0 || k < n; ++k) {
        int press = static_cast<int>(waitforbuttonpress().r());
        if (press < 0) return;  // no more input: the pointer is left as it is
        if (press == 0) {
            Mm o = gco();
            if (o.size() > 0 && handle_at(o, 0) == axes) append_point(axes, 1, x, y, button);
        } else {
            Mm c = get(gcf(), "CurrentCharacter");
            double code = c.size() > 0 ? c.addr()[0] : 0;
            if (code == 13) break;
            append_point(axes, code, x, y, button);
        }
    }
    set(Mm(axes), "Pointer", TM("arrow"));
}

int count_of(const Mm& n) { return n.size() > 0 ? static_cast<int>(handle_at(n, 0)) : -1; }

}  // namespace

Mm ginput(const Mm& n, i_o_t, Mm& x, Mm& y, Mm& button) {
    pick(count_of(n), x, y, button);
    return x;
}

Mm ginput(const Mm& n, i_o_t, Mm& x, Mm& y) {
    Mm button;
    return ginput(n, i_o, x, y, button);
}

Mm ginput(const Mm& n) {
    Mm x, y, button;
    pick(count_of(n), x, y, button);
    return horzcat(x, y);
}

Mm ginput() { return ginput(Mm(0, 0, 0, 0, 0, ak_double)); }
Mm ginput(i_o_t, Mm& x, Mm& y) { return ginput(Mm(0, 0, 0, 0, 0, ak_double), i_o, x, y); }
Mm ginput(i_o_t, Mm& x, Mm& y, Mm& button) { return ginput(Mm(0, 0, 0, 0, 0, ak_double), i_o, x, y, button); }

Mm gtext(const Mm& s) {
    Mm x, y;
    ginput(Mm(1.0), i_o, x, y);
    if (x.size() < 1) return x_M;
    return text(list_of({Mm(x.addr()[0]), Mm(y.addr()[0]), s}));
}

Mm getpts(const Mm& fig, i_o_t, Mm& x, Mm& y) {
    figure(list_of({fig}));
    set(gcf(), "CurrentAxes", gca());
    return ginput(i_o, x, y);
}

Mm getpts(i_o_t, Mm& x, Mm& y) { return getpts(gcf(), i_o, x, y); }

AK_BUILTIN("ginput", AK_FN(ginput), AK_FN(ginput, const Mm&), AK_FN(ginput, i_o_t, Mm&, Mm&),
           AK_FN(ginput, const Mm&, i_o_t, Mm&, Mm&), AK_FN(ginput, i_o_t, Mm&, Mm&, Mm&),
           AK_FN(ginput, const Mm&, i_o_t, Mm&, Mm&, Mm&));
AK_BUILTIN("gtext", gtext);
AK_BUILTIN("getpts", AK_FN(getpts, i_o_t, Mm&, Mm&), AK_FN(getpts, const Mm&, i_o_t, Mm&, Mm&));
