#pragma once

#include "dictionary/QueltEeModelDico.h"
#include "expression/QueltEeExpression.h"
#include "infrastructure/QueltInHashIndex.h"
#include "infrastructure/QueltInSet.h"
#include "infrastructure/QueltInSmallVector.h"

class QueltEeNodeRef;

class QueltEeMultiModelExpression;
extern template class QUELT_CORE_API QueltInTyped<QueltEeMultiModelExpression, QueltEeExpression>;

/// An expression over many models: a global criterion, which depends on no dictionary, and one criterion per
/// dictionary, each in the order filed. Nothing filed is ever replaced.
class QUELT_CORE_API QueltEeMultiModelExpression
    : public QueltInTyped<QueltEeMultiModelExpression, QueltEeExpression> {
public:
    static constexpr const char* s_className = "QueltEeMultiModelExpression";

    class ModelCriteria;

    /// A dictionary (not owned) with its criterion.
    struct Filed {
        const QueltEeModelDico* dictionary; ///< never null
        ModelCriteria* criteria;            ///< the expression's, never null
    };

    ~QueltEeMultiModelExpression() override;
    QueltEeMultiModelExpression(const QueltEeMultiModelExpression&) = delete;
    QueltEeMultiModelExpression& operator=(const QueltEeMultiModelExpression&) = delete;

    /// The global criterion, then per dictionary the inherited and the own part. E_POINTER for a part whose
    /// node is gone.
    long runConstVisitor(QueltEeNodeVisitor& visitor) const override;
    /// Rewrites each part into a shorter one that means the same (see quelt::simplifyTree); a part that is an
    /// alias stays as it is. S_OK; 1 when anything changed.
    virtual long simplify();
    /// Files the global criterion; the expression takes the reference over (see QueltEeNodeRef::takeFor).
    /// E_POINTER for null and for a reference without node; E_ALREADYTHERE when there is one, which stays;
    /// what was refused stays the caller's.
    virtual long setGlobalCriteria(QueltEeNodeRef* criterion);
    /// Rewrites each part into disjunctive normal form: an OR of ANDs of leaves, or less where less will do.
    /// S_OK; 1 when anything changed, and then every part is a new tree of its own, without aliases; failures
    /// as QueltDnf::make, and nothing is changed then.
    virtual long develop();
    /// Files the criterion of `dictionary` (by GUID), which the expression takes over. E_POINTER for null;
    /// E_ALREADYTHERE when that dictionary has one, which stays, or when `criteria` is filed already; what
    /// was refused stays as it was.
    virtual long setModelCriteria(const QueltEeModelDico& dictionary, ModelCriteria* criteria);
    /// Adds the dictionaries under which criteria are filed to `dictionaries`, in the order filed. E_FAIL
    /// when the set refuses one by its class.
    virtual long getContextDictionaries(QueltInSet& dictionaries) const;

    /// The global criterion, or null; it stays the expression's.
    [[nodiscard]] QueltEeNodeRef* getGlobalCriteria() const noexcept { return m_pGlobal; }
    /// Everything filed per dictionary, in order.
    [[nodiscard]] std::span<const Filed> getModelCriteria() const noexcept { return m_filed.values(); }
    /// The criterion of `dictionary`, or null.
    [[nodiscard]] ModelCriteria* findModelCriteria(const QueltEeModelDico& dictionary) const;
    /// "change(global: ..., Truck: own ..., inherited ...)".
    [[nodiscard]] QueltInString toString() const override;

protected:
    /// Without criteria: it holds everywhere.
    QueltEeMultiModelExpression() = default;
    /// "change", "effectivity".
    [[nodiscard]] virtual const char* kindName() const = 0;
    /// What stands behind the criteria in the text, or nothing.
    [[nodiscard]] virtual QueltInString describeOperations() const;

private:
    QueltEeNodeRef* m_pGlobal = nullptr;
    QueltInSmallVector<Filed, 3> m_filed;
    quelt::QueltInHashIndex m_index;
};

extern template class QUELT_CORE_API QueltInTyped<QueltEeMultiModelExpression::ModelCriteria, QueltInObject>;

