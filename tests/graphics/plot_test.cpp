// The library's side of figures, axes and plots against the recording engine: which objects each
// argument form makes and what it writes to them, and every message.
#include <algorithm>
#include <cmath>
#include <string>

#include "arklib/figures.h"
#include "arklib/plots.h"
#include "graphics/graphics_internal.h"
#include "recording_engine.h"
#include "test_support.h"

using ak_test::RecordingEngine;
using ak_test::row;
using ak_internal::list_of;
using Log = std::vector<std::string>;

namespace {

// A recording engine with figure 40 current and axes 50 current in it; new objects get handles
// from 100 on.
class PlotLog : public ::testing::Test {
  protected:
    void SetUp() override {
        rec.figure = 40;
        rec.next_handle = 100;
        rec.answer("CurrentAxes", Mm(50.0));
        rec.answer("NextPlot", TM("add"));
    }
    void TearDown() override { embedded_axes = Mm(); }
    // The logged lines that contain `needle`, in order.
    Log lines(const std::string& needle) const {
        Log out;
        for (auto& s : rec.log)
            if (s.find(needle) != std::string::npos) out.push_back(s);
        return out;
    }
    // The values written to property `name`, one per write, as logged after the size.
    Log writes(const std::string& name) const {
        Log out;
        for (auto& s : lines(" " + name + " ")) out.push_back(s.substr(s.find(' ', s.find(name) + name.size() + 1) + 1));
        return out;
    }
    // The value of the last write of `name`; empty when there was none.
    std::string last(const std::string& name) const {
        Log w = writes(name);
        return w.empty() ? std::string() : w.back();
    }
    RecordingEngine rec;
    ak_test::ErrorsThrow guard;
};

Mm column(std::initializer_list<double> v) { return transpose(row(v)); }

Mm matrix(int rows, int cols, double start = 1) {
    Mm m(0, 0, 0, rows, cols, ak_double);
    for (int k = 0; k < rows * cols; ++k) m.addr()[k] = start + k;
    return m;
}

}  // namespace

// ---- figures and axes -----------------------------------------------------------------------------------------
// The recording engine, told of each new figure so that it becomes the current one.
RecordingEngine* figure_keeper = nullptr;
double (*recorded_new_object)(const char*, int) = nullptr;

double new_object_keeping_figure(const char* kind, int parent) {
    double h = recorded_new_object(kind, parent);
    if (std::string(kind) == "Figure") figure_keeper->figure = h;
    return h;
}

TEST(FigureAxes, GcaWithNoFigureMakesAFigureAndAnAxes) {
    RecordingEngine rec;
    ak_test::ErrorsThrow guard;
    rec.next_handle = 1;
    rec.remember_writes = true;
    figure_keeper = &rec;
    ak_engine_table t = ak_engine;
    recorded_new_object = t.qor_new_object;
    t.qor_new_object = new_object_keeping_figure;
    ak_engine_install(t);
    gca();
    auto first = [&](const std::string& s) { return std::find(rec.log.begin(), rec.log.end(), s) - rec.log.begin(); };
    ASSERT_LT(first("new Figure -1"), static_cast<long>(rec.log.size()));
    ASSERT_LT(first("new Axes -1"), static_cast<long>(rec.log.size()));
    EXPECT_LT(first("new Figure -1"), first("new Axes -1"));
    // The new figure is set up before anything else is made in it.
    EXPECT_LT(first("set 1 Units 1x6 'pixels'"), first("new Axes -1"));
}

