#include "QueltEeGetApplyingMDsVisitor.h"

#include "module/support/Conversion.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using namespace quelt::test;
using Visitor = QueltEeGetApplyingMDsVisitor;
using Interval = QueltEeSerialEff::Interval;
using OwnedSet = std::unique_ptr<QueltInSet>;

Messages namesIn(const QueltInSet& set) {
    Messages names;
    auto elements = set.cBegin();
    while (const QueltInObject* const element = elements.GetGoToNext()) {
        names.push_back(textOf(*element));
    }
    return names;
}

/// The garage's truck and van, and a bus that only has the packages.
class ApplyingDictionaries : public ConversionTest<> {
protected:
    ApplyingDictionaries() {
        EXPECT_EQ(bus->addVariable(new QueltEeSelectionVar("Package", guidOf(4))), S_OK);
        EXPECT_EQ(garage.context.AddModelDico(bus, 1), S_OK);
    }

    /// Visits the tree with a new visitor; then takes the sets.
    void visit(QueltEeNode& root, const QueltEeBasicEff* inherited = nullptr) {
        m_possible.clear();
        m_rejected.clear();
        const CapturedErrors captured;
        Visitor visitor(&garage.context, inherited);
        m_result = root.acceptVisitor(visitor);
        m_succeeded = visitor.succeeded() != 0;
        QueltInSet* possible = nullptr;
        QueltInSet* rejected = nullptr;
        EXPECT_EQ(visitor.getSetOfApplyingMDs(possible, rejected), S_OK);
        if (m_succeeded) {
            const OwnedSet ownedPossible(possible);
            const OwnedSet ownedRejected(rejected);
            m_possible = possible != nullptr ? namesIn(*possible) : Messages{"null"};
            m_rejected = rejected != nullptr ? namesIn(*rejected) : Messages{"null"};
        } else {
            EXPECT_EQ(possible, nullptr);
            EXPECT_EQ(rejected, nullptr);
        }
        m_errors = captured.texts();
    }
    void expectLeafFailure(QueltEeNode* leaf, long result, const Messages& errors) {
        visit(plant(leaf));
        EXPECT_EQ(m_result, result);
        EXPECT_EQ(m_errors, errors);
        EXPECT_TRUE(m_succeeded) << "a leaf's failure is told by the result only";
    }

    QueltEeModelDico* bus = new QueltEeModelDico("Bus", guidOf(30));
    long m_result = S_OK;
    bool m_succeeded = false;
    Messages m_possible;
    Messages m_rejected;
    Messages m_errors;
};

TEST_F(ApplyingDictionaries, isRegisteredBelowTheVisitors) {
    Visitor visitor(&garage.context, nullptr);
    EXPECT_STREQ(Visitor::sType()->getName(), "QueltEeGetApplyingMDsVisitor");
    EXPECT_EQ(Visitor::sType()->getParent(), QueltEeNodeVisitor::sType());
    EXPECT_EQ(visitor.dType(), Visitor::sType());
    QueltInObject& object = visitor;
    EXPECT_EQ(Visitor::cast(object), &visitor);
    EXPECT_EQ(Visitor::cast(*bus), nullptr);
}

TEST_F(ApplyingDictionaries, startsWithEveryDictionary) {
    visit(plant(new QueltEeTrue));
    EXPECT_EQ(m_result, S_OK);
    EXPECT_TRUE(m_succeeded);
    EXPECT_EQ(m_possible, (Messages{"Truck", "Van", "Bus"}));
    EXPECT_EQ(m_rejected, Messages{});
}

TEST_F(ApplyingDictionaries, startsWithThoseOfTheInheritedEffectivity) {
    visit(plant(new QueltEeFalse), &basic);
    EXPECT_EQ(m_possible, Messages{"Truck"});
    EXPECT_EQ(m_rejected, Messages{});
    visit(plant(v6()), &basic);
    EXPECT_EQ(garage.context.m_pInheritedSeen, &basic);
    EXPECT_EQ(m_possible, Messages{"Truck"});
}

