#include "core/support/RandomExpressions.h"

#include "core/effectivity/EffectivityFamilies.h"

#include <algorithm>
#include <limits>

namespace {

constexpr std::uint8_t s_engine = 1;
constexpr std::uint8_t s_package = 2;
constexpr std::uint8_t s_unit = 3;
constexpr std::uint8_t s_series = 4;
constexpr std::uint8_t s_trim = 5;
constexpr std::uint8_t s_colour = 6;
constexpr std::uint8_t s_paint = 7;

constexpr int s_least = std::numeric_limits<int>::min();
constexpr int s_most = std::numeric_limits<int>::max();

const std::vector<int>& serialBounds() {
    static const std::vector<int> bounds{-2000000000, 2000000000, s_least, s_most, -1, 0, 1, 2, 3, 5, 8};
    return bounds;
}

const std::vector<std::int64_t>& times() {
    static const std::vector<std::int64_t> times{
        QueltEeDate::s_openBelow, QueltEeDate::s_openAbove, -60, 0, 60, 120, 180};
    return times;
}

bool isIn(const QueltEeSerialEff::Interval& interval, std::int64_t number) {
    const bool above =
        interval.a == -2000000000 || number > interval.a || (number == interval.a && interval.aIncl != 0);
    const bool below =
        interval.b == 2000000000 || number < interval.b || (number == interval.b && interval.bIncl != 0);
    return above && below;
}

/// Adds the neighbourhood of each number that makes a difference.
void addNeighbours(std::vector<std::int64_t>& numbers, std::int64_t number) {
    for (const std::int64_t step : {-1, 0, 1}) {
        if ((step >= 0 || number > QueltEeDate::s_openBelow) &&
            (step <= 0 || number < QueltEeDate::s_openAbove)) {
            numbers.push_back(number + step);
        }
    }
}

} // namespace

QueltEeModelDico* SampleWorld::addDictionary(const char* name, std::uint8_t number) {
    QueltEeModelDico* dictionary = new QueltEeModelDico(name, guidOf(number));
    EXPECT_EQ(context.AddModelDico(dictionary, 1), S_OK);
    dictionaries.push_back(dictionary);
    return dictionary;
}

template <class Variable>
Variable* SampleWorld::add(QueltEeModelDico* dictionary, std::vector<Variable*>& variables,
                           std::unique_ptr<Variable> variable) {
    variables.push_back(variable.get());
    if (dictionary != nullptr) {
        EXPECT_EQ(dictionary->addVariable(variable.release()), S_OK);
    } else {
        context.adopt(std::move(variable));
    }
    return variables.back();
}

void SampleWorld::addOption(QueltEeModelDico* dictionary, const char* name, std::uint8_t number,
                            const std::vector<const char*>& values) {
    QueltEeCatOptionVar* const option =
        add(dictionary, options, std::make_unique<QueltEeCatOptionVar>(name, guidOf(number)));
    for (const char* const value : values) {
        option->addValue(value);
    }
}

void SampleWorld::addPackage(QueltEeModelDico* dictionary, const std::vector<const char*>& values) {
    QueltEeSelectionVar* const selection =
        add(dictionary, selections, std::make_unique<QueltEeSelectionVar>("Package", guidOf(s_package)));
    for (const char* const value : values) {
        selection->addValue(value);
    }
}

void SampleWorld::addTrim(QueltEeModelDico* dictionary,
                          const std::vector<std::pair<unsigned int, unsigned int>>& elements) {
    QueltEeTreeSeriesVar* const trim =
        add(dictionary, trees, std::make_unique<QueltEeTreeSeriesVar>("Trim", guidOf(s_trim), 18U));
    EXPECT_EQ(trim->addRootElement(1), S_OK);
    for (const auto& [number, parent] : elements) {
        EXPECT_EQ(trim->addElement(number, parent), S_OK);
    }
}

template <class Effectivity>
void SampleWorld::addEffectivity(const char* name, std::uint8_t number) {
    auto effectivity = std::make_unique<Effectivity>(name, guidOf(number));
    effectivities.push_back(effectivity.get());
    context.adopt(std::move(effectivity));
}

