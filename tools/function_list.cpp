// Prints the list of the language's functions that the library exports, by family, as Markdown:
//   build/tools/function_list > docs/functions.md
// The list is read from the table of functions by name, so it holds exactly what feval can reach.
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "arklib.h"

int main() {
    initM();
    const int n = ak_function_list(nullptr, 0);
    std::vector<ak_function_info_t> rows(n);
    ak_function_list(rows.data(), n);
    std::map<std::string, std::vector<const ak_function_info_t*>> families;
    for (const ak_function_info_t& r : rows) families[r.family].push_back(&r);
    std::printf("# Functions of the language in arklib\n\n");
    std::printf("%d functions, grouped by the source file that defines them. Each can be called by name\n", n);
    std::printf("through `feval` and the numerical methods. The forms give (inputs, outputs) for each\n");
    std::printf("overload; `any` is a variable argument list. Made by `build/tools/function_list`.\n\n");
    for (const auto& [family, list] : families) {
        std::printf("## %s\n\n| Function | Forms |\n| --- | --- |\n", family.c_str());
        for (const ak_function_info_t* r : list) {
            std::string forms;
            for (int k = 0; k < r->nforms; ++k) {
                if (k) forms += ", ";
                if (r->forms[k][0] < 0)
                    forms += "any";
                else
                    forms += "(" + std::to_string(r->forms[k][0]) + ", " + std::to_string(r->forms[k][1]) + ")";
            }
            std::printf("| `%s` | %s |\n", r->name, forms.c_str());
        }
        std::printf("\n");
    }
    exitM();
    return 0;
}
