// Sparse reductions, products and transposes computed on the entries: every result must equal the
// same operation on the full form, for random matrices of several shapes and densities and for
// the awkward entries (explicit zeros, -0, NaN, infinities, complex values); and on a matrix whose
// full form could not be made at all, they must still finish with the right values.
#include <algorithm>
#include <climits>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "arklib.h"
#include "test_support.h"
#include "tests/core/engine_test_support.h"

using namespace engine_test;

namespace {

// A sparse m x n matrix holding exactly the entries given (ascending positions), zeros included.
Mm with_entries(int m, int n, const std::vector<int>& pos, const std::vector<double>& re,
                const std::vector<double>& im = {}) {
    Mm s(im.empty() ? 0 : 1, 1, static_cast<int>(pos.size()), m, n, ak_double);
    for (std::size_t k = 0; k < pos.size(); ++k) {
        s.index[k] = pos[k];
        s.addr()[k] = re[k];
        if (!im.empty()) s.addi()[k] = im[k];
    }
    return s;
}

// Random entries at a density, some of them special values when `specials` is set.
Mm random_sparse(std::mt19937& gen, int m, int n, double density, bool complex, bool specials) {
    std::uniform_real_distribution<double> u(0.0, 1.0);
    std::vector<int> pos;
    std::vector<double> re, im;
    const double special[] = {0.0, -0.0, NAN, INFINITY, -INFINITY};
    for (int k = 0; k < m * n; ++k) {
        if (u(gen) >= density) continue;
        pos.push_back(k);
        double v = std::round(u(gen) * 8 - 4);  // small integers: sums are exact in any order
        if (specials && u(gen) < 0.15) v = special[gen() % 5];
        re.push_back(v == 0 && !specials ? 1.0 : v);
        if (complex) im.push_back(std::round(u(gen) * 4 - 2));
    }
    return with_entries(m, n, pos, re, complex ? im : std::vector<double>{});
}

bool same_value(const Mm& a, const Mm& b, int k, double tol) {
    auto close = [tol](double x, double y) {
        return same(x, y) || std::fabs(x - y) <= tol * (1 + std::fabs(y));
    };
    double ai = a.pi ? a.addi()[k] : 0.0, bi = b.pi ? b.addi()[k] : 0.0;
    return close(a.addr()[k], b.addr()[k]) && close(ai, bi);
}

// `got` (sparse when `sparse_result`) holds the values of `want`, a full result. A computed sparse
// result stores no zeros; a rearranged one (`keeps_zeros`) keeps those of its operand.
void expect_equal(const Mm& got, const Mm& want, bool sparse_result, const std::string& what, double tol = 0,
                  bool keeps_zeros = false) {
    SCOPED_TRACE(what);
    ASSERT_EQ(sparse_result, got.flags.sparse != 0);
    if (got.flags.sparse)
        for (int k = 0; k < got.nnz; ++k) {
            if (!keeps_zeros) {
                ASSERT_TRUE(got.addr()[k] != 0.0 || (got.pi && got.addi()[k] != 0.0)) << "a zero is stored";
            }
            if (k) {
                ASSERT_LT(got.index[k - 1], got.index[k]);
            }
        }
    Mm g = full(got), w = full(want);
    ASSERT_EQ(dims(w), dims(g));
    EXPECT_EQ(w.pi != nullptr, g.pi != nullptr);
    for (int k = 0; k < g.nnz; ++k)
        ASSERT_TRUE(same_value(g, w, k, tol)) << "element " << k << ": " << g.addr()[k] << " != " << w.addr()[k];
}

// The matrices the comparisons run over: shapes from a row to a tall column, densities from empty
// to full, real and complex, with and without special values.
std::vector<Mm> samples() {
    std::mt19937 gen(25);
    std::vector<Mm> out;
    const int shapes[][2] = {{1, 7}, {6, 1}, {5, 4}, {9, 13}, {30, 3}};
    for (auto& s : shapes)
        for (double density : {0.0, 0.15, 0.6, 1.0})
            for (int kind = 0; kind < 3; ++kind)
                out.push_back(random_sparse(gen, s[0], s[1], density, kind == 2, kind >= 1));
    out.push_back(with_entries(4, 3, {5}, {-2.5}));                          // one entry
    out.push_back(with_entries(3, 3, {3, 4, 5}, {1, NAN, 2}));               // a full column with NaN
    out.push_back(with_entries(3, 2, {0, 1, 2}, {-0.0, 0.0, -0.0}));         // stored zeros
    out.push_back(with_entries(3, 3, {1, 4, 8}, {INFINITY, -INFINITY, NAN}));  // gaps after infinities
    return out;
}

std::string describe(const Mm& a, int k) {
    return "sample " + std::to_string(k) + " (" + std::to_string(a.dims[0]) + "x" + std::to_string(a.dims[1]) +
           ", " + std::to_string(a.nnz) + " entries" + (a.pi ? ", complex)" : ")");
}

}  // namespace

