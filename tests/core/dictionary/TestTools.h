#pragma once

#include "infrastructure/QueltInGuid.h"

#include <cstddef>
#include <random>
#include <vector>

/// GUIDs for tests, told apart by a number: 00000000-0000-0000-0000-00000000002a for 42.
inline QueltInGuid guidOf(std::uint8_t number) {
    QueltInGuid::Bytes bytes{};
    bytes.back() = number;
    return QueltInGuid(bytes);
}

/// Numbers that look random and are the same in every run.
class Random {
public:
    explicit Random(std::uint32_t seed) : m_engine(seed) {}

    /// A number below `limit`.
    unsigned int below(std::size_t limit) { return static_cast<unsigned int>(m_engine() % limit); }
    /// Yes or no.
    bool flip() { return below(2) != 0; }
    /// One of `values`.
    template <class T>
    const T& oneOf(const std::vector<T>& values) {
        return values[below(values.size())];
    }

private:
    std::mt19937 m_engine;
};
