#include "support/ConversionInput.h"

#include "host/support/Samples.h"

namespace quelt::host::fuzz {

namespace {

/// More would try nothing new and take its time.
constexpr int s_mostRecords = 16;

std::string_view firstLines(std::string_view text, int count) {
    std::size_t end = 0;
    for (int line = 0; line < count && end < text.size(); ++line) {
        const std::size_t lineEnd = text.find('\n', end);
        end = lineEnd == std::string_view::npos ? text.size() : lineEnd + 1;
    }
    return text.substr(0, end);
}

} // namespace

ConversionInput readInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const std::string_view contextLine = firstLines(text, 1);
    ConversionInput input;
    try {
        input.context = test::contextOf(contextLine);
    } catch (const Refusal&) {
        return input;
    }
    input.records = firstLines(text.substr(contextLine.size()), s_mostRecords);
    return input;
}

} // namespace quelt::host::fuzz