/// What applies in one dictionary: what it inherits, and its own part.
class QUELT_CORE_API QueltEeMultiModelExpression::ModelCriteria
    : public QueltInTyped<ModelCriteria, QueltInObject> {
public:
    static constexpr const char* s_className = "QueltEeMultiModelExpression::ModelCriteria";

    /// Takes over the references in the two slots (see QueltEeNodeRef::takeFor) and clears the slots. A
    /// null slot, and a null reference or one without node in a slot, is a part that is not there; a
    /// reference without node is deleted when it stands alone.
    ModelCriteria(QueltEeNodeRef** inheritedSlot, QueltEeNodeRef** ownSlot);
    /// Deletes both parts.
    ~ModelCriteria() override;
    ModelCriteria(const ModelCriteria&) = delete;
    ModelCriteria& operator=(const ModelCriteria&) = delete;

    /// What the dictionary inherits, or null; it stays the criterion's.
    [[nodiscard]] QueltEeNodeRef* getInherited() const noexcept { return m_pInherited; }
    /// The dictionary's own part, or null; it stays the criterion's.
    [[nodiscard]] QueltEeNodeRef* getOwn() const noexcept { return m_pOwn; }
    /// "own ..., inherited ..."; "none" without either part.
    [[nodiscard]] QueltInString toString() const override;

private:
    friend class QueltEeMultiModelExpression;
    QueltEeNodeRef* m_pInherited;
    QueltEeNodeRef* m_pOwn;
    bool m_isFiled = false;
};

class QueltEeChangeExpression;
extern template class QUELT_CORE_API QueltInTyped<QueltEeChangeExpression, QueltEeMultiModelExpression>;

/// What a change applies to.
class QUELT_CORE_API QueltEeChangeExpression
    : public QueltInTyped<QueltEeChangeExpression, QueltEeMultiModelExpression> {
public:
    static constexpr const char* s_className = "QueltEeChangeExpression";
    /// An empty expression.
    QueltEeChangeExpression() = default;

protected:
    [[nodiscard]] const char* kindName() const override;
};

class QueltEeExpressionOperation;
extern template class QUELT_CORE_API QueltInTyped<QueltEeExpressionOperation, QueltInObject>;

/// An operation of an effectivity expression: a predefined effectivity, and what to do with it.
class QUELT_CORE_API QueltEeExpressionOperation
    : public QueltInTyped<QueltEeExpressionOperation, QueltInObject> {
public:
    static constexpr const char* s_className = "QueltEeExpressionOperation";

    /// What an operation does with its change. Other values are kept.
    enum class OperationKind : int {
        remove = 0,          ///< the change is taken away
        apply = 1,           ///< the change is applied
        applyAlternative = 2 ///< the change is applied as one of several alternatives
    };

    /// `object` is not owned; it may be null.
    QueltEeExpressionOperation(OperationKind kind, QueltInObject* object) noexcept
        : m_kind(kind), m_pObject(object) {}

    /// The kind, read and written directly.
    OperationKind m_kind;
    /// The effectivity, or null.
    [[nodiscard]] QueltInObject* getObject() const noexcept { return m_pObject; }
    /// "1 ECO-1".
    [[nodiscard]] QueltInString toString() const override;

private:
    QueltInObject* m_pObject;
};

class QueltEeEffectivityExpression;
extern template class QUELT_CORE_API QueltInTyped<QueltEeEffectivityExpression, QueltEeMultiModelExpression>;

/// Where a part of the product applies: criteria and, in order, operations with changes.
class QUELT_CORE_API QueltEeEffectivityExpression
    : public QueltInTyped<QueltEeEffectivityExpression, QueltEeMultiModelExpression> {
public:
    static constexpr const char* s_className = "QueltEeEffectivityExpression";
    /// An empty expression.
    QueltEeEffectivityExpression() = default;
    ~QueltEeEffectivityExpression() override;

    /// As the base class, then each operation's effectivity as an effectivity leaf (the walk's own).
    long runConstVisitor(QueltEeNodeVisitor& visitor) const override;
    /// Appends an operation of `kind` on `object`. The expression keeps the operation; the effectivity itself
    /// is shared and stays its context's. E_POINTER for null; E_INVALIDARG when it is not a
    /// QueltEeEffectivity.
    virtual long addOperation(QueltEeExpressionOperation::OperationKind kind, QueltInObject*& object);
    /// The operations, in order; they stay the expression's.
    [[nodiscard]] std::span<QueltEeExpressionOperation* const> getOperations() const noexcept {
        return m_operations.values();
    }

protected:
    [[nodiscard]] const char* kindName() const override;
    [[nodiscard]] QueltInString describeOperations() const override;

private:
    QueltInSmallVector<QueltEeExpressionOperation*, 2> m_operations;
};
