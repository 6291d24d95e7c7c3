#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// Changes the compiled binary in the first `size` of `maxSize` bytes; answers its new size.
[[nodiscard]] std::size_t mutateCompiled(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                         unsigned int seed);
/// The same for a binary of its own.
[[nodiscard]] std::vector<std::uint8_t> mutatedBinary(std::vector<std::uint8_t> binary, unsigned int seed);
