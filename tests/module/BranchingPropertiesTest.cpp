#include "QueltEeTarselMigrationServices.h"

#include "core/infrastructure/RandomNumbers.h"
#include "core/support/Effort.h"
#include "module/support/BranchingWorld.h"

#include "infrastructure/QueltInIntHolder.h"
#include "infrastructure/QueltInMap.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

// What holds for every branching, tried on random maps of expressions and effectivities that refer to each
// other. What must come out is found by walking down the originals in the plainest way.

namespace {

using namespace quelt::test;
using Interval = QueltEeSerialEff::Interval;
using ExternalType = QueltEeSerialVar::SerialExternalType;

constexpr int s_open = 2000000000;
constexpr int s_tries = effort(10000);

const QueltEeTreeSeriesElement* elementAt(const QueltEeTreeSeriesVar& tree, int number) {
    for (const auto& element : tree.getElements()) {
        if (element->getSeqNumber() == static_cast<unsigned int>(number)) {
            return element.get();
        }
    }
    return nullptr;
}

bool isAtOrAbove(const QueltEeTreeSeriesElement& upper, const QueltEeTreeSeriesElement& lower) {
    const QueltEeTreeSeriesElement* at = &lower;
    while (at != nullptr && at != &upper) {
        at = at->getParent();
    }
    return at != nullptr;
}

/// The tree that a series is branched on, null when it has none.
const QueltEeTreeSeriesVar* treeOf(const QueltEeSerialVar& series) {
    const unsigned int number = series.getExternalType() == ExternalType::manufacturingSeries ? 19 : 18;
    if (series.getHolderDico() != nullptr) {
        for (const auto& variable : series.getHolderDico()->getVariables()) {
            const auto* const tree = dynamic_cast<const QueltEeTreeSeriesVar*>(variable.get());
            if (tree != nullptr && tree->getNumber() == number) {
                return tree;
            }
        }
    }
    return nullptr;
}

/// What one interval comes to: its ends among the elements of the tree.
struct Way {
    const QueltEeTreeSeriesElement* single = nullptr;
    const QueltEeTreeSeriesElement* from = nullptr;
    const QueltEeTreeSeriesElement* to = nullptr; // null: to the leaves
    bool fromIncluded = true;

    /// Nothing when an end has no element.
    static std::optional<Way> of(const Interval& interval, const QueltEeTreeSeriesVar& tree) {
        Way way;
        if (interval.a == interval.b) {
            way.single = elementAt(tree, interval.a);
            return way.single != nullptr ? std::optional(way) : std::nullopt;
        }
        way.from = interval.a != s_open          ? elementAt(tree, interval.a)
                   : !tree.getElements().empty() ? tree.getElements().front().get()
                                                 : nullptr;
        way.to = interval.b != s_open ? elementAt(tree, interval.b) : nullptr;
        way.fromIncluded = interval.aIncl != 0;
        const bool isWhole = way.from != nullptr && (interval.b == s_open || way.to != nullptr);
        return isWhole ? std::optional(way) : std::nullopt;
    }
    [[nodiscard]] bool holds(const QueltEeTreeSeriesElement& element) const {
        if (single != nullptr) {
            return &element == single;
        }
        return isAtOrAbove(*from, element) && (fromIncluded || &element != from) &&
               (to == nullptr || isAtOrAbove(element, *to));
    }
};

/// The flat meaning of an interval with the differences that branching makes on purpose: the root stands for
/// an open end below, a single number is in whatever its flags say, and so is the upper bound.
bool holdsFlat(Interval interval, int number, const QueltEeTreeSeriesVar& tree) {
    if (interval.a == interval.b) {
        return number == interval.a;
    }
    const int from =
        interval.a == s_open ? static_cast<int>(tree.getElements().front()->getSeqNumber()) : interval.a;
    return (number > from || (number == from && interval.aIncl != 0)) &&
           (interval.b == s_open || number <= interval.b);
}

/// What a leaf, or a place in a list, held before.
struct Former {
    std::unique_ptr<QueltEeSerialEff> before; // a copy
    const QueltEeVarEff* object;              // the original, of which only the address is known afterwards
};

/// All nodes of a tree; it has no aliases.
std::vector<QueltEeNode*> nodesOf(const QueltEeNodeRef& root) {
    std::vector<QueltEeNode*> nodes{root.getNode()};
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        QueltInLinkList children(QueltEeNodeRef::sType());
        if (const auto* const operation = dynamic_cast<const QueltEeOperator*>(nodes[i])) {
            operation->getChildrenRefs(children);
        }
        for (const QueltInObject* const child : children.elements()) {
            nodes.push_back(dynamic_cast<const QueltEeNodeRef&>(*child).getNode());
        }
    }
    return nodes;
}

