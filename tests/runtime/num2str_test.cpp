// num2str, int2str, mat2str, and the element texts behind them.
#include <cmath>
#include <string>
#include <vector>

#include "arklib.h"
#include "test_support.h"
#include "tests/core/engine_test_support.h"

using namespace engine_test;

namespace {

std::vector<std::string> text_lines(const Mm& m) {
    std::vector<std::string> out(m.rows());
    int cols = m.rows() ? m.size() / m.rows() : 0;
    for (int c = 0; c < cols; ++c)
        for (int r = 0; r < m.rows(); ++r) out[r] += static_cast<char>(m.addr()[c * m.rows() + r]);
    return out;
}

std::string text(const Mm& m) {
    std::vector<std::string> l = text_lines(m);
    EXPECT_LE(l.size(), 1u);
    return l.empty() ? std::string() : l[0];
}

}  // namespace

TEST(Num2str, WidthsAndPrecision) {
    EXPECT_EQ("3.142", text(num2str(pi)));
    EXPECT_EQ("  3.1415927", text(num2str(pi, Mm(8.0))));  // the full form strips nothing
    EXPECT_EQ((std::vector<std::string>{"1  2", "3  4"}), text_lines(num2str(mat(2, 2, {1, 2, 3, 4}))));
    EXPECT_EQ("-Inf   Inf", text(num2str(row({-INFINITY, INFINITY}))));

    Mm s, w;
    num2str(row({1, 10, 100}), i_o, s, w);
    EXPECT_EQ("    1   10  100", text(s));
    EXPECT_EQ(15.0, *w.addr());
    // A width on entry cuts each cell to its last characters.
    Mm fixed = Mm(2.0);
    num2str(row({100, 2}), Mm(4.0), i_o, s, fixed);
    EXPECT_EQ("00 2", text(s));
    EXPECT_EQ(4.0, *fixed.addr());
}

TEST(Num2str, StringsEmptiesAndValuesWithoutType) {
    EXPECT_EQ("abc", text(num2str(TM("abc"))));
    EXPECT_EQ("[]", text(num2str(Mm())));
    EXPECT_EQ("''", text(num2str(TM(""))));
    Mm s, w;
    num2str(Mm(i_o, "v", 0), i_o, s, w);
    EXPECT_EQ("(this variable has no value)", text(s));
    EXPECT_EQ(28.0, *w.addr());
    EXPECT_ERROR(num2str(cell(Mm(1.0))), "num2str: argument must be numeric or a string");
    EXPECT_EQ("200", text(num2str(muint8(Mm(200.0)))));
    // A zero imaginary part is blanked.
    EXPECT_EQ("1      2 +3i", text(num2str(crow({1, 2}, {0, 3}))));
    EXPECT_EQ("1 - 2i", text(num2str(crow({1}, {-2}))));  // the width counts the sign
}

TEST(Num2str, SparseListsAndInt2str) {
    EXPECT_EQ((std::vector<std::string>{"( 2)   3", "( 4)   4"}), text_lines(num2str(sparse(row({0, 3, 0, 4})))));
    Mm m = sparse(mat(3, 3, {0, 0, 0, 0, 0, 7, 0, 0, 0}));
    EXPECT_EQ((std::vector<std::string>{"(2,3)   7"}), text_lines(num2str(m)));
    EXPECT_EQ("-3   1", text(int2str(row({-2.5, 1.2}))));
}

TEST(Mat2str, RowsAreLinesOfACharacterMatrix) {
    EXPECT_EQ((std::vector<std::string>{"[ 1 2;", " 3 4] "}), text_lines(mat2str(mat(2, 2, {1, 2, 3, 4}))));
    EXPECT_EQ("[]", text(mat2str(Mm())));
    EXPECT_EQ(" 0.333", text(mat2str(Mm(1.0 / 3), Mm(3.0))));
    EXPECT_EQ(" 0.333333333333333", text(mat2str(Mm(1.0 / 3))));
    EXPECT_EQ(" 1 + 2i", text(mat2str(crow({1}, {2}))));
    EXPECT_EQ("[ 104 105]", text(mat2str(TM("hi"))));
}

TEST(FixNonfiniteText, PlatformSpellingsBecomeTheLibrarys) {
    auto fixed = [](double v, std::string t) {
        fix_nonfinite_text(v, t);
        return t;
    };
    EXPECT_EQ("   -Inf", fixed(-INFINITY, "   -inf"));
    EXPECT_EQ("    NaN", fixed(NAN, "1.#QNAN"));
    EXPECT_EQ(" NaN NaN", fixed(NAN, "-nan nan"));  // every occurrence
    EXPECT_EQ("inf", fixed(1.0, "inf"));            // a finite value leaves the text alone
    // A replacement longer than its search text is cut to the buffer.
    char buffer[13] = "1.#IO00e+000";
    fix_nonfinite_text(INFINITY, buffer, sizeof buffer);
    EXPECT_EQ(std::string("          In"), buffer);
}

TEST(PreviewText, ScalarsShortStringsAndSizes) {
    EXPECT_EQ("0.3333", preview_text(Mm(1.0 / 3)));
    EXPECT_EQ("hello", preview_text(TM("hello")));
    EXPECT_EQ("1x17 char", preview_text(TM("seventeen letters")));
    EXPECT_EQ("1x1 double", preview_text(crow({1}, {1})));
    EXPECT_EQ("1x1 cell", preview_text(cell(Mm(1.0))));
}
