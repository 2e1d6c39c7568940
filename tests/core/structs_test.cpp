// Structure arrays: struct, cell2struct, struct2cell, fieldnames, isfield, rmfield.
#include "arklib.h"
#include "cells_test_support.h"
#include "test_support.h"

using namespace cells_test;

TEST(StructBuild, CellValuesSetTheShapeOthersAreShared) {
    Mm s = mstruct(cell_row({TM("a"), cell_row({Mm(1.0), Mm(2.0)}), TM("b"), Mm(5.0)}));
    ASSERT_TRUE(s.isstruct());
    EXPECT_EQ(s.cols(), 2);
    ASSERT_EQ(s.nfields, 2);
    EXPECT_STREQ(s.fields[1], "b");
    EXPECT_EQ(num(field(s, 2, "a")), 2.0);
    EXPECT_EQ(num(field(s, 2, "b")), 5.0);
    // Every element is a 1 x nfields cell.
    EXPECT_EQ(at(s, 2).gettype(), ak_mm);
    EXPECT_EQ(at(s, 2).cols(), 2);

    // A cell in a cell stores the inner cell in the field.
    Mm inner = cell_row({Mm(1.0), Mm(2.0)});
    Mm t = mstruct(cell_row({TM("c"), cell_row({inner})}));
    EXPECT_EQ(field(t, 1, "c").pr, inner.pr);

    // The same name twice is one field, the later value winning.
    Mm u = mstruct(cell_row({TM("x"), Mm(1.0), TM("x"), Mm(2.0)}));
    EXPECT_EQ(u.nfields, 1);
    EXPECT_EQ(num(field(u, 1, "x")), 2.0);
}

TEST(StructBuild, SpecialListsAndErrors) {
    // One argument comes back as it is.
    Mm x = row({1, 2});
    EXPECT_EQ(mstruct(cell_row({x})).pr, x.pr);
    // No arguments: one element, no fields, but a structure.
    Mm none = mstruct(cell(Mm(0.0)));
    EXPECT_TRUE(none.isstruct());
    EXPECT_EQ(none.size(), 1);
    // An empty cell value makes an empty array that still has the field.
    Mm empty = mstruct(cell_row({TM("a"), cell(Mm(0.0))}));
    EXPECT_EQ(empty.size(), 0);
    EXPECT_EQ(empty.findfield("a", 0), 0);

    EXPECT_ERROR(mstruct(cell_row({TM("a"), Mm(1.0), TM("b")})), "struct: odd numbers of inputs");
    EXPECT_ERROR(mstruct(cell_row({TM("a"), cell_row({Mm(1.0), Mm(2.0)}), TM("b"), cell_row({Mm(1.0)})})),
                 "struct: all cell arrays must be of same size");
}

TEST(StructConvert, Cell2structAndBackAlongEitherDimension) {
    // c = {1 'x'; 2 'y'}
    Mm c(0, 0, 0, 2, 2, ak_mm);
    Mm* e = static_cast<Mm*>(c.pr);
    e[0] = Mm(1.0);
    e[1] = Mm(2.0);
    e[2] = TM("x");
    e[3] = TM("y");

    // Fields along the columns: one element per row.
    Mm s = cell2struct(c, cell_row({TM("num"), TM("name")}), Mm(2.0));
    ASSERT_TRUE(s.isstruct());
    EXPECT_EQ(s.rows(), 2);
    EXPECT_EQ(s.cols(), 1);
    EXPECT_EQ(str(field(s, 2, "name")), "y");
    EXPECT_EQ(field(s, 2, "name").pr, e[3].pr);  // values are shared, not copied

    // struct2cell gives [nfields size(s)]: field f of element i at (i - 1) * nfields + f.
    Mm back = struct2cell(s);
    ASSERT_EQ(back.gettype(), ak_mm);
    EXPECT_EQ(back.rows(), 2);
    EXPECT_EQ(back.cols(), 2);
    EXPECT_EQ(num(at(back, 3)), 2.0);
    // ... which is the round trip along dimension 1.
    Mm again = cell2struct(back, cell_row({TM("num"), TM("name")}), Mm(1.0));
    EXPECT_EQ(str(field(again, 2, "name")), "y");

    // Fields along the rows: one element per column, as a column.
    Mm t = cell2struct(c, cell_row({TM("p"), TM("q")}), Mm(1.0));
    EXPECT_EQ(t.rows(), 2);
    EXPECT_EQ(str(field(t, 2, "p")), "x");
}

