// The fronts of lp and qp: argument checks, scaling, the bounds joined as rows, and the status line.
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/error.h"
#include "arklib/memory.h"
#include "arklib/optim.h"
#include "arklib/sparse.h"
#include "methods/lp_engine.h"
#include "methods/mps.h"

namespace {

using namespace ak_internal;

// The printed line and the status word of a solver code.
void report(int code, double display, Mm& how) {
    static const char* const lines[10] = {"LP internal error\n",   "Optimal solution\n", "Infeasible problem\n",
                                          "Unbounded problem\n",   "Too many iterations\n", "A is singular\n",
                                          "Inconsistent initial\n", "Inconsistent A\n",  "File not found\n",
                                          "MPS error\n"};
    const int k = code < 1 || code > 9 ? 0 : code;
    if (display >= 0) ak_printf("%s", lines[k]);
    const char* word = code == 1 ? "ok" : code == 2 ? "infeasible" : code == 3 ? "unbounded" : "";
    how = TM(word);
}

struct dense_t {
    std::vector<double> v;
    int rows = 0, cols = 0;
};

dense_t dense(const Mm& m) {
    dense_t d;
    if (m.flags.type == ak_mm) return d;
    Mm f = full(mdouble(m));
    d.rows = f.rows();
    d.cols = f.cols();
    if (f.size() > 0) d.v.assign(f.addr(), f.addr() + f.size());
    return d;
}

double number(const Mm& m, double dflt) {
    dense_t d = dense(m);
    return d.v.empty() ? dflt : d.v[0];
}

// The problem with the finite bounds joined as rows: -x(j) <= -vlb(j), then x(j) <= vub(j).
struct joined_t {
    int m = 0, n = 0, neq = 0, mrows = 0;
    std::vector<double> c, a, b;
    std::vector<int> lower, upper;  // bound rows: the variable of each, -1 for an infinite bound
    int nlower = 0, nupper = 0;     // entries of the bound vectors given
    lp_problem_t problem() const { return {m, n, neq, c.data(), a.data(), b.data()}; }
};

void join(joined_t& J, const double* A, const double* b, int mrows, const double* lb, int nlb, const double* ub,
          int nub) {
    const int n = J.n;
    std::vector<int> lo, hi;
    for (int j = 0; j < nlb && j < n; ++j)
        if (std::isfinite(lb[j])) lo.push_back(j);
    for (int j = 0; j < nub && j < n; ++j)
        if (std::isfinite(ub[j])) hi.push_back(j);
    J.mrows = mrows;
    J.m = mrows + static_cast<int>(lo.size() + hi.size());
    J.a.assign(static_cast<long>(J.m) * n, 0);
    J.b.assign(J.m, 0);
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < mrows; ++i) J.a[i + static_cast<long>(j) * J.m] = A[i + static_cast<long>(j) * mrows];
    for (int i = 0; i < mrows; ++i) J.b[i] = b[i];
    int r = mrows;
    for (int j : lo) {
        J.a[r + static_cast<long>(j) * J.m] = -1;
        J.b[r++] = -lb[j];
    }
    for (int j : hi) {
        J.a[r + static_cast<long>(j) * J.m] = 1;
        J.b[r++] = ub[j];
    }
    J.lower = lo;
    J.upper = hi;
    J.nlower = nlb > 0 ? n : 0;
    J.nupper = nub > 0 ? n : 0;
}

// Multipliers as returned: the rows of A, then n for the lower bounds and n for the upper ones when given.
Mm multipliers(const joined_t& J, const std::vector<double>& lam, double factor) {
    Mm out(0, 0, 0, J.mrows + J.nlower + J.nupper, 1, ak_double);
    double* o = out.addr();
    std::memset(o, 0, sizeof(double) * out.size());
    for (int i = 0; i < J.mrows; ++i) o[i] = lam[i] * factor;
    int r = J.mrows;
    for (int j : J.lower) o[J.mrows + j] = lam[r++] * factor;
    for (int j : J.upper) o[J.mrows + J.nlower + j] = lam[r++] * factor;
    return out;
}

Mm column(const std::vector<double>& v, int n) {
    Mm x(0, 0, 0, n, 1, ak_double);
    if (n) std::memcpy(x.addr(), v.data(), sizeof(double) * n);
    return x;
}

