// The mx and mex functions called directly, outside any module: the caller owns what they make.
#include <cstdio>
#include <cstring>
#include <memory>

#include "arklib/mex/mex.h"
#include "tests/test_support.h"

namespace {

// Frees an array made by an mx function at the end of a test.
struct array_deleter {
    void operator()(mxArray* a) const { mxDestroyArray(a); }
};
using array_ptr = std::unique_ptr<mxArray, array_deleter>;

TEST(MxFunctions, ShapesAndClasses) {
    const mwSize dims[3] = {2, 3, 4};
    array_ptr a(mxCreateNumericArray(3, dims, mxDOUBLE_CLASS, mxREAL));
    EXPECT_EQ(mxGetM(a.get()), 2u);
    EXPECT_EQ(mxGetN(a.get()), 12u) << "trailing dimensions fold into the columns";
    EXPECT_EQ(mxGetNumberOfDimensions(a.get()), 3);
    EXPECT_EQ(mxGetDimensions(a.get())[2], 4);
    EXPECT_EQ(mxGetNumberOfElements(a.get()), 24u);
    for (int k = 0; k < 24; ++k) EXPECT_EQ(mxGetPr(a.get())[k], 0.0);
    const mwIndex subs[3] = {1, 2, 3};
    EXPECT_EQ(mxCalcSingleSubscript(a.get(), 3, subs), 1 + 2 * 2 + 3 * 6);
    const mwSize flat[2] = {4, 6};
    EXPECT_EQ(mxSetDimensions(a.get(), flat, 2), 0);
    EXPECT_EQ(mxGetN(a.get()), 6u);

    array_ptr empty(mxCreateDoubleMatrix(0, 5, mxREAL));
    EXPECT_EQ(mxGetN(empty.get()), 0u);
    EXPECT_TRUE(mxIsEmpty(empty.get()));
    EXPECT_EQ(mxGetScalar(empty.get()), 0.0);

    array_ptr bytes(mxCreateNumericMatrix(1, 3, mxUINT8_CLASS, mxREAL));
    EXPECT_EQ(mxGetClassID(bytes.get()), mxUINT8_CLASS);
    EXPECT_EQ(mxGetElementSize(bytes.get()), 1u);
    EXPECT_STREQ(mxGetClassName(bytes.get()), "uint8");
    EXPECT_TRUE(mxIsClass(bytes.get(), "uint8"));
    EXPECT_TRUE(mxIsNumeric(bytes.get()));

    array_ptr text(mxCreateString("abc"));
    EXPECT_EQ(mxGetClassID(text.get()), mxDOUBLE_CLASS);
    EXPECT_TRUE(mxIsChar(text.get()));
    EXPECT_FALSE(mxIsNumeric(text.get()));
    char buffer[3];
    EXPECT_EQ(mxGetString(text.get(), buffer, sizeof buffer), 0);
    EXPECT_STREQ(buffer, "ab") << "cut to the buffer";

    array_ptr sparse(mxCreateSparse(3, 3, 2, mxREAL));
    EXPECT_EQ(mxGetClassID(sparse.get()), mxSPARSE_CLASS);
    EXPECT_EQ(mxGetNzmax(sparse.get()), 2);
    mwIndex* jc = mxGetJc(sparse.get());
    EXPECT_EQ(jc[3], 2);
    mxFree(jc);
    EXPECT_EQ(mxGetIr(text.get()), nullptr);

    array_ptr cell(mxCreateCellMatrix(1, 2));
    EXPECT_EQ(mxGetClassID(cell.get()), mxCELL_CLASS);
    EXPECT_EQ(mxGetElementSize(cell.get()), sizeof(Mm));
    EXPECT_EQ(mxGetCell(cell.get(), -1), nullptr);
    EXPECT_EQ(mxGetCell(cell.get(), 2), nullptr);
    EXPECT_NE(mxGetCell(cell.get(), 1), nullptr);
    EXPECT_EQ(mxGetCell(text.get(), 0), nullptr);

    Mm undefined(i_o, "undefined_here", 0);
    ak_test::Recorder rec(ak_test::Recorder::kErrors | ak_test::Recorder::kWarnings);
    EXPECT_EQ(mxGetClassID(&undefined), mxUNKNOWN_CLASS);
    EXPECT_EQ(rec.errors.size() + rec.warnings.size(), 1u) << "reading a value never set is reported";
}

TEST(MxFunctions, StructuresAndCopies) {
    const char* names[] = {"a", "b"};
    array_ptr s(mxCreateStructMatrix(1, 1, 2, names));
    EXPECT_EQ(mxGetClassID(s.get()), mxSTRUCT_CLASS);
    EXPECT_EQ(mxGetNumberOfFields(s.get()), 2);
    EXPECT_STREQ(mxGetFieldNameByNumber(s.get(), 1), "b");
    EXPECT_EQ(mxGetFieldNameByNumber(s.get(), 2), nullptr);
    EXPECT_EQ(mxGetFieldNumber(s.get(), "b"), 1);
    EXPECT_EQ(mxGetFieldNumber(s.get(), "c"), -1);
    ASSERT_NE(mxGetField(s.get(), 0, "a"), nullptr);
    EXPECT_TRUE(mxIsEmpty(mxGetField(s.get(), 0, "a")));
    EXPECT_EQ(mxGetField(s.get(), 1, "a"), nullptr);

    array_ptr one(mxCreateDoubleScalar(1));
    mxSetField(s.get(), 0, "a", one.get());
    array_ptr copy(mxDuplicateArray(s.get()));
    array_ptr two(mxCreateDoubleScalar(2));
    mxSetFieldByNumber(copy.get(), 0, 0, two.get());
    EXPECT_EQ(mxGetScalar(mxGetField(s.get(), 0, "a")), 1.0) << "a write into the copy reached the original";
    EXPECT_EQ(mxGetScalar(mxGetField(copy.get(), 0, "a")), 2.0);

    // A field that does not exist is added; an element past the end grows the array.
    mxSetField(s.get(), 2, "c", two.get());
    EXPECT_EQ(mxGetNumberOfElements(s.get()), 3u);
    EXPECT_EQ(mxGetFieldNumber(s.get(), "c"), 2);
    EXPECT_EQ(mxGetScalar(mxGetField(s.get(), 2, "c")), 2.0);

    array_ptr z(mxCreateDoubleMatrix(1, 2, mxCOMPLEX));
    mxGetPi(z.get())[1] = 5;
    array_ptr zc(mxDuplicateArray(z.get()));
    mxGetPi(zc.get())[1] = 6;
    EXPECT_TRUE(mxIsComplex(zc.get()));
    EXPECT_EQ(mxGetPi(z.get())[1], 5.0);
    EXPECT_EQ(mxGetI(zc.get(), 1, 2), 6.0);
    mxSetR(zc.get(), 1, 1, 3);
    EXPECT_EQ(mxGetR(zc.get(), 1, 1), 3.0);
    EXPECT_EQ(mxGetDoubles(zc.get()), mxGetPr(zc.get()));
}

TEST(MxFunctions, FixedMessages) {
    EXPECT_ERROR(mxCreateNumericArray(0, nullptr, mxSINGLE_CLASS, mxREAL),
                 "mxCreateNumericArray: can't create type = 7");
    array_ptr a(mxCreateDoubleMatrix(1, 1, mxREAL));
    double d = 0;
    EXPECT_ERROR(mxSetPr(a.get(), &d), "mxSetPr is not available");
    EXPECT_ERROR(mxSetDoubles(a.get(), &d), "mxSetPr is not available");
    EXPECT_ERROR(mexEvalString("x = 1"), "mexEvalString is not available");
    EXPECT_ERROR(mexMakeArrayPersistent(a.get()), "mexMakeArrayPersistent is not available");
    EXPECT_ERROR(mxSetM(a.get(), 2), "mxSetM is not available");
    EXPECT_ERROR(mxGetComplexDoubles(a.get()),
                 "mxGetComplexDoubles: complex data are held as two arrays here; use mxGetPr and mxGetPi");
    EXPECT_ERROR(mxGetChars(a.get()), "mxGetChars: text is held as doubles here; use mxGetString or mxArrayToString");
    EXPECT_ERROR(mxGetLogicals(a.get()), "mxGetLogicals: logical values are held as doubles here; use mxGetPr");
    EXPECT_ERROR(mxAssert(0, "assertion text"), "assertion text");
    EXPECT_NO_ERROR(mxAssert(1, "assertion text"));

    // Outside a module, mexErrMsgTxt is a plain error.
    EXPECT_ERROR(mexErrMsgTxt("plain"), "plain");
    EXPECT_ERROR(mexErrMsgIdAndTxt("id:x", "%s %d", "formatted", 3), "formatted 3");

    char saved[sizeof current_mex];
    std::memcpy(saved, current_mex, sizeof saved);
    current_mex[0] = 0;
    EXPECT_ERROR(mexAtExit(nullptr), "mexAtExit called outside of MEX file");
    std::snprintf(current_mex, sizeof current_mex, "never_loaded");
    EXPECT_ERROR(mexAtExit(nullptr), "mexAtExit: 'never_loaded' name not found");
    std::memcpy(current_mex, saved, sizeof saved);

    ak_test::Recorder rec(ak_test::Recorder::kPrint | ak_test::Recorder::kWarnings);
    EXPECT_EQ(mexPrintf("%d-%s", 12, "ab"), 5);
    mexPrintAssertion("x > 0", "file.c", 7, "x is small");
    mexWarnMsgTxt("careful");
    EXPECT_EQ(rec.printed, "12-ab" "file.c:7 - test 'x > 0' failed - x is small\n");
    ASSERT_EQ(rec.warnings.size(), 1u);
    EXPECT_EQ(rec.warnings[0], "careful");
    const std::string long_text(5000, 'x');
    rec.clear();
    EXPECT_EQ(mexPrintf("%s", long_text.c_str()), 5000);
    EXPECT_EQ(rec.printed, long_text);
}

TEST(MxFunctions, ArgumentChecks) {
    Mm square("m2", 2, 2);
    Mm z(1, 0, 0, 2, 2, ak_double);
    for (int k = 1; k <= 4; ++k) {
        z.r(k) = 0.5;
        z.i(k) = 1;
    }
    z.name = "z";
    ak_test::Recorder rec(ak_test::Recorder::kErrors);
    EXPECT_EQ(mbvector(square).size(), 0) << "x_M";
    mbintrealscalar(Mm(0.5));
    mbintrealvector(z);
    mbint(Mm(3.0));
    mbscalar(Mm(3.0));
    z.name = nullptr;
    ASSERT_EQ(rec.errors.size(), 5u);
    EXPECT_EQ(rec.errors[0], "mbintvector: m2 not vector");
    EXPECT_EQ(rec.errors[1], "mbintrealscalar: (null) not integer");
    EXPECT_EQ(rec.errors[2], "mbintrealvector: z not integer");
    EXPECT_EQ(rec.errors[3], "mbintrealvector: z not real");
    EXPECT_EQ(rec.errors[4], "mbintrealvector: z not vector");
}

TEST(MxFunctions, VariablesOfTheProgram) {
    ak_scope_tracking = 1;
    {
        Mm x(i_o, "mex_var", 0);
        x = Mm(4.0);
        const mxArray* p = mexGetVariablePtr("caller", "mex_var");
        EXPECT_EQ(p, &x);
        array_ptr copy(mexGetVariable("base", "mex_var"));
        ASSERT_NE(copy, nullptr);
        EXPECT_EQ(mxGetScalar(copy.get()), 4.0);
        array_ptr five(mxCreateDoubleScalar(5));
        EXPECT_EQ(mexPutVariable("caller", "mex_var", five.get()), 0);
        EXPECT_EQ(x.r(), 5.0);
        EXPECT_EQ(mexPutVariable("caller", "no_such_var", five.get()), 1);
        EXPECT_EQ(mexGetVariable("global", "mex_var"), nullptr);
        EXPECT_ERROR(mexGetVariable("elsewhere", "mex_var"),
                     "mexGetVariable: workspace must be \"base\", \"caller\" or \"global\", not \"elsewhere\"");
    }
    ak_scope_tracking = 0;
}

}  // namespace
