// Machine constants, NaN tests, stream units and the version query.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

#include "qnum_test.hpp"

namespace {

using qnum::test::int_slot;
using qnum::test::QuietErrors;
using qnum::test::string_slot;

std::uint32_t bits(float f) {
    std::uint32_t b;
    std::memcpy(&b, &f, 4);
    return b;
}
std::uint64_t bits(double d) {
    std::uint64_t b;
    std::memcpy(&b, &d, 8);
    return b;
}

TEST(Machine, TablesHoldTheirExactBitPatterns) {
    const std::uint32_t single[8] = {0x00800000u, 0x7F7FFFFFu, 0x33800000u, 0x34000000u,
                                     0x3E9A209Bu, 0x7FFFFFFFu, 0x7F800000u, 0xFF800000u};
    const std::uint64_t dbl[8] = {0x0010000000000000ull, 0x7FEFFFFFFFFFFFFFull, 0x3CA0000000000000ull,
                                  0x3CB0000000000000ull, 0x3FD344133FD34413ull, 0x7FFFFFFFFFFFFFFFull,
                                  0x7FF0000000000000ull, 0xFFF0000000000000ull};
    for (int i = 1; i <= 8; ++i) {
        EXPECT_EQ(bits(qnum_amach(i)), single[i - 1]) << i;
        EXPECT_EQ(bits(qnum_dmach(i)), dbl[i - 1]) << i;
        EXPECT_EQ(bits(qnum_f_machine(i)), single[i - 1]) << i;
        EXPECT_EQ(bits(qnum_d_machine(i)), dbl[i - 1]) << i;
    }
    EXPECT_EQ(qnum_dmach(4), std::ldexp(1.0, -52));
    EXPECT_EQ(qnum_dmach(3), std::ldexp(1.0, -53));
    EXPECT_EQ(qnum_amach(4), std::ldexp(1.0f, -23));
    EXPECT_EQ(qnum_dmach(5), 0.30102998001990605);
    const int ints[13] = {8, 2, 15, 32767, 31, 2147483647, 2, 24, -125, 128, 53, -1021, 1024};
    for (int i = 0; i <= 12; ++i) EXPECT_EQ(qnum_i_machine(i), ints[i]) << i;
    EXPECT_EQ(qnum_n1rty(1), 0);
}

TEST(Machine, PlainConstantsOutOfRangeAreTerminal12009) {
    QuietErrors quiet;
    EXPECT_EQ(qnum_amach(0), 0.0f);
    EXPECT_EQ(qnum_20305(), 12009);  // reported through the "qnum_amach" level
    EXPECT_EQ(int_slot(1), 0);
    EXPECT_EQ(qnum_dmach(9), 0.0);
    EXPECT_EQ(int_slot(1), 9);
}

struct RangeCase {
    int which, index, lo, hi;
};

class FramedConstants : public ::testing::TestWithParam<RangeCase> {};

TEST_P(FramedConstants, OutOfRangeIsTerminal132InsideLMachine) {
    QuietErrors quiet;
    const RangeCase& r = GetParam();
    if (r.which == 0) qnum_f_machine(r.index);
    if (r.which == 1) qnum_d_machine(r.index);
    if (r.which == 2) qnum_i_machine(r.index);
    EXPECT_EQ(qnum_n1rty(1), 5);
    EXPECT_EQ(qnum_20305(), 132);
    EXPECT_EQ(int_slot(1), r.lo);
    EXPECT_EQ(int_slot(2), r.hi);
    EXPECT_EQ(int_slot(3), r.index);
    EXPECT_EQ(string_slot(1), "n");
}

INSTANTIATE_TEST_SUITE_P(Routines, FramedConstants,
                         ::testing::Values(RangeCase{0, 0, 1, 8}, RangeCase{1, 9, 1, 8}, RangeCase{2, 13, 0, 12},
                                           RangeCase{2, -1, 0, 12}));

TEST(Machine, NanTestsLookAtTheBits) {
    const std::uint32_t fb[] = {0x7FC00000u, 0x7F800001u, 0xFFC00000u, 0x7F800000u, 0xFF800000u, 0x3F800000u};
    const int fexpect[] = {1, 1, 1, 0, 0, 0};
    for (int i = 0; i < 6; ++i) {
        float f;
        std::memcpy(&f, &fb[i], 4);
        EXPECT_EQ(qnum_ifnan(f), fexpect[i]) << std::hex << fb[i];
    }
    const std::uint64_t db[] = {0x7FF8000000000000ull, 0x7FF0000000000001ull, 0x7FF0000100000000ull,
                                0x7FF0000000000000ull, 0x0000000000000001ull};
    const int dexpect[] = {1, 1, 1, 0, 0};
    for (int i = 0; i < 5; ++i) {
        double d;
        std::memcpy(&d, &db[i], 8);
        EXPECT_EQ(qnum_difnan(d), dexpect[i]) << std::hex << db[i];
    }
}

TEST(Units, DefaultsAndBadUnit) {
    QuietErrors quiet;
    std::FILE* f = nullptr;
    qnum_umach(1, &f);
    EXPECT_EQ(f, stdin);
    qnum_umach(2, &f);
    EXPECT_EQ(f, stdout);
    qnum_umach(3, &f);
    EXPECT_EQ(f, stderr);
    qnum_umach(4, &f);
    EXPECT_EQ(qnum_n1rcd(0), 12010);
    EXPECT_EQ(int_slot(1), 4);
    EXPECT_EQ(f, stderr);
    qnum_e1mes(0, 0, nullptr);  // clear the error left at the user's level
}

TEST(UnitsThread, RedirectedErrorOutputStaysInItsThread) {
    qnum_skip_signal_handler();
    std::FILE* mine = std::tmpfile();
    std::string other_thread_unit;
    qnum_umach(-3, &mine);
    std::thread t([&] {
        std::FILE* f = nullptr;
        qnum_umach(3, &f);
        other_thread_unit = f == stderr ? "stderr" : "other";
    });
    t.join();
    EXPECT_EQ(other_thread_unit, "stderr");
    qnum_error_options(QNUM_SET_PRINT, 3, 1, 0);
    qnum_e1psh("qnum_f_here");
    qnum_e1mes(3, 150, "Into my file.");
    qnum_e1pop("qnum_f_here");
    std::fflush(mine);
    std::rewind(mine);
    char buf[256] = {};
    std::fread(buf, 1, sizeof buf - 1, mine);
    EXPECT_NE(std::string(buf).find("Into my file."), std::string::npos);
    std::FILE* err = stderr;
    qnum_umach(-3, &err);
    std::fclose(mine);
}

TEST(Version, ReadsTheInstallationVariables) {
    setenv("QNL_VERSION", "7.0", 1);
    char* v = qnum_version(QNUM_LIBRARY_VERSION);
    EXPECT_STREQ(v, "QNUM C/Math/Library Version 7.0");
    qnum_free_allocated_memory(v);
    unsetenv("QNL_VERSION");
    v = qnum_version(QNUM_LIBRARY_VERSION);
    EXPECT_STREQ(v, "QNUM C/Math/Library Version ");
    qnum_free_allocated_memory(v);
    for (int code : {QNUM_OS_VERSION, QNUM_COMPILER_VERSION, QNUM_LICENSE_NUMBER}) {
        unsetenv("QNL_OS_VERSION");
        unsetenv("QNL_COMPILER_VERSION");
        unsetenv("QNL_LICENSE_NUMBER");
        v = qnum_version(code);
        ASSERT_NE(v, nullptr);
        EXPECT_STREQ(v, "");
        qnum_free_allocated_memory(v);
    }
    setenv("QNL_OS_VERSION", std::string(400, 'o').c_str(), 1);
    v = qnum_version(QNUM_OS_VERSION);
    EXPECT_EQ(std::strlen(v), 260u);  // at most 260 characters are read
    qnum_free_allocated_memory(v);
    unsetenv("QNL_OS_VERSION");
}

TEST(Version, UnknownCodeIsTerminal103AndNull) {
    QuietErrors quiet;
    EXPECT_EQ(qnum_version(0), nullptr);
    EXPECT_EQ(qnum_n1rty(1), 5);
    EXPECT_EQ(qnum_20305(), 103);
    EXPECT_EQ(int_slot(1), 0);
    EXPECT_EQ(int_slot(2), 1);
}

}  // namespace
