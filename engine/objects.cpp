// The object tree of the engine: handles, parent and child links, creation and deletion.
#include "engine/objects.h"

#include <algorithm>
#include <cctype>
#include <memory>

namespace ae {

// ---- values -------------------------------------------------------------------------------------
Value Value::num(double v) {
    Value r;
    r.dims[0] = r.dims[1] = 1;
    r.d.assign(1, v);
    return r;
}

Value Value::row(const std::vector<double>& v) {
    Value r;
    r.dims[0] = v.empty() ? 0 : 1;
    r.dims[1] = static_cast<int>(v.size());
    r.d = v;
    return r;
}

Value Value::matrix(int rows, int cols) {
    Value r;
    r.dims[0] = rows;
    r.dims[1] = cols;
    r.d.assign(static_cast<size_t>(rows) * cols, 0.0);
    return r;
}

Value Value::text(const std::string& s) {
    Value r;
    r.str = true;
    if (!s.empty()) {
        r.dims[0] = 1;
        r.dims[1] = static_cast<int>(s.size());
        for (unsigned char c : s) r.d.push_back(c);
    }
    return r;
}

std::vector<std::string> Value::lines() const {
    std::vector<std::string> out;
    int r = rows(), c = cols();
    if (nd > 2 || r == 0) return out;
    for (int i = 0; i < r; ++i) {
        std::string s;
        for (int j = 0; j < c; ++j) s += static_cast<char>(static_cast<int>(d[j * r + i]));
        while (!s.empty() && (s.back() == ' ' || s.back() == '\0')) s.pop_back();
        out.push_back(s);
    }
    return out;
}

std::string Value::as_text() const {
    std::string s;
    if (rows() <= 1) {
        for (double v : d) s += static_cast<char>(static_cast<int>(v));
        return s;
    }
    auto ls = lines();
    for (size_t k = 0; k < ls.size(); ++k) s += (k ? "\n" : "") + ls[k];
    return s;
}

bool Value::is_text(const char* word) const { return str && same_word(as_text(), word); }

bool same_word(const std::string& a, const char* b) { return strcasecmp(a.c_str(), b) == 0; }

const char* kind_name(Kind k) {
    switch (k) {
        case Kind::root: return "root";
        case Kind::figure: return "figure";
        case Kind::axes: return "axes";
        case Kind::line: return "line";
        case Kind::patch: return "patch";
        case Kind::surface: return "surface";
        case Kind::text: return "text";
        case Kind::image: return "image";
        case Kind::uicontrol: return "uicontrol";
        case Kind::uimenu: return "uimenu";
        case Kind::uicontextmenu: return "uicontextmenu";
    }
    return "root";
}

// ---- objects ------------------------------------------------------------------------------------
const Value* Object::find(const char* name) const {
    auto it = props.find(name);
    return it == props.end() ? nullptr : &it->second;
}

const Value& Object::get(const char* name) const {
    static const Value none;
    const Value* v = find(name);
    return v ? *v : none;
}

double Object::number(const char* name, double fallback) const {
    const Value& v = get(name);
    return v.empty() ? fallback : v.d[0];
}

std::string Object::word(const char* name) const {
    const Value& v = get(name);
    return v.str ? v.as_text() : std::string();
}

// ---- the handle table ------------------------------------------------------------------------------
namespace {

// Handles of objects other than figures start here; figure numbers stay below.
constexpr double first_object_handle = 1000001;

struct Table {
    std::map<double, std::unique_ptr<Object>> objects;
    double next_handle = first_object_handle;
    Table() {
        auto r = std::make_unique<Object>();
        r->handle = 0;
        r->kind = Kind::root;
        apply_defaults(*r);
        objects[0] = std::move(r);
    }
};

Table& table() {
    static Table t;
    return t;
}

void unlink_child(Object& parent, double h) {
    auto& c = parent.children;
    c.erase(std::remove(c.begin(), c.end(), h), c.end());
}

void link_child(Object& parent, Object& child) {
    child.parent = parent.handle;
    parent.children.insert(parent.children.begin(), child.handle);
}

}  // namespace

Object* find_object(double h) {
    auto& t = table().objects;
    auto it = t.find(h);
    return it == t.end() ? nullptr : it->second.get();
}

Object& root() { return *table().objects[0]; }

Object& make_object(Kind kind, double parent) {
    Table& t = table();
    double h = t.next_handle++;
    while (t.objects.count(h)) h = t.next_handle++;
    auto o = std::make_unique<Object>();
    o->handle = h;
    o->kind = kind;
    Object& ref = *o;
    t.objects[h] = std::move(o);
    apply_defaults(ref);
    if (Object* p = find_object(parent)) link_child(*p, ref);
    return ref;
}

int next_figure_number() {
    int n = 1;
    while (find_object(n)) ++n;
    return n;
}

Object& figure_of_number(int number) {
    if (Object* f = find_object(number)) return *f;
    Table& t = table();
    auto o = std::make_unique<Object>();
    o->handle = number;
    o->kind = Kind::figure;
    Object& ref = *o;
    t.objects[number] = std::move(o);
    apply_defaults(ref);
    link_child(root(), ref);
    return ref;
}

void descendants(double h, std::vector<double>& out) {
    Object* o = find_object(h);
    if (!o) return;
    for (double c : o->children) {
        out.push_back(c);
        descendants(c, out);
    }
}

void delete_object(double h) {
    Object* o = find_object(h);
    if (!o || o->kind == Kind::root) return;
    run_object_callback(h, "DeleteFcn");
    // The callback may have deleted it already.
    o = find_object(h);
    if (!o) return;
    std::vector<double> kids = o->children;
    for (double c : kids) delete_object(c);
    o = find_object(h);
    if (!o) return;
    free_userdata(o->get("UserData"));
    if (Object* p = find_object(o->parent)) {
        unlink_child(*p, h);
        if (p->number("CurrentAxes", -1) == h) p->props["CurrentAxes"] = Value();
        if (p->number("CurrentObject", -1) == h) p->props["CurrentObject"] = Value();
    }
    Object& r = root();
    if (r.number("CurrentFigure", -1) == h) {
        // The most recent figure left becomes current.
        r.props["CurrentFigure"] = Value();
        for (double c : r.children)
            if (find_object(c) && find_object(c)->kind == Kind::figure) {
                r.props["CurrentFigure"] = Value::num(c);
                break;
            }
    }
    if (r.number("CallbackObject", -1) == h) r.props["CallbackObject"] = Value();
    table().objects.erase(h);
}

void reparent(double h, double parent) {
    Object* o = find_object(h);
    Object* p = find_object(parent);
    if (!o || !p || o->parent == parent) return;
    if (Object* old = find_object(o->parent)) unlink_child(*old, h);
    link_child(*p, *o);
}

Object* figure_of(double h) {
    Object* o = find_object(h);
    while (o && o->kind != Kind::figure) o = find_object(o->parent);
    return o;
}

Object* axes_of(double h) {
    Object* o = find_object(h);
    while (o && o->kind != Kind::axes) o = find_object(o->parent);
    return o;
}

Object* current_figure(bool make) {
    Object& r = root();
    if (Object* f = find_object(r.number("CurrentFigure", -1)))
        if (f->kind == Kind::figure) return f;
    if (!make) return nullptr;
    Object& f = figure_of_number(next_figure_number());
    r.props["CurrentFigure"] = Value::num(f.handle);
    return &f;
}

Object* current_axes(bool make) {
    Object* f = current_figure(make);
    if (!f) return nullptr;
    if (Object* a = find_object(f->number("CurrentAxes", -1)))
        if (a->kind == Kind::axes) return a;
    if (!make) return nullptr;
    Object& a = make_object(Kind::axes, f->handle);
    f->props["CurrentAxes"] = Value::num(a.handle);
    return &a;
}

}  // namespace ae
