#include "compiled/QueltEeDnfConvertor.h"

#include "core/compiled/CompiledSamples.h"
#include "core/expression/ExpressionSamples.h"

#include "compiled/QueltIDictionaryModelerAccess.h"
#include "expression/QueltEeExpressionContext.h"
#include "infrastructure/QueltInMemory.h"

namespace {

/// What a normal form is converted with.
struct Surroundings {
    QueltEeModelDico dictionary{"Truck", guidOf(11)};
    QueltEeExpressionContext context;

    OwnedReference convert(const QueltDnf& dnf, const QueltIDictionaryModelerAccess* access = nullptr) {
        return OwnedReference(QueltEeDnfConvertor::Dnf2NodeRef(dnf, dictionary, context, access));
    }
    std::string textOfTree(const QueltDnf& dnf) {
        const OwnedReference tree = convert(dnf);
        EXPECT_NE(tree, nullptr);
        return tree != nullptr ? textOf(*tree) : "";
    }
};

/// The normal form that a binary with one context holds.
struct ReadForm {
    explicit ReadForm(const CompiledBytes& bytes) {
        long result = E_FAIL;
        effectivity = readBytes(bytes.sealed(), result);
        EXPECT_EQ(result, S_OK);
    }
    [[nodiscard]] const QueltDnf& dnf() const { return onlyDnfOf(*effectivity); }

    OwnedEffectivity effectivity;
};

std::string convertedText(const CompiledBytes& bytes) {
    const ReadForm form(bytes);
    return Surroundings().textOfTree(form.dnf());
}

constexpr const char* s_first = "00000000-0000-0000-0000-000000000015";
constexpr const char* s_second = "00000000-0000-0000-0000-000000000016";

std::string change(const char* guid) {
    return "eff(" + std::string(guid) + ", Truck)";
}

TEST(QueltEeDnfConvertor, MakesEachShapeOfTree) {
    const std::string first = change(s_first);
    const std::string notSecond = "not (" + change(s_second) + ")";
    EXPECT_EQ(convertedText(CompiledBytes().onlyDnf(0)), "FALSE");
    EXPECT_EQ(convertedText(CompiledBytes().onlyDnf(1).number(0)), "TRUE");
    EXPECT_EQ(convertedText(CompiledBytes().onlyDnf(1).number(1).effectivity(21)), first);
    EXPECT_EQ(convertedText(CompiledBytes().onlyDnf(1).number(1).effectivity(22, true)), notSecond);
    EXPECT_EQ(convertedText(
                  CompiledBytes().onlyDnf(1).number(3).effectivity(21).effectivity(22, true).effectivity(21)),
              "AND(" + first + ", " + notSecond + ", " + first + ")");
    EXPECT_EQ(
        convertedText(CompiledBytes().onlyDnf(2).number(1).effectivity(22, true).number(1).effectivity(21)),
        "OR(" + notSecond + ", " + first + ")");
    EXPECT_EQ(convertedText(CompiledBytes()
                                .onlyDnf(3)
                                .number(2)
                                .effectivity(21)
                                .effectivity(22, true)
                                .number(0)
                                .number(1)
                                .effectivity(21)),
              "OR(AND(" + first + ", " + notSecond + "), TRUE, " + first + ")");
}

TEST(QueltEeDnfConvertor, MakesOptionLeaves) {
    EXPECT_EQ(convertedText(CompiledBytes().onlyDnf(1).number(1).option(22, 2).text("V6").text("V8")),
              std::string(s_second) + " in {V6, V8}");
    EXPECT_EQ(convertedText(CompiledBytes().onlyDnf(1).number(1).option(22, 1, true).text("V6")),
              "not (" + std::string(s_second) + " in {V6})?");
    EXPECT_EQ(convertedText(CompiledBytes().onlyDnf(1).number(1).option(22, 0)),
              std::string(s_second) + " in {}");
}

TEST(QueltEeDnfConvertor, MakesChangesOfItsOwnThatTheContextOwns) {
    Surroundings surroundings;
    OwnedReference tree;
    {
        const ReadForm form(
            CompiledBytes().onlyDnf(2).number(1).effectivity(21).number(1).effectivity(21, true));
        tree = surroundings.convert(form.dnf());
    } // the form, and what its leaves refer to, is gone
    ASSERT_NE(tree, nullptr);
    const auto* const leaf = QueltEeEffLeaf::cast(childOf(groupIn(*tree), 0).getNode());
    const auto* const negated = QueltEeEffLeaf::cast(childOf(groupIn(*tree), 1).getNode());
    ASSERT_NE(leaf, nullptr);
    ASSERT_NE(negated, nullptr);
    EXPECT_NE(QueltEePredefEff::cast(leaf->getTargetEff()), nullptr);
    EXPECT_EQ(leaf->getTargetEff()->getGuid(), guidOf(21));
    EXPECT_EQ(textOf(leaf->getTargetEff()->getName()), s_first);
    EXPECT_EQ(leaf->getTargetEff(), negated->getTargetEff());
    EXPECT_EQ(leaf->getReferencedContext(), &surroundings.dictionary);
    EXPECT_EQ(leaf->isNegated(), 0);
    EXPECT_NE(negated->isNegated(), 0);
}

TEST(QueltEeDnfConvertor, MakesOneOptionWithAllValuesThatAreNamed) {
    Surroundings surroundings;
    OwnedReference tree;
    {
        CompiledBytes bytes;
        bytes.onlyDnf(2).number(1).option(22, 2).text("B").text("C");
        bytes.number(2).option(22, 1, true).text("A").option(21, 1).text("A");
        const ReadForm form(bytes);
        tree = surroundings.convert(form.dnf());
    }
    ASSERT_NE(tree, nullptr);
    const auto optionIn = [](const QueltEeNode* node) {
        return QueltEeOptionEff::cast(QueltEeVarEffLeaf::cast(node)->getVarEff());
    };
    const QueltEeOptionEff* const first = optionIn(childOf(groupIn(*tree), 0).getNode());
    QueltEeNodeRef& rest = childOf(groupIn(*tree), 1);
    const QueltEeOptionEff* const second = optionIn(childOf(groupIn(rest), 0).getNode());
    const QueltEeOptionEff* const other = optionIn(childOf(groupIn(rest), 1).getNode());
    const auto* const variable = QueltEeCatOptionVar::cast(first->getVar());
    ASSERT_NE(variable, nullptr);
    EXPECT_EQ(second->getVar(), variable);
    EXPECT_NE(other->getVar(), variable);
    EXPECT_EQ(variable->getGuid(), guidOf(22));
    EXPECT_EQ(textOf(variable->getName()), s_second);
    ASSERT_EQ(variable->getValueCount(), 3U);
    EXPECT_EQ(variable->getValueName(0), "B");
    EXPECT_EQ(variable->getValueName(1), "C");
    EXPECT_EQ(variable->getValueName(2), "A");
    EXPECT_EQ(variable->getHolderDico(), nullptr);
}

/// A modeler that knows one change and one option.
class Modeler : public QueltIDictionaryModelerAccess {
public:
    Modeler() {
        engine.addValue("V8");
        engine.addValue("V6");
    }
    [[nodiscard]] QueltEeEffectivity* findEffectivity(const QueltInGuid& guid) const override {
        return guid == m_change.getGuid() ? &m_change : nullptr;
    }
    [[nodiscard]] const QueltEeCatOptionVar* findOption(const QueltInGuid& guid) const override {
        return guid == engine.getGuid() ? &engine : nullptr;
    }

