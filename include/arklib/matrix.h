// The matrix value: a small head over reference-counted element storage.
#pragma once
#include <cstddef>
#include <cstdint>
#include <new>

#include "arklib/error.h"
#include "arklib/memory.h"
#include "arklib/ops.h"

// Element type of a matrix.
enum ak_matrix_types {
    ak_no_type = 0,  // declared, no value yet: reading it is an error
    ak_double = 1,   // IEEE double; strings are doubles with the str flag
    ak_uchar = 2,    // unsigned char
    ak_mm = 3        // Mm elements: a cell array, or with a field table a structure
};

// The flag record of a matrix, copied as a whole.
struct M_types {
    int str;
    int sparse;
    int logical;
    int scalar_var;     // has held nothing but a real full scalar since it was declared
    int workspace_var;  // registered at a scope level below 2
    int global;
    ak_matrix_types type;
};

// Marker that separates inputs from output references in a call: f(a, b, i_o, out2, out3).
struct i_o_t {
    int unused[2];
};
extern i_o_t i_o;

// When set, reference counts change atomically and the runtime locks are taken. Change it only
// through ak_set_AK, which also stops the keeping of 1x1 blocks for reuse.
extern int multi_task;

// The share count of a storage, for the test "this head alone holds it" before a write in place. An
// acquire load: under multi_task it pairs with the release of another thread's drop, so that thread's
// last reads of the storage come before this thread's write. On x86-64 it is a plain load.
inline int ak_ref_count(const int* refs) { return __atomic_load_n(refs, __ATOMIC_ACQUIRE); }

class Mr;
class Mc;
class Mm;

// Scope tracking: the scope table registers declared variables while this is set.
extern int ak_scope_tracking;
void ak_scope_register(Mm* m);
void ak_scope_unregister(Mm* m);

class Mm {
  public:
    // The head. Field order is part of the binary contract with translated programs. The storage
    // words are mutable: copying a head that holds its own value (see init_scalar) moves the value
    // to a block that both heads then share.
    int ndims;            // 2, 3 or 4; -1 after destruction
    int dims[4];          // sizes; trailing entries 1, or all 0 when empty
    mutable int p;        // capacity in elements, at least nnz
    mutable int* refs;    // shared reference count of the storage; null when there is none
    mutable void* pr;     // real half: double, unsigned char or Mm elements
    void* pi;             // imaginary half, null for a real matrix
    int nnz;              // stored elements: the product of dims when full
    int* index;           // sparse only: zero-based column-major position of each entry
    const char* name;     // variable name, not owned; null for a temporary
    const char** fields;  // field names of a structure, else null
    int nfields;
    int classid;           // registered user class, 0 for none
    mutable Mm* shadowed;  // the same-named variable this one hides in the scope table; see init_scalar
    M_types flags;

    // ---- construction ------------------------------------------------------------------------
    Mm();
    Mm(double v);                    // 1x1 real, scalar_var set
    Mm(double v, const M_types& f);  // 1x1 real with the flag record f, whose type is ak_double
    Mm(int complex, int sparse, int nnz, int rows, int cols, ak_matrix_types type);
    Mm(int complex, int sparse, int nnz, int ndims, const int* dims, ak_matrix_types type);
    Mm(const char* name, int rows, int cols);
    Mm(i_o_t, const char* name, int global);
    Mm(const Mm& src);
    Mm(const Mm& src, const char* name);
    Mm(const Mc& list);                        // matrix and cell literals
    inline Mm(const Mr& ref, int report = 1);  // resolves a subscript expression for reading
    Mm(int complex, const Mm& a, const Mm& b, const Mm& dim, op_t op, int do_dim, Mm& extra);  // engine
    ~Mm();

    Mm& operator=(const Mm& src);
    // From a temporary: a value it holds in its head is written into this head's own real double
    // storage when nothing else holds that storage, with no block taken or given back. Every other
    // assignment is the one above.
    Mm& operator=(Mm&& src);

    static void* operator new(std::size_t size) noexcept;
    static void* operator new(std::size_t, void* where) noexcept { return where; }
    static void operator delete(void* p) noexcept;
    static void operator delete(void*, void*) noexcept {}

    // ---- storage -----------------------------------------------------------------------------
    // Allocates storage for nnz elements of flags.type after the shape has been set; every
    // constructor ends here.
    void storage_alloc(int complex, int sparse);
    // Releases the storage; runs when the reference count reaches 0.
    void storage_free();
    // Makes this head a 1x1 real double holding v, with the flag record f (whose type is ak_double).
    // The head holds the value itself, in the word of `shadowed`, which only named variables use:
    // pr points there, refs is null and p is 1. So a scalar temporary costs no block. The first copy
    // of such a head moves the value to a block of the storage rule, which both heads then share, as
    // for every other value; a head that holds its value is therefore never shared, and is not to be
    // copied from two threads at once.
    void init_scalar(double v, const M_types& f);
    bool holds_value() const { return pr == &shadowed; }

