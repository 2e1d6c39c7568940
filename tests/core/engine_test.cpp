// The element-wise engine: operation names, shape rules, empty rules, scalar expansion, bytes,
// NaN, complex variants, flags and the routes of cells, objects and unset variables.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <string>

#include "arklib.h"
#include "arklib/elementary.h"
#include "core/engine_internal.h"
#include "tests/core/engine_test_support.h"
#include "tests/test_support.h"

using namespace engine_test;

namespace {
const double nan_v = std::numeric_limits<double>::quiet_NaN();
const double inf_v = std::numeric_limits<double>::infinity();
}  // namespace

TEST(EngineOps, EveryCodeHasANameAndASparseGroup) {
    for (int op = 0; op < op_count; ++op) {
        EXPECT_STRNE("???", op_name(op)) << op;
        EXPECT_NE(ak_internal::sg_none, ak_internal::op_sparse_group(op)) << op_name(op);
    }
    EXPECT_EQ(ak_internal::sg_full_element, ak_internal::op_sparse_group(op_cos));  // cos(0) is 1
    EXPECT_STREQ("???", op_name(op_count));
    EXPECT_STREQ("???", op_name(-1));
}

TEST(EngineShape, ScalarExpansionIncompatibleDimensionsAndEmpties) {
    Mm r = row({1, 2, 3}) + Mm(1.0);
    EXPECT_VALUES(r, {2, 3, 4});
    EXPECT_EQ((std::vector<int>{1, 3, 1, 1}), dims(r));
    Mm l = Mm(10.0) - mat(3, 1, {1, 2, 3});  // the shape comes from b
    EXPECT_VALUES(l, {9, 8, 7});
    EXPECT_EQ((std::vector<int>{3, 1, 1, 1}), dims(l));
    EXPECT_ERROR(Mm(1.0) / row({2, 4}), "mldivide: a,b does not have the same number of rows");
    EXPECT_VALUES(times(mat(2, 2, {1, 2, 3, 4}), mat(2, 2, {5, 6, 7, 8})), {5, 21, 12, 32});
    int d3[3] = {2, 1, 2};
    Mm cube = counting(3, d3) + Mm(0.5);
    EXPECT_EQ(3, cube.ndims);
    EXPECT_VALUES(cube, {1.5, 2.5, 3.5, 4.5});
    // Empty rules come before scalar expansion.
    Mm e;
    EXPECT_EQ(0, (e + Mm(5.0)).size());
    Mm eq0 = (e == e);
    EXPECT_VALUES(eq0, {1});
    EXPECT_TRUE(eq0.flags.logical);
    EXPECT_VALUES(sum(e), {0});
    EXPECT_VALUES(prod(e), {1});
    EXPECT_VALUES(all(e), {1});
    EXPECT_VALUES(any(e), {0});
    EXPECT_EQ(0, sum(e, Mm(1.0)).size());  // with a dimension given, empty stays empty
    EXPECT_EQ(0, max(e).size());

    Mm a(row({1, 2}), "a");
    EXPECT_ERROR(a + row({1, 2, 3}), "plus: incompatible dimensions of: a, (temporary)");
    ak_test::Recorder rec(ak_test::Recorder::kErrors);
    Mm bad = times(row({1, 2}), row({1, 2, 3}));
    ASSERT_EQ(1u, rec.errors.size());
    EXPECT_EQ("times: incompatible dimensions of: (temporary), (temporary)", rec.errors[0]);
    EXPECT_EQ(x_M.pr, bad.pr);  // a copy of x_M
}

TEST(EngineBytes, ArithmeticWrapsModulo256) {
    Mm a = bytes({200});
    Mm r = a + Mm(100.0);
    EXPECT_EQ(ak_uchar, r.flags.type);
    EXPECT_VALUES(r, {44});
    EXPECT_VALUES(Mm(100.0) + a, {44});  // the double is cut to a byte first
    EXPECT_VALUES(times(bytes({16, 3}), bytes({17, 2})), {16, 6});  // the element loop wraps too
    EXPECT_VALUES(-bytes({1, 0}), {255, 0});
    EXPECT_VALUES(sum(bytes({200, 100, 1})), {45});
    EXPECT_VALUES(prod(bytes({16, 16, 3})), {0});
    Mm lt_r = bytes({1, 5}) < bytes({3, 3});
    EXPECT_EQ(ak_uchar, lt_r.flags.type);
    EXPECT_VALUES(lt_r, {1, 0});
    EXPECT_TRUE(lt_r.flags.logical);
    Mm idx;
    EXPECT_VALUES(max(bytes({4, 250, 250}), i_o, idx), {250});
    EXPECT_VALUES(idx, {2});
}

