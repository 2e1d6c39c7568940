// zeros, ones, eye, czeros, ceye and the size-argument reader they share with rand and cell.
#include <climits>
#include <cmath>
#include <initializer_list>
#include <vector>

#include "arklib.h"
#include "test_support.h"
#include "tests/core/engine_test_support.h"

using namespace engine_test;

namespace {

std::vector<int> shape(const Mm& m) { return std::vector<int>(m.dims, m.dims + m.ndims); }

bool all_equal(const Mm& m, double v) {
    for (int k = 0; k < m.nnz; ++k)
        if (m.addr()[k] != v) return false;
    return true;
}

// 1 where row == col on every page, else 0.
bool is_identity(const Mm& m) {
    int rows = m.dims[0], cols = m.dims[1];
    for (int k = 0; k < m.nnz; ++k) {
        int r = k % rows, c = (k / rows) % cols;
        if (m.addr()[k] != (r == c ? 1.0 : 0.0)) return false;
    }
    return true;
}

}  // namespace

TEST(Constructors, ValuesAndComplexForms) {
    EXPECT_EQ(eye().r(), 1.0);

    Mm z = zeros(2.0, 3.0);
    EXPECT_EQ(shape(z), (std::vector<int>{2, 3}));
    EXPECT_TRUE(all_equal(z, 0.0));
    EXPECT_FALSE(z.isc());
    Mm o = ones(row({2, 3, 4}));
    EXPECT_EQ(shape(o), (std::vector<int>{2, 3, 4}));
    EXPECT_TRUE(all_equal(o, 1.0));

    EXPECT_TRUE(is_identity(eye(2.0, 4.0)));
    Mm pages = eye(Mm(3.0), Mm(2.0), Mm(2.0));
    EXPECT_EQ(shape(pages), (std::vector<int>{3, 2, 2}));
    EXPECT_TRUE(is_identity(pages));

    EXPECT_TRUE(czeros(1, 2.0, 2.0).isc());
    EXPECT_FALSE(czeros(0, 2.0).isc());
    Mm ci = ceye(1, Mm(3.0));
    ASSERT_TRUE(ci.isc());
    EXPECT_TRUE(is_identity(ci));
    for (int k = 0; k < 9; ++k) EXPECT_EQ(ci.addi()[k], 0.0);
    EXPECT_EQ(shape(ceye(1, Mm(2.0), Mm(3.0))), (std::vector<int>{2, 3}));
}

TEST(SizeArguments, OneArgumentAndSeveral) {
    int d[4];
    EXPECT_EQ(ak_internal::read_size_arguments("f", Mm(3.0), d), 2);
    EXPECT_EQ(std::vector<int>(d, d + 4), (std::vector<int>{3, 3, 1, 1}));
    // Vectors of 2 to 4 elements are the sizes; trailing ones are dropped by the constructor.
    EXPECT_EQ(ak_internal::read_size_arguments("f", row({2, 3, 4, 1}), d), 4);
    EXPECT_EQ(std::vector<int>(d, d + 4), (std::vector<int>{2, 3, 4, 1}));
    EXPECT_EQ(shape(zeros(row({2, 3, 4, 1}))), (std::vector<int>{2, 3, 4}));
    // Anything else gives its own size: a 2 x 2 matrix, a 5-element vector, an empty matrix.
    EXPECT_EQ(shape(ones(row({7, 7, 7, 7, 7}))), (std::vector<int>{1, 5}));
    EXPECT_EQ(zeros(Mm()).size(), 0);
    // Sizes round to nearest; negative and NaN are 0; a byte and a sparse scalar read as numbers.
    EXPECT_EQ(zeros(Mm(2.5)).rows(), 3);
    EXPECT_EQ(zeros(Mm(-3.0)).size() + zeros(Mm(NAN)).size(), 0);
    EXPECT_EQ(shape(ones(bytes({4}))), (std::vector<int>{4, 4}));
    EXPECT_EQ(shape(ones(sparse(Mm(2.0)))), (std::vector<int>{2, 2}));

    EXPECT_EQ(shape(zeros(Mm(2.0), Mm(3.0), Mm(1.0), Mm(5.0))), (std::vector<int>{2, 3, 1, 5}));
    EXPECT_EQ(shape(zeros(Mm(2.0), Mm(3.0), Mm(1.0), Mm(1.0))), (std::vector<int>{2, 3}));
    EXPECT_EQ(zeros(Mm(2.0), Mm()).size(), 0);  // an empty size is 0
    EXPECT_ERROR(zeros(Mm(2.0), row({1, 2})), "zeros: size arguments must be scalars");
    EXPECT_ERROR(ones(Mm(2.0), cell(Mm(1.0))), "ones: size arguments must be numeric");
    EXPECT_ERROR(czeros(1, Mm(1e6), Mm(1e6)), "Out of memory!");
    EXPECT_ERROR(zeros(Mm(1e300), Mm(1.0)), "Out of memory!");  // a size beyond int
    // A value without a value is reported as such.
    Mm unset(i_o, "unset", 0);
    EXPECT_ERROR(zeros(unset), "variable 'unset' was used without a value");
}
