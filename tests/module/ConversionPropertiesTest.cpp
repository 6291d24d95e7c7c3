#include "QueltEeTarselMigrationServices.h"

#include "core/support/Effort.h"
#include "module/support/Captured.h"
#include "module/support/EvolutionTrees.h"
#include "module/support/LiveAllocations.h"

#include "expression/QueltEeEvaluator.h"
#include "expression/QueltEeGenericExpression.h"
#include "expression/QueltEeMultiModelExpression.h"
#include "infrastructure/QueltInIntHolder.h"
#include "infrastructure/QueltInMap.h"
#include "infrastructure/QueltInMemory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <set>
#include <string>
#include <vector>

// What holds for the conversion of every tree, tried on random ones.

namespace {

using quelt::test::CapturedErrors;

const bool s_isRenumbering = std::getenv("CGE_MigRen") != nullptr;
const bool s_isOptimized = std::getenv("CFG_DA_Migration_Optimization") != nullptr;

/// A tree and what it was converted to. Both go with the object, in either order.
class Conversion {
public:
    Conversion(const ConversionWorld& world, OwnedReference tree, bool isChange, QueltEeBasicEff* behalf)
        : m_input(new QueltEeGenericExpression(tree.release())) {
        const CapturedErrors captured;
        result = QueltEeTarselMigrationServices::ConvertEeGenericExprToEeExpr(
            *m_input, world.context, isChange ? 1 : 0, m_map, behalf);
        errors = messagesIn(captured);
    }
    Conversion(const Conversion&) = delete;
    Conversion& operator=(const Conversion&) = delete;
    ~Conversion() {
        if (inputGoesFirst) {
            m_input.reset();
        }
        QueltInDeleteWithObjects(m_map);
    }

    [[nodiscard]] const QueltEeNodeRef& input() const { return *m_input->GetNodeRef(); }
    [[nodiscard]] const QueltEeMultiModelExpression* expression(unsigned int domain) const {
        return m_map != nullptr ? QueltEeMultiModelExpression::cast(m_map->Get(QueltInIntHolder(domain)))
                                : nullptr;
    }
    [[nodiscard]] int length() const { return m_map != nullptr ? m_map->GetLength() : -1; }
    /// Everything that came of it, as text.
    [[nodiscard]] std::string text() const {
        std::string text = std::to_string(result);
        for (const unsigned int domain : {1U, 2U, 3U}) {
            if (const QueltEeMultiModelExpression* const found = expression(domain)) {
                text += "\n" + std::to_string(domain) + ": " + textOf(*found);
            }
        }
        for (const std::string& error : errors) {
            text += "\n" + error;
        }
        return text + "\n" + textOf(*input().getNode());
    }

    long result = S_OK;
    std::vector<std::string> errors;
    bool inputGoesFirst = false;

private:
    /// The messages of error reports, and the errors that are written without report.
    static std::vector<std::string> messagesIn(const CapturedErrors& captured) {
        std::vector<std::string> messages;
        for (const QueltInTraceLine& line : captured.lines()) {
            if (line.text.starts_with(QueltInTraceClass::GetErrorIndent()) ||
                line.text.starts_with("ERROR")) {
                messages.emplace_back(line.text);
            }
        }
        return messages;
    }

