#pragma once

#include "commands/LineReader.h"
#include "commands/Tally.h"
#include "infrastructure/QueltInMemory.h"
#include "interchange/JsonWriter.h"

#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

namespace quelt::host {

/// What is said of a record for which the memory does not suffice: as the reason of a malformed one, and as
/// the error of a conversion.
inline constexpr std::string_view s_outOfMemory = "out of memory";
inline constexpr std::string_view s_outOfMemoryError = "ERROR : out of memory";

/// Turns records, each one JSON document on a line, into answers, one line each. A converter belongs to the
/// thread that made it.
class LineConverter {
    TextBuffer m_none; // for the writer, until there is an answer to write

public:
    LineConverter() : m_writer(m_none) {}
    virtual ~LineConverter() = default;
    LineConverter(const LineConverter&) = delete;
    LineConverter& operator=(const LineConverter&) = delete;

    /// Converts what stands on `line` (with the text `text`) and appends its answer, one line, to `answers`.
    /// Counts the record in `counts`. A line that is no record is answered with its number and the reason. A
    /// record for which the memory does not suffice is answered, too, when it suffices for that; else throws
    /// std::bad_alloc and leaves `answers` and `counts` as they were.
    void convert(const Line& line, PaddedText text, TextBuffer& answers, Counts& counts);
    /// Why records failed since the last takeFailures().
    [[nodiscard]] const FailureTally& failures() const noexcept { return m_failures; }
    /// The same; it begins anew then.
    [[nodiscard]] FailureTally takeFailures() { return std::exchange(m_failures, {}); }

protected:
    /// Writes the answer to the record `root` to m_writer, and counts it. Throws a Refusal, before anything
    /// is written, when it is no record.
    virtual void convertRecord(simdjson::dom::element root, Counts& counts) = 0;
    /// Writes the answer to the record `root`, which bears the name `id`, when the memory did not suffice to
    /// convert it, and counts it. False, and nothing written, when there is no such answer: the record is
    /// then answered with its line.
    virtual bool answerExhausted(simdjson::dom::element root, std::string_view id, Counts& counts);

    // NOLINTBEGIN(*-non-private-member-variables-in-classes): what every converter works with
    JsonWriter m_writer;
    /// For a record's objects; everything in it is forgotten behind its answer.
    QueltInArena m_arena;
    FailureTally m_failures;
    // NOLINTEND(*-non-private-member-variables-in-classes)

private:
    void answer(const Line& line, PaddedText text, Counts& counts);
    void answerExhausted(const Line& line, Counts& counts);
    void refuse(const Line& line, std::string_view what, Counts& counts);

    JsonParser m_parser;
    // Of the line that is being converted, as far as it has been read.
    std::optional<simdjson::dom::element> m_root;
    std::optional<std::string_view> m_id;
};

/// Makes a converter for the thread that calls; called on several at once.
using MakeLineConverter = std::function<std::unique_ptr<LineConverter>()>;

} // namespace quelt::host
