// Image files. PNG goes through libpng's simplified interface, which reports failures as text
// and needs no jumps; JPEG through libjpeg, whose failures jump back to a point set in the small C
// routines below, before any C++ object with a destructor is made there.
#include "arklib/images.h"

#include <sys/stat.h>

#include <cstdio>  // before jpeglib.h, which uses FILE without including it

#include <jpeglib.h>
#include <png.h>

#include <algorithm>
#include <cmath>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"

namespace {

// Pixels interleaved by row, as both libraries read and write them.
struct raw_image {
    int width = 0, height = 0, channels = 0;
    std::vector<unsigned char> pixels;
    std::vector<unsigned char> colormap;  // entries x 3 bytes for an indexed image
    bool indexed = false;
    int alpha_channel = -1;               // which channel is alpha, or -1
};

enum class format_t { png, jpeg, unknown };

std::string text_of(const Mm& m) {
    char buf[4096];
    return Mstr(m, buf, sizeof buf);
}

format_t format_word(const std::string& w) {
    std::string l = w;
    for (char& c : l) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (!l.empty() && l[0] == '.') l.erase(0, 1);
    if (l == "png") return format_t::png;
    if (l == "jpg" || l == "jpeg") return format_t::jpeg;
    return format_t::unknown;
}

format_t sniff(const std::string& path) {
    unsigned char head[8] = {0};
    FILE* f = std::fopen(path.c_str(), "rb");
    if (!f) return format_t::unknown;
    const std::size_t got = std::fread(head, 1, sizeof head, f);
    std::fclose(f);
    if (got >= 8 && !std::memcmp(head, "\x89PNG\r\n\x1a\n", 8)) return format_t::png;
    if (got >= 3 && head[0] == 0xFF && head[1] == 0xD8 && head[2] == 0xFF) return format_t::jpeg;
    return format_t::unknown;
}

// ---- PNG -------------------------------------------------------------------------------------------

bool read_png(const std::string& path, raw_image& out, std::string& message) {
    png_image img;
    std::memset(&img, 0, sizeof img);
    img.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&img, path.c_str())) {
        message = img.message;
        return false;
    }
    const bool alpha = img.format & PNG_FORMAT_FLAG_ALPHA;
    const bool colour = img.format & PNG_FORMAT_FLAG_COLOR;
    out.indexed = img.format & PNG_FORMAT_FLAG_COLORMAP;
    out.width = static_cast<int>(img.width);
    out.height = static_cast<int>(img.height);
    if (out.indexed) {
        img.format = alpha ? PNG_FORMAT_RGBA_COLORMAP : PNG_FORMAT_RGB_COLORMAP;
        out.channels = 1;
        out.pixels.resize(PNG_IMAGE_SIZE(img));
        std::vector<unsigned char> map(PNG_IMAGE_COLORMAP_SIZE(img));
        if (!png_image_finish_read(&img, nullptr, out.pixels.data(), 0, map.data())) {
            message = img.message;
            png_image_free(&img);
            return false;
        }
        const int step = alpha ? 4 : 3;
        for (unsigned k = 0; k < img.colormap_entries; ++k)
            for (int c = 0; c < 3; ++c) out.colormap.push_back(map[k * step + c]);
        return true;
    }
    img.format = colour ? (alpha ? PNG_FORMAT_RGBA : PNG_FORMAT_RGB) : (alpha ? PNG_FORMAT_GA : PNG_FORMAT_GRAY);
    out.channels = (colour ? 3 : 1) + (alpha ? 1 : 0);
    out.alpha_channel = alpha ? out.channels - 1 : -1;
    out.pixels.resize(PNG_IMAGE_SIZE(img));
    if (!png_image_finish_read(&img, nullptr, out.pixels.data(), 0, nullptr)) {
        message = img.message;
        png_image_free(&img);
        return false;
    }
    return true;
}

bool write_png(const std::string& path, const raw_image& in, std::string& message) {
    png_image img;
    std::memset(&img, 0, sizeof img);
    img.version = PNG_IMAGE_VERSION;
    img.width = static_cast<png_uint_32>(in.width);
    img.height = static_cast<png_uint_32>(in.height);
    if (in.indexed) {
        img.format = PNG_FORMAT_RGB_COLORMAP;
        img.colormap_entries = static_cast<png_uint_32>(in.colormap.size() / 3);
    } else {
        img.format = in.channels == 3 ? PNG_FORMAT_RGB : PNG_FORMAT_GRAY;
    }
    if (!png_image_write_to_file(&img, path.c_str(), 0, in.pixels.data(), 0, in.indexed ? in.colormap.data() : nullptr)) {
        message = img.message;
        return false;
    }
    return true;
}

