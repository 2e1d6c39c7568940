// wavread and wavwrite: round trips, the bytes of the files written, files of other programs and
// hand-made files with the extras and the faults a reader meets.
#include <stdlib.h>
#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "arklib.h"
#include "test_support.h"

namespace {

class WavFiles : public ::testing::Test {
  protected:
    void SetUp() override {
        char pattern[] = "/tmp/arklib_wav_XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        dir_ = pattern;
    }
    void TearDown() override { std::system(("rm -rf " + dir_).c_str()); }
    std::string path(const std::string& name) const { return dir_ + "/" + name; }
    Mm name(const std::string& file) const { return TM(path(file).c_str()); }

    std::string bytes(const std::string& file) const {
        std::ifstream in(path(file), std::ios::binary);
        std::stringstream s;
        s << in.rdbuf();
        return s.str();
    }
    void write_bytes(const std::string& file, const std::string& data) const {
        std::ofstream(path(file), std::ios::binary) << data;
    }

  private:
    std::string dir_;
};

std::uint32_t le(const std::string& b, std::size_t at, int n) {
    std::uint32_t v = 0;
    for (int k = n - 1; k >= 0; --k) v = v << 8 | static_cast<unsigned char>(b[at + k]);
    return v;
}

std::string le_bytes(std::uint32_t v, int n) {
    std::string s;
    for (int k = 0; k < n; ++k) s += static_cast<char>(v >> (8 * k) & 0xFF);
    return s;
}

// A RIFF file: the format block, any chunks given, then the data chunk; data_length overrides the
// true length of the data when not negative.
std::string riff(int tag, int channels, int rate, int bits, const std::string& data, const std::string& before = "",
                 long data_length = -1, const std::string& format_extra = "") {
    std::string fmt = le_bytes(tag, 2) + le_bytes(channels, 2) + le_bytes(rate, 4) +
                      le_bytes(rate * channels * bits / 8, 4) + le_bytes(channels * bits / 8, 2) + le_bytes(bits, 2) +
                      format_extra;
    std::string body = "WAVEfmt " + le_bytes(static_cast<std::uint32_t>(fmt.size()), 4) + fmt + before + "data" +
                       le_bytes(static_cast<std::uint32_t>(data_length < 0 ? data.size() : data_length), 4) + data;
    return "RIFF" + le_bytes(static_cast<std::uint32_t>(body.size()), 4) + body;
}

Mm column(std::initializer_list<double> v) {
    Mm m(0, 0, 0, static_cast<int>(v.size()), 1, ak_double);
    int k = 0;
    for (double x : v) m.addr()[k++] = x;
    return m;
}

}  // namespace

TEST_F(WavFiles, RoundTripsOfEachFormat) {
    Mm y(0, 0, 0, 9, 2, ak_double);
    for (int k = 0; k < 18; ++k) y.addr()[k] = -1.0 + k / 8.5;
    for (int bits : {8, 16}) {
        for (int channels : {1, 2}) {
            Mm data = channels == 2 ? y : column({-1.0, -0.5, 0.0, 0.25, 1.0});
            wavwrite(data, Mm(22050.0), Mm(bits), name("t.wav"));
            Mm rate, b;
            Mm back = wavread(name("t.wav"), i_o, rate, b);
            EXPECT_EQ(rate.r(), 22050.0);
            EXPECT_EQ(b.r(), bits);
            ASSERT_EQ(back.rows(), data.rows());
            ASSERT_EQ(back.cols(), channels);
            double step = bits == 8 ? 2.0 / 255 : 2.0 / 65535;
            for (int k = 0; k < data.nnz; ++k)
                EXPECT_NEAR(back.addr()[k], data.addr()[k], step) << bits << " bits, sample " << k;
        }
    }
    // The scales differ on purpose at 8 bits: 1.0 is written as 255 and read as 0.9921875; the
    // silence byte 128 reads as 0.
    wavwrite(column({1.0, 0.0, -1.0}), Mm(8000.0), Mm(8.0), name("e.wav"));
    Mm e = wavread(name("e.wav"));
    EXPECT_EQ(e.r(1), 0.9921875);
    EXPECT_EQ(e.r(2), 0.0);
    EXPECT_EQ(e.r(3), -1.0);
    EXPECT_EQ(bytes("e.wav").substr(44, 3), std::string("\xFF\x80\x00", 3));
    wavwrite(column({1.0, -1.0}), name("f.wav"));  // 16 bits at 8000 Hz by default
    Mm rate;
    Mm f = wavread(name("f.wav"), i_o, rate);
    EXPECT_EQ(rate.r(), 8000.0);
    EXPECT_EQ(f.r(1), 1.0);
    EXPECT_EQ(f.r(2), -1.0);
}

