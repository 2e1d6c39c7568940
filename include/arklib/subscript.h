// Subscript references: x(i,...), x{i,...}, x.name and every chain of them build an Mr, which does
// no work until it is converted to Mm (a read) or assigned to (a write).
#pragma once
#include <cstring>

#include "arklib/matrix.h"

// Kind of a reference: the character code of its opening token.
enum Mr_idx_type {
    Mr_paren = 40,   // ( ordinary subscript
    Mr_brace = 123,  // { cell content subscript
    Mr_dot = 46,     // . structure member
    Mr_unset = 63    // ? default-constructed, never resolved
};

// The static result of a read that failed: a named matrix without a value.
extern Mm nothing;

// The value an index of another element type stands for: the user class's "subsindex" for an object
// or structure, else the index as doubles.
Mm subsindex(const Mm& x);

// An index as a number when it is a plain scalar: a real full 1x1 double matrix that is not logical.
AK_SCALAR_PATH bool ak_index_number(const Mm& i, double& v) {
    if (((i.flags.type ^ ak_double) | (i.nnz ^ 1) | i.flags.sparse | i.flags.logical) != 0) return false;
    v = *static_cast<const double*>(i.pr);
    return true;
}

// A reference to a base matrix (or, when chained, to the value of an outer reference) and up to four
// index matrices. It holds raw pointers and takes no reference counts: it must not outlive the
// statement that built it.
class Mr {
  public:
    int n;                     // number of index matrices, 0 to 4; -1 when default-constructed
    Mr_idx_type type;          // kind of the reference
    const char* member_name;   // member of an Mr_dot reference (not owned), else null
    int chained;               // 1 when the base is the value of another reference
    mutable Mm* base;          // the matrix subscripted; for a chain a temporary of one read or write
    const Mr* parent;          // the outer reference of a chain, else null
    mutable int owned[4];      // idx[k] was converted by this reference and is deleted with it
    mutable const Mm* idx[4];  // the index matrices in argument order
    // x(k) and x(r,c) with numbers: the first `numbers` indices are held here, and become matrices
    // in idx only when a read or write needs more than the scalar paths below.
    mutable int numbers;
    double number[2];

    Mr() : n(-1), type(Mr_unset), member_name(nullptr), chained(0), base(nullptr), parent(nullptr) {
        clear();
    }

    // x() : the whole base.
    explicit Mr(const Mm& b) : n(0), type(Mr_paren), member_name(nullptr) { on_matrix(b); }
    // x.name
    Mr(const Mm& b, const char* name) : n(0), type(Mr_dot), member_name(name) { on_matrix(b); }
    // r.name
    Mr(const Mr& p, const char* name) : n(0), type(Mr_dot), member_name(name) { on_ref(p); }

    // x(k) and x(r,c) with numbers.
    Mr(const Mm& b, double k) : n(1), type(Mr_paren), member_name(nullptr) {
        on_matrix(b);
        numbers = 1;
        number[0] = k;
    }
    Mr(const Mm& b, double r, double c) : n(2), type(Mr_paren), member_name(nullptr) {
        on_matrix(b);
        numbers = 2;
        number[0] = r;
        number[1] = c;
    }

    // x(i), x{i} and their forms with more indices. A cell as the only ( ) subscript selects through
    // its elements and overwrites the base with the selection.
    Mr(Mr_idx_type t, const Mm& b, const Mm& i1) : n(1), type(t), member_name(nullptr) {
        on_matrix(b);
        if (i1.flags.type == ak_double) {
            idx[0] = &i1;
        } else if (t == Mr_paren && i1.flags.type == ak_mm) {
            n = 0;
            select_by_cell(i1);
        } else {
            convert(0, i1);
        }
    }
    Mr(Mr_idx_type t, const Mm& b, const Mm& i1, const Mm& i2) : n(2), type(t), member_name(nullptr) {
        on_matrix(b);
        set(0, i1);
        set(1, i2);
    }
    Mr(Mr_idx_type t, const Mm& b, const Mm& i1, const Mm& i2, const Mm& i3)
        : n(3), type(t), member_name(nullptr) {
        on_matrix(b);
        set(0, i1);
        set(1, i2);
        set(2, i3);
    }
    Mr(Mr_idx_type t, const Mm& b, const Mm& i1, const Mm& i2, const Mm& i3, const Mm& i4)
        : n(4), type(t), member_name(nullptr) {
        on_matrix(b);
        set(0, i1);
        set(1, i2);
        set(2, i3);
        set(3, i4);
    }

