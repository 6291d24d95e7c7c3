#include "module/support/EvolutionTrees.h"

#include "expression/QueltEeExpressionContext.h"

#include <algorithm>
#include <optional>
#include <ranges>

namespace {

constexpr int s_openBelow = -2000000000;
constexpr int s_openAbove = 2000000000;

bool isRewritten(const QueltEeSerialEff& effectivity) {
    const QueltEeSerialVar* const variable = effectivity.getOrdVar();
    return variable != nullptr &&
           variable->getExternalType() != QueltEeSerialVar::SerialExternalType::unitCounter;
}

std::vector<const QueltEeModelDico*> dictionariesIn(const QueltInMap& map) {
    std::vector<const QueltEeModelDico*> dictionaries;
    QueltInMap::const_iterator values = map.cBegin();
    while (values.IsEnd() == 0) {
        dictionaries.push_back(dynamic_cast<const QueltEeModelDico*>(values.GetValGoToNext()));
    }
    return dictionaries;
}

/// A model year and the dictionary's own number, as the revision table says it.
struct Year {
    long number;
    int own;
};

/// The first revision of each year counts; texts that are no years do not.
std::vector<Year> yearsOf(const QueltInMap& revisions) {
    std::vector<Year> years;
    QueltInMap::const_iterator values = revisions.cBegin();
    while (values.IsEnd() == 0) {
        const auto& value = dynamic_cast<const QueltEeSerialVarValue&>(*values.GetValGoToNext());
        const std::string text(value.getRev().view());
        if (text.find_first_not_of("0123456789") != std::string::npos) {
            continue;
        }
        const long number = std::stol(text) - 1;
        if (std::ranges::none_of(years, [number](const Year& year) { return year.number == number; })) {
            years.push_back({number, static_cast<int>(value.getSeqNumber())});
        }
    }
    return years;
}

std::optional<int> ownNumber(const std::vector<Year>& years, long number) {
    const auto found = std::ranges::find(years, number, &Year::number);
    return found != years.end() ? std::optional(found->own) : std::nullopt;
}

std::optional<int> ownNumberOfNext(const std::vector<Year>& years, long number) {
    long next = 99999;
    for (const Year& year : years) {
        if (year.number > number && year.number < next) {
            next = year.number;
        }
    }
    return ownNumber(years, next);
}

bool isOpen(int bound) {
    return bound == s_openBelow || bound == s_openAbove;
}

int renumberLower(const std::vector<Year>& years, int a) {
    if (a == 99998) {
        return 0;
    }
    const auto [smallest, largest] = std::ranges::minmax(years, {}, &Year::number);
    if (a < smallest.number) {
        return smallest.own;
    }
    if (a > largest.number) {
        return a;
    }
    const std::optional<int> exact = ownNumber(years, a);
    return exact ? *exact : ownNumberOfNext(years, a).value_or(a);
}

void renumberUpper(const std::vector<Year>& years, QueltEeSerialEff::Interval& interval) {
    const auto [smallest, largest] = std::ranges::minmax(years, {}, &Year::number);
    if (interval.b == 99998) {
        interval.b = 0;
    } else if (interval.b >= largest.number) {
        interval.b = s_openAbove;
    } else if (interval.b >= smallest.number) {
        if (const std::optional<int> next = ownNumberOfNext(years, interval.b)) {
            interval.b = *next;
            interval.bIncl = 0;
        }
    }
}

/// Without years nothing is above the smallest (2000000) or below the largest (0) of them: a lower bound
/// stays, and an upper one from 0 on is open.
QueltEeSerialEff::Interval shift(QueltEeSerialEff::Interval interval, const std::vector<Year>* years) {
    interval.aIncl = 1;
    interval.bIncl = 1;
    if (!isOpen(interval.a)) {
        --interval.a;
        if (years != nullptr && !years->empty()) {
            interval.a = renumberLower(*years, interval.a);
        } else if (years != nullptr && interval.a == 99998) {
            interval.a = 0;
        }
    }
    if (!isOpen(interval.b)) {
        --interval.b;
        if (years != nullptr && !years->empty()) {
            renumberUpper(*years, interval);
        } else if (years != nullptr && interval.b >= 0) {
            interval.b = interval.b == 99998 ? 0 : s_openAbove;
        }
    }
    return interval;
}

} // namespace

