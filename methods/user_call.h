// Calls into the program's own functions, given by name, for the integrators and optimisers.
#pragma once
#include "arklib/matrix.h"

namespace ak_internal {

// An argument list: the leading inputs, then the extra parameters. A cell of parameters gives
// one input per element; any other non-empty value is one input; an empty value gives none.
class user_args_t {
  public:
    user_args_t(const Mm& params);
    // Builds the list lead[0..nlead-1] followed by the parameters.
    Mm list(int nlead, const Mm* const* lead) const;
    int nparams() const { return n_; }

  private:
    const Mm* p_[64];
    int n_ = 0;
};

// Calls the function named `name` (a string matrix) with the cell list `args`, and fills
// out[0..nout-1]. Every call of a user function by the methods goes through here.
void call_user(const Mm& name, const Mm& args, int nout, Mm* out);

// The name of a function argument as text, or 0 (after a report by `who`) when f is not a string.
int function_name(const Mm& f, const char* who, char* buffer, int size);

}  // namespace ak_internal
