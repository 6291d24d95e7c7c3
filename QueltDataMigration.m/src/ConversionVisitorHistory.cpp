// Operators with dates below: the dates are set apart from the evolution/variant part.

#include "ConversionVisitorParts.h"

#include "expression/QueltEeMultiModelExpression.h"
#include "expression/QueltEeOperators.h"

#include <utility>

using quelt::conversion::findChildNode;
using quelt::conversion::s_trace;

namespace {

/// The dates of one AND, or OR. A single one stands for itself, as it would after becomeIfSingleChild.
template <class Group>
class CollectedDates {
public:
    /// What is collected stays with `belongings`.
    explicit CollectedDates(quelt::Belongings& belongings) noexcept : m_belongings(belongings) {}

    void add(QueltEeNodeRef& date) {
        if (m_pFirst == nullptr) {
            m_pFirst = &date;
            return;
        }
        if (m_pGroup == nullptr) {
            makeGroup();
            append(*m_pFirst);
        }
        append(date);
    }
    /// The only date, or the group over them.
    [[nodiscard]] QueltEeNodeRef* reference() {
        if (m_pGroup == nullptr && m_pFirst == nullptr) {
            makeGroup();
        }
        return m_pGroup != nullptr ? m_pGroup->getNodeRef() : m_pFirst;
    }

private:
    void makeGroup() {
        m_pGroup = new Group;
        m_belongings.keep(m_pGroup->getNodeRef());
    }
    void append(QueltEeNodeRef& date) {
        m_belongings.handOver(&date);
        m_pGroup->getChildren().PutBack(date);
    }

    quelt::Belongings& m_belongings;
    QueltEeNodeRef* m_pFirst = nullptr;
    Group* m_pGroup = nullptr;
};

} // namespace

long QueltEeGenExprToEeMMExprVisitor::Steps::convertHistory(QueltEeAndOp& node) {
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
    if (result < 0 || m_visitor.m_p_EV_ChildNodeRef == nullptr) {
        return result;
    }
    s_trace.writeMessage("m_p_EV_ChildNodeRef not null, analyzing to find model");
    return analyzeEvolutionVariant(*m_visitor.m_p_EV_ChildNodeRef->getNode(), createdAnd);
}

long QueltEeGenExprToEeMMExprVisitor::Steps::convertHistory(QueltEeOrOp& node) {
    bool wasAtRoot = false;
    long result = enterHistory(wasAtRoot);
    if (result < 0) {
        return result;
    }
    result = collectHistory(node, [&](QueltEeNodeRef* previousEV) { joinForOr(previousEV); });
    return result < 0 || !wasAtRoot ? result : fileHistoryWithEvolutionVariant();
}

long QueltEeGenExprToEeMMExprVisitor::Steps::convertHistory(QueltEeNotOp& node) {
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
    if (result < 0 || m_visitor.m_p_History_ChildNodeRef == nullptr) {
        return result;
    }
    auto* const negation = new QueltEeNotOp(0);
    m_visitor.m_pBelongings->handOver(m_visitor.m_p_History_ChildNodeRef);
    negation->setChildRef(*m_visitor.m_p_History_ChildNodeRef);
    m_visitor.m_p_History_ChildNodeRef = m_visitor.m_pBelongings->keep(negation->getNodeRef());
    return wasAtRoot ? fileHistoryWithEvolutionVariant() : result;
}

long QueltEeGenExprToEeMMExprVisitor::Steps::enterHistory(bool& wasAtRoot) {
    // It stays so: after a node with dates it is below the root.
    wasAtRoot = std::exchange(m_visitor.m_atRoot, 0) != 0;
    return m_visitor.m_p_History_ChildNodeRef != nullptr ? s_trace.fail("ERROR : unexpected here...") : S_OK;
}

long QueltEeGenExprToEeMMExprVisitor::Steps::findHistoryChild(QueltInObject* element, QueltEeNode*& child) {
    child = findChildNode(element);
    return child == nullptr ? s_trace.fail("ERROR : unexpected, child group op is not NodeRef ?") : S_OK;
}

