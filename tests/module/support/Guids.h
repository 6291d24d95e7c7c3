#pragma once

#include "infrastructure/QueltInGuid.h"

namespace quelt::test {

/// The GUID whose last byte is `number`, and whose others are 0.
[[nodiscard]] inline QueltInGuid guidOf(unsigned char number) {
    QueltInGuid::Bytes bytes{};
    bytes.back() = number;
    return QueltInGuid(bytes);
}

} // namespace quelt::test
