// The piecewise-polynomial structure and its constructor.
#include "interp/ppoly.hpp"

#include <cstdint>
#include <cstring>
#include <limits>

namespace qnum::interp {

namespace {

// a * b when it fits in an int; -1 otherwise (a, b >= 0).
long long mul_int(long long a, long long b) {
    if (a != 0 && b > std::numeric_limits<int>::max() / a) return -1;
    return a * b;
}

// The header is padded so that the pointer and value arrays after it stay aligned.
constexpr std::size_t round_up(std::size_t n, std::size_t a) { return (n + a - 1) / a * a; }

}  // namespace

template <class T>
Ppoly<T>* ppoly_alloc(int domain_dim, int target_dim, const int order[], const int num_breakpoints[]) {
    long long ncoef = 1, nbreak = 0;
    for (int i = 0; i < domain_dim; ++i) {
        ncoef = mul_int(ncoef, mul_int(num_breakpoints[i] - 1LL, order[i]));
        if (ncoef < 0) return nullptr;
        nbreak += num_breakpoints[i];
    }
    const std::size_t values_at = round_up(
        round_up(sizeof(Ppoly<T>), alignof(T*)) + (std::size_t(domain_dim) + target_dim) * sizeof(T*),
        alignof(T));
    const long long nvalues = nbreak + static_cast<long long>(target_dim) * ncoef;
    const std::size_t vbytes = frame::checked_bytes(nvalues, sizeof(T));
    if (vbytes == 0 && nvalues != 0) return nullptr;
    const std::size_t ints_at = round_up(values_at + vbytes, alignof(int));
    const std::size_t total = ints_at + 3 * std::size_t(domain_dim) * sizeof(int);
    if (total < ints_at) return nullptr;
    auto* block = static_cast<unsigned char*>(std::malloc(total));
    if (block == nullptr) return nullptr;

    auto* p = reinterpret_cast<Ppoly<T>*>(block);
    p->domain_dim = domain_dim;
    p->target_dim = target_dim;
    p->breakpoints = reinterpret_cast<T**>(block + round_up(sizeof(Ppoly<T>), alignof(T*)));
    p->coef = p->breakpoints + domain_dim;
    T* values = reinterpret_cast<T*>(block + values_at);
    auto* ints = reinterpret_cast<int*>(block + ints_at);
    p->order = ints;
    p->num_coef = ints + domain_dim;
    p->num_breakpoints = ints + 2 * domain_dim;
    for (int i = 0; i < domain_dim; ++i) {
        p->order[i] = order[i];
        p->num_coef[i] = static_cast<int>(ncoef);
        p->num_breakpoints[i] = num_breakpoints[i];
        p->breakpoints[i] = values;
        values += num_breakpoints[i];
    }
    for (int t = 0; t < target_dim; ++t) {
        p->coef[t] = values;
        values += ncoef;
    }
    return p;
}

template <class T>
Ppoly<T>* ppoly_create(int domain_dim, int target_dim, int* order, int* num_breakpoints,
                       frame::Options opt) {
    T** given_breaks = nullptr;
    T** given_coef = nullptr;
    while (int code = opt.next()) {
        switch (code) {
        case QNUM_BREAKPOINTS: given_breaks = opt.ptr<T*>("breakpoints", "QNUM_BREAKPOINTS"); break;
        case QNUM_COEFFICIENTS: given_coef = opt.ptr<T*>("coef", "QNUM_COEFFICIENTS"); break;
        default: opt.unknown(code);
        }
    }
    const bool dims_ok = check::positive(domain_dim, "domain_dim") & check::positive(target_dim, "target_dim");
    if (dims_ok && check::array(order, "order") && check::array(num_breakpoints, "num_breakpoints")) {
        for (int i = 0; i < domain_dim; ++i) {
            check::positive(order[i], "order");
            check::range(num_breakpoints[i], 2, std::numeric_limits<int>::max(), "num_breakpoints");
            if (given_breaks) check::array(given_breaks[i], "breakpoints");
        }
        for (int t = 0; given_coef && t < target_dim; ++t) check::array(given_coef[t], "coef");
    }
    if (frame::pending()) return nullptr;

    Ppoly<T>* p = ppoly_alloc<T>(domain_dim, target_dim, order, num_breakpoints);
    if (p == nullptr) {
        frame::raise(frame::Type::Fatal, err::ppoly_no_memory, frame::Str{"domain_dim"},
                     frame::Int{domain_dim}, frame::Str{"target_dim"}, frame::Int{target_dim});
        return nullptr;
    }
    for (int i = 0; given_breaks && i < domain_dim; ++i)
        std::memcpy(p->breakpoints[i], given_breaks[i], sizeof(T) * p->num_breakpoints[i]);
    for (int t = 0; given_coef && t < target_dim; ++t)
        std::memcpy(p->coef[t], given_coef[t], sizeof(T) * std::size_t(p->num_coef[0]));
    return p;
}

template Ppoly<float>* ppoly_alloc<float>(int, int, const int[], const int[]);
template Ppoly<double>* ppoly_alloc<double>(int, int, const int[], const int[]);
template Ppoly<float>* ppoly_create<float>(int, int, int*, int*, frame::Options);
template Ppoly<double>* ppoly_create<double>(int, int, int*, int*, frame::Options);

}  // namespace qnum::interp
