// Dialogs: message boxes, questions, input forms, menus, file and colour pickers, progress bars.
// They go to the graphics engine; ours has no window system, so on a terminal it asks there, and
// without one it takes the default answer and says so on stderr.
//
// A message is a string, a character matrix (one line a row) or a cell of strings (one line each).
// Lists of choices and prompts are cells of strings.
#pragma once
#include "arklib/matrix.h"

Mm msgbox(const Mm& message);
Mm msgbox(const Mm& message, const Mm& title);
Mm msgbox(const Mm& message, const Mm& title, const Mm& icon);  // "none", "error", "help", "warn"
Mm errordlg(const Mm& message);
Mm errordlg(const Mm& message, const Mm& title);
Mm warndlg(const Mm& message);
Mm warndlg(const Mm& message, const Mm& title);
Mm helpdlg(const Mm& message);
Mm helpdlg(const Mm& message, const Mm& title);

// The chosen button's text: "Yes", "No" or "Cancel" unless buttons are given; the default button
// (the first one unless named) when no choice is made; "" when cancelled.
Mm questdlg(const Mm& question);
Mm questdlg(const Mm& question, const Mm& title);
Mm questdlg(const Mm& question, const Mm& title, const Mm& default_button);
Mm questdlg(const Mm& question, const Mm& title, const Mm& b1, const Mm& b2, const Mm& default_button);
Mm questdlg(const Mm& question, const Mm& title, const Mm& b1, const Mm& b2, const Mm& b3,
            const Mm& default_button);

// A column cell of the answers, one for each prompt (defaults where none is given); an empty cell
// when cancelled.
Mm inputdlg(const Mm& prompts);
Mm inputdlg(const Mm& prompts, const Mm& title);
Mm inputdlg(const Mm& prompts, const Mm& title, const Mm& lines);
Mm inputdlg(const Mm& prompts, const Mm& title, const Mm& lines, const Mm& defaults);

// The number of the chosen item, 0 when none; choices is a cell of strings or one string.
Mm menu(const Mm& title, const Mm& choices);

// The file's name and its folder (ending in "/"); 0 and 0 when cancelled.
Mm uigetfile();
Mm uigetfile(const Mm& filter);
Mm uigetfile(const Mm& filter, const Mm& title);
Mm uigetfile(i_o_t, Mm& file, Mm& path);
Mm uigetfile(const Mm& filter, i_o_t, Mm& file, Mm& path);
Mm uigetfile(const Mm& filter, const Mm& title, i_o_t, Mm& file, Mm& path);
Mm uiputfile();
Mm uiputfile(const Mm& filter);
Mm uiputfile(const Mm& filter, const Mm& title);
Mm uiputfile(i_o_t, Mm& file, Mm& path);
Mm uiputfile(const Mm& filter, i_o_t, Mm& file, Mm& path);
Mm uiputfile(const Mm& filter, const Mm& title, i_o_t, Mm& file, Mm& path);

// An RGB row in [0, 1]; when cancelled, the initial colour, or 0 without one.
Mm uisetcolor();
Mm uisetcolor(const Mm& initial);

// A progress bar at fraction x (0 to 1): a figure tagged "waitbar" that holds x as its UserData,
// drawn as a text bar on a terminal's stderr. waitbar(x, h) and waitbar(x, h, message) move it.
Mm waitbar(const Mm& x);
Mm waitbar(const Mm& x, const Mm& message_or_handle);
Mm waitbar(const Mm& x, const Mm& h, const Mm& message);
