#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <set>
#include <string>

#include "io_test_support.h"

using ak_test::text;

namespace {

class OsFunctions : public ak_test::ScratchDir {};

bool exists(const std::string& p) {
    struct stat st;
    return ::stat(p.c_str(), &st) == 0;
}

// The text field of element k (1-based) of a structure array.
std::string field_text(const Mm& s, int k, const char* name) {
    return text(static_cast<const Mm*>(s.pr)[k - 1].mr(s.findfield(name, 1) + 1));
}
double field_value(const Mm& s, int k, const char* name) {
    return static_cast<const Mm*>(s.pr)[k - 1].mr(s.findfield(name, 1) + 1).r();
}

int recorded_commands = 0;
std::string last_command;
int record_command(const char* c) {
    ++recorded_commands;
    last_command = c;
    return 7;
}

}  // namespace

TEST_F(OsFunctions, DirectoriesAndTheWorkingDirectory) {
    ak_test::Recorder rec;
    EXPECT_EQ(mkdir(mpath("d")).r(), 1.0);
    EXPECT_EQ(mkdir(mpath("d")).r(), 2.0);
    EXPECT_TRUE(exists(path("d")));
    EXPECT_EQ(mkdir(mpath("none/d")).r(), 0.0);
    EXPECT_EQ(rec.warnings, std::vector<std::string>{"Could not make directory " + path("none/d")});
    std::string home = text(cd());
    EXPECT_EQ(cd(mpath("d")).r(), 1.0);
    EXPECT_EQ(text(cd()), path("d"));
    EXPECT_EQ(chdir(TM("..")).r(), 1.0);
    EXPECT_EQ(text(cd()), dir);
    EXPECT_EQ(cd(mpath("gone")).r(), 0.0);
    EXPECT_EQ(rec.warnings.back(), "Could not change directory to " + path("gone"));
    ASSERT_EQ(cd(TM(home.c_str())).r(), 1.0);
    EXPECT_EQ(rmdir(mpath("d")).r(), 1.0);
    EXPECT_EQ(rmdir(mpath("d")).r(), 0.0);
    EXPECT_EQ(rec.warnings.back(), "Could not remove directory " + path("d"));
}

TEST_F(OsFunctions, CopyDeleteAndTemporaryNames) {
    std::string big(20000, 'z');
    big += "tail";
    write_bytes("src.bin", big);
    EXPECT_EQ(copyfile(mpath("src.bin"), mpath("dst.bin")).r(), 1.0);
    EXPECT_EQ(read_bytes("dst.bin"), big);
    EXPECT_ERROR(copyfile(mpath("missing"), mpath("x")), "copyfile:Could not read " + path("missing"));
    EXPECT_ERROR(copyfile(mpath("src.bin"), mpath("no/x")), "copyfile:Could not write " + path("no/x"));
    EXPECT_ERROR(copyfile(mpath("src.bin")), "copyfile does not accept 1 input");
    deleteM(mpath("dst.bin"));
    EXPECT_FALSE(exists(path("dst.bin")));
    deleteM(mpath("dst.bin"));  // a missing file is no error

    const char* saved = getenv("TMPDIR");
    std::string saved_text = saved ? saved : "";
    setenv("TMPDIR", dir.c_str(), 1);
    EXPECT_EQ(text(tempdir()), dir + "/");
    std::set<std::string> names;
    for (int k = 0; k < 20; ++k) {
        std::string n = text(tempname());
        EXPECT_EQ(n.rfind(dir + "/ak", 0), 0u) << n;
        EXPECT_TRUE(exists(n));  // made, so that no other caller takes it
        names.insert(n);
    }
    EXPECT_EQ(names.size(), 20u);
    if (saved)
        setenv("TMPDIR", saved_text.c_str(), 1);
    else
        unsetenv("TMPDIR");
    EXPECT_EQ(text(tempdir()).back(), '/');
}

TEST_F(OsFunctions, MemoryStatus) {
    ak_test::Recorder rec;
    Mm m = memory();
    EXPECT_NE(rec.printed.find("Physical memory: "), std::string::npos);
    const double total = Mm(m.member("total_physical")).r(), available = Mm(m.member("available_physical")).r();
    EXPECT_GT(total, 64.0 * 1024 * 1024);
    EXPECT_GT(available, 0.0);
    EXPECT_LE(available, total);
    EXPECT_GE(Mm(m.member("load_percent")).r(), 0.0);
    EXPECT_LE(Mm(m.member("load_percent")).r(), 100.0);
    rec.clear();
    _ive_do(36, 0, nullptr);
    EXPECT_NE(rec.printed.find("Memory in use: "), std::string::npos);
}

