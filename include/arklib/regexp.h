// Regular expressions on PCRE2, with the syntax of Perl-compatible patterns; named groups are
// written (?<name>...). "." matches a new line unless "dotexceptnewline" is given.
//
// [start, end, te, match, tokens, names, split] = regexp(s, pattern, options...)
//   Outputs in that order, unless options name them ("match", "tokens", "names", "start", "end",
//   "tokenExtents", "split"): then the named ones come first, in the order given, then the others.
//   For each match: its first and last positions; the extents of its groups as rows [first last]
//   ([0 -1] for a group that took no part); its text; a 1 x n cell of its groups' texts (the whole
//   match when the pattern has no group); a structure of the named groups (an array, one element
//   per match); and the texts between the matches. With "once" only the first match is taken and
//   the outputs are that match's values instead of lists of them. A cell array of subjects gives a
//   cell of each output. Further options: "ignorecase", "matchcase", "lineanchors",
//   "stringanchors", "freespacing", "literalspacing", "dotall", "emptymatch", "noemptymatch".
// regexpi is regexp with "ignorecase".
// regexprep(s, pattern, replacement, options...) replaces every match ("once": the first). In the
//   replacement $0 to $99 or ${n} insert a group, $<name> a named one, and \n, \t, \r, \\ and \$
//   stand for their characters. Cells of patterns and replacements are applied in turn; a cell of
//   subjects gives a cell.
#pragma once
#include "arklib/matrix.h"

