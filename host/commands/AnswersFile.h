#pragma once

#include "commands/LockedFile.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace quelt::host {

/// The file that a run's answers go into. They are written beside it, into a file with ".part" behind its
/// name, which takes its place when they are complete: so a file of answers that is there is a whole one, and
/// what stood there before stays until then. When the run ends otherwise, the part stays, unless it is empty.
class AnswersFile : public ByteSink {
public:
    enum class Begin {
        anew,   ///< a part that is there is emptied
        behind, ///< a part must be there; its whole lines stay, and what is written goes behind them
    };

    /// For the file at `place` (see placeOfFile). Throws a StreamFailure.
    AnswersFile(std::string place, Begin begin);
    ~AnswersFile() override;
    AnswersFile(const AnswersFile&) = delete;
    AnswersFile& operator=(const AnswersFile&) = delete;

    /// Where the answers to `place` are until they are complete.
    [[nodiscard]] static std::string partOf(const std::string& place) { return place + ".part"; }
    /// The lines that are there, without a last one whose end is missing.
    [[nodiscard]] std::unique_ptr<ByteSource> lines() const;
    /// Whether there are any.
    [[nodiscard]] bool hasLines() const noexcept { return m_size > 0; }

    /// Appends whole lines; what stood behind the last whole line before is gone then. When that fails, none
    /// of them is there.
    void write(std::string_view bytes) override;
    /// Puts the answers into their place: they are complete.
    void finish() override;

private:
    void dropRest();

    std::string m_place;
    std::unique_ptr<LockedFile> m_file;
    std::uint64_t m_size = 0; // up to the end of the last whole line
    bool m_hasRest = false;
    bool m_isTidy; // leaves no empty part behind
};

} // namespace quelt::host
