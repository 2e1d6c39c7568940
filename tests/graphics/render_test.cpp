// Pictures that are checked: pixels on and off known lines, the three file formats, and reference
// images kept in tests/data. Set ARKLIB_WRITE_REFERENCES=1 to write the reference images afresh
// (then look at them before committing).
#include <cairo.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "graphics/graphics_internal.h"
#include "test_support.h"

using ak_test::row;

namespace {

struct Pixel {
    double r, g, b;
};

// Pixel (x, y) of a captured rows x cols x 3 image, x to the right and y down from the top left.
Pixel at(const Mm& img, int x, int y) {
    int h = img.dims[0], w = img.dims[1];
    size_t k = static_cast<size_t>(x) * h + y, plane = static_cast<size_t>(w) * h;
    const double* d = img.addr();
    return Pixel{d[k], d[plane + k], d[2 * plane + k]};
}

bool near(const Pixel& p, double r, double g, double b, double tol = 0.1) {
    return std::fabs(p.r - r) <= tol && std::fabs(p.g - g) <= tol && std::fabs(p.b - b) <= tol;
}

std::string slurp(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

std::string temp_path(const char* name) { return std::string(::testing::TempDir()) + name; }

// A figure of w x h pixels, white, holding one axes that fills it, its frame hidden.
class Picture : public ::testing::Test {
  protected:
    void SetUp() override {
        fig = ak_new_object("Figure", Mm(1.0));
        set(fig, Mm((CL("Position"), row({0, 0, 200, 100}), "Color", "w")));
        ax = ak_new_object("Axes", fig);
        set(ax, Mm((CL("Position"), row({0, 0, 1, 1}), "Visible", "off", "XLim", row({0, 10}), "YLim", row({0, 10}))));
    }
    void TearDown() override { deleteobj(fig); }
    Mm capture() { return get(fig, "Capture"); }
    ak_test::ErrorsThrow guard;
    Mm fig, ax;
};

}  // namespace

TEST_F(Picture, LinesArePaintedWhereTheyBelong) {
    Mm flat = ak_new_object("line", ax);
    set(flat, Mm((CL("XData"), row({0, 10}), "YData", row({5, 5}), "Color", "r", "LineWidth", 3.0)));
    Mm diag = ak_new_object("line", ax);
    set(diag, Mm((CL("XData"), row({0, 10}), "YData", row({0, 10}), "Color", "b", "LineWidth", 2.0)));
    Mm img = capture();
    ASSERT_EQ(img.ndims, 3);
    EXPECT_EQ(img.dims[0], 100);
    EXPECT_EQ(img.dims[1], 200);
    // y = 5 is row 50; x = 2.5 on the diagonal is column 50, row 75.
    EXPECT_TRUE(near(at(img, 30, 50), 1, 0, 0));
    EXPECT_TRUE(near(at(img, 170, 49), 1, 0, 0));
    EXPECT_TRUE(near(at(img, 30, 40), 1, 1, 1));
    EXPECT_TRUE(near(at(img, 30, 60), 1, 1, 1));
    EXPECT_TRUE(near(at(img, 50, 75), 0, 0, 1, 0.3));
    EXPECT_TRUE(near(at(img, 50, 60), 1, 1, 1));
    EXPECT_TRUE(near(at(img, 150, 25), 0, 0, 1, 0.3));
    // A line style of none leaves only the markers; NaN breaks a line.
    set(flat, "LineStyle", TM("none"));
    set(diag, "YData", row({0, NAN}));
    img = capture();
    EXPECT_TRUE(near(at(img, 30, 50), 1, 1, 1));
    EXPECT_TRUE(near(at(img, 50, 75), 1, 1, 1));
}

TEST_F(Picture, ScalesDirectionsAndMarkers) {
    set(ax, Mm((CL("XScale"), "log", "XLim", row({1, 100}))));
    Mm m = ak_new_object("line", ax);
    set(m, Mm((CL("XData"), Mm(10.0), "YData", Mm(5.0), "Marker", "s", "MarkerFaceColor", "g", "MarkerSize", 10.0,
               "LineStyle", "none")));
    Mm img = capture();
    EXPECT_TRUE(near(at(img, 100, 50), 0, 1, 0));  // 10 is half way on a log axis from 1 to 100
    EXPECT_TRUE(near(at(img, 120, 50), 1, 1, 1));
    set(ax, Mm((CL("XScale"), "linear", "XLim", row({0, 40}), "XDir", "reverse")));
    img = capture();
    EXPECT_TRUE(near(at(img, 150, 50), 0, 1, 0));  // 10 of 0..40 reversed is three quarters across
    EXPECT_TRUE(near(at(img, 50, 50), 1, 1, 1));
}

TEST_F(Picture, SurfacesImagesAndPatchesUseTheColormap) {
    Mm gray(0, 0, 0, 2, 3, ak_double);
    double g[6] = {0, 1, 0, 1, 0, 1};
    for (int k = 0; k < 6; ++k) gray.addr()[k] = g[k];
    set(fig, "Colormap", gray);  // two colours: black, white
    set(ax, Mm((CL("XLim"), row({1, 2}), "YLim", row({1, 2}))));
    Mm s = ak_new_object("surface", ax);
    Mm z(0, 0, 0, 2, 2, ak_double);
    z.addr()[0] = 0, z.addr()[1] = 0, z.addr()[2] = 1, z.addr()[3] = 1;  // rising with x
    set(s, Mm((CL("ZData"), z, "EdgeColor", "none", "FaceColor", "interp")));
    Mm img = capture();
    EXPECT_TRUE(near(at(img, 10, 50), 0, 0, 0));  // low z: the first colour
    EXPECT_TRUE(near(at(img, 190, 50), 1, 1, 1));
    set(s, "FaceColor", TM("flat"));
    img = capture();
    EXPECT_TRUE(near(at(img, 190, 50), 0, 0, 0));  // one colour, from the first corner
    deleteobj(s);

    // An indexed image: row 1 at the top with the y axis reversed.
    Mm map(0, 0, 0, 4, 3, ak_double);
    double rgb[12] = {1, 0, 0, 1, 0, 1, 0, 1, 0, 0, 1, 1};
    for (int k = 0; k < 12; ++k) map.addr()[k] = rgb[k];
    set(fig, "Colormap", map);  // red, green, blue, white
    set(ax, Mm((CL("XLim"), row({0.5, 2.5}), "YLim", row({0.5, 2.5}), "YDir", "reverse")));
    Mm image = ak_new_object("image", ax);
    Mm cd(0, 0, 0, 2, 2, ak_double);
    cd.addr()[0] = 1, cd.addr()[1] = 2, cd.addr()[2] = 3, cd.addr()[3] = 4;
    set(image, "CData", cd);
    img = capture();
    EXPECT_TRUE(near(at(img, 50, 25), 1, 0, 0));   // (1,1)
    EXPECT_TRUE(near(at(img, 50, 75), 0, 1, 0));   // (2,1)
    EXPECT_TRUE(near(at(img, 150, 25), 0, 0, 1));  // (1,2)
    EXPECT_TRUE(near(at(img, 150, 75), 1, 1, 1));  // (2,2)
    deleteobj(image);

    Mm p = ak_new_object("patch", ax);
    set(p, Mm((CL("XData"), row({0.5, 2.5, 0.5}), "YData", row({0.5, 0.5, 2.5}), "FaceColor", "g", "EdgeColor", "none")));
    img = capture();
    EXPECT_TRUE(near(at(img, 20, 10), 0, 1, 0));   // inside, near the top left (y reversed)
    EXPECT_TRUE(near(at(img, 190, 90), 1, 1, 1));  // outside the triangle
}

TEST_F(Picture, FilesInThreeFormats) {
    Mm l = ak_new_object("line", ax);
    set(l, Mm((CL("XData"), row({0, 10}), "YData", row({5, 5}), "Color", "k")));
    set(ax, "Visible", TM("on"));
    set(get(ax, "Title"), "String", TM("three formats"));

    std::string png = temp_path("ak_figure.png");
    saveas(fig, TM(png.c_str()));
    std::string bytes = slurp(png);
    ASSERT_GT(bytes.size(), 24u);
    EXPECT_EQ(bytes.substr(1, 3), "PNG");
    auto be32 = [&](size_t at) {
        return (unsigned char)bytes[at] << 24 | (unsigned char)bytes[at + 1] << 16 | (unsigned char)bytes[at + 2] << 8 |
               (unsigned char)bytes[at + 3];
    };
    EXPECT_EQ(be32(16), 200);  // IHDR width and height: the figure's size
    EXPECT_EQ(be32(20), 100);
    // The file holds the same picture as the capture.
    cairo_surface_t* read = cairo_image_surface_create_from_png(png.c_str());
    ASSERT_EQ(cairo_surface_status(read), CAIRO_STATUS_SUCCESS);
    Mm img = capture();
    const unsigned char* data = cairo_image_surface_get_data(read);
    int stride = cairo_image_surface_get_stride(read);
    uint32_t px = *reinterpret_cast<const uint32_t*>(data + 50 * stride + 4 * 30);
    EXPECT_NEAR(((px >> 16) & 255) / 255.0, at(img, 30, 50).r, 1e-9);
    cairo_surface_destroy(read);

    std::string svg = temp_path("ak_figure.svg");
    saveas(fig, TM(svg.c_str()));
    std::string text = slurp(svg);
    EXPECT_NE(text.find("<svg"), std::string::npos);
    EXPECT_NE(text.find("width=\"150\""), std::string::npos) << "200 pixels at 96 per inch are 150 points";
    std::string check = "xmllint --noout '" + svg + "'";
    EXPECT_EQ(std::system(check.c_str()), 0) << "the SVG is not well-formed XML";

    std::string pdf = temp_path("ak_figure");
    saveas(fig, TM(pdf.c_str()), TM("pdf"));
    pdf += ".pdf";
    EXPECT_EQ(slurp(pdf).substr(0, 5), "%PDF-");
    std::string info = temp_path("ak_pdfinfo.txt");
    std::string cmd = "pdfinfo '" + pdf + "' > '" + info + "'";
    ASSERT_EQ(std::system(cmd.c_str()), 0);
    std::string report = slurp(info);
    int pages = 0;
    size_t where = report.find("Pages:");
    ASSERT_NE(where, std::string::npos) << report;
    std::sscanf(report.c_str() + where, "Pages: %d", &pages);
    EXPECT_EQ(pages, 1);
    EXPECT_NE(report.find("150 x 75 pts"), std::string::npos) << report;

    EXPECT_ERROR(saveas(fig, TM("figure.bmp")),
                 "The figure cannot be written to 'figure.bmp': the name must end in .png, .svg or .pdf");
    std::remove(png.c_str());
    std::remove(svg.c_str());
    std::remove(pdf.c_str());
    std::remove(info.c_str());
}

namespace {

// Compares the capture with a reference image: each channel of each pixel within tol, allowing a
// few pixels (text edges) to differ by more.
void compare_with_reference(const Mm& img, const char* name) {
    std::string path = std::string(ARKLIB_TEST_DATA) + "/" + name;
    int h = img.dims[0], w = img.dims[1];
    if (std::getenv("ARKLIB_WRITE_REFERENCES")) {
        cairo_surface_t* s = cairo_image_surface_create(CAIRO_FORMAT_RGB24, w, h);
        unsigned char* d = cairo_image_surface_get_data(s);
        int stride = cairo_image_surface_get_stride(s);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                Pixel p = at(img, x, y);
                auto b = [](double v) { return static_cast<uint32_t>(std::lround(v * 255)); };
                *reinterpret_cast<uint32_t*>(d + y * stride + 4 * x) = b(p.r) << 16 | b(p.g) << 8 | b(p.b);
            }
        cairo_surface_mark_dirty(s);
        cairo_surface_write_to_png(s, path.c_str());
        cairo_surface_destroy(s);
    }
    cairo_surface_t* ref = cairo_image_surface_create_from_png(path.c_str());
    ASSERT_EQ(cairo_surface_status(ref), CAIRO_STATUS_SUCCESS) << path;
    ASSERT_EQ(cairo_image_surface_get_width(ref), w);
    ASSERT_EQ(cairo_image_surface_get_height(ref), h);
    const unsigned char* d = cairo_image_surface_get_data(ref);
    int stride = cairo_image_surface_get_stride(ref);
    const double tol = 24 / 255.0;
    int off = 0;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            uint32_t px = *reinterpret_cast<const uint32_t*>(d + y * stride + 4 * x);
            Pixel p = at(img, x, y);
            if (std::fabs(((px >> 16) & 255) / 255.0 - p.r) > tol || std::fabs(((px >> 8) & 255) / 255.0 - p.g) > tol ||
                std::fabs((px & 255) / 255.0 - p.b) > tol)
                ++off;
        }
    cairo_surface_destroy(ref);
    EXPECT_LE(off, w * h / 200) << name << ": " << off << " pixels differ";
}

}  // namespace