Mm regexp(const Mm& s);
Mm regexpi(const Mm& s);
Mm regexp(const Mm& s, const Mm& p);
Mm regexp(const Mm& s, const Mm& p, i_o_t, Mm& a);
Mm regexp(const Mm& s, const Mm& p, i_o_t, Mm& a, Mm& b);
Mm regexp(const Mm& s, const Mm& p, i_o_t, Mm& a, Mm& b, Mm& c);
Mm regexp(const Mm& s, const Mm& p, i_o_t, Mm& a, Mm& b, Mm& c, Mm& d);
Mm regexp(const Mm& s, const Mm& p, i_o_t, Mm& a, Mm& b, Mm& c, Mm& d, Mm& e);
Mm regexp(const Mm& s, const Mm& p, i_o_t, Mm& a, Mm& b, Mm& c, Mm& d, Mm& e, Mm& f);
Mm regexp(const Mm& s, const Mm& p, const Mm& o1);
Mm regexp(const Mm& s, const Mm& p, const Mm& o1, i_o_t, Mm& a);
Mm regexp(const Mm& s, const Mm& p, const Mm& o1, i_o_t, Mm& a, Mm& b);
Mm regexp(const Mm& s, const Mm& p, const Mm& o1, i_o_t, Mm& a, Mm& b, Mm& c);
Mm regexp(const Mm& s, const Mm& p, const Mm& o1, i_o_t, Mm& a, Mm& b, Mm& c, Mm& d);
Mm regexp(const Mm& s, const Mm& p, const Mm& o1, i_o_t, Mm& a, Mm& b, Mm& c, Mm& d, Mm& e);
Mm regexp(const Mm& s, const Mm& p, const Mm& o1, i_o_t, Mm& a, Mm& b, Mm& c, Mm& d, Mm& e, Mm& f);
Mm regexp(const Mm& s, const Mm& p, const Mm& o1, const Mm& o2);
Mm regexp(const Mm& s, const Mm& p, const Mm& o1, const Mm& o2, i_o_t, Mm& a);
Mm regexp(const Mm& s, const Mm& p, const Mm& o1, const Mm& o2, i_o_t, Mm& a, Mm& b);
Mm regexp(const Mm& s, const Mm& p, const Mm& o1, const Mm& o2, i_o_t, Mm& a, Mm& b, Mm& c);
Mm regexp(const Mm& s, const Mm& p, const Mm& o1, const Mm& o2, i_o_t, Mm& a, Mm& b, Mm& c, Mm& d);
Mm regexp(const Mm& s, const Mm& p, const Mm& o1, const Mm& o2, i_o_t, Mm& a, Mm& b, Mm& c, Mm& d, Mm& e);
Mm regexp(const Mm& s, const Mm& p, const Mm& o1, const Mm& o2, i_o_t, Mm& a, Mm& b, Mm& c, Mm& d, Mm& e, Mm& f);
Mm regexp(const Mm& s, const Mm& p, const Mm& o1, const Mm& o2, const Mm& o3);
Mm regexp(const Mm& s, const Mm& p, const Mm& o1, const Mm& o2, const Mm& o3, i_o_t, Mm& a);
Mm regexp(const Mm& s, const Mm& p, const Mm& o1, const Mm& o2, const Mm& o3, i_o_t, Mm& a, Mm& b);
Mm regexp(const Mm& s, const Mm& p, const Mm& o1, const Mm& o2, const Mm& o3, i_o_t, Mm& a, Mm& b, Mm& c);
Mm regexp(const Mm& s, const Mm& p, const Mm& o1, const Mm& o2, const Mm& o3, i_o_t, Mm& a, Mm& b, Mm& c, Mm& d);
Mm regexp(const Mm& s, const Mm& p, const Mm& o1, const Mm& o2, const Mm& o3, i_o_t, Mm& a, Mm& b, Mm& c, Mm& d, Mm& e);
Mm regexp(const Mm& s, const Mm& p, const Mm& o1, const Mm& o2, const Mm& o3, i_o_t, Mm& a, Mm& b, Mm& c, Mm& d, Mm& e, Mm& f);
Mm regexpi(const Mm& s, const Mm& p);
Mm regexpi(const Mm& s, const Mm& p, i_o_t, Mm& a);
Mm regexpi(const Mm& s, const Mm& p, i_o_t, Mm& a, Mm& b);
Mm regexpi(const Mm& s, const Mm& p, i_o_t, Mm& a, Mm& b, Mm& c);
Mm regexpi(const Mm& s, const Mm& p, i_o_t, Mm& a, Mm& b, Mm& c, Mm& d);
Mm regexpi(const Mm& s, const Mm& p, i_o_t, Mm& a, Mm& b, Mm& c, Mm& d, Mm& e);
Mm regexpi(const Mm& s, const Mm& p, i_o_t, Mm& a, Mm& b, Mm& c, Mm& d, Mm& e, Mm& f);
Mm regexpi(const Mm& s, const Mm& p, const Mm& o1);
Mm regexpi(const Mm& s, const Mm& p, const Mm& o1, i_o_t, Mm& a);
Mm regexpi(const Mm& s, const Mm& p, const Mm& o1, i_o_t, Mm& a, Mm& b);
Mm regexpi(const Mm& s, const Mm& p, const Mm& o1, i_o_t, Mm& a, Mm& b, Mm& c);
Mm regexpi(const Mm& s, const Mm& p, const Mm& o1, i_o_t, Mm& a, Mm& b, Mm& c, Mm& d);
Mm regexpi(const Mm& s, const Mm& p, const Mm& o1, i_o_t, Mm& a, Mm& b, Mm& c, Mm& d, Mm& e);
Mm regexpi(const Mm& s, const Mm& p, const Mm& o1, i_o_t, Mm& a, Mm& b, Mm& c, Mm& d, Mm& e, Mm& f);
Mm regexpi(const Mm& s, const Mm& p, const Mm& o1, const Mm& o2);
Mm regexpi(const Mm& s, const Mm& p, const Mm& o1, const Mm& o2, i_o_t, Mm& a);
Mm regexpi(const Mm& s, const Mm& p, const Mm& o1, const Mm& o2, i_o_t, Mm& a, Mm& b);
Mm regexpi(const Mm& s, const Mm& p, const Mm& o1, const Mm& o2, i_o_t, Mm& a, Mm& b, Mm& c);
Mm regexpi(const Mm& s, const Mm& p, const Mm& o1, const Mm& o2, i_o_t, Mm& a, Mm& b, Mm& c, Mm& d);
Mm regexpi(const Mm& s, const Mm& p, const Mm& o1, const Mm& o2, i_o_t, Mm& a, Mm& b, Mm& c, Mm& d, Mm& e);
Mm regexpi(const Mm& s, const Mm& p, const Mm& o1, const Mm& o2, i_o_t, Mm& a, Mm& b, Mm& c, Mm& d, Mm& e, Mm& f);
Mm regexpi(const Mm& s, const Mm& p, const Mm& o1, const Mm& o2, const Mm& o3);
Mm regexpi(const Mm& s, const Mm& p, const Mm& o1, const Mm& o2, const Mm& o3, i_o_t, Mm& a);
Mm regexpi(const Mm& s, const Mm& p, const Mm& o1, const Mm& o2, const Mm& o3, i_o_t, Mm& a, Mm& b);
Mm regexpi(const Mm& s, const Mm& p, const Mm& o1, const Mm& o2, const Mm& o3, i_o_t, Mm& a, Mm& b, Mm& c);
Mm regexpi(const Mm& s, const Mm& p, const Mm& o1, const Mm& o2, const Mm& o3, i_o_t, Mm& a, Mm& b, Mm& c, Mm& d);
Mm regexpi(const Mm& s, const Mm& p, const Mm& o1, const Mm& o2, const Mm& o3, i_o_t, Mm& a, Mm& b, Mm& c, Mm& d, Mm& e);
Mm regexpi(const Mm& s, const Mm& p, const Mm& o1, const Mm& o2, const Mm& o3, i_o_t, Mm& a, Mm& b, Mm& c, Mm& d, Mm& e, Mm& f);

Mm regexprep(const Mm& s);
Mm regexprep(const Mm& s, const Mm& p);
Mm regexprep(const Mm& s, const Mm& p, const Mm& r);
Mm regexprep(const Mm& s, const Mm& p, const Mm& r, const Mm& o1);
Mm regexprep(const Mm& s, const Mm& p, const Mm& r, const Mm& o1, const Mm& o2);
