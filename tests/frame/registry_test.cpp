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

namespace reg = qnum::registry;

// Keys start above zero; setting a value beyond the thread's array grows it; the tables grow
// by doubling, so their sizes stay powers of two; failures are reported as errno values.
TEST(Registry, KeysAndValueArraysGrowByDoubling) {
    int key = 0;
    ASSERT_EQ(reg::key_create(&key, nullptr), reg::ok);
    EXPECT_GE(key, 1);
    while (key < 64) ASSERT_EQ(reg::key_create(&key, nullptr), reg::ok);
    EXPECT_GE(reg::key_capacity(), 128);
    auto power_of_two = [](long v) { return v >= 64 && (v & (v - 1)) == 0; };
    int dummy = 0;
    for (int k : {70, 256}) {  // 256: a key at a power of two needs the next one
        ASSERT_EQ(reg::set_value(k, &dummy), reg::ok);
        EXPECT_GT(reg::thread_array_length(), k);
        EXPECT_TRUE(power_of_two(reg::thread_array_length()) && power_of_two(reg::key_capacity()))
            << reg::thread_array_length() << " " << reg::key_capacity();
        EXPECT_EQ(reg::get_value(k), &dummy);
        reg::set_value(k, nullptr);
    }
    EXPECT_EQ(reg::get_value(100000), nullptr);
    std::thread([] {  // the first key holds values like any other (a thread of its own: it is in use)
        static int one;
        reg::set_value(1, &one);
        EXPECT_EQ(reg::get_value(1), &one);
        reg::set_value(1, nullptr);
    }).join();
    EXPECT_EQ(reg::set_value(0, &dummy), ENOMEM);
    static reg::OnceFlag flag{0};
    static int runs = 0;
    for (int i = 0; i < 3; ++i) reg::once(flag, [] { ++runs; });
    EXPECT_EQ(runs, 1);
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
                          if (reg::key_create(&key, nullptr) != reg::ok ||
                              reg::set_value(key, &marker) != reg::ok || reg::get_value(key) != &marker)
                              std::_Exit(3);
                      }
                  }).join();
                  for (int i = 0; i < 64; ++i) std::free(std::malloc(std::size_t{1} << (i % 22)));
              }),
              0);
}

// Destructors run at thread exit, the threads' entries are reused, and their contexts go.
TEST(RegistryThread, DestructorsRunAtThreadExitAndContextsAreFreed) {
    qnum_skip_signal_handler();
    int key = 0;
    ASSERT_EQ(reg::key_create(&key, [](void* v) { destroyed += v != nullptr; }), reg::ok);
    qnum_e1sti(1, 1);
    const int before = qnum::live_contexts();
    destroyed = 0;
    for (int round = 0; round < 50; ++round)
        std::thread([key] {
            static int marker;
            reg::set_value(key, &marker);
            qnum_e1psh("qnum_f_in_thread");  // creates this thread's context too
            qnum_e1pop("qnum_f_in_thread");
        }).join();
    EXPECT_EQ(destroyed.load(), 50);
    EXPECT_EQ(qnum::live_contexts(), before);
}

// A shutdown while another thread still holds values frees only the calling thread's values:
// each thread's value has an entry of its own, so neither hides the other.
TEST(RegistryThread, ShutdownWithAThreadAliveFreesOnlyTheCallersValues) {
    EXPECT_EQ(qnum::test::run_in_child([] {
        qnum_skip_signal_handler();
        static std::atomic<int> freed{0}, stage{0}, hooks{0};
        reg::at_unload([] { ++hooks; });
        reg::shutdown();  // the only thread: everything goes, unload hooks run, the tables start empty
        if (hooks != 1) std::_Exit(4);
        reg::at_unload([] { hooks += 10; });
        static int mine, theirs;
        int key = 0;
        if (reg::key_create(&key, [](void* v) { freed += v == &mine ? 1 : 100; }) != reg::ok) std::_Exit(2);
        reg::set_value(key, &mine);
        std::thread other([key] {
            reg::set_value(key, &theirs);
            stage = 1;
            while (stage != 2) std::this_thread::yield();
        });
        while (stage != 1) std::this_thread::yield();
        reg::shutdown();
        const int after_shutdown = freed.load();
        stage = 2;
        other.join();
        std::_Exit(after_shutdown == 1 && freed == 101 && hooks == 1 ? 0 : 3);
    }), 0);
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
