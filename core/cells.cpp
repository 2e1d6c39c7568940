// Cell arrays: construction, cells of strings.
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/constructors.h"
#include "arklib/sparse.h"
#include "arklib/strings.h"
#include "arklib/builtins.h"

namespace {

// A cell of the sizes given, every element a default (0x0) matrix; any empty size argument gives
// the empty result instead.
Mm sized_cell(const char* fname, int count, const Mm* const args[]) {
    for (int k = 0; k < count; ++k)
        if (args[k]->size() == 0) return nop_M;
    int dims[4];
    int nd = ak_internal::read_size_arguments(fname, count, args, dims);
    return Mm(0, 0, 0, nd, dims, ak_mm);
}

// Row k (zero-based) of a numeric matrix, every dimension past the first taken as columns.
Mm row_of(const Mm& x, int k) {
    int rows = x.dims[0], cols = x.nnz / rows;
    Mm r(x.pi != nullptr, 0, 0, 1, cols, x.flags.type);
    for (int c = 0; c < cols; ++c) {
        int from = c * rows + k;
        if (x.flags.type == ak_uchar) {
            static_cast<unsigned char*>(r.pr)[c] = static_cast<const unsigned char*>(x.pr)[from];
        } else {
            r.addr()[c] = x.addr()[from];
            if (x.pi) r.addi()[c] = x.addi()[from];
        }
    }
    r.flags.str = x.flags.str;
    return r;
}

}  // namespace

// One argument: a scalar n gives n x n, a vector of 2 to 4 sizes gives those sizes.
Mm cell(const Mm& n) {
    const Mm* a[] = {&n};
    return sized_cell("cell", 1, a);
}
Mm cell(const Mm& m, const Mm& n) {
    const Mm* a[] = {&m, &n};
    return sized_cell("cell", 2, a);
}
Mm cell(const Mm& m, const Mm& n, const Mm& p) {
    const Mm* a[] = {&m, &n, &p};
    return sized_cell("cell", 3, a);
}
Mm cell(const Mm& m, const Mm& n, const Mm& p, const Mm& q) {
    const Mm* a[] = {&m, &n, &p, &q};
    return sized_cell("cell", 4, a);
}

Mm cells(const Mm& n) { return cell(n); }
Mm cells(const Mm& m, const Mm& n) { return cell(m, n); }
Mm cells(const Mm& m, const Mm& n, const Mm& p) { return cell(m, n, p); }
Mm cells(const Mm& m, const Mm& n, const Mm& p, const Mm& q) { return cell(m, n, p, q); }

Mm cell_from_array(int n, const Mm** list) {
    Mm r(0, 0, 0, n, 1, ak_mm);
    Mm* e = static_cast<Mm*>(r.pr);
    for (int k = 0; k < r.nnz; ++k)
        if (list && list[k]) e[k] = *list[k];
    return r;
}

Mm cellstr(const Mm& x) {
    if (iscell(x)) return x;
    x.warn_uninit();
    if (error_numeric(x, "cellstr")) return x_M;
    Mm text = x.flags.sparse ? full(x) : x;
    Mm r(0, 0, 0, text.dims[0], 1, ak_mm);
    Mm* e = static_cast<Mm*>(r.pr);
    for (int k = 0; k < r.nnz; ++k) e[k] = deblank(row_of(text, k));
    return r;
}

Mm iscellstr(const Mm& x) {
    int all = iscell(x);
    const Mm* e = static_cast<const Mm*>(x.pr);
    for (int k = 0; all && k < x.nnz; ++k) all = e[k].flags.str;
    Mm r(static_cast<double>(all));
    r.flags.logical = 1;
    return r;
}

// ---- rows of the table of functions by name ----------------------------------------------------
AK_BUILTIN("cell", AK_FN(cell, const Mm&), AK_FN(cell, const Mm&, const Mm&),
           AK_FN(cell, const Mm&, const Mm&, const Mm&),
           AK_FN(cell, const Mm&, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("cells", AK_FN(cells, const Mm&), AK_FN(cells, const Mm&, const Mm&),
           AK_FN(cells, const Mm&, const Mm&, const Mm&),
           AK_FN(cells, const Mm&, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("cellstr", AK_FN(cellstr, const Mm&));
AK_BUILTIN("iscellstr", AK_FN(iscellstr, const Mm&));
