// deblank, upper, str2mat and strvcat.
#include <string>
#include <vector>

#include "arklib.h"
#include "test_support.h"

namespace {

std::string text(const Mm& m) {
    std::string s;
    for (int k = 0; k < m.nnz; ++k) s += static_cast<char>(m.addr()[k]);
    return s;
}

Mm chars(const std::string& s) {
    Mm m(0, 0, 0, 1, static_cast<int>(s.size()), ak_double);
    for (int k = 0; k < m.nnz; ++k) m.addr()[k] = static_cast<unsigned char>(s[k]);
    m.setstr(1);
    return m;
}

// The rows of a character matrix.
std::vector<std::string> rows(const Mm& m) {
    std::vector<std::string> out(m.rows());
    for (int c = 0; c < m.cols(); ++c)
        for (int r = 0; r < m.rows(); ++r) out[r] += static_cast<char>(m.addr()[c * m.rows() + r]);
    return out;
}

Mm pair_cell(const Mm& a, const Mm& b) {
    const Mm* list[] = {&a, &b};
    return cell_from_array(2, list);
}

}  // namespace

TEST(DeblankUpper, TrailingBlanksZerosAndLetters) {
    EXPECT_EQ(text(deblank(chars("ab\t  "))), "ab\t");               // only code 32 is a blank
    EXPECT_EQ(text(deblank(chars(std::string("a\0b ", 4)))), "ab");  // zeros go wherever they are
    Mm all = deblank(chars("   "));
    EXPECT_EQ(all.size(), 0);
    EXPECT_TRUE(all.isstr());
    // A number keeps its kind.
    Mm n(0, 0, 0, 1, 2, ak_double);
    n.addr()[0] = 7, n.addr()[1] = 32;
    Mm dn = deblank(n);
    EXPECT_FALSE(dn.isstr());
    EXPECT_EQ(dn.size(), 1);

    // A cell is done element by element, keeping its shape.
    Mm c = deblank(pair_cell(chars("x "), chars("y  ")));
    ASSERT_EQ(c.gettype(), ak_mm);
    EXPECT_EQ(c.rows(), 2);
    EXPECT_EQ(text(c.mr(1)), "x");
    EXPECT_EQ(text(c.mr(2)), "y");

    // A character matrix loses only the columns blank in every row.
    EXPECT_EQ(rows(deblank(str2mat(chars("ab  "), chars("a   "), chars("abc ")))),
              (std::vector<std::string>{"ab ", "a  ", "abc"}));

    EXPECT_ERROR(deblank(mstruct(pair_cell(chars("a"), Mm(1.0)))),
                 "deblank: numeric data expected, but matrix (temporary) is not");

    // upper changes letters only.
    Mm u = upper(chars("aBz1{"));
    EXPECT_EQ(text(u), "ABZ1{");
    EXPECT_TRUE(u.isstr());
    Mm s = chars("abc");
    upper(s);
    EXPECT_EQ(text(s), "abc");                 // the argument is not written
    EXPECT_EQ(*upper(Mm(97.0)).addr(), 97.0);  // numbers are not text
    EXPECT_EQ(text(upper(pair_cell(chars("q"), chars("Rs"))).mr(2)), "RS");
}

TEST(Str2matStrvcat, PaddingEmptiesCellsAndNumbers) {
    Mm m = str2mat(chars("a"), chars("bcd"), Mm());
    EXPECT_TRUE(m.isstr());
    EXPECT_EQ(rows(m), (std::vector<std::string>{"a  ", "bcd", "   "}));
    Mm v = strvcat(chars("a"), chars("bcd"), Mm());
    EXPECT_EQ(rows(v), (std::vector<std::string>{"a  ", "bcd"}));

    // A cell gives one row per element; a character matrix gives its rows; numbers their codes.
    Mm n(0, 0, 0, 1, 2, ak_double);
    n.addr()[0] = 'h', n.addr()[1] = 'i';
    Mm c = str2mat(pair_cell(chars("xy"), Mm()), m, n);
    EXPECT_EQ(rows(c), (std::vector<std::string>{"xy ", "   ", "a  ", "bcd", "   ", "hi "}));
    EXPECT_EQ(rows(strvcat(pair_cell(chars("xy"), Mm()), n)), (std::vector<std::string>{"xy", "hi"}));
    EXPECT_TRUE(strvcat(Mm()).isstr());

    EXPECT_ERROR(str2mat(pair_cell(pair_cell(chars("a"), chars("b")), chars("c"))),
                 "str2mat: numeric data expected, but matrix (temporary) is not");
}
