// The scope table: the named heads alive at each call depth. Declared variables reach it through
// the hooks in Mm (declaration, setname, the end of a named head) while tracking is on.
#include "arklib/scope.h"

#include <cstring>

#include "arklib/error.h"
#include "arklib/memory.h"

int ak_scope_tracking = 0;
variables_scope_t variables_scope;

namespace {

variables_scope_t& table = variables_scope;

bool valid_level(int level) { return level >= 0 && level < ak_scope_levels; }

int entries(int level) { return valid_level(level) && table.vars[level] ? table.count[level] : 0; }

// Closes up entry k of level by moving the later entries down.
void close_up(int k, int level) {
    Mm** v = table.vars[level];
    int* o = table.owned[level];
    for (int n = k + 1; n < table.count[level]; ++n) {
        v[n - 1] = v[n];
        o[n - 1] = o[n];
    }
    --table.count[level];
}

bool grow(int level) {
    const int size = 2 * table.capacity[level] + 4;
    Mm** v = static_cast<Mm**>(ak_malloc(static_cast<unsigned>(sizeof(Mm*) * size)));
    int* o = static_cast<int*>(ak_malloc(static_cast<unsigned>(sizeof(int) * size)));
    if (!v || !o) {
        ak_free(v);
        ak_free(o);
        error("Out of memory!");
        return false;
    }
    for (int k = 0; k < table.count[level]; ++k) {
        v[k] = table.vars[level][k];
        o[k] = table.owned[level][k];
    }
    ak_free(table.vars[level]);
    ak_free(table.owned[level]);
    table.vars[level] = v;
    table.owned[level] = o;
    table.capacity[level] = size;
    return true;
}

void append(Mm* m, int owned_flag, int level) {
    if (table.count[level] + 1 > table.capacity[level] && !grow(level)) return;
    const int k = table.count[level]++;
    table.vars[level][k] = m;
    table.owned[level][k] = owned_flag;
}

// A head that ends while the table still points to it from elsewhere (a level other than its own,
// or hidden behind a newer head of its name) is unlinked, so that no entry or shadow link outlives
// it.
void forget(Mm* m) {
    for (int level = 0; level < ak_scope_levels; ++level) {
        for (int k = 0; k < entries(level); ++k) {
            Mm* e = table.vars[level][k];
            if (e == m) {
                close_up(k, level);
                return;
            }
            for (; e; e = e->shadowed)
                if (e->shadowed == m) {
                    e->shadowed = m->shadowed;
                    return;
                }
        }
    }
}

// A copy of the head's value owned by the table, named by a copy of its name.
Mm* owned_copy(const Mm& m) {
    const std::size_t n = std::strlen(m.name) + 1;
    char* name = static_cast<char*>(ak_malloc(static_cast<unsigned>(n)));
    void* place = ak_malloc(sizeof(Mm));
    if (!name || !place) {
        ak_free(name);
        ak_free(place);
        error("Out of memory!");
        return nullptr;
    }
    std::memcpy(name, m.name, n);
    return new (place) Mm(m, name);
}

void destroy_owned(Mm* m) {
    const char* name = m->name;
    m->~Mm();
    ak_free(m);
    ak_free(const_cast<char*>(name));
}

}  // namespace

// ---- levels --------------------------------------------------------------------------------------

variables_scope_t::~variables_scope_t() {
    // Owned copies are freed at exit; later ends of named heads no longer reach the table.
    ak_scope_tracking = 0;
    for (int level = 0; level < ak_scope_levels; ++level) {
        for (int k = entries(level) - 1; k >= 0; --k)
            if (owned[level][k]) scope_remove_at(k, level);
        ak_free(vars[level]);
        ak_free(owned[level]);
        vars[level] = nullptr;
        owned[level] = nullptr;
        count[level] = capacity[level] = 0;
    }
}

void variables_scope_t::begin() {
    ++depth;
    if (depth >= ak_scope_levels) {
        error("Call stack too deep");
        return;
    }
    count[depth] = 0;
}

void variables_scope_t::end() {
    if (depth < 0) return;
    if (valid_level(depth)) {
        for (int k = entries(depth) - 1; k >= 0; --k) scope_remove_at(k, depth);
        count[depth] = 0;
    }
    --depth;
}

void variables_scope_t::reset() {
    while (depth > 1) end();
}

// ---- entries -------------------------------------------------------------------------------------

int scope_level(const Mm& m) { return m.flags.global ? 0 : table.depth; }

int scope_find(const char* name, int level) {
    if (!name) return -1;
    for (int k = 0; k < entries(level); ++k) {
        const char* n = table.vars[level][k]->name;
        if (n && std::strcmp(n, name) == 0) return k;
    }
    return -1;
}

Mm* scope_lookup(const char* name, int level) {
    if (!name) return nullptr;
    int k = scope_find(name, level);
    if (k < 0) {
        char suffixed[1024];
        if (std::strlen(name) + 2 > sizeof suffixed) return nullptr;
        std::strcpy(suffixed, name);
        std::strcat(suffixed, "_");
        k = scope_find(suffixed, level);
    }
    return k < 0 ? nullptr : table.vars[level][k];
}

Mm* scope_entry(int k, int level) {
    if (k < 0 || k >= entries(level)) {
        error("variable_scope: index out of range");
        return nullptr;
    }
    return table.vars[level][k];
}

Mm* scope_entry(int k) { return scope_entry(k, table.depth); }

const char* scope_entry_name(int k, int level) {
    Mm* m = scope_entry(k, level);
    return m ? m->name : nullptr;
}

const char* scope_entry_name(int k) { return scope_entry_name(k, table.depth); }

void scope_add(Mm* m, int owned_flag) {
    if (!m->name) return;
    const int level = scope_level(*m);
    m->flags.workspace_var = level < 2;
    if (!valid_level(level)) return;
    // The table links a variable to the one it hides through `shadowed`, the word in which a 1x1
    // value may be held: such a value moves to a block first (copying the head does that).
    if (m->holds_value()) Mm spill(*m);
    const int k = scope_find(m->name, level);
    if (k >= 0) {
        Mm* existing = table.vars[level][k];
        if (existing == m) return;
        *m = *existing;
        if (!table.owned[level][k]) {
            m->shadowed = existing;
            table.vars[level][k] = m;
            table.owned[level][k] = owned_flag;
            return;
        }
        scope_remove_at(k, level);
    }
    append(m, owned_flag, level);
}

void scope_drop(Mm* m) {
    const int level = scope_level(*m);
    const int k = m->name ? scope_find(m->name, level) : -1;
    if (k < 0 || table.vars[level][k] != m) {
        forget(m);
        return;
    }
    if (Mm* outer = m->shadowed) {
        *outer = *m;
        table.vars[level][k] = outer;
        table.owned[level][k] = 0;
        m->shadowed = nullptr;
    } else if (!m->flags.workspace_var) {
        close_up(k, level);
    } else if (Mm* copy = owned_copy(*m)) {
        table.vars[level][k] = copy;
        table.owned[level][k] = 1;
    } else {
        close_up(k, level);
    }
}

void scope_remove_at(int k, int level) {
    if (k < 0 || k >= entries(level)) return;
    Mm* m = table.vars[level][k];
    const int was_owned = table.owned[level][k];
    // Closed up before the owned head is destroyed, so its end finds no entry to act on.
    close_up(k, level);
    if (was_owned) destroy_owned(m);
}

// ---- hooks of Mm ---------------------------------------------------------------------------------

void ak_scope_register(Mm* m) { scope_add(m, 0); }

void ak_scope_unregister(Mm* m) { scope_drop(m); }
