// Error stack: levels, severity and propagation, substitution, policy flags, stack limits.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "frame/context.hpp"
#include "qnum_test.hpp"

namespace qnum::test {
namespace {

// The outer level keeps the more severe error; on equal severity the newer code wins. A
// later raise at one level replaces the earlier; type 0 code 0 clears; type -1 recodes.
TEST(ErrorStack, PropagationAndRaiseRules) {
    QuietErrors quiet;
    const struct {
        int inner_type, inner_code, outer_type, outer_code, type, code;
    } rules[] = {{3, 11, 0, 0, 3, 11}, {3, 11, 4, 22, 4, 22}, {4, 11, 3, 22, 4, 11}, {3, 11, 3, 22, 3, 11}, {1, 11, 2, 22, 2, 22}};
    for (const auto& p : rules) {
        qnum_e1psh("outer");
        if (p.outer_type) qnum_e1mes(p.outer_type, p.outer_code, "outer");
        raise_in("inner", p.inner_type, p.inner_code, "text");
        EXPECT_EQ(std::make_pair(qnum_n1rty(1), qnum_n1rcd(1)), std::make_pair(p.inner_type, p.inner_code));
        qnum_e1pop("outer");
        EXPECT_EQ(std::make_pair(qnum_n1rty(1), qnum_20305()), std::make_pair(p.type, p.code));
    }
    qnum_e1psh("one");
    qnum_e1mes(4, 40, "first");
    qnum_e1mes(3, 30, "second");
    EXPECT_EQ(std::make_pair(qnum_n1rty(0), qnum_n1rcd(0)), std::make_pair(3, 30));
    qnum_e1mes(-1, 77, nullptr);  // recode only, nothing printed
    EXPECT_EQ(std::make_pair(qnum_n1rty(0), qnum_n1rcd(0)), std::make_pair(3, 77));
    qnum_e1pop("one");
    EXPECT_EQ(std::make_pair(qnum_n1rty(1), qnum_20305()), std::make_pair(3, 77));
    qnum_e1psh("b");  // a push clears the level status
    EXPECT_EQ(qnum_n1rty(0) + qnum_n1rty(1), 0);
    qnum_e1mes(3, 5, "x");
    qnum_e1mes(0, 0, nullptr);
    EXPECT_EQ(qnum_n1rty(0), 0);
    qnum_e1pop("b");
    EXPECT_EQ(qnum_20305(), 0);
}

TEST(ErrorStack, SlotSettersIgnoreOutOfRangeIndexes) {
    Context* c = context();
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

TEST(ErrorStack, TemplatesFillTheirSlotsAndTheBufferGrows) {
    QuietErrors quiet;
    const std::string long_text(10000, 'x');
    const std::pair<std::string, std::string> cases[] = {
        {"n = %(i1).", "n = 42."}, {"%(I1)", "42"}, {"x = %(r1)", "x = 2.500000e+00"}, {"%(d1%10.3f)|", "     2.500|"},
        {"%(z1)", "(1.000000e+00,-1.000000e+00)"}, {"%(l1)!", "alpha!"}, {"%(s1%-7s)|", "alpha  |"}, {"a%/b", "a\nb"},
        {"%(q1) stays", "%(q1) stays"}, {"%(i) stays", "%(i) stays"}, {"100%", "100%"}, {"%(i1%n)", "42"},
        {"%(i1", "%(i1"}, {"<%(l2)>", "<" + long_text + ">"},
        // widths of more than three digits fall back to the default format
        {"%(i1%333333331d)", "42"}, {"%(d1%.1000f)", "2.500000e+00"}, {"%(i1%03d)", "042"},
        // a format of 63 characters is used, a longer one falls back
        {"%(i1%d" + std::string(61, 'x') + ")", "42" + std::string(61, 'x')}, {"%(i1%d" + std::string(62, 'x') + ")", "42"}};
    qnum_e1sti(1, 42);
    qnum_e1std(1, 2.5);
    qnum_e1stz(1, qnum_d_complex{1.0, -1.0});
    qnum_e1stl(1, "alpha");
    qnum_e1stl(2, long_text.c_str());
    for (const auto& [text, expect] : cases) {
        qnum_e1psh("fmt");
        qnum_e1mes(3, 1, text.c_str());
        EXPECT_EQ(context()->msg, expect);
        qnum_e1pop("fmt");
    }
}

// 199 levels nest; the 200th push is INTERNAL 60000, a mismatched pop 60001, a status
// level other than 0 or 1 is 122, a raise type outside -1..8 is printed as 160.
TEST(ErrorStack, LimitsAndInternalErrors) {
    for (int i = 0; i < 199; ++i) qnum_e1psh("level");
    EXPECT_EQ(context()->top - context()->stack, 199);
    for (int i = 0; i < 199; ++i) qnum_e1pop("level");
    EXPECT_EQ(context()->top, context()->stack);
    const struct {
        std::function<void()> call;
        std::vector<const char*> parts;
    } cases[] = {
        {[] { for (int i = 0; i < 200; ++i) qnum_e1psh("deep"); }, {"INTERNAL Error from deep.", "199"}},
        {[] { qnum_e1psh("opened"), qnum_e1pop("closed"); }, {"closed", "opened"}},
        {[] { qnum_n1rty(2); }, {"level = 2"}},
        {[] { qnum_e1mes(9, 1, "oops"); },
         {"INTERNAL Error from qnum_e1mes.  Error type must be -1,...,8, but type =", "9.  Message = \"oops\""}}};
    for (const auto& c : cases) {
        std::string out;
        EXPECT_EQ(run_in_child(c.call, &out), 8);
        for (const char* part : c.parts) EXPECT_NE(out.find(part), std::string::npos) << part << "\n" << out;
    }
}

// FATAL and TERMINAL end the process at the pop to the user level with the type as status;
// INTERNAL ends it at once; a cleared stop flag lets FATAL return.
TEST(ErrorStack, StoppingTypesExitWithTheirType) {
    for (auto [type, status] : {std::pair{3, 0}, {4, 4}, {5, 5}, {6, 0}, {7, 0}, {8, 8}})
        EXPECT_EQ(run_in_child([type = type] { raise_in("qnum_f_stop", type, 1, "stop"); }), status) << type;
    EXPECT_EQ(run_in_child([] {
        int print = -1, stop = 0;
        qnum_e1pos(0, &print, &stop);  // type 0: stop flags of 1..7 off
        raise_in("qnum_f_stop", 4, 1, "stop");
        std::exit(qnum_n1rty(1) == 4 ? 42 : 1);
    }), 42);
}

TEST(ErrorStack, PolicyReadAndSetRules) {
    QuietErrors restore_defaults_afterwards;
    int print = 0, stop = 0, one = 1, zero = 0, two = 2, keep = -1;
    qnum_e1pos(4, &one, &one);
    qnum_e1pos(-4, &print, &stop);
    EXPECT_EQ(std::make_pair(print, stop), std::make_pair(1, 1));
    qnum_e1pos(4, &zero, &zero);  // a positive type sets only from positive values
    qnum_e1pos(-4, &print, &stop);
    EXPECT_EQ(stop, 1);
    qnum_e1pos(2, &two, &two);
    qnum_e1pos(-2, &print, &stop);
    EXPECT_EQ(std::make_pair(print, stop), std::make_pair(2, 2));
    qnum_e1pos(0, &zero, &keep);  // type 0 sets types 1..7 from values of 0 or more, never INTERNAL
    qnum_e1pos(-7, &print, &stop);
    EXPECT_EQ(print, 0);
    qnum_e1pos(-8, &print, &stop);
    EXPECT_EQ(print, 1);
    qnum_e1pos(9, &print, &stop);
    EXPECT_EQ(std::make_pair(qnum_n1rty(1), qnum_20305()), std::make_pair(5, 132));
    EXPECT_EQ(std::make_tuple(int_slot(1), int_slot(2), int_slot(3), string_slot(1)), std::make_tuple(-8, 8, 9, std::string("type")));
}

TEST(ErrorStack, UserLevelMarkReportsAtThatLevel) {
    QuietErrors quiet;
    int on = 1;
    qnum_e1pos(3, &on, nullptr);  // print WARNINGs
    const std::string out = capture_errors([] {
        qnum_e1psh("qnum_f_driver");
        qnum_e1usr("ON");
        raise_in("l_step", 3, 1, "reported on return to the driver");
        qnum_e1mes(3, 2, "pending at the driver");
        qnum_e1psh("l_clean");  // returns without an error: nothing to report
        qnum_e1pop("l_clean");
        qnum_e1usr("OFF");
        qnum_e1pop("qnum_f_driver");
    });
    // Reported once, on return to the marked level, not again at the outermost call; a level
    // that ends cleanly reports nothing.
    const std::string report = "\n*** WARNING  Error 1 from l_step.  reported on return to the driver\n\n";
    EXPECT_EQ(out.substr(0, report.size()), report);
    EXPECT_EQ(out.find("reported", report.size()), std::string::npos) << out;
    EXPECT_EQ(out.find("l_clean"), std::string::npos) << out;
    EXPECT_NE(out.find("Error 2 from qnum_f_driver.  pending at the driver"), std::string::npos) << out;
}

// Every raised type reaches the notification, whether printed or not: the ones reported at
// the pop once, the immediate ones at the raise and again, with the text already printed
// and gone, at the pop.
TEST(ErrorStack, NotificationCallbackSeesEveryReportedError) {
    static std::string seen;
    QuietErrors quiet;
    qnum_set_at_checksum([](int type, int code, const char* text) {
        seen += std::to_string(type) + "/" + std::to_string(code) + "/" + text + ";";
    });
    for (int type : {1, 2, 3, 4, 6, 7}) raise_in("qnum_f_cb", type, 1230 + type, "called back");
    qnum_set_at_checksum(nullptr);
    EXPECT_EQ(seen, "1/1231/called back;2/1232/called back;3/1233/called back;4/1234/called back;"
                    "6/1236/called back;6/1236/;7/1237/called back;7/1237/;");
}

// A thread starts with the default policy (WARNING and worse printed, FATAL, TERMINAL and
// INTERNAL stopping, no tracebacks) and no error.
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
        qnum_e1mes(-1, -1, nullptr);  // nothing pending at the base level: nothing to re-report
        flags += std::to_string(qnum_n1rty(0));
    }).join();
    EXPECT_EQ(flags, "000 000 100 110 110 100 100 110 0");
}

}  // namespace
}  // namespace qnum::test
