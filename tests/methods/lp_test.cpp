// Linear and quadratic programmes with known optima, their status words, and the MPS reader.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "arklib.h"
#include "tests/test_support.h"

namespace {

using ak_test::row;

Mm matrix(int rows, int cols, std::initializer_list<double> by_rows) {
    Mm m(0, 0, 0, rows, cols, ak_double);
    int k = 0;
    for (double v : by_rows) {
        m.addr()[(k / cols) + (k % cols) * rows] = v;
        ++k;
    }
    return m;
}
Mm col(std::initializer_list<double> v) { return matrix(static_cast<int>(v.size()), 1, v); }
std::string word(const Mm& m) {
    char text[64];
    return Mstr(m, text, sizeof text);
}
std::string data(const char* file) { return std::string(ARKLIB_TEST_DATA) + "/" + file; }

TEST(Lp, TextbookProblemWithMultipliers) {
    ak_test::Recorder rec;
    Mm lambda, how;
    // max 3x + 5y: x <= 4, 2y <= 12, 3x + 2y <= 18, x, y >= 0; optimum (2, 6) with duals 0, 1.5, 1.
    Mm x = lp(col({-3, -5}), matrix(3, 2, {1, 0, 0, 2, 3, 2}), col({4, 12, 18}), col({0, 0}), i_o, lambda, how);
    ASSERT_EQ(x.size(), 2);
    EXPECT_NEAR(x.addr()[0], 2, 1e-12);
    EXPECT_NEAR(x.addr()[1], 6, 1e-12);
    ASSERT_EQ(lambda.size(), 5);
    EXPECT_NEAR(lambda.addr()[0], 0, 1e-12);
    EXPECT_NEAR(lambda.addr()[1], 1.5, 1e-12);
    EXPECT_NEAR(lambda.addr()[2], 1, 1e-12);
    EXPECT_EQ(word(how), "ok");
    EXPECT_EQ(rec.printed, "Optimal solution\n");

    // An equality row and a free variable that goes negative.
    x = lp(col({1, 2, 3}), matrix(1, 3, {1, 1, 1}), col({1}), col({0, 0, 0}), Mm(), Mm(), Mm(1.0));
    EXPECT_NEAR(x.addr()[0], 1, 1e-12);
    EXPECT_NEAR(x.addr()[1], 0, 1e-12);
    x = lp(col({1}), matrix(1, 1, {-1}), col({5}));
    EXPECT_NEAR(x.addr()[0], -5, 1e-12);
    // Bounds alone decide: an upper bound below zero and a lower bound below zero.
    x = lp(col({-1, 1}), Mm(0, 0, 0, 0, 2, ak_double), Mm(), col({-7, -3}), col({-2, 4}));
    EXPECT_NEAR(x.addr()[0], -2, 1e-12);
    EXPECT_NEAR(x.addr()[1], -3, 1e-12);
}

TEST(Lp, InfeasibleAndUnboundedWords) {
    ak_test::Recorder rec;
    Mm lambda, how;
    lp(col({1}), matrix(2, 1, {1, -1}), col({0, -1}), Mm(), Mm(), Mm(), Mm(), Mm(0.0), i_o, lambda, how);
    EXPECT_EQ(word(how), "infeasible");
    EXPECT_EQ(rec.printed, "Infeasible problem\n");
    rec.clear();
    lp(col({-1}), matrix(1, 1, {-1}), col({0}), Mm(), Mm(), Mm(), Mm(), Mm(-1.0), i_o, lambda, how);
    EXPECT_EQ(word(how), "unbounded");
    EXPECT_EQ(rec.printed, "") << "a display below 0 prints nothing";
    EXPECT_ERROR(lp(col({1, 2}), matrix(1, 2, {1, 1}), col({1, 2})), "lp: A and b must have same number of rows");
    EXPECT_ERROR(lp(col({1, 2, 3}), matrix(1, 2, {1, 1}), col({1})),
                 "lp: number of rows in C must be same as number of columns in A");
    EXPECT_ERROR(lp(col({1}), col({1})), "lp does not accept 2 inputs");
}

// A problem the solver cannot start on ends with its status line and no word: more equality rows than
// A has, or a starting point of the wrong length. A starting point of the right length changes
// nothing in the optimum.
TEST(Lp, InconsistentInputsEndWithTheirCodes) {
    ak_test::Recorder rec;
    Mm lambda, how;
    const Mm c = col({-3, -5}), A = matrix(3, 2, {1, 0, 0, 2, 3, 2}), b = col({4, 12, 18}), lb = col({0, 0});
    Mm x = lp(c, A, b, lb, Mm(), col({1, 1}), Mm(0.0), i_o, lambda, how);
    EXPECT_NEAR(x.addr()[1], 6, 1e-12);
    EXPECT_EQ(word(how), "ok");
    rec.clear();
    x = lp(c, A, b, lb, Mm(), Mm(), Mm(4.0), i_o, lambda, how);
    EXPECT_EQ(rec.printed, "Inconsistent A\n");
    EXPECT_EQ(word(how), "");
    EXPECT_EQ(x.size(), 2);
    rec.clear();
    x = lp(c, A, b, lb, Mm(), col({1, 1, 1}), Mm(0.0), i_o, lambda, how);
    EXPECT_EQ(rec.printed, "Inconsistent initial\n");
    EXPECT_EQ(word(how), "");
    EXPECT_EQ(lambda.size(), 5);
}

TEST(Lp, MpsFiles) {
    ak_test::Recorder rec;
    Mm lambda, how;
    Mm x = lp(TM(data("mps_fixed.mps").c_str()), i_o, lambda, how);
    ASSERT_EQ(x.size(), 3);
    EXPECT_NEAR(x.addr()[0], 1, 1e-12);
    EXPECT_NEAR(x.addr()[1], -1, 1e-12);
    EXPECT_NEAR(x.addr()[2], 6, 1e-12);
    EXPECT_EQ(word(how), "ok");

    x = lp(TM(data("mps_ranges.mps").c_str()), i_o, lambda, how);
    ASSERT_EQ(x.size(), 13);
    const double expect[13] = {6, 5, 6, 2, 8, -3, 1, 2.5, 7, -4, -2, 9, 0};
    const double cost[13] = {1, -1, -1, 1, -1, 1, -1, 1, -1, 1, -1, -1, 1};
    double objective = 0;
    for (int j = 0; j < 13; ++j) {
        EXPECT_NEAR(x.addr()[j], expect[j], 1e-9) << "x" << j + 1;
        objective += cost[j] * x.addr()[j];
    }
    EXPECT_NEAR(objective, -30.5, 1e-9);

    lp(TM(data("mps_infeasible.mps").c_str()), i_o, lambda, how);
    EXPECT_EQ(word(how), "infeasible");
    rec.clear();
    x = lp(TM(data("mps_malformed.mps").c_str()), i_o, lambda, how);
    EXPECT_EQ(word(how), "");
    EXPECT_EQ(rec.printed, data("mps_malformed.mps") + ", line 7: unknown row 'c9'\nMPS error\n");
    rec.clear();
    lp(TM(data("no_such_file.mps").c_str()), i_o, lambda, how);
    EXPECT_EQ(rec.printed, "File not found\n");
    EXPECT_EQ(word(how), "");
}

TEST(Qp, KnownOptimaAndStatusWords) {
    ak_test::Recorder rec;
    Mm lambda, how;
    // (x1 - 1)^2 + (x2 - 2.5)^2 in a pentagon: optimum (1.4, 1.7) on the row -x1 + 2 x2 <= 2.
    Mm H = matrix(2, 2, {2, 0, 0, 2});
    Mm A = matrix(3, 2, {-1, 2, 1, 2, 1, -2});
    Mm x = qp(H, col({-2, -5}), A, col({2, 6, 2}), col({0, 0}), Mm(), Mm(), Mm(), Mm(), i_o, lambda, how);
    EXPECT_NEAR(x.addr()[0], 1.4, 1e-10);
    EXPECT_NEAR(x.addr()[1], 1.7, 1e-10);
    EXPECT_NEAR(lambda.addr()[0], 0.8, 1e-10);  // on the row -x1 + 2 x2 <= 2
    EXPECT_EQ(word(how), "ok");
    // An equality: x1 + x2 = 1 with x1^2 + x2^2 gives (0.5, 0.5) and the multiplier -1.
    x = qp(H, col({0, 0}), matrix(1, 2, {1, 1}), col({1}), Mm(), Mm(), Mm(), Mm(1.0), Mm(), i_o, lambda, how);
    EXPECT_NEAR(x.addr()[0], 0.5, 1e-12);
    EXPECT_NEAR(lambda.addr()[0], -1, 1e-12);

    rec.clear();
    qp(H, col({0, 0}), matrix(2, 2, {1, 1, -1, -1}), col({1, -3}), Mm(), Mm(), Mm(), Mm(), Mm(), i_o, lambda, how);
    EXPECT_EQ(word(how), "infeasible");
    EXPECT_EQ(rec.printed, "The system has no feasible solution.\n");
    rec.clear();
    qp(H, col({0, 0}), matrix(2, 2, {1, 1, 1, -1}), col({1, 0}), Mm(), Mm(), Mm(), Mm(2.0), Mm(), i_o, lambda, how);
    EXPECT_EQ(word(how), "infeasible");
    EXPECT_EQ(rec.printed, "The problem has a unique feasible point\n");
    rec.clear();
    qp(matrix(2, 2, {1, 0, 0, 0}), col({0, -1}), matrix(1, 2, {1, 0}), col({5}), Mm(), Mm(), Mm(), Mm(), Mm(), i_o,
       lambda, how);
    EXPECT_EQ(word(how), "unbounded");
    EXPECT_EQ(rec.printed, "The problem seems unbounded.\nThe problem is unbounded.\n");
    EXPECT_ERROR(qp(matrix(2, 2, {1, 1, 0, 1}), col({0, 0}), matrix(1, 2, {1, 1}), col({1})), "Q not symmetric");
}

}  // namespace

namespace {

TEST(Conls, ConstrainedLeastSquares) {
    ak_test::Recorder rec;
    // The nearest point to (3, 1) in the half plane x1 + x2 <= 2: (2, 0).
    Mm lambda, how;
    Mm x = conls(matrix(2, 2, {1, 0, 0, 1}), col({3, 1}), matrix(1, 2, {1, 1}), col({2}), i_o, lambda, how);
    EXPECT_NEAR(x.addr()[0], 2, 1e-10);
    EXPECT_NEAR(x.addr()[1], 0, 1e-10);
    EXPECT_EQ(word(how), "ok");
    EXPECT_ERROR(conls(matrix(2, 2, {1, 0, 0, 1}), col({3}), matrix(1, 2, {1, 1}), col({2})),
                 "conls: A and b must have same number of rows");
}

}  // namespace
