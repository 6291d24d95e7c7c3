#pragma once

#include "QueltDataMigrationExport.h"

#include "expression/QueltEeNodeVisitor.h"
#include "infrastructure/QueltInList.h"

class QueltEeBasicEff;
class QueltEeChangeExpression;
class QueltEeEffectivityExpression;
class QueltEeExpressionContext;
class QueltEeExpressionOperation;
class QueltEeModelDico;
class QueltEeNode;
class QueltEeNodeRef;
class QueltInMap;
class QueltInSet;

/// Walks the tree of one generic expression and builds the multi-model expressions from it: one change expression when a
/// change is converted, up to three effectivity expressions otherwise. It is used once: construct it, let the root node
/// accept it, and, when that succeeded, call generateMapDomainIDToEeExpr. One thread, one conversion.
///
/// The visitor owns nothing: outputs that were not filed, and what a failed walk leaves behind, are not deleted with it.
class QUELT_DATA_MIGRATION_API QueltEeGenExprToEeMMExprVisitor
    : public QueltInTyped<QueltEeGenExprToEeMMExprVisitor, QueltEeNodeVisitor> {
public:
    static constexpr const char* s_className = "QueltEeGenExprToEeMMExprVisitor";

    /// @param isChange non-zero when the expression is a change.
    /// @param context the dictionaries; not owned, must outlive the visitor.
    /// @param basicEff the basic effectivity whose content is converted, or null; not owned.
    QueltEeGenExprToEeMMExprVisitor(unsigned char isChange, const QueltEeExpressionContext& context,
                                    QueltEeBasicEff* basicEff);
    /// Copies every member as it is; both visitors then refer to the same expressions.
    QueltEeGenExprToEeMMExprVisitor(const QueltEeGenExprToEeMMExprVisitor& other);
    /// Forgets everything; deletes nothing.
    ~QueltEeGenExprToEeMMExprVisitor() override;

    // Called by the nodes' acceptVisitor.

    /// The constants. They are converted at the root, and, with CGE_MigRen, anywhere in an effectivity; E_NOTIMPL otherwise.
    long visitFalse(QueltEeFalse& node) override;
    long visitTrue(QueltEeTrue& node) override;
    /// E_NOTIMPL, for now.
    long visitAndOp(QueltEeAndOp& node) override;
    /// E_NOTIMPL, for now.
    long visitOrOp(QueltEeOrOp& node) override;
    /// E_NOTIMPL: negation within a domain is deliberately not converted.
    long visitNotDomainOp(QueltEeNotDomainOp& node) override;
    /// E_NOTIMPL, for now.
    long visitNotOp(QueltEeNotOp& node) override;
    /// E_NOTIMPL, for now.
    long visitEffLeaf(QueltEeEffLeaf& leaf) override;
    /// E_NOTIMPL, for now.
    long visitVarEffLeaf(QueltEeVarEffLeaf& leaf) override;
    /// E_UNEXPECTED: a generic expression has no restrictions.
    long visitRestrictionEffLeaf(QueltEeRestrictionEffLeaf& leaf) override;

    /// Files what the walk built: for a change, the change expression under 2; else the evolution/variant expression under
    /// 2, the history expression under 1 and the constant one under 3, in that order, each when there is one.
    ///
    /// @param outputMap the map to file into; when null, a new one is made, which the caller owns. The expressions
    ///        belong to the map's owner from then on.
    /// @return the last filing's result; E_FAIL when there is nothing to file; a negative filing result ends the operation, what
    ///         was filed before stays.
    long generateMapDomainIDToEeExpr(QueltInMap*& outputMap);

private:
    template <class Constant>
    long visitConstant(Constant& node, const char* method);

    unsigned char m_isChange;
    unsigned char m_atRoot = 1;
    unsigned char m_spareFlag = 0;
    unsigned char m_inEVPart = 0;
    const QueltEeExpressionContext* m_pContext;
    QueltInSet* m_pMDSet = nullptr;
    QueltEeBasicEff* m_pBasicEff;
    QueltInList m_listOfBasicEffs;
    QueltEeNodeRef* m_pInhEffChildNodeRef = nullptr;
    unsigned int m_inhEffChildIndex = 0xFFFFFFFFU;
    QueltEeNodeRef* m_p_History_ChildNodeRef = nullptr;
    QueltEeNodeRef* m_p_EV_ChildNodeRef = nullptr;
    QueltEeExpressionOperation* m_pCurrentOperation = nullptr;
    QueltEeEffectivityExpression* m_pHistoryExpression = nullptr;
    QueltEeEffectivityExpression* m_pEVExpression = nullptr;
    QueltEeEffectivityExpression* m_pTrueFalseExpression = nullptr;
    QueltEeChangeExpression* m_pChangeExpression = nullptr;
};
extern template class QueltInTyped<QueltEeGenExprToEeMMExprVisitor, QueltEeNodeVisitor>;
