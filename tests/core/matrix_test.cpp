// The matrix object: storage, sharing, flags, checked access, copies, fields and sparse bookkeeping.
#include <cmath>
#include <cstring>

#include "arklib.h"
#include "test_support.h"

using ak_test::row;
using ak_test::sparse_entries;

TEST(MatrixStorage, ShapesCapacityAndOversizedRequests) {
    int d3[3] = {3, 0, 2};
    Mm b(0, 0, 0, 3, d3, ak_double);  // any empty shape collapses to 0x0
    for (int d : b.dims) EXPECT_EQ(d, 0);
    EXPECT_EQ(Mm(0, 0, 0, 0, 5, ak_double).dims[1], 0);
    Mm a(0, 0, 0, 3, 4, ak_double);
    EXPECT_EQ(a.nnz, 12);
    EXPECT_EQ(a.p, 20);
    Mm cell(0, 0, 0, 2, 2, ak_mm);
    EXPECT_EQ(cell.p, 8);
    EXPECT_EQ(cell.mr(4).gettype(), ak_double);  // default elements are empty doubles
    EXPECT_EQ(cell.mr(4).size(), 0);
    int d4[4] = {2, 3, 1, 1};
    EXPECT_EQ(Mm(0, 0, 0, 4, d4, ak_double).ndims, 2);
    int e[3] = {1, 1, 5};
    Mm c(0, 0, 0, 3, e, ak_double);
    EXPECT_EQ(c.ndims, 3);
    EXPECT_EQ(c.vectordim(), 3);
    Mm u(1, 0, 0, 2, 5, ak_uchar);  // a complex byte matrix: both halves usable
    std::memset(u.pr, 1, 10);
    std::memset(u.pi, 2, 10);

    Mm cut(0, 1, 10, 2, 2, ak_double);  // a sparse request beyond the element count is cut
    EXPECT_TRUE(cut.issparse());
    EXPECT_EQ(cut.nnz, 4);
    Mm none(0, 1, 0, 0, 5, ak_double);
    EXPECT_EQ(none.dims[1], 5);

    ak_test::ErrorsThrow guard;
    EXPECT_ERROR(Mm(0, 1, 300000000, 100000, 10000, ak_double), "Out of memory!");
    EXPECT_ERROR(Mm(0, 0, 0, 50000, 1000, ak_mm), "Out of memory!");
    EXPECT_ERROR(Mm(0, 0, 0, 100000, 100000, ak_double), "Out of memory!");
}

TEST(MatrixShape, QueriesAndReshape) {
    ak_test::ErrorsThrow guard;
    EXPECT_EQ(Mm(1.0).vectordim(), 2);
    EXPECT_EQ(Mm(0, 0, 0, 7, 1, ak_double).vectordim(), 1);
    EXPECT_EQ(Mm(0, 0, 0, 2, 3, ak_double).vectordim(), 0);
    Mm named("x", 2, 3);
    EXPECT_EQ(named.size(2), 3);
    EXPECT_ERROR(named.size(5), "x.size(dim): no such dimension=5");

    Mm a(0, 0, 0, 2, 3, ak_double);
    int d[3] = {1, 2, 3};
    a.reshape(3, d);
    EXPECT_EQ(a.ndims, 3);
    EXPECT_EQ(a.dims[2], 3);
    int flat[3] = {6, 1, 1};
    a.reshape(3, flat);
    EXPECT_EQ(a.ndims, 2);
    EXPECT_ERROR(a.reshape(4, 2), "reshape: size=6 is different than 4*2");
    int four[2] = {4, 1};
    EXPECT_ERROR(a.reshape(2, four), "reshape: size=6 is different than the product of new dimensions");
    Mm e;
    EXPECT_ERROR(e.reshape(2, 3), "reshape: size=0 is different than 2*3");
}

