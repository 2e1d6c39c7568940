// Figures and axes: the current figure and axes, making and closing them, and the commands that
// change their state (hold, grid, axis, view, labels, legend, colormap, printing).
//
// A function that takes a list takes a cell of arguments; a value that is not a cell is a list of
// one: figure(), figure(3), axes((CL("Position"), pos)), legend((CL("sin"), "cos")).
#pragma once
#include "arklib/matrix.h"

// Not empty while the program's single axes lives in a window of its own (winaxes): then gcf is 0,
// gca is this axes and no figure is ever made.
extern Mm embedded_axes;

Mm gcf();
Mm gca();
Mm figure();
Mm figure(const Mm& list);
Mm figure_close();                          // the language's close
Mm figure_close(const Mm& p);               // a figure number, or "all"
Mm figure_close(const Mm& p, const Mm& q);  // q is ignored
Mm dialog();
Mm dialog(const Mm& list);
Mm axes();
Mm axes(const Mm& list);
Mm winaxes(void* window);
Mm vbaxes(const Mm& window);
Mm axesposition(const Mm& a, const Mm& b, const Mm& c, const Mm& d);
Mm newplot();
Mm subplot();
Mm subplot(const Mm& k);                          // 221, or an axes handle
Mm subplot(const Mm& m, const Mm& n, const Mm& p);
Mm subplot(const Mm& word, const Mm& pos);        // subplot("position", [l b w h])
Mm hold();
Mm hold(const Mm& s);
Mm ishold();
Mm grid();
Mm grid(const Mm& s);
Mm box(const Mm& s);
Mm zoom();
Mm zoom(const Mm& s);
Mm zoom(const Mm& fig, const Mm& s);
Mm rotate3d();
Mm rotate3d(const Mm& s);
Mm xlabel(const Mm& list);
Mm ylabel(const Mm& list);
Mm zlabel(const Mm& list);
Mm title(const Mm& list);
Mm xlabel();
Mm ylabel();
Mm zlabel();
Mm title();
Mm axis();
Mm axis(const Mm& list);
Mm view();
Mm view(const Mm& a);
Mm view(const Mm& az, const Mm& el);
Mm view(i_o_t, Mm& az, Mm& el);
Mm legend();
Mm legend(const Mm& list);
Mm datetick();
Mm datetick(const Mm& a);
Mm datetick(const Mm& a, const Mm& f);
Mm drawnow();
Mm refresh();
Mm refresh(const Mm& h);
Mm shg();
Mm clg();
Mm clf();
Mm clf(const Mm& h);
Mm clf(const Mm& h, const Mm& word);  // clf(h, "reset")
Mm cla();
Mm cla(const Mm& word);               // cla("reset")
Mm reset(const Mm& h);
Mm capture();
Mm capture(const Mm& h);
Mm capture(const Mm& h, i_o_t, Mm& x, Mm& map);
Mm getframe();
Mm getframe(const Mm& h);
Mm print();
Mm print(const Mm& list);  // "-dpng", "file.png", ...
Mm orient();
Mm orient(const Mm& x);
Mm orient(const Mm& h, const Mm& s);
Mm whitebg();
Mm whitebg(const Mm& x);
Mm whitebg(const Mm& h, const Mm& c);
// The current figure's colormap; colormap(map) sets it (an n x 3 matrix, or the name of a map
// function such as "jet" or "gray").
Mm colormap();
Mm colormap(const Mm& map);
