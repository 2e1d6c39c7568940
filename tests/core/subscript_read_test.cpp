// Reads through subscript references: positions, shapes, logical indices, the sharing reads, 3-D,
// bytes, complex data, and every message of a plain ( ) read.
#include <gtest/gtest.h>

#include "core/memory_internal.h"
#include "tests/core/subscript_test_support.h"

using namespace sub_test;
using V = std::vector<double>;
using D = std::vector<int>;

TEST(SubscriptRead, FractionalIndicesTruncateAfterSubtractingOne) {
    Mm x = named(row({10, 20, 30}), "x");
    EXPECT_EQ(V{20}, values(Mm(x(2.7))));
    EXPECT_EQ(V{10}, values(Mm(x(0.5))));
    EXPECT_EQ(V({30, 10}), values(Mm(x(row({3.2, 1.9})))));
    EXPECT_ERROR(Mm(x(0.0)),
                 "x(=0) : Index out of matrix. Index value was 0 however the indexed matrix has 3 elements.");
    Mm idx = named(row({1, 7}), "k");
    EXPECT_ERROR(Mm(x(idx)),
                 "x(k) : Index out of matrix. Index value was 7 however the indexed matrix has 3 elements.");
}

TEST(SubscriptRead, FlagsAndAZeroImaginaryPart) {
    Mm c = TM("abc")(2.0);
    EXPECT_TRUE(c.isstr());
    EXPECT_EQ(V{98}, values(c));
    // Only real elements selected give a real result.
    Mm z(1, 0, 0, 1, 3, ak_double);
    for (int k = 0; k < 3; ++k) {
        z.addr()[k] = k + 1;
        z.addi()[k] = k == 1 ? 5 : 0;
    }
    EXPECT_EQ(nullptr, Mm(z(1.0)).pi);
    EXPECT_EQ(V{5}, imag_values(Mm(z(2.0))));
    EXPECT_EQ(nullptr, Mm(z(row({1, 3}))).pi);
    EXPECT_EQ(nullptr, Mm(z(c_p, row({3, 1}))).pi);
    // The scalar-variable mark is cleared by subscripting.
    Mm v(i_o, "v", 0);
    v = Mm(3.0);
    EXPECT_EQ(1, v.flags.scalar_var);
    EXPECT_EQ(V{3}, values(Mm(v(1.0))));
    EXPECT_EQ(0, v.flags.scalar_var);
}

TEST(SubscriptRead, ShapeOfOneIndexReads) {
    Mm r = row({1, 2, 3, 4});
    Mm c = col({1, 2, 3, 4});
    Mm m = counting(2, {3, 4});
    // A vector keeps its orientation whatever the index's; a matrix takes the index's shape.
    EXPECT_EQ(D({2, 1, 2, 1, 1}), dims(Mm(r(col({1, 2})))));
    EXPECT_EQ(D({2, 2, 1, 1, 1}), dims(Mm(c(row({1, 2})))));
    EXPECT_EQ(D({2, 2, 1, 1, 1}), dims(Mm(m(col({1, 2})))));
    EXPECT_EQ(D({2, 1, 2, 1, 1}), dims(Mm(m(row({1, 2})))));
    EXPECT_EQ(D({2, 2, 2, 1, 1}), dims(Mm(m(mat(2, 2, {1, 2, 3, 12})))));
    // A vector indexed by a matrix takes the matrix's shape; so does a scalar.
    EXPECT_EQ(D({2, 2, 2, 1, 1}), dims(Mm(r(mat(2, 2, {1, 1, 1, 1})))));
    EXPECT_EQ(D({2, 2, 3, 1, 1}), dims(Mm(Mm(7.0)(mat(2, 3, {1, 1, 1, 1, 1, 1})))));
    EXPECT_EQ(0, Mm(m(Mm())).size());
}

TEST(SubscriptRead, LogicalIndices) {
    Mm r = named(row({1, 2, 3, 4}), "x");
    Mm m = counting(2, {2, 3});
    Mm a = r(logical(row({1, 0, 1, 1})));
    EXPECT_EQ(D({2, 1, 3, 1, 1}), dims(a));
    EXPECT_EQ(V({1, 3, 4}), values(a));
    // A matrix read by a row mask gives a row, by a matrix mask a column.
    EXPECT_EQ(D({2, 1, 2, 1, 1}), dims(Mm(m(logical(row({0, 1, 0, 0, 1, 0}))))));
    Mm b = m(logical(mat(2, 3, {1, 0, 0, 1, 1, 0})));
    EXPECT_EQ(D({2, 3, 1, 1, 1}), dims(b));
    EXPECT_EQ(V({1, 4, 5}), values(b));
    // A shorter mask selects from its own length; a longer one must be false beyond the data.
    EXPECT_EQ(V({2}), values(Mm(r(logical(row({0, 1}))))));
    EXPECT_EQ(V({4}), values(Mm(r(logical(row({0, 0, 0, 1, 0, 0}))))));
    EXPECT_ERROR(Mm(r(named(logical(row({0, 0, 0, 0, 1})), "t"))),
                 "x(t) : Index out of matrix. Index value was 5 however the indexed matrix has 4 elements.");
}

