// Thread-key registry and per-thread contexts: keys, growth, thread exit, isolation.
#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <string>
#include <thread>

#include "frame/registry.hpp"
#include "qnum_test.hpp"

namespace {

std::atomic<int> destroyed{0};

TEST(Registry, KeysStartAboveZeroAndGrowTheTable) {
    int key = 0;
    ASSERT_EQ(qnum::registry::key_create(&key, nullptr), qnum::registry::ok);
    EXPECT_GE(key, 1);
    int last = key;
    while (last < 64) ASSERT_EQ(qnum::registry::key_create(&last, nullptr), qnum::registry::ok);
    EXPECT_GE(qnum::registry::key_capacity(), 128);
}

// Setting a value beyond the thread's array grows it; the tables grow by doubling, so their
// sizes stay powers of two.
TEST(Registry, SettingABeyondTheArrayGrowsIt) {
    auto power_of_two = [](long v) { return v >= 64 && (v & (v - 1)) == 0; };
    int dummy = 0;
    for (int key : {70, 300}) {
        ASSERT_EQ(qnum::registry::set_value(key, &dummy), qnum::registry::ok);
        EXPECT_GT(qnum::registry::thread_array_length(), key);
        EXPECT_TRUE(power_of_two(qnum::registry::thread_array_length())) << qnum::registry::thread_array_length();
        EXPECT_TRUE(power_of_two(qnum::registry::key_capacity())) << qnum::registry::key_capacity();
        EXPECT_EQ(qnum::registry::get_value(key), &dummy);
        qnum::registry::set_value(key, nullptr);
    }
    EXPECT_EQ(qnum::registry::get_value(100000), nullptr);
    EXPECT_EQ(qnum::registry::set_value(0, &dummy), ENOMEM);  // failures are reported as errno values
}

// One thread's values for thousands of keys pass several doublings of the value list; a list
// that believed itself larger than it is would corrupt the heap, which the allocator notices.
TEST(RegistryThread, ValueListGrowsPastManyEntries) {
    EXPECT_EQ(qnum::test::run_in_child([] {
                  qnum_skip_signal_handler();
                  std::thread([] {
                      static int marker;
                      for (int i = 0; i < 3000; ++i) {
                          int key = 0;
                          if (qnum::registry::key_create(&key, nullptr) != qnum::registry::ok ||
                              qnum::registry::set_value(key, &marker) != qnum::registry::ok || qnum::registry::get_value(key) != &marker)
                              std::_Exit(3);
                      }
                  }).join();
                  for (int i = 0; i < 64; ++i) std::free(std::malloc(std::size_t{1} << (i % 22)));
              }),
              0);
}

TEST(Registry, OnceRunsItsInitialiserOnce) {
    static qnum::registry::OnceFlag flag{0};
    static int runs = 0;
    for (int i = 0; i < 3; ++i) qnum::registry::once(flag, [] { ++runs; });
    EXPECT_EQ(runs, 1);
}

TEST(RegistryThread, DestructorsRunAtThreadExitAndTriplesAreReused) {
    qnum_skip_signal_handler();
    int key = 0;
    ASSERT_EQ(qnum::registry::key_create(&key, [](void* v) {
                  if (v) destroyed.fetch_add(1);
              }), qnum::registry::ok);
    destroyed = 0;
    for (int round = 0; round < 50; ++round) {
        std::thread([key] {
            static int marker;
            qnum::registry::set_value(key, &marker);
            qnum_e1sti(1, 1);  // creates this thread's context too
        }).join();
    }
    EXPECT_EQ(destroyed.load(), 50);
}

TEST(RegistryThread, ContextsAreFreedAtThreadExit) {
    qnum_skip_signal_handler();
    qnum_e1sti(1, 1);
    int before = qnum::live_contexts();
    for (int round = 0; round < 20; ++round) {
        std::thread([] {
            qnum_e1psh("qnum_f_in_thread");
            qnum_e1pop("qnum_f_in_thread");
        }).join();
    }
    EXPECT_EQ(qnum::live_contexts(), before);
}

TEST(RegistryThread, ThreadsRaiseDifferentErrorsAtOnceWithoutSeeingEachOther) {
    qnum_skip_signal_handler();
    std::atomic<int> failures{0};
    auto worker = [&](int code, const char* name) {
        qnum::test::QuietErrors quiet;
        for (int i = 0; i < 2000; ++i) {
            qnum_e1psh(name);
            qnum_e1sti(1, code + i);
            qnum_e1mes(4, code, "value %(i1)");
            qnum_e1pop(name);
            if (qnum_20305() != code || qnum::test::int_slot(1) != code + i) failures.fetch_add(1);
        }
    };
    std::thread a(worker, 1111, "qnum_f_a"), b(worker, 2222, "qnum_f_b");
    a.join();
    b.join();
    EXPECT_EQ(failures.load(), 0);
}

}  // namespace
