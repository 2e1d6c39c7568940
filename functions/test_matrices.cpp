// The classic test matrices: magic squares, Hilbert and Pascal matrices, structured matrices built
// from vectors, and a small gallery.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/test_matrices.h"

namespace {

int order_argument(const char* function, const Mm& n) {
    const double v = scalar(n);
    if (!(v >= 0) || v > 46340 || v != std::floor(v)) {
        error("%s: order must be a non-negative integer", function);
        return -1;
    }
    return static_cast<int>(v);
}

Mm square(int n) { return Mm(0, 0, 0, n, n, ak_double); }

double& at(Mm& m, int r, int c) { return m.addr()[r + static_cast<std::size_t>(c) * m.dims[0]]; }

// Binomial coefficient as a double, exact while it fits in 53 bits.
double choose(int n, int k) {
    if (k < 0 || k > n) return 0;
    k = std::min(k, n - k);
    double r = 1;
    for (int j = 1; j <= k; ++j) r = r * (n - k + j) / j;
    return std::round(r);
}

std::vector<double> values_of(const Mm& v, bool& complex, std::vector<double>& im) {
    Mm d = mdouble(v);
    complex = d.pi != nullptr;
    if (complex) im.assign(d.addi(), d.addi() + d.size());
    return std::vector<double>(d.addr(), d.addr() + d.size());
}

}  // namespace

Mm magic(const Mm& n_arg) {
    const int n = order_argument("magic", n_arg);
    if (n < 0) return x_M;
    Mm m = square(n);
    if (n == 0) return m;
    if (n == 2) {  // no 2 x 2 magic square exists; the usual answer is [4 3; 1 2]
        at(m, 0, 0) = 4;
        at(m, 0, 1) = 3;
        at(m, 1, 0) = 1;
        at(m, 1, 1) = 2;
        return m;
    }
    if (n % 2 == 1) {
        // The Siamese method, started so that the middle of the top row holds 1 after the shift
        // the language uses: element (i, j) from the two diagonal counters.
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j) {
                const int a = ((i + 1) + (j + 1) - (n + 3) / 2 + 2 * n) % n;
                const int b = ((i + 1) + 2 * (j + 1) - 2 + 2 * n) % n;
                at(m, i, j) = n * a + b + 1;
            }
        return m;
    }
    if (n % 4 == 0) {
        // Doubly even: count across the rows, and replace the cells on the diagonals of every 4 x 4
        // block by their complement.
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j) {
                const double v = i * n + j + 1;
                const int ii = i % 4, jj = j % 4;
                const bool diag = ii == jj || ii + jj == 3;
                at(m, i, j) = diag ? n * n + 1 - v : v;
            }
        return m;
    }
    // Singly even (LUX method): four odd squares of order p in the quarters, with p^2, 2p^2 and
    // 3p^2 added, then columns exchanged between the left and right halves.
    const int p = n / 2;
    Mm small = magic(Mm(static_cast<double>(p)));
    const double add[2][2] = {{0, 2.0 * p * p}, {3.0 * p * p, 1.0 * p * p}};
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) at(m, i, j) = at(small, i % p, j % p) + add[i / p][j / p];
    const int k = (n - 2) / 4;
    auto swap_rows_of_column = [&](int col, int from_row, int to_row) {
        for (int i = from_row; i < to_row; ++i) std::swap(at(m, i, col), at(m, i + p, col));
    };
    for (int j = 0; j < k; ++j) swap_rows_of_column(j, 0, p);
    for (int j = n - k + 1; j < n; ++j) swap_rows_of_column(j, 0, p);
    // The middle row of the top-left quarter keeps its first cell and exchanges the next one.
    std::swap(at(m, k, 0), at(m, k + p, 0));
    std::swap(at(m, k, k), at(m, k + p, k));
    return m;
}

Mm hilb(const Mm& n_arg) {
    const int n = order_argument("hilb", n_arg);
    if (n < 0) return x_M;
    Mm h = square(n);
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) at(h, i, j) = 1.0 / (i + j + 1);
    return h;
}

Mm invhilb(const Mm& n_arg) {
    const int n = order_argument("invhilb", n_arg);
    if (n < 0) return x_M;
    Mm h = square(n);
    // The closed form: (-1)^(i+j) (i+j-1) C(n+i-1, n-j) C(n+j-1, n-i) C(i+j-2, i-1)^2, 1-based.
    for (int i = 1; i <= n; ++i)
        for (int j = 1; j <= n; ++j) {
            const double c = choose(i + j - 2, i - 1);
            const double v = (i + j - 1) * choose(n + i - 1, n - j) * choose(n + j - 1, n - i) * c * c;
            at(h, i - 1, j - 1) = ((i + j) % 2 ? -1 : 1) * v;
        }
    return h;
}

