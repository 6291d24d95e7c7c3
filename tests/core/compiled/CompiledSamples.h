#pragma once

#include "core/compiled/CompiledBytes.h"
#include "core/dictionary/TestTools.h"

#include "compiled/QueltBioBuffer.h"
#include "compiled/QueltCompiledBinaryParser.h"
#include "compiled/QueltCompiledBinaryWriter.h"
#include "compiled/QueltFltEffectivity.h"
#include "effectivity/QueltEeEffectivity.h"
#include "effectivity/QueltEeNamedValueEff.h"
#include "expression/QueltEeLeaves.h"
#include "infrastructure/QueltInResult.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

using OwnedEffectivity = std::unique_ptr<QueltFltEffectivity>;

/// Reads `bytes`; null, and the reason in `result`, when they are refused.
inline OwnedEffectivity readBytes(std::span<const std::uint8_t> bytes, long& result) {
    QueltBioBuffer buffer(bytes);
    QueltInObject* object = &buffer;
    result = QueltCompiledBinaryParser::Read(buffer, object);
    EXPECT_EQ(buffer.getSize(), 0U);
    EXPECT_EQ(object != nullptr, result >= 0);
    QueltFltEffectivity* const effectivity = QueltFltEffectivity::cast(object);
    EXPECT_EQ(effectivity, object);
    return OwnedEffectivity(effectivity);
}

/// The result of reading bytes that are to be refused.
inline long refusalOf(std::span<const std::uint8_t> bytes) {
    long result = S_OK;
    EXPECT_EQ(readBytes(bytes, result), nullptr);
    return result;
}

inline std::vector<std::uint8_t> writtenBytes(const QueltFltEffectivity& effectivity) {
    QueltBioBuffer buffer;
    EXPECT_EQ(QueltCompiledBinaryWriter::Write(effectivity, buffer), S_OK);
    return {buffer.getBytes().begin(), buffer.getBytes().end()};
}

/// An effectivity with one domain (2) with one view (0) without contexts.
struct OneView {
    OneView() {
        auto* const domain = new QueltFltDomainEffectivity;
        EXPECT_EQ(effectivity->addDomain(2, domain), S_OK);
        EXPECT_EQ(domain->addView(QueltExpressionView::full, view), S_OK);
    }
    /// Adds a context whose normal form has one conjunction, without literals so far.
    QueltDnf& addContext(const QueltInGuid& guid) {
        auto* const dnf = new QueltDnf;
        EXPECT_EQ(dnf->addConjunction(), S_OK);
        EXPECT_EQ(view->addContext(guid, dnf), S_OK);
        return *dnf;
    }

    OwnedEffectivity effectivity = std::make_unique<QueltFltEffectivity>();
    QueltFltEffectivityView* view = new QueltFltEffectivityView;
};

/// The only normal form of what CompiledBytes::onlyDnf began.
inline const QueltDnf& onlyDnfOf(const QueltFltEffectivity& effectivity) {
    QueltDnf* dnf = nullptr;
    EXPECT_EQ(effectivity.getDomainEffectivity(2)
                  ->getEffectivityView(QueltExpressionView::full)
                  ->getDnf(guidOf(11), dnf),
              S_OK);
    return *dnf;
}

/// Everything that a compiled effectivity says, by GUIDs and names of values, whatever stands for them and in
/// whatever order values were given.
inline std::string meaningOf(const QueltEeNode& literal) {
    if (const auto* const leaf = dynamic_cast<const QueltEeEffLeaf*>(&literal)) {
        return (leaf->isNegated() != 0 ? "!" : "") +
               std::string(leaf->getTargetEff()->getGuid().toString().view());
    }
    const auto& option =
        dynamic_cast<const QueltEeOptionEff&>(*dynamic_cast<const QueltEeVarEffLeaf&>(literal).getVarEff());
    const auto& variable = dynamic_cast<const QueltEeCatOptionVar&>(*option.getVar());
    std::set<std::string> names;
    for (const std::uint32_t value : option.getValues()) {
        names.insert(std::string(variable.getValueName(value)));
    }
    std::string text =
        (option.isNegated() != 0 ? "!" : "") + std::string(variable.getGuid().toString().view());
    for (const std::string& name : names) {
        text += "<" + name + ">";
    }
    return text + (option.getNoVar() != 0 ? "?" : "");
}

