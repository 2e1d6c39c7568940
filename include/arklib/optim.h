// Minimisation, root finding and constrained optimisation.
//
// Functions are given by name and called as f(x, p1, p2, ...); the extra parameters come as a cell
// list (or one non-cell value). The old forms take the options vector of 18 numbers (foptions), the
// new forms a structure (optimset), turned into that vector before the work starts.
#pragma once
#include "arklib/matrix.h"

// ---- options --------------------------------------------------------------------------------------
Mm foptions();
Mm foptions(const Mm& v);
Mm optimset();
Mm optimset(const Mm& a);
Mm optimset(const Mm& a, const Mm& b);
Mm optimset(const Mm& a, const Mm& b, const Mm& c);
Mm optimset(const Mm& a, const Mm& b, const Mm& c, const Mm& d);
Mm optimset(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e);
Mm optimset(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e, const Mm& f);
Mm optimset(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e, const Mm& f, const Mm& g);
Mm optimset(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e, const Mm& f, const Mm& g,
            const Mm& h);
Mm optimset(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e, const Mm& f, const Mm& g,
            const Mm& h, const Mm& i);
Mm optimget(const Mm& s);
Mm optimget(const Mm& s, const Mm& name);
Mm optimget(const Mm& s, const Mm& name, const Mm& dflt);

// ---- roots and minima of one variable -------------------------------------------------------------
Mm fzero(const Mm& f);
Mm fzero(const Mm& f, const Mm& x);
Mm fzero(const Mm& f, const Mm& x, const Mm& tol);
Mm fzero(const Mm& f, const Mm& x, const Mm& tol, const Mm& trace);
Mm fzero(const Mm& f, const Mm& x, const Mm& tol, const Mm& trace, const Mm& params);

Mm fmin(const Mm& f, const Mm& a, const Mm& b);
Mm fmin(const Mm& f, const Mm& a, const Mm& b, const Mm& options);
Mm fmin(const Mm& f, const Mm& a, const Mm& b, const Mm& options, const Mm& params);
Mm fmin(const Mm& f, const Mm& a, const Mm& b, i_o_t, Mm& options_out);
Mm fmin(const Mm& f, const Mm& a, const Mm& b, const Mm& options, i_o_t, Mm& options_out);
Mm fmin(const Mm& f, const Mm& a, const Mm& b, const Mm& options, const Mm& params, i_o_t, Mm& options_out);

Mm fminbnd(const Mm& f, const Mm& a, const Mm& b);
Mm fminbnd(const Mm& f, const Mm& a, const Mm& b, const Mm& options);
Mm fminbnd(const Mm& f, const Mm& a, const Mm& b, const Mm& options, const Mm& params);
Mm fminbnd(const Mm& f, const Mm& a, const Mm& b, i_o_t, Mm& fval);
Mm fminbnd(const Mm& f, const Mm& a, const Mm& b, const Mm& options, i_o_t, Mm& fval);
Mm fminbnd(const Mm& f, const Mm& a, const Mm& b, const Mm& options, const Mm& params, i_o_t, Mm& fval);
Mm fminbnd(const Mm& f, const Mm& a, const Mm& b, i_o_t, Mm& fval, Mm& exitflag);
Mm fminbnd(const Mm& f, const Mm& a, const Mm& b, const Mm& options, i_o_t, Mm& fval, Mm& exitflag);
Mm fminbnd(const Mm& f, const Mm& a, const Mm& b, const Mm& options, const Mm& params, i_o_t, Mm& fval,
           Mm& exitflag);

// ---- several variables ----------------------------------------------------------------------------
// fmins, fsolve, fminu and constr's short forms: (f, x), (f, x, options), (f, x, options, grad),
// (f, x, options, grad, params), each also with i_o and options_out.
#define AK_OPTIM_FORMS(name)                                                                            \
    Mm name(const Mm& f, const Mm& x);                                                                 \
    Mm name(const Mm& f, const Mm& x, const Mm& options);                                              \
    Mm name(const Mm& f, const Mm& x, const Mm& options, const Mm& grad);                              \
    Mm name(const Mm& f, const Mm& x, const Mm& options, const Mm& grad, const Mm& params);            \
    Mm name(const Mm& f, const Mm& x, i_o_t, Mm& options_out);                                         \
    Mm name(const Mm& f, const Mm& x, const Mm& options, i_o_t, Mm& options_out);                      \
    Mm name(const Mm& f, const Mm& x, const Mm& options, const Mm& grad, i_o_t, Mm& options_out);      \
    Mm name(const Mm& f, const Mm& x, const Mm& options, const Mm& grad, const Mm& params, i_o_t, Mm& options_out);
