// The writer of the format engine and sprintf: the platform formatter runs one piece at a time over
// a stream of doubles, and the format recycles while data remains.
#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <vector>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/display.h"
#include "arklib/format.h"
#include "arklib/sparse.h"
#include "core/matrix_internal.h"
#include "runtime/format_internal.h"
#include "arklib/builtins.h"

namespace {

// False, after "Out of memory!", when a text of `have` characters and `more` besides would be longer
// than a string matrix can be: checked before the text is made, so a width of millions is refused
// at once rather than after gigabytes of output.
bool fits_text(std::size_t have, long long more) {
    if (static_cast<long long>(have) + more <= ak_internal::max_elements) return true;
    error("Out of memory!");
    return false;
}

// The width written in the conversion of a piece, or the larger of width and precision (0 when there
// is none), read before the platform formats the piece: it would write every padding byte.
long long widest_field(const std::string& piece, bool with_precision) {
    std::size_t at = 0;
    while ((at = piece.find('%', at)) != std::string::npos) {
        if (at + 1 < piece.size() && piece[at + 1] == '%') {
            at += 2;
            continue;
        }
        ++at;
        while (at < piece.size() && std::strchr("-+ #0'", piece[at])) ++at;
        long long widest = 0, field = 0;
        for (; at < piece.size(); ++at) {
            const char c = piece[at];
            if (c >= '0' && c <= '9') {
                field = field > ak_internal::max_elements ? field : field * 10 + (c - '0');
                continue;
            }
            if (c != '.') break;
            widest = std::max(widest, field);
            field = 0;
            if (!with_precision) break;
        }
        return std::max(widest, field);
    }
    return 0;
}

// The fewest characters that each data element will write: the narrowest field of the conversions,
// or 0 when a conversion may take several elements at once or write nothing (%s, %n).
long long narrowest_output(const format_pieces& r) {
    long long narrowest = -1;
    for (int c = 0; c <= r.last; ++c) {
        const int k = std::toupper(r.kind[c]);
        if (k == '=') continue;
        const ak_internal::conversion_class cls = ak_internal::class_of(r.kind[c]);
        if (cls == ak_internal::conversion_class::text || cls == ak_internal::conversion_class::count) return 0;
        const long long w = widest_field(ak_internal::safe_piece(r.piece[c], r.kind[c], true, 0), false);
        narrowest = narrowest < 0 ? w : std::min(narrowest, w);
    }
    return narrowest < 0 ? 0 : narrowest;
}

// One platform call on a piece that safe_piece has made; the text takes the size the call asks for.
template <typename T>
std::string run(const std::string& piece, T arg) {
    const long long widest = widest_field(piece, true);  // at most a million, as safe_piece bounds it
    if (widest > 200) {
        // A wide field: one call into room for the width and the digits beyond it.
        std::string text(static_cast<size_t>(widest) + 400, '\0');
        int n = std::snprintf(&text[0], text.size(), piece.c_str(), arg);
        if (n < 0) return std::string();
        if (n < static_cast<int>(text.size())) {
            text.resize(n);
            return text;
        }
    }
    char small[256];
    int n = std::snprintf(small, sizeof small, piece.c_str(), arg);
    if (n < 0) return std::string();
    if (n < static_cast<int>(sizeof small)) return std::string(small, n);
    std::string big(static_cast<size_t>(n) + 1, '\0');
    std::snprintf(&big[0], big.size(), piece.c_str(), arg);
    big.resize(n);
    return big;
}

// The bytes of a double (8) or of the float it rounds to (4), in memory order, each byte written
// low digit first.
std::string hex_bytes(double v, int modifier) {
    static const char digits[] = "0123456789ABCDEF";
    unsigned char bytes[8];
    int n = 8;
    if (modifier == 't' || modifier == 'T') {
        float f = static_cast<float>(v);
        std::memcpy(bytes, &f, 4);
        n = 4;
    } else {
        std::memcpy(bytes, &v, 8);
    }
    std::string out;
    for (int k = 0; k < n; ++k) {
        out += digits[bytes[k] & 15];
        out += digits[bytes[k] >> 4];
    }
    return out;
}

std::string integer_text(const std::string& piece, int modifier, double v) {
    if (modifier == 'b' || modifier == 'B' || modifier == 't' || modifier == 'T')
        return hex_bytes(v, modifier);
    if (std::isinf(v)) return v > 0 ? "Inf" : "-Inf";
    if (std::isnan(v)) return "NaN";
    return run(piece, ak_internal::saturate_long(std::trunc(v)));
}

// The remaining elements as one text, each truncated to a byte.
std::string remaining_text(const double* data, int count) {
    std::string out;
    out.reserve(count);
    for (int k = 0; k < count; ++k) out += static_cast<char>(ak_internal::to_byte(data[k]));
    return out;
}

}  // namespace