TEST_F(ApplyingDictionaries, keepsThoseThatHoldEveryFeature) {
    visit(plant(v6()));
    EXPECT_EQ(m_result, S_OK);
    EXPECT_EQ(m_possible, Messages{"Truck"});
    EXPECT_EQ(m_rejected, (Messages{"Van", "Bus"}));
    visit(plant(sport()));
    EXPECT_EQ(m_possible, (Messages{"Truck", "Bus"}));
    EXPECT_EQ(m_rejected, Messages{"Van"});
    visit(plant(anyOf({sport(), notOf(v6())})));
    EXPECT_EQ(m_possible, Messages{"Truck"});
    EXPECT_EQ(m_rejected, (Messages{"Van", "Bus"}));
    EXPECT_EQ(garage.context.m_pInheritedSeen, nullptr);
}

TEST_F(ApplyingDictionaries, tracesEveryOperation) {
    QueltEeNode& root = plant(allOf({anyOf({new QueltEeTrue, new QueltEeFalse}), notOf(v6())}));
    const CapturedTrace captured;
    {
        Visitor visitor(&garage.context, nullptr);
        ASSERT_EQ(root.acceptVisitor(visitor), S_OK);
        EXPECT_NE(visitor.succeeded(), 0);
        QueltInSet* possible = nullptr;
        QueltInSet* rejected = nullptr;
        ASSERT_EQ(visitor.getSetOfApplyingMDs(possible, rejected), S_OK);
        delete possible;
        delete rejected;
    }
    EXPECT_EQ(captured.texts(), (Messages{"> QueltEeGetApplyingMDsVisitor",
                                          "< QueltEeGetApplyingMDsVisitor",
                                          "> visitAndOp",
                                          "> visitOrOp",
                                          "> visitTrue",
                                          "< visitTrue",
                                          "> visitFalse",
                                          "< visitFalse",
                                          "< visitOrOp",
                                          "> visitNotOp",
                                          "> visitVarEffLeaf",
                                          "< visitVarEffLeaf",
                                          "< visitNotOp",
                                          "< visitAndOp",
                                          "> succeeded",
                                          "< succeeded",
                                          "> getSetOfApplyingMDs",
                                          "< getSetOfApplyingMDs",
                                          "> ~QueltEeGetApplyingMDsVisitor",
                                          "< ~QueltEeGetApplyingMDsVisitor"}));
    for (const QueltInTraceLine& line : captured.lines()) {
        EXPECT_EQ(line.className, "QueltEeGetApplyingMDsVisitor");
        EXPECT_EQ(line.domainName, "QueltDataMigration");
        EXPECT_GT(line.lineNumber, 0);
    }
}

TEST_F(ApplyingDictionaries, namesItsSourceFileInErrorReports) {
    QueltEeNode& root = plant(basicLeaf());
    const CapturedErrors captured;
    Visitor visitor(&garage.context, nullptr);
    EXPECT_EQ(root.acceptVisitor(visitor), E_FAIL);
    ASSERT_EQ(captured.lines().size(), 2U);
    EXPECT_TRUE(captured.lines().front().text.starts_with(
        "[ERROR] QueltDataMigration.m/src/QueltEeGetApplyingMDsVisitor.cpp("))
        << captured.lines().front().text;
}

