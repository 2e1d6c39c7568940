// Matrix and cell literals, and concatenation.
#include "arklib.h"
#include "tests/core/subscript_test_support.h"

using sub_test::mat;

namespace {

void expect_values(const Mm& m, int rows, int cols, std::initializer_list<double> column_major) {
    ASSERT_EQ(m.rows(), rows);
    ASSERT_EQ(m.cols(), cols);
    int k = 0;
    for (double v : column_major) EXPECT_EQ(m.addr()[k++], v) << "element " << k;
}

Mm logical(double v) {
    Mm m(v);
    m.flags.logical = 1;
    return m;
}

// A list that owns its entries, returned by value from a function.
Mc owned_list() { return (BR(1.0), 2.0, "ab", semi, 3.0); }

}  // namespace

TEST(MatrixLiteral, FastPathShapesAndPadding) {
    expect_values(Mm((BR(1.0), 2.0, semi, 3.0)), 2, 2, {1, 3, 2, 0});  // short row padded
    Mm a = mat(2, 2, {1, 2, 3, 4});
    expect_values(Mm((BR(a), a, semi, a, a)), 4, 4, {1, 2, 1, 2, 3, 4, 3, 4, 1, 2, 1, 2, 3, 4, 3, 4});
    // A band whose heights differ takes the last height; nothing is written outside the result.
    Mm tall = mat(3, 1, {7, 8, 9});
    Mm r((BR(tall), Mm(1.0)));
    EXPECT_EQ(r.rows(), 1);
    EXPECT_EQ(r.addr()[0], 7);
}

TEST(MatrixLiteral, StringsLogicalAndComplex) {
    EXPECT_TRUE(Mm((BR("abc"), 100.0)).isstr());
    Mm padded((BR("abc"), semi, "de"));
    EXPECT_TRUE(padded.isstr());
    expect_values(padded, 2, 3, {'a', 'd', 'b', 'e', 'c', 0});
    EXPECT_TRUE(Mm((BR(logical(1)), logical(0))).islogical());
    EXPECT_FALSE(Mm((BR(logical(1)), 0.0)).islogical());
    Mm z((BR(i), 2.0));
    ASSERT_TRUE(z.isc());
    EXPECT_EQ(z.addi()[1], 0.0);
}

TEST(MatrixLiteral, GeneralPathForBytesSparseAndCells) {
    Mm u = muint8(mat(1, 2, {200, 7}));
    Mm mixed((BR(u), 300.0));
    EXPECT_EQ(mixed.gettype(), ak_uchar);
    EXPECT_EQ(mixed.ur(3), 44);  // the double is cut to a byte
    Mm sp = sparse(mat(2, 2, {0, 1, 0, 2}));
    Mm stacked((BR(sp), semi, sp));
    EXPECT_TRUE(stacked.issparse());
    EXPECT_EQ(stacked.nnz, 4);
    EXPECT_EQ(full(stacked).addr()[3], 1.0);
    ak_test::ErrorsThrow guard;
    EXPECT_ERROR(Mm((BR(sp), semi, mat(1, 3, {1, 2, 3}))), "vertcat: # of cols different");
    EXPECT_ERROR(Mm((BR(mat(2, 1, {1, 2})), muint8(Mm(1.0)))), "horzcat: # of rows different");
}

TEST(MatrixLiteral, ListStorageAndOwnership) {
    Mc list = BR(0.0);
    for (int k = 1; k < 17; ++k) list, static_cast<double>(k);
    EXPECT_EQ(list.count(), 17);
    EXPECT_NE(list.items, list.inline_items);
    Mm row(list);
    EXPECT_EQ(row.addr()[16], 16.0);
    // Owned entries made inside a function survive its return and are freed once (ASan checks).
    Mm m(owned_list());
    expect_values(m, 2, 4, {1, 3, 2, 0, 'a', 0, 'b', 0});
    EXPECT_TRUE(m.isstr());
}

TEST(CellLiteral, ShapesSharingAndSplicing) {
    Mm a = mat(1, 2, {1, 2});
    Mm c((CL(a), 5.0, semi, "x"));
    ASSERT_EQ(c.gettype(), ak_mm);
    EXPECT_EQ(c.cols(), 2);
    EXPECT_EQ(c.mr(1, 1).pr, a.pr);  // entries share storage
    EXPECT_TRUE(c.mr(2, 1).isstr());
    EXPECT_EQ(c.mr(2, 2).size(), 0);
    Mm varargin((CL(1.0), 2.0, 3.0), "varargin");
    Mm spliced((CL(0.0), varargin, 4.0));
    ASSERT_EQ(spliced.cols(), 5);
    EXPECT_EQ(spliced.mr(5).r(), 4.0);
    Mm args(Mm(1.0), "args");
    ak_test::ErrorsThrow guard;
    EXPECT_ERROR(Mm((CL(args))), "varargin must be cell array");
}

TEST(Concatenation, CatAlongDimensionsAndStructureFields) {
    Mm a = mat(2, 2, {1, 2, 3, 4});
    Mm b = mat(2, 2, {5, 6, 7, 8});
    Mm p = cat(Mm(3.0), a, b);
    ASSERT_EQ(p.ndims, 3);
    EXPECT_EQ(p.dims[2], 2);
    EXPECT_EQ(p.addr()[4], 5.0);
    expect_values(vertcat(a, b), 4, 2, {1, 2, 5, 6, 3, 4, 7, 8});
    expect_values(horzcat(a, b), 2, 4, {1, 2, 3, 4, 5, 6, 7, 8});
    expect_values(cat(Mm(1.0), a, nop_M), 2, 2, {1, 2, 3, 4});
    EXPECT_EQ(cat(Mm(1.0), muint8(a), b).gettype(), ak_uchar);
    EXPECT_TRUE(horzcat(TM("ab"), Mm(99.0)).isstr());
    ak_test::ErrorsThrow guard;
    EXPECT_ERROR(cat(Mm(5.0), a, b), "cat: no such dimension");
    EXPECT_ERROR(cat(Mm(3.0), p, a), "cat: arguments do not have the same number of dimensions");
    EXPECT_ERROR(cat(Mm(3.0), a, mat(2, 1, {1, 2})), "cat: arguments do not have compatible dimensions");
    Mm cell(0, 0, 0, 1, 1, ak_mm);
    EXPECT_ERROR(horzcat(cell, a), "Operation can not be performed on mixed cell and numeric matrix");

    Mm s(0, 0, 0, 1, 1, ak_mm);
    s.addfield("a", 0);
    s.mr(1) = Mm(0, 0, 0, 1, 1, ak_mm);
    Mm two = horzcat(s, s);
    EXPECT_EQ(two.cols(), 2);
    ASSERT_EQ(two.nfields, 1);
    EXPECT_STREQ(two.fields[0], "a");
}
