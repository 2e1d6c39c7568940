// The engine on sparse operands: which results stay sparse, which positions they store, and the
// values on the union of two patterns.
#include <gtest/gtest.h>

#include "arklib.h"
#include "tests/core/engine_test_support.h"
#include "tests/test_support.h"

using namespace engine_test;

namespace {

// A 3x3 sparse matrix with 2 at (1,1), -4 at (3,2) and 5 at (2,3).
Mm sample() { return sparse(mat(3, 3, {2, 0, 0, 0, 0, 5, 0, -4, 0})); }

std::vector<int> positions(const Mm& s) { return std::vector<int>(s.index, s.index + s.nnz); }

}  // namespace

TEST(EngineSparse, ProductWithAScalarKeepsThePattern) {
    Mm s = sample();
    Mm r = times(s, Mm(3.0));
    ASSERT_TRUE(r.flags.sparse);
    EXPECT_EQ(positions(s), positions(r));
    EXPECT_VALUES(r, {6, -12, 15});
    EXPECT_EQ(dims(s), dims(r));
    EXPECT_TRUE((Mm(0.5) * s).flags.sparse);  // mtimes with a scalar: the element engine
    Mm z = times(s, Mm(0.0));                 // what became zero is removed
    ASSERT_TRUE(z.flags.sparse);
    EXPECT_EQ(0, z.nnz);
    EXPECT_EQ(dims(s), dims(z));
    Mm n = times(s, Mm(std::nan("")));  // NaN is not zero
    EXPECT_EQ(3, n.nnz);
}

TEST(EngineSparse, ComparisonsAreLogicalAndReductionsKeepTheirShape) {
    Mm s = sample();
    Mm g = ge(s, Mm(0.0));
    ASSERT_TRUE(g.flags.sparse);
    EXPECT_EQ(8, g.nnz);
    EXPECT_TRUE(g.flags.logical);
    Mm sm = sum(s);
    ASSERT_TRUE(sm.flags.sparse);
    EXPECT_EQ((std::vector<int>{1, 3, 1, 1}), dims(sm));
    EXPECT_VALUES(full(sm), {2, -4, 5});
}

TEST(EngineSparse, UnionOfTwoPatterns) {
    Mm a = sample();
    Mm b = sparse(mat(3, 3, {-2, 1, 0, 0, 0, 0, 0, 0, 0}));
    Mm p = a + b;  // (1,1) cancels and is removed; (1,2) comes from b
    ASSERT_TRUE(p.flags.sparse);
    EXPECT_VALUES(full(p), {0, 0, 0, 1, 0, -4, 0, 5, 0});
    EXPECT_EQ(3, p.nnz);
    Mm t = times(a, b);  // product-like: only (1,1) is stored in both
    ASSERT_TRUE(t.flags.sparse);
    EXPECT_EQ(std::vector<int>{0}, positions(t));
    EXPECT_VALUES(t, {-4});
    EXPECT_ERROR(a + sparse(row({1, 2})), "plus: incompatible dimensions of: (temporary), (temporary)");
}

TEST(EngineSparse, ComplexAndScalarOperands) {
    Mm z = sparse(crow({0, 3, 0}, {0, 4, 0}));
    Mm a = abs(z);
    ASSERT_TRUE(a.flags.sparse);
    EXPECT_EQ(nullptr, a.pi);
    EXPECT_VALUES(a, {5});
    Mm s2 = times(z, sparse(Mm(2.0)));
    ASSERT_TRUE(s2.flags.sparse);
    EXPECT_VALUES(s2, {6});
    EXPECT_EQ(std::vector<double>{8}, im(s2));
    Mm e = sparse(Mm(0, 0, 0, 0, 0, ak_double));
    Mm q = (e == e);  // [] == [] is 1 for sparse operands too
    EXPECT_TRUE(q.flags.sparse);
    EXPECT_VALUES(full(q), {1});
}

TEST(EngineSparse, FullMatrixWithASparseScalarFactor) {
    Mm a = row({1, 0, 3});
    Mm two = sparse(Mm(2.0));
    for (const Mm& t : {times(a, two), times(two, a), mand(a, sparse(Mm(1.0)))}) {
        ASSERT_TRUE(t.flags.sparse);
        EXPECT_EQ(2, t.nnz);
    }
    EXPECT_VALUES(full(times(two, a)), {2, 0, 6});
}