    // ---- shape -------------------------------------------------------------------------------
    int& getndims() { return ndims; }
    int* getdims() { return dims; }
    const int* getdims() const { return dims; }
    int rows() const { return dims[0]; }
    int cols() const { return dims[1]; }
    int getp() const { return p; }
    int& getnnz() { return nnz; }
    int getnnz() const { return nnz; }
    int* getindex() const { return index; }
    int size() const { return (ndims >= 2 && ndims <= 4) ? dims[0] * dims[1] * dims[2] * dims[3] : -1; }
    int size(int d) const;
    int length() const;
    int nsingleton() const;
    int vectordim() const;
    void collapse();
    int dirty() const { return refs ? ak_ref_count(refs) - 1 : 0; }

    // ---- flags and identity ------------------------------------------------------------------
    const char* getname() const { return name; }
    // Names the head; while scope tracking is on it is then registered as a variable.
    void setname(const char* n) {
        name = n;
        if (ak_scope_tracking) ak_scope_register(this);
    }
    int issamename(const char* n) const { return name == n; }
    const char** getfields() const { return fields; }
    int getnfields() const { return nfields; }
    int getclassid() const { return classid; }
    void setclassid(int id) { classid = id; }
    M_types& getflags() { return flags; }
    const M_types& getflags() const { return flags; }
    ak_matrix_types gettype() const { return flags.type; }
    int isc() const { return pi != nullptr; }
    int isstr() const { return flags.str; }
    void setstr(int on) { flags.str = on; }
    int issparse() const { return flags.sparse; }
    void setsparse(int on) { flags.sparse = on; }
    int islogical() const { return flags.logical; }
    void setlogical(int on) { flags.logical = on; }
    int isglobal() const { return flags.global; }
    int isstruct() const { return fields != nullptr; }

    // ---- unchecked element addresses (1-based) -----------------------------------------------
    double* getpr(double*) const { return static_cast<double*>(pr); }
    unsigned char* getpr(unsigned char*) const { return static_cast<unsigned char*>(pr); }
    Mm* getpr(Mm*) const { return static_cast<Mm*>(pr); }
    double* getpi(double*) const { return static_cast<double*>(pi); }
    unsigned char* getpi(unsigned char*) const { return static_cast<unsigned char*>(pi); }
    Mm* getpi(Mm*) const { return static_cast<Mm*>(pi); }
    template <typename T>
    T* getpr(T* t, int k) const {
        return getpr(t) + (k - 1);
    }
    template <typename T>
    T* getpi(T* t, int k) const {
        return getpi(t) + (k - 1);
    }
    template <typename T>
    T* getpr(T* t, int row, int col) const {
        return getpr(t) + ((col - 1) * dims[0] + row - 1);
    }
    template <typename T>
    T* getpi(T* t, int row, int col) const {
        return getpi(t) + ((col - 1) * dims[0] + row - 1);
    }
    double* addr() const { return static_cast<double*>(pr); }
    double* addr(int k) const { return addr() + (k - 1); }
    double* addr(int row, int col) const { return addr() + ((col - 1) * dims[0] + row - 1); }
    double* addi() const { return static_cast<double*>(pi); }
    double* addi(int k) const { return addi() + (k - 1); }
    double* addi(int row, int col) const { return addi() + ((col - 1) * dims[0] + row - 1); }

    // ---- checked element access ---------------------------------------------------------------
    double& r() const;
    double& r(double k) const;
    double& r(double row, double col) const;
    double& r(double row, double col, double depth) const;
    double& i() const;
    double& i(double k) const;
    double& i(double row, double col) const;
    double& i(double row, double col, double depth) const;
    unsigned char& ur(int k) const;
    unsigned char& ur(int row, int col) const;
    Mm& mr(int k) const;
    Mm& mr(int row, int col) const;

    // ---- copying and complexity ---------------------------------------------------------------
    // Every field of s but the name and the scope link, sharing its storage without counting it.
    void copy_value_fields(const Mm& s);
    void deepcopy(int complex, int sparse, const Mm& src, ak_matrix_types type);
    void deepcopy(int complex, const Mm& src, ak_matrix_types type);
    void deepcopy(const Mm& src, ak_matrix_types type);
    int getcomplex();
    int getreal(int force);
    Mm safebr(int k) const;
    void warn_uninit() const;

    // ---- structure fields ---------------------------------------------------------------------
    int findfield(const char* field, int report) const;
    const char* getfield(int k) const;
    int addfield(const char* field, int force);
    int rmfield(const char* field);
    void extend_nfields(int n);

