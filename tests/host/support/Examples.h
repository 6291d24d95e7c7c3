#pragma once

#include "commands/LineConverter.h"
#include "interchange/LoadedContext.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quelt::host::test {

/// The text of the examples' context file.
[[nodiscard]] const std::string& exampleContextText();
/// The examples' records, one a line, in all forms and of all fates.
[[nodiscard]] const std::vector<std::string>& exampleRecords();

/// Appends the answer to `record`, as line 1, to `answers`.
void convert(LineConverter& converter, std::string_view record, TextBuffer& answers, Counts& counts);
/// The answer to `record`, with its line end.
[[nodiscard]] std::string answerOf(LineConverter& converter, std::string_view record);

} // namespace quelt::host::test
