// Building blocks of the MPS reader: growable arrays, the name table, the line reader and the
// number converter.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace qnum::optim {

// An array that grows by doubling through realloc. push() returns false when memory runs out
// or the count would pass INT_MAX; the array is freed on destruction.
template <class T>
class Grow {
public:
    Grow() = default;
    ~Grow() { std::free(p_); }
    Grow(const Grow&) = delete;
    Grow& operator=(const Grow&) = delete;

    bool push(T v) {
        if (n_ == cap_ && !reserve(cap_ < 16 ? 16 : cap_ * 2)) return false;
        p_[n_++] = v;
        return true;
    }
    // At least `cap` elements of room, count unchanged.
    bool reserve(std::size_t cap) {
        if (cap <= cap_) return true;
        if (cap > 0x7fffffffu) cap = 0x7fffffffu;
        if (cap <= n_) return false;
        void* q = std::realloc(p_, cap * sizeof(T));
        if (q == nullptr) return false;
        p_ = static_cast<T*>(q);
        cap_ = cap;
        return true;
    }
    T* data() const { return p_; }
    std::size_t size() const { return n_; }
    T& operator[](std::size_t i) const { return p_[i]; }

private:
    T* p_ = nullptr;
    std::size_t n_ = 0, cap_ = 0;
};

// A name of at most 8 characters packed into one integer, so that names compare and hash as
// integers. Unused bytes are zero.
using NameKey = std::uint64_t;

inline NameKey pack_name(const char* s, std::size_t n) {
    NameKey k = 0;
    std::memcpy(&k, s, n < 8 ? n : 8);
    return k;
}

inline void unpack_name(NameKey k, char out[9]) {
    std::memcpy(out, &k, 8);
    out[8] = '\0';
}

// Open-addressing table from names to indices; the slot count stays a power of two at most
// three quarters full, which keeps the table of a large file's rows small enough for the cache.
class NameTable {
public:
    NameTable() = default;
    ~NameTable() { std::free(slots_); }
    NameTable(const NameTable&) = delete;
    NameTable& operator=(const NameTable&) = delete;

    // The index stored for k, or -1.
    int find(NameKey k) const {
        if (slots_ == nullptr) return -1;
        for (std::size_t i = hash(k) & mask_;; i = (i + 1) & mask_) {
            if (slots_[i].index == -1) return -1;
            if (slots_[i].key == k) return slots_[i].index;
        }
    }
    // Stores k -> index unless k is present. Returns the index already stored, -1 when k was
    // new, or -2 when memory ran out.
    int insert(NameKey k, int index) {
        if (4 * (count_ + 1) > 3 * cap_ && !rehash(cap_ == 0 ? 64 : 2 * cap_)) return -2;
        for (std::size_t i = hash(k) & mask_;; i = (i + 1) & mask_) {
            if (slots_[i].index == -1) {
                slots_[i] = {k, index};
                ++count_;
                return -1;
            }
            if (slots_[i].key == k) return slots_[i].index;
        }
    }

    // Replaces every stored index i by map[i], an objective marker of -1 becoming -2, so that a
    // lookup after the rows are numbered needs no second table.
    void remap(const int* map) {
        for (std::size_t i = 0; i < cap_; ++i) {
            if (slots_[i].index >= 0) slots_[i].index = map[slots_[i].index] < 0 ? -2 : map[slots_[i].index];
        }
    }

private:
    struct Slot {
        NameKey key;
        int index;
    };
    // Names differ mostly in their last characters, the key's high bytes, so the mixer must
    // carry every bit into the low ones that pick the slot (the splitmix64 finaliser).
    static std::size_t hash(NameKey k) {
        k ^= k >> 30;
        k *= 0xbf58476d1ce4e5b9ull;
        k ^= k >> 27;
        k *= 0x94d049bb133111ebull;
        k ^= k >> 31;
        return static_cast<std::size_t>(k);
    }
    bool rehash(std::size_t cap) {
        Slot* fresh = static_cast<Slot*>(std::malloc(cap * sizeof(Slot)));
        if (fresh == nullptr) return false;
        for (std::size_t i = 0; i < cap; ++i) fresh[i].index = -1;
        Slot* old = slots_;
        const std::size_t old_cap = cap_;
        slots_ = fresh;
        cap_ = cap;
        mask_ = cap - 1;
        count_ = 0;
        for (std::size_t i = 0; i < old_cap; ++i) {
            if (old[i].index != -1) insert(old[i].key, old[i].index);
        }
        std::free(old);
        return true;
    }
    Slot* slots_ = nullptr;
    std::size_t cap_ = 0, mask_ = 0, count_ = 0;
};

// Lines of a stream, each cut to `width` characters and padded with blanks to that width; the
// rest of a longer line is skipped, and a CR that ends a line is dropped with its LF.
class LineReader {
public:
    static constexpr int width = 61;

    explicit LineReader(std::FILE* f) : f_(f) {}
    ~LineReader() { std::free(buf_); }
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;

    // False when memory for the buffer could not be had.
    bool open() {
        buf_ = static_cast<char*>(std::malloc(capacity));
        return buf_ != nullptr;
    }
    // The next line in line[0..width), blank-padded, line[width] = 0; false at end of input.
    bool next(char* line);

private:
    static constexpr std::size_t capacity = std::size_t{1} << 16;
    bool fill();
    std::FILE* f_;
    char* buf_ = nullptr;
    std::size_t pos_ = 0, end_ = 0;
    bool eof_ = false;
};

// Converts the characters s[0..n) (blanks trimmed by the caller) to a double: an optional sign,
// digits with an optional point, an optional exponent (E, e, D or d, optional sign, digits).
// Returns false unless the whole text is such a number. Correctly rounded.
bool parse_number(const char* s, std::size_t n, double& value);

}  // namespace qnum::optim
