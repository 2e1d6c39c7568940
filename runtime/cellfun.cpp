// cellfun over the function table, and num2cell.
#include <algorithm>
#include <cstring>
#include <string>
#include <strings.h>
#include <vector>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cellfun.h"
#include "arklib/cells.h"
#include "arklib/sparse.h"
#include "runtime/strings_internal.h"

using ak_strings::cell_items;

namespace {

// The names done without a call: the test or measure of one element.
double direct_value(const std::string& f, const Mm& e, const Mm* extra, bool& known) {
    known = true;
    if (f == "isempty") return e.size() == 0;
    if (f == "islogical") return e.flags.logical != 0;
    if (f == "isreal") return e.pi == nullptr && e.flags.type != ak_mm;
    if (f == "isnumeric") return (e.flags.type == ak_double || e.flags.type == ak_uchar) && !e.flags.str && !e.flags.logical;
    if (f == "ischar") return e.flags.str && e.flags.type != ak_mm;
    if (f == "iscell") return iscell(e) != 0;
    if (f == "length") return e.size() == 0 ? 0 : *std::max_element(e.dims, e.dims + e.ndims);
    if (f == "ndims") return e.ndims;
    if (f == "numel" || f == "prodofsize") return e.size();
    if (f == "size" && extra) {
        int k = static_cast<int>(scalar(*extra));
        return k >= 1 && k <= e.ndims ? e.dims[k - 1] : k > e.ndims ? 1 : 0;
    }
    if (f == "isclass" && extra) return ak_strings::text_of(*extra) == class_name_of(e);
    known = false;
    return 0.0;
}

bool same_shape(const Mm& a, const Mm& b) {
    return a.ndims == b.ndims && std::memcmp(a.dims, b.dims, sizeof a.dims) == 0;
}

// Takes the trailing "UniformOutput", value pairs off the argument count.
bool read_uniform(int& nin, const Mm* in, bool& uniform) {
    uniform = true;
    while (nin >= 4 && in[nin - 2].flags.str && !iscell(in[nin - 2])) {
        std::string name = ak_strings::text_of(in[nin - 2]);
        if (strcasecmp(name.c_str(), "UniformOutput") != 0) {
            error("cellfun: unknown option '%s'", name.c_str());
            return false;
        }
        uniform = istrue(in[nin - 1]);
        nin -= 2;
    }
    return true;
}

// A matrix of the cell's shape from scalar results: double, or logical or char when all are.
Mm uniform_result(const Mm& like, const std::vector<Mm>& values) {
    Mm r(0, 0, 0, like.ndims, like.dims, ak_double);
    bool logical = true, text = true;
    for (std::size_t k = 0; k < values.size(); ++k) {
        r.addr()[k] = ak_strings::code_at(values[k], 0);
        logical = logical && values[k].flags.logical;
        text = text && values[k].flags.str;
    }
    r.flags.logical = logical && !values.empty();
    r.flags.str = text && !values.empty();
    return r;
}

void run_cellfun(int nin, const Mm* in, int nout, Mm* out) {
    for (int k = 0; k < nout; ++k) out[k] = x_M;
    if (nin < 2) {
        error_input("cellfun", nin);
        return;
    }
    bool uniform = true;
    if (!read_uniform(nin, in, uniform)) return;
    if (!ak_strings::is_string_row(in[0])) {
        error("cellfun: the function must be given by its name");
        return;
    }
    std::string f = ak_strings::text_of(in[0]);
    const Mm& first = in[1];
    if (!iscell(first)) {
        error("cellfun: the arguments must be cell arrays");
        return;
    }
    // The direct names take one cell and, for size and isclass, one more argument.
    bool known = false;
    const Mm* extra = nin == 3 && !iscell(in[2]) ? &in[2] : nullptr;
    if (nin == 2 || extra) {
        direct_value(f, first.nnz ? cell_items(first)[0] : Mm(), extra, known);
        if (known) {
            Mm r(0, 0, 0, first.ndims, first.dims, ak_double);
            for (int k = 0; k < first.nnz; ++k) r.addr()[k] = direct_value(f, cell_items(first)[k], extra, known);
            r.flags.logical = f.compare(0, 2, "is") == 0;
            out[0] = r;
            return;
        }
    }
    for (int a = 1; a < nin; ++a)
        if (!iscell(in[a]) || !same_shape(in[a], first)) {
            error("cellfun: all the arguments must be cell arrays of the same size");
            return;
        }
    int n = first.nnz, wanted = nout < 1 ? 1 : nout;
    std::vector<std::vector<Mm>> results(wanted, std::vector<Mm>(n));
    std::vector<Mm> args(nin - 1), got(wanted);
    for (int k = 0; k < n; ++k) {
        for (int a = 1; a < nin; ++a) args[a - 1] = cell_items(in[a])[k];
        if (!ak_call_function(f.c_str(), nin - 1, args.data(), wanted, got.data())) return;
        for (int o = 0; o < wanted; ++o) {
            if (uniform && got[o].size() != 1) {
                error("cellfun: all results must be scalars when UniformOutput is true; use 'UniformOutput', false");
                return;
            }
            if (uniform && (got[o].flags.type == ak_mm || got[o].pi)) {
                error("cellfun: all results must be real numbers when UniformOutput is true");
                return;
            }
            results[o][k] = got[o];
        }
    }
    for (int o = 0; o < wanted; ++o) {
        if (uniform) {
            out[o] = uniform_result(first, results[o]);
            continue;
        }
        Mm c(0, 0, 0, first.ndims, first.dims, ak_mm);
        for (int k = 0; k < n; ++k) static_cast<Mm*>(c.pr)[k] = results[o][k];
        out[o] = c;
    }
}

}  // namespace

