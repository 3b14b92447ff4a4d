// The C entry points of the runtime frame: error stack, error options, storage, machine
// constants and the version query.
#include <cstdarg>
#include <cstdlib>
#include <cstring>

#include "frame/cpu.hpp"
#include "frame/error_stack.hpp"
#include "frame/frame.hpp"
#include "frame/machine.hpp"
#include "frame/services.hpp"

using namespace qnum;

extern "C" {

QNUM_API void qnum_e1psh(const char* name) { errors::push(name); }
QNUM_API void qnum_e1pop(const char* name) { errors::pop(name); }
QNUM_API void qnum_ermes(int type, int code) { errors::ermes(type, code); }
QNUM_API void qnum_e1mes(int type, int code, const char* message_template) { errors::mes(type, code, message_template); }

QNUM_API void qnum_e1sti(int k, int value) {
    if (k >= 1 && k <= slots) context()->int_slots[k - 1] = value;
}
QNUM_API void qnum_e1str(int k, float value) {
    if (k >= 1 && k <= slots) context()->real_slots[k - 1] = value;
}
QNUM_API void qnum_e1std(int k, double value) {
    if (k >= 1 && k <= slots) context()->real_slots[k - 1] = value;
}
QNUM_API void qnum_e1stc(int k, qnum_f_complex value) {
    if (k < 1 || k > slots) return;
    context()->complex_slots[k - 1][0] = value.re;
    context()->complex_slots[k - 1][1] = value.im;
}
QNUM_API void qnum_e1stz(int k, qnum_d_complex value) {
    if (k < 1 || k > slots) return;
    context()->complex_slots[k - 1][0] = value.re;
    context()->complex_slots[k - 1][1] = value.im;
}
QNUM_API void qnum_e1stl(int k, const char* value) {
    if (k < 0) k = -k;
    if (k >= 1 && k <= slots) context()->string_slots[k - 1] = value;
}

QNUM_API int qnum_n1rty(int level) { return errors::status_word(level, false); }
QNUM_API int qnum_n1rcd(int level) { return errors::status_word(level, true); }
QNUM_API int qnum_20305(void) { return context()->status[3]; }
QNUM_API void qnum_e1pos(int type, int* print, int* stop) { errors::set_policy(type, print, stop); }
QNUM_API void qnum_e1usr(const char* on_off) { errors::set_user_level(on_off); }
QNUM_API void qnum_set_at_checksum(qnum_error_callback callback) { errors::set_notification(callback); }

QNUM_API void qnum_error_options(int option, ...) {
    va_list ap;
    va_start(ap, option);
    frame::call<void>("qnum_error_options", [&] { frame::error_options(frame::Options(option, ap, 1)); });
    va_end(ap);
}

QNUM_API void qnum_skip_signal_handler(void) { set_signal_trapping(0); }
QNUM_API void qnum_free_allocated_memory(void* p) { std::free(p); }

QNUM_API float qnum_amach(int i) { return machine::amach(i); }
QNUM_API double qnum_dmach(int i) { return machine::dmach(i); }
QNUM_API float qnum_f_machine(int i) {
    return frame::call<float>("qnum_f_machine", [&] { return machine::machine<float>(i); });
}
QNUM_API double qnum_d_machine(int i) {
    return frame::call<double>("qnum_d_machine", [&] { return machine::machine<double>(i); });
}
QNUM_API int qnum_i_machine(int i) {
    return frame::call<int>("qnum_i_machine", [&] { return machine::integer(i); });
}
QNUM_API void qnum_umach(int n, FILE** p) { machine::umach(n, p); }
QNUM_API int qnum_ifnan(float x) { return machine::is_nan(x); }
QNUM_API int qnum_difnan(double x) { return machine::is_nan(x); }

QNUM_API char* qnum_version(int code) {
    return frame::call<char*>("qnum_version", [&] { return frame::version(code); });
}

QNUM_API const char* qnum_tuned_path(void) {
    switch (cpu::active()) {
        case cpu::Path::Avx512: return "AVX-512";
        case cpu::Path::Avx2: return "AVX2";
        default: return "portable";
    }
}

}  // extern "C"
