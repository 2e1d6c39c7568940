// Reads of cells and structures, chains of references, user-class subsref and the descriptor, and
// the subsref, subsasgn and subsindex functions.
#include <gtest/gtest.h>

#include <cmath>

#include "core/memory_internal.h"
#include "tests/core/subscript_test_support.h"

using namespace sub_test;
using V = std::vector<double>;
using D = std::vector<int>;

namespace {

std::string text(const Mm& m) {
    char buffer[256];
    return Mstr(m, buffer, sizeof buffer);
}

// A 1x3 structure array with fields a and b: element k has a = k and b = 10k.
Mm three_elements() {
    return structure({"a", "b"}, {cell_of({Mm(1.0), Mm(10.0)}), cell_of({Mm(2.0), Mm(20.0)}),
                                  cell_of({Mm(3.0), Mm(30.0)})});
}

}  // namespace

TEST(SubscriptCells, ContentReads) {
    Mm c = named(cell_of({Mm(10.0), TM("ab"), row({1, 2, 3})}), "c");
    Mm second = c.br(2.0);
    EXPECT_TRUE(second.isstr());
    EXPECT_EQ(at(c, 2).pr, second.pr);  // the element's storage is shared, not copied
    // x{[]} is the empty double; x{1:3} gives the first element selected.
    Mm none = c.br(Mm());
    EXPECT_EQ(ak_double, none.gettype());
    EXPECT_EQ(D({2, 0, 0, 0, 0}), dims(none));
    EXPECT_EQ(V{10}, values(Mm(c.br(row({1, 2, 3})))));
    EXPECT_EQ(V({1, 2, 3}), values(Mm(c.br(logical(row({0, 0, 1}))))));
    EXPECT_EQ(V({1, 2, 3}), values(Mm(c.br(1.0, 3.0))));
    EXPECT_ERROR(Mm(c.br(4.0)),
                 "Index =4 out of vector c. Index value was 4 however the indexed vector has only "
                 "3 elements.");
    EXPECT_ERROR(Mm(c.br(0.0)), "index =0 out of matrix c. Index value was 0 which is not positive.");
    Mm x = named(row({1, 2}), "x");
    EXPECT_ERROR(Mm(x.br(1.0)), "variable 'x' was {}-indexed, but it is not a cell array");
    ak_test::Recorder rec(ak_test::Recorder::kErrors);
    EXPECT_EQ(ak_no_type, Mm(x.br(1.0)).gettype());
}

TEST(SubscriptCells, ParenthesisReadsOfCellsShareTheElements) {
    Mm c = cell_of({Mm(1.0), TM("xy"), row({4, 5})});
    Mm part = c(row({3, 2}));
    EXPECT_EQ(ak_mm, part.gettype());
    EXPECT_EQ(D({2, 1, 2, 1, 1}), dims(part));
    EXPECT_EQ(at(c, 3).pr, at(part, 1).pr);
    EXPECT_EQ(at(c, 2).pr, at(part, 2).pr);
}

TEST(SubscriptCells, MemberReads) {
    Mm s = named(three_elements(), "s");
    Mm all = s.member("b");
    EXPECT_EQ(ak_mm, all.gettype());
    EXPECT_EQ(D({2, 1, 3, 1, 1}), dims(all));
    EXPECT_EQ(V{20}, values(at(all, 2)));
    Mm one = structure({"a"}, {cell_of({row({7, 8})})});
    EXPECT_EQ(V({7, 8}), values(Mm(one.member("a"))));
    EXPECT_ERROR(Mm(s.member("c")), "s.c: structure field does not exist");
    Mm x = named(row({1, 2}), "x");
    EXPECT_ERROR(Mm(x.member("f")), "x.f: not a structure");
    Mm empty(0, 0, 0, 0, 0, ak_mm);
    empty.addfield("a", 0);
    Mm e = empty.member("a");
    EXPECT_EQ(ak_double, e.gettype());
    EXPECT_EQ(0, e.size());
    // An element that is not a row of all fields is reported and skipped.
    Mm bad = named(three_elements(), "bad");
    static_cast<Mm*>(bad.pr)[1] = cell_of({Mm(1.0)});
    ak_test::Recorder rec(ak_test::Recorder::kErrors);
    Mm partial = bad.member("a");
    ASSERT_EQ(1u, rec.errors.size());
    EXPECT_EQ("structure 'bad' is built wrong", rec.errors[0]);
    EXPECT_EQ(V{3}, values(at(partial, 3)));
    EXPECT_EQ(0, at(partial, 2).size());
}

