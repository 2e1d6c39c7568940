// The reader of the format engine, the shaping of its output, and sscanf. The platform scanner
// runs one piece at a time on a stream or on a text; in a text the position is moved here, as the
// scanner does not report how far it read.
#include <cctype>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "arklib/calling.h"
#include "arklib/constructors.h"
#include "arklib/format.h"
#include "core/matrix_internal.h"
#include "runtime/format_internal.h"
#include "arklib/builtins.h"

using ak_internal::c_heap_free;
using ak_internal::class_of;
using ak_internal::conversion_class;

namespace {

// Growing result of the reader; grows by 4000 elements at a time.
class values {
  public:
    values() : data_(static_cast<double*>(std::malloc(4000 * sizeof(double)))), capacity_(4000) {
        if (!data_) error("Out of memory!");
    }
    ~values() { std::free(data_); }
    values(const values&) = delete;
    values& operator=(const values&) = delete;

    bool append(double v) {
        if (!data_) return false;
        if (count_ + 1 > capacity_) {
            if (capacity_ > INT_MAX - 4000) {
                error("scanf: Matrix too large");
                std::exit(1);
            }
            double* grown = static_cast<double*>(std::realloc(data_, (capacity_ + 4000) * sizeof(double)));
            if (!grown) {
                error("Out of memory!");
                return false;
            }
            data_ = grown;
            capacity_ += 4000;
        }
        data_[count_++] = v;
        return true;
    }
    int count() const { return count_; }
    double* release() {
        double* d = data_;
        data_ = nullptr;
        return d;
    }

  private:
    double* data_;
    int capacity_;
    int count_ = 0;
};

bool blank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f'; }

// Past leading blanks, one token and the blanks after it.
const char* past_token(const char* p) {
    while (*p && blank(*p)) ++p;
    while (*p && !blank(*p)) ++p;
    while (*p && blank(*p)) ++p;
    return p;
}

template <typename T>
int scan(std::FILE* stream, const char* text, const std::string& piece, T* target) {
    if (stream) return std::fscanf(stream, piece.c_str(), target);
    return std::sscanf(text, piece.c_str(), target);
}

}  // namespace

double* format_read(format_pieces& r, std::FILE* stream, const char* text, int limit, int* count_out,
                    int* matched_out) {
    int matched = 0;
    values out;
    if (!text) text = "";
    const char* pos = text;
    int width = 31999;
    if (!stream) {
        size_t n = std::strlen(text);
        if (n > static_cast<size_t>(width)) width = n < INT_MAX - 1 ? static_cast<int>(n) : INT_MAX - 2;
    }
    std::vector<char> buffer(static_cast<size_t>(width) + 1);
    // A text is scanned as a memory stream placed at the position, so that each call reads only
    // what it needs instead of measuring the whole remaining text.
    size_t length = stream ? 0 : std::strlen(text);
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> memory(
        length ? fmemopen(const_cast<char*>(text), length, "r") : nullptr, std::fclose);
    // A cycle through all pieces that neither matched nor moved ends the loop, so that a format
    // of literal text alone or of skipped conversions cannot spin on the same input.
    int cycle_matched = 0;
    const char* cycle_pos = pos;
    long cycle_offset = stream ? std::ftell(stream) : 0;
    std::string safe_pieces[format_pieces::max_pieces];
    bool made[format_pieces::max_pieces] = {};
    while (r.last >= 0 && matched < limit) {
        int kind = r.kind[r.cursor], k = std::toupper(kind);
        const char* piece = r.piece[r.cursor];
        bool skip = std::strchr(piece, '*') != nullptr;
        if (!made[r.cursor]) {
            safe_pieces[r.cursor] = ak_internal::safe_piece(piece, kind, false, width);
            made[r.cursor] = true;
        }
        const std::string& safe = safe_pieces[r.cursor];
        std::FILE* in = stream;
        if (!stream && memory && std::fseek(memory.get(), static_cast<long>(pos - text), SEEK_SET) == 0)
            in = memory.get();
        int result = 0;
        long integer = 0;
        double real = 0;
        void* pointer = nullptr;
        buffer[0] = '\0';
        const conversion_class what = class_of(kind);
        switch (what) {
            case conversion_class::literal:
            case conversion_class::integer:
                result = scan(in, pos, safe, &integer);
                break;
            case conversion_class::character:
                result = scan(in, pos, safe, buffer.data());
                if (buffer[0] == '\0') result = 0;
                break;
            case conversion_class::real:
                result = scan(in, pos, safe, &real);
                break;
            case conversion_class::count:
                result = 0;
                break;
            case conversion_class::pointer:
                result = scan(in, pos, safe, &pointer);
                break;
            case conversion_class::text:
                result = scan(in, pos, safe, buffer.data());
                break;
            default:
                error("sscanf: unknown type character");
                result = -1;
        }
        if (result < 0 || (result == 0 && k != '=' && k != 'N' && !skip)) break;
        matched += result;
        if (!stream && k == 'C') {
            if (*pos) ++pos;
        } else if (!stream && k != '=' && k != 'N') {
            pos = past_token(pos);
        }
        if (!skip) {
            switch (what) {
                case conversion_class::character:
                    out.append(static_cast<unsigned char>(buffer[0]));
                    break;
                case conversion_class::integer:
                    out.append(static_cast<double>(integer));
                    break;
                case conversion_class::real:
                    out.append(real);
                    break;
                case conversion_class::count:
                    out.append(matched);
                    break;
                case conversion_class::text:
                    for (const char* c = buffer.data(); *c; ++c) out.append(static_cast<unsigned char>(*c));
                    break;
                default:
                    break;
            }
        }
        r.cursor = r.cursor >= r.last ? 0 : r.cursor + 1;
        if (r.cursor == 0) {
            long offset = stream ? std::ftell(stream) : 0;
            if (matched == cycle_matched && pos == cycle_pos && offset == cycle_offset) break;
            cycle_matched = matched;
            cycle_pos = pos;
            cycle_offset = offset;
        }
    }
    if (count_out) *count_out = out.count();
    if (matched_out) *matched_out = matched;
    return out.release();
}