TEST(MatrixSharing, AssignmentSharesAndReleases) {
    Mm b(0, 0, 0, 2, 2, ak_double);
    {
        Mm a;
        a = b;
        EXPECT_EQ(b.dirty(), 1);
        EXPECT_EQ(a.pr, b.pr);
    }
    EXPECT_EQ(b.dirty(), 0);
    b = b;
    EXPECT_EQ(b.dirty(), 0);

    Mm cell(0, 0, 0, 1, 1, ak_mm);
    cell.mr(1) = Mm(7.0);
    cell = cell.mr(1);  // the element lives in the storage being replaced
    EXPECT_EQ(cell.gettype(), ak_double);
    EXPECT_EQ(cell.r(), 7.0);
}

TEST(MatrixFlags, NamesAndFlagsThroughAssignmentAndCopy) {
    Mm x(i_o, "x", 1);
    Mm y(i_o, "y", 0);
    x = Mm(3.0);
    EXPECT_STREQ(x.getname(), "x");
    EXPECT_TRUE(x.isglobal());
    EXPECT_EQ(x.flags.scalar_var, 1);
    y = x;
    EXPECT_STREQ(y.getname(), "y");
    EXPECT_FALSE(y.isglobal());
    // scalar_var falls for good once a non-scalar was held.
    x = Mm(0, 0, 0, 2, 2, ak_double);
    x = Mm(1.0);
    EXPECT_EQ(x.flags.scalar_var, 0);
    Mm copy(x);
    EXPECT_EQ(copy.getname(), nullptr);
    EXPECT_FALSE(copy.isglobal());
    Mm renamed(x, "z");
    EXPECT_STREQ(renamed.getname(), "z");
    EXPECT_TRUE(renamed.isglobal());
}

TEST(MatrixAccess, CheckedAccessorsAndMessages) {
    ak_test::ErrorsThrow guard;
    Mm a("a", 2, 3);
    for (int k = 0; k < 6; ++k) a.addr()[k] = k + 1;
    EXPECT_EQ(a.r(2.7), 2.0);
    EXPECT_EQ(a.r(2, 3), 6.0);
    EXPECT_ERROR(a.r(0.5), "a.r(idx): idx=0.5 out of matrix");
    EXPECT_ERROR(a.r(3, 1), "a.r(row,col): row=3 or col=1 out of matrix");
    EXPECT_ERROR(a.r(1, 1, 2), "a.r(row,col,depth): row=1, col=1 or depth=2 out of matrix");
    EXPECT_ERROR(Mm().r(), "(temporary).r(): matrix is empty");
    Mm u(0, 0, 0, 2, 2, ak_uchar);
    EXPECT_ERROR(u.r(1), ".r / .i : wrong matrix type");
    EXPECT_ERROR(u.ur(1, 3), "(temporary).ur(row,col): row=1 or col=3 out of matrix");
    EXPECT_ERROR(Mm(0, 0, 0, 1, 2, ak_mm).mr(3), "(temporary).mr(idx): idx=3 out of matrix");
    int d[3] = {1, 2, 2};
    Mm b(0, 0, 0, 3, d, ak_double);
    for (int k = 0; k < 4; ++k) b.addr()[k] = k;
    EXPECT_EQ(b.r(1, 2, 2), 3.0);

    EXPECT_STREQ(display_name(Mm("v", 1, 1)), "v");
    EXPECT_STREQ(display_name(Mm(-3.7)), "=-3");
    EXPECT_STREQ(display_name(Mm(0, 0, 0, 1, 2, ak_double)), "(temporary)");
    Mm declared(i_o, "w", 0);
    EXPECT_ERROR(declared.warn_uninit(), "variable 'w' was used without a value");
}

