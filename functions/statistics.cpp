// Descriptive statistics, histograms, vector products and grids.
#include "arklib/statistics.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "arklib/arith.h"
#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/subscript.h"

namespace {

int extent(const Mm& x, int dim) { return dim < x.ndims ? x.dims[dim] : 1; }

// x as full doubles after the numeric check; an empty matrix after a report.
bool numeric(const char* function, const Mm& x, Mm& out) {
    x.warn_uninit();
    if (error_numeric(x, function)) return false;
    out = mdouble(x);
    return true;
}

int dim_of(const char* function, const Mm& x, const Mm* dim) {
    return dim ? normalize_dim_argument(function, x, *dim) : x.nsingleton() - 1;
}

// The shape of x with dim reduced to one element.
Mm reduced_shape(const Mm& x, int dim, bool complex) {
    int dims[4] = {1, 1, 1, 1};
    const int nd = std::max(x.ndims, dim + 1);
    for (int d = 0; d < x.ndims; ++d) dims[d] = x.dims[d];
    dims[dim] = 1;
    return Mm(complex ? 1 : 0, 0, 0, std::min(nd, 4), dims, ak_double);
}

// Calls f(re, im, stride, n, k) for the k-th vector of x along dim (im is null for real data).
template <class F>
void each_vector(const Mm& x, int dim, F f) {
    int inner = 1, outer = 1;
    for (int d = 0; d < x.ndims; ++d) {
        if (d < dim) inner *= x.dims[d];
        if (d > dim) outer *= x.dims[d];
    }
    const int n = extent(x, dim);
    int k = 0;
    for (int o = 0; o < outer; ++o)
        for (int i = 0; i < inner; ++i, ++k) {
            const std::size_t base = static_cast<std::size_t>(o) * n * inner + i;
            f(x.addr() + base, x.pi ? x.addi() + base : nullptr, static_cast<std::size_t>(inner), n, k);
        }
}

double weight_argument(const char* function, const Mm* w) {
    if (!w || w->size() == 0) return 0;
    const double v = scalar(*w);
    if (v != 0 && v != 1) {
        error("%s: normalisation must be 0 or 1", function);
        return -1;
    }
    return v;
}

Mm var_impl(const char* function, const Mm& x, const Mm* w, const Mm* dim, bool root) {
    Mm X;
    if (!numeric(function, x, X)) return x_M;
    const double weight = weight_argument(function, w);
    if (weight < 0) return x_M;
    if (X.ndims == 2 && X.dims[0] == 0 && X.dims[1] == 0 && !dim) return Mm(std::nan(""));
    const int d = dim_of(function, X, dim);
    Mm r = reduced_shape(X, d, false);
    each_vector(X, d, [&](const double* re, const double* im, std::size_t s, int n, int k) {
        // Two passes: the mean, then the squared distances from it.
        double mr = 0, mi = 0;
        for (int j = 0; j < n; ++j) {
            mr += re[j * s];
            if (im) mi += im[j * s];
        }
        mr /= n;
        mi /= n;
        double ss = 0;
        for (int j = 0; j < n; ++j) {
            const double a = re[j * s] - mr, b = im ? im[j * s] - mi : 0.0;
            ss += a * a + b * b;
        }
        const double denom = (n == 1 || weight == 1) ? n : n - 1;
        const double v = n ? ss / denom : std::nan("");
        r.addr()[k] = root ? std::sqrt(v) : v;
    });
    return r;
}

Mm mode_impl(const Mm& x, const Mm* dim, Mm& count) {
    Mm X;
    if (!numeric("mode", x, X)) return x_M;
    if (X.pi) {
        error("mode: real data expected");
        return x_M;
    }
    if (X.ndims == 2 && X.dims[0] == 0 && X.dims[1] == 0 && !dim) {
        count = Mm(0.0);
        return Mm(std::nan(""));
    }
    const int d = dim_of("mode", X, dim);
    Mm r = reduced_shape(X, d, false);
    count = reduced_shape(X, d, false);
    std::vector<double> v;
    each_vector(X, d, [&](const double* re, const double*, std::size_t s, int n, int k) {
        v.assign(n, 0);
        for (int j = 0; j < n; ++j) v[j] = re[j * s];
        std::sort(v.begin(), v.end());
        double best = n ? v[0] : std::nan("");
        int most = 0;
        for (int j = 0; j < n;) {
            int e = j + 1;
            while (e < n && v[e] == v[j]) ++e;
            if (e - j > most) {  // strictly more: ties keep the smaller value, met first
                most = e - j;
                best = v[j];
            }
            j = e;
        }
        r.addr()[k] = best;
        count.addr()[k] = most;
    });
    return r;
}

// Columns of observations: a vector becomes one column.
bool observations(const char* function, const Mm& x, Mm& out) {
    if (!numeric(function, x, out)) return false;
    if (out.ndims > 2) {
        error("%s: 2-d matrix expected", function);
        return false;
    }
    if (out.dims[0] == 1) {
        Mm col(out.pi ? 1 : 0, 0, 0, out.dims[1], 1, ak_double);
        std::memcpy(col.addr(), out.addr(), sizeof(double) * out.size());
        if (out.pi) std::memcpy(col.addi(), out.addi(), sizeof(double) * out.size());
        out = col;
    }
    return true;
}

// The covariance matrix of the columns of X (real or complex: conj(xi - mi) * (xj - mj)).
Mm covariance(const Mm& X) {
    const int n = X.dims[0], p = X.dims[1];
    const bool complex = X.pi != nullptr;
    Mm C(complex ? 1 : 0, 0, 0, p, p, ak_double);
    std::vector<double> mr(p, 0), mi(p, 0);
    for (int c = 0; c < p; ++c) {
        for (int r = 0; r < n; ++r) {
            mr[c] += X.addr()[r + c * n];
            if (complex) mi[c] += X.addi()[r + c * n];
        }
        mr[c] /= n;
        mi[c] /= n;
    }
    const double denom = n > 1 ? n - 1 : 1;
    for (int a = 0; a < p; ++a)
        for (int b = 0; b < p; ++b) {
            double sr = 0, si = 0;
            for (int r = 0; r < n; ++r) {
                const double ar = X.addr()[r + a * n] - mr[a], ai = complex ? X.addi()[r + a * n] - mi[a] : 0;
                const double br = X.addr()[r + b * n] - mr[b], bi = complex ? X.addi()[r + b * n] - mi[b] : 0;
                sr += ar * br + ai * bi;
                si += ar * bi - ai * br;
            }
            C.addr()[a + b * p] = n ? sr / denom : std::nan("");
            if (complex) C.addi()[a + b * p] = n ? si / denom : std::nan("");
        }
    return C;
}

bool paired_columns(const char* function, const Mm& x, const Mm& y, Mm& out) {
    Mm X, Y;
    if (!numeric(function, x, X) || !numeric(function, y, Y)) return false;
    if (X.size() != Y.size()) {
        error("%s: x and y must have the same number of elements", function);
        return false;
    }
    const int n = X.size();
    out = Mm((X.pi || Y.pi) ? 1 : 0, 0, 0, n, 2, ak_double);
    for (int k = 0; k < n; ++k) {
        out.addr()[k] = X.addr()[k];
        out.addr()[k + n] = Y.addr()[k];
        if (out.pi) {
            out.addi()[k] = X.pi ? X.addi()[k] : 0;
            out.addi()[k + n] = Y.pi ? Y.addi()[k] : 0;
        }
    }
    return true;
}

Mm correlation(const Mm& C) {
    const int p = C.dims[0];
    Mm R(C.pi ? 1 : 0, 0, 0, p, p, ak_double);
    for (int a = 0; a < p; ++a)
        for (int b = 0; b < p; ++b) {
            const double s = std::sqrt(C.addr()[a + a * p] * C.addr()[b + b * p]);
            R.addr()[a + b * p] = a == b ? 1.0 : C.addr()[a + b * p] / s;
            if (C.pi) R.addi()[a + b * p] = a == b ? 0.0 : C.addi()[a + b * p] / s;
        }
    return R;
}

// A vector argument of count elements, or a reported error.
int whole_count(const char* function, const Mm& n) {
    const double v = scalar(n);
    if (!(v >= 0) || v > 2e9) {
        error("%s: number of points must be a non-negative integer", function);
        return -1;
    }
    return static_cast<int>(std::floor(v));
}

// The values of a grid vector, as doubles.
std::vector<double> grid_values(const Mm& v) {
    Mm d = mdouble(v);
    return std::vector<double>(d.addr(), d.addr() + d.size());
}

// A grid array of the given sizes, whose value at each place is the axis value of dimension axis.
Mm grid_array(const int* dims, int nd, int axis, const std::vector<double>& values) {
    Mm r(0, 0, 0, nd, dims, ak_double);
    int stride = 1;
    for (int d = 0; d < axis; ++d) stride *= dims[d];
    const int n = dims[axis];
    for (int k = 0; k < r.size(); ++k) r.addr()[k] = values[(k / stride) % n];
    return r;
}

}  // namespace

