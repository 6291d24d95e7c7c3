#include "expression/QueltEeMultiModelExpression.h"

#include "effectivity/QueltEeEffectivity.h"
#include "expression/QueltEeCriteriaWalk.h"
#include "expression/QueltEeVisit.h"
#include "infrastructure/QueltInText.h"
#include "infrastructure/QueltInTypedDefinition.h"

#include <utility>

template class QueltInTyped<QueltEeMultiModelExpression::ModelCriteria, QueltInObject>;
template class QueltInTyped<QueltEeMultiModelExpression, QueltEeExpression>;
template class QueltInTyped<QueltEeChangeExpression, QueltEeMultiModelExpression>;
template class QueltInTyped<QueltEeExpressionOperation, QueltInObject>;
template class QueltInTyped<QueltEeEffectivityExpression, QueltEeMultiModelExpression>;

namespace {

/// What a criterion takes from one of its slots.
QueltEeNodeRef* takeFrom(QueltEeNodeRef** slot) {
    QueltEeNodeRef* const reference = slot != nullptr ? std::exchange(*slot, nullptr) : nullptr;
    if (reference == nullptr) {
        return nullptr;
    }
    QueltEeNodeRef* const taken = reference->takeFor(nullptr);
    if (taken == nullptr && reference->standsAlone()) {
        delete reference; // an empty one, which is nobody's from here on
    }
    return taken;
}

/// Shows the part, if it is there. False when the walk ends here.
bool showPart(const QueltEeNodeRef* part, QueltEeNodeVisitor& visitor, long& result) {
    if (part != nullptr) {
        result = quelt::visitNodeOf(part, visitor);
    }
    return result >= 0;
}

} // namespace

QueltEeMultiModelExpression::ModelCriteria::ModelCriteria(QueltEeNodeRef** inheritedSlot,
                                                          QueltEeNodeRef** ownSlot)
    : m_pInherited(takeFrom(inheritedSlot)), m_pOwn(takeFrom(ownSlot)) {}

QueltEeMultiModelExpression::ModelCriteria::~ModelCriteria() {
    delete m_pInherited;
    delete m_pOwn;
}

QueltInString QueltEeMultiModelExpression::ModelCriteria::toString() const {
    if (m_pOwn == nullptr && m_pInherited == nullptr) {
        return "none";
    }
    quelt::TextBuilder text;
    if (m_pOwn != nullptr) {
        text << "own " << m_pOwn->toString().view();
    }
    if (m_pInherited != nullptr) {
        text << (m_pOwn != nullptr ? ", inherited " : "inherited ") << m_pInherited->toString().view();
    }
    return text.take();
}

QueltEeMultiModelExpression::~QueltEeMultiModelExpression() {
    delete m_pGlobal;
    for (const Filed& filed : m_filed) {
        delete filed.criteria;
    }
}

long QueltEeMultiModelExpression::runConstVisitor(QueltEeNodeVisitor& visitor) const {
    long result = S_OK;
    if (!showPart(m_pGlobal, visitor, result)) {
        return result;
    }
    for (const Filed& filed : m_filed) {
        if (!showPart(filed.criteria->getInherited(), visitor, result) ||
            !showPart(filed.criteria->getOwn(), visitor, result)) {
            break;
        }
    }
    return result;
}

long QueltEeMultiModelExpression::setGlobalCriteria(QueltEeNodeRef* criterion) {
    if (criterion == nullptr || criterion->getNode() == nullptr) {
        return E_POINTER;
    }
    if (m_pGlobal != nullptr) {
        return E_ALREADYTHERE;
    }
    m_pGlobal = criterion->takeFor(nullptr);
    return S_OK;
}

long QueltEeMultiModelExpression::setModelCriteria(const QueltEeModelDico& dictionary,
                                                   ModelCriteria* criteria) {
    if (criteria == nullptr) {
        return E_POINTER;
    }
    if (criteria->m_isFiled || findModelCriteria(dictionary) != nullptr) {
        return E_ALREADYTHERE;
    }
    m_filed.reserve(std::size_t{m_filed.size()} + 1);
    m_index.insertInto(m_filed, dictionary.getGuid().BinHashFunc(),
                       [](const Filed& filed) { return filed.dictionary->getGuid().BinHashFunc(); });
    m_filed.push_back({&dictionary, criteria});
    criteria->m_isFiled = true;
    return S_OK;
}

