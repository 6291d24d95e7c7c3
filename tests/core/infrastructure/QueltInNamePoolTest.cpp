#include "infrastructure/QueltInNamePool.h"

#include "core/infrastructure/OnThreads.h"
#include "core/infrastructure/RandomNumbers.h"
#include "core/infrastructure/SampleObjects.h"

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

/// An object that bears a name.
class Named : public QueltInObject {
public:
    explicit Named(const QueltInName& name) : m_name(name) {}
    QueltInName m_name;
};

constexpr const char* s_long = "a name that is too long for any string to keep inside itself";

} // namespace

TEST(QueltInName, EqualTextsAreOneName) {
    const QueltInName first("Engine");
    const QueltInName second(std::string("Eng") + "ine");
    const QueltInName other("Gearbox");
    EXPECT_TRUE(first == second);
    EXPECT_FALSE(first == other);
    EXPECT_EQ(&first.text(), &second.text());
    EXPECT_EQ(first.text().view(), "Engine");
    EXPECT_EQ(other.text().view(), "Gearbox");
}

TEST(QueltInName, EmptyOneNeedsNoEntry) {
    const std::size_t before = QueltInName::countOfNames();
    const QueltInName none;
    const QueltInName empty("");
    EXPECT_TRUE(none == empty);
    EXPECT_STREQ(none.text().ConvertToChar(), "");
    EXPECT_EQ(QueltInName::countOfNames(), before);
}

TEST(QueltInName, LivesAsLongAsSomebodyBearsIt) {
    const std::size_t before = QueltInName::countOfNames();
    std::optional<QueltInName> first(std::in_place, s_long);
    std::optional<QueltInName> second(*first);
    EXPECT_EQ(QueltInName::countOfNames(), before + 1);
    first.reset();
    EXPECT_EQ(second->text().view(), s_long);
    EXPECT_EQ(QueltInName::countOfNames(), before + 1);
    *second = QueltInName("another");
    EXPECT_EQ(QueltInName::countOfNames(), before + 1);
    const QueltInName& itself = *second;
    *second = itself;
    EXPECT_EQ(second->text().view(), "another");
    *second = QueltInName();
    EXPECT_EQ(QueltInName::countOfNames(), before);
    EXPECT_EQ(second->text().view(), "");
}

TEST(QueltInName, TextMayHoldZeroBytes) {
    const std::string_view text("a\0b", 3);
    const QueltInName name(text);
    EXPECT_FALSE(name == QueltInName("a"));
    EXPECT_EQ(name.text().view(), text);
}

TEST(QueltInName, MadeInsideAnArenaOutlivesIt) {
    const std::size_t before = QueltInName::countOfNames();
    std::optional<QueltInName> outside;
    {
        QueltInArena arena;
        const QueltInArenaScope scope(arena);
        outside.emplace(s_long);
        EXPECT_EQ(QueltInMemory::arenaOf(outside->text().ConvertToChar()), nullptr);
        EXPECT_EQ(QueltInMemory::arenaOf(&outside->text()), nullptr);
    }
    EXPECT_EQ(outside->text().view(), s_long);
    outside.reset();
    EXPECT_EQ(QueltInName::countOfNames(), before);
}

TEST(QueltInName, BornByAnObjectInAnArenaGoesWithTheReset) {
    const std::size_t before = QueltInName::countOfNames();
    QueltInArena arena;
    std::optional<QueltInName> copy;
    {
        const QueltInArenaScope scope(arena);
        Named* forgotten = nullptr;
        for (int count = 0; count < 100; ++count) {
            forgotten = new Named(QueltInName(s_long)); // its destructor never runs
        }
        delete new Named(QueltInName(s_long));
        EXPECT_EQ(forgotten->m_name.text().view(), s_long);
        copy = forgotten->m_name;
        forgotten->m_name = QueltInName("changed");
        EXPECT_EQ(forgotten->m_name.text().view(), "changed");
    }
    EXPECT_EQ(QueltInName::countOfNames(), before + 2);
    arena.reset();
    EXPECT_EQ(QueltInName::countOfNames(), before + 1);
    EXPECT_EQ(copy->text().view(), s_long);
    copy.reset();
    EXPECT_EQ(QueltInName::countOfNames(), before);
}

TEST(QueltInName, ManyThreadsShareAndGiveUp) {
    const std::size_t before = QueltInName::countOfNames();
    std::atomic<int> wrong = 0;
    onThreads(4, [&wrong](unsigned int seed) {
        RandomNumbers random(seed);
        std::vector<QueltInName> mine(5);
        for (int round = 0; round < 4000; ++round) {
            // Few texts and few places, so that names come and go all the time.
            const std::string text = "name " + std::to_string(random.below(4));
            const QueltInName name(text);
            mine[random.below(mine.size())] = name;
            wrong += name.text().view() != text ? 1 : 0;
            wrong += name == QueltInName(text) ? 0 : 1;
            if (random.onceIn(4)) {
                mine[random.below(mine.size())] = QueltInName();
            }
        }
    });
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(QueltInName::countOfNames(), before);
}
