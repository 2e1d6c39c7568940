// Building and reading sparse matrices: sparse in all its forms, full, the counts, find, the
// coordinate list round trip and the constructors.
#include <cmath>
#include <vector>

#include "arklib.h"
#include "test_support.h"
#include "tests/core/engine_test_support.h"

using namespace engine_test;

namespace {

std::vector<int> positions(const Mm& s) { return std::vector<int>(s.index, s.index + s.nnz); }

// A 4x5 sparse matrix with columns 1, 3 and 5 empty (one-based): entries 7 at (2,2), -1 at (4,2),
// 3 at (1,4), 2.5 at (3,4) and 9 at (4,4).
Mm sample() {
    return sparse(row({2, 4, 1, 3, 4}), row({2, 2, 4, 4, 4}), row({7, -1, 3, 2.5, 9}), Mm(4.0), Mm(5.0));
}

}  // namespace

TEST(SparseBuild, RepeatedPositionsAreAddedAndCancellationsVanish) {
    EXPECT_EQ(0, sparse(row({1, 1}), row({1, 1}), row({2, -2})).nnz);
    // Unordered input with a cancelling pair among entries that stay; more entries than elements.
    Mm m = sparse(row({3, 1, 2, 1, 3, 2}), row({1, 1, 1, 1, 1, 2}), row({30, 10, 20, -10, 1, 4}));
    ASSERT_TRUE(m.flags.sparse);
    EXPECT_EQ((std::vector<int>{3, 2, 1, 1}), dims(m));
    EXPECT_EQ((std::vector<int>{1, 2, 4}), positions(m));
    EXPECT_VALUES(m, {20, 31, 4});

    // Positions beyond 16 bits, out of order and repeated.
    Mm h = sparse(row({70000, 1, 3, 70000}), row({2, 1, 2, 2}), row({1, 5, 6, 2}), Mm(70000.0), Mm(2.0));
    EXPECT_EQ((std::vector<int>{0, 70002, 139999}), positions(h));
    EXPECT_VALUES(h, {5, 6, 3});

    // Complex values are added in both halves.
    Mm c = sparse(row({1, 1}), row({2, 2}), crow({1, 2}, {3, -3}));
    ASSERT_TRUE(c.pi);
    EXPECT_VALUES(c, {3});
    EXPECT_EQ(0.0, c.addi()[0]);

    // A scalar serves every entry, wherever it stands.
    Mm r = sparse(Mm(2.0), row({1, 2, 3}), Mm(7.0));
    EXPECT_EQ((std::vector<int>{2, 3, 1, 1}), dims(r));
    EXPECT_EQ((std::vector<int>{1, 3, 5}), positions(r));
    EXPECT_VALUES(r, {7, 7, 7});
}

TEST(SparseBuild, RoundingAndSizeForms) {
    Mm b = sparse(Mm(1.6), Mm(1.0), Mm(1.0));  // indices and sizes round to nearest, a half up
    EXPECT_EQ((std::vector<int>{2, 1, 1, 1}), dims(b));
    EXPECT_EQ(std::vector<int>{1}, positions(b));
    Mm c = sparse(Mm(2.5), Mm(1.0), Mm(4.0), Mm(2.6), Mm(1.2));
    EXPECT_EQ((std::vector<int>{3, 1, 1, 1}), dims(c));
    EXPECT_EQ(std::vector<int>{2}, positions(c));
    EXPECT_TRUE(sparse(Mm(1.0), Mm(1.0), gt(Mm(2.0), Mm(1.0))).flags.logical);  // a logical v stays so

    EXPECT_EQ((std::vector<int>{3, 4, 1, 1}),
              dims(sparse(row({1, 2}), row({1, 1}), row({5, 6}), Mm(3.0), Mm(4.0), Mm(100.0))));
    // Nothing to size the matrix by: a sparse zero scalar; no entries but a size.
    Mm e = sparse(Mm(), Mm(), Mm());
    EXPECT_EQ((std::vector<int>{1, 1, 1, 1}), dims(e));
    EXPECT_EQ(0, e.nnz);
    EXPECT_EQ((std::vector<int>{2, 3, 1, 1}), dims(sparse(Mm(), Mm(), Mm(), Mm(2.0), Mm(3.0))));
    // Sparse and byte arguments are read as numbers.
    Mm n = sparse(bytes({2, 1}), sparse(row({1, 3})), bytes({4, 5}));
    EXPECT_EQ((std::vector<int>{2, 3, 1, 1}), dims(n));
    EXPECT_EQ((std::vector<int>{1, 4}), positions(n));
    EXPECT_VALUES(n, {4, 5});
}

