// The data-file layer under load and save: telling the kinds of file apart, the level-4 records, the
// text matrices and the level-5 elements. Every reader works on a C stream and checks each size it
// finds in the file against the bytes that are left, so that a damaged file ends in a message, never
// in an allocation larger than the file.
#pragma once
#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "arklib/matrix.h"

namespace ak_internal {

// The kinds of data file.
constexpr int mat_kind_v4 = 0;
constexpr int mat_kind_v5 = 1;
constexpr int mat_kind_text = 2;
// A MAT-file of the HDF5-based container, which is recognised and refused.
constexpr int mat_kind_hdf5 = 3;

// Closes a stream at the end of a scope, also when an error is thrown through it.
struct stream_guard {
    std::FILE* stream;
    explicit stream_guard(std::FILE* s) : stream(s) {}
    ~stream_guard() {
        if (stream && std::ftell(stream) != -1) std::fclose(stream);
    }
    stream_guard(const stream_guard&) = delete;
    stream_guard& operator=(const stream_guard&) = delete;
};

// ".mat" appended when the name has no '.' anywhere (a dot in a directory name counts).
std::string mat_add_extension(const std::string& name);
// Opens for reading and says what the file is (mat_kind_*); null when not found. With a path
// object the directory it finds is tried, otherwise the name with the extension and then the bare
// name. A level-5 stream is left at offset 128, the others at 0.
std::FILE* mat_open(void* path_object, const char* name, int* kind);

// The offset just past the last byte of a stream (a file's size); -1 when it cannot be told.
long stream_end(std::FILE* stream);
// Bytes from the current position to the end of the stream (0 when none or unknown).
long stream_left(std::FILE* stream);

// ---- level 4 ---------------------------------------------------------------------------------------
// One record into var: 0 on success, 1 at the end of the file or on failure.
int load4_read(const char* file_name, std::FILE* stream, Mm& var);
// The same, giving the record's name instead of comparing it with var's.
int load4_record(const char* file_name, std::FILE* stream, Mm& var, std::string& name);
void save4_write(std::FILE* stream, const Mm& m);

// ---- text ---------------------------------------------------------------------------------------------
void loadascii_read(const char* file_name, std::FILE* stream, Mm& var);
// The variable name of a text file: its base name up to the first '.'.
std::string text_variable_name(const char* file_name);
// Writes the matrices of list as text: "%23.13g" without separators, as saveascii does.
void saveascii_write(std::FILE* stream, const Mm* const* list, int n);
// Writes one matrix as text: 8 or 16 significant digits, separated by blanks or tabs.
void save_text_write(std::FILE* stream, const Mm& m, bool double_digits, bool tabs);

// ---- level 5 ----------------------------------------------------------------------------------------
// Opens name (extension added) and writes the 128-byte header; null after a reported failure.
std::FILE* save5_header(const char* file, std::string& name_buffer);
// Writes the 128-byte header into an open stream.
void save5_write_header(std::FILE* stream, const char* file_name);
// Resets the anonymous-name counter, as the header writer does.
void save5_reset_names();
void save5_write(const char* file_name, std::FILE* stream, const Mm& m);
// The same element through zlib, as one compressed element.
void save5_write_compressed(const char* file_name, std::FILE* stream, const Mm& m);

int load5_read(const char* file_name, std::FILE* stream, Mm& var);
// One element, giving its name (which goes into name) instead of comparing it with var's.
int load5_element(const char* file_name, std::FILE* stream, Mm& var, std::string& name);
int load5_find(const char* file_name, std::FILE* stream, Mm& var);
// The next variable's name, without its data; the stream moves on to the element after it.
void load5_name(std::FILE* stream, char* buffer, int size);

// The next variable's name of a file of any kind (an empty buffer at the end).
void mat_variable_name(std::FILE* stream, const char* file_name, int kind, char* buffer, int size);

// Every variable of an open data file, in file order, with its name.
std::vector<std::pair<std::string, Mm>> mat_read_all(const char* file_name, std::FILE* stream, int kind);

// Reads whole elements of the precision code into dest, in blocks, so that a large matrix needs no
// work buffer of its own size. Returns the number read.
int read_elements_blocked(double* dest, int count, std::FILE* stream, int code, bool swap);

}  // namespace ak_internal

// The variables of a MAT-file or text data file found along the M path, by name, for who and whos.
// Reports "load: %s not found" and gives false when the file is not there.
bool ak_mat_file_variables(const char* name, std::vector<std::pair<std::string, Mm>>& out);
