// Helpers shared by the graphics files: the record that crosses to the engine, list parsing, and
// the small comparisons that property lists need.
#pragma once

#include <initializer_list>
#include <string>

#include "arklib/graphics.h"
#include "graphics/engine_table.h"

namespace ak_internal {

// A record of the value's shape, string flag and elements (real parts), in memory of its own;
// the caller releases it with free(). The value must be a full double matrix.
QorValue qor_record(const Mm& value);
// A new matrix with the record's shape, string flag and elements; the record is not touched.
Mm matrix_of_record(const QorValue* record);

// Element k (zero-based) of a handle vector.
double handle_at(const Mm& h, int k);
// Element k (zero-based) of a cell, shared.
const Mm& cell_at(const Mm& list, int k);
// A cell of r x c empty matrices.
Mm new_cell(int rows, int cols);

// The text of a string, for comparisons; empty for anything else.
bool text_is(const Mm& m, const char* word);  // without case
bool values_equal(const Mm& a, const Mm& b);  // element by element, shapes equal
// The first four characters of name equal those of word, without case.
bool starts_like(const char* name, const char* word);

// The current figure as the engine knows it (negative: none), and the current axes (gca).
double current_figure();
double current_axes();

// ---- argument lists of the creation functions -------------------------------------------------------
// A cell stays as it is; any other value is a list of one.
Mm as_list(const Mm& a);
// A 1 x n cell of the values given.
Mm list_of(std::initializer_list<Mm> items);
// The items from zero-based position `from` on, as a cell (empty past the end).
Mm list_tail(const Mm& list, int from);
// The first element of a numeric value as a double; def when there is none.
double number_of(const Mm& m, double def = 0.0);
// A real row of the numbers given.
Mm row_of(std::initializer_list<double> v);
// The text of a string value (its elements in column order).
std::string text_of(const Mm& m);

// The form of the table of functions by name for a function of one list: the inputs of the call
// become the list (a single cell input is taken as the list itself).
template <Mm (*F)(const Mm&)>
void list_form(int nin, const Mm* in, int, Mm* out) {
    if (nin == 1 && in[0].flags.type == ak_mm && !in[0].fields) {
        out[0] = F(in[0]);
        return;
    }
    Mm list = new_cell(1, nin);
    for (int k = 0; k < nin; ++k) static_cast<Mm*>(list.pr)[k] = in[k];
    out[0] = F(list);
}

}  // namespace ak_internal

// ---- property lists, for the creation code of figures, axes and plots ------------------------------
// Items before the first string, structure or cell.
int count_leading_data(const Mm& list);
// The value of the first occurrence of name from the one-based position start on, else def.
Mm prop_list_value(const Mm& list, int start, const Mm& name, const Mm& def);
// set(h, list(start:end)); nothing when start is past the end.
void apply_prop_list(const Mm& h, const Mm& list, int start);
// A colour word or letter as an RGB row; anything not a string comes back unchanged.
Mm parse_color(const Mm& value);