TEST(SubscriptRead, TwoIndexReads) {
    Mm m = named(counting(2, {3, 4}), "m");
    Mm rows = m(2.0, c_p);
    EXPECT_EQ(D({2, 1, 4, 1, 1}), dims(rows));
    EXPECT_EQ(V({2, 5, 8, 11}), values(rows));
    Mm pick = m(row({3, 1}), row({4, 1, 4}));
    EXPECT_EQ(D({2, 2, 3, 1, 1}), dims(pick));
    EXPECT_EQ(V({12, 10, 3, 1, 12, 10}), values(pick));
    Mm masked = m(logical(row({1, 0, 1})), logical(row({0, 1, 0, 1})));
    EXPECT_EQ(D({2, 2, 2, 1, 1}), dims(masked));
    EXPECT_EQ(V({4, 6, 10, 12}), values(masked));
    EXPECT_EQ(V({2.0}), values(Mm(m(2.9, 1.2))));
    // The column is checked before any of its rows is read.
    Mm r5 = named(Mm(5.0), "r"), c9 = named(Mm(9.0), "c");
    EXPECT_ERROR(Mm(m(r5, c9)),
                 "m(r,c): col index out of matrix. Index was 9 but indexed matrix has 4 columns.");
    // Unnamed scalars share one text buffer and names are formatted right to left, so both scalar
    // temporaries of a message show the leftmost one's value.
    EXPECT_ERROR(Mm(m(5.0, 1.0)),
                 "m(=5,=5): row index out of matrix. Index was 5 but indexed matrix has 3 rows.");
    Mm t = counting(2, {3, 3});
    EXPECT_ERROR(Mm(t(5.0, 1.0)),
                 "(temporary)(=5,=5): row index out of matrix. Index was 5 but indexed matrix has 3 rows.");
}

TEST(SubscriptRead, SharingReadsCopyNoElements) {
    Mm x = counting(3, {2, 3, 2});
    Mm all = Mm(Mr(x));
    EXPECT_EQ(x.pr, all.pr);
    EXPECT_EQ(D({3, 2, 3, 2, 1}), dims(all));
    Mm flat = x(c_p);
    EXPECT_EQ(x.pr, flat.pr);
    EXPECT_EQ(D({2, 12, 1, 1, 1}), dims(flat));
    Mm both = x(c_p, c_p);
    EXPECT_EQ(x.pr, both.pr);
    EXPECT_EQ(D({3, 2, 3, 2, 1}), dims(both));
    EXPECT_EQ(3, x.dirty());
    Mm e;
    EXPECT_EQ(D({2, 0, 0, 0, 0}), dims(Mm(e(c_p))));
    // The global mark of a variable does not travel with its value.
    Mm g(i_o, "g", 1);
    g = row({1, 2});
    EXPECT_EQ(0, Mm(g(c_p)).isglobal());
    // A copy of the colon is an empty index, and the string ":" is its code.
    EXPECT_EQ(0, Mm(x(colon())).size());
    EXPECT_ERROR(Mm(x(TM(":"))),
                 "Index =58 out of matrix (temporary). Index value was 58 however the indexed "
                 "matrix has only 12 elements.");
}

TEST(SubscriptRead, ThreeDimensionalReads) {
    Mm x = named(counting(3, {2, 3, 2}), "x");
    Mm page = x(c_p, c_p, 2.0);
    EXPECT_EQ(D({2, 2, 3, 1, 1}), dims(page));
    EXPECT_EQ(V({7, 8, 9, 10, 11, 12}), values(page));
    EXPECT_EQ(V{12}, values(Mm(x(2.0, 3.0, 2.0))));
    // The last subscript runs over the trailing dimensions together.
    Mm tail = x(1.0, c_p);
    EXPECT_EQ(D({2, 1, 6, 1, 1}), dims(tail));
    EXPECT_EQ(V({1, 3, 5, 7, 9, 11}), values(tail));
    Mm tube = x(1.0, 1.0, c_p);
    EXPECT_EQ(D({3, 1, 1, 2, 1}), dims(tube));
    EXPECT_EQ(V({1, 7}), values(tube));
    Mm k = named(Mm(3.0), "k"), z = named(Mm(0.0), "z"), big = named(Mm(13.0), "big");
    EXPECT_ERROR(Mm(x(1.0, 1.0, k)),
                 "Index k out of matrix x. Index value was 3 however the indexed matrix has 2 "
                 "elements in this dimension.");
    EXPECT_ERROR(Mm(x(z, 1.0, 1.0)), "index z out of matrix x. Index value was 0 which is not positive.");
    EXPECT_ERROR(Mm(x(big)),
                 "Index big out of matrix x. Index value was 13 however the indexed matrix has only "
                 "12 elements.");
}

