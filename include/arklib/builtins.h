// The table of functions by name: how feval, the ODE solvers, the optimisers, mex call-backs and
// graphics callbacks reach a function of the language, or one of the program's own.
//
// A row is a name and its forms. A form is one overload of the family, found from its type: the
// inputs before the i_o marker and the output references after it. A library file adds its rows
// next to the functions they name:
//
//     AK_BUILTIN("sum", AK_FN(sum, const Mm&), AK_FN(sum, const Mm&, const Mm&));
//     AK_BUILTIN("max", AK_FN(max, const Mm&), AK_FN(max, const Mm&, i_o_t, Mm&));
//     AK_BUILTIN("trace", trace);              // a function with one overload needs no AK_FN
//     AK_BUILTIN("sort", AK_FN_REFS(sort, const Mm&, i_o_t, Mm&, Mm&));  // [y, i] = sort(x, i_o, y, i)
//
// A program registers its own functions the same way, at any time:
//
//     Mm myfun(const Mm& t, const Mm& y) { ... }
//     ak_register_function("myfun", myfun);
//
// and installs the ready feval hook with ak_use_builtin_feval().
#pragma once
#include <cstddef>
#include <type_traits>
#include <utility>
#include "arklib/matrix.h"

// A form called with its inputs in in[0..nin-1] and its outputs in out[0..nout-1].
typedef void (*ak_form_thunk_t)(void (*fn)(), const Mm* in, Mm* out);
// A form that takes any number of inputs and outputs (for functions with variable argument lists).
typedef void (*ak_varargs_fn_t)(int nin, const Mm* in, int nout, Mm* out);

// Adds one form to the row of name (made if new). A form with the same counts replaces the old
// one, so a program may override a library function. family names the group the row belongs to
// in the function list (the library passes its source file; a program may pass null).
void ak_register_form(const char* name, const char* family, int nin, int nout, void (*fn)(),
                      ak_form_thunk_t thunk);
void ak_register_varargs(const char* name, const char* family, ak_varargs_fn_t fn);
// Removes the row of name. Returns 1 if there was one.
int ak_unregister_function(const char* name);
// 1 if a row of that name exists.
int ak_function_exists(const char* name);
// Calls name with nin inputs and nout outputs (nout >= 1 gives at least the first output). The
// form with exactly nin inputs and the fewest outputs not below nout is used; extra outputs are
// dropped. Reports through error, and returns 0, when the name is unknown or no form fits; 1 when
// the function was called.
int ak_call_function(const char* name, int nin, const Mm* in, int nout, Mm* out);
// The same with the name as a string matrix, and the inputs as a cell list (a non-cell is one
// input). Gives the first output.
Mm ak_call_function(const Mm& name, const Mm& args, int nout, Mm* out);

// The ready feval hook over the table: args is the cell of inputs; outputs 1 to 6 go to out1 to
// out6, as many as nargout_val asks (at least one); the first is also returned.
Mm ak_builtin_feval(Mm name, Mm args, i_o_t, Mm& out1, Mm& out2, Mm& out3, Mm& out4, Mm& out5,
                    Mm& out6);
// Makes ak_builtin_feval the program's feval hook.
void ak_use_builtin_feval();

// One row of the function list: its name, family and the (inputs, outputs) counts of its forms
// (-1, -1 for a variable argument list). Rows come sorted by name.
struct ak_function_info_t {
    const char* name;
    const char* family;
    int nforms;
    const int (*forms)[2];
};
// Number of rows; fills at most max rows into list when list is not null.
int ak_function_list(ak_function_info_t* list, int max);

