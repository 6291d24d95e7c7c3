#include "compiled/QueltDnf.h"

#include "core/support/Effort.h"
#include "core/support/RandomExpressions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace {

using OwnedDnf = std::unique_ptr<QueltDnf>;

OwnedDnf makeDnf(const QueltEeNode& node, bool negated = false) {
    QueltDnf* dnf = nullptr;
    EXPECT_EQ(QueltDnf::make(node, negated, dnf), S_OK) << textOf(node);
    return OwnedDnf(dnf);
}

std::string dnfText(const OwnedReference& tree, bool negated = false) {
    const OwnedDnf dnf = makeDnf(*tree->getNode(), negated);
    return dnf != nullptr ? textOf(*dnf) : "none";
}

/// The result of making a form that is to be refused.
long refusal(const QueltEeNode& node, bool negated = false) {
    QueltDnf unchanged;
    QueltDnf* dnf = &unchanged;
    const long result = QueltDnf::make(node, negated, dnf);
    EXPECT_EQ(dnf, nullptr);
    return result;
}

bool holds(const QueltDnf& dnf, const PlainMeaning& meaning) {
    return std::ranges::any_of(dnf.getConjunctions(), [&](const QueltDnf::Conjunction& conjunction) {
        return std::ranges::all_of(
            conjunction, [&](const QueltEeNodeRef* literal) { return meaning.holds(*literal->getNode()); });
    });
}

/// On what a literal depends, for telling that no conjunction has two literals that could be one.
std::string criterionOf(const QueltEeNode& literal) {
    if (const auto* const leaf = dynamic_cast<const QueltEeEffLeaf*>(&literal)) {
        const std::string dictionary =
            leaf->getReferencedContext() != nullptr ? textOf(*leaf->getReferencedContext()) : "none";
        return textOf(*leaf->getTargetEff()) + " in " + dictionary;
    }
    const QueltEeVarEff& effectivity = *dynamic_cast<const QueltEeVarEffLeaf&>(literal).getVarEff();
    const std::string feature =
        effectivity.getVar() != nullptr ? textOf(effectivity.getVar()->getGuid()) : std::string("date");
    // The two Engines, and the two Trims, that agree count as one; that of the bus is another one.
    const auto* const variable = dynamic_cast<const QueltEeVariable*>(effectivity.getVar());
    const bool isBus = variable != nullptr && variable->getHolderDico() != nullptr &&
                       textOf(*variable->getHolderDico()) == "Bus" && feature != textOf(guidOf(3));
    return feature + (isBus ? " of the bus" : "");
}

void expectWellFormed(const QueltDnf& dnf) {
    std::set<std::string> conjunctions;
    for (const QueltDnf::Conjunction& conjunction : dnf.getConjunctions()) {
        std::set<std::string> criteria;
        std::set<std::string> texts;
        for (const QueltEeNodeRef* const literal : conjunction) {
            ASSERT_TRUE(literal->ownsNode());
            ASSERT_NE(dynamic_cast<const QueltEeNodeElementaryLeaf*>(literal->getNode()), nullptr);
            ASSERT_TRUE(criteria.insert(criterionOf(*literal->getNode())).second) << textOf(dnf);
            texts.insert(criterionOf(*literal->getNode()) + ": " + textOf(*literal));
        }
        std::string all;
        for (const std::string& text : texts) {
            all += text + "&";
        }
        ASSERT_TRUE(conjunctions.insert(all).second) << textOf(dnf);
    }
}

/// The result code for the first node, in order, that has no place in a normal form.
long firstRefusal(const QueltEeNode& node) {
    if (isUnknown(node)) {
        return dynamic_cast<const QueltEeRestrictionEffLeaf*>(&node) != nullptr ? E_UNEXPECTED : E_INVALIDARG;
    }
    QueltInLinkList children(QueltEeNodeRef::sType());
    if (const auto* const operation = dynamic_cast<const QueltEeOperator*>(&node)) {
        operation->getChildrenRefs(children);
    }
    for (QueltInObject* const child : children.elements()) {
        const long result = firstRefusal(*dynamic_cast<QueltEeNodeRef&>(*child).getNode());
        if (result < 0) {
            return result;
        }
    }
    return S_OK;
}

