// Fuzz target: the message-catalogue reader on a damaged qnumerr.bin, in either byte order.
// The input is written as the catalogue file, the reader loads it afresh (it loads once per
// process, so this file compiles the reader itself and resets it between inputs), and
// templates and names are looked up for the codes the file lists and for a few it does not.
// Every lookup must give a terminated text, nothing may be read outside the tables, and the
// printer must cope with whatever template it is given.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>

#include "fuzz_util.hpp"

// fuzz-sources: src/frame
// fuzz-exclude: src/frame/catalogue.cpp
// fuzz-options: -max_len=24576

#include "frame/catalogue.cpp"

namespace qnum::catalogue {

// Back to "not tried": the tables released and this thread's record buffer (sized for the
// previous file's largest record) gone.
void reset_for_fuzzing() {
    release_tables();
    swapped = false;
    count = 0;
    largest_record = 0;
    state.store(0);
    load_once.store(0);
    CatalogueCache& cc = context()->catalogue;
    std::free(cc.message);
    cc.message = nullptr;
    cc.message_cap = 0;
    cc.cached_code = -1;
    cc.cached_index = -1;
}

}  // namespace qnum::catalogue

namespace {

volatile std::size_t sink;

// The folder holding the catalogue under test, searched instead of the environment's.
const std::string& folder() {
    static const std::string dir = [] {
        char name[] = "/tmp/qnum_catalogue_fuzz_XXXXXX";
        if (mkdtemp(name) == nullptr) std::abort();
        qnum_error_options(QNUM_SET_ERROR_PATH, name, 0);
        return std::string(name);
    }();
    return dir;
}

void look_up(long code) {
    const char* t = qnum::catalogue::message_template(code);
    sink = sink + std::strlen(t);
    sink = sink + std::strlen(qnum::catalogue::code_name(code));
}

// A warning of `code` with every kind of substitution, printed (to nowhere): the printer
// fills the template read from the file.
void report(long code) {
    static const bool printing = [] {
        qnum_error_options(QNUM_SET_ERROR_FILE, std::fopen("/dev/null", "w"), QNUM_SET_PRINT, QNUM_WARNING, 1, 0);
        return true;
    }();
    (void)printing;
    qnum_e1psh("qnum_d_fuzz");
    qnum_e1sti(1, -7);
    qnum_e1sti(2, 12345);
    qnum_e1std(1, 2.5);
    qnum_e1stz(1, qnum_d_complex{1.0, -0.5});
    qnum_e1stl(1, "name");
    qnum_e1stl(2, "QNUM_OPTION");
    qnum_ermes(QNUM_WARNING, static_cast<int>(code));
    qnum_e1pop("qnum_d_fuzz");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::quiet_errors();
    const std::string path = folder() + "/qnumerr.bin";
    std::FILE* f = std::fopen(path.c_str(), "wb");
    if (f == nullptr) std::abort();
    if (size > 0 && std::fwrite(data, 1, size, f) != size) std::abort();
    std::fclose(f);

    qnum::catalogue::reset_for_fuzzing();
    // The reader announces a file it cannot use on standard error: hidden here.
    static std::FILE* null_stream = std::fopen("/dev/null", "w");
    std::FILE* saved = stderr;
    stderr = null_stream;
    look_up(150);
    if (qnum::catalogue::load_state() == 2) {
        using namespace qnum::catalogue;
        for (std::size_t i = 0; i < count && i < 16; ++i) {
            look_up(codes[i]);
            look_up(codes[i] + 100000);  // the same record through the code's wider form
            if (i < 3) report(codes[i]);
        }
    }
    for (long code : {0L, 103L, 4242L, 65535L, 99999L, -1L}) look_up(code);
    stderr = saved;
    return 0;
}
