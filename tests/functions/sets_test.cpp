// Set operations by their defining identities (c = a(i), a = c(j)) and small cases worked by hand.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>

#include "arklib.h"
#include "tests/test_support.h"

using ak_test::row;

namespace {

std::vector<double> values(const Mm& m) { return std::vector<double>(m.addr(), m.addr() + m.size()); }

Mm cellrow(std::initializer_list<const char*> texts) {
    Mm c(0, 0, 0, 1, static_cast<int>(texts.size()), ak_mm);
    int k = 0;
    for (const char* t : texts) static_cast<Mm*>(c.pr)[k++] = TM(t);
    return c;
}

std::string cell_text(const Mm& c, int k) {
    char buf[64];
    return Mstr(static_cast<const Mm*>(c.pr)[k], buf, sizeof buf);
}

TEST(Unique, IndicesGiveBackBothWays) {
    std::mt19937 gen(5);
    std::uniform_int_distribution<int> u(0, 30);
    Mm a(0, 0, 0, 1, 200, ak_double);
    for (int k = 0; k < 200; ++k) a.addr()[k] = u(gen);
    Mm i, j;
    Mm c = unique(a, i_o, i, j);
    ASSERT_EQ(c.dims[0], 1) << "a row stays a row";
    for (int k = 1; k < c.size(); ++k) EXPECT_LT(c.addr()[k - 1], c.addr()[k]);
    for (int k = 0; k < c.size(); ++k) {
        const int at = static_cast<int>(i.addr()[k]) - 1;
        EXPECT_EQ(a.addr()[at], c.addr()[k]);
        for (int m = 0; m < at; ++m) EXPECT_NE(a.addr()[m], c.addr()[k]) << "first occurrence";
    }
    for (int k = 0; k < 200; ++k) EXPECT_EQ(c.addr()[static_cast<int>(j.addr()[k]) - 1], a.addr()[k]);
    EXPECT_EQ(values(unique(a)), values(c)) << "the one-output fast path agrees";
    // 'last', 'stable', NaN, columns.
    Mm last_i, last_j;
    unique(row({5, 3, 5, 3}), TM("last"), i_o, last_i, last_j);
    EXPECT_EQ(values(last_i), (std::vector<double>{4, 3}));
    EXPECT_EQ(values(unique(row({5, 3, 5, 1}), TM("stable"))), (std::vector<double>{5, 3, 1}));
    Mm n = unique(row({NAN, 2, NAN, 1}));
    ASSERT_EQ(n.size(), 4);
    EXPECT_EQ(n.addr()[0], 1.0);
    EXPECT_TRUE(std::isnan(n.addr()[2]) && std::isnan(n.addr()[3]));
    EXPECT_EQ(unique(transpose(row({2, 1, 2}))).dims[1], 1);
    Mm s = unique(TM("hello"));
    EXPECT_TRUE(s.flags.str);
    EXPECT_EQ(values(s), (std::vector<double>{'e', 'h', 'l', 'o'}));
}

TEST(Unique, RowsAndCellsOfStrings) {
    Mm m(0, 0, 0, 3, 2, ak_double);
    const double by_cols[6] = {1, 0, 1, 2, 5, 2};  // rows [1 2], [0 5], [1 2]
    std::copy(by_cols, by_cols + 6, m.addr());
    Mm i, j;
    Mm r = unique(m, TM("rows"), i_o, i, j);
    ASSERT_EQ(r.dims[0], 2);
    EXPECT_EQ(r.addr()[0], 0.0);
    EXPECT_EQ(r.addr()[3], 2.0);
    EXPECT_EQ(values(j), (std::vector<double>{2, 1, 2}));
    Mm cs = unique(cellrow({"pear", "apple", "pear", "fig"}));
    ASSERT_EQ(cs.size(), 3);
    EXPECT_EQ(cell_text(cs, 0), "apple");
    EXPECT_EQ(cell_text(cs, 2), "pear");
    EXPECT_ERROR(unique(row({1}), TM("sideways")), "unique: unknown option 'sideways'");
}

TEST(SetOperations, UnionIntersectDifferenceXorWithIndices) {
    Mm a = row({5, 1, 3, 3, 7}), b = row({4, 3, 9, 1});
    Mm ia, ib;
    EXPECT_EQ(values(unionM(a, b, i_o, ia, ib)), (std::vector<double>{1, 3, 4, 5, 7, 9}));
    EXPECT_EQ(values(ia), (std::vector<double>{2, 3, 1, 5}));
    EXPECT_EQ(values(ib), (std::vector<double>{1, 3}));
    EXPECT_EQ(values(intersect(a, b, i_o, ia, ib)), (std::vector<double>{1, 3}));
    EXPECT_EQ(values(ia), (std::vector<double>{2, 3}));
    EXPECT_EQ(values(ib), (std::vector<double>{4, 2}));
    EXPECT_EQ(values(setdiff(a, b, i_o, ia)), (std::vector<double>{5, 7}));
    EXPECT_EQ(values(ia), (std::vector<double>{1, 5}));
    EXPECT_EQ(values(setxor(a, b)), (std::vector<double>{4, 5, 7, 9}));
    EXPECT_EQ(values(setdiff(a, b, TM("stable"))), (std::vector<double>{5, 7}));
    EXPECT_EQ(values(unionM(a, b, TM("stable"))), (std::vector<double>{5, 1, 3, 7, 4, 9}));
    // Rows in, row out; a column anywhere makes a column.
    EXPECT_EQ(unionM(a, b).dims[0], 1);
    EXPECT_EQ(unionM(a, transpose(b)).dims[1], 1);
    Mm fruit = intersect(cellrow({"fig", "kiwi", "pear"}), cellrow({"pear", "fig", "plum"}));
    ASSERT_EQ(fruit.size(), 2);
    EXPECT_EQ(cell_text(fruit, 0), "fig");
}

TEST(SetOperations, Membership) {
    Mm loc;
    Mm tf = ismember(row({3, 8, 1, NAN}), row({1, 2, 3, 1}), i_o, loc);
    EXPECT_TRUE(tf.flags.logical);
    EXPECT_EQ(values(tf), (std::vector<double>{1, 0, 1, 0}));
    EXPECT_EQ(values(loc), (std::vector<double>{3, 0, 1, 0}));
    EXPECT_EQ(scalar(ismember(TM("fig"), cellrow({"pear", "fig"}), i_o, loc)), 1.0);
    EXPECT_EQ(scalar(loc), 2.0);
    Mm rows(0, 0, 0, 2, 2, ak_double);
    const double by_cols[4] = {1, 3, 2, 4};  // rows [1 2], [3 4]
    std::copy(by_cols, by_cols + 4, rows.addr());
    Mm r = ismember(row({3, 4}), rows, TM("rows"), i_o, loc);
    EXPECT_EQ(scalar(r), 1.0);
    EXPECT_EQ(scalar(loc), 2.0);
}

}  // namespace