    // r(i), r{i}, ... : the base is the value of the outer reference r.
    Mr(Mr_idx_type t, const Mr& p, const Mm& i1) : n(1), type(t), member_name(nullptr) {
        on_ref(p);
        set(0, i1);
    }
    Mr(Mr_idx_type t, const Mr& p, const Mm& i1, const Mm& i2) : n(2), type(t), member_name(nullptr) {
        on_ref(p);
        set(0, i1);
        set(1, i2);
    }
    Mr(Mr_idx_type t, const Mr& p, const Mm& i1, const Mm& i2, const Mm& i3)
        : n(3), type(t), member_name(nullptr) {
        on_ref(p);
        set(0, i1);
        set(1, i2);
        set(2, i3);
    }
    Mr(Mr_idx_type t, const Mr& p, const Mm& i1, const Mm& i2, const Mm& i3, const Mm& i4)
        : n(4), type(t), member_name(nullptr) {
        on_ref(p);
        set(0, i1);
        set(1, i2);
        set(2, i3);
        set(3, i4);
    }

    // A copy frees nothing: only the first reference owns the indices it converted.
    Mr(const Mr& r)
        : n(r.n),
          type(r.type),
          member_name(r.member_name),
          chained(r.chained),
          base(r.base),
          parent(r.parent),
          numbers(r.numbers) {
        for (int k = 0; k < 4; ++k) {
            owned[k] = 0;
            idx[k] = r.idx[k];
        }
        for (int k = 0; k < numbers; ++k) number[k] = r.number[k];
    }

    ~Mr() {
        if (any_owned()) release_owned();
        member_name = nullptr;
        base = nullptr;
        parent = nullptr;
    }

    // Assignment through the reference: x(i) = y. A reference on the right is read completely
    // before the write starts. The scalar store of translated loops is done here, inline.
    AK_SCALAR_PATH Mr& operator=(const Mm& y) {
        if (!store_scalar(y)) assign(y);
        return *this;
    }
    Mr& operator=(const Mr& y);

    // Chains: r(i), r{i}, r.name.
    Mr operator()(const Mm& i1) const { return Mr(Mr_paren, *this, i1); }
    Mr operator()(const Mm& i1, const Mm& i2) const { return Mr(Mr_paren, *this, i1, i2); }
    Mr operator()(const Mm& i1, const Mm& i2, const Mm& i3) const { return Mr(Mr_paren, *this, i1, i2, i3); }
    Mr operator()(const Mm& i1, const Mm& i2, const Mm& i3, const Mm& i4) const {
        return Mr(Mr_paren, *this, i1, i2, i3, i4);
    }
    Mr br(const Mm& i1) const { return Mr(Mr_brace, *this, i1); }
    Mr br(const Mm& i1, const Mm& i2) const { return Mr(Mr_brace, *this, i1, i2); }
    Mr br(const Mm& i1, const Mm& i2, const Mm& i3) const { return Mr(Mr_brace, *this, i1, i2, i3); }
    Mr br(const Mm& i1, const Mm& i2, const Mm& i3, const Mm& i4) const {
        return Mr(Mr_brace, *this, i1, i2, i3, i4);
    }
    Mr member(const char* name) const { return Mr(*this, name); }

    // Number of elements of the value read (reporting faults).
    int size() const;

    // Index k as a number when it is a plain scalar: a number given as such, or a real full 1x1 double
    // matrix that is not logical. False for anything else.
    AK_SCALAR_PATH bool scalar_index(int k, double& v) const {
        if (k < numbers) {
            v = number[k];
            return true;
        }
        return ak_index_number(*idx[k], v);
    }
    // The position of the common read x(k): a dense double x with no user class, one plain scalar
    // index inside it. False for every other read. A position is the index less 1, truncated.
    AK_SCALAR_PATH bool scalar_position(int& pos) const {
        if (n != 1 || type != Mr_paren || chained) return false;
        const Mm& b = *base;
        double k;
        if (((b.flags.type ^ ak_double) | b.flags.sparse | b.classid) != 0 || !scalar_index(0, k))
            return false;
        const double t = k - 1.0;
        if (!(t > -1.0 && t < b.nnz)) return false;
        pos = static_cast<int>(t);
        return true;
    }
    // The value of x(k) when x is also real.
    AK_SCALAR_PATH bool scalar_value(double& v) const {
        int pos;
        if (!scalar_position(pos) || base->pi) return false;
        v = static_cast<const double*>(base->pr)[pos];
        return true;
    }
    // Makes matrices of the indices held as numbers, for the general paths, which read idx only.
    void hold_numbers() const {
        if (numbers) make_index_matrices();
    }

