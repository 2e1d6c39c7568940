// A random statement driver: subscript reads, assignments that grow and delete, {} and member writes,
// concatenation, sparse construction, the format engine and element-wise and shape functions, run on
// a few variables with hostile index values (near 2^31 and 2^32, NaN, Inf, -0, fractions, empty,
// colon, masks) and shapes (empty, 4-D, sparse, complex, cells, text). Every statement runs either
// with errors thrown (flag 16) or with a handler that returns; after each one every variable must be
// well formed, and the sanitizers watch the rest.
//
// Built with clang and -fsanitize=fuzzer (ARKLIB_FUZZ=ON) it is a libFuzzer target whose input
// bytes choose the statements. Otherwise it is a plain program:
//   statement_fuzz [--seed N] [--count N] [--seconds S]
// which draws the choices from a seeded generator and stops at the count or the time limit.
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "arklib.h"
#include "runtime/error_internal.h"

namespace {

// ---- where the choices come from ------------------------------------------------------------------

struct chooser {
    const uint8_t* data = nullptr;  // libFuzzer input, read byte by byte
    size_t size = 0, at = 0;
    std::mt19937_64* rng = nullptr;  // or a seeded generator

    bool exhausted() const { return !rng && at >= size; }
    unsigned next(unsigned n) {
        if (n <= 1) return 0;
        if (rng) return static_cast<unsigned>((*rng)() % n);
        unsigned v = 0;
        for (unsigned span = 1; span < n && at < size; span <<= 8) v = v << 8 | data[at++];
        return v % n;
    }
    bool coin() { return next(2) == 1; }
};

// ---- the error modes ------------------------------------------------------------------------------

unsigned long long errors_seen = 0;
void returning_error_handler(const char*) { ++errors_seen; }
void quiet(const char*) {}

struct error_mode {
    explicit error_mode(bool throwing) {
        ak_error_handler = throwing ? ak_internal::default_error_handler : returning_error_handler;
        ak_default_error_flags = throwing ? 16u : 0u;
    }
    ~error_mode() { ak_lasterr_clear(); }
};

// ---- values ---------------------------------------------------------------------------------------

const double special_values[] = {1,          2,           3,          4,           0,
                                 -1,         0.5,         2.7,        -0.0,        NAN,
                                 INFINITY,   -INFINITY,   2147483647, 2147483648.0, 2147483649.0,
                                 4294967296.0, 4294967297.0, 3e9,      1e300,       -3e9};
constexpr int special_count = sizeof special_values / sizeof special_values[0];

double pick_number(chooser& c) {
    // Mostly small positions, so that statements reach past the checks; the hostile ones often.
    return c.next(3) == 0 ? special_values[c.next(special_count)] : 1.0 + c.next(5);
}

Mm matrix_of(chooser& c, int nd, const int* d) {
    Mm m(0, 0, 0, nd, d, ak_double);
    for (int k = 0; k < m.nnz; ++k) m.addr()[k] = c.next(4) == 0 ? pick_number(c) : static_cast<double>(c.next(4));
    return m;
}

Mm pick_value(chooser& c, const std::vector<Mm>& vars) {
    switch (c.next(12)) {
        case 0:
            return Mm(pick_number(c));
        case 1:
        case 2: {
            int d[2] = {static_cast<int>(c.next(4)), static_cast<int>(c.next(5))};
            return matrix_of(c, 2, d);
        }
        case 3: {
            int d[4] = {1 + static_cast<int>(c.next(2)), 1 + static_cast<int>(c.next(2)), 2,
                        1 + static_cast<int>(c.next(2))};
            return matrix_of(c, 4, d);
        }
        case 4: {
            static const int shapes[][2] = {{0, 0}, {1, 0}, {0, 3}};
            return Mm(0, 0, 0, 2, const_cast<int*>(shapes[c.next(3)]), ak_double);
        }
        case 5:
            return TM(c.coin() ? "ab" : "x1 2");
        case 6: {
            int d[2] = {1 + static_cast<int>(c.next(3)), 1 + static_cast<int>(c.next(3))};
            Mm m(1, 0, 0, 2, d, ak_double);
            for (int k = 0; k < m.nnz; ++k) {
                m.addr()[k] = c.next(3);
                m.addi()[k] = c.next(3) == 0 ? pick_number(c) : 0.0;
            }
            return m;
        }
        case 7: {
            int d[2] = {1 + static_cast<int>(c.next(3)), 1 + static_cast<int>(c.next(4))};
            return sparse(matrix_of(c, 2, d));
        }
        case 8: {
            const Mm* items[2] = {&vars[c.next(static_cast<unsigned>(vars.size()))], &vars[0]};
            return cell_from_array(1 + static_cast<int>(c.next(2)), items);
        }
        default:
            return vars[c.next(static_cast<unsigned>(vars.size()))];
    }
}

// An index: a number, a short list, a logical mask, an empty list, a sparse index or the colon.
const Mm& pick_index(chooser& c, std::vector<Mm>& keep) {
    switch (c.next(8)) {
        case 0:
            return c_p;
        case 1: {
            int d[2] = {1, 1 + static_cast<int>(c.next(3))};
            Mm m(0, 0, 0, 2, d, ak_double);
            for (int k = 0; k < m.nnz; ++k) m.addr()[k] = pick_number(c);
            keep.push_back(m);
            break;
        }
        case 2: {
            int d[2] = {1, 1 + static_cast<int>(c.next(5))};
            Mm m(0, 0, 0, 2, d, ak_double);
            for (int k = 0; k < m.nnz; ++k) m.addr()[k] = c.next(2);
            m.flags.logical = 1;
            keep.push_back(m);
            break;
        }
        case 3:
            keep.push_back(Mm(0, 0, 0, 0, 0, ak_double));
            break;
        case 4: {
            int d[2] = {1, 2};
            Mm m(0, 0, 0, 2, d, ak_double);
            m.addr()[0] = pick_number(c);
            m.addr()[1] = c.next(2);
            keep.push_back(sparse(m));
            break;
        }
        default:
            keep.push_back(Mm(pick_number(c)));
            break;
    }
    return keep.back();
}

// ---- statements -----------------------------------------------------------------------------------

// The formats; the last two write wide fields and come up seldom.
const char* const formats[] = {"%d",   "%5.2f\n", "%s",   "%x %g,",  "%e",   "%c%c",       "%%d",
                               "abc",  "%-*d",    "%.3s|", "%u %o",   "%i",   "%n%d",       "%ld %lu",
                               "%5$d", "%",       "%+.0e", "%300.1f", "%-8s", "%100000d", "%30000.1f"};
constexpr unsigned format_count = sizeof formats / sizeof formats[0];

const char* pick_format(chooser& c) { return formats[c.next(c.next(16) == 0 ? format_count : format_count - 2)]; }
const char* const scan_texts[] = {"1 2 3", "4,5,6", "abc 7", "", "1e400 -0 nan inf", "12345678901234567890"};
const char* const fields[] = {"a", "b"};

Mr reference(Mr_idx_type type, const Mm& base, int n, const Mm* const* ix) {
    switch (n) {
        case 1:
            return Mr(type, base, *ix[0]);
        case 2:
            return Mr(type, base, *ix[0], *ix[1]);
        case 3:
            return Mr(type, base, *ix[0], *ix[1], *ix[2]);
        default:
            return Mr(type, base, *ix[0], *ix[1], *ix[2], *ix[3]);
    }
}

// What the last statement was, for the report of a malformed result.
std::string last_statement;

std::string short_text(const Mm& m) {
    if (is_colon(m)) return ":";
    char head[96];
    std::snprintf(head, sizeof head, "%s%s%dx%dx%dx%d[", m.flags.sparse ? "sparse " : "",
                  m.flags.logical ? "logical " : "", m.dims[0], m.dims[1], m.dims[2], m.dims[3]);
    std::string t = head;
    for (int k = 0; k < m.nnz && k < 6 && m.flags.type == ak_double; ++k) {
        char v[32];
        std::snprintf(v, sizeof v, "%.17g ", m.addr()[k]);
        t += v;
    }
    return t + "]";
}

void run_statement(chooser& c, std::vector<Mm>& vars) {
    const unsigned nv = static_cast<unsigned>(vars.size());
    Mm& x = vars[c.next(nv)];
    Mm& out = vars[c.next(nv)];
    std::vector<Mm> keep;
    keep.reserve(8);
    const Mm* ix[4];
    const int n = 1 + static_cast<int>(c.next(4));
    for (int k = 0; k < n; ++k) ix[k] = &pick_index(c, keep);
    const unsigned op = c.next(16);
    last_statement = "op " + std::to_string(op) + " on " + x.getname() + "=" + short_text(x) + " into " +
                     out.getname() + " with";
    for (int k = 0; k < n; ++k) last_statement += " " + short_text(*ix[k]);
    switch (op) {
        case 0:
        case 1:
            out = Mm(reference(Mr_paren, x, n, ix), 1);
            break;
        case 2:
        case 3:
            reference(Mr_paren, x, n, ix) = pick_value(c, vars);
            break;
        case 4:
            reference(Mr_paren, x, n, ix) = nop_M;
            break;
        case 5:
            if (c.coin())
                out = Mm(reference(Mr_brace, x, n, ix), 1);
            else
                reference(Mr_brace, x, n, ix) = pick_value(c, vars);
            break;
        case 6:
            x(*ix[0]).member(fields[c.next(2)]) = pick_value(c, vars);
            break;
        case 7:
            switch (c.next(3)) {
                case 0:
                    out = horzcat(x, pick_value(c, vars));
                    break;
                case 1:
                    out = vertcat(pick_value(c, vars), x);
                    break;
                default:
                    out = cat(Mm(1.0 + c.next(4)), x, pick_value(c, vars));
                    break;
            }
            break;
        case 8:
            switch (c.next(4)) {
                case 0:
                    out = sparse(*ix[0], *ix[n > 1 ? 1 : 0], pick_value(c, vars));
                    break;
                case 1:
                    out = sparse(*ix[0], *ix[n > 1 ? 1 : 0], pick_value(c, vars), Mm(pick_number(c)),
                                 Mm(pick_number(c)));
                    break;
                case 2:
                    out = sparse(x);
                    break;
                default:
                    out = full(x);
                    break;
            }
            break;
        case 9: {
            const Mm* list[2] = {&x, &vars[c.next(nv)]};
            out = sprintf(TM(pick_format(c)),
                          cell_from_array(1 + static_cast<int>(c.next(2)), list));
            break;
        }
        case 10: {
            int d[2] = {1, 1 + static_cast<int>(c.next(2))};
            Mm size(0, 0, 0, 2, d, ak_double);
            for (int k = 0; k < size.nnz; ++k) size.addr()[k] = pick_number(c);
            out = sscanf(TM(scan_texts[c.next(sizeof scan_texts / sizeof scan_texts[0])]),
                         TM(pick_format(c)), size);
            break;
        }
        case 11:
            switch (c.next(4)) {
                case 0:
                    out = num2str(x);
                    break;
                case 1:
                    out = num2str(x, Mm(pick_number(c)));
                    break;
                case 2:
                    out = mat2str(x);
                    break;
                default:
                    out = int2str(x);
                    break;
            }
            break;
        case 12:
            switch (c.next(6)) {
                case 0:
                    out = plus(x, pick_value(c, vars));
                    break;
                case 1:
                    out = times(pick_value(c, vars), x);
                    break;
                case 2:
                    out = abs(x);
                    break;
                case 3:
                    out = sum(x, Mm(pick_number(c)));
                    break;
                case 4:
                    out = max(x, pick_value(c, vars));
                    break;
                default:
                    out = any(x);
                    break;
            }
            break;
        case 13:
            switch (c.next(5)) {
                case 0:
                    out = transpose(x);
                    break;
                case 1:
                    out = squeeze(x);
                    break;
                case 2:
                    out = diag(x, Mm(pick_number(c)));
                    break;
                case 3:
                    out = permute(x, *ix[0]);
                    break;
                default:
                    out = find(x);
                    break;
            }
            break;
        case 14:
            if (c.coin()) {
                Mm y, i;
                sort(x, i_o, y, i);
                out = i;
            } else {
                out = colperm(x);
            }
            break;
        default:
            out = Mm(reference(Mr_paren, x, n < 3 ? n : 2, ix), 1);
            break;
    }
}

// ---- the check after each statement ---------------------------------------------------------------

bool well_formed(const Mm& m, int depth, std::string& why) {
    if (m.flags.type == ak_no_type) return true;
    if (m.ndims < 2 || m.ndims > 4) return why = "ndims", false;
    long long product = 1;
    for (int k = 0; k < 4; ++k) {
        if (m.dims[k] < 0) return why = "negative dimension", false;
        product *= m.dims[k];
    }
    if (product > 2147483647LL) return why = "element count past the int range", false;
    // Dimensions past ndims are 1, or 0 in an empty matrix, whose emptiness must show within ndims.
    long long shown = 1;
    for (int k = 0; k < m.ndims; ++k) shown *= m.dims[k];
    for (int k = m.ndims; k < 4; ++k)
        if (m.dims[k] != 1 && (m.dims[k] != 0 || shown != 0)) return why = "dimension past ndims", false;
    if (m.nnz < 0 || m.nnz > m.p) return why = "stored count past the capacity", false;
    if (m.nnz > 0 && !m.pr) return why = "no storage", false;
    if (m.flags.sparse) {
        if (m.nnz > product) return why = "more entries than elements", false;
        if (m.nnz > 0 && !m.index) return why = "sparse without positions", false;
        for (int k = 0; k < m.nnz; ++k) {
            if (m.index[k] < 0 || m.index[k] >= product) return why = "sparse position outside", false;
            if (k > 0 && m.index[k] <= m.index[k - 1]) return why = "sparse positions not ascending", false;
        }
        return true;
    }
    if (m.nnz != product) return why = "element count differs from the dimensions", false;
    if (m.flags.type == ak_mm && depth < 3) {
        for (int k = 0; k < m.nnz; ++k)
            if (!well_formed(static_cast<const Mm*>(m.pr)[k], depth + 1, why)) return false;
    }
    return true;
}

// Values that grew past what the driver means to test are replaced: the statements are about
// edges, not about throughput.
bool too_large(const Mm& m) {
    if (m.flags.sparse) return m.nnz > 4096;
    return m.flags.type != ak_no_type && m.size() > 4096;
}

std::vector<Mm> fresh_variables() {
    static const char* const names[] = {"a", "b", "c", "d", "e"};
    std::vector<Mm> vars(5);
    for (int k = 0; k < 5; ++k) {
        vars[k] = Mm(static_cast<double>(k + 1));
        vars[k].name = names[k];
    }
    return vars;
}

void set_up() {
    static bool done = false;
    if (done) return;
    done = true;
    initM();
    ak_print_handler = quiet;
    ak_warning_handler = quiet;
    ak_message_handler = quiet;
    ak_logmessage_handler = quiet;
    ak_default_warning_flags = 0;
}

double slow_statement = 2.0;

// A statement that has not finished after this many seconds is a hang: say which and stop (0: off).
unsigned hang_seconds = 0;

void on_hang(int) {
    std::fprintf(stderr, "statement hangs (over %u s): %s\n", hang_seconds, last_statement.c_str());
    std::abort();
}

// Runs statements until the chooser runs dry or `limit` is reached; returns how many ran.
long long run_statements(chooser& c, std::vector<Mm>& vars, long long limit) {
    long long ran = 0;
    while (ran < limit && !c.exhausted()) {
        const bool throwing = c.coin();
        const auto start = std::chrono::steady_clock::now();
        if (hang_seconds) alarm(hang_seconds);
        {
            error_mode mode(throwing);
            try {
                run_statement(c, vars);
            } catch (char*) {
                ++errors_seen;
            }
        }
        if (hang_seconds) alarm(0);
        ++ran;
        // A statement on values this small has no reason to be slow: the time goes on a size it
        // should have refused.
        const double took = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        if (took > slow_statement) std::fprintf(stderr, "slow statement (%.2f s): %s\n", took, last_statement.c_str());
        for (Mm& v : vars) {
            std::string why;
            if (!well_formed(v, 0, why)) {
                std::fprintf(stderr, "statement %lld left %s malformed: %s (%s)\nafter %s\n", ran,
                             v.getname() ? v.getname() : "?", why.c_str(), short_text(v).c_str(),
                             last_statement.c_str());
                std::abort();
            }
            if (too_large(v) || v.flags.type == ak_no_type) {
                const char* name = v.getname();
                v = Mm(1.0);
                v.name = name;
            }
        }
    }
    return ran;
}

}  // namespace

