// Workers of the public dense solvers and of the transpose utility.
#pragma once

#include "frame/frame.hpp"

namespace qnum::linsys {

// General systems by LU with scaled partial pivoting; returns x or null.
template <class T>
T* lin_sol_gen(int n, T* a, T* b, frame::Options opt);

// Symmetric (Hermitian) positive definite systems by Cholesky; returns x or null.
template <class T>
T* lin_sol_posdef(int n, T* a, T* b, frame::Options opt);

// Symmetric nonnegative definite systems by a rank-revealing R^T R; returns x or null.
template <class T>
T* lin_sol_nonnegdef(int n, T* a, T* b, frame::Options opt);

}  // namespace qnum::linsys
