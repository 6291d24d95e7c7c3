#pragma once

#include "expression/QueltEeGroupDraft.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace quelt {

/// What a rewriting of a tree does with the groups and negations that it has taken apart: brings their parts
/// together in the shortest form, and makes nodes of them again.
///
/// Nodes stay where they are as long as nothing changes around them. Where something does, the group is
/// emptied and made anew from its rewritten children, so that each reference is moved a limited number of
/// times whatever the shape of the tree.
///
/// Below a NOT-domain that stays where it is (see FixedNodes) leaves are combined "in the domain": what is
/// exact for them is what is exact for their opposites in the domain, with AND and OR exchanged.
class DraftRewriter {
public:
    /// For the tree at `root`, which is never left over, of this size (see FixedNodes::size).
    DraftRewriter(const QueltEeNodeRef& root, std::size_t size);
    DraftRewriter(const DraftRewriter&) = delete;
    DraftRewriter& operator=(const DraftRewriter&) = delete;

    /// Adds what a child has come to.
    void absorb(GroupDraft& draft, Rewritten child);
    /// Brings a group whose children are complete to its shortest form.
    [[nodiscard]] Rewritten close(std::unique_ptr<GroupDraft> draft, bool isInDomain);
    /// Puts negations above what nodes that must stay are in.
    [[nodiscard]] Rewritten negateFixed(NegationChain chain, Rewritten below);
    /// Takes the target out of the chain, which is left over then.
    void takeOut(NegationChain& chain);
    /// The reference that holds what the rewriting has come to; a draft becomes a node.
    [[nodiscard]] QueltEeNodeRef* materialize(Rewritten& rewritten);
    /// Notes a reference that the new tree does not need.
    void leaveOver(QueltEeNodeRef& reference);
    /// Deletes what is left over, once the new tree stands in its place and nothing holds those references
    /// any more.
    void deleteLeftOver();
    /// Notes that something has changed.
    void noteChange() noexcept { m_changed = true; }
    /// True once something has changed.
    [[nodiscard]] bool isChanged() const noexcept { return m_changed; }

private:
    static constexpr JoiningBudget s_leastBudget = 10'000'000;
    static constexpr JoiningBudget s_budgetPerNode = 64;

    void takeOutOfChain(Rewritten& rewritten);

    void absorbConstant(GroupDraft& draft, bool value, QueltEeNodeRef* reference);
    void absorbGroup(GroupDraft& draft, GroupDraft& inner);
    void enterCriterion(GroupDraft& draft, std::uint32_t number);

    void join(GroupDraft& draft, std::vector<std::uint32_t>& numbers, bool isInDomain);
    void joinEffLeaves(GroupDraft& draft, const std::vector<std::uint32_t>& numbers);
    void joinVarEffs(GroupDraft& draft, const std::vector<std::uint32_t>& numbers, bool isInDomain);
    void dropAllButFixed(GroupDraft& draft);
    void drop(GroupDraft& draft, std::uint32_t number);
    void settle(GroupDraft& draft);
    void empty(GroupDraft& draft);
    [[nodiscard]] bool isAsBefore(const GroupDraft& draft);
    [[nodiscard]] Rewritten takeOnly(const GroupDraft& draft);
    [[nodiscard]] QueltEeNodeRef* withoutNegations(const Rewritten& rewritten);
    [[nodiscard]] QueltEeNodeRef* makeGroup(const GroupDraft& draft);
    [[nodiscard]] const QueltEeNode& nodeOf(std::uint32_t number) {
        return *m_children[number].what.reference->getNode();
    }

    const QueltEeNodeRef& m_root;
    JoiningBudget m_budget;
    DraftChildren m_children;
    std::vector<QueltEeNodeRef*> m_husks;
    bool m_changed = false;
};

} // namespace quelt
