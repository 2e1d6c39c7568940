// Eigenvalues and eigenvectors of Hermitian matrices: the EISPACK routines HTRIDI (Householder
// reduction of a complex Hermitian matrix to a real symmetric tridiagonal one), HTRIBK (its back
// transformation), TQL2 (the QL method with implicit shifts, with vectors) and TQLRAT (the rational
// QL method of Reinsch, values only), as published in the EISPACK Guide (Smith et al., 1976) after
// the Handbook algorithms of Wilkinson and Reinsch.
#include <cfloat>
#include <cmath>

#include "algebra/kernels/kernels.h"

namespace ak_kernels {

namespace {
struct mat {
    double* p;
    int nm;
    double& operator()(int i, int j) const { return p[static_cast<long>(j) * nm + i]; }
};
}  // namespace

void htridi(int nm, int n, double* arp, double* aip, double* d, double* e, double* e2, double* taup) {
    mat ar{arp, nm}, ai{aip, nm}, tau{taup, 2};
    if (n == 0) return;
    tau(0, n - 1) = 1.0;
    tau(1, n - 1) = 0.0;
    for (int i = 0; i < n; ++i) d[i] = ar(i, i);
    for (int i = n - 1; i >= 0; --i) {
        const int l = i - 1;
        double h = 0.0, scale = 0.0, si = 0.0;
        for (int k = 0; k <= l; ++k) scale += std::fabs(ar(i, k)) + std::fabs(ai(i, k));
        if (l < 0 || scale == 0.0) {
            if (l >= 0) {
                tau(0, l) = 1.0;
                tau(1, l) = 0.0;
            }
            e[i] = 0.0;
            e2[i] = 0.0;
        } else {
            for (int k = 0; k <= l; ++k) {
                ar(i, k) /= scale;
                ai(i, k) /= scale;
                h += ar(i, k) * ar(i, k) + ai(i, k) * ai(i, k);
            }
            e2[i] = scale * scale * h;
            double g = std::sqrt(h);
            e[i] = scale * g;
            double f = std::hypot(ar(i, l), ai(i, l));
            bool reduce = true;
            if (f != 0.0) {  // the next diagonal element of the phase matrix
                tau(0, l) = (ai(i, l) * tau(1, i) - ar(i, l) * tau(0, i)) / f;
                si = (ar(i, l) * tau(1, i) + ai(i, l) * tau(0, i)) / f;
                h += f * g;
                g = 1.0 + g / f;
                ar(i, l) *= g;
                ai(i, l) *= g;
                reduce = l != 0;
            } else {
                tau(0, l) = -tau(0, i);
                si = tau(1, i);
                ar(i, l) = g;
            }
            if (reduce) {
                f = 0.0;
                for (int j = 0; j <= l; ++j) {  // p = A u / h, kept in e and tau(1, .)
                    g = 0.0;
                    double gi = 0.0;
                    for (int k = 0; k <= j; ++k) {
                        g += ar(j, k) * ar(i, k) + ai(j, k) * ai(i, k);
                        gi += -ar(j, k) * ai(i, k) + ai(j, k) * ar(i, k);
                    }
                    for (int k = j + 1; k <= l; ++k) {
                        g += ar(k, j) * ar(i, k) - ai(k, j) * ai(i, k);
                        gi += -ar(k, j) * ai(i, k) - ai(k, j) * ar(i, k);
                    }
                    e[j] = g / h;
                    tau(1, j) = gi / h;
                    f += e[j] * ar(i, j) - tau(1, j) * ai(i, j);
                }
                double hh = f / (h + h);
                for (int j = 0; j <= l; ++j) {  // A - u q' - q u'
                    f = ar(i, j);
                    g = e[j] - hh * f;
                    e[j] = g;
                    double fi = -ai(i, j);
                    double gi = tau(1, j) - hh * fi;
                    tau(1, j) = -gi;
                    for (int k = 0; k <= j; ++k) {
                        ar(j, k) = ar(j, k) - f * e[k] - g * ar(i, k) + fi * tau(1, k) + gi * ai(i, k);
                        ai(j, k) = ai(j, k) - f * tau(1, k) - g * ai(i, k) - fi * e[k] - gi * ar(i, k);
                    }
                }
            }
            for (int k = 0; k <= l; ++k) {
                ar(i, k) *= scale;
                ai(i, k) *= scale;
            }
            tau(1, l) = -si;
        }
        double hh = d[i];
        d[i] = ar(i, i);
        ar(i, i) = hh;
        ai(i, i) = scale * std::sqrt(h);
    }
}

void htribk(int nm, int n, const double* arp, const double* aip, const double* taup, int m, double* zrp,
            double* zip) {
    mat ar{const_cast<double*>(arp), nm}, ai{const_cast<double*>(aip), nm}, tau{const_cast<double*>(taup), 2};
    mat zr{zrp, nm}, zi{zip, nm};
    if (m == 0) return;
    for (int k = 0; k < n; ++k)
        for (int j = 0; j < m; ++j) {
            zi(k, j) = -zr(k, j) * tau(1, k);
            zr(k, j) = zr(k, j) * tau(0, k);
        }
    for (int i = 1; i < n; ++i) {
        const int l = i - 1;
        double h = ai(i, i);
        if (h == 0.0) continue;
        for (int j = 0; j < m; ++j) {
            double s = 0.0, si = 0.0;
            for (int k = 0; k <= l; ++k) {
                s += ar(i, k) * zr(k, j) - ai(i, k) * zi(k, j);
                si += ar(i, k) * zi(k, j) + ai(i, k) * zr(k, j);
            }
            s = (s / h) / h;  // two divisions avoid underflow
            si = (si / h) / h;
            for (int k = 0; k <= l; ++k) {
                zr(k, j) = zr(k, j) - s * ar(i, k) - si * ai(i, k);
                zi(k, j) = zi(k, j) - si * ar(i, k) + s * ai(i, k);
            }
        }
    }
}

void tql2(int nm, int n, double* d, double* e, double* zp, int* ierr) {
    mat z{zp, nm};
    *ierr = 0;
    if (n <= 1) return;
    for (int i = 1; i < n; ++i) e[i - 1] = e[i];
    double f = 0.0, tst1 = 0.0;
    e[n - 1] = 0.0;
    for (int l = 0; l < n; ++l) {
        int iter = 0;
        double h = std::fabs(d[l]) + std::fabs(e[l]);
        if (tst1 < h) tst1 = h;
        int m = l;
        for (; m < n; ++m)  // a negligible subdiagonal element; e[n-1] is zero
            if (tst1 + std::fabs(e[m]) == tst1) break;
        if (m == n) m = n - 1;
        if (m != l) {
            do {
                if (iter == 30) {
                    *ierr = l + 1;
                    return;
                }
                ++iter;
                const int l1 = l + 1, l2 = l1 + 1;
                double g = d[l];
                double p = (d[l1] - g) / (2.0 * e[l]);
                double r = std::hypot(p, 1.0);
                d[l] = e[l] / (p + std::copysign(r, p));
                d[l1] = e[l] * (p + std::copysign(r, p));
                double dl1 = d[l1];
                h = g - d[l];
                for (int i = l2; i < n; ++i) d[i] -= h;
                f += h;
                p = d[m];
                double c = 1.0, c2 = c, c3 = c, el1 = e[l1], s = 0.0, s2 = 0.0;
                for (int i = m - 1; i >= l; --i) {
                    c3 = c2;
                    c2 = c;
                    s2 = s;
                    g = c * e[i];
                    h = c * p;
                    r = std::hypot(p, e[i]);
                    e[i + 1] = s * r;
                    s = e[i] / r;
                    c = p / r;
                    p = c * d[i] - s * g;
                    d[i + 1] = h + s * (c * g + s * d[i]);
                    for (int k = 0; k < n; ++k) {
                        h = z(k, i + 1);
                        z(k, i + 1) = s * z(k, i) + c * h;
                        z(k, i) = c * z(k, i) - s * h;
                    }
                }
                p = -s * s2 * c3 * el1 * e[l] / dl1;
                e[l] = s * p;
                d[l] = c * p;
            } while (tst1 + std::fabs(e[l]) > tst1);
        }
        d[l] += f;
    }
    // Ascending order, vectors with their values.
    for (int i = 0; i < n - 1; ++i) {
        int k = i;
        double p = d[i];
        for (int j = i + 1; j < n; ++j)
            if (d[j] < p) {
                k = j;
                p = d[j];
            }
        if (k == i) continue;
        d[k] = d[i];
        d[i] = p;
        for (int j = 0; j < n; ++j) std::swap(z(j, i), z(j, k));
    }
}

void tqlrat(int n, double* d, double* e2, int* ierr) {
    *ierr = 0;
    if (n <= 1) return;
    for (int i = 1; i < n; ++i) e2[i - 1] = e2[i];
    double f = 0.0, t = 0.0, b = 0.0, c = 0.0;
    e2[n - 1] = 0.0;
    for (int l = 0; l < n; ++l) {
        int iter = 0;
        double h = std::fabs(d[l]) + std::sqrt(e2[l]);
        if (t <= h) {
            t = h;
            b = DBL_EPSILON * t;
            c = b * b;
        }
        int m = l;
        for (; m < n; ++m)
            if (e2[m] <= c) break;
        if (m == n) m = n - 1;
        if (m != l) {
            for (;;) {
                if (iter == 30) {
                    *ierr = l + 1;
                    return;
                }
                ++iter;
                const int l1 = l + 1;
                double s = std::sqrt(e2[l]);
                double g = d[l];
                double p = (d[l1] - g) / (2.0 * s);
                double r = std::hypot(p, 1.0);
                d[l] = s / (p + std::copysign(r, p));
                h = g - d[l];
                for (int i = l1; i < n; ++i) d[i] -= h;
                f += h;
                g = d[m];
                if (g == 0.0) g = b;
                h = g;
                s = 0.0;
                for (int i = m - 1; i >= l; --i) {
                    p = g * h;
                    r = p + e2[i];
                    e2[i + 1] = s * r;
                    s = e2[i] / r;
                    d[i + 1] = h + s * (h + d[i]);
                    g = d[i] - e2[i] / g;
                    if (g == 0.0) g = b;
                    h = g * p / r;
                }
                e2[l] = s * g;
                d[l] = h;
                if (h == 0.0) break;  // guard against underflow in the convergence test
                if (std::fabs(e2[l]) <= std::fabs(c / h)) break;
                e2[l] = h * e2[l];
                if (e2[l] == 0.0) break;
            }
        }
        // Insert d[l] + f into the ascending list so far.
        double p = d[l] + f;
        int i = l;
        for (; i > 0; --i) {
            if (p >= d[i - 1]) break;
            d[i] = d[i - 1];
        }
        d[i] = p;
    }
}

}  // namespace ak_kernels