TEST_F(OsFunctions, FullfileSeparators) {
    EXPECT_EQ(text(fullfile(TM("a"), TM("b"), TM("c.m"))), "a/b/c.m");
    EXPECT_EQ(text(fullfile(TM("/a/"), TM("/b/"), TM("c"))), "/a/b/c");
    EXPECT_EQ(text(fullfile(TM("a\\"), TM("\\b"))), "a/b");
    EXPECT_EQ(text(fullfile(TM("a//"), TM("//b"))), "a///b");  // only one slash comes off each side
    EXPECT_EQ(fullfile().size(), 0);
    EXPECT_EQ(text(fullfile(TM("only/"))), "only");
    EXPECT_EQ(text(filesep()), "/");
    EXPECT_EQ(text(pathsep()), ":");
}

TEST_F(OsFunctions, ListingsOfPatternsAndDirectories) {
    write_bytes("b.txt", "12345");
    write_bytes("a.txt", "");
    write_bytes("c.dat", "x");
    ASSERT_EQ(::mkdir(path("sub").c_str(), 0777), 0);
    Mm all = ::dir(TM((dir + "/*.*").c_str()));
    ASSERT_EQ(all.size(), 6);  // ".", "..", the three files and sub, sorted
    EXPECT_EQ(field_text(all, 1, "name"), ".");
    EXPECT_EQ(field_text(all, 3, "name"), "a.txt");
    EXPECT_EQ(field_text(all, 6, "name"), "sub");
    EXPECT_EQ(field_value(all, 6, "isdir"), 1.0);
    EXPECT_EQ(field_value(all, 6, "bytes"), 0.0);
    EXPECT_EQ(field_value(all, 4, "bytes"), 5.0);
    EXPECT_EQ(field_value(all, 4, "isdir"), 0.0);
    EXPECT_EQ(field_text(all, 4, "date").size(), 20u);  // dd-Mmm-yyyy hh:mm:ss
    Mm txt = ::dir(TM((dir + "/*.txt").c_str()));
    ASSERT_EQ(txt.size(), 2);
    EXPECT_EQ(field_text(txt, 2, "name"), "b.txt");
    // A name without wildcards lists that one entry, a directory included.
    Mm one = ::dir(mpath("sub"));
    ASSERT_EQ(one.size(), 1);
    EXPECT_EQ(field_value(one, 1, "isdir"), 1.0);
    EXPECT_EQ(::dir(mpath("*.none")).size(), 0);
    // The default lists the working directory.
    std::string home = text(cd());
    cd(TM(dir.c_str()));
    EXPECT_EQ(::dir().size(), 6);
    cd(TM(home.c_str()));
}

TEST_F(OsFunctions, TypeHelpAndCommands) {
    write_bytes("f.m", "function y = f(x)\n  % F doubles x.\n  %   y = f(x)\n\n  y = 2 * x;\n");
    std::string home = text(cd());
    cd(TM(dir.c_str()));
    {
        ak_test::Recorder rec;
        type(TM("  f"));
        EXPECT_EQ(rec.printed, "function y = f(x)\n% F doubles x.\n%   y = f(x)\n\ny = 2 * x;\n");
        rec.clear();
        help(TM("f"));
        EXPECT_EQ(rec.printed, " F doubles x.\n   y = f(x)\n");
        rec.clear();
        type(TM("nothing"));
        EXPECT_EQ(rec.printed, "nothing not found.\n");
        // The development environment's help window and listing reach the same functions.
        rec.clear();
        char topic[] = "f";
        _ive_do(32, 0, topic);
        EXPECT_EQ(rec.printed, " F doubles x.\n   y = f(x)\n");
        rec.clear();
        char pattern[] = "*.m";
        _ive_do(14, 0, pattern);
        EXPECT_EQ(rec.printed, "f.m\n");
    }
    cd(TM(home.c_str()));
    EXPECT_ERROR(type(Mm(1.0)), "type: argument not a string");
    EXPECT_ERROR(help(Mm(1.0)), "help: argument not a string");
    EXPECT_ERROR(system(Mm(1.0)), "system: argument not a string");

    // The shell functions go through the hook; its default runs each part of the text.
    system(TM(("touch " + path("one") + "; touch " + path("two")).c_str()));
    EXPECT_TRUE(exists(path("one")) && exists(path("two")));
    EXPECT_EQ(dos(TM("true")).r(), 0.0);
    int (*saved)(const char*) = system_hook;
    system_hook = record_command;
    Mm s, w;
    dos(TM("ls -l"), i_o, s, w);
    EXPECT_EQ(s.r(), 7.0);
    EXPECT_EQ(w.size(), 0);
    EXPECT_EQ(unixM(TM("pwd")).r(), 7.0);
    EXPECT_EQ(last_command, "pwd");
    system_hook = saved;
}
