#pragma once

// Random effectivities, leaves, trees, lists and configurations for tests that hold for all of them, and what
// they mean, worked out in the plainest way: by walking down, without any of the classes that evaluate,
// simplify or develop.

#include "core/dictionary/TestTools.h"
#include "core/expression/ExpressionSamples.h"

#include "effectivity/QueltEeDateEff.h"
#include "effectivity/QueltEeNamedValueEff.h"
#include "effectivity/QueltEeSerialEff.h"
#include "effectivity/QueltEeTreeSeriesEff.h"
#include "expression/QueltEeConfiguration.h"
#include "expression/QueltEeExpressionContext.h"
#include "expression/QueltQmSpecList.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

/// A context with three dictionaries, Truck, Van and Bus, and changes and effectivities.
///
/// Engine, Unit, Series and Trim are features of all three. Of Engine and Trim, Truck and Van have the same
/// values, Bus has others. Package is a feature of Truck and Van, with the same values in another order;
/// Colour of Bus alone. Paint is an option that no dictionary holds.
class SampleWorld {
public:
    SampleWorld();
    SampleWorld(const SampleWorld&) = delete;
    SampleWorld& operator=(const SampleWorld&) = delete;

    QueltEeExpressionContext context;
    std::vector<QueltEeModelDico*> dictionaries;
    std::vector<QueltEeCatOptionVar*> options;
    std::vector<QueltEeSelectionVar*> selections;
    std::vector<QueltEeSerialVar*> serials;
    std::vector<QueltEeTreeSeriesVar*> trees;
    std::vector<QueltEeEffectivity*> effectivities;

private:
    QueltEeModelDico* addDictionary(const char* name, std::uint8_t number);
    template <class Variable>
    Variable* add(QueltEeModelDico* dictionary, std::vector<Variable*>& variables,
                  std::unique_ptr<Variable> variable);
    void addOption(QueltEeModelDico* dictionary, const char* name, std::uint8_t number,
                   const std::vector<const char*>& values);
    void addPackage(QueltEeModelDico* dictionary, const std::vector<const char*>& values);
    void addTrim(QueltEeModelDico* dictionary,
                 const std::vector<std::pair<unsigned int, unsigned int>>& elements);
    template <class Effectivity>
    void addEffectivity(const char* name, std::uint8_t number);
};

/// A configuration as plain values.
struct SampleConfiguration {
    std::map<QueltInGuid, std::string> values;
    std::map<QueltInGuid, std::int64_t> numbers;
    std::optional<std::int64_t> date;
    std::set<QueltInGuid> effectivities;

    /// The same for the evaluator.
    [[nodiscard]] QueltEeConfiguration toConfiguration() const;
};

/// What a tree, a leaf, an effectivity means in one configuration, by definition.
///
/// Nodes whose meaning nobody knows (restriction leaves, leaves without effectivity, single operators without
/// child) hold as they are told to here, once as they are and once below NOT-domain.
class PlainMeaning {
public:
    struct Told {
        bool plain;
        bool inDomain;
    };
    using Unknowns = std::map<const QueltEeNode*, Told>;

    explicit PlainMeaning(const SampleConfiguration& configuration) : m_configuration(configuration) {}
    PlainMeaning(const SampleConfiguration& configuration, const Unknowns& unknowns)
        : m_configuration(configuration), m_pUnknowns(&unknowns) {}

    /// Whether the tree holds; all of it is looked at.
    [[nodiscard]] bool holds(const QueltEeNode& node, bool isInDomain = false) const;
    [[nodiscard]] bool holds(const QueltEeVarEff& effectivity, bool isInDomain = false) const;
    [[nodiscard]] bool holds(const QueltEeEffectivity& effectivity) const {
        return m_configuration.effectivities.contains(effectivity.getGuid());
    }
    /// Whether the list holds, all of it (listMode 0) or one of its criteria.
    [[nodiscard]] bool holds(const QueltQmSpecList& list, int listMode) const;
    /// As the evaluator is to answer: children in order, up to the first that decides, and a result code for
    /// what nobody knows.
    [[nodiscard]] long evaluate(const QueltEeNode& node, bool& holds, bool isInDomain = false) const;

private:
    [[nodiscard]] std::optional<bool> valueIsIn(const QueltEeVarEff& effectivity) const;

    const SampleConfiguration& m_configuration;
    const Unknowns* m_pUnknowns = nullptr;
};

/// True when nobody knows what the node, of itself, means.
bool isUnknown(const QueltEeNode& node);
/// All nodes of the tree, in order; aliases are not followed.
std::vector<QueltEeNode*> nodesOf(const QueltEeNodeRef& root);
/// All unknown nodes that can be come to, through aliases too, each once.
std::vector<const QueltEeNode*> unknownsOf(const QueltEeNode& root);
/// True when the effectivity holds (does not hold) in every configuration. Found by trying all that make a
/// difference.
bool isConstant(const QueltEeVarEff& effectivity, bool value);

/// What random trees are made of.
struct TreeShape {
    unsigned int maxDepth = 5;
    unsigned int maxChildren = 4;
    bool hasNotDomain = true;
    /// Restriction leaves, leaves without effectivity, single operators without child.
    bool hasUnknowns = false;
    bool hasAliases = false;
};

/// Makes random things from a world. The same seed makes the same things.
class RandomExpressions {
public:
    RandomExpressions(const SampleWorld& world, std::uint32_t seed) : m_world(world), m_random(seed) {}

    [[nodiscard]] Random& random() noexcept { return m_random; }
    /// An effectivity of any class on any variable; the caller owns it.
    [[nodiscard]] std::unique_ptr<QueltEeVarEff> varEff();
    /// An effectivity leaf or one with a variable effectivity, without reference.
    [[nodiscard]] QueltEeNodeElementaryLeaf* criterion();
    /// A tree.
    [[nodiscard]] OwnedReference tree(const TreeShape& shape);
    /// A list, short ones often; the caller owns it.
    [[nodiscard]] std::unique_ptr<QueltQmSpecList> list();
    /// A configuration in which some features have no value, or one that not all dictionaries know.
    [[nodiscard]] SampleConfiguration configuration();
    /// Meanings for unknown nodes.
    [[nodiscard]] PlainMeaning::Unknowns tell(const std::vector<const QueltEeNode*>& unknowns);

private:
    [[nodiscard]] std::unique_ptr<QueltEeVarEff> varEffWithoutFlags();
    [[nodiscard]] std::unique_ptr<QueltEeVarEff> treeSeriesEff();
    [[nodiscard]] QueltEeNode* node(const TreeShape& shape, unsigned int depth);
    [[nodiscard]] QueltEeNode* leaf(const TreeShape& shape);
    [[nodiscard]] QueltEeNode* unknownLeaf();
    [[nodiscard]] QueltEeNode* single(const TreeShape& shape, unsigned int depth);
    void addAliases(const QueltEeNodeRef& root);

    const SampleWorld& m_world;
    Random m_random;
    int m_restrictions = 0;
};
