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
// The generalised real Schur form (QZ) and the eigenvectors of the pair it leaves.
typedef int (*lapack_select3_t)(const double*, const double*, const double*);
void dgges_(const char* jobvsl, const char* jobvsr, const char* sort, lapack_select3_t selctg, const int* n,
            double* a, const int* lda, double* b, const int* ldb, int* sdim, double* alphar, double* alphai,
            double* beta, double* vsl, const int* ldvsl, double* vsr, const int* ldvsr, double* work,
            const int* lwork, int* bwork, int* info, std::size_t jobvsl_len, std::size_t jobvsr_len,
            std::size_t sort_len);
void dtgevc_(const char* side, const char* howmny, const int* select, const int* n, const double* s,
             const int* lds, const double* p, const int* ldp, double* vl, const int* ldvl, double* vr,
             const int* ldvr, const int* mm, int* m, double* work, int* info, std::size_t side_len,
             std::size_t howmny_len);
void dsytrs_(const char* uplo, const int* n, const int* nrhs, const double* a, const int* lda,
             const int* ipiv, double* b, const int* ldb, int* info, std::size_t uplo_len);
}
