// sound, soundsc and beep against stand-in players: one that keeps a copy of the file it is given
// (so the samples can be read back), one that fails, and one that does not exist.
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

#include "arklib.h"
#include "core/startup.h"
#include "test_support.h"

using ak_test::row;

namespace {

// A scratch folder that is TMPDIR for the test, holding the stand-in players; the library's player
// name is put back afterwards.
class Players : public testing::Test {
  protected:
    void SetUp() override {
        char dir_template[] = "/tmp/arklib_sound_test_XXXXXX";
        ASSERT_TRUE(mkdtemp(dir_template));
        dir_ = dir_template;
        saved_player_ = ak_lifetime.player_program;
        const char* tmp = std::getenv("TMPDIR");
        saved_tmpdir_ = tmp ? tmp : "";
        had_tmpdir_ = tmp != nullptr;
        setenv("TMPDIR", dir_.c_str(), 1);
        script("keep", "cp \"$1\" \"" + played() + "\"");
        script("broken", "exit 3");
    }
    void TearDown() override {
        std::strcpy(ak_lifetime.player_program, saved_player_.c_str());
        if (had_tmpdir_)
            setenv("TMPDIR", saved_tmpdir_.c_str(), 1);
        else
            unsetenv("TMPDIR");
        std::remove(played().c_str());
        std::remove((dir_ + "/keep").c_str());
        std::remove((dir_ + "/broken").c_str());
        rmdir(dir_.c_str());
    }
    void script(const char* name, const std::string& body) {
        const std::string path = dir_ + "/" + name;
        std::ofstream(path) << "#!/bin/sh\n" << body << "\n";
        chmod(path.c_str(), 0755);
    }
    void use_player(const std::string& command) { std::strcpy(ak_lifetime.player_program, command.c_str()); }
    std::string played() const { return dir_ + "/played.wav"; }
    bool was_played() const { return access(played().c_str(), F_OK) == 0; }
    // Files the library left in its temporary folder.
    int leftovers() const {
        int n = 0;
        DIR* d = opendir(dir_.c_str());
        while (dirent* e = readdir(d)) n += std::strncmp(e->d_name, "arklib_sound_", 13) == 0;
        closedir(d);
        return n;
    }

    std::string dir_, saved_player_, saved_tmpdir_;
    bool had_tmpdir_ = false;
};

}  // namespace

TEST_F(Players, TheSamplesReachThePlayerClipped) {
    ak_test::ErrorsThrow guard;
    use_player(dir_ + "/keep");
    Mm y(0, 0, 0, 1, 100, ak_double);
    for (int k = 0; k < 100; ++k) y.addr()[k] = 1.5 * std::sin(k * 0.3);
    sound(y, Mm(11025.0));
    ASSERT_TRUE(was_played());
    EXPECT_EQ(leftovers(), 0);
    Mm rate;
    Mm back = wavread(TM(played().c_str()), i_o, rate);
    EXPECT_EQ(rate.r(), 11025.0);
    ASSERT_EQ(back.size(), 100);
    for (int k = 0; k < 100; ++k)
        EXPECT_NEAR(back.addr()[k], std::fmax(-1.0, std::fmin(1.0, y.addr()[k])), 1.0 / 16384) << k;

    // Scaled: the data's own range fills [-1, 1], or the range given.
    std::remove(played().c_str());
    soundsc(row({2, 4, 6}), Mm(8000.0));
    back = wavread(TM(played().c_str()));
    EXPECT_NEAR(back.addr()[0], -1.0, 1e-4);
    EXPECT_NEAR(back.addr()[1], 0.0, 1e-4);
    EXPECT_NEAR(back.addr()[2], 1.0, 1e-4);
    soundsc(row({2, 4, 6}), Mm(8000.0), Mm(16.0), row({0, 8}));
    back = wavread(TM(played().c_str()));
    EXPECT_NEAR(back.addr()[0], -0.5, 1e-4);
    EXPECT_NEAR(back.addr()[2], 0.5, 1e-4);
}

TEST_F(Players, BeepIsAShortToneThatCanBeSwitchedOff) {
    ak_test::ErrorsThrow guard;
    use_player(dir_ + "/keep");
    EXPECT_EQ(std::string(Mstr_row(beep_state())), "on");
    beep();
    Mm rate;
    Mm tone = wavread(TM(played().c_str()), i_o, rate);
    EXPECT_NEAR(tone.size() / rate.r(), 0.1, 0.01);
    std::remove(played().c_str());
    beep(TM("off"));
    beep();
    EXPECT_FALSE(was_played());
    EXPECT_EQ(std::string(Mstr_row(beep_state())), "off");
    beep(TM("on"));
    EXPECT_ERROR(beep(TM("loud")), "beep: the argument must be \"on\" or \"off\"");
}

TEST_F(Players, WithoutAWorkingPlayerTheProgramGoesOn) {
    ak_test::Recorder rec;
    use_player(dir_ + "/missing-player");
    sound(row({0, 0.5}));
    use_player(dir_ + "/broken");
    sound(row({0, 0.5}), Mm(8000.0), Mm(8.0));
    ASSERT_EQ(rec.warnings.size(), 2u);
    EXPECT_EQ(rec.warnings[0], "sound: the sound player \"" + dir_ +
                                   "/missing-player\" was not found; nothing was played (name a player of WAV files "
                                   "in MATVEXPLAYER)");
    EXPECT_EQ(rec.warnings[1], "sound: the sound player \"" + dir_ + "/broken\" failed (exit status 3); nothing was played");
    EXPECT_EQ(leftovers(), 0);
}

TEST_F(Players, BadArgumentsAreReported) {
    ak_test::ErrorsThrow guard;
    use_player(dir_ + "/keep");
    EXPECT_ERROR(sound(row({0, 1}), Mm(-5.0)), "sound: the sample rate must be a positive number");
    EXPECT_ERROR(sound(row({0, 1}), Mm(8000.0), Mm(12.0)), "sound: number of bits per sample must be 8 or 16");
    EXPECT_ERROR(soundsc(row({0, 1}), Mm(8000.0), Mm(16.0), row({3, 1})),
                 "soundsc: the range must be [lo hi] with lo < hi");
    EXPECT_FALSE(was_played());
}
