// The numeric kernels under the fronts: the Runge-Kutta interface and its order checks, the
// backward-difference code on an implicit system, and the LP, QP and NNLS kernels checked by their
// optimality conditions on random problems.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "arklib.h"
#include "methods/bdf.h"
#include "methods/lp_engine.h"
#include "methods/mps.h"
#include "methods/rk_engine.h"
#include "tests/test_support.h"

namespace {

using namespace ak_internal;
typedef std::vector<double> vec;

void decay(void*, double, const double* y, double* yp) { yp[0] = -y[0]; }
void stiff(void*, double t, const double* y, double* yp) { yp[0] = -2000 * (y[0] - std::cos(t)); }

TEST(RungeKutta, InterpolationMatchesTheSolutionInsideEachStep) {
    ak_test::Recorder rec;
    for (int method = 1; method <= 3; ++method) {
        SCOPED_TRACE(method);
        vec work(32), interp(6);
        double y0 = 1, thres = 1e-10 / 1e-8, t, y, yp, yi, ypi;
        ASSERT_EQ(SETUP(1, 0, &y0, 3, 1e-8, &thres, method, 'C', 0, 0, work.data(), 32, 1, decay, nullptr), 1);
        double tprev = 0, worst = 0, worst_slope = 0;
        while (CT(&t, &y, &yp) == 1) {
            for (double u : {0.2, 0.5, 0.9}) {
                const double ti = tprev + u * (t - tprev);
                ASSERT_EQ(INTRP(ti, 'B', 1, &yi, &ypi, interp.data(), 6), 1);
                worst = std::fmax(worst, std::fabs(yi - std::exp(-ti)));
                worst_slope = std::fmax(worst_slope, std::fabs(ypi + std::exp(-ti)));
            }
            tprev = t;
            if (t == 3) break;
        }
        EXPECT_EQ(t, 3.0);
        EXPECT_LT(worst, 1e-6);
        EXPECT_LT(worst_slope, 1e-4);
    }
}

TEST(RungeKutta, CallsOutOfOrderAreFatal) {
    ak_test::Recorder rec;
    vec work(32), interp(6);
    double y0 = 1, thres = 1e-3, t, y, yp;
    ASSERT_EQ(SETUP(1, 0, &y0, 1, 1e-4, &thres, 2, 'U', 0, 0, work.data(), 32, 1, decay, nullptr), 1);
    EXPECT_EQ(UT(0.5, &t, &y, &yp), 1);
    EXPECT_NEAR(y, std::exp(-0.5), 1e-5);
    EXPECT_EQ(CT(&t, &y, &yp), 911) << "CT in task U";
    EXPECT_EQ(UT(0.75, &t, &y, &yp), 911) << "once fatal, always fatal";
    EXPECT_NE(rec.printed.find("CT:"), std::string::npos);
    // A new SETUP clears the state; RESET moves the end and INTRP needs a step first.
    ASSERT_EQ(SETUP(1, 0, &y0, 1, 1e-4, &thres, 1, 'C', 0, 0, work.data(), 32, 1, decay, nullptr), 1);
    EXPECT_EQ(INTRP(0.1, 'S', 1, &y, nullptr, interp.data(), 6), 911);
    ASSERT_EQ(SETUP(1, 0, &y0, 1, 1e-4, &thres, 1, 'C', 0, 0, work.data(), 32, 1, decay, nullptr), 1);
    EXPECT_EQ(CT(&t, &y, &yp), 1);
    EXPECT_EQ(RESET(2), 1);
    while (CT(&t, &y, &yp) == 1 && t < 2) {
    }
    EXPECT_EQ(t, 2.0);
    EXPECT_NEAR(y, std::exp(-2.0), 1e-3);
    EXPECT_EQ(SETUP(1, 0, &y0, 1, 1e-4, &thres, 2, 'C', 0, 0, work.data(), 31, 1, decay, nullptr), 911)
        << "work of less than 32 n";
    EXPECT_EQ(SETUP(1, 0, &y0, 1, 0.02, &thres, 2, 'C', 0, 0, work.data(), 32, 1, decay, nullptr), 911)
        << "a relative tolerance above 0.01";
}

TEST(RungeKutta, StiffAndWorkLimitFlagsLetTheRunGoOn) {
    ak_test::Recorder rec;
    vec work(32);
    double y0 = 1, thres = 1e-6 / 1e-4, t = 0, y, yp;
    ASSERT_EQ(SETUP(1, 0, &y0, 20, 1e-4, &thres, 2, 'C', 0, 0, work.data(), 32, 1, stiff, nullptr), 1);
    int stiff_flags = 0, work_flags = 0, flag = 1;
    while (t < 20 && flag < 5) {
        flag = CT(&t, &y, &yp);
        stiff_flags += flag == 4;
        work_flags += flag == 3;
    }
    EXPECT_EQ(t, 20.0);
    EXPECT_NEAR(y, std::cos(20.0), 1e-3);
    EXPECT_GT(stiff_flags, 0);
    EXPECT_GT(work_flags, 0);
    const rk_stats_t s = rk_stats();
    EXPECT_GT(s.calls, 5000);
    EXPECT_GT(s.steps, 1000);
}

// y1' = -y1 with the algebraic condition y2 = y1^2: y2 = exp(-2 t).
void dae(void*, double, const double* y, const double* yp, double* delta, int* ires) {
    delta[0] = -y[0] - yp[0];
    delta[1] = y[1] - y[0] * y[0];
    *ires = 0;
}

TEST(BackwardDifferences, ImplicitSystemWithAnAlgebraicRow) {
    const int n = 2;
    vec rwork(40 + 9 * n + n * n), rtol(2, 1e-7), atol(2, 1e-9);
    std::vector<int> iwork(20 + n), control(15, 0);
    control[1] = 1;
    double t = 0, y[2] = {1, 1}, yp[2] = {-1, -2};
    for (double tout : {0.5, 1.0, 2.0}) {
        int status;
        do {
            status = bdf_solve(dae, n, &t, y, yp, tout, control.data(), rtol.data(), atol.data(), rwork.data(),
                               static_cast<int>(rwork.size()), iwork.data(), static_cast<int>(iwork.size()), nullptr,
                               nullptr);
        } while (status == -1);
        ASSERT_EQ(status, 3);
        EXPECT_EQ(t, tout);
        EXPECT_NEAR(y[0], std::exp(-tout), 1e-5);
        EXPECT_NEAR(y[1], std::exp(-2 * tout), 1e-5);
    }
    EXPECT_GT(bdf_stats().order, 1) << "the order rises on a smooth solution";
    // A control word kept for later use must be 0; a zero weight stops the run.
    std::vector<int> bad(15, 0);
    bad[9] = 1;
    EXPECT_EQ(bdf_solve(dae, n, &t, y, yp, 3, bad.data(), rtol.data(), atol.data(), rwork.data(),
                        static_cast<int>(rwork.size()), iwork.data(), static_cast<int>(iwork.size()), nullptr, nullptr),
              -33);
    std::vector<int> fresh(15, 0);
    double zero[2] = {0, 0}, none = 0;
    t = 0;
    EXPECT_EQ(bdf_solve(dae, n, &t, zero, yp, 1, fresh.data(), &none, &none, rwork.data(),
                        static_cast<int>(rwork.size()), iwork.data(), static_cast<int>(iwork.size()), nullptr, nullptr),
              -3);
}

// ---- optimality conditions on random problems ------------------------------------------------------
struct random_problem_t {
    int m, n, neq;
    vec c, a, b, h;
    lp_problem_t view() const { return {m, n, neq, c.data(), a.data(), b.data()}; }
};

// Rows around a known interior point, so that the problem is feasible, and a box to keep it bounded.
random_problem_t make_problem(std::mt19937& gen, int m, int n, int neq) {
    std::uniform_real_distribution<double> u(-1, 1);
    random_problem_t p{m + 2 * n, n, neq, vec(n), vec(), vec(m + 2 * n), vec(n * n, 0)};
    p.a.assign(static_cast<long>(p.m) * n, 0);
    vec x0(n);
    for (double& v : x0) v = u(gen);
    for (double& v : p.c) v = u(gen);
    for (int i = 0; i < m; ++i) {
        double s = 0;
        for (int j = 0; j < n; ++j) {
            const double v = u(gen);
            p.a[i + static_cast<long>(j) * p.m] = v;
            s += v * x0[j];
        }
        p.b[i] = i < neq ? s : s + 0.5 * (u(gen) + 1);
    }
    for (int j = 0; j < n; ++j) {  // -3 <= x <= 3
        p.a[(m + j) + static_cast<long>(j) * p.m] = -1;
        p.b[m + j] = 3;
        p.a[(m + n + j) + static_cast<long>(j) * p.m] = 1;
        p.b[m + n + j] = 3;
    }
    // H = G'G + I/10, positive definite.
    vec g(n * n);
    for (double& v : g) v = u(gen);
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) {
            double s = i == j ? 0.1 : 0;
            for (int k = 0; k < n; ++k) s += g[k + i * n] * g[k + j * n];
            p.h[i + j * n] = s;
        }
    return p;
}

