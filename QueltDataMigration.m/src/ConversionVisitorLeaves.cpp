// Leaves with a variable effectivity.

#include "ConversionVisitorParts.h"
#include "SerialRenumbering.h"

#include "dictionary/QueltEeNamedValueVar.h"
#include "dictionary/QueltEeSerialVar.h"
#include "dictionary/QueltEeTreeSeriesVar.h"
#include "effectivity/QueltEeDateEff.h"
#include "effectivity/QueltEeNamedValueEff.h"
#include "effectivity/QueltEeSerialEff.h"
#include "effectivity/QueltEeTreeSeriesEff.h"
#include "expression/QueltEeExpressionContext.h"
#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeMultiModelExpression.h"
#include "expression/QueltEeOperators.h"
#include "infrastructure/QueltInSet.h"

using quelt::conversion::isEmpty;
using quelt::conversion::s_isRenumbering;
using quelt::conversion::s_trace;

namespace {

// What getSetOfMDsContainingFeature answers when no dictionary is left.
constexpr long s_noDictionary = 1;

constexpr const char* s_unexpected = "ERROR : unexpected";

} // namespace

long QueltEeGenExprToEeMMExprVisitor::visitVarEffLeaf(QueltEeVarEffLeaf& leaf) {
    const quelt::MethodTrace scope(s_trace, "visitVarEffLeaf");
    s_trace.inform(m_atRoot != 0 ? "m_atRoot is TRUE" : "m_atRoot is FALSE");
    QueltEeVarEff* const effectivity = leaf.getVarEff();
    if (effectivity == nullptr) {
        return s_trace.fail("ERROR : unexpected.");
    }
    Steps steps(*this);
    const QueltInObjectTypeClass* const type = quelt::typeOf(*effectivity);
    if (QueltEeOptionEff::isOfThisType(type)) {
        s_trace.inform("QueltEeOptionEff");
        return m_atRoot == 0 ? steps.collect(leaf)
                             : steps.convertFeature<QueltEeCatOptionVar>(leaf, *effectivity);
    }
    if (QueltEeSelectionEff::isOfThisType(type)) {
        s_trace.inform("QueltEeSelectionEff");
        return m_atRoot == 0 ? steps.collect(leaf)
                             : steps.convertFeature<QueltEeSelectionVar>(leaf, *effectivity);
    }
    if (QueltEeSerialEff::isOfThisType(type)) {
        s_trace.inform("QueltEeSerialEff");
        return m_atRoot == 0 ? steps.collect(leaf)
                             : steps.convertSerial(leaf, static_cast<QueltEeSerialEff&>(*effectivity));
    }
    if (QueltEeTreeSeriesEff::isOfThisType(type)) {
        s_trace.inform("QueltEeTreeSeriesEff");
        return m_atRoot == 0 ? steps.collect(leaf) : steps.convertTreeSeries(leaf, *effectivity);
    }
    if (QueltEeDateEff::isOfThisType(type)) {
        s_trace.inform("QueltEeDateEff");
        return steps.convertDate(leaf);
    }
    return s_trace.fail("ERROR :unexpected");
}

long QueltEeGenExprToEeMMExprVisitor::Steps::collect(QueltEeVarEffLeaf& leaf) {
    if (m_visitor.m_p_EV_ChildNodeRef == nullptr) {
        m_visitor.m_p_EV_ChildNodeRef = leaf.getNodeRef();
        return S_OK;
    }
    QueltEeGroupOp* const group = QueltEeGroupOp::cast(m_visitor.m_p_EV_ChildNodeRef->getNode());
    if (group == nullptr) {
        return s_trace.fail(
            "ERROR : how am i supposed to know what i should do here ? Right, I'd better check how i am "
            "calling myself.");
    }
    QueltEeGroupOp& extensible = m_visitor.m_pBelongings->makeExtensible(*group);
    m_visitor.m_pBelongings->join(extensible, leaf);
    m_visitor.m_p_EV_ChildNodeRef = extensible.getNodeRef();
    return S_OK;
}

