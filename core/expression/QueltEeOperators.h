#pragma once

#include "expression/QueltEeNode.h"

/// Whether the simplifications of groups first turn leaves that are always or never true into TRUE and FALSE.
enum E_MakeTF : unsigned char {
    E_DoNotMakeTF = 0, ///< only TRUE and FALSE nodes count
    E_DoMakeTF = 1     ///< leaves that are equivalent to TRUE or FALSE become those first
};

class QueltEeOperator;
extern template class QUELT_CORE_API QueltInTyped<QueltEeOperator, QueltEeNode>;

/// What groups and single operators share: children.
class QUELT_CORE_API QueltEeOperator : public QueltInTyped<QueltEeOperator, QueltEeNode> {
public:
    static constexpr const char* s_className = "QueltEeOperator";
    ~QueltEeOperator() override;

    /// Deletes the children that the node owns, and its aliases.
    virtual void deleteChildren() = 0;
    /// Detaches the children: aliases go, owned ones stay alive and stand alone again.
    virtual void removeChildren() = 0;
    /// Appends the children's references to `children`, in order; they stay the node's.
    virtual void getChildrenRefs(QueltInLinkList& children) const = 0;
    /// Makes each child accept `visitor`, in order; the first negative result ends the walk and is returned.
    /// A child reference without node is E_POINTER.
    virtual long childrenAcceptVisitor(QueltEeNodeVisitor& visitor) = 0;

protected:
    using QueltInTyped::QueltInTyped;
};

class QueltEeGroupOp;
extern template class QUELT_CORE_API QueltInTyped<QueltEeGroupOp, QueltEeOperator>;

/// AND or OR over any number of children.
class QUELT_CORE_API QueltEeGroupOp : public QueltInTyped<QueltEeGroupOp, QueltEeOperator> {
public:
    static constexpr const char* s_className = "QueltEeGroupOp";

    ~QueltEeGroupOp() override;

    void deleteChildren() override;
    void removeChildren() override;
    void getChildrenRefs(QueltInLinkList& children) const override;
    long childrenAcceptVisitor(QueltEeNodeVisitor& visitor) override;

    // Simplifications in place. Each answers non-zero when it did something (has...: when it holds). Where a
    // group "becomes" something, the reference that owned the group holds that from then on (as an alias,
    // when the group's only child is one); the group is gone. Without such a reference
    // (QueltEeNode::hasNodeRef) nothing is done, since nobody could find what the group has become. A leaf
    // that is aliased counts as the constant that it is equivalent to, but stays a leaf in the tree that owns
    // it.

    /// Becomes its only child.
    virtual unsigned char becomeIfSingleChild();
    /// Becomes its only child, or, without children, its neutral constant (TRUE for AND, FALSE for OR).
    virtual unsigned char becomeIfNoOrSingleChild();
    /// Without children, becomes its neutral constant.
    virtual unsigned char becomeIfNoChild();
    /// Whether a child is the strong constant, which decides the group alone (FALSE in AND, TRUE in OR).
    virtual unsigned char hasStrongNode(E_MakeTF makeTF);
    /// Becomes the strong constant when it has one among its children.
    virtual unsigned char becomeIfHasStrongNode(E_MakeTF makeTF);
    /// Deletes the children that are the weak constant, which decides nothing (TRUE in AND, FALSE in OR).
    virtual unsigned char removeWeakNodes(E_MakeTF makeTF);

    /// Appends `node`. A node whose reference stands alone comes with that reference, and the group owns it;
    /// one that has a parent stays that parent's, and the group gets an alias. S_OK; E_INVALIDARG when `node`
    /// is this group or stands above it.
    virtual long addChild(QueltEeNode& node);
    /// The children's references, read and edited directly. A reference that stands alone is taken over when
    /// it is set there, of one that is held an alias is made (see QueltEeNodeRef::takeFor), on addChild's
    /// terms; E_POINTER for one without node, E_INVALIDARG for any other object. What is removed stands alone
    /// again and is the caller's, an alias too.
    [[nodiscard]] virtual QueltInLinkList& getChildren();
    /// The children's references, for reading.
    [[nodiscard]] const QueltInLinkList& getChildren() const noexcept { return m_children; }

    /// True for AND, false for OR.
    [[nodiscard]] bool isAnd() const noexcept { return m_isAnd; }

protected:
    /// Without children: an AND (which is TRUE) or an OR (which is FALSE).
    explicit QueltEeGroupOp(bool isAnd);

private:
    friend class quelt::TreeCopier;
    [[nodiscard]] unsigned char becomeConstant(bool value);

    /// The list of children, which keeps the references' holder and what is known of the group up to date.
    class QUELT_CORE_API Children : public QueltInLinkList {
    public:
        explicit Children(QueltEeGroupOp& group);
        long Set(unsigned int position, QueltInObject& object) override;
        long Remove(unsigned int position) override;
        long RemoveEach(std::span<const std::uint32_t> positions) override;
        long SetEach(std::span<const Placed> placed) override;
        QueltInObject* PopBack() override;
        /// Deletes the children that are the constant `value`.
        void dropConstants(bool value, E_MakeTF makeTF);
        /// Appends `copy`, which stands alone and owns a node that nobody has seen yet, to a group that
        /// nothing is known of.
        void appendCopy(QueltEeNodeRef& copy);
        using QueltInLinkList::reserve;

