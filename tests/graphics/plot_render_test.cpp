// Plots drawn by our engine, written to PNG files and read back with libpng: the pixels must show
// each chart where and how it belongs.
#include <png.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "arklib/colormaps.h"
#include "arklib/figures.h"
#include "arklib/plots.h"
#include "graphics/engine_table.h"
#include "test_support.h"

using ak_test::row;

namespace {

struct Image {
    int w = 0, h = 0;
    std::vector<unsigned char> rgb;
    // The colour at (x, y), x to the right and y down, each 0 to 255.
    const unsigned char* at(int x, int y) const { return &rgb[3 * (static_cast<size_t>(y) * w + x)]; }
    bool is(int x, int y, int r, int g, int b, int tol = 40) const {
        const unsigned char* p = at(x, y);
        return std::abs(p[0] - r) <= tol && std::abs(p[1] - g) <= tol && std::abs(p[2] - b) <= tol;
    }
    // Pixels of the rectangle that are far from white.
    int inked(int x0, int y0, int x1, int y1) const {
        int n = 0;
        for (int y = y0; y < y1; ++y)
            for (int x = x0; x < x1; ++x) n += at(x, y)[0] + at(x, y)[1] + at(x, y)[2] < 3 * 160;
        return n;
    }
    // Whether a pixel within `r` of (x, y) has the colour.
    bool near(int x, int y, int r, int red, int green, int blue) const {
        for (int dy = -r; dy <= r; ++dy)
            for (int dx = -r; dx <= r; ++dx)
                if (x + dx >= 0 && x + dx < w && y + dy >= 0 && y + dy < h && is(x + dx, y + dy, red, green, blue))
                    return true;
        return false;
    }
};

Image read_png(const std::string& file) {
    png_image img;
    std::memset(&img, 0, sizeof img);
    img.version = PNG_IMAGE_VERSION;
    Image out;
    if (!png_image_begin_read_from_file(&img, file.c_str())) return out;
    img.format = PNG_FORMAT_RGB;
    out.rgb.resize(PNG_IMAGE_SIZE(img));
    if (!png_image_finish_read(&img, nullptr, out.rgb.data(), 0, nullptr)) return out;
    out.w = static_cast<int>(img.width);
    out.h = static_cast<int>(img.height);
    return out;
}

// A white figure of w x h pixels made current, closed again at the end.
class Rendered : public ::testing::Test {
  protected:
    void SetUp() override {
        figure_close(TM("all"));
        figure((CL("Position"), row({0, 0, 400, 300}), "Color", "w"));
    }
    void TearDown() override { figure_close(TM("all")); }
    Image written(const char* name) {
        std::string file = std::string(::testing::TempDir()) + name;
        print((CL("-dpng"), file.c_str()));
        Image img = read_png(file);
        // ARKLIB_KEEP_PICTURES=1 keeps the files, to look at.
        if (!std::getenv("ARKLIB_KEEP_PICTURES")) std::remove(file.c_str());
        EXPECT_EQ(img.w, 400);
        EXPECT_EQ(img.h, 300);
        return img;
    }
    // Hides the frame, so that the plot box is the whole figure.
    void bare(double x0, double x1, double y0, double y1) {
        axis(TM("off"));
        axis(row({x0, x1, y0, y1}));
    }
    ak_test::ErrorsThrow guard;
};

Mm samples(double a, double b, int n) {
    Mm out(0, 0, 0, 1, n, ak_double);
    for (int k = 0; k < n; ++k) out.addr()[k] = a + (b - a) * k / (n - 1);
    return out;
}

bool text_is_word(const Mm& m, const char* w) {
    char b[64];
    return m.flags.str && std::strcmp(Mstr(m, b, sizeof b), w) == 0;
}

// The pixel of data point (x, y) in a bare figure with limits [x0 x1] x [y0 y1].
int px(double x, double x0, double x1) { return static_cast<int>(std::lround((x - x0) / (x1 - x0) * 400)); }
int py(double y, double y0, double y1) { return static_cast<int>(std::lround(300 - (y - y0) / (y1 - y0) * 300)); }

}  // namespace

TEST_F(Rendered, SineCurveLiesWhereItShould) {
    Mm x = samples(0, 2 * M_PI, 200);
    plot((CL(x), sin(x), "LineWidth", 2.0));
    bare(0, 2 * M_PI, -1.2, 1.2);
    Image img = written("sine.png");
    // The first line of a plot is blue.
    for (double t : {0.5, 1.5708, 3.0, 4.7124, 6.0}) {
        int cx = px(t, 0, 2 * M_PI), cy = py(std::sin(t), -1.2, 1.2);
        EXPECT_TRUE(img.near(cx, cy, 2, 0, 0, 255)) << "t = " << t;
        // Off the curve: white above the crest and below the trough.
        EXPECT_TRUE(img.is(cx, std::sin(t) > 0 ? cy + 40 : cy - 40, 255, 255, 255)) << "t = " << t;
    }
}

