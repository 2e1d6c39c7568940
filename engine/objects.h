// The engine's object tree: values, objects, the handle table and the property store.
#pragma once

#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace ae {

// A property value: a matrix of doubles of up to four dimensions, maybe text.
struct Value {
    int nd = 2;
    int dims[4] = {0, 0, 1, 1};
    bool str = false;
    std::vector<double> d;

    static Value num(double v);
    static Value row(const std::vector<double>& v);
    static Value matrix(int rows, int cols);
    static Value text(const std::string& s);
    int count() const { return static_cast<int>(d.size()); }
    bool empty() const { return d.empty(); }
    int rows() const { return dims[0]; }
    int cols() const { return count() && dims[0] ? count() / dims[0] : 0; }
    double at(int k, double fallback = 0.0) const { return k >= 0 && k < count() ? d[k] : fallback; }
    // Row-by-row text of a character matrix; a vector gives one line.
    std::string as_text() const;
    std::vector<std::string> lines() const;
    bool is_text(const char* word) const;  // a string equal to word, without case
};

struct NoCaseLess {
    bool operator()(const std::string& a, const std::string& b) const {
        return strcasecmp(a.c_str(), b.c_str()) < 0;
    }
};
bool same_word(const std::string& a, const char* b);

// Every kind of object the engine keeps.
enum class Kind { root, figure, axes, line, patch, surface, text, image, uicontrol, uimenu, uicontextmenu };
const char* kind_name(Kind k);  // the answer to Type

struct Object {
    double handle = 0;
    Kind kind = Kind::root;
    double parent = -1;
    std::vector<double> children;  // newest first, as Children answers
    std::map<std::string, Value, NoCaseLess> props;
    bool hidden_child = false;  // axes labels and titles: not listed in Children

    const Value* find(const char* name) const;
    const Value& get(const char* name) const;  // empty when unset
    double number(const char* name, double fallback = 0.0) const;
    std::string word(const char* name) const;  // text of the property, lower case not applied
    bool on(const char* name) const { return same_word(word(name), "on"); }
    bool is_text_prop(const char* name, const char* w) const { return same_word(word(name), w); }
};

// On while the program's axes lives in a window of its own (qor_embed_mode).
extern bool embedded_mode;

// ---- the tree ----------------------------------------------------------------------------------
Object* find_object(double h);
Object& root();
// Makes an object of the kind under parent, with the defaults of its kind; returns it.
Object& make_object(Kind kind, double parent);
// A figure of the given number, made when it does not exist.
Object& figure_of_number(int number);
int next_figure_number();
// Deletes h and everything under it: each object's DeleteFcn runs first, then its UserData is
// handed back, children before parents.
void delete_object(double h);
// Moves h under a new parent.
void reparent(double h, double parent);
// The figure that holds h (h itself for a figure), or null.
Object* figure_of(double h);
// The axes that holds h (h itself for an axes), or null.
Object* axes_of(double h);
// Current figure, made when `make`; null when none and not `make`.
Object* current_figure(bool make);
// Current axes of the current figure, made (with its figure) when `make`.
Object* current_axes(bool make);
// All objects under h, depth first, parents before children, hidden children included.
void descendants(double h, std::vector<double>& out);

// ---- properties ---------------------------------------------------------------------------------
// Writes a property after checking the value against the property's type; false (and a report
// through the error handler) when the value does not fit.
bool set_property(Object& o, const char* name, const Value& v);
// Reads a property; false (with a report) when the object has no such property.
bool get_property(Object& o, const char* name, Value& out);
// The defaults of a kind, written into a fresh object.
void apply_defaults(Object& o);
// The names of the properties of the object, blank-separated.
std::string property_names(const Object& o);
// A colour word, a letter or "none" as RGB; false when the text names no colour.
bool color_from_text(const std::string& s, double rgb[3]);

// ---- callbacks into the library --------------------------------------------------------------------
void report_error(const char* fmt, ...);
// Runs the callback text of property `name` of object h, with h as the callback object.
void run_object_callback(double h, const char* name);
void post_callback_text(const Value& text);
void free_userdata(const Value& v);

// ---- rendering --------------------------------------------------------------------------------------
// Writes the figure into a file; the format is chosen by the extension (.png, .svg, .pdf).
bool write_figure(Object& fig, const std::string& file);
// The figure as a true-colour image: rows x cols x 3, values 0 to 1.
Value capture_figure(Object& fig);
// Fills limits and ticks that are in automatic mode from the axes' children.
void update_axes_auto(Object& ax);

}  // namespace ae