// Checks shared by lp and qp; fills J from the matrices. 0 after a report.
int load(const char* who, const Mm& c, const Mm& A, const Mm& b, const Mm& vlb, const Mm& vub, const Mm& neq,
         joined_t& J) {
    dense_t dc = dense(c), dA = dense(A), db = dense(b), dl = dense(vlb), du = dense(vub);
    if (dA.v.empty() && db.v.empty()) {  // no rows: bounds alone
        dA.rows = 0;
        dA.cols = static_cast<int>(dc.v.size());
    }
    if (dA.rows != static_cast<int>(db.v.size())) {
        error("%s: A and b must have same number of rows", who);
        return 0;
    }
    if (static_cast<int>(dc.v.size()) != dA.cols) {
        error("%s: number of rows in C must be same as number of columns in A", who);
        return 0;
    }
    J.n = dA.cols;
    J.c = dc.v;
    int ne = static_cast<int>(number(neq, 0));
    if (ne < 0) ne = 0;
    if (ne > dA.rows) ne = dA.rows;
    J.neq = ne;
    join(J, dA.v.data(), db.v.data(), dA.rows, dl.v.data(), static_cast<int>(dl.v.size()), du.v.data(),
         static_cast<int>(du.v.size()));
    return 1;
}

double largest(const std::vector<double>& v, double start = 0) {
    for (double x : v) start = std::fmax(start, std::fabs(x));
    return start;
}

Mm lp_run(const joined_t& J0, double display, Mm& lambda, Mm& how) {
    joined_t J = J0;
    // Scale the cost and the rows as whole blocks, each by its largest magnitude.
    double sc = largest(J.c), sa = largest(J.a, largest(J.b));
    if (!(sc > 0)) sc = 1;
    if (!(sa > 0)) sa = 1;
    if (sc != 1)
        for (double& v : J.c) v /= sc;
    if (sa != 1) {
        for (double& v : J.a) v /= sa;
        for (double& v : J.b) v /= sa;
    }
    ak_scratch<double> x(J.n), lam(J.m);
    const int code = lp_solve(J.problem(), x, lam);
    report(code, display, how);
    std::vector<double> xv(x.get(), x.get() + J.n), lv(lam.get(), lam.get() + J.m);
    lambda = multipliers(J, lv, sc / sa);
    return column(xv, J.n);
}

// A problem the solver cannot start on ends with its code: more equality rows than A has (7), or a
// starting point x0 whose length is not the number of variables (6). The simplex starts from a vertex
// of its own, so x0 is otherwise only checked; the point returned is then x0 (or zeros).
int unusable_problem(const joined_t& J, const Mm& A, const Mm& x0, const Mm& neq) {
    if (number(neq, 0) > full(A).rows()) return lp_inconsistent_a;
    if (x0.size() > 0 && x0.size() != J.n) return lp_inconsistent_initial;
    return 0;
}

Mm lp_matrices(const Mm& c, const Mm& A, const Mm& b, const Mm& vlb, const Mm& vub, const Mm& x0, const Mm& neq,
               const Mm& display, Mm& lambda, Mm& how) {
    joined_t J;
    lambda = Mm();
    how = TM("");
    if (!load("lp", c, A, b, vlb, vub, neq, J)) return x_M;
    if (const int code = unusable_problem(J, A, x0, neq)) {
        report(code, number(display, 0), how);
        lambda = column(std::vector<double>(J.mrows + J.nlower + J.nupper, 0.0), J.mrows + J.nlower + J.nupper);
        return x0.size() > 0 ? full(x0) : column(std::vector<double>(J.n, 0.0), J.n);
    }
    return lp_run(J, number(display, 0), lambda, how);
}

Mm lp_file(const Mm& file, Mm& lambda, Mm& how) {
    lambda = Mm();
    if (!file.isstr()) {
        error_input("lp", 1);
        return x_M;
    }
    char name[1024];
    Mstr(file, name, sizeof name);
    mps_problem_t p;
    int line = 0;
    std::string why;
    const int code = mps_read(name, p, &line, why);
    if (code != 1) {
        if (code == 9) ak_printf("%s, line %d: %s\n", name, line, why.c_str());
        report(code, 0, how);
        return Mm();
    }
    joined_t J;
    J.n = p.n;
    J.c = p.c;
    J.neq = p.neq;
    join(J, p.a.data(), p.b.data(), p.m, p.lb.data(), p.n, p.ub.data(), p.n);
    return lp_run(J, 0, lambda, how);
}

