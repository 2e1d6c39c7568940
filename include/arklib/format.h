// The formatted text engine behind sprintf, sscanf, fprintf and fscanf: a format is cut into pieces
// with one conversion each, and the platform formatter or scanner runs piece by piece over a stream
// of doubles. The format recycles while data remains.
#pragma once
#include <cstdio>
#include <string>

#include "arklib/matrix.h"

// A parsed format. Piece k holds the text up to and including its conversion (with an "l" inserted
// before a numeric conversion and the size modifier taken out); the last piece may be literal text
// only, of kind '='.
struct format_pieces {
    enum { max_pieces = 32 };
    char* piece[max_pieces];
    int kind[max_pieces];      // the conversion character as written, '=' for literal text
    int modifier[max_pieces];  // the size modifier removed from the piece ("lhLHbtBT"), or 0
    int last;                  // number of the last piece, -1 when none
    int cursor;                // piece in use; wraps to 0 after last
    int all_text;              // 1 while every conversion is %c or %s
    int after_literal;         // 1 when the piece just processed was literal text
};

// The format text with the escapes \n, \r, \t made into their characters; a backslash before any
// other character is dropped and that character kept.
std::string format_escape(const char* text);

// Cuts text into pieces. A format of more than 32 pieces is reported ("format: more than 32
// conversions in one format") and keeps its first 32.
void format_parse(format_pieces& record, const char* text);
void format_release(format_pieces& record);

// The writer: runs the format over count doubles (which %n may overwrite) and gives the text.
// The record keeps its cursor, so that successive calls continue where the previous one stopped.
std::string format_write(format_pieces& record, double* data, int count);
// The text of one argument: the marker l_M gives nothing, anything else is made full and written.
std::string format_value(format_pieces& record, const Mm& x);

// The reader: one of stream and text is null. Reads until the input ends, a conversion fails or
// limit conversions have matched. Gives a malloc'ed array of *count_out doubles (free it with
// std::free), and the number of matched conversions in *matched_out.
double* format_read(format_pieces& record, std::FILE* stream, const char* text, int limit, int* count_out,
                    int* matched_out);

// Shapes the reader's output by size (one element: a limit; two: rows and columns); shared by
// sscanf and fscanf. Gives the matrix, with the matched count in a and an empty error text in b.
Mm scan_matrix(std::FILE* stream, const char* text, const Mm& format, const Mm& size, i_o_t, Mm& a, Mm& b);

// The characters of the first row of a matrix, each element truncated to a byte, up to the first
// NUL; empty for a cell or a value without a type.
std::string Mstr_row(const Mm& m);

// sprintf(format, list): list is a cell of the arguments (a non-cell is one argument).
Mm sprintf(const Mm& x);
Mm sprintf(const Mm& format, const Mm& list);

Mm sscanf(const Mm& s);
Mm sscanf(const Mm& s, const Mm& format);
Mm sscanf(const Mm& s, const Mm& format, const Mm& size);
Mm sscanf(const Mm& s, const Mm& format, i_o_t, Mm& count);
Mm sscanf(const Mm& s, const Mm& format, i_o_t, Mm& count, Mm& errmsg);
Mm sscanf(const Mm& s, const Mm& format, i_o_t, Mm& count, Mm& errmsg, Mm& next);
Mm sscanf(const Mm& s, const Mm& format, const Mm& size, i_o_t, Mm& count);
Mm sscanf(const Mm& s, const Mm& format, const Mm& size, i_o_t, Mm& count, Mm& errmsg);
Mm sscanf(const Mm& s, const Mm& format, const Mm& size, i_o_t, Mm& count, Mm& errmsg, Mm& next);
