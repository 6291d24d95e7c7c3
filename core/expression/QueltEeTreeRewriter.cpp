#include "expression/QueltEeTreeRewriter.h"

#include "expression/QueltEeFixedNodes.h"
#include "expression/QueltEeGroupDraft.h"

#include <optional>
#include <utility>

namespace quelt {

namespace {

/// What is least allowed for combining leaves; see JoiningBudget.
constexpr JoiningBudget s_leastBudget = 10'000'000;
constexpr JoiningBudget s_budgetPerNode = 64;

QueltEeNodeRef* asReference(QueltInObject* child) {
    return static_cast<QueltEeNodeRef*>(child); // lists of children accept nothing else
}

QueltEeNodeRef* makeConstant(bool value) {
    QueltEeNode* const node = value ? static_cast<QueltEeNode*>(new QueltEeTrue) : new QueltEeFalse;
    return node->getNodeRef();
}

QueltEeNodeRef* makeSingle(QueltEeSingleOp* single, QueltEeNodeRef& child) {
    single->setChildRef(child);
    return single->getNodeRef();
}

/// The constant that the effectivity is equivalent to, where it stands in the tree.
std::optional<bool> constantOf(QueltEeVarEff& effectivity, bool isInDomain) {
    if (isInDomain) {
        effectivity.opNotDom();
    }
    const bool isTrue = effectivity.isAllTrue() != 0;
    const bool isFalse = !isTrue && effectivity.isAllFalse() != 0;
    if (isInDomain) {
        effectivity.opNotDom();
    }
    return isTrue || isFalse ? std::optional(isTrue != isInDomain) : std::nullopt;
}

} // namespace

/// Rewrites one tree, from the leaves up. Nodes stay where they are as long as nothing changes around them.
/// Where something does, the group is emptied and made anew from its rewritten children, so that each
/// reference is moved a limited number of times whatever the shape of the tree.
///
/// Below a NOT-domain that stays where it is (see FixedNodes) leaves are combined "in the domain": what is
/// exact for them is what is exact for their opposites in the domain, with AND and OR exchanged.
class TreeRewriter {
public:
    explicit TreeRewriter(QueltEeNodeRef& root)
        : m_root(root), m_fixed(*root.getNode()),
          m_budget(s_leastBudget + s_budgetPerNode * static_cast<JoiningBudget>(m_fixed.size())) {}

    bool run() {
        if (m_fixed.isFixed(*m_root.getNode())) {
            return false;
        }
        descend(m_root, {}, false);
        while (!m_levels.empty()) {
            goOn();
        }
        putInPlace(takeResult());
        for (QueltEeNodeRef* const husk : m_husks) {
            delete husk;
        }
        return m_changed;
    }

private:
    /// Something whose inside is being rewritten: a group, or what operators that must stay stand above.
    struct Level {
        std::unique_ptr<GroupDraft> draft; // null for such operators
        const QueltEeGroupOp* group = nullptr;
        std::uint32_t next = 0;
        Negations negations; // on their way down to the leaves
        bool isInDomain = false;
        NegationChain chain;
    };

    // Walking

    /// Comes to a reference: either there is a result, or a level has been opened. NOT and NOT-domain are
    /// never handed down to nodes that must stay.
    void descend(QueltEeNodeRef& reference, Negations negations, bool isInDomain) {
        QueltEeNode& node = *reference.getNode();
        if (m_fixed.isFixed(node)) {
            m_result = Rewritten::node(reference, true);
        } else if (QueltEeSingleOp::isObjectOfThisType(node) != 0) {
            descendChain(chainFrom(reference), negations, isInDomain);
        } else if (const QueltEeGroupOp* const group = QueltEeGroupOp::cast(&node)) {
            Level level;
            level.draft = std::make_unique<GroupDraft>(group->isAnd() != negations.turnRound(), &reference);
            level.group = group;
            level.negations = negations;
            level.isInDomain = isInDomain;
            m_levels.push_back(std::move(level));
        } else {
            m_result = rewriteLeaf(reference, negations, isInDomain);
        }
    }

