// The exported Level 3 wrappers: every argument error with its code, substitution values and
// untouched outputs, option letters, the numbered aliases, and calls from many threads.
#include <malloc.h>
#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <thread>

#include "level3_support.hpp"
#include "qnum_test.hpp"

namespace {

using namespace l3test;
using qnum::test::int_slot;
using qnum::test::last_code;
using qnum::test::last_type;
using qnum::test::QuietErrors;
using qnum::test::string_slot;

// One bad call: what it passes, and what it must report. Every array is 4 by 4 with a
// leading dimension of 4 unless the case changes it; the outputs must keep every bit.
struct ErrorCase {
    const char* what;
    std::function<void(double* a, double* b, double* c)> call;
    int code;
    std::vector<int> ints;  // i1, i2, ...
    const char* str;        // l1, or null when none is set
};

double one = 1, zero = 0;

void dgemm_(const char* ta, const char* tb, int m, int n, int k, int lda, int ldb, int ldc, double* a,
            double* b, double* c) {
    qnum_dgemm(ta, 1, tb, 1, &m, &n, &k, &one, a, &lda, b, &ldb, &zero, c, &ldc);
}
void dsymm_(const char* side, const char* uplo, int m, int n, int lda, int ldb, int ldc, double* a, double* b,
            double* c) {
    qnum_dsymm(side, 1, uplo, 1, &m, &n, &one, a, &lda, b, &ldb, &zero, c, &ldc);
}
void dsyr2k_(const char* uplo, const char* trans, int n, int k, int lda, int ldb, int ldc, double* a,
             double* b, double* c) {
    qnum_dsyr2k(uplo, 1, trans, 1, &n, &k, &one, a, &lda, b, &ldb, &zero, c, &ldc);
}
void dtrsm_(const char* side, const char* uplo, const char* ta, const char* diag, int m, int n, int lda,
            int ldb, double* a, double* b) {
    qnum_dtrsm(side, 1, uplo, 1, ta, 1, diag, 1, &m, &n, &one, a, &lda, b, &ldb);
}

std::vector<ErrorCase> error_cases() {
    using A = double*;
    // clang-format off
    return {
        {"gemm m < 0", [](A a, A b, A c) { dgemm_("N", "N", -1, 4, 4, 4, 4, 4, a, b, c); }, 2033, {-1}, nullptr},
        {"gemm n < 0", [](A a, A b, A c) { dgemm_("N", "N", 4, -2, 4, 4, 4, 4, a, b, c); }, 2014, {-2}, nullptr},
        {"gemm k < 0", [](A a, A b, A c) { dgemm_("N", "N", 4, 4, -3, 4, 4, 4, a, b, c); }, 14101, {-3}, nullptr},
        {"gemm transa", [](A a, A b, A c) { dgemm_("X", "N", 4, 4, 4, 4, 4, 4, a, b, c); }, 1019, {}, "X"},
        {"gemm transb", [](A a, A b, A c) { dgemm_("t", "q", 4, 4, 4, 4, 4, 4, a, b, c); }, 1019, {}, "q"},
        {"gemm lda < m", [](A a, A b, A c) { dgemm_("N", "N", 4, 4, 2, 3, 4, 4, a, b, c); }, 14102, {3, 4}, nullptr},
        {"gemm lda < k (transposed)", [](A a, A b, A c) { dgemm_("T", "N", 2, 4, 4, 3, 4, 4, a, b, c); }, 14102, {3, 4}, nullptr},
        {"gemm lda = 0, m = 0", [](A a, A b, A c) { dgemm_("N", "N", 0, 4, 4, 0, 4, 4, a, b, c); }, 14102, {0, 0}, nullptr},
        {"gemm ldb < k", [](A a, A b, A c) { dgemm_("N", "N", 4, 4, 4, 4, 3, 4, a, b, c); }, 14103, {3, 4}, nullptr},
        {"gemm ldb < n (transposed)", [](A a, A b, A c) { dgemm_("N", "C", 4, 4, 2, 4, 3, 4, a, b, c); }, 14103, {3, 4}, nullptr},
        {"gemm ldc < m", [](A a, A b, A c) { dgemm_("N", "N", 4, 4, 4, 4, 4, 2, a, b, c); }, 14104, {2, 4}, nullptr},
        {"gemm: sizes before options", [](A a, A b, A c) { dgemm_("X", "N", -1, 4, 4, 4, 4, 4, a, b, c); }, 2033, {-1}, nullptr},
        {"gemm: options before leading dimensions", [](A a, A b, A c) { dgemm_("N", "Z", 4, 4, 4, 0, 4, 4, a, b, c); }, 1019, {}, "Z"},
        {"symm side", [](A a, A b, A c) { dsymm_("Q", "U", 4, 4, 4, 4, 4, a, b, c); }, 14100, {}, "Q"},
        {"symm uplo", [](A a, A b, A c) { dsymm_("L", "X", 4, 4, 4, 4, 4, a, b, c); }, 2017, {}, "X"},
        {"symm lda < n (right)", [](A a, A b, A c) { dsymm_("R", "U", 2, 4, 3, 4, 4, a, b, c); }, 14102, {3, 4}, nullptr},
        {"symm ldb < m", [](A a, A b, A c) { dsymm_("L", "U", 4, 4, 4, 3, 4, a, b, c); }, 14103, {3, 4}, nullptr},
        {"syr2k trans", [](A a, A b, A c) { dsyr2k_("U", "X", 4, 4, 4, 4, 4, a, b, c); }, 1019, {}, "X"},
        {"syr2k ldb < k (transposed)", [](A a, A b, A c) { dsyr2k_("L", "T", 4, 4, 4, 3, 4, a, b, c); }, 14103, {3, 4}, nullptr},
        {"syr2k ldc < n", [](A a, A b, A c) { dsyr2k_("L", "N", 4, 2, 4, 4, 3, a, b, c); }, 14104, {3, 4}, nullptr},
        {"trsm diag", [](A a, A b, A) { dtrsm_("L", "U", "N", "X", 4, 4, 4, 4, a, b); }, 2040, {}, "X"},
        {"trsm lda < n (right)", [](A a, A b, A) { dtrsm_("R", "U", "N", "N", 2, 4, 3, 4, a, b); }, 14102, {3, 4}, nullptr},
        {"trsm ldb < m", [](A a, A b, A) { dtrsm_("L", "U", "N", "N", 4, 2, 4, 3, a, b); }, 14103, {3, 4}, nullptr},
        {"trsm null option", [](A a, A b, A) { dtrsm_(nullptr, "U", "N", "N", 4, 2, 4, 3, a, b); }, 14100, {}, ""},
    };
    // clang-format on
}

TEST(Level3Errors, EachBadArgumentIsTerminalWithItsValuesAndWritesNothing) {
    QuietErrors quiet;
    for (const ErrorCase& ec : error_cases()) {
        SCOPED_TRACE(ec.what);
        std::vector<double> a(16, 1.0), b(16, 2.0), c(16, nan_value<double>());
        const std::vector<double> a0 = a, b0 = b, c0 = c;
        ec.call(a.data(), b.data(), c.data());
        EXPECT_EQ(last_type(), QNUM_TERMINAL);
        EXPECT_EQ(last_code(), ec.code);
        for (std::size_t i = 0; i < ec.ints.size(); ++i)
            EXPECT_EQ(int_slot(static_cast<int>(i) + 1), ec.ints[i]);
        if (ec.str) {
            EXPECT_EQ(string_slot(1), ec.str);
        }
        EXPECT_EQ(std::memcmp(a.data(), a0.data(), 16 * sizeof(double)), 0);
        EXPECT_EQ(std::memcmp(b.data(), b0.data(), 16 * sizeof(double)), 0);
        EXPECT_EQ(std::memcmp(c.data(), c0.data(), 16 * sizeof(double)), 0);
    }
}

// The transposes the rank updates accept depend on the data: complex symmetric updates have
// no conjugate transpose, Hermitian ones no plain transpose.
TEST(Level3Errors, RankUpdatesRejectTheTransposeTheyLack) {
    QuietErrors quiet;
    int n = 2, k = 2, ld = 2;
    cd c[4] = {}, a[4] = {};
    const cd alpha = 1, beta = 0;
    const double ra = 1, rb = 0;
    auto z = [](cd* p) { return reinterpret_cast<qnum_d_complex*>(p); };
    auto zc = [](const cd* p) { return reinterpret_cast<const qnum_d_complex*>(p); };
    qnum_zsyrk("U", 1, "C", 1, &n, &k, zc(&alpha), z(a), &ld, zc(&beta), z(c), &ld);
    EXPECT_EQ(last_code(), 14105);
    EXPECT_EQ(string_slot(1), "C");
    qnum_zsyr2k("U", 1, "c", 1, &n, &k, zc(&alpha), z(a), &ld, z(a), &ld, zc(&beta), z(c), &ld);
    EXPECT_EQ(last_code(), 14105);
    qnum_zherk("L", 1, "T", 1, &n, &k, &ra, z(a), &ld, &rb, z(c), &ld);
    EXPECT_EQ(last_code(), 14106);
    EXPECT_EQ(string_slot(1), "T");
    qnum_zher2k("L", 1, "t", 1, &n, &k, zc(&alpha), z(a), &ld, z(a), &ld, &rb, z(c), &ld);
    EXPECT_EQ(last_code(), 14106);
    // For real data "C" is the transpose.
    double dc[4] = {}, da[4] = {1, 2, 3, 4}, one = 1, zero = 0;
    qnum_dsyrk("U", 1, "C", 1, &n, &k, &one, da, &ld, &zero, dc, &ld);
    EXPECT_EQ(dc[2], 1 * 3 + 2 * 4);
}

// The report names the kernel and substitutes its values.
TEST(Level3Errors, ReportNamesTheKernel) {
    QuietErrors quiet;
    qnum_error_options(QNUM_SET_PRINT, QNUM_TERMINAL, 1, 0);
    const std::string out = qnum::test::capture_errors([] {
        int m = 2, n = 2, k = 2, lda = 1, ldb = 2, ldc = 2;
        float one = 1, a[4] = {}, b[4] = {}, c[4] = {};
        qnum_sgemm("N", 1, "N", 1, &m, &n, &k, &one, a, &lda, b, &ldb, &one, c, &ldc);
    });
    EXPECT_NE(out.find("qnum_sgemm"), std::string::npos) << out;
    EXPECT_NE(out.find("LDA = 1 must be at"), std::string::npos) << out;
}

// Option strings: only the first character counts, in either case; lengths are not used.
TEST(Level3Options, FirstCharacterInEitherCase) {
    int m = 2, n = 2, k = 2, ld = 2;
    double a[4] = {1, 2, 3, 4}, b[4] = {5, 6, 7, 8}, one = 1, zero = 0;
    double c1[4], c2[4];
    qnum_dgemm("T", 1, "N", 1, &m, &n, &k, &one, a, &ld, b, &ld, &zero, c1, &ld);
    qnum_dgemm("transpose", 0, "no", 99, &m, &n, &k, &one, a, &ld, b, &ld, &zero, c2, &ld);
    EXPECT_EQ(std::memcmp(c1, c2, sizeof c1), 0);
    EXPECT_EQ(c1[0], 1 * 5 + 2 * 6);
    double t1[4] = {1, 1, 1, 1}, t2[4] = {1, 1, 1, 1};
    qnum_dtrmm("L", 1, "U", 1, "N", 1, "U", 1, &m, &n, &one, a, &ld, t1, &ld);
    qnum_dtrmm("left", 4, "upper", 5, "n", 1, "unit", 4, &m, &n, &one, a, &ld, t2, &ld);
    EXPECT_EQ(std::memcmp(t1, t2, sizeof t1), 0);
    EXPECT_EQ(t1[0], 1 + 3);  // unit diagonal: a(0,0) = 1 is not read
}

// 20725/20726 are sgemm/dgemm and 20743/20744 strsm/dtrsm: same results, same errors
// reported under the same names.
TEST(Level3Options, NumberedExportsAreGemmAndTrsm) {
    int m = 3, n = 2, k = 3, ld = 3, bad = -1;
    float fa[9] = {4, 1, 2, 0, 5, 1, 0, 0, 6}, fb[6] = {1, 2, 3, 4, 5, 6}, f1 = 1, f0 = 0;
    double da[9] = {4, 1, 2, 0, 5, 1, 0, 0, 6}, db[6] = {1, 2, 3, 4, 5, 6}, d1 = 1, d0 = 0;
    float fc1[6], fc2[6], fx1[6], fx2[6];
    double dc1[6], dc2[6], dx1[6], dx2[6];
    qnum_sgemm("N", 1, "N", 1, &m, &n, &k, &f1, fa, &ld, fb, &ld, &f0, fc1, &ld);
    qnum_20725("N", 1, "N", 1, &m, &n, &k, &f1, fa, &ld, fb, &ld, &f0, fc2, &ld);
    qnum_dgemm("T", 1, "N", 1, &m, &n, &k, &d1, da, &ld, db, &ld, &d0, dc1, &ld);
    qnum_20726("T", 1, "N", 1, &m, &n, &k, &d1, da, &ld, db, &ld, &d0, dc2, &ld);
    EXPECT_EQ(std::memcmp(fc1, fc2, sizeof fc1), 0);
    EXPECT_EQ(std::memcmp(dc1, dc2, sizeof dc1), 0);
    EXPECT_EQ(fc1[0], 4.0f);
    EXPECT_EQ(dc1[0], 4 + 2 + 6);
    std::copy(fb, fb + 6, fx1), std::copy(fb, fb + 6, fx2);
    qnum_strsm("L", 1, "L", 1, "N", 1, "N", 1, &m, &n, &f1, fa, &ld, fx1, &ld);
    qnum_20743("L", 1, "L", 1, "N", 1, "N", 1, &m, &n, &f1, fa, &ld, fx2, &ld);
    EXPECT_EQ(std::memcmp(fx1, fx2, sizeof fx1), 0);
    EXPECT_FLOAT_EQ(fx1[0], 0.25f);
    std::copy(db, db + 6, dx1), std::copy(db, db + 6, dx2);
    qnum_dtrsm("L", 1, "U", 1, "T", 1, "U", 1, &m, &n, &d1, da, &ld, dx1, &ld);
    qnum_20744("L", 1, "U", 1, "T", 1, "U", 1, &m, &n, &d1, da, &ld, dx2, &ld);
    EXPECT_EQ(std::memcmp(dx1, dx2, sizeof dx1), 0);
    EXPECT_EQ(dx1[0], 1);  // unit diagonal, and the upper triangle of da holds zeros

    QuietErrors quiet;
    qnum_error_options(QNUM_SET_PRINT, QNUM_TERMINAL, 1, 0);
    const std::string out = qnum::test::capture_errors([&] {
        qnum_20725("N", 1, "N", 1, &bad, &n, &k, &f1, fa, &ld, fb, &ld, &f0, fc2, &ld);
        qnum_20726("N", 1, "N", 1, &bad, &n, &k, &d1, da, &ld, db, &ld, &d0, dc2, &ld);
        qnum_20743("L", 1, "L", 1, "N", 1, "N", 1, &m, &bad, &f1, fa, &ld, fx2, &ld);
        qnum_20744("L", 1, "L", 1, "N", 1, "X", 1, &m, &n, &d1, da, &ld, dx2, &ld);
    });
    EXPECT_EQ(last_code(), 2040);
    for (const char* name : {"qnum_sgemm", "qnum_dgemm", "qnum_strsm", "qnum_dtrsm"})
        EXPECT_NE(out.find(name), std::string::npos) << name << "\n" << out;
}

// A workspace that cannot be allocated is TERMINAL 201 under the kernel's name, with nothing
// written. The child process caps its address space just above what it uses already.
TEST(Level3Errors, NoWorkspaceIsTerminal201) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the address sanitizer needs more address space than the cap leaves";
#else
    std::string out;
    const int status = qnum::test::run_in_child(
        [] {
            // A new thread: its workspace does not exist yet, whatever ran before the fork.
            // With one arena and a fixed mmap threshold, its allocation must grow the heap or
            // map new memory, both of which the cap refuses.
            mallopt(M_MMAP_THRESHOLD, 1 << 17);
            mallopt(M_ARENA_MAX, 1);
            qnum_skip_signal_handler();
            std::thread([] {
                QuietErrors quiet;
                qnum_error_options(QNUM_SET_PRINT, QNUM_TERMINAL, 1, 0);
                int n = 64;
                std::vector<double> a(n * n, 1.0), c(n * n, 7.0);
                long pages = 0;
                std::FILE* f = std::fopen("/proc/self/statm", "r");
                if (f == nullptr || std::fscanf(f, "%ld", &pages) != 1) std::_Exit(10);
                std::fclose(f);
                const rlim_t cap = static_cast<rlim_t>(pages) * 4096 + (1 << 20);
                const rlimit limit{cap, cap};
                if (setrlimit(RLIMIT_AS, &limit) != 0) std::_Exit(11);
                // An arena left by threads of earlier tests can still serve the request.
                if (void* probe = std::malloc(16 << 20)) {
                    std::free(probe);
                    std::_Exit(77);
                }
                double one = 1;
                qnum_dgemm("N", 1, "N", 1, &n, &n, &n, &one, a.data(), &n, a.data(), &n, &one, c.data(), &n);
                if (last_type() != QNUM_TERMINAL || last_code() != 201) std::_Exit(12);
                for (double x : c)
                    if (x != 7.0) std::_Exit(13);
            }).join();
        },
        &out);
    if (status == 77) GTEST_SKIP() << "this process cannot be kept from allocating";
    EXPECT_EQ(status, 0) << out;
    EXPECT_NE(out.find("qnum_dgemm"), std::string::npos) << out;
#endif
}

