// Cells, structures and user classes, and the conversion functions of the language.
//
// Cells, structures and objects are all matrices of type ak_mm:
//   cell array       fields null
//   structure array  fields set, classid 0; element k is a 1 x nfields cell of field values
//   object           fields set, classid above 0 (a registered user class)
#pragma once
#include "arklib/matrix.h"

// ---- user classes ----------------------------------------------------------------------------------
// A compiled class method has one of four shapes.
typedef Mm (*ak_method1_t)(Mm);
typedef Mm (*ak_method2_t)(Mm, Mm);
typedef Mm (*ak_method3_t)(Mm, Mm, Mm);
typedef Mm (*ak_method_io_t)(Mm, Mm, i_o_t, Mm&, Mm&);

// Limits of the registry, and the size of the text buffers that class and field names pass through
// (so 39 characters count).
constexpr int ak_max_classes = 32;
constexpr int ak_max_class_methods = 128;
constexpr int ak_class_name_size = 40;

// One method slot: the name pointer is stored as given (a literal of the translated code), null for
// a free slot. `shape` (1, 2, 3, or 4 for the i_o form) records how `fn` is to be called.
struct class_method {
    const char* name;
    void (*fn)();
    int shape;
};
struct class_record {
    char name[ak_class_name_size];
    class_method methods[ak_max_class_methods];
};
struct class_table_t {
    class_record rows[ak_max_classes];
    int count;  // rows in use; a row is never freed
};
// The registry of user classes. A classid is the row number + 1, so that 0 means no class.
extern class_table_t class_table;

// Finds or adds the class, then adds the method (or replaces the function of an existing one).
// Returns the method's slot, or -1 when it could not be stored.
int register_class_function(const char* cls, const char* name, ak_method1_t fn);
int register_class_function(const char* cls, const char* name, ak_method2_t fn);
int register_class_function(const char* cls, const char* name, ak_method3_t fn);
int register_class_function(const char* cls, const char* name, ak_method_io_t fn);
void unregister_class_function(const char* cls, const char* name);
// 1 when the class has the method.
int is_class_function(const char* cls, const char* name);

// Calls method `name` of the class of the first argument that has a field table (the last argument
// when none has). The method gets the arguments by value. A method registered with fewer inputs than
// the call gives receives the leading ones; one with more receives empty matrices for the rest.
Mm call_class_function(const char* name, const Mm& a);
Mm call_class_function(const char* name, const Mm& a, const Mm& b);
Mm call_class_function(const char* name, const Mm& a, const Mm& b, const Mm& c);
Mm call_class_function(const char* name, const Mm& a, const Mm& b, i_o_t, Mm& out1, Mm& out2);

// The classid of a class name, adding the class when it is new.
int class_id_of_name(const char* name);
// The name of a classid, or null (with an error) for an id not in use.
const char* class_name_of_id(int id);
// The class word of a value: "char", "sparse", "struct", the class name of an object, "cell",
// "uint8" or "double", tested in that order.
const char* class_name_of(const Mm& m);

// ---- class and conversion functions of the language ---------------------------------------------------
Mm mclass(const Mm& x);                  // class(x): the class word as a string
Mm mclass(const Mm& x, const Mm& name);  // class(s, name): s made an object of class name
Mm isa(const Mm& x, const Mm& name);
Mm mdouble(const Mm& x);
Mm muint8(const Mm& x);
Mm muint16(const Mm& x);
Mm mchar(const Mm& x);
Mm mlogical(const Mm& x);

// ---- cells ---------------------------------------------------------------------------------------------
Mm cell(const Mm& n);
Mm cell(const Mm& m, const Mm& n);
Mm cell(const Mm& m, const Mm& n, const Mm& p);
Mm cell(const Mm& m, const Mm& n, const Mm& p, const Mm& q);
Mm cells(const Mm& n);
Mm cells(const Mm& m, const Mm& n);
Mm cells(const Mm& m, const Mm& n, const Mm& p);
Mm cells(const Mm& m, const Mm& n, const Mm& p, const Mm& q);
// An n x 1 cell whose element k shares the value of *list[k-1].
Mm cell_from_array(int n, const Mm** list);
Mm cellstr(const Mm& x);
Mm iscellstr(const Mm& x);

// ---- structures ----------------------------------------------------------------------------------------
Mm cell2struct(const Mm& x);
Mm cell2struct(const Mm& x, const Mm& fields);
Mm cell2struct(const Mm& x, const Mm& fields, const Mm& dim);
Mm struct2cell(const Mm& s);
// struct(name1, value1, ...): the arguments come as one cell list.
Mm mstruct(const Mm& list);
Mm fieldnames(const Mm& s);
Mm isfield(const Mm& s, const Mm& name);
// getfield(s, keys): keys is the list of keys (a cell of them, or one key): a string reads a member,
// a cell is the subscript list of an index read.
Mm getfield(const Mm& s);
Mm getfield(const Mm& s, const Mm& keys);
// setfield(s, key, value): s with the member named by a string key, or the elements picked by a cell
// of subscripts, set to value.
Mm setfield(const Mm& s);
Mm setfield(const Mm& s, const Mm& key);
Mm setfield(const Mm& s, const Mm& key, const Mm& value);
Mm rmfield(const Mm& s);
Mm rmfield(const Mm& s, const Mm& names);
