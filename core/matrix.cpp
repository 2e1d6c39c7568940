// Construction, storage, assignment and shape queries of Mm.
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "arklib/matrix.h"
#include "core/matrix_internal.h"

int multi_task = 0;

// The distance of the kept list that no block matches, and the one kept blocks have. Sanitizer
// builds keep no 1x1 blocks, so that every use after free of one is caught.
constexpr long no_keeping = 1;
#if defined(__SANITIZE_ADDRESS__)
constexpr long scalar_keeping = no_keeping;
#else
constexpr long scalar_keeping = ak_scalar_capacity * 8;
#endif
ak_scalar_block_list ak_scalar_blocks = {nullptr, scalar_keeping};

void ak_internal::keep_scalar_blocks(bool on) {
    ak_scalar_blocks.distance = on ? scalar_keeping : no_keeping;
    if (!on) release_scalar_blocks();
}

void ak_internal::release_scalar_blocks() {
    while (void* block = ak_scalar_blocks.head) {
        ak_scalar_blocks.head = *static_cast<void**>(block);
        ak_free(block);
    }
}

namespace {

using ak_internal::max_elements;

std::size_t round8(std::size_t n) { return (n + 7) & ~static_cast<std::size_t>(7); }

// A block of `bytes`: a kept 1x1 block when it is their size and one is kept.
void* new_block(std::size_t bytes) {
    void* block = ak_scalar_blocks.head;
    if (!block || bytes != ak_scalar_capacity * 8 + 8) return ak_malloc(static_cast<unsigned>(bytes));
    ak_scalar_blocks.head = *static_cast<void**>(block);
    return block;
}

}  // namespace

void* Mm::operator new(std::size_t size) noexcept { return ak_malloc_or_report(size); }

void Mm::operator delete(void* p) noexcept { ak_free(p); }

void Mm::init_head(int nd, ak_matrix_types type) {
    ndims = nd;
    dims[0] = dims[1] = dims[2] = dims[3] = 0;
    p = 0;
    refs = nullptr;
    pr = pi = nullptr;
    nnz = 0;
    index = nullptr;
    name = nullptr;
    fields = nullptr;
    nfields = 0;
    classid = 0;
    shadowed = nullptr;
    flags = M_types{0, 0, 0, 0, 0, 0, type};
}

// Sets dims from the first nd sizes (negative ones become 0), the rest 1, and nnz to their product.
// Trailing sizes of exactly 1 are removed from ndims, never below 2. A full matrix must fit its byte
// size in the allocator; a sparse one only needs positions that fit an int.
void Mm::set_full_shape(int nd, const int* d, long long limit) {
    if (nd > 4) {
        for (int k = 4; k < nd; ++k) {
            if (d[k] != 1) {
                error("Mm: at most 4 dimensions are supported, but %d were given", nd);
                break;
            }
        }
        nd = 4;
    }
    long long n = 1;
    for (int k = 0; k < 4; ++k) {
        dims[k] = k < nd ? (d[k] < 0 ? 0 : d[k]) : 1;
        n *= dims[k];
        if (n > limit) n = limit + 1;
    }
    ndims = nd < 2 ? 2 : nd;
    while (ndims > 2 && dims[ndims - 1] == 1) --ndims;
    if (n > limit) {
        error("Out of memory!");
        n = 0;
    }
    nnz = static_cast<int>(n);
}

void Mm::storage_alloc(int complex, int sparse) {
    if (nnz < 1) {
        dims[0] = dims[1] = dims[2] = dims[3] = 0;
        nnz = 0;
    }
    fields = nullptr;
    nfields = 0;
    classid = 0;
    index = nullptr;
    if (nnz > max_elements) {
        // Too large for any storage: reported as exhaustion, leaving an empty matrix.
        error("Out of memory!");
        nnz = 0;
        dims[0] = dims[1] = dims[2] = dims[3] = 0;
    }
    if (flags.type < ak_mm) {
        p = nnz + 8;
        // The imaginary half starts 8 bytes per element of capacity in, for every element type;
        // a complex byte matrix is given room for that layout.
        std::size_t half = static_cast<std::size_t>(p) * 8;
        std::size_t width = flags.type == ak_uchar ? 1 : 8;
        std::size_t data = round8(complex ? half + p * width : p * width);
        char* block = static_cast<char*>(new_block(data + 8));
        pr = block;
        pi = (block && complex) ? block + half : nullptr;
        refs = block ? reinterpret_cast<int*>(block + data) : nullptr;
    } else {
        p = nnz + 4;
        pi = nullptr;
        std::size_t bytes = sizeof(Mm) * static_cast<std::size_t>(p);
        Mm* elems = bytes > UINT_MAX ? nullptr : static_cast<Mm*>(ak_malloc(static_cast<unsigned>(bytes)));
        refs = elems ? static_cast<int*>(ak_malloc(8)) : nullptr;
        if (elems && !refs) {
            ak_free(elems);
            elems = nullptr;
        }
        // Every element starts as the same empty matrix: one storage shared by all of them, which
        // an assignment to an element replaces and never writes through.
        if (elems && p > 0) {
            new (elems) Mm();
            for (int k = 1; k < p; ++k) new (elems + k) Mm(elems[0]);
        }
        pr = elems;
    }
    if (!pr) {
        error("Out of memory!");
        // A host handler returned: leave a valid empty matrix behind.
        if (nnz > 0) {
            nnz = 0;
            storage_alloc(0, sparse);
        }
        return;
    }
    *refs = 1;
    if (sparse) {
        index = static_cast<int*>(ak_malloc(static_cast<unsigned>(sizeof(int)) * p));
        if (!index) error("Out of memory!");
    }
}

