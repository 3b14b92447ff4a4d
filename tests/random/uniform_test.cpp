// Tests of the uniform deviates: sequences, bounds, shuffle tables, errors and storage.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdlib>
#include <random>

#include "random_test.hpp"

namespace qnum::test {
namespace {

template <class T>
class Uniform : public ::testing::Test {
protected:
    QuietErrors quiet;
};
using Precisions = ::testing::Types<float, double>;
TYPED_TEST_SUITE(Uniform, Precisions);

TYPED_TEST(Uniform, SequencesMatchIndependentArithmetic) {
    using T = TypeParam;
    const std::uint32_t seeds[] = {1, 2, 16807, 123456789, 2147483646};
    for (int option : {1, 3, 5}) {
        for (std::uint32_t seed : seeds) {
            SCOPED_TRACE(::testing::Message() << "option " << option << " seed " << seed);
            qnum_random_seed_set(static_cast<int>(seed));
            qnum_random_option(option);
            // Option 1 is checked against the standard library's minimal-standard engine.
            std::minstd_rand0 minstd(seed);
            RefStream ref{multipliers[(option - 1) / 2], seed};
            auto next = [&]() -> std::uint32_t {
                return option == 1 ? static_cast<std::uint32_t>(minstd()) : ref.next();
            };
            // One long array (the tuned kernels), then short pieces that must continue it.
            std::vector<T> r = draw<T>(1000);
            for (int k = 1; k <= 7; ++k) {
                std::vector<T> piece = draw<T>(k);
                r.insert(r.end(), piece.begin(), piece.end());
            }
            std::uint32_t s = 0;
            for (std::size_t i = 0; i < r.size(); ++i) {
                s = next();
                ASSERT_EQ(r[i], expected_deviate<T>(s)) << "deviate " << i;
            }
            EXPECT_EQ(qnum_random_seed_get(), static_cast<int>(s));
            EXPECT_EQ(last_type(), 0);
        }
    }
}

// The seeds next to the ends of the range give the extreme deviates: 1 gives scale itself and
// 2^31 - 2 gives the largest, which must stay below 1 although the seed rounds to 2^31.
TYPED_TEST(Uniform, ExtremeSeedsStayInsideTheUnitInterval) {
    using T = TypeParam;
    const T top = expected_deviate<T>(2147483646u);
    EXPECT_LT(top, T(1));
    if constexpr (std::is_same_v<T, float>) {
        EXPECT_EQ(top, 1.0f - 0x1p-24f);
    }
    for (int option : {1, 3, 5}) {
        const std::uint64_t a = multipliers[(option - 1) / 2];
        qnum_random_option(option);
        for (std::uint64_t target : {std::uint64_t{1}, m - 1}) {
            qnum_random_seed_set(static_cast<int>(predecessor(a, target)));
            std::vector<T> r = draw<T>(1);
            EXPECT_EQ(r[0], expected_deviate<T>(static_cast<std::uint32_t>(target))) << option;
            EXPECT_GT(r[0], T(0));
            EXPECT_LT(r[0], T(1));
        }
    }
    qnum_random_option(1);
    qnum_random_seed_set(1);
    EXPECT_EQ(draw<T>(1)[0], T(16807) * static_cast<T>(scale));
    qnum_random_seed_set(2147483646);
    for (T u : draw<T>(100000)) ASSERT_TRUE(u > 0 && u < 1) << u;
}

// The shuffled generators against a model built on the reference stream: the table filled
// from 128 steps, divided by the modulus, and each draw swapping in the new seed's deviate.
template <class T>
struct ShuffleModel {
    RefStream ref;
    T table[128];
    void fill() {
        for (T& t : table) t = static_cast<T>(static_cast<double>(ref.next()) / 2147483647.0);
    }
    T next() {
        std::uint32_t s = ref.next();
        T u = table[s % 128];
        table[s % 128] = expected_deviate<T>(s);
        return u;
    }
};

template <class T>
void expect_model(ShuffleModel<T>& model, int n) {
    std::vector<T> r = draw<T>(n);
    for (int i = 0; i < n; ++i) ASSERT_EQ(r[i], model.next()) << "deviate " << i;
    EXPECT_EQ(qnum_random_seed_get(), static_cast<int>(model.ref.s));
}

TYPED_TEST(Uniform, ShuffledGeneratorsBuildTheirTableOnFirstUse) {
    using T = TypeParam;
    for (int option : {2, 4, 6}) {
        SCOPED_TRACE(option);
        in_fresh_thread([&] {
            qnum_random_seed_set(987654321);
            qnum_random_option(option);
            ShuffleModel<T> model{{multipliers[(option - 1) / 2], 987654321}, {}};
            model.fill();
            expect_model(model, 3000);  // more than one chunk of seeds
            expect_model(model, 5);     // the table carries over to the next call
        });
    }
}

TYPED_TEST(Uniform, CallersShuffleTable) {
    using T = TypeParam;
    in_fresh_thread([] {
        qnum_random_seed_set(4242);
        qnum_random_option(2);
        ShuffleModel<T> model{{16807, 4242}, {}};
        T u[128];
        for (int i = 0; i < 128; ++i) u[i] = T(i + 1) / T(128);  // u[127] = 1 is allowed
        set_table(u);
        EXPECT_EQ(last_type(), 0);
        std::copy(u, u + 128, model.table);
        std::vector<T> r = draw<T>(2000);
        bool one = false;
        for (int i = 0; i < 2000; ++i) {
            ASSERT_EQ(r[i], model.next()) << i;
            one = one || r[i] == T(1);
        }
        EXPECT_TRUE(one) << "the entry 1.0 was never handed out";

        // Bad entries are refused one by one; they keep what the table held.
        T v[128];
        std::fill(v, v + 128, T(0.25));
        v[5] = 0;
        v[9] = T(1.5);
        v[20] = std::nan("");
        for (int i = 0; i < 128; ++i)
            if (i != 5 && i != 9 && i != 20) model.table[i] = v[i];
        set_table(v);
        EXPECT_EQ(last_type(), 5);
        EXPECT_EQ(last_code(), 11031);
        EXPECT_EQ(int_slot(1), 21);
        EXPECT_TRUE(std::isnan(real_slot(1)));
        expect_model(model, 500);

        // A bad first entry that is positive is refused like any other; the table stays set.
        v[0] = 2;
        model.table[5] = model.table[9] = model.table[20] = T(0.25);
        v[5] = v[9] = v[20] = T(0.25);
        set_table(v);
        EXPECT_EQ(last_code(), 11031);
        EXPECT_EQ(int_slot(1), 1);
        EXPECT_EQ(real_slot(1), 2.0);
        for (int i = 1; i < 128; ++i) model.table[i] = v[i];
        expect_model(model, 300);

        // table[0] <= 0 hands the table back to the generator, which refills it now.
        for (T first : {T(0), T(-1)}) {
            v[0] = first;
            set_table(v);
            EXPECT_EQ(last_type(), 0);
            model.fill();
            expect_model(model, 300);
        }
    });
}

TYPED_TEST(Uniform, FloatAndDoubleDrawFromOneStream) {
    using T = TypeParam;
    using Other = std::conditional_t<std::is_same_v<T, float>, double, float>;
    qnum_random_option(5);
    qnum_random_seed_set(31337);
    RefStream ref{multipliers[2], 31337};
    EXPECT_EQ(draw<T>(3)[2], (ref.next(), ref.next(), expected_deviate<T>(ref.next())));
    EXPECT_EQ(draw<Other>(1)[0], expected_deviate<Other>(ref.next()));
    EXPECT_EQ(draw<T>(1)[0], expected_deviate<T>(ref.next()));
}

TYPED_TEST(Uniform, ResultStorage) {
    using T = TypeParam;
    T user[4] = {};
    EXPECT_EQ(uniform<T>(4, QNUM_RETURN_USER, user, 0), user);
    EXPECT_GT(user[3], T(0));
    T* got = uniform<T>(4, 0);
    ASSERT_NE(got, nullptr);
    EXPECT_GT(got[3], T(0));
    qnum_free_allocated_memory(got);
}

// A draw that fails after the routine allocated its result frees it (the sanitizer builds
// see a leak otherwise) and returns null.
TYPED_TEST(Uniform, FailedDrawReleasesTheResult) {
    using T = TypeParam;
    in_fresh_thread([] {
        random::Allocator old = random::set_allocator([](std::size_t) -> void* { return nullptr; });
        EXPECT_EQ(uniform<T>(100, 0), nullptr);
        EXPECT_EQ(last_type(), 5);
        EXPECT_EQ(last_code(), 200);
        T r[3] = {};
        plain_uniform(3, r);
        EXPECT_EQ(last_code(), 200);
        EXPECT_EQ(r[0], T(0));
        random::set_allocator(old);
        qnum_random_seed_set(7);
        EXPECT_EQ(draw<T>(1)[0], expected_deviate<T>(7 * 16807));
    });
}

float buf[8];
double dbuf[2];

TEST(UniformErrors, AreReportedWithTheirSlots) {
    QuietErrors quiet;
    const struct {
        void (*call)();
        int code;
        const char* name;  // l1, or null
        int i1, i2;        // integer slots 1 and 2 (i3 is the value, for 132), unless both 0
    } cases[] = {
        {[] { EXPECT_EQ(qnum_f_random_uniform(0, 0), nullptr); }, 132, "n_random", 1, INT_MAX},
        {[] { EXPECT_EQ(qnum_d_random_uniform(-4, 0), nullptr); }, 132, "n_random", 1, INT_MAX},
        {[] { EXPECT_EQ(qnum_f_random_uniform(5, 10001, 0), nullptr); }, 11001, nullptr, 10001, 2},
        {[] { EXPECT_EQ(qnum_f_random_uniform(5, QNUM_RETURN_USER, buf, 77, 0), nullptr); }, 11001, nullptr, 77, 4},
        {[] { EXPECT_EQ(qnum_d_random_uniform(5, QNUM_RETURN_USER, (double*)nullptr, 0), nullptr); }, 104, "r", 0, 0},
        {[] { qnum_rnun(0, buf); }, 132, "n", 1, INT_MAX},
        {[] { qnum_drnun(-1, dbuf); }, 132, "n", 1, INT_MAX},
        {[] { qnum_rnun(3, nullptr); }, 150, "r", 0, 0},
        {[] { qnum_random_option(0); }, 132, "generator_option", 1, 6},
        {[] { qnum_random_option(7); }, 132, "generator_option", 1, 6},
        {[] { qnum_rnses(nullptr); }, 150, "table", 0, 0},
        {[] { qnum_drnses(nullptr); }, 150, "table", 0, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        c.call();
        EXPECT_EQ(std::make_pair(last_type(), last_code()), std::make_pair(5, c.code));
        EXPECT_EQ(string_slot(1), c.name ? c.name : string_slot(1));
        if (c.i1 || c.i2) {
            EXPECT_EQ(std::make_pair(int_slot(1), int_slot(2)), std::make_pair(c.i1, c.i2));
        }
    }
}

// A refused option leaves the stream's generator as it was.
TEST(UniformErrors, BadOptionChangesNothing) {
    QuietErrors quiet;
    qnum_random_option(3);
    qnum_random_option(-1);
    EXPECT_EQ(int_slot(3), -1);
    qnum_random_seed_set(99);
    EXPECT_EQ(draw<float>(1)[0], expected_deviate<float>(99ull * 397204094 % m));
}

}  // namespace
}  // namespace qnum::test
