#pragma once

#include "expression/QueltEeNodeVisitor.h"

class QueltEeBasicEff;
class QueltEeExpressionContext;
class QueltEeModelDico;
class QueltEeOperator;
class QueltEeSerialEff;
class QueltEeVarEff;
class QueltInSet;

/// Walks a pure evolution/variant tree and finds the dictionaries that it can apply to: those that hold every
/// feature of the tree. On its way it rewrites the intervals of serial effectivities, in place, as the
/// conversion of a leaf does.
class QueltEeGetApplyingMDsVisitor : public QueltInTyped<QueltEeGetApplyingMDsVisitor, QueltEeNodeVisitor> {
public:
    static constexpr const char* s_className = "QueltEeGetApplyingMDsVisitor";

    /// Every dictionary of `context` is possible at the start, or those of the inherited effectivity of
    /// `inheritedEff` when it is not null; none is rejected. Neither is owned. What fails here is told by
    /// succeeded().
    QueltEeGetApplyingMDsVisitor(const QueltEeExpressionContext* context,
                                 const QueltEeBasicEff* inheritedEff);
    QueltEeGetApplyingMDsVisitor(const QueltEeGetApplyingMDsVisitor&) = delete;
    QueltEeGetApplyingMDsVisitor& operator=(const QueltEeGetApplyingMDsVisitor&) = delete;
    /// Deletes the sets, unless they were given away.
    ~QueltEeGetApplyingMDsVisitor() override;

    /// Non-zero unless the construction, or the visit of an AND or an OR, failed; the sets are deleted then.
    unsigned char succeeded();
    /// Gives the possible and the rejected dictionaries away, to the caller, who owns the sets from then on.
    /// E_FAIL, and nothing is given away, unless both pointers are null.
    long getSetOfApplyingMDs(QueltInSet*& possible, QueltInSet*& rejected);

    long visitFalse(QueltEeFalse& node) override;
    long visitTrue(QueltEeTrue& node) override;
    long visitAndOp(QueltEeAndOp& node) override;
    long visitOrOp(QueltEeOrOp& node) override;
    long visitNotDomainOp(QueltEeNotDomainOp& node) override;
    long visitNotOp(QueltEeNotOp& node) override;
    long visitEffLeaf(QueltEeEffLeaf& leaf) override;
    long visitVarEffLeaf(QueltEeVarEffLeaf& leaf) override;
    long visitRestrictionEffLeaf(QueltEeRestrictionEffLeaf& leaf) override;

private:
    long putCandidates();
    long visitGroup(QueltEeOperator& group);
    long visitSerial(QueltEeSerialEff& effectivity);
    long visitTreeSeries(const QueltEeVarEff& effectivity);
    template <class Variable>
    long visitFeature(const QueltEeVarEff& effectivity, const char* wrongKind, const char* notFound);
    long narrowToHolder(QueltEeModelDico& holder);
    void deleteSets();

    QueltInSet* m_pPossibleMDs = nullptr;
    QueltInSet* m_pRejectedMDs = nullptr;
    const QueltEeExpressionContext* m_pContext;
    unsigned char m_bErrorOccurred = 0;
    unsigned char m_bSetsGivenAway = 0;
    const QueltEeBasicEff* m_pInheritedEff;
};
extern template class QueltInTyped<QueltEeGetApplyingMDsVisitor, QueltEeNodeVisitor>;