TEST_F(ApplyingDictionaries, aFailedConstructionIsToldBySucceeded) {
    struct Row {
        const QueltEeBasicEff* inherited;
        std::function<void(ContextDouble&)> fail;
        const char* message;
    };
    const MapWith foreign({garage.truck, garage.engine});
    const MapWith withNull({nullptr});
    const Row rows[] = {{nullptr, [](ContextDouble& context) { context.m_namesResult = s_coreFailure; },
                         "ERROR : GetAllDictionariesByName from Context FAILED"},
                        {&basic, [](ContextDouble& context) { context.m_inheritedResult = s_coreFailure; },
                         "ERROR : GetAllDictionariesForInheritedEffectivity from Context FAILED"},
                        {nullptr, [](ContextDouble& context) { context.m_names = nullptr; }, "ERROR"},
                        {&basic, [](ContextDouble& context) { context.m_inherited = nullptr; }, "ERROR"},
                        {nullptr, [&](ContextDouble& context) { context.m_names = &foreign; }, "ERROR"},
                        {nullptr, [&](ContextDouble& context) { context.m_names = &withNull; }, "ERROR"}};
    for (const Row& row : rows) {
        garage.context.m_names.reset();
        garage.context.m_inherited.reset();
        garage.context.m_namesResult = garage.context.m_inheritedResult = S_OK;
        row.fail(garage.context);
        visit(plant(new QueltEeTrue), row.inherited);
        EXPECT_EQ(m_result, S_OK) << "the visits themselves do not ask";
        EXPECT_FALSE(m_succeeded);
        EXPECT_EQ(m_errors, Messages{row.message});
    }
}

TEST_F(ApplyingDictionaries, aSeriesHasNothingToNarrowAfterAFailedConstruction) {
    garage.context.m_names = nullptr;
    for (QueltEeVarEff* const effectivity :
         {static_cast<QueltEeVarEff*>(new QueltEeSerialEff(garage.unit)),
          static_cast<QueltEeVarEff*>(new QueltEeTreeSeriesEff(garage.line))}) {
        visit(plant(leafOf(effectivity)));
        EXPECT_EQ(m_result, E_FAIL);
        EXPECT_EQ(m_errors,
                  (Messages{"ERROR", "ERROR : an error must have logged before, m_pPossibleMDs is NULL"}));
        EXPECT_FALSE(m_succeeded);
    }
}

TEST_F(ApplyingDictionaries, aFeatureAfterAFailedConstructionDoesNotMakeItGood) {
    garage.context.m_namesResult = s_coreFailure;
    visit(plant(v6()));
    EXPECT_EQ(m_result, S_OK) << "the context made new sets";
    EXPECT_FALSE(m_succeeded) << "which are deleted again";
}

TEST_F(ApplyingDictionaries, succeededMayBeAskedTwice) {
    garage.context.m_names = nullptr;
    const CapturedErrors captured;
    Visitor visitor(&garage.context, nullptr);
    EXPECT_EQ(visitor.succeeded(), 0);
    EXPECT_EQ(visitor.succeeded(), 0);
}

TEST_F(ApplyingDictionaries, refusesToOverwriteASet) {
    Visitor visitor(&garage.context, nullptr);
    QueltInSet other(QueltInObject::sType());
    QueltInSet* taken = &other;
    QueltInSet* none = nullptr;
    const CapturedErrors captured;
    EXPECT_EQ(visitor.getSetOfApplyingMDs(taken, none), E_FAIL);
    EXPECT_EQ(visitor.getSetOfApplyingMDs(none, taken), E_FAIL);
    EXPECT_EQ(taken, &other);
    EXPECT_EQ(none, nullptr);
    const char* const message =
        "ERROR : At least one of QueltInSet pointer parameter isn't null, pointed object may be lost.";
    EXPECT_EQ(captured.texts(), (Messages{message, message}));
    QueltInSet* possible = nullptr;
    QueltInSet* rejected = nullptr;
    EXPECT_EQ(visitor.getSetOfApplyingMDs(possible, rejected), S_OK) << "nothing was given away before";
    const OwnedSet ownedPossible(possible);
    const OwnedSet ownedRejected(rejected);
    EXPECT_EQ(possible->GetLength(), 3);
}