    QueltEeCatOptionVar engine{"Engine", guidOf(22)};

private:
    mutable QueltEeBasicEff m_change{"EFF-7", guidOf(21)};
};

TEST(QueltEeDnfConvertor, TakesWhatTheModelerKnows) {
    CompiledBytes bytes;
    bytes.onlyDnf(1).number(5);
    bytes.effectivity(21, true).effectivity(22).option(21, 1).text("V6").option(22, 1).text("V6").option(
        22, 0, true);
    const ReadForm form(bytes);
    const Modeler modeler;
    Surroundings surroundings;
    const OwnedReference tree = surroundings.convert(form.dnf(), &modeler);
    ASSERT_NE(tree, nullptr);
    EXPECT_EQ(textOf(*tree), "AND(not (eff(EFF-7, Truck)), " + change(s_second) + ", " + s_first +
                                 " in {V6}, Engine in {V6}, not (Engine in {})?)");
    const auto* const leaf = QueltEeEffLeaf::cast(childOf(groupIn(*tree), 0).getNode());
    EXPECT_EQ(leaf->getTargetEff(), modeler.findEffectivity(guidOf(21)));
    const auto* const option = QueltEeVarEffLeaf::cast(childOf(groupIn(*tree), 3).getNode());
    EXPECT_EQ(option->getVarEff()->getVar(), &modeler.engine);
}

TEST(QueltEeDnfConvertor, MakesTheOptionThatTheModelerKnowsWithoutAValue) {
    // A leaf that left V12 out would say something else, and one option is one variable in a tree.
    CompiledBytes bytes;
    bytes.onlyDnf(1).number(2).option(22, 1).text("V6").option(22, 2).text("V12").text("V8");
    const ReadForm form(bytes);
    const Modeler modeler;
    Surroundings surroundings;
    const OwnedReference tree = surroundings.convert(form.dnf(), &modeler);
    ASSERT_NE(tree, nullptr);
    const std::string name = s_second;
    EXPECT_EQ(textOf(*tree), "AND(" + name + " in {V6}, " + name + " in {V12, V8})");
}

TEST(QueltEeDnfConvertor, CopiesOtherLeaves) {
    Catalogue catalogue;
    QueltDnf dnf;
    EXPECT_EQ(dnf.addConjunction(), S_OK);
    EXPECT_EQ(dnf.addLiteral(leafOf(catalogue.sport()).release()), S_OK);
    EXPECT_EQ(dnf.addLiteral(leafOf(catalogue.unitIn(10, 20)).release()), S_OK);
    EXPECT_EQ(dnf.addLiteral(leafOf(new QueltEeOptionEff(nullptr)).release()), S_OK);
    Surroundings surroundings;
    const OwnedReference tree = surroundings.convert(dnf);
    ASSERT_NE(tree, nullptr);
    EXPECT_EQ(textOf(*tree), "AND(Package in {Sport}, Unit in [10, 20), null in {})");
    EXPECT_NE(childOf(groupIn(*tree), 0).getNode(), dnf.getConjunctions()[0][0]->getNode());
}

TEST(QueltEeDnfConvertor, KeepsBothFlagsOfAnOption) {
    Catalogue catalogue;
    for (const bool isNegated : {false, true}) {
        for (const bool hasNoVar : {false, true}) {
            auto* const option = new QueltEeOptionEff(&catalogue.engine);
            EXPECT_EQ(option->addValue(2), S_OK);
            EXPECT_EQ(option->addValue(0), S_OK);
            if (isNegated) {
                EXPECT_EQ(option->opNot(), S_OK);
            }
            if (hasNoVar) {
                option->switchNoVar();
            }
            QueltDnf dnf;
            EXPECT_EQ(dnf.addConjunction(), S_OK);
            EXPECT_EQ(dnf.addLiteral(leafOf(option).release()), S_OK);
            Surroundings surroundings;
            const OwnedReference tree = surroundings.convert(dnf);
            ASSERT_NE(tree, nullptr);
            const QueltEeVarEff* const converted = QueltEeVarEffLeaf::cast(tree->getNode())->getVarEff();
            EXPECT_EQ(converted->isNegated() != 0, isNegated);
            EXPECT_EQ(converted->getNoVar() != 0, hasNoVar);
            EXPECT_NE(converted->getVar(), &catalogue.engine);
            EXPECT_EQ(QueltEeOptionEff::cast(converted)->getValues().size(), 2U);
        }
    }
}

/// A serial effectivity that cannot be copied.
class Unique : public QueltEeSerialEff {
public:
    Unique() : QueltEeSerialEff(nullptr) {}
    [[nodiscard]] QueltEeVarEff* createVarEffClone() const override { return nullptr; }
};

TEST(QueltEeDnfConvertor, GivesNullWhenALeafGivesNoCopy) {
    Catalogue catalogue;
    for (const std::size_t others : {0U, 1U}) {
        QueltDnf dnf;
        for (int conjunction = 0; conjunction < 2; ++conjunction) {
            EXPECT_EQ(dnf.addConjunction(), S_OK);
            for (std::size_t other = 0; other < others; ++other) {
                EXPECT_EQ(dnf.addLiteral(leafOf(catalogue.engineIn({"V6"})).release()), S_OK);
            }
            EXPECT_EQ(dnf.addLiteral(leafOf(new Unique).release()), S_OK);
        }
        Surroundings surroundings;
        EXPECT_EQ(surroundings.convert(dnf), nullptr);
    }
}

TEST(QueltEeDnfConvertor, WhatTheContextOwnsOutlivesTheArena) {
    const ReadForm form(CompiledBytes().onlyDnf(1).number(2).effectivity(21).option(22, 2).text("V6").text(
        "a value with a long name"));
    Surroundings surroundings; // destroyed after the arena; the address sanitizer would see what lay in there
    QueltInArena arena;
    {
        const QueltInArenaScope scope(arena);
        const OwnedReference tree = surroundings.convert(form.dnf());
        ASSERT_NE(tree, nullptr);
        EXPECT_EQ(QueltInMemory::arenaOf(tree.get()), &arena);
        const auto* const leaf = QueltEeEffLeaf::cast(childOf(groupIn(*tree), 0).getNode());
        EXPECT_EQ(QueltInMemory::arenaOf(leaf->getTargetEff()), nullptr);
        const auto* const option = QueltEeVarEffLeaf::cast(childOf(groupIn(*tree), 1).getNode());
        EXPECT_EQ(QueltInMemory::arenaOf(option->getVarEff()->getVar()), nullptr);
    }
}

} // namespace
