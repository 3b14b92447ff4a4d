// The message catalogue reader. qnumerr.bin is found once per process along a search path,
// its code and block tables are kept in memory, and each message is read from disk when it
// is needed; every thread caches the last message it read.
#include "frame/catalogue.hpp"

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

#include "frame/context.hpp"
#include "frame/platform.hpp"
#include "frame/registry.hpp"

namespace qnum::catalogue {
namespace {

constexpr std::uint16_t magic = 0x72F8;
constexpr const char* default_path = ".;$LIB;/lib;c:/lib";
constexpr const char* default_name = "qnumerr.bin";

constexpr const char* reason_not_found = "File not found";
constexpr const char* reason_format = "File is not in qnumerr.bin format";
constexpr const char* reason_memory = "Out-of-memory";
constexpr const char* reason_seek = "Cannot seek to correct location";
constexpr const char* reason_read = "Cannot read the message record";

std::atomic<int> state{0};  // 0 not tried, 1 failed, 2 loaded
registry::OnceFlag load_once{0};
platform::Mutex catalogue_lock;
int fd = -1;
bool swapped = false;
std::uint16_t header[7];
std::uint16_t* codes = nullptr;
std::uint16_t* blocks = nullptr;
std::size_t count = 0;
long data_start = 0;
std::size_t largest_record = 0;
std::atomic<long> reads{0};
char found_path[1024];

std::uint16_t swap16(std::uint16_t v) { return static_cast<std::uint16_t>((v >> 8) | (v << 8)); }

bool read_exact(int f, void* buf, std::size_t n) {
    auto* p = static_cast<char*>(buf);
    while (n > 0) {
        ssize_t r = ::read(f, p, n);
        if (r < 0 && errno == EINTR) continue;
        if (r <= 0) return false;
        p += r;
        n -= static_cast<std::size_t>(r);
    }
    return true;
}

// The search path with each "$NAME" element replaced by that variable's value (an unset
// variable drops the element).
void expand_path(const char* path, char* out, std::size_t cap) {
    std::size_t used = 0;
    out[0] = '\0';
    const char* p = path;
    while (true) {
        const char* end = std::strchr(p, ';');
        std::size_t len = end ? static_cast<std::size_t>(end - p) : std::strlen(p);
        char element[1024];
        bool keep = true;
        if (len > 0 && p[0] == '$') {
            char name[256];
            std::snprintf(name, sizeof name, "%.*s", static_cast<int>(len - 1), p + 1);
            keep = platform::get_env(name, element, sizeof element) > 0 || std::getenv(name) != nullptr;
        } else {
            std::snprintf(element, sizeof element, "%.*s", static_cast<int>(len), p);
        }
        if (keep) {
            int n = std::snprintf(out + used, cap - used, "%s%s", used ? ";" : "", element);
            if (n > 0 && used + static_cast<std::size_t>(n) < cap) used += static_cast<std::size_t>(n);
        }
        if (!end) break;
        p = end + 1;
    }
}

void announce_failure(Context* c, const char* name, const char* reason) {
    char text[1400];
    std::snprintf(text, sizeof text, "Error in reading %s\n%s.\n", name, reason);
    if (c->printer_kind == QNUM_PRINTER_MESSAGE_BOX) {
        char caption[256];
        platform::host_executable_name(caption, sizeof caption);
        platform::message_box(stderr, caption, text, false);
    } else {
        std::fputs(text, stderr);
        std::fflush(stderr);
    }
}

// The tables of a loaded catalogue, released when the library is unloaded.
void release_tables() {
    if (fd >= 0) ::close(fd);
    fd = -1;
    std::free(codes);
    std::free(blocks);
    codes = blocks = nullptr;
}

void fail_load(Context* c, const char* reason) {
    release_tables();
    c->catalogue.reason = reason;
    state.store(1, std::memory_order_release);
    announce_failure(c, c->catalogue.file_name, reason);
}

void load() {
    Context* c = context();
    const char* path = c->catalogue.search_path;
    if (path == nullptr && platform::get_env("QNUMERRPATH", c->catalogue.env_path, 261) > 0)
        path = c->catalogue.env_path;
    // A path the caller or the environment names is searched alone, exactly as written, so a
    // catalogue that is not where it was said to be gets announced.
    const bool named = path != nullptr;
    if (!named) path = default_path;
    char expanded[2048];
    expand_path(path, expanded, sizeof expanded);
    const char* name = c->catalogue.file_name ? c->catalogue.file_name : default_name;
    bool found = platform::search_path(expanded, name, found_path, sizeof found_path);
    if (!found && !named) {
        // The default path ends with the folder of the library itself: an installed
        // catalogue sits beside it.
        char dir[1024];
        found = platform::library_directory(dir, sizeof dir) &&
                platform::search_path(dir, name, found_path, sizeof found_path);
    }
    if (found) fd = ::open(found_path, O_RDONLY | O_CLOEXEC);
    if (fd < 0) return fail_load(c, reason_not_found);

    unsigned char raw[14];
    if (!read_exact(fd, raw, sizeof raw)) return fail_load(c, reason_format);
    for (int i = 0; i < 7; ++i) std::memcpy(&header[i], raw + 2 * i, 2);
    if (header[0] == swap16(magic)) {
        swapped = true;
        for (auto& h : header) h = swap16(h);
    } else if (header[0] != magic) {
        return fail_load(c, reason_format);
    }
    count = header[2];
    unsigned shift = header[6];
    if (shift > 15) return fail_load(c, reason_format);
    codes = static_cast<std::uint16_t*>(std::malloc(2 * count + 2));
    blocks = static_cast<std::uint16_t*>(std::malloc(2 * count + 2));
    if (!codes || !blocks) return fail_load(c, reason_memory);
    if (!read_exact(fd, codes, 2 * count) || !read_exact(fd, blocks, 2 * count + 2))
        return fail_load(c, reason_format);
    if (swapped)
        for (std::size_t i = 0; i < count; ++i) codes[i] = swap16(codes[i]);
    if (swapped)
        for (std::size_t i = 0; i <= count; ++i) blocks[i] = swap16(blocks[i]);
    long block = 1L << shift;
    data_start = 4L * static_cast<long>(count) + 15;
    if (block != 1) data_start = (data_start + block - 1) / block * block;
    largest_record = 0;
    for (std::size_t i = 0; i < count; ++i) {
        if (blocks[i + 1] < blocks[i]) return fail_load(c, reason_format);
        std::size_t bytes = static_cast<std::size_t>(blocks[i + 1] - blocks[i] + 1) << shift;
        if (bytes > largest_record) largest_record = bytes;
    }
    registry::at_unload(release_tables);
    state.store(2, std::memory_order_release);
}

int find(long code) {
    auto key = static_cast<std::uint16_t>((code % 100000) & 0xFFFF);
    std::size_t lo = 0, hi = count;
    while (lo < hi) {
        std::size_t mid = (lo + hi) / 2;
        if (codes[mid] == key) return static_cast<int>(mid);
        if (codes[mid] < key) lo = mid + 1;
        else hi = mid;
    }
    return -1;
}

const char* read_error(CatalogueCache& cc, long code, const char* reason) {
    cc.reason = reason;
    std::snprintf(cc.fallback, sizeof cc.fallback, "Error in reading %s for error message %d.\n%s.\n",
                  cc.file_name, static_cast<int>(code), reason);
    state.store(1, std::memory_order_release);
    cc.cached_code = -1;
    return cc.fallback;
}

}  // namespace

const char* message_template(long code) {
    Context* c = context();
    CatalogueCache& cc = c->catalogue;
    cc.file_name = default_name;  // a name set by option lasts only until the next lookup
    registry::once(load_once, load);
    int index = state.load(std::memory_order_acquire) == 2 ? find(code) : -1;
    if (index < 0) {
        std::snprintf(cc.fallback, sizeof cc.fallback, "Error code %ld.", code);
        return cc.fallback;
    }
    if (cc.message == nullptr) {
        std::size_t want = static_cast<std::size_t>(header[4]) + header[5] + 2;
        if (want < largest_record) want = largest_record;
        cc.message = static_cast<char*>(std::malloc(want + 2));
        if (cc.message == nullptr) return read_error(cc, code, reason_memory);
        cc.message_cap = want;
    }
    if (code == cc.cached_code) return cc.message;
    unsigned shift = header[6];
    long offset = data_start + (static_cast<long>(blocks[index]) << shift);
    std::size_t bytes = static_cast<std::size_t>(blocks[index + 1] - blocks[index] + 1) << shift;
    {
        platform::Lock guard(catalogue_lock);
        if (::lseek(fd, offset, SEEK_SET) != offset) return read_error(cc, code, reason_seek);
        if (!read_exact(fd, cc.message, bytes)) return read_error(cc, code, reason_read);
        reads.fetch_add(1, std::memory_order_relaxed);
    }
    cc.message[bytes] = '\0';
    cc.message[bytes + 1] = '\0';
    cc.cached_code = code;
    cc.cached_index = index;
    return cc.message;
}

const char* code_name(long code) {
    Context* c = context();
    CatalogueCache& cc = c->catalogue;
    const char* t = message_template(code);
    if (state.load(std::memory_order_acquire) == 2 && t == cc.message) {
        std::snprintf(cc.code_name, sizeof cc.code_name, "%s", t + std::strlen(t) + 1);
    } else {
        std::snprintf(cc.code_name, sizeof cc.code_name, "%ld", code);
    }
    return cc.code_name;
}

long records_read() { return reads.load(std::memory_order_relaxed); }
int load_state() { return state.load(std::memory_order_acquire); }
bool byte_swapped() { return swapped; }

}  // namespace qnum::catalogue
