// The public kernels: argument errors with their tags, codes and substitution values, the
// calling conventions where the wrappers do more than forward, the helpers, numbered
// aliases.
#include "kernel_test.hpp"
#include "kernels/helpers.hpp"

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

void dgemm(Bufs& b, const char* ta, const char* tb, int m, int n, int k, int lda, int ldb, int ldc) {
    qnum_dgemm(ta, 1, tb, 1, &m, &n, &k, &ds, b.da, &lda, b.dx, &ldb, &ds, b.dy, &ldc);
}
void dsymm(Bufs& b, const char* side, const char* uplo, int m, int n, int lda, int ldb, int ldc) {
    qnum_dsymm(side, 1, uplo, 1, &m, &n, &ds, b.da, &lda, b.dx, &ldb, &ds, b.dy, &ldc);
}
void dsyr2k(Bufs& b, const char* uplo, const char* trans, int n, int k, int lda, int ldb, int ldc) {
    qnum_dsyr2k(uplo, 1, trans, 1, &n, &k, &ds, b.da, &lda, b.dx, &ldb, &ds, b.dy, &ldc);
}
void dtrsm(Bufs& b, const char* side, const char* uplo, const char* ta, const char* diag, int m, int n, int lda, int ldb) {
    qnum_dtrsm(side, 1, uplo, 1, ta, 1, diag, 1, &m, &n, &ds, b.da, &lda, b.dx, &ldb);
}

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
    std::function<void(Bufs&)> call;
    const char* tag;
    int code;
    std::vector<int> ints;
    const char* text = nullptr;  // string slot 1, when the check sets one
};
#define K(...) [](Bufs& b) { __VA_ARGS__; }

