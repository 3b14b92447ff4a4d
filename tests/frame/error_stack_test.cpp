// Error stack: levels, severity and propagation, substitution, policy flags, stack limits.
#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "frame/context.hpp"
#include "qnum_test.hpp"

namespace {

using qnum::test::capture_errors;
using qnum::test::QuietErrors;
using qnum::test::run_in_child;

// Raises `type`/`code` with `text` inside a level named `name`.
void raise_in_level(const char* name, int type, int code, const char* text = "text") {
    qnum_e1psh(name);
    qnum_e1mes(type, code, text);
    qnum_e1pop(name);
}

struct PropagationCase {
    int inner_type, inner_code, outer_type, outer_code;
    int expect_type, expect_code;
};

class Propagation : public ::testing::TestWithParam<PropagationCase> {};

// The outer level keeps the more severe error; on equal severity the newer code wins.
TEST_P(Propagation, MoreSevereSurvivesThePop) {
    const PropagationCase& p = GetParam();
    QuietErrors quiet;
    qnum_e1psh("outer");
    if (p.outer_type) qnum_e1mes(p.outer_type, p.outer_code, "outer");
    raise_in_level("inner", p.inner_type, p.inner_code);
    EXPECT_EQ(qnum_n1rty(1), p.inner_type);
    EXPECT_EQ(qnum_n1rcd(1), p.inner_code);
    qnum_e1pop("outer");
    EXPECT_EQ(qnum_n1rty(1), p.expect_type);
    EXPECT_EQ(qnum_20305(), p.expect_code);
}

INSTANTIATE_TEST_SUITE_P(Rules, Propagation,
                         ::testing::Values(PropagationCase{3, 11, 0, 0, 3, 11},   // into a clean level
                                           PropagationCase{3, 11, 4, 22, 4, 22},  // less severe is dropped
                                           PropagationCase{4, 11, 3, 22, 4, 11},  // more severe replaces
                                           PropagationCase{3, 11, 3, 22, 3, 11},  // equal: newer wins
                                           PropagationCase{1, 11, 2, 22, 2, 22}));

TEST(ErrorStack, LaterRaiseAtOneLevelReplacesTheEarlier) {
    QuietErrors quiet;
    qnum_e1psh("one");
    qnum_e1mes(4, 40, "first");
    qnum_e1mes(3, 30, "second");
    EXPECT_EQ(qnum_n1rty(0), 3);
    EXPECT_EQ(qnum_n1rcd(0), 30);
    qnum_e1pop("one");
    EXPECT_EQ(qnum_n1rty(1), 3);
}

TEST(ErrorStack, PushClearsTheLevelStatusAndClearingRaiseResets) {
    QuietErrors quiet;
    raise_in_level("a", 3, 7);
    qnum_e1psh("b");
    EXPECT_EQ(qnum_n1rty(0), 0);
    EXPECT_EQ(qnum_n1rty(1), 0);
    qnum_e1mes(3, 5, "x");
    qnum_e1mes(0, 0, nullptr);  // type 0 code 0 clears the level
    EXPECT_EQ(qnum_n1rty(0), 0);
    qnum_e1pop("b");
    EXPECT_EQ(qnum_20305(), 0);
}

TEST(ErrorStack, TypeMinusOneRecodesOrReReports) {
    QuietErrors quiet;
    qnum_e1psh("r");
    qnum_e1mes(3, 5, "x");
    qnum_e1mes(-1, 77, nullptr);  // recode only, nothing printed
    EXPECT_EQ(qnum_n1rty(0), 3);
    EXPECT_EQ(qnum_n1rcd(0), 77);
    qnum_e1pop("r");
    EXPECT_EQ(qnum_20305(), 77);
}

TEST(ErrorStack, SlotSettersIgnoreOutOfRangeIndexes) {
    qnum::Context* c = qnum::context();
    qnum_e1sti(1, 5);
    qnum_e1sti(0, 99);
    qnum_e1sti(10, 99);
    EXPECT_EQ(c->int_slots[0], 5);
    qnum_e1stl(-2, "minus two");
    EXPECT_STREQ(c->string_slots[1], "minus two");
    qnum_e1str(9, 1.5f);
    EXPECT_EQ(c->real_slots[8], 1.5);
    qnum_e1stc(3, qnum_f_complex{1.0f, -2.0f});
    EXPECT_EQ(c->complex_slots[2][1], -2.0);
}

struct FormatCase {
    const char* text;
    const char* expect;
};

class Formatting : public ::testing::TestWithParam<FormatCase> {};

TEST_P(Formatting, TemplatesFillTheirSlots) {
    QuietErrors quiet;
    qnum_e1sti(1, 42);
    qnum_e1std(1, 2.5);
    qnum_e1stz(1, qnum_d_complex{1.0, -1.0});
    qnum_e1stl(1, "alpha");
    qnum_e1psh("fmt");
    qnum_e1mes(3, 1, GetParam().text);
    EXPECT_STREQ(qnum::context()->msg, GetParam().expect);
    qnum_e1pop("fmt");
}

INSTANTIATE_TEST_SUITE_P(
    Placeholders, Formatting,
    ::testing::Values(FormatCase{"n = %(i1).", "n = 42."}, FormatCase{"%(I1)", "42"},
                      FormatCase{"x = %(r1)", "x = 2.500000e+00"}, FormatCase{"%(d1%10.3f)|", "     2.500|"},
                      FormatCase{"%(z1)", "(1.000000e+00,-1.000000e+00)"}, FormatCase{"%(l1)!", "alpha!"},
                      FormatCase{"%(s1%-7s)|", "alpha  |"}, FormatCase{"a%/b", "a\nb"},
                      FormatCase{"%(q1) stays", "%(q1) stays"}, FormatCase{"%(i) stays", "%(i) stays"},
                      FormatCase{"100%", "100%"}, FormatCase{"%(i1%n)", "42"},
                      FormatCase{"%(i1", "%(i1"}, FormatCase{"%(i1%333333331d)", "42"},
                      FormatCase{"%(d1%.1000f)", "2.500000e+00"}, FormatCase{"%(i1%03d)", "042"}));

TEST(ErrorStack, MessageBufferGrowsForLongTexts) {
    QuietErrors quiet;
    std::string long_text(10000, 'x');
    qnum_e1stl(1, long_text.c_str());
    qnum_e1psh("long");
    qnum_e1mes(3, 1, "<%(l1)>");
    EXPECT_EQ(std::string(qnum::context()->msg), "<" + long_text + ">");
    qnum_e1pop("long");
}

TEST(ErrorStack, NinetyNineAndOneHundredNinetyNineLevelsNest) {
    static const char* names[199];
    for (int i = 0; i < 199; ++i) {
        names[i] = "level";
        qnum_e1psh(names[i]);
    }
    EXPECT_EQ(qnum::context()->top - qnum::context()->stack, 199);
    for (int i = 198; i >= 0; --i) qnum_e1pop(names[i]);
    EXPECT_EQ(qnum::context()->top, qnum::context()->stack);
}

TEST(ErrorStack, TwoHundredthPushOverflowsWithInternal60000) {
    std::string out;
    int status = run_in_child([] {
        for (int i = 0; i < 200; ++i) qnum_e1psh("deep");
    }, &out);
    EXPECT_EQ(status, 8);
    EXPECT_NE(out.find("INTERNAL Error from deep."), std::string::npos) << out;
    EXPECT_NE(out.find("199"), std::string::npos) << out;
}

TEST(ErrorStack, MismatchedPopIsInternal60001) {
    std::string out;
    int status = run_in_child([] {
        qnum_e1psh("opened");
        qnum_e1pop("closed");
    }, &out);
    EXPECT_EQ(status, 8);
    EXPECT_NE(out.find("closed"), std::string::npos) << out;
    EXPECT_NE(out.find("opened"), std::string::npos) << out;
}

TEST(ErrorStack, BadStatusLevelIsInternal122) {
    std::string out;
    EXPECT_EQ(run_in_child([] { qnum_n1rty(2); }, &out), 8);
    EXPECT_NE(out.find("level = 2"), std::string::npos) << out;
}

TEST(ErrorStack, BadRaiseTypeIsPrintedAsInternal160) {
    std::string out;
    EXPECT_EQ(run_in_child([] { qnum_e1mes(9, 1, "oops"); }, &out), 8);
    EXPECT_NE(out.find("INTERNAL Error from qnum_e1mes.  Error type must be -1,...,8, but type ="), std::string::npos)
        << out;
    EXPECT_NE(out.find("9.  Message = \"oops\""), std::string::npos) << out;
}

struct StopCase {
    int type;
    int status;
};

class StopPolicy : public ::testing::TestWithParam<StopCase> {};

// FATAL and TERMINAL end the process at the pop to the user level with the type as status;
// INTERNAL ends it at once.
TEST_P(StopPolicy, StoppingTypesExitWithTheirType) {
    int type = GetParam().type;
    EXPECT_EQ(run_in_child([type] {
                  qnum_e1psh("qnum_f_stop");
                  qnum_e1mes(type, 1, "stop");
                  qnum_e1pop("qnum_f_stop");
              }),
              GetParam().status);
}

INSTANTIATE_TEST_SUITE_P(Types, StopPolicy,
                         ::testing::Values(StopCase{3, 0}, StopCase{4, 4}, StopCase{5, 5}, StopCase{6, 0},
                                           StopCase{7, 0}, StopCase{8, 8}));

TEST(ErrorStack, ClearedStopFlagLetsFatalReturn) {
    EXPECT_EQ(run_in_child([] {
                  int print = -1, stop = 0;
                  qnum_e1pos(0, &print, &stop);  // type 0: stop flags of 1..7 off
                  qnum_e1psh("qnum_f_stop");
                  qnum_e1mes(4, 1, "stop");
                  qnum_e1pop("qnum_f_stop");
                  std::exit(qnum_n1rty(1) == 4 ? 42 : 1);
              }),
              42);
}

TEST(ErrorStack, PolicyReadAndSetRules) {
    QuietErrors restore_defaults_afterwards;
    int print = 0, stop = 0;
    int defaults_print = 1, defaults_stop = 1;
    qnum_e1pos(4, &defaults_print, &defaults_stop);
    qnum_e1pos(-4, &print, &stop);
    EXPECT_EQ(print, 1);
    EXPECT_EQ(stop, 1);
    // A positive type sets only from positive values: zero cannot clear a flag there.
    int zero = 0;
    qnum_e1pos(4, &zero, &zero);
    qnum_e1pos(-4, &print, &stop);
    EXPECT_EQ(stop, 1);
    int two = 2;
    qnum_e1pos(2, &two, &two);
    qnum_e1pos(-2, &print, &stop);
    EXPECT_EQ(print, 2);
    EXPECT_EQ(stop, 2);
    // Type 0 sets types 1..7 from values of 0 or more, but never INTERNAL.
    int off = 0, keep = -1;
    qnum_e1pos(0, &off, &keep);
    qnum_e1pos(-7, &print, &stop);
    EXPECT_EQ(print, 0);
    qnum_e1pos(-8, &print, &stop);
    EXPECT_EQ(print, 1);
}

TEST(ErrorStack, PolicyTypeOutOfRangeIsTerminal132) {
    QuietErrors quiet;
    int p = 0, s = 0;
    qnum_e1pos(9, &p, &s);
    EXPECT_EQ(qnum_n1rty(1), 5);
    EXPECT_EQ(qnum_20305(), 132);
    EXPECT_EQ(qnum::test::int_slot(1), -8);
    EXPECT_EQ(qnum::test::int_slot(2), 8);
    EXPECT_EQ(qnum::test::int_slot(3), 9);
    EXPECT_EQ(qnum::test::string_slot(1), "type");
}

TEST(ErrorStack, UserLevelMarkReportsAtThatLevel) {
    QuietErrors quiet;
    qnum_e1pos(3, nullptr, nullptr);
    int on = 1;
    qnum_e1pos(3, &on, nullptr);  // print WARNINGs
    std::string out = capture_errors([] {
        qnum_e1psh("qnum_f_driver");
        qnum_e1usr("ON");
        raise_in_level("l_step", 3, 1, "reported on return to the driver");
        qnum_e1usr("OFF");
        qnum_e1pop("qnum_f_driver");
    });
    // Reported once, on return to the marked level, not again at the outermost call.
    std::string report = "from l_step.  reported on return to the driver";
    ASSERT_NE(out.find(report), std::string::npos) << out;
    EXPECT_EQ(out.find(report, out.find(report) + 1), std::string::npos) << out;
}

// Every raised type, NOTE included, reaches the notification, whether printed or not.
TEST(ErrorStack, NotificationCallbackSeesEveryReportedError) {
    static std::string seen;
    QuietErrors quiet;
    qnum_set_at_checksum([](int type, int code, const char* text) {
        seen += std::to_string(type) + "/" + std::to_string(code) + "/" + text + ";";
    });
    for (int type : {1, 2, 3}) raise_in_level("qnum_f_cb", type, 1230 + type, "called back");
    qnum_set_at_checksum(nullptr);
    EXPECT_EQ(seen, "1/1231/called back;2/1232/called back;3/1233/called back;");
}

// A thread starts with the default policy: WARNING and worse printed, FATAL, TERMINAL and
// INTERNAL stopping, no tracebacks.
TEST(ErrorStackThread, FreshThreadHasTheDefaultPolicy) {
    qnum_skip_signal_handler();
    std::string flags;
    std::thread([&] {
        for (int type = 1; type <= 8; ++type) {
            int print = -1, stop = -1, trace = 0;
            qnum_e1pos(-type, &print, &stop);
            if (type < 8) qnum_error_options(QNUM_GET_TRACEBACK, type, &trace, 0);
            flags += std::to_string(print) + std::to_string(stop) + std::to_string(trace) + " ";
        }
    }).join();
    EXPECT_EQ(flags, "000 000 100 110 110 100 100 110 ");
}

}  // namespace
