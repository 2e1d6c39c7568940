// Eigenvalues, eigenvectors and the real Schur form of a real general matrix: the EISPACK routines
// ELMHES and ELTRAN (reduction to upper Hessenberg form by stabilised elementary similarity
// transformations, and the accumulated transformation), ORTHES and ORTRAN (the same by orthogonal
// Householder transformations), HQR and HQR2 (the double-shift QR algorithm of Francis, for values,
// and for values and vectors with back substitution), as published in the EISPACK Guide (1976)
// after Martin, Peters and Wilkinson in the Handbook for Automatic Computation, vol. II.
#include <cmath>
#include <utility>

#include "algebra/kernels/kernels.h"

namespace ak_kernels {

namespace {
struct mat {
    double* p;
    int nm;
    double& operator()(int i, int j) const { return p[static_cast<long>(j) * nm + i]; }
};
}  // namespace

void elmhes(int nm, int n, int low, int igh, double* ap, int* int_) {
    mat a{ap, nm};
    const int lo = low - 1, hi = igh - 1;
    for (int m = lo + 1; m <= hi - 1; ++m) {
        const int mm1 = m - 1;
        double x = 0.0;
        int i = m;
        for (int j = m; j <= hi; ++j)
            if (std::fabs(a(j, mm1)) > std::fabs(x)) {
                x = a(j, mm1);
                i = j;
            }
        int_[m] = i + 1;
        if (i != m) {
            for (int j = mm1; j < n; ++j) std::swap(a(i, j), a(m, j));
            for (int j = 0; j <= hi; ++j) std::swap(a(j, i), a(j, m));
        }
        if (x == 0.0) continue;
        for (i = m + 1; i <= hi; ++i) {
            double y = a(i, mm1);
            if (y == 0.0) continue;
            y /= x;
            a(i, mm1) = y;
            for (int j = m; j < n; ++j) a(i, j) -= y * a(m, j);
            for (int j = 0; j <= hi; ++j) a(j, m) += y * a(j, i);
        }
    }
}

void eltran(int nm, int n, int low, int igh, const double* ap, const int* int_, double* zp) {
    mat a{const_cast<double*>(ap), nm}, z{zp, nm};
    for (int j = 0; j < n; ++j) {
        for (int i = 0; i < n; ++i) z(i, j) = 0.0;
        z(j, j) = 1.0;
    }
    const int lo = low - 1, hi = igh - 1;
    for (int mp = hi - 1; mp > lo; --mp) {
        for (int i = mp + 1; i <= hi; ++i) z(i, mp) = a(i, mp - 1);
        int i = int_[mp] - 1;
        if (i == mp) continue;
        for (int j = mp; j <= hi; ++j) {
            z(mp, j) = z(i, j);
            z(i, j) = 0.0;
        }
        z(i, mp) = 1.0;
    }
}

void orthes(int nm, int n, int low, int igh, double* ap, double* ort) {
    mat a{ap, nm};
    const int lo = low - 1, hi = igh - 1;
    for (int m = lo + 1; m <= hi - 1; ++m) {
        double h = 0.0, scale = 0.0;
        ort[m] = 0.0;
        for (int i = m; i <= hi; ++i) scale += std::fabs(a(i, m - 1));
        if (scale == 0.0) continue;
        for (int i = hi; i >= m; --i) {
            ort[i] = a(i, m - 1) / scale;
            h += ort[i] * ort[i];
        }
        double g = -std::copysign(std::sqrt(h), ort[m]);
        h -= ort[m] * g;
        ort[m] -= g;
        for (int j = m; j < n; ++j) {  // (I - u u' / h) A
            double f = 0.0;
            for (int i = hi; i >= m; --i) f += ort[i] * a(i, j);
            f /= h;
            for (int i = m; i <= hi; ++i) a(i, j) -= f * ort[i];
        }
        for (int i = 0; i <= hi; ++i) {  // ... (I - u u' / h)
            double f = 0.0;
            for (int j = hi; j >= m; --j) f += ort[j] * a(i, j);
            f /= h;
            for (int j = m; j <= hi; ++j) a(i, j) -= f * ort[j];
        }
        ort[m] *= scale;
        a(m, m - 1) = scale * g;
    }
}

void ortran(int nm, int n, int low, int igh, double* ap, double* ort, double* zp) {
    mat a{ap, nm}, z{zp, nm};
    for (int j = 0; j < n; ++j) {
        for (int i = 0; i < n; ++i) z(i, j) = 0.0;
        z(j, j) = 1.0;
    }
    const int lo = low - 1, hi = igh - 1;
    for (int mp = hi - 1; mp > lo; --mp) {
        if (a(mp, mp - 1) == 0.0) continue;
        for (int i = mp + 1; i <= hi; ++i) ort[i] = a(i, mp - 1);
        for (int j = mp; j <= hi; ++j) {
            double g = 0.0;
            for (int i = mp; i <= hi; ++i) g += ort[i] * z(i, j);
            g = (g / ort[mp]) / a(mp, mp - 1);  // the divisor is minus the h of orthes
            for (int i = mp; i <= hi; ++i) z(i, j) += g * ort[i];
        }
    }
}

namespace {

// The QR iteration shared by hqr (z null: only the active block is transformed) and hqr2 (the
// whole matrix, with the transformations accumulated in z). Returns false on failure to converge,
// with ierr set.
bool francis(mat h, int n, int lo, int hi, double* wr, double* wi, double* zp, int nm, int* ierr, double& norm) {
    const bool whole = zp != nullptr;
    mat z{zp, nm};
    *ierr = 0;
    norm = 0.0;
    for (int i = 0, k = 0; i < n; ++i) {  // roots isolated by balancing, and the norm
        for (int j = k; j < n; ++j) norm += std::fabs(h(i, j));
        k = i;
        if (i >= lo && i <= hi) continue;
        wr[i] = h(i, i);
        wi[i] = 0.0;
    }
    int en = hi;
    double t = 0.0;
    int itn = 30 * n;
    while (en >= lo) {
        int its = 0;
        int na = en - 1, enm2 = na - 1;
        for (;;) {
            int l = en;
            for (; l > lo; --l) {  // a single small subdiagonal element
                double s = std::fabs(h(l - 1, l - 1)) + std::fabs(h(l, l));
                if (s == 0.0) s = norm;
                if (s + std::fabs(h(l, l - 1)) == s) break;
            }
            double x = h(en, en);
            if (l == en) {  // one root
                h(en, en) = x + t;
                wr[en] = h(en, en);
                wi[en] = 0.0;
                en = na;
                break;
            }
            double y = h(na, na), w = h(en, na) * h(na, en);
            if (l == na) {  // two roots
                double p = (y - x) / 2.0, q = p * p + w, zz = std::sqrt(std::fabs(q));
                h(en, en) = x + t;
                x = h(en, en);
                h(na, na) = y + t;
                if (q >= 0.0) {  // a real pair, made triangular when vectors are wanted
                    zz = p + std::copysign(zz, p);
                    wr[na] = x + zz;
                    wr[en] = wr[na];
                    if (zz != 0.0) wr[en] = x - w / zz;
                    wi[na] = 0.0;
                    wi[en] = 0.0;
                    if (whole) {
                        x = h(en, na);
                        double s = std::fabs(x) + std::fabs(zz);
                        p = x / s;
                        q = zz / s;
                        double r = std::sqrt(p * p + q * q);
                        p /= r;
                        q /= r;
                        for (int j = na; j < n; ++j) {
                            zz = h(na, j);
                            h(na, j) = q * zz + p * h(en, j);
                            h(en, j) = q * h(en, j) - p * zz;
                        }
                        for (int i = 0; i <= en; ++i) {
                            zz = h(i, na);
                            h(i, na) = q * zz + p * h(i, en);
                            h(i, en) = q * h(i, en) - p * zz;
                        }
                        for (int i = lo; i <= hi; ++i) {
                            zz = z(i, na);
                            z(i, na) = q * zz + p * z(i, en);
                            z(i, en) = q * z(i, en) - p * zz;
                        }
                    }
                } else {
                    wr[na] = x + p;
                    wr[en] = x + p;
                    wi[na] = zz;
                    wi[en] = -zz;
                }
                en = enm2;
                break;
            }
            if (itn == 0) {
                *ierr = en + 1;
                return false;
            }
            if (its == 10 || its == 20) {  // exceptional shift
                t += x;
                for (int i = lo; i <= en; ++i) h(i, i) -= x;
                double s = std::fabs(h(en, na)) + std::fabs(h(na, enm2));
                x = 0.75 * s;
                y = x;
                w = -0.4375 * s * s;
            }
            ++its;
            --itn;
            // Two consecutive small subdiagonal elements.
            int m = enm2;
            double p = 0, q = 0, r = 0;
            for (; m >= l; --m) {
                double zz = h(m, m);
                r = x - zz;
                double s = y - zz;
                p = (r * s - w) / h(m + 1, m) + h(m, m + 1);
                q = h(m + 1, m + 1) - zz - r - s;
                r = h(m + 2, m + 1);
                s = std::fabs(p) + std::fabs(q) + std::fabs(r);
                p /= s;
                q /= s;
                r /= s;
                if (m == l) break;
                double tst1 = std::fabs(p) * (std::fabs(h(m - 1, m - 1)) + std::fabs(zz) + std::fabs(h(m + 1, m + 1)));
                if (tst1 + std::fabs(h(m, m - 1)) * (std::fabs(q) + std::fabs(r)) == tst1) break;
            }
            for (int i = m + 2; i <= en; ++i) {
                h(i, i - 2) = 0.0;
                if (i != m + 2) h(i, i - 3) = 0.0;
            }
            // The double QR step on rows l..en and columns m..en.
            for (int k = m; k <= na; ++k) {
                const bool notlas = k != na;
                if (k != m) {
                    p = h(k, k - 1);
                    q = h(k + 1, k - 1);
                    r = notlas ? h(k + 2, k - 1) : 0.0;
                    x = std::fabs(p) + std::fabs(q) + std::fabs(r);
                    if (x == 0.0) continue;
                    p /= x;
                    q /= x;
                    r /= x;
                }
                double s = std::copysign(std::sqrt(p * p + q * q + r * r), p);
                if (k != m)
                    h(k, k - 1) = -s * x;
                else if (l != m)
                    h(k, k - 1) = -h(k, k - 1);
                p += s;
                x = p / s;
                y = q / s;
                double zz = r / s;
                q /= p;
                r /= p;
                const int jend = whole ? n - 1 : en;
                const int ibeg = whole ? 0 : l;
                const int iend = std::min(en, k + 3);
                if (!notlas) {
                    for (int j = k; j <= jend; ++j) {
                        p = h(k, j) + q * h(k + 1, j);
                        h(k, j) -= p * x;
                        h(k + 1, j) -= p * y;
                    }
                    for (int i = ibeg; i <= iend; ++i) {
                        p = x * h(i, k) + y * h(i, k + 1);
                        h(i, k) -= p;
                        h(i, k + 1) -= p * q;
                    }
                    if (whole)
                        for (int i = lo; i <= hi; ++i) {
                            p = x * z(i, k) + y * z(i, k + 1);
                            z(i, k) -= p;
                            z(i, k + 1) -= p * q;
                        }
                } else {
                    for (int j = k; j <= jend; ++j) {
                        p = h(k, j) + q * h(k + 1, j) + r * h(k + 2, j);
                        h(k, j) -= p * x;
                        h(k + 1, j) -= p * y;
                        h(k + 2, j) -= p * zz;
                    }
                    for (int i = ibeg; i <= iend; ++i) {
                        p = x * h(i, k) + y * h(i, k + 1) + zz * h(i, k + 2);
                        h(i, k) -= p;
                        h(i, k + 1) -= p * q;
                        h(i, k + 2) -= p * r;
                    }
                    if (whole)
                        for (int i = lo; i <= hi; ++i) {
                            p = x * z(i, k) + y * z(i, k + 1) + zz * z(i, k + 2);
                            z(i, k) -= p;
                            z(i, k + 1) -= p * q;
                            z(i, k + 2) -= p * r;
                        }
                }
            }
        }
    }
    return true;
}

// Back substitution for the vectors of the quasi-triangular form, then the product with z.
void vectors_from_schur(mat h, int n, int lo, int hi, const double* wr, const double* wi, mat z, double norm) {
    if (norm == 0.0) return;
    for (int en = n - 1; en >= 0; --en) {
        double p = wr[en], q = wi[en];
        int na = en - 1;
        if (q > 0.0) continue;
        if (q == 0.0) {  // a real vector
            int m = en;
            h(en, en) = 1.0;
            double zz = 0.0, s = 0.0;
            for (int i = en - 1; i >= 0; --i) {
                double w = h(i, i) - p, r = 0.0;
                for (int j = m; j <= en; ++j) r += h(i, j) * h(j, en);
                if (wi[i] < 0.0) {
                    zz = w;
                    s = r;
                    continue;
                }
                m = i;
                if (wi[i] == 0.0) {
                    double t = w;
                    if (t == 0.0) {
                        double tst1 = norm;
                        t = tst1;
                        do t *= 0.01;
                        while (norm + t > tst1);
                    }
                    h(i, en) = -r / t;
                } else {  // solve the real 2 x 2 equations
                    double x = h(i, i + 1), y = h(i + 1, i);
                    q = (wr[i] - p) * (wr[i] - p) + wi[i] * wi[i];
                    double t = (x * s - zz * r) / q;
                    h(i, en) = t;
                    if (std::fabs(x) > std::fabs(zz))
                        h(i + 1, en) = (-r - w * t) / x;
                    else
                        h(i + 1, en) = (-s - y * t) / zz;
                }
                double t = std::fabs(h(i, en));  // overflow control
                if (t == 0.0) continue;
                if (t + 1.0 / t > t) continue;
                for (int j = i; j <= en; ++j) h(j, en) /= t;
            }
            continue;
        }
        // A complex vector: the last component imaginary, so the vector matrix is triangular.
        int m = na;
        if (std::fabs(h(en, na)) > std::fabs(h(na, en))) {
            h(na, na) = q / h(en, na);
            h(na, en) = -(h(en, en) - p) / h(en, na);
        } else {
            cdiv(0.0, -h(na, en), h(na, na) - p, q, h(na, na), h(na, en));
        }
        h(en, na) = 0.0;
        h(en, en) = 1.0;
        double zz = 0.0, r = 0.0, s = 0.0;
        for (int i = na - 1; i >= 0; --i) {
            double w = h(i, i) - p, ra = 0.0, sa = 0.0;
            for (int j = m; j <= en; ++j) {
                ra += h(i, j) * h(j, na);
                sa += h(i, j) * h(j, en);
            }
            if (wi[i] < 0.0) {
                zz = w;
                r = ra;
                s = sa;
                continue;
            }
            m = i;
            if (wi[i] == 0.0) {
                cdiv(-ra, -sa, w, q, h(i, na), h(i, en));
            } else {  // solve the complex 2 x 2 equations
                double x = h(i, i + 1), y = h(i + 1, i);
                double vr = (wr[i] - p) * (wr[i] - p) + wi[i] * wi[i] - q * q;
                double vi = (wr[i] - p) * 2.0 * q;
                if (vr == 0.0 && vi == 0.0) {
                    double tst1 = norm * (std::fabs(w) + std::fabs(q) + std::fabs(x) + std::fabs(y) + std::fabs(zz));
                    vr = tst1;
                    do vr *= 0.01;
                    while (tst1 + vr > tst1);
                }
                cdiv(x * r - zz * ra + q * sa, x * s - zz * sa - q * ra, vr, vi, h(i, na), h(i, en));
                if (std::fabs(x) > std::fabs(zz) + std::fabs(q)) {
                    h(i + 1, na) = (-ra - w * h(i, na) + q * h(i, en)) / x;
                    h(i + 1, en) = (-sa - w * h(i, en) - q * h(i, na)) / x;
                } else {
                    cdiv(-r - y * h(i, na), -s - y * h(i, en), zz, q, h(i + 1, na), h(i + 1, en));
                }
            }
            double t = std::fmax(std::fabs(h(i, na)), std::fabs(h(i, en)));
            if (t == 0.0) continue;
            if (t + 1.0 / t > t) continue;
            for (int j = i; j <= en; ++j) {
                h(j, na) /= t;
                h(j, en) /= t;
            }
        }
    }
    for (int i = 0; i < n; ++i) {  // vectors of isolated roots
        if (i >= lo && i <= hi) continue;
        for (int j = i; j < n; ++j) z(i, j) = h(i, j);
    }
    for (int j = n - 1; j >= lo; --j) {  // back to the vectors of the original matrix
        int m = std::min(j, hi);
        for (int i = lo; i <= hi; ++i) {
            double zz = 0.0;
            for (int k = lo; k <= m; ++k) zz += z(i, k) * h(k, j);
            z(i, j) = zz;
        }
    }
}

}  // namespace

void hqr(int nm, int n, int low, int igh, double* h, double* wr, double* wi, int* ierr) {
    double norm;
    francis(mat{h, nm}, n, low - 1, igh - 1, wr, wi, nullptr, nm, ierr, norm);
}

void hqr2(int nm, int n, int low, int igh, double* h, double* wr, double* wi, double* z, int* ierr, int vectors) {
    double norm;
    if (!francis(mat{h, nm}, n, low - 1, igh - 1, wr, wi, z, nm, ierr, norm)) return;
    if (vectors) vectors_from_schur(mat{h, nm}, n, low - 1, igh - 1, wr, wi, mat{z, nm}, norm);
}

}  // namespace ak_kernels
