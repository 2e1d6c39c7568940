// The operating-system functions: directories, temporary names, copying and deleting files, file
// listings, printing a file, and running shell commands.
#include <dirent.h>
#include <fnmatch.h>
#include <sys/stat.h>
#include <sys/sysinfo.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/files.h"
#include "arklib/hooks.h"
#include "arklib/list.h"
#include "io/file_internal.h"
#include "runtime/format_internal.h"

using namespace ak_internal;

namespace {

constexpr int name_limit = 512;

// The text of a string argument, cut to limit - 1 characters.
std::string argument_text(const Mm& m, int limit = name_limit) { return matrix_text(m).substr(0, limit - 1); }

bool is_directory(const std::string& path) {
    struct stat st;
    return ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

// Copies source to target in blocks of 8192 bytes. Reports a source or target that cannot be opened
// and a failed block; gives 1 on success.
int copy_file(const std::string& source, const std::string& target) {
    std::FILE* in = is_directory(source) ? nullptr : std::fopen(source.c_str(), "rb");
    if (!in) {
        error("copyfile:Could not read %s", source.c_str());
        return 0;
    }
    std::FILE* out = std::fopen(target.c_str(), "wb");
    if (!out) {
        std::fclose(in);
        error("copyfile:Could not write %s", target.c_str());
        return 0;
    }
    char block[8192];
    int ok = 1;
    for (;;) {
        size_t got = std::fread(block, 1, sizeof block, in);
        if (got == 0) break;
        if (std::fwrite(block, 1, got, out) != got) {
            ok = 0;
            break;
        }
    }
    if (std::ferror(in)) ok = 0;
    if (std::fclose(out) != 0) ok = 0;
    std::fclose(in);
    if (!ok) error("copyfile:Failed on copy");
    return ok;
}

// The shared routine of type and help: finds the file by the path search (first as an M-file) and
// prints its lines through the print handler, each without its leading white space. help prints
// only the first block of comment lines, without their '%'.
void print_file(const Mm& name_m, bool help_mode) {
    std::string name = matrix_text(name_m);
    size_t start = 0;
    while (start < name.size() && std::isspace(static_cast<unsigned char>(name[start]))) ++start;
    name = name.substr(start);
    std::string found = name;
    std::FILE* f = path_open(mpath_pointer, found, true);
    if (!f) {
        found = name;
        f = path_open(mpath_pointer, found, false);
    }
    if (!f) {
        std::string text = name + " not found.\n";
        ak_print_handler(text.c_str());
        return;
    }
    char line[512];
    bool opened = false;
    while (std::fgets(line, sizeof line, f)) {
        const char* p = line;
        while (*p && std::isspace(static_cast<unsigned char>(*p)) && *p != '\n' && *p != '\r') ++p;
        if (help_mode) {
            if (!opened) {
                if (*p != '%') continue;  // a function line or code before the comment
                opened = true;
            } else if (*p == 0 || *p == '\r' || *p == '\n') {
                break;
            }
            if (*p == '%') ++p;
        }
        ak_print_handler(p);
    }
    std::fclose(f);
}

// One entry of a listing.
struct listed {
    std::string name;
    std::string date;
    double bytes;
    double isdir;
};

std::vector<listed> list_matches(const std::string& pattern) {
    std::string dir = ".", mask = pattern;
    size_t slash = pattern.rfind('/');
    if (slash != std::string::npos) {
        dir = slash == 0 ? "/" : pattern.substr(0, slash);
        mask = pattern.substr(slash + 1);
    }
    std::vector<listed> out;
    DIR* d = ::opendir(dir.c_str());
    if (!d) return out;
    while (struct dirent* e = ::readdir(d)) {
        std::string entry = e->d_name;
        // "*.*" matches every entry, with or without a dot.
        if (mask != "*.*" && ::fnmatch(mask.c_str(), entry.c_str(), 0) != 0) continue;
        std::string full = dir == "/" ? "/" + entry : dir + "/" + entry;
        struct stat st;
        if (::stat(full.c_str(), &st) != 0 && ::lstat(full.c_str(), &st) != 0) continue;
        listed item;
        item.name = entry;
        item.isdir = S_ISDIR(st.st_mode) ? 1.0 : 0.0;
        item.bytes = item.isdir ? 0.0 : static_cast<double>(static_cast<uint32_t>(st.st_size));
        std::tm when;
        ::gmtime_r(&st.st_mtime, &when);
        char date[64];
        std::strftime(date, sizeof date, "%d-%b-%Y %H:%M:%S", &when);
        item.date = date;
        out.push_back(item);
    }
    ::closedir(d);
    std::sort(out.begin(), out.end(), [](const listed& a, const listed& b) { return a.name < b.name; });
    return out;
}

int run_command(const std::string& command) { return system_hook ? system_hook(command.c_str()) : -1; }

}  // namespace

// ---- directories ---------------------------------------------------------------------------------

Mm mkdir(const Mm& d) {
    std::string path = argument_text(d);
    if (is_directory(path)) return Mm(2.0);
    if (::mkdir(path.c_str(), 0777) == 0) return Mm(1.0);
    warning("Could not make directory %s", path.c_str());
    return Mm(0.0);
}

Mm rmdir(const Mm& d) {
    std::string path = argument_text(d);
    if (::rmdir(path.c_str()) == 0) return Mm(1.0);
    warning("Could not remove directory %s", path.c_str());
    return Mm(0.0);
}

Mm cd(const Mm& d) {
    std::string path = argument_text(d);
    if (::chdir(path.c_str()) == 0) return Mm(1.0);
    warning("Could not change directory to %s", path.c_str());
    return Mm(0.0);
}

Mm chdir(const Mm& d) { return cd(d); }

Mm cd() {
    std::vector<char> buffer(4096);
    while (!::getcwd(buffer.data(), buffer.size())) {
        if (errno != ERANGE) return TM("");
        buffer.resize(buffer.size() * 2);
    }
    return TM(buffer.data());
}

// ---- files ---------------------------------------------------------------------------------------------

Mm deleteM(const Mm& x) {
    if (x.flags.str) {
        (void)std::remove(matrix_text(x).c_str());
        return x_M;
    }
    // A graphics handle: the graphics layer deletes it.
    if (!ak_function_exists("deleteobj")) {
        error("delete: no graphics layer to delete the object");
        return x_M;
    }
    Mm out;
    ak_call_function("deleteobj", 1, &x, 1, &out);
    return x_M;
}

Mm copyfile(const Mm&) {
    error_input("copyfile", 1);
    return x_M;
}

Mm copyfile(const Mm& a, const Mm& b) { return Mm(copy_file(argument_text(a), argument_text(b)) ? 1.0 : 0.0); }

Mm filesep() { return TM("/"); }
Mm pathsep() { return TM(":"); }

Mm tempdir() {
    const char* env = std::getenv("TMPDIR");
    std::string dir = env && *env ? env : "/tmp";
    if (dir.back() != '/') dir += '/';
    return TM(dir.c_str());
}

Mm tempname() {
    std::string name = matrix_text(tempdir()) + "akXXXXXX";
    int fd = ::mkstemp(&name[0]);
    if (fd < 0) return TM("");
    ::close(fd);
    return TM(name.c_str());
}

// ---- fullfile ------------------------------------------------------------------------------------------

Mm fullfile(int n, const Mm* const* list) {
    std::string out;
    for (int k = 0; k < n; ++k) {
        std::string part = matrix_text(*list[k]).substr(0, name_limit);
        if (k > 0 && !part.empty() && (part[0] == '/' || part[0] == '\\')) part.erase(0, 1);
        if (!part.empty() && (part.back() == '/' || part.back() == '\\')) part.pop_back();
        if (k > 0) out += '/';
        out += part;
    }
    if (out.size() > 16383) out.resize(16383);
    return TM(out.c_str());
}

Mm fullfile() { return fullfile(0, nullptr); }
Mm fullfile(const Mm& a) {
    const Mm* l[] = {&a};
    return fullfile(1, l);
}
Mm fullfile(const Mm& a, const Mm& b) {
    const Mm* l[] = {&a, &b};
    return fullfile(2, l);
}
Mm fullfile(const Mm& a, const Mm& b, const Mm& c) {
    const Mm* l[] = {&a, &b, &c};
    return fullfile(3, l);
}
Mm fullfile(const Mm& a, const Mm& b, const Mm& c, const Mm& d) {
    const Mm* l[] = {&a, &b, &c, &d};
    return fullfile(4, l);
}
Mm fullfile(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e) {
    const Mm* l[] = {&a, &b, &c, &d, &e};
    return fullfile(5, l);
}
Mm fullfile(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e, const Mm& f) {
    const Mm* l[] = {&a, &b, &c, &d, &e, &f};
    return fullfile(6, l);
}

// ---- dir -----------------------------------------------------------------------------------------------

Mm dir(const Mm& pattern) {
    std::vector<listed> items = list_matches(argument_text(pattern));
    int n = static_cast<int>(items.size());
    Mm table = cell(Mm(static_cast<double>(n)), Mm(4.0));
    for (int k = 0; k < n; ++k) {
        table.mr(k + 1, 1) = TM(items[k].name.c_str());
        table.mr(k + 1, 2) = TM(items[k].date.c_str());
        table.mr(k + 1, 3) = Mm(items[k].bytes);
        table.mr(k + 1, 4) = Mm(items[k].isdir);
    }
    Mm names = cell(Mm(1.0), Mm(4.0));
    names.mr(1, 1) = TM("name");
    names.mr(1, 2) = TM("date");
    names.mr(1, 3) = TM("bytes");
    names.mr(1, 4) = TM("isdir");
    return cell2struct(table, names, Mm(2.0));
}

Mm dir() { return dir(TM("*.*")); }

// ---- printing files --------------------------------------------------------------------------------------

Mm type(const Mm& name) {
    if (!name.flags.str) {
        error("type: argument not a string");
        return x_M;
    }
    print_file(name, false);
    return x_M;
}

// Help in a window: without a window system, on the console.
Mm helpwin(const Mm& topic) { return help(topic); }

Mm help(const Mm& name) {
    if (!name.flags.str) {
        error("help: argument not a string");
        return x_M;
    }
    print_file(name, true);
    return x_M;
}

// ---- memory ---------------------------------------------------------------------------------------------

Mm memory() {
    struct sysinfo info;
    if (sysinfo(&info) != 0) {
        error("memory: the system does not tell its memory");
        return x_M;
    }
    const double unit = info.mem_unit ? info.mem_unit : 1;
    const double total = unit * static_cast<double>(info.totalram), free = unit * static_cast<double>(info.freeram);
    const double available = free + unit * static_cast<double>(info.bufferram);
    const double swap = unit * static_cast<double>(info.totalswap), swap_free = unit * static_cast<double>(info.freeswap);
    const double load = total > 0 ? std::round(100 * (1 - available / total)) : 0;
    const double mib = 1024.0 * 1024.0;
    ak_printf("Memory in use: %g%%\n", load);
    ak_printf("Physical memory: %.0f MiB, of which %.0f MiB available\n", total / mib, available / mib);
    ak_printf("Swap: %.0f MiB, of which %.0f MiB free\n", swap / mib, swap_free / mib);
    Mm out = (CL("load_percent"), load, "total_physical", total, "available_physical", available, "total_swap", swap,
              "free_swap", swap_free);
    return mstruct(out);
}

// ---- commands ---------------------------------------------------------------------------------------------

Mm system(const Mm& s) {
    if (!s.flags.str) {
        error("system: argument not a string");
        return x_M;
    }
    run_command(matrix_text(s).substr(0, 4095));
    return x_M;
}

// The shell hook runs the command; it gives a status and no text.
Mm dos(const Mm& cmd, const Mm&, i_o_t, Mm& s, Mm& w) {
    s = Mm(static_cast<double>(run_command(matrix_text(cmd))));
    w = TM("");
    return x_M;
}
Mm dos(const Mm& cmd, i_o_t, Mm& s, Mm& w) { return dos(cmd, Mm(1.0), i_o, s, w); }
Mm dos(const Mm& cmd, const Mm& echo) {
    Mm s, w;
    dos(cmd, echo, i_o, s, w);
    return s;
}
Mm dos(const Mm& cmd) { return dos(cmd, Mm(1.0)); }

Mm unixM(const Mm& cmd) { return dos(cmd); }
Mm unixM(const Mm& cmd, i_o_t, Mm& s, Mm& w) {
    s = dos(cmd);
    w = TM("");
    return x_M;
}

AK_BUILTIN("mkdir", AK_FN(mkdir, const Mm&));
AK_BUILTIN("rmdir", AK_FN(rmdir, const Mm&));
AK_BUILTIN("chdir", AK_FN(chdir, const Mm&));
AK_BUILTIN("cd", AK_FN(cd), AK_FN(cd, const Mm&));
AK_BUILTIN("delete", deleteM);
AK_BUILTIN("copyfile", AK_FN(copyfile, const Mm&), AK_FN(copyfile, const Mm&, const Mm&));
AK_BUILTIN("filesep", filesep);
AK_BUILTIN("pathsep", pathsep);
AK_BUILTIN("tempdir", tempdir);
AK_BUILTIN("tempname", AK_FN(tempname));
AK_BUILTIN("fullfile", AK_FN(fullfile), AK_FN(fullfile, const Mm&), AK_FN(fullfile, const Mm&, const Mm&),
           AK_FN(fullfile, const Mm&, const Mm&, const Mm&), AK_FN(fullfile, const Mm&, const Mm&, const Mm&, const Mm&),
           AK_FN(fullfile, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&),
           AK_FN(fullfile, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("dir", AK_FN(dir), AK_FN(dir, const Mm&));
AK_BUILTIN("type", type);
AK_BUILTIN("help", help);
AK_BUILTIN("helpwin", helpwin);
AK_BUILTIN("memory", AK_FN(memory));
AK_BUILTIN("system", AK_FN(system, const Mm&));
AK_BUILTIN("dos", AK_FN(dos, const Mm&), AK_FN(dos, const Mm&, const Mm&), AK_FN(dos, const Mm&, i_o_t, Mm&, Mm&),
           AK_FN(dos, const Mm&, const Mm&, i_o_t, Mm&, Mm&));
AK_BUILTIN("unix", AK_FN(unixM, const Mm&), AK_FN(unixM, const Mm&, i_o_t, Mm&, Mm&));
