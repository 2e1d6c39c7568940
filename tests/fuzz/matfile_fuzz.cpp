// A seeded mutation loop over data files: the MAT-files of tests/data (written by other programs)
// and files that the library itself writes (level 4, level 5, compressed, text), damaged at random
// (bits, bytes, words set to sizes and types that matter, cuts, copies and removals) and read back
// through load, the list form of load and whos of a file. Every case must end with a value or a
// message: a crash or a sanitizer report fails the run, a case that takes more than two seconds counts
// as a hang, and a value whose storage is far larger than the file it came from counts as an
// allocation out of proportion.
//
//   matfile_fuzz DATA_DIR [--seed N] [--count N] [--seconds S]
//
// The environment variable ARKLIB_MATFILE_FUZZ_COUNT, when set, replaces the count (for long runs).
#include <dirent.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "arklib.h"
#include "runtime/error_internal.h"

namespace {

using bytes_t = std::vector<unsigned char>;

bytes_t read_file(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return bytes_t(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void write_file(const std::string& path, const bytes_t& b) {
    std::FILE* f = std::fopen(path.c_str(), "wb");
    if (!f) {
        std::fprintf(stderr, "cannot write %s\n", path.c_str());
        std::exit(2);
    }
    if (!b.empty()) std::fwrite(b.data(), 1, b.size(), f);
    std::fclose(f);
}

// ---- the inputs -----------------------------------------------------------------------------------

void add_fixtures(const std::string& dir, std::vector<bytes_t>& seeds) {
    DIR* d = opendir(dir.c_str());
    if (!d) return;
    std::vector<std::string> names;
    while (dirent* e = readdir(d)) {
        const std::string n = e->d_name;
        if (n.size() > 4 && n.compare(n.size() - 4, 4, ".mat") == 0) names.push_back(n);
    }
    closedir(d);
    std::sort(names.begin(), names.end());
    for (const std::string& n : names) seeds.push_back(read_file(dir + "/" + n));
}

// Files of every kind of value, as the library writes them.
void add_own_files(const std::string& scratch, std::vector<bytes_t>& seeds) {
    Mm a(i_o, "a", 0), z(i_o, "z", 0), s(i_o, "s", 0), c(i_o, "c", 0), st(i_o, "st", 0), sp(i_o, "sp", 0),
        u(i_o, "u", 0), ob(i_o, "ob", 0);
    a = (BR(1.0), 2.0, 3.0, semi, 4.0, 5.0, 6.5);
    z = a + i * 2.0;
    s = TM("text");
    c = (CL(1.0), TM("two"), semi, Mm((CL(3.0), a)), Mm());
    st = mstruct((CL(TM("f")), Mm((CL(1.0), TM("x"))), TM("g"), Mm((CL(c), a))));
    sp = sparse(z);
    u = muint8(a);
    ob = mclass(mstruct((CL(TM("x")), 1.0)), TM("fuzz_point"));
    const std::string f5 = scratch + "/own5.mat", f4 = scratch + "/own4.mat", ft = scratch + "/own.txt";
    save(TM(f5.c_str()), (BR(a), z, s, c, st, sp, u, ob));
    seeds.push_back(read_file(f5));
    saveV4(TM(f4.c_str()), (BR(a), z, s, sp));
    seeds.push_back(read_file(f4));
    saveascii(TM(ft.c_str()), (BR(a)));
    seeds.push_back(read_file(ft));
    // The compressed forms through the word form of save.
    _ive_do(0, 0, nullptr);
    {
        Mm x(i_o, "x", 0), y(i_o, "y", 0);
        x = c;
        y = sp;
        const std::string fz = scratch + "/ownz.mat";
        save(TM(fz.c_str()), TM("x"), TM("y"), TM("-compress"));
        seeds.push_back(read_file(fz));
    }
    clear();
    ak_scope_tracking = 0;
}

// ---- mutations ------------------------------------------------------------------------------------

const uint32_t interesting[] = {0,          1,          2,          4,          5,          6,
                                8,          9,          14,         15,         16,         17,
                                0x10000,    0x00040005, 0x7fffffff, 0x80000000, 0xffffffff, 0xfffffff8,
                                0x0e000000, 0x0f000000, 1000,       1001,       1002,       3,
                                0x400,      0x800,      0x205,      0x0206};

void mutate(bytes_t& b, std::mt19937_64& rng) {
    auto pick = [&](std::size_t n) { return n ? static_cast<std::size_t>(rng() % n) : 0; };
    const int steps = 1 + static_cast<int>(rng() % 4);
    for (int s = 0; s < steps; ++s) {
        switch (rng() % 7) {
            case 0:  // a bit
                if (!b.empty()) b[pick(b.size())] ^= static_cast<unsigned char>(1u << (rng() % 8));
                break;
            case 1:  // a byte
                if (!b.empty()) b[pick(b.size())] = static_cast<unsigned char>(rng());
                break;
            case 2:
            case 3: {  // an aligned word set to a size or type that matters, in either byte order
                if (b.size() < 4) break;
                uint32_t v = interesting[pick(sizeof interesting / sizeof interesting[0])];
                if (rng() % 4 == 0) v += static_cast<uint32_t>(rng() % 64) - 32;
                if (rng() % 3 == 0) v = __builtin_bswap32(v);
                const std::size_t at = pick(b.size() / 4) * 4;
                std::memcpy(&b[at], &v, 4);
                break;
            }
            case 4:  // cut
                b.resize(pick(b.size() + 1));
                break;
            case 5: {  // copy a range to another place
                if (b.empty()) break;
                const std::size_t from = pick(b.size()), len = 1 + pick(std::min<std::size_t>(64, b.size() - from));
                const bytes_t piece(b.begin() + static_cast<long>(from), b.begin() + static_cast<long>(from + len));
                b.insert(b.begin() + static_cast<long>(pick(b.size() + 1)), piece.begin(), piece.end());
                break;
            }
            default: {  // remove a range
                if (b.empty()) break;
                const std::size_t from = pick(b.size()), len = 1 + pick(std::min<std::size_t>(64, b.size() - from));
                b.erase(b.begin() + static_cast<long>(from), b.begin() + static_cast<long>(from + len));
                break;
            }
        }
    }
}

// ---- the checks -----------------------------------------------------------------------------------

// The bytes that a value's storage takes, contents of cells and structures included.
double footprint(const Mm& m, int depth = 0) {
    if (depth > 1000 || m.ndims < 0) return 0;
    double total = sizeof(Mm);
    const int n = m.flags.sparse ? m.nnz : m.size();
    switch (m.flags.type) {
        case ak_double:
            total += 8.0 * n * (m.pi ? 2 : 1) + (m.flags.sparse ? 4.0 * n : 0);
            break;
        case ak_uchar:
            total += 1.0 * n * (m.pi ? 2 : 1);
            break;
        case ak_mm:
            for (int k = 0; k < n; ++k) total += footprint(static_cast<const Mm*>(m.pr)[k], depth + 1);
            break;
        default:
            break;
    }
    return total;
}

unsigned long long messages = 0;
void count_message(const char*) { ++messages; }
void quiet(const char*) {}

struct failure_counts {
    unsigned long long values = 0, errors = 0, oversized = 0, slow = 0;
};

// An error is an ending like a value. ("Out of memory!" included: it is also how the sparse
// functions refuse a shape of more than 2^31 positions, which a level-4 file can ask for. Real
// requests out of proportion are caught by the limits set in main.)
void caught(const char*, failure_counts& counts, const std::string&) { ++counts.errors; }

// Reads a file in three ways: the list of its variables, its first variable, and two by name.
void read_all_ways(const std::string& path, double limit, failure_counts& counts) {
    const Mm file = TM(path.c_str());
    auto check = [&](const Mm& v) {
        ++counts.values;
        if (footprint(v) > limit) {
            ++counts.oversized;
            std::fprintf(stderr, "oversized value: %.0f bytes from a file allowing %.0f\n", footprint(v), limit);
        }
    };
    try {
        check(whos(file));
    } catch (char* m) {
        caught(m, counts, path);
    }
    try {
        check(load(file));
    } catch (char* m) {
        caught(m, counts, path);
    }
    try {
        Mm a(i_o, "a", 0), sp(i_o, "sp", 0);
        load(file, (BR(a), sp));
        check(a);
        check(sp);
    } catch (char* m) {
        caught(m, counts, path);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: matfile_fuzz DATA_DIR [--seed N] [--count N] [--seconds S]\n");
        return 2;
    }
    const std::string data_dir = argv[1];
    unsigned long long seed = 26, count = 3000;
    double seconds = 1e9;
    for (int k = 2; k + 1 < argc; k += 2) {
        if (!std::strcmp(argv[k], "--seed")) seed = std::strtoull(argv[k + 1], nullptr, 10);
        if (!std::strcmp(argv[k], "--count")) count = std::strtoull(argv[k + 1], nullptr, 10);
        if (!std::strcmp(argv[k], "--seconds")) seconds = std::atof(argv[k + 1]);
    }
    if (const char* env = std::getenv("ARKLIB_MATFILE_FUZZ_COUNT")) count = std::strtoull(env, nullptr, 10);

#if !defined(__SANITIZE_ADDRESS__)
    // Outside the sanitizers a request out of all proportion fails at once instead of taking the
    // machine's memory (under AddressSanitizer, run with ASAN_OPTIONS=max_allocation_size_mb=256
    // for the same effect). The peak resident size is checked at the end.
    const rlimit data_limit{512ul << 20, 512ul << 20};
    setrlimit(RLIMIT_DATA, &data_limit);
#endif
    initM();
    ak_set_print_handler(quiet);
    ak_set_warning_handler(count_message);
    ak_error_handler = ak_internal::default_error_handler;
    ak_default_error_flags = 16;  // every error is thrown and caught here

    // Memory-backed when the machine has it: every case is a file written and read three times.
    char scratch[64];
    std::snprintf(scratch, sizeof scratch, "%s/arklib_matfuzz_XXXXXX", access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp");
    if (!mkdtemp(scratch)) return 2;
    std::vector<bytes_t> seeds;
    add_fixtures(data_dir, seeds);
    try {
        add_own_files(scratch, seeds);
    } catch (char* m) {
        std::fprintf(stderr, "writing the library's own files failed: %s\n", m);
        return 2;
    }
    if (seeds.size() < 5) {
        std::fprintf(stderr, "too few inputs in %s\n", data_dir.c_str());
        return 2;
    }

    std::mt19937_64 rng(seed);
    failure_counts counts;
    const std::string path = std::string(scratch) + "/case.mat";
    const auto begin = std::chrono::steady_clock::now();
    unsigned long long done = 0;
    for (; done < count; ++done) {
        bytes_t b = seeds[rng() % seeds.size()];
        mutate(b, rng);
        write_file(path, b);
        // A compressed element may inflate to about a thousand times its size.
        const bool packed = b.size() > 136 && std::memcmp(b.data(), "MAT", 3) == 0;
        const double limit = 64.0 * static_cast<double>(b.size()) * (packed ? 1032.0 : 1.0) + 65536.0;
        const auto t0 = std::chrono::steady_clock::now();
        const unsigned long long oversized_before = counts.oversized;
        read_all_ways(path, limit, counts);
        if (counts.oversized > oversized_before) write_file(std::string(scratch) + "/oversized_case.mat", b);
        const double took = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
        if (took > 2.0) {
            ++counts.slow;
            std::fprintf(stderr, "case %llu took %.1f s\n", done, took);
            write_file(std::string(scratch) + "/slow_case.mat", b);
        }
        ak_lasterr_clear();
        if (std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count() > seconds) {
            ++done;
            break;
        }
    }
    const double total = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    // Every input is a few kilobytes: a peak of hundreds of megabytes means some case asked for
    // memory out of proportion to its file. (The sanitizer's own quarantine keeps hundreds of
    // megabytes of freed blocks, so there the allocation limit of ASAN_OPTIONS does this job.)
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const double peak_mib = static_cast<double>(usage.ru_maxrss) / 1024.0;
#if defined(__SANITIZE_ADDRESS__)
    const double peak_limit = 1e9;
#else
    const double peak_limit = 400.0;
#endif
    if (peak_mib > peak_limit) {
        ++counts.oversized;
        std::fprintf(stderr, "peak resident size %.0f MiB\n", peak_mib);
    }
    std::printf("matfile_fuzz: seed %llu, %llu cases in %.1f s: %llu values, %llu errors, %llu warnings, "
                "%llu oversized, %llu slow, peak %.0f MiB\n",
                seed, done, total, counts.values, counts.errors, messages, counts.oversized, counts.slow, peak_mib);
    const std::string cleanup = std::string("rm -rf '") + scratch + "'";
    if (counts.slow == 0 && counts.oversized == 0) (void)std::system(cleanup.c_str());
    exitM();
    return counts.oversized || counts.slow ? 1 : 0;
}
