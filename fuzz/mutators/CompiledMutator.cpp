#include "mutators/CompiledMutation.h"

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned int seed) {
    return mutateCompiled(data, size, maxSize, seed);
}