TEST(MatrixAccess, AReturningHandlerNeverReachesOutsideTheStorage) {
    ak_test::Recorder rec(ak_test::Recorder::kErrors);
    Mm a(0, 0, 0, 1, 2, ak_double);
    a.r(1000000.0) = 5.0;  // lands in scratch, not out of bounds
    a.i(1) = 2.0;          // a real matrix has no imaginary half
    EXPECT_EQ(a.pi, nullptr);
    ASSERT_EQ(rec.errors.size(), 1u);
    EXPECT_EQ(rec.errors[0], "(temporary).r(idx): idx=1e+06 out of matrix");
}

TEST(MatrixCopy, DeepcopyConversions) {
    ak_test::ErrorsThrow guard;
    Mm a = row({300.7, -1, 2.5, 65});
    Mm u;
    u.deepcopy(a, ak_uchar);
    ASSERT_EQ(u.gettype(), ak_uchar);
    EXPECT_EQ(u.ur(1), 44);
    EXPECT_EQ(u.ur(2), 255);
    Mm c;
    c.deepcopy(a, ak_mm);
    ASSERT_EQ(c.gettype(), ak_mm);
    EXPECT_EQ(c.mr(1).r(), 300.7);
    Mm cc;
    cc.deepcopy(c, ak_mm);
    EXPECT_EQ(cc.mr(2).pr, c.mr(2).pr);  // cell elements are shared, not copied
    Mm bad;
    EXPECT_ERROR(bad.deepcopy(c, ak_double), "Can not convert (temporary) into a numeric matrix");
    Mm z;
    z.deepcopy(1, 0, a, ak_double);  // complex on request: the imaginary half is zero
    ASSERT_TRUE(z.isc());
    EXPECT_EQ(z.i(3), 0.0);
    Mm s;
    s.deepcopy(0, 1, a, ak_double);  // sparse on request from a full source stores every element
    EXPECT_TRUE(s.issparse());
    EXPECT_EQ(s.nnz, 4);
    EXPECT_EQ(s.index[3], 3);
    z.addr()[0] = 9;
    EXPECT_EQ(a.r(1), 300.7);  // writing the copy leaves the source alone
    Mm t;
    t.deepcopy(TM("ab"), ak_no_type);
    EXPECT_TRUE(t.isstr());

    Mm st(0, 0, 0, 1, 1, ak_mm);
    st.addfield("alpha", 0);
    st.addfield("beta", 0);
    st.setclassid(3);
    Mm f;
    f.deepcopy(st, ak_no_type);
    EXPECT_STREQ(f.fields[1], "beta");
    EXPECT_NE(f.fields, st.fields);
    EXPECT_EQ(f.getclassid(), 0);
}

TEST(MatrixCopy, GetrealGetcomplexAndSafebr) {
    Mm a = row({1, 2});
    Mm shared = a;
    EXPECT_EQ(a.getcomplex(), 1);
    EXPECT_EQ(shared.pi, nullptr);  // the other head keeps the real value
    EXPECT_NE(a.pr, shared.pr);
    void* storage = a.pr;
    EXPECT_EQ(a.getreal(0), 0);
    EXPECT_EQ(a.pi, nullptr);
    EXPECT_EQ(a.pr, storage);  // nothing moved
    a.getcomplex();
    a.addi()[1] = NAN;
    EXPECT_EQ(a.getreal(0), 1);
    EXPECT_EQ(a.getreal(1), 0);
    EXPECT_EQ(a.pi, nullptr);

    Mm c(0, 0, 0, 1, 2, ak_mm);
    c.mr(2) = Mm(4.0);
    EXPECT_EQ(c.safebr(2).r(), 4.0);
    EXPECT_EQ(c.safebr(3).size(), 0);
    EXPECT_EQ(c.safebr(0).size(), 0);
}

