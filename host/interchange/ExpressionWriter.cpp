#include "interchange/ExpressionWriter.h"

#include "expression/QueltEeFilterExpression.h"
#include "expression/QueltEeGenericExpression.h"
#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeMultiModelExpression.h"
#include "expression/QueltEeOperators.h"

#include <utility>

namespace quelt::host {

namespace {

void writeNamed(JsonWriter& writer, const QueltInSet& named) {
    if (named.IsEmpty() != 0) {
        return;
    }
    writer.key(Key::named);
    writer.beginArray();
    QueltInSet::const_iterator iterator = named.cBegin();
    while (const QueltInObject* const object = iterator.GetGoToNext()) {
        if (const auto* const effectivity = QueltEeEffectivity::cast(object)) {
            writer.text(effectivity->getName().view());
        }
    }
    writer.endArray();
}

void writeEffectivityLeaf(JsonWriter& writer, const QueltEeEffLeaf& leaf) {
    writer.key(Key::eff);
    if (const QueltEeEffectivity* const effectivity = leaf.getTargetEff()) {
        writer.text(effectivity->getName().view());
    } else {
        writer.null();
    }
    if (const QueltEeModelDico* const dictionary = leaf.getReferencedContext()) {
        writer.key(Key::of);
        writer.text(dictionary->getName().view());
    }
    if (leaf.isNegated() != 0) {
        writer.key(Key::negated);
        writer.flag(true);
    }
}

} // namespace

void ExpressionWriter::writeNode(JsonWriter& writer, const QueltEeNodeRef* reference) {
    m_open.clear(); // where memory was exhausted, the last tree was not written to its end
    beginNode(writer, reference);
    while (!m_open.empty()) {
        continueNode(writer);
    }
}

/// Writes a leaf, or the beginning of an operator.
void ExpressionWriter::beginNode(JsonWriter& writer, const QueltEeNodeRef* reference) {
    const QueltEeNode* const node = reference != nullptr ? reference->getNode() : nullptr;
    if (node == nullptr) {
        writer.null();
    } else if (!beginOperator(writer, *node)) {
        writeLeaf(writer, *node);
    }
}

/// False when `node` is no operator.
bool ExpressionWriter::beginOperator(JsonWriter& writer, const QueltEeNode& node) {
    if (const auto* const group = QueltEeGroupOp::cast(&node)) {
        const std::span<QueltInObject* const> children = group->getChildren().elements();
        writer.beginObject();
        writer.key(group->isAnd() ? Key::and_ : Key::or_);
        writer.beginArray();
        m_open.push_back({children.data(), children.data() + children.size(), nullptr, true});
        return true;
    }
    const auto* const single = QueltEeSingleOp::cast(&node);
    if (single == nullptr) {
        return false;
    }
    writer.beginObject();
    writer.key(QueltEeNotOp::isObjectOfThisType(node) != 0 ? Key::not_ : Key::notDomain);
    const QueltEeNodeRef* const child = single->getChildRef();
    m_open.push_back({nullptr, nullptr, child, false});
    if (child == nullptr) {
        writer.null();
    }
    return true;
}

/// Writes the next child of the innermost operator, or its end.
void ExpressionWriter::continueNode(JsonWriter& writer) {
    Open& open = m_open.back();
    if (open.next != open.end) {
        beginNode(writer, QueltEeNodeRef::cast(*open.next++));
        return;
    }
    if (open.onlyChild != nullptr) {
        beginNode(writer, std::exchange(open.onlyChild, nullptr));
        return;
    }
    if (open.isGroup) {
        writer.endArray();
    }
    writer.endObject();
    m_open.pop_back();
}

void ExpressionWriter::writeLeaf(JsonWriter& writer, const QueltEeNode& node) const {
    if (const auto* const leaf = QueltEeVarEffLeaf::cast(&node);
        leaf != nullptr && leaf->getVarEff() != nullptr) {
        m_criterionWriter.write(writer, *leaf->getVarEff());
        return;
    }
    if (QueltEeTrue::isObjectOfThisType(node) != 0 || QueltEeFalse::isObjectOfThisType(node) != 0) {
        writer.flag(QueltEeTrue::isObjectOfThisType(node) != 0);
        return;
    }
    writer.beginObject();
    if (const auto* const effectivity = QueltEeEffLeaf::cast(&node)) {
        writeEffectivityLeaf(writer, *effectivity);
    } else if (const auto* const restriction = QueltEeRestrictionEffLeaf::cast(&node)) {
        writer.key(Key::restriction);
        writer.text(restriction->getText().view());
    } else {
        writer.key(Key::empty);
        writer.flag(true);
    }
    writer.endObject();
}

void ExpressionWriter::writeBody(JsonWriter& writer, const QueltEeGenericExpression& expression) {
    if (expression.IsList() == 0) {
        writer.key(Key::tree);
        writeNode(writer, expression.GetNodeRef());
        return;
    }
    const QueltQmSpecList* list = nullptr;
    auto mode = QueltEeGenericExpression::ListMode::all;
    expression.GetList(list);
    expression.GetMode(mode);
    writer.key(Key::list);
    if (list != nullptr) {
        writeCriteria(writer, list);
        writeNamed(writer, list->getNamedEffectivities());
    } else {
        writer.null();
    }
    if (mode != QueltEeGenericExpression::ListMode::all) {
        writer.key(Key::mode);
        writer.number(static_cast<int>(mode));
    }
}

void ExpressionWriter::writeCriteria(JsonWriter& writer, const QueltQmSpecList* list) const {
    writer.beginArray();
    if (list != nullptr) {
        QueltInMap::const_iterator iterator = list->getVarEffs().cBegin();
        while (const QueltInObject* const object = iterator.GetValGoToNext()) {
            if (const auto* const effectivity = QueltEeVarEff::cast(object)) {
                m_criterionWriter.write(writer, *effectivity);
            }
        }
    }
    writer.endArray();
}

void ExpressionWriter::writeMultiModel(JsonWriter& writer, const QueltEeExpression& expression) {
    writer.beginObject();
    writer.key(Key::kind);
    if (const auto* const filter = QueltEeFilterExpression::cast(&expression)) {
        writer.text("filter");
        writeFilter(writer, *filter);
    } else if (const auto* const effectivity = QueltEeEffectivityExpression::cast(&expression)) {
        writer.text("effectivity");
        writeModelCriteria(writer, *effectivity);
        writeOperations(writer, *effectivity);
    } else if (const auto* const change = QueltEeChangeExpression::cast(&expression)) {
        writer.text("change");
        writeModelCriteria(writer, *change);
    }
    writer.endObject();
}

void ExpressionWriter::writeFilter(JsonWriter& writer, const QueltEeFilterExpression& filter) const {
    if (const QueltEeModelDico* const dictionary = filter.getDictionary()) {
        writer.key(Key::dictionary);
        writer.text(dictionary->getName().view());
    }
    if (filter.getListMode() != 0) {
        writer.key(Key::mode);
        writer.number(filter.getListMode());
    }
    const QueltQmSpecList* const list = filter.getSpecList();
    writer.key(Key::criteria);
    writeCriteria(writer, list);
    if (list != nullptr) {
        writeNamed(writer, list->getNamedEffectivities());
    }
}

void ExpressionWriter::writeModelCriteria(JsonWriter& writer, const QueltEeMultiModelExpression& expression) {
    const auto writePart = [&](Key key, const QueltEeNodeRef* part) {
        if (part != nullptr) {
            writer.key(key);
            writeNode(writer, part);
        }
    };
    writePart(Key::global, expression.getGlobalCriteria());
    if (expression.getModelCriteria().empty()) {
        return;
    }
    writer.key(Key::criteria);
    writer.beginArray();
    for (const QueltEeMultiModelExpression::Filed& filed : expression.getModelCriteria()) {
        writer.beginObject();
        writer.key(Key::dictionary);
        writer.text(filed.dictionary->getName().view());
        writePart(Key::inherited, filed.criteria->getInherited());
        writePart(Key::own, filed.criteria->getOwn());
        writer.endObject();
    }
    writer.endArray();
}

void ExpressionWriter::writeOperations(JsonWriter& writer, const QueltEeEffectivityExpression& expression) {
    if (expression.getOperations().empty()) {
        return;
    }
    writer.key(Key::operations);
    writer.beginArray();
    for (const QueltEeExpressionOperation* const operation : expression.getOperations()) {
        writer.beginObject();
        writer.key(Key::kind);
        writer.number(static_cast<int>(operation->m_kind));
        writer.key(Key::effectivity);
        if (const auto* const effectivity = QueltEeEffectivity::cast(operation->getObject())) {
            writer.text(effectivity->getName().view());
        } else {
            writer.null();
        }
        writer.endObject();
    }
    writer.endArray();
}

} // namespace quelt::host
