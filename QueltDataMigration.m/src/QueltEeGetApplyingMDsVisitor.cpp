#include "QueltEeGetApplyingMDsVisitor.h"

#include "ConfigurationFlag.h"
#include "DictionarySets.h"
#include "MigrationTrace.h"
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
#include "expression/QueltEeOperators.h"
#include "infrastructure/QueltInMap.h"
#include "infrastructure/QueltInSet.h"
#include "infrastructure/QueltInTypedDefinition.h"

template class QueltInTyped<QueltEeGetApplyingMDsVisitor, QueltEeNodeVisitor>;

namespace {

const quelt::MigrationTrace s_trace("QueltEeGetApplyingMDsVisitor");
const bool s_isRenumbering = quelt::isEnvironmentVariableSet("CGE_MigRen");

// What getSetOfMDsContainingFeature answers when no dictionary is left.
constexpr long s_noDictionary = 1;

} // namespace

QueltEeGetApplyingMDsVisitor::QueltEeGetApplyingMDsVisitor(const QueltEeExpressionContext* context,
                                                           const QueltEeBasicEff* inheritedEff)
    : m_pContext(context), m_pInheritedEff(inheritedEff) {
    const quelt::MethodTrace scope(s_trace, "QueltEeGetApplyingMDsVisitor");
    m_pPossibleMDs = new QueltInSet(QueltEeModelDico::sType(), 0, 0.0F);
    m_pRejectedMDs = new QueltInSet(QueltEeModelDico::sType(), 0, 0.0F);
    if (putCandidates() < 0) {
        m_bErrorOccurred = 1;
        deleteSets();
    }
}

long QueltEeGetApplyingMDsVisitor::putCandidates() {
    const QueltInMap* candidates = nullptr;
    if (m_pInheritedEff != nullptr) {
        const long result =
            m_pContext->GetAllDictionariesForInheritedEffectivity(*m_pInheritedEff, candidates);
        if (result < 0) {
            return s_trace.fail("ERROR : GetAllDictionariesForInheritedEffectivity from Context FAILED",
                                result);
        }
    } else {
        const long result = m_pContext->GetAllDictionariesByName(candidates);
        if (result < 0) {
            return s_trace.fail("ERROR : GetAllDictionariesByName from Context FAILED", result);
        }
    }
    if (candidates == nullptr) {
        return s_trace.fail("ERROR");
    }
    auto values = candidates->cBegin();
    while (values.IsEnd() == 0) {
        QueltEeModelDico* const dictionary = QueltEeModelDico::cast(values.GetValGoToNext());
        if (dictionary == nullptr) {
            return s_trace.fail("ERROR");
        }
        m_pPossibleMDs->Put(*dictionary);
    }
    return S_OK;
}

QueltEeGetApplyingMDsVisitor::~QueltEeGetApplyingMDsVisitor() {
    const quelt::MethodTrace scope(s_trace, "~QueltEeGetApplyingMDsVisitor");
    if (m_bSetsGivenAway == 0) {
        deleteSets();
    }
}

void QueltEeGetApplyingMDsVisitor::deleteSets() {
    delete m_pPossibleMDs;
    delete m_pRejectedMDs;
    m_pPossibleMDs = nullptr;
    m_pRejectedMDs = nullptr;
}

unsigned char QueltEeGetApplyingMDsVisitor::succeeded() {
    const quelt::MethodTrace scope(s_trace, "succeeded");
    if (m_bErrorOccurred == 0) {
        return 1;
    }
    if (m_bSetsGivenAway == 0) { // sets that were given away are their owner's
        deleteSets();
    }
    return 0;
}

long QueltEeGetApplyingMDsVisitor::getSetOfApplyingMDs(QueltInSet*& possible, QueltInSet*& rejected) {
    const quelt::MethodTrace scope(s_trace, "getSetOfApplyingMDs");
    if (possible != nullptr || rejected != nullptr) {
        return s_trace.fail(
            "ERROR : At least one of QueltInSet pointer parameter isn't null, pointed object may be lost.");
    }
    possible = m_pPossibleMDs;
    rejected = m_pRejectedMDs;
    m_bSetsGivenAway = 1;
    return S_OK;
}

long QueltEeGetApplyingMDsVisitor::visitFalse(QueltEeFalse& /*node*/) {
    const quelt::MethodTrace scope(s_trace, "visitFalse");
    return S_OK;
}

long QueltEeGetApplyingMDsVisitor::visitTrue(QueltEeTrue& /*node*/) {
    const quelt::MethodTrace scope(s_trace, "visitTrue");
    return S_OK;
}

long QueltEeGetApplyingMDsVisitor::visitGroup(QueltEeOperator& group) {
    const long result = group.childrenAcceptVisitor(*this);
    if (result >= 0) {
        return result;
    }
    m_bErrorOccurred = 1;
    // An OR reports itself with these words too.
    return s_trace.fail("ERROR : an error happened while processing AND node.", result);
}

long QueltEeGetApplyingMDsVisitor::visitAndOp(QueltEeAndOp& node) {
    const quelt::MethodTrace scope(s_trace, "visitAndOp");
    return visitGroup(node);
}

long QueltEeGetApplyingMDsVisitor::visitOrOp(QueltEeOrOp& node) {
    const quelt::MethodTrace scope(s_trace, "visitOrOp");
    return visitGroup(node);
}

long QueltEeGetApplyingMDsVisitor::visitNotDomainOp(QueltEeNotDomainOp& /*node*/) {
    const quelt::MethodTrace scope(s_trace, "visitNotDomainOp");
    return s_trace.fail(
        "ERROR : I have no idea of what is this thing and what is its potential use, so I did not "
        "implement this.");
}

