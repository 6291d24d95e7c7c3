#pragma once

#include "compiled/QueltBioBuffer.h"
#include "compiled/QueltFltEffectivity.h"
#include "interchange/Value.h"

#include <memory>

namespace quelt::host {

/// The bytes that the text at `value` stands for in base64, whatever they mean. Throws a Refusal.
[[nodiscard]] QueltBioBuffer readBinary(const Value& value);

/// The effectivity that stands spelt out at `value`; it owns what its leaves refer to. Throws a Refusal.
[[nodiscard]] std::unique_ptr<QueltFltEffectivity> readCompiled(const Value& value);

/// The bytes that the effectivity that stands spelt out at `value` is compiled to. Throws a Refusal.
[[nodiscard]] QueltBioBuffer compile(const Value& value);

/// The effectivity that was compiled to `binary`, which stands at `value`. Throws a Refusal.
[[nodiscard]] std::unique_ptr<QueltFltEffectivity> decompile(QueltBioBuffer binary, const Value& value);

} // namespace quelt::host
