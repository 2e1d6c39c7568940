// Solvers and factorisations against direct LAPACK and SuperLU calls on the same data.
//   build/bench/bench_linalg --benchmark_min_time=1 --benchmark_repetitions=3
#include <benchmark/benchmark.h>
#include <slu_ddefs.h>

#include <cstring>
#include <vector>

#include "arklib.h"

extern "C" {
void dgesv_(const int* n, const int* nrhs, double* a, const int* lda, int* ipiv, double* b, const int* ldb, int* info);
void dgetrf_(const int* m, const int* n, double* a, const int* lda, int* ipiv, int* info);
void dgetri_(const int* n, double* a, const int* lda, const int* ipiv, double* work, const int* lwork, int* info);
void dsyev_(const char* jobz, const char* uplo, const int* n, double* a, const int* lda, double* w, double* work,
            const int* lwork, int* info, std::size_t, std::size_t);
void dgesdd_(const char* jobz, const int* m, const int* n, double* a, const int* lda, double* s, double* u,
             const int* ldu, double* vt, const int* ldvt, double* work, const int* lwork, int* iwork, int* info,
             std::size_t);
}

namespace {

Mm random_square(int n, bool symmetric) {
    Mm a(0, 0, 0, n, n, ak_double);
    unsigned long long s = 12345;
    for (int k = 0; k < n * n; ++k) {
        s = s * 6364136223846793005ULL + 1442695040888963407ULL;
        a.addr()[k] = static_cast<double>(s >> 11) / 9007199254740992.0 - 0.5;
    }
    if (symmetric)
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < j; ++i) a.addr()[j * n + i] = a.addr()[i * n + j];
    for (int k = 0; k < n; ++k) a.addr()[k * n + k] += n * 0.01;
    return a;
}

Mm ones_column(int n) {
    Mm b(0, 0, 0, n, 1, ak_double);
    for (int k = 0; k < n; ++k) b.addr()[k] = 1.0;
    return b;
}

void BM_mldivide(benchmark::State& st) {
    int n = static_cast<int>(st.range(0));
    Mm a = random_square(n, false), b = ones_column(n);
    for (auto _ : st) benchmark::DoNotOptimize(mldivide(a, b));
}
void BM_dgesv(benchmark::State& st) {
    int n = static_cast<int>(st.range(0)), one = 1, info;
    Mm a = random_square(n, false);
    std::vector<double> ac(static_cast<std::size_t>(n) * n), b(n);
    std::vector<int> ipiv(n);
    for (auto _ : st) {
        std::memcpy(ac.data(), a.addr(), ac.size() * sizeof(double));
        for (int k = 0; k < n; ++k) b[k] = 1.0;
        dgesv_(&n, &one, ac.data(), &n, ipiv.data(), b.data(), &n, &info);
        benchmark::DoNotOptimize(b.data());
    }
}
BENCHMARK(BM_mldivide)->Arg(1000)->Arg(2000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_dgesv)->Arg(1000)->Arg(2000)->Unit(benchmark::kMillisecond);

void BM_inv(benchmark::State& st) {
    Mm a = random_square(static_cast<int>(st.range(0)), false);
    for (auto _ : st) benchmark::DoNotOptimize(inv(a));
}
void BM_dgetrf_dgetri(benchmark::State& st) {
    int n = static_cast<int>(st.range(0)), info, lwork = n * 256;
    Mm a = random_square(n, false);
    std::vector<double> ac(static_cast<std::size_t>(n) * n), work(lwork);
    std::vector<int> ipiv(n);
    for (auto _ : st) {
        std::memcpy(ac.data(), a.addr(), ac.size() * sizeof(double));
        dgetrf_(&n, &n, ac.data(), &n, ipiv.data(), &info);
        dgetri_(&n, ac.data(), &n, ipiv.data(), work.data(), &lwork, &info);
        benchmark::DoNotOptimize(ac.data());
    }
}
BENCHMARK(BM_inv)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_dgetrf_dgetri)->Arg(1000)->Unit(benchmark::kMillisecond);

void BM_eig_symmetric(benchmark::State& st) {
    Mm a = random_square(static_cast<int>(st.range(0)), true);
    for (auto _ : st) benchmark::DoNotOptimize(eig(a));
}
void BM_dsyev_values(benchmark::State& st) {
    int n = static_cast<int>(st.range(0)), info, lwork = -1;
    Mm a = random_square(n, true);
    std::vector<double> ac(static_cast<std::size_t>(n) * n), w(n);
    double q;
    dsyev_("N", "L", &n, ac.data(), &n, w.data(), &q, &lwork, &info, 1, 1);
    lwork = static_cast<int>(q);
    std::vector<double> work(lwork);
    for (auto _ : st) {
        std::memcpy(ac.data(), a.addr(), ac.size() * sizeof(double));
        dsyev_("N", "L", &n, ac.data(), &n, w.data(), work.data(), &lwork, &info, 1, 1);
        benchmark::DoNotOptimize(w.data());
    }
}
BENCHMARK(BM_eig_symmetric)->Arg(1000)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(BM_dsyev_values)->Arg(1000)->Unit(benchmark::kMillisecond)->Iterations(1);

