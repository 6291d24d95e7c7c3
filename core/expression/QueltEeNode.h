#pragma once

#include "infrastructure/QueltInLinkList.h"
#include "infrastructure/QueltInTyped.h"

#include <atomic>
#include <cstdint>

class QueltEeNode;
class QueltEeNodeVisitor;
class QueltCoreEVC_NodeClassifier;
namespace quelt {
class AncestrySearch;
class NodeChildren;
class TreeCopier;
} // namespace quelt

class QueltEeNodeRef;
extern template class QUELT_CORE_API QueltInTyped<QueltEeNodeRef, QueltInObject>;

/// Holds a node of an expression tree. A reference either owns its node, or is an alias of a node that
/// another reference owns. A reference stands alone until a group, a single operator or an expression takes
/// it over, and is not deleted by anybody else from then on; deleting an owning reference deletes the whole
/// tree below it, with bounded stack.
class QUELT_CORE_API QueltEeNodeRef : public QueltInTyped<QueltEeNodeRef, QueltInObject> {
public:
    static constexpr const char* s_className = "QueltEeNodeRef";

    /// A reference that owns `node`, unless the node has an owner already (see QueltEeNode::getNodeRef): then
    /// an alias. Null makes an empty reference.
    explicit QueltEeNodeRef(QueltEeNode* node = nullptr) noexcept;
    ~QueltEeNodeRef() override;
    QueltEeNodeRef(const QueltEeNodeRef&) = delete;
    QueltEeNodeRef& operator=(const QueltEeNodeRef&) = delete;

    /// A new reference to `node` that does not own it; the caller owns the reference. When the node goes
    /// first, the alias is empty from then on. The node knows its aliases, so making and deleting one changes
    /// the node: not for nodes that other threads read, and an alias made inside an arena must not be left to
    /// the arena when the node outlives it.
    [[nodiscard]] static QueltEeNodeRef* makeAlias(QueltEeNode& node);

    /// The node; null when there is none, or when the node of an alias is gone.
    [[nodiscard]] QueltEeNode* getNode() const noexcept { return m_pNode; }
    /// True when deleting the reference deletes the node.
    [[nodiscard]] bool ownsNode() const noexcept { return m_owns; }
    /// True until a group, a single operator or an expression takes the reference over.
    [[nodiscard]] bool standsAlone() const noexcept { return !m_isHeld; }
    /// The node that holds the reference (see takeFor); null when it stands alone or an expression holds it.
    [[nodiscard]] const QueltEeNode* getHolder() const noexcept { return m_pHolder; }
    /// What a new holder takes when it is given this reference: the reference itself when it stands alone,
    /// else a new alias of its node. What is taken is marked as held by `holder` (null for an expression) and
    /// is the holder's. Null, and nothing is taken, when there is no node.
    [[nodiscard]] QueltEeNodeRef* takeFor(QueltEeNode* holder);
    /// Makes a held reference stand alone again; for its holder, when it gives the reference up.
    void letGo() noexcept;

    /// The node's text; "null" when there is none.
    [[nodiscard]] QueltInString toString() const override;

private:
    friend class QueltEeNode;
    friend class QueltEeGroupOp;
    friend class QueltEeSingleOp;
    friend class quelt::AncestrySearch;
    void ownNode(QueltEeNode& node) noexcept;
    void linkAlias(QueltEeNode& node) noexcept;
    void unlinkAlias() noexcept;
    /// Deletes a reference that its holder held. When this thread is deleting a tree already, an owning
    /// reference waits until what is open on the stack is gone.
    static void dispose(QueltEeNodeRef* reference) noexcept;

    QueltEeNode* m_pNode = nullptr;
    QueltEeNode* m_pHolder =
        nullptr; // whom takeFor was called for: the operator that holds the reference, if one does
    // An alias: its neighbours among the aliases of the node. An owning reference: the next one of those that
    // wait to be deleted, and the next one of those whose holders are still to be told of a change.
    QueltEeNodeRef* m_pNext = nullptr;
    QueltEeNodeRef* m_pPrevious = nullptr;
    bool m_owns = true;
    bool m_isHeld = false;
};

