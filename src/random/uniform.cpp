// Uniform deviates: unshuffled runs from the kernels, shuffled draws through a 128-entry
// table, the table fill, and the caller's tables.
#include "random/uniform.hpp"

#include <algorithm>
#include <climits>
#include <cmath>

#include "random/state.hpp"
#include "random/uniform_kernels.hpp"

namespace qnum::random {
namespace {

// (a * x) mod (2^31 - 1) in double arithmetic, exact for integral 0 < x < 2^31: every product
// stays below 2^46 and fmod is exact. 16807 needs one remainder; the large multipliers are
// split into 15-bit halves, a = a1 * 2^15 + a0, and need three.
double mulmod_d(std::uint32_t a, double x) {
    constexpr double md = 2147483647.0;
    if (a < 32768u) return std::fmod(a * x, md);
    double t = std::fmod(static_cast<double>(a >> 15) * x, md);
    t = std::fmod(t * 32768.0, md);
    return std::fmod(t + static_cast<double>(a & 32767u) * x, md);
}

// The generator's own table: 128 steps from seed_d, each entry the seed over the modulus
// (divided, where draws multiply by scale). The seed continues from the last entry.
template <class T>
void fill_table(State& s, std::uint32_t a, T* table) {
    double x = s.seed_d;
    for (int i = 0; i < table_size; ++i) {
        x = mulmod_d(a, x);
        table[i] = static_cast<T>(x / 2147483647.0);
    }
    s.seed_d = x;
    s.seed = static_cast<std::int32_t>(x);
}

// Each deviate steps the seed, hands out the entry that the new seed's low seven bits pick
// and puts the new seed's deviate in its place. The seeds come from the kernels a chunk at a
// time; only the table walk is sequential.
template <class T>
std::uint32_t shuffle(std::uint32_t a, std::uint32_t seed, T scale, T* table, int n, T* r) {
    constexpr int chunk = 1024;
    std::uint32_t s[chunk];
    for (int done = 0; done < n; done += chunk) {
        int count = std::min(chunk, n - done);
        seed = kern::seeds(a, seed, s, static_cast<std::size_t>(count));
        for (int k = 0; k < count; ++k) {
            unsigned j = s[k] & (table_size - 1);
            r[done + k] = table[j];
            table[j] = kern::deviate(s[k], scale);
        }
    }
    return seed;
}

}  // namespace

template <class T>
bool draw(int n, T* r) {
    State* s = state();
    Block<T>* b = s ? block<T>() : nullptr;
    if (b == nullptr) return false;
    if (b->first_call) {
        if (!s->seeded) take_clock_seed(*s, true);
        b->first_call = 0;
    }
    const std::uint32_t a = multiplier(s->option);
    const T scale = s->scale;
    std::uint32_t seed = static_cast<std::uint32_t>(s->seed);
    if (shuffled(s->option)) {
        std::int32_t& set = table_set(*s, *b);
        if (!set) {
            if (b->table_stale) {
                if (!s->seeded) take_clock_seed(*s, true);
                b->table_stale = 0;
            }
            fill_table(*s, a, b->table);
            set = true;
            seed = static_cast<std::uint32_t>(s->seed);
        }
        seed = shuffle(a, seed, scale, b->table, n, r);
    } else {
        seed = kern::uniform(a, seed, scale, r, static_cast<std::size_t>(n));
    }
    s->seed = static_cast<std::int32_t>(seed);
    s->seed_d = s->seed;
    return true;
}

template <class T>
T* random_uniform(int n, frame::Options opt) {
    frame::Out<T> r;
    while (int code = opt.next()) {
        switch (code) {
            case QNUM_RETURN_USER: r.borrow(opt.ptr<T>("r", "QNUM_RETURN_USER")); break;
            default: opt.unknown(code, err::unknown_routine_option);
        }
    }
    check::positive(n, "n_random");
    if (frame::pending()) return nullptr;
    if (!r.ensure(n, "n_random")) return nullptr;
    // The owned array goes with r when the draw fails.
    if (!draw(n, r.get()) || qnum_n1rty(0) >= static_cast<int>(frame::Type::Fatal)) return nullptr;
    return r.release();
}

template <class T>
void rnun(int n, T* r) {
    check::positive(n, "n");
    check::array(r, "r");
    if (frame::pending()) return;
    draw(n, r);
}

template <class T>
void rnses(const T* table) {
    if (!check::array(table, "table")) return;
    State* s = state();
    Block<T>* b = s ? block<T>() : nullptr;
    if (b == nullptr) return;
    std::int32_t& set = table_set(*s, *b);
    if (table[0] <= 0) {
        set = 0;
        return;
    }
    for (int i = 0; i < table_size; ++i) {
        if (table[i] > 0 && table[i] <= 1) {
            b->table[i] = table[i];
        } else {
            frame::raise(frame::Type::Terminal, err::bad_shuffle_entry, frame::Real{table[i]},
                         frame::Int{i + 1});
        }
    }
    set = true;
}

void random_option(int generator_option) {
    frame::Level step("l_random_option");
    if (!check::range(generator_option, 1, 6, "generator_option")) return;
    if (State* s = state()) s->option = generator_option;
}

void random_seed_set(int seed) {
    State* s = state();
    if (s == nullptr) return;
    if (seed >= 1 && seed <= 2147483646) {
        s->seed = seed;
        s->seed_d = seed;
        s->seeded = true;
    } else if (seed == 0) {
        take_clock_seed(*s, false);
    } else if (!s->seeded) {
        take_clock_seed(*s, true);
    }
}

// A stream nobody seeded is seeded here as its first draw would seed it, so the value
// returned is the one the stream continues from and can be passed back to replay it.
int random_seed_get() {
    State* s = state();
    if (s == nullptr) return 0;
    if (!s->seeded) take_clock_seed(*s, true);
    return s->seed;
}

template bool draw<float>(int, float*);
template bool draw<double>(int, double*);
template float* random_uniform<float>(int, frame::Options);
template double* random_uniform<double>(int, frame::Options);
template void rnun<float>(int, float*);
template void rnun<double>(int, double*);
template void rnses<float>(const float*);
template void rnses<double>(const double*);

}  // namespace qnum::random