TEST(SparseBuild, BoundsAndArgumentMessages) {
    EXPECT_ERROR(sparse(Mm(0.0), Mm(1.0), Mm(1.0)), "sparse: non-positive row index encountered");
    EXPECT_ERROR(sparse(Mm(std::nan("")), Mm(1.0), Mm(1.0), Mm(3.0), Mm(3.0)),
                 "sparse: non-positive row index encountered");
    EXPECT_ERROR(sparse(Mm(3.4), Mm(0.0), Mm(1.0), Mm(3.0), Mm(3.0)),
                 "sparse: non-positive column index encountered");
    EXPECT_ERROR(sparse(Mm(1.0), Mm(3.5), Mm(1.0), Mm(3.0), Mm(3.0)),
                 "sparse: out of bounds column index encountered");
    // The row is tested before the column.
    EXPECT_ERROR(sparse(Mm(9.0), Mm(9.0), Mm(1.0), Mm(3.0), Mm(3.0)),
                 "sparse: out of bounds row index encountered");
    EXPECT_ERROR(sparse(row({1, 2}), row({1, 2, 3}), Mm(1.0)), "sparse: i,j and v must be same size");
    EXPECT_ERROR(sparse(Mm(1.0), Mm(1.0), Mm(1.0), Mm(1.0)), "sparse does not accept 4 inputs");
    EXPECT_ERROR(sparse(Mm(0, 0, 0, 1, 1, ak_mm), Mm(1.0), Mm(1.0)),
                 "sparse: numeric data expected, but matrix (temporary) is not");
    Mm unset(i_o, "unset", 0);
    EXPECT_ERROR(sparse(unset), "variable 'unset' was used without a value");
    EXPECT_ERROR(sparse(Mm(1.0), Mm(1.0), Mm(1.0), Mm(70000.0), Mm(70000.0)), "Out of memory!");
}

TEST(SparseConvert, FullAndSparseAreInverse) {
    Mm s = sparse(mat(2, 3, {0, 0, 0, 0, 0, 0}));
    ASSERT_TRUE(s.flags.sparse);
    EXPECT_EQ(0, s.nnz);
    EXPECT_EQ((std::vector<int>{2, 3, 1, 1}), dims(s));
    EXPECT_FALSE(full(s).flags.sparse);
    EXPECT_VALUES(full(s), {0, 0, 0, 0, 0, 0});

    // NaN is kept; an element with only an imaginary half is kept.
    Mm sc = sparse(crow({0, NAN, 0, 4}, {2, 0, 0, 0}));
    EXPECT_EQ((std::vector<int>{0, 1, 3}), positions(sc));
    Mm back = full(sc);
    EXPECT_VALUES(back, {0, NAN, 0, 4});
    EXPECT_EQ((std::vector<double>{2, 0, 0, 0}), im(back));
    EXPECT_EQ(sc.pr, sparse(sc).pr);  // already sparse: the same storage
    Mm full_in = row({1, 2});
    EXPECT_EQ(full_in.pr, full(full_in).pr);

    Mm b = sparse(bytes({0, 7, 0}));
    EXPECT_EQ(ak_double, b.flags.type);
    EXPECT_EQ(std::vector<int>{1}, positions(b));

    // Too many elements for a full matrix, even without entries.
    EXPECT_ERROR(full(spzeros(Mm(10001.0), Mm(10000.0))), "full: matrix too large");
    EXPECT_ERROR(full(sparse(Mm(1.0), Mm(1.0), Mm(5.0), Mm(20000.0), Mm(5000.0))), "full: matrix too large");
}

TEST(SparseCount, NnzNzmaxNonzerosFind) {
    EXPECT_EQ(1.0, nnz(row({NAN, 0})).r());
    EXPECT_EQ(2.0, nnz(crow({0, 1, 0}, {1, 0, 0})).r());
    EXPECT_EQ(6.0, nzmax(mat(2, 3, {0, 0, 0, 0, 0, 0})).r());
    // Stored zeros are room, not non-zeros.
    Mm a = spalloc(Mm(3.0), Mm(3.0), Mm(4.0));
    EXPECT_EQ(0.0, nnz(a).r());
    EXPECT_EQ(5.0, nzmax(a).r());
    EXPECT_ERROR(nnz(Mm(0, 0, 0, 1, 1, ak_mm)), "nnz: numeric data expected, but matrix (temporary) is not");
    Mm v = nonzeros(row({0, 3, 0, -1}));
    EXPECT_EQ((std::vector<int>{2, 1, 1, 1}), dims(v));
    EXPECT_VALUES(v, {3, -1});
    EXPECT_VALUES(nonzeros(sample()), {7, -1, 3, 2.5, 9});

    Mm r = find(row({0, 5, 7}));  // a row gives a row, anything else a column
    EXPECT_EQ((std::vector<int>{1, 2, 1, 1}), dims(r));
    EXPECT_VALUES(r, {2, 3});
    EXPECT_EQ((std::vector<int>{2, 1, 1, 1}), dims(find(mat(2, 2, {1, 0, 0, 2}))));
    Mm j;
    Mm i = find(sample(), i_o, j);
    EXPECT_EQ((std::vector<int>{5, 1, 1, 1}), dims(i));
    EXPECT_VALUES(i, {2, 4, 1, 3, 4});
    EXPECT_VALUES(j, {2, 2, 4, 4, 4});
    Mm val;
    find(crow({0, 2, 0, 0}, {0, 0, 0, -1}), i_o, j, val);
    EXPECT_VALUES(j, {2, 4});
    EXPECT_VALUES(val, {2, 0});
    EXPECT_EQ((std::vector<double>{0, -1}), im(val));
    // A 2x2x2 array: columns continue over the pages.
    int d3[3] = {2, 2, 2};
    Mm a3(0, 0, 0, 3, d3, ak_double);
    for (int k = 0; k < 8; ++k) a3.addr()[k] = k == 6 ? 1.0 : 0.0;
    EXPECT_VALUES(find(a3, i_o, j), {1});
    EXPECT_VALUES(j, {4});
    EXPECT_ERROR(find(Mm(0, 0, 0, 1, 1, ak_mm)),
                 "find: numeric data expected, but matrix (temporary) is not");
}

