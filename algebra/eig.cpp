// Eigenvalues and eigenvectors. Hermitian matrices (real symmetric ones included) go through the
// Hermitian tridiagonal reduction and QL; other complex matrices through the unitary Hessenberg
// reduction and complex QR; other real ones through the elementary Hessenberg reduction and the
// double-shift QR, with conjugate pairs of vectors unpacked from the real form. Balancing comes
// first unless a second, string, argument turns it off. Kernels that fail to converge leave their
// partial results, without a message.
#include <cmath>
#include <vector>

#include "algebra/eig_internal.h"
#include "algebra/kernels/kernels.h"
#include "algebra/kernels/lapack.h"
#include "algebra/linalg_internal.h"
#include "arklib/arith.h"
#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/factor.h"
#include "arklib/linalg.h"
#include "arklib/sparse.h"
#include "arklib/subscript.h"

using ak_internal::dense_copy;
using ak_internal::dense_zeros;

namespace ak_internal {

void normalise_columns(Mm& v) {
    const int n = v.rows();
    for (int j = 0; j < v.cols(); ++j) {
        double* re = v.addr() + static_cast<long>(j) * n;
        double* im = v.pi ? v.addi() + static_cast<long>(j) * n : nullptr;
        double ss = 0.0;
        for (int i = 0; i < n; ++i) ss += re[i] * re[i] + (im ? im[i] * im[i] : 0.0);
        if (ss == 0.0) continue;
        double f = 1.0 / std::sqrt(ss);
        for (int i = 0; i < n; ++i) {
            re[i] *= f;
            if (im) im[i] *= f;
        }
    }
}

Mm unpack_real_vectors(const Mm& z, const double* wi) {
    const int n = z.rows();
    Mm v = dense_zeros(1, n, n);
    for (int j = 0; j < n; ++j) {
        const double* zj = z.addr() + static_cast<long>(j) * n;
        double* vr = v.addr() + static_cast<long>(j) * n;
        double* vi = v.addi() + static_cast<long>(j) * n;
        if (wi[j] == 0.0) {
            for (int i = 0; i < n; ++i) vr[i] = zj[i];
        } else if (wi[j] > 0.0 && j + 1 < n) {  // columns j and j + 1 hold the real and imaginary parts
            const double* zk = zj + n;
            for (int i = 0; i < n; ++i) {
                vr[i] = zj[i];
                vi[i] = zk[i];
                vr[i + n] = zj[i];
                vi[i + n] = -zk[i];
            }
            ++j;
        }
    }
    return v;
}

Mm eig_core(const Mm& a0, bool want_vectors, bool balance, Mm* V) {
    if (error_square(a0, "eig")) {
        if (V) *V = x_M;
        return x_M;
    }
    Mm a = full(a0);
    const int n = a.rows();
    if (n == 0) {
        if (V) *V = nop_M;
        return nop_M;
    }
    const bool herm = ishermitian(a) == 1;
    const bool complex = a.pi != nullptr;
    Mm d = dense_zeros(1, n, 1);
    double *dr = d.addr(), *di = d.addi();
    int ierr = 0;
    Mm vec;
    if (herm) {
        Mm h = dense_copy(a, 1);
        std::vector<double> e(n), e2(n), tau(2 * static_cast<std::size_t>(n));
        ak_kernels::htridi(n, n, h.addr(), h.addi(), dr, e.data(), e2.data(), tau.data());
        if (want_vectors) {
            vec = dense_zeros(1, n, n);
            for (int k = 0; k < n; ++k) vec.addr()[static_cast<long>(k) * n + k] = 1.0;
            ak_kernels::tql2(n, n, dr, e.data(), vec.addr(), &ierr);
            ak_kernels::htribk(n, n, h.addr(), h.addi(), tau.data(), n, vec.addr(), vec.addi());
            normalise_columns(vec);
        } else {
            ak_kernels::tqlrat(n, dr, e2.data(), &ierr);
        }
    } else {
        Mm h = dense_copy(a, complex);
        int low = 1, igh = n;
        std::vector<double> scale(n, 1.0);
        if (balance) {
            if (complex)
                ak_kernels::cbal(n, n, h.addr(), h.addi(), &low, &igh, scale.data());
            else
                ak_kernels::balanc(n, n, h.addr(), &low, &igh, scale.data());
        }
        if (complex) {
            std::vector<double> ortr(n), orti(n);
            ak_kernels::corth(n, n, low, igh, h.addr(), h.addi(), ortr.data(), orti.data());
            if (want_vectors) {
                vec = dense_zeros(1, n, n);
                ak_kernels::comqr2(n, n, low, igh, ortr.data(), orti.data(), h.addr(), h.addi(), dr, di,
                                   vec.addr(), vec.addi(), &ierr);
                if (balance) ak_kernels::cbabk2(n, n, low, igh, scale.data(), n, vec.addr(), vec.addi());
                normalise_columns(vec);
            } else {
                ak_kernels::comqr(n, n, low, igh, h.addr(), h.addi(), dr, di, &ierr);
            }
        } else {
            std::vector<int> perm(n);
            ak_kernels::elmhes(n, n, low, igh, h.addr(), perm.data());
            if (want_vectors) {
                Mm z = dense_zeros(0, n, n);
                ak_kernels::eltran(n, n, low, igh, h.addr(), perm.data(), z.addr());
                ak_kernels::hqr2(n, n, low, igh, h.addr(), dr, di, z.addr(), &ierr);
                if (balance) ak_kernels::balbak(n, n, low, igh, scale.data(), n, z.addr());
                vec = unpack_real_vectors(z, di);
                normalise_columns(vec);
            } else {
                ak_kernels::hqr(n, n, low, igh, h.addr(), dr, di, &ierr);
            }
        }
    }
    d.getreal(0);
    if (!want_vectors) return d;
    vec.getreal(0);
    if (V) *V = vec;
    Mm D = diag(d);
    return D;
}

}  // namespace ak_internal

