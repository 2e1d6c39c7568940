// Functions on sparse matrices: column orderings, a user function on the entries, random sparse
// matrices, and the forms that only report their input count.
#include <cmath>
#include <memory>

#include "algebra/sparse_internal.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/random.h"
#include "arklib/sort.h"
#include "arklib/sparse.h"
#include "core/matrix_internal.h"
#include "arklib/builtins.h"

using namespace ak_internal;

namespace {

// Puts nargout back after a call made through the feval hook, also when the call raises.
class nargout_for_call {
  public:
    nargout_for_call() : saved_(nargout_val) {
        nargout_val = 1.0;
        nargout_set = 1;
    }
    ~nargout_for_call() { nargout_val = saved_; }
    nargout_for_call(const nargout_for_call&) = delete;
    nargout_for_call& operator=(const nargout_for_call&) = delete;

  private:
    double saved_;
};

// f(x) through the program's feval hook, for one result.
Mm feval_one(const Mm& f, const Mm& x) {
    const Mm* list[1] = {&x};
    Mm args = cell_from_array(1, list);
    Mm out1, out2, out3, out4, out5, out6;
    nargout_for_call guard;
    feval_func(f, args, i_o, out1, out2, out3, out4, out5, out6);
    return out1;
}

// A sparse matrix on the pattern of s whose stored values are fresh draws, in storage order.
Mm random_pattern(const Mm& s0, bool normal) {
    Mm s = sparse(s0);
    if (!s.flags.sparse) return s;  // reported
    Mm r(0, 1, s.nnz, s.ndims, s.dims, ak_double);
    for (int k = 0; k < r.nnz; ++k) r.index[k] = s.index[k];
    if (normal)
        randn_fill(r.addr(), r.nnz);
    else
        rand_fill(r.addr(), r.nnz);
    return r;
}

// Draws n positions along a dimension of the given size: 1 + fix(size * u) for uniform u.
Mm random_subscripts(int n, int size) {
    Mm x(0, 0, 0, n, 1, ak_double);
    double* p = x.addr();
    rand_fill(p, x.nnz);
    for (int k = 0; k < x.nnz; ++k) {
        double s = std::trunc(p[k] * size) + 1.0;
        p[k] = s > size ? size : s;
    }
    return x;
}

// An m x n matrix of about m*n*density random entries; positions drawn twice are added up.
Mm sprand_eng3(const Mm& m0, const Mm& n0, const Mm& d0, bool normal) {
    const char* fname = normal ? "sprandn" : "sprand";
    bool ok_m, ok_n, ok_d;
    Mm m = numeric_full(m0, fname, ok_m);
    Mm n = numeric_full(n0, fname, ok_n);
    Mm d = numeric_full(d0, fname, ok_d);
    if (!(ok_m && ok_n && ok_d)) return x_M;
    int rows = round_nonnegative(m.nnz ? m.addr()[0] : 0.0);
    int cols = round_nonnegative(n.nnz ? n.addr()[0] : 0.0);
    double density = d.nnz ? d.addr()[0] : 0.0;
    int count = round_nonnegative(static_cast<double>(rows) * cols * density);
    if (count > max_sparse_entries) {
        error("Out of memory!");
        return x_M;
    }
    Mm i = random_subscripts(count, rows);
    Mm j = random_subscripts(count, cols);
    Mm v(0, 0, 0, count, 1, ak_double);
    if (normal)
        randn_fill(v.addr(), v.nnz);
    else
        rand_fill(v.addr(), v.nnz);
    return sparse(i, j, v, Mm(static_cast<double>(rows)), Mm(static_cast<double>(cols)));
}

}  // namespace

Mm colperm(const Mm& s0) {
    if (error_2d(s0, "colperm")) return x_M;
    Mm s = sparse(s0);
    if (!s.flags.sparse) return x_M;  // reported
    // The count row first: a row too long is refused before a column list of its length is made.
    const int cols = s.dims[1];
    Mm count(0, 0, 0, 1, cols, ak_double);
    if (count.nnz != (cols > 0 ? cols : 0)) return x_M;  // reported
    // The list is freed on every way out, a thrown report included.
    std::unique_ptr<int, ak_internal::c_heap_free> jc(getJc(s));
    if (!jc) return x_M;
    for (int c = 0; c < count.nnz; ++c) count.addr()[c] = jc.get()[c + 1] - jc.get()[c];
    // sort is stable: columns of equal count keep their order.
    Mm sorted, order;
    sort(count, i_o, sorted, order);
    return order;
}

// There is no minimum degree ordering here: the column count ordering stands in for it.
Mm colmmd(const Mm& s) { return colperm(s); }

Mm spfun(const Mm& f, const Mm& s) {
    if (s.flags.type == ak_no_type) {
        s.warn_uninit();
        return x_M;
    }
    if (error_numeric(s, "spfun")) return x_M;
    Mm j, v;
    Mm i = find(s, i_o, j, v);
    Mm r = feval_one(f, v);
    int rows = s.dims[0], cols = rows > 0 ? s.size() / rows : s.dims[1];
    return sparse(i, j, r, Mm(static_cast<double>(rows)), Mm(static_cast<double>(cols)));
}

Mm spfun(const Mm&) {
    error_input("spfun", 1);
    return x_M;
}

Mm sprand(const Mm& s) { return random_pattern(s, false); }
Mm sprandn(const Mm& s) { return random_pattern(s, true); }
Mm sprand(const Mm& m, const Mm& n, const Mm& density) { return sprand_eng3(m, n, density, false); }
Mm sprandn(const Mm& m, const Mm& n, const Mm& density) { return sprand_eng3(m, n, density, true); }

Mm sprand(const Mm&, const Mm&) {
    error_input("sprand", 2);
    return x_M;
}

Mm sprand(const Mm&, const Mm&, const Mm&, const Mm&) {
    error_input("sprand", 4);
    return x_M;
}

Mm sprandn(const Mm&, const Mm&) {
    error_input("sprandn", 2);
    return x_M;
}

Mm sprandn(const Mm&, const Mm&, const Mm&, const Mm&) {
    error_input("sprandn", 4);
    return x_M;
}

Mm sparsfun(const Mm&, const Mm&) {
    ak_printf("sparsfun called\n");
    return x_M;
}

// ---- rows of the table of functions by name ----------------------------------------------------
AK_BUILTIN("colperm", AK_FN(colperm, const Mm&));
AK_BUILTIN("colmmd", AK_FN(colmmd, const Mm&));
AK_BUILTIN("spfun", AK_FN(spfun, const Mm&, const Mm&), AK_FN(spfun, const Mm&));
AK_BUILTIN("sprand", AK_FN(sprand, const Mm&), AK_FN(sprand, const Mm&, const Mm&, const Mm&),
           AK_FN(sprand, const Mm&, const Mm&), AK_FN(sprand, const Mm&, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("sprandn", AK_FN(sprandn, const Mm&), AK_FN(sprandn, const Mm&, const Mm&, const Mm&),
           AK_FN(sprandn, const Mm&, const Mm&), AK_FN(sprandn, const Mm&, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("sparsfun", AK_FN(sparsfun, const Mm&, const Mm&));
