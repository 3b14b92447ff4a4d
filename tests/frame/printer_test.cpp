// Printed reports, byte for byte: headers per type class, wrapping, tracebacks, printers.
#include <gtest/gtest.h>

#include <string>
#include <unistd.h>

#include "qnum_test.hpp"

namespace {

using qnum::test::capture_errors;
using qnum::test::run_in_child;

// Print every type, stop none (INTERNAL aside); restores the defaults afterwards.
class Printing : public ::testing::Test {
protected:
    void SetUp() override {
        for (int t = 1; t <= 7; ++t) qnum_error_options(QNUM_SET_PRINT, t, 1, QNUM_SET_STOP, t, 0, 0);
    }
    void TearDown() override {
        qnum::test::QuietErrors restore;  // its destructor puts the default policy back
        qnum_error_options(QNUM_SET_TRACEBACK, 4, 0, QNUM_SET_TRACEBACK, 5, 0, QNUM_FULL_TRACEBACK, 0,
                           QNUM_ERROR_PRINT_PROC, nullptr, 0);
    }
};

const std::string traceback_head =
    "Here is a traceback of the calls in reverse order.\n"
    "  Error Type        Error Code              Routine\n"
    "  ----------        ----------              -------\n";

void raise_nested(const char* outer, const char* inner, int type, int code, const char* text) {
    qnum_e1psh(outer);
    qnum_e1psh(inner);
    qnum_e1mes(type, code, text);
    qnum_e1pop(inner);
    qnum_e1pop(outer);
}

TEST_F(Printing, WarningPrintsAtThePopWithTheCodeName) {
    std::string out = capture_errors([] {
        qnum_e1psh("qnum_f_warn");
        qnum_e1sti(1, 7);
        qnum_e1mes(3, 150, "Seven is %(i1).");
        qnum_e1pop("qnum_f_warn");
    });
    EXPECT_EQ(out, "\n*** WARNING  Error QNUM_MISSING_ARRAY from qnum_f_warn.  Seven is 7.\n\n");
}

TEST_F(Printing, TerminalPrintsAtOnceUnderTheCalledRoutineAndNotAgain) {
    std::string at_raise, at_pops;
    at_raise = capture_errors([] {
        qnum_e1psh("qnum_f_term");
        qnum_e1psh("l_check");
        qnum_e1mes(5, 132, "Bad.");
    });
    at_pops = capture_errors([] {
        qnum_e1pop("l_check");
        qnum_e1pop("qnum_f_term");
    });
    EXPECT_EQ(at_raise, "\n*** TERMINAL Error from qnum_f_term.  Bad.\n\n");
    EXPECT_EQ(at_pops, "");
    EXPECT_EQ(qnum_n1rty(1), 5);
}

TEST_F(Printing, NestedErrorPrintsAtTheOuterPopUnderTheNestedName) {
    std::string inner_pop, outer_pop;
    inner_pop = capture_errors([] {
        qnum_e1psh("qnum_f_outer");
        qnum_e1psh("l_inner");
        qnum_e1mes(3, 150, "Inner.");
        qnum_e1pop("l_inner");
    });
    outer_pop = capture_errors([] { qnum_e1pop("qnum_f_outer"); });
    EXPECT_EQ(inner_pop, "");
    EXPECT_EQ(outer_pop, "\n*** WARNING  Error QNUM_MISSING_ARRAY from l_inner.  Inner.\n\n");
}

TEST_F(Printing, LongMessagesWrapAtColumn77WithContinuationLines) {
    std::string out = capture_errors([] {
        qnum_e1psh("qnum_f_wrap");
        qnum_e1mes(3, 150,
                   "The quick brown fox jumps over the lazy dog and keeps on running past the river "
                   "bank until the evening comes.%/Second line.");
        qnum_e1pop("qnum_f_wrap");
    });
    EXPECT_EQ(out,
              "\n*** WARNING  Error QNUM_MISSING_ARRAY from qnum_f_wrap.  The quick brown fox\n"
              "***          jumps over the lazy dog and keeps on running past the river bank\n"
              "***          until the evening comes.\n"
              "***          Second line.\n\n");
}

// The header "*** WARNING  Error QNUM_MISSING_ARRAY from qnum_f_wrap.  " takes 57 columns:
// a text of 20 fits the margin exactly, a blank at column 77 may take the break, one more
// character sends the last word to a continuation line.
TEST_F(Printing, WrapsExactlyAtTheMargin) {
    const std::pair<const char*, const char*> cases[] = {
        {"aaaa bbbb cccc ddddd", "aaaa bbbb cccc ddddd\n\n"},
        {"aaaa bbbb cccc dddddd", "aaaa bbbb cccc\n***          dddddd\n\n"},
        {"aaaa bbbb cccc ddddd eeee", "aaaa bbbb cccc ddddd\n***          eeee\n\n"},
        {"aaaa bbbb%/cccc", "aaaa bbbb\n***          cccc\n\n"},
        {"a bbbbbbbbbbbbbbbbbbbbbbbbb", "a\n***          bbbbbbbbbbbbbbbbbbbbbbbbb\n\n"}};  // the first blank may break
    for (auto [text, tail] : cases) {
        std::string out = capture_errors([text = text] {
            qnum_e1psh("qnum_f_wrap");
            qnum_e1mes(3, 150, text);
            qnum_e1pop("qnum_f_wrap");
        });
        EXPECT_EQ(out, std::string("\n*** WARNING  Error QNUM_MISSING_ARRAY from qnum_f_wrap.  ") + tail);
    }
}

TEST_F(Printing, UnbrokenRunsAreCutAtTheMargin) {
    std::string out = capture_errors([] {
        qnum_e1psh("qnum_f_run");
        qnum_e1mes(3, 150, std::string(150, 'x').c_str());
        qnum_e1pop("qnum_f_run");
    });
    // No line may pass column 77, and every character arrives.
    std::size_t start = 0, xs = 0;
    while (start < out.size()) {
        std::size_t end = out.find('\n', start);
        EXPECT_LE(end - start, 77u) << out;
        start = end + 1;
    }
    for (char ch : out) xs += ch == 'x';
    EXPECT_EQ(xs, 150u);
}

TEST_F(Printing, LongHeaderStartsTheTextOnAContinuationLine) {
    std::string out = capture_errors([] {
        const char* name = "qnum_f_a_routine_whose_name_is_so_long_that_the_header_passes_the_margin";
        qnum_e1psh(name);
        qnum_e1mes(3, 150, "Short.");
        qnum_e1pop(name);
    });
    EXPECT_EQ(out,
              "\n*** WARNING  Error QNUM_MISSING_ARRAY from "
              "qnum_f_a_routine_whose_name_is_so_long_that_the_header_passes_the_margin.  "
              "\n***          Short.\n\n");
}

TEST_F(Printing, TracebackListsTheUserLevelsCallee) {
    qnum_error_options(QNUM_SET_TRACEBACK, 4, 1, 0);
    std::string out = capture_errors([] { raise_nested("qnum_f_outer", "l_inner", 4, 201, "Gone."); });
    EXPECT_EQ(out,
              "\n*** FATAL    Error QNUM_NO_MEMORY from l_inner.  Gone.\n\n" + traceback_head +
              " QNUM_FATAL       QNUM_NO_MEMORY            qnum_f_outer\n"
              "                                            USER\n");
}

TEST_F(Printing, FullTracebackListsEveryLevel) {
    qnum_error_options(QNUM_SET_TRACEBACK, 5, 1, QNUM_FULL_TRACEBACK, 1, 0);
    std::string out = capture_errors([] { raise_nested("qnum_f_outer", "l_inner", 5, 132, "Bad."); });
    EXPECT_EQ(out,
              "\n*** TERMINAL Error from qnum_f_outer.  Bad.\n\n" + traceback_head +
              " QNUM_TERMINAL    QNUM_OUT_OF_RANGE         l_inner\n"
              "                                            qnum_f_outer\n"
              "                                            USER\n");
}

TEST_F(Printing, ShortTracebackNamesTheCalledRoutineForANestedRaise) {
    qnum_error_options(QNUM_SET_TRACEBACK, 5, 1, 0);
    std::string out = capture_errors([] { raise_nested("qnum_f_outer", "l_inner", 5, 132, "Bad."); });
    EXPECT_NE(out.find(" QNUM_TERMINAL    QNUM_OUT_OF_RANGE         qnum_f_outer\n"
                       "                                            USER\n"),
              std::string::npos)
        << out;
    EXPECT_EQ(out.find("l_inner"), std::string::npos) << out;
}

TEST_F(Printing, FatalPrintsAtThePopAndStopsWithStatus4) {
    std::string out;
    int status = run_in_child([] {
        qnum_error_options(QNUM_SET_PRINT, 4, 1, QNUM_SET_STOP, 4, 1, 0);
        qnum_e1psh("qnum_f_fatal");
        qnum_e1mes(4, 201, "Gone.");
        qnum_e1pop("qnum_f_fatal");
        std::_Exit(0);
    }, &out);
    EXPECT_EQ(status, 4);
    EXPECT_EQ(out, "\n*** FATAL    Error QNUM_NO_MEMORY from qnum_f_fatal.  Gone.\n\n");
}

TEST_F(Printing, ConsolePrinterUsesCarriageReturns) {
    std::string out;
    int status = run_in_child([] {
        setsid();  // no controlling terminal: the console is standard output
        dup2(STDERR_FILENO, STDOUT_FILENO);
        qnum_error_options(QNUM_SET_PRINT, 3, 1, QNUM_SET_ERROR_PRINTER, QNUM_PRINTER_CONSOLE, 0);
        int kind = 0;
        qnum_error_options(QNUM_GET_ERROR_PRINTER, &kind, 0);
        if (kind != QNUM_PRINTER_CONSOLE) std::_Exit(3);
        qnum_e1psh("qnum_f_con");
        qnum_e1mes(3, 150, "Hello.");
        qnum_e1pop("qnum_f_con");
    }, &out);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(out, "\r\n*** WARNING  Error QNUM_MISSING_ARRAY from qnum_f_con.  Hello.\r\n\r\n");
}

TEST_F(Printing, MessageBoxPrinterWritesCaptionThenOneBlock) {
    qnum_error_options(QNUM_SET_ERROR_PRINTER, QNUM_PRINTER_MESSAGE_BOX, 0);
    std::string out = capture_errors([] {
        qnum_e1psh("qnum_f_box");
        qnum_e1mes(3, 150, "Hello.");
        qnum_e1pop("qnum_f_box");
        raise_nested("qnum_f_box", "l_deep", 5, 132, "Bad.");
    });
    qnum_error_options(QNUM_SET_ERROR_PRINTER, 0, 0);
    EXPECT_EQ(out,
              "qnum_frame_tests\nWARNING Error QNUM_MISSING_ARRAY from qnum_f_box.  Hello.\n"
              "qnum_frame_tests\nTERMINAL Error from qnum_f_box.  Bad.\n");
}

TEST_F(Printing, CallerPrinterReceivesTypeCodeRoutineAndText) {
    static std::string seen;
    qnum_error_printer printer = [](int type, int code, const char* routine, const char* text) {
        seen = std::to_string(type) + "/" + std::to_string(code) + "/" + routine + "/" + text;
    };
    qnum_error_options(QNUM_ERROR_PRINT_PROC, printer, 0);
    qnum_e1psh("qnum_f_mine");
    qnum_e1mes(3, 17, "Mine.");
    qnum_e1pop("qnum_f_mine");
    EXPECT_EQ(seen, "3/17/qnum_f_mine/Mine.");
    // A null procedure brings the stream printer back.
    qnum_error_options(QNUM_ERROR_PRINT_PROC, nullptr, 0);
    int kind = -1;
    qnum_error_options(QNUM_GET_ERROR_PRINTER, &kind, 0);
    EXPECT_EQ(kind, QNUM_PRINTER_STREAM);
    seen.clear();
    std::string out = capture_errors([] {
        qnum_e1psh("qnum_f_mine");
        qnum_e1mes(3, 150, "Streamed.");
        qnum_e1pop("qnum_f_mine");
    });
    EXPECT_EQ(seen, "");
    EXPECT_EQ(out, "\n*** WARNING  Error QNUM_MISSING_ARRAY from qnum_f_mine.  Streamed.\n\n");
}

TEST_F(Printing, NothingPrintsForAnEmptyMessageOrAClearedPrintFlag) {
    qnum_error_options(QNUM_SET_PRINT, 3, 0, 0);
    std::string out = capture_errors([] {
        qnum_e1psh("qnum_f_quiet");
        qnum_e1mes(3, 150, "Unseen.");
        qnum_e1pop("qnum_f_quiet");
        qnum_e1psh("qnum_f_blank");
        qnum_e1mes(4, 150, " ");
        qnum_e1pop("qnum_f_blank");
    });
    EXPECT_EQ(out, "");
    EXPECT_EQ(qnum_n1rty(1), 4);
}

}  // namespace