    // ---- shape changes ------------------------------------------------------------------------
    void reshape(int rows, int cols);
    void reshape(int n, const int* d);

    // ---- sparse bookkeeping -------------------------------------------------------------------
    int search(int pos) const;
    void sort();
    void resparse();
    void extend_nnz(int n);

    // ---- subscripts: x(i,...), x{i,...}, x.name ------------------------------------------------
    inline Mr operator()(double k) const;  // x(k) and x(r,c) with numbers, for translated loops
    inline Mr operator()(double r, double c) const;
    inline Mr operator()(const Mm& i1) const;
    inline Mr operator()(Mm&& i1) const;
    inline Mr operator()(const Mm& i1, const Mm& i2) const;
    inline Mr operator()(const Mm& i1, const Mm& i2, const Mm& i3) const;
    inline Mr operator()(const Mm& i1, const Mm& i2, const Mm& i3, const Mm& i4) const;
    inline Mr br(const Mm& i1) const;
    inline Mr br(const Mm& i1, const Mm& i2) const;
    inline Mr br(const Mm& i1, const Mm& i2, const Mm& i3) const;
    inline Mr br(const Mm& i1, const Mm& i2, const Mm& i3, const Mm& i4) const;
    inline Mr member(const char* field) const;

    // ---- indexed assignment routes ------------------------------------------------------------
    void vwcopy1(const Mm& y, const Mm& i1);
    void vwcopy2(const Mm& y, const Mm& i1, const Mm& i2);
    void vwcopyn(const Mr& ref, Mm y);
    void vwcopy0(const Mr& ref);

  private:
    bool spill() const;  // moves a value held in the head to a block; false when out of memory
    void init_empty();
    void read_reference(const Mr& ref, int report);  // every read but the common scalar x(k)
    bool keep_scalar_block();
    bool release_share();  // drops this head's share; true when it was the last one
    bool drop_share();     // the same for storage that is not kept
    void end_variable();
    void init_head(int nd, ak_matrix_types type);
    void set_full_shape(int nd, const int* d, long long limit);
};

// ---- reference counting ------------------------------------------------------------------------
inline void ak_ref_raise(int* refs) {
    if (multi_task)
        __atomic_add_fetch(refs, 1, __ATOMIC_ACQ_REL);
    else
        ++*refs;
}

// The scalar paths of operators, subscripts and loops are inlined where they are used whatever the
// size of the function around them: a call would cost as much as the path itself.
#define AK_SCALAR_PATH inline __attribute__((always_inline))

// ---- kept 1x1 storage ---------------------------------------------------------------------------------
// Translated scalar code makes and drops a 1x1 temporary for nearly every operation; those hold their
// values in their heads (see init_scalar). A 1x1 with storage of its own, such as a copy of a held
// value or a scalar made by the general code, has a block of the storage rule: capacity 9, 72 bytes of
// elements, then the count. When its last head goes, the block is kept on this list, and
// storage_alloc hands it out again for the next block of that size without a trip through the
// allocator. The allocator takes the kept blocks back into its own list of blocks of that size before
// it grows that list, so keeping them never costs memory.
struct ak_scalar_block_list {
    void* head;  // first kept block; the first 8 bytes of each hold the next
    // How far the count of a block that is kept lies past its elements: 72 while blocks are kept, and
    // 1, which no pair of aligned pointers has, while none are: so while multi_task is set, after
    // shutdown, and in sanitizer builds.
    long distance;
};
extern ak_scalar_block_list ak_scalar_blocks;
constexpr int ak_scalar_capacity = 9;

// The text every message prints for a matrix: its name, "=%d" of a scalar, or "(temporary)".
const char* display_name(const Mm& m);

// A string matrix of the text: 1 x strlen, or 0x0 for "", with the str flag.
Mm TM(const char* text);
// The characters of m (each element truncated to a byte, column-major) as a C string of at most
// size-1 characters. Returns buffer.
char* Mstr(const Mm& m, char* buffer, int size);

// ---- marker recognition --------------------------------------------------------------------------
// Markers are told apart by the identity of their name pointer, remembered at start-up.
extern const char* ak_colon_name;
extern const char* ak_semi_name;
extern const char* ak_lM_name;
inline bool is_colon(const Mm& m) { return m.name != nullptr && m.name == ak_colon_name; }
inline bool is_semi(const Mm& m) { return m.name != nullptr && m.name == ak_semi_name; }
inline bool is_lM(const Mm& m) { return m.name != nullptr && m.name == ak_lM_name; }

