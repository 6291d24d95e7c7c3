#pragma once

#include "QueltEeGenExprToEeMMExprVisitor.h"

#include "module/support/Captured.h"
#include "module/support/ConversionDoubles.h"
#include "module/support/Garage.h"

#include "expression/QueltEVCClassification.h"
#include "expression/QueltEeGenericExpression.h"
#include "expression/QueltEeMultiModelExpression.h"
#include "infrastructure/QueltInMemory.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace quelt::test {

using Messages = std::vector<std::string>;

/// What a visitor is told: whether the expression is a change.
inline constexpr unsigned char s_bothModes[] = {0, 1};

/// Whether the switches of the module are set, as it has read them when it was loaded.
inline bool isRenumbering() {
    return std::getenv("CGE_MigRen") != nullptr;
}
inline bool isOptimized() {
    return std::getenv("CFG_DA_Migration_Optimization") != nullptr;
}

inline std::string textOf(const QueltInObject& object) {
    return std::string(object.toString().view());
}

/// What stands in an output map: "2: effectivity(...)", in the order filed.
inline Messages describeMap(const QueltInMap& map) {
    Messages entries;
    auto walk = map.cBegin();
    while (const QueltInMapEntry* const entry = walk.GetEntryGoToNext()) {
        const auto* const domain = QueltInIntHolder::cast(entry->key);
        entries.push_back((domain != nullptr ? std::to_string(domain->m_value) : "?") + ": " +
                          textOf(*entry->value));
    }
    return entries;
}

/// The errors among the lines; some lines are written without any trace that are none.
inline Messages errorsIn(const Captured& captured) {
    Messages errors;
    for (const std::string& text : captured.texts()) {
        if (text.starts_with("ERR") || text.starts_with("Wow")) {
            errors.push_back(text);
        }
    }
    return errors;
}

/// What the classifier finds in a tree stays known as long as the tree is not changed.
inline void classifyAhead(QueltEeNode& root) {
    QueltEVCClassification classification(0);
    QueltCoreEVC_NodeClassifier classifier;
    EXPECT_EQ(classifier.classify(*root.getNodeRef(), classification), S_OK);
}

template <class Group>
Group* filled(Group* group, std::initializer_list<QueltEeNode*> children) {
    for (QueltEeNode* const child : children) {
        EXPECT_EQ(group->addChild(*child), S_OK);
    }
    return group;
}
inline QueltEeAndOp* allOf(std::initializer_list<QueltEeNode*> children) {
    return filled(new QueltEeAndOp, children);
}
inline QueltEeOrOp* anyOf(std::initializer_list<QueltEeNode*> children) {
    return filled(new QueltEeOrOp, children);
}
inline QueltEeNotOp* notOf(QueltEeNode* child) {
    auto* const negation = new QueltEeNotOp;
    EXPECT_EQ(negation->setChildRef(*child->getNodeRef()), S_OK);
    return negation;
}
template <class Leaf = QueltEeVarEffLeaf>
Leaf* leafOf(QueltEeVarEff* effectivity) {
    return new Leaf(effectivity);
}

/// Trees over a garage with a basic effectivity that the truck inherits, and their conversion.
template <class Context = ContextDouble>
class ConversionTest : public testing::Test {
protected:
    ConversionTest() { EXPECT_EQ(garage.context.addInheritedDictionary(basic, *garage.truck), S_OK); }

    /// "Engine in {V6}", "Engine in {V8}", "Package in {Sport}".
    QueltEeVarEffLeaf* v6() const { return option(0); }
    QueltEeVarEffLeaf* v8() const { return option(1); }
    QueltEeVarEffLeaf* sport() const {
        auto* const effectivity = new QueltEeSelectionEff(garage.package);
        EXPECT_EQ(effectivity->addValue(0), S_OK);
        return leafOf(effectivity);
    }
    /// The days from 1970-01-01 on with these numbers, the last one excluded.
    static QueltEeVarEff* dates(int from, int to) {
        auto* const effectivity = new QueltEeDateEff;
        effectivity->addInterval({from * 86400LL, to * 86400LL});
        return effectivity;
    }
    static QueltEeVarEffLeaf* date(int from, int to) { return leafOf(dates(from, to)); }
    QueltEeEffLeaf* changeLeaf() { return new QueltEeEffLeaf(&garage.change, garage.truck); }
    QueltEeEffLeaf* basicLeaf() { return new QueltEeEffLeaf(&basic, garage.truck); }
    QueltEeEffLeaf* basicLeaf(QueltEeBasicEff& effectivity) {
        return new QueltEeEffLeaf(&effectivity, garage.truck);
    }

    /// Keeps the tree for as long as the test.
    template <class Node>
    Node& plant(Node* root) {
        m_trees.push_back(std::make_unique<QueltEeGenericExpression>(root->getNodeRef()));
        return *root;
    }

    struct Outcome {
        long result = S_OK;
        Messages errors;
        Messages map;
    };
    /// Converts in an arena, of which nothing is left afterwards; says what was answered.
    Outcome convert(QueltEeNode& root, unsigned char isChange = 0, QueltEeBasicEff* basicEff = nullptr) {
        return convertAll({&root}, isChange, basicEff);
    }
    /// Makes one visitor visit one root after the other, and file when all of them were successes.
    Outcome convertAll(std::initializer_list<QueltEeNode*> roots, unsigned char isChange = 0,
                       QueltEeBasicEff* basicEff = nullptr) {
        Outcome outcome;
        const CapturedErrors captured;
        QueltInArena arena;
        const QueltInArenaScope scope(arena);
        QueltEeGenExprToEeMMExprVisitor visitor(isChange, garage.context, basicEff);
        for (QueltEeNode* const root : roots) {
            outcome.result = root->acceptVisitor(visitor);
            if (outcome.result < 0) {
                outcome.errors = errorsIn(captured);
                return outcome;
            }
        }
        QueltInMap* map = nullptr;
        outcome.result = visitor.generateMapDomainIDToEeExpr(map);
        outcome.errors = errorsIn(captured);
        outcome.map = describeMap(*map);
        return outcome;
    }
    /// Converts a tree that must fail, and must be what it was before afterwards.
    void expectFailure(QueltEeNode& root, long result, const Messages& errors, unsigned char isChange = 0) {
        const std::string before = textOf(root);
        SCOPED_TRACE(before);
        const Outcome outcome = convert(root, isChange);
        EXPECT_EQ(outcome.result, result);
        EXPECT_EQ(outcome.errors, errors);
        EXPECT_EQ(textOf(root), before);
    }

    Garage<Context> garage;
    QueltEeBasicEff basic{"EFF-7", guidOf(20)};

private:
    QueltEeVarEffLeaf* option(std::uint32_t value) const {
        auto* const effectivity = new QueltEeOptionEff(garage.engine);
        EXPECT_EQ(effectivity->addValue(value), S_OK);
        return leafOf(effectivity);
    }
    std::vector<std::unique_ptr<QueltEeGenericExpression>> m_trees;
};

/// Trees whose way is told by the classifier; with the fixed rule there are no dates and no inherited
/// effectivities.
template <class Context = ContextDouble>
class ClassifiedConversionTest : public ConversionTest<Context> {
protected:
    void SetUp() override {
        if (isOptimized()) {
            GTEST_SKIP() << "operators are not classified";
        }
    }
};

} // namespace quelt::test
