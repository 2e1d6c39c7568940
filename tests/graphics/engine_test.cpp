// Our engine behind the table: the object tree, defaults and types, deletion, search, invalid
// handles and the event path, through set and get as a program uses them.
#include "graphics/graphics_internal.h"
#include "test_support.h"

using ak_test::row;

namespace {

std::string text_of(const Mm& m) {
    char b[512];
    return Mstr(m, b, sizeof b);
}

// Each test starts with no figures and leaves none.
class Engine : public ::testing::Test {
  protected:
    void SetUp() override { clear(); }
    void TearDown() override { clear(); }
    static void clear() {
        Mm figs = get(Mm(0.0), "Children");
        if (figs.size() > 0) deleteobj(figs);
    }
    ak_test::ErrorsThrow guard;
};

}  // namespace

TEST_F(Engine, IsLoadedAtStartUp) {
    EXPECT_NE(ak_engine.qor_new_object, ak_null_engine().qor_new_object);
    EXPECT_LT(ak_engine.qor_current_figure(), 0);
}

TEST_F(Engine, NewObjectsHaveTheDefaultsOfTheirKind) {
    Mm f = ak_new_object("Figure", Mm(3.0));
    EXPECT_EQ(f.r(), 3.0);
    EXPECT_EQ(text_of(get(f, "Type")), "figure");
    EXPECT_EQ(get(f, "Position").addr()[2], 560.0);
    Mm map = get(f, "Colormap");
    EXPECT_EQ(map.rows(), 64);
    EXPECT_EQ(map.cols(), 3);
    Mm ax = ak_new_object("Axes", f);
    EXPECT_EQ(text_of(get(ax, "Type")), "axes");
    EXPECT_EQ(text_of(get(ax, "XScale")), "linear");
    EXPECT_EQ(get(ax, "View").addr()[1], 90.0);
    EXPECT_EQ(text_of(get(get(ax, "Title"), "Type")), "text");
    Mm l = ak_new_object("line", ax);
    EXPECT_EQ(text_of(get(l, "LineStyle")), "-");
    EXPECT_EQ(text_of(get(l, "Marker")), "none");
    EXPECT_EQ(get(l, "LineWidth").r(), 0.5);
    EXPECT_EQ(get(l, "XData").size(), 0);
    Mm b = ak_new_object("pushbutton", f);
    EXPECT_EQ(text_of(get(b, "Type")), "uicontrol");
    EXPECT_EQ(text_of(get(b, "Style")), "pushbutton");
    EXPECT_EQ(text_of(get(ak_new_object("text", f), "Style")), "text");  // a text control in a figure
    EXPECT_EQ(text_of(get(ak_new_object("menuitem", f), "Type")), "uimenu");
    EXPECT_EQ(text_of(get(ak_new_object("contextmenu", f), "Type")), "uicontextmenu");
    // Every listed property of every kind can be read.
    for (const char* kind : {"line", "patch", "surface", "text", "image"}) {
        Mm o = ak_new_object(kind, ax);
        Mm all = get(o);
        EXPECT_GT(all.nfields, 15) << kind;
    }
    EXPECT_GT(get(Mm(0.0)).nfields, 15);
    // The next figure without a number takes the lowest free one.
    EXPECT_EQ(ak_new_object("Figure", Mm(-1.0)).r(), 1.0);
    EXPECT_EQ(ak_engine.qor_current_figure(), 1.0);
}

