#pragma once

#include "commands/ByteStreams.h"

#include <algorithm>
#include <cerrno>
#include <string>
#include <string_view>

namespace quelt::host::test {

/// A text that is read in pieces of at most `piece` bytes, and that may fail at its end.
class TextSource : public ByteSource {
public:
    explicit TextSource(std::string_view text, std::size_t piece = static_cast<std::size_t>(-1),
                        int errorAtEnd = 0)
        : m_text(text), m_piece(piece), m_errorAtEnd(errorAtEnd) {}

    std::size_t read(char* data, std::size_t size) override {
        if (m_text.empty() && m_errorAtEnd != 0) {
            throw StreamFailure(m_errorAtEnd);
        }
        const std::size_t count = std::min({size, m_piece, m_text.size()});
        std::copy_n(m_text.data(), count, data);
        m_text.remove_prefix(count);
        return count;
    }

private:
    std::string_view m_text;
    std::size_t m_piece;
    int m_errorAtEnd;
};

/// Keeps what is written, up to `limit` bytes; then the disk is full.
class TextSink : public ByteSink {
public:
    explicit TextSink(std::size_t limit = static_cast<std::size_t>(-1)) : m_limit(limit) {}

    void write(std::string_view bytes) override {
        if (m_text.size() + bytes.size() > m_limit) {
            throw StreamFailure(ENOSPC);
        }
        m_text += bytes;
    }
    [[nodiscard]] const std::string& text() const { return m_text; }

private:
    std::string m_text;
    std::size_t m_limit;
};

} // namespace quelt::host::test