template <class Variable>
long QueltEeGenExprToEeMMExprVisitor::Steps::findVariable(const QueltEeVarEff& effectivity,
                                                          const Variable*& variable) {
    const QueltEeDicoObject* const associated = effectivity.getVar();
    if (associated == nullptr) {
        return s_trace.fail("ERROR : that is soooo unlikely !");
    }
    variable = Variable::cast(associated);
    return variable == nullptr ? s_trace.fail(s_unexpected) : S_OK;
}

template <class Variable>
long QueltEeGenExprToEeMMExprVisitor::Steps::findSeries(const QueltEeVarEff& effectivity,
                                                        const Variable*& variable,
                                                        const QueltEeModelDico*& holder) {
    const long result = findVariable(effectivity, variable);
    if (result < 0) {
        return result;
    }
    holder = variable->getHolderDico();
    return holder == nullptr ? s_trace.fail(s_unexpected) : result;
}

template <class Variable>
long QueltEeGenExprToEeMMExprVisitor::Steps::convertFeature(QueltEeVarEffLeaf& leaf,
                                                            const QueltEeVarEff& effectivity) {
    const Variable* variable = nullptr;
    long result = findVariable(effectivity, variable);
    if (result < 0) {
        return result;
    }
    QueltInSet* first = nullptr;
    QueltInSet* second = nullptr;
    result =
        m_visitor.m_pContext->GetSetOfMDsContainingFeature(*variable, first, second, m_visitor.m_pBasicEff);
    if (result < 0) {
        return s_trace.fail("ERROR : GetSetOfMDsContainingFeature Failed.", result);
    }
    if (first == nullptr) {
        return s_trace.fail("ERROR, GetSetOfMDsContainingFeature returned NULL");
    }
    if (result == s_noDictionary || first->IsEmpty() != 0) {
        return s_trace.fail(
            "ERROR : No MD found for this option"); // a selection is called an option here as well
    }
    result = fileUnderEach(*first, leaf, 1, {.unexpected = s_unexpected, .noCopy = "ERROR : clone failed."});
    if (result >= 0) {
        delete first;
        delete second;
    }
    return result;
}

long QueltEeGenExprToEeMMExprVisitor::Steps::convertSerial(QueltEeVarEffLeaf& leaf,
                                                           QueltEeSerialEff& effectivity) {
    const QueltEeSerialVar* variable = nullptr;
    const QueltEeModelDico* holder = nullptr;
    long result = findSeries(effectivity, variable, holder);
    if (result < 0) {
        return result;
    }
    result = quelt::rewriteSerialIntervals(effectivity, *variable,
                                           {.trace = s_trace,
                                            .where = std::source_location::current(),
                                            .renumbers = s_isRenumbering,
                                            .tracesShiftedBounds = true,
                                            .comparesUpperBoundUnshifted = false});
    return result < 0 ? result : fileUnderHolder(*holder, leaf);
}

long QueltEeGenExprToEeMMExprVisitor::Steps::convertTreeSeries(QueltEeVarEffLeaf& leaf,
                                                               const QueltEeVarEff& effectivity) {
    const QueltEeTreeSeriesVar* variable = nullptr;
    const QueltEeModelDico* holder = nullptr;
    const long result = findSeries(effectivity, variable, holder);
    return result < 0 ? result : fileUnderHolder(*holder, leaf);
}

long QueltEeGenExprToEeMMExprVisitor::Steps::fileUnderHolder(const QueltEeModelDico& holder,
                                                             QueltEeVarEffLeaf& leaf) {
    makeTarget();
    return fileCriterion(holder, m_visitor.m_pBelongings->keep(leaf.clone()), s_unexpected);
}

long QueltEeGenExprToEeMMExprVisitor::Steps::convertDate(QueltEeVarEffLeaf& leaf) {
    // An earlier date that nobody has taken is overwritten; it stays among the belongings.
    m_visitor.m_p_History_ChildNodeRef = m_visitor.m_pBelongings->keep(leaf.clone());
    if (m_visitor.m_atRoot != 0) {
        return fileHistoryAtRoot();
    }
    return isEmpty(m_visitor.m_p_History_ChildNodeRef) ? s_trace.fail(s_unexpected) : S_OK;
}
