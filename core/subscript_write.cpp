// Assignment through a subscript reference: x(i,...) = y, x{i,...} = y, x.name = y and every chain of
// them. The front end settles the target's element type, its fields and its kind, then hands the
// elements to one of the assignment routes; a chain writes each level back into the one above it.
#include <algorithm>
#include <cstring>

#include "arklib/cells.h"
#include "arklib/sparse.h"
#include "arklib/subscript.h"
#include "core/assign_route.h"

using namespace ak_internal;

namespace {

// The temporary a chained reference writes into: the current value of the outer reference, fetched
// silently (a missing part comes back as `nothing` or as fresh structure elements), freed when the
// write ends, also when error throws.
class chain_target {
  public:
    explicit chain_target(const Mr& r) : r_(r) {
        if (r.chained) r.base = r.parent ? new Mm(*r.parent, 0) : nullptr;
    }
    ~chain_target() {
        if (r_.chained && r_.base) {
            delete r_.base;
            r_.base = nullptr;
        }
    }
    chain_target(const chain_target&) = delete;
    chain_target& operator=(const chain_target&) = delete;

    // Stores the written value into the outer reference, which writes on up to the variable.
    void write_back() {
        if (r_.chained && r_.base && r_.parent) const_cast<Mr&>(*r_.parent) = *r_.base;
    }

