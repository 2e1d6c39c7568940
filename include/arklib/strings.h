// String functions. A string is an ak_double matrix with the str flag, one character code in each
// element; a character matrix holds one string in each row.
#pragma once
#include "arklib/matrix.h"

// s without trailing blanks (code 32) and without any code 0; a cell array is done element by
// element. A character matrix loses the trailing columns that are blank in every row.
Mm deblank(const Mm& s);

// Upper and lower case of the letters a to z in a string, or in each element of a cell array.
Mm upper(const Mm& s);
Mm lower(const Mm& s);
// s without leading blanks (code 32); a cell array is done element by element.
Mm deblank_leading(const Mm& s);
// A 1 x n string of blanks.
Mm blanks(const Mm& n);
// x marked as a string: numbers keep their values as character codes. A cell array becomes a
// character matrix.
Mm setstr(const Mm& x);
// Character tests, element by element: a logical matrix of the shape of s (all 0 for a value
// that is not a string).
Mm isletter(const Mm& s);
Mm islower(const Mm& s);
Mm isupper(const Mm& s);
Mm isspace(const Mm& s);
// The rows of a character matrix with their text moved to the right (the default), to the left or
// to the centre, mode being "right", "left" or "center".
Mm strjust(const Mm& s);
Mm strjust(const Mm& s, const Mm& mode);

// A character matrix with the rows of each argument in turn, padded with blanks to the longest.
// Numbers become their character codes; a cell array gives one row for each element, in storage
// order. str2mat keeps an empty argument as a blank row, strvcat leaves it out.
Mm str2mat(const Mm& a);
Mm str2mat(const Mm& a, const Mm& b);
Mm str2mat(const Mm& a, const Mm& b, const Mm& c);
Mm str2mat(const Mm& a, const Mm& b, const Mm& c, const Mm& d);
Mm str2mat(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e);
Mm str2mat(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e, const Mm& f);
Mm str2mat(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e, const Mm& f, const Mm& g);
Mm str2mat(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e, const Mm& f, const Mm& g,
           const Mm& h);
Mm strvcat(const Mm& a);
Mm strvcat(const Mm& a, const Mm& b);
Mm strvcat(const Mm& a, const Mm& b, const Mm& c);
Mm strvcat(const Mm& a, const Mm& b, const Mm& c, const Mm& d);
Mm strvcat(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e);
Mm strvcat(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e, const Mm& f);
Mm strvcat(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e, const Mm& f, const Mm& g);
Mm strvcat(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e, const Mm& f, const Mm& g,
           const Mm& h);
// The same over a list of n arguments, for callers that gather them at run time.
Mm str2mat(int n, const Mm* const* list);
Mm strvcat(int n, const Mm* const* list);

// ---- comparison --------------------------------------------------------------------------------------
// 1 where the first n characters agree. Operands are strings, or cell arrays of strings compared
// element by element (a 1x1 cell or a string is spread over the other's size). A value that is not
// a string never equals anything. The case-blind forms fold both operands to upper case.
Mm strncmp(const Mm& a, const Mm& b, const Mm& n);
Mm strcmp(const Mm& a, const Mm& b);
Mm strncmpi(const Mm& a, const Mm& b, const Mm& n);
Mm strcmpi(const Mm& a, const Mm& b);
Mm strcmp(const Mm& a);  // the forms with too few inputs report
Mm strcmpi(const Mm& a);
Mm strncmp(const Mm& a);
Mm strncmp(const Mm& a, const Mm& b);
Mm strncmpi(const Mm& a);
Mm strncmpi(const Mm& a, const Mm& b);

// ---- search, replace, tokens ---------------------------------------------------------------------------
// Start positions of the shorter operand in the longer (b on equal length); overlaps all count.
Mm findstr(const Mm& a, const Mm& b);
Mm findstr(const Mm& a);
// s with each match of from replaced by to, the later matches first; a cell array element by
// element.
Mm strrep(const Mm& s, const Mm& from, const Mm& to);
Mm strrep(const Mm& s);
Mm strrep(const Mm& s, const Mm& from);
// The first token of s, delimited by the characters of delim (white space by default); rest
// begins with the delimiter that ended the token.
Mm strtok(const Mm& s);
Mm strtok(const Mm& s, const Mm& delim);
Mm strtok(const Mm& s, i_o_t, Mm& rest);
Mm strtok(const Mm& s, const Mm& delim, i_o_t, Mm& rest);
Mm strtok(const Mm& s, i_o_t, Mm& token, Mm& rest);  // token is also the result
Mm strtok(const Mm& s, const Mm& delim, i_o_t, Mm& token, Mm& rest);
Mm strtok();
// The rows of list that begin with pattern (exact: that equal it, trailing blanks aside).
Mm strmatch(const Mm& pattern, const Mm& list);
Mm strmatch(const Mm& pattern, const Mm& list, const Mm& exact);
Mm strmatch(const Mm& pattern);

