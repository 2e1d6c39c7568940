// Sparse matrices in use: element operations mixing sparse and full operands in every sparse group,
// the compressed-column lists, column orderings, functions on the entries and random patterns.
#include <climits>
#include <cmath>
#include <string>
#include <vector>

#include "arklib.h"
#include "test_support.h"
#include "tests/core/engine_test_support.h"

using namespace engine_test;

namespace {

std::vector<int> positions(const Mm& s) { return std::vector<int>(s.index, s.index + s.nnz); }

// 2 at (1,1), -4 at (3,2), 5 at (2,3).
Mm sparse_a() { return sparse(mat(3, 3, {2, 0, 0, 0, 0, 5, 0, -4, 0})); }
// Overlaps sparse_a at (1,1) and (3,2).
Mm sparse_b() { return sparse(mat(3, 3, {-2, 1, 0, 0, 0, 0, 0, 3, 0})); }
Mm full_f() { return mat(3, 3, {1, 0, 3, 0, 0, -5, 2, 7, 0}); }

// The result of an operation on sparse operands must hold the values of the same operation on the
// full operands, and be sparse or full as its group says.
void expect_like_full(const Mm& got, const Mm& want, bool sparse_result, const std::string& what) {
    SCOPED_TRACE(what);
    EXPECT_EQ(sparse_result, got.flags.sparse != 0);
    Mm g = full(got);
    ASSERT_EQ(dims(want), dims(g));
    EXPECT_VALUES(g, re(want));
    std::vector<double> gi = im(g), wi = im(want);
    if (wi.empty()) wi.assign(g.nnz, 0.0);
    if (gi.empty()) gi.assign(g.nnz, 0.0);
    EXPECT_EQ(wi, gi);
    if (got.flags.sparse) {
        for (int k = 0; k < got.nnz; ++k)
            EXPECT_TRUE(got.addr()[k] != 0.0 || (got.pi && got.addi()[k] != 0.0));
    }
}

template <typename F>
struct named {
    const char* name;
    F f;
};
using binary_case = named<Mm (*)(const Mm&, const Mm&)>;
using unary_case = named<Mm (*)(const Mm&)>;

// Every pairing of a sparse operand with a sparse, full or scalar one.
void check_binary(const binary_case& c, bool product_like) {
    Mm a = sparse_a(), b = sparse_b(), f = full_f(), two(2.0);
    std::string n = c.name;
    expect_like_full(c.f(a, b), c.f(full(a), full(b)), true, n + "(sparse, sparse)");
    expect_like_full(c.f(a, f), c.f(full(a), f), true, n + "(sparse, full)");
    expect_like_full(c.f(f, a), c.f(f, full(a)), true, n + "(full, sparse)");
    expect_like_full(c.f(a, two), c.f(full(a), two), true, n + "(sparse, scalar)");
    expect_like_full(c.f(two, a), c.f(two, full(a)), true, n + "(scalar, sparse)");
    if (product_like) {
        // Worked on the stored values: the pattern can only shrink.
        Mm r = c.f(a, two);
        for (int p : positions(r)) EXPECT_NE(-1, a.search(p)) << n;
    }
}

}  // namespace

