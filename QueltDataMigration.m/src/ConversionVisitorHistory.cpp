// Operators with dates below: the dates are set apart from the evolution/variant part.

#include "ConversionVisitorParts.h"

#include "expression/QueltEeMultiModelExpression.h"
#include "expression/QueltEeOperators.h"

#include <utility>

using quelt::conversion::findChildNode;
using quelt::conversion::s_trace;

long QueltEeGenExprToEeMMExprVisitor::convertHistory(QueltEeAndOp& node) {
    bool wasAtRoot = false;
    long result = enterHistory(wasAtRoot);
    if (result < 0) {
        return result;
    }
    QueltEeGroupOp* createdAnd = nullptr;
    result = collectHistory(node, [&](QueltEeNodeRef* previousEV) { joinForAnd(previousEV, createdAnd); });
    if (result < 0 || !wasAtRoot) {
        return result;
    }
    s_trace.writeMessage("At Root");
    result = fileDatesAtRoot();
    if (result < 0 || m_p_EV_ChildNodeRef == nullptr) {
        return result;
    }
    s_trace.writeMessage("m_p_EV_ChildNodeRef not null, analyzing to find model");
    return analyzeEvolutionVariant(*m_p_EV_ChildNodeRef->getNode(), createdAnd);
}

long QueltEeGenExprToEeMMExprVisitor::convertHistory(QueltEeOrOp& node) {
    bool wasAtRoot = false;
    long result = enterHistory(wasAtRoot);
    if (result < 0) {
        return result;
    }
    result = collectHistory(node, [&](QueltEeNodeRef* previousEV) { joinForOr(previousEV); });
    return result < 0 || !wasAtRoot ? result : fileHistoryWithEvolutionVariant();
}

long QueltEeGenExprToEeMMExprVisitor::convertHistory(QueltEeNotOp& node) {
    s_trace.inform("classification is history");
    bool wasAtRoot = false;
    long result = enterHistory(wasAtRoot);
    if (result < 0) {
        return result;
    }
    QueltEeNode* child = nullptr;
    result = findHistoryChild(node.getChildRef(), child);
    if (result >= 0) {
        result = takeHistoryChild(*child);
    }
    if (result < 0 || m_p_History_ChildNodeRef == nullptr) {
        return result;
    }
    auto* const negation = new QueltEeNotOp(0);
    m_pBelongings->handOver(m_p_History_ChildNodeRef);
    negation->setChildRef(*m_p_History_ChildNodeRef);
    m_p_History_ChildNodeRef = m_pBelongings->keep(negation->getNodeRef());
    return wasAtRoot ? fileHistoryWithEvolutionVariant() : result;
}

long QueltEeGenExprToEeMMExprVisitor::enterHistory(bool& wasAtRoot) {
    wasAtRoot = std::exchange(m_atRoot, 0) != 0; // and stays so: after a node with dates it is below the root
    return m_p_History_ChildNodeRef != nullptr ? s_trace.fail("ERROR : unexpected here...") : S_OK;
}

long QueltEeGenExprToEeMMExprVisitor::findHistoryChild(QueltInObject* element, QueltEeNode*& child) {
    child = findChildNode(element);
    return child == nullptr ? s_trace.fail("ERROR : unexpected, child group op is not NodeRef ?") : S_OK;
}

long QueltEeGenExprToEeMMExprVisitor::takeHistoryChild(QueltEeNode& child) {
    const long result = child.acceptVisitor(*this);
    return result < 0 ? s_trace.fail("ERROR : acceptVisitor FAILED.", result) : result;
}

template <class Group, class Join>
long QueltEeGenExprToEeMMExprVisitor::collectHistory(Group& node, const Join& join) {
    auto* const dates = new Group;
    QueltEeNodeRef* const datesRef = m_pBelongings->keep(dates->getNodeRef());
    long result = S_OK;
    auto children = node.getChildren().cBegin();
    while (QueltInObject* const element = children.GetGoToNext()) {
        QueltEeNode* child = nullptr;
        result = findHistoryChild(element, child);
        if (result < 0) {
            return result;
        }
        QueltEeNodeRef* const previousEV = std::exchange(m_p_EV_ChildNodeRef, nullptr);
        result = takeHistoryChild(*child);
        if (result < 0) {
            return result;
        }
        join(previousEV);
        if (QueltEeNodeRef* const date = std::exchange(m_p_History_ChildNodeRef, nullptr)) {
            m_pBelongings->handOver(date);
            dates->getChildren().PutBack(*date);
        }
    }
    m_p_History_ChildNodeRef = datesRef;
    dates->becomeIfSingleChild();
    return result;
}

void QueltEeGenExprToEeMMExprVisitor::joinForAnd(QueltEeNodeRef* previousEV, QueltEeGroupOp*& created) {
    QueltEeNodeRef* const produced = m_p_EV_ChildNodeRef;
    s_trace.writeMessage("m_p_EV_ChildNodeRef : ", static_cast<const void*>(produced),
                         ", back-up : ", static_cast<const void*>(previousEV));
    if (produced == nullptr || previousEV == nullptr || produced == previousEV) {
        s_trace.writeMessage("Reassigning back up to EV part");
        if (previousEV != nullptr) {
            m_p_EV_ChildNodeRef = previousEV;
        }
        return;
    }
    QueltEeGroupOp* joined = QueltEeAndOp::cast(previousEV->getNode());
    if (joined != nullptr) {
        s_trace.writeMessage("Using old AND to join 2 EV sons of And on pAndOp");
        joined = &m_pBelongings->makeExtensible(*joined);
    } else {
        s_trace.writeMessage("Creating a new AND to join 2 EV sons of And");
        joined = created = &m_pBelongings->makeGroup(true);
        m_pBelongings->join(*joined, *previousEV->getNode());
    }
    m_pBelongings->join(*joined, *produced->getNode());
    m_p_EV_ChildNodeRef = joined->getNodeRef();
}

void QueltEeGenExprToEeMMExprVisitor::joinForOr(QueltEeNodeRef* previousEV) {
    // What a child produces counts only when an earlier part is there to be joined with.
    if (previousEV != nullptr && m_p_EV_ChildNodeRef != nullptr && m_p_EV_ChildNodeRef != previousEV) {
        QueltEeGroupOp& joined = m_pBelongings->makeGroup(false);
        m_pBelongings->join(joined, *previousEV->getNode());
        m_pBelongings->join(joined, *m_p_EV_ChildNodeRef->getNode());
        previousEV = joined.getNodeRef();
    }
    m_p_EV_ChildNodeRef = previousEV;
}

long QueltEeGenExprToEeMMExprVisitor::fileHistoryWithEvolutionVariant() {
    const long result = fileDatesAtRoot();
    return result < 0 || m_p_EV_ChildNodeRef == nullptr
               ? result
               : analyzeEvolutionVariant(*m_p_EV_ChildNodeRef->getNode());
}

long QueltEeGenExprToEeMMExprVisitor::fileDatesAtRoot() {
    return m_p_History_ChildNodeRef == nullptr ? s_trace.fail("ERROR: No DateNodeRef but in History part")
                                               : fileHistoryAtRoot();
}
