#include "QueltEeGenExprToEeMMExprVisitor.h"

#include "ConfigurationFlag.h"
#include "ConversionVisitorParts.h"

#include "effectivity/QueltEeEffectivity.h"
#include "expression/QueltEVCClassification.h"
#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeMultiModelExpression.h"
#include "expression/QueltEeOperators.h"
#include "infrastructure/QueltInIntHolder.h"
#include "infrastructure/QueltInMap.h"
#include "infrastructure/QueltInSet.h"
#include "infrastructure/QueltInTypedDefinition.h"

template class QueltInTyped<QueltEeGenExprToEeMMExprVisitor, QueltEeNodeVisitor>;

namespace quelt::conversion {

const MigrationTrace s_trace("QueltEeGenExprToEeMMExprVisitor");
const bool s_isRenumbering = isEnvironmentVariableSet("CGE_MigRen");
const bool s_isOptimized = isEnvironmentVariableSet("CFG_DA_Migration_Optimization");

} // namespace quelt::conversion

using quelt::conversion::s_isOptimized;
using quelt::conversion::s_isRenumbering;
using quelt::conversion::s_trace;

namespace {

constexpr unsigned int s_historyDomain = 1;
constexpr unsigned int s_evolutionVariantDomain = 2;
constexpr unsigned int s_changeDomain = 2;
constexpr unsigned int s_constantDomain = 3;

/// A change, or the negation of one, as it stands at the end of an operator's children in trees that are
/// classified by the fixed rule.
bool isChangeLeaf(const QueltEeNode& node) {
    if (QueltEeEffLeaf::isObjectOfThisType(node) != 0) {
        return true;
    }
    const QueltEeNotOp* const negation = QueltEeNotOp::cast(node);
    const QueltEeNodeRef* const child = negation != nullptr ? negation->getChildRef() : nullptr;
    const QueltEeNode* const negated = child != nullptr ? child->getNode() : nullptr;
    return negated != nullptr && QueltEeEffLeaf::isObjectOfThisType(*negated) != 0;
}

} // namespace

QueltEeGenExprToEeMMExprVisitor::QueltEeGenExprToEeMMExprVisitor(unsigned char isChange,
                                                                 const QueltEeExpressionContext& context,
                                                                 QueltEeBasicEff* basicEff)
    : m_isChange(isChange), m_pContext(&context), m_pBasicEff(basicEff),
      m_listOfBasicEffs(QueltEeBasicEff::sType()),
      m_pBelongings(std::allocate_shared<quelt::Belongings>(QueltInAllocator<quelt::Belongings>())) {
    const quelt::MethodTrace scope(s_trace, "QueltEeGenExprToEeMMExprVisitor");
}

QueltEeGenExprToEeMMExprVisitor::QueltEeGenExprToEeMMExprVisitor(
    const QueltEeGenExprToEeMMExprVisitor& other) = default;

QueltEeGenExprToEeMMExprVisitor::~QueltEeGenExprToEeMMExprVisitor() {
    const quelt::MethodTrace scope(s_trace, "~QueltEeGenExprToEeMMExprVisitor");
    m_pHistoryExpression = nullptr;
    m_pEVExpression = nullptr;
    m_pTrueFalseExpression = nullptr;
    m_pChangeExpression = nullptr;
    m_pBasicEff = nullptr;
    m_p_History_ChildNodeRef = nullptr;
    m_p_EV_ChildNodeRef = nullptr;
    m_pCurrentOperation = nullptr;
    m_pInhEffChildNodeRef = nullptr;
    if (m_pMDSet != nullptr) {
        m_pMDSet->Clear();
        m_pMDSet = nullptr;
    }
}

