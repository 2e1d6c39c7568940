// Binary reading and writing by precision name, and the position and state of a stream.
#include <cerrno>
#include <cmath>
#include <cstring>
#include <string>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/constructors.h"
#include "arklib/files.h"
#include "arklib/sparse.h"
#include "io/file_internal.h"
#include "runtime/format_internal.h"

using namespace ak_internal;

namespace {

// Element k of a numeric matrix as a double (0 for anything else).
double element(const Mm& m, int k) {
    if (k >= m.size() || m.flags.sparse) return 0.0;
    if (m.flags.type == ak_double) return static_cast<const double*>(m.pr)[k];
    if (m.flags.type == ak_uchar) return static_cast<const unsigned char*>(m.pr)[k];
    return 0.0;
}

// The stream and byte-order decision shared by fread and fwrite: the machine argument when it
// names a format, else the fid's own. Null after a reported fid fault.
std::FILE* stream_and_swap(const Mm& fid, const Mm& machine, bool* swap) {
    int row = fid_check(fid, true);
    if (row < 0) return nullptr;
    int format = machine_format_code(machine);
    if (format == -1) format = fid_table()[row].format;
    *swap = format != native_format();
    return row_stream(row);
}

// The class a "=>" precision converts to: the input precision's code for a plain name.
struct precision_pair {
    std::string input;
    std::string output;  // empty for a plain name: the result is double
};

std::string trimmed(const std::string& s) {
    size_t a = s.find_first_not_of(" \t"), b = s.find_last_not_of(" \t");
    return a == std::string::npos ? std::string() : s.substr(a, b - a + 1);
}

// "in=>out", "*in" (the same as "in=>in"), or a plain name.
precision_pair split_precision(const std::string& text) {
    size_t arrow = text.find("=>");
    if (arrow != std::string::npos) return {trimmed(text.substr(0, arrow)), trimmed(text.substr(arrow + 2))};
    std::string t = trimmed(text);
    if (!t.empty() && t[0] == '*') return {trimmed(t.substr(1)), trimmed(t.substr(1))};
    return {t, std::string()};
}

// Rounds to the nearest whole number and saturates to [low, high]; NaN gives 0.
double saturate_round(double v, double low, double high) {
    if (v != v) return 0.0;
    v = std::round(v);
    return v < low ? low : v > high ? high : v;
}

// The values read, put into the class the output precision names: bytes for uint8, a string for
// "char", doubles held to the range and rounding of any other integer class, single rounding.
Mm convert_output(Mm result, const std::string& output) {
    if (output.empty()) return result;
    if (output == "char" || output == "char*1") {
        result.flags.str = 1;
        return result;
    }
    int code = precision_code(output.c_str(), nullptr);
    double* v = result.addr();
    int n = result.size();
    struct range {
        double low, high;
    };
    range r{0, 0};
    switch (code) {
        case 1:
            for (int k = 0; k < n; ++k) v[k] = static_cast<float>(v[k]);
            return result;
        case 2: r = {-2147483648.0, 2147483647.0}; break;
        case 7: r = {0.0, 4294967295.0}; break;
        case 3: r = {-32768.0, 32767.0}; break;
        case 4: r = {0.0, 65535.0}; break;
        case 8: r = {-128.0, 127.0}; break;
        case 5: r = {0.0, 255.0}; break;
        case 9: r = {-9223372036854775808.0, 9223372036854775807.0}; break;
        case 10: r = {0.0, 18446744073709551615.0}; break;
        default:
            return result;
    }
    for (int k = 0; k < n; ++k) v[k] = saturate_round(v[k], r.low, r.high);
    if (code != 5) return result;
    Mm bytes(0, 0, 0, result.rows(), result.cols(), ak_uchar);
    auto* b = static_cast<unsigned char*>(bytes.pr);
    for (int k = 0; k < n; ++k) b[k] = static_cast<unsigned char>(v[k]);
    return bytes;
}

// The whole of fread, after the arguments have been put in their places.
Mm fread_core(const Mm& fid, const Mm& size, const Mm& precision, const Mm& skip_m, const Mm& machine,
              Mm* count_out) {
    if (count_out) *count_out = Mm(0.0);
    if (size.size() > 2) {
        error("fread: can not read multi-dimensional matrices");
        return x_M;
    }
    bool swap = false;
    std::FILE* stream = stream_and_swap(fid, machine, &swap);
    if (!stream) return x_M;
    precision_pair names = split_precision(matrix_text(precision).substr(0, 29));
    int e = 8;
    int code = precision_code(names.input.c_str(), &e);
    double m = element(size, 0);
    double n = size.size() == 2 ? element(size, 1) : 1.0;
    if (size.size() < 1) m = 0.0;

    // The bytes left, from the position to the end (0 for a stream that cannot seek).
    double r = 0;
    long here = std::ftell(stream);
    if (here >= 0 && std::fseek(stream, 0, SEEK_END) == 0) {
        long end = std::ftell(stream);
        std::fseek(stream, here, SEEK_SET);
        r = end > here ? static_cast<double>(end - here) : 0.0;
    }
    int skip = round_nonnegative(element(skip_m, 0));
    double avail = r < e ? 0.0 : std::floor((r - e) / (static_cast<double>(skip) + e)) + 1;

    bool overrun = false;
    double rows = m, cols = n;
    if (m > avail) {
        rows = avail;
        cols = 1;
        overrun = true;
    } else if (avail < m * n) {
        cols = std::ceil(r / ((static_cast<double>(skip) + e) * m));
        overrun = true;
    }
    auto whole = [](double v) { return v > 0 && v < 2147483647.0 ? std::trunc(v) : 0.0; };
    rows = whole(rows);
    cols = whole(cols);
    if (rows * cols > 2147483647.0) {
        error("Out of memory!");
        return x_M;
    }
    // Filled by the read; the places a short read leaves stay zero.
    Mm result(0, 0, 0, static_cast<int>(rows), static_cast<int>(cols), ak_double);
    int want = result.size();
    int got = 0;
    if (skip == 0) {
        got = read_elements(result.addr(), want, stream, code, swap);
    } else {
        for (; got < want; ++got) {
            if (read_elements(result.addr() + got, 1, stream, code, swap) != 1) break;
            std::fseek(stream, skip, SEEK_CUR);
        }
    }
    if (got < want) std::memset(result.addr() + got, 0, sizeof(double) * (want - got));
    if (overrun) {
        unsigned char extra;  // sets the end-of-file flag after a read to the end
        (void)!std::fread(&extra, 1, 1, stream);
    }
    if (count_out) *count_out = Mm(static_cast<double>(got));
    return convert_output(result, names.output);
}

bool is_text(const Mm& m) { return m.flags.str != 0; }

// Puts fread's arguments in their places: a string second is the precision, a string fourth the
// machine format.
Mm fread_shift(int nin, const Mm* a, Mm* count) {
    Mm size = Inf, precision = TM("uchar"), skip = Mm(0.0), machine = TM("?");
    int k = 1;
    if (nin > k && !is_text(a[k])) size = a[k++];
    if (nin > k) precision = a[k++];
    if (nin > k && !is_text(a[k])) skip = a[k++];
    if (nin > k) machine = a[k++];
    return fread_core(a[0], size, precision, skip, machine, count);
}

Mm fwrite_core(const Mm& fid, const Mm& a, const Mm& precision, const Mm& skip_m, const Mm& machine) {
    bool swap = false;
    std::FILE* stream = stream_and_swap(fid, machine, &swap);
    if (!stream) return x_M;
    if (!precision.flags.str) {
        error("fwrite: precision not a string");
        return x_M;
    }
    if (a.flags.type == ak_mm || a.flags.type == ak_no_type) {
        error("fwrite: only numbers and strings can be written");
        return x_M;
    }
    int code = precision_code(matrix_text(precision).substr(0, 29).c_str(), nullptr);
    int skip = saturate_fid(element(skip_m, 0));
    Mm f = a.flags.sparse ? full(a) : a;
    int n = f.size();
    const double* data = f.addr();
    Mm converted;
    if (f.flags.type == ak_uchar) {
        converted = zeros(1.0, static_cast<double>(n));
        for (int k = 0; k < n; ++k) converted.addr()[k] = static_cast<const unsigned char*>(f.pr)[k];
        data = converted.addr();
    }
    int written = 0;
    if (skip == 0) {
        written = write_elements(data, n, stream, code, swap);
    } else {
        for (; written < n; ++written) {
            if (write_element(data[written], stream, code, swap) == 0) break;
            std::fseek(stream, skip, SEEK_CUR);
        }
    }
    return Mm(static_cast<double>(written));
}

}  // namespace

