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

} // namespace

long QueltEeGenExprToEeMMExprVisitor::visitVarEffLeaf(QueltEeVarEffLeaf& leaf) {
    const quelt::MethodTrace scope(s_trace, "visitVarEffLeaf");
    s_trace.inform(m_atRoot != 0 ? "m_atRoot is TRUE" : "m_atRoot is FALSE");
    QueltEeVarEff* const effectivity = leaf.getVarEff();
    if (effectivity == nullptr) {
        return s_trace.fail("ERROR : unexpected.");
    }
    if (QueltEeOptionEff::isObjectOfThisType(*effectivity) != 0) {
        s_trace.inform("QueltEeOptionEff");
        return m_atRoot == 0 ? collect(leaf) : convertFeature<QueltEeCatOptionVar>(leaf, *effectivity);
    }
    if (QueltEeSelectionEff::isObjectOfThisType(*effectivity) != 0) {
        s_trace.inform("QueltEeSelectionEff");
        return m_atRoot == 0 ? collect(leaf) : convertFeature<QueltEeSelectionVar>(leaf, *effectivity);
    }
    if (QueltEeSerialEff* const serial = QueltEeSerialEff::cast(effectivity)) {
        s_trace.inform("QueltEeSerialEff");
        return m_atRoot == 0 ? collect(leaf) : convertSerial(leaf, *serial);
    }
    if (QueltEeTreeSeriesEff::isObjectOfThisType(*effectivity) != 0) {
        s_trace.inform("QueltEeTreeSeriesEff");
        return m_atRoot == 0 ? collect(leaf) : convertTreeSeries(leaf, *effectivity);
    }
    if (QueltEeDateEff::isObjectOfThisType(*effectivity) != 0) {
        s_trace.inform("QueltEeDateEff");
        return convertDate(leaf);
    }
    return s_trace.fail("ERROR :unexpected");
}

long QueltEeGenExprToEeMMExprVisitor::collect(QueltEeVarEffLeaf& leaf) {
    if (m_p_EV_ChildNodeRef == nullptr) {
        m_p_EV_ChildNodeRef = leaf.getNodeRef();
        return S_OK;
    }
    QueltEeGroupOp* const group = QueltEeGroupOp::cast(m_p_EV_ChildNodeRef->getNode());
    if (group == nullptr) {
        return s_trace.fail(
            "ERROR : how am i supposed to know what i should do here ? Right, I'd better check how i am "
            "calling myself.");
    }
    QueltEeGroupOp& extensible = m_pBelongings->makeExtensible(*group);
    m_pBelongings->join(extensible, leaf);
    m_p_EV_ChildNodeRef = extensible.getNodeRef();
    return S_OK;
}

template <class Variable>
long QueltEeGenExprToEeMMExprVisitor::convertFeature(QueltEeVarEffLeaf& leaf,
                                                     const QueltEeVarEff& effectivity) {
    const QueltEeDicoObject* const associated = effectivity.getVar();
    if (associated == nullptr) {
        return s_trace.fail("ERROR : that is soooo unlikely !");
    }
    const Variable* const variable = Variable::cast(associated);
    if (variable == nullptr) {
        return s_trace.fail("ERROR : unexpected");
    }
    QueltInSet* first = nullptr;
    QueltInSet* second = nullptr;
    long result = m_pContext->GetSetOfMDsContainingFeature(*variable, first, second, m_pBasicEff);
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
    result = fileFeature(leaf, *first);
    if (result >= 0) {
        delete first;
        delete second;
    }
    return result;
}

long QueltEeGenExprToEeMMExprVisitor::fileFeature(QueltEeVarEffLeaf& leaf, const QueltInSet& dictionaries) {
    makeTarget();
    long result = S_OK;
    auto elements = dictionaries.cBegin();
    for (int left = dictionaries.GetLength(); left > 0; --left) {
        const QueltEeModelDico* const dictionary = QueltEeModelDico::cast(elements.GetGoToNext());
        if (dictionary == nullptr) {
            return s_trace.fail("ERROR : unexpected");
        }
        QueltEeNodeRef* const clone = m_pBelongings->keep(leaf.clone());
        if (clone == nullptr) {
            return s_trace.fail("ERROR : clone failed.");
        }
        result = fileCriterion(*dictionary, clone);
        if (result < 0) {
            return result;
        }
    }
    return result;
}

long QueltEeGenExprToEeMMExprVisitor::convertSerial(QueltEeVarEffLeaf& leaf, QueltEeSerialEff& effectivity) {
    const QueltEeDicoObject* const associated = effectivity.getVar();
    if (associated == nullptr) {
        return s_trace.fail("ERROR : that is soooo unlikely !");
    }
    const QueltEeSerialVar* const variable = QueltEeSerialVar::cast(associated);
    const QueltEeModelDico* const holder = variable != nullptr ? variable->getHolderDico() : nullptr;
    if (holder == nullptr) {
        return s_trace.fail("ERROR : unexpected");
    }
    const long result = quelt::rewriteSerialIntervals(effectivity, *variable,
                                                      {.trace = s_trace,
                                                       .where = std::source_location::current(),
                                                       .renumbers = s_isRenumbering,
                                                       .tracesShiftedBounds = true,
                                                       .comparesUpperBoundUnshifted = false});
    if (result < 0) {
        return result;
    }
    makeTarget();
    return fileCriterion(*holder, m_pBelongings->keep(leaf.clone()));
}

long QueltEeGenExprToEeMMExprVisitor::convertTreeSeries(QueltEeVarEffLeaf& leaf,
                                                        const QueltEeVarEff& effectivity) {
    const QueltEeDicoObject* const associated = effectivity.getVar();
    if (associated == nullptr) {
        return s_trace.fail("ERROR : that is soooo unlikely !");
    }
    const QueltEeTreeSeriesVar* const variable = QueltEeTreeSeriesVar::cast(associated);
    const QueltEeModelDico* const holder = variable != nullptr ? variable->getHolderDico() : nullptr;
    if (holder == nullptr) {
        return s_trace.fail("ERROR : unexpected");
    }
    makeTarget();
    return fileCriterion(*holder, m_pBelongings->keep(leaf.clone()));
}

long QueltEeGenExprToEeMMExprVisitor::convertDate(QueltEeVarEffLeaf& leaf) {
    // An earlier date that nobody has taken is overwritten; it stays among the belongings.
    m_p_History_ChildNodeRef = m_pBelongings->keep(leaf.clone());
    if (m_atRoot != 0) {
        return fileHistoryAtRoot();
    }
    return isEmpty(m_p_History_ChildNodeRef) ? s_trace.fail("ERROR : unexpected") : S_OK;
}
