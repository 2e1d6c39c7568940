// Transforms, filters and correlation against definitions computed here by direct sums, and
// against signals whose spectra are known in closed form.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <random>
#include <vector>

#include "arklib.h"
#include "tests/test_support.h"

using ak_test::row;
using cplx = std::complex<double>;

namespace {

const double kPi = std::acos(-1.0);

Mm random_matrix(int rows, int cols, unsigned seed, bool complex = false) {
    std::mt19937 gen(seed);
    std::uniform_real_distribution<double> u(-1, 1);
    Mm m(complex ? 1 : 0, 0, 0, rows, cols, ak_double);
    for (int k = 0; k < rows * cols; ++k) {
        m.addr()[k] = u(gen);
        if (complex) m.addi()[k] = u(gen);
    }
    return m;
}

cplx at(const Mm& m, int k) { return {m.addr()[k], m.pi ? m.addi()[k] : 0.0}; }

// The DFT by its definition.
std::vector<cplx> naive_dft(const std::vector<cplx>& x, int sign) {
    const int n = static_cast<int>(x.size());
    std::vector<cplx> r(n);
    for (int k = 0; k < n; ++k)
        for (int j = 0; j < n; ++j) r[k] += x[j] * std::polar(1.0, sign * 2 * kPi * j * k / n);
    return r;
}

TEST(Fourier, MatchesTheDefinitionAndInvertsToRealData) {
    for (int n : {1, 2, 7, 16, 97}) {
        Mm x = random_matrix(n, 1, n, true);
        Mm X = fft(x);
        std::vector<cplx> v(n);
        for (int k = 0; k < n; ++k) v[k] = at(x, k);
        const std::vector<cplx> want = naive_dft(v, -1);
        for (int k = 0; k < n; ++k) EXPECT_LT(std::abs(at(X, k) - want[k]), 1e-12 * n) << n << " " << k;
    }
    Mm x = random_matrix(1, 33, 5);
    Mm spectrum = fft(x);
    const double first_bin = spectrum.addr()[1];
    Mm back = ifft(spectrum);
    EXPECT_EQ(spectrum.addr()[1], first_bin) << "the inverse must not write into its input";
    EXPECT_EQ(back.pi, nullptr) << "the inverse of a conjugate-symmetric spectrum is real";
    ASSERT_EQ(back.dims[1], 33);
    for (int k = 0; k < 33; ++k) EXPECT_NEAR(back.addr()[k], x.addr()[k], 1e-14);
    // Parseval: energy is kept, up to the factor n.
    Mm X = fft(x);
    double ex = 0, eX = 0;
    for (int k = 0; k < 33; ++k) {
        ex += x.addr()[k] * x.addr()[k];
        eX += std::norm(at(X, k));
    }
    EXPECT_NEAR(eX / 33, ex, 1e-12);
}

TEST(Fourier, KnownSpectraPaddingAndDimensions) {
    // A cosine of 3 cycles in 16 samples has n/2 at bins 3 and 13 and nothing elsewhere.
    Mm c(0, 0, 0, 1, 16, ak_double);
    for (int k = 0; k < 16; ++k) c.addr()[k] = std::cos(2 * kPi * 3 * k / 16);
    Mm C = fft(c);
    EXPECT_EQ(C.dims[0], 1);
    for (int k = 0; k < 16; ++k) EXPECT_NEAR(std::abs(at(C, k)), (k == 3 || k == 13) ? 8.0 : 0.0, 1e-12);
    // Padding to 4: [1 2 0 0] has the spectrum 3, 1-2i, -1, 1+2i; cutting keeps the first points.
    Mm P = fft(row({1, 2}), Mm(4.0));
    const cplx want[4] = {{3, 0}, {1, -2}, {-1, 0}, {1, 2}};
    for (int k = 0; k < 4; ++k) EXPECT_NEAR(std::abs(at(P, k) - want[k]), 0, 1e-14);
    EXPECT_NEAR(at(fft(row({1, 2, 3}), Mm(1.0)), 0).real(), 1.0, 0);
    // Along the second dimension of a matrix, each row separately; fft2 is both in turn.
    Mm m = random_matrix(3, 4, 9);
    Mm rows = fft(m, Mm(), Mm(2.0));
    for (int r = 0; r < 3; ++r) {
        std::vector<cplx> v(4);
        for (int k = 0; k < 4; ++k) v[k] = at(m, r + 3 * k);
        const std::vector<cplx> want_row = naive_dft(v, -1);
        for (int k = 0; k < 4; ++k) EXPECT_LT(std::abs(at(rows, r + 3 * k) - want_row[k]), 1e-12);
    }
    Mm both = fft2(m), cols_then_rows = fft(fft(m), Mm(), Mm(2.0));
    for (int k = 0; k < 12; ++k) EXPECT_LT(std::abs(at(both, k) - at(cols_then_rows, k)), 1e-12);
    Mm round = ifftn(fftn(m));
    for (int k = 0; k < 12; ++k) EXPECT_NEAR(round.addr()[k], m.addr()[k], 1e-14);
    EXPECT_ERROR(fft(row({1, 2}), Mm(0.0)), "fft: n must be a positive integer");
    EXPECT_ERROR(fft(row({1, 2}), Mm(2.5)), "fft: n must be a positive integer");
}

TEST(Fourier, ShiftsMoveTheZeroFrequencyToTheMiddleAndBack) {
    Mm s = fftshift(row({1, 2, 3, 4, 5}));
    const double want[5] = {4, 5, 1, 2, 3};
    for (int k = 0; k < 5; ++k) EXPECT_EQ(s.addr()[k], want[k]);
    Mm back = ifftshift(s);
    for (int k = 0; k < 5; ++k) EXPECT_EQ(back.addr()[k], k + 1.0);
    // A matrix shifts along both dimensions; with dim, along that one only.
    Mm m = random_matrix(2, 3, 4);
    Mm both = fftshift(m);
    EXPECT_EQ(both.addr()[0], m.addr()[1 + 2 * 2]);  // (1,1) gets (2,3)
    Mm along_rows = fftshift(m, Mm(1.0));
    EXPECT_EQ(along_rows.addr()[0], m.addr()[1]);
}

TEST(Filter, AgreesWithDirectSumsAndKeepsState) {
    Mm x = random_matrix(50, 1, 1);
    Mm b = row({0.5, -0.25, 0.125}), a = row({2, -0.5});  // normalised by a(1) = 2
    Mm y = filter(b, a, x);
    std::vector<double> want(50);
    for (int k = 0; k < 50; ++k) {
        double s = 0;
        for (int j = 0; j < 3; ++j)
            if (k - j >= 0) s += b.addr()[j] * x.addr()[k - j];
        if (k >= 1) s += 0.5 * want[k - 1];
        want[k] = s / 2;
    }
    ASSERT_EQ(y.dims[0], 50);
    for (int k = 0; k < 50; ++k) EXPECT_NEAR(y.addr()[k], want[k], 1e-14);
    // A FIR filter is the start of the convolution.
    Mm fir = filter(b, Mm(1.0), x), full_conv = conv2(x, transpose(b));
    for (int k = 0; k < 50; ++k) EXPECT_NEAR(fir.addr()[k], full_conv.addr()[k], 1e-14);
    // Filtering in two pieces, the final state of the first as the initial state of the second,
    // gives the same as filtering the whole.
    Mm first(0, 0, 0, 20, 1, ak_double), second(0, 0, 0, 30, 1, ak_double);
    for (int k = 0; k < 20; ++k) first.addr()[k] = x.addr()[k];
    for (int k = 0; k < 30; ++k) second.addr()[k] = x.addr()[20 + k];
    Mm zf, zf2;
    Mm y1 = filter(b, a, first, Mm(), i_o, zf);
    EXPECT_EQ(zf.dims[0], 2);
    Mm y2 = filter(b, a, second, zf, i_o, zf2);
    for (int k = 0; k < 30; ++k) EXPECT_NEAR(y2.addr()[k], want[20 + k], 1e-14);
    // Columns of a matrix are filtered separately; a row along its length.
    Mm rows = filter(Mm(1.0), row({1, -1}), row({1, 0, 0, 0}));
    for (int k = 0; k < 4; ++k) EXPECT_EQ(rows.addr()[k], 1.0);
    EXPECT_ERROR(filter(Mm(1.0), row({0, 1}), x), "filter: first coefficient of a must not be zero");
    EXPECT_ERROR(filter(b, a, x, row({1, 2, 3})),
                 "filter: initial conditions must have max(length(a), length(b)) - 1 rows for each vector filtered");
}

TEST(Convolution, ShapesAndValues) {
    Mm a = row({1, 2, 3}), k = row({1, 1, 1});
    Mm f = conv2(a, k), same = conv2(a, k, TM("same")), valid = conv2(a, k, TM("valid"));
    const double want_full[5] = {1, 3, 6, 5, 3};
    for (int i = 0; i < 5; ++i) EXPECT_EQ(f.addr()[i], want_full[i]);
    EXPECT_EQ(same.dims[1], 3);
    EXPECT_EQ(same.addr()[0], 3.0);
    EXPECT_EQ(same.addr()[2], 5.0);
    EXPECT_EQ(valid.size(), 1);
    EXPECT_EQ(valid.addr()[0], 6.0);
    // 2-D against the double sum, complex kernel included.
    Mm A = random_matrix(4, 5, 2), K = random_matrix(2, 3, 3, true);
    Mm C = conv2(A, K);
    ASSERT_EQ(C.dims[0], 5);
    ASSERT_EQ(C.dims[1], 7);
    for (int i = 0; i < 5; ++i)
        for (int j = 0; j < 7; ++j) {
            cplx s = 0;
            for (int p = 0; p < 4; ++p)
                for (int q = 0; q < 5; ++q)
                    if (i - p >= 0 && i - p < 2 && j - q >= 0 && j - q < 3) s += A.addr()[p + 4 * q] * at(K, (i - p) + 2 * (j - q));
            EXPECT_LT(std::abs(at(C, i + 5 * j) - s), 1e-13);
        }
    // filter2 correlates: a kernel with one 1 at its start picks the element after.
    Mm picked = filter2(row({1, 0}), row({1, 2, 3}), TM("valid"));
    EXPECT_EQ(picked.addr()[0], 1.0);
    EXPECT_EQ(picked.addr()[1], 2.0);
    EXPECT_ERROR(conv2(a, k, TM("middle")), "conv2: shape must be 'full', 'same' or 'valid'");
}

TEST(Correlation, DirectAndTransformPathsAgreeWithTheDefinition) {
    for (int n : {5, 300}) {
        Mm x = random_matrix(n, 1, 10 + n), y = random_matrix(n, 1, 20 + n);
        Mm lags;
        Mm r = xcorr(x, y, i_o, lags);
        ASSERT_EQ(r.size(), 2 * n - 1);
        for (int m : {-(n - 1), -1, 0, 2, n - 1}) {
            double s = 0;
            for (int j = 0; j < n; ++j)
                if (j + m >= 0 && j + m < n) s += x.addr()[j + m] * y.addr()[j];
            EXPECT_NEAR(r.addr()[m + n - 1], s, 1e-11) << n << " lag " << m;
            EXPECT_EQ(lags.addr()[m + n - 1], m);
        }
    }
    Mm c = xcorr(row({1, 2, 3}), row({1, 2, 3}), TM("coeff"));
    EXPECT_EQ(c.dims[0], 1);
    EXPECT_NEAR(c.addr()[2], 1.0, 1e-15);
    Mm u = xcorr(row({1, 1, 1}), row({1, 1, 1}), TM("unbiased"));
    for (int k = 0; k < 5; ++k) EXPECT_NEAR(u.addr()[k], 1.0, 1e-15);
}

TEST(Spectral, FrequencyResponseWindowsDetrendNextpow2) {
    Mm w;
    Mm h = freqz(row({1, 1}), Mm(1.0), Mm(4.0), i_o, w);
    EXPECT_NEAR(std::abs(at(h, 0) - cplx(2, 0)), 0, 1e-15);
    EXPECT_NEAR(w.addr()[2], kPi / 2, 1e-15);
    EXPECT_NEAR(std::abs(at(h, 2) - cplx(1, -1)), 0, 1e-15);  // 1 + e^{-i pi/2}
    Mm hm = hamming(Mm(3.0)), hn = hanning(Mm(3.0));
    EXPECT_EQ(hm.dims[0], 3);
    EXPECT_NEAR(hm.addr()[0], 0.08, 1e-15);
    EXPECT_NEAR(hm.addr()[1], 1.0, 1e-15);
    EXPECT_NEAR(hn.addr()[0], 0.5, 1e-15);
    EXPECT_NEAR(hn.addr()[1], 1.0, 1e-15);
    Mm line = detrend(row({3, 5, 7, 9}));
    for (int k = 0; k < 4; ++k) EXPECT_NEAR(line.addr()[k], 0, 1e-14);
    Mm centred = detrend(row({1, 2, 6}), TM("constant"));
    EXPECT_NEAR(centred.addr()[2], 3.0, 1e-15);
    Mm p = nextpow2(row({0, 1, 1000, 1024, 1025, -8}));
    const double want[6] = {0, 0, 10, 10, 11, 3};
    for (int k = 0; k < 6; ++k) EXPECT_EQ(p.addr()[k], want[k]);
}

}  // namespace
