// Console display and number formatting. Every text goes through the print handler; a matrix
// prints as the rows of its num2str text, one handler call for each line.
#pragma once
#include <string>

#include "arklib/matrix.h"

// 1 for short display (4 significant digits), 0 for long (12).
extern int format_short;

Mm format();
Mm format(const Mm& x);  // a word beginning with "L" or "l" selects long display, any other short
Mm format(const Mm& x, const Mm& y);

Mm disp(const Mm& x);
Mm display(const Mm& x);
Mm disp_header(const Mm& x);
Mm celldisp(const Mm& x);
Mm dump(const Mm& x);
Mm puts(const Mm& x);
Mm clc();
Mm home();
Mm usage(const Mm& x);
Mm smiley();

// The description of a matrix that whos and display headers print:
// " (2x3)=6 double elements real (48 bytes)".
std::string get_whos_line(const Mm& x);

// num2str(x): 4 significant digits, leading blank columns removed. num2str(x, prec): the given
// precision, right-aligned, nothing removed. The i_o forms also give the text in s and its width
// in w.
Mm num2str(const Mm& x);
Mm num2str(const Mm& x, const Mm& prec);
Mm num2str(const Mm& x, i_o_t, Mm& s, Mm& w);
Mm num2str(const Mm& x, const Mm& prec, i_o_t, Mm& s, Mm& w);
Mm int2str(const Mm& x);
Mm mat2str(const Mm& x);
Mm mat2str(const Mm& x, const Mm& prec);

// Appends the text of one element to out: re with real_format, and for a complex matrix the
// imaginary part with imag_format as "+ 2i" / "- 2i", or blanks of the same width when it is 0.
void value_text(std::string& out, int complex, const char* real_format, const char* imag_format, double re,
                double im);
// Rewrites the platform's spelling of a non-finite value in text as "Inf", "-Inf" or "NaN".
void fix_nonfinite_text(double value, std::string& text);
// The same on a C string in a buffer of size bytes; a text that would not fit is cut.
char* fix_nonfinite_text(double value, char* text, int size);
// A short text for a value: "%.4g" of a real scalar, the characters of a short one-row string,
// otherwise "2x3 double".
std::string preview_text(const Mm& x);

Mm input(const Mm& prompt);
Mm input(const Mm& prompt, const Mm& s);
Mm pauseM();
Mm pauseM(const Mm& x);
Mm kbhitM();