TEST(SparseScale, ReductionsEqualTheFullForm) {
    using reduction = Mm (*)(const Mm&, const Mm&);
    const struct {
        const char* name;
        reduction f;
    } reductions[] = {{"sum", sum}, {"prod", prod}, {"all", all}, {"any", any}, {"cumsum", cumsum}, {"cumprod", cumprod}};
    std::vector<Mm> list = samples();
    for (std::size_t k = 0; k < list.size(); ++k) {
        const Mm& a = list[k];
        Mm f = full(a);
        for (auto& r : reductions)
            for (double d : {0.0, 1.0, 2.0, 3.0}) {
                std::string what = describe(a, static_cast<int>(k)) + " " + r.name + " dim " + std::to_string(d);
                Mm got = r.f(a, Mm(d)), want = r.f(f, Mm(d));
                expect_equal(got, want, true, what);
                EXPECT_EQ(want.flags.logical, got.flags.logical) << what;
            }
        expect_equal(sum(a), sum(f), true, describe(a, static_cast<int>(k)) + " sum");
        for (double d : {1.0, 2.0, 3.0}) {
            Mm gi, wi, gn, wn;
            Mm gmax = max(a, Mm(), Mm(d), i_o, gi), wmax = max(f, Mm(), Mm(d), i_o, wi);
            Mm gmin = min(a, Mm(), Mm(d), i_o, gn), wmin = min(f, Mm(), Mm(d), i_o, wn);
            std::string what = describe(a, static_cast<int>(k)) + " dim " + std::to_string(d);
            expect_equal(gmax, wmax, true, what + " max");
            expect_equal(gmin, wmin, true, what + " min");
            EXPECT_FALSE(gi.flags.sparse);
            EXPECT_VALUES(gi, re(wi));
            EXPECT_VALUES(gn, re(wn));
        }
        expect_equal(max(a), max(f), true, describe(a, static_cast<int>(k)) + " max");
        for (double d : {1.0, 2.0})
            expect_equal(mean(a, Mm(d)), mean(f, Mm(d)), true, describe(a, static_cast<int>(k)) + " mean");
    }
}

TEST(SparseScale, ReductionsReportTheFullFormsMessages) {
    Mm a = with_entries(3, 4, {1, 7}, {2, 3});
    for (double d : {5.0, -1.0, 1e10}) {
        ak_test::ErrorsThrow guard;
        std::string want, got;
        try {
            sum(full(a), Mm(d));
        } catch (char* m) {
            want = m;
        }
        try {
            sum(a, Mm(d));
        } catch (char* m) {
            got = m;
        }
        EXPECT_FALSE(want.empty());
        EXPECT_EQ(want, got);
    }
    EXPECT_ERROR(max(a, Mm(), Mm()), "max_1: dim argument may not be empty");
    EXPECT_ERROR(prod(a, Mm(7.0)), "prod: dimension=7 does not exist for matrix (temporary)");
    // Nothing stored and nothing found: max of a zero matrix is 0 at the first place of each run.
    Mm idx;
    Mm z = max(spzeros(Mm(3.0), Mm(2.0)), Mm(), Mm(1.0), i_o, idx);
    EXPECT_EQ(0, z.nnz);
    EXPECT_VALUES(idx, {1, 1});
}