OwnedReference EvolutionTrees::tree() {
    m_mixture = static_cast<Mixture>(m_random.below(3));
    m_holder = m_random.oneOf(m_world.dictionaries);
    if (m_random.below(20) == 0) {
        return held(new QueltEeVarEffLeaf(effectivity().release()));
    }
    OwnedReference root = held(node(0));
    if (m_random.below(8) != 0) {
        return root;
    }
    const std::vector<QueltEeNode*> nodes = nodesOf(*root);
    QueltEeNode* const target = m_random.oneOf(nodes);
    if (auto* const group = dynamic_cast<QueltEeGroupOp*>(m_random.oneOf(nodes))) {
        if (target != root->getNode()) {
            static_cast<void>(group->addChild(*target)); // an alias; refused when the target stands above
        }
    }
    return root;
}

QueltEeNode* EvolutionTrees::node(unsigned int depth) {
    const unsigned int kind = depth < 3 ? m_random.below(10) : 9;
    if (kind >= 7 && depth > 0) {
        return leaf();
    }
    if (kind < 2) {
        auto* const negation = new QueltEeNotOp;
        if (m_random.below(30) != 0) {
            EXPECT_EQ(negation->setChildRef(*node(depth + 1)->getNodeRef()), S_OK);
        }
        return negation;
    }
    auto* const group = m_random.flip() ? static_cast<QueltEeGroupOp*>(new QueltEeAndOp) : new QueltEeOrOp;
    const unsigned int least = m_random.below(20) == 0 ? 0 : 1;
    for (unsigned int count = least + m_random.below(3); count > 0; --count) {
        EXPECT_EQ(group->addChild(*node(depth + 1)), S_OK);
    }
    return group;
}

QueltEeNode* EvolutionTrees::leaf() {
    if (m_random.below(12) == 0) {
        return m_random.flip() ? static_cast<QueltEeNode*>(new QueltEeTrue) : new QueltEeFalse;
    }
    return new QueltEeVarEffLeaf(effectivity().release());
}

template <class Variable>
Variable* EvolutionTrees::pick(const std::vector<Variable*>& variables) {
    std::vector<Variable*> suitable;
    for (Variable* const variable : variables) {
        const bool isHeldByAll = variable->getName() == "Engine" || m_random.below(40) == 0;
        if (m_mixture == Mixture::all || (m_mixture == Mixture::features && isHeldByAll) ||
            variable->getHolderDico() == m_holder) {
            suitable.push_back(variable);
        }
    }
    return m_random.oneOf(suitable.empty() ? variables : suitable);
}

template <class Effectivity, class Variable>
std::unique_ptr<QueltEeVarEff> EvolutionTrees::named(const std::vector<Variable*>& variables) {
    const Variable* const variable = pick(variables);
    auto effectivity = std::make_unique<Effectivity>(variable);
    for (unsigned int count = m_random.below(variable->getValueCount() + 1); count > 0; --count) {
        EXPECT_EQ(effectivity->addValue(m_random.below(variable->getValueCount())), S_OK);
    }
    return effectivity;
}

std::unique_ptr<QueltEeVarEff> EvolutionTrees::serial() {
    static const std::vector<int> bounds{-3,   0,    1,     3,     4,      5,          8,    9,
                                         2009, 2010, 2011,  2012,  2013,   2014,       2015, 2016,
                                         2017, 2020, 99998, 99999, 100000, s_openBelow};
    auto effectivity = std::make_unique<QueltEeSerialEff>(pick(m_world.serials));
    for (unsigned int count = m_random.below(4); count > 0; --count) {
        const int above = m_random.oneOf(bounds);
        effectivity->addInterval({m_random.oneOf(bounds), above == s_openBelow ? s_openAbove : above,
                                  static_cast<unsigned char>(m_random.below(2)),
                                  static_cast<unsigned char>(m_random.below(2))});
    }
    return effectivity;
}

