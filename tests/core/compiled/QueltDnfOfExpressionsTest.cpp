#include "compiled/QueltDnf.h"

#include "core/support/Effort.h"
#include "core/support/RandomExpressions.h"

#include "expression/QueltEeEvaluator.h"
#include "expression/QueltEeFilterExpression.h"
#include "expression/QueltEeMultiModelExpression.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using ModelCriteria = QueltEeMultiModelExpression::ModelCriteria;

bool holds(const QueltDnf& dnf, const PlainMeaning& meaning) {
    return std::ranges::any_of(dnf.getConjunctions(), [&](const QueltDnf::Conjunction& conjunction) {
        return std::ranges::all_of(
            conjunction, [&](const QueltEeNodeRef* literal) { return meaning.holds(*literal->getNode()); });
    });
}

/// True for an OR of ANDs of leaves, or less.
bool isDeveloped(const QueltEeNode& node, int level = 0) {
    const auto* const group = dynamic_cast<const QueltEeGroupOp*>(&node);
    if (group == nullptr) {
        const bool isCriterion = dynamic_cast<const QueltEeNodeElementaryLeaf*>(&node) != nullptr;
        return isCriterion || (level == 0 && dynamic_cast<const QueltEeNodeLeaf*>(&node) != nullptr);
    }
    const bool isInOrder = group->isAnd() || level == 0;
    const int below = group->isAnd() ? 2 : 1;
    return level < 2 && isInOrder && group->getChildren().GetLength() >= 2 &&
           std::ranges::all_of(group->getChildren().elements(), [below](QueltInObject* child) {
               return isDeveloped(*dynamic_cast<QueltEeNodeRef&>(*child).getNode(), below);
           });
}

std::vector<const QueltEeNodeRef*> partsOf(const QueltEeMultiModelExpression& expression) {
    std::vector<const QueltEeNodeRef*> parts{expression.getGlobalCriteria()};
    for (const QueltEeMultiModelExpression::Filed& filed : expression.getModelCriteria()) {
        parts.push_back(filed.criteria->getInherited());
        parts.push_back(filed.criteria->getOwn());
    }
    std::erase(parts, nullptr);
    return parts;
}

/// An AND of `count` ORs on as many effectivities each, which has 2^count conjunctions.
OwnedReference pairsOf(const std::vector<std::unique_ptr<QueltEePredefEff>>& changes, std::size_t count) {
    OwnedReference all = allOf();
    for (std::size_t pair = 0; pair < count; ++pair) {
        OwnedReference either = anyOf(held(new QueltEeEffLeaf(changes[2 * pair].get(), nullptr)),
                                      held(new QueltEeEffLeaf(changes[2 * pair + 1].get(), nullptr)));
        EXPECT_EQ(groupIn(*all).addChild(*either.release()->getNode()), S_OK);
    }
    return all;
}

class Uncopied : public QueltEeDateEff {
public:
    [[nodiscard]] QueltEeVarEff* createVarEffClone() const override { return nullptr; }
};

} // namespace

TEST(FilterDnf, MeansTheFilterOrItsNegation) {
    const SampleWorld world;
    RandomExpressions random(world, 81);
    for (int round = 0; round < effort(10000); ++round) {
        const std::unique_ptr<QueltQmSpecList> list = random.list();
        const int mode = round % 2;
        QueltEeFilterExpression filter(world.dictionaries[1], list->clone());
        filter.setListMode(mode);
        const std::string before = textOf(filter);
        QueltDnf* made = nullptr;
        ASSERT_EQ(filter.getDNF(made), S_OK);
        const std::unique_ptr<QueltDnf> dnf(made);
        ASSERT_EQ(filter.getNotDNF(made), S_OK);
        const std::unique_ptr<QueltDnf> notDnf(made);
        ASSERT_EQ(textOf(filter), before);
        for (int sample = 0; sample < 6; ++sample) {
            const SampleConfiguration configuration = random.configuration();
            const PlainMeaning meaning(configuration);
            const bool expected = meaning.holds(*list, mode);
            ASSERT_EQ(holds(*dnf, meaning), expected) << before << ": " << textOf(*dnf);
            ASSERT_NE(holds(*notDnf, meaning), expected) << before << ": " << textOf(*notDnf);
        }
    }
}