TEST_F(Engine, SetChecksTypesAndConvertsColours) {
    Mm ax = ak_new_object("axes", Mm(-1.0));  // makes a figure and an axes
    Mm l = ak_new_object("line", ax);
    set(l, "Color", TM("red"));
    Mm c = get(l, "Color");
    EXPECT_EQ(c.cols(), 3);
    EXPECT_EQ(c.addr()[0], 1.0);
    set(l, "LineStyle", TM("--"));
    set(l, "Marker", TM("SQUARE"));
    EXPECT_EQ(text_of(get(l, "Marker")), "square");
    EXPECT_ERROR(set(l, "LineWidth", TM("thick")), "set: the line property LineWidth must be a number");
    EXPECT_ERROR(set(l, "Color", row({2, 0, 0})),
                 "set: the line property Color must be an RGB triple of values from 0 to 1 or a colour name");
    EXPECT_ERROR(set(l, "LineStyle", TM("~")), "set: the line property LineStyle must be one of: - -- : -. none");
    EXPECT_ERROR(set(l, "XData", TM("abc")), "set: the line property XData must be numeric");
    EXPECT_ERROR(set(l, "Type", TM("patch")), "set: the line property Type must be left to the engine (it is read-only)");
    EXPECT_ERROR(get(l, "NoSuchThing"), "get: a line has no property 'NoSuchThing'");
    EXPECT_EQ(text_of(get(l, "LineStyle")), "--");  // a refused write changes nothing
    // A name the kind does not know is the program's own property.
    setuprop(l, TM("MyNote"), TM("kept"));
    EXPECT_EQ(text_of(getuprop(l, TM("mynote"))), "kept");
    // Limits set by hand switch their mode to manual; automatic ones follow the data.
    set(l, "XData", row({1, 2, 3}));
    set(l, "YData", row({10, 30, 20}));
    Mm xl = get(ax, "XLim"), yl = get(ax, "YLim");
    EXPECT_EQ(xl.addr()[0], 1.0);
    EXPECT_EQ(xl.addr()[1], 3.0);
    EXPECT_EQ(yl.addr()[0], 10.0);
    EXPECT_EQ(yl.addr()[1], 30.0);
    set(ax, "YLim", row({0, 100}));
    EXPECT_EQ(text_of(get(ax, "YLimMode")), "manual");
    EXPECT_EQ(get(ax, "YLim").addr()[1], 100.0);
    Mm f = get(ax, "Parent");
    EXPECT_ERROR(set(f, "Colormap", row({1, 0})), "set: the figure property Colormap must be an n-by-3 matrix of values from 0 to 1");
}

TEST_F(Engine, ParentChildLinksAndDeletion) {
    Mm f = ak_new_object("Figure", Mm(1.0));
    Mm a1 = ak_new_object("Axes", f), a2 = ak_new_object("Axes", f);
    Mm l = ak_new_object("line", a1), s = ak_new_object("surface", a1);
    Mm kids = get(f, "Children");
    ASSERT_EQ(kids.size(), 2);
    EXPECT_EQ(kids.addr()[0], a2.r());  // newest first
    EXPECT_EQ(kids.addr()[1], a1.r());
    EXPECT_EQ(get(l, "Parent").r(), a1.r());
    EXPECT_EQ(get(a1, "Parent").r(), 1.0);
    EXPECT_EQ(get(Mm(0.0), "Parent").size(), 0);
    EXPECT_EQ(get(get(f, "CurrentAxes"), "Type").size(), 4);
    EXPECT_EQ(get(f, "CurrentAxes").r(), a2.r());
    // Labels belong to the axes but are not among its children.
    EXPECT_EQ(get(a1, "Children").size(), 2);
    // Moving the line to the other axes.
    set(l, "Parent", a2);
    EXPECT_EQ(get(a2, "Children").r(), l.r());
    EXPECT_ERROR(set(l, "Parent", f), "set: the line property Parent must be an object that can hold it");
    Mm title = get(a1, "Title");
    deleteobj(f);
    Mm gone = ishandle(Mm((BR(f), a1, a2, l, s, title)));
    for (int k = 0; k < 6; ++k) EXPECT_EQ(gone.addr()[k], 0.0) << k;
    EXPECT_LT(ak_engine.qor_current_figure(), 0);
    EXPECT_EQ(get(Mm(0.0), "CurrentFigure").size(), 0);
}

TEST_F(Engine, FindobjByProperty) {
    Mm f = ak_new_object("Figure", Mm(2.0));
    Mm ax = ak_new_object("Axes", f);
    Mm l1 = ak_new_object("line", ax), l2 = ak_new_object("line", ax), p = ak_new_object("patch", ax);
    set(l1, "Tag", TM("data"));
    set(p, "Tag", TM("DATA"));
    Mm found = findobj(Mm((CL("Tag"), "data")));
    ASSERT_EQ(found.size(), 2);  // breadth first: the newer patch comes before the line
    EXPECT_EQ(found.addr()[0], p.r());
    EXPECT_EQ(found.addr()[1], l1.r());
    EXPECT_EQ(findobj(Mm((CL(f), "Type", "line"))).size(), 2);
    EXPECT_EQ(findobj(Mm((CL(f), "flat", "Type", "line"))).size(), 0);
    EXPECT_EQ(findall(Mm((CL(ax), "Type", "line", "Tag", "data"))).r(), l1.r());
    Mm everything = findobj();
    EXPECT_EQ(everything.size(), 6);  // root, figure, axes, three objects
    EXPECT_EQ(allchild(ax).size(), 3);
    (void)l2;
}

