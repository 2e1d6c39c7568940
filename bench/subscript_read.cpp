// Subscript reads against plain C++ doing the same work: a 1000x1000 matrix read column by column as
// x(:, j) against memcpy, a logical mask selecting from 10^7 elements against a plain loop, and the
// scalar read x(k) of translated loops against reading a std::vector. After the runs each arklib
// figure is printed as a ratio to its baseline.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "arklib.h"

namespace {

constexpr int side = 1000;
constexpr int mask_size = 10000000;

Mm filled(int rows, int cols) {
    Mm m(0, 0, 0, rows, cols, ak_double);
    for (int k = 0; k < m.nnz; ++k) m.addr()[k] = k * 0.5;
    return m;
}

// x(:, j) for every column j of a 1000x1000 matrix.
void columns_ak(benchmark::State& state) {
    Mm x = filled(side, side);
    Mm j(0.0);
    for (auto _ : state) {
        for (int c = 1; c <= side; ++c) {
            *j.addr() = c;
            Mm column = x(c_p, j);
            benchmark::DoNotOptimize(column.pr);
        }
    }
    state.SetItemsProcessed(state.iterations() * side);
}

// The same columns copied with memcpy into a fresh block each, as a result matrix is.
void columns_plain(benchmark::State& state) {
    std::vector<double> x(static_cast<std::size_t>(side) * side);
    for (std::size_t k = 0; k < x.size(); ++k) x[k] = k * 0.5;
    for (auto _ : state) {
        for (int c = 0; c < side; ++c) {
            double* column = static_cast<double*>(std::malloc(sizeof(double) * side));
            std::memcpy(column, x.data() + static_cast<std::size_t>(c) * side, sizeof(double) * side);
            benchmark::DoNotOptimize(column);
            std::free(column);
        }
    }
    state.SetItemsProcessed(state.iterations() * side);
}

std::vector<double> random_mask() {
    std::mt19937 gen(7);
    std::vector<double> m(mask_size);
    for (double& v : m) v = (gen() & 1) ? 1.0 : 0.0;
    return m;
}

// x(mask) with a logical mask over 10^7 elements, about half of them true.
void mask_ak(benchmark::State& state) {
    Mm x = filled(1, mask_size);
    std::vector<double> bits = random_mask();
    Mm mask(0, 0, 0, 1, mask_size, ak_double);
    std::memcpy(mask.addr(), bits.data(), sizeof(double) * mask_size);
    mask.flags.logical = 1;
    for (auto _ : state) {
        Mm picked = x(mask);
        benchmark::DoNotOptimize(picked.pr);
    }
    state.SetItemsProcessed(state.iterations() * mask_size);
}

// A plain loop: count the trues, allocate, copy where the mask is set.
void mask_plain(benchmark::State& state) {
    std::vector<double> x(mask_size);
    for (int k = 0; k < mask_size; ++k) x[k] = k * 0.5;
    std::vector<double> mask = random_mask();
    for (auto _ : state) {
        int count = 0;
        for (int k = 0; k < mask_size; ++k) count += mask[k] != 0.0;
        double* out = static_cast<double*>(std::malloc(sizeof(double) * count));
        int j = 0;
        for (int k = 0; k < mask_size; ++k)
            if (mask[k] != 0.0) out[j++] = x[k];
        benchmark::DoNotOptimize(out);
        std::free(out);
    }
    state.SetItemsProcessed(state.iterations() * mask_size);
}

// The read half of a translated scalar loop: v = x(k) with a 1x1 index matrix, k = 1..10^6.
constexpr int scalar_count = 1000000;

void scalar_ak(benchmark::State& state) {
    Mm x = filled(1, scalar_count);
    Mm k(0.0);
    double sum = 0;
    for (auto _ : state) {
        for (int i = 1; i <= scalar_count; ++i) {
            *k.addr() = i;
            Mm v = x(k);
            sum += *v.addr();
        }
    }
    benchmark::DoNotOptimize(sum);
    state.SetItemsProcessed(state.iterations() * scalar_count);
}

void scalar_plain(benchmark::State& state) {
    std::vector<double> x(scalar_count);
    for (int k = 0; k < scalar_count; ++k) x[k] = k * 0.5;
    double sum = 0;
    for (auto _ : state) {
        for (int i = 1; i <= scalar_count; ++i) {
            benchmark::DoNotOptimize(x.data());
            sum += x[i - 1];
        }
    }
    benchmark::DoNotOptimize(sum);
    state.SetItemsProcessed(state.iterations() * scalar_count);
}

BENCHMARK(columns_ak)->Name("columns/ak")->Unit(benchmark::kMicrosecond);
BENCHMARK(columns_plain)->Name("columns/plain")->Unit(benchmark::kMicrosecond);
BENCHMARK(mask_ak)->Name("mask/ak")->Unit(benchmark::kMillisecond);
BENCHMARK(mask_plain)->Name("mask/plain")->Unit(benchmark::kMillisecond);
BENCHMARK(scalar_ak)->Name("scalar_read/ak")->Unit(benchmark::kMillisecond);
BENCHMARK(scalar_plain)->Name("scalar_read/plain")->Unit(benchmark::kMillisecond);

// Prints the usual table, then "name: ak / plain = ratio" for every pair of runs.
class ratio_reporter : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.error_occurred) continue;
            std::string name = run.run_name.str();
            if (run.run_type == Run::RT_Aggregate && run.aggregate_name == "median") {
                times_[name] = run.GetAdjustedCPUTime();
                medians_[name] = true;
            } else if (run.run_type == Run::RT_Iteration && !medians_[name]) {
                times_[name] = run.GetAdjustedCPUTime();
            }
        }
    }
    void Finalize() override {
        ConsoleReporter::Finalize();
        std::printf("\nratio of CPU times (arklib / plain C++, below 1 is faster):\n");
        for (const auto& [name, time] : times_) {
            std::size_t at = name.find("/ak");
            if (at == std::string::npos) continue;
            auto base = times_.find(name.substr(0, at) + "/plain" + name.substr(at + 3));
            if (base != times_.end() && base->second > 0)
                std::printf("  %-20s %7.2f\n", name.c_str(), time / base->second);
        }
    }

  private:
    std::map<std::string, double> times_;
    std::map<std::string, bool> medians_;
};

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    ratio_reporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
