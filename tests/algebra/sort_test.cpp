// sort, sortrows and the two sorters: NaN and Inf placement, stable indices, complex ties, shapes.
#include <algorithm>
#include <cmath>
#include <functional>
#include <initializer_list>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "arklib.h"
#include "test_support.h"
#include "tests/core/engine_test_support.h"

using namespace engine_test;

namespace {

Mm shaped(std::vector<int> dims, std::vector<double> v) {
    Mm m(0, 0, 0, static_cast<int>(dims.size()), dims.data(), ak_double);
    std::copy(v.begin(), v.end(), m.addr());
    return m;
}
Mm col(std::vector<double> v) { return shaped({static_cast<int>(v.size()), 1}, v); }

Mm complex_col(std::vector<double> re, std::vector<double> im) {
    Mm m(1, 0, 0, static_cast<int>(re.size()), 1, ak_double);
    std::copy(re.begin(), re.end(), m.addr());
    std::copy(im.begin(), im.end(), m.addi());
    return m;
}

std::vector<int> shape(const Mm& m) { return std::vector<int>(m.dims, m.dims + m.ndims); }

std::string text(const Mm& m) {
    char buffer[256];
    return Mstr(m, buffer, sizeof buffer);
}

const double inf = INFINITY;

}  // namespace

TEST(SortValues, NaNPlacementShapesAndKinds) {
    EXPECT_VALUES(sort(col({NAN, -inf, 0, inf, NAN, -2})), {-inf, -2, 0, inf, NAN, NAN});

    Mm y, i;
    sort(row({NAN, 2, NAN}), i_o, y, i);
    EXPECT_VALUES(y, {2, NAN, NAN});
    EXPECT_VALUES(i, {2, 1, 3});
    // NaN orders as Inf among the real values and keeps its row number in the last places.
    sort(col({NAN, inf, 1}), i_o, y, i);
    EXPECT_VALUES(y, {1, inf, NAN});
    EXPECT_VALUES(i, {3, 1, 2});

    // Each column by itself; a row vector along its length, staying a row for values and index.
    Mm m = shaped({3, 2}, {3, 1, 2, 9, 7, 8});
    EXPECT_VALUES(sort(m), {1, 2, 3, 7, 8, 9});
    sort(row({4, 1, 3}), i_o, y, i);
    EXPECT_EQ(shape(y), shape(i));
    EXPECT_EQ(shape(i), (std::vector<int>{1, 3}));
    EXPECT_VALUES(i, {2, 3, 1});

    // Strings stay strings, bytes stay bytes, sparse input gives a full result.
    sort(TM("cab"), i_o, y, i);
    EXPECT_TRUE(y.isstr());
    EXPECT_EQ(text(y), "abc");
    Mm sb = sort(bytes({9, 250, 3}));
    ASSERT_EQ(sb.gettype(), ak_uchar);
    EXPECT_VALUES(sb, {3, 9, 250});
    Mm sp = sparse(col({0, 3, 0, -1}));
    EXPECT_FALSE(sort(sp).issparse());
    sort(sp, i_o, y, i);
    EXPECT_VALUES(y, {-1, 0, 0, 3});
    EXPECT_VALUES(i, {4, 1, 3, 2});

    // Empty input: empty results; the input is never written through.
    sort(Mm(), i_o, y, i);
    EXPECT_EQ(y.size() + i.size(), 0);
    Mm shared = col({3, 2, 1});
    Mm alias = shared;
    sort(shared);
    sort(shared, i_o, y, i);
    EXPECT_VALUES(alias, {3, 2, 1});
}

