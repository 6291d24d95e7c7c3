#include "SerialRenumbering.h"

#include "module/support/Captured.h"
#include "module/support/ConversionDoubles.h"
#include "module/support/Garage.h"

#include "dictionary/QueltEeSerialVar.h"
#include "effectivity/QueltEeSerialEff.h"
#include "infrastructure/QueltInIntHolder.h"
#include "infrastructure/QueltInListVal.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

namespace {

using quelt::SerialRewriteRules;
using quelt::test::CapturedErrors;
using quelt::test::CapturedTrace;
using quelt::test::guidOf;
using quelt::test::SerialEffDouble;
using quelt::test::SerialVarWithRevisions;
using Interval = QueltEeSerialEff::Interval;
using Type = QueltEeSerialVar::SerialExternalType;

const quelt::MigrationTrace s_trace("SerialRenumberingTest");

SerialRewriteRules listRules(bool renumbers) {
    return {.trace = s_trace,
            .where = std::source_location::current(),
            .renumbers = renumbers,
            .tracesShiftedBounds = false,
            .comparesUpperBoundUnshifted = true};
}

SerialRewriteRules treeRules(bool renumbers) {
    return {.trace = s_trace,
            .where = std::source_location::current(),
            .renumbers = renumbers,
            .tracesShiftedBounds = true,
            .comparesUpperBoundUnshifted = false};
}

/// A series of the product kind with model years 2010 and 2012 under 5 and 7: the renumbered numbers are 2009
/// and 2011.
struct Series {
    explicit Series(Type type = Type::productSeries) : variable("Unit", guidOf(5), type) {
        variable.addRevision("2010", 5);
        variable.addRevision("2012", 7);
    }
    QueltEeSerialVar variable;
};

/// A class of its own, which might say otherwise what its intervals are.
class OtherSerialEff : public QueltEeSerialEff {
public:
    using QueltEeSerialEff::QueltEeSerialEff;
};

template <class Effectivity>
Interval rewrittenIn(Interval interval, const QueltEeSerialVar& variable, const SerialRewriteRules& rules) {
    Effectivity effectivity(&variable);
    effectivity.addInterval(interval);
    EXPECT_EQ(quelt::rewriteSerialIntervals(effectivity, variable, rules), S_OK);
    EXPECT_EQ(effectivity.intervals().size(), 1U);
    return effectivity.intervals().front();
}

Interval rewritten(Interval interval, const QueltEeSerialVar& variable, const SerialRewriteRules& rules) {
    return rewrittenIn<QueltEeSerialEff>(interval, variable, rules);
}

Interval closed(int a, int b) {
    return {a, b, 1, 1};
}

TEST(SerialRenumbering, shiftsFiniteBoundsAndClosesThem) {
    const Series series;
    for (const SerialRewriteRules& rules : {listRules(false), treeRules(false)}) {
        EXPECT_EQ(rewritten({10, 20, 0, 0}, series.variable, rules), closed(9, 19));
        EXPECT_EQ(rewritten(closed(-2000000000, 2000000000), series.variable, rules),
                  closed(-2000000000, 2000000000));
        EXPECT_EQ(rewritten(closed(2000000000, -2000000000), series.variable, rules),
                  closed(2000000000, -2000000000));
        EXPECT_EQ(rewritten(closed(99999, 99999), series.variable, rules), closed(99998, 99998));
        EXPECT_EQ(rewritten(closed(INT_MIN, INT_MAX), series.variable, rules), closed(INT_MAX, INT_MAX - 1));
    }
}

TEST(SerialRenumbering, leavesOtherKindsOfSeriesAlone) {
    for (const int type : {0, 11, 13, 15}) {
        const Series series(static_cast<Type>(type));
        EXPECT_EQ(rewritten({10, 20, 0, 0}, series.variable, treeRules(true)), (Interval{10, 20, 0, 0}))
            << type;
    }
    const Series series(Type::manufacturingSeries);
    EXPECT_EQ(rewritten(closed(10, 20), series.variable, treeRules(false)), closed(9, 19));
}

TEST(SerialRenumbering, translatesThroughModelYears) {
    struct Row {
        Interval old;
        Interval expected;
        const char* why;
    };
    const Row rows[] = {
        {closed(2011, 2013), closed(7, 2000000000),
         "2010 takes the next year's number; past the last year is open"},
        {closed(2010, 2010), {5, 7, 1, 0}, "an exact year below; the next year, excluded, above"},
        {closed(2012, 2011), {7, 7, 1, 0}, "2011 exactly; 2010 lies below 2011"},
        {closed(5, 5), closed(5, 4), "below the first year: its number below, no translation above"},
        {closed(2013, 2012), closed(2012, 2000000000), "above the last year: kept below, open above"},
        {closed(2011, 2010), {7, 7, 1, 0}, "the upper bound is never looked up exactly"},
        {closed(2010, 2009), closed(5, 2008), "one below the first year stays"},
        {closed(99999, 99999), closed(0, 0), "the last number of a stored series means none"},
        {closed(-2000000000, 2000000000), closed(-2000000000, 2000000000), "open ends"},
    };
    const Series series;
    for (const Row& row : rows) {
        EXPECT_EQ(rewritten(row.old, series.variable, listRules(true)), row.expected) << row.why;
        EXPECT_EQ(rewritten(row.old, series.variable, treeRules(true)), row.expected) << row.why;
    }
}

TEST(SerialRenumbering, comparesTheWrappedLowestNumberAsEachPlaceSays) {
    const Series series;
    EXPECT_EQ(rewritten(closed(1, INT_MIN), series.variable, listRules(true)).b, INT_MAX);
    EXPECT_EQ(rewritten(closed(1, INT_MIN), series.variable, treeRules(true)).b, 2000000000);
}

TEST(SerialRenumbering, looksForTheNextYearAmongUnsignedNumbers) {
    QueltEeSerialVar variable("Unit", guidOf(5), Type::productSeries);
    variable.addRevision("-4", 1); // renumbered -5, the largest of all when unsigned
    variable.addRevision("3", 2);  // renumbered 2
    EXPECT_EQ(rewritten(closed(0, 2000000000), variable, listRules(true)).a, -1)
        << "no number above the unsigned -1, and none at the start of the search";
    EXPECT_EQ(rewritten(closed(1, 2000000000), variable, listRules(true)).a, 2);
    variable.addRevision("100000", 9); // renumbered 99999, where the search starts
    EXPECT_EQ(rewritten(closed(0, 2000000000), variable, listRules(true)).a, 9);
    EXPECT_EQ(rewritten(closed(50, 60), variable, listRules(true)), (Interval{9, 9, 1, 0}));
}

TEST(SerialRenumbering, neverFindsAYearPastTheStartOfTheSearch) {
    QueltEeSerialVar variable("Unit", guidOf(5), Type::productSeries);
    variable.addRevision("10", 1);
    variable.addRevision("200000", 2);
    EXPECT_EQ(rewritten(closed(51, 61), variable, listRules(true)), closed(50, 60));
    EXPECT_EQ(rewritten(closed(200000, 2000000000), variable, listRules(true)).a, 2)
        << "an exact number is found";
}

TEST(SerialRenumbering, mapsSequenceNumbersOfThirtyTwoBitsRoundToSigned) {
    QueltEeSerialVar variable("Unit", guidOf(5), Type::productSeries);
    variable.addRevision("10", 4294967295U);
    CapturedTrace captured;
    EXPECT_EQ(rewritten(closed(10, 3), variable, listRules(true)), closed(-1, 2));
    EXPECT_EQ(captured.texts(),
              (std::vector<std::string>{"=== CGE_MigRen=1 ===", "ModelYear  : 10", "Ren seqNb  : 9",
                                        "Ren seqNb  : 9 <=> MD seqNb 4294967295", "New SeqNB a : -1",
                                        "interval pushed : -1, 2"}));
}

TEST(SerialRenumbering, tracesTheShiftOnlyWhereThePlaceDoes) {
    const Series series;
    CapturedTrace captured;
    EXPECT_EQ(rewritten(closed(2010, 2011), series.variable, treeRules(true)), (Interval{5, 7, 1, 0}));
    EXPECT_EQ(captured.texts(),
              (std::vector<std::string>{"=== CGE_MigRen=1 ===", "ModelYear  : 2010", "Ren seqNb  : 2009",
                                        "Ren seqNb  : 2009 <=> MD seqNb 5", "ModelYear  : 2012",
                                        "Ren seqNb  : 2011", "Ren seqNb  : 2011 <=> MD seqNb 7",
                                        "Old SeqNB a : 2009", "New SeqNB a : 5", "Old SeqNB b : 2010",
                                        "New SeqNB b : 7", "interval pushed : 5, 7"}));
}

TEST(SerialRenumbering, keepsTheFirstOfTwoRevisionsOfAYear) {
    QueltEeSerialVar variable("Unit", guidOf(5), Type::productSeries);
    variable.addRevision("2010", 5);
    variable.addRevision(" 2010 facelift", 6);
    CapturedTrace captured;
    EXPECT_EQ(rewritten(closed(2010, 2000000000), variable, listRules(true)).a, 5);
    EXPECT_EQ(captured.texts().at(3), "Ren seqNb  : 2009 <=> MD seqNb 5");
    EXPECT_EQ(captured.texts().at(5), "Ren seqNb  : 2009");
    EXPECT_EQ(captured.texts().at(6), "New SeqNB a : 5");
}

TEST(SerialRenumbering, wrapsTheLowestYear) {
    QueltEeSerialVar variable("Unit", guidOf(5), Type::productSeries);
    variable.addRevision("-2147483648", 3);
    EXPECT_EQ(rewritten(closed(0, 2000000000), variable, listRules(true)).a, -1);
}

TEST(SerialRenumbering, reportsASeriesWithoutRevisionTable) {
    const SerialVarWithRevisions variable(guidOf(5), nullptr);
    QueltEeSerialEff effectivity(&variable);
    effectivity.addInterval(closed(10, 20));
    const CapturedErrors captured;
    EXPECT_EQ(quelt::rewriteSerialIntervals(effectivity, variable, listRules(true)), E_FAIL);
    EXPECT_EQ(captured.texts(), std::vector<std::string>{"ERROR : getSeqNb2Revisions failed"});
    EXPECT_EQ(effectivity.intervals().front(), closed(10, 20));
}

TEST(SerialRenumbering, readsATableWhateverTheResultCode) {
    const QueltInMap revisions(QueltInIntHolder::sType(), QueltEeSerialVarValue::sType());
    const SerialVarWithRevisions variable(guidOf(5), &revisions);
    EXPECT_EQ(rewritten(closed(10, 20), variable, listRules(true)), closed(9, 2000000000))
        << "without any year, every upper bound lies above the largest, 0";
}

TEST(SerialRenumbering, reportsAForeignRevision) {
    QueltInMap revisions(QueltInIntHolder::sType(), QueltInObject::sType());
    QueltInString foreign("2010");
    revisions.Put(QueltInIntHolder(1), foreign);
    const SerialVarWithRevisions variable(guidOf(5), &revisions);
    QueltEeSerialEff effectivity(&variable);
    const CapturedErrors captured;
    EXPECT_EQ(quelt::rewriteSerialIntervals(effectivity, variable, listRules(true)), E_FAIL);
    EXPECT_EQ(captured.texts(), std::vector<std::string>{"ERROR"});
}

TEST(SerialRenumbering, rewritesDerivedClassesThroughWhatTheyShow) {
    const Series series;
    for (const bool renumbers : {false, true}) {
        for (const Interval interval : {closed(2010, 2011), Interval{2013, 2014, 0, 0}, closed(99999, 99999),
                                        closed(-2000000000, 2000000000)}) {
            EXPECT_EQ(rewrittenIn<OtherSerialEff>(interval, series.variable, treeRules(renumbers)),
                      rewritten(interval, series.variable, treeRules(renumbers)));
        }
    }
}

TEST(SerialRenumbering, passesFailuresOfTheEffectivityUp) {
    const Series series;
    SerialEffDouble effectivity(&series.variable);
    const CapturedErrors captured;
    effectivity.m_getResult = E_UNEXPECTED;
    EXPECT_EQ(quelt::rewriteSerialIntervals(effectivity, series.variable, listRules(false)), E_UNEXPECTED);
    effectivity.m_getResult = S_OK;
    effectivity.m_setResult = E_OUTOFMEMORY;
    EXPECT_EQ(quelt::rewriteSerialIntervals(effectivity, series.variable, listRules(false)), E_OUTOFMEMORY);
    effectivity.m_hasForeignInterval = true;
    EXPECT_EQ(quelt::rewriteSerialIntervals(effectivity, series.variable, listRules(false)), E_FAIL);
    EXPECT_EQ(captured.texts(),
              (std::vector<std::string>{"ERROR : getIntervals failed.", "ERROR, set new intervals FAILED.",
                                        "ERROR : unexpected type"}));
}

TEST(SerialRenumbering, reportsWhereThePlaceStands) {
    const SerialVarWithRevisions variable(guidOf(5), nullptr);
    QueltEeSerialEff effectivity(&variable);
    const CapturedErrors captured;
    const SerialRewriteRules rules = listRules(true);
    quelt::rewriteSerialIntervals(effectivity, variable, rules);
    const std::string location =
        "[ERROR] tests/module/SerialRenumberingTest.cpp(" + std::to_string(rules.where.line()) + ")";
    EXPECT_EQ(captured.lines().front().text, location);
    EXPECT_EQ(captured.lines().front().className, "SerialRenumberingTest");
    EXPECT_EQ(captured.lines().front().domainName, "QueltDataMigration");
}

} // namespace
