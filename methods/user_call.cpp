// The one place where the numerical methods reach a user function.
#include "methods/user_call.h"

#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/error.h"

namespace ak_internal {

user_args_t::user_args_t(const Mm& params) {
    if (iscell(params)) {
        const Mm* e = params.getpr(static_cast<Mm*>(nullptr));
        for (int k = 0; k < params.size() && n_ < 64; ++k) p_[n_++] = e + k;
    } else if (params.size() > 0) {
        p_[n_++] = &params;
    }
}

Mm user_args_t::list(int nlead, const Mm* const* lead) const {
    const Mm* all[80];
    int n = 0;
    for (int k = 0; k < nlead && n < 80; ++k) all[n++] = lead[k];
    for (int k = 0; k < n_ && n < 80; ++k) all[n++] = p_[k];
    return cell_from_array(n, all);
}

void call_user(const Mm& name, const Mm& args, int nout, Mm* out) {
    if (nout < 1) nout = 1;
    Mm o[6];
    const double saved = nargout_val;
    nargout_val = nout;
    struct restore_t {
        double v;
        ~restore_t() { nargout_val = v; }
    } restore{saved};
    o[0] = feval_func(name, args, i_o, o[0], o[1], o[2], o[3], o[4], o[5]);
    for (int k = 0; k < nout && k < 6; ++k) out[k] = o[k];
}

int function_name(const Mm& f, const char* who, char* buffer, int size) {
    if (!f.isstr() || f.size() < 1) {
        error("%s: the function must be given by name", who);
        return 0;
    }
    Mstr(f, buffer, size);
    return 1;
}

}  // namespace ak_internal