// ---- qp -------------------------------------------------------------------------------------------
Mm qp_matrices(const Mm& H, const Mm& c, const Mm& A, const Mm& b, const Mm& vlb, const Mm& vub, const Mm& neq,
               const Mm& display_in, Mm& lambda, Mm& how) {
    lambda = Mm();
    how = TM("");
    dense_t dh = dense(H);
    const double display = number(display_in, 0);
    const int n = dh.rows;
    if (dh.cols != n) {
        error("Q not symmetric");
        return x_M;
    }
    double asym = 0;
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j)
            asym = std::fmax(asym, std::fabs(dh.v[i + j * n] - dh.v[j + i * n]));
    if (!(10 * 2.220446049250313e-16 > asym)) {
        error("Q not symmetric");
        return x_M;
    }
    joined_t J;
    if (!load("qp", c, A, b, vlb, vub, neq, J)) return x_M;
    if (J.n != n) {
        error("qp: H must have as many rows as c");
        return x_M;
    }
    ak_scratch<double> x(n), lam(J.m);
    int unique = 0, seems = 0;
    const int code = qp_solve(J.problem(), dh.v.data(), x, lam, &unique, &seems);
    if (display >= 0) {
        if (code == lp_infeasible && unique) ak_printf("The problem has a unique feasible point\n");
        else if (code == lp_infeasible) ak_printf("The system has no feasible solution.\n");
        if (seems) ak_printf("The problem seems unbounded.\n");
        if (code == lp_unbounded) ak_printf("The problem is unbounded.\n");
        if (code == lp_iterations) ak_printf("Too many iterations\n");
    }
    how = TM(code == lp_optimal ? "ok" : code == lp_infeasible ? "infeasible" : code == lp_unbounded ? "unbounded" : "");
    std::vector<double> xv(x.get(), x.get() + n), lv(lam.get(), lam.get() + J.m);
    lambda = multipliers(J, lv, 1);
    return column(xv, n);
}

// conls: min norm(A x - b) under the constraints of qp, as the quadratic programme with H = A'A and
// c = -A'b.
Mm conls_matrices(const Mm& A, const Mm& b, const Mm& C, const Mm& d, const Mm& vlb, const Mm& vub, const Mm& neq,
                  const Mm& display, Mm& lambda, Mm& how) {
    lambda = Mm();
    how = TM("");
    dense_t da = dense(A), db = dense(b);
    if (da.rows != static_cast<int>(db.v.size())) {
        error("conls: A and b must have same number of rows");
        return x_M;
    }
    const int m = da.rows, n = da.cols;
    Mm H(0, 0, 0, n, n, ak_double), c(0, 0, 0, n, 1, ak_double);
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) {
            double s = 0;
            for (int k = 0; k < m; ++k) s += da.v[k + static_cast<long>(i) * m] * da.v[k + static_cast<long>(j) * m];
            H.addr()[i + static_cast<long>(j) * n] = s;
        }
        double s = 0;
        for (int k = 0; k < m; ++k) s += da.v[k + static_cast<long>(i) * m] * db.v[k];
        c.addr()[i] = -s;
    }
    return qp_matrices(H, c, C, d, vlb, vub, neq, display, lambda, how);
}

}  // namespace

#define M const Mm&
Mm conls(M) {
    error_input("conls", 1);
    return x_M;
}
Mm conls(M, M) {
    error_input("conls", 2);
    return x_M;
}
Mm conls(M, M, M) {
    error_input("conls", 3);
    return x_M;
}
Mm conls(M A, M b, M C, M d) {
    Mm l, h;
    return conls_matrices(A, b, C, d, Mm(), Mm(), Mm(), Mm(), l, h);
}
Mm conls(M A, M b, M C, M d, M vlb) {
    Mm l, h;
    return conls_matrices(A, b, C, d, vlb, Mm(), Mm(), Mm(), l, h);
}
Mm conls(M A, M b, M C, M d, M vlb, M vub) {
    Mm l, h;
    return conls_matrices(A, b, C, d, vlb, vub, Mm(), Mm(), l, h);
}
Mm conls(M A, M b, M C, M d, M vlb, M vub, M) {
    Mm l, h;
    return conls_matrices(A, b, C, d, vlb, vub, Mm(), Mm(), l, h);
}
Mm conls(M A, M b, M C, M d, M vlb, M vub, M, M neq) {
    Mm l, h;
    return conls_matrices(A, b, C, d, vlb, vub, neq, Mm(), l, h);
}
Mm conls(M A, M b, M C, M d, M vlb, M vub, M, M neq, M display) {
    Mm l, h;
    return conls_matrices(A, b, C, d, vlb, vub, neq, display, l, h);
}
Mm conls(M A, M b, M C, M d, i_o_t, Mm& l) {
    Mm h;
    return conls_matrices(A, b, C, d, Mm(), Mm(), Mm(), Mm(), l, h);
}
Mm conls(M A, M b, M C, M d, M vlb, M vub, M, M neq, M display, i_o_t, Mm& l) {
    Mm h;
    return conls_matrices(A, b, C, d, vlb, vub, neq, display, l, h);
}
Mm conls(M A, M b, M C, M d, i_o_t, Mm& l, Mm& h) {
    return conls_matrices(A, b, C, d, Mm(), Mm(), Mm(), Mm(), l, h);
}
Mm conls(M A, M b, M C, M d, M vlb, M vub, M, M neq, M display, i_o_t, Mm& l, Mm& h) {
    return conls_matrices(A, b, C, d, vlb, vub, neq, display, l, h);
}

