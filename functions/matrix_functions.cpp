// Functions of square matrices. The work is done in complex arithmetic on LAPACK and BLAS (a real
// matrix stays exactly real through it where the function is real), following Higham, "The scaling
// and squaring method for the matrix exponential revisited" (2005), the Schur method of Bjorck and
// Hammarling for square roots, and inverse scaling and squaring for the logarithm.
#include "arklib/matrix_functions.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>
#include <string>
#include <vector>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"

using cplx = std::complex<double>;

extern "C" {
void zgemm_(const char* ta, const char* tb, const int* m, const int* n, const int* k, const cplx* alpha, const cplx* a,
            const int* lda, const cplx* b, const int* ldb, const cplx* beta, cplx* c, const int* ldc);
void zgesv_(const int* n, const int* nrhs, cplx* a, const int* lda, int* ipiv, cplx* b, const int* ldb, int* info);
void zgees_(const char* jobvs, const char* sort, int (*select)(const cplx*), const int* n, cplx* a, const int* lda, int* sdim,
            cplx* w, cplx* vs, const int* ldvs, cplx* work, const int* lwork, double* rwork, int* bwork, int* info);
}

namespace {

// A dense complex n x n matrix, column-major.
struct cmat {
    int n = 0;
    std::vector<cplx> v;
    explicit cmat(int size = 0, cplx fill = 0.0) : n(size), v(static_cast<std::size_t>(size) * size, fill) {}
    cplx& operator()(int i, int j) { return v[i + static_cast<std::size_t>(j) * n]; }
    cplx operator()(int i, int j) const { return v[i + static_cast<std::size_t>(j) * n]; }
    static cmat identity(int n) {
        cmat m(n);
        for (int k = 0; k < n; ++k) m(k, k) = 1.0;
        return m;
    }
};

cmat operator*(const cmat& a, const cmat& b) {
    cmat c(a.n);
    const cplx one = 1.0, zero = 0.0;
    if (a.n) zgemm_("N", "N", &a.n, &a.n, &a.n, &one, a.v.data(), &a.n, b.v.data(), &b.n, &zero, c.v.data(), &c.n);
    return c;
}
cmat operator+(cmat a, const cmat& b) {
    for (std::size_t k = 0; k < a.v.size(); ++k) a.v[k] += b.v[k];
    return a;
}
cmat operator*(cplx s, cmat a) {
    for (cplx& x : a.v) x *= s;
    return a;
}

// a \ b.
cmat solve(cmat a, cmat b) {
    std::vector<int> pivots(a.n);
    int info = 0;
    if (a.n) zgesv_(&a.n, &b.n, a.v.data(), &a.n, pivots.data(), b.v.data(), &b.n, &info);
    return b;
}

// The complex Schur form a = q t q'.
void schur(cmat a, cmat& t, cmat& q) {
    const int n = a.n;
    int sdim = 0, info = 0, lwork = -1;
    std::vector<cplx> w(n);
    std::vector<double> rwork(n);
    q = cmat(n);
    cplx query;
    zgees_("V", "N", nullptr, &n, a.v.data(), &n, &sdim, w.data(), q.v.data(), &n, &query, &lwork, rwork.data(), nullptr, &info);
    lwork = std::max(1, static_cast<int>(query.real()));
    std::vector<cplx> work(lwork);
    zgees_("V", "N", nullptr, &n, a.v.data(), &n, &sdim, w.data(), q.v.data(), &n, work.data(), &lwork, rwork.data(), nullptr, &info);
    t = a;
}

cmat adjoint(const cmat& a) {
    cmat r(a.n);
    for (int i = 0; i < a.n; ++i)
        for (int j = 0; j < a.n; ++j) r(i, j) = std::conj(a(j, i));
    return r;
}

double norm1(const cmat& a) {
    double best = 0;
    for (int j = 0; j < a.n; ++j) {
        double s = 0;
        for (int i = 0; i < a.n; ++i) s += std::abs(a(i, j));
        best = std::max(best, s);
    }
    return best;
}

// The square root of an upper triangular matrix, column by column.
cmat triangular_sqrt(const cmat& t) {
    const int n = t.n;
    cmat r(n);
    for (int j = 0; j < n; ++j) {
        r(j, j) = std::sqrt(t(j, j));
        for (int i = j - 1; i >= 0; --i) {
            cplx s = t(i, j);
            for (int k = i + 1; k < j; ++k) s -= r(i, k) * r(k, j);
            const cplx d = r(i, i) + r(j, j);
            r(i, j) = d == 0.0 ? 0.0 : s / d;
        }
    }
    return r;
}

bool square_input(const char* function, const Mm& a, cmat& out) {
    a.warn_uninit();
    if (error_numeric(a, function) || error_square(a, function)) return false;
    Mm d = mdouble(a);
    out = cmat(d.dims[0]);
    for (int k = 0; k < d.size(); ++k) out.v[k] = {d.addr()[k], d.pi ? d.addi()[k] : 0.0};
    for (const cplx& z : out.v)
        if (!std::isfinite(z.real()) || !std::isfinite(z.imag())) {
            error("%s: the matrix must be finite", function);
            return false;
        }
    return true;
}

// The result, real when its imaginary parts are all zero, or (for a real input whose answer is
// real in exact arithmetic) within rounding of zero.
Mm result_of(const cmat& m, bool clean_rounding) {
    double largest = 0, imag = 0;
    for (const cplx& z : m.v) {
        largest = std::max(largest, std::abs(z));
        imag = std::max(imag, std::fabs(z.imag()));
    }
    const bool real = imag == 0 || (clean_rounding && imag <= 1e3 * 2.2e-16 * m.n * largest);
    Mm r(real ? 0 : 1, 0, 0, m.n, m.n, ak_double);
    for (std::size_t k = 0; k < m.v.size(); ++k) {
        r.addr()[k] = m.v[k].real();
        if (!real) r.addi()[k] = m.v[k].imag();
    }
    return r;
}

bool is_real(const cmat& m) {
    for (const cplx& z : m.v)
        if (z.imag() != 0) return false;
    return true;
}

cmat exponential(const cmat& a) {
    const int n = a.n;
    static const double b[14] = {64764752532480000.0, 32382376266240000.0, 7771770303897600.0, 1187353796428800.0,
                                 129060195264000.0,   10559470521600.0,    670442572800.0,     33522128640.0,
                                 1323241920.0,        40840800.0,          960960.0,           16380.0,
                                 182.0,               1.0};
    // Scale so that the norm is at most theta_13 = 5.37, then square the result back.
    const double theta = 5.371920351148152;
    const double nrm = norm1(a);
    int s = nrm > theta ? static_cast<int>(std::ceil(std::log2(nrm / theta))) : 0;
    const cmat x = std::ldexp(1.0, -s) * a;
    const cmat I = cmat::identity(n);
    const cmat x2 = x * x, x4 = x2 * x2, x6 = x2 * x4;
    const cmat u = x * ((x6 * (b[13] * x6 + b[11] * x4 + b[9] * x2)) + b[7] * x6 + b[5] * x4 + b[3] * x2 + b[1] * I);
    const cmat v = (x6 * (b[12] * x6 + b[10] * x4 + b[8] * x2)) + b[6] * x6 + b[4] * x4 + b[2] * x2 + b[0] * I;
    cmat r = solve(v + cplx(-1.0) * u, v + u);
    for (int k = 0; k < s; ++k) r = r * r;
    return r;
}

// Gauss-Legendre nodes and weights on [0, 1], by Newton's method on the Legendre polynomial.
void gauss_legendre(int m, std::vector<double>& x, std::vector<double>& w) {
    x.resize(m);
    w.resize(m);
    const double pi = std::acos(-1.0);
    for (int i = 0; i < m; ++i) {
        double z = std::cos(pi * (i + 0.75) / (m + 0.5)), dp = 0;
        for (int it = 0; it < 100; ++it) {
            double p0 = 1, p1 = z;
            for (int k = 2; k <= m; ++k) {
                const double p2 = ((2 * k - 1) * z * p1 - (k - 1) * p0) / k;
                p0 = p1;
                p1 = p2;
            }
            dp = m * (z * p1 - p0) / (z * z - 1);
            const double dz = p1 / dp;
            z -= dz;
            if (std::fabs(dz) < 1e-16) break;
        }
        x[i] = (1 - z) / 2;
        w[i] = 1 / ((1 - z * z) * dp * dp);
    }
}

cmat logarithm(const cmat& a, bool& singular) {
    const int n = a.n;
    cmat t, q;
    schur(a, t, q);
    singular = false;
    for (int k = 0; k < n; ++k)
        if (t(k, k) == 0.0) singular = true;
    // Square roots until T is close to I, then log(I + X) by the Pade approximant in partial
    // fractions: the sum of w_j X (I + x_j X)^-1 over Gauss-Legendre points.
    const cmat I = cmat::identity(n);
    int k = 0;
    while (k < 60 && norm1(t + cplx(-1.0) * I) > 0.25) {
        t = triangular_sqrt(t);
        ++k;
    }
    const cmat x = t + cplx(-1.0) * I;
    std::vector<double> nodes, weights;
    gauss_legendre(8, nodes, weights);
    cmat sum(n);
    for (int j = 0; j < 8; ++j) sum = sum + cplx(weights[j]) * solve(I + cplx(nodes[j]) * x, x);
    const cmat l = std::ldexp(1.0, k) * sum;
    return q * l * adjoint(q);
}

cmat square_root(const cmat& a) {
    cmat t, q;
    schur(a, t, q);
    return q * triangular_sqrt(t) * adjoint(q);
}

}  // namespace

