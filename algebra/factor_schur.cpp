// Schur and Hessenberg forms, balancing, the conversions between real and complex Schur and
// diagonal forms, eigenvalue condition numbers, matrix powers through the eigen-decomposition, and
// the Sylvester and Lyapunov equations by the Bartels-Stewart method.
#include <cmath>
#include <complex>
#include <vector>

#include "algebra/eig_internal.h"
#include "algebra/kernels/kernels.h"
#include "algebra/linalg_internal.h"
#include "arklib/arith.h"
#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/constructors.h"
#include "arklib/factor.h"
#include "arklib/linalg.h"
#include "arklib/sparse.h"
#include "arklib/subscript.h"

using ak_internal::dense_copy;
using ak_internal::dense_zeros;
using cplx = std::complex<double>;

namespace {

constexpr double k_eps = 2.220446049250313e-16;

cplx get(const Mm& m, int i, int j) {
    long k = static_cast<long>(j) * m.rows() + i;
    return cplx(m.addr()[k], m.pi ? m.addi()[k] : 0.0);
}
void put(Mm& m, int i, int j, cplx v) {
    long k = static_cast<long>(j) * m.rows() + i;
    m.addr()[k] = v.real();
    m.addi()[k] = v.imag();
}

// Zeros below subdiagonal `below` (1: the Hessenberg pattern, 0: triangular).
void clear_below(Mm& h, int below) {
    const int n = h.rows();
    for (int j = 0; j < n; ++j)
        for (int i = j + below + 1; i < n; ++i) {
            h.addr()[static_cast<long>(j) * n + i] = 0.0;
            if (h.pi) h.addi()[static_cast<long>(j) * n + i] = 0.0;
        }
}

// The unitary reduction of any square matrix through the complex kernels: to Hessenberg form
// (hessenberg true) or on to the triangular Schur form. U gets the unitary factor.
Mm complex_reduction(const Mm& a, bool hessenberg, Mm& U) {
    const int n = a.rows();
    Mm h = dense_copy(a, 1);
    std::vector<double> ortr(n), orti(n), wr(n), wi(n);
    U = dense_zeros(1, n, n);
    int ierr = 0;
    ak_kernels::corth(n, n, 1, n, h.addr(), h.addi(), ortr.data(), orti.data());
    ak_kernels::comqr2(n, n, 1, n, ortr.data(), orti.data(), h.addr(), h.addi(), wr.data(), wi.data(), U.addr(),
                       U.addi(), &ierr, hessenberg ? -1 : 0);
    clear_below(h, hessenberg ? 1 : 0);
    return h;
}

// The real Schur form: orthogonal Hessenberg reduction, its transformation, and the QR pass that
// stops at the quasi-triangular form.
Mm real_schur(const Mm& a, Mm& U) {
    const int n = a.rows();
    Mm h = dense_copy(a, 0);
    std::vector<double> ort(n), wr(n), wi(n);
    U = dense_zeros(0, n, n);
    int ierr = 0;
    ak_kernels::orthes(n, n, 1, n, h.addr(), ort.data());
    ak_kernels::ortran(n, n, 1, n, h.addr(), ort.data(), U.addr());
    ak_kernels::hqr2(n, n, 1, n, h.addr(), wr.data(), wi.data(), U.addr(), &ierr, 0);
    clear_below(h, 1);
    for (int i = 0; i + 1 < n; ++i)  // only the 2 x 2 blocks of complex pairs keep a subdiagonal
        if (!(wi[i] > 0.0)) h.addr()[static_cast<long>(i) * n + i + 1] = 0.0;
    return h;
}

}  // namespace