    private:
        /// S_OK when the group may take `object` as a child, else why not.
        [[nodiscard]] long check(const QueltInObject* object) const;

        QueltEeGroupOp& m_group;
    };

    Children m_children;
    bool m_isAnd;
};

class QueltEeAndOp;
extern template class QUELT_CORE_API QueltInTyped<QueltEeAndOp, QueltEeGroupOp>;

/// Conjunction.
class QUELT_CORE_API QueltEeAndOp : public QueltInTyped<QueltEeAndOp, QueltEeGroupOp> {
public:
    static constexpr const char* s_className = "QueltEeAndOp";
    /// Without children (which is TRUE).
    QueltEeAndOp();
    long acceptVisitor(QueltEeNodeVisitor& visitor) override;
};

class QueltEeOrOp;
extern template class QUELT_CORE_API QueltInTyped<QueltEeOrOp, QueltEeGroupOp>;

/// Disjunction.
class QUELT_CORE_API QueltEeOrOp : public QueltInTyped<QueltEeOrOp, QueltEeGroupOp> {
public:
    static constexpr const char* s_className = "QueltEeOrOp";
    /// Without children (which is FALSE).
    QueltEeOrOp();
    long acceptVisitor(QueltEeNodeVisitor& visitor) override;
};

class QueltEeSingleOp;
extern template class QUELT_CORE_API QueltInTyped<QueltEeSingleOp, QueltEeOperator>;

/// An operator with one child, or, as long as none was set, with none.
class QUELT_CORE_API QueltEeSingleOp : public QueltInTyped<QueltEeSingleOp, QueltEeOperator> {
public:
    static constexpr const char* s_className = "QueltEeSingleOp";

    /// Without child.
    QueltEeSingleOp() noexcept;
    ~QueltEeSingleOp() override;

    void deleteChildren() override;
    void removeChildren() override;
    void getChildrenRefs(QueltInLinkList& children) const override;
    /// As declared above; without child it is a success.
    long childrenAcceptVisitor(QueltEeNodeVisitor& visitor) override;

    /// The child's reference, or null.
    [[nodiscard]] virtual QueltEeNodeRef* getChildRef() const;
    /// Makes the node of `child` the child, taking the reference over as QueltEeGroupOp::getChildren does;
    /// one set before is deleted with what it owns (which `child` must not be part of), unless it is `child`
    /// itself. E_POINTER when the reference holds no node; E_INVALIDARG when the node is this one or stands
    /// above it.
    virtual long setChildRef(QueltEeNodeRef& child);

private:
    QueltEeNodeRef* m_pChild = nullptr;
};

class QueltEeNotOp;
extern template class QUELT_CORE_API QueltInTyped<QueltEeNotOp, QueltEeSingleOp>;

/// Negation: what holds for no-variable is turned round too.
class QUELT_CORE_API QueltEeNotOp : public QueltInTyped<QueltEeNotOp, QueltEeSingleOp> {
public:
    static constexpr const char* s_className = "QueltEeNotOp";
    /// Without child. `isGenerated` is kept for the caller and has no effect: non-zero marks a node that a
    /// rewriting made.
    explicit QueltEeNotOp(unsigned char isGenerated = 0) noexcept;
    long acceptVisitor(QueltEeNodeVisitor& visitor) override;
    /// What the constructor was told.
    [[nodiscard]] unsigned char isGenerated() const noexcept { return m_isGenerated; }

private:
    unsigned char m_isGenerated;
};

class QueltEeNotDomainOp;
extern template class QUELT_CORE_API QueltInTyped<QueltEeNotDomainOp, QueltEeSingleOp>;

/// Negation within the domain of values: what is said of configurations in which a variable has no value
/// stays.
///
/// NOT-domain of a tree means the tree with NOT-domain at its leaves, and AND and OR exchanged on the way
/// there. At a variable effectivity it is QueltEeVarEff::opNotDom; it turns an effectivity leaf round, and
/// TRUE into FALSE and back. NOT stays NOT: NOT-domain of NOT(x) is NOT of NOT-domain of x, and twice
/// NOT-domain is nothing. So what a tree means below NOT-domain follows from how it is written: leaves on one
/// variable may not be combined there as they may elsewhere.
class QUELT_CORE_API QueltEeNotDomainOp : public QueltInTyped<QueltEeNotDomainOp, QueltEeSingleOp> {
public:
    static constexpr const char* s_className = "QueltEeNotDomainOp";
    /// Without child.
    QueltEeNotDomainOp() noexcept;
    long acceptVisitor(QueltEeNodeVisitor& visitor) override;
};
