// Plain-text matrices: one row per line, values separated by blanks, commas or tabs, '%' starting a
// comment. Read in two passes (count, then fill); written with a fixed width or with separators.
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "arklib/constructors.h"
#include "arklib/display.h"
#include "arklib/sparse.h"
#include "io/matfile_internal.h"

namespace ak_internal {

namespace {

constexpr int line_size = 262144;

// A token naming a special value: the platform spellings are made ours first, then the words are
// looked for. False when none is there.
bool special_value(char* token, double& value) {
    fix_nonfinite_text(-INFINITY, token, 32);
    fix_nonfinite_text(INFINITY, token, 32);
    fix_nonfinite_text(NAN, token, 32);
    if (std::strstr(token, "-Inf")) {
        value = -INFINITY;
    } else if (std::strstr(token, "Inf")) {
        value = INFINITY;
    } else if (std::strstr(token, "NaN")) {
        value = NAN;
    } else {
        return false;
    }
    return true;
}

// One pass over the file. With target null it counts rows and the column count; otherwise it fills
// target, which has rows x cols elements. False after reporting a ragged matrix.
bool text_pass(const char* file, std::FILE* stream, char* line, int& rows, int& cols, Mm* target) {
    std::fseek(stream, 0, SEEK_SET);
    int row = 0;
    double value = 0;
    while (std::fgets(line, line_size, stream)) {
        char* s = line;
        while (*s == ' ' || *s == '\t' || *s == '\v' || *s == '\f') ++s;
        if (*s == 0 || std::strchr("%#\r\n", *s)) continue;
        if (char* comment = std::strchr(s, '%')) *comment = 0;
        int count = 0;
        char* save = nullptr;
        for (char* tok = strtok_r(s, " ,\t\r\n", &save); tok; tok = strtok_r(nullptr, " ,\t\r\n", &save)) {
            char token[32];
            std::snprintf(token, sizeof token, "%s", tok);
            if (std::strchr(token, 'I') || std::strchr(token, 'N')) {
                special_value(token, value);  // a word of neither kind repeats the previous value
            } else if (std::sscanf(token, "%lg", &value) != 1) {
                continue;
            }
            if (count == 0) ++row;
            ++count;
            if (target && row <= target->rows() && count <= target->cols())
                target->addr()[(count - 1) * target->rows() + row - 1] = value;
        }
        if (count > 0) {
            if (cols != 0 && cols != count) {
                error("loadascii: matrix in %s is not rectangular", file);
                return false;
            }
            cols = count;
        }
    }
    if (!target) rows = row;
    return true;
}

}  // namespace

std::string text_variable_name(const char* file_name) {
    std::string name = file_name;
    const std::size_t slash = name.find_last_of('/');
    if (slash != std::string::npos) name.erase(0, slash + 1);
    const std::size_t dot = name.find('.');
    if (dot != std::string::npos) name.erase(dot);
    return name;
}

void loadascii_read(const char* file, std::FILE* stream, Mm& var) {
    std::vector<char> line;
    try {
        line.resize(line_size);
    } catch (const std::bad_alloc&) {
        error("Out of memory!");
        return;
    }
    int rows = 0, cols = 0;
    if (!text_pass(file, stream, line.data(), rows, cols, nullptr)) return;
    Mm m = zeros(static_cast<double>(rows), static_cast<double>(cols));
    int recols = 0;
    if (!text_pass(file, stream, line.data(), rows, recols, &m)) return;
    var = m;
}

void saveascii_write(std::FILE* stream, const Mm* const* list, int n) {
    for (int k = 0; k < n; ++k) {
        const Mm& m = *list[k];
        if (m.flags.type != ak_double && m.flags.type != ak_uchar) continue;
        Mm full_m = m.flags.sparse ? full(m) : m;
        const int rows = full_m.rows(), cols = full_m.cols();
        for (int r = 0; r < rows; ++r) {
            for (int c = 0; c < cols; ++c) {
                const int at = c * rows + r;
                const double v = full_m.flags.type == ak_uchar ? static_cast<const unsigned char*>(full_m.pr)[at]
                                                               : full_m.addr()[at];
                char text[64];
                std::snprintf(text, sizeof text, "%23.13g", v);
                fix_nonfinite_text(v, text, sizeof text);
                std::fputs(text, stream);
            }
            std::fputc('\n', stream);
            std::fflush(stream);
        }
    }
}

void save_text_write(std::FILE* stream, const Mm& m, bool double_digits, bool tabs) {
    if (m.flags.type != ak_double && m.flags.type != ak_uchar) {
        warning("save: '%s' is not numeric and is not written as text", display_name(m));
        return;
    }
    Mm f = m.flags.sparse ? full(m) : m;
    if (f.pi) warning("save: the imaginary part of '%s' is not written as text", display_name(m));
    const int rows = f.rows(), cols = f.size() / (rows > 0 ? rows : 1);
    const char* format = double_digits ? "%.15e" : "%.7e";
    for (int r = 0; r < rows; ++r) {
        std::string line;
        for (int c = 0; c < cols; ++c) {
            const int at = c * rows + r;
            const double v =
                f.flags.type == ak_uchar ? static_cast<const unsigned char*>(f.pr)[at] : f.addr()[at];
            char text[64];
            std::snprintf(text, sizeof text, format, v);
            fix_nonfinite_text(v, text, sizeof text);
            if (tabs) {
                if (c > 0) line += '\t';
            } else {
                line += "   ";
            }
            line += text;
        }
        line += '\n';
        std::fputs(line.c_str(), stream);
    }
}

}  // namespace ak_internal
