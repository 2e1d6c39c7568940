#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "io/file_internal.h"
#include "io_test_support.h"

using ak_test::values;

namespace {

class FileBinary : public ak_test::ScratchDir {};

struct precision_case {
    const char* name;
    int size;
    std::vector<double> in;   // written
    std::vector<double> out;  // read back
};

}  // namespace

TEST(PrecisionTable, EveryNameHasItsCodeAndSize) {
    struct row {
        int code, size;
        std::vector<const char*> names;
    };
    const row table[] = {
        {9, 8, {"integer*8", "int64"}},
        {10, 8, {"uint64"}},
        {2, 4, {"long", "int", "integer*4", "int32"}},
        {7, 4, {"unsigned long", "unsigned int", "ulong", "uint", "uint32"}},
        {3, 2, {"short", "int16", "integer*2"}},
        {4, 2, {"ushort", "unsigned short", "uint16"}},
        {8, 1, {"char", "char*1", "int8", "schar", "signed char", "integer*1"}},
        {5, 1, {"uchar", "unsigned char", "uint8"}},
        {0, 8, {"double", "float64", "real*8", "adouble"}},
        {6, 8, {"long double", "float80", "real*10"}},
        {1, 4, {"float", "float32", "real*4"}},
    };
    int names = 0;
    for (const row& r : table)
        for (const char* n : r.names) {
            int size = 0;
            EXPECT_EQ(ak_internal::precision_code(n, &size), r.code) << n;
            EXPECT_EQ(size, r.size) << n;
            ++names;
        }
    EXPECT_EQ(names, 37);
    EXPECT_ERROR(ak_internal::precision_code("Int16", nullptr), "fileio: unknown precision Int16");
    ak_test::Recorder rec(ak_test::Recorder::kErrors);
    int size = 0;
    EXPECT_EQ(ak_internal::precision_code("int 16", &size), 0);
    EXPECT_EQ(size, 8);
}

TEST(MachineFormats, NamesAndReverseMap) {
    EXPECT_EQ(ak_internal::machine_format_code("b"), 1);
    EXPECT_EQ(ak_internal::machine_format_code("ieee-be"), 1);
    EXPECT_EQ(ak_internal::machine_format_code("l"), 0);
    EXPECT_EQ(ak_internal::machine_format_code("ieee-le"), 0);
    EXPECT_EQ(ak_internal::machine_format_code("n"), 0);
    EXPECT_EQ(ak_internal::machine_format_code("native"), 0);
    EXPECT_EQ(ak_internal::machine_format_code("B"), -1);
    EXPECT_EQ(ak_internal::machine_format_code("?"), -1);
    // Only the first 15 characters of a matrix are compared.
    EXPECT_EQ(ak_internal::machine_format_code(TM("ieee-be")), 1);
    EXPECT_EQ(ak_internal::machine_format_code(TM("ieee-le.l64....x")), -1);
    EXPECT_STREQ(ak_internal::machine_format_name(1), "ieee-be");
    EXPECT_STREQ(ak_internal::machine_format_name(-1), "ieee-le");
}

TEST_F(FileBinary, EveryPrecisionRoundTripsInBothByteOrders) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::vector<precision_case> cases = {
        {"uchar", 1, {0, 255, 256, 300, -1, 7.9}, {0, 255, 0, 44, 255, 7}},
        {"schar", 1, {-128, 127, 128, -129, -3.7}, {-128, 127, -128, 127, -3}},
        {"int16", 2, {-32768, 32767, 32768, -1, 12.9}, {-32768, 32767, -32768, -1, 12}},
        {"uint16", 2, {0, 65535, 65536, -1}, {0, 65535, 0, 65535}},
        {"int32", 4, {-2147483648.0, 2147483647.0, 2147483648.0, -5.5}, {-2147483648.0, 2147483647.0, -2147483648.0, -5}},
        {"uint32", 4, {0, 4294967295.0, 4294967296.0, -1}, {0, 4294967295.0, 0, 4294967295.0}},
        // Negative 64-bit values come back as unsigned; NaN becomes 0 in every integer width.
        {"int64", 8, {0, 4294967296.0 * 3 + 5, -1, nan}, {0, 4294967296.0 * 3 + 5, 4294967295.0, 0}},
        {"uint64", 8, {9007199254740992.0, 1}, {9007199254740992.0, 1}},
        {"float32", 4, {0.1, -2.5, 1e39}, {static_cast<double>(0.1f), -2.5, HUGE_VAL}},
        {"float64", 8, {0.1, -HUGE_VAL, 5e-324}, {0.1, -HUGE_VAL, 5e-324}},
        {"float80", 8, {1.0 / 3}, {1.0 / 3}},
        {"int8", 1, {nan}, {0}},
    };
    for (const char* machine : {"ieee-le", "ieee-be"}) {
        for (const precision_case& c : cases) {
            SCOPED_TRACE(std::string(c.name) + " " + machine);
            Mm fid = open("p.bin", "w", machine);
            Mm data(0, 0, 0, 1, static_cast<int>(c.in.size()), ak_double);
            for (size_t k = 0; k < c.in.size(); ++k) data.addr()[k] = c.in[k];
            EXPECT_EQ(fwrite(fid, data, TM(c.name)).r(), static_cast<double>(c.in.size()));
            fclose(fid);
            EXPECT_EQ(read_bytes("p.bin").size(), c.in.size() * c.size);
            fid = open("p.bin", "r", machine);
            Mm count;
            Mm back = fread(fid, Inf, TM(c.name), i_o, count);
            fclose(fid);
            EXPECT_EQ(count.r(), static_cast<double>(c.in.size()));
            EXPECT_EQ(back.cols(), 1);
            EXPECT_EQ(values(back), c.out);
        }
    }
}

