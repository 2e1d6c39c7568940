// The registry of user class methods, and the call of a method by name on a value.
#include <cstring>

#include "arklib/cells.h"

class_table_t class_table;

namespace {

// A class name as it is stored: cut to the 39 characters of the name buffer.
void cut_name(const char* name, char (&buffer)[ak_class_name_size]) {
    std::strncpy(buffer, name ? name : "", ak_class_name_size - 1);
    buffer[ak_class_name_size - 1] = '\0';
}

int find_class(const char* name) {
    char key[ak_class_name_size];
    cut_name(name, key);
    for (int row = 0; row < class_table.count; ++row)
        if (std::strcmp(class_table.rows[row].name, key) == 0) return row;
    return -1;
}

int find_method(int row, const char* name) {
    if (row < 0 || row >= class_table.count || !name) return -1;
    const class_method* methods = class_table.rows[row].methods;
    for (int k = 0; k < ak_max_class_methods; ++k)
        if (methods[k].name && std::strcmp(methods[k].name, name) == 0) return k;
    return -1;
}

int add_method(int row, const char* name) {
    if (row < 0 || row >= class_table.count) {
        error("add:wrong classid");
        return -1;
    }
    int k = find_method(row, name);
    if (k >= 0) return k;
    class_method* methods = class_table.rows[row].methods;
    for (k = 0; k < ak_max_class_methods; ++k) {
        if (!methods[k].name) {
            methods[k].name = name;
            methods[k].fn = nullptr;
            methods[k].shape = 0;
            return k;
        }
    }
    error("too many class functions");
    return -1;
}

int store(const char* cls, const char* name, void (*fn)(), int shape) {
    if (!name) return -1;
    int row = class_id_of_name(cls) - 1;
    int k = add_method(row, name);
    if (k < 0) return -1;
    class_table.rows[row].methods[k].fn = fn;
    class_table.rows[row].methods[k].shape = shape;
    return k;
}

// The method slot for a call on `self`, or null after reporting a missing method.
const class_method* method_for(const Mm& self, const char* name) {
    const char* cls = class_name_of(self);
    int row = find_class(cls);
    int k = find_method(row, name);
    if (k < 0) {
        error("class %s has no method named %s", cls, name ? name : "");
        return nullptr;
    }
    return &class_table.rows[row].methods[k];
}

// Calls a method with up to three inputs and two output references. Inputs the call does not give
// arrive as empty matrices; outputs it does not ask for go to scratch heads.
Mm call(const class_method* m, int nin, const Mm& a, const Mm& b, const Mm& c, Mm* out1, Mm* out2) {
    if (!m || !m->fn) return x_M;
    Mm empty, scratch1, scratch2;
    const Mm& b_in = nin >= 2 ? b : empty;
    const Mm& c_in = nin >= 3 ? c : empty;
    switch (m->shape) {
        case 1:
            return reinterpret_cast<ak_method1_t>(m->fn)(a);
        case 2:
            return reinterpret_cast<ak_method2_t>(m->fn)(a, b_in);
        case 3:
            return reinterpret_cast<ak_method3_t>(m->fn)(a, b_in, c_in);
        case 4:
            return reinterpret_cast<ak_method_io_t>(m->fn)(a, b_in, i_o, out1 ? *out1 : scratch1,
                                                           out2 ? *out2 : scratch2);
    }
    return x_M;
}

}  // namespace

int class_id_of_name(const char* name) {
    int row = find_class(name);
    if (row >= 0) return row + 1;
    if (class_table.count >= ak_max_classes) {
        error("too many classes");
        return ak_max_classes;
    }
    row = class_table.count++;
    class_record& r = class_table.rows[row];
    std::memset(&r, 0, sizeof r);
    cut_name(name, r.name);
    return row + 1;
}

const char* class_name_of_id(int id) {
    if (id - 1 < 0 || id - 1 >= class_table.count) {
        error("[]:wrong classid");
        return nullptr;
    }
    return class_table.rows[id - 1].name;
}

const char* class_name_of(const Mm& m) {
    if (m.flags.str) return "char";
    if (m.flags.sparse) return "sparse";
    if (m.fields && m.classid == 0) return "struct";
    if (m.fields) {
        const char* name = class_name_of_id(m.classid);
        return name ? name : "";
    }
    if (m.flags.type == ak_mm) return "cell";
    if (m.flags.type == ak_uchar) return "uint8";
    return "double";
}

int register_class_function(const char* cls, const char* name, ak_method1_t fn) {
    return store(cls, name, reinterpret_cast<void (*)()>(fn), 1);
}
int register_class_function(const char* cls, const char* name, ak_method2_t fn) {
    return store(cls, name, reinterpret_cast<void (*)()>(fn), 2);
}
int register_class_function(const char* cls, const char* name, ak_method3_t fn) {
    return store(cls, name, reinterpret_cast<void (*)()>(fn), 3);
}
int register_class_function(const char* cls, const char* name, ak_method_io_t fn) {
    return store(cls, name, reinterpret_cast<void (*)()>(fn), 4);
}

void unregister_class_function(const char* cls, const char* name) {
    int row = find_class(cls);
    int k = find_method(row, name);
    if (k < 0) {
        error("del: no function %s in class %s", name ? name : "", cls ? cls : "");
        return;
    }
    class_table.rows[row].methods[k] = class_method{nullptr, nullptr, 0};
}

int is_class_function(const char* cls, const char* name) { return find_method(find_class(cls), name) >= 0; }

Mm call_class_function(const char* name, const Mm& a) {
    return call(method_for(a, name), 1, a, a, a, nullptr, nullptr);
}

Mm call_class_function(const char* name, const Mm& a, const Mm& b) {
    return call(method_for(a.fields ? a : b, name), 2, a, b, b, nullptr, nullptr);
}

Mm call_class_function(const char* name, const Mm& a, const Mm& b, const Mm& c) {
    const Mm& self = a.fields ? a : b.fields ? b : c;
    return call(method_for(self, name), 3, a, b, c, nullptr, nullptr);
}

Mm call_class_function(const char* name, const Mm& a, const Mm& b, i_o_t, Mm& out1, Mm& out2) {
    return call(method_for(a.fields ? a : b, name), 2, a, b, b, &out1, &out2);
}
