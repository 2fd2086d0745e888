#pragma once

#include <array>
#include <cstddef>

namespace kvr {

/// A number with its slopes by the N unknowns of one cell: forward differentiation, so that a kernel written
/// for any number type gives its value and its derivatives at once.
template <std::size_t N>
struct Jet {
    double value = 0.0;
    std::array<double, N> slope{};
};

/// The unknown of the given place.
template <std::size_t N>
Jet<N> variable(double value, std::size_t place) {
    Jet<N> jet{value, {}};
    jet.slope[place] = 1.0;
    return jet;
}

/// A function of another jet, by its value and its slope there.
template <std::size_t N>
Jet<N> chained(double value, double slope, const Jet<N>& argument) {
    Jet<N> jet{value, {}};
    for (std::size_t k = 0; k < N; ++k) jet.slope[k] = slope * argument.slope[k];
    return jet;
}

template <std::size_t N>
Jet<N> operator+(const Jet<N>& a, const Jet<N>& b) {
    Jet<N> sum{a.value + b.value, {}};
    for (std::size_t k = 0; k < N; ++k) sum.slope[k] = a.slope[k] + b.slope[k];
    return sum;
}

template <std::size_t N>
Jet<N> operator-(const Jet<N>& a, const Jet<N>& b) {
    Jet<N> difference{a.value - b.value, {}};
    for (std::size_t k = 0; k < N; ++k) difference.slope[k] = a.slope[k] - b.slope[k];
    return difference;
}

template <std::size_t N>
Jet<N> operator*(const Jet<N>& a, const Jet<N>& b) {
    Jet<N> product{a.value * b.value, {}};
    for (std::size_t k = 0; k < N; ++k) product.slope[k] = a.slope[k] * b.value + a.value * b.slope[k];
    return product;
}

template <std::size_t N>
Jet<N> operator/(const Jet<N>& a, const Jet<N>& b) {
    Jet<N> quotient{a.value / b.value, {}};
    for (std::size_t k = 0; k < N; ++k)
        quotient.slope[k] = (a.slope[k] - quotient.value * b.slope[k]) / b.value;
    return quotient;
}

template <std::size_t N>
Jet<N> operator*(double factor, const Jet<N>& a) {
    return chained(factor * a.value, factor, a);
}

template <std::size_t N>
Jet<N> operator*(const Jet<N>& a, double factor) {
    return factor * a;
}

template <std::size_t N>
Jet<N> operator+(const Jet<N>& a, double constant) {
    return {a.value + constant, a.slope};
}

template <std::size_t N>
Jet<N> operator/(double constant, const Jet<N>& a) {
    return chained(constant / a.value, -constant / (a.value * a.value), a);
}

}  // namespace kvr
