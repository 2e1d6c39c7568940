// Polynomials: construction from roots, evaluation, fitting, roots, products, division, calculus
// and partial fractions. Coefficients are worked as complex numbers and handed back real when
// their imaginary parts are all zero.
#include "arklib/polynomials.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>
#include <vector>

#include "arklib/arith.h"
#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/constructors.h"

extern "C" {
void dgebal_(const char* job, const int* n, double* a, const int* lda, int* ilo, int* ihi, double* scale, int* info);
void dhseqr_(const char* job, const char* compz, const int* n, const int* ilo, const int* ihi, double* h, const int* ldh,
             double* wr, double* wi, double* z, const int* ldz, double* work, const int* lwork, int* info);
void dgeev_(const char* jobvl, const char* jobvr, const int* n, double* a, const int* lda, double* wr, double* wi, double* vl,
            const int* ldvl, double* vr, const int* ldvr, double* work, const int* lwork, int* info);
}

namespace {

using cplx = std::complex<double>;
using cvec = std::vector<cplx>;

cvec coefficients(const Mm& m) {
    Mm d = mdouble(m);
    cvec v(d.size());
    for (int k = 0; k < d.size(); ++k) v[k] = {d.addr()[k], d.pi ? d.addi()[k] : 0.0};
    return v;
}

bool numeric_vector(const char* function, const Mm& m) {
    m.warn_uninit();
    if (error_numeric(m, function)) return false;
    if (!is_vector(m) && m.size() != 0) {
        error("%s: a vector of coefficients expected", function);
        return false;
    }
    return true;
}

// A row (or column) of the values, real when every imaginary part is zero.
Mm vector_of(const cvec& v, bool column = false) {
    bool complex = false;
    for (const cplx& c : v) complex = complex || c.imag() != 0;
    const int n = static_cast<int>(v.size());
    Mm r(complex ? 1 : 0, 0, 0, column ? n : 1, column ? 1 : n, ak_double);
    for (int k = 0; k < n; ++k) {
        r.addr()[k] = v[k].real();
        if (complex) r.addi()[k] = v[k].imag();
    }
    return r;
}

cvec multiply(const cvec& a, const cvec& b) {
    if (a.empty() || b.empty()) return {};
    cvec r(a.size() + b.size() - 1, 0.0);
    for (std::size_t i = 0; i < a.size(); ++i)
        for (std::size_t j = 0; j < b.size(); ++j) r[i + j] += a[i] * b[j];
    return r;
}

cvec derivative(const cvec& p) {
    const int n = static_cast<int>(p.size());
    if (n <= 1) return {0.0};
    cvec d(n - 1);
    for (int k = 0; k < n - 1; ++k) d[k] = p[k] * static_cast<double>(n - 1 - k);
    return d;
}

// a + sign * b, the shorter padded with leading zeros.
cvec combine(cvec a, cvec b, double sign) {
    if (a.size() < b.size()) a.insert(a.begin(), b.size() - a.size(), 0.0);
    if (b.size() < a.size()) b.insert(b.begin(), a.size() - b.size(), 0.0);
    for (std::size_t k = 0; k < a.size(); ++k) a[k] += sign * b[k];
    return a;
}

cvec strip_leading_zeros(cvec p) {
    std::size_t k = 0;
    while (k + 1 < p.size() && p[k] == 0.0) ++k;
    return cvec(p.begin() + static_cast<long>(k), p.end());
}

cplx value_at(const cvec& p, cplx x) {
    cplx v = 0;
    for (const cplx& c : p) v = v * x + c;
    return v;
}

// The polynomial with these roots; real when the roots pair up with their conjugates.
cvec from_roots(const cvec& r) {
    cvec p{1.0};
    for (const cplx& z : r) p = multiply(p, {1.0, -z});
    std::vector<cplx> up, down;
    for (const cplx& z : r) {
        if (z.imag() > 0) up.push_back(z);
        if (z.imag() < 0) down.push_back(std::conj(z));
    }
    auto by_value = [](const cplx& a, const cplx& b) { return a.real() != b.real() ? a.real() < b.real() : a.imag() < b.imag(); };
    std::sort(up.begin(), up.end(), by_value);
    std::sort(down.begin(), down.end(), by_value);
    if (up == down)
        for (cplx& c : p) c = c.real();
    return p;
}

// Eigenvalues of a real upper Hessenberg matrix (column-major, n x n), after scaling.
bool hessenberg_eigenvalues(std::vector<double>& h, int n, cvec& out) {
    int ilo, ihi, info;
    std::vector<double> scale(n), wr(n), wi(n);
    dgebal_("S", &n, h.data(), &n, &ilo, &ihi, scale.data(), &info);
    int lwork = -1;
    double query, z = 0;
    const int one = 1;
    dhseqr_("E", "N", &n, &ilo, &ihi, h.data(), &n, wr.data(), wi.data(), &z, &one, &query, &lwork, &info);
    lwork = std::max(1, static_cast<int>(query));
    std::vector<double> work(lwork);
    dhseqr_("E", "N", &n, &ilo, &ihi, h.data(), &n, wr.data(), wi.data(), &z, &one, work.data(), &lwork, &info);
    out.resize(n);
    for (int k = 0; k < n; ++k) out[k] = {wr[k], wi[k]};
    return info == 0;
}

bool roots_of(const char* function, const cvec& p_in, cvec& out) {
    out.clear();
    cvec p;
    for (const cplx& c : p_in)
        if (!std::isfinite(c.real()) || !std::isfinite(c.imag())) {
            error("%s: coefficients must be finite", function);
            return false;
        }
    // Leading zeros do not count; trailing zeros are roots at zero.
    std::size_t first = 0, last = p_in.size();
    while (first < last && p_in[first] == 0.0) ++first;
    while (last > first && p_in[last - 1] == 0.0) --last;
    const std::size_t zeros = p_in.size() - last;
    p.assign(p_in.begin() + static_cast<long>(first), p_in.begin() + static_cast<long>(last));
    const int n = static_cast<int>(p.size()) - 1;
    bool complex = false;
    for (const cplx& c : p) complex = complex || c.imag() != 0;
    if (n >= 1) {
        if (complex) {
            error("%s: complex coefficients are not supported", function);
            return false;
        }
        // The companion matrix is already upper Hessenberg.
        std::vector<double> h(static_cast<std::size_t>(n) * n, 0.0);
        for (int j = 0; j < n; ++j) h[static_cast<std::size_t>(j) * n] = -(p[j + 1] / p[0]).real();
        for (int i = 1; i < n; ++i) h[i + static_cast<std::size_t>(i - 1) * n] = 1.0;
        if (!hessenberg_eigenvalues(h, n, out)) {
            error("%s: the eigenvalue iteration did not converge", function);
            return false;
        }
    }
    out.insert(out.end(), zeros, 0.0);
    return true;
}

// ---- least squares for polyfit ---------------------------------------------------------------------

// Householder QR of the m x n matrix a (column-major, m >= n): R in the upper triangle, and Q'y
// in y.
void householder(std::vector<double>& a, int m, int n, std::vector<double>& y) {
    for (int j = 0; j < n; ++j) {
        double norm = 0;
        for (int i = j; i < m; ++i) norm += a[i + j * m] * a[i + j * m];
        norm = std::sqrt(norm);
        if (norm == 0) continue;
        const double alpha = a[j + j * m] > 0 ? -norm : norm;
        std::vector<double> v(m - j);
        for (int i = j; i < m; ++i) v[i - j] = a[i + j * m];
        v[0] -= alpha;
        double vv = 0;
        for (double e : v) vv += e * e;
        if (vv == 0) continue;
        auto reflect = [&](double* col) {
            double s = 0;
            for (int i = j; i < m; ++i) s += v[i - j] * col[i];
            s = 2 * s / vv;
            for (int i = j; i < m; ++i) col[i] -= s * v[i - j];
        };
        for (int c = j; c < n; ++c) reflect(&a[static_cast<std::size_t>(c) * m]);
        reflect(y.data());
    }
}

// Field k of a structure, or an empty matrix.
Mm field_or_empty(const Mm& s, const char* name) { return s.fields && s.findfield(name, 0) >= 0 ? getfield(s, TM(name)) : Mm(); }

Mm polyfit_impl(const Mm& x, const Mm& y, const Mm& n_arg, Mm* S_out, Mm* mu_out) {
    if (error_numeric(x, "polyfit") || error_numeric(y, "polyfit")) return x_M;
    Mm X = mdouble(x), Y = mdouble(y);
    if (X.size() != Y.size()) {
        error("polyfit: x and y must have the same number of elements");
        return x_M;
    }
    if (X.pi || Y.pi) {
        error("polyfit: real data expected");
        return x_M;
    }
    const double nd = scalar(n_arg);
    if (!(nd >= 0) || nd != std::floor(nd) || nd > 1000) {
        error("polyfit: degree must be a non-negative integer");
        return x_M;
    }
    const int n = static_cast<int>(nd) + 1, m = X.size();
    std::vector<double> xs(X.addr(), X.addr() + m);
    double mean = 0, sd = 1;
    if (mu_out) {
        for (double v : xs) mean += v;
        mean /= std::max(1, m);
        double ss = 0;
        for (double v : xs) ss += (v - mean) * (v - mean);
        sd = m > 1 ? std::sqrt(ss / (m - 1)) : 1;
        for (double& v : xs) v = (v - mean) / sd;
        Mm mu(0, 0, 0, 2, 1, ak_double);
        mu.addr()[0] = mean;
        mu.addr()[1] = sd;
        *mu_out = mu;
    }
    const int rows = std::max(m, n);  // too few points: the extra rows are zero, the fit not unique
    std::vector<double> a(static_cast<std::size_t>(rows) * n, 0.0), rhs(rows, 0.0);
    for (int i = 0; i < m; ++i) {
        double p = 1;
        for (int j = n - 1; j >= 0; --j) {
            a[i + static_cast<std::size_t>(j) * rows] = p;
            p *= xs[i];
        }
        rhs[i] = Y.addr()[i];
    }
    std::vector<double> vander = a;
    householder(a, rows, n, rhs);
    Mm p(0, 0, 0, 1, n, ak_double);
    for (int j = n - 1; j >= 0; --j) {
        double s = rhs[j];
        for (int c = j + 1; c < n; ++c) s -= a[j + static_cast<std::size_t>(c) * rows] * p.addr()[c];
        const double d = a[j + static_cast<std::size_t>(j) * rows];
        p.addr()[j] = d != 0 ? s / d : 0.0;
    }
    if (S_out) {
        Mm R(0, 0, 0, n, n, ak_double);
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j) R.addr()[i + j * n] = j >= i ? a[i + static_cast<std::size_t>(j) * rows] : 0.0;
        double normr = 0;
        for (int i = 0; i < m; ++i) {
            double fit = 0;
            for (int j = 0; j < n; ++j) fit += vander[i + static_cast<std::size_t>(j) * rows] * p.addr()[j];
            normr += (Y.addr()[i] - fit) * (Y.addr()[i] - fit);
        }
        Mm list(0, 0, 0, 1, 6, ak_mm);
        Mm* e = static_cast<Mm*>(list.pr);
        e[0] = TM("R");
        e[1] = R;
        e[2] = TM("df");
        e[3] = Mm(static_cast<double>(std::max(0, m - n)));
        e[4] = TM("normr");
        e[5] = Mm(std::sqrt(normr));
        *S_out = mstruct(list);
    }
    return p;
}

