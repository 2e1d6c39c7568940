// The calling convention: argument checks, scalar, for-loop support, truth and the predicates.
#include <cmath>
#include <cstring>
#include <string>

#include "arklib.h"
#include "test_support.h"

using ak_test::bytes;
using ak_test::row;
using ak_test::sparse_entries;

namespace {

// A rows x cols matrix holding 1, 2, 3, ... in column order, with imaginary parts -1, -2, ... when
// complex.
Mm counting(int rows, int cols, int complex = 0) {
    Mm m(complex, 0, 0, rows, cols, ak_double);
    for (int k = 0; k < m.nnz; ++k) {
        m.addr()[k] = k + 1;
        if (complex) m.addi()[k] = -(k + 1);
    }
    return m;
}

Mm complex_scalar(double re, double im) {
    Mm z(1, 0, 0, 1, 1, ak_double);
    *z.addr() = re;
    *z.addi() = im;
    return z;
}

// A 1 x n structure array with one field "v" holding 1, 2, ..., n.
Mm struct_row(int n) {
    Mm s(0, 0, 0, 1, n, ak_mm);
    s.addfield("v", 0);
    for (int k = 1; k <= n; ++k) {
        Mm element(0, 0, 0, 1, 1, ak_mm);
        element.mr(1) = Mm(static_cast<double>(k));
        s.mr(k) = element;
    }
    return s;
}

std::string text(const Mm& m) {
    char buffer[256];
    return Mstr(m, buffer, sizeof buffer);
}

}  // namespace

TEST(ArgumentChecks, ValidateNargErrorInputAndNargchk) {
    EXPECT_ERROR(validate_narg("f", 3, 5, 0, 1, 0, 2), "Too many (3>1) outputs for f");
    EXPECT_ERROR(validate_narg("f", 1, 0, 0, 1, 1, 2), "Too few (0<1) inputs for f");
    {
        ak_test::Recorder rec(ak_test::Recorder::kErrors);
        EXPECT_EQ(validate_narg("f", 2, 9, 0, 1, 0, 2), 1);
        EXPECT_EQ(rec.errors.size(), 1u);  // one report, the first failing test
    }
    EXPECT_ERROR(error_input("f", 1), "f does not accept 1 input");
    EXPECT_ERROR(error_input("f", 2), "f does not accept 2 inputs");

    EXPECT_EQ(text(nargchk(Mm(1.0), Mm(2.0), Mm(3.0))), "too many input arguments");
    EXPECT_EQ(text(nargchk(Mm(1.0), Mm(2.0), Mm(0.0))), "too few input arguments");
    Mm fine = nargchk(Mm(1.0), Mm(2.0), Mm(2.0));
    EXPECT_EQ(fine.size(), 0);
    EXPECT_TRUE(fine.isstr());
    EXPECT_EQ(text(nargchk(Mm(3.0), Mm(1.0), Mm(2.0))), "too many input arguments");  // both hold

    Mm a("A", 2, 3);
    int d3[3] = {2, 2, 2};
    Mm cube(0, 0, 0, 3, d3, ak_double);
    EXPECT_ERROR(error_square(a, "chol"),
                 "chol: square matrix expected, but matrix A has 2 rows and 3 columns");
    EXPECT_ERROR(error_square(cube, "chol"),
                 "chol: 2-d matrix expected, but matrix (temporary) has 3 dimensions");
    EXPECT_ERROR(error_sparse(a, "spfun"), "spfun: sparse matrix expected, but matrix A is full");
    EXPECT_ERROR(error_struct(a, "fieldnames"), "fieldnames: structure expected, but matrix A is not");
    Mm c(0, 0, 0, 1, 2, ak_mm);
    EXPECT_ERROR(error_numeric(c, "sum"), "sum: numeric data expected, but matrix (temporary) is not");

    ak_test::Recorder rec(ak_test::Recorder::kErrors);
    EXPECT_EQ(error_square(cube, "f"), 1);
    EXPECT_EQ(rec.errors.size(), 1u);  // the 2-d test stops the square test
    EXPECT_EQ(scalar(TM("a")), 0.0);   // a returning handler gets 0
}

