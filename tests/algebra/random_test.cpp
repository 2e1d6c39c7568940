// randM, randn and randperm: state handling, seeding, the normal generator's tables, and the
// distributions of long runs.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <thread>
#include <vector>

#include "arklib.h"
#include "test_support.h"

namespace {

std::vector<double> values(const Mm& m) {
    const double* p = m.addr();
    return std::vector<double>(p, p + m.nnz);
}

std::vector<double> uniform_draws(int n) {
    std::vector<double> v(n);
    for (double& x : v) x = randM();
    return v;
}

// Kolmogorov-Smirnov statistic D * sqrt(n) of the sample against the distribution function cdf.
template <typename F>
double ks_statistic(std::vector<double> v, F cdf) {
    std::sort(v.begin(), v.end());
    const double n = static_cast<double>(v.size());
    double d = 0.0;
    for (std::size_t k = 0; k < v.size(); ++k) {
        double f = cdf(v[k]);
        d = std::max({d, f - k / n, (k + 1) / n - f});
    }
    return d * std::sqrt(n);
}

double normal_cdf(double x) { return 0.5 * std::erfc(-x / std::sqrt(2.0)); }

// The uniform state generator's steps, run from a saved state vector: the subtract-with-borrow
// step, then the output's low word mixed with the register before its xorshift step and the top
// 20 bits of the mantissa with the register after it.
struct uniform_model {
    double z[32];
    int i, b;
    std::uint32_t j;
    explicit uniform_model(const Mm& s) {
        const double* v = s.addr();
        std::copy(v, v + 32, z);
        b = static_cast<int>(v[32] / std::ldexp(1.0, -53));
        i = static_cast<int>(v[33] / std::ldexp(1.0, -52));
        j = static_cast<std::uint32_t>(v[34] / std::ldexp(1.0, -52));
    }
    double next() {
        double r = z[(i + 20) % 32] - z[(i + 5) % 32] - (b ? std::ldexp(1.0, -53) : 0.0);
        b = r < 0;
        z[i] = r = b ? r + 1.0 : r;
        i = (i + 1) % 32;
        std::uint32_t old = j;
        j ^= j << 13, j ^= j >> 17, j ^= j << 5;
        std::uint64_t bits;
        std::memcpy(&bits, &r, 8);
        bits ^= old | static_cast<std::uint64_t>(j & 0xFFFFF) << 32;
        std::memcpy(&r, &bits, 8);
        return r;
    }
};

}  // namespace

TEST(RandomTables, LayersHoldEqualAreas) {
    const double* V = ak_internal::randn_table_V();
    const double* T = ak_internal::randn_table_T();
    const double* W = ak_internal::randn_table_W();
    EXPECT_EQ(V[64], 5.5539884);
    EXPECT_EQ(V[65], 0.0);
    // Each layer's width is its difference, W scales the next edge by 2^-32, and every layer above
    // the block at the bottom has the same area: (edge) * (rise of the density).
    auto f = [](double x) { return std::exp(-0.5 * x * x); };
    const double area = std::sqrt(std::acos(-1.0) / 2.0) / 64.0;
    for (int k = 0; k < 64; ++k) {
        EXPECT_NEAR(T[k], V[k + 1] - V[k], 1e-12) << k;
        EXPECT_EQ(W[k], V[k + 1] * std::ldexp(1.0, -32)) << k;
        if (k <= 60) {
            EXPECT_NEAR(V[k + 1] / 2 * (f(V[k] / 2) - f(V[k + 1] / 2)), area, 2e-7) << k;
        }
    }
}