Mm cellfun(const Mm& f) {
    error_input("cellfun", 1);
    (void)f;
    return x_M;
}

Mm cellfun(const Mm& f, const Mm& a) {
    const Mm in[] = {f, a};
    Mm out[1];
    run_cellfun(2, in, 1, out);
    return out[0];
}
Mm cellfun(const Mm& f, const Mm& a, i_o_t, Mm& o2) {
    const Mm in[] = {f, a};
    Mm out[2];
    run_cellfun(2, in, 2, out);
    *(&o2) = out[1];
    return out[0];
}
Mm cellfun(const Mm& f, const Mm& a, i_o_t, Mm& o2, Mm& o3) {
    const Mm in[] = {f, a};
    Mm out[3];
    run_cellfun(2, in, 3, out);
    *(&o2) = out[1];
    *(&o3) = out[2];
    return out[0];
}
Mm cellfun(const Mm& f, const Mm& a, const Mm& b) {
    const Mm in[] = {f, a, b};
    Mm out[1];
    run_cellfun(3, in, 1, out);
    return out[0];
}
Mm cellfun(const Mm& f, const Mm& a, const Mm& b, i_o_t, Mm& o2) {
    const Mm in[] = {f, a, b};
    Mm out[2];
    run_cellfun(3, in, 2, out);
    *(&o2) = out[1];
    return out[0];
}
Mm cellfun(const Mm& f, const Mm& a, const Mm& b, i_o_t, Mm& o2, Mm& o3) {
    const Mm in[] = {f, a, b};
    Mm out[3];
    run_cellfun(3, in, 3, out);
    *(&o2) = out[1];
    *(&o3) = out[2];
    return out[0];
}
Mm cellfun(const Mm& f, const Mm& a, const Mm& b, const Mm& c) {
    const Mm in[] = {f, a, b, c};
    Mm out[1];
    run_cellfun(4, in, 1, out);
    return out[0];
}
Mm cellfun(const Mm& f, const Mm& a, const Mm& b, const Mm& c, i_o_t, Mm& o2) {
    const Mm in[] = {f, a, b, c};
    Mm out[2];
    run_cellfun(4, in, 2, out);
    *(&o2) = out[1];
    return out[0];
}
Mm cellfun(const Mm& f, const Mm& a, const Mm& b, const Mm& c, i_o_t, Mm& o2, Mm& o3) {
    const Mm in[] = {f, a, b, c};
    Mm out[3];
    run_cellfun(4, in, 3, out);
    *(&o2) = out[1];
    *(&o3) = out[2];
    return out[0];
}
Mm cellfun(const Mm& f, const Mm& a, const Mm& b, const Mm& c, const Mm& d) {
    const Mm in[] = {f, a, b, c, d};
    Mm out[1];
    run_cellfun(5, in, 1, out);
    return out[0];
}
Mm cellfun(const Mm& f, const Mm& a, const Mm& b, const Mm& c, const Mm& d, i_o_t, Mm& o2) {
    const Mm in[] = {f, a, b, c, d};
    Mm out[2];
    run_cellfun(5, in, 2, out);
    *(&o2) = out[1];
    return out[0];
}
Mm cellfun(const Mm& f, const Mm& a, const Mm& b, const Mm& c, const Mm& d, i_o_t, Mm& o2, Mm& o3) {
    const Mm in[] = {f, a, b, c, d};
    Mm out[3];
    run_cellfun(5, in, 3, out);
    *(&o2) = out[1];
    *(&o3) = out[2];
    return out[0];
}
Mm cellfun(const Mm& f, const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e) {
    const Mm in[] = {f, a, b, c, d, e};
    Mm out[1];
    run_cellfun(6, in, 1, out);
    return out[0];
}
Mm cellfun(const Mm& f, const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e, i_o_t, Mm& o2) {
    const Mm in[] = {f, a, b, c, d, e};
    Mm out[2];
    run_cellfun(6, in, 2, out);
    *(&o2) = out[1];
    return out[0];
}
Mm cellfun(const Mm& f, const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e, i_o_t, Mm& o2, Mm& o3) {
    const Mm in[] = {f, a, b, c, d, e};
    Mm out[3];
    run_cellfun(6, in, 3, out);
    *(&o2) = out[1];
    *(&o3) = out[2];
    return out[0];
}

