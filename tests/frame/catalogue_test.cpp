// Message catalogue: search, byte order, lookups, caching and every failure text.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

#include "frame/catalogue.hpp"
#include "qnum_test.hpp"

namespace {

std::string built_catalogue() {
    std::ifstream in(std::string(QNUM_BUILD_DIR) + "/qnumerr.bin", std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

// A fresh folder holding `bytes` as qnumerr.bin.
std::string folder_with(const std::string& bytes) {
    char dir[] = "/tmp/qnum_catalogue_XXXXXX";
    if (!mkdtemp(dir)) return "/nonexistent";
    std::ofstream(std::string(dir) + "/qnumerr.bin", std::ios::binary) << bytes;
    return dir;
}

// The catalogue with its header and tables written in the other byte order.
std::string swapped(std::string bytes) {
    unsigned count = static_cast<unsigned char>(bytes[4]) | static_cast<unsigned char>(bytes[5]) << 8;
    std::size_t words = 7 + 2 * count + 1;
    for (std::size_t w = 0; w < words; ++w) std::swap(bytes[2 * w], bytes[2 * w + 1]);
    return bytes;
}

// Runs `body` in a freshly started copy of this test program (the catalogue loads once per
// process) whose search finds only `folder`; passes when the child ends with status 0 (every
// expectation inside held) and wrote exactly `expected_err` to standard error.
#define EXPECT_IN_FRESH_PROCESS(folder, body, expected_err)                                   \
    do {                                                                                      \
        GTEST_FLAG_SET(death_test_style, "threadsafe");                                       \
        EXPECT_EXIT(                                                                          \
            {                                                                                 \
                setenv("QNUMERRPATH", (folder).c_str(), 1);                                   \
                body;                                                                         \
                std::fflush(nullptr);                                                         \
                std::_Exit(::testing::Test::HasFailure() ? 1 : 0);                            \
            },                                                                                \
            ::testing::ExitedWithCode(0), expected_err);                                      \
    } while (0)

void warn(int code) {
    qnum_e1psh("qnum_f_cat");
    qnum_ermes(3, code);
    qnum_e1pop("qnum_f_cat");
}

// Found through the search path; an absent code gives the generic text; codes are looked up
// modulo 100000; a record is read once however often it is asked for.
TEST(Catalogue, LookupsAndCaching) {
    namespace cat = qnum::catalogue;
    EXPECT_STREQ(cat::code_name(150), "QNUM_MISSING_ARRAY");
    EXPECT_EQ(cat::load_state(), 2);
    EXPECT_STREQ(cat::message_template(150), "The required array \"%(l1)\" is a null pointer.");
    EXPECT_FALSE(cat::byte_swapped());
    EXPECT_STREQ(cat::message_template(4242), "Error code 4242.");
    EXPECT_STREQ(cat::code_name(4242), "4242");
    EXPECT_STREQ(cat::code_name(100150), "QNUM_MISSING_ARRAY");
    cat::message_template(103);
    const long before = cat::records_read();
    cat::message_template(104);
    cat::message_template(104);
    cat::code_name(104);
    EXPECT_EQ(cat::records_read() - before, 1);
}

TEST(Catalogue, OtherByteOrderIsReadCorrectly) {
    std::string folder = folder_with(swapped(built_catalogue()));
    EXPECT_IN_FRESH_PROCESS(folder, {
        EXPECT_STREQ(qnum::catalogue::code_name(511), "QNUM_SIGNAL_SIGSEGV");
        EXPECT_TRUE(qnum::catalogue::byte_swapped());
    }, ::testing::Eq(""));
}

TEST(Catalogue, MissingFileAnnouncesOnceAndFallsBack) {
    EXPECT_IN_FRESH_PROCESS(std::string("/nonexistent"), {
        warn(1010);
        warn(1010);
    }, ::testing::Eq("Error in reading qnumerr.bin\nFile not found.\n"
                     "\n*** WARNING  Error 1010 from qnum_f_cat.  Error code 1010.\n\n"
                     "\n*** WARNING  Error 1010 from qnum_f_cat.  Error code 1010.\n\n"));
}

TEST(Catalogue, EnvironmentElementsExpandAndUnsetOnesAreSkipped) {
    std::string folder = folder_with(built_catalogue());
    setenv("QNUM_TEST_CATALOGUE_DIR", folder.c_str(), 1);
    EXPECT_IN_FRESH_PROCESS(std::string("$QNUM_TEST_UNSET_VARIABLE;/nonexistent;$QNUM_TEST_CATALOGUE_DIR"), {
        EXPECT_EQ(qnum::catalogue::load_state(), 0);
        EXPECT_STREQ(qnum::catalogue::code_name(150), "QNUM_MISSING_ARRAY");
    }, ::testing::Eq(""));
}

TEST(Catalogue, PerThreadPathOptionWinsOverTheEnvironment) {
    std::string folder = folder_with(built_catalogue());
    EXPECT_IN_FRESH_PROCESS(std::string("/nonexistent"), {
        qnum_error_options(QNUM_SET_ERROR_PATH, folder.c_str(), 0);
        EXPECT_STREQ(qnum::catalogue::code_name(150), "QNUM_MISSING_ARRAY");
    }, ::testing::Eq(""));
}

// A damaged file gives its reason once and generic texts; records that cannot be read give
// the read-error text.
TEST(Catalogue, BrokenFileGivesItsReasonAndGenericTexts) {
    const std::string bad_format = "Error in reading qnumerr.bin\nFile is not in qnumerr.bin format.\n"
                                   "\n*** WARNING  Error 150 from qnum_f_cat.  Error code 150.\n\n";
    const std::pair<std::function<std::string(std::string)>, std::string> cases[] = {
        {[](std::string b) { return b.replace(0, 1, "x"); }, bad_format},
        {[](std::string b) { return b.substr(0, 9); }, bad_format},
        {[](std::string b) { return b.substr(0, 40); }, bad_format},
        {[](std::string b) { return b.substr(0, 14 + 4 * (static_cast<unsigned char>(b[4]) | static_cast<unsigned char>(b[5]) << 8) + 2); },
         "\n*** WARNING  Error 150 from qnum_f_cat.  Error in reading qnumerr.bin for\n"
         "***          error message 150.\n***          Cannot read the message record.\n***          \n\n"}};
    for (const auto& [damage, expect] : cases) EXPECT_IN_FRESH_PROCESS(folder_with(damage(built_catalogue())), warn(150), ::testing::Eq(expect));
}

}  // namespace
