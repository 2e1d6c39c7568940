// The calling convention: counters, switch support, the program's hooks, argument checks, scalar
// conversion and for-loop support.
#include <cmath>
#include <cstring>

#include "arklib/calling.h"
#include "arklib/error.h"
#include "arklib/sparse.h"
#include "arklib/builtins.h"

int nargin_set = 0;
int nargout_set = 0;
double nargin_val = 0.0;
double nargout_val = 0.0;
int switchdepth = 0;
int switchfalse = 0;

namespace {

Mm feval_not_linked(Mm, Mm, i_o_t, Mm&, Mm&, Mm&, Mm&, Mm&, Mm&) {
    error("feval was not linked with the program.");
    return x_M;
}

}  // namespace

ak_feval_func_t feval_func = feval_not_linked;

// ---- counters and switch -------------------------------------------------------------------------

double nargin() { return nargin_val; }
double nargout() { return nargout_val; }

Mm argn(i_o_t, Mm& out, Mm& in) {
    out = Mm(nargout_val);
    in = Mm(nargin_val);
    return x_M;
}

Mm switchinit(const Mm& v) {
    v.warn_uninit();
    return Mm(v);
}

// ---- argument checks -----------------------------------------------------------------------------

int validate_narg(const char* name, int nout, int nin, int min_out, int max_out, int min_in, int max_in) {
    if (nout < min_out) {
        error("Too few (%d<%d) outputs for %s", nout, min_out, name);
    } else if (nout > max_out) {
        error("Too many (%d>%d) outputs for %s", nout, max_out, name);
    } else if (nin < min_in) {
        error("Too few (%d<%d) inputs for %s", nin, min_in, name);
    } else if (nin > max_in) {
        error("Too many (%d>%d) inputs for %s", nin, max_in, name);
    } else {
        return 0;
    }
    return 1;
}

double error_input(const char* name, int n) {
    error("%s does not accept %d input%s", name, n, n == 1 ? "" : "s");
    return 0.0;
}

Mm nargchk(const Mm&) {
    error_input("nargchk", 1);
    return x_M;
}

Mm nargchk(const Mm&, const Mm&) {
    error_input("nargchk", 2);
    return x_M;
}

Mm nargchk(const Mm& low, const Mm& high, const Mm& n) {
    double count = scalar(n);
    if (count > scalar(high)) return TM("too many input arguments");
    if (count < scalar(low)) return TM("too few input arguments");
    return TM("");
}

int error_2d(const Mm& m, const char* name) {
    if (m.ndims < 3) return 0;
    error("%s: 2-d matrix expected, but matrix %s has %d dimensions", name, display_name(m), m.ndims);
    return 1;
}

int error_square(const Mm& m, const char* name) {
    if (error_2d(m, name)) return 1;
    if (m.dims[0] == m.dims[1]) return 0;
    error("%s: square matrix expected, but matrix %s has %d rows and %d columns", name, display_name(m),
          m.dims[0], m.dims[1]);
    return 1;
}

int error_struct(const Mm& m, const char* name) {
    if (m.fields) return 0;
    error("%s: structure expected, but matrix %s is not", name, display_name(m));
    return 1;
}

int error_numeric(const Mm& m, const char* name) {
    if (m.flags.type != ak_mm) return 0;
    error("%s: numeric data expected, but matrix %s is not", name, display_name(m));
    return 1;
}

// ---- scalar --------------------------------------------------------------------------------------

double scalar(double v) { return v; }

double scalar(const Mm& m) {
    const char* why = m.size() != 1               ? "not scalar"
                      : m.pi                      ? "complex"
                      : m.flags.str               ? "string"
                      : m.flags.sparse            ? "sparse"
                      : m.flags.type != ak_double ? "not double"
                                                  : nullptr;
    if (!why) return *static_cast<const double*>(m.pr);
    error("scalar: matrix %s is %s", display_name(m), why);
    return 0.0;
}

// ---- for loops -----------------------------------------------------------------------------------

int forsize(const Mm& m) { return m.dims[1]; }

int columns(const Mm& m) { return m.dims[1]; }

namespace {

// Whether the loop variable can take the next column in place: it alone holds its storage, and the
// storage has the shape, type and halves that the column needs (the loop body may have assigned
// something else to it, or dropped its imaginary half).
bool column_fits(const Mm& var, int rows, ak_matrix_types type, bool complex) {
    return var.refs && !var.dirty() && var.flags.type == type && !var.flags.sparse && !var.fields &&
           var.ndims == 2 && var.dims[0] == rows && var.dims[1] == 1 && var.nnz == rows && var.p >= rows &&
           (var.pi != nullptr) == complex;
}

// Cells and structures: a fresh column of shared elements each time, with the field table.
void cell_column(Mm& var, const Mm& m, int k) {
    int rows = m.dims[0];
    Mm column(0, 0, 0, rows, 1, ak_mm);
    const Mm* from = m.getpr(static_cast<Mm*>(nullptr)) + static_cast<long>(k) * rows;
    Mm* to = column.getpr(static_cast<Mm*>(nullptr));
    for (int r = 0; r < column.nnz; ++r) to[r] = from[r];
    for (int f = 0; m.fields && f < m.nfields; ++f) column.addfield(m.fields[f], 1);
    column.classid = m.classid;
    var = column;
}

}  // namespace

void forelem_column(Mm& var, Mm& m, int k) {
    if (m.flags.sparse) m = full(m);
    if (m.flags.type == ak_no_type) {
        m.warn_uninit();
        return;
    }
    if (k < 0 || k >= m.dims[1] || m.ndims < 2) {
        error("forelem: column %d of %s does not exist (%d columns)", k + 1, display_name(m), m.dims[1]);
        return;
    }
    if (m.flags.type == ak_mm) {
        cell_column(var, m, k);
        return;
    }
    int rows = m.dims[0];
    bool complex = m.pi != nullptr;
    if (k == 0 || !column_fits(var, rows, m.flags.type, complex))
        var = Mm(complex, 0, 0, rows, 1, m.flags.type);
    if (var.nnz != rows) return;  // allocation failed and was reported
    var.flags.str = m.flags.str;
    var.flags.logical = m.flags.logical;
    std::size_t width = m.flags.type == ak_uchar ? 1 : sizeof(double);
    std::size_t offset = static_cast<std::size_t>(k) * rows * width;
    std::memcpy(var.pr, static_cast<const char*>(m.pr) + offset, rows * width);
    if (complex) std::memcpy(var.pi, static_cast<const char*>(m.pi) + offset, rows * width);
}

// ---- rows of the table of functions by name ----------------------------------------------------
AK_BUILTIN("nargchk", AK_FN(nargchk, const Mm&), AK_FN(nargchk, const Mm&, const Mm&),
           AK_FN(nargchk, const Mm&, const Mm&, const Mm&));
