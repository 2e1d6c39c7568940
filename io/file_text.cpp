// Text reading and writing on fids: fgets, fgetl, and fprintf and fscanf over the format engine.
#include <cstring>
#include <string>
#include <vector>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/error.h"
#include "arklib/files.h"
#include "arklib/format.h"
#include "io/file_internal.h"
#include "runtime/format_internal.h"

using namespace ak_internal;

namespace {

constexpr int longest_line = 16384;

// A row of character codes 0 to 255 with the string flag.
Mm text_row(const char* text, int n) {
    Mm row(0, 0, 0, 1, n, ak_double);
    double* v = row.addr();
    for (int k = 0; k < n; ++k) v[k] = static_cast<unsigned char>(text[k]);
    row.flags.str = 1;
    return row;
}

// m without the elements equal to code, as a row.
Mm without(const Mm& m, double code) {
    const double* v = m.addr();
    std::vector<double> kept;
    kept.reserve(m.size());
    for (int k = 0; k < m.size(); ++k)
        if (v[k] != code) kept.push_back(v[k]);
    Mm row(0, 0, 0, 1, static_cast<int>(kept.size()), ak_double);
    if (!kept.empty()) std::memcpy(row.addr(), kept.data(), kept.size() * sizeof(double));
    row.flags.str = m.flags.str;
    return row;
}

// Sends formatted text to a row of the table: nothing for stdin, the print handler for stdout and
// stderr, the stream for any other.
void send(int row, const std::string& text) {
    if (row == 0 || text.empty()) return;
    if (row <= 2) {
        ak_print_handler(text.c_str());
        return;
    }
    if (std::FILE* stream = row_stream(row)) std::fwrite(text.data(), 1, text.size(), stream);
}

// The whole of fprintf once the fid is known; an empty list formats once with no data.
void print_to(int row, const Mm& fmt, const Mm* list) {
    std::string f = format_escape(Mstr_row(fmt).substr(0, 2047).c_str());
    pieces_holder h;
    format_parse(h.r, f.c_str());
    bool is_list = list && list->flags.type == ak_mm && !list->fields;
    int n = !list ? 0 : is_list ? list->size() : 1;
    if (n <= 0) {
        send(row, format_write(h.r, nullptr, 0));
        return;
    }
    for (int k = 0; k < n; ++k) send(row, format_value(h.r, is_list ? static_cast<const Mm*>(list->pr)[k] : *list));
}

Mm fprintf_any(const Mm& first, const Mm* fmt, const Mm* list) {
    if (first.flags.str || !fmt) {
        // A string first: the whole call goes to fid 1.
        print_to(1, first, fmt);
        return x_M;
    }
    int row = fid_check(first, true);
    if (row < 0) return x_M;
    print_to(row, *fmt, list);
    return Mm(0.0);
}

Mm fscanf_core(const Mm& fid, const Mm& fmt, const Mm& size, Mm* count, Mm* errmsg) {
    std::FILE* stream = fid_stream(fid);
    if (!stream) {
        if (count) *count = Mm(0.0);
        if (errmsg) *errmsg = TM("");
        return x_M;
    }
    Mm a, b;
    Mm result = scan_matrix(stream, nullptr, fmt, size, i_o, a, b);
    if (count) *count = a;
    if (errmsg) *errmsg = b;
    return result;
}

}  // namespace

Mm fgets(const Mm& fid, const Mm& nchar) {
    std::FILE* stream = fid_stream(fid);
    if (!stream) return x_M;
    if (std::feof(stream)) return Mm(-1.0);
    double limit = nchar.size() >= 1 && nchar.flags.type == ak_double ? nchar.addr()[0] : 0.0;
    int n = saturate_fid(limit);
    if (n > longest_line) n = longest_line;
    if (n < 0) return Mm(-1.0);
    std::vector<char> buffer(static_cast<size_t>(n) + 2);
    if (!std::fgets(buffer.data(), n + 1, stream)) return Mm(-1.0);
    // The bytes read, up to the first NUL; a CR LF pair becomes one LF and ends the text.
    int len = static_cast<int>(std::strlen(buffer.data()));
    if (const char* crlf = std::strstr(buffer.data(), "\r\n")) {
        len = static_cast<int>(crlf - buffer.data()) + 1;
        buffer[len - 1] = '\n';
    }
    return text_row(buffer.data(), len);
}