TEST(FilterDnf, SaysWhatAnEmptyListMeans) {
    QueltDnf* made = nullptr;
    QueltEeFilterExpression filter(nullptr, nullptr);
    EXPECT_EQ(filter.getDNF(made), S_OK);
    EXPECT_EQ(textOf(*std::unique_ptr<QueltDnf>(made)), "TRUE");
    EXPECT_EQ(filter.getNotDNF(made), S_OK);
    EXPECT_EQ(textOf(*std::unique_ptr<QueltDnf>(made)), "FALSE");
    filter.setListMode(1);
    EXPECT_EQ(filter.getDNF(made), S_OK);
    EXPECT_EQ(textOf(*std::unique_ptr<QueltDnf>(made)), "FALSE");
}

TEST(FilterDnf, NamesTheFiltersDictionaryInItsLiterals) {
    const Catalogue catalogue;
    auto* const list = new QueltQmSpecList;
    list->getNamedEffectivities().Put(const_cast<QueltEeBasicEff&>(catalogue.basic));
    const QueltEeFilterExpression filter(&catalogue.truck, list);
    QueltDnf* made = nullptr;
    EXPECT_EQ(filter.getNotDNF(made), S_OK);
    EXPECT_EQ(textOf(*std::unique_ptr<QueltDnf>(made)), "not (eff(EFF-7, Truck))");
}

TEST(FilterDnf, HandsOutNothingOnFailure) {
    auto* const list = new QueltQmSpecList;
    QueltEeVarEff* effectivity = new Uncopied;
    EXPECT_EQ(list->addVarEff(effectivity), S_OK);
    const QueltEeFilterExpression filter(nullptr, list);
    QueltDnf other;
    QueltDnf* made = &other;
    EXPECT_EQ(filter.getDNF(made), E_FAIL);
    EXPECT_EQ(made, nullptr);
    made = &other;
    EXPECT_EQ(filter.getNotDNF(made), E_FAIL);
    EXPECT_EQ(made, nullptr);
}

TEST(Develop, KeepsTheMeaningOfEveryPart) {
    const SampleWorld world;
    RandomExpressions random(world, 82);
    const TreeShape shape{4, 3, true, false, false};
    int changed = 0;
    for (int round = 0; round < effort(5000); ++round) {
        QueltEeChangeExpression expression;
        if (random.random().flip()) {
            EXPECT_EQ(expression.setGlobalCriteria(random.tree(shape).release()), S_OK);
        }
        for (const QueltEeModelDico* const dictionary : world.dictionaries) {
            QueltEeNodeRef* inherited = random.random().flip() ? random.tree(shape).release() : nullptr;
            QueltEeNodeRef* own = random.random().flip() ? random.tree(shape).release() : nullptr;
            EXPECT_EQ(expression.setModelCriteria(*dictionary, new ModelCriteria(&inherited, &own)), S_OK);
        }
        const std::vector<const QueltEeNodeRef*> parts = partsOf(expression);
        std::vector<SampleConfiguration> configurations;
        for (int sample = 0; sample < 6; ++sample) {
            configurations.push_back(random.configuration());
        }
        std::vector<bool> expected;
        for (const QueltEeNodeRef* const part : parts) {
            for (const SampleConfiguration& configuration : configurations) {
                expected.push_back(PlainMeaning(configuration).holds(*part->getNode()));
            }
        }
        const std::string before = textOf(expression);
        const long result = expression.develop();
        SCOPED_TRACE(before + "\nbecame " + textOf(expression));
        ASSERT_EQ(result, before != textOf(expression) ? 1 : S_OK);
        changed += result == 1 ? 1 : 0;
        ASSERT_EQ(partsOf(expression), parts);
        const std::string developed = textOf(expression);
        ASSERT_EQ(expression.develop(), S_OK);
        ASSERT_EQ(textOf(expression), developed);
        std::size_t at = 0;
        for (const QueltEeNodeRef* const part : parts) {
            ASSERT_TRUE(isDeveloped(*part->getNode()));
            for (const SampleConfiguration& configuration : configurations) {
                ASSERT_EQ(PlainMeaning(configuration).holds(*part->getNode()), expected[at++]);
            }
        }
    }
    EXPECT_GT(changed, effort(4000));
}

