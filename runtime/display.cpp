// Console display of values: disp for every kind of matrix, display with its header, celldisp and
// dump, and the format switch between short and long display.
#include <cctype>
#include <cstdio>
#include <string>
#include <vector>

#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/display.h"
#include "arklib/format.h"
#include "arklib/subscript.h"
#include "runtime/format_internal.h"
#include "arklib/builtins.h"

int format_short = 1;

namespace {

// Plain text to the print handler: never used as a format.
void print_text(const std::string& text) {
    if (ak_print_handler) ak_print_handler(text.c_str());
}

bool is_x_M(const Mm& x) { return x.pr != nullptr && x.pr == x_M.pr; }

const Mm& element(const Mm& x, int k) { return static_cast<const Mm*>(x.pr)[k]; }

// Pages of a 3-D or 4-D value, each with its heading, through show.
template <typename F>
void pages(const Mm& x, F show) {
    char head[64];
    if (x.ndims == 3) {
        for (int k = 1; k <= x.dims[2]; ++k) {
            std::snprintf(head, sizeof head, "(:,:,%d)\n", k);
            print_text(head);
            show(Mm(x(c_p, c_p, Mm(static_cast<double>(k)))));
        }
        return;
    }
    for (int l = 1; l <= x.dims[3]; ++l) {
        for (int k = 1; k <= x.dims[2]; ++k) {
            std::snprintf(head, sizeof head, "(:,:,%d,%d)\n", k, l);
            print_text(head);
            show(Mm(x(c_p, c_p, Mm(static_cast<double>(k)), Mm(static_cast<double>(l)))));
        }
    }
}

// Each element as "[preview] ", padded to the widest of its column, one line for each row.
void cell_summary(const Mm& x) {
    if (x.size() == 0) {
        print_text("{}\n");
        return;
    }
    if (x.ndims >= 3) {
        pages(x, cell_summary);
        return;
    }
    int rows = x.rows(), cols = x.cols();
    std::vector<std::string> texts(static_cast<size_t>(rows) * cols);
    std::vector<size_t> width(cols, 0);
    for (int c = 0; c < cols; ++c) {
        for (int r = 0; r < rows; ++r) {
            std::string& t = texts[static_cast<size_t>(c) * rows + r];
            t = "[" + preview_text(element(x, c * rows + r)) + "] ";
            if (t.size() > width[c]) width[c] = t.size();
        }
    }
    for (int r = 0; r < rows; ++r) {
        std::string line;
        for (int c = 0; c < cols; ++c) {
            const std::string& t = texts[static_cast<size_t>(c) * rows + r];
            line += t;
            line.append(width[c] - t.size(), ' ');
        }
        print_text(line + "\n");
    }
}

void struct_summary(const Mm& x) {
    if (x.size() > 1) print_text("field list:\n");
    for (int f = 0; f < x.nfields; ++f) {
        const char* name = x.fields[f] ? x.fields[f] : "";
        if (x.size() == 1) {
            const Mm& fields = element(x, 0);
            std::string value = f < fields.size() ? preview_text(element(fields, f)) : std::string("[]");
            print_text("  " + std::string(name) + ": [" + value + "]\n");
        } else {
            print_text("  " + std::string(name) + "\n");
        }
    }
}

void object_summary(const Mm& x) {
    const char* cls = class_name_of(x);
    if (cls && is_class_function(cls, "disp")) {
        call_class_function("disp", x);
        return;
    }
    print_text("field list:\n");
    for (int f = 0; f < x.nfields; ++f) print_text(std::string(x.fields[f] ? x.fields[f] : "") + "\n");
}

// The rows of a character matrix, one handler call for each.
void print_rows(const Mm& s) {
    int rows = s.rows(), cols = rows > 0 ? s.size() / rows : 0;
    std::string line;
    for (int r = 0; r < rows; ++r) {
        line.clear();
        for (int c = 0; c < cols; ++c) {
            double v = s.flags.type == ak_uchar ? static_cast<const unsigned char*>(s.pr)[c * rows + r]
                                                : static_cast<const double*>(s.pr)[c * rows + r];
            line += static_cast<char>(static_cast<unsigned char>(ak_internal::saturate_long(v)));
        }
        line += '\n';
        print_text(line);
    }
}

}  // namespace

Mm format() { return format(TM("short")); }

Mm format(const Mm& x) {
    std::string word = Mstr_row(x).substr(0, 9);
    format_short = (!word.empty() && std::toupper(static_cast<unsigned char>(word[0])) == 'L') ? 0 : 1;
    return x_M;
}

Mm format(const Mm& x, const Mm&) { return format(x); }