Mm schur(const Mm& a, i_o_t, Mm& T) {
    if (error_numeric(a, "schur") || error_square(a, "schur")) {
        T = x_M;
        return x_M;
    }
    Mm f = full(a);
    if (f.rows() == 0) {
        T = nop_M;
        return nop_M;
    }
    Mm U;
    if (f.pi) {
        if (error_square(f, "eig")) return x_M;
        T = complex_reduction(f, false, U);
    } else {
        T = real_schur(f, U);
    }
    return U;
}
Mm schur(const Mm& a) {
    Mm T;
    schur(a, i_o, T);
    return T;
}
Mm schur_U(const Mm& a) {
    Mm T;
    return schur(a, i_o, T);
}
Mm schur_T(const Mm& a) { return schur(a); }

Mm hess(const Mm& a, i_o_t, Mm& H) {
    if (error_numeric(a, "hess") || error_square(a, "eig")) {
        H = x_M;
        return x_M;
    }
    Mm f = full(a);
    if (f.rows() == 0) {
        H = nop_M;
        return nop_M;
    }
    Mm P;
    H = complex_reduction(f, true, P);
    H.getreal(0);
    P.getreal(0);
    return P;
}
Mm hess(const Mm& a) {
    Mm H;
    hess(a, i_o, H);
    return H;
}

Mm balance(const Mm& a, i_o_t, Mm& B) {
    if (error_numeric(a, "balance") || error_square(a, "balance")) {
        B = x_M;
        return x_M;
    }
    Mm f = full(a);
    const int n = f.rows();
    if (n == 0) {
        B = nop_M;
        return nop_M;
    }
    B = dense_copy(f, f.pi != nullptr);
    std::vector<double> scale(n, 1.0);
    int low = 1, igh = n;
    if (B.pi)
        ak_kernels::cbal(n, n, B.addr(), B.addi(), &low, &igh, scale.data());
    else
        ak_kernels::balanc(n, n, B.addr(), &low, &igh, scale.data());
    // T maps the balanced matrix back: a = T * B / T.
    Mm T = dense_zeros(0, n, n);
    for (int k = 0; k < n; ++k) T.addr()[static_cast<long>(k) * n + k] = 1.0;
    ak_kernels::balbak(n, n, low, igh, scale.data(), n, T.addr());
    return T;
}
Mm balance(const Mm& a) {
    Mm B;
    balance(a, i_o, B);
    return B;
}

Mm rsf2csf(const Mm& U0, const Mm& T0, i_o_t, Mm& T1) {
    if (error_square(T0, "rsf2csf")) {
        T1 = x_M;
        return x_M;
    }
    Mm U = dense_copy(U0, 1), T = dense_copy(T0, 1);
    const int n = T.rows();
    for (int m = n - 1; m >= 1; --m) {
        cplx sub = get(T, m, m - 1);
        if (!(std::abs(sub) > k_eps * (std::abs(get(T, m - 1, m - 1)) + std::abs(get(T, m, m))))) continue;
        // An eigenvalue of the 2 x 2 block, less the lower diagonal element.
        cplx a = get(T, m - 1, m - 1), b = get(T, m - 1, m), c = sub, d = get(T, m, m);
        cplx half = (a - d) / 2.0, root = std::sqrt(half * half + b * c);
        cplx mu = (a + d) / 2.0 + root - d;
        double r = std::sqrt(std::norm(mu) + std::norm(c));
        cplx cs = mu / r, sn = c / r;
        // G = [conj(cs) sn; -sn cs] on rows m-1, m; G' on columns m-1, m of T and of U.
        for (int j = m - 1; j < n; ++j) {
            cplx x = get(T, m - 1, j), y = get(T, m, j);
            put(T, m - 1, j, std::conj(cs) * x + sn * y);
            put(T, m, j, -sn * x + cs * y);
        }
        for (int i = 0; i <= m; ++i) {
            cplx x = get(T, i, m - 1), y = get(T, i, m);
            put(T, i, m - 1, x * cs + y * std::conj(sn));
            put(T, i, m, -x * std::conj(sn) + y * std::conj(cs));
        }
        for (int i = 0; i < U.rows(); ++i) {
            cplx x = get(U, i, m - 1), y = get(U, i, m);
            put(U, i, m - 1, x * cs + y * std::conj(sn));
            put(U, i, m, -x * std::conj(sn) + y * std::conj(cs));
        }
        put(T, m, m - 1, 0.0);
    }
    T1 = T;
    return U;
}

