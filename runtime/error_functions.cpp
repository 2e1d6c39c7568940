// The language functions of the error channel: error, warning, lasterr, mfilename, mfileline.
#include "arklib/matrix.h"
#include "runtime/error_internal.h"

#include <cstring>
#include "arklib/builtins.h"

namespace {

// Read by warning(); nothing in the library turns it off.
int warnings_on = 1;

// A text used as a format with no arguments: only "%%" has a meaning there, every other
// conversion is kept as written instead of reading arguments that do not exist.
void expand_percent_pairs(char* text) {
    char* out = text;
    for (const char* p = text; *p; ++p) {
        *out++ = *p;
        if (p[0] == '%' && p[1] == '%') ++p;
    }
    *out = '\0';
}

}  // namespace

Mm error() {
    error("error!");
    return x_M;
}

Mm error(const Mm& text) {
    if (text.size() > 0) {
        char buffer[ak_message_size];
        Mstr(text, buffer, sizeof buffer);
        error("%s", buffer);
    }
    return x_M;
}

Mm warning() { return TM(warnings_on ? "on" : "off"); }

Mm warning(const Mm& text) {
    char buffer[1025];
    Mstr(text, buffer, sizeof buffer);
    if (warnings_on && std::strcmp(buffer, "on") != 0 && std::strcmp(buffer, "off") != 0) {
        expand_percent_pairs(buffer);
        warning("%s", buffer);
    }
    return x_M;
}

Mm lasterr() {
    Mm text = TM(ak_lasterr_text());
    ak_lasterr_clear();
    return text;
}

Mm lasterr(const Mm& text) {
    char buffer[ak_message_size + 1];
    Mstr(text, buffer, sizeof buffer);
    ak_lasterr_store(buffer);
    return x_M;
}

// The running M-file's name, without directory and extension; "unknown" outside any M-file.
Mm mfilename() {
    int top = ak_error_stack.depth;
    if (top < 1 || top > 512) return TM("unknown");
    const char* file = ak_error_stack.files[top];
    if (!file) return TM("");
    const char* base = file;
    for (const char* p = file; *p; ++p) {
        if (*p == '/' || *p == '\\') base = p + 1;
    }
    char buffer[ak_message_size];
    std::size_t n = std::strcspn(base, ".");
    if (n > sizeof buffer - 1) n = sizeof buffer - 1;
    std::memcpy(buffer, base, n);
    buffer[n] = '\0';
    return TM(buffer);
}

Mm mfileline() {
    int top = ak_error_stack.depth;
    if (top < 1 || top > 512) return Mm(0.0);
    return Mm(static_cast<double>(ak_error_stack.lines[top]));
}

// ---- rows of the table of functions by name ----------------------------------------------------
AK_BUILTIN("error", AK_FN(error), AK_FN(error, const Mm&));
AK_BUILTIN("warning", AK_FN(warning), AK_FN(warning, const Mm&));
AK_BUILTIN("lasterr", AK_FN(lasterr), AK_FN(lasterr, const Mm&));
AK_BUILTIN("mfilename", AK_FN(mfilename));
AK_BUILTIN("mfileline", AK_FN(mfileline));
