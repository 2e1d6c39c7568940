// Cell arrays: construction by size, from a list, and cells of strings.
#include "arklib.h"
#include "cells_test_support.h"
#include "test_support.h"

using namespace cells_test;

TEST(CellConstruction, SizesAndEmptyArguments) {
    Mm a = cell(Mm(2.0));
    EXPECT_EQ(a.gettype(), ak_mm);
    EXPECT_EQ(a.rows(), 2);
    EXPECT_EQ(a.cols(), 2);
    EXPECT_FALSE(a.isstruct());
    for (int k = 1; k <= 4; ++k) {
        EXPECT_EQ(at(a, k).gettype(), ak_double);
        EXPECT_EQ(at(a, k).size(), 0);
    }
    Mm b = cell(Mm(2.0), Mm(3.0), Mm(2.0));
    EXPECT_EQ(b.ndims, 3);
    EXPECT_EQ(b.size(), 12);
    Mm v = cell(row({2, 3}));
    EXPECT_EQ(v.rows(), 2);
    EXPECT_EQ(v.cols(), 3);
    // Any empty size gives the empty result, not a cell.
    Mm e = cell(Mm(2.0), Mm());
    EXPECT_EQ(e.gettype(), ak_double);
    EXPECT_EQ(e.size(), 0);
    EXPECT_EQ(e.name, nullptr);
    Mm z = cell(Mm(0.0));
    EXPECT_EQ(z.gettype(), ak_mm);
    EXPECT_EQ(z.size(), 0);
    EXPECT_EQ(cells(Mm(3.0)).size(), 9);
    EXPECT_EQ(cells(Mm(1.0), Mm(4.0)).cols(), 4);
}

TEST(CellConstruction, FromAnArrayOfValuesSharesThem) {
    Mm x = row({1, 2, 3});
    Mm s = TM("abc");
    const Mm* list[] = {&x, nullptr, &s};
    Mm c = cell_from_array(3, list);
    EXPECT_EQ(c.rows(), 3);
    EXPECT_EQ(c.cols(), 1);
    EXPECT_EQ(at(c, 1).pr, x.pr);
    EXPECT_EQ(x.dirty(), 1);
    EXPECT_EQ(at(c, 2).size(), 0);
    EXPECT_EQ(str(at(c, 3)), "abc");
    EXPECT_EQ(cell_from_array(0, nullptr).size(), 0);
}

TEST(CellStrings, CellstrAndIscellstr) {
    // A 2x3 character matrix "ab " / "c  " becomes a column of trimmed strings.
    Mm m(0, 0, 0, 2, 3, ak_double);
    const char* text = "acb   ";  // column-major
    for (int k = 0; k < 6; ++k) m.addr()[k] = text[k];
    m.setstr(1);
    Mm c = cellstr(m);
    ASSERT_EQ(c.gettype(), ak_mm);
    EXPECT_EQ(c.rows(), 2);
    EXPECT_EQ(c.cols(), 1);
    EXPECT_EQ(str(at(c, 1)), "ab");
    EXPECT_EQ(str(at(c, 2)), "c");
    EXPECT_TRUE(at(c, 1).isstr());
    EXPECT_EQ(num(iscellstr(c)), 1.0);
    EXPECT_TRUE(iscellstr(c).islogical());

    // A cell comes back as it is, unchecked.
    Mm mixed = cell_row({TM("a"), Mm(1.0)});
    EXPECT_EQ(cellstr(mixed).pr, mixed.pr);
    EXPECT_EQ(num(iscellstr(mixed)), 0.0);
    EXPECT_EQ(num(iscellstr(cell(Mm(0.0)))), 1.0);
    EXPECT_EQ(num(iscellstr(TM("a"))), 0.0);
    EXPECT_EQ(num(iscellstr(mstruct(cell_row({TM("a"), TM("b")})))), 0.0);

    EXPECT_ERROR(cellstr(mstruct(cell_row({TM("a"), Mm(1.0)}))),
                 "cellstr: numeric data expected, but matrix (temporary) is not");
}
