// The M path: a ready path object over a list of directories, the search along the path that
// exist, which and the file functions share, and the path functions of the language.
#include <sys/stat.h>

#include <cstring>
#include <string>
#include <vector>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/eval.h"
#include "arklib/hooks.h"

namespace {

struct path_object : ak_path_t {
    std::string root_text;
    std::string text_;
    std::string found;
};

path_object& object(ak_path_t* p) { return *static_cast<path_object*>(p); }

bool is_file(const std::string& name) {
    struct stat st;
    return stat(name.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

int path_length(ak_path_t* p) { return static_cast<int>(object(p).text_.size()); }

void path_text(ak_path_t* p, char* buffer, int size) {
    if (size < 1) return;
    const std::string& t = object(p).text_;
    const std::size_t n = t.size() < static_cast<std::size_t>(size - 1) ? t.size() : size - 1;
    std::memcpy(buffer, t.data(), n);
    buffer[n] = 0;
}

void path_set(ak_path_t* p, const char* text) { object(p).text_ = text ? text : ""; }

void path_add_front(ak_path_t* p, const char* dir) {
    std::string& t = object(p).text_;
    t = t.empty() ? std::string(dir) : std::string(dir) + ":" + t;
}

const char* path_find(ak_path_t* p, const char* name, int mfile) {
    path_object& o = object(p);
    std::string file = name;
    if (mfile && !std::strchr(name, '.')) file += ".m";
    std::size_t start = 0;
    for (;;) {
        const std::size_t stop = o.text_.find(':', start);
        std::string dir = o.text_.substr(start, stop == std::string::npos ? std::string::npos : stop - start);
        if (dir.empty()) dir = ".";
        if (dir.back() != '/') dir += '/';
        if (is_file(dir + file)) {
            o.found = dir;
            return o.found.c_str();
        }
        if (stop == std::string::npos) return nullptr;
        start = stop + 1;
    }
}

// The path object, or null after reporting that there is none.
ak_path_t* host_path() {
    if (!mpath_pointer) error("path is not available in compiled programs.");
    return static_cast<ak_path_t*>(mpath_pointer);
}

// The texts of a string (each row of a character matrix, trailing blanks removed) or of a cell of
// strings.
std::vector<std::string> texts_of(const Mm& x) {
    std::vector<std::string> out;
    if (iscell(x)) {
        const Mm* e = x.getpr(static_cast<Mm*>(nullptr));
        for (int k = 0; k < x.size(); ++k) {
            std::vector<std::string> t = texts_of(e[k]);
            out.insert(out.end(), t.begin(), t.end());
        }
        return out;
    }
    const int rows = x.rows(), cols = rows ? x.size() / rows : 0;
    for (int r = 0; r < rows && x.flags.type != ak_mm; ++r) {
        std::string t;
        for (int c = 0; c < cols; ++c) {
            const int k = c * rows + r;
            t += static_cast<char>(x.flags.type == ak_uchar ? x.getpr(static_cast<unsigned char*>(nullptr))[k]
                                                            : static_cast<int>(x.addr()[k]));
        }
        while (!t.empty() && (t.back() == ' ' || t.back() == 0)) t.pop_back();
        out.push_back(t);
    }
    return out;
}

}  // namespace

ak_path_t* ak_path_new(const char* text, const char* root) {
    path_object* p = new path_object;
    p->text_ = text ? text : "";
    p->root_text = root ? root : p->text_.substr(0, p->text_.find(':'));
    p->root = p->root_text.c_str();
    p->length = path_length;
    p->text = path_text;
    p->set = path_set;
    p->add_front = path_add_front;
    p->find = path_find;
    return p;
}

void ak_path_delete(ak_path_t* path) { delete static_cast<path_object*>(path); }

std::string ak_path_search(const char* name, int mfile) {
    std::string bare = name;
    if (mfile && !std::strchr(name, '.')) bare += ".m";
    std::string found;
    if (ak_path_t* p = static_cast<ak_path_t*>(mpath_pointer))
        if (const char* dir = p->find(p, name, mfile)) found = std::string(dir) + bare;
    if (is_file(bare)) found = bare;
    return found;
}

// ---- path functions ------------------------------------------------------------------------------

Mm matlabpath() {
    ak_path_t* p = host_path();
    if (!p) return x_M;
    std::vector<char> buffer(static_cast<std::size_t>(p->length(p)) + 1);
    p->text(p, buffer.data(), static_cast<int>(buffer.size()));
    return TM(buffer.data());
}

Mm matlabpath(const Mm& x) {
    ak_path_t* p = host_path();
    if (!p) return x_M;
    std::vector<std::string> t = texts_of(x);
    p->set(p, t.empty() ? "" : t[0].c_str());
    return x_M;
}

Mm matlabroot() {
    ak_path_t* p = host_path();
    if (!p) return x_M;
    return TM(p->root ? p->root : "");
}

Mm path() { return matlabpath(); }

Mm path(const Mm& x) { return matlabpath(x); }

Mm path(const Mm& a, const Mm& b) {
    if (!host_path()) return x_M;
    matlabpath(a);
    return addpath(b);
}

Mm addpath(const Mm& list) {
    ak_path_t* p = host_path();
    if (!p) return x_M;
    std::vector<std::string> dirs = texts_of(list);
    for (auto d = dirs.rbegin(); d != dirs.rend(); ++d) p->add_front(p, d->c_str());
    return x_M;
}

AK_BUILTIN("matlabpath", AK_FN(matlabpath), AK_FN(matlabpath, const Mm&));
AK_BUILTIN("matlabroot", matlabroot);
AK_BUILTIN("path", AK_FN(path), AK_FN(path, const Mm&), AK_FN(path, const Mm&, const Mm&));
AK_BUILTIN("addpath", addpath);
