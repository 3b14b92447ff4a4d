// The platform layer: thread-local slot, locks, environment, file search and the console and
// dialog outputs, written once for POSIX systems.
#pragma once

#include <cstddef>
#include <cstdio>
#include <pthread.h>

namespace qnum::platform {

// One operating-system thread-local slot whose destructor runs when a thread that stored a
// value ends.
struct TlsSlot {
    pthread_key_t key;
};
bool tls_alloc(TlsSlot& slot, void (*at_thread_exit)(void*));
void tls_free(TlsSlot& slot);
inline void* tls_get(const TlsSlot& slot) { return pthread_getspecific(slot.key); }
inline bool tls_set(const TlsSlot& slot, void* value) { return pthread_setspecific(slot.key, value) == 0; }

// A nonzero identifier of the calling thread.
unsigned long thread_id();

// A critical section. Recursive, so that a printer called again on the same thread (a fault
// trapped while printing) cannot deadlock.
class Mutex {
public:
    // Statically initialised and never destroyed, so locks stay usable while the process
    // exits (a stop policy calls exit from inside library routines).
    constexpr Mutex() = default;
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;
    void lock() { pthread_mutex_lock(&m_); }
    void unlock() { pthread_mutex_unlock(&m_); }

private:
    pthread_mutex_t m_ = PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP;
};

class Lock {
public:
    explicit Lock(Mutex& m) : m_(m) { m_.lock(); }
    ~Lock() { m_.unlock(); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

private:
    Mutex& m_;
};

// Copies the value of an environment variable into out (at most cap - 1 characters); returns
// its length, or 0 when it is unset.
std::size_t get_env(const char* name, char* out, std::size_t cap);

// Looks for `file` in each directory of the ';'-separated `path`; writes the first path that
// names an existing regular file into out and returns true.
bool search_path(const char* path, const char* file, char* out, std::size_t cap);

// The directory that holds the library's own binary (for the catalogue installed beside it).
bool library_directory(char* out, std::size_t cap);

// The last path component of the running program.
void host_executable_name(char* out, std::size_t cap);

// Writes text to the terminal (the console), else to standard output.
void write_console(const char* text, std::size_t len);

// Shows a dialog where the platform has one; here no desktop dialog exists, so the caption
// line and then the text go to `out` as one block.
void message_box(std::FILE* out, const char* caption, const char* text, bool error_icon);

}  // namespace qnum::platform