/// Changes, as many as are needed.
class Changes {
public:
    explicit Changes(std::size_t count) {
        for (std::size_t number = 0; number < count; ++number) {
            m_changes.push_back(
                std::make_unique<QueltEePredefEff>("ECO-" + std::to_string(number), QueltInGuid()));
        }
    }
    [[nodiscard]] OwnedReference leaf(std::size_t number) const {
        return held(new QueltEeEffLeaf(m_changes[number].get(), nullptr));
    }
    /// AND of `count` ORs of two, each change once: 2^count conjunctions.
    [[nodiscard]] OwnedReference pairs(std::size_t count, std::size_t first = 0) const {
        OwnedReference all = allOf();
        for (std::size_t pair = 0; pair < count; ++pair) {
            OwnedReference either = anyOf(leaf(first + 2 * pair), leaf(first + 2 * pair + 1));
            EXPECT_EQ(groupIn(*all).addChild(*either.release()->getNode()), S_OK);
        }
        return all;
    }
    /// AND or OR of `count` changes.
    template <class Group>
    [[nodiscard]] OwnedReference group(std::size_t count, std::size_t first = 0) const {
        OwnedReference all = groupOf<Group>();
        for (std::size_t number = 0; number < count; ++number) {
            EXPECT_EQ(groupIn(*all).addChild(*leaf(first + number).release()->getNode()), S_OK);
        }
        return all;
    }

private:
    std::vector<std::unique_ptr<QueltEePredefEff>> m_changes;
};

} // namespace

TEST(QueltDnf, StartsAsFalse) {
    const QueltDnf dnf;
    EXPECT_TRUE(dnf.getConjunctions().empty());
    EXPECT_EQ(textOf(dnf), "FALSE");
}

TEST(QueltDnf, IsBuiltConjunctionByConjunction) {
    const Catalogue catalogue;
    QueltDnf dnf;
    EXPECT_EQ(dnf.addConjunction(), S_OK);
    EXPECT_EQ(textOf(dnf), "TRUE");
    EXPECT_EQ(dnf.addLiteral(leafOf(catalogue.sport()).release()), S_OK);
    EXPECT_EQ(textOf(dnf), "Package in {Sport}");
    EXPECT_EQ(dnf.addLiteral(leafOf(catalogue.engineIn({"V6"})).release()), S_OK);
    EXPECT_EQ(textOf(dnf), "AND(Package in {Sport}, Engine in {V6})");
    EXPECT_EQ(dnf.addConjunction(), S_OK);
    EXPECT_EQ(textOf(dnf), "OR(AND(Package in {Sport}, Engine in {V6}), TRUE)");
    EXPECT_EQ(dnf.addLiteral(leafOf(catalogue.engineIn({"V8"})).release()), S_OK);
    EXPECT_EQ(textOf(dnf), "OR(AND(Package in {Sport}, Engine in {V6}), Engine in {V8})");
    const OwnedReference tree(dnf.makeTree());
    EXPECT_EQ(textOf(*tree), textOf(dnf));
    ASSERT_EQ(dnf.getConjunctions().size(), 2U);
    EXPECT_EQ(dnf.getConjunctions()[0].size(), 2U);
    EXPECT_NE(childOf(groupIn(*tree), 1).getNode(), dnf.getConjunctions()[1][0]->getNode());
}

