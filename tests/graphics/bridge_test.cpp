// The library's side of the engine: the exact entry calls that set, get and the thin functions
// make, the record that crosses the border, and callbacks, against the recording engine.
#include <cstdint>

#include "graphics/graphics_internal.h"
#include "graphics/vocabulary.h"
#include "recording_engine.h"
#include "test_support.h"

using ak_test::RecordingEngine;
using ak_test::row;
using Log = std::vector<std::string>;

namespace {

Mm cellrow(std::initializer_list<const char*> items) {
    Mm c = ak_internal::new_cell(1, static_cast<int>(items.size()));
    int k = 0;
    for (const char* s : items) static_cast<Mm*>(c.pr)[k++] = TM(s);
    return c;
}

std::string text_of(const Mm& m) {
    char b[256];
    return Mstr(m, b, sizeof b);
}

}  // namespace

TEST(GraphicsBridge, StartUpIntroducesTheLibraryInOrder) {
    RecordingEngine rec;
    ak_internal::engine_connect(0);
    ak_internal::engine_disconnect();
    EXPECT_EQ(rec.log, (Log{"init 4510 0", "event handler", "error handler", "free handler", "event handler null",
                            "error handler null", "free handler null"}));
    // The connection left the recording engine in place: a table installed before start-up is kept.
    EXPECT_TRUE(ak_engine.qor_new_object("line", 3) == 1);
}

TEST(GraphicsBridge, RecordConversionKeepsShapeFlagAndElements) {
    ak_test::ErrorsThrow guard;
    int d3[3] = {2, 3, 4};
    Mm cube(0, 0, 0, 3, d3, ak_double);
    for (int k = 0; k < 24; ++k) cube.addr()[k] = k + 0.5;
    QorValue r = ak_internal::qor_record(cube);
    EXPECT_EQ(r.ndims, 3);
    EXPECT_EQ(r.dims[3], 1);
    EXPECT_EQ(r.size(), 24);
    EXPECT_EQ(r.data[23], 23.5);
    Mm back = ak_internal::matrix_of_record(&r);
    EXPECT_EQ(back.ndims, 3);
    EXPECT_EQ(back.dims[2], 4);
    EXPECT_EQ(back.addr()[7], 7.5);
    EXPECT_FALSE(back.flags.str);
    r.free();

    int d4[4] = {1, 2, 1, 3};
    Mm four(0, 0, 0, 4, d4, ak_double);
    QorValue r4 = ak_internal::qor_record(four);
    EXPECT_EQ(r4.size(), 6);
    EXPECT_EQ(ak_internal::matrix_of_record(&r4).size(), 6);
    r4.free();

    QorValue s = ak_internal::qor_record(TM("ab"));
    EXPECT_EQ(s.str, 1);
    Mm text = ak_internal::matrix_of_record(&s);
    EXPECT_TRUE(text.flags.str);
    EXPECT_EQ(text_of(text), "ab");
    s.free();

    QorValue e = ak_internal::qor_record(Mm(0, 0, 0, 0, 3, ak_double));
    EXPECT_EQ(e.size(), 0);
    EXPECT_EQ(e.data, nullptr);
    EXPECT_EQ(ak_internal::matrix_of_record(&e).size(), 0);
    e.free();
    EXPECT_EQ(e.ndims, -1);
    // A record whose data was released converts to an empty matrix.
    EXPECT_EQ(ak_internal::matrix_of_record(&e).size(), 0);
}

TEST(GraphicsBridge, SetWritesEachHandleInOrderWithOneValue) {
    ak_test::ErrorsThrow guard;
    RecordingEngine rec;
    set(row({4, 5, 6}), TM("LineWidth"), Mm(2.0));
    set(Mm(0, 0, 0, 0, 0, ak_double), TM("Color"), TM("r"));
    set(Mm(4.0), TM(""), Mm(1.0));
    set(Mm(4.0), "Color", TM("r"));
    EXPECT_EQ(rec.log, (Log{"set 4 LineWidth 1x1 [2]", "set 5 LineWidth 1x1 [2]", "set 6 LineWidth 1x1 [2]",
                            "set 4 Color 1x1 'r'"}));
}