AK_OPTIM_FORMS(fmins)
AK_OPTIM_FORMS(fsolve)
AK_OPTIM_FORMS(fminu)
#undef AK_OPTIM_FORMS

Mm fminsearch(const Mm& f, const Mm& x);
Mm fminsearch(const Mm& f, const Mm& x, const Mm& options);
Mm fminsearch(const Mm& f, const Mm& x, const Mm& options, const Mm& params);
Mm fminsearch(const Mm& f, const Mm& x, i_o_t, Mm& fval);
Mm fminsearch(const Mm& f, const Mm& x, const Mm& options, i_o_t, Mm& fval);
Mm fminsearch(const Mm& f, const Mm& x, const Mm& options, const Mm& params, i_o_t, Mm& fval);
Mm fminsearch(const Mm& f, const Mm& x, i_o_t, Mm& fval, Mm& exitflag);
Mm fminsearch(const Mm& f, const Mm& x, const Mm& options, i_o_t, Mm& fval, Mm& exitflag);
Mm fminsearch(const Mm& f, const Mm& x, const Mm& options, const Mm& params, i_o_t, Mm& fval, Mm& exitflag);

// ---- linear and quadratic programmes ---------------------------------------------------------------
// lp(c, A, b, vlb, vub, x0, neqcstr, display): minimise c'x with A(1:neqcstr, :) x = b(1:neqcstr),
// the other rows A x <= b, and vlb <= x <= vub. display below 0 keeps the status line quiet. The
// outputs are x, the multipliers (rows of A, then the finite lower and upper bounds), and the status
// word "ok", "infeasible", "unbounded" (empty for the other ends). lp(filename) reads an MPS file.
#define M const Mm&
Mm lp(M c);
Mm lp(M c, M A);
Mm lp(M c, M A, M b);
Mm lp(M c, M A, M b, M vlb);
Mm lp(M c, M A, M b, M vlb, M vub);
Mm lp(M c, M A, M b, M vlb, M vub, M x0);
Mm lp(M c, M A, M b, M vlb, M vub, M x0, M neqcstr);
Mm lp(M c, M A, M b, M vlb, M vub, M x0, M neqcstr, M display);
Mm lp(M file, i_o_t, Mm& lambda);
Mm lp(M c, M A, M b, i_o_t, Mm& lambda);
Mm lp(M c, M A, M b, M vlb, i_o_t, Mm& lambda);
Mm lp(M c, M A, M b, M vlb, M vub, i_o_t, Mm& lambda);
Mm lp(M c, M A, M b, M vlb, M vub, M x0, i_o_t, Mm& lambda);
Mm lp(M c, M A, M b, M vlb, M vub, M x0, M neqcstr, i_o_t, Mm& lambda);
Mm lp(M c, M A, M b, M vlb, M vub, M x0, M neqcstr, M display, i_o_t, Mm& lambda);
Mm lp(M file, i_o_t, Mm& lambda, Mm& how);
Mm lp(M c, M A, M b, i_o_t, Mm& lambda, Mm& how);
Mm lp(M c, M A, M b, M vlb, i_o_t, Mm& lambda, Mm& how);
Mm lp(M c, M A, M b, M vlb, M vub, i_o_t, Mm& lambda, Mm& how);
Mm lp(M c, M A, M b, M vlb, M vub, M x0, i_o_t, Mm& lambda, Mm& how);
Mm lp(M c, M A, M b, M vlb, M vub, M x0, M neqcstr, i_o_t, Mm& lambda, Mm& how);
Mm lp(M c, M A, M b, M vlb, M vub, M x0, M neqcstr, M display, i_o_t, Mm& lambda, Mm& how);

