// The library's own functions are reachable by name, in each family, with the forms that give
// several outputs.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "arklib.h"
#include "tests/test_support.h"

namespace {

std::string text_of(const Mm& m) {
    char buffer[256];
    return Mstr(m, buffer, sizeof buffer);
}

// Calls name with the inputs and nout outputs through the table.
std::vector<Mm> call(const char* name, std::vector<Mm> in, int nout) {
    std::vector<Mm> out(nout);
    EXPECT_EQ(ak_call_function(name, static_cast<int>(in.size()), in.data(), nout, out.data()), 1) << name;
    return out;
}

TEST(BuiltinRows, FamiliesByNameWithSeveralOutputs) {
    Mm x = ak_test::row({3, 1, 2});
    // Sorting: sorted values and their places.
    std::vector<Mm> s = call("sort", {x}, 2);
    EXPECT_EQ(s[0].addr()[0], 1.0);
    EXPECT_EQ(s[1].addr()[0], 2.0);
    // Reductions along a dimension and minimum with its index.
    std::vector<Mm> m = call("min", {x}, 2);
    EXPECT_EQ(scalar(m[0]), 1.0);
    EXPECT_EQ(scalar(m[1]), 2.0);
    EXPECT_EQ(scalar(call("prod", {x}, 1)[0]), 6.0);
    // Sparse: rows, columns and values of the non-zeros.
    std::vector<Mm> f = call("find", {ak_test::row({0, 5, 0, 7})}, 3);  // rows, columns, values
    EXPECT_EQ(f[1].addr()[1], 4.0);
    EXPECT_EQ(f[2].addr()[1], 7.0);
    // Subscripts: ind2sub with two outputs.
    std::vector<Mm> rc = call("ind2sub", {ak_test::row({2, 3}), Mm(5.0)}, 2);
    EXPECT_EQ(scalar(rc[0]), 1.0);
    EXPECT_EQ(scalar(rc[1]), 3.0);
    // Text: num2str with the text and its width; sscanf with its count.
    std::vector<Mm> n = call("num2str", {Mm(42.0)}, 2);
    EXPECT_NE(text_of(n[0]).find("42"), std::string::npos);
    EXPECT_EQ(scalar(n[1]), n[0].cols());
    std::vector<Mm> sc = call("sscanf", {TM("4 5 6"), TM("%d")}, 2);
    EXPECT_EQ(sc[0].size(), 3);
    EXPECT_EQ(scalar(sc[1]), 3.0);
    // Renamed functions answer to the language's names.
    EXPECT_EQ(text_of(call("class", {TM("a")}, 1)[0]), "char");
    EXPECT_EQ(call("struct", {(CL("a"), 1.0)}, 1)[0].nfields, 1);
    EXPECT_EQ(call("rand", {Mm(2.0), Mm(3.0)}, 1)[0].cols(), 3);
    EXPECT_EQ(scalar(call("and", {Mm(1.0), Mm(0.0)}, 1)[0]), 0.0);
    EXPECT_EQ(call("zeros", {Mm(2.0)}, 1)[0].size(), 4);
    EXPECT_EQ(text_of(call("computer", {}, 1)[0]), "GLNXA64");
    // Files: [fid, msg] = fopen(...) and [msg, errnum] = ferror(fid) fill every output by name.
    std::vector<Mm> op = call("fopen", {TM("/nonexistent/dir/file"), TM("r")}, 2);
    EXPECT_EQ(scalar(op[0]), -1.0);
    EXPECT_FALSE(text_of(op[1]).empty());
    std::vector<Mm> info = call("fopen", {Mm(1.0)}, 3);  // name, mode, machine format of stdout
    EXPECT_EQ(text_of(info[0]), "\"stdout\"");
    std::vector<Mm> fe = call("ferror", {Mm(1.0)}, 2);
    EXPECT_EQ(text_of(fe[0]), "");
    EXPECT_EQ(scalar(fe[1]), 0.0);

    // Families register under their source file; every family of the library has rows.
    std::vector<ak_function_info_t> rows(ak_function_list(nullptr, 0));
    ak_function_list(rows.data(), static_cast<int>(rows.size()));
    std::set<std::string> families;
    for (const ak_function_info_t& r : rows) families.insert(r.family);
    for (const char* f :
         {"arith", "arith_functions", "arith_dims", "elementary_complex", "mtimes", "structs", "cells",
          "convert", "display", "num2str", "format_read", "random", "sort", "sparse_find", "shape_functions",
          "strings_basic", "scope_functions", "eval", "stubs"})
        EXPECT_TRUE(families.count(f)) << f;
    EXPECT_GT(rows.size(), 200u);

    ak_test::Recorder rec(ak_test::Recorder::kErrors);
    Mm none[1];
    Mm in[1] = {x};
    EXPECT_EQ(ak_call_function("sort", 1, in, 3, none), 0);
    EXPECT_EQ(rec.errors, std::vector<std::string>{"Too many (3>2) outputs for sort"});
}

}  // namespace
