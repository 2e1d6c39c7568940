// strsplit, strjoin, strtrim, contains/startsWith/endsWith, fliplr, num2cell, cellfun, and the
// regular expressions.
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

Mm cellrow(std::initializer_list<const char*> items) {
    Mm c(0, 0, 0, 1, static_cast<int>(items.size()), ak_mm);
    int k = 0;
    for (const char* s : items) static_cast<Mm*>(c.pr)[k++] = TM(s);
    return c;
}

const Mm& item(const Mm& c, int k) { return static_cast<const Mm*>(c.pr)[k]; }

std::vector<std::string> texts(const Mm& c) {
    std::vector<std::string> out;
    for (int k = 0; k < c.nnz; ++k) out.push_back(text(item(c, k)));
    return out;
}

typedef std::vector<std::string> words;

}  // namespace

TEST(StringCells, SplitJoinTrim) {
    EXPECT_EQ(texts(strsplit(TM("a  b c"))), (words{"a", "b", "c"}));  // runs of blanks are one
    EXPECT_EQ(texts(strsplit(TM("a,,b"), TM(","), TM("CollapseDelimiters"), Mm(0.0))), (words{"a", "", "b"}));
    EXPECT_EQ(texts(strsplit(TM(",a,"), TM(","))), (words{"", "a", ""}));
    EXPECT_EQ(texts(strsplit(TM("a--b-c"), cellrow({"-", "--"}))), (words{"a", "b", "c"}));  // longest first
    EXPECT_EQ(texts(strsplit(TM("a\\nb\nc"), TM("\\n"))), (words{"a\\nb", "c"}));             // escapes in delimiters
    Mm parts = strsplit(TM("x"));
    EXPECT_EQ(parts.rows(), 1);
    EXPECT_EQ(texts(parts), (words{"x"}));

    EXPECT_EQ(text(strjoin(cellrow({"a", "b", "c"}))), "a b c");
    EXPECT_EQ(text(strjoin(cellrow({"a", "b"}), TM("\\t"))), "a\tb");
    EXPECT_EQ(text(strjoin(strsplit(TM("1,2,3"), TM(",")), TM("+"))), "1+2+3");
    EXPECT_TRUE(strjoin(cellrow({})).isstr());

    EXPECT_EQ(text(strtrim(TM(" \t a b \n"))), "a b");
    EXPECT_EQ(strtrim(TM("   ")).size(), 0);
    EXPECT_EQ(texts(strtrim(cellrow({" a", "b "}))), (words{"a", "b"}));
    Mm m = str2mat(TM(" ab"), TM("  c"));
    EXPECT_EQ(strtrim(m).cols(), 2);  // columns blank in every row go
    ak_test::ErrorsThrow guard;
    EXPECT_ERROR(strsplit(Mm(1.0)), "strsplit: the first input must be a string");
    EXPECT_ERROR(strjoin(TM("ab")), "strjoin: the first input must be a cell array of strings");
    EXPECT_ERROR(strsplit(TM("a"), TM(","), TM("Other"), Mm(1.0)), "strsplit: unknown option 'Other'");
}

TEST(StringCells, ContainsStartsEndsAndFlip) {
    EXPECT_EQ(contains(TM("hello"), TM("ll")).r(), 1.0);
    EXPECT_EQ(values(contains(cellrow({"abc", "xyz", "b"}), TM("b"))), (std::vector<double>{1, 0, 1}));
    EXPECT_EQ(values(contains(cellrow({"abc", "xyz"}), cellrow({"q", "y"}))), (std::vector<double>{0, 1}));
    EXPECT_EQ(contains(TM("ABC"), TM("b")).r(), 0.0);
    EXPECT_EQ(contains(TM("ABC"), TM("b"), TM("IgnoreCase"), Mm(1.0)).r(), 1.0);
    EXPECT_EQ(startsWith(TM("abc"), TM("ab")).r(), 1.0);
    EXPECT_EQ(startsWith(TM("abc"), TM("bc")).r(), 0.0);
    EXPECT_EQ(endsWith(TM("abc"), TM("bc")).r(), 1.0);
    EXPECT_EQ(endsWith(TM("c"), TM("abc")).r(), 0.0);  // a pattern longer than the text
    EXPECT_TRUE(endsWith(TM("a"), TM("")).islogical());

    Mm f = fliplr(TM("abc"));
    EXPECT_EQ(text(f), "cba");
    EXPECT_TRUE(f.isstr());
    Mm m = (BR(1.0), 2.0, semi, 3.0, 4.0);
    EXPECT_EQ(values(fliplr(m)), (std::vector<double>{2, 4, 1, 3}));
    EXPECT_EQ(values(flipud(m)), (std::vector<double>{3, 1, 4, 2}));
    EXPECT_EQ(texts(fliplr(cellrow({"a", "b"}))), (words{"b", "a"}));
    ak_test::ErrorsThrow guard;
    EXPECT_ERROR(contains(Mm(1.0), TM("a")), "contains: input must be a string or a cell array of strings");
}

