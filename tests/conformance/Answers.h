#pragma once

#include "commands/RecordConverter.h"
#include "interchange/LoadedContext.h"

#include <memory>
#include <string>

namespace quelt::host::test {

/// The context that a context file with the text `text` describes.
[[nodiscard]] std::unique_ptr<LoadedContext> loadContext(std::string text);

/// The line that answers `record`, with the addresses that some trace lines show as "<null>" and "<pointer>",
/// which is how the cases have them.
[[nodiscard]] std::string answerTo(const LoadedContext& context, std::string record, ConvertOptions options);

} // namespace quelt::host::test
