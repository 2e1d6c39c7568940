// Opening data files and telling their kinds apart, walking their variables by name, and the
// blocked element reader that the MAT-file readers share.
#include <algorithm>
#include <cctype>
#include <cstring>
#include <string>

#include "arklib/hooks.h"
#include "io/file_internal.h"
#include "io/matfile_internal.h"

namespace ak_internal {

std::string mat_add_extension(const std::string& name) {
    return name.find('.') == std::string::npos ? name + ".mat" : name;
}

long stream_end(std::FILE* stream) {
    const long here = std::ftell(stream);
    if (here < 0 || std::fseek(stream, 0, SEEK_END) != 0) return -1;
    const long end = std::ftell(stream);
    std::fseek(stream, here, SEEK_SET);
    return end;
}

long stream_left(std::FILE* stream) {
    const long here = std::ftell(stream);
    const long end = stream_end(stream);
    return (here < 0 || end < here) ? 0 : end - here;
}

namespace {

std::FILE* open_along_path(ak_path_t* path, const std::string& with_extension, const char* bare) {
    for (const char* candidate : {with_extension.c_str(), bare}) {
        if (const char* dir = path->find(path, candidate, 0)) {
            const std::string full = std::string(dir) + candidate;
            if (std::FILE* f = std::fopen(full.c_str(), "rb")) return f;
        }
    }
    return nullptr;
}

std::FILE* open_direct(const std::string& with_extension, const char* bare) {
    if (std::FILE* f = std::fopen(with_extension.c_str(), "rb")) return f;
    return std::fopen(bare, "rb");
}

// The HDF5-based container: a header of version 0x0200, or the HDF5 signature at offset 512.
bool is_hdf5_container(std::FILE* f, const unsigned char* header, std::size_t got) {
    if (got == 128 && ((header[124] == 0 && header[125] == 2) || (header[124] == 2 && header[125] == 0))) return true;
    unsigned char signature[8];
    static const unsigned char hdf5[8] = {0x89, 'H', 'D', 'F', '\r', '\n', 0x1a, '\n'};
    const bool found = std::fseek(f, 512, SEEK_SET) == 0 && std::fread(signature, 1, 8, f) == 8 &&
                       std::memcmp(signature, hdf5, 8) == 0;
    std::fseek(f, 128, SEEK_SET);
    return found;
}

}  // namespace

std::FILE* mat_open(void* path_object, const char* name, int* kind) {
    const std::string copy = mat_add_extension(name);
    std::FILE* f = nullptr;
    if (path_object) f = open_along_path(static_cast<ak_path_t*>(path_object), copy, name);
    // A name the path does not hold (an absolute path, or a file written just now in the current
    // directory) still opens as given.
    if (!f) f = open_direct(copy, name);
    if (!f) return nullptr;

    std::fseek(f, 0, SEEK_SET);
    unsigned char buffer[128];
    std::memset(buffer, ' ', 124);
    const std::size_t got = std::fread(buffer, 1, 128, f);
    if (got >= 3 && std::memcmp(buffer, "MAT", 3) == 0) {
        *kind = is_hdf5_container(f, buffer, got) ? mat_kind_hdf5 : mat_kind_v5;
        std::fseek(f, 128, SEEK_SET);
        return f;
    }
    std::fseek(f, 0, SEEK_SET);
    *kind = mat_kind_text;
    for (int k = 0; k < 32; ++k)
        if (!std::isprint(buffer[k]) && !std::isspace(buffer[k])) *kind = mat_kind_v4;
    return f;
}

void mat_variable_name(std::FILE* stream, const char* file_name, int kind, char* buffer, int size) {
    if (!stream) {
        if (size > 0) buffer[0] = 0;
        return;
    }
    if (kind == mat_kind_v5) {
        load5_name(stream, buffer, size);
        return;
    }
    if (kind == mat_kind_text) {
        if (size > 0 && buffer[0] == 0) {
            std::snprintf(buffer, static_cast<std::size_t>(size), "%s", text_variable_name(file_name).c_str());
        } else if (size > 0) {
            buffer[0] = 0;
        }
        return;
    }
    // A level-4 record: its header, its name, then a seek over its data.
    if (size > 0) buffer[0] = 0;
    int32_t h[5];
    if (std::fread(h, 4, 5, stream) != 5) return;
    if (h[0] >= 10000 || h[0] < 0) swap_bytes(h, 5, 4);
    const int p = (h[0] / 10) % 10;
    const int element = p == 0 ? 8 : (p == 1 || p == 2) ? 4 : (p == 3 || p == 4) ? 2 : p == 5 ? 1 : -1;
    const long namlen = h[4] < 0 ? 0 : h[4];
    const long take = size > 0 ? std::min<long>(namlen, size - 1) : 0;
    if (take > 0) {
        if (std::fread(buffer, 1, static_cast<std::size_t>(take), stream) != static_cast<std::size_t>(take))
            buffer[0] = 0;
        else
            buffer[take] = 0;
    }
    std::fseek(stream, namlen - take, SEEK_CUR);
    const double data = static_cast<double>(h[1]) * h[2] * (h[3] ? 2 : 1) * element;
    // A record whose data run past the end leaves the stream at the end.
    const long left = stream_left(stream);
    if (data < 0 || data > left)
        std::fseek(stream, 0, SEEK_END);
    else
        std::fseek(stream, static_cast<long>(data), SEEK_CUR);
}

std::vector<std::pair<std::string, Mm>> mat_read_all(const char* file_name, std::FILE* stream, int kind) {
    std::vector<std::pair<std::string, Mm>> out;
    if (kind == mat_kind_text) {
        Mm value;
        loadascii_read(file_name, stream, value);
        out.emplace_back(text_variable_name(file_name), value);
        return out;
    }
    // A level-5 file ends where no further tag fits.
    while (kind == mat_kind_v4 || stream_left(stream) >= 8) {
        Mm value;
        std::string name;
        const int failed = kind == mat_kind_v4 ? load4_record(file_name, stream, value, name)
                                               : load5_element(file_name, stream, value, name);
        if (failed) break;
        out.emplace_back(name, value);
    }
    return out;
}

int read_elements_blocked(double* dest, int count, std::FILE* stream, int code, bool swap) {
    // Native doubles go straight into place.
    if (code == 0 && !swap) {
        if (count < 1) return 0;
        return static_cast<int>(std::fread(dest, 8, static_cast<std::size_t>(count), stream));
    }
    constexpr int block = 1 << 16;
    int done = 0;
    while (done < count) {
        const int n = count - done < block ? count - done : block;
        const int got = read_elements(dest + done, n, stream, code, swap);
        done += got;
        if (got < n) break;
    }
    return done;
}

}  // namespace ak_internal
