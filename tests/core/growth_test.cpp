// Appending in a loop: x(end+1) = k, c{end+1} = k and s(end+1).a = k take a new block only a
// logarithmic number of times, keep every value, and leave other holders of the old value alone;
// member writes on a 1x1 structure go into the field where it is.
#include <gtest/gtest.h>


#include "arklib.h"
#include "tests/core/subscript_test_support.h"
#include "tests/test_support.h"

using namespace sub_test;
using V = std::vector<double>;

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
    EXPECT_LT(changes, 20);  // doubling each time: about log2(20000) = 15
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

namespace {

// The value of field `name` of element k (1-based) of a structure, sharing its storage.
const Mm& slot(const Mm& s, int k, const char* name) {
    const Mm& e = static_cast<const Mm*>(s.pr)[k - 1];
    return static_cast<const Mm*>(e.pr)[s.findfield(name, 1)];
}

}  // namespace

TEST(MemberWrite, FieldOfAScalarStructureIsWrittenWhereItIs) {
    Mm s("s", 0, 0);
    s.member("a") = Mm(0.0);
    s.member("v") = Mm(row({1, 2, 3, 4, 5}));
    for (int k = 1; k <= 1000; ++k) s.member("a") = Mm(s.member("a")) + static_cast<double>(k);
    EXPECT_EQ(500500.0, *slot(s, 1, "a").addr());

    // s.v(k) = x changes the field's own block when nothing else holds it.
    const void* block = slot(s, 1, "v").pr;
    s.member("v")(Mm(3.0)) = Mm(30.0);
    EXPECT_EQ(block, slot(s, 1, "v").pr);
    EXPECT_EQ(V({1, 2, 30, 4, 5}), values(slot(s, 1, "v")));
    // ... and appending to it grows the field.
    s.member("v")(Mm(6.0)) = Mm(6.0);
    EXPECT_EQ(V({1, 2, 30, 4, 5, 6}), values(slot(s, 1, "v")));

    // A copy of the field, or of the whole structure, keeps the old values.
    Mm held = Mm(s.member("v"));
    Mm t = s;
    s.member("v")(Mm(1.0)) = Mm(-1.0);
    s.member("a") = Mm(7.0);
    EXPECT_EQ(V({1, 2, 30, 4, 5, 6}), values(held));
    EXPECT_EQ(V({1, 2, 30, 4, 5, 6}), values(slot(t, 1, "v")));
    EXPECT_EQ(500500.0, *slot(t, 1, "a").addr());
    EXPECT_EQ(V({-1, 2, 30, 4, 5, 6}), values(slot(s, 1, "v")));
    EXPECT_EQ(7.0, *slot(s, 1, "a").addr());

    // A cell field is written by content the same way; a field not there yet is added.
    s.member("c") = Mm(0, 0, 0, 1, 2, ak_mm);
    s.member("c").br(Mm(2.0)) = TM("two");
    EXPECT_EQ(3, static_cast<const Mm*>(slot(s, 1, "c").pr)[1].size());
    s.member("w")(Mm(2.0)) = Mm(5.0);
    EXPECT_EQ(V({0, 5}), values(slot(s, 1, "w")));
}