// ---- exported constant objects, in their order of construction -----------------------------------
extern Mm TICTOC, ans, i, j, pi, Inf, NaN, eps, x_M, semi, c_p, nop_M, one_M, zero_M, l_M;
extern Mm page_screen_output, implicit_str_to_num_ok, empty_list_elements_ok, switchvar;

// ---- the plain matrix record exchanged with the graphics engine ----------------------------------
struct miniM {
    int ndims;
    int dims[4];
    int str;
    double* data;

    miniM();
    miniM(const miniM& shape, int str);  // copies ndims and dims, then allocates
    miniM(int ndims, const int* dims, int str);
    void setsize(int rows, int cols, int depth);
    void setsize(int n, const int* d);
    void alloc();
    void free();
    int size() const;
    double* addr(int k);
    double& r(int k);
};

// ---- inline fast paths -----------------------------------------------------------------------------
inline void Mm::copy_value_fields(const Mm& s) {
    ndims = s.ndims;
    dims[0] = s.dims[0];
    dims[1] = s.dims[1];
    dims[2] = s.dims[2];
    dims[3] = s.dims[3];
    p = s.p;
    refs = s.refs;
    pr = s.pr;
    pi = s.pi;
    nnz = s.nnz;
    index = s.index;
    fields = s.fields;
    nfields = s.nfields;
    classid = s.classid;
    flags = s.flags;
}

inline Mm::Mm(const Mm& s) {
    if (s.holds_value() && !s.spill()) {
        init_empty();  // out of memory was reported
        return;
    }
    copy_value_fields(s);
    name = nullptr;
    shadowed = nullptr;
    flags.workspace_var = 0;
    flags.global = 0;
    if (refs) ak_ref_raise(refs);
}

AK_SCALAR_PATH void Mm::init_scalar(double v, const M_types& f) {
    p = 1;
    refs = nullptr;
    pr = &shadowed;
    ndims = 2;
    dims[0] = dims[1] = dims[2] = dims[3] = 1;
    nnz = 1;
    pi = nullptr;
    index = nullptr;
    name = nullptr;
    fields = nullptr;
    nfields = 0;
    classid = 0;
    // Field by field: a constant record becomes stores of constants, where a copy of the whole
    // record would be built on the stack and read back in wider pieces than it was written.
    flags.str = f.str;
    flags.sparse = f.sparse;
    flags.logical = f.logical;
    flags.scalar_var = f.scalar_var;
    flags.workspace_var = f.workspace_var;
    flags.global = f.global;
    flags.type = f.type;
    *static_cast<double*>(pr) = v;  // into shadowed
}

AK_SCALAR_PATH Mm::Mm(double v) { init_scalar(v, M_types{0, 0, 0, 1, 0, 0, ak_double}); }
AK_SCALAR_PATH Mm::Mm(double v, const M_types& f) { init_scalar(v, f); }

// Puts the storage of this, its last head, on the kept list when it is a 1x1 block: only a block of
// that size has its count 72 bytes past its first element (a cell's count is a block of its own). A
// sparse matrix's index is a block of its own too, so its storage is freed instead. The distance
// matches only while blocks are kept, that is while threads are not in play, so the count is read
// plainly; and never for a head without storage, whose distance is far from 72.
AK_SCALAR_PATH bool Mm::keep_scalar_block() {
    ak_scalar_block_list& kept = ak_scalar_blocks;
    const long distance =
        static_cast<long>(reinterpret_cast<std::uintptr_t>(refs) - reinterpret_cast<std::uintptr_t>(pr));
    if (distance != kept.distance || index || *refs != 1) return false;
    *static_cast<void**>(pr) = kept.head;
    kept.head = pr;
    refs = nullptr;
    return true;
}

AK_SCALAR_PATH bool Mm::release_share() {
    if (!refs) return false;
    return keep_scalar_block() || drop_share();
}

AK_SCALAR_PATH Mm& Mm::operator=(Mm&& src) {
    const bool own_storage = holds_value() || (refs && ak_ref_count(refs) == 1);
    if (!src.holds_value() || !own_storage || flags.type != ak_double || flags.sparse || pi || fields)
        return *this = static_cast<const Mm&>(src);
    *static_cast<double*>(pr) = *static_cast<const double*>(src.pr);
    ndims = 2;
    dims[0] = dims[1] = dims[2] = dims[3] = 1;
    nnz = 1;
    classid = src.classid;
    // The flags of the value; those of the variable stay, as in every assignment.
    flags.str = src.flags.str;
    flags.logical = src.flags.logical;
    return *this;
}

// The end of a temporary is inline and short when it holds its value or its storage is a kept-size
// block; a named variable, shared storage and every other kind of storage end out of line.
AK_SCALAR_PATH Mm::~Mm() {
    if (name) {
        end_variable();
        return;
    }
    ndims = -1;
    release_share();
}
