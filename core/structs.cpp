// Structure arrays: building them, converting to and from cells, and their field lists.
//
// Element k of a structure array is a 1 x nfields cell whose position f holds field f; the names
// live once, in the array's field table.
#include <cmath>
#include <vector>

#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/subscript.h"
#include "arklib/builtins.h"

namespace {

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

// The n-th element (zero-based) of a list of names or keys: a single one, or element n of a cell.
int name_count(const Mm& names) { return iscell(names) ? names.nnz : 1; }
const Mm& name_at(const Mm& names, int n) { return iscell(names) ? elements(names)[n] : names; }

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

// x(k{1}, ...) with the first (up to four) elements of the cell k as subscripts; no subscripts leave
// x as it is.
Mm index_read(const Mm& x, const Mm& k) {
    const Mm* i = elements(k);
    switch (k.size() < 4 ? k.size() : 4) {
        case 1:
            return Mm(x(i[0]));
        case 2:
            return Mm(x(i[0], i[1]));
        case 3:
            return Mm(x(i[0], i[1], i[2]));
        case 4:
            return Mm(x(i[0], i[1], i[2], i[3]));
    }
    return x;
}

// x(k{1}, ...) = y with the first (up to four) elements of the cell k as subscripts; no subscripts
// leave x as it is.
void index_write(Mm& x, const Mm& k, const Mm& y) {
    const Mm* i = elements(k);
    switch (k.size() < 4 ? k.size() : 4) {
        case 1:
            x(i[0]) = y;
            break;
        case 2:
            x(i[0], i[1]) = y;
            break;
        case 3:
            x(i[0], i[1], i[2]) = y;
            break;
        case 4:
            x(i[0], i[1], i[2], i[3]) = y;
            break;
    }
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
    if (dim.nnz > 0 && dim.flags.type == ak_double && std::fabs(*dim.addr()) < 2e9)
        d = static_cast<int>(*dim.addr());
    if (dim.nnz > 0 && dim.flags.type == ak_uchar) d = *static_cast<const unsigned char*>(dim.pr);
    int n = x.size(d);
    if (n != 0 && fields.size() != n) {
        error("%s: length(fields)!=size(x,dim)", fname);
        return x_M;
    }
    if (!iscell(x)) {
        error("%s: first argument is not a cell", fname);
        return x_M;
    }
    if (!iscell(fields)) {
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
    if (!iscell(list) || list.nnz == 1) return iscell(list) ? elements(list)[0] : list;
    const Mm* args = elements(list);
    int nargs = list.nnz;
    if (nargs % 2) {
        error("struct: odd numbers of inputs");
        return x_M;
    }
    // The last cell value sets the shape of the array.
    const Mm* shape = nullptr;
    for (int k = 1; k < nargs; k += 2)
        if (iscell(args[k])) shape = &args[k];
    Mm r = shape ? Mm(0, 0, 0, shape->ndims, shape->dims, ak_mm) : Mm(0, 0, 0, 1, 1, ak_mm);
    for (int k = 1; k < nargs; k += 2) {
        if (iscell(args[k]) && args[k].nnz != r.nnz) {
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
            if (f >= 0) elements(element)[f] = iscell(value) ? elements(value)[i] : value;
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

Mm getfield(const Mm&) {
    error_input("getfield", 1);
    return x_M;
}

// keys is the list of keys: a cell of them, or a single key. A string key reads a member, a cell key
// is the subscript list of an index read (up to four subscripts).
Mm getfield(const Mm& s, const Mm& keys) {
    if (error_struct(s, "getfield")) return x_M;
    Mm x = s;
    for (int n = 0; n < name_count(keys); ++n) {
        const Mm& key = name_at(keys, n);
        if (key.flags.str) {
            char name[ak_class_name_size];
            Mstr(key, name, sizeof name);
            x = Mm(x.member(name));
        } else if (iscell(key)) {
            x = index_read(x, key);
        } else {
            error("getfield: index must be a string or cell array");
        }
    }
    return x;
}

Mm setfield(const Mm&) {
    error_input("setfield", 1);
    return x_M;
}

Mm setfield(const Mm&, const Mm&) {
    error_input("setfield", 2);
    return x_M;
}

// A string key assigns a member, a cell key is the subscript list of an indexed assignment.
Mm setfield(const Mm& s, const Mm& key, const Mm& value) {
    Mm r = s;
    if (key.flags.str) {
        char name[ak_class_name_size];
        Mstr(key, name, sizeof name);
        r.member(name) = value;
    } else if (iscell(key)) {
        index_write(r, key, value);
    } else {
        error("setfield: index must be a string or cell array");
    }
    return r;
}

// ---- rows of the table of functions by name ----------------------------------------------------
AK_BUILTIN("cell2struct", AK_FN(cell2struct, const Mm&), AK_FN(cell2struct, const Mm&, const Mm&),
           AK_FN(cell2struct, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("struct2cell", AK_FN(struct2cell, const Mm&));
AK_BUILTIN("struct", AK_FN(mstruct, const Mm&));
AK_BUILTIN("fieldnames", AK_FN(fieldnames, const Mm&));
AK_BUILTIN("isfield", AK_FN(isfield, const Mm&, const Mm&));
AK_BUILTIN("getfield", AK_FN(getfield, const Mm&), AK_FN(getfield, const Mm&, const Mm&));
AK_BUILTIN("setfield", AK_FN(setfield, const Mm&), AK_FN(setfield, const Mm&, const Mm&),
           AK_FN(setfield, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("rmfield", AK_FN(rmfield, const Mm&), AK_FN(rmfield, const Mm&, const Mm&));