std::unique_ptr<QueltEeVarEff> EvolutionTrees::treeSeries() {
    const QueltEeTreeSeriesVar& variable = *pick(m_world.trees);
    auto effectivity = std::make_unique<QueltEeTreeSeriesEff>(variable);
    for (unsigned int count = m_random.below(3); count > 0; --count) {
        QueltEeTreeSeriesSelection selection;
        const QueltEeTreeSeriesSelectionBound bound(m_random.oneOf(variable.getElements()).get(), 1);
        EXPECT_EQ(m_random.flip() ? selection.setSingleSelection(bound) : selection.setFromBound(bound),
                  S_OK);
        EXPECT_EQ(effectivity->addSelection(selection), S_OK);
    }
    return effectivity;
}

std::unique_ptr<QueltEeVarEff> EvolutionTrees::effectivity() {
    const unsigned int kind = m_random.below(m_mixture == Mixture::features ? 3 : 6);
    auto effectivity = kind < 2    ? named<QueltEeOptionEff>(m_world.options)
                       : kind == 2 ? named<QueltEeSelectionEff>(m_world.selections)
                       : kind < 5  ? serial()
                                   : treeSeries();
    if (m_random.below(3) == 0) {
        effectivity->opNot();
    }
    if (m_random.below(3) == 0) {
        effectivity->switchNoVar();
    }
    return effectivity;
}

SampleConfiguration EvolutionTrees::configuration() {
    SampleConfiguration configuration;
    const std::vector<std::int64_t> numbers{-5, -3, 0,  2,    3,    4,    5,    7,    8,
                                            11, 17, 21, 2009, 2010, 2012, 2014, 2016, 99998};
    const std::vector<std::int64_t> elements{1, 2, 3, 4, 5};
    const auto give = [this](auto& map, const QueltInGuid& feature, auto value) {
        if (m_random.below(5) != 0) {
            map[feature] = value;
        }
    };
    const auto giveValue = [&](const QueltEeNamedValueVar& variable) {
        give(configuration.values, variable.getGuid(),
             variable.getValueName(m_random.below(variable.getValueCount())));
    };
    for (const QueltEeCatOptionVar* const option : m_world.options) {
        giveValue(*option);
    }
    for (const QueltEeSelectionVar* const selection : m_world.selections) {
        giveValue(*selection);
    }
    for (const QueltEeSerialVar* const series : m_world.serials) {
        give(configuration.numbers, series->getGuid(), m_random.oneOf(numbers));
    }
    for (const QueltEeTreeSeriesVar* const tree : m_world.trees) {
        give(configuration.numbers, tree->getGuid(), m_random.oneOf(elements));
    }
    return configuration;
}

ExpectedConversion::ExpectedConversion(const ConversionWorld& world, const QueltEeBasicEff* behalf,
                                       bool isOptimized, bool isRenumbering)
    : m_isOptimized(isOptimized), m_isRenumbering(isRenumbering) {
    const QueltInMap* candidates = nullptr;
    if (behalf != nullptr) {
        EXPECT_EQ(world.context.GetAllDictionariesForInheritedEffectivity(*behalf, candidates), S_OK);
        m_possible = dictionariesIn(*candidates);
    } else {
        m_possible.assign(world.dictionaries.begin(), world.dictionaries.end());
    }
}

void ExpectedConversion::find(const QueltEeNode& root) {
    m_result = findAtRoot(root);
}