Mm polyval_impl(const Mm& p, const Mm& x, const Mm* S, const Mm* mu, Mm* delta) {
    if (!numeric_vector("polyval", p) || error_numeric(x, "polyval")) return x_M;
    const cvec c = coefficients(p);
    Mm X = mdouble(x);
    double centre = 0, scale = 1;
    if (mu && mu->size() >= 2) {
        Mm m = mdouble(*mu);
        centre = m.addr()[0];
        scale = m.addr()[1];
    }
    bool complex = X.pi != nullptr;
    for (const cplx& v : c) complex = complex || v.imag() != 0;
    Mm r(complex ? 1 : 0, 0, 0, X.ndims, X.dims, ak_double);
    for (int k = 0; k < X.size(); ++k) {
        const cplx v = value_at(c, (cplx(X.addr()[k], X.pi ? X.addi()[k] : 0.0) - centre) / scale);
        r.addr()[k] = v.real();
        if (complex) r.addi()[k] = v.imag();
    }
    if (delta) {
        // delta = normr / sqrt(df) * sqrt(1 + |a R^-1|^2), a the row of powers of each point.
        Mm R = S ? mdouble(field_or_empty(*S, "R")) : Mm();
        const double df = S ? scalar(field_or_empty(*S, "df")) : 0, normr = S ? scalar(field_or_empty(*S, "normr")) : 0;
        const int n = static_cast<int>(c.size());
        if (R.dims[0] != n || R.dims[1] != n) {
            error("polyval: S must be the structure given by polyfit for this polynomial");
            return x_M;
        }
        *delta = Mm(0, 0, 0, X.ndims, X.dims, ak_double);
        std::vector<double> row(n), z(n);
        for (int k = 0; k < X.size(); ++k) {
            double pw = 1;
            const double u = (X.addr()[k] - centre) / scale;
            for (int j = n - 1; j >= 0; --j) {
                row[j] = pw;
                pw *= u;
            }
            // Solve R' z = row' (forward substitution).
            double ss = 0;
            for (int i = 0; i < n; ++i) {
                double s = row[i];
                for (int j = 0; j < i; ++j) s -= R.addr()[j + i * n] * z[j];
                z[i] = s / R.addr()[i + i * n];
                ss += z[i] * z[i];
            }
            delta->addr()[k] = df > 0 ? normr / std::sqrt(df) * std::sqrt(1 + ss) : INFINITY;
        }
    }
    return r;
}

