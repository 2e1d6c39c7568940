// Colormaps and colour conversions.
#include "arklib/colormaps.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"

namespace {

using rgb_t = std::array<double, 3>;
constexpr int default_size = 64;

// The number of colours asked for: a non-negative whole number.
int map_size(const char* function, const Mm* m) {
    if (!m) return default_size;
    const double v = scalar(*m);
    if (!(v >= 0) || v != std::floor(v) || v > 1e6) {
        error("%s: number of colours must be a non-negative integer", function);
        return -1;
    }
    return static_cast<int>(v);
}

Mm from_rows(const std::vector<rgb_t>& rows) {
    const int m = static_cast<int>(rows.size());
    Mm r(0, 0, 0, m, m ? 3 : 0, ak_double);
    for (int k = 0; k < m; ++k)
        for (int c = 0; c < 3; ++c) r.addr()[k + c * m] = rows[k][c];
    return r;
}

// A map whose colour k of m depends only on t = k / (m - 1) in [0, 1].
template <class F>
Mm ramp(const char* function, const Mm* m, F colour) {
    const int n = map_size(function, m);
    if (n < 0) return x_M;
    std::vector<rgb_t> rows(n);
    for (int k = 0; k < n; ++k) rows[k] = colour(n > 1 ? static_cast<double>(k) / (n - 1) : 0.0);
    return from_rows(rows);
}

std::vector<rgb_t> hot_rows(int m) {
    const int n = 3 * m / 8;
    std::vector<rgb_t> rows(m);
    for (int k = 0; k < m; ++k) {
        const double r = k < n ? (k + 1.0) / n : 1.0;
        const double g = k < n ? 0.0 : (k < 2 * n ? (k - n + 1.0) / n : 1.0);
        const double b = k < 2 * n ? 0.0 : (k - 2 * n + 1.0) / (m - 2 * n);
        rows[k] = {r, g, b};
    }
    return rows;
}

rgb_t hsv_to_rgb(double h, double s, double v) {
    h = 6 * (h - std::floor(h));
    const int sector = std::min(5, static_cast<int>(h));
    const double f = h - sector;
    const double p = v * (1 - s), q = v * (1 - s * f), t = v * (1 - s * (1 - f));
    switch (sector) {
        case 0: return {v, t, p};
        case 1: return {q, v, p};
        case 2: return {p, v, t};
        case 3: return {p, q, v};
        case 4: return {t, p, v};
        default: return {v, p, q};
    }
}

rgb_t rgb_to_hsv(double r, double g, double b) {
    const double hi = std::max({r, g, b}), lo = std::min({r, g, b}), span = hi - lo;
    double h = 0;
    if (span > 0) {
        if (hi == r)
            h = (g - b) / span;
        else if (hi == g)
            h = 2 + (b - r) / span;
        else
            h = 4 + (r - g) / span;
        h /= 6;
        if (h < 0) h += 1;
    }
    return {h, hi > 0 ? span / hi : 0.0, hi};
}

// OKLab to gamma-encoded sRGB, clipped to [0, 1].
rgb_t oklab_to_srgb(double L, double a, double b) {
    const double l = std::pow(L + 0.3963377774 * a + 0.2158037573 * b, 3);
    const double m = std::pow(L - 0.1055613458 * a - 0.0638541728 * b, 3);
    const double s = std::pow(L - 0.0894841775 * a - 1.2914855480 * b, 3);
    const double lin[3] = {4.0767416621 * l - 3.3077115913 * m + 0.2309699292 * s,
                           -1.2684380046 * l + 2.6097574011 * m - 0.3413193965 * s,
                           -0.0041960863 * l - 0.7034186147 * m + 1.7076147010 * s};
    rgb_t out;
    for (int c = 0; c < 3; ++c) {
        const double v = std::clamp(lin[c], 0.0, 1.0);
        out[c] = v <= 0.0031308 ? 12.92 * v : 1.055 * std::pow(v, 1 / 2.4) - 0.055;
    }
    return out;
}

// The default map: in OKLab, lightness rises linearly from 0.30 to 0.93 while the hue turns from
// blue-violet through teal and green to yellow, with a chroma that grows from 0.07 to 0.13 and
// stays inside the sRGB gamut all the way, so no colour is clipped and the order holds in grey.
rgb_t arkmap_colour(double t) {
    const double pi = std::acos(-1.0);
    const double L = 0.30 + 0.63 * t;
    const double hue = (285.0 - 177.0 * t) * pi / 180;
    const double chroma = 0.07 + 0.06 * t;
    return oklab_to_srgb(L, chroma * std::cos(hue), chroma * std::sin(hue));
}

const rgb_t line_colours[7] = {{0.20, 0.40, 0.80}, {0.90, 0.40, 0.10}, {0.20, 0.65, 0.30}, {0.80, 0.20, 0.25},
                               {0.55, 0.35, 0.75}, {0.10, 0.70, 0.75}, {0.85, 0.70, 0.10}};

// Applies f to every colour of a map (m x 3) or an image (rows x cols x 3).
template <class F>
Mm per_colour(const char* function, const Mm& x, F f) {
    x.warn_uninit();
    if (error_numeric(x, function)) return x_M;
    Mm d = mdouble(x);
    int count = 0;
    if (d.ndims == 2 && d.dims[1] == 3)
        count = d.dims[0];
    else if (d.ndims == 3 && d.dims[2] == 3)
        count = d.dims[0] * d.dims[1];
    else {
        error("%s: a colormap (m x 3) or an image (m x n x 3) expected", function);
        return x_M;
    }
    if (x.flags.type == ak_uchar)
        for (int k = 0; k < d.size(); ++k) d.addr()[k] /= 255;
    Mm r(0, 0, 0, d.ndims, d.dims, ak_double);
    for (int k = 0; k < count; ++k) {
        const rgb_t c = f(d.addr()[k], d.addr()[k + count], d.addr()[k + 2 * count]);
        for (int j = 0; j < 3; ++j) r.addr()[k + j * count] = c[j];
    }
    return r;
}

}  // namespace