TEST_F(ApplyingDictionaries, setsGivenAwayOutliveTheVisitor) {
    OwnedSet possible;
    OwnedSet rejected;
    {
        QueltEeNode& root = plant(v6());
        Visitor visitor(&garage.context, nullptr);
        ASSERT_EQ(root.acceptVisitor(visitor), S_OK);
        QueltInSet* first = nullptr;
        QueltInSet* second = nullptr;
        ASSERT_EQ(visitor.getSetOfApplyingMDs(first, second), S_OK);
        possible.reset(first);
        rejected.reset(second);
        first = second = nullptr;
        EXPECT_EQ(visitor.getSetOfApplyingMDs(first, second), S_OK) << "the visitor keeps its pointers";
        EXPECT_EQ(first, possible.get());
        EXPECT_EQ(second, rejected.get());
    }
    EXPECT_EQ(namesIn(*possible), Messages{"Truck"});
    EXPECT_EQ(namesIn(*rejected), (Messages{"Van", "Bus"}));
}

TEST_F(ApplyingDictionaries, aLaterFailureLeavesSetsThatWereGivenAwayToTheirOwner) {
    QueltEeNode& good = plant(v6());
    QueltEeNode& bad = plant(allOf({basicLeaf()}));
    const CapturedErrors captured;
    Visitor visitor(&garage.context, nullptr);
    ASSERT_EQ(good.acceptVisitor(visitor), S_OK);
    QueltInSet* possible = nullptr;
    QueltInSet* rejected = nullptr;
    ASSERT_EQ(visitor.getSetOfApplyingMDs(possible, rejected), S_OK);
    const OwnedSet ownedPossible(possible);
    const OwnedSet ownedRejected(rejected);
    EXPECT_EQ(bad.acceptVisitor(visitor), E_FAIL);
    EXPECT_EQ(visitor.succeeded(), 0);
    EXPECT_EQ(namesIn(*possible), Messages{"Truck"});
}

TEST_F(ApplyingDictionaries, setsOfItsOwnGoWithTheVisitor) {
    QueltEeNode& root = plant(v6());
    Visitor visitor(&garage.context, nullptr);
    EXPECT_EQ(root.acceptVisitor(visitor), S_OK); // a leak would be reported at the end of the program
}

TEST_F(ApplyingDictionaries, refusesWhatIsNoEvolutionVariantPart) {
    QueltEeNode& domain = plant(new QueltEeNotDomainOp);
    QueltEeNode& effectivity = plant(basicLeaf());
    QueltEeNode& restriction = plant(new QueltEeRestrictionEffLeaf("text"));
    Visitor visitor(&garage.context, nullptr);
    const CapturedTrace captured;
    EXPECT_EQ(domain.acceptVisitor(visitor), E_FAIL);
    EXPECT_EQ(effectivity.acceptVisitor(visitor), E_FAIL);
    EXPECT_EQ(restriction.acceptVisitor(visitor), E_UNEXPECTED);
    EXPECT_EQ(
        captured.texts(),
        (Messages{
            "> visitNotDomainOp",
            "ERROR : I have no idea of what is this thing and what is its potential use, so I did not "
            "implement this.",
            "< visitNotDomainOp", "> visitEffLeaf",
            "ERROR : Call to QueltEeGetApplyingMDsVisitor::visitEffLeaf, this visitor is supposed to be "
            "performed on an EV Tree only.",
            "< visitEffLeaf", "ERROR : RestrictionEff are unexpected at this level"}));
    EXPECT_EQ(captured.lines().back().text, "ERROR : RestrictionEff are unexpected at this level")
        << "one line";
    EXPECT_EQ(captured.lines().back().methodName, "");
    EXPECT_EQ(captured.lines().size(), 4U + 2U * 2U + 1U) << "no line says where the restriction was met";
    EXPECT_NE(visitor.succeeded(), 0);
}