// ---- partial fractions ------------------------------------------------------------------------------

Mm residue_impl(const Mm& b_arg, const Mm& a_arg, Mm& p_out, Mm& k_out) {
    if (!numeric_vector("residue", b_arg) || !numeric_vector("residue", a_arg)) return x_M;
    cvec b = strip_leading_zeros(coefficients(b_arg)), a = strip_leading_zeros(coefficients(a_arg));
    if (a.empty() || a[0] == 0.0) {
        error("residue: the denominator must not be zero");
        return x_M;
    }
    // The direct term: the quotient when the numerator's degree is not below the denominator's.
    cvec k;
    if (b.size() >= a.size()) {
        cvec rem = b;
        k.assign(b.size() - a.size() + 1, 0.0);
        for (std::size_t i = 0; i < k.size(); ++i) {
            k[i] = rem[i] / a[0];
            for (std::size_t j = 0; j < a.size(); ++j) rem[i + j] -= k[i] * a[j];
        }
        b.assign(rem.end() - static_cast<long>(a.size() - 1), rem.end());
    }
    const cplx lead = a[0];
    for (cplx& c : a) c /= lead;
    for (cplx& c : b) c /= lead;
    cvec poles;
    if (!roots_of("residue", a, poles)) return x_M;
    // Poles closer than a thousandth (relative) are one pole taken several times.
    std::sort(poles.begin(), poles.end(), [](const cplx& x, const cplx& y) {
        return x.real() != y.real() ? x.real() > y.real() : x.imag() > y.imag();
    });
    std::vector<std::pair<cplx, int>> groups;
    std::vector<bool> used(poles.size(), false);
    for (std::size_t i = 0; i < poles.size(); ++i) {
        if (used[i]) continue;
        cplx sum = poles[i];
        int count = 1;
        used[i] = true;
        for (std::size_t j = i + 1; j < poles.size(); ++j)
            if (!used[j] && std::abs(poles[j] - poles[i]) <= 1e-3 * std::max(1.0, std::abs(poles[i]))) {
                used[j] = true;
                sum += poles[j];
                ++count;
            }
        groups.push_back({sum / static_cast<double>(count), count});
    }
    cvec r, p;
    for (std::size_t g = 0; g < groups.size(); ++g) {
        const cplx p0 = groups[g].first;
        const int m = groups[g].second;
        // The denominator without this pole: the product over the other groups.
        cvec den{1.0};
        for (std::size_t h = 0; h < groups.size(); ++h)
            if (h != g)
                for (int t = 0; t < groups[h].second; ++t) den = multiply(den, {1.0, -groups[h].first});
        // Coefficient of 1/(s - p0)^(m - i) is the i-th derivative of b/den at p0 over i!.
        cvec num = b, d = den;
        std::vector<cplx> coef(m);
        double factorial = 1;
        for (int i = 0; i < m; ++i) {
            if (i) factorial *= i;
            coef[m - 1 - i] = value_at(num, p0) / value_at(d, p0) / factorial;
            cvec next_num = combine(multiply(derivative(num), d), multiply(num, derivative(d)), -1);
            d = multiply(d, d);
            num = next_num;
        }
        for (int j = 0; j < m; ++j) {
            cplx c = coef[j];
            if (p0.imag() == 0) c = c.real();  // a real pole of real data has a real residue
            r.push_back(c);
            p.push_back(p0);
        }
    }
    p_out = vector_of(p, true);
    k_out = vector_of(k);
    return vector_of(r, true);
}

}  // namespace

