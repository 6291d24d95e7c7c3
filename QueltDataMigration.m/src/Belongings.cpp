#include "Belongings.h"

#include "expression/QueltEeOperators.h"

namespace quelt {

Belongings::~Belongings() {
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

void Belongings::remove(QueltInObject* object) {
    if (handOver(object)) {
        delete object;
    }
}

void Belongings::removeGroup(QueltEeGroupOp& group) {
    m_groups.erase(&group);
    remove(group.getNodeRef());
}

QueltEeGroupOp& Belongings::makeGroup(bool isAnd) {
    QueltEeGroupOp* const group = isAnd ? static_cast<QueltEeGroupOp*>(new QueltEeAndOp)
                                        : static_cast<QueltEeGroupOp*>(new QueltEeOrOp);
    add(group->getNodeRef()->takeFor(nullptr));
    m_groups.insert(group);
    return *group;
}

QueltEeGroupOp& Belongings::makeExtensible(QueltEeGroupOp& group) {
    if (m_groups.contains(&group)) {
        return group;
    }
    QueltEeGroupOp& copy = makeGroup(group.isAnd());
    for (QueltInObject* const element : group.getChildren().elements()) {
        const QueltEeNodeRef* const reference = QueltEeNodeRef::cast(element);
        if (reference != nullptr && reference->getNode() != nullptr) {
            copy.addChild(*reference->getNode());
        }
    }
    return copy;
}

} // namespace quelt
