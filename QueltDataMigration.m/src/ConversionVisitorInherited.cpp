// Effectivity leaves: changes, and basic effectivities with the dictionaries that inherit them.

#include "ConversionVisitorParts.h"

#include "dictionary/QueltEeModelDico.h"
#include "effectivity/QueltEeEffectivity.h"
#include "expression/QueltEeExpressionContext.h"
#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeMultiModelExpression.h"
#include "expression/QueltEeOperators.h"
#include "infrastructure/QueltInMap.h"

using quelt::conversion::findChildNode;
using quelt::conversion::isEmpty;
using quelt::conversion::s_isRenumbering;
using quelt::conversion::s_trace;
using OperationKind = QueltEeExpressionOperation::OperationKind;

namespace {

constexpr unsigned int s_noChildTaken = 0xFFFFFFFFU;

/// The TRUE that is all of the effectivity's own content; null when it has another, or none.
const QueltEeNode* findTrueContent(const QueltEeBasicEff& effectivity) {
    const QueltEeNodeRef* const own = effectivity.getOwnNodeRef();
    const QueltEeNode* const content = own != nullptr ? own->getNode() : nullptr;
    return content != nullptr && QueltEeTrue::isObjectOfThisType(*content) != 0 ? content : nullptr;
}

} // namespace

long QueltEeGenExprToEeMMExprVisitor::visitEffLeaf(QueltEeEffLeaf& leaf) {
    const quelt::MethodTrace scope(s_trace, "visitEffLeaf");
    Steps steps(*this);
    QueltEeEffectivity* const target = leaf.getTargetEff();
    if (QueltEePredefEff* const change = QueltEePredefEff::cast(target)) {
        return steps.convertChange(*change);
    }
    QueltEeBasicEff* const basicEff = QueltEeBasicEff::cast(target);
    if (basicEff == nullptr) {
        return s_trace.fail("ERROR : unexpected type of QueltEeEffLeaf");
    }
    if (m_atRoot == 0 || m_listOfBasicEffs.IsEmpty() == 0 || m_pEVExpression != nullptr ||
        m_pInhEffChildNodeRef != nullptr || m_inhEffChildIndex != s_noChildTaken) {
        return s_trace.fail(
            "ERROR : with hypothesis for this algorithm, and current implementation, it is unexpected "
            "to arrive here. Unless this effectivity only has an inherited part...");
    }
    return steps.convertBasicEff(*basicEff);
}

long QueltEeGenExprToEeMMExprVisitor::Steps::convertChange(QueltEePredefEff& effectivity) {
    if (m_visitor.m_atRoot != 0) {
        QueltInObject* object = &effectivity;
        // Whatever the expression answers, the visit has succeeded.
        static_cast<void>(
            (s_isRenumbering ? history() : evolutionVariant()).addOperation(OperationKind::apply, object));
        return S_OK;
    }
    m_visitor.m_pCurrentOperation =
        m_visitor.m_pBelongings->keep(new QueltEeExpressionOperation(OperationKind::apply, &effectivity));
    return S_OK;
}

long QueltEeGenExprToEeMMExprVisitor::Steps::convertBasicEff(QueltEeBasicEff& effectivity) {
    const QueltEeNode* const constant = findTrueContent(effectivity);
    if (constant == nullptr) {
        m_visitor.m_listOfBasicEffs.PutBack(effectivity);
    }
    return fileInherited(effectivity, constant);
}

long QueltEeGenExprToEeMMExprVisitor::Steps::fileInherited(const QueltEeBasicEff& effectivity,
                                                           const QueltEeNode* constant) {
    QueltEeEffectivityExpression& expression = evolutionVariant();
    const QueltInMap* dictionaries = nullptr;
    long result = findInheritingDictionaries(effectivity, dictionaries);
    if (result < 0) {
        return result;
    }
    if (dictionaries->IsEmpty() != 0) {
        return s_trace.fail("ERROR: Map of Inherited Eff dictionaries is empty");
    }
    auto values = dictionaries->cBegin();
    while (values.IsEnd() == 0) {
        const QueltEeModelDico* const dictionary = QueltEeModelDico::cast(values.GetValGoToNext());
        if (dictionary == nullptr) {
            return s_trace.fail("ERRROR: Retrieved element isn't a QueltEeModelDico");
        }
        QueltEeNodeRef* inherited = nullptr;
        if (constant != nullptr) {
            inherited = constant->clone();
            if (isEmpty(inherited)) {
                return s_trace.fail("ERROR : unexpected");
            }
        } else {
            result = m_visitor.generateInheritedNodeRefForDico(*dictionary, inherited);
            if (result < 0) {
                return s_trace.fail("ERROR : generateInheritedNodeRefForDico Failed", result);
            }
        }
        result = expression.setModelCriteria(
            *dictionary, new QueltEeMultiModelExpression::ModelCriteria(&inherited, nullptr));
        if (result < 0) {
            return s_trace.fail("ERROR : setModelCriteria failed", result);
        }
    }
    return S_OK;
}

