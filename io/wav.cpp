// WAV files: wavread and wavwrite over the language's own file functions, every field read or
// written through fread or fwrite with a precision name.
#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "arklib/arith.h"
#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/constructors.h"
#include "arklib/files.h"
#include "arklib/format.h"
#include "arklib/list.h"
#include "arklib/sparse.h"
#include "arklib/wav.h"

namespace {

// ---- fields through the file functions ----------------------------------------------------------

void put(const Mm& fid, const Mm& values, const char* precision) { fwrite(fid, values, TM(precision)); }
void put(const Mm& fid, double value, const char* precision) { put(fid, Mm(value), precision); }

// One number of the precision; false at the end of the file.
bool get(const Mm& fid, const char* precision, double& value) {
    Mm count;
    Mm v = fread(fid, Mm(1.0), TM(precision), i_o, count);
    if (count.r() < 1) return false;
    value = v.r();
    return true;
}

// Four bytes as text ("" when the file ends first).
std::string get_word(const Mm& fid) {
    Mm count;
    Mm v = fread(fid, Mm(4.0), TM("uchar"), i_o, count);
    std::string word;
    for (int k = 0; k < v.size() && count.r() == 4; ++k) word += static_cast<char>(v.addr()[k]);
    return word;
}

void skip(const Mm& fid, double bytes) { fseek(fid, Mm(bytes), TM("cof")); }

// The format block as read.
struct format_t {
    double tag = 0, channels = 0, rate = 0, bytes_per_second = 0, block = 0, bits = 0;
};

// The sub-format of an extensible block: the first two bytes of its GUID.
const double tag_pcm = 1, tag_float = 3, tag_extensible = 65534;

// Reads the format block after its "fmt " word; reports and gives false on failure.
bool read_format(const Mm& fid, format_t& f) {
    double length = 0;
    bool whole = get(fid, "ulong", length) && get(fid, "ushort", f.tag) && get(fid, "ushort", f.channels) &&
                 get(fid, "ulong", f.rate) && get(fid, "ulong", f.bytes_per_second) &&
                 get(fid, "ushort", f.block) && get(fid, "ushort", f.bits);
    if (!whole || length < 16) {
        error("wavread: the format block is cut short");
        return false;
    }
    double rest = length - 16;
    if (f.tag == tag_extensible && rest >= 24) {
        double extra_size, valid_bits, mask, sub_tag;
        if (!get(fid, "ushort", extra_size) || !get(fid, "ushort", valid_bits) || !get(fid, "ulong", mask) ||
            !get(fid, "ushort", sub_tag)) {
            error("wavread: the format block is cut short");
            return false;
        }
        f.tag = sub_tag;
        rest -= 10;
    }
    if (f.tag == tag_float && f.bits != 32) {
        error("wavread: floating-point samples must have 32 bits");
        return false;
    }
    if (f.tag != tag_pcm && f.tag != tag_float) {
        error("wavread: format %d is neither PCM nor IEEE float", static_cast<int>(f.tag));
        return false;
    }
    if (f.bits != 8 && f.bits != 16 && f.bits != 24 && f.bits != 32) {
        error("wavread: number of bits per sample must be 8 or 16");
        return false;
    }
    if (f.channels < 1) {
        error("wavread: the file has no channels");
        return false;
    }
    skip(fid, rest);
    return true;
}

// Bytes from the current position to the end of the file.
double bytes_left(const Mm& fid) {
    Mm here = ftell(fid);
    fseek(fid, Mm(0.0), TM("eof"));
    double left = ftell(fid).r() - here.r();
    fseek(fid, here, TM("bof"));
    return left;
}

// The samples of a data chunk of `length` bytes, channels by frames, scaled to [-1, 1].
bool read_samples(const Mm& fid, const format_t& f, double length, Mm& y) {
    int channels = static_cast<int>(f.channels);
    double frames = std::floor(length * 8 / f.bits / channels);
    if (length > bytes_left(fid)) {
        error("wavread: the data chunk is longer than the file");
        return false;
    }
    Mm count;
    if (f.bits == 24) {
        // Three bytes per sample, least significant first, read as bytes and put together.
        Mm b = fread(fid, (BR(3.0 * channels), frames), TM("uchar"), i_o, count);
        y = Mm(0, 0, 0, channels, static_cast<int>(frames), ak_double);
        for (int k = 0; k < y.nnz; ++k) {
            const double* p = b.addr() + 3 * k;
            double v = p[0] + 256.0 * p[1] + 65536.0 * p[2];
            y.addr()[k] = v >= 8388608.0 ? v - 16777216.0 : v;
        }
    } else {
        const char* precision = f.tag == tag_float ? "float32" : f.bits == 8 ? "uchar" : f.bits == 16 ? "short" : "long";
        y = fread(fid, (BR(static_cast<double>(channels)), frames), TM(precision), i_o, count);
    }
    double* v = y.addr();
    for (int k = 0; k < y.nnz; ++k) {
        if (f.tag == tag_float) continue;
        if (f.bits == 8)
            v[k] = v[k] * 0.0078125 - 1.0;
        else if (f.bits == 16)
            v[k] = (v[k] + 32768.0) * 3.0518043793392844e-05 - 1.0;
        else if (f.bits == 24)
            v[k] = (v[k] + 8388608.0) * (2.0 / 16777215.0) - 1.0;
        else
            v[k] = (v[k] + 2147483648.0) * (2.0 / 4294967295.0) - 1.0;
    }
    return true;
}

}  // namespace