// qp(H, c, A, b, ...): minimise x'Hx / 2 + c'x under the same constraints; H must be symmetric.
Mm qp(M H);
Mm qp(M H, M c);
Mm qp(M H, M c, M A);
Mm qp(M H, M c, M A, M b);
Mm qp(M H, M c, M A, M b, M vlb);
Mm qp(M H, M c, M A, M b, M vlb, M vub);
Mm qp(M H, M c, M A, M b, M vlb, M vub, M x0);
Mm qp(M H, M c, M A, M b, M vlb, M vub, M x0, M neqcstr);
Mm qp(M H, M c, M A, M b, M vlb, M vub, M x0, M neqcstr, M display);
Mm qp(M H, M c, M A, M b, i_o_t, Mm& lambda);
Mm qp(M H, M c, M A, M b, M vlb, i_o_t, Mm& lambda);
Mm qp(M H, M c, M A, M b, M vlb, M vub, i_o_t, Mm& lambda);
Mm qp(M H, M c, M A, M b, M vlb, M vub, M x0, i_o_t, Mm& lambda);
Mm qp(M H, M c, M A, M b, M vlb, M vub, M x0, M neqcstr, i_o_t, Mm& lambda);
Mm qp(M H, M c, M A, M b, M vlb, M vub, M x0, M neqcstr, M display, i_o_t, Mm& lambda);
Mm qp(M H, M c, M A, M b, i_o_t, Mm& lambda, Mm& how);
Mm qp(M H, M c, M A, M b, M vlb, i_o_t, Mm& lambda, Mm& how);
Mm qp(M H, M c, M A, M b, M vlb, M vub, i_o_t, Mm& lambda, Mm& how);
Mm qp(M H, M c, M A, M b, M vlb, M vub, M x0, i_o_t, Mm& lambda, Mm& how);
Mm qp(M H, M c, M A, M b, M vlb, M vub, M x0, M neqcstr, i_o_t, Mm& lambda, Mm& how);
Mm qp(M H, M c, M A, M b, M vlb, M vub, M x0, M neqcstr, M display, i_o_t, Mm& lambda, Mm& how);

// conls(A, b, C, d, vlb, vub, x0, neqcstr, display): min norm(A x - b) with C x <= d (the first
// neqcstr rows equalities) and the bounds; outputs as qp.
Mm conls(M A);
Mm conls(M A, M b);
Mm conls(M A, M b, M C);
Mm conls(M A, M b, M C, M d);
Mm conls(M A, M b, M C, M d, M vlb);
Mm conls(M A, M b, M C, M d, M vlb, M vub);
Mm conls(M A, M b, M C, M d, M vlb, M vub, M x0);
Mm conls(M A, M b, M C, M d, M vlb, M vub, M x0, M neqcstr);
Mm conls(M A, M b, M C, M d, M vlb, M vub, M x0, M neqcstr, M display);
Mm conls(M A, M b, M C, M d, i_o_t, Mm& lambda);
Mm conls(M A, M b, M C, M d, M vlb, M vub, M x0, M neqcstr, M display, i_o_t, Mm& lambda);
Mm conls(M A, M b, M C, M d, i_o_t, Mm& lambda, Mm& how);
Mm conls(M A, M b, M C, M d, M vlb, M vub, M x0, M neqcstr, M display, i_o_t, Mm& lambda, Mm& how);
#undef M

// ---- nonlinear constraints --------------------------------------------------------------------------
// constr(f, x, options, vlb, vub, grad, params): [fval, g] = f(x) gives the objective and the
// constraints g <= 0, of which the first options(13) are equalities g = 0. grad, when named, gives
// [df, dg] (n and n x numel(g)); otherwise differences are used. Returns x; options_out holds the
// value at position 8 and the count of calls at 10.
#define M const Mm&
Mm constr(M f, M x);
Mm constr(M f, M x, M options);
Mm constr(M f, M x, M options, M vlb);
Mm constr(M f, M x, M options, M vlb, M vub);
Mm constr(M f, M x, M options, M vlb, M vub, M grad);
Mm constr(M f, M x, M options, M vlb, M vub, M grad, M params);
Mm constr(M f, M x, i_o_t, Mm& options_out);
Mm constr(M f, M x, M options, i_o_t, Mm& options_out);
Mm constr(M f, M x, M options, M vlb, i_o_t, Mm& options_out);
Mm constr(M f, M x, M options, M vlb, M vub, i_o_t, Mm& options_out);
Mm constr(M f, M x, M options, M vlb, M vub, M grad, i_o_t, Mm& options_out);
Mm constr(M f, M x, M options, M vlb, M vub, M grad, M params, i_o_t, Mm& options_out);

