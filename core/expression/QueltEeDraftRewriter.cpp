#include "expression/QueltEeDraftRewriter.h"

#include <optional>
#include <utility>

namespace quelt {

namespace {

QueltEeNodeRef* makeConstant(bool value) {
    QueltEeNode* const node = value ? static_cast<QueltEeNode*>(new QueltEeTrue) : new QueltEeFalse;
    return node->getNodeRef();
}

QueltEeNodeRef* makeSingle(QueltEeSingleOp* single, QueltEeNodeRef& child) {
    single->setChildRef(child);
    return single->getNodeRef();
}

/// True when nothing has come of it but what `reference` holds.
bool isStill(const Rewritten& rewritten, const QueltEeNodeRef& reference) {
    return (rewritten.draft != nullptr ? rewritten.draft->origin : rewritten.reference) == &reference;
}

void turnInDomain(const std::vector<QueltEeVarEff*>& effectivities, bool isInDomain) {
    for (QueltEeVarEff* const effectivity : effectivities) {
        if (isInDomain && effectivity != nullptr) {
            effectivity->opNotDom();
        }
    }
}

} // namespace

DraftRewriter::DraftRewriter(const QueltEeNodeRef& root, std::size_t size)
    : m_root(root), m_budget(s_leastBudget + s_budgetPerNode * static_cast<JoiningBudget>(size)) {}

void DraftRewriter::deleteLeftOver() {
    for (QueltEeNodeRef* const husk : std::exchange(m_husks, {})) {
        delete husk;
    }
}

void DraftRewriter::takeOut(NegationChain& chain) {
    QueltEeNodeRef* const target = chain.target;
    if (!target->ownsNode()) {
        chain.target = QueltEeNodeRef::makeAlias(*target->getNode());
    }
    chain.last->removeChildren();
    leaveOver(*std::exchange(chain.top, nullptr));
}

Rewritten DraftRewriter::negateFixed(NegationChain chain, Rewritten below) {
    const bool isAsBefore = chain.top != nullptr && below.above.count() == 0 && isStill(below, *chain.target);
    below.above = below.above.with(chain.negations);
    if (isAsBefore) {
        below.chain = chain;
        return below;
    }
    if (chain.top != nullptr) {
        takeOut(chain);
    }
    if (below.chain.top != nullptr) {
        takeOutOfChain(below);
    }
    return below;
}

void DraftRewriter::takeOutOfChain(Rewritten& rewritten) {
    const bool isTarget = rewritten.reference == rewritten.chain.target;
    takeOut(rewritten.chain);
    if (isTarget) {
        rewritten.reference = rewritten.chain.target;
    }
}

void DraftRewriter::absorb(GroupDraft& draft, Rewritten child) {
    if (child.isConstant) {
        absorbConstant(draft, child.value, child.reference);
    } else if (child.draft != nullptr && child.draft->isAnd == draft.isAnd && child.above.count() == 0) {
        absorbGroup(draft, *child.draft);
    } else {
        const std::uint32_t number = m_children.add(std::move(child));
        draft.append(m_children, number);
        enterCriterion(draft, number);
    }
}

void DraftRewriter::absorbConstant(GroupDraft& draft, bool value, QueltEeNodeRef* reference) {
    const bool isStrong = value == draft.strongValue();
    draft.isDecided = draft.isDecided || isStrong;
    if (isStrong && draft.constant == nullptr) {
        draft.constant = reference;
    } else if (reference != nullptr) {
        leaveOver(*reference);
    }
}

void DraftRewriter::absorbGroup(GroupDraft& draft, GroupDraft& inner) {
    empty(inner);
    draft.appendAll(m_children, inner);
    if (inner.isDecided) {
        absorbConstant(draft, draft.strongValue(), inner.constant);
    }
}

void DraftRewriter::enterCriterion(GroupDraft& draft, std::uint32_t number) {
    const Rewritten& child = m_children[number].what;
    if (child.isFixed || child.draft != nullptr) {
        return;
    }
    const QueltEeNode* const node = child.reference->getNode();
    if (const QueltEeVarEffLeaf* const leaf = QueltEeVarEffLeaf::cast(node)) {
        draft.criteria.add(CriterionKey(*leaf->getVarEff()), number);
    } else if (const QueltEeEffLeaf* const effLeaf = QueltEeEffLeaf::cast(node)) {
        draft.criteria.add(CriterionKey(*effLeaf), number);
    }
}

Rewritten DraftRewriter::close(std::unique_ptr<GroupDraft> draft, bool isInDomain) {
    if (!draft->isDecided) {
        draft->criteria.joinNew(
            [&](std::vector<std::uint32_t>& numbers) { join(*draft, numbers, isInDomain); });
    }
    if (draft->isDecided) {
        dropAllButFixed(*draft);
    }
    if (draft->count == 0) {
        empty(*draft);
        return Rewritten::constant(draft->isDecided ? draft->strongValue() : draft->isAnd, draft->constant);
    }
    if (draft->count == 1 && !draft->isDecided) {
        empty(*draft);
        return takeOnly(*draft);
    }
    settle(*draft);
    if (!isAsBefore(*draft)) {
        empty(*draft);
    }
    return Rewritten::group(std::move(draft));
}

Rewritten DraftRewriter::takeOnly(const GroupDraft& draft) {
    std::uint32_t only = DraftChildren::s_none;
    draft.forEach(m_children, [&only](std::uint32_t number, const DraftChildren::Child&) { only = number; });
    return std::move(m_children[only].what);
}

/// Combines leaves that depend on the same.
void DraftRewriter::join(GroupDraft& draft, std::vector<std::uint32_t>& numbers, bool isInDomain) {
    std::erase_if(numbers, [this](std::uint32_t number) { return m_children[number].isGone; });
    if (numbers.size() < 2) {
        return;
    }
    if (QueltEeEffLeaf::isObjectOfThisType(nodeOf(numbers.front())) != 0) {
        joinEffLeaves(draft, numbers);
    } else {
        joinVarEffs(draft, numbers, isInDomain);
    }
    std::erase_if(numbers, [this](std::uint32_t number) { return m_children[number].isGone; });
}

/// Keeps the first leaf of each sense; both together decide the group.
void DraftRewriter::joinEffLeaves(GroupDraft& draft, const std::vector<std::uint32_t>& numbers) {
    bool isThere[2] = {false, false};
    for (const std::uint32_t number : numbers) {
        const auto* const leaf = static_cast<const QueltEeEffLeaf*>(&nodeOf(number));
        if (std::exchange(isThere[leaf->isNegated() != 0 ? 1 : 0], true)) {
            drop(draft, number);
        }
    }
    draft.isDecided = draft.isDecided || (isThere[0] && isThere[1]);
}

void DraftRewriter::joinVarEffs(GroupDraft& draft, const std::vector<std::uint32_t>& numbers,
                                bool isInDomain) {
    std::vector<QueltEeVarEff*> effectivities;
    effectivities.reserve(numbers.size());
    for (const std::uint32_t number : numbers) {
        effectivities.push_back(static_cast<const QueltEeVarEffLeaf*>(&nodeOf(number))->getVarEff());
    }
    turnInDomain(effectivities, isInDomain);
    const Joining joining = draft.isAnd != isInDomain ? Joining::all : Joining::atLeastOne;
    const std::vector<bool> changed = joinEffectivities(effectivities, joining, m_budget);
    turnInDomain(effectivities, isInDomain);
    for (std::size_t position = 0; position < numbers.size(); ++position) {
        QueltEeVarEff* const effectivity = effectivities[position];
        const std::optional<bool> constant =
            effectivity != nullptr && changed[position] ? constantOf(*effectivity, isInDomain) : std::nullopt;
        if (effectivity == nullptr || constant) {
            drop(draft, numbers[position]);
        }
        draft.isDecided = draft.isDecided || constant == draft.strongValue();
    }
}

void DraftRewriter::dropAllButFixed(GroupDraft& draft) {
    for (const std::uint32_t number : std::exchange(draft.loose, {})) {
        if (!m_children[number].isGone) {
            drop(draft, number);
        }
    }
}

/// Makes all children references. A group that has come that far keeps at least two of them.
void DraftRewriter::settle(GroupDraft& draft) {
    for (const std::uint32_t number : std::exchange(draft.unsettled, {})) {
        DraftChildren::Child& child = m_children[number];
        if (!child.isGone) {
            child.what = Rewritten::node(*materialize(child.what), child.what.isFixed);
        }
    }
}

/// Takes a child without nodes that must stay out of the group.
void DraftRewriter::drop(GroupDraft& draft, std::uint32_t number) {
    DraftChildren::Child& child = m_children[number];
    child.isGone = true;
    --draft.count;
    const Rewritten dropped = std::move(child.what);
    if (dropped.draft == nullptr) {
        leaveOver(*dropped.reference);
    } else if (dropped.draft->origin != nullptr) {
        leaveOver(*dropped.draft->origin);
    } else {
        dropped.draft->forEach(m_children,
                               [this](std::uint32_t /*number*/, const DraftChildren::Child& inner) {
                                   leaveOver(*inner.what.reference);
                               });
    }
}

/// True when the group that the draft was made from says the same.
bool DraftRewriter::isAsBefore(const GroupDraft& draft) {
    const auto* const group =
        draft.origin != nullptr ? QueltEeGroupOp::cast(draft.origin->getNode()) : nullptr;
    if (group == nullptr || group->isAnd() != draft.isAnd || draft.hasJoined) {
        return false;
    }
    unsigned int position = 0;
    bool isSame = !draft.isDecided || group->getChildren().Get(position++) == draft.constant;
    draft.forEach(m_children, [&](std::uint32_t /*number*/, const DraftChildren::Child& child) {
        isSame = group->getChildren().Get(position++) == child.what.reference && isSame;
    });
    return isSame && group->getChildren().Get(position) == nullptr;
}

/// Takes the children out of the group that the draft was made from, which is left over then.
void DraftRewriter::empty(GroupDraft& draft) {
    if (draft.origin == nullptr) {
        return;
    }
    QueltInLinkList& children = static_cast<QueltEeGroupOp*>(draft.origin->getNode())->getChildren();
    while (children.PopBack() != nullptr) {
    }
    leaveOver(*std::exchange(draft.origin, nullptr));
}

QueltEeNodeRef* DraftRewriter::materialize(Rewritten& rewritten) {
    if (rewritten.chain.top != nullptr && isStill(rewritten, *rewritten.chain.target)) {
        return rewritten.chain.top;
    }
    if (rewritten.chain.top != nullptr) {
        takeOutOfChain(rewritten);
    }
    QueltEeNodeRef* reference = withoutNegations(rewritten);
    if (rewritten.above.negated) {
        reference = makeSingle(new QueltEeNotOp(1), *reference);
    }
    if (rewritten.above.domainNegated) {
        reference = makeSingle(new QueltEeNotDomainOp, *reference);
    }
    return reference;
}

QueltEeNodeRef* DraftRewriter::withoutNegations(const Rewritten& rewritten) {
    if (rewritten.isConstant) {
        return rewritten.reference != nullptr ? rewritten.reference : makeConstant(rewritten.value);
    }
    if (rewritten.draft == nullptr) {
        return rewritten.reference;
    }
    return rewritten.draft->origin != nullptr ? rewritten.draft->origin : makeGroup(*rewritten.draft);
}

QueltEeNodeRef* DraftRewriter::makeGroup(const GroupDraft& draft) {
    QueltEeGroupOp* const group =
        draft.isAnd ? static_cast<QueltEeGroupOp*>(new QueltEeAndOp) : new QueltEeOrOp;
    QueltInLinkList& children = group->getChildren();
    if (draft.isDecided) {
        children.PutBack(draft.constant != nullptr ? *draft.constant : *makeConstant(draft.strongValue()));
    }
    draft.forEach(m_children, [&children](std::uint32_t /*number*/, const DraftChildren::Child& child) {
        children.PutBack(*child.what.reference);
    });
    return group->getNodeRef();
}

void DraftRewriter::leaveOver(QueltEeNodeRef& reference) {
    m_changed = true;
    if (&reference != &m_root) {
        m_husks.push_back(&reference);
    }
}

} // namespace quelt