TEST_F(ApplyingDictionaries, andAndOrRememberAFailureAndNotDoesNot) {
    const char* const group = "ERROR : an error happened while processing AND node.";
    const char* const negation = "ERROR : childrenAcceptVisitor FAILED";
    struct Row {
        QueltEeNode* root;
        bool succeeds;
        Messages errors;
    };
    const Row rows[] = {{allOf({v6(), new Refusing, v8()}), false, {group}},
                        {anyOf({new Refusing}), false, {group}},
                        {notOf(new Refusing), true, {negation}},
                        {notOf(notOf(new Refusing)), true, {negation, negation}},
                        {notOf(anyOf({new Refusing})), false, {group, negation}},
                        {allOf({notOf(new Refusing)}), false, {negation, group}},
                        {allOf({anyOf({new Refusing})}), false, {group, group}}};
    for (const Row& row : rows) {
        visit(plant(row.root));
        EXPECT_EQ(m_result, s_coreFailure);
        EXPECT_EQ(m_succeeded, row.succeeds) << textOf(*row.root);
        EXPECT_EQ(m_errors, row.errors);
    }
}

TEST_F(ApplyingDictionaries, theFirstFailingChildEndsTheWalk) {
    visit(plant(notOf(allOf(
        {new Silent<QueltEeVarEffLeaf>(new QueltEeOptionEff(garage.engine)), date(0, 1), basicLeaf()}))));
    EXPECT_EQ(m_result, E_FAIL);
    EXPECT_EQ(
        m_errors,
        (Messages{"ERROR : There is a date when we are supposed to be in a pure EV tree when calling that "
                  "visitor.",
                  "ERROR : an error happened while processing AND node.",
                  "ERROR : childrenAcceptVisitor FAILED"}));
}

TEST_F(ApplyingDictionaries, aChildWithoutNodeIsTheCoresFailure) {
    auto* const group = new QueltEeAndOp;
    QueltEeNode& root = plant(group);
    {
        const std::unique_ptr<QueltEeNodeRef> elsewhere(allOf({v6()})->getNodeRef());
        QueltEeGroupOp* const other = QueltEeGroupOp::cast(elsewhere->getNode());
        ASSERT_EQ(group->addChild(*QueltEeNodeRef::cast(other->getChildren().Get(0))->getNode()), S_OK);
    }
    visit(root);
    EXPECT_EQ(m_result, E_POINTER);
    EXPECT_EQ(m_errors, Messages{"ERROR : an error happened while processing AND node."});
}

TEST_F(ApplyingDictionaries, leavesThatCannotBeUnderstood) {
    expectLeafFailure(new QueltEeVarEffLeaf, E_FAIL, {"Wow. THAT is unexpected !!! :'( "});
    expectLeafFailure(leafOf(new SixthEff), E_FAIL,
                      {"ERROR : Unexpected child, type of QueltEeVarEff is invalid."});
    expectLeafFailure(
        date(0, 1), E_FAIL,
        {"ERROR : There is a date when we are supposed to be in a pure EV tree when calling that "
         "visitor."});
    expectLeafFailure(leafOf(new OnVariable<QueltEeOptionEff>(nullptr)), E_FAIL, {"ERROR : unexpected"});
    expectLeafFailure(leafOf(new OnVariable<QueltEeSelectionEff>(nullptr)), E_FAIL, {"ERROR : unexpected"});
    expectLeafFailure(leafOf(new OnVariable<QueltEeSerialEff>(nullptr)), E_FAIL, {"ERROR : unexpected"});
    expectLeafFailure(leafOf(new OnVariable<QueltEeTreeSeriesEff>(nullptr)), E_FAIL, {"ERROR : unexpected"});
    expectLeafFailure(leafOf(new OnVariable<QueltEeOptionEff>(garage.unit)), E_FAIL,
                      {"ERROR : unexpected again"});
    expectLeafFailure(leafOf(new OnVariable<QueltEeSelectionEff>(garage.engine)), E_FAIL,
                      {"ERROR : unexpected"});
    expectLeafFailure(leafOf(new OnVariable<QueltEeSerialEff>(garage.engine)), E_FAIL,
                      {"ERROR : unexpected"});
    expectLeafFailure(leafOf(new OnVariable<QueltEeTreeSeriesEff>(garage.engine)), E_FAIL,
                      {"ERROR : unexpected"});
}

