// Builders and readers for the tests of the element-wise engine and the matrix products.
#pragma once
#include <cmath>
#include <initializer_list>
#include <vector>

#include "arklib.h"
#include "tests/test_support.h"

namespace engine_test {

// An r x c real matrix from values given row by row.
inline Mm mat(int r, int c, std::initializer_list<double> row_major) {
    Mm m(0, 0, 0, r, c, ak_double);
    std::vector<double> v(row_major);
    for (int i = 0; i < r; ++i)
        for (int j = 0; j < c; ++j) m.addr()[j * r + i] = v[static_cast<std::size_t>(i) * c + j];
    return m;
}

using ak_test::row;

// A complex row from real and imaginary parts.
inline Mm crow(std::initializer_list<double> re, std::initializer_list<double> im) {
    Mm m(1, 0, 0, 1, static_cast<int>(re.size()), ak_double);
    int k = 0;
    for (double x : re) m.addr()[k++] = x;
    k = 0;
    for (double y : im) m.addi()[k++] = y;
    return m;
}

// A matrix of any shape holding 1, 2, 3, ... in column-major order.
inline Mm counting(int ndims, const int* dims) {
    Mm m(0, 0, 0, ndims, dims, ak_double);
    for (int k = 0; k < m.nnz; ++k) m.addr()[k] = k + 1;
    return m;
}

using ak_test::bytes;

inline std::vector<double> re(const Mm& m) {
    if (m.flags.type == ak_uchar) {
        const unsigned char* b = static_cast<const unsigned char*>(m.pr);
        return std::vector<double>(b, b + m.nnz);
    }
    return std::vector<double>(m.addr(), m.addr() + m.nnz);
}
inline std::vector<double> im(const Mm& m) {
    return m.pi ? std::vector<double>(m.addi(), m.addi() + m.nnz) : std::vector<double>();
}
inline std::vector<int> dims(const Mm& m) { return {m.dims[0], m.dims[1], m.dims[2], m.dims[3]}; }

// The equality of doubles that also holds for two NaN.
inline bool same(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

}  // namespace engine_test

#define EXPECT_VALUES(m, ...)                                                                  \
    do {                                                                                       \
        std::vector<double> ak_want_ = __VA_ARGS__;                                            \
        std::vector<double> ak_got_ = engine_test::re(m);                                      \
        ASSERT_EQ(ak_want_.size(), ak_got_.size());                                            \
        for (std::size_t ak_k_ = 0; ak_k_ < ak_want_.size(); ++ak_k_)                          \
            EXPECT_TRUE(engine_test::same(ak_want_[ak_k_], ak_got_[ak_k_]))                    \
                << "element " << ak_k_ << ": " << ak_got_[ak_k_] << " != " << ak_want_[ak_k_]; \
    } while (0)
