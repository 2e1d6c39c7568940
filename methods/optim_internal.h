// Shared pieces of the optimisers: the options vector and the scalar objective.
#pragma once
#include "arklib/matrix.h"
#include "methods/user_call.h"

namespace ak_internal {

// The 18-number options vector as plain doubles, read from any vector (foptions rules), or from a
// structure of optimset.
struct options_t {
    double v[18];
    double at(int pos) const { return v[pos - 1]; }  // positions count from 1
    double& at(int pos) { return v[pos - 1]; }
    Mm matrix() const;                               // as an 18 x 1 column
};
options_t options_from_vector(const Mm& v);
options_t options_from_struct(const Mm& s);
// A structure is converted, anything else read as a vector.
options_t options_from(const Mm& o);

// The user's function reduced to one number: a single element is its value, a longer result the
// sum of the squares of its elements. In root mode the value is made non-negative.
class objective_t {
  public:
    objective_t(const Mm& name, const Mm& params, bool root_mode = false)
        : name_(name), args_(params), root_(root_mode) {}
    double operator()(const Mm& x);
    // The raw result of f(x), counted as a call.
    Mm raw(const Mm& x, int nout, Mm* out);
    int calls() const { return calls_; }

  private:
    Mm name_;
    user_args_t args_;
    bool root_;
    int calls_ = 0;
};

// The reduction of a result to one number; reports an empty result.
double reduce_result(const Mm& r, bool root_mode);

// x (shape of like) from a column of doubles.
Mm shaped(const Mm& like, const double* v);

}  // namespace ak_internal