TEST(Scalar, TestsInOrderAndNamesTheMatrix) {
    EXPECT_NO_ERROR(EXPECT_EQ(scalar(Mm(-4.0)), -4.0));
    Mm z = counting(2, 2, 1);
    z.flags.str = 1;
    EXPECT_ERROR(scalar(z), "scalar: matrix (temporary) is not scalar");
    Mm cs = complex_scalar(1, 1);
    cs.flags.str = 1;
    EXPECT_ERROR(scalar(cs), "scalar: matrix =1 is complex");
    EXPECT_ERROR(scalar(TM("a")), "scalar: matrix =97 is string");
    EXPECT_ERROR(scalar(sparse_entries(1, {{0, 5.0}})), "scalar: matrix (temporary) is sparse");
    EXPECT_ERROR(scalar(bytes({3})), "scalar: matrix (temporary) is not double");
}

TEST(ForLoop, SizesAndColumns) {
    EXPECT_EQ(forsize(Mm(0, 0, 0, 3, 0, ak_double)), 0);
    EXPECT_EQ(forsize(counting(2, 5)), 5);

    Mm m = counting(3, 4);
    Mm k("k", 0, 0);
    forelem(k, m, 0);
    ASSERT_EQ(k.dims[0], 3);
    ASSERT_EQ(k.dims[1], 1);
    EXPECT_STREQ(k.name, "k");
    void* storage = k.pr;
    forelem(k, m, 1);
    EXPECT_EQ(k.pr, storage);  // the same storage, no matrix per iteration
    EXPECT_EQ(k.r(1), 4.0);

    // The loop body keeps a copy of the loop variable: the next column must not overwrite it.
    Mm kept = k;
    forelem(k, m, 2);
    EXPECT_EQ(kept.r(1), 4.0);
    EXPECT_EQ(k.r(1), 7.0);

    // The body assigned something smaller to the loop variable: it gets room again.
    k = Mm(99.0);
    forelem(k, m, 3);
    ASSERT_EQ(k.nnz, 3);
    EXPECT_EQ(k.r(3), 12.0);
    EXPECT_ERROR(forelem(k, m, 4), "forelem: column 5 of (temporary) does not exist (4 columns)");

    Mm z = counting(2, 3, 1);
    Mm v;
    forelem(v, z, 0);
    // Make the column's imaginary half zero and let isreal drop it: the next column needs it back.
    *v.addi(1) = 0.0;
    *v.addi(2) = 0.0;
    EXPECT_EQ(isreal(v), 1);
    forelem(v, z, 1);
    ASSERT_TRUE(v.isc());
    EXPECT_EQ(v.i(1), -3.0);

    Mm s = TM("ab");
    forelem(v, s, 1);
    EXPECT_TRUE(v.isstr());
    EXPECT_EQ(v.r(), 'b');

    Mm sp = sparse_entries(4, {{2, 5.0}});
    forelem(v, sp, 0);
    EXPECT_FALSE(sp.issparse());  // made full once, for the whole loop
    forelem(v, sp, 2);
    EXPECT_EQ(v.r(), 5.0);

    Mm c(0, 0, 0, 2, 2, ak_mm);
    c.mr(1, 2) = TM("x");
    c.mr(2, 2) = Mm(8.0);
    forelem(v, c, 1);
    ASSERT_EQ(v.gettype(), ak_mm);
    EXPECT_EQ(text(v.mr(1)), "x");
    EXPECT_EQ(v.mr(2).r(), 8.0);

    Mm st = struct_row(3);
    forelem(v, st, 2);
    ASSERT_TRUE(isstruct(v));
    EXPECT_EQ(v.mr(1).mr(1).r(), 3.0);
}

TEST(Truth, DoubleMatrixAndObjectForms) {
    EXPECT_FALSE(istrue(NaN.r()));
    EXPECT_FALSE(istrue(Mm()));
    EXPECT_TRUE(istrue(row({1, 2})));
    EXPECT_FALSE(istrue(row({1, std::nan("")})));
    EXPECT_FALSE(istrue(complex_scalar(0, 1)));  // only the real half counts
    EXPECT_FALSE(istrue(bytes({1, 0})));
    // A sparse matrix is true when every element is stored, whatever the stored values are.
    EXPECT_TRUE(istrue(sparse_entries(2, {{0, 1.0}, {1, 0.0}})));
    EXPECT_FALSE(istrue(sparse_entries(2, {{0, 1.0}})));
    EXPECT_ERROR(istrue(Mm(0, 0, 0, 1, 1, ak_mm)), "cell array has no true/false meaning");
    EXPECT_ERROR(istrue(Mm(i_o, "u", 0)), "variable 'u' was used without a value");

    // An object is converted with its class's double method.
    static double answer;
    answer = 0.0;
    register_class_function("truthy", "double", static_cast<ak_method1_t>([](Mm) { return Mm(answer); }));
    Mm obj = struct_row(1);
    obj.classid = class_id_of_name("truthy");
    EXPECT_FALSE(istrue(obj));
    answer = 2.0;
    EXPECT_TRUE(istrue(obj));
    unregister_class_function("truthy", "double");
}