TEST(QueltDnf, RefusesWhatIsNoLiteral) {
    const Catalogue catalogue;
    QueltDnf dnf;
    const OwnedReference leaf = leafOf(catalogue.sport());
    EXPECT_EQ(dnf.addLiteral(nullptr), E_POINTER);
    EXPECT_EQ(dnf.addLiteral(leaf.get()), E_INVALIDARG); // there is no conjunction
    EXPECT_EQ(dnf.addConjunction(), S_OK);
    EXPECT_EQ(dnf.addLiteral(always().get()), E_INVALIDARG);
    EXPECT_EQ(dnf.addLiteral(allOf().get()), E_INVALIDARG);
    EXPECT_EQ(dnf.addLiteral(held(new QueltEeRestrictionEffLeaf("text")).get()), E_INVALIDARG);
    EXPECT_EQ(dnf.addLiteral(held(new QueltEeVarEffLeaf).get()), E_INVALIDARG);
    EXPECT_EQ(dnf.addLiteral(held(new QueltEeEffLeaf(nullptr, nullptr)).get()), E_INVALIDARG);
    const OwnedReference empty(new QueltEeNodeRef);
    EXPECT_EQ(dnf.addLiteral(empty.get()), E_INVALIDARG);
    const OwnedReference alias(QueltEeNodeRef::makeAlias(*leaf->getNode()));
    EXPECT_EQ(dnf.addLiteral(alias.get()), E_INVALIDARG);
    const OwnedReference parent = allOf(leafOf(catalogue.sport()));
    EXPECT_EQ(dnf.addLiteral(&childOf(groupIn(*parent), 0)), E_INVALIDARG);
    EXPECT_TRUE(leaf->standsAlone());
    EXPECT_TRUE(dnf.getConjunctions().front().empty());
}

TEST(QueltDnf, EndsAtItsLimits) {
    const Catalogue catalogue;
    const auto leaf = [&catalogue] {
        return held(new QueltEeEffLeaf(const_cast<QueltEePredefEff*>(&catalogue.change), nullptr));
    };
    QueltDnf dnf;
    for (std::size_t count = 0; count < QueltDnf::s_maxConjunctions; ++count) {
        ASSERT_EQ(dnf.addConjunction(), S_OK);
    }
    EXPECT_EQ(dnf.addConjunction(), E_OUTOFMEMORY);
    for (std::size_t count = 0; count < QueltDnf::s_maxLiterals; ++count) {
        ASSERT_EQ(dnf.addLiteral(leaf().release()), S_OK);
    }
    const OwnedReference last = leaf();
    EXPECT_EQ(dnf.addLiteral(last.get()), E_OUTOFMEMORY);
    EXPECT_TRUE(last->standsAlone());
}

TEST(QueltDnf, CountsTheValuesOfItsLiterals) {
    const Catalogue catalogue;
    const auto longLeaf = [&catalogue](int intervals) {
        auto* const effectivity = new QueltEeSerialEff(&catalogue.unit);
        for (int number = 0; number < intervals; ++number) {
            effectivity->addInterval({2 * number, 2 * number, 1, 1});
        }
        return leafOf(effectivity);
    };
    QueltDnf dnf;
    EXPECT_EQ(dnf.addConjunction(), S_OK);
    for (std::size_t values = 0; values + 1'000'000 <= QueltDnf::s_maxValues; values += 1'000'000) {
        ASSERT_EQ(dnf.addLiteral(longLeaf(1'000'000).release()), S_OK);
    }
    EXPECT_EQ(dnf.addLiteral(longLeaf(1).get()), E_OUTOFMEMORY);
}