Mm fread(const Mm& fid) { return fread(fid, Inf); }
Mm fread(const Mm& fid, const Mm& size) {
    const Mm a[] = {fid, size};
    return fread_shift(2, a, nullptr);
}
Mm fread(const Mm& fid, const Mm& size, const Mm& precision) {
    const Mm a[] = {fid, size, precision};
    return fread_shift(3, a, nullptr);
}
Mm fread(const Mm& fid, const Mm& size, const Mm& precision, const Mm& skip) {
    const Mm a[] = {fid, size, precision, skip};
    return fread_shift(4, a, nullptr);
}
Mm fread(const Mm& fid, const Mm& size, const Mm& precision, const Mm& skip, const Mm& machine) {
    const Mm a[] = {fid, size, precision, skip, machine};
    return fread_shift(5, a, nullptr);
}
Mm fread(const Mm& fid, i_o_t, Mm& count) { return fread(fid, Inf, i_o, count); }
Mm fread(const Mm& fid, const Mm& size, i_o_t, Mm& count) {
    const Mm a[] = {fid, size};
    return fread_shift(2, a, &count);
}
Mm fread(const Mm& fid, const Mm& size, const Mm& precision, i_o_t, Mm& count) {
    const Mm a[] = {fid, size, precision};
    return fread_shift(3, a, &count);
}
Mm fread(const Mm& fid, const Mm& size, const Mm& precision, const Mm& skip, i_o_t, Mm& count) {
    const Mm a[] = {fid, size, precision, skip};
    return fread_shift(4, a, &count);
}
Mm fread(const Mm& fid, const Mm& size, const Mm& precision, const Mm& skip, const Mm& machine, i_o_t, Mm& count) {
    const Mm a[] = {fid, size, precision, skip, machine};
    return fread_shift(5, a, &count);
}