TEST(GraphicsBridge, StringAndCDataWritesRecordTheirForm) {
    ak_test::ErrorsThrow guard;
    RecordingEngine rec;
    set(Mm(7.0), TM("String"), cellrow({"a", "bb"}));
    set(Mm(7.0), TM("CData"), ak_test::bytes({0, 255}));
    set(Mm(7.0), TM("XData"), mlogical(row({1, 0})));
    EXPECT_EQ(rec.log, (Log{"set 7 CellString 1x1 [1]", "set 7 String 2x2 'ab b'", "set 7 CDataIsDouble 1x1 [0]",
                            "set 7 CData 1x2 [0 1]", "set 7 XData 1x2 [1 0]"}));
    rec.log.clear();
    Mm s = mstruct(ak_internal::new_cell(0, 0));
    ak_test::Recorder out;
    EXPECT_ERROR(set(Mm(7.0), TM("Color"), s), "set(h,name,value): can only accept value of type double or strings cell");
    EXPECT_EQ(rec.log, Log{});
}

TEST(GraphicsBridge, UserDataKeepsOneCopyPerHandleAndFreesTheOld) {
    ak_test::ErrorsThrow guard;
    RecordingEngine rec;
    rec.remember_writes = true;
    EXPECT_EQ(get(Mm(3.0), TM("UserData")).size(), 0);  // nothing stored yet
    Mm value = row({1, 2, 3});
    set(row({3, 4}), TM("UserData"), value);
    EXPECT_EQ(rec.log, (Log{"get 3 UserData", "get 3 UserData", "set 3 UserData 1x1", "get 4 UserData",
                            "set 4 UserData 1x1"}));
    // Both handles were written through one answer slot here, so the second copy is the one read.
    Mm got = get(Mm(4.0), TM("UserData"));
    ASSERT_EQ(got.size(), 3);
    EXPECT_EQ(got.addr()[2], 3.0);
    // Setting again frees the copy held, whatever the new value; the engine frees the last one.
    set(Mm(4.0), TM("UserData"), TM("x"));
    Mm last = get(Mm(4.0), TM("UserData"));
    EXPECT_EQ(text_of(last), "x");
    QorValue* r = ak_engine.qor_get(4, "UserData");
    ak_internal::engine_free(reinterpret_cast<Mm*>(static_cast<std::uintptr_t>(r->data[0])));
}

TEST(GraphicsBridge, ListFormsOfSet) {
    ak_test::ErrorsThrow guard;
    RecordingEngine rec;
    Mm h(2.0);
    set(h, Mm((CL("Color"), "r", "LineWidth", 2.0)));
    set(h, Mm((CL("while"))));
    set(h, Mm((CL("k"))));
    EXPECT_EQ(rec.log, (Log{"set 2 Color 1x1 'r'", "set 2 LineWidth 1x1 [2]", "set 2 Color 1x5 'while'",
                            "set 2 Color 1x1 'k'"}));
    rec.log.clear();
    EXPECT_ERROR(set(h, Mm((CL("white")))), "set: cannot parse in position 1");
    EXPECT_ERROR(set(h, Mm((CL("Tag"), "a", 3.0))), "set: cannot parse in position 3");
    EXPECT_EQ(rec.log, (Log{"set 2 Tag 1x1 'a'"}));  // the pair before the failure stays written
    rec.log.clear();

    Mm names = cellrow({"Tag", "Visible"});
    set(h, Mm((CL(names), cellrow({"t", "off"}))));
    EXPECT_EQ(rec.log, (Log{"set 2 Tag 1x1 't'", "set 2 Visible 1x3 'off'"}));
    rec.log.clear();
    // One row of values per handle.
    Mm per_handle = ak_internal::new_cell(2, 2);
    for (int k = 0; k < 4; ++k) static_cast<Mm*>(per_handle.pr)[k] = Mm(static_cast<double>(k));
    set(row({8, 9}), Mm((CL(names), per_handle)));
    EXPECT_EQ(rec.log, (Log{"set 8 Tag 1x1 [0]", "set 8 Visible 1x1 [2]", "set 9 Tag 1x1 [1]", "set 9 Visible 1x1 [3]"}));
    EXPECT_ERROR(set(h, Mm((CL(names), 1.0))), "set: position 1: if pn is a cell, pv must be a cell as well.");
    EXPECT_ERROR(set(h, Mm((CL(names), cellrow({"a", "b", "c"})))),
                 "set: position 1: use cell1==cell2 or size(cell2)==[len(h) len(cell1)]");
    rec.log.clear();

    Mm s = mstruct(Mm((CL("Tag"), "z", "LineWidth", 3.0)));
    set(h, Mm(CL(s)));
    EXPECT_EQ(rec.log, (Log{"set 2 Tag 1x1 'z'", "set 2 LineWidth 1x1 [3]"}));
}