Mm expm(const Mm& a) {
    cmat m;
    if (!square_input("expm", a, m)) return x_M;
    return result_of(exponential(m), false);
}

Mm logm(const Mm& a) {
    cmat m;
    if (!square_input("logm", a, m)) return x_M;
    bool singular;
    cmat l = logarithm(m, singular);
    if (singular) warning("logm: Matrix is singular; the logarithm is not defined.");
    // A real matrix without eigenvalues on the negative real axis has a real logarithm.
    return result_of(l, is_real(m));
}

Mm sqrtm(const Mm& a) {
    cmat m;
    if (!square_input("sqrtm", a, m)) return x_M;
    return result_of(square_root(m), is_real(m));
}

Mm funm(const Mm& a, const Mm& f) {
    char name[16];
    Mstr(f, name, sizeof name);
    const std::string w = name;
    cmat m;
    if (!square_input("funm", a, m)) return x_M;
    const bool real = is_real(m);
    if (w == "exp") return result_of(exponential(m), false);
    if (w == "sqrt") return result_of(square_root(m), real);
    if (w == "log") {
        bool singular;
        return result_of(logarithm(m, singular), real);
    }
    if (w == "sin" || w == "cos") {
        const cmat p = exponential(cplx(0, 1) * m), q = exponential(cplx(0, -1) * m);
        return result_of(w == "cos" ? cplx(0.5) * (p + q) : cplx(0, -0.5) * (p + cplx(-1.0) * q), real);
    }
    if (w == "sinh" || w == "cosh") {
        const cmat p = exponential(m), q = exponential(cplx(-1.0) * m);
        return result_of(cplx(0.5) * (w == "cosh" ? p + q : p + cplx(-1.0) * q), real);
    }
    error("funm: unknown function '%s'; use exp, log, sqrt, sin, cos, sinh or cosh", name);
    return x_M;
}

