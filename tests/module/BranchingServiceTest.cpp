#include "QueltEeTarselMigrationServices.h"

#include "module/support/BranchingWorld.h"

#include "infrastructure/QueltInIntHolder.h"
#include "infrastructure/QueltInMap.h"

#include <gtest/gtest.h>

// The second service: a map of expressions, branched in place.

namespace {

using namespace quelt::test;
using Services = QueltEeTarselMigrationServices;

constexpr const char* s_noElement = "ERROR : No tree element found for this sequence number : 6";
constexpr const char* s_runFailed = "ERROR : run visitor QueltMigTransformSerialToTreeSeriesVisitor failed";

class BranchingService : public testing::Test {
protected:
    ~BranchingService() override { QueltInDeleteWithObjects(map); }

    long branch() { return Services::ConvertFromFlatSeriesExprToBranchingExpr(world.context, *map); }
    void file(QueltInObject& value) {
        EXPECT_EQ(map->Put(QueltInIntHolder(static_cast<unsigned int>(map->GetLength())), value), S_OK);
    }
    QueltEeFilterExpression& fileFilter(std::initializer_list<QueltEeVarEff*> criteria) {
        auto* const list = new QueltQmSpecList;
        for (QueltEeVarEff* criterion : criteria) {
            EXPECT_EQ(list->addVarEff(criterion), S_OK);
        }
        auto* const filter = new QueltEeFilterExpression(world.truck, list);
        file(*filter);
        return *filter;
    }
    QueltEeGenericExpression& fileTree(QueltEeNode* root) {
        auto* const expression = new QueltEeGenericExpression(root->getNodeRef());
        file(*expression);
        return *expression;
    }
    [[nodiscard]] QueltEeSerialEff* good() const { return serial(world.unit, {{5, 9, 1, 1}}); }
    [[nodiscard]] QueltEeSerialEff* single() const { return serial(world.unit, {{7, 7, 1, 1}}); }
    [[nodiscard]] QueltEeSerialEff* bad() const { return serial(world.unit, {{6, 9, 1, 1}}); }