    void goOn() {
        Level& level = m_levels.back();
        if (level.draft == nullptr) {
            const Level closed = std::move(level);
            m_levels.pop_back();
            m_result = negateFixed(closed.chain, takeResult());
            return;
        }
        if (m_result) {
            absorb(*level.draft, takeResult());
        }
        if (QueltEeNodeRef* const child = asReference(level.group->getChildren().Get(level.next))) {
            ++level.next;
            descend(*child, level.negations, level.isInDomain);
            return;
        }
        Level closed = std::move(level);
        m_levels.pop_back();
        // Into a group of the same kind the children go as they are; they are combined with those there.
        const bool goesOn = !m_levels.empty() && m_levels.back().draft != nullptr &&
                            m_levels.back().draft->isAnd == closed.draft->isAnd;
        m_result = goesOn ? Rewritten::group(std::move(closed.draft))
                          : close(std::move(closed.draft), closed.isInDomain);
    }

    [[nodiscard]] Rewritten takeResult() { return *std::exchange(m_result, std::nullopt); }

    // NOT and NOT-domain

    [[nodiscard]] NegationChain chainFrom(QueltEeNodeRef& top) const {
        NegationChain chain{&top, &top, nullptr, {}, 0};
        while (QueltEeSingleOp* const single = QueltEeSingleOp::cast(chain.target->getNode())) {
            if (m_fixed.isFixed(*single)) {
                break;
            }
            const bool isDomain = QueltEeNotDomainOp::isObjectOfThisType(*single) != 0;
            chain.negations = chain.negations.with({!isDomain, isDomain});
            chain.last = single;
            chain.target = single->getChildRef();
            ++chain.length;
        }
        return chain;
    }

    void descendChain(NegationChain chain, Negations negations, bool isInDomain) {
        const bool staysAbove = m_fixed.holdsFixed(*chain.target->getNode());
        if (!staysAbove || chain.length > chain.negations.count()) {
            takeOut(chain);
        }
        if (!staysAbove) {
            descend(*chain.target, negations.with(chain.negations), isInDomain);
            return;
        }
        if (chain.negations.count() > 0) {
            Level level;
            level.chain = chain;
            m_levels.push_back(std::move(level));
        }
        descend(*chain.target, {}, isInDomain != chain.negations.domainNegated);
    }

    /// Takes the target out of the chain, which is left over then.
    void takeOut(NegationChain& chain) {
        QueltEeNodeRef* const target = chain.target;
        if (!target->ownsNode()) {
            chain.target = QueltEeNodeRef::makeAlias(*target->getNode());
        }
        chain.last->removeChildren();
        leaveOver(*std::exchange(chain.top, nullptr));
    }