TEST(QueltDnfMake, MakesTheForm) {
    Catalogue c;
    const auto v6 = [&c] { return leafOf(c.engineIn({"V6"})); };
    const auto v68 = [&c] { return leafOf(c.engineIn({"V6", "V8"})); };
    const auto v812 = [&c] { return leafOf(c.engineIn({"V8", "V12"})); };
    const auto sport = [&c] { return leafOf(c.sport()); };
    const auto change = [&c] { return held(new QueltEeEffLeaf(&c.change, nullptr)); };
    const auto base = [&c] { return held(new QueltEeEffLeaf(&c.basic, nullptr)); };
    EXPECT_EQ(dnfText(always()), "TRUE");
    EXPECT_EQ(dnfText(always(), true), "FALSE");
    EXPECT_EQ(dnfText(v6()), "Engine in {V6}");
    EXPECT_EQ(dnfText(v6(), true), "not (Engine in {V6})?");
    EXPECT_EQ(dnfText(allOf(v6(), sport())), "AND(Engine in {V6}, Package in {Sport})");
    EXPECT_EQ(dnfText(allOf(v6(), sport()), true), "OR(not (Engine in {V6})?, not (Package in {Sport})?)");
    EXPECT_EQ(dnfText(allOf(anyOf(change(), sport()), anyOf(base(), v6()))),
              "OR(AND(eff(ECO-1), eff(EFF-7)), AND(eff(ECO-1), Engine in {V6}), AND(Package in {Sport}, "
              "eff(EFF-7)), "
              "AND(Package in {Sport}, Engine in {V6}))");
    // Literals on one variable meet; what contradicts itself is left out; the common literal takes its place.
    EXPECT_EQ(dnfText(allOf(v68(), anyOf(allOf(v812(), sport()), allOf(notOf(v68()), change())))),
              "AND(Engine in {V8}, Package in {Sport})");
    // What another conjunction includes is left out.
    EXPECT_EQ(dnfText(allOf(anyOf(change(), sport()), anyOf(change(), base()))),
              "OR(eff(ECO-1), AND(Package in {Sport}, eff(EFF-7)))");
    EXPECT_EQ(dnfText(allOf(anyOf(v6(), change()), anyOf(v6(), allOf(leafOf(c.engineIn({"V8"})), change())))),
              "OR(Engine in {V6}, AND(eff(ECO-1), Engine in {V8}))");
    // Conjunctions of one literal on one criterion are one; together they may be everything.
    EXPECT_EQ(dnfText(anyOf(allOf(v6(), anyOf(v68(), sport())),
                            allOf(leafOf(c.engineIn({"V12"})), anyOf(v812(), sport())))),
              "Engine in {V6, V12}");
    EXPECT_EQ(
        dnfText(anyOf(allOf(v6(), anyOf(v68(), sport())), allOf(notOf(v6()), anyOf(notOf(v6()), sport())))),
        "TRUE");
    EXPECT_EQ(dnfText(notOf<QueltEeNotDomainOp>(anyOf(v6(), allOf(sport(), change())))),
              "OR(AND(not (Engine in {V6}), not (Package in {Sport})), AND(not (Engine in {V6}), not "
              "(eff(ECO-1))))");
}

TEST(QueltDnfMake, RefusesWhatHasNoPlaceInAForm) {
    const Catalogue catalogue;
    EXPECT_EQ(refusal(QueltEeRestrictionEffLeaf("text")), E_UNEXPECTED);
    EXPECT_EQ(refusal(QueltEeVarEffLeaf()), E_INVALIDARG);
    EXPECT_EQ(refusal(QueltEeEffLeaf(nullptr, nullptr)), E_INVALIDARG);
    EXPECT_EQ(refusal(QueltEeNotOp()), E_INVALIDARG);
    EXPECT_EQ(refusal(*allOf(never(), held(new QueltEeRestrictionEffLeaf("text")))->getNode()), E_UNEXPECTED);
    EXPECT_EQ(refusal(*allOf(always(), held(new Unique))->getNode()), E_FAIL);
    OwnedReference target = always();
    const OwnedReference group = allOf(OwnedReference(leafOf(catalogue.sport())));
    EXPECT_EQ(groupIn(*group).getChildren().PutBack(*QueltEeNodeRef::makeAlias(*target->getNode())), S_OK);
    EXPECT_EQ(makeDnf(*group->getNode())->getConjunctions().size(), 1U);
    target.reset();
    EXPECT_EQ(refusal(*group->getNode()), E_INVALIDARG);
}

