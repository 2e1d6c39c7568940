// Householder QR with optional column pivoting and the application of its factors: the LINPACK
// routines DQRDC, DQRSL, ZQRDC and ZQRSL (LINPACK Users' Guide, 1979, chapter 9). The real and the
// complex forms are one routine here, the complex case on split arrays (xi non-null).
//
// Each reflection is I - u u' / u(l) with u(l) = 1 + |x(l,l)| / ||x(l:n,l)|| real, so that the same
// reflection serves for Q y and for Q' y. The lower part of column l keeps u, qraux(l) keeps u(l),
// and x(l,l) the diagonal of R.
#include <cmath>
#include <utility>

#include "algebra/kernels/kernels.h"

namespace ak_kernels {

namespace {

struct cols {  // a complex or real n x p array with leading dimension ld
    double *re, *im;
    int ld;
    double* r(int i, int j) const { return re + static_cast<long>(j) * ld + i; }
    double* c(int i, int j) const { return im + static_cast<long>(j) * ld + i; }
};

double nrm2(int n, const double* xr, const double* xi) {
    double scale = 0.0, ssq = 1.0;
    for (int k = 0; k < 2; ++k) {
        const double* x = k == 0 ? xr : xi;
        if (!x) continue;
        for (int i = 0; i < n; ++i) {
            double a = std::fabs(x[i]);
            if (a == 0.0) continue;
            if (scale < a) {
                ssq = 1.0 + ssq * (scale / a) * (scale / a);
                scale = a;
            } else {
                ssq += (a / scale) * (a / scale);
            }
        }
    }
    return scale * std::sqrt(ssq);
}

void swap_columns(const cols& x, int n, int a, int b) {
    for (int i = 0; i < n; ++i) {
        std::swap(*x.r(i, a), *x.r(i, b));
        if (x.im) std::swap(*x.c(i, a), *x.c(i, b));
    }
}

// conj(u) . v over rows l..n-1 of columns a of x and the vector (vr, vi).
void dotc(const cols& x, int n, int l, int a, const double* vr, const double* vi, double& tr, double& ti) {
    tr = ti = 0.0;
    for (int i = l; i < n; ++i) {
        double ur = *x.r(i, a), ui = x.im ? *x.c(i, a) : 0.0;
        double wr = vr[i], wi = vi ? vi[i] : 0.0;
        tr += ur * wr + ui * wi;
        ti += ur * wi - ui * wr;
    }
}

// v -= (conj(u) . v / u(l)) u over rows l..n-1: one reflection applied to a vector.
void reflect(const cols& x, int n, int l, double* vr, double* vi) {
    double tr, ti;
    dotc(x, n, l, l, vr, vi, tr, ti);
    double dr = *x.r(l, l), di = x.im ? *x.c(l, l) : 0.0;
    if (x.im)
        cdiv(-tr, -ti, dr, di, tr, ti);
    else
        tr = -tr / dr;
    for (int i = l; i < n; ++i) {
        double ur = *x.r(i, l), ui = x.im ? *x.c(i, l) : 0.0;
        vr[i] += tr * ur - ti * ui;
        if (vi) vi[i] += tr * ui + ti * ur;
    }
}

void qrdc(const cols& x, int n, int p, double* qr, double* qi, int* jpvt, double* work, int job) {
    int pl = 0, pu = -1;  // free columns pl..pu (zero-based)
    if (job != 0) {
        // Initial columns to the front, final ones to the back.
        for (int j = 0; j < p; ++j) {
            bool swapj = jpvt[j] > 0, negj = jpvt[j] < 0;
            jpvt[j] = negj ? -(j + 1) : j + 1;
            if (!swapj) continue;
            if (j != pl) swap_columns(x, n, pl, j);
            jpvt[j] = jpvt[pl];
            jpvt[pl] = j + 1;
            ++pl;
        }
        pu = p - 1;
        for (int j = p - 1; j >= 0; --j) {
            if (jpvt[j] >= 0) continue;
            jpvt[j] = -jpvt[j];
            if (j != pu) {
                swap_columns(x, n, pu, j);
                std::swap(jpvt[pu], jpvt[j]);
            }
            --pu;
        }
    }
    for (int j = pl; j <= pu; ++j) {
        qr[j] = nrm2(n, x.r(0, j), x.im ? x.c(0, j) : nullptr);
        if (qi) qi[j] = 0.0;
        work[j] = qr[j];
    }
    const int lup = n < p ? n : p;
    for (int l = 0; l < lup; ++l) {
        if (l == n - 1) break;
        if (l >= pl && l < pu) {  // bring the free column of largest remaining norm to l
            double maxnrm = 0.0;
            int maxj = l;
            for (int j = l; j <= pu; ++j)
                if (qr[j] > maxnrm) {
                    maxnrm = qr[j];
                    maxj = j;
                }
            if (maxj != l) {
                swap_columns(x, n, l, maxj);
                qr[maxj] = qr[l];
                work[maxj] = work[l];
                std::swap(jpvt[maxj], jpvt[l]);
            }
        }
        qr[l] = 0.0;
        if (qi) qi[l] = 0.0;
        double nrmxl = nrm2(n - l, x.r(l, l), x.im ? x.c(l, l) : nullptr);
        if (nrmxl == 0.0) continue;
        double sr = nrmxl, si = 0.0;  // nrmxl with the phase of x(l,l)
        double xr = *x.r(l, l), xi = x.im ? *x.c(l, l) : 0.0;
        if (xr != 0.0 || xi != 0.0) {
            double ax = x.im ? std::hypot(xr, xi) : std::fabs(xr);
            sr = nrmxl * xr / ax;
            si = nrmxl * xi / ax;
        }
        double ir, ii;  // 1 / (sr + i si)
        if (x.im)
            cdiv(1.0, 0.0, sr, si, ir, ii);
        else
            ir = 1.0 / sr, ii = 0.0;
        for (int i = l; i < n; ++i) {
            double ur = *x.r(i, l), ui = x.im ? *x.c(i, l) : 0.0;
            *x.r(i, l) = ur * ir - ui * ii;
            if (x.im) *x.c(i, l) = ur * ii + ui * ir;
        }
        *x.r(l, l) += 1.0;
        for (int j = l + 1; j < p; ++j) {
            reflect(x, n, l, x.r(0, j), x.im ? x.c(0, j) : nullptr);
            if (j < pl || j > pu || qr[j] == 0.0) continue;
            double axl = x.im ? std::hypot(*x.r(l, j), *x.c(l, j)) : std::fabs(*x.r(l, j));
            double tt = 1.0 - (axl / qr[j]) * (axl / qr[j]);
            if (tt < 0.0) tt = 0.0;
            double t = tt;
            tt = 1.0 + 0.05 * tt * (qr[j] / work[j]) * (qr[j] / work[j]);
            if (tt != 1.0) {
                qr[j] *= std::sqrt(t);
            } else {  // the downdated norm has lost its accuracy: recompute it
                qr[j] = nrm2(n - l - 1, x.r(l + 1, j), x.im ? x.c(l + 1, j) : nullptr);
                work[j] = qr[j];
            }
        }
        qr[l] = *x.r(l, l);
        if (qi) qi[l] = x.im ? *x.c(l, l) : 0.0;
        *x.r(l, l) = -sr;
        if (x.im) *x.c(l, l) = -si;
    }
}

// Applies the reflection of column j with u(j) = qraux(j) swapped in for the diagonal.
void apply_saved(const cols& x, int n, int j, const double* qr, const double* qi, double* vr, double* vi) {
    if (qr[j] == 0.0 && (!qi || qi[j] == 0.0)) return;
    double tr = *x.r(j, j), ti = x.im ? *x.c(j, j) : 0.0;
    *x.r(j, j) = qr[j];
    if (x.im) *x.c(j, j) = qi[j];
    reflect(x, n, j, vr, vi);
    *x.r(j, j) = tr;
    if (x.im) *x.c(j, j) = ti;
}

void qrsl(const cols& x, int n, int k, const double* qar, const double* qai, const double* yr, const double* yi,
          double* qyr, double* qyi, double* qtyr, double* qtyi, double* br, double* bi, double* rsdr,
          double* rsdi, double* xbr, double* xbi, int job, int* info) {
    *info = 0;
    const bool cqy = job / 10000 != 0, cqty = job % 10000 != 0, cb = (job % 1000) / 100 != 0,
               cr = (job % 100) / 10 != 0, cxb = job % 10 != 0;
    const bool cx = x.im != nullptr;
    const int ju = k < n - 1 ? k : n - 1;
    auto copy = [cx](int m, const double* sr, const double* si, double* dr, double* di) {
        for (int i = 0; i < m; ++i) {
            dr[i] = sr[i];
            if (cx) di[i] = si ? si[i] : 0.0;
        }
    };
    auto zero = [cx](int from, int to, double* dr, double* di) {
        for (int i = from; i < to; ++i) {
            dr[i] = 0.0;
            if (cx) di[i] = 0.0;
        }
    };
    if (ju == 0) {  // one row
        if (cqy) copy(1, yr, yi, qyr, qyi);
        if (cqty) copy(1, yr, yi, qtyr, qtyi);
        if (cxb) copy(1, yr, yi, xbr, xbi);
        if (cb) {
            double dr = *x.r(0, 0), di = cx ? *x.c(0, 0) : 0.0;
            if (dr == 0.0 && di == 0.0)
                *info = 1;
            else if (cx)
                cdiv(yr[0], yi ? yi[0] : 0.0, dr, di, br[0], bi[0]);
            else
                br[0] = yr[0] / dr;
        }
        if (cr) zero(0, 1, rsdr, rsdi);
        return;
    }
    if (cqy) copy(n, yr, yi, qyr, qyi);
    if (cqty) copy(n, yr, yi, qtyr, qtyi);
    if (cqy)
        for (int j = ju - 1; j >= 0; --j) apply_saved(x, n, j, qar, qai, qyr, cx ? qyi : nullptr);
    if (cqty)
        for (int j = 0; j < ju; ++j) apply_saved(x, n, j, qar, qai, qtyr, cx ? qtyi : nullptr);
    if (cb) copy(k, qtyr, qtyi, br, bi);
    if (cxb) copy(k, qtyr, qtyi, xbr, xbi);
    if (cr && k < n) copy(n - k, qtyr + k, cx ? qtyi + k : nullptr, rsdr + k, cx ? rsdi + k : nullptr);
    if (cxb) zero(k, n, xbr, xbi);
    if (cr) zero(0, k, rsdr, rsdi);
    if (cb) {  // R b = Q' y by back substitution
        for (int j = k - 1; j >= 0; --j) {
            double dr = *x.r(j, j), di = cx ? *x.c(j, j) : 0.0;
            if (dr == 0.0 && di == 0.0) {
                *info = j + 1;
                break;
            }
            if (cx)
                cdiv(br[j], bi[j], dr, di, br[j], bi[j]);
            else
                br[j] /= dr;
            double tr = -br[j], ti = cx ? -bi[j] : 0.0;
            for (int i = 0; i < j; ++i) {
                double ur = *x.r(i, j), ui = cx ? *x.c(i, j) : 0.0;
                br[i] += tr * ur - ti * ui;
                if (cx) bi[i] += tr * ui + ti * ur;
            }
        }
    }
    if (cr || cxb)
        for (int j = ju - 1; j >= 0; --j) {
            if (cr) apply_saved(x, n, j, qar, qai, rsdr, cx ? rsdi : nullptr);
            if (cxb) apply_saved(x, n, j, qar, qai, xbr, cx ? xbi : nullptr);
        }
}

}  // namespace

void dqrdc(double* x, int ldx, int n, int p, double* qraux, int* jpvt, double* work, int job) {
    qrdc(cols{x, nullptr, ldx}, n, p, qraux, nullptr, jpvt, work, job);
}

void zqrdc(double* xr, double* xi, int ldx, int n, int p, double* qrauxr, double* qrauxi, int* jpvt,
           double* workr, double* worki, int job) {
    for (int j = 0; j < p; ++j) worki[j] = 0.0;
    qrdc(cols{xr, xi, ldx}, n, p, qrauxr, qrauxi, jpvt, workr, job);
}

void dqrsl(double* x, int ldx, int n, int k, const double* qraux, const double* y, double* qy,
           double* qty, double* b, double* rsd, double* xb, int job, int* info) {
    qrsl(cols{x, nullptr, ldx}, n, k, qraux, nullptr, y, nullptr, qy, nullptr, qty, nullptr, b, nullptr,
         rsd, nullptr, xb, nullptr, job, info);
}

void zqrsl(double* xr, double* xi, int ldx, int n, int k, const double* qrauxr, const double* qrauxi,
           const double* yr, const double* yi, double* qyr, double* qyi, double* qtyr, double* qtyi,
           double* br, double* bi, double* rsdr, double* rsdi, double* xbr, double* xbi, int job,
           int* info) {
    qrsl(cols{xr, xi, ldx}, n, k, qrauxr, qrauxi, yr, yi, qyr, qyi, qtyr, qtyi, br, bi, rsdr, rsdi, xbr,
         xbi, job, info);
}

}  // namespace ak_kernels
