#pragma once

#include "expression/QueltEeCriteria.h"
#include "expression/QueltEeNegations.h"
#include "expression/QueltEeOperators.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace quelt {

struct GroupDraft;

/// Single operators, one above the other, down to something else.
struct NegationChain {
    /// The reference of the uppermost one; null when they are not needed any more.
    QueltEeNodeRef* top = nullptr;
    /// The reference of what is below the lowest one, and that lowest one.
    QueltEeNodeRef* target = nullptr;
    QueltEeSingleOp* last = nullptr;
    /// What they come to, and how many there are.
    Negations negations;
    int length = 0;
};

/// What the rewriting of a subtree has come to: a constant, a reference, or a group that is not a node yet.
struct Rewritten {
    static Rewritten constant(bool value, QueltEeNodeRef* reference);
    static Rewritten node(QueltEeNodeRef& reference, bool isFixed);
    static Rewritten group(std::unique_ptr<GroupDraft> draft);

    /// What is to stand above the reference or the group, because nodes that must stay are in it; and
    /// operators that say just that, if there are.
    Negations above;
    NegationChain chain;

    /// The group; null for the other two.
    std::unique_ptr<GroupDraft> draft;
    /// The reference; of a constant one that holds it, or null.
    QueltEeNodeRef* reference = nullptr;
    bool isConstant = false;
    bool value = false;
    /// True when nodes that must stay are in it.
    bool isFixed = false;
};

/// The children of groups that are being rewritten, by number. A group's are linked, so that joining two
/// groups takes constant time. Numbers ascend in the order of the tree.
class DraftChildren {
public:
    static constexpr std::uint32_t s_none = 0xFFFFFFFFU;
    /// A child with the number of the one behind it.
    struct Child {
        Rewritten what; // no constant
        std::uint32_t next = s_none;
        bool isGone = false;
    };

    [[nodiscard]] std::uint32_t add(Rewritten what) {
        m_children.push_back({std::move(what)});
        return static_cast<std::uint32_t>(m_children.size() - 1);
    }
    [[nodiscard]] Child& operator[](std::uint32_t number) noexcept { return m_children[number]; }

private:
    std::vector<Child> m_children;
};

/// A group while it is being rewritten.
struct GroupDraft {
    GroupDraft(bool isConjunction, QueltEeNodeRef* source) noexcept : isAnd(isConjunction), origin(source) {}

    /// The constant that decides the group alone.
    [[nodiscard]] bool strongValue() const noexcept { return !isAnd; }
    /// Links `number` behind the last child.
    void append(DraftChildren& children, std::uint32_t number);
    /// Links the children of `other` behind the last one, and takes over what is known of them, at the cost
    /// of the smaller group.
    void appendAll(DraftChildren& children, GroupDraft& other);
    /// Calls `visit(number, child)` for each child that has not gone.
    template <class Visit>
    void forEach(DraftChildren& children, Visit visit) const {
        for (std::uint32_t number = first; number != DraftChildren::s_none; number = children[number].next) {
            if (!children[number].isGone) {
                visit(number, children[number]);
            }
        }
    }

    bool isAnd;
    /// The group that the draft was made from, as long as its children are still there.
    QueltEeNodeRef* origin;
    std::uint32_t first = DraftChildren::s_none;
    std::uint32_t last = DraftChildren::s_none;
    /// How many children have not gone, and how many of them hold nodes that must stay.
    std::size_t count = 0;
    std::size_t fixedCount = 0;
    /// Children that are no references yet, and children that may go; each may have gone already. Only what
    /// has come since a group was complete last is looked at when it is complete again.
    std::vector<std::uint32_t> unsettled;
    std::vector<std::uint32_t> loose;
    /// Another group's children are among them.
    bool hasJoined = false;
    /// The strong constant is among the children; a reference that holds it, or null. It stands in front of
    /// the others.
    bool isDecided = false;
    QueltEeNodeRef* constant = nullptr;
    CriterionIndex criteria;
};

} // namespace quelt
