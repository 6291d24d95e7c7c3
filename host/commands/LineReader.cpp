#include "commands/LineReader.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace quelt::host {

namespace {

/// Memory past this size is given back when it is no longer needed.
constexpr std::size_t s_usualSize = std::size_t{4} << 20U;

bool isBlank(std::string_view text) {
    return text.find_first_not_of(" \t\r") == std::string_view::npos;
}

} // namespace

void LineBatch::clear() {
    m_size = 0;
    m_lines.clear();
    if (m_capacity > s_usualSize) {
        m_memory.reset();
        m_capacity = 0;
    }
}

/// Makes room for `size` more bytes and the parser's padding behind them; answers where they go.
char* LineBatch::makeRoom(std::size_t size) {
    const std::size_t wanted = m_size + size + simdjson::SIMDJSON_PADDING;
    if (wanted > m_capacity) {
        const std::size_t capacity = std::max(wanted, std::min(2 * m_capacity, s_maxLineSize));
        auto memory = std::make_unique_for_overwrite<char[]>(capacity);
        std::copy_n(m_memory.get(), m_size, memory.get());
        m_memory = std::move(memory);
        m_capacity = capacity;
    }
    return m_memory.get() + m_size;
}

bool LineReader::fill(LineBatch& batch) {
    if (!m_givenBack.m_lines.empty()) {
        std::swap(batch, m_givenBack);
        m_givenBack.clear();
        return true;
    }
    batch.clear();
    std::copy(m_rest.begin(), m_rest.end(), batch.makeRoom(m_rest.size()));
    batch.m_size = m_rest.size();
    m_lineBegin = 0;
    m_searched = m_rest.size();
    if (m_rest.capacity() > s_usualSize) {
        std::vector<char>().swap(m_rest);
    }
    m_rest.clear();

    while (batch.m_lines.empty() && !m_hasEnded) {
        readOn(batch);
    }
    keepRest(batch);
    std::memset(batch.makeRoom(0), 0, simdjson::SIMDJSON_PADDING);
    return !batch.m_lines.empty();
}

void LineReader::giveBack(LineBatch& batch, std::size_t first) {
    const auto begin = batch.m_lines.begin();
    batch.m_lines.erase(begin, begin + static_cast<std::ptrdiff_t>(first));
    std::swap(batch, m_givenBack);
}

/// Reads the next piece of the input and cuts it.
void LineReader::readOn(LineBatch& batch) {
    // Of what stood before the line that is being read nothing is needed: there were blank lines only.
    if (m_lineBegin > 0) {
        char* const text = batch.m_memory.get();
        std::copy(text + m_lineBegin, text + batch.m_size, text);
        batch.m_size -= m_lineBegin;
        m_searched -= m_lineBegin;
        m_lineBegin = 0;
    }
    char* const room = batch.makeRoom(m_readSize);
    std::size_t count = 0;
    try {
        count = m_source.read(room, m_readSize);
    } catch (const StreamFailure&) {
        m_hasEnded = true;
        throw;
    }
    batch.m_size += count;
    m_bytesRead += count;
    m_hasEnded = count == 0;
    cutLines(batch);
}

void LineReader::cutLines(LineBatch& batch) {
    const char* const text = batch.m_memory.get();
    while (const void* const found = std::memchr(text + m_searched, '\n', batch.m_size - m_searched)) {
        const auto end = static_cast<std::size_t>(static_cast<const char*>(found) - text);
        addLine(batch, end, false);
        m_lineBegin = end + 1;
        m_searched = end + 1;
    }
    m_searched = batch.m_size;
    if (m_hasEnded) {
        addLine(batch, batch.m_size, true);
        m_lineBegin = batch.m_size;
    } else if (m_isSkipping ||
               batch.m_size - m_lineBegin > s_maxLineSize + 1) { // one more for a carriage return
        m_isSkipping = true;
        batch.m_size = m_lineBegin;
        m_searched = m_lineBegin;
    }
}

/// Adds the line that ends before `end`, unless it is blank.
void LineReader::addLine(LineBatch& batch, std::size_t end, bool isUnfinished) {
    const char* const text = batch.m_memory.get();
    if (isUnfinished && end == m_lineBegin && !m_isSkipping) {
        return;
    }
    ++m_lineNumber;
    if (!isUnfinished && end > m_lineBegin && text[end - 1] == '\r') {
        --end;
    }
    PaddedText line{text + m_lineBegin, end - m_lineBegin};
    if (m_lineNumber == 1) {
        line = withoutUtf8Mark(line);
    }
    const bool isTooLong = m_isSkipping || line.size > s_maxLineSize;
    m_isSkipping = false;
    if (!isTooLong && isBlank(line.view())) {
        return;
    }
    const auto offset = static_cast<std::size_t>(line.data - text);
    batch.m_lines.push_back({offset, isTooLong ? 0 : line.size, m_lineNumber, isTooLong, isUnfinished});
}

/// Keeps the beginning of a line that the batch does not hold whole for the next batch.
void LineReader::keepRest(LineBatch& batch) {
    const char* const text = batch.m_memory.get();
    m_rest.assign(text + m_lineBegin, text + batch.m_size);
    batch.m_size = m_lineBegin;
    batch.m_endOfInput = m_bytesRead - m_rest.size();
}

} // namespace quelt::host
