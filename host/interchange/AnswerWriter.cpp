#include "interchange/AnswerWriter.h"

#include "QueltReconstituteEffectivityFromCompiledBinary.h"
#include "expression/QueltEeExpression.h"
#include "infrastructure/QueltInIntHolder.h"
#include "interchange/Base64.h"
#include "interchange/ReportedLines.h"

#include <array>
#include <cstdio>
#include <string>

namespace quelt::host {

namespace {

/// Writes the texts of one kind as an array under `key`, or nothing when there is none.
void writeMessages(JsonWriter& writer, std::string_view key, LineKind kind,
                   std::span<const QueltInTraceLine> lines) {
    bool isFirst = true;
    eachReportedLine(lines, [&](const ReportedLine& reported) {
        if (reported.kind != kind) {
            return true;
        }
        if (isFirst) {
            writer.key(key);
            writer.beginArray();
            isFirst = false;
        }
        writer.text(reported.text);
        return true;
    });
    if (!isFirst) {
        writer.endArray();
    }
}

void writeTrace(JsonWriter& writer, std::span<const QueltInTraceLine> lines) {
    writer.key("trace");
    writer.beginArray();
    eachReportedLine(lines, [&](const ReportedLine& reported) {
        writer.beginObject();
        writer.key("class");
        writer.text(reported.line.className);
        writer.key("method");
        writer.text(reported.line.methodName);
        writer.key("level");
        writer.number(reported.line.level);
        writer.key("text");
        writer.utf8Text(reported.text);
        writer.endObject();
        return true;
    });
    writer.endArray();
}

using Operation = QueltReconstituteEffectivityFromCompiledBinary::OperationStackElement;

void writeOperation(JsonWriter& writer, const Operation& operation) {
    writer.beginObject();
    writer.key(Key::effectivity);
    writer.text(operation.m_Guid.toString().view());
    writer.key("positive");
    writer.number(operation.m_Positive);
    writer.endObject();
}

void writeContent(JsonWriter& writer, const CompiledContent& content) {
    writer.key(Key::operations);
    writer.beginArray();
    for (auto operations = content.operations.cBegin();
         const auto* const operation = Operation::cast(operations.GetGoToNext());) {
        writeOperation(writer, *operation);
    }
    writer.endArray();
    writer.key(Key::contexts);
    writer.beginArray();
    for (auto contexts = content.contexts.cBegin();
         const auto* const guid = QueltInGuid::cast(contexts.GetGoToNext());) {
        writer.text(guid->toString().view());
    }
    writer.endArray();
}

void writeBinaryInput(JsonWriter& writer, const QueltBioBuffer& binary) {
    writer.key("input");
    writer.beginObject();
    writer.key(Key::binary);
    writer.text(encodeBase64(binary.getBytes()));
    writer.endObject();
}

} // namespace

CompiledContent::CompiledContent() : operations(Operation::sType()), contexts(QueltInGuid::sType()) {}

void AnswerWriter::write(JsonWriter& writer, const Answer& answer) {
    writer.beginObject();
    writer.key(Key::id);
    writer.text(answer.id);
    writer.key("result");
    writer.number(answer.result);
    if (answer.branchResult) {
        writer.key("branchResult");
        writer.number(*answer.branchResult);
    }
    if (const long result = decisiveResult(answer); result < 0) {
        writer.key("code");
        writer.text(formatCode(result));
    }
    if (!answer.lines.empty()) {
        writeMessages(writer, "errors", LineKind::error, answer.lines);
        writeMessages(writer, "warnings", LineKind::warning, answer.lines);
    }
    if (answer.content != nullptr) {
        writeContent(writer, *answer.content);
    } else {
        writeMap(writer, answer.map);
    }
    if (answer.binaryInput != nullptr) {
        writeBinaryInput(writer, *answer.binaryInput);
    }
    if (answer.input != nullptr) {
        writer.key("input");
        writer.beginObject();
        m_expressionWriter.writeBody(writer, *answer.input);
        writer.endObject();
    }
    if (answer.showTrace) {
        writeTrace(writer, answer.lines);
    }
    writer.endObject();
}

void AnswerWriter::writeMap(JsonWriter& writer, const QueltInMap* map) {
    writer.key("map");
    writer.beginArray();
    if (map != nullptr) {
        QueltInMap::const_iterator iterator = map->cBegin();
        while (const QueltInMapEntry* const entry = iterator.GetEntryGoToNext()) {
            const auto* const domain = QueltInIntHolder::cast(entry->key);
            const auto* const expression = QueltEeExpression::cast(entry->value);
            if (domain == nullptr || expression == nullptr) {
                continue;
            }
            writer.beginObject();
            writer.key("domain");
            writer.number(domain->m_value);
            writer.key(Key::expression);
            m_expressionWriter.writeMultiModel(writer, *expression);
            writer.endObject();
        }
    }
    writer.endArray();
}

void AnswerWriter::writeMalformed(JsonWriter& writer, std::uint64_t lineNumber,
                                  std::optional<std::string_view> id, std::string_view what) {
    writer.beginObject();
    writer.key("line");
    writer.number(static_cast<std::int64_t>(lineNumber));
    if (id) {
        writer.key(Key::id);
        writer.text(*id);
    }
    writer.key("malformed");
    writer.text(what);
    writer.endObject();
}

std::string reasonWithoutText(long result) {
    return "no error text, " + formatCode(result);
}

std::string formatCode(long result) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%08X", static_cast<unsigned>(result));
    return text.data();
}

} // namespace quelt::host
