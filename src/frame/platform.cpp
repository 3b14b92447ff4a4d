// The platform layer on POSIX: pthread keys and mutexes, getenv, our own path search, /dev/tty.
#include "frame/platform.hpp"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace qnum::platform {

bool tls_alloc(TlsSlot& slot, void (*at_thread_exit)(void*)) {
    return pthread_key_create(&slot.key, at_thread_exit) == 0;
}

void tls_free(TlsSlot& slot) { pthread_key_delete(slot.key); }

unsigned long thread_id() {
    static thread_local unsigned long id = static_cast<unsigned long>(syscall(SYS_gettid));
    return id;
}

std::size_t get_env(const char* name, char* out, std::size_t cap) {
    if (cap == 0) return 0;
    out[0] = '\0';
    const char* v = std::getenv(name);
    if (v == nullptr) return 0;
    std::size_t n = std::strlen(v);
    if (n >= cap) n = cap - 1;
    std::memcpy(out, v, n);
    out[n] = '\0';
    return n;
}

static bool is_file(const char* path) {
    struct stat st;
    return stat(path, &st) == 0 && S_ISREG(st.st_mode);
}

bool search_path(const char* path, const char* file, char* out, std::size_t cap) {
    if (file == nullptr || *file == '\0' || cap == 0) return false;
    if (std::strchr(file, '/') != nullptr) {  // a path of its own is taken as it is
        if (!is_file(file) || std::strlen(file) >= cap) return false;
        std::snprintf(out, cap, "%s", file);
        return true;
    }
    const char* p = path ? path : "";
    while (true) {
        const char* end = std::strchr(p, ';');
        std::size_t len = end ? static_cast<std::size_t>(end - p) : std::strlen(p);
        if (len > 0) {
            int n = std::snprintf(out, cap, "%.*s/%s", static_cast<int>(len), p, file);
            if (n > 0 && static_cast<std::size_t>(n) < cap && is_file(out)) return true;
        }
        if (!end) break;
        p = end + 1;
    }
    out[0] = '\0';
    return false;
}

bool library_directory(char* out, std::size_t cap) {
    Dl_info info;
    if (dladdr(reinterpret_cast<void*>(&library_directory), &info) == 0 || info.dli_fname == nullptr)
        return false;
    const char* slash = std::strrchr(info.dli_fname, '/');
    if (slash == nullptr) return false;
    std::size_t len = static_cast<std::size_t>(slash - info.dli_fname);
    if (len + 1 > cap) return false;
    std::memcpy(out, info.dli_fname, len);
    out[len] = '\0';
    return true;
}

void host_executable_name(char* out, std::size_t cap) {
    char buf[1024];
    ssize_t n = readlink("/proc/self/exe", buf, sizeof buf - 1);
    if (n <= 0) {
        std::snprintf(out, cap, "%s", "qnummath");
        return;
    }
    buf[n] = '\0';
    const char* slash = std::strrchr(buf, '/');
    std::snprintf(out, cap, "%s", slash ? slash + 1 : buf);
}

void write_console(const char* text, std::size_t len) {
    int fd = open("/dev/tty", O_WRONLY | O_NOCTTY | O_CLOEXEC);
    int target = fd >= 0 ? fd : STDOUT_FILENO;
    if (fd < 0) std::fflush(stdout);
    while (len > 0) {
        ssize_t w = write(target, text, len);
        if (w < 0 && errno == EINTR) continue;
        if (w <= 0) break;
        text += w;
        len -= static_cast<std::size_t>(w);
    }
    if (fd >= 0) close(fd);
}

void message_box(std::FILE* out, const char* caption, const char* text, bool /*error_icon*/) {
    if (out == nullptr) out = stderr;
    std::fprintf(out, "%s\n%s\n", caption, text);
    std::fflush(out);
}

}  // namespace qnum::platform
