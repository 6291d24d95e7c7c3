#include "expression/QueltEeGroupDraft.h"

namespace quelt {

Rewritten Rewritten::constant(bool value, QueltEeNodeRef* reference) {
    Rewritten rewritten;
    rewritten.reference = reference;
    rewritten.isConstant = true;
    rewritten.value = value;
    return rewritten;
}

Rewritten Rewritten::node(QueltEeNodeRef& reference, bool isFixed) {
    Rewritten rewritten;
    rewritten.reference = &reference;
    rewritten.isFixed = isFixed;
    return rewritten;
}

Rewritten Rewritten::group(std::unique_ptr<GroupDraft> draft) {
    Rewritten rewritten;
    rewritten.isFixed = draft->fixedCount > 0;
    rewritten.draft = std::move(draft);
    return rewritten;
}

void GroupDraft::append(DraftChildren& children, std::uint32_t number) {
    (last != DraftChildren::s_none ? children[last].next : first) = number;
    last = number;
    ++count;
    fixedCount += children[number].what.isFixed ? 1 : 0;
}

void GroupDraft::appendAll(DraftChildren& children, GroupDraft& other) {
    if (other.first != DraftChildren::s_none) {
        (last != DraftChildren::s_none ? children[last].next : first) = other.first;
        last = other.last;
    }
    count += other.count;
    fixedCount += other.fixedCount;
    criteria.merge(std::move(other.criteria));
}

} // namespace quelt
