#pragma once

#include "commands/ByteStreams.h"
#include "interchange/JsonParser.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace quelt::host {

/// One line that holds more than white space, without its end.
struct Line {
    std::size_t offset = 0;
    std::size_t size = 0;
    /// Counted from 1, blank lines included.
    std::uint64_t number = 0;
    /// The line is longer than s_maxLineSize; its text was not kept.
    bool isTooLong = false;
    /// The input ends with the line, without a line end.
    bool isUnfinished = false;
};

/// The longest line that is read, in bytes, without its end.
inline constexpr std::size_t s_maxLineSize = std::size_t{64} << 20U;

/// Some lines that stand in memory together.
class LineBatch {
public:
    [[nodiscard]] std::span<const Line> lines() const noexcept { return m_lines; }
    [[nodiscard]] PaddedText textOf(const Line& line) const noexcept {
        return {m_memory.get() + line.offset, line.size};
    }
    /// How far into the input the batch reaches, in bytes.
    [[nodiscard]] std::uint64_t endOfInput() const noexcept { return m_endOfInput; }

private:
    friend class LineReader;
    void clear();
    [[nodiscard]] char* makeRoom(std::size_t size);

    std::unique_ptr<char[]> m_memory;
    std::size_t m_capacity = 0;
    std::size_t m_size = 0;
    std::vector<Line> m_lines;
    std::uint64_t m_endOfInput = 0;
};

/// Cuts an input into lines, a batch at a time. Lines end with a line feed, or with a carriage return and a
/// line feed; the last one may end with the input. A byte-order mark in front of the first is skipped, and so
/// are lines of white space.
class LineReader {
public:
    /// Reads `source` in pieces of `readSize` bytes.
    LineReader(ByteSource& source, std::size_t readSize) noexcept : m_source(source), m_readSize(readSize) {}

    /// Puts the next lines into `batch`: those of one read, or, when a line is longer, of as many as it
    /// takes. False, and no line, at the end of the input. Throws a StreamFailure; the input has then ended.
    [[nodiscard]] bool fill(LineBatch& batch);
    /// Takes back what fill() has put into `batch`: its lines from the index `first` on come again with the
    /// next fill().
    void giveBack(LineBatch& batch, std::size_t first);

private:
    void readOn(LineBatch& batch);
    void cutLines(LineBatch& batch);
    void addLine(LineBatch& batch, std::size_t end, bool isUnfinished);
    void keepRest(LineBatch& batch);

    ByteSource& m_source;
    std::size_t m_readSize;
    LineBatch m_givenBack;
    std::vector<char> m_rest;    // the beginning of a line whose end was not in the batch before
    std::size_t m_lineBegin = 0; // of the line that is being read, in the batch
    std::size_t m_searched = 0;  // where the search for its end goes on
    std::uint64_t m_lineNumber = 0;
    std::uint64_t m_bytesRead = 0;
    bool m_isSkipping = false;
    bool m_hasEnded = false;
};

} // namespace quelt::host