TEST_F(FileBinary, ByteOrderOnTheFileAndTheFidsOwnFormat) {
    Mm fid = open("be.bin", "w", "ieee-be");
    fwrite(fid, ak_test::row({258, 1}), TM("uint16"));
    fwrite(fid, Mm(1.0), TM("float64"), Mm(0.0), TM("ieee-le"));  // an explicit format wins
    fclose(fid);
    std::string bytes = read_bytes("be.bin");
    ASSERT_EQ(bytes.size(), 12u);
    EXPECT_EQ(bytes.substr(0, 4), std::string("\x01\x02\x00\x01", 4));
    EXPECT_EQ(bytes.substr(4), std::string("\0\0\0\0\0\0\xf0\x3f", 8));
    fid = open("be.bin", "r", "ieee-be");
    EXPECT_EQ(values(fread(fid, 2.0, TM("uint16"))), (std::vector<double>{258, 1}));
    EXPECT_EQ(values(fread(fid, 1.0, TM("double"), Mm(0.0), TM("l"))), std::vector<double>{1.0});
    fclose(fid);
    // Little-endian reading of the same bytes.
    fid = open("be.bin", "r", "ieee-le");
    EXPECT_EQ(values(fread(fid, 2.0, TM("uint16"))), (std::vector<double>{513, 256}));
    fclose(fid);
    // The bulk swapper against the element codec, over a length that spans several work buffers.
    std::vector<double> big(100003);
    for (size_t k = 0; k < big.size(); ++k) big[k] = static_cast<double>(k) * 1.5 - 7;
    fid = open("big.bin", "w", "b");
    Mm m(0, 0, 0, static_cast<int>(big.size()), 1, ak_double);
    std::memcpy(m.addr(), big.data(), big.size() * 8);
    EXPECT_EQ(fwrite(fid, m, TM("double")).r(), static_cast<double>(big.size()));
    fclose(fid);
    std::string raw = read_bytes("big.bin");
    double last;
    std::string tail = raw.substr(raw.size() - 8);
    std::reverse(tail.begin(), tail.end());
    std::memcpy(&last, tail.data(), 8);
    EXPECT_EQ(last, big.back());
    fid = open("big.bin", "r", "b");
    EXPECT_EQ(values(fread(fid, Inf, TM("double"))), big);
    fclose(fid);
}