// The operand of mean: a sparse matrix stays sparse, so that its sums are taken on the entries and
// the mean is sparse too.
static bool mean_operand(const Mm& x, Mm& out) {
    if (!x.flags.sparse || x.flags.type != ak_double) return numeric("mean", x, out);
    out = x;
    out.flags.str = 0;
    return true;
}

Mm mean(const Mm& x) {
    Mm X;
    if (!mean_operand(x, X)) return x_M;
    if (X.ndims == 2 && X.dims[0] == 0 && X.dims[1] == 0) return Mm(std::nan(""));
    const int d = X.nsingleton() - 1;
    return sum(X, Mm(d + 1.0)) / Mm(static_cast<double>(extent(X, d)));
}
Mm mean(const Mm& x, const Mm& dim) {
    Mm X;
    if (!mean_operand(x, X)) return x_M;
    const int d = normalize_dim_argument("mean", X, dim);
    return sum(X, Mm(d + 1.0)) / Mm(static_cast<double>(extent(X, d)));
}
Mm var(const Mm& x) { return var_impl("var", x, nullptr, nullptr, false); }
Mm var(const Mm& x, const Mm& w) { return var_impl("var", x, &w, nullptr, false); }
Mm var(const Mm& x, const Mm& w, const Mm& dim) { return var_impl("var", x, &w, &dim, false); }
Mm stdM(const Mm& x) { return var_impl("std", x, nullptr, nullptr, true); }
Mm stdM(const Mm& x, const Mm& w) { return var_impl("std", x, &w, nullptr, true); }
Mm stdM(const Mm& x, const Mm& w, const Mm& dim) { return var_impl("std", x, &w, &dim, true); }

