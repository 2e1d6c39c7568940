// The level-5 MAT-file writer: the 128-byte header, then one matrix element per variable, each
// starting on a multiple of 8, with cells and structures written as elements inside elements.
#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include "arklib/cells.h"
#include "arklib/sparse.h"
#include "io/file_internal.h"
#include "io/matfile_internal.h"

namespace ak_internal {

namespace {

// The name given to unnamed elements (cell and structure contents): A to Z, '[', a to z, '{', and
// round again. It lives across the variables of one file.
unsigned char anonymous_counter = 0;

const char* anonymous_name(char* text) {
    unsigned char& c = anonymous_counter;
    if (c == 0 || c == '{')
        c = 'A';
    else if (c == '[')
        c = 'a';
    else
        ++c;
    text[0] = static_cast<char>(c);
    text[1] = 0;
    return text;
}

constexpr uint32_t mi_int8 = 1, mi_uint8 = 2, mi_uint16 = 4, mi_int32 = 5, mi_double = 9, mi_matrix = 14,
                   mi_compressed = 15;
constexpr int class_cell = 1, class_struct = 2, class_object = 3, class_char = 4, class_sparse = 5,
              class_double = 6, class_uint8 = 9;

bool pad(std::FILE* stream) {
    static const char zeros[8] = {};
    const long at = std::ftell(stream);
    if (at < 0) return false;
    const long n = (8 - at % 8) % 8;
    return n == 0 || std::fwrite(zeros, 1, static_cast<std::size_t>(n), stream) == static_cast<std::size_t>(n);
}

// A tag: the small form (two 16-bit halves) below 5 bytes, else two 32-bit words.
bool write_tag(std::FILE* stream, uint32_t type, uint32_t bytes) {
    if (bytes < 5) {
        const uint16_t h[2] = {static_cast<uint16_t>(type), static_cast<uint16_t>(bytes)};
        return std::fwrite(h, 2, 2, stream) == 2;
    }
    const uint32_t w[2] = {type, bytes};
    return std::fwrite(w, 4, 2, stream) == 2;
}

bool write_word(std::FILE* stream, uint32_t v) { return std::fwrite(&v, 4, 1, stream) == 1; }

// A text element (a name): padded, tagged, the characters without a NUL.
bool write_text(std::FILE* stream, const char* text) {
    const std::size_t n = std::strlen(text);
    return pad(stream) && write_tag(stream, mi_int8, static_cast<uint32_t>(n)) &&
           (n == 0 || std::fwrite(text, 1, n, stream) == n);
}

int class_of(const Mm& m) {
    if (m.flags.sparse) return class_sparse;
    if (m.flags.str) return class_char;
    switch (m.flags.type) {
        case ak_uchar:
            return class_uint8;
        case ak_mm:
            return m.fields ? (m.classid > 0 ? class_object : class_struct) : class_cell;
        default:
            return class_double;
    }
}

bool write_doubles(std::FILE* stream, const double* v, int n) {
    return pad(stream) && write_tag(stream, mi_double, static_cast<uint32_t>(8 * n)) &&
           (n == 0 || std::fwrite(v, 8, static_cast<std::size_t>(n), stream) == static_cast<std::size_t>(n));
}

bool write_bytes(std::FILE* stream, const unsigned char* v, int n) {
    return pad(stream) && write_tag(stream, mi_uint8, static_cast<uint32_t>(n)) &&
           (n == 0 || std::fwrite(v, 1, static_cast<std::size_t>(n), stream) == static_cast<std::size_t>(n));
}

bool write_ints(std::FILE* stream, const int* v, int n) {
    return pad(stream) && write_tag(stream, mi_int32, static_cast<uint32_t>(4 * n)) &&
           (n == 0 || std::fwrite(v, 4, static_cast<std::size_t>(n), stream) == static_cast<std::size_t>(n));
}

bool write_chars(std::FILE* stream, const Mm& m) {
    const int n = m.size();
    std::vector<uint16_t> text;
    try {
        text.resize(static_cast<std::size_t>(n));
    } catch (const std::bad_alloc&) {
        error("Out of memory!");
        return false;
    }
    for (int k = 0; k < n; ++k) text[k] = static_cast<uint16_t>(truncate64(m.addr()[k]));
    return pad(stream) && write_tag(stream, mi_uint16, static_cast<uint32_t>(2 * n)) &&
           (n == 0 || std::fwrite(text.data(), 2, text.size(), stream) == text.size());
}

bool write_sparse(std::FILE* stream, const Mm& m, int nzmax) {
    int* ir = getIr(m);
    int* jc = getJc(m);
    bool ok = ir && jc;
    if (ok) {
        // The row list of a matrix without entries still holds nzmax (1) words.
        std::vector<int> rows(static_cast<std::size_t>(nzmax), 0);
        std::memcpy(rows.data(), ir, sizeof(int) * static_cast<std::size_t>(m.nnz));
        std::vector<int> starts(jc, jc + m.cols() + 1);
        freeIrJc(ir, jc);
        ir = jc = nullptr;
        ok = write_ints(stream, rows.data(), nzmax) && write_ints(stream, starts.data(), m.cols() + 1) &&
             write_doubles(stream, m.addr(), m.nnz) && (!m.pi || write_doubles(stream, m.addi(), m.nnz));
    }
    freeIrJc(ir, jc);
    return ok;
}

// The contents of a cell, structure or object, element by element.
void write_contents(const char* file, std::FILE* stream, const Mm& m) {
    const Mm* e = static_cast<const Mm*>(m.pr);
    if (!m.fields) {
        for (int k = 0; k < m.nnz; ++k) {
            pad(stream);
            save5_write(file, stream, e[k]);
        }
        return;
    }
    static const Mm empty_field;
    for (int k = 0; k < m.nnz; ++k) {
        const Mm& element = e[k];
        for (int f = 0; f < m.nfields; ++f) {
            pad(stream);
            const bool held = element.flags.type == ak_mm && f < element.nnz;
            Mm value = held ? static_cast<const Mm*>(element.pr)[f] : Mm();
            save5_write(file, stream, value);
        }
    }
}

bool write_data(const char* file, std::FILE* stream, const Mm& m, int cls, int nzmax) {
    switch (cls) {
        case class_sparse:
            return write_sparse(stream, m, nzmax);
        case class_char:
            return write_chars(stream, m);
        case class_uint8:
            return write_bytes(stream, static_cast<const unsigned char*>(m.pr), m.nnz) &&
                   (!m.pi || write_bytes(stream, static_cast<const unsigned char*>(m.pi), m.nnz));
        case class_cell:
        case class_struct:
        case class_object:
            write_contents(file, stream, m);
            return true;
        default:
            if (m.flags.type == ak_no_type) {
                m.warn_uninit();
                return true;
            }
            return write_doubles(stream, m.addr(), m.nnz) && (!m.pi || write_doubles(stream, m.addi(), m.nnz));
    }
}

}  // namespace

void save5_reset_names() { anonymous_counter = 0; }

void save5_write_header(std::FILE* stream, const char* file_name) {
    char text[125];
    std::memset(text, 0, sizeof text);
    std::snprintf(text, sizeof text, "MATVEX %3.1f MAT-file, Platform: GLNXA64, Created on: ", 4.51);
    char when[64] = "";
    const std::time_t now = std::time(nullptr);
    if (const std::tm* t = std::localtime(&now)) std::strftime(when, sizeof when, "%a %b %d %H:%M:%S %Y", t);
    std::strncat(text, when, sizeof text - 1 - std::strlen(text));
    for (std::size_t k = std::strlen(text); k < 124; ++k) text[k] = ' ';
    const bool ok = std::fwrite(text, 1, 124, stream) == 124 && write_element(256, stream, 4, false) == 1 &&
                    write_element(19785, stream, 4, false) == 1;
    if (!ok) error("savev5: could not write file '%s'.", file_name);
    save5_reset_names();
}

std::FILE* save5_header(const char* file, std::string& name_buffer) {
    name_buffer = mat_add_extension(std::string(file).substr(0, 2048));
    std::FILE* stream = std::fopen(name_buffer.c_str(), "wb");
    if (!stream) {
        error("save: %s could not be created", name_buffer.c_str());
        return nullptr;
    }
    save5_write_header(stream, name_buffer.c_str());
    return stream;
}

void save5_write(const char* file, std::FILE* stream, const Mm& m) {
    m.warn_uninit();
    const int cls = class_of(m);
    uint32_t flags = static_cast<uint32_t>(cls);
    if (m.flags.logical) flags |= 0x0200;
    if (m.pi) flags |= 0x0800;
    const int nzmax = m.flags.sparse ? (m.nnz > 0 ? m.nnz : 1) : 0;
    char anonymous[2];
    const char* name = m.name ? m.name : anonymous_name(anonymous);

    const long start = std::ftell(stream);
    const int nd = m.ndims >= 2 && m.ndims <= 4 ? m.ndims : 2;
    const uint32_t head[8] = {mi_matrix, 0, 6, 8, flags, static_cast<uint32_t>(nzmax), mi_int32,
                              static_cast<uint32_t>(nd * 4)};
    if (std::fwrite(head, 4, 8, stream) != 8) {
        error("save5: '%s' could not write header", file);
        return;
    }
    for (int d = 0; d < nd; ++d)
        if (write_element(m.dims[d], stream, 2, false) != 1) error("savev5: could not write file '%s'.", file);
    if (!write_text(stream, name)) {
        error("save5: could not save name to file '%s'", file);
        return;
    }
    if (m.fields && m.nfields > 0) {
        bool ok = true;
        if (m.classid > 0) {
            const char* class_name = class_name_of_id(m.classid);
            ok = write_text(stream, class_name ? class_name : "");
        }
        ok = ok && pad(stream) && write_word(stream, 0x00040005) && write_word(stream, 32) && write_word(stream, 1) &&
             write_word(stream, static_cast<uint32_t>(32 * m.nfields));
        if (!ok) error("savev5: could not write file '%s'.", file);
        for (int f = 0; f < m.nfields; ++f) {
            // Zero-padded to 32 bytes; a name of 32 or more characters keeps no NUL.
            char field[32] = {};
            std::memcpy(field, m.fields[f], std::min<std::size_t>(std::strlen(m.fields[f]), sizeof field));
            if (std::fwrite(field, 1, 32, stream) != 32) error("save5: could not save field name in file '%s'", file);
        }
    }
    if (!write_data(file, stream, m, cls, nzmax)) error("load: '%s' could not write data set", file);

    pad(stream);
    const long end = std::ftell(stream);
    std::fseek(stream, start + 4, SEEK_SET);
    const uint32_t size = static_cast<uint32_t>(end - start - 8);
    std::fwrite(&size, 4, 1, stream);
    std::fseek(stream, end, SEEK_SET);
}

void save5_write_compressed(const char* file, std::FILE* stream, const Mm& m) {
    char* buffer = nullptr;
    std::size_t length = 0;
    std::FILE* memory = open_memstream(&buffer, &length);
    if (!memory) {
        error("Out of memory!");
        return;
    }
    try {
        save5_write(file, memory, m);
    } catch (...) {
        std::fclose(memory);
        std::free(buffer);
        throw;
    }
    std::fclose(memory);
    uLongf packed_size = compressBound(static_cast<uLong>(length));
    std::vector<unsigned char> packed;
    try {
        packed.resize(packed_size);
    } catch (const std::bad_alloc&) {
        std::free(buffer);
        error("Out of memory!");
        return;
    }
    const int z = compress2(packed.data(), &packed_size, reinterpret_cast<const Bytef*>(buffer),
                            static_cast<uLong>(length), Z_DEFAULT_COMPRESSION);
    std::free(buffer);
    if (z != Z_OK) {
        error("load: '%s' could not write data set", file);
        return;
    }
    // The zero bytes that bring the element to a multiple of 8 are counted in it: a reader that
    // inflates the stream ignores them, and the next element starts aligned.
    const std::size_t filler = (8 - packed_size % 8) % 8;
    packed.resize(packed_size + filler, 0);
    const bool ok = pad(stream) && write_word(stream, mi_compressed) &&
                    write_word(stream, static_cast<uint32_t>(packed.size())) &&
                    std::fwrite(packed.data(), 1, packed.size(), stream) == packed.size();
    if (!ok) error("load: '%s' could not write data set", file);
}

}  // namespace ak_internal
