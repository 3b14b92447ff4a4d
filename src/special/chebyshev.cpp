// Term counts and Clenshaw summation of Chebyshev series.
#include <cmath>

#include "frame/frame.hpp"
#include "special/functions.hpp"

namespace qnum::special {
// The count is decided in float even for double tables: every table of a precision then keeps
// the same terms whatever the caller's compiler does with wider intermediates, and the decision
// is one that the float routines can reproduce.
template <class C>
int inits(const C* cs, int n, float eta, const char* name) {
    if (n < 1) {
        raise_at(name, frame::Type::Terminal, err::series_empty_table, frame::Int{n});
        return 0;
    }
    float err = 0.0f;
    int i = n;
    for (; i >= 1; --i) {
        err += std::fabs(static_cast<float>(cs[i - 1]));
        if (err > eta) break;
    }
    if (i < 1) i = 1;
    if (i == n) {
        raise_at(name, frame::Type::Terminal, err::series_too_short);
        return 0;
    }
    return i;
}

template <class W>
bool csevl_checks(W x, int n, const char* name) {
    if (n < 1) {
        raise_at(name, frame::Type::Terminal, err::series_no_terms, frame::Int{n});
        return false;
    }
    if (n > 1000) {
        raise_at(name, frame::Type::Terminal, err::series_too_many_terms, frame::Int{n});
        return false;
    }
    if (x < W(-1.1) || x > W(1.1))
        raise_at(name, frame::Type::Warning, err::series_argument_outside, frame::Real{static_cast<double>(x)});
    return true;
}

template <class W, class C>
W csevl(W x, const C* cs, int n, const char* name) {
    if (!csevl_checks(x, n, name)) return static_cast<W>(Mach<double>::nan());
    W b1 = 0, b0 = b1, b2 = b1;
    const W twox = 2 * x;
    for (int i = n; i >= 1; --i) {
        b2 = b1;
        b1 = b0;
        // The coefficient meets b2 off the chain of products through b1, which then sets the
        // pace alone (one multiply and one add per term).
        b0 = (static_cast<W>(cs[i - 1]) - b2) + twox * b1;
    }
    return W(0.5) * (b0 - b2);
}

template bool csevl_checks<double>(double, int, const char*);
template int inits<float>(const float*, int, float, const char*);
template int inits<double>(const double*, int, float, const char*);
template float csevl<float, float>(float, const float*, int, const char*);
template double csevl<double, double>(double, const double*, int, const char*);
template double csevl<double, float>(double, const float*, int, const char*);
template long double csevl<long double, long double>(long double, const long double*, int, const char*);

}  // namespace qnum::special
