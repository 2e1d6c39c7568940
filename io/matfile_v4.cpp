// Level-4 MAT-files: a plain sequence of records, each a five-word header, the name and the
// column-major data, in the byte order that the record's own first word tells.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "arklib/cells.h"
#include "arklib/sparse.h"
#include "io/file_internal.h"
#include "io/matfile_internal.h"

namespace ak_internal {

namespace {

// Every element exactly 0 or 1 (and not empty): a level-4 file keeps no logical flag, so the
// reader infers it.
bool only_zeros_and_ones(const Mm& m) {
    const int n = m.size();
    if (n < 1) return false;
    const double* re = m.addr();
    const double* im = m.addi();
    for (int k = 0; k < n; ++k) {
        if (re[k] != 0.0 && re[k] != 1.0) return false;
        if (im && im[k] != 0.0) return false;
    }
    return true;
}

// Reads the header words; false at the end of the file.
bool read_header(std::FILE* stream, int32_t h[5]) { return std::fread(h, 4, 5, stream) == 5; }

}  // namespace

int load4_record(const char* file, std::FILE* stream, Mm& var, std::string& name) {
    int32_t h[5];
    if (!read_header(stream, h)) {
        var = nop_M;
        return 1;
    }
    int32_t type = h[0];
    if (type >= 10000 || type < 0) swap_bytes(&type, 1, 4);
    const int t = type % 10, p = (type / 10) % 10, o = (type / 100) % 10, machine = type / 1000;
    bool swap = false;
    if (machine != native_format()) {
        if (machine == 0 || machine == 1) {
            swap = true;
        } else {
            error("load4: '%s' no conversion from this", file);
            std::fflush(nullptr);
            std::exit(1);
        }
    }
    if (swap) swap_bytes(h, 5, 4);
    const int32_t mrows = h[1], ncols = h[2], imagf = h[3];
    int32_t namlen = h[4];
    if (o != 0) warning("load4: '%s' O not zero", file);
    if (t >= 3 || t < 0) {
        error("load4: '%s' unknown matrix type", file);
        var = x_M;
        return 1;
    }

    // The data must fit in what is left of the file before anything is made for them.
    const long long count = mrows < 0 || ncols < 0 ? -1 : static_cast<long long>(mrows) * ncols;
    const long left = stream_left(stream) - (namlen > 0 ? namlen : 0);
    if (count < 0 || count > left / precision_size(p) / (imagf ? 2 : 1)) {
        error("load4: could not read real part from file '%s'", file);
        var = x_M;
        return 1;
    }
    Mm m(imagf ? 1 : 0, 0, 0, mrows, ncols, ak_double);

    char text[256];
    text[0] = 0;
    if (namlen > 255) {
        warning("load4: name field is too long in file '%s'", file);
        namlen = 255;  // the rest of the name is not skipped
    }
    if (namlen != 0) {
        if (namlen < 0 || std::fread(text, 1, static_cast<std::size_t>(namlen), stream) != static_cast<std::size_t>(namlen)) {
            error("load4: '%s' could not read matrix name", file);
            var = x_M;
            return 1;
        }
        text[namlen] = 0;
    }
    name = text;

    const int n = static_cast<int>(count);
    if (n != 0) {
        if (read_elements_blocked(m.addr(), n, stream, p, swap) != n) {
            error("load4: could not read real part from file '%s'", file);
            var = x_M;
            return 1;
        }
        if (imagf && read_elements_blocked(m.addi(), n, stream, p, swap) != n) {
            error("load4: could not read imaginary part from file '%s'", file);
            var = x_M;
            return 1;
        }
    }
    m.setstr(t & 1);
    if (only_zeros_and_ones(m)) m.setlogical(1);
    if (t & 2) {
        Mm s = spconvert(m);
        s.setsparse(1);
        m = s;
    }
    var = m;
    return 0;
}

int load4_read(const char* file, std::FILE* stream, Mm& var) {
    std::string name;
    const int r = load4_record(file, stream, var, name);
    if (r == 0 && var.name && !name.empty()) {
        const std::size_t shorter = std::min(std::strlen(var.name), name.size());
        if (std::strncmp(var.name, name.c_str(), shorter) != 0) {
            char text[1024];
            std::snprintf(text, sizeof text, "load4 '%s': variable named '%s' loaded into '%s'", file, name.c_str(),
                          var.name);
            warning("%s", text);
        }
    }
    return r;
}

void save4_write(std::FILE* stream, const Mm& m) {
    if (m.ndims > 2) {
        error("save: matrix '%s' has more than two dimensions and can not be saved in 4.0 format", display_name(m));
        return;
    }
    if (m.flags.type == ak_mm) {
        error("save: matrix '%s' is a cell or structure and can not be saved in 4.0 format", display_name(m));
        return;
    }
    m.warn_uninit();
    if (m.flags.type == ak_no_type) return;
    Mm c = m.flags.type == ak_uchar ? mdouble(m) : Mm(m);
    c.getreal(0);
    if (c.flags.sparse) c = sp2coo(c);

    const int sparse = m.flags.sparse ? 1 : 0, str = m.flags.str ? 1 : 0;
    const char* name = m.name ? m.name : "noname";
    const int32_t h[5] = {(native_format() * 500 + sparse) * 2 + str, c.rows(), c.cols(), c.pi ? 1 : 0,
                          static_cast<int32_t>(std::strlen(name) + 1)};
    if (std::fwrite(h, 4, 5, stream) != 5) {
        error("save: could not write header");
        return;
    }
    if (h[4] > 1 && std::fwrite(name, 1, static_cast<std::size_t>(h[4]), stream) != static_cast<std::size_t>(h[4])) {
        error("save: could not write matrix name");
        return;
    }
    const std::size_t count = static_cast<std::size_t>(c.size());
    if (count > 0 && std::fwrite(c.addr(), 8, count, stream) != count) {
        error("save: could not write real part");
        return;
    }
    if (c.pi && count > 0 && std::fwrite(c.addi(), 8, count, stream) != count) error("save: could not write imag part");
}

}  // namespace ak_internal
