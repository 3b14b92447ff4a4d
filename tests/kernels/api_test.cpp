// The public kernels: argument errors with their tags, codes and substitution values, the
// calling conventions (each export against its template), numbered aliases and threads.
#include <string>
#include <thread>

#include "kernel_util.hpp"
#include "kernels/helpers.hpp"
#include "kernels/level1.hpp"
#include "kernels/level2.hpp"
#include "qnum_test.hpp"

namespace qnum::test {
namespace {

// Every buffer a kernel call below reads or writes, in all four precisions, filled with
// values that keep every product and solve finite.
struct Bufs {
    float fa[64], fx[16], fy[16];
    double da[64], dx[16], dy[16];
    C ca[64], cx[16], cy[16];
    Z za[64], zx[16], zy[16];
    Bufs() {
        for (int i = 0; i < 64; ++i) {
            const double v = 1 + 0.03 * i, w = 0.5 - 0.01 * i;
            fa[i] = static_cast<float>(v), da[i] = v, ca[i] = C(v, w), za[i] = Z(v, w);
            if (i < 16)
                fx[i] = fy[i] = static_cast<float>(w), dx[i] = dy[i] = w, cx[i] = cy[i] = C(w, v),
                zx[i] = zy[i] = Z(w, v);
        }
    }
    bool operator==(const Bufs& o) const { return std::memcmp(this, &o, sizeof o) == 0; }
};
qnum_f_complex* F(C* p) { return reinterpret_cast<qnum_f_complex*>(p); }
qnum_d_complex* D(Z* p) { return reinterpret_cast<qnum_d_complex*>(p); }

const int m3 = 3, n3 = 3, one = 1, zero = 0, neg1 = -1, neg2 = -2, two = 2, four = 4, five = 5, seven = 7,
          nine = 9;
const float fs = 0.5f;
const double ds = 0.5;
const C cs(0.5f, 0.25f);
const Z zs(0.5, 0.25);
const qnum_f_complex* cS = reinterpret_cast<const qnum_f_complex*>(&cs);
const qnum_d_complex* zS = reinterpret_cast<const qnum_d_complex*>(&zs);

struct Event {
    std::string routine;
    int code;
};
std::vector<Event> events;
void record(int, int code, const char* routine, const char*) { events.push_back({routine, code}); }

class KernelErrors : public ::testing::Test {
protected:
    QuietErrors quiet;
    void SetUp() override {
        events.clear();
        qnum_error_options(QNUM_SET_PRINT, 5, 1, QNUM_ERROR_PRINT_PROC, record, 0);
    }
    void TearDown() override { qnum_error_options(QNUM_ERROR_PRINT_PROC, nullptr, 0); }
};

struct ErrorCase {
    const char* label;
    std::function<void(Bufs&)> call;
    const char* tag;
    int code;
    std::vector<int> ints;
    const char* text;  // string slot 1, when the check sets one
};

// One call per check: the tag is pushed, the code raised with its values, nothing written.
TEST_F(KernelErrors, EveryCheckReportsItsCodeAndValuesAndWritesNothing) {
    const std::vector<ErrorCase> cases = {
        // clang-format off
        {"sgemv m", [](Bufs& b) { qnum_sgemv("N", 1, &neg1, &n3, &fs, b.fa, &n3, b.fx, &one, &fs, b.fy, &one); },
         "SGEMV ", 2033, {-1}, nullptr},
        {"sgemv n", [](Bufs& b) { qnum_sgemv("N", 1, &m3, &neg2, &fs, b.fa, &n3, b.fx, &one, &fs, b.fy, &one); },
         "SGEMV ", 2014, {-2}, nullptr},
        {"sgemv lda", [](Bufs& b) { qnum_sgemv("N", 1, &m3, &n3, &fs, b.fa, &two, b.fx, &one, &fs, b.fy, &one); },
         "SGEMV ", 1020, {2, 3}, nullptr},
        {"sgemv lda 0", [](Bufs& b) { qnum_sgemv("N", 1, &zero, &n3, &fs, b.fa, &zero, b.fx, &one, &fs, b.fy, &one); },
         "SGEMV ", 1020, {0, 0}, nullptr},
        {"sgemv lda vs m, transposed", [](Bufs& b) { qnum_sgemv("T", 1, &four, &two, &fs, b.fa, &two, b.fx, &one, &fs, b.fy, &one); },
         "SGEMV ", 1020, {2, 4}, nullptr},
        {"sgemv incx", [](Bufs& b) { qnum_sgemv("N", 1, &m3, &n3, &fs, b.fa, &n3, b.fx, &zero, &fs, b.fy, &one); },
         "SGEMV ", 2015, {0}, nullptr},
        {"sgemv incy", [](Bufs& b) { qnum_sgemv("N", 1, &m3, &n3, &fs, b.fa, &n3, b.fx, &one, &fs, b.fy, &zero); },
         "SGEMV ", 2016, {0}, nullptr},
        {"sgemv trans", [](Bufs& b) { qnum_sgemv("X", 1, &m3, &n3, &fs, b.fa, &n3, b.fx, &one, &fs, b.fy, &one); },
         "SGEMV ", 1019, {}, "X"},
        {"sgemv trans after m", [](Bufs& b) { qnum_sgemv("X", 1, &neg1, &n3, &fs, b.fa, &n3, b.fx, &one, &fs, b.fy, &one); },
         "SGEMV ", 2033, {-1}, nullptr},
        {"dgemv trans", [](Bufs& b) { qnum_dgemv("xyz", 3, &m3, &n3, &ds, b.da, &n3, b.dx, &one, &ds, b.dy, &one); },
         "DGEMV ", 1019, {}, "xyz"},
        {"cgemv lda", [](Bufs& b) { qnum_cgemv("C", 1, &m3, &n3, cS, F(b.ca), &two, F(b.cx), &one, cS, F(b.cy), &one); },
         "CGEMV ", 1020, {2, 3}, nullptr},
        {"zgemv incy", [](Bufs& b) { qnum_zgemv("N", 1, &m3, &n3, zS, D(b.za), &n3, D(b.zx), &one, zS, D(b.zy), &zero); },
         "ZGEMV ", 2016, {0}, nullptr},
        {"sgbmv kl < 0", [](Bufs& b) { qnum_sgbmv("N", 1, &m3, &n3, &neg1, &one, &fs, b.fa, &n3, b.fx, &one, &fs, b.fy, &one); },
         "SGBMV ", 5029, {-1, 3}, nullptr},
        {"sgbmv kl > m-1", [](Bufs& b) { qnum_sgbmv("N", 1, &m3, &n3, &m3, &one, &fs, b.fa, &n3, b.fx, &one, &fs, b.fy, &one); },
         "SGBMV ", 5029, {3, 3}, nullptr},
        {"dsgbmv ku > n-1", [](Bufs& b) { qnum_dsgbmv("N", 1, &m3, &n3, &one, &n3, &ds, b.da, &n3, b.dx, &one, &ds, b.dy, &one); },
         "SGBMV ", 5030, {3, 3}, nullptr},
        {"dsgbmv lda", [](Bufs& b) { qnum_dsgbmv("N", 1, &m3, &n3, &one, &one, &ds, b.da, &two, b.dx, &one, &ds, b.dy, &one); },
         "SGBMV ", 5031, {2, 1, 1}, nullptr},
        {"cgbmv trans", [](Bufs& b) { qnum_cgbmv("Q", 1, &m3, &n3, &one, &one, cS, F(b.ca), &n3, F(b.cx), &one, cS, F(b.cy), &one); },
         "CGBMV ", 1019, {}, "Q"},
        {"zgbmv m", [](Bufs& b) { qnum_zgbmv("N", 1, &neg1, &n3, &one, &one, zS, D(b.za), &n3, D(b.zx), &one, zS, D(b.zy), &one); },
         "ZGBMV ", 2033, {-1}, nullptr},
        {"ssymv lda", [](Bufs& b) { qnum_ssymv("U", 1, &n3, &fs, b.fa, &two, b.fx, &one, &fs, b.fy, &one); },
         "SSYMV ", 2024, {2, 3}, nullptr},
        {"ssymv uplo", [](Bufs& b) { qnum_ssymv("Q", 1, &n3, &fs, b.fa, &n3, b.fx, &one, &fs, b.fy, &one); },
         "SSYMV ", 2017, {}, "Q"},
        {"dsymv n", [](Bufs& b) { qnum_dsymv("U", 1, &neg1, &ds, b.da, &n3, b.dx, &one, &ds, b.dy, &one); },
         "DSYMV ", 2014, {-1}, nullptr},
        {"chemv incx", [](Bufs& b) { qnum_chemv("L", 1, &n3, cS, F(b.ca), &n3, F(b.cx), &zero, cS, F(b.cy), &one); },
         "qnum_chemv", 2015, {0}, nullptr},
        {"20745 uplo", [](Bufs& b) { qnum_20745("X", 1, &n3, cS, F(b.ca), &n3, F(b.cx), &one, cS, F(b.cy), &one); },
         "qnum_chemv", 2017, {}, "X"},
        {"20746 incy", [](Bufs& b) { qnum_20746("U", 1, &n3, zS, D(b.za), &n3, D(b.zx), &one, zS, D(b.zy), &zero); },
         "qnum_zhemv", 2016, {0}, nullptr},
        {"ssbmv k", [](Bufs& b) { qnum_ssbmv("U", 1, &n3, &neg1, &fs, b.fa, &n3, b.fx, &one, &fs, b.fy, &one); },
         "qnum_ssbmv", 1059, {-1}, nullptr},
        {"dssbmv lda", [](Bufs& b) { qnum_dssbmv("U", 1, &n3, &one, &ds, b.da, &one, b.dx, &one, &ds, b.dy, &one); },
         "qnum_dssbmv", 1060, {1, 1}, nullptr},
        {"chbmv uplo", [](Bufs& b) { qnum_chbmv("-", 1, &n3, &one, cS, F(b.ca), &n3, F(b.cx), &one, cS, F(b.cy), &one); },
         "qnum_chbmv", 2017, {}, "-"},
        {"zhbmv incy", [](Bufs& b) { qnum_zhbmv("L", 1, &n3, &one, zS, D(b.za), &n3, D(b.zx), &one, zS, D(b.zy), &zero); },
         "qnum_zhbmv", 2016, {0}, nullptr},
        {"sspmv n", [](Bufs& b) { qnum_sspmv("U", 1, &neg2, &fs, b.fa, b.fx, &one, &fs, b.fy, &one); },
         "qnum_sspmv", 2014, {-2}, nullptr},
        {"dspmv incx", [](Bufs& b) { qnum_dspmv("U", 1, &n3, &ds, b.da, b.dx, &zero, &ds, b.dy, &one); },
         "qnum_dspmv", 2015, {0}, nullptr},
        {"chpmv incy", [](Bufs& b) { qnum_chpmv("U", 1, &n3, cS, F(b.ca), F(b.cx), &one, cS, F(b.cy), &zero); },
         "qnum_chpmv", 2016, {0}, nullptr},
        {"zhpmv uplo", [](Bufs& b) { qnum_zhpmv("", 0, &n3, zS, D(b.za), D(b.zx), &one, zS, D(b.zy), &one); },
         "qnum_zhpmv", 2017, {}, ""},
        {"strmv diag", [](Bufs& b) { qnum_strmv("U", 1, "N", 1, "Z", 1, &n3, b.fa, &n3, b.fx, &one); },
         "qnum_strmv", 2040, {}, "Z"},
        {"dtrmv trans", [](Bufs& b) { qnum_dtrmv("U", 1, "Q", 1, "N", 1, &n3, b.da, &n3, b.dx, &one); },
         "qnum_dtrmv", 1019, {}, "Q"},
        {"ctrmv lda", [](Bufs& b) { qnum_ctrmv("U", 1, "N", 1, "N", 1, &n3, F(b.ca), &two, F(b.cx), &one); },
         "qnum_ctrmv", 2024, {2, 3}, nullptr},
        {"ztrmv incx", [](Bufs& b) { qnum_ztrmv("U", 1, "N", 1, "N", 1, &n3, D(b.za), &n3, D(b.zx), &zero); },
         "qnum_ztrmv", 2015, {0}, nullptr},
        {"stbmv k", [](Bufs& b) { qnum_stbmv("U", 1, "N", 1, "N", 1, &n3, &neg1, b.fa, &n3, b.fx, &one); },
         "qnum_stbmv", 1059, {-1}, nullptr},
        {"dtbmv lda", [](Bufs& b) { qnum_dtbmv("U", 1, "N", 1, "N", 1, &n3, &two, b.da, &two, b.dx, &one); },
         "qnum_dtbmv", 1060, {2, 2}, nullptr},
        {"ctbmv uplo", [](Bufs& b) { qnum_ctbmv("A", 1, "N", 1, "N", 1, &n3, &one, F(b.ca), &n3, F(b.cx), &one); },
         "qnum_ctbmv", 2017, {}, "A"},
        {"ztbmv n", [](Bufs& b) { qnum_ztbmv("U", 1, "N", 1, "N", 1, &neg1, &one, D(b.za), &n3, D(b.zx), &one); },
         "qnum_ztbmv", 2014, {-1}, nullptr},
        {"stpmv incx", [](Bufs& b) { qnum_stpmv("U", 1, "N", 1, "N", 1, &n3, b.fa, b.fx, &zero); },
         "qnum_stpmv", 2015, {0}, nullptr},
        {"dtpmv diag", [](Bufs& b) { qnum_dtpmv("U", 1, "N", 1, "T", 1, &n3, b.da, b.dx, &one); },
         "qnum_dtpmv", 2040, {}, "T"},
        {"ctpmv trans", [](Bufs& b) { qnum_ctpmv("U", 1, "U", 1, "N", 1, &n3, F(b.ca), F(b.cx), &one); },
         "qnum_ctpmv", 1019, {}, "U"},
        {"ztpmv n", [](Bufs& b) { qnum_ztpmv("U", 1, "N", 1, "N", 1, &neg2, D(b.za), D(b.zx), &one); },
         "qnum_ztpmv", 2014, {-2}, nullptr},
        {"ctrsv uplo", [](Bufs& b) { qnum_ctrsv("N", 1, "N", 1, "N", 1, &n3, F(b.ca), &n3, F(b.cx), &one); },
         "qnum_ctrsv", 2017, {}, "N"},
        {"ztrsv lda", [](Bufs& b) { qnum_ztrsv("L", 1, "C", 1, "U", 1, &n3, D(b.za), &zero, D(b.zx), &one); },
         "qnum_ztrsv", 2024, {0, 3}, nullptr},
        {"stbsv k", [](Bufs& b) { qnum_stbsv("U", "N", "N", &n3, &neg1, b.fa, &n3, b.fx, &one); },
         "STBSV ", 1059, {-1}, nullptr},
        {"dtbsv lda", [](Bufs& b) { qnum_dtbsv("U", "N", "N", &n3, &n3, b.da, &n3, b.dx, &one); },
         "DTBSV ", 1060, {3, 3}, nullptr},
        {"dtbsv diag", [](Bufs& b) { qnum_dtbsv("L", "T", "?", &n3, &one, b.da, &n3, b.dx, &one); },
         "DTBSV ", 2040, {}, "?"},
        {"stpsv uplo", [](Bufs& b) { qnum_stpsv("T", 1, "N", 1, "N", 1, &n3, b.fa, b.fx, &one); },
         "qnum_stpsv", 2017, {}, "T"},
        {"dtpsv incx", [](Bufs& b) { qnum_dtpsv("U", 1, "N", 1, "N", 1, &n3, b.da, b.dx, &zero); },
         "qnum_dtpsv", 2015, {0}, nullptr},
        {"ctpsv trans", [](Bufs& b) { qnum_ctpsv("U", 1, "L", 1, "N", 1, &n3, F(b.ca), F(b.cx), &one); },
         "qnum_ctpsv", 1019, {}, "L"},
        {"ztpsv diag", [](Bufs& b) { qnum_ztpsv("U", 1, "N", 1, "L", 1, &n3, D(b.za), D(b.zx), &one); },
         "qnum_ztpsv", 2040, {}, "L"},
        {"sger m", [](Bufs& b) { qnum_sger(-1, 3, fs, b.fx, 1, b.fy, 1, b.fa, 3); },
         "qnum_sger", 2033, {-1}, nullptr},
        {"dger lda", [](Bufs& b) { qnum_dger(3, 3, ds, b.dx, 1, b.dy, 1, b.da, 2); },
         "qnum_dger", 1020, {2, 3}, nullptr},
        {"cgeru incx", [](Bufs& b) { qnum_cgeru(&m3, &n3, cS, F(b.cx), &zero, F(b.cy), &one, F(b.ca), &m3); },
         "qnum_cgeru", 2015, {0}, nullptr},
        {"zgeru n", [](Bufs& b) { qnum_zgeru(&m3, &neg1, zS, D(b.zx), &one, D(b.zy), &one, D(b.za), &m3); },
         "qnum_zgeru", 2014, {-1}, nullptr},
        {"cgerc incy", [](Bufs& b) { qnum_cgerc(&m3, &n3, cS, F(b.cx), &one, F(b.cy), &zero, F(b.ca), &m3); },
         "CGERC ", 2016, {0}, nullptr},
        {"zgerc lda", [](Bufs& b) { qnum_zgerc(&m3, &n3, zS, D(b.zx), &one, D(b.zy), &one, D(b.za), &one); },
         "ZGERC ", 1020, {1, 3}, nullptr},
        {"ssyr lda", [](Bufs& b) { qnum_ssyr("U", 1, &n3, &fs, b.fx, &one, b.fa, &two); },
         "qnum_ssyr", 2024, {2, 3}, nullptr},
        {"20737 uplo", [](Bufs& b) { qnum_20737("x", 1, &n3, &fs, b.fx, &one, b.fa, &n3); },
         "qnum_ssyr", 2017, {}, "x"},
        {"20738 incx", [](Bufs& b) { qnum_20738("U", 1, &n3, &ds, b.dx, &zero, b.da, &n3); },
         "qnum_dsyr", 2015, {0}, nullptr},
        {"20747 n", [](Bufs& b) { qnum_20747("U", 1, &neg1, &fs, F(b.cx), &one, F(b.ca), &n3); },
         "qnum_cher", 2014, {-1}, nullptr},
        {"zher lda", [](Bufs& b) { qnum_zher("L", 1, &n3, &ds, D(b.zx), &one, D(b.za), &zero); },
         "qnum_zher", 2024, {0, 3}, nullptr},
        {"sspr uplo", [](Bufs& b) { qnum_sspr("?", 1, &n3, &fs, b.fx, &one, b.fa); }, "qnum_sspr", 2017, {}, "?"},
        {"dspr n", [](Bufs& b) { qnum_dspr("U", 1, &neg1, &ds, b.dx, &one, b.da); },
         "qnum_dspr", 2014, {-1}, nullptr},
        {"chpr incx", [](Bufs& b) { qnum_chpr("U", 1, &n3, &fs, F(b.cx), &zero, F(b.ca)); },
         "qnum_chpr", 2015, {0}, nullptr},
        {"zhpr uplo", [](Bufs& b) { qnum_zhpr("W", 1, &n3, &ds, D(b.zx), &one, D(b.za)); },
         "qnum_zhpr", 2017, {}, "W"},
        {"ssyr2 incy", [](Bufs& b) { qnum_ssyr2("U", 1, &n3, &fs, b.fx, &one, b.fy, &zero, b.fa, &n3); },
         "qnum_ssyr2", 2016, {0}, nullptr},
        {"dsyr2 lda", [](Bufs& b) { qnum_dsyr2("U", 1, &n3, &ds, b.dx, &one, b.dy, &one, b.da, &two); },
         "qnum_dsyr2", 2024, {2, 3}, nullptr},
        {"20749 uplo", [](Bufs& b) { qnum_20749("z", 1, &n3, cS, F(b.cx), &one, F(b.cy), &one, F(b.ca), &n3); },
         "qnum_cher2", 2017, {}, "z"},
        {"20750 n", [](Bufs& b) { qnum_20750("U", 1, &neg1, zS, D(b.zx), &one, D(b.zy), &one, D(b.za), &n3); },
         "qnum_zher2", 2014, {-1}, nullptr},
        {"sspr2 incx", [](Bufs& b) { qnum_sspr2("U", 1, &n3, &fs, b.fx, &zero, b.fy, &one, b.fa); },
         "qnum_sspr2", 2015, {0}, nullptr},
        {"dspr2 uplo", [](Bufs& b) { qnum_dspr2("D", 1, &n3, &ds, b.dx, &one, b.dy, &one, b.da); },
         "qnum_dspr2", 2017, {}, "D"},
        {"chpr2 incy", [](Bufs& b) { qnum_chpr2("U", 1, &n3, cS, F(b.cx), &one, F(b.cy), &zero, F(b.ca)); },
         "qnum_chpr2", 2016, {0}, nullptr},
        {"zhpr2 n", [](Bufs& b) { qnum_zhpr2("U", 1, &neg1, zS, D(b.zx), &one, D(b.zy), &one, D(b.za)); },
         "qnum_zhpr2", 2014, {-1}, nullptr},
        {"ccgcg n", [](Bufs& b) { qnum_ccgcg(&zero, F(b.ca), &n3, F(b.cx), &n3); }, "qnum_ccgcg", 604, {0}, nullptr},
        {"ccgcg lda", [](Bufs& b) { qnum_ccgcg(&n3, F(b.ca), &two, F(b.cx), &n3); },
         "qnum_ccgcg", 605, {2, 3}, nullptr},
        {"dccgcg ldb", [](Bufs& b) { qnum_dccgcg(&n3, D(b.za), &n3, D(b.zx), &two); },
         "qnum_dcgcg", 606, {2, 3}, nullptr},
        {"ccbcb n", [](Bufs& b) { qnum_ccbcb(&zero, F(b.ca), &n3, &one, &one, F(b.cx), &n3, &one, &one); },
         "CCBCB ", 14010, {0}, nullptr},
        {"ccbcb nlca", [](Bufs& b) { qnum_ccbcb(&n3, F(b.ca), &n3, &neg1, &one, F(b.cx), &n3, &one, &one); },
         "CCBCB ", 14011, {-1}, nullptr},
        {"ccbcb nuca", [](Bufs& b) { qnum_ccbcb(&n3, F(b.ca), &n3, &one, &neg2, F(b.cx), &n3, &one, &one); },
         "CCBCB ", 14012, {-2}, nullptr},
        {"ccbcb lda", [](Bufs& b) { qnum_ccbcb(&n3, F(b.ca), &two, &one, &one, F(b.cx), &n3, &one, &one); },
         "CCBCB ", 14013, {2, 1, 1}, nullptr},
        {"ccbcb nlcb", [](Bufs& b) { qnum_ccbcb(&n3, F(b.ca), &n3, &one, &one, F(b.cx), &n3, &zero, &one); },
         "CCBCB ", 14014, {0, 1}, nullptr},
        {"ccbcb nucb", [](Bufs& b) { qnum_ccbcb(&n3, F(b.ca), &n3, &one, &one, F(b.cx), &n3, &one, &zero); },
         "CCBCB ", 14015, {0, 1}, nullptr},
        {"dccbcb ldb", [](Bufs& b) { qnum_dccbcb(&n3, D(b.za), &n3, &one, &one, D(b.zx), &four, &two, &two); },
         "DCCBCB", 14016, {4, 2, 2}, nullptr},
        // clang-format on
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.label);
        events.clear();
        Bufs b;
        c.call(b);
        EXPECT_TRUE(b == Bufs()) << "an output was written";
        ASSERT_EQ(1u, events.size());
        EXPECT_EQ(c.tag, events[0].routine);
        EXPECT_EQ(c.code, events[0].code);
        EXPECT_EQ(5, last_type());
        EXPECT_EQ(c.code, last_code());
        for (std::size_t k = 0; k < c.ints.size(); ++k)
            EXPECT_EQ(c.ints[k], int_slot(static_cast<int>(k) + 1)) << "i" << k + 1;
        if (c.text) {
            EXPECT_EQ(c.text, string_slot(1));
        }
    }
}

// The message names the values that the check substituted.
TEST_F(KernelErrors, MessageShowsTheSubstitutedValues) {
    std::string text;
    qnum_error_options(
        QNUM_ERROR_PRINT_PROC,
        +[](int, int, const char*, const char* msg) {
            events.push_back({msg, 0});
        },
        0);
    Bufs b;
    qnum_sgemv("N", 1, &m3, &n3, &fs, b.fa, &two, b.fx, &one, &fs, b.fy, &one);
    ASSERT_EQ(1u, events.size());
    EXPECT_NE(std::string::npos, events[0].routine.find("LDA = 2")) << events[0].routine;
    EXPECT_NE(std::string::npos, events[0].routine.find("M = 3")) << events[0].routine;
}

// The complex band solves report every failed check in turn; k is only checked for n >= 1.
TEST_F(KernelErrors, ComplexBandSolveReportsEveryFailure) {
    Bufs b;
    qnum_ctbsv("Y", 1, "X", 1, "W", 1, &two, &neg2, F(b.ca), &neg2, F(b.cx), &zero);
    std::vector<int> codes;
    for (auto& e : events) {
        EXPECT_EQ("CTBSV ", e.routine);
        codes.push_back(e.code);
    }
    EXPECT_EQ((std::vector<int>{14018, 14019, 14020, 14021, 14022, 14023}), codes);
    EXPECT_EQ(14023, last_code());
    EXPECT_EQ("W", string_slot(1));
    events.clear();
    qnum_dctbsv("U", 1, "N", 1, "N", 1, &neg1, &neg1, D(b.za), &one, D(b.zx), &one);
    ASSERT_EQ(1u, events.size());
    EXPECT_EQ(14017, events[0].code);
    EXPECT_EQ("CTBSV ", events[0].routine);
    EXPECT_TRUE(b == Bufs());
}

// The real full triangular solves make no checks: bad input changes nothing and raises
// nothing. Band widths are bounded only by a positive size.
TEST_F(KernelErrors, UncheckedAndBoundaryCases) {
    Bufs b;
    qnum_strsv("X", "N", "N", 3, b.fa, 3, b.fx, 1);
    qnum_dtrsv("U", "N", "N", -1, b.da, 3, b.dx, 1);
    qnum_dtrsv("U", "N", "N", 3, b.da, 3, b.dx, 0);
    qnum_strsv("U", "N", "N", 3, b.fa, 2, b.fx, 1);
    qnum_sgbmv("N", 1, &zero, &n3, &seven, &one, &fs, b.fa, &nine, b.fx, &one, &fs, b.fy, &one);
    qnum_dsgbmv("N", 1, &m3, &zero, &one, &seven, &ds, b.da, &nine, b.dx, &one, &ds, b.dy, &one);
    EXPECT_TRUE(events.empty());
    EXPECT_TRUE(b == Bufs());
}

// Each public entry point computes exactly what its template computes on the same data, so
// arguments reach the template in the right places; options are taken in either case.
TEST(KernelExports, MatchTheTemplates) {
    using Fn = std::function<void(Bufs&)>;
    const std::vector<std::tuple<const char*, Fn, Fn>> cases = {
        {"sdot", [](Bufs& b) { b.fy[0] = qnum_sdot(5, b.fx, 2, b.fa, -1); },
         [](Bufs& b) { b.fy[0] = kern::dot(5, b.fx, 2, b.fa, -1); }},
        {"ddot", [](Bufs& b) { b.dy[0] = qnum_ddot(40, b.da, 1, b.da + 1, 1); },
         [](Bufs& b) { b.dy[0] = kern::dot(40, b.da, 1, b.da + 1, 1); }},
        {"sdsdot", [](Bufs& b) { b.fy[0] = qnum_sdsdot(4, 2.0f, b.fx, 1, b.fa, 3); },
         [](Bufs& b) {
             double s = 2;
             for (int i = 0; i < 4; ++i) s += double(b.fx[i]) * b.fa[3 * i];
             b.fy[0] = float(s);
         }},
        {"dsdot", [](Bufs& b) { b.dy[0] = qnum_dsdot(4, b.fx, -1, b.fa, 1); },
         [](Bufs& b) {
             double s = 0;
             for (int i = 0; i < 4; ++i) s += double(b.fx[3 - i]) * b.fa[i];
             b.dy[0] = s;
         }},
        {"saxpy", [](Bufs& b) { qnum_saxpy(5, 0.5f, b.fx, 1, b.fy, 2); },
         [](Bufs& b) { kern::axpy(5, 0.5f, b.fx, 1, b.fy, 2); }},
        {"daxpy", [](Bufs& b) { qnum_daxpy(33, 0.5, b.da, 1, b.da + 31, 1); },
         [](Bufs& b) { kern::axpy(33, 0.5, b.da, 1, b.da + 31, 1); }},
        {"sscal",
         [](Bufs& b) {
             qnum_sscal(5, 3.0f, b.fx, 2);
             qnum_sscal(5, 3.0f, b.fy, -1);
         },
         [](Bufs& b) { kern::scal(5, 3.0f, b.fx, 2); }},
        {"dscal",
         [](Bufs& b) {
             qnum_dscal(5, 3.0, b.dx, 3);
             qnum_dscal(5, 3.0, b.dy, 0);
         },
         [](Bufs& b) { kern::scal(5, 3.0, b.dx, 3); }},
        {"scopy", [](Bufs& b) { qnum_scopy(5, b.fa, 2, b.fy, -3); },
         [](Bufs& b) { kern::copy(5, b.fa, 2, b.fy, -3); }},
        {"dcopy", [](Bufs& b) { qnum_dcopy(5, b.da, 1, b.dy, 1); },
         [](Bufs& b) { kern::copy(5, b.da, 1, b.dy, 1); }},
        {"sswap/20735",
         [](Bufs& b) {
             qnum_sswap(4, b.fx, 1, b.fy, 3);
             qnum_20735(2, b.fa, 1, b.fa + 10, -1);
         },
         [](Bufs& b) {
             kern::swap(4, b.fx, 1, b.fy, 3);
             kern::swap(2, b.fa, 1, b.fa + 10, -1);
         }},
        {"dswap/20736",
         [](Bufs& b) {
             qnum_dswap(4, b.dx, -2, b.dy, 1);
             qnum_20736(3, b.da, 2, b.da + 1, 2);
         },
         [](Bufs& b) {
             kern::swap(4, b.dx, -2, b.dy, 1);
             kern::swap(3, b.da, 2, b.da + 1, 2);
         }},
        {"srot", [](Bufs& b) { qnum_srot(4, b.fx, 1, b.fy, 2, 0.6f, 0.8f); },
         [](Bufs& b) { kern::rot(4, b.fx, 1, b.fy, 2, 0.6f, 0.8f); }},
        {"drot", [](Bufs& b) { qnum_drot(4, b.dx, 1, b.dy, -2, 0.6, 0.8); },
         [](Bufs& b) { kern::rot(4, b.dx, 1, b.dy, -2, 0.6, 0.8); }},
        {"srotm",
         [](Bufs& b) {
             const float p[5] = {-1, 1, 2, 3, 4};
             qnum_srotm(4, b.fx, 1, b.fy, 2, p);
         },
         [](Bufs& b) {
             const float p[5] = {-1, 1, 2, 3, 4};
             kern::rotm(4, b.fx, 1, b.fy, 2, p);
         }},
        {"drotm",
         [](Bufs& b) {
             const double p[5] = {1, 1, 2, 3, 4};
             qnum_drotm(4, b.dx, -1, b.dy, 2, p);
         },
         [](Bufs& b) {
             const double p[5] = {1, 1, 2, 3, 4};
             kern::rotm(4, b.dx, -1, b.dy, 2, p);
         }},
        {"srotg", [](Bufs& b) { qnum_srotg(b.fx, b.fx + 1, b.fx + 2, b.fx + 3); },
         [](Bufs& b) { kern::rotg(b.fx, b.fx + 1, b.fx + 2, b.fx + 3); }},
        {"drotg", [](Bufs& b) { qnum_drotg(b.dx, b.dx + 1, b.dx + 2, b.dx + 3); },
         [](Bufs& b) { kern::rotg(b.dx, b.dx + 1, b.dx + 2, b.dx + 3); }},
        {"srotmg", [](Bufs& b) { qnum_srotmg(b.fa, b.fa + 1, b.fa + 2, b.fa + 3, b.fx); },
         [](Bufs& b) { kern::rotmg(b.fa, b.fa + 1, b.fa + 2, b.fa[3], b.fx); }},
        {"drotmg", [](Bufs& b) { qnum_drotmg(b.da, b.da + 1, b.da + 2, b.da + 3, b.dx); },
         [](Bufs& b) { kern::rotmg(b.da, b.da + 1, b.da + 2, b.da[3], b.dx); }},
        {"nrm2 asum iamax",
         [](Bufs& b) {
             b.fy[0] = qnum_snrm2(9, b.fa, 3);
             b.dy[0] = qnum_dnrm2(9, b.da, -2);
             b.fy[1] = qnum_sasum(9, b.fx, 1);
             b.dy[1] = qnum_dasum(9, b.dx, 1);
             b.fy[2] = float(qnum_isamax(9, b.fx, 1));
             b.dy[2] = qnum_idamax(9, b.dx, 1);
             b.fy[3] = qnum_sasum(9, b.fx, 0) + qnum_isamax(9, b.fx, -1) + qnum_dasum(9, b.dx, -1) +
                       qnum_idamax(9, b.dx, 0);
         },
         [](Bufs& b) {
             b.fy[0] = kern::nrm2(9, b.fa, 3);
             b.dy[0] = kern::nrm2(9, b.da, -2);
             b.fy[1] = kern::asum(9, b.fx, 1);
             b.dy[1] = kern::asum(9, b.dx, 1);
             b.fy[2] = float(kern::iamax(9, b.fx, 1));
             b.dy[2] = kern::iamax(9, b.dx, 1);
             b.fy[3] = 0;
         }},
        {"caxpy zaxpy",
         [](Bufs& b) {
             const int n = 5, i2 = 2;
             qnum_caxpy(&n, cS, F(b.cx), &one, F(b.cy), &i2);
             qnum_zaxpy(&n, zS, D(b.zx), &neg1, D(b.zy), &one);
         },
         [](Bufs& b) {
             kern::axpy(5, cs, b.cx, 1, b.cy, 2);
             kern::axpy(5, zs, b.zx, -1, b.zy, 1);
         }},
        {"ccopy zcopy",
         [](Bufs& b) {
             qnum_ccopy(&four, F(b.ca), &two, F(b.cy), &one);
             qnum_zcopy(&four, D(b.za), &one, D(b.zy), &neg1);
         },
         [](Bufs& b) {
             kern::copy(4, b.ca, 2, b.cy, 1);
             kern::copy(4, b.za, 1, b.zy, -1);
         }},
        {"cscal zscal csscal zdscal",
         [](Bufs& b) {
             const float r = 3;
             const double q = 3;
             qnum_cscal(&four, cS, F(b.cx), &two);
             qnum_zscal(&four, zS, D(b.zx), &one);
             qnum_csscal(&four, &r, F(b.cy), &one);
             qnum_zdscal(&four, &q, D(b.zy), &two);
             qnum_zdscal(&four, &q, D(b.za), &zero);
             qnum_cscal(&four, cS, F(b.ca), &neg1);
         },
         [](Bufs& b) {
             kern::scal(4, cs, b.cx, 2);
             kern::scal(4, zs, b.zx, 1);
             kern::rscal(4, 3.0f, b.cy, 1);
             kern::rscal(4, 3.0, b.zy, 2);
         }},
        {"cswap zswap",
         [](Bufs& b) {
             qnum_cswap(&four, F(b.cx), &one, F(b.cy), &neg1);
             qnum_zswap(&four, D(b.zx), &two, D(b.zy), &one);
         },
         [](Bufs& b) {
             kern::swap(4, b.cx, 1, b.cy, -1);
             kern::swap(4, b.zx, 2, b.zy, 1);
         }},
        {"csrot zdrot",
         [](Bufs& b) {
             const float c = 0.6f, s = 0.8f;
             const double dc = 0.6, dsn = 0.8;
             qnum_csrot(&four, F(b.cx), &one, F(b.cy), &two, &c, &s);
             qnum_zdrot(&four, D(b.zx), &neg1, D(b.zy), &one, &dc, &dsn);
         },
         [](Bufs& b) {
             kern::rot(4, b.cx, 1, b.cy, 2, 0.6f, 0.8f);
             kern::rot(4, b.zx, -1, b.zy, 1, 0.6, 0.8);
         }},
        {"crotg zrotg",
         [](Bufs& b) {
             qnum_crotg(F(b.cx), F(b.cx + 1), b.fy, F(b.cx + 2));
             qnum_zrotg(D(b.zx), D(b.zx + 1), b.dy, D(b.zx + 2));
         },
         [](Bufs& b) {
             kern::rotg(b.cx, b.cx + 1, b.fy, b.cx + 2);
             kern::rotg(b.zx, b.zx + 1, b.dy, b.zx + 2);
         }},
        {"complex dots",
         [](Bufs& b) {
             const int n = 7;
             qnum_f_complex u = qnum_cdotu(&n, F(b.ca), &two, F(b.cx), &one),
                            c = qnum_cdotc(&n, F(b.ca), &one, F(b.cx), &neg1);
             qnum_d_complex v = qnum_zdotu(&n, D(b.za), &one, D(b.zx), &one),
                            d = qnum_zdotc(&n, D(b.za), &neg1, D(b.zx), &two);
             b.cy[0] = C(u.re, u.im);
             b.cy[1] = C(c.re, c.im);
             b.zy[0] = Z(v.re, v.im);
             b.zy[1] = Z(d.re, d.im);
         },
         [](Bufs& b) {
             b.cy[0] = kern::dot(7, b.ca, 2, b.cx, 1);
             b.cy[1] = kern::dotc(7, b.ca, 1, b.cx, -1);
             b.zy[0] = kern::dot(7, b.za, 1, b.zx, 1);
             b.zy[1] = kern::dotc(7, b.za, -1, b.zx, 2);
         }},
        {"complex norms",
         [](Bufs& b) {
             const int n = 9;
             b.fy[0] = qnum_scnrm2(&n, F(b.ca), &two);
             b.dy[0] = qnum_dznrm2(&n, D(b.za), &neg1);
             b.fy[1] = qnum_scasum(&n, F(b.cx), &one);
             b.dy[1] = qnum_dzasum(&n, D(b.zx), &one);
             b.fy[2] = float(qnum_icamax(&n, F(b.cx), &one));
             b.dy[2] = qnum_izamax(&n, D(b.zx), &one);
             b.fy[3] = qnum_scasum(&n, F(b.cx), &zero) + qnum_izamax(&n, D(b.zx), &neg1);
         },
         [](Bufs& b) {
             b.fy[0] = kern::nrm2(9, b.ca, 2);
             b.dy[0] = kern::nrm2(9, b.za, -1);
             b.fy[1] = kern::asum(9, b.cx, 1);
             b.dy[1] = kern::asum(9, b.zx, 1);
             b.fy[2] = float(kern::iamax(9, b.cx, 1));
             b.dy[2] = kern::iamax(9, b.zx, 1);
             b.fy[3] = 0;
         }},
        {"gemv",
         [](Bufs& b) {
             qnum_sgemv("t", 1, &four, &m3, &fs, b.fa, &four, b.fx, &one, &fs, b.fy, &two);
             qnum_dgemv("n", 1, &four, &m3, &ds, b.da, &four, b.dx, &neg1, &ds, b.dy, &one);
             qnum_cgemv("c", 1, &m3, &four, cS, F(b.ca), &four, F(b.cx), &one, cS, F(b.cy), &one);
             qnum_zgemv("N", 1, &m3, &four, zS, D(b.za), &m3, D(b.zx), &two, zS, D(b.zy), &neg1);
         },
         [](Bufs& b) {
             kern::gemv('T', 4, 3, fs, b.fa, 4, b.fx, 1, fs, b.fy, 2);
             kern::gemv('N', 4, 3, ds, b.da, 4, b.dx, -1, ds, b.dy, 1);
             kern::gemv('C', 3, 4, cs, b.ca, 4, b.cx, 1, cs, b.cy, 1);
             kern::gemv('N', 3, 4, zs, b.za, 3, b.zx, 2, zs, b.zy, -1);
         }},
        {"gbmv",
         [](Bufs& b) {
             qnum_sgbmv("n", 1, &four, &m3, &two, &one, &fs, b.fa, &four, b.fx, &one, &fs, b.fy, &one);
             qnum_dsgbmv("T", 1, &four, &m3, &one, &two, &ds, b.da, &four, b.dx, &one, &ds, b.dy, &two);
             qnum_cgbmv("C", 1, &m3, &four, &one, &one, cS, F(b.ca), &m3, F(b.cx), &one, cS, F(b.cy), &one);
             qnum_zgbmv("N", 1, &m3, &m3, &two, &zero, zS, D(b.za), &m3, D(b.zx), &one, zS, D(b.zy), &one);
         },
         [](Bufs& b) {
             kern::gbmv('N', 4, 3, 2, 1, fs, b.fa, 4, b.fx, 1, fs, b.fy, 1);
             kern::gbmv('T', 4, 3, 1, 2, ds, b.da, 4, b.dx, 1, ds, b.dy, 2);
             kern::gbmv('C', 3, 4, 1, 1, cs, b.ca, 3, b.cx, 1, cs, b.cy, 1);
             kern::gbmv('N', 3, 3, 2, 0, zs, b.za, 3, b.zx, 1, zs, b.zy, 1);
         }},
        {"symv hemv",
         [](Bufs& b) {
             qnum_ssymv("l", 1, &four, &fs, b.fa, &four, b.fx, &one, &fs, b.fy, &one);
             qnum_dsymv("U", 1, &four, &ds, b.da, &four, b.dx, &two, &ds, b.dy, &one);
             qnum_chemv("U", 1, &m3, cS, F(b.ca), &m3, F(b.cx), &one, cS, F(b.cy), &one);
             qnum_20746("L", 1, &m3, zS, D(b.za), &four, D(b.zx), &one, zS, D(b.zy), &neg1);
         },
         [](Bufs& b) {
             kern::hemv('L', 4, fs, b.fa, 4, b.fx, 1, fs, b.fy, 1);
             kern::hemv('U', 4, ds, b.da, 4, b.dx, 2, ds, b.dy, 1);
             kern::hemv('U', 3, cs, b.ca, 3, b.cx, 1, cs, b.cy, 1);
             kern::hemv('L', 3, zs, b.za, 4, b.zx, 1, zs, b.zy, -1);
         }},
        {"sbmv hbmv",
         [](Bufs& b) {
             qnum_ssbmv("u", 1, &four, &one, &fs, b.fa, &two, b.fx, &one, &fs, b.fy, &one);
             qnum_dssbmv("L", 1, &four, &two, &ds, b.da, &m3, b.dx, &one, &ds, b.dy, &one);
             qnum_chbmv("U", 1, &four, &one, cS, F(b.ca), &two, F(b.cx), &one, cS, F(b.cy), &one);
             qnum_zhbmv("L", 1, &four, &one, zS, D(b.za), &two, D(b.zx), &neg1, zS, D(b.zy), &one);
         },
         [](Bufs& b) {
             kern::hbmv('U', 4, 1, fs, b.fa, 2, b.fx, 1, fs, b.fy, 1);
             kern::hbmv('L', 4, 2, ds, b.da, 3, b.dx, 1, ds, b.dy, 1);
             kern::hbmv('U', 4, 1, cs, b.ca, 2, b.cx, 1, cs, b.cy, 1);
             kern::hbmv('L', 4, 1, zs, b.za, 2, b.zx, -1, zs, b.zy, 1);
         }},
        {"spmv hpmv",
         [](Bufs& b) {
             qnum_sspmv("U", 1, &four, &fs, b.fa, b.fx, &one, &fs, b.fy, &one);
             qnum_dspmv("l", 1, &four, &ds, b.da, b.dx, &one, &ds, b.dy, &two);
             qnum_chpmv("U", 1, &four, cS, F(b.ca), F(b.cx), &one, cS, F(b.cy), &one);
             qnum_zhpmv("L", 1, &four, zS, D(b.za), D(b.zx), &one, zS, D(b.zy), &one);
         },
         [](Bufs& b) {
             kern::hpmv('U', 4, fs, b.fa, b.fx, 1, fs, b.fy, 1);
             kern::hpmv('L', 4, ds, b.da, b.dx, 1, ds, b.dy, 2);
             kern::hpmv('U', 4, cs, b.ca, b.cx, 1, cs, b.cy, 1);
             kern::hpmv('L', 4, zs, b.za, b.zx, 1, zs, b.zy, 1);
         }},
        {"trmv tbmv tpmv",
         [](Bufs& b) {
             qnum_strmv("u", 1, "t", 1, "n", 1, &four, b.fa, &four, b.fx, &one);
             qnum_dtbmv("L", 1, "N", 1, "U", 1, &four, &one, b.da, &two, b.dx, &two);
             qnum_ctpmv("U", 1, "C", 1, "N", 1, &four, F(b.ca), F(b.cx), &one);
             qnum_ztrmv("L", 1, "T", 1, "N", 1, &m3, D(b.za), &four, D(b.zx), &neg1);
             qnum_stbmv("U", 1, "N", 1, "N", 1, &four, &two, b.fa + 20, &m3, b.fy, &one);
             qnum_dtpmv("L", 1, "T", 1, "U", 1, &four, b.da + 20, b.dy, &one);
             qnum_ctrmv("L", 1, "N", 1, "U", 1, &four, F(b.ca + 20), &four, F(b.cy), &one);
             qnum_ztbmv("U", 1, "C", 1, "N", 1, &four, &one, D(b.za + 20), &two, D(b.zy), &one);
         },
         [](Bufs& b) {
             kern::trmv('U', 'T', 'N', 4, b.fa, 4, b.fx, 1);
             kern::tbmv('L', 'N', 'U', 4, 1, b.da, 2, b.dx, 2);
             kern::tpmv('U', 'C', 'N', 4, b.ca, b.cx, 1);
             kern::trmv('L', 'T', 'N', 3, b.za, 4, b.zx, -1);
             kern::tbmv('U', 'N', 'N', 4, 2, b.fa + 20, 3, b.fy, 1);
             kern::tpmv('L', 'T', 'U', 4, b.da + 20, b.dy, 1);
             kern::trmv('L', 'N', 'U', 4, b.ca + 20, 4, b.cy, 1);
             kern::tbmv('U', 'C', 'N', 4, 1, b.za + 20, 2, b.zy, 1);
         }},
        {"trsv tbsv tpsv",
         [](Bufs& b) {
             qnum_strsv("l", "t", "n", 4, b.fa, 4, b.fx, 1);
             qnum_dtrsv("U", "N", "U", 4, b.da, 5, b.dx, -1);
             qnum_ctrsv("U", 1, "C", 1, "N", 1, &four, F(b.ca), &four, F(b.cx), &one);
             qnum_ztrsv("L", 1, "N", 1, "N", 1, &m3, D(b.za), &m3, D(b.zx), &two);
             qnum_stbsv("U", "T", "N", &four, &one, b.fa + 9, &two, b.fy, &one);
             qnum_dtbsv("l", "n", "u", &four, &two, b.da + 9, &m3, b.dy, &two);
             qnum_ctbsv("L", 1, "C", 1, "N", 1, &four, &one, F(b.ca + 9), &two, F(b.cy), &one);
             qnum_dctbsv("U", 1, "N", 1, "N", 1, &four, &two, D(b.za + 9), &m3, D(b.zy), &neg1);
             qnum_stpsv("U", 1, "N", 1, "N", 1, &four, b.fa + 40, b.fx + 8, &one);
             qnum_dtpsv("L", 1, "T", 1, "N", 1, &four, b.da + 40, b.dx + 8, &one);
             qnum_ctpsv("U", 1, "T", 1, "U", 1, &four, F(b.ca + 40), F(b.cx + 8), &one);
             qnum_ztpsv("L", 1, "C", 1, "N", 1, &four, D(b.za + 40), D(b.zx + 8), &one);
         },
         [](Bufs& b) {
             kern::trsv('L', 'T', 'N', 4, b.fa, 4, b.fx, 1);
             kern::trsv('U', 'N', 'U', 4, b.da, 5, b.dx, -1);
             kern::trsv('U', 'C', 'N', 4, b.ca, 4, b.cx, 1);
             kern::trsv('L', 'N', 'N', 3, b.za, 3, b.zx, 2);
             kern::tbsv('U', 'T', 'N', 4, 1, b.fa + 9, 2, b.fy, 1);
             kern::tbsv('L', 'N', 'U', 4, 2, b.da + 9, 3, b.dy, 2);
             kern::tbsv('L', 'C', 'N', 4, 1, b.ca + 9, 2, b.cy, 1);
             kern::tbsv('U', 'N', 'N', 4, 2, b.za + 9, 3, b.zy, -1);
             kern::tpsv('U', 'N', 'N', 4, b.fa + 40, b.fx + 8, 1);
             kern::tpsv('L', 'T', 'N', 4, b.da + 40, b.dx + 8, 1);
             kern::tpsv('U', 'T', 'U', 4, b.ca + 40, b.cx + 8, 1);
             kern::tpsv('L', 'C', 'N', 4, b.za + 40, b.zx + 8, 1);
         }},
        {"ger",
         [](Bufs& b) {
             qnum_sger(4, 3, fs, b.fx, 1, b.fy, 2, b.fa, 5);
             qnum_dger(3, 4, ds, b.dx, -1, b.dy, 1, b.da, 3);
             qnum_cgeru(&m3, &four, cS, F(b.cx), &one, F(b.cy), &one, F(b.ca), &m3);
             qnum_zgeru(&four, &m3, zS, D(b.zx), &two, D(b.zy), &one, D(b.za), &four);
             qnum_cgerc(&m3, &four, cS, F(b.cx), &one, F(b.cy), &neg1, F(b.ca + 20), &four);
             qnum_zgerc(&four, &m3, zS, D(b.zx), &one, D(b.zy), &one, D(b.za + 20), &four);
         },
         [](Bufs& b) {
             kern::ger(4, 3, fs, b.fx, 1, b.fy, 2, b.fa, 5);
             kern::ger(3, 4, ds, b.dx, -1, b.dy, 1, b.da, 3);
             kern::ger(3, 4, cs, b.cx, 1, b.cy, 1, b.ca, 3);
             kern::ger(4, 3, zs, b.zx, 2, b.zy, 1, b.za, 4);
             kern::gerc(3, 4, cs, b.cx, 1, b.cy, -1, b.ca + 20, 4);
             kern::gerc(4, 3, zs, b.zx, 1, b.zy, 1, b.za + 20, 4);
         }},
        {"syr her spr hpr",
         [](Bufs& b) {
             qnum_ssyr("u", 1, &four, &fs, b.fx, &one, b.fa, &four);
             qnum_20738("L", 1, &four, &ds, b.dx, &two, b.da, &four);
             qnum_cher("U", 1, &m3, &fs, F(b.cx), &one, F(b.ca), &m3);
             qnum_20748("L", 1, &m3, &ds, D(b.zx), &neg1, D(b.za), &four);
             qnum_sspr("L", 1, &four, &fs, b.fy, &one, b.fa + 30);
             qnum_dspr("U", 1, &four, &ds, b.dy, &one, b.da + 30);
             qnum_chpr("L", 1, &four, &fs, F(b.cy), &one, F(b.ca + 30));
             qnum_zhpr("U", 1, &four, &ds, D(b.zy), &two, D(b.za + 30));
         },
         [](Bufs& b) {
             kern::her('U', 4, fs, b.fx, 1, b.fa, 4);
             kern::her('L', 4, ds, b.dx, 2, b.da, 4);
             kern::her('U', 3, fs, b.cx, 1, b.ca, 3);
             kern::her('L', 3, ds, b.zx, -1, b.za, 4);
             kern::hpr('L', 4, fs, b.fy, 1, b.fa + 30);
             kern::hpr('U', 4, ds, b.dy, 1, b.da + 30);
             kern::hpr('L', 4, fs, b.cy, 1, b.ca + 30);
             kern::hpr('U', 4, ds, b.zy, 2, b.za + 30);
         }},
        {"syr2 her2 spr2 hpr2",
         [](Bufs& b) {
             qnum_ssyr2("L", 1, &four, &fs, b.fx, &one, b.fy, &two, b.fa, &four);
             qnum_dsyr2("u", 1, &four, &ds, b.dx, &one, b.dy, &one, b.da, &five);
             qnum_20749("U", 1, &m3, cS, F(b.cx), &one, F(b.cy), &one, F(b.ca), &m3);
             qnum_zher2("L", 1, &m3, zS, D(b.zx), &one, D(b.zy), &neg1, D(b.za), &m3);
             qnum_sspr2("U", 1, &four, &fs, b.fx, &one, b.fy, &one, b.fa + 30);
             qnum_dspr2("L", 1, &four, &ds, b.dx, &one, b.dy, &one, b.da + 30);
             qnum_chpr2("U", 1, &four, cS, F(b.cx), &one, F(b.cy), &one, F(b.ca + 30));
             qnum_zhpr2("L", 1, &four, zS, D(b.zx), &one, D(b.zy), &one, D(b.za + 30));
         },
         [](Bufs& b) {
             kern::her2('L', 4, fs, b.fx, 1, b.fy, 2, b.fa, 4);
             kern::her2('U', 4, ds, b.dx, 1, b.dy, 1, b.da, 5);
             kern::her2('U', 3, cs, b.cx, 1, b.cy, 1, b.ca, 3);
             kern::her2('L', 3, zs, b.zx, 1, b.zy, -1, b.za, 3);
             kern::hpr2('U', 4, fs, b.fx, 1, b.fy, 1, b.fa + 30);
             kern::hpr2('L', 4, ds, b.dx, 1, b.dy, 1, b.da + 30);
             kern::hpr2('U', 4, cs, b.cx, 1, b.cy, 1, b.ca + 30);
             kern::hpr2('L', 4, zs, b.zx, 1, b.zy, 1, b.za + 30);
         }},
    };
    for (auto& [label, exported, internal] : cases) {
        SCOPED_TRACE(label);
        Bufs p, q;
        exported(p);
        internal(q);
        EXPECT_TRUE(p == q);
        EXPECT_FALSE(p == Bufs()) << "the call computed nothing";
    }
}

// The numbered exports are the named kernels under a second name.
TEST(KernelExports, NumberedAliasesShareTheCode) {
    EXPECT_EQ(reinterpret_cast<void*>(&qnum_20723), reinterpret_cast<void*>(&qnum_saxpy));
    EXPECT_EQ(reinterpret_cast<void*>(&qnum_20724), reinterpret_cast<void*>(&qnum_daxpy));
    EXPECT_EQ(reinterpret_cast<void*>(&qnum_20729), reinterpret_cast<void*>(&qnum_sscal));
    EXPECT_EQ(reinterpret_cast<void*>(&qnum_20730), reinterpret_cast<void*>(&qnum_dscal));
    EXPECT_EQ(reinterpret_cast<void*>(&qnum_20735), reinterpret_cast<void*>(&qnum_sswap));
    EXPECT_EQ(reinterpret_cast<void*>(&qnum_20736), reinterpret_cast<void*>(&qnum_dswap));
    EXPECT_EQ(reinterpret_cast<void*>(&qnum_20737), reinterpret_cast<void*>(&qnum_ssyr));
    EXPECT_EQ(reinterpret_cast<void*>(&qnum_20738), reinterpret_cast<void*>(&qnum_dsyr));
    EXPECT_EQ(reinterpret_cast<void*>(&qnum_20745), reinterpret_cast<void*>(&qnum_chemv));
    EXPECT_EQ(reinterpret_cast<void*>(&qnum_20746), reinterpret_cast<void*>(&qnum_zhemv));
    EXPECT_EQ(reinterpret_cast<void*>(&qnum_20747), reinterpret_cast<void*>(&qnum_cher));
    EXPECT_EQ(reinterpret_cast<void*>(&qnum_20748), reinterpret_cast<void*>(&qnum_zher));
    EXPECT_EQ(reinterpret_cast<void*>(&qnum_20749), reinterpret_cast<void*>(&qnum_cher2));
    EXPECT_EQ(reinterpret_cast<void*>(&qnum_20750), reinterpret_cast<void*>(&qnum_zher2));
}

// Kernels share no state: threads computing at once get the single-threaded results, and
// each thread sees only its own errors.
TEST(KernelThreads, ConcurrentCallsAgreeWithSerialOnes) {
    qnum_skip_signal_handler();
    QuietErrors quiet;
    const int n = 300;
    auto work = [n](int seed, double* out) {
        Rng rng(seed);
        std::vector<double> a(n * n), x(n), y(n, 1.0);
        for (auto& v : a) v = rng.next<double>();
        for (auto& v : x) v = rng.next<double>();
        const double alpha = 1, beta = 0.5;
        const int inc = 1;
        qnum_dgemv("T", 1, &n, &n, &alpha, a.data(), &n, x.data(), &inc, &beta, y.data(), &inc);
        out[0] = qnum_ddot(n, y.data(), 1, x.data(), 1) + qnum_dnrm2(n, y.data(), 1);
    };
    double serial[4], threaded[4];
    for (int t = 0; t < 4; ++t) work(t, &serial[t]);
    std::vector<std::thread> threads;
    int codes[4] = {};
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            QuietErrors quiet_here;
            for (int r = 0; r < 20; ++r) work(t, &threaded[t]);
            const int bad = -t - 1;
            qnum_dgemv("N", 1, &bad, &bad, &ds, nullptr, &one, nullptr, &one, &ds, nullptr, &one);
            codes[t] = int_slot(1) == bad && last_code() == 2033 ? 1 : 0;
        });
    for (auto& th : threads) th.join();
    for (int t = 0; t < 4; ++t) {
        EXPECT_EQ(serial[t], threaded[t]);
        EXPECT_EQ(1, codes[t]);
    }
}

}  // namespace
}  // namespace qnum::test