Mm fwrite(const Mm&) {
    error_input("fwrite", 1);
    return x_M;
}
Mm fwrite(const Mm& fid, const Mm& a) { return fwrite_core(fid, a, TM("uchar"), Mm(0.0), TM("?")); }
Mm fwrite(const Mm& fid, const Mm& a, const Mm& precision) {
    return fwrite_core(fid, a, precision, Mm(0.0), TM("?"));
}
Mm fwrite(const Mm& fid, const Mm& a, const Mm& precision, const Mm& skip) {
    return fwrite_core(fid, a, precision, skip, TM("?"));
}
Mm fwrite(const Mm& fid, const Mm& a, const Mm& precision, const Mm& skip, const Mm& machine) {
    return fwrite_core(fid, a, precision, skip, machine);
}

// ---- position and state ----------------------------------------------------------------------------

Mm fseek(const Mm&) {
    error_input("fseek", 1);
    return x_M;
}
Mm fseek(const Mm&, const Mm&) {
    error_input("fseek", 2);
    return x_M;
}
Mm fseek(const Mm& fid, const Mm& offset, const Mm& origin) {
    std::FILE* stream = fid_stream(fid);
    if (!stream) return x_M;
    long off = static_cast<long>(truncate64(element(offset, 0)));
    long o;
    if (origin.flags.str) {
        std::string word = matrix_text(origin).substr(0, 10);
        if (word == "bof")
            o = -1;
        else if (word == "cof")
            o = 0;
        else if (word == "eof")
            o = 1;
        else {
            error("fseek: origin %s not bof, cof or eof", display_name(origin));
            o = 0;
        }
    } else {
        o = static_cast<long>(truncate64(element(origin, 0)));
    }
    int whence = o < 0 ? SEEK_SET : o == 0 ? SEEK_CUR : SEEK_END;
    return Mm(std::fseek(stream, off, whence) == 0 ? 0.0 : -1.0);
}