SampleWorld::SampleWorld() {
    using SerialType = QueltEeSerialVar::SerialExternalType;
    QueltEeModelDico* const truck = addDictionary("Truck", 101);
    QueltEeModelDico* const van = addDictionary("Van", 102);
    QueltEeModelDico* const bus = addDictionary("Bus", 103);
    addOption(truck, "Engine", s_engine, {"V6", "V8", "V12"});
    addOption(van, "Engine", s_engine, {"V6", "V8", "V12"});
    addOption(bus, "Engine", s_engine, {"V8", "Diesel"});
    addOption(bus, "Colour", s_colour, {"Red"});
    addOption(nullptr, "Paint", s_paint, {"Matt", "Gloss"});
    addPackage(truck, {"Sport", "Winter", "City"});
    addPackage(van, {"City", "Sport", "Winter"});
    addTrim(truck, {{2, 1}, {3, 2}, {4, 2}, {5, 4}});
    addTrim(van, {{2, 1}, {4, 2}, {5, 4}, {3, 2}});
    addTrim(bus, {{5, 1}, {2, 5}});
    for (QueltEeModelDico* const dictionary : dictionaries) {
        add(dictionary, serials,
            std::make_unique<QueltEeSerialVar>("Unit", guidOf(s_unit), SerialType::unitCounter));
        add(dictionary, serials,
            std::make_unique<QueltEeSerialVar>("Series", guidOf(s_series), SerialType::productSeries))
            ->addRevision(dictionary == bus ? "2011" : "2010", 3);
    }
    addEffectivity<QueltEePredefEff>("ECO-1", 201);
    addEffectivity<QueltEePredefEff>("ECO-2", 202);
    addEffectivity<QueltEeBasicEff>("EFF-1", 203);
    addEffectivity<QueltEeEffectivity>("Base", 204);
}

QueltEeConfiguration SampleConfiguration::toConfiguration() const {
    QueltEeConfiguration configuration;
    for (const auto& [feature, value] : values) {
        configuration.setValue(feature, value);
    }
    for (const auto& [feature, number] : numbers) {
        configuration.setSequenceNumber(feature, number);
    }
    for (const QueltInGuid& effectivity : effectivities) {
        configuration.setEffectivity(effectivity, true);
    }
    if (date) {
        configuration.setDate(*date);
    }
    return configuration;
}

std::optional<bool> PlainMeaning::valueIsIn(const QueltEeVarEff& effectivity) const {
    const QueltInGuid feature =
        effectivity.getVar() != nullptr ? effectivity.getVar()->getGuid() : QueltInGuid();
    const bool negated = effectivity.isNegated() != 0;
    if (const auto* const named = dynamic_cast<const QueltEeNamedValueEff*>(&effectivity)) {
        const auto& variable = dynamic_cast<const QueltEeNamedValueVar&>(*named->getVar());
        const auto value = m_configuration.values.find(feature);
        if (value == m_configuration.values.end() || !variable.findValue(value->second)) {
            return std::nullopt;
        }
        bool isListed = false;
        for (const std::uint32_t number : named->getValues()) {
            isListed = isListed || variable.getValueName(number) == value->second;
        }
        return isListed != negated;
    }
    if (const auto* const date = dynamic_cast<const QueltEeDateEff*>(&effectivity)) {
        const std::optional<std::int64_t>& now = m_configuration.date;
        if (!now || *now == QueltEeDate::s_openAbove) {
            return std::nullopt;
        }
        return std::ranges::any_of(date->intervals(), [&](const auto& interval) {
                   return interval.from <= *now && *now < interval.to;
               }) != negated;
    }
    const auto number = m_configuration.numbers.find(feature);
    if (number == m_configuration.numbers.end()) {
        return std::nullopt;
    }
    if (const auto* const serial = dynamic_cast<const QueltEeSerialEff*>(&effectivity)) {
        if (number->second < s_least || number->second > s_most) {
            return std::nullopt;
        }
        return std::ranges::any_of(serial->intervals(), [&](const auto& interval) {
                   return isIn(interval, number->second);
               }) != negated;
    }
    const auto& tree = dynamic_cast<const QueltEeTreeSeriesEff&>(effectivity);
    const auto& elements = tree.getTreeVar()->getElements();
    if (std::ranges::none_of(
            elements, [&](const auto& element) { return element->getSeqNumber() == number->second; })) {
        return std::nullopt;
    }
    bool isListed = false;
    for (const QueltEeTreeSeriesSelection& selection : tree.getSelections()) {
        isListed = isListed || elementsByWalking(*tree.getTreeVar(), selection).contains(number->second);
    }
    return isListed != negated;
}