/// Simulates the service over the structure before it runs.
class Simulation {
public:
    bool single = false;
    bool run(const std::vector<QueltEeExpression*>& expressions) {
        for (QueltEeExpression* const expression : expressions) {
            if (!visit(*expression, dynamic_cast<QueltEeFilterExpression*>(expression) != nullptr)) {
                return false;
            }
        }
        return true;
    }
    /// The leaves, and the places in lists of filters, that were branched.
    [[nodiscard]] bool isBranched(const QueltEeNode& leaf) const { return m_leaves.contains(&leaf); }
    [[nodiscard]] bool isBranched(const QueltEeVarEff* criterion) const {
        return m_criteria.contains(criterion);
    }
    /// The effectivities whose expressions are lost.
    [[nodiscard]] const std::set<const QueltEeEffectivity*>& out() const { return m_out; }

private:
    bool branches(const QueltEeVarEff* effectivity, bool& isChanged) {
        const auto* const flat = dynamic_cast<const QueltEeSerialEff*>(effectivity);
        isChanged = false;
        if (flat == nullptr) {
            return true;
        }
        const QueltEeSerialVar* const series = flat->getOrdVar();
        if (series == nullptr) {
            return false;
        }
        if (series->getExternalType() == ExternalType::unitCounter) {
            return true;
        }
        const QueltEeTreeSeriesVar* const tree = treeOf(*series);
        if (tree == nullptr) {
            return false;
        }
        for (const Interval& interval : flat->intervals()) {
            single = single || interval.a == interval.b;
            if (!Way::of(interval, *tree)) {
                return false;
            }
        }
        isChanged = true;
        return true;
    }
    bool visit(QueltEeNode& node) {
        if (auto* const leaf = dynamic_cast<QueltEeVarEffLeaf*>(&node)) {
            bool isChanged = false;
            const bool succeeds = m_leaves.contains(leaf) || branches(leaf->getVarEff(), isChanged);
            if (isChanged) {
                m_leaves.insert(leaf);
            }
            return succeeds;
        }
        if (auto* const leaf = dynamic_cast<QueltEeEffLeaf*>(&node)) {
            return leaf->getTargetEff() != nullptr && visit(*leaf->getTargetEff());
        }
        if (dynamic_cast<QueltEeNotDomainOp*>(&node) != nullptr) {
            return true;
        }
        QueltInLinkList children(QueltEeNodeRef::sType());
        if (auto* const operation = dynamic_cast<QueltEeOperator*>(&node)) {
            operation->getChildrenRefs(children);
        }
        for (QueltInObject* const child : children.elements()) {
            if (!visit(*dynamic_cast<QueltEeNodeRef&>(*child).getNode())) {
                return false;
            }
        }
        return true;
    }
    bool visit(QueltEeEffectivity& effectivity) {
        QueltEeExpression* expression = nullptr;
        effectivity.getExpr(expression);
        if (expression == nullptr || !m_out.insert(&effectivity).second) {
            return true;
        }
        if (!visit(*expression, false)) {
            return false;
        }
        m_out.erase(&effectivity);
        return true;
    }
    bool visitList(const QueltQmSpecList* list, bool isStored) {
        if (list == nullptr) {
            return true;
        }
        for (auto criteria = list->getVarEffs().cBegin(); criteria.IsEnd() == 0;) {
            const auto* const criterion = dynamic_cast<QueltEeVarEff*>(criteria.GetValGoToNext());
            bool isChanged = false;
            if (!branches(criterion, isChanged)) {
                return false;
            }
            if (isChanged && isStored) {
                m_criteria.insert(criterion);
            }
        }
        auto named = list->getNamedEffectivities().cBegin();
        while (QueltInObject* const effectivity = named.GetGoToNext()) {
            if (!visit(dynamic_cast<QueltEeEffectivity&>(*effectivity))) {
                return false;
            }
        }
        return true;
    }
    bool visit(const QueltEeNodeRef* part) { return part == nullptr || visit(*part->getNode()); }
    bool visit(QueltEeExpression& expression, bool isStored) {
        if (const auto* const filter = dynamic_cast<QueltEeFilterExpression*>(&expression)) {
            return visitList(filter->getSpecList(), isStored);
        }
        if (const auto* const generic = dynamic_cast<QueltEeGenericExpression*>(&expression)) {
            const QueltQmSpecList* list = nullptr;
            generic->GetList(list);
            return generic->IsList() != 0 ? visitList(list, false) : visit(generic->GetNodeRef());
        }
        const auto& multi = dynamic_cast<QueltEeMultiModelExpression&>(expression);
        if (!visit(multi.getGlobalCriteria())) {
            return false;
        }
        for (const auto& filed : multi.getModelCriteria()) {
            if (!visit(filed.criteria->getInherited()) || !visit(filed.criteria->getOwn())) {
                return false;
            }
        }
        if (const auto* const effectivity = dynamic_cast<QueltEeEffectivityExpression*>(&expression)) {
            for (const QueltEeExpressionOperation* const operation : effectivity->getOperations()) {
                if (!visit(dynamic_cast<QueltEeEffectivity&>(*operation->getObject()))) {
                    return false;
                }
            }
        }
        return true;
    }

