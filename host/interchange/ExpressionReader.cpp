#include "interchange/ExpressionReader.h"

#include "expression/QueltEeFilterExpression.h"
#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeOperators.h"

#include <string>

namespace quelt::host {

namespace {

/// Hands a new node over to a reference of its own.
OwnedNode makeAlone(std::unique_ptr<QueltEeNode> node) {
    QueltEeNodeRef* const reference = node->getNodeRef();
    (void)node.release(); // the reference owns it
    return OwnedNode(reference);
}

template <class Node, class... Arguments>
OwnedNode makeNode(Arguments&&... arguments) {
    return makeAlone(std::make_unique<Node>(std::forward<Arguments>(arguments)...));
}

OwnedNode makeConstant(bool value) {
    return value ? makeNode<QueltEeTrue>() : makeNode<QueltEeFalse>();
}

} // namespace

std::unique_ptr<QueltEeGenericExpression> ExpressionReader::readTree(const Value& tree) const {
    if (tree.isNull()) {
        return std::make_unique<QueltEeGenericExpression>();
    }
    OwnedNode root = readNode(tree, 1);
    auto expression = std::make_unique<QueltEeGenericExpression>(root.get());
    (void)root.release(); // the expression's
    return expression;
}

std::unique_ptr<QueltEeGenericExpression> ExpressionReader::readList(const Value& list,
                                                                     const std::optional<Value>& named,
                                                                     const std::optional<Value>& mode) const {
    std::unique_ptr<QueltQmSpecList> specList;
    if (!list.isNull()) {
        specList = readSpecList(list, named);
    } else if (named) {
        named->eachItem([](const Value& item) { item.refuse("a list that is null names no effectivities"); });
    }
    const auto listMode = mode ? static_cast<QueltEeGenericExpression::ListMode>(mode->int32())
                               : QueltEeGenericExpression::ListMode::all;
    auto expression = std::make_unique<QueltEeGenericExpression>(specList.get(), listMode);
    (void)specList.release(); // the expression's
    return expression;
}

OwnedNode ExpressionReader::readNode(const Value& value, unsigned level) const {
    if (level > s_maxNodeLevels) {
        value.refuse("nested more than " + std::to_string(s_maxNodeLevels) + " levels deep");
    }
    if (value.isFlag()) {
        return makeConstant(value.flag());
    }
    if (!value.isObject()) {
        value.refuseType("a node (true, false or an object)");
    }
    const NodeFields fields(value);
    const Key form = formOf(fields);
    switch (form) {
    case Key::and_:
        return readGroup<QueltEeAndOp>(fields.get(form), level);
    case Key::or_:
        return readGroup<QueltEeOrOp>(fields.get(form), level);
    case Key::not_:
        return readNot(fields.get(form), level);
    case Key::notDomain:
        return readSingle<QueltEeNotDomainOp>(fields.get(form), level);
    default:
        return readLeaf(form, fields);
    }
}

template <class Group>
OwnedNode ExpressionReader::readGroup(const Value& children, unsigned level) const {
    auto group = std::make_unique<Group>();
    children.eachItem([&](const Value& item) {
        OwnedNode child = readNode(item, level + 1);
        if (group->addChild(*child->getNode()) >= 0) {
            (void)child.release();
        }
    });
    return makeAlone(std::move(group));
}

OwnedNode ExpressionReader::readNot(const Value& child, unsigned level) const {
    return child.isNull() ? makeNode<QueltEeNotOp>() : readSingle<QueltEeNotOp>(child, level);
}

template <class Operator>
OwnedNode ExpressionReader::readSingle(const Value& child, unsigned level) const {
    auto node = std::make_unique<Operator>();
    OwnedNode below = readNode(child, level + 1);
    if (node->setChildRef(*below) >= 0) {
        (void)below.release();
    }
    return makeAlone(std::move(node));
}

OwnedNode ExpressionReader::readLeaf(Key form, const NodeFields& fields) const {
    if (isCriterion(form)) {
        std::unique_ptr<QueltEeVarEff> effectivity = m_criterionReader.read(form, fields);
        auto leaf = std::make_unique<QueltEeVarEffLeaf>();
        leaf->setVarEff(*effectivity.release());
        return makeAlone(std::move(leaf));
    }
    if (form == Key::eff) {
        return readEffectivityLeaf(fields);
    }
    if (form == Key::restriction) {
        return makeNode<QueltEeRestrictionEffLeaf>(QueltInString(fields.get(form).text()));
    }
    if (!fields.get(form).flag()) {
        fields.get(form).refuse("expected true");
    }
    return makeNode<QueltEeVarEffLeaf>();
}

OwnedNode ExpressionReader::readEffectivityLeaf(const NodeFields& fields) const {
    QueltEeEffectivity& effectivity = findEffectivity(fields.get(Key::eff));
    const QueltEeModelDico* dictionary = nullptr;
    if (const std::optional<Value> of = fields.find<Key::of>()) {
        dictionary = &findDictionary(*of);
    }
    const bool isNegated = fields.flag<Key::negated>();
    auto leaf = std::make_unique<QueltEeEffLeaf>(&effectivity, dictionary);
    if (isNegated) {
        leaf->opNot();
    }
    return makeAlone(std::move(leaf));
}

std::unique_ptr<QueltQmSpecList> ExpressionReader::readSpecList(const Value& criteria,
                                                                const std::optional<Value>& named) const {
    auto list = std::make_unique<QueltQmSpecList>(static_cast<int>(criteria.array().size()));
    criteria.eachItem([&](const Value& item) {
        QueltEeVarEff* effectivity = readListedCriterion(item).release();
        list->addVarEff(effectivity);
    });
    if (named) {
        readNamed(*named, *list);
    }
    return list;
}

std::unique_ptr<QueltEeVarEff> ExpressionReader::readListedCriterion(const Value& value) const {
    if (!value.isObject()) {
        value.refuseType("a criterion (an object)");
    }
    const NodeFields fields(value);
    const Key form = formOf(fields);
    if (!isCriterion(form)) {
        value.refuse("expected a criterion, found " + inQuotes(nameOf(form)));
    }
    return m_criterionReader.read(form, fields);
}

void ExpressionReader::readNamed(const Value& named, QueltQmSpecList& list) const {
    named.eachItem([&](const Value& name) {
        if (list.getNamedEffectivities().Put(findEffectivity(name)) == 0) {
            name.refuse("effectivity " + inQuotes(name.text()) + " given twice");
        }
    });
}

std::unique_ptr<QueltEeExpression> ExpressionReader::readMultiModel(const Value& value) const {
    constexpr MultiModelFields::Mask common = MultiModelFields::s_mask<Key::kind, Key::global, Key::criteria>;
    const MultiModelFields fields(value);
    const Value kind = fields.need<Key::kind>();
    if (kind.text() == "filter") {
        return readFilter(fields);
    }
    if (kind.text() == "change") {
        fields.allowOnly(common, [] { return "a change"; });
        auto change = std::make_unique<QueltEeChangeExpression>();
        readCriteria(fields, *change);
        return change;
    }
    if (kind.text() != "effectivity") {
        kind.refuse("unknown kind " + inQuotes(kind.text()) + " (effectivity, change and filter are known)");
    }
    fields.allowOnly(common | MultiModelFields::s_mask<Key::operations>, [] { return "an effectivity"; });
    auto effectivity = std::make_unique<QueltEeEffectivityExpression>();
    readCriteria(fields, *effectivity);
    if (const std::optional<Value> operations = fields.find<Key::operations>()) {
        operations->eachItem([&](const Value& item) { readOperation(item, *effectivity); });
    }
    return effectivity;
}

std::unique_ptr<QueltEeExpression> ExpressionReader::readFilter(const MultiModelFields& fields) const {
    fields.allowOnly(
        MultiModelFields::s_mask<Key::kind, Key::dictionary, Key::mode, Key::criteria, Key::named>,
        [] { return "a filter"; });
    const std::optional<Value> dictionary = fields.find<Key::dictionary>();
    const std::optional<Value> mode = fields.find<Key::mode>();
    auto filter = std::make_unique<QueltEeFilterExpression>(
        dictionary ? &findDictionary(*dictionary) : nullptr, nullptr);
    filter->setListMode(mode ? mode->int32() : 0);
    filter->setSpecList(readSpecList(fields.need<Key::criteria>(), fields.find<Key::named>()).release());
    return filter;
}

void ExpressionReader::readCriteria(const MultiModelFields& fields,
                                    QueltEeMultiModelExpression& expression) const {
    if (const std::optional<Value> global = fields.find<Key::global>()) {
        OwnedNode criterion = readNode(*global, 1);
        if (expression.setGlobalCriteria(criterion.get()) >= 0) {
            (void)criterion.release();
        }
    }
    if (const std::optional<Value> criteria = fields.find<Key::criteria>()) {
        criteria->eachItem([&](const Value& item) { readModelCriteria(item, expression); });
    }
}

void ExpressionReader::readModelCriteria(const Value& value, QueltEeMultiModelExpression& expression) const {
    using ModelCriteria = QueltEeMultiModelExpression::ModelCriteria;
    const Fields<Key::dictionary, Key::inherited, Key::own> fields(value);
    const Value name = fields.need<Key::dictionary>();
    const QueltEeModelDico& dictionary = findDictionary(name);
    const auto readPart = [this](const std::optional<Value>& part) {
        return part ? readNode(*part, 1) : nullptr;
    };
    OwnedNode inherited = readPart(fields.find<Key::inherited>());
    OwnedNode own = readPart(fields.find<Key::own>());
    QueltEeNodeRef* inheritedSlot = inherited.get();
    QueltEeNodeRef* ownSlot = own.get();
    auto criteria = std::make_unique<ModelCriteria>(&inheritedSlot, &ownSlot);
    (void)inherited.release(); // both are the criterion's
    (void)own.release();
    if (expression.setModelCriteria(dictionary, criteria.get()) < 0) {
        name.refuse("dictionary " + inQuotes(name.text()) + " given twice");
    }
    (void)criteria.release();
}

void ExpressionReader::readOperation(const Value& value, QueltEeEffectivityExpression& expression) const {
    const Fields<Key::kind, Key::effectivity> fields(value);
    const int kind = fields.need<Key::kind>().int32();
    QueltInObject* effectivity = &findEffectivity(fields.need<Key::effectivity>());
    expression.addOperation(static_cast<QueltEeExpressionOperation::OperationKind>(kind), effectivity);
}

QueltEeEffectivity& ExpressionReader::findEffectivity(const Value& name) const {
    QueltEeEffectivity* const effectivity = m_context.findEffectivity(name.text());
    if (effectivity == nullptr) {
        name.refuse("no effectivity " + inQuotes(name.text()));
    }
    return m_working != nullptr ? m_working->of(*effectivity) : *effectivity;
}

QueltEeModelDico& ExpressionReader::findDictionary(const Value& name) const {
    QueltEeModelDico* const dictionary = m_context.findDictionary(name.text());
    if (dictionary == nullptr) {
        name.refuse("no dictionary " + inQuotes(name.text()));
    }
    return *dictionary;
}

} // namespace quelt::host