bool PlainMeaning::holds(const QueltEeVarEff& effectivity, bool isInDomain) const {
    const std::optional<bool> isIn = valueIsIn(effectivity);
    const bool noVariable = (effectivity.getNoVar() != 0) != (effectivity.isNegated() != 0);
    return isIn ? *isIn != isInDomain : noVariable;
}

bool PlainMeaning::holds(const QueltEeNode& node, bool isInDomain) const {
    if (isUnknown(node)) {
        const Told& told = m_pUnknowns->at(&node);
        return isInDomain ? told.inDomain : told.plain;
    }
    if (const auto* const group = dynamic_cast<const QueltEeGroupOp*>(&node)) {
        const bool isAnd = group->isAnd() != isInDomain;
        bool result = isAnd;
        for (QueltInObject* const child : group->getChildren().elements()) {
            const bool childHolds = holds(*dynamic_cast<QueltEeNodeRef&>(*child).getNode(), isInDomain);
            result = isAnd ? result && childHolds : result || childHolds;
        }
        return result;
    }
    if (const auto* const single = dynamic_cast<const QueltEeSingleOp*>(&node)) {
        const QueltEeNode& child = *single->getChildRef()->getNode();
        return dynamic_cast<const QueltEeNotOp*>(&node) != nullptr ? !holds(child, isInDomain)
                                                                   : holds(child, !isInDomain);
    }
    if (const auto* const leaf = dynamic_cast<const QueltEeVarEffLeaf*>(&node)) {
        return holds(*leaf->getVarEff(), isInDomain);
    }
    if (const auto* const leaf = dynamic_cast<const QueltEeEffLeaf*>(&node)) {
        return (holds(*leaf->getTargetEff()) != (leaf->isNegated() != 0)) != isInDomain;
    }
    return (dynamic_cast<const QueltEeTrue*>(&node) != nullptr) != isInDomain;
}

bool PlainMeaning::holds(const QueltQmSpecList& list, int listMode) const {
    bool all = true;
    bool one = false;
    const auto count = [&](bool criterionHolds) {
        all = all && criterionHolds;
        one = one || criterionHolds;
    };
    QueltInMap::const_iterator criteria = list.getVarEffs().cBegin();
    while (const auto* const criterion = dynamic_cast<const QueltEeVarEff*>(criteria.GetValGoToNext())) {
        count(holds(*criterion));
    }
    QueltInSet::const_iterator named = list.getNamedEffectivities().cBegin();
    while (const auto* const effectivity = dynamic_cast<const QueltEeEffectivity*>(named.GetGoToNext())) {
        count(holds(*effectivity));
    }
    return listMode == 0 ? all : one;
}

long PlainMeaning::evaluate(const QueltEeNode& node, bool& holdsThere, bool isInDomain) const {
    if (dynamic_cast<const QueltEeRestrictionEffLeaf*>(&node) != nullptr) {
        return E_UNEXPECTED;
    }
    if (isUnknown(node)) {
        return E_INVALIDARG;
    }
    if (const auto* const group = dynamic_cast<const QueltEeGroupOp*>(&node)) {
        const bool isAnd = group->isAnd() != isInDomain;
        bool result = isAnd;
        for (QueltInObject* const child : group->getChildren().elements()) {
            const long code = evaluate(*dynamic_cast<QueltEeNodeRef&>(*child).getNode(), result, isInDomain);
            if (code < 0) {
                return code;
            }
            if (result != isAnd) {
                break;
            }
        }
        holdsThere = result;
        return S_OK;
    }
    if (const auto* const single = dynamic_cast<const QueltEeSingleOp*>(&node)) {
        const bool isNot = dynamic_cast<const QueltEeNotOp*>(&node) != nullptr;
        bool result = false;
        const long code =
            evaluate(*single->getChildRef()->getNode(), result, isNot ? isInDomain : !isInDomain);
        if (code >= 0) {
            holdsThere = result != isNot;
        }
        return code;
    }
    holdsThere = holds(node, isInDomain);
    return S_OK;
}