TEST(QueltDnfMake, KeepsTheMeaning) {
    const SampleWorld world;
    RandomExpressions random(world, 71);
    TreeShape shape;
    std::size_t longest = 0;
    int refused = 0;
    for (int round = 0; round < effort(30000); ++round) {
        shape.hasAliases = round % 4 == 0;
        shape.hasUnknowns = round % 8 == 1;
        const OwnedReference tree = random.tree(shape);
        const std::string before = textOf(*tree);
        const bool negated = random.random().flip();
        if (const long expected = firstRefusal(*tree->getNode()); expected < 0) {
            ASSERT_EQ(refusal(*tree->getNode(), negated), expected) << before;
            ++refused;
            continue;
        }
        const OwnedDnf dnf = makeDnf(*tree->getNode(), negated);
        ASSERT_NE(dnf, nullptr);
        ASSERT_EQ(textOf(*tree), before);
        ASSERT_NO_FATAL_FAILURE(expectWellFormed(*dnf));
        longest = std::max(longest, dnf->getConjunctions().size());
        const OwnedReference asTree(dnf->makeTree());
        ASSERT_EQ(textOf(*asTree), textOf(*dnf));
        for (int sample = 0; sample < 8; ++sample) {
            const SampleConfiguration configuration = random.configuration();
            const PlainMeaning meaning(configuration);
            const bool expected = meaning.holds(*tree->getNode()) != negated;
            ASSERT_EQ(holds(*dnf, meaning), expected)
                << before << (negated ? " negated" : "") << ": " << textOf(*dnf);
            ASSERT_EQ(meaning.holds(*asTree->getNode()), expected);
        }
    }
    EXPECT_GT(longest, 10U);
    EXPECT_GT(refused, effort(500));
}

TEST(QueltDnfMake, MakesFormsUpToItsLimits) {
    const Changes changes(40);
    const OwnedDnf dnf = makeDnf(*changes.pairs(13)->getNode());
    ASSERT_NE(dnf, nullptr);
    EXPECT_EQ(dnf->getConjunctions().size(), 8192U);
    for (const QueltDnf::Conjunction& conjunction : dnf->getConjunctions()) {
        ASSERT_EQ(conjunction.size(), 13U);
    }
    // Negated, it is the thirteen conjunctions of two.
    EXPECT_EQ(makeDnf(*changes.pairs(13)->getNode(), true)->getConjunctions().size(), 13U);
    // 4,096 conjunctions of 12 and 36 more literals are 196,608.
    const Changes more(100);
    EXPECT_NE(makeDnf(*allOf(more.pairs(12), more.group<QueltEeAndOp>(36, 40))->getNode()), nullptr);
    EXPECT_EQ(refusal(*allOf(more.pairs(12), more.group<QueltEeAndOp>(37, 40))->getNode()), E_OUTOFMEMORY);
}

// These end at all: done without limit, they would take years.
TEST(QueltDnfMake, GivesUpWhereTheFormWouldExplode) {
    for (const std::size_t pairs : {14U, 1000U}) {
        const Changes changes(2 * pairs);
        const OwnedReference tree = changes.pairs(pairs);
        EXPECT_EQ(refusal(*tree->getNode()), E_OUTOFMEMORY);
    }
    const Changes changes(128);
    const OwnedReference nested = anyOf(changes.leaf(0), notOf(notOf(changes.pairs(64))));
    EXPECT_EQ(refusal(*nested->getNode()), E_OUTOFMEMORY);
}

TEST(QueltDnfMake, GivesUpWhenThePartsTogetherWouldExplode) {
    // Each level holds a form of 8,192 conjunctions while the one below is being made.
    const Changes changes(26 * 40 + 1);
    OwnedReference tree = changes.leaf(0);
    for (std::size_t level = 0; level < 40; ++level) {
        tree = anyOf(allOf(changes.pairs(13, 26 * level), changes.leaf(1040)),
                     allOf(std::move(tree), changes.leaf(1040)));
    }
    EXPECT_EQ(refusal(*tree->getNode()), E_OUTOFMEMORY);
}