Mm gray() { return gray(Mm(double(default_size))); }
Mm gray(const Mm& m) { return ramp("gray", &m, [](double t) { return rgb_t{t, t, t}; }); }
Mm hot() { return hot(Mm(double(default_size))); }
Mm hot(const Mm& m) {
    const int n = map_size("hot", &m);
    return n < 0 ? x_M : from_rows(hot_rows(n));
}
Mm cool() { return cool(Mm(double(default_size))); }
Mm cool(const Mm& m) { return ramp("cool", &m, [](double t) { return rgb_t{t, 1 - t, 1}; }); }
Mm jet() { return jet(Mm(double(default_size))); }
Mm jet(const Mm& m) {
    // Through dark blue, blue, cyan, yellow, red and dark red: one ramp u (up, flat, down) of about
    // three quarters of the map, laid on the green channel and shifted a quarter each way for red
    // and blue.
    const int n = map_size("jet", &m);
    if (n < 0) return x_M;
    const int q = (n + 3) / 4;
    std::vector<double> u;
    for (int k = 1; k <= q; ++k) u.push_back(static_cast<double>(k) / q);
    for (int k = 1; k < q; ++k) u.push_back(1.0);
    for (int k = q; k >= 1; --k) u.push_back(static_cast<double>(k) / q);
    std::vector<rgb_t> rows(n, rgb_t{0, 0, 0});
    const int start = (q + 1) / 2 - (n % 4 == 1 ? 1 : 0);  // green row of u[0], 1-based
    for (int k = 0; k < static_cast<int>(u.size()); ++k) {
        const int g = start + k + 1;
        const int at[3] = {g + q, g, g - q};
        for (int c = 0; c < 3; ++c)
            if (at[c] >= 1 && at[c] <= n) rows[at[c] - 1][c] = u[k];
    }
    return from_rows(rows);
}
Mm hsv() { return hsv(Mm(double(default_size))); }
Mm hsv(const Mm& m) {
    const int n = map_size("hsv", &m);
    if (n < 0) return x_M;
    std::vector<rgb_t> rows(n);
    for (int k = 0; k < n; ++k) rows[k] = hsv_to_rgb(static_cast<double>(k) / n, 1, 1);
    return from_rows(rows);
}
Mm bone() { return bone(Mm(double(default_size))); }
Mm bone(const Mm& m) {
    const int n = map_size("bone", &m);
    if (n < 0) return x_M;
    std::vector<rgb_t> h = hot_rows(n), rows(n);
    for (int k = 0; k < n; ++k) {
        const double g = n > 1 ? static_cast<double>(k) / (n - 1) : 0.0;
        for (int c = 0; c < 3; ++c) rows[k][c] = (7 * g + h[k][2 - c]) / 8;
    }
    return from_rows(rows);
}
Mm copper() { return copper(Mm(double(default_size))); }
Mm copper(const Mm& m) {
    return ramp("copper", &m, [](double t) { return rgb_t{std::min(1.0, 1.25 * t), 0.7812 * t, 0.4975 * t}; });
}
Mm pink() { return pink(Mm(double(default_size))); }
Mm pink(const Mm& m) {
    const int n = map_size("pink", &m);
    if (n < 0) return x_M;
    std::vector<rgb_t> h = hot_rows(n), rows(n);
    for (int k = 0; k < n; ++k) {
        const double g = n > 1 ? static_cast<double>(k) / (n - 1) : 0.0;
        for (int c = 0; c < 3; ++c) rows[k][c] = std::sqrt((2 * g + h[k][c]) / 3);
    }
    return from_rows(rows);
}
Mm spring() { return spring(Mm(double(default_size))); }
Mm spring(const Mm& m) { return ramp("spring", &m, [](double t) { return rgb_t{1, t, 1 - t}; }); }
Mm summer() { return summer(Mm(double(default_size))); }
Mm summer(const Mm& m) { return ramp("summer", &m, [](double t) { return rgb_t{t, 0.5 + t / 2, 0.4}; }); }
Mm autumn() { return autumn(Mm(double(default_size))); }
Mm autumn(const Mm& m) { return ramp("autumn", &m, [](double t) { return rgb_t{1, t, 0}; }); }
Mm winter() { return winter(Mm(double(default_size))); }
Mm winter(const Mm& m) { return ramp("winter", &m, [](double t) { return rgb_t{0, t, 1 - t / 2}; }); }
Mm lines() { return lines(Mm(double(default_size))); }
Mm lines(const Mm& m) {
    const int n = map_size("lines", &m);
    if (n < 0) return x_M;
    std::vector<rgb_t> rows(n);
    for (int k = 0; k < n; ++k) rows[k] = line_colours[k % 7];
    return from_rows(rows);
}
Mm arkmap() { return arkmap(Mm(double(default_size))); }
Mm arkmap(const Mm& m) { return ramp("arkmap", &m, arkmap_colour); }