    std::unique_ptr<QueltEeGenericExpression> m_input;
    QueltInMap* m_map = nullptr;
};

/// Opens an arena on demand, so that what a failed conversion leaves behind goes with it.
class MaybeArena {
public:
    explicit MaybeArena(bool isWanted) {
        if (isWanted) {
            m_scope.emplace(m_arena);
        }
    }

private:
    QueltInArena m_arena;
    std::optional<QueltInArenaScope> m_scope;
};

bool holdsIn(const QueltEeConfiguration& configuration, const QueltEeNode& node) {
    bool holds = false;
    EXPECT_EQ(QueltEeEvaluator(configuration).evaluate(node, holds), S_OK);
    return holds;
}

bool holdsIn(const QueltEeConfiguration& configuration, const QueltEeExpression& expression,
             const QueltEeModelDico& dictionary) {
    bool holds = false;
    EXPECT_EQ(QueltEeEvaluator(configuration).evaluate(expression, &dictionary, holds), S_OK);
    return holds;
}

/// False for a tree that the evaluator cannot tell anything about.
bool hasMeaning(const QueltEeNodeRef& root) {
    return unknownsOf(*root.getNode()).empty();
}

bool hasAlias(const QueltEeNodeRef& root) {
    for (const QueltEeNode* const node : nodesOf(root)) {
        const auto* const operation = dynamic_cast<const QueltEeOperator*>(node);
        QueltInLinkList children(QueltEeNodeRef::sType());
        if (operation != nullptr) {
            operation->getChildrenRefs(children);
        }
        if (std::ranges::any_of(children.elements(), [](const QueltInObject* child) {
                return !dynamic_cast<const QueltEeNodeRef&>(*child).ownsNode();
            })) {
            return true;
        }
    }
    return false;
}

/// A copy in which all bounds of series are inclusive, as the conversion makes them.
OwnedReference withInclusiveBounds(const QueltEeNode& tree) {
    OwnedReference copy(tree.clone());
    for (QueltEeSerialEff* const series : seriesOf(*copy)) {
        QueltInListVal intervals(QueltInObjectVal::sType());
        for (const QueltEeSerialEff::Interval& interval : series->intervals()) {
            QueltInSerialInterval inclusive;
            inclusive.setInterval(interval.a, 1, interval.b, 1);
            intervals.PutBack(inclusive);
        }
        EXPECT_EQ(series->set(intervals), S_OK);
    }
    return copy;
}

/// The configuration in which every rewritten series has the number after its own.
SampleConfiguration oneLater(const ConversionWorld& world, SampleConfiguration configuration) {
    std::set<QueltInGuid> rewritten; // a feature has a series in each dictionary that holds it
    for (const QueltEeSerialVar* const series : world.serials) {
        if (series->getExternalType() != QueltEeSerialVar::SerialExternalType::unitCounter) {
            rewritten.insert(series->getGuid());
        }
    }
    for (auto& [feature, number] : configuration.numbers) {
        number += rewritten.contains(feature) ? 1 : 0;
    }
    return configuration;
}

void expectApplies(const ConversionWorld& world, const Conversion& conversion,
                   const ExpectedConversion& expected, EvolutionTrees& trees) {
    ASSERT_EQ(conversion.length(), 1);
    const QueltEeMultiModelExpression* const expression = conversion.expression(2);
    ASSERT_NE(expression, nullptr);
    std::vector<const QueltEeModelDico*> filed;
    for (const auto& [dictionary, criteria] : expression->getModelCriteria()) {
        filed.push_back(dictionary);
        EXPECT_EQ(criteria->getInherited(), nullptr);
        EXPECT_NE(criteria->getOwn()->getNode(), conversion.input().getNode());
    }
    ASSERT_EQ(filed, expected.dictionaries());
    EXPECT_EQ(expression->getGlobalCriteria(), nullptr);
    if (!hasMeaning(conversion.input())) {
        return;
    }
    for (int tries = 2; tries > 0; --tries) {
        const QueltEeConfiguration configuration = trees.configuration().toConfiguration();
        const bool holds = holdsIn(configuration, *conversion.input().getNode());
        for (const QueltEeModelDico* const dictionary : world.dictionaries) {
            const auto* const criteria = expression->findModelCriteria(*dictionary);
            EXPECT_EQ(holdsIn(configuration, *expression, *dictionary), criteria != nullptr && holds);
            if (criteria != nullptr) {
                EXPECT_EQ(holdsIn(configuration, *criteria->getOwn()->getNode()), holds);
            }
        }
    }
}

/// Serial bounds are where they must be, and nothing else is different from `before`, a copy of what was
/// converted.
void expectInputIsOnlyShifted(const Conversion& conversion, const ExpectedConversion& expected,
                              const OwnedReference& before) {
    const std::vector<QueltEeSerialEff*> now = seriesOf(conversion.input());
    for (const QueltEeSerialEff* const series : now) {
        const auto rewritten = expected.rewritten().find(series);
        if (rewritten != expected.rewritten().end()) {
            EXPECT_TRUE(std::ranges::equal(series->intervals(), rewritten->second)) << textOf(*series);
        }
    }
    OwnedReference after(conversion.input().getNode()->clone());
    const std::vector<QueltEeSerialEff*> copies = seriesOf(*after);
    const std::vector<QueltEeSerialEff*> olds = seriesOf(*before);
    ASSERT_EQ(copies.size(), olds.size());
    if (!hasAlias(conversion.input())) {
        for (std::size_t i = 0; i < now.size(); ++i) {
            if (!expected.rewritten().contains(now[i])) {
                EXPECT_TRUE(std::ranges::equal(now[i]->intervals(), olds[i]->intervals())) << textOf(*now[i]);
            }
        }
    }
    forgetIntervals(*after);
    forgetIntervals(*before);
    EXPECT_EQ(textOf(*after->getNode()), textOf(*before->getNode()));
}

/// What is left without renumbering: the original, with every number one lower.
void expectOneLower(const ConversionWorld& world, const Conversion& conversion, const OwnedReference& before,
                    EvolutionTrees& trees) {
    const OwnedReference reference = withInclusiveBounds(*before->getNode());
    for (int tries = 2; tries > 0; --tries) {
        const SampleConfiguration configuration = trees.configuration();
        EXPECT_EQ(holdsIn(configuration.toConfiguration(), *conversion.input().getNode()),
                  holdsIn(oneLater(world, configuration).toConfiguration(), *reference->getNode()));
    }
}

/// What a batch of trees came to, so that a test can see that it did not look at the same thing all the time.
struct Tally {
    int converted = 0;
    int failed = 0;
    int underSeveral = 0;
    int withSeries = 0;
    int heapConverted = 0;
};

class EvolutionTreeConversion : public testing::TestWithParam<unsigned int> {
protected:
    void tryTree(EvolutionTrees& trees);