TEST(SubscriptRead, ByteAndComplexData) {
    Mm b(0, 0, 0, 2, 3, ak_uchar);
    for (int k = 0; k < 6; ++k) static_cast<unsigned char*>(b.pr)[k] = static_cast<unsigned char>(10 * k);
    Mm r = b(2.0, 3.0);
    EXPECT_EQ(ak_uchar, r.gettype());
    EXPECT_EQ(50, *static_cast<unsigned char*>(r.pr));
    Mm z(1, 0, 0, 2, 2, ak_double);
    for (int k = 0; k < 4; ++k) {
        z.addr()[k] = k + 1;
        z.addi()[k] = -(k + 1);
    }
    Mm zr = z(2.0, c_p);
    EXPECT_EQ(V({2, 4}), values(zr));
    EXPECT_EQ(V({-2, -4}), imag_values(zr));
}

// Silent reads, and reads after an error handler that returns, end in a matrix of no value.
TEST(SubscriptRead, FailedReadsGiveNothing) {
    Mm v(i_o, "v", 0);
    EXPECT_ERROR(Mm(v(1.0)), "v(...): variable 'v' was used without value.");
    Mm unset(v(1.0), 0);
    EXPECT_EQ(ak_no_type, unset.gettype());
    EXPECT_EQ(nullptr, unset.getname());
    ak_test::Recorder rec(ak_test::Recorder::kErrors);
    Mm x = named(counting(2, {2, 2}), "x");
    Mm a(x(5.0), 0);
    Mm b(x(1.0, 9.0), 0);
    Mm c(x(1.0, 1.0, 2.0), 0);
    EXPECT_TRUE(rec.errors.empty());
    Mm d = x(3.0, 1.0);
    Mm e = x(logical(row({0, 0, 0, 0, 1})));
    EXPECT_EQ(2u, rec.errors.size());
    for (const Mm* m : {&a, &b, &c, &d, &e}) EXPECT_EQ(ak_no_type, m->gettype());
}

TEST(SubscriptRead, CharacterAndByteIndicesAreTheirCodes) {
    Mm x = counting(2, {1, 100});
    Mm letters = x(TM("ab"));
    EXPECT_EQ(V({97, 98}), values(letters));
    EXPECT_FALSE(letters.isstr());
    // A byte index is converted once, when the reference is built, and freed with it.
    Mm bytes(0, 0, 0, 1, 2, ak_uchar);
    static_cast<unsigned char*>(bytes.pr)[0] = 5;
    static_cast<unsigned char*>(bytes.pr)[1] = 99;
    Mm c = named(cell_of({Mm(1.0)}), "c");
    int before = ak_internal::pool_blocks_in_use();
    EXPECT_EQ(V({5, 99}), values(Mm(x(bytes))));
    EXPECT_EQ(before, ak_internal::pool_blocks_in_use());
    // A failed conversion frees the indices converted before it.
    EXPECT_ERROR(Mr(Mr_paren, x, bytes, c), "Can not convert c into a numeric matrix");
    EXPECT_EQ(before, ak_internal::pool_blocks_in_use());
    Mr ref(Mr_paren, x, bytes);
    EXPECT_EQ(1, ref.owned[0]);
    EXPECT_EQ(ak_double, ref.idx[0]->gettype());
    // Only the first reference frees the converted index.
    Mr copy(ref);
    EXPECT_EQ(0, copy.owned[0]);
    EXPECT_EQ(2, copy.size());
}

// A cell as the only ( ) subscript selects through its elements and overwrites the base itself.
TEST(SubscriptRead, CellSubscriptReducesTheBase) {
    Mm x(i_o, "x", 0);
    x = row({10, 20, 30});
    EXPECT_EQ(V{20}, values(Mm(x(cell_of({Mm(2.0)})))));
    EXPECT_EQ(V{20}, values(x));
    EXPECT_STREQ("x", x.getname());
    Mm m = counting(2, {3, 3});
    Mm part = m(cell_of({row({1, 3}), Mm(2.0)}));
    EXPECT_EQ(V({4, 6}), values(m));
    EXPECT_EQ(D({2, 2, 1, 1, 1}), dims(part));
    // An empty cell, or one of more than four elements, denotes the whole base.
    Mm w = row({1, 2});
    EXPECT_EQ(V({1, 2}), values(Mm(w(Mm(0, 0, 0, 0, 0, ak_mm)))));
    EXPECT_EQ(V({1, 2}), values(Mm(w(cell_of({Mm(1.0), Mm(1.0), Mm(1.0), Mm(1.0), Mm(1.0)})))));
    EXPECT_EQ(V({1, 2}), values(w));
}