TEST_F(WavFiles, HeaderFieldsPadBytesAndNames) {
    Mm row = (BR(0.0), 0.5, -0.5);  // a row is one channel: three samples, an odd count
    wavwrite(row, Mm(11025.0), Mm(8.0), name("odd8"));
    std::string b = bytes("odd8.wav");  // ".wav" added to a name without a dot
    ASSERT_EQ(b.size(), 48u);           // 44 + 3 + the pad byte
    EXPECT_EQ(b.substr(0, 4), "RIFF");
    EXPECT_EQ(le(b, 4, 4), 39u);  // 36 + D, the pad byte not counted
    EXPECT_EQ(b.substr(8, 8), "WAVEfmt ");
    EXPECT_EQ(le(b, 16, 4), 16u);
    EXPECT_EQ(le(b, 20, 2), 1u);
    EXPECT_EQ(le(b, 22, 2), 1u);
    EXPECT_EQ(le(b, 24, 4), 11025u);
    EXPECT_EQ(le(b, 28, 4), 11025u);
    EXPECT_EQ(le(b, 32, 2), 1u);
    EXPECT_EQ(le(b, 34, 2), 8u);
    EXPECT_EQ(b.substr(36, 4), "data");
    EXPECT_EQ(le(b, 40, 4), 3u);
    EXPECT_EQ(b[47], '\0');
    EXPECT_EQ(wavread(name("odd8.wav")).rows(), 3);

    Mm stereo(0, 0, 0, 3, 2, ak_double);  // 6 samples: no pad
    for (int k = 0; k < 6; ++k) stereo.addr()[k] = k < 3 ? 0.0 : 1.0;
    wavwrite(stereo, Mm(8000.0), Mm(16.0), name("s.wav"));
    b = bytes("s.wav");
    ASSERT_EQ(b.size(), 44u + 12u);
    EXPECT_EQ(le(b, 28, 4), 32000u);
    EXPECT_EQ(le(b, 32, 2), 4u);
    EXPECT_EQ(le(b, 44, 2), 0u);       // left, then right, frame by frame
    EXPECT_EQ(le(b, 46, 2), 0x7FFFu);
    wavwrite(column({0.0, 0.0, 0.0}), Mm(8000.0), Mm(16.0), name("odd16.wav"));
    EXPECT_EQ(bytes("odd16.wav").size(), 44u + 6u + 1u);  // the count of samples is odd
    wavwrite(column({0.0}), name("x.b"));
    EXPECT_EQ(bytes("x.b").size(), 44u + 2u + 1u);  // written under its own name
}

TEST_F(WavFiles, ClippingAndWriterMessages) {
    ak_test::Recorder rec;
    wavwrite(column({1.5, -3.0, 2.0, 0.0}), Mm(8000.0), Mm(16.0), name("c.wav"));
    ASSERT_EQ(rec.warnings.size(), 1u);
    EXPECT_NE(rec.warnings[0].find("wavwrite: some data values were outside the [-1,1] range"), std::string::npos);
    Mm c = wavread(name("c.wav"));
    EXPECT_EQ(c.r(1), 1.0);
    EXPECT_EQ(c.r(2), -1.0);

    ak_test::ErrorsThrow guard;
    Mm three(0, 0, 0, 4, 3, ak_double);
    for (int k = 0; k < 12; ++k) three.addr()[k] = 0.0;
    EXPECT_ERROR(wavwrite(three, name("three.wav")), "wavwrite: input data is neither mono nor stereo");
    EXPECT_TRUE(bytes("three.wav").empty());  // stopped before the file was made
    EXPECT_ERROR(wavwrite(column({0.0}), Mm(8000.0), Mm(12.0), name("b.wav")),
                 "wavwrite: number of bits per sample must be 8 or 16");
    EXPECT_ERROR(wavwrite(column({0.0}), name("no/such/dir/a.wav")), "wavwrite: could not write file");
    EXPECT_ERROR(wavwrite(column({0.0})), "wavwrite does not accept 1 input");
}

TEST_F(WavFiles, FilesOfAnotherProgram) {
    const std::string data = ARKLIB_TEST_DATA;
    Mm rate, bits;
    Mm s16 = wavread(TM((data + "/sox_mono16.wav").c_str()), i_o, rate, bits);
    EXPECT_EQ(rate.r(), 8000.0);
    EXPECT_EQ(bits.r(), 16.0);
    ASSERT_EQ(s16.rows(), 80);
    ASSERT_EQ(s16.cols(), 1);
    // The same half-scale sine, read from each resolution, agrees to the coarser one's step.
    struct { const char* file; double bits, tolerance; int channels; } files[] = {
        {"sox_mono24.wav", 24, 2.0 / 32768, 1},
        {"sox_mono32.wav", 32, 2.0 / 32768, 1},
        {"sox_stereo_float.wav", 32, 2.0 / 32768, 2},
        {"sox_stereo8.wav", 8, 2.0 / 128, 2},
    };
    for (const auto& f : files) {
        Mm y = wavread(TM((data + "/" + f.file).c_str()), i_o, rate, bits);
        EXPECT_EQ(bits.r(), f.bits) << f.file;
        ASSERT_EQ(y.rows(), 80) << f.file;
        ASSERT_EQ(y.cols(), f.channels) << f.file;
        double peak = 0;
        for (int k = 0; k < 80; ++k) {
            EXPECT_NEAR(y.addr()[k], s16.addr()[k], f.tolerance) << f.file << " sample " << k;
            peak = std::max(peak, std::fabs(y.addr()[k]));
        }
        EXPECT_NEAR(peak, 0.5, 0.02) << f.file;
    }
}

