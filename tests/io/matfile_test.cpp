// load and save: round trips of every kind of value through the level-5, level-4 and text formats,
// the bytes of the files written, appending, the word forms over the scope table, files of other
// programs (tests/data, made by tools/make_matfile_fixtures.sh) and the messages.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "io/io_test_support.h"
#include "io/matfile_internal.h"

namespace {

using ak_test::row;

// The first difference between two values, by type, flags, shape, class and contents; empty when
// there is none.
std::string difference(const Mm& a, const Mm& b, const std::string& where = "value") {
    if (a.flags.type != b.flags.type) return where + ": type";
    if (a.flags.str != b.flags.str) return where + ": str flag";
    if (a.flags.sparse != b.flags.sparse) return where + ": sparse flag";
    if (a.flags.logical != b.flags.logical) return where + ": logical flag";
    if ((a.pi != nullptr) != (b.pi != nullptr)) return where + ": complexity";
    if (a.size() != b.size() || a.rows() != b.rows() || a.cols() != b.cols() || a.size(3) != b.size(3))
        return where + ": shape";
    if (a.classid != b.classid) return where + ": class";
    if (a.nfields != b.nfields) return where + ": field count";
    for (int f = 0; f < a.nfields; ++f)
        if (std::strcmp(a.fields[f], b.fields[f]) != 0) return where + ": field name";
    const int n = a.flags.sparse ? a.nnz : a.size();
    if (a.nnz != b.nnz) return where + ": nnz";
    for (int k = 0; k < n; ++k) {
        if (a.flags.sparse && a.index[k] != b.index[k]) return where + ": sparse index";
        switch (a.flags.type) {
            case ak_double:
                if (a.addr()[k] != b.addr()[k] || (a.pi && a.addi()[k] != b.addi()[k]))
                    return where + ": element " + std::to_string(k);
                break;
            case ak_uchar:
                if (static_cast<unsigned char*>(a.pr)[k] != static_cast<unsigned char*>(b.pr)[k])
                    return where + ": byte " + std::to_string(k);
                break;
            case ak_mm: {
                std::string d = difference(static_cast<Mm*>(a.pr)[k], static_cast<Mm*>(b.pr)[k],
                                           where + "{" + std::to_string(k) + "}");
                if (!d.empty()) return d;
                break;
            }
            default:
                break;
        }
    }
    return "";
}

// One value of every kind that the level-5 format holds, by name.
struct sample {
    const char* name;
    Mm value;
};

std::vector<sample> every_kind() {
    const Mm a = (BR(1.0), 2.0, 3.0, semi, 4.0, 5.0, 6.5);
    const int d3[3] = {2, 2, 3};
    Mm cube(0, 0, 0, 3, d3, ak_double);
    for (int k = 0; k < 12; ++k) cube.addr()[k] = k * 0.5 - 2;
    const Mm z = a + i * 2.0;
    const Mm inner_cell = (CL(3.0), TM("in"));
    const Mm nested = (CL(1.0), TM("two"), semi, inner_cell, Mm());
    const Mm person = mstruct((CL(TM("name")), TM("Ada"), TM("age"), 36.0, TM("tags"), nested));
    const Mm people = mstruct((CL(TM("id")), Mm((CL(1.0), 2.0, 3.0)), TM("note"), TM("x")));
    const Mm point = mclass(mstruct((CL(TM("x")), 1.5, TM("y"), -2.0)), TM("mat_point"));
    const Mm deep = mstruct((CL(TM("inner")), person, TM("list"), Mm((CL(people), point))));
    return {
        {"real", a},
        {"cplx", z},
        {"empty", Mm()},
        {"cube", cube},
        {"str", TM("hello")},
        {"chars", (BR(TM("abc")), semi, TM("xyz"))},
        {"sp", sparse(a)},
        {"spz", sparse(z)},
        {"spnone", sparse(zeros(3.0, 2.0))},
        {"cell", nested},
        {"person", person},
        {"people", people},
        {"point", point},
        {"deep", deep},
        {"bytes", ak_test::bytes({0, 7, 255})},
        {"flags", a > 2.5},
        {"scalar", Mm(-0.125)},
    };
}

class MatFiles : public ak_test::ScratchDir {
  protected:
    void TearDown() override {
        variables_scope.reset();
        _ive_do(4, 0, nullptr);
        ak_scope_tracking = 0;
        ak_test::ScratchDir::TearDown();
    }
    std::string fixture(const char* name) const { return std::string(ARKLIB_TEST_DATA) + "/" + name; }
    Mm fixture_m(const char* name) const { return TM(fixture(name).c_str()); }

