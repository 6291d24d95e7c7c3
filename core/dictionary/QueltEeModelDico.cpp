#include "dictionary/QueltEeModelDico.h"

#include "dictionary/QueltEeTreeSeriesVar.h"
#include "infrastructure/QueltInResult.h"
#include "infrastructure/QueltInTypedDefinition.h"

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
    m_features.insert(variable->getGuid());
    m_variables.emplace_back(variable);
    variable->m_pHolder = this;
    return S_OK;
}

QueltEeVariable* QueltEeModelDico::getVariable(std::string_view name) const {
    const auto found = m_byName.find(name);
    return found != m_byName.end() ? found->second : nullptr;
}

bool QueltEeModelDico::containsFeature(const QueltInGuid& guid) const {
    return m_features.contains(guid);
}

QueltEeTreeSeriesVar* QueltEeModelDico::getTreeSeriesVariable(unsigned int number) const {
    for (const std::unique_ptr<QueltEeVariable>& variable : m_variables) {
        QueltEeTreeSeriesVar* const series = QueltEeTreeSeriesVar::cast(variable.get());
        if (series != nullptr && series->getNumber() == number) {
            return series;
        }
    }
    return nullptr;
}
