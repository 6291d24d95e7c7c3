// Programs that were built against the headers call virtual operations by their place in the class's table.
// The places in the first part are agreed on with everybody who has such classes. Those in the second part
// have merely come about; they stay for the sake of the programs that were built since the first release.

#include "QueltEeGenExprToEeMMExprVisitor.h"
#include "QueltReconstituteEffectivityFromCompiledBinary.h"

#include "compiled/QueltFltDomainEffectivity.h"
#include "compiled/QueltFltEffectivity.h"
#include "compiled/QueltFltEffectivityView.h"
#include "compiled/QueltIDictionaryModelerAccess.h"
#include "dictionary/QueltEeModelDico.h"
#include "dictionary/QueltEeNamedValueVar.h"
#include "dictionary/QueltEeSerialVar.h"
#include "dictionary/QueltEeTreeSeriesVar.h"
#include "effectivity/QueltEeDateEff.h"
#include "effectivity/QueltEeEffectivity.h"
#include "effectivity/QueltEeNamedValueEff.h"
#include "effectivity/QueltEeSerialEff.h"
#include "effectivity/QueltEeTreeSeriesEff.h"
#include "expression/QueltEVCClassification.h"
#include "expression/QueltEeExpressionContext.h"
#include "expression/QueltEeFilterExpression.h"
#include "expression/QueltEeGenericExpression.h"
#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeMultiModelExpression.h"
#include "expression/QueltEeNodeVisitor.h"
#include "expression/QueltEeOperators.h"
#include "expression/QueltQmSpecList.h"
#include "infrastructure/QueltInLinkList.h"
#include "infrastructure/QueltInList.h"
#include "infrastructure/QueltInListVal.h"
#include "infrastructure/QueltInMap.h"
#include "infrastructure/QueltInMapVal.h"
#include "infrastructure/QueltInSet.h"
#include "infrastructure/QueltInString.h"
#include "infrastructure/QueltInTraceSink.h"

#include "linked/support/VirtualSlots.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <vector>

