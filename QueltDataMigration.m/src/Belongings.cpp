#include "Belongings.h"

#include "expression/QueltEeOperators.h"

#include <algorithm>

namespace quelt {

Belongings::~Belongings() {
    for (QueltEeNodeRef* const group : m_groups) {
        delete group;
    }
    for (QueltInObject* const object : m_objects) {
        delete object;
    }
}

void Belongings::add(QueltInObject* object) {
    if (object != nullptr) {
        m_objects.push_back(object);
    }
}

bool Belongings::handOver(const QueltInObject* object) {
    for (std::uint32_t position = m_objects.size(); position > 0; --position) {
        if (m_objects[position - 1] == object) {
            m_objects.erase(position - 1);
            return true;
        }
    }
    return false;
}

void Belongings::destroy(QueltInObject* object) {
    if (handOver(object)) {
        delete object;
    }
}

void Belongings::noteFiled(const QueltInObject& output) {
    handOver(&output);
    if (!isFiled(&output)) {
        m_filed.push_back(&output);
    }
}

bool Belongings::isFiled(const QueltInObject* output) const {
    return std::find(m_filed.begin(), m_filed.end(), output) != m_filed.end();
}

void Belongings::keepUnfiled(QueltInObject* output) {
    if (!isFiled(output)) {
        handOver(output); // another copy of the visitor may have given it up before
        add(output);
    }
}

void Belongings::destroyUnfiled(QueltInObject* output) {
    if (!isFiled(output)) {
        handOver(output);
        delete output;
    }
}

void Belongings::destroyGroup(QueltEeGroupOp& group) {
    QueltEeNodeRef* const reference = group.getNodeRef();
    const auto* const found = std::ranges::find(m_groups, reference);
    if (found == m_groups.end()) {
        return;
    }
    m_groups.erase(static_cast<std::uint32_t>(found - m_groups.begin()));
    delete reference;
}

void Belongings::join(QueltEeGroupOp& group, QueltEeNode& node) {
    QueltEeNodeRef* const alias = QueltEeNodeRef::makeAlias(node);
    QueltInLinkList& children = group.getChildren();
    if (children.Set(static_cast<unsigned int>(children.GetLength()), *alias) < 0) {
        delete alias;
    }
}

QueltEeGroupOp& Belongings::makeGroup(bool isAnd) {
    QueltEeGroupOp* const group = isAnd ? static_cast<QueltEeGroupOp*>(new QueltEeAndOp)
                                        : static_cast<QueltEeGroupOp*>(new QueltEeOrOp);
    QueltEeNodeRef* const reference = group->getNodeRef();
    static_cast<void>(reference->takeFor(&m_groupHolder)); // it stands alone, so that it is taken itself
    m_groups.push_back(reference);
    return *group;
}

QueltEeGroupOp& Belongings::makeExtensible(QueltEeGroupOp& group) {
    if (group.getNodeRef()->getHolder() == &m_groupHolder) {
        return group;
    }
    QueltEeGroupOp& copy = makeGroup(group.isAnd());
    for (QueltInObject* const element : group.getChildren().elements()) {
        const QueltEeNodeRef* const reference = QueltEeNodeRef::cast(element);
        if (reference != nullptr && reference->getNode() != nullptr) {
            join(copy, *reference->getNode());
        }
    }
    return copy;
}

} // namespace quelt