template <class Constant>
long QueltEeGenExprToEeMMExprVisitor::Steps::convertConstant(Constant& node, const char* method) {
    const quelt::MethodTrace scope(s_trace, method);
    const bool atRoot = m_visitor.m_atRoot != 0;
    const bool isChange = m_visitor.m_isChange != 0;
    if (!atRoot && (isChange || !s_isRenumbering)) {
        return E_NOTIMPL;
    }
    QueltEeMultiModelExpression* expression = nullptr;
    if (isChange) {
        m_visitor.m_pBelongings->keepUnfiled(m_visitor.m_pChangeExpression);
        expression = m_visitor.m_pChangeExpression = new QueltEeChangeExpression;
    } else {
        m_visitor.m_pBelongings->keepUnfiled(m_visitor.m_pTrueFalseExpression);
        expression = m_visitor.m_pTrueFalseExpression = new QueltEeEffectivityExpression;
    }
    const long result = expression->setGlobalCriteria(node.clone());
    return result < 0 ? s_trace.fail("ERROR", result) : result;
}

long QueltEeGenExprToEeMMExprVisitor::visitFalse(QueltEeFalse& node) {
    return Steps(*this).convertConstant(node, "visitFalse");
}

long QueltEeGenExprToEeMMExprVisitor::visitTrue(QueltEeTrue& node) {
    return Steps(*this).convertConstant(node, "visitTrue");
}

long QueltEeGenExprToEeMMExprVisitor::visitNotDomainOp(QueltEeNotDomainOp& /*node*/) {
    const quelt::MethodTrace scope(s_trace, "visitNotDomainOp");
    return E_NOTIMPL;
}

long QueltEeGenExprToEeMMExprVisitor::visitRestrictionEffLeaf(QueltEeRestrictionEffLeaf& /*leaf*/) {
    s_trace.writeMessage("ERROR : No RestrictionEffLeaf Expected at this level.");
    return E_UNEXPECTED;
}

long QueltEeGenExprToEeMMExprVisitor::Steps::classify(QueltEeOperator& node,
                                                      QueltEVCClassification& classification) const {
    if (!s_isOptimized) {
        QueltCoreEVC_NodeClassifier classifier;
        const long result = classifier.classify(*node.getNodeRef(), classification);
        return result < 0 ? s_trace.fail("ERROR : classify FAILED", result) : result;
    }
    // Trees that this rule is meant for have their changes at the end, so the last child decides.
    QueltInLinkList children(QueltInObject::sType());
    node.getChildrenRefs(children);
    bool isChange = false;
    if (children.IsEmpty() == 0) {
        const QueltEeNodeRef* const last = QueltEeNodeRef::cast(children.cLast().Get());
        if (last == nullptr) {
            return s_trace.fail("ERROR : unexpected failure for cast");
        }
        isChange = last->getNode() != nullptr && isChangeLeaf(*last->getNode());
    }
    // A negated change is nothing else; a group with a change at its end is still taken for evolution and
    // variant as well.
    const bool isNothingElse = isChange && QueltEeNotOp::isObjectOfThisType(node) != 0;
    classification.setVariant(isNothingElse ? 0 : 1);
    classification.setEvolution(isNothingElse ? 0 : 1);
    classification.setHistory(0);
    classification.setEffectivity(0);
    classification.setChange(isChange ? 1 : 0);
    return S_OK;
}

long QueltEeGenExprToEeMMExprVisitor::Steps::takeEvolutionVariant(QueltEeNode& node) {
    m_visitor.m_inEVPart = 1;
    if (m_visitor.m_atRoot == 0) {
        m_visitor.m_p_EV_ChildNodeRef = node.getNodeRef();
        return S_OK; // still in the part, for the operator above
    }
    return analyzeEvolutionVariant(node);
}

long QueltEeGenExprToEeMMExprVisitor::Steps::analyzeEvolutionVariant(QueltEeNode& node,
                                                                     QueltEeGroupOp* joined) {
    m_visitor.m_inEVPart = 1;
    const long result = m_visitor.analyzePureEVPart(node, 1);
    if (joined != nullptr) {
        s_trace.inform("Deleting the pAndOp that was not deleted so far");
        m_visitor.m_p_EV_ChildNodeRef = nullptr; // it is the group's
        joined->removeChildren();
        m_visitor.m_pBelongings->destroyGroup(*joined);
    }
    if (result < 0) {
        return s_trace.fail("ERROR : analyzePureEVPart Failed", result);
    }
    m_visitor.m_inEVPart = 0;
    return result;
}