// Bit depth and colour type straight from the IHDR chunk, which a PNG file always starts with.
bool png_header(const std::string& path, int& depth, int& type) {
    unsigned char head[26];
    FILE* f = std::fopen(path.c_str(), "rb");
    if (!f) return false;
    const bool ok = std::fread(head, 1, sizeof head, f) == sizeof head && !std::memcmp(head + 12, "IHDR", 4);
    std::fclose(f);
    depth = head[24];
    type = head[25];
    return ok;
}

// ---- JPEG ------------------------------------------------------------------------------------------

struct jpeg_failure {
    jpeg_error_mgr manager;
    std::jmp_buf jump;
    char message[JMSG_LENGTH_MAX];
};

void on_jpeg_error(j_common_ptr c) {
    jpeg_failure* f = reinterpret_cast<jpeg_failure*>(c->err);
    (*c->err->format_message)(c, f->message);
    std::longjmp(f->jump, 1);
}

// Decodes into a malloc'd buffer; returns it (width x height x channels bytes) or null with the
// reason in message.
unsigned char* decode_jpeg(FILE* file, int* width, int* height, int* channels, char* message) {
    jpeg_decompress_struct info;
    jpeg_failure failure;
    unsigned char* volatile pixels = nullptr;
    info.err = jpeg_std_error(&failure.manager);
    failure.manager.error_exit = on_jpeg_error;
    if (setjmp(failure.jump)) {
        jpeg_destroy_decompress(&info);
        std::free(pixels);
        std::snprintf(message, JMSG_LENGTH_MAX, "%s", failure.message);
        return nullptr;
    }
    jpeg_create_decompress(&info);
    jpeg_stdio_src(&info, file);
    jpeg_read_header(&info, TRUE);
    if (info.jpeg_color_space == JCS_CMYK || info.jpeg_color_space == JCS_YCCK) {
        jpeg_destroy_decompress(&info);
        std::snprintf(message, JMSG_LENGTH_MAX, "CMYK images are not supported");
        return nullptr;
    }
    info.out_color_space = info.num_components == 1 ? JCS_GRAYSCALE : JCS_RGB;
    jpeg_start_decompress(&info);
    const std::size_t row = static_cast<std::size_t>(info.output_width) * info.output_components;
    pixels = static_cast<unsigned char*>(std::malloc(row * info.output_height + 1));
    if (!pixels) {
        jpeg_destroy_decompress(&info);
        std::snprintf(message, JMSG_LENGTH_MAX, "Out of memory!");
        return nullptr;
    }
    while (info.output_scanline < info.output_height) {
        JSAMPROW line = pixels + row * info.output_scanline;
        jpeg_read_scanlines(&info, &line, 1);
    }
    *width = static_cast<int>(info.output_width);
    *height = static_cast<int>(info.output_height);
    *channels = info.output_components;
    jpeg_finish_decompress(&info);
    jpeg_destroy_decompress(&info);
    return pixels;
}

bool encode_jpeg(FILE* file, const unsigned char* pixels, int width, int height, int channels, int quality, char* message) {
    jpeg_compress_struct info;
    jpeg_failure failure;
    info.err = jpeg_std_error(&failure.manager);
    failure.manager.error_exit = on_jpeg_error;
    if (setjmp(failure.jump)) {
        jpeg_destroy_compress(&info);
        std::snprintf(message, JMSG_LENGTH_MAX, "%s", failure.message);
        return false;
    }
    jpeg_create_compress(&info);
    jpeg_stdio_dest(&info, file);
    info.image_width = static_cast<JDIMENSION>(width);
    info.image_height = static_cast<JDIMENSION>(height);
    info.input_components = channels;
    info.in_color_space = channels == 1 ? JCS_GRAYSCALE : JCS_RGB;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, quality, TRUE);
    jpeg_start_compress(&info, TRUE);
    const std::size_t row = static_cast<std::size_t>(width) * channels;
    while (info.next_scanline < info.image_height) {
        JSAMPROW line = const_cast<unsigned char*>(pixels + row * info.next_scanline);
        jpeg_write_scanlines(&info, &line, 1);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    return true;
}

