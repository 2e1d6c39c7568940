// The ODE solvers against problems with known solutions.
#include <gtest/gtest.h>

#include <cmath>

#include "arklib.h"
#include "tests/test_support.h"

namespace {

Mm decay(const Mm&, const Mm& y) { return -1.0 * y; }
Mm growth(const Mm&, const Mm& y, const Mm& k) { return k * y; }
Mm oscillator(const Mm&, const Mm& y) {
    Mm r(0, 0, 0, 2, 1, ak_double);
    r.addr()[0] = y.addr()[1];
    r.addr()[1] = -y.addr()[0];
    return r;
}
// Stiff, with the smooth solution cos(t) from y(0) = 1.
Mm stiff(const Mm& t, const Mm& y) {
    const double tt = t.addr()[0];
    return Mm(-1000.0 * (y.addr()[0] - std::cos(tt)) - std::sin(tt));
}
Mm too_long(const Mm&, const Mm&) { return zeros(3.0, 1.0); }
// Called with "init" it gives its own tspan, y0 and options.
Mm self_init(const Mm&, const Mm& y) { return -2.0 * y; }
Mm self_init(const Mm&, const Mm&, const Mm&, i_o_t, Mm& y0, Mm& options) {
    y0 = Mm(3.0);
    options = odeset(Mm(), TM("RelTol"), Mm(1e-6), TM("AbsTol"), Mm(1e-9));
    return ak_test::row({0, 0.5, 1});
}

struct OdeTest : ::testing::Test {
    ak_feval_func_t saved = feval_func;
    void SetUp() override {
        ak_use_builtin_feval();
        ak_register_function("decay", decay);
        ak_register_function("growth", growth);
        ak_register_function("oscillator", oscillator);
        ak_register_function("stiff", stiff);
        ak_register_function("too_long", too_long);
        ak_register_function("self_init", AK_FN(self_init, const Mm&, const Mm&),
                             AK_FN(self_init, const Mm&, const Mm&, const Mm&, i_o_t, Mm&, Mm&));
    }
    void TearDown() override {
        feval_func = saved;
        for (const char* f : {"decay", "growth", "oscillator", "stiff", "too_long", "self_init"})
            ak_unregister_function(f);
    }
};

typedef Mm (*solver_t)(const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, i_o_t, Mm&, Mm&);
const solver_t solvers[4] = {ode23, ode45, ode78, ode15s};
const char* const solver_names[4] = {"ode23", "ode45", "ode78", "ode15s"};

// Largest error of y(:, col) against exact(t).
template <class F>
double max_error(const Mm& t, const Mm& y, int col, F exact) {
    double worst = 0;
    for (int k = 0; k < t.size(); ++k) {
        const double e = std::fabs(y.addr()[k + col * t.size()] - exact(t.addr()[k]));
        if (e > worst) worst = e;
    }
    return worst;
}

TEST_F(OdeTest, DecayMatchesTheExponentialWithEveryMethod) {
    for (int m = 0; m < 4; ++m) {
        SCOPED_TRACE(solver_names[m]);
        Mm t, y;
        solvers[m](TM("decay"), ak_test::row({0, 2}), Mm(1.0), odeset(), Mm(), i_o, t, y);
        ASSERT_GT(t.size(), 2);
        EXPECT_EQ(t.cols(), 1);
        EXPECT_EQ(y.rows(), t.rows());
        EXPECT_EQ(t.addr()[0], 0.0);
        EXPECT_EQ(t.addr()[t.size() - 1], 2.0);
        for (int k = 1; k < t.size(); ++k) EXPECT_GT(t.addr()[k], t.addr()[k - 1]);
        // Default tolerances: RelTol 1e-3 and AbsTol 1e-6 on a solution of size 1 to 0.13.
        EXPECT_LT(max_error(t, y, 0, [](double s) { return std::exp(-s); }), 2e-3);
        if (m < 3) {
            EXPECT_EQ((t.size() - 1) % 4, 0) << "Refine 4 gives four points for each step";
        }
    }
}

TEST_F(OdeTest, ErrorShrinksWithTheTolerance) {
    for (int m = 0; m < 4; ++m) {
        SCOPED_TRACE(solver_names[m]);
        double last = 1;
        for (double tol : {1e-3, 1e-6, 1e-9}) {
            Mm t, y;
            solvers[m](TM("growth"), ak_test::row({0, 1}), Mm(1.0),
                       odeset(Mm(), TM("RelTol"), Mm(tol), TM("AbsTol"), Mm(tol * 1e-3)), Mm(0.7), i_o, t, y);
            const double e = max_error(t, y, 0, [](double s) { return std::exp(0.7 * s); });
            EXPECT_LT(e, 50 * tol);
            EXPECT_LT(e, last);
            last = e;
        }
    }
}

TEST_F(OdeTest, OscillatorKeepsItsEnergyOverTwentyPeriods) {
    const double end = 40 * M_PI;
    for (int m = 1; m < 4; ++m) {
        SCOPED_TRACE(solver_names[m]);
        Mm t, y;
        Mm opts = odeset(Mm(), TM("RelTol"), Mm(1e-8), TM("AbsTol"), Mm(1e-10), TM("Refine"), Mm(1.0));
        solvers[m](TM("oscillator"), ak_test::row({0, end}), ak_test::row({1, 0}), opts, Mm(), i_o, t, y);
        const int n = t.size();
        double drift = 0;
        for (int k = 0; k < n; ++k) {
            const double a = y.addr()[k], b = y.addr()[k + n];
            drift = std::fmax(drift, std::fabs(a * a + b * b - 1));
        }
        EXPECT_LT(drift, m == 3 ? 1e-4 : 1e-5);
        EXPECT_NEAR(y.addr()[n - 1], 1.0, 1e-4);
        EXPECT_NEAR(y.addr()[2 * n - 1], 0.0, 1e-4);
    }
}

TEST_F(OdeTest, ManyPointTspanRecordsExactlyThosePoints) {
    Mm span = ak_test::row({0, 0.1, 0.25, 0.3, 1, 2.5});
    for (int m = 0; m < 4; ++m) {
        SCOPED_TRACE(solver_names[m]);
        Mm t, y;
        solvers[m](TM("decay"), span, Mm(2.0), odeset(Mm(), TM("RelTol"), Mm(1e-6)), Mm(), i_o, t, y);
        ASSERT_EQ(t.size(), 6);
        for (int k = 0; k < 6; ++k) {
            EXPECT_EQ(t.addr()[k], span.addr()[k]);
            EXPECT_NEAR(y.addr()[k], 2 * std::exp(-span.addr()[k]), 3e-5);
        }
    }
    Mm three = ode45(TM("decay"), ak_test::row({0, 1, 2}), Mm(1.0));
    EXPECT_EQ(three.size(), 3);
}

TEST_F(OdeTest, BackwardsAndWithParameters) {
    for (int m = 0; m < 4; ++m) {
        SCOPED_TRACE(solver_names[m]);
        Mm t, y;
        // y' = -0.5 y backwards from y(2) = 1: y(0) = e.
        Mm k(-0.5);
        const Mm* list[1] = {&k};
        Mm params = cell_from_array(1, list);
        solvers[m](TM("growth"), ak_test::row({2, 0}), Mm(1.0), odeset(Mm(), TM("RelTol"), Mm(1e-6)), params, i_o,
                   t, y);
        ASSERT_GT(t.size(), 2);
        for (int k = 1; k < t.size(); ++k) EXPECT_LT(t.addr()[k], t.addr()[k - 1]);
        EXPECT_EQ(t.addr()[t.size() - 1], 0.0);
        EXPECT_NEAR(y.addr()[y.size() - 1], std::exp(1.0), 1e-4);
    }
}

TEST_F(OdeTest, StiffProblemTakesFarFewerStepsWithTheBackwardDifferenceCode) {
    ak_test::Recorder rec;  // ode45 reports the stiffness as it goes
    Mm opts = odeset(Mm(), TM("Refine"), Mm(1.0), TM("RelTol"), Mm(1e-4), TM("AbsTol"), Mm(1e-7));
    Mm t45, y45, t15, y15;
    ode45(TM("stiff"), ak_test::row({0, 10}), Mm(1.0), opts, Mm(), i_o, t45, y45);
    ode15s(TM("stiff"), ak_test::row({0, 10}), Mm(1.0), opts, Mm(), i_o, t15, y15);
    auto exact = [](double s) { return std::cos(s); };
    EXPECT_LT(max_error(t45, y45, 0, exact), 1e-3);
    EXPECT_LT(max_error(t15, y15, 0, exact), 1e-3);
    EXPECT_GT(t45.size(), 1000);
    EXPECT_LT(t15.size() * 10, t45.size()) << t15.size() << " against " << t45.size();
    EXPECT_NE(rec.printed.find("stiff"), std::string::npos);
}

TEST_F(OdeTest, InitCallSuppliesTheProblem) {
    Mm t, y;
    ode23(TM("self_init"), i_o, t, y);
    ASSERT_EQ(t.size(), 3);
    EXPECT_NEAR(y.addr()[2], 3 * std::exp(-2.0), 1e-5);
}

TEST_F(OdeTest, Messages) {
    Mm span = ak_test::row({0, 1});
    EXPECT_ERROR(ode45(TM("decay"), span, Mm()), "ode: y0 must have at least one value");
    EXPECT_ERROR(ode45(TM("decay"), Mm(1.0), Mm(1.0)), "ode: tspan must have at least two elements");
    EXPECT_ERROR(ode45(TM("decay"), span, Mm(1.0), ak_test::row({1, 2})), "ode: options vector is not correct size");
    EXPECT_ERROR(ode45(TM("too_long"), span, ak_test::row({1, 2})),
                 "ode: the derivative function result must have 2 elements.");
    EXPECT_ERROR(ode15s(TM("too_long"), span, ak_test::row({1, 2})),
                 "ode: the derivative function result must have 2 elements.");
    const char* refine = "ode: refine value must be positive integer no more then 32";
    EXPECT_ERROR(ode45(TM("decay"), span, Mm(1.0), odeset(Mm(), TM("Refine"), Mm(33.0))), refine);
    EXPECT_ERROR(ode45(TM("decay"), span, Mm(1.0), odeset(Mm(), TM("Refine"), Mm(0.4))), refine);
    Mm t, y;
    EXPECT_NO_ERROR(ode45(TM("decay"), span, Mm(1.0), odeset(Mm(), TM("Refine"), Mm(32.0)), Mm(), i_o, t, y));
    EXPECT_EQ((t.size() - 1) % 32, 0);
    {
        // A relative tolerance above 0.01 is refused by the stepper: a message, and no points.
        ak_test::Recorder rec;
        EXPECT_NO_ERROR(ode45(TM("decay"), span, Mm(1.0), odeset(Mm(), TM("RelTol"), Mm(0.5)), Mm(), i_o, t, y));
        EXPECT_EQ(t.size(), 0);
        EXPECT_NE(rec.printed.find("SETUP"), std::string::npos);
    }
    // With Refine 1 every point is a step's end, so none lies between two steps' points.
    ode23(TM("decay"), span, Mm(1.0), odeset(Mm(), TM("Refine"), Mm(1.0), TM("InitialStep"), Mm(0.01)), Mm(), i_o,
          t, y);
    EXPECT_NEAR(t.addr()[1], 0.01, 1e-15);
}

TEST_F(OdeTest, OptionVector) {
    Mm o = odeset(Mm(), TM("reltol"), Mm(1e-4), TM("Nonsense"), Mm(5.0), TM("AbsTol"), Mm());
    ASSERT_EQ(o.size(), 4);
    EXPECT_EQ(o.addr()[0], 1e-4);
    EXPECT_EQ(o.addr()[1], 0.0);
    Mm same = odeset(o, TM("nothing"), Mm(1.0));
    for (int k = 0; k < 4; ++k) EXPECT_EQ(same.addr()[k], o.addr()[k]);
    EXPECT_EQ(odeset(o, TM("REFINE"), ak_test::row({7, 8})).addr()[2], 7.0);
    EXPECT_EQ(scalar(odeget(o, TM("RelTol"))), 1e-4);
    EXPECT_EQ(scalar(odeget(o, TM("AbsTol"), Mm(3.0))), 3.0);  // a stored 0 gives the default
    EXPECT_EQ(odeget(o, TM("AbsTol")).size(), 0);
    EXPECT_EQ(scalar(odeget(o, TM("unknown"), Mm(9.0))), 9.0);
    EXPECT_ERROR(odeget(ak_test::row({1, 2}), TM("RelTol")), "odeget: options is not correct size");
    EXPECT_ERROR(odeget(o), "odeget does not accept 1 input");
    // Through the table, as a program calls it by name.
    Mm in[3] = {TM("decay"), ak_test::row({0, 1}), Mm(1.0)};
    Mm out[2];
    ASSERT_EQ(ak_call_function("ode45", 3, in, 2, out), 1);
    EXPECT_NEAR(out[1].addr()[out[1].size() - 1], std::exp(-1.0), 1e-3);
}

}  // namespace
