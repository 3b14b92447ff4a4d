// Printed reports, byte for byte: headers per type class, wrapping, tracebacks, printers.
#include <gtest/gtest.h>

#include <string>
#include <unistd.h>

#include "qnum_test.hpp"

namespace qnum::test {
namespace {

// Print every type, stop none (INTERNAL aside); restores the defaults afterwards.
class Printing : public ::testing::Test {
protected:
    void SetUp() override {
        for (int t = 1; t <= 7; ++t) qnum_error_options(QNUM_SET_PRINT, t, 1, QNUM_SET_STOP, t, 0, 0);
    }
    void TearDown() override {
        QuietErrors restore;  // its destructor puts the default policy back
        qnum_error_options(QNUM_SET_TRACEBACK, 4, 0, QNUM_SET_TRACEBACK, 5, 0, QNUM_FULL_TRACEBACK, 0,
                           QNUM_ERROR_PRINT_PROC, nullptr, QNUM_SET_ERROR_PRINTER, 0, 0);
    }
};

const std::string warning = "\n*** WARNING  Error QNUM_MISSING_ARRAY from ", traceback_head =
    "Here is a traceback of the calls in reverse order.\n"
    "  Error Type        Error Code              Routine\n"
    "  ----------        ----------              -------\n";

// A WARNING prints at the pop with the code's name; a TERMINAL at once under the called
// routine and not again; a nested error at the outer pop under the nested name.
TEST_F(Printing, EachTypePrintsAtItsTimeUnderItsName) {
    EXPECT_EQ(capture_errors([] {
        qnum_e1sti(1, 7);
        raise_in("qnum_f_warn", 3, 150, "Seven is %(i1).");
    }), warning + "qnum_f_warn.  Seven is 7.\n\n");
    const std::string at_raise = capture_errors([] {
        qnum_e1psh("qnum_f_term");
        qnum_e1psh("l_check");
        qnum_e1mes(5, 132, "Bad.");
    });
    EXPECT_EQ(at_raise, "\n*** TERMINAL Error from qnum_f_term.  Bad.\n\n");
    EXPECT_EQ(capture_errors([] {
        qnum_e1pop("l_check");
        qnum_e1pop("qnum_f_term");
    }), "");
    EXPECT_EQ(qnum_n1rty(1), 5);
    qnum_e1psh("qnum_f_outer");
    EXPECT_EQ(capture_errors([] { raise_in("l_inner", 3, 150, "Inner."); }), "");
    EXPECT_EQ(capture_errors([] { qnum_e1pop("qnum_f_outer"); }), warning + "l_inner.  Inner.\n\n");
    // A catalogue text prints the values of the raise, whatever slots and strings hold by then.
    char array[] = "a";
    qnum_e1psh("qnum_f_later");
    qnum_e1stl(1, array), qnum_ermes(3, 150), array[0] = 'b', qnum_e1stl(1, "c");
    EXPECT_EQ(capture_errors([] { qnum_e1pop("qnum_f_later"); }),
              warning + "qnum_f_later.  The required array\n***          \"a\" is a null pointer.\n\n");
}

// The header "*** WARNING  Error QNUM_MISSING_ARRAY from qnum_f_wrap.  " takes 57 columns:
// a text of 20 fits the margin exactly, a blank at column 77 may take the break, one more
// character sends the last word to a continuation line.
TEST_F(Printing, WrapsExactlyAtTheMargin) {
    const std::pair<const char*, const char*> cases[] = {
        {"aaaa bbbb cccc ddddd", "aaaa bbbb cccc ddddd\n\n"},
        {"aaaa bbbb cccc dddddd", "aaaa bbbb cccc\n***          dddddd\n\n"},
        {"aaaa bbbb cccc ddddd eeee", "aaaa bbbb cccc ddddd\n***          eeee\n\n"},
        {"aaaa bbbb cccc dddddd ", "aaaa bbbb cccc\n***          dddddd \n\n"},  // a blank one past the margin may not take the break
        {"aaaa bbbb%/cccc", "aaaa bbbb\n***          cccc\n\n"},
        {"a bbbbbbbbbbbbbbbbbbbbbbbbb", "a\n***          bbbbbbbbbbbbbbbbbbbbbbbbb\n\n"},  // the first blank may break
        {"The quick brown fox jumps over the lazy dog and keeps on running past the river "
         "bank until the evening comes.%/Second line.",
         "The quick brown fox\n***          jumps over the lazy dog and keeps on running past the river bank\n"
         "***          until the evening comes.\n***          Second line.\n\n"}};
    for (auto [text, tail] : cases)
        EXPECT_EQ(capture_errors([text = text] { raise_in("qnum_f_wrap", 3, 150, text); }), warning + "qnum_f_wrap.  " + tail);
    // A header past the margin starts the text on a continuation line.
    const char* name = "qnum_f_a_routine_whose_name_is_so_long_that_the_header_passes_the_margin";
    EXPECT_EQ(capture_errors([name] { raise_in(name, 3, 150, "Short."); }), warning + name + ".  \n***          Short.\n\n");
    // Unbroken runs are cut at the margin: no line passes column 77, and every character arrives.
    const std::string out = capture_errors([] { raise_in("qnum_f_run", 3, 150, std::string(150, 'x').c_str()); });
    for (std::size_t start = 0, end; start < out.size(); start = end + 1) {
        end = out.find('\n', start);
        EXPECT_LE(end - start, 77u) << out;
    }
    EXPECT_EQ(std::count(out.begin(), out.end(), 'x'), 150);
}

// The short traceback lists the user level's callee; the full one every level.
TEST_F(Printing, Tracebacks) {
    qnum_error_options(QNUM_SET_TRACEBACK, 4, 1, QNUM_SET_TRACEBACK, 5, 1, 0);
    EXPECT_EQ(capture_errors([] { raise_in("l_inner", 4, 201, "Gone.", "qnum_f_outer"); }),
              "\n*** FATAL    Error QNUM_NO_MEMORY from l_inner.  Gone.\n\n" + traceback_head +
                  " QNUM_FATAL       QNUM_NO_MEMORY            qnum_f_outer\n"
                  "                                            USER\n");
    EXPECT_EQ(capture_errors([] { raise_in("l_inner", 5, 132, "Bad.", "qnum_f_outer"); }),
              "\n*** TERMINAL Error from qnum_f_outer.  Bad.\n\n" + traceback_head +
                  " QNUM_TERMINAL    QNUM_OUT_OF_RANGE         qnum_f_outer\n"
                  "                                            USER\n");
    qnum_error_options(QNUM_FULL_TRACEBACK, 1, 0);
    EXPECT_EQ(capture_errors([] { raise_in("l_inner", 5, 132, "Bad.", "qnum_f_outer"); }),
              "\n*** TERMINAL Error from qnum_f_outer.  Bad.\n\n" + traceback_head +
                  " QNUM_TERMINAL    QNUM_OUT_OF_RANGE         l_inner\n"
                  "                                            qnum_f_outer\n"
                  "                                            USER\n");
}

TEST_F(Printing, FatalPrintsAtThePopAndStopsWithStatus4) {
    std::string out;
    EXPECT_EQ(run_in_child([] {
        qnum_error_options(QNUM_SET_PRINT, 4, 1, QNUM_SET_STOP, 4, 1, 0);
        raise_in("qnum_f_fatal", 4, 201, "Gone.");
        std::_Exit(0);
    }, &out), 4);
    EXPECT_EQ(out, "\n*** FATAL    Error QNUM_NO_MEMORY from qnum_f_fatal.  Gone.\n\n");
}

TEST_F(Printing, ConsolePrinterUsesCarriageReturns) {
    std::string out;
    EXPECT_EQ(run_in_child([] {
        setsid();  // no controlling terminal: the console is standard output
        dup2(STDERR_FILENO, STDOUT_FILENO);
        qnum_error_options(QNUM_SET_PRINT, 3, 1, QNUM_SET_ERROR_PRINTER, QNUM_PRINTER_CONSOLE, 0);
        int kind = 0;
        qnum_error_options(QNUM_GET_ERROR_PRINTER, &kind, 0);
        if (kind != QNUM_PRINTER_CONSOLE) std::_Exit(3);
        raise_in("qnum_f_con", 3, 150, "Hello.");
    }, &out), 0);
    EXPECT_EQ(out, "\r\n*** WARNING  Error QNUM_MISSING_ARRAY from qnum_f_con.  Hello.\r\n\r\n");
}

TEST_F(Printing, MessageBoxPrinterWritesCaptionThenOneBlock) {
    qnum_error_options(QNUM_SET_ERROR_PRINTER, QNUM_PRINTER_MESSAGE_BOX, 0);
    EXPECT_EQ(capture_errors([] {
        raise_in("qnum_f_box", 3, 150, "Hello.");
        raise_in("l_deep", 5, 132, "Bad.", "qnum_f_box");
    }), "qnum_frame_tests\nWARNING Error QNUM_MISSING_ARRAY from qnum_f_box.  Hello.\n"
        "qnum_frame_tests\nTERMINAL Error from qnum_f_box.  Bad.\n");
}

// A caller's printer receives type, code, routine and text; a null one brings the stream
// printer back. Nothing prints for an empty message or a cleared print flag.
TEST_F(Printing, CallerPrinterThenStreamPrinterAgain) {
    static std::string seen;
    qnum_error_options(QNUM_ERROR_PRINT_PROC, +[](int type, int code, const char* routine, const char* text) {
        seen = std::to_string(type) + "/" + std::to_string(code) + "/" + routine + "/" + text;
    }, 0);
    raise_in("qnum_f_mine", 3, 17, "Mine.");
    EXPECT_EQ(seen, "3/17/qnum_f_mine/Mine.");
    qnum_error_options(QNUM_ERROR_PRINT_PROC, nullptr, 0);
    int kind = -1;
    qnum_error_options(QNUM_GET_ERROR_PRINTER, &kind, 0);
    EXPECT_EQ(kind, QNUM_PRINTER_STREAM);
    seen.clear();
    EXPECT_EQ(capture_errors([] { raise_in("qnum_f_mine", 3, 150, "Streamed."); }), warning + "qnum_f_mine.  Streamed.\n\n");
    EXPECT_EQ(seen, "");
    qnum_error_options(QNUM_SET_PRINT, 3, 0, 0);
    EXPECT_EQ(capture_errors([] {
        raise_in("qnum_f_quiet", 3, 150, "Unseen.");
        raise_in("qnum_f_blank", 4, 150, " ");
    }), "");
    EXPECT_EQ(qnum_n1rty(1), 4);
}

}  // namespace
}  // namespace qnum::test
