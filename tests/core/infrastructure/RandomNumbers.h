#pragma once

#include <cstddef>
#include <random>

/// Random numbers that are the same on every run and every platform.
class RandomNumbers {
public:
    explicit RandomNumbers(unsigned int seed) : m_engine(seed) {}

    /// A number below `limit`, which is not 0.
    unsigned int below(std::size_t limit) { return static_cast<unsigned int>(m_engine() % limit); }
    /// True once in `often` times.
    bool onceIn(unsigned int often) { return below(often) == 0; }

private:
    std::mt19937 m_engine;
};