TEST(RandomState, StartStateSeedingAndStreams) {
    randM("state", 0);
    Mm s = randM("state");
    ASSERT_EQ(s.rows(), 35);
    ASSERT_EQ(s.cols(), 1);
    std::vector<double> z = values(s);
    for (int k = 0; k < 32; ++k) {
        EXPECT_GE(z[k], 0.0);
        EXPECT_LT(z[k], 1.0);
        EXPECT_EQ(std::ldexp(z[k], 53), std::floor(std::ldexp(z[k], 53))) << "not a multiple of 2^-53";
    }
    EXPECT_EQ(z[32], 0.0);                   // borrow
    EXPECT_EQ(z[33], 0.0);                   // table index
    EXPECT_EQ(z[34], std::ldexp(1.0, -21));  // 0x80000000 * 2^-52

    // A scalar seed only sets the shift register; the table always restarts from the same values.
    const double seeds[][2] = {{123456.9, 123456}, {NAN, 4294967295.0}};
    for (auto c : seeds) {
        randM("state", c[0]);
        std::vector<double> t = values(randM("state"));
        EXPECT_EQ(t[34], c[1] * std::ldexp(1.0, -52)) << c[0];
        EXPECT_TRUE(std::equal(z.begin(), z.begin() + 32, t.begin())) << c[0];
    }

    // The same state gives the same stream, and a matrix draw is the same as that many scalar draws, in
    // storage order.
    randM("state", 5);
    Mm m = randM(Mm(3.0), Mm(4.0), Mm(2.0));
    randM("state", 5);
    EXPECT_EQ(values(m), uniform_draws(24));

    // Saving and restoring the state mid-stream changes nothing, a set borrow included.
    randM("state", 3);
    Mm saved;
    for (int k = 0; k < 1000; ++k) {
        saved = randM("state");
        if (saved.addr()[32] != 0.0) break;
        randM();
    }
    ASSERT_EQ(saved.addr()[32], std::ldexp(1.0, -53));
    std::vector<double> next = uniform_draws(64);
    EXPECT_EQ(randM("state", saved).size(), 0);
    EXPECT_EQ(values(randM("state")), values(saved));
    EXPECT_EQ(uniform_draws(64), next);

    // A long stream follows the generator's steps from a state somewhere mid-table.
    randM("state", 12345);
    randM(1.0, 77.0);  // somewhere mid-table, with borrows on the way
    uniform_model u(randM("state"));
    std::vector<double> got = values(randM(1.0, 100000.0));
    int mismatches = 0;
    for (double v : got) mismatches += v != u.next();
    EXPECT_EQ(mismatches, 0);
}

TEST(RandomState, SeedGeneratorAndModeSwitch) {
    randM("seed", 0);
    EXPECT_EQ(randM("seed").r(), 1144108930.0);  // 931316785 scrambled: the start seed
    std::vector<double> from_zero = uniform_draws(20);
    randM("seed", 931316785);
    EXPECT_EQ(uniform_draws(20), from_zero);
    // The seed generator: seed * 16807 mod (2^31 - 1), scaled by 1 / (2^31 - 1).
    EXPECT_DOUBLE_EQ(from_zero[0], 0.21895918632809036);
    // Scrambling: bit 15 clear, the halves swap (7.9 is cut to 7); bit 15 set, exclusive-or with
    // 0x80008000 first, so 0x8000 comes back as itself.
    randM("seed", 7.9);
    EXPECT_EQ(randM("seed").r(), 458752.0);
    randM("seed", 32768);
    EXPECT_EQ(randM("seed").r(), 32768.0);

    // A "state" call brings the state generator back.
    randM("state", 0);
    double state_first = randM();
    randM("seed", 0);
    randM("state", 0);
    EXPECT_EQ(randM(), state_first);

    // randn's seed is its own.
    randn("seed", 0);
    randM("seed", 7);
    EXPECT_EQ(randn("seed").r(), 1144108930.0);
    randM("state", 0);

    // randn's state: a scalar restores the start words whatever its value.
    randn("state", 7);
    EXPECT_EQ(values(randn("state")), (std::vector<double>{362436069.0, 521288629.0}));

    Mm saved = randn("state");
    std::vector<double> next = values(randn(5, 7));
    randn("state", saved);
    for (double v : next) EXPECT_EQ(randn(), v);  // matrix and scalar draws agree
}

