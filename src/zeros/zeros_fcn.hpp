// Real zeros of a user function by Mueller's method with deflation.
#pragma once

#include "frame/frame.hpp"

namespace qnum::zeros {

// The user's function: plain, or with the caller's data pointer (QNUM_FCN_W_DATA).
template <class T>
struct UserFcn {
    T (*plain)(T) = nullptr;
    T (*with_data)(T, void*) = nullptr;
    void* data = nullptr;

    T operator()(T x) const {
        frame::UserCall mark;
        return with_data != nullptr ? with_data(x, data) : plain(x);
    }
};

template <class T>
T* zeros_fcn(T (*fcn)(T), frame::Options opt);

}  // namespace qnum::zeros
