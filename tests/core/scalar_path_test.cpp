// The scalar path of translated code: operators with a number or a subscript operand, x(k) with
// numbers, the loop step over a row, and the kept 1x1 storage blocks behind them. Each fast form must
// give what the engine and the general subscript code give.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "core/matrix_internal.h"
#include "core/memory_internal.h"
#include "tests/core/subscript_test_support.h"

using namespace sub_test;
using V = std::vector<double>;

namespace {

// Element 1 of the engine's result on [a a] and b: the element loops, not a scalar path.
Mm engine_reference(Mm (*named)(const Mm&, const Mm&), double a, double b) {
    Mm r = named(row({a, a}), Mm(b));
    return Mm(r(1.0));
}

struct binary_case {
    const char* what;
    Mm (*fast_mm)(const Mm&, const Mm&);
    Mm (*fast_number)(const Mm&, double);
    Mm (*fast_read)(const Mr&, double);
    Mm (*named)(const Mm&, const Mm&);
    int logical;
};

// clang-format off
#define AK_CASE(OP, NAMED, LOGICAL)                                                        \
    binary_case{#OP, [](const Mm& a, const Mm& b) { return a OP b; },                      \
                [](const Mm& a, double b) { return a OP b; },                              \
                [](const Mr& a, double b) { return a OP b; }, NAMED, LOGICAL}
// clang-format on
const binary_case cases[] = {AK_CASE(+, plus, 0),    AK_CASE(-, minus, 0), AK_CASE(*, times, 0),
                             AK_CASE(/, rdivide, 0), AK_CASE(<, lt, 1),    AK_CASE(>, gt, 1),
                             AK_CASE(<=, le, 1),     AK_CASE(>=, ge, 1),   AK_CASE(==, eq, 1),
                             AK_CASE(!=, ne, 1)};
#undef AK_CASE

void expect_same_value(const Mm& got, const Mm& want, const char* what, double a, double b) {
    SCOPED_TRACE(testing::Message() << a << " " << what << " " << b);
    ASSERT_EQ(1, got.nnz);
    double g = *got.addr(), w = *want.addr();
    if (std::isnan(w))
        EXPECT_TRUE(std::isnan(g));
    else
        EXPECT_EQ(w, g);
    EXPECT_EQ(want.flags.logical, got.flags.logical);
    EXPECT_EQ(0, got.flags.str);
    EXPECT_EQ(0, got.flags.scalar_var);
    EXPECT_EQ(nullptr, got.pi);
    EXPECT_EQ(2, got.ndims);
}

}  // namespace

TEST(ScalarPath, OperatorsAgreeWithTheEngine) {
    const double operands[] = {3.0, -2.5, 0.0, NAN, INFINITY};
    for (const binary_case& c : cases) {
        for (double a : operands) {
            for (double b : operands) {
                Mm want = engine_reference(c.named, a, b);
                EXPECT_EQ(c.logical, want.flags.logical);
                Mm x = row({7.0, a});
                expect_same_value(c.fast_mm(Mm(a), Mm(b)), want, c.what, a, b);
                expect_same_value(c.fast_number(Mm(a), b), want, c.what, a, b);
                expect_same_value(c.fast_read(x(2.0), b), want, c.what, a, b);
            }
        }
    }
    EXPECT_EQ(V{-3}, values(2.0 - Mm(5.0)));
    EXPECT_EQ(V{0.25}, values(1.0 / Mm(4.0)));
    EXPECT_EQ(V{-4}, values(-Mm(4.0)));
}

TEST(ScalarPath, AScalarHoldsItsValueUntilItIsCopied) {
    Mm a(2.0);
    Mm t = a * 3.0;
    EXPECT_TRUE(t.holds_value());
    EXPECT_EQ(0, t.dirty());
    // The first copy moves the value to a block that both heads share, as for any value.
    Mm u = t;
    EXPECT_FALSE(t.holds_value());
    EXPECT_EQ(t.pr, u.pr);
    EXPECT_EQ(1, t.dirty());
    EXPECT_EQ(1, u.dirty());
    EXPECT_EQ(V{6}, values(u));
    Mm v = a + 1.0, w;
    w = v;
    EXPECT_EQ(v.pr, w.pr);
    w(1.0) = Mm(9.0);  // a shared target is copied before the write
    EXPECT_EQ(V{3}, values(v));
    EXPECT_EQ(V{9}, values(w));
    // A held value grown by a write, made complex, and put into a cell and read back.
    Mm g = a + 0.0;
    g(3.0) = Mm(5.0);
    EXPECT_EQ(V({2, 0, 5}), values(g));
    Mm z = a + 0.0;
    z.getcomplex();
    EXPECT_NE(nullptr, z.pi);
    EXPECT_EQ(V{2}, values(z));
    Mm c = cell_of({a * 2.0, a + 1.0});
    EXPECT_EQ(V{4}, values(at(c, 1)));
    EXPECT_EQ(V{3}, values(Mm(c.br(Mm(2.0)))));
}

