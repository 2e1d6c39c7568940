// The host hooks and their defaults.
#include "arklib/hooks.h"

#include <cstdlib>
#include <cstring>
#include <string>

namespace {

int run_commands(const char* command) {
    std::string text = command ? command : "";
    char* save = nullptr;
    for (char* part = strtok_r(text.data(), ";\n", &save); part; part = strtok_r(nullptr, ";\n", &save))
        if (std::system(part) == -1) return -1;
    return 0;
}

}  // namespace

int (*eval_func)(const char*) = nullptr;
void* mpath_pointer = nullptr;
int (*system_hook)(const char*) = run_commands;