TEST_F(ApplyingDictionaries, seriesWithoutHolder) {
    const QueltEeSerialVar unit("Unit", guidOf(40), QueltEeSerialVar::SerialExternalType::productSeries);
    const QueltEeTreeSeriesVar line("Line", guidOf(41), 18);
    auto* const serial = new QueltEeSerialEff(&unit);
    serial->addInterval({5, 9, 1, 1});
    expectLeafFailure(leafOf(serial), E_FAIL, {"ERROR : unexpected"});
    EXPECT_EQ(serial->intervals().front(), (Interval{5, 9, 1, 1}));
    EXPECT_EQ(m_possible, (Messages{"Truck", "Van", "Bus"})) << "before anything is narrowed";
    expectLeafFailure(leafOf(new QueltEeTreeSeriesEff(line)), E_FAIL, {"ERROR : unexpected"});
    EXPECT_EQ(m_possible, (Messages{"Truck", "Van", "Bus"}));
}

TEST_F(ApplyingDictionaries, featureLookUpsThatFail) {
    const ContextDouble::MakeSet none = [] { return nullptr; };
    struct Row {
        std::optional<long> result;
        ContextDouble::MakeSet possible;
        ContextDouble::MakeSet rejected;
        long expected;
        const char* message;
    };
    const Row rows[] = {
        {s_coreFailure,
         {},
         {},
         s_coreFailure,
         "ERROR : Call to QueltEeExpressionContext::GetSetOfMDsContainingFeature() has failed."},
        {s_coreFailure, none, none, s_coreFailure,
         "ERROR : Call to QueltEeExpressionContext::GetSetOfMDsContainingFeature() has failed."},
        {1, none, {}, E_FAIL, "ERROR : Null pointer on PosssibleMDs set."},
        {1, {}, none, E_FAIL, "ERROR : Null pointer on RejectedMDs set."},
        {S_OK, none, none, E_FAIL, "ERROR : Null pointer on PosssibleMDs set."},
        {1, {}, {}, E_FAIL, "ERROR : Unable to find one MD containing current QueltEeCatOptionVar."}};
    for (const Row& row : rows) {
        garage.context.m_featureResult = row.result;
        garage.context.m_makePossible = row.possible;
        garage.context.m_makeRejected = row.rejected;
        expectLeafFailure(v6(), row.expected, {row.message});
    }
    garage.context.m_makePossible = garage.context.m_makeRejected = nullptr;
    garage.context.m_featureResult = 1;
    expectLeafFailure(sport(), E_FAIL,
                      {"ERROR : Unable to find one MD containing current QueltEeSelectionVar."});
    garage.context.m_featureResult = 2;
    visit(plant(v6()));
    EXPECT_EQ(m_result, 2) << "any other result is a success";
    EXPECT_EQ(m_errors, Messages{});
}

TEST_F(ApplyingDictionaries, theContextMayReplaceTheSets) {
    garage.context.m_makePossible = [this] { return new SetWith({bus}); };
    garage.context.m_makeRejected = [this] { return new SetWith({garage.van, garage.truck}); };
    visit(plant(v6()));
    EXPECT_EQ(m_result, S_OK);
    EXPECT_EQ(m_possible, Messages{"Bus"});
    EXPECT_EQ(m_rejected, (Messages{"Van", "Truck"}));
}

