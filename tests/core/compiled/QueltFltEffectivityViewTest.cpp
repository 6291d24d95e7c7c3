#include "compiled/QueltFltEffectivityView.h"

#include "core/compiled/CompiledSamples.h"

#include "infrastructure/QueltInString.h"

namespace {

TEST(QueltFltEffectivityView, KeepsContextsInTheOrderAdded) {
    QueltFltEffectivityView view;
    EXPECT_EQ(view.m_contexts.IsEmpty(), 1);
    auto* const first = new QueltDnf;
    auto* const second = new QueltDnf;
    EXPECT_EQ(view.addContext(guidOf(9), first), S_OK);
    EXPECT_EQ(view.addContext(guidOf(2), second), S_OK);
    ASSERT_EQ(view.m_contexts.GetLength(), 2);

    QueltInMap::const_iterator iterator = view.m_contexts.cBegin();
    EXPECT_NE(iterator.GetKey()->equals(guidOf(9)), 0);
    EXPECT_EQ(iterator.GetValGoToNext(), first);
    EXPECT_NE(iterator.GetKey()->equals(guidOf(2)), 0);
    EXPECT_EQ(iterator.GetValGoToNext(), second);

    QueltDnf* dnf = nullptr;
    EXPECT_EQ(view.getDnf(guidOf(2), dnf), S_OK);
    EXPECT_EQ(dnf, second);
}

TEST(QueltFltEffectivityView, HasNoNormalFormForAnotherDictionary) {
    QueltFltEffectivityView view;
    EXPECT_EQ(view.addContext(guidOf(1), new QueltDnf), S_OK);
    QueltDnf other;
    QueltDnf* dnf = &other;
    EXPECT_EQ(view.getDnf(guidOf(2), dnf), E_INVALIDARG);
    EXPECT_EQ(dnf, nullptr);
}

TEST(QueltFltEffectivityView, RefusesWhatIsThereAlready) {
    QueltFltEffectivityView view;
    auto* const first = new QueltDnf;
    QueltDnf second;
    EXPECT_EQ(view.addContext(guidOf(1), nullptr), E_POINTER);
    EXPECT_EQ(view.addContext(guidOf(1), first), S_OK);
    EXPECT_EQ(view.addContext(guidOf(1), &second), E_ALREADYTHERE);
    EXPECT_EQ(view.addContext(guidOf(2), first), E_ALREADYTHERE);
    EXPECT_EQ(view.m_contexts.GetLength(), 1);
    QueltFltEffectivityView other;
    EXPECT_EQ(other.addContext(guidOf(1), first), E_ALREADYTHERE);
}

TEST(QueltFltEffectivityView, HasALimit) {
    QueltFltEffectivityView view;
    QueltInGuid::Bytes bytes{};
    for (int number = 0; number < QueltFltEffectivityView::s_maxContexts; ++number) {
        bytes[0] = static_cast<std::uint8_t>(number / 256);
        bytes[1] = static_cast<std::uint8_t>(number % 256);
        ASSERT_EQ(view.addContext(QueltInGuid(bytes), new QueltDnf), S_OK);
    }
    bytes[2] = 1;
    QueltDnf refused;
    EXPECT_EQ(view.addContext(QueltInGuid(bytes), &refused), E_OUTOFMEMORY);
    EXPECT_EQ(view.m_contexts.GetLength(), 10'000);
}

TEST(QueltFltEffectivityView, Prints) {
    QueltFltEffectivityView view;
    EXPECT_EQ(view.toString().view(), "view()");
    EXPECT_EQ(view.addContext(guidOf(1), new QueltDnf), S_OK);
    auto* const dnf = new QueltDnf;
    EXPECT_EQ(dnf->addConjunction(), S_OK);
    EXPECT_EQ(view.addContext(guidOf(2), dnf), S_OK);
    EXPECT_EQ(view.toString().view(), "view(00000000-0000-0000-0000-000000000001: FALSE, "
                                      "00000000-0000-0000-0000-000000000002: TRUE)");
}

} // namespace
