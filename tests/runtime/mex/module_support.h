// Building the module sources of tests/runtime/mex/modules with the build tree's arkmex, and
// calling a module as translated code does.
#pragma once
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "tests/test_support.h"

namespace mex_test {

inline std::string work_dir() {
    static const std::string dir = [] {
        std::system(("mkdir -p '" + std::string(ARKLIB_MEX_WORK) + "'").c_str());
        return std::string(ARKLIB_MEX_WORK);
    }();
    return dir;
}

inline long modified(const std::string& file) {
    struct stat s;
    return stat(file.c_str(), &s) == 0 ? static_cast<long>(s.st_mtime) : -1;
}

// Builds modules/<source> into the work folder as <name>_matvex.so unless an up-to-date one is
// there; returns the module's path. Test programs may run side by side, so each build goes to a
// file of its own first and is then renamed into place.
inline std::string build_module(const std::string& source, const std::string& name) {
    const std::string src = std::string(ARKLIB_MEX_SOURCES) + "/" + source;
    const std::string out = work_dir() + "/" + name + "_matvex.so";
    if (modified(out) >= modified(src) && modified(out) >= modified(ARKMEX)) return out;
    const std::string part = out + "." + std::to_string(getpid());
    const std::string command = std::string(ARKMEX) + " -o '" + part + "' '" + src + "'";
    EXPECT_EQ(std::system(command.c_str()), 0) << command;
    EXPECT_EQ(std::rename(part.c_str(), out.c_str()), 0);
    return out;
}

inline std::string build_module(const std::string& source) {
    return build_module(source, source.substr(0, source.find('.')));
}

// Calls module name with the inputs and nout outputs, as translated code does.
inline std::vector<Mm> call(const char* name, int nout, std::vector<Mm> in = {}) {
    Mm* prhs[8];
    Mm* plhs[64];
    for (std::size_t k = 0; k < in.size(); ++k) call_mex_prhs(prhs[k], in[k]);
    call_mex(name, nout, plhs, static_cast<double>(in.size()), prhs);
    std::vector<Mm> out(nout > 0 ? nout : 1);
    for (std::size_t k = 0; k < out.size(); ++k) call_mex_plhs(out[k], plhs[k]);
    return out;
}

// Modules are found along the M path, which holds the work folder while a test runs; errors throw.
class ModuleTest : public ::testing::Test {
  protected:
    void SetUp() override {
        path_ = ak_path_new(work_dir().c_str());
        saved_path_ = mpath_pointer;
        mpath_pointer = path_;
        ak_use_builtin_feval();
    }
    void TearDown() override {
        mpath_pointer = saved_path_;
        ak_path_delete(path_);
    }
    ak_test::ErrorsThrow errors_;

  private:
    ak_path_t* path_ = nullptr;
    void* saved_path_ = nullptr;
};

}  // namespace mex_test
