// What the library does for a module: messages, and calls back into the program by name.
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <vector>

#include "arklib/cells.h"
#include "arklib/eval.h"
#include "arklib/mex_modules.h"
#include "arklib/scope.h"
#include "runtime/mex/mex_internal.h"

using ak_mex::new_array;

namespace {

// The text of a printf-style format; longer than the buffer, it takes a block of its own.
struct formatted {
    char small[2048];
    std::vector<char> large;
    const char* text = small;
    int length = 0;

    formatted(const char* format, va_list args) {
        va_list again;
        va_copy(again, args);
        length = std::vsnprintf(small, sizeof small, format, args);
        if (length >= static_cast<int>(sizeof small)) {
            large.resize(static_cast<size_t>(length) + 1);
            std::vsnprintf(large.data(), large.size(), format, again);
            text = large.data();
        } else if (length < 0) {
            small[0] = 0;
        }
        va_end(again);
    }
};

// The error leaves the module even when the error handler returns: code after mexErrMsgTxt was
// never written to run.
[[noreturn]] void leave_module() { throw ak_mex::module_abort{}; }

void module_error(const char* text) {
    error("%s", text ? text : "");
    if (ak_mex::in_call()) leave_module();
}

// The scope level of a workspace word, -1 for an unknown word.
int workspace_level(const char* workspace) {
    if (!workspace) return -1;
    if (std::strcmp(workspace, "global") == 0) return 0;
    if (std::strcmp(workspace, "base") == 0) return 1;
    if (std::strcmp(workspace, "caller") == 0) return variables_scope.depth;
    return -1;
}

Mm* variable(const char* function, const char* workspace, const char* name) {
    const int level = workspace_level(workspace);
    if (level < 0) {
        error("%s: workspace must be \"base\", \"caller\" or \"global\", not \"%s\"", function,
              workspace ? workspace : "");
        return nullptr;
    }
    return name ? scope_lookup(name, level) : nullptr;
}

}  // namespace

// ---- messages ------------------------------------------------------------------------------------

void mexErrMsgTxt(const char* text) { module_error(text); }

void mexErrMsgIdAndTxt(const char*, const char* format, ...) {
    va_list args;
    va_start(args, format);
    formatted f(format, args);
    va_end(args);
    module_error(f.text);
}

void mexWarnMsgTxt(const char* text) { warning("%s", text ? text : ""); }

void mexWarnMsgIdAndTxt(const char*, const char* format, ...) {
    va_list args;
    va_start(args, format);
    formatted f(format, args);
    va_end(args);
    warning("%s", f.text);
}

int mexPrintf(const char* format, ...) {
    if (!format) return 0;
    va_list args;
    va_start(args, format);
    formatted f(format, args);
    va_end(args);
    ak_printf("%s", f.text);
    return f.length;
}

void mexPrintAssertion(const char* test, const char* file, int line, const char* message) {
    ak_printf("%s:%d - test '%s' failed - %s\n", file, line, test, message);
}

void mexAddFlops(int) {}

void mxAssert(int test, const char* message) {
    if (!test) error("%s", message ? message : "");
}

const char* mexFunctionName(void) { return current_mex; }

// ---- calls back into the program -----------------------------------------------------------------

int mexCallMATLAB(int nlhs, mxArray* plhs[], int nrhs, mxArray* prhs[], const char* name) {
    const Mm& first = nrhs > 0 && prhs[0] ? *prhs[0] : x_M;
    if (std::strcmp(name, "double") == 0) {
        if (nlhs >= 1) plhs[0] = new_array(mdouble(first));
        return 0;
    }
    if (std::strcmp(name, "uint8") == 0) {
        if (nlhs >= 1) plhs[0] = new_array(muint8(first));
        return 0;
    }
    if (std::strcmp(name, "version") == 0) {
        if (nlhs >= 1) plhs[0] = new_array(version());
        return 0;
    }
    const Mm args = cell_from_array(nrhs > 0 ? nrhs : 0, const_cast<const Mm**>(prhs));
    const int nout = nlhs < 1 ? 1 : (nlhs > 6 ? 6 : nlhs);
    Mm outs[6];
    feval_call(TM(name), args, nout, outs);
    for (int k = 0; k < nlhs && k < 6; ++k) plhs[k] = new_array(outs[k]);
    return 0;
}

// ---- variables -----------------------------------------------------------------------------------

mxArray* mexGetVariable(const char* workspace, const char* name) {
    const Mm* m = variable("mexGetVariable", workspace, name);
    return m ? new_array(*m) : nullptr;
}

const mxArray* mexGetVariablePtr(const char* workspace, const char* name) {
    return variable("mexGetVariablePtr", workspace, name);
}

int mexPutVariable(const char* workspace, const char* name, const mxArray* value) {
    Mm* m = variable("mexPutVariable", workspace, name);
    if (!m || !value) return 1;
    *m = *value;
    return 0;
}
