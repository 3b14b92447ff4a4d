// Loads and releases the library around threaded use, as a plug-in host would; it is not
// linked against the library, so dlopen and dlclose alone decide when it is loaded:
//   unload_program LIB N    N cycles of dlopen, two threads and the loader, join, dlclose
#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

#include "qnummath.h"

namespace {

// Each cycle opens the library, uses it from three threads, joins them and closes it again.
int dlopen_cycles(const char* path, int cycles) {
    for (int i = 0; i < cycles; ++i) {
        void* lib = dlopen(path, RTLD_NOW | RTLD_LOCAL);
        if (!lib) {
            std::fprintf(stderr, "dlopen: %s\n", dlerror());
            return 2;
        }
        auto skip = reinterpret_cast<void (*)()>(dlsym(lib, "qnum_skip_signal_handler"));
        auto uniform = reinterpret_cast<double* (*)(int, ...)>(dlsym(lib, "qnum_d_random_uniform"));
        auto release = reinterpret_cast<void (*)(void*)>(dlsym(lib, "qnum_free_allocated_memory"));
        auto gemm = reinterpret_cast<decltype(&qnum_dgemm)>(dlsym(lib, "qnum_dgemm"));
        auto imach = reinterpret_cast<int (*)(int)>(dlsym(lib, "qnum_i_machine"));
        auto options = reinterpret_cast<void (*)(int, ...)>(dlsym(lib, "qnum_error_options"));
        if (!skip || !uniform || !release || !gemm || !imach || !options) return 3;
        skip();
        auto work = [&] {
            options(QNUM_SET_PRINT, QNUM_TERMINAL, 0, QNUM_SET_STOP, QNUM_TERMINAL, 0, 0);
            const int n = 40;
            std::vector<double> a(n * n, 1.0), c(n * n, 0.0);
            const double one = 1.0, zero = 0.0;
            for (int k = 0; k < 20; ++k) {
                gemm("N", 1, "T", 1, &n, &n, &n, &one, a.data(), &n, a.data(), &n, &zero, c.data(), &n);
                release(uniform(100, 0));
                imach(99);  // an error: every thread gets its error stack and buffers
            }
        };
        std::thread t1(work), t2(work);
        t1.join();
        t2.join();
        work();  // the loading thread too
        if (dlclose(lib) != 0) return 4;
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: unload_program LIB N\n");
        return 2;
    }
    return dlopen_cycles(argv[1], std::atoi(argv[2]));
}