bool isUnknown(const QueltEeNode& node) {
    if (const auto* const leaf = dynamic_cast<const QueltEeVarEffLeaf*>(&node)) {
        return leaf->getVarEff() == nullptr;
    }
    if (const auto* const leaf = dynamic_cast<const QueltEeEffLeaf*>(&node)) {
        return leaf->getTargetEff() == nullptr;
    }
    if (const auto* const single = dynamic_cast<const QueltEeSingleOp*>(&node)) {
        return single->getChildRef() == nullptr;
    }
    return dynamic_cast<const QueltEeRestrictionEffLeaf*>(&node) != nullptr;
}

std::vector<QueltEeNode*> nodesOf(const QueltEeNodeRef& root) {
    std::vector<QueltEeNode*> nodes{root.getNode()};
    for (std::size_t next = 0; next < nodes.size(); ++next) {
        QueltInLinkList children(QueltEeNodeRef::sType());
        if (const auto* const operation = dynamic_cast<const QueltEeOperator*>(nodes[next])) {
            operation->getChildrenRefs(children);
        }
        for (QueltInObject* const child : children.elements()) {
            const auto& reference = dynamic_cast<QueltEeNodeRef&>(*child);
            if (reference.ownsNode()) {
                nodes.push_back(reference.getNode());
            }
        }
    }
    return nodes;
}

std::vector<const QueltEeNode*> unknownsOf(const QueltEeNode& root) {
    std::set<const QueltEeNode*> seen{&root};
    std::vector<const QueltEeNode*> open{&root};
    std::vector<const QueltEeNode*> unknowns;
    while (!open.empty()) {
        const QueltEeNode* const node = open.back();
        open.pop_back();
        if (isUnknown(*node)) {
            unknowns.push_back(node);
        }
        QueltInLinkList children(QueltEeNodeRef::sType());
        if (const auto* const operation = dynamic_cast<const QueltEeOperator*>(node)) {
            operation->getChildrenRefs(children);
        }
        for (QueltInObject* const child : children.elements()) {
            const QueltEeNode* const below = dynamic_cast<QueltEeNodeRef&>(*child).getNode();
            if (seen.insert(below).second) {
                open.push_back(below);
            }
        }
    }
    return unknowns;
}

bool isConstant(const QueltEeVarEff& effectivity, bool value) {
    const QueltInGuid feature =
        effectivity.getVar() != nullptr ? effectivity.getVar()->getGuid() : QueltInGuid();
    std::vector<std::int64_t> numbers{s_least, s_most, QueltEeDate::s_openBelow,
                                      QueltEeDate::s_openAbove - 1};
    std::vector<SampleConfiguration> configurations(1);
    if (const auto* const named = dynamic_cast<const QueltEeNamedValueVar*>(effectivity.getVar())) {
        for (std::uint32_t number = 0; number < named->getValueCount(); ++number) {
            configurations.emplace_back().values[feature] = named->getValueName(number);
        }
    } else if (const auto* const tree = dynamic_cast<const QueltEeTreeSeriesVar*>(effectivity.getVar())) {
        for (const auto& element : tree->getElements()) {
            numbers.push_back(element->getSeqNumber());
        }
    } else if (const auto* const serial = dynamic_cast<const QueltEeSerialEff*>(&effectivity)) {
        for (const auto& interval : serial->intervals()) {
            addNeighbours(numbers, interval.a);
            addNeighbours(numbers, interval.b);
        }
    } else if (const auto* const date = dynamic_cast<const QueltEeDateEff*>(&effectivity)) {
        for (const auto& interval : date->intervals()) {
            addNeighbours(numbers, interval.from);
            addNeighbours(numbers, interval.to);
        }
    }
    for (const std::int64_t number : numbers) {
        configurations.emplace_back().numbers[feature] = number;
        configurations.back().date = number;
    }
    return std::ranges::all_of(configurations, [&](const SampleConfiguration& configuration) {
        return PlainMeaning(configuration).holds(effectivity) == value;
    });
}

std::unique_ptr<QueltEeVarEff> RandomExpressions::varEff() {
    std::unique_ptr<QueltEeVarEff> effectivity = varEffWithoutFlags();
    randomiseFlags(*effectivity, m_random);
    return effectivity;
}

