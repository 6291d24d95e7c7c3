#include "expression/QueltEeMultiModelExpression.h"

#include "core/expression/ExpressionSamples.h"

#include "infrastructure/QueltInString.h"

namespace {

using ModelCriteria = QueltEeMultiModelExpression::ModelCriteria;
using OperationKind = QueltEeExpressionOperation::OperationKind;

class QueltEeMultiModelExpressionTest : public testing::Test {
protected:
    /// Criteria with these parts, which may be null.
    [[nodiscard]] static std::unique_ptr<ModelCriteria> criteria(OwnedReference inherited,
                                                                 OwnedReference own) {
        QueltEeNodeRef* inheritedSlot = inherited.release();
        QueltEeNodeRef* ownSlot = own.release();
        auto made = std::make_unique<ModelCriteria>(&inheritedSlot, &ownSlot);
        EXPECT_EQ(inheritedSlot, nullptr);
        EXPECT_EQ(ownSlot, nullptr);
        return made;
    }
    void file(QueltEeMultiModelExpression& expression, const QueltEeModelDico& dictionary,
              OwnedReference inherited, OwnedReference own) const {
        EXPECT_EQ(
            expression.setModelCriteria(dictionary, criteria(std::move(inherited), std::move(own)).release()),
            S_OK);
    }
    static void operate(QueltEeEffectivityExpression& expression, OperationKind kind,
                        QueltInObject& effectivity) {
        QueltInObject* object = &effectivity;
        EXPECT_EQ(expression.addOperation(kind, object), S_OK);
        EXPECT_EQ(object, &effectivity);
    }
    [[nodiscard]] OwnedReference engine(const char* value) const {
        return leafOf(m_catalogue.engineIn({value}));
    }
    [[nodiscard]] OwnedReference inherited() {
        return held(new QueltEeEffLeaf(&m_catalogue.basic, &m_catalogue.truck));
    }

    Catalogue m_catalogue;
    int m_alive = 0;
};

} // namespace

TEST_F(QueltEeMultiModelExpressionTest, TextsShowEveryPart) {
    QueltEeEffectivityExpression effectivity;
    EXPECT_EQ(textOf(effectivity), "effectivity()");
    operate(effectivity, OperationKind::apply, m_catalogue.change);
    EXPECT_EQ(textOf(effectivity), "effectivity(operations: 1 ECO-1)");
    operate(effectivity, OperationKind::remove, m_catalogue.plain);
    EXPECT_EQ(effectivity.setGlobalCriteria(always().release()), S_OK);
    file(effectivity, m_catalogue.truck, inherited(), allOf(engine("V6")));
    file(effectivity, m_catalogue.van, nullptr, engine("V8"));
    EXPECT_EQ(textOf(effectivity),
              "effectivity(global: TRUE, Truck: own AND(Engine in {V6}), inherited eff(EFF-7, Truck), "
              "Van: own Engine in {V8}; operations: 1 ECO-1, 0 \"Base line\")");

    QueltEeChangeExpression change;
    EXPECT_EQ(textOf(change), "change()");
    file(change, m_catalogue.truck, inherited(), nullptr);
    const QueltEeModelDico bus("City bus", guidOf(40));
    file(change, bus, nullptr, nullptr);
    EXPECT_EQ(textOf(change), "change(Truck: inherited eff(EFF-7, Truck), \"City bus\": none)");
}

TEST_F(QueltEeMultiModelExpressionTest, CriteriaTakeOverWhatIsInTheirSlots) {
    QueltEeNodeRef* const own = held(new Counted<QueltEeTrue>(m_alive)).release();
    std::unique_ptr<ModelCriteria> made = criteria(nullptr, OwnedReference(own));
    EXPECT_EQ(made->getOwn(), own);
    EXPECT_FALSE(own->standsAlone());
    EXPECT_EQ(made->getInherited(), nullptr);
    made.reset();
    EXPECT_EQ(m_alive, 0);
    const ModelCriteria none(nullptr, nullptr);
    EXPECT_EQ(textOf(none), "none");
}

TEST_F(QueltEeMultiModelExpressionTest, CriteriaAliasWhatIsHeldElsewhere) {
    const OwnedReference parent = notOf(held(new Counted<QueltEeTrue>(m_alive)));
    QueltEeNodeRef* slot = singleIn(*parent).getChildRef();
    {
        const ModelCriteria made(nullptr, &slot);
        EXPECT_EQ(slot, nullptr);
        EXPECT_FALSE(made.getOwn()->ownsNode());
        EXPECT_EQ(textOf(made), "own TRUE");
    }
    EXPECT_EQ(m_alive, 1);
    EXPECT_EQ(textOf(*parent), "NOT(TRUE)");
}

TEST_F(QueltEeMultiModelExpressionTest, OneReferenceInBothSlotsIsOwnedOnce) {
    QueltEeNodeRef* first = held(new Counted<QueltEeTrue>(m_alive)).release();
    QueltEeNodeRef* second = first;
    {
        const ModelCriteria made(&first, &second);
        EXPECT_TRUE(made.getInherited()->ownsNode());
        EXPECT_FALSE(made.getOwn()->ownsNode());
    }
    EXPECT_EQ(m_alive, 0);
}