bool read_jpeg(const std::string& path, raw_image& out, std::string& message) {
    FILE* f = std::fopen(path.c_str(), "rb");
    if (!f) {
        message = "cannot open the file";
        return false;
    }
    char why[JMSG_LENGTH_MAX] = "";
    int w = 0, h = 0, c = 0;
    unsigned char* pixels = decode_jpeg(f, &w, &h, &c, why);
    std::fclose(f);
    if (!pixels) {
        message = why;
        return false;
    }
    out.width = w;
    out.height = h;
    out.channels = c;
    out.pixels.assign(pixels, pixels + static_cast<std::size_t>(w) * h * c);
    std::free(pixels);
    return true;
}

// ---- matrices <-> pixels ---------------------------------------------------------------------------

// The image as bytes, rows x cols (x channels), from interleaved pixels.
Mm planes_of(const raw_image& r, int first, int count) {
    int dims[3] = {r.height, r.width, count};
    Mm m(0, 0, 0, count == 1 ? 2 : 3, dims, ak_uchar);
    unsigned char* out = static_cast<unsigned char*>(m.pr);
    const std::size_t plane = static_cast<std::size_t>(r.height) * r.width;
    for (int y = 0; y < r.height; ++y)
        for (int x = 0; x < r.width; ++x)
            for (int c = 0; c < count; ++c)
                out[y + static_cast<std::size_t>(x) * r.height + c * plane] =
                    r.pixels[(static_cast<std::size_t>(y) * r.width + x) * r.channels + first + c];
    return m;
}

// Bytes of a matrix element: bytes as they are, doubles as [0, 1] scaled and clipped (indices of an
// indexed image as whole numbers from 1, stored from 0).
unsigned char byte_of(const Mm& a, std::size_t k, bool index) {
    if (a.flags.type == ak_uchar) return static_cast<const unsigned char*>(a.pr)[k];
    const double v = a.addr()[k];
    if (index) return static_cast<unsigned char>(std::clamp(std::floor(v) - 1, 0.0, 255.0));
    if (a.flags.logical) return v != 0 ? 255 : 0;
    return static_cast<unsigned char>(std::lround(std::clamp(std::isnan(v) ? 0.0 : v, 0.0, 1.0) * 255));
}

bool pixels_of(const char* function, const Mm& a, bool index, raw_image& r) {
    a.warn_uninit();
    if (error_numeric(a, function)) return false;
    if (a.flags.sparse || a.pi) {
        error("%s: a real full image expected", function);
        return false;
    }
    const int channels = a.ndims == 3 ? a.dims[2] : 1;
    if ((channels != 1 && channels != 3) || a.ndims > 3 || a.size() == 0) {
        error("%s: the image must be rows x cols or rows x cols x 3", function);
        return false;
    }
    r.height = a.dims[0];
    r.width = a.dims[1];
    r.channels = channels;
    r.pixels.resize(static_cast<std::size_t>(r.width) * r.height * channels);
    const std::size_t plane = static_cast<std::size_t>(r.height) * r.width;
    for (int y = 0; y < r.height; ++y)
        for (int x = 0; x < r.width; ++x)
            for (int c = 0; c < channels; ++c)
                r.pixels[(static_cast<std::size_t>(y) * r.width + x) * channels + c] =
                    byte_of(a, y + static_cast<std::size_t>(x) * r.height + c * plane, index);
    return true;
}

Mm read_image(const Mm& file, const Mm* format, Mm& map, Mm& alpha) {
    const std::string path = text_of(file);
    struct stat st;
    if (::stat(path.c_str(), &st) != 0 || S_ISDIR(st.st_mode)) {
        error("imread: cannot open file '%s'", path.c_str());
        return x_M;
    }
    format_t f = format ? format_word(text_of(*format)) : sniff(path);
    if (format && f == format_t::unknown) {
        error("imread: unknown image format '%s'", text_of(*format).c_str());
        return x_M;
    }
    if (f == format_t::unknown) f = sniff(path);
    raw_image r;
    std::string why;
    const bool ok = f == format_t::png ? read_png(path, r, why) : f == format_t::jpeg ? read_jpeg(path, r, why) : false;
    if (f == format_t::unknown) {
        error("imread: '%s' is neither a PNG nor a JPEG file", path.c_str());
        return x_M;
    }
    if (!ok) {
        error("imread: cannot read '%s' (%s)", path.c_str(), why.c_str());
        return x_M;
    }
    map = Mm();
    alpha = Mm();
    if (r.indexed) {
        const int n = static_cast<int>(r.colormap.size() / 3);
        map = Mm(0, 0, 0, n, 3, ak_double);
        for (int k = 0; k < n; ++k)
            for (int c = 0; c < 3; ++c) map.addr()[k + c * n] = r.colormap[k * 3 + c] / 255.0;
        return planes_of(r, 0, 1);
    }
    if (r.alpha_channel >= 0) alpha = planes_of(r, r.alpha_channel, 1);
    return planes_of(r, 0, r.alpha_channel >= 0 ? r.channels - 1 : r.channels);
}