TEST(SparseScale, ProductsAndTransposesEqualTheFullForm) {
    std::mt19937 gen(7);
    std::vector<Mm> list = samples();
    for (std::size_t k = 0; k < list.size(); ++k) {
        const Mm& a = list[k];
        Mm f = full(a);
        const int m = a.dims[0], n = a.dims[1];
        std::string what = describe(a, static_cast<int>(k));
        expect_equal(transpose(a), transpose(f), true, what + " transpose", 0, true);
        expect_equal(ctranspose(a), ctranspose(f), true, what + " ctranspose", 0, true);
        // Complex infinities meet zeros differently in the split real products of the full form;
        // the products are compared on finite complex data and on any real data.
        if (a.pi && !std::isfinite(full(sum(sum(abs(a)), Mm(2.0))).addr()[0])) continue;
        for (int cols : {1, 3}) {
            Mm x = full(random_sparse(gen, n, cols, 1.0, k % 2 == 1, false));
            Mm y = full(random_sparse(gen, cols, m, 1.0, false, false));
            // A scalar factor makes the element product, whose sparse result keeps the pattern.
            if (a.size() > 1 && x.size() > 1)
                expect_equal(mtimes(a, x), mtimes(f, x), false, what + " sparse*full", 1e-12);
            if (a.size() > 1 && y.size() > 1)
                expect_equal(mtimes(y, a), mtimes(y, f), false, what + " full*sparse", 1e-12);
        }
        Mm b = random_sparse(gen, n, 4, 0.4, k % 3 == 0, k % 4 == 0 && !a.pi);
        expect_equal(mtimes(a, b), sparse(mtimes(f, full(b))), true, what + " sparse*sparse", 1e-12);
        if (m == n) expect_equal(mtimes(a, a), sparse(mtimes(f, f)), true, what + " A*A", 1e-12);
        expect_equal(mtimes(ctranspose(a), a), sparse(mtimes(ctranspose(f), f)), true, what + " A'*A", 1e-12);
    }
    // A full operand with an infinity meets the zeros of the sparse one.
    Mm s = with_entries(2, 2, {0}, {1});
    Mm v = row({INFINITY, 1});
    expect_equal(mtimes(v, s), mtimes(v, full(s)), false, "infinity in the full factor");
    expect_equal(mtimes(s, transpose(v)), mtimes(full(s), transpose(v)), false, "infinity in the column");
    EXPECT_ERROR(mtimes(s, row({1, 2, 3})), "mtimes: incompatible dimensions of: (temporary), (temporary)");
    // A byte factor gives a byte product, as in the full product.
    Mm bytes_result = mtimes(s, transpose(ak_test::bytes({3, 200})));
    EXPECT_EQ(ak_uchar, bytes_result.flags.type);
    EXPECT_EQ(ak_uchar, mtimes(ak_test::bytes({3, 200}), s).flags.type);
}

TEST(SparseScale, ComparisonsWithAScalarAndJoinsKeepThePattern) {
    Mm a = with_entries(4, 3, {1, 5, 10}, {2, -3, NAN});
    Mm f = full(a);
    expect_equal(gt(a, Mm(0.0)), sparse(gt(f, Mm(0.0))), true, "a > 0");
    expect_equal(ne(a, Mm(0.0)), sparse(ne(f, Mm(0.0))), true, "a ~= 0");
    expect_equal(lt(a, Mm(1.0)), sparse(lt(f, Mm(1.0))), true, "a < 1");
    expect_equal(rdivide(a, Mm(2.0)), sparse(rdivide(f, Mm(2.0))), true, "a ./ 2");
    expect_equal(rdivide(Mm(2.0), a), sparse(rdivide(Mm(2.0), f)), true, "2 ./ a");
    expect_equal(power(a, Mm(2.0)), sparse(power(f, Mm(2.0))), true, "a .^ 2");
    expect_equal(max(a, Mm(0.0)), sparse(max(f, Mm(0.0))), true, "max(a, 0)");
    EXPECT_TRUE(gt(a, Mm(0.0)).flags.logical);
    Mm b = with_entries(4, 2, {0, 7}, {1, 4});
    expect_equal(horzcat(a, b), horzcat(f, full(b)), true, "[a b]");
    Mm c = with_entries(2, 3, {1, 2, 5}, {6, 7, 8});
    expect_equal(vertcat(a, c), vertcat(f, full(c)), true, "[a; c]");
}

