// Index values a program should never give but may: 2^31 and beyond, NaN, positions outside a sparse
// matrix, and deletions from very wide sparse rows. Each is refused with a message, in both error
// modes, and the target keeps its value.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <functional>
#include <string>

#include "arklib/sparse.h"
#include "tests/core/subscript_test_support.h"

using namespace sub_test;
using V = std::vector<double>;
using D = std::vector<int>;
using P = std::vector<int>;

namespace {

const double two31 = 2147483648.0;

// A text of everything a value holds (shape, kind, stored values and positions, cells element by
// element), for telling whether a refused statement changed its target.
std::string describe(const Mm& m) {
    char head[160];
    std::snprintf(head, sizeof head, "t%d n%d [%d %d %d %d] nnz%d s%d c%d f%d{", m.flags.type, m.ndims, m.dims[0],
                  m.dims[1], m.dims[2], m.dims[3], m.nnz, m.flags.sparse, m.pi != nullptr, m.nfields);
    std::string out = head;
    for (int k = 0; k < m.nnz; ++k) {
        char item[64];
        if (m.flags.type == ak_mm) {
            out += describe(static_cast<const Mm*>(m.pr)[k]) + ",";
            continue;
        }
        const double v = m.flags.type == ak_uchar ? static_cast<const unsigned char*>(m.pr)[k] : m.addr()[k];
        std::snprintf(item, sizeof item, "%g@%d,", v, m.flags.sparse ? m.index[k] : k);
        out += item;
    }
    return out + "}";
}

// Runs the statement once with errors thrown and once with a handler that returns. Each time it must
// report exactly `text` and leave the target as it was.
void expect_refused(const std::function<Mm()>& make, const std::function<void(Mm&)>& statement,
                    const std::string& text) {
    {
        Mm target = make();
        const std::string before = describe(target);
        ak_test::ErrorsThrow guard;
        std::string caught = "(no error)";
        try {
            statement(target);
        } catch (char* message) {
            caught = message;
        }
        EXPECT_EQ(text, caught);
        EXPECT_EQ(before, describe(target)) << "after a thrown " << text;
    }
    {
        Mm target = make();
        const std::string before = describe(target);
        ak_test::Recorder rec(ak_test::Recorder::kErrors);
        statement(target);
        ASSERT_FALSE(rec.errors.empty()) << "no error with a returning handler, expected " << text;
        EXPECT_EQ(text, rec.errors[0]);
        EXPECT_EQ(before, describe(target)) << "after a returned " << text;
    }
}

Mm cell_pair() { return named(cell_of({Mm(1.0), Mm(2.0)}), "c"); }
Mm cube() { return named(counting(3, {2, 2, 2}), "x"); }
Mm short_row() { return named(row({1, 2, 3}), "r"); }
Mm sparse_row() { return named(sparse(row({0, 4, 5})), "sp"); }
Mm one_struct() {
    Mm s;
    s.member("a") = 5.0;
    s.name = "s";
    return s;
}

}  // namespace

// A write whose position or resulting size does not fit an element count, on every assignment route.
TEST(HostileIndex, GrowthPastTheLargestElementCountIsRefused) {
    const std::string oom = "Out of memory!";
    expect_refused(cell_pair, [&](Mm& c) { c.br(two31) = 1.0; }, oom);
    expect_refused(cell_pair, [&](Mm& c) { c.br(1.0, two31) = 1.0; }, oom);
    expect_refused(cube, [&](Mm& x) { x(two31, 1.0, 1.0) = 1.0; }, oom);
    expect_refused(cube, [&](Mm& x) { x(1.0, 1.0, two31) = 1.0; }, oom);
    expect_refused(cube, [&](Mm& x) { x(1.0, 1.0, 1e300) = 1.0; }, oom);
    // Fits each place but not their product.
    expect_refused(cube, [&](Mm& x) { x(2147483647.0, 2.0, 1.0) = 1.0; }, oom);
    expect_refused(one_struct, [&](Mm& s) { s(two31).member("a") = 1.0; }, oom);
    expect_refused(sparse_row, [&](Mm& s) { s(two31) = 1.0; }, oom);
    expect_refused(sparse_row, [&](Mm& s) { s(3e9) = 1.0; }, oom);
    expect_refused(sparse_row, [&](Mm& s) { s(1.0, two31) = 1.0; }, oom);
    // The plain one- and two-index routes of dense matrices.
    expect_refused(short_row, [&](Mm& r) { r(two31) = 1.0; }, oom);
    expect_refused(short_row, [&](Mm& r) { r(row({1, two31})) = row({7, 8}); }, oom);
    expect_refused(short_row, [&](Mm& r) { r(two31, 1.0) = 1.0; }, oom);
    expect_refused(short_row, [&](Mm& r) { r(1.0, 4294967296.0) = 1.0; }, oom);
    // A single index past the end of a matrix that is not a vector keeps its own message.
    expect_refused(cube, [&](Mm& x) { x(two31) = 1.0; },
                   "Index =2147483648 out of matrix x. Index value was 2147483648 however the indexed matrix "
                   "has only 8 elements.");

    // The largest position that fits is still written: a sparse row of 2^31 - 1 columns.
    Mm s = sparse(row({0, 4}));
    EXPECT_NO_ERROR(s(2147483647.0) = 9.0);
    EXPECT_EQ(D({2, 1, 2147483647, 1, 1}), dims(s));
    EXPECT_EQ(P({1, 2147483646}), positions(s));
    EXPECT_EQ(V({4, 9}), values(s));
}

