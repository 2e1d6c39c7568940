// Eigenvalues, eigenvectors and the complex Schur form of a complex general matrix: the EISPACK
// routines CORTH (reduction to upper Hessenberg form by unitary Householder transformations),
// COMQR (the complex QR algorithm of Francis with Wilkinson shifts, values only) and COMQR2 (the
// same with the transformations accumulated and back substitution for the vectors), as published in
// the EISPACK Guide (1976) after Martin and Wilkinson, Numer. Math. 12 (1968).
#include <algorithm>
#include <cmath>

#include "algebra/kernels/kernels.h"

namespace ak_kernels {

namespace {

struct mat {
    double* p;
    int nm;
    double& operator()(int i, int j) const { return p[static_cast<long>(j) * nm + i]; }
};

// The principal square root of (xr + i xi).
void csroot(double xr, double xi, double& yr, double& yi) {
    double tr = xr, ti = xi, s = std::sqrt(0.5 * (std::hypot(tr, ti) + std::fabs(tr)));
    if (tr >= 0.0) yr = s;
    if (ti < 0.0) s = -s;
    if (tr <= 0.0) yi = s;
    if (tr < 0.0) yr = 0.5 * (ti / yi);
    if (tr > 0.0) yi = 0.5 * (ti / yr);
}

}  // namespace

void corth(int nm, int n, int low, int igh, double* arp, double* aip, double* ortr, double* orti) {
    mat ar{arp, nm}, ai{aip, nm};
    const int lo = low - 1, hi = igh - 1;
    for (int m = lo + 1; m <= hi - 1; ++m) {
        double h = 0.0, scale = 0.0;
        ortr[m] = 0.0;
        orti[m] = 0.0;
        for (int i = m; i <= hi; ++i) scale += std::fabs(ar(i, m - 1)) + std::fabs(ai(i, m - 1));
        if (scale == 0.0) continue;
        for (int i = hi; i >= m; --i) {
            ortr[i] = ar(i, m - 1) / scale;
            orti[i] = ai(i, m - 1) / scale;
            h += ortr[i] * ortr[i] + orti[i] * orti[i];
        }
        double g = std::sqrt(h), f = std::hypot(ortr[m], orti[m]);
        if (f != 0.0) {
            h += f * g;
            g /= f;
            ortr[m] *= 1.0 + g;
            orti[m] *= 1.0 + g;
        } else {
            ortr[m] = g;
            ar(m, m - 1) = scale;
        }
        for (int j = m; j < n; ++j) {  // (I - u u* / h) A
            double fr = 0.0, fi = 0.0;
            for (int i = hi; i >= m; --i) {
                fr += ortr[i] * ar(i, j) + orti[i] * ai(i, j);
                fi += ortr[i] * ai(i, j) - orti[i] * ar(i, j);
            }
            fr /= h;
            fi /= h;
            for (int i = m; i <= hi; ++i) {
                ar(i, j) += -fr * ortr[i] + fi * orti[i];
                ai(i, j) += -fr * orti[i] - fi * ortr[i];
            }
        }
        for (int i = 0; i <= hi; ++i) {  // ... (I - u u* / h)
            double fr = 0.0, fi = 0.0;
            for (int j = hi; j >= m; --j) {
                fr += ortr[j] * ar(i, j) - orti[j] * ai(i, j);
                fi += ortr[j] * ai(i, j) + orti[j] * ar(i, j);
            }
            fr /= h;
            fi /= h;
            for (int j = m; j <= hi; ++j) {
                ar(i, j) += -fr * ortr[j] - fi * orti[j];
                ai(i, j) += fr * orti[j] - fi * ortr[j];
            }
        }
        ortr[m] *= scale;
        orti[m] *= scale;
        ar(m, m - 1) *= -g;
        ai(m, m - 1) *= -g;
    }
}

namespace {

// The QR iteration of comqr (whole false: only the active block) and comqr2 (whole true: the whole
// matrix, with z). want selects how far comqr2 goes: 0 the Hessenberg form with its unitary factor,
// 1 the triangular Schur form, 2 the vectors.
void complex_qr(int nm, int n, int lo, int hi, double* ortr, double* orti, mat hr, mat hi_, double* wr,
                double* wi, double* zrp, double* zip, int* ierr, int want) {
    const bool whole = zrp != nullptr;
    mat zr{zrp, nm}, zi{zip, nm};
    *ierr = 0;
    if (whole) {
        for (int j = 0; j < n; ++j) {
            for (int i = 0; i < n; ++i) zr(i, j) = zi(i, j) = 0.0;
            zr(j, j) = 1.0;
        }
        // The accumulated transformations of corth.
        for (int i = hi - 1; i >= lo + 1; --i) {
            if (ortr[i] == 0.0 && orti[i] == 0.0) continue;
            if (hr(i, i - 1) == 0.0 && hi_(i, i - 1) == 0.0) continue;
            double norm = hr(i, i - 1) * ortr[i] + hi_(i, i - 1) * orti[i];  // minus the h of corth
            for (int k = i + 1; k <= hi; ++k) {
                ortr[k] = hr(k, i - 1);
                orti[k] = hi_(k, i - 1);
            }
            for (int j = i; j <= hi; ++j) {
                double sr = 0.0, si = 0.0;
                for (int k = i; k <= hi; ++k) {
                    sr += ortr[k] * zr(k, j) + orti[k] * zi(k, j);
                    si += ortr[k] * zi(k, j) - orti[k] * zr(k, j);
                }
                sr /= norm;
                si /= norm;
                for (int k = i; k <= hi; ++k) {
                    zr(k, j) += sr * ortr[k] - si * orti[k];
                    zi(k, j) += sr * orti[k] + si * ortr[k];
                }
            }
        }
        if (want == 0) return;
    }
    // Real subdiagonal elements.
    for (int i = lo + 1; i <= hi; ++i) {
        if (hi_(i, i - 1) == 0.0) continue;
        const int ll = std::min(i + 1, hi);
        double norm = std::hypot(hr(i, i - 1), hi_(i, i - 1));
        double yr = hr(i, i - 1) / norm, yi = hi_(i, i - 1) / norm;
        hr(i, i - 1) = norm;
        hi_(i, i - 1) = 0.0;
        for (int j = i; j <= (whole ? n - 1 : hi); ++j) {
            double si = yr * hi_(i, j) - yi * hr(i, j);
            hr(i, j) = yr * hr(i, j) + yi * hi_(i, j);
            hi_(i, j) = si;
        }
        for (int j = whole ? 0 : lo; j <= ll; ++j) {
            double si = yr * hi_(j, i) + yi * hr(j, i);
            hr(j, i) = yr * hr(j, i) - yi * hi_(j, i);
            hi_(j, i) = si;
        }
        if (whole)
            for (int j = lo; j <= hi; ++j) {
                double si = yr * zi(j, i) + yi * zr(j, i);
                zr(j, i) = yr * zr(j, i) - yi * zi(j, i);
                zi(j, i) = si;
            }
    }
    for (int i = 0; i < n; ++i) {  // roots isolated by cbal
        if (i >= lo && i <= hi) continue;
        wr[i] = hr(i, i);
        wi[i] = hi_(i, i);
    }
    int en = hi;
    double tr = 0.0, ti = 0.0;
    int itn = 30 * n;
    while (en >= lo) {
        int its = 0;
        const int enm1 = en - 1;
        for (;;) {
            int l = en;
            for (; l > lo; --l) {
                double tst1 = std::fabs(hr(l - 1, l - 1)) + std::fabs(hi_(l - 1, l - 1)) + std::fabs(hr(l, l)) +
                              std::fabs(hi_(l, l));
                if (tst1 + std::fabs(hr(l, l - 1)) == tst1) break;
            }
            if (l == en) {  // a root
                hr(en, en) += tr;
                wr[en] = hr(en, en);
                hi_(en, en) += ti;
                wi[en] = hi_(en, en);
                en = enm1;
                break;
            }
            if (itn == 0) {
                *ierr = en + 1;
                return;
            }
            double sr, si;
            if (its == 10 || its == 20) {  // exceptional shift
                sr = std::fabs(hr(en, enm1)) + std::fabs(hr(enm1, en - 2));
                si = 0.0;
            } else {
                sr = hr(en, en);
                si = hi_(en, en);
                double xr = hr(enm1, en) * hr(en, enm1), xi = hi_(enm1, en) * hr(en, enm1);
                if (xr != 0.0 || xi != 0.0) {
                    double yr = (hr(enm1, enm1) - sr) / 2.0, yi = (hi_(enm1, enm1) - si) / 2.0, zzr, zzi;
                    csroot(yr * yr - yi * yi + xr, 2.0 * yr * yi + xi, zzr, zzi);
                    if (yr * zzr + yi * zzi < 0.0) {
                        zzr = -zzr;
                        zzi = -zzi;
                    }
                    cdiv(xr, xi, yr + zzr, yi + zzi, xr, xi);
                    sr -= xr;
                    si -= xi;
                }
            }
            for (int i = lo; i <= en; ++i) {
                hr(i, i) -= sr;
                hi_(i, i) -= si;
            }
            tr += sr;
            ti += si;
            ++its;
            --itn;
            // Reduce to triangle (rows).
            for (int i = l + 1; i <= en; ++i) {
                sr = hr(i, i - 1);
                hr(i, i - 1) = 0.0;
                double norm = std::hypot(std::hypot(hr(i - 1, i - 1), hi_(i - 1, i - 1)), sr);
                double xr = hr(i - 1, i - 1) / norm, xi = hi_(i - 1, i - 1) / norm;
                wr[i - 1] = xr;
                wi[i - 1] = xi;
                hr(i - 1, i - 1) = norm;
                hi_(i - 1, i - 1) = 0.0;
                hi_(i, i - 1) = sr / norm;
                for (int j = i; j <= (whole ? n - 1 : en); ++j) {
                    double yr = hr(i - 1, j), yi = hi_(i - 1, j), zzr = hr(i, j), zzi = hi_(i, j);
                    hr(i - 1, j) = xr * yr + xi * yi + hi_(i, i - 1) * zzr;
                    hi_(i - 1, j) = xr * yi - xi * yr + hi_(i, i - 1) * zzi;
                    hr(i, j) = xr * zzr - xi * zzi - hi_(i, i - 1) * yr;
                    hi_(i, j) = xr * zzi + xi * zzr - hi_(i, i - 1) * yi;
                }
            }
            si = hi_(en, en);
            if (si != 0.0) {
                double norm = std::hypot(hr(en, en), si);
                sr = hr(en, en) / norm;
                si /= norm;
                hr(en, en) = norm;
                hi_(en, en) = 0.0;
                if (whole)
                    for (int j = en + 1; j < n; ++j) {
                        double yr = hr(en, j), yi = hi_(en, j);
                        hr(en, j) = sr * yr + si * yi;
                        hi_(en, j) = sr * yi - si * yr;
                    }
            }
            // Inverse operation (columns).
            for (int j = l + 1; j <= en; ++j) {
                double xr = wr[j - 1], xi = wi[j - 1];
                for (int i = whole ? 0 : l; i <= j; ++i) {
                    double yr = hr(i, j - 1), yi = 0.0, zzr = hr(i, j), zzi = hi_(i, j);
                    if (i != j) {
                        yi = hi_(i, j - 1);
                        hi_(i, j - 1) = xr * yi + xi * yr + hi_(j, j - 1) * zzi;
                    }
                    hr(i, j - 1) = xr * yr - xi * yi + hi_(j, j - 1) * zzr;
                    hr(i, j) = xr * zzr + xi * zzi - hi_(j, j - 1) * yr;
                    hi_(i, j) = xr * zzi - xi * zzr - hi_(j, j - 1) * yi;
                }
                if (whole)
                    for (int i = lo; i <= hi; ++i) {
                        double yr = zr(i, j - 1), yi = zi(i, j - 1), zzr = zr(i, j), zzi = zi(i, j);
                        zr(i, j - 1) = xr * yr - xi * yi + hi_(j, j - 1) * zzr;
                        zi(i, j - 1) = xr * yi + xi * yr + hi_(j, j - 1) * zzi;
                        zr(i, j) = xr * zzr + xi * zzi - hi_(j, j - 1) * yr;
                        zi(i, j) = xr * zzi - xi * zzr - hi_(j, j - 1) * yi;
                    }
            }
            if (si == 0.0) continue;
            for (int i = whole ? 0 : l; i <= en; ++i) {
                double yr = hr(i, en), yi = hi_(i, en);
                hr(i, en) = sr * yr - si * yi;
                hi_(i, en) = sr * yi + si * yr;
            }
            if (whole)
                for (int i = lo; i <= hi; ++i) {
                    double yr = zr(i, en), yi = zi(i, en);
                    zr(i, en) = sr * yr - si * yi;
                    zi(i, en) = sr * yi + si * yr;
                }
        }
    }
    if (!whole || want < 2) return;
    // Back substitution for the vectors of the triangular form.
    double norm = 0.0;
    for (int i = 0; i < n; ++i)
        for (int j = i; j < n; ++j) norm = std::max(norm, std::fabs(hr(i, j)) + std::fabs(hi_(i, j)));
    if (n == 1 || norm == 0.0) return;
    for (en = n - 1; en >= 1; --en) {
        double xr = wr[en], xi = wi[en];
        hr(en, en) = 1.0;
        hi_(en, en) = 0.0;
        for (int i = en - 1; i >= 0; --i) {
            double zzr = 0.0, zzi = 0.0;
            for (int j = i + 1; j <= en; ++j) {
                zzr += hr(i, j) * hr(j, en) - hi_(i, j) * hi_(j, en);
                zzi += hr(i, j) * hi_(j, en) + hi_(i, j) * hr(j, en);
            }
            double yr = xr - hr(i, i), yi = xi - hi_(i, i);
            if (yr == 0.0 && yi == 0.0) {
                double tst1 = norm;
                yr = tst1;
                do yr *= 0.01;
                while (norm + yr > tst1);
            }
            cdiv(zzr, zzi, yr, yi, hr(i, en), hi_(i, en));
            double t = std::fabs(hr(i, en)) + std::fabs(hi_(i, en));  // overflow control
            if (t == 0.0 || t + 1.0 / t > t) continue;
            for (int j = i; j <= en; ++j) {
                hr(j, en) /= t;
                hi_(j, en) /= t;
            }
        }
    }
    for (int i = 0; i < n - 1; ++i) {  // vectors of isolated roots
        if (i >= lo && i <= hi) continue;
        for (int j = i + 1; j < n; ++j) {
            zr(i, j) = hr(i, j);
            zi(i, j) = hi_(i, j);
        }
    }
    for (int j = n - 1; j >= lo + 1; --j) {  // back to the vectors of the original matrix
        int m = std::min(j, hi);
        for (int i = lo; i <= hi; ++i) {
            double zzr = 0.0, zzi = 0.0;
            for (int k = lo; k <= m; ++k) {
                zzr += zr(i, k) * hr(k, j) - zi(i, k) * hi_(k, j);
                zzi += zr(i, k) * hi_(k, j) + zi(i, k) * hr(k, j);
            }
            zr(i, j) = zzr;
            zi(i, j) = zzi;
        }
    }
}

}  // namespace

void comqr(int nm, int n, int low, int igh, double* hr, double* hi, double* wr, double* wi, int* ierr) {
    complex_qr(nm, n, low - 1, igh - 1, nullptr, nullptr, mat{hr, nm}, mat{hi, nm}, wr, wi, nullptr, nullptr,
               ierr, 2);
}

void comqr2(int nm, int n, int low, int igh, double* ortr, double* orti, double* hr, double* hi, double* wr,
            double* wi, double* zr, double* zi, int* ierr, int vectors) {
    complex_qr(nm, n, low - 1, igh - 1, ortr, orti, mat{hr, nm}, mat{hi, nm}, wr, wi, zr, zi, ierr,
               vectors == 1 ? 2 : vectors == 0 ? 1 : 0);
}

}  // namespace ak_kernels