  private:
    void assign(const Mm& y);  // every assignment but the inline scalar store
    void make_index_matrices() const;
    void release_owned();
    bool any_owned() const {
        static const int none[4] = {0, 0, 0, 0};
        return std::memcmp(owned, none, sizeof owned) != 0;  // one 16-byte compare
    }
    // x(k) = v and x(r,c) = v: a real scalar v into a real dense double x that this head alone holds,
    // at plain scalar indices whose rounded values lie inside x. False for anything else.
    AK_SCALAR_PATH bool store_scalar(const Mm& y) const {
        if (chained || type != Mr_paren || static_cast<unsigned>(n - 1) > 1u) return false;
        Mm& b = *base;
        // Each term is 0 for the case served here; one test instead of a branch per condition.
        const int other = (y.flags.type ^ ak_double) | (y.nnz ^ 1) | y.flags.sparse |
                          (b.flags.type ^ ak_double) | b.flags.sparse | b.classid;
        double v, w;
        if (other || y.pi || b.pi || !b.refs || ak_ref_count(b.refs) != 1 || !scalar_index(0, v)) return false;
        double* to;
        if (n == 1) {
            if (!(v >= 0.5 && v < b.nnz + 0.5)) return false;
            to = static_cast<double*>(b.pr) + static_cast<int>(v - 1.0);
        } else {
            if (b.ndims != 2 || !scalar_index(1, w)) return false;
            if (!(v >= 0.5 && v < b.dims[0] + 0.5 && w >= 0.5 && w < b.dims[1] + 0.5)) return false;
            to = static_cast<double*>(b.pr) + static_cast<int>(w - 1.0) * b.dims[0] +
                 static_cast<int>(v - 1.0);
        }
        *to = *static_cast<const double*>(y.pr);
        return true;
    }
    void clear() {
        numbers = 0;
        for (int k = 0; k < 4; ++k) {
            owned[k] = 0;
            idx[k] = nullptr;
        }
    }
    // A subscripted variable is no longer a candidate for the end-of-life scalar report.
    void on_matrix(const Mm& b) {
        chained = 0;
        base = const_cast<Mm*>(&b);
        parent = nullptr;
        base->flags.scalar_var = 0;
        clear();
    }
    void on_ref(const Mr& p) {
        chained = 1;
        base = nullptr;
        parent = &p;
        clear();
    }
    // Double indices are used as they are; any other element type is converted once, here.
    void set(int k, const Mm& i) {
        if (i.flags.type == ak_double)
            idx[k] = &i;
        else
            convert(k, i);
    }
    void convert(int k, const Mm& i);
    void select_by_cell(const Mm& cell);
};

// The common read x(k) is done here; every other goes to read_reference.
AK_SCALAR_PATH Mm::Mm(const Mr& r, int report) {
    double v;
    if (r.scalar_value(v)) {
        M_types f = r.base->flags;
        f.workspace_var = 0;
        f.global = 0;
        init_scalar(v, f);
        return;
    }
    read_reference(r, report);
}

