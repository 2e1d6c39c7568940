// Sparse solves and sparse LU factors through SuperLU. A complex system is solved as the real
// system of twice the order [re, -im; im, re].
#include <slu_ddefs.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "algebra/linalg_internal.h"
#include "arklib/arith.h"
#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/linalg.h"
#include "arklib/list.h"
#include "arklib/sparse.h"
#include "arklib/subscript.h"

using ak_internal::dense_copy;

namespace {

// The compressed-column lists of a real sparse matrix, freed on exit.
struct column_lists {
    int* ir;
    int* jc;
    explicit column_lists(const Mm& a) : ir(getIr(a)), jc(getJc(a)) {}
    ~column_lists() { freeIrJc(ir, jc); }
    column_lists(const column_lists&) = delete;
    column_lists& operator=(const column_lists&) = delete;
};

Mm nan_matrix(int rows, int cols) {
    Mm r = ak_internal::dense_zeros(0, rows, cols);
    for (int k = 0; k < r.nnz; ++k) r.addr()[k] = NAN;
    return r;
}

Mm solve_complex(const Mm& a, const Mm& b) {
    const int n = a.rows();
    Mm ar = real(a), ai = imag(a), br = real(full(b)), bi = imag(full(b));
    Mm big = vertcat(horzcat(ar, uminus(ai)), horzcat(ai, ar));
    Mm y = lusolve(big, vertcat(br, bi), speye(Mm(2.0 * n)));
    Mm top = y(colon(1.0, n), c_p), bottom = y(colon(n + 1.0, 2.0 * n), c_p);
    Mm x = dense_copy(top, 1);
    std::memcpy(x.addi(), bottom.addr(), sizeof(double) * static_cast<std::size_t>(x.nnz));
    return x;
}

}  // namespace

Mm lusolve(const Mm& a, const Mm& b, const Mm& q) {
    if (error_sparse(a, "lusolve") || error_square(a, "lusolve")) return x_M;
    if (a.pi || b.pi) return solve_complex(a, b);
    const int n = a.rows();
    if (b.rows() != n) {
        error("%s: a,b does not have the same number of rows", "lusolve");
        return x_M;
    }
    Mm x = dense_copy(b, 0);
    const int nrhs = x.cols();
    if (n == 0 || nrhs == 0) return x;
    column_lists lists(a), order(q.flags.sparse ? q : sparse(q));
    if (!lists.ir || !lists.jc || !order.ir) return x_M;
    std::vector<int> perm_c(order.ir, order.ir + n), perm_r(static_cast<std::size_t>(n));
    SuperMatrix A, B, L, U;
    dCreate_CompCol_Matrix(&A, n, n, a.nnz, a.addr(), lists.ir, lists.jc, SLU_NC, SLU_D, SLU_GE);
    dCreate_Dense_Matrix(&B, n, nrhs, x.addr(), n, SLU_DN, SLU_D, SLU_GE);
    superlu_options_t options;
    set_default_options(&options);
    options.ColPerm = MY_PERMC;
    SuperLUStat_t stat;
    StatInit(&stat);
    int info = 0;
    dgssv(&options, &A, perm_c.data(), perm_r.data(), &L, &U, &B, &stat, &info);
    if (info == 0) {
        Destroy_SuperNode_Matrix(&L);
        Destroy_CompCol_Matrix(&U);
    } else if (info <= n) {  // the factors exist up to the zero pivot
        Destroy_SuperNode_Matrix(&L);
        Destroy_CompCol_Matrix(&U);
    }
    Destroy_SuperMatrix_Store(&A);
    Destroy_SuperMatrix_Store(&B);
    StatFree(&stat);
    if (info > n) error("Out of memory!");
    if (info != 0) return nan_matrix(n, nrhs);
    return x;
}

Mm lusolve(const Mm&) {
    error_input("lusolve", 1);
    return x_M;
}
Mm lusolve(const Mm& a, const Mm&) {
    (void)a;
    error_input("lusolve", 2);
    return x_M;
}

