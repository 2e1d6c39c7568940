// Reads of sparse matrices and with sparse indices.
#include <gtest/gtest.h>

#include "tests/core/subscript_test_support.h"

using namespace sub_test;
using V = std::vector<double>;
using D = std::vector<int>;
using P = std::vector<int>;

namespace {

// 3x4:  1 0 0 7
//       0 5 0 0
//       2 0 6 8
Mm sample() { return sparse(mat(3, 4, {1, 0, 2, 0, 5, 0, 0, 0, 6, 7, 0, 8})); }

}  // namespace

TEST(SubscriptSparse, TwoIndexReads) {
    Mm s = sample();
    Mm hit = s(3.0, 3.0);
    EXPECT_TRUE(hit.issparse());
    EXPECT_EQ(V{6}, values(hit));
    EXPECT_EQ(0, Mm(s(2.0, 3.0)).nnz);
    Mm column = s(c_p, 4.0);
    EXPECT_EQ(D({2, 3, 1, 1, 1}), dims(column));
    EXPECT_EQ(P({0, 2}), positions(column));
    // Rows in any order and repeated; the stored order stays ascending.
    Mm pick = s(row({3, 1, 3}), row({1, 4}));
    EXPECT_EQ(D({2, 3, 2, 1, 1}), dims(pick));
    EXPECT_EQ(V({2, 1, 2, 8, 7, 8}), values(pick));
    EXPECT_EQ(P({0, 1, 2, 3, 4, 5}), positions(pick));
    Mm by_sparse_mask = s(c_p, sparse(logical(row({0, 1, 1, 0}))));
    EXPECT_EQ(V({5, 6}), values(by_sparse_mask));
    EXPECT_EQ(P({1, 5}), positions(by_sparse_mask));
}

TEST(SubscriptSparse, OneIndexAndSharingReads) {
    Mm s = named(sample(), "s");
    Mm some = s(row({12, 4, 1, 10}));
    EXPECT_TRUE(some.issparse());
    EXPECT_EQ(D({2, 1, 4, 1, 1}), dims(some));
    EXPECT_EQ(V({8, 1, 7}), values(some));
    EXPECT_EQ(P({0, 2, 3}), positions(some));
    Mm flat = s(c_p);
    EXPECT_EQ(s.pr, flat.pr);
    EXPECT_TRUE(flat.issparse());
    EXPECT_EQ(D({2, 12, 1, 1, 1}), dims(flat));
    Mm k = named(Mm(13.0), "k"), z = named(Mm(0.0), "z");
    EXPECT_ERROR(Mm(s(k)),
                 "Index k out of matrix s. Index value was 13 however the indexed matrix has only 12 "
                 "elements.");
    EXPECT_ERROR(Mm(s(z)), "index z out of matrix s. Index value was 0 which is not positive.");
    Mm v = named(sparse(row({0, 3, 0})), "v");
    EXPECT_ERROR(Mm(v(4.0)),
                 "Index =4 out of vector v. Index value was 4 however the indexed vector has only 3 "
                 "elements.");
    // A complex read that selects only real entries is real.
    Mm c = sparse(row({1, 2}));
    c.getcomplex();
    c.addi()[1] = 3;
    EXPECT_EQ(nullptr, Mm(c(1.0)).pi);
    EXPECT_EQ(V{3}, imag_values(Mm(c(2.0))));
}

TEST(SubscriptSparse, SparseIndices) {
    // On the plain routes a sparse index is made full, in the index matrix itself.
    Mm x = row({10, 20, 30});
    Mm idx = sparse(row({3, 1}));
    EXPECT_EQ(V({30, 10}), values(Mm(x(idx))));
    EXPECT_FALSE(idx.issparse());
    // On the general route a sparse index with stored zeros is reported and read by its entries.
    Mm s = named(sample(), "s");
    Mm holes = named(sparse(row({0, 5})), "h");
    EXPECT_ERROR(Mm(s(holes)), "Sparse index h out of matrix s. Index value was 0.");
    EXPECT_TRUE(holes.issparse());
    ak_test::Recorder rec(ak_test::Recorder::kErrors);
    Mm read = s(holes);
    EXPECT_EQ(1u, rec.errors.size());
    EXPECT_EQ(V{5}, values(read));
}
