#include "interchange/TextBuffer.h"

namespace quelt::host {

namespace {

constexpr std::size_t s_firstCapacity = std::size_t{16} << 10U;
constexpr std::size_t s_usualCapacity = std::size_t{8} << 20U;

} // namespace

void TextBuffer::grow(std::size_t size) {
    const std::string_view text = view();
    const auto capacity = static_cast<std::size_t>(m_pLimit - m_pMemory.get());
    const std::size_t wanted = std::max({text.size() + size, capacity + capacity / 2, s_firstCapacity});
    auto memory = std::make_unique_for_overwrite<char[]>(wanted);
    m_pEnd = std::copy_n(text.data(), text.size(), memory.get());
    m_pLimit = memory.get() + wanted;
    m_pMemory = std::move(memory);
}

void TextBuffer::clear() noexcept {
    if (static_cast<std::size_t>(m_pLimit - m_pMemory.get()) > s_usualCapacity) {
        m_pMemory.reset();
        m_pLimit = nullptr;
    }
    m_pEnd = m_pMemory.get();
}

} // namespace quelt::host