namespace ak_internal {

// L, U and P of a real square sparse matrix with P * a = L * U, by SuperLU's factorisation in the
// natural column order with partial pivoting. Returns false (with zero factors and an identity P)
// when the factorisation stops at a zero pivot or runs out of memory.
bool sparse_lu(const Mm& a, Mm& Lout, Mm& Uout, Mm& Pout) {
    const int n = a.rows();
    column_lists lists(a);
    std::vector<int> perm_c(static_cast<std::size_t>(n)), perm_r(static_cast<std::size_t>(n)),
        etree(static_cast<std::size_t>(n));
    for (int k = 0; k < n; ++k) perm_c[k] = k;
    SuperMatrix A, AC, L, U;
    dCreate_CompCol_Matrix(&A, n, n, a.nnz, a.addr(), lists.ir, lists.jc, SLU_NC, SLU_D, SLU_GE);
    superlu_options_t options;
    set_default_options(&options);
    options.Fact = DOFACT;
    options.DiagPivotThresh = 1.0;
    // Symmetric mode keeps the columns in their natural order (no post-ordering of the elimination
    // tree), so that U stays upper triangular; with threshold 1 the pivot is still the largest.
    options.SymmetricMode = YES;
    SuperLUStat_t stat;
    StatInit(&stat);
    sp_preorder(&options, &A, perm_c.data(), etree.data(), &AC);
    GlobalLU_t glu;
    int info = 0;
    dgstrf(&options, &AC, sp_ienv(2), sp_ienv(1), etree.data(), nullptr, 0, perm_c.data(), perm_r.data(), &L,
           &U, &glu, &stat, &info);
    bool ok = info == 0;
    if (ok) {
        const SCformat* Ls = static_cast<const SCformat*>(L.Store);
        const NCformat* Us = static_cast<const NCformat*>(U.Store);
        const double* lval = static_cast<const double*>(Ls->nzval);
        const double* uval = static_cast<const double*>(Us->nzval);
        std::vector<int> ljc(1, 0), ujc(1, 0), lir, uir;
        std::vector<double> lv, uv;
        for (int s = 0; s <= Ls->nsuper; ++s) {
            const int first = Ls->sup_to_col[s], last = Ls->sup_to_col[s + 1];
            const int rstart = Ls->rowind_colptr[first], nrows = Ls->rowind_colptr[first + 1] - rstart;
            for (int j = first; j < last; ++j) {
                const double* col = lval + Ls->nzval_colptr[j];
                const int diag = j - first;  // position of the diagonal within the supernode
                std::vector<std::pair<int, double>> ucol;
                for (int k = Us->colptr[j]; k < Us->colptr[j + 1]; ++k) ucol.push_back({Us->rowind[k], uval[k]});
                for (int k = 0; k <= diag; ++k) ucol.push_back({Ls->rowind[rstart + k], col[k]});
                std::sort(ucol.begin(), ucol.end());
                for (auto& e : ucol) {
                    uir.push_back(e.first);
                    uv.push_back(e.second);
                }
                ujc.push_back(static_cast<int>(uir.size()));
                std::vector<std::pair<int, double>> lcol{{Ls->rowind[rstart + diag], 1.0}};
                for (int k = diag + 1; k < nrows; ++k) lcol.push_back({Ls->rowind[rstart + k], col[k]});
                std::sort(lcol.begin(), lcol.end());
                for (auto& e : lcol) {
                    lir.push_back(e.first);
                    lv.push_back(e.second);
                }
                ljc.push_back(static_cast<int>(lir.size()));
            }
        }
        Lout = sparse_from_columns(n, n, ljc.data(), lir.data(), lv.data(), nullptr, true);
        Uout = sparse_from_columns(n, n, ujc.data(), uir.data(), uv.data(), nullptr, true);
    }
    if (info == 0 || info <= n) {
        Destroy_SuperNode_Matrix(&L);
        Destroy_CompCol_Matrix(&U);
    }
    Destroy_CompCol_Permuted(&AC);
    Destroy_SuperMatrix_Store(&A);
    StatFree(&stat);
    if (info > n) error("Out of memory!");
    // Row j of a becomes row perm_r[j] of P * a.
    std::vector<int> pjc(static_cast<std::size_t>(n) + 1), pir(static_cast<std::size_t>(n));
    std::vector<double> pv(static_cast<std::size_t>(n), 1.0);
    for (int j = 0; j <= n; ++j) pjc[j] = j;
    for (int j = 0; j < n; ++j) pir[j] = ok ? perm_r[j] : j;
    Pout = sparse_from_columns(n, n, pjc.data(), pir.data(), pv.data(), nullptr, false);
    if (!ok) {
        Lout = sparse(Mm(n), Mm(n));
        Uout = sparse(Mm(n), Mm(n));
    }
    return ok;
}

}  // namespace ak_internal

AK_BUILTIN("lusolve", AK_FN(lusolve, const Mm&, const Mm&, const Mm&), AK_FN(lusolve, const Mm&),
           AK_FN(lusolve, const Mm&, const Mm&));