TEST_F(Rendered, SubplotsFillTheFourQuarters) {
    const char* colors[4] = {"r", "g", "b", "y"};
    int rgb[4][3] = {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {255, 255, 0}};
    for (int k = 0; k < 4; ++k) {
        subplot(Mm(2.0), Mm(2.0), Mm(k + 1.0));
        set(gca(), "Color", TM(colors[k]));
    }
    EXPECT_EQ(get(gcf(), "Children").size(), 4);
    Image img = written("quarters.png");
    // Each quarter's centre shows its axes' colour: 1 top left, 2 top right, 3 and 4 below.
    int cx[4] = {100, 300, 100, 300}, cy[4] = {75, 75, 225, 225};
    for (int k = 0; k < 4; ++k) EXPECT_TRUE(img.is(cx[k], cy[k], rgb[k][0], rgb[k][1], rgb[k][2], 10)) << k;
    // Between the quarters the figure's white shows through.
    EXPECT_TRUE(img.is(200, 150, 255, 255, 255, 10));
    EXPECT_TRUE(img.is(2, 150, 255, 255, 255, 10));
}

TEST_F(Rendered, LogAxesTickAtDecades) {
    Mm x = samples(1, 1000, 50);
    loglog((CL(x), x));
    Mm ticks = get(gca(), "XTick");
    ASSERT_EQ(ticks.size(), 4);
    for (int k = 0; k < 4; ++k) EXPECT_DOUBLE_EQ(ticks.addr()[k], std::pow(10.0, k));
    semilogy((CL(x), x));
    EXPECT_EQ(get(gca(), "XTick").size(), 6);  // linear again: a new plot replaced the axes
    ticks = get(gca(), "YTick");
    ASSERT_EQ(ticks.size(), 4);
    EXPECT_DOUBLE_EQ(ticks.addr()[3], 1000);
    // y = x on two log axes is a straight diagonal: its midpoint, 10^1.5, lies in the middle.
    loglog((CL(x), x, "LineWidth", 2.0));
    bare(1, 1000, 1, 1000);
    Image img = written("loglog.png");
    EXPECT_TRUE(img.near(200, 150, 2, 0, 0, 255));
    EXPECT_TRUE(img.near(133, 200, 2, 0, 0, 255));
    EXPECT_FALSE(img.near(133, 100, 10, 0, 0, 255));
}

TEST_F(Rendered, BarStairsAndStemDiffer) {
    Mm x = row({1, 2, 3}), y = row({1, 3, 2});
    struct Probe {
        double x, y;
    };
    // (1.2, 0.5) is inside the first bar only; (1.5, 1) is on the first step of the stairs only;
    // (1, 0.5) is on the first stem (and inside the first bar).
    const Probe inside_bar{1.2, 0.5}, on_step{1.5, 1.0}, on_stem{1.0, 0.5};
    auto look = [&](Mm (*chart)(const Mm&), const char* name, bool bar, bool step, bool stem) {
        chart((CL(x), y, "LineWidth", 3.0));
        bare(0, 4, 0, 4);
        Image img = written(name);
        auto blue = [&](const Probe& p) { return img.near(px(p.x, 0, 4), py(p.y, 0, 4), 1, 0, 0, 255); };
        EXPECT_EQ(blue(inside_bar), bar) << name;
        EXPECT_EQ(blue(on_step), step) << name;
        EXPECT_EQ(blue(on_stem), stem) << name;
    };
    look(bar, "bar.png", true, false, true);
    look(stairs, "stairs.png", false, true, false);
    look(stem, "stem.png", false, false, true);
}