std::unique_ptr<QueltEeVarEff> RandomExpressions::varEffWithoutFlags() {
    const auto addValues = [this](auto effectivity, std::uint32_t valueCount) {
        for (unsigned int count = m_random.below(valueCount + 2); count > 0; --count) {
            EXPECT_EQ(effectivity->addValue(m_random.below(valueCount)), S_OK);
        }
        return effectivity;
    };
    switch (m_random.below(5)) {
    case 0: {
        const QueltEeCatOptionVar* const variable = m_random.oneOf(m_world.options);
        return addValues(std::make_unique<QueltEeOptionEff>(variable), variable->getValueCount());
    }
    case 1: {
        const QueltEeSelectionVar* const variable = m_random.oneOf(m_world.selections);
        return addValues(std::make_unique<QueltEeSelectionEff>(variable), variable->getValueCount());
    }
    case 2: {
        auto effectivity = std::make_unique<QueltEeSerialEff>(m_random.oneOf(m_world.serials));
        for (unsigned int count = m_random.below(4); count > 0; --count) {
            effectivity->addInterval({m_random.oneOf(serialBounds()), m_random.oneOf(serialBounds()),
                                      static_cast<unsigned char>(m_random.below(2)),
                                      static_cast<unsigned char>(m_random.below(2))});
        }
        return effectivity;
    }
    case 3: {
        auto effectivity = std::make_unique<QueltEeDateEff>();
        for (unsigned int count = m_random.below(3); count > 0; --count) {
            effectivity->addInterval({m_random.oneOf(times()), m_random.oneOf(times())});
        }
        return effectivity;
    }
    default:
        return treeSeriesEff();
    }
}

std::unique_ptr<QueltEeVarEff> RandomExpressions::treeSeriesEff() {
    const QueltEeTreeSeriesVar& variable = *m_random.oneOf(m_world.trees);
    const auto bound = [&] {
        return QueltEeTreeSeriesSelectionBound(m_random.oneOf(variable.getElements()).get(),
                                               static_cast<unsigned char>(m_random.below(4) != 0));
    };
    auto effectivity = std::make_unique<QueltEeTreeSeriesEff>(variable);
    for (unsigned int count = m_random.below(3); count > 0; --count) {
        QueltEeTreeSeriesSelection selection;
        if (m_random.flip()) {
            EXPECT_EQ(selection.setSingleSelection(bound()), S_OK);
        } else {
            if (m_random.flip()) {
                EXPECT_EQ(selection.setFromBound(bound()), S_OK);
            }
            for (unsigned int ends = m_random.below(3); ends > 0; --ends) {
                EXPECT_EQ(selection.addToBound(bound()), S_OK);
            }
        }
        EXPECT_EQ(effectivity->addSelection(selection), S_OK);
    }
    return effectivity;
}

QueltEeNodeElementaryLeaf* RandomExpressions::criterion() {
    if (m_random.below(3) != 0) {
        return new QueltEeVarEffLeaf(varEff().release());
    }
    const std::size_t which = m_random.below(m_world.dictionaries.size() + 1);
    const QueltEeModelDico* const dictionary =
        which < m_world.dictionaries.size() ? m_world.dictionaries[which] : nullptr;
    auto* const leaf = new QueltEeEffLeaf(m_random.oneOf(m_world.effectivities), dictionary);
    if (m_random.flip()) {
        EXPECT_EQ(leaf->opNot(), S_OK);
    }
    return leaf;
}

QueltEeNode* RandomExpressions::unknownLeaf() {
    switch (m_random.below(3)) {
    case 0:
        return new QueltEeRestrictionEffLeaf("restriction " + std::to_string(++m_restrictions));
    case 1:
        return new QueltEeEffLeaf(nullptr, m_random.oneOf(m_world.dictionaries));
    default:
        return new QueltEeVarEffLeaf;
    }
}

QueltEeNode* RandomExpressions::leaf(const TreeShape& shape) {
    if (shape.hasUnknowns && m_random.below(8) == 0) {
        return unknownLeaf();
    }
    if (m_random.below(8) == 0) {
        return m_random.flip() ? static_cast<QueltEeNode*>(new QueltEeTrue) : new QueltEeFalse;
    }
    return criterion();
}

QueltEeNode* RandomExpressions::single(const TreeShape& shape, unsigned int depth) {
    const bool isNot = !shape.hasNotDomain || m_random.below(3) != 0;
    auto* const operation = isNot ? static_cast<QueltEeSingleOp*>(new QueltEeNotOp) : new QueltEeNotDomainOp;
    if (!shape.hasUnknowns || m_random.below(20) != 0) {
        EXPECT_EQ(operation->setChildRef(*node(shape, depth + 1)->getNodeRef()), S_OK);
    }
    return operation;
}

