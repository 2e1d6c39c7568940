// Assignments through x(i) and x(i,j) on dense matrices: growth shapes and capacity, fractional and
// logical indices, colon writes, deletion, copy-on-write, self-assignment, type conversion and the
// messages of the plain routes.
#include <gtest/gtest.h>

#include "tests/core/subscript_test_support.h"

using namespace sub_test;
using V = std::vector<double>;
using D = std::vector<int>;

using ak_test::bytes;

TEST(SubscriptWrite, GrowthShapesOfOneIndex) {
    Mm e;
    e(5.0) = 1.0;
    EXPECT_EQ(D({2, 1, 5, 1, 1}), dims(e));
    EXPECT_EQ(V({0, 0, 0, 0, 1}), values(e));
    // A matrix written past its end by one index becomes a column, its elements kept in order.
    Mm m = mat(2, 2, {1, 2, 3, 4});
    m(7.0) = 9.0;
    EXPECT_EQ(D({2, 7, 1, 1, 1}), dims(m));
    EXPECT_EQ(V({1, 2, 3, 4, 0, 0, 9}), values(m));
    Mm c = col({1, 2});
    c(4.0) = 4.0;
    EXPECT_EQ(D({2, 4, 1, 1, 1}), dims(c));
    // Sizes round to nearest while positions truncate: x(2.7) grows to 3 and writes element 2.
    Mm s(5.0);
    s(2.7) = 7.0;
    EXPECT_EQ(D({2, 1, 3, 1, 1}), dims(s));
    EXPECT_EQ(V({5, 7, 0}), values(s));
    Mm h = row({1, 2});
    h(0.5) = 8.0;
    EXPECT_EQ(V({8, 2}), values(h));
}

TEST(SubscriptWrite, GrowthUsesTheSpareCapacityBeforeReallocating) {
    Mm x = row({1, 2, 3});
    ASSERT_EQ(11, x.getp());
    void* block = x.pr;
    x(11.0) = 1.0;
    EXPECT_EQ(block, x.pr);
    EXPECT_EQ(V({1, 2, 3, 0, 0, 0, 0, 0, 0, 0, 1}), values(x));
    // One more element takes a new block with room for as many again (and the 8 spare).
    x(12.0) = 2.0;
    EXPECT_NE(block, x.pr);
    EXPECT_EQ(12 + 12 + 8, x.getp());
    EXPECT_EQ(V({1, 2, 3, 0, 0, 0, 0, 0, 0, 0, 1, 2}), values(x));
    // A matrix that is made, not grown, has the 8 spare elements only.
    EXPECT_EQ(12 + 8, Mm(row({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12})).getp());
    // Growing a complex matrix in place zeroes both halves.
    Mm z(1, 0, 0, 1, 1, ak_double);
    z.addr()[0] = 1;
    z.addi()[0] = 2;
    z(3.0) = 5.0;
    EXPECT_EQ(V({1, 0, 5}), values(z));
    EXPECT_EQ(V({2, 0, 0}), imag_values(z));
}

TEST(SubscriptWrite, OneIndexMessages) {
    Mm x = named(row({1, 2, 3}), "x");
    EXPECT_ERROR(x(0.4) = 1.0, "x(=0): index is non-positive");
    EXPECT_ERROR(x(named(row({2, -1}), "k")) = 1.0, "x(k): index is non-positive");
    EXPECT_EQ(V({1, 2, 3}), values(x));
    // The size check comes after growth: the target stays grown with the new elements zero.
    Mm far = named(row({4, 5}), "f");
    EXPECT_ERROR(x(far) = Mm(row({7, 8, 9})), "x(f)=(temporary): size((temporary)) different than size(f)");
    EXPECT_EQ(V({1, 2, 3, 0, 0}), values(x));
    Mm mask = named(logical(row({1, 0, 1})), "m");
    EXPECT_ERROR(x(mask) = Mm(row({1, 2, 3})),
                 "x(m)=(temporary): a logical assignment ; source size != number of non zeros in index");
    EXPECT_ERROR(x(c_p) = named(row({1, 2}), "y"), "x(:)=y: size(y) different than size(x)");
    // A size that no storage can hold.
    Mm big = row({1});
    EXPECT_ERROR(big(1e10) = 1.0, "Out of memory!");
    EXPECT_EQ(V({1}), values(big));
    Mm unset(i_o, "v", 0);
    EXPECT_ERROR(x(1.0) = unset, "variable 'v' was used without a value");
}

