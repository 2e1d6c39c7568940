// The user class registry, method calls by name, the class word and the conversion functions.
#include <cmath>
#include <cstdio>
#include <memory>
#include <string>

#include "arklib.h"
#include "cells_test_support.h"
#include "test_support.h"

using namespace cells_test;

namespace {

// The registry is global and never shrinks: tests that fill it put the old contents back.
struct SavedClassTable {
    std::unique_ptr<class_table_t> saved{new class_table_t(class_table)};
    ~SavedClassTable() { class_table = *saved; }
};

// The balance of an account object, or the value of a plain number.
double account_balance(const Mm& x) { return x.fields ? num(field(x, 1, "balance")) : num(x); }

Mm account(double value, const char* cls = "account") {
    return mclass(mstruct(cell_row({TM("balance"), Mm(value)})), TM(cls));
}

Mm account_plus(Mm a, Mm b) { return Mm(account_balance(a) + account_balance(b)); }
Mm account_minus(Mm a, Mm b) { return Mm(account_balance(a) - account_balance(b)); }
Mm account_double(Mm a) { return Mm(account_balance(a)); }
Mm account_uminus(Mm a) { return Mm(-account_balance(a)); }
Mm ten(Mm) { return Mm(10.0); }
Mm twenty(Mm) { return Mm(20.0); }
// Counts how many of its inputs are empty, to see what a short call passes.
Mm count_empty(Mm a, Mm b, Mm c) { return Mm((a.size() == 0) + (b.size() == 0) + (c.size() == 0)); }
Mm split(Mm a, Mm b, i_o_t, Mm& low, Mm& high) {
    low = Mm(std::fmin(account_balance(a), account_balance(b)));
    high = Mm(std::fmax(account_balance(a), account_balance(b)));
    return Mm(1.0);
}

}  // namespace

TEST(ClassRegistry, RegisterCallReplaceAndUnregister) {
    SavedClassTable saved;
    EXPECT_EQ(register_class_function("account", "plus", account_plus), 0);
    EXPECT_EQ(register_class_function("account", "double", account_double), 1);
    int id = class_id_of_name("account");
    EXPECT_STREQ(class_name_of_id(id), "account");
    EXPECT_EQ(is_class_function("nosuchclass", "plus"), 0);

    Mm a = account(5.0);
    EXPECT_EQ(a.classid, id);
    // The class of the first operand with a field table is the one called.
    EXPECT_EQ(num(call_class_function("plus", Mm(2.0), a)), 7.0);

    // Registering the same name again replaces the function in the same slot.
    EXPECT_EQ(register_class_function("account", "plus", account_minus), 0);
    EXPECT_EQ(num(call_class_function("plus", a, Mm(2.0))), 3.0);

    unregister_class_function("account", "plus");
    EXPECT_EQ(is_class_function("account", "plus"), 0);
    EXPECT_ERROR(unregister_class_function("account", "plus"), "del: no function plus in class account");
    EXPECT_ERROR(call_class_function("plus", a, Mm(2.0)), "class account has no method named plus");
    // The freed slot is the first taken by the next new method.
    EXPECT_EQ(register_class_function("account", "minus", account_minus), 0);

    EXPECT_ERROR(class_name_of_id(0), "[]:wrong classid");
    EXPECT_ERROR(class_name_of_id(class_table.count + 1), "[]:wrong classid");
    // Class names count 39 characters: a longer name finds the same row.
    std::string long_name(50, 'q');
    int long_id = class_id_of_name(long_name.c_str());
    EXPECT_EQ(std::string(class_name_of_id(long_id)), std::string(39, 'q'));
    EXPECT_EQ(class_id_of_name(std::string(45, 'q').c_str()), long_id);
}

