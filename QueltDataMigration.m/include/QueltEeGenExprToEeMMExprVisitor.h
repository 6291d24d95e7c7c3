#pragma once

#include "QueltDataMigrationExport.h"

#include "expression/QueltEeNodeVisitor.h"
#include "infrastructure/QueltInList.h"

#include <memory>

namespace quelt {
class Belongings;
}

class QueltEeBasicEff;
class QueltEeChangeExpression;
class QueltEeEffectivityExpression;
class QueltEeExpressionContext;
class QueltEeExpressionOperation;
class QueltEeGroupOp;
class QueltEeModelDico;
class QueltEeNode;
class QueltEeNodeRef;
class QueltInMap;
class QueltInSet;

class QueltEeGenExprToEeMMExprVisitor;
extern template class QUELT_DATA_MIGRATION_API
    QueltInTyped<QueltEeGenExprToEeMMExprVisitor, QueltEeNodeVisitor>;

/// Walks the tree of one generic expression and builds the multi-model expressions from it: one change
/// expression when a change is converted, up to three effectivity expressions otherwise. It is used once:
/// construct it, let the root node accept it, and, when that succeeded, call generateMapDomainIDToEeExpr. One
/// thread, one conversion.
///
/// Outputs that were not filed, and what a failed walk leaves of them, are not deleted with the visitor. What
/// it has made on its way (groups that join nodes of the tree by alias, copies of dates, operations) goes
/// with its last copy. So every tree that it visits outlives its last visit, and a visitor that works inside
/// an arena is made and destroyed inside it.
class QUELT_DATA_MIGRATION_API QueltEeGenExprToEeMMExprVisitor
    : public QueltInTyped<QueltEeGenExprToEeMMExprVisitor, QueltEeNodeVisitor> {
public:
    static constexpr const char* s_className = "QueltEeGenExprToEeMMExprVisitor";

    /// @param isChange non-zero when the expression is a change.
    /// @param context the dictionaries; not owned, must outlive the visitor.
    /// @param basicEff the basic effectivity whose content is converted, or null; not owned.
    QueltEeGenExprToEeMMExprVisitor(unsigned char isChange, const QueltEeExpressionContext& context,
                                    QueltEeBasicEff* basicEff);
    /// Copies every member as it is; both visitors then refer to the same expressions and share what was made
    /// on the way.
    QueltEeGenExprToEeMMExprVisitor(const QueltEeGenExprToEeMMExprVisitor& other);
    /// Forgets everything; deletes nothing.
    ~QueltEeGenExprToEeMMExprVisitor() override;

    // Called by the nodes' acceptVisitor.

    /// The constants. They are converted at the root, and, with CGE_MigRen, anywhere in an effectivity;
    /// E_NOTIMPL otherwise.
    long visitFalse(QueltEeFalse& node) override;
    long visitTrue(QueltEeTrue& node) override;
    /// Splits a conjunction into its dates, its changes and its evolution/variant part. E_FAIL for what
    /// cannot be split; the result of the part that failed.
    long visitAndOp(QueltEeAndOp& node) override;
    /// As visitAndOp, for a disjunction: its changes are alternatives.
    long visitOrOp(QueltEeOrOp& node) override;
    /// E_NOTIMPL: negation within a domain is deliberately not converted.
    long visitNotDomainOp(QueltEeNotDomainOp& node) override;
    /// As visitAndOp, for a negation: a change is taken away.
    long visitNotOp(QueltEeNotOp& node) override;
    /// A change becomes an operation; a basic effectivity, which may only stand alone, is expanded in its
    /// dictionaries.
    long visitEffLeaf(QueltEeEffLeaf& leaf) override;
    /// A criterion is filed under each dictionary that holds its variable; below the root it is collected for
    /// the operator above. Serial intervals are rewritten in place.
    long visitVarEffLeaf(QueltEeVarEffLeaf& leaf) override;
    /// E_UNEXPECTED: a generic expression has no restrictions.
    long visitRestrictionEffLeaf(QueltEeRestrictionEffLeaf& leaf) override;

    /// Files what the walk built: for a change, the change expression under 2; else the evolution/variant
    /// expression under 2, the history expression under 1 and the constant one under 3, in that order, each
    /// when there is one.
    ///
    /// @param outputMap the map to file into; when null, a new one is made, which the caller owns. The
    ///        expressions belong to the map's owner from then on.
    /// @return the last filing's result; E_FAIL when there is nothing to file; a negative filing result
    ///        ends the operation, what was filed before stays.
    long generateMapDomainIDToEeExpr(QueltInMap*& outputMap);

private:
    class Steps; // what the visits and the analyses are made of

    long analyzePureEVPart(QueltEeNode& node, unsigned char clone);
    long analyzeToFindOutOperationsStack(QueltEeGroupOp& group);
    long exploreNodeRefToFindAllBasicEffs(QueltEeNode& node);
    long generateInheritedNodeRefForDico(const QueltEeModelDico& dico, QueltEeNodeRef*& result);

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
    // Not part of the conversion's state: what was made on the way, for all copies of the visitor together.
    std::shared_ptr<quelt::Belongings> m_pBelongings;
};