TEST_F(QueltEeMultiModelExpressionTest, AReferenceWithoutNodeIsNoPart) {
    const std::unique_ptr<ModelCriteria> made =
        criteria(OwnedReference(new QueltEeNodeRef), OwnedReference(new QueltEeNodeRef));
    EXPECT_EQ(textOf(*made), "none"); // the leak check tells when the empty references stay
}

TEST_F(QueltEeMultiModelExpressionTest, ASecondGlobalCriterionIsRefused) {
    QueltEeChangeExpression expression;
    EXPECT_EQ(expression.getGlobalCriteria(), nullptr);
    EXPECT_EQ(expression.setGlobalCriteria(nullptr), E_POINTER);
    QueltEeNodeRef empty;
    EXPECT_EQ(expression.setGlobalCriteria(&empty), E_POINTER);
    QueltEeNodeRef* const first = always().release();
    EXPECT_EQ(expression.setGlobalCriteria(first), S_OK);
    EXPECT_EQ(expression.getGlobalCriteria(), first);
    const OwnedReference second = never();
    EXPECT_EQ(expression.setGlobalCriteria(second.get()), E_ALREADYTHERE);
    EXPECT_TRUE(second->standsAlone());
    EXPECT_EQ(textOf(expression), "change(global: TRUE)");
}

TEST_F(QueltEeMultiModelExpressionTest, AGlobalCriterionThatIsHeldElsewhereIsAliased) {
    const OwnedReference parent = allOf(held(new Counted<QueltEeTrue>(m_alive)));
    {
        QueltEeChangeExpression expression;
        EXPECT_EQ(expression.setGlobalCriteria(&childOf(groupIn(*parent), 0)), S_OK);
        EXPECT_FALSE(expression.getGlobalCriteria()->ownsNode());
    }
    EXPECT_EQ(m_alive, 1);
}

TEST_F(QueltEeMultiModelExpressionTest, AGroupThatBecameAnAliasIsTakenOver) {
    // A group over a part of another tree shrinks to that part; the expression gets the reference that held
    // the group.
    const OwnedReference elsewhere = notOf(held(new Counted<QueltEeTrue>(m_alive)));
    OwnedReference reference = allOf();
    EXPECT_EQ(groupIn(*reference).addChild(*singleIn(*elsewhere).getChildRef()->getNode()), S_OK);
    EXPECT_EQ(groupIn(*reference).becomeIfSingleChild(), 1);
    {
        QueltEeChangeExpression expression;
        EXPECT_EQ(expression.setGlobalCriteria(reference.get()), S_OK);
        EXPECT_EQ(expression.getGlobalCriteria(), reference.get());
        EXPECT_EQ(textOf(expression), "change(global: TRUE)");
        static_cast<void>(reference.release());
    }
    EXPECT_EQ(m_alive, 1);
}

TEST_F(QueltEeMultiModelExpressionTest, SecondCriteriaOfADictionaryAreRefused) {
    QueltEeChangeExpression expression;
    file(expression, m_catalogue.truck, nullptr, always());
    EXPECT_EQ(expression.setModelCriteria(m_catalogue.truck, nullptr), E_POINTER);
    const std::unique_ptr<ModelCriteria> second = criteria(nullptr, never());
    EXPECT_EQ(expression.setModelCriteria(m_catalogue.truck, second.get()), E_ALREADYTHERE);
    const QueltEeModelDico sameGuid("Lorry", m_catalogue.truck.getGuid());
    EXPECT_EQ(expression.setModelCriteria(sameGuid, second.get()), E_ALREADYTHERE);
    EXPECT_EQ(textOf(expression), "change(Truck: own TRUE)");
    EXPECT_EQ(textOf(*second), "own FALSE");
}

TEST_F(QueltEeMultiModelExpressionTest, CriteriaAreFiledOnce) {
    QueltEeChangeExpression expression;
    ModelCriteria* const made = criteria(nullptr, always()).release();
    EXPECT_EQ(expression.setModelCriteria(m_catalogue.truck, made), S_OK);
    EXPECT_EQ(expression.setModelCriteria(m_catalogue.van, made), E_ALREADYTHERE);
    EXPECT_EQ(textOf(expression), "change(Truck: own TRUE)");
}