using ak_internal::eig_core;

namespace {
bool is_text(const Mm& s) { return s.flags.str != 0; }
}  // namespace

Mm eig(const Mm& a) { return eig_core(a, false, true, nullptr); }

Mm eig(const Mm& a, i_o_t, Mm& D) {
    Mm V;
    D = eig_core(a, true, true, &V);
    return V;
}

Mm eig(const Mm& a, const Mm& b) {
    if (is_text(b)) return eig_core(a, false, false, nullptr);
    return ak_internal::generalised_eig(a, b, nullptr, "eig(a,b)");
}

Mm eig(const Mm& a, const Mm& b, i_o_t, Mm& D) {
    Mm V;
    if (is_text(b))
        D = eig_core(a, true, false, &V);
    else
        D = ak_internal::generalised_eig(a, b, &V, "eig(a,b)");
    return V;
}

Mm eig_D(const Mm& a) {
    Mm D;
    eig(a, i_o, D);
    return D;
}

Mm eig_W(const Mm& a) {
    Mm D;
    return eig(a, i_o, D);
}

Mm eig() {
    error_input("eig", 0);
    return x_M;
}

Mm qz(const Mm& a, const Mm& b, i_o_t, Mm& AA, Mm& BB, Mm& Q, Mm& Z, Mm& V) {
    ak_internal::qz_parts p;
    AA = BB = Q = Z = V = x_M;
    if (!ak_internal::generalised_schur(a, b, "qz", p)) return x_M;
    if (p.n == 0) {
        AA = BB = Q = Z = V = nop_M;
        return AA;
    }
    AA = p.AA;
    BB = p.BB;
    Q = p.Q;
    Z = p.Z;
    V = ak_internal::qz_vectors(p);
    return AA;
}
Mm qz(const Mm& a, const Mm& b, i_o_t, Mm& AA, Mm& BB, Mm& Q, Mm& Z) {
    Mm V;
    return qz(a, b, i_o, AA, BB, Q, Z, V);
}
Mm qz(const Mm& a, const Mm& b, i_o_t, Mm& AA, Mm& BB, Mm& Q) {
    Mm Z;
    return qz(a, b, i_o, AA, BB, Q, Z);
}
Mm qz(const Mm& a, const Mm& b, i_o_t, Mm& AA, Mm& BB) {
    Mm Q;
    return qz(a, b, i_o, AA, BB, Q);
}
Mm qz(const Mm& a, const Mm& b) {
    Mm AA, BB;
    return qz(a, b, i_o, AA, BB);
}
Mm qzval(const Mm& a, const Mm& b) { return ak_internal::generalised_eig(a, b, nullptr, "eig(a,b)"); }

