// Reading through a subscript reference: Mm(const Mr&, report) resolves chains, user-class subsref,
// member reads, cell content reads and the sharing reads x(), x(:), x(:,:), and hands plain
// selections to the selection body. Also the building of references and the subscript descriptor.
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/subscript.h"
#include "core/index_odometer.h"
#include "core/subscript_read.h"
#include "arklib/builtins.h"

using namespace ak_internal;

namespace ak_internal {

void adopt_head(Mm& dst, Mm& src) {
    dst.copy_value_fields(src);
    dst.name = nullptr;
    dst.shadowed = nullptr;
    if (src.holds_value()) {
        dst.shadowed = src.shadowed;
        dst.pr = &dst.shadowed;
    }
    src.refs = nullptr;
    src.pr = src.pi = nullptr;
    src.index = nullptr;
    src.fields = nullptr;
    src.nfields = 0;
}

}  // namespace ak_internal

namespace {

// A head without storage, for a constructor that fills it by adoption.
void blank_head(Mm& m) {
    m.ndims = 2;
    m.dims[0] = m.dims[1] = m.dims[2] = m.dims[3] = 0;
    m.p = 0;
    m.refs = nullptr;
    m.pr = m.pi = nullptr;
    m.nnz = 0;
    m.index = nullptr;
    m.name = nullptr;
    m.fields = nullptr;
    m.nfields = 0;
    m.classid = 0;
    m.shadowed = nullptr;
    m.flags = M_types{0, 0, 0, 0, 0, 0, ak_double};
}

// Element k (zero-based) of a cell or structure array.
const Mm& element(const Mm& m, int k) { return static_cast<const Mm*>(m.pr)[k]; }

// The failed read: a copy of the matrix without a value.
Mm failed() { return Mm(nothing); }

// The temporary that a chained reference reads its base into, freed when the read ends (also when
// error throws).
class chain_base {
  public:
    chain_base(const Mr& r, int report) : r_(r) {
        if (r.chained) r.base = r.parent ? new Mm(*r.parent, report) : nullptr;
    }
    ~chain_base() {
        if (r_.chained && r_.base) {
            delete r_.base;
            r_.base = nullptr;
        }
    }
    chain_base(const chain_base&) = delete;
    chain_base& operator=(const chain_base&) = delete;

