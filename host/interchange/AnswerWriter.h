#pragma once

#include "compiled/QueltBioBuffer.h"
#include "infrastructure/QueltInList.h"
#include "infrastructure/QueltInMap.h"
#include "infrastructure/QueltInTraceSink.h"
#include "interchange/ExpressionWriter.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace quelt::host {

/// The changes and contexts of a compiled binary.
struct CompiledContent {
    /// Without elements.
    CompiledContent();
    /// Of QueltReconstituteEffectivityFromCompiledBinary::OperationStackElement.
    QueltInList operations;
    /// Of QueltInGuid.
    QueltInList contexts;
};

/// What came of one record.
struct Answer {
    std::string_view id = {};
    /// The service's result.
    long result = 0;
    /// That of the second service, if it was called: whether flat series became branching ones.
    std::optional<long> branchResult = {};
    /// What the conversion filed, from QueltInIntHolder to expressions; may be null.
    const QueltInMap* map = nullptr;
    /// What a compiled binary, which is converted to no map, was found to hold.
    const CompiledContent* content = nullptr;
    /// Everything that was traced meanwhile.
    std::span<const QueltInTraceLine> lines = {};
    /// The expression as the services left it, when the answer shall show it, else null.
    const QueltEeGenericExpression* input = nullptr;
    /// Likewise, when the record is a compiled binary.
    const QueltBioBuffer* binaryInput = nullptr;
    /// Whether the answer shall show the trace.
    bool showTrace = false;
};

/// Writes answers, each one JSON document on one line, without the line end.
class AnswerWriter {
public:
    /// `context` is the one that the records refer to; it must outlive the writer.
    explicit AnswerWriter(const LoadedContext& context) noexcept : m_expressionWriter(context) {}

    /// Writes what came of a record.
    void write(JsonWriter& writer, const Answer& answer);
    /// Writes that the line with this number is no record, and why.
    static void writeMalformed(JsonWriter& writer, std::uint64_t lineNumber,
                               std::optional<std::string_view> id, std::string_view what);

private:
    void writeMap(JsonWriter& writer, const QueltInMap* map);

    ExpressionWriter m_expressionWriter;
};

/// The result that says whether the record has failed: the first that is negative, else the last.
[[nodiscard]] inline long decisiveResult(const Answer& answer) noexcept {
    return answer.result < 0 ? answer.result : answer.branchResult.value_or(answer.result);
}
/// A result as answers show it: "0x80004005".
[[nodiscard]] std::string formatCode(long result);
/// What stands for the reason of a failure, with this result, that no error tells.
[[nodiscard]] std::string reasonWithoutText(long result);

} // namespace quelt::host