TEST(StructConvert, Cell2structErrors) {
    Mm c = cell_row({Mm(1.0), Mm(2.0)});
    EXPECT_ERROR(cell2struct(c, cell_row({TM("a")}), Mm(2.0)), "cell2struct: length(fields)!=size(x,dim)");
    EXPECT_ERROR(cell2struct(row({1, 2}), cell_row({TM("a"), TM("b")}), Mm(2.0)),
                 "cell2struct: first argument is not a cell");
    EXPECT_ERROR(cell2struct(c, row({1, 2}), Mm(2.0)), "cell2struct: second argument is not a cell");
    EXPECT_ERROR(cell2struct(c, cell_row({TM("a"), TM("a")}), Mm(2.0)), "cell2struct: duplicate field 'a'");
    EXPECT_ERROR(cell2struct(c), "cell2struct does not accept 1 input");
    {
        // Going on after the duplicate report keeps both names.
        ak_test::Recorder rec(ak_test::Recorder::kErrors);
        Mm s = cell2struct(c, cell_row({TM("a"), TM("a")}), Mm(2.0));
        EXPECT_EQ(rec.errors.size(), 1u);
        EXPECT_EQ(s.nfields, 2);
        EXPECT_EQ(num(at(at(s, 1), 2)), 2.0);
    }
    EXPECT_ERROR(struct2cell(c), "struct2cell: structure expected, but matrix (temporary) is not");
}

TEST(StructFields, FieldnamesIsfieldRmfield) {
    Mm s = mstruct(cell_row({TM("a"), cell_row({Mm(1.0), Mm(2.0)}), TM("b"), Mm(5.0), TM("c"), TM("t")}));
    Mm names = fieldnames(s);
    EXPECT_EQ(names.rows(), 3);
    EXPECT_EQ(str(at(names, 2)), "b");
    EXPECT_TRUE(at(names, 2).isstr());
    EXPECT_ERROR(fieldnames(Mm(1.0)), "fieldnames: structure expected, but matrix =1 is not");

    Mm yes = isfield(s, TM("c"));
    EXPECT_TRUE(yes.islogical());
    EXPECT_EQ(num(yes), 1.0);
    Mm plain = isfield(row({1, 2}), TM("a"));
    EXPECT_EQ(num(plain), 0.0);
    EXPECT_FALSE(plain.islogical());

    Mm r;
    {
        ak_test::Recorder rec(ak_test::Recorder::kErrors);
        r = rmfield(s, cell_row({TM("zz"), TM("a")}));
        ASSERT_EQ(rec.errors.size(), 1u);
        EXPECT_EQ(rec.errors[0], "rmfield: structure has no field named 'zz'");
    }
    ASSERT_EQ(r.nfields, 2);
    EXPECT_STREQ(r.fields[0], "b");
    EXPECT_EQ(at(r, 2).cols(), 2);
    // The argument keeps its fields and elements.
    EXPECT_EQ(s.nfields, 3);
    EXPECT_EQ(num(field(s, 2, "a")), 2.0);

    EXPECT_ERROR(rmfield(s, TM("zz")), "rmfield: structure has no field named 'zz'");
    EXPECT_ERROR(rmfield(s), "rmfield does not accept 1 input");
    EXPECT_ERROR(rmfield(TM("xy"), TM("x")), "rmfield: structure expected, but matrix (temporary) is not");
}

TEST(StructFields, GetfieldAndSetfieldByMemberAndByIndex) {
    Mm inner = mstruct(cell_row({TM("v"), row({10, 20, 30})}));
    Mm s = mstruct(cell_row({TM("in"), inner, TM("n"), Mm(4.0)}));
    // s.in.v(1, 3)
    Mm keys = cell_row({TM("in"), TM("v"), cell_row({Mm(1.0), Mm(3.0)})});
    EXPECT_EQ(num(getfield(s, keys)), 30.0);
    // An empty subscript list reads nothing; an element of a structure array is picked by index.
    Mm arr = mstruct(cell_row({TM("a"), cell_row({Mm(1.0), Mm(2.0)})}));
    EXPECT_EQ(num(getfield(arr, cell_row({cell(Mm(0.0)), cell_row({Mm(2.0)}), TM("a")}))), 2.0);

    EXPECT_ERROR(getfield(s, cell_row({Mm(1.0)})), "getfield: index must be a string or cell array");
    EXPECT_ERROR(getfield(s, TM("zz")), "(temporary).zz: structure field does not exist");
    EXPECT_ERROR(getfield(row({1, 2}), TM("a")),
                 "getfield: structure expected, but matrix (temporary) is not");

    Mm t = setfield(s, TM("n"), Mm(5.0));
    EXPECT_EQ(num(field(t, 1, "n")), 5.0);
    EXPECT_EQ(num(field(s, 1, "n")), 4.0);  // the argument is not written through
    Mm u = setfield(s, TM("m"), TM("new"));
    EXPECT_EQ(str(field(u, 1, "m")), "new");
    EXPECT_EQ(s.nfields, 2);

    Mm v = setfield(arr, cell_row({Mm(2.0)}), mstruct(cell_row({TM("a"), Mm(7.0)})));
    EXPECT_EQ(num(field(v, 2, "a")), 7.0);
    EXPECT_EQ(num(field(arr, 2, "a")), 2.0);
    // No subscripts: nothing is assigned.
    EXPECT_EQ(setfield(arr, cell(Mm(0.0)), Mm(1.0)).pr, arr.pr);

    EXPECT_ERROR(setfield(s, Mm(1.0), Mm(1.0)), "setfield: index must be a string or cell array");
    EXPECT_ERROR(setfield(s), "setfield does not accept 1 input");
}
