#include "effectivity/QueltEeEffectivity.h"

#include <gtest/gtest.h>

#include "core/dictionary/TestTools.h"
#include "expression/QueltEeGenericExpression.h"
#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeNode.h"
#include "expression/QueltQmSpecList.h"
#include "infrastructure/QueltInResult.h"

#include <memory>

namespace {

/// Tells when it is deleted.
class WatchedExpression : public QueltEeExpression {
public:
    explicit WatchedExpression(int& deleted) : m_deleted(deleted) {}
    ~WatchedExpression() override { ++m_deleted; }
    long runConstVisitor(QueltEeNodeVisitor& /*visitor*/) const override { return S_OK; }

private:
    int& m_deleted;
};

QueltEeExpression* expressionOf(const QueltEeEffectivity& effectivity) {
    QueltEeExpression* expression = nullptr;
    EXPECT_EQ(effectivity.getExpr(expression), S_OK);
    return expression;
}

class QueltEeEffectivityTest : public testing::Test {
protected:
    [[nodiscard]] QueltEeExpression* watched() { return new WatchedExpression(m_deleted); }

    int m_deleted = 0;
};

TEST_F(QueltEeEffectivityTest, HasNoExpressionAtFirst) {
    const QueltEePredefEff change("ECO-1", guidOf(1));
    EXPECT_EQ(change.getName().view(), "ECO-1");
    EXPECT_EQ(change.getGuid(), guidOf(1));
    EXPECT_EQ(change.toString().view(), "ECO-1");
    QueltEeExpression* expression = watched();
    const std::unique_ptr<QueltEeExpression> other(expression);
    EXPECT_EQ(change.getExpr(expression), S_OK);
    EXPECT_EQ(expression, nullptr);
}

TEST_F(QueltEeEffectivityTest, DeletesItsExpression) {
    {
        QueltEePredefEff change("ECO-1", guidOf(1));
        QueltEeExpression* expression = watched();
        change.setExpr(expression);
        EXPECT_EQ(expressionOf(change), expression);
        EXPECT_EQ(m_deleted, 0);
    }
    EXPECT_EQ(m_deleted, 1);
}

TEST_F(QueltEeEffectivityTest, DeletesTheExpressionThatAnotherReplaces) {
    QueltEePredefEff change("ECO-1", guidOf(1));
    QueltEeExpression* first = watched();
    QueltEeExpression* second = watched();
    change.setExpr(first);
    change.setExpr(second);
    EXPECT_EQ(m_deleted, 1);
    EXPECT_EQ(expressionOf(change), second);
    QueltEeExpression* none = nullptr;
    change.setExpr(none);
    EXPECT_EQ(m_deleted, 2);
    EXPECT_EQ(expressionOf(change), nullptr);
}

TEST_F(QueltEeEffectivityTest, KeepsAnExpressionThatIsSetAgain) {
    QueltEePredefEff change("ECO-1", guidOf(1));
    QueltEeExpression* expression = watched();
    change.setExpr(expression);
    change.setExpr(expression);
    EXPECT_EQ(m_deleted, 0);
    EXPECT_EQ(expressionOf(change), expression);
}

TEST_F(QueltEeEffectivityTest, HandsItsExpressionOver) {
    QueltEeExpression* expression = nullptr;
    {
        QueltEeBasicEff basic("EFF-7", guidOf(1));
        QueltEeExpression* given = watched();
        basic.setExpr(given);
        EXPECT_EQ(basic.removeExpr(expression), S_OK);
        EXPECT_EQ(expression, given);
        EXPECT_EQ(expressionOf(basic), nullptr);
        QueltEeExpression* again = given;
        EXPECT_EQ(basic.removeExpr(again), S_OK);
        EXPECT_EQ(again, nullptr);
    }
    EXPECT_EQ(m_deleted, 0);
    delete expression;
    EXPECT_EQ(m_deleted, 1);
}

TEST_F(QueltEeEffectivityTest, GivesTheRootOfItsOwnTree) {
    QueltEeBasicEff basic("EFF-7", guidOf(1));
    EXPECT_EQ(basic.getOwnNodeRef(), nullptr) << "no expression";

    auto* const tree = new QueltEeGenericExpression(new QueltEeNodeRef(new QueltEeTrue()));
    QueltEeExpression* expression = tree;
    basic.setExpr(expression);
    ASSERT_NE(basic.getOwnNodeRef(), nullptr);
    EXPECT_EQ(basic.getOwnNodeRef(), tree->GetNodeRef());
    EXPECT_NE(QueltEeTrue::cast(basic.getOwnNodeRef()->getNode()), nullptr);

    expression = new QueltEeGenericExpression();
    basic.setExpr(expression);
    EXPECT_EQ(basic.getOwnNodeRef(), nullptr) << "neither list nor tree";

    expression = new QueltEeGenericExpression(new QueltQmSpecList(), QueltEeGenericExpression::ListMode::all);
    basic.setExpr(expression);
    EXPECT_EQ(basic.getOwnNodeRef(), nullptr) << "a list";

    expression = watched();
    basic.setExpr(expression);
    EXPECT_EQ(basic.getOwnNodeRef(), nullptr) << "another kind of expression";
}

TEST_F(QueltEeEffectivityTest, IsOfItsOwnClass) {
    const QueltEePredefEff change("ECO-1", guidOf(1));
    const QueltEeBasicEff basic("EFF-7", guidOf(2));
    EXPECT_NE(QueltEePredefEff::cast(change), nullptr);
    EXPECT_EQ(QueltEeBasicEff::isObjectOfThisType(change), 0);
    EXPECT_NE(QueltEeBasicEff::isObjectOfThisType(basic), 0);
    EXPECT_EQ(QueltEePredefEff::isObjectOfThisType(basic), 0);
    EXPECT_NE(QueltEeEffectivity::isObjectOfThisType(basic), 0);
    EXPECT_NE(QueltEeDicoObject::isObjectOfThisType(change), 0);
}

} // namespace