TEST(SubscriptWrite, LogicalEmptyAndColonIndices) {
    Mm x = row({1, 2, 3, 4});
    x(logical(row({0, 1, 0, 1}))) = Mm(row({7, 8}));
    EXPECT_EQ(V({1, 7, 3, 8}), values(x));
    // A mask longer than the target grows it to the mask's length, even past its last true.
    x(logical(row({0, 0, 0, 0, 1, 0}))) = 5.0;
    EXPECT_EQ(V({1, 7, 3, 8, 5, 0}), values(x));
    // x([]) = y changes nothing, whatever y is.
    Mm before = x;
    x(Mm()) = Mm(row({1, 2, 3}));
    EXPECT_EQ(before.pr, x.pr);
    // x(:) = y keeps the target's shape; a real source drops the imaginary half.
    Mm m = mat(2, 2, {1, 2, 3, 4});
    m(c_p) = Mm(row({5, 6, 7, 8}));
    EXPECT_EQ(D({2, 2, 2, 1, 1}), dims(m));
    EXPECT_EQ(V({5, 6, 7, 8}), values(m));
    Mm z(1, 0, 0, 1, 2, ak_double);
    z(c_p) = 3.0;
    EXPECT_EQ(nullptr, z.pi);
    EXPECT_EQ(V({3, 3}), values(z));
    // x(:) = [] empties the target and keeps its element type; an empty target stays empty.
    Mm b = bytes({1, 2, 3});
    b(c_p) = Mm();
    EXPECT_EQ(0, b.size());
    EXPECT_EQ(ak_uchar, b.gettype());
    Mm e;
    e(c_p) = Mm(row({1, 2}));
    EXPECT_EQ(0, e.size());
}

TEST(SubscriptWrite, DeletionShapes) {
    Mm m = mat(2, 2, {1, 2, 3, 4});
    m(2.0) = Mm();
    EXPECT_EQ(D({2, 1, 3, 1, 1}), dims(m));
    EXPECT_EQ(V({1, 3, 4}), values(m));
    Mm c = col({1, 2, 3, 4});
    c(row({1, 4, 4, 9})) = nop_M;  // repeated and out-of-range positions count once or not at all
    EXPECT_EQ(D({2, 2, 1, 1, 1}), dims(c));
    EXPECT_EQ(V({2, 3}), values(c));
    Mm l = row({1, 2, 3, 4});
    l(logical(row({1, 0, 0, 1}))) = Mm();
    EXPECT_EQ(V({2, 3}), values(l));
    l(row({1, 2})) = Mm();
    EXPECT_EQ(D({2, 0, 0, 0, 0}), dims(l));
    Mm x = named(row({1, 2}), "x");
    EXPECT_ERROR(x(0.0) = Mm(), "x(0): index is non-positive");
    // An unshared target is compacted in its own storage.
    Mm w = row({1, 2, 3, 4, 5});
    void* block = w.pr;
    w(3.0) = Mm();
    EXPECT_EQ(block, w.pr);
    EXPECT_EQ(V({1, 2, 4, 5}), values(w));
    Mm cells = cell_of({Mm(1.0), Mm(2.0), Mm(3.0)});
    cells(2.0) = Mm();
    ASSERT_EQ(2, cells.size());
    EXPECT_EQ(V({3}), values(at(cells, 2)));
}