Mm write_image(const Mm& a, const Mm* map, const Mm& file, const Mm* format, int quality) {
    const std::string path = text_of(file);
    format_t f = format ? format_word(text_of(*format)) : format_t::unknown;
    if (!format) {
        const std::size_t dot = path.rfind('.');
        f = dot == std::string::npos ? format_t::unknown : format_word(path.substr(dot + 1));
    }
    if (f == format_t::unknown) {
        error("imwrite: cannot tell the image format of '%s'; give 'png' or 'jpg'", path.c_str());
        return x_M;
    }
    raw_image r;
    if (!pixels_of("imwrite", a, map != nullptr, r)) return x_M;
    if (map) {
        Mm m = mdouble(*map);
        if (m.ndims != 2 || m.dims[1] != 3 || m.dims[0] < 1 || m.dims[0] > 256) {
            error("imwrite: a colormap of 1 to 256 rows x 3 expected");
            return x_M;
        }
        if (r.channels != 1) {
            error("imwrite: an indexed image must be rows x cols");
            return x_M;
        }
        if (f == format_t::jpeg) {
            error("imwrite: JPEG files cannot hold an indexed image");
            return x_M;
        }
        r.indexed = true;
        for (int k = 0; k < m.dims[0]; ++k)
            for (int c = 0; c < 3; ++c)
                r.colormap.push_back(static_cast<unsigned char>(std::lround(std::clamp(m.addr()[k + c * m.dims[0]], 0.0, 1.0) * 255)));
        const unsigned char last = static_cast<unsigned char>(m.dims[0] - 1);
        for (unsigned char& p : r.pixels) p = std::min(p, last);
    }
    std::string why;
    bool ok;
    if (f == format_t::png) {
        ok = write_png(path, r, why);
    } else {
        FILE* out = std::fopen(path.c_str(), "wb");
        if (!out) {
            error("imwrite: cannot open file '%s' for writing", path.c_str());
            return x_M;
        }
        char reason[JMSG_LENGTH_MAX] = "";
        ok = encode_jpeg(out, r.pixels.data(), r.width, r.height, r.channels, quality, reason);
        ok = (std::fclose(out) == 0) && ok;
        why = reason;
    }
    if (!ok) error("imwrite: cannot write '%s' (%s)", path.c_str(), why.c_str());
    return x_M;
}

// imwrite(a, file, x, y): x names a parameter ('Quality') or is a colormap with y the file.
Mm imwrite_forms(const Mm& a, const Mm& b, const Mm* c, const Mm* d) {
    if (!b.flags.str) {  // imwrite(x, map, file[, format])
        if (!c) {
            error("imwrite: a file name expected");
            return x_M;
        }
        return write_image(a, &b, *c, d, 75);
    }
    if (c && d) {
        std::string name = text_of(*c);
        for (char& ch : name) ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
        if (name != "quality") {
            error("imwrite: unknown parameter '%s'", text_of(*c).c_str());
            return x_M;
        }
        const double q = scalar(*d);
        if (!(q >= 0 && q <= 100)) {
            error("imwrite: Quality must be between 0 and 100");
            return x_M;
        }
        return write_image(a, nullptr, b, nullptr, static_cast<int>(q));
    }
    return write_image(a, nullptr, b, c, 75);
}