// Messages show the index value as it was given, beyond the int range too.
TEST(HostileIndex, MessagesShowTheValueGiven) {
    auto read = [](const Mm& base, const Mm& i) { return [&base, i](Mm&) { Mm t = base(i); }; };
    const Mm r = short_row();
    expect_refused(short_row, read(r, Mm(two31)),
                   "r(=2147483648) : Index out of matrix. Index value was 2147483648 however the indexed matrix "
                   "has 3 elements.");
    expect_refused(short_row, read(r, Mm(3e9)),
                   "r(=3000000000) : Index out of matrix. Index value was 3000000000 however the indexed matrix "
                   "has 3 elements.");
    expect_refused(short_row, read(r, row({1, NaN.addr()[0]})),
                   "r((temporary)) : Index out of matrix. Index value was NaN however the indexed matrix has 3 "
                   "elements.");
    expect_refused(short_row, [&](Mm&) { Mm t = r(1.0, two31); },
                   "r(=1,=1): col index out of matrix. Index was 2147483648 but indexed matrix has 3 "
                   "columns.");
    const Mm x = cube();
    expect_refused(cube, [&](Mm&) { Mm t = x(1.0, two31); },
                   "Index =2147483648 out of matrix x. Index value was 2147483648 however the indexed matrix has "
                   "4 elements in this dimension.");
    expect_refused(cube, [&](Mm&) { Mm t = x(1.0, 1.0, -3e9); },
                   "index =-3000000000 out of matrix x. Index value was -3000000000 which is not positive.");
    const Mm sp = sparse_row();
    expect_refused(sparse_row, read(sp, Mm(3e9)),
                   "Index =3000000000 out of vector sp. Index value was 3000000000 however the indexed vector has "
                   "only 3 elements.");
    expect_refused(sparse_row, [&](Mm& s) { s(-3e9) = 1.0; },
                   "index =-3000000000 out of matrix sp. Index value was -3000000000 which is not positive.");
    expect_refused(short_row, [&](Mm& t) { t(row({1, NaN.addr()[0]})) = nop_M; }, "r(NaN): index is non-positive");
    // Deleting at positions past the end deletes nothing, however far.
    Mm d = short_row();
    EXPECT_NO_ERROR(d(row({two31, 1e300})) = nop_M);
    EXPECT_EQ(V({1, 2, 3}), values(d));

    // The diagonal of a sparse identity as tall as an int allows.
    Mm tall = speye(Mm(2147483647.0), Mm(1.0));
    EXPECT_EQ(D({2, 2147483647, 1, 1, 1}), dims(tall));
    EXPECT_EQ(P({0}), positions(tall));
}