  private:
    const Mr& r_;
};

Mm empty_cell() { return Mm(0, 0, 0, 0, 0, ak_mm); }

Mm& element(const Mm& m, int k) { return static_cast<Mm*>(m.pr)[k]; }

// Makes this head the only holder of its storage, keeping its class and flag words.
void unshare(Mm& b) {
    if (!b.dirty()) return;
    const M_types saved = b.flags;
    const int id = b.classid;
    b.deepcopy(b, b.flags.type);
    b.classid = id;
    b.flags = saved;
}

// y has one field more than the structure b, after b's own: b takes it, and each element of b gets
// an empty value in the new slot.
void widen(Mm& b, const char* field) {
    unshare(b);
    const int f = b.addfield(field, 0);
    if (f != b.nfields - 1) return;
    const Mm slot(f + 1.0);
    for (int k = 0; k < b.size(); ++k) Mr(Mr_brace, element(b, k), slot) = nop_M;
}

// x(...) = y where x and y differ in element type or fields. Returns the source to write (y, or its
// conversion in `converted`), or null when the assignment ends here.
const Mm* settle_paren(Mm& b, const Mm& y, Mm& converted) {
    const Mm* src = &y;
    if (b.flags.type != y.flags.type) {
        if (b.flags.type == ak_no_type || b.size() == 0) {
            // An empty target takes y's kind; for a structure, y's field table.
            if (y.fields) {
                const Mm none;
                b = Mm(Mr(Mr_paren, y, none), 0);
            } else {
                b = Mm(0, 0, 0, 0, 0, y.flags.type);
            }
        } else {
            if (y.flags.type == ak_mm) {
                error("Can not convert %s into a numeric matrix", display_name(y));
                return nullptr;
            }
            converted = y.flags.sparse ? full(y) : y;
            converted.deepcopy(converted, b.flags.type);
            src = &converted;
        }
    }
    if ((b.fields || src->fields) && b.size() != 0) {
        if (!src->fields) {
            error("In the assignment x(...)=y, x was a structure array but y was not a structure");
            return nullptr;
        }
        const int nb = b.nfields, ny = src->nfields;
        bool agree = true;
        for (int k = 0; k < std::min(nb, ny) && agree; ++k)
            agree = std::strcmp(b.fields[k], src->fields[k]) == 0;
        if (agree && ny == nb + 1) {
            widen(b, src->fields[nb]);
        } else if (!agree || ny != nb) {
            error("In the assignment x(...)=y, x and y (structures) must have identical members");
            return nullptr;
        }
    }
    return src;
}

// The value of field `name` of a 1x1 structure b, as a slot that can be written in place: b and its
// element are made the only holders of their storage first. Null for anything else (a structure
// array, a missing field, a user class), which takes the general route.
Mm* own_member(Mm& b, const char* name) {
    if (b.flags.type != ak_mm || !b.fields || b.classid || b.flags.sparse || b.size() != 1) return nullptr;
    const int f = b.findfield(name, 0);
    if (f < 0) return nullptr;
    Mm& e = element(b, 0);
    if (e.flags.type != ak_mm || e.nnz <= f) return nullptr;
    if (b.dirty() || e.dirty()) {
        unshare(b);
        unshare(element(b, 0));
    }
    return &element(element(b, 0), f);
}

// Room for one more element at the end of a vector b that this head alone holds, whose block has
// it: b grows by one (a row, or a column when it is one) and the position of the new element is
// returned; -1 when the append must take the route (which leaves room when it grows b).
int room_at_end(Mm& b, double v) {
    const int N = b.nnz;
    if (v != N + 1.0 || N >= b.p || !b.refs || ak_ref_count(b.refs) != 1 || b.ndims != 2 ||
        (b.dims[0] > 1 && b.dims[1] != 1))
        return -1;
    const bool column = b.dims[0] > 1;
    b.dims[0] = column ? N + 1 : 1;
    b.dims[1] = column ? 1 : N + 1;
    b.dims[2] = b.dims[3] = 1;
    b.nnz = N + 1;
    return N;
}

// c{end+1} = y on a cell vector, and s(end+1).f = y on a structure vector with the field f, while
// the block has room: the new element is written where it lies. False for everything else.
bool append_element(const Mr& r, const Mm& y) {
    double v;
    if (r.type == Mr_brace && !r.chained && r.n == 1) {
        Mm& c = *r.base;
        if (c.flags.type != ak_mm || c.fields || c.classid || c.flags.sparse || !r.scalar_index(0, v)) return false;
        const int at = room_at_end(c, v);
        if (at < 0) return false;
        element(c, at) = y;
        return true;
    }
    if (r.type != Mr_dot || !r.chained || !r.parent || r.parent->chained || r.parent->type != Mr_paren ||
        r.parent->n != 1 || !r.parent->base)
        return false;
    Mm& s = *r.parent->base;
    if (s.flags.type != ak_mm || !s.fields || s.classid || !r.parent->scalar_index(0, v)) return false;
    const int f = s.findfield(r.member_name, 0);
    if (f < 0) return false;
    const Mm value(y);  // y may be s itself
    const int at = room_at_end(s, v);
    if (at < 0) return false;
    element(s, at) = Mm(0, 0, 0, 1, s.nfields, ak_mm);
    element(element(s, at), f) = value;
    return true;
}

// The appends of translated loops, while the block has room: x(end+1) = v of a real scalar on a real
// dense double vector, c{end+1} = y and s(end+1).f = y. False for everything else; growth past the
// room goes through the route, which leaves room for further appends.
bool append_in_place(const Mr& r, const Mm& y) {
    if (r.chained || r.type != Mr_paren || r.n != 1) return append_element(r, y);
    Mm& b = *r.base;
    const int other = (y.flags.type ^ ak_double) | (y.nnz ^ 1) | y.flags.sparse | (b.flags.type ^ ak_double) |
                      b.flags.sparse | b.classid;
    double v;
    if (other || y.pi || b.pi || !r.scalar_index(0, v)) return false;
    const int at = room_at_end(b, v);
    if (at < 0) return false;
    static_cast<double*>(b.pr)[at] = *static_cast<const double*>(y.pr);
    return true;
}

// x.name = y: a target that is not a cell array becomes a structure (its old value is dropped); the
// field is found or added, and written in the first element.
void member_write(Mm& b, const char* name, const Mm& y) {
    if (Mm* slot = own_member(b, name)) {
        // The field of a 1x1 structure takes the value directly: a number held in y's head is
        // written into the field's own block when nothing else holds it. (y may otherwise be the
        // structure itself, held by its own head while the slot changes.)
        if (y.holds_value()) {
            *slot = static_cast<Mm&&>(const_cast<Mm&>(y));  // reads y only
            return;
        }
        const Mm value(y);
        *slot = value;
        return;
    }
    if (b.flags.type != ak_mm) b = empty_cell();
    // Held in a head of its own: s.a = s must store the old s, and then counts as sharing s.
    const Mm value(y);
    const int id = b.classid;
    const int f = b.addfield(name, 0);
    b.classid = id;
    if (f < 0) return;
    const Mm slot(f + 1.0);
    if (b.size() >= 1 && !b.dirty()) {
        Mr(Mr_brace, element(b, 0), slot) = value;
        return;
    }
    const Mm first(1.0);
    const Mr outer(Mr_brace, b, first);
    Mr(Mr_brace, outer, slot) = value;
}

// x{...} = y: a target without a value, or an empty one, becomes a cell array.
void settle_brace(Mm& b) {
    if (b.flags.type == ak_mm) return;
    if (b.flags.type == ak_no_type || b.size() == 0) {
        b = empty_cell();
        return;
    }
    error("'%s' is not a cell array and can't be {}-indexed", display_name(b));
}

inline bool plain_index(const Mm* i) { return !i->flags.sparse && i->ndims <= 2; }

// Whether x(i) = y or x(i,j) = y may take the plain routes.
inline bool plain_route(const Mr& r, const Mm& b, const Mm& y) {
    if (b.fields || r.type != Mr_paren || y.flags.sparse || b.flags.sparse || y.ndims > 2 || b.ndims > 2 ||
        r.n > 2)
        return false;
    for (int k = 0; k < r.n; ++k)
        if (!plain_index(r.idx[k])) return false;
    return true;
}

void route(const Mr& r, Mm& b, const Mm& y) {
    if (!plain_route(r, b, y)) {
        b.vwcopyn(r, y);
    } else if (r.n == 0) {
        b = y;
    } else if (r.n == 1) {
        b.vwcopy1(y, *r.idx[0]);
    } else {
        b.vwcopy2(y, *r.idx[0], *r.idx[1]);
    }
}

}  // namespace

