// Variable-order, variable-step backward-difference integrator for implicit systems
// F(t, y, y') = 0, orders 1 to 5, with Newton iterations on a difference Jacobian.
#pragma once

namespace ak_internal {

// The residual: delta = F(t, y, yp). Setting *ires to -1 asks for a smaller step; -2 stops the run.
typedef void (*dae_res_t)(void* ctx, double t, const double* y, const double* yp, double* delta, int* ires);
// A user Jacobian: pd = dF/dy + cj dF/dyp. Only called when control word 5 asks for it.
typedef void (*dae_jac_t)(void* ctx, double t, const double* y, const double* yp, double* pd, double cj);

// The 15 control words, numbered as below (word k is control[k - 1]):
//   1  0 on the first call of a problem, 1 on the calls that continue it
//   2  1 when rtol and atol are vectors of n, 0 when they are single numbers
//   3  1 to return after every step (status 1), 0 to return only at tout
//   4  1 when rwork[0] holds a point not to be passed
//   5  1 to call jac for the iteration matrix, 0 to make it by differences
//   7  1 when rwork[1] holds the largest step
//   8  1 when rwork[2] holds the first step
//   9  1 when iwork[2] holds the highest order (1 to 5)
// Words 6, 10 to 15 are kept for later use and must be 0.
//
// Sizes: rwork of 40 + 9 n + n * n, iwork of 20 + n.
//
// Status on return:
//    1  one step taken (word 3 set); t is the step's end
//    2  reached the point not to be passed (word 4) exactly
//    3  reached tout, stepping past it and interpolating back
//   -1  500 steps taken on this call without reaching tout (call again to go on)
//   -2  the error test fails repeatedly at the smallest step: accuracy not achievable
//   -3  a component of the error weight is 0 (zero AbsTol with a zero solution component)
//   -6  repeated error test failures
//   -7  repeated failures of the Newton iteration
//   -8  the iteration matrix is singular
//   -11 the residual asked to stop
//   -33 bad input; the run cannot go on
int bdf_solve(dae_res_t res, int n, double* t, double* y, double* yp, double tout, int* control,
              const double* rtol, const double* atol, double* rwork, int lrw, int* iwork, int liw,
              void* ctx, dae_jac_t jac);

// Accepted steps, residual calls and Jacobian factorisations of the present run.
struct bdf_stats_t {
    int steps, residuals, jacobians, order;
};
bdf_stats_t bdf_stats();

}  // namespace ak_internal
