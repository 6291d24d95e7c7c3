#pragma once

#include "commands/RecordConverter.h"

#include <string_view>

namespace quelt::host::fuzz {

/// Ends the process unless `answers` are what answers to `records`, one record a line, may be: each one line
/// of JSON with the keys that belong to what became of its record, whose expressions can be read back and
/// written as the same text. A failed one says why.
void expectAnswers(const LoadedContext& context, std::string_view records, std::string_view answers,
                   ConvertOptions options);

} // namespace quelt::host::fuzz
