// The field-name table of structures.
//
// The table has capacity + 1 slots: names in use, then a non-null filler in each free slot, then a
// null. A full table is therefore one whose slot at position nfields is null.
#include <cstring>

#include "arklib/matrix.h"
#include "core/matrix_internal.h"

namespace ak_internal {
const char* const field_filler = "char";
}

namespace {

char* copy_name(const char* name) {
    std::size_t n = std::strlen(name) + 1;
    char* s = static_cast<char*>(ak_malloc_or_report(n));
    if (s) std::memcpy(s, name, n);
    return s;
}

// Names and table belong to the storage: a head that shares it gets its own copy first.
void unshare(Mm& m) {
    if (m.dirty()) m.deepcopy(m, ak_no_type);
}

}  // namespace

int Mm::findfield(const char* field, int report) const {
    for (int k = 0; fields && k < nfields; ++k)
        if (std::strcmp(fields[k], field) == 0) return k;
    if (report) {
        if (fields)
            error("%s.%s: structure field does not exist", display_name(*this), field);
        else
            error("%s.%s: not a structure", display_name(*this), field);
    }
    return -1;
}

const char* Mm::getfield(int k) const {
    if (k >= 0 && k < nfields) return fields[k];
    error("getfield: index=%d out of range [0..%d)", k, nfields);
    return nullptr;
}

void Mm::extend_nfields(int n) {
    if (n <= nfields) return;
    unshare(*this);
    const char** table = static_cast<const char**>(ak_malloc_or_report(sizeof(const char*) * (n + 1)));
    if (!table) return;
    for (int k = 0; k < nfields; ++k) table[k] = fields[k];
    for (int k = nfields; k < n; ++k) table[k] = ak_internal::field_filler;
    table[n] = nullptr;
    ak_free(fields);
    fields = table;
}

int Mm::addfield(const char* field, int force) {
    if (!force) {
        int k = findfield(field, 0);
        if (k >= 0) return k;
    }
    unshare(*this);
    if (!fields)
        extend_nfields(8);
    else if (!fields[nfields])
        extend_nfields(2 * nfields);
    if (!fields || !fields[nfields]) return -1;  // allocation failed and was reported
    char* copy = copy_name(field);
    if (!copy) return -1;
    fields[nfields] = copy;
    return nfields++;
}

int Mm::rmfield(const char* field) {
    int k = findfield(field, 1);
    if (k < 0) return -1;
    unshare(*this);
    ak_free(const_cast<char*>(fields[k]));
    for (int m = k; m + 1 < nfields; ++m) fields[m] = fields[m + 1];
    fields[--nfields] = ak_internal::field_filler;
    return k;
}