long QueltEeMultiModelExpression::getContextDictionaries(QueltInSet& dictionaries) const {
    for (const Filed& filed : m_filed) {
        // Sets hand their elements out for change, so what goes into one gives up its constness.
        auto& dictionary = const_cast<QueltEeModelDico&>(*filed.dictionary);
        if (dictionaries.Put(dictionary) == 0 && dictionaries.Find(dictionary) == 0) {
            return E_FAIL;
        }
    }
    return S_OK;
}

QueltEeMultiModelExpression::ModelCriteria*
QueltEeMultiModelExpression::findModelCriteria(const QueltEeModelDico& dictionary) const {
    const QueltInGuid& guid = dictionary.getGuid();
    const std::uint32_t position = m_index.findIn(
        m_filed, [&] { return guid.BinHashFunc(); },
        [&](const Filed& filed) { return filed.dictionary->getGuid() == guid; });
    return position != quelt::QueltInHashIndex::s_none ? m_filed[position].criteria : nullptr;
}

QueltInString QueltEeMultiModelExpression::describeOperations() const {
    return {};
}

QueltInString QueltEeMultiModelExpression::toString() const {
    quelt::TextBuilder text;
    text << kindName() << "(";
    const char* separator = "";
    if (m_pGlobal != nullptr) {
        text << std::exchange(separator, ", ") << "global: " << m_pGlobal->toString().view();
    }
    for (const Filed& filed : m_filed) {
        text << std::exchange(separator, ", ");
        text.name(filed.dictionary->getName().view()) << ": " << filed.criteria->toString().view();
    }
    if (const QueltInString operations = describeOperations(); !operations.view().empty()) {
        text << (*separator != '\0' ? "; " : "") << operations.view();
    }
    text << ")";
    return text.take();
}

QueltInString QueltEeExpressionOperation::toString() const {
    quelt::TextBuilder text;
    text << static_cast<std::int64_t>(m_kind) << " ";
    if (const QueltEeDicoObject* const named = QueltEeDicoObject::cast(m_pObject); named != nullptr) {
        text.name(named->getName().view());
    } else if (m_pObject != nullptr) {
        text << m_pObject->toString().view();
    } else {
        text << "null";
    }
    return text.take();
}

const char* QueltEeChangeExpression::kindName() const {
    return "change";
}

QueltEeEffectivityExpression::~QueltEeEffectivityExpression() {
    for (const QueltEeExpressionOperation* const operation : m_operations) {
        delete operation;
    }
}

long QueltEeEffectivityExpression::runConstVisitor(QueltEeNodeVisitor& visitor) const {
    long result = QueltEeMultiModelExpression::runConstVisitor(visitor);
    for (const QueltEeExpressionOperation* const operation : m_operations) {
        if (result < 0) {
            break;
        }
        result = quelt::showEffectivity(QueltEeEffectivity::cast(operation->getObject()), nullptr, visitor);
    }
    return result;
}

long QueltEeEffectivityExpression::addOperation(QueltEeExpressionOperation::OperationKind kind,
                                                QueltInObject*& object) {
    if (object == nullptr) {
        return E_POINTER;
    }
    if (QueltEeEffectivity::isObjectOfThisType(*object) == 0) {
        return E_INVALIDARG;
    }
    m_operations.reserve(std::size_t{m_operations.size()} + 1);
    m_operations.push_back(new QueltEeExpressionOperation(kind, object));
    return S_OK;
}

const char* QueltEeEffectivityExpression::kindName() const {
    return "effectivity";
}

QueltInString QueltEeEffectivityExpression::describeOperations() const {
    if (m_operations.empty()) {
        return {};
    }
    quelt::TextBuilder text;
    text << "operations: ";
    const char* separator = "";
    for (const QueltEeExpressionOperation* const operation : m_operations) {
        text << std::exchange(separator, ", ") << operation->toString().view();
    }
    return text.take();
}
