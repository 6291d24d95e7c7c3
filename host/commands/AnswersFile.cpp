#include "commands/AnswersFile.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace quelt::host {

namespace {

/// Where the last line of `file` that has an end ends.
std::uint64_t endOfLines(const LockedFile& file) {
    constexpr std::uint64_t step = std::uint64_t{64} << 10U;
    std::vector<char> piece(step);
    for (std::uint64_t end = file.size(); end > 0;) {
        const std::uint64_t begin = end - std::min(end, step);
        std::size_t count = 0;
        while (const std::size_t more = file.read(begin + count, piece.data() + count,
                                                  static_cast<std::size_t>(end - begin) - count)) {
            count += more;
        }
        const std::size_t found = std::string_view(piece.data(), count).rfind('\n');
        if (found != std::string_view::npos) {
            return begin + found + 1;
        }
        end = begin;
    }
    return 0;
}

/// The first bytes of a file.
class BeginningSource : public ByteSource {
public:
    BeginningSource(const LockedFile& file, std::uint64_t size) : m_file(file), m_size(size) {}

    std::size_t read(char* data, std::size_t size) override {
        const std::size_t count = m_file.read(
            m_offset, data, static_cast<std::size_t>(std::min<std::uint64_t>(size, m_size - m_offset)));
        m_offset += count;
        return count;
    }

private:
    const LockedFile& m_file;
    std::uint64_t m_size;
    std::uint64_t m_offset = 0;
};

} // namespace

AnswersFile::AnswersFile(std::string place, Begin begin)
    : m_place(std::move(place)), m_isTidy(begin == Begin::anew) {
    const std::optional<unsigned> permissions = permissionsToWrite(m_place);
    m_file = openLocked(partOf(m_place), begin == Begin::anew, permissions);
    if (begin == Begin::anew) {
        m_file->cut(0);
        return;
    }
    m_size = endOfLines(*m_file);
    m_hasRest = m_file->size() > m_size;
}

AnswersFile::~AnswersFile() {
    if (m_file != nullptr && m_isTidy && m_size == 0) {
        m_file->remove();
    }
}

std::unique_ptr<ByteSource> AnswersFile::lines() const {
    return std::make_unique<BeginningSource>(*m_file, m_size);
}

void AnswersFile::write(std::string_view bytes) {
    dropRest();
    try {
        m_file->write(m_size, bytes);
    } catch (const StreamFailure&) {
        m_hasRest = true;
        try {
            dropRest();
        } catch (const StreamFailure&) { // a later run drops it
        }
        throw;
    }
    m_size += bytes.size();
}

void AnswersFile::finish() {
    dropRest();
    m_file->moveTo(m_place);
    m_file.reset();
}

void AnswersFile::dropRest() {
    if (m_hasRest) {
        m_file->cut(m_size);
        m_hasRest = false;
    }
}

} // namespace quelt::host