TEST(SortValues, MatchesStdSortOnManyInputs) {
    std::mt19937_64 gen(42);
    std::uniform_real_distribution<double> uniform(-1, 1);
    // Element k of an input of length n, for each kind of input.
    const std::vector<std::function<double(int, int)>> kinds = {
        [&](int, int) { return uniform(gen); },
        [&](int, int) { return static_cast<double>(gen() % 5); },  // many ties
        [](int k, int) { return k; },                              // sorted
        [](int k, int n) { return n - k; },                        // reversed
        [](int k, int n) { return k < n / 2 ? k : n - k; },        // organ pipe
        [](int, int) { return 7.0; },                              // all equal
    };
    for (int n : {1, 2, 7, 8, 40, 41, 1000, 100000}) {
        for (std::size_t kind = 0; kind < kinds.size(); ++kind) {
            std::vector<double> v(n);
            for (int k = 0; k < n; ++k) v[k] = kinds[kind](k, n);
            std::vector<double> want = v;
            std::sort(want.begin(), want.end());
            ak_internal::sort_column(v.data(), n);
            EXPECT_EQ(v, want) << "n=" << n << " kind=" << kind;
        }
    }
}

TEST(SortIndex, StableOnTies) {
    // Against std::stable_sort on inputs with many ties, both for the fast path of real keys and
    // for the shell sort.
    Mm y, i;
    std::mt19937_64 gen(7);
    for (int n : {5, 13, 14, 41, 1000, 50000}) {
        std::vector<double> v(n);
        for (double& x : v) x = static_cast<double>(gen() % 17) - 8.0;
        v[n / 2] = -0.0;  // equal to 0: it keeps its place among the zeros
        sort(col(v), i_o, y, i);
        std::vector<int> want(n);
        std::iota(want.begin(), want.end(), 0);
        std::stable_sort(want.begin(), want.end(), [&](int a, int b) { return v[a] < v[b]; });
        for (int k = 0; k < n; ++k) {
            ASSERT_EQ(i.addr()[k], want[k] + 1) << "n=" << n << " k=" << k;
            ASSERT_EQ(y.addr()[k], v[want[k]]);
        }
        // The shell sort itself: an all-zero second key leaves the stopping rule that of real keys.
        std::vector<int> order(n);
        std::vector<double> zero(n, 0.0);
        ak_internal::index_sort(v.data(), zero.data(), n, order.data());
        EXPECT_EQ(order, want) << "n=" << n;
    }
}

TEST(SortIndex, ComplexByModulusThenPhase) {
    Mm y, i;
    // Distinct moduli, then equal moduli met in row order, which are ordered by phase.
    sort(complex_col({3, 0, -1, -5, 0, 5}, {4, 2, 0, 0, 5, 0}), i_o, y, i);
    EXPECT_VALUES(i, {3, 2, 6, 1, 5, 4});
    EXPECT_VALUES(y, {-1, 0, 5, 3, 0, -5});
    EXPECT_EQ(im(y), (std::vector<double>{0, 2, 0, 4, 5, 0}));
    // The shell sort's rule decides ties whose phase and row order disagree: with five values of
    // modulus 5 the gap-4 pass moves row 5 ahead of row 1, after which no phase comparison
    // separates them again, and the column comes back in its first order.
    Mm five = complex_col({-5, 3, 0, -3, 5}, {0, 4, 5, 4, 0});
    sort(five, i_o, y, i);
    EXPECT_VALUES(i, {1, 2, 3, 4, 5});
    EXPECT_VALUES(y, {-5, 3, 0, -3, 5});
    EXPECT_EQ(im(sort(five)), im(y));  // one output gives the same values
    // A complex NaN is not moved to the end: NaN compares false, so it never stops moving left.
    sort(complex_col({1, NAN, 2}, {0, 1, 0}), i_o, y, i);
    EXPECT_VALUES(i, {2, 1, 3});
    EXPECT_TRUE(std::isnan(y.addr()[0]));
    EXPECT_EQ(y.addi()[0], 1.0);
}