Mm kron(const Mm& a, const Mm& b) {
    if (error_numeric(a, "kron") || error_numeric(b, "kron") || error_2d(a, "kron") || error_2d(b, "kron")) return x_M;
    Mm A = mdouble(a), B = mdouble(b);
    const int ma = A.dims[0], na = A.dims[1], mb = B.dims[0], nb = B.dims[1];
    const bool complex = A.pi || B.pi;
    Mm r(complex ? 1 : 0, 0, 0, ma * mb, na * nb, ak_double);
    const int rows = ma * mb;
    for (int ja = 0; ja < na; ++ja)
        for (int ia = 0; ia < ma; ++ia) {
            const cplx x(A.addr()[ia + ja * ma], A.pi ? A.addi()[ia + ja * ma] : 0.0);
            for (int jb = 0; jb < nb; ++jb)
                for (int ib = 0; ib < mb; ++ib) {
                    const cplx y(B.addr()[ib + jb * mb], B.pi ? B.addi()[ib + jb * mb] : 0.0);
                    const std::size_t at = (ia * mb + ib) + static_cast<std::size_t>(ja * nb + jb) * rows;
                    const cplx p = x * y;
                    r.addr()[at] = p.real();
                    if (complex) r.addi()[at] = p.imag();
                }
        }
    return r;
}

Mm trace(const Mm& a) {
    if (error_numeric(a, "trace") || error_square(a, "trace")) return x_M;
    Mm A = mdouble(a);
    cplx s = 0;
    for (int k = 0; k < A.dims[0]; ++k) s += cplx(A.addr()[k + k * A.dims[0]], A.pi ? A.addi()[k + k * A.dims[0]] : 0.0);
    if (s.imag() == 0 && !A.pi) return Mm(s.real());
    Mm r(1, 0, 0, 1, 1, ak_double);
    r.addr()[0] = s.real();
    r.addi()[0] = s.imag();
    return r;
}

AK_BUILTIN("expm", expm);
AK_BUILTIN("logm", logm);
AK_BUILTIN("sqrtm", sqrtm);
AK_BUILTIN("funm", funm);
AK_BUILTIN("kron", kron);
AK_BUILTIN("trace", trace);
