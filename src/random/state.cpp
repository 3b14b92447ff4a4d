// Per-thread state of the uniform generator: records kept under keys of the thread-key
// registry (freed by its destructors at thread exit), state initialisation and clock seeds.
#include "random/state.hpp"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <type_traits>

#include "frame/frame.hpp"
#include "frame/registry.hpp"

namespace qnum::random {
namespace {

registry::OnceFlag keys_once{0};
int state_key;     // 0: not created (the registry never hands out key 0)
int block_keys[2];  // float, double; 0 as above

std::atomic<Clock> clock_source{nullptr};
std::atomic<Allocator> allocator{nullptr};

void free_record(void* p) { std::free(p); }

void create_keys() {
    if (registry::key_create(&state_key, free_record) != registry::ok) state_key = 0;
    for (int& key : block_keys)
        if (registry::key_create(&key, free_record) != registry::ok) key = 0;
}

void* allocate(std::size_t bytes) {
    Allocator a = allocator.load(std::memory_order_relaxed);
    return a ? a(bytes) : std::malloc(bytes);
}

// The calling thread's record under `key` (read after the keys' once-guard), created zero-filled by `init` on
// first use; null after raising TERMINAL 200.
void* record(int key, std::size_t bytes, void (*init)(void*)) {
    void* p = key != 0 ? registry::get_value(key) : nullptr;
    if (p != nullptr) return p;
    if (key != 0) p = allocate(bytes);
    if (p != nullptr) {
        std::memset(p, 0, bytes);
        init(p);
        // A failure to list the value for the shutdown can still leave it stored for this
        // thread; then it is ours (and freed at thread exit) and must not be freed here.
        if (registry::set_value(key, p) != registry::ok && registry::get_value(key) != p) {
            std::free(p);
            p = nullptr;
        }
    }
    if (p == nullptr) frame::raise(frame::Type::Terminal, err::out_of_memory);
    return p;
}

// The constants of a new stream. The seed stays unset until a caller or the clock fixes it.
void initialise(State& s) {
    s.modulus = 2147483647.0;
    s.inv_modulus = 1.0 / 2147483647.0;
    s.option = 1;
    s.table_set = 0;
    // Shrunk from 2^-31 rather than taken as 1/(2^31 - 1): the largest seed, 2^31 - 2, rounds
    // to 2^31 as a float, and only a scale below 2^-31 keeps its deviate below 1.
    const float eps = qnum_amach(3);
    float scale = 0x1p-31f;
    do {
        scale *= 1.0f - eps;
    } while (static_cast<float>(scale * 2147483648.0f) >= 1.0f);
    s.scale = scale;
    s.needs_init = 0;
}

template <class T>
constexpr int block_index = std::is_same_v<T, float> ? 0 : 1;

}  // namespace

State* state() {
    registry::once(keys_once, create_keys);
    auto* s = static_cast<State*>(
        record(state_key, sizeof(State), [](void* p) { static_cast<State*>(p)->needs_init = true; }));
    if (s != nullptr && s->needs_init) initialise(*s);
    return s;
}

template <class T>
Block<T>* block() {
    registry::once(keys_once, create_keys);
    return static_cast<Block<T>*>(record(block_keys[block_index<T>], sizeof(Block<T>), [](void* p) {
        auto* b = static_cast<Block<T>*>(p);
        b->first_call = true;
        b->table_stale = true;
    }));
}

template Block<float>* block<float>();
template Block<double>* block<double>();

std::int32_t clock_seed() {
    Clock c = clock_source.load(std::memory_order_relaxed);
    std::time_t now = c ? c() : std::time(nullptr);
    std::tm t{};
    if (gmtime_r(&now, &t) == nullptr && localtime_r(&now, &t) == nullptr) return 123457;
    std::int32_t seed = (t.tm_hour * 100 + t.tm_min) * 100 + t.tm_sec + 1;
    return seed <= 1 ? 123457 : seed;
}

void take_clock_seed(State& s, bool mark) {
    s.seed = clock_seed();
    s.seed_d = s.seed;
    if (mark) s.seeded = true;
}

std::uint32_t multiplier(int option) {
    static constexpr std::uint32_t a[3] = {16807u, 397204094u, 950706376u};
    return a[(option - 1) / 2];
}

Clock set_clock(Clock clock) { return clock_source.exchange(clock); }

Allocator set_allocator(Allocator a) { return allocator.exchange(a); }

}  // namespace qnum::random
