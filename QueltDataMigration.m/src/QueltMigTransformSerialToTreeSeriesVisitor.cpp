#include "QueltMigTransformSerialToTreeSeriesVisitor.h"

#include "MigrationTrace.h"

#include "dictionary/QueltEeModelDico.h"
#include "dictionary/QueltEeSerialVar.h"
#include "dictionary/QueltEeTreeSeriesVar.h"
#include "effectivity/QueltEeEffectivity.h"
#include "effectivity/QueltEeSerialEff.h"
#include "effectivity/QueltEeTreeSeriesEff.h"
#include "expression/QueltEeExpression.h"
#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeOperators.h"
#include "infrastructure/QueltInListVal.h"
#include "infrastructure/QueltInSerialInterval.h"
#include "infrastructure/QueltInTypedDefinition.h"

#include <memory>

template class QueltInTyped<QueltMigTransformSerialToTreeSeriesVisitor, QueltEeNodeVisitor>;

namespace {

using ExternalType = QueltEeSerialVar::SerialExternalType;
using Bound = QueltEeTreeSeriesSelectionBound;

const quelt::MigrationTrace s_trace("QueltMigTransformSerialToTreeSeriesVisitor");

// The numbers by which dictionaries give their branching series out.
constexpr unsigned int s_productTree = 18;
constexpr unsigned int s_manufacturingTree = 19;

/// Both ends are open with this number; -2000000000 is looked up like any other.
constexpr int s_openEnd = QueltInSerialInterval::s_openUpper;

bool isSingle(const QueltInSerialInterval& interval) {
    return interval.getA() == interval.getB();
}

/// The branching series that stands for `flat` in its dictionary. Null, which is reported, when there is
/// none.
const QueltEeTreeSeriesVar* findTreeSeries(const QueltEeSerialVar& flat, ExternalType externalType) {
    const QueltEeModelDico* const holder = flat.getHolderDico();
    if (holder == nullptr) {
        s_trace.fail("ERROR : unexpected to have a series without holder dico");
        return nullptr;
    }
    const QueltEeTreeSeriesVar* const branching = holder->getTreeSeriesVariable(
        externalType == ExternalType::manufacturingSeries ? s_manufacturingTree : s_productTree);
    if (branching == nullptr) {
        s_trace.fail(
            "ERROR : unexpected to not have the TreeSeriesVar at that step... Check migration algorithm.");
    }
    return branching;
}

long requireElement(const QueltEeTreeSeriesElement* element, int number) {
    return element != nullptr
               ? S_OK
               : s_trace.failFor("ERROR : No tree element found for this sequence number : ", number);
}

/// The element with the number of a bound.
long findElement(const QueltEeTreeSeriesVar& series, int number, QueltEeTreeSeriesElement*& element) {
    const long result = series.getElement(static_cast<unsigned int>(number), element);
    return result < 0 ? s_trace.fail("ERROR : getChild FAILED", result) : requireElement(element, number);
}

long findFromElement(const QueltEeTreeSeriesVar& series, int number, QueltEeTreeSeriesElement*& element) {
    if (number != s_openEnd) {
        return findElement(series, number, element);
    }
    element = series.getRootTreeSeriesElement();
    return requireElement(element, number);
}

long selectSingle(const QueltEeTreeSeriesVar& series, int number, QueltEeTreeSeriesSelection& selection) {
    QueltEeTreeSeriesElement* element = nullptr;
    long result = findElement(series, number, element);
    if (result < 0) {
        return result;
    }
    result = selection.setSingleSelection(Bound(element, 1));
    return result < 0 ? s_trace.fail("ERROR : setSingleSelection for SubTree FAILED, unexpected", result)
                      : result;
}

long selectFrom(const QueltEeTreeSeriesVar& series, int number, unsigned char included,
                QueltEeTreeSeriesSelection& selection) {
    QueltEeTreeSeriesElement* element = nullptr;
    long result = findFromElement(series, number, element);
    if (result < 0) {
        return result;
    }
    result = selection.setFromBound(Bound(element, included));
    return result < 0 ? s_trace.fail("ERROR : setFromBound for SubTree FAILED, unexpected", result) : result;
}

/// The flag of the interval does not count: a way includes the element that it ends at.
long selectTo(const QueltEeTreeSeriesVar& series, int number, QueltEeTreeSeriesSelection& selection) {
    QueltEeTreeSeriesElement* element = nullptr;
    long result = findElement(series, number, element);
    if (result < 0) {
        return result;
    }
    result = selection.addToBound(Bound(element, 1));
    return result < 0 ? s_trace.fail("ERROR : addToBound for SubTree FAILED, unexpected", result) : result;
}

} // namespace

long quelt::selectInterval(const QueltEeTreeSeriesVar& series, const QueltInSerialInterval& interval,
                           QueltEeTreeSeriesSelection& selection) {
    if (isSingle(interval)) {
        return selectSingle(series, interval.getA(), selection);
    }
    const long result = selectFrom(series, interval.getA(), interval.getAIncl(), selection);
    if (result < 0 || interval.getB() == s_openEnd) {
        return result;
    }
    return selectTo(series, interval.getB(), selection);
}

QueltMigTransformSerialToTreeSeriesVisitor::QueltMigTransformSerialToTreeSeriesVisitor(
    const QueltEeExpressionContext& context)
    : m_pContext(&context) {
    const quelt::MethodTrace scope(s_trace, "QueltMigTransformSerialToTreeSeriesVisitor");
}

QueltMigTransformSerialToTreeSeriesVisitor::~QueltMigTransformSerialToTreeSeriesVisitor() {
    const quelt::MethodTrace scope(s_trace, "~QueltMigTransformSerialToTreeSeriesVisitor");
}

