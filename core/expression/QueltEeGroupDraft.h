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
    /// The reference of what is below the lowest one.
    QueltEeNodeRef* target = nullptr;
    /// The lowest one.
    QueltEeSingleOp* last = nullptr;
    /// What they come to.
    Negations negations;
    /// How many there are.
    int length = 0;
};

/// What the rewriting of a subtree has come to: a constant, a reference, or a group that is not a node yet.
struct Rewritten {
    /// The constant `value`; `reference` holds it, or is null.
    static Rewritten constant(bool value, QueltEeNodeRef* reference);
    /// The node that `reference` holds; `isFixed` when nodes that must stay are in it.
    static Rewritten node(QueltEeNodeRef& reference, bool isFixed);
    /// A group that is not a node yet.
    static Rewritten group(std::unique_ptr<GroupDraft> draft);

    /// What is to stand above the reference or the group, because nodes that must stay are in it.
    Negations above;
    /// Operators that say just that, if there are.
    NegationChain chain;

    /// The group; null for the other two.
    std::unique_ptr<GroupDraft> draft;
    /// The reference; of a constant one that holds it, or null.
    QueltEeNodeRef* reference = nullptr;
    /// True for a constant.
    bool isConstant = false;
    /// The constant; false for the other two.
    bool value = false;
    /// True when nodes that must stay are in it.
    bool isFixed = false;
};

/// The children of groups that are being rewritten, by number. A group's are linked, so that joining two
/// groups takes constant time. Numbers ascend in the order of the tree.
class DraftChildren {
public:
    /// The number behind the last child.
    static constexpr std::uint32_t s_none = 0xFFFFFFFFU;
    /// A child with the number of the one behind it.
    struct Child {
        Rewritten what;              ///< no constant
        std::uint32_t next = s_none; ///< the next child of the same group
        bool isGone = false;         ///< it does not count any more
    };

    /// Enters a child, linked to none, and gives its number.
    [[nodiscard]] std::uint32_t add(Rewritten what) {
        m_children.push_back({std::move(what)});
        return static_cast<std::uint32_t>(m_children.size() - 1);
    }
    /// The child with this number; valid until the next one is entered.
    [[nodiscard]] Child& operator[](std::uint32_t number) noexcept { return m_children[number]; }

private:
    std::vector<Child> m_children;
};

/// A group while it is being rewritten.
struct GroupDraft {
    /// An AND or an OR without children, made from the group that `source` holds (null: from none).
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

    /// True for AND, false for OR.
    bool isAnd;
    /// The group that the draft was made from, as long as its children are still there.
    QueltEeNodeRef* origin;
    /// The number of the first child, gone or not.
    std::uint32_t first = DraftChildren::s_none;
    /// The number of the last child, gone or not.
    std::uint32_t last = DraftChildren::s_none;
    /// How many children have not gone.
    std::size_t count = 0;
    /// How many of those hold nodes that must stay.
    std::size_t fixedCount = 0;
    /// Children that are no references yet; each may have gone already. Only what has come since the group
    /// was complete last is looked at when it is complete again.
    std::vector<std::uint32_t> unsettled;
    /// Children that may go, likewise.
    std::vector<std::uint32_t> loose;
    /// Another group's children are among them.
    bool hasJoined = false;
    /// The strong constant is among the children. It stands in front of the others.
    bool isDecided = false;
    /// A reference that holds the strong constant, or null.
    QueltEeNodeRef* constant = nullptr;
    /// The children that are criteria, by what they depend on.
    CriterionIndex criteria;
};

} // namespace quelt