TEST_F(PlotLog, SubplotPlacesAxesInTheGridAndReusesAMatchingOne) {
    subplot(Mm(2.0), Mm(2.0), Mm(3.0));
    // The position is written on making the axes, and again from its property list.
    Log pos = lines("Position 1x4");
    ASSERT_EQ(pos.size(), 2u);
    EXPECT_NE(pos[0].find("[0.0125 0.0125 0.475 0.475]"), std::string::npos) << pos[0];
    EXPECT_EQ(lines("new Axes").size(), 1u);

    // 111 makes no axes; 221 with an axes already there selects it.
    rec.log.clear();
    subplot(Mm(111.0));
    EXPECT_TRUE(lines("new Axes").empty());
    rec.answer("Children", Mm(77.0));
    rec.answer("Type", TM("axes"));
    rec.answer("Units", TM("normalized"));
    rec.answer("Position", row({0.0125, 0.5125, 0.475, 0.475}));
    rec.log.clear();
    subplot(Mm(221.0));
    EXPECT_TRUE(lines("new Axes").empty());
    EXPECT_EQ(lines("set 40 CurrentAxes 1x1 [77]").size(), 1u);
    // 1,1,1 overlaps it and is elsewhere: it is killed and a new axes made.
    rec.log.clear();
    subplot();
    EXPECT_EQ(lines("set 77 Kill").size(), 1u);
    EXPECT_EQ(lines("new Axes").size(), 1u);
    EXPECT_ERROR(subplot(TM("position"), row({0, 0, 1})),
                 "subplot('position',pos): pos should be [left botttom width height], in (0..1)");
}

TEST_F(PlotLog, HoldGridViewAxisAndTheirMessages) {
    hold();
    EXPECT_EQ(last("NextPlot"), "'replace'");
    rec.answer("NextPlot", TM("replace"));
    hold();
    EXPECT_EQ(last("NextPlot"), "'Add'");
    EXPECT_EQ(ishold().r(), 0.0);
    EXPECT_ERROR(hold(TM("maybe")), "Hold: unknown argument");
    grid(TM("ON"));
    EXPECT_EQ(last("ZGrid"), "'on'");
    EXPECT_ERROR(grid(TM("x")), "Grid: unknown argument");

    view(Mm(3.5));
    EXPECT_EQ(last("View"), "[3.5]");
    EXPECT_ERROR(view(Mm(1.0)), "view(a): a must be 2,2.5 or 3");
    EXPECT_ERROR(view(row({1, 2, 3, 4})), "view: parameter must have 1,2 or 3 elements");
    view(row({0, -1, 0}));
    EXPECT_EQ(last("View"), "[0 0]");

    axis(row({0, 1, -2, 2}));
    EXPECT_EQ(last("XLim"), "[0 1]");
    EXPECT_EQ(last("YLim"), "[-2 2]");
    EXPECT_TRUE(writes("ZLim").empty());
    axis((CL("ij"), "equal"));
    EXPECT_EQ(last("YDir"), "'inverted'");
    EXPECT_EQ(last("square"), "'on'");
    EXPECT_ERROR(axis(TM("bogus")), "axis: unknown argument");
    datetick(TM("y"), Mm(99.0));
    EXPECT_EQ(last("yDate"), "[99]");
    datetick(TM("x"), Mm(2.0));
    EXPECT_EQ(last("xDate"), "'mm/dd/yy'");
}

TEST_F(PlotLog, LabelsLegendAndCloseMessages) {
    Mm t = title(TM("Results"));
    // The label is a text object whose handle the axes takes.
    EXPECT_EQ(lines("ChartType 1x4 'text'").size(), 1u);
    EXPECT_EQ(lines("String 1x7 'Results'").size(), 1u);
    EXPECT_EQ(lines("set 50 Title 1x1 [" + std::to_string(static_cast<int>(t.r())) + "]").size(), 1u);
    EXPECT_ERROR(xlabel(), "xlabel needs to have at least one parameter");
    EXPECT_ERROR(title(ak_internal::new_cell(0, 0)), "title needs to have at least one parameter");

    // Strings go to the axes' children in the order they were drawn (Children lists newest first).
    rec.answer("Children", column({12, 11}));
    legend((CL("first"), "second"));
    EXPECT_EQ(lines("set 11 LegendString 1x5 'first'").size(), 1u);
    EXPECT_EQ(lines("set 12 LegendString 1x6 'second'").size(), 1u);
    legend((CL(2.0), row({11, 12}), (CL("a"), "b")));
    EXPECT_EQ(last("LegendPos"), "[2]");
    EXPECT_EQ(lines("set 12 LegendString 1x1 'b'").size(), 1u);
    EXPECT_ERROR(legend((CL(2.0), row({11, 12}), 5.0)), "legend(h,...) should have strings parameter");
    EXPECT_ERROR(legend((CL(2.0), row({11, 12}), TM("a"))), "legend(h,strings) should have the same length");
    legend(TM("off"));
    EXPECT_EQ(last("Legend"), "'off'");

    EXPECT_ERROR(figure_close(row({1, 2})), "figure_close(i) must be a number");
    EXPECT_ERROR(figure_close(TM("xyz")), "close(p) - valid options are fignum, 'all'");
    EXPECT_ERROR(axes(Mm(5000.0)), "axes(h): h is not a valid handle");
    rec.figure = -1;
    rec.log.clear();
    figure_close(TM("all"));
    EXPECT_TRUE(lines("set").empty());
}