TEST(QueltDnfMake, GivesUpWhenLongEffectivitiesWouldBeRepeated) {
    const Changes changes(40);
    const Catalogue catalogue;
    const auto withLongLeaf = [&](std::size_t pairs) {
        auto* const effectivity = new QueltEeSerialEff(&catalogue.unit);
        for (int number = 0; number < 1000; ++number) {
            effectivity->addInterval({2 * number, 2 * number, 1, 1});
        }
        return allOf(changes.pairs(pairs), leafOf(effectivity));
    };
    EXPECT_NE(makeDnf(*withLongLeaf(11)->getNode()), nullptr); // 2,048,000 intervals
    EXPECT_EQ(refusal(*withLongLeaf(12)->getNode()), E_OUTOFMEMORY);
}

TEST(QueltDnfMake, KeepsShortWhatOnlyLooksAsIfItExploded) {
    // Every OR has the first change, so that all but one conjunction are included by it.
    const Changes changes(200);
    OwnedReference tree = allOf();
    for (std::size_t number = 1; number < 200; ++number) {
        OwnedReference either = anyOf(changes.leaf(0), changes.leaf(number));
        EXPECT_EQ(groupIn(*tree).addChild(*either.release()->getNode()), S_OK);
    }
    const OwnedDnf dnf = makeDnf(*tree->getNode());
    ASSERT_NE(dnf, nullptr);
    ASSERT_EQ(dnf->getConjunctions().size(), 2U);
    EXPECT_EQ(dnf->getConjunctions()[0].size(), 1U);
    EXPECT_EQ(dnf->getConjunctions()[1].size(), 199U);
}

TEST(QueltDnfMake, GoesAsDeepAsTheTree) {
    constexpr std::size_t depth = effort(1'000'000);
    EXPECT_EQ(dnfText(singleChain<QueltEeNotOp>(depth + 1)), "FALSE");
    const Changes changes(3);
    OwnedReference tree = changes.leaf(0);
    for (std::size_t level = 0; level < depth / 10; ++level) {
        tree = level % 2 == 0 ? allOf(std::move(tree), changes.leaf(1))
                              : anyOf(std::move(tree), changes.leaf(2));
    }
    EXPECT_EQ(makeDnf(*tree->getNode())->getConjunctions().size(), 2U);
}

TEST(QueltDnfMake, RefusesATreeWithTooManyWays) {
    // 2^64 ways lead from the top to the bottom.
    std::vector<OwnedReference> levels;
    levels.push_back(allOf(never(), always()));
    for (int level = 0; level < 64; ++level) {
        QueltEeNode& below = *levels.back()->getNode();
        levels.push_back(level % 2 == 0 ? anyOf() : allOf());
        for (int times = 0; times < 2; ++times) {
            EXPECT_EQ(groupIn(*levels.back()).getChildren().PutBack(*QueltEeNodeRef::makeAlias(below)), S_OK);
        }
    }
    EXPECT_EQ(refusal(*levels.back()->getNode()), E_OUTOFMEMORY);
    while (!levels.empty()) {
        levels.pop_back();
    }
}

TEST(QueltDnfMake, TellsVariablesApartWhoseValuesDisagree) {
    const SampleWorld world;
    const auto engineIn = [&world](std::size_t dictionary, const char* value) {
        const QueltEeCatOptionVar* const engine = world.options[dictionary];
        auto* const effectivity = new QueltEeOptionEff(engine);
        EXPECT_EQ(effectivity->addValue(engine->findValue(value).value()), S_OK);
        return leafOf(effectivity);
    };
    const auto change = [&world](std::size_t number) {
        return held(new QueltEeEffLeaf(world.effectivities[number], nullptr));
    };
    EXPECT_EQ(dnfText(allOf(engineIn(0, "V6"), anyOf(change(0), allOf(engineIn(1, "V8"), change(1))))),
              "AND(Engine in {V6}, eff(ECO-1))");
    EXPECT_EQ(dnfText(allOf(engineIn(0, "V6"), anyOf(change(0), allOf(engineIn(2, "V8"), change(1))))),
              "OR(AND(Engine in {V6}, eff(ECO-1)), AND(Engine in {V6}, Engine in {V8}, eff(ECO-2)))");
}