// minimax(f, x, options, vlb, vub, grad, params): x making the largest element of F smallest, where
// [F, G] = f(x) and G are constraints as in constr; grad is accepted and unused.
Mm minimax(M f, M x);
Mm minimax(M f, M x, M options);
Mm minimax(M f, M x, M options, M vlb);
Mm minimax(M f, M x, M options, M vlb, M vub);
Mm minimax(M f, M x, M options, M vlb, M vub, M grad);
Mm minimax(M f, M x, M options, M vlb, M vub, M grad, M params);
Mm minimax(M f, M x, i_o_t, Mm& options_out);
Mm minimax(M f, M x, M options, i_o_t, Mm& options_out);
Mm minimax(M f, M x, M options, M vlb, i_o_t, Mm& options_out);
Mm minimax(M f, M x, M options, M vlb, M vub, i_o_t, Mm& options_out);
Mm minimax(M f, M x, M options, M vlb, M vub, M grad, i_o_t, Mm& options_out);
Mm minimax(M f, M x, M options, M vlb, M vub, M grad, M params, i_o_t, Mm& options_out);

// curvefit(f, x, xdata, ydata, options, grad, params): x minimising the sum of squares of
// f(x, xdata) - ydata; grad is accepted and unused. options_out holds the sum at 8 and the calls at 10.
Mm curvefit(M f, M x, M xdata, M ydata);
Mm curvefit(M f, M x, M xdata, M ydata, M options);
Mm curvefit(M f, M x, M xdata, M ydata, M options, M grad);
Mm curvefit(M f, M x, M xdata, M ydata, M options, M grad, M params);
Mm curvefit(M f, M x, M xdata, M ydata, i_o_t, Mm& options_out);
Mm curvefit(M f, M x, M xdata, M ydata, M options, i_o_t, Mm& options_out);
Mm curvefit(M f, M x, M xdata, M ydata, M options, M grad, i_o_t, Mm& options_out);
Mm curvefit(M f, M x, M xdata, M ydata, M options, M grad, M params, i_o_t, Mm& options_out);

// ---- non-negative least squares ------------------------------------------------------------------------
// nnls(a, b, tol): x >= 0 minimising norm(a x - b); w is the dual vector a'(b - a x) and p the
// indices of the positive elements of x.
Mm nnls(M a);
Mm nnls(M a, M b);
Mm nnls(M a, M b, M tol);
Mm nnls(M a, M b, i_o_t, Mm& w);
Mm nnls(M a, M b, M tol, i_o_t, Mm& w);
Mm nnls(M a, M b, i_o_t, Mm& w, Mm& p);
Mm nnls(M a, M b, M tol, i_o_t, Mm& w, Mm& p);
// lsqnonneg(a, b, x0, options): [x, resnorm, residual, exitflag, output, lambda].
Mm lsqnonneg(M a);
Mm lsqnonneg(M a, M b);
Mm lsqnonneg(M a, M b, M x0);
Mm lsqnonneg(M a, M b, M x0, M options);
Mm lsqnonneg(M a, M b, i_o_t, Mm& resnorm);
Mm lsqnonneg(M a, M b, i_o_t, Mm& resnorm, Mm& residual);
Mm lsqnonneg(M a, M b, i_o_t, Mm& resnorm, Mm& residual, Mm& exitflag);
Mm lsqnonneg(M a, M b, i_o_t, Mm& resnorm, Mm& residual, Mm& exitflag, Mm& output);
Mm lsqnonneg(M a, M b, i_o_t, Mm& resnorm, Mm& residual, Mm& exitflag, Mm& output, Mm& lambda);
Mm lsqnonneg(M a, M b, M x0, M options, i_o_t, Mm& resnorm, Mm& residual, Mm& exitflag, Mm& output,
             Mm& lambda);
#undef M
