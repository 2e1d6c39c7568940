// load and save: MAT-files of level 4 and level 5, and plain-text matrices.
//
// The list forms take the variables themselves, as a literal list:
//
//     save(TM("run.mat"), (BR(x), y));    // a level-5 file holding x and y, under their names
//     load(TM("run.mat"), (BR(x), y));    // x and y from the file, found by name
//     Mm first = load(TM("data.txt"));    // the first (for text, the only) variable of a file
//
// The word forms work like the command forms of the language: each word is a variable name (with
// '*' and '?' wildcards) or an option, and variables are found in, and loaded into, the current
// scope level of the scope table (see scope.h):
//
//     save(TM("run.mat"), TM("x"), TM("-append"));   // x replaces or joins the variables in the file
//     save(TM("grid.txt"), TM("g"), TM("-ascii"), TM("-tabs"));
//     Mm s = load(TM("run.mat"), TM("a*"));          // every a... into the workspace, and as s.a...
//
// save options: -mat (level 5, the default; -v6 and -v7 mean the same), -v4 (level 4), -ascii
// (text, 8 significant digits), -double (16 digits), -tabs (tab-separated), -append (add to the
// file, replacing variables of the same name), -compress (level-5 elements through zlib), and
// -struct s [fields...] (the fields of structure s as variables). load options: -mat and -ascii,
// which set the kind of file instead of telling it from the contents.
#pragma once
#include "arklib/list.h"
#include "arklib/matrix.h"

// The first variable of a data file (the matrix of a text file).
Mm load(const Mm& file);
// Fills the variables of the list from the file: by position from a level-4 file, by name from a
// level-5 file, the first one from a text file. Returns x_M.
Mm load(const Mm& file, const Mc& list);
// The word forms: loads the variables that the words select (all when none does) into the current
// scope level and returns them as the fields of a 1x1 structure.
Mm load(const Mm& file, const Mm& w1);
Mm load(const Mm& file, const Mm& w1, const Mm& w2);
Mm load(const Mm& file, const Mm& w1, const Mm& w2, const Mm& w3);
Mm load(const Mm& file, const Mm& w1, const Mm& w2, const Mm& w3, const Mm& w4);
Mm load(const Mm& file, const Mm& w1, const Mm& w2, const Mm& w3, const Mm& w4, const Mm& w5);
Mm load(const Mm& file, const Mm& w1, const Mm& w2, const Mm& w3, const Mm& w4, const Mm& w5, const Mm& w6);
Mm load(int n, const Mm* const* args);  // args[0] is the file name
// load with an empty list.
Mm vbload(const Mm& file);

// A level-5 file of the listed variables. Every save form returns x_M.
Mm save(const Mm& file, const Mc& list);
// All variables of the current scope level, and the word forms (see above).
Mm save(const Mm& file);
Mm save(const Mm& file, const Mm& w1);
Mm save(const Mm& file, const Mm& w1, const Mm& w2);
Mm save(const Mm& file, const Mm& w1, const Mm& w2, const Mm& w3);
Mm save(const Mm& file, const Mm& w1, const Mm& w2, const Mm& w3, const Mm& w4);
Mm save(const Mm& file, const Mm& w1, const Mm& w2, const Mm& w3, const Mm& w4, const Mm& w5);
Mm save(const Mm& file, const Mm& w1, const Mm& w2, const Mm& w3, const Mm& w4, const Mm& w5, const Mm& w6);
Mm save(const Mm& file, const Mm& w1, const Mm& w2, const Mm& w3, const Mm& w4, const Mm& w5, const Mm& w6, const Mm& w7);
Mm save(const Mm& file, const Mm& w1, const Mm& w2, const Mm& w3, const Mm& w4, const Mm& w5, const Mm& w6, const Mm& w7, const Mm& w8);
Mm save(int n, const Mm* const* args);  // args[0] is the file name
// A level-4 file of the listed variables.
Mm saveV4(const Mm& file, const Mc& list);
// The listed matrices as text, "%23.13g" per element, one row per line, no name; no extension is
// added to the file name.
Mm saveascii(const Mm& file, const Mc& list);
// A level-5 file: element 1 of the cell is the file name, the others are the variables.
Mm vbsave(const Mm& cell);