#ifdef ARKLIB_LIBFUZZER
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    set_up();
    std::vector<Mm> vars = fresh_variables();
    chooser c;
    c.data = data;
    c.size = size;
    run_statements(c, vars, 1000);
    return 0;
}
#else
int main(int argc, char** argv) {
    unsigned long long seed = 1;
    long long count = 100000;
    double seconds = 1e9;
    for (int k = 1; k + 1 < argc; k += 2) {
        if (!std::strcmp(argv[k], "--seed")) seed = std::strtoull(argv[k + 1], nullptr, 10);
        else if (!std::strcmp(argv[k], "--count")) count = std::atoll(argv[k + 1]);
        else if (!std::strcmp(argv[k], "--seconds")) seconds = std::atof(argv[k + 1]);
    }
    set_up();
    hang_seconds = 60;
    std::signal(SIGALRM, on_hang);
    std::mt19937_64 rng(seed);
    chooser c;
    c.rng = &rng;
    const auto start = std::chrono::steady_clock::now();
    long long ran = 0;
    double elapsed = 0;
    // Fresh variables every thousand statements, as a program's scopes would come and go.
    while (ran < count && elapsed < seconds) {
        std::vector<Mm> vars = fresh_variables();
        ran += run_statements(c, vars, std::min<long long>(1000, count - ran));
        elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }
    std::printf("statement_fuzz: seed %llu, %lld statements, %llu errors reported, %.1f s\n", seed, ran,
                errors_seen, elapsed);
    exitM();
    return 0;
}
#endif