Mm mode(const Mm& x) {
    Mm count;
    return mode_impl(x, nullptr, count);
}
Mm mode(const Mm& x, const Mm& dim) {
    Mm count;
    return mode_impl(x, &dim, count);
}
Mm mode(const Mm& x, i_o_t, Mm& count) { return mode_impl(x, nullptr, count); }
Mm mode(const Mm& x, const Mm& dim, i_o_t, Mm& count) { return mode_impl(x, &dim, count); }

Mm cov(const Mm& x) {
    Mm X;
    if (!observations("cov", x, X)) return x_M;
    return covariance(X);
}
Mm cov(const Mm& x, const Mm& y) {
    Mm X;
    if (!paired_columns("cov", x, y, X)) return x_M;
    return covariance(X);
}
Mm corrcoef(const Mm& x) {
    Mm X;
    if (!observations("corrcoef", x, X)) return x_M;
    return correlation(covariance(X));
}
Mm corrcoef(const Mm& x, const Mm& y) {
    Mm X;
    if (!paired_columns("corrcoef", x, y, X)) return x_M;
    return correlation(covariance(X));
}

Mm histc(const Mm& x, const Mm& edges) {
    Mm bin;
    return histc(x, edges, i_o, bin);
}
Mm histc(const Mm& x, const Mm& edges, i_o_t, Mm& bin) {
    Mm X, E;
    if (!numeric("histc", x, X) || !numeric("histc", edges, E)) return x_M;
    const int ne = E.size();
    for (int k = 1; k < ne; ++k)
        if (!(E.addr()[k] >= E.addr()[k - 1])) {
            error("histc: edges must be non-decreasing");
            return x_M;
        }
    // Counts along the vector's own orientation; a matrix of data is counted as one vector.
    const bool row = E.dims[0] == 1 && X.dims[0] == 1;
    Mm n(0, 0, 0, row ? 1 : ne, row ? ne : 1, ak_double);
    std::fill(n.addr(), n.addr() + ne, 0.0);
    bin = Mm(0, 0, 0, X.ndims, X.dims, ak_double);
    const double* e = E.addr();
    for (int k = 0; k < X.size(); ++k) {
        const double v = X.addr()[k];
        int b = -1;
        if (ne && v == e[ne - 1]) {
            b = ne - 1;
        } else if (ne && v >= e[0] && v < e[ne - 1]) {
            b = static_cast<int>(std::upper_bound(e, e + ne, v) - e) - 1;
        }
        bin.addr()[k] = b + 1;
        if (b >= 0) n.addr()[b] += 1;
    }
    return n;
}

