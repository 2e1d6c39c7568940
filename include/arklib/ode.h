// Initial-value problems: ode23, ode45, ode78, ode15s, and the option vector
// read and written by odeset and odeget.
//
// The derivative is a function given by name, called as f(t, y, p1, p2, ...) with y a column; the
// extra parameters come from a cell list (or one non-cell value). [t, y] = ode45(f, tspan, y0)
// gives one row of y for each recorded point.
#pragma once
#include "arklib/matrix.h"

// ---- option vector: RelTol, AbsTol, Refine, InitialStep; 0 means "not set" ------------------------
Mm odeset();
Mm odeset(const Mm& o);
Mm odeset(const Mm& o, const Mm& n1);
Mm odeset(const Mm& o, const Mm& n1, const Mm& v1);
Mm odeset(const Mm& o, const Mm& n1, const Mm& v1, const Mm& n2);
Mm odeset(const Mm& o, const Mm& n1, const Mm& v1, const Mm& n2, const Mm& v2);
Mm odeset(const Mm& o, const Mm& n1, const Mm& v1, const Mm& n2, const Mm& v2, const Mm& n3);
Mm odeset(const Mm& o, const Mm& n1, const Mm& v1, const Mm& n2, const Mm& v2, const Mm& n3, const Mm& v3);
Mm odeset(const Mm& o, const Mm& n1, const Mm& v1, const Mm& n2, const Mm& v2, const Mm& n3, const Mm& v3,
          const Mm& n4);
Mm odeset(const Mm& o, const Mm& n1, const Mm& v1, const Mm& n2, const Mm& v2, const Mm& n3, const Mm& v3,
          const Mm& n4, const Mm& v4);
Mm odeset(const Mm& o, const Mm& n1, const Mm& v1, const Mm& n2, const Mm& v2, const Mm& n3, const Mm& v3,
          const Mm& n4, const Mm& v4, const Mm& n5);
Mm odeset(const Mm& o, const Mm& n1, const Mm& v1, const Mm& n2, const Mm& v2, const Mm& n3, const Mm& v3,
          const Mm& n4, const Mm& v4, const Mm& n5, const Mm& v5);
Mm odeget(const Mm& o);
Mm odeget(const Mm& o, const Mm& name);
Mm odeget(const Mm& o, const Mm& name, const Mm& dflt);

// ---- solvers --------------------------------------------------------------------------------------
// Each has the forms (f), (f, tspan), (f, tspan, y0), (f, tspan, y0, options),
// (f, tspan, y0, options, params), each also with i_o and the outputs t and y; the value returned is t.
#define AK_ODE_FORMS(name)                                                                              \
    Mm name(const Mm& f);                                                                              \
    Mm name(const Mm& f, const Mm& tspan);                                                             \
    Mm name(const Mm& f, const Mm& tspan, const Mm& y0);                                               \
    Mm name(const Mm& f, const Mm& tspan, const Mm& y0, const Mm& options);                            \
    Mm name(const Mm& f, const Mm& tspan, const Mm& y0, const Mm& options, const Mm& params);           \
    Mm name(const Mm& f, i_o_t, Mm& t, Mm& y);                                                         \
    Mm name(const Mm& f, const Mm& tspan, i_o_t, Mm& t, Mm& y);                                        \
    Mm name(const Mm& f, const Mm& tspan, const Mm& y0, i_o_t, Mm& t, Mm& y);                          \
    Mm name(const Mm& f, const Mm& tspan, const Mm& y0, const Mm& options, i_o_t, Mm& t, Mm& y);       \
    Mm name(const Mm& f, const Mm& tspan, const Mm& y0, const Mm& options, const Mm& params, i_o_t, Mm& t, \
            Mm& y);
AK_ODE_FORMS(ode23)
AK_ODE_FORMS(ode45)
AK_ODE_FORMS(ode78)
AK_ODE_FORMS(ode15s)
#undef AK_ODE_FORMS

// Derivative calls made by the solvers since the library loaded.
extern long ak_ode_calls;