Mm info_of(const Mm& file, const Mm* format) {
    const std::string path = text_of(file);
    struct stat st;
    if (::stat(path.c_str(), &st) != 0 || S_ISDIR(st.st_mode)) {
        error("imfinfo: cannot open file '%s'", path.c_str());
        return x_M;
    }
    const format_t f = format ? format_word(text_of(*format)) : sniff(path);
    int width = 0, height = 0, depth = 8;
    std::string type;
    if (f == format_t::png) {
        int bits = 8, colour = 0;
        if (!png_header(path, bits, colour)) {
            error("imfinfo: cannot read '%s' (no PNG header)", path.c_str());
            return x_M;
        }
        raw_image r;
        std::string why;
        png_image img;
        std::memset(&img, 0, sizeof img);
        img.version = PNG_IMAGE_VERSION;
        if (!png_image_begin_read_from_file(&img, path.c_str())) {
            error("imfinfo: cannot read '%s' (%s)", path.c_str(), img.message);
            return x_M;
        }
        width = static_cast<int>(img.width);
        height = static_cast<int>(img.height);
        png_image_free(&img);
        // Samples per pixel by colour type: grey 1, RGB 3, palette 1, grey+alpha 2, RGBA 4.
        static const int samples[7] = {1, 0, 3, 1, 2, 0, 4};
        depth = bits * (colour <= 6 ? samples[colour] : 1);
        type = colour == 3 ? "indexed" : ((colour & 2) ? "truecolor" : "grayscale");
    } else if (f == format_t::jpeg) {
        raw_image r;
        std::string why;
        if (!read_jpeg(path, r, why)) {
            error("imfinfo: cannot read '%s' (%s)", path.c_str(), why.c_str());
            return x_M;
        }
        width = r.width;
        height = r.height;
        depth = 8 * r.channels;
        type = r.channels == 1 ? "grayscale" : "truecolor";
    } else {
        error("imfinfo: '%s' is neither a PNG nor a JPEG file", path.c_str());
        return x_M;
    }
    Mm list(0, 0, 0, 1, 14, ak_mm);
    Mm* e = static_cast<Mm*>(list.pr);
    const char* names[7] = {"Filename", "FileSize", "Format", "Width", "Height", "BitDepth", "ColorType"};
    Mm values[7] = {file, Mm(static_cast<double>(st.st_size)), TM(f == format_t::png ? "png" : "jpg"),
                    Mm(static_cast<double>(width)), Mm(static_cast<double>(height)), Mm(static_cast<double>(depth)),
                    TM(type.c_str())};
    for (int k = 0; k < 7; ++k) {
        e[2 * k] = TM(names[k]);
        e[2 * k + 1] = values[k];
    }
    return mstruct(list);
}

}  // namespace

Mm imread(const Mm& file) {
    Mm map, alpha;
    return read_image(file, nullptr, map, alpha);
}
Mm imread(const Mm& file, const Mm& format) {
    Mm map, alpha;
    return read_image(file, &format, map, alpha);
}
Mm imread(const Mm& file, i_o_t, Mm& map) {
    Mm alpha;
    return read_image(file, nullptr, map, alpha);
}
Mm imread(const Mm& file, i_o_t, Mm& map, Mm& alpha) { return read_image(file, nullptr, map, alpha); }
Mm imread(const Mm& file, const Mm& format, i_o_t, Mm& map, Mm& alpha) { return read_image(file, &format, map, alpha); }
Mm imwrite(const Mm& a, const Mm& file) { return imwrite_forms(a, file, nullptr, nullptr); }
Mm imwrite(const Mm& a, const Mm& b, const Mm& c) { return imwrite_forms(a, b, &c, nullptr); }
Mm imwrite(const Mm& a, const Mm& b, const Mm& c, const Mm& d) { return imwrite_forms(a, b, &c, &d); }
Mm imfinfo(const Mm& file) { return info_of(file, nullptr); }
Mm imfinfo(const Mm& file, const Mm& format) { return info_of(file, &format); }

AK_BUILTIN("imread", AK_FN(imread, const Mm&), AK_FN(imread, const Mm&, const Mm&), AK_FN(imread, const Mm&, i_o_t, Mm&),
           AK_FN(imread, const Mm&, i_o_t, Mm&, Mm&), AK_FN(imread, const Mm&, const Mm&, i_o_t, Mm&, Mm&));
AK_BUILTIN("imwrite", AK_FN(imwrite, const Mm&, const Mm&), AK_FN(imwrite, const Mm&, const Mm&, const Mm&),
           AK_FN(imwrite, const Mm&, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("imfinfo", AK_FN(imfinfo, const Mm&), AK_FN(imfinfo, const Mm&, const Mm&));
