#include "module/support/Conversion.h"

#include <gtest/gtest.h>

#include <memory>

// AND, OR and NOT: evolution/variant parts, changes, inherited effectivities and dates, with cores that fail.

namespace {

using namespace quelt::test;

const Messages s_analysisFailed = {"ERROR : analyzePureEVPart Failed"};

Messages with(Messages first, const Messages& others) {
    first.insert(first.end(), others.begin(), others.end());
    return first;
}

class ConversionOperators : public ConversionTest<> {
protected:
    Garage<ContextDouble>& g = garage;
};
using ConversionByClassifier = ClassifiedConversionTest<>;

TEST_F(ConversionOperators, aLastChildThatIsNoReference) {
    QueltEeNode* const roots[] = {&plant((new GroupWith<QueltEeAndOp>)->showing(*g.truck)),
                                  &plant((new GroupWith<QueltEeOrOp>)->showing(*g.truck))};
    for (QueltEeNode* const root : roots) {
        if (isOptimized()) {
            expectFailure(*root, E_FAIL, {"ERROR : unexpected failure for cast"});
        } else {
            EXPECT_EQ(convert(*root).result, E_FAIL) << "a group without children of its own is nothing";
        }
    }
}

TEST_F(ConversionOperators, childrenThatAreGone) {
    struct Row {
        QueltEeOperator* root;
        const char* optimized;
    };
    const Row rows[] = {{new QueltEeAndOp, "ERROR : an error happened while processing AND node."},
                        {new QueltEeOrOp, "ERROR : an error happened while processing AND node."},
                        {new QueltEeNotOp, "ERROR : childrenAcceptVisitor FAILED"}};
    for (const Row& row : rows) {
        QueltEeNode& root = plant(row.root);
        {
            const std::unique_ptr<QueltEeNodeRef> elsewhere(notOf(v6())->getNodeRef());
            QueltEeNodeRef* const shared = QueltEeNotOp::cast(elsewhere->getNode())->getChildRef();
            QueltEeGroupOp* const group = QueltEeGroupOp::cast(&root);
            ASSERT_EQ(group != nullptr ? group->addChild(*shared->getNode())
                                       : QueltEeNotOp::cast(&root)->setChildRef(*shared),
                      S_OK);
        }
        expectFailure(root, E_POINTER,
                      isOptimized() ? Messages{row.optimized, "ERROR : Accept visitor failed.",
                                               s_analysisFailed.front()}
                                    : Messages{"ERROR : classify FAILED"});
    }
}

// Evolution/variant parts at the root.

TEST_F(ConversionOperators, contextsThatFailForAPart) {
    QueltEeNode* const roots[] = {&plant(allOf({v6(), v8()})), &plant(anyOf({v6(), v8()})),
                                  &plant(notOf(v6()))};
    g.context.m_namesResult = s_coreFailure;
    for (QueltEeNode* const root : roots) {
        for (const unsigned char isChange : s_bothModes) {
            expectFailure(*root, E_FAIL,
                          {"ERROR : GetAllDictionariesByName from Context FAILED",
                           "ERROR, QueltEeGetApplyingMDsVisitor failed at some point",
                           s_analysisFailed.front()},
                          isChange);
        }
    }
    g.context.m_namesResult = S_OK;
    g.context.m_featureResult = s_coreFailure;
    expectFailure(*roots[2], s_coreFailure,
                  {"ERROR : Call to QueltEeExpressionContext::GetSetOfMDsContainingFeature() has failed.",
                   "ERROR : childrenAcceptVisitor FAILED", "ERROR : Accept visitor failed.",
                   s_analysisFailed.front()});
    expectFailure(*roots[1], s_coreFailure,
                  {"ERROR : Call to QueltEeExpressionContext::GetSetOfMDsContainingFeature() has failed.",
                   "ERROR : an error happened while processing AND node.", "ERROR : Accept visitor failed.",
                   s_analysisFailed.front()});
}

TEST_F(ConversionOperators, setsThatAreMissingAfterTheWalk) {
    const auto part = [this]() -> QueltEeNode& {
        return plant(allOf({leafOf<Silent<QueltEeVarEffLeaf>>(new QueltEeOptionEff(g.engine))}));
    };
    g.context.m_makePossible = [] { return nullptr; };
    expectFailure(part(), E_FAIL,
                  {"ERROR : Null pointer on PosssibleMDs set.",
                   "ERROR : Null pointer on RelatedMDs has been returned.", s_analysisFailed.front()});
    g.context.m_makePossible = nullptr;
    g.context.m_makeRejected = [] { return nullptr; };
    expectFailure(part(), E_FAIL,
                  {"ERROR : Null pointer on RejectedMDs set.",
                   "ERROR : Null pointer on NotRelatedMDs has been returned.", s_analysisFailed.front()});
    g.context.m_makeRejected = nullptr;
    g.context.m_makePossible = [] { return new SetWith({}); };
    expectFailure(part(), E_FAIL, {"ERROR : No common MD Found ?", s_analysisFailed.front()});
}

TEST_F(ConversionOperators, setsThatHoldWhatIsNoDictionary) {
    for (const unsigned char isChange : s_bothModes) {
        g.context.m_makePossible = [this] { return new SetWith({g.truck, g.engine}); };
        expectFailure(plant(allOf({v6()})), E_FAIL, {"ERROR, unexpected", s_analysisFailed.front()},
                      isChange);
        g.context.m_makePossible = [] { return new SetWith({nullptr}); };
        expectFailure(plant(notOf(v6())), E_FAIL, {"ERROR, unexpected", s_analysisFailed.front()}, isChange);
        g.context.m_makePossible = [this] { return new SetWith({g.truck, g.truck}); };
        expectFailure(plant(anyOf({v6()})), E_ALREADYTHERE,
                      {"ERROR : setModelCriteria failed", s_analysisFailed.front()}, isChange);
    }
}

TEST_F(ConversionOperators, partsThatGiveNoCopy) {
    for (const unsigned char isChange : s_bothModes) {
        expectFailure(plant(allOf({leafOf<Uncloneable<QueltEeVarEffLeaf>>(new QueltEeOptionEff(g.engine))})),
                      E_FAIL, {"ERROR, unexpected", s_analysisFailed.front()}, isChange);
        expectFailure(
            plant(notOf(leafOf<ClonedToNothing<QueltEeVarEffLeaf>>(new QueltEeOptionEff(g.engine)))), E_FAIL,
            {"ERROR, unexpected", s_analysisFailed.front()}, isChange);
    }
}

TEST_F(ConversionOperators, inheritedPartsThatFailForAPart) {
    g.context.m_inheritedResult = s_coreFailure;
    g.context.m_inheritedGoodCalls = 2;
    const Outcome outcome = convertAll({&plant(basicLeaf()), &plant(anyOf({v6(), v8()}))});
    EXPECT_EQ(outcome.result, s_coreFailure);
    EXPECT_EQ(outcome.errors,
              (Messages{"ERROR : GetAllDictionariesForInheritedEffectivity failed",
                        "ERROR : generateInheritedNodeRefForDico Failed", s_analysisFailed.front()}));
}

// Changes.

TEST_F(ConversionOperators, stacksWhoseChildrenFail) {
    const Messages stackFailed = {"ERROR : analyzeToFindOutOperationsStack FAILED."};
    for (const bool isAnd : {true, false}) {
        const auto stack = [&](std::initializer_list<QueltEeNode*> children) -> QueltEeNode& {
            return isAnd ? static_cast<QueltEeNode&>(plant(allOf(children))) : plant(anyOf(children));
        };
        expectFailure(stack({new Refusing, changeLeaf()}), s_coreFailure,
                      {"ERROR : acceptVisitor FAILED.", stackFailed.front()});
        g.context.m_featureResult = s_coreFailure;
        expectFailure(stack({v6(), changeLeaf()}), s_coreFailure,
                      {"ERROR : Call to QueltEeExpressionContext::GetSetOfMDsContainingFeature() has failed.",
                       "ERROR : Accept visitor failed.", "ERROR : analyzePureEVPart FAILED",
                       stackFailed.front()});
        g.context.m_featureResult.reset();
        FadingChange fading(guidOf(70));
        QueltEeNode& root = stack({v6(), new QueltEeEffLeaf(&fading, nullptr)});
        classifyAhead(root);
        fading.m_times = 1; // for the visit of the leaf, and not any more when the operation is added
        const Outcome outcome = convert(root);
        EXPECT_EQ(outcome.result, E_INVALIDARG);
        EXPECT_EQ(outcome.errors, (Messages{"ERROR : addOperation FAILED.", stackFailed.front()}));
    }
}

TEST_F(ConversionOperators, stacksWithForeignChildren) {
    const auto foreign = [this](auto* group) -> QueltEeNode& {
        group->addChild(*changeLeaf());
        group->showing(*g.truck)->showing(
            *QueltEeNodeRef::cast(static_cast<const QueltEeGroupOp*>(group)->getChildren().Get(0)));
        return plant(group);
    };
    const Messages errors = {"ERROR :unexpected", "ERROR : analyzeToFindOutOperationsStack FAILED."};
    expectFailure(foreign(new GroupWith<QueltEeAndOp>), E_FAIL, errors);
    expectFailure(foreign(new GroupWith<QueltEeOrOp>), E_FAIL, errors);
    auto* const empty = new GroupWith<QueltEeAndOp>;
    QueltEeNodeRef nobody;
    empty->addChild(*changeLeaf());
    empty->showing(nobody)->showing(
        *QueltEeNodeRef::cast(static_cast<const QueltEeGroupOp*>(empty)->getChildren().Get(0)));
    expectFailure(plant(empty), E_FAIL, errors);
}

TEST_F(ConversionOperators, stacksOfSomeOtherGroup) {
    const Messages errors = {"ERROR : Cannot cast this group op into a known op",
                             "ERROR : analyzeToFindOutOperationsStack FAILED."};
    expectFailure(plant(filled(new SomeGroup<QueltEeAndOp>, {v6(), v8(), changeLeaf()})), E_FAIL, errors);
    expectFailure(plant(filled(new SomeGroup<QueltEeOrOp>, {v6(), v8(), changeLeaf()})), E_FAIL, errors);
}

TEST_F(ConversionOperators, aStackThatIsToJoinBehindItsFirstChange) {
    const Messages errors = {"ERROR : unexpected", "ERROR : analyzeToFindOutOperationsStack FAILED."};
    expectFailure(plant(allOf({v6(), v8(), changeLeaf(), sport(), v6(), changeLeaf()})), E_FAIL, errors);
    expectFailure(plant(anyOf({v6(), v8(), changeLeaf(), notOf(v6()), v6(), changeLeaf()})), E_FAIL, errors);
}

TEST_F(ConversionOperators, aRefusedNegatedChange) {
    auto* const negation = notOf(new Refusing);
    if (isOptimized()) {
        expectFailure(plant(negation), s_coreFailure,
                      {"ERROR : childrenAcceptVisitor FAILED", "ERROR : Accept visitor failed.",
                       s_analysisFailed.front()});
    } else {
        expectFailure(plant(negation), E_FAIL, {"ERROR : classification is nothing ???"});
    }
}

/// An effectivity leaf that refuses to be visited.
class RefusingEffLeaf : public QueltEeEffLeaf {
public:
    using QueltEeEffLeaf::QueltEeEffLeaf;
    long acceptVisitor(QueltEeNodeVisitor& /*visitor*/) override { return s_coreFailure; }
};

TEST_F(ConversionOperators, aNegatedChangeThatFails) {
    expectFailure(plant(notOf(new RefusingEffLeaf(&g.change, nullptr))), s_coreFailure,
                  {"ERROR : childrenAcceptVisitor on NOT op FAILED"});
    if (!isOptimized()) {
        expectFailure(
            plant(notOf(allOf({v6(), changeLeaf()}))), E_FAIL,
            {"ERROR : do not know how to manage that case. Do not know what that configuration means..."});
    }
}

TEST_F(ConversionOperators, aChangeInAChangeTakesTheExpressionAway) {
    const Messages refused = {"ERROR : a Change Expression should not contain another change."};
    QueltEeNode& option = plant(v6());
    QueltEeNode* const roots[] = {&plant(allOf({v6(), changeLeaf()})), &plant(anyOf({changeLeaf()})),
                                  &plant(notOf(changeLeaf()))};
    for (QueltEeNode* const root : roots) {
        expectFailure(*root, E_FAIL, refused, 1);
        const CapturedErrors captured;
        QueltEeGenExprToEeMMExprVisitor visitor(1, g.context,
                                                nullptr); // on the heap: what is taken away is deleted
        ASSERT_EQ(option.acceptVisitor(visitor), S_OK);
        EXPECT_EQ(root->acceptVisitor(visitor), E_FAIL);
        QueltInMap* map = nullptr;
        EXPECT_EQ(visitor.generateMapDomainIDToEeExpr(map), E_FAIL);
        EXPECT_EQ(captured.texts(), with(refused, {"ERROR : no change expression generated"}));
        QueltInDeleteWithObjects(map);
    }
}

TEST_F(ConversionOperators, datesAndInheritedEffectivitiesAreUnknownToTheFixedRule) {
    if (!isOptimized()) {
        GTEST_SKIP() << "operators are classified";
    }
    expectFailure(
        plant(allOf({v6(), date(0, 1)})), E_FAIL,
        {"ERROR : There is a date when we are supposed to be in a pure EV tree when calling that visitor.",
         "ERROR : an error happened while processing AND node.", "ERROR : Accept visitor failed.",
         s_analysisFailed.front()});
    expectFailure(
        plant(allOf({v6(), basicLeaf()})), E_FAIL,
        {"ERROR : with hypothesis for this algorithm, and current implementation, it is unexpected to arrive "
         "here. Unless this effectivity only has an inherited part...",
         "ERROR : acceptVisitor FAILED.", "ERROR : analyzeToFindOutOperationsStack FAILED."});
}

// Inherited effectivities.

TEST_F(ConversionByClassifier, inheritedEffectivitiesWhereTheyAreRefused) {
    QueltEeNode& mixed = plant(allOf({basicLeaf(), v6()}));
    expectFailure(mixed, E_FAIL, {"ERROR : we are not supposed to have referenced effectivities in a change"},
                  1);
    const Outcome outcome = convertAll({&plant(allOf({changeLeaf()})), &mixed});
    EXPECT_EQ(outcome.result, E_FAIL);
    EXPECT_EQ(outcome.errors, Messages{"ERROR : unexpected case"});
    expectFailure(plant(allOf({allOf({basicLeaf(), v6()}), v8()})), E_FAIL, {"ERROR : unexpected case"});
}

TEST_F(ConversionByClassifier, childrenThatAreNoReferencesBesideInheritedEffectivities) {
    const Messages errors = {"ERROR: Retrieved element isn't a QueltEeNodeRef"};
    QueltEeNodeRef nobody;
    for (QueltInObject* const shown :
         {static_cast<QueltInObject*>(garage.truck), static_cast<QueltInObject*>(&nobody)}) {
        auto* const group = new GroupWith<QueltEeAndOp>;
        filled<QueltEeAndOp>(group, {basicLeaf(), v6()});
        expectFailure(plant(group->showing(*shown)), E_FAIL, errors);
    }
}

TEST_F(ConversionByClassifier, aChildThatCannotBeClassified) {
    auto* const group = new GroupWith<QueltEeAndOp>;
    filled<QueltEeAndOp>(group, {basicLeaf(), v6()});
    QueltEeNode& restriction = plant(new QueltEeRestrictionEffLeaf("text"));
    expectFailure(plant(group->showing(*restriction.getNodeRef())), E_UNEXPECTED, {"ERROR: classify FAILED"});
}

TEST_F(ConversionByClassifier, aChildThatCannotBeTakenOut) {
    auto* const group = new GroupWith<QueltEeAndOp>;
    filled<QueltEeAndOp>(group, {basicLeaf(), v6()});
    group->m_seen.m_refusesRemove = true;
    QueltEeNode& inherited = plant(basicLeaf());
    QueltEeNode& root = plant(group->showing(*inherited.getNodeRef()));
    expectFailure(root, s_coreFailure, {"ERROR, Remove Child inh eff from list children failed"});
    EXPECT_EQ(group->m_seen.GetLength(), 1);
}

TEST_F(ConversionByClassifier, aChildThatCannotBePutBackIsDeleted) {
    auto* const group = new GroupWith<QueltEeAndOp>;
    filled<QueltEeAndOp>(group, {basicLeaf(), v6()});
    plant(group->showing(*basicLeaf()->getNodeRef()));
    group->m_seen.m_refusesSet = true;
    const Outcome outcome = convert(*group);
    EXPECT_EQ(group->m_seen.GetLength(), 0);
    EXPECT_EQ(outcome.errors,
              (Messages{"ERROR : unexpected case", "ERROR : no effectivity expression generated"}))
        << "the second visit meets what the group holds by itself, and finds no child to take out";
}

TEST_F(ConversionByClassifier, inheritedChildrenThatCannotBeExpanded) {
    const char* const failed = "ERROR : exploreNodeRefToFindAllBasicEffs failed";
    expectFailure(
        plant(allOf({v6(), anyOf({basicLeaf(), allOf({basicLeaf()})})})), E_FAIL,
        {"ERROR : unexpected cast result. What we believe to know of the structure might be wrong.", failed});
    expectFailure(plant(allOf({v6(), notOf(basicLeaf())})), E_FAIL,
                  {"ERROR : unexpected, we are supposed to be in inh effs part but we have something else "
                   "than an or or "
                   "a effleaf",
                   failed});
    expectFailure(plant(allOf({v6(), anyOf({basicLeaf(), new QueltEeEffLeaf(nullptr, nullptr)})})), E_FAIL,
                  {"ERROR : unexpected cast result, got sthg other than basic eff", failed});
    auto* const alternatives = new GroupWith<QueltEeOrOp>;
    filled<QueltEeOrOp>(alternatives, {basicLeaf()});
    alternatives->showing(*garage.truck);
    expectFailure(
        plant(allOf({v6(), alternatives})), E_FAIL,
        {"ERROR : unexpected cast result. What we believe to know of the structure might be wrong.", failed});
}

TEST_F(ConversionByClassifier, anInheritedLeafThatIsNoneAnyMore) {
    auto* const leaf = new ForgetfulLeaf(&basic, garage.truck);
    QueltEeNode& root = plant(allOf({v6(), leaf}));
    classifyAhead(root);
    leaf->m_isForgetful = true;
    expectFailure(root, E_FAIL,
                  {"ERROR : unexpected type instead of expected BasicEff.",
                   "ERROR : exploreNodeRefToFindAllBasicEffs failed"});
}

TEST_F(ConversionByClassifier, whatIsLeftMayFailWithoutFailingTheWhole) {
    garage.context.m_inheritedResult = s_coreFailure;
    QueltEeNode& root = plant(allOf({basicLeaf(), v6()}));
    const std::string before = textOf(root);
    const Outcome outcome = convert(root);
    EXPECT_EQ(outcome.result, S_OK);
    EXPECT_EQ(outcome.errors,
              (Messages{"ERROR : GetAllDictionariesForInheritedEffectivity failed",
                        "ERROR : generateInheritedNodeRefForDico Failed", s_analysisFailed.front()}));
    EXPECT_EQ(outcome.map, Messages{"2: effectivity()"});
    EXPECT_EQ(textOf(root), before);
}

// Dates.

TEST_F(ConversionByClassifier, childrenThatAreNoReferencesBesideDates) {
    const Messages errors = {"ERROR : unexpected, child group op is not NodeRef ?"};
    QueltEeNodeRef nobody;
    const auto shows = [&](auto* group, QueltInObject& shown) -> QueltEeNode& {
        EXPECT_EQ(group->addChild(*date(0, 1)), S_OK);
        return plant(group->showing(shown));
    };
    for (QueltInObject* const shown :
         {static_cast<QueltInObject*>(garage.truck), static_cast<QueltInObject*>(&nobody)}) {
        expectFailure(shows(new GroupWith<QueltEeAndOp>, *shown), E_FAIL, errors);
        expectFailure(shows(new GroupWith<QueltEeOrOp>, *shown), E_FAIL, errors);
    }
    auto* const negation = new ForgetfulNot;
    ASSERT_EQ(negation->setChildRef(*date(0, 1)->getNodeRef()), S_OK);
    QueltEeNode& root = plant(negation);
    classifyAhead(root);
    negation->m_isForgetful = true;
    expectFailure(root, E_FAIL, errors);
}

TEST_F(ConversionByClassifier, childrenBesideDatesThatFail) {
    const Messages errors = {"ERROR : acceptVisitor FAILED."};
    expectFailure(plant(allOf({date(0, 1), new Refusing})), s_coreFailure, errors);
    expectFailure(plant(anyOf({date(0, 1), new Refusing})), s_coreFailure, errors);
    expectFailure(plant(notOf(allOf({date(0, 1), new Refusing}))), s_coreFailure, with(errors, errors));
}

TEST_F(ConversionByClassifier, aDateThatIsStillPending) {
    QueltEeNode& below = plant(allOf({changeLeaf()}));
    QueltEeNode& pending = plant(date(0, 1));
    QueltEeNode* const roots[] = {&plant(allOf({date(1, 2), v6()})), &plant(anyOf({date(1, 2)})),
                                  &plant(notOf(date(1, 2)))};
    for (QueltEeNode* const root : roots) {
        const Outcome outcome = convertAll({&below, &pending, root});
        EXPECT_EQ(outcome.result, E_FAIL);
        EXPECT_EQ(outcome.errors, Messages{"ERROR : unexpected here..."});
    }
}

TEST_F(ConversionByClassifier, datesBelowTheRootThatGiveNoCopy) {
    for (QueltEeNode* const leaf :
         {static_cast<QueltEeNode*>(leafOf<Uncloneable<QueltEeVarEffLeaf>>(dates(0, 1))),
          static_cast<QueltEeNode*>(leafOf<ClonedToNothing<QueltEeVarEffLeaf>>(dates(0, 1)))}) {
        auto* const negation = notOf(leaf);
        auto* const both = anyOf({negation, v6()});
        QueltEeNode& root = plant(allOf({both, v8()}));
        const Messages failed(3, "ERROR : acceptVisitor FAILED.");
        expectFailure(root, E_FAIL, with({"ERROR : unexpected"}, failed));
    }
}

TEST_F(ConversionByClassifier, aSecondDateCriterionIsRefused) {
    QueltEeNode& first = plant(date(0, 1));
    QueltEeNode* const roots[] = {&plant(allOf({date(1, 2), v6()})), &plant(anyOf({date(1, 2), date(3, 4)})),
                                  &plant(notOf(date(1, 2)))};
    for (QueltEeNode* const root : roots) {
        const Outcome outcome = convertAll({&first, root});
        EXPECT_EQ(outcome.result, E_ALREADYTHERE);
        EXPECT_EQ(outcome.errors, Messages{"ERROR : setGlobalCriteria FAILED"});
    }
}

TEST_F(ConversionByClassifier, partsBesideDatesThatFail) {
    garage.context.m_featureResult = s_coreFailure;
    const Messages lookUp = {
        "ERROR : Call to QueltEeExpressionContext::GetSetOfMDsContainingFeature() has failed."};
    const Messages group = with(lookUp, {"ERROR : an error happened while processing AND node.",
                                         "ERROR : Accept visitor failed.", s_analysisFailed.front()});
    expectFailure(plant(allOf({date(0, 1), v6(), v8()})), s_coreFailure, group);
    expectFailure(plant(allOf({date(0, 1), v6()})), s_coreFailure,
                  with(lookUp, {"ERROR : Accept visitor failed.", s_analysisFailed.front()}));
    expectFailure(plant(notOf(allOf({date(0, 1), v6(), v8()}))), s_coreFailure, group);
    const Outcome outcome = convert(plant(anyOf({date(0, 1), v6(), v8()})));
    EXPECT_EQ(outcome.errors, Messages{})
        << "an OR drops a part that no earlier one is there to be joined with";
    EXPECT_EQ(outcome.map, Messages{"1: effectivity(global: date in [1970-01-01, 1970-01-02))"});
}

TEST_F(ConversionByClassifier, aNegationWithoutDateIsASuccess) {
    // Only the first look finds a date below.
    QueltEeNode& root = plant(notOf(new Silent<QueltEeAndOp>));
    QueltEeGroupOp* const silent = QueltEeGroupOp::cast(QueltEeNotOp::cast(&root)->getChildRef()->getNode());
    ASSERT_EQ(silent->addChild(*leafOf<Refusing>(dates(0, 1))), S_OK);
    const Outcome outcome = convert(root);
    EXPECT_EQ(outcome.errors,
              (Messages{"ERROR : acceptVisitor FAILED.", "ERROR : no effectivity expression generated"}));
}

} // namespace
