// What QueltEeFilterExpression::simplify and QueltEeMultiModelExpression::simplify make of random
// expressions.

#include "core/support/Effort.h"
#include "core/support/RandomExpressions.h"

#include "expression/QueltEeEvaluator.h"
#include "expression/QueltEeFilterExpression.h"
#include "expression/QueltEeMultiModelExpression.h"

#include <gtest/gtest.h>

namespace {

/// An effectivity that gives no copy.
class Uncopied : public QueltEeDateEff {
public:
    [[nodiscard]] QueltEeVarEff* createVarEffClone() const override { return nullptr; }
};

void add(QueltQmSpecList& list, QueltEeVarEff* effectivity) {
    EXPECT_EQ(list.addVarEff(effectivity), S_OK);
}

std::string simplified(int listMode, const Catalogue& catalogue,
                       std::initializer_list<QueltEeVarEff*> effectivities, bool hasNamed = false) {
    auto* const list = new QueltQmSpecList;
    for (QueltEeVarEff* const effectivity : effectivities) {
        add(*list, effectivity);
    }
    if (hasNamed) {
        list->getNamedEffectivities().Put(const_cast<QueltEePredefEff&>(catalogue.change));
    }
    QueltEeFilterExpression filter(&catalogue.truck, list);
    filter.setListMode(listMode);
    EXPECT_GE(filter.simplify(), S_OK);
    return textOf(filter);
}

QueltEeVarEff* anyEngine(const Catalogue& catalogue) {
    QueltEeVarEff* const effectivity = catalogue.engineIn({"V6", "V8", "V12"});
    effectivity->switchNoVar();
    return effectivity;
}

} // namespace

TEST(FilterSimplification, CombinesCriteriaOnOneVariable) {
    const Catalogue c;
    EXPECT_EQ(simplified(0, c, {c.engineIn({"V6", "V8"}), c.sport(), c.engineIn({"V8", "V12"})}),
              "filter(Truck: all: Engine in {V8}, Package in {Sport})");
    EXPECT_EQ(simplified(1, c, {c.engineIn({"V6"}), c.sport(), c.engineIn({"V8"})}, true),
              "filter(Truck: at least one: Engine in {V6, V8}, Package in {Sport}, eff(ECO-1))");
}

TEST(FilterSimplification, DropsWhatDecidesNothing) {
    const Catalogue c;
    EXPECT_EQ(simplified(0, c, {anyEngine(c), c.sport()}, true),
              "filter(Truck: all: Package in {Sport}, eff(ECO-1))");
    EXPECT_EQ(simplified(1, c, {c.engineIn({}), c.sport()}),
              "filter(Truck: at least one: Package in {Sport})");
}

TEST(FilterSimplification, KeepsOneCriterionThatDecidesAlone) {
    const Catalogue c;
    EXPECT_EQ(simplified(0, c, {c.sport(), c.engineIn({"V6"}), c.engineIn({"V8"})}, true),
              "filter(Truck: all: Engine in {})");
    EXPECT_EQ(simplified(1, c, {c.sport(), anyEngine(c), c.engineIn({"V8"})}, true),
              "filter(Truck: at least one: Engine in {V6, V8, V12}?)");
}

TEST(FilterSimplification, KeepsTheListWhenNothingCanBeSaidShorter) {
    const Catalogue catalogue;
    auto* const list = new QueltQmSpecList;
    add(*list, catalogue.sport());
    add(*list, catalogue.engineIn({"V6"}));
    QueltEeFilterExpression filter(nullptr, list);
    EXPECT_EQ(filter.simplify(), S_OK);
    EXPECT_EQ(filter.getSpecList(), list);
    QueltEeFilterExpression without(nullptr, nullptr);
    EXPECT_EQ(without.simplify(), S_OK);
    EXPECT_EQ(without.getSpecList(), nullptr);
}

TEST(FilterSimplification, ChangesNothingWhenACriterionGivesNoCopy) {
    const Catalogue catalogue;
    auto* const list = new QueltQmSpecList;
    add(*list, catalogue.sport());
    add(*list, new Uncopied);
    add(*list, catalogue.sport());
    QueltEeFilterExpression filter(nullptr, list);
    EXPECT_EQ(filter.simplify(), E_FAIL);
    EXPECT_EQ(filter.getSpecList(), list);
    EXPECT_EQ(list->getVarEffs().GetLength(), 3);
}

