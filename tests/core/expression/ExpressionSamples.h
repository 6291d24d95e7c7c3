#pragma once

#include "core/dictionary/TestTools.h"

#include "dictionary/QueltEeModelDico.h"
#include "dictionary/QueltEeTreeSeriesVar.h"
#include "effectivity/QueltEeDateEff.h"
#include "effectivity/QueltEeEffectivity.h"
#include "effectivity/QueltEeNamedValueEff.h"
#include "effectivity/QueltEeSerialEff.h"
#include "effectivity/QueltEeTreeSeriesEff.h"
#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeNodeVisitor.h"
#include "expression/QueltEeOperators.h"
#include "infrastructure/QueltInResult.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

using OwnedReference = std::unique_ptr<QueltEeNodeRef>;

/// The text of an object, for comparisons.
inline std::string textOf(const QueltInObject& object) {
    return std::string(object.toString().view());
}

/// Values, variables, dictionaries and effectivities to build expressions from. They outlive what is built.
struct Catalogue {
    Catalogue() {
        for (const char* const value : {"V6", "V8", "V12"}) {
            engine.addValue(value);
        }
        for (const char* const value : {"Sport", "Winter"}) {
            package.addValue(value);
        }
        EXPECT_EQ(trim.addRootElement(1), S_OK);
    }

    QueltEeCatOptionVar engine{"Engine", guidOf(1)};
    QueltEeSelectionVar package{"Package", guidOf(2)};
    QueltEeSerialVar unit{"Unit", guidOf(3), QueltEeSerialVar::SerialExternalType::productSeries};
    QueltEeTreeSeriesVar trim{"Trim", guidOf(4), 18};
    QueltEeModelDico truck{"Truck", guidOf(11)};
    QueltEeModelDico van{"Van", guidOf(12)};
    QueltEePredefEff change{"ECO-1", guidOf(21)};
    QueltEeBasicEff basic{"EFF-7", guidOf(22)};
    QueltEeEffectivity plain{"Base line", guidOf(23)};

    /// "Engine in {...}".
    [[nodiscard]] QueltEeVarEff* engineIn(std::initializer_list<const char*> values) const {
        auto* const effectivity = new QueltEeOptionEff(&engine);
        for (const char* const value : values) {
            EXPECT_EQ(effectivity->addValue(engine.findValue(value).value()), S_OK);
        }
        return effectivity;
    }
    /// "Package in {Sport}".
    [[nodiscard]] QueltEeVarEff* sport() const {
        auto* const effectivity = new QueltEeSelectionEff(&package);
        EXPECT_EQ(effectivity->addValue(0), S_OK);
        return effectivity;
    }
    /// "Unit in [from, to)".
    [[nodiscard]] QueltEeVarEff* unitIn(int from, int to) const {
        auto* const effectivity = new QueltEeSerialEff(&unit);
        effectivity->addInterval({from, to, 1, 0});
        return effectivity;
    }
    /// A tree-series effectivity on everything.
    [[nodiscard]] QueltEeVarEff* anyTrim() const {
        auto* const effectivity = new QueltEeTreeSeriesEff(trim);
        EXPECT_EQ(effectivity->addSelection(QueltEeTreeSeriesSelection()), S_OK);
        return effectivity;
    }
    /// The second minute of 1970.
    [[nodiscard]] static QueltEeVarEff* secondMinute() {
        auto* const effectivity = new QueltEeDateEff;
        effectivity->addInterval({60, 120});
        return effectivity;
    }
};

/// A reference on a new leaf with `effectivity`.
inline OwnedReference leafOf(QueltEeVarEff* effectivity) {
    return OwnedReference((new QueltEeVarEffLeaf(effectivity))->getNodeRef());
}

/// A reference on `node`, which is new.
inline OwnedReference held(QueltEeNode* node) {
    return OwnedReference(node->getNodeRef());
}

inline OwnedReference always() {
    return held(new QueltEeTrue);
}

inline OwnedReference never() {
    return held(new QueltEeFalse);
}