    const ConversionWorld m_world;
    Tally m_tally;
};

void EvolutionTreeConversion::tryTree(EvolutionTrees& trees) {
    QueltEeBasicEff* const behalf =
        trees.random().below(3) == 0 ? trees.random().oneOf(m_world.behalves) : nullptr;
    const bool isChange = trees.random().below(4) == 0;
    OwnedReference tree = trees.tree();
    const OwnedReference before(tree->getNode()->clone());
    SCOPED_TRACE(textOf(*before->getNode()) +
                 (behalf != nullptr ? " for " + textOf(*behalf) : std::string()));
    ExpectedConversion expected(m_world, behalf, s_isOptimized, s_isRenumbering);
    expected.find(*tree->getNode());
    const MaybeArena arena(expected.result() < 0 || trees.random().flip());
    Conversion conversion(m_world, std::move(tree), isChange, behalf);
    conversion.inputGoesFirst = trees.random().flip();
    ASSERT_EQ(conversion.result, expected.result()) << conversion.text();
    EXPECT_EQ(conversion.errors.empty(), conversion.result >= 0);
    if (conversion.result < 0) {
        ++m_tally.failed;
        EXPECT_LE(conversion.length(), 0);
    } else {
        ++m_tally.converted;
        m_tally.underSeveral += expected.dictionaries().size() > 1 ? 1 : 0;
        m_tally.withSeries += expected.rewritten().empty() ? 0 : 1;
        expectApplies(m_world, conversion, expected, trees);
        if (!s_isRenumbering && hasMeaning(conversion.input()) && !hasAlias(conversion.input())) {
            expectOneLower(m_world, conversion, before, trees);
        }
    }
    expectInputIsOnlyShifted(conversion, expected, before);
}

TEST_P(EvolutionTreeConversion, meansWhatTheInputMeans) {
    constexpr int count = effort(5000);
    EvolutionTrees trees(m_world, GetParam());
    for (int i = 0; i < count && !HasFailure(); ++i) {
        tryTree(trees);
    }
    EXPECT_GT(m_tally.converted, count / 4);
    EXPECT_GT(m_tally.failed, count / 20);
    EXPECT_GT(m_tally.underSeveral, count / 20);
    EXPECT_GT(m_tally.withSeries, count / 20);
}

INSTANTIATE_TEST_SUITE_P(Seeds, EvolutionTreeConversion, testing::Range(1U, 13U));

/// Trees of options and selections alone apply where every feature is held, in whatever order they stand.
TEST(FeatureTreeConversion, appliesWhereEveryFeatureIsHeld) {
    const ConversionWorld world;
    EvolutionTrees trees(world, 77);
    int checked = 0;
    for (int i = 0; i < effort(10000); ++i) {
        OwnedReference tree = trees.tree();
        std::vector<QueltInGuid> features;
        bool hasSeries = false;
        for (const QueltEeNode* const node : nodesOf(*tree)) {
            if (const auto* const leaf = dynamic_cast<const QueltEeVarEffLeaf*>(node)) {
                hasSeries =
                    hasSeries || dynamic_cast<const QueltEeNamedValueEff*>(leaf->getVarEff()) == nullptr;
                features.push_back(leaf->getVarEff()->getVar()->getGuid());
            }
        }
        if (hasSeries || features.empty()) {
            continue;
        }
        ++checked;
        std::vector<const QueltEeModelDico*> holders;
        std::ranges::copy_if(
            world.dictionaries, std::back_inserter(holders), [&](const QueltEeModelDico* dictionary) {
                return std::ranges::all_of(features, [&](const QueltInGuid& feature) {
                    return std::ranges::any_of(dictionary->getVariables(), [&](const auto& variable) {
                        return variable->getGuid() == feature;
                    });
                });
            });
        const MaybeArena arena(true);
        const Conversion conversion(world, std::move(tree), false, nullptr);
        SCOPED_TRACE(conversion.text());
        EXPECT_EQ(conversion.result, holders.empty() ? E_FAIL : S_OK);
        std::vector<const QueltEeModelDico*> filed;
        if (const QueltEeMultiModelExpression* const expression = conversion.expression(2)) {
            for (const auto& [dictionary, criteria] : expression->getModelCriteria()) {
                filed.push_back(dictionary);
            }
        }
        ASSERT_EQ(filed, holders);
    }
    EXPECT_GT(checked, effort(2000));
}

class AnyTreeConversion : public testing::TestWithParam<unsigned int> {
protected:
    void tryTree(RandomExpressions& trees);
    void tryOnHeap(const OwnedReference& before, RandomExpressions& trees, QueltEeBasicEff* behalf,
                   const std::string& text);