Mm scan_matrix(std::FILE* stream, const char* text, const Mm& format, const Mm& size, i_o_t, Mm& a, Mm& b) {
    bool numeric = (size.flags.type == ak_double || size.flags.type == ak_uchar) && !size.flags.sparse;
    int n = numeric ? size.size() : -1;
    if (n != 1 && n != 2) {
        error("scanf: size %s is not one or two elements", display_name(size));
        a = x_M;
        b = x_M;
        return x_M;
    }
    std::string f = format_escape(Mstr_row(format).c_str());
    ak_internal::pieces_holder h;
    format_parse(h.r, f.c_str());
    auto element = [&size](int k) {
        return size.flags.type == ak_uchar ? static_cast<const unsigned char*>(size.pr)[k]
                                           : static_cast<const double*>(size.pr)[k];
    };
    int first = ak_internal::saturate_int(element(0));
    int second = n == 2 ? ak_internal::saturate_int(element(1)) : 0;
    if (first < 0) first = 0;
    if (second < 0) second = 0;
    long long product = static_cast<long long>(first) * second;
    int limit = n == 1 ? first : (product > INT_MAX ? INT_MAX : static_cast<int>(product));
    int count = 0, matched = 0;
    std::unique_ptr<double, c_heap_free> data(format_read(h.r, stream, text, limit, &count, &matched));
    int rows, cols;
    if (n == 2 && first == INT_MAX) {
        // An unbounded row count ([Inf n]): as many rows as n columns need for what was read
        // ([Inf Inf] reads into one column).
        cols = second == INT_MAX ? (count > 0 ? 1 : 0) : second;
        rows = cols > 0 ? static_cast<int>((static_cast<long long>(count) + cols - 1) / cols) : 0;
    } else if (n == 2) {
        rows = first;
        cols = rows > 0 ? static_cast<int>((static_cast<long long>(count) + rows - 1) / rows) : 0;
    } else if (h.r.all_text) {
        rows = 1;
        cols = count;
    } else {
        rows = first < count ? first : count;
        cols = 1;
    }
    Mm result = zeros(static_cast<double>(rows), static_cast<double>(cols));
    int room = result.size();
    double* out = result.addr();
    for (int k = 0; k < count && k < room; ++k) out[k] = data.get()[k];
    if (h.r.all_text) result.flags.str = 1;
    a = Mm(static_cast<double>(matched));
    b = TM("");
    return result;
}

namespace {

Mm sscanf_all(const Mm& s, const Mm& format, const Mm& size, Mm* count, Mm* errmsg, Mm* next) {
    std::string text = ak_internal::matrix_text(s);
    Mm a, b;
    Mm result = scan_matrix(nullptr, text.c_str(), format, size, i_o, a, b);
    if (count) *count = a;
    if (errmsg) *errmsg = b;
    if (next) *next = Mm(0.0);
    return result;
}

}  // namespace

Mm sscanf(const Mm&) {
    error_input("sscanf", 1);
    return x_M;
}
Mm sscanf(const Mm& s, const Mm& format) { return sscanf_all(s, format, Inf, nullptr, nullptr, nullptr); }
Mm sscanf(const Mm& s, const Mm& format, const Mm& size) {
    return sscanf_all(s, format, size, nullptr, nullptr, nullptr);
}
Mm sscanf(const Mm& s, const Mm& format, i_o_t, Mm& count) {
    return sscanf_all(s, format, Inf, &count, nullptr, nullptr);
}
Mm sscanf(const Mm& s, const Mm& format, i_o_t, Mm& count, Mm& errmsg) {
    return sscanf_all(s, format, Inf, &count, &errmsg, nullptr);
}
Mm sscanf(const Mm& s, const Mm& format, i_o_t, Mm& count, Mm& errmsg, Mm& next) {
    return sscanf_all(s, format, Inf, &count, &errmsg, &next);
}
Mm sscanf(const Mm& s, const Mm& format, const Mm& size, i_o_t, Mm& count) {
    return sscanf_all(s, format, size, &count, nullptr, nullptr);
}
Mm sscanf(const Mm& s, const Mm& format, const Mm& size, i_o_t, Mm& count, Mm& errmsg) {
    return sscanf_all(s, format, size, &count, &errmsg, nullptr);
}
Mm sscanf(const Mm& s, const Mm& format, const Mm& size, i_o_t, Mm& count, Mm& errmsg, Mm& next) {
    return sscanf_all(s, format, size, &count, &errmsg, &next);
}

// ---- rows of the table of functions by name ----------------------------------------------------
AK_BUILTIN("sscanf", AK_FN(sscanf, const Mm&), AK_FN(sscanf, const Mm&, const Mm&),
           AK_FN(sscanf, const Mm&, const Mm&, const Mm&), AK_FN(sscanf, const Mm&, const Mm&, i_o_t, Mm&),
           AK_FN(sscanf, const Mm&, const Mm&, i_o_t, Mm&, Mm&),
           AK_FN(sscanf, const Mm&, const Mm&, i_o_t, Mm&, Mm&, Mm&),
           AK_FN(sscanf, const Mm&, const Mm&, const Mm&, i_o_t, Mm&),
           AK_FN(sscanf, const Mm&, const Mm&, const Mm&, i_o_t, Mm&, Mm&),
           AK_FN(sscanf, const Mm&, const Mm&, const Mm&, i_o_t, Mm&, Mm&, Mm&));