TEST(CellFunctions, Num2cellAndCellfun) {
    Mm m = (BR(1.0), 2.0, semi, 3.0, 4.0);
    Mm c = num2cell(m);
    ASSERT_EQ(c.rows(), 2);
    EXPECT_EQ(item(c, 1).r(), 3.0);
    Mm cols = num2cell(m, Mm(1.0));
    EXPECT_EQ(cols.cols(), 2);
    EXPECT_EQ(values(item(cols, 1)), (std::vector<double>{2, 4}));
    EXPECT_EQ(texts(num2cell(TM("ab"))), (words{"a", "b"}));  // characters stay characters

    Mm list = cellrow({"ab", "", "cde"});
    EXPECT_EQ(values(cellfun(TM("length"), list)), (std::vector<double>{2, 0, 3}));
    Mm empty = cellfun(TM("isempty"), list);
    EXPECT_TRUE(empty.islogical());
    EXPECT_EQ(values(empty), (std::vector<double>{0, 1, 0}));
    EXPECT_EQ(values(cellfun(TM("size"), list, Mm(2.0))), (std::vector<double>{2, 0, 3}));
    EXPECT_EQ(values(cellfun(TM("isclass"), list, TM("char"))), (std::vector<double>{1, 1, 1}));

    // Names of the function table, with uniform and cell results.
    Mm up = cellfun(TM("upper"), list, TM("UniformOutput"), Mm(0.0));
    EXPECT_EQ(texts(up), (words{"AB", "", "CDE"}));
    EXPECT_EQ(values(cellfun(TM("str2double"), cellrow({"1.5", "x"}))).at(0), 1.5);
    Mm formats = cellrow({"%d!", "<%g>"});
    Mm printed = cellfun(TM("sprintf"), formats, num2cell((BR(7.0), 2.5)), TM("UniformOutput"), Mm(0.0));
    EXPECT_EQ(texts(printed), (words{"7!", "<2.5>"}));
    EXPECT_EQ(values(cellfun(TM("strcmp"), list, cellrow({"ab", "x", "cde"}))), (std::vector<double>{1, 0, 1}));
    Mm idx;
    Mm biggest = cellfun(TM("max"), num2cell(m), i_o, idx);
    EXPECT_EQ(values(biggest), (std::vector<double>{1, 3, 2, 4}));
    EXPECT_EQ(values(idx), (std::vector<double>{1, 1, 1, 1}));

    ak_test::ErrorsThrow guard;
    EXPECT_ERROR(cellfun(TM("upper"), list),
                 "cellfun: all results must be scalars when UniformOutput is true; use 'UniformOutput', false");
    EXPECT_ERROR(cellfun(TM("strcmp"), list, cellrow({"a"})), "cellfun: all the arguments must be cell arrays of the same size");
    EXPECT_ERROR(cellfun(TM("length"), TM("ab")), "cellfun: the arguments must be cell arrays");
    EXPECT_ERROR(cellfun(TM("length"), list, TM("Uniform"), Mm(0.0)), "cellfun: unknown option 'Uniform'");
    EXPECT_ERROR(num2cell(m, Mm(3.0)), "num2cell: dim must be 1 or 2");
}

TEST(RegularExpressions, OutputsInDefaultAndNamedOrder) {
    Mm s = TM("ab12cd345");
    Mm e, te, match, tok, names, split;
    Mm start = regexp(s, TM("\\d+"), i_o, e, te, match, tok, names, split);
    EXPECT_EQ(values(start), (std::vector<double>{3, 7}));
    EXPECT_EQ(values(e), (std::vector<double>{4, 9}));
    EXPECT_EQ(texts(match), (words{"12", "345"}));
    EXPECT_EQ(texts(split), (words{"ab", "cd", ""}));
    EXPECT_EQ(values(item(te, 1)), (std::vector<double>{7, 9}));  // no groups: the whole match
    EXPECT_EQ(texts(item(tok, 0)), (words{"12"}));

    Mm m2 = regexp(TM("k1=v1, k2=v2"), TM("(\\w)(\\d)="), TM("tokens"), TM("match"), i_o, match);
    ASSERT_EQ(m2.nnz, 2);
    EXPECT_EQ(texts(item(m2, 1)), (words{"k", "2"}));
    EXPECT_EQ(texts(match), (words{"k1=", "k2="}));

    Mm n = regexp(TM("x=10 y=20"), TM("(?<key>\\w)=(?<val>\\d+)"), TM("names"));
    ASSERT_TRUE(n.isstruct());
    EXPECT_EQ(n.cols(), 2);
    EXPECT_EQ(text(getfield(n(2.0), TM("val"))), "20");

    Mm once = regexp(TM("a1b2"), TM("\\d"), TM("match"), TM("once"));
    EXPECT_TRUE(once.isstr());
    EXPECT_EQ(text(once), "1");
    EXPECT_EQ(regexp(TM("abc"), TM("\\d"), TM("match"), TM("once")).size(), 0);
    EXPECT_EQ(regexp(TM("abc"), TM("\\d")).size(), 0);
    EXPECT_EQ(regexp(TM("a1"), TM("\\d"), TM("once")).r(), 2.0);
    // An optional group that took no part gives an empty token and extents [0 -1].
    Mm ext;
    Mm t = regexp(TM("ac"), TM("a(b)?c"), TM("tokens"), TM("tokenExtents"), i_o, ext);
    EXPECT_EQ(item(item(t, 0), 0).size(), 0);
    EXPECT_EQ(values(item(ext, 0)), (std::vector<double>{0, -1}));
}

