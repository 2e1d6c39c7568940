// The fid table, machine formats, the path search, and fopen and fclose.
#include <sys/stat.h>

#include <cmath>
#include <cstdlib>
#include <cstring>

#include "arklib/builtins.h"
#include "arklib/files.h"
#include "arklib/hooks.h"
#include "arklib/list.h"
#include "core/locks.h"
#include "core/startup.h"
#include "io/file_internal.h"
#include "runtime/format_internal.h"

namespace ak_internal {

namespace {

fid_row rows[fid_rows];
bool built = false;

// Takes lock 0 for its lifetime when multi_task is set.
struct table_lock {
    bool held;
    table_lock() : held(multi_task != 0) {
        if (held) ak_lock(ak_lock_files);
    }
    ~table_lock() {
        if (held) ak_unlock(ak_lock_files);
    }
    table_lock(const table_lock&) = delete;
    table_lock& operator=(const table_lock&) = delete;
};

void build_table() {
    table_lock lock;
    if (built) return;
    for (int k = 0; k < fid_rows; ++k) {
        rows[k].format = -1;
        rows[k].stream = nullptr;
        rows[k].open = 0;
        rows[k].name.clear();
        rows[k].mode[0] = 0;
    }
    static const char* const names[3] = {"\"stdin\"", "\"stdout\"", "\"stderr\""};
    for (int k = 0; k < 3; ++k) {
        rows[k].format = native_format();
        rows[k].open = 1;
        rows[k].name = names[k];
        std::strcpy(rows[k].mode, k == 0 ? "r" : "a");
    }
    __atomic_store_n(&built, true, __ATOMIC_RELEASE);
}

// A regular file that can be opened for reading; a directory is not a file.
bool readable_file(const std::string& name) {
    struct stat st;
    if (::stat(name.c_str(), &st) != 0 || S_ISDIR(st.st_mode)) return false;
    std::FILE* f = std::fopen(name.c_str(), "r");
    if (!f) return false;
    std::fclose(f);
    return true;
}

}  // namespace

fid_row* fid_table() {
    if (!__atomic_load_n(&built, __ATOMIC_ACQUIRE)) build_table();
    return rows;
}

std::FILE* row_stream(int row) {
    if (row == 0) return stdin;
    if (row == 1) return stdout;
    if (row == 2) return stderr;
    if (row < 0 || row >= fid_rows) return nullptr;
    return fid_table()[row].stream;
}

int saturate_fid(double v) {
    if (v != v) return -2147483647;
    if (v >= 2147483647.0) return 2147483647;
    if (v <= -2147483647.0) return -2147483647;
    return static_cast<int>(v);
}

int round_nonnegative(double v) {
    if (!(v > 0)) return 0;
    return saturate_fid(v + 0.5);
}

int fid_check(const Mm& m, bool report) {
    fid_row* table = fid_table();
    bool fault = false;
    if (m.size() != 1) {
        error("Size of fid %s not one.", display_name(m));
        if (m.size() < 1) return -1;
        fault = true;
    }
    double v;
    if (m.flags.type == ak_double)
        v = static_cast<const double*>(m.pr)[0];
    else if (m.flags.type == ak_uchar)
        v = static_cast<const unsigned char*>(m.pr)[0];
    else
        v = -1;  // a cell or a value without a type is no fid
    if (m.flags.sparse) v = m.nnz > 0 && m.index[0] == 0 ? v : 0.0;
    int row = saturate_fid(v);
    if (row < 0 || row >= fid_rows) {
        if (report) error("Illegal fid.");
        return -1;
    }
    if (!table[row].open) {
        if (report) error("Fid not opened.");
        fault = true;
    }
    return fault ? -1 : row;
}

std::FILE* fid_stream(const Mm& m) {
    int row = fid_check(m, true);
    return row < 0 ? nullptr : row_stream(row);
}

int fid_format(const Mm& m) {
    int row = fid_check(m, true);
    return row < 0 ? -1 : fid_table()[row].format;
}

int native_format() { return ak_native_format < 0 ? 0 : ak_native_format; }

int machine_format_code(const char* name) {
    if (!std::strcmp(name, "b") || !std::strcmp(name, "ieee-be")) return 1;
    if (!std::strcmp(name, "l") || !std::strcmp(name, "ieee-le")) return 0;
    if (!std::strcmp(name, "n") || !std::strcmp(name, "native")) return native_format();
    return -1;
}

int machine_format_code(const Mm& m) {
    char buffer[16];
    Mstr(m, buffer, sizeof buffer);
    return machine_format_code(buffer);
}

const char* machine_format_name(int code) { return code == 1 ? "ieee-be" : "ieee-le"; }

std::FILE* path_open(void* path_object, std::string& name, bool add_m_extension) {
    std::string bare = name;
    if (add_m_extension && bare.find('.') == std::string::npos) bare += ".m";
    std::string found;
    if (path_object) {
        auto* path = static_cast<ak_path_t*>(path_object);
        const char* dir = path->find ? path->find(path, bare.c_str(), 0) : nullptr;
        if (dir) found = std::string(dir) + bare;
    }
    if (readable_file(bare))
        found = bare;
    else if (!found.empty() && !readable_file(found))
        found.clear();
    if (found.empty()) return nullptr;
    name = found;
    return std::fopen(found.c_str(), "rb");
}

}  // namespace ak_internal

