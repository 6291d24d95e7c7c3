#pragma once

#include "infrastructure/QueltInLinkList.h"
#include "infrastructure/QueltInTyped.h"

#include <atomic>
#include <cstdint>

class QueltEeNode;
class QueltEeNodeVisitor;
class QueltCoreEVC_NodeClassifier;

/// Holds a node of an expression tree. A reference either owns its node, or is an alias of a node that another reference
/// owns. A reference stands alone until a group, a single operator or an expression takes it over; deleting an owning
/// reference deletes the whole tree below it, with bounded stack.
class QUELT_CORE_API QueltEeNodeRef : public QueltInTyped<QueltEeNodeRef, QueltInObject> {
public:
    static constexpr const char* s_className = "QueltEeNodeRef";

    /// A reference that owns `node`, which must have none yet (see QueltEeNode::getNodeRef); null makes an empty one.
    explicit QueltEeNodeRef(QueltEeNode* node = nullptr) noexcept;
    ~QueltEeNodeRef() override;
    QueltEeNodeRef(const QueltEeNodeRef&) = delete;
    QueltEeNodeRef& operator=(const QueltEeNodeRef&) = delete;

    /// A new reference to `node` that does not own it; the caller owns the reference. When the node goes first, the
    /// alias is empty from then on.
    [[nodiscard]] static QueltEeNodeRef* makeAlias(QueltEeNode& node);

    /// The node; null when there is none, or when the node of an alias is gone.
    [[nodiscard]] QueltEeNode* getNode() const noexcept { return m_pNode; }
    /// True when deleting the reference deletes the node.
    [[nodiscard]] bool ownsNode() const noexcept { return m_owns; }
    /// True until a group, a single operator or an expression takes the reference over.
    [[nodiscard]] bool standsAlone() const noexcept { return !m_isHeld; }
    /// What a new holder takes when it is given this reference: the reference itself, marked as held by `holder` (null
    /// for an expression), when it stands alone and owns its node; else a new alias of the node. Null when there is no node.
    [[nodiscard]] QueltEeNodeRef* takeFor(QueltEeNode* holder);
    /// Makes a held reference stand alone again.
    void letGo() noexcept;

    /// The node's text; "null" when there is none.
    [[nodiscard]] QueltInString toString() const override;

private:
    friend class QueltEeNode;
    friend class QueltEeGroupOp;
    void linkAlias(QueltEeNode& node) noexcept;
    void unlinkAlias() noexcept;

    QueltEeNode* m_pNode;
    QueltEeNode* m_pHolder = nullptr; // the operator that holds the reference, if one does
    QueltEeNodeRef* m_pNext = nullptr; // among the aliases of the node; among the references to be destroyed
    QueltEeNodeRef* m_pPrevious = nullptr;
    bool m_owns;
    bool m_isHeld = false;
};

/// A node of an expression tree.
///
/// Walks over trees (printing, cloning, classifying, evaluating, deleting) use bounded stack, whatever the depth.
/// Visitors nest on the stack: acceptVisitor answers E_OUTOFMEMORY, without calling the visitor, where it is nested more
/// than s_maxVisitDepth deep on the thread.
class QUELT_CORE_API QueltEeNode : public QueltInTyped<QueltEeNode, QueltInObject> {
public:
    static constexpr const char* s_className = "QueltEeNode";
    /// How deep visits may nest on one thread.
    static constexpr std::uint32_t s_maxVisitDepth = 2500;

    ~QueltEeNode() override;
    QueltEeNode(const QueltEeNode&) = delete;
    QueltEeNode& operator=(const QueltEeNode&) = delete;

    /// Calls the visit operation of `visitor` that matches the node's class, and returns its result.
    virtual long acceptVisitor(QueltEeNodeVisitor& visitor) = 0;
    /// A new reference that stands alone and owns a deep copy of the node; the caller owns it. Variable effectivities
    /// are copied, effectivities and dictionaries are shared. Null on failure.
    [[nodiscard]] virtual QueltEeNodeRef* clone() const;

    /// The reference that owns the node; made on the first call for a new node.
    [[nodiscard]] QueltEeNodeRef* getNodeRef();
    /// Non-zero when a reference owns the node already.
    [[nodiscard]] bool hasNodeRef() const noexcept { return m_pRef != nullptr; }

    /// The exact structure on one line.
    [[nodiscard]] QueltInString toString() const override;

protected:
    QueltEeNode() = default;

    /// Tells the node, and every one above it, that what was known of its contents no longer holds.
    void contentsChanged() noexcept;

private:
    friend class QueltEeNodeRef;
    friend class QueltEeGroupOp;
    friend class QueltCoreEVC_NodeClassifier;

    QueltEeNodeRef* m_pRef = nullptr;
    QueltEeNodeRef* m_pAliases = nullptr;
    // What the classifier found below, 0 when unknown. While a node's is known, all nodes below have theirs known.
    mutable std::atomic<std::uint16_t> m_knownClassification{0};
};
