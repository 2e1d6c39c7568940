// ind2sub, sub2ind, permute, ipermute, diag, squeeze, ndims, row2col, the dim argument and colon.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>

#include "tests/core/subscript_test_support.h"

using namespace sub_test;
using V = std::vector<double>;
using D = std::vector<int>;

TEST(ShapeFunctions, Ind2subAndSub2indAreInverse) {
    Mm siz = row({3, 4});
    Mm ndx = row({1, 5, 12, 7});
    Mm i, j;
    EXPECT_EQ(0, ind2sub(siz, ndx, i_o, i, j).size());
    EXPECT_EQ(V({1, 2, 3, 1}), values(i));
    EXPECT_EQ(V({1, 2, 4, 3}), values(j));
    EXPECT_EQ(values(ndx), values(sub2ind(siz, i, j)));
    // Three outputs over 2x3x4; the last output takes the rest, unchecked.
    Mm siz3 = row({2, 3, 4});
    Mm n3 = col({1, 8, 24, 30});
    Mm a, b, c;
    ind2sub(siz3, n3, i_o, a, b, c);
    EXPECT_EQ(V({1, 2, 2, 2}), values(a));
    EXPECT_EQ(V({1, 1, 3, 3}), values(b));
    EXPECT_EQ(V({1, 2, 4, 5}), values(c));
    EXPECT_EQ(D({2, 4, 1, 1, 1}), dims(c));
    EXPECT_EQ(values(n3), values(sub2ind(siz3, a, b, c)));
    // With two outputs over three dimensions the second takes the trailing dimensions together.
    Mm p, q;
    ind2sub(siz3, Mm(24.0), i_o, p, q);
    EXPECT_EQ(V{2}, values(p));
    EXPECT_EQ(V{12}, values(q));
    // Scalar subscripts stand for every element.
    EXPECT_EQ(V({4, 5, 6}), values(sub2ind(siz, row({1, 2, 3}), Mm(2.0))));
    EXPECT_ERROR(sub2ind(siz, row({1, 2}), row({1, 2, 3})),
                 "sub2ind: the subscripts must have the same number of elements");
    EXPECT_ERROR(sub2ind(siz), "sub2ind does not accept 1 input");
}

TEST(ShapeFunctions, PermuteMovesEveryElementAndChecksTheOrder) {
    Mm x = counting(3, {2, 3, 4});
    Mm y = permute(x, row({3, 1, 2}));
    EXPECT_EQ(D({3, 4, 2, 3, 1}), dims(y));
    // y(k, i, j) = x(i, j, k) for every element.
    for (int i = 0; i < 2; ++i)
        for (int j = 0; j < 3; ++j)
            for (int k = 0; k < 4; ++k)
                ASSERT_EQ(x.addr()[i + 2 * j + 6 * k], y.addr()[k + 4 * i + 8 * j]) << i << j << k;
    Mm back = ipermute(y, row({3, 1, 2}));
    EXPECT_EQ(dims(x), dims(back));
    EXPECT_EQ(values(x), values(back));
    // A 2-D transpose, complex, and an order with more places than x has dimensions.
    Mm z(1, 0, 0, 2, 3, ak_double);
    for (int k = 0; k < 6; ++k) {
        z.addr()[k] = k;
        z.addi()[k] = -k;
    }
    Mm zt = permute(z, row({2, 1}));
    EXPECT_EQ(D({2, 3, 2, 1, 1}), dims(zt));
    EXPECT_EQ(V({0, 2, 4, 1, 3, 5}), values(zt));
    EXPECT_EQ(V({0, -2, -4, -1, -3, -5}), imag_values(zt));
    EXPECT_EQ(D({3, 1, 1, 3, 1}), dims(permute(row({1, 2, 3}), row({3, 1, 2}))));
    // Bytes keep their width and type.
    Mm b(0, 0, 0, 2, 2, ak_uchar);
    for (int k = 0; k < 4; ++k) static_cast<unsigned char*>(b.pr)[k] = static_cast<unsigned char>(k + 1);
    Mm bt = permute(b, row({2, 1}));
    EXPECT_EQ(ak_uchar, bt.gettype());
    EXPECT_EQ(3, static_cast<unsigned char*>(bt.pr)[1]);
    // The identity order returns x itself, uncopied.
    EXPECT_EQ(x.pr, permute(x, row({1, 2, 3})).pr);

    EXPECT_ERROR(permute(x, row({1, 2, 3, 4, 5})), "permute: order has too many dimensions");
    EXPECT_ERROR(permute(x, row({2, 1})),
                 "permute: order should have same number of elements as x dimensions");
    EXPECT_ERROR(permute(x, row({1, 2, 4})), "permute: out of range values in order");
    EXPECT_ERROR(permute(x, row({1, 1, 2})), "permute: repeated values in order");
    ak_test::Recorder rec(ak_test::Recorder::kErrors);
    EXPECT_EQ(x.pr, permute(x, row({3, 3, 3})).pr);  // x comes back after the report
}