// ---- joining ---------------------------------------------------------------------------------------------
// Strings joined side by side without their trailing blanks; with a cell argument, a cell of the
// element-wise joins.
Mm strcat();
Mm strcat(const Mm& a);
Mm strcat(const Mm& a, const Mm& b);
Mm strcat(const Mm& a, const Mm& b, const Mm& c);
Mm strcat(const Mm& a, const Mm& b, const Mm& c, const Mm& d);
Mm strcat(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e);
Mm strcat(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e, const Mm& f);
Mm strcat(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e, const Mm& f, const Mm& g);
Mm strcat(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e, const Mm& f, const Mm& g,
          const Mm& h);
Mm strcat(int n, const Mm* const* list);

// ---- numbers and text ------------------------------------------------------------------------------------
// Non-negative whole numbers (below 2^64) as rows of digits, padded with leading zeros to a common
// width of at least len; base is 2 to 16, or a string of digit symbols.
Mm dec2base(const Mm& d, const Mm& base);
Mm dec2base(const Mm& d, const Mm& base, const Mm& len);
Mm dec2bin(const Mm& d);
Mm dec2bin(const Mm& d, const Mm& len);
Mm dec2hex(const Mm& d);
Mm dec2hex(const Mm& d, const Mm& len);
Mm dec2base(const Mm& d);
// The rows of a character matrix (or the strings of a cell) read as numbers in base, as a column;
// blanks are ignored and a row with a character that is no digit of the base gives NaN.
Mm base2dec(const Mm& s, const Mm& base);
Mm bin2dec(const Mm& s);
Mm hex2dec(const Mm& s);
Mm base2dec(const Mm& s);
// Rows of up to 16 hexadecimal digits read as the bits of an IEEE double, padded with zeros on the
// right.
Mm hex2num(const Mm& s);
// The text read as one real or complex number; NaN for anything else. A cell gives a matrix of
// its size, a character matrix one number per row.
Mm str2double(const Mm& s);
// The text of a numeric matrix literal (with or without brackets; rows end at ";" or a new line)
// as its value; empty when the text is not one. ok is 1 on success.
Mm str2num(const Mm& s);
Mm str2num(const Mm& s, i_o_t, Mm& ok);

// ---- the functions of cell arrays of strings ---------------------------------------------------------------
// s cut at each delimiter (white space by default; a cell gives several, the longest tried first)
// into a 1 x n cell. Runs of delimiters count as one unless "CollapseDelimiters" is false.
Mm strsplit(const Mm& s);
Mm strsplit(const Mm& s, const Mm& delim);
Mm strsplit(const Mm& s, const Mm& delim, const Mm& name, const Mm& value);
// The strings of a cell joined with delim (a blank by default), whose escapes \n, \t, ... are
// made into their characters.
Mm strjoin(const Mm& c);
Mm strjoin(const Mm& c, const Mm& delim);
// s without leading and trailing white space and code 0; a cell element by element.
Mm strtrim(const Mm& s);
// 1 where s (a string, or each string of a cell) contains, starts with or ends with one of the
// patterns (a string or a cell of strings); name "IgnoreCase" with a true value folds case.
Mm contains(const Mm& s, const Mm& pattern);
Mm contains(const Mm& s, const Mm& pattern, const Mm& name, const Mm& value);
Mm startsWith(const Mm& s, const Mm& pattern);
Mm startsWith(const Mm& s, const Mm& pattern, const Mm& name, const Mm& value);
Mm endsWith(const Mm& s, const Mm& pattern);
Mm endsWith(const Mm& s, const Mm& pattern, const Mm& name, const Mm& value);
// The columns, or the rows, of any matrix in reverse order; a string stays a string.
Mm fliplr(const Mm& x);
Mm flipud(const Mm& x);