void Mm::storage_free() {
    if (flags.type == ak_mm && pr) {
        Mm* elems = static_cast<Mm*>(pr);
        for (int k = 0; k < p; ++k) elems[k].~Mm();
        ak_free(refs);
    }
    if (fields) {
        for (int k = 0; k < nfields; ++k) ak_free(const_cast<char*>(fields[k]));
        ak_free(fields);
    }
    ak_free(index);
    ak_free(pr);
    refs = nullptr;
}

bool Mm::drop_share() {
    if (multi_task) {
        if (__atomic_sub_fetch(refs, 1, __ATOMIC_ACQ_REL) != 0) return false;
    } else if (--*refs != 0) {
        return false;
    }
    storage_free();
    return true;
}

void Mm::end_variable() {
    // The scope table knows its variables by name: a temporary was never registered.
    if (ak_scope_tracking) ak_scope_unregister(this);
    ndims = -1;
    if (release_share() && flags.scalar_var && nnz == 1 && (ak_default_error_flags & 8))
        ak_debug_handler('s', name);
}

bool Mm::spill() const {
    Mm storage(0, 0, 0, 1, 1, ak_double);
    if (storage.nnz != 1) return false;  // out of memory was reported
    *static_cast<double*>(storage.pr) = *static_cast<const double*>(pr);
    p = storage.p;
    pr = storage.pr;
    refs = storage.refs;
    storage.refs = nullptr;  // the storage now belongs to this head
    shadowed = nullptr;
    return true;
}

void Mm::init_empty() {
    init_head(2, ak_double);
    storage_alloc(0, 0);
}

Mm::Mm() { init_empty(); }

Mm::Mm(int complex, int sparse, int n, int rows, int cols, ak_matrix_types type) {
    init_head(2, type);
    int d[2] = {rows, cols};
    if (!sparse) {
        set_full_shape(2, d, max_elements);
        storage_alloc(complex, 0);
        return;
    }
    nnz = n;
    storage_alloc(complex, 1);
    int saved = nnz;
    set_full_shape(2, d, INT_MAX);
    if (dims[0] == 0) dims[2] = dims[3] = 0;
    flags.sparse = 1;
    nnz = saved > nnz ? nnz : saved;
}

Mm::Mm(int complex, int sparse, int n, int nd, const int* d, ak_matrix_types type) {
    init_head(2, type);
    if (!sparse) {
        set_full_shape(nd, d, max_elements);
        storage_alloc(complex, 0);
        return;
    }
    nnz = n;
    storage_alloc(complex, 1);
    int saved = nnz;
    set_full_shape(nd, d, INT_MAX);
    if (dims[0] == 0) dims[2] = dims[3] = 0;
    flags.sparse = 1;
    nnz = saved > nnz ? nnz : saved;
}

Mm::Mm(const char* nm, int rows, int cols) : Mm(0, 0, 0, rows, cols, ak_double) { name = nm; }

Mm::Mm(i_o_t, const char* nm, int global) {
    init_head(2, ak_no_type);
    flags.scalar_var = 1;
    flags.global = global;
    storage_alloc(0, 0);
    name = nm;
    if (ak_scope_tracking) ak_scope_register(this);
}

Mm::Mm(const Mm& src, const char* nm) : Mm(src) {
    name = nm;
    flags.global = src.flags.global;
}

