// Formatting entry points of the channel (error, warning, message, logmessage, ak_printf), the default
// error and warning handlers, the last-error text and the M-file call stack report.
#include "arklib/error.h"
#include "arklib/memory.h"
#include "runtime/error_internal.h"

#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

int error_line = 0;
const char* error_text = nullptr;
const char* error_file = nullptr;

ak_error_stack_t ak_error_stack;

ak_error_stack_t::ak_error_stack_t() : depth(0), current_line(lines) {}

namespace {

// Every message is formatted here; the error handler's thrown char* points into it.
char message_buffer[ak_message_size];

// The pending error report.
char lasterr_text[ak_message_size + 1];

// A report with its stack appended is folded in this buffer, which allocates nothing, so that the
// crash filter can show a pending error. Reports longer than this are cut.
char report_buffer[64 * 1024];

// Formats through a local buffer, so that an argument pointing into `out` (a caught message passed
// back to error) is read before it is overwritten. A longer text is cut.
void format_into(char* out, std::size_t size, const char* format, va_list args) {
    char local[ak_message_size + 1];
    std::size_t limit = size < sizeof local ? size : sizeof local;
    if (limit == 0) return;
    int n = std::vsnprintf(local, limit, format ? format : "", args);
    if (n < 0) local[0] = '\0';
    std::memcpy(out, local, std::strlen(local) + 1);
}

void format_into(char* out, std::size_t size, const char* format, ...) {
    va_list args;
    va_start(args, format);
    format_into(out, size, format, args);
    va_end(args);
}

const char* format_message(const char* format, va_list args) {
    format_into(message_buffer, sizeof message_buffer, format, args);
    return message_buffer;
}

void print(const char* text) {
    if (ak_print_handler) ak_print_handler(text);
}

void report_error(const char* text) {
    (ak_error_handler ? ak_error_handler : ak_internal::default_error_handler)(text);
}

void report_warning(const char* text) {
    (ak_warning_handler ? ak_warning_handler : ak_internal::default_warning_handler)(text);
}

// The source line that error_line points at in error_text, without leading blanks and line end.
void source_line(char* out, std::size_t size) {
    const char* p = error_text ? error_text : "";
    for (int line = 1; line < error_line; ++line) {
        const char* next = std::strchr(p, '\n');
        if (!next) break;
        p = next + 1;
    }
    p += std::strspn(p, " \t");
    std::size_t n = std::strcspn(p, "\n");
    if (n > size - 1) n = size - 1;
    std::memcpy(out, p, n);
    out[n] = '\0';
    out[std::strcspn(out, "\r")] = '\0';
}

// A message located in the host's source text: file, line, the line itself, then the message.
void located_form(char* out, std::size_t size, const char* m) {
    char line[ak_message_size];
    source_line(line, sizeof line);
    format_into(out, size, "%s %s %d: '%s'\n%s\n\n", "Error", error_file ? error_file : "", error_line, line,
                m);
}

// Appends to `text` (length `len`, buffer `size`) as far as it fits; returns the new length.
std::size_t append(char* text, std::size_t len, std::size_t size, const char* format, ...) {
    if (len + 1 >= size) return len;
    va_list args;
    va_start(args, format);
    int n = std::vsnprintf(text + len, size - len, format, args);
    va_end(args);
    if (n < 0) {
        text[len] = '\0';
        return len;
    }
    std::size_t added = static_cast<std::size_t>(n);
    return added < size - len ? len + added : size - 1;
}

// Long lines are broken at the first blank at column 64 or beyond (columns counted from 0 on each line).
void fold_lines(char* text) {
    int column = 0;
    for (char* p = text; *p; ++p) {
        if (*p == ' ' && column >= 64) *p = '\n';
        column = *p == '\n' ? 0 : column + 1;
    }
}

}  // namespace

const char* ak_lasterr_text() { return lasterr_text; }
int ak_lasterr_pending() { return lasterr_text[0] != '\0'; }
void ak_lasterr_clear() { lasterr_text[0] = '\0'; }

