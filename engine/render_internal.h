// Shared pieces of the renderer.
#pragma once

#include <cairo.h>

#include <string>
#include <vector>

#include "engine/objects.h"

namespace ae {

double nice_step(double range, double target);
// The width of one bar: 0.8 of the least spacing of x.
double bar_width(const std::vector<double>& x);
std::vector<double> ticks_for(double lo, double hi, bool log, double target);

struct RGB {
    double r = 0, g = 0, b = 0;
};

// Maps data coordinates of an axes to device coordinates (pixels, y downwards).
struct Projection {
    double lo[3], hi[3];
    bool log[3], reverse[3];
    double az = 0, el = 90;
    bool is3d = false;
    double bx = 0, by = 0, bw = 1, bh = 1;  // the axes box in device units
    double minx = -0.5, maxx = 0.5, miny = -0.5, maxy = 0.5;

    void setup(const Object& ax, double fig_w, double fig_h);
    // Normalised position 0..1 along axis k; NaN where there is none (log of a non-positive value).
    double norm(int k, double v) const;
    // Device point of a data point; false when it has no place (NaN, or not positive on a log axis).
    bool point(double x, double y, double z, double& px, double& py) const;
    bool point_depth(double x, double y, double z, double& px, double& py, double& depth) const;
    void rotate(double u, double v, double w, double& sx, double& sy, double& depth) const;
    void device(double sx, double sy, double& px, double& py) const;
};

// Everything the drawing of one figure needs.
struct Painter {
    cairo_t* cr;
    double px_per_pt;     // device units per typographic point
    const Value* colormap;
    double clim[2] = {0, 1};

    void set_color(const RGB& c) const { cairo_set_source_rgb(cr, c.r, c.g, c.b); }
    // A colour from CData through the colormap.
    RGB mapped(double c, bool direct) const;
    // Sets the dash pattern of a line style; false for "none".
    bool line_style(const std::string& style, double width) const;
    void marker(const std::string& kind, double x, double y, double size, const RGB* edge, const RGB* face) const;
    // Draws text with its anchor at (x, y); rotation in degrees counterclockwise.
    void text(const std::string& s, double x, double y, double size_pt, const char* halign, const char* valign,
              double rotation, const RGB& color, bool bold = false, const std::string& font = "") const;
    double text_width(const std::string& s, double size_pt) const;
};

// A colour property: true with the RGB when the value is a triple.
bool rgb_of(const Value& v, RGB& out);

// Where the bars of a bar line go among the bar lines of its axes: side by side (index of count),
// or stacked on the sums of the earlier ones (Stacktype "stacked").
struct BarPlace {
    int index = 0, count = 1;
    bool stacked = false;
    std::vector<double> base;
};
BarPlace bar_place(const Object& o);

// Line charts that are not polylines (barh, area, pie); false for the others.
bool draw_line_chart(const Painter& p, const Projection& pr, const Object& o, const std::string& chart,
                     const RGB& color, double width);
// Polar data (angle, radius) to the plane, in place.
void polar_to_plane(std::vector<double>& theta, std::vector<double>& r);
// The levels of a contour surface: NumContourLines as a count inside the data's range, or as the
// list itself.
std::vector<double> contour_levels_of(const Object& o);
// Contour lines of a surface (filled bands below them for contourf), at their heights for
// contour3, else in the plane or on the floor of a 3-D axes.
void draw_contour(const Painter& p, const Projection& pr, const Object& o, bool filled, bool at_height);

void draw_axes(const Painter& p, Object& ax, double fig_w, double fig_h);
void draw_object(const Painter& p, const Projection& pr, const Object& o);
void draw_legend(const Painter& p, const Projection& pr, const Object& ax);

}  // namespace ae