    const ConversionWorld m_world;
    Tally m_tally;
};

/// A successful conversion leaves nothing on the heap; the copies are the last to live inside.
void AnyTreeConversion::tryOnHeap(const OwnedReference& before, RandomExpressions& trees,
                                  QueltEeBasicEff* behalf, const std::string& text) {
    ++m_tally.heapConverted;
    std::string again;
    again.reserve(text.size());
    const long live = liveAllocations();
    {
        Conversion conversion(m_world, OwnedReference(before->getNode()->clone()), false, behalf);
        conversion.inputGoesFirst = trees.random().flip();
        again = conversion.text();
    }
    again.clear();
    again.shrink_to_fit();
    EXPECT_LE(liveAllocations(), live);
}

void AnyTreeConversion::tryTree(RandomExpressions& trees) {
    TreeShape shape;
    shape.maxDepth = 1 + trees.random().below(5);
    shape.hasNotDomain = trees.random().below(4) == 0;
    shape.hasUnknowns = trees.random().below(4) == 0;
    shape.hasAliases = trees.random().below(4) == 0;
    QueltEeBasicEff* const behalf =
        trees.random().below(3) == 0 ? trees.random().oneOf(m_world.behalves) : nullptr;
    const bool isChange = trees.random().below(4) == 0;
    OwnedReference tree = trees.tree(shape);
    const OwnedReference before(tree->getNode()->clone());
    SCOPED_TRACE(textOf(*before->getNode()));
    std::string first;
    bool isSuccess = false;
    {
        const MaybeArena arena(true);
        Conversion conversion(m_world, OwnedReference(before->getNode()->clone()), isChange, behalf);
        conversion.inputGoesFirst = trees.random().flip();
        const Conversion again(m_world, OwnedReference(before->getNode()->clone()), isChange, behalf);
        first = conversion.text();
        EXPECT_EQ(again.text(), first);
        isSuccess = conversion.result >= 0 && conversion.errors.empty() && !isChange;
        EXPECT_EQ(conversion.result < 0, conversion.length() <= 0);
        (conversion.result < 0 ? m_tally.failed : m_tally.converted) += 1;
    }
    {
        // The tree itself, with its aliases, from the heap; what is converted lies in an arena.
        const MaybeArena arena(true);
        const Conversion conversion(m_world, std::move(tree), isChange, behalf);
        forgetIntervals(conversion.input());
        const OwnedReference reference(before->getNode()->clone());
        forgetIntervals(*reference);
        ASSERT_EQ(textOf(*conversion.input().getNode()), textOf(*reference->getNode()));
    }
    if (isSuccess) {
        tryOnHeap(before, trees, behalf, first);
    }
}

TEST_P(AnyTreeConversion, isSafeAndRepeatable) {
    constexpr int count = effort(5000);
    RandomExpressions trees(m_world, GetParam());
    for (int i = 0; i < count && !HasFailure(); ++i) {
        tryTree(trees);
    }
    EXPECT_GT(m_tally.converted, count / 20);
    EXPECT_GT(m_tally.failed, count / 10);
    EXPECT_GT(m_tally.heapConverted, count / 40);
}

INSTANTIATE_TEST_SUITE_P(Seeds, AnyTreeConversion, testing::Range(1001U, 1009U));

} // namespace
