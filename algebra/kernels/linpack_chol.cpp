// Cholesky factorisation of a positive definite matrix: the LINPACK routines DPOFA and ZPOFA
// (LINPACK Users' Guide, 1979), the inner-product (column by column) form. Only the upper triangle
// of the input is read; R overwrites it so that R' R = A.
#include <cmath>

#include "algebra/kernels/kernels.h"

namespace ak_kernels {

void dpofa(double* a, int lda, int n, int* info) {
    for (int j = 0; j < n; ++j) {
        *info = j + 1;
        double s = 0.0;
        double* cj = a + static_cast<long>(j) * lda;
        for (int k = 0; k < j; ++k) {
            const double* ck = a + static_cast<long>(k) * lda;
            double t = cj[k];
            for (int i = 0; i < k; ++i) t -= ck[i] * cj[i];
            t /= ck[k];
            cj[k] = t;
            s += t * t;
        }
        s = cj[j] - s;
        if (!(s > 0.0)) return;
        cj[j] = std::sqrt(s);
    }
    *info = 0;
}

void zpofa(double* ar, double* ai, int lda, int n, int* info) {
    for (int j = 0; j < n; ++j) {
        *info = j + 1;
        double s = 0.0;
        long oj = static_cast<long>(j) * lda;
        double *jr = ar + oj, *ji = ai + oj;
        for (int k = 0; k < j; ++k) {
            long ok = static_cast<long>(k) * lda;
            const double *kr = ar + ok, *ki = ai + ok;
            double tr = jr[k], ti = ji[k];
            for (int i = 0; i < k; ++i) {  // minus conj(r_ik) * r_ij
                tr -= kr[i] * jr[i] + ki[i] * ji[i];
                ti -= kr[i] * ji[i] - ki[i] * jr[i];
            }
            cdiv(tr, ti, kr[k], ki[k], tr, ti);
            jr[k] = tr;
            ji[k] = ti;
            s += tr * tr + ti * ti;
        }
        s = jr[j] - s;
        if (!(s > 0.0) || ji[j] != 0.0) return;
        jr[j] = std::sqrt(s);
        ji[j] = 0.0;
    }
    *info = 0;
}

}  // namespace ak_kernels