    std::set<const QueltEeNode*> m_leaves;
    std::set<const QueltEeVarEff*> m_criteria;
    std::set<const QueltEeEffectivity*> m_out;
};

/// Three dictionaries: one with trees that branch, one with trees that are chains, one without.
class RandomBranching {
public:
    explicit RandomBranching(unsigned int seed) : m_random(seed) {
        m_good = {m_world.unit, m_world.lot, m_world.counter, m_world.other};
        auto* const bus = new QueltEeModelDico("Bus", guidOf(3));
        for (QueltEeSerialVar* const series :
             {BranchingWorld::series("BusUnit", 71, 12), BranchingWorld::series("BusLot", 72, 14)}) {
            EXPECT_EQ(bus->addVariable(series), S_OK);
            m_good.push_back(series);
        }
        for (const unsigned int number : {18U, 19U}) {
            auto* const chain = new QueltEeTreeSeriesVar(
                number == 18 ? "Chain" : "Cable", guidOf(static_cast<unsigned char>(55 + number)), number);
            BranchingWorld::addElements(*chain, {{1, 0}, {2, 1}, {3, 2}, {5, 3}, {8, 5}, {9, 8}});
            EXPECT_EQ(bus->addVariable(chain), S_OK);
        }
        QueltEeModelDico* taken = bus;
        EXPECT_EQ(m_world.context.AddModelDico(taken, 1), S_OK);
        m_bad = {m_world.vanUnit, m_world.vanLot, &m_world.loose, nullptr};
    }

    void tryOnce();

