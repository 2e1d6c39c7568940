// Assignments on the general route: arrays of more than two dimensions, sparse targets and sources,
// cells and {} writes, structures and member writes, chains written back to the variable, and
// user-class subsasgn.
#include <gtest/gtest.h>

#include "arklib/sparse.h"
#include "tests/core/subscript_test_support.h"

using namespace sub_test;
using V = std::vector<double>;
using D = std::vector<int>;

namespace {

// Field `name` of element k (1-based) of a structure array, or an empty matrix of no value.
Mm field(const Mm& s, int k, const char* name) {
    int f = s.findfield(name, 0);
    if (f < 0 || k > s.size()) return Mm(nothing);
    const Mm& e = at(s, k);
    return f < e.size() ? at(e, f + 1) : Mm(nothing);
}

}  // namespace

TEST(SubscriptWriteGeneral, ThreeDimensionalWritesAndMessages) {
    // Growth of a 3-D array keeps every element at its subscripts.
    Mm c = counting(3, {2, 2, 2});
    c(3.0, 1.0, 1.0) = 9.0;
    EXPECT_EQ(D({3, 3, 2, 2, 1}), dims(c));
    EXPECT_EQ(V({1, 2, 9, 3, 4, 0, 5, 6, 0, 7, 8, 0}), values(c));
    // A page written into an empty array takes its extents from the source.
    Mm e;
    e(c_p, c_p, 2.0) = Mm(mat(2, 3, {1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(D({3, 2, 3, 2, 1}), dims(e));
    EXPECT_EQ(V({0, 0, 0, 0, 0, 0, 1, 2, 3, 4, 5, 6}), values(e));
    // Fewer indices than dimensions: the last one runs over the trailing dimensions.
    Mm t = counting(3, {2, 2, 2});
    t(2.0, 4.0) = 0.0;
    EXPECT_EQ(D({3, 2, 2, 2, 1}), dims(t));
    EXPECT_EQ(V({1, 2, 3, 4, 5, 6, 7, 0}), values(t));
    // A trailing index of 1 adds no dimension.
    Mm p = mat(2, 2, {1, 2, 3, 4});
    p(2.0, 2.0, 1.0) = 7.0;
    EXPECT_EQ(D({2, 2, 2, 1, 1}), dims(p));
    EXPECT_EQ(V({1, 2, 3, 7}), values(p));

    // Messages; the target is left as it was.
    Mm x = named(counting(3, {2, 2, 2}), "x");
    Mm k = named(Mm(9.0), "k"), z = named(Mm(0.0), "z");
    EXPECT_ERROR(
        x(k) = 1.0,
        "Index k out of matrix x. Index value was 9 however the indexed matrix has only 8 elements.");
    EXPECT_ERROR((x(1.0, z, 1.0) = 1.0), "index z out of matrix x. Index value was 0 which is not positive.");
    EXPECT_ERROR(
        (x(c_p, c_p, 1.0) = Mm(row({1, 2, 3}))),
        "In indexed assignment to the matrix x, the index size was 4 but right hand side has 3 elements");
    EXPECT_ERROR(
        (x(1.0, 5.0) = 1.0),
        "Index =5 out of matrix x. Index value was 5 however the indexed matrix has 4 elements in this "
        "dimension.");
    EXPECT_ERROR((x(1.0, 2.0, c_p) = Mm()),
                 "While assigning empty matrix to the matrix 'x', there was more than one non-colon index");
    EXPECT_EQ(V({1, 2, 3, 4, 5, 6, 7, 8}), values(x));
}

TEST(SubscriptWriteGeneral, ThreeDimensionalDeletion) {
    Mm x = counting(3, {2, 2, 3});
    Mm a = x;
    a(c_p, c_p, 2.0) = Mm();
    EXPECT_EQ(D({3, 2, 2, 2, 1}), dims(a));
    EXPECT_EQ(V({1, 2, 3, 4, 9, 10, 11, 12}), values(a));
    // A last index over the trailing dimensions deletes from them flattened.
    Mm d = x;
    d(c_p, row({2, 5})) = Mm();
    EXPECT_EQ(D({2, 2, 4, 1, 1}), dims(d));
    EXPECT_EQ(V({1, 2, 5, 6, 7, 8, 11, 12}), values(d));
    // One index on an array deletes elements and leaves a row; all colons empty it.
    Mm e = x;
    e(row({1, 12})) = Mm();
    EXPECT_EQ(D({2, 1, 10, 1, 1}), dims(e));
    Mm f = x;
    f(c_p, c_p, c_p) = Mm();
    EXPECT_EQ(D({2, 0, 0, 0, 0}), dims(f));
    EXPECT_EQ(V({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}), values(x));
}

TEST(SubscriptWriteGeneral, SparseWrites) {
    Mm s = sparse(mat(3, 3, {1, 0, 0, 0, 2, 0, 0, 0, 3}));
    Mm other = s;
    s(2.0, 2.0) = 7.0;
    EXPECT_EQ(V({1, 2, 3}), values(other));
    // Overwriting a stored element of an unshared matrix happens in place.
    void* block = s.pr;
    s(2.0, 2.0) = 8.0;
    EXPECT_EQ(block, s.pr);
    // A new element is merged into the list in position order; one overwritten with 0 leaves it.
    s(1.0, 3.0) = 4.0;
    s(2.0, 2.0) = 0.0;
    EXPECT_EQ(1, s.issparse());
    EXPECT_EQ(D({0, 6, 8}), positions(s));
    EXPECT_EQ(V({1, 4, 3}), values(s));
    // Growth recomputes the old positions for the new row count.
    s(4.0, 1.0) = 5.0;
    EXPECT_EQ(D({2, 4, 3, 1, 1}), dims(s));
    EXPECT_EQ(D({0, 3, 8, 10}), positions(s));
    // Several elements at once, and writes of zeros that were never stored.
    s(c_p, 2.0) = Mm(col({0, 6, 0, 8}));
    EXPECT_EQ(D({0, 3, 5, 7, 8, 10}), positions(s));
    EXPECT_EQ(V({1, 5, 6, 8, 4, 3}), values(s));
    // A single index past the end of a sparse vector grows it.
    Mm v = sparse(row({1, 0, 2}));
    v(5.0) = 3.0;
    EXPECT_EQ(D({2, 1, 5, 1, 1}), dims(v));
    EXPECT_EQ(D({0, 2, 4}), positions(v));
    // A sparse source written into a dense target is made full first.
    Mm d = row({5, 5, 5, 5});
    d(row({1, 2, 3, 4})) = sparse(row({0, 1, 0, 2}));
    EXPECT_EQ(0, d.issparse());
    EXPECT_EQ(V({0, 1, 0, 2}), values(d));
    // Deleting a column of a sparse matrix moves the later entries down.
    Mm t = sparse(mat(2, 3, {1, 0, 0, 2, 3, 0}));
    t(c_p, 2.0) = Mm();
    EXPECT_EQ(1, t.issparse());
    EXPECT_EQ(D({2, 2, 2, 1, 1}), dims(t));
    EXPECT_EQ(D({0, 2}), positions(t));
    EXPECT_EQ(V({1, 3}), values(t));
    t(c_p) = Mm();
    EXPECT_EQ(0, t.size());
    EXPECT_EQ(1, t.issparse());
}

TEST(SubscriptWriteGeneral, CellContentWrites) {
    Mm c;
    c.br(3.0) = 5.0;
    ASSERT_EQ(ak_mm, c.gettype());
    EXPECT_EQ(D({2, 1, 3, 1, 1}), dims(c));
    EXPECT_EQ(0, at(c, 1).size());
    EXPECT_EQ(V({5}), values(at(c, 3)));
    // x{i} = [] stores an empty element; it does not delete.
    c.br(3.0) = Mm();
    EXPECT_EQ(3, c.size());
    EXPECT_EQ(0, at(c, 3).size());
    // Several positions: the array grows over all of them, only the first receives the value.
    Mm d = cell_of({Mm(1.0)});
    d.br(colon(2.0, 4.0)) = row({7, 8});
    EXPECT_EQ(4, d.size());
    EXPECT_EQ(V({7, 8}), values(at(d, 2)));
    EXPECT_EQ(0, at(d, 3).size());
    // The other holder of a shared cell array keeps its element.
    Mm e = d;
    d.br(1.0) = 9.0;
    EXPECT_EQ(V({1}), values(at(e, 1)));
    // Only an empty value or one without a value becomes a cell array.
    Mm x = named(row({1, 2}), "x");
    EXPECT_ERROR(x.br(2.0) = 1.0, "'x' is not a cell array and can't be {}-indexed");
    Mm z = row({1});
    z(c_p) = Mm();
    z.br(2.0, 2.0) = TM("s");
    EXPECT_EQ(D({2, 2, 2, 1, 1}), dims(z));
    EXPECT_EQ(1, at(z, 4).isstr());
}

TEST(SubscriptWriteGeneral, MemberWrites) {
    // A member written into a number replaces it with a structure.
    Mm x = row({1, 2});
    x.member("a") = 1.0;
    ASSERT_TRUE(x.isstruct());
    EXPECT_EQ(1, x.size());
    x.member("b") = TM("hi");
    EXPECT_EQ(2, x.getnfields());
    // A shared structure is copied; the other holder keeps its value.
    Mm y = x;
    x.member("a") = 4.0;
    EXPECT_EQ(V({4}), values(field(x, 1, "a")));
    EXPECT_EQ(V({1}), values(field(y, 1, "a")));
    // s.a = s stores the old s.
    Mm s;
    s.member("v") = 1.0;
    s.member("self") = s;
    EXPECT_EQ(1, field(s, 1, "self").getnfields());
    EXPECT_EQ(V({1}), values(field(field(s, 1, "self"), 1, "v")));
    // On a 1x3 structure array the member write goes to the first element.
    Mm arr = structure({"f"}, {cell_of({Mm(1.0)}), cell_of({Mm(2.0)}), cell_of({Mm(3.0)})});
    arr.member("f") = 9.0;
    EXPECT_EQ(V({9}), values(field(arr, 1, "f")));
    EXPECT_EQ(V({2}), values(field(arr, 2, "f")));
    EXPECT_EQ(3, arr.size());
}

TEST(SubscriptWriteGeneral, StructureArrays) {
    // s(5).a = 1 on a shorter array adds fresh elements, each a 1 x nfields cell.
    Mm s = structure({"a", "b"},
                     {cell_of({Mm(1.0), Mm(2.0)}), cell_of({Mm(3.0), Mm(4.0)}), cell_of({Mm(5.0), Mm(6.0)})});
    Mm keep = s;
    s(5.0).member("a") = 1.0;
    EXPECT_EQ(D({2, 1, 5, 1, 1}), dims(s));
    EXPECT_EQ(D({2, 1, 2, 1, 1}), dims(at(s, 4)));
    EXPECT_EQ(V({1}), values(field(s, 5, "a")));
    EXPECT_EQ(0, field(s, 5, "b").size());
    EXPECT_EQ(V({5}), values(field(s, 3, "a")));
    EXPECT_EQ(3, keep.size());
    // An element taken from a structure of the same fields; an empty target takes y's fields.
    Mm t = structure({"a", "b"}, {cell_of({Mm(7.0), Mm(8.0)})});
    s(2.0) = t;
    EXPECT_EQ(V({8}), values(field(s, 2, "b")));
    Mm fresh;
    fresh(2.0) = t;
    ASSERT_TRUE(fresh.isstruct());
    EXPECT_EQ(V({7}), values(field(fresh, 2, "a")));
    EXPECT_EQ(D({2, 1, 2, 1, 1}), dims(at(fresh, 1)));
    // y with one trailing field more widens x; the old elements get [] in the new slot.
    Mm w = structure({"a", "b", "c"}, {cell_of({Mm(1.0), Mm(2.0), Mm(3.0)})});
    s(1.0) = w;
    EXPECT_EQ(3, s.getnfields());
    EXPECT_EQ(0, field(s, 3, "c").size());
    EXPECT_EQ(3, at(s, 3).size());
    // Any other difference of members, or a value that is not a structure, is refused.
    Mm other = structure({"b", "a", "c"}, {cell_of({Mm(1.0), Mm(2.0), Mm(3.0)})});
    EXPECT_ERROR(s(1.0) = other,
                 "In the assignment x(...)=y, x and y (structures) must have identical members");
    EXPECT_ERROR(s(1.0) = 5.0,
                 "In the assignment x(...)=y, x was a structure array but y was not a structure");
    EXPECT_EQ(5, s.size());
}

TEST(SubscriptWriteGeneral, ChainsWriteBackToTheVariable) {
    Mm s;
    s.member("a")(2.0).member("b").br(3.0) = row({4, 5});
    Mm a = field(s, 1, "a");
    ASSERT_TRUE(a.isstruct());
    EXPECT_EQ(D({2, 1, 2, 1, 1}), dims(a));
    Mm b = field(a, 2, "b");
    ASSERT_EQ(ak_mm, b.gettype());
    EXPECT_EQ(3, b.size());
    EXPECT_EQ(V({4, 5}), values(at(b, 3)));
    EXPECT_EQ(0, field(a, 1, "b").size());
    // A second write through the same path changes only its element.
    Mm keep = s;
    s.member("a")(2.0).member("b").br(1.0) = 1.0;
    EXPECT_EQ(V({1}), values(at(field(field(s, 1, "a"), 2, "b"), 1)));
    EXPECT_EQ(0, at(field(field(keep, 1, "a"), 2, "b"), 1).size());
    Mm c = cell_of({row({1, 2}), Mm(3.0)});
    c.br(1.0)(4.0) = 9.0;
    EXPECT_EQ(V({1, 2, 0, 9}), values(at(c, 1)));
}

namespace {

Mm last_value;
Mm last_subs;

// Returns a new object of the class whose only field holds the value. (A subscripted write on self
// would call this method again.)
Mm record_subsasgn(Mm self, Mm subs, Mm value) {
    last_subs = subs;
    last_value = value;
    Mm out = structure({"x"}, {cell_of({value})});
    out.classid = self.classid;
    return out;
}

}  // namespace

TEST(SubscriptWriteGeneral, UserClassSubsasgn) {
    register_class_function("wrpoint", "subsasgn", record_subsasgn);
    Mm p = structure({"x"}, {cell_of({Mm(3.0)})});
    p.classid = class_id_of_name("wrpoint");
    p(2.0, c_p) = 7.0;
    EXPECT_EQ(V({7}), values(last_value));
    EXPECT_EQ(V({'(', ')'}), values(field(last_subs, 1, "type")));
    EXPECT_EQ(V({7}), values(field(p, 1, "x")));
    EXPECT_NE(0, p.classid);
    // Within a chain the class's result is written back to the holder.
    Mm holder = cell_of({p});
    holder.br(1.0).member("y") = 8.0;
    EXPECT_EQ(V({8}), values(field(at(holder, 1), 1, "x")));
    EXPECT_EQ(V({'.'}), values(field(last_subs, 1, "type")));
    unregister_class_function("wrpoint", "subsasgn");
    // Without the method an object is written like its storage.
    p.member("x") = 1.0;
    EXPECT_EQ(V({1}), values(field(p, 1, "x")));
}

// With a handler that returns, a failed assignment leaves a well-formed target: unchanged after a
// refused index or conversion, replaced by the value after the {} message (the write goes on).
TEST(SubscriptWriteGeneral, ErrorHandlerThatReturns) {
    ak_test::Recorder rec(ak_test::Recorder::kErrors);
    Mm x = named(row({1, 2}), "x");
    x(0.0) = 1.0;
    (x(c_p, 0.0, 1.0) = 1.0);
    x(1.0) = cell_of({Mm(1.0)});
    EXPECT_EQ(V({1, 2}), values(x));
    x.br(2.0) = 5.0;
    ASSERT_EQ(4u, rec.errors.size());
    EXPECT_EQ("x(=0): index is non-positive", rec.errors[0]);
    EXPECT_EQ("'x' is not a cell array and can't be {}-indexed", rec.errors[3]);
    EXPECT_EQ(V({5}), values(x));
    EXPECT_STREQ("x", x.getname());
}
