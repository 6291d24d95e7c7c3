#include "expression/QueltEeTreeWalk.h"

#include <optional>
#include <unordered_set>
#include <vector>

namespace quelt {

/// Looks for a node among those above another one, and for that other one among those below the first, in
/// turns, until either search is through. Trees that are built from the top, from the bottom, or from parts
/// are all cheap to check that way.
class AncestrySearch {
public:
    AncestrySearch(const QueltEeNode& upper, const QueltEeNode& lower) : m_upper(upper), m_lower(lower) {
        openHolders(lower);
        openChildren(upper);
    }

    /// The answer where few nodes stand above the lower one, on a single way, as in a tree that is being
    /// built; nothing where there are more.
    [[nodiscard]] static std::optional<bool> climb(const QueltEeNode& upper,
                                                   const QueltEeNode& lower) noexcept {
        constexpr int few = 8;
        const QueltEeNode* node = &lower;
        for (int step = 0; step < few && node->m_pAliases == nullptr; ++step) {
            node = node->m_pRef != nullptr ? node->m_pRef->m_pHolder : nullptr;
            if (node == nullptr || node == &upper) {
                return node != nullptr;
            }
        }
        return std::nullopt;
    }
    /// True when the upper node stands above the lower one.
    [[nodiscard]] bool run() {
        while (!m_above.empty() && !m_below.empty()) {
            if (lookUp() || lookDown()) {
                return true;
            }
        }
        return false;
    }

private:
    struct Children {
        NodeChildren of;
        std::uint32_t next;
    };

    [[nodiscard]] bool lookUp() {
        const QueltEeNode* const node = m_above.back();
        m_above.pop_back();
        openHolders(*node);
        return node == &m_upper;
    }

    [[nodiscard]] bool lookDown() {
        Children& children = m_below.back();
        const QueltEeNodeRef* const reference = children.of.at(children.next++);
        if (reference == nullptr) {
            m_below.pop_back();
            return false;
        }
        const QueltEeNode* const node = reference->getNode();
        // Only what has aliases can be come to by several ways.
        if (node != nullptr && (node->m_pAliases == nullptr || m_seenBelow.insert(node).second)) {
            openChildren(*node);
        }
        return node == &m_lower;
    }

    void openHolders(const QueltEeNode& node) {
        if (node.m_pRef != nullptr) {
            openHolder(node.m_pRef->m_pHolder);
        }
        for (const QueltEeNodeRef* alias = node.m_pAliases; alias != nullptr; alias = alias->m_pNext) {
            m_waysPart = true;
            openHolder(alias->m_pHolder);
        }
    }

    void openHolder(const QueltEeNode* holder) {
        // Before the ways part nothing can be come to twice.
        if (holder != nullptr && (!m_waysPart || m_seenAbove.insert(holder).second)) {
            m_above.push_back(holder);
        }
    }

    void openChildren(const QueltEeNode& node) {
        const NodeChildren children(node);
        if (children.at(0) != nullptr) {
            m_below.push_back({children, 0});
        }
    }

    const QueltEeNode& m_upper;
    const QueltEeNode& m_lower;
    std::vector<const QueltEeNode*> m_above;
    std::vector<Children> m_below;
    std::unordered_set<const QueltEeNode*> m_seenAbove;
    std::unordered_set<const QueltEeNode*> m_seenBelow;
    bool m_waysPart = false;
};

} // namespace quelt

bool QueltEeNode::isAtOrAbove(const QueltEeNode& other) const {
    if (this == &other) {
        return true;
    }
    if (quelt::NodeChildren(*this).at(0) == nullptr) {
        return false;
    }
    const std::optional<bool> found = quelt::AncestrySearch::climb(*this, other);
    return found ? *found : quelt::AncestrySearch(*this, other).run();
}