void BM_svd(benchmark::State& st) {
    Mm a = random_square(static_cast<int>(st.range(0)), false);
    for (auto _ : st) benchmark::DoNotOptimize(svd(a));
}
void BM_dgesdd_values(benchmark::State& st) {
    int n = static_cast<int>(st.range(0)), info, lwork = -1, one = 1;
    Mm a = random_square(n, false);
    std::vector<double> ac(static_cast<std::size_t>(n) * n), s(n);
    std::vector<int> iwork(8 * static_cast<std::size_t>(n));
    double q, dummy;
    dgesdd_("N", &n, &n, ac.data(), &n, s.data(), &dummy, &one, &dummy, &one, &q, &lwork, iwork.data(), &info, 1);
    lwork = static_cast<int>(q);
    std::vector<double> work(lwork);
    for (auto _ : st) {
        std::memcpy(ac.data(), a.addr(), ac.size() * sizeof(double));
        dgesdd_("N", &n, &n, ac.data(), &n, s.data(), &dummy, &one, &dummy, &one, work.data(), &lwork, iwork.data(),
                &info, 1);
        benchmark::DoNotOptimize(s.data());
    }
}
BENCHMARK(BM_svd)->Arg(1000)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(BM_dgesdd_values)->Arg(1000)->Unit(benchmark::kMillisecond)->Iterations(1);

// The five-point Laplacian on a k x k grid.
Mm laplacian(int k) {
    int n = k * k;
    std::vector<double> I, J, V;
    for (int x = 0; x < k; ++x)
        for (int y = 0; y < k; ++y) {
            int p = x * k + y + 1;
            auto add = [&](int q, double v) {
                I.push_back(p);
                J.push_back(q);
                V.push_back(v);
            };
            add(p, 4.0);
            if (y + 1 < k) add(p + 1, -1.0);
            if (y > 0) add(p - 1, -1.0);
            if (x + 1 < k) add(p + k, -1.0);
            if (x > 0) add(p - k, -1.0);
        }
    auto column = [](const std::vector<double>& v) {
        Mm c(0, 0, 0, static_cast<int>(v.size()), 1, ak_double);
        std::memcpy(c.addr(), v.data(), v.size() * sizeof(double));
        return c;
    };
    return sparse(column(I), column(J), column(V), Mm(n), Mm(n));
}

void BM_sparse_mldivide(benchmark::State& st) {
    Mm a = laplacian(static_cast<int>(st.range(0)));
    Mm b = ones_column(a.rows());
    for (auto _ : st) benchmark::DoNotOptimize(mldivide(a, b));
}
void dgssv_run(benchmark::State& st, colperm_t order) {
    Mm a = laplacian(static_cast<int>(st.range(0)));
    const int n = a.rows();
    int* ir = getIr(a);
    int* jc = getJc(a);
    std::vector<double> x(n);
    std::vector<int> perm_c(n), perm_r(n);
    for (auto _ : st) {
        for (int k = 0; k < n; ++k) x[k] = 1.0;
        SuperMatrix A, B, L, U;
        dCreate_CompCol_Matrix(&A, n, n, a.nnz, a.addr(), ir, jc, SLU_NC, SLU_D, SLU_GE);
        dCreate_Dense_Matrix(&B, n, 1, x.data(), n, SLU_DN, SLU_D, SLU_GE);
        superlu_options_t options;
        set_default_options(&options);
        options.ColPerm = order;
        if (order == MY_PERMC)
            for (int k = 0; k < n; ++k) perm_c[k] = k;
        SuperLUStat_t stat;
        StatInit(&stat);
        int info;
        dgssv(&options, &A, perm_c.data(), perm_r.data(), &L, &U, &B, &stat, &info);
        Destroy_SuperNode_Matrix(&L);
        Destroy_CompCol_Matrix(&U);
        Destroy_SuperMatrix_Store(&A);
        Destroy_SuperMatrix_Store(&B);
        StatFree(&stat);
        benchmark::DoNotOptimize(x.data());
    }
    freeIrJc(ir, jc);
}
void BM_dgssv_default_order(benchmark::State& st) { dgssv_run(st, COLAMD); }
void BM_dgssv_natural_order(benchmark::State& st) { dgssv_run(st, MY_PERMC); }
BENCHMARK(BM_sparse_mldivide)->Arg(200)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(BM_dgssv_default_order)->Arg(200)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(BM_dgssv_natural_order)->Arg(200)->Unit(benchmark::kMillisecond)->Iterations(1);

}  // namespace
