// disp, display and the other console functions, checked on the exact text given to the print
// handler.
#include <chrono>
#include <cmath>
#include <cstring>
#include <string>

#include "arklib.h"
#include "test_support.h"
#include "tests/core/engine_test_support.h"

using namespace engine_test;

namespace {

std::string shown(const Mm& x) {
    ak_test::Recorder rec;
    disp(x);
    return rec.printed;
}

// Restores short display after a test that switches it.
struct ShortFormatAfter {
    ~ShortFormatAfter() { format(); }
};

const char* reply_text = "";
void reply(char* buffer, int size) { std::snprintf(buffer, size, "%s", reply_text); }
int key_calls = 0;
int key_after_three() { return ++key_calls >= 3 ? 'q' : 0; }
int clc_calls = 0;
Mm show_point(Mm) {
    ak_printf("<point>\n");
    return x_M;
}
int count_clc() { return ++clc_calls, 0; }

}  // namespace

TEST(Disp, NumbersPagesAndEmptyValues) {
    EXPECT_EQ("NaN  1.5\n", shown(row({NAN, 1.5})));
    EXPECT_EQ("1  2\n3  4\n", shown(mat(2, 2, {1, 2, 3, 4})));
    EXPECT_EQ("1      2 +3i\n", shown(crow({1, 2}, {0, 3})));
    EXPECT_EQ("All zeros sparse\n", shown(spzeros(Mm(2.0), Mm(2.0))));
    EXPECT_EQ("hello\n", shown(TM("hello")));
    EXPECT_EQ("", shown(x_M));
    EXPECT_EQ("[]\n", shown(Mm()));
    EXPECT_EQ("", shown(TM("")));  // a string prints its own rows: none

    int d4[] = {1, 1, 1, 2};
    Mm y(0, 0, 0, 4, d4, ak_double);
    y.addr()[0] = 5, y.addr()[1] = 6;
    EXPECT_EQ("(:,:,1,1)\n5\n(:,:,1,2)\n6\n", shown(y));
}

TEST(Disp, FormatSwitchesBetweenShortAndLong) {
    ShortFormatAfter restore;
    EXPECT_EQ("3.142\n", shown(pi));
    format(TM("loose"));  // any word beginning with L means long
    EXPECT_EQ(0, format_short);
    EXPECT_EQ("  3.14159265359\n", shown(pi));  // long display keeps the alignment blanks
    format();
    EXPECT_EQ(1, format_short);
}

TEST(Disp, CellsStructuresAndObjects) {
    Mm c = (CL(1.0), "abc", semi, Mm((BR(1.0), 2.0, 3.0)), "x");
    EXPECT_EQ("[1]          [abc] \n[1x3 double] [x]   \n", shown(c));
    EXPECT_EQ("{}\n", shown(Mm(0, 0, 0, 0, 0, ak_mm)));
    EXPECT_EQ("  a: [1]\n  b: [hi]\n", shown(mstruct(Mm((CL("a"), 1.0, "b", "hi")))));

    // Objects use their class methods when registered.
    Mm o = mclass(mstruct(Mm((CL("x"), 1.0, "y", 2.0))), TM("dpoint"));
    EXPECT_EQ("field list:\nx\ny\n", shown(o));
    register_class_function("dpoint", "disp", show_point);
    EXPECT_EQ("<point>\n", shown(o));
    unregister_class_function("dpoint", "disp");
    register_class_function("dpoint", "display", show_point);
    ak_test::Recorder rec;
    display(o);
    EXPECT_EQ("<point>\n", rec.printed);
    unregister_class_function("dpoint", "display");
}

TEST(Display, HeaderWithNameAndDescription) {
    Mm a("a", 1, 2);
    a.addr()[0] = 1, a.addr()[1] = 2;
    ak_test::Recorder rec;
    display(a);
    EXPECT_EQ("a (1x2)=2 double elements real (16 bytes) = \n1  2\n", rec.printed);
    rec.clear();
    display(TM("ab"));
    display(x_M);
    EXPECT_EQ("ans (1x2)=2 char elements  (16 bytes) = \nab\n", rec.printed);
    EXPECT_EQ(" (2x2)=4 sparse elements real (0 bytes)", get_whos_line(spzeros(Mm(2.0), Mm(2.0))));
    EXPECT_EQ(" (1x1)=1 cell elements real (92 bytes)", get_whos_line(cell(Mm(1.0))));

    rec.clear();
    celldisp((CL(7.0), "t"));
    EXPECT_EQ("ans{1,1}\n7\nans{1,2}\nt\n", rec.printed);
    EXPECT_ERROR(celldisp(Mm(5.0)), "=5 is not a cell array.");
}

TEST(Console, SmallPrinters) {
    ak_test::Recorder rec;
    smiley();
    usage(TM("f(x)"));
    puts(TM("p"));
    EXPECT_EQ("8-)\nUsage: f(x)\np\n", rec.printed);
    rec.clear();
    dump(Mm(3.0));
    EXPECT_EQ(0u, rec.printed.find("**dump of =3 this = "));
    EXPECT_NE(std::string::npos, rec.printed.find("nnz = 1 type = 1 classid = 0 class = double\n"));
}

TEST(Console, InputReadsThroughTheHandler) {
    ak_set_input_handler(reply);
    ak_test::Recorder rec(ak_test::Recorder::kPrint | ak_test::Recorder::kWarnings |
                          ak_test::Recorder::kErrors);
    reply_text = "some text";
    Mm t = input(TM("name?"), TM("s"));
    EXPECT_EQ("name?\n\n", rec.printed);
    EXPECT_TRUE(t.isstr());
    EXPECT_EQ(9, t.size());
    reply_text = "";
    EXPECT_EQ(0, input(TM("n?")).size());
    reply_text = "abc";
    input(TM("n?"));
    ASSERT_EQ(1u, rec.warnings.size());
    EXPECT_EQ("input: text is non-numeric, use input(...,'s')", rec.warnings[0]);
    reply_text = "ctrl_c_event";
    rec.errors.clear();
    input(TM("n?"), TM("s"));
    ASSERT_EQ(1u, rec.errors.size());
    EXPECT_EQ("Ctrl-C", rec.errors[0]);
    ak_set_input_handler(nullptr);
}

TEST(Console, PauseKeyTestAndClear) {
    using clock = std::chrono::steady_clock;
    pauseM(TM("off"));
    auto start = clock::now();
    pauseM(Mm(1000.0));
    EXPECT_LT(clock::now() - start, std::chrono::milliseconds(500));
    pauseM(TM("on"));
    start = clock::now();
    pauseM(Mm(30.0));
    EXPECT_GE(clock::now() - start, std::chrono::milliseconds(30));

    ak_set_kbhit_handler(key_after_three);
    {
        ak_test::Recorder rec;
        pauseM();
        EXPECT_EQ("\n", rec.printed);
    }
    EXPECT_EQ(3, key_calls);
    EXPECT_EQ('q', *kbhitM().addr());
    ak_set_kbhit_handler(nullptr);

    ak_set_clc_handler(count_clc);
    clc();
    EXPECT_EQ(1, clc_calls);
    ak_set_clc_handler(nullptr);
}