// Subscripts of a matrix.
inline Mr Mm::operator()(double k) const { return Mr(*this, k); }
inline Mr Mm::operator()(double r, double c) const { return Mr(*this, r, c); }
inline Mr Mm::operator()(const Mm& i1) const { return Mr(Mr_paren, *this, i1); }
// An expiring plain scalar index, such as the i - 1 of x(i - 1), is held as a number: the reference
// then does not refer to it, and the scalar paths read the number from the reference itself.
AK_SCALAR_PATH Mr Mm::operator()(Mm&& i1) const {
    double k;
    if (!i1.name && ak_index_number(i1, k)) return Mr(*this, k);
    return Mr(Mr_paren, *this, i1);
}
inline Mr Mm::operator()(const Mm& i1, const Mm& i2) const { return Mr(Mr_paren, *this, i1, i2); }
inline Mr Mm::operator()(const Mm& i1, const Mm& i2, const Mm& i3) const {
    return Mr(Mr_paren, *this, i1, i2, i3);
}
inline Mr Mm::operator()(const Mm& i1, const Mm& i2, const Mm& i3, const Mm& i4) const {
    return Mr(Mr_paren, *this, i1, i2, i3, i4);
}
inline Mr Mm::br(const Mm& i1) const { return Mr(Mr_brace, *this, i1); }
inline Mr Mm::br(const Mm& i1, const Mm& i2) const { return Mr(Mr_brace, *this, i1, i2); }
inline Mr Mm::br(const Mm& i1, const Mm& i2, const Mm& i3) const { return Mr(Mr_brace, *this, i1, i2, i3); }
inline Mr Mm::br(const Mm& i1, const Mm& i2, const Mm& i3, const Mm& i4) const {
    return Mr(Mr_brace, *this, i1, i2, i3, i4);
}
inline Mr Mm::member(const char* field) const { return Mr(*this, field); }

// ---- user classes and subscripts ---------------------------------------------------------------------
// The structure handed to a class's subsref and subsasgn: field "type" ("()", ".", "{}" or "?") and
// field "subs" (the member name, or a 1 x n cell of the indices, a colon as the string ":").
Mm build_subs_descriptor(const Mr& r);
Mm subsref(const Mm& x);
Mm subsref(const Mm& x, const Mm& s);
Mm subsasgn(const Mm& x);
Mm subsasgn(const Mm& x, const Mm& s);
Mm subsasgn(const Mm& x, const Mm& s, const Mm& v);

// ---- shape and subscript functions -------------------------------------------------------------------
// [i, j, ...] = ind2sub(siz, ndx): subscripts of linear indices; the last output takes the rest of
// the dimensions. No bounds are checked. The forms with outputs return x_M.
Mm ind2sub();
Mm ind2sub(const Mm& siz);
Mm ind2sub(const Mm& siz, const Mm& ndx);
Mm ind2sub(const Mm& siz, const Mm& ndx, i_o_t, Mm& i, Mm& j);
Mm ind2sub(const Mm& siz, const Mm& ndx, i_o_t, Mm& i, Mm& j, Mm& k);
Mm ind2sub(const Mm& siz, const Mm& ndx, i_o_t, Mm& i, Mm& j, Mm& k, Mm& l);
// Linear indices of subscripts. No bounds are checked.
Mm sub2ind();
Mm sub2ind(const Mm& siz);
Mm sub2ind(const Mm& siz, const Mm& i);
Mm sub2ind(const Mm& siz, const Mm& i, const Mm& j);
Mm sub2ind(const Mm& siz, const Mm& i, const Mm& j, const Mm& k);
Mm sub2ind(const Mm& siz, const Mm& i, const Mm& j, const Mm& k, const Mm& l);
Mm permute(const Mm& x);
Mm permute(const Mm& x, const Mm& order);
Mm ipermute(const Mm& x);
Mm ipermute(const Mm& x, const Mm& order);
Mm diag(const Mm& x);
Mm diag(const Mm& x, const Mm& k);
Mm squeeze(const Mm& x);
Mm ndims(const Mm& x);
// Turns data stored in C order (last subscript fastest) into column-major order of the same shape.
Mm row2col(const Mm& x);
// The 0-based dimension that a dim argument of function names over x: 0 means the first
// non-singleton dimension. An empty, non-positive or too large dim is reported and gives 0.
int normalize_dim_argument(const char* function, const Mm& x, const Mm& dim);

// The colon family: colon() is a plain copy of c_p (not a colon index); colon(a, b) is a:b and
// colon(a, s, b) is a:s:b as a row; an empty range gives nop_M.
Mm colon();
Mm colon(const Mm& x);
Mm colon(const Mm& a, const Mm& b);
Mm colon(const Mm& a, const Mm& s, const Mm& b);
Mm colon(double a, double b);
Mm colon(double a, double s, double b);
