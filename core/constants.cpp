// The exported constant objects, constructed in this order, and the library's lifetime object,
// which is constructed after them (same translation unit, so the order is guaranteed).
#include <cmath>
#include <cstdint>
#include <cstring>
#include <initializer_list>

#include "arklib/matrix.h"
#include "core/matrix_internal.h"
#include "core/startup.h"

i_o_t i_o;

const char* ak_colon_name = nullptr;
const char* ak_semi_name = nullptr;
const char* ak_lM_name = nullptr;

Mm nothing(i_o, "nothing", 0);
Mm TICTOC(i_o, "TICTOC", 0);
Mm ans(i_o, "ans", 0);
Mm i(i_o, "i", 0);
Mm j(i_o, "j", 0);
Mm pi(i_o, "pi", 0);
Mm Inf(i_o, "Inf", 0);
Mm NaN(i_o, "NaN", 0);
Mm eps(i_o, "eps", 0);
Mm x_M(i_o, "x_M", 0);
Mm semi(i_o, ";", 0);
Mm c_p(i_o, ":", 0);
Mm nop_M(i_o, "[]", 0);
Mm one_M(i_o, "1", 0);
Mm zero_M(i_o, "0", 0);
Mm l_M(i_o, "l_M", 0);
Mm page_screen_output(i_o, "page_screen_output", 0);
Mm implicit_str_to_num_ok(i_o, "implicit_str_to_num_ok", 0);
Mm empty_list_elements_ok(i_o, "empty_list_elements_ok", 0);
Mm switchvar(i_o, "switchvar", 0);

static const double eps_value = std::ldexp(1.0, -52);

namespace {

double from_bits(std::uint64_t bits) {
    double d;
    std::memcpy(&d, &bits, sizeof d);
    return d;
}

}  // namespace

namespace ak_internal {

void init_const() {
    if (!ans.pr) return;  // called before the constants exist
    Mm empty;
    for (Mm* m : {&ans, &l_M, &semi, &c_p, &nop_M, &page_screen_output, &implicit_str_to_num_ok,
                  &empty_list_elements_ok})
        *m = empty;
    x_M = Mm(0, 0, 0, 0, 0, ak_double);
    TICTOC = Mm(0.0);
    Mm unit(1, 0, 0, 1, 1, ak_double);
    *unit.addr() = 0.0;
    *unit.addi() = 1.0;
    i = unit;
    j = i;
    NaN = Mm(from_bits(0x7FFFFFFFFFFFFFFFull));
    Inf = Mm(from_bits(0x7FF0000000000000ull));
    pi = Mm(from_bits(0x400921FB54442D18ull));
    eps = Mm(eps_value);
    zero_M = Mm(0.0);
    one_M = Mm(1.0);
    ak_lM_name = l_M.name;
    ak_semi_name = semi.name;
    ak_colon_name = c_p.name;
}

}  // namespace ak_internal

// Built last among the library's static objects.
library_lifetime ak_lifetime;