TEST(RandomState, BadStateVectorsAndSizeForms) {
    EXPECT_ERROR(randM("state", zeros(34.0, 1.0)),
                 "rand('state',y): y must be scalar or 35-element state vector");
    EXPECT_ERROR(randn("state", zeros(3.0, 1.0)),
                 "randn('state',y): y must be scalar or 2-element state vector");
    EXPECT_ERROR(randM("seed", Mm()), "rand('seed',y): y must be a number");
    // A state vector with an index out of range is kept within the table.
    Mm s = randM("state");
    s.deepcopy(s, ak_double);
    s.addr()[33] = 1000 * std::ldexp(1.0, -52);
    randM("state", s);
    double v = randM();
    EXPECT_TRUE(v >= 0.0 && v < 1.0);
    randM("state", 0);

    EXPECT_EQ(randM(-4.0).size(), 0);
    EXPECT_EQ(randM(zeros(3.0, 5.0)).cols(), 5);  // a matrix argument gives its own size
    EXPECT_EQ(randn(Mm(2.0), Mm(3.0), Mm(4.0)).dims[2], 4);
    EXPECT_EQ(randn(2.6).rows(), 3);
    // Another string is a size: "ab" is a 97 x 98 request.
    EXPECT_EQ(randM(TM("ab")).rows(), 97);
}

TEST(RandomDistribution, MillionDrawsAndNormalTails) {
    randM("state", 0);
    const int n = 1000000;
    std::vector<double> v = values(randM(1.0, static_cast<double>(n)));
    ASSERT_TRUE(std::all_of(v.begin(), v.end(), [](double x) { return x >= 0.0 && x < 1.0; }));
    EXPECT_LT(ks_statistic(v, [](double x) { return x; }), 1.95);

    randn("state", 0);
    v = values(randn(static_cast<double>(n), 1.0));
    EXPECT_LT(ks_statistic(v, normal_cdf), 1.95);

    // Tails, with expected counts of a million draws: |x| > 2.777 (the tail start) 5487,
    // |x| > 4 63. Bounds are about five standard deviations wide.
    int beyond_start = 0, beyond4 = 0;
    for (double x : v) {
        beyond_start += std::fabs(x) > 2.776994;
        beyond4 += std::fabs(x) > 4;
    }
    EXPECT_NEAR(beyond_start, 5487, 370);
    EXPECT_NEAR(beyond4, 63, 40);
}

TEST(RandomThreads, LockedDrawsLoseNothing) {
    randM("state", 9);
    std::vector<double> single = uniform_draws(20001);
    randM("state", 9);
    multi_task = 1;
    std::vector<double> got(20000);
    std::thread a([&] {
        for (int k = 0; k < 10000; ++k) got[k] = randM();
    });
    std::thread b([&] {
        Mm m = randM(1.0, 10000.0);
        std::copy(m.addr(), m.addr() + 10000, got.begin() + 10000);
    });
    a.join();
    b.join();
    double after = randM();
    multi_task = 0;
    // Every draw of the single-threaded stream was handed out exactly once.
    std::sort(got.begin(), got.end());
    std::vector<double> expect(single.begin(), single.begin() + 20000);
    std::sort(expect.begin(), expect.end());
    EXPECT_EQ(got, expect);
    EXPECT_EQ(after, single[20000]);
}

TEST(RandomPermutation, IsTheSortIndexOfUniformDraws) {
    randM("state", 11);
    Mm p = randperm(Mm(10.0));
    EXPECT_EQ(p.rows(), 1);
    randM("state", 11);
    Mm y, i;
    sort(randM(1.0, 10.0), i_o, y, i);
    EXPECT_EQ(values(p), values(i));
    EXPECT_EQ(randperm(Mm(0.0)).size(), 0);
}