TEST_F(QueltEeMultiModelExpressionTest, ManyDictionariesKeepTheirOrder) {
    QueltEeChangeExpression expression;
    std::vector<std::unique_ptr<QueltEeModelDico>> dictionaries;
    for (std::uint8_t number = 0; number < 50; ++number) {
        dictionaries.push_back(std::make_unique<QueltEeModelDico>(QueltInString("D"), guidOf(number)));
        EXPECT_EQ(expression.findModelCriteria(*dictionaries.back()), nullptr);
        file(expression, *dictionaries.back(), nullptr, always());
        EXPECT_NE(expression.findModelCriteria(*dictionaries.back()), nullptr);
    }
    QueltInSet context(QueltEeModelDico::sType());
    EXPECT_EQ(context.Put(*dictionaries[7]), 1); // is there already
    EXPECT_EQ(expression.getContextDictionaries(context), S_OK);
    EXPECT_EQ(context.GetLength(), 50);
    QueltInSet::const_iterator found = context.cBegin();
    EXPECT_EQ(found.GetGoToNext(), dictionaries[7].get());
    for (std::size_t number = 0; number < 50; ++number) {
        EXPECT_EQ(expression.getModelCriteria()[number].dictionary, dictionaries[number].get());
        EXPECT_EQ(expression.findModelCriteria(*dictionaries[number]),
                  expression.getModelCriteria()[number].criteria);
        if (number != 7) {
            EXPECT_EQ(found.GetGoToNext(), dictionaries[number].get());
        }
    }
}

TEST_F(QueltEeMultiModelExpressionTest, ASetOfOtherThingsIsRefused) {
    QueltEeChangeExpression expression;
    QueltInSet texts(QueltInString::sType());
    EXPECT_EQ(expression.getContextDictionaries(texts), S_OK); // no dictionary to refuse
    file(expression, m_catalogue.truck, nullptr, nullptr);
    EXPECT_EQ(expression.getContextDictionaries(texts), E_FAIL);
}

TEST_F(QueltEeMultiModelExpressionTest, TheWalkGoesFromTheGlobalCriterionToTheOperations) {
    QueltEeEffectivityExpression expression;
    file(expression, m_catalogue.van, nullptr, engine("V8"));
    file(expression, m_catalogue.truck, inherited(), engine("V6"));
    EXPECT_EQ(expression.setGlobalCriteria(always().release()), S_OK);
    operate(expression, OperationKind::apply, m_catalogue.change);
    operate(expression, OperationKind::remove, m_catalogue.plain);
    const std::vector<std::string> visits{
        "TRUE TRUE",      "variable Engine in {V8}", "eff eff(EFF-7, Truck)", "variable Engine in {V6}",
        "eff eff(ECO-1)", "eff eff(\"Base line\")"};
    Recorder recorder;
    recorder.m_results = {S_OK, S_OK, S_OK, S_OK, S_OK, 1};
    EXPECT_EQ(expression.runConstVisitor(recorder), 1);
    EXPECT_EQ(recorder.m_visits, visits);
    for (std::size_t turn = 0; turn < visits.size(); ++turn) {
        Recorder failing;
        failing.m_results.assign(turn, S_OK);
        failing.m_results.push_back(E_FAIL);
        failing.m_results.push_back(S_OK);
        EXPECT_EQ(expression.runConstVisitor(failing), E_FAIL);
        EXPECT_EQ(failing.m_visits.size(), turn + 1);
    }
    Recorder none;
    EXPECT_EQ(QueltEeChangeExpression().runConstVisitor(none), S_OK);
}

TEST_F(QueltEeMultiModelExpressionTest, APartWhoseNodeIsGoneEndsTheWalk) {
    QueltEeChangeExpression expression;
    {
        const OwnedReference parent = allOf(always());
        EXPECT_EQ(expression.setGlobalCriteria(&childOf(groupIn(*parent), 0)), S_OK);
    }
    EXPECT_EQ(textOf(expression), "change(global: null)");
    Recorder recorder;
    EXPECT_EQ(expression.runConstVisitor(recorder), E_POINTER);
}

TEST_F(QueltEeMultiModelExpressionTest, OperationsKeepKindAndEffectivity) {
    QueltEeEffectivityExpression expression;
    operate(expression, OperationKind::applyAlternative, m_catalogue.change);
    operate(expression, OperationKind::apply, m_catalogue.change);
    ASSERT_EQ(expression.getOperations().size(), 2U);
    QueltEeExpressionOperation& first = *expression.getOperations()[0];
    EXPECT_EQ(first.m_kind, OperationKind::applyAlternative);
    EXPECT_EQ(first.getObject(), &m_catalogue.change);
    EXPECT_EQ(textOf(first), "2 ECO-1");
    first.m_kind = OperationKind::remove;
    EXPECT_EQ(textOf(expression), "effectivity(operations: 0 ECO-1, 1 ECO-1)");
    EXPECT_EQ(textOf(QueltEeExpressionOperation(static_cast<OperationKind>(-3), nullptr)), "-3 null");
}

TEST_F(QueltEeMultiModelExpressionTest, OperationsAreOnEffectivitiesOnly) {
    QueltEeEffectivityExpression expression;
    QueltInObject* object = nullptr;
    EXPECT_EQ(expression.addOperation(OperationKind::apply, object), E_POINTER);
    object = &m_catalogue.truck;
    EXPECT_EQ(expression.addOperation(OperationKind::apply, object), E_INVALIDARG);
    EXPECT_EQ(textOf(expression), "effectivity()");
}