TEST(ScalarPath, OtherOperandsGoToTheEngine) {
    // A string or logical operand gives a plain number.
    Mm s = TM("a") + 1.0;
    EXPECT_EQ(V{98}, values(s));
    EXPECT_EQ(0, s.flags.str);
    EXPECT_EQ(0, (logical(Mm(1.0)) + 1.0).flags.logical);
    // Bytes: the number is cut to a byte first and the sum wraps.
    Mm u = 100.0 + muint8(Mm(200.0));
    EXPECT_EQ(ak_uchar, u.flags.type);
    EXPECT_EQ(44, *static_cast<unsigned char*>(u.pr));
    // A complex operand, through a number and through a read.
    Mm z(1, 0, 0, 1, 2, ak_double);
    z.addr()[0] = 1;
    z.addi()[0] = 2;
    z.addr()[1] = 3;
    z.addi()[1] = 0;  // the storage is not cleared
    Mm zz = z(1.0) * 2.0;
    EXPECT_EQ(V{2}, values(zz));
    EXPECT_EQ(V{4}, imag_values(zz));
    EXPECT_EQ(nullptr, (z(2.0) * 2.0).pi);  // a zero imaginary part is dropped by the read
    // Shapes and sparse operands.
    EXPECT_EQ(V({0.5, 1}), values(row({1, 2}) / 2.0));
    EXPECT_EQ(1, (sparse(Mm(3.0)) * 2.0).flags.sparse);
    EXPECT_EQ(V{1}, values(Mm(row({1, 2}) / row({1, 2}))));  // a matrix divisor goes to the solver
    // A read that fails reports through the general read.
    Mm x = named(row({1, 2, 3}), "x");
    EXPECT_ERROR(Mm(x(4.0) + 1.0),
                 "x(=4) : Index out of matrix. Index value was 4 however the indexed matrix has 3 elements.");
}

TEST(ScalarPath, NumberIndicesInWritesChainsAndDescriptors) {
    Mm x = mat(2, 2, {1, 2, 3, 4});
    x(2.0, 2.0) = Mm(40.0);
    x(1.6) = Mm(10.0);  // the position is truncated
    EXPECT_EQ(V({10, 2, 3, 40}), values(x));
    // A shared target is copied before the store; the other holder keeps its value.
    Mm y = x;
    y(1.0) = Mm(-1.0);
    EXPECT_EQ(10.0, x.r(1.0));
    EXPECT_EQ(-1.0, y.r(1.0));
    // An expiring index is taken as a number; a logical one still selects.
    Mm k(1.0);
    EXPECT_EQ(V{2}, values(Mm(x(k + 1.0))));
    x(k + 2.0) = Mm(30.0);
    EXPECT_EQ(30.0, x.r(3.0));
    EXPECT_EQ(0, Mm(x(logical(Mm(0.0)))).size());
    Mm z = named(row({1, 2, 3}), "z");
    EXPECT_ERROR(Mm(z(k + 3.0)),
                 "z(=4) : Index out of matrix. Index value was 4 however the indexed matrix has 3 elements.");
    // Chains on a reference with numbers, reading and writing.
    Mm c = cell_of({row({5, 6}), Mm(9.0)});
    EXPECT_EQ(V{6}, values(Mm(c.br(Mm(1.0))(Mm(2.0)))));
    Mm s;
    s(2.0).member("a") = Mm(3.0);
    EXPECT_EQ(2, s.size());
    EXPECT_EQ(V{3}, values(Mm(s(2.0).member("a"))));
    // The descriptor handed to a class's subsref shows the numbers as matrices.
    Mm base = row({1, 2, 3});
    Mm d = build_subs_descriptor(base(2.0, 3.0));
    Mm subs = Mm(d.member("subs"));
    ASSERT_EQ(2, subs.nnz);
    EXPECT_EQ(V{3}, values(static_cast<Mm*>(subs.pr)[1]));
}

TEST(ScalarPath, LoopStepOverARow) {
    Mm range = colon(1.0, 5.0);
    Mm k("k", 0, 0);
    double sum = 0;
    for (int n = 0; n < forsize(range); ++n) {
        forelem(k, range, n);
        sum += *k.addr();
    }
    EXPECT_EQ(15.0, sum);
    // The body keeps a copy, or gives the loop variable something else: the next step starts afresh.
    forelem(k, range, 0);
    Mm held = k;
    forelem(k, range, 1);
    EXPECT_EQ(V{1}, values(held));
    EXPECT_EQ(V{2}, values(k));
    k = TM("xy");
    forelem(k, range, 2);
    EXPECT_EQ(V{3}, values(k));
    EXPECT_EQ(0, k.flags.str);
    // A string range gives string loop values.
    Mm letters = TM("abc");
    forelem(k, letters, 0);
    forelem(k, letters, 1);
    EXPECT_EQ(1, k.flags.str);
    EXPECT_EQ(V{98}, values(k));
}

