// The thread-key registry: small integer keys with destructors over one thread-local slot,
// the once-initialiser and the library's process-wide locks.
#pragma once

#include <atomic>
#include <cstdio>

#include "frame/platform.hpp"

namespace qnum::registry {

using Destructor = void (*)(void*);

// Results of the registry operations.
inline constexpr int ok = 0;
inline constexpr int no_slot = 11;
inline constexpr int no_memory = 12;

// Start-up and shutdown, run by the load and unload hooks (start-up also on first use).
int startup();
void shutdown();

// Registers fn to run at a real unload, after every thread's values are gone; never while
// other threads may still use the library. Process-wide tables release themselves this way.
void at_unload(void (*fn)());

int key_create(int* key, Destructor destructor);
int set_value(int key, void* value);
void* get_value(int key);

// Runs init exactly once per process; always returns 0.
using OnceFlag = std::atomic<int>;
int once(OnceFlag& flag, void (*init)());

// The output lock serialises every printed report; the stream argument is not used.
void output_lock(std::FILE* stream);
void output_unlock(std::FILE* stream);

// For tests: the process-wide key capacity and the length of the calling thread's array.
int key_capacity();
long thread_array_length();

}  // namespace qnum::registry