Mm fgets(const Mm& fid) { return fgets(fid, Inf); }

Mm fgetl(const Mm& fid) {
    Mm line = fgets(fid, Inf);
    if (line.flags.type != ak_double || line.size() < 1 || !line.flags.str) return line;  // -1 or nothing
    line = without(line, 10);
    if (line.size() > 0) line = without(line, 13);
    return line;
}

Mm fprintf(const Mm& fmt) { return fprintf_any(fmt, nullptr, nullptr); }
Mm fprintf(const Mm& fmt, const Mm& list) { return fprintf_any(fmt, &list, nullptr); }
Mm fprintf(const Mm& fid, const Mm& fmt, const Mm& list) {
    if (fid.flags.str) {
        // A string first: the format, then a list of two arguments.
        const Mm* items[2] = {&fmt, &list};
        Mm both = cell_from_array(2, items);
        return fprintf_any(fid, &both, nullptr);
    }
    return fprintf_any(fid, &fmt, &list);
}

Mm printf(const Mm& fmt) {
    print_to(1, fmt, nullptr);
    return x_M;
}
Mm printf(const Mm& fmt, const Mm& list) {
    print_to(1, fmt, &list);
    return x_M;
}

Mm fscanf(const Mm&) {
    error_input("fscanf", 1);
    return x_M;
}
Mm fscanf(const Mm& fid, const Mm& fmt) { return fscanf_core(fid, fmt, Inf, nullptr, nullptr); }
Mm fscanf(const Mm& fid, const Mm& fmt, const Mm& size) { return fscanf_core(fid, fmt, size, nullptr, nullptr); }
Mm fscanf(const Mm& fid, const Mm& fmt, i_o_t, Mm& count) { return fscanf_core(fid, fmt, Inf, &count, nullptr); }
Mm fscanf(const Mm& fid, const Mm& fmt, i_o_t, Mm& count, Mm& errmsg) {
    return fscanf_core(fid, fmt, Inf, &count, &errmsg);
}
Mm fscanf(const Mm& fid, const Mm& fmt, const Mm& size, i_o_t, Mm& count) {
    return fscanf_core(fid, fmt, size, &count, nullptr);
}
Mm fscanf(const Mm& fid, const Mm& fmt, const Mm& size, i_o_t, Mm& count, Mm& errmsg) {
    return fscanf_core(fid, fmt, size, &count, &errmsg);
}

AK_BUILTIN("fgets", AK_FN(fgets, const Mm&), AK_FN(fgets, const Mm&, const Mm&));
AK_BUILTIN("fgetl", AK_FN(fgetl, const Mm&));
AK_BUILTIN("fprintf", AK_FN(fprintf, const Mm&), AK_FN(fprintf, const Mm&, const Mm&),
           AK_FN(fprintf, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("printf", AK_FN(printf, const Mm&), AK_FN(printf, const Mm&, const Mm&));
AK_BUILTIN("fscanf", AK_FN(fscanf, const Mm&), AK_FN(fscanf, const Mm&, const Mm&),
           AK_FN(fscanf, const Mm&, const Mm&, const Mm&), AK_FN(fscanf, const Mm&, const Mm&, i_o_t, Mm&),
           AK_FN(fscanf, const Mm&, const Mm&, i_o_t, Mm&, Mm&), AK_FN(fscanf, const Mm&, const Mm&, const Mm&, i_o_t, Mm&),
           AK_FN(fscanf, const Mm&, const Mm&, const Mm&, i_o_t, Mm&, Mm&));
