#pragma once

#include "interchange/LoadedContext.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace quelt::host::fuzz {

/// What the fuzzer's bytes say to a target that converts: on the first line a context, then records.
struct ConversionInput {
    /// Null when the first line is no context.
    std::unique_ptr<LoadedContext> context;
    /// Few records, one a line.
    std::string_view records;
};

[[nodiscard]] ConversionInput readInput(const std::uint8_t* data, std::size_t size);

} // namespace quelt::host::fuzz
