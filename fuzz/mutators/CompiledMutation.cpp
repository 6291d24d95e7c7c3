// Length and checksum would keep nearly every changed input from getting past the header, so most are given
// those that they should have.

#include "mutators/CompiledMutation.h"

#include "core/compiled/CompiledBytes.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace {

constexpr std::size_t s_header = 16;

std::size_t mutateBody(std::uint8_t* data, std::size_t size, std::size_t maxSize) {
    if (size < s_header) {
        std::fill(data + size, data + s_header, std::uint8_t{0});
        size = s_header;
    }
    putNumber({data, size}, 4, 1); // the version
    return s_header + LLVMFuzzerMutate(data + s_header, size - s_header, maxSize - s_header);
}

} // namespace

std::size_t mutateCompiled(std::uint8_t* data, std::size_t size, std::size_t maxSize, unsigned int seed) {
    const bool leavesHeader = maxSize > s_header && seed % 16 != 0;
    const std::size_t mutated =
        leavesHeader ? mutateBody(data, size, maxSize) : LLVMFuzzerMutate(data, size, maxSize);
    if (mutated >= s_header && seed % 32 != 0) {
        repairHeader({data, mutated});
    }
    return mutated;
}

std::vector<std::uint8_t> mutatedBinary(std::vector<std::uint8_t> binary, unsigned int seed) {
    constexpr std::size_t growth = 64;
    const std::size_t size = binary.size();
    binary.resize(size + growth);
    binary.resize(mutateCompiled(binary.data(), size, binary.size(), seed));
    return binary;
}