void Mr::assign(const Mm& y) {
    if (append_in_place(*this, y)) return;
    hold_numbers();
    // The other x(i) = v and x(i,j) = v on plain doubles go straight to their route.
    if (!chained && type == Mr_paren && (n == 1 || n == 2)) {
        Mm& b = *base;
        if (b.flags.type == ak_double && y.flags.type == ak_double && !b.classid &&
            plain_route(*this, b, y)) {
            if (n == 1)
                b.vwcopy1(y, *idx[0]);
            else
                b.vwcopy2(y, *idx[0], *idx[1]);
            return;
        }
    }
    if (n < 0 || type == Mr_unset) return;
    if (chained && parent && parent->type == Mr_dot && !parent->chained && parent->base && type != Mr_dot &&
        n >= 1) {
        // s.f(k) = v and s.f{k} = v on a 1x1 structure: the write goes into the field where it is,
        // so a field that nothing else shares is changed in place.
        if (Mm* slot = own_member(*parent->base, parent->member_name)) {
            const Mm* ix[4] = {idx[0], idx[1], idx[2], idx[3]};
            Mr direct = n == 1   ? Mr(type, *slot, *ix[0])
                        : n == 2 ? Mr(type, *slot, *ix[0], *ix[1])
                        : n == 3 ? Mr(type, *slot, *ix[0], *ix[1], *ix[2])
                                 : Mr(type, *slot, *ix[0], *ix[1], *ix[2], *ix[3]);
            direct = y;
            return;
        }
    }
    chain_target target(*this);
    if (!base) return;  // the chain's value could not be had (reported)
    Mm& b = *base;
    if (y.flags.type == ak_no_type) {
        y.warn_uninit();
        return;
    }
    if (b.classid) {
        const char* cls = class_name_of(b);
        if (is_class_function(cls, "subsasgn")) {
            const Mm result = call_class_function("subsasgn", b, build_subs_descriptor(*this), y);
            b = result;
            target.write_back();
            return;
        }
    }
    if (type == Mr_dot) {
        member_write(b, member_name, y);
    } else {
        Mm converted;
        const Mm* src = &y;
        if (type == Mr_paren)
            src = settle_paren(b, y, converted);
        else
            settle_brace(b);
        if (!src) return;
        route(*this, b, *src);
    }
    target.write_back();
}

Mr& Mr::operator=(const Mr& y) {
    // The right side is read completely before the write starts: x(2:3) = x(1:2) sees the old x.
    const Mm value(y, 1);
    return *this = value;
}