long QueltEeGenExprToEeMMExprVisitor::Steps::refuseChangeInChange() {
    m_visitor.m_pBelongings->destroyUnfiled(std::exchange(m_visitor.m_pChangeExpression, nullptr));
    delete std::exchange(m_visitor.m_pMDSet, nullptr);
    return s_trace.fail("ERROR : a Change Expression should not contain another change.");
}

long QueltEeGenExprToEeMMExprVisitor::Steps::analyzeStackOfChanges(QueltEeGroupOp& group) {
    const long result = m_visitor.analyzeToFindOutOperationsStack(group);
    return result < 0 ? s_trace.fail("ERROR : analyzeToFindOutOperationsStack FAILED.", result) : result;
}

QueltEeEffectivityExpression& QueltEeGenExprToEeMMExprVisitor::Steps::history() {
    if (m_visitor.m_pHistoryExpression == nullptr) {
        m_visitor.m_pHistoryExpression = new QueltEeEffectivityExpression;
    }
    return *m_visitor.m_pHistoryExpression;
}

QueltEeEffectivityExpression& QueltEeGenExprToEeMMExprVisitor::Steps::evolutionVariant() {
    if (m_visitor.m_pEVExpression == nullptr) {
        m_visitor.m_pEVExpression = new QueltEeEffectivityExpression;
    }
    return *m_visitor.m_pEVExpression;
}

long QueltEeGenExprToEeMMExprVisitor::Steps::fileHistoryAtRoot() {
    const long result = history().setGlobalCriteria(m_visitor.m_p_History_ChildNodeRef);
    if (result < 0) {
        return s_trace.fail("ERROR : setGlobalCriteria FAILED", result);
    }
    m_visitor.m_pBelongings->handOver(m_visitor.m_p_History_ChildNodeRef);
    m_visitor.m_p_History_ChildNodeRef = nullptr;
    return result;
}

namespace {

long fileUnder(unsigned int domain, const QueltEeMultiModelExpression& expression, QueltInMap& map,
               quelt::Belongings& belongings) {
    const long result = map.Put(QueltInIntHolder(domain), expression);
    if (result < 0) {
        return s_trace.fail("ERROR : Put in map FAILED.", result);
    }
    belongings.noteFiled(expression);
    return result;
}

} // namespace

long QueltEeGenExprToEeMMExprVisitor::generateMapDomainIDToEeExpr(QueltInMap*& outputMap) {
    const quelt::MethodTrace scope(s_trace, "generateMapDomainIDToEeExpr");
    if (outputMap == nullptr) {
        outputMap = new QueltInMap(QueltInIntHolder::sType(), m_isChange != 0
                                                                  ? QueltEeChangeExpression::sType()
                                                                  : QueltEeEffectivityExpression::sType());
    }
    if (m_isChange != 0) {
        if (m_pChangeExpression == nullptr) {
            return s_trace.fail("ERROR : no change expression generated");
        }
        const long result = fileUnder(s_changeDomain, *m_pChangeExpression, *outputMap, *m_pBelongings);
        if (result >= 0) { // what has come of an effectivity is not filed
            for (QueltEeEffectivityExpression* const ignored :
                 {m_pEVExpression, m_pHistoryExpression, m_pTrueFalseExpression}) {
                m_pBelongings->keepUnfiled(ignored);
            }
        }
        return result;
    }
    if (m_pEVExpression == nullptr && m_pHistoryExpression == nullptr && m_pTrueFalseExpression == nullptr) {
        return s_trace.fail("ERROR : no effectivity expression generated");
    }
    const std::pair<unsigned int, const QueltEeEffectivityExpression*> outputs[] = {
        {s_evolutionVariantDomain, m_pEVExpression},
        {s_historyDomain, m_pHistoryExpression},
        {s_constantDomain, m_pTrueFalseExpression}};
    long result = S_OK;
    for (const auto& [domain, expression] : outputs) {
        if (expression == nullptr) {
            continue;
        }
        result = fileUnder(domain, *expression, *outputMap, *m_pBelongings);
        if (result < 0) {
            return result;
        }
    }
    return result;
}