long QueltEeGenExprToEeMMExprVisitor::Steps::findInheritingDictionaries(
    const QueltEeBasicEff& effectivity, const QueltInMap*& dictionaries) const {
    const long result =
        m_visitor.m_pContext->GetAllDictionariesForInheritedEffectivity(effectivity, dictionaries);
    if (result < 0) {
        return s_trace.fail("ERROR : GetAllDictionariesForInheritedEffectivity failed", result);
    }
    return dictionaries == nullptr ? s_trace.fail("ERROR : returned map is NULL") : result;
}

long QueltEeGenExprToEeMMExprVisitor::exploreNodeRefToFindAllBasicEffs(QueltEeNode& node) {
    const quelt::MethodTrace scope(s_trace, "exploreNodeRefToFindAllBasicEffs");
    Steps steps(*this);
    if (QueltEeEffLeaf* const leaf = QueltEeEffLeaf::cast(node)) {
        return steps.listBasicEff(*leaf, "ERROR : unexpected type instead of expected BasicEff.");
    }
    QueltEeOrOp* const alternatives = QueltEeOrOp::cast(node);
    if (alternatives == nullptr) {
        return s_trace.fail(
            "ERROR : unexpected, we are supposed to be in inh effs part but we have something else "
            "than an or or a effleaf");
    }
    auto children = alternatives->getChildren().cBegin();
    while (QueltInObject* const child = children.GetGoToNext()) {
        QueltEeNode* const alternative = findChildNode(child);
        QueltEeEffLeaf* const leaf = alternative != nullptr ? QueltEeEffLeaf::cast(*alternative) : nullptr;
        if (leaf == nullptr) {
            return s_trace.fail(
                "ERROR : unexpected cast result. What we believe to know of the structure might be wrong.");
        }
        const long result =
            steps.listBasicEff(*leaf, "ERROR : unexpected cast result, got sthg other than basic eff");
        if (result < 0) {
            return result;
        }
    }
    return S_OK;
}

long QueltEeGenExprToEeMMExprVisitor::Steps::listBasicEff(QueltEeEffLeaf& leaf, const char* wrongTarget) {
    QueltEeBasicEff* const effectivity = QueltEeBasicEff::cast(leaf.getTargetEff());
    if (effectivity == nullptr) {
        return s_trace.fail(wrongTarget);
    }
    // TRUE adds nothing to a conjunction.
    if (findTrueContent(*effectivity) == nullptr) {
        m_visitor.m_listOfBasicEffs.PutBack(*effectivity);
    }
    return S_OK;
}

long QueltEeGenExprToEeMMExprVisitor::generateInheritedNodeRefForDico(const QueltEeModelDico& dico,
                                                                      QueltEeNodeRef*& result) {
    const quelt::MethodTrace scope(s_trace, "generateInheritedNodeRefForDico");
    if (m_listOfBasicEffs.IsEmpty() != 0) {
        result = nullptr;
        return S_OK;
    }
    auto* const leaves = new QueltEeOrOp;
    QueltEeNodeRef* const leavesRef = m_pBelongings->keep(leaves->getNodeRef());
    auto elements = m_listOfBasicEffs.cBegin();
    while (QueltInObject* const element = elements.GetGoToNext()) {
        QueltEeBasicEff* const effectivity = QueltEeBasicEff::cast(element);
        if (element == nullptr) { // asks for the element, not for what it was cast to, so that it never fires
            return s_trace.fail("ERROR : cast failed unexpectedly");
        }
        const long added = Steps(*this).addInheritedLeaves(*effectivity, dico, *leaves);
        if (added < 0) {
            return added;
        }
    }
    if (leaves->getChildren().GetLength() != 1) {
        m_pBelongings->handOver(leavesRef);
        result = leavesRef;
        return S_OK;
    }
    QueltEeNodeRef* const only = QueltEeNodeRef::cast(leaves->getChildren().PopBack());
    if (only == nullptr) {
        return s_trace.fail("ERROR : unexpected failed cast");
    }
    m_pBelongings->destroy(leavesRef);
    result = only;
    return S_OK;
}

long QueltEeGenExprToEeMMExprVisitor::Steps::addInheritedLeaves(QueltEeBasicEff& effectivity,
                                                                const QueltEeModelDico& dico,
                                                                QueltEeOrOp& leaves) const {
    const QueltInMap* dictionaries = nullptr;
    const long result = findInheritingDictionaries(effectivity, dictionaries);
    if (result < 0) {
        return result;
    }
    if (dictionaries->Get(dico.getName()) != nullptr) {
        leaves.addChild(*new QueltEeEffLeaf(&effectivity, &dico));
        return S_OK;
    }
    auto values = dictionaries->cBegin();
    while (values.IsEnd() == 0) {
        const QueltEeModelDico* const other = QueltEeModelDico::cast(values.GetValGoToNext());
        if (other == nullptr) {
            return s_trace.fail("ERRROR : unexpected cast result");
        }
        leaves.addChild(*new QueltEeEffLeaf(&effectivity, other));
    }
    return S_OK;
}
