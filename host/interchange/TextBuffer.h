#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string_view>

namespace quelt::host {

/// Where written text gathers until it is sent off; it keeps its memory when it is emptied.
class TextBuffer {
public:
    TextBuffer() = default;
    TextBuffer(const TextBuffer&) = delete;
    TextBuffer& operator=(const TextBuffer&) = delete;

    [[nodiscard]] std::size_t size() const noexcept {
        return static_cast<std::size_t>(m_pEnd - m_pMemory.get());
    }
    /// What was written; valid until more is.
    [[nodiscard]] std::string_view view() const noexcept { return {m_pMemory.get(), size()}; }

    void append(char character) {
        *makeRoom(1) = character;
        ++m_pEnd;
    }
    void append(std::string_view text) {
        endAt(std::copy_n(text.data(), text.size(), makeRoom(text.size())));
    }

    /// The end of the text, with room for `size` more bytes behind it. What is put there becomes part of the
    /// text by endAt().
    [[nodiscard]] char* makeRoom(std::size_t size) {
        if (static_cast<std::size_t>(m_pLimit - m_pEnd) < size) {
            grow(size);
        }
        return m_pEnd;
    }
    /// Says how far the text reaches now: up to `end`, in the room that was made.
    void endAt(char* end) noexcept { m_pEnd = end; }

    /// Keeps the first `size` bytes, at most size().
    void truncate(std::size_t size) noexcept { m_pEnd = m_pMemory.get() + size; }

    /// Empties the buffer, which gives the memory back when it had grown unusually large.
    void clear() noexcept;

private:
    void grow(std::size_t size);

    std::unique_ptr<char[]> m_pMemory;
    char* m_pEnd = nullptr;   // of the text
    char* m_pLimit = nullptr; // of the memory
};

} // namespace quelt::host