TEST_F(Picture, ReferenceImages) {
    // A plot with its frame, ticks, grid, labels, title and legend.
    set(fig, "Position", row({0, 0, 320, 240}));
    set(ax, Mm((CL("Position"), row({0, 0, 1, 1}), "Visible", "on", "XLimMode", "auto", "YLimMode",
                "auto", "XGrid", "on", "YGrid", "on")));
    Mm x(0, 0, 0, 1, 21, ak_double), y(0, 0, 0, 1, 21, ak_double), y2(0, 0, 0, 1, 21, ak_double);
    for (int k = 0; k < 21; ++k) {
        x.addr()[k] = k * 0.3;
        y.addr()[k] = std::sin(k * 0.3);
        y2.addr()[k] = 0.5 * std::cos(k * 0.3);
    }
    Mm l1 = ak_new_object("line", ax), l2 = ak_new_object("line", ax);
    set(l1, Mm((CL("XData"), x, "YData", y, "Color", "b", "Marker", "o", "MarkerSize", 4.0)));
    set(l2, Mm((CL("XData"), x, "YData", y2, "Color", "r", "LineStyle", "--", "ChartType", "stairs")));
    set(get(ax, "Title"), "String", TM("reference"));
    set(get(ax, "XLabel"), "String", TM("x"));
    set(ax, "LegendString", TM("sin|cos"));
    compare_with_reference(capture(), "graphics_plot.png");
    deleteobj(Mm((BR(l1), l2)));

    // A surface seen in 3-D with interpolated colour and mesh lines.
    set(ax, Mm((CL("View"), row({-37.5, 30}), "Legend", "off")));
    set(get(ax, "Title"), "String", TM(""));
    int n = 12;
    Mm z(0, 0, 0, n, n, ak_double);
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) {
            double u = (i - 5.5) / 3, v = (j - 5.5) / 3;
            z.addr()[j * n + i] = std::exp(-u * u - v * v);
        }
    Mm s = ak_new_object("surface", ax);
    set(s, Mm((CL("ZData"), z, "FaceColor", "interp", "EdgeColor", "k")));
    compare_with_reference(capture(), "graphics_surface.png");
    deleteobj(s);

    // Bars and stems in 2-D, with a patch and a text.
    set(ax, "View", row({0, 90}));
    Mm bars = ak_new_object("line", ax), stems = ak_new_object("line", ax);
    set(bars, Mm((CL("XData"), row({1, 2, 3, 4}), "YData", row({3, 1, 4, 2}), "ChartType", "bar", "Color", row({0.3, 0.6, 0.9}))));
    set(stems, Mm((CL("XData"), row({1.5, 2.5, 3.5}), "YData", row({-1, 2, -2}), "ChartType", "stem", "Color", "m")));
    Mm t = ak_new_object("text", ax);
    set(t, Mm((CL("Position"), row({2, 3.5}), "String", "label", "Color", "k")));
    compare_with_reference(capture(), "graphics_bars.png");
}
