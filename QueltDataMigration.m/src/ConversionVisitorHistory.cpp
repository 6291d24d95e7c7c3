// Operators with dates below: the dates are set apart from the evolution/variant part.

#include "ConversionVisitorParts.h"

#include "expression/QueltEeMultiModelExpression.h"
#include "expression/QueltEeOperators.h"

using quelt::conversion::findChildNode;
using quelt::conversion::s_trace;

void QueltEeGenExprToEeMMExprVisitor::addPendingHistoryTo(QueltEeGroupOp& dates) {
    if (m_p_History_ChildNodeRef == nullptr) {
        return;
    }
    m_pBelongings->handOver(m_p_History_ChildNodeRef);
    dates.getChildren().PutBack(*m_p_History_ChildNodeRef);
    m_p_History_ChildNodeRef = nullptr;
}

long QueltEeGenExprToEeMMExprVisitor::collectHistoryChild(QueltInObject* child, QueltEeNodeRef*& previousEV) {
    QueltEeNode* const node = findChildNode(child);
    if (node == nullptr) {
        return s_trace.fail("ERROR : unexpected, child group op is not NodeRef ?");
    }
    previousEV = m_p_EV_ChildNodeRef;
    m_p_EV_ChildNodeRef = nullptr;
    const long result = node->acceptVisitor(*this);
    return result < 0 ? s_trace.fail("ERROR : acceptVisitor FAILED.", result) : result;
}

long QueltEeGenExprToEeMMExprVisitor::analyzeCollectedEvolutionVariant() {
    m_inEVPart = 1;
    const long result = analyzePureEVPart(*m_p_EV_ChildNodeRef->getNode(), 1);
    if (result >= 0) {
        m_inEVPart = 0;
    }
    return result;
}

long QueltEeGenExprToEeMMExprVisitor::fileDatesAtRoot() {
    return m_p_History_ChildNodeRef == nullptr ? s_trace.fail("ERROR: No DateNodeRef but in History part")
                                               : fileHistoryAtRoot();
}

long QueltEeGenExprToEeMMExprVisitor::convertHistory(QueltEeAndOp& node) {
    const bool wasAtRoot = m_atRoot != 0;
    m_atRoot = 0; // and stays so: after a node with dates the visitor is below the root
    if (m_p_History_ChildNodeRef != nullptr) {
        return s_trace.fail("ERROR : unexpected here...");
    }
    auto* const dates = new QueltEeAndOp;
    QueltEeNodeRef* const datesRef = m_pBelongings->keep(dates->getNodeRef());
    QueltEeGroupOp* createdAnd = nullptr;
    long result = S_OK;
    auto children = node.getChildren().cBegin();
    while (QueltInObject* const child = children.GetGoToNext()) {
        QueltEeNodeRef* previousEV = nullptr;
        result = collectHistoryChild(child, previousEV);
        if (result < 0) {
            return result;
        }
        joinForAnd(previousEV, createdAnd);
        addPendingHistoryTo(*dates);
    }
    m_p_History_ChildNodeRef = datesRef;
    dates->becomeIfSingleChild();
    if (!wasAtRoot) {
        return result;
    }
    s_trace.writeMessage("At Root");
    result = fileDatesAtRoot();
    if (result < 0 || m_p_EV_ChildNodeRef == nullptr) {
        return result;
    }
    s_trace.writeMessage("m_p_EV_ChildNodeRef not null, analyzing to find model");
    result = analyzeCollectedEvolutionVariant();
    if (createdAnd != nullptr) {
        s_trace.inform("Deleting the pAndOp that was not deleted so far");
        m_p_EV_ChildNodeRef = nullptr; // it is the group's
        createdAnd->removeChildren();
        m_pBelongings->destroyGroup(*createdAnd);
    }
    return result < 0 ? s_trace.fail("ERROR : analyzePureEVPart Failed", result) : result;
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

long QueltEeGenExprToEeMMExprVisitor::convertHistory(QueltEeOrOp& node) {
    const bool wasAtRoot = m_atRoot != 0;
    m_atRoot = 0; // and stays so, as for AND
    if (m_p_History_ChildNodeRef != nullptr) {
        return s_trace.fail("ERROR : unexpected here...");
    }
    auto* const dates = new QueltEeOrOp;
    QueltEeNodeRef* const datesRef = m_pBelongings->keep(dates->getNodeRef());
    long result = S_OK;
    auto children = node.getChildren().cBegin();
    while (QueltInObject* const child = children.GetGoToNext()) {
        QueltEeNodeRef* previousEV = nullptr;
        result = collectHistoryChild(child, previousEV);
        if (result < 0) {
            return result;
        }
        joinForOr(previousEV);
        addPendingHistoryTo(*dates);
    }
    m_p_History_ChildNodeRef = datesRef;
    dates->becomeIfSingleChild();
    if (!wasAtRoot) {
        return result;
    }
    result = fileDatesAtRoot();
    if (result < 0 || m_p_EV_ChildNodeRef == nullptr) {
        return result;
    }
    result = analyzeCollectedEvolutionVariant();
    return result < 0 ? s_trace.fail("ERROR : analyzePureEVPart Failed", result) : result;
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

long QueltEeGenExprToEeMMExprVisitor::convertHistory(QueltEeNotOp& node) {
    s_trace.inform("classification is history");
    const bool wasAtRoot = m_atRoot != 0;
    m_atRoot = 0; // and stays so, as for AND
    if (m_p_History_ChildNodeRef != nullptr) {
        return s_trace.fail("ERROR : unexpected here...");
    }
    const QueltEeNodeRef* const child = node.getChildRef();
    QueltEeNode* const childNode = child != nullptr ? child->getNode() : nullptr;
    if (childNode == nullptr) {
        return s_trace.fail("ERROR : unexpected, child group op is not NodeRef ?");
    }
    long result = childNode->acceptVisitor(*this);
    if (result < 0) {
        return s_trace.fail("ERROR : acceptVisitor FAILED.", result);
    }
    if (m_p_History_ChildNodeRef == nullptr) {
        return result;
    }
    auto* const negation = new QueltEeNotOp(0);
    m_pBelongings->handOver(m_p_History_ChildNodeRef);
    negation->setChildRef(*m_p_History_ChildNodeRef);
    m_p_History_ChildNodeRef = m_pBelongings->keep(negation->getNodeRef());
    if (!wasAtRoot) {
        return result;
    }
    result = fileHistoryAtRoot();
    if (result < 0 || m_p_EV_ChildNodeRef == nullptr) {
        return result;
    }
    result = analyzeCollectedEvolutionVariant();
    return result < 0 ? s_trace.fail("ERROR : analyzePureEVPart Failed", result) : result;
}
