#include "expression/QueltEeGenericExpression.h"

#include "expression/QueltEeCriteriaWalk.h"
#include "expression/QueltEeVisit.h"
#include "expression/QueltQmSpecList.h"
#include "infrastructure/QueltInText.h"
#include "infrastructure/QueltInTypedDefinition.h"

template class QueltInTyped<QueltEeGenericExpression, QueltEeExpression>;

QueltEeGenericExpression::QueltEeGenericExpression(QueltEeNodeRef* root)
    : m_pRoot(root != nullptr ? root->takeFor(nullptr) : nullptr) {}

QueltEeGenericExpression::QueltEeGenericExpression(QueltQmSpecList* list, ListMode mode)
    : m_pList(list), m_mode(mode), m_isList(true) {}

QueltEeGenericExpression::~QueltEeGenericExpression() {
    delete m_pRoot;
    delete m_pList;
}

long QueltEeGenericExpression::runConstVisitor(QueltEeNodeVisitor& visitor) const {
    if (m_isList) {
        return quelt::showCriteria(m_pList, nullptr, visitor);
    }
    return m_pRoot != nullptr ? quelt::visitNodeOf(m_pRoot, visitor) : S_OK;
}

int QueltEeGenericExpression::IsList() const {
    return m_isList ? 1 : 0;
}

long QueltEeGenericExpression::GetList(const QueltQmSpecList*& list) const {
    list = m_pList;
    return m_isList ? S_OK : E_FAIL;
}

long QueltEeGenericExpression::GetMode(ListMode& mode) const {
    if (!m_isList) {
        return E_FAIL;
    }
    mode = m_mode;
    return S_OK;
}

const QueltEeNodeRef* QueltEeGenericExpression::GetNodeRef() const {
    return m_pRoot;
}

QueltInString QueltEeGenericExpression::toString() const {
    quelt::TextBuilder text;
    text << "generic(";
    if (m_isList) {
        text << quelt::describeCriteria(m_mode == ListMode::all ? "all" : "at least one", m_pList).view();
    } else if (m_pRoot != nullptr) {
        text << m_pRoot->toString().view();
    }
    text << ")";
    return text.take();
}