Mm lp(M c) {
    Mm l, h;
    if (!c.isstr()) {
        error_input("lp", 1);
        return x_M;
    }
    return lp_file(c, l, h);
}
Mm lp(M, M) {
    error_input("lp", 2);
    return x_M;
}
Mm lp(M file, i_o_t, Mm& lambda) {
    Mm h;
    return lp_file(file, lambda, h);
}
Mm lp(M file, i_o_t, Mm& lambda, Mm& how) { return lp_file(file, lambda, how); }

// Written out: each input count forwards to the full form with empty matrices for the rest.
Mm lp(M c, M A, M b) {
    Mm l, h;
    return lp_matrices(c, A, b, Mm(), Mm(), Mm(), Mm(), Mm(), l, h);
}
Mm lp(M c, M A, M b, M vlb) {
    Mm l, h;
    return lp_matrices(c, A, b, vlb, Mm(), Mm(), Mm(), Mm(), l, h);
}
Mm lp(M c, M A, M b, M vlb, M vub) {
    Mm l, h;
    return lp_matrices(c, A, b, vlb, vub, Mm(), Mm(), Mm(), l, h);
}
Mm lp(M c, M A, M b, M vlb, M vub, M x0) {
    Mm l, h;
    return lp_matrices(c, A, b, vlb, vub, x0, Mm(), Mm(), l, h);
}
Mm lp(M c, M A, M b, M vlb, M vub, M x0, M neq) {
    Mm l, h;
    return lp_matrices(c, A, b, vlb, vub, x0, neq, Mm(), l, h);
}
Mm lp(M c, M A, M b, M vlb, M vub, M x0, M neq, M display) {
    Mm l, h;
    return lp_matrices(c, A, b, vlb, vub, x0, neq, display, l, h);
}
Mm lp(M c, M A, M b, i_o_t, Mm& l) {
    Mm h;
    return lp_matrices(c, A, b, Mm(), Mm(), Mm(), Mm(), Mm(), l, h);
}
Mm lp(M c, M A, M b, M vlb, i_o_t, Mm& l) {
    Mm h;
    return lp_matrices(c, A, b, vlb, Mm(), Mm(), Mm(), Mm(), l, h);
}
Mm lp(M c, M A, M b, M vlb, M vub, i_o_t, Mm& l) {
    Mm h;
    return lp_matrices(c, A, b, vlb, vub, Mm(), Mm(), Mm(), l, h);
}
Mm lp(M c, M A, M b, M vlb, M vub, M x0, i_o_t, Mm& l) {
    Mm h;
    return lp_matrices(c, A, b, vlb, vub, x0, Mm(), Mm(), l, h);
}
Mm lp(M c, M A, M b, M vlb, M vub, M x0, M neq, i_o_t, Mm& l) {
    Mm h;
    return lp_matrices(c, A, b, vlb, vub, x0, neq, Mm(), l, h);
}
Mm lp(M c, M A, M b, M vlb, M vub, M x0, M neq, M display, i_o_t, Mm& l) {
    Mm h;
    return lp_matrices(c, A, b, vlb, vub, x0, neq, display, l, h);
}
Mm lp(M c, M A, M b, i_o_t, Mm& l, Mm& h) { return lp_matrices(c, A, b, Mm(), Mm(), Mm(), Mm(), Mm(), l, h); }
Mm lp(M c, M A, M b, M vlb, i_o_t, Mm& l, Mm& h) { return lp_matrices(c, A, b, vlb, Mm(), Mm(), Mm(), Mm(), l, h); }
Mm lp(M c, M A, M b, M vlb, M vub, i_o_t, Mm& l, Mm& h) { return lp_matrices(c, A, b, vlb, vub, Mm(), Mm(), Mm(), l, h); }
Mm lp(M c, M A, M b, M vlb, M vub, M x0, i_o_t, Mm& l, Mm& h) {
    return lp_matrices(c, A, b, vlb, vub, x0, Mm(), Mm(), l, h);
}
Mm lp(M c, M A, M b, M vlb, M vub, M x0, M neq, i_o_t, Mm& l, Mm& h) {
    return lp_matrices(c, A, b, vlb, vub, x0, neq, Mm(), l, h);
}
Mm lp(M c, M A, M b, M vlb, M vub, M x0, M neq, M display, i_o_t, Mm& l, Mm& h) {
    return lp_matrices(c, A, b, vlb, vub, x0, neq, display, l, h);
}

