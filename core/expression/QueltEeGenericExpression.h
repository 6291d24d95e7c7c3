#pragma once

#include "expression/QueltEeExpression.h"

class QueltEeNodeRef;
class QueltQmSpecList;

class QueltEeGenericExpression;
extern template class QUELT_CORE_API QueltInTyped<QueltEeGenericExpression, QueltEeExpression>;

/// An expression of the older store: a specification list, or a tree. It owns either.
class QUELT_CORE_API QueltEeGenericExpression
    : public QueltInTyped<QueltEeGenericExpression, QueltEeExpression> {
public:
    static constexpr const char* s_className = "QueltEeGenericExpression";

    /// How the criteria of a list are taken together.
    enum class ListMode : int {
        all = 1,       ///< all criteria must hold
        atLeastOne = 2 ///< one is enough; so for every mode other than 1
    };

    /// The tree form over `root`, which is taken over (see QueltEeNodeRef::takeFor); null makes an expression
    /// with neither list nor tree, and so does a reference without node, which stays the caller's.
    explicit QueltEeGenericExpression(QueltEeNodeRef* root = nullptr);
    /// The list form over `list`, which is taken over; null makes a list form whose list is null.
    QueltEeGenericExpression(QueltQmSpecList* list, ListMode mode);
    ~QueltEeGenericExpression() override;
    QueltEeGenericExpression(const QueltEeGenericExpression&) = delete;
    QueltEeGenericExpression& operator=(const QueltEeGenericExpression&) = delete;

    /// The tree, or the list's criteria as leaves (see QueltEeFilterExpression::runConstVisitor). S_OK for
    /// neither; E_POINTER when the node of the tree is gone.
    long runConstVisitor(QueltEeNodeVisitor& visitor) const override;
    /// Non-zero for the list form.
    [[nodiscard]] virtual int IsList() const;
    /// The list (may be null); it stays the expression's. E_FAIL, and null, for the tree form.
    virtual long GetList(const QueltQmSpecList*& list) const;
    /// The list's mode. E_FAIL, and `mode` as it was, for the tree form.
    virtual long GetMode(ListMode& mode) const;
    /// The root of the tree, null when there is none; it stays the expression's.
    [[nodiscard]] virtual const QueltEeNodeRef* GetNodeRef() const;
    /// "generic(AND(...))"; "generic(all: ...)" and "generic(at least one: ...)" for lists; "generic()" for
    /// neither.
    [[nodiscard]] QueltInString toString() const override;

private:
    QueltEeNodeRef* m_pRoot = nullptr;
    QueltQmSpecList* m_pList = nullptr;
    ListMode m_mode = ListMode::all;
    bool m_isList = false;
};
