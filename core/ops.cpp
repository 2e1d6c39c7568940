// The names of the engine's operation codes and the sparse group of each.
#include <initializer_list>

#include "arklib/ops.h"
#include "core/engine_internal.h"

namespace {

const char* const names[op_count] = {
    "diff",   "del2",   "gradient", "all",     "any",   "cumprod",  "cumsum", "max_1",    "median",  "min_1",
    "prod",   "sum",    "unwrap",   "abs",     "acos",  "acosh",    "acot",   "acoth",    "acsc",    "acsch",
    "and",    "angle",  "asec",     "asech",   "asin",  "asinh",    "atan",   "atan2",    "atanh",   "beta",
    "betaln", "bitand", "bitcmp",   "bitget",  "bitor", "bitreset", "bitset", "bitshift", "bitxor",  "ceil",
    "conj",   "cos",    "cosh",     "cot",     "coth",  "csc",      "csch",   "eq",       "erfc",    "erfcx",
    "erfinv", "erf",    "exp",      "expint",  "fix",   "floor",    "gamma",  "gammainc", "gammaln", "ge",
    "gt",     "imag",   "isfinite", "isinf",   "isnan", "ldivide",  "le",     "log",      "log10",   "log2",
    "lt",     "max_2",  "minus",    "min_2",   "mod",   "mtimes",   "ne",     "not",      "or",      "plus",
    "pow2_1", "pow2_2", "power",    "rdivide", "rem",   "round",    "sec",    "sech",     "sign",    "sin",
    "sinc",   "sinh",   "sqrt",     "tan",     "tanh",  "times",    "uminus", "uplus",    "xor"};

using ak_internal::sparse_group;

struct group_table {
    sparse_group group[op_count];
    bool binary[op_count];
    group_table() : group(), binary() {
        set(ak_internal::sg_stored,
            {13, 21, 24, 25, 26, 28, 39, 40, 50, 51, 54, 55, 61, 63, 64, 85, 88, 89, 91, 92, 93, 94, 96, 97});
        set(ak_internal::sg_product, {20, 31, 75, 95});
        set(ak_internal::sg_union, {27, 34, 38, 57, 60, 70, 71, 72, 73, 78, 79, 98});
        set(ak_internal::sg_full_element,
            {0,  14, 15, 16, 17, 18, 19, 22, 23, 33, 35, 36, 37, 41, 42, 43, 44,
             45, 46, 48, 49, 52, 53, 56, 58, 62, 67, 68, 69, 77, 80, 86, 87, 90});
        set(ak_internal::sg_full_binary, {1, 2, 29, 30, 32, 47, 59, 65, 66, 74, 76, 81, 82, 83, 84});
        set(ak_internal::sg_full_reduction, {3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
        for (int op : {op_and,   op_atan2,    op_beta,    op_betaln,   op_bitand, op_bitcmp, op_bitget,
                       op_bitor, op_bitreset, op_bitset,  op_bitshift, op_bitxor, op_eq,     op_gammainc,
                       op_ge,    op_gt,       op_ldivide, op_le,       op_lt,     op_max_2,  op_minus,
                       op_min_2, op_mod,      op_mtimes,  op_ne,       op_or,     op_plus,   op_pow2_2,
                       op_power, op_rdivide,  op_rem,     op_times,    op_xor})
            binary[op] = true;
    }
    void set(sparse_group g, std::initializer_list<int> ops) {
        for (int op : ops) group[op] = g;
    }
};

const group_table& table() {
    static const group_table t;
    return t;
}

}  // namespace

const char* op_name(int op) { return (op >= 0 && op < op_count) ? names[op] : "???"; }

namespace ak_internal {

sparse_group op_sparse_group(int op) { return (op >= 0 && op < op_count) ? table().group[op] : sg_none; }

bool op_is_binary(int op) { return op >= 0 && op < op_count && table().binary[op]; }

}  // namespace ak_internal
