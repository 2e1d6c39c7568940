// The format engine given sizes and widths at the edge: an unbounded row count for sscanf, and
// sprintf widths whose output no string can hold.
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <string>

#include "arklib.h"
#include "test_support.h"
#include "tests/core/engine_test_support.h"

using namespace engine_test;

TEST(HostileFormat, SscanfSizeWithAnUnboundedRowCount) {
    // [Inf n]: the rows are as many as n columns need for what was read, the tail zero.
    Mm two = sscanf(TM("1 2 3"), TM("%d"), row({INFINITY, 2}));
    EXPECT_EQ(2, two.rows());
    EXPECT_EQ(2, two.cols());
    EXPECT_EQ((std::vector<double>{1, 2, 3, 0}), re(two));
    Mm three = sscanf(TM("1 2 3 4 5 6 7"), TM("%d"), row({INFINITY, 3}));
    EXPECT_EQ(3, three.rows());
    EXPECT_EQ((std::vector<double>{1, 2, 3, 4, 5, 6, 7, 0, 0}), re(three));
    // [Inf Inf] reads into one column; nothing read is empty.
    Mm column = sscanf(TM("4 5 6"), TM("%d"), row({INFINITY, INFINITY}));
    EXPECT_EQ(3, column.rows());
    EXPECT_EQ(1, column.cols());
    EXPECT_EQ(0, sscanf(TM("x"), TM("%d"), row({INFINITY, 2})).size());
    EXPECT_EQ(0, sscanf(TM("1 2"), TM("%d"), row({INFINITY, 0})).size());
    // A large finite row count keeps its meaning: that many rows, one column here.
    Mm tall = sscanf(TM("1 2 3"), TM("%d"), row({5, INFINITY}));
    EXPECT_EQ(5, tall.rows());
    EXPECT_EQ(1, tall.cols());
}

TEST(HostileFormat, SprintfOutputTooLongIsRefusedAtOnce) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_ERROR(sprintf(TM("%1000000d"), ones(1.0, 1000.0)), "Out of memory!");
    EXPECT_ERROR(sprintf(TM("%500000d%1000000.0f"), ones(1.0, 1000.0)), "Out of memory!");
    {
        ak_test::Recorder rec(ak_test::Recorder::kErrors);
        Mm out = sprintf(TM("%1000000d"), ones(1.0, 1000.0));
        EXPECT_EQ(std::vector<std::string>{"Out of memory!"}, rec.errors);
        EXPECT_EQ(0, out.size());
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    EXPECT_LT(seconds, 3.0);
    // A wide piece that fits is written whole; widths are bounded to a million.
    EXPECT_EQ(1000000, sprintf(TM("%2000000000d"), Mm(1.0)).size());
    EXPECT_EQ(1000, sprintf(TM("%1000000s"), ones(1.0, 1000.0)).size() - 999000);
    Mm wide = sprintf(TM("%300000d"), Mm(5.0));
    ASSERT_EQ(300000, wide.size());
    EXPECT_EQ(' ', static_cast<char>(wide.addr()[0]));
    EXPECT_EQ('5', static_cast<char>(wide.addr()[299999]));
}

TEST(HostileFormat, Num2strOfALongSparseVector) {
    // The position field is as wide as a tenth of a digit per element: for 2^31 - 1 elements no
    // text could hold it, and that is said before anything is written.
    Mm wide = sparse(Mm(1.0), Mm(2147483647.0));
    wide(3.0) = 7.0;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_ERROR(num2str(wide), "Out of memory!");
    EXPECT_ERROR(int2str(wide), "Out of memory!");
    EXPECT_LT(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(), 1.0);
    // 300 elements: a field of 91 digits, written whole.
    Mm some = sparse(Mm(1.0), Mm(300.0));
    some(300.0) = 1.0;
    Mm text = num2str(some);
    EXPECT_EQ(1, text.rows());
    EXPECT_EQ(1 + 91 + 2 + 3, text.cols());  // "(", 91 places, ") ", the value in a field of 3
}