TEST_F(ApplyingDictionaries, aSeriesImposesItsHolder) {
    auto* const car = new QueltEeModelDico("Car", guidOf(42)); // not in the context
    const std::unique_ptr<QueltEeModelDico> owned(car);
    auto* const doors =
        new QueltEeSerialVar("Doors", guidOf(43), QueltEeSerialVar::SerialExternalType::unitCounter);
    auto* const tree = new QueltEeTreeSeriesVar("Tree", guidOf(44), 19);
    ASSERT_EQ(car->addVariable(doors), S_OK);
    ASSERT_EQ(car->addVariable(tree), S_OK);
    for (QueltEeVarEff* const effectivity : {static_cast<QueltEeVarEff*>(new QueltEeSerialEff(doors)),
                                             static_cast<QueltEeVarEff*>(new QueltEeTreeSeriesEff(tree))}) {
        visit(plant(leafOf(effectivity)));
        EXPECT_EQ(m_result, S_OK);
        EXPECT_EQ(m_possible, Messages{"Car"}) << "although it was not possible";
        EXPECT_EQ(m_rejected, (Messages{"Truck", "Van", "Bus"}));
    }
    visit(plant(leafOf(new QueltEeSerialEff(garage.unit))));
    EXPECT_EQ(m_possible, Messages{"Truck"});
    EXPECT_EQ(m_rejected, (Messages{"Van", "Bus"}));
    visit(plant(allOf({v6(), leafOf(new QueltEeTreeSeriesEff(tree))})));
    EXPECT_EQ(m_possible, Messages{"Truck"}) << "a single possible dictionary stays";
    EXPECT_EQ(m_rejected, (Messages{"Van", "Bus"}));
    visit(plant(allOf({sport(), leafOf(new QueltEeTreeSeriesEff(tree))})));
    EXPECT_EQ(m_possible, Messages{"Car"});
    EXPECT_EQ(m_rejected, (Messages{"Van", "Truck", "Bus"}));
}

TEST_F(ApplyingDictionaries, narrowingThatASetRefuses) {
    garage.context.m_makePossible = [this] { return new SetWith({garage.truck, bus}); };
    garage.context.m_makeRejected = [] { return new SetWith({}, true); };
    QueltEeNode& serial = plant(notOf(allOf({v6(), leafOf(new QueltEeSerialEff(garage.unit))})));
    const Messages around = {"ERROR : an error happened while processing AND node.",
                             "ERROR : childrenAcceptVisitor FAILED"};
    const auto with = [&around](const char* first) {
        Messages all{first};
        all.insert(all.end(), around.begin(), around.end());
        return all;
    };
    visit(serial);
    EXPECT_EQ(m_result, E_FAIL);
    EXPECT_EQ(m_errors, with("ERROR : Unable to put possible MDs set into rejected MDs set."));
    garage.context.m_makePossible = [this] {
        auto* const refusing = new SetWith({garage.truck, bus});
        refusing->m_refusesPut = true;
        return refusing;
    };
    garage.context.m_makeRejected = [] { return new SetWith({}); };
    visit(serial);
    EXPECT_EQ(m_result, E_FAIL);
    EXPECT_EQ(m_errors, with("ERROR : unexpected"));
    visit(plant(notOf(allOf({v6(), leafOf(new QueltEeTreeSeriesEff(garage.line))}))));
    EXPECT_EQ(m_result, E_FAIL);
    EXPECT_EQ(m_errors, with("ERROR : unexpected"));
}

TEST_F(ApplyingDictionaries, aSetThatIsGoneCannotBeNarrowed) {
    garage.context.m_makePossible = [] { return nullptr; };
    visit(plant(notOf(allOf({new Silent<QueltEeVarEffLeaf>(new QueltEeOptionEff(garage.engine)),
                             leafOf(new QueltEeSerialEff(garage.unit))}))));
    EXPECT_EQ(m_result, E_FAIL);
    EXPECT_EQ(m_errors[1], "ERROR : an error must have logged before, m_pPossibleMDs is NULL");
    garage.context.m_makePossible = nullptr;
    garage.context.m_makeRejected = [] { return nullptr; };
    visit(plant(notOf(allOf({new Silent<QueltEeVarEffLeaf>(new QueltEeSelectionEff(garage.package)),
                             leafOf(new QueltEeTreeSeriesEff(garage.line))}))));
    EXPECT_EQ(m_result, E_FAIL);
    EXPECT_EQ(m_errors[1], "ERROR : an error must have logged before, m_pPossibleMDs is NULL");
}

