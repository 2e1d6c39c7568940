// The comparison family, findstr, strrep, strtok, strmatch, strcat, the character tests and
// strjust, the base conversions, str2double and str2num.
#include <cmath>
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

std::vector<double> values(const Mm& m) { return std::vector<double>(m.addr(), m.addr() + m.nnz); }

std::vector<std::string> rows(const Mm& m) {
    std::vector<std::string> out(m.rows());
    for (int c = 0; c < m.cols(); ++c)
        for (int r = 0; r < m.rows(); ++r) out[r] += static_cast<char>(m.addr()[c * m.rows() + r]);
    return out;
}

Mm cellrow(std::initializer_list<const char*> items) {
    Mm c(0, 0, 0, 1, static_cast<int>(items.size()), ak_mm);
    int k = 0;
    for (const char* s : items) static_cast<Mm*>(c.pr)[k++] = TM(s);
    return c;
}

std::vector<std::string> cell_texts(const Mm& c) {
    std::vector<std::string> out;
    for (int k = 0; k < c.nnz; ++k) out.push_back(text(static_cast<Mm*>(c.pr)[k]));
    return out;
}

}  // namespace

TEST(StringCompare, LengthsCutsEmptiesAndNonStrings) {
    EXPECT_EQ(strcmp(TM("ab"), TM("abc")).r(), 0.0);
    EXPECT_EQ(strncmp(TM("ab"), TM("abc"), Mm(2.0)).r(), 1.0);
    EXPECT_EQ(strncmp(TM("ab"), TM("abc"), Mm(3.0)).r(), 0.0);
    EXPECT_EQ(strncmp(TM("ab"), TM("ab"), Mm(0.0)).r(), 0.0);
    EXPECT_EQ(strncmp(TM("abx"), TM("aby"), Mm(2.9)).r(), 1.0);  // n is truncated
    EXPECT_EQ(strcmp(Mm(97.0), TM("a")).r(), 0.0);                // a number is no string
    EXPECT_EQ(strcmp(TM(""), TM("")).r(), 1.0);
    EXPECT_EQ(strcmp(TM(""), TM("a")).r(), 0.0);
    EXPECT_EQ(strcmpi(TM("aB"), TM("Ab")).r(), 1.0);
    EXPECT_EQ(strncmpi(TM("ABc"), TM("abD"), Mm(2.0)).r(), 1.0);
    // Case folds to upper: '[' (91) and '{' (123) stay apart, as do '_' and DEL.
    EXPECT_EQ(strcmpi(TM("["), TM("{")).r(), 0.0);
    // Char matrices compare in shape and value; a column is not a row.
    Mm m = str2mat(TM("ab"), TM("cd"));
    EXPECT_EQ(strcmp(m, str2mat(TM("ab"), TM("cd"))).r(), 1.0);
    EXPECT_EQ(strcmp(m, TM("acbd")).r(), 0.0);
    Mm col = TM("ab");
    col.reshape(2, 1);
    EXPECT_EQ(strcmp(col, TM("ab")).r(), 0.0);
}

TEST(StringCompare, CellsAgainstStringsAndCells) {
    EXPECT_EQ(values(strcmp(cellrow({"a", "b"}), TM("a"))), (std::vector<double>{1, 0}));
    EXPECT_EQ(values(strcmp(TM("b"), cellrow({"a", "b"}))), (std::vector<double>{0, 1}));
    EXPECT_EQ(values(strcmp(cellrow({"a", "b"}), cellrow({"a", "c"}))), (std::vector<double>{1, 0}));
    Mm r = strcmpi(cellrow({"X"}), cellrow({"x", "y", "X"}));  // a 1x1 cell spreads
    EXPECT_EQ(r.cols(), 3);
    EXPECT_EQ(values(r), (std::vector<double>{1, 0, 1}));
    Mm mixed = cellrow({"a", "a"});
    static_cast<Mm*>(mixed.pr)[1] = Mm(97.0);  // a number in a cell is never equal
    EXPECT_EQ(values(strcmp(mixed, TM("a"))), (std::vector<double>{1, 0}));
    ak_test::ErrorsThrow guard;
    for (auto f : {0, 1, 2, 3}) {
        Mm a = cellrow({"a", "b"}), b = cellrow({"a", "b", "c"});
        EXPECT_ERROR(f == 0   ? strcmp(a, b)
                     : f == 1 ? strcmpi(a, b)
                     : f == 2 ? strncmp(a, b, Mm(1.0))
                              : strncmpi(a, b, Mm(1.0)),
                     "strcmp: sizes of cell array do not match");
    }
    EXPECT_ERROR(strcmp(TM("a")), "strcmp does not accept 1 input");
    EXPECT_ERROR(strncmpi(TM("a"), TM("b")), "strncmpi does not accept 2 inputs");
    EXPECT_ERROR(strrep(TM("a"), TM("b")), "strrep does not accept 2 inputs");
    EXPECT_ERROR(strmatch(TM("a")), "strmatch does not accept 1 input");
    EXPECT_ERROR(findstr(TM("a")), "findstr does not accept 1 input");
}

