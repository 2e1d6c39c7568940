// The LAPACK and BLAS routines that the numerical methods call on plain column-major arrays.
#pragma once
#include <cstddef>

extern "C" {
void dgetrf_(const int* m, const int* n, double* a, const int* lda, int* ipiv, int* info);
void dgetrs_(const char* trans, const int* n, const int* nrhs, const double* a, const int* lda, const int* ipiv,
             double* b, const int* ldb, int* info, std::size_t trans_len);
void dgesv_(const int* n, const int* nrhs, double* a, const int* lda, int* ipiv, double* b, const int* ldb,
            int* info);
void dgels_(const char* trans, const int* m, const int* n, const int* nrhs, double* a, const int* lda, double* b,
            const int* ldb, double* work, const int* lwork, int* info, std::size_t trans_len);
void dpotrf_(const char* uplo, const int* n, double* a, const int* lda, int* info, std::size_t uplo_len);
void dgesvd_(const char* jobu, const char* jobvt, const int* m, const int* n, double* a, const int* lda, double* s,
             double* u, const int* ldu, double* vt, const int* ldvt, double* work, const int* lwork, int* info,
             std::size_t jobu_len, std::size_t jobvt_len);
double ddot_(const int* n, const double* x, const int* incx, const double* y, const int* incy);
}

namespace ak_internal {

// LU factors of the n x n matrix a in place; 0 on success, else the first zero pivot (1-based).
inline int lu_factor(int n, double* a, int* ipiv) {
    int info = 0;
    dgetrf_(&n, &n, a, &n, ipiv, &info);
    return info;
}

// Solves with the factors of lu_factor; b is overwritten by the solution.
inline void lu_solve(int n, const double* lu, const int* ipiv, double* b) {
    int info = 0, one = 1;
    dgetrs_("N", &n, &one, lu, &n, ipiv, b, &n, &info, 1);
}

}  // namespace ak_internal