TEST(GraphicsBridge, GetFormsAndSpecialProperties) {
    ak_test::ErrorsThrow guard;
    RecordingEngine rec;
    rec.answer("Position", row({1, 2, 3, 4}));
    rec.answer("Tag", TM("ab"));
    Mm p = get(Mm(5.0), TM("Position"));
    EXPECT_EQ(p.cols(), 4);
    EXPECT_EQ(p.addr()[3], 4.0);
    Mm both = get(row({5, 6}), TM("Tag"));
    ASSERT_TRUE(iscell(both));
    EXPECT_EQ(both.rows(), 2);
    EXPECT_EQ(both.cols(), 1);
    EXPECT_EQ(text_of(ak_internal::cell_at(both, 1)), "ab");
    Mm grid = get(row({5, 6}), cellrow({"Tag", "Position", "Tag"}));
    EXPECT_EQ(grid.rows(), 2);
    EXPECT_EQ(grid.cols(), 3);
    EXPECT_EQ(ak_internal::cell_at(grid, 2).cols(), 4);  // (1,2)

    rec.answer("String", TM("ab"));
    rec.answer("CellString", Mm(1.0));
    EXPECT_TRUE(iscell(get(Mm(5.0), TM("String"))));
    rec.answer("CellString", Mm(0.0));
    EXPECT_TRUE(get(Mm(5.0), TM("String")).flags.str);

    rec.answer("CData", row({1, 256}));
    rec.answer("CDataIsDouble", Mm(1.0));
    Mm cd = get(Mm(5.0), TM("CData"));
    EXPECT_EQ(cd.addr()[0], 0.0);
    EXPECT_EQ(cd.addr()[1], 1.0);
    rec.answer("CDataIsDouble", Mm(0, 0, 0, 0, 0, ak_double));
    EXPECT_EQ(get(Mm(5.0), TM("CData")).flags.type, ak_uchar);
    // A true-colour image keeps the engine's doubles.
    int d[3] = {1, 1, 3};
    Mm rgb(0, 0, 0, 3, d, ak_double);
    rgb.addr()[0] = 0.5;
    rec.answer("CData", rgb);
    Mm got = get(Mm(5.0), TM("CData"));
    EXPECT_EQ(got.flags.type, ak_double);
    EXPECT_EQ(got.addr()[0], 0.5);
}

TEST(GraphicsBridge, ListingAsksForTheNamesThenReadsEachSorted) {
    ak_test::ErrorsThrow guard;
    RecordingEngine rec;
    rec.answer("PropertyNames", TM("Tag Color  Box"));
    rec.answer("Color", row({1, 0, 0}));
    Mm s = set(Mm(3.0));
    EXPECT_EQ(rec.log, (Log{"set 3 PropertyNames 1x1 [1]", "get 3 PropertyNames", "get 3 Box", "get 3 Color",
                            "get 3 Tag"}));
    ASSERT_TRUE(isstruct(s));
    EXPECT_EQ(s.nfields, 3);
    EXPECT_STREQ(s.fields[0], "Box");
    EXPECT_EQ(getfield(s, TM("Color")).cols(), 3);
    EXPECT_EQ(get(Mm(3.0)).nfields, 3);
}