TEST_F(PlotLog, EmbeddedAxesStandsForFigureAndAxes) {
    Mm a = winaxes(nullptr);
    EXPECT_EQ(lines("embed_mode 1").size(), 1u);
    EXPECT_EQ(gcf().r(), 0.0);
    EXPECT_EQ(gca().r(), a.r());
    rec.log.clear();
    plot(row({1, 2, 3}));
    EXPECT_TRUE(lines("new Figure").empty());
    EXPECT_TRUE(lines("new Axes").empty());
    EXPECT_EQ(lines("set " + std::to_string(static_cast<int>(a.r())) + " Refresh").size(), 0u);
    // The colormap is the embedded axes' own.
    colormap(row({0, 0, 1}));
    EXPECT_EQ(lines("set " + std::to_string(static_cast<int>(a.r())) + " ColorMap 1x3 [0 0 1]").size(), 1u);
    EXPECT_TRUE(lines("set 0 ColorMap").empty());
}

// ---- the plot family -----------------------------------------------------------------------------------------
TEST_F(PlotLog, DataFormsMakeTheLinesTheyShould) {
    // x only: 1..n against the values; a matrix gives a line per column in the colour cycle.
    Mm h = plot(matrix(3, 4));
    EXPECT_EQ(h.rows(), 4);
    EXPECT_EQ(writes("Color"), (Log{"[-105]", "[-104]", "[-103]", "[-102]"}));
    Log data = lines("line_data");
    ASSERT_EQ(data.size(), 4u);
    EXPECT_NE(data[1].find(" 3 110 [1 2 3] [4 5 6] [-]"), std::string::npos) << data[1];

    // A vector x against the rows of y when its length is the column count.
    rec.log.clear();
    plot((CL(row({10, 20, 30, 40})), matrix(2, 4)));
    data = lines("line_data");
    ASSERT_EQ(data.size(), 2u);
    EXPECT_NE(data[0].find("[10 20 30 40] [1 3 5 7]"), std::string::npos) << data[0];

    // Complex data: real part against imaginary part.
    rec.log.clear();
    Mm z(1, 0, 0, 1, 2, ak_double);
    z.addr()[0] = 1, z.addr()[1] = 3;
    static_cast<double*>(z.pi)[0] = 2, static_cast<double*>(z.pi)[1] = 4;
    plot(z);
    EXPECT_NE(lines("line_data")[0].find("[1 3] [2 4]"), std::string::npos);

    // Several sets, each with its own line style; the cycle is not moved by an explicit colour.
    rec.log.clear();
    plot((CL(row({1, 2})), row({3, 4}), "r", row({1, 2}), row({5, 6})));
    EXPECT_EQ(writes("Color"), (Log{"[-103]", "[-105]"}));

    rec.log.clear();
    h = plot(Mm(0, 0, 0, 0, 0, ak_double));
    EXPECT_EQ(h.size(), 0);
    EXPECT_TRUE(lines("new line").empty());
    EXPECT_ERROR(stem((CL(matrix(2, 3)), matrix(4, 5))), "plot: matrices are not matched");
}

