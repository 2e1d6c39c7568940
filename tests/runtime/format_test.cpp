// sprintf and sscanf over the format engine: recycling, integer and text conversions, literal
// pieces, the result shapes of sscanf, and formats that the platform formatter must not see as is.
#include <cmath>
#include <cstdio>
#include <string>

#include "arklib.h"
#include "test_support.h"
#include "tests/core/engine_test_support.h"

using namespace engine_test;

namespace {

std::string text(const Mm& m) {
    std::string s;
    for (int k = 0; k < m.size(); ++k) s += static_cast<char>(m.addr()[k]);
    return s;
}

// sprintf(format, a, b, ...) as a translated call passes it: the arguments in one cell list.
template <typename... A>
std::string fmt(const char* format, const A&... args) {
    const Mm* list[] = {&args...};
    Mm out = sprintf(TM(format), cell_from_array(sizeof...(args), list));
    EXPECT_TRUE(out.isstr() || out.size() == 0);
    return text(out);
}

}  // namespace

TEST(Sprintf, NumericConversionsTruncateAndSpellNonFinite) {
    EXPECT_EQ("3", fmt("%d", Mm(3.7)));
    EXPECT_EQ("NaN", fmt("%5d", NaN));             // no padding
    EXPECT_EQ("-Inf", fmt("x%d", Mm(-INFINITY)));  // the piece's literal text goes too
    EXPECT_EQ("ffffffffffffffff", fmt("%x", Mm(-1.0)));
    EXPECT_EQ("9223372036854775807", fmt("%d", Mm(1e300)));  // saturates, no undefined conversion
    EXPECT_EQ("7 7", fmt("%hd %ld", Mm(7.0), Mm(7.0)));      // size modifiers are taken out
    // The bytes of a double and of a float, each written low digit first.
    EXPECT_EQ("0000000000000FF3", fmt("%bx", Mm(1.0)));
    EXPECT_EQ("000008F3", fmt("%tx", Mm(1.0)));
    EXPECT_EQ("  -Inf|   Inf|   NaN", fmt("%6.2f|%6g|%6e", Mm(-INFINITY), Inf, NaN));
    EXPECT_EQ(" NaN", fmt("%g", Mm(-NAN)));  // the sign's place stays as a blank
    EXPECT_EQ("200", fmt("%d", muint8(Mm(200.0))));
    EXPECT_EQ("0 3 ", fmt("%d ", sparse(row({0, 3}))));
}

TEST(Sprintf, RecyclingLiteralPiecesAndText) {
    EXPECT_EQ("1\n2\n", fmt("%d\\n", row({1, 2})));
    // The format carries on across the arguments of one call.
    EXPECT_EQ("1-2;3", fmt("%d-%d;", Mm(1.0), row({2, 3})));
    // Literal text after the last conversion prints once; a format without conversion once.
    EXPECT_EQ("abc", fmt("abc", Mm(1.0), Mm(2.0)));
    EXPECT_EQ("", fmt("%d", Mm()));
    EXPECT_EQ("a\\b\tc", fmt("a\\\\b\\tc", Mm()));
    // "%%" does not escape: the second "%" starts a conversion that consumes the 5.
    EXPECT_EQ("%ld", fmt("%%d", Mm(5.0)));

    // Text conversions.
    EXPECT_EQ("A", fmt("%s", Mm(65.7)));
    // %s takes the rest of the data, and the writer stops right after it.
    EXPECT_EQ("   ab", fmt("%5s|", TM("ab")));
    EXPECT_EQ("ab|cd", fmt("%s|%s", TM("ab"), TM("cd")));
    EXPECT_EQ("Hi", fmt("%c%c", Mm(72.0), Mm(105.0)));
    EXPECT_EQ("A", fmt("%s", row({65, 0, 66})));  // a text ends at a NUL
    // %n skips an element and prints nothing.
    EXPECT_EQ("13", fmt("%d%n%d", row({1, 2, 3})));
}

TEST(Sprintf, FormsWithoutDataAndUnusualFormats) {
    Mm f = TM("a\\tb %d");
    Mm same = sprintf(f);
    EXPECT_EQ("a\\tb %d", text(same));  // one argument: returned unchanged
    Mm no_list(0, 0, 0, 0, 0, ak_mm);
    EXPECT_EQ("a\tb %d", text(sprintf(f, no_list)));
    // Directives the engine does not know, or widths from arguments, never reach the platform
    // formatter in a form that would read a missing argument.
    EXPECT_EQ("% d", fmt("% d", Mm(5.0)));
    EXPECT_EQ("5", fmt("%*d", Mm(5.0)));
    EXPECT_EQ("%y5", fmt("%y%d", Mm(5.0)));
    std::string many;
    for (int k = 0; k < 40; ++k) many += "%d";
    EXPECT_ERROR(fmt(many.c_str(), Mm(1.0)), "format: more than 32 conversions in one format");
    Mm inner = cell(Mm(1.0));
    const Mm* list[] = {&inner};
    EXPECT_ERROR(sprintf(TM("%d"), cell_from_array(1, list)),
                 "sprintf: only numbers and strings can be printed");
}

