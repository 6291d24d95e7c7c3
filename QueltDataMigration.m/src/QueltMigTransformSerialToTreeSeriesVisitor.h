#pragma once

#include "expression/QueltEeNodeVisitor.h"

#include <unordered_set>

class QueltEeEffectivity;
class QueltEeExpressionContext;
class QueltEeOperator;
class QueltEeSerialEff;
class QueltEeTreeSeriesEff;
class QueltEeTreeSeriesSelection;
class QueltEeTreeSeriesVar;
class QueltInSerialInterval;

/// Turns flat series into branching ones: every serial effectivity that it comes to, but those on unit
/// counters, gives way to a tree-series effectivity with one selection for each interval. It goes into the
/// expressions of the effectivities that leaves refer to, too; each is out of its effectivity for the time of
/// its visit, so that effectivities which refer to each other in a circle come to an end.
class QueltMigTransformSerialToTreeSeriesVisitor
    : public QueltInTyped<QueltMigTransformSerialToTreeSeriesVisitor, QueltEeNodeVisitor> {
public:
    static constexpr const char* s_className = "QueltMigTransformSerialToTreeSeriesVisitor";

    /// `context` (not owned) is where the expressions belong.
    explicit QueltMigTransformSerialToTreeSeriesVisitor(const QueltEeExpressionContext& context);
    QueltMigTransformSerialToTreeSeriesVisitor(const QueltMigTransformSerialToTreeSeriesVisitor&) = delete;
    QueltMigTransformSerialToTreeSeriesVisitor&
    operator=(const QueltMigTransformSerialToTreeSeriesVisitor&) = delete;
    ~QueltMigTransformSerialToTreeSeriesVisitor() override;

    /// Non-zero once an interval with equal bounds was met that was to become a single selection, also when
    /// the visit failed afterwards.
    unsigned char singleSelectionMade() const;

    long visitFalse(QueltEeFalse& node) override;
    long visitTrue(QueltEeTrue& node) override;
    long visitAndOp(QueltEeAndOp& node) override;
    long visitOrOp(QueltEeOrOp& node) override;
    /// Leaves what is below as it is.
    long visitNotDomainOp(QueltEeNotDomainOp& node) override;
    long visitNotOp(QueltEeNotOp& node) override;
    /// After a failure inside, the expression is not given back to its effectivity.
    long visitEffLeaf(QueltEeEffLeaf& leaf) override;
    /// After a failure, the leaf keeps its serial effectivity.
    long visitVarEffLeaf(QueltEeVarEffLeaf& leaf) override;
    long visitRestrictionEffLeaf(QueltEeRestrictionEffLeaf& leaf) override;

private:
    long visitGroup(QueltEeOperator& group);
    long addSelections(const QueltEeSerialEff& flat, QueltEeTreeSeriesEff& branching);

    [[maybe_unused]] const QueltEeExpressionContext* m_pContext;
    unsigned char m_bSingleSelectionMade = 0;
    // Not part of the visitor's state as others see it: whose expressions it has rewritten.
    std::unordered_set<const QueltEeEffectivity*> m_rewritten;
};
extern template class QueltInTyped<QueltMigTransformSerialToTreeSeriesVisitor, QueltEeNodeVisitor>;

namespace quelt {

/// Gives `selection`, which is empty, the bounds of `interval` among the elements of `series`: a single
/// element for equal bounds, whatever their flags; else from the lower bound, the root for an open end,
/// to the upper bound, which is always included, or to the leaves for an open end. Not negative on success;
/// after a failure, which is reported, the selection is not to be used.
long selectInterval(const QueltEeTreeSeriesVar& series, const QueltInSerialInterval& interval,
                    QueltEeTreeSeriesSelection& selection);

} // namespace quelt