  private:
    const Mr& r_;
};

// s.f: the field of a structure, or a 1 x m cell of it over a structure array.
Mm member_read(const Mr& r, const Mm& b, int report) {
    int f = b.findfield(r.member_name, report);
    if (f < 0) return failed();
    const int m = b.size();
    Mm result;
    if (m > 1) result = Mm(0, 0, 0, 1, m, ak_mm);
    for (int k = 0; k < m; ++k) {
        const Mm& e = element(b, k);
        if (e.flags.type != ak_mm || e.size() != b.nfields || f >= e.nnz) {
            error("structure '%s' is built wrong", display_name(b));
            continue;
        }
        if (m == 1)
            result = element(e, f);
        else
            static_cast<Mm*>(result.pr)[k] = element(e, f);
    }
    return result;
}

// x{i,...}: the first selected element of a cell array.
Mm content_read(const Mr& r, const Mm& b, int report) {
    if (b.flags.type != ak_mm) {
        if (report) error("variable '%s' was {}-indexed, but it is not a cell array", display_name(b));
        return failed();
    }
    // The common c{k}: one plain scalar index inside the array.
    if (r.n == 1) {
        const Mm& ix = *r.idx[0];
        if (ix.nnz == 1 && ix.size() == 1 && !ix.flags.logical && !ix.flags.sparse) {
            int pos = index_position(*ix.addr());
            if (pos >= 0 && pos < b.size()) return element(b, pos);
        }
    }
    int extent[4];
    if (index_extents(r, b, extent, report) == 0) return Mm();
    index_odometer walk;
    for (int k = 0; k < 4; ++k) walk.extent[k] = extent[k];
    start_odometer(walk);
    int li = next_linear_index(r, b, walk, 0, report);
    if (li < 0) return failed();
    return element(b, li);
}

// x(:) shares the storage as a column; an empty one has all four dimensions 0.
Mm as_column(const Mm& b) {
    Mm result(b);
    int n = b.size();
    result.ndims = 2;
    result.dims[0] = n;
    result.dims[1] = result.dims[2] = result.dims[3] = n == 0 ? 0 : 1;
    return result;
}

Mm resolve(const Mr& r, int report) {
    chain_base guard(r, report);
    if (!r.base) return failed();
    const Mm& b = *r.base;
    if (b.flags.type == ak_no_type) {
        if (report) {
            const char* name = display_name(b);
            error("%s(...): variable '%s' was used without value.", name, name);
        }
        return failed();
    }
    if (b.classid) {
        const char* cls = class_name_of(b);
        if (is_class_function(cls, "subsref"))
            return call_class_function("subsref", b, build_subs_descriptor(r));
    }
    if (r.type == Mr_dot) return member_read(r, b, report);
    if (r.type == Mr_brace) return content_read(r, b, report);
    if (r.type != Mr_paren || r.n < 0) return failed();
    if (r.n == 0) return Mm(b);
    const bool colon0 = is_colon(*r.idx[0]);
    if (r.n == 1 && colon0) return as_column(b);
    if (r.n == 2 && colon0 && is_colon(*r.idx[1])) return Mm(b);
    Mm result;
    if (!select_elements(r, b, report, result)) return failed();
    return result;
}

// x(k) of a complex matrix (the real one is read inline): the element goes straight into a fresh 1x1
// head; every other read returns false untouched.
bool complex_scalar_read(const Mr& r, Mm& m) {
    int pos;
    if (!r.scalar_position(pos)) return false;
    const Mm& b = *r.base;
    const double* bi = static_cast<const double*>(b.pi);
    const bool complex = bi && !(bi[pos] == 0.0);  // a zero imaginary part gives a real result
    m.ndims = 2;
    m.dims[0] = m.dims[1] = m.dims[2] = m.dims[3] = 1;
    m.nnz = 1;
    m.name = nullptr;
    m.shadowed = nullptr;
    m.flags = b.flags;
    m.flags.workspace_var = 0;
    m.flags.global = 0;
    m.storage_alloc(complex, 0);  // sets the storage words, the field table and the class id
    if (m.nnz != 1) return true;  // out of memory was reported; a valid empty matrix is left
    *static_cast<double*>(m.pr) = static_cast<const double*>(b.pr)[pos];
    if (m.pi) *static_cast<double*>(m.pi) = bi[pos];
    return true;
}

// s.f of a 1x1 structure whose field exists: the field's value, shared into m with no resolving.
// False for every other read.
bool member_scalar_read(const Mr& r, Mm& m) {
    if (r.type != Mr_dot || r.chained || !r.base) return false;
    const Mm& b = *r.base;
    if (b.flags.type != ak_mm || !b.fields || b.classid || b.flags.sparse || b.size() != 1) return false;
    const int f = b.findfield(r.member_name, 0);
    if (f < 0) return false;
    const Mm& e = element(b, 0);
    if (e.flags.type != ak_mm || e.size() != b.nfields || f >= e.nnz) return false;
    const Mm& v = element(e, f);
    if (v.flags.type == ak_double && v.nnz == 1 && v.ndims == 2 && v.dims[0] == 1 && v.dims[1] == 1 && !v.pi &&
        !v.flags.sparse && !v.fields && !v.classid && v.pr) {
        // A real number is held in the head of the result, so the field's own block stays unshared
        // and s.a = s.a + k can write its new value there.
        M_types flags = v.flags;
        flags.workspace_var = 0;
        flags.global = 0;
        m.init_scalar(*static_cast<const double*>(v.pr), flags);
        return true;
    }
    Mm value(v);
    blank_head(m);
    adopt_head(m, value);
    return true;
}

// Every read but the common scalar one: resolved into a temporary whose head m takes over.
__attribute__((noinline)) void general_read(Mm& m, const Mr& r, int report) {
    blank_head(m);
    Mm result = resolve(r, report);
    adopt_head(m, result);
}

}  // namespace

void Mm::read_reference(const Mr& r, int report) {
    if (member_scalar_read(r, *this)) return;
    r.hold_numbers();
    if (complex_scalar_read(r, *this)) return;
    general_read(*this, r, report);
}

int Mr::size() const {
    Mm value(*this, 1);
    return value.size();
}

void Mr::release_owned() {
    for (int k = 0; k < 4; ++k)
        if (owned[k]) delete idx[k];
}

