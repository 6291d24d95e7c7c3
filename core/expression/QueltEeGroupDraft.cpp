#include "expression/QueltEeGroupDraft.h"

#include <utility>

namespace quelt {

namespace {

/// Brings both together in `numbers`, in any order.
void merge(std::vector<std::uint32_t>& numbers, std::vector<std::uint32_t>& others) {
    if (others.size() > numbers.size()) {
        numbers.swap(others);
    }
    numbers.insert(numbers.end(), others.begin(), others.end());
}

} // namespace

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
    const Rewritten& child = children[number].what;
    if (child.isFixed) {
        ++fixedCount;
    } else {
        loose.push_back(number);
    }
    if (child.draft != nullptr || child.above.count() > 0) {
        unsettled.push_back(number);
    }
}

void GroupDraft::appendAll(DraftChildren& children, GroupDraft& other) {
    if (other.first != DraftChildren::s_none) {
        (last != DraftChildren::s_none ? children[last].next : first) = other.first;
        last = other.last;
    }
    count += other.count;
    fixedCount += other.fixedCount;
    merge(unsettled, other.unsettled);
    merge(loose, other.loose);
    criteria.merge(std::move(other.criteria));
    hasJoined = true;
}

} // namespace quelt