TEST(SparseOperations, EachGroupKeepsItsPatternAndKind) {
    const unary_case cases[] = {
        {"sign", sign}, {"sqrt", sqrt}, {"imag", imag}, {"isnan", isnan}, {"floor", floor}};
    Mm a = sparse_a();
    for (const unary_case& c : cases) {
        Mm r = c.f(a);
        expect_like_full(r, c.f(full(a)), true, c.name);
        for (int p : positions(r)) EXPECT_NE(-1, a.search(p)) << c.name;
    }
    EXPECT_TRUE(sqrt(a).pi);  // the negative entry has a complex root

    // Binary operations: product-like, union and full groups.
    for (const binary_case& c : {binary_case{"times", times}, binary_case{"and", mand}})
        check_binary(c, true);
    const binary_case unions[] = {{"max", max}, {"lt", lt}, {"or", mor}, {"xor", mxor}, {"atan2", atan2}};
    for (const binary_case& c : unions) check_binary(c, false);
    const binary_case fulls[] = {
        {"eq", eq}, {"ge", ge}, {"rdivide", rdivide}, {"mod", mod}, {"power", power}};
    for (const binary_case& c : fulls) check_binary(c, false);

    // plus and minus of a sparse and a full operand are full; of two sparse ones, sparse.
    Mm b = sparse_b(), f = full_f();
    expect_like_full(a + f, full(a) + f, false, "plus(sparse, full)");
    expect_like_full(f - a, f - full(a), false, "minus(full, sparse)");
    expect_like_full(a - Mm(1.0), full(a) - Mm(1.0), false, "minus(sparse, scalar)");
    expect_like_full(a - b, full(a) - full(b), true, "minus(sparse, sparse)");

    // Whole numbers for the bit family.
    Mm p = sparse(mat(2, 2, {6, 0, 0, 3})), q = mat(2, 2, {3, 5, 0, 1});
    expect_like_full(mbitand(p, q), mbitand(full(p), q), true, "bitand");
    expect_like_full(bitxor(q, p), bitxor(q, full(p)), true, "bitxor");

    // Functions with f(0) not 0 are computed in full and stored in full.
    for (const unary_case& c : {unary_case{"cos", cos}, unary_case{"not", mnot}, unary_case{"acos", acos}})
        expect_like_full(c.f(a), c.f(full(a)), true, c.name);
    EXPECT_EQ(9, cos(a).nnz);

    // Reductions.
    const unary_case reductions[] = {
        {"sum", sum}, {"prod", prod}, {"all", all}, {"min", min}, {"cumsum", cumsum}};
    for (const unary_case& c : reductions) expect_like_full(c.f(a), c.f(full(a)), true, c.name);
    expect_like_full(sum(a, Mm(2.0)), sum(full(a), Mm(2.0)), true, "sum along 2");
    Mm index, full_index;
    Mm m = max(a, i_o, index);
    max(full(a), i_o, full_index);
    expect_like_full(m, max(full(a)), true, "max with index");
    EXPECT_EQ(re(full_index), re(full(index)));

    // An empty operand follows the empty rules.
    EXPECT_EQ(0, (times(a, Mm())).size());
    Mm s = sum(sparse(Mm()));
    EXPECT_EQ(0.0, full(s).r());
}

TEST(SparseOperations, StoredAndUnionWorkStaysWithTheEntries) {
    // 100000 x 20000 has far more elements than full may build: only work on the entries can pass.
    Mm big = sparse(row({1, 99999, 5}), row({1, 20000, 7}), row({-3, 4, 2}), Mm(100000.0), Mm(20000.0));
    Mm other = sparse(row({99999, 8}), row({20000, 8}), row({1, 1}), Mm(100000.0), Mm(20000.0));
    Mm r;
    EXPECT_NO_ERROR(r = big + other);
    EXPECT_VALUES(r, {-3, 2, 1, 5});
    EXPECT_NO_ERROR(r = max(big, other));
    EXPECT_VALUES(r, {2, 1, 4});  // max(-3, 0) is 0: not stored
    EXPECT_NO_ERROR(r = times(big, other));
    EXPECT_VALUES(r, {4});
    Mm j;
    EXPECT_NO_ERROR(r = find(big, i_o, j));
    EXPECT_VALUES(r, {1, 5, 99999});
    EXPECT_VALUES(j, {1, 7, 20000});
}

TEST(SparseColumns, IrJcListsAndTheEmptyColumnRule) {
    // 4x5 with entries at (2,2), (4,2), (1,4), (3,4), (4,4): columns 1, 3 and 5 are empty.
    Mm s = sparse(row({2, 4, 1, 3, 4}), row({2, 2, 4, 4, 4}), row({7, -1, 3, 2.5, 9}), Mm(4.0), Mm(5.0));
    int* ir = getIr(s);
    int* jc = getJc(s);
    EXPECT_EQ((std::vector<int>{1, 3, 0, 2, 3}), std::vector<int>(ir, ir + 5));
    EXPECT_EQ((std::vector<int>{0, 0, 2, 2, 5, 5, -1}), std::vector<int>(jc, jc + 7));
    ak_internal::sparse_extent e;
    freeIrJc(nullptr, ak_internal::sparse_column_starts(s, &e));
    EXPECT_EQ((std::vector<int>{0, 3, 1, 3}), (std::vector<int>{e.min_row, e.max_row, e.min_col, e.max_col}));

    // The lists give the positions back; another holder of the storage keeps its own.
    Mm t = spalloc(Mm(4.0), Mm(5.0), Mm(5.0));
    Mm held = t;
    setIrJc(t, ir, jc);
    EXPECT_EQ(positions(s), positions(t));
    EXPECT_EQ((std::vector<int>{0, 1, 2, 3, 4}), positions(held));
    freeIrJc(ir, jc);

    Mm none = spzeros(Mm(3.0), Mm(4.0));
    int* jn = ak_internal::sparse_column_starts(none, &e);
    EXPECT_EQ(std::vector<int>(6, 0), std::vector<int>(jn, jn + 6));
    EXPECT_EQ(INT_MAX, e.min_row);
    EXPECT_EQ(-1, e.max_col);
    freeIrJc(getIr(none), jn);

    Mm f = row({1, 2});
    EXPECT_ERROR(getIr(f), "getIr: sparse matrix expected, but matrix (temporary) is full");
    EXPECT_ERROR(setIrJc(f, nullptr, nullptr),
                 "IrJc: sparse matrix expected, but matrix (temporary) is full");

    // colperm orders by count, stably: column counts 2, 0, 3, 2.
    s = sparse(mat(3, 4, {1, 0, 1, 1, 1, 0, 1, 0, 0, 0, 1, 1}));
    EXPECT_VALUES(colperm(s), {2, 1, 4, 3});
    EXPECT_VALUES(colmmd(full(s)), {2, 1, 4, 3});
    EXPECT_EQ((std::vector<int>{1, 4, 1, 1}), dims(colperm(s)));
    int d3[3] = {2, 2, 2};
    EXPECT_ERROR(colperm(Mm(0, 0, 0, 3, d3, ak_double)),
                 "colperm: 2-d matrix expected, but matrix (temporary) has 3 dimensions");
}

