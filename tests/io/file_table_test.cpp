#include <sys/stat.h>

#include "io/file_internal.h"
#include "io_test_support.h"

using ak_test::text;
using ak_test::values;

namespace {

class FileTable : public ak_test::ScratchDir {};

int open_rows() {
    int n = 0;
    for (int k = 0; k < ak_internal::fid_rows; ++k) n += ak_internal::fid_table()[k].open != 0;
    return n;
}

// A path object whose search finds every name in one directory.
struct one_dir_path {
    ak_path_t path;
    std::string dir;
    static const char* find(ak_path_t* p, const char* name, int) {
        auto* self = reinterpret_cast<one_dir_path*>(p);
        struct stat st;
        return ::stat((self->dir + name).c_str(), &st) == 0 ? self->dir.c_str() : nullptr;
    }
};

}  // namespace

TEST_F(FileTable, OpenCloseAndQuery) {
    EXPECT_EQ(open_rows(), 3);
    Mm fid, msg;
    fopen(mpath("a.txt"), TM("w"), i_o, fid, msg);
    EXPECT_EQ(fid.r(), 3.0);
    EXPECT_TRUE(isempty(msg));
    Mm fid2 = fopen(mpath("b.txt"), TM("w+t"), TM("ieee-be"));
    EXPECT_EQ(fid2.r(), 4.0);
    Mm name, mode, machine;
    fopen(fid, i_o, name, mode, machine);
    EXPECT_EQ(text(name), path("a.txt"));
    EXPECT_EQ(text(mode), "wb");
    EXPECT_EQ(text(machine), "ieee-le");  // the output forms default to little-endian
    fopen(fid2, i_o, name, mode, machine);
    EXPECT_EQ(text(mode), "w+t");
    EXPECT_EQ(text(machine), "ieee-be");
    EXPECT_EQ(text(fopen(fid2)), path("b.txt"));
    EXPECT_EQ(text(fopen(Mm(1.0))), "\"stdout\"");
    EXPECT_TRUE(isempty(fopen(Mm(77.0))));
    EXPECT_EQ(values(fopen(TM("all"))), (std::vector<double>{3, 4}));
    // A closed fid is reported, and the query of one gives empty texts.
    EXPECT_EQ(fclose(fid).r(), 0.0);
    EXPECT_ERROR(ftell(fid), "Fid not opened.");
    fopen(fid, i_o, name, mode, machine);
    EXPECT_TRUE(isempty(name) && isempty(mode) && isempty(machine));
    // The lowest free row is taken again.
    EXPECT_EQ(fopen(mpath("c.txt"), TM("a")).r(), 3.0);
    fclose(TM("anything"));
    EXPECT_EQ(open_rows(), 3);
    EXPECT_TRUE(isempty(fopen(TM("all"))));
}

TEST_F(FileTable, FailedOpensLeaveNoRow) {
    Mm fid, msg;
    fopen(TM(""), TM("r"), i_o, fid, msg);
    EXPECT_EQ(fid.r(), -1.0);
    EXPECT_EQ(text(msg), "filename is empty");
    fopen(mpath("missing.txt"), i_o, fid, msg);
    EXPECT_EQ(fid.r(), -1.0);
    EXPECT_EQ(text(msg), "File error");
    EXPECT_EQ(fopen(TM(dir.c_str())).r(), -1.0);                // a directory is not a file
    EXPECT_EQ(fopen(mpath("no/such/dir"), TM("w")).r(), -1.0);  // nor a path through nothing
    EXPECT_EQ(open_rows(), 3);
    ak_test::Recorder rec;
    fid = fopen(mpath("x.bin"), TM("w"), TM("vax"));
    EXPECT_EQ(rec.warnings, std::vector<std::string>{"fopen: don't know how to convert from machine format"});
    // A file of unknown format is written and read swapped.
    fwrite(fid, Mm(258.0), TM("uint16"));
    fclose(fid);
    EXPECT_EQ(read_bytes("x.bin"), "\x01\x02");
    fid = fopen(mpath("x.bin"), TM("r"), TM("vax"));
    EXPECT_EQ(fread(fid, 1.0, TM("uint16")).r(), 258.0);
}

