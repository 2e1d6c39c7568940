// Structure arrays: building them, converting to and from cells, and their field lists.
//
// Element k of a structure array is a 1 x nfields cell whose position f holds field f; the names
// live once, in the array's field table.
#include <cmath>
#include <vector>

#include "arklib/calling.h"
#include "arklib/cells.h"

namespace {

bool is_cell(const Mm& m) { return m.flags.type == ak_mm && !m.fields; }

Mm* elements(const Mm& m) { return static_cast<Mm*>(m.pr); }

// A fresh structure element: nf default values.
Mm fresh_element(int nf) { return Mm(0, 0, 0, 1, nf, ak_mm); }

// Field f (zero-based) of a structure element, or null when the element does not hold it.
const Mm* field_of(const Mm& element, int f) {
    if (element.flags.type != ak_mm || f < 0 || f >= element.nnz) return nullptr;
    return elements(element) + f;
}

// The element with position f removed.
Mm without_position(const Mm& element, int f) {
    if (!field_of(element, f)) return element;
    int n = element.nnz - 1;
    Mm r(0, 0, 0, 1, n, ak_mm);
    for (int k = 0, to = 0; k < element.nnz; ++k)
        if (k != f) elements(r)[to++] = elements(element)[k];
    return r;
}

// The n-th element (zero-based) of a list of names: the string itself, or element n of a cell.
int name_count(const Mm& names) { return is_cell(names) ? names.nnz : 1; }
const Mm& name_at(const Mm& names, int n) { return is_cell(names) ? elements(names)[n] : names; }

// The position in x of the element whose subscript along dimension d (zero-based) is k and whose
// other subscripts, in order, are those of the linear position `rest` over the remaining dimensions.
int position_along(const int* dims, int d, int k, int rest) {
    int pos = 0, stride = 1;
    for (int dim = 0; dim < 4; ++dim) {
        int sub = k;
        if (dim != d) {
            sub = rest % dims[dim];
            rest /= dims[dim];
        }
        pos += sub * stride;
        stride *= dims[dim];
    }
    return pos;
}

}  // namespace

Mm cell2struct(const Mm&) {
    error_input("cell2struct", 1);
    return x_M;
}

Mm cell2struct(const Mm&, const Mm&) {
    error_input("cell2struct", 2);
    return x_M;
}

Mm cell2struct(const Mm& x, const Mm& fields, const Mm& dim) {
    const char* fname = "cell2struct";
    int d = 0;
    if (dim.nnz > 0 && dim.flags.type == ak_double && std::fabs(*dim.addr()) < 2e9) d = static_cast<int>(*dim.addr());
    if (dim.nnz > 0 && dim.flags.type == ak_uchar) d = *static_cast<const unsigned char*>(dim.pr);
    int n = x.size(d);
    if (n != 0 && fields.size() != n) {
        error("%s: length(fields)!=size(x,dim)", fname);
        return x_M;
    }
    if (!is_cell(x)) {
        error("%s: first argument is not a cell", fname);
        return x_M;
    }
    if (!is_cell(fields)) {
        error("%s: second argument is not a cell", fname);
        return x_M;
    }
    if (d < 1 || d > 4) return x_M;  // reported by size(d)

    // The shape of x without dimension d, with a trailing 1.
    int shape[5], nd = 0;
    for (int k = 0; k < x.ndims; ++k)
        if (k != d - 1) shape[nd++] = x.dims[k];
    shape[nd++] = 1;
    Mm r(0, 0, 0, nd > 4 ? 4 : nd, shape, ak_mm);

    int nf = fields.size();
    for (int k = 0; k < nf; ++k) {
        char name[128];
        Mstr(elements(fields)[k], name, sizeof name);
        if (r.findfield(name, 0) > -1) error("%s: duplicate field '%s'", fname, name);
        r.addfield(name, 1);
    }
    for (int i = 0; i < r.nnz; ++i) {
        Mm element = fresh_element(nf);
        for (int k = 0; k < nf && k < n; ++k)
            elements(element)[k] = elements(x)[position_along(x.dims, d - 1, k, i)];
        elements(r)[i] = element;
    }
    return r;
}

Mm struct2cell(const Mm& s) {
    if (error_struct(s, "struct2cell")) return x_M;
    int nf = s.nfields;
    // [nfields size(s)], the last dimensions of a 4-d array folded together to stay within four.
    int shape[4] = {nf, s.dims[0], s.dims[1], s.dims[2] * s.dims[3]};
    Mm r(0, 0, 0, 4, shape, ak_mm);
    for (int i = 0; r.nnz && i < s.nnz; ++i)
        for (int f = 0; f < nf; ++f)
            if (const Mm* v = field_of(elements(s)[i], f)) elements(r)[i * nf + f] = *v;
    return r;
}

Mm mstruct(const Mm& list) {
    if (!is_cell(list) || list.nnz == 1) return is_cell(list) ? elements(list)[0] : list;
    const Mm* args = elements(list);
    int nargs = list.nnz;
    if (nargs % 2) {
        error("struct: odd numbers of inputs");
        return x_M;
    }
    // The last cell value sets the shape of the array.
    const Mm* shape = nullptr;
    for (int k = 1; k < nargs; k += 2)
        if (is_cell(args[k])) shape = &args[k];
    Mm r = shape ? Mm(0, 0, 0, shape->ndims, shape->dims, ak_mm) : Mm(0, 0, 0, 1, 1, ak_mm);
    for (int k = 1; k < nargs; k += 2) {
        if (is_cell(args[k]) && args[k].nnz != r.nnz) {
            error("struct: all cell arrays must be of same size");
            return x_M;
        }
    }
    // A structure without fields still has a (empty) field table.
    r.extend_nfields(8);
    std::vector<int> position;
    for (int k = 0; k < nargs; k += 2) {
        char name[ak_class_name_size];
        Mstr(args[k], name, sizeof name);
        position.push_back(r.addfield(name, 0));
    }
    for (int i = 0; i < r.nnz; ++i) {
        Mm element = fresh_element(r.nfields);
        for (int k = 0; k < nargs; k += 2) {
            const Mm& value = args[k + 1];
            int f = position[k / 2];
            if (f >= 0) elements(element)[f] = is_cell(value) ? elements(value)[i] : value;
        }
        elements(r)[i] = element;
    }
    return r;
}

Mm fieldnames(const Mm& s) {
    if (error_struct(s, "fieldnames")) return x_M;
    Mm r(0, 0, 0, s.nfields, 1, ak_mm);
    for (int f = 0; f < r.nnz; ++f) elements(r)[f] = TM(s.fields[f]);
    return r;
}

Mm isfield(const Mm& s, const Mm& name) {
    if (!s.fields) return Mm(0.0);
    char text[ak_class_name_size];
    Mstr(name, text, sizeof text);
    Mm r(static_cast<double>(s.findfield(text, 0) >= 0));
    return mlogical(r);
}

Mm rmfield(const Mm&) {
    error_input("rmfield", 1);
    return x_M;
}

Mm rmfield(const Mm& s, const Mm& names) {
    if (error_struct(s, "rmfield")) return x_M;
    Mm r;
    r.deepcopy(s, ak_no_type);
    for (int n = 0; n < name_count(names); ++n) {
        char name[ak_class_name_size];
        Mstr(name_at(names, n), name, sizeof name);
        if (r.findfield(name, 0) < 0) {
            error("rmfield: structure has no field named '%s'", name);
            continue;
        }
        int f = r.rmfield(name);
        for (int i = 0; f >= 0 && i < r.nnz; ++i) elements(r)[i] = without_position(elements(r)[i], f);
    }
    return r;
}
