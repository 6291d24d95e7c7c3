#pragma once

#include "interchange/CriterionWriter.h"

#include <vector>

class QueltEeEffectivityExpression;
class QueltEeExpression;
class QueltEeFilterExpression;
class QueltEeGenericExpression;
class QueltEeMultiModelExpression;
class QueltEeNode;
class QueltEeNodeRef;
class QueltInObject;
class QueltQmSpecList;

namespace quelt::host {

/// Writes nodes and expressions in the interchange form. Uses bounded stack for trees of any depth. Not for
/// use by several threads at once.
class ExpressionWriter {
public:
    /// `context` tells which names need an "of"; it must outlive the writer.
    explicit ExpressionWriter(const LoadedContext& context) noexcept : m_criterionWriter(context) {}

    /// Writes the tree below `reference`; null when there is none.
    void writeNode(JsonWriter& writer, const QueltEeNodeRef* reference);
    /// Writes a multi-model expression or a filter as one object.
    void writeMultiModel(JsonWriter& writer, const QueltEeExpression& expression);
    /// Writes the keys of a generic expression's body ("tree", or "list" with "named" and "mode") into the
    /// object that is being written.
    void writeBody(JsonWriter& writer, const QueltEeGenericExpression& expression);

private:
    /// An operator whose children are being written.
    struct Open {
        QueltInObject* const* next;
        QueltInObject* const* end;
        const QueltEeNodeRef* onlyChild;
        bool isGroup;
    };

    void beginNode(JsonWriter& writer, const QueltEeNodeRef* reference);
    bool beginOperator(JsonWriter& writer, const QueltEeNode& node);
    void continueNode(JsonWriter& writer);
    void writeLeaf(JsonWriter& writer, const QueltEeNode& node) const;

    void writeFilter(JsonWriter& writer, const QueltEeFilterExpression& filter) const;
    void writeCriteria(JsonWriter& writer, const QueltQmSpecList* list) const;
    void writeModelCriteria(JsonWriter& writer, const QueltEeMultiModelExpression& expression);
    static void writeOperations(JsonWriter& writer, const QueltEeEffectivityExpression& expression);

    CriterionWriter m_criterionWriter;
    std::vector<Open> m_open;
};

} // namespace quelt::host
