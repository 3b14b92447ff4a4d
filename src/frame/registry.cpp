// The thread-key registry. Keys index a per-thread array of values held in one operating-
// system slot; word 0 of each array is its length, which is why key 0 is never handed out.
// A list of (thread, key, value) triples lets the shutdown reach the values of every thread.
#include "frame/registry.hpp"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>

namespace qnum::registry {
namespace {

struct Triple {
    unsigned long thread;  // 0: free
    int key;
    void* value;
};

using Word = std::uintptr_t;

platform::TlsSlot slot;
std::atomic<bool> started{false};
int next_key;  // both set by startup()
int capacity;
Destructor* destructors = nullptr;
Triple* list = nullptr;
int list_count = 0;
int list_capacity = 0;

platform::Mutex key_lock;
platform::Mutex list_lock;
platform::Mutex once_lock;
platform::Mutex output_mutex;
platform::Mutex startup_lock;
void (*unload_hooks[8])() = {};
int unload_hook_count = 0;

void thread_exit(void* array_ptr);

void cleanup_tables() {
    std::free(list);
    std::free(destructors);
    list = nullptr;
    destructors = nullptr;
    list_count = list_capacity = 0;
}

// Thread exit: the registry's destructors run with this thread's values, then its triples
// become free for the next thread.
void thread_exit(void* array_ptr) {
    Word* array = static_cast<Word*>(array_ptr);
    platform::Lock guard(list_lock);
    if (array != nullptr) {
        long length = static_cast<long>(array[0]);
        for (long k = 1; k < length; ++k) {
            Destructor d = nullptr;
            {
                platform::Lock keys(key_lock);
                if (k < capacity && destructors) d = destructors[k];
            }
            if (d) d(reinterpret_cast<void*>(array[k]));
        }
        std::free(array);
    }
    unsigned long me = platform::thread_id();
    for (int i = 0; i < list_count; ++i)
        if (list[i].thread == me) list[i].thread = 0;
}

// Load and unload hooks of the module.
__attribute__((constructor)) void on_load() { startup(); }
__attribute__((destructor)) void on_unload() { shutdown(); }

Word* thread_array() { return started.load(std::memory_order_acquire) ? static_cast<Word*>(platform::tls_get(slot)) : nullptr; }

}  // namespace

int startup() {
    platform::Lock guard(startup_lock);
    if (started.load(std::memory_order_relaxed)) return ok;
    if (!platform::tls_alloc(slot, thread_exit)) return no_slot;
    next_key = 1;
    capacity = 64;
    list_count = 0;
    list_capacity = 256;
    list = static_cast<Triple*>(std::calloc(list_capacity, sizeof(Triple)));
    destructors = static_cast<Destructor*>(std::calloc(capacity, sizeof(Destructor)));
    if (!list || !destructors) {
        cleanup_tables();
        platform::tls_free(slot);
        return no_memory;
    }
    started.store(true, std::memory_order_release);
    return ok;
}

// At a real unload (the other threads joined) everything is freed. While the process exits,
// other threads may still be inside the library: their values, the key and the tables stay
// as they are, for the operating system to reclaim, since freeing them would pull memory
// from under running code. Only the calling thread's values go then.
void shutdown() {
    platform::Lock guard(startup_lock);
    if (!started.load(std::memory_order_relaxed)) return;
    platform::Lock lock(list_lock);
    unsigned long me = platform::thread_id();
    bool others_live = false;
    for (int i = 0; i < list_count; ++i)
        if (list[i].thread != 0 && list[i].thread != me) others_live = true;
    for (int i = 0; i < list_count; ++i) {
        if (list[i].thread != me) continue;
        int k = list[i].key;
        Destructor d = (k > 0 && k < capacity) ? destructors[k] : nullptr;
        if (d) d(list[i].value);
        list[i].thread = 0;
    }
    Word* array = static_cast<Word*>(platform::tls_get(slot));
    if (array != nullptr) std::memset(array + 1, 0, (array[0] - 1) * sizeof(Word));
    if (others_live) return;
    while (unload_hook_count > 0) unload_hooks[--unload_hook_count]();
    std::free(array);
    platform::tls_set(slot, nullptr);
    started.store(false, std::memory_order_release);
    platform::tls_free(slot);
    cleanup_tables();
}

void at_unload(void (*fn)()) {
    platform::Lock guard(startup_lock);
    if (unload_hook_count < static_cast<int>(std::size(unload_hooks))) unload_hooks[unload_hook_count++] = fn;
}

int key_create(int* key, Destructor destructor) {
    if (!started.load(std::memory_order_acquire) && startup() != ok) return no_memory;
    platform::Lock guard(key_lock);
    if (next_key >= capacity) {
        auto* grown = static_cast<Destructor*>(std::calloc(2 * static_cast<std::size_t>(capacity), sizeof(Destructor)));
        if (!grown) return no_memory;
        std::memcpy(grown, destructors, capacity * sizeof(Destructor));
        std::free(destructors);
        destructors = grown;
        capacity *= 2;
    }
    *key = next_key;
    destructors[next_key] = destructor;
    ++next_key;
    return ok;
}

int set_value(int key, void* value) {
    if (key <= 0) return no_memory;
    if (!started.load(std::memory_order_acquire) && startup() != ok) return no_memory;
    int result = ok;
    unsigned long me = platform::thread_id();
    {
        platform::Lock guard(list_lock);
        int free_at = -1;
        bool replaced = false;
        for (int i = 0; i < list_count; ++i) {
            if (list[i].thread == me && list[i].key == key) {
                list[i].value = value;
                replaced = true;
                break;
            }
            if (free_at < 0 && list[i].thread == 0) free_at = i;
        }
        if (!replaced) {
            if (free_at < 0 && list_count == list_capacity) {
                auto* grown = static_cast<Triple*>(std::realloc(list, 2 * static_cast<std::size_t>(list_capacity) * sizeof(Triple)));
                if (grown) {
                    std::memset(grown + list_capacity, 0, list_capacity * sizeof(Triple));
                    list = grown;
                    list_capacity *= 2;
                } else {
                    result = no_memory;
                }
            }
            if (free_at < 0 && list_count < list_capacity) free_at = list_count++;
            if (free_at >= 0) list[free_at] = Triple{me, key, value};
        }
    }
    platform::Lock guard(key_lock);
    Word* array = static_cast<Word*>(platform::tls_get(slot));
    if (array == nullptr) {
        array = static_cast<Word*>(std::calloc(capacity, sizeof(Word)));
        if (!array) return no_memory;
        array[0] = static_cast<Word>(capacity);
        platform::tls_set(slot, array);
    }
    if (static_cast<Word>(key) >= array[0]) {
        int length = capacity;
        if (key >= capacity) {
            while (length <= key) length *= 2;
            auto* grown = static_cast<Destructor*>(std::calloc(length, sizeof(Destructor)));
            if (!grown) return no_memory;
            std::memcpy(grown, destructors, capacity * sizeof(Destructor));
            std::free(destructors);
            destructors = grown;
            capacity = length;
        }
        auto* bigger = static_cast<Word*>(std::calloc(length, sizeof(Word)));
        if (!bigger) return no_memory;
        std::memcpy(bigger, array, array[0] * sizeof(Word));
        bigger[0] = static_cast<Word>(length);
        std::free(array);
        array = bigger;
        platform::tls_set(slot, array);
    }
    array[key] = reinterpret_cast<Word>(value);
    return result;
}

void* get_value(int key) {
    Word* array = thread_array();
    if (array == nullptr || key <= 0 || static_cast<Word>(key) >= array[0]) return nullptr;
    return reinterpret_cast<void*>(array[key]);
}

int once(OnceFlag& flag, void (*init)()) {
    if (flag.load(std::memory_order_acquire)) return 0;
    platform::Lock guard(once_lock);
    if (!flag.load(std::memory_order_relaxed)) {
        init();
        flag.store(true, std::memory_order_release);
    }
    return 0;
}

void output_lock(std::FILE*) { output_mutex.lock(); }
void output_unlock(std::FILE*) { output_mutex.unlock(); }

int key_capacity() {
    platform::Lock guard(key_lock);
    return capacity;
}

long thread_array_length() {
    Word* array = thread_array();
    return array ? static_cast<long>(array[0]) : 0;
}

}  // namespace qnum::registry