TEST_F(Rendered, SurfaceAndContourShowTheColormap) {
    int n = 30;
    Mm z(0, 0, 0, n, n, ak_double);
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) {
            double u = -3 + 6.0 * j / (n - 1), v = -3 + 6.0 * i / (n - 1);
            z.addr()[j * n + i] = 3 * (1 - u) * (1 - u) * std::exp(-u * u - (v + 1) * (v + 1)) -
                                  10 * (u / 5 - u * u * u - std::pow(v, 5)) * std::exp(-u * u - v * v);
        }
    Mm map = jet(Mm(64.0));
    // Pixels whose colour is one of the map's (within a small tolerance), and how many map rows show.
    auto map_colours = [&](const Image& img, int& rows_seen) {
        std::vector<bool> seen(64, false);
        int hits = 0;
        for (int y = 0; y < img.h; y += 2)
            for (int x = 0; x < img.w; x += 2)
                for (int k = 0; k < 64; ++k) {
                    const double* m = map.addr();
                    if (img.is(x, y, std::lround(255 * m[k]), std::lround(255 * m[64 + k]), std::lround(255 * m[128 + k]), 3)) {
                        // White and black are no evidence of the map.
                        const unsigned char* p = img.at(x, y);
                        if (p[0] + p[1] + p[2] > 740 || p[0] + p[1] + p[2] < 15) break;
                        seen[k] = true;
                        ++hits;
                        break;
                    }
                }
        rows_seen = 0;
        for (bool s : seen) rows_seen += s;
        return hits;
    };
    colormap(map);
    Mm h = surf(z);
    EXPECT_EQ(get(h, "ZData").rows(), n);
    int rows_seen;
    Image img = written("surf.png");
    EXPECT_GT(map_colours(img, rows_seen), 2000);
    EXPECT_GT(rows_seen, 30);

    colormap(TM("gray"));
    contourf((CL(z), 6.0));
    Image gray_img = written("contourf_gray.png");
    colormap(map);
    contourf((CL(z), 6.0));
    img = written("contourf.png");
    EXPECT_GT(map_colours(img, rows_seen), 5000);
    EXPECT_GE(rows_seen, 5);
    // With the grey map the same chart has no colour of the jet map beyond the greys they share.
    EXPECT_LT(map_colours(gray_img, rows_seen), 50);

    contour((CL(z), 6.0, "LineWidth", 3.0));
    img = written("contour.png");
    EXPECT_GT(map_colours(img, rows_seen), 300);
}

TEST_F(Rendered, TitleAndLegendTextAppear) {
    Mm x = samples(0, 1, 10);
    plot((CL(x), x, x, times(x, x), "LineWidth", 2.0));
    Image plain_img = written("untitled.png");
    title(TM("A title"));
    legend((CL("linear"), "square"));
    Image img = written("titled.png");
    // The title sits in a band above the plot box, which is blank without it (the box then
    // reaches higher, up to the band).
    EXPECT_LE(plain_img.inked(170, 12, 230, 30), 5);
    EXPECT_GT(img.inked(170, 12, 230, 30), 40);
    // The legend box, top right inside the plot, holds two sample lines and text.
    EXPECT_GT(img.inked(250, 30, 395, 80), plain_img.inked(250, 30, 395, 80) + 60);
    EXPECT_TRUE(img.near(300, 50, 60, 0, 128, 0));  // the second sample line is green
}

TEST_F(Rendered, BarsOfAMatrixStandSideBySideOrStacked) {
    Mm x = row({1, 2}), y = (BR(1.0), 2.0, semi, 1.0, 2.0);
    auto colour_at = [&](const Image& img, double u, double v, int r, int g, int b) {
        return img.is(px(u, 0, 3), py(v, 0, 4), r, g, b, 30);
    };
    // Two series at each x: each bar 0.4 wide, the first to the left of x, the second to the right.
    bar((CL(x), y));
    bare(0, 3, 0, 4);
    Image img = written("grouped.png");
    EXPECT_TRUE(colour_at(img, 0.8, 0.5, 0, 0, 255));
    EXPECT_TRUE(colour_at(img, 1.2, 1.5, 0, 128, 0));
    EXPECT_TRUE(colour_at(img, 0.8, 1.5, 255, 255, 255));
    // Stacked: the second series stands on the first, full width.
    bar((CL(x), y, "stacked"));
    bare(0, 3, 0, 4);
    img = written("stacked.png");
    EXPECT_TRUE(colour_at(img, 1.0, 0.5, 0, 0, 255));
    EXPECT_TRUE(colour_at(img, 1.0, 2.5, 0, 128, 0));
    EXPECT_TRUE(colour_at(img, 1.0, 3.5, 255, 255, 255));
}

TEST_F(Rendered, FiguresAndAxesAreManagedInTheEngine) {
    figure_close(TM("all"));
    EXPECT_LT(ak_engine.qor_current_figure(), 0);
    // gca with no figure makes both; figure(5) twice is the same figure, brought forward.
    Mm a = gca();
    EXPECT_TRUE(text_is_word(get(a, "Type"), "axes"));
    Mm f5 = figure(Mm(5.0));
    EXPECT_EQ(f5.r(), 5.0);
    figure(Mm(1.0));
    EXPECT_EQ(figure(Mm(5.0)).r(), 5.0);
    EXPECT_EQ(gcf().r(), 5.0);
    // subplot(221) again selects the axes it made; a different layout removes it.
    subplot(Mm(221.0));
    Mm s1 = gca();
    subplot(Mm(221.0));
    EXPECT_EQ(gca().r(), s1.r());
    EXPECT_EQ(get(gcf(), "Children").size(), 1);
    subplot(Mm(1.0), Mm(1.0), Mm(1.0));
    EXPECT_EQ(ishandle(s1).r(), 0.0);
    EXPECT_EQ(get(gcf(), "Children").size(), 1);
    // hold keeps the lines of an earlier plot; without it a new plot replaces them.
    plot(row({1, 2}));
    hold(TM("on"));
    plot(row({2, 1}));
    EXPECT_EQ(get(gca(), "Children").size(), 2);
    hold(TM("off"));
    plot(row({1, 3}));
    EXPECT_EQ(get(gca(), "Children").size(), 1);
    // Labels are the axes' own text objects, not among its children.
    Mm t = xlabel(TM("time"));
    EXPECT_EQ(get(gca(), "XLabel").r(), t.r());
    EXPECT_TRUE(text_is_word(get(t, "String"), "time"));
    EXPECT_EQ(get(gca(), "Children").size(), 1);
    // close(5) closes that figure and leaves figure 1 current.
    figure_close(Mm(5.0));
    EXPECT_EQ(ishandle(Mm(5.0)).r(), 0.0);
    EXPECT_EQ(gcf().r(), 1.0);
    figure_close(TM("all"));
    EXPECT_LT(ak_engine.qor_current_figure(), 0);
}

