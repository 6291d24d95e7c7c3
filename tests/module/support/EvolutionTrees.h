#pragma once

#include "module/support/ConversionWorld.h"

#include <map>
#include <vector>

/// Makes random trees of nothing but options, selections, series and tree series. The same seed makes the
/// same trees.
class EvolutionTrees {
public:
    EvolutionTrees(const ConversionWorld& world, std::uint32_t seed) : m_world(world), m_random(seed) {}

    [[nodiscard]] Random& random() noexcept { return m_random; }
    /// A tree whose root is an operator, or, now and then, a leaf. Every tree has its own mixture of
    /// features, so that many apply somewhere.
    [[nodiscard]] OwnedReference tree();
    /// Values for the features of the world; some have none.
    [[nodiscard]] SampleConfiguration configuration();

private:
    enum class Mixture { features, holders, all };

    [[nodiscard]] QueltEeNode* node(unsigned int depth);
    [[nodiscard]] QueltEeNode* leaf();
    [[nodiscard]] std::unique_ptr<QueltEeVarEff> effectivity();
    template <class Effectivity, class Variable>
    [[nodiscard]] std::unique_ptr<QueltEeVarEff> named(const std::vector<Variable*>& variables);
    [[nodiscard]] std::unique_ptr<QueltEeVarEff> serial();
    [[nodiscard]] std::unique_ptr<QueltEeVarEff> treeSeries();
    template <class Variable>
    [[nodiscard]] Variable* pick(const std::vector<Variable*>& variables);

    const ConversionWorld& m_world;
    Random m_random;
    Mixture m_mixture = Mixture::all;
    const QueltEeModelDico* m_holder = nullptr;
};

/// What the conversion of such a tree must come to, found by walking down the original tree.
class ExpectedConversion {
public:
    using Intervals = std::vector<QueltEeSerialEff::Interval>;

    /// `isOptimized`: the fixed classification is in force; `isRenumbering`: bounds are translated.
    ExpectedConversion(const ConversionWorld& world, const QueltEeBasicEff* behalf, bool isOptimized,
                       bool isRenumbering);

    /// To be called once, before the conversion.
    void find(const QueltEeNode& root);

    [[nodiscard]] long result() const noexcept { return m_result; }
    /// The dictionaries that apply, in order, when the result is not negative.
    [[nodiscard]] const std::vector<const QueltEeModelDico*>& dictionaries() const noexcept {
        return m_possible;
    }
    /// The intervals afterwards, of each effectivity whose intervals are rewritten.
    [[nodiscard]] const std::map<const QueltEeSerialEff*, Intervals>& rewritten() const noexcept {
        return m_rewritten;
    }

private:
    [[nodiscard]] long findAtRoot(const QueltEeNode& root);
    [[nodiscard]] long walk(const QueltEeNode& node);
    [[nodiscard]] long walkLeaf(const QueltEeVarEff& effectivity);
    [[nodiscard]] long rewrite(const QueltEeSerialEff& effectivity);

    bool m_isOptimized;
    bool m_isRenumbering;
    std::vector<const QueltEeModelDico*> m_possible;
    std::map<const QueltEeSerialEff*, Intervals> m_rewritten;
    long m_result = S_OK;
};

/// All serial effectivities of the tree whose intervals are rewritten: those of series, not of counters.
std::vector<QueltEeSerialEff*> seriesOf(const QueltEeNodeRef& root);
/// Sets the intervals of all of them aside, so that what is left can be compared.
void forgetIntervals(const QueltEeNodeRef& root);
