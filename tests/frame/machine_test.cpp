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
    const int ints[13] = {8, 2, 15, 32767, 31, 2147483647, 2, 24, -125, 128, 53, -1021, 1024};
    for (int i = 0; i <= 12; ++i) EXPECT_EQ(qnum_i_machine(i), ints[i]) << i;
    EXPECT_EQ(qnum_n1rty(1), 0);
}

// The plain constants report 12009 through their own level, the framed ones 132 with the
// range and the index.
TEST(Machine, ConstantsOutOfRange) {
    QuietErrors quiet;
    EXPECT_EQ(qnum_amach(0), 0.0f);
    EXPECT_EQ(std::make_pair(qnum_20305(), int_slot(1)), std::make_pair(12009, 0));
    EXPECT_EQ(qnum_dmach(9), 0.0);
    EXPECT_EQ(std::make_pair(qnum_20305(), int_slot(1)), std::make_pair(12009, 9));
    const struct {
        int which, index, lo, hi;
    } cases[] = {{0, 0, 1, 8}, {1, 9, 1, 8}, {2, 13, 0, 12}, {2, -1, 0, 12}};
    for (const auto& r : cases) {
        if (r.which == 0) qnum_f_machine(r.index);
        if (r.which == 1) qnum_d_machine(r.index);
        if (r.which == 2) qnum_i_machine(r.index);
        EXPECT_EQ(std::make_tuple(qnum_n1rty(1), qnum_20305(), int_slot(1), int_slot(2), int_slot(3), string_slot(1)),
                  std::make_tuple(5, 132, r.lo, r.hi, r.index, std::string("n")));
    }
}

TEST(Machine, NanTestsLookAtTheBits) {
    for (auto [b, nan] : {std::pair{0x7FC00000u, 1}, {0x7F800001u, 1}, {0xFFC00000u, 1}, {0x7F800000u, 0}, {0xFF800000u, 0}, {0x3F800000u, 0}}) {
        float f;
        std::memcpy(&f, &b, 4);
        EXPECT_EQ(qnum_ifnan(f), nan) << std::hex << b;
    }
    for (auto [b, nan] : {std::pair{0x7FF8000000000000ull, 1}, {0x7FF0000000000001ull, 1}, {0x7FF0000100000000ull, 1},
                          {0x7FF0000000000000ull, 0}, {0x0000000000000001ull, 0}}) {
        double d;
        std::memcpy(&d, &b, 8);
        EXPECT_EQ(qnum_difnan(d), nan) << std::hex << b;
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

// The library version reads QNL_VERSION, the others their variables (empty when unset), at
// most 260 characters; an unknown code is TERMINAL 103 and null.
TEST(Version, ReadsTheInstallationVariables) {
    auto version = [](int code) {
        char* v = qnum_version(code);
        std::string s = v ? v : "(null)";
        qnum_free_allocated_memory(v);
        return s;
    };
    for (const char* name : {"QNL_OS_VERSION", "QNL_COMPILER_VERSION", "QNL_LICENSE_NUMBER", "QNL_VERSION"}) unsetenv(name);
    EXPECT_EQ(version(QNUM_LIBRARY_VERSION), "QNUM C/Math/Library Version ");
    for (int code : {QNUM_OS_VERSION, QNUM_COMPILER_VERSION, QNUM_LICENSE_NUMBER}) EXPECT_EQ(version(code), "");
    setenv("QNL_VERSION", "7.0", 1);
    EXPECT_EQ(version(QNUM_LIBRARY_VERSION), "QNUM C/Math/Library Version 7.0");
    setenv("QNL_OS_VERSION", std::string(400, 'o').c_str(), 1);
    EXPECT_EQ(version(QNUM_OS_VERSION), std::string(260, 'o'));
    setenv("QNL_COMPILER_VERSION", "cc", 1);
    setenv("QNL_LICENSE_NUMBER", "42", 1);
    EXPECT_EQ(version(QNUM_COMPILER_VERSION) + version(QNUM_LICENSE_NUMBER), "cc42");
    for (const char* name : {"QNL_OS_VERSION", "QNL_COMPILER_VERSION", "QNL_LICENSE_NUMBER", "QNL_VERSION"}) unsetenv(name);
    QuietErrors quiet;
    EXPECT_EQ(version(0), "(null)");
    EXPECT_EQ(std::make_tuple(qnum_n1rty(1), qnum_20305(), int_slot(1), int_slot(2)), std::make_tuple(5, 103, 0, 1));
}

}  // namespace