Mm poly(const Mm& a) {
    a.warn_uninit();
    if (error_numeric(a, "poly")) return x_M;
    Mm A = mdouble(a);
    if (A.size() == 0) return Mm(1.0);
    if (is_vector(A)) return vector_of(from_roots(coefficients(A)));
    if (error_square(A, "poly")) return x_M;
    if (A.pi) {
        error("poly: real matrix expected");
        return x_M;
    }
    int n = A.dims[0], info, lwork = -1;
    std::vector<double> h(A.addr(), A.addr() + A.size()), wr(n), wi(n);
    double query, none = 0;
    const int one = 1;
    dgeev_("N", "N", &n, h.data(), &n, wr.data(), wi.data(), &none, &one, &none, &one, &query, &lwork, &info);
    lwork = std::max(1, static_cast<int>(query));
    std::vector<double> work(lwork);
    dgeev_("N", "N", &n, h.data(), &n, wr.data(), wi.data(), &none, &one, &none, &one, work.data(), &lwork, &info);
    cvec e(n);
    for (int k = 0; k < n; ++k) e[k] = {wr[k], wi[k]};
    return vector_of(from_roots(e));
}

Mm polyval(const Mm& p, const Mm& x) { return polyval_impl(p, x, nullptr, nullptr, nullptr); }
Mm polyval(const Mm& p, const Mm& x, const Mm& S, i_o_t, Mm& delta) { return polyval_impl(p, x, &S, nullptr, &delta); }
Mm polyval(const Mm& p, const Mm& x, const Mm& S, const Mm& mu) { return polyval_impl(p, x, &S, &mu, nullptr); }

