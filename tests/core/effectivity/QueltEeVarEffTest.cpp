#include "effectivity/QueltEeVarEff.h"

#include <gtest/gtest.h>

#include "core/effectivity/EffectivityFamilies.h"
#include "core/support/Effort.h"
#include "infrastructure/QueltInResult.h"

#include <functional>

// What holds for every class of variable effectivities.

namespace {

using Effectivity = std::unique_ptr<QueltEeVarEff>;

Effectivity cloneOf(const Effectivity& effectivity) {
    return Effectivity(effectivity->createVarEffClone());
}

struct Operation {
    const char* name;
    long (QueltEeVarEff::*apply)(const QueltEeVarEff&);
    std::function<bool(bool, bool)> holds;
};

const std::vector<Operation>& operations() {
    static const std::vector<Operation> all{
        {"and", &QueltEeVarEff::opAnd, [](bool left, bool right) { return left && right; }},
        {"or", &QueltEeVarEff::opOr, [](bool left, bool right) { return left || right; }},
        {"cut", &QueltEeVarEff::opCut, [](bool left, bool right) { return left && !right; }}};
    return all;
}

Denoted combined(const std::vector<std::int64_t>& domain, const Denoted& left, const Denoted& right,
                 const std::function<bool(bool, bool)>& holds) {
    Denoted result;
    for (const std::int64_t member : domain) {
        if (holds(left.members.contains(member), right.members.contains(member))) {
            result.members.insert(member);
        }
    }
    result.noVar = holds(left.noVar, right.noVar);
    return result;
}

template <class Family>
class VarEffTest : public testing::Test {
protected:
    Family m_family;
    Random m_random{20240601};
};

using Families = testing::Types<SerialFamily, DateFamily, OptionFamily, SelectionFamily, TreeSeriesFamily,
                                OptionsOfNothingFamily, OptionsOf128Family, OptionsOf129Family>;
TYPED_TEST_SUITE(VarEffTest, Families);

TYPED_TEST(VarEffTest, HoldsForWhatItDenotes) {
    for (int round = 0; round < effort(200); ++round) {
        const Effectivity effectivity = this->m_family.random(this->m_random);
        const Denoted denoted = this->m_family.read(*effectivity);
        for (const std::int64_t member : this->m_family.domain()) {
            ASSERT_EQ(this->m_family.holds(*effectivity, member), denoted.members.contains(member))
                << member << " of " << effectivity->toString().view();
        }
        ASSERT_EQ(effectivity->isNoVarIncluded() != 0, denoted.noVar) << effectivity->toString().view();
    }
}

TYPED_TEST(VarEffTest, CombinesAsSetsDo) {
    for (int round = 0; round < effort(300); ++round) {
        const Effectivity left = this->m_family.random(this->m_random);
        const Effectivity right = this->m_family.random(this->m_random);
        const Denoted leftDenoted = this->m_family.read(*left);
        const Denoted rightDenoted = this->m_family.read(*right);
        const std::string rightText(right->toString().view());
        for (const Operation& operation : operations()) {
            const Effectivity result = cloneOf(left);
            ASSERT_EQ((result.get()->*operation.apply)(*right), S_OK);
            ASSERT_EQ(this->m_family.read(*result),
                      combined(this->m_family.domain(), leftDenoted, rightDenoted, operation.holds))
                << left->toString().view() << " " << operation.name << " " << rightText;
            ASSERT_EQ(right->toString().view(), rightText) << "the other one is not changed";
        }
    }
}

TYPED_TEST(VarEffTest, CombinesWithItself) {
    for (int round = 0; round < 50; ++round) {
        const Effectivity effectivity = this->m_family.random(this->m_random);
        const Denoted denoted = this->m_family.read(*effectivity);
        for (const Operation& operation : operations()) {
            const Effectivity result = cloneOf(effectivity);
            ASSERT_EQ((result.get()->*operation.apply)(*result), S_OK);
            ASSERT_EQ(this->m_family.read(*result),
                      combined(this->m_family.domain(), denoted, denoted, operation.holds))
                << operation.name << " " << effectivity->toString().view();
        }
    }
}

TYPED_TEST(VarEffTest, TurnsRound) {
    for (int round = 0; round < effort(100); ++round) {
        const Effectivity effectivity = this->m_family.random(this->m_random);
        const Denoted denoted = this->m_family.read(*effectivity);
        Denoted opposite;
        for (const std::int64_t member : this->m_family.domain()) {
            if (!denoted.members.contains(member)) {
                opposite.members.insert(member);
            }
        }
        const Effectivity opposed = cloneOf(effectivity);
        ASSERT_EQ(opposed->opNot(), S_OK);
        opposite.noVar = !denoted.noVar;
        ASSERT_EQ(this->m_family.read(*opposed), opposite) << effectivity->toString().view();
        ASSERT_EQ(opposed->opNot(), S_OK);
        ASSERT_EQ(this->m_family.read(*opposed), denoted);

        const Effectivity opposedInDomain = cloneOf(effectivity);
        ASSERT_EQ(opposedInDomain->opNotDom(), S_OK);
        opposite.noVar = denoted.noVar;
        ASSERT_EQ(this->m_family.read(*opposedInDomain), opposite) << effectivity->toString().view();
        ASSERT_EQ(opposedInDomain->opNotDom(), S_OK);
        ASSERT_EQ(this->m_family.read(*opposedInDomain), denoted);

        const Effectivity switched = cloneOf(effectivity);
        switched->switchNoVar();
        ASSERT_EQ(switched->getNoVar() != 0, effectivity->getNoVar() == 0);
        ASSERT_EQ(switched->isNegated(), effectivity->isNegated());
        ASSERT_EQ(this->m_family.read(*switched), (Denoted{denoted.members, !denoted.noVar}));
    }
}

TYPED_TEST(VarEffTest, ComparesMeaningNotSpelling) {
    std::vector<Effectivity> effectivities;
    for (int count = 0; count < 40; ++count) {
        effectivities.push_back(this->m_family.random(this->m_random));
        // The same, written otherwise: normal form, and turned round twice with a step between.
        effectivities.push_back(cloneOf(effectivities.back()));
        ASSERT_EQ(effectivities.back()->opAnd(*effectivities.back()), S_OK);
        effectivities.push_back(cloneOf(effectivities.back()));
        ASSERT_EQ(effectivities.back()->opNot(), S_OK);
        ASSERT_EQ(effectivities.back()->opOr(*effectivities.back()), S_OK);
        ASSERT_EQ(effectivities.back()->opNot(), S_OK);
    }
    for (const Effectivity& left : effectivities) {
        for (const Effectivity& right : effectivities) {
            ASSERT_EQ(left->equals(*right) != 0, this->m_family.read(*left) == this->m_family.read(*right))
                << left->toString().view() << " and " << right->toString().view();
        }
    }
}

TYPED_TEST(VarEffTest, KnowsNothingAndEverything) {
    const Effectivity nothing = this->m_family.empty();
    EXPECT_NE(nothing->isAllFalse(), 0);
    EXPECT_EQ(nothing->isAllTrue(), 0);
    const Effectivity everything = cloneOf(nothing);
    EXPECT_EQ(everything->opNot(), S_OK);
    EXPECT_EQ(everything->isAllFalse(), 0);
    EXPECT_NE(everything->isAllTrue(), 0);

    for (int round = 0; round < effort(300); ++round) {
        const Effectivity effectivity = this->m_family.random(this->m_random);
        const Denoted denoted = this->m_family.read(*effectivity);
        const bool hasAll = denoted.members.size() == this->m_family.domain().size();
        ASSERT_EQ(effectivity->isAllFalse() != 0, denoted.members.empty() && !denoted.noVar)
            << effectivity->toString().view();
        ASSERT_EQ(effectivity->isAllTrue() != 0, hasAll && denoted.noVar) << effectivity->toString().view();

        const Effectivity opposite = cloneOf(effectivity);
        ASSERT_EQ(opposite->opNot(), S_OK);
        const Effectivity both = cloneOf(effectivity);
        ASSERT_EQ(both->opAnd(*opposite), S_OK);
        ASSERT_NE(both->isAllFalse(), 0) << effectivity->toString().view();
        const Effectivity either = cloneOf(effectivity);
        ASSERT_EQ(either->opOr(*opposite), S_OK);
        ASSERT_NE(either->isAllTrue(), 0) << effectivity->toString().view();
    }
}

TYPED_TEST(VarEffTest, ClonesWholeAndApart) {
    for (int round = 0; round < 50; ++round) {
        const Effectivity effectivity = this->m_family.random(this->m_random);
        const std::string text(effectivity->toString().view());
        const Effectivity clone = cloneOf(effectivity);
        ASSERT_EQ(clone->dType(), effectivity->dType());
        ASSERT_EQ(clone->getVar(), effectivity->getVar());
        ASSERT_EQ(clone->isNegated(), effectivity->isNegated());
        ASSERT_EQ(clone->getNoVar(), effectivity->getNoVar());
        ASSERT_EQ(clone->toString().view(), text);
        ASSERT_EQ(clone->opOr(*this->m_family.random(this->m_random)), S_OK);
        clone->switchNoVar();
        ASSERT_EQ(effectivity->toString().view(), text);
    }
}

TYPED_TEST(VarEffTest, ShowsItsFlags) {
    const Effectivity effectivity = this->m_family.empty();
    const std::string plain(effectivity->toString().view());
    effectivity->switchNoVar();
    EXPECT_EQ(effectivity->toString().view(), plain + "?");
    effectivity->opNot();
    EXPECT_EQ(effectivity->toString().view(), "not (" + plain + ")");
    effectivity->switchNoVar();
    EXPECT_EQ(effectivity->toString().view(), "not (" + plain + ")?");
    effectivity->opNotDom();
    EXPECT_EQ(effectivity->toString().view(), plain + "?");
    EXPECT_NE(effectivity->getNoVar(), 0);
}

// What set operations make inside an arena goes with it, whatever it was that they needed on the way.
TYPED_TEST(VarEffTest, LivesInAnArena) {
    QueltInArena arena;
    std::size_t bytesOfFirstRound = 0;
    for (int round = 0; round < 20; ++round) {
        const QueltInArenaScope scope(arena);
        QueltEeVarEff* const result = this->m_family.random(this->m_random)->createVarEffClone();
        for (int count = 0; count < 20; ++count) {
            const Effectivity other = this->m_family.random(this->m_random);
            ASSERT_EQ(result->opOr(*other), S_OK);
            ASSERT_EQ(result->opCut(*other), S_OK);
            static_cast<void>(result->equals(*other));
        }
        bytesOfFirstRound = std::max(bytesOfFirstRound, arena.bytesInUse());
        arena.reset();
    }
    EXPECT_GT(bytesOfFirstRound, 0U);
}

// Each class refuses all others and is left as it was.
TEST(VarEffClassesTest, RefusesOtherClasses) {
    const SerialFamily serial;
    const DateFamily date;
    const OptionFamily option;
    const SelectionFamily selection;
    const TreeSeriesFamily treeSeries;
    Random random(1);
    std::vector<Effectivity> effectivities;
    effectivities.push_back(serial.random(random));
    effectivities.push_back(date.random(random));
    effectivities.push_back(option.random(random));
    effectivities.push_back(selection.random(random)); // the same GUID as the option's variable
    effectivities.push_back(treeSeries.random(random));
    for (const Effectivity& left : effectivities) {
        for (const Effectivity& right : effectivities) {
            if (left == right) {
                continue;
            }
            const std::string text(left->toString().view());
            for (const Operation& operation : operations()) {
                EXPECT_EQ((left.get()->*operation.apply)(*right), E_INVALIDARG)
                    << text << " " << operation.name;
                EXPECT_EQ(left->toString().view(), text);
            }
            EXPECT_EQ(left->equals(*right), 0) << text;
        }
    }
}

} // namespace