Mm cross(const Mm& a, const Mm& b) {
    Mm A, B;
    if (!numeric("cross", a, A) || !numeric("cross", b, B)) return x_M;
    if (A.ndims != B.ndims || !std::equal(A.dims, A.dims + 4, B.dims)) {
        error("cross: a and b must have the same size");
        return x_M;
    }
    int d = -1;
    for (int k = 0; k < A.ndims && d < 0; ++k)
        if (A.dims[k] == 3) d = k;
    if (d < 0) {
        error("cross: a dimension of length 3 is needed");
        return x_M;
    }
    const bool complex = A.pi || B.pi;
    Mm r(complex ? 1 : 0, 0, 0, A.ndims, A.dims, ak_double);
    int inner = 1;
    for (int k = 0; k < d; ++k) inner *= A.dims[k];
    for (int k = 0; k < A.size(); ++k) {
        if ((k / inner) % 3 != 0) continue;
        const int i0 = k, i1 = k + inner, i2 = k + 2 * inner;
        auto re = [](const Mm& m, int i) { return m.addr()[i]; };
        auto im = [](const Mm& m, int i) { return m.pi ? m.addi()[i] : 0.0; };
        const int idx[3] = {i0, i1, i2};
        for (int c = 0; c < 3; ++c) {
            const int p = idx[(c + 1) % 3], q = idx[(c + 2) % 3];
            r.addr()[idx[c]] = re(A, p) * re(B, q) - im(A, p) * im(B, q) - (re(A, q) * re(B, p) - im(A, q) * im(B, p));
            if (complex)
                r.addi()[idx[c]] = re(A, p) * im(B, q) + im(A, p) * re(B, q) - (re(A, q) * im(B, p) + im(A, q) * re(B, p));
        }
    }
    return r;
}

Mm dot(const Mm& a, const Mm& b) {
    Mm A, B;
    if (!numeric("dot", a, A) || !numeric("dot", b, B)) return x_M;
    if (A.size() != B.size()) {
        error("dot: a and b must have the same number of elements");
        return x_M;
    }
    // Two vectors of the same length are multiplied whatever their orientation.
    if (is_vector(A) && is_vector(B)) {
        Mm r((A.pi || B.pi) ? 1 : 0, 0, 0, 1, 1, ak_double);
        double sr = 0, si = 0;
        for (int k = 0; k < A.size(); ++k) {
            const double ar = A.addr()[k], ai = A.pi ? -A.addi()[k] : 0, br = B.addr()[k], bi = B.pi ? B.addi()[k] : 0;
            sr += ar * br - ai * bi;
            si += ar * bi + ai * br;
        }
        r.addr()[0] = sr;
        if (r.pi) r.addi()[0] = si;
        return r;
    }
    return sum(times(conj(A), B));
}
Mm dot(const Mm& a, const Mm& b, const Mm& dim) {
    Mm A, B;
    if (!numeric("dot", a, A) || !numeric("dot", b, B)) return x_M;
    return sum(times(conj(A), B), dim);
}

Mm linspace(const Mm& a, const Mm& b) { return linspace(a, b, Mm(100.0)); }
Mm linspace(const Mm& a, const Mm& b, const Mm& n) {
    const double lo = scalar(a), hi = scalar(b);
    const int count = whole_count("linspace", n);
    if (count < 0) return x_M;
    Mm r(0, 0, 0, 1, count, ak_double);
    // Each point from both ends, so that the first is a and the last is b exactly.
    for (int k = 0; k < count; ++k)
        r.addr()[k] = count == 1 ? hi : lo + (hi - lo) * k / (count - 1);
    if (count > 1) r.addr()[count - 1] = hi;
    return r;
}
Mm logspace(const Mm& a, const Mm& b) { return logspace(a, b, Mm(50.0)); }
Mm logspace(const Mm& a, const Mm& b, const Mm& n) {
    double hi = scalar(b);
    if (hi == std::acos(-1.0)) hi = std::log10(hi);
    Mm e = linspace(a, Mm(hi), n);
    for (int k = 0; k < e.size(); ++k) e.addr()[k] = std::pow(10.0, e.addr()[k]);
    return e;
}

