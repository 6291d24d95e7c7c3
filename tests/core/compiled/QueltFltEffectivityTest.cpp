#include "compiled/QueltFltEffectivity.h"

#include "core/compiled/CompiledSamples.h"

#include "infrastructure/QueltInMemory.h"
#include "infrastructure/QueltInString.h"

namespace {

TEST(QueltFltEffectivity, FindsDomainsByTheirNumber) {
    QueltFltEffectivity effectivity;
    EXPECT_EQ(effectivity.getNbDomainEffectivity(), 0U);
    EXPECT_EQ(effectivity.getDomainEffectivity(0), nullptr);
    EXPECT_EQ(effectivity.toString().view(), "compiled()");
    auto* const third = new QueltFltDomainEffectivity;
    auto* const second = new QueltFltDomainEffectivity;
    EXPECT_EQ(effectivity.addDomain(3, third), S_OK);
    EXPECT_EQ(effectivity.addDomain(2, second), S_OK);
    EXPECT_EQ(effectivity.getNbDomainEffectivity(), 2U);
    EXPECT_EQ(effectivity.getDomainEffectivity(2), second);
    EXPECT_EQ(effectivity.getDomainEffectivity(3), third);
    EXPECT_EQ(effectivity.getDomainEffectivity(0), nullptr);
    EXPECT_EQ(effectivity.getDomainEffectivity(4), nullptr);
    EXPECT_EQ(effectivity.toString().view(), "compiled(2: domain(), 3: domain())");
}

TEST(QueltFltEffectivity, RefusesWhatIsThereAlready) {
    QueltFltEffectivity effectivity;
    auto* const domain = new QueltFltDomainEffectivity;
    QueltFltDomainEffectivity second;
    EXPECT_EQ(effectivity.addDomain(2, nullptr), E_POINTER);
    EXPECT_EQ(effectivity.addDomain(2, domain), S_OK);
    EXPECT_EQ(effectivity.addDomain(2, &second), E_ALREADYTHERE);
    EXPECT_EQ(effectivity.addDomain(3, domain), E_ALREADYTHERE);
    QueltFltEffectivity other;
    EXPECT_EQ(other.addDomain(2, domain), E_ALREADYTHERE);
    EXPECT_EQ(effectivity.getNbDomainEffectivity(), 1U);
}

TEST(QueltFltEffectivity, HasALimit) {
    QueltFltEffectivity effectivity;
    for (unsigned int number = 0; number < 1'000; ++number) {
        ASSERT_EQ(effectivity.addDomain(number, new QueltFltDomainEffectivity), S_OK);
    }
    QueltFltDomainEffectivity refused;
    EXPECT_EQ(effectivity.addDomain(1'000, &refused), E_OUTOFMEMORY);
    EXPECT_EQ(effectivity.getNbDomainEffectivity(), 1'000U);
}

/// Writes down when it is deleted.
class Witness : public QueltEePredefEff {
public:
    explicit Witness(bool& isGone) : QueltEePredefEff("ECO-1", guidOf(21)), m_isGone(isGone) {}
    ~Witness() override { m_isGone = true; }
    Witness(const Witness&) = delete;
    Witness& operator=(const Witness&) = delete;

private:
    bool& m_isGone;
};

TEST(QueltFltEffectivity, OwnsWhatItAdopted) {
    bool isGone = false;
    {
        QueltFltEffectivity effectivity;
        effectivity.adopt(nullptr);
        effectivity.adopt(std::make_unique<Witness>(isGone));
        EXPECT_FALSE(isGone);
    }
    EXPECT_TRUE(isGone);
}

TEST(QueltFltEffectivity, IsAllInTheArenaThatItWasMadeIn) {
    const CompiledSamples samples;
    Random random(5);
    QueltInArena arena;
    const QueltInArenaScope scope(arena);
    // Nobody deletes it; the leak check would see what it kept on the heap.
    EXPECT_NE(samples.effectivity(random).release()->toString().view(), "");
}

} // namespace
