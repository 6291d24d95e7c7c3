#include "QueltEeGenExprToEeMMExprVisitor.h"

#include "ConfigurationFlag.h"
#include "MigrationTrace.h"

#include "effectivity/QueltEeEffectivity.h"
#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeMultiModelExpression.h"
#include "expression/QueltEeOperators.h"
#include "infrastructure/QueltInIntHolder.h"
#include "infrastructure/QueltInMap.h"
#include "infrastructure/QueltInSet.h"
#include "infrastructure/QueltInTypedDefinition.h"

template class QueltInTyped<QueltEeGenExprToEeMMExprVisitor, QueltEeNodeVisitor>;

namespace {

const quelt::MigrationTrace s_trace("QueltEeGenExprToEeMMExprVisitor");
const bool s_isRenumbering = quelt::isEnvironmentVariableSet("CGE_MigRen");

constexpr unsigned int s_historyDomain = 1;
constexpr unsigned int s_evolutionVariantDomain = 2;
constexpr unsigned int s_changeDomain = 2;
constexpr unsigned int s_constantDomain = 3;

long fileUnder(unsigned int domain, const QueltEeMultiModelExpression& expression, QueltInMap& map) {
    const long result = map.Put(QueltInIntHolder(domain), expression);
    return result < 0 ? s_trace.fail("ERROR : Put in map FAILED.", result) : result;
}

/// The expression that is the whole of a conversion: a new one in `slot`, with a copy of the constant.
template <class Expression>
long makeConstantExpression(Expression*& slot, const QueltEeNode& constant) {
    slot = new Expression;
    const long result = slot->setGlobalCriteria(constant.clone());
    return result < 0 ? s_trace.fail("ERROR", result) : result;
}

} // namespace

QueltEeGenExprToEeMMExprVisitor::QueltEeGenExprToEeMMExprVisitor(unsigned char isChange,
                                                                 const QueltEeExpressionContext& context,
                                                                 QueltEeBasicEff* basicEff)
    : m_isChange(isChange), m_pContext(&context), m_pBasicEff(basicEff),
      m_listOfBasicEffs(QueltEeBasicEff::sType()) {
    const quelt::MethodTrace scope(s_trace, "QueltEeGenExprToEeMMExprVisitor");
}

QueltEeGenExprToEeMMExprVisitor::QueltEeGenExprToEeMMExprVisitor(const QueltEeGenExprToEeMMExprVisitor& other) =
    default;

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
long QueltEeGenExprToEeMMExprVisitor::visitConstant(Constant& node, const char* method) {
    const quelt::MethodTrace scope(s_trace, method);
    const bool atRoot = m_atRoot != 0;
    const bool isChange = m_isChange != 0;
    if (!atRoot && (isChange || !s_isRenumbering)) {
        return E_NOTIMPL;
    }
    return isChange ? makeConstantExpression(m_pChangeExpression, node)
                    : makeConstantExpression(m_pTrueFalseExpression, node);
}

long QueltEeGenExprToEeMMExprVisitor::visitFalse(QueltEeFalse& node) {
    return visitConstant(node, "visitFalse");
}

long QueltEeGenExprToEeMMExprVisitor::visitTrue(QueltEeTrue& node) {
    return visitConstant(node, "visitTrue");
}

long QueltEeGenExprToEeMMExprVisitor::visitAndOp(QueltEeAndOp& /*node*/) {
    const quelt::MethodTrace scope(s_trace, "visitAndOp");
    return E_NOTIMPL;
}

long QueltEeGenExprToEeMMExprVisitor::visitOrOp(QueltEeOrOp& /*node*/) {
    const quelt::MethodTrace scope(s_trace, "visitOrOp");
    return E_NOTIMPL;
}

long QueltEeGenExprToEeMMExprVisitor::visitNotDomainOp(QueltEeNotDomainOp& /*node*/) {
    const quelt::MethodTrace scope(s_trace, "visitNotDomainOp");
    return E_NOTIMPL;
}

long QueltEeGenExprToEeMMExprVisitor::visitNotOp(QueltEeNotOp& /*node*/) {
    const quelt::MethodTrace scope(s_trace, "visitNotOp");
    return E_NOTIMPL;
}

long QueltEeGenExprToEeMMExprVisitor::visitEffLeaf(QueltEeEffLeaf& /*leaf*/) {
    const quelt::MethodTrace scope(s_trace, "visitEffLeaf");
    return E_NOTIMPL;
}

long QueltEeGenExprToEeMMExprVisitor::visitVarEffLeaf(QueltEeVarEffLeaf& /*leaf*/) {
    const quelt::MethodTrace scope(s_trace, "visitVarEffLeaf");
    return E_NOTIMPL;
}

long QueltEeGenExprToEeMMExprVisitor::visitRestrictionEffLeaf(QueltEeRestrictionEffLeaf& /*leaf*/) {
    s_trace.writeMessage("ERROR : No RestrictionEffLeaf Expected at this level.");
    return E_UNEXPECTED;
}

long QueltEeGenExprToEeMMExprVisitor::generateMapDomainIDToEeExpr(QueltInMap*& outputMap) {
    const quelt::MethodTrace scope(s_trace, "generateMapDomainIDToEeExpr");
    if (outputMap == nullptr) {
        outputMap = new QueltInMap(QueltInIntHolder::sType(), m_isChange != 0 ? QueltEeChangeExpression::sType()
                                                                             : QueltEeEffectivityExpression::sType());
    }
    if (m_isChange != 0) {
        return m_pChangeExpression == nullptr ? s_trace.fail("ERROR : no change expression generated")
                                              : fileUnder(s_changeDomain, *m_pChangeExpression, *outputMap);
    }
    if (m_pEVExpression == nullptr && m_pHistoryExpression == nullptr && m_pTrueFalseExpression == nullptr) {
        return s_trace.fail("ERROR : no effectivity expression generated");
    }
    long result = S_OK;
    if (m_pEVExpression != nullptr) {
        result = fileUnder(s_evolutionVariantDomain, *m_pEVExpression, *outputMap);
    }
    if (result >= 0 && m_pHistoryExpression != nullptr) {
        result = fileUnder(s_historyDomain, *m_pHistoryExpression, *outputMap);
    }
    if (result >= 0 && m_pTrueFalseExpression != nullptr) {
        result = fileUnder(s_constantDomain, *m_pTrueFalseExpression, *outputMap);
    }
    return result;
}
