// The precision table and the element codecs: doubles to and from the elements of a file, in either
// byte order, converted in bulk through a work buffer.
#include <cmath>
#include <cstring>
#include <memory>
#include <new>

#include "arklib/error.h"
#include "io/file_internal.h"

namespace ak_internal {

namespace {

struct precision_group {
    int code;
    int size;
    const char* names[7];
};

// Tried in this order; the first match wins.
const precision_group precision_groups[] = {
    {9, 8, {"integer*8", "int64"}},
    {10, 8, {"uint64"}},
    {2, 4, {"long", "int", "integer*4", "int32"}},
    {7, 4, {"unsigned long", "unsigned int", "ulong", "uint", "uint32"}},
    {3, 2, {"short", "int16", "integer*2"}},
    {4, 2, {"ushort", "unsigned short", "uint16"}},
    {8, 1, {"char", "char*1", "int8", "schar", "signed char", "integer*1"}},
    {5, 1, {"uchar", "unsigned char", "uint8"}},
    {0, 8, {"double", "float64", "real*8", "adouble"}},
    {6, 8, {"long double", "float80", "real*10"}},
    {1, 4, {"float", "float32", "real*4"}},
};

const double two_32 = std::pow(2.0, 32.0);

inline uint16_t swap16(uint16_t v) { return __builtin_bswap16(v); }
inline uint32_t swap32(uint32_t v) { return __builtin_bswap32(v); }
inline uint64_t swap64(uint64_t v) { return __builtin_bswap64(v); }

// Element type T stored as the unsigned word U of the same size. The swap test sits outside the
// loops so that each loop is a straight conversion the compiler can vectorise.
template <typename T, typename U, U (*Swap)(U)>
void decode_as(double* dest, const unsigned char* src, int count, bool swap) {
    if (swap) {
        for (int k = 0; k < count; ++k) {
            U u;
            std::memcpy(&u, src + k * sizeof(U), sizeof(U));
            u = Swap(u);
            T v;
            std::memcpy(&v, &u, sizeof(T));
            dest[k] = static_cast<double>(v);
        }
    } else {
        for (int k = 0; k < count; ++k) {
            T v;
            std::memcpy(&v, src + k * sizeof(T), sizeof(T));
            dest[k] = static_cast<double>(v);
        }
    }
}

void decode_bytes(double* dest, const unsigned char* src, int count, bool is_signed) {
    if (is_signed)
        for (int k = 0; k < count; ++k) dest[k] = static_cast<signed char>(src[k]);
    else
        for (int k = 0; k < count; ++k) dest[k] = src[k];
}

void decode_64(double* dest, const unsigned char* src, int count, bool swap) {
    for (int k = 0; k < count; ++k) {
        uint64_t u;
        std::memcpy(&u, src + 8 * k, 8);
        if (swap) u = swap64(u);
        // The element as two unsigned halves, low word first.
        dest[k] = static_cast<double>(static_cast<uint32_t>(u >> 32)) * two_32 + static_cast<uint32_t>(u);
    }
}

template <typename U, U (*Swap)(U)>
void put_word(unsigned char* dst, U u, bool swap) {
    if (swap) u = Swap(u);
    std::memcpy(dst, &u, sizeof(U));
}

// The 8-byte unit of codes 9 and 10: the low word, then the high word.
uint64_t split_64(double x) {
    double h = std::floor(x / two_32);
    uint32_t low = static_cast<uint32_t>(truncate64(x - h * two_32));
    uint32_t high = static_cast<uint32_t>(truncate64(x / two_32));
    return static_cast<uint64_t>(high) << 32 | low;
}

void encode_one(unsigned char* dst, double x, int code, bool swap) {
    switch (code) {
        case 1: {
            float f = static_cast<float>(x);
            uint32_t u;
            std::memcpy(&u, &f, 4);
            put_word<uint32_t, swap32>(dst, u, swap);
            break;
        }
        case 2:
        case 7:
            put_word<uint32_t, swap32>(dst, static_cast<uint32_t>(truncate64(x)), swap);
            break;
        case 3:
        case 4:
            put_word<uint16_t, swap16>(dst, static_cast<uint16_t>(truncate64(x)), swap);
            break;
        case 5:
        case 8:
            *dst = static_cast<unsigned char>(truncate64(x));
            break;
        case 9:
        case 10:
            put_word<uint64_t, swap64>(dst, split_64(x), swap);
            break;
        default: {  // 0, 6 and anything else: the double itself
            uint64_t u;
            std::memcpy(&u, &x, 8);
            put_word<uint64_t, swap64>(dst, u, swap);
            break;
        }
    }
}

// Elements per pass through the work buffer of the bulk reader and writer.
constexpr int chunk_elements = 1 << 15;

}  // namespace

int precision_code(const char* name, int* size) {
    for (const precision_group& g : precision_groups)
        for (const char* n : g.names)
            if (n && std::strcmp(n, name) == 0) {
                if (size) *size = g.size;
                return g.code;
            }
    error("fileio: unknown precision %s", name);
    if (size) *size = 8;
    return 0;
}

int precision_size(int code) {
    switch (code) {
        case 1:
        case 2:
        case 7:
            return 4;
        case 3:
        case 4:
            return 2;
        case 5:
        case 8:
            return 1;
        default:
            return 8;
    }
}

int64_t truncate64(double v) {
    if (!(v > -9223372036854775808.0 && v < 9223372036854775808.0)) return INT64_MIN;
    return static_cast<int64_t>(v);
}

void swap_bytes(void* data, int count, int size) {
    auto* p = static_cast<unsigned char*>(data);
    for (int k = 0; k < count; ++k, p += size) {
        if (size == 2) {
            uint16_t u;
            std::memcpy(&u, p, 2);
            u = swap16(u);
            std::memcpy(p, &u, 2);
        } else if (size == 4) {
            uint32_t u;
            std::memcpy(&u, p, 4);
            u = swap32(u);
            std::memcpy(p, &u, 4);
        } else if (size == 8) {
            uint64_t u;
            std::memcpy(&u, p, 8);
            u = swap64(u);
            std::memcpy(p, &u, 8);
        }
    }
}

void decode_elements(double* dest, const void* src, int count, int code, bool swap) {
    const auto* s = static_cast<const unsigned char*>(src);
    switch (code) {
        case 1:
            decode_as<float, uint32_t, swap32>(dest, s, count, swap);
            break;
        case 2:
            decode_as<int32_t, uint32_t, swap32>(dest, s, count, swap);
            break;
        case 7:
            decode_as<uint32_t, uint32_t, swap32>(dest, s, count, swap);
            break;
        case 3:
            decode_as<int16_t, uint16_t, swap16>(dest, s, count, swap);
            break;
        case 4:
            decode_as<uint16_t, uint16_t, swap16>(dest, s, count, swap);
            break;
        case 5:
        case 8:
            decode_bytes(dest, s, count, code == 8);
            break;
        case 9:
        case 10:
            decode_64(dest, s, count, swap);
            break;
        default:
            decode_as<double, uint64_t, swap64>(dest, s, count, swap);
            break;
    }
}

void encode_elements(void* dst, const double* src, int count, int code, bool swap) {
    auto* d = static_cast<unsigned char*>(dst);
    int size = precision_size(code);
    if (size == 8 && code != 9 && code != 10) {  // 0, 6 and unknown codes: doubles
        std::memcpy(d, src, static_cast<size_t>(count) * 8);
        if (swap) swap_bytes(d, count, 8);
        return;
    }
    for (int k = 0; k < count; ++k) encode_one(d + static_cast<size_t>(k) * size, src[k], code, swap);
}

namespace {

// Runs step(work, done, want) over count elements of `size` bytes, a chunk at a time through one
// work buffer; step gives how many it moved, and a short step ends the run. Gives the total moved.
template <class Step>
int in_chunks(int count, int size, Step step) {
    const int chunk = count < chunk_elements ? count : chunk_elements;
    std::unique_ptr<unsigned char[]> work(new (std::nothrow) unsigned char[static_cast<size_t>(chunk) * size]);
    if (!work) {
        error("Out of memory!");
        return 0;
    }
    int done = 0;
    while (done < count) {
        const int want = count - done < chunk ? count - done : chunk;
        const int moved = step(work.get(), done, want);
        done += moved;
        if (moved < want) break;
    }
    return done;
}

}  // namespace

int read_elements(double* dest, int count, std::FILE* stream, int code, bool swap) {
    if (count < 1 || !stream) return 0;
    int size = precision_size(code);
    bool plain_double = size == 8 && code != 9 && code != 10;
    if (plain_double && !swap) return static_cast<int>(std::fread(dest, 8, count, stream));
    return in_chunks(count, size, [&](unsigned char* work, int done, int want) {
        int got = static_cast<int>(std::fread(work, size, want, stream));
        decode_elements(dest + done, work, got, code, swap);
        return got;
    });
}

int write_element(double value, std::FILE* stream, int code, bool swap) {
    if (code == -1) return -1;
    unsigned char unit[8];
    encode_one(unit, value, code, swap);
    return static_cast<int>(std::fwrite(unit, precision_size(code), 1, stream));
}

int write_elements(const double* src, int count, std::FILE* stream, int code, bool swap) {
    if (count < 1 || !stream || code == -1) return 0;
    int size = precision_size(code);
    bool plain_double = size == 8 && code != 9 && code != 10;
    if (plain_double && !swap) return static_cast<int>(std::fwrite(src, 8, count, stream));
    return in_chunks(count, size, [&](unsigned char* work, int done, int want) {
        encode_elements(work, src + done, want, code, swap);
        return static_cast<int>(std::fwrite(work, size, want, stream));
    });
}

}  // namespace ak_internal
