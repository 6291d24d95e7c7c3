#pragma once

#include <string>
#include <string_view>

namespace quelt::host::roff {

/// `text` so that the formatter of manual pages shows it as it stands: hyphens that can be copied, quotes
/// that are not curled, no line that is taken for a request. Lines stay lines.
[[nodiscard]] std::string escape(std::string_view text);

/// `text`, escaped, in bold: for what is typed as it stands.
[[nodiscard]] std::string bold(std::string_view text);

/// `text`, escaped, in italics: for what something else is put in the place of.
[[nodiscard]] std::string italic(std::string_view text);

} // namespace quelt::host::roff
