// Embedded Runge-Kutta pairs of orders 2-3, 4-5 and 7-8, as coefficient tables.
#pragma once

namespace ak_internal {

struct rk_pair_t {
    int stages;              // s, the first stage being the slope at the start of the step
    int order;               // order of the error estimate; the step rule uses 1 / (order + 1)
    bool fsal;               // the last stage is the slope at the step's end
    int stiff_stage;         // stage compared with the end slope to estimate the Lipschitz constant
    double stability;        // length of the stability interval on the negative real axis
    const double* c;         // s nodes
    const double* a;         // s x s, row major, strictly lower triangle used
    const double* b;         // s weights of the propagated (higher order) solution
    const double* e;         // s weights of the error estimate: b minus the lower order weights
};

// Method 1: orders 2 and 3; method 2: orders 4 and 5; method 3: orders 7 and 8.
const rk_pair_t* rk_pair(int method);

}  // namespace ak_internal