Mm wavread(const Mm& name, i_o_t, Mm& rate, Mm& bits) {
    Mm fid = fopen(name, TM("rb"));
    if (fid.size() != 1 || fid.r() == -1.0) {
        error("wavrwad: could not read file");
        return x_M;
    }
    auto fail = [&](const char* message) {
        fclose(fid);
        if (message) error("%s", message);
        return x_M;
    };
    if (get_word(fid) != "RIFF") return fail("wavread: 'RIFF' not found");
    double riff_length;
    get(fid, "ulong", riff_length);
    if (get_word(fid) != "WAVE") return fail("wavread: 'WAVE' not found");
    if (get_word(fid) != "fmt ") return fail("wavread: 'fmt ' not found");
    format_t f;
    if (!read_format(fid, f)) return fail(nullptr);
    for (;;) {
        std::string word = get_word(fid);
        double length = 0;
        bool whole = get(fid, "ulong", length);
        if (istrue(feof(fid)) || !whole) return fail("wavread: 'data' not found");
        if (word == "data") {
            Mm y;
            if (!read_samples(fid, f, length, y)) return fail(nullptr);
            fclose(fid);
            // One column for each channel.
            Mm r = transpose(y);
            rate = Mm(f.rate);
            bits = Mm(f.bits);
            return r;
        }
        skip(fid, length);
    }
}

Mm wavread(const Mm& name, i_o_t, Mm& rate) {
    Mm bits;
    return wavread(name, i_o, rate, bits);
}

Mm wavread(const Mm& name) {
    Mm rate, bits;
    return wavread(name, i_o, rate, bits);
}

Mm wavread() { return Mm(error_input("wavread", 0)); }

Mm wavwrite(const Mm& y0, const Mm& rate, const Mm& bits, const Mm& name) {
    const char* fn = "wavwrite";
    y0.warn_uninit();
    if (error_numeric(y0, fn)) return x_M;
    Mm y;
    y.deepcopy(y0.flags.sparse ? full(y0) : y0, ak_double);
    std::string file = Mstr_row(name);
    if (file.find('.') == std::string::npos) file += ".wav";
    if (y.ndims == 2 && y.dims[0] == 1) y.reshape(y.dims[1], 1);
    int channels = y.ndims == 2 ? y.dims[1] : 0;
    if (channels != 1 && channels != 2) {
        error("%s: input data is neither mono nor stereo", fn);
        return x_M;
    }
    if (channels == 2) y = transpose(y);
    bool clipped = false;
    double* v = y.addr();
    for (int k = 0; k < y.nnz; ++k) {
        if (v[k] < -1.0) v[k] = -1.0, clipped = true;
        if (v[k] > 1.0) v[k] = 1.0, clipped = true;
    }
    if (clipped) warning("%s: some data values were outside the [-1,1] range", fn);
    int b = static_cast<int>(scalar(bits));
    if (b != 8 && b != 16) {
        error("%s: number of bits per sample must be 8 or 16", fn);
        return x_M;
    }
    int bytes = b / 8, samples = y.nnz;
    double r = scalar(rate), data = static_cast<double>(samples) * bytes;
    Mm fid = fopen(TM(file.c_str()), TM("wb"));
    if (fid.size() != 1 || fid.r() == -1.0) {
        error("%s: could not write file", fn);
        return x_M;
    }
    put(fid, TM("RIFF"), "uchar");
    put(fid, 36 + data, "ulong");
    put(fid, TM("WAVE"), "uchar");
    put(fid, TM("fmt "), "uchar");
    put(fid, 16, "ulong");
    put(fid, 1, "ushort");
    put(fid, channels, "ushort");
    put(fid, r, "ulong");
    put(fid, r * bytes * channels, "ulong");
    put(fid, channels * bytes, "ushort");
    put(fid, b, "ushort");
    put(fid, TM("data"), "uchar");
    put(fid, data, "ulong");
    for (int k = 0; k < samples; ++k)
        v[k] = b == 8 ? std::round(127.5 * (v[k] + 1.0)) : std::round(32767.5 * (v[k] + 1.0)) - 32768.0;
    put(fid, y, b == 8 ? "uchar" : "short");
    if (samples % 2) put(fid, 0.0, "uchar");  // RIFF chunks are of even length
    fclose(fid);
    return x_M;
}

Mm wavwrite(const Mm& y, const Mm& rate, const Mm& name) { return wavwrite(y, rate, Mm(16.0), name); }
Mm wavwrite(const Mm& y, const Mm& name) { return wavwrite(y, Mm(8000.0), Mm(16.0), name); }
Mm wavwrite(const Mm&) { return Mm(error_input("wavwrite", 1)); }

AK_BUILTIN("wavread", AK_FN(wavread, const Mm&), AK_FN(wavread, const Mm&, i_o_t, Mm&),
           AK_FN(wavread, const Mm&, i_o_t, Mm&, Mm&));
AK_BUILTIN("wavwrite", AK_FN(wavwrite, const Mm&, const Mm&), AK_FN(wavwrite, const Mm&, const Mm&, const Mm&),
           AK_FN(wavwrite, const Mm&, const Mm&, const Mm&, const Mm&));
