// Error options and the optional-argument reader: every code, positions, null pointers.
#include <gtest/gtest.h>

#include <cstdarg>
#include <tuple>

#include "frame/frame.hpp"
#include "qnum_test.hpp"

namespace {

using qnum::test::int_slot;
using qnum::test::QuietErrors;
using qnum::test::string_slot;

// Flags set and read back (the low byte is stored); types 1..7 are accepted, but the
// message of 132 states 1..5 (the slots say so, on purpose).
TEST(ErrorOptions, FlagsRoundTripAndBadTypesAreTerminal132) {
    QuietErrors quiet;
    const int cases[][4] = {{QNUM_SET_PRINT, QNUM_GET_PRINT, 1, 1}, {QNUM_SET_STOP, QNUM_GET_STOP, 7, 1},
                            {QNUM_SET_TRACEBACK, QNUM_GET_TRACEBACK, 6, 1}, {QNUM_SET_PRINT, QNUM_GET_PRINT, 2, 0x102}};
    for (auto [set, get, type, value] : cases) {
        int seen = -1;
        qnum_error_options(set, type, value, get, type, &seen, 0);
        EXPECT_EQ(std::make_pair(qnum_n1rty(1), seen), std::make_pair(0, value & 0xFF));
        qnum_error_options(QNUM_SET_TRACEBACK, type, 0, 0);
    }
    for (int type : {0, 8, -1, 100}) {
        qnum_error_options(QNUM_SET_PRINT, type, 1, 0);
        EXPECT_EQ(std::make_tuple(qnum_n1rty(1), qnum_20305(), int_slot(1), int_slot(2), int_slot(3), string_slot(1)),
                  std::make_tuple(5, 132, 1, 5, type, std::string("type")));
    }
}

TEST(ErrorOptions, UnknownCodeNamesItsPositionAndEndsParsing) {
    QuietErrors quiet;
    int seen = -1;
    // Position 1 and 2: SET_PRINT's code and type, 3 its setting, 4 the unknown code.
    qnum_error_options(QNUM_SET_PRINT, 3, 1, 77777, QNUM_GET_PRINT, 3, &seen, 0);
    EXPECT_EQ(qnum_20305(), 103);
    EXPECT_EQ(int_slot(1), 77777);
    EXPECT_EQ(int_slot(2), 4);
    EXPECT_EQ(seen, -1);  // later entries are not read
    qnum_error_options(12345, 0);
    EXPECT_EQ(int_slot(2), 1);
}

// The file is unit 3; printer kinds (an unknown one is the stream printer) and the trapping
// switch read back; path and file name are copied; a null output pointer is TERMINAL 104.
TEST(ErrorOptions, SettingsReadBackAndNullOutputIsTerminal104) {
    std::FILE *mine = std::tmpfile(), *got = nullptr, *unit3 = nullptr;
    qnum_error_options(QNUM_SET_ERROR_FILE, mine, QNUM_GET_ERROR_FILE, &got, 0);
    qnum_umach(3, &unit3);
    EXPECT_TRUE(got == mine && unit3 == mine);
    qnum_error_options(QNUM_SET_ERROR_FILE, stderr, 0);
    std::fclose(mine);
    for (auto [set, want] : {std::pair{12345, QNUM_PRINTER_STREAM}, {QNUM_PRINTER_MESSAGE_BOX, QNUM_PRINTER_MESSAGE_BOX}}) {
        int kind = 0;
        qnum_error_options(QNUM_SET_ERROR_PRINTER, set, QNUM_GET_ERROR_PRINTER, &kind, 0);
        EXPECT_EQ(kind, want);
    }
    qnum_error_options(QNUM_SET_ERROR_PRINTER, QNUM_PRINTER_STREAM, 0);
    for (int on : {0, 1}) {
        qnum_error_options(QNUM_SIGNAL_TRAPPING, on, 0);
        EXPECT_EQ(qnum::signal_trapping.load(), on);
    }
    char path[] = "/nowhere";
    qnum_error_options(QNUM_SET_ERROR_PATH, path, QNUM_SET_ERROR_FILE_NAME, "other.bin", 0);
    path[1] = 'X';
    EXPECT_STREQ(qnum::context()->catalogue.search_path, "/nowhere");
    EXPECT_STREQ(qnum::context()->catalogue.file_name, "other.bin");
    qnum_error_options(QNUM_SET_ERROR_PATH, nullptr, 0);
    QuietErrors quiet;
    qnum_error_options(QNUM_GET_ERROR_PRINTER, nullptr, 0);
    EXPECT_EQ(std::make_pair(qnum_20305(), string_slot(2)), std::make_pair(104, std::string("QNUM_GET_ERROR_PRINTER")));
}

// A worker in the style of the library's routines, reading (n, ...) options.
double* option_worker(int n, qnum::frame::Options opt, int* seen_int, double* seen_real) {
    double* user = nullptr;
    while (int code = opt.next()) {
        switch (code) {
        case 20001: *seen_int = opt.get<int>(); break;
        case 20002: *seen_real = opt.get<float>(); break;
        case QNUM_RETURN_USER: user = opt.ptr<double>("x", "QNUM_RETURN_USER"); break;
        default: opt.unknown(code);
        }
    }
    qnum::check::positive(n, "n");
    if (qnum::frame::pending()) return nullptr;
    return user;
}

double* call_worker(int n, int* seen_int, double* seen_real, ...) {
    va_list ap;
    va_start(ap, seen_real);
    double* r = qnum::frame::call<double*>("qnum_d_options", [&] {
        return option_worker(n, qnum::frame::Options(ap, 4), seen_int, seen_real);
    });
    va_end(ap);
    return r;
}

// Ints, floats and pointers are read in turn; an unknown code names its position (the
// required arguments and every value count), a null RETURN_USER names x, and the common
// range check reports 132.
TEST(OptionReader, ReadsValuesAndReportsBadOnes) {
    QuietErrors quiet;
    int i = 0;
    double r = 0, x[1];
    EXPECT_EQ(call_worker(3, &i, &r, 20001, 9, 20002, 2.5f, QNUM_RETURN_USER, x, 0), x);
    EXPECT_EQ(std::make_tuple(i, r, qnum_n1rty(1)), std::make_tuple(9, 2.5, 0));
    call_worker(3, &i, &r, 20001, 9, 20002, 1.0, 31337, 0);
    EXPECT_EQ(std::make_tuple(qnum_20305(), int_slot(1), int_slot(2)), std::make_tuple(103, 31337, 8));
    EXPECT_EQ(call_worker(3, &i, &r, QNUM_RETURN_USER, static_cast<double*>(nullptr), 0), nullptr);
    EXPECT_EQ(std::make_tuple(qnum_20305(), string_slot(1), string_slot(2)), std::make_tuple(104, std::string("x"), std::string("QNUM_RETURN_USER")));
    call_worker(0, &i, &r, 0);
    EXPECT_EQ(std::make_tuple(qnum_20305(), int_slot(1), int_slot(3), string_slot(1)), std::make_tuple(132, 1, 0, std::string("n")));
}

TEST(Storage, BuffersCheckSizesAndReport201) {
    QuietErrors quiet;
    EXPECT_EQ(qnum::frame::checked_bytes(-1, 8), 0u);
    EXPECT_EQ(qnum::frame::checked_bytes(1LL << 62, 8), 0u);
    EXPECT_EQ(qnum::frame::checked_bytes(10, 8), 80u);
    qnum_e1psh("qnum_f_big");
    {
        qnum::frame::Buffer<double> huge(1LL << 61, "n");
        EXPECT_FALSE(huge);
        qnum::frame::Buffer<double> fine(16, "m");
        EXPECT_TRUE(fine);
    }
    EXPECT_EQ(qnum_n1rcd(0), 201);
    EXPECT_EQ(string_slot(1), "n");
    EXPECT_EQ(int_slot(1), 2147483647);
    qnum_e1pop("qnum_f_big");
}

TEST(Storage, OutBorrowsOrOwns) {
    QuietErrors quiet;
    double mine[4];
    qnum::frame::Out<double> user;
    user.borrow(mine);
    EXPECT_TRUE(user.ensure(4, "n"));
    EXPECT_EQ(user.release(), mine);
    qnum::frame::Out<double> owned;
    ASSERT_TRUE(owned.ensure(4, "n"));
    double* p = owned.release();
    EXPECT_NE(p, nullptr);
    qnum_free_allocated_memory(p);
}

}  // namespace