TEST(SubscriptCells, StructureArraySelections) {
    Mm s = three_elements();
    Mm two = s(row({3, 1}));
    EXPECT_EQ(2, two.nfields);
    EXPECT_STREQ("b", two.getfield(1));
    EXPECT_NE(s.fields, two.fields);  // a table of its own
    EXPECT_EQ(D({2, 1, 2, 1, 1}), dims(two));
    EXPECT_EQ(V{30}, values(at(at(two, 1), 2)));
    // Read silently past its end (how s(5).a = 1 fetches s(5)), it gives fresh elements.
    Mm past(s(5.0), 0);
    EXPECT_EQ(2, past.nfields);
    ASSERT_EQ(1, past.size());
    EXPECT_EQ(D({2, 1, 2, 1, 1}), dims(at(past, 1)));
    EXPECT_EQ(0, at(at(past, 1), 1).size());
    Mm named_s = named(s, "s");
    EXPECT_ERROR(Mm(named_s(5.0)),
                 "Index =5 out of vector s. Index value was 5 however the indexed vector has "
                 "only 3 elements.");
}

TEST(SubscriptCells, ChainedReadsAndTheirTemporaries) {
    Mm s = three_elements();
    Mm inner = structure({"c"}, {cell_of({cell_of({Mm(1.0), row({5, 6, 7})})})});
    Mm outer = structure({"b"}, {cell_of({inner})});
    int before = ak_internal::pool_blocks_in_use();
    {
        EXPECT_EQ(V{20}, values(Mm(s(2.0).member("b"))));
        // s.b.c{2}(3)
        EXPECT_EQ(V{7}, values(Mm(outer.member("b").member("c").br(2.0)(3.0))));
    }
    EXPECT_EQ(before, ak_internal::pool_blocks_in_use());
    Mm c = cell_of({Mm(1.0), TM("hello")});
    EXPECT_ERROR(Mm(c.br(2.0)(9.0)),
                 "(temporary)(=9) : Index out of matrix. Index value was 9 however the "
                 "indexed matrix has 5 elements.");
    EXPECT_ERROR(Mm(c.br(1.0).member("f")), "=1.f: not a structure");
}

namespace {

Mm last_self, last_descriptor;

Mm record_subsref(Mm self, Mm s) {
    last_self = self;
    last_descriptor = s;
    return Mm(42.0);
}

Mm negate_index(Mm self) { return Mm(-*at(at(self, 1), 1).addr()); }

Mm field_of(const Mm& s, const char* name) {
    int f = s.findfield(name, 0);
    return f < 0 ? Mm(NAN) : at(at(s, 1), f + 1);
}

}  // namespace

TEST(SubscriptCells, UserClassSubsrefGetsTheDescriptor) {
    register_class_function("rdpoint", "subsref", record_subsref);
    Mm p = structure({"x"}, {cell_of({Mm(3.0)})});
    p.classid = class_id_of_name("rdpoint");
    EXPECT_EQ(V{42}, values(Mm(p(2.0, c_p))));
    EXPECT_EQ(p.pr, last_self.pr);
    EXPECT_EQ("()", text(field_of(last_descriptor, "type")));
    Mm subs = field_of(last_descriptor, "subs");
    ASSERT_EQ(2, subs.size());
    EXPECT_EQ(V{2}, values(at(subs, 1)));
    EXPECT_EQ(":", text(at(subs, 2)));
    EXPECT_EQ(V{42}, values(Mm(p.member("x"))));
    EXPECT_EQ("x", text(field_of(last_descriptor, "subs")));
    EXPECT_EQ(V{42}, values(Mm(p.br(1.0))));
    EXPECT_EQ("{}", text(field_of(last_descriptor, "type")));
    // Only the last level of a chain is described: the levels above were read already.
    Mm holder = cell_of({p});
    EXPECT_EQ(V{42}, values(Mm(holder.br(1.0)(4.0))));
    EXPECT_EQ(V{4}, values(at(field_of(last_descriptor, "subs"), 1)));
    unregister_class_function("rdpoint", "subsref");
    // Without the method an object reads like its storage.
    EXPECT_EQ(V{3}, values(Mm(p.member("x"))));
}

TEST(SubscriptCells, SubsrefSubsasgnSubsindex) {
    Mm x = row({1, 2});
    Mm s = build_subs_descriptor(x(1.0));
    EXPECT_ERROR(subsref(x), "subsref does not accept 1 input");
    EXPECT_ERROR(subsref(x, s), "dummy subsref");
    EXPECT_ERROR(subsasgn(x, s), "subsasgn does not accept 2 inputs");
    EXPECT_ERROR(subsasgn(x, s, Mm(1.0)), "dummy subsasgn");
    EXPECT_EQ("?", text(field_of(build_subs_descriptor(Mr()), "type")));
    // subsindex: characters become their codes; an object asks its class.
    Mm codes = subsindex(TM("AB"));
    EXPECT_EQ(V({65, 66}), values(codes));
    EXPECT_FALSE(codes.isstr());
    register_class_function("rdindex", "subsindex", negate_index);
    Mm obj = structure({"v"}, {cell_of({Mm(6.0)})});
    obj.classid = class_id_of_name("rdindex");
    EXPECT_EQ(V{-6}, values(subsindex(obj)));
    unregister_class_function("rdindex", "subsindex");
}