TEST(EngineNaN, ComparisonsReductionsAndMaxIndex) {
    Mm n(nan_v);
    EXPECT_VALUES(n == n, {0});
    EXPECT_VALUES(any(n), {1});
    EXPECT_VALUES(all(row({nan_v, 1})), {1});
    EXPECT_VALUES(max(n, Mm(1.0)), {1});
    EXPECT_VALUES(min(row({nan_v, 3}), row({2, nan_v})), {2, 3});
    EXPECT_VALUES(mnot(row({0, nan_v, 2})), {1, 0, 0});
    EXPECT_VALUES(mand(row({1, 1, 0}), row({nan_v, 0, 0})), {1, 0, 0});

    Mm idx;
    EXPECT_VALUES(max(row({1, 3, 3}), i_o, idx), {3});
    EXPECT_VALUES(idx, {2});  // the first of equals
    EXPECT_VALUES(max(row({nan_v, nan_v})), {-inf_v});
    EXPECT_VALUES(max(Mm(nan_v)), {nan_v});  // a single element keeps its NaN
    // Along columns of a matrix, with the positions shaped like the result.
    Mm m = mat(2, 3, {1, 8, 3, 9, 2, 3});
    EXPECT_VALUES(max(m, i_o, idx), {9, 8, 3});
    EXPECT_VALUES(idx, {2, 1, 1});
    EXPECT_EQ((std::vector<int>{1, 3, 1, 1}), dims(idx));
    EXPECT_VALUES(max(m, Mm(), Mm(2.0), i_o, idx), {8, 9});
    EXPECT_VALUES(idx, {2, 1});
    // Complex values compare by modulus.
    Mm c = crow({3, 0, -4}, {0, 4.5, 0});
    Mm mc = max(c, i_o, idx);
    EXPECT_VALUES(mc, {0});
    EXPECT_EQ(std::vector<double>{4.5}, im(mc));
    EXPECT_VALUES(idx, {2});
    // The positions may be written over the operand itself.
    Mm a = row({5, 9, 1});
    Mm top = max(a, i_o, a);
    EXPECT_VALUES(top, {9});
    EXPECT_VALUES(a, {2});
    // l_M as the index output leaves l_M alone.
    max(row({1, 2}), i_o, l_M);
    EXPECT_EQ(0, l_M.size());
    EXPECT_ERROR(max(row({1, 2}), row({3, 4}), Mm(1.0)),
                 "max: two matrices to compare and a dimension are not supported");
}

TEST(EngineComplexAndFlags, VariantsComparisonsAndResultFlags) {
    Mm z = crow({1, 2}, {3, -4});
    Mm r = row({10, 20});
    Mm s = z + r;
    EXPECT_VALUES(s, {11, 22});
    EXPECT_EQ((std::vector<double>{3, -4}), im(s));
    Mm d = r - z;  // the imaginary part of the subtrahend is negated
    EXPECT_EQ((std::vector<double>{-3, 4}), im(d));
    Mm p = times(z, Mm(inf_v));  // real times complex scales each part: no 0 * Inf NaN
    EXPECT_VALUES(p, {inf_v, inf_v});
    EXPECT_EQ((std::vector<double>{inf_v, -inf_v}), im(p));
    Mm dc = rdivide(Mm(5.0), crow({1}, {2}));  // real a over a complex divisor
    EXPECT_VALUES(dc, {1});
    EXPECT_EQ(std::vector<double>{-2}, im(dc));
    Mm dz = rdivide(crow({1}, {0}), Mm(0.0));  // a real divisor divides each part
    EXPECT_VALUES(dz, {inf_v});
    EXPECT_TRUE(std::isnan(im(dz)[0]));
    Mm dr0 = rdivide(Mm(1.0), crow({0}, {0}));  // the complex division keeps a zero part zero
    EXPECT_VALUES(dr0, {inf_v});
    EXPECT_EQ(std::vector<double>{0}, im(dr0));
    EXPECT_EQ(nullptr, abs(crow({3}, {4})).pi);
    Mm rr = row({1, 2});
    EXPECT_EQ(rr.pr, conj(rr).pr);  // a real conj is the same matrix
    // Comparisons use real parts only; equality uses both.
    Mm a = crow({1, 2}, {5, 0});
    Mm b = row({1, 3});
    EXPECT_VALUES(le(a, b), {1, 1});
    EXPECT_VALUES(eq(a, b), {0, 0});
    EXPECT_VALUES(mand(crow({0}, {1}), Mm(1.0)), {1});  // a complex operand is true if either part is
    EXPECT_EQ(nullptr, le(a, b).pi);
    // The comparison drops a zero imaginary half on copies only.
    Mm z1 = crow({1}, {0});
    gt(z1, Mm(0.0));
    EXPECT_NE(nullptr, z1.pi);

    // Results carry no operand flags; assigning keeps the target's name.
    Mm sr = TM("ab") + Mm(1.0);
    EXPECT_EQ(0, sr.flags.str);
    EXPECT_VALUES(sr, {98, 99});
    Mm l = row({1, 2}) > Mm(1.0);
    EXPECT_EQ(1, l.flags.logical);
    EXPECT_EQ(0, (l + Mm(1.0)).flags.logical);
    Mm v(i_o, "v", 0);
    v = Mm(2.0) + Mm(3.0);
    EXPECT_VALUES(v, {5});
    EXPECT_STREQ("v", v.name);
}

