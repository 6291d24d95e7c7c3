#pragma once

#include "compiled/QueltBioBuffer.h"
#include "interchange/ExpressionReader.h"

#include <memory>
#include <optional>
#include <string_view>

namespace quelt::host {

/// One record: a compiled binary, or an expression and what is to be done with it.
struct Record {
    /// The name that the answer bears; valid until the parser reads the next line.
    std::string_view id;
    /// The compiled binary, when the record is one; nothing of what follows is set then.
    std::unique_ptr<QueltBioBuffer> binary;
    std::unique_ptr<QueltEeGenericExpression> expression;
    bool isChange = false;
    /// The effectivity on whose behalf the expression is converted, or null.
    QueltEeBasicEff* basicEffectivity = nullptr;
};

/// Makes records from their interchange form.
class RecordReader {
public:
    /// Names are looked up in `context`, which must outlive the reader.
    explicit RecordReader(const LoadedContext& context) noexcept : m_expressionReader(context) {}

    /// The record that the document `root` describes; its expression is made in the memory that is current on
    /// the thread. Throws a Refusal.
    [[nodiscard]] Record read(simdjson::dom::element root) const;
    /// The "id" of a document, whatever else is wrong with it; nothing when it has none, more than one, or no
    /// text.
    [[nodiscard]] static std::optional<std::string_view> findId(simdjson::dom::element root);

private:
    ExpressionReader m_expressionReader;
};

} // namespace quelt::host
