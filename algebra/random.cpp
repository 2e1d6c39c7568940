// Uniform and normal deviates. Each function has two generators with their own process-wide state:
// the "state" generator (the default) and the older multiplicative "seed" generator.
//
// Uniform, state generator: a subtract-with-borrow table of 32 doubles, all multiples of 2^-53,
// whose output has its bits mixed with a xorshift register. Normal, state generator: the
// rectangle-wedge-tail method of Marsaglia and Tsang with 64 layers, driven by a congruential word
// plus a xorshift word. Normal, seed generator: the polar method.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <initializer_list>

#include "arklib/constructors.h"
#include "arklib/random.h"
#include "arklib/sort.h"
#include "arklib/sparse.h"
#include "core/locks.h"
#include "arklib/builtins.h"

namespace {

constexpr double ulp = 1.0 / 9007199254740992.0;  // 2^-53
constexpr double unit = 2.0 * ulp;                // 2^-52, the scale of the saved index and register
constexpr double w32 = 1.0 / 4294967296.0;        // 2^-32

// The seed generator: seed = seed * 7^5 mod (2^31 - 1), scaled into (0, 1).
constexpr double seed_multiplier = 16807.0;
constexpr double seed_modulus = 2147483647.0;
constexpr double seed_scale = 4.656612875245797e-10;
constexpr double seed_start = 1144108930.0;

// ---- the uniform generator's state ---------------------------------------------------------------

// The fixed start table of the subtract-with-borrow generator: 32 values k * 2^-53 with k the top
// 53 bits of successive splitmix64 outputs. Any fixed table of multiples of 2^-53 in [0, 1) serves.
constexpr std::uint64_t splitmix(std::uint64_t& x) {
    std::uint64_t z = (x += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
}

struct start_table {
    double z[32];
    constexpr start_table() : z() {
        std::uint64_t x = 0x5EED5EED2000ull;
        for (double& v : z) v = static_cast<double>(splitmix(x) >> 11) * (1.0 / 9007199254740992.0);
    }
};
constexpr start_table uniform_start;

struct uniform_state {
    int mode = 1;  // 1 state generator, 0 seed generator
    double z[32] = {};
    int i = 0;
    double borrow = 0.0;  // the borrow flag b times ulp
    std::uint32_t j = 0x80000000u;
    std::uint32_t j_old = 0;
    double seed = seed_start;

    constexpr uniform_state() {
        for (int k = 0; k < 32; ++k) z[k] = uniform_start.z[k];
    }
};

struct normal_state {
    int mode = 1;
    std::uint32_t c = 362436069u;
    std::uint32_t x = 521288629u;
    std::uint32_t s = 0;
    double seed = seed_start;
};

uniform_state U;
normal_state N;

// Runtime lock 1, taken only when a host has set multi_task.
class random_lock {
  public:
    random_lock() : held_(multi_task != 0) {
        if (held_) ak_lock(ak_lock_random);
    }
    ~random_lock() {
        if (held_) ak_unlock(ak_lock_random);
    }
    random_lock(const random_lock&) = delete;
    random_lock& operator=(const random_lock&) = delete;

  private:
    bool held_;
};

// ---- conversions of user values ------------------------------------------------------------------

// The truncation of v as a 32-bit word, wrapping modulo 2^32; NaN and values beyond 2^63 give 0.
std::uint32_t word_of(double v) {
    double t = std::trunc(v);
    if (!(std::fabs(t) < 9.2e18)) return 0;
    return static_cast<std::uint32_t>(static_cast<std::uint64_t>(static_cast<std::int64_t>(t)));
}

// The numeric values of y as doubles (the real part), or false when y is not numeric.
bool values_of(const Mm& y, Mm& full_y) {
    if (y.flags.type != ak_double && y.flags.type != ak_uchar) return false;
    full_y = y.flags.sparse ? full(y) : y;
    return true;
}

double value_at(const Mm& m, int k) {
    if (m.flags.type == ak_uchar) return static_cast<const unsigned char*>(m.pr)[k];
    return static_cast<const double*>(m.pr)[k];
}

bool is_command(const Mm& x, const char* word) {
    int n = static_cast<int>(std::strlen(word));
    if (!x.flags.str || x.flags.sparse || x.size() != n) return false;
    if (x.flags.type != ak_double && x.flags.type != ak_uchar) return false;
    for (int k = 0; k < n; ++k)
        if (value_at(x, k) != static_cast<unsigned char>(word[k])) return false;
    return true;
}

// The seed scrambling shared by randM("seed", y) and randn("seed", y).
double scrambled_seed(double y) {
    std::uint32_t t = word_of(y);
    if (t == 0) t = 931316785u;
    if (t & 0x8000u) t ^= 0x80008000u;
    t = (t << 16) | (t >> 16);
    return static_cast<double>(t);
}

double seed_step(double& seed) {
    seed = std::fmod(seed * seed_multiplier, seed_modulus);
    return seed * seed_scale;
}

// ---- uniform, state generator --------------------------------------------------------------------

// v where the mask is all ones, 0.0 where it is zero.
inline double masked(std::uint64_t mask, double v) {
    std::uint64_t bits;
    std::memcpy(&bits, &v, sizeof bits);
    bits &= mask;
    std::memcpy(&v, &bits, sizeof v);
    return v;
}

inline double uniform_step(uniform_state& g) {
    // The borrow is as likely set as not, so the step is written without branches: the borrow is
    // kept as the amount it subtracts, ulp or 0. Subtracting 0 and adding 0 change nothing, since
    // no -0 arises.
    int i = g.i;
    double zi = g.z[(i + 20) & 31] - g.z[(i + 5) & 31] - g.borrow;
    std::uint64_t negative = 0 - static_cast<std::uint64_t>(zi < 0.0);  // all ones or zero
    g.borrow = masked(negative, ulp);
    zi += masked(negative, 1.0);
    g.z[i] = zi;
    g.i = (i + 1) & 31;

    std::uint32_t j = g.j;
    g.j_old = j;
    j ^= j << 13;
    j ^= j >> 17;
    j ^= j << 5;
    g.j = j;

    // Mix the low word with the old register and the top of the mantissa with the new one, so that
    // sign and exponent stay and the value stays in [0, 1).
    std::uint64_t bits;
    std::memcpy(&bits, &zi, sizeof bits);
    bits ^= static_cast<std::uint64_t>(g.j_old);
    bits ^= static_cast<std::uint64_t>(j & 0xFFFFFu) << 32;
    double r;
    std::memcpy(&r, &bits, sizeof r);
    return r;
}

inline double uniform_draw() { return U.mode ? uniform_step(U) : seed_step(U.seed); }

void rand_state_init(double y) {
    for (int k = 0; k < 32; ++k) U.z[k] = uniform_start.z[k];
    U.i = 0;
    U.borrow = 0.0;
    if (y == 0.0)
        U.j = 0x80000000u;
    else if ((y > 0.0 && y < 4294967296.0) || (y < 0.0 && y > -4294967296.0))
        U.j = word_of(y);
    else
        U.j = 0xFFFFFFFFu;
}

Mm uniform_state_vector() {
    Mm s(0, 0, 0, 35, 1, ak_double);
    double* out = s.addr();
    random_lock lock;
    for (int k = 0; k < 32; ++k) out[k] = U.z[k];
    out[32] = U.borrow;
    out[33] = U.i * unit;
    out[34] = U.j * unit;
    return s;
}

Mm uniform_state_set(const Mm& y) {
    Mm v;
    int n = y.size();
    if (!values_of(y, v) || (n != 1 && n != 35)) {
        error("rand('state',y): y must be scalar or 35-element state vector");
        return x_M;
    }
    random_lock lock;
    if (n == 1) {
        rand_state_init(value_at(v, 0));
    } else {
        for (int k = 0; k < 32; ++k) U.z[k] = value_at(v, k);
        U.borrow = word_of(value_at(v, 32) / ulp) != 0 ? ulp : 0.0;
        U.i = static_cast<int>(word_of(value_at(v, 33) / unit) & 31u);
        U.j = word_of(value_at(v, 34) / unit);
    }
    U.mode = 1;
    return x_M;
}

// ---- normal, state generator ---------------------------------------------------------------------

// Layers of the normal generator. The half density f(x) = exp(-x^2/2), x >= 0, of area sqrt(pi/2),
// is covered by 64 rectangles of equal area a = sqrt(pi/2)/64. The lowest three together make the
// block [0, xn] x [0, f(xn)], so xn solves x f(x) = 3a (xn = 2.77699427), and the tail beyond xn
// is sampled apart. Each rectangle above spans [0, v(k+1)] horizontally and rises a / v(k+1) from
// f(v(k+1)), its top meeting the curve at v(k): v(k) = f^-1(f(v(k+1)) + a / v(k+1)), 61 times.
// The published table gives the edges to seven decimals, the tail start cut rather than rounded
// (2.7769942). V holds the edges doubled.
struct normal_tables {
    double V[66];
    double T[64];
    double W[65];
    normal_tables();
};

double seven_decimals(double v) { return std::round(v * 1e7) / 1e7; }

normal_tables::normal_tables() {
    const double area = std::sqrt(std::acos(-1.0) / 2.0) / 64.0;
    auto f = [](double x) { return std::exp(-0.5 * x * x); };
    double lo = 1.0, hi = 5.0;  // x f(x) falls on [1, 5]
    for (int it = 0; it < 200 && lo < hi; ++it) {
        double mid = 0.5 * (lo + hi);
        if (mid == lo || mid == hi) break;
        (mid * f(mid) > 3.0 * area ? lo : hi) = mid;
    }
    const double xn = lo;
    double v[65];
    for (int k = 61; k <= 64; ++k) v[k] = xn;
    for (int k = 60; k >= 0; --k) v[k] = std::sqrt(-2.0 * std::log(f(v[k + 1]) + area / v[k + 1]));

    for (int k = 0; k <= 60; ++k) V[k] = 2.0 * seven_decimals(v[k]);
    for (int k = 61; k <= 64; ++k) V[k] = 2.0 * (std::floor(xn * 1e7) / 1e7);
    V[65] = 0.0;
    for (int k = 0; k < 64; ++k) T[k] = seven_decimals(V[k + 1] - V[k]);
    for (int k = 0; k < 65; ++k) W[k] = V[k + 1] * w32;
}

const normal_tables& tables() {
    static const normal_tables t;
    return t;
}

inline void word_step(normal_state& g) {
    g.c = 69069u * g.c + 1234567u;
    std::uint32_t x = g.x;
    x ^= x << 13;
    x ^= x >> 17;
    x ^= x << 5;
    g.x = x;
    g.s = g.c + x;
}

inline double signed_word(std::uint32_t s) { return static_cast<double>(static_cast<std::int32_t>(s)); }

inline double word_uniform(const normal_state& g) { return signed_word(g.s) * w32 + 0.5; }

double normal_step(normal_state& g, const normal_tables& t) {
    constexpr double b = 0.4878992;  // scale of the residual density
    word_step(g);
    int k = static_cast<int>(g.s & 63u);
    double r = signed_word(g.s) * t.W[k];
    double u = 2.0 * std::fabs(r);
    if (u < t.V[k]) return r;  // inside the rectangle

    // In the wedge: its part under the curve gives r, the rest the residual density or the tail.
    double y = (t.V[k + 1] - u) / t.T[k];
    word_step(g);
    double q = 1.0 - word_uniform(g);
    double s = q + y;
    if (s <= 0.698802) return std::copysign(y * b, r);
    if (s >= 1.0310721) return r;
    if (12.37586 * std::exp(-0.5 * (y * b) * (y * b)) > q + 11.67706) return std::copysign(y * b, r);
    double v = t.V[k + 1];
    if (std::exp(-v * v / 8.0) + (1.0 - q) * 0.03916606 / v <= std::exp(-u * u / 8.0)) return r;

    double a, d;
    do {
        word_step(g);
        a = std::log(word_uniform(g));
        word_step(g);
        d = std::log(word_uniform(g));
    } while (!(-15.423391352072002 * d >= a * a));
    return std::copysign(2.776994 - a * 0.3601016062692249, r);
}

// The polar method on the seed generator; the lock is held only for each seed step.
double polar_draw() {
    double p1, p2, q;
    do {
        {
            random_lock lock;
            p1 = 2.0 * seed_step(N.seed) - 1.0;
        }
        {
            random_lock lock;
            p2 = 2.0 * seed_step(N.seed) - 1.0;
        }
        q = p1 * p1 + p2 * p2;
    } while (!(q > 0.0 && q <= 1.0));
    return p1 * std::sqrt(-2.0 * std::log(q) / q);
}

// One normal draw; takes the lock itself.
double normal_draw(const normal_tables& t) {
    {
        random_lock lock;
        if (N.mode) return normal_step(N, t);
    }
    return polar_draw();
}

Mm normal_state_vector() {
    Mm s(0, 0, 0, 2, 1, ak_double);
    random_lock lock;
    s.addr()[0] = N.c;
    s.addr()[1] = N.x;
    return s;
}

Mm normal_state_set(const Mm& y) {
    Mm v;
    int n = y.size();
    if (!values_of(y, v) || (n != 1 && n != 2)) {
        error("randn('state',y): y must be scalar or 2-element state vector");
        return x_M;
    }
    random_lock lock;
    if (n == 1) {
        // Seeding restores the start words whatever the value.
        normal_state fresh;
        N.c = fresh.c;
        N.x = fresh.x;
        N.s = fresh.s;
    } else {
        N.c = word_of(value_at(v, 0));
        N.x = word_of(value_at(v, 1));
    }
    N.mode = 1;
    return x_M;
}

Mm set_seed(const char* fname, double& seed, int& mode, const Mm& y) {
    Mm v;
    double value = 0.0;
    if (values_of(y, v) && v.size() >= 1)
        value = value_at(v, 0);
    else
        error("%s('seed',y): y must be a number", fname);
    random_lock lock;
    seed = scrambled_seed(value);
    mode = 0;
    return x_M;
}

Mm sized(const char* fname, ak_internal::fill_kind kind, std::initializer_list<const Mm*> args) {
    int d[4];
    int nd = ak_internal::read_size_arguments(fname, static_cast<int>(args.size()), args.begin(), d);
    return ak_internal::fill_matrix(nd, d, kind);
}

Mm rect(const char* fname, double m, double n, ak_internal::fill_kind kind) {
    Mm sm(m), sn(n);
    return sized(fname, kind, {&sm, &sn});
}

}  // namespace

// ---- the exported functions ------------------------------------------------------------------------

double randM() {
    random_lock lock;
    return uniform_draw();
}

double randn() { return normal_draw(tables()); }

namespace ak_internal {

void rand_fill(double* out, int n) {
    if (!multi_task) {
        for (int k = 0; k < n; ++k) out[k] = uniform_draw();
        return;
    }
    for (int k = 0; k < n; ++k) {
        random_lock lock;
        out[k] = uniform_draw();
    }
}

void randn_fill(double* out, int n) {
    const normal_tables& t = tables();
    if (!multi_task && N.mode) {
        for (int k = 0; k < n; ++k) out[k] = normal_step(N, t);
        return;
    }
    for (int k = 0; k < n; ++k) out[k] = normal_draw(t);
}

const double* randn_table_V() { return tables().V; }
const double* randn_table_T() { return tables().T; }
const double* randn_table_W() { return tables().W; }

}  // namespace ak_internal

Mm randM(double n) { return rect("rand", n, n, ak_internal::fill_rand); }
Mm randM(double m, double n) { return rect("rand", m, n, ak_internal::fill_rand); }

Mm randM(const Mm& x) {
    if (is_command(x, "state")) return uniform_state_vector();
    if (is_command(x, "seed")) {
        random_lock lock;
        return Mm(U.seed);
    }
    return sized("rand", ak_internal::fill_rand, {&x});
}

Mm randM(const Mm& x, const Mm& y) {
    if (is_command(x, "state")) return uniform_state_set(y);
    if (is_command(x, "seed")) return set_seed("rand", U.seed, U.mode, y);
    return sized("rand", ak_internal::fill_rand, {&x, &y});
}

Mm randM(const Mm& x, const Mm& y, const Mm& z) {
    return sized("rand", ak_internal::fill_rand, {&x, &y, &z});
}

Mm randM(const Mm& x, const Mm& y, const Mm& z, const Mm& w) {
    return sized("rand", ak_internal::fill_rand, {&x, &y, &z, &w});
}

Mm randn(double n) { return rect("randn", n, n, ak_internal::fill_randn); }
Mm randn(double m, double n) { return rect("randn", m, n, ak_internal::fill_randn); }

Mm randn(const Mm& x) {
    if (is_command(x, "state")) return normal_state_vector();
    if (is_command(x, "seed")) {
        random_lock lock;
        return Mm(N.seed);
    }
    return sized("randn", ak_internal::fill_randn, {&x});
}

Mm randn(const Mm& x, const Mm& y) {
    if (is_command(x, "state")) return normal_state_set(y);
    if (is_command(x, "seed")) return set_seed("randn", N.seed, N.mode, y);
    return sized("randn", ak_internal::fill_randn, {&x, &y});
}

Mm randn(const Mm& x, const Mm& y, const Mm& z) {
    return sized("randn", ak_internal::fill_randn, {&x, &y, &z});
}

Mm randn(const Mm& x, const Mm& y, const Mm& z, const Mm& w) {
    return sized("randn", ak_internal::fill_randn, {&x, &y, &z, &w});
}

Mm randperm(const Mm& n) {
    Mm y, p;
    sort(sized("randperm", ak_internal::fill_rand, {&one_M, &n}), i_o, y, p);
    return p;
}

// ---- rows of the table of functions by name ----------------------------------------------------
AK_BUILTIN("rand", AK_FN(randM, const Mm&), AK_FN(randM, const Mm&, const Mm&),
           AK_FN(randM, const Mm&, const Mm&, const Mm&),
           AK_FN(randM, const Mm&, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("randn", AK_FN(randn, const Mm&), AK_FN(randn, const Mm&, const Mm&),
           AK_FN(randn, const Mm&, const Mm&, const Mm&),
           AK_FN(randn, const Mm&, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("randperm", AK_FN(randperm, const Mm&));
