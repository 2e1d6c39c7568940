// Sparse functions on inputs at the edge: C-heap lists freed when an error is thrown past them, and
// sparse rows sorted along their length.
#include <gtest/gtest.h>

#include <malloc.h>

#include "arklib.h"
#include "test_support.h"
#include "tests/core/engine_test_support.h"

using namespace engine_test;

TEST(HostileSparse, ColpermRefusesTooManyColumnsWithoutLosingMemory) {
    // 2e8 columns (a column list of 800 MB) and 2^31 - 1 with an entry (one that would be written
    // whole): the count row cannot be made, and nothing made before the report is kept.
    const Mm wide = sparse(Mm(1.0), Mm(2e8));
    Mm wider = sparse(Mm(1.0), Mm(2147483647.0));
    wider(7.0) = 1.0;
    const size_t mapped = mallinfo2().hblkhd;
    for (int k = 0; k < 3; ++k) EXPECT_ERROR(colperm(wide), "Out of memory!");
    EXPECT_ERROR(colperm(wider), "Out of memory!");
    // Large blocks are mapped one by one: a list left behind would still be counted.
    EXPECT_LT(mallinfo2().hblkhd, mapped + (100u << 20));
    // Column counts 2, 0, 1 of [1 0 1; 1 0 0].
    EXPECT_VALUES(colperm(sparse(mat(2, 3, {1, 0, 1, 1, 0, 0}))), {2, 3, 1});
}

TEST(HostileSparse, SortOfSparseRowsAndColumns) {
    const Mm s = sparse(row({0, 3, 1}));
    Mm y = sort(s);
    EXPECT_EQ((std::vector<int>{1, 3, 1, 1}), dims(y));
    EXPECT_VALUES(y, {0, 1, 3});
    Mm v, i;
    sort(s, i_o, v, i);
    EXPECT_VALUES(v, {0, 1, 3});
    EXPECT_VALUES(i, {1, 3, 2});
    EXPECT_EQ((std::vector<int>{1, 3, 1, 1}), dims(i));
    // A column, and a row with no stored entry at all.
    EXPECT_VALUES(sort(sparse(mat(3, 1, {2, 0, -1}))), {-1, 0, 2});
    Mm zero = sort(sparse(Mm(1.0), Mm(4.0)));
    EXPECT_EQ((std::vector<int>{1, 4, 1, 1}), dims(zero));
    EXPECT_VALUES(zero, {0, 0, 0, 0});
}
