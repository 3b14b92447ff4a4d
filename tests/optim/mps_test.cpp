// Tests of the MPS reader: hand-made files for every rule and error, the number converter, and
// the real problem files against their independently computed table.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include <unistd.h>

#include "frame/context.hpp"
#include "frame/error_stack.hpp"
#include "lp_test_util.hpp"
#include "optim/mps_util.hpp"
#include "qnum_test.hpp"

namespace qnum::test {
namespace {

class Mps : public ::testing::Test {
protected:
    QuietErrors quiet;
};

// Reads `text` through an in-memory stream, with extra options before the closing 0.
template <class... Opts>
Qnum_d_mps* read_text(const std::string& text, Opts... opts) {
    std::FILE* f = fmemopen(const_cast<char*>(text.data()), text.size(), "rb");
    if (text.empty()) f = std::tmpfile();
    Qnum_d_mps* p = qnum_d_read_mps(nullptr, QNUM_MPS_FILE, f, opts..., 0);
    std::fclose(f);
    return p;
}

std::string message() { return qnum::errors::current_text(qnum::context()); }

int column_of(const Qnum_d_mps* p, const char* name) {
    for (int j = 0; j < p->ncolumns; ++j) {
        if (std::strcmp(p->column_name[j], name) == 0) return j;
    }
    return -1;
}

// One data line with its fields at columns 2, 5, 15, 25, 40 and 50.
std::string L(const std::string& type, const std::string& n1, const std::string& n2 = "",
              const std::string& v1 = "", const std::string& n3 = "", const std::string& v2 = "") {
    std::string s(61, ' ');
    const std::string* f[] = {&type, &n1, &n2, &v1, &n3, &v2};
    const int at[] = {1, 4, 14, 24, 39, 49};
    for (int k = 0; k < 6; ++k) s.replace(at[k], f[k]->size(), *f[k]);
    s.resize(s.find_last_not_of(' ') + 1);
    return s + "\n";
}

std::string crlf(std::string s) {
    for (std::size_t i = 0; (i = s.find('\n', i)) != std::string::npos; i += 2) s.insert(i, "\r");
    return s;
}

// Every rule in one file: comments, a blank line, a lower-case row type, a second N row (a free
// row), an integer run, a blank column name, an in-line '$' comment, zeros kept, a second pair,
// a right-hand side on the objective, a second RHS set, ranges, every bound type, a line cut at
// column 61, CR LF line ends and quadratic terms.
const std::string model_file = crlf(
    "* a comment\n"
    "NAME          MODEL  problem\n"
    "ROWS\n" + L("N", "COST") + L("e", "LIM1") + L(" L", "LIM2") + L("G", "LIM3") + L("N", "FREE") +
    "\n"
    "COLUMNS\n" + L("", "X1", "COST", "1.0", "LIM1", "2.0") + L("", "", "LIM2", "-1.5", "$ comment", "x") +
    L("", "MARKER", "'MARKER'", "", "'INTORG'") + L("", "X2", "COST", "-.5", "FREE", "0.0") +
    L("", "X3", "LIM3", "1D1") + L("", "MARKER", "'MARKER'", "", "'INTEND'") +
    L("", "X4", "LIM1", "3.", "LIM3", "4.25") + L("", "X5", "LIM2", "7") + L("", "X6", "LIM2", "8") +
    L("", "X7", "LIM2", "9") + L("", "X8", "LIM2", "10") + L("", "X9", "LIM2", "11") +
    L("", "X10", "LIM2", "123456789012", "LIM3", "           5").substr(0, 61) + "X\n" +
    "RHS\n" + L("", "RHS", "COST", "2.5", "LIM1", "4.0") + L("", "RHS", "LIM3", "-1.0") +
    L("", "OTHER", "LIM1", "99.0") +
    "RANGES\n" + L("", "RNG", "LIM2", "2.0", "LIM1", "-3.0") +
    "BOUNDS\n" + L("UP", "BND", "X1", "4.0") + L("up", "BND", "X2", "-2.0") + L("LO", "BND", "X3", "-1.0") +
    L("UP", "BND", "X3", "-0.5") + L("FX", "BND", "X4", "1.5") + L("FR", "BND", "X5") + L("MI", "BND", "X6") +
    L("BV", "BND", "X7") + L("LI", "BND", "X8", "2.0") + L("UI", "BND", "X9", "6.0") +
    L("SC", "BND", "X10", "9.0") + L("PL", "BND", "X1") + L("LO", "OTHER", "X1", "-77.0") +
    "QUADOBJ\n" + L("", "X1", "X1", "2.0") + L("", "X1", "X2", "-1.0") + "ENDATA\n");

TEST_F(Mps, ModelFileEveryField) {
    Qnum_d_mps* p = read_text(model_file);
    ASSERT_NE(p, nullptr) << message();
    EXPECT_EQ(last_type(), 0);
    EXPECT_STREQ(p->name, "MODEL  problem");
    EXPECT_STREQ(p->name_objective, "COST");
    EXPECT_STREQ(p->name_rhs, "RHS");
    EXPECT_STREQ(p->name_ranges, "RNG");
    EXPECT_STREQ(p->name_bounds, "BND");
    ASSERT_EQ(p->nrows, 4);
    const char* rows[] = {"LIM1", "LIM2", "LIM3", "FREE"};
    const int types[] = {'E', 'L', 'G', 'N'};
    const double rhs[] = {4, 0, -1, 0}, ranges[] = {-3, 2, 0, 0};
    for (int i = 0; i < 4; ++i) {
        EXPECT_STREQ(p->row_name[i], rows[i]);
        EXPECT_EQ(p->row_type[i], types[i]) << i;
        EXPECT_EQ(p->rhs[i], rhs[i]) << i;
        EXPECT_EQ(p->ranges[i], ranges[i]) << i;
    }
    EXPECT_EQ(p->objective_constant, -2.5);
    ASSERT_EQ(p->ncolumns, 10);
    struct Col { const char* name; double obj, lo, up; int type; };
    const double inf = 1.0e30;
    const Col cols[] = {{"X1", 1, 0, inf, 0},     {"X2", -0.5, -inf, -2, 1}, {"X3", 0, -1, -0.5, 1},
                        {"X4", 0, 1.5, 1.5, 0},   {"X5", 0, -inf, inf, 0},   {"X6", 0, -inf, inf, 0},
                        {"X7", 0, 0, 1, 0},       {"X8", 0, 2, inf, 1},      {"X9", 0, 0, 6, 1},
                        {"X10", 0, 0, 9, 0}};
    for (int j = 0; j < 10; ++j) {
        SCOPED_TRACE(cols[j].name);
        EXPECT_STREQ(p->column_name[j], cols[j].name);
        EXPECT_EQ(p->objective[j], cols[j].obj);
        EXPECT_EQ(p->lower_bound[j], cols[j].lo);
        EXPECT_EQ(p->upper_bound[j], cols[j].up);
        EXPECT_EQ(p->variable_type[j], cols[j].type);
    }
    // The matrix as read, in order: the line cut at column 61 loses its "X" but keeps "5".
    struct Entry { int row, column; double value; };
    const Entry entries[] = {{0, 0, 2},  {1, 0, -1.5}, {3, 1, 0},  {2, 2, 10}, {0, 3, 3},
                             {2, 3, 4.25}, {1, 4, 7},  {1, 5, 8},  {1, 6, 9},  {1, 7, 10},
                             {1, 8, 11}, {1, 9, 123456789012.0}, {2, 9, 5}};
    ASSERT_EQ(p->nonzeros, 13);
    for (int k = 0; k < 13; ++k) {
        EXPECT_EQ(p->matrix_row[k], entries[k].row) << k;
        EXPECT_EQ(p->matrix_column[k], entries[k].column) << k;
        EXPECT_EQ(p->matrix_value[k], entries[k].value) << k;
    }
    ASSERT_EQ(p->quadratic_nonzeros, 2);
    EXPECT_EQ(p->quadratic_row[1], 0);
    EXPECT_EQ(p->quadratic_column[1], 1);
    EXPECT_EQ(p->quadratic_value[0], 2.0);
    EXPECT_EQ(p->quadratic_value[1], -1.0);
    qnum_d_mps_free(p);
}

// Named sets and objective, and the caller's infinities.
TEST_F(Mps, OptionsChooseSetsObjectiveAndInfinities) {
    // Only the first 8 characters of a requested name count.
    Qnum_d_mps* p = read_text(model_file, QNUM_MPS_NAME_OBJECTIVE, "FREE    X", QNUM_MPS_NAME_RHS,
                              " OTHER  ", QNUM_MPS_NAME_BOUNDS, "OTHER", QNUM_MPS_NAME_RANGES, "RNG",
                              QNUM_MPS_POSITIVE_INFINITY, 1.0e20, QNUM_MPS_NEGATIVE_INFINITY, -5.0e20);
    ASSERT_NE(p, nullptr) << message();
    EXPECT_EQ(last_type(), 0);
    EXPECT_STREQ(p->name_objective, "FREE");
    EXPECT_STREQ(p->name_rhs, "OTHER");
    ASSERT_EQ(p->nrows, 4);
    EXPECT_STREQ(p->row_name[0], "COST");
    EXPECT_EQ(p->row_type[0], 'N');
    EXPECT_EQ(p->rhs[1], 99.0);    // LIM1 from the OTHER set
    EXPECT_EQ(p->rhs[3], 0.0);     // LIM3's -1 belongs to the RHS set
    EXPECT_EQ(p->objective_constant, 0.0);
    EXPECT_EQ(p->objective[1], 0.0);  // X2's coefficient on FREE was 0
    EXPECT_EQ(p->lower_bound[0], -77.0);
    EXPECT_EQ(p->upper_bound[0], 1.0e20);
    EXPECT_EQ(p->upper_bound[4], 1.0e20);
    EXPECT_EQ(p->positive_infinity, 1.0e20);
    EXPECT_EQ(p->negative_infinity, -5.0e20);
    qnum_d_mps_free(p);

    // The first row named as the objective is found (no warning).
    p = read_text(model_file, QNUM_MPS_POSITIVE_INFINITY, 1.0e20, QNUM_MPS_NEGATIVE_INFINITY, -2.0,
                  QNUM_MPS_NAME_OBJECTIVE, "COST");
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(last_type(), 0);
    const int x5 = column_of(p, "X5"), x2 = column_of(p, "X2");
    EXPECT_EQ(p->lower_bound[x5], -2.0);  // FR takes both of the caller's infinities
    EXPECT_EQ(p->upper_bound[x5], 1.0e20);
    EXPECT_EQ(p->lower_bound[x2], -2.0);
    qnum_d_mps_free(p);
}

// A name asked for and never met: a warning naming it, and the structure all the same.
TEST_F(Mps, RequestedNamesNotFoundWarn) {
    // "LIM1" is a row but not an N row: it cannot be the objective.
    struct Row { int option; int code; const char* name; };
    const Row rows[] = {{QNUM_MPS_NAME_OBJECTIVE, 8100, "NOPE"}, {QNUM_MPS_NAME_RHS, 8101, "NOPE"},
                        {QNUM_MPS_NAME_RANGES, 8102, "NOPE"}, {QNUM_MPS_NAME_BOUNDS, 8103, "NOPE"},
                        {QNUM_MPS_NAME_OBJECTIVE, 8100, "LIM1"}};
    for (const Row& r : rows) {
        Qnum_d_mps* p = read_text(model_file, r.option, r.name);
        ASSERT_NE(p, nullptr) << r.code;
        EXPECT_EQ(last_type(), 3);
        EXPECT_EQ(last_code(), r.code);
        EXPECT_NE(message().find(std::string("\"") + r.name + "\""), std::string::npos) << message();
        EXPECT_STREQ(p->name_objective, "COST");
        const double unset[] = {p->objective[0], p->rhs[0], p->ranges[1], p->upper_bound[0]};
        const double want[] = {1.0, 0.0, 0.0, 1.0e30};
        EXPECT_EQ(unset[r.code - 8100], want[r.code - 8100]);
        qnum_d_mps_free(p);
    }
}

const std::string head = "NAME T\nROWS\n N  OBJ\n L  R1\nCOLUMNS\n";

// Malformed files: the error, its line and its text; the call returns NULL.
TEST_F(Mps, FileErrorsNameTheLine) {
    struct Row { std::string text; int code, line; const char* word; };
    const Row rows[] = {
        {"", 8098, 0, nullptr},
        {"NAME\n", 8098, 1, nullptr},
        {"ROWS\n", 8104, 1, "ROWS"},
        {"NAME\nROWS\nCOLUMNS\nRANGES\n", 8104, 4, "RANGES"},
        {"NAME\nROWS\nCOLUMNS\nRHS\nRHS\n", 8104, 5, "RHS"},
        {"NAME\nNAME\n", 8104, 2, "NAME"},
        {"NAME\nROWS\nCOLUMNS\nQUADOBJ\nBOUNDS\n", 8104, 5, "BOUNDS"},
        {"NAME\nCOLUMNS\n", 8104, 2, "COLUMNS"},
        {"NAME\nROWSX\n", 8105, 2, "ROWSX"},
        {"NAME\n\tROWS\n", 8105, 2, "\tROWS"},
        {" N  OBJ\n", 8099, 1, nullptr},
        {"*\nNAME\n N  OBJ\n", 8099, 3, nullptr},
        {"NAME\nROWS\n X  R1\n", 8106, 3, "X"},
        {"NAME\nROWS\n NN R1\n", 8106, 3, "NN"},
        {"NAME\nROWS\n    R1\n", 8106, 3, ""},
        {"NAME\nROWS\n N  R1\n E  R1\n", 8108, 4, "R1"},
        {head + "    X1        R1           1.0\n    X2        R1           1.0\n"
                "    X1        R1           1.0\n", 8108, 8, "X1"},
        {head + "    X1        R2           1.0\n", 8107, 6, "R2"},
        {head + L("", "X1", "R1", "1.0", "R9", "1.0"), 8107, 6, "R9"},
        {head + "              R1           1.0\n", 8109, 6, ""},
        {head + "    X1        R1           1.x\n", 8110, 6, "1.x"},
        {head + L("", "X1", "R1", "1.0", "OBJ"), 8110, 6, ""},
        {head + "    M         'MARKER'                 'INTXXX'\n", 8111, 6, "M"},
        {head + "    X1        R1           1.0\nRHS\n    B         R7           1.0\n", 8107, 8, "R7"},
        {head + "    X1        R1           1.0\nRHS\nRANGES\n    B         R1           1.0\n" +
                L("", "B", "OBJ", "1.0", "R8", "2"), 8107, 10, "R8"},
        {head + "    X1        R1           1.0\nBOUNDS\n UP B         X2           1.0\n", 8109, 8, "X2"},
        {head + "    X1        R1           1.0\nBOUNDS\n XX B         X1           1.0\n", 8113, 8, "XX"},
        {head + "    X1        R1           1.0\nBOUNDS\n UP B         X1\n", 8110, 8, ""},
        {head + "    X1        R1           1.0\nBOUNDS\n LI B         X1          1e\n", 8110, 8, "1e"},
        {head + "    X1        R1           1.0\nQUADOBJ\n    X1        X3           1.0\n", 8109, 8, "X3"},
        {head + "    X1        R1           1.0\nQUADOBJ\n    X3        X1           1.0\n", 8109, 8, "X3"},
        {head + "    X1        R1           1.0\nQUADOBJ\n    X1        X1           --1\n", 8110, 8, "--1"},
        {head + "    X1        R1           1.0\nRHS\n", 8098, 7, nullptr},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.text);
        EXPECT_EQ(read_text(r.text), nullptr);
        EXPECT_EQ(last_type(), 4);
        EXPECT_EQ(last_code(), r.code);
        EXPECT_EQ(int_slot(1), r.line);
        if (r.word != nullptr) {
            EXPECT_NE(message().find(std::string("\"") + r.word + "\""), std::string::npos)
                << message();
        }
        const std::string line = " " + std::to_string(r.line);
        EXPECT_NE(message().find(line), std::string::npos) << message();
    }
}

// Errors of the call itself: TERMINAL, NULL returned.
TEST_F(Mps, CallErrors) {
    EXPECT_EQ(qnum_d_read_mps(nullptr, 0), nullptr);
    EXPECT_EQ(last_type(), 5);
    EXPECT_EQ(last_code(), 8097);

    EXPECT_EQ(qnum_d_read_mps("/nonexistent/dir/file.mps", 0), nullptr);
    EXPECT_EQ(last_type(), 5);
    EXPECT_EQ(last_code(), 8112);
    EXPECT_EQ(string_slot(1), "/nonexistent/dir/file.mps");

    EXPECT_EQ(qnum_d_read_mps("x.mps", QNUM_MPS_POSITIVE_INFINITY, 1.0, 15008, 0), nullptr);
    EXPECT_EQ(last_code(), 103);
    EXPECT_EQ(int_slot(1), 15008);
    EXPECT_EQ(int_slot(2), 4);

    EXPECT_EQ(qnum_d_read_mps("x.mps", QNUM_MPS_NAME_RHS, nullptr, 0), nullptr);
    EXPECT_EQ(last_code(), 104);
    qnum_d_mps_free(nullptr);
}

// The 61-column buffer: a line of exactly 61 characters keeps its last one; a longer line
// loses the rest, however long, and the next line is read normally.
TEST_F(Mps, LongLinesAreCutAtColumn61) {
    std::string exact = L("", "X1", "R1", "1.0", "OBJ", "123456789012");
    exact.pop_back();
    ASSERT_EQ(exact.size(), 61u);
    std::string text = head + exact + "\n" + exact + "999 tail\n";
    text += "* " + std::string(3 << 20, 'x') + "\n";
    text += "    X2        R1           2.0\nENDATA\n";
    Qnum_d_mps* p = read_text(text);
    ASSERT_NE(p, nullptr) << message();
    // The second copy of X1 continues X1's run of lines.
    EXPECT_EQ(p->objective[0], 2 * 123456789012.0);
    EXPECT_EQ(p->nonzeros, 3);
    EXPECT_EQ(p->matrix_value[2], 2.0);
    qnum_d_mps_free(p);

    // An ENDATA line with no newline at all still ends the file; the NAME line keeps columns
    // 6 to 61.
    const std::string name(70, 'n');
    p = read_text("NAME " + name + "\nROWS\nENDATA");
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(std::string(p->name), name.substr(0, 56));
    // No rows or columns, and no arrays for them.
    EXPECT_TRUE(p->nrows == 0 && p->ncolumns == 0 && !p->row_name && !p->row_type && !p->column_name);
    EXPECT_STREQ(p->name_objective, "");
    qnum_d_mps_free(p);
}

// A negative upper bound with a zero lower bound frees the lower bound; an explicit nonzero
// lower bound stays.
TEST_F(Mps, NegativeUpperBoundRule) {
    struct Row { const char* bounds; double lo, up; int integer; };
    const Row rows[] = {{" UP B         X1          -1.0\n", -1e30, -1, 0},
                        {" LO B         X1           0.0\n UP B         X1          -1.0\n", -1e30, -1, 0},
                        {" LO B         X1          -3.0\n UP B         X1          -1.0\n", -3, -1, 0},
                        {" UI B         X1          -2.0\n", -1e30, -2, 1},
                        {" UP B         X1           0.0\n", 0, 0, 0},
                        {" BV B         X1\n", 0, 1, 0},
                        {" UP B         X1          -1.0\n LO B         X1           0.0\n", 0, -1, 0}};
    for (const Row& r : rows) {
        SCOPED_TRACE(r.bounds);
        Qnum_d_mps* p = read_text(head + "    X1        R1           1.0\nBOUNDS\n" + r.bounds + "ENDATA\n");
        ASSERT_NE(p, nullptr) << message();
        EXPECT_EQ(p->lower_bound[0], r.lo);
        EXPECT_EQ(p->upper_bound[0], r.up);
        EXPECT_EQ(p->variable_type[0], r.integer);
        qnum_d_mps_free(p);
    }
}

// Only the field columns count: characters in the gaps between fields (columns 4, 13-14,
// 23-24, 37 and 48-49), in every section, are not part of any field.
TEST_F(Mps, GapColumnsAreIgnored) {
    auto gaps = [](std::string line) {
        for (int c : {4, 13, 14, 23, 24, 37, 48, 49}) {
            if (static_cast<int>(line.size()) > c) line[c - 1] = '#';  // never the newline
        }
        return line;
    };
    const std::string text = "NAME T\nROWS\n N  OBJ\n" + gaps(" L  R1" + std::string(8, ' ')) + "\nCOLUMNS\n" +
                             gaps(L("", "M", "'MARKER'", "", "'INTORG'")) +
                             gaps(L("", "X1", "R1", "1.0").substr(0, 36) + "  ") + "\n" +
                             L("", "M", "'MARKER'", "", "'INTEND'", "  x") + "RHS\n" +
                             gaps(L("", "B", "R1", "3.0", "OBJ", "2.0")) + "BOUNDS\n" + gaps(L("UP", "BND", "X1", "4.0")) + "QUADOBJ\n" +
                             gaps(L("", "X1", "X1", "2.5").substr(0, 36) + "  ") + "\nENDATA\n";
    Qnum_d_mps* p = read_text(text);
    ASSERT_NE(p, nullptr) << message() << "\n" << text;
    EXPECT_STREQ(p->name_bounds, "BND");
    EXPECT_EQ(p->upper_bound[0], 4.0);
    EXPECT_EQ(p->matrix_value[0], 1.0);
    EXPECT_EQ(p->rhs[0], 3.0);
    EXPECT_EQ(p->objective_constant, -2.0);
    EXPECT_EQ(p->variable_type[0] & 1, 1);
    ASSERT_EQ(p->quadratic_nonzeros, 1);
    EXPECT_EQ(p->quadratic_value[0], 2.5);
    qnum_d_mps_free(p);
}

// Opening by name reads the same file as the stream does.
TEST_F(Mps, ReadsByName) {
    char path[] = "/tmp/qnum_mps_XXXXXX";
    const int fd = mkstemp(path);
    ASSERT_EQ(write(fd, model_file.data(), model_file.size()), static_cast<ssize_t>(model_file.size()));
    close(fd);
    Qnum_d_mps* p = qnum_d_read_mps(path, 0);
    std::remove(path);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(p->nonzeros, 13);
    qnum_d_mps_free(p);
}

// The converter against the C library's correctly rounded strtod, and its refusals.
TEST(MpsNumbers, ConvertsLikeStrtodAndRefusesJunk) {
    const char* good[] = {"1.", "-.537", "0.100000e+02", "-.100000e+01", "-9.6E-4", "42", "+7",
                          "0.1", "123456789012", "1e22", "1e23", "1.7976931348623157e308",
                          "4.9e-324", "2.2250738585072014E-308", "9007199254740993",
                          "12345678901234567890123", "0.000000000000000000000000001",
                          "1e-400", "1e400", "-0", ".5e-3", "5.e2", "18446744073709551616",
                          "18446744073709551617", "9e23", "45e23", "0.0000000000000000000012345", "1e10",
                          "-7.5E+12", "3e-15"};
    for (const char* s : good) {
        double v = -1;
        ASSERT_TRUE(optim::parse_number(s, std::strlen(s), v)) << s;
        EXPECT_EQ(v, std::strtod(s, nullptr)) << s;
        EXPECT_EQ(std::signbit(v), std::signbit(std::strtod(s, nullptr))) << s;
    }
    double v = 0;
    // Only the first n characters are read.
    ASSERT_TRUE(optim::parse_number("1.55", 3, v));
    EXPECT_EQ(v, 1.5);
    ASSERT_TRUE(optim::parse_number("125", 2, v));
    EXPECT_EQ(v, 12.0);
    ASSERT_TRUE(optim::parse_number("1.5D+3", 6, v));
    EXPECT_EQ(v, 1500.0);
    ASSERT_TRUE(optim::parse_number("2d-1", 4, v));
    EXPECT_EQ(v, 0.2);
    const char* bad[] = {"", ".", "-", "+", "1..2", "1e", "1e+", "e5", "1 2", "0x10", "inf", "nan",
                         "1.0.", "--1", "1e5e", "1,5"};
    for (const char* s : bad) EXPECT_FALSE(optim::parse_number(s, std::strlen(s), v)) << s;
    // An exponent cut off by the field's end has no digits, whatever follows in memory.
    EXPECT_FALSE(optim::parse_number("1e5", 2, v));
    EXPECT_FALSE(optim::parse_number("1e+7", 3, v));
    ASSERT_TRUE(optim::parse_number("12.5", 2, v));
    EXPECT_EQ(v, 12.0);
}

// ---- the real problem files against expected.tsv ----

void expect_sum(double got, const std::string& want, const char* what) {
    const double w = std::strtod(want.c_str(), nullptr);
    EXPECT_NEAR(got, w, 1e-12 * std::max(1.0, std::abs(w))) << what;
}

TEST_F(Mps, RealFilesMatchTheirTable) {
    const auto table = expected_table();
    if (table.empty()) GTEST_SKIP() << "no problem files at " << mps_dir();
    for (const auto& e : table) {
        const std::string file = e.at("file");
        SCOPED_TRACE(file);
        Qnum_d_mps* p = qnum_d_read_mps((mps_dir() + file).c_str(), 0);
        ASSERT_NE(p, nullptr) << message();
        EXPECT_EQ(last_type(), 0);
        auto num = [&](const char* k) { return std::stoi(e.at(k)); };
        EXPECT_EQ(std::string(p->name), e.at("name_cols6_61"));
        EXPECT_EQ(std::string(p->name_objective), e.at("obj_row"));
        EXPECT_EQ(p->nrows, num("rows_all") - 1);
        int types[256] = {};
        for (int i = 0; i < p->nrows; ++i) ++types[p->row_type[i] & 255];
        EXPECT_EQ(types['N'], num("rows_N") - 1);
        EXPECT_EQ(types['E'], num("rows_E"));
        EXPECT_EQ(types['L'], num("rows_L"));
        EXPECT_EQ(types['G'], num("rows_G"));
        EXPECT_EQ(p->ncolumns, num("cols"));
        EXPECT_EQ(p->nonzeros, num("coef_entries") - num("coef_obj"));
        int free_entries = 0, zeros = 0;
        double sum = 0, sum_abs = 0;
        for (int k = 0; k < p->nonzeros; ++k) {
            ASSERT_GE(p->matrix_row[k], 0);
            ASSERT_LT(p->matrix_row[k], p->nrows);
            ASSERT_GE(p->matrix_column[k], k > 0 ? p->matrix_column[k - 1] : 0);
            ASSERT_LT(p->matrix_column[k], p->ncolumns);
            zeros += p->matrix_value[k] == 0;
            if (p->row_type[p->matrix_row[k]] == 'N') {
                ++free_entries;
            } else {
                sum += p->matrix_value[k];
                sum_abs += std::abs(p->matrix_value[k]);
            }
        }
        EXPECT_EQ(free_entries, num("coef_freerows"));
        EXPECT_EQ(zeros, num("coef_zero"));
        expect_sum(sum, e.at("sum_constraint_coef"), "sum_constraint_coef");
        expect_sum(sum_abs, e.at("sum_abs_constraint_coef"), "sum_abs_constraint_coef");
        double obj = 0, lb = 0, ub = 0;
        int integer = 0, lb_inf = 0, ub_inf = 0;
        for (int j = 0; j < p->ncolumns; ++j) {
            obj += p->objective[j];
            integer += p->variable_type[j] & 1;
            if (p->lower_bound[j] == p->negative_infinity) ++lb_inf; else lb += p->lower_bound[j];
            if (p->upper_bound[j] == p->positive_infinity) ++ub_inf; else ub += p->upper_bound[j];
        }
        expect_sum(obj, e.at("sum_obj_coef"), "sum_obj_coef");
        EXPECT_EQ(integer, num("int_cols_marker_LI_UI"));
        EXPECT_EQ(lb_inf, num("lb_minus_inf"));
        EXPECT_EQ(ub_inf, num("ub_plus_inf"));
        expect_sum(lb, e.at("sum_finite_lb"), "sum_finite_lb");
        expect_sum(ub, e.at("sum_finite_ub"), "sum_finite_ub");
        double rhs = 0, ranges = 0;
        int ranged = 0;
        for (int i = 0; i < p->nrows; ++i) {
            rhs += p->rhs[i];
            ranges += p->ranges[i];
            ranged += p->ranges[i] != 0;
        }
        expect_sum(rhs, e.at("sum_rhs_constraints"), "sum_rhs_constraints");
        expect_sum(ranges, e.at("sum_ranges"), "sum_ranges");
        EXPECT_EQ(ranged, num("ranges_entries"));
        const std::string c0 = e.at("rhs_on_obj");
        EXPECT_EQ(p->objective_constant, c0.empty() ? 0.0 : -std::strtod(c0.c_str(), nullptr));
        EXPECT_EQ(p->quadratic_nonzeros, num("quad_entries"));
        int diag = 0;
        for (int k = 0; k < p->quadratic_nonzeros; ++k) diag += p->quadratic_row[k] == p->quadratic_column[k];
        EXPECT_EQ(diag, num("quad_diag"));
        qnum_d_mps_free(p);
    }
}

}  // namespace
}  // namespace qnum::test
