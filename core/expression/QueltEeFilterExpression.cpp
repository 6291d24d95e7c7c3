#include "expression/QueltEeFilterExpression.h"

#include "dictionary/QueltEeModelDico.h"
#include "expression/QueltEeCriteriaWalk.h"
#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeOperators.h"
#include "infrastructure/QueltInText.h"
#include "infrastructure/QueltInTypedDefinition.h"

#include <memory>
#include <utility>

template class QueltInTyped<QueltEeFilterExpression, QueltEeExpression>;

namespace {

bool addCopies(const QueltInMap& criteria, QueltEeGroupOp& group) {
    for (QueltInMap::const_iterator iterator = criteria.cBegin(); iterator.IsEnd() == 0;) {
        const QueltEeVarEff* const criterion = QueltEeVarEff::cast(iterator.GetValGoToNext());
        QueltEeVarEff* const copy = criterion != nullptr ? criterion->createVarEffClone() : nullptr;
        if (copy == nullptr) {
            return false;
        }
        group.addChild(*new QueltEeVarEffLeaf(copy));
    }
    return true;
}

void addNamed(const QueltInSet& named, const QueltEeModelDico* dictionary, QueltEeGroupOp& group) {
    QueltInSet::const_iterator iterator = named.cBegin();
    while (QueltInObject* const effectivity = iterator.GetGoToNext()) {
        group.addChild(*new QueltEeEffLeaf(QueltEeEffectivity::cast(effectivity), dictionary));
    }
}

} // namespace

QueltEeFilterExpression::QueltEeFilterExpression(const QueltEeModelDico* dictionary, QueltQmSpecList* list)
    : m_pDictionary(dictionary), m_pList(list) {}

QueltEeFilterExpression::~QueltEeFilterExpression() {
    delete m_pList;
}

long QueltEeFilterExpression::runConstVisitor(QueltEeNodeVisitor& visitor) const {
    return quelt::showCriteria(m_pList, m_pDictionary, visitor);
}

long QueltEeFilterExpression::runVisitor(QueltEeNodeVisitor& visitor) {
    return quelt::showAndStoreCriteria(m_pList, m_pDictionary, visitor);
}

QueltEeNodeRef* QueltEeFilterExpression::makeTree() const {
    QueltEeGroupOp* const group =
        m_listMode == 0 ? static_cast<QueltEeGroupOp*>(new QueltEeAndOp) : new QueltEeOrOp;
    std::unique_ptr<QueltEeNodeRef> tree(group->getNodeRef());
    if (m_pList == nullptr) {
        return tree.release();
    }
    if (!addCopies(m_pList->getVarEffs(), *group)) {
        return nullptr;
    }
    addNamed(m_pList->getNamedEffectivities(), m_pDictionary, *group);
    return tree.release();
}

void QueltEeFilterExpression::setSpecList(QueltQmSpecList* list) {
    if (list != m_pList) {
        delete std::exchange(m_pList, list);
    }
}

QueltInString QueltEeFilterExpression::toString() const {
    quelt::TextBuilder text;
    text << "filter(";
    if (m_pDictionary != nullptr) {
        text.name(m_pDictionary->getName().view()) << ": ";
    }
    text << quelt::describeCriteria(m_listMode == 0 ? "all" : "at least one", m_pList).view() << ")";
    return text.take();
}