// One call per check: the tag is pushed, the code raised with its values, nothing written.
TEST_F(KernelErrors, EveryCheckReportsItsCodeAndValuesAndWritesNothing) {
    const std::vector<ErrorCase> cases = {
        // clang-format off
        {K(qnum_sgemv("N", 1, &neg1, &n3, &fs, b.fa, &n3, b.fx, &one, &fs, b.fy, &one)), "SGEMV ", 2033, {-1}},
        {K(qnum_sgemv("N", 1, &m3, &neg2, &fs, b.fa, &n3, b.fx, &one, &fs, b.fy, &one)), "SGEMV ", 2014, {-2}},
        {K(qnum_sgemv("N", 1, &m3, &n3, &fs, b.fa, &two, b.fx, &one, &fs, b.fy, &one)), "SGEMV ", 1020, {2, 3}},
        {K(qnum_sgemv("N", 1, &zero, &n3, &fs, b.fa, &zero, b.fx, &one, &fs, b.fy, &one)), "SGEMV ", 1020, {0, 0}},
        {K(qnum_sgemv("T", 1, &four, &two, &fs, b.fa, &two, b.fx, &one, &fs, b.fy, &one)), "SGEMV ", 1020, {2, 4}},
        {K(qnum_sgemv("N", 1, &m3, &n3, &fs, b.fa, &n3, b.fx, &zero, &fs, b.fy, &one)), "SGEMV ", 2015, {0}},
        {K(qnum_sgemv("N", 1, &m3, &n3, &fs, b.fa, &n3, b.fx, &one, &fs, b.fy, &zero)), "SGEMV ", 2016, {0}},
        {K(qnum_sgemv("X", 1, &m3, &n3, &fs, b.fa, &n3, b.fx, &one, &fs, b.fy, &one)), "SGEMV ", 1019, {}, "X"},
        {K(qnum_sgemv("X", 1, &neg1, &n3, &fs, b.fa, &n3, b.fx, &one, &fs, b.fy, &one)), "SGEMV ", 2033, {-1}},
        {K(qnum_dgemv("xyz", 3, &m3, &n3, &ds, b.da, &n3, b.dx, &one, &ds, b.dy, &one)), "DGEMV ", 1019, {}, "xyz"},
        {K(qnum_sgbmv("N", 1, &m3, &n3, &neg1, &one, &fs, b.fa, &n3, b.fx, &one, &fs, b.fy, &one)), "SGBMV ", 5029, {-1, 3}},
        {K(qnum_sgbmv("N", 1, &m3, &n3, &m3, &one, &fs, b.fa, &n3, b.fx, &one, &fs, b.fy, &one)), "SGBMV ", 5029, {3, 3}},
        {K(qnum_dsgbmv("N", 1, &m3, &n3, &one, &n3, &ds, b.da, &n3, b.dx, &one, &ds, b.dy, &one)), "SGBMV ", 5030, {3, 3}},
        {K(qnum_dsgbmv("N", 1, &m3, &n3, &one, &one, &ds, b.da, &two, b.dx, &one, &ds, b.dy, &one)), "SGBMV ", 5031, {2, 1, 1}},
        {K(qnum_cgbmv("Q", 1, &m3, &n3, &one, &one, cS, F(b.ca), &n3, F(b.cx), &one, cS, F(b.cy), &one)), "CGBMV ", 1019, {}, "Q"},
        {K(qnum_zgbmv("N", 1, &neg1, &n3, &one, &one, zS, D(b.za), &n3, D(b.zx), &one, zS, D(b.zy), &one)), "ZGBMV ", 2033, {-1}},
        {K(qnum_ssymv("U", 1, &n3, &fs, b.fa, &two, b.fx, &one, &fs, b.fy, &one)), "SSYMV ", 2024, {2, 3}},
        {K(qnum_ssymv("Q", 1, &n3, &fs, b.fa, &n3, b.fx, &one, &fs, b.fy, &one)), "SSYMV ", 2017, {}, "Q"},
        {K(qnum_dsymv("U", 1, &neg1, &ds, b.da, &n3, b.dx, &one, &ds, b.dy, &one)), "DSYMV ", 2014, {-1}},
        {K(qnum_20745("X", 1, &n3, cS, F(b.ca), &n3, F(b.cx), &one, cS, F(b.cy), &one)), "qnum_chemv", 2017, {}, "X"},
        {K(qnum_20746("U", 1, &n3, zS, D(b.za), &n3, D(b.zx), &one, zS, D(b.zy), &zero)), "qnum_zhemv", 2016, {0}},
        {K(qnum_ssbmv("U", 1, &n3, &neg1, &fs, b.fa, &n3, b.fx, &one, &fs, b.fy, &one)), "qnum_ssbmv", 1059, {-1}},
        {K(qnum_dssbmv("U", 1, &n3, &one, &ds, b.da, &one, b.dx, &one, &ds, b.dy, &one)), "qnum_dssbmv", 1060, {1, 1}},
        {K(qnum_chbmv("-", 1, &n3, &one, cS, F(b.ca), &n3, F(b.cx), &one, cS, F(b.cy), &one)), "qnum_chbmv", 2017, {}, "-"},
        {K(qnum_sspmv("U", 1, &neg2, &fs, b.fa, b.fx, &one, &fs, b.fy, &one)), "qnum_sspmv", 2014, {-2}},
        {K(qnum_dspmv("U", 1, &n3, &ds, b.da, b.dx, &zero, &ds, b.dy, &one)), "qnum_dspmv", 2015, {0}},
        {K(qnum_chpmv("U", 1, &n3, cS, F(b.ca), F(b.cx), &one, cS, F(b.cy), &zero)), "qnum_chpmv", 2016, {0}},
        {K(qnum_zhpmv("", 0, &n3, zS, D(b.za), D(b.zx), &one, zS, D(b.zy), &one)), "qnum_zhpmv", 2017, {}, ""},
        {K(qnum_strmv("U", 1, "N", 1, "Z", 1, &n3, b.fa, &n3, b.fx, &one)), "qnum_strmv", 2040, {}, "Z"},
        {K(qnum_dtrmv("U", 1, "Q", 1, "N", 1, &n3, b.da, &n3, b.dx, &one)), "qnum_dtrmv", 1019, {}, "Q"},
        {K(qnum_ctrmv("U", 1, "N", 1, "N", 1, &n3, F(b.ca), &two, F(b.cx), &one)), "qnum_ctrmv", 2024, {2, 3}},
        {K(qnum_ztrmv("U", 1, "N", 1, "N", 1, &n3, D(b.za), &n3, D(b.zx), &zero)), "qnum_ztrmv", 2015, {0}},
        {K(qnum_stbmv("U", 1, "N", 1, "N", 1, &n3, &neg1, b.fa, &n3, b.fx, &one)), "qnum_stbmv", 1059, {-1}},
        {K(qnum_dtbmv("U", 1, "N", 1, "N", 1, &n3, &two, b.da, &two, b.dx, &one)), "qnum_dtbmv", 1060, {2, 2}},
        {K(qnum_ctbmv("A", 1, "N", 1, "N", 1, &n3, &one, F(b.ca), &n3, F(b.cx), &one)), "qnum_ctbmv", 2017, {}, "A"},
        {K(qnum_ztbmv("U", 1, "N", 1, "N", 1, &neg1, &one, D(b.za), &n3, D(b.zx), &one)), "qnum_ztbmv", 2014, {-1}},
        {K(qnum_stpmv("U", 1, "N", 1, "N", 1, &n3, b.fa, b.fx, &zero)), "qnum_stpmv", 2015, {0}},
        {K(qnum_dtpmv("U", 1, "N", 1, "T", 1, &n3, b.da, b.dx, &one)), "qnum_dtpmv", 2040, {}, "T"},
        {K(qnum_ctpmv("U", 1, "U", 1, "N", 1, &n3, F(b.ca), F(b.cx), &one)), "qnum_ctpmv", 1019, {}, "U"},
        {K(qnum_ztpmv("U", 1, "N", 1, "N", 1, &neg2, D(b.za), D(b.zx), &one)), "qnum_ztpmv", 2014, {-2}},
        {K(qnum_ctrsv("N", 1, "N", 1, "N", 1, &n3, F(b.ca), &n3, F(b.cx), &one)), "qnum_ctrsv", 2017, {}, "N"},
        {K(qnum_ztrsv("L", 1, "C", 1, "U", 1, &n3, D(b.za), &zero, D(b.zx), &one)), "qnum_ztrsv", 2024, {0, 3}},
        {K(qnum_stbsv("U", "N", "N", &n3, &neg1, b.fa, &n3, b.fx, &one)), "STBSV ", 1059, {-1}},
        {K(qnum_dtbsv("U", "N", "N", &n3, &n3, b.da, &n3, b.dx, &one)), "DTBSV ", 1060, {3, 3}},
        {K(qnum_dtbsv("L", "T", "?", &n3, &one, b.da, &n3, b.dx, &one)), "DTBSV ", 2040, {}, "?"},
        {K(qnum_stpsv("T", 1, "N", 1, "N", 1, &n3, b.fa, b.fx, &one)), "qnum_stpsv", 2017, {}, "T"},
        {K(qnum_dtpsv("U", 1, "N", 1, "N", 1, &n3, b.da, b.dx, &zero)), "qnum_dtpsv", 2015, {0}},
        {K(qnum_ctpsv("U", 1, "L", 1, "N", 1, &n3, F(b.ca), F(b.cx), &one)), "qnum_ctpsv", 1019, {}, "L"},
        {K(qnum_ztpsv("U", 1, "N", 1, "L", 1, &n3, D(b.za), D(b.zx), &one)), "qnum_ztpsv", 2040, {}, "L"},
        {K(qnum_sger(-1, 3, fs, b.fx, 1, b.fy, 1, b.fa, 3)), "qnum_sger", 2033, {-1}},
        {K(qnum_dger(3, 3, ds, b.dx, 1, b.dy, 1, b.da, 2)), "qnum_dger", 1020, {2, 3}},
        {K(qnum_cgeru(&m3, &n3, cS, F(b.cx), &zero, F(b.cy), &one, F(b.ca), &m3)), "qnum_cgeru", 2015, {0}},
        {K(qnum_zgeru(&m3, &neg1, zS, D(b.zx), &one, D(b.zy), &one, D(b.za), &m3)), "qnum_zgeru", 2014, {-1}},
        {K(qnum_cgerc(&m3, &n3, cS, F(b.cx), &one, F(b.cy), &zero, F(b.ca), &m3)), "CGERC ", 2016, {0}},
        {K(qnum_zgerc(&m3, &n3, zS, D(b.zx), &one, D(b.zy), &one, D(b.za), &one)), "ZGERC ", 1020, {1, 3}},
        {K(qnum_ssyr("U", 1, &n3, &fs, b.fx, &one, b.fa, &two)), "qnum_ssyr", 2024, {2, 3}},
        {K(qnum_20737("x", 1, &n3, &fs, b.fx, &one, b.fa, &n3)), "qnum_ssyr", 2017, {}, "x"},
        {K(qnum_20738("U", 1, &n3, &ds, b.dx, &zero, b.da, &n3)), "qnum_dsyr", 2015, {0}},
        {K(qnum_20747("U", 1, &neg1, &fs, F(b.cx), &one, F(b.ca), &n3)), "qnum_cher", 2014, {-1}},
        {K(qnum_sspr("?", 1, &n3, &fs, b.fx, &one, b.fa)), "qnum_sspr", 2017, {}, "?"},
        {K(qnum_dspr("U", 1, &neg1, &ds, b.dx, &one, b.da)), "qnum_dspr", 2014, {-1}},
        {K(qnum_chpr("U", 1, &n3, &fs, F(b.cx), &zero, F(b.ca))), "qnum_chpr", 2015, {0}},
        {K(qnum_zhpr("W", 1, &n3, &ds, D(b.zx), &one, D(b.za))), "qnum_zhpr", 2017, {}, "W"},
        {K(qnum_ssyr2("U", 1, &n3, &fs, b.fx, &one, b.fy, &zero, b.fa, &n3)), "qnum_ssyr2", 2016, {0}},
        {K(qnum_dsyr2("U", 1, &n3, &ds, b.dx, &one, b.dy, &one, b.da, &two)), "qnum_dsyr2", 2024, {2, 3}},
        {K(qnum_20749("z", 1, &n3, cS, F(b.cx), &one, F(b.cy), &one, F(b.ca), &n3)), "qnum_cher2", 2017, {}, "z"},
        {K(qnum_20750("U", 1, &neg1, zS, D(b.zx), &one, D(b.zy), &one, D(b.za), &n3)), "qnum_zher2", 2014, {-1}},
        {K(qnum_sspr2("U", 1, &n3, &fs, b.fx, &zero, b.fy, &one, b.fa)), "qnum_sspr2", 2015, {0}},
        {K(qnum_dspr2("D", 1, &n3, &ds, b.dx, &one, b.dy, &one, b.da)), "qnum_dspr2", 2017, {}, "D"},
        {K(qnum_chpr2("U", 1, &n3, cS, F(b.cx), &one, F(b.cy), &zero, F(b.ca))), "qnum_chpr2", 2016, {0}},
        {K(qnum_zhpr2("U", 1, &neg1, zS, D(b.zx), &one, D(b.zy), &one, D(b.za))), "qnum_zhpr2", 2014, {-1}},
        {K(qnum_ccgcg(&zero, F(b.ca), &n3, F(b.cx), &n3)), "qnum_ccgcg", 604, {0}},
        {K(qnum_ccgcg(&n3, F(b.ca), &two, F(b.cx), &n3)), "qnum_ccgcg", 605, {2, 3}},
        {K(qnum_dccgcg(&n3, D(b.za), &n3, D(b.zx), &two)), "qnum_dcgcg", 606, {2, 3}},
        {K(qnum_ccbcb(&zero, F(b.ca), &n3, &one, &one, F(b.cx), &n3, &one, &one)), "CCBCB ", 14010, {0}},
        {K(qnum_ccbcb(&n3, F(b.ca), &n3, &neg1, &one, F(b.cx), &n3, &one, &one)), "CCBCB ", 14011, {-1}},
        {K(qnum_ccbcb(&n3, F(b.ca), &n3, &one, &neg2, F(b.cx), &n3, &one, &one)), "CCBCB ", 14012, {-2}},
        {K(qnum_ccbcb(&n3, F(b.ca), &two, &one, &one, F(b.cx), &n3, &one, &one)), "CCBCB ", 14013, {2, 1, 1}},
        {K(qnum_ccbcb(&n3, F(b.ca), &n3, &one, &one, F(b.cx), &n3, &zero, &one)), "CCBCB ", 14014, {0, 1}},
        {K(qnum_ccbcb(&n3, F(b.ca), &n3, &one, &one, F(b.cx), &n3, &one, &zero)), "CCBCB ", 14015, {0, 1}},
        {K(qnum_dccbcb(&n3, D(b.za), &n3, &one, &one, D(b.zx), &four, &two, &two)), "DCCBCB", 14016, {4, 2, 2}},
        {K(dgemm(b, "N", "N", -1, 4, 4, 4, 4, 4)), "qnum_dgemm", 2033, {-1}},
        {K(dgemm(b, "N", "N", 4, -2, 4, 4, 4, 4)), "qnum_dgemm", 2014, {-2}},
        {K(dgemm(b, "N", "N", 4, 4, -3, 4, 4, 4)), "qnum_dgemm", 14101, {-3}},
        {K(dgemm(b, "X", "N", 4, 4, 4, 4, 4, 4)), "qnum_dgemm", 1019, {}, "X"},
        {K(dgemm(b, "t", "q", 4, 4, 4, 4, 4, 4)), "qnum_dgemm", 1019, {}, "q"},
        {K(dgemm(b, "N", "N", 4, 4, 2, 3, 4, 4)), "qnum_dgemm", 14102, {3, 4}},
        {K(dgemm(b, "T", "N", 2, 4, 4, 3, 4, 4)), "qnum_dgemm", 14102, {3, 4}},
        {K(dgemm(b, "N", "N", 0, 4, 4, 0, 4, 4)), "qnum_dgemm", 14102, {0, 0}},
        {K(dgemm(b, "N", "N", 4, 4, 4, 4, 3, 4)), "qnum_dgemm", 14103, {3, 4}},
        {K(dgemm(b, "N", "C", 4, 4, 2, 4, 3, 4)), "qnum_dgemm", 14103, {3, 4}},
        {K(dgemm(b, "N", "N", 4, 4, 4, 4, 4, 2)), "qnum_dgemm", 14104, {2, 4}},
        {K(dgemm(b, "X", "N", -1, 4, 4, 4, 4, 4)), "qnum_dgemm", 2033, {-1}},
        {K(dgemm(b, "N", "Z", 4, 4, 4, 0, 4, 4)), "qnum_dgemm", 1019, {}, "Z"},
        {K(dsymm(b, "Q", "U", 4, 4, 4, 4, 4)), "qnum_dsymm", 14100, {}, "Q"},
        {K(dsymm(b, "L", "X", 4, 4, 4, 4, 4)), "qnum_dsymm", 2017, {}, "X"},
        {K(dsymm(b, "R", "U", 2, 4, 3, 4, 4)), "qnum_dsymm", 14102, {3, 4}},
        {K(dsymm(b, "L", "U", 4, 4, 4, 3, 4)), "qnum_dsymm", 14103, {3, 4}},
        {K(dsyr2k(b, "U", "X", 4, 4, 4, 4, 4)), "qnum_dsyr2k", 1019, {}, "X"},
        {K(dsyr2k(b, "L", "T", 4, 4, 4, 3, 4)), "qnum_dsyr2k", 14103, {3, 4}},
        {K(dsyr2k(b, "L", "N", 4, 2, 4, 4, 3)), "qnum_dsyr2k", 14104, {3, 4}},
        {K(dtrsm(b, "L", "U", "N", "X", 4, 4, 4, 4)), "qnum_dtrsm", 2040, {}, "X"},
        {K(dtrsm(b, "R", "U", "N", "N", 2, 4, 3, 4)), "qnum_dtrsm", 14102, {3, 4}},
        {K(dtrsm(b, "L", "U", "N", "N", 4, 2, 4, 3)), "qnum_dtrsm", 14103, {3, 4}},
        {K(dtrsm(b, nullptr, "U", "N", "N", 4, 2, 4, 3)), "qnum_dtrsm", 14100, {}, ""},
        // Complex symmetric updates have no conjugate transpose, Hermitian ones no transpose.
        {K(qnum_zsyrk("U", 1, "C", 1, &two, &two, zS, D(b.za), &two, zS, D(b.zx), &two)), "qnum_zsyrk", 14105, {}, "C"},
        {K(qnum_zsyr2k("U", 1, "c", 1, &two, &two, zS, D(b.za), &two, D(b.za), &two, zS, D(b.zx), &two)), "qnum_zsyr2k", 14105, {}, "c"},
        {K(qnum_zherk("L", 1, "T", 1, &two, &two, &ds, D(b.za), &two, &ds, D(b.zx), &two)), "qnum_zherk", 14106, {}, "T"},
        {K(qnum_cher2k("L", 1, "t", 1, &two, &two, cS, F(b.ca), &two, F(b.ca), &two, &fs, F(b.cx), &two)), "qnum_cher2k", 14106, {}, "t"},
        // clang-format on
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << "row " << &c - cases.data() << ": " << c.tag << c.code);
        events.clear();
        Bufs b;
        c.call(b);
        EXPECT_TRUE(b == Bufs()) << "an output was written";
        ASSERT_EQ(1u, events.size());
        EXPECT_EQ(c.tag, events[0].routine);
        EXPECT_EQ(c.code, events[0].code);
        EXPECT_EQ(5, last_type());
        EXPECT_EQ(c.code, last_code());
        for (std::size_t k = 0; k < c.ints.size(); ++k) EXPECT_EQ(c.ints[k], int_slot(static_cast<int>(k) + 1)) << k + 1;
        if (c.text) {
            EXPECT_EQ(c.text, string_slot(1));
        }
    }
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
    // The smallest valid sizes and widths: no rows, no order, no lower band.
    const float f0 = 0, f1 = 1;
    qnum_sger(0, 3, fs, b.fx, 1, b.fy, 1, b.fa, 3);
    qnum_stbmv("U", 1, "N", 1, "N", 1, &zero, &zero, b.fa, &one, b.fx, &one);
    qnum_sgbmv("N", 1, &m3, &n3, &zero, &one, &f0, b.fa, &n3, b.fx, &one, &f1, b.fy, &one);
    EXPECT_TRUE(events.empty());
    EXPECT_TRUE(b == Bufs());
}