TEST_F(PlotLog, LineStylesAndPropertyLists) {
    struct Case {
        const char* line_style;
        const char* color;
        const char* marker;
        const char* style;
    } cases[] = {{"-.", "[-105]", "[-1]", "[2]"},
                 {"r-o", "[-103]", "[1]", "[0]"},
                 {"rx--", "[-103]", "[2]", "[3]"},
                 {"k.", "[-107]", "[0]", "[-1]"},
                 {":", "[-105]", "[-1]", "[1]"}};
    for (auto& c : cases) {
        rec.log.clear();
        plot((CL(row({1, 2, 3})), c.line_style));
        EXPECT_EQ(last("Color"), c.color) << c.line_style;
        EXPECT_EQ(last("Marker"), c.marker) << c.line_style;
        EXPECT_EQ(last("LineStyle"), c.style) << c.line_style;
    }
    rec.log.clear();
    plot((CL(row({1, 2})), row({3, 4}), "LineWidth", 2.0));
    EXPECT_EQ(writes("LineWidth"), (Log{"[2]"}));
    // "rz" is no line style (one of its two letters counts), so it is read as a property name.
    EXPECT_ERROR(plot((CL(row({1, 2})), "rz")), "set: cannot parse in position 1");
}

TEST_F(PlotLog, ThreeDimensionalSetsAndTheirMessages) {
    plot3((CL(row({1, 2})), row({3, 4}), row({5, 6}), "g"));
    EXPECT_NE(lines("line_data")[0].find("[1 2] [3 4] [5 6]"), std::string::npos);
    EXPECT_EQ(writes("View").front(), "[3]");
    EXPECT_ERROR(plot3((CL(row({1, 2})), row({3, 4}))), "plot3: expecting 3 data items in position 1");
    EXPECT_ERROR(plot3((CL(row({1, 2})), "a", row({3, 4}), row({5, 6}))),
                 "plot3: expecting data item in position 2 (not string)");
    EXPECT_ERROR(plot_engine("plot", 4, row({1, 2})), "internal: plot2 should have dm==2 or 3");
}

TEST_F(PlotLog, FamilyRowsWriteTheirWordsAndAfterwards) {
    semilogx(row({1, 10, 100}));
    EXPECT_EQ(last("XScale"), "'log'");
    EXPECT_TRUE(writes("YScale").empty());
    loglog(row({1, 10, 100}));
    EXPECT_EQ(last("YScale"), "'log'");
    polar((CL(row({0, 1})), row({1, 1})));
    EXPECT_EQ(lines("ChartType 1x5 'polar'").size(), 1u);
    EXPECT_EQ(last("XGrid"), "'on'");

    rec.log.clear();
    bar((CL(row({1, 2})), row({3, 4}), "stacked"));
    EXPECT_EQ(lines("ChartType 1x3 'bar'").size(), 1u);
    EXPECT_EQ(writes("Stacktype"), (Log{"'stacked'"}));
    rec.log.clear();
    barh(column({5, 6, 7}));
    EXPECT_NE(lines("line_data")[0].find("[1 2 3] [5 6 7]"), std::string::npos);
    for (auto f : {stem, stairs, area, pie, bar3, bar3h, pie3}) {
        rec.log.clear();
        f(column({1, 2}));
        EXPECT_EQ(lines("ChartType").size(), 1u);
    }
}

TEST_F(PlotLog, ScatterErrorbarAndPlotyy) {
    scatter((CL(row({1, 2})), row({3, 4}), 20.0, "r", "Filled"));
    EXPECT_EQ(last("Marker"), "[1]");
    EXPECT_EQ(last("LineStyle"), "[-1]");
    EXPECT_EQ(last("MarkerSize"), "[20]");
    EXPECT_EQ(last("MarkerColor"), "[1 0 0]");
    EXPECT_EQ(last("MarkerFaceColor"), "'auto'");
    // scatter3 knows the word only in lower case.
    EXPECT_ERROR(scatter3((CL(row({1, 2})), row({3, 4}), row({5, 6}), "Filled")), "set: cannot parse in position 1");

    rec.log.clear();
    errorbar((CL(row({1, 2, 3})), row({2, 4, 6}), row({1, 1, 1})));
    Log data = lines("line_data");
    ASSERT_EQ(data.size(), 2u);
    // Whiskers: a stroke and two caps for each point, NaN between; caps 1/100 of the x range wide.
    EXPECT_NE(data[0].find("[1 1 nan 0.98 1.02 nan 0.98 1.02 nan 2 2"), std::string::npos) << data[0];
    EXPECT_NE(data[0].find("[1 3 nan 1 1 nan 3 3 nan"), std::string::npos) << data[0];
    EXPECT_EQ(last("XLim"), "[0.98 3.02]");
    EXPECT_ERROR(errorbar(row({1, 2})), "errorbar: use (y,e), (x,y,e) or (x,y,l,u), then a line style");

    rec.log.clear();
    Mm ax, h1, h2;
    plotyy(row({1, 2}), row({3, 4}), row({1, 2}), row({30, 40}), i_o, ax, h1, h2);
    EXPECT_EQ(ax.size(), 2);
    EXPECT_EQ(last("YAxisLocation"), "'right'");
    EXPECT_EQ(last("XAxisLocation"), "'top'");
}

