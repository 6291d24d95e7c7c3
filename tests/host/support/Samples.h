#pragma once

#include "commands/RecordConverter.h"
#include "interchange/ContextReader.h"
#include "interchange/LoadedContext.h"

#include <memory>
#include <string>
#include <string_view>

namespace quelt::host::test {

/// A text with the bytes behind it that the parser may read.
class Padded {
public:
    explicit Padded(std::string_view text) : m_text(text), m_size(text.size()) {
        m_text.append(simdjson::SIMDJSON_PADDING, ' ');
    }
    [[nodiscard]] PaddedText text() const { return {m_text.data(), m_size}; }

private:
    std::string m_text;
    std::size_t m_size;
};

/// Two dictionaries, Truck and Bus, with every kind of variable, variables at the top, and effectivities.
/// Engine is one feature everywhere, Colour and Mixed are two; Seats at the top bears the name of another
/// feature of Bus.
[[nodiscard]] std::string_view sampleContext();

/// The context that `json` describes; throws what the reader throws.
[[nodiscard]] std::unique_ptr<LoadedContext> contextOf(std::string_view json);
/// The message with which `json` is refused as a context, "accepted" when it is not.
[[nodiscard]] std::string refusalOfContext(std::string_view json);
/// `context` as a context file has it.
[[nodiscard]] std::string written(const LoadedContext& context);

/// The answer to `line` as line 1, without the line end.
[[nodiscard]] std::string answerTo(const LoadedContext& context, std::string_view line,
                                   ConvertOptions options = {});
/// What `line` is refused for, by the sample context; the whole answer when it is not refused.
[[nodiscard]] std::string refusalOf(std::string_view line);

/// `text` `count` times.
[[nodiscard]] std::string repeated(std::string_view text, std::size_t count);

} // namespace quelt::host::test