TEST(SubscriptWrite, SharedTargetsAreCopiedBeforeTheWrite) {
    Mm x = row({1, 2, 3});
    Mm other = x;
    x(2.0) = 9.0;
    EXPECT_EQ(V({1, 2, 3}), values(other));
    EXPECT_EQ(0, other.dirty());
    // Through two indices, a colon and a deletion.
    Mm m = mat(2, 2, {1, 2, 3, 4});
    Mm keep = m;
    m(1.0, 2.0) = 0.0;
    m(c_p) = 5.0;
    Mm keep2 = m;
    m(1.0) = Mm();
    EXPECT_EQ(V({1, 2, 3, 4}), values(keep));
    EXPECT_EQ(V({5, 5, 5, 5}), values(keep2));
    EXPECT_EQ(V({5, 5, 5}), values(m));
    Mm c = cell_of({Mm(1.0), Mm(2.0)});
    Mm c2 = c;
    c(2.0) = Mm(cell_of({Mm(7.0)}));
    EXPECT_EQ(V({7}), values(at(c, 2)));
    EXPECT_EQ(V({2}), values(at(c2, 2)));
}

TEST(SubscriptWrite, TheRightSideIsReadBeforeTheWrite) {
    Mm x = row({1, 2, 3});
    x(row({2, 3})) = x(row({1, 2}));
    EXPECT_EQ(V({1, 1, 2}), values(x));
    // The target as its own index and as its own source.
    Mm k = row({2, 1});
    k(k) = Mm(row({10, 20}));
    EXPECT_EQ(V({20, 10}), values(k));
    Mm s = row({3, 4});
    s(row({3, 4})) = s;
    EXPECT_EQ(V({3, 4, 3, 4}), values(s));
}

TEST(SubscriptWrite, TypeConversionAndFlags) {
    // A string written into a double stores its code; the target keeps its own flags.
    Mm x = row({1, 2});
    x(3.0) = TM("a");
    EXPECT_EQ(V({1, 2, 97}), values(x));
    EXPECT_EQ(0, x.isstr());
    Mm s = TM("ab");
    s(1.0) = 100.0;
    EXPECT_EQ(1, s.isstr());
    // Doubles written into bytes truncate to the low byte; bytes into doubles widen.
    Mm b = bytes({1, 2});
    b(2.0) = 97.9;
    b(1.0) = 300.0;
    EXPECT_EQ(ak_uchar, b.gettype());
    EXPECT_EQ(44, static_cast<unsigned char*>(b.pr)[0]);
    EXPECT_EQ(97, static_cast<unsigned char*>(b.pr)[1]);
    Mm d = row({0.5, 0.5});
    d(2.0) = bytes({200});
    EXPECT_EQ(V({0.5, 200}), values(d));
    // Anything written into a cell array is wrapped; a cell written into numbers is refused.
    Mm c = cell_of({Mm(1.0)});
    c(2.0) = 5.0;
    ASSERT_EQ(ak_mm, c.gettype());
    EXPECT_EQ(V({5}), values(at(c, 2)));
    Mm n = named(row({1, 2}), "n");
    EXPECT_ERROR(n(1.0) = cell_of({Mm(1.0)}), "Can not convert (temporary) into a numeric matrix");
    EXPECT_EQ(V({1, 2}), values(n));
    // An empty target, or one without a value, takes the source's kind.
    Mm e;
    e(2.0) = bytes({7});
    EXPECT_EQ(ak_uchar, e.gettype());
    Mm u(i_o, "u", 0);
    u(2.0) = cell_of({Mm(3.0)});
    EXPECT_EQ(ak_mm, u.gettype());
    // A global variable stays global and keeps its name.
    Mm g(i_o, "g", 1);
    g = row({1, 2});
    g(4.0) = 1.0;
    EXPECT_EQ(1, g.isglobal());
    EXPECT_STREQ("g", g.getname());
    // A complex value makes the target complex; a real one then stores a zero imaginary part.
    Mm z(1, 0, 0, 1, 1, ak_double);
    z.addr()[0] = 4;
    z.addi()[0] = 5;
    Mm r = row({1, 2, 3});
    r(2.0) = z;
    EXPECT_EQ(V({1, 4, 3}), values(r));
    EXPECT_EQ(V({0, 5, 0}), imag_values(r));
    r(2.0) = 6.0;
    EXPECT_EQ(V({0, 0, 0}), imag_values(r));
}