inline std::string meaningOf(const QueltDnf& dnf) {
    std::string text;
    for (const QueltDnf::Conjunction& conjunction : dnf.getConjunctions()) {
        text += "(";
        for (const QueltEeNodeRef* const literal : conjunction) {
            text += meaningOf(*literal->getNode()) + " ";
        }
        text += ")";
    }
    return text;
}

inline std::string meaningOf(const QueltFltEffectivity& effectivity) {
    std::string text;
    for (const QueltFltEffectivity::Entry& domain : effectivity.getDomains()) {
        text += "domain " + std::to_string(domain.number) + "\n";
        for (const QueltFltDomainEffectivity::Entry& view : domain.domain->getViews()) {
            text += "view " + std::to_string(static_cast<std::uint32_t>(view.kind)) + "\n";
            QueltInMap::const_iterator iterator = view.view->m_contexts.cBegin();
            while (const QueltInMapEntry* const entry = iterator.GetEntryGoToNext()) {
                text += std::string(entry->key->toString().view()) + " " +
                        meaningOf(dynamic_cast<const QueltDnf&>(*entry->value)) + "\n";
            }
        }
    }
    return text;
}

/// Random compiled effectivities. Their leaves refer to objects of this one, which must outlive them.
class CompiledSamples {
public:
    CompiledSamples() {
        for (std::uint8_t number = 0; number < 6; ++number) {
            m_effectivities.push_back(
                std::make_unique<QueltEePredefEff>("ECO-" + std::to_string(number), guidOf(number)));
            m_options.push_back(
                std::make_unique<QueltEeCatOptionVar>("Option " + std::to_string(number), guidOf(number)));
            for (const char* const name : {"V8", "V6", "", "\xC3\xA9", "z", "V6 long", "\x01"}) {
                m_options.back()->addValue(name);
            }
        }
    }

    QueltEeNodeRef* literal(Random& random) const {
        QueltEeNodeElementaryLeaf* leaf = nullptr;
        if (random.flip()) {
            leaf = new QueltEeEffLeaf(random.oneOf(m_effectivities).get(), nullptr);
        } else {
            const QueltEeCatOptionVar& variable = *random.oneOf(m_options);
            auto* const option = new QueltEeOptionEff(&variable);
            for (unsigned int count = random.below(5); count-- > 0;) {
                EXPECT_EQ(option->addValue(random.below(variable.getValueCount())), S_OK);
            }
            leaf = new QueltEeVarEffLeaf(option);
        }
        if (random.flip()) {
            EXPECT_EQ(leaf->opNot(), S_OK);
        }
        return leaf->getNodeRef();
    }

    QueltDnf* dnf(Random& random) const {
        auto* const dnf = new QueltDnf;
        for (unsigned int conjunctions = random.below(4); conjunctions-- > 0;) {
            EXPECT_EQ(dnf->addConjunction(), S_OK);
            for (unsigned int literals = random.below(4); literals-- > 0;) {
                EXPECT_EQ(dnf->addLiteral(literal(random)), S_OK);
            }
        }
        return dnf;
    }

    OwnedEffectivity effectivity(Random& random) const {
        auto effectivity = std::make_unique<QueltFltEffectivity>();
        for (const std::uint32_t number : numbers(random)) {
            auto* const domain = new QueltFltDomainEffectivity;
            EXPECT_EQ(effectivity->addDomain(number, domain), S_OK);
            for (const std::uint32_t kind : numbers(random)) {
                auto* const view = new QueltFltEffectivityView;
                EXPECT_EQ(domain->addView(static_cast<QueltExpressionView>(kind), view), S_OK);
                for (const std::uint32_t guid : numbers(random)) {
                    EXPECT_EQ(view->addContext(guidOf(static_cast<std::uint8_t>(guid)), dnf(random)), S_OK);
                }
            }
        }
        return effectivity;
    }

private:
    /// Up to four numbers, none twice, in any order.
    static std::vector<std::uint32_t> numbers(Random& random) {
        std::vector<std::uint32_t> all = {3, 0, 200, 1};
        std::rotate(all.begin(), all.begin() + random.below(4), all.end());
        all.resize(random.below(5));
        return all;
    }

    std::vector<std::unique_ptr<QueltEePredefEff>> m_effectivities;
    std::vector<std::unique_ptr<QueltEeCatOptionVar>> m_options;
};