TEST(StringSearch, FindstrAndStrrepWithOverlapsAndEmptyPatterns) {
    EXPECT_EQ(values(findstr(TM("aaa"), TM("aa"))), (std::vector<double>{1, 2}));
    EXPECT_EQ(values(findstr(TM("a"), TM("banana"))), (std::vector<double>{2, 4, 6}));
    EXPECT_EQ(values(findstr(TM("banana"), TM("a"))), (std::vector<double>{2, 4, 6}));
    EXPECT_EQ(findstr(TM("abc"), TM("")).size(), 0);
    EXPECT_EQ(findstr(TM("abc"), TM("x")).size(), 0);

    EXPECT_EQ(text(strrep(TM("abc"), TM("abcd"), TM("x"))), "abc");
    EXPECT_EQ(text(strrep(TM("a-b-c"), TM("-"), TM("--"))), "a--b--c");
    EXPECT_EQ(text(strrep(TM("abc"), TM(""), TM("x"))), "abc");
    EXPECT_EQ(text(strrep(TM("abcb"), TM("b"), TM(""))), "ac");
    // Overlapping matches are replaced the later first, on the text as that left it.
    EXPECT_EQ(text(strrep(TM("aaa"), TM("aa"), TM("x"))), "x");
    EXPECT_EQ(text(strrep(TM("abab"), TM("aba"), TM("X"))), "Xb");
    EXPECT_TRUE(strrep(TM("ab"), TM("b"), TM("c")).isstr());
    Mm c = strrep(cellrow({"one", "two"}), TM("o"), TM("0"));
    EXPECT_EQ(cell_texts(c), (std::vector<std::string>{"0ne", "tw0"}));
}

TEST(StringTokens, StrtokForms) {
    Mm rest;
    Mm tok = strtok(TM(" ab cd"), i_o, rest);
    EXPECT_EQ(text(tok), "ab");
    EXPECT_EQ(text(rest), " cd");
    EXPECT_TRUE(tok.isstr() && rest.isstr());
    tok = strtok(TM(",,x,y"), TM(","), i_o, rest);
    EXPECT_EQ(text(tok), "x");
    EXPECT_EQ(text(rest), ",y");
    tok = strtok(TM("   "), i_o, rest);  // no token at all
    EXPECT_EQ(tok.size(), 0);
    EXPECT_EQ(rest.size(), 0);
    EXPECT_EQ(text(strtok(TM("word"))), "word");
    EXPECT_EQ(strtok(TM("")).size(), 0);
    EXPECT_EQ(text(strtok(TM("a\tb"))), "a");
    // A string token from numbers when the delimiter is a string; the rest stays numeric.
    Mm nums = (BR(1.0), 32.0, 2.0);
    tok = strtok(nums, TM(" "), i_o, rest);
    EXPECT_TRUE(tok.isstr());
    EXPECT_FALSE(rest.isstr());
    ak_test::ErrorsThrow guard;
    EXPECT_ERROR(strtok(), "strtok does not accept 0 inputs");
}

TEST(StringMatchJoin, StrmatchAndStrcat) {
    Mm list = str2mat(TM("abc"), TM("ab "));
    EXPECT_EQ(values(strmatch(TM("ab"), list, Mm(1.0))), (std::vector<double>{2}));
    EXPECT_EQ(values(strmatch(TM("ab"), list)), (std::vector<double>{1, 2}));
    EXPECT_EQ(values(strmatch(TM("b"), cellrow({"a", "bc", "b"}))), (std::vector<double>{2, 3}));
    EXPECT_EQ(strmatch(TM("z"), list).size(), 0);

    EXPECT_EQ(text(strcat(TM("a "), TM("b "))), "ab");
    EXPECT_EQ(text(strcat(TM("x"), TM("y"), TM("z"))), "xyz");
    EXPECT_EQ(strcat().size(), 0);
    EXPECT_EQ(rows(strcat(str2mat(TM("a"), TM("bb")), TM("c"))), (std::vector<std::string>{"ac ", "bbc"}));
    Mm c = strcat(cellrow({"a", "b"}), TM("x"));
    EXPECT_EQ(c.rows(), 1);  // a cell of one row stays one row
    EXPECT_EQ(cell_texts(c), (std::vector<std::string>{"ax", "bx"}));
    c = strcat(cellrow({"a", "b"}), cellrow({"1 ", "2"}));
    EXPECT_EQ(cell_texts(c), (std::vector<std::string>{"a1", "b2"}));
    ak_test::ErrorsThrow guard;
    EXPECT_ERROR(strcat(cellrow({"a", "b"}), cellrow({"a", "b", "c"})),
                 "strcat: arguments must have the same number of strings");
}