TEST(GraphicsBridge, ThinFunctionsCallTheirEntries) {
    ak_test::ErrorsThrow guard;
    RecordingEngine rec;
    rec.next_handle = 3;  // handles 1 and 2 are alive
    Mm shape(0, 0, 0, 2, 2, ak_double);
    shape.addr()[0] = 1, shape.addr()[1] = 7, shape.addr()[2] = 2, shape.addr()[3] = 0;
    Mm alive = ishandle(shape);
    EXPECT_EQ(alive.rows(), 2);
    EXPECT_EQ(alive.cols(), 2);
    EXPECT_EQ(alive.addr()[0], 1.0);
    EXPECT_EQ(alive.addr()[1], 0.0);
    EXPECT_EQ(alive.addr()[2], 1.0);
    EXPECT_EQ(ishghandle(Mm(0, 0, 0, 0, 0, ak_double)).size(), 0);
    EXPECT_EQ(rec.log, (Log{"is_handle 1", "is_handle 7", "is_handle 2", "is_handle 0"}));
    rec.log.clear();

    deleteobj(row({2, 1}));
    consolemode(Mm(2.9));
    waitfor(row({6, 7}));
    rec.presses = {1, 0};
    EXPECT_EQ(waitforbuttonpress().r(), 1.0);
    EXPECT_EQ(checkforbuttonpress().r(), 0.0);
    int window = 0;
    setapplicationhandle(&window);
    setapplicationkeyhandle(nullptr);
    guiexit(Mm(3.0));
    EXPECT_EQ(rec.log, (Log{"set 2 Kill 1x1 [1]", "set 1 Kill 1x1 [1]", "console_mode 2", "wait_handle 6",
                            "wait_button 0", "wait_button 1", "app_window set", "app_key_window null",
                            "current_figure", "exit 3"}));
    EXPECT_ERROR(waitfor(Mm(1.0), TM("Tag")), "waitfor(h,propname) is not supported");
    EXPECT_ERROR(waitfor(Mm(1.0), TM("Tag"), TM("x")), "waitfor(h,propname,propvalue) is not supported");
    rec.log.clear();
    findfigs();
    EXPECT_EQ(rec.log, (Log{"get 0 Children"}));  // no children: nothing to move
    rec.answer("Children", row({4, 5}));
    rec.log.clear();
    findfigs();
    EXPECT_EQ(rec.log, (Log{"get 0 Children", "set 4 MoveIntoScreen 1x1 [0]", "set 5 MoveIntoScreen 1x1 [0]"}));
}

TEST(GraphicsBridge, CallbackObjectClimbsAtMostThreeLevels) {
    ak_test::ErrorsThrow guard;
    RecordingEngine rec;
    EXPECT_EQ(gcbf().size(), 0);  // outside a callback
    rec.answer("CallbackObject", Mm(9.0));
    rec.answer("Parent", Mm(0.0));
    EXPECT_EQ(gcbf().r(), 9.0);  // a figure: its parent is the root
    rec.answer("Parent", Mm(8.0));
    rec.log.clear();
    Mm o, f;
    EXPECT_EQ(gcbo(i_o, o, f).r(), 9.0);
    EXPECT_EQ(f.r(), 8.0);  // every level answers 8 here, so the walk stops after two steps up
    EXPECT_EQ(rec.log, (Log{"get 0 CallbackObject", "get 0 CallbackObject", "get 9 Parent", "get 8 Parent"}));
}

TEST(GraphicsBridge, FindobjWalksBreadthFirstAndMatchesPairs) {
    ak_test::ErrorsThrow guard;
    RecordingEngine rec;
    rec.answer("Tag", TM("Status"));
    // A string first starts at the root; the root has no children here, so only it is tested.
    Mm found = findobj(Mm((CL("Tag"), "STATUS")));
    EXPECT_EQ(found.r(), 0.0);
    EXPECT_EQ(rec.log, (Log{"get 0 Children", "get 0 Tag"}));
    rec.log.clear();
    EXPECT_EQ(findobj(Mm((CL(row({3, 4})), "flat", "Tag", "x"))).size(), 0);
    EXPECT_EQ(rec.log, (Log{"get 3 Tag", "get 4 Tag"}));
    rec.log.clear();
    rec.answer("Tag", row({1, 2}));
    EXPECT_EQ(findobj(Mm((CL(Mm(3.0)), "flat", "Tag", row({1, 2})))).r(), 3.0);
    EXPECT_EQ(findobj(Mm((CL(Mm(3.0)), "flat", "Tag", row({1, 3})))).size(), 0);
    // setstatus writes the String of what it found.
    rec.answer("Tag", TM("Status"));
    rec.log.clear();
    setstatus(Mm(0.0), TM("ready"));
    EXPECT_EQ(rec.log.back(), "set 0 String 1x5 'ready'");
}

namespace {
std::vector<std::string> callbacks_seen;
Mm recording_callback(Mm text) {
    callbacks_seen.push_back(text_of(text));
    if (text_of(text) == "fail") error("callback failed");
    return x_M;
}
}  // namespace