void Mr::make_index_matrices() const {
    for (int k = 0; k < numbers; ++k) {
        Mm* index = new Mm(number[k]);
        idx[k] = index ? index : &x_M;  // out of memory was reported; an empty index selects nothing
        owned[k] = index != nullptr;
    }
    numbers = 0;
}

void Mr::convert(int k, const Mm& i) {
    Mm* converted;
    try {
        converted = new Mm(subsindex(i));
    } catch (...) {
        // A throwing error leaves the reference unbuilt: free what it converted so far.
        for (int j = 0; j < k; ++j) {
            if (owned[j]) delete idx[j];
            owned[j] = 0;
        }
        throw;
    }
    if (converted) {
        idx[k] = converted;
        owned[k] = 1;
    } else {
        idx[k] = &x_M;  // out of memory was reported; an empty index selects nothing
    }
}

// x(c) with a cell c: the base is overwritten with x(c{1}, c{2}, ...) and the reference, which has
// no indices, denotes the whole (now smaller) base. An empty cell, or one of more than four
// elements, leaves the reference on the whole base unchanged.
void Mr::select_by_cell(const Mm& c) {
    const int count = c.size();
    if (count < 1 || count > 4) return;
    Mm e[4];
    for (int k = 0; k < count; ++k) e[k] = Mm(c.br(Mm(k + 1.0)));
    const Mm& b = *base;
    switch (count) {
        case 1:
            *this = Mr(Mr_paren, b, e[0]);
            break;
        case 2:
            *this = Mr(Mr_paren, b, e[0], e[1]);
            break;
        case 3:
            *this = Mr(Mr_paren, b, e[0], e[1], e[2]);
            break;
        default:
            *this = Mr(Mr_paren, b, e[0], e[1], e[2], e[3]);
            break;
    }
}

// ---- the subscript descriptor and the user-class hooks ----------------------------------------------------

Mm build_subs_descriptor(const Mr& r) {
    r.hold_numbers();
    Mm s(0, 0, 0, 1, 1, ak_mm);
    s.addfield("type", 0);
    s.addfield("subs", 0);
    Mm values(0, 0, 0, 1, 2, ak_mm);
    Mm* v = static_cast<Mm*>(values.pr);
    const char* word = r.type == Mr_paren ? "()" : r.type == Mr_dot ? "." : r.type == Mr_brace ? "{}" : "?";
    v[0] = TM(word);
    if (r.type == Mr_dot) {
        v[1] = TM(r.member_name);
    } else {
        int n = r.n < 0 ? 0 : r.n;
        Mm subs(0, 0, 0, 1, n, ak_mm);
        // A colon travels as the string ":", which is how a class method can recognise it.
        for (int k = 0; k < n; ++k)
            static_cast<Mm*>(subs.pr)[k] = is_colon(*r.idx[k]) ? TM(":") : Mm(*r.idx[k]);
        v[1] = subs;
    }
    static_cast<Mm*>(s.pr)[0] = values;
    return s;
}

Mm subsindex(const Mm& x) {
    if (x.fields) return call_class_function("subsindex", x);
    return mdouble(x);
}

Mm subsref(const Mm&) {
    error_input("subsref", 1);
    return x_M;
}

Mm subsref(const Mm& x, const Mm& s) {
    if (x.fields) return call_class_function("subsref", x, s);
    error("dummy %s", "subsref");
    return x_M;
}

Mm subsasgn(const Mm&) {
    error_input("subsasgn", 1);
    return x_M;
}

Mm subsasgn(const Mm&, const Mm&) {
    error_input("subsasgn", 2);
    return x_M;
}

Mm subsasgn(const Mm& x, const Mm& s, const Mm& v) {
    if (!x.fields && !v.fields) {
        error("dummy %s", "subsasgn");
        return x_M;
    }
    return call_class_function("subsasgn", x, s, v);
}

// ---- rows of the table of functions by name ----------------------------------------------------
AK_BUILTIN("subsindex", AK_FN(subsindex, const Mm&));
AK_BUILTIN("subsref", AK_FN(subsref, const Mm&), AK_FN(subsref, const Mm&, const Mm&));
AK_BUILTIN("subsasgn", AK_FN(subsasgn, const Mm&), AK_FN(subsasgn, const Mm&, const Mm&),
           AK_FN(subsasgn, const Mm&, const Mm&, const Mm&));
