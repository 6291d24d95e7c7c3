// The visits of AND, OR and NOT.

#include "ConversionVisitorParts.h"

#include "expression/QueltEVCClassification.h"
#include "expression/QueltEeMultiModelExpression.h"
#include "expression/QueltEeOperators.h"

using quelt::conversion::s_isOptimized;
using quelt::conversion::s_trace;

namespace {

bool isEvolutionOrVariant(const QueltEVCClassification& classification) {
    return classification.isEvolution() != 0 || classification.isVariant() != 0;
}

/// Evolution, variant, change, and neither a date nor an inherited effectivity.
bool isWithoutHistory(const QueltEVCClassification& classification) {
    return (isEvolutionOrVariant(classification) || classification.isChange() != 0) &&
           classification.isInheritedEff() == 0 && classification.isHistory() == 0;
}

bool isNothingButInherited(const QueltEVCClassification& classification) {
    return classification.isInheritedEff() != 0 && !isEvolutionOrVariant(classification) &&
           classification.isChange() == 0 && classification.isHistory() == 0;
}

} // namespace

long QueltEeGenExprToEeMMExprVisitor::visitAndOp(QueltEeAndOp& node) {
    const quelt::MethodTrace scope(s_trace, "visitAndOp");
    QueltEVCClassification classification(0);
    Steps steps(*this);
    const long result = steps.classify(node, classification);
    if (result < 0) {
        return result;
    }
    if (isWithoutHistory(classification)) {
        return steps.convertWithoutHistory(node, classification, [&] {
            s_trace.inform("Stack of changes");
            return steps.analyzeStackOfChanges(node);
        });
    }
    if (classification.isInheritedEff() != 0) {
        return steps.convertWithInherited(node);
    }
    if (classification.isHistory() != 0) {
        return steps.convertHistory(node);
    }
    return s_trace.fail("ERROR: classification is nothing ???");
}

long QueltEeGenExprToEeMMExprVisitor::visitOrOp(QueltEeOrOp& node) {
    const quelt::MethodTrace scope(s_trace, "visitOrOp");
    QueltEVCClassification classification(0);
    Steps steps(*this);
    const long result = steps.classify(node, classification);
    if (result < 0) {
        return result;
    }
    if (isWithoutHistory(classification)) {
        return steps.convertWithoutHistory(node, classification,
                                           [&] { return steps.analyzeStackOfChanges(node); });
    }
    if (classification.isHistory() != 0) {
        return steps.convertHistory(node);
    }
    return s_trace.fail(
        "ERROR : classification is nothing ??? InhEff part in or op ? We should not be there...");
}

long QueltEeGenExprToEeMMExprVisitor::visitNotOp(QueltEeNotOp& node) {
    const quelt::MethodTrace scope(s_trace, "visitNotOp");
    if (s_isOptimized) {
        s_trace.inform("CFG_DA_Migration_Optimization");
    }
    QueltEVCClassification classification(0);
    Steps steps(*this);
    const long result = steps.classify(node, classification);
    if (result < 0) {
        return result;
    }
    if (isWithoutHistory(classification)) {
        return steps.convertWithoutHistory(node, classification, [&] {
            return isEvolutionOrVariant(classification)
                       ? s_trace.fail("ERROR : do not know how to manage that case. Do not know what that "
                                      "configuration means...")
                       : steps.convertNegatedChange(node);
        });
    }
    if (classification.isHistory() != 0) {
        return steps.convertHistory(node);
    }
    return s_trace.fail("ERROR : classification is nothing ???");
}

template <class ConvertChange>
long QueltEeGenExprToEeMMExprVisitor::Steps::convertWithoutHistory(
    QueltEeNode& node, const QueltEVCClassification& classification, const ConvertChange& convertChange) {
    if (classification.isChange() == 0) {
        return takeEvolutionVariant(node);
    }
    return m_visitor.m_isChange != 0 ? refuseChangeInChange() : convertChange();
}