// Feasibility, sign of the multipliers, complementarity and stationarity c + H x + A' lambda = 0.
void expect_kkt(const random_problem_t& p, const vec& x, const vec& lam, bool quadratic) {
    for (int i = 0; i < p.m; ++i) {
        double ax = 0;
        for (int j = 0; j < p.n; ++j) ax += p.a[i + static_cast<long>(j) * p.m] * x[j];
        if (i < p.neq) {
            EXPECT_NEAR(ax, p.b[i], 1e-8) << "row " << i;
        } else {
            EXPECT_LE(ax, p.b[i] + 1e-8) << "row " << i;
            EXPECT_GE(lam[i], -1e-8) << "row " << i;
            EXPECT_NEAR(lam[i] * (p.b[i] - ax), 0, 1e-7) << "row " << i;
        }
    }
    for (int j = 0; j < p.n; ++j) {
        double s = p.c[j];
        for (int k = 0; quadratic && k < p.n; ++k) s += p.h[j + k * p.n] * x[k];
        for (int i = 0; i < p.m; ++i) s += p.a[i + static_cast<long>(j) * p.m] * lam[i];
        EXPECT_NEAR(s, 0, 1e-7) << "column " << j;
    }
}

TEST(Kernels, RandomLinearAndQuadraticProgrammesMeetTheirOptimalityConditions) {
    std::mt19937 gen(7);
    for (int trial = 0; trial < 12; ++trial) {
        SCOPED_TRACE(trial);
        const int n = 3 + trial % 5, m = 2 + trial % 7, neq = trial % 3;
        random_problem_t p = make_problem(gen, m, n, neq);
        vec x(n), lam(p.m);
        ASSERT_EQ(lp_solve(p.view(), x.data(), lam.data()), lp_optimal);
        expect_kkt(p, x, lam, false);
        int unique = 0, seems = 0;
        ASSERT_EQ(qp_solve(p.view(), p.h.data(), x.data(), lam.data(), &unique, &seems), lp_optimal);
        expect_kkt(p, x, lam, true);
    }
}