// Many threads at once, each with its own matrices and sizes that need the packing
// workspace: every thread gets the result that one thread alone gets.
TEST(Level3Threads, ConcurrentCallsAgreeWithSerialOnes) {
    qnum_skip_signal_handler();
    constexpr int threads = 4, n = 150;
    std::vector<Mat<double>> a, b, c, x;
    std::mt19937 g(41);
    for (int t = 0; t < threads; ++t) {
        a.emplace_back(n, n), b.emplace_back(n, n), c.emplace_back(n, n), x.emplace_back(n, n);
        fill_random(a[t], g), fill_random(b[t], g);
        for (int i = 0; i < n; ++i) a[t](i, i) = a[t](i, i) + 4.0;
    }
    auto work = [&](int t, Mat<double>& cc, Mat<double>& xx) {
        cc = Mat<double>(n, n, 0, 0.0);
        gemm("N", "T", n, n, n, 1.0, a[t].data(), n, b[t].data(), n, 0.0, cc.data(), n);
        xx = b[t];
        trsm("L", "L", "N", "N", n, n, 2.0, a[t].data(), n, xx.data(), n);
        syrk("U", "N", n, n, 1.0, a[t].data(), n, 1.0, cc.data(), n);
    };
    std::vector<Mat<double>> cs(threads), xs(threads);
    for (int t = 0; t < threads; ++t) work(t, cs[t], xs[t]);
    for (int round = 0; round < 3; ++round) {
        std::vector<std::thread> pool;
        for (int t = 0; t < threads; ++t) pool.emplace_back([&, t] { work(t, c[t], x[t]); });
        for (auto& th : pool) th.join();
        for (int t = 0; t < threads; ++t) {
            EXPECT_TRUE(same_bits(c[t], cs[t])) << "thread " << t;
            EXPECT_TRUE(same_bits(x[t], xs[t])) << "thread " << t;
        }
    }
}

}  // namespace