// Where a wrapper does more than forward, it computes what the template (or the plain sum)
// computes on the same data: mixed-precision dots, increments of zero or less, values
// returned through C structs.
TEST(KernelExports, MatchTheTemplates) {
    using Fn = std::function<void(Bufs&)>;
    const std::vector<std::tuple<const char*, Fn, Fn>> cases = {
        {"sdsdot dsdot",
         [](Bufs& b) { b.fy[0] = qnum_sdsdot(4, 2.0f, b.fx, 1, b.fa, 3), b.dy[0] = qnum_dsdot(4, b.fx, -1, b.fa, 1); },
         [](Bufs& b) {
             double s = 2, t = 0;
             for (int i = 0; i < 4; ++i) s += double(b.fx[i]) * b.fa[3 * i], t += double(b.fx[3 - i]) * b.fa[i];
             b.fy[0] = float(s), b.dy[0] = t;
         }},
        {"norms sums indices",
         [](Bufs& b) {
             const int n = 9;
             b.fy[0] = qnum_snrm2(9, b.fa, 3), b.dy[0] = qnum_dnrm2(9, b.da, -2), b.fy[1] = qnum_sasum(9, b.fx, 1);
             b.dy[1] = qnum_dasum(9, b.dx, 1), b.fy[2] = float(qnum_isamax(9, b.fx, 1)), b.dy[2] = qnum_idamax(9, b.dx, 1);
             b.fy[3] = qnum_sasum(9, b.fx, 0) + qnum_isamax(9, b.fx, -1) + qnum_dasum(9, b.dx, -1) + qnum_idamax(9, b.dx, 0);
             b.fy[4] = qnum_scnrm2(&n, F(b.ca), &two), b.dy[4] = qnum_dznrm2(&n, D(b.za), &neg1);
             b.fy[5] = qnum_scasum(&n, F(b.cx), &one), b.dy[5] = qnum_dzasum(&n, D(b.zx), &one);
             b.fy[6] = float(qnum_icamax(&n, F(b.cx), &one)), b.dy[6] = qnum_izamax(&n, D(b.zx), &one);
             b.fy[7] = qnum_scasum(&n, F(b.cx), &zero) + qnum_izamax(&n, D(b.zx), &neg1);
         },
         [](Bufs& b) {
             b.fy[0] = kern::nrm2(9, b.fa, 3), b.dy[0] = kern::nrm2(9, b.da, -2), b.fy[1] = kern::asum(9, b.fx, 1);
             b.dy[1] = kern::asum(9, b.dx, 1), b.fy[2] = float(kern::iamax(9, b.fx, 1)), b.dy[2] = kern::iamax(9, b.dx, 1);
             b.fy[3] = 0, b.fy[4] = kern::nrm2(9, b.ca, 2), b.dy[4] = kern::nrm2(9, b.za, -1);
             b.fy[5] = kern::asum(9, b.cx, 1), b.dy[5] = kern::asum(9, b.zx, 1);
             b.fy[6] = float(kern::iamax(9, b.cx, 1)), b.dy[6] = kern::iamax(9, b.zx, 1), b.fy[7] = 0;
         }},
        {"complex scal dots",
         [](Bufs& b) {
             const float r = 3;
             const double q = 3;
             const int n = 7;
             qnum_cscal(&four, cS, F(b.cx), &two), qnum_zscal(&four, zS, D(b.zx), &one), qnum_csscal(&four, &r, F(b.cy), &one);
             qnum_zdscal(&four, &q, D(b.zy), &two), qnum_zdscal(&four, &q, D(b.za), &zero), qnum_cscal(&four, cS, F(b.ca), &neg1);
             const qnum_f_complex u = qnum_cdotu(&n, F(b.ca), &two, F(b.cx), &one), c = qnum_cdotc(&n, F(b.ca), &one, F(b.cx), &neg1);
             const qnum_d_complex v = qnum_zdotu(&n, D(b.za), &one, D(b.zx), &one), d = qnum_zdotc(&n, D(b.za), &neg1, D(b.zx), &two);
             b.cy[8] = C(u.re, u.im), b.cy[9] = C(c.re, c.im), b.zy[8] = Z(v.re, v.im), b.zy[9] = Z(d.re, d.im);
         },
         [](Bufs& b) {
             kern::scal(4, cs, b.cx, 2), kern::scal(4, zs, b.zx, 1), kern::rscal(4, 3.0f, b.cy, 1), kern::rscal(4, 3.0, b.zy, 2);
             b.cy[8] = kern::dot(7, b.ca, 2, b.cx, 1), b.cy[9] = kern::dotc(7, b.ca, 1, b.cx, -1);
             b.zy[8] = kern::dot(7, b.za, 1, b.zx, 1), b.zy[9] = kern::dotc(7, b.za, -1, b.zx, 2);
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

// Level 3: option letters in either case (lengths unused), for real data "C" is the
// transpose, and the numbered exports are sgemm/dgemm and strsm/dtrsm with their errors
// reported under those names.
TEST(KernelExports, Level3OptionsAndNumberedExports) {
    int m = 2, n = 2, k = 2, ld = 2;
    double a[4] = {1, 2, 3, 4}, b[4] = {5, 6, 7, 8}, d1 = 1, d0 = 0, c1[4], c2[4], c3[4] = {};
    qnum_dgemm("T", 1, "N", 1, &m, &n, &k, &d1, a, &ld, b, &ld, &d0, c1, &ld);
    qnum_dgemm("transpose", 0, "no", 99, &m, &n, &k, &d1, a, &ld, b, &ld, &d0, c2, &ld);
    EXPECT_EQ(std::memcmp(c1, c2, sizeof c1), 0);
    EXPECT_EQ(c1[0], 1 * 5 + 2 * 6);
    qnum_dsyrk("U", 1, "C", 1, &n, &k, &d1, a, &ld, &d0, c3, &ld);
    EXPECT_EQ(c3[2], 1 * 3 + 2 * 4);
    double t1[4] = {1, 1, 1, 1}, t2[4] = {1, 1, 1, 1};
    qnum_dtrmm("L", 1, "U", 1, "N", 1, "U", 1, &m, &n, &d1, a, &ld, t1, &ld);
    qnum_dtrmm("left", 4, "upper", 5, "n", 1, "unit", 4, &m, &n, &d1, a, &ld, t2, &ld);
    EXPECT_EQ(std::memcmp(t1, t2, sizeof t1), 0);
    EXPECT_EQ(t1[0], 1 + 3);  // unit diagonal: a(0,0) = 1 is not read

    int n3 = 3, k3 = 3, bad = -1;
    float fa[9] = {4, 1, 2, 0, 5, 1, 0, 0, 6}, fb[6] = {1, 2, 3, 4, 5, 6}, f1 = 1, f0 = 0, fc[2][6], fx[2][6];
    double da[9] = {4, 1, 2, 0, 5, 1, 0, 0, 6}, db[6] = {1, 2, 3, 4, 5, 6}, dc[2][6], dx[2][6];
    qnum_sgemm("N", 1, "N", 1, &n3, &n, &k3, &f1, fa, &n3, fb, &n3, &f0, fc[0], &n3);
    qnum_20725("N", 1, "N", 1, &n3, &n, &k3, &f1, fa, &n3, fb, &n3, &f0, fc[1], &n3);
    qnum_dgemm("T", 1, "N", 1, &n3, &n, &k3, &d1, da, &n3, db, &n3, &d0, dc[0], &n3);
    qnum_20726("T", 1, "N", 1, &n3, &n, &k3, &d1, da, &n3, db, &n3, &d0, dc[1], &n3);
    for (int i = 0; i < 2; ++i) std::copy(fb, fb + 6, fx[i]), std::copy(db, db + 6, dx[i]);
    qnum_strsm("L", 1, "L", 1, "N", 1, "N", 1, &n3, &n, &f1, fa, &n3, fx[0], &n3);
    qnum_20743("L", 1, "L", 1, "N", 1, "N", 1, &n3, &n, &f1, fa, &n3, fx[1], &n3);
    qnum_dtrsm("L", 1, "U", 1, "T", 1, "U", 1, &n3, &n, &d1, da, &n3, dx[0], &n3);
    qnum_20744("L", 1, "U", 1, "T", 1, "U", 1, &n3, &n, &d1, da, &n3, dx[1], &n3);
    EXPECT_EQ(std::memcmp(fc[0], fc[1], sizeof fc[0]) | std::memcmp(dc[0], dc[1], sizeof dc[0]), 0);
    EXPECT_EQ(std::memcmp(fx[0], fx[1], sizeof fx[0]) | std::memcmp(dx[0], dx[1], sizeof dx[0]), 0);
    EXPECT_EQ(fc[0][0], 4.0f);
    EXPECT_EQ(dc[0][0], 4 + 2 + 6);
    EXPECT_FLOAT_EQ(fx[0][0], 0.25f);
    EXPECT_EQ(dx[0][0], 1);  // unit diagonal, and the upper triangle of da holds zeros
    QuietErrors quiet;
    qnum_error_options(QNUM_SET_PRINT, QNUM_TERMINAL, 1, 0);
    const std::string out = capture_errors([&] {
        qnum_20725("N", 1, "N", 1, &bad, &n, &k3, &f1, fa, &n3, fb, &n3, &f0, fc[1], &n3);
        qnum_20726("N", 1, "N", 1, &bad, &n, &k3, &d1, da, &n3, db, &n3, &d0, dc[1], &n3);
        qnum_20743("L", 1, "L", 1, "N", 1, "N", 1, &n3, &bad, &f1, fa, &n3, fx[1], &n3);
        qnum_20744("L", 1, "L", 1, "N", 1, "X", 1, &n3, &n, &d1, da, &n3, dx[1], &n3);
    });
    EXPECT_EQ(last_code(), 2040);
    for (const char* name : {"qnum_sgemm", "qnum_dgemm", "qnum_strsm", "qnum_dtrsm"})
        EXPECT_NE(out.find(name), std::string::npos) << name << "\n" << out;
}

// The helpers: fill, add, sums, signed extremes, triple products, integer copies; each
// visits n elements at |inc| and nothing else.
TEST(Helpers, VectorHelpers) {
    for (int n : {0, 1, 2, 5, 9})
        for (int inc : {1, 2, 3, -2, 0}) {
            std::vector<double> x(40, -1.0);
            std::vector<int> ix(40, -1);
            std::vector<qnum_d_complex> zx(40, qnum_d_complex{-1, -1});
            const qnum_d_complex z{2, 3};
            qnum_20732(n, 7.0, x.data(), inc);
            qnum_iset(n, 7, ix.data(), inc);
            qnum_zset(&n, &z, zx.data(), &inc);
            const int step = inc < 0 ? -inc : inc;
            for (int p = 0; p < 40; ++p) {
                const bool hit = inc != 0 && p % step == 0 && p / step < n;
                EXPECT_EQ(hit ? 7.0 : -1.0, x[p]) << "n " << n << " inc " << inc << " p " << p;
                EXPECT_EQ(hit ? 7 : -1, ix[p]);
                EXPECT_EQ(hit ? 3.0 : -1.0, zx[p].im);
            }
        }
    float f[5] = {1, 2, 3, 4, 5}, g[3] = {1, 1, 1};
    qnum_20731(2, 0.5f, g, 2);
    EXPECT_EQ(std::vector<float>(g, g + 3), (std::vector<float>{0.5f, 1, 0.5f}));
    qnum_20721(3, 0.5f, f, 2);  // elements 1, 3, 5
    EXPECT_EQ(std::vector<float>(f, f + 5), (std::vector<float>{1.5f, 2, 3.5f, 4, 5.5f}));
    double d[5] = {1, 2, 3, 4, 5};
    qnum_20722(2, 1.0, d, 0);  // the same element twice
    EXPECT_EQ(3.0, d[0]);
    EXPECT_EQ(3 + 2 + 3 + 4 + 5, qnum_20734(5, d, 1));
    EXPECT_EQ(3 + 3 + 5, qnum_20734(3, d, -2));
    EXPECT_EQ(0.0, qnum_20734(0, d, 1));
    EXPECT_EQ(1.5f + 4.0f, qnum_20733(2, f, 3));
    const float a[] = {3, 7, 7};
    const double e[] = {-1, 5, -9, 5, -9};
    EXPECT_EQ((std::vector<int>{2, 1, 2, 3, 1, 1, 0, 0}),
              (std::vector<int>{qnum_20717(3, a, 1), qnum_20719(3, a, 1), qnum_20718(5, e, 1), qnum_20720(5, e, 1),
                                qnum_20720(5, e, -1), qnum_20718(1, e, 1), qnum_20718(0, e, 1), qnum_20719(-3, a, 1)}));
    const double x[] = {1, 2, 3, 4}, y[] = {2, 2, 2, 2}, z3[] = {1, -1, 1, -1};
    EXPECT_EQ(2 - 4 + 6 - 8, qnum_dxyz(4, x, 1, y, 1, z3, 1));
    EXPECT_EQ(3 * 2 * 1 + 1 * 2 * 1, qnum_dxyz(2, x, -2, y, 1, z3, 2));  // x walked 3, 1
    EXPECT_EQ(0.0, qnum_dxyz(0, x, 1, y, 1, z3, 1));
    const float xf[] = {0.5f, 3}, yf[] = {4, 1}, zf[] = {1, 1};
    EXPECT_EQ(5.0f, qnum_sxyz(2, xf, 1, yf, 1, zf, 1));
    float out[4] = {9, 9, 9, 9};
    qnum_svcal(2, 3.0f, xf, 1, out, -3);  // y walked backwards: out[3], out[0]
    EXPECT_EQ(std::vector<float>(out, out + 4), (std::vector<float>{9, 9, 9, 1.5f}));
    const int ints[] = {1, 2, 3, 4, 5, 6};
    int i1[6] = {}, i2[6] = {};
    qnum_icopy(6, ints, 1, i1, 1);
    qnum_icopy(3, ints, 2, i2, -1);  // 1, 3, 5 into i2[2], i2[1], i2[0]
    qnum_icopy(0, ints, 1, i2, 1);
    EXPECT_EQ(std::vector<int>(i1, i1 + 6), std::vector<int>(ints, ints + 6));
    EXPECT_EQ(std::vector<int>(i2, i2 + 4), (std::vector<int>{5, 3, 1, 0}));
    // Adding a complex zero leaves x alone bit for bit, NaNs and negative zeros included.
    qnum_d_complex zc[3] = {{std::nan(""), -0.0}, {1, 2}, {3, 4}}, before[3];
    const qnum_d_complex zero_c{0, -0.0}, ac{1, -1};
    std::memcpy(before, zc, sizeof zc);
    qnum_zadd(&n3, &zero_c, zc, &one);
    EXPECT_EQ(0, std::memcmp(before, zc, sizeof zc));
    qnum_zadd(&n3, &ac, zc, &neg1);
    EXPECT_EQ((std::vector<double>{2, 1, 3}), (std::vector<double>{zc[1].re, zc[1].im, zc[2].im}));
    qnum_f_complex fc[2] = {{1, 1}, {2, 2}};
    const qnum_f_complex fac{0.5f, 0};
    qnum_cadd(&two, &fac, fc, &one);
    EXPECT_EQ(2.5f, fc[1].re);
}

// Whole and band matrix copies, separately and in place (ldb > lda over the same storage
// included): the values keep their places, a wider band's extra diagonals become zero, the
// row past b's band is left alone.
TEST(Helpers, MatrixCopies) {
    for (int n : {1, 2, 5})
        for (auto [lda, ldb] : {std::pair{n, n}, {n, n + 3}, {n + 2, n}, {n + 1, n + 1}}) {
            SCOPED_TRACE(::testing::Message() << "n " << n << " lda " << lda << " ldb " << ldb);
            auto value = [](int i, int j) { return Z(i + 10 * j, -j); };
            std::vector<Z> store(static_cast<std::size_t>(std::max(lda, ldb)) * n, Z(-5, -5)), separate(static_cast<std::size_t>(ldb) * n, Z(-5, -5));
            for (int j = 0; j < n; ++j)
                for (int i = 0; i < n; ++i) store[j * lda + i] = value(i, j);
            qnum_dccgcg(&n, D(store.data()), &lda, D(separate.data()), &ldb);
            qnum_dccgcg(&n, D(store.data()), &lda, D(store.data()), &ldb);
            for (int j = 0; j < n; ++j)
                for (int i = 0; i < n; ++i) EXPECT_TRUE(value(i, j) == store[j * ldb + i] && value(i, j) == separate[j * ldb + i]);
            std::vector<C> cs2(static_cast<std::size_t>(ldb) * n, C(-5, -5)), ca(static_cast<std::size_t>(lda) * n, C(1, 2));
            qnum_ccgcg(&n, F(ca.data()), &lda, F(cs2.data()), &ldb);
            EXPECT_EQ(C(1, 2), cs2[static_cast<std::size_t>(n - 1) * ldb + n - 1]);
        }
    const int n = 6;
    for (auto [nla, nua, nlb, nub] : {std::array{1, 1, 1, 1}, {1, 2, 3, 2}, {0, 1, 2, 4}, {2, 0, 2, 3}}) {
        const int lda = nla + nua + 1, ldb = nlb + nub + 2;
        SCOPED_TRACE(::testing::Message() << nla << nua << nlb << nub);
        auto value = [](int r, int j) { return Z(r + 1, j + 1); };  // band row r of column j
        std::vector<Z> store(static_cast<std::size_t>(ldb) * n, Z(-5, -5)), separate = store;
        for (int j = 0; j < n; ++j)
            for (int r = 0; r < lda; ++r) store[j * lda + r] = value(r, j);
        qnum_dccbcb(&n, D(store.data()), &lda, &nla, &nua, D(separate.data()), &ldb, &nlb, &nub);
        qnum_dccbcb(&n, D(store.data()), &lda, &nla, &nua, D(store.data()), &ldb, &nlb, &nub);
        for (const auto* b : {&store, &separate})
            for (int j = 0; j < n; ++j)
                for (int r = 0; r < ldb; ++r) {
                    const int ra = r - (nub - nua);
                    const Z want = r == ldb - 1 ? (*b)[j * ldb + r] : ra >= 0 && ra < lda ? value(ra, j) : Z(0);
                    EXPECT_EQ(want, (*b)[j * ldb + r]) << "row " << r << " column " << j;
                }
        EXPECT_EQ(Z(-5, -5), separate[ldb - 1]);
    }
}

}  // namespace
}  // namespace qnum::test