TEST(ClassRegistry, LimitsOfClassesAndMethods) {
    SavedClassTable saved;
    ak_test::ErrorsThrow errors;
    class_table.count = 0;
    char names[ak_max_classes][16];
    for (int k = 0; k < ak_max_classes; ++k) {
        std::snprintf(names[k], sizeof names[k], "class%d", k);
        class_id_of_name(names[k]);
    }
    EXPECT_EQ(class_id_of_name("class31"), ak_max_classes);
    EXPECT_ERROR(class_id_of_name("one_too_many"), "too many classes");
    // A returning handler sees the 33rd class share the last row.
    {
        ak_test::Recorder rec(ak_test::Recorder::kErrors);
        EXPECT_EQ(class_id_of_name("one_too_many"), ak_max_classes);
        EXPECT_EQ(rec.errors.size(), 1u);
        register_class_function("one_too_many", "tell", ten);
    }
    EXPECT_EQ(is_class_function("class31", "tell"), 1);
    EXPECT_EQ(class_table.count, ak_max_classes);

    static char method_names[ak_max_class_methods + 1][16];
    for (int k = 0; k < ak_max_class_methods; ++k) {
        std::snprintf(method_names[k], sizeof method_names[k], "m%d", k);
        register_class_function("class0", method_names[k], ten);
    }
    std::snprintf(method_names[ak_max_class_methods], 16, "m%d", ak_max_class_methods);
    EXPECT_ERROR(register_class_function("class0", method_names[ak_max_class_methods], ten),
                 "too many class functions");
    // An existing method can still be replaced when the row is full.
    EXPECT_EQ(register_class_function("class0", "m5", twenty), 5);
    Mm obj = mclass(mstruct(cell_row({TM("x"), Mm(1.0)})), TM("class0"));
    EXPECT_EQ(num(call_class_function("m5", obj)), 20.0);
}

TEST(ClassRegistry, CallsAdaptToTheRegisteredShape) {
    SavedClassTable saved;
    register_class_function("shapes", "one", twenty);
    register_class_function("shapes", "three", count_empty);
    register_class_function("shapes", "split", split);
    Mm obj = account(3.0, "shapes");
    // A one-input method called with two gets the first.
    EXPECT_EQ(num(call_class_function("one", obj, Mm(1.0))), 20.0);
    // A three-input method called with one gets empty matrices for the other two.
    EXPECT_EQ(num(call_class_function("three", obj)), 2.0);
    // The output form reaches the outputs; an output method called without them still runs.
    Mm low, high;
    EXPECT_EQ(num(call_class_function("split", obj, Mm(9.0), i_o, low, high)), 1.0);
    EXPECT_EQ(num(low), 3.0);
    EXPECT_EQ(num(high), 9.0);
    EXPECT_EQ(num(call_class_function("split", Mm(1.0), obj)), 1.0);
    // With no operand holding fields the last one names the class.
    EXPECT_ERROR(call_class_function("one", Mm(1.0), Mm(2.0), Mm(3.0)),
                 "class double has no method named one");
    EXPECT_EQ(num(call_class_function("one", Mm(1.0), Mm(2.0), obj)), 20.0);
}

TEST(ClassWord, EveryKindOfValue) {
    SavedClassTable saved;
    Mm obj = account(1.0, "wordclass");
    Mm sp = sparse(row({0, 2, 0}));
    Mm s = mstruct(cell_row({TM("a"), Mm(1.0)}));
    EXPECT_STREQ(class_name_of(sp), "sparse");
    EXPECT_STREQ(class_name_of(s), "struct");
    EXPECT_STREQ(class_name_of(obj), "wordclass");
    EXPECT_STREQ(class_name_of(muint8(row({1, 2}))), "uint8");
    EXPECT_STREQ(class_name_of(mlogical(Mm(1.0))), "double");
    EXPECT_TRUE(mclass(obj).isstr());
    EXPECT_EQ(num(isa(sp, TM("double"))), 1.0);
    EXPECT_EQ(num(isa(obj, TM("struct"))), 0.0);
    EXPECT_TRUE(isa(s, TM("struct")).islogical());
}