TEST(StringCharacters, CaseTestsBlanksAndJustify) {
    EXPECT_EQ(text(lower(TM("AbZ["))), "abz[");
    EXPECT_EQ(cell_texts(upper(cellrow({"a", "Bc"}))), (std::vector<std::string>{"A", "BC"}));
    EXPECT_EQ(values(isletter(TM("a1Z "))), (std::vector<double>{1, 0, 1, 0}));
    EXPECT_EQ(values(isspace(TM("a \t\n"))), (std::vector<double>{0, 1, 1, 1}));
    EXPECT_EQ(values(islower(TM("aB"))), (std::vector<double>{1, 0}));
    EXPECT_EQ(values(isupper(TM("aB"))), (std::vector<double>{0, 1}));
    EXPECT_EQ(values(isletter(Mm(97.0))), (std::vector<double>{0}));  // a number is no letter
    EXPECT_TRUE(isletter(TM("a")).islogical());
    EXPECT_EQ(text(blanks(Mm(3.0))), "   ");
    EXPECT_EQ(text(deblank_leading(TM("  a "))), "a ");
    Mm s = setstr((BR(104.0), 105.0));
    EXPECT_TRUE(s.isstr());
    EXPECT_EQ(text(s), "hi");
    Mm m = str2mat(TM("a  "), TM(" bb"));
    EXPECT_EQ(rows(strjust(m)), (std::vector<std::string>{"  a", " bb"}));
    EXPECT_EQ(rows(strjust(m, TM("left"))), (std::vector<std::string>{"a  ", "bb "}));
    EXPECT_EQ(rows(strjust(TM("a    "), TM("center"))), (std::vector<std::string>{"  a  "}));
    ak_test::ErrorsThrow guard;
    EXPECT_ERROR(strjust(m, TM("up")), "strjust: mode must be 'right', 'left' or 'center'");
}

TEST(StringBases, EdgesPaddingAndMessages) {
    EXPECT_EQ(text(dec2bin(Mm(0.0))), "0");
    EXPECT_EQ(text(dec2bin(Mm(5.0), Mm(8.0))), "00000101");
    EXPECT_EQ(text(dec2bin(Mm(std::ldexp(1.0, 53)))), "1" + std::string(53, '0'));
    EXPECT_EQ(text(dec2hex(Mm(std::ldexp(1.0, 53) - 1))), "1FFFFFFFFFFFFF");
    EXPECT_EQ(text(dec2hex(Mm(18446744073709549568.0))), "FFFFFFFFFFFFF800");  // largest double below 2^64
    EXPECT_EQ(rows(dec2hex((BR(255.0), 1.0))), (std::vector<std::string>{"FF", "01"}));
    EXPECT_EQ(text(dec2base(Mm(35.0), Mm(16.0))), "23");
    EXPECT_EQ(text(dec2base(Mm(5.0), TM("ab"))), "bab");  // symbols of one's own

    EXPECT_EQ(hex2dec(TM("ff")).r(), 255.0);
    EXPECT_EQ(hex2dec(TM("20000000000000")).r(), std::ldexp(1.0, 53));
    EXPECT_EQ(bin2dec(TM("1 0 1")).r(), 5.0);  // blanks are ignored
    EXPECT_TRUE(std::isnan(bin2dec(TM("102")).r()));
    EXPECT_EQ(values(hex2dec(cellrow({"A", "10"}))), (std::vector<double>{10, 16}));
    EXPECT_EQ(base2dec(TM("zz"), Mm(16.0)).size(), 1);
    EXPECT_EQ(base2dec(TM("23"), Mm(5.0)).r(), 13.0);

    EXPECT_EQ(hex2num(TM("3ff")).r(), 1.0);  // padded with zeros on the right
    EXPECT_EQ(hex2num(TM("c000000000000000")).r(), -2.0);
    EXPECT_TRUE(std::isinf(hex2num(TM("7ff0000000000000")).r()));

    ak_test::ErrorsThrow guard;
    EXPECT_ERROR(dec2bin(Mm(-1.0)), "dec2bin: input must be real non-negative integers");
    EXPECT_ERROR(dec2hex(Mm(1.5)), "dec2hex: input must be real non-negative integers");
    EXPECT_ERROR(dec2bin(Mm(NAN)), "dec2bin: input must be real non-negative integers");
    EXPECT_ERROR(dec2hex(Mm(std::ldexp(1.0, 64))), "dec2hex: input must be below 2^64");
    EXPECT_ERROR(dec2base(Mm(3.0), Mm(17.0)), "dec2base: base must be an integer between 2 and 16");
    EXPECT_ERROR(hex2dec(Mm(10.0)), "hex2dec: input must be a string or a cell array of strings");
    EXPECT_ERROR(hex2num(TM("12345678123456781")), "hex2num: input must be at most 16 hexadecimal digits");
    EXPECT_ERROR(hex2num(TM("xy")), "hex2num: input must contain only hexadecimal digits");
}

