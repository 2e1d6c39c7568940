// The level-5 MAT-file reader: matrix elements in either byte order, with cells, structures,
// objects and sparse matrices inside, and compressed elements inflated in memory and read the same
// way. Every count found in the file is checked against the bytes left before anything is made for
// it.
#include <zlib.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "arklib/cells.h"
#include "arklib/sparse.h"
#include "io/file_internal.h"
#include "io/matfile_internal.h"

namespace ak_internal {

namespace {

constexpr uint32_t mi_matrix = 14, mi_compressed = 15, mi_utf8 = 16, mi_utf16 = 17, mi_utf32 = 18;
constexpr int max_depth = 200;  // cells in cells in cells...

// A stream being read, with the offset of its end and the nesting depth of the current element.
struct reader {
    const char* file;
    std::FILE* s;
    long end;
    int depth;

    long left() const {
        const long at = std::ftell(s);
        return at < 0 || at > end ? 0 : end - at;
    }
};

void seek_to_8(std::FILE* s) {
    const long at = std::ftell(s);
    if (at >= 0 && at % 8) std::fseek(s, at + 8 - at % 8, SEEK_SET);
}

bool read_words(std::FILE* s, uint32_t* w, int n, bool swap) {
    if (std::fread(w, 4, static_cast<std::size_t>(n), s) != static_cast<std::size_t>(n)) return false;
    if (swap) swap_bytes(w, n, 4);
    return true;
}

// A tag by the small-or-long rule.
bool read_tag(std::FILE* s, bool swap, uint32_t& type, uint32_t& bytes) {
    uint32_t w;
    if (!read_words(s, &w, 1, swap)) return false;
    if (w >> 16) {
        type = w & 0xffff;
        bytes = w >> 16;
        return true;
    }
    type = w;
    return read_words(s, &bytes, 1, swap);
}

// The precision code of a data type of the file; 7 is refused, as is any type without a row.
int code_of_type(uint32_t type, bool report) {
    switch (type) {
        case 1: return 8;
        case 2: return 5;
        case 3: return 3;
        case 4: return 4;
        case 5: return 2;
        case 6: return 7;
        case 8: return 1;
        case 9: return 0;
        case 12: return 9;   // int64
        case 13: return 10;  // uint64
        case mi_utf8: return 5;
        case mi_utf16: return 4;
        case mi_utf32: return 7;
    }
    if (report) error("loadsave5: unknown data format");
    return -1;
}

// Code points of UTF-8, UTF-16 or UTF-32 text into n doubles (zeros after the text).
void decode_text(double* dest, int n, const std::vector<unsigned char>& raw, uint32_t type, bool swap) {
    std::vector<uint32_t> points;
    if (type == mi_utf8) {
        for (std::size_t k = 0; k < raw.size();) {
            const unsigned char b = raw[k];
            const int extra = b < 0x80 ? 0 : (b >> 5) == 6 ? 1 : (b >> 4) == 14 ? 2 : (b >> 3) == 30 ? 3 : -1;
            if (extra < 0 || k + static_cast<std::size_t>(extra) >= raw.size()) {
                points.push_back(b);
                ++k;
                continue;
            }
            uint32_t c = extra == 0 ? b : b & (0x3f >> extra);
            for (int e = 1; e <= extra; ++e) c = (c << 6) | (raw[k + e] & 0x3f);
            points.push_back(c);
            k += 1 + static_cast<std::size_t>(extra);
        }
    } else if (type == mi_utf16) {
        std::vector<uint16_t> units(raw.size() / 2);
        if (!units.empty()) std::memcpy(units.data(), raw.data(), units.size() * 2);
        if (swap) swap_bytes(units.data(), static_cast<int>(units.size()), 2);
        for (std::size_t k = 0; k < units.size(); ++k) {
            const uint32_t u = units[k];
            if (u >= 0xD800 && u < 0xDC00 && k + 1 < units.size() && units[k + 1] >= 0xDC00 && units[k + 1] < 0xE000) {
                points.push_back(0x10000 + ((u - 0xD800) << 10) + (units[k + 1] - 0xDC00));
                ++k;
            } else {
                points.push_back(u);
            }
        }
    } else {
        std::vector<uint32_t> units(raw.size() / 4);
        if (!units.empty()) std::memcpy(units.data(), raw.data(), units.size() * 4);
        if (swap) swap_bytes(units.data(), static_cast<int>(units.size()), 4);
        points = units;
    }
    for (int k = 0; k < n; ++k) dest[k] = static_cast<std::size_t>(k) < points.size() ? points[k] : 0.0;
}

// Signed 64-bit elements, which the shared element reader gives as unsigned.
bool read_int64(double* dest, int n, std::FILE* s, bool swap) {
    constexpr int chunk = 8192;
    int64_t work[chunk];
    for (int done = 0; done < n;) {
        const int m = n - done < chunk ? n - done : chunk;
        if (std::fread(work, 8, static_cast<std::size_t>(m), s) != static_cast<std::size_t>(m)) return false;
        if (swap) swap_bytes(work, m, 8);
        for (int k = 0; k < m; ++k) dest[done + k] = static_cast<double>(work[k]);
        done += m;
    }
    return true;
}

// One data block: padding, a tag, then n elements of the tag's type into dest. False on failure
// (a refused type has been reported).
bool read_block(reader& r, double* dest, int n, bool swap) {
    seek_to_8(r.s);
    uint32_t type, bytes;
    if (!read_tag(r.s, swap, type, bytes)) return false;
    if (type == mi_utf8 || type == mi_utf16 || type == mi_utf32) {
        if (bytes > static_cast<uint32_t>(r.left())) return false;
        std::vector<unsigned char> raw(bytes);
        if (bytes && std::fread(raw.data(), 1, bytes, r.s) != bytes) return false;
        decode_text(dest, n, raw, type, swap);
        return true;
    }
    const int code = code_of_type(type, true);
    if (code < 0) return false;
    if (static_cast<long long>(n) * precision_size(code) > r.left()) return false;
    if (code == 9) return read_int64(dest, n, r.s, swap);
    return read_elements_blocked(dest, n, r.s, code, swap) == n;
}

// The same into byte storage, through a bounded work buffer.
bool read_byte_block(reader& r, unsigned char* dest, int n, bool swap) {
    constexpr int chunk = 1 << 16;
    std::vector<double> work(static_cast<std::size_t>(n < chunk ? n : chunk));
    seek_to_8(r.s);
    uint32_t type, bytes;
    if (!read_tag(r.s, swap, type, bytes)) return false;
    const int code = code_of_type(type, true);
    if (code < 0) return false;
    if (static_cast<long long>(n) * precision_size(code) > r.left()) return false;
    for (int done = 0; done < n;) {
        const int m = n - done < chunk ? n - done : chunk;
        if (read_elements(work.data(), m, r.s, code, swap) != m) return false;
        for (int k = 0; k < m; ++k) dest[done + k] = static_cast<unsigned char>(truncate64(work[k]));
        done += m;
    }
    return true;
}

// Integers (sparse index lists) through the same path.
bool read_int_block(reader& r, std::vector<int>& dest, int n, bool swap) {
    std::vector<double> v(static_cast<std::size_t>(n));
    if (!read_block(r, v.data(), n, swap)) return false;
    for (int k = 0; k < n; ++k) {
        if (!(v[k] >= INT_MIN && v[k] <= INT_MAX)) return false;
        dest[k] = static_cast<int>(v[k]);
    }
    return true;
}

// A name element: padding, a tag, the characters. False after a reported failure.
bool read_name(reader& r, bool swap, char* buffer, int limit) {
    buffer[0] = 0;
    seek_to_8(r.s);
    uint32_t type, bytes;
    if (!read_tag(r.s, swap, type, bytes)) {
        error("load5: could not read name name in file '%s'", r.file);
        return false;
    }
    const int code = code_of_type(type, false);
    long long length = static_cast<long long>(bytes) * (code < 0 ? 1 : precision_size(code));
    if (length > limit) {
        warning("load5: name field is too long in file '%s'", r.file);
        length = limit;
    }
    if (length != 0 && std::fread(buffer, 1, static_cast<std::size_t>(length), r.s) != static_cast<std::size_t>(length)) {
        buffer[0] = 0;
        error("load5: could not read name name in file '%s'", r.file);
        return false;
    }
    buffer[length] = 0;
    return true;
}

// The inflated bytes of a compressed element of `bytes` bytes at the stream's position, at most
// `limit` of them; empty on failure.
std::vector<unsigned char> inflate_element(std::FILE* s, uint32_t bytes, std::size_t limit) {
    std::vector<unsigned char> out;
    z_stream z{};
    if (inflateInit(&z) != Z_OK) return out;
    unsigned char in[16384];
    unsigned char chunk[65536];
    uint32_t left = bytes;
    int status = Z_OK;
    while (status != Z_STREAM_END && out.size() < limit) {
        if (z.avail_in == 0) {
            const std::size_t want = left < sizeof in ? left : sizeof in;
            const std::size_t got = want ? std::fread(in, 1, want, s) : 0;
            if (got == 0) break;
            left -= static_cast<uint32_t>(got);
            z.next_in = in;
            z.avail_in = static_cast<uInt>(got);
        }
        z.next_out = chunk;
        z.avail_out = sizeof chunk;
        status = inflate(&z, Z_NO_FLUSH);
        if (status != Z_OK && status != Z_STREAM_END) break;
        const std::size_t produced = sizeof chunk - z.avail_out;
        out.insert(out.end(), chunk, chunk + (produced < limit - out.size() ? produced : limit - out.size()));
    }
    inflateEnd(&z);
    return out;
}

int read_element(reader& r, Mm& var, std::string& found_name);

// A compressed element: the stream after the tag holds `bytes` of zlib data whose inflated form
// is one matrix element.
int read_compressed(reader& r, long start, uint32_t bytes, Mm& var, std::string& found_name) {
    std::vector<unsigned char> data = inflate_element(r.s, bytes, static_cast<std::size_t>(-1) / 2);
    std::fseek(r.s, start + 8 + static_cast<long>(bytes), SEEK_SET);
    if (data.size() < 8) {
        error("load: '%s' could not read data set", r.file);
        var = x_M;
        return 1;
    }
    std::FILE* memory = fmemopen(data.data(), data.size(), "rb");
    if (!memory) {
        error("Out of memory!");
        var = x_M;
        return 1;
    }
    reader inner{r.file, memory, static_cast<long>(data.size()), r.depth + 1};
    int result;
    try {
        result = read_element(inner, var, found_name);
    } catch (...) {
        std::fclose(memory);
        throw;
    }
    std::fclose(memory);
    return result;
}

Mm* elements(const Mm& m) { return static_cast<Mm*>(m.pr); }

// The field names and then the values of a structure or object of count elements.
bool read_struct(reader& r, Mm& m, int count, bool swap, long element_end) {
    seek_to_8(r.s);
    // A structure written without fields ends here.
    if (std::ftell(r.s) >= element_end) {
        m.extend_nfields(8);
        for (int k = 0; k < count; ++k) elements(m)[k] = Mm(0, 0, 0, 1, 0, ak_mm);
        return true;
    }
    // The length of each name, then the names, each as a tag (small or long) and its data.
    uint32_t type, bytes, length = 0, total = 0;
    if (!read_tag(r.s, swap, type, bytes) || !read_words(r.s, &length, 1, swap) || length == 0) {
        error("load5: could not read field name from '%s'", r.file);
        return false;
    }
    seek_to_8(r.s);
    if (!read_tag(r.s, swap, type, total)) {
        error("load5: could not read field name from '%s'", r.file);
        return false;
    }
    const long long nf = total / length;
    if (nf * length > r.left() || nf > INT_MAX || (nf > 0 && count > r.left() / 8 / nf)) {
        error("load5: could not read field name from '%s'", r.file);
        return false;
    }
    // The buffer is taken only for names that are there: the length word alone may be anything.
    std::vector<char> name(nf > 0 ? static_cast<std::size_t>(length) + 1 : 1);
    m.extend_nfields(nf > 8 ? static_cast<int>(nf) : 8);
    for (long long f = 0; f < nf; ++f) {
        if (std::fread(name.data(), 1, length, r.s) != length) {
            error("load5: could not read field name from '%s'", r.file);
            return false;
        }
        name[length] = 0;
        m.addfield(name.data(), 1);
    }
    for (int k = 0; k < count; ++k) {
        Mm element(0, 0, 0, 1, static_cast<int>(nf), ak_mm);
        for (int f = 0; f < nf; ++f) {
            seek_to_8(r.s);
            Mm value;
            std::string ignored;
            if (read_element(r, value, ignored)) return false;
            elements(element)[f] = value;
        }
        elements(m)[k] = element;
    }
    return true;
}

// The row and column lists of a sparse element, checked to describe entries inside the matrix.
// A negative entry count (the last column start) is let through, for its own message.
bool read_sparse_lists(reader& r, uint32_t nzmax, int rows, int cols, bool swap, std::vector<int>& ir,
                       std::vector<int>& jc) {
    if (nzmax > static_cast<uint32_t>(r.left() / 4) || cols > r.left() / 4) return false;
    ir.assign(static_cast<std::size_t>(nzmax) + 1, 0);
    jc.assign(static_cast<std::size_t>(cols) + 2, 0);
    if (nzmax != 0 && !read_int_block(r, ir, static_cast<int>(nzmax), swap)) return false;
    if (!read_int_block(r, jc, cols + 1, swap)) return false;
    if (jc[cols] < 0) return true;
    if (jc[0] != 0) return false;
    for (int c = 0; c < cols; ++c)
        if (jc[c + 1] < jc[c]) return false;
    if (jc[cols] > static_cast<long long>(nzmax)) return false;
    for (int k = 0; k < jc[cols]; ++k)
        if (ir[k] < 0 || ir[k] >= rows) return false;
    return true;
}

ak_matrix_types type_of_class(int cls, const char* file) {
    switch (cls) {
        case 1: case 2: case 3:
            return ak_mm;
        case 4: case 5: case 6:
        case 7: case 8: case 10: case 11: case 12: case 13: case 14: case 15:  // single and the integers
            return ak_double;
        case 9:
            return ak_uchar;
        case 0:
            return ak_no_type;
    }
    error("load5: '%s' unrecognized matrix type", file);
    return ak_no_type;
}

int fail(reader& r, Mm& var) {
    error("load: '%s' could not read data set", r.file);
    var = x_M;
    return 1;
}

int read_element(reader& r, Mm& var, std::string& found_name) {
    found_name.clear();
    if (r.depth > max_depth) return fail(r, var);
    const long start = std::ftell(r.s);
    uint32_t w[8];
    if (!read_words(r.s, w, 2, false)) {
        error("load5: '%s' could not read header", r.file);
        var = nop_M;
        return 1;
    }
    const bool swap = w[0] > 0x10000;
    if (swap) swap_bytes(w, 2, 4);
    if (w[0] == mi_compressed && w[1] != 0) return read_compressed(r, start, w[1], var, found_name);
    if (w[1] == 0) {
        var = Mm(0, 0, 0, 0, 0, ak_double);
        return 0;
    }
    if (!read_words(r.s, w + 2, 6, swap)) {
        error("load5: '%s' could not read header", r.file);
        var = nop_M;
        return 1;
    }
    const long element_end = start + 8 + static_cast<long>(w[1]);
    int nd = static_cast<int>(w[7] / 4);
    if (nd > 4) {
        error("load5: Can not read matrix from file '%s' which has more then %s dimensions.", r.file, "4");
        var = x_M;
        return 1;
    }
    int dims[4] = {1, 1, 1, 1};
    for (int d = 0; d < nd; ++d) {
        double v;
        if (read_elements(&v, 1, r.s, 2, swap) != 1) {
            error("loadv5: file '%s' ended prematurely.", r.file);
            var = x_M;
            return 1;
        }
        dims[d] = static_cast<int>(v);
    }
    if (nd == 0) dims[0] = dims[1] = dims[2] = dims[3] = 0;
    if (nd < 2) nd = 2;
    const uint32_t flags = w[4], nzmax = w[5];
    const int complex = (flags >> 11) & 1, logical = (flags >> 9) & 1, cls = flags & 0xff;
    const bool sparse = cls == 5;

    char name[256];
    if (!read_name(r, swap, name, 255)) {
        var = x_M;
        return 1;
    }
    found_name = name;

    long long count = 1;
    for (int d = 0; d < nd; ++d) {
        if (dims[d] < 0) return fail(r, var);
        count *= dims[d];
        if (count > INT_MAX) count = static_cast<long long>(INT_MAX) + 1;  // too many in any case
    }
    std::vector<int> ir, jc;
    int nnz = 0;
    if (sparse) {
        if (nd != 2 || !read_sparse_lists(r, nzmax, dims[0], dims[1], swap, ir, jc)) return fail(r, var);
        nnz = jc[dims[1]];
    } else {
        // Every element takes at least a byte of the file, and a cell or structure element at least 8.
        const long left = r.left();
        if (count > INT_MAX || count * (complex ? 2 : 1) > left) {
            const bool holds_data = !(cls == 1 || cls == 2 || cls == 3 || cls == 0);
            if (holds_data || count > left / 8 + 64) return fail(r, var);
        }
    }
    if (nnz < 0) {
        error("load5: '%s' contained sparse matrix with negative nnz", r.file);
        var = x_M;
        return 1;
    }
    const ak_matrix_types type = type_of_class(cls, r.file);
    Mm m = type == ak_no_type ? Mm(i_o, nullptr, 0) : Mm(complex, sparse, nnz, nd, dims, type);
    m.setstr(0);
    m.setlogical(logical);
    if (sparse && nnz > 0) {
        setIrJc(m, ir.data(), jc.data());
        m.sort();
        for (int k = 1; k < nnz; ++k)
            if (m.index[k] <= m.index[k - 1]) return fail(r, var);  // two entries in one place
    }
    const int n = type == ak_no_type ? 0 : sparse ? nnz : m.size();

    bool ok = true;
    switch (cls) {
        case 1: {
            reader inner = r;
            inner.depth = r.depth + 1;
            for (int k = 0; k < n && ok; ++k) {
                seek_to_8(r.s);
                Mm value;
                std::string ignored;
                ok = read_element(inner, value, ignored) == 0;
                elements(m)[k] = value;
            }
            if (!ok) {
                var = x_M;
                return 1;
            }
            break;
        }
        case 3:
        case 2: {
            if (cls == 3) {
                char class_name[256];
                if (!read_name(r, swap, class_name, 255)) {
                    var = x_M;
                    return 1;
                }
                m.setclassid(class_id_of_name(class_name));
            }
            reader inner = r;
            inner.depth = r.depth + 1;
            if (!read_struct(inner, m, n, swap, element_end)) {
                var = x_M;
                return 1;
            }
            break;
        }
        case 4:
            m.setstr(1);
            // fall through
        case 5: case 6:
        case 7: case 8: case 10: case 11: case 12: case 13: case 14: case 15:
            if (n != 0) ok = read_block(r, m.addr(), n, swap) && (!complex || read_block(r, m.addi(), n, swap));
            break;
        case 9:
            if (n != 0)
                ok = read_byte_block(r, static_cast<unsigned char*>(m.pr), n, swap) &&
                     (!complex || read_byte_block(r, static_cast<unsigned char*>(m.pi), n, swap));
            break;
        default:
            break;
    }
    if (!ok) return fail(r, var);

    std::fseek(r.s, element_end, SEEK_SET);
    seek_to_8(r.s);
    if (sparse) m.resparse();
    var = m;
    return 0;
}

}  // namespace

int load5_element(const char* file, std::FILE* stream, Mm& var, std::string& name) {
    reader r{file, stream, stream_end(stream), 0};
    return read_element(r, var, name);
}

int load5_read(const char* file, std::FILE* stream, Mm& var) {
    std::string name;
    const int result = load5_element(file, stream, var, name);
    if (result == 0 && var.name && !name.empty()) {
        const std::size_t shorter = std::min(std::strlen(var.name), name.size());
        if (std::strncmp(var.name, name.c_str(), shorter) != 0)
            warning("load5: '%s': variable named '%s' loaded into '%s'", file, name.c_str(), var.name);
    }
    return result;
}

void load5_name(std::FILE* stream, char* buffer, int size) {
    if (size > 0) buffer[0] = 0;
    const long start = std::ftell(stream);
    uint32_t w[8];
    if (!read_words(stream, w, 2, false)) return;
    const bool swap = w[0] > 65536;
    if (swap) swap_bytes(w, 2, 4);
    if (w[0] == mi_compressed) {
        // The name sits near the start of the inflated element.
        std::vector<unsigned char> head = inflate_element(stream, w[1], 512);
        std::fseek(stream, start + 8 + static_cast<long>(w[1]), SEEK_SET);
        if (head.size() < 8) return;
        if (std::FILE* memory = fmemopen(head.data(), head.size(), "rb")) {
            load5_name(memory, buffer, size);
            std::fclose(memory);
        }
        return;
    }
    if (!read_words(stream, w + 2, 6, swap)) return;
    std::fseek(stream, static_cast<long>(w[7] & ~3u), SEEK_CUR);
    seek_to_8(stream);
    uint32_t type, bytes;
    if (read_tag(stream, swap, type, bytes) && size > 0) {
        const std::size_t take = std::min<std::size_t>(bytes, static_cast<std::size_t>(size - 1));
        if (take && std::fread(buffer, 1, take, stream) != take)
            buffer[0] = 0;
        else
            buffer[take] = 0;
    }
    std::fseek(stream, start + 8 + static_cast<long>(w[1]), SEEK_SET);
    seek_to_8(stream);
}

int load5_find(const char* file, std::FILE* stream, Mm& var) {
    if (!var.name) {
        error("Could not load unnamed variable from file '%s'", file);
        return 1;
    }
    if (std::strcmp(var.name, "ans") == 0 || std::strcmp(var.name, "ans_") == 0) return 0;
    const char* wanted = var.name;
    if (std::strcmp(wanted, "i_") == 0) wanted = "i";
    if (std::strcmp(wanted, "j_") == 0) wanted = "j";
    std::fseek(stream, 128, SEEK_SET);
    const long end = stream_end(stream);
    for (;;) {
        const long at = std::ftell(stream);
        if (at < 0 || at >= end) return 1;
        char name[256];
        load5_name(stream, name, sizeof name);
        if (name[0] == 0) return 1;
        if (std::strcmp(name, wanted) == 0) {
            std::fseek(stream, at, SEEK_SET);
            return load5_read(file, stream, var);
        }
        // A damaged size word that does not move the stream on ends the search.
        if (std::ftell(stream) <= at) return 1;
    }
}

}  // namespace ak_internal
