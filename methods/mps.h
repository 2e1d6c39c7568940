// Reader of linear programmes in MPS format, fixed or free.
#pragma once
#include <string>
#include <vector>

namespace ak_internal {

struct mps_problem_t {
    std::string name;
    int m = 0, n = 0, neq = 0;     // rows after conversion; equalities first
    std::vector<double> c, a, b;   // a is m x n, column major
    std::vector<double> lb, ub;    // n each; -Inf and Inf where unbounded
};

// Reads file into p. Returns 1 (read), 8 (cannot open) or 9 (format fault, with the line number and
// the reason in *line and why).
int mps_read(const char* file, mps_problem_t& p, int* line, std::string& why);

}  // namespace ak_internal