unsigned char QueltMigTransformSerialToTreeSeriesVisitor::singleSelectionMade() const {
    const quelt::MethodTrace scope(s_trace, "singleSelectionMade");
    return m_bSingleSelectionMade;
}

long QueltMigTransformSerialToTreeSeriesVisitor::visitFalse(QueltEeFalse& /*node*/) {
    const quelt::MethodTrace scope(s_trace, "visitFalse");
    return S_OK;
}

long QueltMigTransformSerialToTreeSeriesVisitor::visitTrue(QueltEeTrue& /*node*/) {
    const quelt::MethodTrace scope(s_trace, "visitTrue");
    return S_OK;
}

long QueltMigTransformSerialToTreeSeriesVisitor::visitGroup(QueltEeOperator& group) {
    const long result = group.childrenAcceptVisitor(*this);
    // An OR reports itself with these words too.
    return result < 0 ? s_trace.fail("ERROR : an error happened while processing AND node.", result) : result;
}

long QueltMigTransformSerialToTreeSeriesVisitor::visitAndOp(QueltEeAndOp& node) {
    const quelt::MethodTrace scope(s_trace, "visitAndOp");
    return visitGroup(node);
}

long QueltMigTransformSerialToTreeSeriesVisitor::visitOrOp(QueltEeOrOp& node) {
    const quelt::MethodTrace scope(s_trace, "visitOrOp");
    return visitGroup(node);
}

long QueltMigTransformSerialToTreeSeriesVisitor::visitNotDomainOp(QueltEeNotDomainOp& /*node*/) {
    const quelt::MethodTrace scope(s_trace, "visitNotDomainOp");
    return S_OK;
}

long QueltMigTransformSerialToTreeSeriesVisitor::visitNotOp(QueltEeNotOp& node) {
    const quelt::MethodTrace scope(s_trace, "visitNotOp");
    const long result = node.childrenAcceptVisitor(*this);
    return result < 0 ? s_trace.fail("ERROR : childrenAcceptVisitor FAILED", result) : result;
}

long QueltMigTransformSerialToTreeSeriesVisitor::visitEffLeaf(QueltEeEffLeaf& leaf) {
    const quelt::MethodTrace scope(s_trace, "visitEffLeaf");
    QueltEeEffectivity* const target = leaf.getTargetEff();
    if (target == nullptr) {
        return s_trace.fail("ERROR : unexpected");
    }
    // Another walk over the same expression finds nothing to rewrite, and where effectivities name each other
    // more than once, there would be twice as many walks with every level. Only a trace shows them.
    if (!s_trace.isActivated() && m_rewritten.contains(target)) {
        return S_OK;
    }
    QueltEeExpression* expression = nullptr;
    long result = target->removeExpr(expression);
    if (result < 0) {
        return s_trace.fail("ERROR : removeExpr FAILED", result);
    }
    if (expression != nullptr) {
        result = expression->runConstVisitor(*this);
        if (result < 0) {
            return s_trace.fail("ERROR : runConstVisitor FAILED", result); // and the expression stays out
        }
        m_rewritten.insert(target);
    }
    target->setExpr(expression);
    return result;
}

long QueltMigTransformSerialToTreeSeriesVisitor::visitVarEffLeaf(QueltEeVarEffLeaf& leaf) {
    const quelt::MethodTrace scope(s_trace, "visitVarEffLeaf");
    const QueltEeSerialEff* const flat = QueltEeSerialEff::cast(leaf.getVarEff());
    if (flat == nullptr) {
        return S_OK;
    }
    const QueltEeSerialVar* const series = flat->getOrdVar();
    if (series == nullptr) {
        return s_trace.fail("ERROR : unexpected");
    }
    const ExternalType externalType = series->getExternalType();
    if (externalType == ExternalType::unitCounter) {
        return S_OK;
    }
    const QueltEeTreeSeriesVar* const treeSeries = findTreeSeries(*series, externalType);
    if (treeSeries == nullptr) {
        return E_FAIL;
    }
    auto branching = std::make_unique<QueltEeTreeSeriesEff>(*treeSeries);
    const long result = addSelections(*flat, *branching);
    if (result < 0) {
        return result;
    }
    if (flat->isNegated() != 0) {
        branching->opNot();
    }
    if (flat->getNoVar() != 0) {
        branching->switchNoVar();
    }
    leaf.setVarEff(*branching.release());
    return S_OK;
}

long QueltMigTransformSerialToTreeSeriesVisitor::visitRestrictionEffLeaf(
    QueltEeRestrictionEffLeaf& /*leaf*/) {
    const quelt::MethodTrace scope(s_trace, "visitRestrictionEffLeaf");
    return S_OK;
}

long QueltMigTransformSerialToTreeSeriesVisitor::addSelections(const QueltEeSerialEff& flat,
                                                               QueltEeTreeSeriesEff& branching) {
    QueltInListVal intervals(QueltInSerialInterval::sType());
    long result = flat.getIntervals(intervals);
    if (result < 0) {
        return s_trace.fail("ERROR : getIntervals FAILED", result);
    }
    auto values = intervals.cBegin();
    for (int left = intervals.GetLength(); left > 0; --left) {
        const QueltInSerialInterval* const interval = QueltInSerialInterval::cast(values.GetGoToNext());
        if (interval == nullptr) {
            return s_trace.fail("ERROR : unexpected cast failure.");
        }
        if (isSingle(*interval)) {
            m_bSingleSelectionMade = 1;
        }
        QueltEeTreeSeriesSelection selection;
        result = quelt::selectInterval(*branching.getTreeVar(), *interval, selection);
        if (result < 0) {
            return result;
        }
        result = branching.addSelection(selection);
        if (result < 0) {
            return s_trace.fail("ERROR: setSelection FAILED", result);
        }
    }
    return S_OK;
}
