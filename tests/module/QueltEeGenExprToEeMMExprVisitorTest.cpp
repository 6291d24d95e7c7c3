#include "QueltEeGenExprToEeMMExprVisitor.h"

#include "module/support/Captured.h"
#include "module/support/Garage.h"

#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeMultiModelExpression.h"
#include "expression/QueltEeOperators.h"
#include "infrastructure/QueltInIntHolder.h"
#include "infrastructure/QueltInMap.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using quelt::test::CapturedErrors;
using quelt::test::CapturedTrace;
using quelt::test::Garage;
using Messages = std::vector<std::string>;
using Visitor = QueltEeGenExprToEeMMExprVisitor;

class ConversionVisitor : public testing::Test {
protected:
    Garage<> garage;
    Visitor effectivity{0, garage.context, nullptr};
    Visitor change{1, garage.context, nullptr};
};

TEST_F(ConversionVisitor, isRegisteredBelowTheVisitors) {
    EXPECT_STREQ(Visitor::sType()->getName(), "QueltEeGenExprToEeMMExprVisitor");
    EXPECT_EQ(Visitor::sType()->getParent(), QueltEeNodeVisitor::sType());
    EXPECT_EQ(effectivity.dType(), Visitor::sType());
    QueltInObject& object = effectivity;
    EXPECT_EQ(Visitor::cast(object), &effectivity);
    EXPECT_EQ(Visitor::cast(*garage.truck), nullptr);
    EXPECT_NE(Visitor::isObjectOfThisType(object), 0);
    EXPECT_EQ(Visitor::isObjectOfThisType(*garage.truck), 0);
}

TEST_F(ConversionVisitor, tracesItsLife) {
    const CapturedTrace captured;
    {
        const Visitor visitor(0, garage.context, nullptr);
        const Visitor copy(visitor); // NOLINT(performance-unnecessary-copy-initialization)
    }
    EXPECT_EQ(captured.texts(),
              (Messages{"> QueltEeGenExprToEeMMExprVisitor", "< QueltEeGenExprToEeMMExprVisitor",
                        "> ~QueltEeGenExprToEeMMExprVisitor", "< ~QueltEeGenExprToEeMMExprVisitor",
                        "> ~QueltEeGenExprToEeMMExprVisitor", "< ~QueltEeGenExprToEeMMExprVisitor"}));
    EXPECT_EQ(captured.lines().front().lineNumber, captured.lines()[1].lineNumber);
    EXPECT_GT(captured.lines().front().lineNumber, 0);
}

TEST_F(ConversionVisitor, makesTheMapItIsNotGiven) {
    QueltEeTrue constant;
    ASSERT_EQ(constant.acceptVisitor(effectivity), S_OK);
    QueltInMap* map = nullptr;
    EXPECT_EQ(effectivity.generateMapDomainIDToEeExpr(map), S_OK);
    ASSERT_NE(map, nullptr);
    EXPECT_EQ(map->getKeyType(), QueltInIntHolder::sType());
    EXPECT_EQ(map->getValueType(), QueltEeEffectivityExpression::sType());
    EXPECT_NE(map->Get(QueltInIntHolder(3)), nullptr);
    QueltInDeleteWithObjects(map);

    QueltEeFalse other;
    ASSERT_EQ(other.acceptVisitor(change), S_OK);
    map = nullptr;
    EXPECT_EQ(change.generateMapDomainIDToEeExpr(map), S_OK);
    EXPECT_EQ(map->getValueType(), QueltEeChangeExpression::sType());
    EXPECT_NE(map->Get(QueltInIntHolder(2)), nullptr);
    QueltInDeleteWithObjects(map);
}

TEST_F(ConversionVisitor, addsToTheMapItIsGiven) {
    QueltEeTrue constant;
    ASSERT_EQ(constant.acceptVisitor(effectivity), S_OK);
    auto* map = new QueltInMap(QueltInIntHolder::sType(), QueltEeEffectivityExpression::sType());
    const auto* const first = new QueltEeEffectivityExpression;
    map->Put(QueltInIntHolder(7), *first);
    QueltInMap* const same = map;
    EXPECT_EQ(effectivity.generateMapDomainIDToEeExpr(map), S_OK);
    EXPECT_EQ(map, same);
    EXPECT_EQ(map->GetLength(), 2);
    EXPECT_EQ(map->Get(QueltInIntHolder(7)), first);
    QueltInDeleteWithObjects(map);
}

