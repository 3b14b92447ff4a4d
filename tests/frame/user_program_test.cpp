// The library as a program linked against the shared object meets it: exit and unload while
// other threads work, and the catalogue search with and without a named path.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "frame/cpu.hpp"
#include "qnum_test.hpp"

namespace {

struct Outcome {
    int status;       // exit status, or 128 + signal
    std::string err;  // what the program wrote to standard error
};

// Runs program with args in folder cwd; env entries "NAME=value" are set, "NAME" alone unset.
Outcome run(const char* program, std::vector<std::string> args, const std::string& cwd = ".",
            const std::vector<std::string>& env = {}) {
    Outcome r{0, {}};
    args.insert(args.begin(), program);
    r.status = qnum::test::run_in_child([&] {
        if (chdir(cwd.c_str()) != 0) _exit(126);
        for (const auto& e : env) {
            const auto eq = e.find('=');
            eq == std::string::npos ? unsetenv(e.c_str()) : setenv(e.substr(0, eq).c_str(), e.substr(eq + 1).c_str(), 1);
        }
        std::vector<char*> argv;
        for (auto& a : args) argv.push_back(a.data());
        argv.push_back(nullptr);
        execv(argv[0], argv.data());
        _exit(127);
    }, &r.err);
    return r;
}

struct ExitCase {
    const char* mode;
    int status;
    int runs;
};

TEST(UserProgram, BusyThreadsNeverTurnExitIntoASignal) {
    for (ExitCase c : {ExitCase{"exit", 0, 100}, ExitCase{"stop", 5, 30}}) {
        for (int i = 0; i < c.runs; ++i) {
            Outcome r = run(QNUM_USER_PROGRAM, {c.mode});
            ASSERT_EQ(r.status, c.status) << c.mode << " run " << i << " (128 + n: signal n)\n" << r.err;
        }
    }
}

// Each cycle opens the library, uses it from three threads (every thread gets a context, an
// error stack with buffers, random state and packing buffers), joins them and closes it. The
// joined threads' state is gone at once; the rest at exit, where in the sanitizer build the
// leak check fails the status on a leak. Fifty cycles also show that reopening never runs
// out of thread-local space.
TEST(UserProgram, LoadUseJoinUnloadCyclesLeakNothing) {
    Outcome r = run(QNUM_UNLOAD_PROGRAM, {QNUM_SHARED_LIBRARY, "50"});
    EXPECT_EQ(r.status, 0) << r.err;
}

// The shared library sits beside qnumerr.bin in the build folder; the program runs in an empty
// folder, so only the library's own folder can supply the catalogue.
TEST(UserProgram, LibraryFolderEndsOnlyTheDefaultPath) {
    char empty[] = "/tmp/qnum_empty_XXXXXX";
    ASSERT_NE(mkdtemp(empty), nullptr);
    const std::string announcement = "Error in reading qnumerr.bin\nFile not found.\n";
    const std::string catalogue_text = "must lie between";
    struct Case {
        const char* what;
        std::vector<std::string> env;
        bool found;
    } cases[] = {
        {"default path", {"QNUMERRPATH", "LIB"}, true},
        {"QNUMERRPATH names an empty folder", {std::string("QNUMERRPATH=") + empty}, false},
        {"QNUMERRPATH names the catalogue's folder", {"QNUMERRPATH=" QNUM_BUILD_DIR}, true},
    };
    for (const Case& c : cases) {
        Outcome r = run(QNUM_USER_PROGRAM, {"message"}, empty, c.env);
        ASSERT_EQ(r.status, 0) << c.what << "\n" << r.err;
        EXPECT_EQ(r.err.rfind(announcement, 0) == 0, !c.found) << c.what << "\n" << r.err;
        EXPECT_EQ(r.err.find(catalogue_text) != std::string::npos, c.found) << c.what << "\n" << r.err;
    }
    rmdir(empty);
}

TEST(UserProgram, TunedPathNamesThePathInUse) {
    const char* names[] = {"portable", "AVX2", "AVX-512"};
    for (int p = 0; p <= static_cast<int>(qnum::cpu::detected()); ++p) {
        qnum::cpu::force(static_cast<qnum::cpu::Path>(p));
        EXPECT_STREQ(qnum_tuned_path(), names[p]);
    }
    qnum::cpu::reset();
}

}  // namespace