    BranchingWorld world;
    QueltInMap* map = new QueltInMap(QueltInIntHolder::sType(), QueltInObject::sType());
};

TEST_F(BranchingService, anEmptyMapWritesOnlyScopes) {
    const CapturedTrace captured;
    EXPECT_EQ(branch(), 0);
    EXPECT_EQ(captured.texts(),
              (Messages{"> CreateFlatSeriesContextFromTreeSeriesContext",
                        "> QueltMigTransformSerialToTreeSeriesVisitor",
                        "< QueltMigTransformSerialToTreeSeriesVisitor", "> singleSelectionMade",
                        "< singleSelectionMade", "> ~QueltMigTransformSerialToTreeSeriesVisitor",
                        "< ~QueltMigTransformSerialToTreeSeriesVisitor",
                        "< CreateFlatSeriesContextFromTreeSeriesContext"}));
    EXPECT_EQ(captured.lines().front().className, "QueltEeTarselMigrationServices");
    EXPECT_EQ(captured.lines().front().lineNumber, captured.lines().back().lineNumber);
}

TEST_F(BranchingService, tellsSingleSelectionsOfAllExpressionsTogether) {
    fileTree(leafOf(good()));
    EXPECT_EQ(branch(), 0);
    fileFilter({single()});
    fileTree(leafOf(good()));
    EXPECT_EQ(branch(), 1);
    EXPECT_EQ(branch(), 0) << "another call, in which nothing is left to be done";
}

TEST_F(BranchingService, everyKindOfExpressionIsRewritten) {
    const QueltEeFilterExpression& filter = fileFilter({good(), new QueltEeDateEff, single()});
    const QueltEeGenericExpression& tree = fileTree(notOf(leafOf(good())));
    auto* const change = new QueltEeChangeExpression;
    QueltEeNodeRef* own = leafOf(good())->getNodeRef();
    EXPECT_EQ(
        change->setModelCriteria(*world.truck, new QueltEeMultiModelExpression::ModelCriteria(nullptr, &own)),
        S_OK);
    file(*change);
    auto* const effectivity = new QueltEeEffectivityExpression;
    EXPECT_EQ(effectivity->setGlobalCriteria(leafOf(good())->getNodeRef()), S_OK);
    file(*effectivity);
    EXPECT_EQ(branch(), 1);
    EXPECT_EQ(textOf(filter), "filter(Truck: all: Line in [5, 9], date in {}, Line in [7])");
    EXPECT_EQ(textOf(tree), "generic(NOT(Line in [5, 9]))");
    EXPECT_EQ(textOf(*change), "change(Truck: own Line in [5, 9])");
    EXPECT_EQ(textOf(*effectivity), "effectivity(global: Line in [5, 9])");
}

TEST_F(BranchingService, namedEffectivitiesOfAFilterAreRewrittenToo) {
    QueltEePredefEff change{"ECO-1", guidOf(30)};
    setTree(change, leafOf(single()));
    fileFilter({good()}).getSpecList()->getNamedEffectivities().Put(change);
    EXPECT_EQ(branch(), 1);
    EXPECT_EQ(expressionOf(change), "generic(Line in [7])");
}

TEST_F(BranchingService, aValueThatIsNoExpressionEndsTheWalk) {
    QueltEeDateEff dates;
    MapWith withForeign({&dates});
    MapWith withNull({nullptr});
    for (QueltInMap* const wrong :
         {static_cast<QueltInMap*>(&withForeign), static_cast<QueltInMap*>(&withNull)}) {
        const CapturedErrors captured;
        EXPECT_EQ(Services::ConvertFromFlatSeriesExprToBranchingExpr(world.context, *wrong), E_FAIL);
        EXPECT_EQ(captured.texts(), Messages{"ERROR : unexpected"});
    }
    const QueltEeGenericExpression& before = fileTree(leafOf(good()));
    file(*new QueltEeDateEff);
    const QueltEeGenericExpression& behind = fileTree(leafOf(good()));
    const CapturedErrors captured;
    EXPECT_EQ(branch(), E_FAIL);
    EXPECT_EQ(captured.texts(), Messages{"ERROR : unexpected"});
    EXPECT_EQ(textOf(before), "generic(Line in [5, 9])");
    EXPECT_EQ(textOf(behind), "generic(Unit in [5, 9])");
    EXPECT_EQ(map->GetLength(), 3);
}

TEST_F(BranchingService, anExpressionThatFailsEndsTheWalk) {
    const QueltEeFilterExpression& filter = fileFilter({single(), bad(), good()});
    const QueltEeGenericExpression& behind = fileTree(leafOf(good()));
    const CapturedTrace captured;
    EXPECT_EQ(branch(), E_FAIL);
    EXPECT_EQ(captured.texts(),
              (Messages{"> CreateFlatSeriesContextFromTreeSeriesContext",
                        "> QueltMigTransformSerialToTreeSeriesVisitor",
                        "< QueltMigTransformSerialToTreeSeriesVisitor", "> visitVarEffLeaf",
                        "< visitVarEffLeaf", "> visitVarEffLeaf", s_noElement, "< visitVarEffLeaf",
                        s_runFailed, "> ~QueltMigTransformSerialToTreeSeriesVisitor",
                        "< ~QueltMigTransformSerialToTreeSeriesVisitor",
                        "< CreateFlatSeriesContextFromTreeSeriesContext"}));
    EXPECT_EQ(textOf(filter), "filter(Truck: all: Line in [7], Unit in [6, 9], Unit in [5, 9])");
    EXPECT_EQ(textOf(behind), "generic(Unit in [5, 9])");
}

/// Answers each kind of walk with a result of its own.
class FilterDouble : public QueltEeFilterExpression {
public:
    FilterDouble(long constResult, long result)
        : QueltEeFilterExpression(nullptr, nullptr), m_constResult(constResult), m_result(result) {}
    long runConstVisitor(QueltEeNodeVisitor& /*visitor*/) const override { return m_constResult; }
    long runVisitor(QueltEeNodeVisitor& /*visitor*/) override { return m_result; }

private:
    long m_constResult;
    long m_result;
};
class ChangeDouble : public QueltEeChangeExpression {
public:
    explicit ChangeDouble(long result) : m_result(result) {}
    long runConstVisitor(QueltEeNodeVisitor& /*visitor*/) const override { return m_result; }

private:
    long m_result;
};

TEST_F(BranchingService, resultsOfTheRunsArePassedUp) {
    file(*new FilterDouble(E_FAIL, 7));
    file(*new ChangeDouble(5));
    EXPECT_EQ(branch(), 0) << "what is not negative is a success, and the result is the service's own";
    file(*new ChangeDouble(E_NOTIMPL));
    file(*new FilterDouble(S_OK, E_UNEXPECTED));
    {
        const CapturedErrors captured;
        EXPECT_EQ(branch(), E_NOTIMPL);
        EXPECT_EQ(captured.texts(), Messages{s_runFailed});
    }
    QueltInMap filters(QueltInIntHolder::sType(), QueltInObject::sType());
    FilterDouble failing(S_OK, E_UNEXPECTED);
    EXPECT_EQ(filters.Put(QueltInIntHolder(1), failing), S_OK);
    const CapturedErrors captured;
    EXPECT_EQ(Services::ConvertFromFlatSeriesExprToBranchingExpr(world.context, filters), E_UNEXPECTED);
    EXPECT_EQ(captured.texts(), Messages{s_runFailed});
}

TEST_F(BranchingService, namesItsSourceFileInErrorReports) {
    file(*new QueltEeDateEff);
    const CapturedErrors captured;
    EXPECT_EQ(branch(), E_FAIL);
    ASSERT_EQ(captured.lines().size(), 2U);
    EXPECT_TRUE(captured.lines().front().text.starts_with(
        "[ERROR] QueltDataMigration.m/src/QueltEeTarselMigrationServices.cpp("))
        << captured.lines().front().text;
}

} // namespace