AK_BUILTIN("qz", AK_FN(qz, const Mm&, const Mm&), AK_FN_REFS(qz, const Mm&, const Mm&, i_o_t, Mm&, Mm&),
           AK_FN_REFS(qz, const Mm&, const Mm&, i_o_t, Mm&, Mm&, Mm&),
           AK_FN_REFS(qz, const Mm&, const Mm&, i_o_t, Mm&, Mm&, Mm&, Mm&),
           AK_FN_REFS(qz, const Mm&, const Mm&, i_o_t, Mm&, Mm&, Mm&, Mm&, Mm&));
AK_BUILTIN("qzval", AK_FN(qzval, const Mm&, const Mm&));
AK_BUILTIN("eig", AK_FN(eig, const Mm&), AK_FN(eig, const Mm&, i_o_t, Mm&), AK_FN(eig, const Mm&, const Mm&),
           AK_FN(eig, const Mm&, const Mm&, i_o_t, Mm&), AK_FN(eig));
AK_BUILTIN("eig_D", eig_D);
AK_BUILTIN("eig_W", eig_W);

namespace ak_internal {

// The generalised problem by QZ: a and b reduced together to the real generalised Schur form
// Q*a*Z = AA (quasi-triangular) and Q*b*Z = BB (triangular), whose diagonal gives alpha and beta;
// the vectors come from the pair (AA, BB) carried back by Z. False after a report.
bool generalised_schur(const Mm& a0, const Mm& b0, const char* name, qz_parts& out) {
    Mm a = full(a0), b = full(b0);
    if (a.pi || b.pi) {
        error("%s: complex arguments not supported.", name);
        return false;
    }
    if (error_square(a, name)) return false;
    if (a.rows() != b.rows() || a.cols() != b.cols()) {
        error("%s: matrix a and b must be of same size.", name);
        return false;
    }
    const int n = a.rows();
    out.n = n;
    if (n == 0) return true;
    out.AA = dense_copy(a, 0);
    out.BB = dense_copy(b, 0);
    out.Q = dense_zeros(0, n, n);
    out.Z = dense_zeros(0, n, n);
    out.alphar.assign(n, 0.0);
    out.alphai.assign(n, 0.0);
    out.beta.assign(n, 0.0);
    std::vector<int> bwork(n);
    int sdim = 0, info = 0, lwork = -1;
    double query = 0;
    auto run = [&](double* work) {
        dgges_("V", "V", "N", nullptr, &n, out.AA.addr(), &n, out.BB.addr(), &n, &sdim, out.alphar.data(),
               out.alphai.data(), out.beta.data(), out.Q.addr(), &n, out.Z.addr(), &n, work, &lwork, bwork.data(),
               &info, 1, 1, 1);
    };
    run(&query);
    lwork = static_cast<int>(query);
    std::vector<double> work(static_cast<std::size_t>(lwork > 1 ? lwork : 1));
    run(work.data());
    if (info != 0) {
        error("%s: the QZ iteration did not converge", name);
        return false;
    }
    out.Q = transpose(out.Q);  // the reduction's left factor is Q' in Q*a*Z = AA
    return true;
}

Mm qz_vectors(const qz_parts& p) {
    const int n = p.n;
    Mm vr = dense_copy(p.Z, 0);
    std::vector<double> work(6 * static_cast<std::size_t>(n));
    int m = 0, info = 0;
    dtgevc_("R", "B", nullptr, &n, p.AA.addr(), &n, p.BB.addr(), &n, nullptr, &n, vr.addr(), &n, &n, &m,
            work.data(), &info, 1, 1);
    Mm v = unpack_real_vectors(vr, p.alphai.data());
    normalise_columns(v);
    v.getreal(0);
    return v;
}

Mm qz_values(const qz_parts& p) {
    Mm d = dense_zeros(1, p.n, 1);
    for (int k = 0; k < p.n; ++k) {
        // alpha / beta as a complex quotient by a real number; beta 0 gives infinities (or NaN).
        d.addr()[k] = p.alphar[k] / p.beta[k];
        d.addi()[k] = p.alphai[k] == 0.0 ? 0.0 : p.alphai[k] / p.beta[k];
    }
    d.getreal(0);
    return d;
}

Mm generalised_eig(const Mm& a, const Mm& b, Mm* V, const char* name) {
    if (V) *V = x_M;
    qz_parts p;
    if (!generalised_schur(a, b, name, p)) return x_M;
    if (p.n == 0) {
        if (V) *V = nop_M;
        return nop_M;
    }
    Mm d = qz_values(p);
    if (!V) return d;
    *V = qz_vectors(p);
    return diag(d);
}

}  // namespace ak_internal