// ---- forms from overload types ---------------------------------------------------------------------
namespace ak_builtin_detail {

// Position of i_o_t in the parameter list, or its length when there is none.
template <class... A>
constexpr std::size_t marker_position() {
    constexpr bool is_marker[] = {std::is_same_v<std::decay_t<A>, i_o_t>..., true};
    std::size_t k = 0;
    while (!is_marker[k]) ++k;
    return k;
}

// Argument I of a call: an input before the marker, the marker, then output I - nin - SHIFT.
template <std::size_t I, std::size_t NIN, std::size_t SHIFT = 0>
decltype(auto) argument(const Mm* in, Mm* out) {
    if constexpr (I < NIN) {
        return static_cast<const Mm&>(in[I]);
    } else if constexpr (I == NIN) {
        return i_o_t{};
    } else {
        return static_cast<Mm&>(out[I - NIN - SHIFT]);
    }
}

template <class... A, std::size_t... I>
void call_form(Mm (*f)(A...), [[maybe_unused]] const Mm* in, Mm* out, std::index_sequence<I...>) {
    [[maybe_unused]] constexpr std::size_t nin = marker_position<A...>();
    out[0] = f(argument<I, nin>(in, out)...);
}

template <class... A>
void thunk(void (*fn)(), const Mm* in, Mm* out) {
    call_form(reinterpret_cast<Mm (*)(A...)>(fn), in, out, std::index_sequence_for<A...>{});
}

// A form whose references carry all of its outputs, the first included: [y, i] = sort(x) is
// sort(x, i_o, y, i). Its return value is not one of them.
template <class F>
struct refs_form {
    F fn;
};

template <class... A, std::size_t... I>
void call_refs(Mm (*f)(A...), [[maybe_unused]] const Mm* in, Mm* out, std::index_sequence<I...>) {
    constexpr std::size_t nin = marker_position<A...>();
    f(argument<I, nin, 1>(in, out)...);
}

template <class... A>
void thunk_refs(void (*fn)(), const Mm* in, Mm* out) {
    call_refs(reinterpret_cast<Mm (*)(A...)>(fn), in, out, std::index_sequence_for<A...>{});
}

template <class... A>
void add_form(const char* name, const char* family, refs_form<Mm (*)(A...)> f) {
    constexpr std::size_t nin = marker_position<A...>();
    static_assert(nin < sizeof...(A), "a form of output references has the i_o marker");
    ak_register_form(name, family, static_cast<int>(nin), static_cast<int>(sizeof...(A) - nin - 1),
                     reinterpret_cast<void (*)()>(f.fn), &thunk_refs<A...>);
}

template <class... A>
void add_form(const char* name, const char* family, Mm (*f)(A...)) {
    [[maybe_unused]] constexpr std::size_t nin = marker_position<A...>();
    constexpr std::size_t nout = nin == sizeof...(A) ? 1 : sizeof...(A) - nin;
    static_assert(((std::is_same_v<std::decay_t<A>, Mm> || std::is_same_v<std::decay_t<A>, i_o_t>) && ...),
                  "a registered form takes Mm inputs, the i_o marker and Mm& outputs only");
    ak_register_form(name, family, static_cast<int>(nin), static_cast<int>(nout),
                     reinterpret_cast<void (*)()>(f), &thunk<A...>);
}

inline void add_form(const char* name, const char* family, ak_varargs_fn_t f) {
    ak_register_varargs(name, family, f);
}

template <class... F>
int add_row(const char* name, const char* family, F... forms) {
    (add_form(name, family, forms), ...);
    return 0;
}

}  // namespace ak_builtin_detail

// Registers one or more overloads (function pointers) under name.
template <class... F>
void ak_register_function(const char* name, F... forms) {
    ak_builtin_detail::add_row(name, nullptr, forms...);
}

// One overload of an overloaded function, chosen by its parameter list.
#define AK_FN(f, ...) static_cast<Mm (*)(__VA_ARGS__)>(&f)
// The same for a form whose references after i_o are all of its outputs (see refs_form).
#define AK_FN_REFS(f, ...) \
    ak_builtin_detail::refs_form<Mm (*)(__VA_ARGS__)> { AK_FN(f, __VA_ARGS__) }
#define AK_BUILTIN_CAT2(a, b) a##b
#define AK_BUILTIN_CAT(a, b) AK_BUILTIN_CAT2(a, b)
// A row of the library's table, registered when the library loads.
#define AK_BUILTIN(name, ...)                                                                        \
    static const int AK_BUILTIN_CAT(ak_builtin_row_, __LINE__) [[maybe_unused]] =                   \
        ak_builtin_detail::add_row(name, __FILE__, __VA_ARGS__)