using namespace ak_internal;

// ---- fopen ---------------------------------------------------------------------------------------------

namespace {

// The open fids from 3 to 128, as a row.
Mm all_open() {
    fid_row* table = fid_table();
    Mm result = Mm();
    for (int k = fid_first_user; k < fid_rows; ++k)
        if (table[k].open) result = horzcat(result, Mm(static_cast<double>(k)));
    return result;
}

// Stores an opened stream in the lowest free row; 128 when none is free below it.
int take_row(std::FILE* stream, const std::string& name, const char* mode, int format) {
    fid_row* table = fid_table();
    table_lock lock;
    int row = 0;
    while (row < fid_rows - 1 && table[row].open) ++row;
    table[row].stream = stream;
    table[row].open = 1;
    table[row].name = name;
    std::strncpy(table[row].mode, mode, sizeof table[row].mode - 1);
    table[row].mode[sizeof table[row].mode - 1] = 0;
    table[row].format = format;
    return row;
}

}  // namespace

Mm fopen(const Mm& name_m, const Mm& mode_m, const Mm& machine_m, i_o_t, Mm& fid, Mm& msg) {
    fid_table();
    // The mode: binary unless it says 't' or 'b'; the C library takes no more than 7 characters.
    std::string mode = matrix_text(mode_m).substr(0, 15);
    if (mode.find('b') == std::string::npos && mode.find('t') == std::string::npos) mode += "b";
    mode = mode.substr(0, 7);
    std::string name = matrix_text(name_m);
    if (name.empty()) {
        fid = Mm(-1.0);
        msg = TM("filename is empty");
        return x_M;
    }
    int format = machine_format_code(machine_m);
    if (format == -1) warning("fopen: don't know how to convert from machine format");
    if (name == "all") {
        fid = all_open();
        msg = nop_M;
        return x_M;
    }
    std::FILE* stream;
    if (mode.find('r') != std::string::npos && mode.find('+') == std::string::npos) {
        stream = path_open(mpath_pointer, name, false);
    } else {
        struct stat st;
        bool directory = ::stat(name.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
        stream = directory ? nullptr : std::fopen(name.c_str(), mode.c_str());
    }
    if (!stream || std::ferror(stream)) {
        if (stream) std::fclose(stream);
        fid = Mm(-1.0);
        msg = TM("File error");
        return x_M;
    }
    int row = take_row(stream, name, mode.c_str(), format);
    if (row == fid_rows - 1) {
        error("Too many files");
        std::fflush(nullptr);
        std::exit(1);
    }
    fid = Mm(static_cast<double>(row));
    msg = nop_M;
    return x_M;
}

Mm fopen(const Mm& name, const Mm& mode, i_o_t, Mm& fid, Mm& msg) { return fopen(name, mode, TM("l"), i_o, fid, msg); }

Mm fopen(const Mm& name, i_o_t, Mm& fid, Mm& msg) { return fopen(name, TM("r"), TM("l"), i_o, fid, msg); }

Mm fopen(const Mm& name, const Mm& mode, const Mm& machine) {
    Mm fid, msg;
    fopen(name, mode, machine, i_o, fid, msg);
    return fid;
}

Mm fopen(const Mm& name, const Mm& mode) { return fopen(name, mode, TM("n")); }

Mm fopen(const Mm& name) {
    if (!name.flags.str && name.size() == 1 && (name.flags.type == ak_double || name.flags.type == ak_uchar)) {
        fid_row* table = fid_table();
        double v = name.flags.type == ak_double ? *static_cast<const double*>(name.pr)
                                                : *static_cast<const unsigned char*>(name.pr);
        int row = saturate_fid(v);
        if (row >= 0 && row < fid_rows && table[row].open) return TM(table[row].name.c_str());
        return nop_M;
    }
    return fopen(name, TM("r"));
}

Mm fopen(const Mm& fid, i_o_t, Mm& name, Mm& mode, Mm& machine) {
    int row = fid_check(fid, false);
    if (row < 0) {
        name = TM("");
        mode = name;
        machine = name;
        return x_M;
    }
    const fid_row& r = fid_table()[row];
    name = TM(r.name.c_str());
    mode = TM(r.mode);
    machine = TM(machine_format_name(r.format));
    return x_M;
}

// ---- fclose --------------------------------------------------------------------------------------------

Mm fclose(const Mm& x) {
    fid_row* table = fid_table();
    if (x.flags.str) {
        table_lock lock;
        for (int k = fid_first_user; k < fid_rows; ++k) {
            if (!table[k].open) continue;
            if (table[k].stream) std::fclose(table[k].stream);
            table[k].stream = nullptr;
            table[k].open = 0;
        }
        return x_M;
    }
    double v = x.size() >= 1 && x.flags.type == ak_double && !x.flags.sparse ? *static_cast<const double*>(x.pr)
                                                                             : 0.0;
    if (x.size() >= 1 && x.flags.type == ak_uchar) v = *static_cast<const unsigned char*>(x.pr);
    if (round_nonnegative(v) < fid_first_user) {
        error("fclose: can not close stdin/stdout/stderr, fid is %s", display_name(x));
        return x_M;
    }
    int row = fid_check(x, true);
    if (row < 0) return x_M;
    if (row < fid_first_user) {  // a fraction that rounds up to 3 but truncates below it
        error("fclose: can not close stdin/stdout/stderr, fid is %s", display_name(x));
        return x_M;
    }
    int result = table[row].stream ? std::fclose(table[row].stream) : -1;
    table[row].stream = nullptr;
    table[row].open = 0;
    return Mm(static_cast<double>(result));
}

Mm stderrM() { return Mm(2.0); }

AK_BUILTIN("fopen", AK_FN(fopen, const Mm&), AK_FN(fopen, const Mm&, const Mm&),
           AK_FN(fopen, const Mm&, const Mm&, const Mm&), AK_FN_REFS(fopen, const Mm&, const Mm&, const Mm&, i_o_t, Mm&, Mm&),
           AK_FN_REFS(fopen, const Mm&, const Mm&, i_o_t, Mm&, Mm&), AK_FN_REFS(fopen, const Mm&, i_o_t, Mm&, Mm&),
           AK_FN_REFS(fopen, const Mm&, i_o_t, Mm&, Mm&, Mm&));
AK_BUILTIN("fclose", AK_FN(fclose, const Mm&));
AK_BUILTIN("stderr", stderrM);