Mm polyvalm(const Mm& p, const Mm& x) {
    if (!numeric_vector("polyvalm", p) || error_square(x, "polyvalm")) return x_M;
    const cvec c = coefficients(p);
    const Mm n(static_cast<double>(x.dims[0]));
    Mm r = zeros(n, n), I = eye(n, n);
    // Horner's rule in matrix products: r = r x + c_k I.
    for (const cplx& v : c) r = plus(mtimes(r, x), times(vector_of({v}), I));
    return r;
}

Mm polyfit(const Mm& x, const Mm& y, const Mm& n) { return polyfit_impl(x, y, n, nullptr, nullptr); }
Mm polyfit(const Mm& x, const Mm& y, const Mm& n, i_o_t, Mm& S) { return polyfit_impl(x, y, n, &S, nullptr); }
Mm polyfit(const Mm& x, const Mm& y, const Mm& n, i_o_t, Mm& S, Mm& mu) { return polyfit_impl(x, y, n, &S, &mu); }

Mm roots(const Mm& p) {
    if (!numeric_vector("roots", p)) return x_M;
    cvec r;
    if (!roots_of("roots", coefficients(p), r)) return x_M;
    return vector_of(r, true);
}

Mm conv(const Mm& a, const Mm& b) { return conv(a, b, TM("full")); }
Mm conv(const Mm& a, const Mm& b, const Mm& shape) {
    if (!numeric_vector("conv", a) || !numeric_vector("conv", b)) return x_M;
    char word[16];
    Mstr(shape, word, sizeof word);
    const cvec u = coefficients(a), v = coefficients(b);
    cvec full = multiply(u, v);
    cvec out;
    if (!std::strcmp(word, "full")) {
        out = full;
    } else if (!std::strcmp(word, "same")) {
        const std::size_t start = v.size() / 2;
        for (std::size_t k = 0; k < u.size() && !full.empty(); ++k) out.push_back(full[start + k]);
    } else if (!std::strcmp(word, "valid")) {
        if (u.size() >= v.size() && !v.empty())
            for (std::size_t k = v.size() - 1; k < u.size(); ++k) out.push_back(full[k]);
    } else {
        error("conv: shape must be 'full', 'same' or 'valid'");
        return x_M;
    }
    // A column when a is a column (or a scalar beside a column b); a row otherwise.
    const bool column = a.dims[0] > 1 || (a.size() == 1 && b.dims[0] > 1);
    return vector_of(out, column);
}