Mm ftell(const Mm& fid) {
    std::FILE* stream = fid_stream(fid);
    if (!stream) return x_M;
    return Mm(static_cast<double>(std::ftell(stream)));
}

Mm frewind(const Mm& fid) {
    std::FILE* stream = fid_stream(fid);
    if (!stream) return x_M;
    return Mm(std::fseek(stream, 0, SEEK_SET) == 0 ? 0.0 : -1.0);
}

Mm feof(const Mm& fid) {
    std::FILE* stream = fid_stream(fid);
    if (!stream) return x_M;
    return Mm(std::feof(stream) ? 1.0 : 0.0);
}

Mm fflush(const Mm& fid) {
    std::FILE* stream = fid_stream(fid);
    if (!stream) return x_M;
    return Mm(std::fflush(stream) ? 1.0 : 0.0);
}

Mm ferror(const Mm& fid, const Mm& clear, i_o_t, Mm& msg, Mm& errnum) {
    std::FILE* stream = fid_stream(fid);
    if (!stream) {
        msg = TM("");
        errnum = Mm(0.0);
        return x_M;
    }
    int raw = std::ferror(stream);
    msg = TM(raw ? "File error" : "");
    errnum = Mm(static_cast<double>(raw));
    if (clear.flags.str) std::clearerr(stream);
    return msg;
}
Mm ferror(const Mm& fid, i_o_t, Mm& msg, Mm& errnum) { return ferror(fid, Mm(0.0), i_o, msg, errnum); }
Mm ferror(const Mm& fid, const Mm& clear) {
    Mm msg, errnum;
    return ferror(fid, clear, i_o, msg, errnum);
}
Mm ferror(const Mm& fid) { return ferror(fid, Mm(0.0)); }

AK_BUILTIN("fread", AK_FN(fread, const Mm&), AK_FN(fread, const Mm&, const Mm&),
           AK_FN(fread, const Mm&, const Mm&, const Mm&), AK_FN(fread, const Mm&, const Mm&, const Mm&, const Mm&),
           AK_FN(fread, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&), AK_FN(fread, const Mm&, i_o_t, Mm&),
           AK_FN(fread, const Mm&, const Mm&, i_o_t, Mm&), AK_FN(fread, const Mm&, const Mm&, const Mm&, i_o_t, Mm&),
           AK_FN(fread, const Mm&, const Mm&, const Mm&, const Mm&, i_o_t, Mm&),
           AK_FN(fread, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, i_o_t, Mm&));
AK_BUILTIN("fwrite", AK_FN(fwrite, const Mm&), AK_FN(fwrite, const Mm&, const Mm&),
           AK_FN(fwrite, const Mm&, const Mm&, const Mm&), AK_FN(fwrite, const Mm&, const Mm&, const Mm&, const Mm&),
           AK_FN(fwrite, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("fseek", AK_FN(fseek, const Mm&), AK_FN(fseek, const Mm&, const Mm&),
           AK_FN(fseek, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("ftell", AK_FN(ftell, const Mm&));
AK_BUILTIN("frewind", AK_FN(frewind, const Mm&));
AK_BUILTIN("feof", AK_FN(feof, const Mm&));
AK_BUILTIN("fflush", AK_FN(fflush, const Mm&));
AK_BUILTIN("ferror", AK_FN(ferror, const Mm&), AK_FN(ferror, const Mm&, const Mm&),
           AK_FN_REFS(ferror, const Mm&, i_o_t, Mm&, Mm&), AK_FN_REFS(ferror, const Mm&, const Mm&, i_o_t, Mm&, Mm&));