TEST(ScalarPath, AssigningAHeldValueWritesItIntoTheTargetsOwnStorage) {
    Mm x = row({1, 2, 3});
    Mm s = named(row({0}), "s");
    void* block = s.pr;
    for (double k = 1; k <= 3; ++k) s = s + x(k);
    EXPECT_EQ(block, s.pr);
    EXPECT_EQ(V{6}, values(s));
    EXPECT_STREQ("s", s.name);
    // The value's flags come with it.
    s = x(1.0) < 2.0;
    EXPECT_EQ(1, s.flags.logical);
    EXPECT_EQ(block, s.pr);
    // Storage that another head holds is not written: the assignment shares as usual.
    Mm other = s;
    s = x(2.0) + 0.0;
    EXPECT_EQ(V{1}, values(other));
    EXPECT_EQ(1, other.flags.logical);
    EXPECT_EQ(V{2}, values(s));
    EXPECT_EQ(0, s.flags.logical);
    // Targets of another kind take the value the usual way.
    Mm b = ak_test::bytes({7});
    b = x(3.0) + 0.0;
    EXPECT_EQ(ak_double, b.flags.type);
    EXPECT_EQ(V{3}, values(b));
    Mm c = cell_of({Mm(1.0)});
    c = x(1.0) * 5.0;
    EXPECT_EQ(ak_double, c.flags.type);
    EXPECT_EQ(V{5}, values(c));
}

TEST(ScalarPath, KeptBlocksAreReusedAndGivenBack) {
    if (ak_scalar_blocks.distance != ak_scalar_capacity * 8)
        GTEST_SKIP() << "sanitizer builds keep no blocks";
    for (int k = 0; k < 10; ++k) Mm warm = Mm(1.0) + 1.0;
    const int live = ak_internal::pool_live_blocks();
    Mm x = row({1, 2, 3});
    for (int k = 0; k < 1000; ++k) x(2.0) = x(1.0) * 0.5 + 1.0;
    EXPECT_EQ(live, ak_internal::pool_live_blocks() - 1);  // the row only: no block per iteration
    // A 1x1 still held by another head keeps its storage.
    Mm a(2.0);
    Mm b = a;
    a = Mm(3.0);
    { Mm c = b; }  // the end of a head that shares a 1x1 block keeps it for the other
    Mm e(4.0);
    Mm d = e;  // a copy of a held value takes a kept block
    EXPECT_NE(b.pr, d.pr);
    EXPECT_EQ(V{2}, values(b));
    // Sparse storage, whose index is a block of its own, is freed rather than kept.
    const int in_use = ak_internal::pool_blocks_in_use();
    { Mm sp = sparse(Mm(5.0)); }
    EXPECT_EQ(in_use, ak_internal::pool_blocks_in_use());
    // Any block of the same size serves: 64 bytes of text and the count.
    {
        Mm bytes(0, 0, 0, 1, 64, ak_uchar);
        void* block = bytes.pr;
        bytes = Mm();
        Mm v(6.5);
        Mm copy = v;
        EXPECT_EQ(block, copy.pr);
        EXPECT_EQ(V{6.5}, values(copy));
    }
    // Multi-task mode gives the kept blocks back and keeps none while it lasts.
    { Mm t = Mm(1.0) + 2.0, u = t; }
    EXPECT_NE(nullptr, ak_scalar_blocks.head);
    ak_set_AK(1);
    EXPECT_EQ(nullptr, ak_scalar_blocks.head);
    { Mm t = Mm(1.0) + 2.0, u = t; }
    EXPECT_EQ(nullptr, ak_scalar_blocks.head);
    ak_set_AK(0);
    { Mm t = Mm(1.0) + 2.0, u = t; }
    EXPECT_NE(nullptr, ak_scalar_blocks.head);
}

TEST(ScalarPath, TheAllocatorTakesKeptBlocksBackBeforeGrowing) {
    if (ak_scalar_blocks.distance != ak_scalar_capacity * 8)
        GTEST_SKIP() << "sanitizer builds keep no blocks";
    auto kept = [] { return ak_internal::pool_live_blocks() - ak_internal::pool_blocks_in_use(); };
    {
        std::vector<Mm> many(3000);
        for (std::size_t k = 0; k < many.size(); ++k) {
            Mm v(static_cast<double>(k));
            many[k] = v;  // a copy moves the value to a 1x1 block
        }
    }
    EXPECT_GE(kept(), 3000);
    const std::size_t reserved = ak_internal::global_pool().reserved_bytes();
    // Blocks of the same size, asked for plainly, use up the allocator's own list (however long the
    // tests before left it) and then the kept ones, rather than new memory.
    std::vector<void*> blocks;
    while (kept() > 0 && blocks.size() < 1000000) blocks.push_back(ak_malloc(ak_scalar_capacity * 8 + 8));
    EXPECT_EQ(0, kept());
    EXPECT_LE(ak_internal::global_pool().reserved_bytes(), reserved);
    for (void* p : blocks) ak_free(p);
}