TEST(SortDimension, AlongEachDimension) {
    // 2 x 2 x 3, values chosen so that each dimension gives a different result.
    Mm x = shaped({2, 2, 3}, {4, 3, 2, 1, 9, 0, 5, 8, 6, 7, 1, 2});
    Mm y, i;
    sort(x, Mm(3.0), i_o, y, i);
    EXPECT_EQ(shape(i), (std::vector<int>{2, 2, 3}));
    EXPECT_VALUES(y, {4, 0, 1, 1, 6, 3, 2, 2, 9, 7, 5, 8});
    EXPECT_VALUES(i, {1, 2, 3, 1, 3, 1, 1, 3, 2, 3, 2, 2});
    sort(x, Mm(2.0), i_o, y, i);
    EXPECT_VALUES(y, {2, 1, 4, 3, 5, 0, 9, 8, 1, 2, 6, 7});
    EXPECT_VALUES(i, {2, 2, 1, 1, 2, 1, 1, 2, 2, 2, 1, 1});
    EXPECT_VALUES(sort(x, Mm(1.0)), {3, 4, 1, 2, 0, 9, 5, 8, 6, 7, 1, 2});
    // 0 is the first non-singleton dimension: along the row of a row vector.
    EXPECT_VALUES(sort(row({3, 1, 2}), Mm(0.0)), {1, 2, 3});
    EXPECT_VALUES(sort(row({3, 1, 2}), Mm(1.0)), {3, 1, 2});

    EXPECT_ERROR(sort(x, Mm()), "sort: dim argument may not be empty");
    EXPECT_ERROR(sort(x, Mm(4.0)), "sort: dim argument may not be more then the number of dimensions");
    EXPECT_ERROR(sort(x, Mm(-1.0)), "sort: dim argument must be positive");
}

TEST(SortRows, KeyColumnsAndCellsOfStrings) {
    Mm x = shaped({4, 2}, {3, 1, 3, 1, 1, 2, 0, 1});  // rows (3,1) (1,2) (3,0) (1,1)
    Mm y, i;
    sortrows(x, i_o, y, i);
    EXPECT_VALUES(y, {1, 1, 3, 3, 1, 2, 0, 1});
    EXPECT_VALUES(i, {4, 2, 3, 1});
    sortrows(x, Mm(2.0), i_o, y, i);
    EXPECT_VALUES(i, {3, 1, 4, 2});  // ties keep row order
    sortrows(x, row({2, 1}), i_o, y, i);
    EXPECT_VALUES(i, {3, 4, 1, 2});
    EXPECT_EQ(shape(i), (std::vector<int>{4, 1}));
    // NaN in a key column goes last; complex keys by modulus.
    EXPECT_VALUES(sortrows(col({NAN, 2, 1})), {1, 2, NAN});
    Mm c = complex_col({0, 2, 1}, {3, 0, 0});
    sortrows(c, i_o, y, i);
    EXPECT_VALUES(i, {3, 2, 1});
    EXPECT_EQ(im(y), (std::vector<double>{0, 0, 3}));

    // A string matrix stays a string matrix.
    Mm words = shaped({3, 2}, {'b', 'a', 'b', 'y', 'z', 'x'});
    words.setstr(1);
    Mm sw = sortrows(words);
    EXPECT_TRUE(sw.isstr());
    EXPECT_VALUES(sw, {'a', 'b', 'b', 'z', 'x', 'y'});

    EXPECT_ERROR(sortrows(x, Mm(3.0)),
                 "(temporary)((temporary),=3): col index out of matrix. Index was 3 but indexed matrix has 2 "
                 "columns.");
    sortrows(Mm(), i_o, y, i);
    EXPECT_EQ(y.size() + i.size(), 0);

    // A cell of strings sorts as text; a cell that is not all strings does not sort.
    Mm a = TM("pear"), b = TM("apple"), f = TM("fig");
    const Mm* list[3] = {&a, &b, &f};
    sort(cell_from_array(3, list), i_o, y, i);
    ASSERT_EQ(y.gettype(), ak_mm);
    ASSERT_EQ(y.nnz, 3);
    EXPECT_EQ(text(y.mr(1)) + text(y.mr(2)) + text(y.mr(3)), "applefigpear");
    EXPECT_VALUES(i, {2, 3, 1});
    Mm one(1.0);
    const Mm* mixed[2] = {&a, &one};
    EXPECT_ERROR(sort(cell_from_array(2, mixed)),
                 "sort: numeric data expected, but matrix (temporary) is not");
}