long QueltEeGenExprToEeMMExprVisitor::Steps::takeHistoryChild(QueltEeNode& child) {
    const long result = child.acceptVisitor(m_visitor);
    return result < 0 ? s_trace.fail("ERROR : acceptVisitor FAILED.", result) : result;
}

template <class Group, class Join>
long QueltEeGenExprToEeMMExprVisitor::Steps::collectHistory(Group& node, const Join& join) {
    CollectedDates<Group> dates(*m_visitor.m_pBelongings);
    long result = S_OK;
    auto children = node.getChildren().cBegin();
    while (QueltInObject* const element = children.GetGoToNext()) {
        QueltEeNode* child = nullptr;
        result = findHistoryChild(element, child);
        if (result < 0) {
            return result;
        }
        QueltEeNodeRef* const previousEV = std::exchange(m_visitor.m_p_EV_ChildNodeRef, nullptr);
        result = takeHistoryChild(*child);
        if (result < 0) {
            return result;
        }
        join(previousEV);
        if (QueltEeNodeRef* const date = std::exchange(m_visitor.m_p_History_ChildNodeRef, nullptr)) {
            dates.add(*date);
        }
    }
    m_visitor.m_p_History_ChildNodeRef = dates.reference();
    return result;
}

void QueltEeGenExprToEeMMExprVisitor::Steps::joinForAnd(QueltEeNodeRef* previousEV,
                                                        QueltEeGroupOp*& created) {
    QueltEeNodeRef* const produced = m_visitor.m_p_EV_ChildNodeRef;
    s_trace.writeMessage("m_p_EV_ChildNodeRef : ", static_cast<const void*>(produced),
                         ", back-up : ", static_cast<const void*>(previousEV));
    if (produced == nullptr || previousEV == nullptr || produced == previousEV) {
        s_trace.writeMessage("Reassigning back up to EV part");
        if (previousEV != nullptr) {
            m_visitor.m_p_EV_ChildNodeRef = previousEV;
        }
        return;
    }
    QueltEeGroupOp* joined = QueltEeAndOp::cast(previousEV->getNode());
    if (joined != nullptr) {
        s_trace.writeMessage("Using old AND to join 2 EV sons of And on pAndOp");
        joined = &m_visitor.m_pBelongings->makeExtensible(*joined);
    } else {
        s_trace.writeMessage("Creating a new AND to join 2 EV sons of And");
        joined = created = &m_visitor.m_pBelongings->makeGroup(true);
        m_visitor.m_pBelongings->join(*joined, *previousEV->getNode());
    }
    m_visitor.m_pBelongings->join(*joined, *produced->getNode());
    m_visitor.m_p_EV_ChildNodeRef = joined->getNodeRef();
}

void QueltEeGenExprToEeMMExprVisitor::Steps::joinForOr(QueltEeNodeRef* previousEV) {
    // What a child produces counts only when an earlier part is there to be joined with.
    if (previousEV != nullptr && m_visitor.m_p_EV_ChildNodeRef != nullptr &&
        m_visitor.m_p_EV_ChildNodeRef != previousEV) {
        QueltEeGroupOp& joined = m_visitor.m_pBelongings->makeGroup(false);
        m_visitor.m_pBelongings->join(joined, *previousEV->getNode());
        m_visitor.m_pBelongings->join(joined, *m_visitor.m_p_EV_ChildNodeRef->getNode());
        previousEV = joined.getNodeRef();
    }
    m_visitor.m_p_EV_ChildNodeRef = previousEV;
}

long QueltEeGenExprToEeMMExprVisitor::Steps::fileHistoryWithEvolutionVariant() {
    const long result = fileDatesAtRoot();
    return result < 0 || m_visitor.m_p_EV_ChildNodeRef == nullptr
               ? result
               : analyzeEvolutionVariant(*m_visitor.m_p_EV_ChildNodeRef->getNode());
}

long QueltEeGenExprToEeMMExprVisitor::Steps::fileDatesAtRoot() {
    return m_visitor.m_p_History_ChildNodeRef == nullptr
               ? s_trace.fail("ERROR: No DateNodeRef but in History part")
               : fileHistoryAtRoot();
}
