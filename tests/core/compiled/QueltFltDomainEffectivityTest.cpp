#include "compiled/QueltFltDomainEffectivity.h"

#include "core/compiled/CompiledSamples.h"

#include "infrastructure/QueltInString.h"

namespace {

constexpr auto s_other = static_cast<QueltExpressionView>(7);

TEST(QueltFltDomainEffectivity, FindsViewsByTheirKind) {
    QueltFltDomainEffectivity domain;
    EXPECT_EQ(domain.getEffectivityView(QueltExpressionView::full), nullptr);
    auto* const other = new QueltFltEffectivityView;
    auto* const full = new QueltFltEffectivityView;
    EXPECT_EQ(domain.addView(s_other, other), S_OK);
    EXPECT_EQ(domain.addView(QueltExpressionView::full, full), S_OK);
    EXPECT_EQ(domain.getEffectivityView(QueltExpressionView::full), full);
    EXPECT_EQ(domain.getEffectivityView(s_other), other);
    EXPECT_EQ(domain.getEffectivityView(static_cast<QueltExpressionView>(1)), nullptr);
    EXPECT_EQ(domain.getEffectivityView(static_cast<QueltExpressionView>(8)), nullptr);
    ASSERT_EQ(domain.getViews().size(), 2U);
    EXPECT_EQ(domain.getViews()[0].view, full);
    EXPECT_EQ(domain.getViews()[1].view, other);
    EXPECT_EQ(domain.toString().view(), "domain(0: view(), 7: view())");
}

TEST(QueltFltDomainEffectivity, RefusesWhatIsThereAlready) {
    QueltFltDomainEffectivity domain;
    auto* const view = new QueltFltEffectivityView;
    QueltFltEffectivityView second;
    EXPECT_EQ(domain.addView(s_other, nullptr), E_POINTER);
    EXPECT_EQ(domain.addView(s_other, view), S_OK);
    EXPECT_EQ(domain.addView(s_other, &second), E_ALREADYTHERE);
    EXPECT_EQ(domain.addView(QueltExpressionView::full, view), E_ALREADYTHERE);
    QueltFltDomainEffectivity other;
    EXPECT_EQ(other.addView(s_other, view), E_ALREADYTHERE);
    EXPECT_EQ(domain.getViews().size(), 1U);
    EXPECT_EQ(other.toString().view(), "domain()");
}

TEST(QueltFltDomainEffectivity, HasALimit) {
    QueltFltDomainEffectivity domain;
    for (std::uint32_t kind = 1'000; kind > 0; --kind) {
        ASSERT_EQ(domain.addView(static_cast<QueltExpressionView>(kind), new QueltFltEffectivityView), S_OK);
    }
    QueltFltEffectivityView refused;
    EXPECT_EQ(domain.addView(QueltExpressionView::full, &refused), E_OUTOFMEMORY);
    EXPECT_EQ(domain.getViews().size(), 1'000U);
    EXPECT_EQ(static_cast<std::uint32_t>(domain.getViews().front().kind), 1U);
}

} // namespace