TEST_F(Rendered, ScatterSizesAndColoursPointByPoint) {
    Mm map = jet(Mm(64.0));
    colormap(map);
    scatter((CL(row({1, 2, 3})), row({1, 2, 3}), row({100, 400, 900}), row({1, 2, 3}), "filled"));
    bare(0, 4, 0, 4);
    Image img = written("scatter.png");
    auto map_row = [&](int k, int x, int y) {
        const double* m = map.addr();
        return img.is(x, y, std::lround(255 * m[k]), std::lround(255 * m[64 + k]), std::lround(255 * m[128 + k]), 10);
    };
    // The least value takes the first colour of the map, the greatest the last.
    EXPECT_TRUE(map_row(0, px(1, 0, 4), py(1, 0, 4)));
    EXPECT_TRUE(map_row(63, px(3, 0, 4), py(3, 0, 4)));
    // Sizes are areas: the third mark (900 square points, 40 pixels across) reaches 15 pixels out,
    // the first (100, about 13 across) does not.
    EXPECT_TRUE(map_row(63, px(3, 0, 4) + 15, py(3, 0, 4)));
    EXPECT_TRUE(img.is(px(1, 0, 4) + 15, py(1, 0, 4), 255, 255, 255, 10));
}

TEST_F(Rendered, PrintWritesEachFormat) {
    plot(row({1, 3, 2}));
    std::string dir = ::testing::TempDir();
    auto head = [](const std::string& file, size_t n) {
        std::string s(n, '\0');
        FILE* f = std::fopen(file.c_str(), "rb");
        if (!f) return std::string();
        s.resize(std::fread(&s[0], 1, n, f));
        std::fclose(f);
        std::remove(file.c_str());
        return s;
    };
    // The device word names the format when the file has no extension of its own.
    print((CL("-dpdf"), (dir + "page").c_str()));
    EXPECT_EQ(head(dir + "page.pdf", 5), "%PDF-");
    print((CL("-dsvg"), (dir + "page.svg").c_str()));
    EXPECT_NE(head(dir + "page.svg", 200).find("<svg"), std::string::npos);
    // Other picture formats go through the captured image.
    print((CL("-djpeg"), (dir + "page.jpg").c_str()));
    EXPECT_EQ(head(dir + "page.jpg", 3), "\xFF\xD8\xFF");
    // PostScript is not made: a note says how to write a file instead, and nothing is written.
    ak_test::Recorder out;
    print((CL("-deps"), (dir + "page.eps").c_str()));
    EXPECT_NE(out.printed.find("PostScript output is not available"), std::string::npos);
    EXPECT_EQ(head(dir + "page.eps", 4), "");
}

TEST_F(Rendered, OddDataNeitherCrashesNorSpoilsThePicture) {
    // Empty, single, NaN and infinite data through every chart: each either draws or reports an
    // error, and the figure can still be written afterwards.
    Mm (*charts[])(const Mm&) = {plot, stem, stairs, area, pie, polar, semilogx, loglog, bar, barh, scatter,
                                 mesh, surf, pcolor, contour, contourf, quiver, image, imagesc, errorbar, hist};
    Mm odd[] = {Mm(0, 0, 0, 0, 0, ak_double), Mm(NAN), row({1, NAN, 3}), row({-INFINITY, 0, INFINITY}),
                (BR(1.0), NAN, semi, 2.0, 3.0), Mm(5.0), row({-1e308, 1e308}), row({1e-300, 2e-300})};
    int drawn = 0;
    for (auto chart : charts)
        for (const Mm& data : odd) {
            try {
                chart(data);
                ++drawn;
            } catch (const char*) {
                // A clear error is a fine answer to data such as these.
            }
            Image img = written("odd.png");
            ASSERT_EQ(img.w, 400);
        }
    EXPECT_GT(drawn, 60);
}