namespace {

using quelt::test::inARow;
using quelt::test::slotCount;
using quelt::test::slotOf;

using Slots = std::vector<int>;
using Leaf = QueltEeNodeElementaryLeaf;
using Build = long (Leaf::*)(const Leaf&, QueltEeNodeRef*&) const;
using BuildNot = long (Leaf::*)(QueltEeNodeRef*&) const;
using Combine = long (Leaf::*)(const Leaf&);
using CombineNot = long (Leaf::*)();

class Specimen {
public:
    virtual ~Specimen() = default;
    virtual void first() {}
    void plain() {}
    virtual int second(int) const { return 0; }
};

class SpecimenBelow : public Specimen {
public:
    int second(int) const override { return 1; }
    virtual void third() {}
};

TEST(VirtualSlots, AreReadAsTheCompilerLaysThemOut) {
    EXPECT_EQ(slotOf(&Specimen::first), 1);
    EXPECT_EQ(slotOf(&Specimen::plain), -1);
    EXPECT_EQ(slotOf(&Specimen::second), 2);
    EXPECT_EQ(slotOf(&SpecimenBelow::second), 2);
    EXPECT_EQ(slotOf(&SpecimenBelow::third), 3);
    EXPECT_EQ(slotCount<Specimen>(), 3);
    EXPECT_EQ(slotCount<SpecimenBelow>(), 4);
    EXPECT_NE(inARow(1, Slots{slotOf(&Specimen::second), slotOf(&Specimen::first)}), (Slots{2, 1}));
}

// Agreed on.

template <class Class>
void expectObjectSlots() {
    EXPECT_TRUE(std::has_virtual_destructor_v<Class>);
    EXPECT_EQ(slotOf(&Class::dType), 1);
    EXPECT_EQ(slotOf(&Class::toString), 2);
}

template <class Class>
void expectNodeSlots() {
    expectObjectSlots<Class>();
    EXPECT_EQ(slotOf(&Class::acceptVisitor), 3);
    EXPECT_EQ(slotOf(&Class::clone), 4);
}

template <class Class>
void expectOperatorSlots() {
    expectNodeSlots<Class>();
    const Slots slots{slotOf(&Class::deleteChildren), slotOf(&Class::removeChildren),
                      slotOf(&Class::getChildrenRefs), slotOf(&Class::childrenAcceptVisitor)};
    EXPECT_EQ(slots, inARow(5, slots));
}

template <class Class>
void expectVisitorSlots() {
    expectObjectSlots<Class>();
    const Slots slots{slotOf(&Class::visitFalse),
                      slotOf(&Class::visitTrue),
                      slotOf(&Class::visitAndOp),
                      slotOf(&Class::visitOrOp),
                      slotOf(&Class::visitNotDomainOp),
                      slotOf(&Class::visitNotOp),
                      slotOf(&Class::visitEffLeaf),
                      slotOf(&Class::visitVarEffLeaf),
                      slotOf(&Class::visitRestrictionEffLeaf)};
    EXPECT_EQ(slots, inARow(3, slots));
    EXPECT_EQ(slotCount<Class>(), 12);
}

template <class Class>
void expectVarEffSlots() {
    expectObjectSlots<Class>();
    const Slots slots{slotOf(&Class::createVarEffClone),
                      slotOf(&Class::getVar),
                      slotOf(&Class::equals),
                      slotOf(&Class::opAnd),
                      slotOf(&Class::opOr),
                      slotOf(&Class::opCut),
                      slotOf(&Class::opNot),
                      slotOf(&Class::opNotDom),
                      slotOf(&Class::isNegated),
                      slotOf(&Class::isNoVarIncluded),
                      slotOf(&Class::getNoVar),
                      slotOf(&Class::isAllFalse),
                      slotOf(&Class::isAllTrue),
                      slotOf(&Class::switchNoVar)};
    EXPECT_EQ(slots, inARow(3, slots));
}

TEST(VirtualSlotsAgreed, OfObjects) {
    expectObjectSlots<QueltInObject>();
    EXPECT_EQ(slotCount<QueltInObject>(), 3);
}

TEST(VirtualSlotsAgreed, OfGroups) {
    expectOperatorSlots<QueltEeAndOp>();
    expectOperatorSlots<QueltEeOrOp>();
    const Slots slots{
        slotOf(&QueltEeAndOp::becomeIfSingleChild),   slotOf(&QueltEeAndOp::becomeIfNoOrSingleChild),
        slotOf(&QueltEeAndOp::becomeIfNoChild),       slotOf(&QueltEeAndOp::hasStrongNode),
        slotOf(&QueltEeAndOp::becomeIfHasStrongNode), slotOf(&QueltEeAndOp::removeWeakNodes)};
    EXPECT_EQ(slots, inARow(9, slots));
    const Slots ofOr{slotOf(&QueltEeOrOp::becomeIfSingleChild), slotOf(&QueltEeOrOp::becomeIfNoOrSingleChild),
                     slotOf(&QueltEeOrOp::becomeIfNoChild)};
    EXPECT_EQ(ofOr, inARow(9, ofOr));
}

TEST(VirtualSlotsAgreed, OfNegations) {
    expectOperatorSlots<QueltEeNotOp>();
}

TEST(VirtualSlotsAgreed, OfEffectivityLeaves) {
    expectNodeSlots<QueltEeEffLeaf>();
    const Slots slots{
        slotOf(static_cast<Build>(&Leaf::opAnd)),      slotOf(static_cast<Build>(&Leaf::opOr)),
        slotOf(static_cast<BuildNot>(&Leaf::opNot)),   slotOf(&QueltEeEffLeaf::isEquivalentToTrue),
        slotOf(&QueltEeEffLeaf::isEquivalentToFalse),  slotOf(&QueltEeEffLeaf::convertToTrueFalse),
        slotOf(static_cast<Combine>(&Leaf::opAnd)),    slotOf(static_cast<Combine>(&Leaf::opOr)),
        slotOf(static_cast<CombineNot>(&Leaf::opNot)), slotOf(&QueltEeEffLeaf::getConstraintCriterion),
        slotOf(&QueltEeEffLeaf::getTargetEff),         slotOf(&QueltEeEffLeaf::getReferencedContext),
        slotOf(&QueltEeEffLeaf::setReferencedContext), slotOf(&QueltEeEffLeaf::isNegated)};
    EXPECT_EQ(slots, inARow(5, slots));
    EXPECT_EQ(slotCount<QueltEeEffLeaf>(), 19);
}

TEST(VirtualSlotsAgreed, OfVisitors) {
    expectVisitorSlots<QueltEeNodeVisitor>();
    expectVisitorSlots<QueltEeGenExprToEeMMExprVisitor>();
    static_assert(std::is_same_v<decltype(&QueltEeGenExprToEeMMExprVisitor::toString),
                                 QueltInString (QueltInObject::*)() const>,
                  "the root's, not overridden");
}

TEST(VirtualSlotsAgreed, OfExpressions) {
    expectObjectSlots<QueltEeExpression>();
    EXPECT_EQ(slotOf(&QueltEeExpression::runConstVisitor), 3);
    EXPECT_EQ(slotCount<QueltEeExpression>(), 4);
}

TEST(VirtualSlotsAgreed, OfFilters) {
    using Filter = QueltEeFilterExpression;
    expectObjectSlots<Filter>();
    const Slots slots{slotOf(&Filter::runConstVisitor), slotOf(&Filter::simplify), slotOf(&Filter::getDNF),
                      slotOf(&Filter::getNotDNF), slotOf(&Filter::runVisitor)};
    EXPECT_EQ(slots, inARow(3, slots));
    EXPECT_EQ(slotCount<Filter>(), 8);
}

template <class Expression>
void expectMultiModelSlots() {
    expectObjectSlots<Expression>();
    const Slots slots{slotOf(&Expression::runConstVisitor), slotOf(&Expression::simplify),
                      slotOf(&Expression::setGlobalCriteria), slotOf(&Expression::develop)};
    EXPECT_EQ(slots, inARow(3, slots));
}

TEST(VirtualSlotsAgreed, OfMultiModelExpressions) {
    expectMultiModelSlots<QueltEeMultiModelExpression>();
    expectMultiModelSlots<QueltEeChangeExpression>();
    expectMultiModelSlots<QueltEeEffectivityExpression>();
    expectObjectSlots<QueltEeMultiModelExpression::ModelCriteria>();
    EXPECT_EQ(slotCount<QueltEeMultiModelExpression::ModelCriteria>(), 3);
}

TEST(VirtualSlotsAgreed, OfVariableEffectivities) {
    expectVarEffSlots<QueltEeVarEff>();
    expectVarEffSlots<QueltEeOptionEff>();
    expectVarEffSlots<QueltEeSelectionEff>();
    expectVarEffSlots<QueltEeSerialEff>();
    expectVarEffSlots<QueltEeTreeSeriesEff>();
    expectVarEffSlots<QueltEeDateEff>();
    EXPECT_EQ(slotCount<QueltEeVarEff>(), 17);
    EXPECT_EQ(slotOf(&QueltEeTreeSeriesEff::addSelection), 17);
}

TEST(VirtualSlotsAgreed, OfChangeOperations) {
    using Element = QueltReconstituteEffectivityFromCompiledBinary::OperationStackElement;
    expectObjectSlots<Element>();
    EXPECT_EQ(slotCount<Element>(), 3);
    static_assert(std::is_same_v<decltype(&Element::toString), QueltInString (QueltInObject::*)() const>,
                  "the root's, not overridden");
}

/// Virtual without an agreed slot.
TEST(VirtualSlotsAgreed, AccessorsAreVirtual) {
    EXPECT_GT(slotOf(&QueltEeBasicEff::getOwnNodeRef), 2);
    EXPECT_GT(slotOf(&QueltEeTreeSeriesVar::getHolderDico), 2);
    EXPECT_GT(slotOf(&QueltEeEffLeaf::getTargetEff), 2);
    EXPECT_GT(slotOf(&QueltInString::clone), 2);
    EXPECT_GT(slotOf(&QueltInMap::BinHashFunc), 2);
}

TEST(VirtualSlotsAgreed, ContainersAndIteratorsAreDeletedThroughTheirDestructors) {
    EXPECT_TRUE(std::has_virtual_destructor_v<QueltInMap>);
    EXPECT_TRUE(std::has_virtual_destructor_v<QueltInMapVal>);
    EXPECT_TRUE(std::has_virtual_destructor_v<QueltInSet>);
    EXPECT_TRUE(std::has_virtual_destructor_v<QueltInList>);
    EXPECT_TRUE(std::has_virtual_destructor_v<QueltInListVal>);
    EXPECT_TRUE(std::has_virtual_destructor_v<QueltInLinkList>);
    EXPECT_TRUE(std::has_virtual_destructor_v<QueltInMap::const_iterator>);
    EXPECT_TRUE(std::has_virtual_destructor_v<QueltInMapVal::const_iterator>);
    EXPECT_TRUE(std::has_virtual_destructor_v<QueltInSet::const_iterator>);
    EXPECT_TRUE(std::has_virtual_destructor_v<QueltInList::const_iterator>);
    EXPECT_TRUE(std::has_virtual_destructor_v<QueltInListVal::const_iterator>);
    EXPECT_TRUE(std::has_virtual_destructor_v<QueltInLinkList::const_iterator>);
    EXPECT_TRUE(std::has_virtual_destructor_v<QueltInLinkList::iterator>);
}

// Kept since the first release.

TEST(VirtualSlotsKept, OfValues) {
    const Slots slots{slotOf(&QueltInObjectVal::clone), slotOf(&QueltInObjectVal::equals),
                      slotOf(&QueltInObjectVal::hash), slotOf(&QueltInObjectVal::BinHashFunc)};
    EXPECT_EQ(slots, inARow(3, slots));
    EXPECT_EQ(slotCount<QueltInObjectVal>(), 7);
}

TEST(VirtualSlotsKept, OfContainers) {
    const Slots ofMaps{slotOf(&QueltInMap::Put), slotOf(&QueltInMap::Get)};
    EXPECT_EQ(ofMaps, inARow(7, ofMaps));
    EXPECT_EQ(slotCount<QueltInMapVal>(), 7);
    const Slots ofSets{slotOf(&QueltInSet::Put),    slotOf(&QueltInSet::Find),
                       slotOf(&QueltInSet::Remove), slotOf(&QueltInSet::Clear),
                       slotOf(&QueltInSet::PutSet), slotOf(&QueltInSet::badCastErr)};
    EXPECT_EQ(ofSets, inARow(7, ofSets));
    const Slots ofLists{slotOf(&QueltInList::PutBack), slotOf(&QueltInList::badCastErr)};
    EXPECT_EQ(ofLists, inARow(7, ofLists));
    EXPECT_EQ(slotOf(&QueltInListVal::PutBack), 7);
    const Slots ofLinkLists{slotOf(&QueltInLinkList::Set), slotOf(&QueltInLinkList::Remove),
                            slotOf(&QueltInLinkList::RemoveEach), slotOf(&QueltInLinkList::SetEach),
                            slotOf(&QueltInLinkList::PopBack)};
    EXPECT_EQ(ofLinkLists, inARow(7, ofLinkLists));
}

TEST(VirtualSlotsKept, OfOperatorsBehindTheAgreedOnes) {
    const Slots ofAnd{
        slotOf(&QueltEeAndOp::addChild),
        slotOf(static_cast<QueltInLinkList& (QueltEeGroupOp::*)()>(&QueltEeAndOp::getChildren))};
    EXPECT_EQ(ofAnd, inARow(15, ofAnd));
    const Slots ofOr{slotOf(&QueltEeOrOp::hasStrongNode), slotOf(&QueltEeOrOp::becomeIfHasStrongNode),
                     slotOf(&QueltEeOrOp::removeWeakNodes), slotOf(&QueltEeOrOp::addChild)};
    EXPECT_EQ(ofOr, inARow(12, ofOr));
    const Slots ofNot{slotOf(&QueltEeNotOp::getChildRef), slotOf(&QueltEeNotOp::setChildRef)};
    EXPECT_EQ(ofNot, inARow(9, ofNot));
    expectOperatorSlots<QueltEeNotDomainOp>();
    const Slots ofNotDomain{slotOf(&QueltEeNotDomainOp::getChildRef),
                            slotOf(&QueltEeNotDomainOp::setChildRef)};
    EXPECT_EQ(ofNotDomain, inARow(9, ofNotDomain));
}

TEST(VirtualSlotsKept, OfLeaves) {
    expectNodeSlots<QueltEeTrue>();
    expectNodeSlots<QueltEeFalse>();
    expectNodeSlots<QueltEeVarEffLeaf>();
    expectNodeSlots<QueltEeRestrictionEffLeaf>();
    EXPECT_EQ(slotCount<Leaf>(), 15);
    const Slots slots{slotOf(&QueltEeVarEffLeaf::getVarEff), slotOf(&QueltEeVarEffLeaf::setVarEff)};
    EXPECT_EQ(slots, inARow(15, slots));
}

/// Names the protected operations.
class OpenExpression : public QueltEeMultiModelExpression {
public:
    static Slots protectedSlots() {
        return {slotOf(&OpenExpression::kindName), slotOf(&OpenExpression::describeOperations)};
    }
};

TEST(VirtualSlotsKept, OfExpressionsBehindTheAgreedOnes) {
    using Expression = QueltEeMultiModelExpression;
    const Slots slots{slotOf(&Expression::setModelCriteria), slotOf(&Expression::getContextDictionaries)};
    EXPECT_EQ(slots, inARow(7, slots));
    EXPECT_EQ(OpenExpression::protectedSlots(), (Slots{9, 10}));
    EXPECT_EQ(slotOf(&QueltEeEffectivityExpression::addOperation), 11);
    const Slots ofGeneric{
        slotOf(&QueltEeGenericExpression::runConstVisitor), slotOf(&QueltEeGenericExpression::IsList),
        slotOf(&QueltEeGenericExpression::GetList), slotOf(&QueltEeGenericExpression::GetMode),
        slotOf(&QueltEeGenericExpression::GetNodeRef)};
    EXPECT_EQ(ofGeneric, inARow(3, ofGeneric));
}

TEST(VirtualSlotsKept, OfContextsClassifiersAndLists) {
    using Context = QueltEeExpressionContext;
    const Slots ofContexts{slotOf(&Context::AddModelDico), slotOf(&Context::GetModelDico),
                           slotOf(&Context::GetAllDictionariesByName),
                           slotOf(&Context::GetAllDictionariesForInheritedEffectivity),
                           slotOf(&Context::GetSetOfMDsContainingFeature)};
    EXPECT_EQ(ofContexts, inARow(3, ofContexts));
    EXPECT_EQ(slotOf(&QueltCoreEVC_NodeClassifier::classify), 3);
    using List = QueltQmSpecList;
    const Slots ofLists{
        slotOf(&List::addVarEff), slotOf(&List::getVarEffs),
        slotOf(static_cast<QueltInSet& (List::*)()>(&List::getNamedEffectivities)),
        slotOf(static_cast<const QueltInSet& (List::*)() const>(&List::getNamedEffectivities))};
    EXPECT_EQ(ofLists, inARow(3, ofLists));
}

TEST(VirtualSlotsKept, OfEffectivities) {
    const Slots slots{slotOf(&QueltEeEffectivity::getExpr), slotOf(&QueltEeEffectivity::setExpr),
                      slotOf(&QueltEeEffectivity::removeExpr), slotOf(&QueltEeEffectivity::getOrigin)};
    EXPECT_EQ(slots, inARow(3, slots));
    EXPECT_EQ(slotOf(&QueltEeBasicEff::getOwnNodeRef), 7);
    const Slots ofSerial{slotOf(&QueltEeSerialEff::getOrdVar), slotOf(&QueltEeSerialEff::getIntervals),
                         slotOf(&QueltEeSerialEff::set)};
    EXPECT_EQ(ofSerial, inARow(17, ofSerial));
    using Selection = QueltEeTreeSeriesSelection;
    const Slots ofSelections{slotOf(&Selection::setSingleSelection), slotOf(&Selection::setFromBound),
                             slotOf(&Selection::addToBound)};
    EXPECT_EQ(ofSelections, inARow(3, ofSelections));
}

TEST(VirtualSlotsKept, OfDictionariesAndVariables) {
    EXPECT_EQ(slotOf(&QueltEeModelDico::getTreeSeriesVariable), 3);
    EXPECT_EQ(slotOf(&QueltEeVariable::getHolderDico), 3);
    EXPECT_EQ(slotCount<QueltEeCatOptionVar>(), 4);
    EXPECT_EQ(slotCount<QueltEeSelectionVar>(), 4);
    EXPECT_EQ(slotOf(&QueltEeSerialVar::getExternalType), 4);
    EXPECT_EQ(slotOf(&QueltEeSerialVar::getSeqNb2Revisions), 5);
    EXPECT_EQ(slotOf(&QueltEeSerialVarValue::getRev), 3);
    EXPECT_EQ(slotOf(&QueltEeSerialVarValue::getSeqNumber), 4);
    EXPECT_EQ(slotOf(&QueltEeTreeSeriesVar::getElement), 4);
    EXPECT_EQ(slotOf(&QueltEeTreeSeriesVar::getRootTreeSeriesElement), 5);
}

TEST(VirtualSlotsKept, OfCompiledEffectivities) {
    EXPECT_EQ(slotOf(&QueltFltEffectivity::getNbDomainEffectivity), 3);
    EXPECT_EQ(slotOf(&QueltFltEffectivity::getDomainEffectivity), 4);
    EXPECT_EQ(slotOf(&QueltFltDomainEffectivity::getEffectivityView), 3);
    EXPECT_EQ(slotOf(&QueltFltEffectivityView::getDnf), 3);
}

/// Roots of their own: the first operation stands behind the destructor.
TEST(VirtualSlotsKept, OfWhatHostsImplement) {
    EXPECT_EQ(slotOf(&QueltInTraceSink::write), 1);
    EXPECT_EQ(slotOf(&QueltIDictionaryModelerAccess::findEffectivity), 1);
    EXPECT_EQ(slotOf(&QueltIDictionaryModelerAccess::findOption), 2);
}

} // namespace
