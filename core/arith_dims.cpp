// Named operations along a dimension: sums, products, truth tests, extremes, median, differences,
// phase unwrapping, gradient and Laplacian.
#include <cmath>

#include "arklib/arith.h"
#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/sort.h"
#include "arklib/sparse.h"
#include "core/arith_internal.h"

using ak_internal::along;
using ak_internal::element;
using ak_internal::has_pi;
using ak_internal::logical_result;

Mm sum(const Mm& a) { return along(has_pi(a), a, zero_M, zero_M, op_sum); }
Mm sum(const Mm& a, const Mm& dim) { return along(has_pi(a), a, zero_M, dim, op_sum); }
AK_BUILTIN("sum", AK_FN(sum, const Mm&), AK_FN(sum, const Mm&, const Mm&));
Mm prod(const Mm& a) { return along(has_pi(a), a, zero_M, zero_M, op_prod); }
Mm prod(const Mm& a, const Mm& dim) { return along(has_pi(a), a, zero_M, dim, op_prod); }
Mm cumsum(const Mm& a) { return along(has_pi(a), a, zero_M, zero_M, op_cumsum); }
Mm cumsum(const Mm& a, const Mm& dim) { return along(has_pi(a), a, zero_M, dim, op_cumsum); }
Mm cumprod(const Mm& a) { return along(has_pi(a), a, zero_M, zero_M, op_cumprod); }
Mm cumprod(const Mm& a, const Mm& dim) { return along(has_pi(a), a, zero_M, dim, op_cumprod); }
Mm all(const Mm& a) { return logical_result(along(0, a, zero_M, zero_M, op_all)); }
Mm all(const Mm& a, const Mm& dim) { return logical_result(along(0, a, zero_M, dim, op_all)); }
Mm any(const Mm& a) { return logical_result(along(0, a, zero_M, zero_M, op_any)); }
Mm any(const Mm& a, const Mm& dim) { return logical_result(along(0, a, zero_M, dim, op_any)); }

// ---- max and min ---------------------------------------------------------------------------------------

namespace {

// The extremes along `dim`, with their positions in `index` unless it is the marker l_M.
Mm extreme(const Mm& a, const Mm& dim, op_t op, Mm& index) {
    Mm r(has_pi(a), a, zero_M, dim, op, 1, index);
    // Nothing was found in an empty matrix: its positions are empty too.
    if (r.size() == 0 && !is_lM(index)) index = Mm();
    return r;
}

// max(a, b, dim): a reduction when b is empty; two operands and a dimension do not go together.
Mm extreme3(const Mm& a, const Mm& b, const Mm& dim, op_t reduce, Mm& index, const char* name) {
    if (b.size() == 0) return extreme(a, dim, reduce, index);
    if (!is_lM(index)) {
        error("%s: two matrices to compare and two outputs are not supported", name);
        return x_M;
    }
    error("%s: two matrices to compare and a dimension are not supported", name);
    return x_M;
}

}  // namespace

Mm max(const Mm& a) { return extreme(a, zero_M, op_max_1, l_M); }
Mm max(const Mm& a, const Mm& b) { return element(has_pi(a, b), a, b, op_max_2); }
Mm max(const Mm& a, const Mm& b, const Mm& dim) { return extreme3(a, b, dim, op_max_1, l_M, "max"); }
Mm max(const Mm& a, i_o_t, Mm& index) { return extreme(a, zero_M, op_max_1, index); }
Mm max(const Mm& a, const Mm& b, const Mm& dim, i_o_t, Mm& index) {
    return extreme3(a, b, dim, op_max_1, index, "max");
}
AK_BUILTIN("max", AK_FN(max, const Mm&), AK_FN(max, const Mm&, const Mm&), AK_FN(max, const Mm&, const Mm&, const Mm&),
           AK_FN(max, const Mm&, i_o_t, Mm&), AK_FN(max, const Mm&, const Mm&, const Mm&, i_o_t, Mm&));