void ak_lasterr_store(const char* text) {
    std::size_t n = std::strlen(text);
    if (n > ak_message_size) n = ak_message_size;
    std::memmove(lasterr_text, text, n);
    lasterr_text[n] = '\0';
}

std::size_t ak_error_call_stack_n(char* text, std::size_t size) {
    std::size_t len = std::strlen(text);
    int top = ak_error_stack.depth;
    if (top > 512) top = 512;
    for (int k = top; k >= 1; --k) {
        const char* file = ak_error_stack.files[k];
        len = append(text, len, size, "%s %s", "called from", file ? file : "");
        if (ak_error_stack.lines[k] != 0) len = append(text, len, size, " %d", ak_error_stack.lines[k]);
        len = append(text, len, size, "\n");
    }
    return len;
}

void error_call_stack(char* text) { ak_error_call_stack_n(text, ak_message_size); }

void error_lasterr() {
    if (!lasterr_text[0]) std::strcpy(lasterr_text, "Aborted!\n");
    std::strcpy(report_buffer, lasterr_text);
    ak_error_call_stack_n(report_buffer, sizeof report_buffer);
    fold_lines(report_buffer);
    if (ak_default_error_flags & 1) {
        print(report_buffer);
        print("\n");
    }
    if (ak_default_error_flags & 2) ak_message_box(report_buffer, "Problem", 48);
    lasterr_text[0] = '\0';
}

void ak_internal::default_error_handler(const char* m) {
    if (!m) m = "";
    if (error_line < 1) {
        format_into(lasterr_text, sizeof lasterr_text, "error: %s\n", m);
    } else {
        located_form(lasterr_text, sizeof lasterr_text, m);
    }
    if (!(ak_default_error_flags & 16)) {
        error_lasterr();
        std::fflush(nullptr);
        std::exit(1);
    }
    // The report stays pending: whoever catches this shows it (error_lasterr) or takes it (lasterr).
    throw const_cast<char*>(m);
}

void ak_internal::default_warning_handler(const char* m) {
    if (!m) m = "";
    char report[ak_message_size];
    if (error_line < 1) {
        format_into(report, sizeof report, "warning: %s\n\n", m);
    } else {
        located_form(report, sizeof report, m);
    }
    if (ak_default_warning_flags & 1) print(report);
    if (ak_default_warning_flags & 2) ak_message_box(report, "Problem", 48);
}

void error(const char* format, ...) {
    va_list args;
    va_start(args, format);
    const char* text = format_message(format, args);
    va_end(args);
    report_error(text);
}

void warning(const char* format, ...) {
    va_list args;
    va_start(args, format);
    const char* text = format_message(format, args);
    va_end(args);
    report_warning(text);
}

void message(const char* format, ...) {
    va_list args;
    va_start(args, format);
    const char* text = format_message(format, args);
    va_end(args);
    if (ak_message_handler) ak_message_handler(text);
}

void logmessage(const char* format, ...) {
    va_list args;
    va_start(args, format);
    const char* text = format_message(format, args);
    va_end(args);
    if (ak_logmessage_handler) ak_logmessage_handler(text);
}

void error(int line, const char* format, ...) {
    error_line = line;
    va_list args;
    va_start(args, format);
    const char* text = format_message(format, args);
    va_end(args);
    report_error(text);
}

void warning(int line, const char* format, ...) {
    error_line = line;
    va_list args;
    va_start(args, format);
    const char* text = format_message(format, args);
    va_end(args);
    report_warning(text);
}

// Short output is formatted on the stack; longer output in a block of exactly its size.
int ak_printf(const char* format, ...) {
    if (!format) return 0;
    char small[1024];
    va_list args, again;
    va_start(args, format);
    va_copy(again, args);
    int n = std::vsnprintf(small, sizeof small, format, args);
    va_end(args);
    if (n >= 0 && n < static_cast<int>(sizeof small)) {
        print(small);
    } else if (n > 0 && n < INT_MAX) {
        ak_scratch<char> block(n + 1);
        if (block.get()) {
            std::vsnprintf(block.get(), static_cast<std::size_t>(n) + 1, format, again);
            print(block.get());
        }
    }
    va_end(again);
    return n;
}