TEST_F(WavFiles, HandMadeExtrasAndChunks) {
    // 24-bit extremes and 32-bit float samples, and an extensible block naming PCM.
    std::string d24 = le_bytes(0x7FFFFF, 3) + le_bytes(0x800000, 3) + le_bytes(0, 3);
    write_bytes("a24.wav", riff(1, 1, 8000, 24, d24));
    Mm a = wavread(name("a24.wav"));
    ASSERT_EQ(a.rows(), 3);
    EXPECT_EQ(a.r(1), 1.0);
    EXPECT_EQ(a.r(2), -1.0);
    EXPECT_NEAR(a.r(3), 0.0, 1e-6);
    float samples[] = {0.25f, -0.75f};
    write_bytes("f.wav", riff(3, 2, 8000, 32, std::string(reinterpret_cast<char*>(samples), 8)));
    Mm f = wavread(name("f.wav"));
    ASSERT_EQ(f.cols(), 2);
    EXPECT_EQ(f.r(1, 1), 0.25);
    EXPECT_EQ(f.r(1, 2), -0.75);
    std::string ext = le_bytes(22, 2) + le_bytes(16, 2) + le_bytes(4, 4) + le_bytes(1, 2) + std::string(14, 'g');
    write_bytes("x.wav", riff(0xFFFE, 1, 8000, 16, le_bytes(0x8000, 2), "", -1, ext));
    EXPECT_EQ(wavread(name("x.wav")).r(), -1.0);
    // Chunks before the data are skipped: an even LIST chunk, and an empty one.
    write_bytes("l.wav", riff(1, 1, 8000, 8, "\xFF", "LIST" + le_bytes(4, 4) + "INFO" + "junk" + le_bytes(0, 4)));
    EXPECT_EQ(wavread(name("l.wav")).r(), 0.9921875);
}

TEST_F(WavFiles, BrokenFilesGiveMessages) {
    ak_test::ErrorsThrow guard;
    EXPECT_ERROR(wavread(name("missing.wav")), "wavrwad: could not read file");
    write_bytes("r.wav", "RIFX" + riff(1, 1, 8000, 8, "a").substr(4));
    EXPECT_ERROR(wavread(name("r.wav")), "wavread: 'RIFF' not found");
    std::string good = riff(1, 1, 8000, 16, le_bytes(0, 2) + le_bytes(1, 2));
    std::string w = good;
    w[8] = 'X';
    write_bytes("w.wav", w);
    EXPECT_ERROR(wavread(name("w.wav")), "wavread: 'WAVE' not found");
    w = good;
    w[14] = 'X';
    write_bytes("m.wav", w);
    EXPECT_ERROR(wavread(name("m.wav")), "wavread: 'fmt ' not found");
    write_bytes("b.wav", riff(1, 1, 8000, 12, "ab"));
    EXPECT_ERROR(wavread(name("b.wav")), "wavread: number of bits per sample must be 8 or 16");
    write_bytes("g.wav", riff(2, 1, 8000, 16, "ab"));
    EXPECT_ERROR(wavread(name("g.wav")), "wavread: format 2 is neither PCM nor IEEE float");
    write_bytes("h.wav", good.substr(0, 30));  // cut inside the format block
    EXPECT_ERROR(wavread(name("h.wav")), "wavread: the format block is cut short");
    write_bytes("n.wav", good.substr(0, 36));  // no chunk after the format block
    EXPECT_ERROR(wavread(name("n.wav")), "wavread: 'data' not found");
    write_bytes("t.wav", good.substr(0, good.size() - 1));  // data cut short
    EXPECT_ERROR(wavread(name("t.wav")), "wavread: the data chunk is longer than the file");
    write_bytes("lie.wav", riff(1, 2, 8000, 16, "abcd", "", 0xFFFFFFF0));  // a header that lies
    EXPECT_ERROR(wavread(name("lie.wav")), "wavread: the data chunk is longer than the file");
    write_bytes("skip.wav", riff(1, 1, 8000, 8, "ab", "JUNK" + le_bytes(0x7FFFFFFF, 4)));
    EXPECT_ERROR(wavread(name("skip.wav")), "wavread: 'data' not found");
}
