// Graphics handles and properties: the thin functions over the graphics engine, and set and get.
//
// A graphics object is a number that the engine handed out (0 is the root) held in an ordinary
// Mm; the library keeps nothing of an object. Argument lists are cells: set(h, CL("Color"), "r",
// "LineWidth", 2) and findobj(CL(h), "Tag", "x").
#pragma once
#include "arklib/matrix.h"

// ---- handles ---------------------------------------------------------------------------------------
Mm ishandle(const Mm& h);    // 1 for each element that is a live object, in the shape of h
Mm ishghandle(const Mm& h);  // the same
Mm allchild(const Mm& h);
Mm findobj();
Mm findobj(const Mm& list);  // {start handles, "flat", name, value, ...}
Mm findall(const Mm& list);
Mm findfigs();
Mm deleteobj(const Mm& h);
Mm gco();
Mm gco(const Mm& f);
Mm gcbo();
Mm gcbo(i_o_t, Mm& o, Mm& f);
Mm gcbf();
Mm guiexit(const Mm& code);
Mm qorcrash();
Mm consolemode(const Mm& m);
Mm setapplicationhandle(void* window);
Mm setapplicationkeyhandle(void* window);
Mm waitfor(const Mm& h);
Mm waitfor(const Mm& h, const Mm& name);
Mm waitfor(const Mm& h, const Mm& name, const Mm& value);
Mm waitforbuttonpress();
Mm checkforbuttonpress();
Mm setstatus(const Mm& text);
Mm setstatus(const Mm& f, const Mm& text);
Mm designer();
Mm guide();
Mm ginput();
Mm ginput(const Mm& n);
Mm ginput(i_o_t, Mm& x, Mm& y);
Mm ginput(const Mm& n, i_o_t, Mm& x, Mm& y);
Mm ginput(i_o_t, Mm& x, Mm& y, Mm& button);
Mm ginput(const Mm& n, i_o_t, Mm& x, Mm& y, Mm& button);
Mm gtext(const Mm& s);
Mm getpts(i_o_t, Mm& x, Mm& y);
Mm getpts(const Mm& fig, i_o_t, Mm& x, Mm& y);
// Writes the figure (or the figure of an object) to a PNG, SVG or PDF file, chosen by the file's
// extension, or by `format` ("png", "svg", "pdf") added to the name.
Mm saveas(const Mm& h, const Mm& file);
Mm saveas(const Mm& h, const Mm& file, const Mm& format);

// ---- properties --------------------------------------------------------------------------------------
Mm set(const Mm& h);                                   // the structure of settable properties
Mm set(const Mm& h, const Mm& list);                   // a cell of names and values, structures, cells
Mm set(const Mm& h, const Mm& name, const Mm& value);  // one property of each handle
Mm set(const Mm& h, const char* name, const Mm& value);
Mm get(const Mm& h);                   // the structure of all properties
Mm get(const Mm& h, const Mm& name);   // a value, or a cell for several handles or names
Mm get(const Mm& h, const char* name);
Mm setuprop(const Mm& h, const Mm& name, const Mm& value);
Mm getuprop(const Mm& h, const Mm& name);
Mm clruprop(const Mm& h, const Mm& name);

// ---- making objects ------------------------------------------------------------------------------------
// Asks the engine for a new object: kind is "Figure", "Axes", "line", "patch", "surface", "text",
// "image", a control style, "menuitem" or "contextmenu"; parent is a handle (a figure number for
// "Figure"), or -1 for the engine's default parent. The result is the new handle. This is the step
// that figure, axes and the plotting functions build on.
Mm ak_new_object(const char* kind, const Mm& parent);