    /// Puts negations above what nodes that must stay are in.
    Rewritten negateFixed(NegationChain chain, Rewritten below) {
        const bool isAsBefore =
            chain.top != nullptr && below.above.count() == 0 && isStill(below, *chain.target);
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

    void takeOutOfChain(Rewritten& rewritten) {
        const bool isTarget = rewritten.reference == rewritten.chain.target;
        takeOut(rewritten.chain);
        if (isTarget) {
            rewritten.reference = rewritten.chain.target;
        }
    }

    /// True when nothing has come of it but what `reference` holds.
    static bool isStill(const Rewritten& rewritten, const QueltEeNodeRef& reference) {
        return (rewritten.draft != nullptr ? rewritten.draft->origin : rewritten.reference) == &reference;
    }

    // Leaves

    Rewritten rewriteLeaf(QueltEeNodeRef& reference, Negations negations, bool isInDomain) {
        QueltEeNode& node = *reference.getNode();
        if (const QueltEeVarEffLeaf* const leaf = QueltEeVarEffLeaf::cast(&node)) {
            return rewriteVarEff(reference, *leaf->getVarEff(), negations, isInDomain);
        }
        if (QueltEeEffLeaf* const leaf = QueltEeEffLeaf::cast(&node)) {
            if (negations.turnRound()) {
                leaf->opNot();
                m_changed = true;
            }
            return Rewritten::node(reference, false);
        }
        const bool value = QueltEeTrue::isObjectOfThisType(node) != 0;
        if (!negations.turnRound()) {
            return Rewritten::constant(value, &reference);
        }
        leaveOver(reference);
        return Rewritten::constant(!value, nullptr);
    }

    Rewritten rewriteVarEff(QueltEeNodeRef& reference, QueltEeVarEff& effectivity, Negations negations,
                            bool isInDomain) {
        if (negations.negated) {
            effectivity.opNot();
        }
        if (negations.domainNegated) {
            effectivity.opNotDom();
        }
        m_changed = m_changed || negations.count() > 0;
        const std::optional<bool> constant = constantOf(effectivity, isInDomain);
        if (!constant) {
            return Rewritten::node(reference, false);
        }
        leaveOver(reference);
        return Rewritten::constant(*constant, nullptr);
    }

    // Groups

    void absorb(GroupDraft& draft, Rewritten child) {
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

    void absorbConstant(GroupDraft& draft, bool value, QueltEeNodeRef* reference) {
        const bool isStrong = value == draft.strongValue();
        draft.isDecided = draft.isDecided || isStrong;
        if (isStrong && draft.constant == nullptr) {
            draft.constant = reference;
        } else if (reference != nullptr) {
            leaveOver(*reference);
        }
    }

    void absorbGroup(GroupDraft& draft, GroupDraft& inner) {
        empty(inner);
        draft.appendAll(m_children, inner);
        if (inner.isDecided) {
            absorbConstant(draft, draft.strongValue(), inner.constant);
        }
    }

    void enterCriterion(GroupDraft& draft, std::uint32_t number) {
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

    /// Brings a group whose children are complete to its shortest form.
    Rewritten close(std::unique_ptr<GroupDraft> draft, bool isInDomain) {
        if (!draft->isDecided) {
            draft->criteria.joinNew(
                [&](std::vector<std::uint32_t>& numbers) { join(*draft, numbers, isInDomain); });
        }
        if (draft->isDecided) {
            dropAllButFixed(*draft);
        }
        if (draft->count == 0) {
            empty(*draft);
            return Rewritten::constant(draft->isDecided ? draft->strongValue() : draft->isAnd,
                                       draft->constant);
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

    Rewritten takeOnly(const GroupDraft& draft) {
        std::uint32_t only = DraftChildren::s_none;
        draft.forEach(m_children,
                      [&only](std::uint32_t number, const DraftChildren::Child&) { only = number; });
        return std::move(m_children[only].what);
    }

    /// Combines leaves that depend on the same.
    void join(GroupDraft& draft, std::vector<std::uint32_t>& numbers, bool isInDomain) {
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
    void joinEffLeaves(GroupDraft& draft, const std::vector<std::uint32_t>& numbers) {
        bool isThere[2] = {false, false};
        for (const std::uint32_t number : numbers) {
            const auto* const leaf = static_cast<const QueltEeEffLeaf*>(&nodeOf(number));
            if (std::exchange(isThere[leaf->isNegated() != 0 ? 1 : 0], true)) {
                drop(draft, number);
            }
        }
        draft.isDecided = draft.isDecided || (isThere[0] && isThere[1]);
    }

    void joinVarEffs(GroupDraft& draft, const std::vector<std::uint32_t>& numbers, bool isInDomain) {
        std::vector<QueltEeVarEff*> effectivities;
        for (const std::uint32_t number : numbers) {
            effectivities.push_back(static_cast<const QueltEeVarEffLeaf*>(&nodeOf(number))->getVarEff());
        }
        turnInDomain(effectivities, isInDomain);
        const Joining joining = draft.isAnd != isInDomain ? Joining::all : Joining::atLeastOne;
        const std::vector<bool> changed = joinEffectivities(effectivities, joining, m_budget);
        turnInDomain(effectivities, isInDomain);
        for (std::size_t position = 0; position < numbers.size(); ++position) {
            QueltEeVarEff* const effectivity = effectivities[position];
            const std::optional<bool> constant = effectivity != nullptr && changed[position]
                                                     ? constantOf(*effectivity, isInDomain)
                                                     : std::nullopt;
            if (effectivity == nullptr || constant) {
                drop(draft, numbers[position]);
            }
            draft.isDecided = draft.isDecided || constant == draft.strongValue();
        }
    }

    static void turnInDomain(const std::vector<QueltEeVarEff*>& effectivities, bool isInDomain) {
        for (QueltEeVarEff* const effectivity : effectivities) {
            if (isInDomain && effectivity != nullptr) {
                effectivity->opNotDom();
            }
        }
    }

    [[nodiscard]] const QueltEeNode& nodeOf(std::uint32_t number) {
        return *m_children[number].what.reference->getNode();
    }

    void dropAllButFixed(GroupDraft& draft) {
        for (const std::uint32_t number : std::exchange(draft.loose, {})) {
            if (!m_children[number].isGone) {
                drop(draft, number);
            }
        }
    }

    /// Makes all children references. A group that has come that far keeps at least two of them.
    void settle(GroupDraft& draft) {
        for (const std::uint32_t number : std::exchange(draft.unsettled, {})) {
            DraftChildren::Child& child = m_children[number];
            if (!child.isGone) {
                child.what = Rewritten::node(*materialize(child.what), child.what.isFixed);
            }
        }
    }

    /// Takes a child without nodes that must stay out of the group.
    void drop(GroupDraft& draft, std::uint32_t number) {
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
    [[nodiscard]] bool isAsBefore(const GroupDraft& draft) {
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
    void empty(GroupDraft& draft) {
        if (draft.origin == nullptr) {
            return;
        }
        QueltInLinkList& children = static_cast<QueltEeGroupOp*>(draft.origin->getNode())->getChildren();
        while (children.PopBack() != nullptr) {
        }
        leaveOver(*std::exchange(draft.origin, nullptr));
    }

    /// The reference that holds what the rewriting has come to; a draft becomes a node.
    QueltEeNodeRef* materialize(Rewritten& rewritten) {
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

    QueltEeNodeRef* withoutNegations(const Rewritten& rewritten) {
        if (rewritten.isConstant) {
            return rewritten.reference != nullptr ? rewritten.reference : makeConstant(rewritten.value);
        }
        if (rewritten.draft == nullptr) {
            return rewritten.reference;
        }
        return rewritten.draft->origin != nullptr ? rewritten.draft->origin : makeGroup(*rewritten.draft);
    }

    QueltEeNodeRef* makeGroup(const GroupDraft& draft) {
        QueltEeGroupOp* const group =
            draft.isAnd ? static_cast<QueltEeGroupOp*>(new QueltEeAndOp) : new QueltEeOrOp;
        QueltInLinkList& children = group->getChildren();
        if (draft.isDecided) {
            children.PutBack(draft.constant != nullptr ? *draft.constant
                                                       : *makeConstant(draft.strongValue()));
        }
        draft.forEach(m_children, [&children](std::uint32_t /*number*/, const DraftChildren::Child& child) {
            children.PutBack(*child.what.reference);
        });
        return group->getNodeRef();
    }

    void putInPlace(Rewritten rewritten) {
        QueltEeNodeRef* const reference = materialize(rewritten);
        if (reference != &m_root) {
            m_changed = true;
            m_root.getNode()->giveWayTo(reference);
        }
    }

    /// Notes a reference that the new tree does not need. It is deleted at the end, when nothing holds it any
    /// more.
    void leaveOver(QueltEeNodeRef& reference) {
        m_changed = true;
        if (&reference != &m_root) {
            m_husks.push_back(&reference);
        }
    }

    QueltEeNodeRef& m_root;
    FixedNodes m_fixed;
    JoiningBudget m_budget;
    DraftChildren m_children;
    std::vector<Level> m_levels;
    std::optional<Rewritten> m_result;
    std::vector<QueltEeNodeRef*> m_husks;
    bool m_changed = false;
};

bool simplifyTree(QueltEeNodeRef& root) {
    return root.getNode() != nullptr && root.ownsNode() && TreeRewriter(root).run();
}

} // namespace quelt