TEST(Develop, ChangesNothingWhenOnePartCannotBeDeveloped) {
    std::vector<std::unique_ptr<QueltEePredefEff>> changes;
    for (int number = 0; number < 40; ++number) {
        changes.push_back(std::make_unique<QueltEePredefEff>("ECO-" + std::to_string(number), QueltInGuid()));
    }
    const SampleWorld world;
    for (const bool explodes : {false, true}) {
        QueltEeChangeExpression expression;
        EXPECT_EQ(expression.setGlobalCriteria(notOf(notOf(always())).release()), S_OK);
        QueltEeNodeRef* own =
            explodes ? pairsOf(changes, 20).release() : held(new QueltEeRestrictionEffLeaf("text")).release();
        EXPECT_EQ(expression.setModelCriteria(*world.dictionaries[0], new ModelCriteria(nullptr, &own)),
                  S_OK);
        const std::string before = textOf(expression);
        EXPECT_EQ(expression.develop(), explodes ? E_OUTOFMEMORY : E_UNEXPECTED);
        EXPECT_EQ(textOf(expression), before);
    }
}

TEST(Develop, SaysNothingChangedTheSecondTime) {
    const Catalogue c;
    QueltEeChangeExpression expression;
    const auto change = [&c] {
        return held(new QueltEeEffLeaf(const_cast<QueltEePredefEff*>(&c.change), nullptr));
    };
    EXPECT_EQ(expression.setGlobalCriteria(
                  allOf(anyOf(leafOf(c.sport()), change()), leafOf(c.engineIn({"V6"}))).release()),
              S_OK);
    EXPECT_EQ(expression.develop(), 1);
    const std::string developed =
        "change(global: OR(AND(Package in {Sport}, Engine in {V6}), AND(eff(ECO-1), Engine in {V6})))";
    EXPECT_EQ(textOf(expression), developed);
    EXPECT_EQ(expression.develop(), S_OK);
    EXPECT_EQ(textOf(expression), developed);
    EXPECT_EQ(QueltEeChangeExpression().develop(), S_OK);
}

TEST(Develop, GivesPartsThatAreAliasesTreesOfTheirOwn) {
    const Catalogue c;
    const auto makeTree = [&c] { return notOf(allOf(leafOf(c.sport()), leafOf(c.engineIn({"V6"})))); };
    const OwnedReference elsewhere = allOf(makeTree());
    QueltEeChangeExpression expression;
    EXPECT_EQ(expression.setGlobalCriteria(&childOf(groupIn(*elsewhere), 0)), S_OK);
    QueltEeNodeRef* own = allOf(leafOf(c.sport())).release();
    EXPECT_EQ(groupIn(*own).addChild(*expression.getGlobalCriteria()->getNode()), S_OK);
    EXPECT_EQ(expression.setModelCriteria(c.truck, new ModelCriteria(nullptr, &own)), S_OK);
    const std::string before = textOf(*elsewhere);
    EXPECT_EQ(expression.develop(), 1);
    EXPECT_EQ(textOf(*elsewhere), before);
    EXPECT_EQ(textOf(expression),
              "change(global: OR(not (Package in {Sport})?, not (Engine in {V6})?), Truck: own "
              "AND(Package in {Sport}, not (Engine in {V6})?))");
    EXPECT_TRUE(expression.getGlobalCriteria()->ownsNode());
}
