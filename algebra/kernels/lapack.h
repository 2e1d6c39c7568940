// The LAPACK routines the solvers call, with the hidden string lengths of the Fortran interface.
#pragma once
#include <cstddef>

extern "C" {
void dgetrf_(const int* m, const int* n, double* a, const int* lda, int* ipiv, int* info);
void dgetrs_(const char* trans, const int* n, const int* nrhs, const double* a, const int* lda,
             const int* ipiv, double* b, const int* ldb, int* info, std::size_t trans_len);
void dgetri_(const int* n, double* a, const int* lda, const int* ipiv, double* work, const int* lwork,
             int* info);
void dlaswp_(const int* n, double* a, const int* lda, const int* k1, const int* k2, const int* ipiv,
             const int* incx);
void dsytrf_(const char* uplo, const int* n, double* a, const int* lda, int* ipiv, double* work,
             const int* lwork, int* info, std::size_t uplo_len);
void dsytrs_(const char* uplo, const int* n, const int* nrhs, const double* a, const int* lda,
             const int* ipiv, double* b, const int* ldb, int* info, std::size_t uplo_len);
}