TEST(FilterSimplification, KeepsTheMeaning) {
    const SampleWorld world;
    RandomExpressions random(world, 51);
    int changed = 0;
    for (int round = 0; round < effort(20000); ++round) {
        const std::unique_ptr<QueltQmSpecList> list = random.list();
        const int mode = round % 2;
        QueltEeFilterExpression filter(world.dictionaries[0], list->clone());
        filter.setListMode(mode);
        const std::string before = textOf(filter);
        const long result = filter.simplify();
        const std::string after = textOf(filter);
        ASSERT_EQ(result, before != after ? 1 : S_OK) << before << " became " << after;
        changed += result == 1 ? 1 : 0;
        ASSERT_LE(filter.getSpecList()->getVarEffs().GetLength(), list->getVarEffs().GetLength());
        for (int sample = 0; sample < 6; ++sample) {
            const SampleConfiguration configuration = random.configuration();
            const PlainMeaning meaning(configuration);
            ASSERT_EQ(meaning.holds(*filter.getSpecList(), mode), meaning.holds(*list, mode))
                << before << " became " << after;
        }
        ASSERT_EQ(filter.simplify(), S_OK) << after;
    }
    EXPECT_GT(changed, effort(5000));
}

TEST(FilterSimplification, CombinesManyCriteria) {
    constexpr int count = 50'000;
    const Catalogue catalogue;
    auto* const list = new QueltQmSpecList;
    for (int number = 0; number < count; ++number) {
        add(*list, catalogue.unitIn(2 * number, 2 * number + 1));
    }
    QueltEeFilterExpression filter(nullptr, list);
    filter.setListMode(1);
    EXPECT_EQ(filter.simplify(), 1);
    EXPECT_EQ(filter.getSpecList()->getVarEffs().GetLength(), 1);
}

TEST(MultiModelSimplification, KeepsTheMeaningOfEveryPart) {
    const SampleWorld world;
    RandomExpressions random(world, 52);
    TreeShape shape;
    int changed = 0;
    for (int round = 0; round < effort(5000); ++round) {
        shape.hasUnknowns = round % 4 == 0;
        QueltEeEffectivityExpression expression;
        if (random.random().flip()) {
            EXPECT_EQ(expression.setGlobalCriteria(random.tree(shape).release()), S_OK);
        }
        for (const QueltEeModelDico* const dictionary : world.dictionaries) {
            QueltEeNodeRef* inherited = random.random().flip() ? random.tree(shape).release() : nullptr;
            QueltEeNodeRef* own = random.random().flip() ? random.tree(shape).release() : nullptr;
            EXPECT_EQ(expression.setModelCriteria(
                          *dictionary, new QueltEeMultiModelExpression::ModelCriteria(&inherited, &own)),
                      S_OK);
        }
        const std::string before = textOf(expression);
        std::vector<SampleConfiguration> configurations;
        std::vector<std::pair<long, bool>> expected;
        const auto evaluate = [&](const SampleConfiguration& sample, const QueltEeModelDico* dictionary) {
            bool holds = false;
            const QueltEeConfiguration configuration = sample.toConfiguration();
            const long result = QueltEeEvaluator(configuration).evaluate(expression, dictionary, holds);
            return std::pair(result, holds);
        };
        for (int sample = 0; sample < 4; ++sample) {
            configurations.push_back(random.configuration());
            for (const QueltEeModelDico* const dictionary : world.dictionaries) {
                expected.push_back(evaluate(configurations.back(), dictionary));
            }
        }
        const long result = expression.simplify();
        ASSERT_EQ(result, before != textOf(expression) ? 1 : S_OK);
        changed += result == 1 ? 1 : 0;
        std::size_t at = 0;
        for (const SampleConfiguration& configuration : configurations) {
            for (const QueltEeModelDico* const dictionary : world.dictionaries) {
                if (const auto& wanted = expected[at++]; wanted.first >= 0) {
                    ASSERT_EQ(evaluate(configuration, dictionary), wanted)
                        << before << " became " << textOf(expression);
                }
            }
        }
        ASSERT_EQ(expression.simplify(), S_OK);
    }
    EXPECT_GT(changed, effort(3000));
}

TEST(MultiModelSimplification, KeepsThePartsReferences) {
    const Catalogue catalogue;
    QueltEeChangeExpression expression;
    QueltEeNodeRef* const global = notOf(notOf(leafOf(catalogue.sport()))).release();
    EXPECT_EQ(expression.setGlobalCriteria(global), S_OK);
    EXPECT_EQ(expression.simplify(), 1);
    EXPECT_EQ(expression.getGlobalCriteria(), global);
    EXPECT_EQ(textOf(expression), "change(global: Package in {Sport})");
}
