// The shared layer of the file functions: the fid table, the machine-format and precision names,
// and the element readers, writers and byte swappers that the binary file functions, the MAT-file
// code and the WAV code all use.
#pragma once
#include <cstdint>
#include <cstdio>
#include <string>

#include "arklib/matrix.h"

namespace ak_internal {

// ---- the fid table -------------------------------------------------------------------------------
// 129 rows, fids 0 to 128. Rows 0 to 2 ("stdin", "stdout", "stderr") are always open and have no
// stream of their own; row 128 is never handed out in a useful way (see fopen).
constexpr int fid_rows = 129;
constexpr int fid_first_user = 3;

struct fid_row {
    int format;        // 0 little-endian, 1 big-endian, -1 unknown
    std::FILE* stream;  // null for rows 0 to 2
    int open;          // non-zero while in use
    std::string name;  // the path as opened, after any path search
    char mode[8];      // the mode text given to the C library
};

// The table, built on first use (under lock 0 when multi_task is set).
fid_row* fid_table();

// The stream to use for a row: the row's own, or stdin, stdout and stderr for rows 0 to 2.
std::FILE* row_stream(int row);

// A double to int by truncation, saturating at +-2147483647 (an infinity gives the limit of its
// sign, NaN the negative limit).
int saturate_fid(double v);
// The rounding of fclose and fprintf: v > 0 gives trunc(v + 0.5), anything else 0.
int round_nonnegative(double v);

// The row of a fid matrix, or -1. With report set, an illegal or closed fid is reported; a fid of
// more than one element always is ("Size of fid %s not one.").
int fid_check(const Mm& m, bool report);
// The stream of fid_check(m, true), or null when the check failed.
std::FILE* fid_stream(const Mm& m);
// The machine format of fid_check(m, true)'s row, or -1 when the check failed.
int fid_format(const Mm& m);

// ---- machine formats -------------------------------------------------------------------------------
// "b"/"ieee-be" 1, "l"/"ieee-le" 0, "n"/"native" the native format, anything else -1. The matrix
// form reads at most the first 15 characters of the string.
int machine_format_code(const char* name);
int machine_format_code(const Mm& m);
// "ieee-be" for 1, "ieee-le" for anything else.
const char* machine_format_name(int code);
// The native format of this machine (0).
int native_format();

// ---- precisions --------------------------------------------------------------------------------------
// Codes: 0 double, 1 single, 2 int32, 3 int16, 4 uint16, 5 uint8, 6 long double (8 bytes here),
// 7 uint32, 8 int8, 9 int64, 10 uint64. An unknown name is reported ("fileio: unknown precision
// %s") and gives code 0, size 8.
int precision_code(const char* name, int* size);
// The element size of a code (8 for any code outside 0 to 10).
int precision_size(int code);

// ---- elements ------------------------------------------------------------------------------------------
// Whole numbers as the writers make them: truncation toward zero through a 64-bit integer, keeping
// the low bits. NaN and values beyond the 64-bit range give the smallest 64-bit integer.
int64_t truncate64(double v);

// count elements of a code in memory (src, packed) to doubles; swap reverses each element's bytes.
// Codes 9 and 10 are read alike, as two unsigned 32-bit halves: high * 2^32 + low.
void decode_elements(double* dest, const void* src, int count, int code, bool swap);
// count doubles to elements of a code in memory (dst, packed), as write_element writes them.
void encode_elements(void* dst, const double* src, int count, int code, bool swap);

// Reads count elements from stream into dest; returns the number read (0 for a count below 1).
int read_elements(double* dest, int count, std::FILE* stream, int code, bool swap);
// Writes one element; returns the C library's count (1 or 0), or -1 for code -1.
int write_element(double value, std::FILE* stream, int code, bool swap);
// Writes count elements, stopping at the first that cannot be written; returns the number written.
int write_elements(const double* src, int count, std::FILE* stream, int code, bool swap);

// Reverses the bytes of each of count elements of size bytes (2, 4 or 8) in place.
void swap_bytes(void* data, int count, int size);

// ---- path search -------------------------------------------------------------------------------------
// Opens name for reading ("rb") by the path search: name (with ".m" added when add_m_extension is
// set and it has no '.') in the directory the path object finds, unless it exists in the current
// directory, which wins. name becomes the path opened. Null when neither way finds a file.
std::FILE* path_open(void* path_object, std::string& name, bool add_m_extension);

}  // namespace ak_internal