TEST_F(PlotLog, LinePatchAndTextObjects) {
    EXPECT_ERROR(patch(ak_internal::new_cell(0, 0)), "patch needs to have at least one parameter");
    EXPECT_ERROR(patch((CL(row({1, 2})), row({3, 4}), row({5, 6}))), "patch(x,y,z) is not supported yet.");
    EXPECT_ERROR(patch(row({1, 2})), "patch: cannot comprehend format");
    fill((CL(row({0, 1, 1})), row({0, 0, 1}), "r"));
    EXPECT_EQ(lines("new patch -1").size(), 1u);
    EXPECT_EQ(last("Color"), "'r'");

    EXPECT_ERROR(line(ak_internal::new_cell(0, 0)), "line needs to have at least one parameter");
    EXPECT_ERROR(line(row({1})), "line: cannot comprehend format");
    rec.log.clear();
    Mm h = line((CL(matrix(2, 3)), matrix(2, 3, 10), "Color", "k"));
    EXPECT_EQ(h.size(), 3);
    // line adds to the axes: nothing is cleared.
    EXPECT_TRUE(lines("KillChilds").empty());

    rec.log.clear();
    h = text((CL(row({1, 2})), row({3, 4}), (CL("a"), "b")));
    EXPECT_EQ(h.size(), 2);
    EXPECT_EQ(lines("ChartType 1x4 'text'").size(), 2u);
    EXPECT_NE(lines("line_data")[1].find("1 110 [2] [4] [-]"), std::string::npos);
    text((CL(1.0), 2.0, 3.0, "z"));
    EXPECT_EQ(lines("ChartType 1x5 'text3'").size(), 1u);
    EXPECT_ERROR(text((CL(row({1, 2})), 3.0, "a")), "text(x,y,'text'): x,y,text must contain the same number of elements");
    EXPECT_ERROR(text((CL(1.0), 2.0, row({1, 2}), "a")),
                 "text(x,y,z,'text'): x,y,z,text must contain the same number of elements");
    EXPECT_ERROR(text(Mm(1.0)), "text: use (x,y,'text') or (x,y,z,'text') or ('prop','value',...)");
}

// ---- grids ---------------------------------------------------------------------------------------------------
TEST_F(PlotLog, SurfacesHandTheirGridToTheEngine) {
    Mm z = matrix(2, 3);
    surf(z);
    EXPECT_EQ(lines("new surface -1").size(), 1u);
    EXPECT_EQ(last("Size"), "[2 3]");
    Log data = lines("line_data");
    ASSERT_EQ(data.size(), 1u);
    EXPECT_NE(data[0].find(" 6 110 [1 1 2 2 3 3] [1 2 1 2 1 2] [1 2 3 4 5 6]"), std::string::npos) << data[0];
    EXPECT_EQ(last("CLim"), "[1 6]");
    EXPECT_EQ(lines("surface_axes 50").size(), 1u);

    rec.log.clear();
    mesh((CL(row({1, 2, 4})), row({1, 2}), z));
    // Unequally spaced x is resampled onto an even grid, shown with interpolated shading.
    EXPECT_EQ(last("Shading"), "'interp'");
    EXPECT_NE(lines("line_data")[0].find("[1 1 2.5 2.5 4 4]"), std::string::npos) << lines("line_data")[0];
    EXPECT_EQ(lines("mesh_axes 50").size(), 1u);
    EXPECT_ERROR(surf(ak_internal::new_cell(0, 0)), "surf: expecting data before the properties");
    int d3[3] = {2, 2, 2};
    EXPECT_ERROR(surf(Mm(0, 0, 0, 3, d3, ak_double)), "mesh: 2-d matrix expected, but matrix (temporary) has 3 dimensions");
}