    int converted = 0;
    int failed = 0;
    int branched = 0;
    int onChains = 0;
    int withSingle = 0;
    int lost = 0;

private:
    int bound() {
        static constexpr int bounds[] = {1, 3, 5, 7, 8, 9, 2, 6, s_open, -s_open};
        return m_random.onceIn(25) ? bounds[6 + m_random.below(4)] : bounds[m_random.below(6)];
    }
    QueltEeVarEff* criterion() {
        if (m_random.onceIn(6)) {
            return m_random.onceIn(2) ? static_cast<QueltEeVarEff*>(new QueltEeDateEff)
                                      : new QueltEeTreeSeriesEff(*m_world.line);
        }
        const QueltEeSerialVar* const series =
            m_random.onceIn(60) ? m_bad[m_random.below(m_bad.size())] : m_good[m_random.below(m_good.size())];
        auto* const effectivity = new QueltEeSerialEff(series);
        const QueltEeTreeSeriesVar* const tree = series != nullptr ? treeOf(*series) : nullptr;
        for (unsigned int count = m_random.below(4); count > 0; --count) {
            const auto number = [&] {
                // mostly one that is there
                if (tree == nullptr || tree->getElements().empty() || m_random.onceIn(12)) {
                    return bound();
                }
                return static_cast<int>(
                    tree->getElements()[m_random.below(tree->getElements().size())]->getSeqNumber());
            };
            const int a = m_random.onceIn(10) ? s_open : number();
            const int b = m_random.onceIn(6) ? s_open : m_random.onceIn(6) ? a : number();
            effectivity->addInterval({a, b, static_cast<unsigned char>(m_random.below(2)),
                                      static_cast<unsigned char>(m_random.below(2))});
        }
        if (m_random.onceIn(3)) {
            effectivity->opNot();
        }
        if (m_random.onceIn(3)) {
            effectivity->switchNoVar();
        }
        return effectivity;
    }
    QueltEeEffectivity* effectivity() {
        return m_effectivities[m_random.below(m_effectivities.size())].get();
    }
    QueltEeNode* node(unsigned int depth) {
        switch (m_random.below(depth > 0 ? 10 : 5)) {
        case 0:
            return m_random.onceIn(2) ? static_cast<QueltEeNode*>(new QueltEeTrue)
                                      : new QueltEeRestrictionEffLeaf("text");
        case 1:
            return new QueltEeEffLeaf(effectivity(), m_random.onceIn(2) ? m_world.truck : nullptr);
        case 5:
            return notOf(node(depth - 1));
        case 6: {
            auto* const domain = new QueltEeNotDomainOp;
            EXPECT_EQ(domain->setChildRef(*node(depth - 1)->getNodeRef()), S_OK);
            return domain;
        }
        case 7:
        case 8:
        case 9: {
            QueltEeGroupOp* const group =
                m_random.onceIn(2) ? static_cast<QueltEeGroupOp*>(new QueltEeAndOp) : new QueltEeOrOp;
            for (unsigned int count = m_random.below(4); count > 0; --count) {
                EXPECT_EQ(group->addChild(*node(depth - 1)), S_OK);
            }
            return group;
        }
        default:
            return new QueltEeVarEffLeaf(criterion());
        }
    }
    QueltQmSpecList* list() {
        auto* const list = new QueltQmSpecList;
        for (unsigned int count = m_random.below(3); count > 0; --count) {
            QueltEeVarEff* one = criterion();
            EXPECT_EQ(list->addVarEff(one), S_OK);
        }
        if (m_random.onceIn(3)) {
            list->getNamedEffectivities().Put(*effectivity());
        }
        return list;
    }
    QueltEeExpression* expression() {
        switch (m_random.below(5)) {
        case 0:
            return new QueltEeFilterExpression(m_world.truck, list());
        case 1:
            return new QueltEeGenericExpression(list(), QueltEeGenericExpression::ListMode::all);
        case 2:
            return new QueltEeGenericExpression(node(3)->getNodeRef());
        case 3: {
            auto* const change = new QueltEeChangeExpression;
            QueltEeNodeRef* own = node(2)->getNodeRef();
            EXPECT_EQ(change->setModelCriteria(*m_world.truck,
                                               new QueltEeMultiModelExpression::ModelCriteria(nullptr, &own)),
                      S_OK);
            return change;
        }
        default: {
            auto* const expression = new QueltEeEffectivityExpression;
            EXPECT_EQ(expression->setGlobalCriteria(node(2)->getNodeRef()), S_OK);
            QueltEeNodeRef* inherited = node(1)->getNodeRef();
            QueltEeNodeRef* own = node(2)->getNodeRef();
            EXPECT_EQ(expression->setModelCriteria(
                          *m_world.van, new QueltEeMultiModelExpression::ModelCriteria(&inherited, &own)),
                      S_OK);
            if (m_random.onceIn(2)) {
                QueltInObject* object = effectivity();
                EXPECT_EQ(expression->addOperation(QueltEeExpressionOperation::OperationKind::apply, object),
                          S_OK);
            }
            return expression;
        }
        }
    }

    /// All leaves and criteria of an expression, below NOT-domain too.
    void collect(QueltEeExpression& expression);
    void collect(const QueltEeNodeRef* part);
    void collect(const QueltQmSpecList* list);
    void expectBranched(const QueltEeSerialEff& before, const QueltEeVarEff& after);