Mm qp(M) {
    error_input("qp", 1);
    return x_M;
}
Mm qp(M, M) {
    error_input("qp", 2);
    return x_M;
}
Mm qp(M, M, M) {
    error_input("qp", 3);
    return x_M;
}
Mm qp(M H, M c, M A, M b) {
    Mm l, h;
    return qp_matrices(H, c, A, b, Mm(), Mm(), Mm(), Mm(), l, h);
}
Mm qp(M H, M c, M A, M b, M vlb) {
    Mm l, h;
    return qp_matrices(H, c, A, b, vlb, Mm(), Mm(), Mm(), l, h);
}
Mm qp(M H, M c, M A, M b, M vlb, M vub) {
    Mm l, h;
    return qp_matrices(H, c, A, b, vlb, vub, Mm(), Mm(), l, h);
}
Mm qp(M H, M c, M A, M b, M vlb, M vub, M) {
    Mm l, h;
    return qp_matrices(H, c, A, b, vlb, vub, Mm(), Mm(), l, h);
}
Mm qp(M H, M c, M A, M b, M vlb, M vub, M, M neq) {
    Mm l, h;
    return qp_matrices(H, c, A, b, vlb, vub, neq, Mm(), l, h);
}
Mm qp(M H, M c, M A, M b, M vlb, M vub, M, M neq, M display) {
    Mm l, h;
    return qp_matrices(H, c, A, b, vlb, vub, neq, display, l, h);
}
Mm qp(M H, M c, M A, M b, i_o_t, Mm& l) {
    Mm h;
    return qp_matrices(H, c, A, b, Mm(), Mm(), Mm(), Mm(), l, h);
}
Mm qp(M H, M c, M A, M b, M vlb, i_o_t, Mm& l) {
    Mm h;
    return qp_matrices(H, c, A, b, vlb, Mm(), Mm(), Mm(), l, h);
}
Mm qp(M H, M c, M A, M b, M vlb, M vub, i_o_t, Mm& l) {
    Mm h;
    return qp_matrices(H, c, A, b, vlb, vub, Mm(), Mm(), l, h);
}
Mm qp(M H, M c, M A, M b, M vlb, M vub, M, i_o_t, Mm& l) {
    Mm h;
    return qp_matrices(H, c, A, b, vlb, vub, Mm(), Mm(), l, h);
}
Mm qp(M H, M c, M A, M b, M vlb, M vub, M, M neq, i_o_t, Mm& l) {
    Mm h;
    return qp_matrices(H, c, A, b, vlb, vub, neq, Mm(), l, h);
}
Mm qp(M H, M c, M A, M b, M vlb, M vub, M, M neq, M display, i_o_t, Mm& l) {
    Mm h;
    return qp_matrices(H, c, A, b, vlb, vub, neq, display, l, h);
}
Mm qp(M H, M c, M A, M b, i_o_t, Mm& l, Mm& h) { return qp_matrices(H, c, A, b, Mm(), Mm(), Mm(), Mm(), l, h); }
Mm qp(M H, M c, M A, M b, M vlb, i_o_t, Mm& l, Mm& h) {
    return qp_matrices(H, c, A, b, vlb, Mm(), Mm(), Mm(), l, h);
}
Mm qp(M H, M c, M A, M b, M vlb, M vub, i_o_t, Mm& l, Mm& h) {
    return qp_matrices(H, c, A, b, vlb, vub, Mm(), Mm(), l, h);
}
Mm qp(M H, M c, M A, M b, M vlb, M vub, M, i_o_t, Mm& l, Mm& h) {
    return qp_matrices(H, c, A, b, vlb, vub, Mm(), Mm(), l, h);
}
Mm qp(M H, M c, M A, M b, M vlb, M vub, M, M neq, i_o_t, Mm& l, Mm& h) {
    return qp_matrices(H, c, A, b, vlb, vub, neq, Mm(), l, h);
}
Mm qp(M H, M c, M A, M b, M vlb, M vub, M, M neq, M display, i_o_t, Mm& l, Mm& h) {
    return qp_matrices(H, c, A, b, vlb, vub, neq, display, l, h);
}

