// Singular value decomposition: the LINPACK routines DSVDC and ZSVDC (LINPACK Users' Guide, 1979,
// chapter 11, after Golub and Reinsch). Householder reduction to bidiagonal form, then implicitly
// shifted QR sweeps with Givens rotations on the bidiagonal. The real and complex forms share the
// code here; a complex matrix is split in two arrays, and its bidiagonal is made real by unit
// scalings before the sweeps.
#include <algorithm>
#include <cmath>

#include "algebra/kernels/kernels.h"

namespace ak_kernels {

namespace {

struct cvec {  // a complex (or real, im null) column with stride 1
    double *re, *im;
    double& r(int i) const { return re[i]; }
    double c(int i) const { return im ? im[i] : 0.0; }
    void set(int i, double a, double b) const {
        re[i] = a;
        if (im) im[i] = b;
    }
    cvec at(int off) const { return cvec{re + off, im ? im + off : nullptr}; }
};

double nrm2(int n, cvec x) {
    double scale = 0.0, ssq = 1.0;
    for (int i = 0; i < n; ++i)
        for (double a : {std::fabs(x.re[i]), x.im ? std::fabs(x.im[i]) : 0.0}) {
            if (a == 0.0) continue;
            if (scale < a) {
                ssq = 1.0 + ssq * (scale / a) * (scale / a);
                scale = a;
            } else {
                ssq += (a / scale) * (a / scale);
            }
        }
    return scale * std::sqrt(ssq);
}
// conj(x) . y
void dotc(int n, cvec x, cvec y, double& tr, double& ti) {
    tr = ti = 0.0;
    for (int i = 0; i < n; ++i) {
        tr += x.re[i] * y.re[i] + x.c(i) * y.c(i);
        ti += x.re[i] * y.c(i) - x.c(i) * y.re[i];
    }
}
// y += (ar + i ai) x
void axpy(int n, double ar, double ai, cvec x, cvec y) {
    for (int i = 0; i < n; ++i) {
        double xr = x.re[i], xi = x.c(i);
        y.re[i] += ar * xr - ai * xi;
        if (y.im) y.im[i] += ar * xi + ai * xr;
    }
}
void scal(int n, double ar, double ai, cvec x) {
    for (int i = 0; i < n; ++i) {
        double xr = x.re[i], xi = x.c(i);
        x.set(i, ar * xr - ai * xi, ar * xi + ai * xr);
    }
}
// t = -conj(u) . v / u(0); v += t u: one reflection applied.
void reflect(int n, cvec u, cvec v) {
    double tr, ti;
    dotc(n, u, v, tr, ti);
    if (u.im)
        cdiv(-tr, -ti, u.re[0], u.im[0], tr, ti);
    else
        tr = -tr / u.re[0];
    axpy(n, tr, ti, u, v);
}
// |a| with the phase of b (b non-zero)
void csign(double a, double br, double bi, bool cx, double& rr, double& ri) {
    double m = cx ? std::hypot(br, bi) : std::fabs(br);
    rr = a * br / m;
    ri = cx ? a * bi / m : 0.0;
}
void rotg(double& a, double& b, double& c, double& s) {
    double roe = std::fabs(a) > std::fabs(b) ? a : b;
    double scale = std::fabs(a) + std::fabs(b);
    if (scale == 0.0) {
        c = 1.0;
        s = 0.0;
        a = 0.0;
        b = 0.0;
        return;
    }
    double r = scale * std::sqrt((a / scale) * (a / scale) + (b / scale) * (b / scale));
    r = std::copysign(1.0, roe) * r;
    c = a / r;
    s = b / r;
    double z = 1.0;
    if (std::fabs(a) > std::fabs(b)) z = s;
    if (std::fabs(b) >= std::fabs(a) && c != 0.0) z = 1.0 / c;
    a = r;
    b = z;
}
void rot(int n, cvec x, cvec y, double c, double s) {
    for (int i = 0; i < n; ++i) {
        double xr = x.re[i], yr = y.re[i];
        x.re[i] = c * xr + s * yr;
        y.re[i] = c * yr - s * xr;
        if (x.im) {
            double xi = x.im[i], yi = y.im[i];
            x.im[i] = c * xi + s * yi;
            y.im[i] = c * yi - s * xi;
        }
    }
}
void swap(int n, cvec x, cvec y) {
    for (int i = 0; i < n; ++i) {
        std::swap(x.re[i], y.re[i]);
        if (x.im) std::swap(x.im[i], y.im[i]);
    }
}

void svdc(double* xr, double* xi, int ldx, int n, int p, double* sr, double* si, double* er, double* ei,
          double* ur, double* ui, int ldu, double* vr, double* vi, int ldv, double* wr, double* wi, int job,
          int* info) {
    const bool cx = xi != nullptr;
    auto X = [&](int i, int j) { return cvec{xr + static_cast<long>(j) * ldx + i, cx ? xi + static_cast<long>(j) * ldx + i : nullptr}; };
    auto U = [&](int i, int j) { return cvec{ur + static_cast<long>(j) * ldu + i, cx ? ui + static_cast<long>(j) * ldu + i : nullptr}; };
    auto V = [&](int i, int j) { return cvec{vr + static_cast<long>(j) * ldv + i, cx ? vi + static_cast<long>(j) * ldv + i : nullptr}; };
    cvec s{sr, cx ? si : nullptr}, e{er, cx ? ei : nullptr}, work{wr, cx ? wi : nullptr};
    const int maxit = 30;
    const int jobu = (job % 100) / 10;
    const int ncu = jobu > 1 ? std::min(n, p) : n;
    const bool wantu = jobu != 0, wantv = job % 10 != 0;
    *info = 0;
    const int nct = std::min(n - 1, p), nrt = std::max(0, std::min(p - 2, n)), lu = std::max(nct, nrt);
    // Householder reduction to bidiagonal form (zero-based l).
    for (int l = 0; l < lu; ++l) {
        if (l < nct) {
            double nrm = nrm2(n - l, X(l, l));
            double a = nrm, b = 0.0;
            if (nrm != 0.0) {
                if (X(l, l).re[0] != 0.0 || X(l, l).c(0) != 0.0) csign(nrm, X(l, l).re[0], X(l, l).c(0), cx, a, b);
                double ir, ii;
                if (cx)
                    cdiv(1.0, 0.0, a, b, ir, ii);
                else
                    ir = 1.0 / a, ii = 0.0;
                scal(n - l, ir, ii, X(l, l));
                X(l, l).re[0] += 1.0;
            }
            s.set(l, -a, -b);
        }
        for (int j = l + 1; j < p; ++j) {
            if (l < nct && (s.r(l) != 0.0 || s.c(l) != 0.0)) reflect(n - l, X(l, l), X(l, j));
            e.set(j, X(l, j).re[0], -X(l, j).c(0));  // the row of x, conjugated, for the row transformation
        }
        if (wantu && l < nct)
            for (int i = l; i < n; ++i) U(i, l).set(0, X(i, l).re[0], X(i, l).c(0));
        if (l >= nrt) continue;
        double nrm = nrm2(p - l - 1, e.at(l + 1));
        double a = nrm, b = 0.0;
        if (nrm != 0.0) {
            if (e.r(l + 1) != 0.0 || e.c(l + 1) != 0.0) csign(nrm, e.r(l + 1), e.c(l + 1), cx, a, b);
            double ir, ii;
            if (cx)
                cdiv(1.0, 0.0, a, b, ir, ii);
            else
                ir = 1.0 / a, ii = 0.0;
            scal(p - l - 1, ir, ii, e.at(l + 1));
            e.r(l + 1) += 1.0;
        }
        e.set(l, -a, b);  // minus the conjugate
        if (l + 1 < n && (e.r(l) != 0.0 || e.c(l) != 0.0)) {
            for (int i = l + 1; i < n; ++i) work.set(i, 0.0, 0.0);
            for (int j = l + 1; j < p; ++j) axpy(n - l - 1, e.r(j), e.c(j), X(l + 1, j), work.at(l + 1));
            for (int j = l + 1; j < p; ++j) {
                double tr, ti;
                if (cx)
                    cdiv(-e.r(j), -e.c(j), e.r(l + 1), e.c(l + 1), tr, ti);
                else
                    tr = -e.r(j) / e.r(l + 1), ti = 0.0;
                axpy(n - l - 1, tr, -ti, work.at(l + 1), X(l + 1, j));
            }
        }
        if (wantv)
            for (int i = l + 1; i < p; ++i) V(i, l).set(0, e.r(i), e.c(i));
    }
    // The final bidiagonal of order m.
    int m = std::min(p, n + 1);
    if (nct < p) s.set(nct, X(nct, nct).re[0], X(nct, nct).c(0));
    if (n < m) s.set(m - 1, 0.0, 0.0);
    if (nrt + 1 < m) e.set(nrt, X(nrt, m - 1).re[0], X(nrt, m - 1).c(0));
    e.set(m - 1, 0.0, 0.0);
    if (wantu) {
        for (int j = nct; j < ncu; ++j) {
            for (int i = 0; i < n; ++i) U(i, j).set(0, 0.0, 0.0);
            U(j, j).set(0, 1.0, 0.0);
        }
        for (int l = nct - 1; l >= 0; --l) {
            if (s.r(l) != 0.0 || s.c(l) != 0.0) {
                for (int j = l + 1; j < ncu; ++j) reflect(n - l, U(l, l), U(l, j));
                scal(n - l, -1.0, 0.0, U(l, l));
                U(l, l).re[0] += 1.0;
                for (int i = 0; i < l; ++i) U(i, l).set(0, 0.0, 0.0);
            } else {
                for (int i = 0; i < n; ++i) U(i, l).set(0, 0.0, 0.0);
                U(l, l).set(0, 1.0, 0.0);
            }
        }
    }
    if (wantv)
        for (int l = p - 1; l >= 0; --l) {
            if (l < nrt && (e.r(l) != 0.0 || e.c(l) != 0.0))
                for (int j = l + 1; j < p; ++j) reflect(p - l - 1, V(l + 1, l), V(l + 1, j));
            for (int i = 0; i < p; ++i) V(i, l).set(0, 0.0, 0.0);
            V(l, l).set(0, 1.0, 0.0);
        }
    // A complex bidiagonal is made real by unit scalings of the vectors.
    if (cx)
        for (int i = 0; i < m; ++i) {
            if (cabs1(s.r(i), s.c(i)) != 0.0) {
                double t = std::hypot(s.r(i), s.c(i)), rr = s.r(i) / t, ri = s.c(i) / t;
                s.set(i, t, 0.0);
                if (i < m - 1) cdiv(e.r(i), e.c(i), rr, ri, e.re[i], e.im[i]);
                if (wantu) scal(n, rr, ri, U(0, i));
            }
            if (i == m - 1) break;
            if (cabs1(e.r(i), e.c(i)) != 0.0) {
                double t = std::hypot(e.r(i), e.c(i)), rr, ri;
                cdiv(t, 0.0, e.r(i), e.c(i), rr, ri);
                e.set(i, t, 0.0);
                double a = s.r(i + 1), b = s.c(i + 1);
                s.set(i + 1, a * rr - b * ri, a * ri + b * rr);
                if (wantv) scal(p, rr, ri, V(0, i + 1));
            }
        }
    // QR sweeps on the real bidiagonal s (diagonal), e (superdiagonal); one-based indices from here,
    // as in the published routine.
    double* S = sr - 1;
    double* E = er - 1;
    const int mm = m;
    int iter = 0;
    while (m > 0) {
        if (iter >= maxit) {
            *info = m;
            break;
        }
        int l, kase;
        for (l = m - 1; l >= 1; --l) {
            double test = std::fabs(S[l]) + std::fabs(S[l + 1]);
            if (test + std::fabs(E[l]) == test) {
                E[l] = 0.0;
                break;
            }
        }
        if (l < 0) l = 0;
        if (l == m - 1) {
            kase = 4;
        } else {
            int ls;
            for (ls = m; ls > l; --ls) {
                double test = 0.0;
                if (ls != m) test += std::fabs(E[ls]);
                if (ls != l + 1) test += std::fabs(E[ls - 1]);
                if (test + std::fabs(S[ls]) == test) {
                    S[ls] = 0.0;
                    break;
                }
            }
            if (ls == l)
                kase = 3;
            else if (ls == m)
                kase = 1;
            else {
                kase = 2;
                l = ls;
            }
        }
        ++l;
        double cs, sn, f, g, t1;
        switch (kase) {
        case 1:  // deflate a negligible s(m)
            f = E[m - 1];
            E[m - 1] = 0.0;
            for (int k = m - 1; k >= l; --k) {
                t1 = S[k];
                rotg(t1, f, cs, sn);
                S[k] = t1;
                if (k != l) {
                    f = -sn * E[k - 1];
                    E[k - 1] = cs * E[k - 1];
                }
                if (wantv) rot(p, V(0, k - 1), V(0, m - 1), cs, sn);
            }
            break;
        case 2:  // split at a negligible s(l)
            f = E[l - 1];
            E[l - 1] = 0.0;
            for (int k = l; k <= m; ++k) {
                t1 = S[k];
                rotg(t1, f, cs, sn);
                S[k] = t1;
                f = -sn * E[k];
                E[k] = cs * E[k];
                if (wantu) rot(n, U(0, k - 1), U(0, l - 2), cs, sn);
            }
            break;
        case 3: {  // one QR step
            double scale = std::max({std::fabs(S[m]), std::fabs(S[m - 1]), std::fabs(E[m - 1]), std::fabs(S[l]),
                                     std::fabs(E[l])});
            double sm = S[m] / scale, smm1 = S[m - 1] / scale, emm1 = E[m - 1] / scale, sl = S[l] / scale,
                   el = E[l] / scale;
            double b = ((smm1 + sm) * (smm1 - sm) + emm1 * emm1) / 2.0, c = (sm * emm1) * (sm * emm1);
            double shift = 0.0;
            if (b != 0.0 || c != 0.0) {
                shift = std::sqrt(b * b + c);
                if (b < 0.0) shift = -shift;
                shift = c / (b + shift);
            }
            f = (sl + sm) * (sl - sm) + shift;
            g = sl * el;
            for (int k = l; k <= m - 1; ++k) {
                rotg(f, g, cs, sn);
                if (k != l) E[k - 1] = f;
                f = cs * S[k] + sn * E[k];
                E[k] = cs * E[k] - sn * S[k];
                g = sn * S[k + 1];
                S[k + 1] = cs * S[k + 1];
                if (wantv) rot(p, V(0, k - 1), V(0, k), cs, sn);
                rotg(f, g, cs, sn);
                S[k] = f;
                f = cs * E[k] + sn * S[k + 1];
                S[k + 1] = -sn * E[k] + cs * S[k + 1];
                g = sn * E[k + 1];
                E[k + 1] = cs * E[k + 1];
                if (wantu && k < n) rot(n, U(0, k - 1), U(0, k), cs, sn);
            }
            E[m - 1] = f;
            ++iter;
            break;
        }
        default:  // convergence: a positive value, sorted into place
            if (S[l] < 0.0) {
                S[l] = -S[l];
                if (wantv) scal(p, -1.0, 0.0, V(0, l - 1));
            }
            while (l != mm && S[l] < S[l + 1]) {
                std::swap(S[l], S[l + 1]);
                if (wantv && l < p) swap(p, V(0, l - 1), V(0, l));
                if (wantu && l < n) swap(n, U(0, l - 1), U(0, l));
                ++l;
            }
            iter = 0;
            --m;
            break;
        }
    }
    if (cx)
        for (int i = 0; i < std::min(n + 1, p); ++i) si[i] = 0.0;
}

}  // namespace

void dsvdc(double* x, int ldx, int n, int p, double* s, double* e, double* u, int ldu, double* v, int ldv,
           double* work, int job, int* info) {
    svdc(x, nullptr, ldx, n, p, s, nullptr, e, nullptr, u, nullptr, ldu, v, nullptr, ldv, work, nullptr, job, info);
}

void zsvdc(double* xr, double* xi, int ldx, int n, int p, double* sr, double* si, double* er, double* ei,
           double* ur, double* ui, int ldu, double* vr, double* vi, int ldv, double* workr, double* worki, int job,
           int* info) {
    svdc(xr, xi, ldx, n, p, sr, si, er, ei, ur, ui, ldu, vr, vi, ldv, workr, worki, job, info);
}

}  // namespace ak_kernels