    BranchingWorld m_world;
    std::vector<const QueltEeSerialVar*> m_good;
    std::vector<const QueltEeSerialVar*> m_bad;
    std::vector<std::unique_ptr<QueltEePredefEff>> m_effectivities;
    std::map<QueltEeVarEffLeaf*, Former> m_leaves;
    std::map<std::pair<const QueltQmSpecList*, unsigned int>, Former> m_criteria;
    RandomNumbers m_random;
};

void RandomBranching::collect(const QueltEeNodeRef* part) {
    if (part == nullptr) {
        return;
    }
    for (QueltEeNode* const node : nodesOf(*part)) {
        auto* const leaf = dynamic_cast<QueltEeVarEffLeaf*>(node);
        const auto* const flat =
            leaf != nullptr ? dynamic_cast<QueltEeSerialEff*>(leaf->getVarEff()) : nullptr;
        if (flat != nullptr) {
            m_leaves[leaf] = {std::make_unique<QueltEeSerialEff>(*flat), flat};
        }
    }
}

void RandomBranching::collect(const QueltQmSpecList* list) {
    unsigned int position = 0;
    for (auto criteria = list->getVarEffs().cBegin(); criteria.IsEnd() == 0; ++position) {
        if (const auto* const flat = dynamic_cast<QueltEeSerialEff*>(criteria.GetValGoToNext())) {
            m_criteria[{list, position}] = {std::make_unique<QueltEeSerialEff>(*flat), flat};
        }
    }
}

void RandomBranching::collect(QueltEeExpression& expression) {
    if (const auto* const filter = dynamic_cast<QueltEeFilterExpression*>(&expression)) {
        collect(filter->getSpecList());
    } else if (const auto* const generic = dynamic_cast<QueltEeGenericExpression*>(&expression)) {
        const QueltQmSpecList* list = nullptr;
        generic->GetList(list);
        if (generic->IsList() != 0) {
            collect(list);
        } else {
            collect(generic->GetNodeRef());
        }
    } else if (const auto* const multi = dynamic_cast<QueltEeMultiModelExpression*>(&expression)) {
        collect(multi->getGlobalCriteria());
        for (const auto& filed : multi->getModelCriteria()) {
            collect(filed.criteria->getInherited());
            collect(filed.criteria->getOwn());
        }
    }
}

void RandomBranching::expectBranched(const QueltEeSerialEff& before, const QueltEeVarEff& after) {
    const auto* const branching = dynamic_cast<const QueltEeTreeSeriesEff*>(&after);
    ASSERT_NE(branching, nullptr) << textOf(before) << " stayed flat";
    const QueltEeTreeSeriesVar& tree = *treeOf(*before.getOrdVar());
    ASSERT_EQ(branching->getTreeVar(), &tree);
    EXPECT_EQ(branching->isNegated(), before.isNegated());
    EXPECT_EQ(branching->getNoVar(), before.getNoVar());
    bool isChain = true;
    for (const auto& element : tree.getElements()) {
        isChain = isChain && element->getDepth() == element->getIndex();
    }
    for (const auto& element : tree.getElements()) {
        bool onWay = false;
        bool inFlat = false;
        for (const Interval& interval : before.intervals()) {
            const bool here = Way::of(interval, tree)->holds(*element);
            const bool flat = holdsFlat(interval, static_cast<int>(element->getSeqNumber()), tree);
            // Numbers grow down the tree, so a way holds numbers between its ends only.
            EXPECT_TRUE(flat || !here);
            onWay = onWay || here;
            inFlat = inFlat || flat;
        }
        const bool isNegated = before.isNegated() != 0;
        EXPECT_EQ(branching->holdsFor(*element), onWay != isNegated)
            << textOf(before) << " became " << textOf(after) << " at " << element->getSeqNumber();
        if (isChain) {
            EXPECT_EQ(branching->holdsFor(*element), inFlat != isNegated);
        }
    }
    ++branched;
    onChains += isChain ? 1 : 0;
}