#define I i_o_t
AK_BUILTIN("lp", AK_FN(lp, M), AK_FN(lp, M, M), AK_FN(lp, M, M, M), AK_FN(lp, M, M, M, M), AK_FN(lp, M, M, M, M, M),
           AK_FN(lp, M, M, M, M, M, M), AK_FN(lp, M, M, M, M, M, M, M), AK_FN(lp, M, M, M, M, M, M, M, M),
           AK_FN(lp, M, I, Mm&), AK_FN(lp, M, M, M, I, Mm&), AK_FN(lp, M, M, M, M, I, Mm&),
           AK_FN(lp, M, M, M, M, M, I, Mm&), AK_FN(lp, M, M, M, M, M, M, I, Mm&),
           AK_FN(lp, M, M, M, M, M, M, M, I, Mm&), AK_FN(lp, M, M, M, M, M, M, M, M, I, Mm&),
           AK_FN(lp, M, I, Mm&, Mm&), AK_FN(lp, M, M, M, I, Mm&, Mm&), AK_FN(lp, M, M, M, M, I, Mm&, Mm&),
           AK_FN(lp, M, M, M, M, M, I, Mm&, Mm&), AK_FN(lp, M, M, M, M, M, M, I, Mm&, Mm&),
           AK_FN(lp, M, M, M, M, M, M, M, I, Mm&, Mm&), AK_FN(lp, M, M, M, M, M, M, M, M, I, Mm&, Mm&));
AK_BUILTIN("qp", AK_FN(qp, M), AK_FN(qp, M, M), AK_FN(qp, M, M, M), AK_FN(qp, M, M, M, M), AK_FN(qp, M, M, M, M, M),
           AK_FN(qp, M, M, M, M, M, M), AK_FN(qp, M, M, M, M, M, M, M), AK_FN(qp, M, M, M, M, M, M, M, M),
           AK_FN(qp, M, M, M, M, M, M, M, M, M), AK_FN(qp, M, M, M, M, I, Mm&), AK_FN(qp, M, M, M, M, M, I, Mm&),
           AK_FN(qp, M, M, M, M, M, M, I, Mm&), AK_FN(qp, M, M, M, M, M, M, M, I, Mm&),
           AK_FN(qp, M, M, M, M, M, M, M, M, I, Mm&), AK_FN(qp, M, M, M, M, M, M, M, M, M, I, Mm&),
           AK_FN(qp, M, M, M, M, I, Mm&, Mm&), AK_FN(qp, M, M, M, M, M, I, Mm&, Mm&),
           AK_FN(qp, M, M, M, M, M, M, I, Mm&, Mm&), AK_FN(qp, M, M, M, M, M, M, M, I, Mm&, Mm&),
           AK_FN(qp, M, M, M, M, M, M, M, M, I, Mm&, Mm&), AK_FN(qp, M, M, M, M, M, M, M, M, M, I, Mm&, Mm&));
AK_BUILTIN("conls", AK_FN(conls, M), AK_FN(conls, M, M), AK_FN(conls, M, M, M), AK_FN(conls, M, M, M, M),
           AK_FN(conls, M, M, M, M, M), AK_FN(conls, M, M, M, M, M, M), AK_FN(conls, M, M, M, M, M, M, M),
           AK_FN(conls, M, M, M, M, M, M, M, M), AK_FN(conls, M, M, M, M, M, M, M, M, M),
           AK_FN(conls, M, M, M, M, I, Mm&), AK_FN(conls, M, M, M, M, M, M, M, M, M, I, Mm&),
           AK_FN(conls, M, M, M, M, I, Mm&, Mm&), AK_FN(conls, M, M, M, M, M, M, M, M, M, I, Mm&, Mm&));
#undef I
#undef M
