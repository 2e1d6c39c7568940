// String functions. A string is an ak_double matrix with the str flag, one character code in each
// element; a character matrix holds one string in each row.
#pragma once
#include "arklib/matrix.h"

// s without trailing blanks (code 32) and without any code 0; a cell array is done element by
// element. A character matrix loses the trailing columns that are blank in every row.
Mm deblank(const Mm& s);

// Upper case of the letters a to z in a string, or in each element of a cell array.
Mm upper(const Mm& s);

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
