// The scalar loop that translated programs live on, x(i) = x(i-1)*0.5 + 1 for i = 2..10^6, written as
// the translator writes it (every value an Mm, every subscript an Mr, the arithmetic through the
// engine's operators), against the same loop on a std::vector<double>. Two loop variables are
// measured: an Mm filled by forelem from the range 2:10^6, and a plain double. The pieces of one
// iteration are measured on their own as well: the write x(i) = v, and the read and arithmetic.
// After the runs each arklib figure is printed with its iterations per second and its ratio to the
// plain loop.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "arklib.h"

namespace {

constexpr int count = 1000000;

// x = zeros(1, 10^6); x(1) = 1.
Mm start_vector() {
    Mm x(0, 0, 0, 1, count, ak_double);
    for (int k = 0; k < count; ++k) x.addr()[k] = 0.0;
    x.addr()[0] = 1.0;
    return x;
}

void check(const Mm& x) {
    // x(k) tends to 2; a loop that wrote nothing would leave zeros.
    if (!(x.addr()[count - 1] > 1.99)) std::fprintf(stderr, "subscript_loop: wrong result\n");
}

// for i = 2:1e6, x(i) = x(i-1)*0.5 + 1; end   with i an Mm loop variable.
void loop_mm_index(benchmark::State& state) {
    Mm x = start_vector();
    Mm range = colon(2.0, static_cast<double>(count));
    Mm i;
    for (auto _ : state) {
        const int n = forsize(range);
        for (int k = 0; k < n; ++k) {
            forelem(i, range, k);
            x(i) = x(i - 1.0) * 0.5 + 1.0;
        }
    }
    check(x);
    state.SetItemsProcessed(state.iterations() * (count - 1));
}

// The same with a double loop variable.
void loop_double_index(benchmark::State& state) {
    Mm x = start_vector();
    for (auto _ : state) {
        for (double i = 2; i <= count; ++i) x(i) = x(i - 1) * 0.5 + 1.0;
    }
    check(x);
    state.SetItemsProcessed(state.iterations() * (count - 1));
}

// Only the write x(i) = v, with the index and the value ready.
void write_only(benchmark::State& state) {
    Mm x = start_vector();
    Mm i(0.0), v(1.5);
    for (auto _ : state) {
        for (int k = 2; k <= count; ++k) {
            *i.addr() = k;
            x(i) = v;
        }
    }
    state.SetItemsProcessed(state.iterations() * (count - 1));
}

// Only the right side x(i-1)*0.5 + 1, with the index ready.
void read_and_arithmetic(benchmark::State& state) {
    Mm x = start_vector();
    Mm j(0.0);
    double sum = 0;
    for (auto _ : state) {
        for (int k = 1; k < count; ++k) {
            *j.addr() = k;
            Mm v = x(j) * 0.5 + 1.0;
            sum += *v.addr();
        }
    }
    benchmark::DoNotOptimize(sum);
    state.SetItemsProcessed(state.iterations() * (count - 1));
}

// The plain loop as a C++ programmer writes it; the compiler keeps x(i-1) in a register.
void loop_plain(benchmark::State& state) {
    std::vector<double> x(count, 0.0);
    x[0] = 1.0;
    for (auto _ : state) {
        double* v = x.data();
        benchmark::DoNotOptimize(v);
        for (int i = 2; i <= count; ++i) v[i - 1] = v[i - 2] * 0.5 + 1.0;
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * (count - 1));
}

BENCHMARK(loop_mm_index)->Name("loop/ak_mm_index")->Unit(benchmark::kMillisecond);
BENCHMARK(loop_double_index)->Name("loop/ak_double_index")->Unit(benchmark::kMillisecond);
BENCHMARK(write_only)->Name("loop/ak_write_only")->Unit(benchmark::kMillisecond);
BENCHMARK(read_and_arithmetic)->Name("loop/ak_read_and_arithmetic")->Unit(benchmark::kMillisecond);
BENCHMARK(loop_plain)->Name("loop/plain")->Unit(benchmark::kMillisecond);

// Prints the usual table, then iterations per second and the ratio to loop/plain for every run.
class ratio_reporter : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        // With repetitions the median stands for the run.
        for (const Run& run : runs) {
            if (run.error_occurred) continue;
            const std::string name = run.run_name.str();
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
        auto base = times_.find("loop/plain");
        if (base == times_.end() || base->second <= 0) return;
        std::printf("\nmillion iterations per second, and CPU time as a multiple of loop/plain:\n");
        for (const auto& [name, time] : times_) {
            // Times are per benchmark iteration, in milliseconds: count - 1 loop iterations each.
            double rate = (count - 1) / (time * 1e-3) / 1e6;
            std::printf("  %-30s %8.1f M/s %8.2f\n", name.c_str(), rate, time / base->second);
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