    // Loads every variable of a fixture through the word form, with warnings kept out of the log.
    Mm load_all(const std::string& file) {
        ak_test::Recorder quiet;
        ak_test::ErrorsThrow guard;
        return load(TM(file.c_str()), TM("*"));
    }
};

// The value of field name of a 1x1 structure (null when absent).
const Mm* member(const Mm& s, const char* name) {
    const int f = s.findfield(name, 0);
    if (f < 0) return nullptr;
    return &static_cast<const Mm*>(s.pr)[0].mr(f + 1);
}

std::vector<double> values(const Mm& m) { return ak_test::values(m); }

// ---- round trips --------------------------------------------------------------------------------

TEST_F(MatFiles, Level5RoundTripOfEveryKindByName) {
    ak_test::ErrorsThrow guard;
    std::vector<sample> kinds = every_kind();
    std::vector<Mm*> saved, loaded;
    Mc out, in;
    for (auto& s : kinds) {
        saved.push_back(new Mm(s.value, s.name));
        loaded.push_back(new Mm(i_o, s.name, 0));
    }
    for (std::size_t k = 0; k < kinds.size(); ++k) out, *saved[k];
    // Loaded in the reverse order: the reader finds each by name.
    for (std::size_t k = kinds.size(); k-- > 0;) in, *loaded[k];
    save(mpath("all"), out);
    load(mpath("all.mat"), in);
    for (std::size_t k = 0; k < kinds.size(); ++k) {
        EXPECT_EQ(difference(kinds[k].value, *loaded[k]), "") << kinds[k].name;
        delete saved[k];
        delete loaded[k];
    }
}

TEST_F(MatFiles, Level5CompressedAndCellFormsRoundTrip) {
    ak_test::ErrorsThrow guard;
    _ive_do(0, 0, nullptr);
    std::vector<sample> kinds = every_kind();
    std::vector<Mm*> heads;
    for (auto& s : kinds) {
        heads.push_back(new Mm(i_o, s.name, 0));
        *heads.back() = s.value;
    }
    save(mpath("z.mat"), TM("-compress"));
    // vbsave names its unnamed elements A, B, C..., the contents of cells included.
    Mm list(0, 0, 0, 1, 3, ak_mm);
    list.mr(1) = mpath("v.mat");
    list.mr(2) = kinds[9].value;
    list.mr(3) = kinds[13].value;
    vbsave(list);
    for (Mm* h : heads) delete h;

    Mm all = load(mpath("z.mat"), TM("*"));
    EXPECT_EQ(all.nfields, static_cast<int>(kinds.size()));
    for (auto& s : kinds) {
        const Mm* v = member(all, s.name);
        ASSERT_NE(v, nullptr) << s.name;
        EXPECT_EQ(difference(s.value, *v), "") << s.name;
    }
    // The list form finds compressed elements by name too.
    Mm deep(i_o, "deep", 0), cplx(i_o, "cplx", 0);
    load(mpath("z.mat"), (BR(deep), cplx));
    EXPECT_EQ(difference(kinds[13].value, deep), "");
    EXPECT_EQ(difference(kinds[1].value, cplx), "");

    Mm v = load(mpath("v.mat"), TM("*"));
    ASSERT_EQ(v.nfields, 2);
    EXPECT_STREQ(v.fields[0], "A");
    // The six elements of the first cell, one of them a cell of two, took B to G.
    ASSERT_STREQ(v.fields[1], "H");
    EXPECT_EQ(difference(kinds[13].value, *member(v, "H")), "");
    // The list form without names reads the first variable.
    EXPECT_EQ(difference(kinds[9].value, load(mpath("v.mat"))), "");
}

TEST_F(MatFiles, Level4RoundTripKeepsWhatTheFormatHolds) {
    ak_test::ErrorsThrow guard;
    Mm a(i_o, "a", 0), z(i_o, "z", 0), e(i_o, "e", 0), s(i_o, "s", 0), c(i_o, "c", 0), sp(i_o, "sp", 0),
        spz(i_o, "spz", 0), lg(i_o, "lg", 0), zr(i_o, "zr", 0);
    a = (BR(1.0), 2.0, 3.0, semi, 4.0, 5.0, 6.5);
    z = a * i + 1.0;
    e = Mm();
    s = TM("hello");
    c = (BR(TM("ab")), semi, TM("cd"));
    sp = sparse(a);
    spz = sparse(z);
    lg = a > 3.0;
    zr = a + i * 0.0;  // an imaginary half of zeros is saved as real
    saveV4(mpath("v4"), (BR(a), z, e, s, c, sp, spz, lg, zr));
    // 20 header bytes and the name for the empty matrix.
    Mm a2(i_o, "a", 0), z2(i_o, "z", 0), e2(i_o, "e", 0), s2(i_o, "s", 0), c2(i_o, "c", 0), sp2(i_o, "sp", 0),
        spz2(i_o, "spz", 0), lg2(i_o, "lg", 0), zr2(i_o, "zr", 0);
    load(mpath("v4.mat"), (BR(a2), z2, e2, s2, c2, sp2, spz2, lg2, zr2));
    EXPECT_EQ(difference(a, a2), "");
    EXPECT_EQ(difference(z, z2), "");
    EXPECT_EQ(e2.size(), 0);
    EXPECT_EQ(difference(s, s2), "");
    EXPECT_EQ(difference(c, c2), "");
    EXPECT_EQ(difference(sp, sp2), "");
    EXPECT_EQ(difference(spz, spz2), "");
    EXPECT_EQ(difference(lg, lg2), "");  // all 0 and 1: the flag is inferred
    EXPECT_FALSE(zr2.isc());
    EXPECT_EQ(values(zr2), values(a));

    // A 0x0 record is the header and the name only.
    saveV4(mpath("e.mat"), (BR(e)));
    EXPECT_EQ(read_bytes("e.mat").size(), 20u + 2u);

    const int d3[3] = {1, 1, 2};
    Mm cube(i_o, "cube", 0);
    cube = Mm(0, 0, 0, 3, d3, ak_double);
    EXPECT_ERROR(saveV4(mpath("c.mat"), (BR(cube))),
                 "save: matrix 'cube' has more than two dimensions and can not be saved in 4.0 format");
}

TEST_F(MatFiles, Level4RecordsGoToTheListByPosition) {
    ak_test::Recorder rec;
    ak_test::ErrorsThrow guard;
    Mm p(i_o, "p", 0), q(i_o, "q", 0);
    p = row({1, 2});
    q = TM("q");
    saveV4(mpath("pq.mat"), (BR(p), q));
    Mm x(i_o, "x", 0), y(i_o, "y", 0), w(i_o, "w", 0), untouched(i_o, "untouched", 0);
    untouched = 5.0;
    load(mpath("pq.mat"), (BR(x), y, w, untouched));
    EXPECT_EQ(values(x), (std::vector<double>{1, 2}));
    EXPECT_TRUE(y.isstr());
    // Past the end: the first variable is emptied and the reading stops.
    EXPECT_EQ(w.size(), 0);
    EXPECT_EQ(values(untouched), std::vector<double>{5});
    ASSERT_EQ(rec.warnings.size(), 2u);
    EXPECT_NE(rec.warnings[0].find("load4 '"), std::string::npos);
    EXPECT_NE(rec.warnings[0].find("': variable named 'p' loaded into 'x'"), std::string::npos);
}

TEST_F(MatFiles, TextRoundTripsAndTheTextReader) {
    ak_test::ErrorsThrow guard;
    Mm a(i_o, "a", 0);
    a = (BR(1.0), -2.5, 1e-300, semi, Inf, -Inf, 123456789.0);
    saveascii(mpath("a.txt"), (BR(a)));
    EXPECT_EQ(read_bytes("a.txt").substr(0, 23), std::string(22, ' ') + "1");
    EXPECT_EQ(difference(load(mpath("a.txt")), a), "");

    // The word forms: 8 or 16 digits, blanks or tabs.
    _ive_do(0, 0, nullptr);
    Mm pi3(i_o, "pi3", 0);
    pi3 = row({M_PI, 1.0 / 3.0});
    save(mpath("p8.txt"), TM("pi3"), TM("-ascii"));
    save(mpath("p16.txt"), TM("pi3"), TM("-ascii"), TM("-double"), TM("-tabs"));
    EXPECT_EQ(read_bytes("p8.txt"), "   3.1415927e+00   3.3333333e-01\n");
    EXPECT_EQ(read_bytes("p16.txt"), "3.141592653589793e+00\t3.333333333333333e-01\n");
    EXPECT_EQ(values(load(mpath("p16.txt"))), (std::vector<double>{M_PI, 1.0 / 3.0}));
    // -append adds rows to a text file.
    save(mpath("p8.txt"), TM("pi3"), TM("-ascii"), TM("-append"));
    EXPECT_EQ(load(mpath("p8.txt")).rows(), 2);

    // Comments, commas, tabs and special values; a word of neither kind repeats the last value.
    write_bytes("t.dat", "% header\n# another\n1, 2\t3 % tail\n\n  NaN -Inf Nope\n");
    Mm t = load(mpath("t.dat"));
    ASSERT_EQ(t.rows(), 2);
    ASSERT_EQ(t.cols(), 3);
    EXPECT_TRUE(std::isnan(t.r(2.0, 1.0)));
    EXPECT_EQ(t.r(2.0, 2.0), -INFINITY);
    EXPECT_EQ(t.r(2.0, 3.0), -INFINITY);
    // An empty file is text, and empty.
    write_bytes("none.txt", "");
    EXPECT_EQ(load(mpath("none.txt")).size(), 0);
    write_bytes("ragged.txt", "1 2\n3 4 5\n");
    EXPECT_ERROR(load(mpath("ragged.txt")), "loadascii: matrix in " + path("ragged.txt") + " is not rectangular");
    // A file whose first 32 bytes are text is text, whatever follows.
    write_bytes("mixed.txt", std::string("1 2 3                          \n") + std::string("\x01\x02\n", 3));
    EXPECT_EQ(values(load(mpath("mixed.txt"))), (std::vector<double>{1, 2, 3}));
}

// ---- the bytes of a level-5 file ----------------------------------------------------------------

TEST_F(MatFiles, Level5HeaderTagsAndAnonymousNames) {
    ak_test::ErrorsThrow guard;
    Mm abcd(i_o, "abcd", 0), abcde(i_o, "abcde", 0), s(i_o, "s", 0), sp(i_o, "sp", 0);
    abcd = 1.0;
    abcde = 2.0;
    s = TM("ab");
    sp = sparse(zeros(2.0, 2.0));
    save(mpath("h.mat"), (BR(abcd), abcde, s, sp));
    const std::string b = read_bytes("h.mat");
    const std::string start = "MATVEX 4.5 MAT-file, Platform: GLNXA64, Created on: ";
    EXPECT_EQ(b.substr(0, start.size()), start);
    EXPECT_EQ(b.substr(124, 4), std::string("\x00\x01IM", 4));
    EXPECT_EQ(b.find('\0'), 124u);  // blank-padded text
    auto word = [&](std::size_t at) {
        uint32_t w;
        std::memcpy(&w, b.data() + at, 4);
        return w;
    };
    // First element: 8 words, two dims, then the 4-byte name in the small form.
    EXPECT_EQ(word(128), 14u);
    EXPECT_EQ(word(128 + 16), 6u);  // class double
    EXPECT_EQ(word(128 + 40), (4u << 16) | 1u);
    EXPECT_EQ(b.substr(128 + 44, 4), "abcd");
    const std::size_t second = 128 + 8 + word(132);
    EXPECT_EQ(word(second + 40), 1u);  // long tag for five characters
    EXPECT_EQ(word(second + 44), 5u);
    const std::size_t third = second + 8 + word(second + 4);
    EXPECT_EQ(word(third + 16), 4u);                       // class char
    EXPECT_EQ(word(third + 48), (4u << 16) | 4u);          // "ab": uint16, 4 bytes, small form
    const std::size_t fourth = third + 8 + word(third + 4);
    EXPECT_EQ(word(fourth + 16), 5u);  // class sparse
    EXPECT_EQ(word(fourth + 20), 1u);  // nzmax 1 for no entries
    EXPECT_EQ(word(fourth + 48), (4u << 16) | 5u);  // the row list: one word, in the small form
    EXPECT_EQ(b.size() % 8, 0u);

    // Unnamed elements: A to Z, '[', a to z, '{', then A again.
    Mm many(0, 0, 0, 1, 60, ak_mm);
    Mm list(0, 0, 0, 1, 2, ak_mm);
    list.mr(1) = mpath("n.mat");
    list.mr(2) = many;
    vbsave(list);
    const std::string n = read_bytes("n.mat");
    Mm back = load(mpath("n.mat"));
    EXPECT_EQ(back.size(), 60);
    std::string seen;
    // The cell itself is A; its elements follow in order.
    for (std::size_t at = 128; at + 48 <= n.size(); at += 8) {
        uint32_t w0, w10;
        std::memcpy(&w0, n.data() + at, 4);
        std::memcpy(&w10, n.data() + at + 40, 4);
        if (w0 == 14 && w10 == ((1u << 16) | 1u)) seen += n[at + 44];
    }
    EXPECT_EQ(seen.substr(0, 30), "ABCDEFGHIJKLMNOPQRSTUVWXYZ[abc");
    EXPECT_EQ(seen.substr(26, 30), "[abcdefghijklmnopqrstuvwxyz{AB");
}

TEST_F(MatFiles, AppendReplacesAndAdds) {
    ak_test::ErrorsThrow guard;
    _ive_do(0, 0, nullptr);
    Mm a(i_o, "a", 0), b(i_o, "b", 0), c(i_o, "c", 0);
    a = 1.0;
    b = TM("old");
    save(mpath("ap.mat"), TM("a"), TM("b"));
    b = row({7, 8});
    c = mstruct((CL(TM("f")), 3.0));
    save(mpath("ap.mat"), TM("b"), TM("c"), TM("-append"));
    save(mpath("ap.mat"), TM("c"), TM("-append"), TM("-compress"));
    Mm all = load(mpath("ap.mat"), TM("*"));
    ASSERT_EQ(all.nfields, 3);
    EXPECT_STREQ(all.fields[0], "a");
    EXPECT_STREQ(all.fields[1], "b");
    EXPECT_STREQ(all.fields[2], "c");
    EXPECT_EQ(values(*member(all, "b")), (std::vector<double>{7, 8}));
    EXPECT_EQ(difference(*member(all, "c"), c), "");
    // Appending to a file of another writer, whose compressed elements end off the 8-byte grid.
    std::string theirs;
    {
        std::FILE* in = std::fopen(ARKLIB_TEST_DATA "/scipy_v5z.mat", "rb");
        ASSERT_NE(in, nullptr);
        char chunk[4096];
        for (std::size_t n; (n = std::fread(chunk, 1, sizeof chunk, in)) > 0;) theirs.append(chunk, n);
        std::fclose(in);
    }
    write_bytes("theirs.mat", theirs);
    save(mpath("theirs.mat"), TM("a"), TM("-append"));
    Mm mixed = load(mpath("theirs.mat"), TM("*"));
    EXPECT_EQ(mixed.nfields, 16);  // its sixteen, one of them replaced
    EXPECT_EQ(values(*member(mixed, "a")), std::vector<double>{1});  // replaced
    EXPECT_EQ(ak_test::text(*member(mixed, "str")), "hello");
    EXPECT_EQ(read_bytes("theirs.mat").size() % 8, 0u);

    // Level 4: records are added at the end.
    save(mpath("ap4"), TM("a"), TM("-v4"));
    save(mpath("ap4"), TM("b"), TM("-v4"), TM("-append"));
    Mm four = load(mpath("ap4.mat"), TM("*"));
    EXPECT_EQ(four.nfields, 2);
    // A text file is not a level-5 file to append to.
    write_bytes("plain.mat", "1 2 3\n");
    EXPECT_ERROR(save(mpath("plain.mat"), TM("a"), TM("-append")),
                 "save: " + path("plain.mat") + " is not a level-5 MAT-file and can not be appended to");
}

TEST_F(MatFiles, WordFormsUseTheScopeTable) {
    ak_test::ErrorsThrow guard;
    _ive_do(0, 0, nullptr);
    {
        Mm alpha(i_o, "alpha", 0), alps(i_o, "alps", 0), beta(i_o, "beta", 0);
        alpha = 1.0;
        alps = 2.0;
        beta = 3.0;
        save(mpath("w.mat"), TM("al*"));
        save(mpath("all.mat"));
        Mm s(i_o, "s", 0);
        s = mstruct((CL(TM("p")), 4.0, TM("q"), TM("x")));
        save(mpath("fields.mat"), TM("-struct"), TM("s"));
        EXPECT_ERROR(save(mpath("x.mat"), TM("missing")), "save: variable 'missing' not found");
        EXPECT_ERROR(save(mpath("x.mat"), TM("-bogus")), "save: unknown option '-bogus'");
    }
    _ive_do(4, 0, nullptr);
    Mm w = load(mpath("w.mat"), TM("*"));
    EXPECT_EQ(w.nfields, 2);
    EXPECT_EQ(load(mpath("all.mat"), TM("*")).nfields, 3);
    Mm f = load(mpath("fields.mat"), TM("q"));
    ASSERT_EQ(f.nfields, 1);
    EXPECT_EQ(ak_test::text(*member(f, "q")), "x");

    // Loading makes the variables that are not there, and fills those that are.
    variables_scope.reset();
    _ive_do(4, 0, nullptr);
    Mm alpha(i_o, "alpha", 0);
    load(mpath("w.mat"), TM("alp*"));
    EXPECT_EQ(values(alpha), std::vector<double>{1});
    const Mm* made = scope_lookup("alps", variables_scope.depth);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(values(*made), std::vector<double>{2});
    // -ascii reads a text file whatever its name, into a variable named after it.
    write_bytes("grid.mat", "1 2\n3 4\n");
    Mm g = load(mpath("grid.mat"), TM("-ascii"));
    ASSERT_NE(member(g, "grid"), nullptr);
    EXPECT_EQ(values(*member(g, "grid")), (std::vector<double>{1, 3, 2, 4}));

    // who and whos of a file.
    Mm names = who(mpath("w.mat"));
    ASSERT_EQ(names.size(), 2);
    EXPECT_EQ(ak_test::text(names.mr(1)), "alpha");
    Mm ws = whos(mpath("w.mat"));
    EXPECT_EQ(ws.size(), 2);
}

TEST_F(MatFiles, VariableNamesWithoutTheirData) {
    ak_test::ErrorsThrow guard;
    Mm first(i_o, "first", 0), second(i_o, "second", 0);
    first = row({1, 2, 3});
    second = TM("x");
    saveV4(mpath("n4.mat"), (BR(first), second));
    save(mpath("n5.mat"), (BR(first), second));
    write_bytes("table.dat", "1 2\n");
    for (const char* file : {"n4.mat", "n5.mat", "table.dat"}) {
        int kind = -1;
        std::FILE* f = ak_internal::mat_open(nullptr, path(file).c_str(), &kind);
        ASSERT_NE(f, nullptr) << file;
        std::vector<std::string> names;
        char buffer[64] = "";
        for (int k = 0; k < 4; ++k) {
            ak_internal::mat_variable_name(f, path(file).c_str(), kind, buffer, sizeof buffer);
            if (!buffer[0]) break;
            names.push_back(buffer);
        }
        std::fclose(f);
        if (kind == ak_internal::mat_kind_text)
            EXPECT_EQ(names, std::vector<std::string>{"table"});
        else
            EXPECT_EQ(names, (std::vector<std::string>{"first", "second"})) << file;
    }
    // The name of a file without a '.' gets ".mat"; with a dot anywhere it stays as it is.
    EXPECT_EQ(ak_internal::mat_add_extension("run"), "run.mat");
    EXPECT_EQ(ak_internal::mat_add_extension("dir.d/run"), "dir.d/run");
}

// ---- files of other programs ------------------------------------------------------------------

// The values that tools/make_matfile_fixtures.sh stores in the files of both programs.
void expect_common_values(const Mm& all, const std::string& file) {
    SCOPED_TRACE(file);
    ASSERT_TRUE(all.fields != nullptr);
    EXPECT_EQ(values(*member(all, "a")), (std::vector<double>{1, 4, 2, 5, 3, 6.5}));
    const Mm& z = *member(all, "z");
    ASSERT_TRUE(z.isc());
    EXPECT_EQ(values(z), (std::vector<double>{1, -3.5}));
    EXPECT_EQ(z.addi()[1], -4);
    EXPECT_EQ(member(all, "e")->size(), 0);
    const Mm& t3 = *member(all, "t3");
    EXPECT_EQ(t3.ndims, 3);
    EXPECT_EQ(t3.size(3), 2);
    EXPECT_EQ(t3.addr()[11], 12);
    EXPECT_EQ(ak_test::text(*member(all, "str")), "hello");
    EXPECT_TRUE(member(all, "str")->isstr());
    const Mm& cm = *member(all, "cm");
    EXPECT_EQ(cm.rows(), 2);
    EXPECT_EQ(ak_test::text(cm), "axbycz");
    const Mm& sp = *member(all, "sp");
    EXPECT_TRUE(sp.issparse());
    EXPECT_EQ(sp.nnz, 3);
    EXPECT_EQ(full(sp).r(1.0, 3.0), 2);
    const Mm& spz = *member(all, "spz");
    EXPECT_TRUE(spz.issparse());
    EXPECT_TRUE(spz.isc());
    EXPECT_EQ(spz.nnz, 2);
    const Mm& c = *member(all, "c");
    ASSERT_TRUE(iscell(c));
    EXPECT_EQ(ak_test::text(c.mr(1, 2)), "two");
    EXPECT_EQ(values(c.mr(2, 1).mr(2)), (std::vector<double>{4, 5}));
    const Mm& lg = *member(all, "lg");
    EXPECT_TRUE(lg.islogical());
    EXPECT_EQ(values(lg), (std::vector<double>{1, 0, 1}));
    const Mm& u8 = *member(all, "u8");
    EXPECT_EQ(u8.flags.type, ak_uchar);
    EXPECT_EQ(values(u8), (std::vector<double>{1, 2, 255}));
    EXPECT_EQ(values(*member(all, "i16")), (std::vector<double>{-3, 4}));
}

TEST_F(MatFiles, OctaveFilesLoad) {
    for (const char* file : {"octave_v6.mat", "octave_v7.mat"}) {
        Mm all = load_all(fixture(file));
        expect_common_values(all, file);
        EXPECT_EQ(values(*member(all, "i64")), (std::vector<double>{-5, 7}));
        EXPECT_EQ(member(all, "big")->size(), 300);
        EXPECT_EQ(member(all, "big")->addr()[299], 75);
        const Mm& st = *member(all, "st");
        ASSERT_EQ(st.size(), 2);
        ASSERT_EQ(st.nfields, 2);
        EXPECT_EQ(ak_test::text(st.mr(2).mr(1)), "x");
        EXPECT_TRUE(iscell(st.mr(1).mr(2)));
    }
    Mm four = load_all(fixture("octave_v4.mat"));
    EXPECT_EQ(values(*member(four, "a")), (std::vector<double>{1, 4, 2, 5, 3, 6.5}));
    EXPECT_TRUE(member(four, "z")->isc());
    EXPECT_EQ(ak_test::text(*member(four, "str")), "hello");
    EXPECT_TRUE(member(four, "sp")->issparse());
    // Single data are of a type that the element table refuses.
    EXPECT_ERROR(load(fixture_m("octave_v6_single.mat")), "loadsave5: unknown data format");
}

TEST_F(MatFiles, ScipyFilesLoad) {
    for (const char* file : {"scipy_v5.mat", "scipy_v5z.mat"}) {
        Mm all = load_all(fixture(file));
        expect_common_values(all, file);
        EXPECT_EQ(values(*member(all, "i32")), (std::vector<double>{-70000, 5}));
        EXPECT_EQ(values(*member(all, "u64")), (std::vector<double>{7, 1099511627776.0}));
        // Characters beyond one byte keep their codes.
        EXPECT_EQ(values(*member(all, "uni")), (std::vector<double>{'h', 0xe9, 0x2192}));
        const Mm& st = *member(all, "st");
        ASSERT_EQ(st.size(), 2);
        EXPECT_EQ(ak_test::text(st.mr(1).mr(2)), "p");
        EXPECT_EQ(values(st.mr(2).mr(2)), (std::vector<double>{2, 3}));
    }
    Mm four = load_all(fixture("scipy_v4.mat"));
    EXPECT_EQ(values(*member(four, "a")), (std::vector<double>{1, 4, 2, 5, 3, 6.5}));
    EXPECT_EQ(four.nfields, 4);
}

TEST_F(MatFiles, BothByteOrdersAndTextElements) {
    Mm be = load_all(fixture("bytes_be_v5.mat"));
    EXPECT_EQ(values(*member(be, "bed")), (std::vector<double>{1, 2, 3, 4.5}));
    EXPECT_EQ(member(be, "bez")->addi()[1], 3);
    EXPECT_EQ(ak_test::text(*member(be, "bes")), "ok");
    EXPECT_EQ(values(member(be, "bec")->mr(1)), std::vector<double>{7});
    const Mm& st = *member(be, "best");
    ASSERT_EQ(st.nfields, 2);
    EXPECT_STREQ(st.fields[1], "gg");
    const Mm& sp = *member(be, "besp");
    EXPECT_TRUE(sp.issparse());
    EXPECT_EQ(full(sp).r(1.0, 2.0), 6);

    Mm be4 = load_all(fixture("bytes_be_v4.mat"));
    EXPECT_EQ(values(*member(be4, "b4")), (std::vector<double>{1, 2, 3, 4}));
    EXPECT_EQ(ak_test::text(*member(be4, "s4")), "hi");

    Mm utf = load_all(fixture("bytes_utf.mat"));
    EXPECT_EQ(values(*member(utf, "u16")), (std::vector<double>{'a', 0xe9, 0x1F600}));
    EXPECT_EQ(values(*member(utf, "u32")), (std::vector<double>{'z', 0x2192}));

    EXPECT_ERROR(load(fixture_m("bytes_hdf5.mat")),
                 "load: " + fixture("bytes_hdf5.mat") + " is an HDF5-based MAT-file (version 7.3), which is not supported");
}

// The files the library writes, read by the other programs when they are installed (the values are
// checked by scripts that end with a non-zero status on a mismatch).
TEST_F(MatFiles, OtherProgramsReadOurFiles) {
    const bool octave = access("/usr/bin/octave", X_OK) == 0;
    const bool scipy = std::system("/usr/bin/python3 -c 'import scipy.io' >/dev/null 2>&1") == 0;
    if (!octave && !scipy) GTEST_SKIP() << "neither Octave nor SciPy is installed";
    ak_test::ErrorsThrow guard;
    _ive_do(0, 0, nullptr);
    std::vector<sample> kinds = every_kind();
    std::vector<Mm*> heads;
    for (auto& s : kinds) {
        heads.push_back(new Mm(i_o, s.name, 0));
        *heads.back() = s.value;
    }
    save(mpath("k5.mat"));
    save(mpath("k5z.mat"), TM("-compress"));
    save(mpath("k4.mat"), TM("real"), TM("cplx"), TM("str"), TM("chars"), TM("sp"), TM("spz"), TM("-v4"));
    for (Mm* h : heads) delete h;
    if (octave) {
        const std::string script =
            "for f = {'k5.mat', 'k5z.mat'}; x = load(['" + dir + "/' f{1}]);"
            " assert(x.real, [1 2 3; 4 5 6.5]); assert(x.cplx, [1 2 3; 4 5 6.5] + 2i); assert(size(x.cube), [2 2 3]);"
            " assert(x.cube(2, 2, 3), 3.5); assert(x.chars, ['abc'; 'xyz']); assert(full(x.spz), x.cplx);"
            " assert(x.cell{2, 1}{2}, 'in'); assert(x.people(3).id, 3); assert(x.person(1, 2).tags, 'two'); assert(size(x.deep), [1 2]);"
            " assert(class(x.bytes), 'uint8'); assert(islogical(x.flags)); assert(isempty(x.empty)); end;"
            " y = load('" + dir + "/k4.mat'); assert(full(y.spz), y.cplx); assert(y.chars, ['abc'; 'xyz']);";
        EXPECT_EQ(std::system(("octave --no-gui -q --eval \"" + script + "\" >/dev/null 2>&1").c_str()), 0);
    }
    if (scipy) {
        const std::string script =
            "import scipy.io as s, numpy as np\n"
            "for f in ('k5.mat', 'k5z.mat', 'k4.mat'):\n"
            "    d = s.loadmat('" + dir + "/' + f)\n"
            "    assert (d['real'] == [[1, 2, 3], [4, 5, 6.5]]).all()\n"
            "    assert (d['spz'].toarray() == d['cplx']).all()\n"
            "    assert list(d['chars']) == ['abc', 'xyz']\n"
            "d = s.loadmat('" + dir + "/k5z.mat')\n"
            "assert d['cube'].shape == (2, 2, 3) and d['people'].shape == (1, 3)\n"
            "assert d['bytes'].dtype == np.uint8 and d['point'][0, 0]['y'][0, 0] == -2\n";
        const std::string py = path("check.py");
        write_bytes("check.py", script);
        EXPECT_EQ(std::system(("/usr/bin/python3 " + py + " >/dev/null 2>&1").c_str()), 0);
    }
}

// ---- messages ---------------------------------------------------------------------------------------

TEST_F(MatFiles, MessagesOfTheReaders) {
    EXPECT_ERROR(load(mpath("nothing")), "load: " + path("nothing") + " not found");
    Mm a(i_o, "a", 0);
    a = 1.0;
    save(mpath("one.mat"), (BR(a)));
    Mm unnamed;
    EXPECT_ERROR(load(mpath("one.mat"), (BR(unnamed))), "Could not load unnamed variable from file '" +
                                                             path("one.mat") + "'");
    // ans is skipped quietly; a name the file does not hold leaves the variable as it was.
    Mm ans_(i_o, "ans_", 0), other(i_o, "other", 0);
    other = 9.0;
    EXPECT_NO_ERROR(load(mpath("one.mat"), (BR(ans_), other)));
    EXPECT_EQ(values(other), std::vector<double>{9});

    // Level 4: an unknown matrix type; a record cut short.
    std::string rec(20, '\0');
    rec[0] = 3;  // T 3
    write_bytes("t3.mat", rec);
    EXPECT_ERROR(load(mpath("t3.mat")), "load4: '" + path("t3.mat") + "' unknown matrix type");
    const int32_t head[5] = {0, 4, 4, 0, 2};
    write_bytes("short.mat", std::string(reinterpret_cast<const char*>(head), 20) + "x" + std::string(1, '\0') +
                                 std::string(16, '\x01'));
    EXPECT_ERROR(load(mpath("short.mat")), "load4: could not read real part from file '" + path("short.mat") + "'");

    // Level 5: more than four dimensions; a truncated element.
    std::string five = read_bytes("one.mat");
    std::string cut = five.substr(0, 164);
    write_bytes("cut.mat", cut);
    EXPECT_ERROR(load(mpath("cut.mat")), "loadv5: file '" + path("cut.mat") + "' ended prematurely.");
    uint32_t dims_bytes = 20;
    five.replace(128 + 28, 4, reinterpret_cast<const char*>(&dims_bytes), 4);
    write_bytes("d5.mat", five);
    EXPECT_ERROR(load(mpath("d5.mat")), "load5: Can not read matrix from file '" + path("d5.mat") +
                                            "' which has more then 4 dimensions.");

    // A class the reader does not know: reported, and the reading goes on without data.
    std::string odd = read_bytes("one.mat");
    odd[128 + 16] = 20;
    write_bytes("odd.mat", odd);
    EXPECT_ERROR(load(mpath("odd.mat")), "load5: '" + path("odd.mat") + "' unrecognized matrix type");
    {
        ak_test::Recorder rec(ak_test::Recorder::kErrors | ak_test::Recorder::kWarnings);
        Mm v = load(mpath("odd.mat"));
        EXPECT_EQ(v.flags.type, ak_no_type);
        EXPECT_EQ(rec.errors.size(), 1u);
    }
    // A sparse element whose last column start is negative.
    Mm s(i_o, "s", 0);
    s = sparse(row({0, 3}));
    save(mpath("sp.mat"), (BR(s)));
    std::string sp = read_bytes("sp.mat");
    const int32_t minus_one = -1;
    // Header 128, matrix head 48 with the one-letter name, row list 8 (small), then the 3 column starts.
    sp.replace(128 + 48 + 8 + 8 + 8, 4, reinterpret_cast<const char*>(&minus_one), 4);
    write_bytes("spn.mat", sp);
    EXPECT_ERROR(load(mpath("spn.mat")), "load5: '" + path("spn.mat") + "' contained sparse matrix with negative nnz");

    // Level 4: an O digit that is not 0 is only a warning.
    Mm a4(i_o, "a4", 0);
    a4 = 2.0;
    saveV4(mpath("o.mat"), (BR(a4)));
    std::string o = read_bytes("o.mat");
    o[0] = 100;  // type 0100
    write_bytes("o.mat", o);
    ak_test::Recorder kept;
    EXPECT_EQ(values(load(mpath("o.mat"))), std::vector<double>{2});
    ASSERT_EQ(kept.warnings.size(), 1u);
    EXPECT_NE(kept.warnings[0].find("load4: '" + path("o.mat") + "' O not zero"), std::string::npos);
}

}  // namespace
