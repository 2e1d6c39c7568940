// Dense linear and quadratic programming kernels on plain column-major arrays.
//
//   minimise c'x (+ x'Hx / 2)   subject to   A(1:neq, :) x = b(1:neq),  A(neq+1:m, :) x <= b(neq+1:m)
//
// with x free: bounds come in as rows. The multipliers lambda (m) satisfy c + H x + A' lambda = 0,
// and are non-negative on the inequality rows.
#pragma once

namespace ak_internal {

// Status codes shared with the fronts.
enum lp_code_t {
    lp_optimal = 1, lp_infeasible = 2, lp_unbounded = 3, lp_iterations = 4, lp_singular = 5,
    lp_inconsistent_initial = 6, lp_inconsistent_a = 7, lp_no_file = 8, lp_mps_error = 9
};

struct lp_problem_t {
    int m, n, neq;
    const double* c;  // n
    const double* a;  // m x n
    const double* b;  // m
};

// Two-phase simplex on the tableau of the problem with x split into two non-negative parts.
// x (n) and lambda (m) receive the result. Returns a code of lp_code_t.
int lp_solve(const lp_problem_t& p, double* x, double* lambda);

// A feasible x from the first phase alone; lp_optimal when one exists.
int lp_feasible_point(const lp_problem_t& p, double* x);

// Active-set method for the quadratic programme with symmetric H (n x n). A feasible start comes from
// the first phase of lp_solve. Returns lp_optimal, lp_infeasible, lp_unbounded or lp_iterations;
// *unique is set when the feasible set is a single point, *seems_unbounded when a direction without
// bound turned up on the way.
int qp_solve(const lp_problem_t& p, const double* h, double* x, double* lambda, int* unique,
             int* seems_unbounded);

}  // namespace ak_internal