TEST(EngineRoutes, CellsObjectsAndUnsetVariables) {
    Mm c = Mm(0, 0, 0, 1, 2, ak_mm);
    EXPECT_ERROR(c + Mm(1.0), "Operation can not be performed on non-numerical datatypes");
    Mm u(i_o, "u", 0);
    EXPECT_ERROR(u + Mm(1.0), "variable 'u' was used without a value");
    // With a handler that returns, the unset operand has no type to agree with.
    ak_test::Recorder rec(ak_test::Recorder::kErrors);
    Mm r = u + Mm(1.0);
    ASSERT_EQ(2u, rec.errors.size());
    EXPECT_EQ("M::M(op): inconsistent datatypes", rec.errors[1]);
    EXPECT_EQ(x_M.pr, r.pr);
}

namespace {
Mm engine_test_plus(Mm a, Mm) { return a; }
Mm engine_test_sin(Mm) { return Mm(42.0); }
}  // namespace

TEST(EngineRoutes, ObjectsInputCountsAndCodes) {
    // The registry is global: it is put back as it was at the end.
    std::unique_ptr<class_table_t> saved(new class_table_t(class_table));
    register_class_function("engine_test_cls", "plus", engine_test_plus);
    register_class_function("engine_test_cls", "sin", engine_test_sin);
    Mm s = Mm(0, 0, 0, 1, 1, ak_mm);
    s.addfield("x", 0);
    Mm obj = mclass(s, TM("engine_test_cls"));
    Mm r = Mm(1.0) + obj;  // the method of the operand that is an object
    EXPECT_EQ(ak_double, r.flags.type);
    EXPECT_VALUES(r, {1});
    EXPECT_VALUES(sin(obj), {42});
    EXPECT_ERROR(cos(obj), "class engine_test_cls has no method named cos");
    class_table = *saved;

    EXPECT_ERROR(sin(), "sin does not accept 0 inputs");
    // A dimension code without a dimension, and a code out of range, reach no core.
    EXPECT_ERROR(Mm(0, row({1, 2}), one_M, nop_M, static_cast<op_t>(150), 0, l_M), "op_core: unknown op");
    EXPECT_ERROR(Mm(0, row({1, 2}), one_M, one_M, op_plus, 1, l_M), "op_dims: wrong do_dim");

    Mm e = expint(row({-1}));
    ASSERT_NE(nullptr, e.pi);
    EXPECT_NEAR(-M_PI, im(e)[0], 1e-14);
}

TEST(EngineScalarFunctions, RemModPow2ErfAndBits) {
    EXPECT_VALUES(rem(Mm(0.3), Mm(0.1)), {0});  // rounding noise is absorbed
    EXPECT_VALUES(rem(row({-7, 5, 5}), row({3, 0, inf_v})), {-1, nan_v, nan_v});
    EXPECT_VALUES(mod(row({-7, 7}), row({3, -3})), {2, -2});
    EXPECT_VALUES(pow2(Mm(3.0), Mm(2.0)), {12});
    EXPECT_NEAR(0.8427007929497149, re(erf(Mm(1.0)))[0], 1e-15);

    EXPECT_VALUES(mbitand(Mm(12.0), row({10, 6})), {8, 4});
    EXPECT_VALUES(bitset(Mm(15.0), row({1, 2}), row({0, 1})), {14, 15});
    EXPECT_VALUES(bitshift(Mm(255.0), row({4, -1}), Mm(8.0)), {240, 127});
    EXPECT_VALUES(bitcmp(bytes({5})), {250});
    EXPECT_ERROR(mbitand(Mm(-1.0), Mm(1.0)), "bitand: arguments must be non-negative integers below 2^53");
    EXPECT_ERROR(bitget(Mm(1.0), Mm(54.0)),
                 "bitget: bit position must be an integer from 1 to the number of bits");
    EXPECT_ERROR(bitshift(Mm(1.0), Mm(0.5)), "bitshift: shift must be an integer");
}