Mm cdf2rdf(const Mm& V0, const Mm& D0, i_o_t, Mm& D1) {
    if (error_square(D0, "cdf2rdf")) {
        D1 = x_M;
        return x_M;
    }
    Mm V = dense_copy(V0, 1), D = dense_copy(D0, 1);
    const int n = D.rows();
    Mm Vr = dense_copy(V, 0), Dr = dense_copy(D, 0);
    for (int k = 0; k < n; ++k) {
        cplx l = get(D, k, k);
        if (l.imag() == 0.0 || k + 1 >= n) continue;
        // The pair a +- ib becomes [a b; -b a], its vector x + iy the columns x, y.
        Dr.addr()[static_cast<long>(k) * n + k] = l.real();
        Dr.addr()[static_cast<long>(k + 1) * n + k + 1] = l.real();
        Dr.addr()[static_cast<long>(k + 1) * n + k] = l.imag();
        Dr.addr()[static_cast<long>(k) * n + k + 1] = -l.imag();
        for (int i = 0; i < V.rows(); ++i) {
            cplx v = get(V, i, k);
            Vr.addr()[static_cast<long>(k) * V.rows() + i] = v.real();
            Vr.addr()[static_cast<long>(k + 1) * V.rows() + i] = v.imag();
        }
        ++k;
    }
    D1 = Dr;
    return Vr;
}

Mm condeig(const Mm& a, i_o_t, Mm& D, Mm& s) {
    Mm V = eig(a, i_o, D);
    if (V.size() == 0) {
        s = V;
        return V;
    }
    Mm W = ctranspose(inv(V));  // columns: left eigenvectors with w' v = 1
    const int n = W.rows();
    Mm c = dense_zeros(0, n, 1);
    for (int j = 0; j < n; ++j) {
        double wn = 0.0, vn = 0.0;
        for (int i = 0; i < n; ++i) {
            wn += std::norm(get(W, i, j));
            vn += std::norm(get(V, i, j));
        }
        c.addr()[j] = std::sqrt(wn) * std::sqrt(vn);
    }
    s = c;
    return V;
}
Mm condeig(const Mm& a) {
    Mm D, s;
    condeig(a, i_o, D, s);
    return s;
}
Mm condeig(const Mm& a, i_o_t, Mm& D) {
    Mm s;
    return condeig(a, i_o, D, s);
}

// a ^ p for a square a and a scalar p that is not a whole non-negative number, and s ^ A for a
// scalar s and a square A: through the eigen-decomposition, V * diag(d .^ p) / V. A negative
// whole power is the positive power of the inverse.
Mm ak_matrix_power(const Mm& a, const Mm& p) {
    if (a.size() == 1) {  // s ^ A
        Mm D;
        Mm V = eig(p, i_o, D);
        return mrdivide(mtimes(V, diag(power(a, diag(D)))), V);
    }
    double e = p.pi ? NAN : scalar(p);
    if (e < 0 && e == std::floor(e) && e > -2147483648.0) return mpower(inv(a), Mm(-e));
    Mm D;
    Mm V = eig(a, i_o, D);
    Mm r = mrdivide(mtimes(V, diag(power(diag(D), p))), V);
    r.getreal(0);
    return r;
}