TEST(SubscriptWrite, TwoIndexGrowthAndColons) {
    Mm e;
    e(2.0, 3.0) = 1.0;
    EXPECT_EQ(D({2, 2, 3, 1, 1}), dims(e));
    EXPECT_EQ(V({0, 0, 0, 0, 0, 1}), values(e));
    Mm m = mat(2, 2, {1, 2, 3, 4});
    m(3.0, 1.0) = 5.0;
    EXPECT_EQ(V({1, 2, 5, 3, 4, 0}), values(m));
    // A colon covers the target for a scalar, and takes y's extent otherwise.
    Mm a = mat(2, 2, {1, 2, 3, 4});
    a(2.0, c_p) = 0.0;
    a(c_p, 3.0) = Mm(col({7, 8}));
    EXPECT_EQ(D({2, 2, 3, 1, 1}), dims(a));
    EXPECT_EQ(V({1, 0, 3, 0, 7, 8}), values(a));
    Mm z;
    z(c_p, 2.0) = Mm(col({1, 2, 3}));
    EXPECT_EQ(D({2, 3, 2, 1, 1}), dims(z));
    EXPECT_EQ(V({0, 0, 0, 1, 2, 3}), values(z));
    // Index lists write in the order given, rows inner; logical indices select their trues.
    Mm p = mat(2, 3, {0, 0, 0, 0, 0, 0});
    p(row({2, 1}), row({3, 1})) = Mm(row({1, 2, 3, 4}));
    EXPECT_EQ(V({4, 3, 0, 0, 2, 1}), values(p));
    p(logical(row({0, 1})), logical(row({1, 0, 1}))) = 9.0;
    EXPECT_EQ(V({4, 9, 0, 0, 2, 9}), values(p));
    p(1.6, 1.2) = 8.0;  // position (1,1), extents rounded 2 and 1
    EXPECT_EQ(8.0, values(p)[0]);
}

TEST(SubscriptWrite, TwoIndexMessages) {
    Mm x = named(mat(2, 2, {1, 2, 3, 4}), "x");
    Mm i = named(row({1, 2}), "i"), j = named(row({1}), "j"), y = named(row({1, 2, 3}), "y");
    EXPECT_ERROR((x(i, j) = y), "x(i,j)=y: size(row index)*size(col index) is different than size(source)");
    Mm zero = named(Mm(0.0), "z"), one = named(Mm(1.0), "o");
    EXPECT_ERROR((x(zero, one) = y(1.0)), "x(z,o)==1: row index is non-positive");
    EXPECT_ERROR((x(one, zero) = 5.0), "x(o,z)==5: col index is non-positive");
    // Unnamed scalars share one buffer: every one of them shows the leftmost.
    EXPECT_ERROR((x(0.0, 1.0) = 5.0), "x(=0,=0)==0: row index is non-positive");
    EXPECT_EQ(V({1, 2, 3, 4}), values(x));
}

TEST(SubscriptWrite, TwoIndexDeletion) {
    Mm m = counting(2, {3, 3});
    Mm a = m;
    a(c_p, 2.0) = Mm();
    EXPECT_EQ(D({2, 3, 2, 1, 1}), dims(a));
    EXPECT_EQ(V({1, 2, 3, 7, 8, 9}), values(a));
    Mm b = m;
    b(row({1, 3}), c_p) = Mm();
    EXPECT_EQ(D({2, 1, 3, 1, 1}), dims(b));
    EXPECT_EQ(V({2, 5, 8}), values(b));
    // Without a colon what lies outside the named rows and columns is kept, as a row.
    Mm c = m;
    c(1.0, 2.0) = Mm();
    EXPECT_EQ(D({2, 1, 4, 1, 1}), dims(c));
    EXPECT_EQ(V({2, 3, 8, 9}), values(c));
    // Out-of-range positions are ignored.
    Mm d = m;
    d(c_p, row({3, 7})) = Mm();
    EXPECT_EQ(V({1, 2, 3, 4, 5, 6}), values(d));
    EXPECT_EQ(V({1, 2, 3, 4, 5, 6, 7, 8, 9}), values(m));
}