TEST_F(Engine, InvalidHandlesAreReportedWithoutHarm) {
    EXPECT_ERROR(get(Mm(12345.0), "Type"), "get: 12345 is not a valid handle");
    EXPECT_ERROR(set(Mm(12345.0), "Color", TM("r")), "set: 12345 is not a valid handle");
    EXPECT_ERROR(ak_new_object("line", Mm(12345.0)), "line: 12345 is not a valid parent");
    EXPECT_ERROR(ak_new_object("balloon", Mm(-1.0)), "The graphics engine cannot make an object of kind 'balloon'");
    EXPECT_EQ(ishandle(Mm(12345.0)).r(), 0.0);
    {
        // With a handler that returns, the engine goes on with an empty answer.
        unsigned flags = ak_default_error_flags;
        ak_default_error_flags &= ~16u;
        ak_test::Recorder rec(ak_test::Recorder::kErrors);
        EXPECT_EQ(get(Mm(12345.0), "Type").size(), 0);
        ak_default_error_flags = flags;
        ASSERT_EQ(rec.errors.size(), 1u);
    }
    deleteobj(Mm(12345.0));  // nothing to delete, no report
    Mm f = ak_new_object("Figure", Mm(1.0));
    deleteobj(f);
    EXPECT_ERROR(get(f, "Type"), "get: 1 is not a valid handle");
}

namespace {
std::vector<std::string> seen;
std::vector<double> seen_object;
Mm remember(Mm text) {
    seen.push_back(text_of(text));
    seen_object.push_back(gcbo().size() ? gcbo().r() : -1);
    return x_M;
}
}  // namespace

TEST_F(Engine, EventsRunCallbacksWithTheirObject) {
    ak_callback_func_t saved = callback_func;
    callback_func = remember;
    seen.clear();
    seen_object.clear();
    Mm f = ak_new_object("Figure", Mm(1.0));
    Mm b = ak_new_object("pushbutton", f);
    set(b, "Callback", TM("pressed"));
    set(b, "DeleteFcn", TM("going"));
    set(b, "Call", Mm(1.0));  // what a click does
    EXPECT_EQ(gco(f).r(), b.r());
    EXPECT_EQ(gcbo().size(), 0);  // only during the callback
    Mm ax = ak_new_object("Axes", f);
    set(ax, "ButtonDownFcn", TM("axes clicked"));
    set(ax, "Call", Mm(1.0));
    deleteobj(f);
    callback_func = saved;
    EXPECT_EQ(seen, (std::vector<std::string>{"pressed", "axes clicked", "going"}));
    EXPECT_EQ(seen_object, (std::vector<double>{b.r(), ax.r(), b.r()}));
}

TEST_F(Engine, UserDataLivesWithItsObject) {
    Mm f = ak_new_object("Figure", Mm(1.0));
    Mm ax = ak_new_object("Axes", f);
    set(Mm((BR(f), ax)), "UserData", Mm((CL(1.0), "two")));
    Mm u = get(ax, "UserData");
    EXPECT_TRUE(iscell(u));
    EXPECT_EQ(u.size(), 2);
    // The engine hands the copies back when the objects die (a leak here shows under the sanitizer).
    deleteobj(f);
}

TEST_F(Engine, StringsAndCellStringsRoundTrip) {
    Mm f = ak_new_object("Figure", Mm(1.0));
    Mm b = ak_new_object("listbox", f);
    Mm items((CL("one"), "three"));
    set(b, "String", items);
    Mm back = get(b, "String");
    ASSERT_TRUE(iscell(back));
    EXPECT_EQ(text_of(ak_internal::cell_at(back, 1)), "three");
    set(b, "String", TM("plain"));
    EXPECT_EQ(text_of(get(b, "String")), "plain");
}
