// Image files: fixtures written by an encoder of our own in tools/, and round trips through a
// scratch folder that the test removes.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <string>

#include "arklib.h"
#include "tests/test_support.h"

namespace {

std::string data_file(const char* name) { return std::string(ARKLIB_TEST_DATA) + "/" + name; }

unsigned char byte_at(const Mm& m, int k) { return static_cast<const unsigned char*>(m.pr)[k]; }

struct ImageScratch : ::testing::Test {
    std::string dir;
    void SetUp() override {
        char tmpl[] = "/tmp/arklib_images_XXXXXX";
        dir = mkdtemp(tmpl);
    }
    void TearDown() override { std::system(("rm -rf " + dir).c_str()); }
    std::string path(const char* name) const { return dir + "/" + name; }
};

TEST(ImageFiles, FixturesFromAnotherEncoder) {
    Mm img = imread(TM(data_file("rgb_4x3.png").c_str()));
    ASSERT_EQ(img.ndims, 3);
    ASSERT_EQ(img.dims[0], 3);
    ASSERT_EQ(img.dims[1], 4);
    ASSERT_EQ(img.flags.type, ak_uchar);
    const int plane = 12;
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 4; ++c) {
            EXPECT_EQ(byte_at(img, r + 3 * c), 10 * r + c);
            EXPECT_EQ(byte_at(img, r + 3 * c + plane), 100 + 20 * c);
            EXPECT_EQ(byte_at(img, r + 3 * c + 2 * plane), 255 - 40 * r);
        }
    Mm map, alpha;
    Mm x = imread(TM(data_file("palette_2x2.png").c_str()), i_o, map, alpha);
    ASSERT_EQ(x.dims[0], 2);
    ASSERT_EQ(map.dims[1], 3);
    // Whatever order the reader gives the palette, each index must name the file's colour.
    const double want[4][3] = {{1, 0, 0}, {0, 0, 1}, {0, 1, 0}, {1, 0, 0}};  // column-major pixels
    for (int k = 0; k < 4; ++k)
        for (int c = 0; c < 3; ++c) EXPECT_EQ(map.addr()[byte_at(x, k) + c * map.dims[0]], want[k][c]) << k;
    Mm info = imfinfo(TM(data_file("rgb_4x3.png").c_str()));
    EXPECT_EQ(scalar(getfield(info, TM("Width"))), 4.0);
    EXPECT_EQ(scalar(getfield(info, TM("BitDepth"))), 24.0);
    char buf[32];
    EXPECT_STREQ(Mstr(getfield(info, TM("ColorType")), buf, sizeof buf), "truecolor");
}

TEST_F(ImageScratch, RoundTripsInEveryForm) {
    // Doubles in [0, 1] become bytes; a grey PNG comes back exactly.
    Mm g(0, 0, 0, 5, 7, ak_double);
    for (int k = 0; k < 35; ++k) g.addr()[k] = (k * 7 % 35) / 34.0;
    imwrite(g, TM(path("grey.png").c_str()));
    Mm back = imread(TM(path("grey.png").c_str()));
    ASSERT_EQ(back.ndims, 2);
    for (int k = 0; k < 35; ++k) EXPECT_EQ(byte_at(back, k), std::lround(g.addr()[k] * 255));
    // An indexed image with its map, written and read back as indices of the same colours.
    Mm x(0, 0, 0, 2, 3, ak_double);
    for (int k = 0; k < 6; ++k) x.addr()[k] = k % 3 + 1;
    Mm map = jet(Mm(3.0));
    imwrite(x, map, TM(path("indexed.png").c_str()));
    Mm map2;
    Mm x2 = imread(TM(path("indexed.png").c_str()), i_o, map2);
    for (int k = 0; k < 6; ++k)
        for (int c = 0; c < 3; ++c)
            EXPECT_NEAR(map2.addr()[byte_at(x2, k) + c * map2.dims[0]], map.addr()[k % 3 + 3 * c], 0.5 / 255);
    // JPEG is lossy: a smooth RGB image comes back close, and quality changes the file.
    int dims[3] = {32, 48, 3};
    Mm rgb(0, 0, 0, 3, dims, ak_uchar);
    for (int k = 0; k < rgb.size(); ++k) static_cast<unsigned char*>(rgb.pr)[k] = static_cast<unsigned char>((k % 32) * 4 + (k / 1536) * 30);
    imwrite(rgb, TM(path("photo.jpg").c_str()), TM("Quality"), Mm(95.0));
    imwrite(rgb, TM(path("small.jpg").c_str()), TM("Quality"), Mm(10.0));
    Mm j = imread(TM(path("photo.jpg").c_str()));
    ASSERT_EQ(j.size(), rgb.size());
    double err = 0;
    for (int k = 0; k < rgb.size(); ++k) err += std::fabs(double(byte_at(j, k)) - byte_at(rgb, k));
    EXPECT_LT(err / rgb.size(), 3.0);
    struct stat big, small;
    ASSERT_EQ(stat(path("photo.jpg").c_str(), &big), 0);
    ASSERT_EQ(stat(path("small.jpg").c_str(), &small), 0);
    EXPECT_GT(big.st_size, small.st_size);
    EXPECT_EQ(scalar(getfield(imfinfo(TM(path("photo.jpg").c_str())), TM("Height"))), 32.0);
}

TEST_F(ImageScratch, BadFilesGiveMessages) {
    const std::string missing = path("none.png");
    EXPECT_ERROR(imread(TM(missing.c_str())), "imread: cannot open file '" + missing + "'");
    FILE* f = std::fopen(path("text.png").c_str(), "w");
    std::fputs("not an image", f);
    std::fclose(f);
    EXPECT_ERROR(imread(TM(path("text.png").c_str())), "imread: '" + path("text.png") + "' is neither a PNG nor a JPEG file");
    // A PNG cut short: libpng's reason is passed on.
    std::system(("head -c 60 " + data_file("rgb_4x3.png") + " > " + path("cut.png")).c_str());
    ak_test::Recorder rec(ak_test::Recorder::kErrors);
    imread(TM(path("cut.png").c_str()));
    ASSERT_EQ(rec.errors.size(), 1u);
    EXPECT_EQ(rec.errors[0].rfind("imread: cannot read '" + path("cut.png") + "' (", 0), 0u) << rec.errors[0];
    EXPECT_ERROR(imwrite(Mm(0.5), TM(path("x.gif").c_str())),
                 "imwrite: cannot tell the image format of '" + path("x.gif") + "'; give 'png' or 'jpg'");
}

}  // namespace