Mm disp(const Mm& x) {
    if (is_x_M(x)) return x_M;
    if (iscell(x)) {
        cell_summary(x);
    } else if (isstruct(x)) {
        struct_summary(x);
    } else if (isobject(x)) {
        object_summary(x);
    } else if ((x.ndims == 3 || x.ndims == 4) && x.size() > 0) {
        pages(x, [](const Mm& page) { disp(page); });
    } else {
        Mm s = x.flags.str ? x : format_short ? num2str(x) : num2str(x, Mm(12.0));
        if (s.flags.type == ak_double || s.flags.type == ak_uchar) print_rows(s);
    }
    return x_M;
}

Mm puts(const Mm& x) { return disp(x); }

std::string get_whos_line(const Mm& x) {
    std::string t = " (";
    for (int d = 0; d < x.ndims && d < 4; ++d) t += (d ? "x" : "") + std::to_string(x.dims[d]);
    int element_size = x.flags.type == ak_double ? 8 : x.flags.type == ak_uchar ? 1 : x.flags.type == ak_mm ? 92 : 0;
    long long bytes = static_cast<long long>(x.nnz) * element_size + (x.flags.sparse ? 4LL * x.nnz : 0);
    const char* kind = x.flags.str ? "" : x.pi ? "complex" : "real";
    char tail[160];
    std::snprintf(tail, sizeof tail, ")=%d %s elements %s (%lld bytes)", x.size(), class_name_of(x), kind, bytes);
    return t + tail;
}

Mm disp_header(const Mm& x) {
    if (is_x_M(x)) return x_M;
    print_text(std::string(x.name ? x.name : "ans") + get_whos_line(x) + " = \n");
    return x_M;
}

Mm display(const Mm& x) {
    const char* cls = class_name_of(x);
    if (cls && is_class_function(cls, "display")) {
        call_class_function("display", x);
        return x_M;
    }
    disp_header(x);
    disp(x);
    return x_M;
}

namespace {

void celldisp_named(const Mm& x, const char* name) {
    int rows = x.rows(), cols = rows > 0 ? x.size() / rows : 0;
    char head[512];
    for (int r = 1; r <= rows; ++r) {
        for (int c = 1; c <= cols; ++c) {
            std::snprintf(head, sizeof head, "%s{%d,%d}\n", name, r, c);
            print_text(head);
            const Mm& e = element(x, (c - 1) * rows + r - 1);
            if (iscell(e))
                celldisp_named(e, "ans");
            else
                disp(e);
        }
    }
}

}  // namespace

Mm celldisp(const Mm& x) {
    if (!iscell(x)) {
        error("%s is not a cell array.", display_name(x));
        return x_M;
    }
    celldisp_named(x, x.name ? x.name : "ans");
    return x_M;
}

Mm dump(const Mm& x) {
    ak_printf("**dump of %s this = %lx persistent = %d global = %d\n", display_name(x),
              reinterpret_cast<unsigned long>(&x), x.flags.workspace_var, x.flags.global ? 1 : 0);
    ak_printf("pr = %lx pi = %lx index = %lx nnz = %d type = %d classid = %d class = %s\n",
              reinterpret_cast<unsigned long>(x.pr), reinterpret_cast<unsigned long>(x.pi),
              reinterpret_cast<unsigned long>(x.index), x.nnz, static_cast<int>(x.flags.type), x.classid,
              class_name_of(x));
    ak_printf("ndims = %d  dims = ", x.ndims);
    for (int d = 0; d < 4; ++d) ak_printf("%d ", x.dims[d]);
    ak_printf("str = %d sparse = %d logical = %d nfields = %d\n", x.flags.str, x.flags.sparse, x.flags.logical,
              x.nfields);
    if (x.fields) {
        ak_printf("fields: ");
        for (int f = 0; f < x.nfields; ++f) ak_printf("%s ", x.fields[f] ? x.fields[f] : "");
        ak_printf("\n");
    }
    return x_M;
}

Mm usage(const Mm& x) {
    print_text("Usage: ");
    return disp(x);
}

Mm smiley() {
    print_text("8-)\n");
    return x_M;
}

// ---- rows of the table of functions by name ----------------------------------------------------
AK_BUILTIN("format", AK_FN(format), AK_FN(format, const Mm&), AK_FN(format, const Mm&, const Mm&));
AK_BUILTIN("disp", AK_FN(disp, const Mm&));
AK_BUILTIN("display", AK_FN(display, const Mm&));
AK_BUILTIN("celldisp", AK_FN(celldisp, const Mm&));
AK_BUILTIN("dump", AK_FN(dump, const Mm&));
AK_BUILTIN("puts", AK_FN(puts, const Mm&));
AK_BUILTIN("usage", AK_FN(usage, const Mm&));
AK_BUILTIN("smiley", AK_FN(smiley));