TEST(Kernels, RandomNonNegativeLeastSquares) {
    std::mt19937 gen(11);
    std::normal_distribution<double> z;
    for (int trial = 0; trial < 10; ++trial) {
        const int m = 8 + trial, n = 3 + trial % 6;
        Mm a(0, 0, 0, m, n, ak_double), b(0, 0, 0, m, 1, ak_double);
        for (int k = 0; k < m * n; ++k) a.addr()[k] = z(gen);
        for (int i = 0; i < m; ++i) b.addr()[i] = z(gen);
        Mm w, p;
        Mm x = nnls(a, b, i_o, w, p);
        int positive = 0;
        for (int j = 0; j < n; ++j) {
            EXPECT_GE(x.addr()[j], 0);
            EXPECT_LE(w.addr()[j], 1e-10) << "no variable left at zero could still lower the residual";
            EXPECT_NEAR(x.addr()[j] * w.addr()[j], 0, 1e-10);
            positive += x.addr()[j] > 0;
        }
        EXPECT_EQ(p.size(), positive);
    }
}

// ---- MPS faults -----------------------------------------------------------------------------------------
std::string write_temp(const char* name, const std::string& text) {
    std::string path = std::string(::testing::TempDir()) + name;
    std::ofstream(path) << text;
    return path;
}

TEST(Mps, FaultsGiveTheLineNumber) {
    const std::string head = "NAME T\nROWS\n N obj\n L r\nCOLUMNS\n x obj 1 r 1\n";
    struct fault_t {
        std::string text;
        int line;
        const char* why;
    } faults[] = {
        {head + "RHS\n rhs r 1.5x\nENDATA\n", 8, "bad number '1.5x'"},
        {head + "SOMETHING\nENDATA\n", 7, "unknown section 'SOMETHING'"},
        {head + "RHS\n rhs r 1\n", 8, "the file ends without ENDATA"},
        {head + "BOUNDS\n XX bnd x 1\nENDATA\n", 8, "unknown bound type 'XX'"},
        {head + "BOUNDS\n UP bnd y 1\nENDATA\n", 8, "unknown column 'y'"},
        {"NAME T\nROWS\n Q r\nENDATA\n", 3, "unknown row type 'Q'"},
        {"NAME T\nROWS\n L r\nCOLUMNS\n x r 1\nENDATA\n", 6, "no objective row (type N)"},
    };
    for (const fault_t& f : faults) {
        mps_problem_t p;
        int line = 0;
        std::string why;
        EXPECT_EQ(mps_read(write_temp("fault.mps", f.text).c_str(), p, &line, why), 9) << f.why;
        EXPECT_EQ(line, f.line) << f.why;
        EXPECT_EQ(why, f.why);
    }
    // A fixed-form right side without its set name, and an objective to maximise.
    const std::string fixed = "NAME T\nOBJSENSE\n    MAX\nROWS\n N  obj\n L  lim\nCOLUMNS\n"
                              "    x         obj          2.0          lim          1.0\n"
                              "RHS\n              lim          4.0\nENDATA\n";
    mps_problem_t p;
    int line = 0;
    std::string why;
    ASSERT_EQ(mps_read(write_temp("fixed.mps", fixed).c_str(), p, &line, why), 1) << why;
    ASSERT_EQ(p.m, 1);
    EXPECT_EQ(p.b[0], 4.0);
    EXPECT_EQ(p.c[0], -2.0);
}

}  // namespace