TEST_F(PlotLog, ContourLevelsAndTheContourMatrix) {
    Mm z(0, 0, 0, 3, 3, ak_double);
    for (int k = 0; k < 9; ++k) z.addr()[k] = 0;
    z.addr()[4] = 1;
    Mm c = contourc((CL(z), row({0.5, 2})));
    // One closed piece around the centre at level 0.5: a head column and five points, the first
    // repeated at the end; level 2 crosses nothing.
    ASSERT_EQ(c.rows(), 2);
    ASSERT_EQ(c.cols(), 6);
    EXPECT_EQ(c.addr()[0], 0.5);
    EXPECT_EQ(c.addr()[1], 5);
    std::vector<std::pair<double, double>> pts;
    for (int k = 1; k < 6; ++k) pts.push_back({c.addr()[2 * k], c.addr()[2 * k + 1]});
    EXPECT_EQ(pts.front(), pts.back());
    std::sort(pts.begin(), pts.end() - 1);
    EXPECT_EQ(pts[0], std::make_pair(1.5, 2.0));
    EXPECT_EQ(pts[1], std::make_pair(2.0, 1.5));
    EXPECT_EQ(pts[2], std::make_pair(2.0, 2.5));
    EXPECT_EQ(pts[3], std::make_pair(2.5, 2.0));

    // A ramp rising by rows gives one open piece from edge to edge, on the given x and y.
    Mm ramp = (BR(1.0), 1.0, semi, 2.0, 2.0, semi, 3.0, 3.0);
    Mm r = contourc((CL(row({10, 20})), row({0, 1, 2}), ramp, row({1.5, 2.5})));
    ASSERT_EQ(r.cols(), 6);
    EXPECT_EQ(r.addr()[1], 2);
    EXPECT_EQ(std::min(r.addr()[2], r.addr()[4]), 10);
    EXPECT_EQ(std::max(r.addr()[2], r.addr()[4]), 20);
    EXPECT_EQ(r.addr()[3], 0.5);
    EXPECT_EQ(r.addr()[6], 2.5);
    EXPECT_EQ(r.addr()[9], 1.5);
    Mm h, cm;
    rec.log.clear();
    contour((CL(z), 4.0), i_o, cm, h);
    EXPECT_EQ(last("NumContourLines"), "[4]");
    EXPECT_EQ(lines("ChartType 1x7 'contour'").size(), 1u);
    EXPECT_EQ(cm.addr()[0], 0.2);
    EXPECT_ERROR(contour((CL(z), z, z, z, z)), "contour: must be of z or z,n or x,y,z or x,y,z,n");
}

TEST_F(PlotLog, HistogramCounts) {
    Mm n, x;
    hist(row({1, 2, 2, 3, 3, 3}), Mm(3.0), i_o, n, x);
    EXPECT_EQ(n.rows(), 1);
    EXPECT_EQ(n.addr()[0], 1);
    EXPECT_EQ(n.addr()[1], 2);
    EXPECT_EQ(n.addr()[2], 3);
    EXPECT_NEAR(x.addr()[0], 4.0 / 3, 1e-12);
    // Given centres, a column of data, values past the ends going to the end bins.
    hist(column({-5, 0.4, 0.6, 9}), row({0, 1}), i_o, n, x);
    EXPECT_EQ(n.rows(), 2);
    EXPECT_EQ(n.addr()[0], 2);
    EXPECT_EQ(n.addr()[1], 2);
    EXPECT_ERROR(hist(row({1, 2}), Mm(0.0)), "hist: the number of bins must be positive");
}