TEST_F(ConversionVisitor, reportsThatNothingWasGenerated) {
    const CapturedErrors captured;
    QueltInMap* map = nullptr;
    EXPECT_EQ(effectivity.generateMapDomainIDToEeExpr(map), E_FAIL);
    EXPECT_EQ(change.generateMapDomainIDToEeExpr(map), E_FAIL);
    EXPECT_EQ(captured.texts(), (Messages{"ERROR : no effectivity expression generated",
                                          "ERROR : no change expression generated"}));
    EXPECT_EQ(map->GetLength(), 0);
    QueltInDeleteWithObjects(map);
}

TEST_F(ConversionVisitor, reportsAMapThatRefuses) {
    QueltEeTrue constant;
    QueltInArena arena;
    const QueltInArenaScope scope(arena);
    ASSERT_EQ(constant.acceptVisitor(effectivity), S_OK);
    ASSERT_EQ(constant.acceptVisitor(change), S_OK);
    auto* map = new QueltInMap(QueltInIntHolder::sType(), QueltInString::sType());
    const CapturedErrors captured;
    EXPECT_EQ(effectivity.generateMapDomainIDToEeExpr(map), E_INVALIDARG);
    EXPECT_EQ(change.generateMapDomainIDToEeExpr(map), E_INVALIDARG);
    EXPECT_EQ(captured.texts(), (Messages{"ERROR : Put in map FAILED.", "ERROR : Put in map FAILED."}));
}

TEST_F(ConversionVisitor, copiesShareTheirOutputs) {
    QueltEeTrue constant;
    ASSERT_EQ(constant.acceptVisitor(effectivity), S_OK);
    Visitor copy(effectivity);
    QueltInMap* map = nullptr;
    ASSERT_EQ(copy.generateMapDomainIDToEeExpr(map), S_OK);
    ASSERT_EQ(effectivity.generateMapDomainIDToEeExpr(map), S_OK);
    EXPECT_EQ(map->GetLength(), 1) << "the same expression under the same domain";
    QueltInDeleteWithObjects(map);
}

template <class Constant>
class Uncloneable : public Constant {
public:
    [[nodiscard]] QueltEeNodeRef* clone() const override { return nullptr; }
};

TEST_F(ConversionVisitor, reportsAConstantThatCannotBeCloned) {
    Uncloneable<QueltEeTrue> constant;
    Uncloneable<QueltEeFalse> other;
    QueltInArena arena;
    const QueltInArenaScope scope(arena);
    const CapturedErrors captured;
    EXPECT_EQ(constant.acceptVisitor(effectivity), E_POINTER);
    EXPECT_EQ(other.acceptVisitor(change), E_POINTER);
    EXPECT_EQ(captured.texts(), (Messages{"ERROR", "ERROR"}));
    QueltInMap* map = nullptr;
    EXPECT_EQ(effectivity.generateMapDomainIDToEeExpr(map), S_OK) << "the new expression stays in its member";
    EXPECT_EQ(map->GetLength(), 1);
}

TEST_F(ConversionVisitor, refusesWhatIsNotConverted) {
    QueltEeNotDomainOp domain;
    QueltEeRestrictionEffLeaf restriction("text");
    const CapturedTrace captured;
    EXPECT_EQ(domain.acceptVisitor(effectivity), E_NOTIMPL);
    EXPECT_EQ(restriction.acceptVisitor(effectivity), E_UNEXPECTED);
    EXPECT_EQ(captured.texts(), (Messages{"> visitNotDomainOp", "< visitNotDomainOp",
                                          "ERROR : No RestrictionEffLeaf Expected at this level."}));
    EXPECT_EQ(captured.lines().back().methodName, "");
    EXPECT_EQ(captured.lines().back().className, "QueltEeGenExprToEeMMExprVisitor");
}

} // namespace