Mm min(const Mm& a) { return extreme(a, zero_M, op_min_1, l_M); }
Mm min(const Mm& a, const Mm& b) { return element(has_pi(a, b), a, b, op_min_2); }
Mm min(const Mm& a, const Mm& b, const Mm& dim) { return extreme3(a, b, dim, op_min_1, l_M, "min"); }
Mm min(const Mm& a, i_o_t, Mm& index) { return extreme(a, zero_M, op_min_1, index); }
Mm min(const Mm& a, const Mm& b, const Mm& dim, i_o_t, Mm& index) {
    return extreme3(a, b, dim, op_min_1, index, "min");
}

// ---- median ----------------------------------------------------------------------------------------------

namespace {

// The dimension a dimension argument names, or 0 when it names none that can be sorted along.
int resolved_dim(const Mm& a, const Mm& dim) {
    if (dim.nnz < 1 || dim.flags.type != ak_double) return 0;
    double d = *dim.addr();
    if (d == 0) return a.nsingleton();
    return (d >= 1 && d <= 4) ? static_cast<int>(d) : 0;
}

// The engine takes the middle of runs that are already in order: sort puts NaN last and orders
// complex values by modulus, then by angle.
Mm median_of(const Mm& a, const Mm& dim) {
    if (a.flags.sparse) return sparse(median_of(full(a), dim));
    int d = resolved_dim(a, dim);
    if (d == 0 || d > a.ndims || a.dims[d - 1] < 2 || a.nnz == 0 ||
        (a.flags.type != ak_double && a.flags.type != ak_uchar))
        return along(has_pi(a), a, zero_M, dim, op_median);  // nothing to sort, or the engine reports
    Mm sorted = sort(a, Mm(double(d)));
    return along(has_pi(sorted), sorted, zero_M, Mm(double(d)), op_median);
}

}  // namespace

Mm median(const Mm& a) { return median_of(a, zero_M); }
Mm median(const Mm& a, const Mm& dim) { return median_of(a, dim); }

// ---- differences --------------------------------------------------------------------------------

namespace {

Mm diff_of(const Mm& a, const Mm& n, const Mm& dim) {
    double order = n.nnz == 1 && n.flags.type == ak_double ? *n.addr() : -1;
    if (!(order >= 0 && order == std::floor(order) && order < 2147483647.0)) {
        error("diff: order must be a non-negative integer");
        return x_M;
    }
    Mm r = a;
    for (int k = 0; k < static_cast<int>(order) && r.size() > 0; ++k)
        r = along(has_pi(r), r, zero_M, dim, op_diff);
    return r;
}

}  // namespace

Mm diff(const Mm& a) { return along(has_pi(a), a, zero_M, zero_M, op_diff); }
Mm diff(const Mm& a, const Mm& n) { return diff_of(a, n, zero_M); }
Mm diff(const Mm& a, const Mm& n, const Mm& dim) { return diff_of(a, n, dim); }

Mm unwrap(const Mm& p) { return along(has_pi(p), p, pi, zero_M, op_unwrap); }
Mm unwrap(const Mm& p, const Mm& tol) { return unwrap(p, tol, zero_M); }
Mm unwrap(const Mm& p, const Mm& tol, const Mm& dim) {
    return along(has_pi(p), p, tol.size() == 0 ? pi : tol, dim, op_unwrap);
}

// ---- gradient and Laplacian ----------------------------------------------------------------------

namespace {

// The spacing along dimension d: a scalar, or one coordinate per point.
bool spacing_fits(const Mm& f, const Mm& h, int d, const char* name) {
    if (h.nnz == 1 || h.nnz == f.dims[d - 1]) return true;
    error("%s: spacing must be a scalar or have one coordinate for each of the %d points", name,
          f.dims[d - 1]);
    return false;
}

// Gradient along dimension d with spacing h.
Mm gradient_along(const Mm& f, const Mm& h, int d) {
    if (!spacing_fits(f, h, d, "gradient")) return x_M;
    return along(has_pi(f), f, h, Mm(double(d)), op_gradient);
}

// A vector varies along its one dimension; a matrix gives x across the columns and y down the rows.
Mm gradient_of(const Mm& f, const Mm& hx, const Mm& hy, Mm* fy) {
    if (f.size() == 0) {
        if (fy) *fy = Mm();
        return Mm();
    }
    int vd = f.vectordim();
    if (vd != 0 && !fy) return gradient_along(f, hx, f.nsingleton());
    Mm gx = gradient_along(f, hx, 2);
    if (fy) *fy = gradient_along(f, hy, 1);
    return gx;
}

}  // namespace