// The largest square matrix whose positions fit the 32-bit list, 10^6 entries; its full form would
// take 17 GB, so any step that made it full would fail with "full: matrix too large".
TEST(SparseScale, LargestPositionListWithoutAFullForm) {
    ak_test::ErrorsThrow guard;
    const int n = 46340;
    const int count = 1000000;
    std::mt19937 gen(2026);
    // A band of 21 diagonals and the rest in the first row, at random columns.
    std::vector<double> iv, jv, vv;
    for (int j = 0; j < n && static_cast<int>(iv.size()) < count; ++j)
        for (int i = std::max(0, j - 10); i <= std::min(n - 1, j + 10); ++i) {
            iv.push_back(i + 1);
            jv.push_back(j + 1);
            vv.push_back(1 + static_cast<double>((i * 7 + j * 3) % 11));
        }
    while (static_cast<int>(iv.size()) < count) {
        iv.push_back(1);
        jv.push_back(11 + 1 + static_cast<double>(gen() % (n - 12)));
        vv.push_back(-1);
    }
    Mm I(0, 0, 0, count, 1, ak_double), J(0, 0, 0, count, 1, ak_double), V(0, 0, 0, count, 1, ak_double);
    std::copy(iv.begin(), iv.end(), I.addr());
    std::copy(jv.begin(), jv.end(), J.addr());
    std::copy(vv.begin(), vv.end(), V.addr());
    Mm a = sparse(I, J, V, Mm(double(n)), Mm(double(n)));
    ASSERT_TRUE(a.flags.sparse);
    ASSERT_GT(a.nnz, 990000);

    // Reference sums and products from the triplets (repeated positions add up, as in sparse).
    std::vector<double> col_sum(n, 0.0), row_sum(n, 0.0), x(n), ax(n, 0.0), atx(n, 0.0);
    for (int k = 0; k < n; ++k) x[k] = 1.0 + (k % 5);
    for (int k = 0; k < count; ++k) {
        int i = static_cast<int>(iv[k]) - 1, j = static_cast<int>(jv[k]) - 1;
        col_sum[j] += vv[k];
        row_sum[i] += vv[k];
        ax[i] += vv[k] * x[j];
        atx[j] += vv[k] * x[i];
    }
    auto expect_vector = [](const Mm& got, const std::vector<double>& want, const char* what) {
        Mm g = got.flags.sparse ? full(got) : got;
        ASSERT_EQ(static_cast<int>(want.size()), g.nnz) << what;
        for (std::size_t k = 0; k < want.size(); ++k)
            ASSERT_EQ(want[k], g.addr()[k]) << what << " element " << k;
    };
    expect_vector(sum(a), col_sum, "sum(a)");
    expect_vector(sum(a, Mm(2.0)), row_sum, "sum(a, 2)");
    std::vector<double> col_mean(col_sum);
    for (double& v : col_mean) v /= n;
    expect_vector(mean(a), col_mean, "mean(a)");
    Mm X(0, 0, 0, n, 1, ak_double);
    std::copy(x.begin(), x.end(), X.addr());
    expect_vector(mtimes(a, X), ax, "a * x");
    expect_vector(mtimes(ctranspose(a), X), atx, "a' * x");

    Mm where;
    Mm mx = max(a, Mm(), Mm(1.0), i_o, where);
    EXPECT_EQ(11.0, full(mx).addr()[n / 2]);
    Mm found = any(a);
    EXPECT_EQ(n, static_cast<int>(full(sum(found)).addr()[0]));

    int positive = 0;
    for (int k = 0; k < a.nnz; ++k) positive += a.addr()[k] > 0;
    EXPECT_EQ(positive, gt(a, Mm(0.0)).nnz);
    EXPECT_EQ(a.nnz, rdivide(a, Mm(2.0)).nnz);
    Mm wide = horzcat(a(c_p, Mm(1.0)), a);
    ASSERT_EQ(a.nnz + full(nnz(a(c_p, Mm(1.0)))).addr()[0], wide.nnz);
    EXPECT_EQ(a.index[a.nnz - 1] + n, wide.index[wide.nnz - 1]);

    Mm t = transpose(a);
    ASSERT_EQ(a.nnz, t.nnz);
    expect_vector(sum(t, Mm(2.0)), col_sum, "sum(a.', 2)");
    Mm back = transpose(t);
    ASSERT_EQ(a.nnz, back.nnz);
    EXPECT_TRUE(std::equal(a.index, a.index + a.nnz, back.index));
    EXPECT_TRUE(std::equal(a.addr(), a.addr() + a.nnz, back.addr()));

    // A running sum would fill most of the 2^31 places: refused, not attempted.
    EXPECT_ERROR(cumsum(a), "Out of memory!");

    // A * A: column j of the product from the columns of a, checked on a few columns.
    Mm aa = mtimes(a, a);
    ASSERT_TRUE(aa.flags.sparse);
    for (int j : {0, 1, n / 2, n - 1}) {
        Mm got = aa(c_p, Mm(j + 1.0));
        Mm want = mtimes(a, a(c_p, Mm(j + 1.0)));
        expect_equal(got, want, true, "column " + std::to_string(j) + " of a*a");
    }
}