TEST(MatrixFields, TableGrowthSharingAndMessages) {
    ak_test::ErrorsThrow guard;
    Mm s("s", 1, 1);
    EXPECT_EQ(s.addfield("a", 0), 0);
    EXPECT_EQ(s.addfield("a", 0), 0);
    EXPECT_EQ(s.addfield("a", 1), 1);
    for (int k = 2; k < 8; ++k) s.addfield(("f" + std::to_string(k)).c_str(), 0);
    EXPECT_EQ(s.fields[8], nullptr);  // full at 8
    EXPECT_EQ(s.addfield("ninth", 0), 8);
    EXPECT_NE(s.fields[15], nullptr);
    EXPECT_EQ(s.fields[16], nullptr);  // doubled to 16
    EXPECT_ERROR(s.findfield("zz", 1), "s.zz: structure field does not exist");
    EXPECT_ERROR(Mm("p", 1, 1).findfield("q", 1), "p.q: not a structure");
    EXPECT_ERROR(s.getfield(9), "getfield: index=9 out of range [0..9)");
    EXPECT_EQ(s.rmfield("f2"), 2);
    EXPECT_EQ(s.nfields, 8);
    EXPECT_STREQ(s.getfield(2), "f3");

    Mm t(0, 0, 0, 1, 1, ak_mm);
    t.addfield("a", 0);
    Mm other = t;
    t.addfield("b", 0);  // a shared table is copied before the change
    EXPECT_EQ(other.nfields, 1);
    EXPECT_EQ(other.findfield("b", 0), -1);
    t.extend_nfields(40);
    EXPECT_EQ(t.fields[40], nullptr);
    EXPECT_STREQ(t.fields[0], "a");
}

TEST(MatrixSparse, ResparseSortSearchAndExtend) {
    Mm s = sparse_entries(6, {{3, 1.0}, {3, -1.0}, {5, 0.0}});
    s.resparse();  // duplicates are summed, stored zeros dropped
    ASSERT_EQ(s.nnz, 1);
    EXPECT_EQ(s.index[0], 3);
    Mm n = sparse_entries(6, {{1, NAN}, {2, 4.0}});
    n.resparse();
    EXPECT_EQ(n.nnz, 2);

    Mm t = sparse_entries(10, {{7, 1.0}, {2, 2.0}, {7, 3.0}, {0, 4.0}});
    t.sort();
    EXPECT_EQ(t.index[1], 2);
    EXPECT_EQ(t.addr()[2], 1.0);  // equal positions keep their input order
    EXPECT_EQ(t.addr()[3], 3.0);
    EXPECT_EQ(t.search(2), 1);
    EXPECT_EQ(t.search(5), -1);
    t.extend_nnz(6);
    EXPECT_EQ(t.index[5], 0);
    EXPECT_EQ(t.addr()[5], 0.0);
    ak_test::ErrorsThrow guard;
    EXPECT_ERROR(row({1}).search(0), "::search: sparse matrix expected, but matrix =1 is full");
}

TEST(MatrixConstants, MarkersAndText) {
    // The markers are recognised by identity: a copy or a string with the same text is not one.
    EXPECT_TRUE(is_colon(c_p));
    EXPECT_TRUE(is_lM(l_M));
    EXPECT_FALSE(is_colon(Mm(c_p)));
    EXPECT_FALSE(is_colon(TM(":")));
    EXPECT_STREQ(nop_M.getname(), "[]");
    char buf[4];
    EXPECT_STREQ(Mstr(TM("hello"), buf, sizeof buf), "hel");
    EXPECT_TRUE(TM("").isstr());
}

TEST(MiniM, ShapesAndBounds) {
    ak_test::ErrorsThrow guard;
    miniM m;
    m.setsize(2, 3, 0);
    m.alloc();
    EXPECT_EQ(m.r(6), 0.0);
    EXPECT_EQ(m.addr(6), m.data + 6);
    EXPECT_ERROR(m.r(7), "miniM.r: r out of range");
    EXPECT_ERROR(m.addr(-1), "miniM addr: offset out of range.");
    miniM copy(m, 1);
    EXPECT_EQ(copy.str, 1);
    m.free();
    copy.free();
    EXPECT_EQ(m.ndims, -1);
}