TEST(Predicates, KindsShapesRealAndInt) {
    Mm st = struct_row(2);
    Mm obj = struct_row(1);
    obj.classid = 1;
    EXPECT_TRUE(isstruct(st));
    EXPECT_FALSE(isstruct(obj));  // an object is not a structure to the free function
    EXPECT_TRUE(obj.isstruct());  // but it is to the member
    EXPECT_TRUE(isobject(obj));
    EXPECT_FALSE(isobject(st));

    int d3[3] = {1, 1, 4};
    EXPECT_TRUE(isvector(Mm(0, 0, 0, 3, d3, ak_double)));
    Mm square_text = counting(2, 2);
    square_text.flags.str = 1;
    EXPECT_FALSE(is_square(square_text));
    Mm logical_complex = complex_scalar(1, 1);
    logical_complex.flags.logical = 1;
    EXPECT_FALSE(islogical(logical_complex));
    int other[4] = {2, 2, 1, 1};
    EXPECT_TRUE(is_same_dims(Mm(0, 0, 0, 4, other, ak_double), counting(2, 2)));
    EXPECT_FALSE(is_same_dims(counting(2, 1), counting(1, 2)));

    Mm z(1, 0, 0, 1, 2, ak_double);
    z.addr()[0] = 1.0;
    z.addi()[0] = z.addi()[1] = 0.0;
    Mm shared = z;
    EXPECT_EQ(iscomplex(z), 0);
    EXPECT_EQ(z.pi, nullptr);       // the zero imaginary half is dropped for later tests
    EXPECT_NE(shared.pi, nullptr);  // only that head changed
    Mm w = complex_scalar(1.0, std::nan(""));
    EXPECT_EQ(isreal(w), 0);  // a NaN imaginary part is not zero
    EXPECT_NE(w.pi, nullptr);

    double values[3] = {0.0, std::nan(""), 0.0};
    EXPECT_EQ(iscomplex(values, 3), 1);
    EXPECT_EQ(iscomplex(values, 1), 0);
    EXPECT_EQ(iscomplex(nullptr, 3), 0);
    double signs[2] = {0.0, -1e-300};
    EXPECT_EQ(isnegative(signs, 2), 1);
    EXPECT_EQ(isnegative(signs, 1), 0);

    EXPECT_EQ(isint(Mm(1e7)), 0);
    EXPECT_EQ(isint(Mm(9999999.0)), 1);
    EXPECT_EQ(isint(NaN), 0);
    EXPECT_EQ(isint(Mm()), 1);
    EXPECT_EQ(isint(complex_scalar(3, 1)), 0);
    EXPECT_EQ(isint(bytes({200})), 1);
    EXPECT_EQ(isint(Mm(0, 0, 0, 1, 1, ak_mm)), 0);
    ak_test::Recorder rec(ak_test::Recorder::kErrors);
    EXPECT_EQ(isint(Mm(i_o, "u", 0)), -1);
    EXPECT_EQ(rec.errors, std::vector<std::string>{"variable 'u' was used without a value"});
}

TEST(Hooks, DefaultsReportAndArgn) {
    Mm o1, o2, o3, o4, o5, o6;
    EXPECT_ERROR(feval_func(TM("f"), Mm(), i_o, o1, o2, o3, o4, o5, o6),
                 "feval was not linked with the program.");
    {
        ak_test::Recorder rec(ak_test::Recorder::kErrors);
        EXPECT_EQ(feval_func(TM("f"), Mm(), i_o, o1, o2, o3, o4, o5, o6).pr, x_M.pr);
    }
    nargin_val = 2.0;
    nargout_val = 3.0;
    Mm out, in;
    argn(i_o, out, in);
    EXPECT_EQ(out.r(), 3.0);
    EXPECT_EQ(in.r(), 2.0);
    nargin_val = nargout_val = 0.0;
    EXPECT_EQ(text(switchinit(TM("case"))), "case");
    EXPECT_ERROR(switchinit(Mm(i_o, "s", 0)), "variable 's' was used without a value");
}