long QueltEeGenExprToEeMMExprVisitor::Steps::convertNegatedChange(QueltEeNotOp& node) {
    const long result = node.childrenAcceptVisitor(m_visitor);
    if (result < 0) {
        return s_trace.fail("ERROR : childrenAcceptVisitor on NOT op FAILED", result);
    }
    if (m_visitor.m_pCurrentOperation != nullptr) {
        m_visitor.m_pCurrentOperation->m_kind = QueltEeExpressionOperation::OperationKind::remove;
    }
    return result;
}

long QueltEeGenExprToEeMMExprVisitor::Steps::convertWithInherited(QueltEeAndOp& node) {
    if (m_visitor.m_atRoot == 0) {
        return s_trace.fail("ERROR : unexpected case");
    }
    if (m_visitor.m_isChange != 0) {
        return s_trace.fail("ERROR : we are not supposed to have referenced effectivities in a change");
    }
    TakenChildren inherited;
    long result = expandInherited(node, inherited);
    if (result >= 0) {
        result = takeOut(node, inherited);
    }
    if (result >= 0) {
        // What is left is converted as if it were the whole; the outcome of that is not this visit's.
        m_visitor.m_atRoot = 1;
        static_cast<void>(node.acceptVisitor(m_visitor));
        putBack(node, inherited);
    }
    m_visitor.m_pInhEffChildNodeRef = nullptr;
    return result;
}

long QueltEeGenExprToEeMMExprVisitor::Steps::expandInherited(QueltEeAndOp& node, TakenChildren& inherited) {
    long result = S_OK;
    unsigned int index = 0;
    auto children = node.getChildren().cBegin();
    while (m_visitor.m_listOfBasicEffs.IsEmpty() != 0) {
        QueltInObject* const element = children.GetGoToNext();
        if (element == nullptr) {
            break;
        }
        QueltEeNodeRef* const child = QueltEeNodeRef::cast(element);
        if (child == nullptr || child->getNode() == nullptr) {
            return s_trace.fail("ERROR: Retrieved element isn't a QueltEeNodeRef");
        }
        QueltEVCClassification classification(0);
        QueltCoreEVC_NodeClassifier classifier;
        result = classifier.classify(*child, classification);
        if (result < 0) {
            return s_trace.fail("ERROR: classify FAILED", result);
        }
        if (isNothingButInherited(classification)) {
            result = m_visitor.exploreNodeRefToFindAllBasicEffs(*child->getNode());
            if (result < 0) {
                return s_trace.fail("ERROR : exploreNodeRefToFindAllBasicEffs failed", result);
            }
            m_visitor.m_pInhEffChildNodeRef = child;
            m_visitor.m_inhEffChildIndex = index;
            inherited.push_back({index, child});
        }
        ++index;
    }
    // Without a child taken out, the second visit would come here again, and so for ever.
    return inherited.empty() ? s_trace.fail("ERROR : unexpected case") : result;
}

long QueltEeGenExprToEeMMExprVisitor::Steps::takeOut(QueltEeAndOp& node, const TakenChildren& taken) {
    QueltInSmallVector<std::uint32_t, 2> positions;
    for (const QueltInLinkList::Placed& child : taken) {
        positions.push_back(child.position);
    }
    const long result = node.getChildren().RemoveEach(positions.values());
    return result < 0 ? s_trace.fail("ERROR, Remove Child inh eff from list children failed", result)
                      : result;
}

void QueltEeGenExprToEeMMExprVisitor::Steps::putBack(QueltEeAndOp& node, const TakenChildren& taken) {
    if (node.getChildren().SetEach(taken.values()) >= 0) {
        return;
    }
    // One of them has no place any more: the others keep theirs.
    for (const QueltInLinkList::Placed& child : taken) {
        if (node.getChildren().Set(child.position, *child.object) < 0) {
            delete child.object;
        }
    }
}