TEST(GraphicsBridge, EventsReachTheCallbackHookAndFailuresStayInside) {
    ak_callback_func_t saved = callback_func;
    callback_func = recording_callback;
    callbacks_seen.clear();
    QorValue r = ak_internal::qor_record(TM("disp(1)"));
    ak_internal::graphics_event(&r);
    r.free();
    QorValue empty = ak_internal::qor_record(TM(""));
    ak_internal::graphics_event(&empty);
    empty.free();
    {
        ak_test::ErrorsThrow guard;
        ak_test::Recorder out;
        int depth = ak_error_stack.depth;
        QorValue bad = ak_internal::qor_record(TM("fail"));
        EXPECT_NO_THROW(ak_internal::graphics_event(&bad));
        bad.free();
        EXPECT_EQ(ak_error_stack.depth, depth);
        EXPECT_NE(out.printed.find("callback failed"), std::string::npos);
    }
    callback_func = saved;
    EXPECT_EQ(callbacks_seen, (std::vector<std::string>{"disp(1)", "fail"}));
}

TEST(GraphicsBridge, PropertyListHelpers) {
    ak_test::ErrorsThrow guard;
    Mm list((CL(row({1, 2})), row({3, 4}), "Color", "r", "LineWidth", 2.0));
    EXPECT_EQ(count_leading_data(list), 2);
    EXPECT_EQ(count_leading_data(Mm((CL(1.0), 2.0))), 2);
    EXPECT_EQ(prop_list_value(list, 3, TM("linewidth"), TM("")).r(), 2.0);
    EXPECT_EQ(text_of(prop_list_value(list, 3, TM("Marker"), TM("o"))), "o");
    // A single letter is a colour, answered under the name Color.
    Mm letter((CL("g"), "Tag", "t"));
    EXPECT_EQ(text_of(prop_list_value(letter, 1, TM("Color"), TM(""))), "g");
    EXPECT_EQ(text_of(prop_list_value(letter, 1, TM("Tag"), TM(""))), "t");
    Mm s = mstruct(Mm((CL("Marker"), "x")));
    EXPECT_EQ(text_of(prop_list_value(Mm(CL(s)), 1, TM("marker"), TM(""))), "x");
    Mm names = cellrow({"A", "B"});
    EXPECT_EQ(text_of(prop_list_value(Mm((CL(names), cellrow({"1", "2"}))), 1, TM("b"), TM(""))), "2");
    EXPECT_ERROR(prop_list_value(Mm((CL(names), 1.0)), 1, TM("b"), TM("")),
                 "set(h,pn,pv): if pn is a cell, pv must be a cell as well.");
    EXPECT_ERROR(prop_list_value(Mm((CL(names), cellrow({"1"}))), 1, TM("b"), TM("")),
                 "findpropvalue: got two cells, different sizes");
    EXPECT_ERROR(prop_list_value(Mm((CL("Tag"))), 1, TM("b"), TM("")), "set: cannot parse in position 1");

    Mm red = parse_color(TM("Red"));
    EXPECT_EQ(red.cols(), 3);
    EXPECT_EQ(red.addr()[0], 1.0);
    EXPECT_EQ(red.addr()[1], 0.0);
    EXPECT_EQ(parse_color(TM("w")).addr()[2], 1.0);
    EXPECT_EQ(parse_color(TM("none")).addr()[0], 0.0);
    EXPECT_EQ(parse_color(row({0.1, 0.2, 0.3})).addr()[1], 0.2);
    EXPECT_ERROR(parse_color(TM("mauve")), "'mauve' is illegal color");

    RecordingEngine rec;
    apply_prop_list(Mm(5.0), list, 3);
    apply_prop_list(Mm(5.0), list, 7);
    EXPECT_EQ(rec.log, (Log{"set 5 Color 1x1 'r'", "set 5 LineWidth 1x1 [2]"}));
    rec.log.clear();
    setuprop(Mm(5.0), TM("Mine"), row({1, 2}));
    clruprop(Mm(5.0), TM("Mine"));
    EXPECT_EQ(rec.log, (Log{"set 5 Mine 1x2 [1 2]", "set 5 Mine 0x0 []"}));
}

TEST(GraphicsBridge, VocabularyHoldsEveryWordOnce) {
    EXPECT_EQ(static_cast<int>(ak_word_count), 389);
    EXPECT_EQ(text_of(ak_word(akp_Color)), "Color");
    EXPECT_EQ(text_of(ak_word(akp_n2position)), "2position");
    EXPECT_EQ(text_of(ak_word(akw_reset)), "reset");
    EXPECT_EQ(text_of(ak_word(akp_Reset)), "Reset");
    EXPECT_EQ(ak_word(akw_empty_text).size(), 0);
    EXPECT_TRUE(ak_word(akw_on).flags.str);
    EXPECT_EQ(&ak_word(akp_Tag), &ak_word(akp_Tag));  // made once
}