Mm meshgrid(const Mm& x) {
    Mm yy;
    return meshgrid(x, x, i_o, yy);
}
Mm meshgrid(const Mm& x, i_o_t, Mm& yy) { return meshgrid(x, x, i_o, yy); }
Mm meshgrid(const Mm& x, const Mm& y) {
    Mm yy;
    return meshgrid(x, y, i_o, yy);
}
Mm meshgrid(const Mm& x, const Mm& y, i_o_t, Mm& yy) {
    if (error_numeric(x, "meshgrid") || error_numeric(y, "meshgrid")) return x_M;
    const std::vector<double> xv = grid_values(x), yv = grid_values(y);
    const int dims[2] = {static_cast<int>(yv.size()), static_cast<int>(xv.size())};
    yy = grid_array(dims, 2, 0, yv);
    return grid_array(dims, 2, 1, xv);
}
Mm meshgrid(const Mm& x, const Mm& y, const Mm& z, i_o_t, Mm& yy, Mm& zz) {
    if (error_numeric(x, "meshgrid") || error_numeric(y, "meshgrid") || error_numeric(z, "meshgrid")) return x_M;
    const std::vector<double> xv = grid_values(x), yv = grid_values(y), zv = grid_values(z);
    const int dims[3] = {static_cast<int>(yv.size()), static_cast<int>(xv.size()), static_cast<int>(zv.size())};
    yy = grid_array(dims, 3, 0, yv);
    zz = grid_array(dims, 3, 2, zv);
    return grid_array(dims, 3, 1, xv);
}
Mm ndgrid(const Mm& x) {
    if (error_numeric(x, "ndgrid")) return x_M;
    const std::vector<double> xv = grid_values(x);
    const int dims[2] = {static_cast<int>(xv.size()), 1};
    return grid_array(dims, 2, 0, xv);
}
Mm ndgrid(const Mm& x, i_o_t, Mm& yy) { return ndgrid(x, x, i_o, yy); }
Mm ndgrid(const Mm& x, const Mm& y, i_o_t, Mm& yy) {
    if (error_numeric(x, "ndgrid") || error_numeric(y, "ndgrid")) return x_M;
    const std::vector<double> xv = grid_values(x), yv = grid_values(y);
    const int dims[2] = {static_cast<int>(xv.size()), static_cast<int>(yv.size())};
    yy = grid_array(dims, 2, 1, yv);
    return grid_array(dims, 2, 0, xv);
}
Mm ndgrid(const Mm& x, const Mm& y, const Mm& z, i_o_t, Mm& yy, Mm& zz) {
    if (error_numeric(x, "ndgrid") || error_numeric(y, "ndgrid") || error_numeric(z, "ndgrid")) return x_M;
    const std::vector<double> xv = grid_values(x), yv = grid_values(y), zv = grid_values(z);
    const int dims[3] = {static_cast<int>(xv.size()), static_cast<int>(yv.size()), static_cast<int>(zv.size())};
    yy = grid_array(dims, 3, 1, yv);
    zz = grid_array(dims, 3, 2, zv);
    return grid_array(dims, 3, 0, xv);
}

AK_BUILTIN("mean", AK_FN(mean, const Mm&), AK_FN(mean, const Mm&, const Mm&));
AK_BUILTIN("var", AK_FN(var, const Mm&), AK_FN(var, const Mm&, const Mm&), AK_FN(var, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("std", AK_FN(stdM, const Mm&), AK_FN(stdM, const Mm&, const Mm&), AK_FN(stdM, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("mode", AK_FN(mode, const Mm&), AK_FN(mode, const Mm&, const Mm&), AK_FN(mode, const Mm&, i_o_t, Mm&),
           AK_FN(mode, const Mm&, const Mm&, i_o_t, Mm&));
AK_BUILTIN("cov", AK_FN(cov, const Mm&), AK_FN(cov, const Mm&, const Mm&));
AK_BUILTIN("corrcoef", AK_FN(corrcoef, const Mm&), AK_FN(corrcoef, const Mm&, const Mm&));
AK_BUILTIN("histc", AK_FN(histc, const Mm&, const Mm&), AK_FN(histc, const Mm&, const Mm&, i_o_t, Mm&));
AK_BUILTIN("cross", cross);
AK_BUILTIN("dot", AK_FN(dot, const Mm&, const Mm&), AK_FN(dot, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("linspace", AK_FN(linspace, const Mm&, const Mm&), AK_FN(linspace, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("logspace", AK_FN(logspace, const Mm&, const Mm&), AK_FN(logspace, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("meshgrid", AK_FN(meshgrid, const Mm&), AK_FN(meshgrid, const Mm&, i_o_t, Mm&), AK_FN(meshgrid, const Mm&, const Mm&),
           AK_FN(meshgrid, const Mm&, const Mm&, i_o_t, Mm&), AK_FN(meshgrid, const Mm&, const Mm&, const Mm&, i_o_t, Mm&, Mm&));
AK_BUILTIN("ndgrid", AK_FN(ndgrid, const Mm&), AK_FN(ndgrid, const Mm&, i_o_t, Mm&), AK_FN(ndgrid, const Mm&, const Mm&, i_o_t, Mm&),
           AK_FN(ndgrid, const Mm&, const Mm&, const Mm&, i_o_t, Mm&, Mm&));