long QueltEeGetApplyingMDsVisitor::visitNotOp(QueltEeNotOp& node) {
    const quelt::MethodTrace scope(s_trace, "visitNotOp");
    const long result = node.childrenAcceptVisitor(*this);
    return result < 0 ? s_trace.fail("ERROR : childrenAcceptVisitor FAILED", result) : result;
}

long QueltEeGetApplyingMDsVisitor::visitEffLeaf(QueltEeEffLeaf& /*leaf*/) {
    const quelt::MethodTrace scope(s_trace, "visitEffLeaf");
    return s_trace.fail(
        "ERROR : Call to QueltEeGetApplyingMDsVisitor::visitEffLeaf, this visitor is supposed to be "
        "performed on an EV Tree only.");
}

long QueltEeGetApplyingMDsVisitor::visitVarEffLeaf(QueltEeVarEffLeaf& leaf) {
    const quelt::MethodTrace scope(s_trace, "visitVarEffLeaf");
    QueltEeVarEff* const effectivity = leaf.getVarEff();
    if (effectivity == nullptr) {
        return s_trace.fail("Wow. THAT is unexpected !!! :'( ");
    }
    const QueltInObjectTypeClass* const type = quelt::typeOf(*effectivity);
    // No effectivity is of two of these classes, so the frequent ones are asked for first.
    if (QueltEeOptionEff::isOfThisType(type)) {
        return visitFeature<QueltEeCatOptionVar>(
            *effectivity, "ERROR : unexpected again",
            "ERROR : Unable to find one MD containing current QueltEeCatOptionVar.");
    }
    if (QueltEeSelectionEff::isOfThisType(type)) {
        return visitFeature<QueltEeSelectionVar>(
            *effectivity, "ERROR : unexpected",
            "ERROR : Unable to find one MD containing current QueltEeSelectionVar.");
    }
    if (QueltEeSerialEff::isOfThisType(type)) {
        return visitSerial(static_cast<QueltEeSerialEff&>(*effectivity));
    }
    if (QueltEeTreeSeriesEff::isOfThisType(type)) {
        return visitTreeSeries(*effectivity);
    }
    if (QueltEeDateEff::isOfThisType(type)) {
        return s_trace.fail("ERROR : There is a date when we are supposed to be in a pure EV tree when "
                            "calling that visitor.");
    }
    return s_trace.fail("ERROR : Unexpected child, type of QueltEeVarEff is invalid.");
}

template <class Variable>
long QueltEeGetApplyingMDsVisitor::visitFeature(const QueltEeVarEff& effectivity, const char* wrongKind,
                                                const char* notFound) {
    const QueltEeDicoObject* const associated = effectivity.getVar();
    if (associated == nullptr) {
        return s_trace.fail("ERROR : unexpected");
    }
    const Variable* const variable = Variable::cast(associated);
    if (variable == nullptr) {
        return s_trace.fail(wrongKind);
    }
    const long result =
        m_pContext->GetSetOfMDsContainingFeature(*variable, m_pPossibleMDs, m_pRejectedMDs, m_pInheritedEff);
    if (result < 0) {
        return s_trace.fail(
            "ERROR : Call to QueltEeExpressionContext::GetSetOfMDsContainingFeature() has failed.", result);
    }
    if (m_pPossibleMDs == nullptr) {
        return s_trace.fail("ERROR : Null pointer on PosssibleMDs set.");
    }
    if (m_pRejectedMDs == nullptr) {
        return s_trace.fail("ERROR : Null pointer on RejectedMDs set.");
    }
    return result == s_noDictionary ? s_trace.fail(notFound) : result;
}

long QueltEeGetApplyingMDsVisitor::visitSerial(QueltEeSerialEff& effectivity) {
    const auto* const variable = QueltEeSerialVar::cast(effectivity.getVar());
    QueltEeModelDico* const holder = variable != nullptr ? variable->getHolderDico() : nullptr;
    if (holder == nullptr) {
        return s_trace.fail("ERROR : unexpected");
    }
    const long result = narrowToHolder(*holder);
    if (result < 0) {
        return result;
    }
    return quelt::rewriteSerialIntervals(effectivity, *variable,
                                         {.trace = s_trace,
                                          .where = std::source_location::current(),
                                          .renumbers = s_isRenumbering,
                                          .tracesShiftedBounds = true,
                                          .comparesUpperBoundUnshifted = false});
}

long QueltEeGetApplyingMDsVisitor::visitTreeSeries(const QueltEeVarEff& effectivity) {
    const auto* const variable = QueltEeTreeSeriesVar::cast(effectivity.getVar());
    QueltEeModelDico* const holder = variable != nullptr ? variable->getHolderDico() : nullptr;
    return holder == nullptr ? s_trace.fail("ERROR : unexpected") : narrowToHolder(*holder);
}

long QueltEeGetApplyingMDsVisitor::narrowToHolder(QueltEeModelDico& holder) {
    if (m_pPossibleMDs == nullptr || m_pRejectedMDs == nullptr) {
        return s_trace.fail("ERROR : an error must have logged before, m_pPossibleMDs is NULL");
    }
    // Whether the holder was possible is asked and not heeded: it is imposed all the same.
    static_cast<void>(m_pPossibleMDs->Find(holder));
    return quelt::keepOnly(holder, *m_pPossibleMDs, *m_pRejectedMDs, s_trace);
}

long QueltEeGetApplyingMDsVisitor::visitRestrictionEffLeaf(QueltEeRestrictionEffLeaf& /*leaf*/) {
    s_trace.writeMessage("ERROR : RestrictionEff are unexpected at this level");
    return E_UNEXPECTED;
}
