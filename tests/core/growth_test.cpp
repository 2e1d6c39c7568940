// Appending in a loop: x(end+1) = k, c{end+1} = k and s(end+1).a = k take a new block only a
// logarithmic number of times, keep every value, and leave other holders of the old value alone.
#include <gtest/gtest.h>


#include "arklib.h"
#include "tests/core/subscript_test_support.h"
#include "tests/test_support.h"

using namespace sub_test;

namespace {

constexpr int appends = 20000;

// Number of times the storage of x changed while f(x, k) ran for k = 1..appends.
template <class F>
int blocks_taken(Mm& x, F f) {
    int changes = 0;
    void* last = x.pr;
    for (int k = 1; k <= appends; ++k) {
        f(x, k);
        if (x.pr != last) ++changes, last = x.pr;
    }
    return changes;
}

}  // namespace

TEST(Growth, AppendingToAVectorIsAmortised) {
    Mm x(0, 0, 0, 0, 0, ak_double);
    int changes = blocks_taken(x, [](Mm& v, int k) { v(static_cast<double>(v.size() + 1)) = Mm(k * 0.5); });
    EXPECT_LT(changes, 30);  // half again each time: about log(20000) / log(1.5) = 24
    ASSERT_EQ(appends, x.size());
    EXPECT_EQ(1, x.dims[0]);
    for (int k = 0; k < appends; ++k) ASSERT_EQ((k + 1) * 0.5, x.addr()[k]);
    // A column grows as a column; complex values keep both halves.
    Mm c = col({1, 2});
    c(3.0) = Mm(3.0);
    EXPECT_EQ(dims(c), (std::vector<int>{2, 3, 1, 1, 1}));
    Mm z(1, 0, 0, 1, 1, ak_double);
    z.addr()[0] = 1, z.addi()[0] = -1;
    for (int k = 2; k <= 40; ++k) z(static_cast<double>(k)) = Mm(k);
    EXPECT_EQ(40.0, z.addr()[39]);
    EXPECT_EQ(-1.0, z.addi()[0]);
    EXPECT_EQ(0.0, z.addi()[39]);
}

TEST(Growth, AppendingToACellMovesItsElements) {
    Mm c(0, 0, 0, 0, 0, ak_mm);
    int changes = blocks_taken(c, [](Mm& v, int k) { v.br(Mm(static_cast<double>(v.size() + 1))) = Mm(k); });
    EXPECT_LT(changes, 30);
    ASSERT_EQ(appends, c.size());
    const Mm* e = static_cast<const Mm*>(c.pr);
    for (int k = 0; k < appends; ++k) {
        ASSERT_EQ(k + 1.0, *e[k].addr());
        ASSERT_EQ(0, e[k].dirty());  // each value held once: moved, not copied and left behind
    }
    // A copy holds the old block: growing c must not take the elements from it.
    Mm keep = c;
    c.br(Mm(appends + 1.0)) = TM("last");
    ASSERT_EQ(appends, keep.size());
    EXPECT_EQ(1.0, *static_cast<const Mm*>(keep.pr)[0].addr());
    EXPECT_EQ(1.0, *static_cast<const Mm*>(c.pr)[0].addr());
    EXPECT_EQ(appends + 1, c.size());
    // Elements of a new cell share one empty value until written.
    Mm fresh(0, 0, 0, 1, 3, ak_mm);
    const Mm* f = static_cast<const Mm*>(fresh.pr);
    EXPECT_EQ(f[0].pr, f[2].pr);
    EXPECT_EQ(0, f[1].size());
}

TEST(Growth, AppendingToAStructureArray) {
    Mm s("s", 0, 0);
    s.member("a") = Mm(1.0);
    int changes = blocks_taken(s, [](Mm& v, int k) {
        Mr(Mr_paren, v, Mm(static_cast<double>(v.size() + 1))).member("a") = Mm(k + 1.0);
    });
    EXPECT_LT(changes, 40);
    ASSERT_EQ(appends + 1, s.size());
    ASSERT_EQ(1, s.nfields);
    const Mm* e = static_cast<const Mm*>(s.pr);
    for (int k = 0; k <= appends; ++k) ASSERT_EQ(k + 1.0, *static_cast<const Mm*>(e[k].pr)[0].addr());
}