TEST(ShapeFunctions, DiagOfFullAndSparseData) {
    Mm d = diag(row({1, 2, 3}));
    EXPECT_EQ(D({2, 3, 3, 1, 1}), dims(d));
    EXPECT_EQ(V({1, 0, 0, 0, 2, 0, 0, 0, 3}), values(d));
    EXPECT_EQ(V({0, 0, 0, 1, 0, 0, 0, 2, 0}), values(diag(col({1, 2}), Mm(1.0))));
    Mm m = counting(2, {3, 4});  // 1 4 7 10 / 2 5 8 11 / 3 6 9 12
    EXPECT_EQ(V({1, 5, 9}), values(diag(m)));
    EXPECT_EQ(V({4, 8, 12}), values(diag(m, Mm(1.0))));
    EXPECT_EQ(0, diag(m, Mm(4.0)).size());
    EXPECT_EQ(V({7, 11}), values(diag(m, Mm(2.9))));
    // Strings stay strings; complex values keep both parts.
    Mm s = diag(TM("ab"));
    EXPECT_TRUE(s.isstr());
    Mm z(1, 0, 0, 1, 2, ak_double);
    z.addr()[0] = 1, z.addr()[1] = 2, z.addi()[0] = 3, z.addi()[1] = 4;
    EXPECT_EQ(V({3, 0, 0, 4}), imag_values(diag(z)));
    Mm x3 = named(counting(3, {2, 2, 2}), "x3");
    EXPECT_ERROR(diag(x3), "diag: 2-d matrix expected, but matrix x3 has 3 dimensions");

    Mm v = sparse(col({0, 5, 0, 7}));
    Mm sd = diag(v, Mm(1.0));
    EXPECT_TRUE(sd.issparse());
    EXPECT_EQ(D({2, 5, 5, 1, 1}), dims(sd));
    EXPECT_EQ(V({5, 7}), values(sd));
    EXPECT_EQ(std::vector<int>({11, 23}), positions(sd));
    Mm sm = sparse(mat(3, 3, {1, 0, 0, 0, 0, 6, 0, 8, 9}));
    Mm c = diag(sm);
    EXPECT_TRUE(c.issparse());
    EXPECT_EQ(V({1, 9}), values(c));
    EXPECT_EQ(std::vector<int>({0, 2}), positions(c));
    EXPECT_EQ(0, diag(sm, Mm(2.0)).nnz);
}

TEST(ShapeFunctions, SqueezeNdimsRow2col) {
    EXPECT_EQ(D({2, 3, 1, 1, 1}), dims(squeeze(counting(3, {1, 1, 3}))));
    EXPECT_EQ(D({3, 2, 3, 4, 1}), dims(squeeze(counting(4, {1, 2, 3, 4}))));
    EXPECT_EQ(D({2, 1, 3, 1, 1}), dims(squeeze(row({1, 2, 3}))));
    EXPECT_EQ(V{3}, values(ndims(counting(3, {1, 2, 2}))));
    // Data written row by row (C order) becomes the same matrix in column-major order.
    Mm c = row2col(mat(2, 3, {1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(D({2, 2, 3, 1, 1}), dims(c));
    EXPECT_EQ(V({1, 4, 2, 5, 3, 6}), values(c));
    Mm c3 = row2col(counting(3, {2, 2, 2}, 0));
    // Element (i,j,k) was stored at 4i + 2j + k.
    EXPECT_EQ(V({0, 4, 2, 6, 1, 5, 3, 7}), values(c3));
}

TEST(ShapeFunctions, DimArgument) {
    Mm x = counting(3, {1, 3, 2});
    EXPECT_EQ(1, normalize_dim_argument("sum", x, Mm(0.0)));
    EXPECT_EQ(0, normalize_dim_argument("sum", x, Mm(1.0)));
    EXPECT_ERROR(normalize_dim_argument("sum", x, Mm()), "sum: dim argument may not be empty");
    EXPECT_ERROR(normalize_dim_argument("sum", x, Mm(-1.0)), "sum: dim argument must be positive");
    EXPECT_ERROR(normalize_dim_argument("max", x, Mm(4.0)),
                 "max: dim argument may not be more then the number of dimensions");
    ak_test::Recorder rec(ak_test::Recorder::kErrors);
    EXPECT_EQ(0, normalize_dim_argument("sum", x, Mm(9.0)));
}

TEST(ShapeFunctions, ColonRanges) {
    EXPECT_EQ(D({2, 1, 5, 1, 1}), dims(colon(Mm(1.0), Mm(5.0))));
    EXPECT_EQ(V({5, 3, 1}), values(colon(Mm(5.0), Mm(-2.0), Mm(1.0))));
    EXPECT_EQ(V({1, 2.5}), values(colon(1.0, 1.5, 3.9)));
    Mm tenths = colon(0.0, 0.1, 1.0);
    ASSERT_EQ(11, tenths.size());
    EXPECT_EQ(1.0, tenths.addr()[10]);
    // Empty ranges are the empty result.
    for (Mm e : {colon(5.0, 1.0), colon(1.0, 0.0, 5.0), colon(1.0, -1.0, 5.0), colon(Mm(), Mm(3.0)),
                 colon(NAN, 3.0)}) {
        EXPECT_EQ(0, e.size());
        EXPECT_EQ(ak_double, e.gettype());
    }
    // colon() is a plain copy of the marker: not a colon index.
    EXPECT_FALSE(is_colon(colon()));
    EXPECT_ERROR(colon(1.0, INFINITY), "Out of memory!");
}