TEST_F(FileBinary, ReadShapesShortFilesAndTheEnd) {
    write_bytes("seven.bin", "\x01\x02\x03\x04\x05\x06\x07");
    Mm fid = open("seven.bin", "r");
    Mm count;
    Mm a = fread(fid, ak_test::row({3, INFINITY}), TM("uchar"), i_o, count);
    EXPECT_EQ(a.rows(), 3);
    EXPECT_EQ(a.cols(), 3);
    EXPECT_EQ(values(a), (std::vector<double>{1, 2, 3, 4, 5, 6, 7, 0, 0}));
    EXPECT_EQ(count.r(), 7.0);
    EXPECT_EQ(feof(fid).r(), 1.0);
    // Reading again at the end gives an empty column and count 0.
    a = fread(fid, Inf, TM("uchar"), i_o, count);
    EXPECT_EQ(a.rows(), 0);
    EXPECT_EQ(count.r(), 0.0);
    frewind(fid);
    EXPECT_EQ(feof(fid).r(), 0.0);
    fseek(fid, Mm(3.0), TM("bof"));
    a = fread(fid, Mm(10.0));  // 4 left
    EXPECT_EQ(a.rows(), 4);
    EXPECT_EQ(a.cols(), 1);
    frewind(fid);
    a = fread(fid, ak_test::row({2, 2}));  // a full request leaves the end flag clear
    EXPECT_EQ(values(a), (std::vector<double>{1, 2, 3, 4}));
    EXPECT_EQ(feof(fid).r(), 0.0);
    EXPECT_EQ(ftell(fid).r(), 4.0);
    // A 16-bit read of 7 bytes gets 3 whole elements.
    frewind(fid);
    a = fread(fid, Inf, TM("int16"), i_o, count);
    EXPECT_EQ(count.r(), 3.0);
    EXPECT_EQ(values(a), (std::vector<double>{0x0201, 0x0403, 0x0605}));
    // Skip: one byte read, two skipped.
    frewind(fid);
    EXPECT_EQ(values(fread(fid, Inf, TM("uchar"), Mm(2.0))), (std::vector<double>{1, 4, 7}));
    // The precision may come second, the machine format fourth.
    frewind(fid);
    EXPECT_EQ(values(fread(fid, TM("uint16"), Mm(1.0), TM("b"))), (std::vector<double>{0x0102, 0x0405}));
    fclose(fid);

    write_bytes("empty.bin", "");
    fid = open("empty.bin", "r");
    a = fread(fid, i_o, count);
    EXPECT_EQ(a.size(), 0);  // empty values have no shape of their own here
    EXPECT_EQ(count.r(), 0.0);
    EXPECT_EQ(feof(fid).r(), 1.0);
    EXPECT_ERROR(fread(fid, ak_test::row({1, 2, 3})), "fread: can not read multi-dimensional matrices");
    fclose(fid);
}

TEST_F(FileBinary, OutputClassForms) {
    write_bytes("b.bin", std::string("\x05\xff\x80\x41", 4));
    Mm fid = open("b.bin", "r");
    Mm a = fread(fid, Inf, TM("uint8=>uint8"));
    EXPECT_EQ(a.flags.type, ak_uchar);
    EXPECT_EQ(values(a), (std::vector<double>{5, 255, 128, 65}));
    frewind(fid);
    a = fread(fid, Inf, TM("*int8"));
    EXPECT_EQ(a.flags.type, ak_double);
    EXPECT_EQ(values(a), (std::vector<double>{5, -1, -128, 65}));
    frewind(fid);
    a = fread(fid, Inf, TM("int8=>uint8"));  // saturates into the byte range
    EXPECT_EQ(values(a), (std::vector<double>{5, 0, 0, 65}));
    frewind(fid);
    a = fread(fid, Inf, TM("uchar=>char"));
    EXPECT_TRUE(a.flags.str);
    frewind(fid);
    a = fread(fid, 1.0, TM("float32=>int16"));
    EXPECT_EQ(a.flags.type, ak_double);
    EXPECT_EQ(values(a), std::vector<double>{16});  // the bits 0x4180FF05 are about 16.12
    fclose(fid);
}

TEST_F(FileBinary, WriteDetailsAndMessages) {
    Mm fid = open("w.bin", "w");
    EXPECT_EQ(fwrite(fid, TM("hi")).r(), 2.0);  // uchar by default
    Mm b(0, 0, 0, 1, 2, ak_uchar);
    static_cast<unsigned char*>(b.pr)[0] = 200;
    static_cast<unsigned char*>(b.pr)[1] = 1;
    EXPECT_EQ(fwrite(fid, b, TM("int16")).r(), 2.0);
    Mm z(1, 0, 0, 1, 2, ak_double);
    z.addr()[0] = 1;
    z.addr()[1] = 2;
    z.addi()[0] = 9;
    z.addi()[1] = 9;
    EXPECT_EQ(fwrite(fid, z, TM("uchar"), Mm(1.0)).r(), 2.0);  // the imaginary part is not written
    EXPECT_ERROR(fwrite(fid, Mm(1.0), Mm(5.0)), "fwrite: precision not a string");
    EXPECT_ERROR(fwrite(fid), "fwrite does not accept 1 input");
    EXPECT_ERROR(fwrite(fid, Mm(1.0), TM("bits")), "fileio: unknown precision bits");
    fclose(fid);
    EXPECT_EQ(read_bytes("w.bin"), std::string("hi\xc8\x00\x01\x00\x01\x00\x02", 9));
}