Mm ind2rgb(const Mm& x, const Mm& map) {
    x.warn_uninit();
    if (error_numeric(x, "ind2rgb") || error_numeric(map, "ind2rgb")) return x_M;
    Mm cmap = mdouble(map);
    if (cmap.ndims != 2 || cmap.dims[1] != 3) {
        error("ind2rgb: a colormap (m x 3) expected");
        return x_M;
    }
    const bool from_zero = x.flags.type == ak_uchar;
    Mm idx = mdouble(x);
    const int rows = idx.dims[0], cols = idx.size() / std::max(1, rows), n = cmap.dims[0];
    int dims[3] = {rows, cols, 3};
    Mm r(0, 0, 0, 3, dims, ak_double);
    const int count = rows * cols;
    for (int k = 0; k < count; ++k) {
        // Indices outside the map take its nearest end, as an image would show them.
        int i = static_cast<int>(std::floor(idx.addr()[k])) - (from_zero ? 0 : 1);
        i = std::clamp(i, 0, std::max(0, n - 1));
        for (int c = 0; c < 3; ++c) r.addr()[k + c * count] = n ? cmap.addr()[i + c * n] : 0.0;
    }
    return r;
}

Mm rgb2gray(const Mm& rgb) {
    const bool bytes = rgb.flags.type == ak_uchar;
    const bool image = rgb.ndims == 3;
    Mm lum = per_colour("rgb2gray", rgb, [](double r, double g, double b) {
        const double y = 0.2989 * r + 0.5870 * g + 0.1140 * b;
        return rgb_t{y, y, y};
    });
    if (lum.ndims < 2 || !image) return lum;  // a map stays m x 3 of equal columns
    const int count = lum.dims[0] * lum.dims[1];
    Mm out(0, 0, 0, lum.dims[0], lum.dims[1], bytes ? ak_uchar : ak_double);
    for (int k = 0; k < count; ++k) {
        if (bytes)
            static_cast<unsigned char*>(out.pr)[k] = static_cast<unsigned char>(std::lround(std::clamp(lum.addr()[k], 0.0, 1.0) * 255));
        else
            out.addr()[k] = lum.addr()[k];
    }
    return out;
}

Mm rgb2hsv(const Mm& rgb) { return per_colour("rgb2hsv", rgb, rgb_to_hsv); }
Mm hsv2rgb(const Mm& hsv) { return per_colour("hsv2rgb", hsv, hsv_to_rgb); }

AK_BUILTIN("gray", AK_FN(gray), AK_FN(gray, const Mm&));
AK_BUILTIN("hot", AK_FN(hot), AK_FN(hot, const Mm&));
AK_BUILTIN("cool", AK_FN(cool), AK_FN(cool, const Mm&));
AK_BUILTIN("jet", AK_FN(jet), AK_FN(jet, const Mm&));
AK_BUILTIN("hsv", AK_FN(hsv), AK_FN(hsv, const Mm&));
AK_BUILTIN("bone", AK_FN(bone), AK_FN(bone, const Mm&));
AK_BUILTIN("copper", AK_FN(copper), AK_FN(copper, const Mm&));
AK_BUILTIN("pink", AK_FN(pink), AK_FN(pink, const Mm&));
AK_BUILTIN("spring", AK_FN(spring), AK_FN(spring, const Mm&));
AK_BUILTIN("summer", AK_FN(summer), AK_FN(summer, const Mm&));
AK_BUILTIN("autumn", AK_FN(autumn), AK_FN(autumn, const Mm&));
AK_BUILTIN("winter", AK_FN(winter), AK_FN(winter, const Mm&));
AK_BUILTIN("lines", AK_FN(lines), AK_FN(lines, const Mm&));
AK_BUILTIN("arkmap", AK_FN(arkmap), AK_FN(arkmap, const Mm&));
AK_BUILTIN("ind2rgb", ind2rgb);
AK_BUILTIN("rgb2gray", rgb2gray);
AK_BUILTIN("rgb2hsv", rgb2hsv);
AK_BUILTIN("hsv2rgb", hsv2rgb);
