#include "dictionary/QueltEeModelDico.h"

#include "dictionary/QueltEeTreeSeriesVar.h"
#include "infrastructure/QueltInMemory.h"
#include "infrastructure/QueltInResult.h"
#include "infrastructure/QueltInTypedDefinition.h"

#include <cstring>

template class QueltInTyped<QueltEeModelDico, QueltEeDicoObject>;

QueltEeModelDico::QueltEeModelDico(const QueltInString& name, const QueltInGuid& guid)
    : QueltInTyped(name, guid) {}

QueltEeModelDico::~QueltEeModelDico() = default;

long QueltEeModelDico::addVariable(QueltEeVariable* variable) {
    if (variable == nullptr) {
        return E_POINTER;
    }
    if (getVariable(variable->getName().view()) != nullptr) {
        return E_ALREADYTHERE;
    }
    if (variable->m_pHolder != nullptr) {
        return E_INVALIDARG;
    }
    const QueltInName& name = m_names.emplace_back(variable->getSharedName());
    m_byName.emplace(name.text().view(), variable);
    addFeature(*variable);
    if (QueltEeTreeSeriesVar* const series = QueltEeTreeSeriesVar::cast(variable); series != nullptr) {
        m_treeSeries.try_emplace(series->getNumber(), series);
    }
    m_variables.emplace_back(variable);
    variable->m_pHolder = this;
    return S_OK;
}

QueltEeVariable* QueltEeModelDico::getVariable(std::string_view name) const {
    const auto found = m_byName.find(name);
    return found != m_byName.end() ? found->second : nullptr;
}

void QueltEeModelDico::addFeature(const QueltEeDicoObject& feature) {
    if (containsFeature(feature)) {
        return;
    }
    const QueltInHeapScope heap; // the index lives as long as the dictionary
    const auto position = static_cast<std::uint32_t>(m_features.size());
    m_features.push_back(feature.getGuid().getBytes());
    m_featureIndex.insert(feature.getGuidHash(), position);
}

bool QueltEeModelDico::containsFeature(const QueltInGuid& guid, std::uint64_t hash) const {
    const auto isIt = [&](std::uint32_t position) {
        return std::memcmp(m_features[position].data(), guid.getBytes().data(), sizeof(QueltInGuid::Bytes)) ==
               0;
    };
    return m_featureIndex.find(hash, isIt) != quelt::QueltInHashIndex::s_none;
}

QueltEeTreeSeriesVar* QueltEeModelDico::getTreeSeriesVariable(unsigned int number) const {
    const auto found = m_treeSeries.find(number);
    return found != m_treeSeries.end() ? found->second : nullptr;
}