Mm axxbc(const Mm& a, const Mm& b, const Mm& c) {
    if (error_square(a, "axxbc") || error_square(b, "axxbc")) return x_M;
    if (c.rows() != a.rows() || c.cols() != b.cols()) {
        error("axxbc: c must be rows(a)-by-cols(b)");
        return x_M;
    }
    const bool complex = a.pi || b.pi || c.pi;
    // Complex Schur forms a = Ua Ta Ua', b = Ub Tb Ub'.
    auto complex_schur = [](const Mm& x, Mm& T) {
        Mm U = schur(x, i_o, T);
        if (!T.pi) {
            Mm T1;
            U = rsf2csf(U, T, i_o, T1);
            T = T1;
        }
        return U;
    };
    Mm Ta, Tb;
    Mm Ua = complex_schur(full(a), Ta), Ub = complex_schur(full(b), Tb);
    const int m = a.rows(), n = b.rows();
    Mm F = mtimes(mtimes(ctranspose(Ua), c), Ub);
    F = dense_copy(F, 1);
    Mm Y = dense_zeros(1, m, n);
    Tb = dense_copy(Tb, 1);
    for (int k = 0; k < n; ++k) {  // (Ta + tb_kk I) y_k = f_k - sum_{j<k} tb_jk y_j
        Mm rhs = dense_zeros(1, m, 1);
        for (int i = 0; i < m; ++i) {
            cplx s = get(F, i, k);
            for (int j = 0; j < k; ++j) s -= get(Tb, j, k) * get(Y, i, j);
            put(rhs, i, 0, s);
        }
        Mm lhs = dense_copy(Ta, 1);
        for (int i = 0; i < m; ++i) put(lhs, i, i, get(lhs, i, i) + get(Tb, k, k));
        Mm y = dense_copy(mldivide(lhs, rhs), 1);
        for (int i = 0; i < m; ++i) put(Y, i, k, get(y, i, 0));
    }
    Mm X = mtimes(mtimes(Ua, Y), ctranspose(Ub));
    if (!complex) X = real(X);
    X.getreal(0);
    return X;
}

Mm lyap(const Mm& a, const Mm& c) { return axxbc(a, transpose(a), uminus(c)); }
Mm lyap(const Mm& a, const Mm& b, const Mm& c) { return axxbc(a, b, uminus(c)); }
Mm sylv(const Mm& a, const Mm& b, const Mm& c) { return lyap(a, b, uminus(c)); }

namespace {
Mm report(const char* name, int n) {
    error_input(name, n);
    return x_M;
}
}  // namespace

Mm axxbc(const Mm&) { return report("axxbc", 1); }
Mm axxbc(const Mm&, const Mm&) { return report("axxbc", 2); }
Mm lyap(const Mm&) { return report("lyap", 1); }
Mm sylv(const Mm&) { return report("sylv", 1); }
Mm sylv(const Mm&, const Mm&) { return report("sylv", 2); }

AK_BUILTIN("schur", AK_FN(schur, const Mm&), AK_FN(schur, const Mm&, i_o_t, Mm&));
AK_BUILTIN("schur_U", schur_U);
AK_BUILTIN("schur_T", schur_T);
AK_BUILTIN("hess", AK_FN(hess, const Mm&), AK_FN(hess, const Mm&, i_o_t, Mm&));
AK_BUILTIN("balance", AK_FN(balance, const Mm&), AK_FN(balance, const Mm&, i_o_t, Mm&));
AK_BUILTIN("rsf2csf", rsf2csf);
AK_BUILTIN("cdf2rdf", cdf2rdf);
AK_BUILTIN("condeig", AK_FN(condeig, const Mm&), AK_FN(condeig, const Mm&, i_o_t, Mm&),
           AK_FN(condeig, const Mm&, i_o_t, Mm&, Mm&));
AK_BUILTIN("axxbc", AK_FN(axxbc, const Mm&, const Mm&, const Mm&), AK_FN(axxbc, const Mm&),
           AK_FN(axxbc, const Mm&, const Mm&));
AK_BUILTIN("lyap", AK_FN(lyap, const Mm&, const Mm&), AK_FN(lyap, const Mm&, const Mm&, const Mm&),
           AK_FN(lyap, const Mm&));
AK_BUILTIN("sylv", AK_FN(sylv, const Mm&, const Mm&, const Mm&), AK_FN(sylv, const Mm&),
           AK_FN(sylv, const Mm&, const Mm&));