namespace {

double nargout_seen = -1.0;

// A program's function table with two functions of one input: "twice" and "dec" (x - 1).
Mm test_feval(Mm name, Mm args, i_o_t, Mm& out1, Mm&, Mm&, Mm&, Mm&, Mm&) {
    nargout_seen = nargout_val;
    char text[16];
    Mstr(name, text, sizeof text);
    Mm x = args.mr(1);
    out1 = std::string(text) == "twice" ? times(x, Mm(2.0)) : minus(x, Mm(1.0));
    return out1;
}

}  // namespace

TEST(SparseFunctions, SpfunAndRandomPatterns) {
    ak_feval_func_t saved = feval_func;
    feval_func = test_feval;
    nargout_val = 3.0;
    Mm a = sparse_a();
    Mm r = spfun(TM("twice"), a);
    EXPECT_EQ(1.0, nargout_seen);
    EXPECT_EQ(3.0, nargout_val);
    ASSERT_TRUE(r.flags.sparse);
    EXPECT_EQ(positions(a), positions(r));
    EXPECT_VALUES(r, {4, -8, 10});
    // Where the function gives 0 the entry goes; zeros of s stay zeros although dec(0) is -1.
    Mm d = spfun(TM("dec"), sparse(mat(2, 2, {1, 0, 0, 3})));
    EXPECT_EQ(std::vector<int>{3}, positions(d));
    EXPECT_VALUES(d, {2});
    feval_func = saved;
    EXPECT_ERROR(spfun(TM("twice"), a), "feval was not linked with the program.");
    EXPECT_ERROR(spfun(a), "spfun does not accept 1 input");

    // sprand and sprandn keep the pattern and draw the values in storage order.
    randM(TM("state"), Mm(7.0));
    r = sprand(a);
    randM(TM("state"), Mm(7.0));
    std::vector<double> draws(3);
    ak_internal::rand_fill(draws.data(), 3);
    EXPECT_EQ(positions(a), positions(r));
    EXPECT_EQ(draws, re(r));

    randn(TM("state"), Mm(3.0));
    Mm rn = sprandn(full(a));
    randn(TM("state"), Mm(3.0));
    ak_internal::randn_fill(draws.data(), 3);
    EXPECT_EQ(draws, re(rn));

    // About m*n*density entries; positions drawn twice are merged, so a little fewer.
    Mm u = sprand(Mm(100.0), Mm(50.0), Mm(0.1));
    EXPECT_EQ((std::vector<int>{100, 50, 1, 1}), dims(u));
    EXPECT_LE(u.nnz, 500);
    EXPECT_GE(u.nnz, 420);
    for (int k = 1; k < u.nnz; ++k) EXPECT_LT(u.index[k - 1], u.index[k]);
    EXPECT_ERROR(sprand(Mm(1.0), Mm(1.0)), "sprand does not accept 2 inputs");

    ak_test::Recorder rec;  // sparsfun only prints
    EXPECT_EQ(0, sparsfun(Mm(1.0), Mm(2.0)).size());
    EXPECT_EQ("sparsfun called\n", rec.printed);
}
