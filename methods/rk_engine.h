// The explicit Runge-Kutta integrator behind ode23, ode45 and ode78: plain code on double arrays.
//
// One integration at a time: SETUP fills the saved state, then CT takes one step at a time
// (task 'C') or UT integrates to a given point (task 'U'); INTRP gives the solution between the
// last two steps of CT, and RESET moves the end of the range. Each returns a flag:
//   1  success                          4  the problem looks stiff (the step was taken)
//   2  (unused)                         5  a step became too small for the precision of t
//   3  over 5,000 derivative calls      6  error estimate unreliable (global assessment only)
//   911 fatal: a call out of order or bad input; every later call returns 911 at once.
#pragma once

namespace ak_internal {

// The derivative: yp = f(t, y), with the caller's problem record as ctx.
typedef void (*ode_rhs_t)(void* ctx, double t, const double* y, double* yp);

int SETUP(int n, double tstart, const double* ystart, double tend, double tol, const double* thres,
          int method, char task, int errass, double hstart, double* work, int lenwrk, int mesage,
          ode_rhs_t f, void* ctx);
int CT(double* tnow, double* ynow, double* ypnow);
int UT(double twant, double* tgot, double* ygot, double* ypgot);
// request 'S' gives the solution only, 'D' the derivative only, 'B' both.
int INTRP(double twant, char request, int nwant, double* ywant, double* ypwant, double* wrkint,
          int lenint);
int RESET(double tendnu);

// Counters of the present integration, for statistics and tests.
struct rk_stats_t {
    int steps;     // accepted steps
    int rejected;  // failed attempts
    int calls;     // derivative calls
    double mean_step;
};
rk_stats_t rk_stats();

}  // namespace ak_internal