Mm deconv(const Mm& y, const Mm& a) {
    Mm r;
    return deconv(y, a, i_o, r);
}
Mm deconv(const Mm& y, const Mm& a, i_o_t, Mm& r) {
    if (!numeric_vector("deconv", y) || !numeric_vector("deconv", a)) return x_M;
    const cvec num = coefficients(y), den = coefficients(a);
    if (den.empty() || den[0] == 0.0) {
        error("deconv: the first coefficient of a must not be zero");
        return x_M;
    }
    if (num.size() < den.size()) {
        r = y;
        return Mm(0.0);
    }
    cvec rem = num, q(num.size() - den.size() + 1);
    for (std::size_t i = 0; i < q.size(); ++i) {
        q[i] = rem[i] / den[0];
        for (std::size_t j = 0; j < den.size(); ++j) rem[i + j] -= q[i] * den[j];
        rem[i] = 0.0;  // removed exactly, whatever the rounding left
    }
    r = vector_of(rem, y.dims[0] > 1);
    return vector_of(q, y.dims[0] > 1);
}

Mm polyder(const Mm& p) {
    if (!numeric_vector("polyder", p)) return x_M;
    return vector_of(strip_leading_zeros(derivative(coefficients(p))));
}
Mm polyder(const Mm& a, const Mm& b) {
    if (!numeric_vector("polyder", a) || !numeric_vector("polyder", b)) return x_M;
    const cvec u = coefficients(a), v = coefficients(b);
    return vector_of(strip_leading_zeros(combine(multiply(derivative(u), v), multiply(u, derivative(v)), 1)));
}
Mm polyder(const Mm& b, const Mm& a, i_o_t, Mm& d) {
    if (!numeric_vector("polyder", b) || !numeric_vector("polyder", a)) return x_M;
    const cvec u = coefficients(b), v = coefficients(a);
    d = vector_of(strip_leading_zeros(multiply(v, v)));
    return vector_of(strip_leading_zeros(combine(multiply(derivative(u), v), multiply(u, derivative(v)), -1)));
}

Mm polyint(const Mm& p) { return polyint(p, Mm(0.0)); }
Mm polyint(const Mm& p, const Mm& k) {
    if (!numeric_vector("polyint", p)) return x_M;
    const cvec c = coefficients(p);
    const int n = static_cast<int>(c.size());
    cvec r(n + 1);
    for (int j = 0; j < n; ++j) r[j] = c[j] / static_cast<double>(n - j);
    Mm kk = mdouble(k);
    r[n] = kk.size() ? cplx(kk.addr()[0], kk.pi ? kk.addi()[0] : 0.0) : 0.0;
    return vector_of(r);
}

Mm residue(const Mm& b, const Mm& a, i_o_t, Mm& p, Mm& k) { return residue_impl(b, a, p, k); }

AK_BUILTIN("poly", poly);
AK_BUILTIN("polyval", AK_FN(polyval, const Mm&, const Mm&), AK_FN(polyval, const Mm&, const Mm&, const Mm&, i_o_t, Mm&),
           AK_FN(polyval, const Mm&, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("polyvalm", polyvalm);
AK_BUILTIN("polyfit", AK_FN(polyfit, const Mm&, const Mm&, const Mm&), AK_FN(polyfit, const Mm&, const Mm&, const Mm&, i_o_t, Mm&),
           AK_FN(polyfit, const Mm&, const Mm&, const Mm&, i_o_t, Mm&, Mm&));
AK_BUILTIN("roots", roots);
AK_BUILTIN("conv", AK_FN(conv, const Mm&, const Mm&), AK_FN(conv, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("deconv", AK_FN(deconv, const Mm&, const Mm&), AK_FN(deconv, const Mm&, const Mm&, i_o_t, Mm&));
AK_BUILTIN("polyder", AK_FN(polyder, const Mm&), AK_FN(polyder, const Mm&, const Mm&), AK_FN(polyder, const Mm&, const Mm&, i_o_t, Mm&));
AK_BUILTIN("polyint", AK_FN(polyint, const Mm&), AK_FN(polyint, const Mm&, const Mm&));
AK_BUILTIN("residue", AK_FN(residue, const Mm&, const Mm&, i_o_t, Mm&, Mm&));