std::string format_write(format_pieces& r, double* data, int count) {
    std::string out;
    if (r.last < 0) return out;
    // The pieces as the platform formatter sees them, made once for the call.
    std::string safe[format_pieces::max_pieces];
    bool made[format_pieces::max_pieces] = {};
    if (!fits_text(0, static_cast<long long>(count) * narrowest_output(r))) return std::string();
    for (;;) {
        int c = r.cursor, kind = r.kind[c], k = std::toupper(kind);
        if ((count < 1 && k != '=') || (k == '=' && r.after_literal)) break;
        if (!made[c]) {
            safe[c] = ak_internal::safe_piece(r.piece[c], kind, true, 0);
            made[c] = true;
        }
        const std::string& piece = safe[c];
        r.after_literal = k == '=';
        std::string text;
        switch (ak_internal::class_of(kind)) {
            case ak_internal::conversion_class::literal:
                text = run(piece, 0);
                break;
            case ak_internal::conversion_class::character:
                text = run(piece, static_cast<int>(static_cast<char>(ak_internal::to_byte(*data))));
                break;
            case ak_internal::conversion_class::integer:
                text = integer_text(piece, r.modifier[c], *data);
                break;
            case ak_internal::conversion_class::real:
                text = run(piece, *data);
                fix_nonfinite_text(*data, text);
                break;
            case ak_internal::conversion_class::count:
                *data = 0.0;
                break;
            case ak_internal::conversion_class::pointer:
                text = run(piece, static_cast<void*>(data));
                break;
            case ak_internal::conversion_class::text: {
                std::string s = remaining_text(data, count);
                text = run(piece, s.c_str());
                count = 0;
                break;
            }
            default:
                error("sprintf: unknown type character");
                return out;
        }
        if (k != '=' && k != 'S') {
            --count;
            ++data;
        }
        r.cursor = r.cursor >= r.last ? 0 : r.cursor + 1;
        if (!fits_text(out.size(), static_cast<long long>(text.size()))) return std::string();
        out += text;
        if (count == 0 && k == 'S') break;
    }
    return out;
}

std::string format_value(format_pieces& r, const Mm& x) {
    if (is_lM(x)) return std::string();
    if (x.flags.type == ak_mm || x.flags.type == ak_no_type) {
        error("sprintf: only numbers and strings can be printed");
        return std::string();
    }
    Mm f = x.flags.sparse ? full(x) : x;
    int n = f.size();
    std::vector<double> data(n > 0 ? n : 0);
    for (int k = 0; k < n; ++k)
        data[k] = f.flags.type == ak_uchar ? static_cast<const unsigned char*>(f.pr)[k]
                                           : static_cast<const double*>(f.pr)[k];
    return format_write(r, data.data(), n);
}

Mm sprintf(const Mm& x) { return x; }

Mm sprintf(const Mm& format, const Mm& list) {
    std::string f = format_escape(Mstr_row(format).c_str());
    bool is_list = list.flags.type == ak_mm && !list.fields;
    int n = is_list ? list.size() : 1;
    if (n <= 0) return TM(f.c_str());
    ak_internal::pieces_holder h;
    format_parse(h.r, f.c_str());
    std::string out;
    for (int k = 0; k < n; ++k) {
        std::string text = format_value(h.r, is_list ? static_cast<const Mm*>(list.pr)[k] : list);
        if (!fits_text(out.size(), static_cast<long long>(text.size()))) return TM("");
        out.append(text.c_str());  // a text is cut at its first NUL
    }
    return TM(out.c_str());
}

namespace {

// sprintf by name takes its arguments one by one, as a program writes them.
void sprintf_any(int nin, const Mm* in, int, Mm* out) {
    if (nin < 1) {
        out[0] = Mm(error_input("sprintf", 0));
        return;
    }
    if (nin == 1) {
        out[0] = sprintf(in[0]);
        return;
    }
    Mm list(0, 0, 0, 1, nin - 1, ak_mm);
    for (int k = 1; k < nin; ++k) static_cast<Mm*>(list.pr)[k - 1] = in[k];
    out[0] = sprintf(in[0], list);
}

}  // namespace

AK_BUILTIN("sprintf", sprintf_any);
