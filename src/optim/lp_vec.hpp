// Growable arrays of plain values on malloc, for the linear programming code: allocation
// failures are reported through return values, never by throwing.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <type_traits>

namespace qnum::optim {

template <class T>
class Vec {
    static_assert(std::is_trivially_copyable_v<T>, "Vec holds plain values only");

public:
    Vec() = default;
    ~Vec() { std::free(p_); }
    Vec(const Vec&) = delete;
    Vec& operator=(const Vec&) = delete;
    Vec(Vec&& o) noexcept : p_(o.p_), n_(o.n_), cap_(o.cap_) { o.p_ = nullptr; o.n_ = o.cap_ = 0; }
    Vec& operator=(Vec&& o) noexcept {
        if (this != &o) {
            std::free(p_);
            p_ = o.p_; n_ = o.n_; cap_ = o.cap_;
            o.p_ = nullptr; o.n_ = o.cap_ = 0;
        }
        return *this;
    }

    // Room for k elements without moving; false when memory runs out (contents kept).
    bool reserve(std::size_t k) {
        if (k <= cap_ && p_ != nullptr) return true;
        std::size_t c = cap_ < 8 ? 8 : cap_;
        while (c < k) {
            if (c > (std::size_t(-1) / sizeof(T)) / 2) return false;
            c *= 2;
        }
        T* q = static_cast<T*>(std::realloc(p_, c * sizeof(T)));
        if (q == nullptr) return false;
        p_ = q;
        cap_ = c;
        return true;
    }
    // k elements, the new ones set to v.
    bool resize(std::size_t k, T v = T()) {
        if (!reserve(k)) return false;
        for (std::size_t i = n_; i < k; ++i) p_[i] = v;
        n_ = k;
        return true;
    }
    // k elements, all set to v.
    bool assign(std::size_t k, T v) {
        n_ = 0;
        return resize(k, v);
    }
    bool push(T v) {
        if (n_ == cap_ && !reserve(n_ + 1)) return false;
        p_[n_++] = v;
        return true;
    }
    void clear() { n_ = 0; }
    std::size_t size() const { return n_; }
    T* data() { return p_; }
    const T* data() const { return p_; }
    T& operator[](std::size_t i) { return p_[i]; }
    const T& operator[](std::size_t i) const { return p_[i]; }

private:
    T* p_ = nullptr;
    std::size_t n_ = 0, cap_ = 0;
};

// A sparse matrix by columns (or, read the other way, by rows).
struct Csc {
    int m = 0, n = 0;  // rows, columns
    Vec<int> start;    // n + 1 offsets
    Vec<int> index;    // row of each entry
    Vec<double> value;
};

// Transposes `a` (m by n by columns) into `t` (the same matrix by rows); false on no memory.
inline bool transpose(const Csc& a, Csc& t) {
    t.m = a.n;
    t.n = a.m;
    std::size_t nz = a.start[a.n];
    if (!t.start.assign(a.m + 1, 0) || !t.index.resize(nz) || !t.value.resize(nz)) return false;
    for (std::size_t k = 0; k < nz; ++k) ++t.start[a.index[k] + 1];
    for (int i = 0; i < a.m; ++i) t.start[i + 1] += t.start[i];
    Vec<int> next;
    if (!next.resize(a.m)) return false;
    std::memcpy(next.data(), t.start.data(), sizeof(int) * a.m);
    for (int j = 0; j < a.n; ++j)
        for (int k = a.start[j]; k < a.start[j + 1]; ++k) {
            int q = next[a.index[k]]++;
            t.index[q] = j;
            t.value[q] = a.value[k];
        }
    return true;
}

}  // namespace qnum::optim
