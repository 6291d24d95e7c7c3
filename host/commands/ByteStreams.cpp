#include "commands/ByteStreams.h"

#include <system_error>

namespace quelt::host {

StreamFailure::StreamFailure(int code)
    : std::runtime_error(std::generic_category().message(code)), m_code(code) {}

std::string readAll(ByteSource& source) {
    constexpr std::size_t step = std::size_t{1} << 20U;
    std::string text;
    for (std::size_t size = 0;;) {
        text.resize(size + step);
        const std::size_t count = source.read(text.data() + size, step);
        size += count;
        if (count == 0) {
            text.resize(size);
            return text;
        }
    }
}

} // namespace quelt::host