TEST(StringNumbers, Str2doubleOfTextCellsAndBadInput) {
    EXPECT_EQ(str2double(TM("  -1.5e3 ")).r(), -1500.0);
    EXPECT_EQ(str2double(TM("1,000.5")).r(), 1000.5);
    EXPECT_EQ(str2double(TM("-Inf")).r(), -INFINITY);
    Mm z = str2double(TM("3 - 4i"));
    ASSERT_TRUE(z.isc());
    EXPECT_EQ(z.r(), 3.0);
    EXPECT_EQ(z.i(), -4.0);
    EXPECT_EQ(str2double(TM("2j")).i(), 2.0);
    for (const char* bad : {"", "abc", "1 2", "1e", "--1", "1.2.3", "0x10", "1+", "i i"})
        EXPECT_TRUE(std::isnan(str2double(TM(bad)).r())) << bad;
    EXPECT_TRUE(std::isnan(str2double(Mm(5.0)).r()));  // a number is not text

    Mm c = cellrow({"1", "x", "2.5"});
    static_cast<Mm*>(c.pr)[1] = Mm(7.0);
    Mm v = str2double(c);
    EXPECT_EQ(v.cols(), 3);
    EXPECT_EQ(v.r(1), 1.0);
    EXPECT_TRUE(std::isnan(v.r(2)));
    EXPECT_EQ(v.r(3), 2.5);
    Mm m = str2double(str2mat(TM("1"), TM("22")));  // one number for each row
    EXPECT_EQ(values(m), (std::vector<double>{1, 22}));
}

TEST(StringNumbers, Str2numOfMatrixLiterals) {
    Mm ok;
    Mm m = str2num(TM("[1 2; 3 4]"), i_o, ok);
    EXPECT_EQ(ok.r(), 1.0);
    ASSERT_EQ(m.rows(), 2);
    EXPECT_EQ(values(m), (std::vector<double>{1, 3, 2, 4}));
    EXPECT_EQ(values(str2num(TM("1,-2 , 3e1"))), (std::vector<double>{1, -2, 30}));
    EXPECT_EQ(values(str2num(TM("1 -2"))), (std::vector<double>{1, -2}));  // two elements
    EXPECT_EQ(values(str2num(TM("1 - 2"))), (std::vector<double>{-1}));    // one difference
    EXPECT_EQ(values(str2num(TM("-inf nan"))).size(), 2u);
    EXPECT_EQ(str2num(TM("-inf")).r(), -INFINITY);
    EXPECT_EQ(str2num(TM("-pi")).r(), -M_PI);
    Mm z = str2num(TM("[1+2i 3]"));
    ASSERT_TRUE(z.isc());
    EXPECT_EQ(z.i(1), 2.0);
    EXPECT_EQ(z.i(2), 0.0);
    Mm rows2 = str2num(str2mat(TM("1 2"), TM("3 4")));  // the rows of a char matrix are rows
    EXPECT_EQ(rows2.rows(), 2);
    for (const char* bad : {"[1 2; 3]", "abc", "1 2)", "[1,,2]"}) {
        m = str2num(TM(bad), i_o, ok);
        EXPECT_EQ(ok.r(), 0.0) << bad;
        EXPECT_EQ(m.size(), 0) << bad;
    }
    ak_test::ErrorsThrow guard;
    EXPECT_ERROR(str2num(Mm(1.0)), "str2num: input is not a string");
}
