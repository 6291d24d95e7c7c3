#pragma once

#include "expression/QueltEeGenericExpression.h"
#include "expression/QueltEeMultiModelExpression.h"
#include "expression/QueltEeNode.h"
#include "expression/QueltQmSpecList.h"
#include "interchange/CriterionReader.h"
#include "interchange/WorkingEffectivities.h"

#include <memory>
#include <optional>

namespace quelt::host {

/// How deep nodes may nest; the root is on level 1.
inline constexpr unsigned s_maxNodeLevels = 1000;

/// A tree, or a part of one, that stands alone.
using OwnedNode = std::unique_ptr<QueltEeNodeRef>;

/// Makes expressions from their interchange form. They are made in the memory that is current on the thread.
class ExpressionReader {
public:
    /// Names are looked up in `context`, which must outlive the reader. Expressions refer to the
    /// effectivities of `working`, which must outlive them, when it is not null, else to those of the
    /// context.
    explicit ExpressionReader(const LoadedContext& context, WorkingEffectivities* working = nullptr) noexcept
        : m_context(context), m_working(working), m_criterionReader(context) {}

    /// The body under "tree"; null makes an expression with neither list nor tree.
    [[nodiscard]] std::unique_ptr<QueltEeGenericExpression> readTree(const Value& tree) const;
    /// The body under "list" with what stands under "named" and "mode"; null makes a list form whose list is
    /// null.
    [[nodiscard]] std::unique_ptr<QueltEeGenericExpression>
    readList(const Value& list, const std::optional<Value>& named, const std::optional<Value>& mode) const;
    /// A converted expression: an effectivity, a change or a filter.
    [[nodiscard]] std::unique_ptr<QueltEeExpression> readMultiModel(const Value& value) const;

    /// The effectivity that `name` names; refuses an unknown one.
    [[nodiscard]] QueltEeEffectivity& findEffectivity(const Value& name) const;
    /// The dictionary that `name` names; refuses an unknown one.
    [[nodiscard]] QueltEeModelDico& findDictionary(const Value& name) const;

private:
    using MultiModelFields = Fields<Key::kind, Key::global, Key::criteria, Key::operations, Key::dictionary,
                                    Key::mode, Key::named>;

    [[nodiscard]] OwnedNode readNode(const Value& value, unsigned level) const;
    template <class Group>
    [[nodiscard]] OwnedNode readGroup(const Value& children, unsigned level) const;
    template <class Operator>
    [[nodiscard]] OwnedNode readSingle(const Value& child, unsigned level) const;
    [[nodiscard]] OwnedNode readNot(const Value& child, unsigned level) const;
    [[nodiscard]] OwnedNode readEffectivityLeaf(const NodeFields& fields) const;
    [[nodiscard]] OwnedNode readLeaf(Key form, const NodeFields& fields) const;

    [[nodiscard]] std::unique_ptr<QueltQmSpecList> readSpecList(const Value& criteria,
                                                                const std::optional<Value>& named) const;
    [[nodiscard]] std::unique_ptr<QueltEeVarEff> readListedCriterion(const Value& value) const;
    void readNamed(const Value& named, QueltQmSpecList& list) const;

    [[nodiscard]] std::unique_ptr<QueltEeExpression> readFilter(const MultiModelFields& fields) const;
    void readCriteria(const MultiModelFields& fields, QueltEeMultiModelExpression& expression) const;
    void readModelCriteria(const Value& value, QueltEeMultiModelExpression& expression) const;
    void readOperation(const Value& value, QueltEeEffectivityExpression& expression) const;

    const LoadedContext& m_context;
    WorkingEffectivities* m_working;
    CriterionReader m_criterionReader;
};

} // namespace quelt::host
