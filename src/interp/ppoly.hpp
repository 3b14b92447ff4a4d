// The piecewise-polynomial structure: one allocation holding its header and all its arrays.
#pragma once

#include <cstdlib>

#include "frame/frame.hpp"

namespace qnum::interp {

template <class T>
struct PpolyOf;
template <>
struct PpolyOf<float> { using type = Qnum_f_ppoly; };
template <>
struct PpolyOf<double> { using type = Qnum_d_ppoly; };
template <class T>
using Ppoly = typename PpolyOf<T>::type;

// Lays out a structure with the given dimensions (arrays assumed valid); null when its size
// overflows or memory runs out. Raises nothing: callers decide which error that is.
template <class T>
Ppoly<T>* ppoly_alloc(int domain_dim, int target_dim, const int order[], const int num_breakpoints[]);

// The public constructor's worker.
template <class T>
Ppoly<T>* ppoly_create(int domain_dim, int target_dim, int* order, int* num_breakpoints,
                       frame::Options opt);

// Frees a structure on every path out unless release()d to the caller.
template <class T>
class PpolyOwner {
public:
    explicit PpolyOwner(Ppoly<T>* p = nullptr) : p_(p) {}
    ~PpolyOwner() { std::free(p_); }
    PpolyOwner(const PpolyOwner&) = delete;
    PpolyOwner& operator=(const PpolyOwner&) = delete;
    Ppoly<T>* get() const { return p_; }
    Ppoly<T>* operator->() const { return p_; }
    Ppoly<T>* release() { Ppoly<T>* p = p_; p_ = nullptr; return p; }

private:
    Ppoly<T>* p_;
};

}  // namespace qnum::interp
