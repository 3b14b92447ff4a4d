// Test helpers shared by every test program.
#include "qnum_test.hpp"

#include <cstdio>
#include <cstdlib>
#include <sys/wait.h>
#include <unistd.h>

namespace qnum::test {

// Tests find the catalogue that the build made, whatever folder they run in.
[[maybe_unused]] static const int catalogue_path_set = setenv("QNUMERRPATH", QNUM_BUILD_DIR, 0);

QuietErrors::QuietErrors() {
    for (int type = 1; type <= 7; ++type)
        qnum_error_options(QNUM_SET_PRINT, type, 0, QNUM_SET_STOP, type, 0, 0);
}

QuietErrors::~QuietErrors() {
    static const int print[8] = {0, 0, 0, 1, 1, 1, 1, 1};
    static const int stop[8] = {0, 0, 0, 0, 1, 1, 0, 0};
    for (int type = 1; type <= 7; ++type)
        qnum_error_options(QNUM_SET_PRINT, type, print[type], QNUM_SET_STOP, type, stop[type], 0);
}

void raise_in(const char* name, int type, int code, const char* text, const char* outer) {
    if (outer) qnum_e1psh(outer);
    qnum_e1psh(name);
    qnum_e1mes(type, code, text);
    qnum_e1pop(name);
    if (outer) qnum_e1pop(outer);
}

static std::string read_all(std::FILE* f) {
    std::string out;
    std::fflush(f);
    std::rewind(f);
    char buf[4096];
    std::size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, f)) > 0) out.append(buf, n);
    return out;
}

std::string capture_errors(const std::function<void()>& fn) {
    std::FILE* old = nullptr;
    qnum_umach(3, &old);
    std::FILE* tmp = std::tmpfile();
    qnum_umach(-3, &tmp);
    fn();
    qnum_umach(-3, &old);
    std::string out = read_all(tmp);
    std::fclose(tmp);
    return out;
}

int run_in_child(const std::function<void()>& fn, std::string* output) {
    std::fflush(nullptr);
    std::FILE* tmp = std::tmpfile();
    pid_t pid = fork();
    if (pid == 0) {
        dup2(fileno(tmp), STDERR_FILENO);
        fn();
        std::fflush(nullptr);
        _exit(0);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    if (output) *output = read_all(tmp);
    std::fclose(tmp);
    if (WIFEXITED(status)) return WEXITSTATUS(status);
    if (WIFSIGNALED(status)) return 128 + WTERMSIG(status);
    return -1;
}

}  // namespace qnum::test