TEST(SparseCoordinates, RoundTripRealAndComplex) {
    Mm s = sample();
    Mm coo = sp2coo(s);
    EXPECT_EQ((std::vector<int>{6, 3, 1, 1}), dims(coo));
    EXPECT_VALUES(coo, {2, 4, 1, 3, 4, 4, 2, 2, 4, 4, 4, 5, 7, -1, 3, 2.5, 9, 0});
    Mm back = spconvert(coo);
    ASSERT_TRUE(back.flags.sparse);
    EXPECT_EQ(dims(s), dims(back));
    EXPECT_EQ(positions(s), positions(back));
    EXPECT_VALUES(back, {7, -1, 3, 2.5, 9});

    Mm c = sparse(crow({1, 0, 0, 3, 0}, {0, 0, 0, -2, 0}));
    Mm cc = sp2coo(c);
    EXPECT_EQ((std::vector<int>{3, 4, 1, 1}), dims(cc));
    Mm cb = spconvert(cc);
    EXPECT_EQ(dims(c), dims(cb));  // a row stays a row
    EXPECT_EQ(positions(c), positions(cb));
    EXPECT_EQ((std::vector<double>{0, -2}), im(cb));

    // Three complex columns keep their imaginary half.
    Mm ts = spconvert(crow({2, 2, 5}, {0, 0, 1}));
    EXPECT_EQ((std::vector<int>{2, 2, 1, 1}), dims(ts));
    EXPECT_EQ(std::vector<int>{3}, positions(ts));
    EXPECT_EQ(1.0, ts.addi()[0]);

    EXPECT_TRUE(spconvert(Mm()).flags.sparse);
    // An empty sparse matrix comes back through its size row alone; entries of other values must
    // still lie inside.
    Mm none = spconvert(sp2coo(Mm(0, 1, 0, 0, 3, ak_double)));
    EXPECT_TRUE(none.flags.sparse);
    EXPECT_EQ(0, none.size());
    EXPECT_ERROR(spconvert(row({0, 1, 5})), "sparse: non-positive row index encountered");
    Mm two(mat(2, 2, {1, 1, 2, 2}), "d");
    EXPECT_ERROR(spconvert(two), "spconvert: matrix 'd' must have 3 or 4 columns");
}

TEST(SparseConstructors, SpeyeSpzerosSponesSpalloc) {
    Mm e = speye(Mm(2.0), Mm(3.0));
    EXPECT_EQ((std::vector<int>{2, 3, 1, 1}), dims(e));
    EXPECT_EQ((std::vector<int>{0, 3}), positions(e));
    EXPECT_VALUES(e, {1, 1});
    EXPECT_EQ((std::vector<int>{0, 4}), positions(speye(row({3, 2}))));
    EXPECT_EQ((std::vector<int>{1, 1, 1, 1}), dims(speye()));
    EXPECT_ERROR(speye(row({2, 2, 2})), "speye: sparse matrices have two dimensions");

    EXPECT_EQ((std::vector<int>{2, 3, 1, 1}), dims(spzeros(row({2, 3}))));
    EXPECT_EQ((std::vector<int>{0, 0, 0, 0}), dims(spzeros(Mm())));
    EXPECT_TRUE(spzeros(Mm()).flags.sparse);

    Mm o = spones(sample());
    EXPECT_EQ(positions(sample()), positions(o));
    EXPECT_VALUES(o, {1, 1, 1, 1, 1});
    EXPECT_EQ((std::vector<int>{1, 2}), positions(spones(crow({0, 0, 2}, {0, 3, 0}))));

    Mm a = spalloc(Mm(3.0), Mm(2.0), Mm(3.6));
    EXPECT_EQ((std::vector<int>{3, 2, 1, 1}), dims(a));
    EXPECT_EQ((std::vector<int>{0, 1, 2, 3}), positions(a));
    EXPECT_VALUES(a, {0, 0, 0, 0});
    EXPECT_EQ(4, spalloc(Mm(2.0), Mm(2.0), Mm(50.0)).nnz);
    EXPECT_ERROR(spalloc(Mm(1.0)), "spalloc does not accept 1 input");
}
