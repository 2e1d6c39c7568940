// Matrix and cell literals, and concatenation.
//
// A literal [a b; c d] is written BR(a), b, semi, c, d and {a, b; c} is CL(a), b, semi, c: an Mc
// gathers pointers to its entries and the conversion Mm(const Mc&) builds the value. Entries are
// borrowed unless the list made them itself (from a number or a text), so a list must be converted
// within the statement that built it.
#pragma once
#include "arklib/matrix.h"

class Mc {
  public:
    const Mm* inline_items[16];  // the first 16 entries need no heap
    int inline_owned[16];
    const Mm** items;  // inline_items, or a C-heap block
    int* owned;        // inline_owned, or a C-heap block
    int capacity;
    int last;  // number of the last entry, -1 when empty
    int is_cell;

    Mc();
    Mc(int is_cell, int owned, const Mm& first);
    Mc(const Mc& src);  // takes over the entries the source owned
    ~Mc();

    Mc& operator,(const Mm& m);
    Mc& operator,(double v);
    Mc& operator,(const char* text);

    int count() const { return last + 1; }

  private:
    void operator=(const Mc&);  // reports "Mc=Mc called"
    void append(const Mm* m, int own);
    void use_inline();
};

Mc BR(const Mm& m);
Mc BR(double v);
Mc BR(const char* text);
Mc CL(const Mm& m);
Mc CL(double v);
Mc CL(const char* text);

// Concatenation along a dimension: dim 1 is vertical, 2 horizontal, 3 and 4 by pages.
Mm cat(const Mm& dim);
Mm cat(const Mm& dim, const Mm& a);
Mm cat(const Mm& dim, const Mm& a, const Mm& b);
Mm cat(const Mm& dim, const Mm& a, const Mm& b, const Mm& c);
Mm horzcat(const Mm& a);
Mm horzcat(const Mm& a, const Mm& b);
Mm vertcat(const Mm& a);
Mm vertcat(const Mm& a, const Mm& b);