TEST(RegularExpressions, CaseCellsEmptyMatchesAndErrors) {
    EXPECT_EQ(regexp(TM("ABC"), TM("b")).size(), 0);
    EXPECT_EQ(regexpi(TM("ABC"), TM("b")).r(), 2.0);
    EXPECT_EQ(regexp(TM("ABC"), TM("b"), TM("ignorecase")).r(), 2.0);
    EXPECT_EQ(regexp(TM("a\nb"), TM("a.b")).r(), 1.0);  // "." takes a new line by default
    EXPECT_EQ(regexp(TM("a\nb"), TM("a.b"), TM("dotexceptnewline")).size(), 0);
    EXPECT_EQ(values(regexp(TM("x\ny"), TM("^\\w"), TM("lineanchors"))), (std::vector<double>{1, 3}));
    Mm c = regexp(cellrow({"a1", "b22", "c"}), TM("\\d+"), TM("match"));
    ASSERT_EQ(c.cols(), 3);
    EXPECT_EQ(texts(item(c, 1)), (words{"22"}));
    EXPECT_EQ(item(c, 2).nnz, 0);
    EXPECT_EQ(regexp(TM("abc"), TM("x*")).size(), 0);  // empty matches only on request
    EXPECT_EQ(values(regexp(TM("ab"), TM("x*"), TM("emptymatch"))), (std::vector<double>{1, 2, 3}));
    ak_test::ErrorsThrow guard;
    EXPECT_ERROR(regexp(TM("a"), TM("(")), "regexp: missing closing parenthesis at position 2 of the pattern");
    EXPECT_ERROR(regexp(TM("a"), TM("a"), TM("bogus")), "regexp: unknown option 'bogus'");
    EXPECT_ERROR(regexp(TM("a")), "regexp does not accept 1 input");
    EXPECT_ERROR(regexp(Mm(1.0), TM("a")), "regexp: the subject must be a string or a cell array of strings");
}

TEST(RegularExpressions, Replace) {
    EXPECT_EQ(text(regexprep(TM("a1b22"), TM("\\d+"), TM("#"))), "a#b#");
    EXPECT_EQ(text(regexprep(TM("a1b22"), TM("\\d+"), TM("#"), TM("once"))), "a#b22");
    EXPECT_EQ(text(regexprep(TM("John Smith"), TM("(\\w+) (\\w+)"), TM("$2, $1"))), "Smith, John");
    EXPECT_EQ(text(regexprep(TM("ab"), TM("(?<x>a)"), TM("[$<x>$0]"))), "[aa]b");
    EXPECT_EQ(text(regexprep(TM("a b"), TM(" "), TM("\\n"))), "a\nb");
    EXPECT_EQ(text(regexprep(TM("cost"), TM("^"), TM("\\$"))), "$cost");
    EXPECT_EQ(text(regexprep(TM("abc"), TM("x*"), TM("-"))), "-a-b-c-");
    EXPECT_EQ(text(regexprep(TM("ABC"), TM("b"), TM("x"), TM("ignorecase"))), "AxC");
    EXPECT_EQ(text(regexprep(TM("abc"), TM("z"), TM("y"))), "abc");
    EXPECT_EQ(texts(regexprep(cellrow({"a1", "b"}), cellrow({"\\d", "b"}), cellrow({"D", "B"}))), (words{"aD", "B"}));
    EXPECT_EQ(text(regexprep(TM("aaa"), TM("a"), TM(""))), "");
    ak_test::ErrorsThrow guard;
    EXPECT_ERROR(regexprep(TM("a"), cellrow({"a", "b"}), cellrow({"1", "2", "3"})),
                 "regexprep: there must be one replacement, or one for each pattern");
    EXPECT_ERROR(regexprep(TM("a"), TM("b")), "regexprep does not accept 2 inputs");
}