// ---- num2cell ----------------------------------------------------------------------------------------

namespace {

// Element k of x (or the elements picked by `picks`) as a matrix of its own with x's flags.
Mm part_of(const Mm& x, const std::vector<int>& picks, int rows, int cols) {
    if (x.flags.type == ak_mm) {
        Mm c(0, 0, 0, rows, cols, ak_mm);
        for (std::size_t k = 0; k < picks.size(); ++k) static_cast<Mm*>(c.pr)[k] = cell_items(x)[picks[k]];
        return c;
    }
    Mm r(x.pi ? 1 : 0, 0, 0, rows, cols, x.flags.type);
    for (std::size_t k = 0; k < picks.size(); ++k) {
        if (x.flags.type == ak_uchar)
            static_cast<unsigned char*>(r.pr)[k] = static_cast<const unsigned char*>(x.pr)[picks[k]];
        else
            r.addr()[k] = x.addr()[picks[k]];
        if (x.pi) r.addi()[k] = x.addi()[picks[k]];
    }
    r.flags.str = x.flags.str;
    r.flags.logical = x.flags.logical;
    return r;
}

Mm split_cells(const Mm& x0, int dim) {
    x0.warn_uninit();
    if (x0.flags.type == ak_no_type) return x_M;
    if (x0.fields) {
        error("num2cell: a structure array cannot be split");
        return x_M;
    }
    Mm x = x0.flags.sparse ? full(x0) : x0;
    if (dim == 0) {
        Mm c(0, 0, 0, x.ndims, x.dims, ak_mm);
        for (int k = 0; k < x.nnz; ++k) static_cast<Mm*>(c.pr)[k] = part_of(x, {k}, 1, 1);
        return c;
    }
    if (x.ndims > 2) {
        error("num2cell: a dimension argument needs a two-dimensional matrix");
        return x_M;
    }
    int rows = x.dims[0], cols = x.dims[1];
    Mm c(0, 0, 0, dim == 1 ? 1 : rows, dim == 1 ? cols : 1, ak_mm);
    for (int k = 0; k < c.nnz; ++k) {
        std::vector<int> picks;
        for (int j = 0; j < (dim == 1 ? rows : cols); ++j) picks.push_back(dim == 1 ? k * rows + j : j * rows + k);
        static_cast<Mm*>(c.pr)[k] = dim == 1 ? part_of(x, picks, rows, 1) : part_of(x, picks, 1, cols);
    }
    return c;
}

}  // namespace

Mm num2cell(const Mm& x) { return split_cells(x, 0); }

Mm num2cell(const Mm& x, const Mm& dim) {
    double d = scalar(dim);
    if (d != 1.0 && d != 2.0) {
        error("num2cell: dim must be 1 or 2");
        return x_M;
    }
    return split_cells(x, static_cast<int>(d));
}

AK_BUILTIN("cellfun", run_cellfun);
AK_BUILTIN("num2cell", AK_FN(num2cell, const Mm&), AK_FN(num2cell, const Mm&, const Mm&));