// Two-index reads of a sparse matrix check their positions as the full matrix does, with the same
// messages; an empty selection is a well-formed 2-D sparse matrix.
TEST(HostileIndex, SparseTwoIndexReadsReportLikeFull) {
    const Mm s = named(sparse(eye(3)), "s");
    const Mm f = named(full(s), "s");
    auto message_of = [](const Mm& base, const Mm& i, const Mm& j) {
        ak_test::ErrorsThrow guard;
        try {
            Mm t = base(i, j);
        } catch (char* message) {
            return std::string(message);
        }
        return std::string("(no error)");
    };
    const Mm five = Mm(5.0), one = Mm(1.0), zero = Mm(0.0), minus3 = Mm(-3.0), rows14 = row({1, 4}),
             two = row({2}), cols34 = row({3, 4}), mask = logical(row({0, 0, 0, 1}));
    const Mm* cases[][2] = {{&five, &one}, {&zero, &one}, {&one, &minus3}, {&c_p, &five},
                            {&c_p, &zero}, {&rows14, &two}, {&one, &cols34}, {&mask, &one}, {&one, &mask}};
    for (const auto& c : cases) {
        const std::string full_message = message_of(f, *c[0], *c[1]);
        EXPECT_NE("(no error)", full_message);
        EXPECT_EQ(full_message, message_of(s, *c[0], *c[1]));
    }
    // (Unnamed scalars share one name buffer: the leftmost formatted shows in both places.)
    EXPECT_EQ("s(=5,=5): row index out of matrix. Index was 5 but indexed matrix has 3 rows.",
              message_of(s, five, one));
    EXPECT_EQ("s(:,=0): col index out of matrix. Index was 0 but indexed matrix has 3 columns.",
              message_of(s, c_p, zero));
    // A returning handler gives nothing.
    {
        ak_test::Recorder rec(ak_test::Recorder::kErrors);
        Mm t = s(Mm(5.0), Mm(1.0));
        EXPECT_EQ(1u, rec.errors.size());
        EXPECT_EQ(ak_no_type, t.flags.type);
    }
    // In range, with an empty index on the other place, nothing is checked (as for full).
    Mm none = s(Mm(9.0), row({}));
    EXPECT_EQ(0, none.nnz);

    const Mm o = sparse(ones(2.0, 2.0));
    Mm empty = o(1.0, 1.0, Mm(0, 0, 0, 0, 0, ak_double));
    EXPECT_TRUE(empty.issparse());
    EXPECT_EQ(2, empty.ndims);
    EXPECT_EQ(0, empty.size());
    EXPECT_EQ(0, full(empty).size());
    Mm single = o(1.0, 1.0, 1.0);
    EXPECT_EQ(D({2, 1, 1, 1, 1}), dims(single));
    EXPECT_EQ(V({1}), values(single));
}

// Deleting from, clearing, joining and reading a very wide sparse matrix cost time and memory in its
// entries, not its columns.
TEST(HostileIndex, VeryWideSparseMatricesCostTheirEntries) {
    const auto start = std::chrono::steady_clock::now();
    Mm w = sparse(Mm(1.0), Mm(2147483647.0));
    w(5.0) = 2.0;
    w(2147483647.0) = 3.0;
    w(row({1, 2147483646})) = nop_M;
    EXPECT_EQ(D({2, 1, 2147483645, 1, 1}), dims(w));
    EXPECT_EQ(P({3, 2147483644}), positions(w));
    EXPECT_EQ(V({2, 3}), values(w));
    // Whole columns of a wide 2-D matrix.
    Mm m = sparse(Mm(2.0), Mm(1e9));
    m(2.0, 3.0) = 1.0;
    m(1.0, 1e9) = 4.0;
    m(c_p, row({2, 3, 3})) = nop_M;
    EXPECT_EQ(D({2, 2, 999999998, 1, 1}), dims(m));
    EXPECT_EQ(P({1999999994}), positions(m));
    EXPECT_EQ(V({4}), values(m));
    // Colons beside the deleted place are not walked over their extents.
    Mm v = w;
    v(c_p, Mm(4.0), c_p) = nop_M;
    EXPECT_EQ(D({2, 1, 2147483644, 1, 1}), dims(v));
    EXPECT_EQ(P({2147483643}), positions(v));
    v(Mm(1.0), c_p) = nop_M;
    EXPECT_EQ(0, v.size());
    // Reads under a colon walk the entries, not the columns.
    Mm top = w(1.0, c_p);
    EXPECT_EQ(D({2, 1, 2147483645, 1, 1}), dims(top));
    EXPECT_EQ(P({3, 2147483644}), positions(top));
    Mm column = sparse(Mm(2147483647.0), Mm(1.0));
    column(9.0) = 2.0;
    Mm down = column(c_p, 1.0);
    EXPECT_EQ(D({2, 2147483647, 1, 1, 1}), dims(down));
    EXPECT_EQ(P({8}), positions(down));
    EXPECT_ERROR(Mm t = w(2.0, c_p),
                 "(temporary)(=2,:): row index out of matrix. Index was 2 but indexed matrix has 1 rows.");
    // Colons over those columns: zero clears by stored entries, anything else would need 2^31 - 1
    // entries and is refused at once, the target unchanged.
    Mm wide = w;
    wide(c_p, c_p) = 0.0;
    EXPECT_EQ(0, wide.nnz);
    EXPECT_EQ(D({2, 1, 2147483645, 1, 1}), dims(wide));
    wide = w;
    wide(1.0, row({4, 7})) = 0.0;  // 4 stores 2; 7 stores nothing
    EXPECT_EQ(P({2147483644}), positions(wide));
    wide(c_p) = 0.0;
    EXPECT_EQ(0, wide.nnz);
    EXPECT_ERROR(w(c_p, c_p) = 5.0, "Out of memory!");
    EXPECT_EQ(V({2, 3}), values(w));
    EXPECT_ERROR(w(c_p) = row({1, 2}),
                 "In indexed assignment to the matrix (temporary), the index size was 2147483645 but right hand side "
                 "has 2 elements");
    // A cleared column of a 2-D matrix, and a clear that grows the shape.
    Mm grid = sparse(Mm(3.0), Mm(1e6));
    grid(2.0, 5.0) = 1.0;
    grid(3.0, 5.0) = 2.0;
    grid(1.0, 6.0) = 3.0;
    grid(row({2, 3}), c_p) = 0.0;
    EXPECT_EQ(V({3}), values(grid));
    grid(5.0, c_p) = 0.0;
    EXPECT_EQ(D({2, 5, 1000000, 1, 1}), dims(grid));
    EXPECT_EQ(P({25}), positions(grid));
    // A diagonal whose order would pass the int range.
    EXPECT_ERROR(Mm t = diag(sparse(Mm(1.0), Mm(1073741824.0)), Mm(2147483647.0)), "Out of memory!");
    // Joining wide sparse parts whose positions would pass an int is refused; narrow ones join.
    EXPECT_ERROR(Mm t = horzcat(w, w), "Out of memory!");
    EXPECT_ERROR(Mm t = vertcat(column, sparse(Mm(2.0), Mm(1.0))), "Out of memory!");
    Mm joined = vertcat(column, sparse(Mm(0.0), Mm(1.0)));
    EXPECT_EQ(P({8}), positions(joined));
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    EXPECT_LT(seconds, 2.0);
}