/// A group with these children, which it takes over.
template <class Group, class... Children>
OwnedReference groupOf(Children... children) {
    auto* const group = new Group;
    OwnedReference reference(group->getNodeRef());
    for (OwnedReference* const child : std::initializer_list<OwnedReference*>{&children...}) {
        EXPECT_EQ(group->addChild(*(*child)->getNode()), S_OK);
        child->release();
    }
    return reference;
}

template <class... Children>
OwnedReference allOf(Children... children) {
    return groupOf<QueltEeAndOp>(std::move(children)...);
}

template <class... Children>
OwnedReference anyOf(Children... children) {
    return groupOf<QueltEeOrOp>(std::move(children)...);
}

/// A single operator over `child`, which it takes over.
template <class Operator = QueltEeNotOp>
OwnedReference notOf(OwnedReference child) {
    auto* const operation = new Operator;
    OwnedReference reference(operation->getNodeRef());
    EXPECT_EQ(operation->setChildRef(*child.release()), S_OK);
    return reference;
}

inline QueltEeGroupOp& groupIn(const QueltEeNodeRef& reference) {
    return *QueltEeGroupOp::cast(reference.getNode());
}

inline QueltEeSingleOp& singleIn(const QueltEeNodeRef& reference) {
    return *QueltEeSingleOp::cast(reference.getNode());
}

/// The reference of the child at `position`.
inline QueltEeNodeRef& childOf(const QueltEeGroupOp& group, unsigned int position) {
    return *QueltEeNodeRef::cast(group.getChildren().Get(position));
}

/// A node that counts how many of its kind live.
template <class Node>
class Counted : public Node {
public:
    template <class... Arguments>
    explicit Counted(int& alive, Arguments&&... arguments)
        : Node(std::forward<Arguments>(arguments)...), m_alive(alive) {
        ++m_alive;
    }
    ~Counted() override { --m_alive; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;

private:
    int& m_alive;
};

/// A leaf that gives no copy.
class Unique : public QueltEeTrue {
public:
    QueltEeNodeRef* clone() const override { return nullptr; }
};

/// A leaf that gives itself for a copy.
class Shared : public QueltEeTrue {
public:
    QueltEeNodeRef* clone() const override { return const_cast<Shared*>(this)->getNodeRef(); }
};

/// Writes down what it is shown, in order, and answers `m_results` in turn, then the last of them.
class Recorder : public QueltEeNodeVisitor {
public:
    long visitFalse(QueltEeFalse& node) override { return record("FALSE", node); }
    long visitTrue(QueltEeTrue& node) override { return record("TRUE", node); }
    long visitAndOp(QueltEeAndOp& node) override { return record("AND", node); }
    long visitOrOp(QueltEeOrOp& node) override { return record("OR", node); }
    long visitNotDomainOp(QueltEeNotDomainOp& node) override { return record("NOTDOMAIN", node); }
    long visitNotOp(QueltEeNotOp& node) override { return record("NOT", node); }
    long visitEffLeaf(QueltEeEffLeaf& leaf) override { return record("eff", leaf); }
    long visitVarEffLeaf(QueltEeVarEffLeaf& leaf) override { return record("variable", leaf); }
    long visitRestrictionEffLeaf(QueltEeRestrictionEffLeaf& leaf) override {
        return record("restriction", leaf);
    }

    /// The kind of visit and the node's text, a line each.
    std::vector<std::string> m_visits;
    /// What to answer.
    std::vector<long> m_results{S_OK};

private:
    long record(const char* kind, const QueltInObject& node) {
        const std::size_t turn = std::min(m_visits.size(), m_results.size() - 1);
        m_visits.push_back(std::string(kind) + " " + textOf(node));
        return m_results[turn];
    }
};

/// `operation`s nested `depth` deep over a TRUE, built from the bottom.
template <class Single>
OwnedReference singleChain(std::size_t depth) {
    OwnedReference chain = always();
    for (std::size_t level = 0; level < depth; ++level) {
        chain = notOf<Single>(std::move(chain));
    }
    return chain;
}