Mm pascal(const Mm& n_arg) {
    const int n = order_argument("pascal", n_arg);
    if (n < 0) return x_M;
    Mm p = square(n);
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) at(p, i, j) = choose(i + j, i);
    return p;
}

Mm rosser() {
    static const double r[8][8] = {{611, 196, -192, 407, -8, -52, -49, 29},     {196, 899, 113, -192, -71, -43, -8, -44},
                                   {-192, 113, 899, 196, 61, 49, 8, 52},        {407, -192, 196, 611, 8, 44, 59, -23},
                                   {-8, -71, 61, 8, 411, -599, 208, 208},       {-52, -43, 49, 44, -599, 411, 208, 208},
                                   {-49, -8, 8, 59, 208, 208, 99, -911},        {29, -44, 52, -23, 208, 208, -911, 99}};
    Mm m = square(8);
    for (int i = 0; i < 8; ++i)
        for (int j = 0; j < 8; ++j) at(m, i, j) = r[i][j];
    return m;
}

Mm wilkinson(const Mm& n_arg) {
    const int n = order_argument("wilkinson", n_arg);
    if (n < 0) return x_M;
    Mm w = square(n);
    std::fill(w.addr(), w.addr() + w.size(), 0.0);
    const double mid = (n - 1) / 2.0;
    for (int i = 0; i < n; ++i) {
        at(w, i, i) = std::fabs(i - mid);
        if (i + 1 < n) at(w, i, i + 1) = at(w, i + 1, i) = 1;
    }
    return w;
}

Mm vander(const Mm& c) {
    if (error_numeric(c, "vander")) return x_M;
    bool complex;
    std::vector<double> im;
    const std::vector<double> v = values_of(c, complex, im);
    if (complex) {
        error("vander: real data expected");
        return x_M;
    }
    const int n = static_cast<int>(v.size());
    Mm m = square(n);
    for (int i = 0; i < n; ++i) {
        double p = 1;
        for (int j = n - 1; j >= 0; --j) {
            at(m, i, j) = p;
            p *= v[i];
        }
    }
    return m;
}

Mm toeplitz(const Mm& c) { return toeplitz(c, c); }
Mm toeplitz(const Mm& c, const Mm& r) {
    if (error_numeric(c, "toeplitz") || error_numeric(r, "toeplitz")) return x_M;
    bool cc, rc;
    std::vector<double> ci, ri;
    const std::vector<double> col = values_of(c, cc, ci), row = values_of(r, rc, ri);
    const int m = static_cast<int>(col.size()), n = static_cast<int>(row.size());
    Mm t((cc || rc) ? 1 : 0, 0, 0, m, n, ak_double);
    // The column wins where the two disagree at the corner.
    for (int i = 0; i < m; ++i)
        for (int j = 0; j < n; ++j) {
            const bool below = i >= j;
            t.addr()[i + j * m] = below ? col[i - j] : row[j - i];
            if (t.pi) t.addi()[i + j * m] = below ? (cc ? ci[i - j] : 0) : (rc ? ri[j - i] : 0);
        }
    return t;
}

Mm hankel(const Mm& c) {
    Mm d = mdouble(c);
    Mm zeros_row(0, 0, 0, 1, d.size(), ak_double);
    std::fill(zeros_row.addr(), zeros_row.addr() + d.size(), 0.0);
    if (d.size()) zeros_row.addr()[0] = d.addr()[d.size() - 1];
    return hankel(c, zeros_row);
}
Mm hankel(const Mm& c, const Mm& r) {
    if (error_numeric(c, "hankel") || error_numeric(r, "hankel")) return x_M;
    bool cc, rc;
    std::vector<double> ci, ri;
    const std::vector<double> col = values_of(c, cc, ci), row = values_of(r, rc, ri);
    const int m = static_cast<int>(col.size()), n = static_cast<int>(row.size());
    Mm h(0, 0, 0, m, n, ak_double);
    for (int i = 0; i < m; ++i)
        for (int j = 0; j < n; ++j) h.addr()[i + j * m] = i + j < m ? col[i + j] : row[i + j - m + 1];
    return h;
}