Mm gradient(const Mm& f) { return gradient_of(f, one_M, one_M, nullptr); }
Mm gradient(const Mm& f, const Mm& h) { return gradient_of(f, h, h, nullptr); }
Mm gradient(const Mm& f, const Mm& hx, const Mm& hy) { return gradient_of(f, hx, hy, nullptr); }
Mm gradient(const Mm& f, i_o_t, Mm& fy) { return gradient_of(f, one_M, one_M, &fy); }
Mm gradient(const Mm& f, const Mm& h, i_o_t, Mm& fy) { return gradient_of(f, h, h, &fy); }
Mm gradient(const Mm& f, const Mm& hx, const Mm& hy, i_o_t, Mm& fy) { return gradient_of(f, hx, hy, &fy); }

namespace {

// The engine divides second differences by the span of the neighbouring coordinates, 2h for an even
// spacing h; coordinates of step h*h make that 2h^2. Summing over the dimensions in use and dividing
// by their number (at least 2) gives a quarter of the second differences in 1 and 2 dimensions.
Mm del2_of(const Mm& u, const Mm& h) {
    if (u.size() == 0) return Mm();
    if (h.nnz != 1 || h.flags.type != ak_double) {
        error("del2: spacing must be a scalar");
        return x_M;
    }
    double step = *h.addr();
    Mm coordinates(step * step);
    int vd = u.vectordim();
    int first = vd ? vd : 1, last = vd ? vd : u.ndims;
    Mm total;
    int count = 0;
    for (int d = first; d <= last; ++d) {
        if (u.dims[d - 1] < 1) continue;
        Mm part = along(has_pi(u), u, coordinates, Mm(double(d)), op_del2);
        total = count ? plus(total, part) : part;
        ++count;
    }
    return rdivide(total, Mm(double(count < 2 ? 2 : count)));
}

}  // namespace

Mm del2(const Mm& u) { return del2_of(u, one_M); }
Mm del2(const Mm& u, const Mm& h) { return del2_of(u, h); }

// ---- rows of the table of functions by name ----------------------------------------------------
AK_BUILTIN("prod", AK_FN(prod, const Mm&), AK_FN(prod, const Mm&, const Mm&), AK_FN(prod));
AK_BUILTIN("cumsum", AK_FN(cumsum, const Mm&), AK_FN(cumsum, const Mm&, const Mm&));
AK_BUILTIN("cumprod", AK_FN(cumprod, const Mm&), AK_FN(cumprod, const Mm&, const Mm&));
AK_BUILTIN("all", AK_FN(all, const Mm&), AK_FN(all, const Mm&, const Mm&));
AK_BUILTIN("any", AK_FN(any, const Mm&), AK_FN(any, const Mm&, const Mm&));
AK_BUILTIN("median", AK_FN(median, const Mm&), AK_FN(median, const Mm&, const Mm&));
AK_BUILTIN("min", AK_FN(min, const Mm&), AK_FN(min, const Mm&, const Mm&),
           AK_FN(min, const Mm&, const Mm&, const Mm&), AK_FN(min, const Mm&, i_o_t, Mm&),
           AK_FN(min, const Mm&, const Mm&, const Mm&, i_o_t, Mm&));
AK_BUILTIN("diff", AK_FN(diff, const Mm&), AK_FN(diff, const Mm&, const Mm&),
           AK_FN(diff, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("unwrap", AK_FN(unwrap, const Mm&), AK_FN(unwrap, const Mm&, const Mm&),
           AK_FN(unwrap, const Mm&, const Mm&, const Mm&), AK_FN(unwrap));
AK_BUILTIN("gradient", AK_FN(gradient, const Mm&), AK_FN(gradient, const Mm&, const Mm&),
           AK_FN(gradient, const Mm&, const Mm&, const Mm&), AK_FN(gradient, const Mm&, i_o_t, Mm&),
           AK_FN(gradient, const Mm&, const Mm&, i_o_t, Mm&),
           AK_FN(gradient, const Mm&, const Mm&, const Mm&, i_o_t, Mm&));
AK_BUILTIN("del2", AK_FN(del2, const Mm&), AK_FN(del2, const Mm&, const Mm&));
