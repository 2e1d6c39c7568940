// Builders and measures shared by the linear algebra tests.
#pragma once
#include <cmath>
#include <cstdint>
#include <vector>

#include "arklib.h"

namespace la_test {

// A rows x cols matrix from values listed row by row; with im, complex.
inline Mm mat(int rows, int cols, const std::vector<double>& re, const std::vector<double>& im = {}) {
    Mm m(!im.empty(), 0, 0, rows, cols, ak_double);
    for (int i = 0; i < rows; ++i)
        for (int j = 0; j < cols; ++j) {
            m.addr()[j * rows + i] = re[i * cols + j];
            if (!im.empty()) m.addi()[j * rows + i] = im[i * cols + j];
        }
    return m;
}

// Reproducible values uniform in (-1, 1).
inline Mm random_matrix(int rows, int cols, uint64_t seed, bool complex = false) {
    Mm m(complex, 0, 0, rows, cols, ak_double);
    uint64_t s = seed * 6364136223846793005ULL + 1442695040888963407ULL;
    auto next = [&s]() {
        s = s * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<double>(s >> 11) / 9007199254740992.0 * 2.0 - 1.0;
    };
    for (int k = 0; k < m.nnz; ++k) {
        m.addr()[k] = next();
        if (complex) m.addi()[k] = next();
    }
    return m;
}

// Frobenius norm, computed here so that the tests do not lean on the code under test.
inline double fro(const Mm& a0) {
    Mm a = full(a0);
    double s = 0.0;
    for (int k = 0; k < a.nnz; ++k) {
        s += a.addr()[k] * a.addr()[k];
        if (a.pi) s += a.addi()[k] * a.addi()[k];
    }
    return std::sqrt(s);
}

// Largest |a - b| over the elements of two matrices of the same shape (infinite if shapes differ).
inline double maxdiff(const Mm& a0, const Mm& b0) {
    Mm a = full(a0), b = full(b0);
    if (a.rows() != b.rows() || a.cols() != b.cols()) return INFINITY;
    double d = 0.0;
    for (int k = 0; k < a.nnz; ++k) {
        double dr = a.addr()[k] - b.addr()[k];
        double di = (a.pi ? a.addi()[k] : 0.0) - (b.pi ? b.addi()[k] : 0.0);
        d = std::fmax(d, std::hypot(dr, di));
    }
    return d;
}

// ||a x - b|| / (||a|| ||x|| eps): a backward-stable solve keeps this a small number.
inline double scaled_residual(const Mm& a, const Mm& x, const Mm& b) {
    return fro(minus(mtimes(a, x), b)) / (fro(a) * fro(x) * 2.220446049250313e-16);
}

// True when every element below the diagonal (above it when upper is false) is exactly zero.
inline bool triangular(const Mm& a0, bool upper) {
    Mm a = full(a0);
    for (int j = 0; j < a.cols(); ++j)
        for (int i = 0; i < a.rows(); ++i) {
            if (upper ? i <= j : i >= j) continue;
            int k = j * a.rows() + i;
            if (a.addr()[k] != 0.0 || (a.pi && a.addi()[k] != 0.0)) return false;
        }
    return true;
}

// The 2-D five-point Laplacian on a k x k grid, sparse, of order k^2.
inline Mm laplacian_2d(int k) {
    int n = k * k;
    std::vector<double> I, J, V;
    for (int x = 0; x < k; ++x)
        for (int y = 0; y < k; ++y) {
            int p = x * k + y;
            I.push_back(p + 1), J.push_back(p + 1), V.push_back(4.0);
            if (y + 1 < k) I.push_back(p + 1), J.push_back(p + 2), V.push_back(-1.0);
            if (y > 0) I.push_back(p + 1), J.push_back(p), V.push_back(-1.0);
            if (x + 1 < k) I.push_back(p + 1), J.push_back(p + k + 1), V.push_back(-1.0);
            if (x > 0) I.push_back(p + 1), J.push_back(p - k + 1), V.push_back(-1.0);
        }
    auto column = [](const std::vector<double>& v) {
        Mm c(0, 0, 0, static_cast<int>(v.size()), 1, ak_double);
        for (std::size_t q = 0; q < v.size(); ++q) c.addr()[q] = v[q];
        return c;
    };
    return sparse(column(I), column(J), column(V), Mm(n), Mm(n));
}

}  // namespace la_test
