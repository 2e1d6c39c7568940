// Files: the fid table with binary and formatted I/O, and the operating-system functions.
//
// A file is named by its fid, a double in an Mm. Fids 0, 1 and 2 are stdin, stdout and stderr and
// are always open; fprintf to 1 or 2 goes to the print handler. Binary data are read and written by
// precision name ("uchar", "int16", "float64", ...) in either byte order ("ieee-le", "ieee-be").
#pragma once
// The C headers come first: their declarations name fclose in attributes, which must still be
// unambiguous when they are read.
#include <cstdio>
#include <cstdlib>
#include <cwchar>

#include "arklib/matrix.h"

// ---- opening and closing -------------------------------------------------------------------------
// fopen(name) opens for reading, or for a numeric fid gives the name it was opened with.
Mm fopen(const Mm& name);
Mm fopen(const Mm& name, const Mm& mode);
Mm fopen(const Mm& name, const Mm& mode, const Mm& machine);
// The forms with outputs: fid -1 and a message on failure; the function result is x_M.
Mm fopen(const Mm& name, const Mm& mode, const Mm& machine, i_o_t, Mm& fid, Mm& msg);
Mm fopen(const Mm& name, i_o_t, Mm& fid, Mm& msg);
Mm fopen(const Mm& name, const Mm& mode, i_o_t, Mm& fid, Mm& msg);
// The name, mode and machine format of an open fid.
Mm fopen(const Mm& fid, i_o_t, Mm& name, Mm& mode, Mm& machine);
// fclose(fid) gives the C library's result; fclose(any string) closes every user file.
Mm fclose(const Mm& x);
Mm stderrM();

// ---- binary I/O ----------------------------------------------------------------------------------
Mm fread(const Mm& fid);
Mm fread(const Mm& fid, const Mm& size);
Mm fread(const Mm& fid, const Mm& size, const Mm& precision);
Mm fread(const Mm& fid, const Mm& size, const Mm& precision, const Mm& skip);
Mm fread(const Mm& fid, const Mm& size, const Mm& precision, const Mm& skip, const Mm& machine);
Mm fread(const Mm& fid, i_o_t, Mm& count);
Mm fread(const Mm& fid, const Mm& size, i_o_t, Mm& count);
Mm fread(const Mm& fid, const Mm& size, const Mm& precision, i_o_t, Mm& count);
Mm fread(const Mm& fid, const Mm& size, const Mm& precision, const Mm& skip, i_o_t, Mm& count);
Mm fread(const Mm& fid, const Mm& size, const Mm& precision, const Mm& skip, const Mm& machine, i_o_t,
         Mm& count);
Mm fwrite(const Mm& fid);
Mm fwrite(const Mm& fid, const Mm& a);
Mm fwrite(const Mm& fid, const Mm& a, const Mm& precision);
Mm fwrite(const Mm& fid, const Mm& a, const Mm& precision, const Mm& skip);
Mm fwrite(const Mm& fid, const Mm& a, const Mm& precision, const Mm& skip, const Mm& machine);

// ---- position and state --------------------------------------------------------------------------
Mm fseek(const Mm& fid);
Mm fseek(const Mm& fid, const Mm& offset);
Mm fseek(const Mm& fid, const Mm& offset, const Mm& origin);
Mm ftell(const Mm& fid);
Mm frewind(const Mm& fid);
Mm feof(const Mm& fid);
Mm fflush(const Mm& fid);
Mm ferror(const Mm& fid);
Mm ferror(const Mm& fid, const Mm& clear);
Mm ferror(const Mm& fid, i_o_t, Mm& msg, Mm& errnum);
Mm ferror(const Mm& fid, const Mm& clear, i_o_t, Mm& msg, Mm& errnum);

// ---- text I/O ----------------------------------------------------------------------------------------
Mm fgets(const Mm& fid);
Mm fgets(const Mm& fid, const Mm& nchar);
Mm fgetl(const Mm& fid);
// fprintf(fmt, list) with a string first prints to fid 1 and gives x_M; otherwise the first argument
// is the fid. list is a cell of the arguments (a non-cell is one argument).
Mm fprintf(const Mm& fmt);
Mm fprintf(const Mm& fmt, const Mm& list);
Mm fprintf(const Mm& fid, const Mm& fmt, const Mm& list);
Mm printf(const Mm& fmt);
Mm printf(const Mm& fmt, const Mm& list);
Mm fscanf(const Mm& fid);
Mm fscanf(const Mm& fid, const Mm& fmt);
Mm fscanf(const Mm& fid, const Mm& fmt, const Mm& size);
Mm fscanf(const Mm& fid, const Mm& fmt, i_o_t, Mm& count);
Mm fscanf(const Mm& fid, const Mm& fmt, i_o_t, Mm& count, Mm& errmsg);
Mm fscanf(const Mm& fid, const Mm& fmt, const Mm& size, i_o_t, Mm& count);
Mm fscanf(const Mm& fid, const Mm& fmt, const Mm& size, i_o_t, Mm& count, Mm& errmsg);

// ---- directories and the system ---------------------------------------------------------------------
Mm mkdir(const Mm& d);  // 2 when it exists, 1 when made, 0 on failure
Mm rmdir(const Mm& d);
Mm chdir(const Mm& d);
Mm cd();
Mm cd(const Mm& d);
Mm deleteM(const Mm& x);
Mm filesep();
Mm pathsep();
Mm tempdir();
Mm tempname();
Mm copyfile(const Mm& a);
Mm copyfile(const Mm& a, const Mm& b);
Mm type(const Mm& name);
Mm help(const Mm& name);
Mm helpwin(const Mm& topic);  // help, on the console
// Prints the memory in use, physical and swap, and returns them as a structure (bytes; load_percent).
Mm memory();
Mm system(const Mm& s);
Mm dos(const Mm& cmd);
Mm dos(const Mm& cmd, const Mm& echo);
Mm dos(const Mm& cmd, i_o_t, Mm& s, Mm& w);
Mm dos(const Mm& cmd, const Mm& echo, i_o_t, Mm& s, Mm& w);
Mm unixM(const Mm& cmd);
Mm unixM(const Mm& cmd, i_o_t, Mm& s, Mm& w);
Mm fullfile();
Mm fullfile(const Mm& a);
Mm fullfile(const Mm& a, const Mm& b);
Mm fullfile(const Mm& a, const Mm& b, const Mm& c);
Mm fullfile(const Mm& a, const Mm& b, const Mm& c, const Mm& d);
Mm fullfile(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e);
Mm fullfile(const Mm& a, const Mm& b, const Mm& c, const Mm& d, const Mm& e, const Mm& f);
// The same over a list of n arguments gathered at run time.
Mm fullfile(int n, const Mm* const* list);
// A structure array with the fields name, date, bytes and isdir, one element per match.
Mm dir();
Mm dir(const Mm& pattern);