void RandomBranching::tryOnce() {
    m_leaves.clear();
    m_criteria.clear();
    m_effectivities.clear();
    m_world.line->m_asked.clear();
    QueltInArena arena; // takes what a failure leaves to nobody; a success is tried on the heap, too
    std::optional<QueltInArenaScope> scope;
    const bool isOnHeap = m_random.onceIn(2);
    const RandomNumbers before = m_random;
    Simulation simulation;
    std::vector<QueltEeExpression*> expressions;
    const auto make = [&] {
        for (unsigned char number = 81; number < 84; ++number) {
            m_effectivities.push_back(std::make_unique<QueltEePredefEff>("ECO", guidOf(number)));
        }
        for (const auto& one : m_effectivities) {
            QueltEeExpression* own = m_random.onceIn(5) ? nullptr : expression();
            one->setExpr(own);
        }
        for (unsigned int count = 1 + m_random.below(2); count > 0; --count) {
            expressions.push_back(expression());
        }
        simulation = Simulation();
        return simulation.run(expressions);
    };
    if (!isOnHeap) {
        scope.emplace(arena);
    }
    bool succeeds = make();
    if (isOnHeap && !succeeds) { // the same once more, where what is lost is not leaked
        for (QueltEeExpression* const one : expressions) {
            delete one;
        }
        expressions.clear();
        m_effectivities.clear();
        m_random = before;
        scope.emplace(arena);
        succeeds = make();
    }
    std::vector<QueltEeExpression*> all = expressions;
    for (const auto& one : m_effectivities) {
        QueltEeExpression* own = nullptr;
        one->getExpr(own);
        if (own != nullptr) {
            all.push_back(own);
        }
    }
    for (QueltEeExpression* const one : all) {
        collect(*one);
    }
    auto* const map = new QueltInMap(QueltInIntHolder::sType(), QueltEeExpression::sType());
    for (QueltEeExpression* const one : expressions) {
        map->Put(QueltInIntHolder(static_cast<unsigned int>(map->GetLength())), *one);
    }

    const CapturedErrors captured;
    const long result =
        QueltEeTarselMigrationServices::ConvertFromFlatSeriesExprToBranchingExpr(m_world.context, *map);
    ASSERT_EQ(result, !succeeds ? E_FAIL : simulation.single ? 1 : 0);
    EXPECT_EQ(captured.texts().empty(), succeeds);
    ++(succeeds ? converted : failed);
    withSingle += result == 1 ? 1 : 0;
    lost += simulation.out().empty() ? 0 : 1;

    for (auto& [leaf, was] : m_leaves) {
        if (simulation.isBranched(*leaf)) {
            expectBranched(*was.before, *leaf->getVarEff());
        } else {
            EXPECT_EQ(leaf->getVarEff(), was.object);
            EXPECT_EQ(textOf(*leaf->getVarEff()), textOf(*was.before));
        }
    }
    for (auto& [place, was] : m_criteria) {
        const auto* const now =
            QueltEeVarEff::cast(place.first->getVarEffs().Get(QueltInIntHolder(place.second)));
        if (simulation.isBranched(was.object)) {
            expectBranched(*was.before, *now);
        } else {
            EXPECT_EQ(textOf(*now), textOf(*was.before));
        }
    }
    for (const auto& one : m_effectivities) {
        QueltEeExpression* own = nullptr;
        one->getExpr(own);
        if (simulation.out().contains(one.get())) {
            EXPECT_EQ(own, nullptr);
        } else if (own != nullptr) {
            EXPECT_NE(std::ranges::find(all, own), all.end());
        }
    }
    m_leaves.clear();
    m_criteria.clear();
    QueltInDeleteWithObjects(map);
    m_effectivities.clear();
}

class RandomBranchings : public testing::TestWithParam<unsigned int> {};

TEST_P(RandomBranchings, meanWhatTheFlatSeriesMeant) {
    RandomBranching random(GetParam());
    for (int i = 0; i < s_tries && !testing::Test::HasFailure(); ++i) {
        SCOPED_TRACE(i);
        random.tryOnce();
    }
    EXPECT_GT(random.converted, s_tries / 5);
    EXPECT_GT(random.failed, s_tries / 10);
    EXPECT_GT(random.branched, s_tries / 2);
    EXPECT_GT(random.onChains, s_tries / 10);
    EXPECT_GT(random.withSingle, s_tries / 10);
    EXPECT_GT(random.lost, s_tries / 50);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomBranchings, testing::Range(1U, 11U));

} // namespace
