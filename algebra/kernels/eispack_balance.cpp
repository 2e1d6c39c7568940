// Balancing of a general matrix before its eigenvalues are computed, and the back transformation of
// eigenvectors: the EISPACK routines BALANC, BALBAK, CBAL and CBABK2 (EISPACK Guide, 1976; Parlett
// and Reinsch, Numer. Math. 13, 1969). Rows and columns that isolate eigenvalues are permuted to the
// ends; the remaining block low..igh is scaled by powers of the radix 16 until its row and column
// norms are close. The complex forms act on both halves.
#include <cmath>
#include <utility>

#include "algebra/kernels/kernels.h"

namespace ak_kernels {

namespace {

struct pair_mat {
    double *re, *im;
    int nm;
    double& r(int i, int j) const { return re[static_cast<long>(j) * nm + i]; }
    double& c(int i, int j) const { return im[static_cast<long>(j) * nm + i]; }
    bool nonzero(int i, int j) const { return r(i, j) != 0.0 || (im && c(i, j) != 0.0); }
    double mag(int i, int j) const { return std::fabs(r(i, j)) + (im ? std::fabs(c(i, j)) : 0.0); }
    void scale(int i, int j, double f) const {
        r(i, j) *= f;
        if (im) c(i, j) *= f;
    }
};

void balance(const pair_mat& a, int n, int* low, int* igh, double* scale) {
    const double radix = 16.0, b2 = radix * radix;
    int k = 0, l = n - 1;  // zero-based bounds of the block still to search
    // Exchanges row and column j with m and records it.
    auto exchange = [&](int j, int m) {
        scale[m] = j + 1;
        if (j == m) return;
        for (int i = 0; i <= l; ++i) {
            std::swap(a.r(i, j), a.r(i, m));
            if (a.im) std::swap(a.c(i, j), a.c(i, m));
        }
        for (int i = k; i < n; ++i) {
            std::swap(a.r(j, i), a.r(m, i));
            if (a.im) std::swap(a.c(j, i), a.c(m, i));
        }
    };
    // Rows with no off-diagonal element in columns 0..l isolate an eigenvalue: push them down.
    bool found = true;
    while (found && n > 0) {
        found = false;
        for (int j = l; j >= 0; --j) {
            bool isolated = true;
            for (int i = 0; i <= l && isolated; ++i)
                if (i != j && a.nonzero(j, i)) isolated = false;
            if (!isolated) continue;
            exchange(j, l);
            if (l == 0) {
                *low = k + 1;
                *igh = l + 1;
                return;
            }
            --l;
            found = true;
            break;
        }
    }
    // Columns with no off-diagonal element in rows k..l: push them left.
    found = true;
    while (found) {
        found = false;
        for (int j = k; j <= l; ++j) {
            bool isolated = true;
            for (int i = k; i <= l && isolated; ++i)
                if (i != j && a.nonzero(i, j)) isolated = false;
            if (!isolated) continue;
            exchange(j, k);
            ++k;
            found = true;
            break;
        }
    }
    for (int i = k; i <= l; ++i) scale[i] = 1.0;
    bool noconv = true;
    while (noconv) {
        noconv = false;
        for (int i = k; i <= l; ++i) {
            double c = 0.0, r = 0.0;
            for (int j = k; j <= l; ++j) {
                if (j == i) continue;
                c += a.mag(j, i);
                r += a.mag(i, j);
            }
            if (c == 0.0 || r == 0.0) continue;  // guards against underflow
            double g = r / radix, f = 1.0, s = c + r;
            while (c < g) {
                f *= radix;
                c *= b2;
            }
            g = r * radix;
            while (c >= g) {
                f /= radix;
                c /= b2;
            }
            if ((c + r) / f >= 0.95 * s) continue;
            g = 1.0 / f;
            scale[i] *= f;
            noconv = true;
            for (int j = k; j < n; ++j) a.scale(i, j, g);
            for (int j = 0; j <= l; ++j) a.scale(j, i, f);
        }
    }
    *low = k + 1;
    *igh = l + 1;
}

void back(const pair_mat& z, int n, int low, int igh, const double* scale, int m) {
    if (m == 0) return;
    if (igh != low)
        for (int i = low - 1; i < igh; ++i)
            for (int j = 0; j < m; ++j) z.scale(i, j, scale[i]);
    for (int ii = 0; ii < n; ++ii) {
        int i = ii;
        if (i >= low - 1 && i < igh) continue;
        if (i < low - 1) i = low - 2 - ii;
        int k = static_cast<int>(scale[i]) - 1;
        if (k == i) continue;
        for (int j = 0; j < m; ++j) {
            std::swap(z.r(i, j), z.r(k, j));
            if (z.im) std::swap(z.c(i, j), z.c(k, j));
        }
    }
}

}  // namespace

void balanc(int nm, int n, double* a, int* low, int* igh, double* scale) {
    balance(pair_mat{a, nullptr, nm}, n, low, igh, scale);
}
void cbal(int nm, int n, double* ar, double* ai, int* low, int* igh, double* scale) {
    balance(pair_mat{ar, ai, nm}, n, low, igh, scale);
}
void balbak(int nm, int n, int low, int igh, const double* scale, int m, double* z) {
    back(pair_mat{z, nullptr, nm}, n, low, igh, scale, m);
}
void cbabk2(int nm, int n, int low, int igh, const double* scale, int m, double* zr, double* zi) {
    back(pair_mat{zr, zi, nm}, n, low, igh, scale, m);
}

}  // namespace ak_kernels