TEST_F(FileTable, FidChecks) {
    EXPECT_ERROR(ftell(Mm(129.0)), "Illegal fid.");
    EXPECT_ERROR(ftell(Mm(-1.0)), "Illegal fid.");
    EXPECT_ERROR(feof(Inf), "Illegal fid.");
    EXPECT_ERROR(feof(Mm(50.0)), "Fid not opened.");
    Mm two = ak_test::row({3, 4});
    two.setname("fids");
    EXPECT_ERROR(ftell(two), "Size of fid fids not one.");
    EXPECT_ERROR(fclose(Mm(2.0)), "fclose: can not close stdin/stdout/stderr, fid is =2");
    EXPECT_ERROR(fclose(Mm(-4.0)), "fclose: can not close stdin/stdout/stderr, fid is =-4");
    // 2.6 rounds to 3 but names row 2: still not closed.
    EXPECT_ERROR(fclose(Mm(2.6)), "fclose: can not close stdin/stdout/stderr, fid is =2");
    fclose(TM("all"));
    EXPECT_EQ(open_rows(), 3);
    // A fraction names the row its truncation gives, for every function alike.
    Mm fid = open("f.bin", "w");
    fwrite(fid, ak_test::row({1, 2, 3}));
    EXPECT_EQ(ftell(Mm(fid.r() + 0.7)).r(), 3.0);
    EXPECT_EQ(fclose(Mm(fid.r() + 0.4)).r(), 0.0);
    EXPECT_EQ(open_rows(), 3);
    // Fids 0 to 2 use the standard streams.
    EXPECT_EQ(fflush(Mm(1.0)).r(), 0.0);
    EXPECT_EQ(ferror(Mm(2.0)).size(), 0);
    EXPECT_EQ(stderrM().r(), 2.0);
}

TEST_F(FileTable, TheTableFull) {
    for (int k = 3; k < 128; ++k) ASSERT_EQ(open("f" + std::to_string(k), "w").r(), k);
    EXPECT_ERROR(fopen(mpath("one-too-many"), TM("w")), "Too many files");
    fclose(TM("all"));
    EXPECT_EQ(open_rows(), 3);
    EXPECT_EQ(open("again", "w").r(), 3.0);
}

TEST_F(FileTable, ReadingSearchesThePath) {
    ASSERT_EQ(::mkdir(path("lib").c_str(), 0777), 0);
    write_bytes("lib/data.txt", "from the path");
    write_bytes("lib/script.m", "x = 1;");
    one_dir_path p{};
    p.path.find = one_dir_path::find;
    p.dir = path("lib/");
    void* saved = mpath_pointer;
    mpath_pointer = &p.path;
    Mm fid = fopen(TM("data.txt"));
    EXPECT_GE(fid.r(), 3.0);
    EXPECT_EQ(text(fopen(fid)), path("lib/data.txt"));
    EXPECT_EQ(text(fread(fid, Inf, TM("char"))), "from the path");
    fclose(fid);
    // Writing does not search, and a plain read finds a file of the current directory first.
    EXPECT_EQ(fopen(TM("data.txt"), TM("r+")).r(), -1.0);
    std::string name = "script";
    std::FILE* f = ak_internal::path_open(&p.path, name, true);
    ASSERT_NE(f, nullptr);
    std::fclose(f);
    EXPECT_EQ(name, path("lib/script.m"));
    name = path("lib/data.txt");  // found as it stands
    f = ak_internal::path_open(&p.path, name, false);
    ASSERT_NE(f, nullptr);
    std::fclose(f);
    EXPECT_EQ(name, path("lib/data.txt"));
    mpath_pointer = saved;
}