TEST(Conversions, DoubleUint8LogicalChar) {
    SavedClassTable saved;
    Mm text = TM("Az");
    EXPECT_FALSE(mdouble(text).isstr());
    EXPECT_TRUE(text.isstr());  // the argument is left alone

    Mm b = muint8(row({300.7, -1, 65.9}));
    ASSERT_EQ(b.gettype(), ak_uchar);
    EXPECT_EQ(b.ur(1), 44);  // truncated, low byte kept
    EXPECT_EQ(b.ur(2), 255);
    EXPECT_EQ(muint8(b).pr, b.pr);  // already bytes: the same storage

    EXPECT_FALSE(mdouble(sparse(row({0, 4}))).issparse());
    Mm l = mlogical(row({0, 2}));
    EXPECT_TRUE(l.islogical());
    EXPECT_EQ(l.addr()[1], 2.0);  // values untouched
    Mm c(1, 0, 0, 1, 1, ak_double);
    EXPECT_ERROR(mlogical(c), "logical: argument is complex");
    EXPECT_TRUE(mchar(row({72, 105})).isstr());
    EXPECT_ERROR(muint16(Mm(1.0)), "uint16 is not yet implemented");
    EXPECT_ERROR(mdouble(cell_row({Mm(1.0)})), "Can not convert (temporary) into a numeric matrix");

    // An object converts through its class's "double" method.
    register_class_function("convclass", "double", account_double);
    EXPECT_EQ(num(mdouble(account(8.0, "convclass"))), 8.0);
    EXPECT_ERROR(mdouble(account(8.0, "noconv")), "class noconv has no method named double");
}

namespace {

// obj(k) reads k times the balance; obj.name reads the length of the member name. The descriptor
// is {type, subs}.
Mm account_subsref(Mm obj, Mm s) {
    Mm type = field(s, 1, "type");
    Mm subs = field(s, 1, "subs");
    if (str(type) == "()") return Mm(account_balance(obj) * num(at(subs, 1)));
    if (str(type) == ".") return Mm(static_cast<double>(str(subs).size()));
    return Mm(-1.0);
}

// obj(k) = v makes the balance k * v; obj.name = v makes it v + 1000.
Mm account_subsasgn(Mm obj, Mm s, Mm v) {
    Mm subs = field(s, 1, "subs");
    double value = str(field(s, 1, "type")) == "()" ? num(at(subs, 1)) * num(v) : num(v) + 1000.0;
    return account(value, class_name_of(obj));
}

}  // namespace

TEST(UserClass, OperatorsReachTheClassThroughTheEngine) {
    SavedClassTable saved;
    register_class_function("engacct", "plus", account_plus);
    register_class_function("engacct", "uminus", account_uminus);
    Mm a = account(5.0, "engacct");
    EXPECT_EQ(num(Mm(2.0) + a), 7.0);
    EXPECT_EQ(num(-a), -5.0);
    EXPECT_ERROR(a - Mm(1.0), "class engacct has no method named minus");
    // A structure that is not an object has no class to go to.
    Mm s = mstruct(cell_row({TM("balance"), Mm(1.0)}));
    EXPECT_ERROR(s + Mm(1.0), "class struct has no method named plus");
}

TEST(UserClass, SubscriptsAndAssignmentsReachTheClass) {
    SavedClassTable saved;
    Mm plain = account(4.0, "nosubsref");
    // Without a subsref method an object reads like its storage.
    EXPECT_EQ(num(Mm(plain.member("balance"))), 4.0);

    register_class_function("refacct", "subsref", account_subsref);
    Mm a = account(4.0, "refacct");
    EXPECT_EQ(num(Mm(a(Mm(3.0)))), 12.0);
    EXPECT_EQ(num(Mm(a.member("balance"))), 7.0);
    EXPECT_EQ(num(subsref(a, build_subs_descriptor(a(Mm(2.0))))), 8.0);

    // An object used as an index stands for what its subsindex method gives (as the only ( )
    // subscript it would select like a cell instead).
    register_class_function("refacct", "subsindex", twenty);
    Mm v(0, 0, 0, 1, 25, ak_double);
    for (int k = 0; k < 25; ++k) v.addr()[k] = k + 1;
    EXPECT_EQ(num(Mm(v(Mm(1.0), a))), 20.0);

    // Assignments go through subsasgn; without it an object is written like its storage.
    plain.member("balance") = Mm(3.0);
    EXPECT_EQ(account_balance(plain), 3.0);
    register_class_function("asgacct", "subsasgn", account_subsasgn);
    Mm b = account(1.0, "asgacct");
    Mm before = b;
    b(Mm(3.0)) = Mm(2.0);
    EXPECT_EQ(account_balance(b), 6.0);
    b.member("balance") = Mm(5.0);
    EXPECT_EQ(account_balance(b), 1005.0);
    EXPECT_EQ(account_balance(before), 1.0);
    EXPECT_EQ(account_balance(subsasgn(before, build_subs_descriptor(before(Mm(4.0))), Mm(2.0))), 8.0);
}