class QueltEeNode;
extern template class QUELT_CORE_API QueltInTyped<QueltEeNode, QueltInObject>;

/// A node of an expression tree.
///
/// Walks over trees (printing, cloning, classifying, evaluating, deleting) use bounded stack, whatever the
/// depth. Visitors nest on the stack: acceptVisitor answers E_OUTOFMEMORY, without calling the visitor, where
/// it is nested more than s_maxVisitDepth deep on the thread.
class QUELT_CORE_API QueltEeNode : public QueltInTyped<QueltEeNode, QueltInObject> {
public:
    static constexpr const char* s_className = "QueltEeNode";
    /// How deep visits may nest on one thread.
    static constexpr std::uint32_t s_maxVisitDepth = 2500;

    /// Empties the aliases of the node. The reference that owns the node goes too when it stands alone; one
    /// that is held stays its holder's and is empty from then on.
    ~QueltEeNode() override;
    QueltEeNode(const QueltEeNode&) = delete;
    QueltEeNode& operator=(const QueltEeNode&) = delete;

    /// Calls the visit operation of `visitor` that matches the node's class, and returns its result.
    virtual long acceptVisitor(QueltEeNodeVisitor& visitor) = 0;
    /// A new reference that stands alone and owns a deep copy of the node; the caller owns it. Variable
    /// effectivities are copied, effectivities and dictionaries are shared, aliased children become copies
    /// that the new parent owns. Null when a child reference has no node, or a leaf gives no copy.
    [[nodiscard]] virtual QueltEeNodeRef* clone() const;

    /// The reference that owns the node; made on the first call for a new node.
    [[nodiscard]] QueltEeNodeRef* getNodeRef();
    /// True when a reference owns the node already.
    [[nodiscard]] bool hasNodeRef() const noexcept { return m_pRef != nullptr; }
    /// True when references other than the owning one hold the node.
    [[nodiscard]] bool hasAliases() const noexcept { return m_pAliases != nullptr; }
    /// Makes the reference that owns this node hold from then on what `successor` holds, in the same way
    /// (owned or as an alias); that must not stand above this node. Deletes `successor` and this node. False,
    /// and nothing is changed, when no reference owns this node, for its successor would be out of reach, and
    /// when `successor` holds no node or does not stand alone.
    bool giveWayTo(QueltEeNodeRef* successor) noexcept;
    /// True when `other` is this node or stands below it, through owning references or aliases. Takes time in
    /// the number of nodes above `other` or of those below this node, whichever is smaller.
    [[nodiscard]] bool isAtOrAbove(const QueltEeNode& other) const;

    /// The exact structure on one line.
    [[nodiscard]] QueltInString toString() const override;

protected:
    /// What walks must know of a node to go on.
    enum class Shape : std::uint8_t {
        leaf,  ///< nothing stands below it
        group, ///< a QueltEeGroupOp
        single ///< a QueltEeSingleOp
    };

    /// A node of this shape, without reference.
    explicit QueltEeNode(Shape shape = Shape::leaf) noexcept : m_shape(shape) {}

    /// Tells the node, and every one above it, that what was known of its contents no longer holds.
    void contentsChanged() noexcept;

private:
    friend class QueltEeNodeRef;
    friend class QueltCoreEVC_NodeClassifier;
    friend class quelt::AncestrySearch;
    friend class quelt::NodeChildren;

    QueltEeNodeRef* m_pRef = nullptr;
    QueltEeNodeRef* m_pAliases = nullptr;
    // What the classifier found in the subtree, 0 when unknown. While a node's is known, so is that of every
    // node below that it follows from; hence a change is told upwards only as far as something is known.
    mutable std::atomic<std::uint16_t> m_knownClassification{0};
    const Shape m_shape;
};
