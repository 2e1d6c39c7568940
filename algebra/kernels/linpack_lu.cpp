// Gaussian elimination with partial pivoting, its solve, determinant, inverse and condition
// estimate: the LINPACK routines DGEFA, ZGEFA, ZGESL, ZGEDI, DGECO and ZGECO as published in the
// LINPACK Users' Guide (Dongarra, Bunch, Moler, Stewart, 1979), column oriented. Complex matrices
// are split into real and imaginary arrays; pivots are chosen by |re| + |im| as there.
#include <cmath>

#include "algebra/kernels/kernels.h"

namespace ak_kernels {

namespace {

// Index (zero-based, from `from`) of the largest |re| + |im| of column entries from..n-1.
int pivot_row(const double* cr, const double* ci, int from, int n) {
    int l = from;
    double best = -1.0;
    for (int i = from; i < n; ++i) {
        double v = ci ? cabs1(cr[i], ci[i]) : std::fabs(cr[i]);
        if (v > best) {
            best = v;
            l = i;
        }
    }
    return l;
}

double asum(int n, const double* xr, const double* xi) {
    double s = 0.0;
    for (int i = 0; i < n; ++i) s += xi ? cabs1(xr[i], xi[i]) : std::fabs(xr[i]);
    return s;
}

void scale(int n, double s, double* xr, double* xi) {
    for (int i = 0; i < n; ++i) {
        xr[i] *= s;
        if (xi) xi[i] *= s;
    }
}

}  // namespace

void dgefa(double* a, int lda, int n, int* ipvt, int* info) {
    *info = 0;
    for (int k = 0; k < n - 1; ++k) {
        double* ck = a + static_cast<long>(k) * lda;
        int l = pivot_row(ck, nullptr, k, n);
        ipvt[k] = l + 1;
        if (ck[l] == 0.0) {
            *info = k + 1;
            continue;
        }
        if (l != k) std::swap(ck[l], ck[k]);
        double t = -1.0 / ck[k];
        for (int i = k + 1; i < n; ++i) ck[i] *= t;
        for (int j = k + 1; j < n; ++j) {
            double* cj = a + static_cast<long>(j) * lda;
            t = cj[l];
            if (l != k) {
                cj[l] = cj[k];
                cj[k] = t;
            }
            if (t != 0.0)
                for (int i = k + 1; i < n; ++i) cj[i] += t * ck[i];
        }
    }
    if (n > 0) {
        ipvt[n - 1] = n;
        if (a[static_cast<long>(n - 1) * lda + n - 1] == 0.0) *info = n;
    }
}

void zgefa(double* ar, double* ai, int lda, int n, int* ipvt, int* info) {
    *info = 0;
    for (int k = 0; k < n - 1; ++k) {
        long ok = static_cast<long>(k) * lda;
        double *kr = ar + ok, *ki = ai + ok;
        int l = pivot_row(kr, ki, k, n);
        ipvt[k] = l + 1;
        if (cabs1(kr[l], ki[l]) == 0.0) {
            *info = k + 1;
            continue;
        }
        if (l != k) {
            std::swap(kr[l], kr[k]);
            std::swap(ki[l], ki[k]);
        }
        double tr, ti;
        cdiv(-1.0, 0.0, kr[k], ki[k], tr, ti);
        for (int i = k + 1; i < n; ++i) {
            double xr = kr[i], xi = ki[i];
            kr[i] = tr * xr - ti * xi;
            ki[i] = tr * xi + ti * xr;
        }
        for (int j = k + 1; j < n; ++j) {
            long oj = static_cast<long>(j) * lda;
            double *jr = ar + oj, *ji = ai + oj;
            tr = jr[l];
            ti = ji[l];
            if (l != k) {
                jr[l] = jr[k];
                ji[l] = ji[k];
                jr[k] = tr;
                ji[k] = ti;
            }
            if (tr == 0.0 && ti == 0.0) continue;
            for (int i = k + 1; i < n; ++i) {
                jr[i] += tr * kr[i] - ti * ki[i];
                ji[i] += tr * ki[i] + ti * kr[i];
            }
        }
    }
    if (n > 0) {
        ipvt[n - 1] = n;
        long d = static_cast<long>(n - 1) * lda + n - 1;
        if (cabs1(ar[d], ai[d]) == 0.0) *info = n;
    }
}

void zgesl(const double* ar, const double* ai, int lda, int n, const int* ipvt, double* br, double* bi,
           int job) {
    if (job == 0) {
        // L y = b, with the row exchanges, then U x = y.
        for (int k = 0; k < n - 1; ++k) {
            int l = ipvt[k] - 1;
            double tr = br[l], ti = bi[l];
            if (l != k) {
                br[l] = br[k];
                bi[l] = bi[k];
                br[k] = tr;
                bi[k] = ti;
            }
            const double *kr = ar + static_cast<long>(k) * lda, *ki = ai + static_cast<long>(k) * lda;
            for (int i = k + 1; i < n; ++i) {
                br[i] += tr * kr[i] - ti * ki[i];
                bi[i] += tr * ki[i] + ti * kr[i];
            }
        }
        for (int k = n - 1; k >= 0; --k) {
            const double *kr = ar + static_cast<long>(k) * lda, *ki = ai + static_cast<long>(k) * lda;
            cdiv(br[k], bi[k], kr[k], ki[k], br[k], bi[k]);
            double tr = -br[k], ti = -bi[k];
            for (int i = 0; i < k; ++i) {
                br[i] += tr * kr[i] - ti * ki[i];
                bi[i] += tr * ki[i] + ti * kr[i];
            }
        }
        return;
    }
    // U' y = b, then L' x = y with the exchanges undone in reverse.
    for (int k = 0; k < n; ++k) {
        const double *kr = ar + static_cast<long>(k) * lda, *ki = ai + static_cast<long>(k) * lda;
        double tr = 0.0, ti = 0.0;
        for (int i = 0; i < k; ++i) {  // conj(a) . b
            tr += kr[i] * br[i] + ki[i] * bi[i];
            ti += kr[i] * bi[i] - ki[i] * br[i];
        }
        cdiv(br[k] - tr, bi[k] - ti, kr[k], -ki[k], br[k], bi[k]);
    }
    for (int k = n - 2; k >= 0; --k) {
        const double *kr = ar + static_cast<long>(k) * lda, *ki = ai + static_cast<long>(k) * lda;
        double tr = 0.0, ti = 0.0;
        for (int i = k + 1; i < n; ++i) {
            tr += kr[i] * br[i] + ki[i] * bi[i];
            ti += kr[i] * bi[i] - ki[i] * br[i];
        }
        br[k] += tr;
        bi[k] += ti;
        int l = ipvt[k] - 1;
        if (l != k) {
            std::swap(br[l], br[k]);
            std::swap(bi[l], bi[k]);
        }
    }
}

void zgedi(double* ar, double* ai, int lda, int n, const int* ipvt, double* detr, double* deti,
           double* workr, double* worki, int job) {
    auto at = [lda](int i, int j) { return static_cast<long>(j) * lda + i; };
    if (job / 10 != 0) {
        detr[0] = 1.0;
        deti[0] = 0.0;
        detr[1] = 0.0;
        deti[1] = 0.0;
        for (int i = 0; i < n; ++i) {
            if (ipvt[i] != i + 1) {
                detr[0] = -detr[0];
                deti[0] = -deti[0];
            }
            double xr = ar[at(i, i)], xi = ai[at(i, i)];
            double pr = detr[0] * xr - deti[0] * xi, pi = detr[0] * xi + deti[0] * xr;
            detr[0] = pr;
            deti[0] = pi;
            if (cabs1(detr[0], deti[0]) == 0.0) break;
            while (cabs1(detr[0], deti[0]) < 1.0) {
                detr[0] *= 10.0;
                deti[0] *= 10.0;
                detr[1] -= 1.0;
            }
            while (cabs1(detr[0], deti[0]) >= 10.0) {
                detr[0] /= 10.0;
                deti[0] /= 10.0;
                detr[1] += 1.0;
            }
        }
    }
    if (job % 10 == 0) return;
    // inverse(U) in place.
    for (int k = 0; k < n; ++k) {
        cdiv(1.0, 0.0, ar[at(k, k)], ai[at(k, k)], ar[at(k, k)], ai[at(k, k)]);
        double tr = -ar[at(k, k)], ti = -ai[at(k, k)];
        for (int i = 0; i < k; ++i) {
            double xr = ar[at(i, k)], xi = ai[at(i, k)];
            ar[at(i, k)] = tr * xr - ti * xi;
            ai[at(i, k)] = tr * xi + ti * xr;
        }
        for (int j = k + 1; j < n; ++j) {
            tr = ar[at(k, j)];
            ti = ai[at(k, j)];
            ar[at(k, j)] = 0.0;
            ai[at(k, j)] = 0.0;
            for (int i = 0; i <= k; ++i) {
                ar[at(i, j)] += tr * ar[at(i, k)] - ti * ai[at(i, k)];
                ai[at(i, j)] += tr * ai[at(i, k)] + ti * ar[at(i, k)];
            }
        }
    }
    // inverse(U) * inverse(L), undoing the exchanges on the columns.
    for (int k = n - 2; k >= 0; --k) {
        for (int i = k + 1; i < n; ++i) {
            workr[i] = ar[at(i, k)];
            worki[i] = ai[at(i, k)];
            ar[at(i, k)] = 0.0;
            ai[at(i, k)] = 0.0;
        }
        for (int j = k + 1; j < n; ++j) {
            double tr = workr[j], ti = worki[j];
            for (int i = 0; i < n; ++i) {
                ar[at(i, k)] += tr * ar[at(i, j)] - ti * ai[at(i, j)];
                ai[at(i, k)] += tr * ai[at(i, j)] + ti * ar[at(i, j)];
            }
        }
        int l = ipvt[k] - 1;
        if (l != k)
            for (int i = 0; i < n; ++i) {
                std::swap(ar[at(i, k)], ar[at(i, l)]);
                std::swap(ai[at(i, k)], ai[at(i, l)]);
            }
    }
}

namespace {

// The estimate shared by dgeco and zgeco: solves A' y = e with e chosen for growth, then A z = y,
// on the factors; ai and zi are null for the real case. Returns ||z|| / ||y|| scaled by the norm.
double condition_estimate(const double* ar, const double* ai, int lda, int n, const int* ipvt, double anorm,
                          double* zr, double* zi) {
    auto at = [lda](int i, int j) { return static_cast<long>(j) * lda + i; };
    const bool cx = ai != nullptr;
    auto mag = [cx](double re, double im) { return cx ? cabs1(re, im) : std::fabs(re); };
    // Solve U' w = e.
    double ekr = 1.0, eki = 0.0;
    for (int j = 0; j < n; ++j) {
        zr[j] = 0.0;
        if (cx) zi[j] = 0.0;
    }
    for (int k = 0; k < n; ++k) {
        double zkr = zr[k], zki = cx ? zi[k] : 0.0;
        if (mag(zkr, zki) != 0.0) {  // ek = |ek| * sign of -z(k)
            double m = mag(ekr, eki), zm = mag(zkr, zki);
            ekr = m * (-zkr / zm);
            eki = m * (-zki / zm);
        }
        double akr = ar[at(k, k)], aki = cx ? -ai[at(k, k)] : 0.0;  // conj of the pivot
        if (mag(ekr - zkr, eki - zki) > mag(akr, aki)) {
            double s = mag(akr, aki) / mag(ekr - zkr, eki - zki);
            scale(n, s, zr, cx ? zi : nullptr);
            ekr *= s;
            eki *= s;
            zkr = zr[k];
            zki = cx ? zi[k] : 0.0;
        }
        double wkr = ekr - zkr, wki = eki - zki, wkmr = -ekr - zkr, wkmi = -eki - zki;
        double s = mag(wkr, wki), sm = mag(wkmr, wkmi);
        if (mag(akr, aki) != 0.0) {
            if (cx) {
                cdiv(wkr, wki, akr, aki, wkr, wki);
                cdiv(wkmr, wkmi, akr, aki, wkmr, wkmi);
            } else {
                wkr /= akr;
                wkmr /= akr;
            }
        } else {
            wkr = 1.0;
            wki = 0.0;
            wkmr = 1.0;
            wkmi = 0.0;
        }
        for (int j = k + 1; j < n; ++j) {
            double cr = ar[at(k, j)], ci = cx ? -ai[at(k, j)] : 0.0;
            double zjr = zr[j], zji = cx ? zi[j] : 0.0;
            sm += mag(zjr + wkmr * cr - wkmi * ci, zji + wkmr * ci + wkmi * cr);
            zjr += wkr * cr - wki * ci;
            zji += wkr * ci + wki * cr;
            zr[j] = zjr;
            if (cx) zi[j] = zji;
            s += mag(zjr, zji);
        }
        if (s < sm) {
            double tr = wkmr - wkr, ti = wkmi - wki;
            wkr = wkmr;
            wki = wkmi;
            for (int j = k + 1; j < n; ++j) {
                double cr = ar[at(k, j)], ci = cx ? -ai[at(k, j)] : 0.0;
                zr[j] += tr * cr - ti * ci;
                if (cx) zi[j] += tr * ci + ti * cr;
            }
        }
        zr[k] = wkr;
        if (cx) zi[k] = wki;
    }
    double* zim = cx ? zi : nullptr;
    scale(n, 1.0 / asum(n, zr, zim), zr, zim);
    // Solve L' y = w.
    for (int k = n - 1; k >= 0; --k) {
        if (k < n - 1) {
            double tr = 0.0, ti = 0.0;
            for (int i = k + 1; i < n; ++i) {
                double cr = ar[at(i, k)], ci = cx ? ai[at(i, k)] : 0.0;
                double xr = zr[i], xi = cx ? zi[i] : 0.0;
                tr += cr * xr + ci * xi;
                ti += cr * xi - ci * xr;
            }
            zr[k] += tr;
            if (cx) zi[k] += ti;
        }
        double zm = mag(zr[k], cx ? zi[k] : 0.0);
        if (zm > 1.0) scale(n, 1.0 / zm, zr, zim);
        int l = ipvt[k] - 1;
        std::swap(zr[l], zr[k]);
        if (cx) std::swap(zi[l], zi[k]);
    }
    scale(n, 1.0 / asum(n, zr, zim), zr, zim);
    double ynorm = 1.0;
    // Solve L v = y.
    for (int k = 0; k < n; ++k) {
        int l = ipvt[k] - 1;
        double tr = zr[l], ti = cx ? zi[l] : 0.0;
        zr[l] = zr[k];
        zr[k] = tr;
        if (cx) {
            zi[l] = zi[k];
            zi[k] = ti;
        }
        for (int i = k + 1; i < n; ++i) {
            double cr = ar[at(i, k)], ci = cx ? ai[at(i, k)] : 0.0;
            zr[i] += tr * cr - ti * ci;
            if (cx) zi[i] += tr * ci + ti * cr;
        }
        double zm = mag(zr[k], cx ? zi[k] : 0.0);
        if (zm > 1.0) {
            scale(n, 1.0 / zm, zr, zim);
            ynorm /= zm;
        }
    }
    double s = 1.0 / asum(n, zr, zim);
    scale(n, s, zr, zim);
    ynorm *= s;
    // Solve U z = v.
    for (int k = n - 1; k >= 0; --k) {
        double akr = ar[at(k, k)], aki = cx ? ai[at(k, k)] : 0.0;
        double zm = mag(zr[k], cx ? zi[k] : 0.0), am = mag(akr, aki);
        if (zm > am) {
            s = am / zm;
            scale(n, s, zr, zim);
            ynorm *= s;
        }
        if (am != 0.0) {
            if (cx)
                cdiv(zr[k], zi[k], akr, aki, zr[k], zi[k]);
            else
                zr[k] /= akr;
        } else {
            zr[k] = 1.0;
            if (cx) zi[k] = 0.0;
        }
        double tr = -zr[k], ti = cx ? -zi[k] : 0.0;
        for (int i = 0; i < k; ++i) {
            double cr = ar[at(i, k)], ci = cx ? ai[at(i, k)] : 0.0;
            zr[i] += tr * cr - ti * ci;
            if (cx) zi[i] += tr * ci + ti * cr;
        }
    }
    s = 1.0 / asum(n, zr, zim);
    scale(n, s, zr, zim);
    ynorm *= s;
    return anorm != 0.0 ? ynorm / anorm : 0.0;
}

double one_norm(const double* ar, const double* ai, int lda, int n) {
    double anorm = 0.0;
    for (int j = 0; j < n; ++j) {
        long o = static_cast<long>(j) * lda;
        double s = asum(n, ar + o, ai ? ai + o : nullptr);
        if (s > anorm || std::isnan(s)) anorm = s;
    }
    return anorm;
}

}  // namespace

void dgeco(double* a, int lda, int n, int* ipvt, double* rcond, double* z) {
    double anorm = one_norm(a, nullptr, lda, n);
    int info;
    dgefa(a, lda, n, ipvt, &info);
    *rcond = condition_estimate(a, nullptr, lda, n, ipvt, anorm, z, nullptr);
}

void zgeco(double* ar, double* ai, int lda, int n, int* ipvt, double* rcond, double* zr, double* zi) {
    double anorm = one_norm(ar, ai, lda, n);
    int info;
    zgefa(ar, ai, lda, n, ipvt, &info);
    *rcond = condition_estimate(ar, ai, lda, n, ipvt, anorm, zr, zi);
}

}  // namespace ak_kernels
