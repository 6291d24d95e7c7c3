#include "module/support/CompiledSamples.h"

#include "compiled/QueltCompiledBinaryWriter.h"
#include "expression/QueltEeLeaves.h"

#include <gtest/gtest.h>

namespace quelt::test {

std::string guidTextOf(std::uint8_t number) {
    return std::string(guidOf(number).toString().view());
}

QueltDnf* CompiledSamples::makeDnf(const SampleDnf& dnf) {
    auto made = std::make_unique<QueltDnf>();
    for (const auto& conjunction : dnf) {
        EXPECT_EQ(made->addConjunction(), S_OK);
        for (const SampleLiteral& literal : conjunction) {
            QueltEeNodeElementaryLeaf* leaf = nullptr;
            if (literal.isOption) {
                m_options.push_back(std::make_unique<QueltEeCatOptionVar>("Engine", guidOf(literal.number)));
                auto criterion = std::make_unique<QueltEeOptionEff>(m_options.back().get());
                EXPECT_EQ(criterion->addValue(m_options.back()->addValue("V6")), S_OK);
                leaf = new QueltEeVarEffLeaf(criterion.release());
            } else {
                m_changes.push_back(std::make_unique<QueltEePredefEff>("ECO", guidOf(literal.number)));
                leaf = new QueltEeEffLeaf(m_changes.back().get(), nullptr);
            }
            if (literal.negated) {
                EXPECT_EQ(leaf->opNot(), S_OK);
            }
            EXPECT_EQ(made->addLiteral(leaf->getNodeRef()), S_OK);
        }
    }
    return made.release();
}

QueltFltEffectivityView* CompiledSamples::makeView(const SampleView& view) {
    auto made = std::make_unique<QueltFltEffectivityView>();
    for (const auto& [dictionary, dnf] : view) {
        EXPECT_EQ(made->addContext(guidOf(dictionary), makeDnf(dnf)), S_OK);
    }
    return made.release();
}

std::unique_ptr<QueltFltEffectivity> CompiledSamples::holding(QueltFltEffectivityView* view,
                                                              unsigned int domain, std::uint32_t kind) {
    auto made = std::make_unique<QueltFltEffectivity>();
    auto* const onlyDomain = new QueltFltDomainEffectivity;
    EXPECT_EQ(onlyDomain->addView(QueltExpressionView{kind}, view), S_OK);
    EXPECT_EQ(made->addDomain(domain, onlyDomain), S_OK);
    return made;
}

QueltBioBuffer CompiledSamples::compiled(const QueltFltEffectivity& effectivity) {
    QueltBioBuffer buffer;
    EXPECT_EQ(QueltCompiledBinaryWriter::Write(effectivity, buffer), S_OK);
    return buffer;
}

} // namespace quelt::test
