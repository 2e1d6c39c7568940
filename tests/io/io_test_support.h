// A scratch directory for the file tests, made for each test and removed with everything in it.
#pragma once
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <string>

#include "arklib.h"
#include "test_support.h"

namespace ak_test {

class ScratchDir : public ::testing::Test {
  protected:
    void SetUp() override {
        char pattern[] = "/tmp/arklib_io_XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        dir = pattern;
    }
    void TearDown() override {
        fclose(TM("all"));
        std::string command = "rm -rf '" + dir + "'";
        ASSERT_EQ(std::system(command.c_str()), 0);
    }
    std::string path(const std::string& name) const { return dir + "/" + name; }
    Mm mpath(const std::string& name) const { return TM(path(name).c_str()); }
    void write_bytes(const std::string& name, const std::string& bytes) const {
        std::ofstream(path(name), std::ios::binary) << bytes;
    }
    std::string read_bytes(const std::string& name) const {
        std::ifstream in(path(name), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    // Opens name with the mode and machine format, expecting success.
    Mm open(const std::string& name, const char* mode, const char* machine = "n") {
        Mm fid = fopen(mpath(name), TM(mode), TM(machine));
        EXPECT_GE(fid.r(), 3.0) << name;
        return fid;
    }
    std::string dir;
};

inline std::vector<double> values(const Mm& m) {
    std::vector<double> out;
    for (int k = 0; k < m.size(); ++k)
        out.push_back(m.flags.type == ak_uchar ? static_cast<const unsigned char*>(m.pr)[k] : m.addr()[k]);
    return out;
}

inline std::string text(const Mm& m) {
    char buffer[4096];
    return Mstr(m, buffer, sizeof buffer);
}

}  // namespace ak_test