QueltEeNode* RandomExpressions::node(const TreeShape& shape, unsigned int depth) {
    const unsigned int kind = depth < shape.maxDepth ? m_random.below(10) : 9;
    if (kind < 2) {
        return single(shape, depth);
    }
    if (kind >= 7) {
        return leaf(shape);
    }
    auto* const group = m_random.flip() ? static_cast<QueltEeGroupOp*>(new QueltEeAndOp) : new QueltEeOrOp;
    for (unsigned int count = m_random.below(shape.maxChildren + 1); count > 0; --count) {
        EXPECT_EQ(group->addChild(*node(shape, depth + 1)), S_OK);
    }
    return group;
}

OwnedReference RandomExpressions::tree(const TreeShape& shape) {
    OwnedReference root = held(node(shape, 0));
    if (shape.hasAliases) {
        addAliases(*root);
    }
    return root;
}

/// Makes some nodes stand below a second operator too.
void RandomExpressions::addAliases(const QueltEeNodeRef& root) {
    const std::vector<QueltEeNode*> nodes = nodesOf(root);
    for (unsigned int count = m_random.below(4); count > 0; --count) {
        QueltEeNode* const target = m_random.oneOf(nodes);
        auto* const group = dynamic_cast<QueltEeGroupOp*>(m_random.oneOf(nodes));
        if (group == nullptr || target == root.getNode()) {
            continue;
        }
        if (m_random.flip()) {
            static_cast<void>(group->addChild(*target)); // refused when the target stands above
        } else if (!target->isAtOrAbove(*group)) {
            auto* const operation = new QueltEeNotOp;
            EXPECT_EQ(operation->setChildRef(*target->getNodeRef()), S_OK);
            EXPECT_EQ(group->addChild(*operation), S_OK);
        }
    }
}

std::unique_ptr<QueltQmSpecList> RandomExpressions::list() {
    auto list = std::make_unique<QueltQmSpecList>();
    for (unsigned int count = m_random.below(6); count > 0; --count) {
        QueltEeVarEff* effectivity = varEff().release();
        EXPECT_EQ(list->addVarEff(effectivity), S_OK);
    }
    for (unsigned int count = m_random.below(3); count > 0; --count) {
        list->getNamedEffectivities().Put(*m_random.oneOf(m_world.effectivities));
    }
    return list;
}

SampleConfiguration RandomExpressions::configuration() {
    SampleConfiguration configuration;
    const auto setSometimes = [this](auto& map, std::uint8_t feature, const auto& values) {
        if (m_random.below(4) != 0) {
            map[guidOf(feature)] = m_random.oneOf(values);
        }
    };
    const std::vector<std::int64_t> numbers{
        -1,          0,          1,          2,
        3,           4,          5,          6,
        8,           9,          s_least,    s_most,
        -2000000000, 2000000001, 5000000000, std::numeric_limits<std::int64_t>::min()};
    setSometimes(configuration.values, s_engine,
                 std::vector<const char*>{"V6", "V8", "V12", "Diesel", "Steam"});
    setSometimes(configuration.values, s_package, std::vector<const char*>{"Sport", "Winter", "City"});
    setSometimes(configuration.values, s_colour, std::vector<const char*>{"Red", "Blue"});
    setSometimes(configuration.values, s_paint, std::vector<const char*>{"Matt", "Gloss"});
    setSometimes(configuration.numbers, s_unit, numbers);
    setSometimes(configuration.numbers, s_series, numbers);
    setSometimes(configuration.numbers, s_trim, numbers);
    if (m_random.below(4) != 0) {
        configuration.date = m_random.oneOf(times());
    }
    for (const QueltEeEffectivity* const effectivity : m_world.effectivities) {
        if (m_random.flip()) {
            configuration.effectivities.insert(effectivity->getGuid());
        }
    }
    return configuration;
}

PlainMeaning::Unknowns RandomExpressions::tell(const std::vector<const QueltEeNode*>& unknowns) {
    PlainMeaning::Unknowns told;
    for (const QueltEeNode* const node : unknowns) {
        told[node] = {m_random.flip(), m_random.flip()};
    }
    return told;
}
