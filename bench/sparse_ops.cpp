// Sparse operations on the 2-D Laplacian of a 200 x 200 grid (40,000 unknowns, 199,200 entries),
// each timed against a plain compressed-column loop written here, alternately in one run
// (bench/paired.h): sum(A), sum(A, 2), A * x with a full vector, and A * A against a plain
// column-merge (Gustavson) product with a dense accumulator.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <vector>

#include "arklib.h"
#include "bench/paired.h"

namespace {

constexpr int grid = 200;
constexpr int unknowns = grid * grid;

// The five-point Laplacian, built with sparse(i, j, v, n, n).
Mm laplacian() {
    std::vector<double> i, j, v;
    auto add = [&](int r, int c, double x) {
        i.push_back(r + 1.0);
        j.push_back(c + 1.0);
        v.push_back(x);
    };
    for (int y = 0; y < grid; ++y)
        for (int x = 0; x < grid; ++x) {
            int k = y * grid + x;
            add(k, k, 4.0);
            if (x > 0) add(k, k - 1, -1.0);
            if (x + 1 < grid) add(k, k + 1, -1.0);
            if (y > 0) add(k, k - grid, -1.0);
            if (y + 1 < grid) add(k, k + grid, -1.0);
        }
    const int n = static_cast<int>(i.size());
    Mm I(0, 0, 0, n, 1, ak_double), J(0, 0, 0, n, 1, ak_double), V(0, 0, 0, n, 1, ak_double);
    std::copy(i.begin(), i.end(), I.addr());
    std::copy(j.begin(), j.end(), J.addr());
    std::copy(v.begin(), v.end(), V.addr());
    return sparse(I, J, V, Mm(double(unknowns)), Mm(double(unknowns)));
}

// The same matrix as plain compressed columns.
struct csc {
    int m = 0, n = 0;
    std::vector<int> jc, ir;
    std::vector<double> v;
};

csc compressed(const Mm& a) {
    csc c;
    c.m = a.dims[0];
    c.n = a.dims[1];
    c.jc.assign(c.n + 1, 0);
    for (int k = 0; k < a.nnz; ++k) {
        c.ir.push_back(a.index[k] % c.m);
        c.v.push_back(a.addr()[k]);
        ++c.jc[a.index[k] / c.m + 1];
    }
    for (int j = 0; j < c.n; ++j) c.jc[j + 1] += c.jc[j];
    return c;
}

std::vector<double> column_sums(const csc& a) {
    std::vector<double> s(a.n);
    for (int j = 0; j < a.n; ++j) {
        double t = 0;
        for (int k = a.jc[j]; k < a.jc[j + 1]; ++k) t += a.v[k];
        s[j] = t;
    }
    return s;
}

std::vector<double> row_sums(const csc& a) {
    std::vector<double> s(a.m, 0.0);
    for (int j = 0; j < a.n; ++j)
        for (int k = a.jc[j]; k < a.jc[j + 1]; ++k) s[a.ir[k]] += a.v[k];
    return s;
}

std::vector<double> times_vector(const csc& a, const std::vector<double>& x) {
    std::vector<double> y(a.m, 0.0);
    for (int j = 0; j < a.n; ++j) {
        const double xj = x[j];
        for (int k = a.jc[j]; k < a.jc[j + 1]; ++k) y[a.ir[k]] += a.v[k] * xj;
    }
    return y;
}

// Column j of the product gathers b(p, j) times column p of a in a dense accumulator; the rows
// touched are sorted so that the result is in compressed-column order.
csc gustavson(const csc& a, const csc& b) {
    csc c;
    c.m = a.m;
    c.n = b.n;
    c.jc.assign(c.n + 1, 0);
    std::vector<double> acc(a.m, 0.0);
    std::vector<int> mark(a.m, -1), rows;
    for (int j = 0; j < b.n; ++j) {
        rows.clear();
        for (int kb = b.jc[j]; kb < b.jc[j + 1]; ++kb) {
            const int p = b.ir[kb];
            const double x = b.v[kb];
            for (int ka = a.jc[p]; ka < a.jc[p + 1]; ++ka) {
                const int i = a.ir[ka];
                if (mark[i] != j) mark[i] = j, acc[i] = 0.0, rows.push_back(i);
                acc[i] += a.v[ka] * x;
            }
        }
        std::sort(rows.begin(), rows.end());
        for (int i : rows) {
            if (acc[i] == 0.0) continue;
            c.ir.push_back(i);
            c.v.push_back(acc[i]);
        }
        c.jc[j + 1] = static_cast<int>(c.ir.size());
    }
    return c;
}

struct fixture {
    Mm a = laplacian();
    csc plain = compressed(a);
    Mm x = Mm(0, 0, 0, unknowns, 1, ak_double);
    std::vector<double> xv = std::vector<double>(unknowns);
    fixture() {
        for (int k = 0; k < unknowns; ++k) xv[k] = x.addr()[k] = 1.0 + k % 7;
    }
};

fixture& data() {
    static fixture f;
    return f;
}

void sum_columns(benchmark::State& state) {
    fixture& f = data();
    ak_bench::paired(
        state, [&] { benchmark::DoNotOptimize(sum(f.a)); }, [&] { benchmark::DoNotOptimize(column_sums(f.plain)); },
        1);
}

void sum_rows(benchmark::State& state) {
    fixture& f = data();
    ak_bench::paired(
        state, [&] { benchmark::DoNotOptimize(sum(f.a, Mm(2.0))); },
        [&] { benchmark::DoNotOptimize(row_sums(f.plain)); }, 1);
}

void times_full_vector(benchmark::State& state) {
    fixture& f = data();
    ak_bench::paired(
        state, [&] { benchmark::DoNotOptimize(mtimes(f.a, f.x)); },
        [&] { benchmark::DoNotOptimize(times_vector(f.plain, f.xv)); }, 1);
}

void times_itself(benchmark::State& state) {
    fixture& f = data();
    Mm check = mtimes(f.a, f.a);
    csc want = gustavson(f.plain, f.plain);
    if (check.nnz != static_cast<int>(want.v.size())) std::fprintf(stderr, "sparse_ops: A*A differs\n");
    ak_bench::paired(
        state, [&] { benchmark::DoNotOptimize(mtimes(f.a, f.a)); },
        [&] { benchmark::DoNotOptimize(gustavson(f.plain, f.plain)); }, 1);
}

}  // namespace

BENCHMARK(sum_columns)->Unit(benchmark::kMicrosecond);
BENCHMARK(sum_rows)->Unit(benchmark::kMicrosecond);
BENCHMARK(times_full_vector)->Unit(benchmark::kMicrosecond);
BENCHMARK(times_itself)->Unit(benchmark::kMillisecond);
