// Values shared between threads in multi_task mode: heads copied into threads share one storage
// through its count, reads run side by side, and the first write of each thread copies (or writes in
// place once every other holder has let go). Built with ARKLIB_SANITIZE=thread, ThreadSanitizer
// watches each of these for races.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "arklib.h"
#include "test_support.h"

namespace {

// multi_task for the life of a test; set before any thread starts, as hosts must.
class MultiTask : public ::testing::Test {
  protected:
    void SetUp() override { ak_set_AK(1); }
    void TearDown() override { ak_set_AK(0); }
};

Mm counting_row(int n) {
    Mm m(0, 0, 0, 1, n, ak_double);
    for (int k = 0; k < n; ++k) m.addr()[k] = k + 1;
    return m;
}

double total(const Mm& m) {
    double s = 0;
    for (int k = 0; k < m.nnz; ++k) s += m.addr()[k];
    return s;
}

}  // namespace

// Each thread holds a copy of one storage, reads it, then writes its own copy: the writes copy, and
// neither the others nor the original see them.
TEST_F(MultiTask, CopiesWrittenInThreadsLeaveTheSharedValueAlone) {
    const int n = 256, threads = 4;
    const Mm base = counting_row(n);
    const double expected = n * (n + 1) / 2.0;
    std::vector<Mm> copies(threads, base);
    std::vector<double> seen(threads), written(threads);
    std::vector<std::thread> pool;
    for (int t = 0; t < threads; ++t) {
        pool.emplace_back([&, t] {
            Mm& mine = copies[t];
            for (int round = 0; round < 200; ++round) {
                Mm again = mine;          // one more share
                seen[t] = total(again);   // read beside the other threads
                Mm part = again(Mm(1.0), colon(Mm(1.0), Mm(8.0)));
                seen[t] += total(part) - 36.0;
            }
            mine(Mm(1.0)) = -1.0;  // the first write copies
            mine(Mm(2.0)) = -2.0;  // then writes in place
            written[t] = total(mine);
        });
    }
    for (std::thread& th : pool) th.join();
    for (int t = 0; t < threads; ++t) {
        EXPECT_EQ(expected, seen[t]);
        EXPECT_EQ(expected - 1 - 2 - 1 - 2, written[t]);
        EXPECT_EQ(0, copies[t].dirty());
    }
    EXPECT_EQ(expected, total(base));
    EXPECT_EQ(0, base.dirty());
}

// One thread reads its share and drops it; the other waits until it holds the storage alone and
// then writes in place. The drop must come before the write: the share count test after the wait
// is what orders them.
TEST_F(MultiTask, WriteInPlaceAfterTheOtherHolderLetsGo) {
    for (int round = 0; round < 50; ++round) {
        Mm a = counting_row(64);
        Mm* b = new Mm(a);
        std::atomic<double> read{0};
        std::thread reader([&] {
            read = total(*b);
            delete b;  // drops the share
        });
        std::thread writer([&] {
            while (a.dirty()) std::this_thread::yield();
            a(Mm(3.0)) = 0.0;  // alone now: written in place
            a(Mm(1.0), Mm(4.0)) = 5.0;
        });
        reader.join();
        writer.join();
        EXPECT_EQ(64 * 65 / 2.0, read.load());
        EXPECT_EQ(64 * 65 / 2.0 - 3 + 1, total(a));
    }
}

// Library operations on shared inputs from several threads at once: element-wise arithmetic,
// reductions, concatenation, cells that share their elements, sparse conversion, the pooled
// allocator under its lock.
TEST_F(MultiTask, OperationsOnSharedInputs) {
    const Mm x = counting_row(100);
    const Mm c = cell_from_array(1, std::vector<const Mm*>{&x}.data());
    const int threads = 4;
    std::vector<double> results(threads);
    std::vector<std::thread> pool;
    for (int t = 0; t < threads; ++t) {
        pool.emplace_back([&, t] {
            double r = 0;
            for (int round = 0; round < 100; ++round) {
                Mm y = plus(times(x, Mm(2.0)), Mm(static_cast<double>(t)));
                Mm z = horzcat(y, x);
                Mm s = sum(z);
                Mm e = c.br(Mm(1.0));
                Mm sp = sparse(e);
                r = *s.addr() + total(full(sp));
                Mm g = e;
                g(Mm(200.0)) = 1.0;  // grows a copy of the cell's element
                r += g.size() - 200;
            }
            results[t] = r;
        });
    }
    for (std::thread& th : pool) th.join();
    for (int t = 0; t < threads; ++t) EXPECT_EQ(2 * 5050 + 100 * t + 5050 + 5050.0, results[t]);
    EXPECT_EQ(5050.0, total(x));
}
