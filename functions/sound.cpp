// sound, soundsc and beep: a temporary WAV file played by the player program.
#include "arklib/sound.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/error.h"
#include "arklib/format.h"
#include "arklib/sparse.h"
#include "arklib/wav.h"
#include "core/startup.h"

extern char** environ;

namespace {

bool beep_enabled = true;

// A temporary file name ending in ".wav", made and closed; empty if none could be made.
std::string temporary_wav() {
    const char* dir = std::getenv("TMPDIR");
    std::string path = std::string(dir && *dir ? dir : "/tmp") + "/arklib_sound_XXXXXX.wav";
    const int fd = mkstemps(path.data(), 4);
    if (fd < 0) return "";
    close(fd);
    return path;
}

// Runs the player on the file through the shell (the player's name may carry arguments) and gives
// its exit status: 127 when it was not found, -1 when the shell did not start.
int run_player(const std::string& player, const std::string& file) {
    std::string script = player + " \"$1\" >/dev/null";
    char* argv[] = {const_cast<char*>("sh"), const_cast<char*>("-c"), script.data(), const_cast<char*>("sh"),
                    const_cast<char*>(file.c_str()), nullptr};
    pid_t child;
    if (posix_spawn(&child, "/bin/sh", nullptr, nullptr, argv, environ) != 0) return -1;
    int status = 0;
    while (waitpid(child, &status, 0) < 0)
        if (errno != EINTR) return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// A number argument that must be positive and finite.
bool positive_number(const char* fn, const char* what, const Mm& m, double& out) {
    if (m.size() != 1 || m.flags.str || m.flags.type != ak_double || !(m.r() > 0) || std::isinf(m.r())) {
        error("%s: the %s must be a positive number", fn, what);
        return false;
    }
    out = m.r();
    return true;
}

// Plays samples already in [-1, 1] (wavwrite clips the rest).
Mm play(const char* fn, const Mm& y, const Mm& fs, const Mm& bits) {
    double rate, b;
    if (error_numeric(y, fn) || !positive_number(fn, "sample rate", fs, rate) ||
        !positive_number(fn, "number of bits", bits, b))
        return x_M;
    if (b != 8 && b != 16) {
        error("%s: number of bits per sample must be 8 or 16", fn);
        return x_M;
    }
    if (y.size() == 0) return x_M;
    const std::string file = temporary_wav();
    if (file.empty()) {
        warning("%s: no temporary file could be made; nothing was played", fn);
        return x_M;
    }
    wavwrite(y, Mm(rate), Mm(b), TM(file.c_str()));
    const std::string player = ak_lifetime.player_program;
    const int status = run_player(player, file);
    std::remove(file.c_str());
    if (status == 127)
        warning("%s: the sound player \"%s\" was not found; nothing was played (name a player of WAV files in "
                "MATVEXPLAYER)",
                fn, player.c_str());
    else if (status != 0)
        warning("%s: the sound player \"%s\" failed (exit status %d); nothing was played", fn, player.c_str(), status);
    return x_M;
}

// The samples as doubles clipped to [-1, 1], so that sound, unlike wavwrite, clips quietly.
Mm clipped(const Mm& y) {
    Mm c;
    c.deepcopy(y.flags.sparse ? full(y) : y, ak_double);
    double* v = c.addr();
    for (int k = 0; k < c.nnz; ++k) v[k] = std::fmin(1.0, std::fmax(-1.0, v[k]));
    return c;
}

}  // namespace

Mm sound(const Mm& y, const Mm& fs, const Mm& bits) {
    if (error_numeric(y, "sound")) return x_M;
    return play("sound", clipped(y), fs, bits);
}
Mm sound(const Mm& y, const Mm& fs) { return sound(y, fs, Mm(16.0)); }
Mm sound(const Mm& y) { return sound(y, Mm(8192.0)); }

Mm soundsc(const Mm& y, const Mm& fs, const Mm& bits, const Mm& range) {
    const char* fn = "soundsc";
    if (error_numeric(y, fn)) return x_M;
    Mm s;
    s.deepcopy(y.flags.sparse ? full(y) : y, ak_double);
    double lo, hi;
    if (range.size() == 0) {
        lo = INFINITY, hi = -INFINITY;
        for (int k = 0; k < s.nnz; ++k)
            if (!std::isnan(s.addr()[k])) lo = std::fmin(lo, s.addr()[k]), hi = std::fmax(hi, s.addr()[k]);
    } else if (range.size() == 2 && !range.flags.str && range.flags.type == ak_double &&
               range.addr()[0] < range.addr()[1]) {
        lo = range.addr()[0], hi = range.addr()[1];
    } else {
        error("%s: the range must be [lo hi] with lo < hi", fn);
        return x_M;
    }
    // The midpoint of the range goes to 0 and its ends to -1 and 1; a constant signal is silence.
    const double mid = (lo + hi) / 2, half = (hi - lo) / 2;
    for (int k = 0; k < s.nnz; ++k) s.addr()[k] = half > 0 && std::isfinite(half) ? (s.addr()[k] - mid) / half : 0.0;
    return play(fn, clipped(s), fs, bits);
}
Mm soundsc(const Mm& y, const Mm& fs, const Mm& bits) {
    return soundsc(y, fs, bits, Mm(0, 0, 0, 0, 0, ak_double));
}
Mm soundsc(const Mm& y, const Mm& fs) { return soundsc(y, fs, Mm(16.0)); }
Mm soundsc(const Mm& y) { return soundsc(y, Mm(8192.0)); }

Mm beep() {
    if (!beep_enabled) return x_M;
    // A tenth of a second of 880 Hz, faded in and out so that it does not click.
    const double rate = 8192;
    const int n = 819;
    Mm tone(0, 0, 0, n, 1, ak_double);
    for (int k = 0; k < n; ++k) {
        const double fade = std::fmin(1.0, std::fmin(k, n - 1 - k) / 80.0);
        tone.addr()[k] = 0.5 * fade * std::sin(2 * M_PI * 880 * k / rate);
    }
    return play("beep", tone, Mm(rate), Mm(16.0));
}
Mm beep(const Mm& state) {
    const std::string word = state.flags.str ? Mstr_row(state) : "";
    if (word == "on" || word == "off") {
        beep_enabled = word == "on";
        return x_M;
    }
    error("beep: the argument must be \"on\" or \"off\"");
    return x_M;
}
Mm beep_state() { return TM(beep_enabled ? "on" : "off"); }

namespace {

// beep by name: with an output and no input it gives the state, as the language's beep does.
void beep_by_name(int nin, const Mm* in, int nout, Mm* out) {
    if (nin > 1) {
        error("beep: too many inputs");
        return;
    }
    if (nin == 1)
        out[0] = beep(in[0]);
    else
        out[0] = nout > 0 ? beep_state() : beep();
}

}  // namespace

AK_BUILTIN("sound", AK_FN(sound, const Mm&), AK_FN(sound, const Mm&, const Mm&), AK_FN(sound, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("soundsc", AK_FN(soundsc, const Mm&), AK_FN(soundsc, const Mm&, const Mm&),
           AK_FN(soundsc, const Mm&, const Mm&, const Mm&), AK_FN(soundsc, const Mm&, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("beep", beep_by_name);
