#pragma once

#include "module/support/Conversion.h"

#include "expression/QueltEeFilterExpression.h"

#include <functional>
#include <utility>

// What the tests of branching share: a dictionary with flat and branching series, and what of the core may
// fail.

namespace quelt::test {

/// A branching series that fails where it is told to.
class TreeSeriesVarDouble : public QueltEeTreeSeriesVar {
public:
    using QueltEeTreeSeriesVar::QueltEeTreeSeriesVar;
    long getElement(unsigned int sequenceNumber, QueltEeTreeSeriesElement*& element) const override {
        m_asked.push_back(sequenceNumber);
        if (m_failsAt == sequenceNumber) {
            return m_failure;
        }
        const QueltEeTreeSeriesVar* const other = m_elementsOf;
        return other != nullptr ? other->getElement(sequenceNumber, element)
                                : QueltEeTreeSeriesVar::getElement(sequenceNumber, element);
    }

    std::optional<unsigned int> m_failsAt;
    long m_failure = E_NOTIMPL;
    const QueltEeTreeSeriesVar* m_elementsOf = nullptr;
    mutable std::vector<unsigned int> m_asked;
};

/// The dictionary Truck with a flat series of each kind, and
///
///     Line (18)  1 - 5 - 7 - 9        Plant (19)  1 - 2        Bare (18) of Van: no elements
///                 \       \- 8
///                  \- 3
struct BranchingWorld {
    BranchingWorld() {
        for (QueltEeSerialVar* const series : {unit, lot, counter, other}) {
            EXPECT_EQ(truck->addVariable(series), S_OK);
        }
        addElements(*line, {{1, 0}, {5, 1}, {7, 5}, {9, 7}, {8, 7}, {3, 1}});
        addElements(*plant, {{1, 0}, {2, 1}});
        EXPECT_EQ(truck->addVariable(line), S_OK);
        EXPECT_EQ(truck->addVariable(plant), S_OK);
        EXPECT_EQ(van->addVariable(vanUnit), S_OK);
        EXPECT_EQ(van->addVariable(vanLot), S_OK);
        EXPECT_EQ(van->addVariable(bare), S_OK);
        EXPECT_EQ(context.AddModelDico(truck, 1), S_OK);
        EXPECT_EQ(context.AddModelDico(van, 1), S_OK);
    }
    BranchingWorld(const BranchingWorld&) = delete;
    BranchingWorld& operator=(const BranchingWorld&) = delete;

    static QueltEeSerialVar* series(const char* name, unsigned char guid, int externalType) {
        return new QueltEeSerialVar(name, guidOf(guid),
                                    static_cast<QueltEeSerialVar::SerialExternalType>(externalType));
    }
    /// Pairs of number and parent; the first is the root.
    static void addElements(QueltEeTreeSeriesVar& tree,
                            const std::vector<std::pair<unsigned int, unsigned int>>& elements) {
        for (const auto& [number, parent] : elements) {
            EXPECT_EQ(tree.getElements().empty() ? tree.addRootElement(number)
                                                 : tree.addElement(number, parent),
                      S_OK);
        }
    }

    QueltEeModelDico* truck = new QueltEeModelDico("Truck", guidOf(1));
    QueltEeModelDico* van = new QueltEeModelDico("Van", guidOf(2));
    QueltEeSerialVar* unit = series("Unit", 11, 12);
    QueltEeSerialVar* lot = series("Lot", 12, 14);
    QueltEeSerialVar* counter = series("Counter", 13, 13);
    QueltEeSerialVar* other = series("Other", 14, 99);
    QueltEeSerialVar* vanUnit = series("Unit", 11, 12);
    QueltEeSerialVar* vanLot = series("Lot", 12, 14);
    TreeSeriesVarDouble* line = new TreeSeriesVarDouble("Line", guidOf(15), 18U);
    QueltEeTreeSeriesVar* plant = new QueltEeTreeSeriesVar("Plant", guidOf(16), 19U);
    QueltEeTreeSeriesVar* bare = new QueltEeTreeSeriesVar("Bare", guidOf(17), 18U);
    QueltEeSerialVar loose{"Loose", guidOf(18), QueltEeSerialVar::SerialExternalType::productSeries};
    QueltEeExpressionContext context;
};

/// A serial effectivity with these intervals; the caller owns it.
template <class Effectivity = QueltEeSerialEff>
Effectivity* serial(const QueltEeSerialVar* series,
                    std::initializer_list<QueltEeSerialEff::Interval> intervals) {
    auto* const effectivity = new Effectivity(series);
    for (const QueltEeSerialEff::Interval& interval : intervals) {
        effectivity->addInterval(interval);
    }
    return effectivity;
}

/// Gives `effectivity` the tree below `root` as its expression.
inline void setTree(QueltEeEffectivity& effectivity, QueltEeNode* root) {
    QueltEeExpression* expression = new QueltEeGenericExpression(root->getNodeRef());
    effectivity.setExpr(expression);
}

inline bool hasExpression(const QueltEeEffectivity& effectivity) {
    QueltEeExpression* expression = nullptr;
    EXPECT_EQ(effectivity.getExpr(expression), S_OK);
    return expression != nullptr;
}

/// The text of an effectivity's expression, "none" when it has none.
inline std::string expressionOf(const QueltEeEffectivity& effectivity) {
    QueltEeExpression* expression = nullptr;
    EXPECT_EQ(effectivity.getExpr(expression), S_OK);
    return expression != nullptr ? textOf(*expression) : "none";
}

} // namespace quelt::test