Mm& Mm::operator=(const Mm& src) {
    if (this == &src) return *this;
    // src may live inside the storage this head is about to release (an element of its own cell):
    // take a share of its storage and a copy of its head first.
    Mm held(src);
    release_share();
    M_types kept = flags;
    copy_value_fields(held);
    held.refs = nullptr;  // its share now belongs to this head
    flags.workspace_var = kept.workspace_var;
    flags.global = kept.global;
    flags.scalar_var =
        (kept.scalar_var && !flags.sparse && flags.type == ak_double && !pi && nnz == 1) ? 1 : 0;
    return *this;
}

int Mm::size(int d) const {
    if (d >= 1 && d <= 4) return dims[d - 1];
    error("%s.size(dim): no such dimension=%d", display_name(*this), d);
    return 0;
}

int Mm::length() const {
    int best = 0;
    for (int k = 0; k < 4; ++k) {
        if (dims[k] == 0) return 0;
        if (dims[k] > best) best = dims[k];
    }
    return best;
}

int Mm::nsingleton() const {
    for (int k = 0; k < 4; ++k)
        if (dims[k] > 1) return k + 1;
    return 1;
}

int Mm::vectordim() const {
    if (ndims < 1) return 2;
    int found = 0;
    for (int k = 0; k < 4; ++k) {
        if (dims[k] > 1) {
            if (found) return 0;
            found = k + 1;
        }
    }
    return found ? found : 2;
}

void Mm::collapse() {
    // Trailing sizes of 1 go; a trailing 0 only where the sizes before it show the emptiness too, so
    // that 1x1x0 stays as it is.
    while (ndims > 2) {
        const int last = dims[ndims - 1];
        long long before = 1;
        for (int k = 0; k < ndims - 1; ++k) before *= dims[k];
        if (last != 1 && !(last == 0 && before == 0)) break;
        --ndims;
    }
}

void Mm::reshape(int r, int c) {
    if (static_cast<long long>(r) * c != size()) {
        error("reshape: size=%d is different than %d*%d", size(), r, c);
        return;
    }
    ndims = 2;
    if (size() > 0) {
        dims[0] = r;
        dims[1] = c;
        dims[2] = dims[3] = 1;
    } else {
        dims[0] = dims[1] = dims[2] = dims[3] = 0;
    }
}

void Mm::reshape(int n, const int* d) {
    long long product = 1;
    bool fits = true;
    for (int k = 0; k < n; ++k) {
        product *= d[k];
        if (k >= 4 && d[k] != 1) fits = false;
        if (product > INT_MAX || product < 0) product = -1;
    }
    if (product != size()) {
        error("reshape: size=%d is different than the product of new dimensions", size());
        return;
    }
    if (!fits) {
        error("reshape: at most 4 dimensions are supported, but %d were given", n);
        return;
    }
    if (size() == 0) return;
    dims[0] = dims[1] = dims[2] = dims[3] = 1;
    int used = n > 4 ? 4 : n;
    for (int k = 0; k < used; ++k) dims[k] = d[k];
    ndims = used < 2 ? 2 : used;
    collapse();
}

const char* display_name(const Mm& m) {
    if (m.name) return m.name;
    if (m.ndims >= 2 && m.size() == 1 && m.flags.type == ak_double && !m.flags.sparse && m.pr) {
        static char buffer[32];
        double v = *static_cast<const double*>(m.pr);
        // Whole, also beyond the int range (an index of 3e9 is named "=3000000000").
        long long shown = 0;
        if (v >= 9e18)
            shown = LLONG_MAX;
        else if (v <= -9e18)
            shown = LLONG_MIN;
        else if (v == v)
            shown = static_cast<long long>(v);
        std::snprintf(buffer, sizeof buffer, "=%lld", shown);
        return buffer;
    }
    return "(temporary)";
}

Mm TM(const char* text) {
    int n = text ? static_cast<int>(std::strlen(text)) : 0;
    Mm s(0, 0, 0, 1, n, ak_double);
    double* d = s.addr();
    for (int k = 0; k < s.nnz; ++k) d[k] = static_cast<unsigned char>(text[k]);
    s.flags.str = 1;
    return s;
}

char* Mstr(const Mm& m, char* buffer, int size) {
    if (size < 1) return buffer;
    int n = 0;
    if (m.flags.type == ak_double || m.flags.type == ak_uchar) {
        n = m.nnz < size - 1 ? m.nnz : size - 1;
        for (int k = 0; k < n; ++k) buffer[k] = static_cast<char>(ak_internal::element_byte(m, k));
    }
    buffer[n] = '\0';
    return buffer;
}