namespace {

// Reads whose selection would pass the int range report it; where the error handler returns, the
// program goes on with an empty, well-formed value.
TEST(HostileIndex, SelectionsPastTheIntRangeGiveNothing) {
    ak_test::Recorder rec(ak_test::Recorder::kErrors);
    Mm tall = sparse(Mm(2147483647.0), Mm(1.0));
    tall(1.0) = 98.0;
    Mm a = tall(c_p, Mm(1.0), Mm(1.0), row({1, 1}));
    EXPECT_EQ(0, a.size());
    EXPECT_EQ(0, a.nnz);
    Mm wide = sparse(Mm(1.0), Mm(2147483647.0));
    Mm e = wide(Mm(0, 0, 0, 0, 0, ak_double), c_p, row({1, 1}));
    EXPECT_EQ(0, e.size());
    EXPECT_EQ(rec.errors, std::vector<std::string>(2, "Out of memory!"));
}

// Deleting every element of a sparse array of three dimensions leaves its shape well formed (the
// empty last dimension is kept), and deletion places far past the end of a wide sparse matrix
// delete nothing.
TEST(HostileIndex, DeletionKeepsSparseShapesWellFormed) {
    ak_test::ErrorsThrow guard;
    Mm e = sparse(Mm(1.0), Mm(1.0));
    e(1.0, 1.0, 2.0) = 3.0;
    e(1.0) = 3.0;
    e(row({1, 2})) = nop_M;
    EXPECT_EQ(D({3, 1, 1, 0, 1}), dims(e));
    Mm wide = sparse(Mm(2.0), Mm(1e9));
    wide(2.0, 7.0) = 1.0;
    wide(Mm(3e9), c_p) = nop_M;
    EXPECT_EQ(P({13}), positions(wide));
    // Where the error handler returns, the first non-colon place stays in force and the walk goes
    // on over places past the end, whose linear positions must not overflow.
    ak_test::Recorder rec(ak_test::Recorder::kErrors);
    Mm tall = sparse(Mm(2147483647.0), Mm(1.0));
    tall(Mm(1.0), Mm(3e9), Mm(3e9)) = nop_M;
    ASSERT_FALSE(rec.errors.empty());
    EXPECT_EQ(rec.errors[0],
              "While assigning empty matrix to the matrix '(temporary)', there was more than one non-colon index");
    EXPECT_EQ(D({2, 2147483646, 1, 1, 1}), dims(tall));
}

}  // namespace