long ExpectedConversion::findAtRoot(const QueltEeNode& root) {
    if (const auto* const leaf = dynamic_cast<const QueltEeVarEffLeaf*>(&root)) {
        const QueltEeVarEff& effectivity = *leaf->getVarEff();
        if (effectivity.getVar() != nullptr &&
            dynamic_cast<const QueltEeNamedValueEff*>(&effectivity) == nullptr) {
            // One leaf goes to the dictionary that holds its series, whoever the candidates are.
            const auto& variable = dynamic_cast<const QueltEeVariable&>(*effectivity.getVar());
            m_possible.assign(1, variable.getHolderDico());
        }
        return walkLeaf(effectivity);
    }
    // A tree without any criterion is nothing to the classifier; the fixed classification does not look.
    const bool hasCriterion =
        std::ranges::any_of(nodesOf(*const_cast<QueltEeNode&>(root).getNodeRef()), [](auto* node) {
            return dynamic_cast<const QueltEeVarEffLeaf*>(node) != nullptr;
        });
    if (!m_isOptimized && !hasCriterion) {
        return E_FAIL;
    }
    const long result = walk(root);
    return result >= 0 && m_possible.empty() ? E_FAIL : result;
}

long ExpectedConversion::walk(const QueltEeNode& node) {
    if (const auto* const leaf = dynamic_cast<const QueltEeVarEffLeaf*>(&node)) {
        return walkLeaf(*leaf->getVarEff());
    }
    QueltInLinkList children(QueltEeNodeRef::sType());
    if (const auto* const operation = dynamic_cast<const QueltEeOperator*>(&node)) {
        operation->getChildrenRefs(children);
    }
    for (QueltInObject* const child : children.elements()) {
        if (walk(*dynamic_cast<QueltEeNodeRef&>(*child).getNode()) < 0) {
            return E_FAIL;
        }
    }
    return S_OK;
}

long ExpectedConversion::walkLeaf(const QueltEeVarEff& effectivity) {
    const auto& variable = dynamic_cast<const QueltEeVariable&>(*effectivity.getVar());
    if (dynamic_cast<const QueltEeNamedValueEff*>(&effectivity) != nullptr) {
        std::erase_if(m_possible, [&](const QueltEeModelDico* dictionary) {
            return std::ranges::none_of(dictionary->getVariables(), [&](const auto& held) {
                return held->getGuid() == variable.getGuid();
            });
        });
        return m_possible.empty() ? E_FAIL : S_OK;
    }
    const QueltEeModelDico* const holder = variable.getHolderDico();
    if (holder == nullptr) {
        return E_FAIL;
    }
    if (m_possible.size() > 1) {
        m_possible.assign(1, holder);
    }
    const auto* const serial = dynamic_cast<const QueltEeSerialEff*>(&effectivity);
    return serial != nullptr && isRewritten(*serial) ? rewrite(*serial) : S_OK;
}

long ExpectedConversion::rewrite(const QueltEeSerialEff& effectivity) {
    std::vector<Year> years;
    if (m_isRenumbering) {
        const QueltInMap* revisions = nullptr;
        static_cast<void>(effectivity.getOrdVar()->getSeqNb2Revisions(revisions));
        if (revisions == nullptr) {
            return E_FAIL;
        }
        years = yearsOf(*revisions);
    }
    const auto [entry, isNew] = m_rewritten.try_emplace(&effectivity);
    Intervals& intervals = entry->second;
    if (isNew) {
        intervals.assign(effectivity.intervals().begin(), effectivity.intervals().end());
    }
    for (QueltEeSerialEff::Interval& interval : intervals) {
        interval = shift(interval, m_isRenumbering ? &years : nullptr);
    }
    return S_OK;
}

std::vector<QueltEeSerialEff*> seriesOf(const QueltEeNodeRef& root) {
    std::vector<QueltEeSerialEff*> series;
    for (QueltEeNode* const node : nodesOf(root)) {
        const auto* const leaf = dynamic_cast<const QueltEeVarEffLeaf*>(node);
        auto* const serial = leaf != nullptr ? dynamic_cast<QueltEeSerialEff*>(leaf->getVarEff()) : nullptr;
        if (serial != nullptr && isRewritten(*serial)) {
            series.push_back(serial);
        }
    }
    return series;
}

void forgetIntervals(const QueltEeNodeRef& root) {
    for (QueltEeSerialEff* const series : seriesOf(root)) {
        EXPECT_EQ(series->set(QueltInListVal(QueltInObjectVal::sType())), S_OK);
    }
}