TEST(Sscanf, ShapesCountsAndFailures) {
    Mm a = sscanf(TM("1 2 3"), TM("%d"));
    EXPECT_EQ(3, a.rows());
    EXPECT_EQ(1, a.cols());
    EXPECT_EQ((std::vector<double>{1, 2, 3}), re(a));

    Mm s = sscanf(TM("abc"), TM("%s"));
    EXPECT_TRUE(s.isstr());
    EXPECT_EQ(1, s.rows());
    EXPECT_EQ("abc", text(s));

    Mm short_input = sscanf(TM("1 2 3"), TM("%d"), row({2, 2}));
    EXPECT_EQ((std::vector<double>{1, 2, 3, 0}), re(short_input));
    EXPECT_EQ(2, short_input.rows());
    EXPECT_EQ(2, short_input.cols());

    Mm open = sscanf(TM("1 2 3 4 5"), TM("%d"), row({2, INFINITY}));
    EXPECT_EQ(3, open.cols());
    EXPECT_EQ((std::vector<double>{1, 2, 3, 4, 5, 0}), re(open));

    // Counts and failures.
    Mm count, msg, next;
    Mm none = sscanf(TM("x"), TM("%d"), i_o, count, msg, next);
    EXPECT_EQ(0, none.size());
    EXPECT_EQ(0.0, *count.addr());
    EXPECT_EQ(0, msg.size());
    EXPECT_TRUE(msg.isstr());
    EXPECT_EQ(0.0, *next.addr());

    Mm part = sscanf(TM("1 2 x 4"), TM("%d"), i_o, count);
    EXPECT_EQ((std::vector<double>{1, 2}), re(part));
    EXPECT_EQ(2.0, *count.addr());

    // Literal text alone matches nothing and must not loop.
    EXPECT_EQ(0, sscanf(TM("abc"), TM("abc")).size());
    EXPECT_ERROR(sscanf(TM("1"), TM("%d"), row({1, 2, 3})),
                 "scanf: size (temporary) is not one or two elements");
    EXPECT_ERROR(sscanf(TM("1")), "sscanf does not accept 1 input");
}

TEST(Sscanf, PositionMovesByWholeTokens) {
    // The width reads 12, and the position moves past the whole token.
    EXPECT_EQ((std::vector<double>{12, 56}), re(sscanf(TM("1234 56"), TM("%2d"))));
    // Skipped conversions keep the recycling going.
    EXPECT_EQ((std::vector<double>{2, 4}), re(sscanf(TM("1 2 3 4"), TM("%*d %d"))));
    EXPECT_EQ((std::vector<double>{1.5, 255}), re(sscanf(TM("1.5 ff"), TM("%g %x"))));
    // A character set reads as text; %c moves by one character.
    EXPECT_EQ("abc", text(sscanf(TM("abc123"), TM("%[a-z]"))));
    EXPECT_EQ("a c", text(sscanf(TM("a c"), TM("%c"))));
    // A directive the engine does not know becomes literal text: nothing matches, nothing loops.
    EXPECT_EQ(0, sscanf(TM("5"), TM("% d")).size());
}

TEST(Sscanf, LongTokensAndStreams) {
    std::string big(40000, 'a');
    EXPECT_EQ(40000, sscanf(TM(big.c_str()), TM("%s")).size());
    std::string many;
    for (int k = 0; k < 9000; ++k) many += std::to_string(k) + " ";
    Mm r = sscanf(TM(many.c_str()), TM("%d"));
    ASSERT_EQ(9000, r.size());  // past two growth steps of the result
    EXPECT_EQ(8999.0, r.addr()[8999]);

    std::FILE* f = std::tmpfile();
    ASSERT_NE(nullptr, f);
    std::fputs("1 2\n3 abc", f);
    std::rewind(f);
    Mm count, msg;
    Mm m = scan_matrix(f, nullptr, TM("%d"), Inf, i_o, count, msg);
    EXPECT_EQ((std::vector<double>{1, 2, 3}), re(m));
    EXPECT_EQ(3.0, *count.addr());
    Mm rest = scan_matrix(f, nullptr, TM("%s"), Inf, i_o, count, msg);
    EXPECT_EQ("abc", text(rest));
    std::fclose(f);
}
