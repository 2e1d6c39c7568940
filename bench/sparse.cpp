// Building a sparse matrix of 10^6 entries with sparse(i, j, v) and summing its columns with sum,
// against the same work on a compressed-column array written by hand: entries bucketed by column,
// each column ordered by row with repeated rows added up, then one pass per column for the sums.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "arklib.h"

namespace {

constexpr int entries = 1000000;
constexpr int rows = 5000;
constexpr int cols = 2000;  // 10^7 elements: sum of a sparse matrix works on the full form

struct triplets {
    std::vector<double> i, j, v;
};

// Random positions (some repeated) and values; `ordered` gives them in column-major order.
triplets make_triplets(bool ordered) {
    std::mt19937_64 gen(11);
    std::uniform_int_distribution<int> r(1, rows), c(1, cols);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    std::vector<std::pair<int, int>> at(entries);
    for (auto& p : at) p = {c(gen), r(gen)};
    if (ordered) std::sort(at.begin(), at.end());
    triplets t;
    t.i.resize(entries);
    t.j.resize(entries);
    t.v.resize(entries);
    for (int k = 0; k < entries; ++k) {
        t.j[k] = at[k].first;
        t.i[k] = at[k].second;
        t.v[k] = u(gen);
    }
    return t;
}

const triplets& data(bool ordered) {
    static const triplets shuffled = make_triplets(false), sorted = make_triplets(true);
    return ordered ? sorted : shuffled;
}

Mm column(const std::vector<double>& x) {
    Mm m(0, 0, 0, static_cast<int>(x.size()), 1, ak_double);
    std::copy(x.begin(), x.end(), m.addr());
    return m;
}

struct operands {
    Mm i, j, v;
    explicit operands(const triplets& t) : i(column(t.i)), j(column(t.j)), v(column(t.v)) {}
};

// ---- by hand -------------------------------------------------------------------------------------------

struct csc {
    std::vector<int> jc, ir;
    std::vector<double> pr;
};

csc csc_build(const triplets& t) {
    csc m;
    std::vector<int> start(cols + 1, 0);
    for (int k = 0; k < entries; ++k) ++start[static_cast<int>(t.j[k])];
    for (int c = 0; c < cols; ++c) start[c + 1] += start[c];
    std::vector<std::pair<int, double>> bucket(entries);
    std::vector<int> fill(start.begin(), start.end() - 1);
    for (int k = 0; k < entries; ++k) {
        int c = static_cast<int>(t.j[k]) - 1;
        bucket[fill[c]++] = {static_cast<int>(t.i[k]) - 1, t.v[k]};
    }
    m.jc.assign(cols + 1, 0);
    m.ir.reserve(entries);
    m.pr.reserve(entries);
    for (int c = 0; c < cols; ++c) {
        auto first = bucket.begin() + start[c], last = bucket.begin() + start[c + 1];
        std::stable_sort(first, last, [](const auto& a, const auto& b) { return a.first < b.first; });
        // Repeated rows are added up; what cancels is dropped, as the library does.
        for (auto e = first; e != last;) {
            int r = e->first;
            double total = 0.0;
            for (; e != last && e->first == r; ++e) total += e->second;
            if (total != 0.0) m.ir.push_back(r), m.pr.push_back(total);
        }
        m.jc[c + 1] = static_cast<int>(m.ir.size());
    }
    return m;
}

std::vector<double> csc_column_sums(const csc& m) {
    std::vector<double> s(cols, 0.0);
    for (int c = 0; c < cols; ++c)
        for (int k = m.jc[c]; k < m.jc[c + 1]; ++k) s[c] += m.pr[k];
    return s;
}

// ---- the library ---------------------------------------------------------------------------------------

Mm build(const operands& o) { return sparse(o.i, o.j, o.v, Mm(double(rows)), Mm(double(cols))); }

void BM_sparse_build_and_sum(benchmark::State& state) {
    operands o(data(state.range(0)));
    // Both ways must give the same sums before their times mean anything.
    Mm check = full(sum(build(o)));
    std::vector<double> want = csc_column_sums(csc_build(data(state.range(0))));
    for (int c = 0; c < cols; ++c) {
        if (std::abs(check.addr()[c] - want[c]) > 1e-9) {
            state.SkipWithError("the library and the hand-written sums differ");
            return;
        }
    }
    for (auto _ : state) {
        Mm s = build(o);
        Mm t = sum(s);
        benchmark::DoNotOptimize(t.pr);
    }
}
BENCHMARK(BM_sparse_build_and_sum)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void BM_sparse_build(benchmark::State& state) {
    operands o(data(state.range(0)));
    for (auto _ : state) {
        Mm s = build(o);
        benchmark::DoNotOptimize(s.pr);
    }
}
BENCHMARK(BM_sparse_build)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void BM_sparse_sum(benchmark::State& state) {
    operands o(data(false));
    Mm s = build(o);
    for (auto _ : state) {
        Mm t = sum(s);
        benchmark::DoNotOptimize(t.pr);
    }
}
BENCHMARK(BM_sparse_sum)->Unit(benchmark::kMillisecond);

void BM_csc_build_and_sum(benchmark::State& state) {
    const triplets& t = data(state.range(0));
    for (auto _ : state) {
        csc m = csc_build(t);
        std::vector<double> s = csc_column_sums(m);
        benchmark::DoNotOptimize(s.data());
    }
}
BENCHMARK(BM_csc_build_and_sum)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void BM_csc_build(benchmark::State& state) {
    const triplets& t = data(state.range(0));
    for (auto _ : state) {
        csc m = csc_build(t);
        benchmark::DoNotOptimize(m.pr.data());
    }
}
BENCHMARK(BM_csc_build)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void BM_csc_sum(benchmark::State& state) {
    csc m = csc_build(data(false));
    for (auto _ : state) {
        std::vector<double> s = csc_column_sums(m);
        benchmark::DoNotOptimize(s.data());
    }
}
BENCHMARK(BM_csc_sum)->Unit(benchmark::kMillisecond);

}  // namespace
