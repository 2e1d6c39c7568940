// Helpers shared by the graphics files: the record that crosses to the engine, list parsing, and
// the small comparisons that property lists need.
#pragma once

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

// The current figure and axes as the engine knows them (made when missing, for the axes).
double current_figure();
double current_axes();

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
