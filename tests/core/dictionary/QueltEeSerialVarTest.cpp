#include "dictionary/QueltEeSerialVar.h"

#include "core/dictionary/TestTools.h"
#include "infrastructure/QueltInIntHolder.h"
#include "infrastructure/QueltInResult.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using ExternalType = QueltEeSerialVar::SerialExternalType;

/// The revision table in its order: "5=2010 7=2012 ".
std::string tableOf(const QueltEeSerialVar& variable) {
    const QueltInMap* revisions = nullptr;
    if (variable.getSeqNb2Revisions(revisions) < 0) {
        return "none";
    }
    std::string text;
    QueltInMap::const_iterator entries = revisions->cBegin();
    while (const QueltInMapEntry* const entry = entries.GetEntryGoToNext()) {
        const QueltInIntHolder* const key = QueltInIntHolder::cast(entry->key);
        const QueltEeSerialVarValue* const value = QueltEeSerialVarValue::cast(entry->value);
        EXPECT_EQ(key->m_value, value->getSeqNumber());
        text += std::to_string(key->m_value) + "=" + std::string(value->getRev().view()) + " ";
    }
    return text;
}

TEST(QueltEeSerialVarTest, KeepsAnyExternalType) {
    for (const int type : {0, 12, 13, 14, 15, -1}) {
        const QueltEeSerialVar unit("Unit", guidOf(1), ExternalType(type));
        EXPECT_EQ(static_cast<int>(unit.getExternalType()), type);
    }
    EXPECT_EQ(static_cast<int>(ExternalType::productSeries), 12);
    EXPECT_EQ(static_cast<int>(ExternalType::unitCounter), 13);
    EXPECT_EQ(static_cast<int>(ExternalType::manufacturingSeries), 14);
}

TEST(QueltEeSerialVarTest, FailsWithoutRevisionTable) {
    const QueltEeSerialVar unit("Unit", guidOf(1), ExternalType::productSeries);
    const QueltInMap other(QueltInIntHolder::sType(), QueltEeSerialVarValue::sType());
    const QueltInMap* revisions = &other;
    EXPECT_EQ(unit.getSeqNb2Revisions(revisions), E_FAIL);
    EXPECT_EQ(revisions, nullptr);
}

TEST(QueltEeSerialVarTest, GivesAnEmptyTableOut) {
    QueltEeSerialVar unit("Unit", guidOf(1), ExternalType::productSeries);
    unit.makeRevisionTable();
    const QueltInMap* revisions = nullptr;
    EXPECT_EQ(unit.getSeqNb2Revisions(revisions), S_OK);
    ASSERT_NE(revisions, nullptr);
    EXPECT_EQ(revisions->GetLength(), 0);
}

TEST(QueltEeSerialVarTest, KeepsTheOrderOfTheTable) {
    QueltEeSerialVar unit("Unit", guidOf(1), ExternalType::productSeries);
    unit.addRevision("2012", 7);
    unit.addRevision("2010", 5);
    unit.addRevision("2010", 6);
    unit.makeRevisionTable();
    EXPECT_EQ(tableOf(unit), "7=2012 5=2010 6=2010 ");
}

TEST(QueltEeSerialVarTest, GivesANumberThatComesTwiceTheLaterTextInTheEarlierPlace) {
    QueltEeSerialVar unit("Unit", guidOf(1), ExternalType::productSeries);
    unit.addRevision("2010", 5);
    unit.addRevision("2012", 7);
    unit.addRevision("2011", 5);
    EXPECT_EQ(tableOf(unit), "5=2011 7=2012 ");
}

TEST(QueltEeSerialVarTest, TellsAValueAsText) {
    EXPECT_EQ(QueltEeSerialVarValue("2010", 5).toString().view(), "2010: 5");
    EXPECT_EQ(QueltEeSerialVarValue("MY 2010", 0xFFFFFFFFU).toString().view(), "\"MY 2010\": 4294967295");
}

TEST(QueltEeSerialVarTest, AgreesWhenNumbersMeanTheSame) {
    QueltEeSerialVar unit("Unit", guidOf(1), ExternalType::productSeries);
    QueltEeSerialVar same("Unit", guidOf(1), ExternalType::productSeries);
    EXPECT_TRUE(unit.agreesWith(same));
    same.makeRevisionTable();
    EXPECT_TRUE(unit.agreesWith(same));
    EXPECT_TRUE(same.agreesWith(unit));

    unit.addRevision("2010", 5);
    EXPECT_FALSE(unit.agreesWith(same));
    EXPECT_FALSE(same.agreesWith(unit));
    unit.addRevision("2012", 7);
    same.addRevision("2012", 7);
    same.addRevision("2010", 5);
    EXPECT_TRUE(unit.agreesWith(same));
    same.addRevision("2011", 5);
    EXPECT_FALSE(unit.agreesWith(same));

    QueltEeSerialVar shifted("Unit", guidOf(1), ExternalType::productSeries);
    shifted.addRevision("2010", 6);
    shifted.addRevision("2012", 7);
    EXPECT_FALSE(unit.agreesWith(shifted));
    EXPECT_FALSE(unit.agreesWith(QueltEeSerialVar("Unit", guidOf(2), ExternalType::productSeries)));
    EXPECT_TRUE(unit.agreesWith(unit));
}

} // namespace
