// A graphics engine for tests that logs every entry call, in order, as one line of text, and
// answers qor_get from a table the test fills.
//
//   RecordingEngine rec;            // installed for its lifetime, the previous engine put back after
//   rec.answer("Children", m);      // what qor_get of that name gives (any handle)
//   ... rec.log == {"set 5 LineWidth 1x1 [2]", ...}
//
// A logged write reads "set <h> <name> <rows>x<cols>[x<pages>] [<elements>]" with strings shown
// as 'text'; a read "get <h> <name>"; points "line_data <h> <n> <strides> [x] [y] [z]" ("[-]" for
// a null pointer).
#pragma once
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "graphics/engine_table.h"

namespace ak_test {

class RecordingEngine {
  public:
    RecordingEngine() {
        current() = this;
        ak_engine_table t{};
        t.qor_init = [](int v, int r) { current()->add("init " + num(v) + " " + num(r)); };
        t.qor_set_event_handler = [](qor_event_handler_t f) { current()->add(f ? "event handler" : "event handler null"); };
        t.qor_set_error_handler = [](qor_error_handler_t f) { current()->add(f ? "error handler" : "error handler null"); };
        t.qor_set_free_handler = [](qor_free_handler_t f) { current()->add(f ? "free handler" : "free handler null"); };
        t.qor_new_object = [](const char* kind, int parent) {
            current()->add(std::string("new ") + (kind ? kind : "(null)") + " " + num(parent));
            return current()->next_handle++;
        };
        t.qor_is_handle = [](double h) {
            current()->add("is_handle " + num(h));
            return h > 0 && h < current()->next_handle ? 1 : 0;
        };
        t.qor_get = [](double h, const char* name) { return current()->on_get(h, name); };
        t.qor_set = [](double h, const char* name, QorValue* v) { current()->on_set(h, name, v); };
        t.qor_current_figure = [] {
            current()->add("current_figure");
            return current()->figure;
        };
        t.qor_refresh = [] { current()->add("refresh"); };
        t.qor_line_data = [](double h, int n, double* x, int xs, double* y, int ys, double* z, int zs) {
            std::string s = "line_data " + num(h) + " " + num(n) + " " + num(xs) + num(ys) + num(zs);
            for (double* p : {x, y, z}) {
                s += " [";
                for (int k = 0; p && k < n; ++k) s += (k ? " " : "") + num(p[k]);
                s += p ? "]" : "-]";
            }
            current()->add(s);
        };
        t.qor_mesh_axes = [](double h) { current()->add("mesh_axes " + num(h)); };
        t.qor_surface_axes = [](double h) { current()->add("surface_axes " + num(h)); };
        t.qor_embed_mode = [](int on) { current()->add("embed_mode " + num(on)); };
        t.qor_console_mode = [](int m) { current()->add("console_mode " + num(m)); };
        t.qor_wait_handle = [](double h) { current()->add("wait_handle " + num(h)); };
        t.qor_wait_button = [](int mode) {
            current()->add("wait_button " + num(mode));
            RecordingEngine* r = current();
            if (r->presses.empty()) return -1;
            int p = r->presses.front();
            r->presses.erase(r->presses.begin());
            return p;
        };
        t.qor_exit = [](int code) { current()->add("exit " + num(code)); };
        t.qor_set_app_window = [](void* w) { current()->add(w ? "app_window set" : "app_window null"); };
        t.qor_set_app_key_window = [](void* w) { current()->add(w ? "app_key_window set" : "app_key_window null"); };
        previous_ = ak_engine_install(t);
    }
    ~RecordingEngine() {
        ak_engine_install(previous_);
        for (auto& kv : answers_) kv.second.free();
        current() = nullptr;
    }
    RecordingEngine(const RecordingEngine&) = delete;
    RecordingEngine& operator=(const RecordingEngine&) = delete;

    // What qor_get of `name` answers, for any handle; an unlisted name answers an empty matrix.
    void answer(const std::string& name, const Mm& value) {
        QorValue r;
        int nd = value.ndims < 2 ? 2 : value.ndims;
        r.setsize(nd, value.dims);
        r.str = value.flags.str;
        r.alloc();
        for (int k = 0; k < r.size(); ++k) r.data[k] = static_cast<double*>(value.pr)[k];
        answers_[name].free();
        answers_[name] = r;
    }
    // A written value kept as the answer to later reads (so UserData round-trips).
    bool remember_writes = false;

    std::vector<std::string> log;
    std::vector<int> presses;  // what qor_wait_button gives, in turn; -1 when used up
    double next_handle = 1;
    double figure = -1;

  private:
    static RecordingEngine*& current() {
        static RecordingEngine* r = nullptr;
        return r;
    }
    static std::string num(double v) {
        char b[64];
        std::snprintf(b, sizeof b, "%.15g", v);
        return b;
    }
    void add(const std::string& s) { log.push_back(s); }
    QorValue* on_get(double h, const char* name) {
        add("get " + num(h) + " " + name);
        auto it = answers_.find(name);
        if (it != answers_.end()) return &it->second;
        empty_ = QorValue();
        return &empty_;
    }
    void on_set(double h, const char* name, QorValue* v) {
        std::string s = "set " + num(h) + " " + name + " " + num(v->dims[0]) + "x" + num(v->dims[1]);
        for (int k = 2; k < v->ndims; ++k) s += "x" + num(v->dims[k]);
        if (v->str) {
            s += " '";
            for (int k = 0; k < v->size(); ++k) s += static_cast<char>(v->data[k]);
            s += "'";
        } else if (std::string(name).compare(0, 4, "User") != 0) {
            s += " [";
            for (int k = 0; k < v->size(); ++k) s += (k ? " " : "") + num(v->data[k]);
            s += "]";
        }
        add(s);
        if (remember_writes) {
            QorValue copy(*v, v->str);
            for (int k = 0; k < v->size(); ++k) copy.data[k] = v->data[k];
            answers_[name].free();
            answers_[name] = copy;
        }
    }

    ak_engine_table previous_;
    std::map<std::string, QorValue> answers_;
    QorValue empty_;
};

}  // namespace ak_test
