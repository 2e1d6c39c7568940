// Drawing plots to PNG files through the library and the engine, against Cairo alone drawing the
// same path into a surface of the same size and writing it out.
//   build/bench/bench_plots --benchmark_repetitions=3
#include <cairo.h>

#include <cmath>
#include <string>
#include <unistd.h>
#include <vector>

#include "arklib.h"
#include "bench/paired.h"

namespace {

std::string temp_file(const char* name) { return "/tmp/arklib_bench_" + std::to_string(getpid()) + name; }

Mm page(double w, double h) {
    Mm pos(0, 0, 0, 1, 4, ak_double);
    double v[4] = {0, 0, w, h};
    for (int k = 0; k < 4; ++k) pos.addr()[k] = v[k];
    return pos;
}

// A line of n points: a chirp, so that the path turns at every point.
void line_data(int n, Mm& x, Mm& y) {
    x = Mm(0, 0, 0, 1, n, ak_double);
    y = Mm(0, 0, 0, 1, n, ak_double);
    for (int k = 0; k < n; ++k) {
        double t = static_cast<double>(k) / n;
        x.addr()[k] = t;
        y.addr()[k] = std::sin(200 * t * t);
    }
}

void BM_LineOfAMillionPoints(benchmark::State& state) {
    initM();
    const int n = 1000000, w = 1000, h = 800;
    Mm x, y;
    line_data(n, x, y);
    std::string lib_file = temp_file("_line_lib.png"), base_file = temp_file("_line_base.png");
    figure((CL("Position"), page(w, h)));
    auto lib = [&] {
        plot((CL(x), y));
        print((CL("-dpng"), lib_file.c_str()));
    };
    // The same path, mapped into a plot box of the same size, stroked as the engine strokes a line.
    auto base = [&] {
        cairo_surface_t* s = cairo_image_surface_create(CAIRO_FORMAT_RGB24, w, h);
        cairo_t* cr = cairo_create(s);
        cairo_set_source_rgb(cr, 1, 1, 1);
        cairo_paint(cr);
        double bx = 60, by = 20, bw = w - 80, bh = h - 60;
        const double *xd = x.addr(), *yd = y.addr();
        cairo_move_to(cr, bx + xd[0] * bw, by + bh - (yd[0] + 1) / 2 * bh);
        for (int k = 1; k < n; ++k) cairo_line_to(cr, bx + xd[k] * bw, by + bh - (yd[k] + 1) / 2 * bh);
        cairo_set_source_rgb(cr, 0, 0, 1);
        cairo_set_line_width(cr, 0.5 * 96 / 72);
        cairo_set_line_join(cr, CAIRO_LINE_JOIN_ROUND);
        cairo_stroke(cr);
        cairo_destroy(cr);
        cairo_surface_write_to_png(s, base_file.c_str());
        cairo_surface_destroy(s);
    };
    ak_bench::paired(state, lib, base, 1);
    figure_close(TM("all"));
    unlink(lib_file.c_str());
    unlink(base_file.c_str());
}
BENCHMARK(BM_LineOfAMillionPoints)->Iterations(4)->Unit(benchmark::kMillisecond);

void BM_SurfOf500By500(benchmark::State& state) {
    initM();
    const int m = 500, w = 1000, h = 800;
    Mm z(0, 0, 0, m, m, ak_double);
    for (int j = 0; j < m; ++j)
        for (int i = 0; i < m; ++i) {
            double u = -3 + 6.0 * j / (m - 1), v = -3 + 6.0 * i / (m - 1);
            z.addr()[j * m + i] = std::exp(-u * u - v * v) * std::cos(2 * u) + 0.3 * std::sin(v);
        }
    std::string lib_file = temp_file("_surf_lib.png"), base_file = temp_file("_surf_base.png");
    figure((CL("Position"), page(w, h)));
    auto lib = [&] {
        surf(z);
        print((CL("-dpng"), lib_file.c_str()));
    };
    // Every quad of the grid projected, filled with a colour and its edge stroked, far rows first.
    auto base = [&] {
        cairo_surface_t* s = cairo_image_surface_create(CAIRO_FORMAT_RGB24, w, h);
        cairo_t* cr = cairo_create(s);
        cairo_set_source_rgb(cr, 1, 1, 1);
        cairo_paint(cr);
        const double* zd = z.addr();
        const double a = -37.5 * M_PI / 180, e = 30 * M_PI / 180;
        auto project = [&](int i, int j, double& px, double& py) {
            double X = static_cast<double>(j) / (m - 1) - 0.5, Y = static_cast<double>(i) / (m - 1) - 0.5;
            double Z = zd[j * m + i] / 2.6;
            double sx = std::cos(a) * X + std::sin(a) * Y;
            double sy = -std::sin(a) * std::sin(e) * X + std::cos(a) * std::sin(e) * Y + std::cos(e) * Z;
            px = w / 2 + sx * 700;
            py = h / 2 - sy * 700;
        };
        cairo_set_line_width(cr, 0.5 * 96 / 72);
        for (int i = 0; i + 1 < m; ++i)
            for (int j = 0; j + 1 < m; ++j) {
                double px, py;
                project(i, j, px, py);
                cairo_move_to(cr, px, py);
                project(i + 1, j, px, py);
                cairo_line_to(cr, px, py);
                project(i + 1, j + 1, px, py);
                cairo_line_to(cr, px, py);
                project(i, j + 1, px, py);
                cairo_line_to(cr, px, py);
                cairo_close_path(cr);
                double c = (zd[j * m + i] + 1.3) / 2.6;
                cairo_set_source_rgb(cr, c, 0.5, 1 - c);
                cairo_fill_preserve(cr);
                cairo_set_source_rgb(cr, 0, 0, 0);
                cairo_stroke(cr);
            }
        cairo_destroy(cr);
        cairo_surface_write_to_png(s, base_file.c_str());
        cairo_surface_destroy(s);
    };
    ak_bench::paired(state, lib, base, 1);
    figure_close(TM("all"));
    unlink(lib_file.c_str());
    unlink(base_file.c_str());
}
BENCHMARK(BM_SurfOf500By500)->Iterations(2)->Unit(benchmark::kMillisecond);

}  // namespace
