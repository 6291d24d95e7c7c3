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
    /// Whether the flat series of what the expression is converted to are turned into branching ones.
    bool isBranched = false;
    /// What the expression refers to when it is branched, for that changes effectivities; else null, and the
    /// expression refers to the context's own, which conversion reads and leaves as they are.
    std::unique_ptr<WorkingEffectivities> effectivities;
    std::unique_ptr<QueltEeGenericExpression> expression;
    bool isChange = false;
    /// The effectivity on whose behalf the expression is converted, or null.
    QueltEeBasicEff* basicEffectivity = nullptr;
};

/// Makes records from their interchange form.
class RecordReader {
public:
    /// Names are looked up in `context`, which must outlive the reader. With `branchesAll` every list and
    /// tree is branched, not only where the record asks for it.
    explicit RecordReader(const LoadedContext& context, bool branchesAll = false) noexcept
        : m_context(context), m_branchesAll(branchesAll) {}

    /// The record that the document `root` describes; its expression and its effectivities are made in the
    /// memory that is current on the thread. Throws a Refusal.
    [[nodiscard]] Record read(simdjson::dom::element root) const;
    /// The "id" of a document, whatever else is wrong with it; nothing when it has none, more than one, or no
    /// text.
    [[nodiscard]] static std::optional<std::string_view> findId(simdjson::dom::element root);

private:
    const LoadedContext& m_context;
    bool m_branchesAll;
};

} // namespace quelt::host