TEST_F(ApplyingDictionaries, rewritesTheIntervalsOfASeries) {
    const auto visited = [this](const QueltEeSerialVar* variable, Interval interval) {
        auto* const effectivity = new QueltEeSerialEff(variable);
        effectivity->addInterval(interval);
        visit(plant(leafOf(effectivity)));
        EXPECT_EQ(m_result, S_OK);
        return effectivity->intervals().front();
    };
    // The unit's model years 2010 and 2012 are 2009 and 2011 renumbered, and stand for 5 and 7.
    const Interval below = isRenumbering() ? Interval{5, 8, 1, 1} : Interval{4, 8, 1, 1};
    EXPECT_EQ(visited(garage.unit, {5, 9, 0, 0}), below);
    const Interval between = isRenumbering() ? Interval{5, 7, 1, 0} : Interval{2009, 2010, 1, 1};
    EXPECT_EQ(visited(garage.unit, {2010, 2011, 0, 0}), between);
    const Interval last = isRenumbering() ? Interval{0, 2000000000, 1, 1} : Interval{99998, 2011, 1, 1};
    EXPECT_EQ(visited(garage.unit, {99999, 2012, 0, 0}), last);
    const Interval open = {-2000000000, 2000000000, 1, 1};
    EXPECT_EQ(visited(garage.unit, {-2000000000, 2000000000, 0, 0}), open);
    auto* const counter =
        new QueltEeSerialVar("Count", guidOf(45), QueltEeSerialVar::SerialExternalType::unitCounter);
    ASSERT_EQ(garage.truck->addVariable(counter), S_OK);
    const Interval untouched = {5, 9, 0, 1};
    EXPECT_EQ(visited(counter, untouched), untouched);
}

TEST_F(ApplyingDictionaries, serialEffectivitiesThatCannotBeRewritten) {
    const auto leaf = [this](long getResult, long setResult, bool isForeign) {
        auto* const effectivity = new SerialEffDouble(garage.unit);
        effectivity->m_getResult = getResult;
        effectivity->m_setResult = setResult;
        effectivity->m_hasForeignInterval = isForeign;
        return leafOf(effectivity);
    };
    expectLeafFailure(leaf(s_coreFailure, S_OK, false), s_coreFailure, {"ERROR : getIntervals failed."});
    expectLeafFailure(leaf(S_OK, s_coreFailure, false), s_coreFailure, {"ERROR, set new intervals FAILED."});
    expectLeafFailure(leaf(S_OK, S_OK, true), E_FAIL, {"ERROR : unexpected type"});
    EXPECT_EQ(m_possible, Messages{"Truck"}) << "the holder was imposed before";
}

TEST_F(ApplyingDictionaries, revisionTablesThatCannotBeRead) {
    auto* const without = new SerialVarWithRevisions(guidOf(46), nullptr);
    const MapWith foreign({garage.engine});
    auto* const withForeign = new SerialVarWithRevisions(guidOf(47), &foreign);
    const MapWith null({nullptr});
    auto* const withNull = new SerialVarWithRevisions(guidOf(48), &null);
    for (SerialVarWithRevisions* const variable : {without, withForeign, withNull}) {
        auto* const other = new QueltEeModelDico(QueltInString("Car"), guidOf(49));
        const std::unique_ptr<QueltEeModelDico> owned(other);
        ASSERT_EQ(other->addVariable(variable), S_OK);
        auto* const effectivity = new QueltEeSerialEff(variable);
        effectivity->addInterval({5, 9, 1, 1});
        QueltEeVarEffLeaf leaf(effectivity);
        visit(leaf);
        EXPECT_EQ(m_result, isRenumbering() ? E_FAIL : S_OK);
        const char* const message = variable == without ? "ERROR : getSeqNb2Revisions failed" : "ERROR";
        EXPECT_EQ(m_errors, isRenumbering() ? Messages{message} : Messages{});
        EXPECT_EQ(effectivity->intervals().front().a, isRenumbering() ? 5 : 4);
    }
}

} // namespace
