#include "expression/QueltEeGenericExpression.h"

#include "core/expression/ExpressionSamples.h"

#include "expression/QueltQmSpecList.h"

namespace {

using ListMode = QueltEeGenericExpression::ListMode;

class QueltEeGenericExpressionTest : public testing::Test {
protected:
    [[nodiscard]] QueltQmSpecList* sampleList() const {
        auto* const list = new QueltQmSpecList;
        QueltEeVarEff* criterion = m_catalogue.engineIn({"V6"});
        EXPECT_EQ(list->addVarEff(criterion), S_OK);
        EXPECT_EQ(list->getNamedEffectivities().Put(const_cast<QueltEePredefEff&>(m_catalogue.change)), 1);
        return list;
    }

    Catalogue m_catalogue;
};

} // namespace

TEST_F(QueltEeGenericExpressionTest, TheTreeForm) {
    QueltEeNodeRef* const root = allOf(always(), never()).release();
    const QueltEeGenericExpression expression(root);
    EXPECT_EQ(expression.IsList(), 0);
    EXPECT_EQ(expression.GetNodeRef(), root);
    EXPECT_FALSE(root->standsAlone());
    EXPECT_EQ(textOf(expression), "generic(AND(TRUE, FALSE))");

    const std::unique_ptr<QueltQmSpecList> other(sampleList());
    const QueltQmSpecList* list = other.get();
    EXPECT_EQ(expression.GetList(list), E_FAIL);
    EXPECT_EQ(list, nullptr);
    ListMode mode = ListMode::atLeastOne;
    EXPECT_EQ(expression.GetMode(mode), E_FAIL);
    EXPECT_EQ(mode, ListMode::atLeastOne);

    Recorder recorder;
    recorder.m_results = {1};
    EXPECT_EQ(expression.runConstVisitor(recorder), 1);
    EXPECT_EQ(recorder.m_visits, (std::vector<std::string>{"AND AND(TRUE, FALSE)"}));
}

TEST_F(QueltEeGenericExpressionTest, ARootThatIsHeldElsewhereStaysThere) {
    const OwnedReference parent = notOf(always());
    {
        const QueltEeGenericExpression expression(singleIn(*parent).getChildRef());
        EXPECT_FALSE(expression.GetNodeRef()->ownsNode());
        EXPECT_EQ(textOf(expression), "generic(TRUE)");
    }
    EXPECT_EQ(textOf(*parent), "NOT(TRUE)");
}

TEST_F(QueltEeGenericExpressionTest, NeitherListNorTree) {
    const QueltEeGenericExpression expression;
    EXPECT_EQ(expression.IsList(), 0);
    EXPECT_EQ(expression.GetNodeRef(), nullptr);
    EXPECT_EQ(textOf(expression), "generic()");
    Recorder recorder;
    EXPECT_EQ(expression.runConstVisitor(recorder), S_OK);
    EXPECT_TRUE(recorder.m_visits.empty());
}

TEST_F(QueltEeGenericExpressionTest, ATreeWhoseNodeIsGone) {
    QueltEeNodeRef* const root = always().release();
    const QueltEeGenericExpression expression(root);
    delete root->getNode();
    EXPECT_EQ(textOf(expression), "generic(null)");
    Recorder recorder;
    EXPECT_EQ(expression.runConstVisitor(recorder), E_POINTER);
}

TEST_F(QueltEeGenericExpressionTest, TheListForm) {
    QueltQmSpecList* const list = sampleList();
    const QueltEeGenericExpression expression(list, ListMode::atLeastOne);
    EXPECT_NE(expression.IsList(), 0);
    EXPECT_EQ(expression.GetNodeRef(), nullptr);
    const QueltQmSpecList* found = nullptr;
    EXPECT_EQ(expression.GetList(found), S_OK);
    EXPECT_EQ(found, list);
    ListMode mode = ListMode::all;
    EXPECT_EQ(expression.GetMode(mode), S_OK);
    EXPECT_EQ(mode, ListMode::atLeastOne);
    EXPECT_EQ(textOf(expression), "generic(at least one: Engine in {V6}, eff(ECO-1))");

    Recorder recorder;
    EXPECT_EQ(expression.runConstVisitor(recorder), S_OK);
    EXPECT_EQ(recorder.m_visits, (std::vector<std::string>{"variable Engine in {V6}", "eff eff(ECO-1)"}));
}

TEST_F(QueltEeGenericExpressionTest, AListFormWithoutList) {
    const QueltEeGenericExpression expression(nullptr, ListMode::all);
    EXPECT_NE(expression.IsList(), 0);
    const std::unique_ptr<QueltQmSpecList> other(sampleList());
    const QueltQmSpecList* list = other.get();
    EXPECT_EQ(expression.GetList(list), S_OK);
    EXPECT_EQ(list, nullptr);
    EXPECT_EQ(textOf(expression), "generic(all)");
    Recorder recorder;
    EXPECT_EQ(expression.runConstVisitor(recorder), S_OK);
    EXPECT_EQ(textOf(QueltEeGenericExpression(new QueltQmSpecList, ListMode::all)), "generic(all)");
}
