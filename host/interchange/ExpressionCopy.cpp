#include "interchange/ExpressionCopy.h"

#include "expression/QueltEeFilterExpression.h"
#include "expression/QueltEeGenericExpression.h"
#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeMultiModelExpression.h"
#include "expression/QueltEeOperators.h"

#include <vector>

namespace quelt::host {

namespace {

using OwnedTree = std::unique_ptr<QueltEeNodeRef>;
using OwnedList = std::unique_ptr<QueltQmSpecList>;
using ModelCriteria = QueltEeMultiModelExpression::ModelCriteria;

/// Puts a leaf on the effectivity's replacement in the place of `leaf`.
void retarget(QueltEeEffLeaf& leaf, const ReplaceEffectivity& replace) {
    if (leaf.getTargetEff() == nullptr) {
        return;
    }
    auto* const successor = new QueltEeEffLeaf(&replace(*leaf.getTargetEff()), leaf.getReferencedContext());
    if (leaf.isNegated() != 0) {
        successor->opNot();
    }
    leaf.giveWayTo(successor->getNodeRef());
}

void retargetBelow(QueltEeNodeRef& root, const ReplaceEffectivity& replace) {
    std::vector<QueltEeNode*> untold{root.getNode()};
    while (!untold.empty()) {
        QueltEeNode* const node = untold.back();
        untold.pop_back();
        if (const auto* const group = QueltEeGroupOp::cast(node)) {
            for (QueltInObject* const child : group->getChildren().elements()) {
                untold.push_back(QueltEeNodeRef::cast(child)->getNode());
            }
        } else if (const auto* const single = QueltEeSingleOp::cast(node)) {
            untold.push_back(single->getChildRef() != nullptr ? single->getChildRef()->getNode() : nullptr);
        } else if (auto* const leaf = QueltEeEffLeaf::cast(node)) {
            retarget(*leaf, replace);
        }
    }
}

OwnedTree copyTree(const QueltEeNodeRef* root, const ReplaceEffectivity& replace) {
    const QueltEeNode* const node = root != nullptr ? root->getNode() : nullptr;
    OwnedTree copy(node != nullptr ? node->clone() : nullptr);
    if (copy != nullptr) {
        retargetBelow(*copy, replace);
    }
    return copy;
}

OwnedList copyList(const QueltQmSpecList* list, const ReplaceEffectivity& replace) {
    OwnedList copy(list != nullptr ? list->clone() : nullptr);
    if (copy == nullptr || list->getNamedEffectivities().IsEmpty() != 0) {
        return copy;
    }
    copy->getNamedEffectivities().Clear();
    auto named = list->getNamedEffectivities().cBegin();
    while (QueltInObject* const object = named.GetGoToNext()) {
        if (QueltEeEffectivity* const effectivity = QueltEeEffectivity::cast(object)) {
            copy->getNamedEffectivities().Put(replace(*effectivity));
        }
    }
    return copy;
}

std::unique_ptr<QueltEeExpression> copyGeneric(const QueltEeGenericExpression& original,
                                               const ReplaceEffectivity& replace) {
    if (original.IsList() == 0) {
        OwnedTree root = copyTree(original.GetNodeRef(), replace);
        auto tree = std::make_unique<QueltEeGenericExpression>(root.get());
        static_cast<void>(root.release()); // the expression's
        return tree;
    }
    const QueltQmSpecList* list = nullptr;
    auto mode = QueltEeGenericExpression::ListMode::all;
    original.GetList(list);
    original.GetMode(mode);
    OwnedList copy = copyList(list, replace);
    auto expression = std::make_unique<QueltEeGenericExpression>(copy.get(), mode);
    static_cast<void>(copy.release()); // the expression's
    return expression;
}

std::unique_ptr<QueltEeExpression> copyFilter(const QueltEeFilterExpression& original,
                                              const ReplaceEffectivity& replace) {
    OwnedList list = copyList(original.getSpecList(), replace);
    auto copy = std::make_unique<QueltEeFilterExpression>(original.getDictionary(), list.get());
    static_cast<void>(list.release()); // the filter's
    copy->setListMode(original.getListMode());
    return copy;
}

/// Files copies of what `original` holds in `copy`, which is empty.
void copyCriteria(const QueltEeMultiModelExpression& original, QueltEeMultiModelExpression& copy,
                  const ReplaceEffectivity& replace) {
    OwnedTree global = copyTree(original.getGlobalCriteria(), replace);
    if (copy.setGlobalCriteria(global.get()) >= 0) {
        (void)global.release();
    }
    for (const QueltEeMultiModelExpression::Filed& filed : original.getModelCriteria()) {
        OwnedTree inherited = copyTree(filed.criteria->getInherited(), replace);
        OwnedTree own = copyTree(filed.criteria->getOwn(), replace);
        QueltEeNodeRef* inheritedSlot = inherited.get();
        QueltEeNodeRef* ownSlot = own.get();
        auto criteria = std::make_unique<ModelCriteria>(&inheritedSlot, &ownSlot);
        static_cast<void>(inherited.release()); // both are the criterion's
        static_cast<void>(own.release());
        if (copy.setModelCriteria(*filed.dictionary, criteria.get()) >= 0) {
            (void)criteria.release();
        }
    }
}

void copyOperations(const QueltEeEffectivityExpression& original, QueltEeEffectivityExpression& copy,
                    const ReplaceEffectivity& replace) {
    for (const QueltEeExpressionOperation* const operation : original.getOperations()) {
        if (auto* const effectivity = QueltEeEffectivity::cast(operation->getObject())) {
            QueltInObject* object = &replace(*effectivity);
            copy.addOperation(operation->m_kind, object);
        }
    }
}

} // namespace

std::unique_ptr<QueltEeExpression> copyExpression(const QueltEeExpression& expression,
                                                  const ReplaceEffectivity& replace) {
    if (const auto* const generic = QueltEeGenericExpression::cast(&expression)) {
        return copyGeneric(*generic, replace);
    }
    if (const auto* const filter = QueltEeFilterExpression::cast(&expression)) {
        return copyFilter(*filter, replace);
    }
    if (const auto* const effectivity = QueltEeEffectivityExpression::cast(&expression)) {
        auto copy = std::make_unique<QueltEeEffectivityExpression>();
        copyCriteria(*effectivity, *copy, replace);
        copyOperations(*effectivity, *copy, replace);
        return copy;
    }
    if (const auto* const change = QueltEeChangeExpression::cast(&expression)) {
        auto copy = std::make_unique<QueltEeChangeExpression>();
        copyCriteria(*change, *copy, replace);
        return copy;
    }
    return nullptr;
}

} // namespace quelt::host