Mm compan(const Mm& p) {
    if (error_numeric(p, "compan")) return x_M;
    bool complex;
    std::vector<double> im;
    const std::vector<double> c = values_of(p, complex, im);
    if (c.empty() || !is_vector(p)) {
        error("compan: a vector of coefficients expected");
        return x_M;
    }
    if (c[0] == 0) {
        error("compan: the first coefficient must not be zero");
        return x_M;
    }
    const int n = static_cast<int>(c.size()) - 1;
    Mm m = square(n);
    std::fill(m.addr(), m.addr() + m.size(), 0.0);
    for (int j = 0; j < n; ++j) at(m, 0, j) = -c[j + 1] / c[0];
    for (int i = 1; i < n; ++i) at(m, i, i - 1) = 1;
    return m;
}

Mm hadamard(const Mm& n_arg) {
    const int n = order_argument("hadamard", n_arg);
    if (n < 1 || (n & (n - 1)) != 0) {
        if (n >= 0) error("hadamard: order must be a power of 2");
        return x_M;
    }
    // Sylvester's doubling: H(2n) = [H H; H -H].
    Mm h = square(n);
    at(h, 0, 0) = 1;
    for (int size = 1; size < n; size *= 2)
        for (int i = 0; i < size; ++i)
            for (int j = 0; j < size; ++j) {
                const double v = at(h, i, j);
                at(h, i, j + size) = v;
                at(h, i + size, j) = v;
                at(h, i + size, j + size) = -v;
            }
    return h;
}

Mm gallery(const Mm& name, const Mm& n_arg) {
    char word[32];
    Mstr(name, word, sizeof word);
    const std::string w = word;
    if (w == "tridiag") return gallery(name, n_arg, Mm(-1.0), Mm(2.0), Mm(-1.0));
    const int n = order_argument("gallery", n_arg);
    if (n < 0) return x_M;
    Mm m = square(n);
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) {
            const int a = std::min(i, j) + 1, b = std::max(i, j) + 1;
            if (w == "minij")
                at(m, i, j) = a;
            else if (w == "lehmer")
                at(m, i, j) = static_cast<double>(a) / b;
            else if (w == "moler")  // L L' with L unit lower triangular, -1 below the diagonal
                at(m, i, j) = i == j ? i + 1.0 : a - 2.0;
            else if (w == "frank")  // upper Hessenberg with determinant 1
                at(m, i, j) = j + 1 < i ? 0.0 : static_cast<double>(n - std::max(i, j));
            else if (w == "ris")
                at(m, i, j) = 0.5 / (n - (i + 1) - (j + 1) + 1.5);
            else {
                error("gallery: unknown matrix name '%s'", word);
                return x_M;
            }
        }
    return m;
}

Mm gallery(const Mm& name, const Mm& n_arg, const Mm& sub, const Mm& diag, const Mm& super) {
    char word[32];
    Mstr(name, word, sizeof word);
    if (std::strcmp(word, "tridiag")) {
        error("gallery: unknown matrix name '%s'", word);
        return x_M;
    }
    const int n = order_argument("gallery", n_arg);
    if (n < 0) return x_M;
    const double lo = scalar(sub), mid = scalar(diag), hi = scalar(super);
    Mm m = square(n);
    std::fill(m.addr(), m.addr() + m.size(), 0.0);
    for (int i = 0; i < n; ++i) {
        at(m, i, i) = mid;
        if (i + 1 < n) {
            at(m, i + 1, i) = lo;
            at(m, i, i + 1) = hi;
        }
    }
    return m;
}

AK_BUILTIN("magic", magic);
AK_BUILTIN("hilb", hilb);
AK_BUILTIN("invhilb", invhilb);
AK_BUILTIN("pascal", pascal);
AK_BUILTIN("rosser", rosser);
AK_BUILTIN("wilkinson", wilkinson);
AK_BUILTIN("vander", vander);
AK_BUILTIN("toeplitz", AK_FN(toeplitz, const Mm&), AK_FN(toeplitz, const Mm&, const Mm&));
AK_BUILTIN("hankel", AK_FN(hankel, const Mm&), AK_FN(hankel, const Mm&, const Mm&));
AK_BUILTIN("compan", compan);
AK_BUILTIN("hadamard", hadamard);
AK_BUILTIN("gallery", AK_FN(gallery, const Mm&, const Mm&), AK_FN(gallery, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&));
